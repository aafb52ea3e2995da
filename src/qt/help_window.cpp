#include "qt/help_window.h"

#include <QFile>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTextBrowser>
#include <QVBoxLayout>

#include "platform/help_index.h"

namespace keldo::qt {

HelpWindow::HelpWindow(const QString& docsFolder, QWidget* parent)
    : QWidget(parent, Qt::Window), docs_(docsFolder), browser_(new QTextBrowser(this)), keyword_(new QLineEdit(this)) {
  setWindowTitle(tr("KELDO Help"));
  resize(720, 640);
  auto* top = new QHBoxLayout;
  top->addWidget(new QLabel(tr("Find topic:"), this));
  top->addWidget(keyword_, 1);
  auto* go = new QPushButton(tr("&Find"), this);
  top->addWidget(go);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(top);
  layout->addWidget(browser_, 1);
  browser_->setOpenLinks(true);
  browser_->setOpenExternalLinks(false);
  connect(go, &QPushButton::clicked, this, &HelpWindow::FindKeyword);
  connect(keyword_, &QLineEdit::returnPressed, this, &HelpWindow::FindKeyword);
}

void HelpWindow::ShowPage(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return;
  current_ = path;
  browser_->setSearchPaths({QFileInfo(path).absolutePath(), docs_});
  browser_->setMarkdown(QString::fromUtf8(file.readAll()));
  show();
  raise();
  activateWindow();
}

void HelpWindow::FindKeyword() {
  const auto index = platform::HelpIndex::Load(docs_.toStdString());
  if (const auto page = index.Find("*", keyword_->text().toStdString())) ShowPage(QString::fromStdString(*page));
}

}  // namespace keldo::qt

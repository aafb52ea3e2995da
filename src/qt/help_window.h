#pragma once
// The help window: pages of the user guide (Markdown under docs/), with a
// keyword box that finds a topic.

#include <QWidget>

class QTextBrowser;
class QLineEdit;

namespace keldo::qt {

class HelpWindow final : public QWidget {
  Q_OBJECT
 public:
  explicit HelpWindow(const QString& docsFolder, QWidget* parent = nullptr);
  void ShowPage(const QString& path);
  QString CurrentPage() const { return current_; }
  QTextBrowser* Browser() const { return browser_; }

 private:
  void FindKeyword();
  QString docs_;
  QString current_;
  QTextBrowser* browser_;
  QLineEdit* keyword_;
};

}  // namespace keldo::qt

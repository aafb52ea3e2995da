#include "qt/form_view.h"

#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QVBoxLayout>

#include "common/number_text.h"
#include "qt/menu_builder.h"

namespace keldo::qt {

// The plot box: graph paper over the form's window, with the axis labels.
class PlotWidget final : public QWidget {
 public:
  explicit PlotWidget(Form& form, QWidget* parent) : QWidget(parent), form_(form) {
    setMinimumSize(320, 240);
    setAttribute(Qt::WA_OpaquePaintEvent);
  }

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter p(this);
    p.fillRect(rect(), QColor(0xF4, 0xF4, 0xF0));
    const QRect plot = rect().adjusted(56, 16, -16, -36);
    p.fillRect(plot, Qt::white);
    if (form_.Kind() != FormKind::Graph1) {
      p.setPen(QColor(0x80, 0x80, 0x80));
      p.drawText(plot, Qt::AlignCenter, QString::fromStdString(form_.Caption()));
      return;
    }
    const auto w = form_.Window();
    double bottom = w[2], top = w[3];
    if (!(top > bottom)) { bottom = -1; top = 1; }
    p.setPen(QPen(QColor(0xD8, 0xE4, 0xF0), 1));
    for (int i = 0; i <= 10; ++i) {
      const int x = plot.left() + i * plot.width() / 10;
      const int y = plot.top() + i * plot.height() / 10;
      p.drawLine(x, plot.top(), x, plot.bottom());
      p.drawLine(plot.left(), y, plot.right(), y);
    }
    p.setPen(QPen(QColor(0x40, 0x40, 0x40), 1));
    p.drawRect(plot);
    // Axes through zero where zero is inside the window.
    if (w[0] < 0 && w[1] > 0) {
      const int x = plot.left() + static_cast<int>((0 - w[0]) / (w[1] - w[0]) * plot.width());
      p.drawLine(x, plot.top(), x, plot.bottom());
    }
    if (bottom < 0 && top > 0) {
      const int y = plot.bottom() - static_cast<int>((0 - bottom) / (top - bottom) * plot.height());
      p.drawLine(plot.left(), y, plot.right(), y);
    }
    p.setPen(Qt::black);
    const auto label = [](double v) { return QString::fromStdString(FormatLabel(v)); };
    p.drawText(QRect(plot.left() - 30, plot.bottom() + 4, 60, 18), Qt::AlignCenter, label(w[0]));
    p.drawText(QRect(plot.right() - 30, plot.bottom() + 4, 60, 18), Qt::AlignCenter, label(w[1]));
    p.drawText(QRect(0, plot.bottom() - 9, plot.left() - 4, 18), Qt::AlignRight | Qt::AlignVCenter, label(bottom));
    p.drawText(QRect(0, plot.top() - 9, plot.left() - 4, 18), Qt::AlignRight | Qt::AlignVCenter, label(top));
  }

  void contextMenuEvent(QContextMenuEvent* event) override {
    if (form_.PopupMenu().empty()) return;
    QMenu menu(this);
    FillMenu(&menu, form_.PopupMenu().front().children, &form_.controls(), [this](const std::string& name) {
      std::string base;
      int index = -1;
      SplitIndexedName(name, base, index);
      form_.RunMenu(base, index);
      if (auto* view = qobject_cast<FormView*>(parentWidget())) view->Sync();
    });
    menu.exec(event->globalPos());
  }

 private:
  Form& form_;
};

FormView::FormView(Form& form, QWidget* parent) : QWidget(parent), form_(form) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(4, 4, 4, 4);
  plot_ = new PlotWidget(form_, this);
  layout->addWidget(plot_, 1);
  if (form_.controls().Has("Formula")) {
    auto* row = new QHBoxLayout;
    row->addWidget(new QLabel(tr("Formula:"), this));
    formula_ = new QLineEdit(this);
    formula_->setObjectName("Formula");
    formula_->setToolTip(tr("Type a formula, then press Enter to plot it."));
    row->addWidget(formula_, 1);
    layout->addLayout(row);
    connect(formula_, &QLineEdit::textEdited, this,
            [this](const QString& text) { form_.controls().SetText("Formula", text.toStdString()); });
  }
  setWindowTitle(QString::fromStdString(form_.Caption()));
  Sync();
}

void FormView::Sync() {
  if (shown_ == form_.Revision()) return;
  shown_ = form_.Revision();
  setWindowTitle(QString::fromStdString(form_.Caption()));
  if (formula_) {
    const QString text = QString::fromStdString(form_.controls().Text("Formula"));
    if (formula_->text() != text) formula_->setText(text);
  }
  plot_->update();
}

}  // namespace keldo::qt

#include "qt/panel_builder.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <QVBoxLayout>
#include <utility>

#include "qt/session_recorder.h"

namespace keldo::qt {
namespace {

QString Q(const std::string& s) { return QString::fromStdString(s); }

using Kind = LayoutNode::Kind;

bool IsContainer(Kind k) { return k == Kind::Column || k == Kind::Rows || k == Kind::Line || k == Kind::Grid; }

QLabel* BoldLabel(const QString& text, QWidget* parent) {
  auto* label = new QLabel(text, parent);
  label->setStyleSheet("font-weight: bold");
  return label;
}

}  // namespace

void PanelBuilder::Bind(const std::string& name, QWidget* widget, std::function<void(const Control&)> show) {
  bindings_.push_back({name, widget, std::move(show)});
}

QWidget* PanelBuilder::WidgetOf(const std::string& name) const {
  for (const Binding& b : bindings_)
    if (b.name == name) return b.widget;
  return nullptr;
}

void PanelBuilder::Show(const ControlModel& model) const {
  for (const Binding& b : bindings_)
    if (const Control* c = model.Find(b.name)) b.show(*c);
}

QString PanelBuilder::TipOf(const LayoutNode& node, const Control& c) const {
  return Q(node.tip.empty() ? c.tip : node.tip);
}

QLabel* PanelBuilder::BindLabel(QWidget* parent, const std::string& name, bool bold) {
  auto* label = bold ? BoldLabel(QString(), parent) : new QLabel(parent);
  label->setObjectName(Q(name));
  label->setWordWrap(true);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  Bind(name, label, [label](const Control& c) {
    const QString text = Q(c.text).replace("\r\n", "\n");
    if (label->text() != text) label->setText(text);
    label->setVisible(c.visible);
  });
  return label;
}

QWidget* PanelBuilder::MakeWidget(const LayoutNode& node, QWidget* owner) {
  const std::string& name = node.name;
  const Control* control = std::as_const(form_).controls().Find(name);
  if (!control) return nullptr;
  const QString tip = TipOf(node, *control);
  const auto common = [node, this](QWidget* w, const Control& c) {
    w->setEnabled(c.enabled);
    w->setVisible(c.visible);
    w->setToolTip(TipOf(node, c));
  };
  QWidget* widget = nullptr;
  switch (control->kind) {
    case ControlKind::Label:
      return BindLabel(owner, name, node.Has(LayoutNode::kBold));
    case ControlKind::Text:
      if (node.Has(LayoutNode::kLabel)) return BindLabel(owner, name);
      if (node.Has(LayoutNode::kMultiLine)) {
        auto* edit = new QPlainTextEdit(owner);
        edit->setReadOnly(node.Has(LayoutNode::kReadOnly));
        edit->setTabChangesFocus(true);
        QObject::connect(edit, &QPlainTextEdit::textChanged, edit, [this, edit, name] {
          form_.controls().SetText(name, edit->toPlainText().toStdString());
          if (auto* recorder = SessionRecorder::Active())
            recorder->FieldTyped(form_, name, edit->toPlainText().toStdString());
        });
        Bind(name, edit, [edit, common](const Control& c) {
          // The box shows line ends as "\n"; the model's own text, "\r\n"
          // ends included, stays as the form wrote it: showing it is not an
          // edit.
          QString text = Q(c.text);
          text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
          if (edit->toPlainText() != text) {
            const QSignalBlocker quiet(edit);
            edit->setPlainText(text);
          }
          common(edit, c);
        });
        widget = edit;
      } else {
        auto* edit = new QLineEdit(owner);
        edit->setReadOnly(node.Has(LayoutNode::kReadOnly));
        QObject::connect(edit, &QLineEdit::textEdited, edit,
                         [this, name](const QString& t) {
                           form_.controls().SetText(name, t.toStdString());
                           form_.ControlChanged(name);
                           if (auto* recorder = SessionRecorder::Active())
                             recorder->FieldTyped(form_, name, t.toStdString());
                         });
        QObject::connect(edit, &QLineEdit::editingFinished, edit, [this, name] {
          if (auto* recorder = SessionRecorder::Active()) recorder->FieldCommitted(form_, name);
        });
        // Enter presses the field's own button, or Go.
        if (node.enter.empty()) {
          QObject::connect(edit, &QLineEdit::returnPressed, edit, [this] { actions_.go(); });
        } else {
          QObject::connect(edit, &QLineEdit::returnPressed, edit,
                           [this, button = node.enter] { actions_.press(button); });
        }
        if (actions_.fieldFilter) edit->installEventFilter(actions_.fieldFilter);
        if (node.Has(LayoutNode::kFormulaBox)) formulaBox_ = edit;
        Bind(name, edit, [edit, common](const Control& c) {
          const QString text = Q(c.text);
          if (edit->text() != text) edit->setText(text);
          common(edit, c);
        });
        widget = edit;
      }
      break;
    case ControlKind::Button: {
      auto* button = new QPushButton(owner);
      if (node.Has(LayoutNode::kNarrow)) button->setMinimumWidth(24);
      if (node.Has(LayoutNode::kAutoRepeat)) {
        button->setAutoRepeat(true);
        button->setAutoRepeatInterval(40);
      }
      if (node.Has(LayoutNode::kFitWidth)) button->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
      QObject::connect(button, &QPushButton::clicked, button, [this, name] { actions_.press(name); });
      Bind(name, button, [button, common](const Control& c) {
        button->setText(Q(c.text));
        common(button, c);
      });
      widget = button;
      break;
    }
    case ControlKind::Check: {
      auto* check = new QCheckBox(Q(control->text), owner);
      // Clicked, not toggled: the model's own changes come back through Show.
      QObject::connect(check, &QCheckBox::clicked, check, [this, name](bool on) {
        const RecordedAction recorded(&form_, "set " + name + (on ? " 1" : " 0"));
        form_.controls().SetFromUser(name, on ? "1" : "0");
        form_.ControlChanged(name);
      });
      Bind(name, check, [check, common](const Control& c) {
        check->setText(Q(c.text));
        check->setChecked(c.value != 0);
        common(check, c);
      });
      widget = check;
      break;
    }
    case ControlKind::Option: {
      auto* option = new QRadioButton(Q(control->text), owner);
      // The model keeps the groups exclusive; several groups share one parent.
      option->setAutoExclusive(false);
      QObject::connect(option, &QRadioButton::clicked, option, [this, name] {
        const RecordedAction recorded(&form_, "set " + name + " 1");
        form_.controls().SetFromUser(name, "1");
        form_.ControlChanged(name);
        form_.Touch();
        actions_.changed();
      });
      Bind(name, option, [option, common](const Control& c) {
        option->setText(Q(c.text));
        option->setChecked(c.value != 0);
        common(option, c);
      });
      widget = option;
      break;
    }
    case ControlKind::List: {
      auto* list = new QComboBox(owner);
      for (const std::string& item : control->items) list->addItem(Q(item));
      QObject::connect(list, &QComboBox::activated, list, [this, list, name](int) {
        const RecordedAction recorded(&form_,
                                      "set " + name + " " + SessionRecorder::Quote(list->currentText().toStdString()));
        form_.controls().SetFromUser(name, list->currentText().toStdString());
        form_.ControlChanged(name);
        form_.Touch();
        actions_.changed();
      });
      Bind(name, list, [list, common](const Control& c) {
        if (list->currentText() != Q(c.text)) list->setCurrentText(Q(c.text));
        common(list, c);
      });
      widget = list;
      break;
    }
    case ControlKind::Menu:
    case ControlKind::Panel:
      return nullptr;
  }
  widget->setObjectName(Q(name));
  widget->setToolTip(tip);
  if (node.minimumWidth > 0) widget->setMinimumWidth(node.minimumWidth);
  return widget;
}

QWidget* PanelBuilder::MakeBox(const LayoutNode& node, QWidget* owner) {
  auto* box = new QGroupBox(Q(node.text), owner);
  if (!node.name.empty())
    Bind(node.name, box, [box](const Control& c) {
      box->setTitle(Q(c.text));
      box->setVisible(c.visible);
      box->setEnabled(c.enabled);
    });
  if (!node.children.empty()) Build(node.children.front(), box);
  return box;
}

void PanelBuilder::AddToRows(QFormLayout* rows, const LayoutNode& child, QWidget* owner) {
  switch (child.kind) {
    case Kind::Field: {
      QWidget* field = MakeWidget(child, owner);
      if (!field) return;
      QLabel* label = nullptr;
      if (!child.caption.empty()) {
        label = new QLabel(owner);
        Bind(child.caption, label, [label](const Control& c) {
          label->setText(Q(c.text));
          label->setVisible(c.visible);
        });
        rows->addRow(label, field);
      } else if (child.Has(LayoutNode::kNoLabel)) {
        rows->addRow(static_cast<QWidget*>(nullptr), field);
      } else {
        rows->addRow(Q(child.text), field);
        label = qobject_cast<QLabel*>(rows->labelForField(field));
      }
      // The caption comes and goes with its field.
      if (label)
        Bind(child.name, label, [label](const Control& c) { label->setVisible(c.visible); });
      return;
    }
    case Kind::Pair: {
      LayoutNode second = child;
      second.name = child.other;
      QWidget* left = MakeWidget(child, owner);
      QWidget* right = MakeWidget(second, owner);
      if (left && right) rows->addRow(left, right);
      return;
    }
    case Kind::Group: rows->addRow(MakeBox(child, owner)); return;
    case Kind::Heading: rows->addRow(BoldLabel(Q(child.text), owner)); return;
    case Kind::Text: rows->addRow(new QLabel(Q(child.text), owner)); return;
    case Kind::Stretch: return;
    default:
      if (IsContainer(child.kind)) rows->addRow(MakeLayout(child, owner));
      else if (QWidget* w = MakeWidget(child, owner)) rows->addRow(w);
      return;
  }
}

void PanelBuilder::AddToBox(QBoxLayout* box, const LayoutNode& child, QWidget* owner, QWidget*& lastText) {
  QWidget* added = nullptr;
  switch (child.kind) {
    case Kind::Stretch: box->addStretch(1); return;
    case Kind::Group: added = MakeBox(child, owner); break;
    case Kind::Heading: added = BoldLabel(Q(child.text), owner); break;
    case Kind::Text: added = new QLabel(Q(child.text), owner); break;
    default:
      if (IsContainer(child.kind)) {
        box->addLayout(MakeLayout(child, owner));
        return;
      }
      added = MakeWidget(child, owner);
      break;
  }
  if (!added) return;
  box->addWidget(added, child.Has(LayoutNode::kStretch) ? 1 : 0);
  // A text with a mnemonic names the widget after it.
  if (auto* label = qobject_cast<QLabel*>(lastText)) label->setBuddy(added);
  lastText = child.kind == Kind::Text && child.text.find('&') != std::string::npos ? added : nullptr;
}

QLayout* PanelBuilder::MakeLayout(const LayoutNode& node, QWidget* owner) {
  switch (node.kind) {
    case Kind::Rows: {
      auto* rows = new QFormLayout;
      for (const LayoutNode& child : node.children) AddToRows(rows, child, owner);
      return rows;
    }
    case Kind::Grid: {
      auto* grid = new QGridLayout;
      const int columns = node.columns > 0 ? node.columns : 1;
      int k = 0;
      for (const LayoutNode& child : node.children) {
        if (QWidget* w = child.kind == Kind::Group ? MakeBox(child, owner) : MakeWidget(child, owner))
          grid->addWidget(w, k / columns, k % columns);
        ++k;
      }
      return grid;
    }
    default: {
      QBoxLayout* box = node.kind == Kind::Line ? static_cast<QBoxLayout*>(new QHBoxLayout)
                                                : static_cast<QBoxLayout*>(new QVBoxLayout);
      QWidget* lastText = nullptr;
      for (const LayoutNode& child : node.children) AddToBox(box, child, owner, lastText);
      return box;
    }
  }
}

void PanelBuilder::Build(const LayoutNode& node, QWidget* owner) {
  QLayout* layout = MakeLayout(node, owner);
  owner->setLayout(layout);
  if (node.Has(LayoutNode::kNoMargins)) layout->setContentsMargins(0, 0, 0, 0);
}

}  // namespace keldo::qt

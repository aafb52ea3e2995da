#pragma once
// How a form's panels look, as data: each form folder declares its side-box
// panels and its bottom row as trees of these nodes, and one renderer draws
// any of them and binds every widget to the control of the same name. The
// control's kind picks the widget (a text field, a label, a button, a check
// box, an option button or a list); its text, value, enabled and visible
// state follow the model.

#include <string>
#include <utility>
#include <vector>

namespace keldo {

struct LayoutNode {
  enum class Kind {
    Column,   // children one under another
    Rows,     // a two-column form: captions on the left, fields on the right
    Line,     // children side by side
    Grid,     // children in rows of `columns`
    Group,    // a framed group with a title; one child, its body
    Item,     // the widget of control `name`; in Rows it spans both columns
    Field,    // in Rows: caption `text` (or none) and the widget of `name`
    Pair,     // in Rows: the widgets of `name` and `other` as caption and field
    Heading,  // a bold fixed text
    Text,     // a fixed text
    Stretch,  // empty space that takes what is left of a Line or Column
  };

  // Flags of an Item or Field.
  enum Flag : unsigned {
    kMultiLine = 1u << 0,    // a text control shown as a box of several lines
    kReadOnly = 1u << 1,     // a text the person reads but cannot type into
    kAutoRepeat = 1u << 2,   // a button that repeats while it is held
    kNarrow = 1u << 3,       // a small button of one or two characters
    kBold = 1u << 4,         // a label in bold: the title of a panel
    kNoLabel = 1u << 5,      // Field: no caption widget at all, not even an empty one
    kStretch = 1u << 6,      // takes the spare width of its Line
    kFitWidth = 1u << 7,     // a button no wider than its caption
    kNoMargins = 1u << 8,    // Column: its body touches the panel's edges
    kLabel = 1u << 9,        // a text control shown as a label the person can select
    kFormulaBox = 1u << 10,  // F1 asks for help on the selected text of this field
  };

  Kind kind = Kind::Column;
  std::string name;       // control name
  std::string other;      // Pair: the field's control
  std::string text;       // fixed caption: Field, Group, Heading, Text
  std::string caption;    // Field: a label control whose text is the caption
  std::string tip;        // a tool tip that stands instead of the control's
  std::string enter;      // a text field: the button Enter presses; empty: Go
  int columns = 1;        // Grid
  int minimumWidth = 0;   // pixels; 0 leaves the widget's own
  unsigned flags = 0;
  std::vector<LayoutNode> children;

  bool Has(Flag f) const { return (flags & f) != 0; }
};

// One side-box panel: shown while control PicSideBox(number) is visible.
struct PanelLayout {
  int number = 0;
  LayoutNode body;
};

// Everything a view draws around a form's pictures.
struct FormLayout {
  std::vector<PanelLayout> sideBox;  // in the order they stack
  LayoutNode bottom;                 // the row under pictures and side box; empty Column for none
  std::string captionControl;        // a label under the pictures; empty for none
  // The side box's title: the text of this control after `titleSkip` characters.
  std::string titleControl;
  std::size_t titleSkip = 0;
  // The text field that takes the focus when the form becomes active, while
  // the button `focusWhileEnabled` is enabled.
  std::string focusField;
  std::string focusWhileEnabled;
};

// Builders, so that a table reads like the panel it draws.
namespace layout {

inline LayoutNode Node(LayoutNode::Kind kind, std::vector<LayoutNode> children = {}) {
  LayoutNode n;
  n.kind = kind;
  n.children = std::move(children);
  return n;
}
inline LayoutNode Column(std::vector<LayoutNode> children) { return Node(LayoutNode::Kind::Column, std::move(children)); }
inline LayoutNode Rows(std::vector<LayoutNode> children) { return Node(LayoutNode::Kind::Rows, std::move(children)); }
inline LayoutNode Line(std::vector<LayoutNode> children) { return Node(LayoutNode::Kind::Line, std::move(children)); }
inline LayoutNode Grid(int columns, std::vector<LayoutNode> children) {
  LayoutNode n = Node(LayoutNode::Kind::Grid, std::move(children));
  n.columns = columns;
  return n;
}
inline LayoutNode Group(std::string title, LayoutNode body) {
  LayoutNode n = Node(LayoutNode::Kind::Group, {std::move(body)});
  n.text = std::move(title);
  return n;
}
// A group whose title and visibility follow a label control.
inline LayoutNode GroupOf(std::string control, LayoutNode body) {
  LayoutNode n = Node(LayoutNode::Kind::Group, {std::move(body)});
  n.name = std::move(control);
  return n;
}
inline LayoutNode Item(std::string name, unsigned flags = 0) {
  LayoutNode n = Node(LayoutNode::Kind::Item);
  n.name = std::move(name);
  n.flags = flags;
  return n;
}
// The bold title of a panel, from a label control.
inline LayoutNode Title(std::string name) { return Item(std::move(name), LayoutNode::kBold); }
inline LayoutNode Field(std::string caption, std::string name, unsigned flags = 0) {
  LayoutNode n = Item(std::move(name), flags);
  n.kind = LayoutNode::Kind::Field;
  n.text = std::move(caption);
  return n;
}
// A field without a caption widget of its own.
inline LayoutNode Bare(std::string name) { return Field("", std::move(name), LayoutNode::kNoLabel); }
// A field whose caption is the text of a label control.
inline LayoutNode CaptionedBy(std::string captionControl, std::string name) {
  LayoutNode n = Field("", std::move(name));
  n.caption = std::move(captionControl);
  return n;
}
inline LayoutNode Pair(std::string name, std::string other) {
  LayoutNode n = Node(LayoutNode::Kind::Pair);
  n.name = std::move(name);
  n.other = std::move(other);
  return n;
}
inline LayoutNode Heading(std::string text) {
  LayoutNode n = Node(LayoutNode::Kind::Heading);
  n.text = std::move(text);
  return n;
}
inline LayoutNode Text(std::string text) {
  LayoutNode n = Node(LayoutNode::Kind::Text);
  n.text = std::move(text);
  return n;
}
inline LayoutNode Stretch() { return Node(LayoutNode::Kind::Stretch); }

}  // namespace layout
}  // namespace keldo

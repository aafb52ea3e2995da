#pragma once
// The control model of a form: the state of every control that commands read
// and write, by the control's name ("EndRValue", "chkFPerEA(1)", "mnuClip").
// The view renders this state; commands never look at widgets.

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace keldo {

enum class ControlKind { Text, Label, Button, Check, Option, List, Menu, Panel };

struct Control {
  ControlKind kind = ControlKind::Text;
  std::string text;        // text fields and lists: the text; others: the caption
  int value = 0;           // check boxes and options 0/1, menus 1 when ticked, lists the index
  bool enabled = true;
  bool visible = true;
  std::string tip;         // tool tip
  std::string group;       // options: the group whose members exclude each other
  std::vector<std::string> items;  // lists: the entries
};

// A menu as a tree of control names; captions and flags live in the controls.
struct MenuNode {
  std::string name;        // control name; empty for a separator
  std::vector<MenuNode> children;
  bool IsSeparator() const { return name.empty(); }
};

// "name" and index 3 give "name(3)"; a negative index gives "name".
std::string IndexedName(const std::string& name, int index);
// Splits "name(3)" into "name" and 3; a plain name gives index -1.
void SplitIndexedName(const std::string& full, std::string& base, int& index);

class ControlModel {
 public:
  Control& Add(const std::string& name, ControlKind kind, const std::string& text = "");
  // An option button of a group, chosen or not.
  Control& AddOption(const std::string& name, const std::string& caption, const std::string& group,
                     bool chosen = false);
  Control* Find(const std::string& name);
  const Control* Find(const std::string& name) const;
  bool Has(const std::string& name) const { return Find(name) != nullptr; }
  // The control by name; the name must exist.
  Control& operator[](const std::string& name);

  // Sets text, caption, check, option or list choice as a person would; an
  // option set to 1 clears the other members of its group. Returns false for
  // an unknown name or a value the control cannot take.
  bool SetFromUser(const std::string& name, const std::string& value);

  void SetEnabled(const std::string& name, bool on);
  void SetVisible(const std::string& name, bool on);
  void SetText(const std::string& name, const std::string& text);
  const std::string& Text(const std::string& name) const;

  const std::map<std::string, Control>& All() const { return controls_; }

  // Counts the times a control was added or handed out for writing (every
  // setter goes through that), so that a form's revision follows any change
  // made through the model. Reading through a const model counts nothing.
  unsigned long long Changes() const { return changes_; }

 private:
  std::map<std::string, Control> controls_;
  unsigned long long changes_ = 0;
};

}  // namespace keldo

#include "kit/controls.h"

#include <stdexcept>

namespace keldo {

std::string IndexedName(const std::string& name, int index) {
  return index < 0 ? name : name + "(" + std::to_string(index) + ")";
}

void SplitIndexedName(const std::string& full, std::string& base, int& index) {
  base = full;
  index = -1;
  const auto open = full.find('(');
  if (open == std::string::npos || full.back() != ')' || open + 2 > full.size() - 1) return;
  const std::string digits = full.substr(open + 1, full.size() - open - 2);
  if (digits.empty() || digits.size() > 6) return;
  for (char c : digits)
    if (c < '0' || c > '9') return;
  base = full.substr(0, open);
  index = std::stoi(digits);
}

Control& ControlModel::Add(const std::string& name, ControlKind kind, const std::string& text) {
  ++changes_;
  Control& c = controls_[name];
  c.kind = kind;
  c.text = text;
  return c;
}

Control& ControlModel::AddOption(const std::string& name, const std::string& caption, const std::string& group,
                                 bool chosen) {
  Control& c = Add(name, ControlKind::Option, caption);
  c.group = group;
  c.value = chosen ? 1 : 0;
  return c;
}

Control* ControlModel::Find(const std::string& name) {
  const auto it = controls_.find(name);
  if (it == controls_.end()) return nullptr;
  // Whoever holds a writable control may change it.
  ++changes_;
  return &it->second;
}

const Control* ControlModel::Find(const std::string& name) const {
  const auto it = controls_.find(name);
  return it == controls_.end() ? nullptr : &it->second;
}

Control& ControlModel::operator[](const std::string& name) {
  Control* c = Find(name);
  if (!c) throw std::logic_error("no control named " + name);
  return *c;
}

bool ControlModel::SetFromUser(const std::string& name, const std::string& value) {
  Control* c = Find(name);
  if (!c) return false;
  switch (c->kind) {
    case ControlKind::Text:
    case ControlKind::Label:
      c->text = value;
      return true;
    case ControlKind::Check:
      if (value != "0" && value != "1") return false;
      c->value = value == "1" ? 1 : 0;
      return true;
    case ControlKind::Option:
      if (value != "0" && value != "1") return false;
      if (value == "1" && !c->group.empty()) {
        for (auto& [otherName, other] : controls_)
          if (other.kind == ControlKind::Option && other.group == c->group) other.value = 0;
      }
      c->value = value == "1" ? 1 : 0;
      return true;
    case ControlKind::List:
      for (std::size_t i = 0; i < c->items.size(); ++i) {
        if (c->items[i] == value) {
          c->value = static_cast<int>(i);
          c->text = value;
          return true;
        }
      }
      return false;
    case ControlKind::Button:
    case ControlKind::Menu:
    case ControlKind::Panel:
      return false;
  }
  return false;
}

void ControlModel::SetEnabled(const std::string& name, bool on) {
  if (Control* c = Find(name)) c->enabled = on;
}

void ControlModel::SetVisible(const std::string& name, bool on) {
  if (Control* c = Find(name)) c->visible = on;
}

void ControlModel::SetText(const std::string& name, const std::string& text) {
  if (Control* c = Find(name)) c->text = text;
}

const std::string& ControlModel::Text(const std::string& name) const {
  static const std::string kEmpty;
  const Control* c = Find(name);
  return c ? c->text : kEmpty;
}

}  // namespace keldo

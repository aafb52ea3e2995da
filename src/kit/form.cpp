#include "kit/form.h"

#include "common/pace.h"
#include "kit/form_context.h"
#include "platform/event_loop.h"
#include "platform/services.h"

namespace keldo {

const FormKindInfo* FindKind(std::span<const FormKindInfo> kinds, FormKind kind) {
  for (const FormKindInfo& k : kinds)
    if (k.kind == kind) return &k;
  return nullptr;
}

Form::Form(FormContext& context, FormKind kind) : context_(context), kind_(kind) {}

void Form::SetCaption(const std::string& caption) {
  caption_ = caption;
  Touch();
}

bool Form::HasHandler(const std::string& controlName) const {
  std::string base;
  int index = -1;
  SplitIndexedName(controlName, base, index);
  return handlers_.count(base) > 0 || handlers_.count(controlName) > 0;
}

namespace {

const MenuNode* FindNode(const std::vector<MenuNode>& nodes, const std::string& name) {
  for (const MenuNode& n : nodes) {
    if (n.name == name) return &n;
    if (const MenuNode* inner = FindNode(n.children, name)) return inner;
  }
  return nullptr;
}

}  // namespace

bool Form::CommandBuilt(const std::string& controlName) const {
  const MenuNode* node = FindNode(menuBar_, controlName);
  if (!node) node = FindNode(popupMenu_, controlName);
  if (!node || node->children.empty()) return HasHandler(controlName);
  for (const MenuNode& child : node->children)
    if (!child.IsSeparator() && CommandBuilt(child.name)) return true;
  return false;
}

bool Form::RunMenu(const std::string& name, int index) {
  const std::string full = IndexedName(name, index);
  const Control* item = controls_.Find(full);
  if (!item || item->kind != ControlKind::Menu) return false;
  if (!item->enabled || !item->visible) return true;
  if (Working()) {
    context_.Beep();
    return true;
  }
  RunHandler(full);
  Touch();
  return true;
}

void Form::RunHandler(const std::string& full) {
  auto exact = handlers_.find(full);
  if (exact != handlers_.end()) {
    exact->second(-1);
    return;
  }
  std::string base;
  int i = -1;
  SplitIndexedName(full, base, i);
  auto it = handlers_.find(base);
  if (it != handlers_.end()) it->second(i);
}

bool Form::Click(const std::string& name) {
  const Control* c = controls_.Find(name);
  if (!c || c->kind != ControlKind::Button) return false;
  if (!c->enabled || !c->visible) return true;
  if (Working()) {
    context_.Beep();
    return true;
  }
  std::string base;
  int index = -1;
  SplitIndexedName(name, base, index);
  if (auto exact = buttons_.find(name); exact != buttons_.end()) {
    exact->second(index);
  } else if (base == "GoButton") {
    const bool own = openBox_ >= 0 && sideBoxes_[static_cast<std::size_t>(openBox_)].box.goButton == index;
    if (own || IsStopButton(index)) Go();
  } else if (auto it = buttons_.find(base); it != buttons_.end()) {
    it->second(index);
  }
  Touch();
  return true;
}

bool Form::Go() {
  if (Working()) {
    context_.Beep();
    return true;
  }
  if (StopWork()) return true;
  if (openBox_ < 0) return false;
  const BoundSideBox& open = sideBoxes_[static_cast<std::size_t>(openBox_)];
  if (!open.go) return false;
  open.go();
  return true;
}

void Form::RunPaced(const std::function<void()>& work) {
  struct Count {
    int& n;
    explicit Count(int& c) : n(c) { ++n; }
    ~Count() { --n; }
  } count(working_);
  platform::EventLoop* loop = context_.services().eventLoop;
  PaceScope scope([loop] {
    if (loop != nullptr) loop->Yield();
  });
  work();
}

void Form::OpenSideBox(int row) {
  const BoundSideBox& bound = sideBoxes_[static_cast<std::size_t>(row)];
  SideBoxOpening(bound.box.panel);
  ShowPanel(bound.box.panel);
  sideBoxKey_ = bound.box.key;
  openBox_ = row;
  if (controls_.Has("mnuHelpSideBox")) {
    controls_.SetText("mnuHelpSideBox", std::string("Help for ") + bound.box.topic);
    controls_.SetVisible("mnuHelpSideBox", true);
  }
  Touch();
  if (bound.open) bound.open();
}

void Form::RestoreSideBox() {
  if (sideBoxKey_.empty()) return;
  for (const BoundSideBox& bound : sideBoxes_) {
    if (sideBoxKey_ != bound.box.key) continue;
    // The handler runs whatever the item's state, as the load calls it.
    if (CommandBuilt(bound.box.menuItem)) RunHandler(bound.box.menuItem);
    return;
  }
  RestoreOtherKey(sideBoxKey_);
}

void Form::ShowPanel(int panel) {
  for (int k = 0; k < panelCount_; ++k) controls_.SetVisible(IndexedName("PicSideBox", k), k == panel);
}

void Form::ForgetSideBox() {
  sideBoxKey_.clear();
  openBox_ = -1;
}

int Form::VisiblePanel() const {
  for (int k = 0; k < panelCount_; ++k)
    if (const Control* c = controls_.Find(IndexedName("PicSideBox", k)); c && c->visible) return k;
  return -1;
}

const std::string& Form::CursorText() const {
  static const std::string kNone;
  return kNone;
}

const FormLayout& Form::Layout() const {
  static const FormLayout kNone;
  return kNone;
}

bool Form::LoadForm(const std::string&, const std::string&) { return false; }

void Form::DisableItemsWithoutHandler() {
  // A title with children stays enabled when any child is enabled.
  std::function<bool(const std::vector<MenuNode>&)> walk = [&](const std::vector<MenuNode>& nodes) {
    bool any = false;
    for (const MenuNode& n : nodes) {
      if (n.IsSeparator()) continue;
      bool on = n.children.empty() ? HasHandler(n.name) : walk(n.children);
      if (Control* c = controls_.Find(n.name); c && !on) c->enabled = false;
      any = any || on;
    }
    return any;
  };
  walk(menuBar_);
  walk(popupMenu_);
  // Titles on the menu bar are never disabled: an empty menu still opens.
  for (const MenuNode& n : menuBar_)
    if (!n.IsSeparator()) controls_.SetEnabled(n.name, true);
}

void Form::AddCommonFileHandlers() {
  // The New items make a form of the kind that the table of kinds gives
  // their position or name.
  auto makeNew = [this](FormKind kind) {
    int code = 0;
    if (!context_.NewForm(kind, code)) context_.ReportFactoryFailure(code);
  };
  OnMenu("mnuNew", [this, makeNew](int index) {
    for (const FormKindInfo& k : context_.Kinds())
      if (index >= 0 && k.newItem.position == index) makeNew(k.kind);
  });
  for (const FormKindInfo& k : context_.Kinds()) {
    for (const char* name : {k.newItem.frameName, k.newItem.otherName})
      if (name && k.newItem.position >= 0) OnMenu(name, [makeNew, kind = k.kind](int) { makeNew(kind); });
  }
  OnMenu("mnuClose", [this](int) { context_.CloseForm(*this); });
}

}  // namespace keldo

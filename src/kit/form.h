#pragma once
// A child form: its state, its control model and its commands. Forms run
// without a screen; a view shows the state and turns input into these calls.

#include <array>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "kit/controls.h"
#include "kit/form_kind.h"
#include "kit/layout.h"
#include "kit/side_box.h"
#include "platform/color.h"
#include "platform/surface.h"

namespace keldo {

class FormContext;

enum class MouseAction { Down, Move, Up };
enum class MouseButton { None, Left, Right };

// One picture a form shows: its cell among the form's pictures, the map
// from its corners to the form's own coordinates, and the texts around it.
struct Picture {
  int row = 0, column = 0;
  // User coordinates of the corners; pointer events arrive in them.
  platform::UserScale scale;
  // Axis labels: under the picture from left to right, and beside it from
  // top to bottom. Empty texts are not drawn.
  std::array<std::string, 5> bottomLabels;
  std::array<std::string, 5> leftLabels;
  // A caption under this picture; `captioned` keeps its place even while it
  // is empty, so that a double click there can set it.
  std::string caption;
  bool captioned = false;
  // 0: the picture fills its cell. Otherwise its natural side in pixels: it
  // is drawn at the largest whole multiple of it that fits, so it stays crisp.
  int side = 0;
};

// A graph as a dump shows it.
struct GraphSummary {
  double a = 0, b = 0, h = 0, peak = 0;
  std::vector<double> values;
  // A matrix: `rows` rows of values.size()/rows samples, row 0 first.
  int rows = 0;
  // Further fields of the graph by name: a text, or numbers.
  struct Field {
    std::string name;
    std::string text;
    std::vector<double> numbers;  // used when the text is empty and this is not
    std::vector<std::string> texts = {};  // a list of texts, used when not empty
    bool numberList = false;  // the numbers as a list even when there are none or one
  };
  std::vector<Field> fields;
};

class Form {
 public:
  Form(FormContext& context, FormKind kind);
  virtual ~Form() = default;
  Form(const Form&) = delete;
  Form& operator=(const Form&) = delete;

  FormKind Kind() const { return kind_; }
  FormContext& context() { return context_; }
  const std::string& Caption() const { return caption_; }
  void SetCaption(const std::string& caption);

  // Position given by the frame's cascade, in pixels of the screen.
  int left = 0;
  int top = 0;
  bool maximized = false;

  ControlModel& controls() { return controls_; }
  const ControlModel& controls() const { return controls_; }
  const std::vector<MenuNode>& MenuBar() const { return menuBar_; }
  const std::vector<MenuNode>& PopupMenu() const { return popupMenu_; }

  // Runs a menu item by control name, as a click on it would. Returns false
  // when no such item exists; a disabled or hidden item does nothing.
  bool RunMenu(const std::string& name, int index = -1);
  // Presses a named button; false when no such button exists. A disabled
  // or hidden button does nothing. The button's handler runs; a Go button
  // runs Go when it belongs to the open box or stops the running work.
  bool Click(const std::string& name);
  // Presses the Go button of the open side box: stops the running work if
  // any, else runs the open command. False when there is nothing to run.
  bool Go();
  // The pointer on the plot, in graph coordinates; false when the form has
  // no plot to point at.
  virtual bool Mouse(MouseAction, double, double, MouseButton) { return false; }
  // The plot face: what any view needs to show the form's pictures without
  // knowing its kind. Paint draws one picture onto a surface of any size.
  virtual std::vector<Picture> Pictures() const { return {}; }
  virtual void Paint(int /*picture*/, platform::Surface& /*surface*/) const {}
  // The pointer on a picture, in that picture's coordinates.
  virtual bool PictureMouse(int picture, MouseAction action, double x, double y, MouseButton button) {
    return picture == 0 && Mouse(action, x, y, button);
  }
  // The point a script's `mouse` line names for a point (x, y) of a picture,
  // the inverse of Mouse's routing; false when Mouse cannot reach that
  // picture. A form that routes Mouse elsewhere than picture 0 says so here.
  virtual bool ScriptPoint(int picture, double x, double y, double& scriptX, double& scriptY) const {
    scriptX = x;
    scriptY = y;
    return picture == 0;
  }
  // Whether moves of the pointer (with no button held) are wanted.
  virtual bool TracksPointer() const { return false; }
  // The read-out beside the pointer, empty for none, and its colour.
  virtual const std::string& CursorText() const;
  virtual platform::Rgb ReadoutColour() const { return platform::kWhite; }
  // A double click on a picture's caption.
  virtual void PictureCaptionActivated(int /*picture*/) {}
  // The quick help of a field on F1 or a press; false when it has none.
  virtual bool FieldHelp(const std::string& /*name*/) { return false; }
  // F1 in the formula box: help on the selected text, or on formulas.
  virtual void FormulaHelp(const std::string& /*selected*/) {}
  // The panels, bottom row and caption a view draws around the pictures.
  virtual const FormLayout& Layout() const;

  // The form's window became the active one.
  virtual void Activated() {}
  // A person changed a control's value (a list choice, a text, an option).
  virtual void ControlChanged(const std::string&) {}

  // What a dump shows.
  virtual int Points() const { return 0; }
  virtual std::array<double, 4> Window() const { return {0, 0, 0, 0}; }
  virtual std::vector<GraphSummary> Graphs() const { return {}; }

  // Named calls from the frame and from other forms. LoadForm fills the form
  // from a form file; false on failure (the caller reports).
  virtual bool LoadForm(const std::string& path, const std::string& title);
  virtual bool CanLoadForms() const { return false; }
  // Reads a data file as a new graph; false after reporting a failure.
  virtual bool LoadDataFile(const std::string&, const std::string&) { return false; }
  // A refused close (a plot is running) beeps and returns false.
  virtual bool QueryClose() { return true; }
  // Whether a paced command is running; the form then refuses menus,
  // buttons and closing, with a beep.
  bool Working() const { return working_ > 0; }

  // The side box: the key of the open command ("" for none) and the panel shown.
  const std::string& SideBoxKey() const { return sideBoxKey_; }
  int VisiblePanel() const;

  // Raised after every change a view must show: by Touch, and by itself
  // whenever the control model changes.
  unsigned long long Revision() const { return revision_ + controls_.Changes(); }
  void Touch() { ++revision_; }
  // Runs a long command whose matrix loops hand control to the event loop
  // every fourth row, so that the window keeps painting; meanwhile the form
  // is Working.
  void RunPaced(const std::function<void()>& work);

 protected:
  using MenuHandler = std::function<void(int index)>;
  using ButtonHandler = std::function<void(int index)>;
  // Handler for every button named `baseName` or `baseName(i)`; an exact
  // name wins over its base.
  void OnButton(const std::string& baseName, ButtonHandler handler) { buttons_[baseName] = std::move(handler); }

  // Binds a form kind's side-box table: each row's menu item opens its box.
  // `panels` is the number of PicSideBox panels.
  template <class F>
  void BindSideBoxes(F& self, std::span<const SideBoxRow<F>> rows, int panels) {
    panelCount_ = panels;
    for (const SideBoxRow<F>& row : rows) {
      BoundSideBox bound{row.box, nullptr, nullptr};
      if (row.open) bound.open = [&self, open = row.open, box = row.box] { (self.*open)(box); };
      if (row.go && row.paced) bound.go = [&self, go = row.go] { self.RunPaced([&self, go] { (self.*go)(); }); };
      else if (row.go) bound.go = [&self, go = row.go] { (self.*go)(); };
      const int k = static_cast<int>(sideBoxes_.size());
      sideBoxes_.push_back(std::move(bound));
      OnMenu(row.box.menuItem, [this, k](int) { OpenSideBox(k); });
    }
  }
  // Opens the box of a table row as its menu item does.
  void OpenSideBox(int row);
  // Opens the first box whose key is `key`, as loading a form file does; a
  // key with no built command does nothing.
  void RestoreSideBox();
  // Shows one panel and hides the others; the open command stays.
  void ShowPanel(int panel);
  // A stored key that names no row of the table: the form's own rule.
  virtual void RestoreOtherKey(const std::string& /*key*/) {}
  // Forgets the open command and its key; the panels are left as they are.
  void ForgetSideBox();
  void SetSideBoxKey(const std::string& key) { sideBoxKey_ = key; }
  // The form's own preparation before a box opens on `panel`.
  virtual void SideBoxOpening(int /*panel*/) {}
  // Whether Go button k stops work that is running now; StopWork stops it
  // and returns true, or returns false when nothing runs.
  virtual bool IsStopButton(int /*k*/) const { return false; }
  virtual bool StopWork() { return false; }
  void SetMenu(std::vector<MenuNode> bar) { menuBar_ = std::move(bar); }
  void SetPopupMenu(std::vector<MenuNode> popup) { popupMenu_ = std::move(popup); }
  // Handler for every item named `baseName` or `baseName(i)`.
  void OnMenu(const std::string& baseName, MenuHandler handler) { handlers_[baseName] = std::move(handler); }
  // Disables every menu item that has no handler: commands not built yet.
  void DisableItemsWithoutHandler();
  // The File menu items every kind has: New forms of each kind and Close.
  void AddCommonFileHandlers();
  bool HasHandler(const std::string& controlName) const;
  // Runs the handler of a menu item whatever its enabled state.
  void RunHandler(const std::string& fullName);
  // A menu item's command is built: it has a handler, or, for a parent
  // menu, one of its items has.
  bool CommandBuilt(const std::string& controlName) const;

  FormContext& context_;
  ControlModel controls_;

 private:
  FormKind kind_;
  std::string caption_;
  std::vector<MenuNode> menuBar_;
  std::vector<MenuNode> popupMenu_;
  std::map<std::string, MenuHandler> handlers_;
  std::map<std::string, ButtonHandler> buttons_;
  struct BoundSideBox {
    SideBoxCommand box;
    std::function<void()> open, go;
  };
  std::vector<BoundSideBox> sideBoxes_;
  int openBox_ = -1;
  int panelCount_ = 0;
  std::string sideBoxKey_;
  unsigned long long revision_ = 0;
  int working_ = 0;
};

}  // namespace keldo

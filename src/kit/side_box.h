#pragma once
// The commands that open a form's side box, as a table: each row names the
// menu item, the key a form file keeps to open the box again, the box's
// title and help topic, its panel and the Go button that runs it. A form
// kind declares one table; the form base binds every row's menu item, opens
// the box, restores it by key and sends Go to the row's handler.

#include <span>

namespace keldo {

struct SideBoxCommand {
  const char* menuItem;  // the item that opens the box, with its index if any
  const char* key;       // kept in form files; "" when the box is not restored
  const char* topic;     // the box's help topic, which titles it
  int panel;             // the PicSideBox panel it shows
  int goButton;          // the GoButton(k) that runs it; -1 when none
};

// A row of a form kind's table: the box, what the form does once it is open
// (presets, titles, the fields this command reads), what Go runs, and
// whether Go runs paced (a long matrix command that serves the event loop
// as it goes; see Form::RunPaced).
template <class F>
struct SideBoxRow {
  SideBoxCommand box;
  void (F::*open)(const SideBoxCommand&) = nullptr;
  void (F::*go)() = nullptr;
  bool paced = false;
};

}  // namespace keldo

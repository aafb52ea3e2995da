// Any text pasted as a graph from the clipboard into a form that holds one
// graph: either a graph is added (here or in a new form) or one of messages
// 89, 90 and 91 is shown and nothing changes, or the paste ends silently.

#include <unistd.h>

#include "fuzz/fuzz_frame.h"
#include "form1d/graph1_form.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace keldo;
  fuzz::FuzzFrame t;
  int code = 0;
  auto* form = dynamic_cast<form1d::Graph1Form*>(t.frame.NewForm(FormKind::Graph1, code));
  if (!form) std::abort();
  form->SetPoints(64);
  std::vector<double> y(65, 1.0);
  form->UpDateFnData(64, y, -0.5, 0.5, 1.0 / 64, false);
  t.platform.clipboard.SetText(std::string(reinterpret_cast<const char*>(data), size));
  form->PasteFromTheClipboard();
  const std::size_t forms = t.frame.OpenForms().size();
  const int graphs = form->GraphCount();
  if (t.lines.empty()) {
    // Added here, in a new form, or ended silently.
    if (graphs > 2 || forms > 2 || (graphs == 2 && forms != 1)) std::abort();
    return 0;
  }
  if (graphs != 1 || forms != 1 || t.lines.size() != 1) std::abort();
  const std::string& m = t.lines[0];
  if (m.rfind("message 89:", 0) != 0 && m.rfind("message 90:", 0) != 0 && m.rfind("message 91:", 0) != 0) std::abort();
  return 0;
}

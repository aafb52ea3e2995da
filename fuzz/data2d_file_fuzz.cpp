// Any bytes as a two-dimensional data file or picture (the first byte
// chooses .kb2, .pgm or .bmp), through the frame's open path: one graph on
// a new form, or a message and no form left behind.

#include "form2d/graph2_form.h"
#include "form2d/image_files.h"
#include "fuzz/fuzz_frame.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace keldo;
  if (size == 0) return 0;
  static const char* kExtensions[] = {".kb2", ".pgm", ".bmp"};
  const char* extension = kExtensions[data[0] % 3];
  fuzz::FuzzFrame t;
  const std::string path = fuzz::WriteInput(data + 1, size - 1, extension);
  Form* form = t.frame.OpenDataFile(FormKind::Graph2, path);
  if (!form) {
    if (!t.frame.OpenForms().empty() || t.lines.size() != 1) std::abort();
    const std::string& line = t.lines[0];
    if (line != "message 20: Error loading file." && line.find("not square") == std::string::npos) std::abort();
    return 0;
  }
  if (t.frame.OpenForms().size() != 1 || form->Graphs().size() != 1) std::abort();
  if (form->Points() < form2d::kMinFilePoints || form->Points() > form2d::kMaxFilePoints) std::abort();
  return 0;
}

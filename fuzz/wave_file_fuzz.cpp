// Any bytes as a wave file through the one-dimensional form's load path: a
// graph comes in, or one message (43 stereo, 46, 47, 48) is shown and the
// form is unchanged; never a crash.

#include <unistd.h>

#include <cstdlib>

#include "form1d/graph1_form.h"
#include "fuzz/fuzz_frame.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace keldo;
  fuzz::FuzzFrame t;
  t.frame.settings().soundBufferFolder = "/tmp/keldo-fuzz-sound";
  int code = 0;
  auto* form = dynamic_cast<form1d::Graph1Form*>(t.frame.NewForm(FormKind::Graph1, code));
  if (!form) std::abort();
  const std::string path = fuzz::WriteInput(data, size, ".wav");
  const bool loaded = form->LoadDataFile(path, "fuzz.wav");
  const std::size_t forms = t.frame.OpenForms().size();
  if (loaded) {
    // Into this form, a new one of another N, or the sound editor.
    if (!t.lines.empty() || (form->GraphCount() != 1 && forms != 2)) std::abort();
    return 0;
  }
  if (form->GraphCount() != 0 || forms != 1 || t.lines.size() != 1) std::abort();
  const std::string& m = t.lines[0];
  for (const char* allowed : {"message 43:", "message 46:", "message 47:", "message 48:"})
    if (m.rfind(allowed, 0) == 0) return 0;
  std::abort();
}

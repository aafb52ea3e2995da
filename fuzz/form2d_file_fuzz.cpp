// Any bytes as a two-dimensional form file, through the frame's open path:
// a form that loads must hold what the file says and draw it; one that does
// not must give message 73 and leave no form behind.

#include "form2d/graph2_form.h"
#include "form2d/image_files.h"
#include "fuzz/fuzz_frame.h"
#include "platform/headless/raster_surface.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace keldo;
  fuzz::FuzzFrame t;
  const std::string path = fuzz::WriteInput(data, size, ".kd2");
  const auto record = form2d::ReadKd2(std::vector<std::uint8_t>(data, data + size));
  Form* form = t.frame.OpenFormFile(FormKind::Graph2, path, "fuzz.kd2");
  if (!record) {
    if (form || !t.frame.OpenForms().empty()) std::abort();
    fuzz::ExpectOnly(t.lines, "message 73: Error loading form.");
    return 0;
  }
  if (!form || form->Points() != record->points) std::abort();
  if (form->Graphs().size() != record->graphs.size()) std::abort();
  // The loaded form draws every picture, whatever its windows and values.
  for (std::size_t p = 0; p < form->Pictures().size(); ++p) {
    platform::RasterSurface surface(64, 64);
    form->Paint(static_cast<int>(p), surface);
  }
  // What was read writes back to the same record.
  const auto again = form2d::ReadKd2(form2d::WriteKd2(*record));
  if (!again || again->graphs.size() != record->graphs.size() || again->points != record->points) std::abort();
  return 0;
}

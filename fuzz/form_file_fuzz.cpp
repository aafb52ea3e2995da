// Any bytes as a one-dimensional form file, through the frame's open path:
// a form that loads must hold what the file says; one that does not must give
// message 73 and leave no form behind. A loaded form must draw.

#include <unistd.h>

#include <cmath>

#include "fuzz/fuzz_frame.h"
#include "form1d/graph1_form.h"
#include "form1d/graph_files.h"
#include "platform/headless/raster_surface.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace keldo;
  fuzz::FuzzFrame t;
  const std::string path = fuzz::WriteInput(data, size, ".kd1");
  const std::vector<std::uint8_t> bytes(data, data + size);
  const auto record = form1d::ReadFormFile(bytes);
  Form* form = t.frame.OpenFormFile(FormKind::Graph1, path, "fuzz.kd1");
  if (!record) {
    if (form || !t.frame.OpenForms().empty()) std::abort();
    fuzz::ExpectOnly(t.lines, "message 73: Error loading form.");
    return 0;
  }
  if (!form || form->Points() != record->points) std::abort();
  if (form->Graphs().size() != record->graphs.size()) std::abort();
  // The loaded form draws, whatever its window and values.
  platform::RasterSurface surface(97, 61);
  static_cast<form1d::Graph1Form*>(form)->Paint(surface);
  // What was read writes back to the same groups.
  const auto again = form1d::ReadFormFile(form1d::WriteFormFile(*record));
  if (!again || again->graphs.size() != record->graphs.size()) std::abort();
  return 0;
}

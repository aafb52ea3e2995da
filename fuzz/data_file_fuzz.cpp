// Any bytes as a .kb1 or .kdt data file (the first byte chooses), through the
// frame's open path: a graph, or message 20 and no form left behind.

#include <unistd.h>

#include "fuzz/fuzz_frame.h"
#include "form1d/graph_files.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace keldo;
  if (size == 0) return 0;
  const bool kdt = (data[0] & 1) != 0;
  fuzz::FuzzFrame t;
  const std::string path = fuzz::WriteInput(data + 1, size - 1, kdt ? ".kdt" : ".kb1");
  const auto record = form1d::ReadDataFile(std::vector<std::uint8_t>(data + 1, data + size),
                                           kdt ? form1d::DataFileType::Kdt : form1d::DataFileType::Kb1);
  Form* form = t.frame.OpenDataFile(FormKind::Graph1, path);
  if (!record) {
    if (form || !t.frame.OpenForms().empty()) std::abort();
    fuzz::ExpectOnly(t.lines, "message 20: Error loading file.");
    return 0;
  }
  if (!form || form->Points() != record->points || form->Graphs().size() != 1) std::abort();
  return 0;
}

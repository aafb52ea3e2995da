#include "print/print_calls.h"

#include "print/form_print.h"
#include "print/graph_image.h"
#include "print/print_graph.h"

namespace keldo::print {
namespace {

class Library final : public PrintCalls {
 public:
  void PressPrintButton(Form& form, int picture, int index, const PrintBoxNames& names) override {
    print::PressPrintButton(form, picture, index, names);
  }
  bool SavePrintGraphToFile(Form& form, int picture, const std::string& path, const std::string& title) override {
    return print::SavePrintGraphToFile(form, picture, path, title);
  }
  bool PressPrintFormButton(Form& form, const std::string& name, const ValueReader& readValue) override {
    return print::PressPrintFormButton(form, name, readValue);
  }
  void PrintTheForm(Form& form, const std::string& destination, const ValueReader& readValue) override {
    print::PrintTheForm(form, destination, readValue);
  }
};

}  // namespace

PrintCalls& PrintLibrary() {
  static Library library;
  return library;
}

}  // namespace keldo::print

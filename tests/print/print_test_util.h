#pragma once
// Helpers of the print tests: a one-dimensional form with a graph in a
// chosen window and style, the lines the recording printer drew in one
// colour, and a scratch folder.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "form1d_driver.h"
#include "platform/color.h"
#include "platform/headless/headless_services.h"

namespace keldo::testing {

// The graph of `formula` over [-0.5, 0.5], shown in the window
// [xl, xr] x [yb, yt] as lines, with no grid when `blank`.
inline form1d::Graph1Form& GraphInWindow(TestFrame& t, const std::string& formula, const std::string& x,
                                         const std::string& y, bool blank = false) {
  form1d::Graph1Form& f = NewGraphForm(t, 256);
  Plot(f, formula);
  f.RunMenu("mnuDisplayStyle");
  f.controls().SetText("txtXinterval", x);
  f.controls().SetText("txtYinterval", y);
  f.controls().SetFromUser("OpDispStyle(3)", "1");  // lines
  if (blank) f.controls().SetFromUser("OpDispStyle(2)", "1");
  f.Go();
  return f;
}

inline std::vector<platform::PrintedItem> ItemsOf(const platform::HeadlessPrinter& printer, const std::string& kind,
                                                  platform::Rgb colour) {
  std::vector<platform::PrintedItem> out;
  for (const auto& item : printer.Items())
    if (item.kind == kind && item.color == colour) out.push_back(item);
  return out;
}

inline std::vector<platform::PrintedItem> ItemsOf(const platform::HeadlessPrinter& printer, const std::string& kind) {
  std::vector<platform::PrintedItem> out;
  for (const auto& item : printer.Items())
    if (item.kind == kind) out.push_back(item);
  return out;
}

inline bool Said(const TestFrame& t, const std::string& start) {
  return std::any_of(t.lines.begin(), t.lines.end(), [&](const std::string& l) { return l.rfind(start, 0) == 0; });
}

// A fresh folder for one test's files, removed at the end.
struct ScratchFolder {
  std::filesystem::path path;
  explicit ScratchFolder(const std::string& name)
      : path(std::filesystem::temp_directory_path() / ("keldo-print-" + name + "-" + std::to_string(::getpid()))) {
    std::filesystem::remove_all(path);
    std::filesystem::create_directories(path);
  }
  ~ScratchFolder() { std::filesystem::remove_all(path); }
  std::string operator/(const std::string& file) const { return (path / file).string(); }
  std::vector<std::string> Files() const {
    std::vector<std::string> names;
    for (const auto& e : std::filesystem::directory_iterator(path)) names.push_back(e.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }
};

}  // namespace keldo::testing

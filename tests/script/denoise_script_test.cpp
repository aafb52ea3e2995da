// keldo-run on SureShrink and the two-dimensional form's wavelet denoiser:
// each chosen by its menu, its boxes set, run and the form dumped, as the
// user guide's example does.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

#include "app/frame.h"
#include "kinds/form_kinds.h"
#include "platform/headless/headless_services.h"
#include "script/runner.h"
#include "script_fixture.h"

namespace keldo::script {
namespace {

// How often `what` stands in `text`.
int Count(const std::string& text, const std::string& what) {
  int n = 0;
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
  return n;
}

TEST(ScriptDenoise, TheTwoDimensionalDenoiseFilesItsResultAsANewGraph) {
  Script r;
  const int status = r(
      "new 2d\nmenu mnu64\nmenu mnuPlot\nset Formula \"100+50*(abs(x)<0.2)+10*sin(97*x*y)\"\ngo\n"
      "menu mnuDenoiseWavelet\nset wavlevels 3\nset chkDenoise(2) 1\nset AvgType 1D\ngo\ndump brief\n");
  ASSERT_EQ(status, 0) << r.err.str();
  const std::string json = r.out.str();
  // The source and the result: two matrices of 65 rows.
  EXPECT_EQ(Count(json, "\"rows\": 65, \"columns\": 65"), 2) << json.substr(0, 600);
  EXPECT_NE(json.find("\"labWavelet\": {\"caption\": \"Denoise\""), std::string::npos);
  EXPECT_NE(json.find("\"Label(24)\": {\"caption\": \"100% done\""), std::string::npos);
  EXPECT_NE(json.find("\"GoButton(5)\": {\"caption\": \"Plot\""), std::string::npos);
  EXPECT_EQ(json.find("\"messages\": [\""), std::string::npos);
}

TEST(ScriptDenoise, SureShrinkFillsTheRightImage) {
  const std::filesystem::path path = std::filesystem::temp_directory_path() / ("keldo-sureshrink-script-" + std::to_string(::getpid()) + ".pgm");
  {
    std::ofstream out(path, std::ios::binary);
    out << "P5\n64 64\n255\n";
    std::mt19937 g(3);
    std::normal_distribution<double> noise(0.0, 12.0);
    for (int k = 0; k < 64 * 64; ++k) out.put(static_cast<char>(std::clamp(120 + static_cast<int>(noise(g)), 0, 255)));
  }
  Script r;
  const int status = r("new imageproc\nfile \"" + path.string() +
                       "\"\nmenu mnuGetImage\nmenu mnuDenoiseSureShrink\nset txtLevels 3\nset chkShrinkage2 1\n"
                       "click cmdBegin\ndump brief\n");
  std::filesystem::remove(path);
  ASSERT_EQ(status, 0) << r.err.str();
  const std::string json = r.out.str();
  EXPECT_NE(json.find("\"caption\": \"Denoise-SureShrink\""), std::string::npos);
  EXPECT_NE(json.find("\"name\": \"left\""), std::string::npos);
  EXPECT_NE(json.find("\"name\": \"right\""), std::string::npos);
}

}  // namespace
}  // namespace keldo::script

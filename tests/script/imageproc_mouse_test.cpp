// keldo-run's `mouse` on the image processor: x and y of its pixels, x
// along the columns of the dumped matrices and y along their rows, as the
// form's own drag takes them.

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "app/frame.h"
#include "kinds/form_kinds.h"
#include "platform/headless/headless_services.h"
#include "script/runner.h"
#include "script_fixture.h"

namespace keldo::script {
namespace {

// A picture of 48 bytes a row (y) and 32 rows (x): value 4x + y.
std::string WritePicture() {
  const std::filesystem::path path = std::filesystem::temp_directory_path() / ("keldo-mouse-script-" + std::to_string(::getpid()) + ".pgm");
  std::ofstream out(path, std::ios::binary);
  out << "P5\n48 32\n255\n";
  for (int x = 0; x < 32; ++x)
    for (int y = 0; y < 48; ++y) out.put(static_cast<char>(4 * x + y));
  return path.string();
}

TEST(ScriptImageProcessor, AMouseDragMarksTheRegionInThePicturesPixels) {
  const std::string path = WritePicture();
  Script r;
  const int status = r("new imageproc\nfile \"" + path +
                       "\"\nmenu mnuGetImage\nmouse down 20 30\nmouse move 9 9\nmouse up 5 8\n"
                       "menu mnuMedianDenoise\nmenu mnuErrormeasures\nset OpErrorMeasure(0) 1\n"
                       "set chkROIErrorOnly 1\nclick cmdBegin\ndump\n");
  std::filesystem::remove(path);
  ASSERT_EQ(status, 0) << r.err.str();
  const std::string json = r.out.str();
  EXPECT_NE(json.find("Upper left corner: (5,8)\\r\\nLower right corner: (20,30)\\r\\n"), std::string::npos) << json.substr(0, 600);
  // 4x + y rises by 1 along y and 4 along x: inside the region every
  // pixel's plain median is its own value, and the largest difference is 0.
  EXPECT_NE(json.find("ROI Sup-norm difference = 0"), std::string::npos);
  EXPECT_NE(json.find("\"txtROIPercent\": {\"text\": \"0.5\", \"value\": 0, \"enabled\": true"), std::string::npos);
  // The dumped left image: row y, column x, 4x + y; row 8 starts 8, 12, 16.
  EXPECT_NE(json.find("8, 12, 16, 20"), std::string::npos);
}

TEST(ScriptImageProcessor, APointerWithoutAPictureIsNoError) {
  Script r;
  EXPECT_EQ(r("new imageproc\nmouse down 3 4\nmouse up 9 9\ndump brief\n"), 0) << r.err.str();
  EXPECT_TRUE(r.err.str().empty());
  EXPECT_EQ(r.out.str().find("Upper left corner"), std::string::npos);
}

}  // namespace
}  // namespace keldo::script

// keldo-run on the image processor's denoisers: TAWS chosen by its menu,
// its boxes set, Compute clicked and the form dumped; a .bcd file coded and
// read back by a script.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
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

// 64 by 64: a flat 100 with a square of 180, and a checked pattern of +-20
// over all of it, which the finest diagonal band holds alone.
std::string WriteNoisyPicture() {
  const std::filesystem::path path = std::filesystem::temp_directory_path() / ("keldo-denoise-script-" + std::to_string(::getpid()) + ".pgm");
  std::ofstream out(path, std::ios::binary);
  out << "P5\n64 64\n255\n";
  for (int x = 0; x < 64; ++x)
    for (int y = 0; y < 64; ++y) {
      const int base = x >= 16 && x < 40 && y >= 20 && y < 44 ? 180 : 100;
      out.put(static_cast<char>(base + ((x + y) % 2 == 0 ? 20 : -20)));
    }
  return path.string();
}

TEST(ScriptImageProcessor, TawsRunsFromItsMenuAndTheDumpShowsTheResult) {
  const std::string path = WriteNoisyPicture();
  Script r;
  const int status = r("new imageproc\nfile \"" + path +
                       "\"\nmenu mnuGetImage\nmenu mnuDenoiseTAWS\nset txtLevels 3\nset txtDescentPower2 4\n"
                       "click cmdBegin\ndump\n");
  std::filesystem::remove(path);
  ASSERT_EQ(status, 0) << r.err.str();
  const std::string json = r.out.str();
  EXPECT_NE(json.find("\"caption\": \"Denoise-TAWS\""), std::string::npos);
  // The checked pattern is all in the finest diagonal band: its values are
  // the pattern's 20 scaled by the 9/7 filters' gains, the same at every
  // position, so sigma is that value over 0.6745, far above 12.8: depth 2.
  EXPECT_NE(json.find("\"txtDepth2\": {\"text\": \"2\""), std::string::npos) << json.substr(0, 400);
  EXPECT_NE(json.find("Threshold = "), std::string::npos);
  EXPECT_NE(json.find("\"name\": \"right\""), std::string::npos);
}

TEST(ScriptImageProcessor, ABcdFileIsCodedAndReadBack) {
  const std::string path = WriteNoisyPicture();
  const std::string coded = (std::filesystem::temp_directory_path() / ("keldo-denoise-script-" + std::to_string(::getpid()) + ".bcd")).string();
  Script r;
  const int status = r("new imageproc\nfile \"" + path +
                       "\"\nmenu mnuGetImage\nmenu mnuCompress\nset OpEntropyCode(2) 1\nset txtBitRate 1\n"
                       "file \"" + coded + "\"\nclick cmdBegin\nfile \"" + coded + "\"\nclick cmdBegin\ndump\n");
  std::filesystem::remove(path);
  ASSERT_EQ(status, 0) << r.err.str();
  ASSERT_TRUE(std::filesystem::exists(coded));
  // 1 bpp of 64 by 64 is 4096 bits, 512 bytes after the 21 of the head;
  // with the checked pattern cleared as noise the square's few values end
  // the 32 passes of the 9/7 wavelet well before.
  const auto size = std::filesystem::file_size(coded);
  EXPECT_GT(size, 21u + 16u);
  EXPECT_LT(size, 21u + 512u);
  std::filesystem::remove(coded);
  const std::string json = r.out.str();
  EXPECT_NE(json.find("Image decompressed."), std::string::npos);
  EXPECT_NE(json.find("Number of significant values decoded:  "), std::string::npos);
}

TEST(ScriptImageProcessor, ADescentOfZeroIsARunError) {
  const std::string path = WriteNoisyPicture();
  Script r;
  const int status = r("new imageproc\nfile \"" + path +
                       "\"\nmenu mnuGetImage\nmenu mnuDenoiseTAWS\nset txtDescentPower2 0\nclick cmdBegin\ndump\n");
  std::filesystem::remove(path);
  ASSERT_EQ(status, 0) << r.err.str();
  const std::string json = r.out.str();
  EXPECT_NE(json.find("Run Error."), std::string::npos);
  EXPECT_EQ(json.find("\"name\": \"right\""), std::string::npos);
}

}  // namespace
}  // namespace keldo::script

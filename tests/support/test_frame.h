#pragma once
// A frame on headless services, for tests.

#include <unistd.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "kinds/form_kinds.h"
#include "app/frame.h"
#include "platform/headless/headless_services.h"

namespace keldo::testing {

struct TestFrame {
  std::vector<std::string> lines;
  platform::HeadlessPlatform platform{[this](const std::string& l) { lines.push_back(l); },
                                      KELDO_SOURCE_DIR "/docs"};
  Frame frame{platform.services(), KELDO_SOURCE_DIR};
  TestFrame() {
    InstallFormKinds(frame);
    // Sound buffers go to a folder of the test run, not to the sources.
    frame.settings().soundBufferFolder =
        (std::filesystem::temp_directory_path() / ("keldo-test-sound-" + std::to_string(::getpid()))).string();
    frame.settings().compressFolder =
        (std::filesystem::temp_directory_path() / ("keldo-test-compress-" + std::to_string(::getpid()))).string();
  }
};

// A path in the temporary folder that no other test process uses at the
// same time: the stem with the process number before its extension.
inline std::filesystem::path UniqueTempPath(const std::string& name) {
  const std::filesystem::path base(name);
  return std::filesystem::temp_directory_path() /
         (base.stem().string() + "-" + std::to_string(::getpid()) + base.extension().string());
}

}  // namespace keldo::testing

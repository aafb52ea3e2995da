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

}  // namespace keldo::testing

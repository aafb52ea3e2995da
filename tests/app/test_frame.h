#pragma once
// A frame on headless services, for tests.

#include <memory>
#include <string>
#include <vector>

#include "app/form_kinds.h"
#include "app/frame.h"
#include "platform/headless/headless_services.h"

namespace keldo::testing {

struct TestFrame {
  std::vector<std::string> lines;
  platform::HeadlessPlatform platform{[this](const std::string& l) { lines.push_back(l); },
                                      KELDO_SOURCE_DIR "/docs"};
  Frame frame{platform.services(), KELDO_SOURCE_DIR};
  TestFrame() { InstallFormKinds(frame); }
};

}  // namespace keldo::testing

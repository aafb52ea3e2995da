#pragma once
// A keldo-run runner on headless forms, for the script tests: what it
// prints goes to `out`, the reasons of lines it cannot run to `err`.

#include <sstream>
#include <string>

#include "app/frame.h"
#include "kinds/form_kinds.h"
#include "platform/headless/headless_services.h"
#include "script/runner.h"

namespace keldo::script {

struct Script {
  std::ostringstream out, err;
  Runner* runner = nullptr;
  platform::HeadlessPlatform platform{[this](const std::string& l) { runner->Print(l); },
                                      KELDO_SOURCE_DIR "/docs"};
  Frame frame{platform.services(), KELDO_SOURCE_DIR};
  Runner run{frame, platform, out, err};
  Script() {
    runner = &run;
    InstallFormKinds(frame);
  }
  int operator()(const std::string& text, bool strict = false) { return run.Run(text, {strict}); }
};

}  // namespace keldo::script

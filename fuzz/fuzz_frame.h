#pragma once
// A frame on headless services for the fuzz targets of the forms,
// with a check that a failed read leaves nothing behind.

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "kinds/form_kinds.h"
#include "app/frame.h"
#include "platform/headless/headless_services.h"

namespace keldo::fuzz {

struct FuzzFrame {
  std::vector<std::string> lines;
  platform::HeadlessPlatform platform{[this](const std::string& l) { lines.push_back(l); }, "."};
  Frame frame{platform.services(), "."};
  FuzzFrame() { InstallFormKinds(frame); }
};

// Writes the bytes to a file of this process, for the loaders that read files.
inline std::string WriteInput(const std::uint8_t* data, std::size_t size, const char* extension) {
  static const std::string base = "/tmp/keldo-fuzz-" + std::to_string(::getpid());
  const std::string path = base + extension;
  std::FILE* f = std::fopen(path.c_str(), "wb");
  if (!f) std::abort();
  if (size > 0 && std::fwrite(data, 1, size, f) != size) std::abort();
  std::fclose(f);
  return path;
}

// Aborts unless the only thing shown was the expected message.
inline void ExpectOnly(const std::vector<std::string>& lines, const std::string& message) {
  if (lines.size() != 1 || lines[0] != message) std::abort();
}

}  // namespace keldo::fuzz

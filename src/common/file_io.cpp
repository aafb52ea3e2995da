#include "common/file_io.h"

#include <cstdio>
#include <fstream>
#include <iterator>

namespace keldo {

bool ReadFileBytes(const std::string& path, std::vector<std::uint8_t>& bytes) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return false;
  bytes.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  return !file.bad();
}

std::string TemporaryPathFor(const std::string& path) { return path + ".keldo-tmp"; }

bool WriteFileBytes(const std::string& path, const std::vector<std::uint8_t>& bytes) {
  // The bytes go to a file beside the target first; only a whole file
  // replaces the old one, so a failed save leaves it as it was.
  const std::string temporary = TemporaryPathFor(path);
  {
    std::ofstream file(temporary, std::ios::binary | std::ios::trunc);
    if (!file) return false;
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
      std::remove(temporary.c_str());
      return false;
    }
  }
  if (std::rename(temporary.c_str(), path.c_str()) != 0) {
    std::remove(temporary.c_str());
    return false;
  }
  return true;
}

}  // namespace keldo

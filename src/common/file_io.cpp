#include "common/file_io.h"

#include <fstream>
#include <iterator>

namespace keldo {

bool ReadFileBytes(const std::string& path, std::vector<std::uint8_t>& bytes) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return false;
  bytes.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  return !file.bad();
}

bool WriteFileBytes(const std::string& path, const std::vector<std::uint8_t>& bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (!file) return false;
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  return static_cast<bool>(file);
}

}  // namespace keldo

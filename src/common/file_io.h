#pragma once
// Whole files in and out as bytes.

#include <cstdint>
#include <string>
#include <vector>

namespace keldo {

// False when the file cannot be opened or read.
bool ReadFileBytes(const std::string& path, std::vector<std::uint8_t>& bytes);
// False on any failure.
bool WriteFileBytes(const std::string& path, const std::vector<std::uint8_t>& bytes);

}  // namespace keldo

#pragma once
// Whole files in and out as bytes.

#include <cstdint>
#include <string>
#include <vector>

namespace keldo {

// False when the file cannot be opened or read.
bool ReadFileBytes(const std::string& path, std::vector<std::uint8_t>& bytes);
// Writes a temporary file beside path and renames it over path: on any
// failure the function returns false and an existing file stays whole.
bool WriteFileBytes(const std::string& path, const std::vector<std::uint8_t>& bytes);

// The temporary file WriteFileBytes writes before the rename.
std::string TemporaryPathFor(const std::string& path);

}  // namespace keldo

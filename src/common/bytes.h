#pragma once
// Little-endian values in and out of byte arrays, for the system's binary
// files. The reader takes any bytes: every read past the end fails and the
// reader stays failed, so that a caller may check once after a group.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace keldo {

class ByteWriter {
 public:
  void I16(std::int16_t v) { Raw(static_cast<std::uint16_t>(v), 2); }
  void I32(std::int32_t v) { Raw(static_cast<std::uint32_t>(v), 4); }
  void F32(float v) { Raw(std::bit_cast<std::uint32_t>(v), 4); }
  void F64(double v) { Raw(std::bit_cast<std::uint64_t>(v), 8); }
  void Chars(const std::string& s) { bytes.insert(bytes.end(), s.begin(), s.end()); }
  void Char(char c) { bytes.push_back(static_cast<std::uint8_t>(c)); }
  // A 32-bit length and, when it is above 0, the text.
  void CountedText(const std::string& s) {
    I32(static_cast<std::int32_t>(s.size()));
    Chars(s);
  }
  std::vector<std::uint8_t> bytes;

 private:
  void Raw(std::uint64_t v, int size) {
    for (int k = 0; k < size; ++k) bytes.push_back(static_cast<std::uint8_t>(v >> (8 * k)));
  }
};

class ByteReader {
 public:
  explicit ByteReader(const std::vector<std::uint8_t>& bytes) : bytes_(bytes) {}
  bool ok() const { return ok_; }
  std::size_t Left() const { return bytes_.size() - pos_; }
  std::int16_t I16() { return static_cast<std::int16_t>(Raw(2)); }
  std::int32_t I32() { return static_cast<std::int32_t>(Raw(4)); }
  float F32() { return std::bit_cast<float>(static_cast<std::uint32_t>(Raw(4))); }
  double F64() { return std::bit_cast<double>(Raw(8)); }
  char Char() { return static_cast<char>(Raw(1)); }
  // n bytes as text; fails for a negative n or one beyond the end.
  std::string Chars(std::int64_t n);
  // A 32-bit length, then that many bytes; nothing for a length of 0 or less.
  std::string CountedText();
  // Fails unless `count` records of `size` bytes each are still there.
  bool Room(std::int64_t count, std::int64_t size);
  void Values(std::vector<double>& out, std::size_t count) {
    out.resize(count);
    for (double& v : out) v = F64();
  }

 private:
  std::uint64_t Raw(int size);
  const std::vector<std::uint8_t>& bytes_;
  std::size_t pos_ = 0;
  bool ok_ = true;
};

}  // namespace keldo

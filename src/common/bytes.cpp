#include "common/bytes.h"

namespace keldo {

std::string ByteReader::Chars(std::int64_t n) {
  if (n < 0 || static_cast<std::uint64_t>(n) > Left()) {
    ok_ = false;
    return {};
  }
  std::string s(bytes_.begin() + static_cast<std::ptrdiff_t>(pos_),
                bytes_.begin() + static_cast<std::ptrdiff_t>(pos_ + static_cast<std::size_t>(n)));
  pos_ += static_cast<std::size_t>(n);
  return s;
}

std::string ByteReader::CountedText() {
  const std::int32_t n = I32();
  if (!ok_) return {};
  return n > 0 ? Chars(n) : std::string();
}

bool ByteReader::Room(std::int64_t count, std::int64_t size) {
  if (count < 0 || (count > 0 && static_cast<std::uint64_t>(count) > Left() / static_cast<std::uint64_t>(size)))
    ok_ = false;
  return ok_;
}

std::uint64_t ByteReader::Raw(int size) {
  if (!ok_ || Left() < static_cast<std::size_t>(size)) {
    ok_ = false;
    pos_ = bytes_.size();
    return 0;
  }
  std::uint64_t v = 0;
  for (int k = 0; k < size; ++k) v |= static_cast<std::uint64_t>(bytes_[pos_ + static_cast<std::size_t>(k)]) << (8 * k);
  pos_ += static_cast<std::size_t>(size);
  return v;
}

}  // namespace keldo

#include "wavelet/bit_layer.h"

namespace keldo::wavelet {

void BitWriter::FlushPartialByte() {
  if (filled_ == 0) return;
  bytes_.push_back(static_cast<std::uint8_t>(partial_ << (8 - filled_)));
  filled_ = 0;
  partial_ = 0;
}

void BitReader::Refill() {
  const std::size_t size = data_.size();
  for (; unread_ <= 56; unread_ += 8, ++next_) window_ = window_ << 8 | (next_ < size ? data_[next_] : 0u);
}

}  // namespace keldo::wavelet

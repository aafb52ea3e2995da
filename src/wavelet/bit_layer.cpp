#include "wavelet/bit_layer.h"

namespace keldo::wavelet {

void BitWriter::FlushPartialByte() {
  if (bitsToGo_ == 8) return;
  bytes_.push_back(static_cast<std::uint8_t>(buffer_));
  bitsToGo_ = 8;
  buffer_ = 0;
}

void BitReader::NextByte() {
  pastEnd_ = next_ >= data_.size();
  buffer_ = pastEnd_ ? 0 : data_[next_++];
  bitsToGo_ = 8;
}

}  // namespace keldo::wavelet

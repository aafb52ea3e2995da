#include "wavelet/bit_layer.h"

namespace keldo::wavelet {

void BitWriter::TransmitBit(int bit) {
  --bitsToGo_;
  if (bit != 0) buffer_ += 1 << bitsToGo_;
  if (bitsToGo_ == 0) {
    bytes_.push_back(static_cast<std::uint8_t>(buffer_));
    bitsToGo_ = 8;
    buffer_ = 0;
  }
  ++bitsUsed_;
}

void BitWriter::TransmitDbl(int bit) {
  TransmitBit(0);
  TransmitBit(bit);
}

void BitWriter::FlushPartialByte() {
  if (bitsToGo_ == 8) return;
  bytes_.push_back(static_cast<std::uint8_t>(buffer_));
  bitsToGo_ = 8;
  buffer_ = 0;
}

int BitReader::GetBit() {
  if (bitsToGo_ == 0) {
    pastEnd_ = next_ >= data_.size();
    buffer_ = pastEnd_ ? 0 : data_[next_++];
    bitsToGo_ = 8;
  }
  --bitsToGo_;
  ++bitsUsed_;
  if (pastEnd_) ++bitsPastEnd_;
  const int weight = 1 << bitsToGo_;
  if (buffer_ >= weight) {
    buffer_ -= weight;
    return 1;
  }
  return 0;
}

}  // namespace keldo::wavelet

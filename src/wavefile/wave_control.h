#pragma once
// The wave-file control the sound commands work through: an open sound in
// memory with its rate, bits and channels, read from and saved to wave files
// (through libsndfile) and played through the platform's audio. The numbered
// operations of the commands are its methods.

#include <cstdint>
#include <string>
#include <vector>

#include "platform/audio.h"

namespace keldo::sound {

class WaveControl {
 public:
  // 1: opens a file by path; the last error code tells how it went: 1 the
  // file cannot be read as sound, 2 it is too long for a 32-bit count of
  // samples, 6 its samples do not fit in memory.
  void Open(const std::string& path);
  // 2 and 23: the last error code (0 for none) and its text.
  int LastError() const { return error_; }
  const std::string& LastErrorText() const { return errorText_; }
  // 3 and 4: plays samples start to end (an 8-bit sound as 16-bit values).
  bool Play(platform::Audio& audio, long long start, long long end);
  void Stop(platform::Audio& audio);
  // 5, 6: the position and the length in samples (frames).
  void SetPosition(long long p) { position_ = p; }
  long long Position() const { return position_; }
  long long Length() const;
  // 8, 9, 19, 20: format figures.
  int Bits() const { return bits_; }
  int Channels() const { return channels_; }
  int Rate() const { return rate_; }
  void SetRate(int rate) { rate_ = rate; }
  // 10, 11: read or write count samples at the position, which advances;
  // 8-bit samples are the unsigned byte values 0..255.
  std::vector<std::int16_t> Read(long long count);
  void Write(const std::vector<std::int16_t>& samples);
  // 13: a new length, zero-filled.
  void SetLength(long long frames);
  // 15: mono PCM of the given bits.
  void SetFormat(int bits);
  // 17: saves as a mono PCM wave file, written beside the path and renamed
  // onto it, so that a failed save leaves an old file whole; the error code
  // tells how it went.
  void SaveAs(const std::string& path);
  // 21.
  void Close();
  bool IsOpen() const { return open_; }
  // An empty mono sound, as a starter file gives.
  void Create(int bits, int rate);
  // Hands the open sound's samples over (8-bit ones as their unsigned
  // byte), leaving the control closed; and takes a whole mono sound in.
  std::vector<std::int16_t> TakeSamples();
  void Assign(int bits, int rate, std::vector<std::int16_t> samples);

 private:
  void Fail(int code, const std::string& text) {
    error_ = code;
    errorText_ = text;
  }
  bool open_ = false;
  int error_ = 0;
  std::string errorText_;
  int bits_ = 16, channels_ = 1, rate_ = 44100;
  long long position_ = 0;
  std::vector<std::int16_t> samples_;  // interleaved frames
};

// The form's N for a sound of count samples: 64, 128, ... 65536.
int NumberSoundPoints(long long count);

// Samples 1..N+1 of a graph at a volume, clipped and rounded for 8 or 16
// bits: FillSoundArray by floor(s + 0.5), FillSoundArray2 by rounding s + 0.5
// to the nearest integer, ties to even. 8-bit values get 128 added.
std::vector<std::int16_t> FillSoundArray(const double* y, int count, int bits, double volume);
std::vector<std::int16_t> FillSoundArray2(const double* y, int count, int bits, double volume);

}  // namespace keldo::sound

#include "wavefile/wave_control.h"

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <new>

#include "common/file_io.h"

namespace keldo::sound {
namespace {

// 8-bit samples travel as their unsigned byte; libsndfile reads and writes
// them as 16-bit values (byte - 128) * 256.
std::int16_t ByteToShort(std::int16_t byte) { return static_cast<std::int16_t>((byte - 128) * 256); }
std::int16_t ShortToByte(std::int16_t value) { return static_cast<std::int16_t>((value >> 8) + 128); }

std::int16_t Clip(double s, int bits, bool tiesToEven) {
  const double high = bits == 8 ? 126.5 : 32766.5, low = bits == 8 ? -128.5 : -32768.5;
  double v;
  if (s > high) v = bits == 8 ? 127 : 32767;
  else if (s < low) v = bits == 8 ? -128 : -32768;
  else v = tiesToEven ? std::nearbyint(s + 0.5) : std::floor(s + 0.5);
  if (tiesToEven && v > (bits == 8 ? 127 : 32767)) v = bits == 8 ? 127 : 32767;
  return static_cast<std::int16_t>(bits == 8 ? v + 128 : v);
}

std::vector<std::int16_t> Fill(const double* y, int count, int bits, double volume, bool tiesToEven) {
  std::vector<std::int16_t> out(static_cast<std::size_t>(count));
  for (int p = 1; p <= count; ++p) out[static_cast<std::size_t>(p - 1)] = Clip(volume * y[p - 1], bits, tiesToEven);
  return out;
}

}  // namespace

void WaveControl::Open(const std::string& path) {
  Close();
  SF_INFO info{};
  SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
  if (!file) {
    Fail(1, sf_strerror(nullptr));
    return;
  }
  const int sub = info.format & SF_FORMAT_SUBMASK;
  bits_ = sub == SF_FORMAT_PCM_U8 || sub == SF_FORMAT_PCM_S8 ? 8 : 16;
  channels_ = info.channels;
  rate_ = info.samplerate;
  const long long frames = info.frames;
  if (frames < 0 || channels_ < 1 || frames > (1LL << 31) / std::max(1, channels_)) {
    sf_close(file);
    Fail(2, "The sound is too long.");
    return;
  }
  try {
    samples_.assign(static_cast<std::size_t>(frames * channels_), 0);
  } catch (const std::bad_alloc&) {
    samples_.clear();
    samples_.shrink_to_fit();
    sf_close(file);
    Fail(6, "Not enough memory for the sound.");
    return;
  }
  const sf_count_t got = sf_read_short(file, samples_.data(), static_cast<sf_count_t>(samples_.size()));
  sf_close(file);
  samples_.resize(static_cast<std::size_t>(std::max<sf_count_t>(got, 0)));
  if (bits_ == 8)
    for (std::int16_t& s : samples_) s = ShortToByte(s);
  open_ = true;
  position_ = 0;
  Fail(0, "");
}

bool WaveControl::Play(platform::Audio& audio, long long start, long long end) {
  if (!open_) return false;
  std::vector<std::int16_t> frames;
  for (long long f = std::max(0LL, start); f < std::min(end, Length()); ++f) {
    const std::int16_t s = samples_[static_cast<std::size_t>(f * channels_)];
    frames.push_back(bits_ == 8 ? ByteToShort(s) : s);
  }
  const bool ok = audio.Play(frames, rate_);
  if (!ok) Fail(3, "The sound device cannot play.");
  return ok;
}

void WaveControl::Stop(platform::Audio& audio) { audio.Stop(); }

long long WaveControl::Length() const { return static_cast<long long>(samples_.size()) / std::max(1, channels_); }

std::vector<std::int16_t> WaveControl::Read(long long count) {
  std::vector<std::int16_t> out;
  const long long first = position_ * channels_;
  for (long long i = 0; i < count && first + i < static_cast<long long>(samples_.size()); ++i)
    out.push_back(samples_[static_cast<std::size_t>(first + i)]);
  position_ += count / std::max(1, channels_);
  return out;
}

void WaveControl::Write(const std::vector<std::int16_t>& samples) {
  const long long first = position_ * channels_;
  if (first + static_cast<long long>(samples.size()) > static_cast<long long>(samples_.size()))
    samples_.resize(static_cast<std::size_t>(first) + samples.size(), bits_ == 8 ? 128 : 0);
  std::copy(samples.begin(), samples.end(), samples_.begin() + first);
  position_ += static_cast<long long>(samples.size()) / std::max(1, channels_);
}

void WaveControl::SetLength(long long frames) {
  samples_.resize(static_cast<std::size_t>(std::max(0LL, frames) * channels_), bits_ == 8 ? 128 : 0);
}

void WaveControl::SetFormat(int bits) {
  bits_ = bits == 8 ? 8 : 16;
  channels_ = 1;
}

void WaveControl::SaveAs(const std::string& path) {
  SF_INFO info{};
  info.samplerate = rate_;
  info.channels = channels_;
  info.format = SF_FORMAT_WAV | (bits_ == 8 ? SF_FORMAT_PCM_U8 : SF_FORMAT_PCM_16);
  const std::string temporary = TemporaryPathFor(path);
  SNDFILE* file = sf_open(temporary.c_str(), SFM_WRITE, &info);
  if (!file) {
    Fail(4, sf_strerror(nullptr));
    std::remove(temporary.c_str());
    return;
  }
  // Written in blocks, 8-bit samples turned back into libsndfile's 16-bit
  // values on the way, so that no second copy of a long sound is made.
  constexpr std::size_t kBlock = 65536;
  std::int16_t block[kBlock];
  bool written = true;
  for (std::size_t first = 0; first < samples_.size() && written; first += kBlock) {
    const std::size_t count = std::min(kBlock, samples_.size() - first);
    for (std::size_t i = 0; i < count; ++i)
      block[i] = bits_ == 8 ? ByteToShort(samples_[first + i]) : samples_[first + i];
    written = sf_write_short(file, block, static_cast<sf_count_t>(count)) == static_cast<sf_count_t>(count);
  }
  const int closed = sf_close(file);
  if (!written || closed != 0 ||
      std::rename(temporary.c_str(), path.c_str()) != 0) {
    std::remove(temporary.c_str());
    Fail(5, "The file could not be written.");
  } else {
    Fail(0, "");
  }
}

void WaveControl::Close() {
  open_ = false;
  samples_.clear();
  position_ = 0;
}

void WaveControl::Create(int bits, int rate) {
  Close();
  SetFormat(bits);
  rate_ = rate;
  open_ = true;
  Fail(0, "");
}

std::vector<std::int16_t> WaveControl::TakeSamples() {
  std::vector<std::int16_t> out = std::move(samples_);
  Close();
  return out;
}

void WaveControl::Assign(int bits, int rate, std::vector<std::int16_t> samples) {
  Create(bits, rate);
  samples_ = std::move(samples);
}

int NumberSoundPoints(long long count) {
  if (count < 65) return 64;
  if (count < 130) return 128;
  if (count < 258) return 256;
  if (count < 514) return 512;
  if (count < 1026) return 1024;
  if (count < 2050) return 2048;
  if (count < 4098) return 4096;
  if (count < 8194) return 8192;
  if (count <= 16385) return 16384;
  if (count <= 32769) return 32768;
  return 65536;
}

std::vector<std::int16_t> FillSoundArray(const double* y, int count, int bits, double volume) {
  return Fill(y, count, bits, volume, false);
}

std::vector<std::int16_t> FillSoundArray2(const double* y, int count, int bits, double volume) {
  return Fill(y, count, bits, volume, true);
}

}  // namespace keldo::sound

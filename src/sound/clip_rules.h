#pragma once
// The arithmetic of the audio editor's clip and waveform pictures, apart
// from the form: plain numbers in, plain numbers out.

#include <cstdint>
#include <span>
#include <vector>

namespace keldo::sound {

// Clips are powers of two from kMinClip to kMaxClip samples.
inline constexpr std::int32_t kMinClip = 64;
inline constexpr std::int32_t kMaxClip = 65536;
// What the lines are: none, Line 1, or both (the clip marked).
enum class LineState { None, LineOne, Both };

// SetClipLength: the clip for a distance d between the lines, starting at
// clipStart in a file of sampleCount samples. From 65536 down by halves,
// the first L with 1.99 d >= L and clipStart + L < sampleCount; -1 when
// none of at least 64 fits. So the clip may end past the place clicked,
// and near the end of the file it falls to a smaller power of two.
std::int32_t SetClipLength(std::int64_t distance, std::int64_t clipStart, std::int64_t sampleCount);

// NewLength: the sample count after pasting copyLength samples, or -1
// when it would not fit a signed 32-bit count.
std::int32_t NewLength(std::int64_t sampleCount, std::int64_t copyLength);

// The height of one sample in the pictures, base line 0 and a full scale
// of about +-1016: an 8-bit sample (its unsigned byte) reaches
// (value - 128) * 8, a 16-bit one (value / 260, truncated toward zero) * 8.
int WaveHeight(std::int16_t value, int bits);

// The samples one column of a picture W pixels wide stands for: every
// stride-th sample, stride = count / W truncated (at least 1, so that a
// file narrower than the picture shows each of its samples once). Only
// one sample of each stride is drawn, never a minimum and maximum.
std::int64_t WaveStride(std::int64_t count, int width);
// The indices drawn, 0, stride, 2 stride, ... for columns 0 to W, below count.
std::vector<std::int64_t> WaveColumns(std::int64_t count, int width);

// Where a marking click lands: the sample under the pointer, x in samples
// truncated, and at most count - 64 so that a clip can follow it. Negative
// when the file has fewer than 64 samples.
std::int64_t ClickedSample(double x, std::int64_t count);

// Whether a second line at p is refused for a first line at clipStart:
// before it, more than 65536 after it, or less than 64 after it.
bool RefusedSecondLine(std::int64_t p, std::int64_t clipStart);

}  // namespace keldo::sound

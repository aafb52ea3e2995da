#include "wavelet/wavelet2d.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "common/pace.h"
#include "wavelet/transforms.h"

namespace keldo::wavelet {
namespace {

// Columns gathered at a time, so that each row is read in runs.
constexpr int kGroup = 16;

LevelSteps MakeSteps(const WaveletChoice& w, int n) {
  const bool daubechies = w.family == 1 || w.family == 2;
  return LevelSteps(w.family == 2 ? -1 : w.code, w.symmetric, !daubechies, n);
}

// One level on the first `rows` rows, over the blocks of `size` values that
// start at 0, size, ... below `span`.
void RowsLevel(LevelSteps& steps, const MatrixView& a, int rows, int span, int size, bool forward,
               std::vector<double>& buffer) {
  for (int i = 0; i < rows; ++i) {
    float* row = a.Row(i);
    for (int offset = 0; offset < span; offset += size) {
      std::copy(row + offset, row + offset + size, buffer.begin());
      if (forward) steps.Forward(size, buffer.data());
      else steps.Inverse(size, buffer.data());
      for (int k = 0; k < size; ++k) row[offset + k] = static_cast<float>(buffer[static_cast<std::size_t>(k)]);
    }
    PaceRow(i);
  }
}

// The same on the first `columns` columns.
void ColumnsLevel(LevelSteps& steps, const MatrixView& a, int columns, int span, int size, bool forward,
                  std::vector<double>& buffers) {
  const std::size_t length = static_cast<std::size_t>(size) + 5;
  for (int j0 = 0; j0 < columns; j0 += kGroup) {
    const int g = std::min(kGroup, columns - j0);
    for (int offset = 0; offset < span; offset += size) {
      for (int i = 0; i < size; ++i) {
        const float* row = a.Row(offset + i) + j0;
        for (int c = 0; c < g; ++c) buffers[static_cast<std::size_t>(c) * length + static_cast<std::size_t>(i)] = row[c];
      }
      for (int c = 0; c < g; ++c) {
        double* x = buffers.data() + static_cast<std::size_t>(c) * length;
        if (forward) steps.Forward(size, x);
        else steps.Inverse(size, x);
      }
      for (int i = 0; i < size; ++i) {
        float* row = a.Row(offset + i) + j0;
        for (int c = 0; c < g; ++c)
          row[c] = static_cast<float>(buffers[static_cast<std::size_t>(c) * length + static_cast<std::size_t>(i)]);
      }
    }
    Pace();
  }
}

}  // namespace

void Transform2D(const WaveletChoice& w, bool packet, int n, const MatrixView& a, int levels) {
  LevelSteps steps = MakeSteps(w, n);
  std::vector<double> buffer(static_cast<std::size_t>(n) + 5), buffers((static_cast<std::size_t>(n) + 5) * kGroup);
  for (int level = 0, size = n; level < levels; ++level, size /= 2) {
    // A packet level splits every block of the level; a plain one only the
    // trend block at the lower left.
    const int extent = packet ? n : size;
    RowsLevel(steps, a, extent, extent, size, true, buffer);
    ColumnsLevel(steps, a, extent, extent, size, true, buffers);
  }
}

void InverseTransform2D(const WaveletChoice& w, bool packet, int n, const MatrixView& a, int levels) {
  LevelSteps steps = MakeSteps(w, n);
  std::vector<double> buffer(static_cast<std::size_t>(n) + 5), buffers((static_cast<std::size_t>(n) + 5) * kGroup);
  for (int level = 0, size = n >> (levels - 1); level < levels; ++level, size *= 2) {
    const int extent = packet ? n : size;
    ColumnsLevel(steps, a, extent, extent, size, false, buffers);
    RowsLevel(steps, a, extent, extent, size, false, buffer);
  }
}

double WaveletMaximum2D(int n, const MatrixView& a) {
  double largest = 0.0;
  for (int i = 0; i < n; ++i) {
    const float* row = a.Row(i);
    for (int j = 0; j < n; ++j) largest = std::max(largest, static_cast<double>(std::fabs(row[j])));
  }
  return largest == 0.0 ? 1.0 : largest;
}

void GetWavMax2(int n, const MatrixView& a, int trendSide, double& trendMax, double& flucMax) {
  trendMax = flucMax = 0.0;
  for (int i = 0; i < n; ++i) {
    const float* row = a.Row(i);
    for (int j = 0; j < n; ++j) {
      double& m = i < trendSide && j < trendSide ? trendMax : flucMax;
      m = std::max(m, static_cast<double>(std::fabs(row[j])));
    }
  }
  if (trendMax == 0.0) trendMax = 1.0;
  if (flucMax == 0.0) flucMax = 1.0;
}

int ThresholdBits(double t, bool signBit) {
  return static_cast<int>(std::nearbyint(std::log2(1.0 / t) + (signBit ? 1.0 : 0.0)));
}

Threshold2DResult ApplyThresholds2D(int n, const MatrixView& a, const Threshold2DSetup& s) {
  Threshold2DResult r;
  const bool multiple = s.second >= 0;
  double t1, t2;
  if (multiple) {
    double trendMax, flucMax;
    GetWavMax2(n, a, s.trendSide, trendMax, flucMax);
    t1 = s.first * trendMax;
    t2 = s.second * flucMax;
  } else {
    t1 = t2 = s.first * WaveletMaximum2D(n, a);
  }
  if (s.map) r.map.assign(a.stride * static_cast<std::size_t>(n + 1), 0.0f);
  for (int i = 0; i < n; ++i) {
    float* row = a.Row(i);
    for (int j = 0; j < n; ++j) {
      const bool trend = i < s.trendSide && j < s.trendSide;
      const double t = trend ? t1 : t2;
      const double c = row[j];
      if (std::fabs(c) < t) {
        row[j] = 0.0f;
        continue;
      }
      ++r.count;
      if (trend) ++r.trendCount;
      if (s.map)
        r.map[static_cast<std::size_t>(i) * a.stride + static_cast<std::size_t>(j)] =
            s.signBit ? 1.0f : static_cast<float>((c > 0) - (c < 0));
      if (!s.quantize) continue;
      double q = std::floor(std::fabs(c) / t) + 0.5;
      q = c < 0 ? -q * t : q * t;
      if (multiple) {
        // The value goes through its decimal text, as a double prints.
        char text[32];
        std::snprintf(text, sizeof text, "%.15g", q);
        row[j] = std::strtof(text, nullptr);
      } else {
        row[j] = static_cast<float>(q);
      }
    }
  }
  if (s.quantize) {
    const double area = static_cast<double>(n) * n;
    r.bitsPerPixel = multiple ? (r.trendCount * ThresholdBits(s.first, s.signBit) +
                                 (r.count - r.trendCount) * ThresholdBits(s.second, s.signBit)) / area
                              : r.count * ThresholdBits(s.first, s.signBit) / area;
  }
  return r;
}

}  // namespace keldo::wavelet

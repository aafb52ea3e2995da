#include "analysis/median_image.h"

#include <algorithm>
#include <cmath>

#include "wavelet/series.h"

namespace keldo::analysis {
namespace {

// Ascending Shell sort of values with a companion index array; gaps 4, 1
// serve the windows of at most nine values.
template <class T>
void IndexSortAscending(int count, T* values, int* index) {
  for (int gap = count > 4 ? 4 : 1; gap > 0; gap = gap == 4 ? 1 : 0)
    for (int k = gap; k < count; ++k) {
      const T v = values[k];
      const int i = index[k];
      int j = k;
      for (; j >= gap && values[j - gap] > v; j -= gap) {
        values[j] = values[j - gap];
        index[j] = index[j - gap];
      }
      values[j] = v;
      index[j] = i;
    }
}

void SortWindow(int count, std::uint8_t* values, int* index) { ISORTB(count, values, index); }
void SortWindow(int count, float* values, int* index) { IndexSortAscending(count, values, index); }

// The median of the window of (r, c) by the three cases of the header.
template <class T>
double WindowMedian(const T* v, std::size_t stride, int rows, int cols, int r, int c) {
  const auto at = [v, stride](int i, int j) {
    return v[static_cast<std::size_t>(i) * stride + static_cast<std::size_t>(j)];
  };
  T window[9];
  int index[9];
  int count = 0;
  const bool top = r == 0, bottom = r == rows - 1, left = c == 0, right = c == cols - 1;
  if ((top || bottom) && (left || right)) {
    const int r0 = top ? 0 : rows - 2, c0 = left ? 0 : cols - 2;
    for (int i = r0; i < r0 + 2; ++i)
      for (int j = c0; j < c0 + 2; ++j) window[count++] = at(i, j);
  } else if (top || bottom) {
    for (int j = c - 1; j <= c + 1; ++j) window[count++] = at(r, j);
  } else if (left || right) {
    for (int i = r - 1; i <= r + 1; ++i) window[count++] = at(i, c);
  } else {
    for (int i = r - 1; i <= r + 1; ++i)
      for (int j = c - 1; j <= c + 1; ++j) window[count++] = at(i, j);
  }
  for (int k = 0; k < count; ++k) index[k] = k;
  SortWindow(count, window, index);
  if (count == 4) return (static_cast<double>(window[1]) + static_cast<double>(window[2])) / 2.0;
  return static_cast<double>(window[count / 2]);
}

// Calls put(r, c, value) with the filtered value of every sample.
template <class T, class Put>
void MedianFilter(const T* v, std::size_t stride, int rows, int cols, MedianRule rule, Put put) {
  for (int r = 0; r < rows; ++r)
    for (int c = 0; c < cols; ++c) {
      const double centre = static_cast<double>(v[static_cast<std::size_t>(r) * stride + static_cast<std::size_t>(c)]);
      if (rows < 2 || cols < 2) {
        put(r, c, centre);
        continue;
      }
      const double median = WindowMedian(v, stride, rows, cols, r, c);
      put(r, c,
          rule == MedianRule::Adaptive
              ? wavelet::AdaptiveMedianValue(centre, median, kImageMedianBandLow, kImageMedianBandHigh)
              : median);
    }
}

}  // namespace

void ISORTB(int count, std::uint8_t* values, int* index) { IndexSortAscending(count, values, index); }

std::vector<std::uint8_t> MedianFilterBytes(const std::uint8_t* v, std::size_t stride, int rows, int cols,
                                            MedianRule rule) {
  std::vector<std::uint8_t> out(static_cast<std::size_t>(std::max(rows, 0)) * static_cast<std::size_t>(std::max(cols, 0)));
  MedianFilter(v, stride, rows, cols, rule, [&out, cols](int r, int c, double value) {
    out[static_cast<std::size_t>(r) * static_cast<std::size_t>(cols) + static_cast<std::size_t>(c)] =
        static_cast<std::uint8_t>(std::clamp(std::floor(value + 0.5), 0.0, 255.0));
  });
  return out;
}

std::vector<float> MedianFilterSamples(const float* v, std::size_t stride, int rows, int cols, MedianRule rule) {
  std::vector<float> out(static_cast<std::size_t>(std::max(rows, 0)) * static_cast<std::size_t>(std::max(cols, 0)));
  MedianFilter(v, stride, rows, cols, rule, [&out, cols](int r, int c, double value) {
    out[static_cast<std::size_t>(r) * static_cast<std::size_t>(cols) + static_cast<std::size_t>(c)] =
        static_cast<float>(value);
  });
  return out;
}

}  // namespace keldo::analysis

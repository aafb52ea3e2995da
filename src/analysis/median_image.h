#pragma once
// Median filters of a grid of samples: the image processor's bytes and the
// two-dimensional form's graphs go through the same windows.
//
// The window of a sample depends on where it stands on a grid of R rows and
// C columns (both at least 2):
//
//   corner   . . .      edge    . . .     interior   . . .
//            x x .              x x x               x x x
//            X x .              . X .  <- no        x X x
//                        (the line along the edge)  x x x
//
//   interior: the 3 by 3 block around it, nine values, the fifth smallest;
//   edge:     the three values of the line along the edge, the sample in
//             the middle of them, the second smallest;
//   corner:   the 2 by 2 block of the corner, four values; of the four
//             sorted values the mean of the second and third (the usual
//             median of an even count), so that a bright and a dark picture
//             are treated alike.
// A grid with fewer than 2 rows or columns has no such windows and comes
// back unchanged.
//
// The adaptive rule passes each window's median and the sample through
// AdaptiveMedianValue with the band 0.9..1.1: a sample within 10 % of its
// median becomes the median, any other keeps its value.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace keldo::analysis {

enum class MedianRule { Plain, Adaptive };

// The images' band of the adaptive rule.
inline constexpr double kImageMedianBandLow = 0.9;
inline constexpr double kImageMedianBandHigh = 1.1;

// Sorts values[0..count-1] into ascending order, moving index[] alongside
// (a Shell sort; equal values keep no particular order).
void ISORTB(int count, std::uint8_t* values, int* index);

// The filtered grid of bytes v[r*stride + c], row by row with a stride of
// `cols`; each value rounded to the nearest byte, halves upward.
std::vector<std::uint8_t> MedianFilterBytes(const std::uint8_t* v, std::size_t stride, int rows, int cols,
                                            MedianRule rule);
// The same for samples of a graph, with no rounding.
std::vector<float> MedianFilterSamples(const float* v, std::size_t stride, int rows, int cols, MedianRule rule);

}  // namespace keldo::analysis

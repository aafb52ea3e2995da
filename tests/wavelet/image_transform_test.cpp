// The image processor's transform of a rectangular plane: one level of the
// integer 5/3 wavelet on a ramp worked by hand, the scaling's factors, the
// trend of a constant plane, forward then inverse for every wavelet, level
// count and a few rectangles, eight lines at once against one at a time,
// and the level limit and bit budget rules.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include "wavelet/image_transform.h"
#include "wavelet/lanes.h"
#include "wavelet/transforms.h"

namespace keldo::wavelet {
namespace {

// 9/7 forward and back in single precision on values up to 255.
constexpr double kFloatRoundTrip = 2e-3;

ImagePlane TestImage(int w, int h, unsigned seed) {
  ImagePlane p(w, h);
  std::mt19937 random(seed);
  std::uniform_int_distribution<int> noise(0, 40);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const double disk = (x - w / 3) * (x - w / 3) + (y - h / 2) * (y - h / 2) < w * h / 16 ? 90.0 : 0.0;
      p.At(x, y) = static_cast<float>(std::floor(x * 100.0 / w + y * 50.0 / h + disk) + noise(random));
    }
  return p;
}

TEST(ImageTransform, OneIntegerLevelOfARampByHand) {
  // Each row is 0..7. The 5/3 predict leaves 0 inside and 7 - 6 = 1 at the
  // reflected right end; the update adds round(1/4) = 0. The columns are
  // constant. The scaling of one level doubles everything and the trend
  // once more.
  ImagePlane p(8, 8);
  for (int y = 0; y < 8; ++y)
    for (int x = 0; x < 8; ++x) p.At(x, y) = static_cast<float>(x);
  TransformTheImage(p, 1, 2);
  const float trendRow[4] = {0, 8, 16, 24};
  const float upperRow[4] = {0, 0, 0, 2};
  for (int y = 0; y < 8; ++y)
    for (int x = 0; x < 8; ++x) {
      const float expected = y >= 4 ? 0.0f : (x < 4 ? trendRow[x] : upperRow[x - 4]);
      EXPECT_EQ(p.At(x, y), expected) << x << "," << y;
    }
}

TEST(ImageTransform, ScalingFactorsByLevel) {
  ImagePlane p(16, 8);
  for (float& v : p.v) v = 1.0f;
  ScalingOfWT(p, 2, 1);
  EXPECT_EQ(p.At(15, 7), 2.0f);  // level 1
  EXPECT_EQ(p.At(8, 0), 2.0f);
  EXPECT_EQ(p.At(7, 3), 4.0f);   // level 2
  EXPECT_EQ(p.At(4, 0), 4.0f);
  EXPECT_EQ(p.At(3, 1), 8.0f);   // trend, 2^(levels + 1)
  EXPECT_EQ(p.At(0, 0), 8.0f);
  ScalingOfWT(p, 2, -1);
  for (float v : p.v) EXPECT_EQ(v, 1.0f);
}

TEST(ImageTransform, ConstantPlaneKeepsOnlyItsTrend) {
  for (int wavelet = 1; wavelet <= 3; ++wavelet) {
    ImagePlane p(32, 16);
    for (float& v : p.v) v = 10.0f;
    TransformTheImage(p, 3, wavelet);
    // 9/7 has a trend gain of sqrt 2 on a line, 2 a level; the integer
    // wavelets keep the value and are then scaled by 2^(levels + 1).
    const double trend = wavelet == 1 ? 10.0 * 8.0 : 10.0 * 16.0;
    for (int y = 0; y < 16; ++y)
      for (int x = 0; x < 32; ++x) {
        const double expected = (x < 4 && y < 2) ? trend : 0.0;
        EXPECT_NEAR(p.At(x, y), expected, 1e-3 * trend) << wavelet << ": " << x << "," << y;
      }
  }
}

TEST(ImageTransform, ForwardThenInverseForEveryWaveletAndLevel) {
  const int sizes[][2] = {{64, 64}, {64, 32}, {32, 96}, {128, 64}};
  for (const auto& size : sizes) {
    const int w = size[0], h = size[1];
    const ImagePlane original = TestImage(w, h, static_cast<unsigned>(w * 7 + h));
    for (int wavelet = 1; wavelet <= 3; ++wavelet)
      for (int levels = 1; levels <= LevelLimit(w, h, wavelet); ++levels) {
        ImagePlane p = original;
        TransformTheImage(p, levels, wavelet);
        double moved = 0.0;
        for (std::size_t i = 0; i < p.v.size(); ++i) moved = std::max(moved, static_cast<double>(std::fabs(p.v[i] - original.v[i])));
        ASSERT_GT(moved, 1.0);
        InvertTheTransform(p, levels, wavelet);
        for (std::size_t i = 0; i < p.v.size(); ++i) {
          if (wavelet == 1)
            ASSERT_NEAR(p.v[i], original.v[i], kFloatRoundTrip) << w << "x" << h << " L" << levels << " at " << i;
          else
            ASSERT_EQ(p.v[i], original.v[i]) << w << "x" << h << " wavelet " << wavelet << " L" << levels << " at " << i;
        }
      }
  }
}

TEST(ImageTransform, IntegerWaveletsGiveIntegers) {
  for (int wavelet = 2; wavelet <= 3; ++wavelet) {
    ImagePlane p = TestImage(64, 64, 5);
    TransformTheImage(p, 4, wavelet);
    for (float v : p.v) ASSERT_EQ(v, std::nearbyint(v));
  }
}

TEST(ImageTransform, ReconstructedBytesAreRoundedMagnitudes) {
  ImagePlane p(8, 8);
  const float values[4] = {-3.75f, 2.25f, 300.0f, -0.4f};
  for (int i = 0; i < 64; ++i) p.v[static_cast<std::size_t>(i)] = values[i % 4];
  ImagePlane t = p;
  TransformTheImage(t, 1, 1);
  const std::vector<std::uint8_t> bytes = InvertTheTransformQuant(t, 1, 1);
  ASSERT_EQ(bytes.size(), 64u);
  const std::uint8_t expected[4] = {4, 2, 255, 0};
  for (int i = 0; i < 64; ++i) EXPECT_EQ(bytes[static_cast<std::size_t>(i)], expected[i % 4]) << i;
}

// Every kind of value, eight at a time and one by one (a plane of 7 x 5):
// the magnitude rounded half to even below 255, and 255 from there up, for
// infinities and NaN too.
TEST(ImageTransform, RoundedMagnitudesOfEveryKindOfValue) {
  const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
  const std::vector<std::pair<float, int>> cases = {
      {0.0f, 0},      {-0.0f, 0},     {0.5f, 0},      {-0.5f, 0},     {1.5f, 2},       {-2.5f, 2},
      {2.5f, 2},      {3.5f, 4},      {0.49999997f, 0}, {254.49998f, 254}, {254.5f, 254}, {-254.5f, 254},
      {254.50002f, 255}, {254.99998f, 255}, {255.0f, 255}, {-255.0f, 255}, {1e30f, 255},   {-1e30f, 255},
      {inf, 255},     {-inf, 255},    {nan, 255},     {-nan, 255},    {1e-40f, 0},     {100.25f, 100},
      {-100.75f, 101}, {127.5f, 128}, {128.5f, 128},  {7.0f, 7},      {-6.5f, 6},      {12.5f, 12},
      {13.5f, 14},    {200.5f, 200},  {201.5f, 202},  {0.75f, 1},     {-0.25f, 0}};
  ImagePlane p(7, 5);
  for (std::size_t i = 0; i < p.v.size(); ++i) p.v[i] = cases[i].first;
  const std::vector<std::uint8_t> bytes = RoundedMagnitudeBytes(p);
  ASSERT_EQ(bytes.size(), cases.size());
  for (std::size_t i = 0; i < cases.size(); ++i)
    EXPECT_EQ(bytes[i], cases[i].second) << "value " << cases[i].first << " at " << i;
}

// Eight lines at once through the lifting steps give each line the very
// bits it gets alone, for every lifting code, forward and back, and Perm
// and INVPERM move the lanes as they move doubles. (The lanes take the
// widest vectors the processor has; KELDO_NO_AVX512 runs the four-lane
// path.)
TEST(ImageTransform, EightLinesAtOnceAreEachLineAlone) {
  constexpr int kMargin = 21, kExt = 6;
  std::mt19937 random(11);
  std::uniform_real_distribution<double> value(-300.0, 300.0);
  for (int n : {8, 14, 32, 512}) {
    for (int code = 101; code <= 110; ++code) {
      std::vector<Lanes8> lanes(static_cast<std::size_t>(n)), laneWork(static_cast<std::size_t>(n + 2 * kMargin + 1));
      std::vector<Lanes8> laneScratch(static_cast<std::size_t>(n));
      std::vector<std::vector<double>> lines(Lanes8::kCount, std::vector<double>(static_cast<std::size_t>(n)));
      for (int j = 0; j < Lanes8::kCount; ++j)
        for (int i = 0; i < n; ++i) {
          const double x = code >= 107 ? std::round(value(random)) : value(random);
          lines[static_cast<std::size_t>(j)][static_cast<std::size_t>(i)] = x;
          lanes[static_cast<std::size_t>(i)].v[j] = x;
        }
      SymmWavTr(n, kExt, laneWork.data() + kMargin, lanes.data(), code);
      Perm(n, lanes.data(), laneScratch.data());
      std::vector<double> work(static_cast<std::size_t>(n + 2 * kMargin + 1)), scratch(static_cast<std::size_t>(n));
      for (auto& line : lines) {
        SymmWavTr(n, kExt, work.data() + kMargin, line.data(), code);
        Perm(n, line.data(), scratch.data());
      }
      for (int j = 0; j < Lanes8::kCount; ++j)
        for (int i = 0; i < n; ++i)
          ASSERT_EQ(lanes[static_cast<std::size_t>(i)].v[j], lines[static_cast<std::size_t>(j)][static_cast<std::size_t>(i)])
              << "forward, code " << code << " n " << n;
      INVPERM(n, lanes.data(), laneScratch.data());
      InvSymmWavTr(n, kExt, laneWork.data() + kMargin, lanes.data(), code);
      for (auto& line : lines) {
        INVPERM(n, line.data(), scratch.data());
        InvSymmWavTr(n, kExt, work.data() + kMargin, line.data(), code);
      }
      for (int j = 0; j < Lanes8::kCount; ++j)
        for (int i = 0; i < n; ++i)
          ASSERT_EQ(lanes[static_cast<std::size_t>(i)].v[j], lines[static_cast<std::size_t>(j)][static_cast<std::size_t>(i)])
              << "inverse, code " << code << " n " << n;
    }
  }
}

TEST(ImageTransform, LevelLimit) {
  EXPECT_EQ(LevelLimit(256, 256, 1), 6);
  EXPECT_EQ(LevelLimit(256, 256, 2), 4);
  EXPECT_EQ(LevelLimit(512, 64, 1), 4);
  EXPECT_EQ(LevelLimit(64, 512, 3), 4);
  EXPECT_EQ(LevelLimit(32, 32, 1), 3);
  EXPECT_EQ(LevelLimit(96, 96, 1), 5);   // log2 96 = 6.58 rounds to 7
  EXPECT_EQ(LevelLimit(160, 160, 1), 5); // log2 160 = 7.32 rounds to 7
  EXPECT_EQ(LevelLimit(0, 64, 1), 0);
}

TEST(ImageTransform, BitBudgetRoundsHalvesToEven) {
  EXPECT_EQ(BitBudgetOf(256, 256, 0.5), 32768);
  EXPECT_EQ(BitBudgetOf(10, 5, 0.5), 20);   // Round(2.5) = 2
  EXPECT_EQ(BitBudgetOf(10, 7, 0.5), 40);   // Round(3.5) = 4
  EXPECT_EQ(BitBudgetOf(3, 100, 0.123), 36);  // Round(12.3) = 12
  EXPECT_EQ(BitBudgetOf(65535, 65535, 1e6), 2147483647);
}

// FNV-1a over the bytes of a plane's values, chained through `hash`.
std::uint64_t PlaneFingerprint(const ImagePlane& plane, std::uint64_t hash) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(plane.v.data());
  for (std::size_t i = 0; i < plane.v.size() * sizeof(float); ++i) hash = (hash ^ bytes[i]) * 1099511628211ull;
  return hash;
}

// The transform and its inverse on a square, a wide and a tall plane, every
// level count, in one fingerprint per wavelet: the values as the line-by-line
// code first gave them. A faster rewrite must keep every bit, the coders'
// files depending on them.
TEST(ImageTransform, OutputIsPinned) {
  const int sizes[][2] = {{64, 64}, {96, 32}, {32, 64}};
  const std::uint64_t expected[3] = {0xeeecb26ef949ee6eull, 0xc8ea4d9ec901c1edull, 0xb01a8d8556e6f656ull};
  for (int wavelet = 1; wavelet <= 3; ++wavelet) {
    std::uint64_t hash = 14695981039346656037ull;
    for (const auto& size : sizes)
      for (int levels = 1; levels <= LevelLimit(size[0], size[1], wavelet); ++levels) {
        ImagePlane p = TestImage(size[0], size[1], static_cast<unsigned>(levels));
        TransformTheImage(p, levels, wavelet);
        hash = PlaneFingerprint(p, hash);
        InvertTheTransform(p, levels, wavelet);
        hash = PlaneFingerprint(p, hash);
      }
    EXPECT_EQ(hash, expected[wavelet - 1]) << "wavelet " << wavelet << " 0x" << std::hex << hash;
  }
}

// One level of every row, then of every column, of the w by h corner, line
// by line in doubles through SymmWavTr and Perm (or INVPERM and
// InvSymmWavTr, columns first): the plain way round, for sizes of every
// kind.
void PlainLevels(ImagePlane& p, int levels, int waveletIndex, bool forward) {
  const int code = LiftingCodeOf(waveletIndex);
  const auto pass = [&](int w, int h, bool rows) {
    const int lines = rows ? h : w, n = rows ? w : h;
    std::vector<double> x(static_cast<std::size_t>(n)), scratch(static_cast<std::size_t>(n)),
        work(static_cast<std::size_t>(n) + 43);
    for (int line = 0; line < lines; ++line) {
      const auto at = [&](int i) -> float& { return rows ? p.At(i, line) : p.At(line, i); };
      for (int i = 0; i < n; ++i) x[static_cast<std::size_t>(i)] = at(i);
      if (forward) {
        SymmWavTr(n, 6, work.data() + 21, x.data(), code);
        Perm(n, x.data(), scratch.data());
      } else {
        INVPERM(n, x.data(), scratch.data());
        InvSymmWavTr(n, 6, work.data() + 21, x.data(), code);
      }
      for (int i = 0; i < n; ++i) at(i) = static_cast<float>(x[static_cast<std::size_t>(i)]);
    }
  };
  if (forward) {
    int w = p.width, h = p.height;
    for (int level = 1; level <= levels && w >= 2 && h >= 2; ++level, w /= 2, h /= 2) {
      pass(w, h, true);
      pass(w, h, false);
    }
  } else {
    for (int level = levels; level >= 1; --level) {
      const int w = p.width >> (level - 1), h = p.height >> (level - 1);
      if (w < 2 || h < 2) continue;
      pass(w, h, false);
      pass(w, h, true);
    }
  }
}

// The image transform moves eight lines at a time between the plane and
// the lifting, in Perm's order, by tiles of eight: on sizes that are odd,
// or not a multiple of eight or sixteen, at some level, every value is the
// plain line-by-line one, to the bit, both ways.
TEST(ImageTransform, EveryValueIsThePlainLineByLineOne) {
  const int sizes[][2] = {{40, 24}, {33, 17}, {24, 40}, {512, 64}, {18, 90}, {100, 12}};
  for (int wavelet = 1; wavelet <= 3; ++wavelet)
    for (const auto& size : sizes)
      for (int levels : {1, 2, 3}) {
        const ImagePlane start = TestImage(size[0], size[1], static_cast<unsigned>(levels + 7 * wavelet));
        ImagePlane fast = start, plain = start;
        TransformTheImage(fast, levels, wavelet);
        PlainLevels(plain, levels, wavelet, true);
        if (wavelet > 1) ScalingOfWT(plain, levels, 1);
        ASSERT_EQ(fast.v, plain.v) << "forward, wavelet " << wavelet << ", " << size[0] << " x " << size[1]
                                   << ", levels " << levels;
        InvertTheTransform(fast, levels, wavelet);
        if (wavelet > 1) ScalingOfWT(plain, levels, -1);
        PlainLevels(plain, levels, wavelet, false);
        ASSERT_EQ(fast.v, plain.v) << "inverse, wavelet " << wavelet << ", " << size[0] << " x " << size[1]
                                   << ", levels " << levels;
      }
}

}  // namespace
}  // namespace keldo::wavelet

// The scalogram's rows against direct circular convolutions and its low-pass
// row against numpy (tests/data/scalogram.tsv, from make_scalogram.py); the
// wavelet samples; the parameter checks and their order; the zero Haar row
// of a high octave; the row callback and a stop.

#include "wavelet/scalogram.h"

#include <gtest/gtest.h>

#include "fourier/fft.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <limits>
#include <map>
#include <span>
#include <sstream>
#include <string>
#include <vector>

namespace keldo::wavelet {
namespace {

// Our FFT path against numpy's direct sums, relative to the largest value
// of the case's rows; samples are the same formula evaluated twice.
constexpr double kRowTolerance = 1e-12;
constexpr double kSampleTolerance = 1e-14;

struct Case {
  std::string name;
  int n = 0;
  ScalogramSetup setup;
  std::vector<double> sig;
  std::map<int, std::vector<double>> re, im, wave;
};

std::vector<double> NumbersOf(std::istringstream& in) {
  std::vector<double> v;
  double x = 0.0;
  while (in >> x) v.push_back(x);
  return v;
}

std::vector<Case> ReadCases() {
  std::ifstream in(KELDO_TEST_DATA "/scalogram.tsv");
  std::vector<Case> cases;
  std::string text;
  while (std::getline(in, text)) {
    std::istringstream line(text);
    std::string word;
    line >> word;
    if (word == "case") {
      Case c;
      int type = 0;
      line >> c.name >> c.n >> c.setup.a >> c.setup.b >> c.setup.octaves >> c.setup.voices >> c.setup.width >>
          c.setup.freq >> type;
      c.setup.wavelet = static_cast<ScalWavelet>(type);
      cases.push_back(c);
    } else if (word == "signal") {
      cases.back().sig = NumbersOf(line);
    } else if (word == "re" || word == "im" || word == "wave") {
      int r = 0;
      line >> r;
      auto& rows = word == "re" ? cases.back().re : word == "im" ? cases.back().im : cases.back().wave;
      rows[r] = NumbersOf(line);
    }
  }
  return cases;
}

double LargestOf(const std::map<int, std::vector<double>>& rows) {
  double largest = 0.0;
  for (const auto& [r, row] : rows)
    for (double x : row) largest = std::max(largest, std::fabs(x));
  return largest;
}

ScalogramStatus Compute(const Case& c, Scalogram& result, const ScalogramRowCallback& onRow = {}) {
  return IsRealWavelet(c.setup.wavelet) ? ComputeRealScalogram(c.sig.data(), c.n, c.setup, onRow, result)
                                        : ComputeComplexScalogram(c.sig.data(), c.n, c.setup, onRow, result);
}

TEST(ScalogramTest, TheDataFileHoldsEveryCase) {
  const auto cases = ReadCases();
  ASSERT_EQ(cases.size(), 15u);
  for (const Case& c : cases) {
    ASSERT_EQ(c.sig.size(), static_cast<std::size_t>(c.n) + 1) << c.name;
    ASSERT_EQ(c.re.size(), static_cast<std::size_t>(c.setup.octaves * c.setup.voices) + 1) << c.name;
  }
}

// Every row of every wavelet in the three centrings: the middle of [0, 2],
// 0 on [-1.5, 0.5] (not its middle), and b/2 on [0.25, 2.25] (not its
// middle either). Row 0 is the low pass; N = 64 has no range for FMAXWI and
// so a zero low-pass row.
TEST(ScalogramTest, RowsMatchDirectConvolutions) {
  for (const Case& c : ReadCases()) {
    Scalogram result;
    ASSERT_EQ(Compute(c, result), ScalogramStatus::Done) << c.name;
    const ScalogramShape shape = ScalogramShape::Of(c.n, c.setup.octaves, c.setup.voices);
    ASSERT_EQ(result.shape, shape);
    EXPECT_EQ(result.complex, !IsRealWavelet(c.setup.wavelet));
    const double scale = std::max(LargestOf(c.re), LargestOf(c.im));
    ASSERT_GT(scale, 0.0);
    const auto compare = [&](const std::map<int, std::vector<double>>& rows, bool imaginary) {
      for (const auto& [r, expected] : rows) {
        const auto got = imaginary ? result.ImagRow(r) : result.RealRow(r);
        ASSERT_EQ(got.size(), expected.size());
        for (std::size_t i = 0; i < expected.size(); ++i)
          ASSERT_NEAR(got[i], expected[i], kRowTolerance * scale)
              << c.name << " type " << static_cast<int>(c.setup.wavelet) << (imaginary ? " im" : " re") << " row "
              << r << " column " << i;
      }
    };
    compare(c.re, false);
    compare(c.im, true);
  }
}

TEST(ScalogramTest, TheLowPassRowIsZeroWhenFMAXWIHasNoRange) {
  for (const Case& c : ReadCases()) {
    if (c.n != 64) continue;
    Scalogram result;
    ASSERT_EQ(Compute(c, result), ScalogramStatus::Done);
    for (double x : result.RealRow(0)) EXPECT_EQ(x, 0.0);
  }
}

TEST(ScalogramTest, SamplesMatchTheFormulas) {
  for (const Case& c : ReadCases()) {
    const double dx = (c.setup.b - c.setup.a) / c.n;
    std::vector<double> got(static_cast<std::size_t>(c.n) + 1);
    for (const auto& [r, expected] : c.wave) {
      if (c.setup.wavelet == ScalWavelet::GaborComplex)
        ComplexWaveletValues(c.n, got.data(), c.setup.a, c.setup.b, dx, c.setup.freq, r, c.setup.voices,
                             c.setup.width, WaveletPart::Cosine);
      else
        RealWaveletValues(c.n, got.data(), c.setup.a, c.setup.b, dx, c.setup.freq, r, c.setup.voices,
                          c.setup.wavelet, c.setup.width);
      double largest = 0.0;
      for (double x : expected) largest = std::max(largest, std::fabs(x));
      for (std::size_t i = 0; i < expected.size(); ++i)
        ASSERT_NEAR(got[i], expected[i], kSampleTolerance * largest) << c.name << " row " << r << " sample " << i;
    }
  }
}

TEST(ScalogramTest, TheSinePartIsTheGaborSine) {
  const int n = 64;
  std::vector<double> sine(n + 1), part(n + 1);
  for (int r = 1; r <= 4; ++r) {
    RealWaveletValues(n, sine.data(), -1.0, 1.0, 2.0 / n, 1.5, r, 2, ScalWavelet::GaborSine, 0.5);
    ComplexWaveletValues(n, part.data(), -1.0, 1.0, 2.0 / n, 1.5, r, 2, 0.5, WaveletPart::Sine);
    EXPECT_EQ(sine, part);
  }
  // At u = 0 (t = 0, the centre for a < 0) the sine part is 0 and the cosine
  // part q / w: 1 / 0.5 for row 1.
  ComplexWaveletValues(n, part.data(), -1.0, 1.0, 2.0 / n, 1.5, 1, 2, 0.5, WaveletPart::Cosine);
  EXPECT_DOUBLE_EQ(part[32], 2.0);
  EXPECT_EQ(sine[32], 0.0);
}

// The Gabor samples are the formula's own operations to the bit, whether
// the width is a power of two (divided by a product with its reciprocal) or
// not: exp(-pi u^2) q cos(2 pi f u) / w with u = (C - t) s / w.
TEST(ScalogramTest, GaborSamplesAreTheFormulaToTheBit) {
  const double pi = 3.14159265358979;
  const int n = 256;
  for (double w : {1.0, 0.5, 4.0, 0.7, 3.0, 1e-3}) {
    for (int r : {1, 5, 12}) {
      std::vector<double> cosine(n + 1), sine(n + 1);
      ComplexWaveletValues(n, cosine.data(), 0.0, 8.0, 8.0 / n, 1.25, r, 4, w, WaveletPart::Cosine);
      ComplexWaveletValues(n, sine.data(), 0.0, 8.0, 8.0 / n, 1.25, r, 4, w, WaveletPart::Sine);
      const double s = ScaleOfRow(r, 4), q = std::sqrt(s);
      // A zero may carry either sign: a mirrored sine sample is the
      // negation of its partner.
      const auto bits = [](double x) { return x == 0.0 ? std::uint64_t{0} : std::bit_cast<std::uint64_t>(x); };
      for (int i = 0; i <= n; ++i) {
        const double u = (4.0 - (0.0 + i * (8.0 / n))) * s / w;
        const double g = pi * (u * u);
        const double envelope = std::exp(-g) * q;
        const double c = g > 746.0 ? 0.0 : envelope * std::cos(2 * pi * 1.25 * u) / w;
        const double d = g > 746.0 ? 0.0 : envelope * std::sin(2 * pi * 1.25 * u) / w;
        ASSERT_EQ(bits(cosine[static_cast<std::size_t>(i)]), bits(c))
            << "w = " << w << ", row " << r << ", sample " << i;
        ASSERT_EQ(bits(sine[static_cast<std::size_t>(i)]), bits(d))
            << "w = " << w << ", row " << r << ", sample " << i;
      }
    }
  }
}

// The samples of every wavelet that goes to 0 far from its centre, sample
// by sample as the plain loop computes them: the mirror's value where the
// grid mirrors (negated for the sine part), the formula elsewhere, 0 past
// the exponent's underflow. The zeros keep their signs.
struct PlainSampler {
  double a, b, dx, f, w;
  int n, voices;
  std::vector<double> Samples(ScalWavelet type, int r) const {
    const double pi = 3.14159265358979;
    const double c0 = a >= 0.0 ? b / 2 : 0.0;
    const double s = ScaleOfRow(r, voices), q = std::sqrt(s);
    const double k = std::nearbyint((c0 - a) / dx);
    const int k0 = k >= 0.0 && k <= n ? static_cast<int>(k) : -1;
    std::vector<double> out(static_cast<std::size_t>(n) + 1);
    for (int i = 0; i <= n; ++i) {
      const double offset = c0 - (a + i * dx);
      const int j = 2 * k0 - i;
      if (k0 >= 0 && j >= 0 && j < i && c0 - (a + j * dx) == -offset) {
        const double partner = out[static_cast<std::size_t>(j)];
        out[static_cast<std::size_t>(i)] = type == ScalWavelet::GaborSine ? -partner : partner;
        continue;
      }
      double value = 0.0;
      if (type == ScalWavelet::MexicanHat) {
        const double c = 4.57565215012204 * (w * w);
        const double u = offset * s;
        const double ratio = pi * (u * u) / c;
        value = ratio > 746.0 ? 0.0 : (1 - 2 * ratio) * (2 * pi * std::sqrt(c) * q) * std::exp(-ratio);
      } else {
        const double u = offset * s / w;
        const double g = pi * (u * u);
        if (g <= 746.0) {
          const double envelope = std::exp(-g) * q;
          value = type == ScalWavelet::GaborSine ? envelope * std::sin(2 * pi * f * u) / w
                                                 : envelope * std::cos(2 * pi * f * u) / w;
        }
      }
      out[static_cast<std::size_t>(i)] = value;
    }
    return out;
  }
};

TEST(ScalogramTest, SamplesAreThoseOfThePlainLoopToTheBit) {
  const PlainSampler setups[] = {
      {0.0, 16.0, 16.0 / 4096, 1.0, 1.0, 4096, 16},    // the usual interval, mirrored
      {-1.0, 1.0, 2.0 / 1024, 1.5, 0.7, 1024, 8},      // centred at 0
      {0.3, 7.1, 6.8 / 2048, 0.8, 2.0, 2048, 4},       // a grid that does not mirror
      {0.0, 1.0, 1.0 / 512, 1.0, 0.25, 512, 1},        // 256 octaves of one voice
  };
  for (const PlainSampler& p : setups) {
    const int rows = p.voices == 1 ? 256 : 8 * p.voices;
    std::vector<double> got(static_cast<std::size_t>(p.n) + 1);
    for (int r = 1; r <= rows; ++r)
      for (ScalWavelet type : {ScalWavelet::MexicanHat, ScalWavelet::GaborCosine, ScalWavelet::GaborSine}) {
        RealWaveletValues(p.n, got.data(), p.a, p.b, p.dx, p.f, r, p.voices, type, p.w);
        const std::vector<double> expected = p.Samples(type, r);
        for (int i = 0; i <= p.n; ++i)
          ASSERT_EQ(std::bit_cast<std::uint64_t>(got[static_cast<std::size_t>(i)]),
                    std::bit_cast<std::uint64_t>(expected[static_cast<std::size_t>(i)]))
              << "a = " << p.a << ", type " << static_cast<int>(type) << ", row " << r << ", sample " << i;
      }
  }
}

// A scalogram's rows as the plain steps make them, one row after another:
// the samples of the plain loop, the real FFT, the accumulator and the
// product for k = 0..n/2, the inverse, the halves exchanged; column n from
// the end samples; row 0 from the accumulator. One pass per part of the
// complex wavelet.
struct PlainRows {
  std::vector<std::vector<double>> rows;  // 0..nscales, n + 1 columns each
};

PlainRows PlainScalogram(const PlainSampler& p, const std::vector<double>& sig, ScalWavelet type, int octaves) {
  const int n = p.n, h = n / 2, nscales = octaves * p.voices;
  const fourier::TrigTables t(n);
  std::vector<double> x(sig.begin(), sig.end()), y(static_cast<std::size_t>(n) + 5, 0.0);
  x.resize(static_cast<std::size_t>(n) + 5, 0.0);
  fourier::RealFFT(n, x.data(), y.data(), t.sine.data(), t.tan.data(), t.m - 1);
  x[static_cast<std::size_t>(n)] = sig[static_cast<std::size_t>(n)];
  y[static_cast<std::size_t>(n)] = 0.0;
  PlainRows out;
  out.rows.assign(static_cast<std::size_t>(nscales) + 1, std::vector<double>(static_cast<std::size_t>(n) + 1));
  std::vector<double> sum(static_cast<std::size_t>(n) + 1, 0.0);
  const auto invertInto = [&](std::vector<double>& wr, std::vector<double>& wi, double end, std::vector<double>& row) {
    fourier::RealInverseFFT(n, t.m - 6, wr.data(), wi.data(), t.sine.data(), t.tan.data());
    fourier::SwapHalves(n, wr.data());
    std::copy(wr.begin(), wr.begin() + n, row.begin());
    row[static_cast<std::size_t>(n)] = end;
  };
  for (int r = 1; r <= nscales; ++r) {
    const double s = ScaleOfRow(r, p.voices);
    std::vector<double> wr = p.Samples(type, r), wi(static_cast<std::size_t>(n) + 5, 0.0);
    const double endSample = wr[static_cast<std::size_t>(n)];
    wr.resize(static_cast<std::size_t>(n) + 5, 0.0);
    fourier::RealFFT(n, wr.data(), wi.data(), t.sine.data(), t.tan.data(), t.m - 1);
    for (int k = 0; k <= h; ++k) {
      const auto at = static_cast<std::size_t>(k);
      const double re = wr[at], im = wi[at];
      sum[at] += s * (re * re + im * im);
      const double pr = x[at] * re - y[at] * im;
      const double qi = x[at] * im + y[at] * re;
      wr[at] = pr * p.dx;
      wi[at] = qi * p.dx;
    }
    invertInto(wr, wi, x[static_cast<std::size_t>(n)] * endSample * p.dx, out.rows[static_cast<std::size_t>(r)]);
  }
  std::vector<double> phi(static_cast<std::size_t>(n) + 1);
  CreateScaleTransform(n, FMAXWI(n, sum.data()), phi.data(), sum.data());
  std::vector<double> wr(static_cast<std::size_t>(n) + 5, 0.0), wi(static_cast<std::size_t>(n) + 5, 0.0);
  for (int k = 0; k <= h; ++k) {
    const auto at = static_cast<std::size_t>(k);
    wr[at] = x[at] * phi[at] * p.dx;
    wi[at] = y[at] * phi[at] * p.dx;
  }
  invertInto(wr, wi, x[static_cast<std::size_t>(n)] * phi[static_cast<std::size_t>(n)] * p.dx, out.rows[0]);
  return out;
}

std::vector<std::uint64_t> BitsOf(std::span<const double> row) {
  std::vector<std::uint64_t> bits(row.size());
  std::transform(row.begin(), row.end(), bits.begin(), [](double v) { return std::bit_cast<std::uint64_t>(v); });
  return bits;
}

// Every row of the real Gabor scalograms and the Mexican hat's is that of
// the plain steps to the bit: over several octaves, where the rows above
// the first octave take the first octave's exp, cos and sin of samples
// whose u they share, on a mirrored grid, one centred at 0, one that does
// not mirror, with three voices (whose scales do not all double to the bit),
// with a width that is not a power of two, and on grids of 16 and 32
// points. So are the complex wavelet's rows on the grid that does not
// mirror about its middle sample. On the others both parts come from one
// transform of their sum, whose rounding is relative to the sum, and the
// inverses take another path: each row is the plain steps' within 1e-12 of
// its largest value.
TEST(ScalogramTest, RowsAreThoseOfThePlainStepsToTheBit) {
  const PlainSampler setups[] = {
      {0.0, 16.0, 16.0 / 4096, 1.0, 1.0, 4096, 16},
      {-1.0, 1.0, 2.0 / 1024, 1.5, 0.7, 1024, 3},
      {0.3, 7.1, 6.8 / 2048, 0.8, 2.0, 2048, 4},
      {0.0, 4.0, 4.0 / 1024, 2.0, 0.5, 1024, 1},
      {0.0, 2.0, 2.0 / 16, 1.0, 1.0, 16, 2},
      {-1.0, 1.0, 2.0 / 32, 0.5, 1.0, 32, 2},
  };
  for (const PlainSampler& p : setups) {
    std::vector<double> sig(static_cast<std::size_t>(p.n) + 1);
    for (int i = 0; i <= p.n; ++i)
      sig[static_cast<std::size_t>(i)] = std::sin(0.05 * i + 2e-5 * i * i) + 0.3 * std::cos(0.9 * i);
    ScalogramSetup setup;
    setup.a = p.a;
    setup.b = p.b;
    setup.octaves = p.voices == 1 ? 12 : 5;
    setup.voices = p.voices;
    setup.width = p.w;
    setup.freq = p.f;
    const bool oneTransform = p.a == 0.0 || p.a == -p.b;
    const auto expectRows = [&](const Scalogram& got, bool imaginary, const PlainRows& want, const char* what,
                                bool toTheBit) {
      for (int r = 0; r <= setup.octaves * setup.voices; ++r) {
        const std::span<const double> row = imaginary ? got.ImagRow(r) : got.RealRow(r);
        const std::vector<double>& wanted = want.rows[static_cast<std::size_t>(r)];
        if (toTheBit) {
          ASSERT_EQ(BitsOf(row), BitsOf(wanted)) << what << ", a = " << p.a << ", voices " << p.voices << ", row " << r;
          continue;
        }
        double largest = 0.0;
        for (double v : wanted) largest = std::max(largest, std::fabs(v));
        ASSERT_EQ(row.size(), wanted.size());
        for (std::size_t i = 0; i < row.size(); ++i)
          ASSERT_NEAR(row[i], wanted[i], 1e-12 * largest)
              << what << ", a = " << p.a << ", voices " << p.voices << ", row " << r << ", column " << i;
      }
    };
    Scalogram complex;
    setup.wavelet = ScalWavelet::GaborComplex;
    ASSERT_EQ(ComputeComplexScalogram(sig.data(), p.n, setup, {}, complex), ScalogramStatus::Done);
    expectRows(complex, false, PlainScalogram(p, sig, ScalWavelet::GaborCosine, setup.octaves), "cosine part",
               !oneTransform);
    expectRows(complex, true, PlainScalogram(p, sig, ScalWavelet::GaborSine, setup.octaves), "sine part",
               !oneTransform);
    for (ScalWavelet type : {ScalWavelet::GaborCosine, ScalWavelet::GaborSine, ScalWavelet::MexicanHat}) {
      Scalogram real;
      setup.wavelet = type;
      ASSERT_EQ(ComputeRealScalogram(sig.data(), p.n, setup, {}, real), ScalogramStatus::Done);
      expectRows(real, false, PlainScalogram(p, sig, type, setup.octaves), "real wavelet", true);
    }
  }
}

// Where u steps by a half the sine part is sin(pi j) times its envelope,
// some 1e-16 of the cosine part: the rounding of one transform of their sum
// would swamp it, and that row keeps a transform of its own, to the bit of
// the plain steps. (On [0, 16] with 4096 samples, row 8 of one voice has
// s = 128 and u = j / 2.)
TEST(ScalogramTest, ANearlyVanishingSinePartKeepsATransformOfItsOwn) {
  const PlainSampler p{0.0, 16.0, 16.0 / 4096, 1.0, 1.0, 4096, 1};
  std::vector<double> sig(static_cast<std::size_t>(p.n) + 1);
  for (int i = 0; i <= p.n; ++i) sig[static_cast<std::size_t>(i)] = std::sin(0.05 * i) + 0.3 * std::cos(2.9 * i);
  ScalogramSetup setup;
  setup.a = p.a;
  setup.b = p.b;
  setup.octaves = 8;
  setup.voices = 1;
  setup.width = p.w;
  setup.freq = p.f;
  setup.wavelet = ScalWavelet::GaborComplex;
  Scalogram complex;
  ASSERT_EQ(ComputeComplexScalogram(sig.data(), p.n, setup, {}, complex), ScalogramStatus::Done);
  const PlainRows sine = PlainScalogram(p, sig, ScalWavelet::GaborSine, setup.octaves);
  const PlainRows cosine = PlainScalogram(p, sig, ScalWavelet::GaborCosine, setup.octaves);
  double largest = 0.0, cosineLargest = 0.0;
  for (double v : sine.rows[8]) largest = std::max(largest, std::fabs(v));
  for (double v : cosine.rows[8]) cosineLargest = std::max(cosineLargest, std::fabs(v));
  ASSERT_GT(largest, 0.0);
  ASSERT_LT(largest, 1e-10 * cosineLargest);
  EXPECT_EQ(BitsOf(complex.ImagRow(8)), BitsOf(sine.rows[8]));
  EXPECT_EQ(BitsOf(complex.RealRow(8)), BitsOf(cosine.rows[8]));
}

TEST(ScalogramTest, ScalesDoubleEveryOctave) {
  EXPECT_DOUBLE_EQ(ScaleOfRow(1, 16), 1.0);
  EXPECT_DOUBLE_EQ(ScaleOfRow(17, 16), 2.0);
  EXPECT_DOUBLE_EQ(ScaleOfRow(3, 4), std::sqrt(2.0));
  EXPECT_DOUBLE_EQ(ScaleOfRow(129, 16), 256.0);
}

// The frequency is read by the Gabor wavelets alone: a NaN in its place
// leaves the Mexican hat's and the Haar wavelet's samples as they are.
TEST(ScalogramTest, TheFrequencyIsNotReadForWavelets1And2) {
  const int n = 128;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (ScalWavelet type : {ScalWavelet::MexicanHat, ScalWavelet::Haar}) {
    std::vector<double> withFreq(n + 1), withNaN(n + 1);
    for (int r = 1; r <= 6; ++r) {
      RealWaveletValues(n, withFreq.data(), 0.0, 2.0, 2.0 / n, 3.0, r, 2, type, 0.25);
      RealWaveletValues(n, withNaN.data(), 0.0, 2.0, 2.0 / n, nan, r, 2, type, 0.25);
      EXPECT_EQ(withFreq, withNaN);
    }
    EXPECT_EQ(CheckScalogramParameters(8, 16, 1.0, nan, type).message, 0);
    EXPECT_EQ(CheckScalogramParameters(8, 16, 1.0, -1.0, type).message, 0);
  }
}

// On [0, 1] with N = 64, w = 1 and one voice, the Haar wavelet of scale s
// has samples at u = (i/64 - 1/2) s. Scale 16 (row 5): u = -0.25 at i = 31
// and +0.25 at i = 33, amplitude A = sqrt(16) = 4, so the row is
// (b - a)(4 sig[j - 31] - 4 sig[j - 33]) at j = c + 32 (mod 64). Scales 32
// and 64 (rows 6 and 7): the nearest samples fall on |u| = 0.5 and beyond,
// u = 0 gives 0, and the rows are all zero.
TEST(ScalogramTest, AHighOctaveHaarRowIsZero) {
  const int n = 64;
  std::vector<double> sig(n + 1);
  for (int i = 0; i <= n; ++i) sig[static_cast<std::size_t>(i)] = std::cos(0.3 * i) + 0.01 * i * i;
  ScalogramSetup setup;
  setup.a = 0.0;
  setup.b = 1.0;
  setup.octaves = 7;
  setup.voices = 1;
  setup.width = 1.0;
  setup.freq = 1.0;
  setup.wavelet = ScalWavelet::Haar;
  Scalogram result;
  ASSERT_EQ(ComputeRealScalogram(sig.data(), n, setup, {}, result), ScalogramStatus::Done);
  for (int r : {6, 7})
    for (double x : result.RealRow(r)) EXPECT_EQ(x, 0.0) << "row " << r;
  std::vector<double> wave(n + 1);
  RealWaveletValues(n, wave.data(), 0.0, 1.0, 1.0 / n, 1.0, 5, 1, ScalWavelet::Haar, 1.0);
  for (int i = 0; i <= n; ++i) EXPECT_EQ(wave[static_cast<std::size_t>(i)], i == 31 ? 4.0 : i == 33 ? -4.0 : 0.0);
  const auto at = [&](int k) { return sig[static_cast<std::size_t>(((k % n) + n) % n)]; };
  for (int c = 0; c < n; ++c) {
    const int j = (c + n / 2) % n;
    EXPECT_NEAR(result.Re(5, c), 4 * at(j - 31) - 4 * at(j - 33), 1e-12) << "column " << c;
  }
  EXPECT_EQ(result.Re(5, n), 0.0);  // sig[64] times the sample at t = 1, which is 0
}

TEST(ScalogramTest, ParameterChecksInOrder) {
  const auto check = [](int o, int v, double w, double f, ScalWavelet type) {
    return CheckScalogramParameters(o, v, w, f, type);
  };
  const ScalWavelet gabor = ScalWavelet::GaborComplex;
  EXPECT_EQ(check(8, 16, 1.0, 1.0, gabor).message, 0);
  EXPECT_EQ(check(8, 16, 1.0, 1.0, gabor).field, ScalogramField::None);
  // o = 256 with one voice is allowed; with two, too many voices.
  EXPECT_EQ(check(256, 1, 1.0, 1.0, gabor).message, 0);
  EXPECT_EQ(check(256, 2, 1.0, 1.0, gabor).message, 61);
  EXPECT_EQ(check(256, 2, 1.0, 1.0, gabor).field, ScalogramField::Voices);
  EXPECT_EQ(check(16, 16, 1.0, 1.0, gabor).message, 0);
  EXPECT_EQ(check(1, 257, 1.0, 1.0, gabor).message, 61);
  // Each check before the later ones, whatever else is wrong.
  EXPECT_EQ(check(0, 0, -1.0, -1.0, gabor).message, 58);
  EXPECT_EQ(check(0, 0, -1.0, -1.0, gabor).field, ScalogramField::Octaves);
  EXPECT_EQ(check(-3, 2, 1.0, 1.0, gabor).message, 58);
  EXPECT_EQ(check(257, 0, -1.0, -1.0, gabor).message, 59);
  EXPECT_EQ(check(257, 1, 1.0, 1.0, gabor).field, ScalogramField::Octaves);
  EXPECT_EQ(check(4, 0, -1.0, -1.0, gabor).message, 60);
  EXPECT_EQ(check(4, 0, -1.0, -1.0, gabor).field, ScalogramField::Voices);
  EXPECT_EQ(check(200, 2, -1.0, -1.0, gabor).message, 61);
  EXPECT_EQ(check(4, 4, 0.0, -1.0, gabor).message, 62);
  EXPECT_EQ(check(4, 4, -2.0, 1.0, gabor).field, ScalogramField::Width);
  EXPECT_EQ(check(4, 4, 1.0, 0.0, gabor).message, 63);
  EXPECT_EQ(check(4, 4, 1.0, -1.0, ScalWavelet::GaborCosine).field, ScalogramField::Freq);
  EXPECT_EQ(check(4, 4, 1.0, 0.0, ScalWavelet::GaborSine).message, 63);
  EXPECT_EQ(check(4, 4, 1.0, 0.0, ScalWavelet::Haar).message, 0);
  EXPECT_EQ(check(4, 4, 1.0, 0.0, ScalWavelet::MexicanHat).message, 0);
  // No overflow in o*v.
  EXPECT_EQ(check(200, 2000000000, 1.0, 1.0, gabor).message, 61);
}

TEST(ScalogramTest, LowPassHelpers) {
  // FMAXWI reads S[10..n/8]: nothing for n = 64, S[10..16] for n = 128.
  std::vector<double> s(129, 0.0);
  s[5] = 100.0;
  s[12] = -7.0;
  s[16] = 6.0;
  s[17] = 50.0;
  EXPECT_EQ(FMAXWI(64, s.data()), 0.0);
  EXPECT_EQ(FMAXWI(128, s.data()), 7.0);
  // CreateScaleTransform on n = 8: S = 0, 1, 9.995, 2, ..., c = 10: phi[0] =
  // phi[8] = sqrt(10), phi[1] = phi[7] = 3, and k = 2 stops it (0.005 < 0.01).
  std::vector<double> S = {0.0, 1.0, 9.995, 2.0, 0.0, 0.0, 0.0, 0.0, 0.0};
  std::vector<double> phi(9, -1.0);
  CreateScaleTransform(8, 10.0, phi.data(), S.data());
  EXPECT_EQ(phi, (std::vector<double>{std::sqrt(10.0), 3.0, 0.0, 0.0, 0.0, 0.0, 0.0, 3.0, std::sqrt(10.0)}));
  // Nothing at all when C - S[0] is already below 0.001 C.
  S[0] = 9.9999;
  CreateScaleTransform(8, 10.0, phi.data(), S.data());
  EXPECT_EQ(phi, std::vector<double>(9, 0.0));
  // k runs to n/2, which sets phi[n/2] once.
  std::vector<double> flat(9, 1.0);
  CreateScaleTransform(8, 5.0, phi.data(), flat.data());
  EXPECT_EQ(phi, std::vector<double>(9, 2.0));
}

TEST(ScalogramTest, TheCallbackRunsEveryFourthRow) {
  const Case c = ReadCases()[4];  // "mid", the complex Gabor wavelet, 6 rows
  ASSERT_EQ(c.setup.wavelet, ScalWavelet::GaborComplex);
  Case twelve = c;
  twelve.setup.octaves = 6;  // 12 rows
  std::vector<int> rows;
  Scalogram result;
  ASSERT_EQ(Compute(twelve, result,
                    [&](int r) {
                      rows.push_back(r);
                      return ScalogramProgress::Continue;
                    }),
            ScalogramStatus::Done);
  EXPECT_EQ(rows, (std::vector<int>{4, 8, 12}));
}

// A stop at row 8: the call returns Stopped, no row past 8 is written and
// the low-pass row is not made; the rows up to 8 are those of a whole run.
TEST(ScalogramTest, AStopLeavesTheLaterRowsAlone) {
  for (ScalWavelet type : {ScalWavelet::MexicanHat, ScalWavelet::GaborComplex}) {
    Case c = ReadCases()[static_cast<std::size_t>(static_cast<int>(type) - 1)];
    c.setup.octaves = 6;  // 12 rows
    Scalogram whole;
    ASSERT_EQ(Compute(c, whole), ScalogramStatus::Done);
    Scalogram stopped;
    stopped.shape = whole.shape;
    stopped.re.assign(whole.shape.Cells(), 7.0);
    stopped.im.assign(whole.shape.Cells(), 7.0);
    const double* kept = stopped.re.data();
    std::vector<int> rows;
    const auto status = Compute(c, stopped, [&](int r) {
      rows.push_back(r);
      return r == 8 ? ScalogramProgress::Stop : ScalogramProgress::Continue;
    });
    EXPECT_EQ(status, ScalogramStatus::Stopped);
    EXPECT_EQ(rows, (std::vector<int>{4, 8}));
    EXPECT_EQ(stopped.re.data(), kept);  // the same shape keeps the matrix
    for (int r = 0; r <= 12; ++r) {
      const bool written = r >= 1 && r <= 8;
      for (int col = 0; col <= c.n; ++col) {
        ASSERT_EQ(stopped.Re(r, col), written ? whole.Re(r, col) : 7.0) << "row " << r;
        if (type == ScalWavelet::GaborComplex) {
          ASSERT_EQ(stopped.Im(r, col), written ? whole.Im(r, col) : 7.0) << "row " << r;
        }
      }
    }
  }
}

TEST(ScalogramTest, MatricesAreKeptWhileTheShapeIsTheSame) {
  const Case c = ReadCases()[0];
  Scalogram result;
  ASSERT_EQ(Compute(c, result), ScalogramStatus::Done);
  const double* first = result.re.data();
  const std::vector<double> before = result.re;
  ASSERT_EQ(Compute(c, result), ScalogramStatus::Done);
  EXPECT_EQ(result.re.data(), first);
  EXPECT_EQ(result.re, before);
  Case other = c;
  other.setup.voices = 3;
  ASSERT_EQ(Compute(other, result), ScalogramStatus::Done);
  EXPECT_EQ(result.shape.nscales, 9);
  EXPECT_EQ(result.re.size(), 10u * 129u);
}

// The working arrays stay with the result from one computation to the
// next of the same size: rows computed after another signal's are those of
// a fresh result, to the bit, for a real and the complex wavelet.
TEST(ScalogramTest, KeptWorkingArraysGiveTheRowsOfFreshOnes) {
  for (const Case& c : ReadCases()) {
    Case other = c;
    for (std::size_t i = 0; i < other.sig.size(); ++i) other.sig[i] = std::cos(0.3 * static_cast<double>(i)) - 0.5;
    other.setup.voices = c.setup.voices + 1;
    Scalogram kept, fresh;
    ASSERT_EQ(Compute(other, kept), ScalogramStatus::Done);
    ASSERT_EQ(Compute(c, kept), ScalogramStatus::Done);
    ASSERT_EQ(Compute(c, fresh), ScalogramStatus::Done);
    EXPECT_EQ(kept.re, fresh.re) << c.name;
    if (!IsRealWavelet(c.setup.wavelet)) {
      EXPECT_EQ(kept.im, fresh.im) << c.name;
    }
    // A copy starts without the arrays and computes the same rows.
    Scalogram copy = kept;
    ASSERT_EQ(Compute(c, copy), ScalogramStatus::Done);
    EXPECT_EQ(copy.re, fresh.re) << c.name;
  }
}

TEST(ScalogramTest, WaveletLabels) {
  const auto labels = ScalWaveletLabels();
  ASSERT_EQ(labels.size(), 5u);
  EXPECT_EQ(labels[0], "1. Mexican hat (real)");
  EXPECT_EQ(labels[4], "5. Gabor (complex)");
  ScalWavelet w = ScalWavelet::MexicanHat;
  ASSERT_TRUE(ScalWaveletOfLabel("4. Gabor sine (real)", w));
  EXPECT_EQ(w, ScalWavelet::GaborSine);
  ASSERT_TRUE(ScalWaveletOfLabel(labels[4], w));
  EXPECT_FALSE(IsRealWavelet(w));
  EXPECT_FALSE(ScalWaveletOfLabel("6. Morlet", w));
  EXPECT_FALSE(ScalWaveletOfLabel("", w));
  EXPECT_FALSE(ScalWaveletOfLabel("12. x", w));
}

}  // namespace
}  // namespace keldo::wavelet

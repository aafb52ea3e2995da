// The spectrogram against numpy (tests/data/spectrogram.tsv, from
// make_spectrogram.py), and its edge cases by hand: the column count, a
// boxcar over a constant, the grey levels, thresholding, the window widths,
// the inversions and their division fault, the noise estimate and the
// denoise formula.

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "fourier/spectrogram.h"

namespace keldo::fourier {
namespace {

// An entry against numpy's, relative to the largest magnitude of its case.
constexpr double kGoldenTolerance = 1e-12;
// The noise estimate: a median of a few sorted entries, so as close as they.
constexpr double kSigmaTolerance = 1e-9;
// A signal back from its spectrogram, relative to its largest value.
constexpr double kRoundTripTolerance = 1e-12;

std::size_t U(int i) { return static_cast<std::size_t>(i); }

SpecWindow WindowOf(const std::string& name) {
  SpecWindow w = SpecWindow::Boxcar;
  EXPECT_TRUE(SpecWindowOfName(name, w)) << name;
  return w;
}

struct GoldenCell {
  int r, c;
  double re, im;
};
struct GoldenCase {
  std::string window;
  int winlen = 0, step = 0, ncols = 0, nrows = 0;
  double scale = 0.0;
  double sums[4] = {0, 0, 0, 0};
  std::vector<GoldenCell> cells;
  bool hasSigma = false;
  double sigma = 0.0;
};
struct Golden {
  std::vector<double> signal;
  std::vector<GoldenCase> cases;
};

const Golden& LoadGolden() {
  static const Golden golden = [] {
    Golden g;
    std::ifstream in(KELDO_TEST_DATA "/spectrogram.tsv");
    EXPECT_TRUE(in.good());
    std::string line;
    while (std::getline(in, line)) {
      std::istringstream fields(line);
      std::string tag;
      fields >> tag;
      if (tag == "signal") {
        int n = 0;
        fields >> n;
        g.signal.resize(U(n) + 1);
        for (double& v : g.signal) in >> v;
        std::getline(in, line);
      } else if (tag == "case") {
        GoldenCase c;
        fields >> c.window >> c.winlen >> c.step >> c.ncols >> c.nrows >> c.scale;
        g.cases.push_back(c);
      } else if (tag == "sums") {
        for (double& s : g.cases.back().sums) fields >> s;
      } else if (tag == "cell") {
        GoldenCell cell{};
        fields >> cell.r >> cell.c >> cell.re >> cell.im;
        g.cases.back().cells.push_back(cell);
      } else if (tag == "sigma") {
        fields >> g.cases.back().sigma;
        g.cases.back().hasSigma = true;
      }
    }
    return g;
  }();
  return golden;
}

Spectrum Compute(const std::vector<double>& sig, int winlen, int step, SpecWindow kind) {
  Spectrum s;
  EXPECT_TRUE(ComputeSpectrograph(sig.data(), SpectrogramShape::Of(static_cast<int>(sig.size()) - 1, winlen, step),
                                  kind, s));
  return s;
}

TEST(SpectrogramCompute, MatchesNumpyForEveryWindowLengthAndStep) {
  const Golden& g = LoadGolden();
  ASSERT_EQ(g.signal.size(), 1025u);
  ASSERT_EQ(g.cases.size(), 20u);
  for (const GoldenCase& c : g.cases) {
    SCOPED_TRACE(c.window + " W=" + std::to_string(c.winlen) + " step=" + std::to_string(c.step));
    const Spectrum s = Compute(g.signal, c.winlen, c.step, WindowOf(c.window));
    ASSERT_EQ(s.shape.ncols, c.ncols);
    ASSERT_EQ(s.shape.nrows, c.nrows);
    ASSERT_EQ(s.re.size(), U(c.nrows + 1) * U(c.ncols));
    const double tol = kGoldenTolerance * c.scale;
    for (const GoldenCell& cell : c.cells) {
      EXPECT_NEAR(s.Re(cell.r, cell.c), cell.re, tol) << "row " << cell.r << " col " << cell.c;
      EXPECT_NEAR(s.Im(cell.r, cell.c), cell.im, tol) << "row " << cell.r << " col " << cell.c;
    }
    // Every cell through its sums and sums of squares.
    double sums[4] = {0, 0, 0, 0};
    for (std::size_t i = 0; i < s.re.size(); ++i) {
      sums[0] += s.re[i];
      sums[1] += s.im[i];
      sums[2] += s.re[i] * s.re[i];
      sums[3] += s.im[i] * s.im[i];
    }
    const double cells = static_cast<double>(s.re.size());
    EXPECT_NEAR(sums[0], c.sums[0], tol * cells);
    EXPECT_NEAR(sums[1], c.sums[1], tol * cells);
    EXPECT_NEAR(sums[2], c.sums[2], 2 * tol * c.scale * cells);
    EXPECT_NEAR(sums[3], c.sums[3], 2 * tol * c.scale * cells);
    if (c.hasSigma) {
      EXPECT_NEAR(GetStandardDeviation(s, WindowOf(c.window)), c.sigma, kSigmaTolerance * c.sigma);
    }
  }
}

TEST(SpectrogramCompute, StepEqualToWindowGivesNOverWPlusOneColumnsTheLastCentredOnN) {
  // A unit pulse at the last sample: the last boxcar frame (offset 992) has
  // it at i = 32, so its column is exp(+2 pi i 32 r / 64) = (-1)^r.
  std::vector<double> sig(1025, 0.0);
  sig[1024] = 1.0;
  const Spectrum s = Compute(sig, 64, 64, SpecWindow::Boxcar);
  EXPECT_EQ(s.shape.ncols, 1024 / 64 + 1);
  EXPECT_EQ(s.shape.nrows, 32);
  for (int r = 0; r <= 32; ++r) {
    EXPECT_NEAR(s.Re(r, 17), r % 2 == 0 ? 1.0 : -1.0, 1e-14) << r;
    EXPECT_NEAR(s.Im(r, 17), 0.0, 1e-14) << r;
    for (int c = 1; c <= 16; ++c) EXPECT_EQ(s.Re(r, c), 0.0);
  }
}

TEST(SpectrogramCompute, BoxcarOverAConstantSumsTheWindowWithTheWrappedEndAveraged) {
  const std::vector<double> sig(1025, 3.0);
  const Spectrum s = Compute(sig, 64, 16, SpecWindow::Boxcar);
  ASSERT_EQ(s.shape.ncols, 65);
  // First frame: P[-32..-1] = 0, P[0..32] = 3; B[0] = (B[64] + B[0]) / 2 =
  // 1.5, B[32..63] = 3, so row 0 = 1.5 + 32 * 3. The last frame mirrors it.
  EXPECT_DOUBLE_EQ(s.Re(0, 1), 97.5);
  EXPECT_DOUBLE_EQ(s.Re(0, 65), 97.5);
  // Second frame (offset -16): B[0] = (3 + 0) / 2, B[16..63] = 3.
  EXPECT_DOUBLE_EQ(s.Re(0, 2), 1.5 + 48 * 3);
  // Whole frames inside the signal: 64 * 3, and nothing at other rows.
  for (int c = 3; c <= 63; ++c) {
    EXPECT_DOUBLE_EQ(s.Re(0, c), 192.0) << c;
    EXPECT_EQ(s.Im(0, c), 0.0) << c;
    for (int r = 1; r <= 32; ++r) {
      EXPECT_NEAR(s.Re(r, c), 0.0, 1e-12) << r << " " << c;
      EXPECT_NEAR(s.Im(r, c), 0.0, 1e-12) << r << " " << c;
    }
  }
}

TEST(SpectrogramCompute, KeepsItsAllocationWhenTheShapeIsUnchanged) {
  const Golden& g = LoadGolden();
  Spectrum s;
  const auto shape = SpectrogramShape::Of(1024, 64, 16);
  ASSERT_TRUE(ComputeSpectrograph(g.signal.data(), shape, SpecWindow::Hamming, s));
  const double* re = s.re.data();
  const std::vector<double> first = s.re;
  ASSERT_TRUE(ComputeSpectrograph(g.signal.data(), shape, SpecWindow::Hamming, s));
  EXPECT_EQ(s.re.data(), re);
  EXPECT_EQ(s.re, first);
}

TEST(SpectrogramCompute, StepOneAtTheLargestSizeSucceedsOrFailsCleanly) {
  // 65537 columns of 513 rows, about 540 MB: either it is had or the call
  // says false and leaves the spectrum empty.
  std::vector<double> sig(65537);
  for (int j = 0; j <= 65536; ++j) sig[U(j)] = std::sin(0.01 * j);
  Spectrum s;
  const auto shape = SpectrogramShape::Of(65536, 1024, 1);
  if (ComputeSpectrograph(sig.data(), shape, SpecWindow::Hanning, s)) {
    EXPECT_EQ(s.shape.ncols, 65537);
    EXPECT_EQ(s.re.size(), 513u * 65537u);
    // Column 32769 is centred on sample 32768, its frame wholly inside.
    double sum = 0.0;
    std::vector<double> w(1025);
    GetSpecFilter(1024, SpecWindow::Hanning, w.data());
    for (int i = 1; i < 1024; ++i) sum += sig[U(32768 - 512 + i)] * w[U(i)];
    sum += (sig[U(32768 + 512)] * w[1024] + sig[U(32768 - 512)] * w[0]) / 2;
    EXPECT_NEAR(s.Re(0, 32769), sum, 1e-10 * 1024);
  } else {
    EXPECT_TRUE(s.re.empty());
    EXPECT_TRUE(s.im.empty());
  }
}

TEST(SpectrogramCompute, WindowsByHand) {
  std::vector<double> w(65);
  GetSpecFilter(64, SpecWindow::Hamming, w.data());
  EXPECT_DOUBLE_EQ(w[32], 1.0);
  EXPECT_NEAR(w[0], 0.08, 1e-15);
  EXPECT_NEAR(w[64], 0.08, 1e-15);
  EXPECT_NEAR(w[16], 0.54, 1e-15);  // cos(pi / 2) = 0
  GetSpecFilter(64, SpecWindow::Hanning, w.data());
  EXPECT_EQ(w[0], 0.0);
  EXPECT_DOUBLE_EQ(w[32], 1.0);
  EXPECT_NEAR(w[16], 0.5, 1e-15);
  GetSpecFilter(64, SpecWindow::Blackman, w.data());
  EXPECT_DOUBLE_EQ(w[32], 1.0);
  EXPECT_NEAR(w[0], 0.0, 1e-15);
  EXPECT_NEAR(w[16], 0.42 - 0.08, 1e-15);  // cos(pi/2) = 0, cos(pi) = -1
  GetSpecFilter(64, SpecWindow::Gauss, w.data());
  EXPECT_DOUBLE_EQ(w[32], 1.0);
  EXPECT_DOUBLE_EQ(w[0], std::exp(-4.5));
  EXPECT_DOUBLE_EQ(w[16], std::exp(-4.5 / 4));
  GetSpecFilter(64, SpecWindow::Boxcar, w.data());
  for (double v : w) EXPECT_EQ(v, 1.0);
}

TEST(SpectrogramCompute, WindowNamesAsTheListShowsThem) {
  const char* names[] = {"Blackman", "Gauss", "Hamming", "hanning", "Boxcar"};
  const SpecWindow kinds[] = {SpecWindow::Blackman, SpecWindow::Gauss, SpecWindow::Hamming, SpecWindow::Hanning,
                              SpecWindow::Boxcar};
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(SpecWindowName(kinds[i]), names[i]);
    SpecWindow w = SpecWindow::Boxcar;
    EXPECT_TRUE(SpecWindowOfName(names[i], w));
    EXPECT_EQ(w, kinds[i]);
  }
  SpecWindow w = SpecWindow::Gauss;
  EXPECT_FALSE(SpecWindowOfName("Hanning", w));
  EXPECT_FALSE(SpecWindowOfName("", w));
  EXPECT_EQ(w, SpecWindow::Gauss);
}

TEST(SpectrogramInvert, FilterWidthByHand) {
  const double a[] = {0.0, 0.05, 0.0999, 0.1, 0.5, 1.0, 0.5, 0.1, 0.0};
  EXPECT_EQ(FilterWidth(a, 8, 4), 4 - 3);
  const double none[] = {0.0, 0.05, 0.09};
  EXPECT_EQ(FilterWidth(none, 2, 1), 1 - 3);
  // hanning at 64: w[6] = 0.5 cos(26 pi / 32) + 0.5 = 0.084,
  // w[7] = 0.5 cos(25 pi / 32) + 0.5 = 0.1135.
  std::vector<double> w(65);
  GetSpecFilter(64, SpecWindow::Hanning, w.data());
  EXPECT_EQ(FilterWidth(w.data(), 64, 32), 25);
  // Hamming: w[3] = 0.54 - 0.46 cos(3 pi / 32) = 0.0998,
  // w[4] = 0.54 - 0.46 cos(4 pi / 32) = 0.115.
  GetSpecFilter(64, SpecWindow::Hamming, w.data());
  EXPECT_EQ(FilterWidth(w.data(), 64, 32), 28);
  GetSpecFilter(64, SpecWindow::Boxcar, w.data());
  EXPECT_EQ(FilterWidth(w.data(), 64, 32), 32);
}

TEST(SpectrogramDisplay, AnAllZeroSpectrumIsWhiteInEveryModeWithPhase128) {
  Spectrum s;
  s.shape = SpectrogramShape::Of(128, 64, 32);
  s.re.assign(s.shape.Cells(), 0.0);
  s.im.assign(s.shape.Cells(), 0.0);
  for (MagnitudeMode mode : {MagnitudeMode::LogGlobal, MagnitudeMode::LinearGlobal, MagnitudeMode::LogLocal,
                             MagnitudeMode::LinearLocal}) {
    std::vector<std::int16_t> mag, phase;
    double maximum = -1;
    GetImageArray(s, mode, mag, phase, maximum);
    ASSERT_EQ(mag.size(), s.shape.Cells());
    ASSERT_EQ(phase.size(), s.shape.Cells());
    for (std::size_t i = 0; i < mag.size(); ++i) {
      EXPECT_EQ(mag[i], 255);
      EXPECT_EQ(phase[i], 128);
    }
    const bool local = mode == MagnitudeMode::LogLocal || mode == MagnitudeMode::LinearLocal;
    // A zero column takes the reference 1 in the local modes.
    EXPECT_EQ(maximum, local ? 1.0 : 0.0);
  }
  EXPECT_EQ(FMAX(s), 0.0);
}

// Two rows, three columns: p = 16, 16 * 0.92^2.5, 8 in row 0 and
// p = 4, 0, 1 in row 1.
Spectrum SmallSpectrum() {
  Spectrum s;
  s.shape = SpectrogramShape{4, 2, 2, 3, 1};
  s.re = {4.0, 4.0 * std::pow(0.92, 1.25), 2.0, 2.0, 0.0, -1.0};
  s.im = {0.0, 0.0, -2.0, 0.0, 0.0, -1e-300};
  return s;
}

TEST(SpectrogramDisplay, LevelsByHand) {
  const Spectrum s = SmallSpectrum();
  EXPECT_DOUBLE_EQ(FMAX(s), 16.0);
  std::vector<std::int16_t> mag, phase;
  double maximum = 0;
  // Log, global reference 16: 0; 2.5 levels below, so 2; 8 is
  // ln 2 / ln(1/0.92) = 8.31 levels below, so 8.
  GetImageArray(s, MagnitudeMode::LogGlobal, mag, phase, maximum);
  EXPECT_EQ(maximum, 4.0);
  EXPECT_EQ(mag, (std::vector<std::int16_t>{0, 2, 8, 16, 255, 33}));
  // Linear, global: 255 - min(255, trunc(p * 256 / 16)).
  GetImageArray(s, MagnitudeMode::LinearGlobal, mag, phase, maximum);
  EXPECT_EQ(mag[0], 0);
  EXPECT_EQ(mag[1], 255 - static_cast<int>(256 * std::pow(0.92, 2.5)));
  EXPECT_EQ(mag[2], 255 - 128);
  EXPECT_EQ(mag[3], 255 - 64);
  EXPECT_EQ(mag[4], 255);
  EXPECT_EQ(mag[5], 255 - 16);
  // Local: columns' references 16, 16 * 0.92^2.5 and 8.
  GetImageArray(s, MagnitudeMode::LogLocal, mag, phase, maximum);
  EXPECT_EQ(maximum, 4.0);
  EXPECT_EQ(mag, (std::vector<std::int16_t>{0, 0, 0, 16, 255, 24}));
  GetImageArray(s, MagnitudeMode::LinearLocal, mag, phase, maximum);
  EXPECT_EQ(mag, (std::vector<std::int16_t>{0, 0, 0, 255 - 64, 255, 255 - 32}));
  // Phases: 0 is 128; -pi/4 is 128 - trunc(31.75); a real part -1 with the
  // smallest negative imaginary part is -pi, 128 - 127.
  EXPECT_EQ(phase, (std::vector<std::int16_t>{128, 128, 97, 128, 128, 1}));
}

TEST(SpectrogramDisplay, PhaseInTheFourQuadrants) {
  const double pi = 3.14159265358979;
  EXPECT_EQ(Phase(0.0, 0.0), 0.0);
  EXPECT_DOUBLE_EQ(Phase(1.0, 1.0), std::atan(1.0));
  EXPECT_DOUBLE_EQ(Phase(-1.0, 1.0), std::atan(-1.0) + pi);
  EXPECT_DOUBLE_EQ(Phase(-1.0, -1.0), std::atan(1.0) - pi);
  EXPECT_DOUBLE_EQ(Phase(1.0, -1.0), -std::atan(1.0));
  EXPECT_DOUBLE_EQ(Phase(0.0, 2.0), pi / 2);
  EXPECT_DOUBLE_EQ(Phase(0.0, -2.0), -pi / 2);
  EXPECT_DOUBLE_EQ(Phase(-3.0, 0.0), pi);
  // Levels: pi/4 is 128 + trunc(31.75); pi is 128 + 127; -3pi/4 is
  // 128 - trunc(95.25).
  Spectrum s;
  s.shape = SpectrogramShape{2, 2, 2, 1, 1};
  s.re = {1.0, -3.0};
  s.im = {1.0, 0.0};
  std::vector<std::int16_t> mag, phase;
  double maximum = 0;
  GetImageArray(s, MagnitudeMode::LogGlobal, mag, phase, maximum);
  EXPECT_EQ(phase, (std::vector<std::int16_t>{159, 255}));
  s.re = {-1.0, 0.0};
  s.im = {-1.0, 0.0};
  GetImageArray(s, MagnitudeMode::LinearGlobal, mag, phase, maximum);
  EXPECT_EQ(phase, (std::vector<std::int16_t>{33, 128}));
}

TEST(SpectrogramDisplay, ThresholdZeroChangesNothingAndAValueZeroesTheSmallerCells) {
  const Golden& g = LoadGolden();
  Spectrum s = Compute(g.signal, 64, 16, SpecWindow::Hamming);
  const Spectrum before = s;
  ThresholdSpectrum(s, 0.0);
  EXPECT_EQ(s.re, before.re);
  EXPECT_EQ(s.im, before.im);
  Spectrum small = SmallSpectrum();
  // Magnitudes 4, 3.63, 2.83, 2, 0, 1: below 2 goes.
  ThresholdSpectrum(small, 2.0);
  EXPECT_EQ(small.re, (std::vector<double>{4.0, 4.0 * std::pow(0.92, 1.25), 2.0, 2.0, 0.0, 0.0}));
  EXPECT_EQ(small.im, (std::vector<double>{0.0, 0.0, -2.0, 0.0, 0.0, 0.0}));
}

void ExpectRoundTrip(int winlen, int step, SpecWindow kind, InversionMethod method) {
  const Golden& g = LoadGolden();
  const Spectrum s = Compute(g.signal, winlen, step, kind);
  std::vector<double> back;
  ASSERT_TRUE(InvertSpectrogram(s, kind, method, back));
  ASSERT_EQ(back.size(), g.signal.size());
  double largest = 0.0;
  for (double v : g.signal) largest = std::max(largest, std::fabs(v));
  for (std::size_t j = 0; j < back.size(); ++j) ASSERT_NEAR(back[j], g.signal[j], kRoundTripTolerance * largest) << j;
}

TEST(SpectrogramInvert, SummedFiltersReturnsTheSignalForWindowsVanishingAtTheEnds) {
  for (int winlen : {64, 256})
    for (int step : {1, 16, winlen / 2}) {
      SCOPED_TRACE(std::to_string(winlen) + " " + std::to_string(step));
      ExpectRoundTrip(winlen, step, SpecWindow::Hanning, InversionMethod::SummedFilters);
      ExpectRoundTrip(winlen, step, SpecWindow::Blackman, InversionMethod::SummedFilters);
    }
}

TEST(SpectrogramInvert, SumOfSquaresReturnsTheSignalForWindowsVanishingAtTheEnds) {
  for (int step : {16, 32}) {
    ExpectRoundTrip(64, step, SpecWindow::Hanning, InversionMethod::SumOfSquares);
    ExpectRoundTrip(256, step, SpecWindow::Blackman, InversionMethod::SumOfSquares);
  }
}

TEST(SpectrogramInvert, EachFilterReturnsTheSignalWhereTheEndsAreBelowATenth) {
  for (SpecWindow kind : {SpecWindow::Hanning, SpecWindow::Hamming, SpecWindow::Gauss, SpecWindow::Blackman})
    for (int step : {1, 16}) {
      SCOPED_TRACE(std::string(SpecWindowName(kind)) + " " + std::to_string(step));
      ExpectRoundTrip(64, step, kind, InversionMethod::EachFilter);
      ExpectRoundTrip(256, step, kind, InversionMethod::EachFilter);
    }
}

TEST(SpectrogramInvert, BoxcarOverAConstantComesBackWithTheEndsAveraged) {
  // A constant 3, boxcar W = 64, step 64: every j is covered by one frame
  // at i = 1..63 (giving 64 * 3) or by the end of one frame (i = 64, X = 0)
  // and the start of the next (i = 0, X = 64 * B[0]).
  const std::vector<double> sig(1025, 3.0);
  const Spectrum s = Compute(sig, 64, 64, SpecWindow::Boxcar);
  std::vector<double> back;
  ASSERT_TRUE(InvertSpectrogram(s, SpecWindow::Boxcar, InversionMethod::SummedFilters, back));
  // j = 32 + 64k inside: B[0] = (3 + 3) / 2, so (0 + 64 * 3) / 2 / 64.
  EXPECT_NEAR(back[32], 1.5, 1e-13);
  EXPECT_NEAR(back[33], 3.0, 1e-13);
  EXPECT_NEAR(back[31], 3.0, 1e-13);
  // j = 0 is at i = 32 of the first frame alone.
  EXPECT_NEAR(back[0], 3.0, 1e-13);
}

TEST(SpectrogramInvert, AWindowVanishingAtTheEndsWithStepWIsADivisionFault) {
  const Golden& g = LoadGolden();
  const Spectrum s = Compute(g.signal, 64, 64, SpecWindow::Hanning);
  std::vector<double> back(3, 7.0);
  EXPECT_FALSE(InvertSpectrogram(s, SpecWindow::Hanning, InversionMethod::SummedFilters, back));
  EXPECT_EQ(back, (std::vector<double>{7.0, 7.0, 7.0}));
  EXPECT_FALSE(InvertSpectrogram(s, SpecWindow::Hanning, InversionMethod::SumOfSquares, back));
  EXPECT_FALSE(InvertSpectrogram(s, SpecWindow::Hanning, InversionMethod::EachFilter, back));
  EXPECT_EQ(back, (std::vector<double>{7.0, 7.0, 7.0}));
  // Hamming is 0.08 at its ends: the same step divides.
  const Spectrum h = Compute(g.signal, 64, 64, SpecWindow::Hamming);
  EXPECT_TRUE(InvertSpectrogram(h, SpecWindow::Hamming, InversionMethod::SummedFilters, back));
  EXPECT_EQ(back.size(), 1025u);
}

TEST(SpectrogramDenoise, NoiseEstimateOfAZeroSpectrumIsOne) {
  Spectrum s;
  s.shape = SpectrogramShape::Of(1024, 64, 16);
  s.re.assign(s.shape.Cells(), 0.0);
  s.im.assign(s.shape.Cells(), 0.0);
  EXPECT_EQ(GetStandardDeviation(s, SpecWindow::Hanning), 1.0);
}

TEST(SpectrogramDenoise, NoiseEstimateByHandOnAFlatBand) {
  // |Im| = 2 on rows 17..24 of every column (H = 32), other rows large:
  // each column gives 2 / 0.6745 / sqrt(32) / 0.65.
  Spectrum s;
  s.shape = SpectrogramShape::Of(1024, 64, 16);
  s.re.assign(s.shape.Cells(), 0.0);
  s.im.assign(s.shape.Cells(), 100.0);
  for (int c = 1; c <= s.shape.ncols; ++c)
    for (int r = 17; r <= 24; ++r) s.Im(r, c) = (r % 2 == 0) ? 2.0 : -2.0;
  s.Im(17, 3) = 1.0;  // one low value leaves the median of eight alone
  EXPECT_DOUBLE_EQ(GetStandardDeviation(s, SpecWindow::Hanning), 2 / 0.6745 / std::sqrt(32.0) / 0.65);
  EXPECT_DOUBLE_EQ(GetStandardDeviation(s, SpecWindow::Boxcar), 2 / 0.6745 / std::sqrt(32.0));
}

TEST(SpectrogramDenoise, FormulaTextForEveryWindow) {
  const std::string tail = "\\Rem To denoise, plot this function and then select Invert.";
  EXPECT_EQ(GaborDenoiseFormula(SpecWindow::Blackman, 0.25, 32, 64),
            "(g1)(g1 > c)\\c=.55*sqr(2log(64))*(0.25)*sqr(32)" + tail);
  EXPECT_EQ(GaborDenoiseFormula(SpecWindow::Gauss, 0.25, 32, 64),
            "(g1)(g1 > c)\\c=.55*sqr(2log(64))*(0.25)*sqr(32)" + tail);
  EXPECT_EQ(GaborDenoiseFormula(SpecWindow::Hanning, 1.0, 128, 256),
            "(g1)(g1 > c)\\c=.61*sqr(2log(256))*(1)*sqr(128)" + tail);
  EXPECT_EQ(GaborDenoiseFormula(SpecWindow::Hamming, 0.0123456789, 512, 1024),
            "(g1)(g1 > c)\\c=.63*sqr(2log(1024))*(0.0123456789)*sqr(512)" + tail);
  EXPECT_EQ(GaborDenoiseFormula(SpecWindow::Boxcar, 1e-20, 64, 128),
            "(g1)(g1 > c)\\c=sqr(2log(128))*(1E-20)*sqr(64)" + tail);
}

}  // namespace
}  // namespace keldo::fourier

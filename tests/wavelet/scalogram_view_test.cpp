// The scalogram's grey levels, threshold and inversions against numpy
// (tests/data/scalogram_view.tsv, from make_scalogram_view.py, which makes
// its matrices by direct sums), against levels worked out by hand, and by
// round trips through the forward transform.

#include "wavelet/scalogram_view.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace keldo::wavelet {
namespace {

using fourier::MagnitudeMode;

constexpr MagnitudeMode kModes[] = {MagnitudeMode::LogGlobal, MagnitudeMode::LinearGlobal, MagnitudeMode::LogLocal,
                                    MagnitudeMode::LinearLocal};

// The file's matrices against the library's FFT path, relative to the
// largest cell (as in scalogram_test).
constexpr double kMatrixTolerance = 1e-12;
// Our inversion against numpy's, both from the same matrix, relative to the
// largest |sig|: two FFT paths and a few hundred products apart. The damped
// trigonometric method divides by |W|^2 down to 1/100 of row 1's peak, which
// costs up to two more digits.
constexpr double kInversionTolerance = 1e-13;
// A smooth zero-mean signal, all of whose frequencies some row reaches,
// comes back from the damped trigonometric method to rounding: each
// accepted row's estimate is exact.
constexpr double kExactRecovery = 1e-11;
// The constant through "Wavelets and scaling functions": its mean comes
// back times (Den[0] + sqrt((C - Den[0]) (c - S[0]))) / C, c the forward's
// FMAXWI and C the largest Den. For the Mexican hat case (256 points, 4
// octaves of 4 voices) numpy finds Den[0]/C = 5e-15 and c/C = 0.9997, a
// gain of sqrt(c/C) = 0.99985; 1e-3 leaves room for nothing else.
constexpr double kConstantTolerance = 1e-3;
// What "Wavelet superposition" leaves of the same constant: Den[0]/C of it.
constexpr double kLostMean = 1e-9;

struct Case {
  std::string name;
  int n = 0;
  ScalogramSetup setup;
  std::vector<double> sig;
  std::map<int, std::vector<double>> re, im;
  double maximum = 0.0;
  std::map<int, std::vector<double>> levels, magnitude, phase, invert;
  bool Complex() const { return setup.wavelet == ScalWavelet::GaborComplex; }
};

std::vector<double> NumbersOf(std::istringstream& in) {
  std::vector<double> v;
  double x = 0.0;
  while (in >> x) v.push_back(x);
  return v;
}

std::vector<Case> ReadCases() {
  std::ifstream in(KELDO_TEST_DATA "/scalogram_view.tsv");
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
      continue;
    }
    if (cases.empty()) continue;
    Case& c = cases.back();
    if (word == "signal") {
      c.sig = NumbersOf(line);
    } else if (word == "maximum") {
      line >> c.maximum;
    } else {
      int index = 0;
      line >> index;
      std::map<std::string, std::map<int, std::vector<double>>*> rows{
          {"re", &c.re},       {"im", &c.im},        {"levels", &c.levels}, {"magnitude", &c.magnitude},
          {"phase", &c.phase}, {"invert", &c.invert}};
      if (auto it = rows.find(word); it != rows.end()) (*it->second)[index] = NumbersOf(line);
    }
  }
  return cases;
}

// A copy: the callers read the file afresh.
Case CaseNamed(const std::vector<Case>& cases, const std::string& name) {
  for (const Case& c : cases)
    if (c.name == name) return c;
  ADD_FAILURE() << "no case " << name;
  return Case();
}

std::vector<double> Joined(const std::map<int, std::vector<double>>& rows) {
  std::vector<double> all;
  for (const auto& [r, row] : rows) all.insert(all.end(), row.begin(), row.end());
  return all;
}

// The file's matrices as a Scalogram.
Scalogram MatricesOf(const Case& c) {
  Scalogram s;
  s.shape = ScalogramShape::Of(c.n, c.setup.octaves, c.setup.voices);
  s.complex = c.Complex();
  s.re = Joined(c.re);
  if (s.complex) s.im = Joined(c.im);
  return s;
}

// The library's own scalogram of the case's signal.
Scalogram Computed(const Case& c) {
  Scalogram s;
  const ScalogramStatus status = c.Complex() ? ComputeComplexScalogram(c.sig.data(), c.n, c.setup, {}, s)
                                             : ComputeRealScalogram(c.sig.data(), c.n, c.setup, {}, s);
  EXPECT_EQ(status, ScalogramStatus::Done) << c.name;
  return s;
}

double LargestAbs(const std::vector<double>& v) {
  double largest = 0.0;
  for (double x : v) largest = std::max(largest, std::fabs(x));
  return largest;
}

std::vector<std::int16_t> AsLevels(const std::vector<double>& v) {
  std::vector<std::int16_t> out;
  for (double x : v) out.push_back(static_cast<std::int16_t>(x));
  return out;
}

TEST(ScalogramViewTest, TheDataFileHoldsEveryCase) {
  const auto cases = ReadCases();
  ASSERT_EQ(cases.size(), 8u);
  for (const Case& c : cases) {
    ASSERT_EQ(c.sig.size(), static_cast<std::size_t>(c.n) + 1) << c.name;
    ASSERT_EQ(c.re.size(), static_cast<std::size_t>(c.setup.octaves * c.setup.voices) + 1) << c.name;
    ASSERT_EQ(c.im.size(), c.Complex() ? c.re.size() : 0u) << c.name;
    ASSERT_TRUE(c.levels.size() == 4 || c.magnitude.size() == 4 || c.invert.size() == 3) << c.name;
  }
}

// The inversion cases' matrices are what the library computes, so that the
// round trips below invert the same rows numpy inverted.
TEST(ScalogramViewTest, TheFileMatricesAreTheLibrarysScalograms) {
  for (const Case& c : ReadCases()) {
    if (c.invert.empty()) continue;
    const Scalogram expected = MatricesOf(c);
    const Scalogram got = Computed(c);
    const double scale = std::max(LargestAbs(expected.re), LargestAbs(expected.im));
    ASSERT_EQ(got.re.size(), expected.re.size());
    for (std::size_t i = 0; i < expected.re.size(); ++i)
      ASSERT_NEAR(got.re[i], expected.re[i], kMatrixTolerance * scale) << c.name << " cell " << i;
    for (std::size_t i = 0; i < expected.im.size(); ++i)
      ASSERT_NEAR(got.im[i], expected.im[i], kMatrixTolerance * scale) << c.name << " im cell " << i;
  }
}

TEST(ScalogramViewTest, RealLevelsMatchNumpyInEveryMode) {
  const Case c = CaseNamed(ReadCases(), "levels-real");
  const Scalogram s = MatricesOf(c);
  for (int mode = 0; mode < 4; ++mode) {
    std::vector<std::int16_t> levels;
    double maximum = 0.0;
    GetScalGrImageArray(s, kModes[mode], levels, maximum);
    EXPECT_EQ(maximum, c.maximum) << "mode " << mode;
    EXPECT_EQ(levels, AsLevels(c.levels.at(mode))) << "mode " << mode;
  }
}

TEST(ScalogramViewTest, ComplexLevelsMatchNumpyInEveryMode) {
  const Case c = CaseNamed(ReadCases(), "levels-complex");
  const Scalogram s = MatricesOf(c);
  for (int mode = 0; mode < 4; ++mode) {
    std::vector<std::int16_t> magnitude, phase;
    double maximum = 0.0;
    GetScalGrImageArrayComp(s, kModes[mode], magnitude, phase, maximum);
    EXPECT_EQ(maximum, c.maximum) << "mode " << mode;
    EXPECT_EQ(magnitude, AsLevels(c.magnitude.at(mode))) << "mode " << mode;
    EXPECT_EQ(phase, AsLevels(c.phase.at(mode))) << "mode " << mode;
  }
}

// Two scale rows over five columns and a low-pass row of zeros. FAbsMax = 2.
// Log: c = 1 / ln(1/0.96) = 24.4966; |z| = 1 gives L = c ln(1/2) = -16.98,
// t = trunc(239.02) = 239, so 239/2 + 127 = 246 for +1 and 119 for -1; |z| =
// 2 gives t = 256 clamped to 255: 254 and 127. Linear: trunc(127/2) = 63,
// so 191 and 65; 2 gives 255 and 1. Locally row 1's reference is 1: +1 and
// -1 are then at the top (254, 127; 255, 1) and 0.5 is L = c ln(1/2) again.
TEST(ScalogramViewTest, RealLevelsByHand) {
  Scalogram s;
  s.shape = {4, 2};
  s.re = {0, 0, 0,  0,   0,  //
          0, 1, -1, 0.5, 0,  //
          2, 0, -2, 0,   1};
  std::vector<std::int16_t> levels;
  double maximum = 0.0;
  const std::int16_t z = 128;
  GetScalGrImageArray(s, MagnitudeMode::LogGlobal, levels, maximum);
  EXPECT_EQ(maximum, 2.0);
  // 0.5: L = c ln(1/4) = -33.96, t = 222: 111 + 127.
  EXPECT_EQ(levels, (std::vector<std::int16_t>{z, z, z, z, z, z, 246, 119, 238, z, 254, z, 127, z, 246}));
  GetScalGrImageArray(s, MagnitudeMode::LinearGlobal, levels, maximum);
  // 0.5: trunc(31.75) = 31.
  EXPECT_EQ(levels, (std::vector<std::int16_t>{z, z, z, z, z, z, 191, 65, 159, z, 255, z, 1, z, 191}));
  GetScalGrImageArray(s, MagnitudeMode::LogLocal, levels, maximum);
  EXPECT_EQ(maximum, 2.0);
  EXPECT_EQ(levels, (std::vector<std::int16_t>{z, z, z, z, z, z, 254, 127, 246, z, 254, z, 127, z, 246}));
  GetScalGrImageArray(s, MagnitudeMode::LinearLocal, levels, maximum);
  EXPECT_EQ(levels, (std::vector<std::int16_t>{z, z, z, z, z, z, 255, 1, 191, z, 255, z, 1, z, 191}));
}

// 0.96^256 = 2.85e-5: a cell more than 256 levels below the reference is
// shown as zero (2e-5: L = c ln(2e-5) = -265.05). Just above that bound,
// 2.95e-5 has L = -255.53 and t = trunc(0.47) = 0: 127 for +, 0 for -.
TEST(ScalogramViewTest, CellsFarBelowTheReferenceLookLikeZero) {
  Scalogram s;
  s.shape = {4, 1};
  s.re = {0, 0, 0, 0, 0, 1, 2e-5, -2e-5, 2.95e-5, -2.95e-5};
  std::vector<std::int16_t> levels;
  double maximum = 0.0;
  GetScalGrImageArray(s, MagnitudeMode::LogGlobal, levels, maximum);
  EXPECT_EQ(levels, (std::vector<std::int16_t>{128, 128, 128, 128, 128, 254, 128, 128, 127, 0}));
}

TEST(ScalogramViewTest, ZeroIsLevel128InEveryMode) {
  Scalogram s;
  s.shape = {2, 1};
  s.complex = true;
  s.re = {0, 0, 0, 0, 3, -1};
  s.im = {0, 0, 0, 0, -4, 0};
  for (MagnitudeMode mode : kModes) {
    std::vector<std::int16_t> levels, magnitude, phase;
    double maximum = 0.0;
    GetScalGrImageArray(s, mode, levels, maximum);
    for (int cell : {0, 1, 2, 3}) EXPECT_EQ(levels[static_cast<std::size_t>(cell)], 128);
    EXPECT_EQ(maximum, 3.0);
    // The complex display: a zero modulus shows nothing (255) and has the
    // phase level 128.
    GetScalGrImageArrayComp(s, mode, magnitude, phase, maximum);
    EXPECT_EQ(maximum, 5.0);
    for (int cell : {0, 1, 2, 3}) {
      EXPECT_EQ(magnitude[static_cast<std::size_t>(cell)], 255);
      EXPECT_EQ(phase[static_cast<std::size_t>(cell)], 128);
    }
  }
}

// A scalogram of zeros: FAbsMax and FAbsMaxComp are 1, every level 128.
TEST(ScalogramViewTest, AnAllZeroScalogramHasTheReferenceOne) {
  Scalogram s;
  s.shape = {3, 2};
  s.complex = true;
  s.re.assign(s.shape.Cells(), 0.0);
  s.im.assign(s.shape.Cells(), 0.0);
  EXPECT_EQ(FAbsMax(s), 1.0);
  EXPECT_EQ(FAbsMaxComp(s), 1.0);
  std::vector<std::int16_t> levels;
  double maximum = 0.0;
  GetScalGrImageArray(s, MagnitudeMode::LinearLocal, levels, maximum);
  EXPECT_EQ(levels, std::vector<std::int16_t>(s.shape.Cells(), 128));
}

// FAbsMax skips row 0, the low pass.
TEST(ScalogramViewTest, TheMaximaLookAtTheScaleRowsOnly) {
  Scalogram s;
  s.shape = {1, 1};
  s.re = {9, -9, 0.5, -0.75};
  s.im = {9, 9, 1, 0};
  EXPECT_EQ(FAbsMax(s), 0.75);
  EXPECT_EQ(FAbsMaxComp(s), std::sqrt(1.25));
}

void ExpectScaleRowsEmpty(const Scalogram& s, const std::string& name) {
  for (int r = 1; r <= s.shape.nscales; ++r) {
    for (double x : s.RealRow(r)) {
      ASSERT_EQ(x, 0.0) << name << " row " << r;
    }
    if (!s.complex) continue;
    for (double x : s.ImagRow(r)) {
      ASSERT_EQ(x, 0.0) << name << " im row " << r;
    }
  }
}

TEST(ScalogramViewTest, AThresholdAboveTheMaximumEmptiesTheScaleRows) {
  for (const char* name : {"levels-real", "levels-complex"}) {
    Scalogram s = MatricesOf(CaseNamed(ReadCases(), name));
    const double maximum = s.complex ? FAbsMaxComp(s) : FAbsMax(s);
    ThresholdScalogram(s, std::nextafter(maximum, 2 * maximum));
    ExpectScaleRowsEmpty(s, name);
  }
}

TEST(ScalogramViewTest, AThresholdClearsTheCellsBelowIt) {
  Scalogram s;
  s.shape = {2, 1};
  s.re = {0.1, -3, 2, 0, -2, 1.99};
  ThresholdScalogram(s, 2.0);
  EXPECT_EQ(s.re, (std::vector<double>{0, -3, 2, 0, -2, 0}));
  // Complex cells by modulus: (1.5, 2) has modulus 2.5 and stays at 2.5;
  // (1.5, 1.9) goes, both parts.
  Scalogram c;
  c.shape = {2, 1};
  c.complex = true;
  c.re = {1.5, 1.5, 0, 3, 0, 0};
  c.im = {2, 1.9, -2.5, 0, 0, 1};
  ThresholdScalogram(c, 2.5);
  EXPECT_EQ(c.re, (std::vector<double>{1.5, 0, 0, 3, 0, 0}));
  EXPECT_EQ(c.im, (std::vector<double>{2, 0, -2.5, 0, 0, 0}));
}

TEST(ScalogramViewTest, AThresholdOfZeroChangesNothing) {
  const Case c = CaseNamed(ReadCases(), "levels-complex");
  Scalogram s = MatricesOf(c);
  ThresholdScalogram(s, 0.0);
  EXPECT_EQ(s.re, MatricesOf(c).re);
  EXPECT_EQ(s.im, MatricesOf(c).im);
}

// Every method on the Mexican hat, the Haar wavelet (odd: the superposition
// gives its band back negated), the complex Gabor wavelet, a smooth signal,
// a constant and a Gaussian-like Gabor cosine whose low pass is empty.
TEST(ScalogramViewTest, InversionsMatchNumpy) {
  const ScalInversion methods[] = {ScalInversion::Superposition, ScalInversion::WithScaling, ScalInversion::DampedTrig};
  int checked = 0;
  for (const Case& c : ReadCases()) {
    if (c.invert.empty()) continue;
    const Scalogram s = MatricesOf(c);
    const double scale = LargestAbs(c.sig);
    for (int m = 1; m <= 3; ++m) {
      std::vector<double> result;
      ASSERT_TRUE(InvertScalogram(s, c.setup, methods[m - 1], result)) << c.name;
      const std::vector<double>& expected = c.invert.at(m);
      ASSERT_EQ(result.size(), expected.size());
      for (std::size_t i = 0; i < expected.size(); ++i)
        ASSERT_NEAR(result[i], expected[i], kInversionTolerance * scale) << c.name << " method " << m << " at " << i;
      ++checked;
    }
  }
  EXPECT_EQ(checked, 18);
}

TEST(ScalogramViewTest, ScalingFunctionsBringBackAConstantAndSuperpositionDoesNot) {
  const Case c = CaseNamed(ReadCases(), "constant");
  const Scalogram s = Computed(c);
  std::vector<double> with, without;
  ASSERT_TRUE(InvertScalogram(s, c.setup, ScalInversion::WithScaling, with));
  ASSERT_TRUE(InvertScalogram(s, c.setup, ScalInversion::Superposition, without));
  for (std::size_t i = 0; i < c.sig.size(); ++i) {
    EXPECT_NEAR(with[i], c.sig[i], kConstantTolerance * c.sig[i]) << i;
    EXPECT_NEAR(without[i], 0.0, kLostMean * c.sig[i]) << i;
  }
}

// A Gabor cosine of frequency 0.01 is nearly a Gaussian: Den is largest at
// k = 0, so C - Den[0] = 0 and the low-pass spectrum stays empty.
TEST(ScalogramViewTest, WithoutRoomAtZeroTheScalingFunctionsAddNothing) {
  const Case c = CaseNamed(ReadCases(), "no-low-pass");
  const Scalogram s = Computed(c);
  std::vector<double> with, without;
  ASSERT_TRUE(InvertScalogram(s, c.setup, ScalInversion::WithScaling, with));
  ASSERT_TRUE(InvertScalogram(s, c.setup, ScalInversion::Superposition, without));
  EXPECT_EQ(with, without);
}

// CreateScaleTransform on Den with C = 10: Den[0] = 9.995 leaves
// C - Den[0] = 0.005 below 0.001 C = 0.01, and nothing is added; Den[0] =
// 9.98 leaves 0.02, and phi[0] = phi[8] = sqrt(0.02) before Den[1] stops it.
TEST(ScalogramViewTest, CreateScaleTransformAddsNothingWhenDen0IsWithinAThousandthOfC) {
  std::vector<double> den{9.995, 9.999, 5, 1, 0, 0, 0, 0, 0};
  EXPECT_EQ(GetWaveConstant(8, den.data()), 9.999);
  std::vector<double> phi(9, 7.0);
  CreateScaleTransform(8, 10.0, phi.data(), den.data());
  EXPECT_EQ(phi, std::vector<double>(9, 0.0));
  den[0] = 9.98;
  CreateScaleTransform(8, 10.0, phi.data(), den.data());
  EXPECT_EQ(phi[0], std::sqrt(10.0 - 9.98));
  EXPECT_EQ(phi[8], phi[0]);
  for (std::size_t k = 1; k < 8; ++k) EXPECT_EQ(phi[k], 0.0) << k;
}

// GetWaveConstant reads the half spectrum 0..n/2 only.
TEST(ScalogramViewTest, TheWaveConstantIsTheLargestOfTheHalfSpectrum) {
  std::vector<double> den{1, 4, 3, 2, 2, 100, 100, 100, 100};
  EXPECT_EQ(GetWaveConstant(8, den.data()), 4.0);
}

// The damped trigonometric method's level and final factor make the round
// trip exact for a smooth zero-mean signal (sin at 5 and cos at 12 periods)
// that the rows cover, for the Mexican hat and for the complex Gabor
// wavelet.
TEST(ScalogramViewTest, DampedTrigonometricRoundTripOfASmoothSignal) {
  const std::vector<Case> cases = ReadCases();
  const Case hat = CaseNamed(cases, "smooth");
  Case gabor = hat;
  gabor.setup.a = -2.0;
  gabor.setup.b = 2.0;
  gabor.setup.octaves = 3;
  gabor.setup.voices = 2;
  gabor.setup.wavelet = ScalWavelet::GaborComplex;
  for (const Case* c : {&hat, static_cast<const Case*>(&gabor)}) {
    std::vector<double> result;
    ASSERT_TRUE(InvertScalogram(Computed(*c), c->setup, ScalInversion::DampedTrig, result));
    ASSERT_EQ(result.size(), c->sig.size());
    for (int i = 0; i < c->n; ++i)
      EXPECT_NEAR(result[static_cast<std::size_t>(i)], c->sig[static_cast<std::size_t>(i)], kExactRecovery)
          << static_cast<int>(c->setup.wavelet) << " at " << i;
  }
}

// The superpositions of the same smooth signal come back within the ripple
// of Den between voices; with scaling functions the end entry returns too.
TEST(ScalogramViewTest, SuperpositionRoundTripOfASmoothSignal) {
  const Case c = CaseNamed(ReadCases(), "smooth");
  const Scalogram s = Computed(c);
  std::vector<double> result;
  ASSERT_TRUE(InvertScalogram(s, c.setup, ScalInversion::WithScaling, result));
  // numpy's evaluation of this case is within 0.018 of the signal.
  for (std::size_t i = 0; i < c.sig.size(); ++i) EXPECT_NEAR(result[i], c.sig[i], 0.02) << i;
}

TEST(ScalogramViewTest, AMismatchedScalogramIsRefusedAndTheResultKept) {
  const Case c = CaseNamed(ReadCases(), "hat");
  std::vector<double> result{1, 2, 3};
  Scalogram s = MatricesOf(c);
  s.re.pop_back();
  EXPECT_FALSE(InvertScalogram(s, c.setup, ScalInversion::Superposition, result));
  Scalogram complex = MatricesOf(c);
  complex.complex = true;  // no imaginary matrix
  EXPECT_FALSE(InvertScalogram(complex, c.setup, ScalInversion::DampedTrig, result));
  Scalogram small;
  small.shape = {32, 1};
  small.re.assign(small.shape.Cells(), 0.0);
  EXPECT_FALSE(InvertScalogram(small, c.setup, ScalInversion::WithScaling, result));
  EXPECT_EQ(result, (std::vector<double>{1, 2, 3}));
}

}  // namespace
}  // namespace keldo::wavelet

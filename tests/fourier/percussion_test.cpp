// The percussion scalogram's arithmetic: the point count of a train, the
// train of a spectrum (by hand, and against tests/data/percussion.tsv from
// make_percussion.py), the shortest pulse spacing, and the scalogram
// settings that follow from it.

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <initializer_list>
#include <sstream>
#include <string>
#include <vector>

#include "fourier/percussion.h"

namespace keldo::fourier {
namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

// A spectrum of rows 0..nrows and columns 1..ncols, all zero.
Spectrum ZeroSpectrum(int nrows, int ncols) {
  Spectrum s;
  s.shape.nrows = nrows;
  s.shape.ncols = ncols;
  s.re.assign(s.shape.Cells(), 0.0);
  s.im.assign(s.shape.Cells(), 0.0);
  return s;
}

// Every cell of column c, row 0 too, set to (re, im).
void FillColumn(Spectrum& s, int c, double re, double im) {
  for (int r = 0; r <= s.shape.nrows; ++r) {
    s.Re(r, c) = re;
    s.Im(r, c) = im;
  }
}

std::vector<double> Train(std::initializer_list<double> samples) { return samples; }

TEST(Percussion, AssignPointsGivesThePowerOfTwoAGraphNeeds) {
  EXPECT_EQ(AssignPoints(1), 64);
  EXPECT_EQ(AssignPoints(33), 64);
  EXPECT_EQ(AssignPoints(64), 64);
  EXPECT_EQ(AssignPoints(65), 128);
  EXPECT_EQ(AssignPoints(257), 512);
  EXPECT_EQ(AssignPoints(1025), 2048);
  EXPECT_EQ(AssignPoints(65536), 65536);
  // A step of 1 over 65536 points: 65537 columns, the largest graph.
  EXPECT_EQ(AssignPoints(65537), 65536);
}

TEST(Percussion, TheTrainMarksColumnsAboveTheMeanPowerOfRowsOneUp) {
  // Four rows above row 0, ten columns, a train of 64.
  Spectrum s = ZeroSpectrum(4, 10);
  // Row 0 is left out: a huge zero-frequency row changes nothing.
  for (int c = 1; c <= 10; ++c) s.Re(0, c) = 1e6;
  // Column 1: rows 1..4 hold 2, 0, 0, 0: power 4 over 4 rows, mean 1.
  s.Re(1, 1) = 2.0;
  // Column 3: 3^2 + 4^2 = 25 in each of rows 1..4, mean 25.
  for (int r = 1; r <= 4; ++r) {
    s.Re(r, 3) = 3.0;
    s.Im(r, 3) = 4.0;
  }
  // Column 7: mean 1. Column 9: mean 0.25.
  s.Im(4, 7) = 2.0;
  s.Im(2, 9) = 1.0;
  // m = (1 + 25 + 1 + 0.25) / 64 = 0.42578125: columns 3 and 7 are above
  // it, column 9 below.
  double mean = 0.0;
  const std::vector<double> train = PercussionTrain(s, 64, &mean);
  ASSERT_EQ(train.size(), 65u);
  EXPECT_EQ(mean, 0.42578125);
  // Sample 0 is the first column's mean power, left as it is.
  EXPECT_EQ(train[0], 1.0);
  for (int i = 1; i <= 64; ++i) EXPECT_EQ(train[U(i)], i == 2 || i == 6 ? 1.0 : 0.0) << i;
}

TEST(Percussion, TheMeanIsDividedByTheTrainsPointsEvenWithFewerColumns) {
  // 40 equal columns of power 1 in a train of 64: m = 40/64, so every
  // column is above it.
  Spectrum s = ZeroSpectrum(2, 40);
  for (int c = 1; c <= 40; ++c) FillColumn(s, c, 1.0, 0.0);
  double mean = 0.0;
  const std::vector<double> train = PercussionTrain(s, 64, &mean);
  ASSERT_EQ(train.size(), 65u);
  EXPECT_EQ(mean, 40.0 / 64.0);
  EXPECT_EQ(train[0], 1.0);
  for (int i = 1; i <= 64; ++i) EXPECT_EQ(train[U(i)], i < 40 ? 1.0 : 0.0) << i;
}

TEST(Percussion, EqualColumnsFillingTheTrainGiveAnEmptyTrain) {
  // 64 columns in a train of 64, rows 1..2 of each holding 1 + i: every
  // column's mean power is 2, m is 2 exactly, and equality gives 0.
  Spectrum s = ZeroSpectrum(2, 64);
  for (int c = 1; c <= 64; ++c) FillColumn(s, c, 1.0, 1.0);
  double mean = 0.0;
  const std::vector<double> train = PercussionTrain(s, 64, &mean);
  ASSERT_EQ(train.size(), 65u);
  EXPECT_EQ(mean, 2.0);
  EXPECT_EQ(train[0], 2.0);
  for (int i = 1; i <= 64; ++i) EXPECT_EQ(train[U(i)], 0.0) << i;
  const PulseRateResult rate = PulseRate(train, 0.004);
  EXPECT_EQ(rate.pulses, 0);
  EXPECT_EQ(rate.rate, 1.0);
}

TEST(Percussion, AZeroSpectrumGivesAZeroTrain) {
  const Spectrum s = ZeroSpectrum(8, 17);
  double mean = -1.0;
  const std::vector<double> train = PercussionTrain(s, AssignPoints(17), &mean);
  EXPECT_EQ(mean, 0.0);
  EXPECT_EQ(train, std::vector<double>(65, 0.0));
}

TEST(Percussion, TheLastOfSixtyFiveThousandFiveHundredAndThirtySevenColumnsIsTheTrainsLastSample) {
  Spectrum s = ZeroSpectrum(1, 65537);
  FillColumn(s, 65537, 1.0, 0.0);
  FillColumn(s, 2, 3.0, 0.0);
  double mean = 0.0;
  const std::vector<double> train = PercussionTrain(s, 65536, &mean);
  ASSERT_EQ(train.size(), 65537u);
  // Column 65537's power is e[65536], outside the mean's sum 0..n-1.
  EXPECT_EQ(mean, 9.0 / 65536.0);
  EXPECT_EQ(train[1], 1.0);
  EXPECT_EQ(train[65536], 1.0);
  // A train too short for the columns is refused.
  EXPECT_TRUE(PercussionTrain(s, 32768).empty());
}

TEST(Percussion, TrainsMatchNumpy) {
  std::ifstream in(KELDO_TEST_DATA "/percussion.tsv");
  ASSERT_TRUE(in.good());
  std::string line;
  Spectrum s;
  int n = 0, cases = 0;
  double expectedMean = 0.0;
  std::vector<double> train;
  while (std::getline(in, line)) {
    std::istringstream words(line);
    std::string word;
    words >> word;
    if (word == "spectrum") {
      int rows = 0, cols = 0;
      words >> rows >> cols >> n;
      s = ZeroSpectrum(rows, cols);
      EXPECT_EQ(AssignPoints(cols), n);
    } else if (word == "cell") {
      int r = 0, c = 0;
      words >> r >> c >> s.Re(r, c) >> s.Im(r, c);
    } else if (word == "mean") {
      words >> expectedMean;
      double mean = 0.0;
      train = PercussionTrain(s, n, &mean);
      EXPECT_EQ(mean, expectedMean);
    } else if (word == "train") {
      std::vector<double> expected;
      for (double v = 0; words >> v;) expected.push_back(v);
      EXPECT_EQ(train, expected);
      ++cases;
    } else if (word == "pulses") {
      int count = 0, best = 0;
      words >> count >> best;
      const PulseRateResult rate = PulseRate(train, 0.008);
      EXPECT_EQ(rate.pulses, count);
      EXPECT_EQ(rate.best, best);
      EXPECT_DOUBLE_EQ(rate.rate, (best + 1) * 0.008);
    }
  }
  EXPECT_EQ(cases, 2);
}

TEST(Percussion, AnAllZeroTrainHasNoPulsesAndARateOfOne) {
  const PulseRateResult rate = PulseRate(std::vector<double>(65, 0.0), 0.004);
  EXPECT_EQ(rate.pulses, 0);
  EXPECT_EQ(rate.best, -1);
  EXPECT_EQ(rate.rate, 1.0);
  // The settings follow from that rate: T = 64 * 0.004, p = 1.
  const double duration = 64 * 0.004;
  const PercussionSettings settings = PercussionScalogramSettings(64, duration, rate.rate);
  const double s = std::sqrt(3.14159265358979) * 4 * duration;
  EXPECT_EQ(settings.width, 1 / s);
  EXPECT_EQ(settings.frequency, s);
  // u = log2(4096 / 1.8149...) = 11.136..., u - 1.5 = 9.636...: o = 10.
  EXPECT_EQ(settings.octaves, 10);
  EXPECT_EQ(settings.voices, 25);
}

TEST(Percussion, TwoPulsesThreeSamplesApartGiveARateOfFourSteps) {
  // Pulses at 1..2 and 6; the first ends at 3, the second starts 3 later.
  // After the last (ending at 7) come 6 samples, more than 3.
  const PulseRateResult rate = PulseRate(Train({0, 1, 1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0}), 0.5);
  EXPECT_EQ(rate.pulses, 2);
  EXPECT_EQ(rate.best, 3);
  EXPECT_EQ(rate.rate, 2.0);  // (3 + 1) * 0.5
  EXPECT_EQ(PulseRate(Train({0, 1, 1, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0}), 0.004).rate, 4 * 0.004);
}

TEST(Percussion, TheSamplesAfterTheLastPulseCountOnlyWhenTheTrainEndsOutsideAPulse) {
  // Gaps of 5 between pulses, 2 samples after the last: the best is 2.
  PulseRateResult rate = PulseRate(Train({1, 0, 0, 0, 0, 0, 1, 0, 0}), 1.0);
  EXPECT_EQ(rate.pulses, 2);
  EXPECT_EQ(rate.best, 2);
  EXPECT_EQ(rate.rate, 3.0);
  // Ending inside a pulse: only the gap of 5 counts.
  rate = PulseRate(Train({1, 0, 0, 0, 0, 0, 1, 1, 1}), 1.0);
  EXPECT_EQ(rate.best, 5);
  EXPECT_EQ(rate.rate, 6.0);
  // One pulse running to the end: no spacing, the rate is 1.
  rate = PulseRate(Train({0, 0, 0, 1, 1}), 0.5);
  EXPECT_EQ(rate.pulses, 1);
  EXPECT_EQ(rate.best, -1);
  EXPECT_EQ(rate.rate, 1.0);
  // One pulse with 4 samples after it.
  rate = PulseRate(Train({0, 0, 1, 0, 0, 0, 0}), 0.5);
  EXPECT_EQ(rate.best, 4);
  EXPECT_EQ(rate.rate, 2.5);
  // Leading zeros are no spacing: no pulse has ended before the first.
  rate = PulseRate(Train({0, 1, 0, 0, 0, 0, 1, 1}), 1.0);
  EXPECT_EQ(rate.best, 4);
}

TEST(Percussion, SamplesOtherThanZeroAndOneChangeNothing) {
  // Sample 0 of a train keeps a power: 2.5 is no pulse, and 0.5 inside a
  // pulse does not end it.
  const PulseRateResult rate = PulseRate({2.5, 1, 0.5, 1, 0, 0, 1, 0}, 1.0);
  EXPECT_EQ(rate.pulses, 2);
  EXPECT_EQ(rate.best, 1);  // the last pulse's end at 7, one sample to the end
  // A first column of power exactly 1 is a pulse at sample 0.
  EXPECT_EQ(PulseRate({1, 0, 0, 1, 0, 0, 0, 0}, 1.0).best, 2);
}

TEST(Percussion, SettingsMatchNumpy) {
  std::ifstream in(KELDO_TEST_DATA "/percussion.tsv");
  ASSERT_TRUE(in.good());
  std::string line;
  int cases = 0;
  while (std::getline(in, line)) {
    std::istringstream words(line);
    std::string word;
    words >> word;
    if (word != "settings") continue;
    int n = 0, octaves = 0, voices = 0;
    double duration = 0, rate = 0, width = 0, frequency = 0;
    words >> n >> duration >> rate >> width >> frequency >> octaves >> voices;
    const PercussionSettings s = PercussionScalogramSettings(n, duration, rate);
    EXPECT_EQ(s.width, width) << line;
    EXPECT_EQ(s.frequency, frequency) << line;
    EXPECT_EQ(s.octaves, octaves) << line;
    EXPECT_EQ(s.voices, voices) << line;
    ++cases;
  }
  EXPECT_EQ(cases, 5);
}

TEST(Percussion, OctavesRoundUpUnlessWholeAndAreAtLeastOne) {
  // u = 5.5 exactly (see make_percussion.py): u - 3/2 = 4, not rounded up.
  EXPECT_EQ(PercussionScalogramSettings(64, 1.0, 0.07833213358221874).octaves, 4);
  // A slightly faster rate puts u above 5.5: rounded up to 5, 51 voices.
  const PercussionSettings up = PercussionScalogramSettings(64, 1.0, 0.0784);
  EXPECT_EQ(up.octaves, 5);
  EXPECT_EQ(up.voices, 51);
  // u below 3/2, and negative u: one octave of 256 voices.
  const PercussionSettings low = PercussionScalogramSettings(64, 10000.0, 1.0);
  EXPECT_EQ(low.octaves, 1);
  EXPECT_EQ(low.voices, 256);
  // A duration of 0: n^2 / 0 is infinite, one octave.
  EXPECT_EQ(PercussionScalogramSettings(64, 0.0, 1.0).octaves, 1);
}

}  // namespace
}  // namespace keldo::fourier

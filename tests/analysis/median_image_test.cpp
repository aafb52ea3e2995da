// The median windows of images and graphs, against scipy's median filter on
// the interior and against tests/data/make_median_image.py everywhere, small
// grids worked by hand, and the error measures against numpy.

#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "analysis/image_errors.h"
#include "analysis/median_image.h"
#include "wavelet/series.h"

namespace keldo::analysis {
namespace {

constexpr double kMeasureTolerance = 1e-12;

struct Matrix {
  int rows = 0, cols = 0;
  std::vector<std::uint8_t> v;
  int At(int r, int c) const { return v[static_cast<std::size_t>(r * cols + c)]; }
};

struct MedianData {
  std::map<std::string, Matrix> matrices;
  std::map<std::string, double> measures;
};

const MedianData& Data() {
  static const MedianData data = [] {
    MedianData d;
    std::ifstream in(KELDO_TEST_DATA "/median_image.tsv");
    std::string line;
    while (std::getline(in, line)) {
      std::istringstream words(line);
      std::string name;
      words >> name;
      std::vector<double> numbers;
      double x = 0;
      while (words >> x) numbers.push_back(x);
      if (numbers.size() == 1) {
        d.measures[name] = numbers[0];
        continue;
      }
      Matrix m;
      m.rows = static_cast<int>(numbers[0]);
      m.cols = static_cast<int>(numbers[1]);
      for (std::size_t k = 2; k < numbers.size(); ++k) m.v.push_back(static_cast<std::uint8_t>(numbers[k]));
      d.matrices[name] = m;
    }
    return d;
  }();
  return data;
}

TEST(MedianImage, TheDataAreThere) {
  ASSERT_EQ(Data().matrices.size(), 4u);
  EXPECT_EQ(Data().matrices.at("input").rows, 40);
  EXPECT_EQ(Data().matrices.at("input").cols, 32);
  EXPECT_EQ(Data().measures.size(), 10u);
}

TEST(MedianImage, TheInteriorIsScipysThreeByThreeMedian) {
  const Matrix& in = Data().matrices.at("input");
  const Matrix& scipy = Data().matrices.at("scipy");
  const std::vector<std::uint8_t> out = MedianFilterBytes(in.v.data(), static_cast<std::size_t>(in.cols), in.rows,
                                                          in.cols, MedianRule::Plain);
  int compared = 0;
  for (int r = 1; r < in.rows - 1; ++r)
    for (int c = 1; c < in.cols - 1; ++c, ++compared)
      ASSERT_EQ(out[static_cast<std::size_t>(r * in.cols + c)], scipy.At(r, c)) << r << " " << c;
  EXPECT_EQ(compared, 38 * 30);
}

TEST(MedianImage, EdgesAndCornersFollowTheirWindowsAndBothRulesMatchTheReference) {
  const Matrix& in = Data().matrices.at("input");
  for (const auto& [name, rule] : {std::pair{"median", MedianRule::Plain}, std::pair{"adaptive", MedianRule::Adaptive}}) {
    const Matrix& expected = Data().matrices.at(name);
    const std::vector<std::uint8_t> out =
        MedianFilterBytes(in.v.data(), static_cast<std::size_t>(in.cols), in.rows, in.cols, rule);
    EXPECT_EQ(out, expected.v) << name;
    // The graph version gives the same before rounding wherever no corner
    // mean falls on a half.
    std::vector<float> samples(in.v.begin(), in.v.end());
    const std::vector<float> graph =
        MedianFilterSamples(samples.data(), static_cast<std::size_t>(in.cols), in.rows, in.cols, rule);
    for (std::size_t k = 0; k < graph.size(); ++k) EXPECT_NEAR(graph[k], expected.v[k], 0.5) << name << " " << k;
  }
}

// 3 rows by 4 columns, worked by hand:
//   10 20 30 40     corners: {10,20,50,60} -> 35, {30,40,70,80} -> 55,
//   50 60 70 80              {50,60,90,11} -> 55, {70,80,12,13} -> 41.5
//   90 11 12 13     edges: 20, 30 on top; 12, 12 at the bottom; 50 left,
//                   40 right; interior: 30 and 30.
TEST(MedianImage, ASmallGridWorkedByHand) {
  const std::vector<std::uint8_t> grid = {10, 20, 30, 40, 50, 60, 70, 80, 90, 11, 12, 13};
  const std::vector<std::uint8_t> expected = {35, 20, 30, 55, 50, 30, 30, 40, 55, 12, 12, 42};
  EXPECT_EQ(MedianFilterBytes(grid.data(), 4, 3, 4, MedianRule::Plain), expected);
  const std::vector<float> samples(grid.begin(), grid.end());
  const std::vector<float> graph = MedianFilterSamples(samples.data(), 4, 3, 4, MedianRule::Plain);
  EXPECT_FLOAT_EQ(graph[11], 41.5f);
  EXPECT_FLOAT_EQ(graph[0], 35.0f);
  EXPECT_FLOAT_EQ(graph[5], 30.0f);
  // A stride wider than the row reads the same grid.
  std::vector<std::uint8_t> wide(3 * 6, 255);
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 4; ++c) wide[static_cast<std::size_t>(r * 6 + c)] = grid[static_cast<std::size_t>(r * 4 + c)];
  EXPECT_EQ(MedianFilterBytes(wide.data(), 6, 3, 4, MedianRule::Plain), expected);
}

TEST(MedianImage, LoneBrightAndDarkPixelsStayUnderTheAdaptiveMedianAndGoUnderThePlainOne) {
  const int rows = 8, cols = 8;
  std::vector<std::uint8_t> grid(rows * cols, 100);
  const auto at = [cols](int r, int c) { return static_cast<std::size_t>(r * cols + c); };
  grid[at(3, 4)] = 255;  // interior salt
  grid[at(5, 2)] = 0;    // interior pepper
  grid[at(0, 0)] = 255;  // in a corner
  grid[at(7, 5)] = 255;  // on an edge
  const std::vector<std::uint8_t> plain = MedianFilterBytes(grid.data(), cols, rows, cols, MedianRule::Plain);
  EXPECT_EQ(plain, std::vector<std::uint8_t>(rows * cols, 100));
  const std::vector<std::uint8_t> adaptive = MedianFilterBytes(grid.data(), cols, rows, cols, MedianRule::Adaptive);
  EXPECT_EQ(adaptive, grid);
}

TEST(MedianImage, SmallVariationIsSmoothedByTheAdaptiveMedian) {
  // 105 is within 10 % of its median 100 and becomes it.
  std::vector<std::uint8_t> grid(5 * 5, 100);
  grid[12] = 105;
  EXPECT_EQ(MedianFilterBytes(grid.data(), 5, 5, 5, MedianRule::Adaptive), std::vector<std::uint8_t>(25, 100));
}

TEST(MedianImage, AnImageOfOneValuePassesUnchanged) {
  for (MedianRule rule : {MedianRule::Plain, MedianRule::Adaptive}) {
    const std::vector<std::uint8_t> grid(7 * 9, 77);
    EXPECT_EQ(MedianFilterBytes(grid.data(), 9, 7, 9, rule), grid);
    const std::vector<float> graph(5 * 5, -3.5f);
    EXPECT_EQ(MedianFilterSamples(graph.data(), 5, 5, 5, rule), graph);
  }
}

TEST(MedianImage, AGridOfOneLineComesBackUnchanged) {
  const std::vector<std::uint8_t> line = {1, 200, 3, 4};
  EXPECT_EQ(MedianFilterBytes(line.data(), 4, 1, 4, MedianRule::Plain), line);
  EXPECT_EQ(MedianFilterBytes(line.data(), 1, 4, 1, MedianRule::Plain), line);
  EXPECT_TRUE(MedianFilterBytes(line.data(), 4, 0, 4, MedianRule::Plain).empty());
}

TEST(MedianImage, ISORTBSortsAscendingAndCarriesTheIndex) {
  std::uint8_t values[9] = {5, 3, 9, 1, 7, 3, 255, 0, 8};
  int index[9] = {0, 1, 2, 3, 4, 5, 6, 7, 8};
  const std::uint8_t original[9] = {5, 3, 9, 1, 7, 3, 255, 0, 8};
  ISORTB(9, values, index);
  const std::uint8_t sorted[9] = {0, 1, 3, 3, 5, 7, 8, 9, 255};
  for (int k = 0; k < 9; ++k) {
    EXPECT_EQ(values[k], sorted[k]);
    EXPECT_EQ(original[index[k]], values[k]);
  }
}

TEST(MedianImage, TheAdaptiveBandOfImagesIsTenPercentAndThatOfSignalsFive) {
  EXPECT_EQ(wavelet::AdaptiveMedianValue(110.0, 100.0, 0.9, 1.1), 100.0);
  EXPECT_EQ(wavelet::AdaptiveMedianValue(90.0, 100.0, 0.9, 1.1), 100.0);
  EXPECT_EQ(wavelet::AdaptiveMedianValue(111.0, 100.0, 0.9, 1.1), 111.0);
  EXPECT_EQ(wavelet::AdaptiveMedianValue(89.0, 100.0, 0.9, 1.1), 89.0);
  EXPECT_EQ(wavelet::AdaptiveMedianValue(-105.0, -100.0, 0.9, 1.1), -100.0);
  EXPECT_EQ(wavelet::AdaptiveMedianValue(-115.0, -100.0, 0.9, 1.1), -115.0);
  EXPECT_EQ(wavelet::AdaptiveMedianValue(0.0, 0.0, 0.9, 1.1), 0.0);
  EXPECT_EQ(wavelet::AdaptiveMedianValue(104.0, 100.0), 100.0);
  EXPECT_EQ(wavelet::AdaptiveMedianValue(106.0, 100.0), 106.0);
}

TEST(ImageErrors, TheMeasuresAreNumpys) {
  const Matrix& in = Data().matrices.at("input");
  const Matrix& med = Data().matrices.at("median");
  const std::map<std::string, double>& m = Data().measures;
  const ByteImage left{in.v.data(), in.cols}, right{med.v.data(), med.cols};
  for (const auto& [prefix, rect] :
       {std::pair{std::string(""), PixelRect{0, 0, 31, 39}}, std::pair{std::string("roi_"), PixelRect{5, 8, 20, 30}}}) {
    EXPECT_EQ(ComputeSupNormError(left, right, rect), m.at(prefix + "sup"));
    const double mse = ComputeMSError(left, right, rect);
    EXPECT_NEAR(mse, m.at(prefix + "mse"), kMeasureTolerance);
    double psnr = 0, snr = 0;
    ASSERT_TRUE(PSNRVal(mse, psnr));
    EXPECT_NEAR(psnr, m.at(prefix + "psnr"), kMeasureTolerance);
    ASSERT_TRUE(SNRValue(MeanSquareOf(left, rect), mse, snr));
    EXPECT_NEAR(snr, m.at(prefix + "snr"), kMeasureTolerance);
  }
}

TEST(ImageErrors, IdenticalImagesHaveNoLogarithmAndAnEmptyRectangleMeasuresZero) {
  const std::vector<std::uint8_t> a = {1, 2, 3, 4};
  const ByteImage image{a.data(), 2};
  EXPECT_EQ(ComputeMSError(image, image, PixelRect{0, 0, 1, 1}), 0.0);
  double psnr = -7, snr = -7;
  EXPECT_FALSE(PSNRVal(0.0, psnr));
  EXPECT_EQ(psnr, -7);
  EXPECT_FALSE(SNRValue(7.5, 0.0, snr));
  EXPECT_FALSE(SNRValue(0.0, 3.0, snr));
  EXPECT_EQ(snr, -7);
  // PSNR of a mean square of 1 is 20 log10(255).
  ASSERT_TRUE(PSNRVal(1.0, psnr));
  EXPECT_NEAR(psnr, 48.130803608679102, 1e-12);
  EXPECT_EQ(ComputeSupNormError(image, image, PixelRect{}), 0);
  EXPECT_EQ(ComputeMSError(image, image, PixelRect{}), 0.0);
}

}  // namespace
}  // namespace keldo::analysis

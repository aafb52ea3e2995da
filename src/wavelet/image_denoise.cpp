#include "wavelet/image_denoise.h"

#include <algorithm>
#include <cmath>

#include "fourier/series.h"
#include "wavelet/wdr_denoise.h"

namespace keldo::wavelet {
namespace {

constexpr double kMadToSigma = 0.6745;
// The margin of the two-dimensional form's noise estimate: the last rows and
// columns of the diagonal band, where the periodic transform mixes the two
// ends of the picture.
constexpr int kSigmaMargin = 8;

// The block of `plane` from (x0, y0), w by h.
FloatImage BlockOf(ImagePlane& plane, int x0, int y0, int w, int h) {
  return {plane.v.data() + static_cast<std::size_t>(y0) * static_cast<std::size_t>(plane.width) +
              static_cast<std::size_t>(x0),
          w, h, static_cast<std::size_t>(plane.width)};
}

void ShrinkBlock(const FloatImage& band, double t, Shrinkage rule) {
  for (int y = 0; y < band.height; ++y) {
    float* row = band.Row(y);
    for (int x = 0; x < band.width; ++x) {
      const double c = row[x];
      const double m = std::fabs(c);
      if (m < t) row[x] = 0.0f;
      else if (rule == Shrinkage::Soft) row[x] = static_cast<float>(std::copysign(m - t, c));
    }
  }
}

}  // namespace

void IndexSORTSng(std::span<float> keys, std::span<int> idx) {
  const std::size_t count = std::min(keys.size(), idx.size());
  std::size_t gap = 1;
  while (gap <= count) gap = 3 * gap + 1;
  while (gap > 1) {
    gap /= 3;
    for (std::size_t i = gap; i < count; ++i) {
      const float key = keys[i];
      const int index = idx[i];
      std::size_t j = i;
      while (j >= gap && (keys[j - gap] > key || (keys[j - gap] == key && idx[j - gap] > index))) {
        keys[j] = keys[j - gap];
        idx[j] = idx[j - gap];
        j -= gap;
      }
      keys[j] = key;
      idx[j] = index;
    }
  }
}

double SureShrinkSigma(const ImagePlane& transform) {
  const int x0 = transform.width / 2, y0 = transform.height / 2;
  const std::size_t count = static_cast<std::size_t>(transform.width - x0) * static_cast<std::size_t>(transform.height - y0);
  if (transform.width < 2 || transform.height < 2 || count == 0) return 1.0;
  std::vector<float> keys;
  keys.reserve(count);
  for (int y = y0; y < transform.height; ++y)
    for (int x = x0; x < transform.width; ++x) keys.push_back(std::fabs(transform.At(x, y)));
  std::vector<int> idx(count);
  for (std::size_t k = 0; k < count; ++k) idx[k] = static_cast<int>(k);
  IndexSORTSng(keys, idx);
  const double middle = count % 2 == 1 ? keys[count / 2]
                                       : (static_cast<double>(keys[count / 2 - 1]) + keys[count / 2]) / 2.0;
  const double sigma = middle / kMadToSigma;
  return sigma > 0.0 ? sigma : 1.0;
}

SureShrinkChoice SureShrinkThreshold(std::span<const float> band, double sigma) {
  SureShrinkChoice choice;
  const std::size_t count = band.size();
  if (count == 0 || !(sigma > 0.0)) return choice;
  // Only the sorted values matter here, not where they came from.
  std::vector<float> keys(count);
  for (std::size_t k = 0; k < count; ++k) keys[k] = std::fabs(band[k]);
  std::sort(keys.begin(), keys.end());
  const double n = static_cast<double>(count);
  std::vector<double> x(count);
  double energy = 0.0;
  for (std::size_t k = 0; k < count; ++k) {
    x[k] = keys[k] / sigma;
    energy += x[k] * x[k];
  }
  choice.universal = std::sqrt(2.0 * std::log(n));
  choice.bestRisk = n;
  double risk = n - 2.0 + n * x[0] * x[0];
  if (risk < choice.bestRisk) {
    choice.bestRisk = risk;
    choice.sureT = x[0];
  }
  for (std::size_t k = 1; k < count; ++k) {
    risk += -2.0 + (n - static_cast<double>(k)) * (x[k] * x[k] - x[k - 1] * x[k - 1]);
    if (risk < choice.bestRisk) {
      choice.bestRisk = risk;
      choice.sureT = x[k];
    }
  }
  const double sparsity = energy / n - 1.0;
  choice.sparse = sparsity <= std::pow(std::log(n), 1.5) / std::sqrt(n);
  choice.threshold = std::max(0.0, (choice.sparse ? choice.universal : choice.sureT) * sigma);
  return choice;
}

SureShrinkChoice SureShrinkDenoise(const FloatImage& band, double sigma, Shrinkage rule) {
  std::vector<float> values;
  values.reserve(static_cast<std::size_t>(std::max(band.width, 0)) * static_cast<std::size_t>(std::max(band.height, 0)));
  for (int y = 0; y < band.height; ++y) values.insert(values.end(), band.Row(y), band.Row(y) + band.width);
  const SureShrinkChoice choice = SureShrinkThreshold(values, sigma);
  if (choice.threshold > 0.0) ShrinkBlock(band, choice.threshold, rule);
  return choice;
}

SureShrinkResult SureShrinkImageTransform(ImagePlane& transform, int levels, Shrinkage rule) {
  SureShrinkResult result;
  result.sigma = SureShrinkSigma(transform);
  for (int k = 1; k <= levels; ++k) {
    const int w = transform.width >> k, h = transform.height >> k;
    if (w < 1 || h < 1) break;
    result.bands.push_back(SureShrinkDenoise(BlockOf(transform, w, 0, w, h), result.sigma, rule));
    result.bands.push_back(SureShrinkDenoise(BlockOf(transform, 0, h, w, h), result.sigma, rule));
    result.bands.push_back(SureShrinkDenoise(BlockOf(transform, w, h, w, h), result.sigma, rule));
  }
  return result;
}

// ----------------------------------------------------------------- 2-D form

namespace {

template <class Rule>
void ThresholdFluctuations(int n, const MatrixView& a, int trendSide, Rule rule) {
  for (int i = 0; i < n; ++i) {
    float* row = a.Row(i);
    for (int j = i < trendSide ? trendSide : 0; j < n; ++j) row[j] = rule(row[j]);
  }
}

}  // namespace

void DenoiseTheImageTransformCS(int n, const MatrixView& a, double t, int trendSide) {
  ThresholdFluctuations(n, a, trendSide, [t](float c) { return std::fabs(c) < t ? 0.0f : c; });
}

void DenoiseTheImageTransformVS(int n, const MatrixView& a, double t, int trendSide) {
  ThresholdFluctuations(n, a, trendSide, [t](float c) {
    const double m = std::fabs(c);
    return m < t ? 0.0f : static_cast<float>(std::copysign(m - t, static_cast<double>(c)));
  });
}

bool DenoiseTheImageTransformForAverage(int n, const MatrixView& a, double t, int trendSide,
                                        const BitPlaneOptions& options) {
  if (trendSide < 1 || n < trendSide || n % trendSide != 0) return false;
  int levels = 0;
  while ((trendSide << levels) < n) ++levels;
  if ((trendSide << levels) != n || levels < 1) return false;
  ImagePlane plane(n, n);
  for (int i = 0; i < n; ++i) std::copy(a.Row(i), a.Row(i) + n, plane.v.begin() + static_cast<std::ptrdiff_t>(i) * n);
  WdrDenoiseOptions o;
  o.levels = levels;
  o.floor = t > 0.0 ? t : 1.0;
  o.depth = std::max(options.depth, 1);
  o.refine = options.descents > 0;
  o.descents = std::max(options.descents, 0);
  o.shrink = options.shrink;
  bool ok = false;
  const WdrDenoiseResult r = ArrayDeNoiseEncode(plane, o, ok);
  if (!ok) return false;
  for (int i = 0; i < n; ++i) {
    float* row = a.Row(i);
    for (int j = i < trendSide ? trendSide : 0; j < n; ++j) row[j] = r.plane.At(j, i);
  }
  return true;
}

int CycleSpinPasses(const CycleSpinSetup& s) {
  const int side = std::max(s.last - s.first + 1, 1);
  return side * side;
}

bool CycleSpinDenoise(int n, const float* source, std::size_t stride, const CycleSpinSetup& s, std::vector<float>& out,
                      const std::function<bool(int done, int passes)>& afterPass) {
  const std::size_t size = stride * static_cast<std::size_t>(n + 1);
  std::vector<float> work(size, 0.0f), sum(size, 0.0f);
  const FloatImage from{const_cast<float*>(source), n, n, stride};
  const FloatImage to{work.data(), n, n, stride};
  const MatrixView view{work.data(), stride};
  const int trendSide = n >> s.levels;
  const int passes = CycleSpinPasses(s);
  ShiftWork shiftWork;
  int done = 0;
  for (int a = s.first; a <= std::max(s.last, s.first); ++a)
    for (int b = s.first; b <= std::max(s.last, s.first); ++b) {
      ShiftImage(b, a, from, to, shiftWork);
      Transform2D(s.choice, false, n, view, s.levels);
      if (!s.bitPlane || !DenoiseTheImageTransformForAverage(n, view, s.threshold, trendSide, s.options))
        DenoiseTheImageTransformCS(n, view, s.threshold, trendSide);
      InverseTransform2D(s.choice, false, n, view, s.levels);
      ShiftImage(-b, -a, to, to, shiftWork);
      for (int i = 0; i < n; ++i) {
        const std::size_t row = static_cast<std::size_t>(i) * stride;
        for (int j = 0; j < n; ++j) sum[row + static_cast<std::size_t>(j)] += work[row + static_cast<std::size_t>(j)];
      }
      ++done;
      if (afterPass && !afterPass(done, passes)) return false;
    }
  out.assign(size, 0.0f);
  for (int i = 0; i <= n; ++i) {
    const std::size_t row = static_cast<std::size_t>(i) * stride;
    for (int j = 0; j <= n; ++j) {
      const std::size_t at = row + static_cast<std::size_t>(j);
      out[at] = i < n && j < n ? sum[at] / static_cast<float>(passes) : source[at];
    }
  }
  return true;
}

double DiagonalBandSigma(int n, const MatrixView& oneLevel) {
  const int first = n / 2;
  const int side = std::max(first - kSigmaMargin, 1);
  std::vector<double> keys;
  keys.reserve(static_cast<std::size_t>(side) * static_cast<std::size_t>(side));
  for (int i = first; i < first + side && i < n; ++i)
    for (int j = first; j < first + side && j < n; ++j) keys.push_back(std::fabs(oneLevel.Row(i)[j]));
  if (keys.empty()) return 1.0;
  std::vector<int> idx(keys.size());
  for (std::size_t k = 0; k < idx.size(); ++k) idx[k] = static_cast<int>(k);
  fourier::ISORTD(keys, idx);
  const double sigma = keys[keys.size() / 2] / kMadToSigma;
  return sigma > 0.0 ? sigma : 1.0;
}

double AutoDenoiseThreshold(double sigma, int n, int descents, bool average, bool highSnr) {
  const double ln = std::log(static_cast<double>(n));
  if (descents == 0) return sigma * std::sqrt(2.0 * ln);
  if (!average && highSnr) return sigma * std::sqrt(4.0 * ln);
  return 2.0 * sigma * std::sqrt(2.0 * ln);
}

}  // namespace keldo::wavelet

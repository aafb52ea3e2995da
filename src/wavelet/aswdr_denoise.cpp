#include "wavelet/aswdr_denoise.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "wavelet/image_shift.h"

namespace keldo::wavelet {
namespace {

// The median of |c| over a Gaussian's sigma.
constexpr double kMedianOverSigma = 0.6745;
// Above this sigma the estimate advises a tree test over two levels.
constexpr double kDeepNoiseSigma = 12.8;
constexpr std::int64_t kMostNoiseSamples = 65534;  // 2^16 - 2
constexpr int kRefinementRounds = 5;
// More halvings than take any start threshold (at least 1, below 2^256)
// down past the smallest double: a bound for a Low that is not reached.
constexpr int kMostTawsPasses = 1100;

bool PlaneFits(const ImagePlane& p, int levels) {
  if (levels < 1 || levels > 25 || p.width <= 0 || p.height <= 0) return false;
  if (p.v.size() != static_cast<std::size_t>(p.width) * static_cast<std::size_t>(p.height)) return false;
  return (p.width >> levels) << levels == p.width && (p.height >> levels) << levels == p.height &&
         (p.width >> levels) > 0 && (p.height >> levels) > 0;
}

void MoveAway(float& q, double step) { q = static_cast<float>(q < 0.0f ? q - step : q + step); }

double Magnitude(float v) { return std::fabs(static_cast<double>(v)); }

// Refines every value with |quant| >= formerThreshold: moves it t away from
// zero when it lies at least t from c.
void RefineSignificant(const ImagePlane& c, ImagePlane& quant, double formerThreshold, double t) {
  for (std::size_t i = 0; i < quant.v.size(); ++i) {
    float& q = quant.v[i];
    if (q == 0.0f || Magnitude(q) < formerThreshold) continue;
    if (std::fabs(static_cast<double>(c.v[i]) - static_cast<double>(q)) >= t) MoveAway(q, t);
  }
}

}  // namespace

std::vector<std::int32_t> ISORTSng(const std::vector<float>& values) {
  std::vector<std::int32_t> order(values.size());
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), [&](std::int32_t a, std::int32_t b) {
    return values[static_cast<std::size_t>(a)] < values[static_cast<std::size_t>(b)];
  });
  return order;
}

NoiseThreshold AutoThresholdValue(const ImagePlane& transform, int levels) {
  NoiseThreshold out;
  const int w = transform.width, h = transform.height;
  if (!PlaneFits(transform, levels) || w < 4 || h < 4) return out;
  ScanOrder order;
  CreateScanOrder(order, levels, w, h);
  const std::int64_t count = std::min<std::int64_t>(kMostNoiseSamples, std::int64_t{w / 2} * (h / 2) - 2) + 1;
  std::vector<float> magnitudes(static_cast<std::size_t>(count), 0.0f);
  std::int32_t p = order.Index(w / 2, h / 2);
  for (float& m : magnitudes) {
    const float a = std::fabs(transform.v[static_cast<std::size_t>(p)]);
    m = a > 0.0f ? a : 0.0f;
    p = order.next[static_cast<std::size_t>(p)];
  }
  const std::vector<std::int32_t> sorted = ISORTSng(magnitudes);
  const float middle = magnitudes[static_cast<std::size_t>(sorted[static_cast<std::size_t>((count - 1) / 2)])];
  out.sigma = static_cast<double>(middle) / kMedianOverSigma;
  if (out.sigma == 0.0) out.sigma = 1.0;
  out.depth = out.sigma <= kDeepNoiseSigma ? 1 : 2;
  out.threshold = out.sigma * std::sqrt(4.0 * std::log(static_cast<double>(std::max(w, h))));
  return out;
}

void ClearBelowOutsideTrend(ImagePlane& plane, int levels, double low) {
  const int tw = plane.width >> levels, th = plane.height >> levels;
  for (int y = 0; y < plane.height; ++y)
    for (int x = 0; x < plane.width; ++x) {
      if (x < tw && y < th) continue;
      float& c = plane.At(x, y);
      if (Magnitude(c) < low) c = 0.0f;
    }
}

void LastDenoiseRefinement(ImagePlane& quant, double threshold) {
  for (float& v : quant.v)
    if (v != 0.0f) MoveAway(v, threshold / 2.0);
}

TawsResult DenoiseImageTransformTAWS(const ImagePlane& transform, double t, const TawsOptions& options) {
  TawsResult out;
  if (!PlaneFits(transform, options.levels) || !(t > 0.0) || !std::isfinite(t) || !(options.descent > 0.0) ||
      !std::isfinite(options.descent))
    return out;
  const int levels = options.levels;
  const double finalT = t;
  out.low = t / options.descent;
  ImagePlane c = transform;
  ClearBelowOutsideTrend(c, levels, out.low);
  std::vector<float> weights(c.v.size(), 1.0f);
  ScanOrder order;
  CreateScanOrder(order, levels, c.width, c.height);
  ImagePlane& quant = out.quant;
  quant = ImagePlane(c.width, c.height);
  double threshold = GetThreshold(c).threshold;
  for (int pass = 1; pass <= kMostTawsPasses; ++pass) {
    const double former = threshold;
    threshold /= 2.0;
    for (std::size_t i = 0; i < quant.v.size(); ++i) {
      float& q = quant.v[i];
      if (Magnitude(q) >= former) {
        if (pass >= 2 && std::fabs(static_cast<double>(c.v[i]) - static_cast<double>(q)) >= threshold)
          MoveAway(q, threshold);
      } else if (std::fabs(static_cast<double>(weights[i]) * static_cast<double>(c.v[i])) >= threshold) {
        q = static_cast<float>(c.v[i] < 0.0f ? -threshold : threshold);
        ++out.significant;
      }
    }
    out.passes = pass;
    CreateNewDenoisingScanOrder(order, levels, options.depth, quant, threshold, finalT, weights);
    if (threshold / 2.0 < out.low) break;
  }
  for (int round = 1; round <= kRefinementRounds; ++round) {
    const double former = threshold;
    threshold /= 2.0;
    RefineSignificant(c, quant, former, threshold);
  }
  out.lastThreshold = threshold;
  if (options.shrink) {
    const int tw = quant.width >> levels, th = quant.height >> levels;
    for (int y = 0; y < quant.height; ++y)
      for (int x = 0; x < quant.width; ++x) {
        float& v = quant.At(x, y);
        if ((x < tw && y < th) || Magnitude(v) < out.low) continue;
        v = static_cast<float>(v < 0.0f ? v + out.low : v - out.low);
      }
  }
  return out;
}

ImagePlane DenoisePictureTAWS(const ImagePlane& picture, int waveletIndex, double t, const TawsOptions& options,
                              ImagePlane* quant) {
  ImagePlane plane = picture;
  TransformTheImage(plane, options.levels, waveletIndex);
  TawsResult result = DenoiseImageTransformTAWS(plane, t, options);
  if (result.quant.v.empty()) return {};
  LastDenoiseRefinement(result.quant, result.lastThreshold);
  plane = result.quant;
  InvertTheTransform(plane, options.levels, waveletIndex);
  if (quant != nullptr) *quant = std::move(result.quant);
  return plane;
}

std::vector<ShiftPair> AverageShifts(int count, bool diagonal) {
  std::vector<ShiftPair> shifts;
  for (int i = 0; i < count; ++i) {
    if (diagonal) {
      shifts.push_back({i, i});
      continue;
    }
    for (int j = 0; j < count; ++j) shifts.push_back({j, i});
  }
  return shifts;
}

bool DenoiseAveragedTAWS(const ImagePlane& picture, int waveletIndex, double t, const TawsOptions& options,
                         const std::vector<ShiftPair>& shifts, ImagePlane& mean,
                         const std::function<bool(int percent)>& progress) {
  if (shifts.empty()) return false;
  const auto image = [](ImagePlane& p) {
    return FloatImage{p.v.data(), p.width, p.height, static_cast<std::size_t>(p.width)};
  };
  ImagePlane sum(picture.width, picture.height);
  ImagePlane shifted(picture.width, picture.height);
  ImagePlane source = picture;  // the stored copy every shift starts from
  ShiftWork work;
  for (std::size_t k = 0; k < shifts.size(); ++k) {
    if (progress && !progress(static_cast<int>(100 * k / shifts.size()))) return false;
    const ShiftPair s = shifts[k];
    ShiftImage(s.x, s.y, image(source), image(shifted), work);
    ImagePlane denoised = DenoisePictureTAWS(shifted, waveletIndex, t, options);
    if (denoised.v.empty()) return false;
    ShiftImage(-s.x, -s.y, image(denoised), image(denoised), work);
    for (std::size_t i = 0; i < sum.v.size(); ++i) sum.v[i] += denoised.v[i];
  }
  const float count = static_cast<float>(shifts.size());
  for (float& v : sum.v) v /= count;
  mean = std::move(sum);
  return true;
}

}  // namespace keldo::wavelet

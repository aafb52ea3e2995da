#include "wavelet/wdr_coder.h"

#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

namespace keldo::wavelet {
namespace {

bool IsLosslessCode(int code) { return code > 100 && code < 190; }
bool IsScaledCode(int code) { return code > 100; }

bool CodeKnown(int code) {
  const int stage = code > 100 ? (code < 190 ? code - 100 : code - 200) : code;
  return stage >= 0 && stage <= 4 && (code <= 4 || (code >= 101 && code <= 104) || (code >= 201 && code <= 204));
}

// What the coder and the decoder hold alike: the significance state, the
// list of insignificant positions in walk order and the significant list,
// oldest first, and the scan order's rebuilds.
class WdrState {
 public:
  WdrState(int n, int levels, WdrScanMode mode, int code) : n_(n), levels_(levels), mode_(mode), code_(code) {
    const std::size_t total = static_cast<std::size_t>(n) * static_cast<std::size_t>(n);
    signMap.assign(total, 0);
    quantMag.assign(total, 0.0f);
    const bool tree = mode == WdrScanMode::StaticTree || mode == WdrScanMode::DynamicContext;
    ScanOrder order;
    CreateScanOrder(order, levels, n, tree ? WdrBaseOrder::Tree : WdrBaseOrder::Subband);
    list = WalkScanOrder(order);
    if (mode == WdrScanMode::DynamicContext) treeWalk_ = list;
    significant.reserve(total);
  }

  void MakeSignificant(std::int32_t p, bool negative, double threshold) {
    signMap[static_cast<std::size_t>(p)] = negative ? -1 : 1;
    quantMag[static_cast<std::size_t>(p)] = static_cast<float>(threshold);
    significant.push_back(p);
  }
  std::int32_t SigTotal() const { return static_cast<std::int32_t>(significant.size()); }

  // After `passesDone` passes, the last of threshold `threshold`.
  void AfterPass(int passesDone, double threshold) {
    if (!RebuildsAfterPass(mode_, passesDone, code_)) return;
    if (mode_ == WdrScanMode::DynamicParentChild)
      list = CreateNewScanningOrder(n_, levels_, signMap);
    else
      list = CreateNewScanningOrderSiblingsSTO(threshold, quantMag, n_, levels_, signMap, treeWalk_);
  }

  void Report(const WdrPassObserver& observer, int pass, double threshold) const {
    if (observer) observer(WdrPassState{pass, threshold, SigTotal(), signMap, quantMag, list});
  }

  std::vector<std::int16_t> signMap;
  std::vector<float> quantMag;
  std::vector<std::int32_t> list;
  std::vector<std::int32_t> significant;

 private:
  int n_, levels_;
  WdrScanMode mode_;
  int code_;
  std::vector<std::int32_t> treeWalk_;
};

enum class StopRule { Budget, Distortion, Lossless };

class BinaryMeter final : public WdrBitMeter {
 public:
  std::int64_t Symbol(char) override { return 2; }
  std::int64_t Refinement(char) override { return 1; }
};

// One encoding run over a copy of the transform.
class Encoder {
 public:
  Encoder(const ImagePlane& transform, const WdrEncodeSettings& settings, StopRule rule, int code)
      : image_(transform), settings_(settings), rule_(rule),
        state_(transform.width, settings.levels, settings.scanMode, code) {
    n_ = transform.width;
    out_.code = code;
    out_.n = n_;
    out_.levels = settings.levels;
    out_.scanMode = settings.scanMode;
    meter_ = settings.meter != nullptr ? settings.meter : &binary_;
    if (IsScaledCode(code)) ScalingOfWT(image_, settings.levels, 1);
  }

  WdrStreams Run(std::int64_t budget, double targetPsnr) {
    budget_ = budget;
    target_ = out_.code >= 100 ? targetPsnr - 10.0 * std::log10(4.0) : targetPsnr;
    const StartThreshold start = GetThreshold(image_);
    out_.exponent = start.exponent;
    double threshold = start.threshold;
    if (rule_ != StopRule::Distortion && n_ >= kWdrSmallSide) out_.bitsUsed = settings_.startBits;
    if (rule_ == StopRule::Distortion) {
      distortion_ = ComputeDistortion(image_);
      out_.psnr = FPSNR(distortion_);
    }
    std::int32_t prevSigTotal = 0;
    int pass = 0;
    for (;;) {
      threshold /= 2.0;
      SignificancePass(threshold);
      out_.bitsUsed += kWdrPassBits;
      const std::int32_t sigTotal = state_.SigTotal();
      out_.passCounts.push_back(pass == 0 ? sigTotal : sigTotal - out_.passCounts[static_cast<std::size_t>(pass - 1)]);
      if (!finished_) RefinementPass(threshold, prevSigTotal);
      state_.Report(settings_.observer, pass, threshold);
      out_.passes = pass;
      if (finished_) break;
      ++pass;
      if (pass > kWdrMaxPasses) break;
      if (rule_ == StopRule::Lossless && threshold < 2.0) break;
      state_.AfterPass(pass, threshold);
      prevSigTotal = sigTotal;
    }
    out_.symbols.push_back('+');  // the stop mark
    out_.sigTotal = state_.SigTotal();
    return std::move(out_);
  }

 private:
  float Value(std::int32_t p) const { return image_.v[static_cast<std::size_t>(p)]; }

  bool OverBudget() const { return rule_ == StopRule::Budget && out_.bitsUsed + meter_->Deferred() > budget_; }

  void Emit(char symbol) {
    out_.symbols.push_back(symbol);
    out_.bitsUsed += meter_->Symbol(symbol);
  }

  // The distortion after a magnitude of p changes from `before` to `after`.
  void Track(std::int32_t p, double before, double after) {
    if (rule_ != StopRule::Distortion) return;
    const double c = Value(p), s = state_.signMap[static_cast<std::size_t>(p)], n = n_;
    const double was = (c - s * before) / n, now = (c - s * after) / n;
    distortion_ = distortion_ - was * was + now * now;
    out_.psnr = FPSNR(distortion_);
    if (out_.psnr >= target_) finished_ = true;
  }

  // Whether the region's rule holds from this step on.
  bool InRegionMode() {
    if (!regionMode_ && settings_.region.mask != nullptr &&
        out_.bitsUsed + meter_->Deferred() >= settings_.region.sharedBudget)
      regionMode_ = true;
    return regionMode_;
  }

  void SignificancePass(double threshold) {
    std::vector<std::int32_t>& list = state_.list;
    const std::size_t remaining = list.size();
    std::vector<std::int32_t> kept;
    kept.reserve(remaining);
    std::size_t lastHit = 0, i = 0;
    while (i < remaining && !finished_) {
      const std::int32_t p = list[i++];
      const float c = Value(p);
      const double weight = InRegionMode() ? (*settings_.region.mask)[static_cast<std::size_t>(p)] : 1.0;
      if (std::fabs(weight * c) < threshold) {
        kept.push_back(p);
      } else {
        Emit(c < 0.0f ? '-' : '+');
        for (std::size_t run = i - lastHit; run >= 2; run /= 2) Emit(run % 2 == 1 ? '1' : '0');
        lastHit = i;
        state_.MakeSignificant(p, c < 0.0f, threshold);
        Track(p, 0.0, threshold);
      }
      if (OverBudget()) finished_ = true;
    }
    kept.insert(kept.end(), list.begin() + static_cast<std::ptrdiff_t>(i), list.end());
    list.swap(kept);
  }

  void RefinementPass(double threshold, std::int32_t prevSigTotal) {
    for (std::int32_t j = 0; j < prevSigTotal && !finished_; ++j) {
      const std::int32_t p = state_.significant[static_cast<std::size_t>(j)];
      float& q = state_.quantMag[static_cast<std::size_t>(p)];
      const double before = q, raised = threshold + before;
      const bool one = std::fabs(static_cast<double>(Value(p))) >= raised;
      out_.refinement.push_back(one ? '1' : '0');
      out_.bitsUsed += meter_->Refinement(one ? '1' : '0');
      if (one) {
        q = static_cast<float>(raised);
        Track(p, before, raised);
      }
      if (OverBudget()) finished_ = true;
    }
  }

  ImagePlane image_;
  const WdrEncodeSettings& settings_;
  StopRule rule_;
  WdrState state_;
  int n_ = 0;
  BinaryMeter binary_;
  WdrBitMeter* meter_ = nullptr;
  WdrStreams out_;
  std::int64_t budget_ = 0;
  double target_ = 0.0, distortion_ = 0.0;
  bool finished_ = false;
  bool regionMode_ = false;
};

WdrStatus CheckEncode(const ImagePlane& transform, const WdrEncodeSettings& settings, int code) {
  if (transform.width != transform.height || !WdrPlaneUsable(transform.width, settings.levels) ||
      transform.v.size() != static_cast<std::size_t>(transform.width) * static_cast<std::size_t>(transform.height))
    return WdrStatus::BadPlane;
  if (settings.region.mask != nullptr && settings.region.mask->size() != transform.v.size()) return WdrStatus::BadPlane;
  const int mode = static_cast<int>(settings.scanMode);
  if (mode < 1 || mode > 4) return WdrStatus::BadScanMode;
  if (!CodeKnown(code)) return WdrStatus::BadCode;
  return WdrStatus::Ok;
}

WdrStreams Failed(WdrStatus status) {
  WdrStreams out;
  out.status = status;
  return out;
}

// The decoder's walk of one pass's new significant coefficients; false on
// streams that do not fit the list.
bool ReadNewSignificant(WdrState& state, const std::string& symbols, std::size_t& cursor, std::int64_t total,
                        double threshold) {
  std::vector<std::int32_t>& list = state.list;
  std::vector<std::int32_t> kept;
  kept.reserve(list.size());
  std::size_t at = 0;
  while (state.SigTotal() < total) {
    if (cursor >= symbols.size() || (symbols[cursor] != '+' && symbols[cursor] != '-')) return false;
    const bool negative = symbols[cursor++] == '-';
    const std::size_t first = cursor;
    while (cursor < symbols.size() && (symbols[cursor] == '0' || symbols[cursor] == '1')) ++cursor;
    const std::int64_t skip =
        cursor == first ? 0 : NumberOfSteps(std::string_view(symbols).substr(first, cursor - first));
    if (skip < 0 || skip >= static_cast<std::int64_t>(list.size() - at)) return false;
    kept.insert(kept.end(), list.begin() + static_cast<std::ptrdiff_t>(at),
                list.begin() + static_cast<std::ptrdiff_t>(at) + skip);
    at += static_cast<std::size_t>(skip);
    state.MakeSignificant(list[at++], negative, threshold);
  }
  kept.insert(kept.end(), list.begin() + static_cast<std::ptrdiff_t>(at), list.end());
  list.swap(kept);
  return true;
}

WdrStatus CheckStreams(const WdrStreams& s) {
  if (!WdrPlaneUsable(s.n, s.levels)) return WdrStatus::BadPlane;
  const int mode = static_cast<int>(s.scanMode);
  if (mode < 1 || mode > 4) return WdrStatus::BadScanMode;
  if (!CodeKnown(s.code)) return WdrStatus::BadCode;
  if (s.passes < 0 || s.passes > kWdrMaxPasses + 1 || s.exponent < 0 || s.exponent > 255 ||
      s.passCounts.size() < static_cast<std::size_t>(s.passes) + 1)
    return WdrStatus::BadStreams;
  return WdrStatus::Ok;
}

// TheLastRefinement over the significant list: the first `refined` got
// their bit in the last pass ("R", + T/2), the others not ("U", + T).
// The lossless member takes the amounts of T/2 and adds only those of at
// least 0.9.
void TheLastRefinement(WdrState& state, std::size_t refined, double threshold, bool lossless) {
  const double t = lossless ? threshold / 2.0 : threshold;
  for (std::size_t j = 0; j < state.significant.size(); ++j) {
    const double amount = j < refined ? t / 2.0 : t;
    if (lossless && amount < 0.9) continue;
    float& q = state.quantMag[static_cast<std::size_t>(state.significant[j])];
    q = static_cast<float>(q + amount);
  }
}

}  // namespace

std::int64_t BitBudgetOfRate(int n, double bpp) {
  const double bits = std::nearbyint(static_cast<double>(n) * static_cast<double>(n) * bpp);
  if (!(bits >= 0.0) || bits > 9.0e18) return 0;
  return static_cast<std::int64_t>(bits);
}

WdrStreams ArrayEncodeToBitBudget(const ImagePlane& transform, const WdrEncodeSettings& settings, std::int64_t budget) {
  const WdrStatus status = CheckEncode(transform, settings, settings.code);
  if (status != WdrStatus::Ok) return Failed(status);
  if (IsLosslessCode(settings.code)) return Failed(WdrStatus::BadCode);
  return Encoder(transform, settings, StopRule::Budget, settings.code).Run(budget, 0.0);
}

WdrStreams ArrayEncodeToMatchDistortion(const ImagePlane& transform, const WdrEncodeSettings& settings,
                                        double targetPsnr) {
  const WdrStatus status = CheckEncode(transform, settings, settings.code);
  if (status != WdrStatus::Ok) return Failed(status);
  if (IsLosslessCode(settings.code)) return Failed(WdrStatus::BadCode);
  return Encoder(transform, settings, StopRule::Distortion, settings.code).Run(0, targetPsnr);
}

WdrStreams ArrayEncodeToBitBudgetLossless(const ImagePlane& transform, const WdrEncodeSettings& settings) {
  const int code = settings.code == 103 || settings.code == 104 ? settings.code : 101;
  const WdrStatus status = CheckEncode(transform, settings, code);
  if (status != WdrStatus::Ok) return Failed(status);
  return Encoder(transform, settings, StopRule::Lossless, code).Run(0, 0.0);
}

double ComputeDistortion(const ImagePlane& transform) {
  const double n = transform.width;
  double sum = 0.0;
  for (float v : transform.v) sum += (v / n) * (v / n);
  return sum;
}

double FPSNR(double meanSquare) {
  if (meanSquare <= 0.0) return std::numeric_limits<double>::infinity();
  return 10.0 * std::log10(255.0 * 255.0 / meanSquare);
}

std::int64_t NumberOfSteps(std::string_view digits) {
  if (digits.empty()) return 1;
  if (digits.size() > 40) return -1;
  std::int64_t value = 0;
  for (std::size_t i = 0; i < digits.size(); ++i)
    if (digits[i] == '1') value += std::int64_t{1} << i;
  return value + (std::int64_t{1} << digits.size()) - 1;
}

WdrDecoded Decode(const WdrStreams& streams, WdrReconstruction reconstruction, const WdrPassObserver& observer) {
  WdrDecoded out;
  out.status = CheckStreams(streams);
  if (out.status != WdrStatus::Ok) return out;
  const int n = streams.n;
  const bool lossless = IsLosslessCode(streams.code);
  WdrState state(n, streams.levels, streams.scanMode, streams.code);
  double threshold = std::ldexp(1.0, streams.exponent);
  std::size_t cursor = 0, bit = 0, refined = 0;
  std::int32_t prevSigTotal = 0;
  for (int pass = 0; pass <= streams.passes; ++pass) {
    threshold /= 2.0;
    const std::size_t k = static_cast<std::size_t>(pass);
    const std::int64_t total = pass == 0 ? streams.passCounts[0]
                                         : std::int64_t{streams.passCounts[k - 1]} + streams.passCounts[k];
    if (total > static_cast<std::int64_t>(state.significant.size()) + static_cast<std::int64_t>(state.list.size()) ||
        (total > state.SigTotal() && !ReadNewSignificant(state, streams.symbols, cursor, total, threshold))) {
      out.status = WdrStatus::BadStreams;
      return out;
    }
    bool stopped = false;
    refined = 0;
    for (std::int32_t j = 0; j < prevSigTotal; ++j, ++refined) {
      if (bit >= streams.refinement.size()) {
        stopped = true;
        break;
      }
      const char b = streams.refinement[bit++];
      if (b == '1') {
        float& q = state.quantMag[static_cast<std::size_t>(state.significant[static_cast<std::size_t>(j)])];
        q = static_cast<float>(q + threshold);
      }
    }
    state.Report(observer, pass, threshold);
    out.passesRun = pass + 1;
    if (stopped || (lossless && threshold < 2.0)) break;
    if (pass < streams.passes) state.AfterPass(pass + 1, threshold);
    prevSigTotal = state.SigTotal();
  }
  if (reconstruction == WdrReconstruction::LastRefinement) TheLastRefinement(state, refined, threshold, lossless);
  out.plane = ImagePlane(n, n);
  for (std::size_t p = 0; p < out.plane.v.size(); ++p)
    out.plane.v[p] = static_cast<float>(state.signMap[p]) * state.quantMag[p];
  if (IsScaledCode(streams.code)) ScalingOfWT(out.plane, streams.levels, -1);
  return out;
}

}  // namespace keldo::wavelet

#include "wavelet/aswdr_denoise_coder.h"

#include <cmath>
#include <string>

#include "common/number_text.h"
#include "wavelet/aswdr_channels.h"
#include "wavelet/aswdr_denoise.h"

namespace keldo::wavelet {
namespace {

using aswdr_detail::ArithmeticReceiver;
using aswdr_detail::ArithmeticSender;
using aswdr_detail::BinaryReceiver;
using aswdr_detail::BinarySender;

constexpr int kNineSevenPasses = 32;
constexpr std::uint8_t kNoPass = 255;
constexpr std::int64_t kPreambleBits = 8 * static_cast<std::int64_t>(kDenoisePreambleSize);

// The three bytes after the head.
struct Preamble {
  int depth = 1;
  int denoiseFrom = kNoPass;  // the first pass after which the rebuild weighs
  int lastPass = 0;           // 0: none
};

// The passes as both sides hold them; the order is the linked one, walked
// from (0, 0) over every position.
struct DenoisePasses {
  ImagePlane quant;
  ScanOrder order;
  std::vector<float> weights;
  int levels = 1;
  Preamble preamble;
  double threshold = 1.0;
  int pass = 0;
  std::int64_t significant = 0;
  std::int64_t formerSignificant = 0;
  bool stoppedByLoopTest = false;
  std::vector<std::string> report;

  DenoisePasses(int width, int height, int levelCount, int exponent, const Preamble& p)
      : quant(width, height), weights(quant.v.size(), 1.0f), levels(levelCount), preamble(p),
        threshold(std::ldexp(1.0, exponent)) {
    CreateScanOrder(order, levels, width, height);
  }

  // Calls visit(position) for every position in the current order.
  template <typename Visit>
  void Walk(Visit visit) const {
    std::int32_t p = 0;
    for (std::size_t i = 0; i < quant.v.size(); ++i) {
      visit(p);
      p = order.next[static_cast<std::size_t>(p)];
    }
  }

  // The refinement walk: the values with |quant| >= the former threshold in
  // walk order, as many as were significant before the pass; `bitFor(p, q)`
  // sends or reads the bit and says whether the value moves. False when the
  // budget stopped it.
  template <typename Channel, typename BitFor>
  bool Refine(double formerThreshold, std::int32_t budget, Channel& ch, BitFor bitFor) {
    std::int64_t seen = 0;
    std::int32_t p = 0;
    for (std::size_t i = 0; i < quant.v.size() && seen < formerSignificant; ++i) {
      float& q = quant.v[static_cast<std::size_t>(p)];
      if (q != 0.0f && std::fabs(static_cast<double>(q)) >= formerThreshold) {
        ++seen;
        if (bitFor(p, q)) q = static_cast<float>(q < 0.0f ? q - threshold : q + threshold);
        if (ch.Used() >= budget) return false;
      }
      p = order.next[static_cast<std::size_t>(p)];
    }
    return true;
  }

  // The end of a pass; true when the passes go on.
  bool End(int waveletIndex, const char* verb, std::int64_t bitsUsed) {
    formerSignificant = significant;
    const double pixels = static_cast<double>(quant.width) * static_cast<double>(quant.height);
    report.push_back("Number of significant values " + std::string(verb) + ":  " + std::to_string(significant) +
                     ".  Threshold = " + PlainNumber(threshold));
    report.push_back("Bit rate:  " + PlainNumber(static_cast<double>(bitsUsed) / pixels));
    if (pass >= preamble.denoiseFrom)
      CreateDenoisingScanOrder(order, levels, preamble.depth, quant, threshold, weights);
    else
      CreateNewScanOrder(order, levels, quant, threshold);
    stoppedByLoopTest = pass >= kMaxAswdrPasses || (waveletIndex == 1 ? pass >= kNineSevenPasses : threshold == 1.0);
    if (stoppedByLoopTest) return false;
    return preamble.lastPass == 0 || pass < preamble.lastPass;
  }

  void Turn(std::int32_t p, bool negative) {
    quant.v[static_cast<std::size_t>(p)] = static_cast<float>(negative ? -threshold : threshold);
    ++significant;
  }
  bool Passed(std::int32_t p) const {
    const auto i = static_cast<std::size_t>(p);
    return quant.v[i] != 0.0f || weights[i] == 0.0f;
  }
};

// Region mode, as in the plain coders: once the bits used reach the shared
// budget, a position outside the region still at zero counts in the runs as
// one below the threshold. Tested at the start of each significance walk
// and after each value that turns significant.
struct RegionState {
  const AswdrRegion* region = nullptr;
  bool on = false;
  template <typename Sender>
  void Check(const Sender& ch) {
    if (region != nullptr && !on && ch.Used() >= region->sharedBudget) on = true;
  }
  bool HoldsBack(std::int32_t p) const { return on && region->mask[static_cast<std::size_t>(p)] == 0; }
};

template <typename Sender>
void EncodePasses(const ImagePlane& c, int waveletIndex, std::int32_t budget, Sender& ch, DenoisePasses& s,
                  RegionState& region) {
  for (s.pass = 1;; ++s.pass) {
    const double former = s.threshold;
    s.threshold /= 2.0;
    const double t = s.threshold;
    std::int64_t run = 1;
    bool onBudget = true;
    std::int32_t p = 0;
    region.Check(ch);
    for (std::size_t i = 0; i < c.v.size() && onBudget; ++i, p = s.order.next[static_cast<std::size_t>(p)]) {
      if (s.Passed(p)) continue;
      if (region.HoldsBack(p)) {
        ++run;
        continue;
      }
      const float value = c.v[static_cast<std::size_t>(p)];
      if (std::fabs(static_cast<double>(s.weights[static_cast<std::size_t>(p)]) * static_cast<double>(value)) < t) {
        ++run;
        continue;
      }
      ch.Run(run);
      run = 1;
      const bool negative = value < 0.0f;
      s.Turn(p, negative);
      ch.Sign(negative);
      onBudget = ch.Used() < budget;
      region.Check(ch);
    }
    if (!onBudget) return;
    ch.Run(run + 1);
    if (ch.Used() >= budget) return;
    if (s.pass >= 2 && !s.Refine(former, budget, ch, [&](std::int32_t at, float q) {
          const bool moved = std::fabs(static_cast<double>(c.v[static_cast<std::size_t>(at)]) - static_cast<double>(q)) >= t;
          ch.Refine(moved);
          return moved;
        }))
      return;
    if (!s.End(waveletIndex, "encoded", ch.Used())) return;
  }
}

template <typename Receiver>
void DecodePasses(int waveletIndex, std::int32_t budget, Receiver& ch, DenoisePasses& s) {
  for (s.pass = 1;; ++s.pass) {
    const double former = s.threshold;
    s.threshold /= 2.0;
    std::optional<std::int64_t> target = ch.Run();
    if (!target) return;
    std::int64_t counter = 1;
    std::int32_t p = 0;
    for (std::size_t i = 0; i < s.quant.v.size(); ++i, p = s.order.next[static_cast<std::size_t>(p)]) {
      if (s.Passed(p)) continue;
      if (counter != *target) {
        ++counter;
        continue;
      }
      s.Turn(p, ch.Sign());
      counter = 1;
      if (ch.Used() >= budget) return;
      target = ch.Run();
      if (!target) return;
    }
    if (ch.Used() >= budget) return;
    if (s.pass >= 2 && !s.Refine(former, budget, ch, [&](std::int32_t, float) { return ch.Refine(); })) return;
    if (!s.End(waveletIndex, "decoded", ch.Used())) return;
  }
}

// The first pass k >= 1 whose threshold 2^(exponent - k) is at most the
// noise threshold, and the first whose half is below Low; kNoPass when past
// every pass a head allows.
Preamble PreambleFor(int exponent, const DenoiseCoding& coding) {
  Preamble p;
  p.depth = coding.depth;
  const double low = coding.noiseThreshold / coding.descent;
  int lastPass = kNoPass;
  for (int k = 1; k < kNoPass; ++k) {
    const double t = std::ldexp(1.0, exponent - k);
    if (p.denoiseFrom == kNoPass && t <= coding.noiseThreshold) p.denoiseFrom = k;
    if (t / 2.0 < low) {
      lastPass = k;
      break;
    }
  }
  p.lastPass = coding.minBitRate ? lastPass : 0;
  return p;
}

template <typename Sender>
AswdrEncoded RunEncoder(const ImagePlane& transform, AswdrHead head, const DenoiseCoding& coding,
                        const AswdrRegion* region, Sender ch) {
  ImagePlane c = transform;
  ClearBelowOutsideTrend(c, head.levels, coding.noiseThreshold / coding.descent);
  head.exponent = GetThreshold(c).exponent;
  const Preamble preamble = PreambleFor(head.exponent, coding);
  DenoisePasses s(c.width, c.height, head.levels, head.exponent, preamble);
  RegionState regionState{region};
  EncodePasses(c, head.waveletIndex, head.budget, ch, s, regionState);
  AswdrEncoded out;
  out.bitsUsed = ch.Used();
  out.file = WriteAswdrHead(head);
  out.file.push_back(static_cast<std::uint8_t>(preamble.depth));
  out.file.push_back(static_cast<std::uint8_t>(preamble.denoiseFrom));
  out.file.push_back(static_cast<std::uint8_t>(preamble.lastPass));
  const std::vector<std::uint8_t> stream = ch.Finish();
  out.file.insert(out.file.end(), stream.begin(), stream.end());
  out.quant = std::move(s.quant);
  out.report = std::move(s.report);
  out.passes = s.pass;
  out.stoppedByLoopTest = s.stoppedByLoopTest;
  return out;
}

template <typename Receiver>
void RunDecoder(AswdrDecoded& out, const Preamble& preamble, std::int32_t budget, Receiver ch) {
  const AswdrHead& h = out.head;
  DenoisePasses s(h.width, h.height, h.levels, h.exponent, preamble);
  s.report = std::move(out.report);
  DecodePasses(h.waveletIndex, budget, ch, s);
  out.bitsUsed = ch.Used();
  out.passes = s.pass;
  out.quantBeforeRefinement = s.quant;
  out.lastRefinement = true;
  LastDenoiseRefinement(s.quant, s.threshold);
  out.quant = std::move(s.quant);
  out.report = std::move(s.report);
}

}  // namespace

AswdrEncoded CompressDenoiseAswdr(const ImagePlane& transform, AswdrHead head, AswdrCoder coder,
                                  const DenoiseCoding& coding, const AswdrRegion* region) {
  head.width = transform.width;
  head.height = transform.height;
  const bool settingsOk = coding.depth >= 1 && coding.depth <= kMaxDenoiseDepth && coding.noiseThreshold > 0.0 &&
                          std::isfinite(coding.noiseThreshold) && coding.descent > 0.0 && std::isfinite(coding.descent);
  // The head must read back: ReadAswdrHead checks the same.
  std::vector<std::uint8_t> probe = WriteAswdrHead(head);
  const std::size_t size = static_cast<std::size_t>(transform.width) * static_cast<std::size_t>(transform.height);
  if (!settingsOk || !ReadAswdrHead(probe) || transform.v.size() != size ||
      (region != nullptr && region->mask.size() != size))
    return {};
  if (coder == AswdrCoder::Binary)
    return RunEncoder(transform, head, coding, region, BinarySender(SetBitTotal() + kPreambleBits));
  return RunEncoder(transform, head, coding, region, ArithmeticSender(SetBitTotal_ASWDR() + kPreambleBits));
}

std::optional<AswdrDecoded> DecompressDenoiseAswdr(const std::vector<std::uint8_t>& file, double bpp,
                                                   AswdrCoder coder) {
  const std::optional<AswdrHead> head = ReadAswdrHead(file);
  if (!head || file.size() < kAswdrHeadSize + kDenoisePreambleSize ||
      static_cast<std::int64_t>(head->width) * head->height > kMaxAswdrPixels)
    return std::nullopt;
  Preamble preamble;
  preamble.depth = file[kAswdrHeadSize];
  preamble.denoiseFrom = file[kAswdrHeadSize + 1];
  preamble.lastPass = file[kAswdrHeadSize + 2];
  if (preamble.depth < 1 || preamble.depth > kMaxDenoiseDepth || preamble.denoiseFrom < 1) return std::nullopt;
  AswdrDecoded out;
  out.head = *head;
  std::int32_t budget = BitBudgetOf(head->width, head->height, bpp);
  if (head->budget < budget) {
    budget = head->budget;
    out.rateTooLarge = true;
    out.report.push_back("Bpp value too large, decompressing at largest possible rate.");
  }
  const std::size_t stream = kAswdrHeadSize + kDenoisePreambleSize;
  if (coder == AswdrCoder::Binary)
    RunDecoder(out, preamble, budget, BinaryReceiver(file, stream, SetBitTotal() + kPreambleBits));
  else
    RunDecoder(out, preamble, budget, ArithmeticReceiver(file, stream, SetBitTotal_ASWDR() + kPreambleBits));
  return out;
}

}  // namespace keldo::wavelet

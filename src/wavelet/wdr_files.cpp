#include "wavelet/wdr_files.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <utility>

#include "wavelet/workshop_entropy.h"

namespace keldo::wavelet {
namespace {

// The prefix stage's charges: the codeword lengths of "+"/"-", "1" and "0".
constexpr std::int64_t kHuffSignBits = 3;
constexpr std::int64_t kHuffOneBits = 2;
constexpr std::int64_t kHuffZeroBits = 1;
constexpr std::int64_t kRefinementBits = 1;

enum class Entropy { Binary, Prefix, Arith0Order, ArithMixed };
enum class Rule { Budget, Psnr, Lossless };

class PrefixMeter final : public WdrBitMeter {
 public:
  std::int64_t Symbol(char symbol) override {
    if (symbol == '+' || symbol == '-') return kHuffSignBits;
    return symbol == '1' ? kHuffOneBits : kHuffZeroBits;
  }
  std::int64_t Refinement(char) override { return kRefinementBits; }
};

// The two arithmetic streams coded as the coder goes: each symbol charges
// the bits its coding emitted, and the budget test adds what both streams
// still defer.
class ArithMeter final : public WdrBitMeter {
 public:
  explicit ArithMeter(WorkshopArithStream significance)
      : significance_(significance), refinement_(WorkshopArithStream::Refinement) {}

  std::int64_t Symbol(char symbol) override {
    return Code(significance_, CharValue(std::string(1, symbol), 0, WorkshopAlphabet::Significance));
  }
  std::int64_t Refinement(char bit) override { return Code(refinement_, bit == '1' ? 1 : 0); }
  std::int64_t Deferred() const override { return significance_.Pending() + refinement_.Pending(); }

  // Codes the stop mark (uncharged) and closes both streams.
  void Close(char stopMark) {
    significance_.EncodeSymbol(CharValue(std::string(1, stopMark), 0, WorkshopAlphabet::Significance));
    significance_.DoneEncoding();
    refinement_.DoneEncoding();
  }
  std::vector<std::uint8_t> SignificanceBytes() const { return significance_.Bytes(); }
  std::vector<std::uint8_t> RefinementBytes() const { return refinement_.Bytes(); }

 private:
  static std::int64_t Code(WorkshopArithEncoder& encoder, int value) {
    const std::int64_t before = encoder.BitsEmitted();
    encoder.EncodeSymbol(value);
    return encoder.BitsEmitted() - before;
  }
  WorkshopArithEncoder significance_;
  WorkshopArithEncoder refinement_;
};

int CodeOf(Entropy entropy, Rule rule, bool integerCode) {
  static constexpr int kStage[] = {1, 2, 3, 4};
  const int stage = kStage[static_cast<int>(entropy)];
  if (rule == Rule::Lossless) return stage + 100;
  if (entropy == Entropy::Prefix) return stage;  // the prefix stage has no integer code
  return integerCode ? stage + 200 : stage;
}

std::int64_t StartBitsOf(Entropy entropy, const WdrFileHead& head) {
  if (entropy != Entropy::Binary) return kWdrEntropyStartBits;
  return head.wc2 ? kWdrTwoDimStartBits : kWdrWorkshopStartBits;
}

WicFile HeadOf(const WdrStreams& streams, const WdrFileHead& head) {
  WicFile f;
  f.code = streams.code;
  f.wc2 = head.wc2;
  f.waveletByte = head.waveletByte;
  f.roiValue = head.roiValue;
  f.count = static_cast<std::int32_t>(streams.symbols.size());
  f.n = streams.n;
  f.scanMode = static_cast<int>(streams.scanMode);
  f.levels = streams.levels;
  f.exponent = streams.exponent;
  f.passes = streams.passes;
  f.passCounts = streams.passCounts;
  return f;
}

WdrCodedFile RunMember(const ImagePlane& transform, const WdrMemberSettings& member, Entropy entropy, Rule rule,
                       std::int64_t budget, double targetPsnr) {
  WdrEncodeSettings settings;
  settings.region = member.region;
  settings.levels = member.levels;
  settings.scanMode = member.scanMode;
  settings.code = CodeOf(entropy, rule, member.integerCode);
  settings.startBits = StartBitsOf(entropy, member.head);
  PrefixMeter prefix;
  ArithMeter arith(entropy == Entropy::ArithMixed ? WorkshopArithStream::SignificanceMixedOrders
                                                  : WorkshopArithStream::Significance0Order);
  if (entropy == Entropy::Prefix) settings.meter = &prefix;
  if (entropy == Entropy::Arith0Order || entropy == Entropy::ArithMixed) settings.meter = &arith;

  WdrCodedFile out;
  switch (rule) {
    case Rule::Budget: out.streams = ArrayEncodeToBitBudget(transform, settings, budget); break;
    case Rule::Psnr: out.streams = ArrayEncodeToMatchDistortion(transform, settings, targetPsnr); break;
    case Rule::Lossless: out.streams = ArrayEncodeToBitBudgetLossless(transform, settings); break;
  }
  out.status = out.streams.status;
  if (out.status != WdrStatus::Ok) return out;
  switch (entropy) {
    case Entropy::Binary: out.file = SaveCodedData2Array(out.streams, member.head); break;
    case Entropy::Prefix: out.file = SaveHuffCodedData2Array(out.streams, member.head); break;
    case Entropy::Arith0Order:
    case Entropy::ArithMixed:
      arith.Close(out.streams.symbols.back());
      out.file = HeadOf(out.streams, member.head);
      out.file.significance = arith.SignificanceBytes();
      out.file.refinementBytes = arith.RefinementBytes();
      out.file.count = static_cast<std::int32_t>(out.file.significance.size());
      break;
  }
  return out;
}

// The most symbols and refinement bits the pass counts allow: each new
// significant coefficient a sign and at most log2(N*N) digits, one stop
// mark; each pass one bit for each coefficient significant before it.
struct StreamBound {
  std::size_t symbols = 1;
  std::size_t bits = 0;
};

std::optional<StreamBound> BoundOfStreams(const WicFile& f) {
  if (f.n <= 0 || f.passes < 0 || f.passCounts.size() < static_cast<std::size_t>(f.passes) + 1)
    return std::nullopt;
  const std::int64_t positions = std::int64_t{f.n} * f.n;
  const std::int64_t digits = std::bit_width(static_cast<std::uint64_t>(positions)) - 1;
  StreamBound bound;
  std::int64_t known = 0;
  for (int k = 0; k <= f.passes; ++k) {
    const std::size_t i = static_cast<std::size_t>(k);
    const std::int64_t total = k == 0 ? f.passCounts[0] : std::int64_t{f.passCounts[i - 1]} + f.passCounts[i];
    if (total < 0 || total > positions) return std::nullopt;
    bound.bits += static_cast<std::size_t>(known);
    if (total > known) {
      bound.symbols += static_cast<std::size_t>((total - known) * (1 + digits));
      known = total;
    }
  }
  return bound;
}

std::optional<std::string> DecodeArith(const std::vector<std::uint8_t>& bytes, WorkshopArithStream stream,
                                       std::size_t bound) {
  const ArithDecodedText text = stream == WorkshopArithStream::SignificanceMixedOrders
                                    ? TestArithDecodeMM(bytes, bound)
                                    : TestArithDecode(bytes, AlphabetOf(stream), bound);
  if (text.end != ArithDecodeEnd::EndOfStream) return std::nullopt;
  return text.symbols;
}

int CompletedPasses(const WdrStreams& s, Rule rule, std::int64_t budget, double target) {
  if (rule == Rule::Lossless) return s.passes + 1;
  const bool stopped = rule == Rule::Budget ? s.bitsUsed > budget : s.psnr >= target;
  return s.passes == kWdrMaxPasses && !stopped ? s.passes + 1 : s.passes;
}

WdrEncodeReport ReportOf(const WdrStreams& s, Rule rule, std::int64_t budget, double target) {
  WdrEncodeReport r;
  const double aim = rule == Rule::Psnr && s.code >= 100 ? target - 10.0 * std::log10(4.0) : target;
  r.completedPasses = CompletedPasses(s, rule, budget, aim);
  r.symbolCount = static_cast<std::int64_t>(s.symbols.size());
  for (std::size_t k = 0; k < s.symbols.size(); ++k)
    ++r.symbolCounts[static_cast<std::size_t>(CharValue(s.symbols, k, WorkshopAlphabet::Significance))];
  r.bitsUsed = s.bitsUsed;
  r.minimumFileBytes = (s.bitsUsed + 7) / 8;
  r.significantCount = s.sigTotal;
  if (rule == Rule::Psnr) r.psnr = s.psnr;
  return r;
}

WdrEncodeResult Refused(WdrEncodeStatus status, int message) {
  WdrEncodeResult out;
  out.status = status;
  out.message = message;
  return out;
}

// The command's checks in its order: the target, the plane, the levels, the
// scan mode.
std::optional<WdrEncodeResult> CheckOptions(const std::vector<float>& plane, int n, const WdrEncodeOptions& o) {
  const bool psnr = o.stopKind == WdrStopKind::Psnr;
  if (o.lossless ? !(o.target >= 0.0) : !(o.target > 0.0))
    return Refused(WdrEncodeStatus::BadTarget, o.lossless ? (psnr ? 83 : 84) : (psnr ? 81 : 82));
  if (!std::isfinite(o.target)) return Refused(WdrEncodeStatus::BadTarget, psnr ? 81 : 82);
  const int most = HighestLevel(n);
  if (most == 0 || plane.size() != static_cast<std::size_t>(n) * static_cast<std::size_t>(n))
    return Refused(WdrEncodeStatus::BadPlane, 0);
  if (o.levels < 1 || o.levels > most) return Refused(WdrEncodeStatus::BadLevels, 21);
  if (o.scanMode < 1 || o.scanMode > 4) return Refused(WdrEncodeStatus::BadScanMode, 0);
  return std::nullopt;
}

bool RegionFits(const ImagePlane& transform, const WdrMemberSettings& settings) {
  return settings.region.mask != nullptr && settings.region.mask->size() == transform.v.size();
}

WdrCodedFile RegionRefused() {
  WdrCodedFile out;
  out.status = WdrStatus::BadPlane;
  out.streams.status = WdrStatus::BadPlane;
  return out;
}

int RoundedLog2(int n) { return static_cast<int>(std::lround(std::log2(static_cast<double>(n)))); }

Entropy EntropyOf(const WdrEncodeOptions& o) {
  if (o.stage == WdrEntropyStage::Binary) return Entropy::Binary;
  if (o.stage == WdrEntropyStage::Huffman) return Entropy::Prefix;
  return o.model == WdrSourceModel::MixedOrders ? Entropy::ArithMixed : Entropy::Arith0Order;
}

}  // namespace

WicFile SaveCodedData2Array(const WdrStreams& streams, const WdrFileHead& head) {
  WicFile f = HeadOf(streams, head);
  f.symbols = streams.symbols;
  f.refinement = streams.refinement;
  return f;
}

WicFile SaveHuffCodedData2Array(const WdrStreams& streams, const WdrFileHead& head) {
  WicFile f = HeadOf(streams, head);
  f.significance = HuffEncode(streams.symbols);
  f.refinementBytes = PackRefinement(streams.refinement);
  return f;
}

WdrCodedFile ArrayEncodeToBitBudget(const ImagePlane& transform, const WdrMemberSettings& settings,
                                    std::int64_t budget) {
  return RunMember(transform, settings, Entropy::Binary, Rule::Budget, budget, 0.0);
}
WdrCodedFile ArrayEncodeHuffToBitBudget(const ImagePlane& transform, const WdrMemberSettings& settings,
                                        std::int64_t budget) {
  return RunMember(transform, settings, Entropy::Prefix, Rule::Budget, budget, 0.0);
}
WdrCodedFile ArrayEncodeArithToBitBudget(const ImagePlane& transform, const WdrMemberSettings& settings,
                                         std::int64_t budget) {
  return RunMember(transform, settings, Entropy::Arith0Order, Rule::Budget, budget, 0.0);
}
WdrCodedFile ArrayEncodeArithToBitBudgetMM(const ImagePlane& transform, const WdrMemberSettings& settings,
                                           std::int64_t budget) {
  return RunMember(transform, settings, Entropy::ArithMixed, Rule::Budget, budget, 0.0);
}
WdrCodedFile ROIArrayEncodeArithToBitBudgetMM(const ImagePlane& transform, const WdrMemberSettings& settings,
                                              std::int64_t budget) {
  if (!RegionFits(transform, settings)) return RegionRefused();
  return RunMember(transform, settings, Entropy::ArithMixed, Rule::Budget, budget, 0.0);
}
WdrCodedFile ROIArrayEncodeArithToBitBudgetMMLossless(const ImagePlane& transform, const WdrMemberSettings& settings) {
  if (!RegionFits(transform, settings)) return RegionRefused();
  return RunMember(transform, settings, Entropy::ArithMixed, Rule::Lossless, 0, 0.0);
}
WdrCodedFile ArrayEncodeToMatchDistortion(const ImagePlane& transform, const WdrMemberSettings& settings,
                                          double targetPsnr) {
  return RunMember(transform, settings, Entropy::Binary, Rule::Psnr, 0, targetPsnr);
}
WdrCodedFile ArrayEncodeHuffToMatchDistortion(const ImagePlane& transform, const WdrMemberSettings& settings,
                                              double targetPsnr) {
  return RunMember(transform, settings, Entropy::Prefix, Rule::Psnr, 0, targetPsnr);
}
WdrCodedFile ArrayEncodeArithToMatchDistortion(const ImagePlane& transform, const WdrMemberSettings& settings,
                                               double targetPsnr) {
  return RunMember(transform, settings, Entropy::Arith0Order, Rule::Psnr, 0, targetPsnr);
}
WdrCodedFile ArrayEncodeArithToMatchDistortionMM(const ImagePlane& transform, const WdrMemberSettings& settings,
                                                 double targetPsnr) {
  return RunMember(transform, settings, Entropy::ArithMixed, Rule::Psnr, 0, targetPsnr);
}
WdrCodedFile ArrayEncodeToBitBudgetLossless(const ImagePlane& transform, const WdrMemberSettings& settings) {
  return RunMember(transform, settings, Entropy::Binary, Rule::Lossless, 0, 0.0);
}
WdrCodedFile ArrayEncodeArithToBitBudgetLossless(const ImagePlane& transform, const WdrMemberSettings& settings) {
  return RunMember(transform, settings, Entropy::Arith0Order, Rule::Lossless, 0, 0.0);
}
WdrCodedFile ArrayEncodeArithToBitBudgetMMLossless(const ImagePlane& transform, const WdrMemberSettings& settings) {
  return RunMember(transform, settings, Entropy::ArithMixed, Rule::Lossless, 0, 0.0);
}

WdrEncodeResult EncodeTransform(const std::vector<float>& plane, int n, const WdrEncodeOptions& options) {
  if (std::optional<WdrEncodeResult> refused = CheckOptions(plane, n, options)) return std::move(*refused);
  ImagePlane transform(n, n);
  transform.v = plane;
  WdrMemberSettings member;
  member.levels = options.levels;
  member.scanMode = static_cast<WdrScanMode>(options.scanMode);
  member.head = options.head;
  const bool exact = options.lossless && options.target == 0.0;
  member.integerCode = options.lossless;
  Entropy entropy = EntropyOf(options);
  if (exact && entropy == Entropy::Prefix) entropy = Entropy::Binary;  // the lossless dispatch's "any other"
  const Rule rule = exact ? Rule::Lossless : options.stopKind == WdrStopKind::BitRate ? Rule::Budget : Rule::Psnr;
  const std::int64_t budget = rule == Rule::Budget ? BitBudgetOfRate(n, options.target) : 0;
  if (options.regionMask != nullptr && n > 1) {
    // Only the mixed-order arithmetic members code a region.
    const bool regionMember = entropy == Entropy::ArithMixed && (rule == Rule::Lossless || (rule == Rule::Budget && !options.lossless));
    if (!regionMember) return Refused(WdrEncodeStatus::RegionNotCoded, 0);
    if (options.regionMask->size() != transform.v.size()) return Refused(WdrEncodeStatus::BadPlane, 0);
    std::int64_t total = budget;
    if (rule == Rule::Lossless) {
      const WdrCodedFile plain = RunMember(transform, member, entropy, rule, 0, 0.0);
      if (plain.status != WdrStatus::Ok) return Refused(WdrEncodeStatus::BadPlane, 0);
      total = plain.streams.bitsUsed;
    }
    member.head.waveletByte = options.head.waveletByte % 10 + 10 * RoundedLog2(n);
    member.head.roiValue = static_cast<std::int32_t>(0.45 * static_cast<double>(total) * (1.0 - options.regionFraction));
    member.region.mask = options.regionMask;
    member.region.sharedBudget = member.head.roiValue;
  }
  WdrCodedFile coded = RunMember(transform, member, entropy, rule, budget, options.target);
  WdrEncodeResult out;
  if (coded.status != WdrStatus::Ok) return Refused(WdrEncodeStatus::BadPlane, 0);
  out.report = ReportOf(coded.streams, rule, budget, options.target);
  out.file = std::move(coded.file);
  out.streams = std::move(coded.streams);
  return out;
}

std::string WdrReportText(const WdrEncodeReport& r) {
  static constexpr const char* kSymbolNames[] = {"0", "1", "+", "-"};
  std::string text = "Number of Completed Passes: " + std::to_string(r.completedPasses) + "\r\n";
  text += "Number of Symbols: " + std::to_string(r.symbolCount) + ".  Minimum File length: " +
          std::to_string(r.minimumFileBytes) + "  bytes\r\n";
  text += "Number of significant values: " + std::to_string(r.significantCount) + "\r\n";
  text += "Symbol Counts. ";
  for (std::size_t k = 0; k < 4; ++k)
    text += (k > 0 ? ".  " : "") + std::string(kSymbolNames[k]) + ": " + std::to_string(r.symbolCounts[k]);
  text += "\r\n";
  if (r.psnr) {
    char value[32];
    std::snprintf(value, sizeof value, "%.2f", *r.psnr);
    text += "Distortion (PSNR): " + std::string(value) + "\r\n";
  }
  return text;
}

std::optional<WdrStreams> GetCompressedData2(const WicFile& f) {
  const int stage = StageOfCode(f.code);
  if (stage < 0 || stage > 4) return std::nullopt;
  const std::optional<StreamBound> bound = BoundOfStreams(f);
  if (!bound) return std::nullopt;
  WdrStreams s;
  s.code = f.code;
  s.n = f.n;
  s.levels = f.levels;
  s.scanMode = static_cast<WdrScanMode>(f.scanMode);
  s.exponent = f.exponent;
  s.passes = f.passes;
  s.passCounts = f.passCounts;
  switch (stage) {
    case 0:
    case 1:
      s.symbols = f.symbols;
      s.refinement = f.refinement;
      break;
    case 2: {
      if (f.count < 0 || static_cast<std::size_t>(f.count) > bound->symbols) return std::nullopt;
      std::optional<std::string> symbols = HuffDecode(f.significance, static_cast<std::size_t>(f.count));
      if (!symbols) return std::nullopt;
      s.symbols = std::move(*symbols);
      s.refinement = UnpackRefinement(f.refinementBytes);
      break;
    }
    default: {
      const WorkshopArithStream model =
          stage == 4 ? WorkshopArithStream::SignificanceMixedOrders : WorkshopArithStream::Significance0Order;
      std::optional<std::string> symbols = DecodeArith(f.significance, model, bound->symbols);
      if (!symbols) return std::nullopt;
      std::optional<std::string> bits = DecodeArith(f.refinementBytes, WorkshopArithStream::Refinement, bound->bits);
      if (!bits) return std::nullopt;
      s.symbols = std::move(*symbols);
      s.refinement = std::move(*bits);
      break;
    }
  }
  return s;
}

std::optional<WdrDecodedFile> DecodeWicFile(const std::vector<std::uint8_t>& bytes, bool wc2) {
  const std::optional<WicFile> file = ReadWicFile(bytes, wc2);
  if (!file) return std::nullopt;
  const std::optional<WdrStreams> streams = GetCompressedData2(*file);
  if (!streams) return std::nullopt;
  WdrDecoded decoded = Decode(*streams);
  if (decoded.status != WdrStatus::Ok) return std::nullopt;
  WdrDecodedFile out;
  out.plane = std::move(decoded.plane);
  out.code = file->code;
  out.levels = file->levels;
  out.scanMode = streams->scanMode;
  out.waveletByte = file->waveletByte;
  out.roiValue = file->roiValue;
  out.passesRun = decoded.passesRun;
  return out;
}

}  // namespace keldo::wavelet

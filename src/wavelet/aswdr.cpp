#include "wavelet/aswdr.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <utility>

#include "common/number_text.h"
#include "wavelet/aswdr_channels.h"

namespace keldo::wavelet {
namespace {

using aswdr_detail::ArithmeticReceiver;
using aswdr_detail::ArithmeticSender;
using aswdr_detail::BinaryReceiver;
using aswdr_detail::BinarySender;

constexpr int kNineSevenPasses = 32;
constexpr int kHeadVariantTag = 2;
constexpr int kMaxLevels = 25;

// ---------------------------------------------------------------- head

void PutLittleEndian(std::vector<std::uint8_t>& out, std::uint32_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) out.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

std::uint32_t GetLittleEndian(const std::vector<std::uint8_t>& in, std::size_t at, int bytes) {
  std::uint32_t value = 0;
  for (int i = 0; i < bytes; ++i) value |= static_cast<std::uint32_t>(in[at + static_cast<std::size_t>(i)]) << (8 * i);
  return value;
}

int SignedShort(std::uint32_t value) { return static_cast<std::int16_t>(static_cast<std::uint16_t>(value)); }

bool SizeFits(int side, int levels) { return side > 0 && side % (1 << levels) == 0; }

bool HeadIsValid(const AswdrHead& h) {
  return h.levels >= 1 && h.levels <= kMaxLevels && h.waveletIndex >= 1 && h.waveletIndex <= 3 &&
         SizeFits(h.width, h.levels) && SizeFits(h.height, h.levels) && h.width <= 32767 && h.height <= 32767;
}

// ---------------------------------------------------------------- passes

// The working tables of a coding that do not go back to the caller: the
// walk and its parents' codes, the flags and pass numbers by position and by
// place, and the refinement candidates. Each thread keeps the last coding's
// set and the next coding takes it over, so that codings one after another
// write into pages touched already instead of faulting in megabytes of fresh
// memory each time. Nothing in them is read before it is written anew. The
// set of a plane above kKeptScratchPixels is let go.
struct Scratch {
  std::vector<std::uint8_t> nonZero, nonZeroBySlot;
  std::vector<std::int32_t> passedOver;
  FlatScanOrder::Storage order;
  std::vector<std::uint16_t> passes, whenBySlot;
  std::vector<std::array<std::uint16_t, 4>> whenOfChildren;
};

constexpr std::size_t kKeptScratchPixels = std::size_t{1} << 22;

Scratch& KeptScratch() {
  thread_local Scratch kept;
  return kept;
}

// The thread's set, left empty there, so that a coding started inside
// another (none is today) would simply allocate its own.
Scratch TakeScratch() { return std::move(KeptScratch()); }

void KeepScratch(Scratch&& scratch) {
  if (scratch.passedOver.capacity() <= kKeptScratchPixels) KeptScratch() = std::move(scratch);
}

struct PassState {
  ImagePlane quant;
  std::vector<std::uint8_t> nonZero;  // by position: quant != 0
  FlatScanOrder order;
  // The positions the current significance walk passed over as significant
  // already, in walk order: the refinement walk's candidates.
  std::vector<std::int32_t> passedOver;
  std::size_t passedOverCount = 0;
  double threshold = 1.0;
  int pass = 0;
  std::int64_t significant = 0;       // turned significant so far
  std::int64_t formerSignificant = 0; // at the end of the former pass
  std::int64_t refinedInPass = 0;     // refinement bits of the current pass
  bool stoppedByLoopTest = false;
  std::vector<std::string> report;

  void SetQuant(std::int32_t p, double value) {
    const float q = static_cast<float>(value);
    quant.v[static_cast<std::size_t>(p)] = q;
    nonZero[static_cast<std::size_t>(p)] = q != 0.0f ? 1 : 0;
  }
};

// The candidates are written before they are read, so the reused vector
// is only sized.
PassState StartPasses(int width, int height, int levels, int exponent, Scratch& scratch) {
  PassState s;
  s.quant = ImagePlane(width, height);
  s.nonZero = std::move(scratch.nonZero);
  s.nonZero.assign(s.quant.v.size(), 0);
  s.passedOver = std::move(scratch.passedOver);
  s.passedOver.resize(s.quant.v.size());
  s.order.Start(levels, width, height, std::move(scratch.order));
  s.threshold = std::ldexp(1.0, exponent);
  return s;
}

// The vectors of StartPasses back into the set.
void ReturnPassTables(PassState& s, Scratch& scratch) {
  scratch.nonZero = std::move(s.nonZero);
  scratch.passedOver = std::move(s.passedOver);
  scratch.order = s.order.Release();
}

enum class PassLimit { LoopTest, DownToOne };

// What ends the passes and what they may spend: the budget, the lossy
// coders' LoopTest or the lossless coder's rule (go on while T >= 2), and
// the region, if any.
struct PassRules {
  std::int32_t budget = 0;
  int waveletIndex = 1;
  PassLimit limit = PassLimit::LoopTest;
  const AswdrRegion* region = nullptr;
};

// The lossless coder has no budget: bits used never reach this.
constexpr std::int32_t kNoBudget = std::numeric_limits<std::int32_t>::max();

// With the 9/7 wavelet, stop after pass 32; with an integer wavelet, after
// the pass of threshold 1. The lossless rule stops once T < 2.
bool LoopTest(const PassRules& rules, int pass, double threshold) {
  if (pass >= kMaxAswdrPasses) return true;
  if (rules.limit == PassLimit::DownToOne) return threshold < 2.0;
  return rules.waveletIndex == 1 ? pass >= kNineSevenPasses : threshold == 1.0;
}

void ReportData(PassState& s, const char* verb, std::int64_t bitsUsed) {
  const double pixels = static_cast<double>(s.quant.width) * static_cast<double>(s.quant.height);
  s.report.push_back("Number of significant values " + std::string(verb) + ":  " + std::to_string(s.significant) +
                     ".  Threshold = " + PlainNumber(s.threshold));
  s.report.push_back("Bit rate:  " + PlainNumber(static_cast<double>(bitsUsed) / pixels));
}

// A value moved by `step` away from zero, in the single precision it is
// kept in.
void MoveAway(float& q, double step) { q = static_cast<float>(q < 0.0f ? q - step : q + step); }

double Magnitude(float v) { return std::fabs(static_cast<double>(v)); }

// LastRefinement's offsets, value by value in list order: `counter` counts
// the values at or above 2T met so far.
struct LastOffsets {
  double threshold;
  std::int64_t refinedInLastPass;
  std::int64_t counter = 0;
  void Apply(float& v) {
    const double a = Magnitude(v);
    if (a >= 2.0 * threshold) {
      ++counter;
      MoveAway(v, counter <= refinedInLastPass ? threshold / 2.0 : threshold);
    } else if (a >= threshold) {
      MoveAway(v, threshold / 2.0);
    }
  }
};

// The end of a pass for both sides; true when the passes go on. Every
// non-zero value is at least the pass's threshold here, so the rebuild's
// first kind is the non-zero parents.
// `byPosition` and `bySlot` are the walk's value by position and by place
// (FlatScanOrder::Rebuild).
template <typename T>
bool EndPass(PassState& s, const PassRules& rules, const char* verb, std::int64_t bitsUsed,
             const FlatScanOrder::Carried<T>& byPosition, T* bySlot) {
  s.formerSignificant = s.significant;
  ReportData(s, verb, bitsUsed);
  s.order.Rebuild(s.quant, s.nonZero, s.threshold, byPosition, bySlot);
  s.stoppedByLoopTest = LoopTest(rules, s.pass, s.threshold);
  return !s.stoppedByLoopTest;
}

// The refinement walk, shared by both sides through `bitFor`, which sends or
// reads the bit of a value and says whether it moves. It visits the values
// with |quant| >= the former threshold in walk order, and leaves once it has
// seen as many as were significant before the pass. Those values are all
// among the positions the significance walk passed over (they were non-zero,
// and at least the former threshold, before it), so the walk goes through
// that list, in the same order. False when the budget stopped it.
// The candidates lie scattered over the plane, so the values (and those of
// `alsoRead` by position, when not null) kRefinementLookAhead candidates on
// are asked for early.
constexpr std::size_t kRefinementLookAhead = 16;

template <typename Channel, typename BitFor>
bool RefinementPass(PassState& s, double formerThreshold, std::int32_t budget, Channel& ch, const float* alsoRead,
                    BitFor bitFor) {
  std::int64_t seen = 0;
  const std::int32_t* candidates = s.passedOver.data();
  const std::size_t count = s.passedOverCount;
  for (std::size_t i = 0; i < count && seen < s.formerSignificant; ++i) {
    if (i + kRefinementLookAhead < count) {
      const auto ahead = static_cast<std::size_t>(candidates[i + kRefinementLookAhead]);
      __builtin_prefetch(s.quant.v.data() + ahead);
      if (alsoRead != nullptr) __builtin_prefetch(alsoRead + ahead);
    }
    const std::int32_t p = candidates[i];
    float& q = s.quant.v[static_cast<std::size_t>(p)];
    if (Magnitude(q) < formerThreshold) continue;
    ++seen;
    ++s.refinedInPass;
    if (bitFor(p, q)) MoveAway(q, s.threshold);
    if (ch.Used() >= budget) return false;
  }
  return true;
}

// The pass in which each coefficient turns significant, for a start
// threshold of 2^exponent: with |c| = m 2^f (1 <= m < 2), pass k has
// 2^(exponent-k) <= |c| < 2^(exponent-k+1) exactly when k = exponent - f, so
// before pass k the coefficient is significant already when that number is
// below k and stays below the threshold when it is above. 0 for |c| at or
// above the start (never coded), kNeverSignificant for 0 and
// kAlwaysSignificant for a NaN, which no comparison holds back. Every
// number fits in 15 bits, and passes stop long before kNeverSignificant;
// the 16th bit, kNegative, holds c < 0, the sign the coder sends.
constexpr std::uint16_t kNeverSignificant = 0x7FFE;
constexpr std::uint16_t kAlwaysSignificant = 0x7FFF;
constexpr std::uint16_t kNegative = 0x8000;

struct SignificanceTable {
  std::vector<std::uint16_t> passes;  // by position, with kNegative
  bool anyNaN = false;
};

// The pass of one value from its bits. Normal numbers, all but a few, take
// ilogb from the biased exponent (less 127) with no branch; zero, the
// subnormals, infinity and NaN go their own ways. The sign is c < 0: not
// for -0 or a NaN.
std::uint16_t PassOf(float value, int exponent, bool& nan) {
  const std::uint32_t bits = std::bit_cast<std::uint32_t>(value);
  const std::uint32_t magnitude = bits & 0x7FFFFFFFu;
  const int biased = static_cast<int>(magnitude >> 23);
  std::uint16_t pass;
  if (biased != 0 && biased != 0xFF) {
    pass = static_cast<std::uint16_t>(std::clamp(exponent - (biased - 127), 0, kNeverSignificant - 1));
  } else if (magnitude == 0) {
    return kNeverSignificant;
  } else if (biased == 0) {
    const std::int64_t k = static_cast<std::int64_t>(exponent) - std::ilogb(Magnitude(value));
    pass = static_cast<std::uint16_t>(std::clamp<std::int64_t>(k, 0, kNeverSignificant - 1));
  } else if (magnitude == 0x7F800000u) {
    pass = 0;  // infinity, at or above any start
  } else {
    nan = true;
    return kAlwaysSignificant;
  }
  return static_cast<std::uint16_t>(pass | (bits >> 31) << 15);
}

typedef std::int32_t Ints8 __attribute__((vector_size(32)));
typedef std::uint16_t Halves8 __attribute__((vector_size(16)));

// PassOf for eight values at once, by the same integer steps, when none
// of them is a subnormal, an infinity or a NaN (false then, and nothing
// written): pass numbers of zeros and normal numbers.
inline __attribute__((always_inline)) bool EightPasses(const float* v, int exponent, std::uint16_t* out) {
  Ints8 bits;
  std::memcpy(&bits, v, sizeof bits);
  const Ints8 magnitude = bits & 0x7FFFFFFF;
  const Ints8 biased = magnitude >> 23;
  const Ints8 special = ((biased == 0) & (magnitude != 0)) | (biased == 0xFF);
  std::uint64_t words[4];
  std::memcpy(words, &special, sizeof words);
  std::uint64_t any = 0;
  for (std::uint64_t word : words) any |= word;
  if (any != 0) return false;
  Ints8 pass = exponent - (biased - 127);
  pass = pass < 0 ? Ints8{} : pass;
  pass = pass > kNeverSignificant - 1 ? Ints8{} + (kNeverSignificant - 1) : pass;
  // The sign bit, moved down to bit 15 (bits >> 31 is -1 or 0 here).
  const Ints8 sign = (bits >> 31) & kNegative;
  const Ints8 withSign = pass | sign;
  const Ints8 result = magnitude == 0 ? Ints8{} + kNeverSignificant : withSign;
  const Halves8 halves = __builtin_convertvector(result, Halves8);
  std::memcpy(out, &halves, sizeof halves);
  return true;
}

inline __attribute__((always_inline)) void PassesOf(const float* v, std::size_t count, int exponent,
                                                    std::uint16_t* out, bool& nan) {
  std::size_t i = 0;
  for (; i + 8 <= count; i += 8)
    if (!EightPasses(v + i, exponent, out + i))
      for (std::size_t j = i; j < i + 8; ++j) out[j] = PassOf(v[j], exponent, nan);
  for (; i < count; ++i) out[i] = PassOf(v[i], exponent, nan);
}

__attribute__((target("avx512f,avx512vl,avx512bw"))) void PassesOfMany(const float* v, std::size_t count, int exponent,
                                                              std::uint16_t* out, bool& nan) {
  PassesOf(v, count, exponent, out, nan);
}

__attribute__((target("avx2"))) void PassesOfWide(const float* v, std::size_t count, int exponent,
                                                  std::uint16_t* out, bool& nan) {
  PassesOf(v, count, exponent, out, nan);
}

// Into `table`, whose vector is reused.
void SignificancePasses(const ImagePlane& c, int exponent, SignificanceTable& table) {
  static const bool many = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") &&
                           __builtin_cpu_supports("avx512bw") &&
                           std::getenv("KELDO_NO_AVX512") == nullptr;
  static const bool wide = __builtin_cpu_supports("avx2");
  table.anyNaN = false;
  table.passes.resize(c.v.size());
  if (many) PassesOfMany(c.v.data(), c.v.size(), exponent, table.passes.data(), table.anyNaN);
  else if (wide) PassesOfWide(c.v.data(), c.v.size(), exponent, table.passes.data(), table.anyNaN);
  else PassesOf(c.v.data(), c.v.size(), exponent, table.passes.data(), table.anyNaN);
}

// The walks take the places kChunk at a time: a chunk whose values all stay
// below the threshold (coder) or are all zero with the decoder's run not
// ending in it only lengthens the run.
constexpr std::size_t kChunk = 8;

std::uint64_t LoadWord(const void* at) {
  std::uint64_t word;
  std::memcpy(&word, at, sizeof word);
  return word;
}

// True when all kChunk 15-bit pass numbers from `when` are above k (k below
// 2^15): each has its 16th bit (the sign) set, k + 1 taken off, and the bit
// stays exactly where the number exceeds k.
bool AllAbove(const std::uint16_t* when, std::uint16_t k) {
  constexpr std::uint64_t kHigh = 0x8000800080008000ull;
  const std::uint64_t less = (std::uint64_t{k} + 1) * 0x0001000100010001ull;
  const std::uint64_t a = (LoadWord(when) | kHigh) - less, b = (LoadWord(when + 4) | kHigh) - less;
  return (a & b & kHigh) == kHigh;
}

// The places of a chunk [from, end) that turn significant in the pass of
// number k, each with the run it ends, found by one walk with no branch
// that also lists the candidates and counts the run on past the last turn.
// For pass numbers of a plane with no NaN (none is kAlwaysSignificant): a
// place turns when its number is k, as in the walk one place at a time.
struct ChunkTurns {
  std::size_t count = 0;
  std::array<std::size_t, kChunk> at;
  std::array<std::int64_t, kChunk> run;
};

ChunkTurns ScanChunk(const std::int32_t* positions, const std::uint16_t* when, std::size_t from, std::size_t end,
                     std::uint16_t k, std::int32_t* passedOver, std::size_t& passed, std::int64_t& run) {
  ChunkTurns turns;
  for (std::size_t i = from; i < end; ++i) {
    const std::uint16_t w = when[i] & ~kNegative;
    passedOver[passed] = positions[i];
    passed += w < k ? 1 : 0;
    turns.at[turns.count] = i;
    turns.run[turns.count] = run;
    turns.count += w == k ? 1 : 0;
    run = w == k ? 1 : run + (w > k ? 1 : 0);
  }
  return turns;
}

// The pass numbers the walks read, by position, by place and by parent.
struct WalkTables {
  SignificanceTable table;
  std::vector<std::uint16_t> whenBySlot;
  std::vector<std::array<std::uint16_t, 4>> whenOfChildren;
  FlatScanOrder::Carried<std::uint16_t> carried;

  void Carry(const FlatScanOrder& order) {
    order.ChildrenByParent(table.passes.data(), whenOfChildren);
    carried.byPosition = table.passes.data();
    carried.byParent = whenOfChildren.empty() ? nullptr : whenOfChildren.data();
  }
};

// Region mode: every position outside the region still at zero is given
// kNeverSignificant, so that the walks count it below the threshold from
// then on. Done once, it leaves the walks themselves as they are.
void EnterRegionMode(WalkTables& w, const PassState& s, const std::vector<std::uint8_t>& mask) {
  const std::vector<std::int32_t>& positions = s.order.Positions();
  for (std::size_t i = 0; i < positions.size(); ++i) {
    const auto p = static_cast<std::size_t>(positions[i]);
    if (mask[p] != 0 || s.nonZero[p] != 0) continue;
    w.whenBySlot[i] = kNeverSignificant;
    w.table.passes[p] = kNeverSignificant;
  }
  w.Carry(s.order);
}

// Region mode begins when the bits used reach the shared budget; true when
// it has just begun.
template <typename Sender>
bool RegionModeBegins(const PassRules& rules, bool& regionMode, const Sender& ch, WalkTables& w, PassState& s) {
  if (rules.region == nullptr || regionMode || ch.Used() < rules.region->sharedBudget) return false;
  regionMode = true;
  EnterRegionMode(w, s, rules.region->mask);
  return true;
}

// The encoder's tables in the set's vectors, filled for the start order.
void StartWalkTables(WalkTables& tables, const ImagePlane& c, int exponent, const PassState& s, Scratch& scratch) {
  tables.table.passes = std::move(scratch.passes);
  tables.whenBySlot = std::move(scratch.whenBySlot);
  tables.whenOfChildren = std::move(scratch.whenOfChildren);
  SignificancePasses(c, exponent, tables.table);
  tables.whenBySlot.resize(tables.table.passes.size());
  s.order.Carry(tables.table.passes.data(), tables.whenBySlot.data());
  tables.Carry(s.order);
}

void ReturnWalkTables(WalkTables& tables, Scratch& scratch) {
  scratch.passes = std::move(tables.table.passes);
  scratch.whenBySlot = std::move(tables.whenBySlot);
  scratch.whenOfChildren = std::move(tables.whenOfChildren);
}

template <typename Sender>
int EncodePasses(const ImagePlane& c, const PassRules& rules, Sender& ch, PassState& s, WalkTables& tables) {
  const std::int32_t budget = rules.budget;
  const SignificanceTable& table = tables.table;
  std::vector<std::uint16_t>& whenBySlot = tables.whenBySlot;
  const FlatScanOrder::Carried<std::uint16_t>& carried = tables.carried;
  bool regionMode = false;
  int regionModePass = 0;
  const auto regionCheck = [&] {
    if (RegionModeBegins(rules, regionMode, ch, tables, s)) regionModePass = s.pass;
  };
  for (s.pass = 1;; ++s.pass) {
    regionCheck();
    const double former = s.threshold;
    s.threshold /= 2.0;
    const double t = s.threshold;
    s.refinedInPass = 0;
    // The budget can only stand reached before the first bit of a pass.
    const bool stopWhenInsignificant = Sender::kTestAfterInsignificant && ch.Used() >= budget;
    const bool skipChunks = !stopWhenInsignificant && !table.anyNaN;
    // Without a region nothing a turn does changes the pass numbers the
    // rest of its chunk is walked by.
    const bool scanFirst = skipChunks && rules.region == nullptr;
    const auto k = static_cast<std::uint16_t>(std::min(s.pass, int{kNeverSignificant} - 1));
    const std::int32_t* positions = s.order.Positions().data();
    const std::size_t n = s.order.Positions().size();
    std::int32_t* passedOver = s.passedOver.data();
    std::size_t passed = 0;
    std::int64_t run = 1;
    const std::uint16_t* when = whenBySlot.data();
    for (std::size_t chunk = 0; chunk < n; chunk += kChunk) {
      if (skipChunks && chunk + kChunk <= n && AllAbove(when + chunk, k)) {
        run += kChunk;
        continue;
      }
      const std::size_t end = std::min(n, chunk + kChunk);
      if (scanFirst) {
        const ChunkTurns turns = ScanChunk(positions, when, chunk, end, k, passedOver, passed, run);
        for (std::size_t j = 0; j < turns.count; ++j) {
          const std::size_t i = turns.at[j];
          ch.Run(turns.run[j]);
          const bool negative = (when[i] & kNegative) != 0;
          s.SetQuant(positions[i], negative ? -t : t);
          ch.Sign(negative);
          ++s.significant;
          if (ch.Used() >= budget) return regionModePass;
        }
        continue;
      }
      for (std::size_t i = chunk; i < end; ++i) {
        const std::int32_t p = positions[i];
        const std::uint16_t w = when[i] & ~kNegative;
        // Significant already (w < k): a candidate for refinement. Below the
        // threshold (w > k): the run grows. Either without a branch.
        const bool turns = w == k || w == kAlwaysSignificant;
        passedOver[passed] = p;
        passed += w < k ? 1 : 0;
        run += w > k && !turns ? 1 : 0;
        if (!turns) {
          if (stopWhenInsignificant && w > k) return regionModePass;
          continue;
        }
        ch.Run(run);
        run = 1;
        const bool negative = (when[i] & kNegative) != 0;
        s.SetQuant(p, negative ? -t : t);
        ch.Sign(negative);
        ++s.significant;
        if (ch.Used() >= budget) return regionModePass;
        regionCheck();
      }
    }
    s.passedOverCount = passed;
    ch.Run(run + 1);
    if (ch.Used() >= budget) return regionModePass;
    const bool onBudget = RefinementPass(s, former, budget, ch, c.v.data(), [&](std::int32_t at, float q) {
      const bool moved = std::fabs(static_cast<double>(c.v[static_cast<std::size_t>(at)]) - static_cast<double>(q)) >= t;
      ch.Refine(moved);
      return moved;
    });
    if (!onBudget || !EndPass(s, rules, "encoded", ch.Used(), carried, whenBySlot.data())) return regionModePass;
  }
}

// `nonZeroBySlot` is a vector to reuse.
template <typename Receiver>
void DecodePasses(const PassRules& rules, Receiver& ch, PassState& s, std::vector<std::uint8_t>& nonZeroBySlot) {
  const std::int32_t budget = rules.budget;
  // By place: whether the value there is non-zero.
  nonZeroBySlot.assign(s.nonZero.size(), 0);
  FlatScanOrder::Carried<std::uint8_t> carried;
  carried.byPosition = s.nonZero.data();
  carried.zeroWhereZero = true;
  for (s.pass = 1;; ++s.pass) {
    const double former = s.threshold;
    s.threshold /= 2.0;
    const double t = s.threshold;
    s.refinedInPass = 0;
    std::optional<std::int64_t> runValue = ch.Run();
    if (!runValue) return;
    const std::int32_t* positions = s.order.Positions().data();
    const std::size_t n = s.order.Positions().size();
    std::uint8_t* nonZero = nonZeroBySlot.data();
    std::int32_t* passedOver = s.passedOver.data();
    std::size_t passed = 0;
    std::int64_t counter = 1;
    std::int64_t target = *runValue;
    for (std::size_t chunk = 0; chunk < n; chunk += kChunk) {
      if (chunk + kChunk <= n) {
        // The bytes are 0 or 1, so the top byte of the word times 1 in each
        // byte, their sum, counts the chunk's non-zero values.
        const std::uint64_t word = LoadWord(nonZero + chunk);
        const int zeros = static_cast<int>(kChunk) - static_cast<int>((word * 0x0101010101010101ull) >> 56);
        if (target - counter >= zeros) {
          counter += zeros;
          if (word != 0)
            for (std::size_t i = chunk; i < chunk + kChunk; ++i) {
              passedOver[passed] = positions[i];
              passed += nonZero[i];
            }
          continue;
        }
      }
      const std::size_t end = std::min(n, chunk + kChunk);
      for (std::size_t i = chunk; i < end; ++i) {
        const std::int32_t p = positions[i];
        // A non-zero value is passed over as a candidate for refinement; a
        // zero one counts, and turns significant when the count reaches the
        // run. Without a branch but for the last.
        const int zero = nonZero[i] ^ 1;
        passedOver[passed] = p;
        passed += static_cast<std::size_t>(zero ^ 1);
        if (zero == 0 || counter != target) {
          counter += zero;
          continue;
        }
        s.SetQuant(p, ch.Sign() ? -t : t);
        nonZero[i] = s.nonZero[static_cast<std::size_t>(p)];
        ++s.significant;
        counter = 1;
        if (ch.Used() >= budget) return;
        runValue = ch.Run();
        if (!runValue) return;
        target = *runValue;
      }
    }
    s.passedOverCount = passed;
    if (ch.Used() >= budget) return;
    const bool onBudget =
        RefinementPass(s, former, budget, ch, nullptr, [&](std::int32_t, float) { return ch.Refine(); });
    if (!onBudget || !EndPass(s, rules, "decoded", ch.Used(), carried, nonZeroBySlot.data())) return;
  }
}

// The lossless stream's DoneEncoding context: that of a run's end mark.
constexpr int kRunEndContext = 3;

template <typename Sender>
AswdrEncoded RunEncoder(const ImagePlane& transform, const AswdrHead& head, const PassRules& rules, Sender ch) {
  const StartThreshold start = GetThreshold(transform);
  AswdrHead written = head;
  written.exponent = start.exponent;
  Scratch scratch = TakeScratch();
  PassState s = StartPasses(transform.width, transform.height, head.levels, start.exponent, scratch);
  WalkTables tables;
  StartWalkTables(tables, transform, start.exponent, s, scratch);
  AswdrEncoded out;
  out.regionModePass = EncodePasses(transform, rules, ch, s, tables);
  ReturnWalkTables(tables, scratch);
  out.bitsUsed = ch.Used();
  std::vector<std::uint8_t> stream;
  if (rules.limit == PassLimit::DownToOne) {
    out.file = WriteAwgHead(written);
    if constexpr (requires { ch.FinishInContext(kRunEndContext); }) stream = ch.FinishInContext(kRunEndContext);
  } else {
    out.file = WriteAswdrHead(written);
    stream = ch.Finish();
  }
  out.file.insert(out.file.end(), stream.begin(), stream.end());
  out.quant = std::move(s.quant);
  out.report = std::move(s.report);
  out.passes = s.pass;
  out.stoppedByLoopTest = s.stoppedByLoopTest;
  ReturnPassTables(s, scratch);
  KeepScratch(std::move(scratch));
  return out;
}

// LastRefinement on a flat order whose values by place are flagged non-zero
// in `nonZeroBySlot`. A zero value stays, so only the flagged places are
// taken: kLastBlock places at a time, a chunk of zeros passed over at once,
// the positions of the others gathered and their values asked for before
// the first is changed, as they lie scattered over the plane.
constexpr std::size_t kLastBlock = 64;

void LastRefinementOfNonZero(ImagePlane& quant, const std::vector<std::int32_t>& positions,
                             const std::uint8_t* nonZeroBySlot, double threshold, std::int64_t refinedInLastPass) {
  LastOffsets offsets{threshold, refinedInLastPass};
  float* values = quant.v.data();
  const std::size_t n = positions.size();
  std::array<std::int32_t, kLastBlock> gathered;
  for (std::size_t block = 0; block < n; block += kLastBlock) {
    const std::size_t blockEnd = std::min(n, block + kLastBlock);
    std::size_t count = 0;
    for (std::size_t chunk = block; chunk < blockEnd; chunk += kChunk) {
      const std::size_t end = std::min(blockEnd, chunk + kChunk);
      if (end - chunk == kChunk && LoadWord(nonZeroBySlot + chunk) == 0) continue;
      for (std::size_t i = chunk; i < end; ++i) {
        gathered[count] = positions[i];
        count += nonZeroBySlot[i] != 0 ? 1 : 0;
      }
    }
    for (std::size_t j = 0; j < count; ++j) __builtin_prefetch(values + gathered[j]);
    for (std::size_t j = 0; j < count; ++j) offsets.Apply(values[gathered[j]]);
  }
}

template <typename Receiver>
void RunDecoder(AswdrDecoded& out, const PassRules& rules, Receiver ch) {
  const AswdrHead& h = out.head;
  Scratch scratch = TakeScratch();
  PassState s = StartPasses(h.width, h.height, h.levels, h.exponent, scratch);
  s.report = std::move(out.report);
  DecodePasses(rules, ch, s, scratch.nonZeroBySlot);
  out.bitsUsed = ch.Used();
  out.passes = s.pass;
  out.quantBeforeRefinement = s.quant;
  out.lastRefinement = rules.limit == PassLimit::LoopTest && (!s.stoppedByLoopTest || h.waveletIndex == 1);
  // The flags by place are those of the final order (DecodePasses keeps
  // them so).
  if (out.lastRefinement)
    LastRefinementOfNonZero(s.quant, s.order.Positions(), scratch.nonZeroBySlot.data(), s.threshold, s.refinedInPass);
  out.quant = std::move(s.quant);
  out.report = std::move(s.report);
  ReturnPassTables(s, scratch);
  KeepScratch(std::move(scratch));
}

}  // namespace

std::vector<std::uint8_t> WriteAswdrHead(const AswdrHead& head) {
  std::vector<std::uint8_t> out;
  out.reserve(kAswdrHeadSize);
  PutLittleEndian(out, static_cast<std::uint32_t>(head.budget), 4);
  out.push_back(static_cast<std::uint8_t>(head.levels * 10 + head.waveletIndex));
  PutLittleEndian(out, static_cast<std::uint32_t>(head.width), 2);
  PutLittleEndian(out, static_cast<std::uint32_t>(head.height), 2);
  PutLittleEndian(out, kHeadVariantTag, 2);
  PutLittleEndian(out, static_cast<std::uint32_t>(head.originalWidth), 2);
  PutLittleEndian(out, kHeadVariantTag, 2);
  PutLittleEndian(out, static_cast<std::uint32_t>(head.originalHeight), 2);
  out.push_back(static_cast<std::uint8_t>(head.exponent));
  return out;
}

std::vector<std::uint8_t> WriteAwgHead(const AswdrHead& head) {
  std::vector<std::uint8_t> out = WriteAswdrHead(head);
  out.erase(out.begin(), out.begin() + 4);
  return out;
}

std::optional<AswdrHead> ReadAwgHead(const std::vector<std::uint8_t>& file) {
  if (file.size() < kAwgHeadSize) return std::nullopt;
  // The same fields with a zero budget in front.
  std::vector<std::uint8_t> head(kAswdrHeadSize, 0);
  std::copy_n(file.begin(), kAwgHeadSize, head.begin() + 4);
  return ReadAswdrHead(head);
}

std::optional<AswdrHead> ReadAswdrHead(const std::vector<std::uint8_t>& file) {
  if (file.size() < kAswdrHeadSize) return std::nullopt;
  if (GetLittleEndian(file, 9, 2) != kHeadVariantTag || GetLittleEndian(file, 13, 2) != kHeadVariantTag)
    return std::nullopt;
  AswdrHead h;
  h.budget = static_cast<std::int32_t>(GetLittleEndian(file, 0, 4));
  h.levels = file[4] / 10;
  h.waveletIndex = file[4] % 10;
  h.width = SignedShort(GetLittleEndian(file, 5, 2));
  h.height = SignedShort(GetLittleEndian(file, 7, 2));
  h.originalWidth = SignedShort(GetLittleEndian(file, 11, 2));
  h.originalHeight = SignedShort(GetLittleEndian(file, 15, 2));
  h.exponent = file[17];
  // A threshold beyond 2^kLargestExponent is no coder's: the largest
  // transform of 8-bit pixels stays far below it, and a float holds it.
  if (!HeadIsValid(h) || h.exponent > kLargestExponent) return std::nullopt;
  return h;
}

namespace {

bool EncoderInputFits(const ImagePlane& transform, AswdrHead& head, const AswdrRegion* region) {
  head.width = transform.width;
  head.height = transform.height;
  const std::size_t size = static_cast<std::size_t>(transform.width) * static_cast<std::size_t>(transform.height);
  return HeadIsValid(head) && transform.v.size() == size && (region == nullptr || region->mask.size() == size);
}

}  // namespace

AswdrEncoded CompressAswdr(const ImagePlane& transform, AswdrHead head, AswdrCoder coder, const AswdrRegion* region) {
  if (!EncoderInputFits(transform, head, region)) return {};
  const PassRules rules{head.budget, head.waveletIndex, PassLimit::LoopTest, region};
  if (coder == AswdrCoder::Binary) return RunEncoder(transform, head, rules, BinarySender());
  return RunEncoder(transform, head, rules,
                    ArithmeticSender(region != nullptr ? SetBitTotal_WDR_AC() : SetBitTotal_ASWDR()));
}

AswdrEncoded CompressAswdrLossless(const ImagePlane& transform, AswdrHead head, const AswdrRegion* region) {
  if (!EncoderInputFits(transform, head, region)) return {};
  const PassRules rules{kNoBudget, head.waveletIndex, PassLimit::DownToOne, region};
  return RunEncoder(transform, head, rules, ArithmeticSender(SetBitTotal_ASWDR()));
}

std::optional<AswdrDecoded> DecompressAswdrLossless(const std::vector<std::uint8_t>& file) {
  const std::optional<AswdrHead> head = ReadAwgHead(file);
  if (!head || static_cast<std::int64_t>(head->width) * head->height > kMaxAswdrPixels) return std::nullopt;
  AswdrDecoded out;
  out.head = *head;
  const PassRules rules{kNoBudget, head->waveletIndex, PassLimit::DownToOne, nullptr};
  RunDecoder(out, rules, ArithmeticReceiver(file, kAwgHeadSize));
  return out;
}

std::optional<AswdrDecoded> DecompressAswdr(const std::vector<std::uint8_t>& file, double bpp, AswdrCoder coder) {
  const std::optional<AswdrHead> head = ReadAswdrHead(file);
  if (!head || static_cast<std::int64_t>(head->width) * head->height > kMaxAswdrPixels) return std::nullopt;
  AswdrDecoded out;
  out.head = *head;
  // SetBitBudget: the rate's budget, or the stored one when that is smaller.
  std::int32_t budget = BitBudgetOf(head->width, head->height, bpp);
  if (head->budget < budget) {
    budget = head->budget;
    out.rateTooLarge = true;
    out.report.push_back("Bpp value too large, decompressing at largest possible rate.");
  }
  const PassRules rules{budget, head->waveletIndex, PassLimit::LoopTest, nullptr};
  if (coder == AswdrCoder::Binary)
    RunDecoder(out, rules, BinaryReceiver(file));
  else
    RunDecoder(out, rules, ArithmeticReceiver(file, kAswdrHeadSize));
  return out;
}

void LastRefinement(ImagePlane& quant, const ScanOrder& order, double threshold, std::int64_t refinedInLastPass) {
  std::vector<std::int32_t> positions(quant.v.size());
  std::int32_t p = 0;
  for (std::int32_t& at : positions) {
    at = p;
    p = order.next[static_cast<std::size_t>(p)];
  }
  LastRefinement(quant, positions, threshold, refinedInLastPass);
}

void LastRefinement(ImagePlane& quant, const std::vector<std::int32_t>& positions, double threshold,
                    std::int64_t refinedInLastPass) {
  LastOffsets offsets{threshold, refinedInLastPass};
  for (const std::int32_t p : positions) offsets.Apply(quant.v[static_cast<std::size_t>(p)]);
}

}  // namespace keldo::wavelet

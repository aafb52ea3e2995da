#pragma once
// The workshop's wavelet-difference coder of a square transform, one bit
// plane a pass, and its decoder.
//
// The transform is an ImagePlane of side N (a power of two), At(x, y) =
// v[y * N + x], laid out as wdr_scan.h describes. Each pass halves the
// threshold T (the first pass uses half of GetThreshold's power of two) and
// walks the insignificant positions in the scan order:
//
//   significance  a coefficient with |c| >= T turns significant: its sign
//                 ("+" or "-"), then the digits of its run (the distance in
//                 the list from the former hit of the pass, the list's start
//                 counting as 0) least significant first without the leading
//                 1, as "0" and "1"; a run of 1 has no digits. The position
//                 leaves the list and joins the tail of the significant list
//                 with the magnitude T.
//   refinement    each coefficient that was significant before the pass, in
//                 the order it turned significant, gets the bit "1" when
//                 |c| >= q + T (and q grows by T), otherwise "0".
//
// Streams (WdrStreams): `symbols` holds the significance symbols of all
// passes and a final "+", the stop mark after the last run's digits;
// `refinement` the refinement bits of all passes. passCounts[k] is the
// coefficients significant after pass k less passCounts[k-1] (passCounts[0]
// the count after pass 0), so the count after pass k >= 1 is
// passCounts[k-1] + passCounts[k]. `passes` is the index of the last pass in
// the streams; passCounts holds passes + 1 entries.
//
// Charges (the running estimate of the file's length in bits): the start
// charge (none for a side below 11), 2 a symbol and 1 a refinement bit with
// the binary stage (a WdrBitMeter sets other charges), 16 for each pass
// begun; the stop mark is not charged. A budget stops the coder the moment
// the charge exceeds it, in either walk; a stopped pass still gets its
// pass count. At most 33 passes (0 to 32) are coded.
//
// Codes (the first byte of a file is one more): 1 lossy, 201 lossy coding of
// an integer transform, 101 exact lossless; 2..4 and 203, 204 name the
// entropy stages that charge through a meter. Codes 101..189 and above 190
// scale the transform by ScalingOfWT(levels, 1) first (image_transform.h)
// and the decoder undoes it.

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "wavelet/image_transform.h"
#include "wavelet/wdr_scan.h"

namespace keldo::wavelet {

inline constexpr std::int64_t kWdrWorkshopStartBits = 172;  // the workshop's file head and trailer
inline constexpr std::int64_t kWdrTwoDimStartBits = 180;    // the 2-D form's, one byte more
inline constexpr std::int64_t kWdrEntropyStartBits = 188;   // the prefix and arithmetic members
inline constexpr std::int64_t kWdrPassBits = 16;            // each pass's share of the trailer
inline constexpr int kWdrMaxPasses = 32;                    // the last pass index
inline constexpr int kWdrSmallSide = 11;                    // sides below are charged no start bits

enum class WdrStatus { Ok, BadPlane, BadScanMode, BadCode, BadStreams };

// Charges per symbol of an entropy stage. The binary stage (the default)
// charges 2 a symbol and 1 a refinement bit and holds nothing back; an
// arithmetic stage charges each emitted bit and reports its pending bits in
// Deferred(), which the budget test adds.
class WdrBitMeter {
 public:
  virtual ~WdrBitMeter() = default;
  virtual std::int64_t Symbol(char symbol) = 0;    // '0', '1', '+', '-'
  virtual std::int64_t Refinement(char bit) = 0;   // '0', '1'
  virtual std::int64_t Deferred() const { return 0; }
};

// The state after each pass, before the order is rebuilt: the pass index,
// its threshold, the significant count, SignMap (0, 1, -1) and QuantMag by
// position, and the insignificant positions in the order the next pass
// would walk them before any rebuild.
struct WdrPassState {
  int pass = 0;
  double threshold = 0.0;
  std::int32_t sigTotal = 0;
  const std::vector<std::int16_t>& signMap;
  const std::vector<float>& quantMag;
  const std::vector<std::int32_t>& insignificant;
};
using WdrPassObserver = std::function<void(const WdrPassState&)>;

// A region of interest: once the bits used (with any the stage holds back)
// reach `sharedBudget`, a significance test weighs each coefficient by its
// mask value, so that a coefficient outside the region (mask 0) no longer
// turns significant. Refinement is not weighed.
struct WdrRegion {
  const std::vector<std::uint8_t>* mask = nullptr;  // by position, as GetROIValues makes it
  std::int64_t sharedBudget = 0;
};

struct WdrEncodeSettings {
  int levels = 1;
  WdrRegion region;  // none while mask is null
  WdrScanMode scanMode = WdrScanMode::ZigZag;
  int code = 1;
  std::int64_t startBits = kWdrWorkshopStartBits;  // charged when N >= kWdrSmallSide
  WdrBitMeter* meter = nullptr;                    // null: the binary stage
  WdrPassObserver observer;                        // optional
};

struct WdrStreams {
  WdrStatus status = WdrStatus::Ok;
  int code = 1;
  int n = 0;
  int levels = 0;
  WdrScanMode scanMode = WdrScanMode::ZigZag;
  int exponent = 0;  // the starting threshold is 2^exponent
  int passes = 0;
  std::string symbols;
  std::string refinement;
  std::vector<std::int32_t> passCounts;
  std::int64_t bitsUsed = 0;
  std::int32_t sigTotal = 0;
  double psnr = 0.0;  // the PSNR member's last value, from the encoder's own magnitudes
};

// Round(N*N*bpp), ties to even; 0 for a negative or non-finite product.
std::int64_t BitBudgetOfRate(int n, double bpp);

// The lossy coder to a bit budget; codes 1..4 and 201..204.
WdrStreams ArrayEncodeToBitBudget(const ImagePlane& transform, const WdrEncodeSettings& settings, std::int64_t budget);
// The lossy coder to a PSNR: the same passes, stopped as soon as the PSNR of
// the encoder's magnitudes (sign times QuantMag, no midpoint) reaches
// `targetPsnr` (less 10 log10 4 for a code of 100 or above) after a
// coefficient turns significant or is refined; no budget and no start charge.
WdrStreams ArrayEncodeToMatchDistortion(const ImagePlane& transform, const WdrEncodeSettings& settings,
                                        double targetPsnr);
// Every bit of an integer transform: code 101 (103, 104 kept when set), the
// passes running down to the one of threshold 1, no budget.
WdrStreams ArrayEncodeToBitBudgetLossless(const ImagePlane& transform, const WdrEncodeSettings& settings);

// The mean square of all-zero reconstruction: the sum of (c/N)^2.
double ComputeDistortion(const ImagePlane& transform);
// 10 log10(255^2 / meanSquare); infinite for 0.
double FPSNR(double meanSquare);
// The list positions a run's digits skip: with digits d1..dk, the first the
// least significant, sum d_i 2^(i-1) + 2^k - 1. The empty string gives 1;
// callers take an empty string as no skip. -1 for more than 40 digits.
std::int64_t NumberOfSteps(std::string_view digits);

enum class WdrReconstruction {
  LastRefinement,  // each magnitude moved into its interval (TheLastRefinement)
  Truncated        // the magnitudes as decoded
};

struct WdrDecoded {
  WdrStatus status = WdrStatus::Ok;
  ImagePlane plane;  // signed values, the scaling of an integer code undone
  int passesRun = 0;
};

// The decoder of the binary streams: passes 0..streams.passes, each
// reading the new significant coefficients the pass counts announce, then
// one refinement bit for each coefficient significant before the pass;
// decoding ends where the refinement bits run out. With LastRefinement a
// coefficient refined in the last pass gains T/2, any other T (T the last
// pass's threshold); for the lossless codes the amounts are those of T/2
// and only an amount of at least 0.9 is added, so a complete decode stays
// exact. Malformed streams give BadStreams and an empty plane.
WdrDecoded Decode(const WdrStreams& streams, WdrReconstruction reconstruction = WdrReconstruction::LastRefinement,
                  const WdrPassObserver& observer = {});

}  // namespace keldo::wavelet

#pragma once
// The image processor's adaptively scanned wavelet difference reduction
// coder, binary (.awd) and arithmetic (.awe), and its file head.
//
// Passes halve a threshold T from the power of two at or above the largest
// |coefficient|. A pass walks every position in the scan order: a position
// with |c| >= the former threshold is passed over; one below T lengthens the
// current run; any other turns significant: the run (the count of positions
// since the last one, itself included) goes out, then its sign, and the
// decoder's value becomes +-T. The walk ends with the run of the remaining
// positions plus one, which the decoder's counter cannot reach. From the
// second pass on, the values significant before the pass each get a bit that
// moves them T away from zero or not. After each pass the scan order adapts
// (CreateNewScanOrder). Both sides stop when the bits used reach the budget,
// after 32 passes with the 9/7 wavelet, at T = 1 with an integer wavelet,
// and in any case after kMaxAswdrPasses passes.
//
// A run r goes out, below its leading 1, as the digits of r lowest first:
// binary as the pairs 0d, closed by a 1; arithmetic as symbols 0 and 1
// closed by the end mark 2.
//
// Bits used start from 124 (binary) or 132 (arithmetic). The binary coder
// tests its budget (>=) after every position of the significance walk that
// is not passed over, after the pass-end run and after each refinement bit,
// and its decoder reads the same bits at the same tests, so at one budget
// both stop at the same place. The arithmetic coder counts the bits it owes
// (Pending) as used and tests after significant positions only; its decoder
// counts the 9 bits it reads ahead, so at the coder's budget it stops a few
// symbols earlier. A binary stream ends with its partial byte and a byte
// 128, an arithmetic one with DoneEncoding and its partial byte.
//
// Report lines, two after each complete pass:
//   "Number of significant values encoded:  <count>.  Threshold = <T>"
//   "Bit rate:  <bits used / (width * height)>"
// ("decoded" on decoding; numbers in the plain text form of PlainNumber).
// The decoder's report starts with the rate message when it applies.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "wavelet/aswdr_scan.h"
#include "wavelet/image_transform.h"

namespace keldo::wavelet {

enum class AswdrCoder { Binary, Arithmetic };  // .awd, .awe

// A bound on the passes that the stopping rules above reach first for any
// head a coder writes (the exponent is a byte); it ends the degenerate
// integer-wavelet case with T starting below 1.
constexpr int kMaxAswdrPasses = 300;
// The largest plane the decoders make: width * height.
constexpr std::int64_t kMaxAswdrPixels = std::int64_t{1} << 24;

struct AswdrHead {
  std::int32_t budget = 0;
  int levels = 0;
  int waveletIndex = 1;
  int width = 0, height = 0, originalWidth = 0, originalHeight = 0;
  int exponent = 0;
};

// The 18-byte head, little-endian: budget (4), levels * 10 + wavelet (1),
// width (2), 2 (2), originalWidth (2), 2 (2), originalHeight (2), exponent
// (1). Sizes are signed 16-bit.
constexpr std::size_t kAswdrHeadSize = 18;
// The largest threshold exponent a head may give.
constexpr int kLargestExponent = 64;
std::vector<std::uint8_t> WriteAswdrHead(const AswdrHead& head);
// Nothing for a file shorter than the head, a variant tag other than 2, a
// size not positive or not a multiple of 2^levels, a wavelet outside 1..3
// or levels outside 1..25, or an exponent above kLargestExponent. The
// original sizes are not checked.
std::optional<AswdrHead> ReadAswdrHead(const std::vector<std::uint8_t>& file);

// The lossless file (.awg): the head of the coders above less its budget,
// 14 bytes: levels * 10 + wavelet (1), width (2), 2 (2), originalWidth (2),
// 2 (2), originalHeight (2), exponent (1); the arithmetic stream follows.
// Read with the same checks as ReadAswdrHead; the budget field reads 0.
constexpr std::size_t kAwgHeadSize = 14;
std::vector<std::uint8_t> WriteAwgHead(const AswdrHead& head);
std::optional<AswdrHead> ReadAwgHead(const std::vector<std::uint8_t>& file);

// A region of interest for an encoder: `mask` by position (y * width + x),
// non-zero where a coefficient bears on the region (GetROIValues). Once the
// bits used reach `sharedBudget` the coder is in region mode: a position
// outside the region whose value is still zero can no longer turn
// significant, and counts in the runs as one below the threshold. Values
// significant already keep being refined. The test comes before each
// position of a significance walk that follows a change in the bits used:
// at the start of the walk and after each value turned significant. The
// decoders need no mask.
struct AswdrRegion {
  std::vector<std::uint8_t> mask;
  std::int64_t sharedBudget = 0;
};

struct AswdrEncoded {
  std::vector<std::uint8_t> file;   // head + stream + end bytes, exactly as the coder writes it
  ImagePlane quant;                 // the encoder's values (no final offsets)
  std::vector<std::string> report;  // the report lines, in order
  std::int64_t bitsUsed = 0;        // when the passes stopped (arithmetic: with the pending bits)
  int passes = 0;                   // passes begun
  bool stoppedByLoopTest = false;   // the pass limit rather than the budget ended it
  int regionModePass = 0;           // the pass in which region mode began; 0 if it did not
};

// The coder from the threshold on: `transform` is the transformed image and
// `head` holds the budget, levels, wavelet and original sizes; the width and
// height are the plane's and the exponent comes from GetThreshold. An empty
// file for a plane with a head that ReadAswdrHead would refuse.
// With a region the binary coder starts its bits used from 124 as
// without, the arithmetic one from SetBitTotal_WDR_AC (140); the files are
// the plain coders' and their decoders read them.
AswdrEncoded CompressAswdr(const ImagePlane& transform, AswdrHead head, AswdrCoder coder,
                           const AswdrRegion* region = nullptr);

// The lossless coder (.awg): the arithmetic coder's passes with no budget,
// down to the pass of threshold 1 (the passes go on while T >= 2), ended by
// DoneEncoding in context 3 (the end mark of the pass-end run) and the
// partly filled byte. With integer coefficients below the start threshold
// the values coded are the coefficients exactly. A coefficient of exactly
// the start threshold is never coded (the start threshold is M itself when
// the largest magnitude M is a power of two) and the decoder then parts
// from the coder, as in the lossy coders. The head's budget is not used.
// With a region, region mode begins at its shared budget, counted from 132.
AswdrEncoded CompressAswdrLossless(const ImagePlane& transform, AswdrHead head, const AswdrRegion* region = nullptr);

struct AswdrDecoded {
  AswdrHead head;
  ImagePlane quant;                  // after LastRefinement, when it applies
  ImagePlane quantBeforeRefinement;  // the values as decoded
  std::vector<std::string> report;   // including the rate message when it applies
  bool rateTooLarge = false;
  bool lastRefinement = false;       // LastRefinement was run
  std::int64_t bitsUsed = 0;
  int passes = 0;
};

// The decoder at the budget of `bpp` for the head's sizes, or the stored one
// when that is smaller ("Bpp value too large, decompressing at largest
// possible rate."). Nothing for a bad head or a plane above kMaxAswdrPixels.
// A stream cut short reads as zero bits; a run longer than any plane ends
// the decoding as the budget does. LastRefinement follows unless an integer
// wavelet stopped at its last pass.
std::optional<AswdrDecoded> DecompressAswdr(const std::vector<std::uint8_t>& file, double bpp, AswdrCoder coder);
// The lossless decoder: the passes down to threshold 1 with no budget and
// no LastRefinement. Nothing for a bad head or a plane above
// kMaxAswdrPixels; a stream cut short reads as zero bits.
std::optional<AswdrDecoded> DecompressAswdrLossless(const std::vector<std::uint8_t>& file);

// The final offsets, on the positions in list order: with T the last pass's
// threshold, a value with |v| >= 2T moves T/2 away from zero when it is among
// the first `refinedInLastPass` such values, T otherwise; one with
// T <= |v| < 2T moves T/2; smaller ones stay.
void LastRefinement(ImagePlane& quant, const ScanOrder& order, double threshold, std::int64_t refinedInLastPass);
// The same on the positions of a flat order, in their order.
void LastRefinement(ImagePlane& quant, const std::vector<std::int32_t>& positions, double threshold,
                    std::int64_t refinedInLastPass);

}  // namespace keldo::wavelet

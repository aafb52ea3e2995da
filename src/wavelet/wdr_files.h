#pragma once
// The workshop's coders as files: the wavelet-difference coder of
// wdr_coder.h with each entropy stage, producing a .wic or .wc2 file
// (wic_file.h), and the way back from a file to the coefficient matrix.
//
// Members, their codes and start charges (the running estimate of the
// file's length in bits begins there; no start charge below side 11, none
// for the PSNR members):
//
//   member                                 stage         code       start
//   ArrayEncodeToBitBudget (binary)        symbols 4/B   1, 201     172 (.wc2 180)
//   ArrayEncodeHuffToBitBudget             prefix code   2          188
//   ArrayEncodeArithToBitBudget            arith 0-order 3, 203     188
//   ArrayEncodeArithToBitBudgetMM          arith mixed   4, 204     188
//   ...ToMatchDistortion of each           as above      as above   none
//   ArrayEncodeToBitBudgetLossless         symbols 4/B   101        172 (.wc2 180)
//   ArrayEncodeArithToBitBudgetLossless    arith 0-order 103        188
//   ArrayEncodeArithToBitBudgetMMLossless  arith mixed   104        188
//
// Charges per symbol by stage: binary 2 a symbol; prefix 3 a sign, 2 a
// digit "1", 1 a digit "0"; arithmetic every bit the stream emits (a
// settled bit and the deferred bits behind it), the budget test adding the
// bits both streams still defer. A refinement bit costs 1 in the binary and
// prefix stages. Every pass begun costs 16. The stop mark after the last
// pass is coded in the file but not charged. The 2xx codes scale the
// transform by ScalingOfWT(levels, 1) before coding, the 1xx codes too (and
// code every bit down to the pass of threshold 1); decoding undoes it.
//
// The region members of the two-dimensional form's .wc2 files,
// ROIArrayEncodeArithToBitBudgetMM and ROIArrayEncodeArithToBitBudgetMMLossless,
// are the mixed-order arithmetic members with the region rule of
// WdrRegion: the whole image gets the first `sharedBudget` bits, the rest go
// to the coefficients that bear on the region. The file is a plain one that
// any decoder reads; its head marks the region (WdrFileHead).

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "wavelet/image_transform.h"
#include "wavelet/wdr_coder.h"
#include "wavelet/wic_file.h"

namespace keldo::wavelet {

// What a file adds to the streams: the .wc2 wavelet byte and region value.
struct WdrFileHead {
  bool wc2 = false;
  int waveletByte = 1;        // .wc2 only; above 9 a region follows
  std::int32_t roiValue = 0;  // .wc2 with waveletByte above 9
};

struct WdrMemberSettings {
  int levels = 1;
  WdrScanMode scanMode = WdrScanMode::ZigZag;
  bool integerCode = false;  // lossy coding of an integer transform: 201, 203, 204
  WdrFileHead head;
  WdrRegion region;          // the region members only
};

// One member's output: the streams as the binary decoder reads them (with
// the charges), and the file.
struct WdrCodedFile {
  WdrStatus status = WdrStatus::Ok;
  WdrStreams streams;
  WicFile file;
};

// --- The writers: streams into a file's fields. SaveCodedData2Array keeps
// the streams as characters (stage 1 packs them on writing);
// SaveHuffCodedData2Array prefix-codes the symbols and packs the
// refinement bits eight a byte.
WicFile SaveCodedData2Array(const WdrStreams& streams, const WdrFileHead& head);
WicFile SaveHuffCodedData2Array(const WdrStreams& streams, const WdrFileHead& head);

// --- The members. The budget is in bits; the PSNR target in dB.
WdrCodedFile ArrayEncodeHuffToBitBudget(const ImagePlane& transform, const WdrMemberSettings& settings,
                                        std::int64_t budget);
WdrCodedFile ArrayEncodeArithToBitBudget(const ImagePlane& transform, const WdrMemberSettings& settings,
                                         std::int64_t budget);
WdrCodedFile ArrayEncodeArithToBitBudgetMM(const ImagePlane& transform, const WdrMemberSettings& settings,
                                           std::int64_t budget);
WdrCodedFile ArrayEncodeHuffToMatchDistortion(const ImagePlane& transform, const WdrMemberSettings& settings,
                                              double targetPsnr);
WdrCodedFile ArrayEncodeArithToMatchDistortion(const ImagePlane& transform, const WdrMemberSettings& settings,
                                               double targetPsnr);
WdrCodedFile ArrayEncodeArithToMatchDistortionMM(const ImagePlane& transform, const WdrMemberSettings& settings,
                                                 double targetPsnr);
// The lossless members ignore settings.integerCode. They are exact unless
// the largest magnitude after scaling is itself a power of two: the start
// threshold is then that value, and the passes down to threshold 1 bring
// it to one less.
WdrCodedFile ArrayEncodeArithToBitBudgetLossless(const ImagePlane& transform, const WdrMemberSettings& settings);
WdrCodedFile ArrayEncodeArithToBitBudgetMMLossless(const ImagePlane& transform, const WdrMemberSettings& settings);
// The binary members as files: the coders of wdr_coder.h, starting at 172
// bits, or 180 for a .wc2.
WdrCodedFile ArrayEncodeToBitBudget(const ImagePlane& transform, const WdrMemberSettings& settings,
                                    std::int64_t budget);
// BadPlane for settings without a region mask of the plane's size.
WdrCodedFile ROIArrayEncodeArithToBitBudgetMM(const ImagePlane& transform, const WdrMemberSettings& settings,
                                              std::int64_t budget);
WdrCodedFile ROIArrayEncodeArithToBitBudgetMMLossless(const ImagePlane& transform, const WdrMemberSettings& settings);
WdrCodedFile ArrayEncodeToMatchDistortion(const ImagePlane& transform, const WdrMemberSettings& settings,
                                          double targetPsnr);
WdrCodedFile ArrayEncodeToBitBudgetLossless(const ImagePlane& transform, const WdrMemberSettings& settings);

// --- The entry point of the forms.

enum class WdrStopKind { BitRate, Psnr };
enum class WdrEntropyStage { Binary, Huffman, Arithmetic };
enum class WdrSourceModel { ZeroOrder, MixedOrders };

struct WdrEncodeOptions {
  int levels = 1;
  int scanMode = 1;  // 1..4
  WdrStopKind stopKind = WdrStopKind::BitRate;
  double target = 1.0;  // bpp or dB
  WdrEntropyStage stage = WdrEntropyStage::Arithmetic;
  WdrSourceModel model = WdrSourceModel::ZeroOrder;
  // The "Lossless" option. With a target of 0 the transform is coded
  // exactly (101, 103, 104; the prefix stage takes the binary lossless
  // member); with a target above 0 the integer transform is coded lossily to
  // that target (201, 203, 204; the prefix stage, which has no such code,
  // writes 2).
  bool lossless = false;
  WdrFileHead head;
  // A region of interest: its mask (GetROIValues of the plane) and the
  // fraction of the bits it gets. With a region, the exact lossless option
  // with the mixed-order model runs ROIArrayEncodeArithToBitBudgetMMLossless,
  // the lossy bit-rate option with the mixed-order model
  // ROIArrayEncodeArithToBitBudgetMM, and any other choice codes nothing
  // (RegionNotCoded). The head then takes WaveletByte = wavelet + 10 *
  // round(log2 N) and RoiValue = Int(0.45 * bit total * (1 - fraction)),
  // which is also the whole image's share: the bit total is the rate's
  // budget, or for the exact option the bits of a plain lossless run.
  const std::vector<std::uint8_t>* regionMask = nullptr;
  double regionFraction = 0.9;
};

enum class WdrEncodeStatus { Ok, BadTarget, BadLevels, BadPlane, BadScanMode, RegionNotCoded };

struct WdrEncodeReport {
  int completedPasses = 0;                     // a pass cut by the stop rule does not count
  std::int64_t symbolCount = 0;                // significance symbols with the stop mark
  std::array<std::int64_t, 4> symbolCounts{};  // "0", "1", "+", "-"
  std::int64_t bitsUsed = 0;                   // the coder's running estimate
  std::int64_t minimumFileBytes = 0;           // bitsUsed in whole bytes, rounded up
  std::int32_t significantCount = 0;
  std::optional<double> psnr;                  // the PSNR members' last value
};

struct WdrEncodeResult {
  WdrEncodeStatus status = WdrEncodeStatus::Ok;
  // The catalogue message of a refused command: 81 "PSNR value must be
  // positive", 82 "Bpp value must be positive", 83 "PSNR value must be
  // non-negative", 84 "Bpp value must be non-negative", 21 "Improper number
  // of levels"; 0 otherwise.
  int message = 0;
  WicFile file;
  WdrStreams streams;
  WdrEncodeReport report;
};

// Codes `plane` (n by n, row y at y * n, a power of two from 64 to 1024)
// with the member the options pick: lossless with a target of 0 runs a
// lossless member; otherwise the stop kind picks the budget (Round(n*n*bpp)
// bits) or the PSNR member of the stage and model. A lossy target must be
// above 0, a lossless one 0 or above; levels 1..HighestLevel(n).
WdrEncodeResult EncodeTransform(const std::vector<float>& plane, int n, const WdrEncodeOptions& options);

// The report box's lines: "Number of Completed Passes: ", "Number of
// Symbols: ", ".  Minimum File length: ", "  bytes", "Number of significant
// values: ", "Symbol Counts. " with each symbol, ": " and its count, ".  "
// between, and "Distortion (PSNR): " when known; lines end in "\r\n".
std::string WdrReportText(const WdrEncodeReport& report);

// --- Decoding.

// GetCompressedData2 after the file is read: the streams the binary decoder
// takes. Stages 0 and 1 as stored (the refinement bits of stage 1 with the
// padding of their last byte); stage 2 the `count` symbols read back from
// the prefix code; stages 3 and 4 by running the arithmetic decoders, each
// bounded by the most symbols the pass counts allow. Nothing for a code of
// no known stage, pass counts that exceed the plane, or a stream that does
// not decode to its end symbol within its bytes and bound.
std::optional<WdrStreams> GetCompressedData2(const WicFile& file);

struct WdrDecodedFile {
  ImagePlane plane;  // the coefficient matrix: QuantMag times SignMap, any scaling undone
  int code = 0;
  int levels = 0;
  WdrScanMode scanMode = WdrScanMode::ZigZag;
  int waveletByte = 1;
  std::int32_t roiValue = 0;
  int passesRun = 0;
};

// The file's bytes to the coefficient matrix; nothing when the bytes do not
// read, decode or fit (the caller reports message 85 "Error decompressing
// file").
std::optional<WdrDecodedFile> DecodeWicFile(const std::vector<std::uint8_t>& bytes, bool wc2);

}  // namespace keldo::wavelet

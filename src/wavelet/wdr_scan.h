#pragma once
// The scan orders of the workshop's wavelet-difference coder on a square
// N by N transform of L levels, and its threshold helpers.
//
// Layout (the same as the image transforms'): the baseband is the corner
// x, y < B with B = N / 2^L; the level of side S (B, 2B, ..., N/2) holds an
// upper block x in S..2S-1, y < S, a lower block x < S, y in S..2S-1 and a
// diagonal block x, y in S..2S-1. Positions are numbered p = y * N + x.
//
// A whole-image order is a ScanOrder (aswdr_scan.h): next[p] is the
// position after p, the NextX/NextY pair of one position in one integer;
// the last position (N-1, N-1) links to itself. The coder walks the
// insignificant positions of the current order as a flat list of position
// numbers: the static orders walked from (0, 0), less the positions that
// have turned significant, or the list a dynamic rebuild returns. A rebuild
// writes no end mark; the list's length is the number of insignificant
// positions.
//
// The starting threshold is GetThreshold of aswdr_scan.h, shared with the
// image processor's coders.

#include <cstdint>
#include <vector>

#include "wavelet/aswdr_scan.h"

namespace keldo::wavelet {

// The four scanning modes, numbered as the files store them.
enum class WdrScanMode : int { ZigZag = 1, StaticTree = 2, DynamicParentChild = 3, DynamicContext = 4 };

// The two static orders: Subband (the ZigZag mode, and the base of the
// parent/child rebuild) and Tree (the Static Tree mode, and the base of the
// context rebuild).
enum class WdrBaseOrder : int { Subband = 1, Tree = 2 };

// The levels a side allows: 64 gives 4, 128 gives 5, 256 gives 6, 512 gives
// 7, 1024 gives 8, any other side 0.
int HighestLevel(int n);

// Whether n, levels make a plane these orders can be built on: n a power of
// two from 2 to 32768 and 1 <= levels <= log2 n.
bool WdrPlaneUsable(int n, int levels);

// Positions by level k = 0..levels, the baseband first: with
// B = max(1, N / 2^L): B*B, 3*B*B, then four times the former count.
std::vector<std::int32_t> LevelCount(int n, int levels);

// Halves `threshold` until it is at most `floor` (floor > 0; a threshold
// already at or below it comes back as it is).
double GetTheLastThreshold(double floor, double threshold);

// The zigzag of the block 0..m by 0..m as a link table: entry y*(m+1)+x is
// the block index of the successor. Anti-diagonals d = 0..2m, the even ones
// walked with x rising, the odd ones with x falling; each diagonal's end
// links to the next one's start, and (m, m) links to itself (so m = 0 gives
// one position linked to itself).
std::vector<std::int32_t> GetZigZag(int m);
// The column boustrophedon of the block 0..m by 0..m (link table as above):
// column 0 top to bottom, column 1 bottom to top, and so on, each column's
// end stepping one column right; the last column's end links out of the
// block: to (m+1, m) or (m+1, 0), outside the table, so it holds -1.
std::vector<std::int32_t> GetHorizScan(int m);
// The row boustrophedon, the subscripts exchanged: row 0 left to right, row
// 1 right to left, each row's end stepping one row down; the last row's end
// holds -1.
std::vector<std::int32_t> GetVertScan(int m);

// The whole-image static order (n, levels must pass WdrPlaneUsable).
// Subband: the baseband by the zigzag; then for each level from the coarsest
// its upper block by columns, its lower block by rows (both boustrophedon),
// its diagonal block by the zigzag. Tree: the baseband by the zigzag; then
// the coarsest level spot by spot in the baseband's zigzag order, each
// spot's upper, lower and diagonal coefficient; then each finer level spot
// by spot in the same order, each spot's upper tile by columns, lower tile
// by rows and diagonal tile by the zigzag.
void CreateScanOrder(ScanOrder& order, int levels, int n, WdrBaseOrder mode);

// The positions a walk along `order` from (0, 0) visits: n*n of them.
std::vector<std::int32_t> WalkScanOrder(const ScanOrder& order);

// The parent/child rebuild. `signMap` holds n*n entries, 0 for an
// insignificant position. Returns the insignificant positions in the new
// order: level by level, each level's positions in the order their parents
// were listed; within a level first (for levels 1..L-1) those with a
// significant child, then the rest, and the children of significant parents
// ahead of all others on the next level. Children of a parent come in the
// order of the parent's block: upper by columns (down, across, up), lower by
// rows (across, down, back), diagonal row by row.
std::vector<std::int32_t> CreateNewScanningOrder(int n, int levels, const std::vector<std::int16_t>& signMap);

// The context rebuild after a pass of threshold `threshold`: `staticWalk` is
// the Tree order's walk (WalkScanOrder). The baseband and the coarsest level
// keep the static order; on each finer level the insignificant positions
// whose prediction p reaches threshold/2 come first, the others after, both
// in static order. p, in float arithmetic, sums half the two neighbours the
// coefficient's block scans it after (the right one at the row's end
// replaced by the left; on the block's first row the neighbours below and
// right), half the parent and, for the upper and lower blocks, half the
// diagonal sibling, for the diagonal block a quarter of each of the two
// other siblings, all from `quantMag` (n*n entries; a neighbour outside the
// plane counts 0).
std::vector<std::int32_t> CreateNewScanningOrderSiblingsSTO(double threshold, const std::vector<float>& quantMag, int n,
                                                            int levels, const std::vector<std::int16_t>& signMap,
                                                            const std::vector<std::int32_t>& staticWalk);

// Whether a dynamic mode rebuilds its order after `passesDone` finished
// passes of a file with coding code `code`: the context mode after every
// pass; the parent/child mode from the fifth pass on for codes below 100,
// from the first for codes above 190, from the second for the exact
// lossless codes in between; the static modes never.
bool RebuildsAfterPass(WdrScanMode mode, int passesDone, int code);

}  // namespace keldo::wavelet

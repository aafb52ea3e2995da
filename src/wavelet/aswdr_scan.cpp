#include "wavelet/aswdr_scan.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace keldo::wavelet {
namespace {

// Link-writing on an order, in plane coordinates.
struct Linker {
  ScanOrder& order;
  void Link(int fromX, int fromY, int toX, int toY) const {
    order.next[static_cast<std::size_t>(order.Index(fromX, fromY))] = order.Index(toX, toY);
  }
  // Links the walk in sequence, shifted by (dx, dy); the last position is
  // left for the caller.
  void LinkWalk(const std::vector<BlockPosition>& walk, int dx, int dy) const {
    for (std::size_t i = 0; i + 1 < walk.size(); ++i)
      Link(walk[i].x + dx, walk[i].y + dy, walk[i + 1].x + dx, walk[i + 1].y + dy);
  }
};

// The lower block x in 0..s, y in h0..h0+t: rows from the top, the first
// left to right, each row's end going straight down; the last position goes
// on to (w0, 0).
void LinkLowerBlock(const Linker& l, int w0, int h0, int s, int t) {
  int dir = 1;
  for (int r = 0; r <= t; ++r, dir = -dir) {
    const int y = h0 + r;
    const int first = dir == 1 ? 0 : s, last = dir == 1 ? s : 0;
    for (int c = first; c != last; c += dir) l.Link(c, y, c + dir, y);
    if (r < t)
      l.Link(last, y, last, y + 1);
    else
      l.Link(last, y, w0, 0);
  }
}

// The upper block x in w0..w0+s, y in 0..t: columns from the left, the
// first top to bottom, each column's end going straight across; the last
// position goes on to (w0, h0).
void LinkUpperBlock(const Linker& l, int w0, int h0, int s, int t) {
  int dir = 1;
  for (int c = 0; c <= s; ++c, dir = -dir) {
    const int x = w0 + c;
    const int first = dir == 1 ? 0 : t, last = dir == 1 ? t : 0;
    for (int r = first; r != last; r += dir) l.Link(x, r, x, r + dir);
    if (c < s)
      l.Link(x, last, x + 1, last);
    else
      l.Link(x, last, w0, h0);
  }
}

// The tail of the list being built for the next level.
struct ChildList {
  ScanOrder& order;
  std::int32_t head = -1, tail = -1;
  void Append(int x, int y) {
    const std::int32_t p = order.Index(x, y);
    if (head < 0)
      head = p;
    else
      order.next[static_cast<std::size_t>(tail)] = p;
    tail = p;
  }
};

// The four children of (x, y) in the order its block gives them: band 2
// (lower, x < edgeX), band 1 (upper, y < edgeY), band 3 (diagonal).
void AssignNewScanValues(ChildList& list, int x, int y, int edgeX, int edgeY) {
  const int cx = 2 * x, cy = 2 * y;
  if (x < edgeX) {
    list.Append(cx, cy), list.Append(cx + 1, cy), list.Append(cx + 1, cy + 1), list.Append(cx, cy + 1);
  } else if (y < edgeY) {
    list.Append(cx, cy), list.Append(cx, cy + 1), list.Append(cx + 1, cy + 1), list.Append(cx + 1, cy);
  } else {
    list.Append(cx, cy), list.Append(cx + 1, cy), list.Append(cx, cy + 1), list.Append(cx + 1, cy + 1);
  }
}

int NonZeroChildren(const ImagePlane& quant, int x, int y) {
  const int cx = 2 * x, cy = 2 * y;
  return (quant.At(cx, cy) != 0.0f ? 1 : 0) + (quant.At(cx + 1, cy) != 0.0f ? 1 : 0) +
         (quant.At(cx, cy + 1) != 0.0f ? 1 : 0) + (quant.At(cx + 1, cy + 1) != 0.0f ? 1 : 0);
}

// CreateNewScanOrder's three walks over each level's list. `weigh(level,
// walk, x, y, nonZeroChildren)` is told of every parent whose children are
// appended, after they are: walk 1 significant parents, 2 insignificant ones
// with a non-zero child, 3 the rest.
template <typename Weigh>
void RebuildLinkedOrder(ScanOrder& order, int levels, const ImagePlane& quant, double threshold, Weigh weigh) {
  const int bw = std::max(order.width >> levels, 1), bh = std::max(order.height >> levels, 1);
  int edgeX = bw, edgeY = bh;
  std::int32_t start = order.Index(0, bh);
  std::int64_t count = 3LL * bw * bh;
  const auto magnitude = [&](std::int32_t p) { return std::fabs(static_cast<double>(quant.v[static_cast<std::size_t>(p)])); };
  for (int level = 1; level < levels; ++level) {
    if (4 * edgeX > order.width || 4 * edgeY > order.height) break;
    ChildList children{order};
    std::int32_t last = start;
    for (int walk = 1; walk <= 3; ++walk) {
      std::int32_t p = start;
      for (std::int64_t i = 0; i < count; ++i) {
        const int x = p % order.width, y = p / order.width;
        const bool significant = magnitude(p) >= threshold;
        const int family = significant ? 0 : NonZeroChildren(quant, x, y);
        const bool take = walk == 1   ? significant
                          : walk == 2 ? !significant && family > 0
                                      : !significant && family == 0;
        if (take) {
          AssignNewScanValues(children, x, y, edgeX, edgeY);
          weigh(level, walk, x, y, family);
        }
        last = p;
        if (i + 1 < count) p = order.next[static_cast<std::size_t>(p)];
      }
    }
    order.next[static_cast<std::size_t>(last)] = children.head;
    start = children.head;
    count *= 4;
    edgeX *= 2;
    edgeY *= 2;
  }
}

// Eight bytes of 0 or 1 at a time, as a little-endian word: kEachByte has
// 1 in each byte, and a word times it has their sum in its top byte.
constexpr std::uint64_t kEachByte = 0x0101010101010101ull;

std::uint64_t Word(const std::uint8_t* at) {
  std::uint64_t word;
  std::memcpy(&word, at, sizeof word);
  return word;
}

// The four pairs of bytes of a word, each pair ored into one byte, in the
// low four bytes.
std::uint64_t PairsOred(std::uint64_t u) {
  u = (u | u >> 8) & 0x00FF00FF00FF00FFull;
  u = (u | u >> 8) & 0x0000FFFF0000FFFFull;
  return (u | u >> 16) & 0x00000000FFFFFFFFull;
}

// SortParents' tally of one level: parents by kind and whether a code
// changed.
struct SortTally {
  std::size_t nonZeroParents = 0, withChild = 0;
  bool changed = false;
};

typedef std::uint8_t Bytes32 __attribute__((vector_size(32)));

// The sum of 32 bytes of 0 or 1.
inline __attribute__((always_inline)) std::size_t ByteSum(const Bytes32& bytes) {
  std::uint64_t words[4];
  std::memcpy(words, &bytes, sizeof words);
  std::size_t sum = 0;
  for (std::uint64_t word : words) sum += static_cast<std::size_t>((word * kEachByte) >> 56);
  return sum;
}

// SortParents' eight-at-a-time step on thirty-two parents at a time, from x
// while the row's run [x, to) lasts; the next x back. The children's bytes
// of two rows ored, then each pair of neighbours ored by taking the even
// and the odd bytes apart.
inline __attribute__((always_inline)) int SortThirtyTwos(const std::uint8_t* row, const std::uint8_t* children,
                                                         std::size_t w, std::uint8_t* codes, int x, int to,
                                                         std::uint8_t blockCode, SortTally& tally) {
  for (; x + 32 <= to; x += 32) {
    const std::uint8_t* c = children + 2 * static_cast<std::size_t>(x);
    Bytes32 a0, a1, b0, b1, parents, old;
    std::memcpy(&a0, c, sizeof a0);
    std::memcpy(&a1, c + 32, sizeof a1);
    std::memcpy(&b0, c + w, sizeof b0);
    std::memcpy(&b1, c + w + 32, sizeof b1);
    const Bytes32 low = a0 | b0, high = a1 | b1;
    const Bytes32 any = __builtin_shufflevector(low, high, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30, 32, 34, 36, 38, 40, 42, 44, 46, 48, 50, 52, 54, 56, 58, 60, 62) |
                        __builtin_shufflevector(low, high, 1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31, 33, 35, 37, 39, 41, 43, 45, 47, 49, 51, 53, 55, 57, 59, 61, 63);
    std::memcpy(&parents, row + x, sizeof parents);
    const Bytes32 kinds = (2 - any) & reinterpret_cast<Bytes32>(parents == 0);
    const Bytes32 code = kinds | blockCode;
    std::memcpy(&old, codes + x, sizeof old);
    const Bytes32 differs = reinterpret_cast<Bytes32>(old != code) & 1;
    std::memcpy(codes + x, &code, sizeof code);
    tally.changed = tally.changed || ByteSum(differs) != 0;
    tally.nonZeroParents += ByteSum(parents);
    tally.withChild += ByteSum(kinds & 1);
  }
  return x;
}

__attribute__((target("avx2"))) int SortThirtyTwosWide(const std::uint8_t* row, const std::uint8_t* children,
                                                       std::size_t w, std::uint8_t* codes, int x, int to,
                                                       std::uint8_t blockCode, SortTally& tally) {
  return SortThirtyTwos(row, children, w, codes, x, to, blockCode, tally);
}

}  // namespace

std::vector<BlockPosition> GetZigZag(int maxX, int maxY) {
  std::vector<BlockPosition> walk;
  walk.reserve(static_cast<std::size_t>(maxX + 1) * static_cast<std::size_t>(maxY + 1));
  for (int d = 0; d <= maxX + maxY; ++d) {
    const int low = std::max(0, d - maxY), high = std::min(d, maxX);
    if (d % 2 == 0) {
      for (int x = low; x <= high; ++x) walk.push_back({x, d - x});
    } else {
      for (int x = high; x >= low; --x) walk.push_back({x, d - x});
    }
  }
  return walk;
}

void CreateScanOrder(ScanOrder& order, int levels, int width, int height) {
  order.width = width;
  order.height = height;
  order.next.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0);
  if (width <= 0 || height <= 0) return;
  const Linker l{order};
  int w0 = width >> levels, h0 = height >> levels;
  for (int k = 1; k <= levels; ++k) {
    w0 = std::max(w0, 1);
    h0 = std::max(h0, 1);
    if (2 * w0 > width || 2 * h0 > height) break;
    const int s = w0 - 1, t = h0 - 1;
    const std::vector<BlockPosition> zig = GetZigZag(s, t);
    if (k == 1) {
      l.LinkWalk(zig, 0, 0);
      l.Link(s, t, 0, h0);
    }
    LinkLowerBlock(l, w0, h0, s, t);
    LinkUpperBlock(l, w0, h0, s, t);
    l.LinkWalk(zig, w0, h0);
    const int nextY = 2 * w0 < height ? 2 * w0 : 2 * h0;
    if (2 * h0 < height) l.Link(w0 + s, h0 + t, 0, nextY);
    w0 *= 2;
    h0 *= 2;
  }
  l.Link(width - 1, height - 1, width - 1, height - 1);
}

void CreateNewScanOrder(ScanOrder& order, int levels, const ImagePlane& quant, double threshold) {
  RebuildLinkedOrder(order, levels, quant, threshold, [](int, int, int, int, int) {});
}

void FlatScanOrder::Start(int levels, int width, int height, Storage reused) {
  levels_ = levels;
  width_ = width;
  height_ = height;
  positions_ = std::move(reused.positions);
  band_ = std::move(reused.band);
  if (width == height && levels >= 1 && levels <= 25 && width >> levels > 0 && (width >> levels) << levels == width) {
    StartSquare();
    return;
  }
  CreateScanOrder(linked_, levels, width, height);
  Flatten();
  regular_ = CheckLevelByLevel();
}

// Above every code of SortParents, so the first rebuild places every level.
constexpr std::uint8_t kNoCode = 0xFF;

// CreateScanOrder's order on a square plane, written in walk order: the
// trend by the zigzag, then each level's lower block by rows, upper block by
// columns and diagonal block by the zigzag, each block's end linking to the
// next block's start. Such an order passes CheckLevelByLevel; the rebuild
// finds band_ filled as it goes.
void FlatScanOrder::StartSquare() {
  const std::size_t n = static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_);
  positions_.resize(n);
  band_.assign(n, kNoCode);
  std::int32_t* out = positions_.data();
  const std::int32_t w = width_;
  const auto zigZag = [&](int maxX, int maxY, int dx, int dy) {
    for (int d = 0; d <= maxX + maxY; ++d) {
      const int low = std::max(0, d - maxY), high = std::min(d, maxX);
      if (d % 2 == 0) {
        for (int x = low; x <= high; ++x) *out++ = (d - x + dy) * w + x + dx;
      } else {
        for (int x = high; x >= low; --x) *out++ = (d - x + dy) * w + x + dx;
      }
    }
  };
  const int base = width_ >> levels_;
  zigZag(base - 1, base - 1, 0, 0);
  for (int side = base; side < width_; side *= 2) {
    for (int r = 0; r < side; ++r)
      for (int c = 0; c < side; ++c) *out++ = (side + r) * w + (r % 2 == 0 ? c : side - 1 - c);
    for (int c = 0; c < side; ++c)
      for (int r = 0; r < side; ++r) *out++ = (c % 2 == 0 ? r : side - 1 - r) * w + side + c;
    zigZag(side - 1, side - 1, side, side);
  }
  regular_ = true;
}

void FlatScanOrder::Flatten() {
  const std::size_t n = linked_.next.size();
  positions_.resize(n);
  std::int32_t p = 0;
  for (std::size_t i = 0; i < n; ++i, p = linked_.next[static_cast<std::size_t>(p)]) positions_[i] = p;
}

// True when the walk is a permutation that gives the trend first and then
// each level's three blocks, the coarsest first, the first level's list
// starting at (0, BH) where CreateNewScanOrder starts it, and every level
// below the coarsest rebuilt by it. band_ holds, by position, 4 * level +
// block (block 1 upper, 2 lower, 3 diagonal; the trend 0), marked by
// kVisited while the walk is checked.
bool FlatScanOrder::CheckLevelByLevel() {
  constexpr std::uint8_t kVisited = 0x80;
  const std::size_t n = positions_.size();
  if (n == 0 || levels_ < 1 || levels_ > 25) return false;
  const int bw = std::max(width_ >> levels_, 1), bh = std::max(height_ >> levels_, 1);
  if (static_cast<std::int64_t>(bw) << levels_ != width_ || static_cast<std::int64_t>(bh) << levels_ != height_)
    return false;
  band_.assign(n, 0);
  for (int level = 1, edgeX = bw, edgeY = bh; level <= levels_; ++level, edgeX *= 2, edgeY *= 2) {
    if (level < levels_ && (4 * edgeX > width_ || 4 * edgeY > height_)) return false;
    for (int y = 0; y < 2 * edgeY; ++y) {
      std::uint8_t* row = band_.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width_);
      const auto code = [&](int block) { return static_cast<std::uint8_t>(4 * level + block); };
      if (y < edgeY) {
        std::fill(row + edgeX, row + 2 * edgeX, code(1));
      } else {
        std::fill(row, row + edgeX, code(2));
        std::fill(row + edgeX, row + 2 * edgeX, code(3));
      }
    }
  }
  // Each place of the walk wants the level (0 the trend) of its segment.
  if (positions_[static_cast<std::size_t>(bw) * static_cast<std::size_t>(bh)] != bh * width_) return false;
  std::size_t at = 0, blockArea = static_cast<std::size_t>(bw) * static_cast<std::size_t>(bh);
  for (int level = 0; level <= levels_; ++level) {
    const std::size_t end = at + (level == 0 ? blockArea : 3 * blockArea);
    for (; at < end; ++at) {
      std::uint8_t& code = band_[static_cast<std::size_t>(positions_[at])];
      if ((code & kVisited) != 0 || code / 4 != level) return false;
      code |= kVisited;
    }
    if (level > 0) blockArea *= 4;
  }
  return at == n;
}

template <typename T>
void FlatScanOrder::Rebuild(const ImagePlane& quant, const std::vector<std::uint8_t>& nonZero, double threshold,
                            const Carried<T>& carried, T* bySlot) {
  if (!regular_) {
    CreateNewScanOrder(linked_, levels_, quant, threshold);
    Flatten();
    Carry(carried.byPosition, bySlot);
    return;
  }
  // A level whose parents come in the same order with the same codes as at
  // the last rebuild gives its children the places they hold; the values by
  // place are then current already. The first level's parents never move.
  const int bw = width_ >> levels_, bh = height_ >> levels_;
  std::size_t start = static_cast<std::size_t>(bw) * static_cast<std::size_t>(bh);
  std::size_t count = 3 * start;
  bool parentsMoved = false;
  for (int level = 1; level < levels_; ++level, start += count, count *= 4) {
    const ParentKinds kinds = SortParents(bw << (level - 1), bh << (level - 1), nonZero.data());
    if (!parentsMoved && !kinds.changed) continue;
    PlaceChildren(start, count, kinds.count, carried, bySlot);
    parentsMoved = true;
  }
}

// The parents of a level are the three blocks beside the corner of sides
// edgeX by edgeY; those of one row lie side by side, their children in the
// two rows below twice as far down. Row by row, each parent's code is its
// kind (0 non-zero; 1 zero with a non-zero child; 2 the rest) plus 4 times
// its block (1 upper, 2 lower, 3 diagonal); the counts by kind come back,
// and whether any code differs from the one it replaces. On a little-endian
// machine eight parents at a time, their bytes and their children's as
// words (thirty-two at a time in vectors with AVX2): a kind is 2 less any
// child, cleared where the parent is non-zero.
FlatScanOrder::ParentKinds FlatScanOrder::SortParents(int edgeX, int edgeY, const std::uint8_t* nonZero) {
  static const bool wide = __builtin_cpu_supports("avx2");
  const std::size_t w = static_cast<std::size_t>(width_);
  std::size_t nonZeroParents = 0, withChild = 0, all = 0;
  int changed = 0;
  const auto sortRow = [&](std::size_t y, int from, int to, int block) {
    const std::uint8_t* row = nonZero + y * w;
    const std::uint8_t* children = nonZero + 2 * y * w;
    std::uint8_t* codes = band_.data() + y * w;
    int x = from;
    if constexpr (std::endian::native == std::endian::little) {
      if (wide) {
        SortTally tally;
        x = SortThirtyTwosWide(row, children, w, codes, x, to, static_cast<std::uint8_t>(block << 2), tally);
        nonZeroParents += tally.nonZeroParents;
        withChild += tally.withChild;
        changed |= tally.changed ? 1 : 0;
      }
      const std::uint64_t blockBits = static_cast<std::uint64_t>(block << 2) * kEachByte;
      for (; x + 8 <= to; x += 8) {
        const auto c = static_cast<std::size_t>(2 * x);
        const std::uint64_t anyChild =
            PairsOred(Word(children + c) | Word(children + c + w)) |
            PairsOred(Word(children + c + 8) | Word(children + c + w + 8)) << 32;
        const std::uint64_t parents = Word(row + x);
        const std::uint64_t kinds = (2 * kEachByte - anyChild) & ~(parents * 0xFF);
        const std::uint64_t code = kinds | blockBits;
        std::uint64_t old = Word(codes + x);
        changed |= old != code ? 1 : 0;
        std::memcpy(codes + x, &code, sizeof code);
        nonZeroParents += static_cast<std::size_t>((parents * kEachByte) >> 56);
        withChild += static_cast<std::size_t>(((kinds & kEachByte) * kEachByte) >> 56);
      }
    }
    for (; x < to; ++x) {
      const auto c = static_cast<std::size_t>(2 * x);
      const int anyChild = children[c] | children[c + 1] | children[c + w] | children[c + w + 1];
      const int parent = row[x];
      const int kind = parent ? 0 : 2 - anyChild;
      nonZeroParents += static_cast<std::size_t>(parent);
      withChild += static_cast<std::size_t>(kind == 1);
      const auto code = static_cast<std::uint8_t>(kind | block << 2);
      changed |= codes[x] ^ code;
      codes[x] = code;
    }
    all += static_cast<std::size_t>(to - from);
  };
  ForEachParentRun(edgeX, edgeY, [&](int y, int from, int to, int block) {
    sortRow(static_cast<std::size_t>(y), from, to, block);
  });
  ParentKinds kinds;
  kinds.count = {nonZeroParents, withChild, all - nonZeroParents - withChild};
  kinds.changed = changed != 0;
  return kinds;
}

// The children of the level list positions_[start, start + count) into the
// next `4 * count` places, in AssignNewScanValues' order by block: those of
// non-zero parents, then of zero parents with a non-zero child, then the
// rest, each kind in the list's order, every kind written straight into its
// part by the counts of SortParents. The child (2x, 2y) of position p is
// position 2p.
template <typename T>
void FlatScanOrder::PlaceChildren(std::size_t start, std::size_t count, const std::array<std::size_t, 3>& kinds,
                                  const Carried<T>& carried, T* bySlot) {
  const std::int32_t w = width_;
  const std::int32_t offsets[4][4] = {{0, 0, 0, 0}, {0, w, w + 1, 1}, {0, 1, w + 1, w}, {0, 1, w, w + 1}};
  const std::size_t first = start + count;
  // The next place of each kind, held apart so that no place waits on the
  // store of the one before.
  std::size_t at0 = first, at1 = first + 4 * kinds[0], at2 = first + 4 * (kinds[0] + kinds[1]);
  std::int32_t* const places = positions_.data();
  const std::int32_t* parents = positions_.data() + start;
  // Held in locals: the byte stores below could alias the members as far
  // as the compiler knows, which would have it read them again each time.
  const std::uint8_t* const band = band_.data();
  const T* const byPosition = carried.byPosition;
  const std::array<T, 4>* const byParent = carried.byParent;
  const bool zeroWhereZero = carried.zeroWhereZero;
  // The parents' codes lie scattered over the plane: each is asked for a
  // few parents ahead of its use.
  constexpr std::size_t kAhead = 16;
  for (std::size_t i = 0; i < count; ++i) {
    if (i + kAhead < count) __builtin_prefetch(band + parents[i + kAhead]);
    const std::int32_t p = parents[i];
    const std::int32_t c = 2 * p;
    const std::uint8_t code = band[static_cast<std::size_t>(p)];
    const std::int32_t* o = offsets[code >> 2];
    const int kind = code & 3;
    const std::size_t d = kind == 0 ? at0 : kind == 1 ? at1 : at2;
    at0 += kind == 0 ? 4 : 0;
    at1 += kind == 1 ? 4 : 0;
    at2 += kind == 2 ? 4 : 0;
    for (int j = 0; j < 4; ++j) places[d + static_cast<std::size_t>(j)] = c + o[j];
    T* values = bySlot + d;
    if (byParent != nullptr) {
      std::memcpy(values, byParent[p].data(), 4 * sizeof(T));
    } else if (zeroWhereZero && kind == 2) {
      std::memset(values, 0, 4 * sizeof(T));
    } else {
      for (int j = 0; j < 4; ++j) values[j] = byPosition[c + o[j]];
    }
  }
}

template <typename T>
void FlatScanOrder::ChildrenByParent(const T* byPosition, std::vector<std::array<T, 4>>& byParent) const {
  if (!regular_) {
    byParent.clear();
    return;
  }
  const std::int32_t w = width_;
  const std::int32_t offsets[4][4] = {{0, 0, 0, 0}, {0, w, w + 1, 1}, {0, 1, w + 1, w}, {0, 1, w, w + 1}};
  byParent.resize(static_cast<std::size_t>(height_ / 2) * static_cast<std::size_t>(width_));
  const int bw = width_ >> levels_, bh = height_ >> levels_;
  for (int level = 1; level < levels_; ++level)
    ForEachParentRun(bw << (level - 1), bh << (level - 1), [&](int y, int from, int to, int block) {
      for (int x = from; x < to; ++x) {
        const std::int32_t p = y * w + x;
        for (int j = 0; j < 4; ++j) byParent[static_cast<std::size_t>(p)][static_cast<std::size_t>(j)] =
            byPosition[2 * p + offsets[block][j]];
      }
    });
}

template void FlatScanOrder::Rebuild(const ImagePlane&, const std::vector<std::uint8_t>&, double,
                                     const Carried<std::uint8_t>&, std::uint8_t*);
template void FlatScanOrder::Rebuild(const ImagePlane&, const std::vector<std::uint8_t>&, double,
                                     const Carried<std::uint16_t>&, std::uint16_t*);
template void FlatScanOrder::ChildrenByParent(const std::uint8_t*, std::vector<std::array<std::uint8_t, 4>>&) const;
template void FlatScanOrder::ChildrenByParent(const std::uint16_t*, std::vector<std::array<std::uint16_t, 4>>&) const;

namespace {

// The largest magnitude of the values, NaNs left out: for floats that are
// not NaN the order of the magnitudes is that of their bits with the sign
// cleared, so the largest comes from an integer maximum, a NaN's bits
// (above those of infinity) counting as 0.
typedef std::uint32_t Words8 __attribute__((vector_size(32)));

inline __attribute__((always_inline)) float LargestMagnitude(const float* v, std::size_t count) {
  constexpr std::uint32_t kInfinity = 0x7F800000u;
  const auto magnitude = [](std::uint32_t bits) {
    bits &= 0x7FFFFFFFu;
    return bits > kInfinity ? 0u : bits;
  };
  Words8 most{};
  std::size_t i = 0;
  for (; i + 8 <= count; i += 8) {
    Words8 bits;
    std::memcpy(&bits, v + i, sizeof bits);
    bits &= 0x7FFFFFFFu;
    bits = bits > kInfinity ? Words8{} : bits;
    most = bits > most ? bits : most;
  }
  std::uint32_t largest = 0;
  for (int lane = 0; lane < 8; ++lane) largest = std::max(largest, most[lane]);
  for (; i < count; ++i) largest = std::max(largest, magnitude(std::bit_cast<std::uint32_t>(v[i])));
  return std::bit_cast<float>(largest);
}

__attribute__((target("avx2"))) float LargestMagnitudeWide(const float* v, std::size_t count) {
  return LargestMagnitude(v, count);
}

}  // namespace

StartThreshold GetThreshold(const ImagePlane& transform) {
  static const bool wide = __builtin_cpu_supports("avx2");
  const float top = wide ? LargestMagnitudeWide(transform.v.data(), transform.v.size())
                         : LargestMagnitude(transform.v.data(), transform.v.size());
  const double largest = static_cast<double>(top);
  StartThreshold start;
  if (!(largest > 0.0) || std::isinf(largest)) return start;
  const double log2 = std::log2(largest);
  int exponent = static_cast<int>(std::nearbyint(log2));
  if (log2 > exponent) ++exponent;
  start.exponent = std::clamp(exponent, 0, 255);
  start.threshold = std::ldexp(1.0, start.exponent);
  return start;
}

float DenoisingWeight(int walk, int nonZeroChildren) {
  if (walk == 1) return 1.0f;
  if (walk == 3 || nonZeroChildren <= 0) return 0.0f;
  return std::min(1.0f, 0.5f + 0.25f * static_cast<float>(nonZeroChildren));
}

void AssignNewDenoisingScanValues(std::vector<float>& weights, int width, int x, int y, float weight) {
  const std::size_t w = static_cast<std::size_t>(width);
  const std::size_t c = static_cast<std::size_t>(2 * y) * w + static_cast<std::size_t>(2 * x);
  weights[c] = weights[c + 1] = weights[c + w] = weights[c + w + 1] = weight;
}

void CreateDenoisingScanOrder(ScanOrder& order, int levels, int depth, const ImagePlane& quant, double threshold,
                              std::vector<float>& weights) {
  weights.assign(quant.v.size(), 1.0f);
  RebuildLinkedOrder(order, levels, quant, threshold, [&](int level, int walk, int x, int y, int family) {
    if (level >= levels - depth) AssignNewDenoisingScanValues(weights, order.width, x, y, DenoisingWeight(walk, family));
  });
}

void CreateNewDenoisingScanOrder(ScanOrder& order, int levels, int depth, const ImagePlane& quant, double threshold,
                                 double finalThreshold, std::vector<float>& weights) {
  if (threshold > finalThreshold) {
    CreateNewScanOrder(order, levels, quant, threshold);
    weights.assign(quant.v.size(), 1.0f);
    return;
  }
  CreateDenoisingScanOrder(order, levels, depth, quant, threshold, weights);
}

}  // namespace keldo::wavelet

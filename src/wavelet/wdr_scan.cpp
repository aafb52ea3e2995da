#include "wavelet/wdr_scan.h"

#include <cstddef>

namespace keldo::wavelet {
namespace {

// A block walk: the block indices y*(m+1)+x in walk order, read off a link
// table from index 0 for (m+1)^2 steps.
std::vector<std::int32_t> WalkOfTable(const std::vector<std::int32_t>& table) {
  std::vector<std::int32_t> walk;
  walk.reserve(table.size());
  std::int32_t at = 0;
  for (std::size_t i = 0; i < table.size(); ++i) {
    walk.push_back(at);
    at = table[static_cast<std::size_t>(at)];
  }
  return walk;
}

// Links a walk of block indices into a link table; the last entry links to
// `lastLink`.
std::vector<std::int32_t> TableOfWalk(const std::vector<std::int32_t>& walk, std::int32_t lastLink) {
  std::vector<std::int32_t> table(walk.size(), -1);
  for (std::size_t i = 0; i + 1 < walk.size(); ++i) table[static_cast<std::size_t>(walk[i])] = walk[i + 1];
  table[static_cast<std::size_t>(walk.back())] = lastLink;
  return table;
}

// Appends a block walk, placed with its corner at (x0, y0), to a plane walk.
struct PlaneWalk {
  int n = 0;
  std::vector<std::int32_t> positions;
  void Add(int x, int y) { positions.push_back(y * n + x); }
  void AddBlock(const std::vector<std::int32_t>& blockWalk, int side, int x0, int y0) {
    for (std::int32_t b : blockWalk) Add(x0 + b % side, y0 + b / side);
  }
};

void LinkWalk(ScanOrder& order, const std::vector<std::int32_t>& walk) {
  for (std::size_t i = 0; i + 1 < walk.size(); ++i) order.next[static_cast<std::size_t>(walk[i])] = walk[i + 1];
  order.next[static_cast<std::size_t>(walk.back())] = walk.back();
}

// The Subband order: S doubles from (N/2)/2^L (a zero becoming 1), each
// level after the baseband its upper block by columns, lower block by rows,
// diagonal block by the zigzag.
std::vector<std::int32_t> SubbandWalk(int n, int levels) {
  PlaneWalk walk{n, {}};
  int side = (n / 2) >> levels;
  for (int k = 1; k <= levels; ++k) {
    side *= 2;
    if (side == 0) side = 1;
    const std::vector<std::int32_t> zig = WalkOfTable(GetZigZag(side - 1));
    if (k == 1) walk.AddBlock(zig, side, 0, 0);
    walk.AddBlock(WalkOfTable(GetHorizScan(side - 1)), side, side, 0);
    walk.AddBlock(WalkOfTable(GetVertScan(side - 1)), side, 0, side);
    walk.AddBlock(zig, side, side, side);
  }
  return walk.positions;
}

// The Tree order: the baseband of side B by the zigzag, then each level
// spot by spot in that zigzag's order, a spot (u, v) owning on the level of
// side S = B*T the tiles of side T at (S+uT, vT), (uT, S+vT), (S+uT, S+vT).
std::vector<std::int32_t> TreeWalk(int n, int levels) {
  PlaneWalk walk{n, {}};
  int base = ((n / 2) >> levels) * 2;
  if (base < 1) base = 1;
  const std::vector<std::int32_t> spots = WalkOfTable(GetZigZag(base - 1));
  walk.AddBlock(spots, base, 0, 0);
  for (int tile = 1, side = base; side < n; tile *= 2, side *= 2) {
    const std::vector<std::int32_t> upper = WalkOfTable(GetHorizScan(tile - 1));
    const std::vector<std::int32_t> lower = WalkOfTable(GetVertScan(tile - 1));
    const std::vector<std::int32_t> diagonal = WalkOfTable(GetZigZag(tile - 1));
    for (std::int32_t spot : spots) {
      const int x = (spot % base) * tile, y = (spot / base) * tile;
      walk.AddBlock(upper, tile, side + x, y);
      walk.AddBlock(lower, tile, x, side + y);
      walk.AddBlock(diagonal, tile, side + x, side + y);
    }
  }
  return walk.positions;
}

float QuantAt(const std::vector<float>& quantMag, int n, int x, int y) {
  if (x < 0 || y < 0 || x >= n || y >= n) return 0.0f;
  return quantMag[static_cast<std::size_t>(y * n + x)];
}

// The context prediction of an insignificant position (x, y) on the level of
// block side s (parent side s/2), in float arithmetic.
float ContextPrediction(const std::vector<float>& q, int n, int s, int x, int y) {
  const int p = s / 2;
  const auto at = [&](int ax, int ay) { return QuantAt(q, n, ax, ay); };
  float pred = 0.0f;
  if (y < s) {  // upper block
    if (y == 0)
      pred = 0.5f * at(x + 1, 0) + 0.5f * at(x, 1);
    else if (x == 2 * s - 1)
      pred = 0.5f * at(x, y - 1) + 0.5f * at(x - 1, y);
    else
      pred = 0.5f * at(x, y - 1) + 0.5f * at(x + 1, y);
    return pred + 0.5f * at(p + (x - s) / 2, y / 2) + 0.5f * at(x, s + y);
  }
  if (x >= s) {  // diagonal block
    if (y == s)
      pred = 0.5f * at(x, s + 1) + 0.5f * at(x + 1, y);
    else if (x == 2 * s - 1)
      pred = 0.5f * at(x, y - 1) + 0.5f * at(x - 1, y);
    else
      pred = 0.5f * at(x, y - 1) + 0.5f * at(x + 1, y);
    return pred + 0.5f * at(p + (x - s) / 2, p + (y - s) / 2) + 0.25f * at(x, y - s) + 0.25f * at(x - s, y);
  }
  // lower block; the right neighbour is not held inside the block
  if (y == s)
    pred = 0.5f * at(x + 1, s - 1) + 0.5f * at(x, s - 1);
  else
    pred = 0.5f * at(x, y - 1) + 0.5f * at(x + 1, y);
  return pred + 0.5f * at(x / 2, p + (y - s) / 2) + 0.5f * at(x + s, y);
}

}  // namespace

int HighestLevel(int n) {
  switch (n) {
    case 64: return 4;
    case 128: return 5;
    case 256: return 6;
    case 512: return 7;
    case 1024: return 8;
    default: return 0;
  }
}

bool WdrPlaneUsable(int n, int levels) {
  if (n < 2 || n > 32768 || (n & (n - 1)) != 0 || levels < 1) return false;
  int log2n = 0;
  while ((1 << log2n) < n) ++log2n;
  return levels <= log2n;
}

std::vector<std::int32_t> LevelCount(int n, int levels) {
  std::vector<std::int32_t> counts(static_cast<std::size_t>(levels < 0 ? 1 : levels + 1), 0);
  int base = levels < 31 ? n >> levels : 0;
  if (base < 1) base = 1;
  counts[0] = base * base;
  for (std::size_t k = 1; k < counts.size(); ++k) counts[k] = k == 1 ? 3 * base * base : 4 * counts[k - 1];
  return counts;
}

double GetTheLastThreshold(double floor, double threshold) {
  if (!(floor > 0.0)) return threshold;
  while (threshold > floor) threshold /= 2.0;
  return threshold;
}

std::vector<std::int32_t> GetZigZag(int m) {
  const int side = m + 1;
  std::vector<std::int32_t> walk;
  walk.reserve(static_cast<std::size_t>(side) * static_cast<std::size_t>(side));
  for (int d = 0; d <= 2 * m; ++d) {
    const int lo = d > m ? d - m : 0, hi = d > m ? m : d;
    if (d % 2 == 0)
      for (int x = lo; x <= hi; ++x) walk.push_back((d - x) * side + x);
    else
      for (int x = hi; x >= lo; --x) walk.push_back((d - x) * side + x);
  }
  return TableOfWalk(walk, m * side + m);
}

std::vector<std::int32_t> GetHorizScan(int m) {
  const int side = m + 1;
  std::vector<std::int32_t> walk;
  for (int c = 0; c <= m; ++c)
    for (int i = 0; i <= m; ++i) walk.push_back((c % 2 == 0 ? i : m - i) * side + c);
  return TableOfWalk(walk, -1);
}

std::vector<std::int32_t> GetVertScan(int m) {
  const int side = m + 1;
  std::vector<std::int32_t> walk;
  for (int r = 0; r <= m; ++r)
    for (int i = 0; i <= m; ++i) walk.push_back(r * side + (r % 2 == 0 ? i : m - i));
  return TableOfWalk(walk, -1);
}

void CreateScanOrder(ScanOrder& order, int levels, int n, WdrBaseOrder mode) {
  order.width = order.height = n;
  order.next.assign(static_cast<std::size_t>(n) * static_cast<std::size_t>(n), 0);
  if (!WdrPlaneUsable(n, levels)) return;
  LinkWalk(order, mode == WdrBaseOrder::Tree ? TreeWalk(n, levels) : SubbandWalk(n, levels));
}

std::vector<std::int32_t> WalkScanOrder(const ScanOrder& order) {
  std::vector<std::int32_t> walk;
  walk.reserve(order.next.size());
  std::int32_t at = 0;
  for (std::size_t i = 0; i < order.next.size(); ++i) {
    walk.push_back(at);
    at = order.next[static_cast<std::size_t>(at)];
  }
  return walk;
}

std::vector<std::int32_t> CreateNewScanningOrder(int n, int levels, const std::vector<std::int16_t>& signMap) {
  std::vector<std::int32_t> out;
  if (!WdrPlaneUsable(n, levels)) return out;
  const auto sig = [&](int x, int y) { return signMap[static_cast<std::size_t>(y * n + x)] != 0; };
  int s = n >> levels;
  // The baseband: children of significant positions first.
  std::vector<std::int32_t> list, next;
  for (std::int32_t b : WalkOfTable(GetZigZag(s - 1))) list.push_back((b / s) * n + b % s);
  const auto addThree = [&](std::int32_t p) {
    const int x = p % n, y = p / n;
    next.push_back(y * n + x + s);
    next.push_back((y + s) * n + x);
    next.push_back((y + s) * n + x + s);
  };
  for (std::int32_t p : list)
    if (sig(p % n, p / n)) addThree(p);
  for (std::int32_t p : list)
    if (!sig(p % n, p / n)) {
      out.push_back(p);
      addThree(p);
    }
  // Levels 1..L-1: three walks; children in the order of the parent's block.
  for (int k = 1; k < levels; ++k) {
    s *= 2;
    list.swap(next);
    next.clear();
    const auto addFour = [&](std::int32_t p) {
      const int cx = 2 * (p % n), cy = 2 * (p / n);
      const auto add = [&](int x, int y) { next.push_back(y * n + x); };
      if (cy >= s && cx >= s) {
        add(cx, cy), add(cx + 1, cy), add(cx, cy + 1), add(cx + 1, cy + 1);
      } else if (cy >= s) {
        add(cx, cy), add(cx + 1, cy), add(cx + 1, cy + 1), add(cx, cy + 1);
      } else {
        add(cx, cy), add(cx, cy + 1), add(cx + 1, cy + 1), add(cx + 1, cy);
      }
    };
    const auto childSig = [&](std::int32_t p) {
      const int cx = 2 * (p % n), cy = 2 * (p / n);
      return sig(cx, cy) || sig(cx + 1, cy) || sig(cx, cy + 1) || sig(cx + 1, cy + 1);
    };
    for (std::int32_t p : list)
      if (sig(p % n, p / n)) addFour(p);
    for (int kind = 0; kind < 2; ++kind)
      for (std::int32_t p : list)
        if (!sig(p % n, p / n) && childSig(p) == (kind == 0)) {
          out.push_back(p);
          addFour(p);
        }
  }
  // The finest level: no children.
  for (std::int32_t p : next)
    if (!sig(p % n, p / n)) out.push_back(p);
  return out;
}

std::vector<std::int32_t> CreateNewScanningOrderSiblingsSTO(double threshold, const std::vector<float>& quantMag, int n,
                                                            int levels, const std::vector<std::int16_t>& signMap,
                                                            const std::vector<std::int32_t>& staticWalk) {
  std::vector<std::int32_t> out;
  if (!WdrPlaneUsable(n, levels)) return out;
  const std::vector<std::int32_t> counts = LevelCount(n, levels);
  const float half = static_cast<float>(threshold / 2.0);
  const auto insig = [&](std::int32_t p) { return signMap[static_cast<std::size_t>(p)] == 0; };
  std::size_t at = 0;
  int s = n >> levels;
  for (int k = 0; k <= levels; ++k) {
    const std::size_t end = at + static_cast<std::size_t>(counts[static_cast<std::size_t>(k)]);
    if (k < 2) {
      for (std::size_t i = at; i < end; ++i)
        if (insig(staticWalk[i])) out.push_back(staticWalk[i]);
    } else {
      s *= 2;
      std::vector<std::int32_t> later;
      for (std::size_t i = at; i < end; ++i) {
        const std::int32_t p = staticWalk[i];
        if (!insig(p)) continue;
        if (ContextPrediction(quantMag, n, s, p % n, p / n) >= half)
          out.push_back(p);
        else
          later.push_back(p);
      }
      out.insert(out.end(), later.begin(), later.end());
    }
    at = end;
  }
  return out;
}

bool RebuildsAfterPass(WdrScanMode mode, int passesDone, int code) {
  if (mode == WdrScanMode::DynamicContext) return true;
  if (mode != WdrScanMode::DynamicParentChild) return false;
  if (code < 100) return passesDone >= 5;
  if (code >= 190) return passesDone >= 1;
  return passesDone >= 2;
}

}  // namespace keldo::wavelet

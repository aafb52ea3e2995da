#pragma once
// The scan orders of the adaptively scanned difference-reduction coder, and
// its starting threshold. A scan order is a linked list threaded through the
// plane: next[y * width + x] is the index of the position after (x, y). The
// coder walks width * height positions from (0, 0) and never follows the
// last position's link.

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "wavelet/image_transform.h"

namespace keldo::wavelet {

struct ScanOrder {
  int width = 0, height = 0;
  std::vector<std::int32_t> next;
  std::int32_t Index(int x, int y) const { return y * width + x; }
};

struct BlockPosition {
  int x = 0, y = 0;
};

// The diagonal walk of the block 0..maxX by 0..maxY, in walk order: the
// anti-diagonals d = 0 .. maxX + maxY in turn, the first (and every second)
// "right", from its least x to its largest, the others "left", from its
// largest x to its least. A right diagonal ends at (d, 0) and goes on to
// (d + 1, 0) while d < maxX, otherwise at (maxX, d - maxX) and goes on
// below it; a left one the same with the subscripts exchanged. The walk ends
// at (maxX, maxY).
std::vector<BlockPosition> GetZigZag(int maxX, int maxY);

// The initial order of a plane transformed to `levels` levels (sides
// multiples of 2^levels): the trend by the zigzag, then from the coarsest
// level up its lower block row by row (boustrophedon), its upper block
// column by column, its diagonal block by the zigzag. A diagonal block that
// is not the last links to (0, 2 W0), W0 being its width: twice the width,
// where the next level's lower block starts at (0, 2 H0); the two agree on
// square planes. Where (0, 2 W0) lies outside the plane (a plane wider than
// high) the link goes to (0, 2 H0). (width-1, height-1) links to itself.
void CreateScanOrder(ScanOrder& order, int levels, int width, int height);

// The adaptive rebuild after a pass of threshold `threshold`: the trend and
// the coarsest level keep their order; every finer level is rebuilt from its
// parents' list in three walks: the children of parents with |quant| >=
// threshold first, then of smaller parents with a non-zero child, then the
// rest. Children come in the order of their parent's block (upper: down the
// left pair first; lower: along the top pair first; diagonal: row by row).
void CreateNewScanOrder(ScanOrder& order, int levels, const ImagePlane& quant, double threshold);

// The denoisers' rebuild: the order of CreateNewScanOrder, and a weight for
// every position of the finest `depth` levels (the children of the rebuild's
// levels levels - depth .. levels - 1; every level when depth >= levels - 1),
// 1 elsewhere. A significance test of a denoiser compares |weight * c| with
// the threshold, so a weight of 0 keeps a position insignificant. The
// children of a parent with |quant| >= threshold weigh 1; those of an
// insignificant parent with k non-zero children min(1, 1/2 + k/4): 3/4 for a
// lone significant sibling, 1 from two on; those of an insignificant parent
// with no non-zero child 0, and they come last in their level's list. So an
// isolated coefficient, whose parent and siblings are all insignificant,
// cannot turn significant at the finest depth levels.
void CreateDenoisingScanOrder(ScanOrder& order, int levels, int depth, const ImagePlane& quant, double threshold,
                              std::vector<float>& weights);
// The weight of a child by the walk that placed its parent (1, 2 or 3, as
// in CreateNewScanOrder) and the parent's count of non-zero children.
float DenoisingWeight(int walk, int nonZeroChildren);
// Gives the four children of (x, y) the weight.
void AssignNewDenoisingScanValues(std::vector<float>& weights, int width, int x, int y, float weight);
// The rebuild after a pass of threshold `threshold` for a denoiser whose
// tree test starts at `finalThreshold`: CreateNewScanOrder with every weight
// 1 while threshold > finalThreshold, CreateDenoisingScanOrder from there on.
void CreateNewDenoisingScanOrder(ScanOrder& order, int levels, int depth, const ImagePlane& quant, double threshold,
                                 double finalThreshold, std::vector<float>& weights);

// The order a coder walks, held flat: Positions() are the width * height
// positions a walk along next[] from (0, 0) visits, in that order. On a
// plane whose initial order visits every position once, level by level (the
// trend, then each level's three blocks, the coarsest first), Rebuild makes
// the new order from the flat form itself: each level's children are placed
// by one walk over its parents, which sorts them into the three kinds of
// CreateNewScanOrder, and the lists follow one another as the links would
// chain them. On any other plane the linked order is kept and rebuilt by
// CreateNewScanOrder, and walked again into the flat form.
class FlatScanOrder {
 public:
  // The vectors of an order, handed from one order to the next so that a
  // coder run after another writes into pages it has touched already. What
  // they hold is never read: Start sizes and fills them anew.
  struct Storage {
    std::vector<std::int32_t> positions;
    std::vector<std::uint8_t> band;
  };
  // CreateScanOrder's order of a width by height plane of `levels` levels,
  // in `reused`'s vectors.
  void Start(int levels, int width, int height, Storage reused = {});
  // The vectors back, the order left empty.
  Storage Release() { return {std::move(positions_), std::move(band_)}; }
  // CreateNewScanOrder after a pass of threshold `threshold`. `nonZero`
  // holds, by position, whether quant is non-zero; every non-zero value has
  // |quant| >= threshold, so the first kind is the non-zero parents.
  // A by-position value travels with the positions: when bySlot[i] ==
  // carried.byPosition[Positions()[i]] for every place before the call, so
  // it is after, the places the rebuild moves being refilled. T is
  // std::uint8_t or std::uint16_t.
  template <typename T>
  struct Carried {
    const T* byPosition = nullptr;
    // ChildrenByParent(byPosition), for a value that never changes: one read
    // per parent instead of four. Or null.
    const std::array<T, 4>* byParent = nullptr;
    // The value is 0 wherever nonZero is: the children of a parent with no
    // non-zero child take 0 without a read.
    bool zeroWhereZero = false;
  };
  template <typename T>
  void Rebuild(const ImagePlane& quant, const std::vector<std::uint8_t>& nonZero, double threshold,
               const Carried<T>& carried, T* bySlot);
  // The values of each parent's four children in the order the rebuild
  // places them, by the parent's position (its entries for other positions
  // unused); empty on a plane that is not regular.
  template <typename T>
  std::vector<std::array<T, 4>> ChildrenByParent(const T* byPosition) const {
    std::vector<std::array<T, 4>> byParent;
    ChildrenByParent(byPosition, byParent);
    return byParent;
  }
  // The same into `byParent`, whose vector is reused.
  template <typename T>
  void ChildrenByParent(const T* byPosition, std::vector<std::array<T, 4>>& byParent) const;
  // bySlot[i] = byPosition[Positions()[i]] for every place.
  template <typename T>
  void Carry(const T* byPosition, T* bySlot) const {
    for (std::size_t i = 0; i < positions_.size(); ++i) bySlot[i] = byPosition[positions_[i]];
  }
  const std::vector<std::int32_t>& Positions() const { return positions_; }
  bool Regular() const { return regular_; }

 private:
  void StartSquare();
  void Flatten();
  bool CheckLevelByLevel();
  struct ParentKinds {
    std::array<std::size_t, 3> count{};
    bool changed = false;
  };
  ParentKinds SortParents(int edgeX, int edgeY, const std::uint8_t* nonZero);
  template <typename T>
  void PlaceChildren(std::size_t start, std::size_t count, const std::array<std::size_t, 3>& kinds,
                     const Carried<T>& carried, T* bySlot);
  // Calls visit(y, from, to, block) for each row run of a level's parents
  // (the three blocks beside the corner of sides edgeX by edgeY).
  template <typename Visit>
  static void ForEachParentRun(int edgeX, int edgeY, Visit visit) {
    for (int y = 0; y < edgeY; ++y) visit(y, edgeX, 2 * edgeX, 1);
    for (int y = edgeY; y < 2 * edgeY; ++y) {
      visit(y, 0, edgeX, 2);
      visit(y, edgeX, 2 * edgeX, 3);
    }
  }

  int levels_ = 0, width_ = 0, height_ = 0;
  bool regular_ = false;
  ScanOrder linked_;                      // the order itself, on a plane that is not regular
  std::vector<std::int32_t> positions_;   // the walk
  // By position: in CheckLevelByLevel, 4 * level + block (1 upper, 2 lower,
  // 3 diagonal), with 0x80 once visited; in the rebuild, for each parent,
  // its kind + 4 * block as of the last rebuild (below 16).
  std::vector<std::uint8_t> band_;
};

// The starting threshold: M the largest |value|, E = round(log2 M); 2^E when
// log2 M <= E, otherwise 2^(E+1). A maximum that is a power of two is itself
// the threshold. E is held to 0..255 (the byte of the file head), so an
// all-zero plane, or one below 1/2, starts from 1.
struct StartThreshold {
  int exponent = 0;
  double threshold = 1.0;
};
StartThreshold GetThreshold(const ImagePlane& transform);

}  // namespace keldo::wavelet

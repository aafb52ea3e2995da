#pragma once
// The pointer on one picture, in the picture's own coordinates: where it
// was last pressed, the read-out beside it, the sample index the trace
// cross hair stands on, and the windows zoom and enlarge make around the
// press. Any picture with a coordinate map can keep one.

#include <string>

namespace keldo {

// A rectangle of user coordinates: the part of a picture's plane a view shows.
struct ViewWindow {
  double left = 0.0, right = 0.0, bottom = 0.0, top = 0.0;
};

class PointerTrace {
 public:
  // Pointer events carry single-precision coordinates.
  static double Single(double v) { return static_cast<float>(v); }

  void Press(double x, double y) {
    x_ = Single(x);
    y_ = Single(y);
  }
  double X() const { return x_; }
  double Y() const { return y_; }

  // The read-out "(x,y) " of a point in single precision; the point
  // becomes the last press, so that a zoom from the keyboard centres on it.
  void Read(double x, double y);
  void ClearReadout() { readout_.clear(); }
  const std::string& Readout() const { return readout_; }

  // The trace index on a grid of n intervals, kept within 0 to n.
  int Index() const { return index_; }
  void SetIndex(int index, int n);

  // A window centred on the last press whose half-width and half-height
  // are the window's width and height over `divisor` (zoom) or times
  // `factor` (enlarge).
  ViewWindow ZoomedIn(const ViewWindow& w, double divisor) const;
  ViewWindow ZoomedOut(const ViewWindow& w, double factor) const;

 private:
  double x_ = 0.0, y_ = 0.0;
  std::string readout_;
  int index_ = 0;
};

}  // namespace keldo

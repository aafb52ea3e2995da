// The region of interest of the image processor: a rectangle dragged on the
// left image. The coders spend a share of their bits on it, and the error
// measures may be restricted to it.
//
// Coordinates: pixels of the padded image, x down the picture (the columns
// of the dumped matrix), y across it (its rows). A pointer position p
// stands over pixel floor(p), since pixel k covers [k, k + 1) of the
// picture's scale; the view and keldo-run thus mark the same pixels.

#include <algorithm>
#include <cmath>

#include "imageproc/image_processor_form.h"

namespace keldo::imageproc {
namespace {

// PaintColor: the colour of the region's marks.
constexpr platform::Rgb kPaintColor = platform::MakeRgb(255, 255, 48);

int PixelOf(double position) {
  // Far positions are clipped later; keep the conversion in range.
  return static_cast<int>(std::floor(std::clamp(position, -1.0e6, 1.0e6)));
}

// The two corners sorted so that the first is the smaller, each clipped to
// 0..maxX or 0..maxY.
RoiRectangle SortedAndClipped(double x0, double y0, double x1, double y1, int maxX, int maxY) {
  int ax = PixelOf(x0), bx = PixelOf(x1), ay = PixelOf(y0), by = PixelOf(y1);
  if (bx < ax) std::swap(ax, bx);
  if (by < ay) std::swap(ay, by);
  return RoiRectangle{std::clamp(ax, 0, maxX), std::clamp(ay, 0, maxY), std::clamp(bx, 0, maxX),
                      std::clamp(by, 0, maxY)};
}

}  // namespace

bool ImageProcessorForm::Mouse(MouseAction action, double x, double y, MouseButton button) {
  return PictureMouse(0, action, y, x, button);
}

bool ImageProcessorForm::TracksPointer() const { return drag_.has_value(); }

bool ImageProcessorForm::PictureMouse(int picture, MouseAction action, double across, double down,
                                      MouseButton button) {
  // Only the left image takes a region; the pointer elsewhere is no error.
  if (picture != 0 || image_.Empty()) return true;
  const double x = down, y = across;
  switch (action) {
    case MouseAction::Down:
      if (button != MouseButton::Left) return true;
      drag_ = Drag{x, y, x, y};
      break;
    case MouseAction::Move:
      if (!drag_) return true;
      drag_->x1 = x;
      drag_->y1 = y;
      break;
    case MouseAction::Up: {
      if (!drag_) return true;
      drag_->x1 = x;
      drag_->y1 = y;
      const Drag done = *drag_;
      drag_.reset();
      if (PixelOf(done.x0) == PixelOf(done.x1) && PixelOf(done.y0) == PixelOf(done.y1)) {
        // A plain click clears the region.
        ClearRegion();
        break;
      }
      roi_ = SortedAndClipped(done.x0, done.y0, done.x1, done.y1, image_.width - 1, image_.height - 1);
      controls_.SetEnabled("txtROIPercent", true);
      ReportROICoordinates();
      break;
    }
  }
  Touch();
  return true;
}

bool ImageProcessorForm::GetROICoordinates(int& x1, int& y1, int& x2, int& y2) const {
  if (!roi_) return false;
  x1 = roi_->x1;
  y1 = roi_->y1;
  x2 = roi_->x2;
  y2 = roi_->y2;
  return true;
}

void ImageProcessorForm::ReportROICoordinates() {
  int x1 = 0, y1 = 0, x2 = 0, y2 = 0;
  if (!GetROICoordinates(x1, y1, x2, y2)) return;
  AddReport("Upper left corner: (" + std::to_string(x1) + "," + std::to_string(y1) + ")");
  AddReport("Lower right corner: (" + std::to_string(x2) + "," + std::to_string(y2) + ")");
}

void ImageProcessorForm::ClearRegion() {
  roi_.reset();
  drag_.reset();
  controls_.SetEnabled("txtROIPercent", false);
}

void ImageProcessorForm::MarkRegion(platform::Surface& surface) const {
  std::optional<RoiRectangle> shown = roi_;
  if (drag_) shown = SortedAndClipped(drag_->x0, drag_->y0, drag_->x1, drag_->y1, image_.width - 1, image_.height - 1);
  if (!shown) return;
  // Lines through the centres of the outline's pixels, in the picture's
  // scale (across y, down x), so that they stay visible at any size.
  surface.SetScale({0.0, 0.0, static_cast<double>(image_.height), static_cast<double>(image_.width)});
  surface.SetPenWidth(1);
  const double left = shown->y1 + 0.5, right = shown->y2 + 0.5, top = shown->x1 + 0.5, bottom = shown->x2 + 0.5;
  const platform::UserSegment outline[] = {
      {left, top, right, top}, {right, top, right, bottom}, {right, bottom, left, bottom}, {left, bottom, left, top}};
  surface.Lines(outline, kPaintColor);
}

}  // namespace keldo::imageproc

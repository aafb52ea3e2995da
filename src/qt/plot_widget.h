#pragma once
// The picture box of a form: every picture the form shows, its axis labels
// and caption, and the cursor read-out. Each picture is kept as an image until
// the form changes, so that a resize or a read-out redraws only what moved.

#include <QImage>
#include <QWidget>

#include <functional>
#include <vector>

#include "kit/form.h"

namespace keldo::qt {

class PlotWidget final : public QWidget {
 public:
  // `changed` runs after the pointer changed the form.
  PlotWidget(Form& form, std::function<void()> changed, QWidget* parent);
  // Where picture k's caption stands (a double click there changes it), and
  // where the picture itself is drawn; empty rectangles for no such picture.
  QRect CaptionRect(int k) const;
  QRect PictureRect(int k) const;

 protected:
  void paintEvent(QPaintEvent*) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void leaveEvent(QEvent*) override;
  void wheelEvent(QWheelEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  struct Placed {
    Picture picture;
    QRect box;   // where the picture itself is drawn, in widget pixels
    QRect clip;  // the part of the widget it may cover: box, or less when zoomed
  };
  std::vector<Placed> Layout() const;
  // The picture under a pixel, or -1.
  int PictureAt(const std::vector<Placed>& placed, QPoint pixel) const;
  void SendMouse(MouseAction action, QPointF pixel, MouseButton button);
  void ShowPopup(QPoint global);
  void DrawLabels(QPainter& p, const Placed& placed);
  // Pictures with a natural side are drawn to fit (zoom_ < 0) or at
  // kZooms[zoom_] screen pixels per picture pixel, panned by pan_.
  void Zoom(int step);
  void ZoomTo(int zoom);
  // The largest zoom at which every picture stays within a painted side.
  int LargestZoom() const;
  void Pan(QPoint by);

  int zoom_ = -1;
  QPoint pan_;
  Form& form_;
  std::function<void()> changed_;
  std::vector<QImage> cache_;
  std::vector<unsigned long long> cacheRevision_;
  QPoint pointer_{-1, -1};
  int held_ = -1;  // the picture a pressed button went down on
};

}  // namespace keldo::qt

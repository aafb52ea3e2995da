#include "qt/plot_widget.h"

#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>

#include "qt/menu_builder.h"
#include "qt/painter_surface.h"
#include "qt/session_recorder.h"

namespace keldo::qt {
namespace {

QString Q(const std::string& s) { return QString::fromStdString(s); }

// Margins around a picture that hold its axis labels, in pixels.
constexpr int kLabelLeft = 64;
constexpr int kLabelBottom = 24;
constexpr int kMarginTop = 10;
constexpr int kMarginRight = 28;
constexpr int kCaptionHeight = 18;
// The zooms of pictures with a natural side: screen pixels per picture pixel.
constexpr double kZooms[] = {0.25, 0.5, 1.0, 2.0, 3.0, 4.0, 6.0, 8.0};
constexpr int kZoomCount = static_cast<int>(std::size(kZooms));
constexpr int kActualSize = 2;
// A zoomed picture is painted whole; this bounds its side in pixels.
constexpr int kLargestZoomedSide = 4096;

}  // namespace

PlotWidget::PlotWidget(Form& form, std::function<void()> changed, QWidget* parent)
    : QWidget(parent), form_(form), changed_(std::move(changed)) {
  setMinimumSize(360, 240);
  setAttribute(Qt::WA_OpaquePaintEvent);
  setMouseTracking(true);
  setFocusPolicy(Qt::ClickFocus);
  setCursor(Qt::CrossCursor);
  setObjectName("GraphBox");
}

std::vector<PlotWidget::Placed> PlotWidget::Layout() const {
  std::vector<Placed> placed;
  const std::vector<Picture> pictures = form_.Pictures();
  int rows = 1, columns = 1;
  for (const Picture& p : pictures) {
    rows = std::max(rows, p.row + 1);
    columns = std::max(columns, p.column + 1);
  }
  const int cellWidth = width() / columns, cellHeight = height() / rows;
  for (const Picture& p : pictures) {
    const QRect cell(p.column * cellWidth, p.row * cellHeight, cellWidth, cellHeight);
    QRect box = cell.adjusted(kLabelLeft, kMarginTop, -kMarginRight,
                              -kLabelBottom - (p.caption.empty() && !p.captioned ? 0 : kCaptionHeight));
    QRect clip = box;
    if (p.side > 0 && zoom_ >= 0) {
      // At the chosen zoom, centred when it fits, panned when it does not.
      const int side = std::max(1, static_cast<int>(std::lround(p.side * kZooms[zoom_])));
      const auto place = [](int start, int room, int length, int pan) {
        if (length <= room) return start + (room - length) / 2;
        return start + std::clamp((room - length) / 2 + pan, room - length, 0);
      };
      box = QRect(place(clip.left(), clip.width(), side, pan_.x()), place(clip.top(), clip.height(), side, pan_.y()),
                  side, side);
      clip = clip.intersected(box);
    } else if (p.side > 0) {
      // The largest whole multiple of the natural side that fits; a cell
      // too small for one gets the picture shrunk to fit.
      const int room = std::max(1, std::min(box.width(), box.height()));
      const int side = room >= p.side ? room / p.side * p.side : room;
      box = QRect(box.left() + (box.width() - side) / 2, box.top() + (box.height() - side) / 2, side, side);
      clip = box;
    }
    placed.push_back({p, box, clip});
  }
  return placed;
}

int PlotWidget::PictureAt(const std::vector<Placed>& placed, QPoint pixel) const {
  int rows = 1, columns = 1;
  for (const Placed& p : placed) {
    rows = std::max(rows, p.picture.row + 1);
    columns = std::max(columns, p.picture.column + 1);
  }
  const int column = std::clamp(pixel.x() * columns / std::max(1, width()), 0, columns - 1);
  const int row = std::clamp(pixel.y() * rows / std::max(1, height()), 0, rows - 1);
  for (std::size_t k = 0; k < placed.size(); ++k)
    if (placed[k].picture.row == row && placed[k].picture.column == column) return static_cast<int>(k);
  return -1;
}

void PlotWidget::paintEvent(QPaintEvent*) {
  QPainter p(this);
  p.fillRect(rect(), palette().window());
  const std::vector<Placed> placed = Layout();
  if (placed.empty()) {
    // A form with no pictures yet shows its caption on black.
    const QRect box = rect().adjusted(kLabelLeft, kMarginTop, -kMarginRight, -kLabelBottom);
    p.fillRect(box, Qt::black);
    p.setPen(QColor(0xC0, 0xC0, 0xC0));
    p.drawText(box, Qt::AlignCenter, Q(form_.Caption()));
    return;
  }
  cache_.resize(placed.size());
  cacheRevision_.resize(placed.size(), ~0ull);
  const qreal ratio = devicePixelRatioF();
  for (std::size_t k = 0; k < placed.size(); ++k) {
    const QRect box = placed[k].box;
    QImage& cache = cache_[k];
    if (cacheRevision_[k] != form_.Revision() || cache.size() != box.size() * ratio) {
      cache = QImage(box.size() * ratio, QImage::Format_RGB32);
      cache.setDevicePixelRatio(ratio);
      QPainter cp(&cache);
      cp.scale(1.0 / ratio, 1.0 / ratio);
      PainterSurface surface(cp, QRect(QPoint(0, 0), box.size() * ratio));
      form_.Paint(static_cast<int>(k), surface);
      cacheRevision_[k] = form_.Revision();
    }
    if (placed[k].clip == box) {
      p.drawImage(box.topLeft(), cache);
      DrawLabels(p, placed[k]);
      continue;
    }
    // Zoomed past its cell: the part in view, and no axis labels, which
    // name the edges of the whole picture.
    p.save();
    p.setClipRect(placed[k].clip);
    p.drawImage(box.topLeft(), cache);
    p.restore();
  }
  if (zoom_ >= 0) {
    p.setPen(palette().windowText().color());
    p.drawText(rect().adjusted(0, 0, -6, 0), Qt::AlignRight | Qt::AlignTop,
               QString::number(kZooms[zoom_] * 100.0) + QStringLiteral(" %"));
  }
  const std::string& readout = form_.CursorText();
  const int under = PictureAt(placed, pointer_);
  if (!readout.empty() && under >= 0 && placed[static_cast<std::size_t>(under)].box.contains(pointer_)) {
    p.setPen(QColor::fromRgb(form_.ReadoutColour()));
    p.drawText(pointer_ + QPoint(8, -6), Q(readout));
  }
}

void PlotWidget::DrawLabels(QPainter& p, const Placed& placed) {
  const Picture& picture = placed.picture;
  const QRect box = placed.box;
  p.setPen(palette().windowText().color());
  const int y = box.bottom() + 4;
  const int xs[5] = {box.left(), box.left() + box.width() / 4, box.center().x(), box.left() + 3 * box.width() / 4,
                     box.right()};
  for (std::size_t k = 0; k < 5; ++k)
    if (!picture.bottomLabels[k].empty())
      p.drawText(QRect(xs[k] - 40, y, 80, kLabelBottom - 4), Qt::AlignHCenter | Qt::AlignTop,
                 Q(picture.bottomLabels[k]));
  const int ys[5] = {box.top(), box.top() + box.height() / 4, box.center().y(), box.top() + 3 * box.height() / 4,
                     box.bottom()};
  for (std::size_t k = 0; k < 5; ++k)
    if (!picture.leftLabels[k].empty())
      p.drawText(QRect(box.left() - kLabelLeft, ys[k] - 9, kLabelLeft - 6, 18), Qt::AlignRight | Qt::AlignVCenter,
                 Q(picture.leftLabels[k]));
  if (!picture.caption.empty())
    p.drawText(QRect(box.left(), box.bottom() + kLabelBottom, box.width(), kCaptionHeight), Qt::AlignHCenter,
               Q(picture.caption));
}

void PlotWidget::mousePressEvent(QMouseEvent* event) {
  const std::vector<Placed> placed = Layout();
  held_ = PictureAt(placed, event->position().toPoint());
  if (held_ < 0) return;
  const MouseButton button = event->button() == Qt::RightButton ? MouseButton::Right : MouseButton::Left;
  SendMouse(MouseAction::Down, event->position(), button);
  if (button == MouseButton::Right) ShowPopup(event->globalPosition().toPoint());
}

void PlotWidget::mouseMoveEvent(QMouseEvent* event) {
  pointer_ = event->position().toPoint();
  if (form_.TracksPointer()) SendMouse(MouseAction::Move, event->position(), MouseButton::None);
}

void PlotWidget::mouseReleaseEvent(QMouseEvent* event) {
  if (held_ >= 0) SendMouse(MouseAction::Up, event->position(), MouseButton::Left);
  held_ = -1;
}

QRect PlotWidget::PictureRect(int k) const {
  const std::vector<Placed> placed = Layout();
  if (k < 0 || k >= static_cast<int>(placed.size())) return {};
  return placed[static_cast<std::size_t>(k)].box;
}

QRect PlotWidget::CaptionRect(int k) const {
  const QRect box = PictureRect(k);
  if (box.isEmpty()) return {};
  return QRect(box.left(), box.bottom() + kLabelBottom, box.width(), kCaptionHeight);
}

void PlotWidget::mouseDoubleClickEvent(QMouseEvent* event) {
  const std::vector<Placed> placed = Layout();
  const QPoint at = event->position().toPoint();
  for (std::size_t k = 0; k < placed.size(); ++k) {
    const QRect caption = CaptionRect(static_cast<int>(k));
    if ((placed[k].picture.captioned || !placed[k].picture.caption.empty()) && caption.contains(at)) {
      const RecordedAction recorded(&form_, "caption " + std::to_string(k));
      form_.PictureCaptionActivated(static_cast<int>(k));
      changed_();
      update();
      return;
    }
  }
}

void PlotWidget::leaveEvent(QEvent*) {
  pointer_ = QPoint(-1, -1);
  update();
}

void PlotWidget::wheelEvent(QWheelEvent* event) {
  const QPoint steps = event->angleDelta() / 120;
  if (event->modifiers() & Qt::ControlModifier) {
    if (steps.y() != 0) Zoom(steps.y() > 0 ? 1 : -1);
  } else if (zoom_ >= 0) {
    // The wheel pans a zoomed picture: up and down, or across with Shift.
    const int by = steps.y() * 60;
    Pan(event->modifiers() & Qt::ShiftModifier ? QPoint(by, 0) : QPoint(steps.x() * 60, by));
  } else {
    event->ignore();
    return;
  }
  event->accept();
}

void PlotWidget::keyPressEvent(QKeyEvent* event) {
  // Ctrl with + and - zooms, with 0 fits the pictures to their cells again
  // and with 1 shows them at their actual size; the arrows pan.
  const bool control = event->modifiers() & Qt::ControlModifier;
  switch (event->key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal:
      if (control) return Zoom(1);
      break;
    case Qt::Key_Minus:
      if (control) return Zoom(-1);
      break;
    case Qt::Key_0:
      if (control) return ZoomTo(-1);
      break;
    case Qt::Key_1:
      if (control) return ZoomTo(kActualSize);
      break;
    case Qt::Key_Left:
      if (zoom_ >= 0) return Pan({40, 0});
      break;
    case Qt::Key_Right:
      if (zoom_ >= 0) return Pan({-40, 0});
      break;
    case Qt::Key_Up:
      if (zoom_ >= 0) return Pan({0, 40});
      break;
    case Qt::Key_Down:
      if (zoom_ >= 0) return Pan({0, -40});
      break;
    default:
      break;
  }
  QWidget::keyPressEvent(event);
}

void PlotWidget::Zoom(int step) {
  int natural = 0;
  for (const Picture& p : form_.Pictures()) natural = std::max(natural, p.side);
  if (natural == 0) return;
  if (zoom_ >= 0) return ZoomTo(std::clamp(zoom_ + step, 0, LargestZoom()));
  // From the fitted size, the next zoom in the direction asked.
  const std::vector<Placed> placed = Layout();
  double fitted = 1.0;
  for (const Placed& p : placed)
    if (p.picture.side > 0) fitted = static_cast<double>(p.box.width()) / p.picture.side;
  int next = step > 0 ? kZoomCount - 1 : 0;
  if (step > 0) {
    for (int k = kZoomCount - 1; k >= 0; --k)
      if (kZooms[k] > fitted + 1e-9) next = k;
  } else {
    for (int k = 0; k < kZoomCount; ++k)
      if (kZooms[k] < fitted - 1e-9) next = k;
  }
  ZoomTo(std::min(next, LargestZoom()));
}

int PlotWidget::LargestZoom() const {
  int natural = 1;
  for (const Picture& p : form_.Pictures()) natural = std::max(natural, p.side);
  int largest = 0;
  while (largest + 1 < kZoomCount && natural * kZooms[largest + 1] <= kLargestZoomedSide) ++largest;
  return largest;
}

void PlotWidget::ZoomTo(int zoom) {
  if (zoom >= 0 && zoom_ >= 0 && zoom != zoom_) pan_ = pan_ * kZooms[zoom] / kZooms[zoom_];
  if (zoom < 0) pan_ = {};
  zoom_ = zoom;
  update();
}

void PlotWidget::Pan(QPoint by) {
  pan_ += by;
  // Held to what the largest picture can move, so that a pan never piles up
  // beyond an edge.
  int most = 0;
  for (const Placed& p : Layout()) most = std::max(most, (p.box.width() - p.clip.width()) / 2 + 1);
  pan_.setX(std::clamp(pan_.x(), -most, most));
  pan_.setY(std::clamp(pan_.y(), -most, most));
  update();
}

void PlotWidget::SendMouse(MouseAction action, QPointF pixel, MouseButton button) {
  const std::vector<Placed> placed = Layout();
  // A drag stays with the picture it began on.
  const int k = held_ >= 0 ? held_ : PictureAt(placed, pixel.toPoint());
  if (k < 0 || k >= static_cast<int>(placed.size())) return;
  const Placed& target = placed[static_cast<std::size_t>(k)];
  const qreal ratio = devicePixelRatioF();
  const QPointF device = (pixel - QPointF(target.box.topLeft())) * ratio;
  const QPointF user =
      PainterSurface::ToUser(target.picture.scale, QRect(QPoint(0, 0), target.box.size() * ratio), device);
  const RecordedAction recorded(&form_, SessionRecorder::PointerLine(form_, k, action, user.x(), user.y(), button));
  form_.PictureMouse(k, action, user.x(), user.y(), button);
  changed_();
  update();
}

void PlotWidget::ShowPopup(QPoint global) {
  if (form_.PopupMenu().empty()) return;
  QMenu menu(this);
  FillMenu(&menu, form_.PopupMenu().front().children, &form_.controls(), [this](const std::string& name) {
    std::string base;
    int index = -1;
    SplitIndexedName(name, base, index);
    const RecordedAction recorded(&form_, "popup " + name);
    form_.RunMenu(base, index);
    changed_();
  });
  menu.exec(global);
}

}  // namespace keldo::qt

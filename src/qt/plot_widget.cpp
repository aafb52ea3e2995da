#include "qt/plot_widget.h"

#include <QMenu>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

#include "qt/menu_builder.h"
#include "qt/painter_surface.h"

namespace keldo::qt {
namespace {

QString Q(const std::string& s) { return QString::fromStdString(s); }

// Margins around a picture that hold its axis labels, in pixels.
constexpr int kLabelLeft = 64;
constexpr int kLabelBottom = 24;
constexpr int kMarginTop = 10;
constexpr int kMarginRight = 28;
constexpr int kCaptionHeight = 18;

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
    if (p.side > 0) {
      // The largest whole multiple of the natural side that fits; a cell
      // too small for one gets the picture shrunk to fit.
      const int room = std::max(1, std::min(box.width(), box.height()));
      const int side = room >= p.side ? room / p.side * p.side : room;
      box = QRect(box.left() + (box.width() - side) / 2, box.top() + (box.height() - side) / 2, side, side);
    }
    placed.push_back({p, box});
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
    p.drawImage(box.topLeft(), cache);
    DrawLabels(p, placed[k]);
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

void PlotWidget::mouseDoubleClickEvent(QMouseEvent* event) {
  const std::vector<Placed> placed = Layout();
  const QPoint at = event->position().toPoint();
  for (std::size_t k = 0; k < placed.size(); ++k) {
    const QRect box = placed[k].box;
    const QRect caption(box.left(), box.bottom() + kLabelBottom, box.width(), kCaptionHeight);
    if ((placed[k].picture.captioned || !placed[k].picture.caption.empty()) && caption.contains(at)) {
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
    form_.RunMenu(base, index);
    changed_();
  });
  menu.exec(global);
}

}  // namespace keldo::qt

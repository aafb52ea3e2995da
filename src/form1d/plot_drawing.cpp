#include "form1d/plot_drawing.h"

#include <algorithm>
#include <cmath>

#include "common/number_text.h"

namespace keldo::form1d {
namespace {

using platform::UserPoint;
using platform::UserSegment;

// Cuts a segment to the rectangle (Liang-Barsky); false when nothing is left.
// Only used to keep coordinates near the picture: the rectangle is wider
// than the window, so the visible part is unchanged.
bool ClipToRect(UserSegment& s, double left, double right, double bottom, double top) {
  const double dx = s.x2 - s.x1, dy = s.y2 - s.y1;
  double t0 = 0.0, t1 = 1.0;
  const double p[4] = {-dx, dx, -dy, dy};
  const double q[4] = {s.x1 - left, right - s.x1, s.y1 - bottom, top - s.y1};
  for (int k = 0; k < 4; ++k) {
    if (p[k] == 0.0) {
      if (q[k] < 0.0) return false;
      continue;
    }
    const double r = q[k] / p[k];
    if (p[k] < 0.0) t0 = std::max(t0, r);
    else t1 = std::min(t1, r);
    if (t0 > t1) return false;
  }
  const double x1 = s.x1, y1 = s.y1;
  if (t1 < 1.0) {
    s.x2 = x1 + t1 * dx;
    s.y2 = y1 + t1 * dy;
  }
  if (t0 > 0.0) {
    s.x1 = x1 + t0 * dx;
    s.y1 = y1 + t0 * dy;
  }
  return true;
}

void DottedLine(std::vector<UserPoint>& dots, int steps, double x0, double y0, double dx, double dy) {
  for (int j = 0; j <= steps; ++j) dots.push_back({x0 + j * dx, y0 + j * dy});
}

}  // namespace

platform::Rgb GraphColour(int g) { return platform::StandardColour(10 + ((g % 6) + 6) % 6); }

platform::Rgb GraphColor(double value) {
  if (value > 0.0) return platform::StandardColour(3);
  if (value < 0.0) return platform::StandardColour(4);
  return platform::StandardColour(5);
}

platform::Rgb GridColour() { return platform::StandardColour(3); }

GridStyle GridStyleOf(char letter) { return letter == kAxes ? kAxes : letter == kNoGrid ? kNoGrid : kGraphPaper; }

Background BackgroundOf(char letter) { return letter == kWhiteBackground ? kWhiteBackground : kBlackBackground; }

platform::Rgb BackgroundColour(Background background) {
  return background == kWhiteBackground ? platform::kWhite : platform::kBlack;
}

platform::Rgb ContrastColour(Background background) {
  return background == kWhiteBackground ? platform::kBlack : platform::kWhite;
}

platform::UserScale ScaleOf(const PlotWindow& w) { return {w.left, w.top, w.right, w.bottom}; }

void DrawAxes(platform::Surface& surface, GridStyle grid, const PlotWindow& w) {
  surface.SetScale(ScaleOf(w));
  const platform::Rgb c = GridColour();
  const double left = w.left, right = w.right, bottom = w.bottom, top = w.top;
  if (grid == kGraphPaper) {
    const double dy8 = (top - bottom) / 8, dx8 = (right - left) / 8;
    // The dots' steps: 128 on the screen, so dy128 and dx128 there.
    const int steps = std::max(1, surface.GridDotSteps());
    const double dy128 = (top - bottom) / steps, dx128 = (right - left) / steps;
    const UserSegment edges[4] = {{left, bottom, right, bottom},
                                  {right, bottom, right, top},
                                  {right, top, left, top},
                                  {left, top, left, bottom}};
    surface.Lines(edges, c);
    std::vector<UserPoint> dots;
    dots.reserve(18 * static_cast<std::size_t>(steps + 1));
    for (int k = 0; k <= 8; ++k) {
      DottedLine(dots, steps, left, bottom + k * dy8, dx128, 0.0);
      DottedLine(dots, steps, left + k * dx8, bottom, 0.0, dy128);
    }
    surface.Pixels(dots, c);
    return;
  }
  if (grid != kAxes) return;
  const double sx = (right - left) / 10.1, sy = (top - bottom) / 10.1;
  const double tx = sx / 6, ty = sy / 7;
  // The crossing point: 0 on an axis the window straddles, else the nearer edge.
  const double x0 = left > 0.0 ? left : (right < 0.0 ? right : 0.0);
  const double y0 = bottom > 0.0 ? bottom : (top < 0.0 ? top : 0.0);
  std::vector<UserSegment> lines = {{left, y0, right, y0}, {x0, bottom, x0, top}};
  if (sx > 0.0 && std::isfinite(sx)) {
    for (int side = -1; side <= 1; side += 2)
      for (int k = 1; k <= 11; ++k) {
        const double x = x0 + side * k * sx;
        if (x < left || x > right) break;
        lines.push_back({x, y0 - ty, x, y0 + ty});
      }
  }
  if (sy > 0.0 && std::isfinite(sy)) {
    for (int side = -1; side <= 1; side += 2)
      for (int k = 1; k <= 11; ++k) {
        const double y = y0 + side * k * sy;
        if (y < bottom || y > top) break;
        lines.push_back({x0 - tx, y, x0 + tx, y});
      }
  }
  surface.Lines(lines, c);
}

void DrawGraph(platform::Surface& surface, const GraphTrace& graph, const PlotWindow& w, bool dots) {
  if (!graph.values || graph.count <= 0) return;
  const platform::Rgb c = GraphColour(graph.colourIndex);
  const double* v = graph.values;
  if (dots) {
    std::vector<UserPoint> points;
    points.reserve(static_cast<std::size_t>(graph.count));
    for (int i = 0; i < graph.count; ++i) {
      const double x = graph.a + i * graph.h, y = v[i];
      if (x >= w.left && x <= w.right && y >= w.bottom && y <= w.top) points.push_back({x, y});
    }
    surface.Pixels(points, c);
    return;
  }
  // A rectangle one window beyond each side: the painter never meets a
  // coordinate far from the picture, and what shows is unchanged.
  const double mx = w.right - w.left, my = w.top - w.bottom;
  std::vector<UserSegment> segments;
  segments.reserve(static_cast<std::size_t>(graph.count));
  for (int i = 0; i + 1 < graph.count; ++i) {
    UserSegment s{graph.a + i * graph.h, v[i], graph.a + (i + 1) * graph.h, v[i + 1]};
    if (std::max(s.x1, s.x2) < w.left || std::min(s.x1, s.x2) > w.right) continue;
    if ((s.y1 > w.top && s.y2 > w.top) || (s.y1 < w.bottom && s.y2 < w.bottom)) continue;
    if (!std::isfinite(s.y1) || !std::isfinite(s.y2)) continue;
    const bool inside = s.x1 >= w.left - mx && s.x2 <= w.right + mx && std::max(s.y1, s.y2) <= w.top + my &&
                        std::min(s.y1, s.y2) >= w.bottom - my;
    if (!inside && !ClipToRect(s, w.left - mx, w.right + mx, w.bottom - my, w.top + my)) continue;
    segments.push_back(s);
  }
  surface.Lines(segments, c);
}

void DrawPlot(platform::Surface& surface, const PlotStyle& style, const PlotWindow& w,
              std::span<const GraphTrace> graphs, std::span<const Crosshair> crosshairs) {
  surface.Clear(BackgroundColour(style.background));
  DrawAxes(surface, style.grid, w);
  surface.SetScale(ScaleOf(w));
  for (const GraphTrace& g : graphs) DrawGraph(surface, g, w, style.dots);
  if (crosshairs.empty()) return;
  const double armX = (w.right - w.left) / kCrosshairDivisor, armY = (w.top - w.bottom) / kCrosshairDivisor;
  std::vector<UserSegment> arms;
  for (const Crosshair& c : crosshairs) {
    if (!std::isfinite(c.y) || c.y < w.bottom - armY || c.y > w.top + armY) continue;
    arms.push_back({c.x - armX, c.y, c.x + armX, c.y});
    arms.push_back({c.x, c.y - armY, c.x, c.y + armY});
  }
  surface.Lines(arms, ContrastColour(style.background));
}

std::array<std::string, 10> AxisLabelTexts(const PlotWindow& w) {
  const double cx = (w.left + w.right) / 2, qx = (w.right - w.left) / 4;
  const double cy = (w.bottom + w.top) / 2, qy = (w.top - w.bottom) / 4;
  return {FormatLabel(w.left),   FormatLabel(cx - qx), FormatLabel(cx),      FormatLabel(cx + qx),
          FormatLabel(w.bottom), FormatLabel(w.top),   FormatLabel(cy + qy), FormatLabel(cy),
          FormatLabel(cy - qy),  FormatLabel(w.right)};
}

void GETBVTV(double& x1, double& x2, double& y1, double& y2, double dx, double bottom, double top) {
  if (y1 > top && y2 > top) {
    y1 = y2 = top + 1.0;
    return;
  }
  if (y1 < bottom && y2 < bottom) {
    y1 = y2 = bottom - 1.0;
    return;
  }
  const double slope = (y2 - y1) / dx;
  // The top side.
  if (y1 > top) {
    x1 = x1 + (top - y1) / slope;
    y1 = top;
  } else if (y2 > top) {
    x2 = x2 + (top - y2) / slope;
    y2 = top;
  }
  // The bottom side.
  if (y1 < bottom) {
    x1 = x1 + (bottom - y1) / slope;
    y1 = bottom;
  } else if (y2 < bottom) {
    x2 = x2 + (bottom - y2) / slope;
    y2 = bottom;
  }
}

int LineCoord(double x1, double x2, double y1, double y2, double& ox1, double& ox2, double& oy1, double& oy2,
              const PlotWindow& w) {
  ox1 = x1;
  ox2 = x2;
  oy1 = y1;
  oy2 = y2;
  if (std::max(x1, x2) < w.left || std::min(x1, x2) > w.right) return 1;
  if ((y1 > w.top && y2 > w.top) || (y1 < w.bottom && y2 < w.bottom)) return -1;
  if (y1 > w.top || y2 > w.top || y1 < w.bottom || y2 < w.bottom) GETBVTV(ox1, ox2, oy1, oy2, x2 - x1, w.bottom, w.top);
  return 1;
}

}  // namespace keldo::form1d

#include "print/print_positions.h"

#include <cmath>

namespace keldo::print {
namespace {

// The amounts each position adds beyond the window, in terms of the window's
// width dx and height dy and the page ratios r and r2.
struct Margins {
  double left, right, top, bottom;  // subtracted from xl, added to xr, added to yt, subtracted from yb
  PrintSize size;
};

std::optional<Margins> MarginsOf(const std::string& p, double dx, double dy, double r, double r2) {
  const double dx15 = dx / 15.0, dy15 = dy / 15.0, dx6 = dx / 6.0;
  // Shared columns and rows of the table.
  const double aLeft = 1.7 * r * dx15, aRight = r * dx;
  const double bLeft = 14.0 * r * dx15, bRight = 4.0 * dx15;
  const double mediumTop = 1.7 * r * dy15, mediumBottom = 1.7 * r * dy;
  const double sLeft = 8.5 * r * dx15, sRight = 1.5 * r * dx;
  const double sTop = 2.21 * r * dy15 + 5.0 * dy15, sBottom = 3.06 * r * dy - 5.0 * dy15;
  const double cTop = 2.21 * r * dy15 + 24.0 * dy15, cBottom = 3.06 * r * dy - 24.0 * dy15;
  const double centreTop = 34.0 * r * dy / 36.0, centreBottom = 30.0 * r * dy / 36.0;
  using S = PrintSize;
  if (p == kSavedFormPosition) return Margins{dx15, dx, r * dy15, r * dy, S::Big};
  if (p == "(A), Medium, top, left") return Margins{aLeft, aRight, mediumTop, mediumBottom, S::Medium};
  if (p == "(B), Medium, top, right") return Margins{bLeft, bRight, mediumTop, mediumBottom, S::Medium};
  if (p == "(a), Small, top, left") return Margins{sLeft, sRight, sTop, sBottom, S::Small};
  if (p == "(b), Small, top, right")
    return Margins{sLeft + 20.0 * dx15, sRight - 20.0 * dx15, sTop, sBottom, S::Small};
  if (p == "(c), Small, center, left") return Margins{sLeft, sRight, cTop, cBottom, S::Small};
  if (p == "(d), Small, center, right")
    return Margins{sLeft + 20.0 * dx15, sRight - 20.0 * dx15, cTop, cBottom, S::Small};
  if (p == "Small, top, center") return Margins{sLeft + 10.0 * dx15, sRight - 10.0 * dx15, sTop, sBottom, S::Small};
  if (p == "(C), Medium, center, left") return Margins{aLeft, aRight, centreTop, centreBottom, S::Medium};
  if (p == "(D), Medium, center, right") return Margins{bLeft, bRight, centreTop, centreBottom, S::Medium};
  if (p == "Medium, center, center")
    return Margins{11.0 * dx15, 11.0 * dx15, 32.0 * r * dy / 36.0, 32.0 * r * dy / 36.0, S::Medium};
  if (p == "Large, center, center") return Margins{dx / 2.0, dx / 2.0, 15.0 * r * dy / 32.0, 15.0 * r * dy / 32.0, S::Big};
  if (p == "(1) Large, top, center") return Margins{7.0 * dx / 16.0, 9.0 * dx / 16.0, r * dy15, r * dy, S::Big};
  if (p == "(2) Large, bottom, center")
    return Margins{7.0 * dx / 16.0, 9.0 * dx / 16.0, 5.0 * r * dy / 6.0, r * dy / 6.0, S::Big};
  if (p == "1: Large, top, left") return Margins{dx15, dx, r2 * dy15, r2 * dy, S::Big};
  if (p == "2: Large, top, right") return Margins{dx + dx6, dx6, r2 * dy15, r2 * dy, S::Big};
  return std::nullopt;
}

}  // namespace

std::optional<PrinterRectangle> SetPrinterScale(const std::string& position, const PrintWindow& w,
                                                double pageAspect) {
  const double dx = w.right - w.left, dy = w.top - w.bottom;
  if (!(dx > 0.0) || !(dy > 0.0) || !std::isfinite(dx) || !std::isfinite(dy) || !(pageAspect > 0.0)) return std::nullopt;
  const std::optional<Margins> m = MarginsOf(position, dx, dy, 1.2 * pageAspect, 1.5 * pageAspect);
  if (!m) return std::nullopt;
  return PrinterRectangle{w.left - m->left, w.right + m->right, w.top + m->top, w.bottom - m->bottom, m->size};
}

int GridDotStepsOf(PrintSize size) {
  switch (size) {
    case PrintSize::Big: return 2400;
    case PrintSize::Medium: return 1200;
    case PrintSize::Small: return 800;
  }
  return 1200;
}

PagePlace PlaceOnPage(const PrinterRectangle& r, const PrintWindow& w) {
  const double width = r.right - r.left, height = r.top - r.bottom;
  return {(w.left - r.left) / width, (r.top - w.top) / height, (w.right - r.left) / width,
          (r.top - w.bottom) / height};
}

}  // namespace keldo::print

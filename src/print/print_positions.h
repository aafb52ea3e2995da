#pragma once
// Where a printed graph falls on the sheet. Rather than scaling the drawing,
// the printer is given a coordinate rectangle larger than the graph's
// window, in the window's own coordinates; the page spans that rectangle, so
// the window lands at the wanted place and size. One table row per position.

#include <optional>
#include <string>
#include <vector>

namespace keldo::print {

// A graph's window in its own coordinates.
struct PrintWindow {
  double left = 0.0, right = 1.0, bottom = 0.0, top = 1.0;
};

// The print size letter: Big, Medium or Small. It sets the density of the
// graph paper and where labels stand.
enum class PrintSize : char { Big = 'B', Medium = 'M', Small = 'S' };

// The coordinates the page's edges take: left and right at its left and
// right edges, top at its top edge and bottom at its bottom edge.
struct PrinterRectangle {
  double left = 0.0, right = 1.0, top = 1.0, bottom = 0.0;
  PrintSize size = PrintSize::Medium;
};

// The steps of a dotted grid line on paper of the size: 2400 Big, 1200
// Medium, 800 Small.
int GridDotStepsOf(PrintSize size);

// The position offered only by a saved form that holds it.
inline constexpr const char* kSavedFormPosition = "(AA), Big, top, right";

// The printer rectangle of a position for a window, on a page whose width
// over height is `pageAspect` (r = 1.2 and r2 = 1.5 times it). Nothing for a
// text that names no position, or for an empty window.
std::optional<PrinterRectangle> SetPrinterScale(const std::string& position, const PrintWindow& window,
                                                double pageAspect);

// The window's place on the page, as fractions of the page's width (from its
// left edge) and height (from its top edge).
struct PagePlace {
  double left = 0.0, top = 0.0, right = 1.0, bottom = 1.0;
};
PagePlace PlaceOnPage(const PrinterRectangle& rectangle, const PrintWindow& window);

}  // namespace keldo::print

#pragma once
// How the graphs of a one-dimensional form reach a drawing surface: the
// scale, the grid behind them, their colours, and the two plot styles. The
// form keeps the state; these routines turn it into surface calls, so the
// window, a screenshot and a benchmark draw the same picture.

#include <array>
#include <span>
#include <string>
#include <vector>

#include "platform/surface.h"

namespace keldo::form1d {

struct PlotWindow {
  double left = -0.5, right = 0.5, bottom = 0.0, top = 0.0;
};

// What is drawn behind the graphs. The values are the letters a form file
// keeps for them.
enum GridStyle : char { kGraphPaper = 'G', kAxes = 'X', kNoGrid = 'B' };
enum Background : char { kBlackBackground = 'B', kWhiteBackground = 'W' };

struct PlotStyle {
  GridStyle grid = kGraphPaper;
  Background background = kBlackBackground;
  bool dots = true;  // a pixel at each sample; otherwise lines between them
};

// The letter a form file keeps, read back; anything else gives the default.
GridStyle GridStyleOf(char letter);
Background BackgroundOf(char letter);

// One graph to draw: count samples from a in steps of h.
struct GraphTrace {
  const double* values = nullptr;
  int count = 0;
  double a = 0.0;
  double h = 0.0;
  int colourIndex = 0;
};

// A crosshair at a point of a graph.
struct Crosshair {
  double x = 0.0, y = 0.0;
};

// Entry 10 + g mod 6 of the standard table: bright green, cyan, red, magenta,
// yellow and white.
platform::Rgb GraphColour(int g);
// A value-signed colour: entry 3 above 0, 4 below, 5 at 0.
platform::Rgb GraphColor(double value);
// Colour entry 3: the grid and the axes.
platform::Rgb GridColour();
platform::Rgb BackgroundColour(Background background);
// The colour that stands out on a background: the crosshairs, the read-out.
platform::Rgb ContrastColour(Background background);

// The scale that maps the window onto a surface: (left, top) to the top-left.
platform::UserScale ScaleOf(const PlotWindow& w);

// Sets the scale and draws the grid style in colour entry 3.
void DrawAxes(platform::Surface& surface, GridStyle grid, const PlotWindow& w);
// One graph in dots (a pixel at each sample inside the window) or lines (a
// segment per interval that overlaps the window in x, unless both of its
// ends stand above the top or both below the bottom).
void DrawGraph(platform::Surface& surface, const GraphTrace& graph, const PlotWindow& w, bool dots);
// The whole picture: clear to the background, the grid, then every graph
// in order, then the crosshairs in the contrasting colour.
void DrawPlot(platform::Surface& surface, const PlotStyle& style, const PlotWindow& w,
              std::span<const GraphTrace> graphs, std::span<const Crosshair> crosshairs = {});

// The ten axis labels in "#0.###": 0 left, 9 right, 2 the x centre, 1 and 3
// a quarter of the width to each side of it; 4 bottom, 5 top, 7 the y
// centre, 6 and 8 a quarter of the height above and below it.
std::array<std::string, 10> AxisLabelTexts(const PlotWindow& w);

// Clips the segment (x1,y1)-(x2,y2), x2 - x1 = dx, to the window's y range in
// place. A segment wholly above the top gets both y values top + 1, wholly
// below bottom - 1, so that the caller can skip it.
void GETBVTV(double& x1, double& x2, double& y1, double& y2, double dx, double bottom, double top);

// Clips a segment to the window's y range for printing. A segment wholly
// outside the window in x is left as it is; one wholly above or below gives
// -1 (not to be drawn); otherwise the ends are cut at the boundary by the
// slope and the result is 1.
int LineCoord(double x1, double x2, double y1, double y2, double& ox1, double& ox2, double& oy1, double& oy2,
              const PlotWindow& w);

// Crosshair arms: the window's width and height over this number.
constexpr double kCrosshairDivisor = 65.97344572538559;

}  // namespace keldo::form1d

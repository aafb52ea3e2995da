#pragma once
// The areas in which graphs travel between forms (Copy graph, Paste graph).
// The frame owns them; they survive the forms that filled them.

#include <string>
#include <vector>

namespace keldo {

// One graph of a one-dimensional form: N+1 samples over [a, b] in steps h.
struct GraphExchangeArea1D {
  bool holdsGraph = false;
  int points = 0;
  double a = 0.0, b = 0.0, h = 0.0;
  std::vector<double> values;
};

// One graph of a two-dimensional form: (N+1) by (N+1) samples, row 0
// first, with its domain and how it was shown (its zoom, threshold, pens,
// colour and intensity letters).
struct GraphExchangeArea2D {
  bool holdsGraph = false;
  int points = 0;
  float left = 0.0f, right = 0.0f, step = 0.0f;
  float threshold = 0.0f;
  float viewXLeft = 0.0f, viewXRight = 0.0f, viewYLow = 0.0f, viewYHigh = 0.0f;
  int drawWidths = 1;
  int penWidth = 1, largePenWidth = 1;
  int linReg = 0;
  std::string intensity, colorMethod, thresholdText;
  std::vector<float> values;
};

struct GraphExchange {
  GraphExchangeArea1D oneDimensional;
  GraphExchangeArea2D twoDimensional;
};

}  // namespace keldo

#pragma once
// The areas in which graphs travel between forms (Copy graph, Paste graph).
// The frame owns them; they survive the forms that filled them.

#include <vector>

namespace keldo {

// One graph of a one-dimensional form: N+1 samples over [a, b] in steps h.
struct GraphExchangeArea1D {
  bool holdsGraph = false;
  int points = 0;
  double a = 0.0, b = 0.0, h = 0.0;
  std::vector<double> values;
};

struct GraphExchange {
  GraphExchangeArea1D oneDimensional;
};

}  // namespace keldo

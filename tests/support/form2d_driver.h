#pragma once
// Driving a two-dimensional form in tests: a new form of N points, a plot
// through the Graphing box, and one sample of a graph.

#include <gtest/gtest.h>

#include <string>

#include "form2d/graph2_form.h"
#include "kit/typed_forms.h"
#include "test_frame.h"

namespace keldo::testing {

inline form2d::Graph2Form& NewForm(TestFrame& t, int points = 64) {
  int code = 0;
  form2d::Graph2Form& f = *NewFormOf<form2d::Graph2Form>(t.frame, code);
  f.SetPoints(points);
  return f;
}

inline void Plot(form2d::Graph2Form& f, const std::string& formula, const std::string& l = ".5") {
  f.RunMenu("mnuPlot");
  f.controls().SetText("Formula", formula);
  f.controls().SetText("EndRValue", l);
  ASSERT_TRUE(f.Go());
}

inline float Sample(const form2d::Graph2Form& f, int g, int i, int j) {
  return f.GraphValues(g)[static_cast<std::size_t>(i) * f.RowStride() + static_cast<std::size_t>(j)];
}

}  // namespace keldo::testing

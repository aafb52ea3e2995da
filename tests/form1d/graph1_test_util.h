#pragma once
// Shared steps of the one-dimensional form's tests.

#include <gtest/gtest.h>

#include <string>

#include "form1d/graph1_form.h"
#include "kit/typed_forms.h"
#include "test_frame.h"

namespace keldo::testing {

using form1d::Graph1Form;

// A new form of the given points, with no side box open.
inline Graph1Form& NewForm(TestFrame& t, int points = 64) {
  int code = 0;
  auto& f = *NewFormOf<Graph1Form>(t.frame, code);
  f.SetPoints(points);
  return f;
}

// Opens the Graphing box and plots the formula over [-L, L].
inline void Plot(Graph1Form& f, const std::string& formula, const std::string& end = ".5") {
  f.RunMenu("mnuPlotGraph");
  f.controls().SetText("Formula", formula);
  f.controls().SetText("EndRValue", end);
  ASSERT_TRUE(f.Go());
}

// The newest open form, as a one-dimensional form.
inline Graph1Form& Last(TestFrame& t) { return *FormAs<Graph1Form>(t.frame.OpenForms().back()); }

}  // namespace keldo::testing

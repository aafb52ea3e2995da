#pragma once
// Driving a one-dimensional form in tests: a new form of N points and a plot
// through the graphing box over [-0.5, 0.5].

#include <gtest/gtest.h>

#include <string>

#include "form1d/graph1_form.h"
#include "kit/typed_forms.h"
#include "test_frame.h"

namespace keldo::testing {

inline form1d::Graph1Form& NewGraphForm(TestFrame& t, int points) {
  int code = 0;
  form1d::Graph1Form& f = *NewFormOf<form1d::Graph1Form>(t.frame, code);
  f.SetPoints(points);
  return f;
}

inline void Plot(form1d::Graph1Form& f, const std::string& formula) {
  f.RunMenu("mnuPlotGraph");
  f.controls().SetText("Formula", formula);
  f.controls().SetText("EndRValue", ".5");
  ASSERT_TRUE(f.Go());
}

}  // namespace keldo::testing

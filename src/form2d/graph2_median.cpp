// The median filters of the two-dimensional form: a graph's samples through
// the windows the image processor's filters use, kept as a new graph.

#include "form2d/graph2_form.h"

namespace keldo::form2d {

void Graph2Form::DenoiseMedian() { DenoiseWithMedian(analysis::MedianRule::Plain); }

void Graph2Form::DenoiseAdaptiveMedian() { DenoiseWithMedian(analysis::MedianRule::Adaptive); }

void Graph2Form::DenoiseWithMedian(analysis::MedianRule rule) {
  const int g = graphNumber_("TxtAnGr1", graphCount_, kEvaluatedGraph);
  if (g < 0) return;
  const int side = n_ + 1;
  const std::vector<float> out = analysis::MedianFilterSamples(store_.Row(g), Stride(), side, side, rule);
  // The source graph stays; the result is filed after it (on a new form
  // when this one is full).
  const auto s = static_cast<std::size_t>(g);
  DisplayFunction(n_, out.data(), static_cast<std::size_t>(side), store_.a[s], store_.b[s], store_.h[s]);
}

}  // namespace keldo::form2d

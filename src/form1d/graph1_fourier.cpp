// The Fourier commands of the one-dimensional form: the side boxes of the
// transforms, the reading of their choices, and the result forms.

#include <cmath>

#include "kit/focus.h"
#include "kit/form_context.h"
#include "common/number_text.h"
#include "form1d/graph1_form.h"
#include "fourier/transforms.h"

namespace keldo::form1d {
namespace {

const std::vector<std::string>& TransformWindows() {
  static const std::vector<std::string> kNames = {"None", "Blackman", "Gauss", "Hamming", "hanning"};
  return kNames;
}

struct OptionRow {
  const char* name;
  const char* caption;
  const char* tip;
  const char* group;
};

constexpr OptionRow kTransformOptions[] = {
    {"FTReal", "Real", "Signal consists of only real values.", "FTData"},
    {"FTComplex", "Complex", "Signal consists of real and complex values.", "FTData"},
    {"TrOp1", "Real/Im", "Transform displayed as real and imaginary parts.", "TrOp"},
    {"TrOp2", "Amp/Ph", "Transform displayed as magnitude and phase angle.", "TrOp"},
    {"TrOp3", "Power sp", "Magnitudes-squared of transform values.", "TrOp"},
    {"FTIntOp1", "[-L,L]-->[-A,A]", "Signal over [-L,L], transform over [-A,A].", "FTIntOp"},
    {"FTIntOp2", "[0,L]-->[-A,A]", "Signal over [0,L], transform over [-A,A].", "FTIntOp"},
    {"FTIntOp3", "[-L,L]-->[0,A]", "Signal over [-L,L], transform over [0,A].", "FTIntOp"},
    {"FTIntOp4", "[0,L]-->[0,A]", "Signal over [0,L], transform over [0,A].", "FTIntOp"},
    {"PosExponent", "+", "Plus sign on i in exponent.", "FTExponent"},
    {"NegExponent", "-", "Neg. sign on i in exponent.", "FTExponent"},
};

}  // namespace

void Graph1Form::BuildFourierControls() {
  for (const OptionRow& row : kTransformOptions) {
    controls_.AddOption(row.name, row.caption, row.group).tip = row.tip;
  }
  for (const char* chosen : {"FTReal", "TrOp1", "FTIntOp1", "NegExponent"}) controls_[chosen].value = 1;
  controls_.Add("FTGraph", ControlKind::Text, "1").tip = "The number of the graph.";
  controls_.Add("RealPart", ControlKind::Text, "1").tip = "Specify real part of signal.";
  controls_.Add("ImagPart", ControlKind::Text, "2").tip = "Specify imaginary part of signal.";
  for (int k = 0; k < 2; ++k) {
    Control& list = controls_.Add(IndexedName("TrFilter", k), ControlKind::List, "None");
    list.items = TransformWindows();
  }
  controls_.Add("chkFPerEA(1)", ControlKind::Check, "Periodic, endpoint averaged").tip =
      "If checked, starting and final values of signal are averaged.";
  controls_.Add("LabFTrigTran", ControlKind::Label, "Sine transform");
  controls_.Add("GraphFTrigTran", ControlKind::Text, "1").tip = "The number of the graph.";
  Control& go2 = controls_.Add("GoButton(2)", ControlKind::Button, "&Transform");
  go2.tip = "Computes the transform into a new form.";
  Control& go3 = controls_.Add("GoButton(3)", ControlKind::Button, "&Transform");
  go3.tip = "Computes the transform into a new form.";
}

void Graph1Form::PresetGraphField(const std::string& field) {
  if (graphCount_ > 1) controls_.SetText(field, std::to_string(FindNearestGraph(trace_.X(), trace_.Y()) + 1));
}

bool Graph1Form::GetTransformParameters(fourier::TransformSetup& setup) {
  auto chosen = [&](std::initializer_list<const char*> names) {
    int k = 0;
    for (const char* name : names) {
      ++k;
      if (controls_[name].value) return k;
    }
    return 0;
  };
  const int data = chosen({"FTReal", "FTComplex"});
  const int output = chosen({"TrOp1", "TrOp2", "TrOp3"});
  const int exponent = chosen({"NegExponent", "PosExponent"});
  const int interval = chosen({"FTIntOp1", "FTIntOp2", "FTIntOp3", "FTIntOp4"});
  if (data == 0 || output == 0 || exponent == 0 || interval == 0) {
    context_.Beep();
    if (interval == 0) RequestFocus(controls_, "FTIntOp1");
    return false;
  }
  setup.dataType = data == 1 ? fourier::DataType::Real : fourier::DataType::Complex;
  setup.displayKind = output == 3 ? 0 : output;
  setup.outputClass = output == 3 ? 2 : 1;
  setup.exponent = exponent == 1 ? fourier::Exponent::Negative : fourier::Exponent::Positive;
  setup.intervalType = interval;
  setup.signalInterval = (interval == 1 || interval == 3) ? 1 : 2;
  return true;
}

void Graph1Form::FourierTransform() {
  fourier::TransformSetup setup;
  if (!GetTransformParameters(setup)) return;
  const bool complex = setup.dataType == fourier::DataType::Complex;
  const int re = graphNumber_(complex ? "RealPart" : "FTGraph", graphCount_);
  if (re < 0) return;
  const int im = complex ? graphNumber_("ImagPart", graphCount_) : -1;
  if (complex && im < 0) return;
  setup.window = controls_.Text("TrFilter(0)");
  setup.endpointAveraged = controls_["chkFPerEA(1)"].value != 0;
  context_.ShowBusy();
  const fourier::TransformResult r = fourier::FourierTransformOf(
      n_, GraphValues(re), complex ? GraphValues(im) : nullptr, GraphLeft(re), GraphRight(re), setup);
  context_.ShowIdle();
  ShowResultForm(r);
}

void Graph1Form::FourierTrigTransform(int kind) {
  const int g = graphNumber_("GraphFTrigTran", graphCount_);
  if (g < 0) return;
  context_.ShowBusy();
  const fourier::TransformResult r =
      fourier::FourierTrigTransformOf(n_, GraphValues(g), GraphLeft(g), GraphRight(g), kind, controls_.Text("TrFilter(1)"));
  context_.ShowIdle();
  ShowResultForm(r);
}

void Graph1Form::ShowResultForm(const fourier::TransformResult& r) {
  Graph1Result result = Graph1Result::Of(n_, r.first, r.left, r.right, r.step);
  result.setInterval = true;
  result.show = Graph1Result::Show::AllGraphs;
  if (!r.second.empty()) result.graphs.push_back({r.second, r.left, r.right, r.step});
  NewResultForm(result);
}

}  // namespace keldo::form1d

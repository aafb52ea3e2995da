#include "kit/measuring_box.h"

#include <cmath>

#include "common/number_text.h"
#include "kit/form.h"
#include "kit/form_context.h"

namespace keldo {
namespace {

constexpr const char* kNormNames[3] = {"OptSupNorm", "OpVarNorm", "OptPowerNorm"};

void ShowResult(Form& form, const std::string& text) {
  form.controls().SetText("AnalysisText", text);
  form.Touch();
}

// The label of the norm chosen, and which norm it is.
std::string NormLabel(ControlModel& controls, double p, MeasureNorm& kind) {
  if (controls["OptSupNorm"].value) {
    kind = MeasureNorm::Sup;
    return "Sup-Norm";
  }
  if (controls["OpVarNorm"].value) {
    kind = MeasureNorm::Var;
    return "Var-Norm";
  }
  kind = MeasureNorm::Power;
  return PlainNumber(p) + "-Norm";
}

}  // namespace

bool IsMeasure(const std::string& title) {
  return title == "Norm" || title == "Norm difference" || title == "Integral" || title == "Scalar product";
}

void AddMeasuringControls(ControlModel& controls, const MeasuringBoxStyle& style) {
  controls.Add("TxtAnGr2", ControlKind::Text, "2").tip = "The number of the second graph.";
  for (int k = 0; k < 3; ++k)
    controls.AddOption(kNormNames[k], style.normCaptions[static_cast<std::size_t>(k)], "NormKind", k == 2);
  if (style.signalToNoise) controls.AddOption("OpSNR", "SNR", "NormKind");
  controls.Add("NormPower", ControlKind::Text, "2").tip = "The power p of the norm, 1 or more.";
  controls.Add(style.normalizeName, ControlKind::Check, style.normalizeCaption).tip = style.normalizeTip;
  controls.AddOption("AbsNorm", "Absolute", "NormDifference", true);
  controls.AddOption("RelNorm", "Relative", "NormDifference");
  controls.Add("AnalysisText", ControlKind::Text, "");
}

std::vector<LayoutNode> MeasuringFields(const MeasuringBoxStyle& style) {
  using namespace layout;
  std::vector<LayoutNode> rows{Field(style.firstGraphCaption, "TxtAnGr1"), Field("Graph 2:", "TxtAnGr2"),
                               Item("OptSupNorm"), Item("OpVarNorm"), Pair("OptPowerNorm", "NormPower")};
  if (style.signalToNoise) rows.push_back(Item("OpSNR"));
  for (const char* name : {style.normalizeName, "AbsNorm", "RelNorm"}) rows.push_back(Item(name));
  return rows;
}

void ShowMeasuringFields(ControlModel& controls, const std::string& title, const MeasuringBoxStyle& style) {
  const bool norm = title == "Norm", difference = title == "Norm difference";
  controls.SetVisible("TxtAnGr2", difference || title == "Scalar product");
  for (const char* name : {"OptSupNorm", "OpVarNorm", "OptPowerNorm", "NormPower"})
    controls.SetVisible(name, norm || difference);
  if (style.signalToNoise) {
    controls.SetVisible("OpSNR", difference);
    if (norm && controls["OpSNR"].value) controls.SetFromUser("OptPowerNorm", "1");
  }
  controls.SetVisible(style.normalizeName, norm);
  controls.SetVisible("AbsNorm", difference);
  controls.SetVisible("RelNorm", difference);
  if (style.resultOfMeasuresOnly) controls.SetVisible("AnalysisText", IsMeasure(title));
}

void RunMeasure(Form& form, MeasureSource& source, const std::string& title, const MeasuringBoxStyle& style) {
  ControlModel& controls = form.controls();
  const int g = source.Graph("TxtAnGr1", style.measureGraphs);
  if (g < 0) return;
  const bool difference = title == "Norm difference";
  const bool two = difference || title == "Scalar product";
  const int g2 = two ? source.Graph("TxtAnGr2", style.measureGraphs) : g;
  if (g2 < 0) return;
  if (two && !source.Compatible(g, g2)) return;
  if (style.progressTexts) ShowResult(form, "Computing...");
  std::string label;
  double value = 0.0;
  if (title == "Integral") {
    label = "Integral";
    value = source.Integral(g);
  } else if (title == "Scalar product") {
    label = "Scalar product";
    value = source.ScalarProduct(g, g2);
  } else {
    if (difference && style.signalToNoise && controls["OpSNR"].value) {
      ShowResult(form, source.SignalToNoise(g, g2));
      return;
    }
    const double p = source.Number(controls.Text("NormPower"));
    MeasureNorm kind = MeasureNorm::Power;
    label = NormLabel(controls, p, kind);
    if (style.progressTexts) controls.SetText("AnalysisText", "Computing.....");
    if (!difference) {
      value = source.Norm(g, -1, kind, p);
      if (kind == MeasureNorm::Power && controls[style.normalizeName].value) {
        value = source.Normalized(g, value, p);
        label = "Normalized " + label;
      }
    } else {
      label += " difference";
      value = source.Norm(g, g2, kind, p);
      if (controls["RelNorm"].value) {
        label = "Relative " + label;
        bool divisionByZero = false;
        value = source.Relative(g, g2, value, kind, p, divisionByZero);
        if (divisionByZero) {
          ShowResult(form, label + " error.  Division by zero");
          return;
        }
      }
    }
  }
  if ((difference || style.overflowOfEveryMeasure) && !std::isfinite(value)) {
    ShowResult(form, label + " error.  Overflow");
    return;
  }
  ShowResult(form, label + "\r\n" + PlainNumber(value));
}

void RunStatistics(Form& form, MeasureSource& source, const MeasuringBoxStyle& style) {
  const int g = source.Graph("TxtGraphStat", style.statisticsGraph);
  if (g < 0) return;
  std::string report;
  const int outcome = source.Statistics(g, report);
  if (outcome > 0) {
    form.context().ShowError(outcome);
    return;
  }
  if (outcome < 0) return;
  form.controls().SetText(style.statisticsOutput, report);
  form.Touch();
}

}  // namespace keldo

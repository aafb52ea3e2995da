// The panels of the one-dimensional form's side box and its formula row, as
// a view draws them: fixed captions here, everything else from the controls.

#include "form1d/graph1_form.h"
#include "kit/print_box.h"
#include "kit/quantization_box.h"

namespace keldo::form1d {
namespace {

using namespace layout;
using F = LayoutNode;

LayoutNode GraphPanel() {
  return Rows({Field("L =", "EndRValue"), Field("", "IntervalType1"), Field("", "IntervalType2"),
               Field("", "chkAutoFit"), Item("GoButton(0)")});
}

LayoutNode AnalysisPanel() {
  // The measuring box's fields, then those of the histogram and the energy graph.
  std::vector<LayoutNode> rows = MeasuringFields(kMeasuringBox);
  rows.insert(rows.begin(), Title("AnalysisLabel"));
  rows.insert(rows.end(), {Item("chkHistGram(0)"), Item("chkHistGram(1)"), Item("chkEPerc"),
                           Field("Quantization:", "ComboQuantLevel"), Item("GoButton(5)"),
                           Item("AnalysisText", F::kLabel)});
  return Rows(std::move(rows));
}

LayoutNode CalculatorPanel() {
  return Rows({Field("Formula:", "CalcFormula"), Item("GoButton(6)"), Field("Value:", "Remarks(2)", F::kReadOnly)});
}

LayoutNode DisplayStylePanel() {
  auto options = [](std::initializer_list<int> members) {
    std::vector<LayoutNode> items;
    for (int k : members) items.push_back(Item(IndexedName("OpDispStyle", k)));
    return Column(std::move(items));
  };
  return Column({Rows({Field("X interval:", "txtXinterval"), Field("Y interval:", "txtYinterval")}),
                 Group("Grid", options({0, 1, 2})), Group("Plot", options({3, 4})),
                 Group("Background", options({5, 6})), Item("GoButton(8)")});
}

LayoutNode RemarksPanel() {
  LayoutNode body = Column({Item("Remarks(0)", F::kMultiLine)});
  body.flags = F::kNoMargins;
  return body;
}

LayoutNode TracePanel() {
  std::vector<LayoutNode> items;
  for (int k = 0; k < 5; ++k) items.push_back(GroupOf(IndexedName("FrTrace", k), Column({Item(IndexedName("LabTr", k))})));
  std::vector<LayoutNode> moves;
  // The two middle arrows on each side keep moving while held.
  for (int k = 0; k < 7; ++k)
    moves.push_back(Item(IndexedName("cmdMove", k), F::kNarrow | (k == 1 || k == 5 ? F::kAutoRepeat : 0u)));
  items.push_back(Grid(7, std::move(moves)));
  return Column(std::move(items));
}

LayoutNode FourierTransformPanel() {
  return Column({Line({Item("FTReal"), Item("FTComplex"), Stretch()}),
                 Rows({Field("Graph:", "FTGraph"), Field("Real part:", "RealPart"), Field("Imag. part:", "ImagPart")}),
                 Line({Item("TrOp1"), Item("TrOp2"), Item("TrOp3"), Stretch()}),
                 Grid(2, {Item("FTIntOp1"), Item("FTIntOp2"), Item("FTIntOp3"), Item("FTIntOp4")}),
                 Line({Text("Exponent sign:"), Item("PosExponent"), Item("NegExponent"), Stretch()}),
                 Rows({Field("Filter:", "TrFilter(0)")}), Item("chkFPerEA(1)"), Item("GoButton(2)")});
}

LayoutNode TrigTransformPanel() {
  return Rows({Title("LabFTrigTran"), Field("Graph:", "GraphFTrigTran"), Field("Filter:", "TrFilter(1)"),
               Item("GoButton(3)")});
}

LayoutNode SeriesPanel() {
  return Rows({Title("LblPlotSeries"), Field("Graph:", "LblSeriesGraph"), Field("Harmonics:", "TxtHarmonics"),
               Item("OptionUnfiltered"), Pair("OptionFiltered", "FreqFilter"), CaptionedBy("LabFiltParam1", "FiltParam1"),
               CaptionedBy("LabFiltParam2", "FiltParam2"), Bare("FilterFormula"), Item("chkFPerEA(0)"),
               Item("GoButton(1)")});
}

LayoutNode ConvolvePanel() {
  return Rows({Title("LabConvolve"), Field("Graph1:", "ConvGr1"), Field("Graph2:", "ConvGr2"), Item("ConvChk(0)"),
               Item("ConvChk(1)"), Item("GoButton(4)")});
}

LayoutNode FilteringPanel() {
  auto side = [](const std::string& title, const std::string& option, const std::string& field) {
    return Group(title, Rows({Pair(IndexedName(option, 0), IndexedName(field, 0)), Item(IndexedName(option, 1)),
                              Field("Real:", IndexedName(field, 1)), Field("Imag:", IndexedName(field, 2))}));
  };
  return Column({side("Data", "OpFData", "FDataNum"), side("Filter", "OpFilt", "FiltNum"), Item("GoButton(9)")});
}

LayoutNode WaveletPanel() {
  // Levels: the transform's box or the series' box, whichever is shown.
  return Rows({Title("labWavelet"), Field("Graph", "WavGraph"), Field("Levels:", "wavlevels"),
               Field("Levels:", "WavSerLev"), Pair("WavTypeDaub", "DaubOrder"), Field("", "chkSymDaub"),
               Pair("WavTypeCoif", "CoifOrder"), Item("WavTypeHaar"), Pair("WavTypeOther", "WaveletFilter"),
               Item("chkWavInvTr"), Pair("SerTypeAscend", "WSerNumTerms"), Pair("SerTypeMagnitude", "HighestMag"),
               Pair("SerTypeEnergy", "EnerPerc"), Pair("SerTypeThreshold", "GoButton(10)"), Item("GoButton(7)"),
               Item("Remarks(1)", F::kLabel)});
}

LayoutNode InterpolatePanel() {
  return Rows({Title("AnalysisLabel"), Field("Graph:", "TxtGraphStat"), Item("GoButton(11)"), Item("Remarks(1)", F::kLabel)});
}

LayoutNode AudioPanel() {
  return Rows({Field("Graphs:", "TxtSound(0)"), Field("Rate (Hz):", "TxtSound(1)"), Field("Volume:", "TxtSound(2)"),
               Pair("OpBitRate(0)", "OpBitRate(1)"), Pair("cmdSound(0)", "cmdSound(1)")});
}

LayoutNode FormulaRow() {
  LayoutNode formula = Item("Formula", F::kStretch | F::kFormulaBox);
  formula.tip = "A formula in X; Enter plots it when the Graphing box is open. F1: help.";
  formula.enter = "GoButton(0)";
  formula.minimumWidth = 240;
  std::vector<LayoutNode> items{Text("&Formula:"), formula};
  for (int k = 0; k < 5; ++k) items.push_back(Item(IndexedName("cmdFormula", k), F::kFitWidth));
  return Line(std::move(items));
}

FormLayout MakeLayout() {
  FormLayout l;
  l.sideBox = {{kPanelGraph, GraphPanel()},
               {kPanelAnalysis, AnalysisPanel()},
               {kPanelCalculator, CalculatorPanel()},
               {kPanelDisplayStyle, DisplayStylePanel()},
               {kPanelRemarks, RemarksPanel()},
               {kPanelTrace, TracePanel()},
               {kPanelFourierTransform, FourierTransformPanel()},
               {kPanelTrigTransform, TrigTransformPanel()},
               {kPanelSeries, SeriesPanel()},
               {kPanelConvolve, ConvolvePanel()},
               {kPanelFiltering, FilteringPanel()},
               {kPanelWavelet, WaveletPanel()},
               {kPanelQuantization, QuantizationPanel()},
               {kPanelInterpolate, InterpolatePanel()},
               {kPanelAudio, AudioPanel()},
               {kPanelPrint, PrintGraphPanel()},
               {kPanelPrintForm, PrintFormPanel()}};
  l.bottom = FormulaRow();
  l.captionControl = "GraphCaption";
  l.titleControl = "mnuHelpSideBox";
  l.titleSkip = 9;  // "Help for "
  l.focusField = "Formula";
  l.focusWhileEnabled = "GoButton(0)";
  return l;
}

}  // namespace

const FormLayout& Graph1Form::Layout() const {
  static const FormLayout kLayout = MakeLayout();
  return kLayout;
}

std::vector<Picture> Graph1Form::Pictures() const {
  Picture p;
  p.scale = ScaleOf(PlotWin());
  constexpr int kBottom[5] = {0, 1, 2, 3, 9}, kLeft[5] = {5, 6, 7, 8, 4};
  for (int k = 0; k < 5; ++k) {
    p.bottomLabels[static_cast<std::size_t>(k)] = controls_.Text(IndexedName("AxisLab", kBottom[k]));
    p.leftLabels[static_cast<std::size_t>(k)] = controls_.Text(IndexedName("AxisLab", kLeft[k]));
  }
  return {p};
}

bool Graph1Form::TracksPointer() const {
  const Control* readout = controls_.Find("mnuDisplayCursorCoordinates");
  return readout && readout->value;
}

platform::Rgb Graph1Form::ReadoutColour() const {
  return ContrastColour(background_);
}

}  // namespace keldo::form1d

// The panels of the two-dimensional form's side box and its formula row.

#include "form2d/graph2_form.h"
#include "kit/print_box.h"
#include "kit/quantization_box.h"
#include "kit/save_options_box.h"

namespace keldo::form2d {
namespace {

using namespace layout;
using F = LayoutNode;

LayoutNode FilteringPanel() {
  auto side = [](const std::string& title, const std::string& option, const std::string& field) {
    return Group(title, Rows({Pair(IndexedName(option, 0), IndexedName(field, 0)), Item(IndexedName(option, 1)),
                              Field("Real:", IndexedName(field, 1)), Field("Imag:", IndexedName(field, 2))}));
  };
  return Column({Heading("Filtering"), side("Data", "OpFData", "FDataNum"), side("Filter", "OpFilter", "FiltNum"),
                 Item("GoButton(6)")});
}

LayoutNode AnalysisPanel() {
  std::vector<LayoutNode> rows = MeasuringFields(kMeasuringBox);
  rows.insert(rows.begin(), Title("AnalysisLabel"));
  rows.insert(rows.end(), {Item("GoButton(7)"), Item("AnalysisText", F::kLabel)});
  return Rows(std::move(rows));
}

FormLayout MakeLayout() {
  FormLayout l;
  std::vector<LayoutNode> frames;
  for (int k = 0; k < kMaxGraphs; ++k)
    frames.push_back(GroupOf(IndexedName("FrTrace", k), Column({Item(IndexedName("LabTrace", k))})));
  std::vector<LayoutNode> moves;
  // The outer arrows keep moving while they are held.
  for (const char* name : {"cmdMoveLeft", "cmdMoveOnceLeft", "cmdMoveOnceRight", "cmdMoveRight", "cmdMoveDown",
                           "cmdMoveOnceDown", "cmdMoveOnceUp", "cmdMoveUp"})
    moves.push_back(Item(name, F::kNarrow | (std::string(name).find("Once") == std::string::npos ? F::kAutoRepeat : 0u)));
  frames.push_back(Grid(4, std::move(moves)));
  LayoutNode remarks = Column({Item("Remarks", F::kMultiLine)});
  remarks.flags = F::kNoMargins;
  l.sideBox = {
      {kPanelGraph, Rows({Item("LabSquare"), Field("L =", "EndRValue"), Item("GoButton(1)"), Item("PercentDone")})},
      {kPanelGraphStyle,
       Rows({Title("labGraphStyle"), Item("optColor"), Item("optGrey"), Item("opGreyPm"), Item("optLinear"),
             Item("optLog"), Pair("OpWaveLog", "txtLinReg"), CaptionedBy("LabThreshold", "TxtThreshold"),
             Item("GoButton(2)")})},
      {kPanelImage, Rows({Title("Label(16)"), Field("Graph:", "TxtGraphStat"), Field("Column:", "txtZoomCoord(0)"),
                          Field("Row:", "txtZoomCoord(1)"), Item("GoButton(11)"), Item("GoButton(12)"),
                          Item("GoButton(13)"), Item("txtStats", F::kMultiLine | F::kReadOnly)})},
      {kPanelAnalysis, AnalysisPanel()},
      {kPanelHistogram, Rows({Title("LabHistogram"), Field("Quantization:", "ComboQuantLevel"),
                              Item("chkHistGram(0)"), Item("chkHistGram(1)"), Item("GoButton(10)")})},
      {kPanelTrace, Column(std::move(frames))},
      {kPanelRemarks, remarks},
      {kPanelCalculator, Rows({Field("Formula:", "CalcFormula"), Item("GoButton(9)"),
                               Field("Value:", "TxtCalculation", F::kReadOnly)})},
      {kPanelFourierTransform,
       Column({Heading("Fourier transform"), Line({Item("FTReal"), Item("FTComplex"), Stretch()}),
               Rows({Field("Graph:", "FTGraph"), Field("Real part:", "RealPart"), Field("Imag. part:", "ImagPart")}),
               Line({Item("TrOpRI"), Item("TrOpPs"), Stretch()}),
               Line({Text("Exponent sign:"), Item("PosExponent"), Item("NegExponent"), Stretch()}),
               Item("GoButton(3)")})},
      {kPanelFourierSeries,
       Rows({Title("LblPlotSeries"), Field("Graph:", "LblSeriesGraph"), Item("OpSum(0)"),
             Field("Harmonic limit:", "Harmonic(0)"), Item("OpSum(1)"),
             Field("Harmonic limits.  Row:", "Harmonic(1)"), Field("", "Harmonic(2)"), Item("OpSerType(0)"),
             Pair("OpSerType(1)", "FreqFilter"), CaptionedBy("LabFiltParam", "Parameter"), Item("GoButton(8)")})},
      {kPanelWavelet,
       Rows({Title("labWavelet"), Field("Graph:", "WavGraph"), Field("Levels:", "wavlevels"),
             Pair("WavTypeDaub", "DaubOrder"), Field("", "chkSymDaub"), Pair("WavTypeCoif", "CoifOrder"),
             Item("WavTypeHaar"), Pair("WavTypeOther", "WaveletFilter"), Item("chkWavInvTr"),
             GroupOf("frWSerType",
                     Rows({Line({Item("chkDenoise(0)"), Item("chkDenoise(1)"), Item("chkDenoise(2)"), Stretch()}),
                           Line({Item("chkDenoise(3)"), Item("chkDenoise(6)"), Stretch()}), Item("chkDenoise(4)"),
                           Item("chkDenoise(5)"), Field("Threshold:", "txtDenoiseThreshold"),
                           Field("Depth:", "txtDepth"), Field("Descent:", "txtDescents"), Field("Shifts:", "AvgType"),
                           Item("Label(24)", F::kLabel)})),
             Item("GoButton(0)"), Item("GoButton(5)"), Item("WavReport", F::kLabel)})},
      {kPanelQuantization, QuantizationPanel()},
      {kPanelSaveOptions, SaveOptionsPanel()},
      {kPanelPrint, PrintGraphPanel(kImagePrintBox, {Rows({Field("Graph:", "txtPrGraph")})})},
      {kPanelPrintForm, PrintFormPanel()},
      {kPanelConvolve, Rows({Title("LabConvolve"), Field("Graph1:", "ConvGr1"), Field("Graph2:", "ConvGr2"),
                             Item("ConvChk(0)"), Item("ConvChk(1)"), Item("GoButton(4)")})},
      {kPanelFilter, FilteringPanel()},
  };
  LayoutNode formula = Item("Formula", F::kStretch | F::kFormulaBox);
  formula.enter = "GoButton(1)";
  formula.minimumWidth = 240;
  std::vector<LayoutNode> row{Text("Enter a formula for f(x,y)."), formula};
  for (int k = 0; k < 5; ++k) row.push_back(Item(IndexedName("cmdGraph", k), F::kFitWidth));
  // The selectors of the large view stand on a line of their own.
  std::vector<LayoutNode> selectors;
  for (int k = 0; k < kMaxGraphs; ++k) selectors.push_back(Item(IndexedName("OpGraph", k)));
  selectors.push_back(Stretch());
  l.bottom = Column({Line(std::move(selectors)), Line(std::move(row))});
  l.titleControl = "mnuHelpSideBox";
  l.titleSkip = 9;  // "Help for "
  l.focusField = "Formula";
  l.focusWhileEnabled = "GoButton(1)";
  return l;
}

}  // namespace

const FormLayout& Graph2Form::Layout() const {
  static const FormLayout kLayout = MakeLayout();
  return kLayout;
}

}  // namespace keldo::form2d

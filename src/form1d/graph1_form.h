#pragma once
// The one-dimensional form: several graphs over one sampling grid of N
// intervals (N+1 samples), shown in one plot window, and the formula that
// makes new ones.

#include <array>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "kit/form.h"
#include "kit/formula_box.h"
#include "kit/graph_number.h"
#include "kit/graph_store.h"
#include "kit/measuring_box.h"
#include "kit/named_calls.h"
#include "kit/pointer_trace.h"
#include "form1d/graph_files.h"
#include "form1d/plot_drawing.h"
#include "formula/compiler.h"
#include "formula/user_function.h"

namespace keldo::fourier {
struct TransformSetup;
struct TransformResult;
struct SeriesFilter;
enum class SeriesKind;
}  // namespace keldo::fourier

namespace keldo::wavelet {
struct WaveletChoice;
struct ThresholdSetup;
struct ThresholdResult;
}  // namespace keldo::wavelet

namespace keldo::form1d {

constexpr int kMinPoints = 64;
constexpr int kMaxPoints = 65536;
constexpr int kDefaultPoints = 1024;
constexpr int kSlack = 10;  // samples of slack after point N in every row

// The graph a one-graph command works on: the only one, or the number in
// TxtAnGr1 as a formula of numbers, reporting 1 or 3.
inline constexpr GraphNumberRules kOneGraphCommand{NumberReading::Evaluated, 1, 3, SingleGraph::TakenOrNone};

// The measuring box of the analysis panel, and of the statistics box.
extern const MeasuringBoxStyle kMeasuringBox;

// Side box panels (PicSideBox) by number.
enum SideBoxPanel : int {
  kPanelGraph = 0,
  kPanelFourierTransform = 2,
  kPanelTrigTransform = 3,
  kPanelSeries = 1,
  kPanelConvolve = 4,
  kPanelFiltering = 8,
  kPanelWavelet = 11,
  kPanelAudio = 12,
  kPanelInterpolate = 13,
  kPanelQuantization = 14,
  kPanelAnalysis = 5,
  kPanelCalculator = 6,
  kPanelDisplayStyle = 7,
  kPanelRemarks = 9,
  kPanelTrace = 10,
  kPanelPrint = 15,
  kPanelPrintForm = 16,
  kPanelCount = 17,
};

// A whole result for a new form, as other kinds of form give it too.
using Graph1Result = OneDimensionalResult;

class Graph1Form final : public Form,
                         public OneDimensionalReceiver,
                         public AudioReceiver,
                         public ScalogramSource,
                         public SoundArrayReceiver,
                         private formula::FormulaHost {
 public:
  static constexpr FormKind kKind = FormKind::Graph1;

  explicit Graph1Form(FormContext& context);
  ~Graph1Form() override;

  // Files and shows a result on this new, empty form; other kinds of form
  // give their one-dimensional results this way.
  void ShowResult(const Graph1Result& result) override;
  bool AddResult(const Graph1Result& result) override;
  // The audio box's rate and volume, and 16 bits with `sixteenBits`.
  void AudioSettings(const std::string& rate, const std::string& volume, bool sixteenBits) override;
  // The spectrogram of the graph TxtGraphStat names, in a new form; with
  // `gabor` computed at once and prepared for denoising.
  void ComputeSpectrogram(bool gabor);
  // The scalogram of the graph TxtGraphStat names, in a new form that plays
  // the sound SoundFileForPercScalogram kept, if any.
  ScalogramCalls* ComputeScalogram() override;
  void SoundFileForPercScalogram(const std::vector<double>& samples) override { percussionSound_ = samples; }
  // CreateNewSoundArray: a sound from the audio editor as the first graph,
  // a = 0 and h = 1 / rate, the audio box set to its rate and bits.
  bool InputSoundArray(const std::vector<double>& samples, int bits, int rate, int count) override;

  // The graph store.
  void SetPoints(int n);
  void ChangePointsMenu(int n);
  void UpDateFnData(int count, const std::vector<double>& y, double a, double b, double h, bool reallocate);
  void RemoveGraph(int g);
  void RemoveTheGraph();
  void ClearGraphs();
  void ResetMenu();
  int NumGraphsPlotted() const { return graphCount_; }
  // "xl,xr,yb,yt": result "L" or "R" on a bad pair, empty on success.
  void ChangeWindow(const std::string& text, std::string& result);
  // -1 after reporting 4 or 5, 0 when the window is proper.
  int TestNewIntervals(const std::string& xl, const std::string& xr, const std::string& yb, const std::string& yt);
  void ResetAxes();
  void SetIntervalChoice(double a);
  void SetIntervalData(int g);

  // Graphing.
  void PlotTheGraph();
  void RestorePlotButton();
  void NewWindow();
  void RedrawGraphs(int mode);
  bool Plotting() const { return plotting_; }

  // Display.
  void SetAxisLabels();
  void DisplayGraphs(int last);
  void DisplayOneGraph();
  void NewView();
  bool WindowTest(const PlotWindow& w) const;
  void ResetDisplay();
  void SetMenuViewStyle();
  PlotStyle Style() const { return {grid_, background_, dots_}; }
  PlotWindow PlotWin() const { return {winLeft_, winRight_, winBottom_, winTop_}; }
  void SetWindow(const PlotWindow& w);
  // Draws the whole plot box as it stands: graphs, the one being computed,
  // and the crosshairs while the trace panel is open.
  void Paint(platform::Surface& surface) const;
  // The plot face: one picture, the plot box.
  std::vector<Picture> Pictures() const override;
  void Paint(int, platform::Surface& surface) const override { Paint(surface); }
  bool TracksPointer() const override;
  // The read-out of the cursor coordinates, empty when they are off.
  const std::string& CursorText() const override { return trace_.Readout(); }
  platform::Rgb ReadoutColour() const override;
  const FormLayout& Layout() const override;

  // Side box.
  void SetupSideBox();
  void InitializeSideBox();
  void ClearSideBox();
  using Form::RestoreSideBox;
  using Form::ShowPanel;
  void Calculate();
  void SetRemarks(const std::string& text);
  // The small help box of a limited field, on F1 or a mouse press.
  bool FieldHelp(const std::string& name) override;
  // F1 in the formula box: help on the selected text, or on formulas.
  void FormulaHelp(const std::string& selected) override;

  // Files and the formula list.
  void SaveTheForm(int choice);
  bool SaveFormTo(const std::string& path);
  bool LoadForm(const std::string& path, const std::string& title) override;
  bool CanLoadForms() const override { return true; }
  void SaveTheGraph();
  bool SaveFunctionFile(const std::string& path, int g, int filterIndex);
  void LoadTheGraph(int kind);
  // Reads a data file into this form, or into a new form when its N differs
  // and this form holds graphs. Reports 20 and changes nothing on failure.
  bool LoadFunction(const std::string& path, const std::string& title, int kind, int fileType);
  bool LoadDataFile(const std::string& path, const std::string& title) override;
  void OpenTheForm();
  const std::vector<std::string>& History() const { return formulaBox_.Plotted(); }
  const std::string& FormFileName() const { return fileName_; }
  void SetQuantParams(const std::array<std::string, 3>& params) { quantParams_ = params; }
  const std::array<std::string, 3>& QuantParams() const { return quantParams_; }

  // Trace, zoom, clip and the exchange of graphs.
  int FindNearestGraph(double x, double y) const;
  bool Mouse(MouseAction action, double x, double y, MouseButton button) override;
  void InitializeTrace();
  void UpDateTrace();
  void MoveCrossHairLeft();
  void MoveCrossHairRight();
  void SetTraceValue(int index);
  int TracePosition() const { return trace_.Index(); }
  void ZoomEnlarge(int mode);
  void ClipTheGraph();
  void CopyTheGraph();
  void PasteTheGraph();
  void CopyTheGraphToClipboard();
  void CopyTheGraphToClipboardSlow();
  void PasteFromTheClipboard();
  void Activated() override;
  void ControlChanged(const std::string& name) override;

  // Fourier analysis.
  bool GetTransformParameters(fourier::TransformSetup& setup);
  void FourierTransform();
  void FourierTrigTransform(int kind);
  void FourierSeries(int kind);
  void SetFilterParameters();
  // Checks the filter's parameters and prepares it; the code is -100 after
  // a message, 399 for diffraction, 801 for a selection.
  int FREQFILT(fourier::SeriesKind kind, int h, double b, double* x, double* y, fourier::SeriesFilter& filter);
  void Convolve(int kind);
  void Filtering();

  // Wavelets.
  void WaveletTransform(bool packet);
  void WaveletSeries(bool packet);
  void DenoiseSignal();
  void MedianCommand(bool adaptive);
  void DownsampleCommand();
  void InterpolateCommand(bool ddScheme);

  // Sound.
  void InitializeSound(int bits);
  void PlayGraph();
  bool PlayGraphNum(int g, bool wait);
  void StopSound();
  void SaveTheSoundFile();
  bool SaveSoundFile(const std::string& path, int g);
  bool LoadSoundFunction(const std::string& path, const std::string& title);
  bool SoundReady(int bits) const { return bits == 8 ? soundReady8_ : soundReady16_; }

  // The quantization settings: fields from the strings, and back.
  void SetQuantizationParameters();
  void TransferInfo();

  formula::FormulaState& FormulaFields() { return formula_; }
  formula::Compiler& compiler() { return compiler_; }
  double VALU(std::string& text) { return compiler_.VALU(text); }
  double VALU(const std::string& text) { return compiler_.VALU(text); }

  int GraphCount() const { return graphCount_; }
  int Log2Points() const { return log2N_; }
  const double* GraphValues(int g) const { return store_.Row(g); }
  double GraphLeft(int g) const { return store_.a[static_cast<std::size_t>(g)]; }
  double GraphRight(int g) const { return store_.b[static_cast<std::size_t>(g)]; }
  double GraphStep(int g) const { return store_.h[static_cast<std::size_t>(g)]; }
  bool DotsMode() const { return dots_; }
  // The graph being computed, for a view to draw while a plot runs.
  struct LiveGraph {
    const double* values = nullptr;
    int count = 0;
    double a = 0.0, h = 0.0;
    int colourIndex = 0;
  };
  LiveGraph Live() const { return live_; }

  int Points() const override { return n_; }
  std::array<double, 4> Window() const override { return {winLeft_, winRight_, winBottom_, winTop_}; }
  std::vector<GraphSummary> Graphs() const override;
  bool QueryClose() override;

 private:
  template <class Calls>
  Calls* NewTimeFrequencyForm(FormKind kind);
  // FormulaHost
  int FormulaPoints() const override { return n_; }
  int FormulaGraphCount() const override { return graphCount_; }
  double FormulaIntervalLength() const override { return intervalRight_ - intervalLeft_; }
  std::optional<std::string> FormulaPrompt(const std::string& prompt, const std::string& title) override;
  void FormulaError(int number) override;
  platform::Random* FormulaRandom() override;
  const formula::GraphTable* FormulaGraphs() override;

  void BuildControls();
  void Reallocate();
  void Extend(int slots);
  std::size_t Row() const { return static_cast<std::size_t>(n_) + 1 + kSlack; }
  void PlotGraph(std::string& error, const std::string& command, double b);
  void USERFN(int count, double a, double b, double h, std::vector<double>& y, std::string& error,
              const std::string& command);
  void BuildSideBoxControls();
  void BuildFourierControls();
  void BuildSeriesControls();
  void BuildFilteringControls();
  void BuildWaveletControls();
  void BuildQuantizationControls();
  void BuildAnalysisControls();
  void BuildSoundControls();
  std::string BufferPath(int bits);
  // Volume and rate from the audio box, after messages 50 and 38.
  bool SoundSettings(double& volume, int& rate);
  // The measuring titles of the analysis box; false for another title.
  bool PerformMeasurement(const std::string& title);
  // The checks every wavelet command makes, in order; false after a message.
  bool WaveletChecks(bool series, int& graph, wavelet::WaveletChoice& choice, int& levels);
  bool ReadThresholds(int levels, wavelet::ThresholdSetup& setup);
  std::string ThresholdReport(const wavelet::ThresholdResult& r, const wavelet::ThresholdSetup& s) const;
  // A new form of the given points with the graph z over graph g's interval.
  void ResizedResult(const std::vector<double>& z, int points, int g);
  int ResetFilterForm(int message);
  bool UserFilter(int h, std::vector<double>& w);
  // Files values as a new graph of this form and shows it.
  void FileNewGraph(const std::vector<double>& values, double a, double b, double h);
  // Presets a graph number field to the graph nearest the last click.
  void PresetGraphField(const std::string& field);
  // A new form of this N holding the result graphs, fitted and shown.
  void ShowResultForm(const fourier::TransformResult& r);
  void BindCommands();
  void BindButtons();
  // The commands that open the side box, and what each does once it is open
  // and on Go.
  static std::span<const SideBoxRow<Graph1Form>> SideBoxTable();
  void SideBoxOpening(int panel) override;
  bool IsStopButton(int k) const override;
  bool StopWork() override;
  void OpenAnalysis(const SideBoxCommand& box);
  void OpenMeasure(const SideBoxCommand& box);
  void OpenStatistics(const SideBoxCommand& box);
  void OpenInterpolate(const SideBoxCommand& box);
  void OpenFourierTransform(const SideBoxCommand& box);
  void OpenTrigTransform(const SideBoxCommand& box);
  // The form print dialog, and a numeric field read for it.
  void OpenPrintForm(const SideBoxCommand& box);
  double ReadPrintValue(const std::string& text, bool& failed);
  // A button of the form print dialog; the dialog closes after it.
  void PressPrintFormButton(const std::string& name);
  void OpenSeries(const SideBoxCommand& box);
  void OpenConvolve(const SideBoxCommand& box);
  void OpenFiltering(const SideBoxCommand& box);
  void OpenWavelet(const SideBoxCommand& box);
  void OpenAudio(const SideBoxCommand& box);
  void OpenDisplayStyle(const SideBoxCommand& box);
  void OpenTrace(const SideBoxCommand& box);
  void PerformAnalysis();
  void SeriesGo();
  void TrigGo();
  void ConvolveGo();
  void WaveletGo();
  void InterpolateGo();
  // Enables a command only once it is built; a parent menu when a child is.
  void EnableCommand(const std::string& name, bool on);
  // Presets TxtAnGr1 to the graph nearest the last click.
  void PresetGraphNumber();
  // A new one-dimensional form with this form's quantization parameters;
  // reports 72 or 73 and returns null on failure.
  Graph1Form* NewSiblingForm();
  // A new form holding a whole result; null after reporting 72 or 73.
  Graph1Form* NewResultForm(const Graph1Result& result);
  void ReadFormRecord(const FormFileRecord& record);
  void CopyToClipboardWith(std::string (*build)(int, double, double, const double*));
  void UpdateLimitTips();
  double MAXW() const;
  double MINW() const;
  double FUNCMAX() const;

  int n_ = kDefaultPoints;
  int log2N_ = 10;
  int graphCount_ = 0;
  // Four slots to begin with, rows of N+1+kSlack samples.
  GraphStore<double> store_{0, 4, 1, {}, {}, {}, {}, {}};
  double winLeft_ = -0.5, winRight_ = 0.5, winBottom_ = 0.0, winTop_ = 0.0;
  double intervalLeft_ = -0.5, intervalRight_ = 0.5;
  double step_ = 1.0 / kDefaultPoints;
  bool dots_ = true;
  Background background_ = kBlackBackground;
  GridStyle grid_ = kGraphPaper;
  bool plotting_ = false;  // a formula is being plotted; Go stops it
  // The last press, the read-out and the trace index.
  PointerTrace trace_;
  bool denoising_ = false;
  // The three wave controls: 8-bit buffer, 16-bit buffer, loading.
  struct SoundControls;
  struct SoundControlsDeleter {
    void operator()(SoundControls* p) const;
  };
  std::unique_ptr<SoundControls, SoundControlsDeleter> sound_;
  bool soundReady8_ = false, soundReady16_ = false;
  // The sound the next scalogram plays in place of its signal.
  std::vector<double> percussionSound_;
  std::string fileName_;
  FormulaBox formulaBox_;
  // Graph number fields: their leading number, or with kOneGraphCommand a
  // formula of numbers.
  GraphNumberReader graphNumber_{context_, controls_, [this](const std::string& text, bool&) { return VALU(text); }};
  // The measuring box's arithmetic over this form's window.
  std::unique_ptr<MeasureSource> measures_;
  std::array<std::string, 3> quantParams_{"0|1/2^16|Q|N|B|N|", "Y|1/2^16|Y|N|Y|N|", "N|1/2^16:1/2^8|Y|N|Y|N|"};

  formula::FormulaState formula_;
  formula::Compiler compiler_{formula_, *this};
  formula::GraphTable graphTable_;
  LiveGraph live_;
};

std::unique_ptr<Form> MakeGraph1Form(FormContext& context);

}  // namespace keldo::form1d

#pragma once
// The two-dimensional form: up to four functions of x and y over one square
// grid of N intervals, (N+1) by (N+1) samples in single precision, shown as
// one large picture or four small ones, each with its colour method,
// intensity method and threshold, its view window and zoom.

#include <array>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "analysis/measures.h"
#include "analysis/median_image.h"
#include "form2d/image_display.h"
#include "wavelet/wavelet2d.h"
#include "formula/compiler.h"
#include "kit/form.h"
#include "kit/formula_box.h"
#include "kit/graph_number.h"
#include "kit/graph_store.h"
#include "kit/measuring_box.h"
#include "kit/named_calls.h"

namespace keldo::form2d {

constexpr int kMinPoints = 64;
constexpr int kMaxPoints = 2048;
constexpr int kDefaultPoints = 256;
constexpr int kMaxGraphs = 4;
constexpr int kSlots = 5;        // per-graph arrays run to slot 4, never plotted
constexpr int kMargin = 10;      // samples past N in each row and column
constexpr int kSmallSide = 128;  // pixels of a small picture
constexpr int kLargeSide = 256;  // pixels of the large picture

// Graph number fields read as formulas of numbers, reporting 1 or 3; the
// image box's commands take the only graph without reading the field.
inline constexpr GraphNumberRules kEvaluatedGraph{NumberReading::Evaluated};
inline constexpr GraphNumberRules kImageCommandGraph{NumberReading::Evaluated, 1, 3, SingleGraph::Taken};

// The measuring box of the analysis panel, and of the image box's statistics.
extern const MeasuringBoxStyle kMeasuringBox;

// Side box panels (PicSideBox) by number.
enum SideBoxPanel : int {
  kPanelGraph = 0,
  kPanelGraphStyle = 1,
  kPanelFourierTransform = 2,
  kPanelFourierSeries = 3,
  kPanelImage = 5,  // the panel of Label 16: statistics, zoom, down sampling ...
  kPanelTrace = 6,
  kPanelRemarks = 9,
  kPanelCalculator = 4,
  kPanelConvolve = 7,
  kPanelFilter = 8,
  kPanelWavelet = 10,
  kPanelQuantization = 11,
  kPanelAnalysis = 12,   // norms, integral, scalar product
  kPanelHistogram = 13,
  kPanelSaveOptions = 14,
  kPanelPrint = 15,      // the print box PrnParameters
  kPanelPrintForm = 16,  // the form print dialog
  kPanelCount = 17,
};

// File types of the data and image dialogs: the filter index plus 1, the
// data file being 1. Types 3 and from 5 up go through the imaging service.
enum FileType : int { kFileData = 1, kFilePgm = 2, kFileBmp = 3, kFileWc2 = 4 };
// The type by the last three letters of a name.
int FileTypeOfName(const std::string& path);

// How one graph is shown, besides its samples and domain.
struct GraphLook {
  float viewXLeft = 0.0f, viewXRight = 0.0f, viewYLow = 0.0f, viewYHigh = 0.0f;
  ColorMethod colorMethod = kGrey;
  Intensity intensity = kLinear;
  float threshold = 0.0f;
  std::string thresholdText = "0";
  std::string caption;
  int linReg = 0;
  int drawWidths = 1;
};

class Graph2Form final : public Form, public ImageReceiver, private formula::FormulaHost {
 public:
  static constexpr FormKind kKind = FormKind::Graph2;

  explicit Graph2Form(FormContext& context);

  // The store.
  void SetPoints(int points);
  void ChangePointsMenu(int points);
  // Appends a graph of (points+1) by (points+1) samples, row-major with
  // `stride` samples per row.
  void UpDateFnData2(int points, const float* values, std::size_t stride, float left, float right, float step);
  // Files a result and draws it; a fifth opens a new form, which then holds
  // it. Returns the form that holds it, or null after reporting 72 or 73.
  Graph2Form* DisplayFunction(int points, const float* values, std::size_t stride, float left, float right,
                              float step);
  // The named call of other kinds: DisplayFunction on a grid of the image's
  // side (set here while the form is empty, else on a new form); true when
  // a form holds the image.
  bool DisplayImage(int points, const float* values, std::size_t stride, float left, float right,
                    float step) override {
    Graph2Form* target = this;
    if (points != n_ && graphCount_ > 0) {
      target = FormOfSide(points);
    } else if (points != n_) {
      SetPoints(points);
      InitializeDrawWidths();
    }
    return target && target->DisplayFunction(points, values, stride, left, right, step) != nullptr;
  }
  Graph2Form* DisplayTwoGraphs(int points, const float* first, const float* second, std::size_t stride, float left,
                               float right, float step);
  void DeleteGraph(int d);
  void EraseAllGraphs();
  void ResetMenu();
  int NumGraphsPlotted() const { return graphCount_; }

  // The view model.
  void ChangeToLargeGraph(bool fromMenu);
  void ChangeToSmallGraphs();
  // OpGraph(k) clicked: the graph becomes the current one and, with
  // `replot`, is drawn in the large view. Drawing selects without replot.
  void SelectGraph(int k, bool replot = true);
  char ViewSize() const { return viewSize_; }
  int CurrentGraph() const { return currentGraph_; }
  int PopUpGraph() const { return popUpGraph_; }
  // The graph of txtPrGraph as printed, to a picture file and its labels
  // file; false after a message.
  bool SavePrintGraphImageToFile(const std::string& path, const std::string& title);

  // Display.
  void PlotOneGraph(int pointsPlusOne, float left);
  void PlotOneSmallGraph(int pointsPlusOne, float left);
  void PlotGraphLarge(int g);
  void PlotJustOneSmallGraph(int g, bool clearFollowing);
  void PlotAllSmallGraphs();
  void InitializeDrawWidths();
  ImageGraph Image(int g) const;

  // Settings passed on and taken over.
  void SetViewParameters(char view, ColorMethod colorMethod, Intensity intensity,
                         const std::array<std::string, 3>& quantParams);
  // The default intensity and threshold, and captions "text, Threshold:t",
  // for the slots not yet used.
  void ResetView(const std::string& text);
  void ChangeColorMethod(ColorMethod method);
  void SetGrColorMethod(int g, ColorMethod method);
  void SetLinRegValue(int value, int g);
  // Asks for the default threshold until it is a non-negative number.
  void GetNewThresholdValue();
  // Asks for a new caption of graph g; an empty answer keeps the old one.
  void ChangeTheCaption(int g);
  void PictureCaptionActivated(int picture) override;
  const std::array<std::string, 3>& QuantParams() const { return quantParams_; }

  // Opens the side box a form file names by its key again.
  void RestoreSideBoxFromKey(const std::string& key);

  // Graph styles, zoom and trace.
  void SetGraphStyleForm(int k);
  void ResetGraphStyleMenu(int g);
  void ChangeGraphStyle();
  void Zoom();
  void RestoreImage(int g);
  void SetupZoomSideBox(bool fromPopup);
  void InitializeTrace();
  void UpDateTrace();
  void MoveCursor(int dColumn, int dRow);

  // Formulas of x and y.
  void PlotTheGraph2();
  void PlotGraph2(std::string& error, const std::string& command, float l);
  // Evaluates the formula over count by count points, rows of y outermost,
  // into values (count rows of Stride() samples), and files it; error "E"
  // after a run-time error, nothing filed when stopped.
  void USERFN2(int count, float left, float right, float step, float* values, std::string& error,
               const std::string& command);
  void RestorePlotButton();
  bool Plotting() const { return plotting_; }
  const std::vector<std::string>& History() const { return formulaBox_.Plotted(); }

  // Reading the store.
  int Log2Points() const { return log2N_; }
  const float* GraphValues(int g) const { return store_.Row(g); }
  std::size_t RowStride() const { return Stride(); }
  float GraphLeft(int g) const { return store_.a[static_cast<std::size_t>(g)]; }
  float GraphRight(int g) const { return store_.b[static_cast<std::size_t>(g)]; }
  float GraphStep(int g) const { return store_.h[static_cast<std::size_t>(g)]; }
  float GraphMax(int g) const { return store_.peak[static_cast<std::size_t>(g)]; }
  const GraphLook& Look(int g) const { return looks_[static_cast<std::size_t>(g)]; }
  int CursorColumn() const { return cursorCol_; }
  int CursorRow() const { return cursorRow_; }

  // The form base.
  int Points() const override { return n_; }
  // The view window of the current graph.
  std::array<double, 4> Window() const override;
  std::vector<GraphSummary> Graphs() const override;
  std::vector<Picture> Pictures() const override;
  void Paint(int picture, platform::Surface& surface) const override;
  bool Mouse(MouseAction action, double x, double y, MouseButton button) override;
  bool PictureMouse(int picture, MouseAction action, double x, double y, MouseButton button) override;
  bool ScriptPoint(int picture, double x, double y, double& scriptX, double& scriptY) const override;
  bool TracksPointer() const override;
  const std::string& CursorText() const override { return cursorText_; }
  const FormLayout& Layout() const override;
  bool QueryClose() override;
  void Activated() override;
  void ControlChanged(const std::string& name) override;
  void FormulaHelp(const std::string& selected) override;

  // Files. SaveTheForm(0) asks for a name, 1 uses the form's own.
  void SaveTheForm(int asKnown);
  bool LoadForm(const std::string& path, const std::string& title) override;
  bool CanLoadForms() const override { return true; }
  // The frame's open dialog; a new two-dimensional form takes this form's
  // quantization strings.
  void OpenTheForm();
  // Kind 1 data, 2 image; the graph is PopUpGraph.
  void SaveTheGraph(int kind);
  void LoadTheGraph(int kind);
  // Writes graph g as a file of the type; reports 32 and returns false on
  // failure.
  bool SaveFunctionFile(const std::string& path, int g, int type);
  // Reads a file of the type as a new graph, here or, for another side
  // while graphs are held, on a new form; false after reporting.
  bool LoadFunction(const std::string& path, int type);
  bool LoadDataFile(const std::string& path, const std::string& title) override;
  const std::string& FormFileName() const { return fileName_; }
  // What an image file of graph g holds: N by N bytes, row 0 first.
  std::vector<std::uint8_t> ImageBytesOf(int g) const;

  // Transforms and series.
  void FourierTransform();
  void PerformFourierSeries();
  void PerformWaveletAnalysis();
  void WaveletTransform(bool packet);
  void WaveletSeries(bool packet);
  // "Denoise" of the wavelet panel: the chosen graph thresholded in the
  // wavelet domain, averaged over shifts with "Avg", as a new graph. A run
  // in progress blocks a second start and the form's closing.
  void DenoiseImage();
  bool Denoising() const { return denoising_; }
  // The noise level from one level of the panel's wavelet on graph g (the
  // finest diagonal band, a margin of 8 left out) and the threshold of the
  // boxes, written trimmed into txtDenoiseThreshold.
  void TheAutoThresholdValue(int g, const wavelet::WaveletChoice& choice, double& threshold, double& sigma);
  void PerformConvolution();
  void PerformFiltering();
  void SetQuantizationParameters();
  void TransferInfo();
  void SetQuantParams(const std::array<std::string, 3>& strings) { quantParams_ = strings; }
  int LinRegValue(int g) const { return looks_[static_cast<std::size_t>(g)].linReg; }

  // The value of a number field; `failed` when it cannot be evaluated.
  double Value(const std::string& text, bool& failed);

  // Measures over the view window, and new graphs of other grey depth or side.
  void PerformAnalysis();
  // Graph g as the measures read it, and the part of it its view window shows.
  analysis::Plane PlaneOf(int g) const;
  analysis::PlaneRange ViewWindowRange(int g) const;
  void Quantize8Bit();
  void Downsample();
  // One inverse level of Haar, or of D-D 4,2 with `dd42`, onto twice the side.
  void Interpolate(bool dd42);
  // "Denoise (median)" and "Denoise (adaptive median)" of the analysis panel:
  // graph TxtAnGr1 through the images' median windows, as a new graph.
  void DenoiseMedian();
  void DenoiseAdaptiveMedian();
  void DenoiseWithMedian(analysis::MedianRule rule);
  void PerformHistogram();
  // The graph clipboard between two-dimensional forms; the graph is PopUpGraph.
  void CopyTheGraph();
  void PasteTheGraph();
  void ClipTheGraph();

 private:
  std::size_t Stride() const { return static_cast<std::size_t>(n_) + 1 + kMargin; }
  bool SaveFormTo(const std::string& path);
  bool SaveImageFile2(const std::string& path, int g, int type);
  // The compressed image type (.wc2): SaveToWaveletCompressedFile codes the
  // graph with the frame's coding options (false after a message, nothing
  // written); GetWaveletCompressedFile decodes such a file into a new graph
  // (85 for one that does not decode).
  bool SaveToWaveletCompressedFile(const std::string& path, int g);
  bool GetWaveletCompressedFile(const std::string& path);
  // Graph g's (N+1) by (N+1) samples without the margin, row by row.
  std::vector<float> PackedSamples(int g) const;
  void BuildControls();
  void BuildAnalysisControls();
  // The graph of the pop-up menu when it holds one; -1 after message 1.
  int HeldPopUpGraph();
  void OpenAnalysis(const SideBoxCommand& box);
  void OpenImageCommand(const SideBoxCommand& box);
  void OpenHistogram(const SideBoxCommand& box);
  void OpenSaveOptionsBox(const SideBoxCommand& box);
  // Printing: the print box for graph PopUpGraph, the form print dialog,
  // the picture that shows a graph, and the saved graph image.
  void BuildPrintControls();
  void BindPrintCommands();
  void OpenPrintGraph(const SideBoxCommand& box);
  void OpenPrintForm(const SideBoxCommand& box);
  int PictureOfGraph(int g) const;
  int PrintedPicture();
  void PressPrintButton(int index);
  void PressPrintFormButton(const std::string& name);
  void SaveGraphImageToFile();
  // A new form of this side for a result, with this form's view settings.
  Graph2Form* FormOfSide(int points);
  void BuildTransformControls();
  // The denoiser's frame frWSerType in the wavelet panel, shown for "Denoise".
  void BuildDenoiseControls();
  void ShowDenoiseControls(bool on);
  bool IsDenoiseStop(int k) const;
  // The default depth and descent after an automatic threshold, unless both
  // boxes hold values below 1.
  void WriteDenoiseDefaults(double sigma);
  // The tool tips that name N or its exponent.
  void SetTransformTips();
  std::vector<float> CopyOfGraph(int g) const;
  bool GetTransformParameters(bool& complex, bool& negative, bool& power);
  // Beeps and returns false unless N is a power of two.
  bool PowerOfTwoGrid();
  void SetFilterParameters();
  bool WaveletChecks(int& graph, wavelet::WaveletChoice& choice, int& levels);
  bool ReadThresholds(int levels, wavelet::Threshold2DSetup& setup, std::string& text);
  void OpenFourierTransform(const SideBoxCommand& box);
  void OpenFourierSeries(const SideBoxCommand& box);
  void OpenWavelet(const SideBoxCommand& box);
  void OpenConvolve(const SideBoxCommand& box);
  void OpenFiltering(const SideBoxCommand& box);
  void BindCommands();
  static std::span<const SideBoxRow<Graph2Form>> SideBoxTable();
  void SideBoxOpening(int panel) override;
  void RestoreOtherKey(const std::string& key) override;
  bool IsStopButton(int k) const override;
  bool StopWork() override;
  void ClearSideBox();
  void InitializeSideBox();
  void InitializeGraph();
  void RefreshGraph(int g);
  // The selectors of the large view, FrGraphs and OpGraph 0 to 3.
  void ShowGraphSelectors(bool on);
  // The plot window of a graph just filed; its adjusted point count.
  int NewestPlotWindow(int pointsPlusOne, float left);
  void SetAxisLabels(float xLeft, float xRight, float yLow, float yHigh);
  void SetSmallLabels(int g);
  void RefreshGraphStyleForm();
  // A new form for results that do not fit here, with this form's view
  // settings; null after reporting 72 or 73.
  Graph2Form* NewResultForm(int points);
  void OpenGraphing(const SideBoxCommand& box);
  void OpenGraphStyle(const SideBoxCommand& box);
  void OpenImageZoom(const SideBoxCommand& box);
  void OpenTrace(const SideBoxCommand& box);
  void ImageGo();
  void PerformCalculation();
  void RestoreAll();
  // The grid point under a picture point of graph g, rounded and clamped.
  int GridIndex(double coordinate, int g) const;
  platform::RgbImage& Box(int picture) { return pictures_[static_cast<std::size_t>(picture)]; }

  // FormulaHost
  int FormulaPoints() const override { return n_; }
  int FormulaGraphCount() const override { return graphCount_; }
  double FormulaIntervalLength() const override { return plotRight_ - plotLeft_; }
  std::optional<std::string> FormulaPrompt(const std::string& prompt, const std::string& title) override;
  void FormulaError(int number) override;
  platform::Random* FormulaRandom() override;
  const formula::GraphTable* FormulaGraphs() override { return &graphTable_; }

  std::string fileName_;
  int n_ = kDefaultPoints;
  int log2N_ = 8;
  int graphCount_ = 0;
  int currentGraph_ = 0;
  int popUpGraph_ = 0;
  char viewSize_ = 'S';
  ColorMethod defColorMethod_ = kGrey;
  Intensity defIntensity_ = kLinear;
  float defThreshold_ = 0.0f;
  std::string defThresholdText_ = "0";
  float plotLeft_ = -0.5f, plotRight_ = 0.5f, plotLow_ = -0.5f, plotHigh_ = 0.5f;
  int cursorCol_ = kDefaultPoints / 2, cursorRow_ = kDefaultPoints / 2;
  bool plotting_ = false;
  bool denoising_ = false;  // the denoise-running letter
  float formulaLeft_ = -0.5f, formulaRight_ = 0.5f, formulaStep_ = 1.0f / kDefaultPoints;
  FormulaBox formulaBox_;
  // Graph number fields: their leading number, or with kEvaluatedGraph a
  // formula of numbers.
  GraphNumberReader graphNumber_{context_, controls_,
                                 [this](const std::string& text, bool& failed) { return Value(text, failed); }};
  // The measuring box's arithmetic over the view windows.
  std::unique_ptr<MeasureSource> measures_;
  std::array<std::string, 3> quantParams_{"0|1/2^16|Q|N|B|N|", "Y|1/2^16|Y|N|Y|N|", "N|1/2^16:1/2^8|Y|N|Y|N|"};
  double mouseX_ = 0.0, mouseY_ = 0.0;  // the last point of the pointer, in the picture's coordinates
  std::string cursorText_;
  // Four matrices and no work row: about 68 MB at N = 2048.
  GraphStore<float, float> store_{0, kMaxGraphs, 0, {}, {}, {}, {}, {}};
  std::array<GraphLook, kSlots> looks_{};
  PixelMatrix pixels_;
  // What each picture shows: the large one (index 4) and the four small ones.
  std::array<platform::RgbImage, kMaxGraphs + 1> pictures_{};
  formula::FormulaState formula_;
  formula::Compiler compiler_{formula_, *this};
  formula::GraphTable graphTable_;
};

std::unique_ptr<Form> MakeGraph2Form(FormContext& context);

}  // namespace keldo::form2d

// "De&noise (wavelet)" of the two-dimensional form: wavelet thresholding of
// a graph, averaged over cyclic shifts of it when asked (cycle spinning),
// with a threshold typed or estimated from the finest diagonal band. The
// source graph stays; the result is a new graph. The passes run with the
// event loop served between them, so that the Go button, reading "Stop"
// meanwhile, abandons the run.

#include <algorithm>
#include <cctype>
#include <cmath>

#include "common/number_text.h"
#include "form2d/graph2_form.h"
#include "kit/form_context.h"
#include "platform/event_loop.h"
#include "platform/services.h"
#include "wavelet/image_denoise.h"

namespace keldo::form2d {
namespace {

// The check boxes of frame frWSerType, by index.
enum DenoiseBox : int { kShrink = 0, kRefine, kAverage, kAuto, kPostProcess, kQuantize, kHighSnr, kDenoiseBoxes };
constexpr const char* kDenoiseCaptions[kDenoiseBoxes] = {"Shrink", "Refine", "Avg", "Auto", "Post-process",
                                                         "Quantize (8-bit)", "High SNR"};
constexpr const char* kDenoiseTips[kDenoiseBoxes] = {
    "Moves each kept coefficient toward zero by the last threshold.",
    "Keeps only coefficients in trees of significant ones that span Depth levels.",
    "Averages the results over cyclic shifts of the image.",
    "Estimates the noise and the threshold from the finest diagonal band.",
    "Refines the kept coefficients over Descent more halvings of the threshold.",
    "Rounds the result to grey levels 0 to 255.",
    "Uses the smaller automatic threshold suited to a low noise level."};
// The noise level above which the default tree depth is 3 rather than 2.
constexpr double kDeepNoise = 25.6;
// The side of the picture below which the default descent is 4 rather than 5.
constexpr int kSmallPicture = 101;
// The Daubechies orders of the panel, 4 to 20.
constexpr double kLeastDaubOrder = 4, kLargestDaubOrder = 20;
// The most halvings the second stage refines over.
constexpr int kMostDescents = 30;

std::string DenoiseBoxName(int k) { return IndexedName("chkDenoise", k); }

// The shifts of an AvgType entry: its number k, and whether it ends in "D".
void ShiftsOf(const std::string& entry, int& k, bool& diagonal) {
  k = 0;
  std::size_t at = 0;
  while (at < entry.size() && std::isdigit(static_cast<unsigned char>(entry[at]))) k = k * 10 + (entry[at++] - '0');
  diagonal = at < entry.size() && (entry[at] == 'D' || entry[at] == 'd');
}

}  // namespace

void Graph2Form::BuildDenoiseControls() {
  controls_.Add("frWSerType", ControlKind::Label, "Denoising").visible = false;
  for (int k = 0; k < kDenoiseBoxes; ++k)
    controls_.Add(DenoiseBoxName(k), ControlKind::Check, kDenoiseCaptions[k]).tip = kDenoiseTips[k];
  controls_[DenoiseBoxName(kAuto)].value = 1;
  controls_.Add("txtDenoiseThreshold", ControlKind::Text, "20").tip = "The threshold of the fluctuations.";
  controls_.Add("txtDepth", ControlKind::Text, "2").tip = "The levels a kept tree of coefficients spans.";
  controls_.Add("txtDescents", ControlKind::Text, "3").tip = "The halvings of the threshold the refinement adds.";
  Control& shifts = controls_.Add("AvgType", ControlKind::List, "1");
  shifts.items = {"1", "1D", "2", "2D", "4", "4D", "8", "8D", "16", "16D"};
  shifts.value = 0;
  shifts.tip = "Shifts 0..k along each axis, or -k..k for D.";
  controls_.Add("Label(24)", ControlKind::Label, "");
}

void Graph2Form::ShowDenoiseControls(bool on) { controls_.SetVisible("frWSerType", on); }

bool Graph2Form::IsDenoiseStop(int k) const { return k == 5 && denoising_; }

void Graph2Form::TheAutoThresholdValue(int g, const wavelet::WaveletChoice& choice, double& threshold,
                                       double& sigma) {
  // One level of Daubechies of the panel's order on a work copy (the
  // chosen wavelet when that order is not one); the levels box reads "1"
  // meanwhile.
  wavelet::WaveletChoice daubechies = choice;
  bool failed = false;
  const double order = Value(controls_.Text("DaubOrder"), failed);
  if (!failed && order >= kLeastDaubOrder && order <= kLargestDaubOrder && std::fmod(order, 2.0) == 0.0)
    daubechies = {1, static_cast<int>(order) / 2 - 1, false};
  const std::string levelsText = controls_.Text("wavlevels");
  controls_.SetText("wavlevels", "1");
  std::vector<float> x = CopyOfGraph(g);
  const wavelet::MatrixView view{x.data(), Stride()};
  wavelet::Transform2D(daubechies, false, n_, view, 1);
  controls_.SetText("wavlevels", levelsText);
  sigma = wavelet::DiagonalBandSigma(n_, view);
  const double descents = Value(controls_.Text("txtDescents"), failed);
  threshold = wavelet::AutoDenoiseThreshold(sigma, n_, !failed && descents == 0 ? 0 : 1,
                                            controls_[DenoiseBoxName(kAverage)].value != 0,
                                            controls_[DenoiseBoxName(kHighSnr)].value != 0);
  controls_.SetText("txtDenoiseThreshold", PlainNumber(threshold));
}

void Graph2Form::WriteDenoiseDefaults(double sigma) {
  bool failedDepth = false, failedDescents = false;
  const double depth = Value(controls_.Text("txtDepth"), failedDepth);
  const double descents = Value(controls_.Text("txtDescents"), failedDescents);
  if (!failedDepth && !failedDescents && depth < 1 && descents < 1) return;
  controls_.SetText("txtDepth", sigma <= kDeepNoise ? "2" : "3");
  const bool average = controls_[DenoiseBoxName(kAverage)].value != 0;
  const bool highSnr = controls_[DenoiseBoxName(kHighSnr)].value != 0;
  const bool post = controls_[DenoiseBoxName(kPostProcess)].value != 0;
  // Averaging, or a clean picture without the second stage, needs the
  // fewest halvings; otherwise a small picture one fewer than a large one.
  const char* text = average || (highSnr && !post) ? "3" : n_ < kSmallPicture ? "4" : "5";
  controls_.SetText("txtDescents", text);
}

void Graph2Form::DenoiseImage() {
  controls_.SetText("WavReport", "");
  int g = 0, levels = 0;
  wavelet::WaveletChoice choice;
  if (!WaveletChecks(g, choice, levels)) return;
  const auto ticked = [this](int k) { return controls_[DenoiseBoxName(k)].value != 0; };
  double threshold = 0.0;
  if (ticked(kAuto)) {
    double sigma = 1.0;
    TheAutoThresholdValue(g, choice, threshold, sigma);
    WriteDenoiseDefaults(sigma);
  } else {
    bool failed = false;
    threshold = Value(controls_.Text("txtDenoiseThreshold"), failed);
    if (failed || !std::isfinite(threshold)) {
      context_.ShowError(10);
      return;
    }
    if (threshold < 0) {
      context_.ShowError(11);
      return;
    }
  }
  bool failedDepth = false, failedDescents = false;
  const double depth = Value(controls_.Text("txtDepth"), failedDepth);
  const double descents = Value(controls_.Text("txtDescents"), failedDescents);
  if (failedDepth || failedDescents || !std::isfinite(depth) || !std::isfinite(descents)) {
    context_.ShowError(10);
    return;
  }
  int k = 0;
  bool diagonal = false;
  if (ticked(kAverage)) ShiftsOf(controls_.Text("AvgType"), k, diagonal);
  wavelet::CycleSpinSetup setup;
  setup.choice = choice;
  setup.levels = levels;
  setup.threshold = threshold;
  setup.first = diagonal ? -k : 0;
  setup.last = k;
  setup.bitPlane = ticked(kRefine) || ticked(kPostProcess);
  setup.options.depth = ticked(kRefine) ? std::clamp(static_cast<int>(std::nearbyint(depth)), 1, levels) : 1;
  setup.options.descents =
      ticked(kPostProcess) ? std::clamp(static_cast<int>(std::nearbyint(descents)), 0, kMostDescents) : 0;
  setup.options.shrink = ticked(kShrink);

  denoising_ = true;
  controls_["GoButton(5)"].text = "Stop";
  controls_.SetText("Label(24)", "0% done");
  Touch();
  context_.ShowBusyArrow();
  platform::EventLoop* loop = context_.services().eventLoop;
  // The source and its domain are taken now: the event loop runs between
  // the passes.
  const std::vector<float> source = CopyOfGraph(g);
  const float left = GraphLeft(g), right = GraphRight(g), step = GraphStep(g);
  const int points = n_;
  std::vector<float> sum;
  const bool finished =
      wavelet::CycleSpinDenoise(n_, source.data(), Stride(), setup, sum, [&](int done, int passes) {
        controls_.SetText("Label(24)", std::to_string(done * 100 / passes) + "% done");
        Touch();
        if (loop != nullptr) loop->Yield();
        return denoising_;
      });
  denoising_ = false;
  controls_["GoButton(5)"].text = "Plot";
  context_.ShowIdle();
  Touch();
  // Stopped, or the grid's size changed meanwhile: no result.
  if (!finished || points != n_) return;
  controls_.SetText("Label(24)", "100% done");
  if (ticked(kQuantize))
    for (float& v : sum) v = v >= 255.0f ? 255.0f : v < 0.0f ? 0.0f : std::nearbyint(v);
  DisplayFunction(n_, sum.data(), Stride(), left, right, step);
  Touch();
}

}  // namespace keldo::form2d

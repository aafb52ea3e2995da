// The settings a two-dimensional form passes on and takes over: the view
// and style letters for slots not yet used, the default threshold, the
// quantization strings, captions, and the colour method or block side that
// other commands set on a graph.

#include "form2d/graph2_form.h"
#include "kit/form_context.h"
#include "platform/dialogs.h"
#include "platform/services.h"

namespace keldo::form2d {

void Graph2Form::SetViewParameters(char view, ColorMethod colorMethod, Intensity intensity,
                                   const std::array<std::string, 3>& quantParams) {
  quantParams_ = quantParams;
  defColorMethod_ = colorMethod;
  defIntensity_ = intensity;
  for (int g = graphCount_; g <= kMaxGraphs; ++g) {
    GraphLook& look = looks_[static_cast<std::size_t>(g)];
    look.colorMethod = colorMethod;
    look.intensity = intensity;
  }
  if (view == 'L' && viewSize_ != 'L') {
    // The large view, shown without plotting.
    viewSize_ = 'L';
    controls_.SetText("mnuChangeViewSize", "View small graphs");
    controls_["mnuLarge"].value = 1;
    controls_["mnuSmall"].value = 0;
    ShowGraphSelectors(true);
  }
  Touch();
}

void Graph2Form::ResetView(const std::string& text) {
  for (int g = graphCount_; g <= kMaxGraphs; ++g) {
    GraphLook& look = looks_[static_cast<std::size_t>(g)];
    look.intensity = defIntensity_;
    look.threshold = defThreshold_;
    look.thresholdText = defThresholdText_;
    look.caption = text + ", Threshold:" + defThresholdText_;
    if (g < kMaxGraphs) controls_.SetText(IndexedName("LabGraphSm", g), look.caption);
  }
  RefreshGraphStyleForm();
  Touch();
}

void Graph2Form::ChangeColorMethod(ColorMethod method) {
  defColorMethod_ = method;
  for (int g = graphCount_; g <= kMaxGraphs; ++g) looks_[static_cast<std::size_t>(g)].colorMethod = method;
  RefreshGraphStyleForm();
  Touch();
}

void Graph2Form::SetGrColorMethod(int g, ColorMethod method) {
  if (g < 0 || g > kMaxGraphs) return;
  looks_[static_cast<std::size_t>(g)].colorMethod = method;
}

void Graph2Form::SetLinRegValue(int value, int g) {
  if (g < 0 || g > kMaxGraphs) return;
  looks_[static_cast<std::size_t>(g)].linReg = value;
}

void Graph2Form::GetNewThresholdValue() {
  std::string prompt = "Enter a new (non-negative) threshold value.";
  std::string typed = defThresholdText_;
  for (;;) {
    const std::optional<std::string> answer =
        context_.services().dialogs->InputBox({prompt, "New Threshold", typed});
    if (!answer || answer->empty()) return;
    bool failed = false;
    const double value = Value(*answer, failed);
    if (failed) {
      context_.Beep();
      prompt = "Error! Enter a new (non-negative) threshold value.";
      typed = *answer;
      continue;
    }
    if (value < 0) {
      context_.Beep();
      typed = *answer;
      continue;
    }
    defThreshold_ = static_cast<float>(value);
    defThresholdText_ = *answer;
    for (int g = graphCount_; g <= kMaxGraphs; ++g) {
      looks_[static_cast<std::size_t>(g)].threshold = defThreshold_;
      looks_[static_cast<std::size_t>(g)].thresholdText = defThresholdText_;
    }
    ResetView(defIntensity_ == kLinear ? "Linear" : "Log");
    return;
  }
}

void Graph2Form::ChangeTheCaption(int g) {
  if (g < 0 || g >= kMaxGraphs) return;
  GraphLook& look = looks_[static_cast<std::size_t>(g)];
  const std::optional<std::string> answer =
      context_.services().dialogs->InputBox({"Enter a new caption.", "Graph Caption.", look.caption});
  if (!answer || answer->empty()) return;
  look.caption = *answer;
  controls_.SetText("LabGraph", look.caption);
  controls_.SetText(IndexedName("LabGraphSm", g), look.caption);
  Touch();
}

void Graph2Form::PictureCaptionActivated(int picture) {
  ChangeTheCaption(viewSize_ == 'L' ? popUpGraph_ : picture);
}

}  // namespace keldo::form2d

#include "timefreq/timefreq_form.h"

#include <algorithm>
#include <cmath>

#include "common/file_io.h"
#include "common/number_text.h"
#include "formula/eval.h"
#include "kit/form_context.h"
#include "kit/print_box.h"
#include "platform/dialogs.h"
#include "platform/event_loop.h"
#include "platform/services.h"
#include "wavefile/wave_control.h"

namespace keldo::timefreq {

bool WholeNumber(double v, int& out) {
  if (!std::isfinite(v) || v < -2147483648.0 || v > 2147483647.0) return false;
  out = static_cast<int>(std::nearbyint(v));
  return true;
}

platform::Rgb Grey(int level) {
  const int g = std::clamp(level, 0, 255);
  return platform::MakeRgb(g, g, g);
}

TimeFreqForm::TimeFreqForm(FormContext& context, FormKind kind, const FormulaBoxKind& formulas, Buttons buttons)
    : Form(context, kind), formulaBox_(*this, formulas), buttons_(buttons) {
  formula_.twoDimensional = true;
  formula_.noiseTerms = 64;
}

void TimeFreqForm::BindCommonCommands(const char* helpItem, const char* helpFile) {
  OnMenu("mnuRestore", [this](int) { RestoreTheForm(); });
  OnMenu("mnuRestorePopUp", [this](int) { RestoreTheForm(); });
  OnMenu("mnuSave", [this](int) { SaveTheForm(1); });
  OnMenu("mnuSaveAs", [this](int) { SaveTheForm(0); });
  OnMenu("mnuOpen", [this](int) { context_.OpenTheForm(); });
  OnMenu("mnuVerticalSlice", [this](int) { CopyVerticalSlice(); });
  OnMenu("mnuHorizontalSlice", [this](int) { CopyHorizontalSlice(); });
  OnMenu("mnuCopySignal", [this](int) { CopyTheSignal(); });
  OnMenu("mnuViewCursor", [this](int) {
    Control& item = controls_["mnuViewCursor"];
    item.value = item.value ? 0 : 1;
    if (!item.value) cursorText_.clear();
  });
  const std::string file = helpFile;
  OnMenu(helpItem, [this, file](int) { context_.GetHelp(file, ""); });
  OnMenu("mnuHelpSideBox", [this, file](int) {
    const std::string& caption = controls_.Text("mnuHelpSideBox");
    context_.GetHelp(file, caption.size() > 9 ? caption.substr(9) : "");  // after "Help for "
  });
  OnButton("cmdFormula", [this](int index) { formulaBox_.Press(index); });
  // Print, from the menu and the pop-up: the form as a picture on its own
  // sheet, through the print layout every form shares.
  for (const char* item : {"mnuPrint", "mnuPrintPopUp"})
    OnMenu(item, [this](int) { PrintFormPage(); });
  controls_.SetEnabled("mnuSave", false);
}

void TimeFreqForm::PrintFormPage() {
  Printing().PrintTheForm(*this, "PE", [this](const std::string& text, bool& failed) {
    std::string copy = text;
    const double value = compiler_.VALU(copy);
    failed = copy == formula::kValueFailure;
    if (failed) formula_.valueFault = 0;
    return value;
  });
}

bool TimeFreqForm::LoadFormFile(const std::string& path, const std::string& title,
                                const std::function<bool(const std::vector<std::uint8_t>&)>& read) {
  std::vector<std::uint8_t> bytes;
  if (!ReadFileBytes(path, bytes) || !read(bytes)) return false;
  fileName_ = path;
  controls_.SetEnabled("mnuSave", true);
  if (!title.empty()) SetCaption(title);
  Touch();
  return true;
}

GraphSummary TimeFreqForm::MatrixSummary(const char* name, std::vector<double> values, int rows, double h) const {
  GraphSummary g;
  g.a = a_;
  g.b = b_;
  g.h = h;
  g.rows = rows;
  for (double v : values) g.peak = std::max(g.peak, std::fabs(v));
  g.values = std::move(values);
  g.fields.push_back({"name", name, {}, {}});
  return g;
}

void TimeFreqForm::AddPlayControls() {
  controls_.Add("TxtSound(1)", ControlKind::Text, "8000").tip = "The sampling rate, 441 to 44100 Hz.";
  controls_.Add("TxtSound(2)", ControlKind::Text, "1").tip = "The volume: the signal's values are multiplied by it.";
  controls_.AddOption("OpBitRate(0)", "8 bits", "OpBitRate");
  controls_.AddOption("OpBitRate(1)", "16 bits", "OpBitRate", true);
  Control& go = controls_.Add(IndexedName("GoButton", buttons_.play), ControlKind::Button, "&Play");
  go.tip = "Plays the signal.";
}

void TimeFreqForm::AddFormulaControls(const std::string& fieldTip, const std::string& goTip) {
  controls_.Add("Formula", ControlKind::Text, "").tip = fieldTip;
  formulaGoTip_ = goTip;
  Control& go = controls_.Add(IndexedName("GoButton", buttons_.formula), ControlKind::Button, "&Plot");
  go.tip = goTip;
  controls_.Add("PercentDone", ControlKind::Label, "0% done.").visible = false;
  formulaBox_.AddControls();
}

void TimeFreqForm::AddReportControls() {
  controls_.Add("txtInformation", ControlKind::Text, "");
  controls_.Add("txtModReport", ControlKind::Text, "");
}

void TimeFreqForm::StoreSignal(const std::vector<double>& values, int points, double a, double b, double dt) {
  n_ = points;
  const auto count = std::min(static_cast<std::ptrdiff_t>(points) + 1, static_cast<std::ptrdiff_t>(values.size()));
  signal_.assign(values.begin(), values.begin() + std::max<std::ptrdiff_t>(count, 0));
  signal_.resize(static_cast<std::size_t>(points) + 1, 0.0);
  a_ = a;
  b_ = b;
  dt_ = dt;
}

void TimeFreqForm::SetAudioTexts(const std::string& rate, const std::string& volume, bool sixteenBits) {
  controls_.SetText("TxtSound(1)", rate);
  controls_.SetText("TxtSound(2)", volume);
  if (sixteenBits) controls_.SetFromUser("OpBitRate(1)", "1");
}

AudioTexts TimeFreqForm::Audio() const {
  const Control* sixteen = controls_.Find("OpBitRate(1)");
  return {controls_.Text("TxtSound(1)"), controls_.Text("TxtSound(2)"), sixteen && sixteen->value != 0};
}

bool TimeFreqForm::PlaySamples(const std::vector<double>& samples) {
  const double volume = compiler_.VALU(controls_.Text("TxtSound(2)"));
  if (!(volume > 0)) {
    context_.ShowError(50);
    return false;
  }
  const double rate = compiler_.VALU(controls_.Text("TxtSound(1)"));
  if (!(rate >= 441 && rate <= 44100)) {
    context_.ShowError(38);
    return false;
  }
  if (samples.empty()) return false;
  const int bits = controls_["OpBitRate(0)"].value ? 8 : 16;
  const int count = static_cast<int>(samples.size());
  sound::WaveControl control;
  control.Create(bits, static_cast<int>(std::nearbyint(rate)));
  control.Write(sound::FillSoundArray(samples.data(), count, bits, volume));
  if (!control.Play(*context_.services().audio, 0, count)) {
    context_.ShowError(39);
    return false;
  }
  scanLine_.Start(count, static_cast<int>(std::nearbyint(rate)));
  return true;
}

bool TimeFreqForm::SendToNewForm(const std::vector<double>& values, double a, double b, const std::string& remarks) {
  return SendToOneDimensionalForm(context_, values, a, b, remarks, Audio());
}

bool TimeFreqForm::SendSlice(const std::vector<double>& values, double a, double b, const std::string& remarks) {
  return slices_.Send(context_, values, a, b, remarks, Audio());
}

void TimeFreqForm::CopyTheSignal() {
  if (signal_.empty()) return;
  SendToNewForm(signal_, a_, b_, "");
}

Picture TimeFreqForm::SignalPicture(int row) const {
  Picture signal;
  signal.row = row;
  double low = 0.0, high = 0.0;
  for (double v : signal_) {
    low = std::min(low, v);
    high = std::max(high, v);
  }
  if (high <= low) high = low + 1.0;
  signal.scale = {a_, high, b_, low};
  signal.leftLabels = {FormatLabel(high), "", FormatLabel((high + low) / 2.0), "", FormatLabel(low)};
  return signal;
}

void TimeFreqForm::PaintSignal(platform::Surface& surface, const Picture& picture, bool dots) const {
  surface.Clear(platform::kBlack);
  if (signal_.empty()) return;
  surface.SetScale(picture.scale);
  const platform::Rgb colour = platform::MakeRgb(0, 255, 0);
  if (dots) {
    std::vector<platform::UserPoint> points(signal_.size());
    for (std::size_t i = 0; i < signal_.size(); ++i) points[i] = {a_ + static_cast<double>(i) * dt_, signal_[i]};
    surface.Pixels(points, colour);
  } else {
    std::vector<platform::UserSegment> segments;
    segments.reserve(signal_.size());
    for (std::size_t i = 1; i < signal_.size(); ++i)
      segments.push_back(
          {a_ + static_cast<double>(i - 1) * dt_, signal_[i - 1], a_ + static_cast<double>(i) * dt_, signal_[i]});
    surface.Lines(segments, colour);
  }
  // The time axis.
  surface.Line(a_, 0.0, b_, 0.0, platform::kWhite);
}

GraphSummary TimeFreqForm::SignalSummary() const {
  GraphSummary signal;
  signal.a = a_;
  signal.b = b_;
  signal.h = dt_;
  signal.values = signal_;
  for (double v : signal_) signal.peak = std::max(signal.peak, std::fabs(v));
  signal.fields.push_back({"name", "signal", {}, {}});
  // Where the scan line stood while the sound last played, in pixels.
  signal.fields.push_back(scanLine_.DumpField());
  return signal;
}

LayoutNode TimeFreqForm::PlayPanel(int playButton) {
  using namespace layout;
  return Rows({Field("Sampling rate:", "TxtSound(1)"), Field("Volume:", "TxtSound(2)"), Item("OpBitRate(0)"),
               Item("OpBitRate(1)"), Item(IndexedName("GoButton", playButton))});
}

LayoutNode TimeFreqForm::TextPanel(const char* name) {
  using namespace layout;
  return Column({Item(name, LayoutNode::kMultiLine | LayoutNode::kReadOnly)});
}

LayoutNode TimeFreqForm::FormulaRow(const char* caption, int formulaButton) {
  using namespace layout;
  LayoutNode formula = Item("Formula", LayoutNode::kStretch | LayoutNode::kFormulaBox);
  formula.enter = IndexedName("GoButton", formulaButton);
  formula.minimumWidth = 240;
  std::vector<LayoutNode> row{Text(caption), formula};
  for (int k = 0; k < 5; ++k) row.push_back(Item(IndexedName("cmdFormula", k), LayoutNode::kFitWidth));
  return Line(std::move(row));
}

void TimeFreqForm::ListThreshold(const std::string& text) {
  modifications_.AddThreshold(text);
  ShowReport();
}

void TimeFreqForm::ShowReport() { controls_.SetText("txtModReport", modifications_.Report()); }

// ------------------------------------------------------------- formulas

bool TimeFreqForm::PlotFormula(const CellMatrix& cells) {
  const std::string typed = controls_.Text("Formula");
  if (!Reshape(typed, cells, true)) return false;
  modifications_.AddFormula(typed);
  ShowReport();
  formulaBox_.Update(typed);
  return true;
}

bool TimeFreqForm::ReplayFormula(const std::string& text, const CellMatrix& cells) {
  return Reshape(text, cells, false);
}

bool TimeFreqForm::Reshape(const std::string& text, const CellMatrix& cells, bool paced) {
  formula_.order = 0;
  formula_.formType = 0;
  std::string command;
  compiler_.COMPILE(formula::kModeTyped, text, command);
  if (command.rfind(formula::kErrorResult, 0) == 0) {
    context_.ShowError(23);
    return false;
  }
  const auto cols = static_cast<std::size_t>(cells.columns);
  const std::size_t count = static_cast<std::size_t>(cells.rows) * cols;
  const auto magnitudeAt = [&cells](std::size_t k) {
    return cells.im ? std::sqrt(cells.re[k] * cells.re[k] + cells.im[k] * cells.im[k]) : std::fabs(cells.re[k]);
  };
  // g1 is each cell's magnitude, 1 for a cell of zeros.
  std::vector<float> magnitude(count);
  for (std::size_t k = 0; k < count; ++k) {
    const double m = magnitudeAt(k);
    magnitude[k] = static_cast<float>(m == 0.0 ? 1.0 : m);
  }
  formula::Evaluator ev;
  formula::BindEvaluator(ev, formula_);
  ev.dx = cells.dx;
  ev.random = context_.services().random;
  ev.planes[0] = magnitude.data();
  ev.planeStride = cols;
  std::vector<double> row(cols + 10, 0.0);
  ev.computed = row.data();
  ev.computedSize = cells.columns;
  ev.Prepare();
  plotting_ = paced;
  Control& go = controls_[IndexedName("GoButton", buttons_.formula)];
  if (paced) {
    go.text = "&Stop";
    go.tip = "Stops the graphing.";
    controls_.SetText("PercentDone", "0% done.");
    controls_.SetVisible("PercentDone", true);
    context_.ShowBusyArrow();
  }
  bool finished = true;
  for (int i = 0; i < cells.rows && finished; ++i) {
    const double y = cells.y(i);
    for (int j = 0; j < cells.columns; ++j) {
      const std::size_t at = static_cast<std::size_t>(i) * cols + static_cast<std::size_t>(j);
      const double m = magnitudeAt(at);
      const double r = ev.Eval2(j, i, cells.x(j), y);
      if (ev.fault() != formula::kNoFault) {
        context_.ShowCritical(ev.fault() == formula::kOverflow ? "Overflow.  " : "Run Error.  ");
        finished = false;
        break;
      }
      const double divisor = m == 0.0 ? 1.0 : m;
      cells.re[at] = cells.re[at] / divisor * r;
      if (cells.im) cells.im[at] = cells.im[at] / divisor * r;
      row[static_cast<std::size_t>(j)] = r;
    }
    if (!paced || i % 4 != 0) continue;
    controls_.SetText("PercentDone", std::to_string(i * 100 / cells.rows) + "% done.");
    Touch();
    if (platform::EventLoop* loop = context_.services().eventLoop) loop->Yield();
    // A stop leaves the rows done so far reshaped.
    if (!plotting_) finished = false;
  }
  if (paced) {
    go.text = "&Plot";
    go.tip = formulaGoTip_;
    controls_.SetVisible("PercentDone", false);
    context_.ShowIdle();
  }
  plotting_ = false;
  return finished;
}

bool TimeFreqForm::IsStopButton(int k) const { return k == buttons_.formula && plotting_; }

bool TimeFreqForm::StopWork() {
  if (!plotting_) return false;
  plotting_ = false;
  return true;
}

std::optional<std::string> TimeFreqForm::FormulaPrompt(const std::string& prompt, const std::string& title) {
  return context_.services().dialogs->InputBox({prompt, title, ""});
}

void TimeFreqForm::FormulaError(int number) { context_.ShowError(number); }

platform::Random* TimeFreqForm::FormulaRandom() { return context_.services().random; }

bool TimeFreqForm::QueryClose() {
  if (!Working() && !plotting_) return true;
  context_.Beep();
  return false;
}

}  // namespace keldo::timefreq

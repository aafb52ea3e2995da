// The two-dimensional form's pictures: drawing graphs in the large and
// small views, the axis labels, the graph-style box, zoom and restore, the
// trace cross hair, the pointer and the plot face a view reads.

#include <algorithm>
#include <cmath>

#include "common/number_text.h"
#include "form2d/graph2_form.h"
#include "kit/focus.h"
#include "kit/form_context.h"

namespace keldo::form2d {
namespace {

// Rounded to the nearest whole number within +/- 2^31; NaN gives 0. Values
// read from files or typed may be anything.
long long WholeNumber(double v) {
  if (!(v == v)) return 0;
  return static_cast<long long>(std::clamp(std::nearbyint(v), -2147483648.0, 2147483647.0));
}

constexpr double kCrosshairDivisor = 65.97344572538559;  // 21 pi
constexpr int kLargeBox = kMaxGraphs;                     // index of the large picture

// The names of a small picture's axis labels: x left, middle, right, then
// y low, middle, high.
std::array<std::string, 6> SmallLabelNames(int g) {
  const std::string s = std::to_string(g + 1);
  return {(g == 0 ? "XintLeft" : "XIntLeft") + s, (g == 3 ? "XMId" : "XMid") + s,
          (g == 0 ? "XintRight" : "XIntRight") + s, "YIntLeft" + s, "YMid" + s, "YIntRight" + s};
}

platform::RgbImage BlackPicture(int side) { return platform::RgbImage(side + 1, side + 1, platform::kBlack); }

}  // namespace

ImageGraph Graph2Form::Image(int g) const {
  const auto s = static_cast<std::size_t>(g);
  const GraphLook& look = looks_[s];
  ImageGraph image;
  image.data = store_.Row(g);
  image.rowLength = Stride();
  image.n = n_;
  image.max = store_.peak[s];
  image.left = store_.a[s];
  image.right = store_.b[s];
  image.step = store_.h[s];
  image.viewXLeft = look.viewXLeft;
  image.viewXRight = look.viewXRight;
  image.viewYLow = look.viewYLow;
  image.viewYHigh = look.viewYHigh;
  image.colorMethod = look.colorMethod;
  image.intensity = look.intensity;
  image.threshold = look.threshold;
  image.linReg = look.linReg;
  image.drawWidths = look.drawWidths;
  return image;
}

// ------------------------------------------------------------- drawing

void Graph2Form::SetAxisLabels(float xLeft, float xRight, float yLow, float yHigh) {
  if (viewSize_ != 'L') return;
  const float values[6] = {xLeft, (xLeft + xRight) / 2, xRight, yLow, (yLow + yHigh) / 2, yHigh};
  for (int k = 0; k < 6; ++k) controls_.SetText(IndexedName("GrLbl", k), FormatLabel(values[k]));
}

void Graph2Form::SetSmallLabels(int g) {
  const GraphLook& look = looks_[static_cast<std::size_t>(g)];
  const float values[6] = {look.viewXLeft, (look.viewXLeft + look.viewXRight) / 2, look.viewXRight,
                           look.viewYLow,  (look.viewYLow + look.viewYHigh) / 2,   look.viewYHigh};
  const auto names = SmallLabelNames(g);
  for (int k = 0; k < 6; ++k)
    controls_.SetText(names[static_cast<std::size_t>(k)], g < graphCount_ ? FormatLabel(values[k]) : "");
}

int Graph2Form::NewestPlotWindow(int pointsPlusOne, float left) {
  // The new graph's right end is taken as the negative of its left end.
  plotLeft_ = left;
  plotRight_ = -left;
  plotLow_ = left;
  plotHigh_ = -left;
  return AdjustValue(pointsPlusOne);
}

void Graph2Form::PlotOneGraph(int pointsPlusOne, float left) {
  const int g = graphCount_ - 1;
  if (g < 0) return;
  const int a = NewestPlotWindow(pointsPlusOne, left);
  controls_.SetText("LabGraph", looks_[static_cast<std::size_t>(g)].caption);
  ShowGraphSelectors(true);
  SelectGraph(g, false);
  SetAxisLabels(plotLeft_, plotRight_, plotLow_, plotHigh_);
  FillImageMatrix(Image(g), pixels_);
  PaintWholeGraph(pixels_, a, kLargeSide, Box(kLargeBox));
  currentGraph_ = g;
  controls_.SetText("mnuChangeViewSize", "View small graphs");
  Touch();
}

void Graph2Form::PlotOneSmallGraph(int pointsPlusOne, float left) {
  const int g = graphCount_ - 1;
  if (g < 0) return;
  const int a = NewestPlotWindow(pointsPlusOne, left);
  SetSmallLabels(g);
  controls_.SetText(IndexedName("LabGraphSm", g), looks_[static_cast<std::size_t>(g)].caption);
  FillImageMatrix(Image(g), pixels_);
  PaintWholeGraph(pixels_, a, kSmallSide, Box(g));
  currentGraph_ = g;
  Touch();
}

void Graph2Form::PlotGraphLarge(int g) {
  if (g < 0 || g >= graphCount_) return;
  const GraphLook& look = looks_[static_cast<std::size_t>(g)];
  controls_.SetText("LabGraph", look.caption);
  SelectGraph(g, false);
  SetAxisLabels(look.viewXLeft, look.viewXRight, look.viewYLow, look.viewYHigh);
  const ImageGraph image = Image(g);
  FillImageMatrix(image, pixels_);
  PaintViewedGraph(image, pixels_, kLargeSide, n_, Box(kLargeBox));
  Touch();
}

void Graph2Form::PlotJustOneSmallGraph(int g, bool clearFollowing) {
  if (g < 0 || g >= kMaxGraphs) return;
  ShowGraphSelectors(false);
  SetSmallLabels(g);
  controls_.SetText(IndexedName("LabGraphSm", g), looks_[static_cast<std::size_t>(g)].caption);
  for (int k = g; k < (clearFollowing ? kMaxGraphs : g + 1); ++k) Box(k) = BlackPicture(kSmallSide);
  if (g >= graphCount_) return;
  const ImageGraph image = Image(g);
  FillImageMatrix(image, pixels_);
  PaintViewedGraph(image, pixels_, kSmallSide, n_ + 1, Box(g));
  Touch();
}

void Graph2Form::PlotAllSmallGraphs() {
  for (int k = 0; k < graphCount_; ++k) PlotJustOneSmallGraph(k, true);
}

void Graph2Form::InitializeDrawWidths() {
  for (int k = 0; k < kMaxGraphs; ++k) looks_[static_cast<std::size_t>(k)].drawWidths = 1;
  if (viewSize_ == 'S') {
    for (int k = 0; k < kMaxGraphs; ++k) Box(k) = BlackPicture(kSmallSide);
  } else {
    Box(kLargeBox) = BlackPicture(kLargeSide);
  }
  Touch();
}

// ---------------------------------------------------------- graph style

void Graph2Form::SetGraphStyleForm(int k) {
  if (k < 1 || k > kMaxGraphs) return;
  const GraphLook& look = looks_[static_cast<std::size_t>(k - 1)];
  controls_.SetText("labGraphStyle", "Graph " + StrInt(k));
  SetSideBoxKey("GrStyle" + std::to_string(k));
  controls_.SetFromUser(look.colorMethod == kColor ? "optColor" : look.colorMethod == kGreyPlusMinus ? "opGreyPm"
                                                                                                     : "optGrey",
                        "1");
  controls_.SetFromUser(look.intensity == kLog ? "optLog" : look.intensity == kLinLog ? "OpWaveLog" : "optLinear", "1");
  controls_.SetText("TxtThreshold", look.thresholdText);
  controls_.SetText("txtLinReg", std::to_string(look.linReg));
}

void Graph2Form::ResetGraphStyleMenu(int g) { controls_.SetText("labGraphStyle", "Graph" + StrInt(g + 1)); }

void Graph2Form::RefreshGraphStyleForm() {
  if (VisiblePanel() != kPanelGraphStyle) return;
  const std::string& title = controls_.Text("labGraphStyle");
  const int k = title.empty() ? 0 : title.back() - '0';
  if (k > graphCount_) SetGraphStyleForm(k);
}

void Graph2Form::OpenGraphStyle(const SideBoxCommand&) { SetGraphStyleForm(popUpGraph_ + 1); }

void Graph2Form::ChangeGraphStyle() {
  const std::string& title = controls_.Text("labGraphStyle");
  const int g = (title.empty() ? 1 : title.back() - '0') - 1;
  if (g < 0 || g >= kMaxGraphs) return;
  GraphLook& look = looks_[static_cast<std::size_t>(g)];
  look.colorMethod = controls_["optColor"].value ? kColor : controls_["opGreyPm"].value ? kGreyPlusMinus : kGrey;
  look.intensity = controls_["optLog"].value ? kLog : controls_["OpWaveLog"].value ? kLinLog : kLinear;
  std::string text = controls_.Text("TxtThreshold");
  bool failed = false;
  const double threshold = Value(text, failed);
  if (failed || threshold < 0) {
    context_.ShowError(failed ? 10 : 11);
    RequestFocus(controls_, "TxtThreshold");
    return;
  }
  look.threshold = static_cast<float>(threshold);
  look.thresholdText = controls_.Text("TxtThreshold");
  const double linReg = std::nearbyint(Value(controls_.Text("txtLinReg"), failed));
  int stored = linReg < 0 || failed ? 0 : linReg > 32767 ? 32767 : static_cast<int>(linReg);
  if (linReg < 0 || failed) controls_.SetText("txtLinReg", "0");
  else if (stored > n_) controls_.SetText("txtLinReg", std::to_string(n_));
  look.linReg = stored;
  if (viewSize_ == 'L') {
    if (g < graphCount_ && g == currentGraph_) PlotGraphLarge(g);
  } else if (g < graphCount_) {
    PlotJustOneSmallGraph(g, false);
  }
  Touch();
}

// ------------------------------------------------------ zoom and restore

void Graph2Form::SetupZoomSideBox(bool fromPopup) {
  controls_.SetText("Label(16)", "Image zoom");
  SetSideBoxKey("ImageZoom");
  controls_.SetText("GoButton(11)", "Zoom");
  controls_["GoButton(11)"].tip = "Zooms on indicated graph.";
  controls_.SetVisible("GoButton(12)", true);
  controls_.SetVisible("GoButton(13)", true);
  controls_.SetVisible("TxtGraphStat", true);
  controls_.SetVisible("txtStats", false);
  for (int k = 0; k < 2; ++k) controls_.SetVisible(IndexedName("txtZoomCoord", k), true);
  for (int k = 0; k < 2; ++k)
    controls_[IndexedName("txtZoomCoord", k)].tip = "An integer between 0 and" + StrInt(n_) + ".";
  if (!fromPopup) return;
  const int g = popUpGraph_;
  controls_.SetText("TxtGraphStat", std::to_string(g + 1));
  const auto s = static_cast<std::size_t>(g);
  if (store_.h[s] == 0.0f) return;
  controls_.SetText("txtZoomCoord(0)", std::to_string(WholeNumber((mouseX_ - store_.a[s]) / store_.h[s])));
  controls_.SetText("txtZoomCoord(1)", std::to_string(WholeNumber((mouseY_ - store_.a[s]) / store_.h[s])));
}

void Graph2Form::OpenImageZoom(const SideBoxCommand& box) {
  SetupZoomSideBox(std::string(box.menuItem) == "mnuZoom");
}

void Graph2Form::Zoom() {
  bool failed = false;
  const int g = static_cast<int>(WholeNumber(Value(controls_.Text("TxtGraphStat"), failed))) - 1;
  if (failed || g < 0 || g >= graphCount_) {
    context_.ShowError(1);
    RequestFocus(controls_, "TxtGraphStat");
    return;
  }
  GraphLook& look = looks_[static_cast<std::size_t>(g)];
  const int limit = n_ < 512 ? n_ / 4 : 64;
  if (look.drawWidths >= limit) {
    // Zoomed as far as it goes: another graph may still be zoomed.
    context_.ShowError(31);
    RequestFocus(controls_, "TxtGraphStat");
    return;
  }
  const double c = Value(controls_.Text("txtZoomCoord(0)"), failed);
  const double r = Value(controls_.Text("txtZoomCoord(1)"), failed);
  const int message = c < 0 ? 74 : c > n_ ? 75 : r < 0 ? 76 : r > n_ ? 77 : 0;
  if (message != 0) {
    context_.ShowError(message);
    RequestFocus(controls_, message <= 75 ? "txtZoomCoord(0)" : "txtZoomCoord(1)");
    return;
  }
  const auto s = static_cast<std::size_t>(g);
  const float x = store_.h[s] * static_cast<float>(c) + store_.a[s];
  const float y = store_.h[s] * static_cast<float>(r) + store_.a[s];
  const float w = (look.viewXRight - look.viewXLeft) / 2, q = w / 2;
  // The new window never leaves the old one.
  const auto place = [w, q](float centre, float& low, float& high) {
    if (centre - q < low) {
      high = low + w;
    } else if (centre + q > high) {
      low = high - w;
    } else {
      low = centre - q;
      high = centre + q;
    }
  };
  place(x, look.viewXLeft, look.viewXRight);
  place(y, look.viewYLow, look.viewYHigh);
  look.drawWidths *= 2;
  if (viewSize_ == 'L') PlotGraphLarge(g);
  else PlotJustOneSmallGraph(g, false);
  Touch();
}

void Graph2Form::RestoreImage(int g) {
  if (g < 0 || g >= graphCount_) {
    context_.ShowError(1);
    RequestFocus(controls_, "TxtGraphStat");
    return;
  }
  const auto s = static_cast<std::size_t>(g);
  GraphLook& look = looks_[s];
  look.viewXLeft = look.viewYLow = store_.a[s];
  look.viewXRight = look.viewYHigh = store_.b[s];
  look.drawWidths = 1;
  if (viewSize_ == 'L') {
    if (g == currentGraph_) PlotGraphLarge(g);
  } else {
    PlotJustOneSmallGraph(g, false);
  }
  Touch();
}

void Graph2Form::RestoreAll() {
  for (int g = 0; g < graphCount_; ++g) RestoreImage(g);
}

// ----------------------------------------------------------------- trace

void Graph2Form::OpenTrace(const SideBoxCommand&) {
  controls_.SetEnabled("mnuEndTrace", true);
  InitializeTrace();
  UpDateTrace();
}

void Graph2Form::InitializeTrace() {
  for (int k = 0; k < kMaxGraphs; ++k) controls_.SetVisible(IndexedName("FrTrace", k), false);
  std::string& centre = context_.settings().captions["LabTrSet"];
  if (centre == "Y") {
    cursorCol_ = cursorRow_ = n_ / 2;
    centre = "N";
  }
}

void Graph2Form::UpDateTrace() {
  if (graphCount_ == 0) return;
  const int first = viewSize_ == 'L' ? currentGraph_ : 0, last = viewSize_ == 'L' ? currentGraph_ : graphCount_ - 1;
  if (viewSize_ == 'L')
    for (int k = 0; k < kMaxGraphs; ++k) {
      controls_.SetVisible(IndexedName("FrTrace", k), false);
      controls_.SetText(IndexedName("LabTrace", k), "");
    }
  for (int g = first; g <= last; ++g) {
    const auto s = static_cast<std::size_t>(g);
    controls_.SetVisible(IndexedName("FrTrace", g), true);
    const float x = store_.h[s] * static_cast<float>(cursorCol_) + store_.a[s];
    const float y = store_.h[s] * static_cast<float>(cursorRow_) + store_.a[s];
    const float z = store_.Row(g)[static_cast<std::size_t>(cursorRow_) * Stride() + static_cast<std::size_t>(cursorCol_)];
    controls_.SetText(IndexedName("LabTrace", g), "X = " + FormatLabel(x) + ",   Y = " + FormatLabel(y) + "\r\nZ = " +
                                                      FormatLabel(z) + ",   Row: " + std::to_string(cursorRow_) +
                                                      ", Col: " + std::to_string(cursorCol_));
  }
  Touch();
}

void Graph2Form::MoveCursor(int dColumn, int dRow) {
  cursorCol_ = std::clamp(cursorCol_ + dColumn, 0, n_);
  cursorRow_ = std::clamp(cursorRow_ + dRow, 0, n_);
  UpDateTrace();
  Touch();
}

// ------------------------------------------------------------- the pointer

int Graph2Form::GridIndex(double coordinate, int g) const {
  const auto s = static_cast<std::size_t>(g);
  if (store_.h[s] == 0.0f) return 0;
  const double index = std::nearbyint((coordinate - store_.a[s]) / store_.h[s]);
  if (!(index == index)) return 0;
  return static_cast<int>(std::clamp(index, 0.0, static_cast<double>(n_)));
}

bool Graph2Form::Mouse(MouseAction action, double x, double y, MouseButton button) {
  // A script points in grid coordinates, column and row, on the picture of
  // the current graph.
  const int g = std::clamp(currentGraph_, 0, kMaxGraphs - 1);
  const auto s = static_cast<std::size_t>(g);
  const double ux = store_.a[s] + x * store_.h[s], uy = store_.a[s] + y * store_.h[s];
  return PictureMouse(viewSize_ == 'L' ? 0 : g, action, ux, uy, button);
}

bool Graph2Form::ScriptPoint(int picture, double x, double y, double& scriptX, double& scriptY) const {
  // Mouse's grid step undone: a script reaches only the current graph's
  // picture (or the one picture of the large view).
  const int g = std::clamp(currentGraph_, 0, kMaxGraphs - 1);
  const auto s = static_cast<std::size_t>(g);
  const double step = store_.h[s];
  if (picture != (viewSize_ == 'L' ? 0 : g) || !(step != 0.0)) return false;
  scriptX = (x - store_.a[s]) / step;
  scriptY = (y - store_.a[s]) / step;
  return true;
}

bool Graph2Form::PictureMouse(int picture, MouseAction action, double x, double y, MouseButton button) {
  const bool large = viewSize_ == 'L';
  const int box = large ? popUpGraph_ : picture;
  if (box < 0 || box >= kMaxGraphs) return false;
  mouseX_ = x;
  mouseY_ = y;
  if (action == MouseAction::Move) {
    if (controls_["mnuDisplayCursorCoordinates"].value) {
      const auto signedText = [](int v) { return v < 0 ? " " + std::to_string(v) : StrInt(v); };
      const int g = box < graphCount_ ? box : 0;
      cursorText_ = "(" + signedText(GridIndex(x, g)) + "," + signedText(GridIndex(y, g)) + (large ? ") " : " )");
    }
    return true;
  }
  if (action != MouseAction::Down) return true;
  if (button == MouseButton::Right) {
    popUpGraph_ = large ? currentGraph_ : box;
    const bool held = popUpGraph_ < graphCount_;
    for (const char* name :
         {"mnuZoom", "mnuDeleteGraph", "mnuCopyGraph", "mnuPrintGraph", "mnuSave", "mnuHistogram", "mnuClip"})
      if (CommandBuilt(name)) controls_.SetEnabled(name, held);
    controls_.SetEnabled("mnuChangeViewSize", held || graphCount_ == 0);
    Touch();
    return true;
  }
  if (box < graphCount_) {
    cursorCol_ = GridIndex(x, box);
    cursorRow_ = GridIndex(y, box);
  } else {
    cursorRow_ = GridIndex(y, 0);  // an empty box: the row by slot 0, the column stays
  }
  if (VisiblePanel() == kPanelTrace) UpDateTrace();
  Touch();
  return true;
}

bool Graph2Form::TracksPointer() const { return true; }

// ------------------------------------------------------------ plot face

std::array<double, 4> Graph2Form::Window() const {
  if (currentGraph_ >= graphCount_) return {plotLeft_, plotRight_, plotLow_, plotHigh_};
  const GraphLook& look = looks_[static_cast<std::size_t>(currentGraph_)];
  return {look.viewXLeft, look.viewXRight, look.viewYLow, look.viewYHigh};
}

std::vector<Picture> Graph2Form::Pictures() const {
  const auto window = [this](int g, Picture& p) {
    if (g < graphCount_) {
      const GraphLook& look = looks_[static_cast<std::size_t>(g)];
      p.scale = {look.viewXLeft, look.viewYHigh, look.viewXRight, look.viewYLow};
    } else {
      p.scale = {plotLeft_, plotHigh_, plotRight_, plotLow_};
    }
  };
  if (viewSize_ == 'L') {
    Picture p;
    p.side = kLargeSide + 1;
    window(currentGraph_, p);
    p.bottomLabels = {controls_.Text("GrLbl(0)"), "", controls_.Text("GrLbl(1)"), "", controls_.Text("GrLbl(2)")};
    p.leftLabels = {controls_.Text("GrLbl(5)"), "", controls_.Text("GrLbl(4)"), "", controls_.Text("GrLbl(3)")};
    p.caption = controls_.Text("LabGraph");
    p.captioned = true;
    return {p};
  }
  std::vector<Picture> pictures;
  for (int k = 0; k < kMaxGraphs; ++k) {
    Picture p;
    p.row = k / 2;
    p.column = k % 2;
    p.side = kSmallSide + 1;
    window(k, p);
    const auto names = SmallLabelNames(k);
    p.bottomLabels = {controls_.Text(names[0]), "", controls_.Text(names[1]), "", controls_.Text(names[2])};
    p.leftLabels = {controls_.Text(names[5]), "", controls_.Text(names[4]), "", controls_.Text(names[3])};
    p.caption = controls_.Text(IndexedName("LabGraphSm", k));
    p.captioned = true;
    pictures.push_back(std::move(p));
  }
  return pictures;
}

void Graph2Form::Paint(int picture, platform::Surface& surface) const {
  const bool large = viewSize_ == 'L';
  const int box = large ? kLargeBox : picture;
  if (box < 0 || box > kLargeBox) return;
  surface.DrawImage(pictures_[static_cast<std::size_t>(box)]);
  // The trace cross hair, drawn over the picture and not kept.
  const int g = large ? currentGraph_ : picture;
  if (VisiblePanel() != kPanelTrace || g < 0 || g >= graphCount_) return;
  const auto s = static_cast<std::size_t>(g);
  const GraphLook& look = looks_[s];
  surface.SetScale({look.viewXLeft, look.viewYHigh, look.viewXRight, look.viewYLow});
  surface.SetPenWidth(1);
  const double x = store_.h[s] * static_cast<float>(cursorCol_) + store_.a[s];
  const double y = store_.h[s] * static_cast<float>(cursorRow_) + store_.a[s];
  const double dx = (look.viewXRight - look.viewXLeft) / kCrosshairDivisor;
  const double dy = (look.viewYHigh - look.viewYLow) / kCrosshairDivisor;
  const platform::Rgb green = platform::StandardColour(10);
  surface.Line(x - dx, y, x + dx, y, green);
  surface.Line(x, y - dy, x, y + dy, green);
}

}  // namespace keldo::form2d

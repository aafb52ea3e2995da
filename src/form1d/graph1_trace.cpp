// Commands on the graph under the pointer: the crosshair trace, zoom, clip,
// and moving a graph between forms or through the system clipboard.

#include <algorithm>
#include <charconv>
#include <cmath>

#include "kit/form_context.h"
#include "kit/graph_clipboard.h"
#include "common/number_text.h"
#include "common/text.h"
#include "form1d/graph1_form.h"

namespace keldo::form1d {
namespace {

constexpr double kZoomDivisor = 3.99;
constexpr double kEnlargeFactor = 1.49;

int ClampIndex(double v, int n) {
  if (!(v > 0.0)) return 0;
  if (!(v < n)) return n;
  return static_cast<int>(v);
}

// A number field of pasted text: the plain text form of a double, blanks
// around it allowed. False for anything else.
bool ReadNumberField(const std::string& field, double& value) {
  std::string t = Trim(field);
  if (!t.empty() && t[0] == '+') t.erase(0, 1);
  if (t.empty()) return false;
  const char* first = t.data();
  const char* last = t.data() + t.size();
  const auto [end, ec] = std::from_chars(first, last, value);
  return ec == std::errc() && end == last && std::isfinite(value);
}

}  // namespace

// ------------------------------------------------------------------- mouse

int Graph1Form::FindNearestGraph(double x, double y) const {
  if (graphCount_ <= 1) return 0;
  int best = 0;
  double bestDistance = 0.0;
  for (int g = 0; g < graphCount_; ++g) {
    const double h = GraphStep(g);
    const int k = h != 0.0 ? ClampIndex(std::floor((x - GraphLeft(g)) / h), n_) : 0;
    const double distance = std::fabs(GraphValues(g)[k] - y);
    if (distance == 0.0) return g;
    if (g == 0 || distance < bestDistance) {
      best = g;
      bestDistance = distance;
    }
  }
  return best;
}

bool Graph1Form::Mouse(MouseAction action, double x, double y, MouseButton) {
  if (action == MouseAction::Down) {
    trace_.Press(x, y);
    const double fx = trace_.X(), fy = trace_.Y();
    if (graphCount_ > 0) {
      const int g = FindNearestGraph(fx, fy);
      const double h = GraphStep(g);
      const double r = h != 0.0 ? std::nearbyint((fx - GraphLeft(g)) / h) : 0.0;
      trace_.SetIndex(ClampIndex(r, n_), n_);
      if (VisiblePanel() == kPanelTrace) UpDateTrace();
    }
    Touch();
  } else if (action == MouseAction::Move) {
    // The read-out changes the view alone, not the picture.
    if (controls_["mnuDisplayCursorCoordinates"].value) trace_.Read(x, y);
  }
  return true;
}

void Graph1Form::PresetGraphNumber() {
  if (graphCount_ > 1) controls_.SetText("TxtAnGr1", std::to_string(FindNearestGraph(trace_.X(), trace_.Y()) + 1));
}

// ------------------------------------------------------------------- trace

void Graph1Form::InitializeTrace() {
  for (int k = 0; k < 5; ++k) controls_.SetVisible(IndexedName("FrTrace", k), false);
  std::string& centre = context_.settings().captions["LabTrSet"];
  if (centre == "Y") {
    trace_.SetIndex(n_ / 2, n_);
    centre = "N";
  }
}

void Graph1Form::UpDateTrace() {
  trace_.SetIndex(trace_.Index(), n_);
  const int index = trace_.Index();
  for (int g = 0; g < 5; ++g) {
    const bool shown = g < graphCount_;
    controls_.SetVisible(IndexedName("FrTrace", g), shown);
    if (!shown) {
      controls_.SetText(IndexedName("LabTr", g), "");
      continue;
    }
    const double x = GraphLeft(g) + index * GraphStep(g);
    const double y = GraphValues(g)[index];
    controls_.SetText(IndexedName("LabTr", g), "X =" + StrNumber(x) + "\r\nY =" + StrNumber(y));
  }
  controls_.SetText("GraphCaption", "Index = " + std::to_string(index));
  Touch();
}

void Graph1Form::MoveCrossHairLeft() { SetTraceValue(std::max(0, trace_.Index() - 1)); }

void Graph1Form::MoveCrossHairRight() { SetTraceValue(std::min(n_, trace_.Index() + 1)); }

void Graph1Form::SetTraceValue(int index) {
  trace_.SetIndex(index, n_);
  if (VisiblePanel() == kPanelTrace) UpDateTrace();
  Touch();
}

// -------------------------------------------------------------------- zoom

void Graph1Form::ZoomEnlarge(int mode) {
  const ViewWindow shown{winLeft_, winRight_, winBottom_, winTop_};
  const ViewWindow v = mode == 1 ? trace_.ZoomedIn(shown, kZoomDivisor) : trace_.ZoomedOut(shown, kEnlargeFactor);
  const PlotWindow w{v.left, v.right, v.bottom, v.top};
  // A window too small or too large for the surface is refused silently.
  if (!WindowTest(w)) return;
  SetWindow(w);
  SetAxisLabels();
  RedrawGraphs(2);
}

// -------------------------------------------------------------------- clip

void Graph1Form::ClipTheGraph() {
  const int g = graphNumber_("TxtAnGr1", graphCount_, kOneGraphCommand);
  if (g < 0) return;
  const double a = GraphLeft(g), h = GraphStep(g);
  const double* v = GraphValues(g);
  const double lo = winLeft_ - h / 2, hi = winRight_ + h / 2;
  std::vector<double> taken;
  for (int i = 0; i <= n_; ++i) {
    const double x = a + i * h;
    if (x >= lo && x <= hi) taken.push_back(v[i]);
  }
  const int c = static_cast<int>(taken.size()) - 1;
  int size = kMinPoints;
  while (size < c && size < kMaxPoints) size *= 2;
  std::vector<double> y(static_cast<std::size_t>(size) + 1, 0.0);
  for (int i = 0; i < c; ++i) y[static_cast<std::size_t>(i)] = taken[static_cast<std::size_t>(i)];
  const double left = winLeft_, right = winRight_;
  Graph1Result clip = Graph1Result::Of(size, std::move(y), left, right, (right - left) / size);
  clip.show = Graph1Result::Show::FitToData;
  NewResultForm(clip);
}

// ----------------------------------------------------------- exchange area

void Graph1Form::CopyTheGraph() {
  const int g = graphNumber_("TxtAnGr1", graphCount_, kOneGraphCommand);
  if (g < 0) return;
  GraphExchangeArea1D& x = context_.exchange().oneDimensional;
  const double* v = GraphValues(g);
  x.values.assign(v, v + n_ + 1);
  x.points = n_;
  x.a = GraphLeft(g);
  x.b = GraphRight(g);
  x.h = GraphStep(g);
  x.holdsGraph = true;
  EnableCommand("mnuPasteGraph", true);
  Touch();
}

void Graph1Form::PasteTheGraph() {
  const GraphExchangeArea1D& x = context_.exchange().oneDimensional;
  if (!x.holdsGraph) return;
  const PasteTarget where = WherePasted(x.points, n_, graphCount_);
  if (where == PasteTarget::NewForm) {
    if (Graph1Form* form = NewSiblingForm()) {
      form->SetPoints(x.points);
      form->PasteTheGraph();
    }
    return;
  }
  if (where == PasteTarget::ThisFormResized) SetPoints(x.points);
  UpDateFnData(x.points, x.values, x.a, x.b, x.h, false);
  DisplayOneGraph();
  NewWindow();
}

// --------------------------------------------------------- system clipboard

void Graph1Form::CopyTheGraphToClipboard() { CopyToClipboardWith(GraphClipboardText); }

void Graph1Form::CopyTheGraphToClipboardSlow() { CopyToClipboardWith(GraphClipboardTextSlow); }

void Graph1Form::CopyToClipboardWith(std::string (*build)(int, double, double, const double*)) {
  const int g = graphNumber_("TxtAnGr1", graphCount_, kOneGraphCommand);
  if (g < 0) return;
  context_.services().clipboard->SetText(build(n_, GraphLeft(g), GraphRight(g), GraphValues(g)));
  EnableCommand("mnuPasteFromClipboard", true);
  Touch();
}

void Graph1Form::PasteFromTheClipboard() {
  const std::string text = context_.services().clipboard->Text();
  if (!CheckWindowsClipboard(text)) {
    context_.ShowError(91);
    return;
  }
  const std::vector<std::string> fields = ClipboardFields(text + "R");
  const std::size_t last = fields.size() - 1;  // the field that holds the mark
  double n = 0.0, a = 0.0, b = 0.0;
  ReadNumberField(fields[0], n);
  const int points = static_cast<int>(n);
  // A paste that ends before its interval ends silently.
  if (last < 3) return;
  if (!ReadNumberField(fields[1], a) || !ReadNumberField(fields[2], b)) {
    context_.ShowError(91);
    return;
  }
  if (!(a < b)) {
    context_.ShowError(89);
    return;
  }
  if (a != 0.0 && a != -b) {
    context_.ShowError(90);
    return;
  }
  std::vector<double> values(static_cast<std::size_t>(points) + 1);
  for (int i = 0; i <= points; ++i) {
    const std::size_t f = static_cast<std::size_t>(i) + 3;
    std::string field = f <= last ? fields[f] : std::string();
    // The last value may stand without its line end, just before the mark.
    if (f == last) field.pop_back();
    if (f > last || !ReadNumberField(field, values[static_cast<std::size_t>(i)])) {
      context_.ShowError(91);
      return;
    }
  }
  Graph1Form* target = this;
  const PasteTarget where = WherePasted(points, n_, graphCount_);
  if (where == PasteTarget::NewForm) {
    target = NewSiblingForm();
    if (!target) return;
  }
  if (where != PasteTarget::ThisForm) target->SetPoints(points);
  target->UpDateFnData(points, values, a, b, (b - a) / points, false);
  target->DisplayOneGraph();
  target->NewWindow();
}

}  // namespace keldo::form1d

#include "form1d/graph1_form.h"

#include "app/frame.h"
#include "form1d/graph1_menu.h"

namespace keldo::form1d {
namespace {

constexpr int kPointChoices[] = {64, 128, 256, 512, 1024, 2048, 4096, 8192, 16384, 32768, 65536};

std::string PointsItem(int n) { return "mnu" + std::to_string(n); }

}  // namespace

Graph1Form::Graph1Form(Frame& frame) : Form(frame, FormKind::Graph1) {
  BuildControls();
  Reallocate();
  ChangePointsMenu(n_);
}

void Graph1Form::BuildControls() {
  SetMenu(BuildMenu(Graph1MenuBar(), controls_));
  SetPopupMenu(BuildMenu(Graph1PopupMenu(), controls_));
  controls_.Add("NumPoints", ControlKind::Label, std::to_string(n_));
  controls_.Add("Formula", ControlKind::Text, "");
  controls_.Add("EndRValue", ControlKind::Text, ".5");
  Control& t1 = controls_.Add("IntervalType1", ControlKind::Option, "[-L,L]");
  t1.group = "IntervalType";
  t1.value = 1;
  controls_.Add("IntervalType2", ControlKind::Option, "[0,L]").group = "IntervalType";
  controls_.SetVisible("mnuHelpSideBox", false);

  AddCommonFileHandlers();
  for (int n : kPointChoices) OnMenu(PointsItem(n), [this, n](int) { SetPoints(n); });
  OnMenu("mnuKELDOHelp", [this](int) { frame_.GetHelp("KELDOX.HLP", ""); });
  OnMenu("mnuHelpSideBox", [this](int) {
    const std::string& caption = controls_.Text("mnuHelpSideBox");
    frame_.GetHelp("KELDOX.HLP", caption.size() > 9 ? caption.substr(9) : "");
  });
  DisableItemsWithoutHandler();
  controls_.SetEnabled("mnuPoints", true);
}

void Graph1Form::Reallocate() {
  const std::size_t row = static_cast<std::size_t>(n_) + 1 + kSlack;
  values_.assign(static_cast<std::size_t>(capacity_ + 1) * row, 0.0);
  const std::size_t slots = static_cast<std::size_t>(capacity_) + 2;
  a_.assign(slots, 0.0);
  b_.assign(slots, 0.0);
  h_.assign(slots, 0.0);
  peak_.assign(slots, 0.0);
}

void Graph1Form::SetPoints(int n) {
  if (n == n_) return;
  graphCount_ = 0;
  n_ = n;
  Reallocate();
  controls_.SetText("NumPoints", std::to_string(n));
  ChangePointsMenu(n);
  tracePosition_ = n / 2;
  step_ = (intervalRight_ - intervalLeft_) / n;
  Touch();
}

void Graph1Form::ChangePointsMenu(int n) {
  for (int choice : kPointChoices) {
    Control& item = controls_[PointsItem(choice)];
    item.value = choice == n ? 1 : 0;
  }
  int log2 = 0;
  while ((1 << log2) < n && log2 < 16) ++log2;
  log2N_ = log2;
}

std::vector<GraphSummary> Graph1Form::Graphs() const {
  std::vector<GraphSummary> out;
  const std::size_t row = static_cast<std::size_t>(n_) + 1 + kSlack;
  for (int g = 0; g < graphCount_; ++g) {
    GraphSummary s{a_[g], b_[g], h_[g], peak_[g], {}};
    const double* first = values_.data() + row * static_cast<std::size_t>(g);
    s.values.assign(first, first + n_ + 1);
    out.push_back(std::move(s));
  }
  return out;
}

std::unique_ptr<Form> MakeGraph1Form(Frame& frame) { return std::make_unique<Graph1Form>(frame); }

}  // namespace keldo::form1d

#include "form2d/graph2_form.h"

#include "form2d/graph2_menu.h"
#include "kit/layout.h"
#include "kit/menu_table.h"

namespace keldo::form2d {

Graph2Form::Graph2Form(FormContext& context) : Form(context, FormKind::Graph2) {
  SetMenu(BuildMenu(Graph2MenuBar(), controls_));
  SetPopupMenu(BuildMenu(Graph2PopupMenu(), controls_));
  for (int k = 0; k < kPanelCount; ++k) controls_.Add(IndexedName("PicSideBox", k), ControlKind::Panel).visible = false;
  controls_.Add("EndRValue", ControlKind::Text, ".5").tip = "The L of the square [-L,L] x [-L,L].";
  controls_.Add("Remarks", ControlKind::Text, "");
  for (int k = 0; k < kMaxGraphs; ++k) controls_.Add(IndexedName("LabGraphSm", k), ControlKind::Label);
  controls_.Add("LabGraph", ControlKind::Label);
  controls_.SetVisible("mnuHelpSideBox", false);
  AddCommonFileHandlers();
  BindSideBoxes(*this, SideBoxTable(), kPanelCount);
  OnMenu("mnuClearSideBox", [this](int) { ClearSideBox(); });
  DisableItemsWithoutHandler();
}

std::span<const SideBoxRow<Graph2Form>> Graph2Form::SideBoxTable() {
  // Rows that share a key open the same box again; the first one is restored.
  static const SideBoxRow<Graph2Form> kRows[] = {
      {{"mnuRemarks", "Rem", "Remarks", kPanelRemarks, -1}, nullptr, nullptr},
  };
  return kRows;
}

void Graph2Form::ClearSideBox() {
  ShowPanel(-1);
  ForgetSideBox();
  controls_.SetVisible("mnuHelpSideBox", false);
  Touch();
}

std::vector<Picture> Graph2Form::Pictures() const {
  std::vector<Picture> pictures;
  const auto picture = [](int row, int column, int side, const std::string& caption) {
    Picture p;
    p.row = row;
    p.column = column;
    p.side = side;
    p.scale = {-0.5, 0.5, 0.5, -0.5};
    p.caption = caption;
    return p;
  };
  if (viewSize_ == 'L') return {picture(0, 0, kLargeSide, controls_.Text("LabGraph"))};
  for (int k = 0; k < kMaxGraphs; ++k)
    pictures.push_back(picture(k / 2, k % 2, kSmallSide, controls_.Text(IndexedName("LabGraphSm", k))));
  return pictures;
}

void Graph2Form::Paint(int, platform::Surface& surface) const { surface.Clear(platform::kBlack); }

const FormLayout& Graph2Form::Layout() const {
  using namespace layout;
  static const FormLayout kLayout = [] {
    FormLayout l;
    l.sideBox = {{kPanelGraph, Rows({Field("L =", "EndRValue")})},
                 {kPanelRemarks, [] {
                    LayoutNode body = Column({Item("Remarks", LayoutNode::kMultiLine)});
                    body.flags = LayoutNode::kNoMargins;
                    return body;
                  }()}};
    l.titleControl = "mnuHelpSideBox";
    l.titleSkip = 9;  // "Help for "
    return l;
  }();
  return kLayout;
}

std::unique_ptr<Form> MakeGraph2Form(FormContext& context) { return std::make_unique<Graph2Form>(context); }

}  // namespace keldo::form2d

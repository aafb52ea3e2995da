#pragma once
// The two-dimensional form: up to four functions of x and y over one square
// grid of N intervals, shown as one large picture or four small ones. This
// is its frame on the form kit: menus, caption, pictures and side-box panels;
// the store, the formulas and the display fill it in.

#include <memory>
#include <span>
#include <vector>

#include "kit/form.h"

namespace keldo::form2d {

constexpr int kMinPoints = 64;
constexpr int kMaxPoints = 2048;
constexpr int kMaxGraphs = 4;
constexpr int kSmallSide = 128;  // pixels of a small picture at its natural size
constexpr int kLargeSide = 256;  // pixels of the large picture

// Side box panels (PicSideBox) by number.
enum SideBoxPanel : int {
  kPanelGraph = 0,
  kPanelRemarks = 1,
  kPanelCount = 2,
};

class Graph2Form final : public Form {
 public:
  static constexpr FormKind kKind = FormKind::Graph2;

  explicit Graph2Form(FormContext& context);

  // "S": four small pictures; "L": one large one.
  char ViewSize() const { return viewSize_; }

  std::vector<Picture> Pictures() const override;
  void Paint(int picture, platform::Surface& surface) const override;
  const FormLayout& Layout() const override;

 private:
  static std::span<const SideBoxRow<Graph2Form>> SideBoxTable();
  void ClearSideBox();

  char viewSize_ = 'S';
};

std::unique_ptr<Form> MakeGraph2Form(FormContext& context);

}  // namespace keldo::form2d

#include "kit/formula_history.h"

#include <algorithm>

#include "common/text.h"

namespace keldo {

void FormulaHistory::Initialize(const FormulaList& shared) {
  maxFormNum_ = shared.maxFormNum;
  formulas_ = GetAllFormulas(shared, shared.maxFormNum);
  formulas_.resize(static_cast<std::size_t>(maxFormNum_) + 1);
  formPos_ = std::max(1, shared.formCount);
}

void FormulaHistory::Update(FormulaList& shared, const std::string& formula) {
  const std::string plain = WithoutSpaces(formula);
  const std::size_t current = static_cast<std::size_t>(std::clamp(formPos_, 0, maxFormNum_));
  if (plain != WithoutSpaces(formulas_[current])) {
    ++maxFormNum_;
    formulas_.resize(static_cast<std::size_t>(maxFormNum_) + 1);
    formulas_[static_cast<std::size_t>(maxFormNum_)] = formula;
    formPos_ = maxFormNum_;
    UpdateAllFormulas(shared, formula, maxFormNum_);
  }
  if (plotted_.empty() || plain != WithoutSpaces(plotted_.back())) plotted_.push_back(formula);
}

std::string FormulaHistory::Previous() {
  --formPos_;
  if (formPos_ <= 1) formPos_ = 1;
  return formPos_ <= maxFormNum_ ? formulas_[static_cast<std::size_t>(formPos_)] : "";
}

std::string FormulaHistory::Next() {
  ++formPos_;
  if (formPos_ > maxFormNum_) {
    formPos_ = maxFormNum_ + 1;
    return "";
  }
  return formulas_[static_cast<std::size_t>(formPos_)];
}

}  // namespace keldo

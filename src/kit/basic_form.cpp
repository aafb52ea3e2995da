#include "kit/basic_form.h"

namespace keldo {

BasicForm::BasicForm(FormContext& context, FormKind kind, std::span<const MenuRow> menuBar) : Form(context, kind) {
  SetMenu(BuildMenu(menuBar, controls_));
  AddCommonFileHandlers();
  DisableItemsWithoutHandler();
}

std::unique_ptr<Form> MakeBasicForm(FormContext& context, FormKind kind, std::span<const MenuRow> menuBar) {
  return std::make_unique<BasicForm>(context, kind, menuBar);
}

}  // namespace keldo

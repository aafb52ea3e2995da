#include "app/basic_form.h"

namespace keldo {

BasicForm::BasicForm(Frame& frame, FormKind kind, std::span<const MenuRow> menuBar) : Form(frame, kind) {
  SetMenu(BuildMenu(menuBar, controls_));
  AddCommonFileHandlers();
  DisableItemsWithoutHandler();
}

std::unique_ptr<Form> MakeBasicForm(Frame& frame, FormKind kind, std::span<const MenuRow> menuBar) {
  return std::make_unique<BasicForm>(frame, kind, menuBar);
}

}  // namespace keldo

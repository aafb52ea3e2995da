#pragma once
// A form made of its menus alone: the kinds whose commands are still to be
// built open as this, with working New and Close items and every other item
// disabled.

#include <memory>
#include <span>

#include "kit/form.h"
#include "kit/menu_table.h"

namespace keldo {

class BasicForm final : public Form {
 public:
  BasicForm(FormContext& context, FormKind kind, std::span<const MenuRow> menuBar);
};

std::unique_ptr<Form> MakeBasicForm(FormContext& context, FormKind kind, std::span<const MenuRow> menuBar);

}  // namespace keldo

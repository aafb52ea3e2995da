#include "workshop/workshop_menu.h"

namespace keldo::workshop {
namespace {

// The workshop is a file-to-file tool: its commands are buttons on the form;
// the menu opens forms, closes it and shows its help.
constexpr MenuRow kMenuBar[] = {
    {0, "mnuFile", "&File"},
    {1, "mnuOpenForm", "&Open form"},
    {1, "mnuClose", "&Close"},
    {0, "mnuHelp", "&Help"},
    {1, "mnuHelpWorkshop", "&Help"},
};

}  // namespace

std::span<const MenuRow> WorkshopMenuBar() { return kMenuBar; }

}  // namespace keldo::workshop

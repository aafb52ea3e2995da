#include "sound/sound_editor_menu.h"

namespace keldo::sound {
namespace {

constexpr auto kMenuBar = JoinRows(std::to_array<MenuRow>({
    {0, "mnuFile", "&File"},
    {1, "mnuNew(0)", "New &1-Dim"},
    {1, "mnuNew(1)", "New &2-dim"},
    {1, "mnuNew(2)", "New &Audio editor"},
    {1, "mnuNew(3)", "New Image processor"},
    {1, "mnuOpenAudioFile", "&Open audio file"},
    {1, "mnuOpenForm", "Open &Form"},
    {1, "mnuSaveAs", "Save &As"},
    {1, "mnuSave", "&Save"},
    {1, "mnuClose", "&Close"},
    {0, "mnuEdit", "&Edit"},
    {1, "mnuEraseClipLines", "&Erase clip line(s)"},
    {1, "mnuClearEditor", "&Clear editor"},
    {0, "mnuView", "&View"}}), kArrangeWindowRows, std::to_array<MenuRow>({
    {0, "mnuHelp", "&Help"}}));

}  // namespace

std::span<const MenuRow> SoundEditorMenuBar() { return kMenuBar; }

}  // namespace keldo::sound

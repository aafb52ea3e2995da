#include "sound/sound_editor_menu.h"

namespace keldo::sound {
namespace {

// "&Clear editor" is mnuClose, as the editor's commands call it; the File
// menu's "&Close" closes the form.
constexpr auto kMenuBar = JoinRows(std::to_array<MenuRow>({
    {0, "mnuFile", "&File"},
    {1, "mnuNew(0)", "New &1-Dim"},
    {1, "mnuNew(1)", "New &2-dim"},
    {1, "mnuNew(2)", "New &Audio editor"},
    {1, "mnuNew(3)", "New Image processor"},
    {1, "mnuOpen", "&Open audio file"},
    {1, "mnuOpenAForm", "Open &Form"},
    {1, "mnuSaveAs", "Save &As"},
    {1, "mnuSave", "&Save"},
    {1, "mnuCloseForm", "&Close"},
    {0, "mnuEdit", "&Edit"},
    {1, "mnuEraseClipLines", "&Erase clip line(s)"},
    {1, "mnuClose", "&Clear editor"},
    {0, "mnuView", "&View"}}), kArrangeWindowRows, std::to_array<MenuRow>({
    {0, "mnuHelp", "&Help"}}));

// The pop-up menu of the whole-file picture.
constexpr MenuRow kPopup[] = {
    {0, "mnuGraphPopUp", "Audio"},
    {1, "mnuMoveClip", "&Move clip region"},
    {1, "mnuClip", "C&lip"},
    {1, "mnuCut", "Cu&t"},
    {1, "mnuCopy", "&Copy"},
    {1, "mnuPaste", "&Paste"},
};

}  // namespace

std::span<const MenuRow> SoundEditorMenuBar() { return kMenuBar; }
std::span<const MenuRow> SoundEditorPopupMenu() { return kPopup; }

}  // namespace keldo::sound

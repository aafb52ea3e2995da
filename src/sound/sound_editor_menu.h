#pragma once
#include <span>
#include "kit/menu_table.h"
namespace keldo::sound {
// The menu bar of the audio editor, with its exact captions.
std::span<const MenuRow> SoundEditorMenuBar();
// The pop-up menu of the whole-file picture.
std::span<const MenuRow> SoundEditorPopupMenu();
}  // namespace keldo::sound

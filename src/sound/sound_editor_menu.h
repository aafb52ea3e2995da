#pragma once
#include <span>
#include "kit/menu_table.h"
namespace keldo::sound {
// The menu bar of the audio editor, with its exact captions.
std::span<const MenuRow> SoundEditorMenuBar();
}  // namespace keldo::sound

#pragma once
#include <span>
#include "kit/menu_table.h"
namespace keldo::timefreq {
// The menu bars of the spectrogram and scalogram forms.
std::span<const MenuRow> SpectrogramMenuBar();
std::span<const MenuRow> ScalogramMenuBar();
std::span<const MenuRow> ScalogramPopupMenu();
// The pop-up menu of the spectrogram's picture, under one title.
std::span<const MenuRow> SpectrogramPopupMenu();
}  // namespace keldo::timefreq

#include "timefreq/timefreq_menus.h"

namespace keldo::timefreq {
namespace {

constexpr MenuRow kSpectrogram[] = {
    {0, "mnuFile", "&File"},
    {1, "mnuOpen", "&Open"},
    {1, "mnuSave", "&Save"},
    {1, "mnuSaveAs", "Save &As"},
    {1, "mnuPrint", "&Print "},
    {1, "mnuClose", "&Close"},
    {0, "mnuView", "&View"},
    {1, "mnuViewCursor", "View &cursor coordinates"},
    {1, "mnuDisplayStyle", "&Display style"},
    {1, "mnuViewOnly", "View &only spectrogram"},
    {1, "mnuInformation", "&Information"},
    {1, "mnuModificationReport", "&Modification Report"},
    {0, "mnuGraph", "&Graph"},
    {1, "mnuSpectrogram", "&Spectrogram"},
    {1, "mnuPlot", "&Plot"},
    {1, "mnuAudio", "&Audio"},
    {1, "mnuThreshold", "&Threshold"},
    {1, "mnuDenoise", "&Denoise"},
    {1, "mnuPercussion", "&Percussion scalogram"},
    {1, "mnuInvert", "&Invert"},
    {1, "mnuRestore", "&Restore"},
    {0, "mnuHelp", "&Help"},
    {1, "mnuHelpSpectrogram", "&Help ( spectrogram)"},
    {1, "mnuHelpSideBox", "Help for "},
};

// The pop-up menu of the spectrogram's picture.
constexpr MenuRow kSpectrogramPopup[] = {
    {0, "mnuSpecPopUp", "Spectrogram"},
    {1, "mnuPrintPopUp", "&Print"},
    {1, "mnuPlotGraph", "Plot &Graph"},
    {1, "mnuThresholdPopUp", "&Threshold"},
    {1, "mnuInvertPopUp", "&Invert"},
    {1, "mnuRestorePopUp", "&Restore"},
    {1, "mnuDisplayStylePopUp", "&Display style"},
    {1, "mnuCopySignal", "&Copy signal"},
    {1, "mnuVerticalSlice", "&Vertical slice"},
    {1, "mnuHorizontalSlice", "&Horizontal slice"},
};

constexpr MenuRow kScalogram[] = {
    {0, "mnuFile", "&File"},
    {1, "mnuOpen", "&Open"},
    {1, "mnuSave", "&Save"},
    {1, "mnuSaveAs", "Save &As"},
    {1, "mnuPrint", "&Print "},
    {1, "mnuClose", "&Close"},
    {0, "mnuView", "&View"},
    {1, "mnuViewCursor", "View &cursor coordinates"},
    {1, "mnuDisplayStyle", "&Display style"},
    {1, "mnuChBgdFgd", "Change &Background"},
    {1, "mnuInformation", "&Information"},
    {1, "mnuModificationReport", "&Modification Report"},
    {0, "mnuGraph", "&Graph"},
    {1, "mnuScalogram", "&Scalogram"},
    {1, "mnuPlot", "&Plot"},
    {1, "mnuAudio", "&Audio"},
    {1, "mnuThreshold", "&Threshold"},
    {1, "mnuInvert", "&Invert"},
    {1, "mnuRestore", "&Restore"},
    {0, "mnuHelp", "&Help"},
    {1, "mnuHelpScalogram", "&Help ( scalogram)"},
    {1, "mnuHelpSideBox", "Help for "},
};

// The pop-up menu of the scalogram's picture.
constexpr MenuRow kScalogramPopup[] = {
    {0, "mnuScalPopUp", "Scalogram"},
    {1, "mnuPrintPopUp", "&Print"},
    {1, "mnuPlotGraph", "Plot &Graph"},
    {1, "mnuThresholdPopUp", "&Threshold"},
    {1, "mnuInvertPopUp", "&Invert"},
    {1, "mnuRestorePopUp", "&Restore"},
    {1, "mnuDisplayStylePopUp", "&Display style"},
    {1, "mnuCopySignal", "&Copy signal"},
    {1, "mnuVerticalSlice", "&Vertical slice"},
    {1, "mnuHorizontalSlice", "&Horizontal slice"},
};

}  // namespace

std::span<const MenuRow> SpectrogramMenuBar() { return kSpectrogram; }
std::span<const MenuRow> SpectrogramPopupMenu() { return kSpectrogramPopup; }
std::span<const MenuRow> ScalogramMenuBar() { return kScalogram; }
std::span<const MenuRow> ScalogramPopupMenu() { return kScalogramPopup; }

}  // namespace keldo::timefreq

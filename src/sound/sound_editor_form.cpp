#include "sound/sound_editor_form.h"

#include <new>

#include "common/number_text.h"
#include "kit/form_context.h"
#include "kit/menu_table.h"
#include "sound/sound_editor_menu.h"

namespace keldo::sound {
namespace {

// SoundError's lines, by code; any other code is "Unidentified error".
constexpr const char* kSoundErrors[] = {"Error opening file",          "Error converting sound values",
                                        "Error initializing clip file", "Error creating clip signal",
                                        "Error plotting sound clip",    "Sound file too short for clipping"};

// The buttons of each group, with their captions and tool tips; cmdStop has
// no tip of its own.
struct ButtonRow {
  const char* name;
  const char* caption;
  const char* tip;
};
constexpr ButtonRow kButtons[] = {
    {"cmdPlay", "&Play", "Plays sound file."},
    {"cmdStart", "&Start", "Resets play position to the start."},
    {"cmdStop", "&Stop", ""},
    {"cmdPlay2", "&Play", "Plays sound clip."},
    {"cmdStart2", "&Start", "Resets play position for sound clip to start."},
    {"cmdEraseClip", "&Erase", "Removes  the sound clip."},
    {"cmdAnalyzer", "&Analyze", "Opens a 1-Dim form with sound clip as data."},
};

// The six buttons that move the lines: three in each line's frame.
constexpr ButtonRow kMoveButtons[] = {
    {"cmdPos1(0)", "|<", "Moves the clip to the start of the file."},
    {"cmdPos1(1)", "<", "Moves both lines one sample left."},
    {"cmdPos1(2)", ">", "Moves both lines one sample right."},
    {"cmdPos2(0)", "<", "Moves both lines one sample left."},
    {"cmdPos2(1)", ">", "Moves both lines one sample right."},
    {"cmdPos2(2)", ">|", "Moves the clip to the end of the file."},
};

}  // namespace

SoundEditorForm::SoundEditorForm(FormContext& context) : Form(context, FormKind::SoundEditor) {
  SetCaption("Audio Editor (Untitled)");
  BuildControls();
  BindCommands();
  DisableItemsWithoutHandler();
  InitializeDisplays();
}

SoundEditorForm::~SoundEditorForm() {
  if (playTimer_ != 0) context_.services().timers->Stop(playTimer_);
}

void SoundEditorForm::BuildControls() {
  SetMenu(BuildMenu(SoundEditorMenuBar(), controls_));
  SetPopupMenu(BuildMenu(SoundEditorPopupMenu(), controls_));
  for (const ButtonRow& b : kButtons) controls_.Add(b.name, ControlKind::Button, b.caption).tip = b.tip;
  for (const ButtonRow& b : kMoveButtons) controls_.Add(b.name, ControlKind::Button, b.caption).tip = b.tip;
  controls_.Add("FrClip(0)", ControlKind::Label, "Line 1: ");
  controls_.Add("FrClip(1)", ControlKind::Label, "Line 2:");
  controls_.Add("labPos(0)", ControlKind::Label, "");
  controls_.Add("labPos(1)", ControlKind::Label, "");
  controls_.Add("labSamples", ControlKind::Label, "Samples: 0");
  controls_.Add("labPlayPos", ControlKind::Label, "");
  // The labels that name the two pictures.
  controls_.Add("labWave(0)", ControlKind::Label, "                    Clip");
  controls_.Add("labWave(1)", ControlKind::Label, "                                      All Samples");
}

void SoundEditorForm::BindCommands() {
  AddCommonFileHandlers();
  // "&Clear editor" is mnuClose here; the File menu's Close closes the form.
  OnMenu("mnuClose", [this](int) { ClearEditor(); });
  OnMenu("mnuCloseForm", [this](int) { context_.CloseForm(*this); });
  OnMenu("mnuOpen", [this](int) { OpenFile(); });
  OnMenu("mnuOpenAForm", [this](int) { context_.OpenTheForm(); });
  OnMenu("mnuSave", [this](int) { SaveFile(); });
  OnMenu("mnuSaveAs", [this](int) { SaveFileAs(); });
  OnMenu("mnuEraseClipLines", [this](int) { EraseClipLines(); });
  OnMenu("mnuHelp", [this](int) { context_.GetHelp("KDAUDED.HLP", ""); });
  OnMenu("mnuMoveClip", [this](int) { MoveClip(popupX_); });
  OnMenu("mnuClip", [this](int) { PlotClipCommand(); });
  OnMenu("mnuCut", [this](int) { CutClip(); });
  OnMenu("mnuCopy", [this](int) { CopyClip(); });
  OnMenu("mnuPaste", [this](int) { PasteAtLineOne(); });
  OnButton("cmdPlay", [this](int) { PlayFile(); });
  OnButton("cmdStart", [this](int) { StartFile(); });
  OnButton("cmdStop", [this](int) { StopPlaying(); });
  OnButton("cmdPlay2", [this](int) { PlayClip(); });
  OnButton("cmdStart2", [this](int) { StartClip(); });
  OnButton("cmdEraseClip", [this](int) { EraseClip(); });
  OnButton("cmdAnalyzer", [this](int) { PasteClip(); });
  OnButton("cmdPos1", [this](int index) {
    if (index == 0) MoveLinesToStart();
    else if (index == 1) MoveLinesLeft();
    else MoveLinesRight();
  });
  OnButton("cmdPos2", [this](int index) {
    if (index == 0) MoveLinesLeft();
    else if (index == 1) MoveLinesRight();
    else MoveLinesToEnd();
  });
}

void SoundEditorForm::SoundError(int code) {
  const char* text = code >= 1 && code <= 6 ? kSoundErrors[code - 1] : "Unidentified error";
  context_.ShowCritical(std::string(text) + ".");
}

bool SoundEditorForm::LoadWavFile(const std::string& path) {
  WaveControl wave;
  wave.Open(path);
  if (wave.LastError() == 6) {
    // The file opened but its samples do not fit in memory.
    SoundError(2);
    ClearEditor();
    return false;
  }
  if (wave.LastError() != 0) {
    SoundError(1);
    return false;
  }
  if (wave.Channels() != 1) {
    context_.ShowError(43);
    return false;
  }
  if (DisplayWave(wave) == -1) {
    ClearEditor();
    return false;
  }
  fileName_ = path;
  EnableButtons(0);
  return true;
}

int SoundEditorForm::DisplayWave(WaveControl& wave) {
  EndPlaying(false);
  try {
    std::vector<std::int16_t> taken = wave.TakeSamples();
    samples_ = std::move(taken);
  } catch (const std::bad_alloc&) {
    SoundError(2);
    return -1;
  }
  sampleRate_ = wave.Rate();
  bits_ = wave.Bits();
  playPosition_ = clipPosition_ = 0;
  clipStart_ = 0;
  clipLength_ = 0;
  clipSamples_.clear();
  clipShown_ = false;
  DisEnableButtons(1);
  Touch();
  return 0;
}

void SoundEditorForm::InitializeDisplays() {
  EndPlaying(false);
  samples_.clear();
  samples_.shrink_to_fit();
  clipSamples_.clear();
  clipShown_ = false;
  clipStart_ = 0;
  clipLength_ = 0;
  playPosition_ = clipPosition_ = 0;
  fileName_.clear();
  lineState_ = LineState::None;
  DisEnableButtons(0);
  DisEnableButtons(1);
  EnableClipCommands(false);
  ShowPlayPosition();
  Touch();
}

void SoundEditorForm::DisEnableButtons(int group) {
  if (group == 0) {
    // The Open item stays: a new or cleared editor must be able to open a file.
    for (const char* name : {"cmdPlay", "cmdStart", "cmdStop", "mnuSave", "mnuSaveAs", "mnuMoveClip"})
      controls_.SetEnabled(name, false);
    controls_.SetText("labSamples", "Samples: 0");
    EraseClipFrames();
  } else {
    for (const char* name : {"cmdPlay2", "cmdStart2", "cmdEraseClip", "cmdAnalyzer"}) controls_.SetEnabled(name, false);
  }
}

void SoundEditorForm::EnableButtons(int group) {
  if (group == 0) {
    lineState_ = LineState::None;
    for (const char* name : {"cmdPlay", "cmdStart", "mnuSave", "mnuSaveAs", "mnuOpen"}) controls_.SetEnabled(name, true);
    controls_.SetEnabled("cmdStop", false);
    controls_.SetText("labSamples", "Samples: " + std::to_string(SampleCount()));
    EnableClipCommands(false);
    EraseClipFrames();
  } else {
    for (const char* name : {"cmdPlay2", "cmdStart2", "cmdEraseClip", "cmdAnalyzer"}) controls_.SetEnabled(name, true);
  }
  Touch();
}

void SoundEditorForm::EraseClipFrames() {
  for (int k = 0; k < 2; ++k) {
    controls_.SetEnabled(IndexedName("FrClip", k), false);
    controls_.SetText(IndexedName("labPos", k), "");
    for (int b = 0; b < 3; ++b) {
      controls_.SetEnabled(IndexedName("cmdPos1", b), false);
      controls_.SetEnabled(IndexedName("cmdPos2", b), false);
    }
  }
}

void SoundEditorForm::EnableClipCommands(bool on) {
  for (const char* name : {"mnuClip", "mnuCut", "mnuCopy", "mnuMoveClip", "mnuEraseClipLines"})
    controls_.SetEnabled(name, on);
  for (int k = 0; k < 2; ++k) controls_.SetEnabled(IndexedName("FrClip", k), on);
  for (int b = 0; b < 3; ++b) {
    controls_.SetEnabled(IndexedName("cmdPos1", b), on);
    controls_.SetEnabled(IndexedName("cmdPos2", b), on);
  }
  controls_.SetEnabled("mnuPaste", pasteReady_);
}

void SoundEditorForm::ShowLinePositions() {
  controls_.SetText("labPos(0)", lineState_ == LineState::None ? "" : std::to_string(clipStart_));
  controls_.SetText("labPos(1)", lineState_ == LineState::Both ? std::to_string(clipStart_ + clipLength_) : "");
  Touch();
}

std::unique_ptr<Form> MakeSoundEditorForm(FormContext& context) { return std::make_unique<SoundEditorForm>(context); }

}  // namespace keldo::sound

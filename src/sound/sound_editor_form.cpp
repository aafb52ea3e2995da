#include "sound/sound_editor_form.h"

#include "kit/menu_table.h"
#include "sound/sound_editor_menu.h"
#include "wavefile/wave_control.h"

namespace keldo::sound {

SoundEditorForm::SoundEditorForm(FormContext& context) : Form(context, FormKind::SoundEditor) {
  SetMenu(BuildMenu(SoundEditorMenuBar(), controls_));
  AddCommonFileHandlers();
  DisableItemsWithoutHandler();
}

bool SoundEditorForm::LoadWavFile(const std::string& path) {
  WaveControl control;
  control.Open(path);
  if (control.LastError() != 0 || control.Channels() != 1) return false;
  const std::vector<std::int16_t> raw = control.Read(control.Length());
  samples_.assign(raw.begin(), raw.end());
  bits_ = control.Bits();
  rate_ = control.Rate();
  if (bits_ == 8)
    for (double& v : samples_) v -= 128;
  Touch();
  return true;
}

std::vector<GraphSummary> SoundEditorForm::Graphs() const {
  if (samples_.empty() || rate_ <= 0) return {};
  const double h = 1.0 / rate_;
  return {GraphSummary{0.0, h * static_cast<double>(samples_.size()), h, 0.0, samples_, 0, {}}};
}

std::unique_ptr<Form> MakeSoundEditorForm(FormContext& context) { return std::make_unique<SoundEditorForm>(context); }

}  // namespace keldo::sound

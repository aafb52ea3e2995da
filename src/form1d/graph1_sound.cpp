// Sound on the one-dimensional form: a graph played or saved as a wave file
// through buffer files of its size, and a wave file read as a graph.

#include <cmath>
#include <filesystem>

#include "kit/focus.h"
#include "kit/form_context.h"
#include "kit/typed_forms.h"
#include "common/number_text.h"
#include "form1d/graph1_form.h"
#include "formula/formula_text.h"
#include "wavefile/wave_control.h"

namespace keldo::form1d {

struct Graph1Form::SoundControls {
  sound::WaveControl edit[3];
};

Graph1Form::~Graph1Form() = default;

void Graph1Form::SoundControlsDeleter::operator()(SoundControls* p) const { delete p; }

void Graph1Form::BuildSoundControls() {
  sound_.reset(new SoundControls);
  controls_.Add("TxtSound(0)", ControlKind::Text, "1").tip = "Graphs to play, comma-separated.";
  controls_.Add("TxtSound(1)", ControlKind::Text, "8192").tip = "Sampling rate, an integer from 441 to 44100.";
  controls_.Add("TxtSound(2)", ControlKind::Text, "8000").tip = "Volume: the factor the values are multiplied by.";
  controls_.AddOption("OpBitRate(0)", "8 bits", "OpBitRate");
  controls_.AddOption("OpBitRate(1)", "16 bits", "OpBitRate", true);
  controls_.Add("cmdSound(0)", ControlKind::Button, "&Play").tip = "Plays the graphs in turn.";
  Control& stop = controls_.Add("cmdSound(1)", ControlKind::Button, "&Stop");
  stop.tip = "Stops playing.";
  stop.enabled = false;
  OnButton("cmdSound(0)", [this](int) { PlayGraph(); });
  OnButton("cmdSound(1)", [this](int) { StopSound(); });
  OnMenu("mnuOpenSave(1)", [this](int) { LoadTheGraph(2); });
  OnMenu("mnuLoadSoundFile", [this](int) { LoadTheGraph(2); });
}

std::string Graph1Form::BufferPath(int bits) {
  return context_.SoundBufferFolder() + (bits == 8 ? "/S" : "/T") + std::to_string(n_) + ".wav";
}

void Graph1Form::InitializeSound(int bits) {
  context_.ShowBusy();
  sound::WaveControl& control = sound_->edit[bits == 8 ? 0 : 1];
  const std::string buffer = BufferPath(bits);
  control.Open(buffer);
  if (control.LastError() != 0 || control.Length() < 60) {
    // From the starter file: a plain mono header at 44100 Hz.
    const std::string starter = context_.SoundBufferFolder() + (bits == 8 ? "/KELDO_TP.WAV" : "/KELDO2TP.WAV");
    control.Open(starter);
    if (control.LastError() != 0) {
      control.Create(bits, 44100);
      control.SaveAs(starter);
    }
    control.SetFormat(bits);
    control.SetRate(44100);
    control.SetLength(n_);
    control.SaveAs(buffer);
    if (control.LastError() != 0) {
      // The sound works from memory, but its buffer file could not be kept.
      context_.ShowIdle();
      context_.ShowError(37);
    }
  }
  (bits == 8 ? soundReady8_ : soundReady16_) = true;
  context_.ShowIdle();
}

bool Graph1Form::SoundSettings(double& volume, int& rate) {
  volume = VALU(controls_.Text("TxtSound(2)"));
  if (!(volume > 0)) {
    context_.ShowError(50);
    return false;
  }
  const double r = VALU(controls_.Text("TxtSound(1)"));
  if (!(r >= 441 && r <= 44100)) {
    context_.ShowError(38);
    return false;
  }
  rate = static_cast<int>(std::nearbyint(r));
  return true;
}

void Graph1Form::PlayGraph() {
  std::string list = controls_.Text("TxtSound(0)") + ",,";
  std::vector<std::string> tokens;
  std::size_t pos = 0;
  while (true) {
    const std::string token = formula::NextToken(pos, list, ",");
    if (token.empty() || pos >= list.size()) break;
    tokens.push_back(token);
  }
  std::vector<int> graphs;
  for (const std::string& token : tokens) {
    const double g = std::nearbyint(VALU(token));
    if (!(g >= 1 && g <= graphCount_)) {
      context_.ShowError(3);
      return;
    }
    graphs.push_back(static_cast<int>(g) - 1);
  }
  for (std::size_t k = 0; k < graphs.size(); ++k)
    if (!PlayGraphNum(graphs[k], k + 1 < graphs.size())) return;
}

bool Graph1Form::PlayGraphNum(int g, bool wait) {
  double volume = 0.0;
  int rate = 0;
  if (!SoundSettings(volume, rate)) return false;
  const int bits = controls_["OpBitRate(0)"].value ? 8 : 16;
  if (!(bits == 8 ? soundReady8_ : soundReady16_)) InitializeSound(bits);
  sound::WaveControl& control = sound_->edit[bits == 8 ? 0 : 1];
  control.SetRate(rate);
  control.SetPosition(0);
  control.Write(sound::FillSoundArray(GraphValues(g), n_ + 1, bits, volume));
  control.SetPosition(0);
  // Only the part inside the window plays.
  const long long start = std::max(0LL, std::llround((winLeft_ - GraphLeft(g)) / GraphStep(g)));
  const long long end = std::min<long long>(n_ + 1, std::llround((winRight_ - GraphLeft(g)) / GraphStep(g)));
  if (!(start < end)) {
    context_.ShowError(42);
    return false;
  }
  platform::Audio& audio = *context_.services().audio;
  if (!control.Play(audio, start, end)) {
    context_.ShowError(39);
    return false;
  }
  controls_.SetEnabled("cmdSound(1)", true);
  if (wait) audio.WaitUntilDone();
  Touch();
  return true;
}

void Graph1Form::StopSound() {
  // Stops the 8-bit control alone, as the button always has.
  sound_->edit[0].Stop(*context_.services().audio);
  sound_->edit[0].SetPosition(0);
  RequestFocus(controls_, "cmdSound(0)");
  controls_.SetEnabled("cmdSound(1)", false);
  Touch();
}

void Graph1Form::SaveTheSoundFile() {
  const auto chosen = context_.services().fileDialog->Run(
      {platform::FileDialogMode::Save, "Save sound file", "Audio files (*.wav)|*.wav", 1,
       platform::kFlagsSaveDialog, ".wav", context_.DialogFolder(kFolderSoundSave, "Audio")});
  if (!chosen) return;
  const int g = graphNumber_("TxtAnGr1", graphCount_, kOneGraphCommand);
  if (g < 0) return;
  SaveSoundFile(chosen->path, g);
  context_.RememberDialogFolder(kFolderSoundSave, chosen->path);
}

bool Graph1Form::SaveSoundFile(const std::string& path, int g) {
  if (!soundReady8_) InitializeSound(8);
  if (!soundReady16_) InitializeSound(16);
  double volume = 0.0;
  int rate = 0;
  if (!SoundSettings(volume, rate)) return false;
  const int bits = controls_["OpBitRate(0)"].value ? 8 : 16;
  sound::WaveControl& control = sound_->edit[bits == 8 ? 0 : 1];
  control.SetRate(rate);
  control.SetPosition(0);
  control.Write(bits == 8 ? sound::FillSoundArray2(GraphValues(g), n_ + 1, 8, volume)
                          : sound::FillSoundArray(GraphValues(g), n_ + 1, 16, volume));
  control.SetPosition(0);
  control.SaveAs(path);
  if (control.LastError() != 0) {
    context_.ShowError(39);
    return false;
  }
  return true;
}

bool Graph1Form::LoadSoundFunction(const std::string& path, const std::string& title) {
  sound::WaveControl& control = sound_->edit[2];
  control.Close();
  control.Open(path);
  if (control.LastError() != 0) {
    context_.ShowError(46);
    return false;
  }
  const int rate = control.Rate();
  const long long length = control.Length();
  if (length > 65537) {
    WaveFileReceiver* editor = NewFormFor<WaveFileReceiver>(context_, FormKind::SoundEditor);
    if (!editor) return false;
    Form& form = FormOf(*editor);
    if (!editor->LoadWavFile(path)) {
      // The editor has said why.
      context_.CloseForm(form);
      return false;
    }
    form.SetCaption(title.empty() ? form.Caption() : title);
    return true;
  }
  if (control.Channels() > 1) {
    control.Close();
    context_.ShowError(43);
    return false;
  }
  const int bits = control.Bits();
  const int points = sound::NumberSoundPoints(length);
  if (points != n_ && graphCount_ > 0) {
    Graph1Form* sibling = NewSiblingForm();
    if (!sibling) return false;
    sibling->InitializeSideBox();
    sibling->ClearSideBox();
    sibling->SetPoints(points);
    return sibling->LoadSoundFunction(path, title);
  }
  const std::vector<std::int16_t> samples = control.Read(length);
  control.Close();
  if (static_cast<long long>(samples.size()) != length) {
    context_.ShowError(48);
    return false;
  }
  if (points != n_) {
    SetPoints(points);
    soundReady8_ = soundReady16_ = false;
  }
  // All but the last twelve samples.
  long long m = static_cast<long long>(samples.size()) - 12;
  if (length < static_cast<long long>(samples.size())) m = length - 12;
  if (m < 1) m = 12;
  std::vector<double> y(static_cast<std::size_t>(n_) + 1, 0.0);
  for (long long j = 1; j <= m && j <= static_cast<long long>(samples.size()) && j <= n_ + 1; ++j)
    y[static_cast<std::size_t>(j - 1)] = samples[static_cast<std::size_t>(j - 1)] - (bits == 8 ? 128 : 0);
  const double b = static_cast<double>(n_) / rate, h = 1.0 / rate;
  SetIntervalChoice(0.0);
  UpDateFnData(n_, y, 0.0, b, h, false);
  DisplayOneGraph();
  NewWindow();
  controls_.SetText("TxtSound(1)", std::to_string(rate));
  controls_.SetFromUser(bits == 8 ? "OpBitRate(0)" : "OpBitRate(1)", "1");
  return true;
}

bool Graph1Form::InputSoundArray(const std::vector<double>& samples, int bits, int rate, int count) {
  const int points = count - 1;
  if (points < 64 || points > 65536 || (points & (points - 1)) != 0 ||
      static_cast<int>(samples.size()) < count || rate <= 0) {
    context_.ShowError(2);
    return false;
  }
  if (points != n_) {
    SetPoints(points);
    soundReady8_ = soundReady16_ = false;
  }
  std::vector<double> y(samples.begin(), samples.begin() + count);
  if (bits == 8)
    for (double& v : y) v -= 128;
  const double b = static_cast<double>(n_) / rate, h = b / n_;
  SetIntervalChoice(0.0);
  UpDateFnData(n_, y, 0.0, b, h, false);
  DisplayOneGraph();
  NewWindow();
  controls_.SetText("TxtSound(1)", std::to_string(rate));
  controls_.SetFromUser(bits == 8 ? "OpBitRate(0)" : "OpBitRate(1)", "1");
  return true;
}

void Graph1Form::OpenAudio(const SideBoxCommand&) {
  if (!soundReady8_) InitializeSound(8);
  if (!soundReady16_) InitializeSound(16);
  controls_.SetEnabled("cmdSound(0)", true);
  controls_.SetEnabled("cmdSound(1)", false);
}

void Graph1Form::AudioSettings(const std::string& rate, const std::string& volume, bool sixteenBits) {
  controls_.SetText("TxtSound(1)", rate);
  controls_.SetText("TxtSound(2)", volume);
  if (sixteenBits) controls_.SetFromUser("OpBitRate(1)", "1");
}

// A new time-frequency form of the kind given the graph TxtGraphStat names
// and the audio box's settings; null after a message.
template <class Calls>
Calls* Graph1Form::NewTimeFrequencyForm(FormKind kind) {
  const int g = graphNumber_("TxtGraphStat", graphCount_, AnyBadNumber(1, NumberReading::Evaluated));
  if (g < 0) return nullptr;
  Calls* form = NewFormFor<Calls>(context_, kind);
  if (!form) return nullptr;
  const double* y = GraphValues(g);
  form->SetSignalValues(std::vector<double>(y, y + n_ + 1), n_, GraphLeft(g), GraphRight(g), GraphStep(g));
  form->AudioSettings(controls_.Text("TxtSound(1)"), controls_.Text("TxtSound(2)"),
                      controls_["OpBitRate(1)"].value != 0);
  return form;
}

void Graph1Form::ComputeSpectrogram(bool gabor) {
  SpectrogramCalls* spectrogram = NewTimeFrequencyForm<SpectrogramCalls>(FormKind::Spectrogram);
  if (!spectrogram) return;
  spectrogram->ShowSpecgramBox();
  if (gabor && spectrogram->ComputeTheSpectrogram()) spectrogram->DenoiseOption();
}

ScalogramCalls* Graph1Form::ComputeScalogram() {
  ScalogramCalls* scalogram = NewTimeFrequencyForm<ScalogramCalls>(FormKind::Scalogram);
  if (!scalogram) return nullptr;
  scalogram->SetTrueAudioSignal(percussionSound_);
  scalogram->ShowScalogramBox();
  return scalogram;
}

}  // namespace keldo::form1d

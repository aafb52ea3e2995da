// Any bytes as a wave file, through the one-dimensional form's load path
// and through the audio editor's. The form takes a graph, or one message
// (43 stereo, 46, 47, 48, or the editor's own for a long file it cannot
// hold) is shown and the form is unchanged. The editor takes the file, and
// then marks, plots, copies, pastes, cuts and draws it with the sizes
// checked after each edit; or it shows one message and holds nothing.
// Never a crash.

#include <unistd.h>

#include <cstdlib>

#include "form1d/graph1_form.h"
#include "fuzz/fuzz_frame.h"
#include "platform/headless/raster_surface.h"
#include "sound/sound_editor_form.h"

namespace {

using namespace keldo;

bool StartsWithAny(const std::string& m, std::initializer_list<const char*> allowed) {
  for (const char* a : allowed)
    if (m.rfind(a, 0) == 0) return true;
  return false;
}

void OneDimensionalForm(const std::string& path) {
  fuzz::FuzzFrame t;
  t.frame.settings().soundBufferFolder = "/tmp/keldo-fuzz-sound";
  int code = 0;
  auto* form = dynamic_cast<form1d::Graph1Form*>(t.frame.NewForm(FormKind::Graph1, code));
  if (!form) std::abort();
  const bool loaded = form->LoadDataFile(path, "fuzz.wav");
  const std::size_t forms = t.frame.OpenForms().size();
  if (loaded) {
    // Into this form, a new one of another N, or the sound editor.
    if (!t.lines.empty() || (form->GraphCount() != 1 && forms != 2)) std::abort();
    return;
  }
  if (form->GraphCount() != 0 || forms != 1 || t.lines.size() != 1) std::abort();
  if (!StartsWithAny(t.lines[0], {"message 43:", "message 46:", "message 47:", "message 48:",
                                  "message: Error opening file.", "message: Error converting sound values."}))
    std::abort();
}

void Draw(const sound::SoundEditorForm& e) {
  platform::RasterSurface surface(97, 31);
  e.Paint(sound::kFilePicture, surface);
  e.Paint(sound::kClipPicture, surface);
  (void)e.Graphs();
}

void AudioEditor(const std::string& path, const std::uint8_t* data, std::size_t size) {
  fuzz::FuzzFrame t;
  int code = 0;
  auto* e = dynamic_cast<sound::SoundEditorForm*>(t.frame.NewForm(FormKind::SoundEditor, code));
  if (!e) std::abort();
  if (!e->LoadWavFile(path)) {
    if (e->SampleCount() != 0 || t.lines.size() != 1) std::abort();
    if (!StartsWithAny(t.lines[0], {"message 43:", "message: Error opening file.",
                                    "message: Error converting sound values."}))
      std::abort();
    return;
  }
  const std::int64_t count = e->SampleCount();
  Draw(*e);
  // Lines where the last bytes of the input put them, in samples.
  const double x1 = size > 0 ? static_cast<double>(count) * data[size - 1] / 255.0 : 0.0;
  const double x2 = x1 + (size > 1 ? 64.0 * data[size - 2] : 100.0);
  e->Mouse(MouseAction::Down, x1, 0, MouseButton::Left);
  e->Mouse(MouseAction::Down, x2, 0, MouseButton::Left);
  if (e->Lines() == sound::LineState::Both) {
    const std::int32_t length = e->ClipLength();
    if (length < 64 || length > 65536 || (length & (length - 1)) != 0 || e->ClipStart() + length >= count)
      std::abort();
    e->RunMenu("mnuClip");
    if (!e->ClipShown() || e->ClipSamples().size() != static_cast<std::size_t>(length) + 1) std::abort();
    Draw(*e);
    e->RunMenu("mnuCopy");
    e->RunMenu("mnuPaste");
    if (e->SampleCount() != count + length) std::abort();
    e->EraseClipLines();
    e->Mouse(MouseAction::Down, x1, 0, MouseButton::Left);
    e->Mouse(MouseAction::Down, x2, 0, MouseButton::Left);
    if (e->Lines() == sound::LineState::Both) {
      const std::int64_t before = e->SampleCount();
      const std::int32_t cut = e->ClipLength();
      e->RunMenu("mnuCut");
      if (e->SampleCount() != before - cut) std::abort();
    }
    Draw(*e);
  }
  // Only a marking refused with a beep or a too-short file may speak.
  for (const std::string& line : t.lines)
    if (line != "beep" && line != "message: Sound file too short for clipping.") std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string path = fuzz::WriteInput(data, size, ".wav");
  OneDimensionalForm(path);
  AudioEditor(path, data, size);
  return 0;
}

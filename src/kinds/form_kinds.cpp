#include "kinds/form_kinds.h"

#include "app/frame.h"
#include "kit/basic_form.h"
#include "form1d/graph1_form.h"
#include "form2d/graph2_form.h"
#include "imageproc/image_processor_menu.h"
#include "sound/sound_editor_form.h"
#include "sound/sound_editor_menu.h"
#include "timefreq/timefreq_menus.h"

namespace keldo {

void InstallFormKinds(Frame& frame) {
  frame.RegisterKind(FormKind::Graph1, form1d::MakeGraph1Form);
  frame.RegisterKind(FormKind::Graph2, form2d::MakeGraph2Form);
  frame.RegisterKind(FormKind::SoundEditor, [](FormContext& f) { return sound::MakeSoundEditorForm(f); });
  frame.RegisterKind(FormKind::Spectrogram, [](FormContext& f) {
    return MakeBasicForm(f, FormKind::Spectrogram, timefreq::SpectrogramMenuBar());
  });
  frame.RegisterKind(FormKind::Scalogram, [](FormContext& f) {
    return MakeBasicForm(f, FormKind::Scalogram, timefreq::ScalogramMenuBar());
  });
  frame.RegisterKind(FormKind::ImageProcessor, [](FormContext& f) {
    return MakeBasicForm(f, FormKind::ImageProcessor, imageproc::ImageProcessorMenuBar());
  });
}

}  // namespace keldo

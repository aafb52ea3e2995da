#include "kinds/form_kinds.h"

#include <string_view>

#include "app/frame.h"
#include "form1d/graph1_form.h"
#include "form2d/graph2_form.h"
#include "imageproc/image_processor_form.h"
#include "print/print_calls.h"
#include "sound/sound_editor_form.h"
#include "timefreq/scalogram_form.h"
#include "timefreq/spectrogram_form.h"
#include "workshop/workshop_form.h"

namespace keldo {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kDataFiles1D[] = {".kb1"sv, ".kdt"sv, ".wav"sv};
constexpr std::string_view kDataFiles2D[] = {".kb2"sv, ".pgm"sv, ".bmp"sv,  ".dib"sv, ".png"sv, ".jpg"sv,
                                             ".jpeg"sv, ".pcx"sv, ".tif"sv, ".tiff"sv, ".wc2"sv};
constexpr DataFileItem kFrameItems1D[] = {{"mnuOpenSoundFile", "Open sound file (*.wav)", 1},
                                          {"mnuOpen1DDataFile", "Open 1D data File ", 2}};
constexpr DataFileItem kFrameItems2D[] = {{"mnuOpenImageFile", "Open image file", 1},
                                          {"mnuOpen2DDataFile", "Open 2D data file", 2}};

const FormKindInfo kKinds[] = {
    {.kind = FormKind::Graph1,
     .word = "1d",
     .captionWord = "1DGraph ",
     .formExtension = ".kd1",
     .formFilter = "1-Dim forms (*.kd1)",
     .openFormPosition = 1,
     .fromCommandLine = true,
     .dataFiles = kDataFiles1D,
     .dataFileItems = kFrameItems1D,
     .newItem = {0, "mnuNew1Dim", "New &1 Dim ", nullptr},
     .maker = form1d::MakeGraph1Form},
    {.kind = FormKind::Graph2,
     .word = "2d",
     .captionWord = "2DGraph ",
     .formExtension = ".kd2",
     .formFilter = "2-Dim forms (*.kd2)",
     .openFormPosition = 2,
     .fromCommandLine = true,
     .dataFiles = kDataFiles2D,
     .dataFileItems = kFrameItems2D,
     .newItem = {1, "mnuNew2Dim", "New &2 Dim", nullptr},
     .maker = form2d::MakeGraph2Form},
    {.kind = FormKind::SoundEditor,
     .word = "audio",
     .captionWord = "Sound Editor ",
     .newItem = {2, "mnuNewAudioEditor", "New &Audio editor", nullptr},
     .maker = sound::MakeSoundEditorForm},
    {.kind = FormKind::Spectrogram,
     .word = "spectrogram",
     .captionWord = "Spectrogram ",
     .formExtension = ".spg",
     .formFilter = "Spectrograph (*.spg)",
     .openFormPosition = 4,
     .maker = timefreq::MakeSpectrogramForm},
    {.kind = FormKind::Scalogram,
     .word = "scalogram",
     .captionWord = "Scalogram ",
     .formExtension = ".scg",
     .formFilter = "Scalogram (*.scg)",
     .openFormPosition = 3,
     .maker = timefreq::MakeScalogramForm},
    {.kind = FormKind::Workshop,
     .word = "workshop",
     .captionWord = "Wavelet Image Compression Workshop",
     .numbered = false,
     .maker = workshop::MakeWorkshopForm},
    {.kind = FormKind::ImageProcessor,
     .word = "imageproc",
     .captionWord = "Image Processor ",
     .newItem = {3, "mnuNewImageProcessor", "New &Image processor", "mnuNewImageEditor"},
     .maker = imageproc::MakeImageProcessorForm},
};

}  // namespace

std::span<const FormKindInfo> FormKinds() { return kKinds; }

void InstallFormKinds(Frame& frame) {
  frame.InstallKinds(kKinds);
  // The forms print through the kit's calls; the print library answers them.
  InstallPrinting(print::PrintLibrary());
}

}  // namespace keldo

#pragma once
// The kinds of child form.

#include <string_view>

namespace keldo {

enum class FormKind { Graph1, Graph2, SoundEditor, Spectrogram, Scalogram, ImageProcessor };
constexpr int kFormKinds = 6;

// The word a script and a dump use for the kind: "1d", "2d", "audio",
// "spectrogram", "scalogram", "imageproc".
std::string_view FormKindName(FormKind kind);
// The caption word, with its trailing blank: "1DGraph ", "Sound Editor " ...
std::string_view FormKindCaptionWord(FormKind kind);

}  // namespace keldo

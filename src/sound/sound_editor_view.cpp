// What the audio editor shows: its two waveform pictures, the rows of
// buttons under them, and the dump of its state.

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "common/number_text.h"
#include "sound/sound_editor_form.h"

namespace keldo::sound {
namespace {

using namespace layout;
using F = LayoutNode;

// The pictures' user scale runs from -kHalfHeight to kHalfHeight upward,
// the base line at 0, wide enough for the tallest sample (127 * 8).
constexpr double kHalfHeight = 1024.0;

constexpr platform::Rgb kWaveColour = platform::MakeRgb(0, 0, 160);
constexpr platform::Rgb kBaseColour = platform::MakeRgb(96, 96, 96);
constexpr platform::Rgb kLineColour = platform::MakeRgb(220, 0, 0);
constexpr platform::Rgb kPlayColour = platform::MakeRgb(0, 150, 0);

FormLayout MakeLayout() {
  FormLayout l;
  auto moves = [](const char* base) {
    std::vector<LayoutNode> buttons;
    for (int b = 0; b < 3; ++b) {
      const unsigned repeat = (std::string(base) == "cmdPos1" ? b != 0 : b != 2) ? F::kAutoRepeat : 0u;
      buttons.push_back(Item(IndexedName(base, b), F::kNarrow | repeat));
    }
    return buttons;
  };
  std::vector<LayoutNode> line1 = {Item("labPos(0)", F::kStretch)};
  for (LayoutNode& b : moves("cmdPos1")) line1.push_back(std::move(b));
  std::vector<LayoutNode> line2 = {Item("labPos(1)", F::kStretch)};
  for (LayoutNode& b : moves("cmdPos2")) line2.push_back(std::move(b));
  l.bottom = Column({Line({Group("File", Line({Item("cmdPlay", F::kFitWidth), Item("cmdStart", F::kFitWidth),
                                               Item("cmdStop", F::kFitWidth)})),
                           Group("Clip", Line({Item("cmdPlay2", F::kFitWidth), Item("cmdStart2", F::kFitWidth),
                                               Item("cmdEraseClip", F::kFitWidth),
                                               Item("cmdAnalyzer", F::kFitWidth)})),
                           Stretch()}),
                     Line({GroupOf("FrClip(0)", Line(std::move(line1))), GroupOf("FrClip(1)", Line(std::move(line2))),
                           Column({Item("labSamples"), Item("labPlayPos")}), Stretch()})});
  return l;
}

// Five labels along a span of samples, in seconds.
std::array<std::string, 5> TimeLabels(double from, double samples, int rate) {
  std::array<std::string, 5> labels;
  if (rate <= 0) return labels;
  for (std::size_t k = 0; k < 5; ++k)
    labels[k] = FormatLabel((from + samples * static_cast<double>(k) / 4.0) / rate);
  return labels;
}

// One vertical line from the base line per column, as WaveColumns picks.
void DrawWave(platform::Surface& surface, const std::int16_t* sound, std::int64_t count, int bits) {
  std::vector<platform::UserSegment> segments;
  for (std::int64_t k : WaveColumns(count, surface.PixelWidth())) {
    const double x = static_cast<double>(k);
    segments.push_back({x, 0.0, x, static_cast<double>(WaveHeight(sound[k], bits))});
  }
  surface.Lines(segments, kWaveColour);
}

double Peak(const std::vector<double>& values) {
  double peak = 0.0;
  for (double v : values) peak = std::max(peak, std::abs(v));
  return peak;
}

GraphSummary::Field Number(const char* name, double value) { return {name, "", {value}}; }

}  // namespace

const FormLayout& SoundEditorForm::Layout() const {
  static const FormLayout kLayout = MakeLayout();
  return kLayout;
}

std::vector<Picture> SoundEditorForm::Pictures() const {
  Picture file;
  file.row = 0;
  file.scale = {0.0, kHalfHeight, PictureSpan(kFilePicture), -kHalfHeight};
  file.caption = controls_.Text("labWave(1)");
  file.bottomLabels = TimeLabels(0.0, PictureSpan(kFilePicture), sampleRate_);
  Picture clip;
  clip.row = 1;
  clip.scale = {0.0, kHalfHeight, PictureSpan(kClipPicture), -kHalfHeight};
  clip.caption = controls_.Text("labWave(0)");
  if (clipShown_)
    clip.bottomLabels = TimeLabels(static_cast<double>(shownClipStart_), PictureSpan(kClipPicture), sampleRate_);
  std::vector<Picture> pictures(2);
  pictures[kClipPicture] = clip;
  pictures[kFilePicture] = file;
  return pictures;
}

double SoundEditorForm::PictureSpan(int picture) const {
  // Column i shows sample i * stride, so a picture W pixels wide spans
  // W * stride samples: the last few samples of a stride that does not
  // divide the count lie past its right edge.
  const int width = drawnWidth_[static_cast<std::size_t>(picture)];
  const std::int64_t count = picture == kFilePicture ? SampleCount() : ShownClipLength();
  return static_cast<double>(std::max<std::int64_t>(WaveStride(count, width) * width, 1));
}

void SoundEditorForm::Paint(int picture, platform::Surface& surface) const {
  surface.Clear(platform::kWhite);
  if (picture != kClipPicture && picture != kFilePicture) return;
  drawnWidth_[static_cast<std::size_t>(picture)] = std::max(1, surface.PixelWidth());
  const std::vector<Picture> pictures = Pictures();
  const Picture& p = pictures[static_cast<std::size_t>(picture)];
  surface.SetScale(p.scale);
  surface.Line(p.scale.left, 0.0, p.scale.right, 0.0, kBaseColour);
  if (picture == kFilePicture) {
    if (samples_.empty()) return;
    DrawWave(surface, samples_.data(), SampleCount(), bits_);
    if (lineState_ != LineState::None) {
      const double x1 = static_cast<double>(clipStart_);
      surface.Line(x1, kHalfHeight, x1, -kHalfHeight, kLineColour);
    }
    if (lineState_ == LineState::Both) {
      const double x2 = static_cast<double>(clipStart_ + clipLength_);
      surface.Line(x2, kHalfHeight, x2, -kHalfHeight, kLineColour);
    }
    if (playing_ == Playing::File) {
      const double x = static_cast<double>(CurrentPlayPosition());
      surface.Line(x, kHalfHeight, x, -kHalfHeight, kPlayColour);
    }
    return;
  }
  if (!clipShown_) return;
  DrawWave(surface, clipSamples_.data(), ShownClipLength(), bits_);
  if (playing_ == Playing::Clip) {
    const double x = static_cast<double>(CurrentPlayPosition());
    surface.Line(x, kHalfHeight, x, -kHalfHeight, kPlayColour);
  }
}

std::array<double, 4> SoundEditorForm::Window() const {
  return {0.0, static_cast<double>(SampleCount()), -kHalfHeight, kHalfHeight};
}

std::vector<GraphSummary> SoundEditorForm::Graphs() const {
  if (samples_.empty() || sampleRate_ <= 0) return {};
  std::vector<GraphSummary> graphs;
  // The whole file as a picture kDumpWidth pixels wide draws it.
  GraphSummary file;
  const std::int64_t stride = WaveStride(SampleCount(), kDumpWidth);
  for (std::int64_t k : WaveColumns(SampleCount(), kDumpWidth)) file.values.push_back(samples_[k]);
  file.a = 0.0;
  file.b = static_cast<double>(SampleCount()) / sampleRate_;
  file.h = static_cast<double>(stride) / sampleRate_;
  file.peak = Peak(file.values);
  const char* state = lineState_ == LineState::None ? "0" : lineState_ == LineState::LineOne ? "1" : "2";
  file.fields = {{"name", "file", {}},
                 Number("samples", static_cast<double>(SampleCount())),
                 Number("rate", sampleRate_),
                 Number("bits", bits_),
                 Number("stride", static_cast<double>(stride)),
                 {"lineState", state, {}},
                 Number("line1", lineState_ == LineState::None ? -1.0 : static_cast<double>(clipStart_)),
                 Number("line2", lineState_ == LineState::Both ? static_cast<double>(clipStart_ + clipLength_) : -1.0),
                 Number("clipLength", lineState_ == LineState::Both ? clipLength_ : 0),
                 Number("copyStart", static_cast<double>(copyStart_)),
                 Number("copyLength", static_cast<double>(copyLength_)),
                 {"pasteReady", pasteReady_ ? "Y" : "N", {}},
                 Number("playPosition", static_cast<double>(CurrentPlayPosition())),
                 {"playing", playing_ == Playing::File ? "file" : playing_ == Playing::Clip ? "clip" : "none", {}}};
  graphs.push_back(std::move(file));
  if (clipShown_) {
    GraphSummary clip;
    clip.values.assign(clipSamples_.begin(), clipSamples_.end());
    clip.a = static_cast<double>(shownClipStart_) / sampleRate_;
    clip.h = 1.0 / sampleRate_;
    clip.b = clip.a + static_cast<double>(ShownClipLength()) * clip.h;
    clip.peak = Peak(clip.values);
    clip.fields = {{"name", "clip", {}},
                   Number("start", static_cast<double>(shownClipStart_)),
                   Number("length", static_cast<double>(ShownClipLength())),
                   Number("playPosition", static_cast<double>(clipPosition_))};
    graphs.push_back(std::move(clip));
  }
  return graphs;
}

}  // namespace keldo::sound

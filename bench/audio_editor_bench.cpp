// The audio editor on a ten-minute sound at 44.1 kHz, 16-bit mono (26.46
// million samples), written by libsndfile at start-up: opening it and
// drawing both pictures, against libsndfile reading the same file into
// memory (the goal is at most 1.5 times that bare read); and the redraw
// after a line moves one sample, against the 16 ms budget of a frame.

#include <benchmark/benchmark.h>
#include <sndfile.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "app/frame.h"
#include "kinds/form_kinds.h"
#include "kit/typed_forms.h"
#include "platform/headless/headless_services.h"
#include "platform/headless/raster_surface.h"
#include "sound/sound_editor_form.h"

namespace {

using namespace keldo;

constexpr double kFrameBudgetSeconds = 0.016;
constexpr sf_count_t kSamples = 10LL * 60 * 44100;
// A picture as wide as a maximized window's.
constexpr int kPictureWidth = 1600, kPictureHeight = 300;

// The sound: a tone with a slow swell and a little noise, so that every
// sample differs; written once for the whole run.
const std::string& SoundFile() {
  static const std::string path = [] {
    const std::string p = "/tmp/keldo-bench-audio-" + std::to_string(::getpid()) + ".wav";
    SF_INFO info{};
    info.samplerate = 44100;
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* file = sf_open(p.c_str(), SFM_WRITE, &info);
    std::vector<short> block(1 << 16);
    unsigned noise = 12345;
    for (sf_count_t first = 0; first < kSamples; first += static_cast<sf_count_t>(block.size())) {
      const sf_count_t count = std::min<sf_count_t>(static_cast<sf_count_t>(block.size()), kSamples - first);
      for (sf_count_t i = 0; i < count; ++i) {
        noise = noise * 1664525u + 1013904223u;
        const long long k = first + i;
        block[static_cast<std::size_t>(i)] =
            static_cast<short>(((k * 97) % 20000 - 10000) * ((k / 44100) % 3 + 1) / 3 + static_cast<int>(noise >> 28));
      }
      sf_write_short(file, block.data(), count);
    }
    sf_close(file);
    std::atexit([] { std::remove(SoundFile().c_str()); });
    return p;
  }();
  return path;
}

struct Editor {
  platform::HeadlessPlatform platform{nullptr, KELDO_SOURCE_DIR "/docs"};
  Frame frame{platform.services(), KELDO_SOURCE_DIR};
  sound::SoundEditorForm* form = nullptr;
  Editor() {
    InstallFormKinds(frame);
    int code = 0;
    form = NewFormOf<sound::SoundEditorForm>(frame, code);
  }
};

void Draw(const sound::SoundEditorForm& form, platform::Surface& file, platform::Surface& clip) {
  form.Paint(sound::kFilePicture, file);
  form.Paint(sound::kClipPicture, clip);
}

void BM_OpenAndDraw(benchmark::State& state) {
  const std::string& path = SoundFile();
  Editor e;
  platform::RasterSurface file(kPictureWidth, kPictureHeight), clip(kPictureWidth, kPictureHeight);
  for (auto _ : state) {
    if (!e.form->LoadWavFile(path)) state.SkipWithError("the editor could not open the sound");
    Draw(*e.form, file, clip);
    state.PauseTiming();
    e.form->ClearEditor();
    state.ResumeTiming();
  }
  state.SetBytesProcessed(state.iterations() * kSamples * 2);
}

void BM_ReadYardstick(benchmark::State& state) {
  const std::string& path = SoundFile();
  for (auto _ : state) {
    SF_INFO info{};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    std::vector<short> samples(static_cast<std::size_t>(info.frames * info.channels));
    const sf_count_t got = sf_read_short(file, samples.data(), static_cast<sf_count_t>(samples.size()));
    sf_close(file);
    benchmark::DoNotOptimize(samples.data());
    if (got != kSamples) state.SkipWithError("libsndfile read short");
    // Freed outside the timing, as the editor's samples are.
    state.PauseTiming();
    std::vector<short>().swap(samples);
    state.ResumeTiming();
  }
  state.SetBytesProcessed(state.iterations() * kSamples * 2);
}

void BM_RedrawAfterMove(benchmark::State& state) {
  Editor e;
  e.form->LoadWavFile(SoundFile());
  // A clip of 65536 samples at five minutes, drawn.
  e.form->Mouse(MouseAction::Down, 13230000, 0, MouseButton::Left);
  e.form->Mouse(MouseAction::Down, 13270000, 0, MouseButton::Left);
  e.form->RunMenu("mnuClip");
  platform::RasterSurface file(kPictureWidth, kPictureHeight), clip(kPictureWidth, kPictureHeight);
  bool right = true;
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    e.form->Click(right ? "cmdPos1(2)" : "cmdPos1(1)");
    Draw(*e.form, file, clip);
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    right = !right;
  }
  state.SetLabel("a line moved, both pictures drawn, 1600 by 300 pixels");
}

void BM_RedrawBudget(benchmark::State& state) {
  for (auto _ : state) state.SetIterationTime(kFrameBudgetSeconds);
}

}  // namespace

BENCHMARK(BM_OpenAndDraw)->Name("BM_AudioEditorOpen10min/ours")->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_ReadYardstick)->Name("BM_AudioEditorOpen10min/yardstick")->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_RedrawAfterMove)->Name("BM_AudioEditorRedraw/ours")->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(BM_RedrawBudget)->Name("BM_AudioEditorRedraw/yardstick")->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK_MAIN();

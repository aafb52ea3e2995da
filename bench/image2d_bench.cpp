// Loading a 2048 by 2048 PNG into a two-dimensional form and drawing it,
// through the frame's open path and the imaging service of the desktop
// program, against a plain QImage load of the same file. The goal is under
// half a second for ours.

#include <benchmark/benchmark.h>

#include <QImage>
#include <QString>

#include <cmath>
#include <string>

#include "app/frame.h"
#include "kinds/form_kinds.h"
#include "platform/headless/headless_services.h"
#include "qt/qt_services.h"

namespace {

using namespace keldo;

// A photograph-like test picture: smooth shading with fine detail, so that
// the PNG coder has work to do on both sides.
const std::string& TestPicture() {
  static const std::string path = [] {
    const int side = 2048;
    QImage image(side, side, QImage::Format_Grayscale8);
    for (int y = 0; y < side; ++y) {
      uchar* line = image.scanLine(y);
      for (int x = 0; x < side; ++x) {
        const double v = 128 + 80 * std::sin(x * 0.004) * std::cos(y * 0.003) + 40 * std::sin(x * y * 0.0007);
        line[x] = static_cast<uchar>(std::clamp(v, 0.0, 255.0));
      }
    }
    const std::string file = "/tmp/keldo-bench-2048.png";
    image.save(QString::fromStdString(file));
    return file;
  }();
  return path;
}

void BM_LoadPicture(benchmark::State& state) {
  const std::string& path = TestPicture();
  platform::HeadlessPlatform platform(nullptr, ".");
  qt::QtImaging imaging;
  platform.services().imaging = &imaging;
  Frame frame(platform.services(), ".");
  InstallFormKinds(frame);
  for (auto _ : state) {
    Form* form = frame.OpenDataFile(FormKind::Graph2, path);
    if (!form || form->Graphs().size() != 1) state.SkipWithError("the picture did not load");
    state.PauseTiming();
    if (form) frame.CloseForm(*form);
    state.ResumeTiming();
  }
}

void BM_LoadPictureYardstick(benchmark::State& state) {
  const std::string& path = TestPicture();
  for (auto _ : state) {
    QImage image(QString::fromStdString(path));
    benchmark::DoNotOptimize(image.constBits());
  }
}

BENCHMARK(BM_LoadPicture)->Name("BM_LoadPng2048/ours")->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(BM_LoadPictureYardstick)->Name("BM_LoadPng2048/yardstick")->Unit(benchmark::kMillisecond)->Iterations(5);

}  // namespace

BENCHMARK_MAIN();

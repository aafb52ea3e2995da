// keldo-run: drives forms from a script, headless. See docs/scripting.md.
#include <QGuiApplication>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>

#include <QApplication>

#include <clocale>

#include "kinds/form_kinds.h"
#include "app/frame.h"
#include "platform/headless/headless_services.h"
#include "qt/form_snapshot.h"
#include "qt/program_folder.h"
#include "qt/qt_services.h"
#include "script/runner.h"

namespace {

// Standard error belongs to the script's own "line N: reason" reports, so
// the toolkit's diagnostics are kept off it.
void QuietQtMessages(QtMsgType type, const QMessageLogContext&, const QString& message) {
  if (type == QtFatalMsg) {
    std::cerr << "keldo-run: " << message.toStdString() << '\n';
    std::abort();
  }
}

int Usage() {
  std::cerr << "usage: keldo-run [--strict] SCRIPT   (SCRIPT may be - for standard input)\n";
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  keldo::script::RunOptions options;
  std::string scriptPath;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--strict") == 0)
      options.strict = true;
    else if (scriptPath.empty())
      scriptPath = argv[i];
    else
      return Usage();
  }
  if (scriptPath.empty()) return Usage();
  std::string text;
  if (scriptPath == "-") {
    text.assign(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
  } else {
    std::ifstream in(scriptPath, std::ios::binary);
    if (!in) {
      std::cerr << "keldo-run: cannot read " << scriptPath << '\n';
      return 2;
    }
    text.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }

  // Screenshots draw the forms with the desktop program's own widgets,
  // on Qt's offscreen platform: no display is needed.
  if (!std::getenv("QT_QPA_PLATFORM")) setenv("QT_QPA_PLATFORM", "offscreen", 1);
  qInstallMessageHandler(QuietQtMessages);
  int qtArgc = 1;
  char* qtArgv[] = {argv[0], nullptr};
  QApplication app(qtArgc, qtArgv);
  // Numbers are written and read with a point whatever the user's locale.
  std::setlocale(LC_NUMERIC, "C");

  const std::string home = keldo::qt::ProgramFolder();
  keldo::script::Runner* runner = nullptr;
  keldo::platform::HeadlessPlatform platform(
      [&runner](const std::string& line) {
        if (runner) runner->Print(line);
      },
      home + "/docs");
  // Pictures in every format the toolkit reads and writes (PNG, JPEG,
  // TIFF ...), not only the bitmaps and PGM of the headless codec.
  keldo::qt::QtImaging imaging;
  platform.services().imaging = &imaging;
  keldo::Frame frame(platform.services(), home);
  keldo::InstallFormKinds(frame);
  keldo::script::Runner run(frame, platform, std::cout, std::cerr);
  runner = &run;
  run.SetScreenshotter(keldo::qt::SaveFormSnapshot);
  // A printed form is the window it would be on the screen.
  frame.SetWindowCapturer(keldo::qt::RenderFormView);
  return run.Run(text, options);
}

// The desktop program: the frame with its forms in a real window.
#include <QApplication>
#include <QStringList>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <memory>

#include "kinds/form_kinds.h"
#include "app/frame.h"
#include "qt/main_window.h"
#include "qt/program_folder.h"
#include "qt/qt_services.h"
#include "qt/session_recorder.h"

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  // Numbers are written and read with a point whatever the user's locale.
  std::setlocale(LC_NUMERIC, "C");
  QApplication::setApplicationName("KELDO");
  const std::string home = keldo::qt::ProgramFolder();
  keldo::qt::QtPlatform platform(home + "/docs");
  keldo::Frame frame(platform.services(), home);
  keldo::InstallFormKinds(frame);
  // `--record FILE.ksc` (or KELDO_RECORD=FILE.ksc, for a launcher) writes
  // the session as a keldo-run script.
  QStringList args = QApplication::arguments();
  QString recordTo = qEnvironmentVariable("KELDO_RECORD");
  for (qsizetype k = 1; k < args.size(); ++k) {
    if (args[k] == "--record") {
      if (k + 1 < args.size()) recordTo = args[k + 1];
      else std::fputs("keldo: --record needs a file name; going on without a recording\n", stderr);
      args.remove(k, std::min<qsizetype>(2, args.size() - k));
      break;
    }
    if (args[k].startsWith("--record=")) {
      recordTo = args[k].mid(9);
      args.remove(k);
      break;
    }
  }
  std::unique_ptr<keldo::qt::SessionRecorder> recorder;
  if (!recordTo.isEmpty()) recorder = std::make_unique<keldo::qt::SessionRecorder>(frame, recordTo.toStdString());
  keldo::qt::MainWindow window(frame);
  platform.SetParent(&window);
  window.show();
  // The command line: one quoted path to a form file. Arguments are joined
  // back into one text, quoted as a shell would have passed it.
  if (args.size() > 1) {
    const std::string path = args.mid(1).join(' ').toStdString();
    const keldo::qt::RecordedAction recorded(nullptr, "open " + keldo::qt::SessionRecorder::Quote(path));
    frame.Process("\"" + path + "\"");
  }
  return QApplication::exec();
}

// The desktop program: the frame with its forms in a real window.
#include <QApplication>
#include <QStringList>

#include <clocale>

#include "kinds/form_kinds.h"
#include "app/frame.h"
#include "qt/main_window.h"
#include "qt/program_folder.h"
#include "qt/qt_services.h"

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  // Numbers are written and read with a point whatever the user's locale.
  std::setlocale(LC_NUMERIC, "C");
  QApplication::setApplicationName("KELDO");
  const std::string home = keldo::qt::ProgramFolder();
  keldo::qt::QtPlatform platform(home + "/docs");
  keldo::Frame frame(platform.services(), home);
  keldo::InstallFormKinds(frame);
  keldo::qt::MainWindow window(frame);
  platform.SetParent(&window);
  window.show();
  // The command line: one quoted path to a form file. Arguments are joined
  // back into one text, quoted as a shell would have passed it.
  const QStringList args = QApplication::arguments();
  if (args.size() > 1) frame.Process("\"" + args.mid(1).join(' ').toStdString() + "\"");
  return QApplication::exec();
}

// The frame's window and a 1-D form's window, on Qt's offscreen platform.
#include <QAction>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QtTest>

#include "app/form_kinds.h"
#include "app/frame.h"
#include "qt/form_view.h"
#include "qt/main_window.h"
#include "qt/qt_services.h"

namespace {

QStringList Titles(QMenuBar* bar) {
  QStringList out;
  for (QAction* a : bar->actions()) out << a->text();
  return out;
}

QMenu* MenuTitled(QMenuBar* bar, const QString& title) {
  for (QAction* a : bar->actions())
    if (a->text() == title) return a->menu();
  return nullptr;
}

QStringList Items(QMenu* menu) {
  QStringList out;
  emit menu->aboutToShow();
  for (QAction* a : menu->actions())
    if (!a->isSeparator()) out << a->text();
  return out;
}

}  // namespace

class FrameWindowTest : public QObject {
  Q_OBJECT
 private slots:
  void frameMenusThenFormMenus() {
    keldo::qt::QtPlatform platform(KELDO_SOURCE_DIR "/docs");
    keldo::Frame frame(platform.services(), KELDO_SOURCE_DIR);
    keldo::InstallFormKinds(frame);
    keldo::qt::MainWindow window(frame);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QCOMPARE(window.windowTitle(), QString("KELDO"));
    QCOMPARE(Titles(window.menuBar()), (QStringList{"&File", "&Edit", "&View", "&Graph", "&Series", "&Transform",
                                                    "&Convolve", "&Analysis", "&Help"}));
    QCOMPARE(Items(MenuTitled(window.menuBar(), "&File")),
             (QStringList{"New &1 Dim ", "New &2 Dim", "New &Audio editor", "New &Image processor", "&Open form",
                          "Open sound file (*.wav)", "Open 1D data File ", "Open image file", "Open 2D data file",
                          "E&xit"}));
    QCOMPARE(Items(MenuTitled(window.menuBar(), "&Help")), (QStringList{"&Getting started", "&About KELDO"}));

    // File > New 1 Dim, by its action, as a click would.
    QMenu* file = MenuTitled(window.menuBar(), "&File");
    file->actions().first()->trigger();
    QCOMPARE(window.Area()->subWindowList().size(), 1);
    QMdiSubWindow* sub = window.Area()->subWindowList().first();
    QCOMPARE(sub->windowTitle(), QString("1DGraph  1"));
    QCOMPARE(frame.Current()->Caption(), std::string("1DGraph  1"));

    // The form brings its own menu bar.
    QCOMPARE(Titles(window.menuBar()), (QStringList{"&File", "&Edit", "&View", "&Graph", "&Series", "&Transform",
                                                    "&Convolve", "&Analysis", "&Help"}));
    const QStringList formFile = Items(MenuTitled(window.menuBar(), "&File"));
    QVERIFY(formFile.contains("New &1 Dim"));
    QVERIFY(formFile.contains("&Close"));
    QVERIFY(formFile.contains("Save Form &As ... "));
    QMenu* edit = MenuTitled(window.menuBar(), "&Edit");
    QVERIFY(edit);
    QCOMPARE(Items(edit).first(), QString("&Points used"));

    // A second form cascades one step down and right.
    MenuTitled(window.menuBar(), "&File")->actions().first()->trigger();
    QCOMPARE(window.Area()->subWindowList().size(), 2);
    QCOMPARE(window.Area()->activeSubWindow()->windowTitle(), QString("1DGraph  2"));

    // Close through the form's own menu.
    for (QAction* a : MenuTitled(window.menuBar(), "&File")->actions())
      if (a->text() == "&Close") a->trigger();
    QTRY_COMPARE(window.Area()->subWindowList().size(), 1);
    QCOMPARE(frame.OpenForms().size(), size_t(1));
  }
};

QTEST_MAIN(FrameWindowTest)
#include "frame_window_test.moc"

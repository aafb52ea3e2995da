// The frame with a 1-D form in a real window on the X display, photographed
// from the screen. The picture is kept under build/screenshots/ to be looked at.
#include <QDir>
#include <QLineEdit>
#include <QImage>
#include <QMdiArea>
#include <QScreen>
#include <QSet>
#include <QtTest>

#include "kinds/form_kinds.h"
#include "app/frame.h"
#include "qt/main_window.h"
#include "qt/qt_services.h"

class ScreenshotTest : public QObject {
  Q_OBJECT
 private slots:
  void frameWithOneForm() {
    if (qEnvironmentVariableIsEmpty("DISPLAY")) QSKIP("no X display: run under xvfb-run");
    keldo::qt::QtPlatform platform(KELDO_SOURCE_DIR "/docs");
    keldo::Frame frame(platform.services(), KELDO_SOURCE_DIR);
    keldo::InstallFormKinds(frame);
    keldo::qt::MainWindow window(frame);
    window.resize(1000, 720);
    window.move(0, 0);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    frame.RunMenu("mnuNew1Dim");
    QTest::qWait(300);
    QScreen* screen = window.screen();
    QVERIFY(screen);
    const QImage shot = screen->grabWindow(window.winId()).toImage();
    QVERIFY(!shot.isNull());
    QDir().mkpath(KELDO_SCREENSHOT_DIR);
    QVERIFY(shot.save(KELDO_SCREENSHOT_DIR "/frame-1d.png"));
    // Not blank: many colours, and the desk, the white plot and dark text all present.
    QSet<QRgb> colours;
    for (int y = 0; y < shot.height(); y += 3)
      for (int x = 0; x < shot.width(); x += 3) colours.insert(shot.pixel(x, y) & 0xFFFFFF);
    QVERIFY2(colours.size() > 20, qPrintable(QString("only %1 colours").arg(colours.size())));
    QVERIFY(colours.contains(0xFFFFFF));

    // A graph typed in the formula box and plotted with Enter, as a person
    // would, then traced.
    keldo::Form* form = frame.Current();
    QVERIFY(form);
    form->RunMenu("mnuPlotGraph");
    QTest::qWait(100);
    auto* formula = window.findChild<QLineEdit*>("Formula");
    QVERIFY(formula);
    formula->setFocus();
    QTest::keyClicks(formula, "sin(2*pi*x)*exp(-x)");
    QTest::keyClick(formula, Qt::Key_Return);
    QTRY_COMPARE(form->Graphs().size(), size_t(1));
    form->RunMenu("mnuTrace");
    QTest::qWait(300);
    const QImage plotted = screen->grabWindow(window.winId()).toImage();
    QVERIFY(plotted.save(KELDO_SCREENSHOT_DIR "/frame-1d-plot.png"));
    int green = 0;
    for (int y = 0; y < plotted.height(); ++y)
      for (int x = 0; x < plotted.width(); ++x) green += (plotted.pixel(x, y) & 0xFFFFFF) == 0x00FF00;
    QVERIFY2(green > 200, qPrintable(QString("only %1 graph pixels").arg(green)));
  }

  // A 2-D form typed into as a person would: a formula plotted with Enter,
  // then the small and the large view in each colour method, photographed.
  void twoDimensionalViews() {
    if (qEnvironmentVariableIsEmpty("DISPLAY")) QSKIP("no X display: run under xvfb-run");
    keldo::qt::QtPlatform platform(KELDO_SOURCE_DIR "/docs");
    keldo::Frame frame(platform.services(), KELDO_SOURCE_DIR);
    keldo::InstallFormKinds(frame);
    keldo::qt::MainWindow window(frame);
    window.resize(1100, 800);
    window.move(0, 0);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    frame.RunMenu("mnuNew2Dim");
    QTest::qWait(200);
    keldo::Form* form = frame.Current();
    QVERIFY(form);
    form->RunMenu("mnu64");
    form->RunMenu("mnuPlot");
    QTest::qWait(100);
    auto* formula = window.findChild<QLineEdit*>("Formula");
    QVERIFY(formula);
    formula->setFocus();
    QTest::keyClicks(formula, "sin(6*x)*cos(4*y)");
    QTest::keyClick(formula, Qt::Key_Return);
    QTRY_COMPARE(form->Graphs().size(), size_t(1));
    QScreen* screen = window.screen();
    const struct {
      const char* option;
      const char* name;
    } methods[] = {{"optColor", "color"}, {"optGrey", "grey"}, {"opGreyPm", "greypm"}};
    for (const char* view : {"small", "large"}) {
      if (std::string(view) == "large") form->RunMenu("mnuLarge");
      for (const auto& m : methods) {
        form->RunMenu("mnuChangeGraphStyle");
        form->controls().SetFromUser(m.option, "1");
        form->Go();
        QTest::qWait(150);
        const QImage shot = screen->grabWindow(window.winId()).toImage();
        QVERIFY(shot.save(QString(KELDO_SCREENSHOT_DIR "/form2d-%1-%2.png").arg(view, m.name)));
        // The picture is drawn: red and blue in colour, greys otherwise.
        int red = 0, blue = 0, grey = 0;
        for (int y = 0; y < shot.height(); y += 2)
          for (int x = 0; x < shot.width(); x += 2) {
            const QRgb p = shot.pixel(x, y);
            red += qRed(p) > 100 && qGreen(p) == 0 && qBlue(p) == 0;
            blue += qBlue(p) > 100 && qGreen(p) == 0 && qRed(p) == 0;
            grey += qRed(p) > 60 && qRed(p) == qGreen(p) && qGreen(p) == qBlue(p) && qRed(p) < 230;
          }
        if (std::string(m.name) == "color") QVERIFY2(red > 300 && blue > 300, qPrintable(QString("%1 %2").arg(red).arg(blue)));
        else QVERIFY2(grey > 300, qPrintable(QString("grey %1").arg(grey)));
      }
    }
  }
};

QTEST_MAIN(ScreenshotTest)
#include "screenshot_test.moc"

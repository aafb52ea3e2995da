// The frame with a 1-D form in a real window on the X display, photographed
// from the screen. The picture is kept under build/screenshots/ to be looked at.
#include <QDir>
#include <QLineEdit>
#include <QImage>
#include <QMdiArea>
#include <QPlainTextEdit>
#include <QScreen>
#include <QSet>
#include <QtTest>

#include <algorithm>
#include <cmath>
#include <string>

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
  // then the small and the large view in each colour method, photographed,
  // and the photographed picture compared with the colours of the graph.
  // A multi-line box shows the form's "\r\n" line ends as lines, and
  // showing them leaves the form's text as it was.
  void multiLineBoxesLeaveTheirTextAlone() {
    if (qEnvironmentVariableIsEmpty("DISPLAY")) QSKIP("no X display: run under xvfb-run");
    keldo::qt::QtPlatform platform(KELDO_SOURCE_DIR "/docs");
    keldo::Frame frame(platform.services(), KELDO_SOURCE_DIR);
    keldo::InstallFormKinds(frame);
    keldo::qt::MainWindow window(frame);
    window.resize(1000, 720);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    frame.RunMenu("mnuNewImageProcessor");
    keldo::Form* form = frame.Current();
    QVERIFY(form);
    const std::string text = "Image: one\r\nSize: 2 x 2\r\n";
    form->controls().SetText("Report", text);
    auto* box = window.findChild<QPlainTextEdit*>("Report");
    QVERIFY(box);
    QTRY_COMPARE(box->toPlainText(), QString("Image: one\nSize: 2 x 2\n"));
    QTest::qWait(120);
    QCOMPARE(form->controls().Text("Report"), text);
  }

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
    QTest::keyClicks(formula, "x+y/4");
    QTest::keyClick(formula, Qt::Key_Return);
    QTRY_COMPARE(form->Graphs().size(), size_t(1));
    QWidget* plot = window.findChild<QWidget*>("GraphBox");
    QVERIFY(plot);
    QScreen* screen = window.screen();
    for (const char* view : {"small", "large"}) {
      const bool large = std::string(view) == "large";
      if (large) form->RunMenu("mnuLarge");
      for (const Method& m : kMethods) {
        form->RunMenu("mnuChangeGraphStyle");
        form->controls().SetFromUser(m.option, "1");
        form->controls().SetFromUser("optLinear", "1");
        form->Go();
        QTest::qWait(150);
        const QImage windowShot = screen->grabWindow(window.winId()).toImage();
        QVERIFY(windowShot.save(QString(KELDO_SCREENSHOT_DIR "/form2d-%1-%2.png").arg(view, m.name)));
        const QImage shot = windowShot.copy(QRect(plot->mapTo(&window, QPoint(0, 0)), plot->size()));
        QCOMPARE(shot.size(), plot->size());
        // Graph 1: the only picture of the large view, the upper left one
        // of the four small ones.
        const int cells = large ? 1 : 2;
        const int side = large ? 256 : 128;
        const QRect box = PictureBox(plot->size(), cells, side + 1);
        QVERIFY2(box.width() >= side + 1, qPrintable(QString("a picture of %1 pixels").arg(box.width())));
        const int zoom = box.width() / (side + 1);
        // Sample (i, j) fills picture pixels side/64 wide from column
        // j*side/64, and from line side - i*side/64 upwards: row 0 is the
        // bottom. Compared at that line and column.
        const int r = side / 64;
        int compared = 0, wrong = 0;
        QString first;
        for (int i = 2; i <= 62; i += 4)
          for (int j = 2; j <= 62; j += 4) {
            const QPoint at(box.left() + j * r * zoom + zoom / 2, box.top() + (side - i * r) * zoom + zoom / 2);
            const QRgb got = shot.pixel(at);
            const QRgb want = ExpectedColour(m.name, i, j);
            ++compared;
            if (!Near(got, want)) {
              if (wrong++ == 0)
                first = QString("sample (%1, %2) at (%3, %4): %5, expected %6")
                            .arg(i).arg(j).arg(at.x()).arg(at.y()).arg(got & 0xFFFFFF, 6, 16, QChar('0'))
                            .arg(want & 0xFFFFFF, 6, 16, QChar('0'));
            }
          }
        QCOMPARE(compared, 16 * 16);
        QVERIFY2(wrong == 0, qPrintable(QString("%1 %2: %3 of %4 samples differ; %5")
                                            .arg(view, m.name).arg(wrong).arg(compared).arg(first)));
      }
    }
  }

 private:
  struct Method {
    const char* option;
    const char* name;
  };
  static constexpr Method kMethods[] = {{"optColor", "color"}, {"optGrey", "grey"}, {"opGreyPm", "greypm"}};

  // Where the plot widget puts the first of `cells` by `cells` pictures of
  // `side` pixels: its cell less the margins of the labels (64 pixels on the
  // left, 10 above, 28 on the right, 24 below and 18 for the caption), in a
  // centred square of the largest whole multiple of the side that fits.
  static QRect PictureBox(QSize widget, int cells, int side) {
    const QRect cell(0, 0, widget.width() / cells, widget.height() / cells);
    const QRect room = cell.adjusted(64, 10, -28, -24 - 18);
    const int fit = std::min(room.width(), room.height());
    const int square = fit >= side ? fit / side * side : fit;
    return {room.left() + (room.width() - square) / 2, room.top() + (room.height() - square) / 2, square, square};
  }

  // The colour of sample (i, j) of x + y/4 at N = 64 on [-1/2, 1/2]^2, drawn
  // linearly with threshold 0: x = j/64 - 1/2, y = i/64 - 1/2, and the
  // largest magnitude is 5/8, at the corners. A magnitude a has the level
  // floor(256 a / (5/8)) up to 255; grey (+/-) has 128 plus or minus
  // floor(127 a / (5/8)).
  static QRgb ExpectedColour(const std::string& method, int i, int j) {
    const double v = (j - 32) / 64.0 + (i - 32) / 256.0;
    const double a = std::fabs(v);
    const int level = std::min(255, static_cast<int>(std::floor(256.0 * a / 0.625)));
    if (method == "color") return v > 0 ? qRgb(level, 0, 0) : v < 0 ? qRgb(0, 0, level) : qRgb(0, 0, 0);
    if (method == "grey") return v > 0 ? qRgb(level, level, level) : qRgb(0, 0, 0);
    const int half = std::min(127, static_cast<int>(std::floor(127.0 * a / 0.625)));
    const int g = v > 0 ? 128 + half : 128 - half;
    return qRgb(g, g, g);
  }

  // Each channel within 2 levels: the screen keeps 8 bits a channel.
  static bool Near(QRgb got, QRgb want) {
    return std::abs(qRed(got) - qRed(want)) <= 2 && std::abs(qGreen(got) - qGreen(want)) <= 2 &&
           std::abs(qBlue(got) - qBlue(want)) <= 2;
  }
};

QTEST_MAIN(ScreenshotTest)
#include "screenshot_test.moc"

// The frame's window and a 1-D form's window, on Qt's offscreen platform.
#include <QAction>
#include <QApplication>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QtTest>

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QLineEdit>
#include <QTemporaryDir>
#include <memory>

#include "kinds/form_kinds.h"
#include "app/frame.h"
#include "form1d/graph1_form.h"
#include "imageproc/image_processor_form.h"
#include "kit/focus.h"
#include "kit/typed_forms.h"
#include "qt/form_view.h"
#include "qt/main_window.h"
#include "platform/headless/simple_images.h"
#include "qt/qt_imaging.h"
#include "qt/qt_services.h"
#include "qt/qt_surface.h"

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

// Pixels of one colour in a picture.
int CountColour(const QImage& image, QRgb colour) {
  int n = 0;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x) n += (image.pixel(x, y) & 0xFFFFFF) == (colour & 0xFFFFFF);
  return n;
}

QStringList Items(QMenu* menu) {
  QStringList out;
  emit menu->aboutToShow();
  for (QAction* a : menu->actions())
    if (!a->isSeparator()) out << a->text();
  return out;
}

// A 64 by 64 PGM in `folder`, black with a white square over lines and
// places 8 to 23; its path, empty when it could not be written.
std::string WriteSquarePgm(const QTemporaryDir& folder) {
  std::string pgm = "P5\n64 64\n255\n";
  for (int x = 0; x < 64; ++x)
    for (int y = 0; y < 64; ++y) pgm += static_cast<char>(x >= 8 && x < 24 && y >= 8 && y < 24 ? 255 : 0);
  const std::string path = folder.filePath("square.pgm").toStdString();
  QFile file(QString::fromStdString(path));
  if (!file.open(QIODevice::WriteOnly) || file.write(pgm.data(), static_cast<qint64>(pgm.size())) !=
                                               static_cast<qint64>(pgm.size()))
    return {};
  return path;
}

// An image processor holding the square picture of WriteSquarePgm, shown
// in its own 1000 by 700 window.
struct ProcessorInWindow {
  keldo::qt::QtPlatform platform{KELDO_SOURCE_DIR "/docs"};
  keldo::Frame frame{platform.services(), KELDO_SOURCE_DIR};
  QTemporaryDir folder;
  keldo::imageproc::ImageProcessorForm* form = nullptr;
  std::unique_ptr<keldo::qt::FormView> view;
  QWidget* plot = nullptr;

  // False when any step fails.
  bool Open() {
    keldo::InstallFormKinds(frame);
    if (!folder.isValid()) return false;
    const std::string path = WriteSquarePgm(folder);
    int code = 0;
    form = keldo::NewFormOf<keldo::imageproc::ImageProcessorForm>(frame, code);
    if (path.empty() || !form || !form->LoadImageFile(path)) return false;
    view = std::make_unique<keldo::qt::FormView>(*form);
    view->resize(1000, 700);
    view->show();
    if (!QTest::qWaitForWindowExposed(view.get())) return false;
    plot = view->findChild<QWidget*>("GraphBox");
    return plot != nullptr;
  }
};

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

  // A printed form is its window: the sub-window drawn with its caption bar,
  // the plot's black paper inside; none for a form the window does not show.
  void printedFormIsTheWindow() {
    keldo::qt::QtPlatform platform(KELDO_SOURCE_DIR "/docs");
    keldo::Frame frame(platform.services(), KELDO_SOURCE_DIR);
    keldo::InstallFormKinds(frame);
    auto window = std::make_unique<keldo::qt::MainWindow>(frame);
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(window.get()));
    MenuTitled(window->menuBar(), "&File")->actions().first()->trigger();
    QMdiSubWindow* sub = window->Area()->subWindowList().first();
    keldo::Form& form = *frame.Current();
    const keldo::platform::RgbImage picture = frame.CaptureWindow(form);
    QCOMPARE(picture.width, sub->width());
    QCOMPARE(picture.height, sub->height());
    const QImage image = keldo::qt::ToQImage(picture);
    QVERIFY(CountColour(image, qRgb(0, 0, 0)) > picture.width * picture.height / 4);
    // The window gone, nothing is drawn.
    window.reset();
    QVERIFY(frame.CaptureWindow(form).Empty());
  }

  // A plot in each grid style, plot style and background, rendered as the
  // window shows it; the pictures land in build/screenshots/ to be looked at.
  void plotStylesRenderAsChosen() {
    keldo::qt::QtPlatform platform(KELDO_SOURCE_DIR "/docs");
    keldo::Frame frame(platform.services(), KELDO_SOURCE_DIR);
    keldo::InstallFormKinds(frame);
    QDir().mkpath(KELDO_SCREENSHOT_DIR);
    const QRgb paper = qRgb(0, 128, 128), green = qRgb(0, 255, 0);
    for (const char grid : {'G', 'X', 'B'}) {
      int dotsGreen = 0;
      for (const bool dots : {true, false}) {
        for (const bool white : {false, true}) {
          int code = 0;
          auto& f = *keldo::NewFormOf<keldo::form1d::Graph1Form>(frame, code);
          f.SetPoints(64);
          f.RunMenu("mnuPlotGraph");
          f.controls().SetText("Formula", "sin(2*pi*x)");
          f.Go();
          f.RunMenu("mnuDisplayStyle");
          f.controls().SetFromUser(grid == 'G' ? "OpDispStyle(0)" : grid == 'X' ? "OpDispStyle(1)" : "OpDispStyle(2)", "1");
          f.controls().SetFromUser(dots ? "OpDispStyle(4)" : "OpDispStyle(3)", "1");
          f.controls().SetFromUser(white ? "OpDispStyle(5)" : "OpDispStyle(6)", "1");
          f.Go();
          keldo::qt::FormView view(f);
          view.resize(760, 480);
          QImage image(view.size(), QImage::Format_RGB32);
          view.render(&image);
          const QString name = QString("plot-%1-%2-%3.png").arg(grid).arg(dots ? "dots" : "lines").arg(white ? "white" : "black");
          QVERIFY(image.save(QString(KELDO_SCREENSHOT_DIR) + "/" + name));
          // The plot's background fills most of the picture.
          QVERIFY2(CountColour(image, white ? qRgb(255, 255, 255) : qRgb(0, 0, 0)) > 100000, qPrintable(name));
          const int grids = CountColour(image, paper);
          if (grid == 'B') QCOMPARE(grids, 0);
          else QVERIFY2(grids > (grid == 'G' ? 1500 : 800), qPrintable(name + QString(" grid %1").arg(grids)));
          const int greens = CountColour(image, green);
          QVERIFY2(greens >= 60, qPrintable(name));
          if (dots) dotsGreen = greens;
          else QVERIFY2(greens > 3 * dotsGreen, qPrintable(name));
          frame.CloseForm(f);
          frame.CollectClosedForms();
        }
      }
    }
  }

  // Enter in the formula box plots; a click on the plot picks the sample.
  void formulaEnterAndPlotClick() {
    keldo::qt::QtPlatform platform(KELDO_SOURCE_DIR "/docs");
    keldo::Frame frame(platform.services(), KELDO_SOURCE_DIR);
    keldo::InstallFormKinds(frame);
    int code = 0;
    auto& f = *keldo::NewFormOf<keldo::form1d::Graph1Form>(frame, code);
    f.SetPoints(64);
    f.RunMenu("mnuPlotGraph");
    keldo::qt::FormView view(f);
    view.resize(760, 480);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    auto* formula = view.findChild<QLineEdit*>("Formula");
    QVERIFY(formula);
    formula->setFocus();
    QTest::keyClicks(formula, "x/2");
    QTest::keyClick(formula, Qt::Key_Return);
    QCOMPARE(f.GraphCount(), 1);
    QCOMPARE(f.History(), std::vector<std::string>{"x/2"});
    QWidget* plot = view.findChild<QWidget*>("GraphBox");
    QVERIFY(plot);
    // The plot box's right edge is the window's right end: the last sample.
    const QRect r = plot->rect().adjusted(64, 10, -28, -24);
    QTest::mouseClick(plot, Qt::LeftButton, {}, QPoint(r.right() + 1, r.center().y()));
    QCOMPARE(f.TracePosition(), 64);
    QTest::mouseClick(plot, Qt::LeftButton, {}, QPoint(r.left() + r.width() / 2, r.center().y()));
    QCOMPARE(f.TracePosition(), 32);
  }

  // The image processor's pictures: fitted to their cells at first, then
  // with Ctrl+1 one screen pixel to a picture pixel, and zoomed with Ctrl++
  // and Ctrl+-; Ctrl+0 fits them again.
  void imagePicturesZoomFromActualSize() {
    ProcessorInWindow window;
    QVERIFY(window.Open());
    QWidget* plot = window.plot;
    const auto white = [plot] { return CountColour(plot->grab().toImage(), qRgb(255, 255, 255)); };
    const int fitted = white();
    QVERIFY(fitted >= 256);
    QCOMPARE(fitted % 256, 0);
    plot->setFocus();
    QTest::keyClick(plot, Qt::Key_1, Qt::ControlModifier);
    QCOMPARE(white(), 16 * 16);
    QTest::keyClick(plot, Qt::Key_Plus, Qt::ControlModifier);
    QCOMPARE(white(), 32 * 32);
    QTest::keyClick(plot, Qt::Key_Minus, Qt::ControlModifier);
    QTest::keyClick(plot, Qt::Key_Minus, Qt::ControlModifier);
    QCOMPARE(white(), 8 * 8);
    QTest::keyClick(plot, Qt::Key_0, Qt::ControlModifier);
    QCOMPARE(white(), fitted);
  }

  // A drag on the image processor's left picture marks the region of
  // interest in the picture's pixels: x down the picture, y across it, as
  // keldo-run's mouse X Y. The band shows during the drag and stays after.
  void imageProcessorDragMarksTheRegion() {
    ProcessorInWindow window;
    QVERIFY(window.Open());
    keldo::imageproc::ImageProcessorForm& form = *window.form;
    QWidget* plot = window.plot;
    plot->setFocus();
    QTest::keyClick(plot, Qt::Key_1, Qt::ControlModifier);  // one screen pixel a picture pixel
    // The white square's top left corner is the picture's pixel (8, 8).
    const QImage before = plot->grab().toImage();
    int top = -1, left = -1;
    for (int r = 0; r < before.height() && top < 0; ++r)
      for (int c = 0; c < before.width(); ++c)
        if ((before.pixel(c, r) & 0xFFFFFF) == 0xFFFFFF) {
          top = r - 8;
          left = c - 8;
          break;
        }
    QVERIFY(top >= 0 && left >= 0);
    const QRgb band = qRgb(255, 255, 48);
    QCOMPARE(CountColour(before, band), 0);
    // From x 20, y 30 to x 5, y 10: across is y, down is x.
    QTest::mousePress(plot, Qt::LeftButton, {}, QPoint(left + 30, top + 20));
    QTest::mouseMove(plot, QPoint(left + 12, top + 9));
    QVERIFY(CountColour(plot->grab().toImage(), band) > 0);
    QTest::mouseRelease(plot, Qt::LeftButton, {}, QPoint(left + 10, top + 5));
    QVERIFY(form.Region().has_value());
    QCOMPARE(form.Region()->x1, 5);
    QCOMPARE(form.Region()->y1, 10);
    QCOMPARE(form.Region()->x2, 20);
    QCOMPARE(form.Region()->y2, 30);
    QVERIFY(CountColour(plot->grab().toImage(), band) > 0);
    // A click clears it.
    QTest::mouseClick(plot, Qt::LeftButton, {}, QPoint(left + 40, top + 40));
    QVERIFY(!form.Region().has_value());
    QCOMPARE(CountColour(plot->grab().toImage(), band), 0);
  }

  // A form's focus request moves the keyboard to the box it names, its
  // text selected, once: a box clicked afterwards keeps the focus.
  void focusRequestsMoveTheKeyboard() {
    keldo::qt::QtPlatform platform(KELDO_SOURCE_DIR "/docs");
    keldo::Frame frame(platform.services(), KELDO_SOURCE_DIR);
    keldo::InstallFormKinds(frame);
    int code = 0;
    auto& form = *keldo::NewFormOf<keldo::imageproc::ImageProcessorForm>(frame, code);
    keldo::qt::FormView view(form);
    view.resize(1000, 700);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    view.activateWindow();
    QApplication::setActiveWindow(&view);
    auto* rate = view.findChild<QLineEdit*>("txtBitRate");
    auto* levels = view.findChild<QLineEdit*>("txtLevels");
    QVERIFY(rate);
    QVERIFY(levels);
    keldo::RequestFocus(form.controls(), "txtBitRate");
    view.Sync();
    QTRY_VERIFY(rate->hasFocus());
    QCOMPARE(rate->selectedText(), rate->text());
    levels->setFocus();
    form.controls().SetText("txtLevels", "4");
    view.Sync();
    QVERIFY(levels->hasFocus());
    keldo::RequestFocus(form.controls(), "txtBitRate");
    view.Sync();
    QTRY_VERIFY(rate->hasFocus());
  }

  // A bitmap or a JPEG cut short is refused, not read in part: the plugins
  // fill what is missing and report success.
  void imagingRefusesPicturesCutShort() {
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const auto write = [&](const QString& name, const QByteArray& bytes) {
      QFile file(dir.filePath(name));
      QVERIFY(file.open(QIODevice::WriteOnly));
      QCOMPARE(file.write(bytes), bytes.size());
    };
    const auto path = [&](const QString& name) { return dir.filePath(name).toStdString(); };
    keldo::platform::RgbImage ramp(64, 64);
    for (int y = 0; y < 64; ++y)
      for (int x = 0; x < 64; ++x) ramp.Set(x, y, keldo::platform::MakeRgb(4 * x, 4 * x, 4 * y));
    // A 24-bit bitmap: 54 bytes of headers and 64 rows of 192 bytes.
    const std::string bmp = keldo::platform::EncodeBmp(ramp);
    QCOMPARE(bmp.size(), std::size_t{54 + 64 * 192});
    write("whole.bmp", QByteArray(bmp.data(), static_cast<qsizetype>(bmp.size())));
    write("cut.bmp", QByteArray(bmp.data(), static_cast<qsizetype>(bmp.size() - 1)));
    write("half.bmp", QByteArray(bmp.data(), static_cast<qsizetype>(54 + 32 * 192)));
    keldo::qt::QtImaging imaging;
    QVERIFY(imaging.Load(path("whole.bmp")).has_value());
    QVERIFY(!imaging.Load(path("cut.bmp")));
    QVERIFY(!imaging.Load(path("half.bmp")));
    // A JPEG ends with the marker FF D9.
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QImage picture(64, 64, QImage::Format_RGB32);
    for (int y = 0; y < 64; ++y)
      for (int x = 0; x < 64; ++x) picture.setPixel(x, y, qRgb(4 * x, 4 * x, 4 * y));
    QVERIFY(picture.save(&buffer, "JPG"));
    const QByteArray jpeg = buffer.data();
    QVERIFY(jpeg.endsWith("\xFF\xD9"));
    write("whole.jpg", jpeg);
    write("padded.jpg", jpeg + QByteArray(16, '\0'));
    write("cut.jpg", jpeg.left(jpeg.size() - 20));
    write("noend.jpg", jpeg.left(jpeg.size() - 2));
    QVERIFY(imaging.Load(path("whole.jpg")).has_value());
    QVERIFY(imaging.Load(path("padded.jpg")).has_value());  // bytes after the end marker
    QVERIFY(!imaging.Load(path("cut.jpg")));
    QVERIFY(!imaging.Load(path("noend.jpg")));
  }

  // A picture whose format tells its size only by decoding is still held to
  // the side cap; a picture of the program's own loads as it was written.
  void imagingHoldsTheSideCapAfterDecoding() {
    keldo::qt::QtImaging imaging;
    QVERIFY(!imaging.Load(KELDO_SOURCE_DIR "/tests/data/form2d/tall-after-decoding.bmp"));
    // 38 bytes that claim a canvas beyond the decoding limit: refused before
    // any buffer is filled.
    QVERIFY(!imaging.Load(KELDO_SOURCE_DIR "/tests/data/form2d/huge-canvas.gif"));
    // A 32-byte file that decodes to 9985 by 2560 pixels: read line by line,
    // colours without their alpha byte.
    const auto wide = imaging.Load(KELDO_SOURCE_DIR "/tests/data/form2d/wide-after-decoding.gif");
    QVERIFY(wide.has_value());
    QCOMPARE(wide->width, 9985);
    QCOMPARE(wide->height, 2560);
    QCOMPARE(wide->pixels.size(), std::size_t{9985} * 2560);
    bool opaqueBytes = false;
    for (const keldo::platform::Rgb p : wide->pixels) opaqueBytes = opaqueBytes || (p >> 24) != 0;
    QVERIFY(!opaqueBytes);
    const auto rings = imaging.Load(KELDO_SOURCE_DIR "/examples/rings.png");
    QVERIFY(rings.has_value());
    QCOMPARE(rings->width, 256);
    QCOMPARE(rings->height, 256);
    // The rings' centre is light grey, the same level in each colour.
    const keldo::platform::Rgb centre = rings->At(128, 128);
    QCOMPARE(centre >> 24, 0u);
    QCOMPARE((centre >> 16) & 0xFF, centre & 0xFF);
  }
};

QTEST_MAIN(FrameWindowTest)
#include "frame_window_test.moc"

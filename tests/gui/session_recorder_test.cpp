// A session in the real window, recorded as a script and replayed by the
// runner on headless forms: the replay's dumps are the live forms' dumps.
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QFileDialog>
#include <QInputDialog>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "app/frame.h"
#include "kinds/form_kinds.h"
#include "kit/form.h"
#include "platform/headless/headless_services.h"
#include "qt/form_view.h"
#include "qt/main_window.h"
#include "qt/plot_widget.h"
#include "qt/qt_imaging.h"
#include "qt/qt_services.h"
#include "qt/session_recorder.h"
#include "script/dump.h"
#include "script/runner.h"
#include "script/script_parser.h"

namespace {

using keldo::qt::SessionRecorder;

std::string ReadAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

int CountLines(const std::string& text, const std::string& start) {
  int n = 0;
  for (const std::string& line : keldo::script::SplitLines(text)) n += line.rfind(start, 0) == 0;
  return n;
}

// Every created form's dump, in the order of creation; messages and the
// clipboard left out (the desktop program shows them in boxes).
std::vector<std::string> Dumps(keldo::Frame& frame) {
  std::vector<std::string> out;
  for (keldo::Form* form : frame.CreatedForms())
    out.push_back(form ? keldo::script::DumpJson(frame, form, {}, "") : std::string("closed"));
  return out;
}

// The script run by the runner on a fresh headless frame; the dumps of its forms.
std::vector<std::string> Replay(const std::string& script, int& status, std::string& errors) {
  keldo::script::Runner* runner = nullptr;
  keldo::platform::HeadlessPlatform platform(
      [&runner](const std::string& line) {
        if (runner) runner->Print(line);
      },
      KELDO_SOURCE_DIR "/docs");
  keldo::qt::QtImaging imaging;
  platform.services().imaging = &imaging;
  keldo::Frame frame(platform.services(), KELDO_SOURCE_DIR);
  keldo::InstallFormKinds(frame);
  std::ostringstream out, err;
  keldo::script::Runner run(frame, platform, out, err);
  runner = &run;
  status = run.Run(script, {});
  errors = err.str();
  return Dumps(frame);
}

// The action of the active menu bar whose control is `name`.
QAction* MenuAction(QMenuBar* bar, const QString& name) {
  std::vector<QMenu*> menus;
  for (QAction* a : bar->actions())
    if (a->menu()) menus.push_back(a->menu());
  while (!menus.empty()) {
    QMenu* menu = menus.back();
    menus.pop_back();
    for (QAction* a : menu->actions()) {
      if (a->menu()) menus.push_back(a->menu());
      else if (a->data().toString() == name) return a;
    }
  }
  return nullptr;
}

// A 32 by 32 grey picture with a bright square, as a binary PGM.
void WritePicture(const std::string& path) {
  std::string pgm = "P5\n32 32\n255\n";
  for (int y = 0; y < 32; ++y)
    for (int x = 0; x < 32; ++x) pgm += static_cast<char>(x >= 6 && x < 18 && y >= 10 && y < 22 ? 230 : 40 + x);
  std::ofstream(path, std::ios::binary) << pgm;
}

// Drives the real window: menus by their control names, typing into boxes,
// pressing buttons and the plot; dialogs are answered as a person would.
class Session {
 public:
  Session(keldo::Frame& frame, keldo::qt::MainWindow& window) : frame_(frame), window_(window) {
    // A modal box opened by a command is answered from the queue (a file
    // dialog) or closed (a message).
    QObject::connect(&answerer_, &QTimer::timeout, [this] { AnswerModal(); });
    answerer_.start(20);
  }
  void QueueFile(const std::string& path) { files_.push_back(path); }
  // The item the next pop-up menu is answered with.
  void QueuePopup(const QString& item) { popupItem_ = item; }
  bool RightClickPlot(double fx, double fy) {
    QWidget* plot = View() ? View()->findChild<QWidget*>("GraphBox") : nullptr;
    if (!plot) return false;
    const QPoint at(static_cast<int>(plot->width() * fx), static_cast<int>(plot->height() * fy));
    QTest::mousePress(plot, Qt::RightButton, {}, at);
    QTest::mouseRelease(plot, Qt::RightButton, {}, at);
    return true;
  }

  // A click on a form's window makes it the active one.
  void Activate(keldo::Form* form) {
    if (keldo::qt::FormView* view = window_.ViewOf(*form))
      window_.Area()->setActiveSubWindow(qobject_cast<QMdiSubWindow*>(view->parentWidget()));
  }
  bool Menu(const QString& name) {
    QAction* action = MenuAction(window_.menuBar(), name);
    if (!action) return false;
    action->trigger();
    return true;
  }
  keldo::qt::FormView* View() { return frame_.Current() ? window_.ViewOf(*frame_.Current()) : nullptr; }
  bool Type(const QString& field, const QString& text, bool enter) {
    auto* box = View() ? View()->findChild<QLineEdit*>(field) : nullptr;
    if (!box) return false;
    box->setFocus();
    box->selectAll();
    QTest::keyClicks(box, text);
    if (enter) QTest::keyClick(box, Qt::Key_Return);
    return true;
  }
  bool Press(const QString& button) {
    auto* push = View() ? View()->findChild<QPushButton*>(button) : nullptr;
    if (!push) return false;
    QTest::mouseClick(push, Qt::LeftButton);
    return true;
  }
  // Another item of a list, chosen as a person would; its text.
  QString Choose(const QString& list) {
    auto* box = View() ? View()->findChild<QComboBox*>(list) : nullptr;
    if (!box || box->count() < 2) return {};
    const int item = box->currentIndex() == 0 ? box->count() - 1 : 0;
    box->setCurrentIndex(item);
    emit box->activated(item);
    return box->currentText();
  }
  // A drag on the plot from one place to another, in fractions of its size.
  bool DragPlot(double fx0, double fy0, double fx1, double fy1) {
    QWidget* plot = View() ? View()->findChild<QWidget*>("GraphBox") : nullptr;
    if (!plot) return false;
    const auto at = [plot](double fx, double fy) {
      return QPoint(static_cast<int>(plot->width() * fx), static_cast<int>(plot->height() * fy));
    };
    QTest::mousePress(plot, Qt::LeftButton, {}, at(fx0, fy0));
    QMouseEvent move(QEvent::MouseMove, QPointF(at(fx1, fy1)), plot->mapToGlobal(QPointF(at(fx1, fy1))),
                     Qt::NoButton, Qt::LeftButton, {});
    QApplication::sendEvent(plot, &move);
    QTest::mouseRelease(plot, Qt::LeftButton, {}, at(fx1, fy1));
    return true;
  }
  keldo::qt::PlotWidget* Plot() {
    return View() ? View()->findChild<keldo::qt::PlotWidget*>("GraphBox") : nullptr;
  }
  // A right click on the middle of picture k.
  bool RightClickPicture(int k) {
    keldo::qt::PlotWidget* plot = Plot();
    if (!plot || plot->PictureRect(k).isEmpty()) return false;
    const QPoint at = plot->PictureRect(k).center();
    QTest::mousePress(plot, Qt::RightButton, {}, at);
    QTest::mouseRelease(plot, Qt::RightButton, {}, at);
    return true;
  }
  // A double click on picture k's caption.
  bool DoubleClickCaption(int k) {
    keldo::qt::PlotWidget* plot = Plot();
    if (!plot || plot->CaptionRect(k).isEmpty()) return false;
    QTest::mouseDClick(plot, Qt::LeftButton, {}, plot->CaptionRect(k).center());
    return true;
  }
  // The text the next input box is answered with.
  void QueueAnswer(const QString& text) { answers_.push_back(text); }
  bool ClickPlot(double fx, double fy) {
    QWidget* plot = View() ? View()->findChild<QWidget*>("GraphBox") : nullptr;
    if (!plot) return false;
    const QPoint at(static_cast<int>(plot->width() * fx), static_cast<int>(plot->height() * fy));
    QTest::mousePress(plot, Qt::LeftButton, {}, at);
    QTest::mouseRelease(plot, Qt::LeftButton, {}, at);
    return true;
  }

 private:
  void AnswerModal() {
    if (auto* popup = qobject_cast<QMenu*>(QApplication::activePopupWidget())) {
      for (QAction* a : popup->actions())
        if (!popupItem_.isEmpty() && a->data().toString() == popupItem_) a->trigger();
      popupItem_.clear();
      popup->close();
      return;
    }
    QWidget* modal = QApplication::activeModalWidget();
    if (auto* dialog = qobject_cast<QFileDialog*>(modal)) {
      if (files_.empty()) {
        dialog->reject();
        return;
      }
      // The whole path typed into the name box, as a person may: the
      // dialog's own selection follows its folder view, which a thread of
      // its own fills, sometimes too late.
      const QString path = QString::fromStdString(files_.front());
      files_.erase(files_.begin());
      if (auto* name = dialog->findChild<QLineEdit*>("fileNameEdit")) name->setText(path);
      else dialog->selectFile(path);
      QMetaObject::invokeMethod(dialog, "accept");
    } else if (auto* box = qobject_cast<QMessageBox*>(modal)) {
      box->accept();
    } else if (auto* input = qobject_cast<QInputDialog*>(modal)) {
      if (answers_.empty()) {
        input->reject();
        return;
      }
      input->setTextValue(answers_.front());
      answers_.erase(answers_.begin());
      input->accept();
    }
  }

  keldo::Frame& frame_;
  keldo::qt::MainWindow& window_;
  QTimer answerer_;
  std::vector<std::string> files_;
  std::vector<QString> answers_;
  QString popupItem_;
};

}  // namespace

class SessionRecorderTest : public QObject {
  Q_OBJECT
 private slots:
  // Words come back from the parser as they were; numbers to the same double.
  void wordsAndNumbersReadBack() {
    for (const std::string word : {"plain", "sin(2*pi*x)", "two words", "a \"quote\"", "", "#hash", "tab\there"}) {
      const auto parsed = keldo::script::ParseLine("set Formula " + SessionRecorder::Quote(word));
      QVERIFY(parsed.error.empty());
      QCOMPARE(parsed.words.size(), size_t(3));
      QCOMPARE(parsed.words[2], word);
    }
    for (const double value : {0.1, -1.0 / 3.0, 1e-300, 123456789.125, 0.0}) {
      const std::string text = SessionRecorder::Number(value);
      QCOMPARE(std::stod(text), value);
    }
  }

  // The lines in the order the runner wants them: typing written once when
  // the next action comes, answers before the command that asked, an action
  // met during a long command after that command's line, `form N` before a
  // line for another form than the script's current one, `wait` after timers
  // and before a pointer action that came after a command that yielded.
  void linesComeInTheRunnersOrder() {
    QTemporaryDir folder;
    QVERIFY(folder.isValid());
    const std::string path = folder.filePath("order.ksc").toStdString();
    keldo::qt::QtPlatform platform(KELDO_SOURCE_DIR "/docs");
    keldo::Frame frame(platform.services(), KELDO_SOURCE_DIR);
    keldo::InstallFormKinds(frame);
    int code = 0;
    QVERIFY(frame.NewForm(keldo::FormKind::Graph1, code));
    keldo::Form* first = frame.Current();
    {
      SessionRecorder recorder(frame, path);
      QVERIFY(frame.NewForm(keldo::FormKind::Graph2, code));
      keldo::Form* second = frame.Current();
      // The person clicks on the first window, and later on the second.
      frame.SetCurrent(first);
      recorder.FieldTyped(*first, "Formula", "x");
      recorder.FieldTyped(*first, "Formula", "x * 2");
      recorder.Begin(first, "menu mnuOpenSave(0)");
      recorder.FileAnswered(std::string("my graphs.kd1"));
      recorder.InputAnswered(std::string("yes"));
      recorder.End();
      recorder.Begin(first, "go");
      recorder.Yielded();
      recorder.Begin(first, "click GoButton(0)");
      recorder.End();
      recorder.FileAnswered(std::nullopt);
      recorder.End();
      // A press after the command that yielded has ended: `wait` first, once.
      recorder.Begin(first, "mouse down 1 2 left");
      recorder.End();
      recorder.Begin(first, "mouse up 1 2");
      recorder.End();
      frame.SetCurrent(second);
      recorder.Begin(second, "menu mnuPlot");
      recorder.End();
      recorder.TimerTicked();
      recorder.FieldTyped(*second, "Formula", "y");
      recorder.FieldCommitted(*second, "Formula");
      recorder.Begin(nullptr, "menu mnuNew1Dim");
      recorder.End();
    }
    const std::string written = ReadAll(path);
    QCOMPARE(written, std::string("set Formula \"x * 2\"\n"
                                        "file \"my graphs.kd1\"\n"
                                        "answer yes\n"
                                        "menu mnuOpenSave(0)\n"
                                        "go\n"
                                        "click GoButton(0)\n"
                                        "file cancel\n"
                                        "wait\n"
                                        "mouse down 1 2 left\n"
                                        "mouse up 1 2\n"
                                        "form 2\n"
                                        "menu mnuPlot\n"
                                        "wait\n"
                                        "set Formula y\n"
                                        "menu mnuNew1Dim\n"));
  }

  // A recording that cannot be written is said once and the session goes on.
  void unwritableRecordingLeavesTheSessionAlone() {
    keldo::qt::QtPlatform platform(KELDO_SOURCE_DIR "/docs");
    keldo::Frame frame(platform.services(), KELDO_SOURCE_DIR);
    keldo::InstallFormKinds(frame);
    SessionRecorder recorder(frame, "/nonexistent-folder/session.ksc");
    QVERIFY(!recorder.Recording());
    keldo::qt::MainWindow window(frame);
    window.show();
    Session session(frame, window);
    QVERIFY(session.Menu("mnuNew1Dim"));
    QVERIFY(session.Menu("mnuPlotGraph"));
    QVERIFY(session.Type("Formula", "x*x", true));
    QCOMPARE(frame.OpenForms().size(), size_t(1));
    QVERIFY(keldo::script::DumpJson(frame, frame.Current(), {}, "").find("\"x*x\"") != std::string::npos);
  }

  // The two graph forms, a spectrogram made from a graph and the image
  // processor compressing a picture from the file dialog: recorded, then
  // replayed, whole and cut off after the one-dimensional part.
  void recordedSessionReplaysToTheSameForms() {
    QTemporaryDir folder;
    QVERIFY(folder.isValid());
    const std::string record = folder.filePath("session.ksc").toStdString();
    const std::string picture = folder.filePath("square.pgm").toStdString();
    const std::string coded = folder.filePath("square.awe").toStdString();
    WritePicture(picture);

    keldo::qt::QtPlatform platform(KELDO_SOURCE_DIR "/docs");
    keldo::Frame frame(platform.services(), KELDO_SOURCE_DIR);
    keldo::InstallFormKinds(frame);
    SessionRecorder recorder(frame, record);
    QVERIFY(recorder.Recording());
    keldo::qt::MainWindow window(frame);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    platform.SetParent(&window);
    Session session(frame, window);

    // 1-D: a formula typed and plotted, its Fourier transform.
    QVERIFY(session.Menu("mnuNew1Dim"));
    QVERIFY(session.Menu("mnuPlotGraph"));
    QVERIFY(session.Type("Formula", "sin(2*pi*(20+60*(x+.5))*(x+.5))", true));
    QVERIFY(session.Menu("mnuFourierTransform"));
    QVERIFY(session.Type("TxtGraphStat", "1", true));
    // The file as it stands now, and the forms it stands for.
    const std::string cut = ReadAll(record);
    const std::vector<std::string> cutDumps = Dumps(frame);

    // The spectrogram of graph 1, its step typed and computed again.
    QVERIFY(session.Menu("mnuSpectrogram"));
    QVERIFY(session.Type("TxtGraphStat", "1", true));
    keldo::Form* spectrogram = frame.Current();
    QVERIFY(spectrogram && spectrogram->Kind() == keldo::FormKind::Spectrogram);
    const QString filter = session.Choose("SpecFilter");
    QVERIFY(!filter.isEmpty());
    QVERIFY(session.Type("SpSetting(1)", "8", true));

    // 2-D, from the 1-D form's File menu (the spectrogram has no New):
    // a formula plotted, the large view, a press on the plot.
    keldo::Form* graph1 = frame.CreatedForms().front();
    session.Activate(graph1);
    // The 1-D plot's pop-up menu: its magnitudes sorted.
    session.QueuePopup("mnuArrangeDecrMag");
    QVERIFY(session.RightClickPlot(0.5, 0.5));
    QVERIFY(session.Menu("mnuNew(1)"));
    QVERIFY(session.Menu("mnuPlot"));
    QVERIFY(session.Type("Formula", "sin(6*x)*cos(4*y)", true));
    // A second graph; the first is deleted through the pop-up menu of its
    // small picture (not the current graph's), once the plot has ended.
    QVERIFY(session.Type("Formula", "x*y", true));
    session.QueuePopup("mnuDeleteGraph");
    QVERIFY(session.RightClickPicture(0));
    QVERIFY(session.Menu("mnuLarge"));
    QVERIFY(session.ClickPlot(0.45, 0.4));
    // The large picture's caption, changed by a double click on it.
    session.QueueAnswer("Waves");
    QVERIFY(session.DoubleClickCaption(0));

    // The image processor: a picture through the file dialog, compressed.
    QVERIFY(session.Menu("mnuNew(3)"));
    session.QueueFile(picture);
    QVERIFY(session.Menu("mnuGetImage"));
    QVERIFY(session.Menu("mnuCompress"));
    QVERIFY(session.Type("txtBitRate", "0.5", false));
    session.QueueFile(coded);
    QVERIFY(session.Press("cmdBegin"));
    // A region of interest dragged on the left picture.
    QVERIFY(session.DragPlot(0.12, 0.3, 0.3, 0.55));

    // Back to the spectrogram's window: its threshold box, by a click on
    // its window and a menu.
    session.Activate(spectrogram);
    QCOMPARE(frame.Current(), spectrogram);
    const auto& created = frame.CreatedForms();
    const auto number = std::find(created.begin(), created.end(), spectrogram) - created.begin() + 1;
    QVERIFY(session.Menu("mnuThreshold"));
    QVERIFY(session.Type("txtThreshold", "3", true));
    // The 1-D form's window closed by its title bar.
    qobject_cast<QMdiSubWindow*>(window.ViewOf(*graph1)->parentWidget())->close();
    QCOMPARE(frame.CreatedForms().front(), nullptr);

    const std::string script = ReadAll(record);
    const std::vector<std::string> live = Dumps(frame);
    QVERIFY(live.size() >= 4);
    QCOMPARE(live.front(), std::string("closed"));
    QVERIFY2(script.find("form 1\nmenu mnuClose\n") != std::string::npos, script.c_str());
    // What the person did is in the file in the runner's words.
    QVERIFY2(script.find("file " + picture + "\nmenu mnuGetImage\n") != std::string::npos, script.c_str());
    QVERIFY2(script.find("set txtBitRate 0.5\nfile " + coded + "\nclick cmdBegin\n") != std::string::npos,
             script.c_str());
    QVERIFY2(script.find("set Formula sin(6*x)*cos(4*y)\nclick GoButton(1)\n") != std::string::npos, script.c_str());
    QVERIFY2(script.find("form " + std::to_string(number) + "\nmenu mnuThreshold\n") != std::string::npos, script.c_str());
    QVERIFY2(script.find("set SpecFilter " + SessionRecorder::Quote(filter.toStdString()) + "\n") !=
                 std::string::npos, script.c_str());
    QVERIFY2(script.find(" right @0\npopup mnuDeleteGraph\nmouse up ") != std::string::npos, script.c_str());
    // The plot let events run while it worked: the press that came after it
    // waits for it to end in the replay too.
    QVERIFY2(script.find("set Formula x*y\nclick GoButton(1)\nwait\nmouse down ") != std::string::npos,
             script.c_str());
    QVERIFY2(script.find("answer Waves\ncaption 0\n") != std::string::npos, script.c_str());
    QCOMPARE(CountLines(script, "mouse down "), 4);
    QCOMPARE(CountLines(script, "mouse move "), 1);
    QCOMPARE(CountLines(script, "mouse up "), 4);
    QVERIFY2(script.find(" right\npopup mnuArrangeDecrMag\nmouse up ") != std::string::npos, script.c_str());

    int status = -1;
    std::string errors;
    const std::vector<std::string> replayed = Replay(script, status, errors);
    QVERIFY2(status == 0, errors.c_str());
    QCOMPARE(replayed.size(), live.size());
    for (std::size_t k = 0; k < live.size(); ++k) QVERIFY2(replayed[k] == live[k], qPrintable(QString::number(k)));

    // The recording as it stood after the 1-D part replays to that point.
    QVERIFY(!cut.empty() && cut.back() == '\n');
    QVERIFY(cut.size() < script.size());
    const std::vector<std::string> partly = Replay(cut, status, errors);
    QVERIFY2(status == 0, errors.c_str());
    QVERIFY(partly == cutDumps);
  }
};

QTEST_MAIN(SessionRecorderTest)
#include "session_recorder_test.moc"

// The Qt windows on the offscreen platform: pixels of a painted frame, keys
// that move a ball where the view model says, the three panes, the key
// mapping and the prompt dialogs.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <sstream>
#include <utility>

#include <QAbstractButton>
#include <QApplication>
#include <QFileDialog>
#include <QMenuBar>
#include <QMimeData>
#include <QSettings>
#include <QUrl>
#include <QElapsedTimer>
#include <QDockWidget>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollBar>
#include <QTimer>

#include "viewer/commands.h"
#include "viewer/scene.h"
#include "viewer/vibration.h"
#include "viewer/view_model.h"
#include "viewer_qt/paint.h"
#include "viewer_qt/plots.h"
#include "viewer_qt/qt_viewer.h"
#include "viewer_qt/results_dock.h"
#include "viewer_qt/session_menu.h"
#include "viewer_qt/table_dialog.h"
#include "viewer_qt/windows.h"
#include "app/run.h"
#include "test_support.h"
#include "viewer_support.h"

using namespace quintor;
using namespace quintor::test;

namespace {

// C at the origin, O above it, H to the left: a ball of each colour; and
// an N alone, far off, that no stick crosses.
void Formaldehydeish(Session& s) {
  HandMolecule(s, {{6, "C", {0, 0, 0}}, {8, "O", {0, 2.3, 0}}, {1, "H", {-2.0, 0, 0}}, {7, "N", {5, -5, 0}}});
}

struct Frame {
  Session s;
  ViewerState v;
  ScriptedPrompts prompts;
  Frame() {
    EnsureQtApplication(true);
    Formaldehydeish(s);
    v.window = {800, 800};  // 40 pixels a bohr
    StartViewer(s, v);
    LoadCoordinateSet(s, v);
  }
  Rgb At(const QImage& image, double px, double py) const {
    const QColor c = image.pixelColor(static_cast<int>(px), static_cast<int>(py));
    return {c.red(), c.green(), c.blue()};
  }
  // The pixel of atom a's centre by the view model alone.
  Pixel Centre(int a) const {
    const Vec3 p = ScreenCoords(s.view, s.xyz[a - 1]);
    const double f = PerspectiveFactor(s.view, p[2]);
    return WorldToWindow(v.window, p[0] * f, p[1] * f);
  }
};

}  // namespace

TEST(ViewerQt, BackgroundAndBallColoursAtTheirCentres) {
  Frame f;
  const QImage image = RenderView(f.s, f.v);
  ASSERT_EQ(image.width(), 800);
  EXPECT_EQ(f.At(image, 790, 790), BackgroundColour);
  EXPECT_EQ(f.At(image, 10, 700), (Rgb{0, 0, 128}));
  struct Case {
    int atom;
    Rgb colour;
  };
  for (const Case& c : {Case{1, {0, 255, 255}}, Case{2, {255, 0, 0}}, Case{3, {255, 255, 255}}}) {
    const Pixel p = f.Centre(c.atom);
    EXPECT_EQ(f.At(image, p.x, p.y), c.colour) << c.atom;
  }
}

TEST(ViewerQt, ZoomAndTurnByKeysMoveTheBallWhereTheViewModelSays) {
  struct Case {
    std::vector<Key> keys;
  };
  const Case cases[] = {
      {{Plain('+'), Plain('+'), Plain('+')}},
      {{Extended(ext_key::End), Extended(ext_key::End), Extended(ext_key::End)}},
      {{Plain('8'), Plain('8'), Plain('3'), Plain('r')}},
      {{Plain('p'), Extended(ext_key::Left), Extended(ext_key::Left)}},
  };
  for (const Case& c : cases) {
    Frame f;
    const Pixel before = f.Centre(4);
    for (Key k : c.keys) DispatchKey(f.s, f.v, k, f.prompts);
    const QImage image = RenderView(f.s, f.v);
    const Pixel after = f.Centre(4);
    EXPECT_GT(std::hypot(after.x - before.x, after.y - before.y), 16.0);  // moved by more than its diameter
    EXPECT_EQ(f.At(image, after.x, after.y), ElementColour(7));
    EXPECT_EQ(f.At(image, before.x, before.y), BackgroundColour);
  }
}

TEST(ViewerQt, KeysFromQtEvents) {
  struct Case {
    int qtKey;
    Qt::KeyboardModifiers modifiers;
    const char* text;
    std::optional<Key> key;
  };
  const Case cases[] = {
      {Qt::Key_Left, Qt::NoModifier, "", Extended(ext_key::Left)},
      {Qt::Key_Left, Qt::ControlModifier, "", Extended(ext_key::CtrlLeft)},
      {Qt::Key_Up, Qt::ControlModifier, "", Extended(ext_key::CtrlUp)},
      {Qt::Key_PageUp, Qt::NoModifier, "", Extended(ext_key::PgUp)},
      {Qt::Key_End, Qt::NoModifier, "", Extended(ext_key::End)},
      {Qt::Key_Insert, Qt::NoModifier, "", Extended(ext_key::Ins)},
      {Qt::Key_F10, Qt::NoModifier, "", Extended(ext_key::F10)},
      {Qt::Key_Escape, Qt::NoModifier, "\x1b", Plain(27)},  // the stop of a film
      {Qt::Key_Plus, Qt::NoModifier, "+", Plain('+')},
      {Qt::Key_Y, Qt::ShiftModifier, "Y", Plain('Y')},
      {Qt::Key_5, Qt::KeypadModifier, "5", Plain('5')},
      {Qt::Key_Shift, Qt::ShiftModifier, "", std::nullopt},
  };
  for (const Case& c : cases) EXPECT_EQ(KeyFromQt(c.qtKey, c.modifiers, c.text), c.key) << c.qtKey;
}

TEST(ViewerQt, MainWindowHasThreePanesAndTakesKeys) {
  EnsureQtApplication(true);
  Session s;
  Formaldehydeish(s);
  s.messages = {" Specifications read in OK"};
  ViewerState v;
  StartViewer(s, v);
  LoadCoordinateSet(s, v);
  ViewerWindow window(s, v);
  window.show();
  QApplication::processEvents();

  EXPECT_EQ(window.view()->windowTitle(), "Molecular view");
  QStringList docks;
  for (auto* d : window.findChildren<QDockWidget*>()) docks << d->windowTitle();
  docks.sort();
  EXPECT_EQ(docks, QStringList({"Control keys", "Message window"}));
  // The font asked for, not the one the machine's fonts resolve it to (that
  // depends on what is installed).
  EXPECT_TRUE(window.keysPane()->font().fixedPitch());
  EXPECT_EQ(window.keysPane()->font().styleHint(), QFont::TypeWriter);
  EXPECT_TRUE(window.keysPane()->toPlainText().startsWith(" *** Geometry view mode ***"));
  EXPECT_EQ(window.messagePane()->toPlainText(), " Specifications read in OK");
  // The view takes about seven tenths of the frame.
  EXPECT_NEAR(static_cast<double>(window.view()->width()) / window.width(), 0.7, 0.05);
  EXPECT_EQ(v.window.width, window.view()->width());

  QKeyEvent plus(QEvent::KeyPress, Qt::Key_Plus, Qt::NoModifier, "+");
  QApplication::sendEvent(window.view(), &plus);
  EXPECT_DOUBLE_EQ(s.view.zoom, 1.1);
  QKeyEvent f4(QEvent::KeyPress, Qt::Key_F4, Qt::NoModifier);
  QApplication::sendEvent(window.view(), &f4);
  EXPECT_TRUE(window.keysPane()->toPlainText().startsWith(" *** Fragment edit mode ***"));
  QKeyEvent q(QEvent::KeyPress, Qt::Key_Q, Qt::NoModifier, "q");
  QApplication::sendEvent(window.view(), &q);
  EXPECT_EQ(window.ending(), Ending::Exit);
  EXPECT_FALSE(window.isVisible());
  if (const char* shot = std::getenv("QUINTOR_WINDOW_SHOT")) window.grab().save(shot);
}

// At the default size of the frame every line of the longest help (a run
// with vibrations) shows without scrolling.
TEST(ViewerQt, HelpFitsTheDefaultFrame) {
  EnsureQtApplication(true);
  Session s;
  Formaldehydeish(s);
  s.modes.resize(6);
  ViewerState v;
  StartViewer(s, v);
  LoadCoordinateSet(s, v);
  ASSERT_TRUE(v.hasVibrations);
  ViewerWindow window(s, v);
  window.show();
  QApplication::processEvents();
  EXPECT_EQ(window.size(), QSize(1280, 1024));
  EXPECT_EQ(window.keysPane()->verticalScrollBar()->maximum(), 0)
      << window.keysPane()->height() << " px for " << v.help.size() << " lines";
  window.close();
}

TEST(ViewerQt, InputDialogTakesTheFieldWhicheverButtonClosesIt) {
  EnsureQtApplication(true);
  struct Case {
    const char* typed;
    bool ok;
    double result;
  };
  const Case cases[] = {{"12.5", true, 12.5}, {"7.25", false, 7.25}, {"abc", false, 5.0}};
  for (const Case& c : cases) {
    DialogPrompts prompts;
    QString title;
    QTimer::singleShot(0, [&] {
      auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      ASSERT_NE(dialog, nullptr);
      title = dialog->windowTitle();
      dialog->findChild<QLineEdit*>()->setText(c.typed);
      c.ok ? dialog->accept() : dialog->reject();
    });
    EXPECT_EQ(prompts.AskReal(" Rotation step is    5.00 deg. Enter new step in degrees", 5.0), c.result);
    EXPECT_EQ(title, "Input new value");
  }
  // Confirmation: No is the default button.
  for (bool yes : {false, true}) {
    DialogPrompts prompts;
    QTimer::singleShot(0, [&] {
      auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      ASSERT_NE(box, nullptr);
      EXPECT_EQ(box->windowTitle(), "Confirmation");
      EXPECT_EQ(box->defaultButton()->text(), "No");
      for (auto* b : box->buttons())
        if (b->text() == (yes ? "Yes" : "No")) b->click();
    });
    EXPECT_EQ(prompts.AskYesNo("Come back to initial orientation?"), yes);
  }
}

// Mode > "F3  Vibration View" greys the menus "Geometry" and "Edit" and says
// how to start a film; F2 gives the Geometry view's menus back, F4 the edit's.
TEST(ViewerQt, VibrationViewMenuGreysGeometryAndEditUntilF2OrF4) {
  EnsureQtApplication(true);
  Session s;
  Formaldehydeish(s);
  ViewerState v;
  StartViewer(s, v);
  LoadCoordinateSet(s, v);
  ViewerWindow window(s, v);
  window.show();
  QApplication::processEvents();
  std::map<QString, QAction*> menus;
  for (QAction* a : window.menuBar()->actions()) menus[a->text()] = a;
  ASSERT_TRUE(menus.count("Geometry") && menus.count("Edit"));
  QAction* vibration = nullptr;
  for (QAction* a : window.findChildren<QAction*>())
    if (a->text() == "F&3  Vibration View") vibration = a;
  ASSERT_NE(vibration, nullptr);
  const auto enabled = [&] { return std::pair(menus["Geometry"]->isEnabled(), menus["Edit"]->isEnabled()); };
  const auto key = [&](Qt::Key k) {
    QKeyEvent e(QEvent::KeyPress, k, Qt::NoModifier);
    QApplication::sendEvent(window.view(), &e);
  };
  const auto menuF3 = [&] {
    QString said;
    QTimer::singleShot(0, [&] {
      auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      ASSERT_NE(box, nullptr);
      said = box->text();
      box->done(0);
    });
    vibration->trigger();
    EXPECT_EQ(said, "To start animation, press F3 and set the vibration mode number.");
  };
  EXPECT_EQ(enabled(), std::pair(true, false));
  menuF3();
  EXPECT_EQ(enabled(), std::pair(false, false));
  key(Qt::Key_Plus);  // other keys leave them grey
  EXPECT_EQ(enabled(), std::pair(false, false));
  key(Qt::Key_F2);
  EXPECT_EQ(enabled(), std::pair(true, false));
  menuF3();
  EXPECT_EQ(enabled(), std::pair(false, false));
  key(Qt::Key_F4);
  EXPECT_EQ(enabled(), std::pair(false, true));
  window.close();
}

// The film on the window's timer: a click stops it at the end of the first
// period (30 frames of at least 50 ms), and the journal has the play and
// where the film stopped; a left drag turns the view and is journalled.
TEST(ViewerQt, FilmOnTheTimerStopsAtThePeriodAndIsJournalled) {
  EnsureQtApplication(true);
  Session s;
  Formaldehydeish(s);
  VibMode m;
  m.freq = 1500.0;
  m.intensity = 20.0;
  m.disp.assign(4, Vec3{0.1, 0.0, 0.0});
  s.modes = {m, m};
  ViewerState v;
  StartViewer(s, v);
  LoadCoordinateSet(s, v);
  std::ostringstream journal;
  ViewerWindow window(s, v, &journal);
  window.show();
  QApplication::processEvents();
  ASSERT_NE(window.spectrumPane(), nullptr);

  QElapsedTimer clock;
  clock.start();
  window.Apply(PlayMode(s, v, 2));
  journal << "play 2\n";  // what a click on the spectrum writes before it plays
  QMouseEvent click(QEvent::MouseButtonPress, QPointF(5, 5), QPointF(5, 5), Qt::RightButton, Qt::RightButton,
                    Qt::NoModifier);
  QApplication::sendEvent(window.view(), &click);
  while (v.film.running && clock.elapsed() < 20000) QApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
  EXPECT_FALSE(v.film.running);
  EXPECT_GE(clock.elapsed(), FilmFrames * FilmPaceMs);
  EXPECT_EQ(v.film.period, 1);
  EXPECT_EQ(window.spectrumPane()->current, 2);

  const Mat3 before = s.view.matrix;
  auto mouse = [&](QEvent::Type type, double x, Qt::MouseButton b, Qt::MouseButtons held) {
    QMouseEvent e(type, QPointF(x, 100), QPointF(x, 100), b, held, Qt::NoModifier);
    QApplication::sendEvent(window.view(), &e);
  };
  mouse(QEvent::MouseButtonPress, 100, Qt::LeftButton, Qt::LeftButton);
  mouse(QEvent::MouseMove, 140, Qt::NoButton, Qt::LeftButton);
  mouse(QEvent::MouseButtonRelease, 140, Qt::LeftButton, Qt::NoButton);
  ViewState turned;
  turned.matrix = before;
  RotateView(turned, 0, 40 * 0.5 * constants::DegToRad, 0);
  for (int i = 0; i < 3; ++i)
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(s.view.matrix[i][k], turned.matrix[i][k], 1e-12);
  EXPECT_EQ(journal.str(), "play 2\nfilm 1\nturn 40 0\n");
}

// Several sets: the energy plot beside the Message window; a click near
// its left edge goes to set 0 and is journalled.
TEST(ViewerQt, EnergyPlotGoesToTheClickedSet) {
  EnsureQtApplication(true);
  Session s;
  HandMolecule(s, {{6, "C", {0, 0, 0}}, {8, "O", {0, 2.3, 0}}}, 4);
  ViewerState v;
  StartViewer(s, v);
  LoadCoordinateSet(s, v);
  std::ostringstream journal;
  ViewerWindow window(s, v, &journal);
  window.show();
  QApplication::processEvents();
  ASSERT_NE(window.energyPane(), nullptr);
  EXPECT_EQ(window.spectrumPane(), nullptr);  // no modes, no spectrum
  EXPECT_EQ(v.currentSet, 3);
  QMouseEvent click(QEvent::MouseButtonPress, QPointF(1, 20), QPointF(1, 20), Qt::LeftButton, Qt::LeftButton,
                    Qt::NoModifier);
  QApplication::sendEvent(window.energyPane(), &click);
  EXPECT_EQ(v.currentSet, 0);
  EXPECT_EQ(s.xyz[0][0], 0.0);  // set 0 is not shifted
  EXPECT_EQ(journal.str(), "set 0\n");
  if (const char* keep = std::getenv("QUINTOR_KEEP_WINDOW")) window.grab().save(keep);
}

// The thermochemistry dock of a run with frequencies: its text and four
// plots, a line per model's table (Pitzer-Gwinn, quantum and Monte Carlo for ethane's
// methyl rotation, the harmonic table alone without /ARIR).
TEST(ViewerQt, ThermochemistryDockHasFourPlotsWithALinePerModel) {
  struct Case {
    std::vector<std::string> options;
    std::vector<QString> names;
  };
  for (const Case& c : {Case{{"/ARIR", "/IRMC2000"}, {"Pitzer-Gwinn", "Quantum rotor", "Monte Carlo"}}, Case{{}, {"Harmonic"}}}) {
    LogRun run(TestInput("rotations/ethane_xtb.out"), c.options);
    ASSERT_EQ(run.r.status, 0);
    EnsureQtApplication(true);
    ViewerState v;
    StartViewer(run.s, v);
    LoadCoordinateSet(run.s, v);
    ASSERT_TRUE(v.hasVibrations);
    ViewerWindow window(run.s, v);
    window.show();
    QApplication::processEvents();
    QStringList docks;
    for (auto* d : window.findChildren<QDockWidget*>()) docks << d->windowTitle();
    EXPECT_TRUE(docks.contains("Thermochemistry")) << docks.join(", ").toStdString();
    ResultsPane* pane = window.resultsPane();
    ASSERT_NE(pane, nullptr);
    QStringList titles;
    for (CurvePlot* plot : pane->plots()) {
      ASSERT_NE(plot, nullptr);
      EXPECT_TRUE(pane->isAncestorOf(plot));
      titles << plot->title;
    }
    EXPECT_EQ(titles, QStringList({"CP, J/K/mol", "S, J/K/mol", "H, kJ/mol", "G, kJ/mol"}));
    for (CurvePlot* plot : pane->plots()) {
      ASSERT_EQ(plot->series.size(), c.names.size()) << plot->title.toStdString();
      for (size_t k = 0; k < c.names.size(); ++k) {
        EXPECT_EQ(plot->series[k].name, c.names[k]);
        EXPECT_GE(plot->series[k].x.size(), 50u);
      }
    }
    const QString text = pane->text()->toPlainText();
    EXPECT_TRUE(text.contains(" Htot   = ")) << text.toStdString();
    EXPECT_EQ(text.contains("Quantum rotor"), c.options.size() > 0);
    // The first line is painted in its blue.
    const QImage image = pane->plots()[0]->grab().toImage();
    int blue = 0;
    for (int y = 0; y < image.height(); ++y)
      for (int x = 0; x < image.width(); ++x) {
        const QColor p = image.pixelColor(x, y);
        blue += p.blue() > 100 && p.red() < 80 && p.green() < 80;
      }
    EXPECT_GT(blue, 20);
    if (const char* shot = std::getenv("QUINTOR_DOCK_SHOT")) pane->grab().save(shot);
    window.close();
  }
}

// The optimisation's progress window: its text and bar follow the cycles,
// and after Cancel the next cycle is told to stop.
TEST(ViewerQt, ProgressDialogShowsTheCycleAndTakesCancel) {
  EnsureQtApplication(true);
  QWidget parent;
  DialogPrompts prompts;
  prompts.parent = &parent;
  EXPECT_TRUE(prompts.Progress(" Cycle    1", 1, 30));
  ASSERT_NE(prompts.progress, nullptr);
  EXPECT_EQ(prompts.progress->labelText(), " Cycle    1");
  EXPECT_EQ(prompts.progress->maximum(), 30);
  EXPECT_TRUE(prompts.Progress(" Cycle    2", 2, 30));
  EXPECT_EQ(prompts.progress->value(), 2);
  prompts.progress->cancel();
  EXPECT_FALSE(prompts.Progress(" Cycle    3", 3, 30));
  prompts.EndProgress();
  EXPECT_EQ(prompts.progress, nullptr);
}

// ---- Another session from the window: a drop, the recent files, File > Open ----

namespace {

// Settings of the test's own, in a scratch folder.
struct ScratchSettings {
  TempDir dir;
  ScratchSettings() {
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QString::fromStdString(dir.path.string()));
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, QString::fromStdString(dir.path.string()));
  }
};

}  // namespace

// A log dropped on the window ends the run for a new one on that log, as
// File > Open with it would, and the journal says so; a drop of no file is refused.
TEST(ViewerQt, DroppedLogOpensInTheNextSession) {
  EnsureQtApplication(true);
  TempDir dir;
  const std::string log = dir.Write("dropped.log", "x\n");
  Session s;
  Formaldehydeish(s);
  ViewerState v;
  StartViewer(s, v);
  LoadCoordinateSet(s, v);
  std::ostringstream journal;
  ViewerWindow window(s, v, &journal);
  window.show();
  QApplication::processEvents();
  EXPECT_TRUE(window.acceptDrops());

  QMimeData text;
  text.setText("no file");
  QDragEnterEvent refused(QPoint(50, 50), Qt::CopyAction, &text, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(&window, &refused);
  EXPECT_FALSE(refused.isAccepted());

  QMimeData file;
  file.setUrls({QUrl::fromLocalFile(QString::fromStdString(log))});
  QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &file, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(&window, &enter);
  EXPECT_TRUE(enter.isAccepted());
  QDropEvent drop(QPointF(50, 50), Qt::CopyAction, &file, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(&window, &drop);
  EXPECT_EQ(window.ending(), Ending::NewSession);
  EXPECT_FALSE(window.isVisible());
  EXPECT_TRUE(s.next.asked);
  EXPECT_EQ(s.next.inputName, log);
  EXPECT_EQ(journal.str(), "menu Open\nanswer " + EncodeDialogAnswer(DialogOk, OpenLogAnswer(log, FormatCode::Automatic)) + "\n");
}

// The recent files go through the settings and back; the submenu lists
// those still there, says which were taken off, and opens the one chosen.
TEST(ViewerQt, RecentFilesRoundTripAndOpen) {
  EnsureQtApplication(true);
  ScratchSettings scratch;
  TempDir dir;
  const std::vector<RecentFile> list{{dir.Write("b.log", "x"), FormatCode::Gaussian09},
                                     {dir.File("gone.log"), FormatCode::Automatic},
                                     {dir.Write("a.out", "x"), FormatCode::PcGamess7}};
  {
    QSettings settings("Quintor", "Quintor");
    SaveRecentFiles(settings, list);
  }
  {
    QSettings settings("Quintor", "Quintor");
    EXPECT_EQ(LoadRecentFiles(settings), list);
  }
  Session s;
  s.files.inputName = dir.Write("c.log", "x");
  RememberRecentInput(s);  // the run's own input goes to the head
  Formaldehydeish(s);
  ViewerState v;
  StartViewer(s, v);
  LoadCoordinateSet(s, v);
  std::ostringstream journal;
  ViewerWindow window(s, v, &journal);
  window.show();
  QApplication::processEvents();
  ASSERT_NE(window.recentMenu(), nullptr);
  emit window.recentMenu()->aboutToShow();
  QStringList shown;
  for (QAction* a : window.recentMenu()->actions()) shown << a->text();
  EXPECT_EQ(shown, QStringList({QString::fromStdString(dir.File("c.log")), QString::fromStdString(list[0].name),
                                QString::fromStdString(list[2].name)}));
  EXPECT_TRUE(window.messagePane()->toPlainText().contains(
      QString::fromStdString(" Recent file not found, taken off the list: " + dir.File("gone.log"))));
  {
    QSettings settings("Quintor", "Quintor");
    EXPECT_EQ(LoadRecentFiles(settings).size(), 3u);
  }
  window.recentMenu()->actions()[1]->trigger();
  EXPECT_EQ(window.ending(), Ending::NewSession);
  EXPECT_EQ(s.next.inputName, list[0].name);
  EXPECT_EQ(s.next.formatCode, FormatCode::Gaussian09);
}

// File > Open: Qt's file chooser with the job dialog's formats as its file types.
TEST(ViewerQt, OpenChooserGivesTheFileAndItsFormat) {
  EnsureQtApplication(true);
  TempDir dir;
  const std::string log = dir.Write("water.log", "x\n");
  const LogFileType& g09 = *std::find_if(LogFileTypes().begin(), LogFileTypes().end(),
                                         [](const LogFileType& t) { return t.format == FormatCode::Gaussian09; });
  DialogPrompts prompts;
  QStringList types;
  QTimer::singleShot(0, [&] {
    auto* chooser = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
    ASSERT_NE(chooser, nullptr);
    types = chooser->nameFilters();
    chooser->setDirectory(QString::fromStdString(dir.path.string()));
    chooser->selectNameFilter(QString::fromStdString(g09.Filter()));
    chooser->selectFile(QString::fromStdString(log));
    QMetaObject::invokeMethod(chooser, "accept");  // a protected slot
  });
  DialogValues values = OpenLogAnswer("", FormatCode::Automatic);
  ASSERT_EQ(prompts.AskDialog(OpenLogDialog, values), DialogOk);
  EXPECT_EQ(values, OpenLogAnswer(log, FormatCode::Gaussian09));
  ASSERT_EQ(types.size(), static_cast<qsizetype>(LogFileTypes().size()));
  EXPECT_EQ(types.front(), "Automatic recognition (*.out *.log *.o *.gjf *.inp *.mou *.xyz)");
}

// The whole re-entry with the program's own windows: File > New Session in
// the first window, the job dialog names the second log, and the second
// window opens where the first was, on the second log.
TEST(ViewerQt, NewSessionRunsTheNextLogInTheWindow) {
  EnsureQtApplication(true);
  ScratchSettings scratch;
  TempDir dir;
  const std::string first = dir.Write("ethanol.out", ReadFile(std::string(QUINTOR_TEST_INPUTS) + "/../../examples/ethanol_xtb.out"));
  const std::string second = dir.Write("water.out", ReadFile(TestInput("water_xtb.out")));
  std::vector<std::string> seen;  // the window titles, and the job dialog
  QRect firstPlace, secondPlace;
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, [&] {
    if (auto* d = dynamic_cast<TableDialog*>(QApplication::activeModalWidget())) {
      seen.push_back(d->windowTitle().toStdString());
      d->findChild<QLineEdit*>("c1000")->setText(QString::fromStdString(second));
      d->findChild<QAbstractButton*>("b1")->click();
      return;
    }
    for (QWidget* w : QApplication::topLevelWidgets()) {
      auto* window = dynamic_cast<ViewerWindow*>(w);
      if (!window || !window->isVisible()) continue;
      seen.push_back(window->windowTitle().toStdString());
      if (seen.size() == 1) {
        window->move(40, 30);
        window->resize(1100, 900);
        firstPlace = window->geometry();
        for (QAction* a : window->menuBar()->actions().front()->menu()->actions())
          if (a->text() == "&New Session") a->trigger();
      } else {
        secondPlace = window->geometry();
        window->close();
      }
      return;
    }
  });
  timer.start(20);
  Session s;
  std::ostringstream console;
  s.console = &console;
  const Frontend windows{HasDisplay, RunWindows, SnapView, AskYesNoDialog, AskTextDialog,
                         PlotSpectrumPng, RunWindowsWith, AskJobDialog};
  EXPECT_EQ(RunQuintor(s, {first}, &windows), 0) << console.str();
  timer.stop();
  EXPECT_EQ(seen, (std::vector<std::string>{"Quintor - " + first, "Set the input file name and job options",
                                            "Quintor - " + second}));
  EXPECT_EQ(secondPlace.size(), firstPlace.size());
  EXPECT_EQ(s.files.inputName, second);
  EXPECT_EQ(s.nAtoms, 3);
  EXPECT_EQ(ReadFile(dir.File("ethanol.mou")).find("THERMOCHEMICAL PROPERTIES EVALUATION"), std::string::npos);
  EXPECT_NE(ReadFile(dir.File("ethanol.jnl")).find("menu NewSession"), std::string::npos);
}

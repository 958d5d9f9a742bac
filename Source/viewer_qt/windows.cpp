#include "viewer_qt/windows.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>

#include <QApplication>
#include <QCloseEvent>
#include <QDialogButtonBox>
#include <QDockWidget>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QMouseEvent>
#include <QWheelEvent>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>
#include <QTextDocument>
#include <QSettings>
#include <QTextCursor>
#include <QVBoxLayout>

#include "io/file_names.h"
#include "io/fortran_io.h"
#include "readers/elements.h"
#include "viewer/scene.h"
#include "viewer/vibration.h"
#include "viewer/view_model.h"
#include "viewer_qt/help.h"
#include "viewer_qt/paint.h"
#include "viewer_qt/plots.h"
#include "viewer_qt/qt_viewer.h"
#include "viewer_qt/results_dock.h"
#include "viewer_qt/session_menu.h"
#include "viewer_qt/table_dialog.h"
#include "viewer/fragment_db.h"

namespace quintor {

std::optional<Key> KeyFromQt(int qtKey, Qt::KeyboardModifiers modifiers, const QString& text) {
  const bool ctrl = modifiers & Qt::ControlModifier;
  switch (qtKey) {
    case Qt::Key_Left: return Extended(ctrl ? ext_key::CtrlLeft : ext_key::Left);
    case Qt::Key_Right: return Extended(ctrl ? ext_key::CtrlRight : ext_key::Right);
    case Qt::Key_Up: return Extended(ctrl ? ext_key::CtrlUp : ext_key::Up);
    case Qt::Key_Down: return Extended(ctrl ? ext_key::CtrlDown : ext_key::Down);
    case Qt::Key_Home: return Extended(ext_key::Home);
    case Qt::Key_End: return Extended(ext_key::End);
    case Qt::Key_PageUp: return Extended(ext_key::PgUp);
    case Qt::Key_PageDown: return Extended(ext_key::PgDn);
    case Qt::Key_Insert: return Extended(ext_key::Ins);
    case Qt::Key_Delete: return Extended(ext_key::Del);
    case Qt::Key_F1: return Extended(ext_key::F1);
    case Qt::Key_F2: return Extended(ext_key::F2);
    case Qt::Key_F3: return Extended(ext_key::F3);
    case Qt::Key_F4: return Extended(ext_key::F4);
    case Qt::Key_F10: return Extended(ext_key::F10);
    case Qt::Key_Escape: return Plain(27);  // stops a film
    case Qt::Key_Z: if (ctrl) return Plain(26); break;  // undo
    case Qt::Key_Y: if (ctrl) return Plain(25); break;  // redo
    default: break;
  }
  if (text.size() == 1 && text[0].unicode() >= 32 && text[0].unicode() < 127)
    return Plain(static_cast<char>(text[0].unicode()));
  return std::nullopt;
}

// ---- Prompts ------------------------------------------------------------------

namespace {

// "Input new value": a caption, one edit field, OK and Cancel. The field is
// read back whichever button closed the dialog.
std::string AskField(QWidget* parent, const std::string& text, const std::string& value) {
  QDialog dialog(parent);
  dialog.setWindowTitle("Input new value");
  auto* layout = new QVBoxLayout(&dialog);
  layout->addWidget(new QLabel(QString::fromStdString(text)));
  auto* field = new QLineEdit(QString::fromStdString(value));
  field->setFont(PaneFont());
  field->selectAll();
  layout->addWidget(field);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  layout->addWidget(buttons);
  dialog.exec();
  return field->text().toStdString();
}

}  // namespace

// An answer that is not a number keeps the old value.
double DialogPrompts::AskReal(const std::string& text, double value) {
  const std::string answer = AskField(parent, text, std::string(Trim(FmtF(value, 8, 2))));
  const auto read = ParseFortranReal(Trim(answer));
  return read ? *read : value;
}

int DialogPrompts::AskInteger(const std::string& text, int value) {
  const std::string answer = AskField(parent, text, std::string(Trim(FmtI(value, 4))));
  const auto read = ParseFortranInt(Trim(answer));
  return read ? static_cast<int>(*read) : value;
}

std::string DialogPrompts::AskText(const std::string& text, const std::string& value) {
  return AskField(parent, text, value);
}

bool DialogPrompts::AskYesNo(const std::string& text) {
  QMessageBox box(parent);
  box.setWindowTitle("Confirmation");
  box.setText(QString::fromStdString(text));
  QPushButton* no = box.addButton("No", QMessageBox::NoRole);
  QPushButton* yes = box.addButton("Yes", QMessageBox::YesRole);
  box.setDefaultButton(no);
  box.exec();
  return box.clickedButton() == yes;
}

int DialogPrompts::AskDialog(int number, DialogValues& values) {
  if (number == OpenLogDialog) return ChooseLogFile(parent, values);
  return RunTableDialog(number, values, parent);
}

bool DialogPrompts::Progress(const std::string& text, int value, int maximum) {
  if (!progress) {
    progress = new QProgressDialog(parent);
    progress->setWindowTitle("Geometry optimization");
    progress->setCancelButtonText("Cancel");
    progress->setWindowModality(Qt::WindowModal);
    progress->setMinimumDuration(0);
    progress->setAutoReset(false);
    progress->setAutoClose(false);
  }
  progress->setMaximum(std::max(maximum, value));
  progress->setValue(value);
  progress->setLabelText(QString::fromStdString(text));
  // The work runs on this thread: a look at the events lets the Cancel in.
  QApplication::processEvents();
  return !progress->wasCanceled();
}

void DialogPrompts::EndProgress() {
  delete progress;
  progress = nullptr;
}

void DialogPrompts::ShowMessage(const std::string& text) {
  QMessageBox box(parent);
  box.setWindowTitle("Program message");
  box.setText(QString::fromStdString(text));
  box.addButton("OK", QMessageBox::AcceptRole);
  box.exec();
}

// ---- The Molecular view ---------------------------------------------------------

MolecularView::MolecularView(const Session& s, ViewerState& v, QWidget* parent) : QWidget(parent), s_(s), v_(v) {
  setWindowTitle("Molecular view");
  setFocusPolicy(Qt::StrongFocus);
  setAttribute(Qt::WA_OpaquePaintEvent);  // every frame paints the whole surface
  setMinimumSize(200, 200);
}

void MolecularView::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  PaintScene(painter, BuildScene(s_, v_), v_.window);
}

// The world rectangle follows the surface: its height always spans 20 bohr.
void MolecularView::resizeEvent(QResizeEvent*) { v_.window = {width(), height()}; }

void MolecularView::keyPressEvent(QKeyEvent* event) {
  const auto key = KeyFromQt(event->key(), event->modifiers(), event->text());
  if (!key) return QWidget::keyPressEvent(event);
  if (onKey) onKey(*key);
}

// A left click marks at its release, unless the pointer moved: then the
// press began a turn. The right button clears at once.
void MolecularView::mousePressEvent(QMouseEvent* event) {
  last_ = event->position();
  dragged_ = false;
  if (event->button() == Qt::RightButton && onClick) onClick(MouseButton::Right, last_.x(), last_.y());
}

void MolecularView::mouseMoveEvent(QMouseEvent* event) {
  const bool left = event->buttons() & Qt::LeftButton, middle = event->buttons() & Qt::MiddleButton;
  if (!left && !middle) return;
  const QPointF d = event->position() - last_;
  if (left && !dragged_ && std::abs(d.x()) + std::abs(d.y()) < 4) return;  // a shaky click
  dragged_ = dragged_ || left;
  last_ = event->position();
  if (onDrag) onDrag(middle && !left, d.x(), d.y());
}

void MolecularView::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton && !dragged_ && onClick)
    onClick(MouseButton::Left, event->position().x(), event->position().y());
  dragged_ = false;
}

void MolecularView::wheelEvent(QWheelEvent* event) {
  wheel_ += event->angleDelta().y();
  const int notches = wheel_ / 120;
  wheel_ -= notches * 120;
  if (notches != 0 && onWheel) onWheel(notches);
}

// ---- The main window ------------------------------------------------------------------

namespace {

QPlainTextEdit* TextPane() {
  auto* pane = new QPlainTextEdit;
  pane->setReadOnly(true);
  pane->setFont(PaneFont());
  pane->setFocusPolicy(Qt::NoFocus);  // keys belong to the Molecular view
  pane->setLineWrapMode(QPlainTextEdit::NoWrap);
  return pane;
}

QDockWidget* Dock(const char* title, QWidget* content) {
  auto* dock = new QDockWidget(title);
  dock->setObjectName(title);
  dock->setWidget(content);
  dock->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetFloatable);
  return dock;
}

}  // namespace

ViewerWindow::ViewerWindow(Session& s, ViewerState& v, std::ostream* journal)
    : s_(s), v_(v), recording_(prompts_, journal_) {
  journal_.out = journal;
  setWindowTitle(QString::fromStdString("Quintor - " + s.files.inputName));
  view_ = new MolecularView(s, v);
  setCentralWidget(view_);
  messages_ = TextPane();
  keys_ = TextPane();
  auto* messageDock = Dock("Message window", messages_);
  auto* keysDock = Dock("Control keys", keys_);
  addDockWidget(Qt::RightDockWidgetArea, messageDock);
  addDockWidget(Qt::RightDockWidgetArea, keysDock);
  // The view takes seven tenths of the frame, the panes the rest.
  resize(1280, 1024);
  resizeDocks({messageDock}, {1280 * 3 / 10}, Qt::Horizontal);
  // The Control keys pane shows every line of the longest help without
  // scrolling; the Message window takes the rest of the height.
  const size_t helpLines = std::max(v.help.size(), GeometryHelp(true).size());
  const int keysHeight = static_cast<int>(helpLines + 1) * QFontMetrics(PaneFont()).lineSpacing() +
                         2 * (keys_->frameWidth() + static_cast<int>(keys_->document()->documentMargin())) +
                         style()->pixelMetric(QStyle::PM_TitleBarHeight);
  // The panes above the keys (Message window, spectrum, energies) share the
  // rest of the height.
  QList<QDockWidget*> column{messageDock};
  if (v.hasVibrations) {
    // The spectrum beside the Message window; a click on a peak plays its mode.
    spectrum_ = new SpectrumPane(s);
    auto* spectrumDock = Dock("Spectrum", spectrum_);
    addDockWidget(Qt::RightDockWidgetArea, spectrumDock);
    splitDockWidget(messageDock, spectrumDock, Qt::Vertical);
    column.append(spectrumDock);
    spectrum_->onMode = [this](int mode) {
      if (v_.film.running) return;
      journal_.Played(mode);
      Apply(PlayMode(s_, v_, mode));
    };
    spectrum_->onAskWidth = [this] {
      const double w = prompts_.AskReal("Line width (FWHM) of the spectrum, cm-1:", spectrum_->fwhm);
      if (w > 0.0) spectrum_->fwhm = w;
      spectrum_->update();
    };
  }
  if (s.iCyc > 0) {
    // Several coordinate sets: their energies by step; a click goes to a set.
    energy_ = new EnergyPane(s, v.currentSet);
    auto* energyDock = Dock("Energy by step", energy_);
    addDockWidget(Qt::RightDockWidgetArea, energyDock);
    splitDockWidget(messageDock, energyDock, Qt::Vertical);
    column.append(energyDock);
    energy_->onSet = [this](int set) {
      if (v_.film.running) return;
      journal_.Line("set " + std::to_string(set));
      Apply(GoToSet(s_, v_, set, recording_));
    };
  }
  const int above = std::max(1024 - 80 - keysHeight, 200 * static_cast<int>(column.size()));
  QList<int> heights(column.size(), above / static_cast<int>(column.size()));
  column.append(keysDock);
  heights.append(keysHeight);
  resizeDocks(column, heights, Qt::Vertical);
  if (v.hasVibrations) {
    // The thermochemistry and its plots, in a tab behind the Message window.
    // A scroll area: the pane's plots never squeeze the Control keys.
    results_ = new ResultsPane(s);
    auto* scroll = new QScrollArea;
    scroll->setWidget(results_);
    scroll->setWidgetResizable(true);
    scroll->setFocusPolicy(Qt::NoFocus);
    auto* resultsDock = Dock("Thermochemistry", scroll);
    addDockWidget(Qt::RightDockWidgetArea, resultsDock);
    tabifyDockWidget(messageDock, resultsDock);
    messageDock->raise();
  }
  // The film's pace: 50 ms of rest after each frame is drawn.
  filmTimer_.setSingleShot(true);
  filmTimer_.setTimerType(Qt::PreciseTimer);  // a coarse timer may fire up to 5 % early
  filmTimer_.setInterval(FilmPaceMs);
  connect(&filmTimer_, &QTimer::timeout, this, [this] { FilmFrameDue(); });
  prompts_.parent = this;
  BuildMenus();
  BuildRecentMenu();

  for (const std::string& line : s.messages) messages_->appendPlainText(QString::fromStdString(line));
  // Keys and clicks during a film only feed the film's stop; its journal
  // line says where it stopped.
  view_->onKey = [this](Key key) {
    if (!v_.film.running) journal_.KeyPressed(key);
    Apply(DispatchKey(s_, v_, key, recording_));
  };
  view_->onClick = [this](MouseButton b, double x, double y) {
    const int atom = NearestAtom(s_, v_, x, y);
    if (!v_.film.running) journal_.ClickOn(b, atom);
    Apply(ClickAtom(s_, v_, b, atom));
  };
  view_->onDrag = [this](bool middle, double dx, double dy) {
    journal_.Gesture(middle ? "shift" : "turn", dx, dy);
    Apply(middle ? DragShift(s_, v_, dx, dy) : DragTurn(s_, v_, dx, dy));
  };
  view_->onWheel = [this](int notches) {
    journal_.Line("zoom " + std::to_string(notches));
    Apply(WheelZoom(s_, v_, notches));
  };
  Outcome start;
  start.helpChanged = true;
  Apply(start);
  view_->setFocus();
}

void ViewerWindow::BuildMenus() {
  QMenu* menu = nullptr;
  for (const MenuEntry& e : MenuTable()) {
    if (e.text.empty()) {
      menu = menuBar()->addMenu(QString::fromUtf8(e.menu.data(), static_cast<int>(e.menu.size())));
      if (e.menu == "Edit") editMenu_ = menu, menu->setEnabled(false);  // greyed outside the edit mode
      if (e.menu == "Geometry") geometryMenu_ = menu;
      continue;
    }
    const MenuCommand command = e.command;
    QAction* action = menu->addAction(QString::fromUtf8(e.text.data(), static_cast<int>(e.text.size())));
    connect(action, &QAction::triggered, this, [this, command] {
      if (v_.film.running) return;  // the film has the keyboard and the mouse to itself
      journal_.MenuItem(command);
      Apply(DispatchMenu(s_, v_, command, recording_));
    });
  }
}

void ViewerWindow::ShowNewMessages() {
  for (; shownMessages_ < v_.messages.size(); ++shownMessages_)
    messages_->appendPlainText(QString::fromStdString(v_.messages[shownMessages_]));
}

void ViewerWindow::RememberLayout() {
  remember_ = true;
  QSettings settings("Quintor", "Quintor");
  restoreGeometry(settings.value("window/geometry").toByteArray());
  restoreState(settings.value("window/docks").toByteArray());
}

void ViewerWindow::Apply(const Outcome& out) {
  if (out.showHelp) ShowHelpWindow(this, v_.help);
  const ModeMenuStates menus = ModeMenus(v_);
  if (editMenu_) editMenu_->setEnabled(menus.edit);
  if (geometryMenu_) geometryMenu_->setEnabled(menus.geometry);
  if (out.helpChanged) {
    keys_->clear();
    for (const std::string& line : v_.help) keys_->appendPlainText(QString::fromStdString(line));
    keys_->moveCursor(QTextCursor::Start);  // the help reads from its first line
  }
  ShowNewMessages();
  if (out.beep) QApplication::beep();
  if (out.ending != Ending::None) {
    ending_ = out.ending;
    close();
    return;
  }
  if (out.filmStarted) {
    if (spectrum_) spectrum_->current = v_.film.currentMode, spectrum_->update();
    filmTimer_.start();
  }
  if (out.redraw || out.filmStarted) view_->update();
  if (energy_) energy_->update();
  if (results_) results_->Refresh();
}

void ViewerWindow::FilmFrameDue() {
  const bool running = FilmTick(s_, v_);
  view_->repaint();  // the drawing time adds to the pace
  if (running) {
    filmTimer_.start();
    return;
  }
  journal_.FilmEnded(v_.film.period);
}

void ViewerWindow::closeEvent(QCloseEvent* event) {
  if (ending_ == Ending::None) ending_ = Ending::Exit;  // the frame's close button ends the work as Q
  if (remember_) {
    QSettings settings("Quintor", "Quintor");
    settings.setValue("window/geometry", saveGeometry());
    settings.setValue("window/docks", saveState());
  }
  event->accept();
}

// ---- Entry points ------------------------------------------------------------------------

bool HasDisplay() {
  for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
    const char* value = std::getenv(name);
    if (value && *value) return true;
  }
  return false;
}

void EnsureQtApplication(bool offscreen) {
  if (QCoreApplication::instance()) return;
  if (offscreen && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  static int argc = 1;
  static char name[] = "quintor";
  static char* argv[] = {name, nullptr};
  // Lives to the end of the process: Qt objects may be made at any time.
  static QApplication* app = new QApplication(argc, argv);
  (void)app;
}

namespace {

ViewerState ViewerFor(Session& s) {
  ViewerState v;
  v.elements = &ProgramElements();
  StartViewer(s, v);
  for (int i = 0; i < s.nAtoms; ++i) v.symbols.emplace_back(ElementSymbol(s.atomicNumber[i]));
  LoadCoordinateSet(s, v);
  FitStartingView(s, v.window.Aspect(), s.view);
  return v;
}

}  // namespace

bool RunWindows(Session& s) { return RunWindowsWith(s, WindowServices{}); }

bool RunWindowsWith(Session& s, const WindowServices& services) {
  EnsureQtApplication();
  ViewerState v = ViewerFor(s);
  v.services = &services;
  std::ofstream journal(DerivedName(s.files.inputName, ".jnl"));
  ViewerWindow window(s, v, journal ? &journal : nullptr);
  window.RememberLayout();
  RememberRecentInput(s);
  window.show();
  QApplication::exec();
  return window.ending() == Ending::CalcTDAndQuit;
}

bool AskYesNoDialog(const std::string& text) {
  EnsureQtApplication();
  DialogPrompts prompts;
  return prompts.AskYesNo(text);
}

std::string AskTextDialog(const std::string& text, const std::string& value) {
  EnsureQtApplication();
  DialogPrompts prompts;
  return prompts.AskText(text, value);
}

bool AskJobDialog(Session& s) {
  EnsureQtApplication();
  DialogValues values = JobDialogValues(s);
  for (;;) {
    if (RunTableDialog(112, values, nullptr) != DialogOk) return false;
    const auto caption = ApplyJobDialog(values, s);
    if (!caption) return true;
    values[DialogNumber(112).captionId] = *caption;
  }
}

bool SnapView(Session& s, const std::string& pngFile) {
  EnsureQtApplication(true);
  ViewerState v = ViewerFor(s);
  if (s.opt.showMode >= 1 && s.opt.showMode <= v.nVib) {  // /MODE<n>: its arrows
    v.film.currentMode = s.opt.showMode;
    v.showArrows = true;
  }
  // The picture's kind follows the name: JPEG for .jpg and .jpeg, else PNG.
  const QString name = QString::fromStdString(pngFile);
  const bool jpeg = name.endsWith(".jpg", Qt::CaseInsensitive) || name.endsWith(".jpeg", Qt::CaseInsensitive);
  return RenderView(s, v).save(name, jpeg ? "JPEG" : "PNG");
}

bool PlotSpectrumPng(Session& s, const std::string& pngFile) {
  EnsureQtApplication(true);
  QImage image(1000, 500, QImage::Format_RGB32);
  QPainter painter(&image);
  PaintSpectrum(painter, image.rect(), s, 0, DefaultFwhm);
  painter.end();
  return image.save(QString::fromStdString(pngFile), "PNG");
}

}  // namespace quintor

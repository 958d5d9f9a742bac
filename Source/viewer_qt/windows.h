// The main window: the Molecular view in the middle, the Message window and
// the Control keys docked at the right, the menu bar, and the dialogs of
// the small prompts.
#pragma once

#include <functional>
#include <optional>

#include <QDialog>
#include <QMainWindow>
#include <QPlainTextEdit>
#include <QProgressDialog>
#include <QTimer>
#include <QWidget>

#include "model/session.h"
#include "viewer/commands.h"
#include "viewer/journal.h"
#include "viewer/viewer_state.h"

namespace quintor {

// The loop's key for a Qt key event; none for keys the loop does not read
// (a lone Shift, Ctrl).
std::optional<Key> KeyFromQt(int qtKey, Qt::KeyboardModifiers modifiers, const QString& text);

// The small prompts as modal dialogs: "Input new value" (the field is taken
// whichever button closes it), "Confirmation" (No is the default) and
// "Program message".
struct DialogPrompts : Prompts {
  QWidget* parent = nullptr;
  double AskReal(const std::string& text, double value) override;
  int AskInteger(const std::string& text, int value) override;
  std::string AskText(const std::string& text, const std::string& value) override;
  bool AskYesNo(const std::string& text) override;
  void ShowMessage(const std::string& text) override;
  int AskDialog(int number, DialogValues& values) override;
  // A window-modal progress dialog with Cancel, made at the first step.
  bool Progress(const std::string& text, int value, int maximum) override;
  void EndProgress() override;
  QProgressDialog* progress = nullptr;
};

// The drawing surface: paints the Scene of the state whole on every frame,
// and hands keys and clicks to the dispatcher through `command`.
class MolecularView : public QWidget {
 public:
  MolecularView(const Session& s, ViewerState& v, QWidget* parent = nullptr);
  std::function<void(Key)> onKey;
  std::function<void(MouseButton, double, double)> onClick;
  // A left drag (turn) or a middle drag (shift) by so many pixels; the wheel.
  std::function<void(bool middle, double, double)> onDrag;
  std::function<void(int)> onWheel;

 protected:
  void paintEvent(QPaintEvent*) override;
  void resizeEvent(QResizeEvent*) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;

 private:
  const Session& s_;
  ViewerState& v_;
  QPointF last_;          // the pointer at the last press or move
  bool dragged_ = false;  // a left press that moved is a turn, not a click
  int wheel_ = 0;         // eighths of a degree not yet a whole notch
};

// The frame of the interactive stage.
class SpectrumPane;
class EnergyPane;
class ResultsPane;

// The frame of the interactive stage. Every action goes to `journal` (the
// <input>.jnl of the run) as it is done.
class ViewerWindow : public QMainWindow {
 public:
  ViewerWindow(Session& s, ViewerState& v, std::ostream* journal = nullptr);
  Ending ending() const { return ending_; }
  MolecularView* view() const { return view_; }
  // The two text panes, for a look from the tests.
  QPlainTextEdit* messagePane() const { return messages_; }
  QPlainTextEdit* keysPane() const { return keys_; }
  // Carries out a command's outcome: panes, beep, redraw, end.
  void Apply(const Outcome& out);
  DialogPrompts& prompts() { return prompts_; }
  SpectrumPane* spectrumPane() const { return spectrum_; }
  EnergyPane* energyPane() const { return energy_; }
  // The thermochemistry dock of a run with frequencies; null without.
  ResultsPane* resultsPane() const { return results_; }
  // One frame of a running film, as the film's timer gives it.
  void FilmFrameDue();
  // Size and dock layout from the last run (QSettings), kept again at the close.
  void RememberLayout();
  // A log to read in the next session (a recent file, a dropped one): as
  // File > Open with that answer, journalled so.
  void OpenFile(const std::string& name, FormatCode format);
  QMenu* recentMenu() const { return recentMenu_; }

 protected:
  void closeEvent(QCloseEvent* event) override;
  // A log dropped on the window opens as by File > Open.
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void BuildMenus();
  void BuildRecentMenu();  // and the drops
  void ShowNewMessages();
  Session& s_;
  ViewerState& v_;
  MolecularView* view_ = nullptr;
  QPlainTextEdit* messages_ = nullptr;
  QPlainTextEdit* keys_ = nullptr;
  QMenu* editMenu_ = nullptr;
  QMenu* geometryMenu_ = nullptr;
  DialogPrompts prompts_;
  JournalWriter journal_;
  RecordingPrompts recording_;
  SpectrumPane* spectrum_ = nullptr;
  EnergyPane* energy_ = nullptr;
  ResultsPane* results_ = nullptr;
  QTimer filmTimer_;
  size_t shownMessages_ = 0;
  Ending ending_ = Ending::None;
  bool remember_ = false;
  QMenu* recentMenu_ = nullptr;
};

}  // namespace quintor

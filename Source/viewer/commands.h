// The dispatcher of the interactive stage: a key, a menu item or a click
// and the state it meets give the new state and what the window must do.
// No window is needed: the prompts go through an interface that the
// window layer implements with dialogs and tests answer from a script.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "model/session.h"
#include "viewer/dialogs.h"
#include "viewer/viewer_state.h"

namespace quintor {

// A key as the loop reads it: a plain code, or 0 with an extended code.
struct Key {
  int code = 0;
  int ext = 0;
  friend bool operator==(const Key&, const Key&) = default;
};

namespace ext_key {
inline constexpr int F1 = 59, F2 = 60, F3 = 61, F4 = 62, F10 = 68;
inline constexpr int Home = 71, Up = 72, PgUp = 73, Left = 75, Right = 77, End = 79, Down = 80, PgDn = 81;
inline constexpr int Ins = 82, Del = 83;
inline constexpr int CtrlLeft = 115, CtrlRight = 116, CtrlUp = 141, CtrlDown = 145;
}  // namespace ext_key

inline constexpr Key Plain(char c) { return {static_cast<unsigned char>(c), 0}; }
inline constexpr Key Extended(int code) { return {0, code}; }

// The small modal prompts. AskReal, AskInteger and AskText return the
// field as it stands when the dialog closes, whichever button closed it.
struct Prompts {
  virtual ~Prompts() = default;
  virtual double AskReal(const std::string& text, double value) = 0;
  virtual int AskInteger(const std::string& text, int value) = 0;
  virtual std::string AskText(const std::string& text, const std::string& value) = 0;
  virtual bool AskYesNo(const std::string& text) = 0;
  virtual void ShowMessage(const std::string& text) = 0;
  // A dialog of the table (viewer/dialogs.h) shown with `values`, which come
  // back as the user left them; the result is the code of the closing
  // button. Without a dialog at hand: Cancel.
  virtual int AskDialog(int number, DialogValues& values) { return DialogCancel; }
  // A long calculation's progress: `text` and `value` of `maximum` steps.
  // False when the user asked to stop it; without a window it goes on.
  virtual bool Progress(const std::string& text, int value, int maximum) { return true; }
  virtual void EndProgress() {}
};

enum class MenuCommand {
  NewSession, CalcTDAndQuit, Exit,
  GeometryView, VibrationView, EditStructure,
  Axes, Perspective, Labels, Balls, RotationStep, TranslationStep, PerspectiveFactor, ViewParameters,
  Thermodynamics, GeometryOptimization,
  NextSet, PreviousSet, FirstSet, LastSet, MarkAtomsHelp, Connect, SaveConfiguration, ZMatrixMolecule, Reorient,
  MarkFragmentHelp, AddFragment, ZMatrixAtom, BondOperation, ReorientByZMatrix, ReorientOXZ, PlaceAtOrigin,
  RemoveFragment, SaveFragment, ZMatrixFragment, StoreFragment,
  Help, About,
  DisplacementArrows,  // ours
  Undo, Redo, SetInternal, SaveAs,
  Open,  // ours: a log by the file chooser
};

// One item of the menu bar, in order; an empty `text` starts a new menu
// named `menu`.
struct MenuEntry {
  std::string_view menu;
  std::string_view text;
  MenuCommand command;
};
std::span<const MenuEntry> MenuTable();

// NewSession: the run closes without evaluation and the Session's `next`
// says what the next run reads.
enum class Ending { None, Exit, CalcTDAndQuit, NewSession };

// What a command asks of the window.
struct Outcome {
  bool redraw = true;       // a new frame (a key that does nothing still costs one)
  bool helpChanged = false; // the Control keys pane
  bool beep = false;
  Ending ending = Ending::None;
  bool filmStarted = false; // a film begins: FilmTick at its pace until it ends
  bool showHelp = false;    // F1 or Help > On-screen navigation: the help window
};

inline constexpr std::string_view NotAvailable = " Not available yet";

// The start of the interactive stage: the last coordinate set loaded, the
// Geometry help written.
void StartViewer(const Session& s, ViewerState& v);

// Copies set v.currentSet into the working coordinates, rebuilds the bond
// list and the mass centre, and writes the coordinate-set line.
void LoadCoordinateSet(Session& s, ViewerState& v);

// The key help of the Geometry view, 33 columns a line.
std::vector<std::string> GeometryHelp(bool hasVibrations);

Outcome DispatchKey(Session& s, ViewerState& v, Key key, Prompts& prompts);

// Whether the menus "Geometry" and "Edit" are enabled: the Geometry view
// greys "Edit", the Fragment edit greys "Geometry", and the menu item
// "F3  Vibration View" greys both until the Geometry view or the Fragment
// edit is entered again (F2, F4, G, or their menu items).
struct ModeMenuStates {
  bool geometry = true, edit = false;
};
ModeMenuStates ModeMenus(const ViewerState& v);
Outcome DispatchMenu(Session& s, ViewerState& v, MenuCommand command, Prompts& prompts);

enum class MouseButton { Left, Right };
// The atom (1-based) whose drawn position is nearest to the pixel; lower
// number on a tie, 0 only without atoms.
int NearestAtom(const Session& s, const ViewerState& v, double px, double py);
// Left marks the nearest atom (a fifth mark starts a new list), right clears.
Outcome Click(Session& s, ViewerState& v, MouseButton button, double px, double py);
// Set `set` on show (a click on the energy plot): as the set keys do, with
// the question when the structure was edited; nothing outside the Geometry
// view or after atoms were added or removed.
Outcome GoToSet(Session& s, ViewerState& v, int set, Prompts& prompts);

// Mouse gestures, as in Avogadro and Jmol: a left drag turns the view half
// a degree a pixel (right turns as the Right key does, up as Up), a middle
// drag moves the picture with the pointer, a wheel notch zooms by 1.1.
Outcome DragTurn(Session& s, ViewerState& v, double dxPixels, double dyPixels);
Outcome DragShift(Session& s, ViewerState& v, double dxPixels, double dyPixels);
Outcome WheelZoom(Session& s, ViewerState& v, int notches);

// The same for a click on atom `atom` (1-based; 0 is a click beside every atom).
Outcome ClickAtom(Session& s, ViewerState& v, MouseButton button, int atom);

}  // namespace quintor

#include "viewer/commands.h"

#include <array>
#include <cmath>
#include <limits>

#include "io/fortran_io.h"
#include "viewer/calculations.h"
#include "viewer/fragment_db.h"
#include "viewer/editing.h"
#include "viewer/scene.h"
#include "viewer/session_files.h"
#include "viewer/vibration.h"
#include "viewer/view_model.h"

namespace quintor {

namespace {

constexpr auto kMenu = std::to_array<MenuEntry>({
    {"&File", "", MenuCommand::NewSession},
    {"&File", "&New Session", MenuCommand::NewSession},
    {"&File", "&Open...", MenuCommand::Open},
    {"&File", "Save &as (xyz, gjf, mop, inp, gzmat)", MenuCommand::SaveAs},
    {"&File", "CalcTD and &Quit", MenuCommand::CalcTDAndQuit},
    {"&File", "E&xit", MenuCommand::Exit},
    {"&Mode", "", MenuCommand::GeometryView},
    {"&Mode", "F&2  Geometry View", MenuCommand::GeometryView},
    {"&Mode", "F&3  Vibration View", MenuCommand::VibrationView},
    {"&Mode", "F&4  Edit Structure", MenuCommand::EditStructure},
    {"&View", "", MenuCommand::Axes},
    {"&View", "&X  Coordinate Axes on/off", MenuCommand::Axes},
    {"&View", "&P  Perspective on/off", MenuCommand::Perspective},
    {"&View", "&I  Atom labels on/off", MenuCommand::Labels},
    {"&View", "&T  Balls-Sticks / Sticks", MenuCommand::Balls},
    {"&View", "&A  Set rotation step", MenuCommand::RotationStep},
    {"&View", "&S  Set translation step", MenuCommand::TranslationStep},
    {"&View", "&W  Set perspective factor", MenuCommand::PerspectiveFactor},
    {"&View", "&E  Set view parameters", MenuCommand::ViewParameters},
    {"&View", "Displacement arrows on/off", MenuCommand::DisplacementArrows},
    {"&Calculations", "", MenuCommand::Thermodynamics},
    {"&Calculations", "&Thermodynamics", MenuCommand::Thermodynamics},
    {"&Calculations", "&Geometry optimization", MenuCommand::GeometryOptimization},
    {"Geometry", "", MenuCommand::NextSet},
    {"Geometry", "&N  Go to the next optimization cycle", MenuCommand::NextSet},
    {"Geometry", "&B  Go to the previous optimization cycle", MenuCommand::PreviousSet},
    {"Geometry", "&0  Go to the first optimization cycle", MenuCommand::FirstSet},
    {"Geometry", "&.  Go to the last optimization cycle", MenuCommand::LastSet},
    {"Geometry", "    Mark/Unmark atoms [L/R Mouse Click]", MenuCommand::MarkAtomsHelp},
    {"Geometry", "&C  Connect/disconect two marked atoms", MenuCommand::Connect},
    {"Geometry", "&K  Save molecular configuration", MenuCommand::SaveConfiguration},
    {"Geometry", "&J  Generate Z-matrix for whole molecule", MenuCommand::ZMatrixMolecule},
    {"Geometry", "&R  Re-Orient molecule by reference atoms A(O), B(OX), C(OXY)", MenuCommand::Reorient},
    {"Edit", "", MenuCommand::MarkFragmentHelp},
    {"Edit", "    Mark/Unmark fragment [L/R Mouse Click]", MenuCommand::MarkFragmentHelp},
    {"Edit", "&N  Add new atom/fragment", MenuCommand::AddFragment},
    {"Edit", "&Y  Set Z-matrix for selected atom", MenuCommand::ZMatrixAtom},
    {"Edit", "&B  Set bond length/rotation angle", MenuCommand::BondOperation},
    {"Edit", "&Z  Reorient fragment by Zmat", MenuCommand::ReorientByZMatrix},
    {"Edit", "Reorient fragment by OXZ", MenuCommand::ReorientOXZ},
    {"Edit", "Place fragment to OXYZ origin", MenuCommand::PlaceAtOrigin},
    {"Edit", "&H  Remove fragment", MenuCommand::RemoveFragment},
    {"Edit", "&K  Save fragment configuration", MenuCommand::SaveFragment},
    {"Edit", "&F  Generate Z-matrix for fragment", MenuCommand::ZMatrixFragment},
    {"Edit", "&G  Store fragment to database", MenuCommand::StoreFragment},
    {"Edit", "=  Set bond length, angle or dihedral of marked atoms", MenuCommand::SetInternal},
    {"Edit", "Undo  Ctrl+Z", MenuCommand::Undo},
    {"Edit", "Redo  Ctrl+Y", MenuCommand::Redo},
    {"&Help", "", MenuCommand::Help},
    {"&Help", "&On-screen navigation", MenuCommand::Help},
    {"&Help", "&About", MenuCommand::About},
});

constexpr double kDeg = constants::DegToRad;

// A later piece of work: said in the Message window, nothing changes. A
// menu item names itself after the text.
Outcome NotYet(ViewerState& v, std::string_view item = {}) {
  v.messages.emplace_back(item.empty() ? std::string(NotAvailable) : std::string(NotAvailable) + ": " + std::string(item));
  return {};
}

// The menu text of a command without its "&" marks.
std::string_view MenuText(MenuCommand command);

enum class SetMove { First, Last, Previous, Next };

Outcome ChangeSet(Session& s, ViewerState& v, SetMove move, Prompts& prompts) {
  Outcome out;
  if (v.atomCountChanged != 0) return out;  // inert, silently
  if (v.structureEdited) {
    const char* question = move == SetMove::First
                               ? "Do you want to switch to initial coordinate set? (Changes will be lost)"
                               : "Do you want to switch to other coordinate set? (Changes will be lost)";
    if (!prompts.AskYesNo(question)) return out;
  }
  int next = v.currentSet;
  switch (move) {
    case SetMove::First:
      next = 0;
      if (s.iCyc < 0) next = s.iCyc, out.beep = true;
      break;
    case SetMove::Last: next = s.iCyc; break;
    case SetMove::Previous:
      next = v.currentSet - 1;
      if (next < -1) next = -1, out.beep = true;
      break;
    case SetMove::Next:
      next = v.currentSet + 1;
      if (next > s.iCyc) next = s.iCyc, out.beep = true;
      break;
  }
  v.currentSet = next;
  LoadCoordinateSet(s, v);
  return out;
}

std::string StepText(double value) { return FmtF(value, 8, 2); }

void AskRotationStep(Session& s, Prompts& p) {
  const double deg = s.view.rotationStep / kDeg;
  s.view.rotationStep = p.AskReal(" Rotation step is" + StepText(deg) + " deg. Enter new step in degrees", deg) * kDeg;
}

// Both lengths are kept and asked in bohr, and the prompts say so.
void AskTranslationStep(Session& s, Prompts& p) {
  const double step = s.view.translationStep;
  s.view.translationStep =
      p.AskReal(" Translation step is" + StepText(step) + " bohr. Enter new step in bohr", step);
}

void AskPerspectiveDistance(Session& s, Prompts& p) {
  const double d = s.view.perspectiveDistance;
  s.view.perspectiveDistance =
      p.AskReal(" Current perspective distance is" + StepText(d) + " bohr. Enter new value in bohr:", d);
}

Outcome EnterGeometryView(ViewerState& v) {
  v.mode = ViewerMode::Geometry;
  v.modeMenusGreyed = false;
  v.help = GeometryHelp(v.hasVibrations);
  Outcome out;
  out.helpChanged = true;
  return out;
}

void Toggle(int& flag) { flag = -flag; }

}  // namespace

std::span<const MenuEntry> MenuTable() { return kMenu; }

namespace {

std::string_view MenuText(MenuCommand command) {
  static std::array<std::string, kMenu.size()> plain;
  for (size_t k = 0; k < kMenu.size(); ++k) {
    if (kMenu[k].command != command || kMenu[k].text.empty()) continue;
    if (plain[k].empty())
      for (char c : kMenu[k].text)
        if (c != '&') plain[k] += c;
    return plain[k];
  }
  return {};
}

}  // namespace

std::vector<std::string> GeometryHelp(bool hasVibrations) {
  std::vector<std::string> lines = {
      " *** Geometry view mode ***", " ARROWS, END, PGDN - rotation", " CTRL-ARROWS       - moving",
      " +,- - zooming the view"};
  if (hasVibrations) lines.emplace_back(" F3  - view vibrations");
  for (const char* l : {" F4  - edit the molecule", " F10 - exit program", " 9,N - next coordinate set",
                        " 7,B - back to previous set", " 5   - set initial orientation", " 0   - first coordinate set",
                        " .   - last coordinate set", " X   - coordinate axes on/off", " I   - identifiers on/off",
                        " T   - balls on/off", " P   - perspective view on/off", " W   - set perspective factor",
                        " C   - connect two marked atoms", " S   - set the translation step",
                        " A   - set the rotation step", " K   - save configuration to disk"})
    lines.emplace_back(l);
  if (hasVibrations) lines.emplace_back(" V   - view vibrations");
  for (const char* l : {" Click Left  -   mark atom", " Click Right - unmark atoms", " 4,6 - rotation around X-axis",
                        " 2,8 - rotation around Y-axis", " 1,3 - rotation around Z-axis", " R,L - horizontal shift",
                        " U,D - vertical shift", " Q   - quit"})
    lines.emplace_back(l);
  for (auto& l : lines) l.resize(std::max<size_t>(l.size(), 33), ' ');
  return lines;
}

void LoadCoordinateSet(Session& s, ViewerState& v) {
  const CoordSet& set = s.Set(v.currentSet);
  // The set is copied whole. An atom it does not hold (set -1 of a log that
  // printed no starting geometry) stands at the origin, as in a set never
  // filled: what is on screen is always the set the row names.
  for (int i = 0; i < s.nAtoms; ++i) s.xyz[i] = static_cast<size_t>(i) < set.xyz.size() ? set.xyz[i] : Vec3{};
  v.bonds = ViewerBonds(s, &v.messages);
  Vec3 centre{};
  double mass = 0.0;
  for (int i = 0; i < s.nAtoms; ++i) {
    const double m = static_cast<size_t>(i) < s.atomMass.size() ? s.atomMass[i] : 0.0;
    for (int k = 0; k < 3; ++k) centre[k] += m * s.xyz[i][k];
    mass += m;
  }
  if (mass > 0.0)
    for (double& c : centre) c /= mass;
  v.massCentre = centre;
  v.setLine = CoordinateSetLine(v.currentSet, set);
}

void StartViewer(const Session& s, ViewerState& v) {
  v.currentSet = s.iCyc;  // the run opens on the last set
  v.hasVibrations = !s.modes.empty();
  v.nVib = static_cast<int>(s.modes.size());
  v.help = GeometryHelp(v.hasVibrations);
  v.mode = ViewerMode::Geometry;
}

Outcome DispatchKey(Session& s, ViewerState& v, Key key, Prompts& prompts) {
  if (v.film.running) {
    Outcome film;
    film.redraw = false;
    film.beep = !FilmKey(v, key);
    return film;
  }
  if (v.mode == ViewerMode::Vibration) return DispatchVibrationKey(s, v, key, prompts);
  if (auto edit = DispatchEditKey(s, v, key, prompts)) return *edit;
  ViewState& view = s.view;
  const double step = view.rotationStep;
  Outcome out;
  if (key.code == 0 || key.code == 224) {
    switch (key.ext) {
      case ext_key::F1: out.showHelp = true; return out;
      case ext_key::F2: return EnterGeometryView(v);
      case ext_key::F3: return v.hasVibrations ? EnterVibrationView(s, v, prompts) : out;
      case ext_key::F4: EnterEditMode(v), out.helpChanged = true; return out;
      case ext_key::F10: out.ending = Ending::Exit; return out;
      case ext_key::Right: RotateView(view, 0, +step, 0); return out;
      case ext_key::Left: RotateView(view, 0, -step, 0); return out;
      case ext_key::Up: RotateView(view, 0, 0, +step); return out;
      case ext_key::Down: RotateView(view, 0, 0, -step); return out;
      case ext_key::End: RotateView(view, -step, 0, 0); return out;
      case ext_key::PgDn: RotateView(view, +step, 0, 0); return out;
      case ext_key::CtrlRight: view.shiftX += view.translationStep; return out;
      case ext_key::CtrlLeft: view.shiftX -= view.translationStep; return out;
      case ext_key::CtrlUp: view.shiftY += view.translationStep; return out;
      case ext_key::CtrlDown: view.shiftY -= view.translationStep; return out;
      case ext_key::PgUp: return ChangeSet(s, v, SetMove::Next, prompts);
      case ext_key::Home: return ChangeSet(s, v, SetMove::Previous, prompts);
      case ext_key::Ins: return ChangeSet(s, v, SetMove::First, prompts);
      case ext_key::Del: return ChangeSet(s, v, SetMove::Last, prompts);
      default: return out;
    }
  }
  switch (key.code) {
    case 'a': case 'A': AskRotationStep(s, prompts); return out;
    case 's': case 'S': AskTranslationStep(s, prompts); return out;
    case 'w': case 'W': AskPerspectiveDistance(s, prompts); return out;
    case 'v': case 'V': return v.hasVibrations ? EnterVibrationView(s, v, prompts) : out;
    case 'q': case 'Q': out.ending = Ending::Exit; return out;
    case '6': RotateView(view, 0, +step, 0); return out;
    case '4': RotateView(view, 0, -step, 0); return out;
    case '8': RotateView(view, 0, 0, +step); return out;
    case '2': RotateView(view, 0, 0, -step); return out;
    case '1': RotateView(view, -step, 0, 0); return out;
    case '3': RotateView(view, +step, 0, 0); return out;
    case 'r': case 'R': view.shiftX += view.translationStep; return out;
    case 'l': case 'L': view.shiftX -= view.translationStep; return out;
    case 'u': case 'U': view.shiftY += view.translationStep; return out;
    case 'd': case 'D': view.shiftY -= view.translationStep; return out;
    case '+': view.zoom *= 1.1; return out;
    case '-': view.zoom /= 1.1; return out;
    case '5':
      if (prompts.AskYesNo("Come back to initial orientation?")) ResetView(view);
      return out;
    case '9': case 'n': case 'N': return ChangeSet(s, v, SetMove::Next, prompts);
    case '7': case 'b': case 'B': return ChangeSet(s, v, SetMove::Previous, prompts);
    case '0': return ChangeSet(s, v, SetMove::First, prompts);
    case '.': return ChangeSet(s, v, SetMove::Last, prompts);
    case 'x': case 'X': Toggle(view.showAxes); return out;
    case 'i': case 'I': Toggle(view.showLabels); return out;
    case 'p': case 'P': Toggle(view.perspectiveOn); return out;
    case 't': case 'T': Toggle(view.showBalls); return out;
    case 'm': case 'M': Toggle(v.noteFlag); return out;
    default: return out;
  }
}

ModeMenuStates ModeMenus(const ViewerState& v) {
  if (v.modeMenusGreyed) return {false, false};
  const bool edit = v.mode == ViewerMode::FragmentEdit;
  return {!edit, edit};
}

Outcome DispatchMenu(Session& s, ViewerState& v, MenuCommand command, Prompts& prompts) {
  if (!v.film.running)
    if (auto edit = DispatchEditMenu(s, v, command, prompts)) return *edit;
  Outcome out;
  switch (command) {
    case MenuCommand::CalcTDAndQuit: out.ending = Ending::CalcTDAndQuit; return out;
    case MenuCommand::Exit: out.ending = Ending::Exit; return out;
    case MenuCommand::GeometryView: return EnterGeometryView(v);
    case MenuCommand::VibrationView:
      v.modeMenusGreyed = true;
      prompts.ShowMessage("To start animation, press F3 and set the vibration mode number.");
      return out;
    case MenuCommand::Axes: Toggle(s.view.showAxes); return out;
    case MenuCommand::DisplacementArrows: v.showArrows = !v.showArrows; return out;
    case MenuCommand::Perspective: Toggle(s.view.perspectiveOn); return out;
    case MenuCommand::Labels: Toggle(s.view.showLabels); return out;
    case MenuCommand::Balls: Toggle(s.view.showBalls); return out;
    case MenuCommand::RotationStep: AskRotationStep(s, prompts); return out;
    case MenuCommand::TranslationStep: AskTranslationStep(s, prompts); return out;
    case MenuCommand::PerspectiveFactor: AskPerspectiveDistance(s, prompts); return out;
    case MenuCommand::NextSet: return ChangeSet(s, v, SetMove::Next, prompts);
    case MenuCommand::PreviousSet: return ChangeSet(s, v, SetMove::Previous, prompts);
    case MenuCommand::FirstSet: return ChangeSet(s, v, SetMove::First, prompts);
    case MenuCommand::LastSet: return ChangeSet(s, v, SetMove::Last, prompts);
    case MenuCommand::MarkAtomsHelp:
      prompts.ShowMessage(
          "To Mark/Unmark atom, click LEFT/RIGHT MOUSE BUTTONS on the selected atom. Up to 4 atoms can be marked.");
      return out;
    case MenuCommand::MarkFragmentHelp:
      prompts.ShowMessage(
          "To Mark/Unmark fragment, click LEFT/RIGHT MOUSE BUTTONS on the selected molecular fragment.");
      return out;
    case MenuCommand::Thermodynamics: return ThermodynamicsCommand(s, v, prompts);
    case MenuCommand::GeometryOptimization: return GeometryOptimizationCommand(s, v, prompts);
    case MenuCommand::AddFragment: AddFragmentCommand(s, v, prompts); return out;
    case MenuCommand::StoreFragment: StoreFragmentCommand(s, v, prompts); return out;
    case MenuCommand::NewSession: return NewSessionCommand(s, v);
    case MenuCommand::Open: return OpenCommand(s, v, prompts);
    case MenuCommand::Help: out.showHelp = true; return out;
    case MenuCommand::About:
      prompts.ShowMessage("QUINTOR v. 2.5\nA program for the molecular geometry visualization,normal mode "
                          "animation and thermochemical properties evaluation.\nQuintor for Linux: C++20 edition");
      return out;
    default: return NotYet(v, MenuText(command));
  }
}

int NearestAtom(const Session& s, const ViewerState& v, double px, double py) {
  const auto [wx, wy] = WindowToWorld(v.window, px, py);
  int best = 0;
  double bestD2 = std::numeric_limits<double>::infinity();
  for (int i = 0; i < s.nAtoms && static_cast<size_t>(i) < v.screen.size(); ++i) {
    const auto [x, y] = DrawnPosition(s, v, i);
    const double d2 = (x - wx) * (x - wx) + (y - wy) * (y - wy);
    if (d2 < bestD2) bestD2 = d2, best = i + 1;
  }
  return best;
}

Outcome Click(Session& s, ViewerState& v, MouseButton button, double px, double py) {
  return ClickAtom(s, v, button, NearestAtom(s, v, px, py));
}

Outcome GoToSet(Session& s, ViewerState& v, int set, Prompts& prompts) {
  Outcome out;
  if (v.mode != ViewerMode::Geometry || v.atomCountChanged != 0 || set < -1 || set > s.iCyc) return out;
  if (v.structureEdited && !prompts.AskYesNo("Do you want to switch to other coordinate set? (Changes will be lost)"))
    return out;
  v.currentSet = set;
  LoadCoordinateSet(s, v);
  return out;
}

Outcome DragTurn(Session& s, ViewerState&, double dx, double dy) {
  constexpr double kPerPixel = 0.5 * kDeg;
  if (dx != 0.0) RotateView(s.view, 0, dx * kPerPixel, 0);
  if (dy != 0.0) RotateView(s.view, 0, 0, -dy * kPerPixel);
  return {};
}

Outcome DragShift(Session& s, ViewerState& v, double dx, double dy) {
  const double perPixel = 1.0 / (PixelsPerBohr(v.window) * s.view.zoom);
  s.view.shiftX += dx * perPixel;
  s.view.shiftY -= dy * perPixel;  // rows run down, the world's y up
  return {};
}

Outcome WheelZoom(Session& s, ViewerState&, int notches) {
  s.view.zoom *= std::pow(1.1, notches);
  return {};
}

Outcome ClickAtom(Session& s, ViewerState& v, MouseButton button, int a) {
  Outcome out;
  if (v.mode == ViewerMode::Vibration) {  // both buttons stop the film at the end of its period
    v.film.stopRequested = true;
    out.redraw = false;
    return out;
  }
  if (v.mode == ViewerMode::FragmentEdit) {
    ClickFragment(s, v, button, a);
    return out;
  }
  if (button == MouseButton::Right) {
    v.marked.clear();
    return out;
  }
  if (a == 0) return out;
  for (int m : v.marked)
    if (m == a) return out;
  if (static_cast<int>(v.marked.size()) + 1 > MaxMarked) v.marked.clear();
  v.marked.push_back(a);
  return out;
}

}  // namespace quintor

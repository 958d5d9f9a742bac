// Editing the structure in the viewer: the fragment of the edit mode, its
// shifts and turns, the bond operation, connecting and removing atoms,
// reorientation, the saved configurations, typed bond lengths, angles and
// dihedrals, and undo. Everything works on the working coordinates of the
// Session, in bohr, in the molecular frame.
#pragma once

#include <optional>
#include <string>

#include "model/session.h"
#include "viewer/commands.h"
#include "viewer/viewer_state.h"

namespace quintor {

// The element symbol of an atom (1-based) without blanks: the viewer's
// list when the run gave one, else the atom's label without its digits.
std::string SymbolOf(const Session& s, const ViewerState& v, int atom);

// The fragment of the edit mode is sized to the atoms (all out).
void EnsureFragmentMarks(const Session& s, ViewerState& v);
bool InFragment(const ViewerState& v, int atom);  // 1-based
void EnterEditMode(ViewerState& v);
std::vector<std::string> EditHelp(bool hasVibrations);

// Left: the atom's connected piece joins the fragment, or leaves it when
// it is in; right clears the fragment. The marked atoms are not touched.
void ClickFragment(const Session& s, ViewerState& v, MouseButton button, int atom);

// op 1..3 shifts by `step` bohr along the screen's x, y, z; 0 turns by the
// last rotation of the view about the fragment's centre of mass; -1 puts
// that centre at the origin; -2 turns the fragment onto its principal
// axes; -3 goes back to the coordinates of the last click.
void MoveFragment(Session& s, ViewerState& v, int op, double step);

// Turns the fragment by `angle` degrees about the axis A->B (right-hand
// screw) and pushes it along the axis until A-B is `distance` A (0 keeps
// the length). `bMoves` says whether B stands on the moving side.
void RotateAboutAxis(Session& s, ViewerState& v, const Vec3& a, const Vec3& b, bool bMoves, double distance,
                     double angle);
// The same with atom numbers (1-based).
void RotateAboutAxis(Session& s, ViewerState& v, int a, int b, double distance, double angle);

void BondOperation(Session& s, ViewerState& v, Prompts& p);
void ConnectAtoms(Session& s, ViewerState& v, Prompts& p);
void RemoveFragment(Session& s, ViewerState& v);
int OrientFragment(Session& s, ViewerState& v, int flag, Prompts& p);
void ReorientMolecule(Session& s, ViewerState& v, Prompts& p);
void SaveConfiguration(Session& s, const ViewerState& v, Prompts& p);
void SaveFragmentConfiguration(Session& s, const ViewerState& v, Prompts& p);

// Sets the bond length (2 marked atoms), valence angle (3) or dihedral (4,
// IUPAC sign) of the marked atoms to a typed value, moving the smaller of
// the two sides of the bond that changes.
void SetInternalCoordinate(Session& s, ViewerState& v, Prompts& p);

// A number typed in a dialog: an answer that is not a number brings the
// dialog back with `name` in its caption and the old value.
double AskNumber(Prompts& p, const std::string& caption, const std::string& name, double value);

// Runs `edit`; if it changed the structure the state before it goes on the
// undo list under `what`, and the redo list is emptied.
template <class Edit>
void Undoable(Session& s, ViewerState& v, const std::string& what, Edit&& edit);
StructureSnapshot TakeSnapshot(const Session& s, const ViewerState& v, const std::string& what);
void RecordEdit(Session& s, ViewerState& v, StructureSnapshot before);
bool Undo(Session& s, ViewerState& v);
bool Redo(Session& s, ViewerState& v);

template <class Edit>
void Undoable(Session& s, ViewerState& v, const std::string& what, Edit&& edit) {
  StructureSnapshot before = TakeSnapshot(s, v, what);
  edit();
  RecordEdit(s, v, std::move(before));
}

// The keys and menu items of the edit mode and the editing keys of the
// Geometry view; nullopt for a key that is not theirs.
std::optional<Outcome> DispatchEditKey(Session& s, ViewerState& v, Key key, Prompts& p);
std::optional<Outcome> DispatchEditMenu(Session& s, ViewerState& v, MenuCommand c, Prompts& p);

}  // namespace quintor

// Z-matrices in the viewer: the rows of one atom, of the fragment and of
// the whole structure from the present geometry, written to the MainLog;
// an atom placed from typed internal coordinates; the fragment moved by a
// length, an angle and a dihedral; the whole-structure Z-matrix as a
// Gaussian Z-matrix file. Dihedrals carry the IUPAC sign.
#pragma once

#include <string>
#include <vector>

#include "model/session.h"
#include "viewer/commands.h"
#include "viewer/viewer_state.h"

namespace quintor {

// A row of a Z-matrix: atom X, its length to ref1 (bohr), the angle
// X-ref1-ref2 and the dihedral X-ref1-ref2-ref3 (degrees); 0 for a
// reference the row does not have.
struct ZRow {
  int atom = 0;
  int ref1 = 0, ref2 = 0, ref3 = 0;
  double length = 0.0, valenceAngle = 0.0, dihedral = 0.0;
};

// The row of `x` on the references a, b, c (any may be 0) from the geometry.
ZRow MakeZRow(const std::vector<Vec3>& xyz, int x, int a, int b, int c);

// The position with length r (bohr) to a, angle alpha at a towards b and
// IUPAC dihedral theta to c (degrees); on the line b->a when alpha is 180.
Vec3 ZPosition(const Vec3& a, const Vec3& b, const Vec3& c, double r, double alpha, double theta);

// The rows of the whole structure from the first three atoms a, b, c: then
// each time the unplaced atom nearest to the oldest of the last three placed
// (the higher number on a tie), on those three.
std::vector<ZRow> StructureZRows(const Session& s, int a, int b, int c);

// Writes `rows` as a Gaussian Z-matrix input (route, title, charge and
// multiplicity, the rows by atom number, then "Variables:" with the
// values), which Gaussian and Open Babel read. False when it can not write.
bool WriteGaussianZMatrix(const Session& s, const ViewerState& v, const std::vector<ZRow>& rows,
                          const std::string& path);

// X from typed values: type 1 length, angle, dihedral; 2 length to A,
// length to B, dihedral; 3 Cartesian. Lengths in A. Writes X's new place.
void PlaceAtom(Session& s, const ViewerState& v, int type, int x, int a, int b, int c, double r, double second, double dihedral,
               const Vec3& cartesian);

int ZMatrixForAtom(Session& s, ViewerState& v, Prompts& p);
int ZMatrixForFragment(Session& s, ViewerState& v, Prompts& p);
int ZMatrixForStructure(Session& s, ViewerState& v, Prompts& p);
int ReorientByZMatrix(Session& s, ViewerState& v, Prompts& p);

}  // namespace quintor

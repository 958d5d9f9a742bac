// Mass centre, inertia tensor, principal moments and axes, rotational
// constants, type of top, and reorientation by three reference atoms.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "numeric/constants.h"
#include "numeric/vec3.h"

namespace quintor {

// Type of top. NoTop arises only when the tolerances contradict each other.
enum TopType : int {
  NoTop = 0,
  SphericalTop = 1,
  ProlateTop = 2,
  OblateTop = 3,
  AsymmetricTop = 4,
  LinearTop = 5,
  SingleAtom = 6,
};

// "Spherical Top", ..., "Single-atom molecule"; empty for NoTop.
std::string_view TopName(int top);

// Moments below this are taken as zero: their "constant" is the moment itself.
inline constexpr double SmallMoment = 1.0e-10;

double MolecularMass(const std::vector<double>& mass);

// Sum of m r, each term divided by the molecular mass before it is added.
// The origin when the molecule has no mass.
Vec3 MassCentre(const std::vector<Vec3>& xyz, const std::vector<double>& mass);

// Inertia tensor about the origin, in the units of the input (mass times length^2).
Mat3 InertiaTensor(const std::vector<Vec3>& xyz, const std::vector<double>& mass);

// Everything the report needs about the inertia of one geometry.
struct InertiaAnalysis {
  double molMass = 0.0;                 // amu
  Vec3 centre{};                        // bohr, in the frame of the input coordinates
  std::vector<Vec3> centred;            // bohr, the input moved so that the centre is the origin
  Mat3 tensor{};                        // amu bohr^2
  Vec3 moments{};                       // Ia <= Ib <= Ic, amu bohr^2
  Mat3 axes{};                          // principal axes in columns, in the order of the moments
  Vec3 rotConst{};                      // 1/moment in 1/(amu bohr^2); the moment itself when below SmallMoment
  Vec3 rotConstGHz{};                   // rotConst * 1804.74
  Vec3 momentsAngstrom{};               // amu A^2
  std::vector<Vec3> principalCoords;    // Angstrom, projections on the axes (not made right-handed)

  // A linear molecule or a single atom: some moment is (nearly) zero.
  bool Linear() const { return moments[0] < SmallMoment; }
};

// Inertia analysis of a geometry in bohr with masses in amu. Throws
// JacobiFailure if the tensor does not converge.
InertiaAnalysis AnalyseInertia(const std::vector<Vec3>& xyzBohr, const std::vector<double>& mass);

// The principal frame of a private copy in Angstrom, as the symmetry
// recognition uses it.
struct PrincipalFrameResult {
  int top = NoTop;
  Vec3 centre{};                        // Angstrom
  Vec3 moments{};                       // amu A^2: descending, or ascending when axisOrder > 0
  Mat3 axes{};                          // unit axes in columns, in the order of the moments
  std::vector<Vec3> xyz;                // centred copy; in the principal frame when rotated
  bool rotated = false;
};

// axisOrder > 0 exchanges the first and third moment and axis so that the
// moments ascend; 0 keeps the descending order and normalises the axes; < 0
// keeps the descending order. A non-zero handedness fixes the sign of
// (e1 x e2).e3 by reversing e3. Symmetric tops, and any top when rotate > 0,
// are turned into the principal frame: the largest moment along X, the
// smallest along Z, so that a prolate top has its unique axis along Z and an
// oblate one along X. For oblate tops (and NoTop) the centre is added back.
// Throws JacobiFailure like AnalyseInertia.
PrincipalFrameResult PrincipalFrame(int axisOrder, int handedness, int rotate,
                                    const std::vector<Vec3>& xyzAngstrom,
                                    const std::vector<double>& mass);

// ---- Reorientation by three reference atoms (/ORIENT, the viewer's O-X-Y) ----

inline constexpr const char* MarkThreeAtomsText =
    "To re-orient molecule relatively OXYZ axes, mark 3 atoms in order O-X-Y.";

struct Reorientation {
  Mat3 matrix{};             // rows are the new unit axes
  std::vector<Vec3> xyz;     // atom O at the origin, X on +X, Y in the XY plane with y > 0
};

// Atom numbers are 1-based, as the user gives them. Nothing when one of them
// is not an atom of `xyz`. Collinear atoms give an undefined frame (zero axes).
std::optional<Reorientation> ReorientByAtoms(const std::vector<Vec3>& xyz, int atomO, int atomX,
                                             int atomY);

// Turns displacement vectors by `matrix` (no translation).
void TurnVectors(const Mat3& matrix, std::vector<Vec3>& vectors);

// /ORIENT on every coordinate set: sets[k] is set firstIndex + k (the sets
// from -1 to iCyc). Each set is reoriented by its own reference frame; the
// mode displacements are then turned by the matrix of the last set.
// Returns the lines for the MainLog.
struct OrientedSets {
  std::vector<std::string> lines;
  Mat3 lastMatrix = geom::UnitMatrix();
};
OrientedSets OrientSetsByAtoms(std::vector<std::vector<Vec3>>& sets, int firstIndex,
                               const std::array<int, 3>& atoms,
                               const std::vector<std::string>& names,
                               const std::vector<int>& nuclear,
                               std::vector<std::vector<Vec3>>& modeDisplacements);

// ---- Report blocks ----------------------------------------------------------------

// Table of atoms: rules, header " Name  Nuc  X  Y  Z", one row an atom with
// X, Y, Z in F15.8 (Angstrom), a closing rule.
std::vector<std::string> AtomTableLines(const std::vector<std::string>& names,
                                        const std::vector<int>& nuclear,
                                        const std::vector<Vec3>& xyzAngstrom);

// " Mass center, mol.mass:" with the centre in Angstrom.
std::string MassCentreLine(const InertiaAnalysis& inertia);

// " Distance matrix (A):" and the lower triangle, in blocks of eight columns.
std::vector<std::string> DistanceMatrixLines(const std::vector<std::string>& names,
                                             const std::vector<Vec3>& xyzBohr);

// Moments, constants, axes and the coordinates in the principal frame.
std::vector<std::string> PrincipalMomentsLines(const InertiaAnalysis& inertia,
                                               const std::vector<std::string>& names,
                                               const std::vector<int>& nuclear);

// Mass centre, distance matrix and principal moments blocks in report order.
std::vector<std::string> InertiaReportLines(const InertiaAnalysis& inertia,
                                            const std::vector<std::string>& names,
                                            const std::vector<int>& nuclear,
                                            const std::vector<Vec3>& xyzBohr);

}  // namespace quintor

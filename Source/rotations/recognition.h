// Internal rotations found from the geometry alone: the bonds about which a
// part of the molecule can turn a full circle without meeting the rest, the
// two groups of each, the symmetry number, and the Cartesian displacement
// of each rotation, which ties it to a normal mode.
//
// Atom numbers are 1-based, as in IntRot. An axis atom 0 stands for the
// centre of mass of the group on that side.
#pragma once

#include <string>
#include <vector>

#include "io/main_log.h"
#include "model/session.h"
#include "numeric/vec3.h"

namespace quintor {

// x' = origin + matrix (x - origin): a turn by `angle` degrees about the line
// from p1 to p2, counter-clockwise seen from p2. Built as three elementary
// rotations: the axis onto z, the turn about z, and back. Throws
// RotationAxisError when p1 and p2 coincide.
Mat3 IntRotMat(const Vec3& p1, const Vec3& p2, double angle);

// Turns the listed atoms of `xyz` by `angle` degrees about the line p1-p2.
void RotateAtoms(const Vec3& p1, const Vec3& p2, double angle, const std::vector<int>& atoms,
                 std::vector<Vec3>& xyz);

// The two axis points of a rotation: the axis atoms, or the centre of mass
// of the group on that side for an atom number 0; swapped when needed so that
// point 1 belongs to `group` (the rotating group).
struct AxisPoints {
  Vec3 p1{}, p2{};
  int atom1 = 0, atom2 = 0;  // after the swap
};
AxisPoints RotationAxisPoints(const std::vector<double>& masses, const std::vector<Vec3>& xyz,
                              const std::vector<int>& group, const std::vector<int>& axis);

// What the recognition found.
struct Recognition {
  std::vector<IntRot> rotors;  // axis {rotating side, other side}, group = rotating side
  // n1, n2 of the two groups. The potential repeats after a turn by 360/n1
  // and by 360/n2, so its period, and the symmetry number of the rotation,
  // is lcm(n1, n2) (ethane 3, toluene 6); `foldProduct` gives n1 n2 instead,
  // as runs of the earlier program printed it.
  std::vector<int> symmetry1, symmetry2;
  // Per rotation, per atom: displacement per radian of turn, Angstrom.
  std::vector<std::vector<Vec3>> displacement;
};

// ARIR: fragments, candidate bonds, the 36-step clash test, symmetry numbers
// and displacement vectors of the molecule `xyzAngstrom`, with every line of
// its report written to `log`. `names` label the rows of the displacements.
Recognition ARIR(const std::vector<int>& nuclear, const std::vector<double>& masses,
                 const std::vector<Vec3>& xyzAngstrom, const std::vector<std::string>& names, MainLog& log,
                 bool foldProduct = false);

// The symmetry number of a rotation whose groups have folds n1 and n2.
int RotationFold(int n1, int n2, bool foldProduct);

}  // namespace quintor

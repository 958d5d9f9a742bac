// Reduced moments of inertia of an internal rotation: I(*) from the moments
// of the two groups about the axis, and I(**) of a top on a frame, the
// rotating group's moment less what the overall translation and rotation of
// the molecule take up (Pitzer, J. Chem. Phys. 14, 239 (1946)).
//
// Units are those of the arguments: masses in amu and coordinates in bohr
// give amu*bohr^2. Atom numbers are 1-based.
#pragma once

#include <array>
#include <stdexcept>
#include <vector>

namespace quintor {

using Vec3 = std::array<double, 3>;

// Thrown when the two points of an axis coincide.
class RotationAxisError : public std::runtime_error {
 public:
  RotationAxisError() : std::runtime_error("-- Stop in IntRotMat: Rotation axis has a zero length.") {}
};

// Mass and moment of one group about the axis.
struct GroupInertia {
  double mass = 0.0;
  double moment = 0.0;  // sum of m d^2, d the distance from the axis line
};

// Centre of mass of the listed atoms: the axis point of a group whose axis
// atom is given as 0.
Vec3 GroupCentreOfMass(const std::vector<double>& masses, const std::vector<Vec3>& xyz,
                       const std::vector<int>& atoms);

// The atoms 1..atomCount that are not in `group`: the other side of a rotation.
std::vector<int> OtherGroup(int atomCount, const std::vector<int>& group);

GroupInertia GroupAboutAxis(const std::vector<double>& masses, const std::vector<Vec3>& xyz,
                            const std::vector<int>& group, const Vec3& axis1, const Vec3& axis2);

// I(*) = I1 I2 / (I1 + I2) of the two groups about the axis through axis1
// and axis2; 0 when both moments vanish.
struct TwoGroupMoment {
  GroupInertia group1, group2;
  double reduced = 0.0;
};
TwoGroupMoment ReducedMomentOfGroups(const std::vector<double>& masses, const std::vector<Vec3>& xyz,
                                     const std::vector<int>& group1, const std::vector<int>& group2,
                                     const Vec3& axis1, const Vec3& axis2);

// I(**) of the top `top` turning about the axis through axis1 and axis2
// against the rest of the molecule (all atoms of `xyz`):
//
//   I(**) = A - |t|^2 / M - sum_i (L . e_i)^2 / I_i
//
// A the top's moment about its axis; t = sum_top m  lambda x (r - P), the
// momentum the internal motion gives to the molecule (non-zero when the top's
// centre of mass is off the axis); L = sum_top m (r - R) x (lambda x (r - P)),
// its angular momentum about the molecule's centre of mass R; I_i and e_i the
// principal moments and axes of the whole molecule; M its mass. For a
// symmetric top (L = A lambda, t = 0) this is Pitzer's A - A^2 sum_i
// alpha_i^2 / I_i, alpha_i the direction cosines of the axis. The value is
// the same whichever side is taken as the top.
double PitzerReducedMoment(const std::vector<double>& masses, const std::vector<Vec3>& xyz,
                           const std::vector<int>& top, const Vec3& axis1, const Vec3& axis2);

}  // namespace quintor

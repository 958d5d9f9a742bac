// Internal coordinates of the structure: lengths, valence angles and
// dihedrals of atom positions. Dihedrals carry the IUPAC sign everywhere
// (the sign of Gaussian and Open Babel): looking from b to c, positive when
// a turns clockwise onto d. A Z-matrix written with it builds the molecule
// and not its mirror image.
#pragma once

#include "numeric/vec3.h"

namespace quintor {

// The length of a vector.
double Distance(const Vec3& u);

// The angle a-b-c at b in degrees, from 0 to 180; collinear atoms give 0
// or 180 exactly, a or c on b gives 0.
double BondAngle(const Vec3& a, const Vec3& b, const Vec3& c);

// The dihedral a-b-c-d in degrees, from -180 to 180, IUPAC sign: with
// a = (1,0,0), b = 0, c = (0,0,1), d = (0,1,1) it is +90. Three collinear
// atoms on either side give 0.
double TorsionAngle(const Vec3& a, const Vec3& b, const Vec3& c, const Vec3& d);

// The cross product and its length in one operation.
struct CrossWithNorm {
  Vec3 vector;
  double norm;
};
CrossWithNorm CrossNorm(const Vec3& a, const Vec3& b);

}  // namespace quintor

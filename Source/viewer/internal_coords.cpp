#include "viewer/internal_coords.h"

#include <cmath>

#include "numeric/constants.h"

namespace quintor {

using namespace geom;

// Angles come from arc tangents of sine and cosine parts rather than from
// an arc cosine: the arc cosine of a cosine near +-1 loses half the digits
// (and a cosine rounded to within 1e-6 of +-1 would turn every angle below
// 0.08 degrees into 0), which a Z-matrix written from these values would
// carry into the rebuilt structure. Collinear atoms still give 0 or 180
// exactly, and no rounding can take the cosine past +-1.

double Distance(const Vec3& u) { return Norm(u); }

double BondAngle(const Vec3& a, const Vec3& b, const Vec3& c) {
  const Vec3 u = a - b, v = c - b;
  return std::atan2(Norm(Cross(u, v)), Dot(u, v)) / constants::DegToRad;
}

double TorsionAngle(const Vec3& a, const Vec3& b, const Vec3& c, const Vec3& d) {
  const Vec3 b1 = b - a, b2 = c - b, b3 = d - c;
  const Vec3 n1 = Cross(b1, b2), n2 = Cross(b2, b3);
  const double x = Norm(b2) * Dot(n1, n2);
  const double y = Dot(Cross(n1, n2), b2);
  return std::atan2(y, x) / constants::DegToRad;  // atan2(0, 0) = 0 for collinear atoms
}

CrossWithNorm CrossNorm(const Vec3& a, const Vec3& b) {
  const Vec3 c = Cross(a, b);
  return {c, Norm(c)};
}

}  // namespace quintor

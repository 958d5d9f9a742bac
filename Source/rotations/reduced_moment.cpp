#include "rotations/reduced_moment.h"

#include <algorithm>
#include <cmath>

#include "numeric/jacobi.h"

namespace quintor {

namespace {

Vec3 Sub(const Vec3& a, const Vec3& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
Vec3 Cross(const Vec3& a, const Vec3& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
double Dot(const Vec3& a, const Vec3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

Vec3 UnitAxis(const Vec3& axis1, const Vec3& axis2) {
  const Vec3 d = Sub(axis2, axis1);
  const double length = std::sqrt(Dot(d, d));
  if (length == 0.0) throw RotationAxisError();
  return {d[0] / length, d[1] / length, d[2] / length};
}

// Principal moments below this fraction of the largest belong to the axis of
// a linear molecule; no rotation about it can take up angular momentum.
constexpr double kLinearMoment = 1e-10;

}  // namespace

Vec3 GroupCentreOfMass(const std::vector<double>& masses, const std::vector<Vec3>& xyz,
                       const std::vector<int>& atoms) {
  Vec3 c{0.0, 0.0, 0.0};
  double mass = 0.0;
  for (int a : atoms) {
    const double m = masses[a - 1];
    for (int k = 0; k < 3; ++k) c[k] += m * xyz[a - 1][k];
    mass += m;
  }
  if (mass > 0.0)
    for (double& v : c) v /= mass;
  return c;
}

std::vector<int> OtherGroup(int atomCount, const std::vector<int>& group) {
  std::vector<int> other;
  for (int a = 1; a <= atomCount; ++a)
    if (std::find(group.begin(), group.end(), a) == group.end()) other.push_back(a);
  return other;
}

GroupInertia GroupAboutAxis(const std::vector<double>& masses, const std::vector<Vec3>& xyz,
                            const std::vector<int>& group, const Vec3& axis1, const Vec3& axis2) {
  const Vec3 lambda = UnitAxis(axis1, axis2);
  GroupInertia g;
  for (int a : group) {
    const double m = masses[a - 1];
    const Vec3 d = Cross(lambda, Sub(xyz[a - 1], axis1));
    g.mass += m;
    g.moment += m * Dot(d, d);
  }
  return g;
}

TwoGroupMoment ReducedMomentOfGroups(const std::vector<double>& masses, const std::vector<Vec3>& xyz,
                                     const std::vector<int>& group1, const std::vector<int>& group2,
                                     const Vec3& axis1, const Vec3& axis2) {
  TwoGroupMoment r;
  r.group1 = GroupAboutAxis(masses, xyz, group1, axis1, axis2);
  r.group2 = GroupAboutAxis(masses, xyz, group2, axis1, axis2);
  const double sum = r.group1.moment + r.group2.moment;
  r.reduced = sum > 0.0 ? r.group1.moment * r.group2.moment / sum : 0.0;
  return r;
}

// Why this form: let the top turn at rate w about the axis (unit lambda,
// through P) while the molecule translates with V and turns with Omega about
// its centre of mass R. Atom a moves with V + Omega x (r_a - R) + w v_a,
// v_a = lambda x (r_a - P) on the top and 0 elsewhere, and
//   2T = M V^2 + Omega.I.Omega + w^2 A + 2 w V.t + 2 w Omega.L,
// the cross term of V and Omega vanishing about the centre of mass. Free
// overall motion takes the least kinetic energy: V = -w t/M, Omega = -w I^-1 L,
// which leaves 2T = w^2 (A - t.t/M - L.I^-1.L). On the principal axes of I
// the last term is sum_i (L.e_i)^2 / I_i.
double PitzerReducedMoment(const std::vector<double>& masses, const std::vector<Vec3>& xyz,
                           const std::vector<int>& top, const Vec3& axis1, const Vec3& axis2) {
  const Vec3 lambda = UnitAxis(axis1, axis2);
  const int n = static_cast<int>(xyz.size());
  std::vector<int> all(n);
  for (int a = 0; a < n; ++a) all[a] = a + 1;
  const Vec3 centre = GroupCentreOfMass(masses, xyz, all);

  // Inertia tensor of the whole molecule about its centre of mass.
  double totalMass = 0.0;
  std::vector<std::vector<double>> inertia(3, std::vector<double>(3, 0.0));
  for (int a = 0; a < n; ++a) {
    const double m = masses[a];
    const Vec3 s = Sub(xyz[a], centre);
    totalMass += m;
    const double s2 = Dot(s, s);
    for (int i = 0; i < 3; ++i)
      for (int j = 0; j < 3; ++j) inertia[i][j] += m * ((i == j ? s2 : 0.0) - s[i] * s[j]);
  }

  // The top turning at unit rate: each of its atoms moves with lambda x (r - P).
  double A = 0.0;
  Vec3 momentum{0.0, 0.0, 0.0}, angular{0.0, 0.0, 0.0};
  for (int a : top) {
    const double m = masses[a - 1];
    const Vec3 v = Cross(lambda, Sub(xyz[a - 1], axis1));
    const Vec3 l = Cross(Sub(xyz[a - 1], centre), v);
    A += m * Dot(v, v);
    for (int k = 0; k < 3; ++k) {
      momentum[k] += m * v[k];
      angular[k] += m * l[k];
    }
  }

  // Overall translation and rotation cancel that momentum and angular momentum.
  double taken = totalMass > 0.0 ? Dot(momentum, momentum) / totalMass : 0.0;
  const Eigensystem principal = Jacobi(inertia, 1);
  const double largest = principal.values[2];
  for (int i = 0; i < 3; ++i) {
    const double Ii = principal.values[i];
    if (!(Ii > kLinearMoment * largest)) continue;
    const Vec3 e{principal.vectors[0][i], principal.vectors[1][i], principal.vectors[2][i]};
    const double Le = Dot(angular, e);
    taken += Le * Le / Ii;
  }
  return A - taken;
}

}  // namespace quintor

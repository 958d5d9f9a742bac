#include "rotations/torsion_curvature.h"

#include <algorithm>
#include <cmath>

#include "numeric/lapack.h"
#include "numeric/vecn.h"

namespace quintor {

using namespace geom;

namespace {

using Flat = std::vector<double>;

using vecn::Dot;
using vecn::Normalise;

// The modes as unit vectors in mass-weighted space, read as Cartesian
// displacements (times sqrt m) or as they stand.
std::vector<Flat> UnitModes(const std::vector<const VibMode*>& modes, const std::vector<double>& masses,
                            bool cartesian) {
  std::vector<Flat> out;
  for (const VibMode* m : modes) {
    Flat v(3 * masses.size());
    for (size_t a = 0; a < masses.size(); ++a)
      for (int i = 0; i < 3; ++i) v[3 * a + i] = (cartesian ? std::sqrt(masses[a]) : 1.0) * m->disp[a][i];
    Normalise(v);
    out.push_back(std::move(v));
  }
  return out;
}

double LargestOverlap(const std::vector<Flat>& l) {
  double most = 0.0;
  for (size_t i = 0; i < l.size(); ++i)
    for (size_t j = 0; j < i; ++j) most = std::max(most, std::fabs(Dot(l[i], l[j])));
  return most;
}

}  // namespace

bool ModesAreMassWeighted(const std::vector<VibMode>& modes, const std::vector<double>& masses, int firstMode) {
  std::vector<const VibMode*> used;
  for (size_t m = static_cast<size_t>(std::max(firstMode, 1)) - 1; m < modes.size(); ++m)
    if (modes[m].given && modes[m].disp.size() >= masses.size()) used.push_back(&modes[m]);
  return LargestOverlap(UnitModes(used, masses, false)) < LargestOverlap(UnitModes(used, masses, true));
}

std::vector<double> TorsionFrequencies(const std::vector<VibMode>& modes, const std::vector<double>& masses,
                                       const std::vector<Vec3>& xyz, const std::vector<std::vector<int>>& groups,
                                       const std::vector<AxisPoints>& axes, int firstMode) {
  const size_t n = xyz.size(), nRot = groups.size();
  std::vector<double> nu(nRot, 0.0);
  std::vector<const VibMode*> used;
  for (size_t m = static_cast<size_t>(std::max(firstMode, 1)) - 1; m < modes.size(); ++m)
    if (modes[m].given && modes[m].disp.size() >= n && std::fabs(modes[m].scaledFreq) > 1e-6) used.push_back(&modes[m]);
  if (used.empty() || nRot == 0) return nu;
  const std::vector<Flat> l = UnitModes(used, masses, !ModesAreMassWeighted(modes, masses, firstMode));
  // a(i, k) = L_k . u_i; the overall part of u_i is outside every mode.
  std::vector<Flat> a(nRot, Flat(used.size(), 0.0));
  for (size_t i = 0; i < nRot; ++i) {
    const Vec3 e = Normalised(axes[i].p2 - axes[i].p1);
    Flat u(3 * n, 0.0);
    for (int atom : groups[i]) {
      const size_t at = static_cast<size_t>(atom - 1);
      const Vec3 d = Cross(e, xyz[at] - axes[i].p1);
      for (int c = 0; c < 3; ++c) u[3 * at + c] = std::sqrt(masses[at]) * d[c];
    }
    for (size_t k = 0; k < used.size(); ++k) a[i][k] = Dot(l[k], u);
  }
  // Column-major K and M = A W^-2 A^T; X = M^-1 K, and C^-1 = K X.
  std::vector<double> K(nRot * nRot), M(nRot * nRot);
  for (size_t i = 0; i < nRot; ++i)
    for (size_t j = 0; j < nRot; ++j) {
      double kij = 0.0, mij = 0.0;
      for (size_t k = 0; k < used.size(); ++k) {
        const double w = used[k]->scaledFreq;
        kij += a[i][k] * a[j][k];
        mij += a[i][k] * a[j][k] / (w < 0.0 ? -w * w : w * w);
      }
      K[j * nRot + i] = kij;
      M[j * nRot + i] = mij;
    }
  std::vector<double> X = K;
  std::vector<int> pivot(nRot);
  const int dim = static_cast<int>(nRot);
  if (lapack::dgesv(dim, dim, M.data(), dim, pivot.data(), X.data(), dim) != 0) return nu;
  for (size_t i = 0; i < nRot; ++i) {
    double f = 0.0;
    for (size_t j = 0; j < nRot; ++j) f += K[j * nRot + i] * X[i * nRot + j];
    const double kii = K[i * nRot + i];
    if (!(kii > 0.0) || !std::isfinite(f)) continue;
    nu[i] = f < 0.0 ? -std::sqrt(-f / kii) : std::sqrt(f / kii);
  }
  return nu;
}

}  // namespace quintor

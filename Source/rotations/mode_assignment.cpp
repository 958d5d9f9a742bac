#include "rotations/mode_assignment.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "io/fortran_io.h"
#include "numeric/jacobi.h"
#include "numeric/lapack.h"
#include "numeric/vecn.h"
#include "rotations/torsion_curvature.h"

namespace quintor {

using namespace geom;

namespace {

using Flat = std::vector<double>;  // 3 n mass-weighted components

using vecn::Dot;
using vecn::Normalise;

// Translations and rotations of the whole molecule, orthonormal; the one
// about the axis of a linear molecule has no length and is left out.
std::vector<Flat> OverallMotions(const std::vector<double>& masses, const std::vector<Vec3>& xyz) {
  const size_t n = xyz.size();
  double mass = 0.0;
  Vec3 c{0.0, 0.0, 0.0};
  for (size_t a = 0; a < n; ++a) {
    mass += masses[a];
    c = c + masses[a] * xyz[a];
  }
  if (mass > 0.0) c = (1.0 / mass) * c;
  std::vector<Flat> basis;
  double scale = 0.0;
  for (int k = 0; k < 6; ++k) {
    Flat v(3 * n, 0.0);
    Vec3 e{0.0, 0.0, 0.0};
    e[k % 3] = 1.0;
    for (size_t a = 0; a < n; ++a) {
      const Vec3 d = k < 3 ? e : Cross(e, xyz[a] - c);
      for (int i = 0; i < 3; ++i) v[3 * a + i] = std::sqrt(masses[a]) * d[i];
    }
    for (const Flat& b : basis) {
      const double p = Dot(v, b);
      for (size_t i = 0; i < v.size(); ++i) v[i] -= p * b[i];
    }
    const double length = std::sqrt(Dot(v, v));
    scale = std::max(scale, length);
    if (length > 1e-8 * scale) {
      Normalise(v);
      basis.push_back(std::move(v));
    }
  }
  return basis;
}

void ProjectOut(Flat& v, const std::vector<Flat>& basis) {
  for (const Flat& b : basis) {
    const double p = Dot(v, b);
    for (size_t i = 0; i < v.size(); ++i) v[i] -= p * b[i];
  }
}

Flat MassWeighted(const std::vector<Vec3>& d, const std::vector<double>& masses, const std::vector<int>& excluded) {
  Flat v(3 * d.size(), 0.0);
  for (size_t a = 0; a < d.size(); ++a) {
    if (std::find(excluded.begin(), excluded.end(), static_cast<int>(a) + 1) != excluded.end()) continue;
    for (int i = 0; i < 3; ++i) v[3 * a + i] = std::sqrt(masses[a]) * d[a][i];
  }
  return v;
}

}  // namespace

bool ReachesIntRotThreshold(const std::vector<double>& coefficients) {
  double sum = 0.0;
  for (double c : coefficients) sum += std::fabs(c);
  return sum >= IntRotThreshold;
}

ModeExpansion ExpandInRotations(const std::vector<VibMode>& modes, const std::vector<double>& masses,
                                const std::vector<Vec3>& xyz, const std::vector<std::vector<Vec3>>& rotations,
                                const std::vector<int>& excluded, int firstMode) {
  ModeExpansion e;
  const int nRot = static_cast<int>(rotations.size());
  e.modeOfRotation.assign(nRot, 0);
  if (nRot == 0) return e;
  const size_t nAtoms = xyz.size();
  const std::vector<Flat> overall = OverallMotions(masses, xyz);
  std::vector<Flat> rot;
  for (const auto& d : rotations) {
    Flat v = MassWeighted(d, masses, excluded);
    ProjectOut(v, overall);
    Normalise(v);
    rot.push_back(std::move(v));
  }
  std::vector<double> gram(static_cast<size_t>(nRot) * nRot);
  for (int i = 0; i < nRot; ++i)
    for (int j = 0; j < nRot; ++j) gram[static_cast<size_t>(j) * nRot + i] = Dot(rot[i], rot[j]);

  // xtb's g98.out prints the modes mass-weighted already.
  const std::vector<double> unit(nAtoms, 1.0);
  const std::vector<double>& weights = ModesAreMassWeighted(modes, masses, firstMode) ? unit : masses;
  for (int m = std::max(firstMode, 1); m <= static_cast<int>(modes.size()); ++m) {
    const VibMode& mode = modes[m - 1];
    if (mode.disp.size() < nAtoms) continue;
    std::vector<Vec3> d(mode.disp.begin(), mode.disp.begin() + static_cast<long>(nAtoms));
    Flat v = MassWeighted(d, weights, excluded);
    Normalise(v);
    std::vector<double> a = gram, b(nRot);
    for (int r = 0; r < nRot; ++r) b[r] = Dot(rot[r], v);
    const std::vector<double> rhs = b;
    std::vector<int> pivot(nRot);
    if (lapack::dgesv(nRot, 1, a.data(), nRot, pivot.data(), b.data(), nRot) != 0) b.assign(nRot, 0.0);
    double sdet = 0.0;
    for (int r = 0; r < nRot; ++r) sdet += b[r] * rhs[r];
    e.mode.push_back(m);
    e.coefficient.push_back(b);
    e.sdet.push_back(sdet);
    e.marked.push_back(ReachesIntRotThreshold(b));
  }

  // Modes most inside the rotations' span choose first, each its free
  // rotation of largest coefficient. In a chain the torsions mix into every
  // low mode, and a mode far outside the span (a CH2 rock) still sums many
  // small coefficients past the threshold: the span decides, not the sum.
  std::vector<size_t> order;
  for (size_t row = 0; row < e.mode.size(); ++row)
    if (e.marked[row] && e.sdet[row] >= IntRotThreshold) order.push_back(row);
  std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) { return e.sdet[a] > e.sdet[b]; });
  for (size_t row : order) {
    int best = -1;
    for (int r = 0; r < nRot; ++r)
      if (e.modeOfRotation[r] == 0 &&
          (best < 0 || std::fabs(e.coefficient[row][r]) > std::fabs(e.coefficient[row][best])))
        best = r;
    if (best < 0) break;
    e.modeOfRotation[best] = e.mode[row];
  }
  return e;
}

void WriteModeExpansion(MainLog& log, const ModeExpansion& e, const std::vector<VibMode>& modes, int rotations) {
  const auto rotationOf = [&](int mode) {
    const auto it = std::find(e.modeOfRotation.begin(), e.modeOfRotation.end(), mode);
    return it == e.modeOfRotation.end() ? 0 : static_cast<int>(it - e.modeOfRotation.begin()) + 1;
  };
  log.Line(" *** Analysis of vibrational modes for the internal rotations ***");
  log.Line("   Mode     Freq      SDet");
  for (size_t row = 0; row < e.mode.size(); ++row) {
    const int m = e.mode[row];
    log.Line(FmtI(m, 7) + FmtF(modes[m - 1].scaledFreq, 10, 2) + FmtF(e.sdet[row], 10, 5) +
             (rotationOf(m) ? " <-- Int.rot." : ""));
  }
  log.Line("  Vibrational modes expanded to internal rotations. (Int.Rot.threshold =" + FmtF(IntRotThreshold, 5, 2) +
           ")");
  log.Line("  Mode  Frequency       Internal Rotation Coefficient");
  std::string head = "   No.     cm-1 ";
  for (int r = 1; r <= rotations; ++r) head += FmtI(r, 10);
  log.Line(head);
  for (size_t row = 0; row < e.mode.size(); ++row) {
    const int m = e.mode[row];
    std::string line = FmtI(m, 6) + FmtF(modes[m - 1].scaledFreq, 10, 2);
    for (double c : e.coefficient[row]) line += FmtF(c, 10, 4);
    if (e.marked[row]) line += " <--Int.Rot";
    log.Line(line);
  }
  if (std::none_of(e.marked.begin(), e.marked.end(), [](bool b) { return b; })) {
    log.Line(" No vibrational modes can be identified as internal rotations");
    return;
  }
  log.Line(" Vibrational modes which are most similar to internal rotations:");
  log.Line(" (please check the program decision manually)");
  log.Line("   No. Mode    Freq.         Internal Rotation Contributions (normalized)");
  int k = 0;
  for (size_t row = 0; row < e.mode.size(); ++row) {
    if (!e.marked[row]) continue;
    const int m = e.mode[row];
    double sum = 0.0;
    for (double c : e.coefficient[row]) sum += std::fabs(c);
    std::string line = FmtI(++k, 6) + FmtI(m, 5) + FmtF(modes[m - 1].scaledFreq, 10, 2) + FmtX(5);
    for (double c : e.coefficient[row]) line += FmtF(c / sum, 8, 4);
    const int r = rotationOf(m);
    line += r ? "  -> Int.Rot." + FmtI(r, 3) : "  -> not assigned";
    log.Line(line);
  }
}

KinematicMoments KinematicMatrix(const std::vector<double>& masses, const std::vector<Vec3>& xyz,
                                 const std::vector<std::vector<int>>& groups, const std::vector<AxisPoints>& axes) {
  constexpr double kProbe = 0.01;  // degrees, central difference
  const size_t nRot = groups.size();
  const std::vector<Flat> overall = OverallMotions(masses, xyz);
  std::vector<Flat> u;
  for (size_t r = 0; r < nRot; ++r) {
    std::vector<Vec3> plus = xyz, minus = xyz;
    RotateAtoms(axes[r].p1, axes[r].p2, kProbe, groups[r], plus);
    RotateAtoms(axes[r].p1, axes[r].p2, -kProbe, groups[r], minus);
    const double scale = 1.0 / (2.0 * kProbe * constants::DegToRad);
    std::vector<Vec3> d(xyz.size());
    for (size_t a = 0; a < xyz.size(); ++a) d[a] = scale * (plus[a] - minus[a]);
    Flat v = MassWeighted(d, masses, {});
    ProjectOut(v, overall);
    u.push_back(std::move(v));
  }
  KinematicMoments k;
  k.matrix.assign(nRot, std::vector<double>(nRot, 0.0));
  for (size_t i = 0; i < nRot; ++i)
    for (size_t j = 0; j < nRot; ++j) k.matrix[i][j] = Dot(u[i], u[j]);
  k.I0.resize(nRot);
  k.I.resize(nRot);
  if (nRot == 0) return k;
  const Eigensystem e = Jacobi(k.matrix, 1);
  for (size_t i = 0; i < nRot; ++i) {
    k.I0[i] = k.matrix[i][i];
    double inverse = 0.0;  // (K^-1)(i, i) from the eigenvectors
    for (size_t m = 0; m < nRot; ++m) inverse += e.vectors[i][m] * e.vectors[i][m] / e.values[m];
    k.I[i] = 1.0 / inverse;
  }
  return k;
}

}  // namespace quintor

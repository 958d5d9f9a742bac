#include "engine/gradient.h"

#include "engine/constants.h"
#include "engine/integrals.h"

namespace quintor::engine {

namespace {

double Resonance(const ElementParameters& p, int orbital) {
  return orbital == 0 ? p.betas : orbital < 4 ? p.betap : p.betad;
}

// The energy (eV) of the terms of one pair of atoms at the density p (n x n),
// A's orbitals from fa, B's from fb; with `alpha`, the exchange of alpha and
// beta (p - alpha) electrons apart, else of two equal halves of p.
double PairEnergy(const ParameterSet& set, int za, int zb, const std::array<double, 3>& xa,
                  const std::array<double, 3>& xb, const std::vector<double>& p, const std::vector<double>* alpha,
                  int n, int fa, int fb) {
  const PairIntegrals pi = ComputePair(set, za, zb, xa, xb);
  const ElementParameters& pa = set.el[za];
  const ElementParameters& pb = set.el[zb];
  const int ia = pi.na, ib = pi.nb;
  auto P = [&](int i, int j) { return p[static_cast<size_t>(i) * n + j]; };
  // The exchange of electrons of like spin between orbitals i, j on A and c, d on B.
  auto exchange = [&](int i, int j, int c, int d) {
    if (!alpha) return 0.5 * P(i, c) * P(j, d);
    const size_t ic = static_cast<size_t>(i) * n + c, jd = static_cast<size_t>(j) * n + d;
    const double ai = (*alpha)[ic], aj = (*alpha)[jd];
    return ai * aj + (p[ic] - ai) * (p[jd] - aj);
  };
  double e = pi.coreCore;
  for (int i = 0; i < ia; ++i)
    for (int c = 0; c < ib; ++c)
      e += P(fa + i, fb + c) * (Resonance(pa, i) + Resonance(pb, c)) * pi.overlap[i * ib + c];
  for (int i = 0; i < ia; ++i)
    for (int j = 0; j < ia; ++j) e += P(fa + i, fa + j) * pi.e1b[i * ia + j];
  for (int c = 0; c < ib; ++c)
    for (int d = 0; d < ib; ++d) e += P(fb + c, fb + d) * pi.e2a[c * ib + d];
  for (int i = 0; i < ia; ++i)
    for (int j = 0; j < ia; ++j) {
      const double pij = P(fa + i, fa + j);
      for (int c = 0; c < ib; ++c)
        for (int d = 0; d < ib; ++d)
          e += pi.w[((i * ia + j) * ib + c) * ib + d] * (pij * P(fb + c, fb + d) - exchange(fa + i, fa + j, fb + c, fb + d));
    }
  return e;
}

}  // namespace

std::vector<std::array<double, 3>> FixedDensityGradient(const ParameterSet& set, const std::vector<int>& z,
                                                        const std::vector<std::array<double, 3>>& x,
                                                        const std::vector<double>& density,
                                                        const std::vector<double>* alpha) {
  const int na = static_cast<int>(z.size());
  std::vector<int> first(na);
  int n = 0;
  for (int a = 0; a < na; ++a) {
    first[a] = n;
    n += OrbitalCount(set.el[z[a]], MethodHasDOrbitals(set.method));
  }
  std::vector<std::array<double, 3>> g(na, {0, 0, 0});
  if (density.size() != static_cast<size_t>(n) * n) return g;
  if (alpha && alpha->size() != density.size()) return g;
  const double h = 1e-4;  // angstrom
  const double evToKcal = set.Units().evToKcal;
  for (int a = 1; a < na; ++a)
    for (int b = 0; b < a; ++b)
      for (int k = 0; k < 3; ++k) {
        std::array<double, 3> plus = x[b], minus = x[b];
        plus[k] += h;
        minus[k] -= h;
        const double ep = PairEnergy(set, z[a], z[b], x[a], plus, density, alpha, n, first[a], first[b]);
        const double em = PairEnergy(set, z[a], z[b], x[a], minus, density, alpha, n, first[a], first[b]);
        const double d = (ep - em) / (2 * h) * evToKcal;
        g[b][k] += d;
        g[a][k] -= d;
      }
  return g;
}

}  // namespace quintor::engine

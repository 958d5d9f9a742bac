#include "engine/gradient.h"

#include "engine/constants.h"
#include "engine/integrals.h"

namespace quintor::engine {

namespace {

double Resonance(const ElementParameters& p, int orbital) {
  return orbital == 0 ? p.betas : orbital < 4 ? p.betap : p.betad;
}

// A density block P(fr + i, fc + j) (i < nr, j < nc) rotated to the pair's
// frame: L = C^T P C, C the pair's local-to-molecular coefficients.
void LocalBlock(const double (&cm)[9][9], const std::vector<double>& p, int n, int fr, int nr, int fc, int nc,
                double (&out)[9][9]) {
  double half[9][9];  // C^T P
  for (int k = 0; k < nr; ++k)
    for (int j = 0; j < nc; ++j) {
      double v = 0;
      for (int i = 0; i < nr; ++i) v += cm[i][k] * p[static_cast<size_t>(fr + i) * n + fc + j];
      half[k][j] = v;
    }
  for (int k = 0; k < nr; ++k)
    for (int l = 0; l < nc; ++l) {
      double v = 0;
      for (int j = 0; j < nc; ++j) v += half[k][j] * cm[j][l];
      out[k][l] = v;
    }
}

// The energy (eV) of the terms of one pair of atoms at the density p (n x n),
// A's orbitals from fa, B's from fb, contracted in the pair's own frame;
// with `alpha`, the exchange of alpha and beta (p - alpha) electrons apart,
// else of two equal halves of p.
double PairEnergy(const ParameterSet& set, int za, int zb, const std::array<double, 3>& xa,
                  const std::array<double, 3>& xb, const std::vector<double>& p, const std::vector<double>* alpha,
                  int n, int fa, int fb) {
  const LocalPairIntegrals pi = ComputeLocalPair(set, za, zb, xa, xb);
  const ElementParameters& pa = set.el[za];
  const ElementParameters& pb = set.el[zb];
  const int ia = pi.na, ib = pi.nb;
  double aa[9][9], bb[9][9], ab[9][9], alphaAb[9][9];
  LocalBlock(pi.cm, p, n, fa, ia, fa, ia, aa);
  LocalBlock(pi.cm, p, n, fb, ib, fb, ib, bb);
  LocalBlock(pi.cm, p, n, fa, ia, fb, ib, ab);
  if (alpha) LocalBlock(pi.cm, *alpha, n, fa, ia, fb, ib, alphaAb);
  // The exchange of electrons of like spin between orbitals i, j on A and c, d on B.
  auto exchange = [&](int i, int j, int c, int d) {
    if (!alpha) return 0.5 * ab[i][c] * ab[j][d];
    const double ai = alphaAb[i][c], aj = alphaAb[j][d];
    return ai * aj + (ab[i][c] - ai) * (ab[j][d] - aj);
  };
  double e = pi.coreCore;
  for (int i = 0; i < ia; ++i)
    for (int c = 0; c < ib; ++c) e += ab[i][c] * (Resonance(pa, i) + Resonance(pb, c)) * pi.overlap[i * ib + c];
  for (int i = 0; i < ia; ++i)
    for (int j = 0; j < ia; ++j) e += aa[i][j] * pi.e1b[i * ia + j];
  for (int c = 0; c < ib; ++c)
    for (int d = 0; d < ib; ++d) e += bb[c][d] * pi.e2a[c * ib + d];
  const double* w = pi.w.data();
  for (int i = 0; i < ia; ++i)
    for (int j = 0; j < ia; ++j) {
      const double pij = aa[i][j];
      for (int c = 0; c < ib; ++c)
        for (int d = 0; d < ib; ++d) {
          const double wv = *w++;
          if (wv != 0) e += wv * (pij * bb[c][d] - exchange(i, j, c, d));
        }
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

#include "engine/integrals.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

#include "engine/constants.h"
#include "engine/slater_condon.h"

namespace quintor::engine {

namespace {

// ---- Overlaps in prolate spheroidal coordinates --------------------------
// With the foci on the atoms, r_a = R/2 (xi + eta), r_b = R/2 (xi - eta),
// z = R/2 (1 + xi eta) and rho^2 = (R/2)^2 (xi^2 - 1)(1 - eta^2): a product of
// Slater orbitals is a polynomial in xi and eta times exp(-p xi - t eta).

constexpr int kDeg = 16;
struct Poly {
  std::array<std::array<double, kDeg>, kDeg> c{};  // c[i][j] xi^i eta^j
};

Poly Constant(double v) {
  Poly p;
  p.c[0][0] = v;
  return p;
}

// Highest powers of xi and eta that occur, so that products stay cheap.
std::pair<int, int> Degree(const Poly& a) {
  int di = -1, dj = -1;
  for (int i = 0; i < kDeg; ++i)
    for (int j = 0; j < kDeg; ++j)
      if (a.c[i][j] != 0) di = std::max(di, i), dj = std::max(dj, j);
  return {di, dj};
}

Poly Mul(const Poly& a, const Poly& b) {
  Poly r;
  const auto [ai, aj] = Degree(a);
  const auto [bi, bj] = Degree(b);
  for (int i = 0; i <= ai; ++i)
    for (int j = 0; j <= aj; ++j) {
      const double v = a.c[i][j];
      if (v == 0) continue;
      for (int k = 0; k <= bi && i + k < kDeg; ++k)
        for (int l = 0; l <= bj && j + l < kDeg; ++l) r.c[i + k][j + l] += v * b.c[k][l];
    }
  return r;
}

Poly Add(const Poly& a, const Poly& b, double fb = 1) {
  Poly r = a;
  for (int i = 0; i < kDeg; ++i)
    for (int j = 0; j < kDeg; ++j) r.c[i][j] += fb * b.c[i][j];
  return r;
}

Poly Power(const Poly& a, int k) {
  Poly r = Constant(1);
  for (int i = 0; i < k; ++i) r = Mul(r, a);
  return r;
}

// A_k(p) = integral from 1 to infinity of x^k exp(-p x).
void AIntegrals(double p, int kmax, double* a) {
  const double e = std::exp(-p);
  a[0] = e / p;
  for (int k = 1; k <= kmax; ++k) a[k] = (e + k * a[k - 1]) / p;
}

// B_k(t) = integral from -1 to 1 of x^k exp(-t x). The upward recurrence
// loses digits for small |t|, where the power series serves.
void BIntegrals(double t, int kmax, double* b) {
  if (std::abs(t) <= 5.0) {
    for (int k = 0; k <= kmax; ++k) {
      double sum = 0, term = 1;  // (-t)^i / i!
      for (int i = 0; i < 80; ++i) {
        if ((k + i) % 2 == 0) sum += term * 2.0 / (k + i + 1);
        term *= -t / (i + 1);
        if (std::abs(term) < 1e-18 * std::abs(sum) && i > k) break;
      }
      b[k] = sum;
    }
    return;
  }
  const double ep = std::exp(t), em = std::exp(-t);
  b[0] = (ep - em) / t;
  for (int k = 1; k <= kmax; ++k) b[k] = ((k % 2 == 0 ? ep : -ep) - em + k * b[k - 1]) / t;
}

double Factorial(int n) {
  double f = 1;
  for (int i = 2; i <= n; ++i) f *= i;
  return f;
}

// The part of a real solid harmonic that does not hold rho^m, as a polynomial
// of z and rho^2, times its normalisation (the 1/sqrt(pi) of the phi part is
// taken out and put back by the phi integral).
Poly AngularPart(int l, int m, const Poly& z, const Poly& rho2) {
  if (l == 0) return Constant(std::sqrt(1.0 / 4.0));
  if (l == 1) return m == 0 ? Add(Poly{}, z, std::sqrt(3.0 / 4.0)) : Constant(std::sqrt(3.0 / 4.0));
  // l == 2
  if (m == 0) return Add(Add(Poly{}, Mul(z, z), 2 * std::sqrt(5.0 / 16.0)), rho2, -std::sqrt(5.0 / 16.0));
  if (m == 1) return Add(Poly{}, z, std::sqrt(15.0 / 4.0));
  return Constant(std::sqrt(15.0 / 16.0));
}

}  // namespace

namespace {

// The integrand's polynomial in xi and eta at half-distance h.
Poly OverlapPolynomial(int na, int la, int nb, int lb, int m, double h) {
  Poly xiPlusEta, xiMinusEta, zA, zB, rho2;
  xiPlusEta.c[1][0] = h, xiPlusEta.c[0][1] = h;     // r_a
  xiMinusEta.c[1][0] = h, xiMinusEta.c[0][1] = -h;  // r_b
  zA.c[0][0] = h, zA.c[1][1] = h;                   // z - z_A
  zB.c[0][0] = -h, zB.c[1][1] = h;                  // z - z_B
  Poly xi2m1, om2;                                  // xi^2 - 1, 1 - eta^2
  xi2m1.c[2][0] = 1, xi2m1.c[0][0] = -1;
  om2.c[0][2] = -1, om2.c[0][0] = 1;
  rho2 = Add(Poly{}, Mul(xi2m1, om2), h * h);
  Poly f = Mul(Power(xiPlusEta, na - 1 - la), AngularPart(la, m, zA, rho2));
  f = Mul(f, Mul(Power(xiMinusEta, nb - 1 - lb), AngularPart(lb, m, zB, rho2)));
  f = Mul(f, Power(rho2, m));
  Poly volume;  // (R/2)^3 (xi^2 - eta^2)
  volume.c[2][0] = h * h * h, volume.c[0][2] = -h * h * h;
  return Mul(f, volume);
}

// Every factor of the polynomial is homogeneous in h, so it is h^power times
// its value at h = 1: built once per shell pair and kept, term by term.
struct OverlapTerms {
  bool built = false;
  int power = 0;
  int maxI = 0, maxJ = 0;                    // highest powers of xi and eta
  std::vector<std::array<double, 3>> terms;  // i, j, coefficient at h = 1
};

const OverlapTerms& OverlapTermsOf(int na, int la, int nb, int lb, int m) {
  thread_local std::array<OverlapTerms, 7 * 3 * 7 * 3 * 3> cache;
  OverlapTerms& t = cache[(((na * 3 + la) * 7 + nb) * 3 + lb) * 3 + m];
  if (t.built) return t;
  const Poly one = OverlapPolynomial(na, la, nb, lb, m, 1.0);
  const Poly two = OverlapPolynomial(na, la, nb, lb, m, 2.0);
  for (int i = 0; i < kDeg; ++i)
    for (int j = 0; j < kDeg; ++j)
      if (one.c[i][j] != 0) {
        t.terms.push_back({static_cast<double>(i), static_cast<double>(j), one.c[i][j]});
        t.maxI = std::max(t.maxI, i);
        t.maxJ = std::max(t.maxJ, j);
        t.power = static_cast<int>(std::lround(std::log2(std::abs(two.c[i][j] / one.c[i][j]))));
      }
  t.built = true;
  return t;
}

}  // namespace

double SlaterOverlap(int na, int la, double za, int nb, int lb, double zb, int m, double r) {
  const double h = r / 2;
  const OverlapTerms& f = OverlapTermsOf(na, la, nb, lb, m);
  double a[kDeg], b[kDeg];
  AIntegrals(h * (za + zb), f.maxI, a);
  BIntegrals(h * (za - zb), f.maxJ, b);
  double sum = 0;
  for (const auto& t : f.terms) sum += t[2] * a[static_cast<int>(t[0])] * b[static_cast<int>(t[1])];
  sum *= std::pow(h, f.power);
  const double norm = std::pow(2 * za, na + 0.5) / std::sqrt(Factorial(2 * na)) * std::pow(2 * zb, nb + 0.5) /
                      std::sqrt(Factorial(2 * nb));
  // phi integral: 2 pi for sigma, pi otherwise; the harmonics carry 1/sqrt(pi) each.
  const double phi = m == 0 ? 2.0 : 1.0;
  return norm * sum * phi;
}

namespace {

// ---- Multipoles of the charge distributions --------------------------------
// On an atom with s and p orbitals the products of orbitals are represented
// by point charges: the monopole (ss, and part of p p), the dipoles (s p),
// and the quadrupoles (p p'), each with its additive term.
enum Multipole { M, Dx, Dy, Dz, Qxx, Qyy, Qzz, Qxy, Qxz, Qyz, kMultipoles };

struct Charge {
  double q, x, y, z;
};
struct ChargeSet {
  std::array<Charge, 6> c{};
  int n = 0;
  double rho = 0;  // additive term, bohr
};

ChargeSet MakeMultipole(int kind, const ElementParameters& p, bool heavy) {
  ChargeSet s;
  const double pm = 0.5 / p.am;
  const double pd = heavy ? 0.5 / p.ad : pm;
  const double pq = heavy ? 0.5 / p.aq : pm;
  const double d = p.dd, qa = 2 * p.qq, q = p.qq;
  auto add = [&s](double q_, double x, double y, double z) { s.c[s.n++] = {q_, x, y, z}; };
  switch (kind) {
    case M: add(1, 0, 0, 0), s.rho = pm; break;
    case Dx: add(0.5, d, 0, 0), add(-0.5, -d, 0, 0), s.rho = pd; break;
    case Dy: add(0.5, 0, d, 0), add(-0.5, 0, -d, 0), s.rho = pd; break;
    case Dz: add(0.5, 0, 0, d), add(-0.5, 0, 0, -d), s.rho = pd; break;
    case Qxx: add(0.25, qa, 0, 0), add(0.25, -qa, 0, 0), add(-0.5, 0, 0, 0), s.rho = pq; break;
    case Qyy: add(0.25, 0, qa, 0), add(0.25, 0, -qa, 0), add(-0.5, 0, 0, 0), s.rho = pq; break;
    case Qzz: add(0.25, 0, 0, qa), add(0.25, 0, 0, -qa), add(-0.5, 0, 0, 0), s.rho = pq; break;
    case Qxy:
      add(0.25, q, q, 0), add(0.25, -q, -q, 0), add(-0.25, q, -q, 0), add(-0.25, -q, q, 0), s.rho = pq;
      break;
    case Qxz:
      add(0.25, q, 0, q), add(0.25, -q, 0, -q), add(-0.25, q, 0, -q), add(-0.25, -q, 0, q), s.rho = pq;
      break;
    case Qyz:
      add(0.25, 0, q, q), add(0.25, 0, -q, -q), add(-0.25, 0, q, -q), add(-0.25, 0, -q, q), s.rho = pq;
      break;
  }
  return s;
}

double Interaction(const ChargeSet& a, const ChargeSet& b, double r) {
  const double add = (a.rho + b.rho) * (a.rho + b.rho);
  double sum = 0;
  for (int i = 0; i < a.n; ++i)
    for (int j = 0; j < b.n; ++j) {
      const double dx = b.c[j].x - a.c[i].x, dy = b.c[j].y - a.c[i].y, dz = r + b.c[j].z - a.c[i].z;
      sum += a.c[i].q * b.c[j].q / std::sqrt(dx * dx + dy * dy + dz * dz + add);
    }
  return sum;
}

// Multipoles making up the product of local orbitals a and b (s, x, y, z).
int Expansion(int a, int b, int* out) {
  if (a > b) std::swap(a, b);
  if (a == 0 && b == 0) return out[0] = M, 1;
  if (a == 0) return out[0] = Dx + b - 1, 1;
  if (a == b) return out[0] = M, out[1] = Qxx + a - 1, 2;
  if (a == 1 && b == 2) return out[0] = Qxy, 1;
  if (a == 1 && b == 3) return out[0] = Qxz, 1;
  return out[0] = Qyz, 1;
}


// ---- Multipoles of the d method ---------------------------------------------
// Products that hold a d orbital, and every product in an integral that holds
// one, are expanded in the point-charge multipoles of MNDO/d: monopole,
// dipoles, and quadrupoles of each orientation, with the charge separation
// and additive term of the kind of product (ss, sp, pp, sd, pd, dd).

// Kind of product from the shells: ss 0, sp 1, pp 2, sd 3, pd 4, dd 5.
int ProductKind(int a, int b) {
  auto shell = [](int i) { return i == 0 ? 0 : i < 4 ? 1 : 2; };
  const int lo = std::min(shell(a), shell(b)), hi = std::max(shell(a), shell(b));
  static constexpr int kKind[3][3] = {{0, 1, 3}, {1, 2, 4}, {3, 4, 5}};
  return kKind[lo][hi];
}

// Charge separation and additive term of kind k and order l on an atom.
struct SeparationAndRho {
  double d, rho;
};
SeparationAndRho Bipolar(const ElementParameters& p, bool hasD, int kind, int l) {
  switch (kind) {
    case 0: return {0, 0.5 / p.am};
    case 1: return {p.dd, 0.5 / p.ad};
    case 2: return l == 0 ? SeparationAndRho{0, 0.5 / p.am} : SeparationAndRho{p.qq * std::sqrt(2.0), 0.5 / p.aq};
    default: break;
  }
  if (!hasD) return {0, 0};
  if (kind == 3) return {p.add[3], p.bdd[3]};
  if (kind == 4) return {p.add[4], p.bdd[4]};
  return l == 0 ? SeparationAndRho{0, p.bdd[7]} : SeparationAndRho{p.add[5], p.bdd[5]};
}

ChargeSet PointMultipole(int l, int m, double d, double rho) {
  ChargeSet s;
  s.rho = rho;
  auto add = [&s](double q, double x, double y, double z) { s.c[s.n++] = {q, x, y, z}; };
  const double a = d / std::sqrt(2.0);
  if (l == 0) {
    add(1, 0, 0, 0);
  } else if (l == 1) {
    const double x = m == 1 ? d : 0, y = m == -1 ? d : 0, z = m == 0 ? d : 0;
    add(0.5, x, y, z), add(-0.5, -x, -y, -z);
  } else if (m == 0) {
    add(0.25, 0, 0, d), add(0.25, 0, 0, -d);
    add(-0.125, d, 0, 0), add(-0.125, -d, 0, 0), add(-0.125, 0, d, 0), add(-0.125, 0, -d, 0);
  } else if (m == 1) {
    add(0.25, a, 0, a), add(0.25, -a, 0, -a), add(-0.25, -a, 0, a), add(-0.25, a, 0, -a);
  } else if (m == -1) {
    add(0.25, 0, a, a), add(0.25, 0, -a, -a), add(-0.25, 0, -a, a), add(-0.25, 0, a, -a);
  } else if (m == 2) {
    add(0.25, d, 0, 0), add(0.25, -d, 0, 0), add(-0.25, 0, d, 0), add(-0.25, 0, -d, 0);
  } else {
    add(0.25, a, a, 0), add(0.25, -a, -a, 0), add(-0.25, a, -a, 0), add(-0.25, -a, a, 0);
  }
  return s;
}

// One term of the expansion of a product: the multipole (l, m) of its kind.
struct BipolarTerm {
  int kind, l, m;
  double coef;
};

// The terms of every product of two of the nine orbitals, computed once.
const std::vector<std::vector<BipolarTerm>>& BipolarExpansions() {
  static const std::vector<std::vector<BipolarTerm>> kTable = [] {
    std::vector<std::vector<BipolarTerm>> t(81);
    for (int a = 0; a < 9; ++a)
      for (int b = 0; b < 9; ++b)
        for (int l = 0; l <= 2; ++l)
          for (int m = -l; m <= l; ++m) {
            const double c = MultipoleCoefficient(a, b, l, m);
            if (c != 0) t[a * 9 + b].push_back({ProductKind(a, b), l, m, c});
          }
    return t;
  }();
  return kTable;
}

// Interactions between the multipoles of two atoms, computed when first asked.
class BipolarInteractions {
 public:
  BipolarInteractions(const ElementParameters& pa, bool dA, const ElementParameters& pb, bool dB, double r)
      : pa_(pa), pb_(pb), dA_(dA), dB_(dB), r_(r), memo_(kSlots * kSlots, std::nan("")) {}
  double operator()(const BipolarTerm& ta, const BipolarTerm& tb) {
    double& v = memo_[Slot(ta) * kSlots + Slot(tb)];
    if (std::isnan(v)) {
      const SeparationAndRho a = Bipolar(pa_, dA_, ta.kind, ta.l), b = Bipolar(pb_, dB_, tb.kind, tb.l);
      v = Interaction(PointMultipole(ta.l, ta.m, a.d, a.rho), PointMultipole(tb.l, tb.m, b.d, b.rho), r_);
    }
    return v;
  }

 private:
  static constexpr int kSlots = 6 * 9;
  static int Slot(const BipolarTerm& t) { return t.kind * 9 + t.l * t.l + t.l + t.m; }
  const ElementParameters &pa_, &pb_;
  bool dA_, dB_;
  double r_;
  std::vector<double> memo_;
};

// Real d functions as traceless symmetric matrices of unit norm, in the order
// z2, xz, yz, x2-y2, xy: the rotation of d orbitals follows from them.
std::array<std::array<std::array<double, 3>, 3>, 5> DMatrices() {
  const double s2 = 1 / std::sqrt(2.0), s6 = 1 / std::sqrt(6.0);
  std::array<std::array<std::array<double, 3>, 3>, 5> m{};
  m[0][0][0] = -s6, m[0][1][1] = -s6, m[0][2][2] = 2 * s6;
  m[1][0][2] = m[1][2][0] = s2;
  m[2][1][2] = m[2][2][1] = s2;
  m[3][0][0] = s2, m[3][1][1] = -s2;
  m[4][0][1] = m[4][1][0] = s2;
  return m;
}

// Rows of the rotation: local axes in the molecular frame, local z from A to B.
std::array<std::array<double, 3>, 3> LocalFrame(const std::array<double, 3>& u) {
  // x' lies in the plane of z' and the molecular z axis, y' completes the set.
  std::array<double, 3> x{}, y{};
  const double rxy = std::sqrt(u[0] * u[0] + u[1] * u[1]);
  if (rxy > 1e-10) {
    x = {u[0] * u[2] / rxy, u[1] * u[2] / rxy, -rxy};
    y = {-u[1] / rxy, u[0] / rxy, 0};
  } else {
    x = {u[2] > 0 ? 1.0 : -1.0, 0, 0};
    y = {0, 1, 0};
  }
  return {x, y, u};
}

}  // namespace

std::vector<double> OneCentreIntegrals(const ElementParameters& p, int na) {
  if (na == 9) return OneCentreIntegralsSpd(p);
  std::vector<double> g(static_cast<size_t>(na) * na * na * na, 0.0);
  auto at = [&](int a, int b, int c, int d) -> double& { return g[((a * na + b) * na + c) * na + d]; };
  auto set = [&](int a, int b, int c, int d, double v) {
    at(a, b, c, d) = at(b, a, c, d) = at(a, b, d, c) = at(b, a, d, c) = v;
    at(c, d, a, b) = at(d, c, a, b) = at(c, d, b, a) = at(d, c, b, a) = v;
  };
  set(0, 0, 0, 0, p.gss);
  if (na >= 4) {
    for (int k = 1; k <= 3; ++k) {
      set(0, 0, k, k, p.gsp);
      set(0, k, 0, k, p.hsp);
      set(k, k, k, k, p.gpp);
      for (int l = 1; l <= 3; ++l)
        if (l != k) {
          set(k, k, l, l, p.gp2);
          set(k, l, k, l, p.hpp);
        }
    }
  }
  return g;
}

const BoronPair* Am1BoronPair(int za, int zb) {
  // k (eV), l (1/A^2), m (A) of the two terms of each kind of partner.
  static constexpr BoronPair kHydrogen{{{{0.412253, 10.0, 0.832586}, {-0.149917, 6.0, 1.186220}}}};
  static constexpr BoronPair kCarbon{{{{0.261751, 8.0, 1.063995}, {0.050275, 5.0, 1.936492}}}};
  static constexpr BoronPair kHalogen{{{{0.359244, 9.0, 0.819351}, {0.074729, 9.0, 1.574414}}}};
  if (za != 5 && zb != 5) return nullptr;
  const int other = za == 5 ? zb : za;
  switch (other) {
    case 1: return &kHydrogen;
    case 6: return &kCarbon;
    case 9: case 17: case 35: case 53: return &kHalogen;
    default: return nullptr;
  }
}

LocalPairIntegrals ComputeLocalPair(const ParameterSet& set, int za, int zb, const std::array<double, 3>& xa,
                                    const std::array<double, 3>& xb) {
  const ElementParameters& pa = set.el[za];
  const ElementParameters& pb = set.el[zb];
  const bool dMethod = MethodHasDOrbitals(set.method);
  LocalPairIntegrals out;
  out.na = OrbitalCount(pa, dMethod);
  out.nb = OrbitalCount(pb, dMethod);
  const int na = out.na, nb = out.nb;
  const bool dA = na == 9, dB = nb == 9;
  std::array<double, 3> d = {xb[0] - xa[0], xb[1] - xa[1], xb[2] - xa[2]};
  const double rA = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);  // angstrom
  const EngineUnits units = set.Units();
  const double r = rA / units.bohr;
  for (double& c : d) c /= rA;
  const auto frame = LocalFrame(d);

  // Local-to-molecular coefficients: molecular orbital a = sum_b C[a][b] local b.
  auto& cm = out.cm;
  cm[0][0] = 1;
  for (int a = 1; a < 4; ++a)
    for (int b = 1; b < 4; ++b) cm[a][b] = frame[b - 1][a - 1];
  if (dA || dB) {
    // d_a(r) = r^T M_a r; in local coordinates r = F^T r', so M_a becomes F M_a F^T.
    const auto dm = DMatrices();
    for (int a = 0; a < 5; ++a) {
      double rot[3][3] = {};
      for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
          for (int k = 0; k < 3; ++k)
            for (int l = 0; l < 3; ++l) rot[i][j] += frame[i][k] * dm[a][k][l] * frame[j][l];
      for (int b = 0; b < 5; ++b) {
        double v = 0;
        for (int i = 0; i < 3; ++i)
          for (int j = 0; j < 3; ++j) v += rot[i][j] * dm[b][i][j];
        cm[4 + a][4 + b] = v;
      }
    }
  }

  // Multipole interactions of the sp products in the local frame (Dewar-Thiel).
  const bool spA = na > 1, spB = nb > 1;
  std::array<ChargeSet, kMultipoles> ma, mb;
  // An atom with an s orbital alone has the monopole alone.
  for (int k = 0; k < (spA ? kMultipoles : 1); ++k) ma[k] = MakeMultipole(k, pa, spA);
  for (int k = 0; k < (spB ? kMultipoles : 1); ++k) mb[k] = MakeMultipole(k, pb, spB);
  // Interactions of multipole pairs, each computed when first needed.
  double interMemo[kMultipoles][kMultipoles];
  for (auto& row : interMemo) std::fill(std::begin(row), std::end(row), std::nan(""));
  auto inter = [&](int i, int j) -> double {
    double& v = interMemo[i][j];
    if (!std::isnan(v)) return v;
    if (i == Qxy && j == Qxy) {
      // The pi-pi' quadrupoles take the value that keeps the integrals
      // invariant under rotation about the axis.
      v = 0.5 * (Interaction(ma[Qxx], mb[Qxx], r) - Interaction(ma[Qxx], mb[Qyy], r));
    } else if ((i == Qxy && (j == Qxx || j == Qyy)) || (j == Qxy && (i == Qxx || i == Qyy))) {
      v = 0;
    } else {
      v = Interaction(ma[i], mb[j], r);
    }
    return v;
  };
  std::optional<BipolarInteractions> bipolar;
  if (dA || dB) bipolar.emplace(pa, dA, pb, dB, r);
  const auto& expansions = BipolarExpansions();

  // Local integrals: sp products alone by Dewar-Thiel, any integral with a d
  // orbital in it by the multipoles of the d method.
  std::vector<double>& loc = out.w;
  loc.assign(static_cast<size_t>(na) * na * nb * nb, 0.0);
  int ea[2], eb[2];
  for (int a = 0; a < na; ++a)
    for (int b = 0; b < na; ++b) {
      const int nea = a < 4 && b < 4 ? Expansion(a, b, ea) : 0;
      for (int c = 0; c < nb; ++c)
        for (int e = 0; e < nb; ++e) {
          double v = 0;
          if (a < 4 && b < 4 && c < 4 && e < 4) {
            const int neb = Expansion(c, e, eb);
            for (int i = 0; i < nea; ++i)
              for (int j = 0; j < neb; ++j) v += inter(ea[i], eb[j]);
          } else {
            for (const BipolarTerm& ta : expansions[a * 9 + b])
              for (const BipolarTerm& tb : expansions[c * 9 + e])
                if (ta.m == tb.m) v += ta.coef * tb.coef * (*bipolar)(ta, tb);
          }
          loc[((a * na + b) * nb + c) * nb + e] = v * units.ev;
        }
    }

  // Core attractions: the electrons' multipoles in the field of the other
  // atom's core, a monopole with the core's own additive term.
  const double coreRhoA = CoreAdditiveTerm(za, pa, set.method), coreRhoB = CoreAdditiveTerm(zb, pb, set.method);
  ChargeSet coreA = PointMultipole(0, 0, 0, coreRhoA), coreB = PointMultipole(0, 0, 0, coreRhoB);
  auto attraction = [&](const ElementParameters& p, bool hasD, const std::array<ChargeSet, kMultipoles>& m,
                        const ChargeSet& core, double sign, int a, int b) {
    // sign: +1 with the electrons on A (core at +r), -1 with them on B (core at -r)
    double v = 0;
    if (a < 4 && b < 4) {
      int e[2];
      const int ne = Expansion(a, b, e);
      for (int i = 0; i < ne; ++i)
        v += sign > 0 ? Interaction(m[e[i]], core, r) : Interaction(core, m[e[i]], r);
    } else {
      for (const BipolarTerm& t : expansions[a * 9 + b]) {
        if (t.m != 0) continue;
        const SeparationAndRho sr = Bipolar(p, hasD, t.kind, t.l);
        const ChargeSet c = PointMultipole(t.l, 0, sr.d, sr.rho);
        v += t.coef * (sign > 0 ? Interaction(c, core, r) : Interaction(core, c, r));
      }
    }
    return v * units.ev;
  };
  for (int a = 0; a < na; ++a)
    for (int b = 0; b < na; ++b) out.e1b[a * na + b] = -pb.core * attraction(pa, dA, ma, coreB, 1, a, b);
  for (int c = 0; c < nb; ++c)
    for (int e = 0; e < nb; ++e) out.e2a[c * nb + e] = -pa.core * attraction(pb, dB, mb, coreA, -1, c, e);

  // Overlaps in the local frame, block by block in m.
  const int nsA = ValenceN(za), nsB = ValenceN(zb), ndA = ValenceNd(za), ndB = ValenceNd(zb);
  struct Shell {
    int n, l;
    double zeta;
  };
  auto shellOf = [](const ElementParameters& p, int ns, int nd, int i) {
    return i == 0 ? Shell{ns, 0, p.zs} : i < 4 ? Shell{ns, 1, p.zp} : Shell{nd, 2, p.zd};
  };
  // m of each local orbital (the sin partners carry -m, which overlap alike).
  static constexpr int kM[9] = {0, 1, -1, 0, 0, 1, -1, 2, -2};
  for (int i = 0; i < na; ++i)
    for (int j = 0; j < nb; ++j) {
      if (kM[i] != kM[j]) continue;
      const Shell a = shellOf(pa, nsA, ndA, i), b = shellOf(pb, nsB, ndB, j);
      out.overlap[i * nb + j] = SlaterOverlap(a.n, a.l, a.zeta, b.n, b.l, b.zeta, std::abs(kM[i]), r);
    }

  // Core-core repulsion.
  const double gab = units.ev / std::sqrt(r * r + std::pow(coreRhoA + coreRhoB, 2));
  const double enuc = pa.core * pb.core * gab;
  const double ea_ = std::exp(-pa.alp * rA), eb_ = std::exp(-pb.alp * rA);
  // Pair-specific terms: MNDO/d's bonds of Na, Mg and Al, and the fitted pairs
  // of MNDO, AM1 and PM3 (alkali and alkaline-earth metals above all).
  const PairTerm* pair = FindPairTerm(set.method, za, zb);
  double ecc = 0;
  if (pair && set.method == EngineMethod::MNDOD) {
    const bool metalA = za >= 11 && za <= 13, metalB = zb >= 11 && zb <= 13;
    const double ePair = std::exp(-pair->alpb * rA);
    double scale = 1;
    if (za == zb) {
      scale += 2 * ePair;
    } else {
      scale += ePair + (metalA && !(metalB && zb < za) ? eb_ : ea_);
    }
    ecc = enuc * scale;
  } else if (pair) {
    ecc = enuc * (1 + 2 * pair->xfac * std::exp(-pair->alpb * rA));
  } else {
    double scale = ea_ + eb_;
    if (za + zb == 8 || za + zb == 9) {  // N-H and O-H in MNDO, AM1 and PM3
      if (za == 7 || za == 8) scale += (rA - 1) * ea_;
      if (zb == 7 || zb == 8) scale += (rA - 1) * eb_;
    }
    ecc = enuc + std::abs(scale * enuc);
  }
  // The Gaussian terms of AM1 and PM3, k1 exp(-l1 (r - m1)^2) each, of both
  // atoms; in AM1 a bond of boron to H, C or a halogen has two terms of its
  // own in place of boron's (Dewar and Jie, 1987).
  auto gaussian = [&](double k1, double l1, double m1) {
    const double ax = l1 * (rA - m1) * (rA - m1);
    if (ax <= 25.0) ecc += pa.core * pb.core / rA * k1 * std::exp(-ax);
  };
  const BoronPair* boron = set.method == EngineMethod::AM1 ? Am1BoronPair(za, zb) : nullptr;
  if (boron)
    for (const auto& g : boron->terms) gaussian(g[0], g[1], g[2]);
  // A fitted pair of MNDO, AM1 or PM3 has no Gaussians of its atoms.
  const bool pairReplacesGaussians = pair && set.method != EngineMethod::MNDOD && !boron;
  for (const ElementParameters* p : {&pa, &pb}) {
    if (pairReplacesGaussians) break;
    if (boron && p == (za == 5 ? &pa : &pb)) continue;
    for (int k = 0; k < 4; ++k)
      if (p->gues1[k] != 0) gaussian(p->gues1[k], p->gues2[k], p->gues3[k]);
  }
  out.coreCore = ecc;
  return out;
}

PairIntegrals ComputePair(const ParameterSet& set, int za, int zb, const std::array<double, 3>& xa,
                          const std::array<double, 3>& xb) {
  LocalPairIntegrals l = ComputeLocalPair(set, za, zb, xa, xb);
  PairIntegrals out;
  out.na = l.na;
  out.nb = l.nb;
  out.coreCore = l.coreCore;
  const int na = l.na, nb = l.nb;
  auto coef = [&l](int a, int b) { return l.cm[a][b]; };
  // Transform each index to the molecular frame.
  auto transform2 = [&](const double* in, int n, double* outp) {
    for (int a = 0; a < n; ++a)
      for (int b = 0; b < n; ++b) {
        double v = 0;
        for (int i = 0; i < n; ++i)
          for (int j = 0; j < n; ++j) v += coef(a, i) * coef(b, j) * in[i * n + j];
        outp[a * n + b] = v;
      }
  };
  transform2(l.e1b.data(), na, out.e1b.data());
  transform2(l.e2a.data(), nb, out.e2a.data());

  {
    std::vector<double> t1(l.w.size()), t2(l.w.size());
    // index order a b c d with sizes na na nb nb; transform one index at a time.
    const int dims[4] = {na, na, nb, nb};
    std::vector<double>* src = &l.w;
    std::vector<double>* dst = &t1;
    for (int idx = 0; idx < 4; ++idx) {
      const int n = dims[idx];
      int stride = 1;
      for (int k = idx + 1; k < 4; ++k) stride *= dims[k];
      const int outer = static_cast<int>(src->size()) / (n * stride);
      for (int o = 0; o < outer; ++o)
        for (int s = 0; s < stride; ++s)
          for (int a = 0; a < n; ++a) {
            double v = 0;
            for (int i = 0; i < n; ++i) v += coef(a, i) * (*src)[(o * n + i) * stride + s];
            (*dst)[(o * n + a) * stride + s] = v;
          }
      src = dst;
      dst = (dst == &t1) ? &t2 : &t1;
    }
    out.w = std::move(*src);
  }

  for (int a = 0; a < na; ++a)
    for (int c = 0; c < nb; ++c) {
      double v = 0;
      for (int i = 0; i < na; ++i)
        for (int j = 0; j < nb; ++j) v += coef(a, i) * coef(c, j) * l.overlap[i * nb + j];
      out.overlap[a * nb + c] = v;
    }
  return out;
}

const PairTerm* FindPairTerm(EngineMethod method, int za, int zb) {
  if (za < zb) std::swap(za, zb);
  if (method == EngineMethod::PM3D) method = EngineMethod::PM3;  // PM3d takes PM3's parameters
  // Every pair of atoms asks, so the list is indexed once by method and pair.
  constexpr int kZ = kMaxElement + 1;
  static const std::vector<const PairTerm*> index = [] {
    std::vector<const PairTerm*> t(static_cast<size_t>(6) * kZ * kZ, nullptr);
    for (const PairTerm& p : PairTerms())
      if (p.za >= 0 && p.za < kZ && p.zb >= 0 && p.zb < kZ) {
        const PairTerm*& slot = t[(static_cast<size_t>(p.method) * kZ + p.za) * kZ + p.zb];
        if (!slot) slot = &p;
      }
    return t;
  }();
  const int m = static_cast<int>(method);
  if (m < 0 || m >= 6 || za < 0 || za >= kZ || zb < 0 || zb >= kZ) return nullptr;
  return index[(static_cast<size_t>(m) * kZ + za) * kZ + zb];
}

}  // namespace quintor::engine

#include "engine/slater_condon.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "engine/constants.h"
#include "engine/integrals.h"

namespace quintor::engine {

namespace {

double Factorial(int n) {
  double f = 1;
  for (int i = 2; i <= n; ++i) f *= i;
  return f;
}

// ---- Angular integrals ---------------------------------------------------
// Products of real harmonics are integrated over the sphere by a product
// rule (Gauss-Legendre in cos(theta), even steps in phi), exact for the
// polynomial degrees that occur here (at most 8).

struct SpherePoint {
  double x, y, z, w;
};

std::vector<SpherePoint> SphereRule() {
  constexpr int nt = 10, np = 20;
  std::vector<SpherePoint> pts;
  for (int i = 0; i < nt; ++i) {
    // Newton on the Legendre polynomial P_nt from the usual first guess.
    double t = std::cos(kPi * (i + 0.75) / (nt + 0.5)), dp = 0;
    for (int it = 0; it < 100; ++it) {
      double p0 = 1, p1 = t;
      for (int k = 2; k <= nt; ++k) {
        const double p2 = ((2 * k - 1) * t * p1 - (k - 1) * p0) / k;
        p0 = p1;
        p1 = p2;
      }
      dp = nt * (t * p1 - p0) / (t * t - 1);
      const double dt = p1 / dp;
      t -= dt;
      if (std::abs(dt) < 1e-15) break;
    }
    const double wt = 2 / ((1 - t * t) * dp * dp);
    const double s = std::sqrt(1 - t * t);
    for (int j = 0; j < np; ++j) {
      const double phi = 2 * kPi * j / np;
      pts.push_back({s * std::cos(phi), s * std::sin(phi), t, wt * 2 * kPi / np});
    }
  }
  return pts;
}

// The real orbitals' angular parts, orthonormal: s, x, y, z, z2, xz, yz, x2-y2, xy.
double OrbitalAngular(int i, double x, double y, double z) {
  const double c0 = std::sqrt(1 / (4 * kPi)), c1 = std::sqrt(3 / (4 * kPi));
  const double c20 = std::sqrt(5 / (16 * kPi)), c21 = std::sqrt(15 / (4 * kPi)), c22 = std::sqrt(15 / (16 * kPi));
  switch (i) {
    case 0: return c0;
    case 1: return c1 * x;
    case 2: return c1 * y;
    case 3: return c1 * z;
    case 4: return c20 * (3 * z * z - 1);
    case 5: return c21 * x * z;
    case 6: return c21 * y * z;
    case 7: return c22 * (x * x - y * y);
    default: return c21 * x * y;
  }
}

// Associated Legendre function P_l^m (no Condon-Shortley phase), m >= 0.
double Legendre(int l, int m, double t) {
  double pmm = 1;
  const double s = std::sqrt(std::max(0.0, 1 - t * t));
  for (int i = 1; i <= m; ++i) pmm *= (2 * i - 1) * s;
  if (l == m) return pmm;
  double pm1 = t * (2 * m + 1) * pmm;
  if (l == m + 1) return pm1;
  double pl = 0;
  for (int k = m + 2; k <= l; ++k) {
    pl = ((2 * k - 1) * t * pm1 - (k + m - 1) * pmm) / (k - m);
    pmm = pm1;
    pm1 = pl;
  }
  return pl;
}

// Orthonormal real harmonic of any l (for the expansion of 1/r12).
double RealHarmonic(int l, int m, double x, double y, double z) {
  const int am = std::abs(m);
  double n = std::sqrt((2 * l + 1) / (4 * kPi) * Factorial(l - am) / Factorial(l + am));
  if (m != 0) n *= std::sqrt(2.0);
  const double phi = std::atan2(y, x);
  const double trig = m > 0 ? std::cos(am * phi) : m < 0 ? std::sin(am * phi) : 1.0;
  return n * Legendre(l, am, z) * trig;
}

// Racah-normalised multipole functions of l <= 2, with the orientation of
// the point-charge multipoles: m 0 z, 1 x, -1 y, 2 x2-y2, -2 xy.
double MultipoleFunction(int l, int m, double x, double y, double z) {
  if (l == 0) return 1;
  if (l == 1) return m == 0 ? z : m == 1 ? x : y;
  const double r3 = std::sqrt(3.0);
  switch (m) {
    case 0: return 0.5 * (3 * z * z - 1);
    case 1: return r3 * x * z;
    case -1: return r3 * y * z;
    case 2: return 0.5 * r3 * (x * x - y * y);
    default: return r3 * x * y;
  }
}

double SphereIntegral(const std::function<double(double, double, double)>& f) {
  static const std::vector<SpherePoint> kRule = SphereRule();
  double s = 0;
  for (const SpherePoint& p : kRule) s += p.w * f(p.x, p.y, p.z);
  return s;
}

int ShellOf(int i) { return i == 0 ? 0 : i < 4 ? 1 : 2; }

// Index of the SlaterCondon array of the report for each radial integral.
enum ScIndex {
  F0SS, F0SP, F0SD, G1SP, H1SPPD, F0PP, F2PP, F0PD, F2PD, H2SDPP, F0DD, F2DD, F4DD, G2SD, H2SDDD, G1PD, G3PD
};

// R^k for the product of shells (la, lb) of electron 1 and (lc, ld) of electron 2.
double Radial(const ElementParameters& p, int la, int lb, int lc, int ld, int k) {
  auto pairType = [](int a, int b) { return a <= b ? a * 3 + b : b * 3 + a; };  // ss 0 sp 1 sd 2 pp 4 pd 5 dd 8
  int t1 = pairType(la, lb), t2 = pairType(lc, ld);
  if (t1 > t2) std::swap(t1, t2);
  const auto& sc = p.slaterCondon;
  switch (t1 * 10 + t2) {
    case 0: return k == 0 ? sc[F0SS] : 0;
    case 4: return k == 0 ? sc[F0SP] : 0;
    case 11: return k == 1 ? sc[G1SP] : 0;
    case 44: return k == 0 ? sc[F0PP] : k == 2 ? sc[F2PP] : 0;
    case 8: return k == 0 ? sc[F0SD] : 0;
    case 48: return k == 0 ? sc[F0PD] : k == 2 ? sc[F2PD] : 0;
    case 88: return k == 0 ? sc[F0DD] : k == 2 ? sc[F2DD] : k == 4 ? sc[F4DD] : 0;
    case 55: return k == 1 ? sc[G1PD] : k == 3 ? sc[G3PD] : 0;
    case 15: return k == 1 ? sc[H1SPPD] : 0;
    case 22: return k == 2 ? sc[G2SD] : 0;
    case 24: return k == 2 ? sc[H2SDPP] : 0;
    case 28: return k == 2 ? sc[H2SDDD] : 0;
  }
  return 0;
}

// The additive term rho of a multipole of order l and charge separation d
// whose one-centre self-interaction equals `fg` (eV): the condition of the
// MNDO/d paper, solved by bisection on the interval the method searches.
double AdditiveTerm(int l, double d, double fg, double ev) {
  if (l == 0) return 0.5 * ev / fg;
  auto f = [&](double rho) {
    if (l == 1) return ev / 4 * (1 / rho - 1 / std::sqrt(rho * rho + d * d)) - fg;
    return ev / 8 * (1 / rho - 2 / std::sqrt(rho * rho + d * d / 2) + 1 / std::sqrt(rho * rho + d * d)) - fg;
  };
  double lo = 0.1, hi = 5.0;  // f falls with rho
  if (f(lo) <= 0) return lo;
  if (f(hi) >= 0) return hi;
  for (int it = 0; it < 200 && hi - lo > 1e-14; ++it) {
    const double mid = 0.5 * (lo + hi);
    (f(mid) > 0 ? lo : hi) = mid;
  }
  return 0.5 * (lo + hi);
}

// The radial moment factor of the MNDO/d paper for a product of Slater
// functions (n1, z1) and (n2, z2) and multipole order l.
double MomentFactor(double z1, double z2, int n1, int n2, int l) {
  const double zz = z1 + z2;
  return Factorial(n1 + n2 + l) / std::sqrt(Factorial(2 * n1) * Factorial(2 * n2)) *
         std::pow(2 * z1 / zz, n1 + 0.5) * std::pow(2 * z2 / zz, n2 + 0.5) * std::pow(2.0, l) / std::pow(zz, l);
}

}  // namespace

double RadialSlaterCondon(int k, int na, double ea, int nb, double eb, int nc, double ec, int nd, double ed,
                          double ev) {
  auto norm = [](int n, double e) { return std::pow(2 * e, n + 0.5) / std::sqrt(Factorial(2 * n)); };
  const double n = norm(na, ea) * norm(nb, eb) * norm(nc, ec) * norm(nd, ed);
  const int p = na + nb, q = nc + nd;
  const double alpha = ea + eb, beta = ec + ed;
  // Region where electron 2 is inside: outer power m of electron 1, inner power i of electron 2.
  auto region = [](int m, double a, int i, double b) {
    // int_0^inf x^m e^{-a x} int_0^x t^i e^{-b t} dt dx
    double sum = 0, term = 1;  // b^j / j!
    for (int j = 0; j <= i; ++j) {
      sum += term * Factorial(m + j) / std::pow(a + b, m + j + 1);
      term *= b / (j + 1);
    }
    return Factorial(i) / std::pow(b, i + 1) * (Factorial(m) / std::pow(a, m + 1) - sum);
  };
  const double v = region(p - k - 1, alpha, q + k, beta) + region(q - k - 1, beta, p + k, alpha);
  return n * v * ev;
}

void DeriveDOrbitalTerms(int z, int n, ParameterSet& set) {
  ElementParameters& p = set.el[z];
  const int nd = ValenceNd(z);
  const double es = p.zns > 0 ? p.zns : p.zs, ep = p.znp > 0 ? p.znp : p.zp, ed = p.znd > 0 ? p.znd : p.zd;
  const double ev = set.Units().ev;
  auto& sc = p.slaterCondon;
  sc[F0SS] = p.gss;
  sc[F0SP] = p.gsp;
  sc[G1SP] = 3 * p.hsp;
  sc[F2PP] = 25.0 / 6.0 * (p.gpp - p.gp2);
  sc[F0PP] = p.gpp - 4.0 / 25.0 * sc[F2PP];
  sc[F0SD] = RadialSlaterCondon(0, n, es, n, es, nd, ed, nd, ed, ev);
  sc[F0PD] = RadialSlaterCondon(0, n, ep, n, ep, nd, ed, nd, ed, ev);
  sc[F0DD] = RadialSlaterCondon(0, nd, ed, nd, ed, nd, ed, nd, ed, ev);
  sc[G1PD] = RadialSlaterCondon(1, n, ep, nd, ed, n, ep, nd, ed, ev);
  sc[H1SPPD] = RadialSlaterCondon(1, n, es, n, ep, n, ep, nd, ed, ev);
  sc[G2SD] = RadialSlaterCondon(2, n, es, nd, ed, n, es, nd, ed, ev);
  sc[F2PD] = RadialSlaterCondon(2, n, ep, n, ep, nd, ed, nd, ed, ev);
  sc[F2DD] = RadialSlaterCondon(2, nd, ed, nd, ed, nd, ed, nd, ed, ev);
  sc[H2SDPP] = RadialSlaterCondon(2, n, ep, n, ep, n, es, nd, ed, ev);
  sc[H2SDDD] = RadialSlaterCondon(2, n, es, nd, ed, nd, ed, nd, ed, ev);
  sc[G3PD] = RadialSlaterCondon(3, n, ep, nd, ed, n, ep, nd, ed, ev);
  sc[F4DD] = RadialSlaterCondon(4, nd, ed, nd, ed, nd, ed, nd, ed, ev);
  p.f0sd = sc[F0SD], p.g2sd = sc[G2SD], p.f0dd = sc[F0DD], p.f2dd = sc[F2DD], p.f4dd = sc[F4DD];
  p.f0pd = sc[F0PD], p.f2pd = sc[F2PD], p.g1pd = sc[G1PD], p.g3pd = sc[G3PD];

  // Charge separations (ADD 2..6) and additive terms (BDD 1..9) of the
  // multipoles: sp and pp as in MNDO, sd, pd and dd from the d exponents.
  p.add[0] = 0;
  p.add[1] = p.dd;
  p.add[2] = p.qq * std::sqrt(2.0);
  p.add[3] = std::sqrt(MomentFactor(p.zs, p.zd, n, nd, 2) * std::sqrt(1 / 60.0));
  p.add[4] = MomentFactor(p.zp, p.zd, n, nd, 1) / std::sqrt(20.0);
  p.add[5] = std::sqrt(MomentFactor(p.zd, p.zd, nd, nd, 2) / 14.0);
  p.bdd[0] = 0.5 / p.am;
  p.bdd[1] = 0.5 / p.ad;
  p.bdd[2] = 0.5 / p.aq;
  p.bdd[3] = AdditiveTerm(2, p.add[3], sc[G2SD] / 5, ev);
  p.bdd[4] = AdditiveTerm(1, p.add[4], 4.0 / 15.0 * sc[G1PD], ev);
  p.bdd[5] = AdditiveTerm(2, p.add[5], 3.0 / 49.0 * sc[F2DD], ev);
  p.bdd[6] = p.bdd[0];
  p.bdd[7] = sc[F0DD] > 1e-5 ? AdditiveTerm(0, 1, sc[F0DD], ev) : 1e5;
  p.bdd[8] = CoreAdditiveTerm(z, p, set.method);
}

double CoreAdditiveTerm(int z, const ElementParameters& p, EngineMethod method) {
  if (method == EngineMethod::MNDOD) {
    if (z == 11) return 1.5305533;
    if (z == 12) return 1.3507762;
    if ((z >= 13 && z <= 17) || z == 30 || z == 35 || z == 48 || z == 53 || z == 80)
      return 0.5 * UnitsOf(method).ev / p.gss;
  }
  return 0.5 / p.am;
}

std::vector<double> OneCentreIntegralsSpd(const ElementParameters& p) {
  constexpr int n = 9;
  // Angular factors G(ij, k, m) = int Y_i Y_j Y_km for k = 0..4.
  std::vector<std::vector<std::vector<double>>> g(n * n, std::vector<std::vector<double>>(5));
  for (int i = 0; i < n; ++i)
    for (int j = 0; j <= i; ++j)
      for (int k = 0; k <= 4; ++k) {
        std::vector<double> v(2 * k + 1);
        for (int m = -k; m <= k; ++m)
          v[m + k] = SphereIntegral([&](double x, double y, double zc) {
            return OrbitalAngular(i, x, y, zc) * OrbitalAngular(j, x, y, zc) * RealHarmonic(k, m, x, y, zc);
          });
        g[i * n + j][k] = v;
        g[j * n + i][k] = v;
      }
  std::vector<double> out(static_cast<size_t>(n) * n * n * n, 0.0);
  for (int a = 0; a < n; ++a)
    for (int b = 0; b < n; ++b)
      for (int c = 0; c < n; ++c)
        for (int d = 0; d < n; ++d) {
          double v = 0;
          for (int k = 0; k <= 4; ++k) {
            const double r = Radial(p, ShellOf(a), ShellOf(b), ShellOf(c), ShellOf(d), k);
            if (r == 0) continue;
            double ang = 0;
            for (int m = 0; m <= 2 * k; ++m) ang += g[a * n + b][k][m] * g[c * n + d][k][m];
            v += r * 4 * kPi / (2 * k + 1) * ang;
          }
          out[((a * n + b) * n + c) * n + d] = std::abs(v) < 1e-12 ? 0.0 : v;
        }
  return out;
}

double MultipoleCoefficient(int i, int j, int l, int m) {
  auto moment = [](int a, int b, int l_, int m_) {
    return SphereIntegral([&](double x, double y, double z) {
      return OrbitalAngular(a, x, y, z) * OrbitalAngular(b, x, y, z) * MultipoleFunction(l_, m_, x, y, z);
    });
  };
  // The point-charge quadrupole along z carries 3/4 D^2 of moment, the others sqrt(3)/2 D^2.
  auto configMoment = [](int l_, int m_) { return l_ == 2 ? (m_ == 0 ? 0.75 : std::sqrt(3.0) / 2) : 1.0; };
  const int si = ShellOf(i), sj = ShellOf(j);
  const int lo = std::min(si, sj), hi = std::max(si, sj);
  // The product whose coefficient is 1 by the definition of the charge separations.
  int ra = 0, rb = 0, rm = 0;
  if (l == 0) ra = rb = lo == 0 ? 0 : lo == 1 ? 3 : 5;
  if (lo == 0 && hi == 1) ra = 0, rb = 3, rm = 0;     // s z
  if (lo == 1 && hi == 1 && l == 2) ra = 1, rb = 3, rm = 1;  // x z
  if (lo == 0 && hi == 2) ra = 0, rb = 5, rm = 1;     // s xz
  if (lo == 1 && hi == 2) ra = 5, rb = 3, rm = 1;     // xz z
  if (lo == 2 && hi == 2 && l == 2) ra = 7, rb = 5, rm = 1;  // x2-y2 xz
  if (l == 0 && lo != hi) return 0;
  const double ref = moment(ra, rb, l, rm) / configMoment(l, rm);
  if (std::abs(ref) < 1e-12) return 0;
  const double v = moment(i, j, l, m) / configMoment(l, m) / ref;
  return std::abs(v) < 1e-12 ? 0.0 : v;
}

}  // namespace quintor::engine

#include "rotations/monte_carlo.h"

#include <gsl/gsl_errno.h>
#include <gsl/gsl_integration.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <memory>
#include <random>
#include <thread>

#include "io/fortran_io.h"
#include "numeric/constants.h"
#include "rotations/reduced_moment.h"

namespace quintor {

using namespace geom;
namespace rc = constants;

namespace {

// Boltzmann weights take 1/(RT) in Hartree with this factor per kJ/mol; it is
// 1/HartreeToKJPerMol (not the thermochemistry's 0.00038088897), kept as it is.
constexpr double kKJToHartreeMC = 0.0003809083380231225;
constexpr double kHartreeJPerMol = rc::HartreeToKJPerMol * 1000.0;

constexpr long long kBlockTrials = 1 << 15;  // trials drawn from one generator
constexpr double kNarrowestBin = 0.002;       // kJ/mol
constexpr int kMostBins = 1 << 16;

// beta per kJ/mol at T.
double Beta(double T) { return kKJToHartreeMC / (rc::GasConstant * T / kHartreeJPerMol); }

// Lowest and highest value of a series on a 0.1-degree grid.
std::pair<double, double> SeriesRange(const CosineSeries& a) {
  double lo = 1e300, hi = -1e300;
  for (int k = 0; k < 3600; ++k) {
    const double v = CosineSum(a, k * 0.1 * rc::DegToRad);
    lo = std::min(lo, v);
    hi = std::max(hi, v);
  }
  return {lo, hi};
}

// sum a[m] cos(m x) by the Chebyshev recurrence from c = cos x.
double SeriesAt(const CosineSeries& a, double c) {
  double tPrev = 1.0, t = c, v = a[0] + a[1] * c;
  for (int m = 2; m < FourierTerms; ++m) {
    const double next = 2.0 * c * t - tPrev;
    tPrev = t;
    t = next;
    v += a[m] * t;
  }
  return v;
}

// The molecule and its rotations, 0-based, prepared once for the trials.
struct TorsionFrame {
  std::vector<double> mass;
  std::vector<Vec3> ref;
  double totalMass = 0.0;
  struct Rot {
    std::vector<int> group, other;  // other: only when an axis point is a centre of mass
    int atom1 = -1, atom2 = -1;     // -1: centre of mass of group / other side
    CosineSeries potential{};
  };
  std::vector<Rot> rot;
  // Rotations whose group holds atom a: member[start[a] .. start[a+1]).
  std::vector<int> start, member;
};

TorsionFrame MakeFrame(const std::vector<TorsionRotor>& rotors, const std::vector<double>& masses,
                       const std::vector<Vec3>& xyz) {
  TorsionFrame f;
  const int nAtoms = static_cast<int>(xyz.size());
  f.mass.assign(masses.begin(), masses.begin() + nAtoms);
  f.ref = xyz;
  for (double m : f.mass) f.totalMass += m;
  std::vector<std::vector<int>> of(static_cast<size_t>(nAtoms));
  for (size_t i = 0; i < rotors.size(); ++i) {
    const TorsionRotor& r = rotors[i];
    TorsionFrame::Rot t;
    for (int a : r.group) {
      t.group.push_back(a - 1);
      of[static_cast<size_t>(a - 1)].push_back(static_cast<int>(i));
    }
    t.atom1 = r.axisAtom1 - 1;
    t.atom2 = r.axisAtom2 - 1;
    if (t.atom2 < 0)
      for (int a : OtherGroup(nAtoms, r.group)) t.other.push_back(a - 1);
    t.potential = r.potential;
    f.rot.push_back(std::move(t));
  }
  f.start.push_back(0);
  for (const auto& list : of) {
    f.member.insert(f.member.end(), list.begin(), list.end());
    f.start.push_back(static_cast<int>(f.member.size()));
  }
  return f;
}

Vec3 CentreOf(const TorsionFrame& f, const std::vector<Vec3>& x, const std::vector<int>& atoms) {
  Vec3 c{0, 0, 0};
  double m = 0.0;
  for (int a : atoms) {
    c = c + f.mass[a] * x[a];
    m += f.mass[a];
  }
  return m > 0.0 ? (1.0 / m) * c : c;
}

void AxisAt(const TorsionFrame& f, const TorsionFrame::Rot& r, const std::vector<Vec3>& x, Vec3& p1, Vec3& e) {
  p1 = r.atom1 >= 0 ? x[r.atom1] : CentreOf(f, x, r.group);
  const Vec3 p2 = r.atom2 >= 0 ? x[r.atom2] : CentreOf(f, x, r.other);
  const double len = Norm(p2 - p1);
  if (len <= 0.0) throw RotationAxisError();
  e = (1.0 / len) * (p2 - p1);
}

// Scratch of one thread.
struct Workspace {
  std::vector<Vec3> x, axis, point, t, L;
  std::vector<double> A, K;
  explicit Workspace(const TorsionFrame& f) {
    const size_t n = f.rot.size();
    x = f.ref;
    axis.resize(n);
    point.resize(n);
    t.resize(n);
    L.resize(n);
    A.resize(n * n);
    K.resize(n * n);
  }
};

// sqrt(det K) at the geometry in w.x: K = A - t t^T / M - L^T I^-1 L, A the
// direct products of the rotations' displacements, t and L the momentum and
// angular momentum they give the whole molecule, I its inertia tensor.
double WeightAt(const TorsionFrame& f, Workspace& w) {
  const size_t n = f.rot.size(), nAtoms = f.ref.size();
  for (size_t i = 0; i < n; ++i) AxisAt(f, f.rot[i], w.x, w.point[i], w.axis[i]);
  Vec3 com{0, 0, 0};
  for (size_t a = 0; a < nAtoms; ++a) com = com + f.mass[a] * w.x[a];
  com = (1.0 / f.totalMass) * com;
  double ixx = 0, iyy = 0, izz = 0, ixy = 0, ixz = 0, iyz = 0;
  std::fill(w.t.begin(), w.t.end(), Vec3{0, 0, 0});
  std::fill(w.L.begin(), w.L.end(), Vec3{0, 0, 0});
  std::fill(w.A.begin(), w.A.end(), 0.0);
  std::array<Vec3, 64> u{};  // displacements of one atom by its rotations
  for (size_t a = 0; a < nAtoms; ++a) {
    const double m = f.mass[a];
    const Vec3 r = w.x[a] - com;
    ixx += m * (r[1] * r[1] + r[2] * r[2]);
    iyy += m * (r[0] * r[0] + r[2] * r[2]);
    izz += m * (r[0] * r[0] + r[1] * r[1]);
    ixy -= m * r[0] * r[1];
    ixz -= m * r[0] * r[2];
    iyz -= m * r[1] * r[2];
    const int b = f.start[a], e = std::min(f.start[a + 1], b + 64);
    for (int k = b; k < e; ++k) {
      const size_t i = static_cast<size_t>(f.member[k]);
      const Vec3 ui = Cross(w.axis[i], w.x[a] - w.point[i]);
      u[k - b] = ui;
      w.t[i] = w.t[i] + m * ui;
      w.L[i] = w.L[i] + m * Cross(r, ui);
      for (int l = b; l <= k; ++l) w.A[static_cast<size_t>(f.member[l]) * n + i] += m * Dot(u[l - b], ui);
    }
  }
  // Inverse of the inertia tensor by cofactors.
  const double c00 = iyy * izz - iyz * iyz, c01 = ixz * iyz - ixy * izz, c02 = ixy * iyz - ixz * iyy;
  const double c11 = ixx * izz - ixz * ixz, c12 = ixy * ixz - ixx * iyz, c22 = ixx * iyy - ixy * ixy;
  const double det = ixx * c00 + ixy * c01 + ixz * c02;
  const double s = det != 0.0 ? 1.0 / det : 0.0;
  const Mat3 inv{Vec3{c00 * s, c01 * s, c02 * s}, Vec3{c01 * s, c11 * s, c12 * s}, Vec3{c02 * s, c12 * s, c22 * s}};
  for (size_t i = 0; i < n; ++i) {
    const Vec3 li = inv * w.L[i];
    for (size_t j = 0; j <= i; ++j) {
      const double a = w.A[std::min(i, j) * n + std::max(i, j)];
      w.K[i * n + j] = a - Dot(w.t[i], w.t[j]) / f.totalMass - Dot(li, w.L[j]);
    }
  }
  // Cholesky: det K is the square of the product of the pivots.
  double root = 1.0;
  for (size_t j = 0; j < n; ++j) {
    double d = w.K[j * n + j];
    for (size_t k = 0; k < j; ++k) d -= w.K[j * n + k] * w.K[j * n + k];
    if (!(d > 0.0)) return 0.0;
    const double p = std::sqrt(d);
    root *= p;
    w.K[j * n + j] = p;
    for (size_t i = j + 1; i < n; ++i) {
      double v = w.K[i * n + j];
      for (size_t k = 0; k < j; ++k) v -= w.K[i * n + k] * w.K[j * n + k];
      w.K[i * n + j] = v / p;
    }
  }
  return root;
}

// Turns every group by its angle in turn (the axis of a later rotation moves
// with the earlier ones); returns the potential.
double PlaceTorsions(const TorsionFrame& f, Workspace& w, const double* angle) {
  std::copy(f.ref.begin(), f.ref.end(), w.x.begin());
  double v = 0.0;
  for (size_t i = 0; i < f.rot.size(); ++i) {
    const TorsionFrame::Rot& r = f.rot[i];
    const double c = std::cos(angle[i]), s = std::sin(angle[i]);
    v += SeriesAt(r.potential, c);
    Vec3 p, e;
    AxisAt(f, r, w.x, p, e);
    const double k = 1.0 - c;  // Rodrigues: R = c 1 + s [e]x + (1 - c) e e^T
    const Mat3 R{Vec3{c + k * e[0] * e[0], k * e[0] * e[1] - s * e[2], k * e[0] * e[2] + s * e[1]},
                 Vec3{k * e[1] * e[0] + s * e[2], c + k * e[1] * e[1], k * e[1] * e[2] - s * e[0]},
                 Vec3{k * e[2] * e[0] - s * e[1], k * e[2] * e[1] + s * e[0], c + k * e[2] * e[2]}};
    for (int a : r.group) w.x[a] = p + R * (w.x[a] - p);
  }
  return v;
}

using Moments = std::array<double, MomentOrder + 1>;

struct Bins {
  std::vector<Moments> g1, g2;
};

void AddTrial(const TorsionSample& layout, Bins& bins, double v, double g) {
  const int nb = static_cast<int>(bins.g1.size());
  int b = static_cast<int>(std::floor((v - layout.vLow) / layout.binWidth + 0.5));
  b = std::clamp(b, 0, nb - 1);
  const double d = v - (layout.vLow + b * layout.binWidth);
  Moments& m1 = bins.g1[static_cast<size_t>(b)];
  Moments& m2 = bins.g2[static_cast<size_t>(b)];
  const double g2 = g * g;
  double p = 1.0;
  for (int k = 0; k <= MomentOrder; ++k) {
    m1[k] += g * p;
    m2[k] += g2 * p;
    p *= d;
  }
}

}  // namespace

CosineSeries SingleBarrierSeries(double V0, int n) {
  CosineSeries a{};
  a[0] = V0 / 2.0;
  if (n >= 1 && n < FourierTerms) a[n] = -V0 / 2.0;
  return a;
}

long long MonteCarloTrials(int rotations, long long requested) {
  if (requested > 0) return requested;
  if (rotations <= 1) return 100;
  if (rotations <= 3) return 1000;
  if (rotations <= 5) return 10000;
  if (rotations <= 7) return 100000;
  if (rotations <= 9) return 1000000;
  return 10000000;
}

double KinematicWeight(const std::vector<TorsionRotor>& rotors, const std::vector<double>& masses,
                       const std::vector<Vec3>& xyz) {
  const TorsionFrame f = MakeFrame(rotors, masses, xyz);
  Workspace w(f);
  return WeightAt(f, w);
}

TorsionSample SampleTorsions(const std::vector<TorsionRotor>& rotors, const std::vector<double>& masses,
                             const std::vector<Vec3>& xyz, long long trials, MonteCarloSeeds seeds,
                             unsigned threads) {
  TorsionSample sample;
  sample.trials = std::max(trials, 0LL);
  sample.rotors = static_cast<int>(rotors.size());
  const TorsionFrame frame = MakeFrame(rotors, masses, xyz);
  double lo = 0.0, hi = 0.0;
  for (const TorsionRotor& r : rotors) {
    sample.productNRot *= std::max(r.n, 1);
    const auto [l, h] = SeriesRange(r.potential);
    lo += l;
    hi += h;
  }
  const double span = hi - lo;
  const int nb = span > 0.0 ? static_cast<int>(std::min<double>(kMostBins, std::ceil(span / kNarrowestBin)) + 1) : 1;
  sample.vLow = lo;
  sample.binWidth = span > 0.0 ? span / (nb - 1) : 1.0;
  {  // the axes are checked before the threads start
    Workspace probe(frame);
    for (const auto& r : frame.rot) {
      Vec3 p, e;
      AxisAt(frame, r, probe.x, p, e);
    }
  }

  if (threads == 0) threads = std::max(1u, std::thread::hardware_concurrency());
  const long long blocks = (sample.trials + kBlockTrials - 1) / kBlockTrials;
  threads = static_cast<unsigned>(std::min<long long>(threads, std::max(blocks, 1LL)));
  std::vector<Bins> perThread(threads);
  std::atomic<long long> nextBlock{0};
  const size_t nRot = rotors.size();
  const auto work = [&](unsigned id) {
    Bins& bins = perThread[id];
    bins.g1.assign(static_cast<size_t>(nb), Moments{});
    bins.g2.assign(static_cast<size_t>(nb), Moments{});
    Workspace w(frame);
    std::vector<double> angle(nRot);
    for (long long b = nextBlock++; b < blocks; b = nextBlock++) {
      std::seed_seq seq{seeds.seed1, seeds.seed2, static_cast<std::uint32_t>(b),
                        static_cast<std::uint32_t>(b >> 32)};
      std::mt19937_64 rng(seq);
      const long long end = std::min(sample.trials, (b + 1) * kBlockTrials);
      for (long long k = b * kBlockTrials; k < end; ++k) {
        for (double& a : angle) a = 2.0 * rc::Pi * (static_cast<double>(rng() >> 11) * 0x1.0p-53);
        const double v = PlaceTorsions(frame, w, angle.data());
        AddTrial(sample, bins, v, WeightAt(frame, w));
      }
    }
  };
  std::vector<std::thread> pool;
  for (unsigned id = 1; id < threads; ++id) pool.emplace_back(work, id);
  work(0);
  for (std::thread& t : pool) t.join();

  sample.g1.assign(static_cast<size_t>(nb), Moments{});
  sample.g2.assign(static_cast<size_t>(nb), Moments{});
  for (const Bins& bins : perThread)
    for (size_t b = 0; b < bins.g1.size(); ++b)
      for (int k = 0; k <= MomentOrder; ++k) {
        sample.g1[b][k] += bins.g1[b][k];
        sample.g2[b][k] += bins.g2[b][k];
      }
  return sample;
}

namespace {

// Sums over the trials at one beta, each bin's exp(-beta d) by its Taylor
// series, relative to exp(-beta vLow) (squared for the squares).
struct WeightSums {
  double w = 0.0;    // sum g e^{-beta (V - vLow)}
  double wv = 0.0;   // ... times V
  double ww = 0.0;   // sum g^2 e^{-2 beta (V - vLow)}
};

WeightSums SumsAt(const TorsionSample& s, double beta) {
  constexpr int kTerms = MomentOrder - 1;  // d^0 .. d^9 with d^(k+1) available
  std::array<double, kTerms> c1{}, c2{};
  c1[0] = c2[0] = 1.0;
  for (int k = 1; k < kTerms; ++k) {
    c1[k] = c1[k - 1] * (-beta) / k;
    c2[k] = c2[k - 1] * (-2.0 * beta) / k;
  }
  WeightSums r;
  for (size_t b = 0; b < s.g1.size(); ++b) {
    const Moments& m1 = s.g1[b];
    if (m1[0] == 0.0) continue;
    const Moments& m2 = s.g2[b];
    const double centre = s.vLow + static_cast<double>(b) * s.binWidth;
    const double e = std::exp(-beta * (centre - s.vLow));
    double w = 0.0, wd = 0.0, ww = 0.0;
    for (int k = 0; k < kTerms; ++k) {
      w += c1[k] * m1[k];
      wd += c1[k] * m1[k + 1];
      ww += c2[k] * m2[k];
    }
    r.w += e * w;
    r.wv += e * (centre * w + wd);
    r.ww += e * e * ww;
  }
  return r;
}

// sum g^2 e^{-2 beta (V - vLow)} (V - mean)^2.
double CentredSquares(const TorsionSample& s, double beta, double mean) {
  constexpr int kTerms = MomentOrder - 1;
  std::array<double, kTerms> c2{};
  c2[0] = 1.0;
  for (int k = 1; k < kTerms; ++k) c2[k] = c2[k - 1] * (-2.0 * beta) / k;
  double sum = 0.0;
  for (size_t b = 0; b < s.g2.size(); ++b) {
    const Moments& m2 = s.g2[b];
    if (m2[0] == 0.0) continue;
    const double centre = s.vLow + static_cast<double>(b) * s.binWidth;
    const double c = centre - mean;
    const double e = std::exp(-beta * (centre - s.vLow));
    double v = 0.0;
    for (int k = 0; k + 2 <= MomentOrder && k < kTerms; ++k)
      v += c2[k] * (c * c * m2[k] + 2.0 * c * m2[k + 1] + m2[k + 2]);
    sum += e * e * v;
  }
  return sum;
}

// (2 pi sqrt(2 pi k T amu bohr^2) / h)^N: the kinetic factor of N rotations.
double LnKinetic(int rotors, double T) {
  const double one = 2.0 * rc::Pi *
                     std::sqrt(2.0 * rc::Pi * rc::Boltzmann * rc::AtomicMassUnit * rc::BohrRadius * rc::BohrRadius * T /
                               (rc::Planck * rc::Planck));
  return rotors * std::log(one);
}

}  // namespace

MonteCarloResult MonteCarloAtT(const TorsionSample& sample, double T) {
  MonteCarloResult r;
  r.T = T;
  const double dT = MonteCarloStep * T;
  const double n = static_cast<double>(std::max(sample.trials, 1LL));
  std::array<double, 5> f{};
  WeightSums centre;
  for (int j = 0; j < 5; ++j) {
    const double Tj = T + (j - 2) * dT, beta = Beta(Tj);
    const WeightSums ws = SumsAt(sample, beta);
    if (j == 2) centre = ws;
    const double lnScale = LnKinetic(sample.rotors, Tj) - std::log(sample.productNRot) - beta * sample.vLow;
    const double mean = ws.w / n;
    f[j] = lnScale + std::log(mean);
    r.Z[j] = std::exp(f[j]);
    const double variance = std::max(ws.ww / n - mean * mean, 0.0);
    r.sigmaZ[j] = std::exp(lnScale) * std::sqrt(variance / n);
  }
  const double R = rc::GasConstant, beta = Beta(T);
  r.lnZ = f[2];
  r.sigmaLnZ = r.Z[2] > 0.0 ? r.sigmaZ[2] / r.Z[2] : 0.0;
  r.dLnZdT = (2.0 * (f[4] - f[0]) + (f[3] - f[1])) / (10.0 * dT);
  const double second = (16.0 * (f[3] + f[1]) - f[4] - f[0] - 30.0 * f[2]) / (12.0 * dT * dT);
  // d lnZ/dT = N/(2T) + beta <V>/T: its error is that of the weighted mean of V.
  const double meanV = centre.w > 0.0 ? centre.wv / centre.w : 0.0;
  const double sigmaV = centre.w > 0.0 ? std::sqrt(std::max(CentredSquares(sample, beta, meanV), 0.0)) / centre.w : 0.0;
  r.sigmaDLnZdT = beta * sigmaV / T;
  r.U = R * T * T * r.dLnZdT / 1000.0;
  r.sigmaU = R * T * T * r.sigmaDLnZdT / 1000.0;
  r.S = R * (r.lnZ + T * r.dLnZdT);
  r.sigmaS = R * std::hypot(r.sigmaLnZ, T * r.sigmaDLnZdT);
  r.F = -R * T * r.lnZ / 1000.0;
  r.sigmaF = R * T * r.sigmaLnZ / 1000.0;
  r.CV = R * (2.0 * T * r.dLnZdT + T * T * second);
  return r;
}

void WriteMonteCarloReport(std::ostream& out, const MonteCarloResult& r, long long trials, int rotors,
                           MonteCarloSeeds seeds) {
  out << " NumRot      = " << FmtI(rotors, 10) << "\n";
  out << " MC trials   = " << FmtI(trials, 10) << "\n";
  out << " Random seeds= " << FmtI(seeds.seed1, 10) << FmtI(seeds.seed2, 10) << "\n";
  out << " T, K      =" << FmtF(r.T, 15, 5) << "\n";
  const auto five = [&](const char* label, double at, const std::array<double, 5>& v) {
    out << label << FmtF(at, 15, 5) << "  (";
    for (double x : v) out << FmtF(x, 15, 5);
    out << " )\n";
  };
  five(" Z         =", r.Z[2], r.Z);
  five(" sigma(Z)  =", r.sigmaZ[2], r.sigmaZ);
  const auto pm = [&](const char* label, double v, double s) {
    out << label << FmtF(v, 15, 5) << " +/- sigma =" << FmtF(s, 15, 5) << "\n";
  };
  pm(" Log(Z)    =", r.lnZ, r.sigmaLnZ);
  pm(" dLogZ/dT  =", r.dLnZdT, r.sigmaDLnZdT);
  pm(" U, kJ/mol =", r.U, r.sigmaU);
  pm(" H, kJ/mol =", r.U, r.sigmaU);
  pm(" S, J/K/mol=", r.S, r.sigmaS);
  pm(" F, kJ/mol =", r.F, r.sigmaF);
  out << " G, kJ/mol =" << FmtF(r.F, 15, 5) << "\n";
}

namespace {

struct IntegrandData {
  const CosineSeries* potential;
  double rt;  // kJ/mol
};

double BoltzmannFactor(double x, void* p) {
  const auto* d = static_cast<const IntegrandData*>(p);
  return std::exp(-CosineSum(*d->potential, x) / d->rt);
}

}  // namespace

ConfigurationIntegral RotorConfigurationIntegral(const CosineSeries& potential, double T) {
  ConfigurationIntegral c;
  c.xa = 0.0;
  c.xb = 2.0 * rc::Pi;
  IntegrandData data{&potential, rc::GasConstant * T / 1000.0};
  gsl_function fn;
  fn.function = &BoltzmannFactor;
  fn.params = &data;
  constexpr size_t kLimit = 1000;
  const std::unique_ptr<gsl_integration_workspace, decltype(&gsl_integration_workspace_free)> ws(
      gsl_integration_workspace_alloc(kLimit), &gsl_integration_workspace_free);
  // A tolerance not reached is reported through the error estimate, not by abort.
  gsl_error_handler_t* previous = gsl_set_error_handler_off();
  gsl_integration_qag(&fn, c.xa, c.xb, 0.0, 1e-10, kLimit, GSL_INTEG_GAUSS41, ws.get(), &c.value, &c.error);
  gsl_set_error_handler(previous);
  return c;
}

void WriteConfigurationIntegrals(std::ostream& out, const std::vector<TorsionRotor>& rotors, double T) {
  out << " Configuration integrals for the independent internal rotations\n";
  out << "   i         Xa             Xb           ConfInt          Err\n";
  for (size_t i = 0; i < rotors.size(); ++i) {
    const ConfigurationIntegral c = RotorConfigurationIntegral(rotors[i].potential, T);
    out << FmtI(static_cast<long long>(i + 1), 4) << FmtF(c.xa, 15, 5) << FmtF(c.xb, 15, 5) << FmtE(c.value, 17, 8)
        << FmtE(c.error, 13, 3) << "\n";
  }
}

}  // namespace quintor

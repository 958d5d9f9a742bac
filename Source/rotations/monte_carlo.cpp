#include "rotations/monte_carlo.h"

#include <gsl/gsl_errno.h>
#include <gsl/gsl_integration.h>

#include <algorithm>
#include <atomic>
#include <map>
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

constexpr long long kBlockTrials = 128;  // trials of one block when the count is automatic
constexpr int kGrid = 1024;                // cells of the inverse cumulative distribution
constexpr long long kStratum = 128;        // trials of one Latin hypercube

// beta per kJ/mol at T.
double Beta(double T) { return kKJToHartreeMC / (rc::GasConstant * T / kHartreeJPerMol); }

// sum a[m] cos(m x) by the Chebyshev recurrence from c = cos x.
double SeriesAt(const std::vector<double>& a, double c) {
  if (a.empty()) return 0.0;
  double tPrev = 1.0, t = c, v = a[0] + (a.size() > 1 ? a[1] * c : 0.0);
  for (size_t m = 2; m < a.size(); ++m) {
    const double next = 2.0 * c * t - tPrev;
    tPrev = t;
    t = next;
    v += a[m] * t;
  }
  return v;
}

// Mass, first and second moments of some atoms.
struct Moments {
  double m = 0.0;
  Vec3 s{0, 0, 0};
  double xx = 0, yy = 0, zz = 0, xy = 0, xz = 0, yz = 0;
  void Add(double mass, const Vec3& r) {
    m += mass;
    s = s + mass * r;
    xx += mass * r[0] * r[0], yy += mass * r[1] * r[1], zz += mass * r[2] * r[2];
    xy += mass * r[0] * r[1], xz += mass * r[0] * r[2], yz += mass * r[1] * r[2];
  }
  Moments& operator+=(const Moments& o) {
    m += o.m;
    s = s + o.s;
    xx += o.xx, yy += o.yy, zz += o.zz, xy += o.xy, xz += o.xz, yz += o.yz;
    return *this;
  }
  double Trace() const { return xx + yy + zz; }
  // sum m r (r . v)
  Vec3 Times(const Vec3& v) const {
    return {xx * v[0] + xy * v[1] + xz * v[2], xy * v[0] + yy * v[1] + yz * v[2], xz * v[0] + yz * v[1] + zz * v[2]};
  }
};

// The molecule and its rotations, 0-based, prepared once for the trials.
struct TorsionFrame {
  std::vector<double> mass;
  std::vector<Vec3> ref;
  double totalMass = 0.0;
  struct Rot {
    std::vector<int> group, other;  // other: only when an axis point is a centre of mass
    int atom1 = -1, atom2 = -1;     // -1: centre of mass of group / other side
    std::vector<double> potential;
  };
  std::vector<Rot> rot;
  // Atoms turned by the same rotations form a class; K needs only the mass
  // moments of each class. Pairs: the (i, j), i <= j, of its rotations.
  struct Class {
    std::vector<int> atoms;
    std::vector<std::pair<int, int>> pairs;
  };
  std::vector<Class> classes;
  std::vector<size_t> pairsUsed;  // i * n + j of every pair some class holds
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
  std::map<std::vector<int>, size_t> index;
  for (int a = 0; a < nAtoms; ++a) {
    const std::vector<int>& list = of[static_cast<size_t>(a)];
    if (list.empty()) continue;
    const auto [it, added] = index.try_emplace(list, f.classes.size());
    if (added) {
      TorsionFrame::Class c;
      for (size_t k = 0; k < list.size(); ++k)
        for (size_t l = 0; l <= k; ++l) c.pairs.emplace_back(std::min(list[k], list[l]), std::max(list[k], list[l]));
      f.classes.push_back(std::move(c));
    }
    f.classes[it->second].atoms.push_back(a);
  }
  for (const TorsionFrame::Class& c : f.classes)
    for (const auto& [i, j] : c.pairs) f.pairsUsed.push_back(static_cast<size_t>(i) * rotors.size() + static_cast<size_t>(j));
  std::sort(f.pairsUsed.begin(), f.pairsUsed.end());
  f.pairsUsed.erase(std::unique(f.pairsUsed.begin(), f.pairsUsed.end()), f.pairsUsed.end());
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
  std::vector<double> K;
  std::vector<Moments> pair;  // moments of the atoms turned by both i and j, at i * n + j
  explicit Workspace(const TorsionFrame& f) {
    const size_t n = f.rot.size();
    x = f.ref;
    axis.resize(n);
    point.resize(n);
    t.resize(n);
    L.resize(n);
    K.resize(n * n);
    pair.resize(n * n);
  }
};

// sqrt(det K) at the geometry in w.x: K = A - t t^T / M - L^T I^-1 L, A the
// direct products of the rotations' displacements u = e x (r - p), t and L
// the momentum and angular momentum they give the whole molecule, I its
// inertia tensor. All three follow from the mass, first and second moments
// (about the centre of mass) of the atoms each rotation, or pair of
// rotations, turns.
double WeightAt(const TorsionFrame& f, Workspace& w) {
  const size_t n = f.rot.size(), nAtoms = f.ref.size();
  Vec3 com{0, 0, 0};
  for (size_t a = 0; a < nAtoms; ++a) com = com + f.mass[a] * w.x[a];
  com = (1.0 / f.totalMass) * com;
  for (size_t i = 0; i < n; ++i) {
    AxisAt(f, f.rot[i], w.x, w.point[i], w.axis[i]);
    w.point[i] = w.point[i] - com;
  }
  double ixx = 0, iyy = 0, izz = 0, ixy = 0, ixz = 0, iyz = 0;
  for (size_t a = 0; a < nAtoms; ++a) {
    const double m = f.mass[a];
    const Vec3 r = w.x[a] - com;
    ixx += m * (r[1] * r[1] + r[2] * r[2]);
    iyy += m * (r[0] * r[0] + r[2] * r[2]);
    izz += m * (r[0] * r[0] + r[1] * r[1]);
    ixy -= m * r[0] * r[1];
    ixz -= m * r[0] * r[2];
    iyz -= m * r[1] * r[2];
  }
  for (size_t k : f.pairsUsed) w.pair[k] = Moments{};  // the others stay empty
  for (const TorsionFrame::Class& c : f.classes) {
    Moments mc;
    for (int a : c.atoms) mc.Add(f.mass[static_cast<size_t>(a)], w.x[static_cast<size_t>(a)] - com);
    for (const auto& [i, j] : c.pairs) w.pair[static_cast<size_t>(i) * n + static_cast<size_t>(j)] += mc;
  }
  for (size_t i = 0; i < n; ++i) {
    const Moments& g = w.pair[i * n + i];
    const Vec3 &e = w.axis[i], &p = w.point[i];
    w.t[i] = Cross(e, g.s - g.m * p);
    // sum m r x (e x (r - p)) = e sum m r.(r - p) - sum m (r - p)(r.e)
    w.L[i] = (g.Trace() - Dot(g.s, p)) * e - (g.Times(e) - Dot(g.s, e) * p);
  }
  // Inverse of the inertia tensor by cofactors.
  const double c00 = iyy * izz - iyz * iyz, c01 = ixz * iyz - ixy * izz, c02 = ixy * iyz - ixz * iyy;
  const double c11 = ixx * izz - ixz * ixz, c12 = ixy * ixz - ixx * iyz, c22 = ixx * iyy - ixy * ixy;
  const double det = ixx * c00 + ixy * c01 + ixz * c02;
  const double s = det != 0.0 ? 1.0 / det : 0.0;
  const Mat3 inv{Vec3{c00 * s, c01 * s, c02 * s}, Vec3{c01 * s, c11 * s, c12 * s}, Vec3{c02 * s, c12 * s, c22 * s}};
  const double invMass = 1.0 / f.totalMass;
  for (size_t i = 0; i < n; ++i) {
    const Vec3 li = inv * w.L[i];
    for (size_t j = 0; j <= i; ++j) {
      // sum over the atoms of both of (e_j x (r - p_j)).(e_i x (r - p_i))
      const Moments& g = w.pair[j * n + i];
      const Vec3 &ei = w.axis[i], &ej = w.axis[j], &pi = w.point[i], &pj = w.point[j];
      const double dd = g.Trace() - Dot(g.s, pi + pj) + g.m * Dot(pi, pj);
      const double cross = Dot(ei, g.Times(ej)) - Dot(ei, g.s) * Dot(ej, pi) - Dot(ei, pj) * Dot(ej, g.s) +
                           g.m * Dot(ei, pj) * Dot(ej, pi);
      const double a = g.m > 0.0 ? Dot(ei, ej) * dd - cross : 0.0;
      w.K[i * n + j] = a - Dot(w.t[i], w.t[j]) * invMass - Dot(li, w.L[j]);
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
// with the earlier ones).
void PlaceTorsions(const TorsionFrame& f, Workspace& w, const double* cosine, const double* sine) {
  std::copy(f.ref.begin(), f.ref.end(), w.x.begin());
  for (size_t i = 0; i < f.rot.size(); ++i) {
    const TorsionFrame::Rot& r = f.rot[i];
    const double c = cosine[i], s = sine[i];
    Vec3 p, e;
    AxisAt(f, r, w.x, p, e);
    const double k = 1.0 - c;  // Rodrigues: R = c 1 + s [e]x + (1 - c) e e^T
    const Mat3 R{Vec3{c + k * e[0] * e[0], k * e[0] * e[1] - s * e[2], k * e[0] * e[2] + s * e[1]},
                 Vec3{k * e[1] * e[0] + s * e[2], c + k * e[1] * e[1], k * e[1] * e[2] - s * e[0]},
                 Vec3{k * e[2] * e[0] - s * e[1], k * e[2] * e[1] + s * e[0], c + k * e[2] * e[2]}};
    for (int a : r.group) w.x[a] = p + R * (w.x[a] - p);
  }
}

}  // namespace

std::vector<double> SingleBarrierSeries(double V0, int n) {
  const size_t fold = static_cast<size_t>(std::max(n, 1));
  std::vector<double> a(fold + 1, 0.0);
  a[0] = V0 / 2.0;
  a[fold] = -V0 / 2.0;
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

namespace {

// One torsion's Boltzmann density at one beta, linear between kGrid nodes of
// equal spacing: a uniform number maps to an angle through the exact inverse
// of this density's cumulative distribution (a quadratic in each cell), and
// the trial's weight exp(-beta V) over the density at the angle makes the
// estimate exact on average whatever the grid. Angle and weight change
// smoothly with beta, so the same uniform numbers at the five temperatures
// give differences with little noise.
struct TorsionDensity {
  std::vector<double> node;        // exp(-beta (V - vMin)) at the kGrid + 1 nodes (the last is the first)
  std::vector<double> cumulative;  // kGrid + 1 integrals from 0
  std::vector<int> guide;          // guide[m]: the cell where u = m / kGrid falls
  double beta = 0.0;
  double vMin = 0.0;
  double lnZ = 0.0;                // ln of the integral of the linear density over the turn
};

constexpr double kCell = 2.0 * rc::Pi / kGrid;

TorsionDensity DensityOf(const std::vector<double>& V, double beta) {
  TorsionDensity d;
  d.beta = beta;
  std::vector<double> v(kGrid);
  for (int k = 0; k < kGrid; ++k) v[static_cast<size_t>(k)] = SeriesAt(V, std::cos(k * kCell));
  d.vMin = *std::min_element(v.begin(), v.end());
  d.node.resize(kGrid + 1);
  for (int k = 0; k < kGrid; ++k) d.node[static_cast<size_t>(k)] = std::exp(-beta * (v[static_cast<size_t>(k)] - d.vMin));
  d.node[kGrid] = d.node[0];
  d.cumulative.assign(kGrid + 1, 0.0);
  for (size_t k = 0; k < kGrid; ++k)
    d.cumulative[k + 1] = d.cumulative[k] + 0.5 * kCell * (d.node[k] + d.node[k + 1]);
  d.lnZ = std::log(d.cumulative.back());
  d.guide.resize(kGrid);
  size_t cell = 0;
  for (size_t m = 0; m < kGrid; ++m) {
    const double target = static_cast<double>(m) / kGrid * d.cumulative.back();
    while (cell + 1 < kGrid && d.cumulative[cell + 1] <= target) ++cell;
    d.guide[m] = static_cast<int>(cell);
  }
  return d;
}

// The cosine and sine of the angle of the uniform number u in [0, 1) and
// exp(-beta (V - vMin)) over the density there (1 up to the grid's error).
void Draw(const TorsionDensity& d, const std::vector<double>& potential, double u, double& cosine, double& sine,
          double& ratio) {
  const double target = u * d.cumulative.back();
  size_t cell = static_cast<size_t>(d.guide[std::min(static_cast<size_t>(u * kGrid), size_t{kGrid - 1})]);
  while (cell + 1 < kGrid && d.cumulative[cell + 1] <= target) ++cell;
  const double a = d.node[cell], b = d.node[cell + 1];
  const double q = (target - d.cumulative[cell]) / kCell;  // a t + (b - a) t^2 / 2 = q
  const double root = std::sqrt(std::max(a * a + 2.0 * (b - a) * q, 0.0));
  const double t = a + root > 0.0 ? std::clamp(2.0 * q / (a + root), 0.0, 1.0) : 0.5;
  const double x = (static_cast<double>(cell) + t) * kCell;
  const double density = a + (b - a) * t;
  cosine = std::cos(x);
  sine = std::sin(x);
  const double boltzmann = std::exp(-d.beta * (SeriesAt(potential, cosine) - d.vMin));
  ratio = density > 0.0 ? boltzmann / density : 0.0;
}

// (2 pi sqrt(2 pi k T amu bohr^2) / h)^N: the kinetic factor of N rotations.
double LnKinetic(int rotors, double T) {
  const double one = 2.0 * rc::Pi *
                     std::sqrt(2.0 * rc::Pi * rc::Boltzmann * rc::AtomicMassUnit * rc::BohrRadius * rc::BohrRadius * T /
                               (rc::Planck * rc::Planck));
  return rotors * std::log(one);
}

using Five = std::array<double, 5>;

// The functions that follow from ln Z at the five temperatures.
struct Estimate {
  Five f{};
  double lnZ = 0.0, d1 = 0.0, U = 0.0, S = 0.0, F = 0.0, CV = 0.0;
};

// ln Z at the five temperatures from the sums of g rho_j and of rho_j, rho_j
// the Boltzmann factor over the grid's density at the angles of T_j: <g>_Tj
// is their quotient, and the grids' own Z_i(T_j) stand in `base`.
Estimate FromSums(const Five& gRho, const Five& rho, const Five& base, double T) {
  Estimate e;
  const double dT = MonteCarloStep * T, R = rc::GasConstant;
  for (int j = 0; j < 5; ++j) e.f[j] = base[j] + std::log(gRho[j] / rho[j]);
  e.lnZ = e.f[2];
  e.d1 = (2.0 * (e.f[4] - e.f[0]) + (e.f[3] - e.f[1])) / (10.0 * dT);
  const double d2 = (16.0 * (e.f[3] + e.f[1]) - e.f[4] - e.f[0] - 30.0 * e.f[2]) / (12.0 * dT * dT);
  e.U = R * T * T * e.d1 / 1000.0;
  e.S = R * (e.lnZ + T * e.d1);
  e.F = -R * T * e.lnZ / 1000.0;
  e.CV = R * (2.0 * T * e.d1 + T * T * d2);
  return e;
}

// The sums of the trials of one block, per temperature.
struct BlockPlan {
  long long trials = 0, blockSize = 0;
  long long Blocks() const { return blockSize > 0 ? (trials + blockSize - 1) / blockSize : 0; }
};

}  // namespace

MonteCarloResult MonteCarloAtT(const std::vector<TorsionRotor>& rotors, const std::vector<double>& masses,
                               const std::vector<Vec3>& xyz, double T, long long trials, MonteCarloSeeds seeds,
                               unsigned threads) {
  MonteCarloResult r;
  r.T = T;
  const int nRot = static_cast<int>(rotors.size());
  const TorsionFrame frame = MakeFrame(rotors, masses, xyz);
  {  // the axes are checked before the threads start
    Workspace probe(frame);
    for (const auto& rot : frame.rot) {
      Vec3 p, e;
      AxisAt(frame, rot, probe.x, p, e);
    }
  }
  // Each of the five temperatures draws from its own densities, all from
  // the same uniform numbers.
  std::array<std::vector<TorsionDensity>, 5> density;
  double productNRot = 1.0;
  for (const TorsionRotor& t : rotors) productNRot *= std::max(t.n, 1);
  Five base{};
  for (int j = 0; j < 5; ++j) {
    const double Tj = T + (j - 2) * MonteCarloStep * T;
    double lnZj = 0.0;
    for (const TorsionRotor& t : rotors) {
      density[static_cast<size_t>(j)].push_back(DensityOf(t.potential, Beta(Tj)));
      const TorsionDensity& d = density[static_cast<size_t>(j)].back();
      lnZj += d.lnZ - d.beta * d.vMin;
    }
    // The kinetic factor holds the 2 pi of each turn, which the grids hold too.
    base[j] = LnKinetic(nRot, Tj) - nRot * std::log(2.0 * rc::Pi) - std::log(productNRot) + lnZj;
  }

  // Blocks: for a given count 32 of equal size; else 128 trials each, their
  // number raised until sigma(S) is reached or the ladder's count.
  const bool automatic = trials <= 0;
  const long long most = std::max(MonteCarloTrials(nRot, 0), MonteCarloFewestTrials);
  BlockPlan plan;
  if (automatic) {
    plan.blockSize = kBlockTrials;
    plan.trials = MonteCarloFewestTrials;
  } else {
    plan.trials = trials;
    plan.blockSize = std::max(1LL, (trials + MonteCarloBatches - 1) / MonteCarloBatches);
  }
  std::vector<Five> blockGRho, blockRho;
  if (threads == 0) threads = std::max(1u, std::thread::hardware_concurrency());

  const auto sample = [&](long long firstBlock, long long endBlock) {
    blockGRho.resize(static_cast<size_t>(endBlock), Five{});
    blockRho.resize(static_cast<size_t>(endBlock), Five{});
    std::atomic<long long> next{firstBlock};
    const auto work = [&]() {
      Workspace w(frame);
      std::vector<double> cosine(static_cast<size_t>(nRot)), sine(static_cast<size_t>(nRot)), u(static_cast<size_t>(nRot));
      std::vector<std::vector<int>> strata(static_cast<size_t>(nRot));
      double width = 1.0;
      for (long long b = next++; b < endBlock; b = next++) {
        std::seed_seq seq{seeds.seed1, seeds.seed2, static_cast<std::uint32_t>(b), static_cast<std::uint32_t>(b >> 32),
                          static_cast<std::uint32_t>(plan.blockSize)};
        std::mt19937_64 rng(seq);
        const long long count = std::min(plan.trials, (b + 1) * plan.blockSize) - b * plan.blockSize;
        Five gRho{}, rho{};
        for (long long k = 0; k < count; ++k) {
          // Latin hypercube in chunks of kStratum trials: each rotation's
          // uniform numbers fall one into each of kStratum equal strata, in
          // an order of their own. The blocks stay independent, so the batch
          // means keep their meaning.
          const long long chunk = k % kStratum;
          if (chunk == 0) {
            const long long size = std::min(kStratum, count - k);
            for (int i = 0; i < nRot; ++i) {
              std::vector<int>& order = strata[static_cast<size_t>(i)];
              order.resize(static_cast<size_t>(size));
              for (long long m = 0; m < size; ++m) order[static_cast<size_t>(m)] = static_cast<int>(m);
              for (long long m = size - 1; m > 0; --m)
                std::swap(order[static_cast<size_t>(m)], order[static_cast<size_t>(rng() % static_cast<std::uint64_t>(m + 1))]);
              width = 1.0 / static_cast<double>(size);
            }
          }
          for (int i = 0; i < nRot; ++i)
            u[static_cast<size_t>(i)] =
                (strata[static_cast<size_t>(i)][static_cast<size_t>(chunk)] + static_cast<double>(rng() >> 11) * 0x1.0p-53) *
                width;
          for (int j = 0; j < 5; ++j) {
            double ratio = 1.0;
            for (int i = 0; i < nRot; ++i) {
              double one = 1.0;
              Draw(density[static_cast<size_t>(j)][static_cast<size_t>(i)], frame.rot[static_cast<size_t>(i)].potential,
                   u[static_cast<size_t>(i)], cosine[static_cast<size_t>(i)], sine[static_cast<size_t>(i)], one);
              ratio *= one;
            }
            PlaceTorsions(frame, w, cosine.data(), sine.data());
            const double g = WeightAt(frame, w);
            gRho[j] += g * ratio;
            rho[j] += ratio;
          }
        }
        blockGRho[static_cast<size_t>(b)] = gRho;
        blockRho[static_cast<size_t>(b)] = rho;
      }
    };
    const unsigned n = static_cast<unsigned>(std::min<long long>(threads, std::max(endBlock - firstBlock, 1LL)));
    std::vector<std::thread> pool;
    for (unsigned id = 1; id < n; ++id) pool.emplace_back(work);
    work();
    for (std::thread& t : pool) t.join();
  };

  Estimate all;
  long long done = 0;
  for (;;) {
    const long long blocks = plan.Blocks();
    sample(done, blocks);
    done = blocks;
    // Batch means: the blocks in 32 consecutive batches.
    const long long nb = std::min<long long>(MonteCarloBatches, blocks);
    Five totalGRho{}, totalRho{};
    std::vector<Estimate> batch;
    for (long long b = 0; b < nb; ++b) {
      Five gRho{}, rho{};
      for (long long k = b * blocks / nb; k < (b + 1) * blocks / nb; ++k)
        for (int j = 0; j < 5; ++j) {
          gRho[j] += blockGRho[static_cast<size_t>(k)][j];
          rho[j] += blockRho[static_cast<size_t>(k)][j];
        }
      for (int j = 0; j < 5; ++j) totalGRho[j] += gRho[j], totalRho[j] += rho[j];
      batch.push_back(FromSums(gRho, rho, base, T));
    }
    all = FromSums(totalGRho, totalRho, base, T);
    const auto sigma = [&](auto field) {
      if (nb < 2) return 0.0;
      double mean = 0.0, sq = 0.0;
      for (const Estimate& e : batch) mean += field(e);
      mean /= static_cast<double>(nb);
      for (const Estimate& e : batch) sq += (field(e) - mean) * (field(e) - mean);
      return std::sqrt(sq / (static_cast<double>(nb) * static_cast<double>(nb - 1)));
    };
    r.sigmaLnZ = sigma([](const Estimate& e) { return e.lnZ; });
    r.sigmaDLnZdT = sigma([](const Estimate& e) { return e.d1; });
    r.sigmaU = sigma([](const Estimate& e) { return e.U; });
    r.sigmaS = sigma([](const Estimate& e) { return e.S; });
    r.sigmaF = sigma([](const Estimate& e) { return e.F; });
    r.sigmaCV = sigma([](const Estimate& e) { return e.CV; });
    for (int j = 0; j < 5; ++j) {
      r.Z[j] = std::exp(all.f[j]);
      r.sigmaZ[j] = r.Z[j] * sigma([j](const Estimate& e) { return e.f[j]; });
    }
    r.trials = plan.trials;
    if (!automatic || r.sigmaS <= MonteCarloTargetSigmaS || plan.trials >= most || nRot == 0) break;
    // Enough for the target if sigma falls as 1/sqrt(trials), with a tenth
    // more; whole rounds of 32 blocks, so that the batches stay equal.
    const double wanted = static_cast<double>(plan.trials) * (r.sigmaS / MonteCarloTargetSigmaS) *
                          (r.sigmaS / MonteCarloTargetSigmaS) * 1.1;
    const long long round = MonteCarloBatches * kBlockTrials;
    const long long next = (static_cast<long long>(std::min(wanted, 4.0 * static_cast<double>(plan.trials))) + round - 1) /
                           round * round;
    plan.trials = std::min(std::max(next, plan.trials + round), most);
  }
  r.lnZ = all.lnZ;
  r.dLnZdT = all.d1;
  r.U = all.U;
  r.S = all.S;
  r.F = all.F;
  r.CV = all.CV;
  return r;
}

void WriteMonteCarloReport(std::ostream& out, const MonteCarloResult& r, long long trials, int rotors,
                           MonteCarloSeeds seeds) {
  out << " NumRot      = " << FmtI(rotors, 10) << "\n";
  out << " MC trials   = " << FmtI(trials, 10) << "\n";
  out << " Random seeds= " << FmtI(seeds.seed1, 10) << FmtI(seeds.seed2, 10) << "\n";
  out << " T, K      =" << FmtF(r.T, 15, 5) << "\n";
  // Z of 15 rotors reaches 1e10 and beyond: exponent form fits any.
  const auto five = [&](const char* label, double at, const std::array<double, 5>& v) {
    out << label << FmtE(at, 15, 6) << "  (";
    for (double x : v) out << FmtE(x, 15, 6);
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
  const std::vector<double>* potential;
  double rt;  // kJ/mol
};

double BoltzmannFactor(double x, void* p) {
  const auto* d = static_cast<const IntegrandData*>(p);
  return std::exp(-SeriesAt(*d->potential, std::cos(x)) / d->rt);
}

}  // namespace

ConfigurationIntegral RotorConfigurationIntegral(const std::vector<double>& potential, double T) {
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

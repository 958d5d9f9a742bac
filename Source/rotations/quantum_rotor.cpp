#include "rotations/quantum_rotor.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "numeric/constants.h"
#include "numeric/lapack.h"

namespace quintor {

namespace rc = constants;

namespace {

// Levels up to the lowest plus this many kT carry nothing to the sums.
constexpr double kLevelsAbove = 60.0;
constexpr int kFewestWaves = 16;
constexpr int kMostWaves = 6000;

// hbar^2 / (2 I), kJ/mol.
double RotationalConstant(double moment) {
  const double hbar = rc::Planck / (2.0 * rc::Pi);
  return hbar * hbar / (2.0 * moment) * rc::Avogadro / 1000.0;
}

}  // namespace

CosinePotential SingleBarrierPotential(double V0, int n) {
  const int fold = std::max(n, 1);
  CosinePotential v(static_cast<size_t>(fold) + 1, 0.0);
  v[0] = V0 / 2.0;
  v[static_cast<size_t>(fold)] = -V0 / 2.0;
  return v;
}

QuantumLevels QuantumRotorLevels(const CosinePotential& V, double moment, int sigma, double upToT) {
  QuantumLevels out;
  out.sigma = std::max(sigma, 1);
  out.upToT = upToT;
  out.moment = moment;
  int kd = 0;
  double range = 0.0;
  for (size_t k = 1; k < V.size(); ++k)
    if (V[k] != 0.0) {
      kd = static_cast<int>(k);
      range += 2.0 * std::fabs(V[k]);
    }
  const double B = RotationalConstant(moment);
  const double kT = rc::GasConstant * upToT / 1000.0;
  // The levels that count lie below the potential's range plus 80 kT; a
  // state localised in a deep well spreads over more plane waves than that
  // kinetic energy says, and the band needs a margin of a few couplings.
  const double mKinetic = std::sqrt((range + (kLevelsAbove + 20.0) * kT) / B);
  // A harmonic well's ground state has <m^2> = hbar omega / 4B, omega from
  // the curvature of the strongest term; six widths hold it.
  const double mWell = 6.0 * std::sqrt(std::max(1, kd) * std::sqrt(range / 2.0 / B) / 4.0 + 1.0);
  const int M = std::clamp(static_cast<int>(std::ceil(std::max(mKinetic, mWell))) + 8 + 4 * kd, kFewestWaves,
                           kMostWaves);
  const int n = 2 * M + 1;
  const int ldab = kd + 1;
  // Upper band storage: ab[kd + i - j + j ldab] = H(i, j), i <= j.
  std::vector<double> ab(static_cast<size_t>(ldab) * n, 0.0);
  for (int j = 0; j < n; ++j) {
    const double m = j - M;
    ab[static_cast<size_t>(kd + j * ldab)] = B * m * m + V[0];
    for (int k = 1; k <= kd && k <= j; ++k) ab[static_cast<size_t>(kd - k + j * ldab)] = V[static_cast<size_t>(k)] / 2.0;
  }
  out.E.resize(n);
  std::vector<double> work(static_cast<size_t>(std::max(1, 3 * n - 2)));
  double z = 0.0;
  if (lapack::dsbev('N', 'U', n, kd, ab.data(), ldab, out.E.data(), &z, 1, work.data()) != 0)
    throw std::runtime_error("DSBEV did not converge for the quantum rotor");
  std::sort(out.E.begin(), out.E.end());
  return out;
}

double QuantumPartitionFunction(const QuantumLevels& levels, double T) {
  const double kT = rc::GasConstant * T / 1000.0;
  double q = 0.0;
  for (double e : levels.E) q += std::exp(-(e - levels.E.front()) / kT);
  return q / levels.sigma;
}

RotorFunctions QuantumRotorAt(const QuantumLevels& levels, double T) {
  RotorFunctions f;
  if (levels.E.empty() || !(T > 0.0)) return f;
  const double kT = rc::GasConstant * T / 1000.0;
  double q = 0.0, e1 = 0.0, e2 = 0.0;
  for (double e : levels.E) {
    const double x = (e - levels.E.front()) / kT;
    if (x > 700.0) break;
    const double w = std::exp(-x);
    q += w;
    e1 += w * x;
    e2 += w * x * x;
  }
  e1 /= q;
  e2 /= q;
  f.C = rc::GasConstant * (e2 - e1 * e1);
  f.U = f.H = e1 * kT;
  f.S = rc::GasConstant * (std::log(q / levels.sigma) + e1);
  f.G = f.U - T / 1000.0 * f.S;
  return f;
}

}  // namespace quintor

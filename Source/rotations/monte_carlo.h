// Classical Monte Carlo integration of all internal rotations together: the
// torsion angles are sampled uniformly, the potential is the sum of the
// rotations' cosine series, and the kinetic weight is the square root of the
// determinant of the kinematic matrix at each sampled geometry.
//
// The samples do not depend on the temperature, only their Boltzmann weights
// do. One pass keeps, per narrow bin of the potential, the moments of the
// weight g = sqrt(det K) and of g^2 in the offset d of V from the bin centre;
// Z at any temperature then follows from a short Taylor series of exp(-beta d)
// per bin, exactly to rounding, without sampling again.
#pragma once

#include <array>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "numeric/vec3.h"
#include "rotations/fourier_potential.h"

namespace quintor {

// The unit number the MainLog names for the .mco file.
inline constexpr int MonteCarloUnit = 17;

// One rotation as the integration sees it. Atoms are 1-based.
struct TorsionRotor {
  std::vector<int> group;    // atoms that turn
  int axisAtom1 = 0;         // in the group; 0: centre of mass of the group
  int axisAtom2 = 0;         // on the other side; 0: centre of mass of the other side
  int n = 1;                 // symmetry number NRot
  CosineSeries potential{};  // V(x) = sum potential[m] cos(m x), kJ/mol
};

// The cosine series of V0/2 (1 - cos(n x)).
CosineSeries SingleBarrierSeries(double V0, int n);

// Trials by number of rotations when /IRMC gives none: 100 for 1 rotation,
// ten times more for each further pair, 10^7 from 10 rotations on.
long long MonteCarloTrials(int rotations, long long requested);

// Seeds of the generator; every block of trials draws from its own
// std::mt19937_64 seeded by (seed1, seed2, block number), so that a run is
// the same whatever the number of threads.
struct MonteCarloSeeds {
  std::uint32_t seed1 = 1802;
  std::uint32_t seed2 = 9373;
};

// Binned moments of one sampling pass (potentials in kJ/mol).
inline constexpr int MomentOrder = 10;  // d^0 .. d^10
struct TorsionSample {
  long long trials = 0;
  int rotors = 0;
  double productNRot = 1.0;
  double vLow = 0.0, binWidth = 1.0;  // centre of bin b is vLow + b binWidth
  std::vector<std::array<double, MomentOrder + 1>> g1, g2;  // sums of g d^k, g^2 d^k per bin
};

// Samples `trials` torsion sets of `rotors` in the molecule (`masses` amu,
// `xyz` bohr). `threads` 0 takes every core.
TorsionSample SampleTorsions(const std::vector<TorsionRotor>& rotors, const std::vector<double>& masses,
                             const std::vector<Vec3>& xyz, long long trials, MonteCarloSeeds seeds,
                             unsigned threads = 0);

// sqrt(det K) of the rotations at the geometry `xyz` (amu, bohr: amu*bohr^2
// to the power rotors/2), K the kinematic matrix with the overall
// translation and rotation taken out.
double KinematicWeight(const std::vector<TorsionRotor>& rotors, const std::vector<double>& masses,
                       const std::vector<Vec3>& xyz);

// dT = MonteCarloStep T, the factor as single precision holds 0.001.
inline constexpr double MonteCarloStep = 0.0010000000474974513;

// The integration at T: Z at T-2dT .. T+2dT and the functions of the rotations.
struct MonteCarloResult {
  double T = 0.0;
  std::array<double, 5> Z{}, sigmaZ{};
  double lnZ = 0.0, sigmaLnZ = 0.0;
  double dLnZdT = 0.0, sigmaDLnZdT = 0.0;
  double U = 0.0, sigmaU = 0.0;  // kJ/mol; H = U
  double S = 0.0, sigmaS = 0.0;  // J/K/mol
  double F = 0.0, sigmaF = 0.0;  // kJ/mol; G = F
  double CV = 0.0;               // J/K/mol; CP = CV
};
MonteCarloResult MonteCarloAtT(const TorsionSample& sample, double T);

// The report of one temperature in the .mco file.
void WriteMonteCarloReport(std::ostream& out, const MonteCarloResult& r, long long trials, int rotors,
                           MonteCarloSeeds seeds);

// Configuration integral of exp(-V(x)/RT) over one turn of an independent
// rotation, by adaptive Gauss-Kronrod quadrature (GSL's qag).
struct ConfigurationIntegral {
  double xa = 0.0, xb = 0.0, value = 0.0, error = 0.0;
};
ConfigurationIntegral RotorConfigurationIntegral(const CosineSeries& potential, double T);
void WriteConfigurationIntegrals(std::ostream& out, const std::vector<TorsionRotor>& rotors, double T);

}  // namespace quintor

// Classical Monte Carlo integration of all internal rotations together. The
// potential is a sum of one-dimensional terms, so each torsion angle is drawn
// from its own Boltzmann density (inverse of its cumulative distribution on a
// fine grid) and only the coupling, the square root of the determinant of the
// kinematic matrix at the sampled geometry, is averaged:
// Z = prod Z_i <sqrt det K>. The five temperatures of the derivatives map
// the same uniform numbers through their own densities, so that their
// differences carry little noise. The error is taken from the spread of 32
// batch means, which holds whatever the correlations inside a batch.
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
  std::vector<double> potential;  // V(x) = sum potential[m] cos(m x), kJ/mol, any number of terms
};

// The cosine series of V0/2 (1 - cos(n x)), for any fold n.
std::vector<double> SingleBarrierSeries(double V0, int n);

// The most trials by number of rotations when /IRMC gives none: 100 for 1
// rotation, ten times more for each further pair, 10^7 from 10 rotations on.
long long MonteCarloTrials(int rotations, long long requested);

// Seeds of the generator; every block of trials draws from its own
// std::mt19937_64 seeded by (seed1, seed2, block number, block size), so that
// a run is the same whatever the number of threads.
struct MonteCarloSeeds {
  std::uint32_t seed1 = 1802;
  std::uint32_t seed2 = 9373;
};

// Without a number of trials the sampling goes on, in rounds of 32 blocks,
// until sigma(S) is below this (J/K/mol) or the ladder's count is reached;
// it takes at least MonteCarloFewestTrials.
inline constexpr double MonteCarloTargetSigmaS = 0.04;
inline constexpr long long MonteCarloFewestTrials = 1 << 12;
inline constexpr int MonteCarloBatches = 32;

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
  long long trials = 0;
  std::array<double, 5> Z{}, sigmaZ{};
  double lnZ = 0.0, sigmaLnZ = 0.0;
  double dLnZdT = 0.0, sigmaDLnZdT = 0.0;
  double U = 0.0, sigmaU = 0.0;  // kJ/mol; H = U
  double S = 0.0, sigmaS = 0.0;  // J/K/mol
  double F = 0.0, sigmaF = 0.0;  // kJ/mol; G = F
  double CV = 0.0, sigmaCV = 0.0;  // J/K/mol; CP = CV
};

// Samples the `rotors` of the molecule (`masses` amu, `xyz` bohr) at T: the
// five temperatures draw from the same uniform numbers. `trials` 0 samples until
// sigma(S) reaches MonteCarloTargetSigmaS. `threads` 0 takes every core.
MonteCarloResult MonteCarloAtT(const std::vector<TorsionRotor>& rotors, const std::vector<double>& masses,
                               const std::vector<Vec3>& xyz, double T, long long trials, MonteCarloSeeds seeds,
                               unsigned threads = 0);

// The report of one temperature in the .mco file.
void WriteMonteCarloReport(std::ostream& out, const MonteCarloResult& r, long long trials, int rotors,
                           MonteCarloSeeds seeds);

// Configuration integral of exp(-V(x)/RT) over one turn of an independent
// rotation, by adaptive Gauss-Kronrod quadrature (GSL's qag).
struct ConfigurationIntegral {
  double xa = 0.0, xb = 0.0, value = 0.0, error = 0.0;
};
ConfigurationIntegral RotorConfigurationIntegral(const std::vector<double>& potential, double T);
void WriteConfigurationIntegrals(std::ostream& out, const std::vector<TorsionRotor>& rotors, double T);

}  // namespace quintor

// The exact one-dimensional quantum rotor: the levels of
// H = -(hbar^2/2I) d^2/dphi^2 + V(phi), V a cosine series, in a basis of plane
// waves exp(i m phi), and the thermodynamic functions summed over them. It
// holds wherever the Pitzer-Gwinn tables end (near the free rotor, high
// barriers, low temperatures) and reaches both limits: the free rotor when
// V = 0, the harmonic oscillator of the well when the barrier is high.
//
// Units: V in kJ/mol, moment in kg m^2, T in K; C and S in J/(K mol), U, H, G
// in kJ/mol counted from the lowest level.
#pragma once

#include <vector>

#include "rotations/hindered_rotor.h"

namespace quintor {

// V(phi) = sum cosines[m] cos(m phi).
using CosinePotential = std::vector<double>;

// V0/2 (1 - cos n phi).
CosinePotential SingleBarrierPotential(double V0, int n);

// All levels of one rotor (every symmetry species), kJ/mol, ascending, with
// the symmetry number that divides the partition function. The basis holds
// every level below the lowest plus 60 kT at temperatures up to `upToT`.
struct QuantumLevels {
  std::vector<double> E;
  int sigma = 1;
  double upToT = 0.0;
  double V0 = 0.0;      // of the potential the levels belong to: a cache key
  double moment = 0.0;  // kg m^2
};
QuantumLevels QuantumRotorLevels(const CosinePotential& V, double moment, int sigma, double upToT);

// Q = sum exp(-(E - E0)/kT) / sigma; C, U = H (above E0), S, G = U - TS.
RotorFunctions QuantumRotorAt(const QuantumLevels& levels, double T);

// Q of the same sum, for tests and reports.
double QuantumPartitionFunction(const QuantumLevels& levels, double T);

}  // namespace quintor

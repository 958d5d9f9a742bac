// The exact quantum one-dimensional hindered rotor, the reference the
// Pitzer-Gwinn tables approximate: H = -(hbar^2/2I) d^2/dphi^2 + V0/2 (1 - cos n phi)
// in a basis of plane waves exp(i m phi); and, for any other potential, the same
// Hamiltonian on a grid of angles.
#pragma once

#include <functional>

namespace quintor::testing {

struct QuantumRotor {
  double Q = 0.0;       // sum over all levels of exp(-(E - E0)/kT), divided by n
  double C = 0.0;       // J/(K mol)
  double HoverT = 0.0;  // (H - E0)/T, J/(K mol), E0 the lowest level
  double S = 0.0;       // J/(K mol)
};

// V0 in kJ/mol, moment in kg m^2, T in K. All symmetry species are summed and
// Q divided by the symmetry number n, which makes the classical limit
// Q -> sqrt(8 pi^3 I k T) / (n h).
QuantumRotor ExactHinderedRotor(double V0, double moment, int n, double T);

// The same in reduced variables: x = V0/RT and theta = hbar^2 / (2 I k T).
QuantumRotor ExactHinderedRotorReduced(double x, double theta, int n);

// The same rotor in any potential V(phi) (kJ/mol, phi in radians), solved on
// a periodic grid of `points` angles with a fourth-order second difference:
// a method of its own, for potentials that are no single cosine.
QuantumRotor GridHinderedRotor(const std::function<double(double)>& V, double moment, int n, double T,
                               int points = 720);

// hbar^2 / (2 I k T) from moment (kg m^2) and T, with this helper's own constants.
double RotationalTemperatureRatio(double moment, double T);

}  // namespace quintor::testing

// The gradient of the heat of formation in Cartesian coordinates, as MOPAC
// computes it: at the converged density the SCF energy is stationary, so
// each pair of atoms contributes the derivative of its own terms (resonance,
// core attractions, two-centre repulsions, core-core), taken by central
// differences of the pair's integrals with the density held fixed.
#pragma once

#include <array>
#include <vector>

#include "engine/parameters.h"

namespace quintor::engine {

// kcal/mol/Angstrom per atom; coordinates in angstroms, `density` the full
// n x n density of EngineResult and, for an unrestricted calculation, `alpha`
// its alpha part (the exchange then takes alpha and beta apart). Exact for
// closed shells and unrestricted open shells; not for the restricted
// half-electron treatment, whose correction is not stationary in the orbitals.
std::vector<std::array<double, 3>> FixedDensityGradient(const ParameterSet& set, const std::vector<int>& atomicNumbers,
                                                        const std::vector<std::array<double, 3>>& coordsAngstrom,
                                                        const std::vector<double>& density,
                                                        const std::vector<double>* alpha = nullptr);

}  // namespace quintor::engine

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
// n x n density of EngineResult. Exact for closed shells only: the
// half-electron energy of an open shell is not stationary in the density.
std::vector<std::array<double, 3>> FixedDensityGradient(const ParameterSet& set, const std::vector<int>& atomicNumbers,
                                                        const std::vector<std::array<double, 3>>& coordsAngstrom,
                                                        const std::vector<double>& density);

}  // namespace quintor::engine

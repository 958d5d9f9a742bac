// The d-orbital extension: one-centre integrals of the spd basis from the
// Slater-Condon parameters, and the multipoles of the d charge distributions.
#pragma once

#include "engine/parameters.h"

namespace quintor::engine {

// Fills slaterCondon, repd, add and bdd of element z (with n its principal
// quantum number) from ZS, ZP, ZD, ZNS, ZNP, ZND and the sp integrals,
// leaving values that were given alone.
void DeriveDOrbitalTerms(int z, int n, ParameterSet& set);

}  // namespace quintor::engine

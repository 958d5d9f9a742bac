#include "engine/slater_condon.h"

namespace quintor::engine {

void DeriveDOrbitalTerms(int z, int n, ParameterSet& set) {}

}  // namespace quintor::engine

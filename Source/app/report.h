// The report written after the read pass: inertia, symmetry, and the
// parameters in effect for the evaluation.
#pragma once

#include <string>

#include "model/session.h"

namespace quintor {

// Writes the post-read report of the last coordinate set and leaves in the
// Session the centred working coordinates, the rotation number, NImag and
// the analysis results.
void PostReadReport(Session& s);

// Stoichiometry in Hill order: C, H, then the others alphabetically.
std::string Stoichiometry(const Session& s);

}  // namespace quintor

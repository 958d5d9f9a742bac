// Conformer ensembles (/BOLTZ): the input is a list of logs of one molecule,
// each evaluated as a run of its own; their Boltzmann weights by free energy
// and the free energy of the ensemble follow.
#pragma once

#include <string>
#include <vector>

#include "model/session.h"

namespace quintor {

// True when the command line asks for an ensemble (/BOLTZ).
bool AsksForEnsemble(const std::vector<std::string>& args);

// Runs every log of the list named by argument 1 with the other flags, and
// writes the ensemble to <list>.mou (and <list>.json under /JSON) and to the
// console. A missing or unreadable entry is a WARNING naming it; duplicates
// (energy within 1e-5 Hartree, rotational constants within 0.1 %) are
// reported and counted once. A list that names no log, or none that could be
// evaluated, ends with status 3.
int RunEnsemble(Session& s, const std::vector<std::string>& args);

}  // namespace quintor

// The internal rotations of a run in its JSON report: each rotor with its
// models at the run's temperature, and the totals in every model.
#pragma once

#include <nlohmann/json.hpp>

#include "model/session.h"

namespace quintor {

// "internal_rotations": per rotor axis, groups, fold, symmetry number, I(*),
// I(**) (amu*bohr^2), V0 and its source, and C, S, H per model.
nlohmann::ordered_json InternalRotationsJson(const ThermoReport& r);

// "totals_by_model": harmonic, free_rotor, pitzer_gwinn, quantum and
// monte_carlo (null when it did not run), each CV, CP, S, H, G and E+G.
nlohmann::ordered_json TotalsByModelJson(const ThermoReport& r);

}  // namespace quintor

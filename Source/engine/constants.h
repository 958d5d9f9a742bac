// Physical constants of the engine. They are those of MOPAC 22 (CODATA 2018),
// so that heats of formation agree with it to the last printed digit; MNDO/d
// takes MOPAC's older set in their place (UnitsOf in parameters.h).
#pragma once

#include "numeric/constants.h"

namespace quintor::engine {

// Short names of the engine's constants; the values stand in numeric/constants.h.
inline constexpr double kBohr = constants::EngineBohrToAngstrom;  // Angstrom per bohr
inline constexpr double kEv = constants::EngineHartreeToEV;       // eV per hartree
inline constexpr double kEvToKcal = constants::EngineEVToKcal;    // kcal/mol per eV
inline constexpr double kKcalToKj = constants::KcalToKJ;          // kJ per kcal
inline constexpr double kPi = constants::Pi;

}  // namespace quintor::engine

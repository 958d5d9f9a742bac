// Physical constants of the engine. They are those of MOPAC 22 (CODATA 2018),
// so that heats of formation agree with it to the last printed digit.
#pragma once

namespace quintor::engine {

inline constexpr double kBohr = 0.529177210903;              // Angstrom per bohr
inline constexpr double kEv = 27.211386245988;               // eV per hartree
inline constexpr double kEvToKcal = 23.060547830619029;      // kcal/mol per eV
inline constexpr double kKcalToKj = 4.184;                   // kJ per kcal
inline constexpr double kPi = 3.14159265358979323846;

}  // namespace quintor::engine

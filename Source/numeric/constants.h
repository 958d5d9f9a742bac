// Physical constants and length units of the program. The engine keeps
// MOPAC's own set (engine/constants.h), so that its heats of formation agree
// with MOPAC; everything else takes its constants from here.
#pragma once

namespace quintor {

namespace constants {
inline constexpr double Pi = 3.141592653589793;
inline constexpr double SpeedOfLight = 299792458.0;        // m/s
inline constexpr double Planck = 6.62606876e-34;           // J s
inline constexpr double AtomicMassUnit = 1.66053873e-27;   // kg
inline constexpr double BohrRadius = 5.291772083e-11;      // m
inline constexpr double BohrToAngstrom = 0.5291772083;
inline constexpr double AngstromToBohr = 1.889726133921252;
inline constexpr double Boltzmann = 1.3806503e-23;         // J/K
inline constexpr double Avogadro = 6.02214199e+23;         // 1/mol
inline constexpr double GasConstant = 8.314472145136097;   // J/(mol K), Boltzmann * Avogadro
inline constexpr double DegToRad = 0.017453292519943295;
inline constexpr double JToCal = 0.2390057361376673;       // 1/4.184
inline constexpr double HartreeToEV = 27.2113834;
// Two Hartree factors stand side by side on purpose: the first two convert
// results, the last converts energies typed into the SpecFile and the Monte
// Carlo energies. They are not to be unified.
inline constexpr double KJPerMolToHartree = 0.0003808889730174161;
inline constexpr double JPerMolToHartree = 3.808889730174161e-07;
inline constexpr double HartreeToKJPerMol = 2625.3035184;
// The results a script reads (/JSON, /CSV@) convert with CODATA 2018, as
// Gaussian 09 and 16 do, so that E+H and E+G meet the log's own sums.
inline constexpr double HartreeToKJPerMolCodata2018 = 2625.4996;
inline constexpr double KcalToKJ = 4.184;
inline constexpr double RotConstFactor = 1804.74;          // 1/(amu bohr^2) -> GHz
// The semi-empirical engine works in MOPAC 22's units (CODATA 2018), so that
// its heats of formation agree with MOPAC to the last printed digit; the rest
// of the program keeps the values above, which its reports are fixed by.
inline constexpr double EngineBohrToAngstrom = 0.529177210903;
inline constexpr double EngineHartreeToEV = 27.211386245988;
inline constexpr double EngineEVToKcal = 23.060547830619029;
// MOPAC 22 keeps its older constants for MNDO/d, whose parameters were fitted
// with them; the engine does the same for that method alone.
inline constexpr double EngineOldBohrToAngstrom = 0.529167;
inline constexpr double EngineOldHartreeToEV = 27.21;
inline constexpr double EngineOldEVToKcal = 23.061;
}  // namespace constants

// Length units of coordinate inputs.
enum class LengthUnit : int { Angstrom = 0, Bohr = 1, Nanometre = 2 };

// Multiplies a length in `unit` by this to get bohr.
constexpr double LengthFactor(LengthUnit unit) {
  switch (unit) {
    case LengthUnit::Bohr: return 1.0;
    case LengthUnit::Nanometre: return 18.89726133921252;
    default: return constants::AngstromToBohr;
  }
}

}  // namespace quintor

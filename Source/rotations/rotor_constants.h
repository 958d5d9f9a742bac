// Physical constants of the internal-rotation code. The values are those of
// the rest of the program (CODATA 1998 set, R = k NA); they are kept here so
// that the rotor functions stand on their own.
#pragma once

namespace quintor::rotor_constants {

inline constexpr double Pi = 3.141592653589793;
inline constexpr double SpeedOfLight = 299792458.0;        // m/s
inline constexpr double Planck = 6.62606876e-34;           // J s
inline constexpr double Boltzmann = 1.3806503e-23;         // J/K
inline constexpr double Avogadro = 6.02214199e+23;         // 1/mol
inline constexpr double GasConstant = 8.314472145136097;   // J/(mol K)
inline constexpr double AtomicMassUnit = 1.66053873e-27;   // kg
inline constexpr double BohrRadius = 5.291772083e-11;      // m
inline constexpr double CalToJ = 4.184;                     // the tables are in cal/(mol K)

// amu*bohr^2, the unit of moments in print, to kg m^2.
inline constexpr double AmuBohr2ToKgM2 = AtomicMassUnit * BohrRadius * BohrRadius;

}  // namespace quintor::rotor_constants

// Thermodynamic functions of one internal rotation: free rotor, and hindered
// rotor in V = V0/2 (1 - cos n phi) by interpolation in the Pitzer-Gwinn
// tables.
//
// Units: V0 in kJ/mol, moments I in kg m^2, T in K, frequencies in cm-1;
// results C and S in J/(K mol), U, H and G in kJ/mol.
#pragma once

#include <array>
#include <ostream>

#include "numeric/bspline.h"

namespace quintor {

// The functions of one rotation in one model.
struct RotorFunctions {
  double C = 0.0;  // J/(K mol)
  double U = 0.0;  // kJ/mol
  double H = 0.0;  // kJ/mol
  double S = 0.0;  // J/(K mol)
  double G = 0.0;  // kJ/mol
};

// The models of the rotation table, in the order of its columns: the last two
// are the exact quantum rotor.
enum RotorColumn {
  HarmonicColumn = 0,
  FreeStarColumn,
  FreeStarStarColumn,
  PitzerStarColumn,
  PitzerStarStarColumn,
  QuantumStarColumn,
  QuantumStarStarColumn
};
inline constexpr int RotorColumnCount = 7;

// One rotation at one temperature. The harmonic column is the replaced
// mode's vibrational contribution, filled in by the caller.
struct RotorResult {
  std::array<RotorFunctions, RotorColumnCount> column;
  double zpe = 0.0;  // kJ/mol, zero-point energy of the replaced mode
};

// ---- Free rotor ----------------------------------------------------------

// 1/Qf = n h / sqrt(8 pi^3 I k T), the inverse classical partition function
// of a free rotor of moment I and symmetry number n.
double InverseFreeRotorQ(double moment, int n, double T);

// C = R/2, U = H = RT/2, S = R (ln Qf + 1/2), G = U - TS.
RotorFunctions FreeRotor(double moment, int n, double T);

// ---- Barrier -------------------------------------------------------------

// V0 = 8 pi^2 I (100 c nu)^2 NA / (n^2 1000), kJ/mol: the barrier of the
// cosine potential whose harmonic frequency at the bottom is nu (cm-1).
// 0 when nu is not positive.
double BarrierFromFrequency(double moment, double nu, int n);

// x = V0/RT with V0 in kJ/mol.
double ReducedBarrier(double V0, double T);

// ---- Pitzer-Gwinn tables -------------------------------------------------

// Look-ups of one run; a miss leaves the function at 0.
struct PitzerCounters {
  int calls = 0;
  int fromTable4 = 0;    // S taken as Sfree - (Sfree - S) of table 4
  int missC = 0;         // table 1
  int missHoverT = 0;    // table 2
  int missS = 0;         // tables 3 and 4
};

// The four interpolants, built once, and the counters of their use.
struct PitzerTables {
  Spline2D heatCapacity;  // table 1, on (y, x)
  Spline2D enthalpy;      // table 2, (H - H0)/T
  Spline2D entropy;       // table 3
  Spline2D entropyLoss;   // table 4, Sfree - S
  PitzerCounters counters;
};

// Order-2 not-a-knot interpolants in both directions through the tables.
PitzerTables BuildPitzerTables();

// Values of one look-up, J/(K mol).
struct PitzerValues {
  double C = 0.0;
  double HoverT = 0.0;
  double S = 0.0;
};

// Looks up C, (H - H0)/T and S at y = 1/Qf and x = V0/RT. S comes from
// table 3 when y > 0.25, otherwise as sFree minus table 4. Counts the call
// and every miss in tables.counters.
PitzerValues PitzerLookUp(PitzerTables& tables, double y, double x, double sFree);

// 100 times the largest miss count over the number of calls; 0 without calls.
double PitzerErrorPercent(const PitzerCounters& counters);

// The hindered rotor of barrier V0 (kJ/mol), moment I, symmetry number n at T:
// C and S from the tables, U = H = (H/T) T / 1000, G = U - TS.
RotorFunctions PitzerGwinnRotor(PitzerTables& tables, double V0, double moment, int n, double T);

// ---- Print -------------------------------------------------------------

// The barrier lines of one rotation: V0 in three units, free or hindered,
// and 1/Qf and Qf for both moments (kg m^2).
void WriteBarrierHeight(std::ostream& out, int n, double V0, double T, double momentStar,
                        double momentStarStar);

// The table of the seven models for rotation `rotation` replacing `mode`,
// with the U, H and G lines repeated with the mode's zero-point energy.
void WriteRotorTable(std::ostream& out, int rotation, int mode, const RotorResult& result);

}  // namespace quintor

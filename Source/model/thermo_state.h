// What the thermochemistry keeps between evaluations: the per-mode results
// and the totals. It lives in the Session.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

namespace quintor {

// Thermodynamic functions at one temperature and pressure.
struct TDResult {
  double q = 1.0;     // partition function
  double lnQ = 0.0;
  double cv = 0.0;    // J/K/mol
  double cp = 0.0;    // J/K/mol
  double u = 0.0;     // kJ/mol
  double h = 0.0;     // kJ/mol
  double s = 0.0;     // J/K/mol
  double g = 0.0;     // kJ/mol
};

// One row of a temperature table.
struct TableRow {
  double temperature = 0.0;  // K
  TDResult tot;
  TDResult quantum;  // the rotations as exact quantum rotors with I(**); tot without rotations
};

// One temperature of the Monte Carlo treatment of the rotations.
struct MonteCarloRow {
  double temperature = 0.0;  // K
  TDResult f;
  double errorPercent = 0.0;
};

// The Monte Carlo results of a run: the rotations alone and the totals with
// them, one row per evaluation, in the order of the evaluations.
inline constexpr int MaxMonteCarloRows = 200;
struct TableResMC {
  std::vector<MonteCarloRow> rotations, totals;
};

// The quasi-rigid-rotor harmonic-oscillator totals of the full evaluation
// (/QS, /QT, /QH): the entropy of the low modes by Grimme's interpolation to a
// free rotor or by Truhlar's raising of them to the cut-off, the enthalpy by
// Head-Gordon's interpolation to RT/2.
enum class QuasiEntropy { None, Grimme, Truhlar };
struct QuasiRrho {
  bool evaluated = false;
  QuasiEntropy entropy = QuasiEntropy::None;
  double entropyCutoff = 0.0;    // cm-1
  bool enthalpy = false;
  double enthalpyCutoff = 0.0;   // cm-1
  double s = 0.0, h = 0.0, g = 0.0;  // totals: J/K/mol, kJ/mol, kJ/mol
};

// One internal rotation of the full evaluation, as a script reads it.
struct RotorRecord {
  int mode = 0;                       // the replaced mode, 1-based
  std::array<int, 2> axis{};          // atoms; 0 a centre of mass
  std::vector<int> group, other;      // the two groups, 1-based
  int fold = 1;                       // period of the potential (NRot)
  int symmetryNumber = 1;             // what divides the partition function
  double iStar = 0.0, iStarStar = 0.0;     // amu*bohr^2
  double v0Star = 0.0, v0StarStar = 0.0;   // kJ/mol
  const char* v0Source = "frequency";      // "frequency", "specfile" (V0 given), "potential", "user" (one V0 for all)
  bool harmonic = false;              // an implausible barrier left the mode harmonic
  // C (J/K/mol), S (J/K/mol), H (kJ/mol) per model: harmonic, free I(*),
  // free I(**), Pitzer-Gwinn I(*), I(**), quantum I(*), I(**).
  std::array<std::array<double, 3>, 7> models{};
};

// The totals of the full evaluation in each model of the rotations, with
// E+G in Hartree; the Monte Carlo one only when it ran.
struct ModelTotals {
  const char* model = "";
  TDResult tot;
  double eg = 0.0;
};

// What the end of a run reports besides the MainLog (/JSON, /CSV@): the full
// evaluation at the run's temperature and pressure and the temperature tables.
struct ThermoReport {
  std::vector<RotorRecord> rotors;
  std::vector<ModelTotals> totalsByModel;
  const char* tableModel = "harmonic";  // the model of the temperature tables' rows
  bool evaluated = false;
  double temperature = 0.0, pressure = 0.0;  // K, Pa
  double zpeTot = 0.0;                       // kJ/mol
  TDResult elec, tran, rot, vib, tot;
  QuasiRrho quasi;
  std::vector<TableRow> fixedTable, requestedTable;
};

// What one evaluation leaves behind for the internal-rotation treatment and
// for the next evaluation. The per-mode arrays have one entry per mode of the
// Session (index 0 is mode 1); they are sized by CalcTD and only cleared,
// never reallocated, by the evaluations of one run.
struct ThermoState {
  std::vector<double> theta;  // K
  std::vector<double> svib;   // J/K/mol
  std::vector<double> zpe;    // kJ/mol
  std::vector<double> hh0;    // H-H0, kJ/mol
  std::vector<double> hvib;   // kJ/mol, H-H0 plus the zero-point energy
  std::vector<double> gvib;   // kJ/mol
  std::vector<double> cvib;   // J/K/mol
  std::vector<double> qvib;

  bool linear = false;
  std::array<double, 3> moments{};  // principal moments, descending; kg m^2 after an evaluation
  double zpeTot = 0.0;               // kJ/mol
  int nVibUsed = 0;                  // modes that entered the sums

  double qmom = 0.0;                 // momentum partition function
  double fmom = 0.0;                 // its Helmholz free energy, kJ/mol
  TDResult elec, tran, rot, vib, tot;
  TDResult tableRow;                 // what the last quiet evaluation printed as its row
  TDResult quantumTableRow;          // and its totals with the rotations as quantum rotors
  TableResMC monteCarlo;             // filled by the evaluations under /IRMC

  // The last inertia tensor handed to the eigensolver and its eigenvalues:
  // the tables evaluate one geometry many times and diagonalise it once.
  std::array<double, 6> tensorSeen{};
  std::array<double, 3> momentsSeen{};
  bool tensorKnown = false;

  ThermoReport report;

  void SizeFor(size_t nModes);
};

}  // namespace quintor

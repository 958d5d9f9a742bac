// The hindered-rotor treatment of an evaluation: the rotations (recognised
// by ARIR or given in the SpecFile) tied to their modes, their reduced
// moments, barriers and functions in five models, and the totals in which
// they replace the harmonic values of their modes.
#pragma once

#include <array>
#include <fstream>
#include <optional>
#include <vector>

#include "model/session.h"
#include "rotations/fourier_potential.h"
#include "rotations/hindered_rotor.h"
#include "rotations/monte_carlo.h"
#include "rotations/quantum_rotor.h"
#include "rotations/recognition.h"
#include "rotations/reduced_moment.h"
#include "thermo/thermo.h"

namespace quintor {

// One rotation ready for evaluation. Moments in amu*bohr^2.
struct Rotor {
  int mode = 0;  // replaced mode, 1-based
  int n = 1;     // symmetry number
  std::vector<int> group, other;
  AxisPoints axis;       // bohr
  TwoGroupMoment groups; // I1, I2 and I(*)
  double I0 = 0.0, I = 0.0;  // kinematic estimators; I is I(**)
  int source = 0;        // -1 V0 read, 0 none, else points of the potential
  double v0Read = 0.0;   // kJ/mol
  std::vector<PotentialPoint> potential;
  double V0Star = 0.0, V0StarStar = 0.0;  // the barrier used with each moment, kJ/mol
  CosinePotential series;  // the curve of a potential (READP, /SCAN); empty: the cosine of V0
  bool harmonic = false;  // the barrier is implausible: every model is the vibration
  bool userBarrier = false;  // the user's one V0 for all rotations stands in for any other
  // Under /V0TORSION the frequency of this torsion alone (cm-1,
  // torsion_curvature.h), whose barrier with I0 stands for both moments;
  // 0: the tied mode's frequency with each moment.
  double torsionFreq = 0.0;
  std::array<QuantumLevels, 2> levels;  // of the quantum rotor with I(*) and I(**), built when first needed
};

// amu*bohr^2 to kg m^2.
double MomentSI(double amuBohr2);

// A barrier from the frequency above this (kJ/mol) comes from a mode that is
// no clean torsion (n-hexadecane's skeletal modes give 69 to 9736); at such a
// height the hindered rotor is the harmonic vibration anyway.
inline constexpr double MostBarrierFromFrequency = 50.0;

// Chooses the barrier of `r`, rotation `number` (from the frequency `nu` of
// its mode, read, or from its potential) and writes why. With `autoFold` the
// fold of a potential is its strongest cosine term, and it becomes r.n. A
// barrier from the frequency above MostBarrierFromFrequency leaves the mode
// harmonic (r.harmonic); an imaginary frequency gives a free rotor (V0 = 0).
// Each with a WARNING naming the rotation.
void ChooseBarrier(Rotor& r, double nu, bool autoFold, MainLog& log, int number = 1);

// One symmetry number for every rotation: with nRot above 0 each rotor
// takes it, with the WARNING said once. Returns whether it did.
bool ApplyUserFold(std::vector<Rotor>& rotors, int nRot, MainLog& log);

// Whether the fold of a potential comes from its strongest cosine term:
// under ARIR, unless the user gave one NRot for all rotations.
bool FoldFromPotential(const Options& o);

// The user's barrier, when in force (o.userBarrier, o.userV0 above 1e-6
// kJ/mol), for rotation `number` of `count`: V0 for both moments, the
// cosine of V0 in place of any potential, and why in the log (the WARNING
// of a shared V0 once, with the first of several rotations). Returns false,
// changing nothing, when not in force.
bool UseUserBarrier(Rotor& r, const Options& o, int number, int count, MainLog& log);

// The seven columns of one rotation at T: the mode's own harmonic values, the
// free rotor, the Pitzer-Gwinn rotor and the exact quantum rotor with I(*)
// and I(**). Where a table look-up fails, or where the tables are poor (a
// 1-fold rotor above 1/Qf = 0.7), the Pitzer-Gwinn column takes the quantum
// rotor's values and `tablesReplaced` says so; such a look-up is no failure.
// Only the I(*) look-up counts in `tables.counters`.
RotorResult RotorColumns(PitzerTables& tables, Rotor& r, const ThermoState& t, double T,
                         bool* tablesReplaced = nullptr);

// Columns 1..5 of the totals: the RRHO totals with each rotation's values in
// place of its mode's. The harmonic column is the RRHO totals themselves; the
// zero-point energy of the mode stays in the Pitzer-Gwinn columns and goes in
// the free-rotor ones.
std::array<TDResult, RotorColumnCount> TotalsWithRotors(const TDResult& rrho, const std::vector<Rotor>& rotors,
                                         const std::vector<RotorResult>& results, const ThermoState& t);

// The rotations as the Monte Carlo integration takes them: the potential is
// the scaled Fourier series of a potential curve, else V0/2 (1 - cos n x)
// with the barrier of I(**).
std::vector<TorsionRotor> TorsionRotors(const std::vector<Rotor>& rotors, bool autoFold);

// Column 6: the RRHO totals with the replaced modes taken out and the Monte
// Carlo functions of all rotations put in (H = U, G = F, CP = CV).
TDResult MonteCarloTotals(const TDResult& rrho, const std::vector<Rotor>& rotors, const ThermoState& t,
                          const MonteCarloResult& mc);

class HinderedRotors final : public RotationTreatment {
 public:
  int Evaluate(Session& s, bool quiet) override;
  int Count() const override { return static_cast<int>(rotors_.size()); }
  TDResult RowTotals() const override { return row_; }
  TDResult QuantumRowTotals() const override { return quantumRow_; }
  double ErrorPercent() const override { return errorPercent_; }
  const std::vector<Rotor>& Rotors() const { return rotors_; }
  const std::vector<RotorResult>& Results() const { return results_; }
  const std::array<TDResult, RotorColumnCount>& Columns() const { return columns_; }

 private:
  void Prepare(Session& s);
  // Column 6 at the Session's temperature, the rows of TableResMC and the
  // report in the .mco file; every temperature samples anew.
  TDResult MonteCarlo(Session& s);
  bool prepared_ = false;
  PitzerTables tables_;
  std::vector<Rotor> rotors_;
  std::vector<RotorResult> results_;
  std::array<TDResult, RotorColumnCount> columns_{};
  std::vector<bool> warnedQuantum_;  // the quantum rotor stood in for the tables: said once per rotor
  TDResult row_, quantumRow_;
  double errorPercent_ = 0.0;
  std::optional<TDResult> monteCarlo_;  // column 6 of the last evaluation
  std::vector<TorsionRotor> torsions_;
  bool sampled_ = false;
  std::ofstream mco_;
};

}  // namespace quintor

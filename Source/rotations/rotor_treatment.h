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
};

// amu*bohr^2 to kg m^2.
double MomentSI(double amuBohr2);

// Chooses the barrier of `r` (from the frequency `nu` of its mode, read, or
// from its potential) and writes why. With `autoFold` the fold of a
// potential is its strongest cosine term, and it becomes r.n.
void ChooseBarrier(Rotor& r, double nu, bool autoFold, MainLog& log);

// The five columns of one rotation at T: the mode's own harmonic values, the
// free rotor and the Pitzer-Gwinn rotor with I(*) and I(**). Only the I(*)
// look-up counts in `tables.counters`.
RotorResult RotorColumns(PitzerTables& tables, const Rotor& r, const ThermoState& t, double T);

// Columns 1..5 of the totals: the RRHO totals with each rotation's values in
// place of its mode's; the zero-point energy of the mode stays in the
// harmonic and Pitzer-Gwinn columns and goes in the free-rotor ones.
std::array<TDResult, 5> TotalsWithRotors(const TDResult& rrho, const std::vector<Rotor>& rotors,
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
  double ErrorPercent() const override { return errorPercent_; }
  const std::vector<Rotor>& Rotors() const { return rotors_; }
  const std::vector<RotorResult>& Results() const { return results_; }
  const std::array<TDResult, 5>& Columns() const { return columns_; }

 private:
  void Prepare(Session& s);
  // Column 6 at the Session's temperature, the rows of TableResMC and the
  // report in the .mco file; the sampling is done at the first call.
  TDResult MonteCarlo(Session& s);
  bool prepared_ = false;
  PitzerTables tables_;
  std::vector<Rotor> rotors_;
  std::vector<RotorResult> results_;
  std::array<TDResult, 5> columns_{};
  TDResult row_;
  double errorPercent_ = 0.0;
  std::optional<TDResult> monteCarlo_;  // column 6 of the last evaluation
  std::vector<TorsionRotor> torsions_;
  TorsionSample sample_;
  bool sampled_ = false;
  std::ofstream mco_;
};

}  // namespace quintor

// The thermochemistry of the last evaluation as the results dock shows it:
// the totals at the run's temperature and pressure (per model of the
// internal rotations when they were treated) and the temperature tables as
// curves of CP, S, H and G against T. Only what the evaluation stored in
// the Session is read; nothing is computed anew.
#pragma once

#include <string>
#include <vector>

#include "model/session.h"

namespace quintor {

// One temperature table as four curves; T ascending, one point per T.
struct ThermoCurve {
  std::string model;  // "harmonic", "pitzer_gwinn", "monte_carlo"
  std::vector<double> temperature;  // K
  std::vector<double> cp, s;        // J/K/mol
  std::vector<double> h, g;         // kJ/mol
  bool operator==(const ThermoCurve&) const = default;
};

struct ThermoModelTotals {
  std::string model;        // as the JSON report names it
  double cv = 0.0, cp = 0.0, s = 0.0;  // J/K/mol
  double h = 0.0, g = 0.0;             // kJ/mol
  double eg = 0.0;                     // E+G, Hartree
};

struct ThermoSummary {
  bool evaluated = false;      // with frequencies
  double temperature = 0.0;    // K
  double pressure = 0.0;       // Pa
  double energy = 0.0;         // Etot, Hartree: the base of the evaluation
  double zpe = 0.0;            // kJ/mol
  TDResult total;              // ELEC+TRANS+ROT+VIBR
  std::vector<ThermoModelTotals> models;  // empty without internal rotations
  std::vector<ThermoCurve> curves;        // the table's model first, then Monte Carlo
};

ThermoSummary SummariseThermochemistry(const Session& s);

// The words a model goes by in the window: "Pitzer-Gwinn", "Monte Carlo".
std::string ModelTitle(const std::string& model);

// The text beside the plots, in the MainLog's units and precision.
std::vector<std::string> ThermoSummaryLines(const ThermoSummary& t);

}  // namespace quintor

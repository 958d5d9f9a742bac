#include "viewer/results_summary.h"

#include <algorithm>
#include <map>

#include "io/fortran_io.h"

namespace quintor {

namespace {

// Rows by temperature: a later row at the same T replaces an earlier one
// (an evaluation repeated from the window, the full evaluation's own T).
template <class Row, class Totals>
ThermoCurve CurveOf(const std::string& model, const std::vector<Row>& rows, Totals totals) {
  std::map<double, TDResult> byT;
  for (const Row& r : rows) byT[r.temperature] = totals(r);
  ThermoCurve c;
  c.model = model;
  for (const auto& [T, f] : byT) {
    c.temperature.push_back(T);
    c.cp.push_back(f.cp);
    c.s.push_back(f.s);
    c.h.push_back(f.h);
    c.g.push_back(f.g);
  }
  return c;
}

}  // namespace

ThermoSummary SummariseThermochemistry(const Session& s) {
  ThermoSummary t;
  const ThermoReport& r = s.thermo.report;
  if (!r.evaluated || s.modes.empty()) return t;
  t.evaluated = true;
  t.temperature = r.temperature;
  t.pressure = r.pressure;
  t.energy = s.electronicEnergy;
  t.zpe = r.zpeTot;
  t.total = r.tot;
  for (const ModelTotals& m : r.totalsByModel)
    t.models.push_back({m.model, m.tot.cv, m.tot.cp, m.tot.s, m.tot.h, m.tot.g, m.eg});
  std::vector<TableRow> rows = r.fixedTable;
  rows.insert(rows.end(), r.requestedTable.begin(), r.requestedTable.end());
  if (!rows.empty()) t.curves.push_back(CurveOf(r.tableModel, rows, [](const TableRow& row) { return row.tot; }));
  if (!rows.empty() && !r.rotors.empty())  // the same rows with the rotations as exact quantum rotors
    t.curves.push_back(CurveOf("quantum", rows, [](const TableRow& row) { return row.quantum; }));
  const auto& mc = s.thermo.monteCarlo.totals;
  if (!mc.empty()) t.curves.push_back(CurveOf("monte_carlo", mc, [](const MonteCarloRow& row) { return row.f; }));
  return t;
}

std::string ModelTitle(const std::string& model) {
  if (model == "harmonic") return "Harmonic";
  if (model == "free_rotor") return "Free rotor";
  if (model == "pitzer_gwinn") return "Pitzer-Gwinn";
  if (model == "quantum") return "Quantum rotor";
  if (model == "monte_carlo") return "Monte Carlo";
  return model;
}

std::vector<std::string> ThermoSummaryLines(const ThermoSummary& t) {
  std::vector<std::string> out;
  if (!t.evaluated) {
    out.push_back(" No thermochemistry yet: Calculations > Thermodynamics evaluates it");
    return out;
  }
  using constants::KJPerMolToHartree;
  const double e = t.energy;
  out.push_back(" T =" + FmtF(t.temperature, 8, 2) + " K   P =" + FmtF(t.pressure, 11, 2) + " Pa");
  out.push_back(" Etot        = " + FmtF(e, 16, 8) + " Hartree");
  const auto energy = [&](const char* label, double kj) {
    std::string line = label;
    line += FmtF(kj, 10, 3);
    line += " kJ/mol   Etot+ =";
    line += FmtF(e + kj * KJPerMolToHartree, 16, 8);
    out.push_back(std::move(line));
  };
  energy(" ZPEtot = ", t.zpe);
  energy(" Htot   = ", t.total.h);
  energy(" Gtot   = ", t.total.g);
  out.push_back(" Stot   = " + FmtF(t.total.s, 10, 3) + " J/K/mol");
  out.push_back(" CVtot  = " + FmtF(t.total.cv, 10, 3) + " J/K/mol");
  out.push_back(" CPtot  = " + FmtF(t.total.cp, 10, 3) + " J/K/mol");
  if (t.models.empty()) return out;
  out.push_back("");
  out.push_back(" With the internal rotations:");
  out.push_back(" Model              CV        CP         S         H         G          E+G");
  for (const ThermoModelTotals& m : t.models) {
    std::string line = " ";
    line += FmtA(ModelTitle(m.model), 14);
    for (double v : {m.cv, m.cp, m.s, m.h, m.g}) line += FmtF(v, 10, 3);
    line += FmtF(m.eg, 16, 8);
    out.push_back(std::move(line));
  }
  return out;
}

}  // namespace quintor

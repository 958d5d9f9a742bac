// The evaluation at the end of a run: the geometry and frequencies to use,
// the full evaluation at the Session's temperature and pressure, the fixed
// temperature table and the table of requested temperatures.
#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>

#include "io/fortran_io.h"
#include "thermo/thermo.h"

namespace quintor {

namespace {

const std::string Ruler97(97, '-');

void TableHead(Session& s) {
  s.log.Line(" Temperature    CV        CP        U         H         S         G          Q            ln(Q)");
  s.log.Line("      K       J/K/mol   J/K/mol   kJ/mol    kJ/mol   J/K/mol    kJ/mol");
  s.log.Line(Ruler97);
}

void TableTitle(Session& s, std::string_view which, int nRot) {
  if (nRot > 0)
    s.log.Line(" Thermodynamics at " + std::string(which) + " temperatures (" + FmtI(nRot, 2) +
               " internal rotations in Pitzer-Gwinn approximation):");
  else
    s.log.Line(" Thermodynamics at " + std::string(which) + " temperatures (w/o internal rotations):");
}

// `count` rows from `first` on, T growing by adding `step`.
void TableRows(Session& s, double first, double step, long long count, std::vector<TableRow>& rows,
               RotationTreatment* rotations) {
  rows.clear();
  rows.reserve(static_cast<size_t>(std::max(count, 0LL)));
  double T = first;
  for (long long k = 0; k < count; ++k) {
    s.opt.temperature = T;
    ThermoAtTP(s, true, rotations);
    rows.push_back({T, s.thermo.tableRow, s.thermo.quantumTableRow});
    T += step;
  }
}

// The rows again with the rotations as exact quantum rotors.
void QuantumTable(Session& s, std::string_view which, int nRot, const std::vector<TableRow>& rows) {
  s.log.Line(" Thermodynamics at " + std::string(which) + " temperatures (" + FmtI(nRot, 2) +
             " internal rotations as exact quantum rotors, I(**)):");
  TableHead(s);
  for (const TableRow& row : rows) {
    const TDResult& r = row.quantum;
    s.log.Line(FmtF(row.temperature, 10, 3) + FmtF(r.cv, 10, 3) + FmtF(r.cp, 10, 3) + FmtF(r.u, 10, 3) +
               FmtF(r.h, 10, 3) + FmtF(r.s, 10, 3) + FmtF(r.g, 10, 3) + FmtE(r.q, 15, 5) + FmtF(r.lnQ, 12, 5));
  }
  s.log.Line(Ruler97);
}

void MonteCarloBlock(Session& s, const std::vector<MonteCarloRow>& rows, size_t from) {
  s.log.Line(" Temperature    CV        CP        U         H         S         G          Q         ln(Q)");
  s.log.Line("      K       J/K/mol   J/K/mol   kJ/mol    kJ/mol   J/K/mol    kJ/mol");
  s.log.Line(Ruler97);
  for (size_t k = from; k < rows.size(); ++k) {
    const MonteCarloRow& row = rows[k];
    const TDResult& r = row.f;
    std::string line = FmtF(row.temperature, 10, 3) + FmtF(r.cv, 10, 3) + FmtF(r.cp, 10, 3) + FmtF(r.u, 10, 3) +
                       FmtF(r.h, 10, 3) + FmtF(r.s, 10, 3) + FmtF(r.g, 10, 3) + FmtE(r.q, 12, 3) + FmtF(r.lnQ, 10, 3);
    if (static_cast<float>(row.errorPercent) >= 1.0f)
      line += " WARNING! There were " + FmtI(std::llround(row.errorPercent), 3) +
              "% errors during Pitzer interpolation. Data for the given T can be erroneous!";
    s.log.Line(line);
  }
  s.log.Line(Ruler97);
}

// The two Monte Carlo tables, from row `from` on.
void MonteCarloTables(Session& s, size_t from) {
  const TableResMC& t = s.thermo.monteCarlo;
  s.log.Line(" Thermodynamics of internal rotations calculated by Monte Carlo method:");
  MonteCarloBlock(s, t.rotations, from);
  s.log.Line(" Total thermodynamic functions with the internal rotation contributions  calculated by Monte Carlo method:");
  MonteCarloBlock(s, t.totals, from);
}

void EditedWarning(Session& s, std::string_view tense) {
  s.log.Line(" **** WARNING! Molecular geometry was changed during the interactive session.");
  s.log.Line(" **** The final (edited) coordinates " + std::string(tense) + " used for TD calculations.");
  s.log.Line(" **** The TD analysis can be invalid!");
}

}  // namespace

void CalcTD(Session& s, bool structureEdited, RotationTreatment* rotations) {
  if (s.nAtoms <= 0) return;
  s.log.EndLine();
  s.log.Line(" ******************** THERMOCHEMICAL PROPERTIES EVALUATION ********************");

  if (!structureEdited) {
    auto xyz = s.Set(s.iCyc).xyz;
    xyz.resize(static_cast<size_t>(s.nAtoms), Vec3{0.0, 0.0, 0.0});
    s.xyz = std::move(xyz);
    s.log.Line(" Molecular geometry corresponds to the last coordinate set - Step No." + FmtI(s.iCyc, 5));
  } else {
    EditedWarning(s, "will be");
  }

  // Scaling once: the sign flips of the evaluations come after it.
  for (VibMode& m : s.modes) m.scaledFreq = m.freq * s.opt.freqScale;
  s.thermo.SizeFor(s.modes.size());

  ThermoAtTP(s, false, rotations);
  // Rotations that replace no mode leave the tables as they are.
  if (rotations && rotations->Count() == 0) rotations = nullptr;
  const int nRot = rotations ? rotations->Count() : 0;
  ThermoReport& report = s.thermo.report;
  const ThermoState& t = s.thermo;
  report.evaluated = true;
  report.temperature = s.opt.temperature;
  report.pressure = s.opt.pressure;
  report.zpeTot = t.zpeTot;
  report.elec = t.elec, report.tran = t.tran, report.rot = t.rot, report.vib = t.vib, report.tot = t.tot;
  report.quasi = QuasiRrhoAtTP(s, false);

  if (s.modes.empty()) {
    s.log.Line(" ***** W A R N I N G !");
    s.log.Line(" ***** Vibrational frequencies have not been found in the input file.");
    s.log.Line(" ***** TD functions have no vibrational contributions!");
    s.log.Line(" ***** TD analysis may be invalid!");
    return;
  }

  const bool monteCarlo = nRot > 0 && s.opt.monteCarlo;
  if (monteCarlo) {
    s.log.Line(" *** Note: Internal rotation contributions will be treated also using the Monte Carlo method ***");
    s.log.Line(" *** Please take into account that this kind of calculation can take a long time             ***");
  }
  TableTitle(s, "various", nRot);
  TableHead(s);
  // The tables generate no coordinate files.
  s.opt.genCoordAngle = 0.0;
  TableRows(s, 10.0, 10.0, 50, report.fixedTable, rotations);
  s.log.Line(Ruler97);
  if (nRot > 0) QuantumTable(s, "various", nRot, report.fixedTable);
  if (monteCarlo) MonteCarloTables(s, 0);
  const size_t monteCarloRows = s.thermo.monteCarlo.rotations.size();

  if (!s.opt.tempTableRequested) {
    if (structureEdited) EditedWarning(s, "were");
    return;
  }
  auto& range = s.opt.tempRange;
  if (range[2] <= 0.0) range[2] = 10.0;
  if (range[0] <= 0.0) range[0] = range[2];
  if (range[1] <= 0.0) range[1] = 19.0 * range[2] + range[0];
  const double first = range[0], last = range[1], step = range[2];
  TableTitle(s, "requested", nRot);
  TableHead(s);
  const auto count = static_cast<long long>((step - first + last) / step);
  TableRows(s, first, step, count, report.requestedTable, rotations);
  s.log.Line(Ruler97);
  if (nRot > 0) QuantumTable(s, "requested", nRot, report.requestedTable);
  if (monteCarlo) MonteCarloTables(s, monteCarloRows);
  if (structureEdited) EditedWarning(s, "were");
}

}  // namespace quintor

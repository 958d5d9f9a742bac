#include "app/results.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <fstream>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "app/command_line.h"
#include "app/report.h"
#include "app/rotor_results.h"
#include "io/file_names.h"
#include "io/fortran_io.h"
#include "readers/elements.h"

namespace quintor {

namespace {

using json = nlohmann::ordered_json;
using namespace constants;

// A value the input did not give is null, not a filler number.
json OrNull(double v, bool given) { return given ? json(v) : json(nullptr); }

json Contribution(const TDResult& r) {
  return {{"Q", r.q}, {"lnQ", r.lnQ}, {"CV", r.cv}, {"CP", r.cp}, {"U", r.u},
          {"H", r.h}, {"S", r.s},     {"G", r.g}};
}

json Table(const std::vector<TableRow>& rows, bool quantum = false) {
  json t = json::array();
  for (const TableRow& row : rows) {
    json r = Contribution(quantum ? row.quantum : row.tot);
    r["T"] = row.temperature;
    t.push_back(std::move(r));
  }
  return t;
}

// Bohr to Angstrom, rounded to 1e-10 A so that the numbers read as printed
// (the conversion back and forth leaves noise in the last bits).
double Angstrom(double bohr) { return std::round(bohr * BohrToAngstrom * 1e10) / 1e10; }

std::string Symbol(int z) { return std::string(Trim(ElementSymbol(z))); }

// kJ/mol to Hartree in the results a script reads (CODATA 2018, as Gaussian).
constexpr double kHartreePerKJ = 1.0 / HartreeToKJPerMolCodata2018;

// E: the energy of the geometry the thermochemistry is evaluated at, by the
// method of the frequencies. The reader tells it where it can; else it is the
// energy of the final set, when the log gave one.
struct FinalEnergy {
  double e = 0.0;
  bool given = false;
  std::string method;
};
FinalEnergy FinalEnergyOf(const Session& s) {
  const LogEnergies& le = s.logEnergies;
  if (le.given) return {le.energy, true, le.method};
  // A located geometry (GAMESS) repeats the last search point without its
  // energy: the energy of that same geometry stands.
  int i = s.iCyc;
  while (i > 0 && s.Set(i).energy == 0.0 && s.Set(i - 1).xyz == s.Set(i).xyz) --i;
  const double e = s.Set(i).energy;
  return {e, e != 0.0, ""};
}

// Whether the thermochemistry had vibrations to work with: without them ZPE,
// H and G are not given (an atom needs none).
bool HasVibrations(const Session& s) {
  if (s.nAtoms <= 1) return true;
  return std::any_of(s.modes.begin(), s.modes.end(), [](const VibMode& m) { return m.given && m.freq != 0.0; });
}

// The energies of the run's evaluation, in Hartree: E and E plus the
// corrections. `corrections` is false when the run has no frequencies.
struct Energies {
  FinalEnergy final;
  bool corrections = false;
  double zpe = 0.0, h = 0.0, g = 0.0;  // corrections, Hartree
};
Energies EnergiesOf(const Session& s) {
  const ThermoReport& r = s.thermo.report;
  Energies e;
  e.final = FinalEnergyOf(s);
  e.corrections = r.evaluated && HasVibrations(s);
  e.zpe = r.zpeTot * kHartreePerKJ;
  e.h = r.tot.h * kHartreePerKJ;
  e.g = r.tot.g * kHartreePerKJ;
  return e;
}

const char* const kNoFrequencies = " WARNING! No frequencies in the input: ZPE, H and G are not given";

// Every WARNING line of the run, the MainLog's and the results' own.
std::vector<std::string> WarningsOf(const Session& s) {
  std::vector<std::string> w = s.log.Warnings();
  if (s.thermo.report.evaluated && !HasVibrations(s)) w.emplace_back(kNoFrequencies);
  return w;
}

// The first warning that says something about this log: the notice of the
// default multiplicity (logs that carry none, as xtb's) only when alone.
std::string FirstWarningOf(const std::vector<std::string>& warnings) {
  for (const std::string& w : warnings)
    if (w.find("Multiplicity of molecule was not set") == std::string::npos) return w;
  return warnings.empty() ? std::string() : warnings.front();
}

json Xyz(const std::vector<Vec3>& bohr, int n) {
  json rows = json::array();
  for (int i = 0; i < n; ++i) {
    const Vec3 r = static_cast<size_t>(i) < bohr.size() ? bohr[static_cast<size_t>(i)] : Vec3{0.0, 0.0, 0.0};
    rows.push_back({Angstrom(r[0]), Angstrom(r[1]), Angstrom(r[2])});
  }
  return rows;
}

json InputJson(const Session& s) {
  const std::string& program = s.logEnergies.program;
  return {{"file", s.files.inputName},
          {"format", program.empty() ? std::string(FormatName(s.opt.formatCode)) : program},
          {"format_code", static_cast<int>(s.opt.formatCode)}};
}

// The temperature (K) and pressure (atm) of the evaluation; of the options
// when there was none (the temperature tables move the options' values).
double TemperatureOf(const Session& s) {
  return s.thermo.report.evaluated ? s.thermo.report.temperature : s.opt.temperature;
}
double PressureAtmOf(const Session& s) {
  return (s.thermo.report.evaluated ? s.thermo.report.pressure : s.opt.pressure) / 101325.0;
}

json ConditionsJson(const Session& s) {
  const LogEnergies& le = s.logEnergies;
  const int charge = le.chargeGiven ? le.charge : s.opt.charge;
  return {{"temperature_K", TemperatureOf(s)},
          {"pressure_atm", PressureAtmOf(s)},
          {"charge", charge},
          {"multiplicity", s.opt.multiplicity > 0 ? json(s.opt.multiplicity) : json(nullptr)}};
}

json AtomsJson(const Session& s) {
  const std::vector<Vec3>& final = s.Set(s.iCyc).xyz;
  json atoms = json::array();
  const json xyz = Xyz(final, s.nAtoms);
  for (int i = 0; i < s.nAtoms; ++i) {
    const size_t k = static_cast<size_t>(i);
    const int z = k < s.atomicNumber.size() ? s.atomicNumber[k] : 0;
    atoms.push_back({{"symbol", Symbol(z)},
                     {"Z", z},
                     {"mass", k < s.atomMass.size() ? s.atomMass[k] : 0.0},
                     {"xyz", xyz[k]}});
  }
  return atoms;
}

// The sets of the cycle table, each with its geometry; a run that stored
// only its starting geometry has set -1.
json CoordinateSetsJson(const Session& s) {
  json sets = json::array();
  for (int i = s.iCyc == -1 ? -1 : 0; i <= s.iCyc; ++i) {
    const CoordSet& c = s.Set(i);
    sets.push_back({{"step", i},
                    {"energy", OrNull(c.energy, c.energy != 0.0)},
                    {"gmax", OrNull(c.gmax, c.gmax != NotGiven)},
                    {"grms", OrNull(c.grms, c.grms != NotGiven)},
                    {"xyz", Xyz(c.xyz, static_cast<int>(c.xyz.size()))}});
  }
  return sets;
}

json EnergyJson(const Session& s) {
  const FinalEnergy e = FinalEnergyOf(s);
  const LogEnergies& le = s.logEnergies;
  json j = {{"E", OrNull(e.e, e.given)},
            {"energy_method", e.method.empty() ? json(nullptr) : json(e.method)},
            {"lowest_step_energy", OrNull(s.lowestEnergy, s.lowestEnergy != 0.0)}};
  j["composite"] = le.composite.empty() ? json(nullptr)
                                        : json{{"method", le.composite},
                                               {"E0", le.compositeE0},
                                               {"H", le.compositeH},
                                               {"G", le.compositeG}};
  j["log_sums"] = le.gaussianSums ? json{{"E+H", le.gaussianH}, {"E+G", le.gaussianG}} : json(nullptr);
  return j;
}

json ModeJson(const VibMode& m, size_t number, int nAtoms) {
  json disp = json::array();
  for (int i = 0; i < nAtoms && static_cast<size_t>(i) < m.disp.size(); ++i) {
    const Vec3& d = m.disp[static_cast<size_t>(i)];
    disp.push_back({d[0], d[1], d[2]});
  }
  return {{"number", number},
          {"frequency", m.freq},
          {"symmetry", m.symmetry.empty() ? json(nullptr) : json(m.symmetry)},
          {"reduced_mass", m.redMass},
          {"intensity", m.intensity},
          {"ir_intensity", OrNull(m.ir, m.irGiven)},
          {"raman_activity", OrNull(m.raman, m.ramanGiven)},
          {"use", static_cast<int>(m.use)},
          {"displacements", std::move(disp)}};
}

json ModesJson(const Session& s) {
  json modes = json::array();
  for (size_t k = 0; k < s.modes.size(); ++k) modes.push_back(ModeJson(s.modes[k], k + 1, s.nAtoms));
  return modes;
}

json ImaginaryJson(const Session& s) {
  json freqs = json::array();
  for (const VibMode& m : s.modes)
    if (m.given && m.freq < 0.0) freqs.push_back(m.freq);
  return freqs;
}

json ThermochemistryJson(const Session& s) {
  const ThermoReport& r = s.thermo.report;
  if (!r.evaluated) return nullptr;
  const Energies e = EnergiesOf(s);
  const bool c = e.corrections;
  const bool sums = c && e.final.given;
  return {
      {"temperature", r.temperature},
      {"pressure", r.pressure},
      {"zpe", OrNull(r.zpeTot, c)},
      {"electronic", Contribution(r.elec)},
      {"translational", Contribution(r.tran)},
      {"rotational", Contribution(r.rot)},
      // Without frequencies the totals would look plausible and be wrong.
      {"vibrational", c ? Contribution(r.vib) : json(nullptr)},
      {"total", c ? Contribution(r.tot) : json(nullptr)},
      {"E", OrNull(e.final.e, e.final.given)},
      {"ZPE_hartree", OrNull(e.zpe, c)},
      {"H_hartree", OrNull(e.h, c)},
      {"G_hartree", OrNull(e.g, c)},
      {"E+ZPE", OrNull(e.final.e + e.zpe, sums)},
      {"E+H", OrNull(e.final.e + e.h, sums)},
      {"E+G", OrNull(e.final.e + e.g, sums)},
  };
}

json EngineJson(const Session& s) {
  const EngineResults& r = s.engineResults;
  if (!s.opt.engineHeat && !s.opt.engineGeoOpt) return nullptr;
  json j = {{"method", r.method}};
  if (s.opt.engineHeat) j["heat_of_formation_kcal"] = OrNull(r.heatKcal, r.heatGiven);
  if (s.opt.engineGeoOpt) {
    json xyz = json::array();
    for (const Vec3& p : r.optimisedXyz) xyz.push_back({p[0], p[1], p[2]});
    j["geoopt"] = {{"optimised", r.optimised},
                   {"heat_of_formation_kcal", OrNull(r.optimisedHeatKcal, r.optimised)},
                   {"xyz", std::move(xyz)}};
  }
  return j;
}

// A CSV field, quoted when it holds a separator, a quote or a line end.
std::string CsvField(std::string_view text) {
  if (text.find_first_of(",\"\n\r") == std::string_view::npos) return std::string(text);
  std::string out = "\"";
  for (char c : text) {
    if (c == '"') out += '"';
    out += (c == '\n' || c == '\r') ? ' ' : c;
  }
  return out + "\"";
}

bool WriteAll(int fd, const std::string& text) {
  size_t done = 0;
  while (done < text.size()) {
    const ssize_t n = ::write(fd, text.data() + done, text.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    done += static_cast<size_t>(n);
  }
  return true;
}

std::string_view QuasiEntropyName(QuasiEntropy e) {
  switch (e) {
    case QuasiEntropy::Grimme: return "Grimme";
    case QuasiEntropy::Truhlar: return "Truhlar";
    default: return "none";
  }
}

// The quasi-RRHO totals beside `total`, in its units; E+H and E+G in Hartree;
// the cut-offs in cm-1 and the corrections applied. Null when none was asked for.
json QuasiRrhoJson(const Session& s) {
  const QuasiRrho& q = s.thermo.report.quasi;
  if (!q.evaluated) return nullptr;
  const Energies en = EnergiesOf(s);
  const double e = en.final.e;
  const bool sums = en.final.given;
  return {{"S", q.s},
          {"H", q.h},
          {"G", q.g},
          {"E+H", OrNull(e + q.h * kHartreePerKJ, sums)},
          {"E+G", OrNull(e + q.g * kHartreePerKJ, sums)},
          {"entropy", QuasiEntropyName(q.entropy)},
          {"entropy_cutoff", OrNull(q.entropyCutoff, q.entropy != QuasiEntropy::None)},
          {"enthalpy", q.enthalpy ? "Head-Gordon" : "none"},
          {"enthalpy_cutoff", OrNull(q.enthalpyCutoff, q.enthalpy)}};
}

// The CSV columns of the quasi-RRHO totals, empty when none was asked for.
std::string CsvQuasiHeader() { return ",qH_hartree,qG_hartree,qS_J_per_K_mol"; }
std::string CsvQuasiFields(const Session& s) {
  const QuasiRrho& q = s.thermo.report.quasi;
  const Energies en = EnergiesOf(s);
  if (!q.evaluated || !en.final.given) return ",,,";
  const double e = en.final.e;
  return fmt::format(",{:.10f},{:.10f},{:.4f}", e + q.h * kHartreePerKJ, e + q.g * kHartreePerKJ, q.s);
}

}  // namespace

std::string ResultsJson(const Session& s, int status) {
  json j;
  j["program"] = {{"name", "quintor"}, {"version", std::string(VersionText)}, {"build", BuildNumber}};
  j["input"] = InputJson(s);
  j["exit_status"] = status;
  j["conditions"] = ConditionsJson(s);
  j["atoms"] = AtomsJson(s);
  j["coordinate_sets"] = CoordinateSetsJson(s);
  j["lowest_energy_step"] = s.lowestEnergyStep;
  j["energy"] = EnergyJson(s);
  j["modes"] = ModesJson(s);
  j["imaginary_frequencies"] = ImaginaryJson(s);
  j["symmetry"] = {{"point_group", s.pointGroup}, {"sigma", s.opt.rotationNumber}};
  j["thermochemistry"] = ThermochemistryJson(s);
  const ThermoReport& r = s.thermo.report;
  if (r.evaluated) {
    j["thermochemistry"]["quasi_rrho"] = QuasiRrhoJson(s);
    j["thermochemistry"]["concentration"] = OrNull(s.opt.concentration, s.opt.concentration > 0.0);
    j["internal_rotations"] = InternalRotationsJson(r);
    j["totals_by_model"] = TotalsByModelJson(r);
  }
  j["temperature_tables"] = r.evaluated && HasVibrations(s)
                                ? json{{"model", r.tableModel}, {"fixed", Table(r.fixedTable)}, {"requested", Table(r.requestedTable)}}
                                : json(nullptr);
  j["temperature_tables_quantum"] =
      r.evaluated && HasVibrations(s) && !r.rotors.empty()
          ? json{{"model", "quantum"}, {"fixed", Table(r.fixedTable, true)}, {"requested", Table(r.requestedTable, true)}}
          : json(nullptr);
  j["engine"] = EngineJson(s);
  j["warnings"] = WarningsOf(s);
  return j.dump(2);
}

bool WriteResultsJson(const Session& s, int status) {
  std::ofstream out(DerivedName(s.files.inputName, ".json"), std::ios::binary);
  out << ResultsJson(s, status) << '\n';
  return static_cast<bool>(out);
}

std::string CsvHeader() {
  return "input,format,formula,atoms,E_hartree,ZPE_hartree,H_hartree,G_hartree,S_J_per_K_mol,CV_J_per_K_mol,"
         "point_group,sigma,imaginary,exit_status,first_warning,T_K,P_atm,energy_method,warnings" +
         CsvQuasiHeader();
}

namespace {
std::string CsvNumber(double v, bool given, int decimals) {
  return given ? fmt::format("{:.{}f}", v, decimals) : std::string();
}
}  // namespace

// One row: E and H, G as E+H and E+G (Hartree), as the JSON gives them.
std::string CsvRow(const Session& s, int status) {
  std::string row = CsvField(s.files.inputName) + "," + CsvField(InputJson(s)["format"].get<std::string>()) + "," +
                    CsvField(s.nAtoms > 0 ? Stoichiometry(s) : "") + "," + std::to_string(s.nAtoms) + ",";
  const ThermoReport& r = s.thermo.report;
  const Energies e = EnergiesOf(s);
  const bool sums = e.corrections && e.final.given;
  row += CsvNumber(e.final.e, e.final.given, 10) + ",";
  row += CsvNumber(e.zpe, e.corrections, 10) + ",";
  row += CsvNumber(e.final.e + e.h, sums, 10) + ",";
  row += CsvNumber(e.final.e + e.g, sums, 10) + ",";
  row += CsvNumber(r.tot.s, e.corrections, 4) + "," + CsvNumber(r.tot.cv, e.corrections, 4) + ",";
  const std::vector<std::string> warnings = WarningsOf(s);
  row += CsvField(s.pointGroup) + "," + fmt::format("{:g}", s.opt.rotationNumber) + "," + std::to_string(s.nImag) +
         "," + std::to_string(status) + "," + CsvField(Trim(FirstWarningOf(warnings))) + "," +
         fmt::format("{:g}", TemperatureOf(s)) + "," + fmt::format("{:g}", PressureAtmOf(s)) + "," +
         CsvField(FinalEnergyOf(s).method) + "," + std::to_string(warnings.size()) + CsvQuasiFields(s);
  return row;
}

bool AppendCsvRow(const std::string& path, const Session& s, int status) {
  const int fd = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
  if (fd < 0) return false;
  bool ok = ::flock(fd, LOCK_EX) == 0;
  struct stat st {};
  if (ok) ok = ::fstat(fd, &st) == 0;
  // The header and the row go out in one write, under the lock.
  if (ok) ok = WriteAll(fd, (st.st_size == 0 ? CsvHeader() + "\n" : std::string()) + CsvRow(s, status) + "\n");
  ::flock(fd, LOCK_UN);
  ::close(fd);
  return ok;
}

}  // namespace quintor

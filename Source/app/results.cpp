#include "app/results.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

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

json Table(const std::vector<TableRow>& rows) {
  json t = json::array();
  for (const TableRow& row : rows) {
    json r = Contribution(row.tot);
    r["T"] = row.temperature;
    t.push_back(std::move(r));
  }
  return t;
}

// Bohr to Angstrom, rounded to 1e-10 A so that the numbers read as printed
// (the conversion back and forth leaves noise in the last bits).
double Angstrom(double bohr) { return std::round(bohr * BohrToAngstrom * 1e10) / 1e10; }

std::string Symbol(int z) { return std::string(Trim(ElementSymbol(z))); }

// The energies of the run's evaluation, in Hartree: E and E plus the
// corrections, as the MainLog's "Etot+..." lines give them.
struct Energies {
  double e, zpe, h, g;
};
Energies EnergiesOf(const Session& s) {
  const ThermoReport& r = s.thermo.report;
  const double e = s.electronicEnergy;
  return {e, r.zpeTot * KJPerMolToHartree, e + r.tot.h * KJPerMolToHartree, e + r.tot.g * KJPerMolToHartree};
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
  const double e = s.electronicEnergy;
  return {{"S", q.s},
          {"H", q.h},
          {"G", q.g},
          {"E+H", e + q.h * KJPerMolToHartree},
          {"E+G", e + q.g * KJPerMolToHartree},
          {"entropy", QuasiEntropyName(q.entropy)},
          {"entropy_cutoff", OrNull(q.entropyCutoff, q.entropy != QuasiEntropy::None)},
          {"enthalpy", q.enthalpy ? "Head-Gordon" : "none"},
          {"enthalpy_cutoff", OrNull(q.enthalpyCutoff, q.enthalpy)}};
}

// The CSV columns of the quasi-RRHO totals, empty when none was asked for.
std::string CsvQuasiHeader() { return ",qH_hartree,qG_hartree,qS_J_per_K_mol"; }
std::string CsvQuasiFields(const Session& s) {
  const QuasiRrho& q = s.thermo.report.quasi;
  if (!q.evaluated) return ",,,";
  const double e = s.electronicEnergy;
  return fmt::format(",{:.10f},{:.10f},{:.4f}", e + q.h * KJPerMolToHartree, e + q.g * KJPerMolToHartree, q.s);
}

}  // namespace

std::string ResultsJson(const Session& s, int status) {
  json j;
  j["program"] = {{"name", "quintor"}, {"version", std::string(VersionText)}, {"build", BuildNumber}};
  j["input"] = {{"file", s.files.inputName},
                {"format", FormatName(s.opt.formatCode)},
                {"format_code", static_cast<int>(s.opt.formatCode)}};
  j["exit_status"] = status;

  const std::vector<Vec3>& final = s.Set(s.iCyc).xyz;
  json atoms = json::array();
  for (int i = 0; i < s.nAtoms; ++i) {
    const size_t k = static_cast<size_t>(i);
    const Vec3 r = k < final.size() ? final[k] : Vec3{0.0, 0.0, 0.0};
    const int z = k < s.atomicNumber.size() ? s.atomicNumber[k] : 0;
    atoms.push_back({{"symbol", Symbol(z)},
                     {"Z", z},
                     {"mass", k < s.atomMass.size() ? s.atomMass[k] : 0.0},
                     {"xyz", {Angstrom(r[0]), Angstrom(r[1]), Angstrom(r[2])}}});
  }
  j["atoms"] = std::move(atoms);

  // The sets of the cycle table; a run that stored only its starting
  // geometry has set -1.
  json sets = json::array();
  for (int i = s.iCyc == -1 ? -1 : 0; i <= s.iCyc; ++i) {
    const CoordSet& c = s.Set(i);
    sets.push_back({{"step", i},
                    {"energy", OrNull(c.energy, c.energy != 0.0)},
                    {"gmax", OrNull(c.gmax, c.gmax != NotGiven)},
                    {"grms", OrNull(c.grms, c.grms != NotGiven)}});
  }
  j["coordinate_sets"] = std::move(sets);
  j["lowest_energy_step"] = s.lowestEnergyStep;

  json modes = json::array();
  for (size_t k = 0; k < s.modes.size(); ++k) {
    const VibMode& m = s.modes[k];
    modes.push_back({{"number", k + 1},
                     {"frequency", m.freq},
                     {"reduced_mass", m.redMass},
                     {"intensity", m.intensity},
                     {"use", static_cast<int>(m.use)}});
  }
  j["modes"] = std::move(modes);
  j["symmetry"] = {{"point_group", s.pointGroup}, {"sigma", s.opt.rotationNumber}};

  const ThermoReport& r = s.thermo.report;
  if (r.evaluated) {
    const Energies e = EnergiesOf(s);
    j["thermochemistry"] = {
        {"temperature", r.temperature},
        {"pressure", r.pressure},
        {"zpe", r.zpeTot},
        {"electronic", Contribution(r.elec)},
        {"translational", Contribution(r.tran)},
        {"rotational", Contribution(r.rot)},
        {"vibrational", Contribution(r.vib)},
        {"total", Contribution(r.tot)},
        {"E", e.e},
        {"E+ZPE", e.e + e.zpe},
        {"E+H", e.h},
        {"E+G", e.g},
    };
    j["thermochemistry"]["quasi_rrho"] = QuasiRrhoJson(s);
    j["thermochemistry"]["concentration"] = OrNull(s.opt.concentration, s.opt.concentration > 0.0);
    j["temperature_tables"] = {
        {"model", r.tableModel}, {"fixed", Table(r.fixedTable)}, {"requested", Table(r.requestedTable)}};
    j["internal_rotations"] = InternalRotationsJson(r);
    j["totals_by_model"] = TotalsByModelJson(r);
  } else {
    j["thermochemistry"] = nullptr;
    j["temperature_tables"] = nullptr;
  }
  return j.dump(2);
}

bool WriteResultsJson(const Session& s, int status) {
  std::ofstream out(DerivedName(s.files.inputName, ".json"), std::ios::binary);
  out << ResultsJson(s, status) << '\n';
  return static_cast<bool>(out);
}

std::string CsvHeader() {
  return "input,format,formula,atoms,E_hartree,ZPE_hartree,H_hartree,G_hartree,S_J_per_K_mol,CV_J_per_K_mol,"
         "point_group,sigma,imaginary,exit_status,first_warning" +
         CsvQuasiHeader();
}

std::string CsvRow(const Session& s, int status) {
  std::string row = CsvField(s.files.inputName) + "," + CsvField(FormatName(s.opt.formatCode)) + "," +
                    CsvField(s.nAtoms > 0 ? Stoichiometry(s) : "") + "," + std::to_string(s.nAtoms) + ",";
  const ThermoReport& r = s.thermo.report;
  if (r.evaluated) {
    const Energies e = EnergiesOf(s);
    row += fmt::format("{:.10f},{:.10f},{:.10f},{:.10f},{:.4f},{:.4f},", e.e, e.zpe, e.h, e.g, r.tot.s, r.tot.cv);
  } else {
    row += ",,,,,,";
  }
  row += CsvField(s.pointGroup) + "," + fmt::format("{:g}", s.opt.rotationNumber) + "," + std::to_string(s.nImag) +
         "," + std::to_string(status) + "," + CsvField(Trim(s.log.FirstWarning())) + CsvQuasiFields(s);
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

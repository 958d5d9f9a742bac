#include "app/conformers.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <nlohmann/json.hpp>

#include "app/command_line.h"
#include "app/run.h"
#include "io/file_names.h"
#include "io/fortran_io.h"

namespace quintor {

namespace {

using namespace constants;

constexpr double SameEnergy = 1e-5;     // Hartree
constexpr double SameRotation = 1e-3;   // relative, on the principal moments

bool IsBoltz(const std::string& arg) { return Upper(Trim(arg)).rfind("/BOLTZ", 0) == 0; }

struct Conformer {
  std::string name;         // as the list gives it
  double e = 0.0;           // electronic energy, Hartree
  double h = 0.0, g = 0.0;  // E + H, E + G, Hartree (quasi-RRHO when asked for)
  std::array<double, 3> moments{};
  std::vector<int> formula;  // sorted nuclear numbers
  int duplicateOf = -1;     // index of the first conformer it repeats
  double weight = 0.0;
};

// The entries of the list: one log per line; blank lines and lines that
// begin with '#' are passed over; a relative name is taken from the list's
// directory.
std::vector<std::string> ListEntries(const std::string& list) {
  std::ifstream in(list);
  std::vector<std::string> names;
  const std::filesystem::path dir = std::filesystem::path(list).parent_path();
  for (std::string line; std::getline(in, line);) {
    std::string_view t = Trim(line);
    if (!t.empty() && t.back() == '\r') t = Trim(t.substr(0, t.size() - 1));
    if (t.empty() || t[0] == '#') continue;
    const std::filesystem::path p(t);
    names.push_back(p.is_absolute() || dir.empty() ? p.string() : (dir / p).string());
  }
  return names;
}

bool SameConformer(const Conformer& a, const Conformer& b) {
  if (std::fabs(a.e - b.e) > SameEnergy) return false;
  for (int k = 0; k < 3; ++k) {
    const double big = std::max(std::fabs(a.moments[k]), std::fabs(b.moments[k]));
    if (std::fabs(a.moments[k] - b.moments[k]) > SameRotation * big) return false;
  }
  return true;
}

}  // namespace

bool AsksForEnsemble(const std::vector<std::string>& args) {
  return std::any_of(args.begin() + (args.empty() ? 0 : 1), args.end(), IsBoltz);
}

int RunEnsemble(Session& s, const std::vector<std::string>& args) {
  try {
    ParseCommandLine(s, args);
  } catch (const FatalReadError& e) {
    s.Console() << e.what() << "\n";
    return exit_status::ReadError;
  }
  const std::string list = s.files.inputName;
  std::error_code ec;
  if (list.empty() || !std::filesystem::is_regular_file(list, ec)) {
    s.Console() << " File " << list << " does not exist.\n";
    return exit_status::NoInput;
  }
  const std::vector<std::string> entries = ListEntries(list);
  if (entries.empty()) {
    s.Console() << " ERROR! The conformer list " << list << " names no log\n";
    return exit_status::NoInput;
  }
  const std::string logName = DerivedName(list, ".mou");
  if (!s.log.Open(logName)) {
    s.Console() << " Can not open output file " << logName << "\n";
    return exit_status::CanNotWrite;
  }
  // Both the MainLog of the list and the screen get the report.
  auto say = [&](const std::string& line) {
    s.log.Line(line);
    s.Console() << line << "\n";
  };

  // Every conformer runs with the other flags, unattended.
  std::vector<std::string> flags;
  for (size_t k = 1; k < args.size(); ++k)
    if (!IsBoltz(args[k])) flags.push_back(args[k]);
  if (std::none_of(flags.begin(), flags.end(), [](const std::string& f) { return Trim(f) == "/0"; }))
    flags.push_back("/0");

  say(" ******************** CONFORMER ENSEMBLE ********************");
  say(" Conformer list          :" + list);
  std::vector<Conformer> confs;
  bool quasi = false;
  for (const std::string& name : entries) {
    if (!std::filesystem::is_regular_file(name, ec)) {
      say(" WARNING! Conformer log not found, left out: " + name);
      continue;
    }
    Session c;
    std::ostringstream console;
    std::istringstream keys;
    c.console = &console;
    c.keyboard = &keys;
    std::vector<std::string> a{name};
    a.insert(a.end(), flags.begin(), flags.end());
    const int status = RunQuintor(c, a);
    const ThermoReport& r = c.thermo.report;
    if (status != exit_status::Ok || !r.evaluated) {
      say(" WARNING! Conformer log could not be evaluated (status" + FmtI(status, 3) + "), left out: " + name);
      continue;
    }
    Conformer k;
    k.name = name;
    k.formula = c.atomicNumber;
    std::sort(k.formula.begin(), k.formula.end());
    if (!confs.empty() && k.formula != confs.front().formula) {
      say(" WARNING! Conformer log holds another molecule than the first, left out: " + name);
      continue;
    }
    if (c.modes.empty()) say(" WARNING! Conformer log has no frequencies: its G has no vibrational part: " + name);
    k.e = c.electronicEnergy;
    const bool q = r.quasi.evaluated;
    quasi = quasi || q;
    k.h = k.e + (q ? r.quasi.h : r.tot.h) * KJPerMolToHartree;
    k.g = k.e + (q ? r.quasi.g : r.tot.g) * KJPerMolToHartree;
    k.moments = c.thermo.moments;
    for (size_t j = 0; j < confs.size(); ++j)
      if (confs[j].duplicateOf < 0 && SameConformer(k, confs[j])) {
        k.duplicateOf = static_cast<int>(j);
        break;
      }
    confs.push_back(k);
  }

  size_t unique = 0;
  for (const Conformer& c : confs) unique += c.duplicateOf < 0 ? 1 : 0;
  if (unique == 0) {
    say(" ERROR! No conformer of the list could be evaluated");
    s.log.Close(s.opt.noLog);
    return exit_status::NoInput;
  }

  // Boltzmann weights by G at the run's temperature, duplicates counted once.
  const double T = s.opt.temperature;
  const double rt = GasConstant * T / 1000.0 * KJPerMolToHartree;  // Hartree
  double gMin = 1e300;
  for (const Conformer& c : confs)
    if (c.duplicateOf < 0) gMin = std::min(gMin, c.g);
  double z = 0.0;
  for (const Conformer& c : confs)
    if (c.duplicateOf < 0) z += std::exp(-(c.g - gMin) / rt);
  double hAvg = 0.0, sConf = 0.0;
  for (Conformer& c : confs) {
    if (c.duplicateOf >= 0) continue;
    c.weight = std::exp(-(c.g - gMin) / rt) / z;
    hAvg += c.weight * c.h;
    if (c.weight > 0.0) sConf -= GasConstant * c.weight * std::log(c.weight);
  }
  const double gEnsemble = gMin - rt * std::log(z);

  say(" Temperature             :" + FmtF(T, 10, 2) + " K" +
      (quasi ? "   (G and H with the quasi-RRHO corrections)" : ""));
  say(" No.          E, Hartree        E+G, Hartree  dG, kJ/mol    Weight  Log");
  say(std::string(90, '-'));
  for (size_t k = 0; k < confs.size(); ++k) {
    const Conformer& c = confs[k];
    std::string line = FmtI(static_cast<long long>(k + 1), 4) + FmtF(c.e, 20, 8) + FmtF(c.g, 20, 8) +
                       FmtF((c.g - gMin) / KJPerMolToHartree, 12, 3) + FmtF(c.weight, 10, 5) + "  " + c.name;
    say(line);
    if (c.duplicateOf >= 0)
      say("      duplicate of No." + FmtI(c.duplicateOf + 1, 4) + " (energy within 1e-5 Hartree, rotational "
          "constants within 0.1 %): counted once");
  }
  say(std::string(90, '-'));
  say(" Conformers counted      :" + FmtI(static_cast<long long>(unique), 10));
  say(" Ensemble E+G            :" + FmtF(gEnsemble, 20, 8) + " Hartree");
  say(" Weighted E+H            :" + FmtF(hAvg, 20, 8) + " Hartree");
  say(" Conformational entropy  :" + FmtF(sConf, 12, 4) + " J/K/mol");
  s.log.Close(s.opt.noLog);

  if (s.opt.json) {
    nlohmann::ordered_json j;
    j["list"] = list;
    j["temperature"] = T;
    j["quasi_rrho"] = quasi;
    nlohmann::ordered_json rows = nlohmann::ordered_json::array();
    for (const Conformer& c : confs)
      rows.push_back({{"log", c.name},
                      {"E", c.e},
                      {"E+H", c.h},
                      {"E+G", c.g},
                      {"weight", c.weight},
                      {"duplicate_of", c.duplicateOf < 0 ? nlohmann::ordered_json(nullptr)
                                                         : nlohmann::ordered_json(c.duplicateOf + 1)}});
    j["conformers"] = std::move(rows);
    j["ensemble"] = {{"E+G", gEnsemble}, {"E+H", hAvg}, {"S_conf", sConf}, {"counted", unique}};
    std::ofstream(DerivedName(list, ".json")) << j.dump(2) << "\n";
  }
  return exit_status::Ok;
}

}  // namespace quintor

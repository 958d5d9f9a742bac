#include "engine/parameters.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <istream>
#include <ostream>
#include <sstream>

#include <fmt/format.h>

#include "engine/constants.h"
#include "engine/slater_condon.h"
#include "io/fortran_io.h"

namespace quintor::engine {

int MethodIndex(EngineMethod method) {
  switch (method) {
    case EngineMethod::MNDO: return 1;
    case EngineMethod::AM1: return 3;
    case EngineMethod::PM3: return 4;
    case EngineMethod::MNDOD: return 0;
    case EngineMethod::PM3D: return 2;
  }
  return 4;
}

const char* MethodName(EngineMethod method) {
  switch (method) {
    case EngineMethod::MNDO: return "MNDO";
    case EngineMethod::AM1: return "AM1";
    case EngineMethod::PM3: return "PM3";
    case EngineMethod::MNDOD: return "MNDO+dAO";
    case EngineMethod::PM3D: return "PM3d";
  }
  return "PM3";
}

EngineUnits UnitsOf(EngineMethod method) {
  if (method == EngineMethod::MNDOD)
    return {constants::EngineOldBohrToAngstrom, constants::EngineOldHartreeToEV, constants::EngineOldEVToKcal};
  return {kBohr, kEv, kEvToKcal};
}

bool MethodHasDOrbitals(EngineMethod method) {
  return method == EngineMethod::MNDOD || method == EngineMethod::PM3D;
}

bool HasParameters(const ElementParameters& p) { return p.uss != 0 || p.zs != 0; }

int OrbitalCount(const ElementParameters& p, bool dOrbitals) {
  if (dOrbitals && p.zd > 0 && p.udd != 0) return 9;
  if (p.zp > 0 || p.upp != 0) return 4;
  return 1;
}

namespace {

struct KeyName {
  const char* text;
  ParameterKey key;
};
// The order of the search matters: "BS" must be found before "BETAS" would
// be, and "AD" lies inside "ADD", so "ADD" is asked for first.
constexpr KeyName kKeyOrder[] = {
    {"CORE", ParameterKey::CORE},   {"EHEAT", ParameterKey::EHEAT}, {"USS", ParameterKey::USS},
    {"UPP", ParameterKey::UPP},     {"UDD", ParameterKey::UDD},     {"ZS", ParameterKey::ZS},
    {"ZP", ParameterKey::ZP},       {"ZD", ParameterKey::ZD},       {"BS", ParameterKey::BS},
    {"BP", ParameterKey::BP},       {"BD", ParameterKey::BD},       {"BETAS", ParameterKey::BETAS},
    {"BETAP", ParameterKey::BETAP}, {"BETAD", ParameterKey::BETAD}, {"ALP", ParameterKey::ALP},
    {"ADD", ParameterKey::ADD},     {"BDD", ParameterKey::BDD},     {"AM", ParameterKey::AM},
    {"AD", ParameterKey::AD},       {"AQ", ParameterKey::AQ},       {"DD", ParameterKey::DD},
    {"QQ", ParameterKey::QQ},       {"EISOL", ParameterKey::EISOL}, {"GSS", ParameterKey::GSS},
    {"GSP", ParameterKey::GSP},     {"GPP", ParameterKey::GPP},     {"GP2", ParameterKey::GP2},
    {"HSP", ParameterKey::HSP},     {"HPP", ParameterKey::HPP},     {"GUES1", ParameterKey::GUES1},
    {"GUES2", ParameterKey::GUES2}, {"GUES3", ParameterKey::GUES3}, {"ZNS", ParameterKey::ZNS},
    {"ZNP", ParameterKey::ZNP},     {"ZND", ParameterKey::ZND},
};

// Valence shells: s, p and d electrons of the free atom as the methods count them.
struct Shells {
  int s, p, d;
};
Shells ValenceShells(int z) {
  static constexpr int kRowStart[] = {1, 3, 11, 19, 37, 55, 87};
  if (z <= 2) return {z, 0, 0};
  int row = 0;
  while (row + 1 < 7 && z >= kRowStart[row + 1]) ++row;
  const int pos = z - kRowStart[row];  // 0-based position in the row
  const int rowLength = row == 1 || row == 2 ? 8 : (row <= 4 ? 18 : 32);
  const int fromEnd = rowLength - 1 - pos;  // 0 for the noble gas
  if (pos == 0) return {1, 0, 0};
  if (pos == 1) return {2, 0, 0};
  if (fromEnd <= 5) return {2, 6 - fromEnd, 0};  // p block (noble gas 2, 6)
  const int group = pos + 1 - (rowLength == 32 ? 14 : 0);
  if (rowLength == 32 && pos >= 2 && pos <= 16) return {2, 0, 1};  // lanthanides: core 3
  if (group == 12) return {2, 0, 0};                             // Zn, Cd, Hg
  return {2, 0, group - 2};                                      // transition metals
}

}  // namespace

EngineMethod MethodOfMenu(int menu) {
  return menu >= 1 && menu <= 5 ? static_cast<EngineMethod>(menu) : EngineMethod::PM3;
}

int ValenceN(int z) {
  if (z <= 2) return 1;
  if (z <= 10) return 2;
  if (z <= 18) return 3;
  if (z <= 36) return 4;
  if (z <= 54) return 5;
  return 6;
}

int ValenceNd(int z) {
  if (z <= 30) return 3;
  if (z <= 48) return 4;
  return 5;
}

namespace {

ParameterSet EmptySet(EngineMethod method) {
  ParameterSet set;
  set.method = method;
  for (int z = 1; z <= kMaxElement; ++z) {
    const Shells sh = ValenceShells(z);
    set.el[z].core = sh.s + sh.p + sh.d;
  }
  return set;
}

std::string_view SectionName(std::string_view head) { return head.substr(2); }

}  // namespace

std::optional<ParameterKey> FindParameterKey(std::string_view keyField) {
  for (const KeyName& k : kKeyOrder)
    if (keyField.find(k.text) != std::string_view::npos) return k.key;
  return std::nullopt;
}

bool SectionApplies(std::string_view headText, EngineMethod method) {
  // headText is what follows "//", blank-padded as the line stands.
  std::string text(headText);
  text.resize(std::max<size_t>(text.size(), 8), ' ');
  if (text.find("COMMON") != std::string::npos) return true;
  switch (MethodIndex(method)) {
    case 0: return text.find("MNDOD") != std::string::npos;
    case 1: return text.find("MNDO ") != std::string::npos;
    case 2:
    case 4: return text.find("PM3 ") != std::string::npos;
    case 3: return text.find("AM1 ") != std::string::npos;
  }
  return false;
}

void SetParameter(ParameterSet& set, ParameterKey key, int z, int index, double value) {
  if (z < 1 || z > kMaxElement) return;
  ElementParameters& p = set.el[z];
  auto gues = [&](std::array<double, 4>& g) {
    if (index >= 1 && index <= 4) g[index - 1] = value;
  };
  switch (key) {
    case ParameterKey::CORE: p.core = value; break;
    case ParameterKey::EHEAT: p.eheat = value; break;
    case ParameterKey::USS: p.uss = value; break;
    case ParameterKey::UPP: p.upp = value; break;
    case ParameterKey::UDD: p.udd = value; break;
    case ParameterKey::ZS: p.zs = value; break;
    case ParameterKey::ZP: p.zp = value; break;
    case ParameterKey::ZD: p.zd = value; break;
    case ParameterKey::BS:
    case ParameterKey::BETAS: p.betas = value; key = ParameterKey::BETAS; break;
    case ParameterKey::BP:
    case ParameterKey::BETAP: p.betap = value; key = ParameterKey::BETAP; break;
    case ParameterKey::BD:
    case ParameterKey::BETAD: p.betad = value; key = ParameterKey::BETAD; break;
    case ParameterKey::ALP: p.alp = value; break;
    case ParameterKey::ADD:
      if (index >= 1 && index <= 6) p.add[index - 1] = value;
      break;
    case ParameterKey::BDD:
      if (index >= 1 && index <= 9) p.bdd[index - 1] = value;
      break;
    case ParameterKey::AM: p.am = value; break;
    case ParameterKey::AD: p.ad = value; break;
    case ParameterKey::AQ: p.aq = value; break;
    case ParameterKey::DD: p.dd = value; break;
    case ParameterKey::QQ: p.qq = value; break;
    case ParameterKey::EISOL: p.eisol = value; break;
    case ParameterKey::GSS: p.gss = value; break;
    case ParameterKey::GSP: p.gsp = value; break;
    case ParameterKey::GPP: p.gpp = value; break;
    case ParameterKey::GP2: p.gp2 = value; break;
    case ParameterKey::HSP: p.hsp = value; break;
    case ParameterKey::HPP: p.hpp = value; break;
    case ParameterKey::GUES1: gues(p.gues1); break;
    case ParameterKey::GUES2: gues(p.gues2); break;
    case ParameterKey::GUES3: gues(p.gues3); break;
    case ParameterKey::ZNS: p.zns = value; break;
    case ParameterKey::ZNP: p.znp = value; break;
    case ParameterKey::ZND: p.znd = value; break;
    case ParameterKey::Count: return;
  }
  set.given[z][static_cast<int>(key)] = true;
}

ParameterSet BuiltinParameters(EngineMethod method) {
  ParameterSet set = EmptySet(method);
  for (const ParameterRow& row : BuiltinParameterRows()) {
    std::string head = std::string(row.section) + " ";
    if (!SectionApplies(head, method)) continue;
    if (auto key = FindParameterKey(row.key)) SetParameter(set, *key, row.element, row.index, row.value);
  }
  // The built-in rows leave the derived quantities to DeriveParameters.
  for (auto& g : set.given) g = {};
  DeriveParameters(set);
  return set;
}

ParameterFileResult ReadParameterFile(std::istream& in, ParameterSet& set) {
  ParameterFileResult result;
  result.found = true;
  std::string line;
  long lineNo = 0;
  bool applied = false;  // rows before the first head belong to no section
  while (std::getline(in, line)) {
    ++lineNo;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!line.empty() && (line[0] == 'C' || line[0] == 'c' || line[0] == '*')) continue;
    if (Trim(line).empty()) continue;
    if (line.size() >= 2 && line[0] == '/' && line[1] == '/') {
      const std::string_view head = SectionName(line);
      if (head.find("END") != std::string_view::npos) break;
      applied = SectionApplies(head, set.method);
      continue;
    }
    if (!applied) continue;
    const auto key = FindParameterKey(Columns(line, 1, 6));
    if (!key) continue;  // unknown keys are passed over in silence
    const auto element = ParseFortranInt(Columns(line, 9, 2));
    const auto index = ParseFortranInt(Columns(line, 12, 1));
    const auto value = ParseFortranReal(Columns(line, 14, 40));
    if (!element || !index || !value || *element < 1 || *element > kMaxElement) {
      result.ok = false;
      result.badLine = lineNo;
      result.message = fmt::format(" ERROR! Reading atom parameters from MNDOD.DAT. Line {}", lineNo);
      return result;
    }
    SetParameter(set, *key, static_cast<int>(*element), static_cast<int>(*index), *value);
    ++result.rowsApplied;
  }
  DeriveParameters(set);
  return result;
}

ParameterFileResult ReadParameterFile(const std::string& path, ParameterSet& set) {
  std::ifstream in(path);
  if (!in) return {};
  return ReadParameterFile(in, set);
}

ParameterSet LoadParameters(EngineMethod method, const std::string& path) {
  ParameterSet set = BuiltinParameters(method);
  if (!path.empty()) ReadParameterFile(path, set);
  return set;
}

namespace {

// The additive term AD (bohr) of the dipole of charge separation `dd` (bohr)
// whose one-centre self-interaction reproduces HSP (`hsp`, hartree): a secant
// search, as the methods' papers define it. QuadrupoleAdditive does the same
// for AQ from QQ and HPP.
double DipoleAdditive(double dd, double hsp) {
  double d1 = std::cbrt(hsp / (dd * dd));
  double d2 = d1 + 0.04;
  for (int j = 0; j < 5; ++j) {
    const double h1 = 0.5 * d1 - 0.5 / std::sqrt(4 * dd * dd + 1 / (d1 * d1));
    const double h2 = 0.5 * d2 - 0.5 / std::sqrt(4 * dd * dd + 1 / (d2 * d2));
    if (std::abs(h2 - h1) < 1e-25) break;
    const double d3 = d1 + (d2 - d1) * (hsp - h1) / (h2 - h1);
    d1 = d2;
    d2 = d3;
  }
  return d2;
}

double QuadrupoleAdditive(double qq, double hpp) {
  double q1 = std::pow(16.0 * hpp / (48.0 * std::pow(qq, 4)), 0.2);
  double q2 = q1 + 0.04;
  auto h = [qq](double q) {
    return 0.25 * q - 0.5 / std::sqrt(4 * qq * qq + 1 / (q * q)) + 0.25 / std::sqrt(8 * qq * qq + 1 / (q * q));
  };
  for (int j = 0; j < 5; ++j) {
    const double h1 = h(q1), h2 = h(q2);
    if (std::abs(h2 - h1) < 1e-25) break;
    const double q3 = q1 + (q2 - q1) * (hpp - h1) / (h2 - h1);
    q1 = q2;
    q2 = q3;
  }
  return q2;
}

}  // namespace

void DeriveParameters(ParameterSet& set) {
  const bool dMethod = MethodHasDOrbitals(set.method);
  const double ev = set.Units().ev;
  for (int z = 1; z <= kMaxElement; ++z) {
    ElementParameters& p = set.el[z];
    auto given = [&](ParameterKey k) { return set.IsGiven(z, k); };
    if (!HasParameters(p)) continue;
    if (!given(ParameterKey::HPP)) p.hpp = 0.5 * (p.gpp - p.gp2);
    const Shells sh = ValenceShells(z);
    if (z == 1 || (p.zp <= 0 && p.upp == 0)) {
      // An s-only atom: every multipole is the monopole.
      if (!given(ParameterKey::EISOL)) p.eisol = p.uss * sh.s + p.gss * std::max(sh.s - 1, 0);
      if (!given(ParameterKey::AM)) p.am = p.gss / ev;
      if (!given(ParameterKey::AD)) p.ad = p.am;
      if (!given(ParameterKey::AQ)) p.aq = p.am;
      continue;
    }
    const int k = sh.p;
    const int l = std::min(k, 6 - k);
    const double gssc = std::max(sh.s - 1, 0);
    const double gspc = sh.s * k;
    const double gp2c = (k * (k - 1)) / 2 + 0.5 * (l * (l - 1)) / 2.0;
    const double gppc = -0.5 * (l * (l - 1)) / 2.0;
    const double hspc = -k * sh.s * 0.5;
    const double zp = std::max(0.3, p.zp);
    const double hpp = std::max(0.1, p.hpp);
    const double hsp = std::max(1e-7, p.hsp);
    if (!given(ParameterKey::EISOL))
      p.eisol = p.uss * sh.s + p.upp * sh.p + p.gss * gssc + p.gpp * gppc + p.gsp * gspc + p.gp2 * gp2c +
                hsp * hspc;
    const double qn = ValenceN(z);
    if (!given(ParameterKey::DD))
      p.dd = (2 * qn + 1) * std::pow(4 * p.zs * zp, qn + 0.5) / std::pow(p.zs + zp, 2 * qn + 2) / std::sqrt(3.0);
    if (!given(ParameterKey::QQ)) p.qq = std::sqrt((4 * qn * qn + 6 * qn + 2) / 20.0) / zp;
    if (!given(ParameterKey::AM)) p.am = p.gss / ev;
    if (!given(ParameterKey::AD)) p.ad = DipoleAdditive(p.dd, hsp / ev);
    if (!given(ParameterKey::AQ)) p.aq = QuadrupoleAdditive(p.qq, hpp / ev);
    if (dMethod && OrbitalCount(p, true) == 9) DeriveDOrbitalTerms(z, ValenceN(z), set);
  }
}

void PrintParameterReport(std::ostream& out, const ParameterSet& set, const std::vector<int>& elements) {
  std::vector<int> seen;
  for (int z : elements) {
    if (z < 1 || z > kMaxElement || std::find(seen.begin(), seen.end(), z) != seen.end()) continue;
    seen.push_back(z);
    const ElementParameters& p = set.el[z];
    const std::string tag = fmt::format("{}{})", FmtA(ElementSymbol(z), 2), FmtI(z, 3));
    auto row = [&](const char* name, double v, const char* unit) {
      out << name << tag << FmtF(v, 16, 6) << "  " << unit << '\n';
    };
    if (MethodHasDOrbitals(set.method) && OrbitalCount(p, true) == 9) {
      static const char* const kNames[17] = {"F0SS =", "F0SP =", "F0SD =", "G1SP =", "H1SPPD =", "F0PP =",
                                             "F2PP =", "F0PD =", "F2PD =", "H2SDPP =", "F0DD =", "F2DD =",
                                             "F4DD =", "G2SD =", "H2SDDD =", "G1PD =", "G3PD ="};
      for (int i = 0; i < 17; ++i) out << ' ' << kNames[i] << FmtF(p.slaterCondon[i], 12, 6) << '\n';
      for (int k = 1; k <= 6; ++k) out << " ADD(" << tag << FmtI(k, 2) << FmtF(p.add[k - 1], 12, 6) << '\n';
      for (int k = 1; k <= 9; ++k) out << " BDD(" << tag << FmtI(k, 2) << FmtF(p.bdd[k - 1], 12, 6) << '\n';
    }
    row(" USS  (", p.uss, "EV");
    if (p.upp != 0) row(" UPP  (", p.upp, "EV");
    if (p.udd != 0) row(" UDD  (", p.udd, "EV");
    row(" BETAS(", p.betas, "EV");
    if (p.betap != 0) row(" BETAP(", p.betap, "EV");
    if (p.betad != 0) row(" BETAD(", p.betad, "EV");
    row(" ZS   (", p.zs, "A.U.**-1");
    if (p.zp != 0) row(" ZP   (", p.zp, "A.U.**-1");
    if (p.zd != 0) row(" ZD   (", p.zd, "A.U.**-1");
    row(" ALP  (", p.alp, "1/A");
    row(" EHEAT(", p.eheat, "KCAL/MOL");
    row(" EISOL(", p.eisol, "EV");
    row(" CORE (", p.core, "");
  }
}

}  // namespace quintor::engine

namespace quintor::engine {

bool ReliableParameters(EngineMethod method, int z) {
  // Elements whose one molecule differs from MOPAC 22 by more than 0.05
  // kcal/mol under the method (test_engine_elements holds this list): the
  // noble gases (MOPAC treats their cores in a way of its own, 0.1 kcal/mol
  // off for He and thousands for Ne-Xe), and cadmium in MNDO, which MOPAC 22
  // does not parametrise.
  struct Refused {
    EngineMethod method;
    std::vector<int> elements;
  };
  static const Refused kRefused[] = {
      {EngineMethod::MNDO, {2, 10, 18, 36, 48, 54}},
      {EngineMethod::AM1, {2, 10, 18, 36, 54}},
      {EngineMethod::PM3, {2, 10, 18, 36, 54}},
      {EngineMethod::MNDOD, {2, 10}},
      {EngineMethod::PM3D, {2, 10, 18, 36, 54}},
  };
  for (const Refused& r : kRefused)
    if (r.method == method)
      for (int e : r.elements)
        if (e == z) return false;
  return true;
}

}  // namespace quintor::engine

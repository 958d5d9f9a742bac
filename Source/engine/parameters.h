// Parameters of the NDDO methods: the tables by element, the parameter file
// "MNDOD.DAT" that can change them, and the quantities derived from them.
#pragma once

#include <array>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "model/elements.h"

namespace quintor::engine {

// The methods in the order of the menu (1 to 5).
enum class EngineMethod { MNDO = 1, AM1 = 2, PM3 = 3, MNDOD = 4, PM3D = 5 };

// The method of a menu number (1 MNDO ... 5 PM3d); PM3 for any other number.
EngineMethod MethodOfMenu(int menu);

// The engine's own method index, which the parameter file's sections use:
// 0 MNDO/d, 1 MNDO, 2 PM3d, 3 AM1, 4 PM3.
int MethodIndex(EngineMethod method);
// "MNDO", "AM1", "PM3", "MNDO+dAO", "PM3d".
const char* MethodName(EngineMethod method);
bool MethodHasDOrbitals(EngineMethod method);

// The physical constants of a method's integrals and heats: those of MOPAC
// 22, which are CODATA 2018 except for MNDO/d (older values, 27.21 eV per
// hartree, 0.529167 A per bohr, 23.061 kcal/mol per eV).
struct EngineUnits {
  double bohr;      // angstrom per bohr
  double ev;        // eV per hartree
  double evToKcal;  // kcal/mol per eV
};
EngineUnits UnitsOf(EngineMethod method);

constexpr int kMaxElement = 86;

// Everything the engine knows of one element for one method. Energies in eV,
// exponents in 1/bohr, ALP in 1/Angstrom, EHEAT in kcal/mol; the derived
// charge separations DD, QQ and additive terms AM, AD, AQ are in atomic units.
struct ElementParameters {
  double core = 0;   // CORE: charge of the atomic core
  double eheat = 0;  // EHEAT
  double uss = 0, upp = 0, udd = 0;
  double zs = 0, zp = 0, zd = 0;
  double betas = 0, betap = 0, betad = 0;
  double alp = 0;
  double gss = 0, gsp = 0, gpp = 0, gp2 = 0, hsp = 0, hpp = 0;
  std::array<double, 4> gues1{}, gues2{}, gues3{};  // Gaussian core terms (AM1, PM3)
  // Derived (or given).
  double dd = 0, qq = 0, am = 0, ad = 0, aq = 0, eisol = 0;
  // d-orbital extension.
  double zns = 0, znp = 0, znd = 0;     // exponents of the one-centre integrals
  std::array<double, 6> add{};          // ADD(k): charge separations sp, pp, sd, pd, dd (k = 2..6)
  std::array<double, 9> bdd{};          // BDD(k): additive terms (k = 1..9, 9 for the core)
  // Slater-Condon parameters, eV.
  double f0dd = 0, f2dd = 0, f4dd = 0, f0sd = 0, g2sd = 0, f0pd = 0, f2pd = 0, g1pd = 0, g3pd = 0;
  // The 17 Slater-Condon parameters of the report, in its order (F0SS ... G3PD).
  std::array<double, 17> slaterCondon{};
  // One-centre two-electron integrals over s, p, d (the 52 distinct ones
  // of the spd basis beyond the sp set), filled for elements with d orbitals.
  std::array<double, 53> repd{};
};

// Principal quantum number of the valence s and p shells, and of the d shell.
int ValenceN(int z);
int ValenceNd(int z);

// Number of atomic orbitals of an element in a method: 1, 4 or 9.
int OrbitalCount(const ElementParameters& p, bool dOrbitals);
bool HasParameters(const ElementParameters& p);
// False for an element whose built-in parameters under the method do not
// give MOPAC 22's heats (the engine refuses it rather than print a wrong heat).
bool ReliableParameters(EngineMethod method, int z);

// The keys of the file in the order they are searched for.
enum class ParameterKey {
  CORE, EHEAT, USS, UPP, UDD, ZS, ZP, ZD, BS, BP, BD, BETAS, BETAP, BETAD, ALP, ADD, BDD,
  AM, AD, AQ, DD, QQ, EISOL, GSS, GSP, GPP, GP2, HSP, HPP, GUES1, GUES2, GUES3, ZNS, ZNP, ZND,
  Count
};

// Finds the key in the 6 columns of a data row by substring search in the
// fixed order (CORE first, ZND last). Keys match as they stand: upper case.
std::optional<ParameterKey> FindParameterKey(std::string_view keyField);

// One data row of the file, or of the built-in tables.
struct ParameterRow {
  const char* section;  // "COMMON", "MNDO", "AM1", "PM3", "MNDOD"
  const char* key;
  int element;
  int index;  // second index (GUES1..3, ADD, BDD), 0 otherwise
  double value;
};
const std::vector<ParameterRow>& BuiltinParameterRows();

struct ParameterSet {
  EngineMethod method = EngineMethod::PM3;
  std::array<ElementParameters, kMaxElement + 1> el{};  // index by nuclear number
  // given[Z][key]: the value came from a row, so the defaults leave it alone.
  std::array<std::array<bool, static_cast<int>(ParameterKey::Count)>, kMaxElement + 1> given{};
  bool IsGiven(int z, ParameterKey k) const { return given[z][static_cast<int>(k)]; }
  EngineUnits Units() const { return UnitsOf(method); }
};

// Does a section head ("//PM3 ", "//COMMON", ...) apply for the method?
bool SectionApplies(std::string_view headText, EngineMethod method);

// Stores one value under its key for element z (second index for GUES, ADD, BDD).
void SetParameter(ParameterSet& set, ParameterKey key, int z, int index, double value);

// The built-in tables of the method, with the derived quantities.
ParameterSet BuiltinParameters(EngineMethod method);

// Outcome of reading a parameter file.
struct ParameterFileResult {
  bool found = false;   // the file was there (a missing file is no error)
  bool ok = true;       // false after a bad line
  long badLine = 0;     // its line number
  int rowsApplied = 0;
  std::string message;  // " ERROR! Reading atom parameters from MNDOD.DAT. Line " ...
};

// Reads rows of the file over `set` (which holds the built-in values) for
// set.method, then recomputes the derived quantities.
ParameterFileResult ReadParameterFile(std::istream& in, ParameterSet& set);
ParameterFileResult ReadParameterFile(const std::string& path, ParameterSet& set);

// The built-in values changed by the file at `path` when it exists.
ParameterSet LoadParameters(EngineMethod method, const std::string& path);

// Derived quantities: HPP where not given, EISOL, DD, QQ, AM, AD, AQ and, for
// elements with d orbitals in a d method, the Slater-Condon parameters and
// the d multipoles.
void DeriveParameters(ParameterSet& set);

// The report of the parameters of the elements in `elements`.
void PrintParameterReport(std::ostream& out, const ParameterSet& set, const std::vector<int>& elements);


}  // namespace quintor::engine

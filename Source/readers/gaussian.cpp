// Reader of Gaussian 94/98/03/09 logs (and Gaussian 16, xtb's g98.out).
//
// The reader is line-driven: the read pass hands it every line, and it pulls
// further lines itself only inside a block (a geometry, a mode block, the
// high-accuracy summary). Every anchor is a plain substring search; a cheap
// scan of the line for the characters the anchors carry decides which of the
// searches can hit at all, so that most lines of a long log cost one pass
// over their characters (see FindAnchors).
#include <algorithm>
#include <cctype>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "io/fortran_io.h"
#include "readers/anchor_scan.h"
#include "readers/broken_modes.h"
#include "readers/elements.h"
#include "readers/readers.h"

namespace quintor {

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t'; }


// Anchors of the line dispatch. Each one holds a key character (":", "=",
// "F", "*" or "b"); the line is scanned once for these, and at each one the
// text around it is compared with the anchors that carry it there. An anchor
// stands in the line exactly when it stands around one of its key characters,
// so this is the plain substring search, done in one pass.
enum Anchor : unsigned {
  kMultiplicity = 1u << 0,   // " Multiplicity ="
  kHeading = 1u << 1,        // the orientation heading in force
  kScfDone = 1u << 2,        // "SCF Done:"
  kMp2 = 1u << 3,            // "EUMP2 =" or "EUMP2="
  kMaxForce = 1u << 4,       // "Maximum Force"
  kRmsForce = 1u << 5,       // "RMS     Force"
  kAtomicNumber = 1u << 6,   // " has atomic number"
  kHarmonic = 1u << 7,       // "armonic frequencies (cm**-1),"
  kEnthalpy = 1u << 8,       // " Enthalpy="
  kFreeEnergy = 1u << 9,     // " Free Energy="
  kNIter = 1u << 10,         // "NIter=": the energy line of a semi-empirical SCF
  kFieldStep = 1u << 11,     // "field step=": derivatives by finite differences
  kOtherHeading = 1u << 12,  // an orientation heading not in force
  kDoubleHybrid = 1u << 13,  // " E2(B2PLYP) = ... E(B2PLYP) = ...": a double hybrid's total
  kSumH = 1u << 14,          // "Sum of electronic and thermal Enthalpies="
  kSumG = 1u << 15,          // "Sum of electronic and thermal Free Energies="
};

constexpr KeyChars kKeys(":=F*b");
enum KeyChar : int { kColon = 1, kEqual, kCapitalF, kStar, kSmallB };


// The anchors around the character at position p, added to `hits`.
// The character before the key picks the anchors worth comparing: most key
// characters of a log (the "=" of every SCF cycle) stand in no anchor.
inline void AnchorsAt(std::string_view line, size_t p, int key, std::string_view heading, unsigned& hits) {
  const char before = p > 0 ? line[p - 1] : '\0';
  switch (key) {
    case kColon:
      if (before == 'n') {
        if (AroundText(line, p, heading, heading.size() - 1)) hits |= kHeading;
        if (Around(line, p, "Input orientation:", 17) || Around(line, p, "Z-Matrix orientation:", 20))
          hits |= kOtherHeading;  // the heading in force is told apart by kHeading
      } else if (before == 'e' && Around(line, p, "SCF Done:", 8)) {
        hits |= kScfDone;
      }
      break;
    case kEqual:
      switch (before) {
        case ' ':
          if (Around(line, p, " Multiplicity =", 14)) hits |= kMultiplicity;
          if (Around(line, p, "EUMP2 =", 6)) hits |= kMp2;
          if (line.compare(0, 4, " E2(") == 0) hits |= kDoubleHybrid;
          break;
        case 's':
          if (Around(line, p, "thermal Enthalpies=", 18)) hits |= kSumH;
          if (Around(line, p, "thermal Free Energies=", 21)) hits |= kSumG;
          break;
        case '2':
          if (Around(line, p, "EUMP2=", 5)) hits |= kMp2;
          break;
        case 'r':
          if (Around(line, p, "NIter=", 5)) hits |= kNIter;
          break;
        case 'p':
          if (Around(line, p, "field step=", 10)) hits |= kFieldStep;
          break;
        case 'y':
          if (Around(line, p, " Enthalpy=", 9)) hits |= kEnthalpy;
          if (Around(line, p, " Free Energy=", 12)) hits |= kFreeEnergy;
          break;
        default:
          break;
      }
      break;
    case kCapitalF:
      if (Around(line, p, "Maximum Force", 8)) hits |= kMaxForce;
      if (Around(line, p, "RMS     Force", 8)) hits |= kRmsForce;
      break;
    case kStar:
      if (Around(line, p, "armonic frequencies (cm**-1),", 23)) hits |= kHarmonic;
      break;
    case kSmallB:
      if (Around(line, p, " has atomic number", 15)) hits |= kAtomicNumber;
      break;
  }
}

// The anchors that stand in the line; `heading` ends in ":".
unsigned FindAnchors(std::string_view line, std::string_view heading) {
  unsigned hits = 0;
  ForEachKey(line, kKeys, [&](size_t p, int key) { AnchorsAt(line, p, key, heading, hits); });
  return hits;
}

// One thermochemistry summary of a high-accuracy method. Its rows hold two
// "label= value" pairs; the versions place them at different columns, so
// each value is the number behind its "=".
struct SummaryKind {
  std::string_view name;   // "G3", "G4", "CBS"
  int rule;                 // length of the rule of asterisks
};
constexpr SummaryKind kG3{"G3", 78};
constexpr SummaryKind kG4{"G4", 78};
constexpr SummaryKind kCbs{"CBS", 76};

struct GaussianReader {
  Session& s;
  LineReader& in;

  // Columns that depend on the version of the program.
  int zCol = 15;        // nuclear number, 2 columns
  int xyzCol = 35;      // X, Y, Z, 12 columns each
  int massCol = 39;     // atomic mass, 10 columns
  int dispSkip = 10;    // columns before the displacements of a mode row

  // Masses read: the first block of the file stands; -1 after asterisks or
  // NaN, and then no mass of the file is believed.
  int massCount = 0;
  // Translations and rotations before the first vibration: 6, 5 if linear.
  int modeBase = 0;

  // Values of the high-accuracy summary. They are kept from one summary to
  // the next, so that a summary with rows missing shows what stood before.
  double temperature = 0.0, pressure = 0.0, zpe = 0.0, zpeSecond = 0.0;
  double e0 = 0.0, eU = 0.0, eH = 0.0, eG = 0.0;
  std::string compositeName;  // "CBS-QB3", "G4", as the summary names it

  // The orientation heading in force: standard, input (/I) or Z-matrix (/Z).
  std::string_view heading;
  // Headings seen that are not in force: where the geometries stand when
  // the heading in force never comes (a job run with nosymm).
  bool inputSeen = false, zMatrixSeen = false;
  // The high-accuracy summaries go to the MainLog once, on the first pass.
  bool secondPass = false;

  // Derivatives by finite differences (numerical Raman activities and
  // polarisabilities): the SCFs of the displaced points follow the first one
  // of the step without a new geometry and must not replace its energy.
  bool finiteDifferences = false;
  int scfSet = -2;       // the set of the last "SCF Done"
  int scfInSet = 0;      // and how many that set has had

  // The last energy met and its method ("SCF", "MP2", "B2PLYP"): at a
  // thermochemistry section it is the energy Gaussian adds its corrections
  // to, and it is kept there; later energies (the steps of a composite job)
  // do not replace it.
  double lastEnergy = 0.0;
  std::string lastMethod;
  bool lastGiven = false;
  bool thermoSeen = false;

  void Energy(double e, std::string_view method) {
    lastEnergy = e, lastMethod = method, lastGiven = true;
  }

  GaussianReader(Session& session, LineReader& reader, bool again = false)
      : s(session), in(reader), secondPass(again) {
    heading = s.opt.orientation == Orientation::Input   ? "Input orientation:"
              : s.opt.orientation == Orientation::ZMatrix ? "Z-Matrix orientation:"
                                           : "Standard orientation:";
    switch (s.opt.formatCode) {
      case FormatCode::Gaussian94:  // Gaussian 94 had no atomic-type column
        xyzCol = 24;
        break;
      case FormatCode::Gaussian09:
        zCol = 17;
        massCol = 42;
        dispSkip = 12;
        break;
      default:
        break;
    }
  }

  bool NoEnergies() const { return s.opt.noEnergies || !s.opt.readEnergies; }

  // Fixed-column fields of the current line; one that can not be read stops the run.
  double Real(std::string_view line, int first, int width, int decimals, const char* field) {
    return FieldReal(in, line, first, width, decimals, field);
  }
  long long Int(std::string_view line, int first, int width, const char* field) {
    return FieldInt(in, line, first, width, field);
  }
  // The width of a field of a mode row. Later revisions of Gaussian 09 and
  // Gaussian 16 print these rows one column further right, so a number that
  // runs on past the end of its field is read to its last digit.
  static int RowWidth(std::string_view line, int first) {
    int width = 10;
    while (static_cast<size_t>(first - 1 + width) < line.size() && !IsBlank(line[first - 1 + width])) ++width;
    return width;
  }

  void operator()(std::string_view line) {
    const unsigned hits = FindAnchors(line, heading);
    if (hits == 0) return;

    if ((hits & kMultiplicity) && s.opt.multiplicity == -1)
      s.opt.multiplicity = static_cast<int>(Int(line, 28, 2, "multiplicity"));
    if ((hits & kMultiplicity) && Contains(line, "Charge =")) Charge(line);
    if (hits & kOtherHeading) (Contains(line, "Input orientation:") ? inputSeen : zMatrixSeen) = true;
    if (hits & kFieldStep) finiteDifferences = true;
    if (hits & kHeading) {
      ReadGeometry(line);
      return;  // the block has read past this line
    }
    if (hits & kScfDone) ScfDone(line);
    if ((hits & kDoubleHybrid) && !DisplacedPoint()) DoubleHybrid(line);
    if (hits & (kSumH | kSumG)) GaussianSum(line, (hits & kSumH) != 0);
    if ((hits & kNIter) && Contains(line, " Energy=")) SemiEmpiricalEnergy(line);
    if ((hits & kMp2) && !NoEnergies() && !DisplacedPoint()) Mp2Energy(line);
    if ((hits & kMaxForce) && !NoEnergies()) s.Set(s.iCyc).gmax = ForceNorm(line, "Maximum Force");
    if ((hits & kRmsForce) && !NoEnergies()) s.Set(s.iCyc).grms = ForceNorm(line, "RMS Force");
    if ((hits & kAtomicNumber) && massCount >= 0 && massCount < s.nAtoms && Contains(line, "and mass")) Mass(line);
    if (hits & kHarmonic) {
      ReadModes();
      return;
    }
    if ((hits & kEnthalpy) && (hits & kFreeEnergy) && !secondPass) {
      if (Contains(line, "G3")) return SummaryOrWarn(kG3);
      if (Contains(line, "G4")) return SummaryOrWarn(kG4);
      if (Contains(line, "CBS")) return SummaryOrWarn(kCbs);
    }
  }

  // " Charge =  0 Multiplicity = 1": the charge, for the results a script reads.
  void Charge(std::string_view line) {
    const auto items = FreeFormItems(line.substr(line.find("Charge =") + 8));
    if (items.empty()) return;
    if (auto v = ReadFreeInt(items.front(), PlaceIn(in, "charge"))) {
      s.logEnergies.charge = static_cast<int>(*v);
      s.logEnergies.chargeGiven = true;
    }
  }

  // ---- Energies and gradients ------------------------------------------------

  // Whether the energies now met belong to a displaced point of a finite-
  // difference job rather than to the geometry of the step.
  bool DisplacedPoint() const { return finiteDifferences && scfSet == s.iCyc && scfInSet > 1; }

  void ScfDone(std::string_view line) {
    if (scfSet != s.iCyc) scfSet = s.iCyc, scfInSet = 0;
    ++scfInSet;
    if (DisplacedPoint()) return;
    CoordSet& set = s.Set(s.iCyc);
    if (!NoEnergies()) {
      if (Contains(line, "SCF Done:  E(RHF) =")) set.energy = Real(line, 22, 17, 0, "SCF energy");
      if (Contains(line, "SCF Done:  E(UHF) =")) set.energy = Real(line, 21, 16, 0, "SCF energy");
      if (Contains(line, "SCF Done:  E(RB+HF-LYP)")) set.energy = Real(line, 28, 17, 0, "SCF energy");
    }
    // Any method: the number between the "=" (or the ")") and "A.U." (or
    // "a.u.", as a quadratically convergent SCF ends). This one is taken
    // also under /NOE.
    size_t au = line.find("A.U.");
    if (au == std::string_view::npos) au = line.find("a.u.");
    if (au == std::string_view::npos) return;
    size_t from = line.find('=');
    if (from == std::string_view::npos) from = line.find(')');
    if (from == std::string_view::npos || from >= au) return;
    std::string_view text = line.substr(from + 1, au - from - 1);
    if (auto v = ReadFreeReal(text, PlaceIn(in, "SCF energy"))) {
      set.energy = *v;
      Energy(*v, "SCF");
    }
  }

  // " E2(B2PLYP) =    -0.32D-01 E(B2PLYP) =    -0.40D+02": the total of a
  // double hybrid, for the results a script reads (the MainLog keeps the
  // SCF part).
  void DoubleHybrid(std::string_view line) {
    const size_t open = line.find(" E(", 4);
    const size_t close = open == std::string_view::npos ? open : line.find(')', open);
    const size_t eq = close == std::string_view::npos ? close : line.find('=', close);
    if (eq == std::string_view::npos) return;
    const auto items = FreeFormItems(line.substr(eq + 1));
    if (items.empty()) return;
    if (auto v = ReadFreeReal(items.front(), PlaceIn(in, "double-hybrid energy")))
      Energy(*v, line.substr(open + 3, close - open - 3));
  }

  // Gaussian's own E+H and E+G; the energy it added them to is the one of
  // the evaluation.
  void GaussianSum(std::string_view line, bool enthalpy) {
    const auto items = FreeFormItems(line.substr(line.find('=') + 1));
    if (items.empty()) return;
    const auto v = ReadFreeReal(items.front(), PlaceIn(in, "sum of electronic and thermal energies"));
    if (!v) return;
    LogEnergies& le = s.logEnergies;
    (enthalpy ? le.gaussianH : le.gaussianG) = *v;
    le.gaussianSums = true;
    thermoSeen = true;
    le.energy = lastEnergy, le.method = lastMethod, le.given = lastGiven;
  }

  // " Energy=   -0.0123 NIter=  12.": the SCF energy of a semi-empirical method.
  void SemiEmpiricalEnergy(std::string_view line) {
    if (scfSet != s.iCyc) scfSet = s.iCyc, scfInSet = 0;
    ++scfInSet;
    if (NoEnergies() || DisplacedPoint()) return;
    const size_t from = line.find(" Energy=") + 8, to = line.find("NIter=");
    if (to == std::string_view::npos || to <= from) return;
    if (auto v = ReadFreeReal(line.substr(from, to - from), PlaceIn(in, "semi-empirical energy"))) {
      s.Set(s.iCyc).energy = *v;
      Energy(*v, "SCF");
    }
  }

  // "EUMP2 =" stands in fixed columns; some versions print "EUMP2=" with the
  // number right behind it.
  void Mp2Energy(std::string_view line) {
    if (Contains(line, "EUMP2 =")) {
      s.Set(s.iCyc).energy = Real(line, 36, 30, 0, "EUMP2 energy");
      Energy(s.Set(s.iCyc).energy, "MP2");
      return;
    }
    const auto items = FreeFormItems(line.substr(line.find("EUMP2=") + 6));
    if (items.empty()) return;
    if (auto v = ReadFreeReal(items.front(), PlaceIn(in, "EUMP2 energy"))) {
      s.Set(s.iCyc).energy = *v;
      Energy(*v, "MP2");
    }
  }

  double ForceNorm(std::string_view line, const char* field) {
    if (Contains(line, "********") || Contains(line, "NaN")) return 0.0;
    return Real(line, 22, 13, 0, field);
  }

  // ---- Masses -------------------------------------------------------------------

  void Mass(std::string_view line) {
    // Asterisks are looked for in columns 39-48, and also in the mass field
    // itself, which Gaussian 09 prints three columns further right.
    if (Columns(line, 39, 10) == "**********" || Contains(Columns(line, massCol, 10), "*") || Contains(line, "NaN")) {
      massCount = -1;
      s.inputMass.clear();  // the table gives every mass
      return;
    }
    double m = Real(line, massCol, 10, 0, "atomic mass");
    ++massCount;
    s.inputMass.resize(static_cast<size_t>(massCount));
    s.inputMass[static_cast<size_t>(massCount - 1)] = m;
  }

  // ---- Geometry block ---------------------------------------------------------------

  void ReadGeometry(std::string_view headingLine) {
    StartGeometry(s);
    s.log.Line();
    s.log.Line(" Step =" + FmtI(s.iCyc, 5));
    s.log.Line(TrimRight(headingLine));
    std::string_view line;
    for (int k = 0; k < 4; ++k) {
      if (!in.Next(line)) return;
      s.log.Line(TrimRight(line));
    }
    while (in.Next(line)) {
      s.log.Line(TrimRight(line));
      if (Contains(line, "-----") || Contains(line, ".....") || Trim(Columns(line, 1, 15)).empty()) break;
      int z = static_cast<int>(Int(line, zCol, 2, "nuclear number"));
      if (z == -2) continue;  // a translation vector of a periodic (PBC) system: no atom
      if (z == -1) z = 99;    // a dummy atom
      Vec3 r;
      for (int k = 0; k < 3; ++k)
        r[k] = Real(line, xyzCol + 12 * k, 12, 6, "coordinate") * constants::AngstromToBohr;
      AddAtom(s, z, r);
    }
    if (s.iCyc == 0 && s.nAtoms > 0) s.Set(-1) = s.Set(0);  // the starting geometry
  }

  // ---- Mode block --------------------------------------------------------------------

  // The high-precision block (HPModes) comes before the ordinary one, which
  // carries the same modes; its rows are passed over.
  static bool IsHighPrecisionRow(std::string_view line) {
    return Contains(line, "Frequencies ---") || Contains(line, "Coord Atom Element:");
  }

  // The mode numbers that head a column block ("   4   5   6"): their count,
  // 0 when the line is something else.
  static int ModeNumbers(std::string_view line) {
    const auto items = FreeFormItems(line);
    if (items.empty() || items.size() > 5) return 0;
    for (std::string_view w : items)
      if (!std::all_of(w.begin(), w.end(), [](char c) { return c >= '0' && c <= '9'; })) return 0;
    return static_cast<int>(items.size());
  }

  // The values of a labelled row ("Frequencies --  -1234.5678-10234.5678"),
  // one per column. Values that touch are parted at a sign that follows a
  // digit; a row that gives another count of numbers is read by columns.
  static std::vector<std::string_view> RowItems(std::string_view line) {
    std::vector<std::string_view> out;
    const size_t dashes = line.find("--");
    if (dashes == std::string_view::npos) return out;
    for (std::string_view w : FreeFormItems(line.substr(dashes + 2))) {
      size_t from = 0;
      for (size_t k = 1; k < w.size(); ++k) {
        const char before = w[k - 1];
        if (w[k] == '-' && (std::isdigit(static_cast<unsigned char>(before)) || before == '.')) {
          out.push_back(w.substr(from, k - from));
          from = k;
        }
      }
      out.push_back(w.substr(from));
    }
    return out;
  }

  // IR intensities and Raman activities, each in its own field, whatever
  // /RAMAN puts into the intensity.
  void Spectra(std::string_view line, std::vector<VibMode>& vib, size_t first, int cols) {
    const bool ir = Contains(line, "IR Inten");
    const auto items = RowItems(line);
    if (static_cast<int>(items.size()) != cols) return;
    for (int k = 0; k < cols; ++k) {
      const std::string_view text = items[static_cast<size_t>(k)];
      if (Contains(text, "*") || Contains(text, "NaN") || Contains(text, "nan")) continue;
      const auto v = ReadFreeReal(text, PlaceIn(in, ir ? "IR intensity" : "Raman activity"));
      if (!v) continue;
      VibMode& m = vib[first + static_cast<size_t>(k)];
      (ir ? m.ir : m.raman) = *v;
      (ir ? m.irGiven : m.ramanGiven) = true;
    }
  }

  double RowValue(std::string_view line, const std::vector<std::string_view>& items, int cols, int k,
                  int mode, const char* name, bool frequency) {
    const int first = 17 + 23 * k, width = RowWidth(line, first);
    if (static_cast<int>(items.size()) == cols) {
      const std::string_view text = items[static_cast<size_t>(k)];
      const bool filler = Contains(text, "*") || Contains(text, "NaN") || Contains(text, "nan");
      if (!filler || frequency) {
        if (auto v = ReadFreeReal(text, PlaceIn(in, name))) return *v;
        return 0.0;
      }
    }
    if (frequency) return Real(line, first, width, 4, name);  // without a frequency nothing sound is left
    return ModeValue(s, in, line, first, width, 4, mode, name);
  }

  // The vibrations as the log prints them: the count comes from the column
  // blocks themselves (a near-linear molecule has 3N-6 of them, a projected
  // job one less), and the reader stops at the first line that heads no
  // further block. A block that can not be read leaves the modes an earlier
  // block gave, with one warning.
  void ReadModes() {
    if (!s.opt.readFrequencies || s.nAtoms == 0) return;  // no geometry yet: a second pass may read them
    const long at = in.LineNumber();
    std::string after;
    try {
      std::vector<VibMode> vib;
      if (!ReadModeBlocks(vib, after)) return;  // the high-precision block: the ordinary one follows
      const int total = 3 * s.nAtoms;
      const int count = static_cast<int>(vib.size());
      if (count == 0 || count > total) throw FatalReadError(PlaceIn(in, "mode count"), "");
      // Translations and rotations first: 5 when the log prints 3N-5
      // vibrations (linear), else 6; a projected job (an IRC point) prints
      // fewer, and its last slots stay empty and unused.
      modeBase = count >= total - 5 ? total - count : 6;
      std::vector<VibMode> modes(static_cast<size_t>(total));
      for (auto& m : modes) {
        m.disp.assign(static_cast<size_t>(s.nAtoms), Vec3{0.0, 0.0, 0.0});
        m.given = false;
      }
      for (size_t k = 0; k < vib.size(); ++k) modes[static_cast<size_t>(modeBase) + k] = std::move(vib[k]);
      s.modes = std::move(modes);
      brokenModes.PassOver(s.log);
    } catch (const FatalReadError& e) {
      brokenModes.Keep(e, at, s.log);
      Cancel();
    }
    if (!after.empty()) (*this)(after);
  }

  // A mode block that could not be read, kept until a later one replaces it.
  BrokenModes brokenModes;

  // Reads the column blocks into `vib`; false for a high-precision block.
  // `after` is the line behind the last block, which heads no further block:
  // the pass has not seen it yet.
  bool ReadModeBlocks(std::vector<VibMode>& vib, std::string& after) {
    const size_t un = static_cast<size_t>(s.nAtoms);
    std::string_view line;
    int cols = 0;
    // The heading's further lines, then the first mode numbers.
    for (int k = 0; k < 6 && cols == 0; ++k) {
      if (!in.Next(line)) throw FatalReadError(PlaceIn(in, "mode numbers"), "end of file");
      cols = ModeNumbers(line);
    }
    if (cols == 0) throw FatalReadError(PlaceIn(in, "mode numbers"), line);
    while (cols > 0) {
      const size_t first = vib.size();
      vib.resize(first + static_cast<size_t>(cols));
      for (int k = 0; k < cols; ++k) {
        VibMode& m = vib[first + static_cast<size_t>(k)];
        m.disp.assign(un, Vec3{0.0, 0.0, 0.0});
        m.given = false;  // until its frequency is read
      }
      bool atomHeading = false;
      for (int rows = 0; rows < 20 && in.Next(line); ++rows) {
        line = line.substr(0, 120);
        if (Contains(line, "Atom ") && Contains(line, " AN ")) {
          atomHeading = true;
          break;
        }
        if (IsHighPrecisionRow(line)) return false;
        if (rows == 0 && !Contains(line, "--")) {
          const auto labels = FreeFormItems(line);  // the symmetries of the modes
          if (static_cast<int>(labels.size()) == cols)
            for (int k = 0; k < cols; ++k) vib[first + static_cast<size_t>(k)].symmetry = labels[static_cast<size_t>(k)];
          continue;
        }
        if (Contains(line, "IR Inten") || Contains(line, "Raman Activ")) Spectra(line, vib, first, cols);
        double VibMode::*field = nullptr;
        const char* name = nullptr;
        if (Contains(line, "Freq")) field = &VibMode::freq, name = "frequency";
        else if (Contains(line, "Red.mass") || Contains(line, "Red. mass")) field = &VibMode::redMass, name = "reduced mass";
        else if (Contains(line, "Frc cons")) field = &VibMode::forceConst, name = "force constant";
        else if (s.opt.raman ? Contains(line, "Raman Ac") : Contains(line, "IR Inten"))
          field = &VibMode::intensity, name = "intensity";
        if (!field) continue;
        const auto items = RowItems(line);
        for (int k = 0; k < cols; ++k) {
          VibMode& m = vib[first + static_cast<size_t>(k)];
          const int mode = static_cast<int>(first) + k + 1;
          if (field == &VibMode::freq) {
            const int at = 17 + 23 * k;
            m.given = static_cast<int>(items.size()) > k || !Trim(Columns(line, at, RowWidth(line, at))).empty();
            m.freq = RowValue(line, items, cols, k, mode, name, true);
          } else {
            m.*field = RowValue(line, items, cols, k, mode, name, false);
          }
        }
      }
      if (!atomHeading) throw FatalReadError(PlaceIn(in, "displacement heading"), line);
      for (size_t a = 0; a < un; ++a) {
        if (!in.Next(line)) throw FatalReadError(PlaceIn(in, "displacement"), "end of file");
        for (int k = 0; k < cols; ++k) {
          Vec3& d = vib[first + static_cast<size_t>(k)].disp[a];
          for (int j = 0; j < 3; ++j) d[j] = Real(line, dispSkip + 1 + 23 * k + 7 * j, 7, 2, "displacement");
        }
      }
      // The next block's mode numbers, or the end of the section.
      if (!in.Next(line)) break;
      cols = ModeNumbers(line);
      if (cols == 0) after = line;
    }
    return true;
  }

  void Cancel() {
    modeBase = 0;
    s.modes.clear();
  }

  // Without a thermochemistry section the last energy of the log is E.
  void TakeFinalEnergy() {
    if (thermoSeen) return;
    LogEnergies& le = s.logEnergies;
    le.energy = lastEnergy, le.method = lastMethod, le.given = lastGiven;
  }

  // ---- High-accuracy thermochemistry summary ---------------------------------------

  // A summary that can not be read: one warning, and the run goes on with
  // the energies of the log.
  void SummaryOrWarn(const SummaryKind& kind) {
    const long at = in.LineNumber();
    try {
      Summary(kind);
    } catch (const FatalReadError& e) {
      s.log.EndLine();
      s.log.Line(" WARNING! The " + std::string(kind.name) + " summary at line" + FmtI(at, 9) +
                 " can not be read (" + std::string(Trim(e.what())) + "); it is left out");
      in.Rewind();  // the pass goes on behind the summary's last line, never back into it
      in.Skip(static_cast<int>(at));
    }
  }

  void Summary(const SummaryKind& kind) {
    const std::string rule(static_cast<size_t>(kind.rule), '*');
    s.log.Line();
    s.log.Line();
    s.log.Line(rule);
    s.log.Line(" ");
    s.log.Line("         High-accuracy thermochemistry calculation results found ");
    s.log.Line(FmtX(36) + std::string(kind.name));
    s.log.Line(rule);
    s.log.Line();

    // Back ten lines: the rows of the summary stand above this one.
    long back = std::max(0L, in.LineNumber() - 10);
    in.Rewind();
    in.Skip(static_cast<int>(back));
    int state = 1;
    std::string_view raw;
    while (state < 3 && in.Next(raw)) {
      std::string_view line = raw.substr(0, 80);
      auto two = [&](double& a, double& b, const char* field) {
        const size_t eq1 = line.find('=');
        const size_t eq2 = eq1 == std::string_view::npos ? eq1 : line.find('=', eq1 + 1);
        if (eq2 == std::string_view::npos) throw FatalReadError(PlaceIn(in, field), line);
        const auto first = FreeFormItems(line.substr(eq1 + 1, eq2 - eq1 - 1));
        const auto second = FreeFormItems(line.substr(eq2 + 1));
        if (first.empty() || second.empty()) throw FatalReadError(PlaceIn(in, field), line);
        // The first pair's value is the first item; its second item is the next label.
        if (auto v = ReadFreeReal(first.front(), PlaceIn(in, field))) a = *v;
        if (auto v = ReadFreeReal(second.front(), PlaceIn(in, field))) b = *v;
      };
      if (Contains(line, "Temperature=")) {
        two(temperature, pressure, "temperature and pressure");
        state = 2;
      }
      if (Contains(line, "E(ZPE)=")) two(zpe, zpeSecond, "zero-point energy");
      if (Contains(line, "(0 K)=")) two(e0, eU, "energy at 0 K");
      if (Contains(line, " Enthalpy=")) {
        two(eH, eG, "enthalpy and free energy");
        const auto words = FreeFormItems(line);
        if (!words.empty()) compositeName = words.front();
        state = 3;
      } else if (state == 2) {
        s.log.Line(TrimRight(raw));
      }
    }

    s.electronicEnergy = e0 - zpe;
    s.electronicEnergyFromSummary = s.electronicEnergy != 0.0;
    LogEnergies& le = s.logEnergies;
    le.composite = compositeName.empty() ? std::string(kind.name) : compositeName;
    le.compositeE0 = e0, le.compositeH = eH, le.compositeG = eG;

    const std::string_view n = kind.name;
    auto row = [&](const std::string& label, double v) { s.log.Line(label + FmtF(v, 20, 6)); };
    row(" T, K                    =", temperature);
    row(" P, atm                  =", pressure);
    if (n == "CBS") {
      row(" E     (CBS(0K)-E(ZPE) ) =", e0 - zpe);
      row(" E+ZPE (CBS(0K)        ) =", e0);
      row(" E+U(T)(CBS energy)    ) =", eU);
      row(" E+H(T)(CBS enthalpy   ) =", eH);
      row(" E+G(T)(CBS free energy) =", eG);
    } else {
      const std::string m(n);
      row(" E     (" + m + "(0K)-E(ZPE) )  =", e0 - zpe);
      row(" E+ZPE (" + m + "(0K)        )  =", e0);
      row(" E+U(T)(" + m + " energy     )  =", eU);
      row(" E+H(T)(" + m + " enthalpy   )  =", eH);
      row(" E+G(T)(" + m + " free energy)  =", eG);
    }
    s.log.Line();
    s.log.Line(rule);
    s.log.Line();
  }
};

}  // namespace

void ReadGaussianLog(Session& s, LineReader& in) {
  GaussianReader reader(s, in);
  std::string_view line;
  while (in.Next(line)) reader(line);
  reader.TakeFinalEnergy();
  if (s.coordsFound || s.opt.orientation != Orientation::Standard) return reader.brokenModes.Throw();  // /I and /Z are kept
  if (!reader.inputSeen && !reader.zMatrixSeen) return reader.brokenModes.Throw();

  // No standard orientation in the whole file (nosymm, or a Z-matrix job):
  // read it again by the orientation that stands, Input before Z-Matrix.
  const bool input = reader.inputSeen;
  s.opt.orientation = input ? Orientation::Input : Orientation::ZMatrix;
  s.log.EndLine();
  s.log.Line(std::string(" WARNING! No Standard orientation in the file: ") +
             (input ? "Input orientation" : "Z-Matrix orientation") + " is used");
  s.inputMass.clear();
  s.modes.clear();
  s.Set(-1) = CoordSet{};  // what the first pass stored before any geometry
  in.Rewind();
  GaussianReader again(s, in, true);
  while (in.Next(line)) again(line);
  again.TakeFinalEnergy();
  again.brokenModes.Throw();
}

}  // namespace quintor

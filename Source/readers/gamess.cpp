// Reader of GAMESS(US) and PC GAMESS 4-7 logs.
//
// Line-driven like the Gaussian reader: the read pass hands it every line,
// and it pulls further lines itself only inside a block (a geometry, the
// starting point, the atomic weights, the normal modes). Every anchor is a
// plain substring search; one scan of the line for the few characters the
// anchors carry decides which of them can stand in it at all, so that the
// numeric rows that make up most of a log cost one pass over their bytes.
//
// What is taken from the log:
//  - each "1NSERCH" (PC GAMESS) or "BEGINNING GEOMETRY SEARCH POINT NSERCH="
//    (GAMESS(US)) point and each "LOCATED *****" geometry is one coordinate
//    set, read from the "COORDINATES OF ALL ATOMS ARE (ANGS)" block below it;
//  - "NSERCH= S  ENERGY= E" stores E in set S, by the printed step number;
//    a set without one (frequency and single-point runs) takes the energy of
//    "FINAL ... ENERGY IS", and the MP2 energy "E(MP2)=" where it stands;
//  - "MAXIMUM GRADIENT" gives GMax and GRms of the current set;
//  - the starting point (bohr) is set -1;
//  - the masses come from the ATOMIC WEIGHTS block;
//  - GAMESS prints all 3N modes, translations and rotations too, and they
//    are all stored, in the order of the log.
#include <algorithm>
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
#include "readers/readers.h"

namespace quintor {

namespace {

// The log prints IR intensities in Debye^2/(amu A^2); this turns them into km/mol.
constexpr double kIntensityToKmPerMol = 42.2547;

// Lines allowed between the displacement rows of one column block and the
// frequency line of the next (Sayvetz conditions and the mode numbers: 12
// lines in PC GAMESS 5-7 and GAMESS(US), 14 in PC GAMESS 4).
constexpr int kMaxLinesBetweenBlocks = 40;


// ---- Anchor scan -----------------------------------------------------------------
//
// Each anchor holds one of the key characters "N", "*", "U", "(" or "Q"; the
// line is scanned once for these, and at each one the text around it is
// compared with the anchors that carry it there.

enum Anchor : unsigned {
  kNserch = 1u << 0,        // "NSERCH": a search point or an energy line
  kLocated = 1u << 1,       // "LOCATED *****"
  kMaxGradient = 1u << 2,   // "MAXIMUM G"
  kStateMult = 1u << 3,     // "STATE MULTIPLICITY                  ="
  kMult = 1u << 4,          // "MULT  ="
  kStartPoint = 1u << 5,    // "ATOM      ATOMIC                      COORDINATES (BOHR)"
  kWeights = 1u << 6,       // "ATOMIC WEIGHTS (AMU)"
  kFrequency = 1u << 7,     // "      FREQUENCY:"
  kFinal = 1u << 8,         // "FINAL ": "FINAL RHF ENERGY IS"
  kMp2 = 1u << 9,           // "E(MP2)="
};

constexpr char kStateMultText[] = "STATE MULTIPLICITY                  =";
constexpr char kStartPointText[] = "ATOM      ATOMIC                      COORDINATES (BOHR)";
constexpr char kFrequencyText[] = "      FREQUENCY:";

constexpr KeyChars kKeys("N*U(Q");
enum KeyChar : int { kCapitalN = 1, kStar, kCapitalU, kParen, kCapitalQ };

inline void AnchorsAt(std::string_view line, size_t p, int key, unsigned& hits) {
  switch (key) {
    case kCapitalN:
      if (Around(line, p, "NSERCH", 0)) hits |= kNserch;
      if (Around(line, p, "FINAL ", 2)) hits |= kFinal;
      break;
    case kStar:
      if (Around(line, p, "LOCATED *****", 8)) hits |= kLocated;
      break;
    case kCapitalU:
      if (Around(line, p, "MAXIMUM G", 5)) hits |= kMaxGradient;
      if (Around(line, p, kStateMultText, 7)) hits |= kStateMult;
      if (Around(line, p, "MULT  =", 1)) hits |= kMult;
      break;
    case kParen:
      if (Around(line, p, kStartPointText, sizeof kStartPointText - 7)) hits |= kStartPoint;
      if (Around(line, p, "ATOMIC WEIGHTS (AMU)", 15)) hits |= kWeights;
      if (Around(line, p, "E(MP2)=", 1)) hits |= kMp2;
      break;
    case kCapitalQ:
      if (Around(line, p, kFrequencyText, 9)) hits |= kFrequency;
      break;
  }
}

unsigned FindAnchors(std::string_view line) {
  unsigned hits = 0;
  ForEachKey(line, kKeys, [&](size_t p, int key) { AnchorsAt(line, p, key, hits); });
  return hits;
}

// ---- The reader ---------------------------------------------------------------------

struct GamessReader {
  Session& s;
  LineReader& in;

  // Modes per column block: 5, and 9 for PC GAMESS v.4.
  int width = 5;
  // Sets that have their energy from an "NSERCH= ... ENERGY=" line; a final
  // SCF or MP2 energy does not replace it.
  std::vector<bool> stepEnergy;

  GamessReader(Session& session, LineReader& reader) : s(session), in(reader) {
    if (s.opt.formatCode == FormatCode::PcGamess4) width = 9;
  }

  bool NoEnergies() const { return s.opt.noEnergies || !s.opt.readEnergies; }

  // Fixed-column fields of the current line; one that can not be read stops the run.
  double Real(std::string_view line, int first, int w, int decimals, const char* field) {
    return FieldReal(in, line, first, w, decimals, field);
  }
  long long Int(std::string_view line, int first, int w, const char* field) {
    return FieldInt(in, line, first, w, field);
  }

  void operator()(std::string_view line) {
    const unsigned hits = FindAnchors(line);
    if (hits == 0) return;

    // A search point: PC GAMESS heads it "1NSERCH=", GAMESS(US) "BEGINNING
    // GEOMETRY SEARCH POINT NSERCH=".
    if (((hits & kNserch) && (Contains(line, "1NSERCH") || Contains(line, "GEOMETRY SEARCH POINT NSERCH=") ||
                              IsFireflySearchPoint(line))) ||
        (hits & kLocated)) {
      ReadGeometry(line);
      return;  // the block has read past this line
    }
    if ((hits & kNserch) && !NoEnergies() && Contains(line, "ENERGY")) StepEnergy(line);
    if ((hits & kFinal) && !NoEnergies() && Contains(line, "ENERGY IS")) FinalEnergy(line, line.find("ENERGY IS") + 9);
    if ((hits & kMp2) && !NoEnergies()) FinalEnergy(line, line.find("E(MP2)=") + 7);
    if ((hits & kMaxGradient) && !NoEnergies()) Gradients(line);
    if ((hits & kStateMult) && s.opt.multiplicity == -1)
      s.opt.multiplicity = static_cast<int>(Int(line, 39, 5, "state multiplicity"));
    if ((hits & kMult) && s.opt.multiplicity == -1) Multiplicity(line);
    if (hits & kStartPoint) {
      ReadStartingPoint(line);
      return;
    }
    if (hits & kWeights) {
      ReadMasses(line);
      return;
    }
    if (hits & kFrequency) ReadModesOrWarn(line);
  }

  // A mode block that could not be read, kept until a later one replaces it.
  BrokenModes brokenModes;
  void ReadModesOrWarn(std::string_view line) {
    const long at = in.LineNumber();
    try {
      ReadModes(line);
      // Only a whole section replaces a broken one (the column blocks behind
      // a broken block come here too, and are cut).
      if (!s.modes.empty()) brokenModes.PassOver(s.log);
    } catch (const FatalReadError& e) {
      brokenModes.Keep(e, at, s.log);
    }
  }

  // Firefly heads a search point " NSERCH=   3" alone on its line, without
  // the carriage-control "1" of PC GAMESS.
  static bool IsFireflySearchPoint(std::string_view line) {
    std::string_view t = Trim(line);
    if (t.rfind("NSERCH=", 0) != 0) return false;
    t = Trim(t.substr(7));
    return !t.empty() && std::all_of(t.begin(), t.end(), [](char c) { return c >= '0' && c <= '9'; });
  }

  // ---- Energies, multiplicity -----------------------------------------------------

  // "NSERCH=  S     ENERGY=    E": the energy belongs to set S, whatever set
  // is current; a step number printed before its geometry is found there later.
  void StepEnergy(std::string_view line) {
    const int step = static_cast<int>(Int(line, 18, 3, "step number"));
    const double e = Real(line, 33, 16, 0, "energy");
    if (step < -1) return;
    s.Set(step).energy = e;
    const size_t k = static_cast<size_t>(step + 1);
    if (stepEnergy.size() <= k) stepEnergy.resize(k + 1);
    stepEnergy[k] = true;
  }

  // The energy that follows `from` in the line, for the current set when no
  // search step has given it one.
  void FinalEnergy(std::string_view line, size_t from) {
    const size_t k = static_cast<size_t>(s.iCyc + 1);
    if (k < stepEnergy.size() && stepEnergy[k]) return;
    const auto items = FreeFormItems(line.substr(from));
    if (items.empty()) return;
    if (auto v = ReadFreeReal(items.front(), PlaceIn(in, "final energy"))) s.Set(s.iCyc).energy = *v;
  }

  // "MAXIMUM GRADIENT = g    RMS GRADIENT = r": the number behind each "=",
  // wherever it stands; a gradient run prints the first alone.
  void Gradients(std::string_view line) {
    CoordSet& set = s.Set(s.iCyc);
    auto after = [&](std::string_view label, double& target, const char* field) {
      const size_t at = line.find(label);
      if (at == std::string_view::npos) return;
      const size_t eq = line.find('=', at);
      if (eq == std::string_view::npos) return;
      const auto items = FreeFormItems(line.substr(eq + 1));
      if (items.empty()) return;
      if (auto v = ReadFreeReal(items.front(), PlaceIn(in, field))) target = *v;
    };
    after("MAXIMUM G", set.gmax, "maximum gradient");
    after("RMS G", set.grms, "RMS gradient");
  }

  // "MULT  =": PC GAMESS prints the value three columns further right than
  // GAMESS(US), so the number that follows the "=" is taken.
  void Multiplicity(std::string_view line) {
    size_t at = line.find("MULT  =");
    std::string_view rest = line.substr(at + 7);
    auto items = FreeFormItems(rest.substr(0, std::min<size_t>(rest.size(), 12)));
    if (items.empty()) return;
    if (auto v = ReadFreeInt(items.front(), PlaceIn(in, "multiplicity"))) s.opt.multiplicity = static_cast<int>(*v);
  }

  // ---- Coordinate blocks ------------------------------------------------------------

  // An atom row: name in columns 1-12, nuclear charge in columns 13-16.
  int NuclearNumber(std::string_view line) {
    return static_cast<int>(std::lround(Real(line, 13, 4, 1, "nuclear charge")));
  }

  // A search point or a located geometry: the geometry is the "COORDINATES OF
  // ALL ATOMS" block below the heading, in Angstrom. A heading with no block
  // below it, or a file cut inside the block, is a fatal read error: there is
  // no geometry to go on with.
  void ReadGeometry(std::string_view heading) {
    std::string_view line = heading;
    auto next = [&] {
      if (!in.Next(line)) throw FatalReadError(PlaceIn(in, "COORDINATES OF ALL ATOMS"), "end of file");
    };
    while (!Contains(line, "COORDINATES OF ALL ATOMS")) next();
    StartGeometry(s);
    s.log.Line();
    s.log.Line(" NSEARCH =" + FmtI(s.iCyc, 5));
    s.log.Line(TrimRight(line));
    for (int k = 0; k < 2; ++k) {
      next();
      s.log.Line(TrimRight(line));
    }
    for (;;) {
      next();
      s.log.Line(TrimRight(line));
      if (Contains(line, "-----") || Contains(line, ".....") || Trim(Columns(line, 1, 5)).empty()) break;
      const int z = NuclearNumber(line);
      Vec3 r;
      for (int k = 0; k < 3; ++k)
        r[k] = Real(line, 17 + 15 * k, 15, 10, "coordinate") * constants::AngstromToBohr;
      AddAtom(s, z, r);
    }
  }

  // The starting point, in bohr: set -1, the starting geometry, whatever
  // set is current.
  void ReadStartingPoint(std::string_view heading) {
    s.nAtoms = 0;
    s.coordsFound = true;
    s.Set(-1).xyz.clear();
    s.log.Line();
    s.log.Line("Starting point:");
    s.log.Line();
    s.log.Line(TrimRight(heading));
    std::string_view line;
    if (!in.Next(line)) return;
    s.log.Line(TrimRight(line));
    // Only the heading and the line under it are echoed, not the rows.
    const int current = s.iCyc;
    while (in.Next(line)) {
      if (Trim(line).empty()) break;
      const int z = NuclearNumber(line);
      Vec3 r;
      for (int k = 0; k < 3; ++k) r[k] = Real(line, 19 + 20 * k, 15, 10, "coordinate");
      s.iCyc = -1;  // AddAtom stores into the current set
      AddAtom(s, z, r);
      s.iCyc = current;
    }
  }

  // ---- Masses -------------------------------------------------------------------------

  void ReadMasses(std::string_view heading) {
    s.log.Line(TrimRight(heading));
    std::string_view line;
    if (!in.Next(line)) return;
    s.log.Line(TrimRight(line));
    const size_t n = static_cast<size_t>(s.nAtoms);
    std::vector<double> mass(n);
    double total = 0.0;
    for (size_t i = 0; i < n; ++i) {
      if (!in.Next(line)) return;  // a cut block: the table gives the masses
      mass[i] = Real(line, 22, 14, 5, "atomic mass");
      total += mass[i];
      s.log.Line(TrimRight(line));
    }
    s.inputMass = std::move(mass);
    s.massBlockRead = true;
    s.molMass = total;
    StatusMessage(s, " Atomic massses found");
  }

  // ---- Modes ---------------------------------------------------------------------------

  // One column block: the frequency line, the labelled rows under it down to
  // an empty line, then three displacement rows per atom. Values stand from
  // column 21, 12 columns each.
  bool ReadColumnBlock(std::string_view freqLine, std::vector<VibMode>& modes, int first, int cols) {
    const size_t n = static_cast<size_t>(s.nAtoms);
    for (int k = 0; k < cols; ++k) {
      double f = Real(freqLine, 21 + 12 * k, 10, 2, "frequency");
      if (Columns(freqLine, 31 + 12 * k, 2) == " I") f = -f;  // imaginary
      modes[static_cast<size_t>(first + k)].freq = f;
    }
    // PC GAMESS 4-6 print the IR intensities alone, PC GAMESS 7 the reduced
    // masses above them, current GAMESS(US) also the symmetry of each mode.
    std::string_view line;
    for (;;) {
      if (!in.Next(line)) return false;
      if (Trim(line).empty()) break;
      std::string_view label = Columns(line, 1, 20);
      if (label.find(':') == std::string_view::npos) return false;  // not a mode block after all
      double VibMode::*field = nullptr;
      double factor = 1.0;
      const char* name = nullptr;
      if (Contains(label, "REDUCED MASS:")) {
        field = &VibMode::redMass, name = "reduced mass";
      } else if (s.opt.raman ? Contains(label, "RAMAN ACTIVITY:") : Contains(label, "IR INTENSITY:")) {
        field = &VibMode::intensity, name = "intensity";
        if (!s.opt.raman) factor = kIntensityToKmPerMol;
      }
      Beside(line, label, modes, first, cols);
      if (!field) continue;  // SYMMETRY: and the like
      for (int k = 0; k < cols; ++k)
        modes[static_cast<size_t>(first + k)].*field = ModeValue(s, in, line, 21 + 12 * k, 12, 8, first + k + 1, name) * factor;
    }
    for (size_t a = 0; a < n; ++a) {
      for (int j = 0; j < 3; ++j) {
        if (!in.Next(line)) return false;
        for (int k = 0; k < cols; ++k)
          modes[static_cast<size_t>(first + k)].disp[a][j] = Real(line, 21 + 12 * k, 12, 8, "displacement");
      }
    }
    return true;
  }

  // The symmetry labels, IR intensities (km/mol) and Raman activities,
  // each in its own field, for the results a script reads.
  void Beside(std::string_view line, std::string_view label, std::vector<VibMode>& modes, int first, int cols) {
    const bool sym = Contains(label, "SYMMETRY:"), ir = Contains(label, "IR INTENSITY:"),
               raman = Contains(label, "RAMAN ACTIVITY:");
    if (!sym && !ir && !raman) return;
    const auto items = FreeFormItems(line.substr(std::min<size_t>(line.size(), 20)));
    if (static_cast<int>(items.size()) != cols) return;
    for (int k = 0; k < cols; ++k) {
      VibMode& m = modes[static_cast<size_t>(first + k)];
      const std::string_view text = items[static_cast<size_t>(k)];
      if (sym) {
        m.symmetry = text;
        continue;
      }
      if (Contains(text, "*") || Contains(text, "NaN")) continue;
      const auto v = ReadFreeReal(text, PlaceIn(in, ir ? "IR intensity" : "Raman activity"));
      if (!v) continue;
      (ir ? m.ir : m.raman) = ir ? *v * kIntensityToKmPerMol : *v;
      (ir ? m.irGiven : m.ramanGiven) = true;
    }
  }

  // The frequency line of the next column block.
  bool NextFrequencyLine(std::string_view& line) {
    for (int k = 0; k < kMaxLinesBetweenBlocks; ++k) {
      if (!in.Next(line)) return false;
      if (Contains(line, kFrequencyText)) return true;
    }
    return false;
  }

  // All 3N modes, translations and rotations first as the log orders them.
  // A later block reads them all anew: the last one in the file stands. A
  // block cut by the end of the file leaves no modes at all.
  void ReadModes(std::string_view freqLine) {
    if (!s.opt.readFrequencies) return;
    const int n = s.nAtoms;
    const int total = 3 * n;
    if (total == 0) return;
    std::vector<VibMode> modes(static_cast<size_t>(total));
    for (auto& m : modes) m.disp.assign(static_cast<size_t>(n), Vec3{0.0, 0.0, 0.0});

    std::string_view line = freqLine;
    const int blocks = (total + width - 1) / width;
    for (int b = 0, count = 0; b < blocks; ++b, count += width) {
      const int cols = (b == blocks - 1 && total % width != 0) ? total % width : width;
      if (b > 0 && !NextFrequencyLine(line)) return Cancel();
      if (!ReadColumnBlock(line, modes, count, cols)) return Cancel();
    }
    s.modes = std::move(modes);
  }

  void Cancel() { s.modes.clear(); }
};

}  // namespace

LineHandler MakeGamessReader(Session& s, LineReader& in, std::function<void()>* finish) {
  auto reader = std::make_shared<GamessReader>(s, in);
  if (finish) *finish = [reader] { reader->brokenModes.Throw(); };
  return [reader](std::string_view line) { (*reader)(line); };
}

}  // namespace quintor

// Readers of Priroda logs, this program's own log and the earlier program's log.
// Each takes over the file from the read pass and reads it to its end; the
// end of the file in any of their loops is no failure, except inside a block
// of fixed length (the masses and the normal modes of Priroda).
//
// None of them rewinds: the read pass hands the file over behind the banner
// line (or at its first line when the format was forced), and none of the
// anchors stands on a banner line or ahead of it.
#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "analysis/inertia.h"
#include "io/words.h"
#include "readers/elements.h"
#include "readers/readers.h"

namespace quintor {

namespace {

constexpr double kBohrPerAngstrom = constants::AngstromToBohr;

bool IsBlank(std::string_view line) { return Trim(line).empty(); }

void NameAtom(Session& s, std::string_view name) {
  size_t k = static_cast<size_t>(s.nAtoms - 1);
  if (s.atomName.size() <= k) s.atomName.resize(k + 1);
  s.atomName[k] = std::string(Trim(name.substr(0, std::min<size_t>(name.size(), 5))));
}

// One row of the coordinate tables shared by the own log (" NSEARCH =" blocks)
// and the earlier program's log: name in 12 columns from `first`, nuclear
// charge in 4 columns with one decimal, X, Y, Z of 15 columns with 10 decimals,
// in angstroms. Returns false for a row with an empty name, which ends a table.
bool ReadChargeRow(Session& s, const LineReader& in, std::string_view line, int first) {
  std::string_view name = Columns(line, first, 12);
  if (Trim(name).empty()) return false;
  double charge = FieldReal(in, line, first + 12, 4, 1, "nuclear charge");
  Vec3 r;
  static constexpr const char* kAxis[3] = {"X coordinate", "Y coordinate", "Z coordinate"};
  for (int k = 0; k < 3; ++k)
    r[k] = FieldReal(in, line, first + 16 + 15 * k, 15, 10, kAxis[k]) * kBohrPerAngstrom;
  AddAtom(s, static_cast<int>(std::lround(charge)), r);
  NameAtom(s, Trim(name));
  return true;
}

// Copies the atom just stored in the current set to set `slot`.
void CopyLastAtom(Session& s, int slot) {
  size_t k = static_cast<size_t>(s.nAtoms - 1);
  const Vec3 r = s.Set(s.iCyc).xyz[k];
  auto& xyz = s.Set(slot).xyz;
  if (xyz.size() <= k) xyz.resize(k + 1);
  xyz[k] = r;
}

}  // namespace

// ---- The earlier program's log: format 4 ------------------------------------------

void ReadKorvandelLog(Session& s, LineReader& in) {
  s.iCyc = 0;
  std::string_view line;
  while (in.Next(line)) {
    if (!Contains(line, "Point No.:")) continue;
    if (!in.Skip(2)) break;
    StartGeometry(s);
    while (in.Next(line)) {
      if (!ReadChargeRow(s, in, line, 1)) break;
      if (s.iCyc == 1) {
        CopyLastAtom(s, 0);
        CopyLastAtom(s, -1);
      }
    }
  }
}

// ---- This program's own log: format 9 ---------------------------------------------

void ReadOwnLog(Session& s, LineReader& in) {
  s.iCyc = -1;
  // The log carries the last view twice, in the molecular frame and then in
  // the laboratory frame. The molecular frame is the geometry of the run; the
  // laboratory block that follows it directly is passed over, so that a log
  // read back gives one set for its last view.
  bool lastViewRead = false;
  std::string_view line;
  while (in.Next(line)) {
    if (IsBlank(line)) continue;
    if (Contains(line, "Spin multiplicity")) {
      if (s.opt.multiplicity == -1)
        s.opt.multiplicity = static_cast<int>(FieldInt(in, line, 33, 2, "spin multiplicity"));
      continue;
    }
    if (Contains(line, " NSEARCH =")) {
      lastViewRead = false;
      if (!in.Skip(3)) break;
      StartGeometry(s);
      while (in.Next(line)) {
        if (Contains(line, "----")) break;
        if (!ReadChargeRow(s, in, line, 2)) break;
        if (s.iCyc == 1) CopyLastAtom(s, 0);  // the first set of a read-back log is the starting point
      }
      continue;
    }
    if (Contains(line, "Last view coordinates")) {
      const bool laboratory = Contains(line, "laboratory");
      if (!in.Skip(1)) break;
      if (laboratory && lastViewRead) {
        while (in.Next(line) && !Contains(line, "----")) {
        }
        continue;
      }
      lastViewRead = true;
      StartGeometry(s);
      while (in.Next(line)) {
        if (Contains(line, "----")) break;
        std::string_view name = Columns(line, 2, 7);
        int z = static_cast<int>(FieldInt(in, line, 9, 2, "nuclear number"));
        Vec3 r;
        static constexpr const char* kAxis[3] = {"X coordinate", "Y coordinate", "Z coordinate"};
        for (int k = 0; k < 3; ++k)
          r[k] = FieldReal(in, line, 12 + 12 * k, 12, 6, kAxis[k]) * kBohrPerAngstrom;
        AddAtom(s, z, r);
        NameAtom(s, Trim(name));
      }
    }
  }
}

// ---- Priroda 8 and 9: format 17 ---------------------------------------------------

namespace {

class PrirodaReader {
 public:
  PrirodaReader(Session& s, LineReader& in) : s(s), in(in) {}

  void Run() {
    s.log.Line();
    s.log.Line(" PRIRODA input");
    s.iCyc = 0;
    std::string_view line;
    while (Next(line)) Dispatch(line);
    if (s.iCyc > 0) {
      CoordSet first = s.Set(1);
      s.Set(0) = first;
      s.Set(-1) = first;
    }
  }

 private:
  // Lines are taken trimmed at the left; columns count in the trimmed line.
  bool Next(std::string_view& line) {
    if (!in.Next(line)) return false;
    size_t k = line.find_first_not_of(" \t");
    line = k == std::string_view::npos ? std::string_view{} : line.substr(k);
    return true;
  }

  // A line that must be there: the end of the file stops the run.
  std::string_view Required(const char* what) {
    std::string_view line;
    if (!Next(line)) throw FatalReadError(PlaceIn(in, what), "end of file");
    return line;
  }

  void Dispatch(std::string_view line) {
    if (line.empty()) return;
    if (Contains(line, "| Spin multiplicity")) {
      s.opt.multiplicity = static_cast<int>(FieldInt(in, line, 38, 4, "spin multiplicity"));
    } else if (Contains(line, "Atomic Coordinates:")) {
      Coordinates();
    } else if (Contains(line, "Geometry Optimization Step 0")) {
      // the first step's heading stands before any energy
    } else if (Contains(line, "Geometry Optimization Step")) {
      std::string_view next;
      if (Next(next)) s.Set(s.iCyc).energy = FieldReal(in, next, 16, 16, 8, "energy");
    } else if (Contains(line, "max. gradient     =")) {
      s.Set(s.iCyc).gmax = FieldReal(in, line, 43, 10, 7, "max. gradient");
    } else if (Contains(line, "max. displacement =")) {
      s.Set(s.iCyc).grms = FieldReal(in, line, 43, 10, 7, "max. displacement");
    } else if (Contains(line, "eng>$Energy")) {
      std::string_view next;
      if (Next(next)) s.Set(s.iCyc).energy = FieldReal(in, next, 8, 20, 8, "energy");
    } else if (Contains(line, "Atomic Masses (amu)")) {
      // Read and checked, but not kept: the finishing stage gives the table's masses.
      for (int i = 0; i < s.nAtoms; ++i) ReadFixedReal(Required("atomic mass"), 11, 12, 6, PlaceIn(in, "atomic mass"));
    } else if (Contains(line, "| Mode | Freq.   | Mass. | IR Int. |")) {
      ModeTable();
    } else if (Contains(line, "Normal Modes (mass-weighted) and Frequencies (cm^-1)")) {
      NormalModes();
    }
  }

  void Coordinates() {
    StartGeometry(s);
    const std::string rule(80, '-');
    s.log.Line(" Step =" + FmtI(s.iCyc, 5));
    s.log.Line(rule);
    std::string_view line;
    while (Next(line)) {
      if (line.empty() || Contains(line, "#")) break;
      std::vector<std::string> words = SplitWords(line, 5);
      if (words.size() < 4) throw FatalReadError(PlaceIn(in, "coordinate row"), line);
      const std::string& word = words[0];
      int z;
      if (!word.empty() && word[0] >= '0' && word[0] <= '9') {
        std::optional<long long> n = ParseFortranInt(std::string_view(word).substr(0, word.find('.')));
        if (!n) throw FatalReadError(PlaceIn(in, "atomic number"), word);
        z = static_cast<int>(*n);
      } else {
        z = ElementNumber(word, 99);
      }
      Vec3 a;
      static constexpr const char* kAxis[3] = {"X coordinate", "Y coordinate", "Z coordinate"};
      for (int k = 0; k < 3; ++k) {
        std::optional<double> v = ParseFortranReal(words[1 + k]);
        if (!v) throw FatalReadError(PlaceIn(in, kAxis[k]), words[1 + k]);
        a[k] = *v;
      }
      AddAtom(s, z, {a[0] * kBohrPerAngstrom, a[1] * kBohrPerAngstrom, a[2] * kBohrPerAngstrom});
      s.log.Line(FmtA(word, 5) + FmtI(z, 4) + FmtX(2) + FmtF(a[0], 15, 8) + FmtF(a[1], 15, 8) + FmtF(a[2], 15, 8));
    }
    s.log.Line(rule);
    s.log.Line();
  }

  // Translations and rotations come first: 5 of them for a linear molecule, else 6.
  int ModeBase() const {
    const auto& xyz = s.Set(s.iCyc).xyz;
    std::vector<double> mass(xyz.size());
    for (size_t i = 0; i < xyz.size(); ++i)
      mass[i] = DefaultMass(i < s.atomicNumber.size() ? s.atomicNumber[i] : 0);
    return AnalyseInertia(xyz, mass).Linear() ? 5 : 6;
  }

  void ModeTable() {
    std::string_view line;
    if (!Next(line)) return;
    modeBase = ModeBase();
    modeCount = modeBase;
    s.modes.assign(static_cast<size_t>(modeBase), VibMode{});
    while (Next(line)) {
      if (line.empty() || Contains(line, "*------*")) break;
      VibMode m;
      m.freq = FieldReal(in, line, 10, 8, 2, "frequency");
      m.redMass = FieldReal(in, line, 20, 6, 2, "reduced mass");
      m.intensity = FieldReal(in, line, 28, 9, 3, "IR intensity");
      s.modes.push_back(std::move(m));
      ++modeCount;
    }
    for (auto& m : s.modes) m.disp.assign(static_cast<size_t>(s.nAtoms), Vec3{0.0, 0.0, 0.0});
  }

  void EchoRequired(int n, const char* what) {
    for (int i = 0; i < n; ++i) s.log.Line(TrimRight(Required(what)));
  }

  void NormalModes() {
    EchoRequired(5, "normal modes heading");
    const int n = s.nAtoms;
    for (int first = modeBase; first < modeCount; first += 6) {
      const int cols = std::min(6, modeCount - first);
      for (int row = 0; row < 3 * n; ++row) {
        std::string_view line = Required("normal mode displacement");
        std::string echo = FmtA(line.substr(0, std::min<size_t>(7, line.size())), 7);
        for (int k = 0; k < cols; ++k) {
          double v = FieldReal(in, line, 8 + 10 * k, 10, 6, "normal mode displacement");
          VibMode& m = s.modes[static_cast<size_t>(first + k)];
          if (m.disp.size() < static_cast<size_t>(n)) m.disp.resize(static_cast<size_t>(n), Vec3{0.0, 0.0, 0.0});
          m.disp[static_cast<size_t>(row / 3)][static_cast<size_t>(row % 3)] = v;
          echo += FmtF(v, 10, 6);
        }
        s.log.Line(echo);
      }
      // The lines between blocks; those behind the last block may be cut off.
      const bool last = first + 6 >= modeCount;
      for (int i = 0; i < 4; ++i) {
        std::string_view line;
        if (!Next(line)) {
          if (last) return;
          throw FatalReadError(PlaceIn(in, "normal modes heading"), "end of file");
        }
        s.log.Line(TrimRight(line));
      }
    }
  }

  Session& s;
  LineReader& in;
  int modeBase = 0;
  int modeCount = 0;
};

}  // namespace

void ReadPriroda(Session& s, LineReader& in) { PrirodaReader(s, in).Run(); }

}  // namespace quintor

// Reader of ORCA 4, 5 and 6 output. It takes over the file behind the banner
// and reads it to its end. ORCA prints every geometry of a run twice, in
// angstroms and in bohr; the angstrom block starts a coordinate set and the
// bohr block below it gives the masses ORCA used (average atomic masses,
// which its own thermochemistry takes). The frequency section lists all 3N
// modes, translations and rotations first with 0.00, as GAMESS does, so the
// modes are stored from 1 to 3N in the order of the log.
#include <cmath>
#include <string>
#include <vector>

#include "io/words.h"
#include "readers/elements.h"
#include "readers/free_form.h"
#include "readers/readers.h"

namespace quintor {

namespace {

constexpr double kBohrPerAngstrom = constants::AngstromToBohr;

bool IsBlank(std::string_view line) { return Trim(line).empty(); }

// The words of a line, free-form.
std::vector<std::string_view> Items(std::string_view line) { return FreeFormItems(line); }


// "  6:    228.25 ..." : the mode number before the colon, or -1.
int ModeNumber(std::string_view word) {
  if (word.size() < 2 || word.back() != ':') return -1;
  int n = 0;
  for (char c : word.substr(0, word.size() - 1)) {
    if (c < '0' || c > '9' || n > 100000) return -1;
    n = n * 10 + (c - '0');
  }
  return n;
}

struct OrcaReader {
  Session& s;
  LineReader& in;
  int version = 0;  // major version from "Program Version"

  void Run() {
    std::string_view line;
    while (in.Next(line)) {
      if (Contains(line, "Program Version ")) {
        const auto w = Items(line.substr(line.find("Version ") + 8));
        if (!w.empty() && !w[0].empty() && w[0][0] >= '0' && w[0][0] <= '9') version = w[0][0] - '0';
      } else if (Contains(line, "CARTESIAN COORDINATES (ANGSTROEM)")) {
        Geometry();
      } else if (Contains(line, "CARTESIAN COORDINATES (A.U.)") && !Contains(line, "SYMMETRY")) {
        Masses();
      } else if (Contains(line, "FINAL SINGLE POINT ENERGY")) {
        if (!s.opt.noEnergies && s.coordsFound) {
          s.Set(s.iCyc).energy = FreeReal(in, LastItem(line), "energy");
        }
      } else if (Contains(line, "MAX gradient") || Contains(line, "RMS gradient")) {
        // The convergence table: "MAX gradient  value  tolerance  YES/NO".
        const auto w = Items(line);
        if (w.size() == 5 && !s.opt.noEnergies && s.coordsFound) {
          const double v = FreeReal(in, w[2], "gradient");
          (w[0] == "MAX" ? s.Set(s.iCyc).gmax : s.Set(s.iCyc).grms) = v;
        }
      } else if (Contains(line, " Multiplicity           Mult")) {
        if (s.opt.multiplicity == -1) s.opt.multiplicity = FreeWhole(in, LastItem(line), "multiplicity", 1, 99);
      } else if (Trim(line) == "VIBRATIONAL FREQUENCIES") {
        Frequencies();
      } else if (Trim(line) == "NORMAL MODES") {
        NormalModes();
      } else if (Trim(line) == "IR SPECTRUM") {
        if (!s.opt.raman) Spectrum(false);
      } else if (Trim(line) == "RAMAN SPECTRUM") {
        if (s.opt.raman) Spectrum(true);
      }
    }
  }

  // Rows "  C   x y z" in angstroms after a rule, up to an empty line.
  void Geometry() {
    if (!in.Skip(1)) return;
    StartGeometry(s);
    std::string_view line;
    while (in.Next(line) && !IsBlank(line)) {
      const auto w = Items(line);
      if (w.size() < 4) break;
      const auto xyz = ReadFreeReals(line.substr(static_cast<size_t>(w[1].data() - line.data())), 3,
                                     PlaceIn(in, "coordinates"));
      AddAtom(s, ElementNumber(w[0]), Vec3{xyz[0] * kBohrPerAngstrom, xyz[1] * kBohrPerAngstrom,
                                           xyz[2] * kBohrPerAngstrom});
    }
  }

  // "  NO LB  ZA  FRAG  MASS  X Y Z" rows: the masses of the atoms.
  void Masses() {
    if (!in.Skip(2)) return;
    std::vector<double> mass;
    std::string_view line;
    while (in.Next(line) && !IsBlank(line)) {
      const auto w = Items(line);
      if (w.size() < 8) break;
      mass.push_back(FreeReal(in, w[4], "mass"));
    }
    if (static_cast<int>(mass.size()) == s.nAtoms && s.nAtoms > 0) s.inputMass = std::move(mass);
  }

  // "   6:       228.25 cm**-1" rows; imaginary modes carry a negative value.
  void Frequencies() {
    if (!s.opt.readFrequencies) return;
    std::vector<VibMode> modes;
    std::string_view line;
    int otherLines = 0;
    while (in.Next(line)) {
      const auto w = Items(line);
      const int k = w.size() >= 3 ? ModeNumber(w[0]) : -1;
      if (k >= 0 && Contains(line, "cm**-1")) {
        if (k != static_cast<int>(modes.size())) break;
        VibMode m;
        m.freq = FreeReal(in, w[1], "frequency");
        m.disp.assign(static_cast<size_t>(s.nAtoms), Vec3{0.0, 0.0, 0.0});
        modes.push_back(std::move(m));
      } else if (!modes.empty() && IsBlank(line)) {
        break;
      } else if (++otherLines > 10) {
        break;
      }
    }
    if (modes.size() == static_cast<size_t>(3 * s.nAtoms)) s.modes = std::move(modes);
  }

  // Blocks of up to six columns: a line of mode numbers, then 3N rows of a
  // row number and the displacements.
  void NormalModes() {
    const size_t n3 = static_cast<size_t>(3 * s.nAtoms);
    if (s.modes.size() != n3 || n3 == 0) return;
    std::string_view line;
    size_t done = 0;
    int otherLines = 0;
    while (done < n3 && in.Next(line)) {
      const auto head = Items(line);
      std::vector<int> cols;
      for (auto w : head) {
        const std::string t(w);
        if (t.empty() || t.find_first_not_of("0123456789") != std::string::npos) {
          cols.clear();
          break;
        }
        cols.push_back(std::stoi(t));
      }
      if (cols.empty() || head.empty()) {
        if (++otherLines > 20) return;
        continue;
      }
      for (size_t r = 0; r < n3; ++r) {
        if (!in.Next(line)) return;
        const auto w = Items(line);
        if (w.size() != cols.size() + 1) return;
        for (size_t k = 0; k < cols.size(); ++k) {
          const auto c = static_cast<size_t>(cols[k]);
          if (c >= n3) return;
          s.modes[c].disp[r / 3][static_cast<int>(r % 3)] = FreeReal(in, w[k + 1], "displacement");
        }
      }
      done += cols.size();
    }
  }

  // IR: "  6:  228.25  eps  Int  T**2 (TX TY TZ)" from ORCA 5 on, where Int is
  // in km/mol; "  6:  228.25  T**2 (TX TY TZ)" before, where T**2 is.
  // Raman: "  6:  228.25  activity  depolarization".
  void Spectrum(bool raman) {
    std::string_view line;
    bool intColumn = false;
    int otherLines = 0;
    bool seen = false;
    while (in.Next(line)) {
      if (Contains(line, "Int ") || Contains(line, "km/mol")) intColumn = true;
      const auto w = Items(line);
      const int k = w.empty() ? -1 : ModeNumber(w[0]);
      if (k < 0) {
        if (seen || ++otherLines > 10) return;
        continue;
      }
      seen = true;
      const size_t column = raman ? 2 : (intColumn ? 3 : 2);
      if (w.size() <= column || static_cast<size_t>(k) >= s.modes.size()) continue;
      s.modes[static_cast<size_t>(k)].intensity = FreeReal(in, w[column], raman ? "Raman activity" : "IR intensity");
    }
  }
};

}  // namespace

void ReadOrcaLog(Session& s, LineReader& in) {
  s.log.Line(" ORCA output");
  OrcaReader{s, in, 0}.Run();
}

}  // namespace quintor

// Reader of Q-Chem 4 to 6 output. It takes over the file behind the banner
// and reads it to its end. Every "Standard Nuclear Orientation" block starts a
// coordinate set; the SCF and optimiser energies go to the set current then.
// The vibrational analysis lists the 3N-6 (3N-5) vibrations alone, as
// Gaussian does: the modes are stored after as many empty slots as there are
// translations and rotations, so that mode numbers count from 1 over all 3N.
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

std::vector<std::string_view> Items(std::string_view line) { return FreeFormItems(line); }


// The text after a label such as " Frequency:".
std::string_view After(std::string_view line, std::string_view label) {
  const size_t p = line.find(label);
  return p == std::string_view::npos ? std::string_view() : line.substr(p + label.size());
}

struct QChemReader {
  Session& s;
  LineReader& in;
  std::vector<VibMode> vibs;  // the vibrations of the last analysis
  bool inAnalysis = false;
  bool moleculeNext = false;

  void Run() {
    std::string_view line;
    while (in.Next(line)) {
      if (moleculeNext) {
        // "$molecule", then "charge multiplicity" (or "read").
        moleculeNext = false;
        const auto w = Items(line);
        if (w.size() == 2 && s.opt.multiplicity == -1 && w[1].find_first_not_of("0123456789") == std::string::npos)
          s.opt.multiplicity = FreeWhole(in, w[1], "multiplicity", 1, 99);
      } else if (Trim(line) == "$molecule") {
        moleculeNext = true;
      } else if (Contains(line, "Standard Nuclear Orientation")) {
        Geometry();
      } else if (Contains(line, "Total energy in the final basis set =") || Contains(line, "Final energy is")) {
        if (!s.opt.noEnergies && s.coordsFound) s.Set(s.iCyc).energy = FreeReal(in, LastItem(line), "energy");
      } else if (Trim(line).rfind("Gradient ", 0) == 0) {
        // The optimiser's convergence table: "Gradient  value  tolerance  YES/NO".
        const auto w = Items(line);
        if (w.size() == 4 && !s.opt.noEnergies && s.coordsFound) s.Set(s.iCyc).gmax = FreeReal(in, w[1], "gradient");
      } else if (Contains(line, "VIBRATIONAL ANALYSIS")) {
        vibs.clear();
        inAnalysis = s.opt.readFrequencies;
      } else if (inAnalysis && Contains(line, " Mode:")) {
        ModeBlock(line);
      } else if (inAnalysis && Contains(line, "STANDARD THERMODYNAMIC QUANTITIES")) {
        inAnalysis = false;
        StoreModes();
      } else if (Contains(line, " Has Mass ")) {
        // "Atom    1 Element O  Has Mass   15.99491"
        const auto w = Items(line);
        if (w.size() >= 7) {
          const auto k = static_cast<size_t>(FreeWhole(in, w[1], "atom number", 1, 1 << 30));
          if (k >= 1 && k <= static_cast<size_t>(s.nAtoms)) {
            if (s.inputMass.size() != static_cast<size_t>(s.nAtoms)) s.inputMass.assign(static_cast<size_t>(s.nAtoms), 0.0);
            s.inputMass[k - 1] = FreeReal(in, w[6], "mass");
          }
        }
      }
    }
    if (inAnalysis) StoreModes();  // a log cut before its thermochemistry
    // Masses of a part of the atoms only are no masses.
    for (double m : s.inputMass)
      if (m <= 0.0) s.inputMass.clear();
  }

  // A rule, a head line, a rule, rows "  1  C  x y z" in angstroms, a rule.
  void Geometry() {
    if (!in.Skip(2)) return;
    StartGeometry(s);
    std::string_view line;
    while (in.Next(line) && !Contains(line, "-----")) {
      const auto w = Items(line);
      if (w.size() < 5) break;
      const auto xyz = ReadFreeReals(line.substr(static_cast<size_t>(w[2].data() - line.data())), 3,
                                     PlaceIn(in, "coordinates"));
      AddAtom(s, ElementNumber(w[1]), Vec3{xyz[0] * kBohrPerAngstrom, xyz[1] * kBohrPerAngstrom,
                                           xyz[2] * kBohrPerAngstrom});
    }
  }

  // " Mode:  1  2  3", the values of each, an "X Y Z" head, N atom rows.
  void ModeBlock(std::string_view modeLine) {
    const size_t cols = Items(After(modeLine, "Mode:")).size();
    if (cols == 0 || cols > 3) return;
    const size_t first = vibs.size();
    vibs.resize(first + cols);
    for (size_t k = first; k < vibs.size(); ++k) vibs[k].disp.assign(static_cast<size_t>(s.nAtoms), Vec3{});
    std::string_view line;
    while (in.Next(line)) {
      double VibMode::*field = nullptr;
      std::string_view label;
      if (Contains(line, " Frequency:")) field = &VibMode::freq, label = "Frequency:";
      else if (Contains(line, " Force Cnst:")) field = &VibMode::forceConst, label = "Force Cnst:";
      else if (Contains(line, " Red. Mass:")) field = &VibMode::redMass, label = "Red. Mass:";
      else if (!s.opt.raman && Contains(line, " IR Intens:")) field = &VibMode::intensity, label = "IR Intens:";
      else if (s.opt.raman && Contains(line, " Raman Intens:")) field = &VibMode::intensity, label = "Raman Intens:";
      else if (Trim(line).rfind("X ", 0) == 0) break;
      else if (Trim(line).empty()) return;
      if (!field) continue;
      const auto v = ReadFreeReals(After(line, label), static_cast<int>(cols), PlaceIn(in, std::string(label)));
      for (size_t k = 0; k < cols; ++k) vibs[first + k].*field = v[k];
    }
    for (int a = 0; a < s.nAtoms; ++a) {
      if (!in.Next(line)) return;
      const auto w = Items(line);
      if (w.size() != 1 + 3 * cols) return;
      for (size_t k = 0; k < cols; ++k)
        for (int j = 0; j < 3; ++j)
          vibs[first + k].disp[static_cast<size_t>(a)][j] = FreeReal(in, w[1 + 3 * k + static_cast<size_t>(j)], "displacement");
    }
  }

  void StoreModes() {
    const int n3 = 3 * s.nAtoms;
    const int base = n3 - static_cast<int>(vibs.size());
    if (vibs.empty() || base < 5 || base > 6) return;
    std::vector<VibMode> modes(static_cast<size_t>(base));
    for (auto& m : modes) {
      m.disp.assign(static_cast<size_t>(s.nAtoms), Vec3{});
      m.given = false;
    }
    modes.insert(modes.end(), vibs.begin(), vibs.end());
    s.modes = std::move(modes);
  }
};

}  // namespace

void ReadQChemLog(Session& s, LineReader& in) {
  s.log.Line(" Q-Chem output");
  QChemReader r{s, in, {}, false, false};
  r.Run();
}

}  // namespace quintor

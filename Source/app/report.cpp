#include "app/report.h"

#include <algorithm>
#include <cmath>
#include <ostream>
#include <utility>

#include <fmt/format.h>

#include "analysis/inertia.h"
#include "analysis/symmetry.h"
#include "io/fortran_io.h"
#include "readers/elements.h"

namespace quintor {

namespace {

void WriteLines(Session& s, const std::vector<std::string>& lines) {
  for (const std::string& line : lines) s.log.Line(line);
}

void ParametersInEffect(Session& s, const SymmetryAnalysis& symmetry) {
  const Options& o = s.opt;
  // A windowed run shows the block in the Message window as well.
  auto put = [&s](const std::string& line = {}) {
    s.log.Line(line);
    if (!s.opt.noGraphics) s.messages.push_back(line);
  };
  put();
  put(" ****** PARAMETERS IN EFFECT *******");
  put(" Temperature, K, set to  :" + FmtF(o.temperature, 10, 2));
  put(" Pressure, Pa,   set to  :" + FmtF(o.pressure, 10, 2));
  put(" Rotation number set to  :" + FmtI(std::lround(o.rotationNumber), 10));
  put(" H-bond length, A, set to:" + FmtF(o.hBondLength, 10, 2));
  put(" Internal rotations found:" + FmtI(static_cast<long long>(s.rotors.size()), 10));
  put(" Coordinate sets found   :" + FmtI(s.SetsFound(), 10));
  put(" Frequencies found       :" + FmtI(static_cast<long long>(s.modes.size()), 10));
  put(" Num. of imaginary freqs :" + FmtI(s.nImag, 10));
  put(" Frequencies scaled by   :" + FmtF(o.freqScale, 10, 4));
  put(" Frequencies used in TD  >" + FmtF(o.freqBottom, 10, 2) + " cm-1");
  put(" Number of atoms         :" + FmtI(s.nAtoms, 10));
  put(" Molecular mass          :" + FmtF(s.molMass, 10, 4));
  put(" Symmetry group          : " + FmtA(symmetry.groupName, 4));
  put(" Approximate symmetry    : " + FmtA(symmetry.approximateName, 4) + FmtX(5));
  put(" Stoichiometry           : " + FmtA(Stoichiometry(s), 20));
  put(" ***********************************");
}

}  // namespace

std::string Stoichiometry(const Session& s) {
  std::vector<std::pair<std::string, int>> parts;
  for (int z = 0; z < ElementKinds; ++z) {
    if (s.elementCount[z] == 0) continue;
    std::string symbol;
    for (char c : ElementSymbol(z))
      if (c != ' ') symbol.push_back(c);
    if (symbol.empty()) symbol = fmt::format("Z{}", z);  // a charge without a symbol of its own
    parts.emplace_back(symbol, s.elementCount[z]);
  }
  auto rank = [](const std::string& symbol) { return symbol == "C" ? 0 : symbol == "H" ? 1 : 2; };
  const bool carbon = s.elementCount[6] > 0;
  std::stable_sort(parts.begin(), parts.end(), [&](const auto& a, const auto& b) {
    int ra = carbon ? rank(a.first) : 2, rb = carbon ? rank(b.first) : 2;
    return ra != rb ? ra < rb : a.first < b.first;
  });
  std::string formula;
  for (const auto& [symbol, count] : parts) formula += symbol + (count > 1 ? std::to_string(count) : "");
  return formula;
}

void PostReadReport(Session& s) {
  s.nImag = static_cast<int>(
      std::count_if(s.modes.begin(), s.modes.end(), [](const VibMode& m) { return m.freq < 0.0; }));
  // A tensor that does not converge ends the run ("too many iterations in jacobi").
  const InertiaAnalysis inertia = AnalyseInertia(s.xyz, s.atomMass);
  s.log.Line();
  WriteLines(s, InertiaReportLines(inertia, s.atomName, s.atomicNumber, s.xyz));
  s.xyz = inertia.centred;

  const SymmetryAnalysis symmetry =
      AnalyseSymmetry(s.atomicNumber, s.atomMass, s.xyz, s.opt.symEps, s.opt.noSymmetry);
  // Under /0 nothing waits for a key: the texts only go to the screen.
  for (const std::string& line : symmetry.consoleLines) s.Console() << line << "\n";
  const RotationNumberChoice rotation = ChooseRotationNumber(
      symmetry.off ? 1 : symmetry.RotationNumber(), s.opt.rotationNumberByUser, s.opt.rotationNumber);
  s.opt.rotationNumber = rotation.value;
  s.pointGroup = std::string(Trim(symmetry.groupName));
  s.opt.symEps = symmetry.symEpsAfter;
  s.log.Line();
  WriteLines(s, SymmetryReportLines(symmetry, rotation));
  ParametersInEffect(s, symmetry);
}

}  // namespace quintor

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
  s.log.Line();
  s.log.Line(" ****** PARAMETERS IN EFFECT *******");
  s.log.Line(" Temperature, K, set to  :" + FmtF(o.temperature, 10, 2));
  s.log.Line(" Pressure, Pa,   set to  :" + FmtF(o.pressure, 10, 2));
  s.log.Line(" Rotation number set to  :" + FmtI(std::lround(o.rotationNumber), 10));
  s.log.Line(" H-bond length, A, set to:" + FmtF(o.hBondLength, 10, 2));
  s.log.Line(" Internal rotations found:" + FmtI(static_cast<long long>(s.rotors.size()), 10));
  s.log.Line(" Coordinate sets found   :" + FmtI(std::max(s.iCyc, 0), 10));
  s.log.Line(" Frequencies found       :" + FmtI(static_cast<long long>(s.modes.size()), 10));
  s.log.Line(" Num. of imaginary freqs :" + FmtI(s.nImag, 10));
  s.log.Line(" Frequencies scaled by   :" + FmtF(o.freqScale, 10, 4));
  s.log.Line(" Frequencies used in TD  >" + FmtF(o.freqBottom, 10, 2) + " cm-1");
  s.log.Line(" Number of atoms         :" + FmtI(s.nAtoms, 10));
  s.log.Line(" Molecular mass          :" + FmtF(s.molMass, 10, 4));
  s.log.Line(" Symmetry group          : " + FmtA(symmetry.groupName, 4));
  s.log.Line(" Approximate symmetry    : " + FmtA(symmetry.approximateName, 4) + FmtX(5));
  s.log.Line(" Stoichiometry           : " + FmtA(Stoichiometry(s), 20));
  s.log.Line(" ***********************************");
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

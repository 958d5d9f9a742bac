// The services the window's Calculations menu calls: the evaluation and the
// engine's optimisation, as the batch run does them.
#include <array>
#include <filesystem>
#include <sstream>

#include "app/run.h"
#include "engine/engine.h"
#include "engine/geoopt.h"
#include "io/line_reader.h"
#include "readers/tdi_file.h"
#include "rotations/rotor_treatment.h"
#include "thermo/thermo.h"

namespace quintor {

namespace {

void Evaluate(Session& s, const std::string& specFile) {
  if (!specFile.empty()) {
    LineReader spec;
    if (spec.Open(specFile)) ReadSpecFile(s, spec);
  }
  if (s.opt.arir || !s.rotors.empty()) {
    HinderedRotors rotors;
    CalcTD(s, false, &rotors);
  } else {
    CalcTD(s);
  }
}

std::vector<Vec3> Optimise(Session& s, const GeoOptParameters& p, OptimisationRun& run) {
  std::vector<std::array<double, 3>> x(static_cast<size_t>(s.nAtoms));
  for (int i = 0; i < s.nAtoms; ++i)
    for (int k = 0; k < 3; ++k) x[i][k] = s.xyz[i][k] * constants::BohrToAngstrom;
  const std::vector<int> z(s.atomicNumber.begin(), s.atomicNumber.begin() + s.nAtoms);
  const int multiplicity = p.multiplicity > 0 ? p.multiplicity : engine::DefaultMultiplicity(z, p.charge);
  engine::GeoOptSettings settings;
  settings.minimiser = p.optimiser;
  settings.tolerances = {p.maxGradientNorm, p.maxStep, p.stepRange};
  settings.engine.printLevel = 0;
  // "Max FCN calls" of the dialog: the minimiser's cycles, one gradient each.
  if (p.maxCalls > 0) settings.maxIterations = p.maxCalls;
  if (run.onCycle)
    settings.onCycle = [&run](const engine::GeoOptProgress& c) {
      return run.onCycle(OptimisationCycle{c.cycle, c.functionCalls, c.heatKcal, c.gradientNorm});
    };
  settings.engine.workDir = std::filesystem::path(s.files.inputName).parent_path().string();
  std::ostringstream log, console;
  const engine::GeoOptResult r =
      engine::GeoOpt(engine::MethodOfMenu(p.method), z, x, p.charge, multiplicity, settings, &log, &console);
  std::istringstream lines(console.str() + log.str());
  for (std::string line; std::getline(lines, line);) run.messages.push_back(line);
  s.log.EndLine();
  std::istringstream logLines(log.str());
  for (std::string line; std::getline(logLines, line);) s.log.Line(line);
  run.heatKcal = r.heatKcal;
  run.cancelled = r.cancelled;
  std::vector<Vec3> out;
  if (!r.optimised || r.coordinates.size() != x.size()) return out;
  for (const auto& c : r.coordinates)
    out.push_back({c[0] * constants::AngstromToBohr, c[1] * constants::AngstromToBohr, c[2] * constants::AngstromToBohr});
  return out;
}

}  // namespace

const WindowServices& RunServices() {
  static const WindowServices services{Evaluate, Optimise};
  return services;
}

}  // namespace quintor

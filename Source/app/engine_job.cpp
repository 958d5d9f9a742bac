// The semi-empirical engine in a batch run: the heat of formation (/HOF) and
// the geometry optimisation (/GEOOPT) of the final coordinate set.
#include <array>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "app/run.h"
#include "engine/engine.h"
#include "engine/geoopt.h"
#include "io/fortran_io.h"
#include "model/run_stop.h"
#include "engine/parameters.h"

namespace quintor {

namespace {

constexpr double kBohrToAngstrom = constants::BohrToAngstrom;

// Each line of `text` as a line of the MainLog.
void LogLines(Session& s, const std::string& text) {
  std::istringstream in(text);
  std::string line;
  while (std::getline(in, line)) s.log.Line(line);
}

// An engine that can not run stops the run: its message in the MainLog,
// the engine's status as the process's.
[[noreturn]] void StopOnEngineFailure(Session& s, const std::string& message, int status) {
  LogLines(s, message);
  s.log.Line(" ERROR! The semi-empirical engine could not run");
  throw RunStop(status != 0 ? status : exit_status::Internal);
}

}  // namespace

void SettleEngineMultiplicity(Session& s) {
  Options& o = s.opt;
  if (o.multiplicity > 0 || s.nAtoms <= 0) return;
  const std::vector<int> z(s.atomicNumber.begin(), s.atomicNumber.begin() + s.nAtoms);
  o.multiplicity = engine::DefaultMultiplicity(z, o.charge);
  s.log.Line(" ATTENTION! Multiplicity not given: the engine and the thermochemistry take" +
             FmtI(o.multiplicity, 2));
}

void RunEngineJobs(Session& s) {
  const Options& o = s.opt;
  if (o.engineScan && !o.engineHeat && !o.engineGeoOpt) SettleEngineMultiplicity(s);
  if (!o.engineHeat && !o.engineGeoOpt) return;
  s.log.EndLine();
  s.log.Line();
  if (s.nAtoms <= 0) {
    s.log.Line(" WARNING! No atoms: the semi-empirical engine is not run");
    return;
  }
  std::vector<std::array<double, 3>> x(static_cast<size_t>(s.nAtoms));
  for (int i = 0; i < s.nAtoms; ++i)
    for (int k = 0; k < 3; ++k) x[i][k] = s.xyz[i][k] * kBohrToAngstrom;
  const std::vector<int> z(s.atomicNumber.begin(), s.atomicNumber.begin() + s.nAtoms);
  SettleEngineMultiplicity(s);
  const int multiplicity = o.multiplicity;
  const engine::EngineMethod method = engine::MethodOfMenu(o.engineMethod);
  EngineResults& results = s.engineResults;
  results.method = engine::MethodName(method);
  engine::EngineOptions options;
  options.printLevel = 0;
  options.unrestricted = o.engineUnrestricted;
  // The working files go beside the input, where the run writes its own.
  options.workDir = std::filesystem::path(s.files.inputName).parent_path().string();

  if (o.engineHeat) {
    std::ostringstream report;
    const engine::EngineResult r = engine::EngineRun(method, z, x, o.charge, multiplicity, false, &report, options);
    if (!engine::HeatStands(r)) {
      StopOnEngineFailure(s, report.str().empty() ? r.message : report.str(), r.exitStatus);
    } else {
      if (r.status == engine::EngineStatus::NotConverged) LogLines(s, report.str());
      std::ostringstream out;
      engine::PrintHeatOfFormation(out, method, r.heatKcal);
      results.heatGiven = true;
      results.heatKcal = r.heatKcal;
      LogLines(s, out.str());
      const std::string treatment = engine::OpenShellTreatment(multiplicity, o.engineUnrestricted, r.spinSquared);
      if (!treatment.empty()) s.log.Line(treatment);
    }
  }
  if (o.engineGeoOpt) {
    engine::GeoOptSettings settings;
    settings.engine = options;
    std::ostringstream log;
    const engine::GeoOptResult r = engine::GeoOpt(method, z, x, o.charge, multiplicity, settings, &log, &s.Console());
    results.optimised = r.optimised;
    results.optimisedHeatKcal = r.heatKcal;
    for (const auto& p : r.coordinates) results.optimisedXyz.push_back(Vec3{p[0], p[1], p[2]});
    LogLines(s, log.str());
    if (r.failed) StopOnEngineFailure(s, r.message, r.exitStatus);
    const std::string treatment = engine::OpenShellTreatment(multiplicity, o.engineUnrestricted, r.spinSquared);
    if (!treatment.empty()) s.log.Line(treatment);
  }
}

}  // namespace quintor

#include "rotations/engine_scan.h"

#include <array>
#include <sstream>

#include "engine/engine.h"
#include "io/fortran_io.h"
#include "model/run_stop.h"
#include "numeric/constants.h"

namespace quintor {

namespace {

constexpr int kPoints = 37;
constexpr double kStep = 10.0;  // degrees

std::string ScanMethodName(engine::EngineMethod m) {
  switch (m) {
    case engine::EngineMethod::MNDO: return "MNDO method";
    case engine::EngineMethod::AM1: return "AM1 method";
    case engine::EngineMethod::MNDOD: return "MNDO+dAO method";
    case engine::EngineMethod::PM3D: return "PM3d method";
    default: return "PM3 method";
  }
}

}  // namespace

std::vector<std::vector<PotentialPoint>> ScanByEngine(const std::vector<int>& atomicNumbers,
                                                      const std::vector<Vec3>& xyzBohr,
                                                      const std::vector<std::vector<int>>& groups,
                                                      const std::vector<AxisPoints>& axes,
                                                      const ScanSettings& settings, MainLog& log) {
  log.Line(" Estimation of internal rotation potential by " + ScanMethodName(settings.method));
  // One parameter set for all the points: the file is read once.
  engine::EngineOptions options;
  options.printLevel = 0;
  engine::ParameterSet parameters = engine::BuiltinParameters(settings.method);
  if (!settings.parameterFile.empty()) {
    const engine::ParameterFileResult read = engine::ReadParameterFile(settings.parameterFile, parameters);
    if (!read.ok) {
      log.Line(read.message);
      log.Line(" ERROR! The semi-empirical engine could not run");
      throw RunStop(exit_status::ReadError);
    }
  }
  options.workDir = settings.workDir;
  options.unrestricted = settings.unrestricted;

  std::vector<std::vector<PotentialPoint>> scans(groups.size());
  for (size_t r = 0; r < groups.size(); ++r) {
    std::vector<Vec3> xyz = xyzBohr;
    std::vector<std::array<double, 3>> angstrom(xyz.size());
    const std::vector<double>* density = nullptr;
    engine::EngineResult last;
    double first = 0.0;
    for (int k = 0; k < kPoints; ++k) {
      if (k > 0) RotateAtoms(axes[r].p1, axes[r].p2, kStep, groups[r], xyz);
      for (size_t i = 0; i < xyz.size(); ++i)
        for (int c = 0; c < 3; ++c) angstrom[i][c] = xyz[i][c] * constants::BohrToAngstrom;
      // Each point starts from the density of the one before: ten degrees away.
      options.startDensity = density;
      options.writeWorkingFiles = r == 0 && k == 0;  // the run's one set of working files
      std::ostringstream report;
      last = engine::EngineRunWith(parameters, atomicNumbers, angstrom, settings.charge, settings.multiplicity, false,
                                   &report, options);
      double energy = 0.0;
      if (last.status == engine::EngineStatus::Converged || last.status == engine::EngineStatus::NotConverged) {
        if (k == 0) first = last.heatKj;
        energy = last.heatKj - first;
        density = &last.density;
      } else {
        log.Line(last.message);
        log.Line(" ERROR! The engine could not compute point" + FmtI(k + 1, 3) + " of internal rotation" +
                 FmtI(static_cast<long long>(r + 1), 3));
        throw RunStop(last.exitStatus != 0 ? last.exitStatus : exit_status::Internal);
      }
      scans[r].push_back({k * kStep, energy});
    }
  }

  log.Line(" Relative potential energies in kJ/mol as a function of rotation angle");
  std::string head = " No.  Angle   Internal rotation";
  log.Line(head);
  std::string numbers = "           ";
  for (size_t r = 0; r < groups.size(); ++r) numbers += FmtI(static_cast<long long>(r + 1), 12);
  log.Line(numbers);
  log.Line("      (deg)");
  for (int k = 0; k < kPoints; ++k) {
    std::string row = FmtI(k + 1, 4) + FmtF(k * kStep, 7, 1);
    for (const auto& scan : scans) row += FmtF(scan[static_cast<size_t>(k)].energy, 12, 4);
    log.Line(row);
  }
  return scans;
}

}  // namespace quintor

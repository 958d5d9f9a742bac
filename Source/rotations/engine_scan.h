// The potential of internal rotations computed by the semi-empirical
// engine: each rotating group turned about its axis in 36 steps of 10
// degrees, with the heat of formation at every point.
#pragma once

#include <string>
#include <vector>

#include "engine/parameters.h"
#include "io/main_log.h"
#include "numeric/vec3.h"
#include "rotations/fourier_potential.h"
#include "rotations/recognition.h"

namespace quintor {

struct ScanSettings {
  engine::EngineMethod method = engine::EngineMethod::PM3;
  int charge = 0;
  int multiplicity = 1;
  bool unrestricted = false;  // open shells by UHF
  std::string workDir;  // the engine's working files; "" for the current directory
  std::string parameterFile = "MNDOD.DAT";  // read once; a missing file is no error, a bad line stops the run
};

// The 37 points (0, 10, ..., 360 degrees; kJ/mol relative to the first) of
// each rotation, the groups turned one at a time on the geometry in bohr.
// The table goes to the MainLog. A parameter file with a bad line, or a
// point the engine can not compute, stops the run (RunStop) after its message.
std::vector<std::vector<PotentialPoint>> ScanByEngine(const std::vector<int>& atomicNumbers,
                                                      const std::vector<Vec3>& xyzBohr,
                                                      const std::vector<std::vector<int>>& groups,
                                                      const std::vector<AxisPoints>& axes,
                                                      const ScanSettings& settings, MainLog& log);

}  // namespace quintor

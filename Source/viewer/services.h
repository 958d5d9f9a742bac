// What the window asks of the rest of the program: the evaluation of the
// thermochemistry and the engine's optimisation, which live in layers the
// viewer does not see. The run hands them down; a viewer without them says
// " Not available yet".
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "model/session.h"
#include "numeric/vec3.h"
#include "viewer/dialogs.h"

namespace quintor {

// Where the engine's optimisation stands after one of its cycles.
struct OptimisationCycle {
  int cycle = 0;
  int functionCalls = 0;
  double heatKcal = 0.0;
  double gradientNorm = 0.0;  // kcal/mol/A
};

// One optimisation from the window: the watcher of its cycles and what it
// reports back.
struct OptimisationRun {
  // Called after each cycle; false cancels the optimisation between cycles.
  std::function<bool(const OptimisationCycle&)> onCycle;
  std::vector<std::string> messages;  // the engine's lines
  double heatKcal = 0.0;              // of the geometry returned
  bool cancelled = false;             // stopped by onCycle: the geometry is the one reached so far
};

struct WindowServices {
  // The evaluation with the options in force (ARIR and IRMC as set), its
  // tables written to the MainLog; `specFile`, when not empty, is read first.
  std::function<void(Session&, const std::string& specFile)> thermodynamics;
  // The engine's optimisation of the working coordinates; "Max FCN calls"
  // limits its cycles. The result is the optimised geometry in bohr, empty
  // when the engine did not run.
  std::function<std::vector<Vec3>(Session&, const GeoOptParameters&, OptimisationRun&)> geometryOptimisation;
};

}  // namespace quintor

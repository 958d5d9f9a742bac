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

struct WindowServices {
  // The evaluation with the options in force (ARIR and IRMC as set), its
  // tables written to the MainLog; `specFile`, when not empty, is read first.
  std::function<void(Session&, const std::string& specFile)> thermodynamics;
  // The engine's optimisation of the working coordinates. `messages` gets
  // its lines; the result is the optimised geometry in bohr (empty when the
  // engine did not run) and its heat of formation in kcal/mol.
  std::function<std::vector<Vec3>(Session&, const GeoOptParameters&, std::vector<std::string>& messages,
                                   double& heatKcal)>
      geometryOptimisation;
};

}  // namespace quintor

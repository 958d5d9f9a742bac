// The Calculations menu of the window: Thermodynamics (dialog 115, then the
// evaluation) and Geometry optimization (dialog 114, then the engine on the
// structure on show, whose result becomes a new coordinate set).
#pragma once

#include "model/session.h"
#include "viewer/commands.h"
#include "viewer/viewer_state.h"

namespace quintor {

Outcome ThermodynamicsCommand(Session& s, ViewerState& v, Prompts& prompts);
Outcome GeometryOptimizationCommand(Session& s, ViewerState& v, Prompts& prompts);

}  // namespace quintor

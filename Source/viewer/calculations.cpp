#include "viewer/calculations.h"

#include "io/fortran_io.h"
#include "viewer/services.h"

namespace quintor {

namespace {

Outcome NotHere(ViewerState& v) {
  v.messages.push_back(std::string(NotAvailable));
  return Outcome{};
}

}  // namespace

Outcome ThermodynamicsCommand(Session& s, ViewerState& v, Prompts& prompts) {
  Outcome out;
  if (v.services == nullptr || !v.services->thermodynamics) return NotHere(v);
  DialogValues values = ThermoDialogValues(s);
  if (prompts.AskDialog(115, values) != DialogOk) return out;
  ThermoDialogFiles files;
  if (!ApplyThermoDialog(values, s, files)) {
    // No repeat caption in this dialog: an unreadable number ends the work.
    prompts.ShowMessage(" ERROR! Invalid number in the thermodynamic parameters");
    out.ending = Ending::Exit;
    return out;
  }
  v.messages.push_back(" Thermodynamic calculation at T =" + FmtF(s.opt.temperature, 8, 2) + " K, P =" +
                       FmtF(s.opt.pressure, 11, 2) + " Pa: results in the MainLog");
  v.services->thermodynamics(s, files.specName);
  if (files.exitAfter) out.ending = Ending::Exit;
  return out;
}

Outcome GeometryOptimizationCommand(Session& s, ViewerState& v, Prompts& prompts) {
  Outcome out;
  if (v.services == nullptr || !v.services->geometryOptimisation) return NotHere(v);
  DialogValues values = Presets(DialogNumber(114));
  if (prompts.AskDialog(114, values) != DialogOk) return out;
  const auto parameters = ReadGeoOptDialog(values);
  if (!parameters) {
    prompts.ShowMessage(" ERROR! Invalid number in the optimization parameters");
    out.ending = Ending::Exit;
    return out;
  }
  // The progress after each cycle; a Cancel stops between cycles.
  OptimisationRun run;
  run.onCycle = [&](const OptimisationCycle& c) {
    return prompts.Progress(" Cycle" + FmtI(c.cycle, 5) + "   Heat of Formation:" + FmtF(c.heatKcal, 12, 4) +
                                " kcal/mol   Gradient norm:" + FmtF(c.gradientNorm, 10, 4),
                            c.cycle, parameters->maxCalls);
  };
  const std::vector<Vec3> xyz = v.services->geometryOptimisation(s, *parameters, run);
  prompts.EndProgress();
  for (std::string& l : run.messages) v.messages.push_back(std::move(l));
  if (static_cast<int>(xyz.size()) != s.nAtoms || s.nAtoms == 0) return out;
  // The optimised geometry (or the one reached at a Cancel) as a new
  // coordinate set, shown at once.
  ++s.iCyc;
  CoordSet& set = s.Set(s.iCyc);
  set.xyz = xyz;
  set.energy = run.heatKcal;
  v.currentSet = s.iCyc;
  LoadCoordinateSet(s, v);
  v.messages.push_back(std::string(run.cancelled ? " Optimization cancelled: the geometry reached so far"
                                                 : " Optimized geometry") +
                       " is coordinate set" + FmtI(s.iCyc, 5) + ", Heat of Formation:" + FmtF(run.heatKcal, 12, 4) +
                       " kcal/mol");
  return out;
}

}  // namespace quintor

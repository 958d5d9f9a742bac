#include "engine/geoopt.h"

#include <cmath>
#include <ostream>

#include "engine/constants.h"
#include "engine/gradient.h"
#include "numeric/dfp_minimiser.h"
#include "io/fortran_io.h"
#include "model/run_stop.h"

namespace quintor::engine {

GeoOptResult GeoOpt(EngineMethod method, const std::vector<int>& atomicNumbers,
                    const std::vector<std::array<double, 3>>& coordsAngstrom, int charge, int multiplicity,
                    const GeoOptSettings& settings, std::ostream* log, std::ostream* console) {
  GeoOptResult res;
  res.coordinates = coordsAngstrom;
  const std::string kHead = std::string(" Geometry optimization using ") + MethodName(method) + " method";
  if (console) *console << kHead << '\n';
  if (log) *log << kHead << '\n';

  // The parameters are read once for the whole optimisation.
  ParameterSet set = BuiltinParameters(method);
  if (!settings.engine.parameterFile.empty()) {
    const ParameterFileResult r = ReadParameterFile(settings.engine.parameterFile, set);
    if (!r.ok) {
      if (console) *console << r.message << '\n';
      res.message = r.message;
      res.failed = true;
      res.exitStatus = exit_status::ReadError;
      return res;
    }
  }

  std::vector<std::pair<int, int>> vars = settings.variables;
  if (vars.empty())
    for (int a = 1; a <= static_cast<int>(coordsAngstrom.size()); ++a)
      for (int k = 1; k <= 3; ++k) vars.push_back({a, k});
  std::array<double, 3> tol = settings.tolerances;
  const double kDefaults[3] = {0.1, 0.001, 0.0001};
  for (int i = 0; i < 3; ++i)
    if (!(tol[i] > 0)) tol[i] = kDefaults[i];

  if (settings.minimiser == 2) {
    if (console) *console << " ERROOR! DUMINF call in GeoOpt\n";
    return res;
  }

  std::vector<double> x(vars.size());
  for (size_t i = 0; i < vars.size(); ++i) x[i] = coordsAngstrom[vars[i].first - 1][vars[i].second - 1];
  std::vector<std::array<double, 3>> work = coordsAngstrom;
  auto place = [&](const std::vector<double>& v) {
    for (size_t i = 0; i < vars.size(); ++i) work[vars[i].first - 1][vars[i].second - 1] = v[i];
  };

  EngineOptions opt = settings.engine;
  opt.printLevel = 0;
  opt.writeWorkingFiles = false;  // written once, at the optimum
  std::vector<double> density;  // carried from call to call as the SCF start
  std::vector<double> alpha;      // its alpha part (unrestricted)
  std::vector<double> densityAt;  // the variables at which `density` is converged
  int cycle = 0;
  auto energy = [&](const std::vector<double>& v, bool gradientCall) {
    place(v);
    EngineOptions o = opt;
    o.gradientCalculation = gradientCall;
    o.startDensity = density.empty() ? nullptr : &density;
    EngineResult r = EngineRunWith(set, atomicNumbers, work, charge, multiplicity, false, log, o);
    ++res.energyCalls;
    if (!gradientCall && !r.density.empty()) {
      density = std::move(r.density);
      alpha = std::move(r.alphaDensity);
      densityAt = v;
    }
    return r.heatKcal;
  };
  auto function = [&](const std::vector<double>& v) {
    const double e = energy(v, false);
    ++cycle;
    if (console) *console << " Cycle:" << FmtI(cycle, 5) << "   Energy =" << FmtF(e * kKcalToKj, 20, 8) << '\n';
    return e;
  };
  // Closed shells and unrestricted open shells are stationary in their
  // densities; the half-electron correction is not, so it takes differences.
  const bool unrestricted = settings.engine.unrestricted;
  const bool pairwise = !settings.numericalGradient && (multiplicity == 1 || unrestricted);
  auto gradient = [&](const std::vector<double>& v, std::vector<double>& g) {
    g.assign(v.size(), 0.0);
    if (pairwise) {
      // The density of the last energy serves when it was taken here.
      if (densityAt != v) {
        place(v);
        EngineOptions o = opt;
        o.startDensity = density.empty() ? nullptr : &density;
        EngineResult r = EngineRunWith(set, atomicNumbers, work, charge, multiplicity, false, log, o);
        ++res.energyCalls;
        if (!r.density.empty()) {
          density = std::move(r.density);
          alpha = std::move(r.alphaDensity);
          densityAt = v;
        }
      }
      place(v);
      const auto atoms = FixedDensityGradient(set, atomicNumbers, work, density, unrestricted ? &alpha : nullptr);
      for (size_t i = 0; i < vars.size(); ++i) g[i] = atoms[vars[i].first - 1][vars[i].second - 1];
      return;
    }
    std::vector<double> y = v;
    for (size_t i = 0; i < v.size(); ++i) {
      y[i] = v[i] + settings.step;
      const double ep = energy(y, true);
      y[i] = v[i] - settings.step;
      const double em = energy(y, true);
      y[i] = v[i];
      g[i] = (ep - em) * 0.5 / settings.step;
    }
  };

  // The start tells whether the engine can compute the structure at all.
  {
    place(x);
    const EngineResult first = EngineRunWith(set, atomicNumbers, work, charge, multiplicity, false, nullptr, opt);
    if (!HeatStands(first)) {
      if (console) *console << first.message << '\n';
      res.message = first.message;
      res.failed = true;
      res.exitStatus = first.exitStatus;
      return res;
    }
  }

  DfpSettings ds;
  ds.gradientTolerance = tol[0];
  ds.valueTolerance = tol[1];
  ds.stepTolerance = tol[2];
  ds.maxIterations = settings.maxIterations;
  // About the inverse of a bending force constant (100 kcal/mol/A^2): the
  // first steps are then of the size the molecule needs, where a unit matrix
  // sends every atom 0.2 A and the line searches spend their energies on
  // backing off (hexadecane in PM3: 39 energies in place of 106).
  ds.initialInverseHessian = 0.01;
  if (settings.onCycle)
    ds.onIteration = [&](int cycle, int calls, double value, double gradientNorm) {
      return settings.onCycle(GeoOptProgress{cycle, calls, value, gradientNorm});
    };
  const DfpResult dr = DfpMinimise(x, function, gradient, ds);
  if (!dr.message.empty() && console) *console << ' ' << dr.message << '\n';
  place(x);
  {
    EngineOptions last = settings.engine;
    last.printLevel = 0;
    last.startDensity = density.empty() ? nullptr : &density;
    res.spinSquared = EngineRunWith(set, atomicNumbers, work, charge, multiplicity, false, nullptr, last).spinSquared;
  }
  res.optimised = true;
  res.coordinates = work;
  res.heatKcal = dr.value;
  res.gradientNorm = dr.gradientNorm;
  res.functionCalls = dr.functionCalls;
  res.gradientCalls = dr.gradientCalls;
  res.message = dr.message;
  res.cancelled = dr.stopped;
  if (console)
    *console << (res.cancelled ? " OPTIMIZATION CANCELLED.  E =" : " OPTIMIZATION FINISHED.  E =")
             << FmtF(res.heatKcal * kKcalToKj, 12, 2) << " kJ/mol.  G =" << FmtF(res.gradientNorm, 10, 4)
             << "  FCN=" << FmtI(res.functionCalls, 4) << '\n';
  if (log) {
    if (res.cancelled)
      *log << " Optimization cancelled by the user after cycle" << FmtI(dr.iterations, 5)
           << ": the geometry reached so far follows\n";
    *log << " Final Heat of Formation: " << FmtF(res.heatKcal * kKcalToKj, 12, 4) << " kJ/mol  ="
         << FmtF(res.heatKcal, 12, 4) << " kcal/mol\n"
         << " Final Gradient Norm    : " << FmtF(res.gradientNorm, 12, 4) << '\n'
         << " F calls:" << FmtI(res.functionCalls, 5) << "     G calls:" << FmtI(res.gradientCalls, 5) << '\n'
         << " Optimized coordinates:\n";
    for (size_t a = 0; a < work.size(); ++a)
      *log << ' ' << FmtA(ElementSymbol(atomicNumbers[a]), 2) << FmtF(work[a][0], 14, 6) << FmtF(work[a][1], 14, 6)
           << FmtF(work[a][2], 14, 6) << '\n';
  }
  return res;
}

}  // namespace quintor::engine

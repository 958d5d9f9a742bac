// Geometry optimisation with the engine: energies from EngineRun, gradients
// at fixed density pair by pair (numerical for restricted open shells), and the DFP
// minimiser in Cartesian coordinates.
#pragma once

#include <array>
#include <functional>
#include <iosfwd>
#include <utility>
#include <vector>

#include "engine/engine.h"

namespace quintor::engine {

// Where an optimisation stands after one cycle (an iteration of the
// minimiser): the heat of formation and the gradient norm at its point.
struct GeoOptProgress {
  int cycle = 0;
  int functionCalls = 0;
  double heatKcal = 0;
  double gradientNorm = 0;  // kcal/mol/A
};

struct GeoOptSettings {
  // 1: the built-in minimiser; 2: the library minimiser this version lacks.
  int minimiser = 1;
  // Tolerances; a value not above 0 takes its default 0.1, 0.001, 0.0001:
  // largest gradient component (kcal/mol/A), energy change (kcal/mol), step (A).
  std::array<double, 3> tolerances{0, 0, 0};
  // Cycles of the minimiser, one gradient each; more ends the search with
  // "too many iterations in dfpmin".
  int maxIterations = 200;
  // Called after each cycle; false cancels the optimisation there, between
  // cycles, and the geometry reached so far is the result.
  std::function<bool(const GeoOptProgress&)> onCycle;
  double step = 0.0001;  // finite-difference step of the numerical gradient, angstrom
  // The gradient by central differences of whole energies (two SCFs per
  // coordinate) in place of the pair-wise one at fixed density; restricted
  // (half-electron) open shells always take it.
  bool numericalGradient = false;
  // Free coordinates as pairs (atom number from 1, axis 1..3); empty for all.
  std::vector<std::pair<int, int>> variables;
  EngineOptions engine;  // options of each energy call (printing is off)
};

struct GeoOptResult {
  bool optimised = false;                          // the minimiser ran (choice 1)
  bool cancelled = false;                          // onCycle stopped it; `coordinates` are where it stood
  std::vector<std::array<double, 3>> coordinates;  // angstrom
  double heatKcal = 0;
  double gradientNorm = 0;
  int functionCalls = 0;
  int gradientCalls = 0;
  int energyCalls = 0;  // EngineRun calls, gradients included
  std::string message;  // the minimiser's stop message, if any
  // Set when the engine refused the structure or its parameters: the
  // engine's message is in `message` and nothing was optimised.
  bool failed = false;
  int exitStatus = 0;
  double spinSquared = 0;  // <S^2> at the optimum (unrestricted)
};

// `log` receives the log lines, `console` the progress lines (" Cycle: ...")
// and the messages; either may be null.
GeoOptResult GeoOpt(EngineMethod method, const std::vector<int>& atomicNumbers,
                    const std::vector<std::array<double, 3>>& coordsAngstrom, int charge, int multiplicity,
                    const GeoOptSettings& settings, std::ostream* log, std::ostream* console);

}  // namespace quintor::engine

// Quasi-Newton minimisation of the Davidon-Fletcher-Powell kind with a
// backtracking line search, for smooth functions of a few hundred variables.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace quintor {

struct DfpSettings {
  double gradientTolerance = 0.1;  // stop when the largest gradient component is below this
  double valueTolerance = 1e-3;    // ... or when the function changes by less than this in a step
  double stepTolerance = 1e-4;     // ... or when no variable moves by more than this
  int maxIterations = 200;
  double maxStep = 0.2;            // longest first step of a line search (in the variables' units)
  double initialInverseHessian = 1;  // the diagonal of the start's inverse Hessian (variable^2 per function unit)
  // Called after each iteration with its number, the function calls so far,
  // the value and the gradient norm at the new point; false stops the search
  // there (a user's cancel), with the point reached kept in x.
  std::function<bool(int iteration, int functionCalls, double value, double gradientNorm)> onIteration;
};

struct DfpResult {
  double value = 0;
  double gradientNorm = 0;
  int iterations = 0;
  int functionCalls = 0;
  int gradientCalls = 0;
  bool converged = false;
  bool stopped = false;  // onIteration asked to stop
  std::string message;  // "roundoff problem in lnsrch", "too many iterations in dfpmin", or empty
};

using DfpFunction = std::function<double(const std::vector<double>&)>;
using DfpGradient = std::function<void(const std::vector<double>&, std::vector<double>&)>;

// Minimises f from x (changed in place to the best point found).
DfpResult DfpMinimise(std::vector<double>& x, const DfpFunction& f, const DfpGradient& gradient,
                      const DfpSettings& settings = {});

}  // namespace quintor

#include "numeric/dfp_minimiser.h"

#include <algorithm>
#include <cmath>

#include "numeric/vecn.h"

namespace quintor {

namespace {

using vecn::Dot;

double MaxAbs(const std::vector<double>& a) {
  double m = 0;
  for (double v : a) m = std::max(m, std::abs(v));
  return m;
}

// Backtracking along p from x0 until the Armijo condition holds. Returns
// false when the step has shrunk to nothing without a decrease.
bool LineSearch(const std::vector<double>& x0, double f0, const std::vector<double>& g0, std::vector<double>& p,
                std::vector<double>& x, double& f, const DfpFunction& fn, const DfpSettings& s, int& calls) {
  const double pmax = MaxAbs(p);
  if (pmax > s.maxStep)
    for (double& v : p) v *= s.maxStep / pmax;
  double slope = Dot(g0, p);
  if (slope >= 0) {  // not a descent direction: go down the gradient instead
    for (size_t i = 0; i < p.size(); ++i) p[i] = -g0[i];
    const double gm = MaxAbs(p);
    if (gm > s.maxStep)
      for (double& v : p) v *= s.maxStep / gm;
    slope = Dot(g0, p);
  }
  constexpr double kArmijo = 1e-4;
  double lambda = 1.0, lambdaPrev = 1.0, fPrev = f0;
  const double lambdaMin = 1e-10 / std::max(MaxAbs(p), 1e-30);
  for (;;) {
    for (size_t i = 0; i < x.size(); ++i) x[i] = x0[i] + lambda * p[i];
    f = fn(x);
    ++calls;
    if (f <= f0 + kArmijo * lambda * slope) return true;
    if (lambda < lambdaMin) {
      x = x0;
      f = f0;
      return false;
    }
    double next;
    if (lambda == 1.0) {
      next = -slope / (2 * (f - f0 - slope));
    } else {
      const double r1 = f - f0 - lambda * slope, r2 = fPrev - f0 - lambdaPrev * slope;
      const double a = (r1 / (lambda * lambda) - r2 / (lambdaPrev * lambdaPrev)) / (lambda - lambdaPrev);
      const double b = (-lambdaPrev * r1 / (lambda * lambda) + lambda * r2 / (lambdaPrev * lambdaPrev)) /
                       (lambda - lambdaPrev);
      if (a == 0) {
        next = -slope / (2 * b);
      } else {
        const double disc = b * b - 3 * a * slope;
        next = disc < 0 ? 0.5 * lambda : (b <= 0 ? (-b + std::sqrt(disc)) / (3 * a) : -slope / (b + std::sqrt(disc)));
      }
      next = std::min(next, 0.5 * lambda);
    }
    lambdaPrev = lambda;
    fPrev = f;
    lambda = std::max(next, 0.1 * lambda);
  }
}

}  // namespace

DfpResult DfpMinimise(std::vector<double>& x, const DfpFunction& f, const DfpGradient& gradient,
                      const DfpSettings& s) {
  DfpResult r;
  const size_t n = x.size();
  std::vector<double> g(n), gNew(n), p(n), xNew(n), dx(n), dg(n), hdg(n);
  // Inverse Hessian, started as a diagonal matrix scaled so that the first step is modest.
  std::vector<double> h(n * n, 0.0);
  double fx = f(x);
  ++r.functionCalls;
  gradient(x, g);
  ++r.gradientCalls;
  for (size_t i = 0; i < n; ++i) h[i * n + i] = s.initialInverseHessian;
  for (int it = 1; it <= s.maxIterations; ++it) {
    r.iterations = it;
    if (MaxAbs(g) < s.gradientTolerance) {
      r.converged = true;
      break;
    }
    for (size_t i = 0; i < n; ++i) {
      double v = 0;
      for (size_t j = 0; j < n; ++j) v -= h[i * n + j] * g[j];
      p[i] = v;
    }
    double fNew = fx;
    if (!LineSearch(x, fx, g, p, xNew, fNew, f, s, r.functionCalls)) {
      r.message = "roundoff problem in lnsrch";
      break;
    }
    for (size_t i = 0; i < n; ++i) dx[i] = xNew[i] - x[i];
    const double df = fx - fNew;
    x = xNew;
    fx = fNew;
    gradient(x, gNew);
    ++r.gradientCalls;
    if (MaxAbs(dx) < s.stepTolerance || (df >= 0 && df < s.valueTolerance && MaxAbs(gNew) < 10 * s.gradientTolerance)) {
      g = gNew;
      r.converged = true;
      break;
    }
    for (size_t i = 0; i < n; ++i) dg[i] = gNew[i] - g[i];
    g = gNew;
    // Davidon-Fletcher-Powell update of the inverse Hessian, skipped when
    // the curvature along the step is not positive.
    for (size_t i = 0; i < n; ++i) {
      double v = 0;
      for (size_t j = 0; j < n; ++j) v += h[i * n + j] * dg[j];
      hdg[i] = v;
    }
    const double fac = Dot(dg, dx), fae = Dot(dg, hdg);
    if (fac > 1e-10 * std::sqrt(Dot(dg, dg) * Dot(dx, dx)) && fae > 0) {
      for (size_t i = 0; i < n; ++i)
        for (size_t j = 0; j < n; ++j) h[i * n + j] += dx[i] * dx[j] / fac - hdg[i] * hdg[j] / fae;
    }
    if (s.onIteration && !s.onIteration(it, r.functionCalls, fx, std::sqrt(Dot(g, g)))) {
      r.stopped = true;
      break;
    }
    if (it == s.maxIterations) r.message = "too many iterations in dfpmin";
  }
  r.value = fx;
  r.gradientNorm = std::sqrt(Dot(g, g));
  return r;
}

}  // namespace quintor

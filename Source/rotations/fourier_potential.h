// Barrier of an internal rotation from its potential curve: the points are
// splined, sampled every 20 degrees from 0 to 180 and cosine-transformed; the
// barrier of the n-fold term is the range of the curve weighted by that
// term's share of the mean.
#pragma once

#include <array>
#include <ostream>
#include <vector>

namespace quintor {

// One point of a rotation potential.
struct PotentialPoint {
  double angle = 0.0;   // degrees
  double energy = 0.0;  // kJ/mol
};

inline constexpr int FourierTerms = 10;  // c0 .. c9
using CosineSeries = std::array<double, FourierTerms>;

struct FourierBarrier {
  // c(n) = y(0) + (-1)^n y(9) + 2 sum_{k=1..8} y(k) cos(n k pi/9) of the
  // samples y(k) = V(k pi/9), V relative to the first point; the curve is
  // V = c0/2 + c1 cos x + ... up to a common factor of 9.
  CosineSeries c{};
  double range = 0.0;  // D: highest energy minus that of the first point, kJ/mol
  int n = 1;           // fold of the term used for V0
  double V0 = 0.0;     // D |c(n)| / (c0/2), kJ/mol

  // For the Monte Carlo integration, the series scaled so that its highest
  // value on a 1-degree grid is D (x in radians, kJ/mol):
  CosineSeries potential{};  // V(x)   = sum potential[m] cos(m x)  (potential[0] = scaled c0/2)
  CosineSeries slope{};      // V'(x)  = sum slope[m] sin(m x),      slope[m] = -m potential[m]
  CosineSeries curvature{};  // V''(x) = sum curvature[m] cos(m x),  curvature[m] = -m^2 potential[m]
};

// The spline through the potential is of this order (cubic), or of the
// number of points when there are fewer.
inline constexpr int PotentialSplineOrder = 4;

// Fourier analysis of the potential `points` (any order, angles in degrees,
// covering 0 to 180). Without automatic recognition (`autoFold` false) the
// fold is `nRot`; with it, the term of largest magnitude among c1..c9. Writes
// the coefficient table to `out`. Throws SplineFailure when the points do not
// span 0..180 degrees or two angles coincide.
FourierBarrier FourierPotential(std::vector<PotentialPoint> points, int nRot, bool autoFold, std::ostream& out);

// Sums of the series at x (radians).
double CosineSum(const CosineSeries& a, double x);
double SineSum(const CosineSeries& b, double x);

}  // namespace quintor

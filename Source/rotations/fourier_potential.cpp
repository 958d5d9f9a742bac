#include "rotations/fourier_potential.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "numeric/bspline.h"
#include "io/fortran_io.h"
#include "numeric/constants.h"

namespace quintor {

namespace {

constexpr double kPi = constants::Pi;
constexpr double kDegToRad = kPi / 180.0;
constexpr int kSamples = 9;  // intervals of pi/9 between 0 and pi

// Ascending by angle, equal angles keep their order.
void SelectionSortByAngle(std::vector<PotentialPoint>& p) {
  for (size_t i = 0; i + 1 < p.size(); ++i) {
    size_t k = i;
    for (size_t j = i + 1; j < p.size(); ++j)
      if (p[j].angle < p[k].angle) k = j;
    if (k != i) std::swap(p[i], p[k]);
  }
}

}  // namespace

double CosineSum(const CosineSeries& a, double x) {
  double v = 0.0;
  for (int m = 0; m < FourierTerms; ++m) v += a[m] * std::cos(m * x);
  return v;
}

double SineSum(const CosineSeries& b, double x) {
  double v = 0.0;
  for (int m = 0; m < FourierTerms; ++m) v += b[m] * std::sin(m * x);
  return v;
}

FourierBarrier FourierPotential(std::vector<PotentialPoint> points, int nRot, bool autoFold, std::ostream& out) {
  FourierBarrier r;
  if (points.empty()) return r;
  SelectionSortByAngle(points);

  const double e1 = points.front().energy;
  double highest = e1;
  for (const PotentialPoint& p : points) highest = std::max(highest, p.energy);
  r.range = highest - e1;

  std::vector<double> x, e;
  for (const PotentialPoint& p : points) {
    x.push_back(p.angle * kDegToRad);
    e.push_back(p.energy - e1);
  }
  const int order = std::min(PotentialSplineOrder, static_cast<int>(points.size()));
  const Spline1D spline = InterpolateNotAKnot(x, e, order);
  std::array<double, kSamples + 1> y{};
  for (int k = 0; k <= kSamples; ++k) y[k] = spline(k * kPi / kSamples);

  // Discrete cosine transform of the samples (trapezoid weights at the ends).
  for (int n = 0; n < FourierTerms; ++n) {
    double sum = 0.0;
    for (int k = 1; k < kSamples; ++k) sum += y[k] * std::cos(n * k * kPi / kSamples);
    r.c[n] = y[0] + (n % 2 == 0 ? 1.0 : -1.0) * y[kSamples] + 2.0 * sum;
  }

  r.n = nRot;
  if (autoFold) {
    r.n = 1;
    for (int n = 2; n < FourierTerms; ++n)
      if (std::fabs(r.c[n]) > std::fabs(r.c[r.n])) r.n = n;
  }
  const bool inSeries = r.n >= 0 && r.n < FourierTerms;
  r.V0 = inSeries && r.c[0] != 0.0 ? r.range * std::fabs(r.c[r.n]) / (r.c[0] / 2.0) : 0.0;

  out << " Rotation barrier is estimated from the Fourier-transformed rotational potential\n";
  out << " V = c0/2 + c1*Cos(x) + c2*Cos(2*x) + ... ,    0<=x<=Pi\n";
  out << " First coefficients are:\n";
  out << "     n      C(n)\n";
  for (int n = 0; n < FourierTerms; ++n) {
    out << FmtI(n, 6) << FmtF(r.c[n], 12, 5);
    if (n == r.n) {
      if (autoFold)
        out << "  <-- This is " << FmtI(n, 1) << "-fold potential";
      else
        out << "  <-- This value is used for V0 evaluation";
    }
    out << "\n";
  }

  // The series for the Monte Carlo integration, brought to the range D of
  // the points at its highest value on a 1-degree grid.
  CosineSeries a = r.c;
  a[0] = r.c[0] / 2.0;
  double top = -9999.0;
  for (int deg = 0; deg < 360; ++deg) top = std::max(top, CosineSum(a, deg * kDegToRad));
  const double scale = top > 0.0 ? r.range / top : 0.0;
  for (int m = 0; m < FourierTerms; ++m) {
    r.potential[m] = scale * a[m];
    r.slope[m] = -m * r.potential[m];
    r.curvature[m] = -static_cast<double>(m) * m * r.potential[m];
  }
  return r;
}

}  // namespace quintor

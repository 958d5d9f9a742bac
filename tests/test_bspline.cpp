#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "numeric/bspline.h"

namespace quintor {
namespace {

using Knots = std::vector<double>;

// ---- Knot sequences ------------------------------------------------------

struct KnotCase {
  const char* name;
  Knots x;
  int order;
  Knots expected;
};

// Written out by hand from the not-a-knot rule: k-fold end knots; the
// interior knots skip the first and last k/2 data points (even k) or sit
// halfway between neighbours (odd k).
const KnotCase kKnotCases[] = {
    {"order 2 is the broken line", {0, 1, 3, 6, 10}, 2, {0, 0, 1, 3, 6, 10, 10}},
    {"order 4 drops x2 and x(n-1)", {0, 1, 3, 6, 10, 15}, 4, {0, 0, 0, 0, 3, 6, 15, 15, 15, 15}},
    {"order 3 uses midpoints", {0, 1, 3, 6, 10}, 3, {0, 0, 0, 2, 4.5, 10, 10, 10}},
    {"order 1 breaks halfway", {0, 1, 3}, 1, {0, 0.5, 2, 3}},
};

TEST(BSplineKnots, NotAKnotSequences) {
  for (const KnotCase& c : kKnotCases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(dbsnak(c.x, c.order), c.expected);
  }
}

TEST(BSplineKnots, OrderAboveCountStops) {
  try {
    dbsnak({0.0, 1.0}, 3);
    FAIL() << "no failure";
  } catch (const SplineFailure& f) {
    EXPECT_EQ(std::string(f.what()),
              "subroutine dbsnak: error\n0 <= kxord <= nx is required.\nkxord = 3 and nx = 2 is given.");
  }
}

// ---- One dimension -------------------------------------------------------

const std::vector<double> kUneven = {-1.0, -0.7, -0.1, 0.3, 0.35, 0.9, 1.6, 2.0, 2.8};

double Wiggle(double x) { return std::sin(3.0 * x) + 0.3 * x * x; }

TEST(BSpline1D, ReproducesItsDataPointsAtEveryOrder) {
  std::vector<double> f;
  for (double x : kUneven) f.push_back(Wiggle(x));
  for (int order = 1; order <= 6; ++order) {
    SCOPED_TRACE(order);
    const Spline1D s = InterpolateNotAKnot(kUneven, f, order);
    for (size_t i = 0; i < kUneven.size(); ++i) EXPECT_NEAR(s(kUneven[i]), f[i], 1e-12);
  }
}

// A spline of order k holds every polynomial of degree k-1, so interpolation
// gives the polynomial back everywhere, not only at the points.
struct PolynomialCase {
  int order;
  std::function<double(double)> f;
};

TEST(BSpline1D, ReproducesPolynomialsOfItsDegree) {
  const PolynomialCase cases[] = {
      {2, [](double x) { return 2.0 - 3.0 * x; }},
      {3, [](double x) { return 1.0 + x - 0.5 * x * x; }},
      {4, [](double x) { return 0.2 * x * x * x - x * x + 4.0; }},
      {5, [](double x) { return x * x * x * x - 2.0 * x; }},
  };
  for (const PolynomialCase& c : cases) {
    SCOPED_TRACE(c.order);
    std::vector<double> f;
    for (double x : kUneven) f.push_back(c.f(x));
    const Spline1D s = InterpolateNotAKnot(kUneven, f, c.order);
    for (double x = -1.0; x <= 2.8; x += 0.037) EXPECT_NEAR(s(x), c.f(x), 1e-11) << x;
  }
}

TEST(BSpline1D, DerivativesOfAReproducedPolynomial) {
  // f = x^4 - 2x^3 + x - 5 through a quintic spline, and its derivatives.
  const auto f = [](double x) { return x * x * x * x - 2 * x * x * x + x - 5; };
  const std::function<double(double)> d[] = {f,
                                             [](double x) { return 4 * x * x * x - 6 * x * x + 1; },
                                             [](double x) { return 12 * x * x - 12 * x; },
                                             [](double x) { return 24 * x - 12; },
                                             [](double) { return 24.0; },
                                             [](double) { return 0.0; }};
  std::vector<double> data;
  for (double x : kUneven) data.push_back(f(x));
  const Spline1D s = InterpolateNotAKnot(kUneven, data, 5);
  for (int m = 0; m <= 5; ++m)
    for (double x : {-1.0, -0.4, 0.3, 1.234, 2.8})
      EXPECT_NEAR(dbsder(m, x, 5, s.knots, s.coef), d[m](x), 1e-8) << m << " " << x;
}

// The not-a-knot cubic converges as h^4: halving the spacing cuts the error
// about sixteenfold (a little more while the end intervals still dominate).
double CubicErrorOnSine(int points) {
  std::vector<double> x, f;
  for (int i = 0; i < points; ++i) {
    x.push_back(3.0 * i / (points - 1));
    f.push_back(std::sin(x.back()));
  }
  const Spline1D s = InterpolateNotAKnot(x, f, 4);
  double worst = 0.0;
  for (double t = 0.0; t <= 3.0; t += 0.001) worst = std::max(worst, std::fabs(s(t) - std::sin(t)));
  return worst;
}

TEST(BSpline1D, NotAKnotCubicConvergesAsFourthPower) {
  const double coarse = CubicErrorOnSine(21);
  const double fine = CubicErrorOnSine(41);
  EXPECT_LT(coarse, 1e-4);
  EXPECT_GT(coarse / fine, 11.0);  // 2^3.5
  EXPECT_LT(coarse / fine, 26.0);  // 2^4.7
}

TEST(BSpline1D, LastKnotBelongsToLastInterval) {
  const Spline1D s = InterpolateNotAKnot({0.0, 1.0, 2.0, 3.0}, {0.0, 1.0, 4.0, 9.0}, 3);
  EXPECT_NEAR(s(3.0), 9.0, 1e-13);
  EXPECT_TRUE(s.Covers(3.0) && s.Covers(0.0));
  EXPECT_FALSE(s.Covers(3.0000001) || s.Covers(-1e-12));
}

TEST(BSpline1D, OutsideTheKnotsStops) {
  const Spline1D s = InterpolateNotAKnot({0.0, 1.0, 2.0}, {1.0, 2.0, 0.0}, 2);
  try {
    s(2.5);
    FAIL() << "no failure";
  } catch (const SplineFailure& f) {
    EXPECT_EQ(std::string(f.what()), "subroutine dbsval:\nix with xknot(ix) <= x < xknot(ix+1) required.\nx = 2.5");
  }
}

TEST(BSpline1D, FailedChecksNameTheirRoutine) {
  struct Case {
    const char* name;
    std::function<void()> call;
    const char* text;
  };
  const Case cases[] = {
      {"repeated abscissa", [] { InterpolateNotAKnot({0.0, 1.0, 1.0, 2.0}, {0, 1, 2, 3}, 2); },
       "subroutine dbsint: error\nno solution of linear equation system !!!"},
      {"descending knots", [] { dbsint({0.0, 1.0}, {0.0, 1.0}, 2, {0.0, 0.0, 2.0, 1.0}); },
       "subroutine dbsint:\nxknot(ix) <= xknot(ix+1) required."},
      {"descending knots in dbsval", [] { dbsval(0.5, 2, {0.0, 1.0, 0.5, 1.0}, {0.0, 1.0}); },
       "subroutine dbsval:\nxknot(ix) <= xknot(ix+1) required."},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    try {
      c.call();
      ADD_FAILURE() << "no failure";
    } catch (const SplineFailure& f) {
      EXPECT_EQ(std::string(f.what()), c.text);
    }
  }
}

// ---- Two dimensions ------------------------------------------------------

const std::vector<double> kGridX = {0.0, 0.2, 0.5, 1.0, 1.5, 2.0, 3.5};
const std::vector<double> kGridY = {-1.0, -0.5, 0.0, 0.25, 0.9};

Spline2D Tabulate(const std::function<double(double, double)>& f, int kx, int ky) {
  std::vector<std::vector<double>> data;
  for (double x : kGridX) {
    data.emplace_back();
    for (double y : kGridY) data.back().push_back(f(x, y));
  }
  return InterpolateNotAKnot2D(kGridX, kGridY, data, kx, ky);
}

struct SurfaceCase {
  const char* name;
  int kx, ky;
  std::function<double(double, double)> f;
};

TEST(BSpline2D, ReproducesTensorPolynomials) {
  const SurfaceCase cases[] = {
      {"bilinear", 2, 2, [](double x, double y) { return 1.0 + 2.0 * x - y + 0.5 * x * y; }},
      {"biquadratic", 3, 3, [](double x, double y) { return x * x * y * y - 2.0 * x * y * y + y + 3.0; }},
      {"cubic by linear", 4, 2, [](double x, double y) { return (x * x * x - x) * (1.0 + y); }},
  };
  for (const SurfaceCase& c : cases) {
    SCOPED_TRACE(c.name);
    const Spline2D s = Tabulate(c.f, c.kx, c.ky);
    for (double x = 0.0; x <= 3.5; x += 0.13)
      for (double y = -1.0; y <= 0.9; y += 0.07) EXPECT_NEAR(s(x, y), c.f(x, y), 1e-11) << x << " " << y;
    EXPECT_NEAR(s(3.5, 0.9), c.f(3.5, 0.9), 1e-11);  // the far corner
  }
}

TEST(BSpline2D, CoversExactlyTheGrid) {
  const Spline2D s = Tabulate([](double x, double y) { return x + y; }, 2, 2);
  EXPECT_TRUE(s.Covers(0.0, -1.0) && s.Covers(3.5, 0.9));
  EXPECT_FALSE(s.Covers(3.5000001, 0.0) || s.Covers(1.0, 0.9000001) || s.Covers(-0.1, 0.0));
}

TEST(BSpline2D, OutsideTheKnotsStops) {
  const Spline2D s = Tabulate([](double x, double y) { return x * y; }, 2, 2);
  try {
    s(1.0, 2.0);
    FAIL() << "no failure";
  } catch (const SplineFailure& f) {
    EXPECT_EQ(std::string(f.what()),
              "subroutine dbs2vl:\niy with yknot(iy) <= y < yknot(iy+1) required.\n"
              "yknot(iy)   = 0.9\n  y         = 2\nyknot(iy+1) = 0.9");
  }
  EXPECT_THROW(s(-1.0, 0.0), SplineFailure);
}

TEST(BSpline2D, DataOutsideTheKnotsStops) {
  const std::vector<std::vector<double>> f = {{0.0, 1.0}, {1.0, 2.0}};
  try {
    dbs2in({0.0, 1.0}, {0.0, 2.0}, f, 2, 2, {0.0, 0.0, 1.0, 1.0}, {0.0, 0.0, 1.0, 1.0});
    FAIL() << "no failure";
  } catch (const SplineFailure& e) {
    EXPECT_EQ(std::string(e.what()),
              "subroutine db2in:\ni with knot(i) <= x/y < knot(i+1) required.\nknot(1)   = 0\n"
              "knot(n+k) = 1\n      x/y = 2");
  }
}

}  // namespace
}  // namespace quintor

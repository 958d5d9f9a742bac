// B-spline interpolation in one and two dimensions (tensor product), with
// knot sequences by the not-a-knot rule. Used for the Pitzer-Gwinn tables of
// hindered rotation and for rotation potentials.
//
// Own implementation rather than GSL: gsl_bspline (GSL 2.7) evaluates a basis
// but has no collocation solver and builds its knots from breakpoints with
// k-fold ends only, and gsl_interp2d offers bilinear and bicubic, not a
// general order. What the program needs - not-a-knot knots of any order, the
// interpolation solve, and the interval rule below (the value at the last
// knot belongs to the last interval, anything outside the knots is an error
// with its own message) - is a page of de Boor's recursion over a banded LU
// solve, and that solve is LAPACK's dgbsv.
//
// Conventions: `order` is the spline order k (degree k-1). A spline on n
// abscissas has n coefficients and n+k knots. For order 2 the not-a-knot
// spline is the broken line through the points, and the 2-D spline of
// order 2 x 2 is bilinear interpolation on the grid.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace quintor {

// A failed check of the kit. The text is the routine's lines, joined by
// newlines; the run writes it and stops.
class SplineFailure : public std::runtime_error {
 public:
  explicit SplineFailure(const std::string& text) : std::runtime_error(text) {}
};

// Not-a-knot knot sequence of order `kxord` on the abscissas `xvec`
// (non-decreasing): k-fold knots at both ends, interior knots at the data
// points (even order) or halfway between them (odd order).
std::vector<double> dbsnak(const std::vector<double>& xvec, int kxord);

// Coefficients of the interpolant of order `kx` with knots `xknot` through
// (xvec[i], xdata[i]).
std::vector<double> dbsint(const std::vector<double>& xvec, const std::vector<double>& xdata, int kx,
                           const std::vector<double>& xknot);

// Value at `x` of the spline of order `kx` with knots `xknot` and
// coefficients `bscoef`.
double dbsval(double x, int kx, const std::vector<double>& xknot, const std::vector<double>& bscoef);

// Derivative of order `iderm` (0: the value) of that spline at `x`.
double dbsder(int iderm, double x, int kx, const std::vector<double>& xknot, const std::vector<double>& bscoef);

// Coefficients of the tensor-product interpolant through xydata[i][j] at
// (xvec[i], yvec[j]); the result holds coefficient (i, j) at i*ny + j.
std::vector<double> dbs2in(const std::vector<double>& xvec, const std::vector<double>& yvec,
                           const std::vector<std::vector<double>>& xydata, int kx, int ky,
                           const std::vector<double>& xknot, const std::vector<double>& yknot);

// Value at (x, y) of the tensor-product spline made by dbs2in.
double dbs2vl(double x, double y, int kx, int ky, const std::vector<double>& xknot,
              const std::vector<double>& yknot, int nx, int ny, const std::vector<double>& bscoef);

// ---- The same as values ------------------------------------------------

struct Spline1D {
  int order = 0;
  std::vector<double> knots;
  std::vector<double> coef;

  double operator()(double x) const { return dbsval(x, order, knots, coef); }
  // True when x lies in the range of the data, knot(k) <= x <= knot(n+1).
  bool Covers(double x) const;
};

struct Spline2D {
  int kx = 0, ky = 0;
  int nx = 0, ny = 0;
  std::vector<double> xknots, yknots;
  std::vector<double> coef;  // (i, j) at i*ny + j

  double operator()(double x, double y) const { return dbs2vl(x, y, kx, ky, xknots, yknots, nx, ny, coef); }
  bool Covers(double x, double y) const;
};

// Not-a-knot interpolants through the data.
Spline1D InterpolateNotAKnot(const std::vector<double>& x, const std::vector<double>& f, int order);
// f[i][j] is the value at (x[i], y[j]).
Spline2D InterpolateNotAKnot2D(const std::vector<double>& x, const std::vector<double>& y,
                               const std::vector<std::vector<double>>& f, int kx, int ky);

}  // namespace quintor

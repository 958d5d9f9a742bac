#include "numeric/bspline.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <string>

#include <fmt/format.h>

#include "numeric/lapack.h"


namespace quintor {

namespace {

std::string Lines(std::initializer_list<std::string> lines) {
  std::string text;
  for (const std::string& line : lines) {
    if (!text.empty()) text += '\n';
    text += line;
  }
  return text;
}

std::string Num(double v) { return fmt::format("{:.15g}", v); }

bool KnotsAscend(const std::vector<double>& t) {
  for (size_t i = 0; i + 1 < t.size(); ++i)
    if (!(t[i] <= t[i + 1])) return false;
  return true;
}

// The knot interval l (0-based) of x for a spline with n coefficients:
// t[l] <= x < t[l+1], k-1 <= l <= n-1; x at the last knot t[n] belongs to the
// last interval of non-zero length. -1 when x lies outside t[k-1]..t[n].
int FindInterval(double x, int k, const std::vector<double>& t, int n) {
  if (!(x >= t[k - 1] && x <= t[n])) return -1;
  if (x == t[n]) {
    int l = n - 1;
    while (l > k - 1 && !(t[l] < t[n])) --l;
    return t[l] < t[n] ? l : -1;
  }
  // upper_bound gives the first knot above x; the interval starts just before it.
  const auto it = std::upper_bound(t.begin() + k - 1, t.begin() + n + 1, x);
  return static_cast<int>(it - t.begin()) - 1;
}

// The k B-splines of order k that do not vanish on interval l, at x
// (de Boor's recursion): b[r] is B_{l-k+1+r}(x).
std::vector<double> BasisValues(double x, int k, const std::vector<double>& t, int l) {
  std::vector<double> b(k, 0.0), left(k, 0.0), right(k, 0.0);
  b[0] = 1.0;
  for (int j = 1; j < k; ++j) {
    left[j] = x - t[l + 1 - j];
    right[j] = t[l + j] - x;
    double saved = 0.0;
    for (int r = 0; r < j; ++r) {
      const double term = b[r] / (right[r + 1] + left[j - r]);
      b[r] = saved + right[r + 1] * term;
      saved = left[j - r] * term;
    }
    b[j] = saved;
  }
  return b;
}

// Solves A X = B in place for the collocation matrix of order k on the
// abscissas x; B holds nrhs columns of length n, column-major. Returns false
// when the system is singular (or an abscissa lies outside the knots, which
// leaves a zero row).
bool SolveCollocation(const std::vector<double>& x, int k, const std::vector<double>& t, std::vector<double>& rhs,
                      int nrhs) {
  const int n = static_cast<int>(x.size());
  std::vector<std::vector<double>> rows(n);
  std::vector<int> first(n, 0);
  int kl = 0, ku = 0;
  for (int i = 0; i < n; ++i) {
    const int l = FindInterval(x[i], k, t, n);
    if (l < 0) return false;
    rows[i] = BasisValues(x[i], k, t, l);
    first[i] = l - k + 1;
    for (int r = 0; r < k; ++r) {
      if (rows[i][r] == 0.0) continue;
      const int j = first[i] + r;
      kl = std::max(kl, i - j);
      ku = std::max(ku, j - i);
    }
  }
  const int ldab = 2 * kl + ku + 1;
  std::vector<double> ab(static_cast<size_t>(ldab) * n, 0.0);
  for (int i = 0; i < n; ++i)
    for (int r = 0; r < k; ++r) {
      const int j = first[i] + r;
      if (rows[i][r] == 0.0 || j < 0 || j >= n) continue;
      ab[static_cast<size_t>(j) * ldab + (kl + ku + i - j)] = rows[i][r];
    }
  std::vector<int> ipiv(n);
  // LU with partial pivoting of the band matrix, and the solve.
  return lapack::dgbsv(n, kl, ku, nrhs, ab.data(), ldab, ipiv.data(), rhs.data(), n) == 0;
}

void CheckKnots(const std::vector<double>& t, int k, size_t n, const char* routine, const char* name) {
  if (t.size() != n + static_cast<size_t>(k) || !KnotsAscend(t))
    throw SplineFailure(Lines({fmt::format("subroutine {}:", routine), fmt::format("{}(ix) <= {}(ix+1) required.", name, name)}));
}

}  // namespace

std::vector<double> dbsnak(const std::vector<double>& xvec, int kxord) {
  const int nx = static_cast<int>(xvec.size());
  if (kxord < 1 || kxord > nx)
    throw SplineFailure(Lines({"subroutine dbsnak: error", "0 <= kxord <= nx is required.",
                               fmt::format("kxord = {} and nx = {} is given.", kxord, nx)}));
  std::vector<double> t(nx + kxord);
  for (int i = 0; i < kxord; ++i) t[i] = xvec[0];
  // 1-based: t(i) = x(i - k/2) for even k, the midpoint of x(i-(k-1)/2) and
  // x(i-(k+1)/2) for odd k, i = k+1..n.
  for (int i = kxord; i < nx; ++i) {
    if (kxord % 2 == 0)
      t[i] = xvec[i - kxord / 2];
    else
      t[i] = 0.5 * (xvec[i - (kxord - 1) / 2] + xvec[i - (kxord + 1) / 2]);
  }
  for (int i = nx; i < nx + kxord; ++i) t[i] = xvec[nx - 1];
  return t;
}

std::vector<double> dbsint(const std::vector<double>& xvec, const std::vector<double>& xdata, int kx,
                           const std::vector<double>& xknot) {
  CheckKnots(xknot, kx, xvec.size(), "dbsint", "xknot");
  std::vector<double> coef = xdata;
  if (xdata.size() != xvec.size() || !SolveCollocation(xvec, kx, xknot, coef, 1))
    throw SplineFailure(Lines({"subroutine dbsint: error", "no solution of linear equation system !!!"}));
  return coef;
}

double dbsval(double x, int kx, const std::vector<double>& xknot, const std::vector<double>& bscoef) {
  CheckKnots(xknot, kx, bscoef.size(), "dbsval", "xknot");
  const int n = static_cast<int>(bscoef.size());
  const int l = FindInterval(x, kx, xknot, n);
  if (l < 0)
    throw SplineFailure(
        Lines({"subroutine dbsval:", "ix with xknot(ix) <= x < xknot(ix+1) required.", "x = " + Num(x)}));
  const std::vector<double> b = BasisValues(x, kx, xknot, l);
  double value = 0.0;
  for (int r = 0; r < kx; ++r) value += bscoef[l - kx + 1 + r] * b[r];
  return value;
}

double dbsder(int iderm, double x, int kx, const std::vector<double>& xknot, const std::vector<double>& bscoef) {
  CheckKnots(xknot, kx, bscoef.size(), "dbsder", "xknot");
  const int n = static_cast<int>(bscoef.size());
  const int l = FindInterval(x, kx, xknot, n);
  if (l < 0)
    throw SplineFailure(
        Lines({"subroutine dbsder:", "ix with xknot(ix) <= x < xknot(ix+1) required.", "x = " + Num(x)}));
  if (iderm >= kx) return 0.0;
  // The derivative of a spline of order k is a spline of order k-1 on the
  // same knots, with coefficients (k-1)(a_i - a_{i-1}) / (t_{i+k-1} - t_i).
  std::vector<double> a(bscoef.begin() + (l - kx + 1), bscoef.begin() + (l + 1));
  for (int m = 1; m <= iderm; ++m) {
    const int k = kx - m;
    for (int r = kx - 1; r >= m; --r) {
      const int i = l - kx + 1 + r;
      const double span = xknot[i + k] - xknot[i];
      a[r] = span > 0.0 ? k * (a[r] - a[r - 1]) / span : 0.0;
    }
  }
  const std::vector<double> b = BasisValues(x, kx - iderm, xknot, l);
  double value = 0.0;
  for (int r = 0; r < kx - iderm; ++r) value += a[iderm + r] * b[r];
  return value;
}

std::vector<double> dbs2in(const std::vector<double>& xvec, const std::vector<double>& yvec,
                           const std::vector<std::vector<double>>& xydata, int kx, int ky,
                           const std::vector<double>& xknot, const std::vector<double>& yknot) {
  const int nx = static_cast<int>(xvec.size());
  const int ny = static_cast<int>(yvec.size());
  const auto checkRange = [](const std::vector<double>& v, const std::vector<double>& t, int k) {
    const int n = static_cast<int>(v.size());
    if (t.size() != static_cast<size_t>(n + k) || !KnotsAscend(t))
      throw SplineFailure(Lines({"subroutine dbs2in:", "xknot(ix) <= xknot(ix+1) required."}));
    for (double a : v)
      if (FindInterval(a, k, t, n) < 0)
        throw SplineFailure(Lines({"subroutine db2in:", "i with knot(i) <= x/y < knot(i+1) required.",
                                   "knot(1)   = " + Num(t.front()), "knot(n+k) = " + Num(t.back()),
                                   "      x/y = " + Num(a)}));
  };
  checkRange(xvec, xknot, kx);
  checkRange(yvec, yknot, ky);
  const auto failure = [] {
    return SplineFailure(Lines({"subroutine dbs2in: error", "no solution of linear equation system !!!"}));
  };
  if (static_cast<int>(xydata.size()) != nx) throw failure();
  // Along x for every y: column j of w holds f(., y_j).
  std::vector<double> w(static_cast<size_t>(nx) * ny);
  for (int i = 0; i < nx; ++i) {
    if (static_cast<int>(xydata[i].size()) != ny) throw failure();
    for (int j = 0; j < ny; ++j) w[static_cast<size_t>(j) * nx + i] = xydata[i][j];
  }
  if (!SolveCollocation(xvec, kx, xknot, w, ny)) throw failure();
  // Then along y for every x coefficient: column i of v is row i of w.
  std::vector<double> v(static_cast<size_t>(ny) * nx);
  for (int i = 0; i < nx; ++i)
    for (int j = 0; j < ny; ++j) v[static_cast<size_t>(i) * ny + j] = w[static_cast<size_t>(j) * nx + i];
  if (!SolveCollocation(yvec, ky, yknot, v, nx)) throw failure();
  return v;  // (i, j) at i*ny + j
}

double dbs2vl(double x, double y, int kx, int ky, const std::vector<double>& xknot,
              const std::vector<double>& yknot, int nx, int ny, const std::vector<double>& bscoef) {
  CheckKnots(xknot, kx, static_cast<size_t>(nx), "dbs2vl", "xknot");
  const int ix = FindInterval(x, kx, xknot, nx);
  if (ix < 0)
    throw SplineFailure(
        Lines({"subroutine dbs2vl:", "ix with xknot(ix) <= x < xknot(ix+1) required.", "x = " + Num(x)}));
  CheckKnots(yknot, ky, static_cast<size_t>(ny), "dbs2vl", "yknot");
  const int iy = FindInterval(y, ky, yknot, ny);
  if (iy < 0) {
    // The pair of knots nearest to y, below or above the range.
    const int near = y < yknot[ky - 1] ? 0 : ny + ky - 2;
    throw SplineFailure(Lines({"subroutine dbs2vl:", "iy with yknot(iy) <= y < yknot(iy+1) required.",
                               "yknot(iy)   = " + Num(yknot[near]), "  y         = " + Num(y),
                               "yknot(iy+1) = " + Num(yknot[near + 1])}));
  }
  const std::vector<double> bx = BasisValues(x, kx, xknot, ix);
  const std::vector<double> by = BasisValues(y, ky, yknot, iy);
  double value = 0.0;
  for (int r = 0; r < kx; ++r) {
    const size_t row = static_cast<size_t>(ix - kx + 1 + r) * ny;
    double sum = 0.0;
    for (int s = 0; s < ky; ++s) sum += bscoef[row + (iy - ky + 1 + s)] * by[s];
    value += bx[r] * sum;
  }
  return value;
}

bool Spline1D::Covers(double x) const {
  const size_t n = coef.size();
  return n > 0 && x >= knots[order - 1] && x <= knots[n];
}

bool Spline2D::Covers(double x, double y) const {
  return nx > 0 && ny > 0 && x >= xknots[kx - 1] && x <= xknots[nx] && y >= yknots[ky - 1] && y <= yknots[ny];
}

Spline1D InterpolateNotAKnot(const std::vector<double>& x, const std::vector<double>& f, int order) {
  Spline1D s;
  s.order = order;
  s.knots = dbsnak(x, order);
  s.coef = dbsint(x, f, order, s.knots);
  return s;
}

Spline2D InterpolateNotAKnot2D(const std::vector<double>& x, const std::vector<double>& y,
                               const std::vector<std::vector<double>>& f, int kx, int ky) {
  Spline2D s;
  s.kx = kx;
  s.ky = ky;
  s.nx = static_cast<int>(x.size());
  s.ny = static_cast<int>(y.size());
  s.xknots = dbsnak(x, kx);
  s.yknots = dbsnak(y, ky);
  s.coef = dbs2in(x, y, f, kx, ky, s.xknots, s.yknots);
  return s;
}

}  // namespace quintor

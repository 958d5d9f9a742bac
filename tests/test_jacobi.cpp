// The Jacobi eigensolver: eigenpairs, sorting, the upper triangle, and the
// failure that ends a run.
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "numeric/jacobi.h"

namespace quintor {
namespace {

using Matrix = std::vector<std::vector<double>>;

// Checks A v_k = d_k v_k for every column and that the columns are orthonormal.
void ExpectEigenpairs(const Matrix& a, const Eigensystem& e, double tol) {
  const size_t n = a.size();
  ASSERT_EQ(e.values.size(), n);
  ASSERT_EQ(e.vectors.size(), n);
  for (size_t k = 0; k < n; ++k)
    for (size_t i = 0; i < n; ++i) {
      double av = 0.0, dot = 0.0;
      for (size_t j = 0; j < n; ++j) av += a[i][j] * e.vectors[j][k];
      for (size_t j = 0; j < n; ++j) dot += e.vectors[j][k] * e.vectors[j][i];
      EXPECT_NEAR(av, e.values[k] * e.vectors[i][k], tol) << "column " << k << " row " << i;
      EXPECT_NEAR(dot, k == i ? 1.0 : 0.0, tol);
    }
}

TEST(Jacobi, KnownSpectraInEachOrder) {
  const Matrix tri = {{2, -1, 0}, {-1, 2, -1}, {0, -1, 2}};
  const Eigensystem up = Jacobi(tri, 1), down = Jacobi(tri, -1);
  const std::vector<double> want = {2.0 - std::sqrt(2.0), 2.0, 2.0 + std::sqrt(2.0)};
  ASSERT_NO_FATAL_FAILURE(ExpectEigenpairs(tri, up, 1e-12));
  ASSERT_NO_FATAL_FAILURE(ExpectEigenpairs(tri, down, 1e-12));
  for (int k = 0; k < 3; ++k) {
    EXPECT_NEAR(up.values[k], want[k], 1e-12);
    EXPECT_NEAR(down.values[k], want[2 - k], 1e-12);
  }
  // Garbage below the diagonal is never read.
  Matrix lower = tri;
  lower[1][0] = 100.0, lower[2][1] = -7.0;
  EXPECT_NO_FATAL_FAILURE(ExpectEigenpairs(tri, Jacobi(lower, 1), 1e-12));
  // A diagonal matrix: no rotation, the order kept unless sorted.
  const Matrix diag = {{3, 0, 0}, {0, -1, 0}, {0, 0, 2}};
  const Eigensystem same = Jacobi(diag, 0);
  EXPECT_EQ(same.rotations, 0);
  EXPECT_EQ(same.values, (std::vector<double>{3, -1, 2}));
  const Eigensystem sorted = Jacobi(diag, 1);
  EXPECT_EQ(sorted.values, (std::vector<double>{-1, 2, 3}));
  EXPECT_EQ(sorted.vectors[1][0], 1.0);  // the vector moves with its value
  // Two equal moments of a symmetric top still give an orthonormal basis.
  const Matrix top = {{5, 1, 0}, {1, 5, 0}, {0, 0, 6}};
  EXPECT_NO_FATAL_FAILURE(ExpectEigenpairs(top, Jacobi(top, 1), 1e-12));
}

TEST(Jacobi, HilbertMatrixOfOrderSix) {
  Matrix h(6, std::vector<double>(6));
  for (int i = 0; i < 6; ++i)
    for (int j = 0; j < 6; ++j) h[i][j] = 1.0 / (i + j + 1);
  const Eigensystem e = Jacobi(h, 1);
  ASSERT_NO_FATAL_FAILURE(ExpectEigenpairs(h, e, 1e-12));
  EXPECT_NEAR(e.values[5], 1.6188998589243, 1e-10);
  EXPECT_NEAR(e.values[0], 1.0827994845e-7, 1e-14);
}

TEST(Jacobi, NonConvergenceThrowsWithTheRunMessage) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  try {
    Jacobi(Matrix{{1, nan}, {nan, 2}}, 1);
    FAIL() << "a matrix with NaN can not converge";
  } catch (const JacobiFailure& f) {
    EXPECT_EQ(std::string(f.what()), "too many iterations in jacobi");
  }
}

}  // namespace
}  // namespace quintor

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
  for (size_t k = 0; k < n; ++k) {
    for (size_t i = 0; i < n; ++i) {
      double av = 0.0;
      for (size_t j = 0; j < n; ++j) av += a[i][j] * e.vectors[j][k];
      EXPECT_NEAR(av, e.values[k] * e.vectors[i][k], tol) << "column " << k << " row " << i;
    }
    for (size_t l = 0; l < n; ++l) {
      double dot = 0.0;
      for (size_t i = 0; i < n; ++i) dot += e.vectors[i][k] * e.vectors[i][l];
      EXPECT_NEAR(dot, k == l ? 1.0 : 0.0, tol);
    }
  }
}

const Matrix kTridiagonal = {{2, -1, 0}, {-1, 2, -1}, {0, -1, 2}};

TEST(Jacobi, TridiagonalAscending) {
  const Eigensystem e = Jacobi(kTridiagonal, 1);
  EXPECT_NEAR(e.values[0], 2.0 - std::sqrt(2.0), 1e-12);
  EXPECT_NEAR(e.values[1], 2.0, 1e-12);
  EXPECT_NEAR(e.values[2], 2.0 + std::sqrt(2.0), 1e-12);
  EXPECT_GT(e.rotations, 0);
  ExpectEigenpairs(kTridiagonal, e, 1e-12);
  // The lowest mode has no node: all components of one sign.
  EXPECT_GT(e.vectors[0][0] * e.vectors[1][0], 0.0);
  EXPECT_GT(e.vectors[1][0] * e.vectors[2][0], 0.0);
}

TEST(Jacobi, DescendingSortMovesVectorsWithValues) {
  const Eigensystem up = Jacobi(kTridiagonal, 1);
  const Eigensystem down = Jacobi(kTridiagonal, -1);
  for (int k = 0; k < 3; ++k) {
    EXPECT_NEAR(down.values[k], up.values[2 - k], 1e-12);
    // Same eigenvector up to sign.
    double dot = 0.0;
    for (int i = 0; i < 3; ++i) dot += down.vectors[i][k] * up.vectors[i][2 - k];
    EXPECT_NEAR(std::fabs(dot), 1.0, 1e-12);
  }
  ExpectEigenpairs(kTridiagonal, down, 1e-12);
}

TEST(Jacobi, DiagonalMatrixNeedsNoRotationAndKeepsOrderUnsorted) {
  const Matrix a = {{3, 0, 0}, {0, -1, 0}, {0, 0, 2}};
  const Eigensystem e = Jacobi(a, 0);
  EXPECT_EQ(e.rotations, 0);
  EXPECT_EQ(e.values, (std::vector<double>{3, -1, 2}));
  EXPECT_EQ(e.vectors[0][0], 1.0);
  EXPECT_EQ(e.vectors[1][1], 1.0);
  EXPECT_EQ(e.vectors[2][2], 1.0);

  const Eigensystem sorted = Jacobi(a, 1);
  EXPECT_EQ(sorted.values, (std::vector<double>{-1, 2, 3}));
  // The vector of -1 is the second unit vector.
  EXPECT_EQ(sorted.vectors[1][0], 1.0);
  const Eigensystem reversed = Jacobi(a, -1);
  EXPECT_EQ(reversed.values, (std::vector<double>{3, 2, -1}));
  EXPECT_EQ(reversed.vectors[2][1], 1.0);
}

TEST(Jacobi, ReadsOnlyTheUpperTriangle) {
  Matrix a = kTridiagonal;
  a[1][0] = 100.0;  // garbage below the diagonal
  a[2][1] = -7.0;
  const Eigensystem e = Jacobi(a, 1);
  ExpectEigenpairs(kTridiagonal, e, 1e-12);
}

TEST(Jacobi, HilbertMatrixOfOrderSix) {
  const int n = 6;
  Matrix h(n, std::vector<double>(n));
  double trace = 0.0;
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) h[i][j] = 1.0 / (i + j + 1);
    trace += h[i][i];
  }
  const Eigensystem e = Jacobi(h, 1);
  ExpectEigenpairs(h, e, 1e-12);
  double sum = 0.0;
  for (int k = 0; k < n; ++k) {
    sum += e.values[k];
    if (k > 0) {
      EXPECT_LE(e.values[k - 1], e.values[k]);
    }
  }
  EXPECT_NEAR(sum, trace, 1e-13);
  // Known extremes of the 6 by 6 Hilbert matrix.
  EXPECT_NEAR(e.values[n - 1], 1.6188998589243, 1e-10);
  EXPECT_NEAR(e.values[0], 1.0827994845e-7, 1e-14);
}

TEST(Jacobi, DegenerateValuesGiveAnOrthonormalBasis) {
  // Inertia tensor of a symmetric top: two equal moments.
  const Matrix a = {{5, 1, 0}, {1, 5, 0}, {0, 0, 6}};
  const Eigensystem e = Jacobi(a, 1);
  EXPECT_NEAR(e.values[0], 4.0, 1e-12);
  EXPECT_NEAR(e.values[1], 6.0, 1e-12);
  EXPECT_NEAR(e.values[2], 6.0, 1e-12);
  ExpectEigenpairs(a, e, 1e-12);
}

TEST(Jacobi, OneByOne) {
  const Eigensystem e = Jacobi(Matrix{{4.5}}, 1);
  EXPECT_EQ(e.values, std::vector<double>{4.5});
  EXPECT_EQ(e.vectors[0][0], 1.0);
}

TEST(Jacobi, NonConvergenceThrowsWithTheRunMessage) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const Matrix a = {{1, nan}, {nan, 2}};
  try {
    Jacobi(a, 1);
    FAIL() << "a matrix with NaN can not converge";
  } catch (const JacobiFailure& f) {
    EXPECT_EQ(std::string(f.what()), "too many iterations in jacobi");
  }
}

}  // namespace
}  // namespace quintor

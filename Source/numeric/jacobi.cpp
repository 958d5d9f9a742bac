#include "numeric/jacobi.h"

#include <cmath>
#include <utility>

namespace quintor {

namespace {

constexpr int MaxSweeps = 50;

void Rotate(std::vector<std::vector<double>>& a, double s, double tau, int i, int j, int k, int l) {
  const double g = a[i][j];
  const double h = a[k][l];
  a[i][j] = g - s * (h + g * tau);
  a[k][l] = h + s * (g - h * tau);
}

// Selection sort, ascending: the first of equal values stays first.
void SortAscending(Eigensystem& e) {
  const int n = static_cast<int>(e.values.size());
  for (int i = 0; i < n - 1; ++i) {
    int k = i;
    double p = e.values[i];
    for (int j = i + 1; j < n; ++j) {
      if (e.values[j] < p) {
        k = j;
        p = e.values[j];
      }
    }
    if (k != i) {
      std::swap(e.values[i], e.values[k]);
      for (int r = 0; r < n; ++r) std::swap(e.vectors[r][i], e.vectors[r][k]);
    }
  }
}

}  // namespace

void SortEigensystem(Eigensystem& e, int sortMode) {
  if (sortMode > 0) {
    SortAscending(e);
  } else if (sortMode < 0) {
    for (double& d : e.values) d = -d;
    SortAscending(e);
    for (double& d : e.values) d = -d;
  }
}

Eigensystem Jacobi(std::vector<std::vector<double>> a, int sortMode) {
  const int n = static_cast<int>(a.size());
  Eigensystem e;
  e.values.assign(n, 0.0);
  e.vectors.assign(n, std::vector<double>(n, 0.0));
  std::vector<double> b(n), z(n, 0.0);
  for (int p = 0; p < n; ++p) {
    e.vectors[p][p] = 1.0;
    b[p] = e.values[p] = a[p][p];
  }

  for (int sweep = 1; sweep <= MaxSweeps; ++sweep) {
    double sm = 0.0;
    for (int p = 0; p < n - 1; ++p)
      for (int q = p + 1; q < n; ++q) sm += std::fabs(a[p][q]);
    if (sm == 0.0) {
      SortEigensystem(e, sortMode);
      return e;
    }
    // Larger threshold in the first three sweeps, then every element counts.
    const double tresh = sweep < 4 ? 0.2 * sm / (n * n) : 0.0;
    for (int p = 0; p < n - 1; ++p) {
      for (int q = p + 1; q < n; ++q) {
        const double g = 100.0 * std::fabs(a[p][q]);
        // After four sweeps an element negligible beside both diagonal
        // elements is set to zero instead of rotated away.
        if (sweep > 4 && std::fabs(e.values[p]) + g == std::fabs(e.values[p]) &&
            std::fabs(e.values[q]) + g == std::fabs(e.values[q])) {
          a[p][q] = 0.0;
        } else if (std::fabs(a[p][q]) > tresh) {
          double h = e.values[q] - e.values[p];
          double t;
          if (std::fabs(h) + g == std::fabs(h)) {
            t = a[p][q] / h;
          } else {
            const double theta = 0.5 * h / a[p][q];
            t = 1.0 / (std::fabs(theta) + std::sqrt(1.0 + theta * theta));
            if (theta < 0.0) t = -t;
          }
          const double c = 1.0 / std::sqrt(1.0 + t * t);
          const double s = t * c;
          const double tau = s / (1.0 + c);
          h = t * a[p][q];
          z[p] -= h;
          z[q] += h;
          e.values[p] -= h;
          e.values[q] += h;
          a[p][q] = 0.0;
          for (int j = 0; j < p; ++j) Rotate(a, s, tau, j, p, j, q);
          for (int j = p + 1; j < q; ++j) Rotate(a, s, tau, p, j, j, q);
          for (int j = q + 1; j < n; ++j) Rotate(a, s, tau, p, j, q, j);
          for (int j = 0; j < n; ++j) Rotate(e.vectors, s, tau, j, p, j, q);
          ++e.rotations;
        }
      }
    }
    for (int p = 0; p < n; ++p) {
      b[p] += z[p];
      e.values[p] = b[p];
      z[p] = 0.0;
    }
  }
  throw JacobiFailure();
}

}  // namespace quintor

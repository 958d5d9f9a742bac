#include "quantum_rotor.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <stdexcept>
#include <vector>

extern "C" {
// LAPACK: eigenvalues of a symmetric tridiagonal matrix.
void dstev_(const char* jobz, const int* n, double* d, double* e, double* z, const int* ldz, double* work,
            int* info, size_t jobzLen);
// LAPACK: eigenvalues of a dense symmetric matrix.
void dsyev_(const char* jobz, const char* uplo, const int* n, double* a, const int* lda, double* w, double* work,
            const int* lwork, int* info, size_t jobzLen, size_t uploLen);
}

namespace quintor::testing {

namespace {

// CODATA 1998, as the program; R = k NA.
constexpr double kPlanck = 6.62606876e-34;
constexpr double kBoltzmann = 1.3806503e-23;
constexpr double kAvogadro = 6.02214199e23;
constexpr double kR = kBoltzmann * kAvogadro;
constexpr double kPi = 3.14159265358979323846;

// Levels (in kT) of the states m = j + n l: the potential couples m only to
// m +- n, so each residue j mod n is a tridiagonal block.
std::vector<double> BlockLevels(double x, double theta, int n, int j) {
  // Plane waves up to theta m^2 > x + 60 carry nothing at this temperature.
  const int L = static_cast<int>(std::ceil(std::sqrt((x + 60.0) / theta) / n)) + 4;
  const int size = 2 * L + 1;
  std::vector<double> d(size), e(size - 1, -x / 4.0);
  for (int i = 0; i < size; ++i) {
    const double m = j + n * (i - L);
    d[i] = theta * m * m + x / 2.0;
  }
  int info = 0;
  const int ldz = 1;
  std::vector<double> work(1);
  dstev_("N", &size, d.data(), e.data(), nullptr, &ldz, work.data(), &info, 1);
  if (info != 0) throw std::runtime_error("dstev failed");
  return d;
}

// Q, C, H/T and S from levels in units of kT, Q divided by n.
QuantumRotor FromLevels(const std::vector<double>& levels, int n) {
  const double e0 = *std::min_element(levels.begin(), levels.end());
  double q = 0.0, e1 = 0.0, e2 = 0.0;
  for (double e : levels) {
    const double de = e - e0;
    const double w = std::exp(-de);
    q += w;
    e1 += w * de;
    e2 += w * de * de;
  }
  e1 /= q;
  e2 /= q;
  QuantumRotor r;
  r.Q = q / n;
  r.HoverT = kR * e1;
  r.C = kR * (e2 - e1 * e1);
  r.S = kR * (std::log(r.Q) + e1);
  return r;
}

}  // namespace

double RotationalTemperatureRatio(double moment, double T) {
  const double hbar = kPlanck / (2.0 * kPi);
  return hbar * hbar / (2.0 * moment * kBoltzmann * T);
}

QuantumRotor ExactHinderedRotorReduced(double x, double theta, int n) {
  std::vector<double> levels;
  for (int j = 0; j < n; ++j) {
    const std::vector<double> block = BlockLevels(x, theta, n, j);
    levels.insert(levels.end(), block.begin(), block.end());
  }
  return FromLevels(levels, n);
}

QuantumRotor ExactHinderedRotor(double V0, double moment, int n, double T) {
  return ExactHinderedRotorReduced(1000.0 * V0 / (kR * T), RotationalTemperatureRatio(moment, T), n);
}

QuantumRotor GridHinderedRotor(const std::function<double(double)>& V, double moment, int n, double T, int points) {
  const double theta = RotationalTemperatureRatio(moment, T);
  const double h = 2.0 * kPi / points;
  // -theta d2/dphi2 by (-f[i-2] + 16 f[i-1] - 30 f[i] + 16 f[i+1] - f[i+2]) / (12 h^2).
  const double c0 = 30.0 * theta / (12.0 * h * h), c1 = -16.0 * theta / (12.0 * h * h), c2 = theta / (12.0 * h * h);
  std::vector<double> a(static_cast<size_t>(points) * points, 0.0);
  auto at = [&](int i, int j) -> double& {
    return a[static_cast<size_t>((j + points) % points) * points + static_cast<size_t>(i)];
  };
  for (int i = 0; i < points; ++i) {
    at(i, i) = c0 + 1000.0 * V(i * h) / (kR * T);
    at(i, i + 1) = at(i, i - 1) = c1;
    at(i, i + 2) = at(i, i - 2) = c2;
  }
  std::vector<double> w(static_cast<size_t>(points));
  int lwork = -1, info = 0;
  double query = 0.0;
  dsyev_("N", "U", &points, a.data(), &points, w.data(), &query, &lwork, &info, 1, 1);
  lwork = static_cast<int>(query);
  std::vector<double> work(static_cast<size_t>(lwork));
  dsyev_("N", "U", &points, a.data(), &points, w.data(), work.data(), &lwork, &info, 1, 1);
  if (info != 0) throw std::runtime_error("dsyev failed");
  return FromLevels(w, n);
}

}  // namespace quintor::testing

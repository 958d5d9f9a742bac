// Vectors of any length: mass-weighted modes (3N components), the
// minimiser's variables.
#pragma once

#include <cmath>
#include <vector>

namespace quintor::vecn {

inline double Dot(const std::vector<double>& a, const std::vector<double>& b) {
  double s = 0.0;
  for (size_t k = 0; k < a.size(); ++k) s += a[k] * b[k];
  return s;
}

// To unit length; a zero vector stays as it is.
inline void Normalise(std::vector<double>& a) {
  const double n = std::sqrt(Dot(a, a));
  if (n > 0.0)
    for (double& v : a) v /= n;
}

}  // namespace quintor::vecn

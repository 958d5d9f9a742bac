// Cyclic Jacobi diagonalisation of small dense symmetric matrices: principal
// axes of inertia, kinematic matrices of internal rotations.
#pragma once

#include <stdexcept>
#include <vector>

namespace quintor {

// The text the run stops with when the sweeps run out.
inline constexpr const char* JacobiFailureText = "too many iterations in jacobi";

// Thrown when the matrix does not converge within the sweep limit. The run
// catches it, writes what() and ends.
class JacobiFailure : public std::runtime_error {
 public:
  JacobiFailure() : std::runtime_error(JacobiFailureText) {}
};

struct Eigensystem {
  std::vector<double> values;               // d
  std::vector<std::vector<double>> vectors; // vectors[row][k]: column k belongs to values[k]
  int rotations = 0;                        // nrot
};

// Eigenvalues and eigenvectors of the symmetric n by n matrix `a` (only the
// diagonal and the upper triangle are read). sortMode > 0 sorts ascending,
// < 0 descending, 0 leaves the order of convergence; vectors follow values.
// Throws JacobiFailure after 50 sweeps without convergence.
Eigensystem Jacobi(std::vector<std::vector<double>> a, int sortMode);

// Sorts values ascending (sortMode > 0) or descending (< 0) with their vector
// columns. Descending is done by negating, sorting ascending and negating back,
// so that ties keep the same order as in an ascending sort of the negatives.
void SortEigensystem(Eigensystem& e, int sortMode);

}  // namespace quintor

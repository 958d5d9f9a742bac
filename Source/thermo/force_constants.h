// Cartesian force constants from a second file beside the log (the GAMESS
// punch file, the Gaussian formatted checkpoint file), the mass-weighted
// normal-mode problem, and reduced masses and force constants of the modes.
#pragma once

#include <string>
#include <vector>

#include "model/session.h"

namespace quintor {

// Force constant in mdyn/A of a mode from its frequency (cm-1) and reduced
// mass (amu): 5.96804E-08 * freq^2 * mass.
double ForceConstantOf(double freq, double redMass);

// Reduced mass of a displacement vector: the reciprocal of the sum of its
// squared components; 0 for a zero vector.
double ReducedMassOf(const std::vector<Vec3>& disp);

// The Hessian, 3N by 3N, row-major, hartree per bohr squared.
struct Hessian {
  int dim = 0;
  std::vector<double> h;
  double& At(int i, int j) { return h[static_cast<size_t>(i) * static_cast<size_t>(dim) + static_cast<size_t>(j)]; }
  double At(int i, int j) const { return h[static_cast<size_t>(i) * static_cast<size_t>(dim) + static_cast<size_t>(j)]; }
};

// Reads the $HESS block of a GAMESS punch file for `dim` rows. False when the
// file holds no "$HESS". A field that can not be read, or the end of the file
// inside the block, throws FatalReadError.
bool ReadPunchHessian(const std::string& path, int dim, Hessian& out);

// Reads "Cartesian Force Constants" of a formatted checkpoint file: the lower
// triangle, five values to a line, mirrored to the upper one. False when the
// file holds no such section; bad fields throw FatalReadError.
bool ReadFchHessian(const std::string& path, int dim, Hessian& out);

// Solution of H x = lambda M x with M the diagonal of the atoms' masses.
struct ModeSolution {
  std::vector<double> lambda;              // ascending
  std::vector<double> freq;                // cm-1, negative for a negative eigenvalue
  std::vector<double> redMass;             // amu
  std::vector<double> forceConst;          // mdyn/A
  std::vector<std::vector<double>> vector; // M-normalised eigenvectors, by eigenvalue
};

// Solves the problem with LAPACK's DSYGV (lower triangle) and sorts the
// eigenpairs by a heap sort into ascending order. `mass` holds one mass per
// atom, dim / 3 of them. False when the solver fails.
bool SolveMassWeighted(const Hessian& hessian, const std::vector<double>& mass, ModeSolution& out);

// Sorts `values` ascending by a heap sort and returns the permutation that
// was applied: result[k] is the old index of the k-th value.
std::vector<int> HeapSortAscending(std::vector<double>& values);

// Reduced masses, force constants and, under RECALCFREQ, new frequencies of
// the modes, from the force constants beside the input: the punch file of a
// GAMESS log (format codes 0 and 2), the ".fch" file of a Gaussian 98 log
// (code 3); a Gaussian 94 log (code 1) gets its table from the log's modes.
// The report goes to `out`, normally the thermodynamic output; the overload
// without it writes to the MainLog.
void RecalculateFrequencies(Session& s, MainLog& out);
void RecalculateFrequencies(Session& s);

}  // namespace quintor

// Integrals of the NDDO methods for one pair of atoms: overlaps over Slater
// orbitals, two-centre repulsion integrals from the multipole model of Dewar
// and Thiel, core attractions and the core-core repulsion.
#pragma once

#include <array>
#include <vector>

#include "engine/parameters.h"

namespace quintor::engine {

// Overlap of two normalised Slater orbitals (n, l, m) on atoms a distance
// r (bohr) apart along z: m is 0 (sigma), 1 (pi) or 2 (delta), the same on both.
double SlaterOverlap(int na, int la, double za, int nb, int lb, double zb, int m, double r);

// Everything a pair of atoms contributes, in the molecular frame. Orbital
// order on an atom: s, px, py, pz, then d z2, xz, yz, x2-y2, xy.
struct PairIntegrals {
  int na = 1, nb = 1;                 // orbitals on A and B
  std::vector<double> w;              // (ab|cd): index ((a*na + b)*nb + c)*nb + d, eV
  std::array<double, 81> e1b{};       // attraction of A's electrons by B's core: e1b[a*na+b], eV
  std::array<double, 81> e2a{};       // attraction of B's electrons by A's core: e2a[c*nb+d], eV
  std::array<double, 81> overlap{};   // S[a*nb + c]
  double coreCore = 0;                // eV
};

// AM1's own Gaussian terms of a bond of boron to hydrogen, carbon or a
// halogen, which stand in place of boron's; null for any other pair.
struct BoronPair {
  std::array<std::array<double, 3>, 2> terms;  // k (eV), l (1/A^2), m (A)
};
const BoronPair* Am1BoronPair(int za, int zb);

// The same integrals in the pair's own frame (z from A to B) before the
// rotation to the molecule's axes, and the rotation: a molecular orbital a
// is sum over b of cm[a][b] times local orbital b. A quantity contracted
// with a density is the same in either frame once the density is rotated,
// and rotating a density block is far cheaper than the four-index integrals.
struct LocalPairIntegrals {
  int na = 1, nb = 1;
  std::vector<double> w;             // as PairIntegrals::w, local frame
  std::array<double, 81> e1b{};      // local frame
  std::array<double, 81> e2a{};      // local frame
  std::array<double, 81> overlap{};  // local frame, S[a*nb + c]
  double coreCore = 0;               // eV
  double cm[9][9] = {};
};

// xa, xb in angstroms.
LocalPairIntegrals ComputeLocalPair(const ParameterSet& set, int za, int zb, const std::array<double, 3>& xa,
                                    const std::array<double, 3>& xb);
PairIntegrals ComputePair(const ParameterSet& set, int za, int zb, const std::array<double, 3>& xa,
                          const std::array<double, 3>& xb);

// A pair-specific core-core term: for MNDO, AM1 and PM3 the repulsion factor
// of the pair is 1 + 2 XFAC exp(-ALPB R) (R in angstrom), in place of the
// atoms' own exponentials and Gaussians; for MNDO/d ALPB stands in for an
// atom's ALP in the bonds of Na, Mg and Al it was fitted for.
struct PairTerm {
  EngineMethod method;
  int za, zb;   // larger nuclear number first
  double alpb;  // 1/angstrom
  double xfac;
};
const std::vector<PairTerm>& PairTerms();
// The term of a pair under a method, or null.
const PairTerm* FindPairTerm(EngineMethod method, int za, int zb);

// One-centre two-electron integrals (ab|cd) of an atom, na^4 values, eV.
std::vector<double> OneCentreIntegrals(const ElementParameters& p, int na);

}  // namespace quintor::engine

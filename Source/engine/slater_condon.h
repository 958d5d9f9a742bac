// The d-orbital extension: one-centre integrals of the spd basis from the
// Slater-Condon parameters, and the multipoles of the d charge distributions.
#pragma once

#include <vector>

#include "engine/parameters.h"

namespace quintor::engine {

// Fills slaterCondon, the f0dd ... g3pd fields, add and bdd of element z
// (with n the principal quantum number of its s and p shells) from ZS, ZP,
// ZD, ZNS, ZNP, ZND and the sp integrals. F0SD and G2SD that were given stay.
void DeriveDOrbitalTerms(int z, int n, ParameterSet& set);

// The radial Slater-Condon integral R^k over normalised Slater functions:
// electron 1 in the product of (na, ea) and (nb, eb), electron 2 in that of
// (nc, ec) and (nd, ed); eV.
// `ev` is the method's eV per hartree.
double RadialSlaterCondon(int k, int na, double ea, int nb, double eb, int nc, double ec, int nd, double ed,
                          double ev);

// One-centre two-electron integrals (ab|cd) of an atom with s, p and d
// orbitals, 9^4 values in eV; orbital order s, x, y, z, z2, xz, yz, x2-y2, xy.
std::vector<double> OneCentreIntegralsSpd(const ElementParameters& p);

// Additive term (bohr) of the atomic core in the core-electron attractions
// and the core-core repulsion. In MNDO/d it is 1/2 of a hartree over GSS for
// Al-Cl, Zn, Br, Cd, I and Hg, a fitted value for Na and Mg, and 1/(2 AM)
// elsewhere, as in the sp methods.
double CoreAdditiveTerm(int z, const ElementParameters& p, EngineMethod method);

// Multipole expansion of the product of two real orbitals (local order as
// above): coefficient of the point-charge multipole (l, m) of the method,
// with m 0 (z), 1 (x), -1 (y), 2 (x2-y2), -2 (xy).
double MultipoleCoefficient(int i, int j, int l, int m);

}  // namespace quintor::engine

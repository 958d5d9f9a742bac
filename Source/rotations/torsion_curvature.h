// The curvature of the potential along each torsion, from the normal modes
// of a frequency log.
//
// Where several equivalent tops sit on one atom (neopentane, isobutane) their
// torsions mix into combinations, and each combination has its own frequency
// (neopentane: 163 cm-1 in phase, 241 three times). The barrier of one top is
// a property of its own torsion, not of the combination its mode happens to
// be tied to: it is the curvature a relaxed scan of that torsion would see,
// the other torsions held and every other coordinate relaxed.
#pragma once

#include <vector>

#include "model/session.h"
#include "numeric/vec3.h"
#include "rotations/recognition.h"

namespace quintor {

// In mass-weighted space, u_i is the rigid turn per radian of group i about
// its axis, a_ik = L_k . u_i its part in mode k, K = A A^T the kinematic
// matrix. The torsions q_i (q_i(u_j) = delta_ij) have the compliance matrix
// C = K^-1 (A W^-2 A^T) K^-1, W the modes' angular frequencies; the force
// constant of torsion i with the others held is (C^-1)_ii, and the frequency
// returned, sqrt((C^-1)_ii / K_ii) in cm-1, gives it with I0 = K_ii:
// V0 = 2 k / n^2 is BarrierFromFrequency(I0, nu, n). Negative where the
// curvature is, 0 for all when the modes do not span the torsions. Modes from
// `firstMode` (1-based) on with their `scaledFreq`. Gaussian prints Cartesian
// displacements, xtb's g98.out mass-weighted ones: the reading whose modes
// are the more nearly orthogonal decides.
// Whether the modes from `firstMode` (1-based) on are printed mass-weighted
// (xtb's g98.out) rather than as Cartesian displacements (Gaussian): that
// reading makes them the more nearly orthogonal.
bool ModesAreMassWeighted(const std::vector<VibMode>& modes, const std::vector<double>& masses, int firstMode);

std::vector<double> TorsionFrequencies(const std::vector<VibMode>& modes, const std::vector<double>& masses,
                                       const std::vector<Vec3>& xyz, const std::vector<std::vector<int>>& groups,
                                       const std::vector<AxisPoints>& axes, int firstMode);

}  // namespace quintor

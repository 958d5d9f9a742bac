// Ties internal rotations to normal modes, and the kinematic matrix that
// gives their reduced moments when several rotations share the molecule.
//
// Both work in mass-weighted Cartesian space, sqrt(m) times a displacement,
// with the translations and rotations of the whole molecule taken out.
#pragma once

#include <vector>

#include "model/session.h"
#include "numeric/vec3.h"
#include "rotations/recognition.h"

namespace quintor {

// A mode whose coefficients sum in absolute value to this or more is taken
// for an internal rotation.
inline constexpr double IntRotThreshold = 0.5;

// Whether the coefficients of a mode's expansion mark it as a rotation:
// their absolute values sum to IntRotThreshold or more (exactly 0.5 counts).
bool ReachesIntRotThreshold(const std::vector<double>& coefficients);

// The expansion of the modes in the rotations.
struct ModeExpansion {
  std::vector<int> mode;                         // 1-based number of each expanded mode
  std::vector<std::vector<double>> coefficient;  // [row][rotation]
  std::vector<double> sdet;                      // squared length of the mode's part in the rotations' span
  std::vector<bool> marked;                      // sum |c| reached IntRotThreshold
  std::vector<int> modeOfRotation;               // 1-based mode assigned to each rotation, 0 none
};

// Expands every mode from `firstMode` (1-based) on that has displacements in
// the displacement vectors of the rotations (per rotation, per atom), by
// the normal equations of the least-squares fit solved by DGESV. Atoms of
// `excluded` (1-based) take no part. A mode is marked when the absolute
// coefficients sum to IntRotThreshold or more. Marked modes whose squared
// projection on the rotations (SDet) also reaches the threshold are assigned
// in the order of SDet, each to its free rotation of largest coefficient.
ModeExpansion ExpandInRotations(const std::vector<VibMode>& modes, const std::vector<double>& masses,
                                const std::vector<Vec3>& xyz, const std::vector<std::vector<Vec3>>& rotations,
                                const std::vector<int>& excluded, int firstMode);

// The three tables of the assignment.
void WriteModeExpansion(MainLog& log, const ModeExpansion& e, const std::vector<VibMode>& modes, int rotations);

// K(i, j) = sum over atoms of m u_i . u_j, u_i the displacement per radian
// of rotation i (its group turned about its axis, by central difference)
// after the overall translation and rotation are taken out. I0 = K(i, i),
// the moment of rotation i with the others held; I = 1 / K^-1(i, i), with
// the others free. Units of masses times coordinates squared.
struct KinematicMoments {
  std::vector<std::vector<double>> matrix;
  std::vector<double> I0, I;
};
KinematicMoments KinematicMatrix(const std::vector<double>& masses, const std::vector<Vec3>& xyz,
                                 const std::vector<std::vector<int>>& groups, const std::vector<AxisPoints>& axes);

}  // namespace quintor

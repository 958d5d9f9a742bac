// How the molecule stands on the screen: the rotation from the molecular
// (moving) frame to the laboratory (fixed) frame, the shifts and the zoom.
// Plain arithmetic, with no dependence on a window system.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "model/session.h"
#include "model/view_state.h"

namespace quintor {

// R = Rx(alp) Ry(bet) Rz(gam).
Mat3 BuildViewMatrix(double alp, double bet, double gam);
// The angles of BuildViewMatrix back from a matrix.
void ExtractViewAngles(const Mat3& r, double& alp, double& bet, double& gam);
double PerspectiveFactor(const ViewState& v, double z);
// Turns the view about a screen axis: the first non-zero angle of aboutZ,
// aboutY, aboutX; all zero repeats the last rotation.
void RotateView(ViewState& v, double aboutZ, double aboutY, double aboutX);
void ResetView(ViewState& v);

Vec3 LabCoords(const ViewState& v, const Vec3& molecular);
Vec3 ScreenCoords(const ViewState& v, const Vec3& molecular);

// The view before the interactive stage: identity, /V angles and shifts, or
// the "Last view parameters:" block of a file named by /V@.
ViewState StartingView(const Options& opt);

// A molecule that does not fit the 20-bohr height at zoom 1 opens whole:
// centred by the shifts, with the zoom that fits it into a window of
// `aspect` (width / height). A view given by /V or /V@ is kept, and key 5
// still resets to zoom 1 without shifts.
void FitStartingView(const Session& s, double aspect, ViewState& v);

// Reads the "Last view parameters:" block of a MainLog into `v`. False (and
// `v` unchanged) when the file or the block is missing.
bool ReadViewFile(const std::string& path, ViewState& v);

// The view angles printed at the end of the interactive work, in degrees:
// the middle one from R(3,3) by arc cosine, the others by arc tangents.
Vec3 FinalViewAngles(const Mat3& r);

// The angles, in degrees, of the " View command" line: the exact inverse of
// BuildViewMatrix (x, y, z turns in that order), so that the printed command,
// given back as /V, builds the same matrix. The " View Angles" line keeps the
// angles of FinalViewAngles, which /V does not read back.
Vec3 ViewCommandAngles(const Mat3& r);

// Bond partners of each atom (1-based) by the viewer's rule: 1.15 times the
// sum of the bond radii, H...N/O up to the H-bond length when H-bonds are
// shown; at most 16 partners, in rising order. Each partner beyond the 16th
// adds " Number of bonds exceeded! Atoms in .MOl:" with the two atom numbers
// to `dropped`, when given.
std::vector<std::vector<int>> ViewerBonds(const Session& s, std::vector<std::string>* dropped = nullptr);

}  // namespace quintor

// The state of the view: rotation, shifts, zoom and display switches.
#pragma once

#include "numeric/vec3.h"

namespace quintor {

struct ViewState {
  Mat3 matrix{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};           // ViewMatrix: laboratory = matrix * molecular
  double alp = 0.0, bet = 0.0, gam = 0.0;  // radians; the matrix is the truth
  double shiftX = 0.0, shiftY = 0.0; // bohr, laboratory frame
  double zoom = 1.0;
  double perspectiveDistance = 10.0; // bohr
  double rotationStep = 5.0 * 0.017453292519943295;  // 5 degrees
  double translationStep = 0.1;      // bohr
  int showLabels = -1, perspectiveOn = -1, showBalls = 1, showAxes = -1;
  Mat3 lastRotation{};               // the elementary rotation last built
};

}  // namespace quintor

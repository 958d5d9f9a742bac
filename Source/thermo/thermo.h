// Thermochemistry of the ideal gas in the rigid-rotor harmonic-oscillator
// model: electronic, translational, rotational and vibrational contributions
// at one temperature and pressure, and the driver that writes the full
// evaluation and the temperature tables at the end of a run.
#pragma once

#include <array>
#include <vector>

#include "model/session.h"

namespace quintor {

// One evaluation at the Session's temperature and pressure. With quiet off
// every section is written to the MainLog; with quiet on nothing is written
// but one row of a temperature table.
void ThermoAtTP(Session& s, bool quiet);

// Sets the ModeUse mark of every mode: the zero modes (the ZERO list, or the
// head of the mode list with the imaginary modes), the /FX limit, and the
// imaginary modes taken as real (ALLPOSITIVE, /FP).
void MarkUsedModes(Session& s, bool linear);

// The evaluation at the end of a run: geometry, scaling, the full evaluation,
// the fixed temperature table and the requested one. `structureEdited` tells
// that the working coordinates were changed in the viewer; they are then used
// as they stand, with warnings.
void CalcTD(Session& s, bool structureEdited = false);

}  // namespace quintor

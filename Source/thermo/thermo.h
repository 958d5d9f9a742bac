// Thermochemistry of the ideal gas in the rigid-rotor harmonic-oscillator
// model: electronic, translational, rotational and vibrational contributions
// at one temperature and pressure, and the driver that writes the full
// evaluation and the temperature tables at the end of a run.
#pragma once

#include <array>
#include <vector>

#include "model/session.h"

namespace quintor {

// The treatment of internal rotations. The evaluation knows nothing of
// rotors: the layer that does hands one in, and the evaluation calls it
// after its own totals.
class RotationTreatment {
 public:
  virtual ~RotationTreatment() = default;
  // After the totals of every evaluation. The full one (quiet false) first
  // finds the rotations and writes their sections. Returns the number of
  // rotations that replace modes.
  virtual int Evaluate(Session& s, bool quiet) = 0;
  virtual int Count() const = 0;
  // The totals with the rotations of the last evaluation, the column a table
  // row shows, its Q rebuilt from G; and the share of failed table look-ups.
  virtual TDResult RowTotals() const = 0;
  // The same totals with the rotations as exact quantum rotors, I(**).
  virtual TDResult QuantumRowTotals() const { return RowTotals(); }
  virtual double ErrorPercent() const = 0;  // per cent
};

// One evaluation at the Session's temperature and pressure. With quiet off
// every section is written to the MainLog; with quiet on nothing is written
// but one row of a temperature table. With `rotations` the internal
// rotations replace their modes.
void ThermoAtTP(Session& s, bool quiet, RotationTreatment* rotations = nullptr);

// Sets the ModeUse mark of every mode: the zero modes (the ZERO list, or the
// head of the mode list with the imaginary modes), the /FX limit, and the
// imaginary modes taken as real (ALLPOSITIVE, /FP).
void MarkUsedModes(Session& s, bool linear);

// The quasi-RRHO totals (/QS, /QT, /QH) of the evaluation just made, from
// its per-mode values; with quiet off, a section of the MainLog. Not
// evaluated when no correction was asked for.
QuasiRrho QuasiRrhoAtTP(Session& s, bool quiet);

// The evaluation at the end of a run: geometry, scaling, the full evaluation,
// the fixed temperature table and the requested one. `structureEdited` tells
// that the working coordinates were changed in the viewer; they are then used
// as they stand, with warnings. `rotations`, when given, treats the internal
// rotations of the molecule in every evaluation.
void CalcTD(Session& s, bool structureEdited = false, RotationTreatment* rotations = nullptr);

}  // namespace quintor

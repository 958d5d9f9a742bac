// The end of the interactive work and of the run: the last view written to
// the MainLog, the evaluation, and the closing of the files.
#include <algorithm>
#include <string>

#include "app/run.h"
#include "io/fortran_io.h"
#include "rotations/rotor_treatment.h"
#include "thermo/thermo.h"
#include "viewer/view_model.h"

namespace quintor {

namespace {

constexpr double kA = constants::BohrToAngstrom;

void CoordinateTable(Session& s, std::string_view title, bool laboratory,
                     const std::vector<std::vector<int>>& bonds) {
  s.log.Line(title);
  const std::string rule(79, '-');
  s.log.Line(rule);
  for (int i = 0; i < s.nAtoms; ++i) {
    Vec3 r = laboratory ? LabCoords(s.view, s.xyz[i]) : s.xyz[i];
    std::string row = FmtX(1) + FmtA(s.atomName[i], 5) + FmtX(2) + FmtI(s.atomicNumber[i], 2) + FmtX(1) +
                      FmtF(r[0] * kA, 12, 6) + FmtF(r[1] * kA, 12, 6) + FmtF(r[2] * kA, 12, 6);
    for (size_t k = 0; k < bonds[i].size() && k < 20; ++k) row += FmtI(bonds[i][k], 4);
    s.log.Line(row);
  }
  s.log.Line(rule);
}

void PreciseTable(Session& s) {
  const Options& o = s.opt;
  if (o.outputPrecision == 0) return;
  static constexpr std::string_view kUnits[] = {" ANGSTROEMS", " BOHR", " NANOMETERS"};
  const double factor = o.outputPrecision == 1 ? kA : o.outputPrecision == 2 ? 1.0 : kA / 10.0;
  s.log.Line("User-defined precision/units output for coordinates in a molecular (moving) frame:");
  s.log.Line("Coordinates will be printed by format F" + FmtI(o.outputWidth, 2) + "." + FmtI(o.outputDecimals, 2) +
             " Coordinate units:" + std::string(kUnits[o.outputPrecision - 1]));
  for (int i = 0; i < s.nAtoms; ++i) {
    std::string row = FmtX(1) + FmtA(s.atomName[i], 5) + FmtX(2) + FmtI(s.atomicNumber[i], 2) + FmtX(1);
    for (int k = 0; k < 3; ++k) row += FmtF(s.xyz[i][k] * factor, o.outputWidth, o.outputDecimals);
    s.log.Line(row);
  }
}

}  // namespace

void FinishLog(Session& s) {
  if (s.finishLogDone) return;
  s.finishLogDone = true;
  s.log.EndLine();
  s.log.Line();
  s.log.Line("          ************ INTERACTIVE WORK IS FINISHED ************");
  const Mat3& r = s.view.matrix;
  const Vec3 angles = FinalViewAngles(r);
  s.log.Line(" Last view parameters:");
  s.log.Line(" Rotation matrix:" + FmtF(r[0][0], 10, 5) + FmtF(r[0][1], 10, 5) + FmtF(r[0][2], 10, 5));
  s.log.Line("                :" + FmtF(r[1][0], 10, 5) + FmtF(r[1][1], 10, 5) + FmtF(r[1][2], 10, 5));
  s.log.Line("                :" + FmtF(r[2][0], 10, 5) + FmtF(r[2][1], 10, 5) + FmtF(r[2][2], 10, 5));
  s.log.Line(" View Angles    :" + FmtF(angles[0], 10, 1) + FmtF(angles[1], 10, 1) + FmtF(angles[2], 10, 1));
  s.log.Line(" ShiftX,Y, Zoom :" + FmtF(s.view.shiftX, 10, 5) + FmtF(s.view.shiftY, 10, 5) + FmtF(s.view.zoom, 10, 5));
  // The command's angles are those /V reads back, not the View Angles above.
  const Vec3 turn = ViewCommandAngles(r);
  std::string command = "/v" + FmtF(turn[0], 6, 1) + ":" + FmtF(turn[1], 6, 1) + ":" + FmtF(turn[2], 6, 1) +
                        ":" + FmtF(s.view.shiftX, 6, 2) + ":" + FmtF(s.view.shiftY, 6, 2) + ":" +
                        FmtF(s.view.zoom, 6, 2);
  command.erase(std::remove(command.begin(), command.end(), ' '), command.end());
  s.log.Line(" View command   :" + command);
  const auto bonds = ViewerBonds(s);
  CoordinateTable(s, "Last view coordinates and bonds in a molecular (moving) frame, (A):", false, bonds);
  CoordinateTable(s, "Last view coordinates and bonds in a laboratory (fixed) frame, (A):", true, bonds);
  PreciseTable(s);
}

int EndRun(Session& s) {
  FinishLog(s);
  if (s.opt.doThermo) {
    if (s.opt.arir || !s.rotors.empty()) {
      HinderedRotors rotors;
      CalcTD(s, false, &rotors);
    } else {
      CalcTD(s);
    }
  }
  s.log.Close(s.opt.noLog);
  return exit_status::Ok;
}

}  // namespace quintor

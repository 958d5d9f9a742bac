// Input files for a rotation scan run by an outside program: one file per
// rotation angle, with the angles that give structurally the same molecule
// marked, so that only the unique points need computing.
#pragma once

#include <string>
#include <vector>

#include "io/main_log.h"
#include "numeric/vec3.h"
#include "rotations/recognition.h"

namespace quintor {

// Steps below this (degrees) generate nothing.
inline constexpr double MinimumScanStep = 2.4;
// Two points whose relative indexes all differ by less than this are alike.
inline constexpr double EquivalenceThreshold = 0.01;

// The job written around the coordinates; a line holding "%GEO" stands for them.
struct ScanTemplate {
  std::vector<std::string> lines;
  std::string extension;  // with its point
};
ScanTemplate DefaultScanTemplate();
// The PATTERN file `patternName` (as given, in lower case, or beside the
// input `inputName`), at most 20 lines, with its own extension; the default
// when it names nothing or no file is found.
ScanTemplate LoadScanTemplate(const std::string& patternName, const std::string& inputName);

// Structural quasi-energies of a geometry: over the pairs i < j at distance
// r with w = A(i) + 10 A(j), E1 = sum w exp(-r), E2 = sum w / r^2, E3 = sum w / r.
struct QuasiEnergies {
  double e1 = 0.0, e2 = 0.0, e3 = 0.0;
};
QuasiEnergies StructuralIndexes(const std::vector<int>& nuclear, const std::vector<Vec3>& xyz);

// One point of a scan.
struct ScanPoint {
  double angle = 0.0;  // degrees
  QuasiEnergies absolute, relative;
  int equivalentTo = -1;  // 1-based point it repeats, -1 when unique
  std::vector<Vec3> xyz;  // bohr
  std::string file;       // what was written
};

struct ScanRotor {
  int number = 1;          // 1-based rotation number, for the file names
  std::vector<int> group;  // 1-based atoms that turn
  AxisPoints axis;         // bohr
};

// The points of a scan with step `step` degrees (round(360/step) of them):
// geometries, indexes, relative indexes and equivalences. No file is written.
std::vector<ScanPoint> ScanPoints(const ScanRotor& rotor, const std::vector<int>& nuclear,
                                  const std::vector<Vec3>& xyz, double step);

// The name of the file of one point: the base name of the input, "u_" or
// "e_", the rotation number and the rounded angle, the template's extension.
std::string ScanFileName(const std::string& inputName, const ScanRotor& rotor, const ScanPoint& p,
                         const std::string& extension);

// Writes the report of the scan of `rotor` to the log and one job file per
// point beside the input; returns the points with their file names.
std::vector<ScanPoint> GenerateScanInputs(MainLog& log, const ScanRotor& rotor, const std::vector<int>& nuclear,
                                          const std::vector<std::string>& names, const std::vector<Vec3>& xyz,
                                          double step, const ScanTemplate& job, const std::string& inputName);

}  // namespace quintor

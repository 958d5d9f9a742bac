// The configuration file Quintor.cfg: named patterns that tell where the
// geometries and energies stand in a text log that no built-in reader knows.
#pragma once

#include <string>

namespace quintor {

struct Session;

// How geometry inputs without a reader of their own are found: the pattern
// of the configuration file (format 8) and the column template of GXYZ
// input (format 12, set by the file-format dialog).
struct InputPattern {
  // Keys of the configuration pattern, with the values used when the file
  // or the key is missing.
  std::string geoLabel = "NSERCH=";  // GeoLabel: opens a geometry
  int skipLinesAfterLabel = 2;       // SkipLinesAfterLabel
  std::string energyPattern;         // EnergyPattern: anchor of the energy line
  int energyBegPos = 0;              // EnergyValueBegPos: first column of the number
  int energyEndPos = 0;              // EnergyValueEndPos: last column
  int energyShift = 0;               // IsEnergyBeforeGeo: added to iCyc for the energy's set
  int readEnergy = 0;                // ReadEnergy?: energies are read when above 0
  // GeoFormat: layout of the rows. 0 name, nuclear charge, X, Y, Z (as in
  // GAMESS coordinate blocks); 1, 2, 3 the XYZ styles symbol X Y Z,
  // symbol dummy X Y Z, dummy symbol X Y Z.
  int geoFormat = 0;
  int geoUnits = 0;                  // GeoUnits: 0 Angstrom, 1 bohr, 2 nanometre
  bool geoUnitsGiven = false;

  // GXYZ: label of the blocks (blank: one block at the top), lines skipped
  // behind it, the column template and the delimiters besides blank and tab.
  std::string gxyzLabel = "COORDINATES OF ALL ATOMS ARE";
  int gxyzSkip = 2;
  std::string gxyzTemplate = "DNXYZ";
  std::string gxyzDelimiters = ",;:";
};

inline constexpr const char* ConfigFileName = "Quintor.cfg";

// Finds Quintor.cfg and reads the pattern named by s.opt.patternName, or the
// DEFAULT pattern when no name was given, into s.pattern. A missing file or
// pattern is no failure: a message is printed and the defaults stand. An
// integer value that can not be read throws FatalReadError.
// Search order, first hit wins:
//   1. Quintor.cfg in the current directory, only when HomeDir is blank
//      (HomeDir then becomes the current directory);
//   2. HomeDir/Quintor.cfg;
//   3. $XDG_CONFIG_HOME/quintor/ (or ~/.config/quintor/);
//   4. the installed data directory, <prefix>/share/quintor/;
//   5. /etc/quintor/.
// In cases 3 to 5 HomeDir becomes the directory of the hit. A length unit in
// the pattern (GeoUnits) is taken unless the command line gave one.
void ReadConfig(Session& s);

// The configuration file by the search order above, "" when none exists.
// Sets HomeDir as told there.
std::string FindConfigFile(Session& s);

// Reads the wanted pattern from one configuration file into s.pattern; false
// when the file has no such pattern (nothing is changed then).
bool ReadConfigPattern(Session& s, const std::string& path);

}  // namespace quintor

// Where the geometries and energies stand in a text log that no built-in
// reader knows: a pattern of the configuration file, or the GXYZ template.
#pragma once

#include <string>

#include "numeric/constants.h"

namespace quintor {

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
  LengthUnit geoUnits = LengthUnit::Angstrom;  // GeoUnits
  bool geoUnitsGiven = false;

  // GXYZ: label of the blocks (blank: one block at the top), lines skipped
  // behind it, the column template and the delimiters besides blank and tab.
  std::string gxyzLabel = "COORDINATES OF ALL ATOMS ARE";
  int gxyzSkip = 2;
  std::string gxyzTemplate = "DNXYZ";
  std::string gxyzDelimiters = ",;:";
};

}  // namespace quintor

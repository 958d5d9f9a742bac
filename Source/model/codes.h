// The small codes of a run: input format, orientation read from Gaussian
// logs, and how the thermochemistry treats a mode.
#pragma once

namespace quintor {

// The format of the input. The numbers are the ones users and old logs know
// (the job dialog and the options set them); 13 is unused.
enum class FormatCode : int {
  Automatic = -1,       // recognised by the banner
  Gamess = 0,           // GAMESS(US) of old and PC GAMESS v.5 and v.6
  Gaussian94 = 1,
  PcGamess4 = 2,
  Gaussian98 = 3,
  Korvandel = 4,        // the earlier program's log
  Nxyz = 5,             // symbol X Y Z
  Ndxyz = 6,            // symbol dummy X Y Z
  Dnxyz = 7,            // dummy symbol X Y Z
  Pattern = 8,          // a pattern of the configuration file
  OwnLog = 9,
  Gaussian03 = 10,
  LabelledXyz = 11,     // an XYZ list after a label
  Gxyz = 12,            // column template
  GaussianZMatrix = 14,
  PcGamess7 = 15,
  Gaussian09 = 16,      // also Gaussian 16
  Priroda = 17,
  Cfour = 18,           // recognised, no reader
  GamessUS = 19,        // current GAMESS(US) releases
  Orca = 21,            // ORCA 4, 5, 6
  QChem = 22,           // Q-Chem 4 to 6
};

constexpr bool IsGaussianLog(FormatCode c) {
  return c == FormatCode::Gaussian94 || c == FormatCode::Gaussian98 || c == FormatCode::Gaussian03 ||
         c == FormatCode::Gaussian09;
}
constexpr bool IsGamessLog(FormatCode c) {
  return c == FormatCode::Gamess || c == FormatCode::PcGamess4 || c == FormatCode::PcGamess7 ||
         c == FormatCode::GamessUS;
}

// The name of a format for reports: "Gaussian 09", "GAMESS(US)", ...
constexpr const char* FormatName(FormatCode c) {
  switch (c) {
    case FormatCode::Automatic: return "unknown";
    case FormatCode::Gamess: return "GAMESS v.5, 6";
    case FormatCode::Gaussian94: return "Gaussian 94";
    case FormatCode::PcGamess4: return "PC GAMESS v.4";
    case FormatCode::Gaussian98: return "Gaussian 98";
    case FormatCode::Korvandel: return "KORVANDEL";
    case FormatCode::Nxyz: return "NXYZ";
    case FormatCode::Ndxyz: return "NDXYZ";
    case FormatCode::Dnxyz: return "DNXYZ";
    case FormatCode::Pattern: return "pattern";
    case FormatCode::OwnLog: return "QUINTOR log";
    case FormatCode::Gaussian03: return "Gaussian 03";
    case FormatCode::LabelledXyz: return "labelled XYZ";
    case FormatCode::Gxyz: return "GXYZ";
    case FormatCode::GaussianZMatrix: return "Gaussian Z-matrix";
    case FormatCode::PcGamess7: return "PC GAMESS v.7";
    case FormatCode::Gaussian09: return "Gaussian 09";
    case FormatCode::Priroda: return "Priroda";
    case FormatCode::Cfour: return "CFOUR";
    case FormatCode::GamessUS: return "GAMESS(US)";
    case FormatCode::Orca: return "ORCA";
    case FormatCode::QChem: return "Q-Chem";
  }
  return "unknown";
}

// Which orientation of a Gaussian log gives the geometries.
enum class Orientation : int { Standard = 0, Input = 1, ZMatrix = 2 };  // default, /I, /Z

// How the thermochemistry treats a mode (the ModeUse mark).
enum class ModeUse : int {
  AboveRedMassTop = -2,   // reduced mass above /RX
  BelowFreqBottom = -1,   // frequency below /FX
  Zero = 0,               // a translation or rotation of the whole molecule
  Used = 1,
  ImaginaryAsReal = 2,    // ALLPOSITIVE, /FP
};

// The readers' filler for a value the input did not give (gradient norms),
// and the /RX default that lets every mode pass.
inline constexpr double NotGiven = 999999.0;
// A value beyond this after reading is a reader's filler, not a number.
inline constexpr double FillerLimit = 1.0e8;

}  // namespace quintor

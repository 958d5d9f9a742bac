// The one record of a run: the molecule, every geometry read, the modes,
// the internal rotations, the options in effect and the files of the run.
// A run has exactly one Session, passed by reference to every subsystem.
#pragma once

#include <array>
#include <cstdio>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

#include "session/config_file.h"
#include "session/main_log.h"
#include "thermo/thermo_state.h"
#include "viewer/view_state.h"

namespace quintor {

// ---- Limits -----------------------------------------------------------------
inline constexpr int MaxAtoms = 1910;
inline constexpr int MaxModes = 3 * MaxAtoms;
inline constexpr int DefaultMaxCycles = 300;
inline constexpr int MaxRotors = 20;
inline constexpr int MaxGroupAtoms = 100;
inline constexpr int MaxPotentialPoints = 150;
inline constexpr int ElementKinds = 100;
inline constexpr int MaxLine = 255;     // one line of an input or SpecFile, a file name
inline constexpr int MaxLabel = 80;     // pattern name, label of a labelled geometry

// ---- Physical constants: every Part uses these and no others ---------------
namespace constants {
inline constexpr double Pi = 3.141592653589793;
inline constexpr double SpeedOfLight = 299792458.0;        // m/s
inline constexpr double Planck = 6.62606876e-34;           // J s
inline constexpr double AtomicMassUnit = 1.66053873e-27;   // kg
inline constexpr double BohrRadius = 5.291772083e-11;      // m
inline constexpr double BohrToAngstrom = 0.5291772083;
inline constexpr double AngstromToBohr = 1.889726133921252;
inline constexpr double Boltzmann = 1.3806503e-23;         // J/K
inline constexpr double Avogadro = 6.02214199e+23;         // 1/mol
inline constexpr double GasConstant = 8.314472145136097;   // J/(mol K), Boltzmann * Avogadro
inline constexpr double DegToRad = 0.017453292519943295;
inline constexpr double JToCal = 0.2390057361376673;       // 1/4.184
inline constexpr double HartreeToEV = 27.2113834;
// Two Hartree factors stand side by side on purpose: the first two convert
// results, the last converts energies typed into the SpecFile and the Monte
// Carlo energies. They are not to be unified.
inline constexpr double KJPerMolToHartree = 0.0003808889730174161;
inline constexpr double JPerMolToHartree = 3.808889730174161e-07;
inline constexpr double HartreeToKJPerMol = 2625.3035184;
inline constexpr double KcalToKJ = 4.184;
inline constexpr double RotConstFactor = 1804.74;          // 1/(amu bohr^2) -> GHz
}  // namespace constants

using Vec3 = std::array<double, 3>;

// One geometry of the run with its energy and gradient norms. Energies start
// at 0 and gradient norms at 999999.0, the readers' fillers.
struct CoordSet {
  double energy = 0.0;        // Hartree
  double gmax = 999999.0;     // Hartree/bohr, as printed by the input program
  double grms = 999999.0;
  std::vector<Vec3> xyz;      // bohr, one per atom read into this set
};

// One normal mode. Storage grows with the atoms actually read.
struct VibMode {
  double freq = 0.0;          // cm-1, negative for an imaginary mode
  double redMass = 0.0;       // amu
  double forceConst = 0.0;    // mdyn/A
  double intensity = 0.0;     // km/mol, or the Raman activity under /RAMAN
  double scaledFreq = 0.0;    // cm-1, frequency times the scale factor; the evaluation may flip its sign
  std::vector<Vec3> disp;     // Cartesian displacement of each atom
  int use = 1;                // ModeUse: 1 used, 0 zero mode, -1 below /FX, -2 above /RX, 2 imaginary taken as real
};

// One internal rotation, from the SpecFile or from automatic recognition.
struct IntRot {
  int mode = 0;
  int symmetryNumber = 0;
  std::vector<int> group;
  std::vector<int> axis;
  int potentialKind = 0;      // -1 single barrier V0, else number of tabulated points
  double v0 = 0.0;            // kJ/mol
  std::vector<double> angles; // degrees
  std::vector<double> energies; // kJ/mol
};

// Options in effect, with their defaults.
struct Options {
  double temperature = 298.15;        // K
  double pressure = 101325.0;         // Pa
  double rotationNumber = 1.0;
  bool rotationNumberByUser = false;  // /ROT, /ROTNUM
  double freqScale = 1.0;
  double symEps = 0.005;
  bool noSymmetry = false;            // /NOSYM
  bool showHBonds = false;            // /HB
  double hBondLength = 2.5;           // A
  double freqBottom = 0.0;            // /FX, cm-1
  double redMassTop = 999999.0;       // /RX, amu
  double positiveFreqLimit = 0.0;     // /FP, cm-1
  std::array<double, 3> tempRange{500.0, 1500.0, 50.0};
  bool tempTableRequested = false;    // /THERMO
  double genCoordAngle = 0.0;
  int multiplicity = -1;
  int formatCode = -1;
  int orientationMode = 0;            // 0 standard, 1 input (/I), 2 Z-matrix (/Z)
  int lengthUnit = 0;                 // 0 Angstrom, 1 bohr, 2 nanometre
  int skipLines = 0;
  int labelFieldOrder = 0;            // 1 N X Y Z, 2 N D X Y Z, 3 D N X Y Z
  std::string label;                  // label of labelled geometry input
  std::string patternName;            // /PAT
  bool transitionState = false;
  bool allPositive = false;
  bool recalcFreq = false;
  bool arir = false;
  bool noLog = false;
  bool noGraphics = false;            // /0
  bool raman = false;
  bool noEnergies = false;            // /NOE
  bool readEnergies = true;           // job dialog "Do not read energies"
  bool readFrequencies = true;        // job dialog "Do not read frequencies"
  bool monteCarlo = false;            // /IRMC
  int monteCarloSamples = 0;
  bool doThermo = true;
  int outputPrecision = 0;            // 0 off, 1 A, 2 bohr, 3 nm
  int outputWidth = 20;
  int outputDecimals = 12;
  std::array<int, 3> orientAtoms{1, 2, 3};
  bool orient = false;                // /ORIENT
  bool viewGiven = false;             // /V
  std::array<double, 6> view{0, 0, 0, 0, 0, 1};  // AX, AY, AZ (degrees), ShiftX, ShiftY, Zoom
  int viewValues = 0;
  std::string viewFile;               // /V@
  int maxCycles = DefaultMaxCycles;   // /C
  bool specNameExplicit = false;      // /@
};

// Names of the files of the run.
struct RunFiles {
  std::string inputName;
  std::string logName;
  std::string specName;
  std::string punchName;
  std::string tdoName;
  std::string mcoName;
  std::string baseName;
  std::string currentDir;   // ends in '/'
  std::string homeDir;      // ends in '/' unless blank
  std::string configFile;
  std::string fragmentDb;
  std::string scratchLog;   // the real MainLog file under /NOLOG
};

struct Session {
  Options opt;
  RunFiles files;
  InputPattern pattern;               // configuration pattern and GXYZ template

  // ---- Molecule -----------------------------------------------------------
  int nAtoms = 0;
  std::vector<int> atomicNumber;      // index 0 is atom 1
  std::vector<std::string> atomName;
  std::vector<double> atomMass;
  double molMass = 0.0;
  std::array<int, ElementKinds> elementCount{};
  std::vector<Vec3> xyz;              // working coordinates, bohr

  // Masses read from the input: gaussian count, or a GAMESS mass block.
  std::vector<double> inputMass;
  bool massBlockRead = false;
  std::vector<double> specMass;       // NEWAMASS
  bool specMassGiven = false;

  // ---- Coordinate sets, index -1 .. maxCycles --------------------------------
  int iCyc = -1;
  bool coordsFound = false;
  double electronicEnergy = 0.0;
  bool electronicEnergyFromSummary = false;
  int lowestEnergyStep = 0, lowestGMaxStep = 0, lowestGRmsStep = 0;
  double lowestEnergy = 0.0, lowestGMax = 999999.0, lowestGRms = 999999.0;

  CoordSet& Set(int i);               // grows the list on demand
  const CoordSet& Set(int i) const;   // an empty set where nothing was stored
  int SetCount() const { return static_cast<int>(sets_.size()) - 1; }

  // ---- Modes, rotations ---------------------------------------------------------
  std::vector<VibMode> modes;
  int nImag = 0;
  std::vector<int> zeroModes;         // ZERO list of the SpecFile, as given
  int nZero = 0;                      // its non-zero entries
  std::vector<IntRot> rotors;
  std::vector<int> excludeAtoms;      // EXCLUDEATOMS of the SpecFile
  std::string rotationPattern;        // PATTERN of the SpecFile: header of generated coordinates
  double intensityFactor = 1.0;       // for showing intensities

  ThermoState thermo;                 // results of the last evaluation

  // ---- View ---------------------------------------------------------------------
  ViewState view;
  bool finishLogDone = false;

  // ---- Where the messages go --------------------------------------------------
  MainLog log;
  std::ostream* console = nullptr;    // the screen under /0
  std::istream* keyboard = nullptr;   // one-key answers

  Session();
  std::ostream& Console() const;
  std::istream& Keyboard() const;

 private:
  std::vector<CoordSet> sets_;        // sets_[i + 1] is set i
};

// A line for the StatusWindow; there is none under /0, and no window yet in
// this build, so the text goes to the console unless the run is in batch mode.
void StatusMessage(const Session& s, std::string_view text);

// Multiplies a length in the input unit by this to get bohr.
double LengthFactor(int lengthUnit);

}  // namespace quintor

namespace quintor {

// Stops the run after its message has been written: the MainLog keeps what
// was written, and the process ends with `status` (never 0).
struct RunStop {
  int status;
};

// Exit statuses of the program.
namespace exit_status {
inline constexpr int Ok = 0;
inline constexpr int ReadError = 1;      // a field that can not be read, a bad option value
inline constexpr int Limit = 2;          // too many cycles or atoms
inline constexpr int NoInput = 3;        // the input file is missing or can not be read
inline constexpr int NoCoordinates = 4;  // no coordinates, and the user chose to exit
inline constexpr int CanNotWrite = 5;    // the MainLog can not be created
inline constexpr int Numeric = 6;        // a computation failed ("too many iterations in jacobi")
}  // namespace exit_status

}  // namespace quintor

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

#include "io/main_log.h"
#include "model/codes.h"
#include "model/input_pattern.h"
#include "model/run_stop.h"
#include "model/thermo_state.h"
#include "model/view_state.h"
#include "numeric/constants.h"
#include "numeric/vec3.h"

namespace quintor {

// ---- Limits -----------------------------------------------------------------
inline constexpr int MaxAtoms = 1910;
inline constexpr int DefaultMaxCycles = 300;
inline constexpr int MaxPotentialPoints = 150;
inline constexpr int ElementKinds = 100;
inline constexpr int MaxLine = 255;     // one line of an input or SpecFile, a file name
inline constexpr int MaxLabel = 80;     // pattern name, label of a labelled geometry

// One geometry of the run with its energy and gradient norms. Energies start
// at 0 and gradient norms at NotGiven, the readers' fillers.
struct CoordSet {
  double energy = 0.0;        // Hartree
  double gmax = NotGiven;     // Hartree/bohr, as printed by the input program
  double grms = NotGiven;
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
  ModeUse use = ModeUse::Used;
  bool given = true;          // false for a slot that no mode block of the input filled
  // What the log gives beside, for the results a script reads: the mode's
  // symmetry label, its IR intensity (km/mol) and Raman activity (A^4/amu).
  std::string symmetry;
  double ir = 0.0, raman = 0.0;
  bool irGiven = false, ramanGiven = false;
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
  double redMassTop = NotGiven;       // /RX, amu
  double positiveFreqLimit = 0.0;     // /FP, cm-1
  std::array<double, 3> tempRange{500.0, 1500.0, 50.0};
  bool tempTableRequested = false;    // /THERMO
  double genCoordAngle = 0.0;
  int multiplicity = -1;
  FormatCode formatCode = FormatCode::Automatic;
  Orientation orientation = Orientation::Standard;
  LengthUnit lengthUnit = LengthUnit::Angstrom;
  int skipLines = 0;
  int labelFieldOrder = 0;            // 1 N X Y Z, 2 N D X Y Z, 3 D N X Y Z
  std::string label;                  // label of labelled geometry input
  std::string patternName;            // /PAT
  bool transitionState = false;
  bool allPositive = false;
  bool recalcFreq = false;
  bool arir = false;
  bool nrotProduct = false;           // /NROTPRODUCT: NRot = n1 n2, not lcm(n1, n2)
  // One symmetry number and one barrier for every rotation (NROTALL= and
  // V0ALL= of the SpecFile, "Set exact value" of the ARIR setting dialog).
  int userNRot = 0;                   // 0: each rotation keeps its own
  bool userBarrier = false;           // the user's V0 is in force when above 1e-6 kJ/mol
  double userV0 = 0.0;                // kJ/mol
  bool barrierOfTorsion = false;      // /V0TORSION: V0 from the curvature of the torsion alone, not the tied mode's frequency
  bool noLog = false;
  bool noGraphics = false;            // /0
  bool raman = false;
  bool noEnergies = false;            // /NOE
  bool readEnergies = true;           // job dialog "Do not read energies"
  bool readFrequencies = true;        // job dialog "Do not read frequencies"
  bool monteCarlo = false;            // /IRMC
  int monteCarloSamples = 0;
  std::array<unsigned, 2> monteCarloSeeds{1802, 9373};  // MCSEEDS=(a,b) of the SpecFile
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
  bool json = false;                  // /JSON: <base>.json beside the MainLog
  std::string csvFile;                // /CSV@file: one summary row per run appended
  std::string snapFile;               // /SNAP@file.png: the Molecular view to a picture, then end
  // The semi-empirical engine on the final geometry of a batch run.
  int engineMethod = 3;               // /ENGINE, menu order: 1 MNDO, 2 AM1, 3 PM3, 4 MNDO/d, 5 PM3d
  bool engineHeat = false;            // /HOF: heat of formation
  bool engineGeoOpt = false;          // /GEOOPT: geometry optimisation
  bool engineUnrestricted = false;    // /UHF: open shells by unrestricted Hartree-Fock
  bool engineScan = false;            // /SCAN: the potential of each rotation by the engine
  int charge = 0;                     // /CHARGE
  // The normal modes in a batch run, and the replay of a journal.
  int showMode = 0;                   // /MODE<n>: the mode of /MODE<n>@file.xyz and of /SNAP@'s arrows
  std::string filmFile;               // /MODE<n>@file.xyz: the film as a multi-frame XYZ file
  int distortMode = 0;                // /DISTORT<n>[=A]: the key-S block in the MainLog
  double distortAmplitude = 0.1;      // A
  std::string spectrumFile;           // /SPECTRUM@file.csv or .png
  std::string playFile;               // /PLAY@file: replay a journal of the interactive stage
  // Quasi-RRHO corrections of the full evaluation; cut-offs in cm-1.
  QuasiEntropy quasiEntropy = QuasiEntropy::None;  // /QS Grimme, /QT Truhlar
  double quasiEntropyCutoff = 100.0;
  bool quasiEnthalpy = false;                      // /QH Head-Gordon
  double quasiEnthalpyCutoff = 100.0;
  double concentration = 0.0;         // /CONC, mol/L: the standard state; 0 keeps the pressure
  bool scaleAuto = false;             // /SCALEAUTO: scale factor from the level of theory
  bool freqScaleByUser = false;       // /SCALE given, over /SCALEAUTO
  std::string saveFile;               // /SAVE@file.xyz|gjf|mop|inp: the structure after the journal
  std::string zmatFile;               // /ZMAT@file.gzmat: its Z-matrix
};

// File > New Session, File > Open, a recent file or a log dropped on the
// window: the run ends without evaluation, and a new one starts in the same
// process without a command line, on `inputName` read as `formatCode`; a
// blank name opens the job dialog first.
struct NextRun {
  bool asked = false;
  std::string inputName;
  FormatCode formatCode = FormatCode::Automatic;
};

// Names of the files of the run.
struct RunFiles {
  std::string inputName;
  std::string logName;
  std::string specName;
  std::string tdoName;
  std::string baseName;
  std::string currentDir;   // ends in '/'
  std::string homeDir;      // ends in '/' unless blank
  std::string configFile;
  std::string fragmentDb;
  std::string scratchLog;   // the real MainLog file under /NOLOG
};

// The energy the results for scripts call E: that of the geometry the
// thermochemistry is evaluated at, by the method of the frequencies, as the
// log labels it; and a composite method's own summary.
struct LogEnergies {
  std::string program;                // what the banner named: "Gaussian 16", "Firefly"
  std::string method;                 // "SCF", "MP2", "B2PLYP", "CBS-QB3"; empty: not told
  double energy = 0.0;                // Hartree
  bool given = false;
  std::string composite;              // "CBS-QB3", "G4"; empty: no composite job
  double compositeE0 = 0.0, compositeH = 0.0, compositeG = 0.0;  // Hartree, E0 = E + ZPE
  double gaussianH = 0.0, gaussianG = 0.0;  // "Sum of electronic and thermal Enthalpies/Free Energies"
  bool gaussianSums = false;
  int charge = 0;                     // the molecule's charge as the log gives it
  bool chargeGiven = false;
};

// What the semi-empirical engine gave in a batch run (/HOF, /GEOOPT).
struct EngineResults {
  std::string method;                 // "PM3", "AM1", ...
  bool heatGiven = false;
  double heatKcal = 0.0;              // heat of formation of the final geometry, kcal/mol
  bool optimised = false;
  double optimisedHeatKcal = 0.0;
  std::vector<Vec3> optimisedXyz;     // Angstrom
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
  double lowestEnergy = 0.0, lowestGMax = NotGiven, lowestGRms = NotGiven;
  LogEnergies logEnergies;            // what the log says E is (JSON and CSV)
  EngineResults engineResults;

  CoordSet& Set(int i);               // grows the list on demand
  const CoordSet& Set(int i) const;   // an empty set where nothing was stored
  // The coordinate sets the run found: 0 to iCyc; a run that stored only its
  // starting geometry has that one.
  int SetsFound() const { return iCyc >= 0 ? iCyc + 1 : (coordsFound && nAtoms > 0 ? 1 : 0); }
  int SetCount() const { return static_cast<int>(sets_.size()) - 1; }

  // ---- Modes, rotations ---------------------------------------------------------
  std::vector<VibMode> modes;
  int nImag = 0;
  std::string pointGroup;             // of the strict pass, as the report names it
  std::vector<int> zeroModes;         // ZERO list of the SpecFile, as given
  int nZero = 0;                      // its non-zero entries
  std::vector<IntRot> rotors;
  std::vector<int> excludeAtoms;      // EXCLUDEATOMS of the SpecFile
  std::string rotationPattern;        // PATTERN of the SpecFile: header of generated coordinates

  ThermoState thermo;                 // results of the last evaluation

  // ---- View ---------------------------------------------------------------------
  ViewState view;
  bool finishLogDone = false;
  NextRun next;                       // set by the window to start another session

  // ---- Where the messages go --------------------------------------------------
  MainLog log;
  std::ostream* console = nullptr;    // the screen under /0
  std::istream* keyboard = nullptr;   // one-key answers
  std::vector<std::string> messages;  // the StatusWindow (Message window) of a windowed run

  Session();
  std::ostream& Console() const;
  std::istream& Keyboard() const;

 private:
  std::vector<CoordSet> sets_;        // sets_[i + 1] is set i
};

// A line for the StatusWindow (the Message window); there is none under /0.
// The console gets a copy until the windows are up.
void StatusMessage(Session& s, std::string_view text);

}  // namespace quintor

// The semi-empirical engine: one energy of one geometry by MNDO, AM1, PM3,
// MNDO/d or PM3d. A caller needs nothing but this header.
#pragma once

#include <array>
#include <iosfwd>
#include <string>
#include <vector>

#include "engine/parameters.h"

namespace quintor::engine {

// Sizes: 1000 atoms (a hydrocarbon of 1000 atoms has about 2000 orbitals;
// the full n x n matrices of the SCF take some 30 MB each there).
constexpr int kMaxAtoms = 1000;
constexpr int kMaxOrbitals = 2500;

// Options of a calculation; the defaults serve a single point.
struct EngineOptions {
  int printLevel = 1;                // 0 nothing, 1 the report, 2 also one line per SCF iteration
  double scfCriterion = 1e-7;        // eV, on DELTAE (and 4x on DELTAP)
  double gradientScfCriterion = 1e-8;  // eV, on DELTAE alone
  bool gradientCalculation = false;  // use the gradient criterion
  int maxIterations = 200;
  // Parameter file read before the calculation ("" for the built-in values);
  // a missing file is no error.
  std::string parameterFile = "MNDOD.DAT";
  // Directory of the working files; "" for the current directory.
  std::string workDir;
  // Write the working files ("tmp.omn", ".MN1", ".MN2", ".MN4") of this call.
  // A series of calls (optimisation, scan) writes them for one call only.
  bool writeWorkingFiles = true;
  // Starting density (n x n, from an earlier result at a nearby geometry);
  // null for the usual start from the atoms.
  const std::vector<double>* startDensity = nullptr;
  // Unrestricted Hartree-Fock (alpha and beta orbitals of their own, MOPAC's
  // UHF) in place of the restricted half-electron treatment of open shells.
  bool unrestricted = false;
  int calculationNumber = 1;
  int geometryNumber = 1;
};

enum class EngineStatus {
  NotRun = 0,         // refused before the SCF: too many atoms or orbitals, no parameters
  Converged = 1,      // ran to its end
  NotConverged = 2,   // ran to its end without self-consistency (the number stands)
  Aborted = 3,        // multiplicity above 3
};

struct EngineResult {
  EngineStatus status = EngineStatus::NotRun;
  double heatKcal = 0;        // heat of formation, kcal/mol
  double heatKj = 0;          // the same in kJ/mol
  double electronicEv = 0;    // electronic energy, eV
  double coreCoreEv = 0;      // core-core repulsion, eV
  double totalEv = 0;         // electronic + core-core
  int iterations = 0;
  int electrons = 0;
  double spinSquared = 0;     // <S^2> of an unrestricted calculation
  int orbitals = 0;
  std::string message;        // why it was refused or aborted
  int exitStatus = 0;         // the process status a refusal stands for (0 when it ran)
  std::vector<double> density;  // the final density (bond order) matrix, full n x n
  std::vector<double> alphaDensity;  // its alpha part, unrestricted only (beta is the rest)
};

// True when the engine ran to its end (converged or not): the heat stands.
inline bool HeatStands(const EngineResult& r) {
  return r.status == EngineStatus::Converged || r.status == EngineStatus::NotConverged;
}

// Why a charge and multiplicity can not be computed, as MOPAC refuses them
// (an electron count of the wrong parity, too few electrons); "" when they fit.
std::string ImpossibleState(int electrons, int multiplicity);

// The multiplicity when none was given: a closed shell, or a doublet when
// the electrons are odd (the valence electrons have the parity of the
// nuclear charges).
int DefaultMultiplicity(const std::vector<int>& atomicNumbers, int charge);

// Runs one calculation. Coordinates in angstroms. `report` receives the
// engine's report when printLevel >= 1 (may be null).
EngineResult EngineRun(EngineMethod method, const std::vector<int>& atomicNumbers,
                       const std::vector<std::array<double, 3>>& coordsAngstrom, int charge, int multiplicity,
                       bool print, std::ostream* report, const EngineOptions& options = {});

// The same with parameters already in hand (no file is read).
EngineResult EngineRunWith(const ParameterSet& parameters, const std::vector<int>& atomicNumbers,
                           const std::vector<std::array<double, 3>>& coordsAngstrom, int charge, int multiplicity,
                           bool print, std::ostream* report, const EngineOptions& options = {});

// The open-shell treatment in words, for the MainLog: "" for a closed-shell
// restricted calculation.
std::string OpenShellTreatment(int multiplicity, bool unrestricted, double spinSquared);

// The two lines of a heat of formation: the method's name, then
// " Heat of Formation       : " F12.4 " kJ/mol  =" F12.4 " kcal/mol".
void PrintHeatOfFormation(std::ostream& out, EngineMethod method, double heatKcal);

}  // namespace quintor::engine

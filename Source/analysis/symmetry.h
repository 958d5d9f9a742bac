// Point-group recognition: a fixed set of symmetry operations is tried in
// frames given by the principal axes. Groups outside that set fall through
// to a poorer result; that is how the recogniser is meant to behave.
#pragma once

#include <string>
#include <vector>

#include "analysis/inertia.h"
#include "numeric/constants.h"
#include "numeric/vec3.h"

namespace quintor {

inline constexpr double StandardSymEps = 0.005;  // A, per coordinate

// Group codes; 10 to 14 carry the order n of the main axis.
enum GroupCode : int {
  NoGroup = 0,
  GroupC1 = 1, GroupCi = 2, GroupCs = 3, GroupC2 = 4, GroupC2v = 5, GroupC2h = 6, GroupD2h = 7,
  GroupCinfv = 8, GroupDinfh = 9,
  GroupCn = 10, GroupCnv = 11, GroupCnh = 12, GroupDnh = 13, GroupDnd = 14,
  GroupT = 15, GroupTd = 16, GroupTh = 17, GroupO = 18, GroupOh = 19, GroupIh = 20,
  GroupAtom = 21,
};

// Four characters, blank-padded ("C2v ", "D6h ", "O(3)"); blanks for NoGroup.
std::string GroupName(int code, int n);
// Rotational symmetry number of a group; 0 for NoGroup.
int GroupSymmetryNumber(int code, int n);

// The matrices of the operations: 1 rotation by 2 pi/k about Z, 2 the same
// followed by reflection in XY (S_k), 3 reflection in XY, 4 reflection in XZ.
Mat3 MakeOperation(int kind, int k);

// Outcome of one run of the recogniser.
struct SymmetryResult {
  int top = 0;                          // type of top the run ended with
  int index = 0;                        // SymmetryIndex: top and the seven digits
  int groupCode = NoGroup;
  int symmetryNumber = 0;
  std::string groupName = "    ";
  std::vector<std::string> logLines;      // for the MainLog
  std::vector<std::string> consoleLines;  // error texts for the screen
  int userPauses = 0;                     // times an error text waits for a key
};

// Recognises the point group of a geometry in bohr, centred or not, with
// nuclear numbers and masses in amu. `symEps` is the per-coordinate
// tolerance in Angstrom. Throws JacobiFailure when the inertia tensor does
// not converge.
SymmetryResult RecogniseSymmetry(const std::vector<int>& nuclear, const std::vector<double>& mass,
                                 const std::vector<Vec3>& xyzBohr, double symEps);

// The strict pass with SymEps and the approximate pass with 100 SymEps, or
// neither under /NOSYM.
struct SymmetryAnalysis {
  bool off = false;                     // /NOSYM
  int top = AsymmetricTop;              // top of the approximate pass: the one reported
  int index = 0;                        // of the strict pass
  int approximateIndex = 0;
  std::string groupName = "N/A ";
  std::string approximateName = "N/A ";
  int groupCode = NoGroup;
  int symmetryNumber = 0;               // of the strict pass; 0 when not known
  double symEpsAfter = 0.0;             // SymEps from now on: 100 times the value given
  std::vector<std::string> logLines;    // warnings and what the passes wrote
  std::vector<std::string> consoleLines;
  int userPauses = 0;

  bool ShowApproximate() const { return approximateIndex != index; }
  // The number the thermochemistry uses when the user gave none.
  int RotationNumber() const { return symmetryNumber == 0 ? 1 : symmetryNumber; }
};

SymmetryAnalysis AnalyseSymmetry(const std::vector<int>& nuclear, const std::vector<double>& mass,
                                 const std::vector<Vec3>& xyzBohr, double symEps, bool noSymmetry);

// Which rotational symmetry number the run uses, with the warning when the
// user's number (/ROT, /ROTNUM) differs from the recognised one.
struct RotationNumberChoice {
  double value = 1.0;
  bool differs = false;
  std::vector<std::string> logLines;    // the warning, when it differs
};
RotationNumberChoice ChooseRotationNumber(int recognised, bool userGiven, double userValue);

// The report from the warnings to " Rotational Symmetry Number:".
std::vector<std::string> SymmetryReportLines(const SymmetryAnalysis& symmetry,
                                             const RotationNumberChoice& rotation);

}  // namespace quintor

// One NRot and one barrier for every rotation (NROTALL= and V0ALL= of the
// SpecFile) on xtb logs of ethane and propane: the fold and barrier the run
// uses, the messages said once, and the rotor's functions against the free
// rotor by hand and the exact quantum rotor of tests/quantum_rotor.cpp.
#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "numeric/constants.h"
#include "quantum_rotor.h"
#include "rotations/hindered_rotor.h"
#include "test_support.h"

namespace quintor {
namespace {

using namespace test;
namespace rc = constants;

const std::string kNRotWarning = " WARNING! NRot value is set by user (the same value for all rotatioins)!\n";
const std::string kUserBarrier = " Rotation barrier is set by user\n";
const std::string kSameV0 = " WARNING! The same V0 value is used for all rotations!\n";

std::string CosineTable(double V0, int n) {
  std::string t;
  for (int deg = 0; deg <= 360; deg += 10)
    t += std::to_string(deg) + " " + std::to_string(V0 / 2.0 * (1.0 - std::cos(n * deg * rc::DegToRad))) + "\n";
  return t;
}

struct UserRotorCase {
  const char* what;
  const char* log;
  std::vector<std::string> options;
  std::string spec;
  int rotors;
  int fold;
  double v0;      // kJ/mol; 0: from the torsion frequency `nu`
  double nu;      // cm-1
  const char* source;
  int nRotWarnings, userLines, sameV0Warnings;
};

const UserRotorCase kCases[] = {
    // 12/36 of the 3-fold barrier: V0 goes with 1/n^2.
    {"ethane, NRot 6 for the fold 3", "ethane_xtb.out", {"/ARIR"}, "NROTALL=6\n", 1, 6, 0.0, 300.767, "frequency", 1, 0, 0},
    {"ethane, V0 in kcal/mol", "ethane_xtb.out", {"/ARIR"}, "V0ALL=2.9 KCAL\n", 1, 3, 2.9 * 4.184, 0.0, "user", 0, 1, 0},
    {"ethane, NRot above the product", "ethane_xtb.out", {"/ARIR", "/NROTPRODUCT"}, "NROTALL=3\nV0ALL=12\n", 1, 3, 12.0,
     0.0, "user", 1, 1, 0},
    {"propane, both for two rotors", "propane_xtb.out", {"/ARIR"}, "NROTALL=3\nV0ALL=13.0\n", 2, 3, 13.0, 0.0, "user", 1,
     2, 1},
    // The user's barrier takes the place of a 12 kJ/mol potential.
    {"ethane, V0 over READP", "ethane_xtb.out", {},
     "VIBR=7 ROT=3 GROUP=(1,3,4,5) AXIS=(1,2) READP KJ\n" + CosineTable(12.0, 3) + "\nV0ALL=5\n", 1, 3, 5.0, 0.0,
     "user", 0, 1, 0},
    // A barrier of 0 is no barrier set: the frequency gives it.
    {"ethane, V0 of zero", "ethane_xtb.out", {"/ARIR"}, "V0ALL=0\n", 1, 3, 0.0, 300.767, "frequency", 0, 0, 0},
};

class UserRotors : public ::testing::TestWithParam<UserRotorCase> {};

TEST_P(UserRotors, FoldBarrierAndFunctions) {
  const UserRotorCase& c = GetParam();
  SCOPED_TRACE(c.what);
  TempDir dir;
  std::vector<std::string> options = c.options;
  options.push_back("/@" + dir.Write("user.tdi", c.spec));
  LogRun run(TestInput("rotations/" + std::string(c.log)), options);
  ASSERT_EQ(run.r.status, exit_status::Ok) << run.r.console;
  const std::string& log = run.r.log;
  EXPECT_EQ(CountText(log, kNRotWarning), c.nRotWarnings);
  EXPECT_EQ(CountText(log, kUserBarrier), c.userLines);
  EXPECT_EQ(CountText(log, kSameV0), c.sameV0Warnings);
  EXPECT_EQ(CountText(log, "(n=" + std::to_string(c.fold) + "):"), c.rotors);
  if (c.userLines > 0) {
    EXPECT_EQ(CountText(log, " Rotation barrier is estimated"), 0);
  }

  const auto& rotors = run.s.thermo.report.rotors;
  ASSERT_EQ(static_cast<int>(rotors.size()), c.rotors);
  const double T = 298.15;
  for (const RotorRecord& r : rotors) {
    const double I = r.iStar * rc::AtomicMassUnit * rc::BohrRadius * rc::BohrRadius;  // kg m^2
    EXPECT_EQ(r.fold, c.fold);
    EXPECT_STREQ(r.v0Source, c.source);
    const double v0 = c.v0 > 0.0 ? c.v0
                                 : 8.0 * rc::Pi * rc::Pi * I * std::pow(100.0 * rc::SpeedOfLight * c.nu, 2) *
                                       rc::Avogadro / (c.fold * c.fold * 1000.0);
    EXPECT_NEAR(r.v0Star, v0, 1e-3 * v0);
    // Free rotor: S = R (ln Qf + 1/2), Qf = sqrt(8 pi^3 I k T) / (n h).
    const double Qf = std::sqrt(8.0 * std::pow(rc::Pi, 3) * I * rc::Boltzmann * T) / (c.fold * rc::Planck);
    EXPECT_NEAR(r.models[FreeStarColumn][1], rc::GasConstant * (std::log(Qf) + 0.5), 1e-6);
    // The quantum rotor in V0/2 (1 - cos n x), levels by the tests' own code.
    const testing::QuantumRotor exact = testing::ExactHinderedRotor(r.v0Star, I, c.fold, T);
    EXPECT_NEAR(r.models[QuantumStarColumn][0], exact.C, 0.02);
    EXPECT_NEAR(r.models[QuantumStarColumn][1], exact.S, 0.02);
    EXPECT_NEAR(r.models[PitzerStarColumn][1], exact.S, 0.3);
  }
}

INSTANTIATE_TEST_SUITE_P(SpecFile, UserRotors, ::testing::ValuesIn(kCases));

}  // namespace
}  // namespace quintor

// Force constants from the punch file of a GAMESS log and from a Gaussian
// formatted checkpoint file: frequencies, reduced masses and force constants
// recalculated from them, against what the calculation program printed.
//
// The formatted checkpoint file tests/inputs/water_xtb.fch was made from
// Debian's xtb 6.5.1: `xtb water.xyz --ohess` wrote the Cartesian Hessian of
// the optimised water molecule (file "hessian", hartree/bohr^2) and its
// Gaussian-98-style frequency output g98.out, kept here as
// tests/inputs/water_xtb.out. The lower triangle of the (symmetrised) Hessian
// was written in the "Cartesian Force Constants" layout, five values of E16.8
// to a line, under a short formatted-checkpoint head.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "io/fortran_io.h"
#include "test_support.h"
#include "thermo/force_constants.h"

using namespace quintor;
using namespace quintor::test;

namespace {

// ---- What the GAMESS log printed ---------------------------------------------------

// The ammonia transition state of GAMESS(US) 2018, copied with its punch
// file into `dir` and read in a whole run.
void PrepareNh3(Session& s, const TempDir& dir, bool withPunch = true) {
  const std::string log = dir.Write("nh3_ts_ir.log", ReadFile(TestData("gamess-us2018/nh3_ts_ir.log")));
  if (withPunch) dir.Write("nh3_ts_ir.pun", ReadFile(TestData("gamess-us2018/nh3_ts_ir.pun")));
  RunResult r = RunInProcess(s, {log, "/0"});
  ASSERT_EQ(r.status, 0) << r.console;
  ASSERT_EQ(s.nAtoms, 4);
  ASSERT_EQ(s.modes.size(), 12u);  // GAMESS prints all 3N modes
  s.files.inputName = log;
}

std::string RunToFile(Session& s, const TempDir& dir) {
  MainLog out;
  const std::string name = dir.File("report.tdo");
  EXPECT_TRUE(out.Open(name));
  RecalculateFrequencies(s, out);
  out.Close();
  return ReadFile(name);
}

TEST(ForceConstants, PunchHessianOfAmmoniaGivesTheFrequenciesOfGamess) {
  SKIP_WITHOUT_TESTDATA();
  TempDir dir;
  Session s;
  ASSERT_NO_FATAL_FAILURE(PrepareNh3(s, dir));
  const GamessModes printed = ReadGamessModes(FileLines(s.files.inputName));
  ASSERT_EQ(printed.freq.size(), 12u);
  s.opt.recalcFreq = true;
  std::string report = RunToFile(s, dir);

  ASSERT_EQ(s.modes.size(), 12u);
  // The imaginary mode comes out negative.
  EXPECT_LT(s.modes.at(0).freq, 0.0);
  EXPECT_NEAR(s.modes.at(0).freq, -825.18, 1.0);
  for (size_t k = 0; k < 12; ++k) {
    EXPECT_NEAR(std::fabs(s.modes[k].freq), std::fabs(printed.freq[k]), 1.0) << "mode " << k + 1;
    // The vibrations (not the six near-zero modes) have GAMESS's reduced masses.
    if (k == 0 || k >= 7) {
      EXPECT_NEAR(s.modes[k].redMass, printed.redMass[k], 1.0e-3) << "mode " << k + 1;
    }
    EXPECT_NEAR(s.modes[k].forceConst, 5.96804e-08 * s.modes[k].freq * s.modes[k].freq * s.modes[k].redMass,
                1e-12);
  }

  EXPECT_NE(report.find(" Atomic masses used in TD calculations:\n     1       14.00307\n     2        1.00782\n"),
            std::string::npos)
      << report;
  EXPECT_NE(report.find("\n\n Frequencies (cm-1), reduced masses (amu) and force constants (mdyn/A):\n"
                        "   No   Original frequency      Recalculated    Reduced     Force\n"
                        "          Freq     Scaled      Freq    Scaled     Mass     Constant\n" +
                        std::string(66, '-') + "\n"),
            std::string::npos)
      << report;
  // The row of the imaginary mode: number, two original and two recalculated
  // frequencies, reduced mass, force constant.
  std::istringstream table(report.substr(report.find(std::string(66, '-'))));
  std::string line;
  std::getline(table, line);
  std::getline(table, line);
  ASSERT_EQ(line.size(), 5u + 5 * 10 + 12);
  EXPECT_EQ(line.substr(0, 25), "    1   -825.18   -825.18");
  EXPECT_EQ(line.substr(25, 7), "   -825") << line;
}

TEST(ForceConstants, WithoutRecalcFreqOnlyMassesAndConstantsChange) {
  SKIP_WITHOUT_TESTDATA();
  TempDir dir;
  Session s;
  ASSERT_NO_FATAL_FAILURE(PrepareNh3(s, dir));
  s.opt.freqScale = 0.9;
  std::vector<double> before;
  for (const auto& m : s.modes) before.push_back(m.freq);
  std::string report = RunToFile(s, dir);
  for (size_t k = 0; k < 12; ++k) EXPECT_EQ(s.modes[k].freq, before[k]);
  EXPECT_NEAR(s.modes.at(9).redMass, 1.09811, 1.0e-3);
  EXPECT_GT(s.modes.at(9).forceConst, 0.0);
  // The scaled columns.
  EXPECT_NE(report.find("   10   3639.72   3275.75   3639."), std::string::npos) << report;
}

TEST(ForceConstants, MissingPunchFileGivesReducedMassesFromTheVectors) {
  SKIP_WITHOUT_TESTDATA();
  TempDir dir;
  Session s;
  ASSERT_NO_FATAL_FAILURE(PrepareNh3(s, dir, false));
  const GamessModes printed = ReadGamessModes(FileLines(s.files.inputName));
  std::string report = RunToFile(s, dir);
  const std::string name = s.files.inputName.substr(0, s.files.inputName.size() - 4) + ".pun";
  EXPECT_NE(report.find(" WARNING! Can not find PUN-file (" + name.substr(0, 16) + "):\n"
                        " Can not calculate the reduced masses.\n"
                        "  Reduced masses calculated on the basis of current normal vectors:\n"),
            std::string::npos)
      << report;
  // GAMESS normalises its printed vectors so that these are its reduced masses.
  for (size_t k : {0u, 7u, 9u, 11u}) EXPECT_NEAR(s.modes[k].redMass, printed.redMass[k], 2.0e-4) << k;
  EXPECT_NE(report.find(FmtF(s.modes.at(11).redMass, 25, 5) + "\n"), std::string::npos);
  EXPECT_EQ(report.find("Recalculated"), std::string::npos);
}

TEST(ForceConstants, PunchFileWithoutHessianWarnsAndLeavesTheValues) {
  SKIP_WITHOUT_TESTDATA();
  TempDir dir;
  Session s;
  ASSERT_NO_FATAL_FAILURE(PrepareNh3(s, dir, false));
  std::string pun = ReadFile(TestData("gamess-us2018/nh3_ts_ir.pun"));
  dir.Write("nh3_ts_ir.pun", pun.substr(0, pun.find(" $HESS")));
  s.opt.recalcFreq = true;
  const double f1 = s.modes.at(0).freq;
  std::string report = RunToFile(s, dir);
  EXPECT_NE(report.find(" WARNING! Hessian is not found in PUN-file: can not calculate reduced masses!\n"),
            std::string::npos)
      << report;
  EXPECT_EQ(s.modes.at(0).freq, f1);
  EXPECT_EQ(report.find("Recalculated"), std::string::npos);
}

TEST(ForceConstants, ACutHessianIsAFatalReadError) {
  SKIP_WITHOUT_TESTDATA();
  TempDir dir;
  std::string pun = ReadFile(TestData("gamess-us2018/nh3_ts_ir.pun"));
  std::string path = dir.Write("cut.pun", pun.substr(0, pun.find(" 7  1", pun.find("$HESS"))));
  Hessian h;
  EXPECT_THROW(ReadPunchHessian(path, 12, h), FatalReadError);
}

// ---- Formatted checkpoint file -------------------------------------------------------

// Frequencies printed in xtb's g98.out for its water molecule.
const std::vector<double> kXtbWater{1540.8626, 3638.1169, 3646.4148};

void PrepareWater(Session& s, const TempDir& dir, bool withFch = true) {
  const std::string out = dir.Write("water_xtb.out", ReadFile(TestInput("water_xtb.out")));
  if (withFch) dir.Write("water_xtb.fch", ReadFile(TestInput("water_xtb.fch")));
  RunResult r = RunInProcess(s, {out, "/0"});
  ASSERT_EQ(r.status, 0) << r.console;
  ASSERT_EQ(s.opt.formatCode, FormatCode::Gaussian98);  // read as a Gaussian 98 log
  ASSERT_EQ(s.nAtoms, 3);
  ASSERT_EQ(s.modes.size(), 9u);
}

TEST(ForceConstants, FchHessianOfWaterGivesTheFrequenciesOfXtb) {
  TempDir dir;
  Session s;
  ASSERT_NO_FATAL_FAILURE(PrepareWater(s, dir));
  // xtb works with the average atomic masses.
  s.atomMass = {15.9994, 1.00794, 1.00794};
  s.opt.recalcFreq = true;
  std::string report = RunToFile(s, dir);
  // The translations and rotations the log leaves out stay empty.
  for (int k = 0; k < 6; ++k) EXPECT_EQ(s.modes[k].freq, 0.0) << k;
  for (int k = 0; k < 3; ++k) {
    EXPECT_NEAR(s.modes[6 + k].freq, kXtbWater[k], 0.1) << k;
    EXPECT_GT(s.modes[6 + k].redMass, 1.0);
    EXPECT_LT(s.modes[6 + k].redMass, 1.2);
  }
  EXPECT_NE(report.find("    9   3646.41   3646.41   3646.4"), std::string::npos) << report;
}

TEST(ForceConstants, MissingOrEmptyFchFileWarns) {
  const std::string fch = ReadFile(TestInput("water_xtb.fch"));
  for (bool present : {false, true}) {
    TempDir dir;
    Session s;
    ASSERT_NO_FATAL_FAILURE(PrepareWater(s, dir, false));
    if (present) dir.Write("water_xtb.fch", fch.substr(0, fch.find("Cartesian Force")));
    const std::string report = RunToFile(s, dir);
    const std::string warning =
        present ? " WARNING! Cartesian force constants are not found in FCH-file!\n Can not calculate reduced masses!\n"
                : " WARNING! Can not find formatted g98 checkfile (" + dir.File("water_xtb.fch").substr(0, 16) +
                      "):\n Can not calculate the reduced masses.\n"
                      "  Reduced masses calculated on the basis of current normal vectors:\n";
    EXPECT_NE(report.find(warning), std::string::npos) << report;
  }
}

TEST(ForceConstants, LaterGaussianLogsPrintNothingEvenWithAnFchFile) {
  TempDir dir;
  Session s;
  ASSERT_NO_FATAL_FAILURE(PrepareWater(s, dir));
  s.opt.formatCode = FormatCode::Gaussian09;
  s.opt.recalcFreq = true;
  const double f = s.modes.at(8).freq;
  std::string report = RunToFile(s, dir);
  EXPECT_EQ(report, "");
  EXPECT_EQ(s.modes.at(8).freq, f);
}

TEST(ForceConstants, Gaussian94TableComesFromTheLogsModes) {
  TempDir dir;
  Session s;
  ASSERT_NO_FATAL_FAILURE(PrepareWater(s, dir, false));
  s.opt.formatCode = FormatCode::Gaussian94;
  s.modes.at(6).redMass = 1.08;
  std::string report = RunToFile(s, dir);
  EXPECT_NE(report.find("    7   1540.86   1540.86   1540.86   1540.86      1.08" +
                        FmtF(5.96804e-08 * 1540.8626 * 1540.8626 * 1.08, 12, 6) + "\n"),
            std::string::npos)
      << report;
}

}  // namespace

// Readers of Priroda logs, this program's own log read back, and the log of
// the earlier program KORVANDEL.
//
// No real Priroda or KORVANDEL log is at hand: the fixtures
// tests/inputs/priroda_*.out and tests/inputs/korvandel_*.log were written by
// hand, line by line, to the anchors and column positions the readers expect;
// their numbers are made up and stand only to be read back. The own-log tests
// use logs that the program itself writes in a whole run.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "io/fortran_io.h"
#include "test_support.h"

using namespace quintor;
using namespace quintor::test;

namespace {

constexpr double kA = constants::BohrToAngstrom;

// Copies a hand-made input into a fresh directory and runs a whole batch run on it.
RunResult RunOn(Session& s, const TempDir& dir, const std::string& fixture, std::vector<std::string> extra = {}) {
  std::string path = dir.Write(fixture, ReadFile(TestInput(fixture)));
  std::vector<std::string> args{path, "/0"};
  args.insert(args.end(), extra.begin(), extra.end());
  return RunInProcess(s, args);
}

void ExpectAngstrom(const Vec3& bohr, double x, double y, double z, double tol = 1e-9) {
  EXPECT_NEAR(bohr[0] * kA, x, tol);
  EXPECT_NEAR(bohr[1] * kA, y, tol);
  EXPECT_NEAR(bohr[2] * kA, z, tol);
}

// ---- Priroda -------------------------------------------------------------------

TEST(Priroda, OptimisationWithModesIsReadByItsBanner) {
  TempDir dir;
  Session s;
  RunResult r = RunOn(s, dir, "priroda_h2o_opt_freq.out");
  ASSERT_EQ(r.status, 0) << r.console;
  EXPECT_EQ(s.opt.formatCode, FormatCode::Priroda);
  EXPECT_NE(r.log.find(" PRIRODA v.9 detected"), std::string::npos);
  EXPECT_NE(r.log.find("\n PRIRODA input\n"), std::string::npos);
  EXPECT_NE(r.log.find(" Step =    1\n" + std::string(80, '-') + "\n"), std::string::npos);
  EXPECT_NE(r.log.find(FmtA("1", 5) + FmtI(1, 4) + FmtX(2) + FmtF(0.0, 15, 8) + FmtF(0.755453, 15, 8) +
                       FmtF(-0.471161, 15, 8)),
            std::string::npos);

  // Three geometries; the first also stands as sets 0 and -1.
  ASSERT_EQ(s.iCyc, 3);
  ASSERT_EQ(s.nAtoms, 3);
  ExpectAngstrom(s.Set(1).xyz.at(1), 0.0, 0.76, -0.48);
  ExpectAngstrom(s.Set(2).xyz.at(1), 0.0, 0.75545, -0.471161);
  ExpectAngstrom(s.Set(3).xyz.at(2), 0.0, -0.755453, -0.471161);
  for (int set : {0, -1}) {
    ASSERT_EQ(s.Set(set).xyz.size(), 3u);
    ExpectAngstrom(s.Set(set).xyz.at(1), 0.0, 0.76, -0.48);
  }
  EXPECT_EQ(s.atomicNumber, (std::vector<int>{8, 1, 1}));

  // Energies from "eng>$Energy" and the optimisation steps; the column GRms
  // holds the largest displacement.
  EXPECT_DOUBLE_EQ(s.Set(1).energy, -76.3801234);  // E20.8 holds nine digits
  EXPECT_DOUBLE_EQ(s.Set(3).energy, -76.40234567);
  EXPECT_DOUBLE_EQ(s.Set(1).gmax, 0.0234567);
  EXPECT_DOUBLE_EQ(s.Set(3).gmax, 0.0000123);
  EXPECT_DOUBLE_EQ(s.Set(0).energy, s.Set(1).energy);

  // The spin multiplicity is read each time it stands: the last one wins.
  EXPECT_EQ(s.opt.multiplicity, 1);

  // The log's masses give way to the table.
  EXPECT_DOUBLE_EQ(s.atomMass.at(0), 15.99491);
  EXPECT_DOUBLE_EQ(s.atomMass.at(1), 1.00782);

  // Six translations and rotations, then the table's three modes.
  ASSERT_EQ(s.modes.size(), 9u);
  for (int k = 0; k < 6; ++k) EXPECT_EQ(s.modes[k].freq, 0.0);
  EXPECT_DOUBLE_EQ(s.modes.at(6).freq, 1595.12);
  EXPECT_DOUBLE_EQ(s.modes.at(6).redMass, 1.08);
  EXPECT_DOUBLE_EQ(s.modes.at(6).intensity, 65.432);
  EXPECT_DOUBLE_EQ(s.modes.at(8).freq, 3750.88);
  // Mass-weighted displacements, as printed.
  ASSERT_EQ(s.modes.at(6).disp.size(), 3u);
  EXPECT_DOUBLE_EQ(s.modes.at(6).disp.at(0)[0], 0.1);
  EXPECT_DOUBLE_EQ(s.modes.at(7).disp.at(0)[1], 0.201);
  EXPECT_DOUBLE_EQ(s.modes.at(8).disp.at(2)[2], 0.308);
  // The displacement rows are echoed.
  EXPECT_NE(r.log.find("H3   z   0.108000 -0.208000  0.308000"), std::string::npos);
}

TEST(Priroda, LinearMoleculeHasFiveZeroModesAndTwoBlocks) {
  TempDir dir;
  Session s;
  RunResult r = RunOn(s, dir, "priroda_c2h2_freq.out", {"/PRIR"});
  ASSERT_EQ(r.status, 0) << r.console;
  EXPECT_EQ(s.opt.formatCode, FormatCode::Priroda);
  ASSERT_EQ(s.iCyc, 1);
  ASSERT_EQ(s.nAtoms, 4);
  EXPECT_DOUBLE_EQ(s.Set(1).energy, -77.3298765);
  ExpectAngstrom(s.Set(-1).xyz.at(3), 0.0, 0.0, -1.6655);
  ASSERT_EQ(s.modes.size(), 12u);
  for (int k = 0; k < 5; ++k) EXPECT_EQ(s.modes[k].freq, 0.0);
  EXPECT_DOUBLE_EQ(s.modes.at(5).freq, 612.34);
  EXPECT_DOUBLE_EQ(s.modes.at(11).freq, 3510.01);
  // The seventh vibration comes from the second block, of one column.
  EXPECT_DOUBLE_EQ(s.modes.at(11).disp.at(0)[0], 0.07);
  EXPECT_DOUBLE_EQ(s.modes.at(11).disp.at(3)[2], -0.0711);
}

TEST(Priroda, OptimisationStepZeroDoesNotTakeTheNextLine) {
  // "Geometry Optimization Step 0" is followed directly by an anchor that
  // must still be seen; a later step takes its next line as the energy.
  TempDir dir;
  std::string log =
      "Priroda 9\n"
      "Atomic Coordinates:\n"
      "  1  0.0 0.0 0.0\n"
      "  1  0.0 0.0 0.74\n"
      "\n"
      "Geometry Optimization Step 0\n"
      "eng>$Energy\n"
      "energy      -1.17000000E+00\n"
      "Geometry Optimization Step 12\n"
      "eng>$Energy\n";
  std::string path = dir.Write("h2.out", log);
  Session s;
  RunResult r = RunInProcess(s, {path, "/0"});
  ASSERT_EQ(r.status, 0) << r.console;
  ASSERT_EQ(s.iCyc, 1);
  // Step 12 took the "eng>$Energy" line as its energy line: columns 16-31 are blank.
  EXPECT_DOUBLE_EQ(s.Set(1).energy, 0.0);

  const std::string log2 = log.substr(0, log.find("Geometry Optimization Step 12")) +
                     "Geometry Optimization Step 12\n"
                     "Energy             -1.17345678\n";
  path = dir.Write("h2b.out", log2);
  Session s2;
  r = RunInProcess(s2, {path, "/0"});
  ASSERT_EQ(r.status, 0) << r.console;
  EXPECT_DOUBLE_EQ(s2.Set(1).energy, -1.17345678);
}

TEST(Priroda, ACutNormalModeBlockStopsTheRun) {
  TempDir dir;
  std::string text = ReadFile(TestInput("priroda_h2o_opt_freq.out"));
  text = text.substr(0, text.find("H2   y"));
  std::string path = dir.Write("cut.out", text);
  Session s;
  RunResult r = RunInProcess(s, {path, "/0"});
  EXPECT_EQ(r.status, exit_status::ReadError);
}

// ---- The earlier program's log -----------------------------------------------------

void CheckKorvandel(const Session& s) {
  ASSERT_EQ(s.iCyc, 3);
  ASSERT_EQ(s.nAtoms, 4);
  EXPECT_EQ(s.atomicNumber, (std::vector<int>{6, 8, 1, 1}));
  ExpectAngstrom(s.Set(1).xyz.at(1), 0.0, 0.0, 0.675);
  ExpectAngstrom(s.Set(2).xyz.at(2), 0.0, 0.9398765432, -1.1101234567);
  ExpectAngstrom(s.Set(3).xyz.at(0), 0.0, 0.0, -0.5295555555);
  for (int set : {0, -1}) {
    ASSERT_EQ(s.Set(set).xyz.size(), 4u);
    ExpectAngstrom(s.Set(set).xyz.at(3), 0.0, -0.941, -1.112);
  }
}

TEST(Korvandel, PointsAreReadByTheBannerOrWhenForced) {
  for (const std::vector<std::string>& options : {std::vector<std::string>{}, std::vector<std::string>{"/A"}}) {
    TempDir dir;
    Session s;
    RunResult r = RunOn(s, dir, "korvandel_h2co.log", options);
    ASSERT_EQ(r.status, 0) << r.console;
    EXPECT_EQ(s.opt.formatCode, FormatCode::Korvandel);
    ASSERT_NO_FATAL_FAILURE(CheckKorvandel(s));
  }
}

// ---- This program's own log ----------------------------------------------------------

struct PrintedAtom {
  int z = 0;
  double x = 0, y = 0, z3 = 0;
};

// The rows of the first "Last view coordinates" table of a MainLog.
std::vector<PrintedAtom> LastViewTable(const std::string& log) {
  std::istringstream in(log.substr(log.find("Last view coordinates and bonds in a molecular")));
  std::string line;
  std::getline(in, line);
  std::getline(in, line);  // rule
  std::vector<PrintedAtom> atoms;
  while (std::getline(in, line) && line.find("----") == std::string::npos) {
    std::istringstream w(line);
    std::string name;
    PrintedAtom a;
    w >> name >> a.z >> a.x >> a.y >> a.z3;
    atoms.push_back(a);
  }
  return atoms;
}

TEST(OwnLog, ALogWrittenByARunReadsBackToThePrintedDigits) {
  TempDir dir;
  // Coordinates with more digits than the log prints.
  std::string xyz = dir.Write("hcooh.xyz",
                              "C   -0.1234567891   0.4012345678   0.0000123456\n"
                              "O    1.0687654321   0.5598765432  -0.0001234567\n"
                              "O   -1.0123456789   1.2345678912   0.0002345678\n"
                              "H   -0.4511111111  -0.6222222222   0.0003333333\n"
                              "H   -0.5666666666   2.1077777777   0.0004444444\n");
  Session first;
  RunResult written = RunInProcess(first, {xyz, "/X0", "/0"});  // no count and title lines
  ASSERT_EQ(written.status, 0) << written.console;
  std::vector<PrintedAtom> printed = LastViewTable(written.log);
  ASSERT_EQ(printed.size(), 5u);

  // Read back: recognised by the banner in the head of the log.
  Session s;
  RunResult r = RunInProcess(s, {first.files.logName, "/0"});
  ASSERT_EQ(r.status, 0) << r.console;
  EXPECT_EQ(s.opt.formatCode, FormatCode::OwnLog);
  EXPECT_NE(r.log.find(" QUINTOR v.2.x detected"), std::string::npos);
  // One set for the last view: the molecular frame.
  ASSERT_EQ(s.iCyc, 0);
  ASSERT_EQ(s.nAtoms, 5);
  const auto& set = s.Set(0).xyz;
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(s.atomicNumber[i], printed[i].z);
    ExpectAngstrom(set[i], printed[i].x, printed[i].y, printed[i].z3, 1e-12);
  }
  // The run may move and turn the molecule before it prints the last view;
  // the shape is the original one, to the printed digits.
  const std::vector<Vec3> original{{-0.1234567891, 0.4012345678, 0.0000123456},
                                   {1.0687654321, 0.5598765432, -0.0001234567},
                                   {-1.0123456789, 1.2345678912, 0.0002345678},
                                   {-0.4511111111, -0.6222222222, 0.0003333333},
                                   {-0.5666666666, 2.1077777777, 0.0004444444}};
  auto distance = [](const Vec3& a, const Vec3& b) {
    return std::sqrt(std::pow(a[0] - b[0], 2) + std::pow(a[1] - b[1], 2) + std::pow(a[2] - b[2], 2));
  };
  for (int i = 0; i < 5; ++i)
    for (int j = 0; j < i; ++j)
      EXPECT_NEAR(distance(set[i], set[j]) * kA, distance(original[i], original[j]), 2.0e-6) << i << " " << j;
}

TEST(OwnLog, AGamessOptimisationReadsBackStepByStep) {
  SKIP_WITHOUT_TESTDATA();
  TempDir dir;
  const std::string log = dir.Write("dvb_gopt.log", ReadFile(TestData("gamess-us/dvb_gopt.log")));
  Session first;
  RunResult written = RunInProcess(first, {log, "/0"});
  ASSERT_EQ(written.status, 0) << written.console;
  int blocks = 0;
  for (size_t at = written.log.find(" NSEARCH ="); at != std::string::npos; at = written.log.find(" NSEARCH =", at + 1))
    ++blocks;
  ASSERT_GT(blocks, 2);

  Session s;
  RunResult r = RunInProcess(s, {first.files.logName, "/0"});
  ASSERT_EQ(r.status, 0) << r.console;
  // As many sets as search steps, and one for the last view.
  ASSERT_EQ(s.iCyc, blocks);
  ASSERT_EQ(s.nAtoms, first.nAtoms);
  EXPECT_EQ(s.atomicNumber, first.atomicNumber);
  // The steps come back with the ten decimals the log echoes; the second
  // step also stands as set 0.
  for (int k = 1; k < blocks; ++k)
    for (int i = 0; i < s.nAtoms; ++i)
      for (int j = 0; j < 3; ++j) EXPECT_NEAR(s.Set(k).xyz[i][j], first.Set(k).xyz[i][j], 1e-9) << k << " " << i;
  for (int i = 0; i < s.nAtoms; ++i)
    for (int j = 0; j < 3; ++j) EXPECT_EQ(s.Set(0).xyz[i][j], s.Set(1).xyz[i][j]);
  // The last set is the last view of the molecular frame.
  std::vector<PrintedAtom> printed = LastViewTable(written.log);
  ASSERT_EQ(static_cast<int>(printed.size()), s.nAtoms);
  for (int i = 0; i < s.nAtoms; ++i) ExpectAngstrom(s.Set(blocks).xyz[i], printed[i].x, printed[i].y, printed[i].z3, 1e-12);
}

}  // namespace

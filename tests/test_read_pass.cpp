// The read pass: banner detection on every real log, the GAMESS look-ahead,
// the limits and the finishing stage.
#include <gtest/gtest.h>

#include <sstream>

#include "readers/read_pass.h"
#include "test_support.h"

using namespace quintor;
using namespace quintor::test;

namespace {

struct Detected {
  int code;
  std::string log;
};

Detected Detect(const std::string& path) {
  Session s;
  LineReader in;
  EXPECT_TRUE(in.Open(path)) << path;
  Detected d;
  d.code = static_cast<int>(DetectFormat(s, in));
  TempDir dir;
  s.log.Open(dir.File("x.mou"));
  s.log.WritePending();
  s.log.Close();
  d.log = ReadFile(dir.File("x.mou"));
  return d;
}

}  // namespace

TEST(BannerDetection, EveryRealLogByFolder) {
  SKIP_WITHOUT_TESTDATA();
  const std::vector<std::tuple<std::string, int, std::string>> cases = {
      {"gaussian98/h2_freq.log", 3, " Gaussian 98 detected"},
      {"gaussian98/cu2_freq.log", 3, " Gaussian 98 detected"},
      {"gaussian98/water_zmatrix_nosym.log", 3, " Gaussian 98 detected"},
      {"gaussian03/dvb_ir.log", 10, " Gaussian 03 detected"},
      {"gaussian03/dvb_raman.log", 10, " Gaussian 03 detected"},
      {"gaussian03/anthracene_opt_freq.log", 10, " Gaussian 03 detected"},
      {"gaussian03/dvb_gopt.log", 10, " Gaussian 03 detected"},
      {"gaussian03/water_mp2.log", 10, " Gaussian 03 detected"},
      {"gaussian09/benzene_freq.log", 16, " Gaussian 09 detected"},
      {"gaussian09/bsl_opt_freq.log", 16, " Gaussian 09 detected"},
      {"gaussian09/irc_point.log", 16, " Gaussian 09 detected"},
      {"gaussian16/water_opt_freq.log", 16, " Gaussian 16 detected"},
      {"gaussian16/co_opt_freq.log", 16, " Gaussian 16 detected"},
      {"pcgamess/dvb_ir_v6.log", 0, " PC GAMESS v.6 detected"},
      {"pcgamess/dvb_gopt_v6.log", 0, " PC GAMESS v.6 detected"},
      {"pcgamess/cn_ir_v7.log", 15, " PC GAMESS v.7 detected"},
      {"gamess-us/dvb_ir.log", 19, " GAMESS(US) detected"},
      {"gamess-us/dvb_gopt.log", 19, " GAMESS(US) detected"},
      {"gamess-us/nh3_ts_ir.log", 19, " GAMESS(US) detected"},
      {"gamess-us2018/nh3_ts_ir.log", 19, " GAMESS(US) detected"},
  };
  for (const auto& [file, code, message] : cases) {
    Detected d = Detect(TestData(file));
    EXPECT_EQ(d.code, code) << file;
    EXPECT_EQ(d.log.substr(0, message.size()), message) << file;
  }
  Detected xtb = Detect(TestInput("water_xtb.out"));
  EXPECT_EQ(xtb.code, 3);
  EXPECT_EQ(xtb.log, " xtb g98.out detected\n");
}

TEST(BannerDetection, OrderOfTheTableAndLateBanners) {
  EXPECT_EQ(FindBanner("no banner here"), nullptr);
  // A PC GAMESS line wins over the new GAMESS(US) row by coming first.
  EXPECT_EQ(FindBanner(" PC GAMESS version 7.0 GAMESS VERSION = x")->code, FormatCode::PcGamess7);

  // A Gaussian 09 banner is found however far down it stands.
  TempDir dir;
  std::string text;
  for (int i = 0; i < 5000; ++i) text += " some text of another program\n";
  text += " This is part of the Gaussian(R) 09 program.\n";
  Detected d = Detect(dir.Write("late.log", text));
  EXPECT_EQ(d.code, 16);
}

namespace {
// A "GAMESS VERSION =  6" line and, `gap` lines later, the PC GAMESS line.
std::string LookAheadFile(int gap) {
  std::string text = " header\n          *            GAMESS VERSION =  6 JUN 1999            *\n";
  for (int i = 1; i < gap; ++i) text += " filler line " + std::to_string(i) + "\n";
  text += "          *      PC GAMESS version 6.2, build number 2068      *\n";
  text += " after the banner\n";
  return text;
}
}  // namespace

TEST(GamessLookAhead, PcGamessLineWithin100LinesOrGamessUsAfterRewind) {
  TempDir dir;
  for (auto [gap, line] : {std::pair{30, 32}, std::pair{100, 102}, std::pair{101, 0}}) {
    SCOPED_TRACE(gap);
    Session s;
    LineReader in;
    in.Open(dir.Write("g.log", LookAheadFile(gap)));
    EXPECT_EQ(DetectFormat(s, in), FormatCode::Gamess);
    EXPECT_EQ(in.LineNumber(), line);  // on from the PC GAMESS line, or rewound
  }
  Session s;
  LineReader in;
  in.Open(dir.Write("us6.log", LookAheadFile(101)));
  DetectFormat(s, in);
  s.log.Open(dir.File("us6.mou"));
  s.log.WritePending();
  s.log.Close();
  EXPECT_EQ(ReadFile(dir.File("us6.mou")), " GAMESS(US) version 6 detected\n");
}

TEST(Limits, CycleLimitStopsAtTheGeometryBeyondIt) {
  Session s;
  std::ostringstream console;
  s.console = &console;
  s.opt.maxCycles = 2;
  StartGeometry(s);  // set 0
  StartGeometry(s);  // set 1
  StartGeometry(s);  // set 2
  try {
    StartGeometry(s);  // the fourth makes iCyc 3
    FAIL() << "no stop";
  } catch (const RunStop& stop) {
    EXPECT_EQ(stop.status, exit_status::Limit);
  }
  EXPECT_EQ(console.str(),
            "\n Maximum number of cycles (  2) exceeded!\n Use /C<number> flag in the command string\n"
            " to set maximum number of cycles to <number>.\n\n");
}

TEST(Limits, AtomLimitStopsAtAtom1911) {
  Session s;
  std::ostringstream console;
  s.console = &console;
  StartGeometry(s);
  for (int i = 0; i < MaxAtoms; ++i) AddAtom(s, 6, Vec3{double(i), 0, 0});
  EXPECT_EQ(s.nAtoms, 1910);
  EXPECT_THROW(AddAtom(s, 6, Vec3{}), RunStop);
  EXPECT_EQ(console.str(),
            "\n Maximum number of atoms exceeded!\n"
            " At the current build, the maximum number of atoms set to 1910.  Sorry...\n\n");
  // Storage follows the atoms read, not the limit.
  EXPECT_EQ(s.Set(0).xyz.size(), 1910u);
  EXPECT_LT(s.Set(1).xyz.capacity(), 1u);
}

namespace {
// A session with sets 0..n-1 filled by hand, then the finishing stage.
std::string Finish(Session& s) {
  TempDir dir;
  s.log.Open(dir.File("f.mou"));
  FinishReadPass(s);
  s.log.Close();
  return ReadFile(dir.File("f.mou"));
}
}  // namespace

TEST(FinishingStage, MassesNamesAndCycleTable) {
  Session s;
  for (int k = 0; k < 3; ++k) {
    StartGeometry(s);
    AddAtom(s, 8, Vec3{0, 0, 0});
    AddAtom(s, 1, Vec3{1.8, 0, 0});
    AddAtom(s, 60, Vec3{0, 1.8, 0});
    AddAtom(s, 90, Vec3{0, 0, 1.8});
  }
  s.Set(0).energy = -76.1;
  s.Set(1).energy = -76.3;
  s.Set(2).energy = 5.0e9;  // a reader's filler becomes 0
  s.Set(0).gmax = 0.01, s.Set(1).gmax = 0.002, s.Set(2).gmax = 0.0;
  s.Set(0).grms = 2.0e9;
  std::string log = Finish(s);
  // Neodymium and thorium by their IUPAC symbols.
  EXPECT_EQ(s.atomName, (std::vector<std::string>{"O1", "H2", "Nd3", "Th4"}));
  EXPECT_DOUBLE_EQ(s.atomMass.at(1), 1.00782);  // the readers' table
  EXPECT_DOUBLE_EQ(s.atomMass.at(2), 141.9077);
  EXPECT_DOUBLE_EQ(s.molMass, 15.99491 + 1.00782 + 141.9077 + 232.0381);
  EXPECT_EQ(s.elementCount[8], 1);
  EXPECT_EQ(s.Set(2).energy, 0.0);
  EXPECT_EQ(s.Set(0).grms, 999999.0);
  EXPECT_NE(log.find("\n\n        ************ READING FROM INPUT FILE IS FINISHED ************\n"
                     " Coordinate sets found:    3    Energies and gradients at each cycles:\n"
                     " Step          Energy                     GMax                Grms\n" +
                     std::string(70, '-') + "\n"
                     "    0           -76.1000000000            0.010000       999999.000000\n"),
            std::string::npos)
      << log;
  // The exact zero GMax of the last step is refused; the energy 0 is not lower.
  EXPECT_NE(log.find(" Lowest Energy:  Step    1  Energy =        -76.30000000\n"
                     " Lowest GMax  :  Step    1  GMax   =          0.002000\n"
                     " Lowest GRms  :  Step    0  GRms   =     999999.000000\n"),
            std::string::npos)
      << log;
  EXPECT_DOUBLE_EQ(s.electronicEnergy, -76.3);
  EXPECT_NE(log.find(" Final coordinates (A) and atomic masses (AMU), for cycle:    2\n"), std::string::npos);
  EXPECT_EQ(s.xyz.size(), 4u);
}

TEST(FinishingStage, MassesFromTheInputAndFromTheSpecificationFile) {
  Session s;
  StartGeometry(s);
  AddAtom(s, 1, Vec3{});
  AddAtom(s, 1, Vec3{1.4, 0, 0});
  s.inputMass = {2.014, 2.014};  // one mass for every atom: they stand
  Finish(s);
  EXPECT_DOUBLE_EQ(s.molMass, 4.028);

  Session t;
  StartGeometry(t);
  AddAtom(t, 1, Vec3{});
  AddAtom(t, 1, Vec3{1.4, 0, 0});
  t.inputMass = {2.014};  // not one for every atom: the table stands
  t.specMassGiven = true;
  t.specMass = {3.016};   // the SpecFile beats both; missing entries are 0
  std::string log = Finish(t);
  EXPECT_EQ(t.atomMass, (std::vector<double>{3.016, 0.0}));
  EXPECT_NE(log.find("\n ATTENTION! Atomic masses are taken from the specification file!\n"), std::string::npos);
}

TEST(FinishingStage, OnlyPositiveEnergiesReportZeroAtStepZero) {
  Session s;
  for (int k = 0; k < 2; ++k) {
    StartGeometry(s);
    AddAtom(s, 2, Vec3{});
    s.Set(k).energy = 1.5 + k;
  }
  std::string log = Finish(s);
  EXPECT_NE(log.find(" Lowest Energy:  Step    0  Energy =          0.00000000"), std::string::npos);
}

// Coordinate-list readers: plain XYZ in its three styles, XYZ blocks at a
// label, pattern input from the configuration file and GXYZ templates.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "readers/config_file.h"
#include "readers/readers.h"
#include "test_support.h"

using namespace quintor;
using namespace quintor::test;

namespace {

constexpr double kA = constants::AngstromToBohr;

using Reader = void (*)(Session&, LineReader&);

// Runs one reader on a file and returns what it wrote to the MainLog.
std::string Read(Session& s, const std::string& path, Reader reader) {
  TempDir dir;
  s.log.Open(dir.File("test.mou"));
  LineReader in;
  EXPECT_TRUE(in.Open(path)) << path;
  reader(s, in);
  s.log.Close();
  return ReadFile(dir.File("test.mou"));
}

void ExpectAtom(const Session& s, int set, int atom, int z, double x, double y, double zc, double factor = kA) {
  SCOPED_TRACE("set " + std::to_string(set) + " atom " + std::to_string(atom));
  ASSERT_LT(static_cast<size_t>(atom - 1), s.Set(set).xyz.size());
  ASSERT_LT(static_cast<size_t>(atom - 1), s.atomicNumber.size());
  EXPECT_EQ(s.atomicNumber[atom - 1], z);
  const Vec3& v = s.Set(set).xyz[atom - 1];
  EXPECT_NEAR(v[0], x * factor, 1e-12);
  EXPECT_NEAR(v[1], y * factor, 1e-12);
  EXPECT_NEAR(v[2], zc * factor, 1e-12);
}

void ExpectWater(const Session& s, int set, double factor = kA) {
  ASSERT_NO_FATAL_FAILURE(ExpectAtom(s, set, 1, 8, 0.0, 0.0, 0.1173, factor));
  ASSERT_NO_FATAL_FAILURE(ExpectAtom(s, set, 2, 1, 0.0, 0.7572, -0.4692, factor));
  ASSERT_NO_FATAL_FAILURE(ExpectAtom(s, set, 3, 1, 0.0, -0.7572, -0.4692, factor));
}

// The MYOPT pattern of co_pattern.cfg, read into `s`.
Session& Pattern(Session& s) {
  s.opt.formatCode = FormatCode::Pattern;
  s.opt.patternName = "MYOPT";
  EXPECT_TRUE(ReadConfigPattern(s, TestInput("co_pattern.cfg")));
  return s;
}

}  // namespace

// ---- Plain XYZ ------------------------------------------------------------------

TEST(PlainXyz, ThreeStylesAndTheLengthUnits) {
  struct Case {
    const char* file;
    int format, skip, unit;
    double factor;
  };
  // "8.0" is oxygen and "h" hydrogen; "----" and " $end" end the list.
  for (const Case& c : {Case{"water_header.xyz", 5, 2, 0, kA}, Case{"water_header.xyz", 5, 2, 1, 1.0},
                        Case{"water_header.xyz", 5, 2, 2, 18.89726133921252}, Case{"water_ndxyz.txt", 6, 0, 0, kA},
                        Case{"water_dnxyz.txt", 7, 0, 0, kA}}) {
    SCOPED_TRACE(std::string(c.file) + " unit " + std::to_string(c.unit));
    Session s;
    s.opt.formatCode = static_cast<FormatCode>(c.format);
    s.opt.skipLines = c.skip;
    s.opt.lengthUnit = static_cast<LengthUnit>(c.unit);
    const std::string log = Read(s, TestInput(c.file), ReadPlainXyz);
    if (c.format == 5) {
      EXPECT_EQ(log, " XYZ file input requested\n");
    }
    EXPECT_EQ(s.iCyc, -1);
    EXPECT_EQ(s.nAtoms, 3);
    EXPECT_NO_FATAL_FAILURE(ExpectWater(s, -1, c.factor));
  }
}

TEST(PlainXyz, AtomWords) {
  TempDir dir;
  std::string path = dir.Write("words.xyz", "H12 0 0 0\nCa 1 0 0\nCA 2 0 0\ncl 3 0 0\n17 4 0 0\nDu 5 0 0\nBq 6 0 0\n\nC 7 0 0\n");
  Session s;
  s.opt.formatCode = FormatCode::Nxyz;
  Read(s, path, ReadPlainXyz);
  EXPECT_EQ(s.atomicNumber, (std::vector<int>{1, 20, 20, 17, 17, 99, 0}));  // the empty line ends the list
}

TEST(PlainXyz, BadNumbersAreFatalReadErrorsWithTheirPlace) {
  // The header not skipped: "3" is taken as an atom word, and its row has no coordinates.
  Session header;
  header.opt.formatCode = FormatCode::Nxyz;
  EXPECT_THROW(Read(header, TestInput("water_header.xyz"), ReadPlainXyz), FatalReadError);
  TempDir dir;
  std::string path = dir.Write("bad.xyz", "O 0.0 0.0 0.1\nH 0.0 0.7x 0.1\n");
  Session s;
  s.opt.formatCode = FormatCode::Nxyz;
  try {
    Read(s, path, ReadPlainXyz);
    FAIL() << "no error";
  } catch (const FatalReadError& e) {
    EXPECT_EQ(e.Where().line, 2);
    EXPECT_EQ(e.Where().file, path);
    EXPECT_EQ(e.Where().field, "Y coordinate");
    EXPECT_EQ(e.Text(), "0.7x");
  }
  RunResult r = RunInProcess({path, "/X0", "/0"});
  EXPECT_EQ(r.status, exit_status::ReadError);
  EXPECT_NE(r.console.find("FATAL READ ERROR"), std::string::npos) << r.console;
}

// ---- XYZ blocks at a label ---------------------------------------------------------

TEST(XyzAtLabel, TrajectoryOfThreeBlocks) {
  Session s;
  s.opt.formatCode = FormatCode::LabelledXyz;
  s.opt.labelFieldOrder = 1;
  s.opt.skipLines = 3;
  s.opt.label = "TEST";
  std::string log = Read(s, TestInput("co_trajectory.txt"), ReadXyzAtLabel);
  EXPECT_EQ(s.iCyc, 3);
  EXPECT_EQ(s.nAtoms, 2);
  ASSERT_NO_FATAL_FAILURE(ExpectAtom(s, 2, 2, 8, 0, 0, 1.15));
  ASSERT_NO_FATAL_FAILURE(ExpectAtom(s, 3, 2, 8, 0, 0, 1.13));
  // The first block is also the starting geometry.
  ASSERT_NO_FATAL_FAILURE(ExpectAtom(s, 0, 2, 8, 0, 0, 1.20));
  ASSERT_NO_FATAL_FAILURE(ExpectAtom(s, -1, 2, 8, 0, 0, 1.20));
  EXPECT_EQ(log.substr(0, log.find(" Label:TEST       Occurence:   2\n")),
            " NXYZ  input at label    :TEST\n"
            " Label:TEST       Occurence:   1\n"
            " comment line\n"
            " Atom        X          Y          Z\n"
            " ------------------------------------\n"
            "C       6       0.00000000     0.00000000     0.00000000\n"
            "O       8       0.00000000     0.00000000     1.20000000\n"
            "\n");
  // No such label: nothing found.
  Session none;
  none.opt.formatCode = FormatCode::LabelledXyz;
  none.opt.labelFieldOrder = 1;
  none.opt.label = "NOWHERE";
  Read(none, TestInput("co_trajectory.txt"), ReadXyzAtLabel);
  EXPECT_FALSE(none.coordsFound);
}

TEST(XyzAtLabel, StyleNamesInTheLog) {
  TempDir dir;
  std::string path = dir.Write("g.txt", "GEO\nC 6 0 0 0\n");
  const char* heads[] = {" NXYZ  input at label    :GEO", " NDXYZ input at label    :GEO",
                         " DNXYZ input at label    :GEO"};
  for (int style = 1; style <= 3; ++style) {
    Session s;
    s.opt.formatCode = FormatCode::LabelledXyz;
    s.opt.labelFieldOrder = style;
    s.opt.label = "GEO";
    std::string log = Read(s, path, ReadXyzAtLabel);
    EXPECT_EQ(log.substr(0, log.find('\n')), heads[style - 1]);
  }
}

TEST(XyzAtLabel, BlocksBeyondTheCycleLimitStopTheRun) {
  // Blocks are sets 1, 2, 3: with /C2 the third one is too many.
  TempDir dir;
  RunResult r = RunInProcess({dir.Write("co.txt", ReadFile(TestInput("co_trajectory.txt"))), "/NXYZ3@TEST", "/C2", "/0"});
  EXPECT_EQ(r.status, exit_status::Limit);
  EXPECT_NE(r.console.find(" Maximum number of cycles (  2) exceeded!"), std::string::npos) << r.console;
}

// ---- Pattern input -------------------------------------------------------------------

TEST(PatternInput, GeometriesAndEnergies) {
  Session s;
  Pattern(s);
  EXPECT_EQ(Read(s, TestInput("co_pattern.log"), ReadPatternInput), " Input by label requested\n");
  EXPECT_EQ(s.iCyc, 3);
  ASSERT_NO_FATAL_FAILURE(ExpectAtom(s, 3, 2, 8, 0, 0, 1.13));
  ASSERT_NO_FATAL_FAILURE(ExpectAtom(s, -1, 2, 8, 0, 0, 1.20));
  EXPECT_DOUBLE_EQ(s.Set(2).energy, -113.25);
  EXPECT_DOUBLE_EQ(s.Set(3).energy, -113.26);
  EXPECT_DOUBLE_EQ(s.Set(0).energy, -113.10);
  // Each energy belonging to the geometry that follows.
  Session shifted;
  Pattern(shifted);
  shifted.pattern.energyShift = 1;
  Read(shifted, TestInput("co_pattern.log"), ReadPatternInput);
  EXPECT_DOUBLE_EQ(shifted.Set(1).energy, 0.0);
  EXPECT_DOUBLE_EQ(shifted.Set(4).energy, -113.26);
  // Energies only when asked for; the label is case sensitive.
  Session quiet;
  Pattern(quiet);
  quiet.pattern.readEnergy = 0;
  Read(quiet, TestInput("co_pattern.log"), ReadPatternInput);
  EXPECT_DOUBLE_EQ(quiet.Set(2).energy, 0.0);
  Session upper;
  Pattern(upper);
  upper.pattern.geoLabel = "CARTESIAN GEOMETRY";
  Read(upper, TestInput("co_pattern.log"), ReadPatternInput);
  EXPECT_FALSE(upper.coordsFound);
}

TEST(PatternInput, SampleGamessPatternOnARealLog) {
  SKIP_WITHOUT_TESTDATA();
  Session s;
  s.opt.patternName = "GAMESS";
  ASSERT_TRUE(ReadConfigPattern(s, std::string(QUINTOR_TEST_INPUTS) + "/../../data/Quintor.cfg"));
  Read(s, TestData("gamess-us/dvb_gopt.log"), ReadPatternInput);
  EXPECT_EQ(s.iCyc, 11);
  EXPECT_EQ(s.nAtoms, 20);
  EXPECT_NEAR(s.Set(1).energy, -382.0354172, 1e-9);
  EXPECT_NEAR(s.Set(10).energy, -382.0506635, 1e-9);
  ASSERT_NO_FATAL_FAILURE(ExpectAtom(s, 11, 20, 1, -4.9351651251, -0.0659633191, -0.0));
}

TEST(PatternInput, WholeRunWithConfigurationInTheHomeDirectory) {
  TempDir dir;
  std::string path = dir.Write("co.log", ReadFile(TestInput("co_pattern.log")));
  dir.Write("Quintor.cfg", ReadFile(TestInput("co_pattern.cfg")));
  ::setenv("QUINTOR", dir.path.c_str(), 1);
  Session s;
  RunResult r = RunInProcess(s, {path, "/PATmyopt", "/0"});
  ::unsetenv("QUINTOR");
  EXPECT_EQ(s.files.configFile, dir.File("Quintor.cfg"));
  EXPECT_EQ(r.status, 0) << r.console;
  EXPECT_NE(r.log.find(" Input by label requested"), std::string::npos) << r.log;
  EXPECT_EQ(s.iCyc, 3);
}

// ---- GXYZ ------------------------------------------------------------------------------

TEST(Gxyz, MixedDelimitersAndTabs) {
  Session s;
  s.opt.formatCode = FormatCode::Gxyz;
  std::string log = Read(s, TestInput("water_gxyz.txt"), ReadGxyz);
  EXPECT_EQ(s.iCyc, 2);
  ASSERT_NO_FATAL_FAILURE(ExpectWater(s, 1));
  ASSERT_NO_FATAL_FAILURE(ExpectWater(s, -1));
  ASSERT_NO_FATAL_FAILURE(ExpectAtom(s, 2, 2, 1, 0.0, 0.76, -0.47));
  EXPECT_EQ(log,
            " GXYZ format        :DNXYZ\n"
            " Label:COORDINATES OF ALL ATOMS  Occurence:   1\n"
            "   ATOM   CHARGE       X              Y              Z\n"
            " ---------------------------------------------------\n"
            " Label:COORDINATES OF ALL ATOMS  Occurence:   2\n"
            "   ATOM   CHARGE       X              Y              Z\n"
            " ---------------------------------------------------\n");
}

TEST(Gxyz, OneBlockWithoutLabelAndOwnTemplate) {
  TempDir dir;
  std::string path = dir.Write("g.txt",
                               "skipped title\nO|8|0.0|0.0|0.1173|q\nH|1|0.0|0.7572|-0.4692|q\n"
                               "H|1|0.0|-0.7572|-0.4692|q\nend of list\nC|6|9|9|9|q\n");
  Session s;
  s.pattern.gxyzLabel = "";
  s.pattern.gxyzSkip = 1;
  s.pattern.gxyzTemplate = " n d x y z";
  s.pattern.gxyzDelimiters = "| ";
  EXPECT_EQ(Read(s, path, ReadGxyz), " GXYZ format        :n d x y z\n GXYZ coordinates    1\nskipped title\n");
  EXPECT_EQ(s.iCyc, 1);
  EXPECT_EQ(s.nAtoms, 3);
  ASSERT_NO_FATAL_FAILURE(ExpectWater(s, 1));
  Session bad;
  bad.pattern.gxyzLabel = "";
  bad.pattern.gxyzSkip = 1;
  EXPECT_THROW(Read(bad, dir.Write("b.txt", "t\n1;O;0.0;0.0;zero\n"), ReadGxyz), FatalReadError);
}

// The batch flag of GXYZ: the dialog's template, skip and label by default;
// its own order and skip, and "@" alone for one block from the top.
TEST(Gxyz, BatchFlag) {
  TempDir dir;
  const std::string xyz = dir.Write("w.xyz", "3\nwater\nO 0.0 0.0 0.1173\nH 0.0 0.7572 -0.4692\nH 0.0 -0.7572 -0.4692\n");
  struct Case {
    std::vector<std::string> args;
    int status, sets;
  };
  const Case cases[] = {
      {{TestInput("water_gxyz.txt"), "/GXYZ", "/0"}, 0, 2},
      {{xyz, "/GXYZNXYZ@", "/0"}, 0, 1},
      {{xyz, "/GXYZ n x y z:2@", "/0"}, 0, 1},
      {{xyz, "/GXYZDNXYZ:1@", "/0"}, exit_status::ReadError, 0},  // "water" is no coordinate row
      {{xyz, "/GXYZNXY@", "/0"}, exit_status::ReadError, 0},
      {{xyz, "/GXYZNXYZ:two@", "/0"}, exit_status::ReadError, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.args[1]);
    Session s;
    const RunResult r = RunInProcess(s, c.args);
    EXPECT_EQ(r.status, c.status) << r.console;
    if (c.status != 0) continue;
    EXPECT_EQ(s.opt.formatCode, FormatCode::Gxyz);
    EXPECT_EQ(s.iCyc, c.sets);
    ASSERT_NO_FATAL_FAILURE(ExpectWater(s, 1));
  }
}

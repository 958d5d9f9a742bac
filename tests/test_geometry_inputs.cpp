// Coordinate-list readers: plain XYZ in its three styles, XYZ blocks at a
// label, pattern input from the configuration file and GXYZ templates.
#include <gtest/gtest.h>

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
  EXPECT_EQ(s.atomicNumber[atom - 1], z);
  const Vec3& v = s.Set(set).xyz[atom - 1];
  EXPECT_NEAR(v[0], x * factor, 1e-12);
  EXPECT_NEAR(v[1], y * factor, 1e-12);
  EXPECT_NEAR(v[2], zc * factor, 1e-12);
}

void ExpectWater(const Session& s, int set, double factor = kA) {
  ExpectAtom(s, set, 1, 8, 0.0, 0.0, 0.1173, factor);
  ExpectAtom(s, set, 2, 1, 0.0, 0.7572, -0.4692, factor);
  ExpectAtom(s, set, 3, 1, 0.0, -0.7572, -0.4692, factor);
}

// Copies a test input into a fresh directory, so that a whole run can write
// its MainLog beside it.
std::string CopyInput(const TempDir& dir, const std::string& name) {
  return dir.Write(name, ReadFile(TestInput(name)));
}

}  // namespace

// ---- Plain XYZ ------------------------------------------------------------------

TEST(PlainXyz, HeaderSkippedWithTwoLines) {
  Session s;
  s.opt.formatCode = FormatCode::Nxyz;
  s.opt.skipLines = 2;
  std::string log = Read(s, TestInput("water_header.xyz"), ReadPlainXyz);
  EXPECT_EQ(log, " XYZ file input requested\n");
  EXPECT_EQ(s.iCyc, -1);
  EXPECT_TRUE(s.coordsFound);
  EXPECT_EQ(s.nAtoms, 3);
  ExpectWater(s, -1);
}

TEST(PlainXyz, HeaderNotSkippedIsAFatalReadError) {
  // "3" is taken as an atom word, and the row has no coordinates.
  Session s;
  s.opt.formatCode = FormatCode::Nxyz;
  EXPECT_THROW(Read(s, TestInput("water_header.xyz"), ReadPlainXyz), FatalReadError);
}

TEST(PlainXyz, SymbolDummyStyleStopsAtDashes) {
  Session s;
  s.opt.formatCode = FormatCode::Ndxyz;
  Read(s, TestInput("water_ndxyz.txt"), ReadPlainXyz);
  EXPECT_EQ(s.nAtoms, 3);  // the row behind "----" is not read
  ExpectWater(s, -1);
  EXPECT_EQ(s.iCyc, -1);
}

TEST(PlainXyz, DummySymbolStyleWithNumbersAndEnd) {
  Session s;
  s.opt.formatCode = FormatCode::Dnxyz;
  Read(s, TestInput("water_dnxyz.txt"), ReadPlainXyz);
  EXPECT_EQ(s.nAtoms, 3);  // "8.0" is oxygen, "h" hydrogen, " $end" ends the list
  ExpectWater(s, -1);
}

TEST(PlainXyz, LengthUnits) {
  for (int unit : {1, 2}) {
    Session s;
    s.opt.formatCode = FormatCode::Nxyz;
    s.opt.skipLines = 2;
    s.opt.lengthUnit = static_cast<LengthUnit>(unit);
    Read(s, TestInput("water_header.xyz"), ReadPlainXyz);
    ExpectWater(s, -1, unit == 1 ? 1.0 : 18.89726133921252);
  }
}

TEST(PlainXyz, AtomWords) {
  TempDir dir;
  std::string path = dir.Write("words.xyz",
                               "H12 0 0 0\n"
                               "Ca 1 0 0\n"
                               "CA 2 0 0\n"
                               "cl 3 0 0\n"
                               "17 4 0 0\n"
                               "Du 5 0 0\n"
                               "Bq 6 0 0\n"
                               "\n"
                               "C 7 0 0\n");
  Session s;
  s.opt.formatCode = FormatCode::Nxyz;
  Read(s, path, ReadPlainXyz);
  ASSERT_EQ(s.nAtoms, 7);  // the empty line ends the list
  EXPECT_EQ(s.atomicNumber, (std::vector<int>{1, 20, 20, 17, 17, 99, 0}));
}

TEST(PlainXyz, BadNumberIsAFatalReadErrorWithPlace) {
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
}

TEST(PlainXyz, WholeRunStopsOnBadNumber) {
  TempDir dir;
  std::string path = dir.Write("bad.xyz", "O 0.0 0.0 0.1\nH 0.0 0.7x 0.1\n");
  RunResult r = RunInProcess({path, "/X", "/0"});
  EXPECT_NE(r.status, 0);
  EXPECT_NE(r.console.find("FATAL READ ERROR"), std::string::npos) << r.console;
}

TEST(PlainXyz, WholeRun) {
  TempDir dir;
  std::string path = CopyInput(dir, "water_header.xyz");
  Session s;
  RunResult r = RunInProcess(s, {path, "/X2", "/0"});
  EXPECT_EQ(r.status, 0) << r.console;
  EXPECT_NE(r.log.find(" XYZ file input requested"), std::string::npos) << r.log;
  EXPECT_EQ(s.iCyc, -1);
  EXPECT_EQ(s.nAtoms, 3);
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
  EXPECT_TRUE(s.coordsFound);
  EXPECT_EQ(s.nAtoms, 2);
  ExpectAtom(s, 1, 2, 8, 0, 0, 1.20);
  ExpectAtom(s, 2, 2, 8, 0, 0, 1.15);
  ExpectAtom(s, 3, 2, 8, 0, 0, 1.13);
  // The first block is also the starting geometry.
  ExpectAtom(s, 0, 2, 8, 0, 0, 1.20);
  ExpectAtom(s, -1, 2, 8, 0, 0, 1.20);
  ExpectAtom(s, -1, 1, 6, 0, 0, 0);

  const std::string expectedStart =
      " NXYZ  input at label    :TEST\n"
      " Label:TEST       Occurence:   1\n"
      " comment line\n"
      " Atom        X          Y          Z\n"
      " ------------------------------------\n"
      "C       6       0.00000000     0.00000000     0.00000000\n"
      "O       8       0.00000000     0.00000000     1.20000000\n"
      "\n"
      " Label:TEST       Occurence:   2\n";
  EXPECT_EQ(log.substr(0, expectedStart.size()), expectedStart) << log;
  EXPECT_NE(log.find(" Label:TEST       Occurence:   3\n"), std::string::npos);
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

TEST(XyzAtLabel, NoLabelInTheFileFindsNothing) {
  Session s;
  s.opt.formatCode = FormatCode::LabelledXyz;
  s.opt.labelFieldOrder = 1;
  s.opt.label = "NOWHERE";
  Read(s, TestInput("co_trajectory.txt"), ReadXyzAtLabel);
  EXPECT_FALSE(s.coordsFound);
  EXPECT_EQ(s.nAtoms, 0);
}

TEST(XyzAtLabel, WholeRunWithOption) {
  TempDir dir;
  std::string path = CopyInput(dir, "co_trajectory.txt");
  Session s;
  RunResult r = RunInProcess(s, {path, "/NXYZ3@test", "/0"});
  EXPECT_EQ(r.status, 0) << r.console;
  EXPECT_EQ(s.iCyc, 3);
  EXPECT_NE(r.log.find("Occurence:   3"), std::string::npos) << r.log;
}

TEST(XyzAtLabel, BlocksBeyondTheCycleLimitStopTheRun) {
  // Blocks are sets 1, 2, 3: with /C2 the third one is too many.
  TempDir dir;
  std::string path = CopyInput(dir, "co_trajectory.txt");
  RunResult r = RunInProcess({path, "/NXYZ3@TEST", "/C2", "/0"});
  EXPECT_EQ(r.status, exit_status::Limit);
  EXPECT_NE(r.console.find(" Maximum number of cycles (  2) exceeded!"), std::string::npos) << r.console;
}

// ---- Pattern input -------------------------------------------------------------------

TEST(PatternInput, GeometriesAndEnergies) {
  Session s;
  s.opt.formatCode = FormatCode::Pattern;
  s.opt.patternName = "MYOPT";
  ASSERT_TRUE(ReadConfigPattern(s, TestInput("co_pattern.cfg")));
  std::string log = Read(s, TestInput("co_pattern.log"), ReadPatternInput);
  EXPECT_EQ(log, " Input by label requested\n");
  EXPECT_EQ(s.iCyc, 3);
  EXPECT_EQ(s.nAtoms, 2);
  ExpectAtom(s, 1, 2, 8, 0, 0, 1.20);
  ExpectAtom(s, 2, 2, 8, 0, 0, 1.15);
  ExpectAtom(s, 3, 2, 8, 0, 0, 1.13);
  ExpectAtom(s, -1, 2, 8, 0, 0, 1.20);
  EXPECT_DOUBLE_EQ(s.Set(1).energy, -113.10);
  EXPECT_DOUBLE_EQ(s.Set(2).energy, -113.25);
  EXPECT_DOUBLE_EQ(s.Set(3).energy, -113.26);
  EXPECT_DOUBLE_EQ(s.Set(0).energy, -113.10);
  EXPECT_DOUBLE_EQ(s.Set(-1).energy, -113.10);
}

TEST(PatternInput, EnergyBeforeItsGeometry) {
  Session s;
  s.opt.patternName = "MYOPT";
  ASSERT_TRUE(ReadConfigPattern(s, TestInput("co_pattern.cfg")));
  s.pattern.energyShift = 1;  // each energy belongs to the geometry that follows
  Read(s, TestInput("co_pattern.log"), ReadPatternInput);
  EXPECT_DOUBLE_EQ(s.Set(1).energy, 0.0);
  EXPECT_DOUBLE_EQ(s.Set(2).energy, -113.10);
  EXPECT_DOUBLE_EQ(s.Set(3).energy, -113.25);
  EXPECT_DOUBLE_EQ(s.Set(4).energy, -113.26);
}

TEST(PatternInput, EnergiesOnlyWhenAskedFor) {
  Session s;
  s.opt.patternName = "MYOPT";
  ASSERT_TRUE(ReadConfigPattern(s, TestInput("co_pattern.cfg")));
  s.pattern.readEnergy = 0;
  Read(s, TestInput("co_pattern.log"), ReadPatternInput);
  EXPECT_EQ(s.iCyc, 3);
  EXPECT_DOUBLE_EQ(s.Set(2).energy, 0.0);
}

TEST(PatternInput, LabelIsCaseSensitive) {
  Session s;
  s.opt.patternName = "MYOPT";
  ASSERT_TRUE(ReadConfigPattern(s, TestInput("co_pattern.cfg")));
  s.pattern.geoLabel = "CARTESIAN GEOMETRY";
  Read(s, TestInput("co_pattern.log"), ReadPatternInput);
  EXPECT_FALSE(s.coordsFound);
}

TEST(PatternInput, SampleGamessPatternOnARealLog) {
  const std::string log = TestData("gamess-us/dvb_gopt.log");
  if (!std::filesystem::exists(log)) GTEST_SKIP() << "no " << log;
  Session s;
  s.opt.patternName = "GAMESS";
  ASSERT_TRUE(ReadConfigPattern(s, std::string(QUINTOR_TEST_INPUTS) + "/../../data/Quintor.cfg"));
  Read(s, log, ReadPatternInput);
  EXPECT_EQ(s.iCyc, 11);
  EXPECT_EQ(s.nAtoms, 20);
  EXPECT_NEAR(s.Set(1).energy, -382.0354172, 1e-9);
  EXPECT_NEAR(s.Set(10).energy, -382.0506635, 1e-9);
  ExpectAtom(s, 11, 1, 6, -1.4179577040, 0.2273415454, -0.0);
  ExpectAtom(s, 11, 20, 1, -4.9351651251, -0.0659633191, -0.0);
}

TEST(PatternInput, WholeRunWithConfigurationInTheHomeDirectory) {
  TempDir dir;
  std::string path = CopyInput(dir, "co_pattern.log");
  dir.Write("Quintor.cfg", ReadFile(TestInput("co_pattern.cfg")));
  ::setenv("QUINTOR", dir.path.c_str(), 1);
  Session s;
  RunResult r = RunInProcess(s, {path, "/PATmyopt", "/0"});
  ::unsetenv("QUINTOR");
  if (s.files.configFile.empty()) GTEST_SKIP() << "the run does not read the configuration file yet";
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
  EXPECT_EQ(s.nAtoms, 3);
  ExpectWater(s, 1);
  ExpectWater(s, 0);
  ExpectWater(s, -1);
  ExpectAtom(s, 2, 2, 1, 0.0, 0.76, -0.47);
  const std::string expected =
      " GXYZ format        :DNXYZ\n"
      " Label:COORDINATES OF ALL ATOMS  Occurence:   1\n"
      "   ATOM   CHARGE       X              Y              Z\n"
      " ---------------------------------------------------\n"
      " Label:COORDINATES OF ALL ATOMS  Occurence:   2\n"
      "   ATOM   CHARGE       X              Y              Z\n"
      " ---------------------------------------------------\n";
  EXPECT_EQ(log, expected);
}

TEST(Gxyz, OneBlockWithoutLabelAndOwnTemplate) {
  TempDir dir;
  std::string path = dir.Write("g.txt",
                               "skipped title\n"
                               "O|8|0.0|0.0|0.1173|q\n"
                               "H|1|0.0|0.7572|-0.4692|q\n"
                               "H|1|0.0|-0.7572|-0.4692|q\n"
                               "end of list\n"
                               "C|6|9|9|9|q\n");
  Session s;
  s.pattern.gxyzLabel = "";
  s.pattern.gxyzSkip = 1;
  s.pattern.gxyzTemplate = " n d x y z";
  s.pattern.gxyzDelimiters = "| ";
  std::string log = Read(s, path, ReadGxyz);
  EXPECT_EQ(log, " GXYZ format        :n d x y z\n GXYZ coordinates    1\nskipped title\n");
  EXPECT_EQ(s.iCyc, 1);
  EXPECT_EQ(s.nAtoms, 3);
  ExpectWater(s, 1);
  ExpectWater(s, -1);
}

TEST(Gxyz, BadNumberIsAFatalReadError) {
  TempDir dir;
  std::string path = dir.Write("g.txt", "t\n1;O;0.0;0.0;zero\n");
  Session s;
  s.pattern.gxyzLabel = "";
  s.pattern.gxyzSkip = 1;
  EXPECT_THROW(Read(s, path, ReadGxyz), FatalReadError);
}

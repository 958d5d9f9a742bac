// The configuration file: where it is looked for, how a pattern is found and
// read, and the messages when there is none.
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

#include "io/fortran_io.h"
#include "model/session.h"
#include "readers/config_file.h"
#include "test_support.h"

using namespace quintor;
using namespace quintor::test;

namespace {

// Keeps the places outside the test directories out of the search: the user
// configuration directory is pointed at an empty directory for the test.
struct IsolatedSearch {
  TempDir xdg;
  std::string saved;
  bool had = false;
  IsolatedSearch() {
    if (const char* v = std::getenv("XDG_CONFIG_HOME")) had = true, saved = v;
    ::setenv("XDG_CONFIG_HOME", xdg.path.c_str(), 1);
  }
  ~IsolatedSearch() {
    if (had) ::setenv("XDG_CONFIG_HOME", saved.c_str(), 1);
    else ::unsetenv("XDG_CONFIG_HOME");
  }
};

std::string Slash(const TempDir& d) { return d.path.string() + "/"; }

// Reads the configuration with the screen captured.
std::string Configure(Session& s) {
  std::ostringstream screen;
  s.console = &screen;
  ReadConfig(s);
  s.console = nullptr;
  return screen.str();
}

// Reads one pattern text directly.
bool ReadPattern(Session& s, const std::string& text) {
  TempDir dir;
  return ReadConfigPattern(s, dir.Write("Quintor.cfg", text));
}

const std::string kNotFound = "Can not find configuration file Quintor.cfg - internal defaults will be used...\n";
const std::string kNoPattern = " Pattern not found in Quintor.cfg - internal defaults will be used...\n";

void ExpectDefaults(const InputPattern& p) {
  EXPECT_EQ(p.geoLabel, "NSERCH=");
  EXPECT_EQ(p.skipLinesAfterLabel, 2);
  EXPECT_EQ(p.energyPattern, "");
  EXPECT_EQ(p.energyBegPos, 0);
  EXPECT_EQ(p.energyEndPos, 0);
  EXPECT_EQ(p.energyShift, 0);
  EXPECT_EQ(p.readEnergy, 0);
  EXPECT_EQ(p.geoFormat, 0);
  EXPECT_EQ(p.geoUnits, LengthUnit::Angstrom);
}

}  // namespace

// ---- The search ------------------------------------------------------------------

TEST(ConfigSearch, NoFileAnywhere) {
  IsolatedSearch iso;
  TempDir here;
  Session s;
  s.files.currentDir = Slash(here);
  std::string screen = Configure(s);
  EXPECT_EQ(screen, kNotFound);
  EXPECT_EQ(s.files.configFile, "");
  EXPECT_EQ(s.files.homeDir, "");
  ExpectDefaults(s.pattern);
  // The MainLog gets the line once it is open.
  TempDir logDir;
  s.log.Open(logDir.File("a.mou"));
  s.log.WritePending();
  s.log.Close();
  EXPECT_EQ(ReadFile(logDir.File("a.mou")), kNotFound);
}

TEST(ConfigSearch, CurrentDirectoryWhenNoHome) {
  IsolatedSearch iso;
  TempDir here;
  here.Write("Quintor.cfg", "[DEFAULT]\nSkipLinesAfterLabel=5\n[END]\n");
  Session s;
  s.files.currentDir = here.path.string();  // without the slash
  EXPECT_EQ(Configure(s), "");
  EXPECT_EQ(s.files.configFile, Slash(here) + "Quintor.cfg");
  EXPECT_EQ(s.files.homeDir, Slash(here));
  EXPECT_EQ(s.pattern.skipLinesAfterLabel, 5);
}

TEST(ConfigSearch, HomeHidesTheCurrentDirectory) {
  IsolatedSearch iso;
  TempDir here, home;
  here.Write("Quintor.cfg", "[DEFAULT]\nSkipLinesAfterLabel=5\n");
  home.Write("Quintor.cfg", "[DEFAULT]\nSkipLinesAfterLabel=7\n");
  Session s;
  s.files.currentDir = Slash(here);
  s.files.homeDir = Slash(home);
  Configure(s);
  EXPECT_EQ(s.files.configFile, Slash(home) + "Quintor.cfg");
  EXPECT_EQ(s.pattern.skipLinesAfterLabel, 7);
}

TEST(ConfigSearch, HomeWithoutFileSkipsTheCurrentDirectory) {
  IsolatedSearch iso;
  TempDir here, home;
  here.Write("Quintor.cfg", "[DEFAULT]\nSkipLinesAfterLabel=5\n");
  Session s;
  s.files.currentDir = Slash(here);
  s.files.homeDir = Slash(home);
  EXPECT_EQ(Configure(s), kNotFound);
  EXPECT_EQ(s.pattern.skipLinesAfterLabel, 2);
  EXPECT_EQ(s.files.homeDir, Slash(home));
}

TEST(ConfigSearch, UserConfigurationDirectoryBecomesHome) {
  IsolatedSearch iso;
  std::filesystem::create_directories(iso.xdg.path / "quintor");
  iso.xdg.Write("quintor/Quintor.cfg", "[DEFAULT]\nGeoFormat=3\n");
  TempDir here, home;
  Session s;
  s.files.currentDir = Slash(here);
  s.files.homeDir = Slash(home);
  EXPECT_EQ(Configure(s), "");
  EXPECT_EQ(s.files.homeDir, Slash(iso.xdg) + "quintor/");
  EXPECT_EQ(s.files.configFile, Slash(iso.xdg) + "quintor/Quintor.cfg");
  EXPECT_EQ(s.pattern.geoFormat, 3);
}

TEST(ConfigSearch, UnknownPatternName) {
  IsolatedSearch iso;
  TempDir here;
  here.Write("Quintor.cfg", "[DEFAULT]\nGeoLabel=X\n[END]\n");
  Session s;
  s.files.currentDir = Slash(here);
  s.opt.patternName = "NOSUCH";
  EXPECT_EQ(Configure(s), kNoPattern);
  ExpectDefaults(s.pattern);
  EXPECT_EQ(s.files.configFile, Slash(here) + "Quintor.cfg");
}

// ---- Finding and reading a pattern -------------------------------------------------

TEST(ConfigPattern, OnlyHeaderAndEndLeaveTheDefaults) {
  Session s;
  EXPECT_TRUE(ReadPattern(s, "[DEFAULT]\n[END]\n"));
  ExpectDefaults(s.pattern);
}

TEST(ConfigPattern, IndentedHeaderIsNotFound) {
  Session s;
  EXPECT_FALSE(ReadPattern(s, " [DEFAULT]\nGeoLabel=X\n[END]\n"));
  ExpectDefaults(s.pattern);
}

TEST(ConfigPattern, HeaderMustStandAloneButMayHaveTrailingBlanks) {
  Session s;
  EXPECT_FALSE(ReadPattern(s, "[DEFAULT] patterns\nGeoLabel=X\n"));
  EXPECT_TRUE(ReadPattern(s, "[DEFAULT]   \nGeoLabel=X\n"));
  EXPECT_EQ(s.pattern.geoLabel, "X");
}

TEST(ConfigPattern, HeaderCaseIsBlindOnTheFileSide) {
  Session s;
  s.opt.patternName = "MYLOG";
  EXPECT_TRUE(ReadPattern(s, "[default]\nGeoLabel=A\n[END]\n[MyLog]\nGeoLabel=B\n[END]\n"));
  EXPECT_EQ(s.pattern.geoLabel, "B");
}

TEST(ConfigPattern, AllKeys) {
  Session s;
  s.opt.patternName = "FULL";
  ASSERT_TRUE(ReadPattern(s,
                          "[DEFAULT]\nGeoLabel=WRONG\n[END]\n"
                          "[FULL]\n"
                          "GeoLabel=  Standard orientation:\n"
                          "SkipLinesAfterLabel=4\n"
                          "EnergyPattern=SCF Done:\n"
                          "EnergyValueBegPos=  24\n"
                          "EnergyValueEndPos=41\n"
                          "IsEnergyBeforeGeo=-1\n"
                          "ReadEnergy?=1\n"
                          "GeoFormat=2\n"
                          "GeoUnits=1\n"
                          "[end]\n"
                          "GeoFormat=9\n"));
  const InputPattern& p = s.pattern;
  EXPECT_EQ(p.geoLabel, "Standard orientation:");
  EXPECT_EQ(p.skipLinesAfterLabel, 4);
  EXPECT_EQ(p.energyPattern, "SCF Done:");
  EXPECT_EQ(p.energyBegPos, 24);
  EXPECT_EQ(p.energyEndPos, 41);
  EXPECT_EQ(p.energyShift, -1);
  EXPECT_EQ(p.readEnergy, 1);
  EXPECT_EQ(p.geoFormat, 2);  // the line behind "[end]" is not read
  EXPECT_EQ(p.geoUnits, LengthUnit::Bohr);
  EXPECT_TRUE(p.geoUnitsGiven);
}

TEST(ConfigPattern, CommentsAndTheLastKeyWins) {
  Session s;
  ASSERT_TRUE(ReadPattern(s,
                          "[DEFAULT]\n"
                          "! GeoLabel=COMMENTED\n"
                          "   ! SkipLinesAfterLabel=9\n"
                          "\n"
                          "ReadEnergy?=1 ! comment\n"
                          "GeoLabel=FIRST\n"
                          "GeoLabel=SECOND! cut here\n"
                          "SkipLinesAfterLabel   =    3   \n"));
  EXPECT_EQ(s.pattern.readEnergy, 1);
  EXPECT_EQ(s.pattern.geoLabel, "SECOND");
  EXPECT_EQ(s.pattern.skipLinesAfterLabel, 3);  // no [END]: the pattern ends with the file
}

TEST(ConfigPattern, KeysAreCaseSensitiveAndNeedAnEqualsSign) {
  Session s;
  ASSERT_TRUE(ReadPattern(s, "[DEFAULT]\ngeolabel=lower\nGEOFORMAT=2\nGeoLabel Nothing\nGeoFormat 3\n"));
  ExpectDefaults(s.pattern);
}

TEST(ConfigPattern, ValueIsTakenBehindTheFirstEqualsSign) {
  Session s;
  ASSERT_TRUE(ReadPattern(s, "[DEFAULT]\n  GeoLabel = NSERCH= 1\nEnergyPattern=E=\n"));
  EXPECT_EQ(s.pattern.geoLabel, "NSERCH= 1");
  EXPECT_EQ(s.pattern.energyPattern, "E=");
}

TEST(ConfigPattern, FreeFormIntegers) {
  Session s;
  ASSERT_TRUE(ReadPattern(s, "[DEFAULT]\nGeoFormat= 2, 5\nSkipLinesAfterLabel=+4\n"));
  EXPECT_EQ(s.pattern.geoFormat, 2);
  EXPECT_EQ(s.pattern.skipLinesAfterLabel, 4);
}

TEST(ConfigPattern, UnreadableIntegerIsAFatalReadError) {
  Session s;
  TempDir dir;
  std::string path = dir.Write("Quintor.cfg", "[DEFAULT]\nGeoLabel=A\nSkipLinesAfterLabel=two\n");
  try {
    ReadConfigPattern(s, path);
    FAIL() << "no error";
  } catch (const FatalReadError& e) {
    EXPECT_EQ(e.Where().file, path);
    EXPECT_EQ(e.Where().line, 3);
    EXPECT_EQ(e.Text(), "two");
  }
  Session blank;
  EXPECT_THROW(ReadPattern(blank, "[DEFAULT]\nGeoFormat=\n"), FatalReadError);
}

TEST(ConfigPattern, LengthUnitOfThePatternUnlessTheCommandLineGaveOne) {
  IsolatedSearch iso;
  TempDir here;
  here.Write("Quintor.cfg", "[DEFAULT]\nGeoUnits=1\n");
  {
    Session s;
    s.files.currentDir = Slash(here);
    Configure(s);
    EXPECT_EQ(s.opt.lengthUnit, LengthUnit::Bohr);
  }
  {
    Session s;
    s.files.currentDir = Slash(here);
    s.opt.lengthUnit = LengthUnit::Nanometre;  // /NM
    Configure(s);
    EXPECT_EQ(s.opt.lengthUnit, LengthUnit::Nanometre);
  }
}

TEST(ConfigPattern, SampleFileOfTheDistribution) {
  const std::string sample = std::string(QUINTOR_TEST_INPUTS) + "/../../data/Quintor.cfg";
  Session s;
  ASSERT_TRUE(ReadConfigPattern(s, sample));
  ExpectDefaults(s.pattern);
  Session g;
  g.opt.patternName = "GAMESS";
  ASSERT_TRUE(ReadConfigPattern(g, sample));
  EXPECT_EQ(g.pattern.geoLabel, "COORDINATES OF ALL ATOMS ARE");
  EXPECT_EQ(g.pattern.energyPattern, "ENERGY=");
  EXPECT_EQ(g.pattern.readEnergy, 1);
  EXPECT_EQ(g.pattern.energyBegPos, 33);
  EXPECT_EQ(g.pattern.energyEndPos, 50);
}

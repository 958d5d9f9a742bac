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
    if (had) {
      ::setenv("XDG_CONFIG_HOME", saved.c_str(), 1);
    } else {
      ::unsetenv("XDG_CONFIG_HOME");
    }
  }
};

std::string Slash(const TempDir& d) { return d.path.string() + "/"; }

// Reads the configuration from `here` (and `home`, when given) with the screen captured.
std::string Configure(Session& s, const TempDir& here, const TempDir* home = nullptr) {
  std::ostringstream screen;
  s.console = &screen;
  s.files.currentDir = Slash(here);
  if (home) s.files.homeDir = Slash(*home);
  ReadConfig(s);
  s.console = nullptr;
  return screen.str();
}

bool ReadPattern(Session& s, const std::string& text) {
  TempDir dir;
  return ReadConfigPattern(s, dir.Write("Quintor.cfg", text));
}

const std::string kNotFound = "Can not find configuration file Quintor.cfg - internal defaults will be used...\n";

void ExpectDefaults(const InputPattern& p) {
  EXPECT_EQ(p.geoLabel, "NSERCH=");
  EXPECT_EQ(p.skipLinesAfterLabel, 2);
  EXPECT_EQ(p.energyPattern, "");
  EXPECT_EQ(p.readEnergy, 0);
  EXPECT_EQ(p.geoFormat, 0);
}

}  // namespace

TEST(ConfigSearch, NoFileAnywhereIsSaidOnScreenAndInTheLog) {
  IsolatedSearch iso;
  TempDir here, logDir;
  Session s;
  EXPECT_EQ(Configure(s, here), kNotFound);
  EXPECT_EQ(s.files.configFile, "");
  ExpectDefaults(s.pattern);
  s.log.Open(logDir.File("a.mou"));
  s.log.WritePending();
  s.log.Close();
  EXPECT_EQ(ReadFile(logDir.File("a.mou")), kNotFound);
}

TEST(ConfigSearch, HomeThenUserDirectoryThenCurrentDirectory) {
  IsolatedSearch iso;
  TempDir here, home;
  here.Write("Quintor.cfg", "[DEFAULT]\nSkipLinesAfterLabel=5\n[END]\n");
  Session plain;  // no home: the current directory, which becomes home
  EXPECT_EQ(Configure(plain, here), "");
  EXPECT_EQ(plain.files.configFile, Slash(here) + "Quintor.cfg");
  EXPECT_EQ(plain.files.homeDir, Slash(here));
  EXPECT_EQ(plain.pattern.skipLinesAfterLabel, 5);
  Session empty;  // a home without the file hides the current directory
  EXPECT_EQ(Configure(empty, here, &home), kNotFound);
  EXPECT_EQ(empty.pattern.skipLinesAfterLabel, 2);
  std::filesystem::create_directories(iso.xdg.path / "quintor");
  iso.xdg.Write("quintor/Quintor.cfg", "[DEFAULT]\nGeoFormat=3\n");
  Session user;  // the user configuration directory becomes home
  EXPECT_EQ(Configure(user, here, &home), "");
  EXPECT_EQ(user.files.homeDir, Slash(iso.xdg) + "quintor/");
  EXPECT_EQ(user.pattern.geoFormat, 3);
  home.Write("Quintor.cfg", "[DEFAULT]\nSkipLinesAfterLabel=7\n");
  Session own;  // the home's own file comes first
  Configure(own, here, &home);
  EXPECT_EQ(own.files.configFile, Slash(home) + "Quintor.cfg");
  EXPECT_EQ(own.pattern.skipLinesAfterLabel, 7);
}

TEST(ConfigSearch, UnknownPatternNameAndLengthUnit) {
  IsolatedSearch iso;
  TempDir here;
  here.Write("Quintor.cfg", "[DEFAULT]\nGeoUnits=1\n[END]\n");
  Session s;
  s.opt.patternName = "NOSUCH";
  EXPECT_EQ(Configure(s, here), " Pattern not found in Quintor.cfg - internal defaults will be used...\n");
  ExpectDefaults(s.pattern);
  Session units;
  Configure(units, here);
  EXPECT_EQ(units.opt.lengthUnit, LengthUnit::Bohr);
  Session nm;
  nm.opt.lengthUnit = LengthUnit::Nanometre;  // /NM on the command line stands
  Configure(nm, here);
  EXPECT_EQ(nm.opt.lengthUnit, LengthUnit::Nanometre);
}

TEST(ConfigPattern, Headers) {
  Session s;
  EXPECT_TRUE(ReadPattern(s, "[DEFAULT]\n[END]\n"));
  ExpectDefaults(s.pattern);
  EXPECT_FALSE(ReadPattern(s, " [DEFAULT]\nGeoLabel=X\n[END]\n"));  // indented
  EXPECT_FALSE(ReadPattern(s, "[DEFAULT] patterns\nGeoLabel=X\n"));  // text behind
  EXPECT_TRUE(ReadPattern(s, "[DEFAULT]   \nGeoLabel=X\n"));         // trailing blanks
  EXPECT_EQ(s.pattern.geoLabel, "X");
  Session named;
  named.opt.patternName = "MYLOG";  // case blind on the file side
  EXPECT_TRUE(ReadPattern(named, "[default]\nGeoLabel=A\n[END]\n[MyLog]\nGeoLabel=B\n[END]\n"));
  EXPECT_EQ(named.pattern.geoLabel, "B");
}

TEST(ConfigPattern, AllKeys) {
  Session s;
  s.opt.patternName = "FULL";
  ASSERT_TRUE(ReadPattern(s,
                          "[DEFAULT]\nGeoLabel=WRONG\n[END]\n"
                          "[FULL]\nGeoLabel=  Standard orientation:\nSkipLinesAfterLabel=4\nEnergyPattern=SCF Done:\n"
                          "EnergyValueBegPos=  24\nEnergyValueEndPos=41\nIsEnergyBeforeGeo=-1\nReadEnergy?=1\n"
                          "GeoFormat=2\nGeoUnits=1\n[end]\nGeoFormat=9\n"));
  const InputPattern& p = s.pattern;
  EXPECT_EQ(p.geoLabel, "Standard orientation:");
  EXPECT_EQ(p.skipLinesAfterLabel, 4);
  EXPECT_EQ(p.energyPattern, "SCF Done:");
  EXPECT_EQ(p.energyBegPos, 24);
  EXPECT_EQ(p.energyEndPos, 41);
  EXPECT_EQ(p.energyShift, -1);
  EXPECT_EQ(p.readEnergy, 1);
  EXPECT_EQ(p.geoFormat, 2);  // the line behind "[end]" is not read
  EXPECT_TRUE(p.geoUnitsGiven);
}

TEST(ConfigPattern, LineGrammar) {
  Session s;
  ASSERT_TRUE(ReadPattern(s,
                          "[DEFAULT]\n! GeoLabel=COMMENTED\n   ! SkipLinesAfterLabel=9\n\nReadEnergy?=1 ! comment\n"
                          "GeoLabel=FIRST\nGeoLabel=SECOND! cut here\nSkipLinesAfterLabel   =    3   \n"
                          "EnergyPattern=E=\ngeoformat=2\nGeoFormat 3\n"));
  EXPECT_EQ(s.pattern.readEnergy, 1);
  EXPECT_EQ(s.pattern.geoLabel, "SECOND");  // the last one wins, cut at "!"
  EXPECT_EQ(s.pattern.skipLinesAfterLabel, 3);
  EXPECT_EQ(s.pattern.energyPattern, "E=");  // behind the first "="
  EXPECT_EQ(s.pattern.geoFormat, 0);         // keys are case sensitive and need "="
  Session free;
  ASSERT_TRUE(ReadPattern(free, "[DEFAULT]\nGeoFormat= 2, 5\nSkipLinesAfterLabel=+4\n"));
  EXPECT_EQ(free.pattern.geoFormat, 2);
  EXPECT_EQ(free.pattern.skipLinesAfterLabel, 4);
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

TEST(ConfigPattern, SampleFileOfTheDistribution) {
  const std::string sample = std::string(QUINTOR_TEST_INPUTS) + "/../../data/Quintor.cfg";
  Session g;
  g.opt.patternName = "GAMESS";
  ASSERT_TRUE(ReadConfigPattern(g, sample));
  EXPECT_EQ(g.pattern.geoLabel, "COORDINATES OF ALL ATOMS ARE");
  EXPECT_EQ(g.pattern.energyBegPos, 33);
  EXPECT_EQ(g.pattern.energyEndPos, 50);
}

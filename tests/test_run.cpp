// Whole runs: start-up, head of the MainLog, the no-coordinates question,
// output names and exit statuses, in-process and as a separate process.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "app/command_line.h"
#include "app/run.h"
#include "test_support.h"

using namespace quintor;
using namespace quintor::test;
namespace fs = std::filesystem;

namespace {
const std::string kNoBanner = " just some text\n 1.0 2.0 3.0\n";
const std::string kGaussian98 = " Entering Gaussian System\n This is part of the Gaussian(R) 98 program.\n";
}  // namespace

TEST(RunStartUp, MissingInputUnderBatchMode) {
  TempDir dir;
  auto r = RunInProcess({dir.File("nofile.log"), "/0"});
  EXPECT_EQ(r.status, exit_status::NoInput);
  EXPECT_NE(r.console.find(" File " + dir.File("nofile.log") + " does not exist.\n"), std::string::npos) << r.console;
  EXPECT_FALSE(fs::exists(dir.File("nofile.mou")));

  EXPECT_EQ(RunInProcess({"/0"}).status, exit_status::NoInput);  // "/0" first is the file name
  EXPECT_EQ(RunInProcess({}).status, exit_status::NoInput);
}

// A windowed run on a missing input asks whether to build a new structure;
// Yes goes to the viewer with no atoms and the MainLog under the input's own
// name, No stops silently.
TEST(RunStartUp, MissingInputInAWindowedRunOffersANewStructure) {
  TempDir dir;
  struct Case {
    std::vector<std::string> args;
    bool yes;
    std::string typed;     // the answer to the name prompt
    std::string logFile;   // the MainLog of the new structure, "" for none
  };
  const Case cases[] = {
      {{dir.File("new.log")}, true, "", dir.File("new.log")},
      {{}, true, dir.File("typed.inp"), dir.File("typed.inp")},
      {{dir.File("no.log")}, false, "", ""},
  };
  for (const Case& c : cases) {
    std::vector<std::string> asked;
    int atomsInViewer = -1;
    Frontend windows;
    windows.hasDisplay = [] { return true; };
    windows.askYesNo = [&](const std::string& q) { asked.push_back(q); return c.yes; };
    windows.askText = [&](const std::string& q, const std::string& value) {
      asked.push_back(q + "|" + value);
      return c.typed;
    };
    windows.interact = [&](Session& s) { atomsInViewer = s.nAtoms; return true; };
    windows.snapshot = [](Session&, const std::string&) { return false; };
    Session s;
    std::ostringstream console;
    s.console = &console;
    const int status = RunQuintor(s, c.args, &windows);
    const std::string name = c.args.empty() ? "" : c.args[0];
    ASSERT_FALSE(asked.empty());
    EXPECT_EQ(asked[0], "File " + name + " does not exist. Do you want to create a new structure?");
    if (!c.yes) {
      EXPECT_EQ(status, exit_status::NoInput);
      EXPECT_EQ(asked.size(), 1u);
      EXPECT_EQ(atomsInViewer, -1);
      EXPECT_TRUE(fs::is_empty(dir.path) || !fs::exists(dir.File("no.mou")));
      continue;
    }
    EXPECT_EQ(status, exit_status::Ok) << console.str();
    if (c.args.empty()) {
      ASSERT_EQ(asked.size(), 2u);
      EXPECT_EQ(asked[1], "File name should be given. Please specify it now:|Molecule.inp");
    }
    EXPECT_EQ(atomsInViewer, 0);
    ASSERT_TRUE(fs::exists(c.logFile));
    const std::string log = ReadFile(c.logFile);
    EXPECT_NE(log.find("*                   QUINTOR v.2.5                     *"), std::string::npos) << log;
    EXPECT_EQ(log.find("THERMOCHEMICAL"), std::string::npos);  // no evaluation without atoms
  }
}

TEST(RunStartUp, HeadOfTheMainLog) {
  TempDir dir;
  std::string input = dir.Write("mol.log", kGaussian98);
  auto r = RunInProcess({input, "/ORIENT3-1-2"}, "n");
  EXPECT_EQ(r.status, exit_status::Ok);
  const std::string& log = r.log;
  EXPECT_EQ(log.find(std::string(13, ' ') + std::string(55, '*') + "\n"), 0u);
  EXPECT_NE(log.find("             *                   QUINTOR v.2.5                     *\n"
                     "             *               (build number  2155)                  *\n"),
            std::string::npos);
  EXPECT_NE(log.find(" Input file              :" + input + "\n Output file             :" +
                     dir.File("mol.mou") + "\n TD specifications file  :none\n"),
            std::string::npos)
      << log;
  EXPECT_NE(log.find(" Current directory       :" + fs::current_path().string() + "/\n"), std::string::npos);
  EXPECT_NE(log.find(" Configuration file      :"), std::string::npos);
  EXPECT_NE(log.find(" The molecular geometry will be shown on screen as re-oriented:\n" + std::string(26, ' ') +
                     "atom    3  will be placed to coordinate origin O,\n" + std::string(26, ' ') +
                     "atom    1  will be placed on positive OX axis,\n" + std::string(26, ' ') +
                     "atom    2  will be placed in 1st quadrant of OXY plane.\n"),
            std::string::npos);
  EXPECT_NE(log.find(" Input file format       : Gaussian 98 detected\n"), std::string::npos);
}

TEST(RunStartUp, SpecificationFileLines) {
  TempDir dir;
  std::string input = dir.Write("mol.log", kGaussian98);
  auto r = RunInProcess({input, "/@" + dir.File("Missing.tdi")}, "n");
  EXPECT_NE(r.log.find(" WARNING!!! Requested specification file not found: " + dir.File("Missing.tdi") + "\n"),
            std::string::npos);
  dir.Write("mol.tdi", "TT=300\n");
  r = RunInProcess({input}, "n");
  EXPECT_NE(r.log.find(" Specification file      :" + dir.File("mol.tdi") + "\n"), std::string::npos);
}

TEST(RunStartUp, HomeDirectoryAndFragmentDatabase) {
  TempDir home;
  TempDir dir;
  std::string input = dir.Write("mol.log", kGaussian98);
  ::setenv("QUINTOR", home.path.c_str(), 1);
  auto r = RunInProcess({input}, "n");
  EXPECT_NE(r.log.find(" Quintor home directory  :" + home.path.string() + "/\n"), std::string::npos);
  EXPECT_NE(r.log.find(" Fragment database       :" + home.path.string() + "/Quintor.fdb\n"), std::string::npos);
  EXPECT_NE(r.console.find(" Cannot find Fragment Database in the Quintor home directory: "), std::string::npos);
  EXPECT_NE(r.console.find("\n New file will be created: "), std::string::npos);
  home.Write("Quintor.fdb", "");
  r = RunInProcess({input}, "n");
  EXPECT_EQ(r.console.find("Cannot find Fragment Database"), std::string::npos);
  ::unsetenv("QUINTOR");
  ::setenv("Quintor", home.path.c_str(), 1);  // the spelling of the Windows program
  r = RunInProcess({input}, "n");
  EXPECT_NE(r.log.find(" Quintor home directory  :" + home.path.string() + "/\n"), std::string::npos);
  ::unsetenv("Quintor");
}

TEST(NoCoordinates, QuestionAndAnswers) {
  TempDir dir;
  std::string input = dir.Write("plain.txt", kNoBanner);
  const std::string question =
      "\n Can not find molecular coordinates in the input file!\n"
      " Check your file format or change the orientation flags (/i, /z...).\n"
      " Exit? ([Y]/N) -->";
  // End of input, Enter, Y or any other key ends the run.
  for (std::string keys : {"", "\n", "Y", "q"}) {
    auto r = RunInProcess({input}, keys);
    EXPECT_EQ(r.status, exit_status::NoCoordinates) << "keys '" << keys << "'";
    EXPECT_NE(r.console.find(question), std::string::npos);
    // The MainLog keeps its head, with the open format line ended.
    EXPECT_NE(r.log.find(" Input file format       :\n"), std::string::npos) << r.log;
    EXPECT_EQ(r.log.find("READING FROM INPUT FILE IS FINISHED"), std::string::npos);
  }
  // N or n goes on with an empty molecule and ends through the normal end.
  for (std::string keys : {"N", "n"}) {
    auto r = RunInProcess({input}, keys);
    EXPECT_EQ(r.status, exit_status::Ok);
    EXPECT_NE(r.log.find("READING FROM INPUT FILE IS FINISHED"), std::string::npos);
    EXPECT_NE(r.log.find(" Coordinate sets found:    0"), std::string::npos);
    EXPECT_NE(r.log.find("************ INTERACTIVE WORK IS FINISHED ************"), std::string::npos);
  }
}

TEST(NoCoordinates, CfourIsRecognisedAndNotRead) {
  TempDir dir;
  std::string input = dir.Write("c4.out", " <<< CCCCCC  CFOUR >>>\n Standard orientation:\n");
  auto r = RunInProcess({input, "/0"});
  EXPECT_EQ(r.status, exit_status::NoCoordinates);
  EXPECT_NE(r.log.find(" Input file format       : CFOUR detected\n"), std::string::npos);
  EXPECT_NE(r.console.find(" Can not find molecular coordinates in the input file!"), std::string::npos);
}

TEST(OutputNames, RunOnItsOwnLogWritesBesideIt) {
  TempDir dir;
  const std::string content = kGaussian98;
  std::string input = dir.Write("x.mou", content);
  auto r = RunInProcess({input}, "n");
  EXPECT_EQ(r.status, exit_status::Ok);
  EXPECT_EQ(ReadFile(input), content);  // never written
  EXPECT_TRUE(fs::exists(dir.File("x.mou1")));
  // a.b.c logs to a.b.mou
  std::string abc = dir.Write("a.b.c", content);
  Session s;
  RunInProcess(s, {abc}, "n");
  EXPECT_EQ(s.files.logName, dir.File("a.b.mou"));
  EXPECT_EQ(s.files.baseName, dir.File("a"));
  EXPECT_EQ(s.files.tdoName, dir.File("a.b.tdo"));
  EXPECT_EQ(s.files.specName, dir.File("a.b.tdi"));
}

TEST(OutputNames, NoLogKeepsNoFile) {
  TempDir dir;
  std::string input = dir.Write("mol.log", kGaussian98);
  Session s;
  auto r = RunInProcess(s, {input, "/NOLOG"}, "n");
  EXPECT_EQ(r.status, exit_status::Ok);
  EXPECT_FALSE(fs::exists(dir.File("mol.mou")));
  EXPECT_FALSE(s.files.scratchLog.empty());
  EXPECT_FALSE(fs::exists(s.files.scratchLog));
}

TEST(ExitStatus, SeparateProcessNeverDiesOnASignal) {
  TempDir dir;
  std::string input = dir.Write("mol.log", kGaussian98);
  struct Case {
    std::vector<std::string> args;
    std::string keys;
    int status;
    std::string text;
  };
  const std::vector<Case> cases = {
      {{"--help"}, "", 0, "/c<N> - set maximum number of cycles (geometries) to N (defailt N=300)"},
      {{"--version"}, "", 0, "QUINTOR v.2.5 (build number 2155)"},
      {{input, "/0"}, "n", exit_status::NoCoordinates, ""},  // a batch run never reads the key
      {{dir.File("none.log"), "/0"}, "", exit_status::NoInput, "does not exist."},
      {{input, "/0", "/TTwarm"}, "", exit_status::ReadError, "option /TT"},
      {{input, "/0", "/C1x"}, "", exit_status::ReadError, "\"1X\""},
  };
  for (const auto& c : cases) {
    ExeResult r = RunExe(c.args, c.keys, dir.path.string());
    EXPECT_FALSE(r.signaled);
    EXPECT_EQ(r.status, c.status) << c.args.back() << "\n" << r.output;
    EXPECT_NE(r.output.find(c.text), std::string::npos) << r.output;
  }
  EXPECT_EQ(ReadFile(input), kGaussian98);
}

// In a windowed run the read pass's lines go also to the Message window:
// the start, the files, the format detected; under /0 there is none.
TEST(RunStartUp, ReadPassLinesReachTheMessageWindow) {
  SKIP_WITHOUT_TESTDATA();
  TempDir dir;
  const std::string log = dir.File("water.log");
  fs::copy_file(TestData("gaussian16/water_opt_freq.log"), log);
  std::vector<std::string> shown;
  Frontend windows;
  windows.hasDisplay = [] { return true; };
  windows.interact = [&](Session& s) { shown = s.messages; return false; };
  windows.snapshot = [](Session&, const std::string&) { return false; };
  Session s;
  std::ostringstream console;
  s.console = &console;
  ASSERT_EQ(RunQuintor(s, {log}, &windows), 0) << console.str();
  for (const std::string& line : {std::string(" *** Reading the data ***"), " Input file              :" + log,
                                  " Output file             :" + dir.File("water.mou"),
                                  std::string(" TD specifications file  :none"), std::string(" Gaussian 16 detected")})
    EXPECT_NE(std::find(shown.begin(), shown.end(), line), shown.end()) << line;
  Session batch;
  EXPECT_EQ(RunInProcess(batch, {log, "/0"}).status, 0);
  EXPECT_TRUE(batch.messages.empty());
}

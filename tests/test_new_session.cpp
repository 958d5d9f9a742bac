// File > New Session and File > Open, driven by /PLAY@ journals: the run on
// show ends with its last view and without evaluation, and the next run
// reads the other log into the same Session as a run of its own would.
#include <gtest/gtest.h>

#include <sstream>

#include "app/run.h"
#include "test_support.h"
#include "viewer/dialogs.h"
#include "viewer/session_files.h"

namespace quintor {
namespace {

using namespace test;

const std::string kEthanol = std::string(QUINTOR_TEST_INPUTS) + "/../../examples/ethanol_xtb.out";
const std::string kWater = TestInput("water_xtb.out");
constexpr std::string_view kEvaluation = " ******************** THERMOCHEMICAL PROPERTIES EVALUATION";
constexpr std::string_view kFinished = "************ INTERACTIVE WORK IS FINISHED ************";

void ExpectSameMolecule(const Session& got, const Session& want) {
  ASSERT_EQ(got.nAtoms, want.nAtoms);
  EXPECT_EQ(got.atomicNumber, want.atomicNumber);
  EXPECT_EQ(got.iCyc, want.iCyc);
  EXPECT_EQ(got.modes.size(), want.modes.size());
  for (int i = 0; i < want.nAtoms; ++i)
    for (int k = 0; k < 3; ++k) EXPECT_DOUBLE_EQ(got.xyz[i][k], want.xyz[i][k]) << i;
  EXPECT_DOUBLE_EQ(got.molMass, want.molMass);
}

// New Session: the job dialog after the close names the second log.
TEST(NewSession, SecondLogAfterTheJobDialog) {
  TempDir dir;
  const std::string first = dir.Write("ethanol.out", ReadFile(kEthanol));
  const std::string second = dir.Write("water.out", ReadFile(kWater));
  const std::string journal = dir.Write("ethanol.jnl", "key +\nmenu NewSession\n");
  int dialogs = 0, stages = 0;
  bool firstClosed = false;
  Frontend windows;
  windows.hasDisplay = [] { return true; };
  windows.jobDialog = [&](Session& s) {
    ++dialogs;
    firstClosed = ReadFile(dir.File("ethanol.mou")).find(kFinished) != std::string::npos;
    EXPECT_EQ(s.nAtoms, 0);  // everything of the first run is gone
    DialogValues values = JobDialogValues(s);
    values[1000] = second;
    return !ApplyJobDialog(values, s).has_value();
  };
  windows.interact = [&](Session&) { return ++stages, false; };
  Session s;
  std::ostringstream console;
  s.console = &console;
  ASSERT_EQ(RunQuintor(s, {first, "/PLAY@" + journal}, &windows), 0) << console.str();
  EXPECT_EQ(dialogs, 1);
  EXPECT_EQ(stages, 1);
  EXPECT_TRUE(firstClosed);
  EXPECT_EQ(s.files.inputName, second);
  EXPECT_FALSE(s.next.asked);
  Session alone;  // the log's own run
  RunInProcess(alone, {dir.Write("alone.out", ReadFile(kWater)), "/0"});
  ExpectSameMolecule(s, alone);

  // The first MainLog: the last view with the zoom of "+", both coordinate
  // tables whole, and no evaluation.
  const std::string log1 = ReadFile(dir.File("ethanol.mou"));
  EXPECT_NE(log1.find(kFinished), std::string::npos);
  EXPECT_EQ(log1.find(kEvaluation), std::string::npos);
  const size_t lab = log1.find("Last view coordinates and bonds in a laboratory (fixed) frame");
  ASSERT_NE(lab, std::string::npos);
  EXPECT_EQ(log1.substr(log1.size() - 80), std::string(79, '-') + "\n");
  // The second: a run of its own, evaluated at its end.
  const std::string log2 = ReadFile(dir.File("water.mou"));
  EXPECT_NE(log2.find(" Input file              :" + second), std::string::npos);
  EXPECT_NE(log2.find(kEvaluation), std::string::npos);
}

// File > Open by journal: the chooser's answer is the name and a format
// radio of the job dialog. A file that is not there or a Cancel leave the
// run on show, which then ends as usual, with its evaluation.
TEST(NewSession, OpenFromTheMenu) {
  struct Case {
    std::string source;          // copied to the folder as "other"; empty: no such file
    std::string radios;          // of the answer; empty: Cancel
    std::vector<std::string> flags;  // of the same log's own run
  };
  const Case cases[] = {
      {kWater, "1041=1", {"/0"}},
      {TestInput("water_dnxyz.txt"), "1041=0\t1032=1", {"/0", "/DNXYZ"}},
      {"", "1041=1", {}},
      {kWater, "", {}},
  };
  for (const Case& c : cases) {
    TempDir dir;
    const std::string first = dir.Write("ethanol.out", ReadFile(kEthanol));
    const std::string other = dir.File("other.txt");
    if (!c.source.empty()) dir.Write("other.txt", ReadFile(c.source));
    const std::string answer = c.radios.empty() ? "2" : "1 1000=" + other + "\t" + c.radios;
    const std::string journal = dir.Write("ethanol.jnl", "menu Open\nanswer " + answer + "\nmenu Exit\n");
    Session s;
    const RunResult r = RunInProcess(s, {first, "/PLAY@" + journal});
    EXPECT_EQ(r.status, 0) << r.console;
    const bool switched = !c.flags.empty();
    const std::string log1 = ReadFile(dir.File("ethanol.mou"));
    EXPECT_NE(log1.find(kFinished), std::string::npos);
    EXPECT_EQ(log1.find(kEvaluation) == std::string::npos, switched) << c.radios;
    EXPECT_EQ(s.files.inputName, switched ? other : first);
    if (!switched) continue;
    std::vector<std::string> alone{dir.Write("alone.txt", ReadFile(c.source))};
    alone.insert(alone.end(), c.flags.begin(), c.flags.end());
    Session ref;
    RunInProcess(ref, alone);
    ExpectSameMolecule(s, ref);
  }
}

// The chooser's file types are the formats of the job dialog with their
// codes ("GAMESS v.5, 6" gives 2, as the dialog does), and each comes back
// through its answer.
TEST(NewSession, ChooserTypesAreTheJobDialogFormats) {
  struct Case {
    const char* text;
    FormatCode code;
  };
  const Case cases[] = {{"Automatic recognition", FormatCode::Automatic}, {"G03", FormatCode::Gaussian03},
                        {"G09", FormatCode::Gaussian09},           {"Gaussian98", FormatCode::Gaussian98},
                        {"Gaussian94", FormatCode::Gaussian94},    {"GAMESS v.5, 6", FormatCode::PcGamess4},
                        {"GAMESS v.7", FormatCode::PcGamess7},     {"Quintor", FormatCode::OwnLog},
                        {"NXYZ", FormatCode::Nxyz},                {"DNXYZ", FormatCode::Dnxyz},
                        {"Generalized XYZ (GXYZ)", FormatCode::Gxyz}, {"Gaussian Z-matrix", FormatCode::GaussianZMatrix},
                        {"All files", FormatCode::Automatic}};
  const auto& types = LogFileTypes();
  EXPECT_EQ(types.size(), 15u);  // 15 formats less the pattern, and all files
  EXPECT_EQ(types.back().Filter(), "All files (*)");
  for (const auto& t : types) EXPECT_NE(t.format, FormatCode::Pattern);
  for (const Case& c : cases) {
    const auto it = std::find_if(types.begin(), types.end(), [&](const LogFileType& t) { return t.text == c.text; });
    ASSERT_NE(it, types.end()) << c.text;
    EXPECT_EQ(it->format, c.code) << c.text;
    Session s;
    ViewerState v;
    const Outcome out = OpenLog(s, v, OpenLogAnswer(kWater, it->format));
    EXPECT_EQ(out.ending, Ending::NewSession);
    EXPECT_EQ(s.next.formatCode, c.code) << c.text;
    EXPECT_EQ(s.next.inputName, kWater);
  }
}

TEST(NewSession, RecentFilesNewestFirstOnceEachAtMostEight) {
  TempDir dir;
  std::vector<RecentFile> list;
  for (int k = 0; k < 10; ++k) RememberRecentFile(list, {dir.Write(std::to_string(k) + ".log", "x"), FormatCode::Automatic});
  RememberRecentFile(list, {dir.File("5.log"), FormatCode::Gaussian09});
  ASSERT_EQ(list.size(), MaxRecentFiles);
  EXPECT_EQ(list[0], (RecentFile{dir.File("5.log"), FormatCode::Gaussian09}));
  EXPECT_EQ(list[1].name, dir.File("9.log"));
  EXPECT_EQ(list.back().name, dir.File("2.log"));  // 0 and 1 fell off
  std::filesystem::remove(dir.File("9.log"));
  std::filesystem::remove(dir.File("4.log"));
  const auto said = DropMissingRecentFiles(list);
  EXPECT_EQ(said, (std::vector<std::string>{" Recent file not found, taken off the list: " + dir.File("9.log"),
                                            " Recent file not found, taken off the list: " + dir.File("4.log")}));
  EXPECT_EQ(list.size(), 6u);
}

}  // namespace
}  // namespace quintor

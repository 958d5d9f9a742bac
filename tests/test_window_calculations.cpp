// The Calculations menu of the window, driven by /PLAY@ journals: the
// evaluation from the menu writes what the batch run writes with the same
// options, and the engine's optimisation reaches the batch /GEOOPT heat.
#include <gtest/gtest.h>

#include "test_support.h"

namespace quintor {
namespace {

using namespace test;

const std::string kEthanol = std::string(QUINTOR_TEST_INPUTS) + "/../../examples/ethanol_xtb.out";

// From the evaluation's banner up to the end of the interactive work (or of the log).
std::string EvaluationBlock(const std::string& log) {
  const size_t start = log.find(" ******************** THERMOCHEMICAL PROPERTIES EVALUATION");
  if (start == std::string::npos) return {};
  size_t end = log.find("************ INTERACTIVE WORK IS FINISHED", start);
  if (end == std::string::npos) end = log.size();
  std::string block = log.substr(start, end - start);
  while (!block.empty() && (block.back() == '\n' || block.back() == ' ')) block.pop_back();
  return block;
}

TEST(WindowCalculations, ThermodynamicsFromTheMenuIsTheBatchEvaluation) {
  TempDir dir;
  const std::string a = dir.Write("a.out", ReadFile(kEthanol)), b = dir.Write("b.out", ReadFile(kEthanol));
  const std::string journal = dir.Write("b.jnl", "menu Thermodynamics\nanswer 1 1056=400\t1060=0.98\nmenu Exit\n");
  const RunResult batch = RunInProcess({a, "/0", "/TT400", "/SCALE0.98"});
  const RunResult window = RunInProcess({b, "/PLAY@" + journal});
  ASSERT_EQ(batch.status, 0);
  ASSERT_EQ(window.status, 0) << window.console;
  const std::string expected = EvaluationBlock(batch.log);
  ASSERT_FALSE(expected.empty());
  EXPECT_EQ(EvaluationBlock(window.log), expected);
  EXPECT_NE(expected.find("400.00"), std::string::npos);
}

// "Set exact value" in "ARIR setting" is NROTALL= and V0ALL= of the SpecFile.
TEST(WindowCalculations, ArirSettingGivesEveryRotationTheUsersBarrierAndFold) {
  TempDir dir;
  const std::string a = dir.Write("a.out", ReadFile(kEthanol)), b = dir.Write("b.out", ReadFile(kEthanol));
  const std::string spec = dir.Write("a.tdi", "NROTALL=3\nV0ALL=12\n");
  const std::string journal = dir.Write(
      "b.jnl", "menu Thermodynamics\nanswer 1 1038=1\t1161084=0\t1161085=1\t1161077=12\t1161078=3\nmenu Exit\n");
  const RunResult batch = RunInProcess({a, "/0", "/ARIR", "/@" + spec});
  const RunResult window = RunInProcess({b, "/PLAY@" + journal});
  ASSERT_EQ(batch.status, 0);
  ASSERT_EQ(window.status, 0) << window.console;
  // The rotations' part: the window's evaluation writes its temperature
  // table to the MainLog, where the batch run has it in the .tdo.
  const auto rotations = [](const std::string& log) {
    const size_t start = log.find(" *** Automatic Recognition of Internal Rotations ***");
    const size_t end = log.find(" Total values of thermodynamic functions", start);
    return start == std::string::npos ? std::string() : log.substr(start, end - start);
  };
  const std::string expected = rotations(batch.log);
  ASSERT_FALSE(expected.empty());
  EXPECT_EQ(rotations(window.log), expected);
  EXPECT_EQ(CountText(expected, " WARNING! NRot value is set by user (the same value for all rotatioins)!\n"), 1);
  EXPECT_EQ(CountText(expected, " Rotation barrier is set by user\n"), 2);
  EXPECT_EQ(CountText(expected, " WARNING! The same V0 value is used for all rotations!\n"), 1);
}

TEST(WindowCalculations, GeometryOptimizationReachesTheBatchHeat) {
  TempDir dir;
  const std::string a = dir.Write("a.out", ReadFile(kEthanol)), b = dir.Write("b.out", ReadFile(kEthanol));
  const std::string journal = dir.Write("b.jnl", "menu GeometryOptimization\nanswer 1\nmenu Exit\n");
  const RunResult batch = RunInProcess({a, "/0", "/GEOOPT"});
  const RunResult window = RunInProcess({b, "/PLAY@" + journal});
  auto heat = [](const std::string& log) {
    const size_t at = log.find(" Final Heat of Formation");
    return at == std::string::npos ? std::string() : log.substr(at, log.find('\n', at) - at);
  };
  ASSERT_FALSE(heat(batch.log).empty()) << batch.log;
  EXPECT_EQ(heat(window.log), heat(batch.log));
}

}  // namespace
}  // namespace quintor

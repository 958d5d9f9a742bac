// The Calculations menu of the window, driven by /PLAY@ journals: the
// evaluation from the menu writes what the batch run writes with the same
// options, and the engine's optimisation reaches the batch /GEOOPT heat, is
// cancelled between cycles and stops at "Max FCN calls"; the results dock's
// numbers are those of the JSON report and the MainLog.
#include <gtest/gtest.h>

#include <filesystem>

#include <nlohmann/json.hpp>

#include "app/run.h"
#include "test_support.h"
#include "viewer/calculations.h"
#include "viewer/results_summary.h"
#include "viewer/view_model.h"
#include "viewer_support.h"

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

// ---- The optimisation's Cancel and its limit ----------------------------------

// Ethanol (examples/ethanol.xyz) as the structure on show.
void Ethanol(Session& s) {
  const double a = 1.0 / constants::BohrToAngstrom;
  HandMolecule(s, {{6, "C", {-0.0012 * a, -0.0178 * a, 0.0059 * a}},
                   {6, "C", {1.5133 * a, 0.0010 * a, -0.0031 * a}},
                   {8, "O", {1.9831 * a, 1.3369 * a, -0.0019 * a}},
                   {1, "H", {-0.3813 * a, -1.0411 * a, 0.0025 * a}},
                   {1, "H", {-0.3804 * a, 0.5045 * a, 0.8846 * a}},
                   {1, "H", {-0.3888 * a, 0.4964 * a, -0.8775 * a}},
                   {1, "H", {1.8917 * a, -0.5255 * a, -0.8852 * a}},
                   {1, "H", {1.8990 * a, -0.5160 * a, 0.8806 * a}},
                   {1, "H", {2.9410 * a, 1.3274 * a, -0.0070 * a}}});
}

// The dialog's OK with `maxCalls` in "Max FCN calls"; the progress watched,
// a Cancel from cycle `cancelAt` on.
struct OptimisationPrompts : ScriptedPrompts {
  std::string maxCalls = "30";
  int cancelAt = 1 << 30;
  std::vector<int> cycles;
  int AskDialog(int number, DialogValues& values) override {
    if (number == 114) values[1049] = maxCalls;
    return DialogOk;
  }
  bool Progress(const std::string&, int value, int) override {
    cycles.push_back(value);
    return value < cancelAt;
  }
};

struct Optimisation {
  TempDir dir;
  Session s;
  ViewerState v;
  std::string messages;
  explicit Optimisation(OptimisationPrompts& prompts) {
    Ethanol(s);
    s.files.inputName = dir.File("ethanol.out");
    StartViewer(s, v);
    LoadCoordinateSet(s, v);
    v.services = &RunServices();
    const Outcome out = GeometryOptimizationCommand(s, v, prompts);
    EXPECT_EQ(out.ending, Ending::None);
    for (const std::string& line : v.messages) messages += line + "\n";
  }
};

TEST(WindowCalculations, CancelAfterTheFirstCycleKeepsTheGeometryReached) {
  OptimisationPrompts prompts;
  prompts.cancelAt = 1;
  Optimisation run(prompts);
  EXPECT_EQ(prompts.cycles, std::vector<int>{1});
  ASSERT_EQ(run.s.SetsFound(), 2) << run.messages;  // the one on show and the one reached
  EXPECT_NE(run.messages.find(" OPTIMIZATION CANCELLED.  E ="), std::string::npos) << run.messages;
  EXPECT_NE(run.messages.find(" Optimization cancelled: the geometry reached so far is coordinate set    1"),
            std::string::npos)
      << run.messages;
  EXPECT_EQ(run.messages.find("OPTIMIZATION FINISHED"), std::string::npos);
  // One cycle moved the atoms, and went down from the start.
  EXPECT_NE(run.s.Set(1).xyz[0][0], run.s.Set(0).xyz[0][0]);
  EXPECT_EQ(run.v.currentSet, 1);
  OptimisationPrompts full;
  Optimisation done(full);
  EXPECT_GT(run.s.Set(1).energy, done.s.Set(1).energy);
  EXPECT_GT(full.cycles.size(), 5u);
}

// "Max FCN calls" is the minimiser's limit of cycles (one gradient each):
// a small one ends the search with the minimiser's own message.
TEST(WindowCalculations, MaxFcnCallsLimitsTheCycles) {
  OptimisationPrompts prompts;
  prompts.maxCalls = "3";
  Optimisation run(prompts);
  EXPECT_EQ(prompts.cycles, (std::vector<int>{1, 2, 3}));
  EXPECT_NE(run.messages.find(" too many iterations in dfpmin"), std::string::npos) << run.messages;
  EXPECT_NE(run.messages.find(" OPTIMIZATION FINISHED."), std::string::npos);
  EXPECT_EQ(run.s.SetsFound(), 2);
}

// ---- The results dock's numbers -------------------------------------------------

double At(const nlohmann::json& j, const char* key) { return j.at(key).get<double>(); }

// Ethane with its methyl rotation: the totals at T and P and each model's are
// the JSON report's; the Etot sums and E+G of every model the MainLog's;
// the curves are the Pitzer-Gwinn table, the same rows with quantum rotors
// and the Monte Carlo table.
TEST(ResultsSummary, IsWhatTheJsonAndTheMainLogPrint) {
  LogRun run(TestInput("rotations/ethane_xtb.out"), {"/ARIR", "/IRMC2000", "/JSON"});
  ASSERT_EQ(run.r.status, 0);
  const auto json = nlohmann::json::parse(ReadFile(std::filesystem::path(run.copy).replace_extension(".json")));
  const ThermoSummary t = SummariseThermochemistry(run.s);
  ASSERT_TRUE(t.evaluated);
  const auto& thermo = json.at("thermochemistry");
  EXPECT_EQ(t.temperature, At(thermo, "temperature"));
  EXPECT_EQ(t.zpe, At(thermo, "zpe"));
  const auto& total = thermo.at("total");
  EXPECT_EQ(t.total.cv, At(total, "CV"));
  EXPECT_EQ(t.total.cp, At(total, "CP"));
  EXPECT_EQ(t.total.s, At(total, "S"));
  EXPECT_EQ(t.total.h, At(total, "H"));
  EXPECT_EQ(t.total.g, At(total, "G"));
  ASSERT_EQ(t.models.size(), 5u);
  for (const ThermoModelTotals& m : t.models) {
    const auto& j = json.at("totals_by_model").at(m.model);
    EXPECT_EQ(m.cp, At(j, "CP")) << m.model;
    EXPECT_EQ(m.s, At(j, "S")) << m.model;
    EXPECT_EQ(m.h, At(j, "H")) << m.model;
    EXPECT_EQ(m.g, At(j, "G")) << m.model;
  }
  // The MainLog's E+G row: harmonic, free rotor I(*), I(**), Pitzer-Gwinn
  // I(*), I(**), quantum I(*), I(**), IRMC; the JSON's models take I(**).
  const std::vector<double> eg = NumbersAfter(LineWith(run.r.log, "E+G  "), "E+G  ");
  ASSERT_EQ(eg.size(), 8u);
  const size_t column[5] = {0, 2, 4, 6, 7};
  for (size_t k = 0; k < 5; ++k) EXPECT_NEAR(t.models[k].eg, eg[column[k]], 5e-9) << t.models[k].model;
  // The text's Etot sums as the MainLog prints them.
  const std::vector<std::string> lines = ThermoSummaryLines(t);
  EXPECT_NEAR(t.energy, After(run.r.log, " Etot        = "), 5e-9);
  auto sum = [&](const std::string& label) {
    for (const std::string& l : lines)
      if (l.rfind(label, 0) == 0) return NumbersAfter(l, "Etot+ =").at(0);
    return -1.0;
  };
  EXPECT_NEAR(sum(" ZPEtot"), After(run.r.log, " Etot+ZPEtot = "), 5e-9);
  EXPECT_NEAR(sum(" Htot"), After(run.r.log, " Etot+Htot   = "), 5e-9);
  EXPECT_NEAR(sum(" Gtot"), After(run.r.log, " Etot+Gtot   = "), 5e-9);

  const auto& fixed = json.at("temperature_tables").at("fixed");
  const auto& quantum = json.at("temperature_tables_quantum").at("fixed");
  ASSERT_EQ(t.curves.size(), 3u);
  const ThermoCurve& pg = t.curves[0];
  const ThermoCurve& qr = t.curves[1];
  EXPECT_EQ(qr.model, "quantum");
  ASSERT_EQ(qr.temperature.size(), quantum.size());
  EXPECT_EQ(pg.model, "pitzer_gwinn");
  ASSERT_EQ(pg.temperature.size(), fixed.size());
  for (size_t k = 0; k < fixed.size(); ++k) {
    EXPECT_EQ(pg.temperature[k], At(fixed[k], "T"));
    EXPECT_EQ(pg.cp[k], At(fixed[k], "CP"));
    EXPECT_EQ(pg.s[k], At(fixed[k], "S"));
    EXPECT_EQ(pg.h[k], At(fixed[k], "H"));
    EXPECT_EQ(pg.g[k], At(fixed[k], "G"));
    EXPECT_EQ(qr.s[k], At(quantum[k], "S"));
    EXPECT_EQ(qr.g[k], At(quantum[k], "G"));
  }
  // Monte Carlo: the table's 50 temperatures and the run's own 298.15 K.
  const ThermoCurve& mc = t.curves[2];
  EXPECT_EQ(mc.model, "monte_carlo");
  ASSERT_EQ(mc.temperature.size(), fixed.size() + 1);
  const auto& rows = run.s.thermo.monteCarlo.totals;
  EXPECT_EQ(mc.temperature.front(), 10.0);
  EXPECT_EQ(mc.s.front(), rows[1].f.s);
  EXPECT_EQ(mc.g.back(), rows.back().f.g);
}

// Without rotations: the harmonic table alone, and no model lines.
TEST(ResultsSummary, HarmonicTableWithoutRotations) {
  LogRun run(TestInput("../../examples/ethanol_xtb.out"));
  ASSERT_EQ(run.r.status, 0);
  const ThermoSummary t = SummariseThermochemistry(run.s);
  ASSERT_EQ(t.curves.size(), 1u);
  EXPECT_EQ(t.curves[0].model, "harmonic");
  EXPECT_EQ(t.curves[0].temperature.size(), 50u);
  EXPECT_TRUE(t.models.empty());
  EXPECT_NEAR(t.total.s, After(run.r.log, " Stot = "), 5e-4);
}

}  // namespace
}  // namespace quintor

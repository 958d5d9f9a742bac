// Conformer ensembles (/BOLTZ) over copies of real logs: a copy with its SCF
// energy raised is a second conformer, an unchanged copy a duplicate.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <string>

#include <nlohmann/json.hpp>

#include "test_support.h"

using namespace quintor;
using namespace quintor::test;

namespace {

constexpr const char* kScf = " SCF Done:  E(RB+HF-LYP) =  -382.308266580";

}  // namespace

TEST(Conformers, WeightsDuplicatesAndBadEntries) {
  SKIP_WITHOUT_TESTDATA();
  TempDir dir;
  const std::string log = ReadFile(TestData("gaussian03/dvb_ir.log"));
  dir.Write("a.log", log);
  dir.Write("a_again.log", log);
  dir.Write("b.log", Replace(log, kScf, " SCF Done:  E(RB+HF-LYP) =  -382.307266580"));  // 1 mHartree up
  dir.Write("broken.log", "no coordinates in here\n");
  dir.Write("water.log", ReadFile(TestData("gaussian16/water_opt_freq.log")));
  dir.Write("c.lst", "# dvb\na.log\n\nmissing.log\nb.log\na_again.log\nwater.log\n");

  Session ensemble, a, b;
  const RunResult run = RunInProcess(ensemble, {dir.File("c.lst"), "/0", "/BOLTZ", "/JSON"});
  ASSERT_EQ(run.status, 0) << run.console;
  EXPECT_NE(run.console.find(" WARNING! Conformer log not found, left out: "), std::string::npos);
  EXPECT_NE(run.console.find("missing.log"), std::string::npos);
  EXPECT_NE(run.console.find(" WARNING! Conformer log holds another molecule than the first, left out: "),
            std::string::npos);
  EXPECT_NE(run.console.find("duplicate of No.   1"), std::string::npos);

  // The single conformers, evaluated on their own.
  ASSERT_EQ(RunInProcess(a, {dir.File("a.log"), "/0"}).status, 0);
  ASSERT_EQ(RunInProcess(b, {dir.File("b.log"), "/0"}).status, 0);
  const double toEh = constants::KJPerMolToHartree;
  const double ga = a.electronicEnergy + a.thermo.report.tot.g * toEh;
  const double gb = b.electronicEnergy + b.thermo.report.tot.g * toEh;
  ASSERT_NEAR(gb - ga, 0.001, 1e-9);
  const double rt = 8.314472 * 298.15 / 1000.0 * toEh;
  const double wb = std::exp(-(gb - ga) / rt) / (1.0 + std::exp(-(gb - ga) / rt));

  const auto j = nlohmann::json::parse(ReadFile(dir.File("c.json")));
  ASSERT_EQ(j["conformers"].size(), 3u);
  EXPECT_NEAR(j["conformers"][0]["weight"].get<double>(), 1.0 - wb, 1e-6);
  EXPECT_NEAR(j["conformers"][1]["weight"].get<double>(), wb, 1e-6);
  EXPECT_EQ(j["conformers"][2]["duplicate_of"].get<int>(), 1);
  EXPECT_EQ(j["conformers"][2]["weight"].get<double>(), 0.0);
  EXPECT_EQ(j["ensemble"]["counted"].get<int>(), 2);
  EXPECT_NEAR(j["ensemble"]["E+G"].get<double>(), ga - rt * std::log(1.0 + std::exp(-(gb - ga) / rt)), 1e-8);
  const double s = -8.314472 * ((1 - wb) * std::log(1 - wb) + wb * std::log(wb));
  EXPECT_NEAR(j["ensemble"]["S_conf"].get<double>(), s, 1e-4);

  // An unreadable entry is named and left out; the rest is still the ensemble.
  dir.Write("d.lst", "a.log\nbroken.log\n");
  const RunResult withBroken = RunInProcess({dir.File("d.lst"), "/0", "/BOLTZ"});
  EXPECT_EQ(withBroken.status, 0);
  EXPECT_NE(withBroken.console.find("could not be evaluated (status  4), left out: "), std::string::npos);
  EXPECT_NE(withBroken.console.find("broken.log"), std::string::npos);
}

TEST(Conformers, EmptyListIsStatus3) {
  TempDir dir;
  dir.Write("empty.lst", "# no logs\n\n");
  dir.Write("none.lst", "nowhere.log\n");
  EXPECT_EQ(RunInProcess({dir.File("empty.lst"), "/0", "/BOLTZ"}).status, 3);
  EXPECT_EQ(RunInProcess({dir.File("none.lst"), "/0", "/BOLTZ"}).status, 3);
  EXPECT_EQ(RunInProcess({dir.File("absent.lst"), "/0", "/BOLTZ"}).status, 3);
}

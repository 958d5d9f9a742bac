// The engine in a batch run: /ENGINE, /HOF, /GEOOPT and /CHARGE on the final
// geometry of a real log, against MOPAC 22 at that geometry
// (tests/inputs/engine/mopac_logs.txt, made by make_reference.sh).
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "test_support.h"

using namespace quintor;
using namespace quintor::test;

namespace {


// The kcal/mol figure of the line after the method's name.
double PrintedHeat(const std::string& log, const std::string& name) {
  const size_t at = log.find("\n " + name + " method\n Heat of Formation       : ");
  if (at == std::string::npos) return 1e9;
  const size_t eq = log.find(" kJ/mol  =", at);
  return std::stod(log.substr(eq + 10, 12));
}

RunResult RunOnCopy(const TempDir& dir, const std::string& log, std::vector<std::string> flags) {
  const std::string input = dir.Write("mol.log", ReadFile(TestData(log)));
  flags.insert(flags.begin(), {input, "/0"});
  return RunInProcess(flags);
}

}  // namespace

TEST(engineBatch, HeatOfTheFinalGeometryIsMopacs) {
  SKIP_WITHOUT_TESTDATA();
  const auto refs = MopacReferences("mopac_logs.txt");
  ASSERT_FALSE(refs.empty());
  for (const MopacReference& r : refs) {
    TempDir dir;
    const RunResult run = RunOnCopy(dir, r.name, {"/HOF", "/ENGINE" + r.method});
    ASSERT_EQ(run.status, 0) << run.console;
    const std::string name = r.method == "MNDOD" ? "MNDO+dAO" : r.method;
    EXPECT_NEAR(PrintedHeat(run.log, name), r.heat, 0.0051) << r.name << ' ' << r.method;
  }
}

TEST(engineBatch, LinesAndPlaceInTheMainLog) {
  SKIP_WITHOUT_TESTDATA();
  TempDir dir;
  const RunResult run = RunOnCopy(dir, "gaussian16/water_opt_freq.log", {"/hof", "/enginemndo"});
  const std::string& log = run.log;
  const std::string lines =
      "\n MNDO method\n Heat of Formation       :    -252.5565 kJ/mol  =    -60.3625 kcal/mol\n";
  const size_t at = log.find(lines);
  ASSERT_NE(at, std::string::npos) << log;
  // after the post-read report, before the end of the interactive work
  EXPECT_LT(log.find(" Stoichiometry           : "), at);
  EXPECT_GT(log.find("************ INTERACTIVE WORK IS FINISHED ************"), at);
  EXPECT_EQ(CountText(log, "Heat of Formation"), 1);
  // the engine's working directories are gone
  for (const auto& e : std::filesystem::directory_iterator(dir.path))
    EXPECT_EQ(e.path().filename().string().rfind("engine.", 0), std::string::npos) << e.path();
}

TEST(engineBatch, MethodsAndChargeChangeTheNumber) {
  SKIP_WITHOUT_TESTDATA();
  struct Case {
    std::vector<std::string> flags;
    std::string name;
  };
  const Case cases[] = {
      {{"/HOF"}, "PM3"},                  // the default method
      {{"/HOF", "/ENGINEMNDOD"}, "MNDO+dAO"},
      {{"/HOF", "/ENGINEPM3D"}, "PM3d"},
      {{"/HOF", "/CHARGE1", "/MULT2"}, "PM3"},
  };
  std::vector<double> heats;
  for (const Case& c : cases) {
    TempDir dir;
    const RunResult run = RunOnCopy(dir, "gaussian16/water_opt_freq.log", c.flags);
    heats.push_back(PrintedHeat(run.log, c.name));
    EXPECT_LT(std::abs(heats.back()), 1e3) << c.name << '\n' << run.log;
  }
  EXPECT_NEAR(heats[1], -60.3625, 0.05);   // MNDO/d on H and O: MNDO
  EXPECT_DOUBLE_EQ(heats[2], heats[0]);    // PM3d: PM3 where no element carries d
  EXPECT_GT(heats[3], heats[0] + 200);     // the cation lies far above
}

TEST(engineBatch, GeoOptWritesItsFinalLines) {
  SKIP_WITHOUT_TESTDATA();
  TempDir dir;
  const RunResult run = RunOnCopy(dir, "gaussian16/water_opt_freq.log", {"/GEOOPT", "/ENGINEMNDO"});
  ASSERT_EQ(run.status, 0);
  for (const char* t : {" Geometry optimization using MNDO method\n", " Final Heat of Formation: ",
                        " Final Gradient Norm    : ", " Optimized coordinates:\n"})
    EXPECT_NE(run.log.find(t), std::string::npos) << t;
  EXPECT_NE(run.console.find(" OPTIMIZATION FINISHED.  E ="), std::string::npos);
  // The optimised heat lies below the single point's.
  const size_t at = run.log.find(" Final Heat of Formation: ");
  EXPECT_LT(std::stod(run.log.substr(at + 48, 12)), -60.3625);
}

TEST(engineBatch, WithoutTheOptionsNothingIsRun) {
  SKIP_WITHOUT_TESTDATA();
  TempDir dir;
  const RunResult run = RunOnCopy(dir, "gaussian16/water_opt_freq.log", {"/ENGINEAM1", "/CHARGE1"});
  EXPECT_EQ(run.log.find("Heat of Formation"), std::string::npos);
  EXPECT_EQ(run.log.find("Geometry optimization"), std::string::npos);
}

// The rigid scan of ethane's C-C rotor: 37 points that repeat every 120
// degrees, and a barrier as MOPAC gives it for the methyl group turned by 60
// degrees (tests/inputs/engine/mopac_scan.txt, made by make_scan_reference.py).
TEST(engineBatch, EthaneScanIsThreefoldWithMopacsBarrier) {
  int cases = 0;
  for (const MopacReference& r : MopacReferences("mopac_scan.txt")) {
    const std::string& method = r.method;
    const double barrier = r.heat;
    SCOPED_TRACE(method);
    TempDir dir;
    const std::string input = dir.Write("ethane.out", ReadFile(TestInput("rotations/ethane_xtb.out")));
    const RunResult run = RunInProcess({input, "/0", "/ARIR", "/SCAN", "/ENGINE" + method});
    ASSERT_EQ(run.status, 0) << run.console;
    const size_t at = run.log.find("      (deg)\n");
    ASSERT_NE(at, std::string::npos);
    std::istringstream rows(run.log.substr(at + 12));
    std::vector<double> e;
    int no = 0;
    double angle = 0.0, v = 0.0;
    while (e.size() < 37 && rows >> no >> angle >> v) e.push_back(v);
    ASSERT_EQ(e.size(), 37u);
    for (size_t k = 0; k + 12 < e.size(); ++k) EXPECT_NEAR(e[k], e[k + 12], 0.01) << "point " << k + 1;
    EXPECT_NEAR(*std::max_element(e.begin(), e.end()), barrier, 0.1 * barrier);
    EXPECT_NEAR(e[6], barrier, 0.002);  // 60 degrees is the eclipsed form
    EXPECT_NE(run.log.find(" Rotation barrier is estimated from the Fourier-transformed rotational potential"),
              std::string::npos);
    ++cases;
  }
  EXPECT_EQ(cases, 3);
}

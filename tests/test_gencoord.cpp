// Input files of rotation scans: one per angle, the structurally equivalent
// angles marked by the quasi-energy indexes, the templates.
#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "numeric/constants.h"
#include "rotations/generated_coordinates.h"
#include "test_support.h"

namespace quintor {
namespace {

using namespace test;
using namespace geom;
namespace fs = std::filesystem;
namespace rc = constants;

// Staggered ethane in bohr: C 1, C 2, H 3-5 on C 1, H 6-8 on C 2.
std::vector<Vec3> Ethane() {
  std::vector<Vec3> xyz{{0, 0, -0.765}, {0, 0, 0.765}};
  const double theta = (180.0 - 111.0) * rc::DegToRad;
  for (int side : {-1, 1})
    for (int k = 0; k < 3; ++k) {
      const double phi = (120.0 * k + (side > 0 ? 60.0 : 0.0)) * rc::DegToRad;
      xyz.push_back({1.09 * std::sin(theta) * std::cos(phi), 1.09 * std::sin(theta) * std::sin(phi),
                     side * (0.765 + 1.09 * std::cos(theta))});
    }
  for (Vec3& p : xyz) p = rc::AngstromToBohr * p;
  return xyz;
}
const std::vector<int> kEthaneZ{6, 6, 1, 1, 1, 1, 1, 1};

ScanRotor EthaneRotor(const std::vector<Vec3>& xyz) {
  return ScanRotor{1, {1, 3, 4, 5}, AxisPoints{xyz[0], xyz[1], 1, 2}};
}

struct StepCase {
  double step;
  int points;
  std::vector<int> equivalence;  // index of each point, -1 unique
};

class ScanSteps : public ::testing::TestWithParam<StepCase> {};

TEST_P(ScanSteps, MarkTheStructurallyEquivalentAngles) {
  const StepCase& c = GetParam();
  const std::vector<Vec3> xyz = Ethane();
  const std::vector<ScanPoint> p = ScanPoints(EthaneRotor(xyz), kEthaneZ, xyz, c.step);
  ASSERT_EQ(static_cast<int>(p.size()), c.points);
  for (size_t k = 0; k < p.size(); ++k) {
    EXPECT_DOUBLE_EQ(p[k].angle, k * c.step);
    if (!c.equivalence.empty()) {
      EXPECT_EQ(p[k].equivalentTo, c.equivalence[k]) << "point " << k + 1;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    Gencoord, ScanSteps,
    ::testing::Values(StepCase{30.0, 12, {-1, -1, -1, 2, 1, 2, 3, 2, 1, 2, 3, 2}},  // 120 and 240 name point 1
                      StepCase{120.0, 3, {-1, 1, 1}}, StepCase{60.0, 6, {-1, -1, 1, 2, 1, 2}},
                      StepCase{20.0, 18, {}}, StepCase{2.4, 150, {}}, StepCase{2.3, 0, {}}, StepCase{0.0, 0, {}},
                      StepCase{-30.0, 0, {}}),
    [](const auto& info) { return "Step" + std::to_string(info.index); });

TEST(Gencoord, RelativeIndexesSpanZeroToOne) {
  const std::vector<Vec3> xyz = Ethane();
  const std::vector<ScanPoint> p = ScanPoints(EthaneRotor(xyz), kEthaneZ, xyz, 30.0);
  for (double QuasiEnergies::*e : {&QuasiEnergies::e1, &QuasiEnergies::e2, &QuasiEnergies::e3}) {
    double lo = 1, hi = 0;
    for (const ScanPoint& q : p) {
      lo = std::min(lo, q.relative.*e);
      hi = std::max(hi, q.relative.*e);
    }
    EXPECT_DOUBLE_EQ(lo, 0.0);
    EXPECT_DOUBLE_EQ(hi, 1.0);
  }
  // E1, E2, E3 of two atoms one bohr apart.
  const QuasiEnergies two = StructuralIndexes({6, 1}, {{0, 0, 0}, {0, 0, 1}});
  EXPECT_DOUBLE_EQ(two.e1, 16.0 * std::exp(-1.0));
  EXPECT_DOUBLE_EQ(two.e2, 16.0);
  EXPECT_DOUBLE_EQ(two.e3, 16.0);
}

std::vector<std::string> FilesWith(const fs::path& dir, const std::string& part) {
  std::vector<std::string> found;
  for (const auto& f : fs::directory_iterator(dir))
    if (f.path().filename().string().find(part) != std::string::npos) found.push_back(f.path().filename().string());
  std::sort(found.begin(), found.end());
  return found;
}

TEST(GencoordRun, EthaneWritesTwelveFilesThreeUnique) {
  TempDir spec;
  const std::string name = spec.Write("ethane.tdi", "GENCOORD GENCOORDANGLE=30\n");
  LogRun run(TestInput("rotations/ethane_xtb.out"), {"/ARIR", "/@" + name});
  ASSERT_EQ(run.r.status, exit_status::Ok) << run.r.console;
  const fs::path dir = fs::path(run.copy).parent_path();
  EXPECT_EQ(FilesWith(dir, ".inp").size(), 12u);
  EXPECT_EQ(FilesWith(dir, "_u_"),
            (std::vector<std::string>{"ethane_xtb_u_1_0.inp", "ethane_xtb_u_1_30.inp", "ethane_xtb_u_1_60.inp"}));
  EXPECT_EQ(FilesWith(dir, "_e_").size(), 9u);
  const std::string& log = run.r.log;
  EXPECT_EQ(CountText(log, " Generation of internal rotation coordinates. Rotation step:    30.0000 deg.\n"), 1);
  EXPECT_EQ(CountText(log, " This point is equivalent to point: 1 (angle:   0.0)\n"), 2);  // 120, 240
  EXPECT_EQ(CountText(log, " This point is equivalent to point: 2 (angle:  30.0)\n"), 5);
  EXPECT_EQ(CountText(log, " Unique point     :"), 3);
  EXPECT_EQ(CountText(log, " Equivalence tresholds:"), 1);
  // The default template around the atoms of the point.
  const std::string job = ReadFile(dir / "ethane_xtb_e_1_120.inp");
  EXPECT_EQ(job.rfind(" $CONTRL SCFTYP=RHF RUNTYP=ENERGY MPLEVL=2 $END\n", 0), 0u);
  EXPECT_NE(job.find(" C1\n"), std::string::npos);
  EXPECT_EQ(CountText(job, "\n $END"), 1);
  EXPECT_EQ(job.find("%GEO"), std::string::npos);
  EXPECT_EQ(std::count(job.begin(), job.end(), '\n'), 8 + 8);
  // The input stays as it was.
  EXPECT_EQ(ReadFile(run.copy), ReadFile(TestInput("rotations/ethane_xtb.out")));
}

TEST(GencoordRun, PatternFileGivesTheLinesAndTheExtension) {
  TempDir spec;
  spec.Write("g98.gjf", "# MP2/6-31G(d) SP   \n\nscan\n\n0 1\n%GEOG98\n%GEOX\n\n");
  const std::string name =
      spec.Write("ethane.tdi", "PATTERN=" + spec.File("g98.gjf") + "\nGENCOORD GENCOORDANGLE=60\n");
  LogRun run(TestInput("rotations/ethane_xtb.out"), {"/ARIR", "/@" + name});
  ASSERT_EQ(run.r.status, exit_status::Ok) << run.r.console;
  const fs::path dir = fs::path(run.copy).parent_path();
  EXPECT_EQ(FilesWith(dir, ".gjf").size(), 6u);
  EXPECT_EQ(FilesWith(dir, "_u_"), (std::vector<std::string>{"ethane_xtb_u_1_0.gjf", "ethane_xtb_u_1_60.gjf"}));
  const std::string job = ReadFile(dir / "ethane_xtb_u_1_0.gjf");
  EXPECT_EQ(job.rfind("# MP2/6-31G(d) SP\n\nscan\n\n0 1\n", 0), 0u);  // trimmed lines
  EXPECT_EQ(std::count(job.begin(), job.end(), '\n'), 5 + 8 + 1);    // %GEOX writes nothing
}

TEST(GencoordRun, WithoutGencoordNoFileIsWritten) {
  LogRun run(TestInput("rotations/ethane_xtb.out"), {"/ARIR"});
  ASSERT_EQ(run.r.status, exit_status::Ok) << run.r.console;
  EXPECT_TRUE(FilesWith(fs::path(run.copy).parent_path(), ".inp").empty());
  EXPECT_EQ(run.r.log.find("Generation of internal rotation coordinates"), std::string::npos);
}

}  // namespace
}  // namespace quintor

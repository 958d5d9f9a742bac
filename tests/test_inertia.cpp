// Moments, principal frames, types of top, reorientation by three atoms and
// the inertia block of the report, on hand-computed geometries.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/inertia.h"
#include "test_support.h"

namespace quintor {

using namespace geom;
namespace {

constexpr double A = constants::AngstromToBohr;

std::vector<Vec3> ToBohr(std::vector<Vec3> xyz) {
  for (Vec3& p : xyz) p = A * p;
  return xyz;
}

const std::vector<Vec3> kWater = {{0.0, 0.0, 0.1173}, {0.0, 0.7572, -0.4692}, {0.0, -0.7572, -0.4692}};
const std::vector<double> kWaterMass = {15.99491, 1.00782, 1.00782};
const double kWaterZc = (15.99491 * 0.1173 - 2 * 1.00782 * 0.4692) / (15.99491 + 2 * 1.00782);

std::vector<Vec3> Ethane() {
  std::vector<Vec3> m = {{0, 0, 0.7655}, {0, 0, -0.7655}};
  for (int side = 0; side < 2; ++side)
    for (int k = 0; k < 3; ++k) {
      const double t = k * 2 * constants::Pi / 3 + (side ? constants::Pi / 3 : 0.0);
      m.push_back({1.018 * std::cos(t), 1.018 * std::sin(t), side ? -1.1607 : 1.1607});
    }
  return m;
}
const std::vector<double> kEthaneMass = {12, 12, 1.00782, 1.00782, 1.00782, 1.00782, 1.00782, 1.00782};

double Handedness(const Mat3& axes) { return Dot(Cross(Column(axes, 0), Column(axes, 1)), Column(axes, 2)); }

}  // namespace

TEST(Inertia, WaterMomentsByHand) {
  // A planar molecule: the in-plane moments from the squared distances from
  // the axes, the out-of-plane one their sum.
  std::vector<Vec3> shifted = kWater;
  for (Vec3& p : shifted) p = p + Vec3{1.0, -2.0, 3.0};  // anywhere in space
  const InertiaAnalysis r = AnalyseInertia(ToBohr(shifted), kWaterMass);
  const double iy = 15.99491 * std::pow(0.1173 - kWaterZc, 2) + 2 * 1.00782 * std::pow(-0.4692 - kWaterZc, 2);
  const double iz = 2 * 1.00782 * 0.7572 * 0.7572;
  EXPECT_NEAR(r.molMass, 15.99491 + 2 * 1.00782, 1e-12);
  EXPECT_NEAR(r.centre[2] / A, 3.0 + kWaterZc, 1e-12);
  EXPECT_NEAR(r.momentsAngstrom[0], std::min(iy, iz), 1e-9);
  EXPECT_NEAR(r.momentsAngstrom[1], std::max(iy, iz), 1e-9);
  EXPECT_NEAR(r.momentsAngstrom[2], iy + iz, 1e-9);
  for (int k = 0; k < 3; ++k) {
    EXPECT_NEAR(r.moments[k], r.momentsAngstrom[k] * A * A, 1e-9);
    EXPECT_NEAR(r.rotConstGHz[k] * r.moments[k], 1804.74, 1e-9);
  }
  // The principal coordinates keep the distances and diagonalise the tensor.
  for (size_t i = 0; i < 3; ++i)
    for (size_t j = 0; j < 3; ++j)
      EXPECT_NEAR(Norm(r.principalCoords[i] - r.principalCoords[j]), Norm(kWater[i] - kWater[j]), 1e-12);
  const Mat3 t = InertiaTensor(r.principalCoords, kWaterMass);
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) EXPECT_NEAR(t[i][j], i == j ? r.momentsAngstrom[i] : 0.0, 1e-9);
}

TEST(Inertia, LinearMoleculeAndSingleAtom) {
  const InertiaAnalysis co2 = AnalyseInertia(ToBohr({{-1.16, 0, 0}, {0, 0, 0}, {1.16, 0, 0}}), {15.99491, 12.0, 15.99491});
  EXPECT_TRUE(co2.Linear());
  EXPECT_EQ(co2.rotConst[0], co2.moments[0]);  // the tiny moment is kept as its constant
  EXPECT_NEAR(co2.momentsAngstrom[1], 2 * 15.99491 * 1.16 * 1.16, 1e-9);
  EXPECT_NEAR(co2.rotConstGHz[1], 11.7, 0.1);  // the known B of carbon dioxide
  const InertiaAnalysis atom = AnalyseInertia(ToBohr({{0.3, -0.2, 1.0}}), {15.99491});
  for (int k = 0; k < 3; ++k) {
    EXPECT_EQ(atom.moments[k], 0.0);
    EXPECT_EQ(atom.rotConstGHz[k], 0.0);
  }
}

TEST(PrincipalFrame, TypesOfTopAndTheirAxes) {
  const double a = 1.089 / std::sqrt(3.0);
  const std::vector<Vec3> methane = {{0, 0, 0}, {a, a, a}, {a, -a, -a}, {-a, a, -a}, {-a, -a, a}};
  std::vector<Vec3> ammonia = {{0, 0, 0.1}};
  for (int k = 0; k < 3; ++k)
    ammonia.push_back({0.9377 * std::cos(k * 2 * constants::Pi / 3), 0.9377 * std::sin(k * 2 * constants::Pi / 3), -0.2816});
  EXPECT_EQ(PrincipalFrame(2, -1, 1, methane, {12.0, 1.00782, 1.00782, 1.00782, 1.00782}).top, SphericalTop);
  EXPECT_EQ(PrincipalFrame(2, -1, 1, kWater, kWaterMass).top, AsymmetricTop);
  EXPECT_EQ(PrincipalFrame(2, -1, 1, {{0, 0, -1.064}, {0, 0, 0}, {0, 0, 1.156}}, {1.00782, 12.0, 14.00307}).top,
            LinearTop);
  EXPECT_EQ(PrincipalFrame(2, -1, 1, {{1, 2, 3}}, {15.99491}).top, SingleAtom);

  // An oblate top keeps its centre, its unique axis on X: the three H share their X.
  const PrincipalFrameResult nh3 = PrincipalFrame(2, -1, 1, ammonia, {14.00307, 1.00782, 1.00782, 1.00782});
  ASSERT_EQ(nh3.top, OblateTop);
  const Vec3 n = nh3.xyz[0] - nh3.centre;
  EXPECT_NEAR(std::hypot(n[1], n[2]), 0.0, 1e-9);
  EXPECT_NEAR(nh3.xyz[1][0], nh3.xyz[3][0], 1e-9);

  // A tilted, displaced prolate top: the C-C axis ends up along Z through the origin.
  std::vector<Vec3> c2h6 = Ethane();
  const Mat3 tilt = RotationX(0.4) * RotationY(-1.1);
  for (Vec3& p : c2h6) p = tilt * p + Vec3{0.5, 0.2, -0.7};
  const PrincipalFrameResult r = PrincipalFrame(2, -1, 1, c2h6, kEthaneMass);
  ASSERT_EQ(r.top, ProlateTop);
  EXPECT_NEAR(std::fabs(r.xyz[0][2]), 0.7655, 1e-9);
  EXPECT_NEAR(std::hypot(r.xyz[0][0], r.xyz[0][1]), 0.0, 1e-9);
  EXPECT_LT(r.moments[0], r.moments[1]);
  EXPECT_NEAR(Handedness(r.axes), -1.0, 1e-12);

  // Descending order unrotated; right- and left-handed sets on request.
  const PrincipalFrameResult down = PrincipalFrame(-1, 0, 0, kWater, kWaterMass);
  EXPECT_GT(down.moments[0], down.moments[1]);
  EXPECT_FALSE(down.rotated);
  EXPECT_NEAR(Handedness(PrincipalFrame(-1, 1, 0, kWater, kWaterMass).axes), 1.0, 1e-12);
  const PrincipalFrameResult left = PrincipalFrame(-1, -1, 1, kWater, kWaterMass);
  ASSERT_TRUE(left.rotated);
  for (const Vec3& p : left.xyz) EXPECT_NEAR(p[0], 0.0, 1e-9);  // the plane normal is X
}

TEST(Reorient, ThreeAtomsDefineTheFrame) {
  const std::vector<Vec3> xyz = {{1.0, 1.0, 1.0}, {2.0, 3.0, 1.5}, {0.0, 2.0, 4.0}, {-1.0, 0.5, 2.0}};
  const auto r = ReorientByAtoms(xyz, 2, 3, 4);
  ASSERT_TRUE(r);
  const std::vector<Vec3>& t = r->xyz;
  EXPECT_NEAR(Norm(t[1]), 0.0, 1e-12);  // O at the origin
  EXPECT_GT(t[2][0], 0.0);              // X on +X
  EXPECT_NEAR(std::hypot(t[2][1], t[2][2]), 0.0, 1e-12);
  EXPECT_GT(t[3][1], 0.0);              // Y in XY with y > 0
  EXPECT_NEAR(t[3][2], 0.0, 1e-12);
  for (size_t i = 0; i < xyz.size(); ++i)
    for (size_t j = 0; j < xyz.size(); ++j) EXPECT_NEAR(Norm(t[i] - t[j]), Norm(xyz[i] - xyz[j]), 1e-12);
  EXPECT_NEAR(Dot(Cross(r->matrix[0], r->matrix[1]), r->matrix[2]), 1.0, 1e-12);
  EXPECT_FALSE(ReorientByAtoms(xyz, 1, 2, 5));
  EXPECT_FALSE(ReorientByAtoms(xyz, 0, 2, 3));
}

TEST(Reorient, AllSetsAndModesWithTheirLogBlocks) {
  std::vector<std::vector<Vec3>> sets = {ToBohr(kWater), ToBohr(kWater)};
  for (Vec3& p : sets[1]) p = RotationZ(0.7) * p;  // set 0 turned in space
  std::vector<std::vector<Vec3>> modes = {{{0, 0, 1}, {0, 1, 0}, {1, 0, 0}}};
  const OrientedSets out = OrientSetsByAtoms(sets, -1, {1, 2, 3}, {"O1", "H2", "H3"}, {8, 1, 1}, modes);
  for (int i = 0; i < 3; ++i)
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(sets[0][i][k], sets[1][i][k], 1e-12);
  // The modes turn with the matrix of the last set, without translation.
  const Vec3 expected = out.lastMatrix * Vec3{0, 0, 1};
  for (int k = 0; k < 3; ++k) EXPECT_NEAR(modes[0][0][k], expected[k], 1e-15);
  ASSERT_EQ(out.lines.size(), 22u);
  EXPECT_EQ(out.lines[0], " The read-in structures  will be re-oriented.  Reference atoms:     1    2    3");
  EXPECT_EQ(out.lines[1], " The read-in frequencies will also be re-oriented in the same manner.");
  EXPECT_EQ(out.lines[2], " iCyc =   -1  Re-oriented geo with reference atoms (O, OX, OXY):    1    2    3");
  EXPECT_EQ(out.lines[6], " O1            8            0.00000000     0.00000000     0.00000000");
  EXPECT_EQ(out.lines[12], " iCyc =    0  Re-oriented geo with reference atoms (O, OX, OXY):    1    2    3");
}

TEST(InertiaReport, LinesAndFields) {
  std::vector<Vec3> shifted = kWater;
  for (Vec3& p : shifted) p = p + Vec3{0.0, 0.0, 1.0};
  const std::vector<Vec3> bohr = ToBohr(shifted);
  const InertiaAnalysis r = AnalyseInertia(bohr, kWaterMass);
  const std::vector<std::string> lines = InertiaReportLines(r, {"O1", "H2", "H3"}, {8, 1, 1}, bohr);
  ASSERT_GE(lines.size(), 6u);
  char expected[128];
  std::snprintf(expected, sizeof expected, " Mass center, mol.mass:%12.6f%12.6f%12.6f%20.6f", 0.0, 0.0,
                1.0 + kWaterZc, 15.99491 + 2 * 1.00782);
  EXPECT_EQ(lines[0], expected);
  EXPECT_EQ(lines[1], " Distance matrix (A):");
  EXPECT_EQ(lines[2], "              O1        H2        H3");
  EXPECT_EQ(lines[5], " H3      0.95778   1.51440   0.00000");
  auto at = std::find(lines.begin(), lines.end(), " Principal moments of inertia and rotational constants:");
  ASSERT_LT(at + 12, lines.end());
  char ghz[64];
  std::snprintf(ghz, sizeof ghz, "%15.6f%15.6f%15.6f", r.rotConstGHz[0], r.rotConstGHz[1], r.rotConstGHz[2]);
  EXPECT_EQ(*(at + 4), std::string(" A, B, C,  GHz    :").append(ghz));
  EXPECT_EQ(*(at + 8), " Molecular coordinates in principal axes (A) ");
  EXPECT_EQ(lines.back(), std::string(70, '-'));

  // The distance matrix wraps after eight columns.
  std::vector<Vec3> chain;
  std::vector<std::string> names;
  for (int i = 0; i < 10; ++i) {
    chain.push_back({i * A, 0.0, 0.0});
    names.push_back(std::string("C").append(std::to_string(i + 1)));
  }
  const std::vector<std::string> wrapped = DistanceMatrixLines(names, chain);
  ASSERT_EQ(wrapped.size(), 15u);  // heading, head + 10 rows, head + 2 rows
  EXPECT_EQ(wrapped[12], "              C9       C10");
  EXPECT_EQ(wrapped[14], " C10     1.00000   0.00000");
}

}  // namespace quintor

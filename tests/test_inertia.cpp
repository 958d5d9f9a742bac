#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>
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

// The last standard orientation of a Gaussian log and the rotational
// constants printed right under it.
struct GaussianGeometry {
  std::vector<int> nuclear;
  std::vector<Vec3> xyz;  // Angstrom
  std::vector<double> ghz;
};

GaussianGeometry LastStandardOrientation(const std::string& path) {
  std::ifstream in(path);
  EXPECT_TRUE(in) << path;
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  size_t start = lines.size();
  for (size_t i = 0; i < lines.size(); ++i)
    if (lines[i].find("Standard orientation:") != std::string::npos) start = i;
  GaussianGeometry g;
  if (start == lines.size()) return g;
  size_t i = start + 5;
  for (; i < lines.size() && lines[i].find("-----") == std::string::npos; ++i) {
    std::istringstream row(lines[i]);
    int center, z, type;
    Vec3 p;
    row >> center >> z >> type >> p[0] >> p[1] >> p[2];
    g.nuclear.push_back(z);
    g.xyz.push_back(p);
  }
  for (; i < lines.size(); ++i) {
    const auto at = lines[i].find("Rotational constants (GHZ):");
    if (at == std::string::npos) continue;
    std::istringstream values(lines[i].substr(at + 27));
    for (double v; values >> v;) g.ghz.push_back(v);
    break;
  }
  return g;
}

// Masses as the Gaussian logs print them.
std::vector<double> GaussianMasses(const std::vector<int>& nuclear) {
  std::vector<double> m;
  for (int z : nuclear) m.push_back(z == 1 ? 1.00783 : z == 6 ? 12.0 : z == 8 ? 15.99491 : 0.0);
  return m;
}

void ExpectConstantsMatchGaussian(const std::string& log) {
  const GaussianGeometry g = LastStandardOrientation(test::TestData(log));
  ASSERT_FALSE(g.xyz.empty());
  ASSERT_EQ(g.ghz.size(), 3u);
  const InertiaAnalysis r = AnalyseInertia(ToBohr(g.xyz), GaussianMasses(g.nuclear));
  // Gaussian prints A >= B >= C; the moments ascend, so the constants descend.
  for (int k = 0; k < 3; ++k)
    EXPECT_NEAR(r.rotConstGHz[k] / g.ghz[k], 1.0, 1e-4) << log << " constant " << k;
}

TEST(Inertia, WaterConstantsAgreeWithGaussian) { ExpectConstantsMatchGaussian("gaussian16/water_opt_freq.log"); }

TEST(Inertia, BenzeneConstantsAgreeWithGaussian) { ExpectConstantsMatchGaussian("gaussian09/benzene_freq.log"); }

const std::vector<Vec3> kWater = {{0.0, 0.0, 0.1173}, {0.0, 0.7572, -0.4692}, {0.0, -0.7572, -0.4692}};
const std::vector<double> kWaterMass = {15.99491, 1.00782, 1.00782};

TEST(Inertia, WaterMomentsByHand) {
  // Moments of a planar molecule: about the in-plane axes from the squared
  // distances from them; the out-of-plane moment is their sum.
  std::vector<Vec3> shifted = kWater;
  for (Vec3& p : shifted) p = p + Vec3{1.0, -2.0, 3.0};  // anywhere in space
  const InertiaAnalysis r = AnalyseInertia(ToBohr(shifted), kWaterMass);

  const double mtot = 15.99491 + 2 * 1.00782;
  const double zc = (15.99491 * 0.1173 - 2 * 1.00782 * 0.4692) / mtot;
  const double iy = 15.99491 * std::pow(0.1173 - zc, 2) + 2 * 1.00782 * std::pow(-0.4692 - zc, 2);
  const double iz = 2 * 1.00782 * 0.7572 * 0.7572;
  EXPECT_NEAR(r.molMass, mtot, 1e-12);
  EXPECT_NEAR(r.centre[0] / A, 1.0, 1e-12);
  EXPECT_NEAR(r.centre[1] / A, -2.0, 1e-12);
  EXPECT_NEAR(r.centre[2] / A, 3.0 + zc, 1e-12);
  EXPECT_NEAR(r.momentsAngstrom[0], std::min(iy, iz), 1e-9);
  EXPECT_NEAR(r.momentsAngstrom[1], std::max(iy, iz), 1e-9);
  EXPECT_NEAR(r.momentsAngstrom[2], iy + iz, 1e-9);
  for (int k = 0; k < 3; ++k) {
    EXPECT_NEAR(r.moments[k], r.momentsAngstrom[k] * A * A, 1e-9);
    EXPECT_NEAR(r.rotConst[k], 1.0 / r.moments[k], 1e-15);
    EXPECT_DOUBLE_EQ(r.rotConstGHz[k], r.rotConst[k] * 1804.74);
  }
  // The centred copy keeps the shape, with the centre at the origin.
  Vec3 sum{};
  for (size_t i = 0; i < 3; ++i) sum = sum + kWaterMass[i] * r.centred[i];
  for (int k = 0; k < 3; ++k) EXPECT_NEAR(sum[k], 0.0, 1e-12);
}

TEST(Inertia, PrincipalCoordinatesDiagonaliseTheTensor) {
  const InertiaAnalysis r = AnalyseInertia(ToBohr(kWater), kWaterMass);
  // Distances survive, and the tensor built from the principal coordinates is diagonal.
  for (size_t i = 0; i < 3; ++i)
    for (size_t j = 0; j < 3; ++j)
      EXPECT_NEAR(Norm(r.principalCoords[i] - r.principalCoords[j]), Norm(kWater[i] - kWater[j]), 1e-12);
  const Mat3 t = InertiaTensor(r.principalCoords, kWaterMass);
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j)
      EXPECT_NEAR(t[i][j], i == j ? r.momentsAngstrom[i] : 0.0, 1e-9);
}

TEST(Inertia, LinearMoleculeKeepsItsTinyMomentAsConstant) {
  const std::vector<Vec3> co2 = {{-1.16, 0, 0}, {0, 0, 0}, {1.16, 0, 0}};
  const InertiaAnalysis r = AnalyseInertia(ToBohr(co2), {15.99491, 12.0, 15.99491});
  EXPECT_LT(r.moments[0], SmallMoment);
  EXPECT_TRUE(r.Linear());
  EXPECT_EQ(r.rotConst[0], r.moments[0]);
  EXPECT_LT(std::fabs(r.rotConstGHz[0]), 1e-6);
  const double i = 2 * 15.99491 * 1.16 * 1.16;
  EXPECT_NEAR(r.momentsAngstrom[1], i, 1e-9);
  EXPECT_NEAR(r.momentsAngstrom[2], i, 1e-9);
  // About 11.7 GHz, the known B of carbon dioxide.
  EXPECT_NEAR(r.rotConstGHz[1], 11.7, 0.1);
}

TEST(Inertia, SingleAtomHasZeroMomentsAndConstants) {
  const InertiaAnalysis r = AnalyseInertia(ToBohr({{0.3, -0.2, 1.0}}), {15.99491});
  for (int k = 0; k < 3; ++k) {
    EXPECT_EQ(r.moments[k], 0.0);
    EXPECT_EQ(r.rotConst[k], 0.0);
    EXPECT_EQ(r.rotConstGHz[k], 0.0);
  }
  EXPECT_NEAR(r.centred[0][0], 0.0, 1e-15);
}

// ---- Type of top ----------------------------------------------------------

std::vector<Vec3> Methane() {
  const double a = 1.089 / std::sqrt(3.0);
  return {{0, 0, 0}, {a, a, a}, {a, -a, -a}, {-a, a, -a}, {-a, -a, a}};
}
std::vector<Vec3> Ammonia() {
  std::vector<Vec3> m = {{0, 0, 0.1}};
  for (int k = 0; k < 3; ++k) {
    const double t = k * 2 * constants::Pi / 3;
    m.push_back({0.9377 * std::cos(t), 0.9377 * std::sin(t), 0.1 - 0.3816});
  }
  return m;
}
std::vector<Vec3> Ethane(double twistDegrees) {
  std::vector<Vec3> m = {{0, 0, 0.7655}, {0, 0, -0.7655}};
  for (int side = 0; side < 2; ++side)
    for (int k = 0; k < 3; ++k) {
      const double t = k * 2 * constants::Pi / 3 + (side ? twistDegrees * constants::DegToRad : 0.0);
      m.push_back({1.018 * std::cos(t), 1.018 * std::sin(t), side ? -1.1607 : 1.1607});
    }
  return m;
}

TEST(PrincipalFrame, TypesOfTop) {
  const std::vector<double> ch4 = {12.0, 1.00782, 1.00782, 1.00782, 1.00782};
  EXPECT_EQ(PrincipalFrame(2, -1, 1, Methane(), ch4).top, SphericalTop);
  EXPECT_EQ(PrincipalFrame(2, -1, 1, Ammonia(), {14.00307, 1.00782, 1.00782, 1.00782}).top, OblateTop);
  EXPECT_EQ(PrincipalFrame(2, -1, 1, Ethane(60), {12, 12, 1.00782, 1.00782, 1.00782, 1.00782, 1.00782, 1.00782}).top,
            ProlateTop);
  EXPECT_EQ(PrincipalFrame(2, -1, 1, kWater, kWaterMass).top, AsymmetricTop);
  EXPECT_EQ(PrincipalFrame(2, -1, 1, {{0, 0, -1.064}, {0, 0, 0}, {0, 0, 1.156}}, {1.00782, 12.0, 14.00307}).top,
            LinearTop);
  const PrincipalFrameResult atom = PrincipalFrame(2, -1, 1, {{1, 2, 3}}, {15.99491});
  EXPECT_EQ(atom.top, SingleAtom);
  EXPECT_EQ(atom.xyz[0], (Vec3{1, 2, 3}));
  EXPECT_EQ(TopName(SingleAtom), "Single-atom molecule");
  EXPECT_EQ(TopName(ProlateTop), "Prolate Symmetric Top");
}

TEST(PrincipalFrame, ProlateTopStandsOnZ) {
  // A tilted, displaced ethane: the C-C axis must end up along Z through the origin.
  std::vector<Vec3> m = Ethane(60);
  const Mat3 tilt = RotationX(0.4) * RotationY(-1.1);
  for (Vec3& p : m) p = tilt * p + Vec3{0.5, 0.2, -0.7};
  const PrincipalFrameResult r =
      PrincipalFrame(2, -1, 1, m, {12, 12, 1.00782, 1.00782, 1.00782, 1.00782, 1.00782, 1.00782});
  ASSERT_EQ(r.top, ProlateTop);
  EXPECT_NEAR(std::fabs(r.xyz[0][2]), 0.7655, 1e-9);
  EXPECT_NEAR(std::hypot(r.xyz[0][0], r.xyz[0][1]), 0.0, 1e-9);
  EXPECT_NEAR(r.xyz[0][2], -r.xyz[1][2], 1e-9);
  // Moments ascend with axis order 2, and the axes form a left-handed set.
  EXPECT_LT(r.moments[0], r.moments[1]);
  EXPECT_NEAR(r.moments[1], r.moments[2], 1e-6 * r.moments[2]);
  EXPECT_NEAR(Dot(Cross(Column(r.axes, 0), Column(r.axes, 1)), Column(r.axes, 2)), -1.0, 1e-12);
}

TEST(PrincipalFrame, OblateTopKeepsItsCentreAndHasTheUniqueAxisOnX) {
  const std::vector<double> nh3 = {14.00307, 1.00782, 1.00782, 1.00782};
  const PrincipalFrameResult r = PrincipalFrame(2, -1, 1, Ammonia(), nh3);
  ASSERT_EQ(r.top, OblateTop);
  // Without the centre added back the N atom would lie on the X axis.
  const Vec3 n = r.xyz[0] - r.centre;
  EXPECT_NEAR(std::hypot(n[1], n[2]), 0.0, 1e-9);
  EXPECT_GT(std::fabs(n[0]), 0.01);
  // The three H atoms share their X.
  EXPECT_NEAR(r.xyz[1][0], r.xyz[2][0], 1e-9);
  EXPECT_NEAR(r.xyz[1][0], r.xyz[3][0], 1e-9);
}

TEST(PrincipalFrame, AxisOrderAndHandedness) {
  const PrincipalFrameResult down = PrincipalFrame(-1, 0, 0, kWater, kWaterMass);
  EXPECT_GT(down.moments[0], down.moments[1]);
  EXPECT_GT(down.moments[1], down.moments[2]);
  EXPECT_FALSE(down.rotated);
  const PrincipalFrameResult right = PrincipalFrame(-1, 1, 0, kWater, kWaterMass);
  EXPECT_NEAR(Dot(Cross(Column(right.axes, 0), Column(right.axes, 1)), Column(right.axes, 2)), 1.0, 1e-12);
  const PrincipalFrameResult left = PrincipalFrame(-1, -1, 1, kWater, kWaterMass);
  EXPECT_NEAR(Dot(Cross(Column(left.axes, 0), Column(left.axes, 1)), Column(left.axes, 2)), -1.0, 1e-12);
  ASSERT_TRUE(left.rotated);
  // Water lies in a plane: the largest moment (X in the frame) is normal to it.
  for (const Vec3& p : left.xyz) EXPECT_NEAR(p[0], 0.0, 1e-9);
}

// ---- Reorientation --------------------------------------------------------

TEST(Reorient, ThreeAtomsDefineTheFrame) {
  const std::vector<Vec3> xyz = {{1.0, 1.0, 1.0}, {2.0, 3.0, 1.5}, {0.0, 2.0, 4.0}, {-1.0, 0.5, 2.0}};
  const auto r = ReorientByAtoms(xyz, 2, 3, 4);
  ASSERT_TRUE(r);
  const std::vector<Vec3>& t = r->xyz;
  EXPECT_NEAR(Norm(t[1]), 0.0, 1e-12);          // O at the origin
  EXPECT_GT(t[2][0], 0.0);                      // X on +X
  EXPECT_NEAR(t[2][1], 0.0, 1e-12);
  EXPECT_NEAR(t[2][2], 0.0, 1e-12);
  EXPECT_GT(t[3][1], 0.0);                      // Y in XY with y > 0
  EXPECT_NEAR(t[3][2], 0.0, 1e-12);
  for (size_t i = 0; i < xyz.size(); ++i)
    for (size_t j = 0; j < xyz.size(); ++j) EXPECT_NEAR(Norm(t[i] - t[j]), Norm(xyz[i] - xyz[j]), 1e-12);
  // Rows of the matrix are orthonormal and right-handed.
  const Mat3& m = r->matrix;
  EXPECT_NEAR(Dot(Cross(m[0], m[1]), m[2]), 1.0, 1e-12);
  EXPECT_FALSE(ReorientByAtoms(xyz, 1, 2, 5));
  EXPECT_FALSE(ReorientByAtoms(xyz, 0, 2, 3));
}

TEST(Reorient, AllSetsAndModesWithTheirLogBlocks) {
  const std::vector<Vec3> water = ToBohr(kWater);
  std::vector<std::vector<Vec3>> sets = {water, water};
  for (Vec3& p : sets[1]) p = RotationZ(0.7) * p;   // set 0 turned in space
  std::vector<std::vector<Vec3>> modes = {{{0, 0, 1}, {0, 1, 0}, {1, 0, 0}}};
  const OrientedSets out = OrientSetsByAtoms(sets, -1, {1, 2, 3}, {"O1", "H2", "H3"}, {8, 1, 1}, modes);

  // Both sets end in the same frame.
  for (int i = 0; i < 3; ++i)
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(sets[0][i][k], sets[1][i][k], 1e-12);
  EXPECT_NEAR(sets[0][1][0], 0.7572 * std::hypot(1.0, 0.5865 / 0.7572) * A, 1e-9);
  // The modes turn with the matrix of the last set, without translation.
  const Vec3 expected = out.lastMatrix * Vec3{0, 0, 1};
  for (int k = 0; k < 3; ++k) EXPECT_NEAR(modes[0][0][k], expected[k], 1e-15);

  ASSERT_GE(out.lines.size(), 2u);
  EXPECT_EQ(out.lines[0], " The read-in structures  will be re-oriented.  Reference atoms:     1    2    3");
  EXPECT_EQ(out.lines[1], " The read-in frequencies will also be re-oriented in the same manner.");
  EXPECT_EQ(out.lines[2], " iCyc =   -1  Re-oriented geo with reference atoms (O, OX, OXY):    1    2    3");
  EXPECT_EQ(out.lines[3], std::string(70, '-'));
  EXPECT_EQ(out.lines[4], " Name        Nuc              X              Y              Z");
  EXPECT_EQ(out.lines[6], " O1            8            0.00000000     0.00000000     0.00000000");
  EXPECT_EQ(out.lines[7].substr(0, 23), " H2            1       ");
  EXPECT_EQ(out.lines[9], std::string(70, '-'));
  EXPECT_EQ(out.lines[10], "");
  EXPECT_EQ(out.lines[11], "");
  EXPECT_EQ(out.lines[12], " iCyc =    0  Re-oriented geo with reference atoms (O, OX, OXY):    1    2    3");
  EXPECT_EQ(out.lines.size(), 22u);

  std::vector<std::vector<Vec3>> noModes;
  const OrientedSets quiet = OrientSetsByAtoms(sets, -1, {1, 2, 3}, {"O1", "H2", "H3"}, {8, 1, 1}, noModes);
  EXPECT_EQ(quiet.lines[1].substr(0, 7), " iCyc =");
}

// ---- Report blocks ----------------------------------------------------------

TEST(InertiaReport, LinesAndFields) {
  const std::vector<std::string> names = {"O1", "H2", "H3"};
  const std::vector<int> z = {8, 1, 1};
  std::vector<Vec3> shifted = kWater;
  for (Vec3& p : shifted) p = p + Vec3{0.0, 0.0, 1.0};
  const std::vector<Vec3> bohr = ToBohr(shifted);
  const InertiaAnalysis r = AnalyseInertia(bohr, kWaterMass);
  const std::vector<std::string> lines = InertiaReportLines(r, names, z, bohr);

  const double zc = 1.0 + (15.99491 * 0.1173 - 2 * 1.00782 * 0.4692) / (15.99491 + 2 * 1.00782);
  char expected[128];
  std::snprintf(expected, sizeof expected, " Mass center, mol.mass:%12.6f%12.6f%12.6f%20.6f", 0.0, 0.0, zc,
                15.99491 + 2 * 1.00782);
  EXPECT_EQ(lines[0], expected);
  EXPECT_EQ(lines[1], " Distance matrix (A):");
  EXPECT_EQ(lines[2], "              O1        H2        H3");
  EXPECT_EQ(lines[3], " O1      0.00000");
  EXPECT_EQ(lines[4].substr(0, 16), " H2      0.95778");
  EXPECT_EQ(lines[5].size(), 36u);
  EXPECT_EQ(lines[5], " H3      0.95778   1.51440   0.00000");

  auto find = [&](const std::string& head) {
    return std::find_if(lines.begin(), lines.end(), [&](const std::string& l) { return l.rfind(head, 0) == 0; });
  };
  auto at = find(" Principal moments of inertia and rotational constants:");
  ASSERT_NE(at, lines.end());
  EXPECT_EQ((at + 1)->substr(0, 19), " Ia,Ib,Ic, a.u.   :");
  EXPECT_EQ((at + 1)->size(), 19u + 45u);
  EXPECT_EQ((at + 2)->substr(0, 19), " Ia,Ib,Ic, amu*A^2:");
  EXPECT_EQ((at + 3)->substr(0, 19), " A, B, C,  a.u.   :");
  EXPECT_EQ((at + 4)->substr(0, 19), " A, B, C,  GHz    :");
  char ghz[64];
  std::snprintf(ghz, sizeof ghz, "%15.6f%15.6f%15.6f", r.rotConstGHz[0], r.rotConstGHz[1], r.rotConstGHz[2]);
  EXPECT_EQ((at + 4)->substr(19), ghz);
  EXPECT_EQ((at + 5)->substr(0, 19), " Principal axes   :");
  EXPECT_EQ((at + 6)->substr(0, 19), std::string(19, ' '));
  EXPECT_EQ(*(at + 8), " Molecular coordinates in principal axes (A) ");
  EXPECT_EQ(*(at + 10), " Name        Nuc              X              Y              Z");
  EXPECT_EQ((at + 12)->substr(0, 23), " O1            8       ");
  EXPECT_EQ(lines.back(), std::string(70, '-'));
}

TEST(InertiaReport, DistanceMatrixWrapsAfterEightColumns) {
  std::vector<Vec3> chain;
  std::vector<std::string> names;
  for (int i = 0; i < 10; ++i) {
    chain.push_back({i * A, 0.0, 0.0});
    names.push_back(std::string("C").append(std::to_string(i + 1)));
  }
  const std::vector<std::string> lines = DistanceMatrixLines(names, chain);
  // Heading, first block (head + 10 rows), second block (head + 2 rows).
  ASSERT_EQ(lines.size(), 1u + 11u + 3u);
  EXPECT_EQ(lines[10].substr(0, 6), " C9   ");
  EXPECT_EQ(lines[10].size(), 6u + 8u * 10u);
  EXPECT_EQ(lines[12], "              C9       C10");
  EXPECT_EQ(lines[14], " C10     1.00000   0.00000");
}

}  // namespace
}  // namespace quintor

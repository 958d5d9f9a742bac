#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/symmetry.h"
#include "readers/elements.h"
#include "test_support.h"

namespace quintor {

using namespace geom;

namespace {

constexpr double Pi = constants::Pi;

// A molecule built in Angstrom, handed over in bohr as the run keeps it.
struct Molecule {
  std::vector<int> z;
  std::vector<Vec3> xyz;  // Angstrom

  void Add(int nuclear, const Vec3& p) {
    z.push_back(nuclear);
    xyz.push_back(p);
  }
  std::vector<double> Masses() const {
    std::vector<double> m;
    for (int n : z) m.push_back(DefaultMass(n));
    return m;
  }
  std::vector<Vec3> Bohr() const {
    std::vector<Vec3> b;
    for (const Vec3& p : xyz) b.push_back(constants::AngstromToBohr * p);
    return b;
  }
  // Turned and moved anywhere in space: the result must not depend on it.
  Molecule Placed(double a, double b, double c, const Vec3& shift) const {
    Molecule m = *this;
    const Mat3 r = RotationZ(c) * RotationY(b) * RotationX(a);
    for (Vec3& p : m.xyz) p = r * p + shift;
    return m;
  }
};

SymmetryResult Recognise(const Molecule& m, double eps = StandardSymEps) {
  return RecogniseSymmetry(m.z, m.Masses(), m.Bohr(), eps);
}

Vec3 Polar(double r, double degrees, double z) {
  const double t = degrees * constants::DegToRad;
  return {r * std::cos(t), r * std::sin(t), z};
}

Molecule Water() {
  Molecule m;
  m.Add(8, {0.0, 0.0, 0.1173});
  m.Add(1, {0.0, 0.7572, -0.4692});
  m.Add(1, {0.0, -0.7572, -0.4692});
  return m;
}

Molecule Methane() {
  const double a = 1.089 / std::sqrt(3.0);
  Molecule m;
  m.Add(6, {0, 0, 0});
  m.Add(1, {a, a, a});
  m.Add(1, {a, -a, -a});
  m.Add(1, {-a, a, -a});
  m.Add(1, {-a, -a, a});
  return m;
}

Molecule Cubane() {
  const double c = 0.7825, h = 1.4113;  // C at the corners, H outward along the diagonals
  Molecule m;
  for (int s : {-1, 1})
    for (int t : {-1, 1})
      for (int u : {-1, 1}) m.Add(6, {s * c, t * c, u * c});
  for (int s : {-1, 1})
    for (int t : {-1, 1})
      for (int u : {-1, 1}) m.Add(1, {s * h, t * h, u * h});
  return m;
}

Molecule Benzene() {
  Molecule m;
  for (int k = 0; k < 6; ++k) m.Add(6, Polar(1.397, 60.0 * k, 0.0));
  for (int k = 0; k < 6; ++k) m.Add(1, Polar(2.481, 60.0 * k, 0.0));
  return m;
}

Molecule Ammonia() {
  Molecule m;
  m.Add(7, {0, 0, 0.1});
  for (int k = 0; k < 3; ++k) m.Add(1, Polar(0.9377, 120.0 * k, 0.1 - 0.3816));
  return m;
}

// Ethane with the lower methyl turned by `twist` degrees: 0 eclipsed, 60 staggered.
Molecule Ethane(double twist) {
  Molecule m;
  m.Add(6, {0, 0, 0.7655});
  m.Add(6, {0, 0, -0.7655});
  for (int k = 0; k < 3; ++k) m.Add(1, Polar(1.018, 120.0 * k, 1.1607));
  for (int k = 0; k < 3; ++k) m.Add(1, Polar(1.018, 120.0 * k + twist, -1.1607));
  return m;
}

Molecule Allene() {
  Molecule m;
  m.Add(6, {0, 0, 0});
  m.Add(6, {0, 0, 1.308});
  m.Add(6, {0, 0, -1.308});
  m.Add(1, {0.93, 0, 1.87});
  m.Add(1, {-0.93, 0, 1.87});
  m.Add(1, {0, 0.93, -1.87});
  m.Add(1, {0, -0.93, -1.87});
  return m;
}

// Ethylene with one CH2 turned about the C=C axis by `twist` degrees.
Molecule Ethylene(double twist) {
  Molecule m;
  m.Add(6, {0, 0, 0.667});
  m.Add(6, {0, 0, -0.667});
  m.Add(1, Polar(0.923, 0.0, 1.232));
  m.Add(1, Polar(0.923, 180.0, 1.232));
  m.Add(1, Polar(0.923, twist, -1.232));
  m.Add(1, Polar(0.923, 180.0 + twist, -1.232));
  return m;
}

Molecule Linear(const std::vector<int>& z, const std::vector<double>& at) {
  Molecule m;
  for (size_t i = 0; i < z.size(); ++i) m.Add(z[i], {0, 0, at[i]});
  return m;
}

void ExpectGroup(const SymmetryResult& r, const std::string& name, int code, int number) {
  EXPECT_EQ(r.groupName, name);
  EXPECT_EQ(r.groupCode, code);
  EXPECT_EQ(r.symmetryNumber, number);
  EXPECT_TRUE(r.consoleLines.empty()) << r.consoleLines.front();
}

TEST(Symmetry, GroupNamesAndNumbers) {
  EXPECT_EQ(GroupName(GroupDnh, 6), "D6h ");
  EXPECT_EQ(GroupName(GroupCn, 3), "C3  ");
  EXPECT_EQ(GroupName(GroupCinfv, 0), "C*v ");
  EXPECT_EQ(GroupName(GroupAtom, 0), "O(3)");
  EXPECT_EQ(GroupName(NoGroup, 0), "    ");
  EXPECT_EQ(GroupSymmetryNumber(GroupDnd, 3), 6);
  EXPECT_EQ(GroupSymmetryNumber(GroupCnv, 5), 5);
  EXPECT_EQ(GroupSymmetryNumber(GroupIh, 0), 60);
  EXPECT_EQ(GroupSymmetryNumber(GroupD2h, 0), 4);
  EXPECT_EQ(GroupSymmetryNumber(NoGroup, 0), 0);
}

TEST(Symmetry, Operations) {
  const Vec3 p{1.0, 2.0, 3.0};
  const Vec3 c4 = MakeOperation(1, 4) * p;
  EXPECT_NEAR(c4[0], -2.0, 1e-15);
  EXPECT_NEAR(c4[1], 1.0, 1e-15);
  EXPECT_NEAR(c4[2], 3.0, 1e-15);
  const Vec3 s4 = MakeOperation(2, 4) * p;
  EXPECT_NEAR(s4[0], -2.0, 1e-15);
  EXPECT_NEAR(s4[1], 1.0, 1e-15);
  EXPECT_NEAR(s4[2], -3.0, 1e-15);
  EXPECT_EQ(MakeOperation(3, 0) * p, (Vec3{1, 2, -3}));
  EXPECT_EQ(MakeOperation(4, 0) * p, (Vec3{1, -2, 3}));
}

TEST(Symmetry, Water) {
  const SymmetryResult r = Recognise(Water().Placed(0.3, -1.2, 2.0, {1, 2, 3}));
  ExpectGroup(r, "C2v ", GroupC2v, 2);
  EXPECT_EQ(r.index, 40011100);
  EXPECT_EQ(r.top, AsymmetricTop);
}

TEST(Symmetry, MethaneIsTetrahedral) {
  const SymmetryResult r = Recognise(Methane().Placed(0.5, 0.25, -0.8, {0.3, 0, 0}));
  ExpectGroup(r, "Td  ", GroupTd, 12);
  EXPECT_EQ(r.top, SphericalTop);
  EXPECT_EQ(r.index, 11100100);
  EXPECT_TRUE(r.logLines.empty());
}

TEST(Symmetry, CubaneIsOctahedralAndSaysSo) {
  const SymmetryResult r = Recognise(Cubane().Placed(1.0, 0.4, 0.2, {0, 0, 0}));
  ExpectGroup(r, "Oh  ", GroupOh, 24);
  EXPECT_EQ(r.index, 11111200);
  EXPECT_EQ(r.logLines, std::vector<std::string>{"Oh"});
}

TEST(Symmetry, Benzene) {
  const SymmetryResult r = Recognise(Benzene().Placed(0.2, 0.9, -0.4, {-1, 0, 2}));
  ExpectGroup(r, "D6h ", GroupDnh, 12);
  EXPECT_EQ(r.top, OblateTop);
  EXPECT_EQ(r.index, 36101100);
}

TEST(Symmetry, Ammonia) {
  const SymmetryResult r = Recognise(Ammonia().Placed(-0.7, 0.3, 1.1, {0, 1, 0}));
  ExpectGroup(r, "C3v ", GroupCnv, 3);
  EXPECT_TRUE(r.top == OblateTop || r.top == ProlateTop);
}

TEST(Symmetry, EclipsedAndStaggeredEthane) {
  const SymmetryResult eclipsed = Recognise(Ethane(0).Placed(0.6, -0.3, 0.1, {0, 0, 1}));
  ExpectGroup(eclipsed, "D3h ", GroupDnh, 6);
  EXPECT_EQ(eclipsed.top, ProlateTop);
  const SymmetryResult staggered = Recognise(Ethane(60).Placed(0.6, -0.3, 0.1, {0, 0, 1}));
  ExpectGroup(staggered, "D3d ", GroupDnd, 6);
  EXPECT_EQ(staggered.index, 23110100);
}

TEST(Symmetry, AlleneHasAnS4) {
  ExpectGroup(Recognise(Allene().Placed(0.1, 0.2, 0.3, {0, 0, 0})), "D2d ", GroupDnd, 4);
}

TEST(Symmetry, LinearMolecules) {
  const SymmetryResult co2 = Recognise(Linear({8, 6, 8}, {-1.16, 0, 1.16}).Placed(0.4, 1.0, -2.0, {1, 1, 1}));
  ExpectGroup(co2, "D*h ", GroupDinfh, 2);
  EXPECT_EQ(co2.index, 51111111);
  const SymmetryResult hcn = Recognise(Linear({1, 6, 7}, {-1.064, 0, 1.156}).Placed(0.4, 1.0, -2.0, {1, 1, 1}));
  ExpectGroup(hcn, "C*v ", GroupCinfv, 1);
  EXPECT_EQ(hcn.index, 50011100);
  EXPECT_EQ(hcn.top, LinearTop);
}

TEST(Symmetry, SingleAtom) {
  Molecule o;
  o.Add(8, {0.5, -0.5, 2.0});
  const SymmetryResult r = Recognise(o);
  ExpectGroup(r, "O(3)", GroupAtom, 1);
  EXPECT_EQ(r.index, 60000000);
  EXPECT_EQ(r.top, SingleAtom);
}

TEST(Symmetry, TwistedEthyleneIsD2AndHasNoName) {
  const SymmetryResult r = Recognise(Ethylene(40).Placed(0.3, 0.3, 0.3, {0, 0, 0}));
  EXPECT_EQ(r.index, 41110000);
  EXPECT_EQ(r.groupCode, NoGroup);
  EXPECT_EQ(r.groupName, "    ");
  EXPECT_EQ(r.symmetryNumber, 0);
  // The planar molecule is D2h.
  ExpectGroup(Recognise(Ethylene(0)), "D2h ", GroupD2h, 4);
}

TEST(Symmetry, ProperD3IsReportedByTheAsymmetricBranch) {
  // Twisted ethane has only rotations: C3 and three C2 across it. A proper
  // Dn is none of the symmetric-top groups, so it goes on as an asymmetric
  // top, which sees at most a twofold axis.
  const SymmetryResult r = Recognise(Ethane(25).Placed(0.2, 0.5, 0.0, {0, 0, 0}));
  EXPECT_EQ(r.top, AsymmetricTop);
  EXPECT_TRUE(r.groupCode == GroupC2 || r.groupCode == GroupC1) << r.groupName;
  EXPECT_LE(r.symmetryNumber, 2);

  // With the two methyl groups made different, the C2 axes go and the C3 stays.
  Molecule c3;
  c3.Add(6, {0, 0, 0.7655});
  c3.Add(6, {0, 0, -0.7655});
  for (int k = 0; k < 3; ++k) c3.Add(1, Polar(1.018, 120.0 * k, 1.1607));
  for (int k = 0; k < 3; ++k) c3.Add(1, Polar(1.05, 120.0 * k + 25, -1.20));
  const SymmetryResult pure = Recognise(c3.Placed(0.2, 0.5, 0.0, {0, 0, 0}));
  EXPECT_EQ(pure.index, 23100000);
  ExpectGroup(pure, "C3  ", GroupCn, 3);
}

TEST(Symmetry, LowGroupsOfAsymmetricTops) {
  Molecule trans;  // trans-ClHC=CHCl
  trans.Add(6, {0.67, 0, 0});
  trans.Add(6, {-0.67, 0, 0});
  trans.Add(17, {1.5, 1.4, 0});
  trans.Add(17, {-1.5, -1.4, 0});
  trans.Add(1, {1.2, -0.95, 0});
  trans.Add(1, {-1.2, 0.95, 0});
  const SymmetryResult c2h = Recognise(trans.Placed(0.3, 0.6, 0.9, {1, 0, 0}));
  ExpectGroup(c2h, "C2h ", GroupC2h, 2);
  EXPECT_TRUE(c2h.index == 40010010 || c2h.index == 40010011) << c2h.index;

  Molecule peroxide;  // HOOH, skewed
  peroxide.Add(8, {0.7, 0, 0});
  peroxide.Add(8, {-0.7, 0, 0});
  peroxide.Add(1, {0.9, 0.3, 0.8});
  peroxide.Add(1, {-0.9, -0.3, 0.8});
  const SymmetryResult c2 = Recognise(peroxide.Placed(-0.4, 0.2, 1.3, {0, 2, 0}));
  ExpectGroup(c2, "C2  ", GroupC2, 2);
  EXPECT_EQ(c2.index, 40010000);

  Molecule hocl;
  hocl.Add(8, {0, 0, 0});
  hocl.Add(1, {0.96, 0, 0});
  hocl.Add(17, {-0.3, 1.65, 0});
  const SymmetryResult cs = Recognise(hocl.Placed(0.7, -0.1, 0.4, {0, 0, 3}));
  ExpectGroup(cs, "Cs  ", GroupCs, 1);
  EXPECT_TRUE(cs.index == 40001000 || cs.index == 40000100 || cs.index == 40000010) << cs.index;
}

TEST(Symmetry, ChiralMoleculeIsC1) {
  Molecule m;  // CHFClBr
  m.Add(6, {0, 0, 0});
  m.Add(1, {0.63, 0.63, 0.63});
  m.Add(9, {0.78, -0.78, -0.78});
  m.Add(17, {-1.02, 1.02, -1.02});
  m.Add(35, {-1.12, -1.12, 1.12});
  const SymmetryResult r = Recognise(m);
  ExpectGroup(r, "C1  ", GroupC1, 1);
  EXPECT_EQ(r.index, 40000000);
}

TEST(Symmetry, CoincidingAtomsGiveTheErrorTextAndAResult) {
  Molecule m = Water();
  m.Add(1, m.xyz[1]);  // a second H on top of the first
  const SymmetryResult r = Recognise(m);
  ASSERT_GE(r.consoleLines.size(), 3u);
  EXPECT_EQ(r.consoleLines[0], " ERROR! Some atoms coincide after symmetry transformation!   2   4");
  EXPECT_EQ(r.consoleLines[1], " This is probably due to the incorrect molecular geometry.");
  EXPECT_EQ(r.consoleLines[2], " Attention! -- Symmetry can be incorrectly identified!.");
  EXPECT_EQ(r.userPauses * 3, static_cast<int>(r.consoleLines.size()));
  // Every test failed, so nothing but the identity is left.
  EXPECT_EQ(r.groupName, "C1  ");
}

// ---- Two passes, report, user rotation number -----------------------------

TEST(SymmetryAnalysis, WaterReport) {
  const Molecule w = Water();
  const SymmetryAnalysis s = AnalyseSymmetry(w.z, w.Masses(), w.Bohr(), 0.005, false);
  EXPECT_FALSE(s.off);
  EXPECT_EQ(s.symEpsAfter, 0.5);
  EXPECT_FALSE(s.ShowApproximate());
  EXPECT_EQ(s.RotationNumber(), 2);
  const RotationNumberChoice rot = ChooseRotationNumber(s.RotationNumber(), false, 1.0);
  EXPECT_EQ(rot.value, 2.0);
  EXPECT_EQ(SymmetryReportLines(s, rot), (std::vector<std::string>{
                                             " Rotational Symmetry       : Asymmetric Top",
                                             " Symmetry Index            : 40011100",
                                             " Symmetry Group            : C2v    (will be used in further analysis)",
                                             " Rotational Symmetry Number:  2",
                                         }));
}

TEST(SymmetryAnalysis, DistortedWaterIsOnlyApproximatelyC2v) {
  // One O-H longer by 0.1 A: the plane stays a mirror.
  Molecule w = Water();
  w.xyz[2] = w.xyz[2] + (0.1 / std::hypot(0.7572, 0.5865)) * Vec3{0.0, -0.7572, -0.5865};
  const SymmetryAnalysis s = AnalyseSymmetry(w.z, w.Masses(), w.Bohr(), 0.005, false);
  EXPECT_EQ(s.groupName, "Cs  ");
  EXPECT_EQ(s.approximateName, "C2v ");
  ASSERT_TRUE(s.ShowApproximate());
  const std::vector<std::string> lines = SymmetryReportLines(s, ChooseRotationNumber(s.RotationNumber(), false, 0));
  EXPECT_NE(std::find(lines.begin(), lines.end(), " Approximate Symmetry      : C2v "), lines.end());
  EXPECT_EQ(lines.back(), " Rotational Symmetry Number:  1");
}

TEST(SymmetryAnalysis, DistortedFormaldehydeIsC1ButApproximatelyC2v) {
  Molecule m;
  m.Add(6, {0, 0, 0});
  m.Add(8, {0, 0, 1.205});
  m.Add(1, {0.0, 0.943, -0.587});
  m.Add(1, {0.0, -0.943, -0.587});
  m.xyz[2] = m.xyz[2] + Vec3{0.1, 0.0, 0.0};   // out of the plane
  m.xyz[3] = m.xyz[3] + Vec3{0.0, -0.05, 0.05};
  const SymmetryAnalysis s = AnalyseSymmetry(m.z, m.Masses(), m.Bohr(), 0.005, false);
  EXPECT_EQ(s.groupName, "C1  ");
  EXPECT_EQ(s.index, 40000000);
  EXPECT_EQ(s.approximateName, "C2v ");
  EXPECT_TRUE(s.ShowApproximate());
  EXPECT_EQ(s.RotationNumber(), 1);
}

TEST(SymmetryAnalysis, NoSymmetryOption) {
  const Molecule b = Benzene();
  const SymmetryAnalysis s = AnalyseSymmetry(b.z, b.Masses(), b.Bohr(), 0.005, true);
  EXPECT_TRUE(s.off);
  EXPECT_EQ(s.symEpsAfter, 0.005);
  EXPECT_EQ(s.symmetryNumber, 0);
  const std::vector<std::string> lines = SymmetryReportLines(s, ChooseRotationNumber(s.RotationNumber(), false, 0));
  EXPECT_EQ(lines, (std::vector<std::string>{
                       "",
                       "",
                       " WARNING! Symmetry recognition is turned off! Molecular symmetry set to C1.",
                       " Rotational Symmetry       : Asymmetric Top",
                       " Symmetry Index            :        0",
                       " Symmetry Group            : N/A    (will be used in further analysis)",
                       " Rotational Symmetry Number:  1",
                   }));
}

TEST(SymmetryAnalysis, NonStandardSymEpsIsReported) {
  const Molecule a = Ammonia();
  const SymmetryAnalysis s = AnalyseSymmetry(a.z, a.Masses(), a.Bohr(), 0.01, false);
  ASSERT_GE(s.logLines.size(), 4u);
  EXPECT_EQ(s.logLines[0], "");
  EXPECT_EQ(s.logLines[1], "");
  EXPECT_EQ(s.logLines[2], " WARNING! Non-standard value of SymEps is used ");
  EXPECT_EQ(s.logLines[3], " to recognize the molecular symmetry:        0.0100000000");
  EXPECT_DOUBLE_EQ(s.symEpsAfter, 1.0);
  EXPECT_EQ(s.groupName, "C3v ");
}

TEST(SymmetryAnalysis, UserRotationNumber) {
  const RotationNumberChoice same = ChooseRotationNumber(12, true, 12.0);
  EXPECT_FALSE(same.differs);
  EXPECT_TRUE(same.logLines.empty());

  const RotationNumberChoice differs = ChooseRotationNumber(2, true, 1.0);
  EXPECT_TRUE(differs.differs);
  EXPECT_EQ(differs.value, 1.0);
  EXPECT_EQ(differs.logLines, (std::vector<std::string>{
                                  " WARNING! Rotational symmetry number determined from the",
                                  " actual symmetry of molecule ( 2) is different from ",
                                  " the user-defined one (   1)!",
                                  " The user-defined value will be used in calculations. ",
                                  " Be sure that your setting is correct!",
                              }));
  const Molecule w = Water();
  const SymmetryAnalysis s = AnalyseSymmetry(w.z, w.Masses(), w.Bohr(), 0.005, false);
  const std::vector<std::string> lines = SymmetryReportLines(s, differs);
  EXPECT_EQ(lines[3], " WARNING! Rotational symmetry number determined from the");
  EXPECT_EQ(lines.back(), " Rotational Symmetry Number:  1");
}

// ---- Real geometries ----------------------------------------------------------

Molecule LastStandardOrientation(const std::string& path) {
  std::ifstream in(path);
  EXPECT_TRUE(in) << path;
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  size_t start = lines.size();
  for (size_t i = 0; i < lines.size(); ++i)
    if (lines[i].find("Standard orientation:") != std::string::npos) start = i;
  Molecule m;
  for (size_t i = start + 5; i < lines.size() && lines[i].find("-----") == std::string::npos; ++i) {
    std::istringstream row(lines[i]);
    int center, z, type;
    Vec3 p;
    row >> center >> z >> type >> p[0] >> p[1] >> p[2];
    m.Add(z, p);
  }
  return m;
}

TEST(Symmetry, GaussianGeometries) {
  const Molecule water = LastStandardOrientation(test::TestData("gaussian16/water_opt_freq.log"));
  ASSERT_EQ(water.z.size(), 3u);
  ExpectGroup(Recognise(water), "C2v ", GroupC2v, 2);
  const Molecule benzene = LastStandardOrientation(test::TestData("gaussian09/benzene_freq.log"));
  ASSERT_EQ(benzene.z.size(), 12u);
  ExpectGroup(Recognise(benzene), "D6h ", GroupDnh, 12);
}

}  // namespace
}  // namespace quintor

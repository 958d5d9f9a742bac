// Point groups and symmetry numbers of molecules built here (placed anywhere
// and turned any way), the coinciding-atom complaint, and the report lines.
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "analysis/symmetry.h"
#include "readers/elements.h"
#include "test_support.h"

namespace quintor {

using namespace geom;

namespace {

// A molecule built in Angstrom, handed over in bohr as the run keeps it.
struct Molecule {
  std::vector<int> z;
  std::vector<Vec3> xyz;  // Angstrom

  Molecule& Add(int nuclear, const Vec3& p) {
    z.push_back(nuclear);
    xyz.push_back(p);
    return *this;
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

SymmetryResult Recognise(const Molecule& m) {
  return RecogniseSymmetry(m.z, m.Masses(), m.Bohr(), StandardSymEps);
}
SymmetryAnalysis Analyse(const Molecule& m, double eps = 0.005, bool off = false) {
  return AnalyseSymmetry(m.z, m.Masses(), m.Bohr(), eps, off);
}

Vec3 Polar(double r, double degrees, double z) {
  const double t = degrees * constants::DegToRad;
  return {r * std::cos(t), r * std::sin(t), z};
}

Molecule Water() {
  return Molecule().Add(8, {0.0, 0.0, 0.1173}).Add(1, {0.0, 0.7572, -0.4692}).Add(1, {0.0, -0.7572, -0.4692});
}

Molecule Ammonia() {
  Molecule m;
  m.Add(7, {0, 0, 0.1});
  for (int k = 0; k < 3; ++k) m.Add(1, Polar(0.9377, 120.0 * k, 0.1 - 0.3816));
  return m;
}

Molecule Methane() {
  const double a = 1.089 / std::sqrt(3.0);
  return Molecule().Add(6, {0, 0, 0}).Add(1, {a, a, a}).Add(1, {a, -a, -a}).Add(1, {-a, a, -a}).Add(1, {-a, -a, a});
}

Molecule Cubane() {
  Molecule m;
  for (auto [z, d] : {std::pair{6, 0.7825}, std::pair{1, 1.4113}})
    for (int s : {-1, 1})
      for (int t : {-1, 1})
        for (int u : {-1, 1}) m.Add(z, {s * d, t * d, u * d});
  return m;
}

// K3[Co(NO2)6]-like: N on the axes, each NO2 in a plane of two axes, turned
// so that a threefold rotation about a body diagonal carries the ligands into
// each other (pyritohedral), and K on the corners of a cube, where the
// threefold axes are looked for: Th, with no fourfold axis.
Molecule Hexanitrocobaltate() {
  Molecule m;
  m.Add(27, {0, 0, 0});
  for (int s : {-1, 1})
    for (int t : {-1, 1})
      for (int u : {-1, 1}) m.Add(19, {s * 2.2, t * 2.2, u * 2.2});
  const double n = 1.95, b = 2.55, c = 1.08;
  for (int s : {-1, 1}) m.Add(7, {s * n, 0, 0}).Add(7, {0, s * n, 0}).Add(7, {0, 0, s * n});
  for (int s : {-1, 1})
    for (int t : {-1, 1}) m.Add(8, {s * b, t * c, 0}).Add(8, {0, s * b, t * c}).Add(8, {t * c, 0, s * b});
  return m;
}

Molecule Benzene() {
  Molecule m;
  for (int k = 0; k < 6; ++k) m.Add(6, Polar(1.397, 60.0 * k, 0.0));
  for (int k = 0; k < 6; ++k) m.Add(1, Polar(2.481, 60.0 * k, 0.0));
  return m;
}

// Planar B(OH)3: the three OH turned the same way round the ring, so only
// the threefold axis and the molecular plane are left.
Molecule BoricAcid() {
  Molecule m;
  m.Add(5, {0, 0, 0});
  for (int k = 0; k < 3; ++k) {
    const Vec3 o = Polar(1.367, 120.0 * k, 0.0);
    m.Add(8, o).Add(1, o + Polar(0.967, 120.0 * k + 66.0, 0.0));
  }
  return m;
}

// Ethane with the lower methyl turned by `twist` degrees: 0 eclipsed, 60 staggered;
// `lower` scales the lower methyl, so that the two differ.
Molecule Ethane(double twist, double lower = 1.0) {
  Molecule m;
  m.Add(6, {0, 0, 0.7655}).Add(6, {0, 0, -0.7655});
  for (int k = 0; k < 3; ++k) m.Add(1, Polar(1.018, 120.0 * k, 1.1607));
  for (int k = 0; k < 3; ++k) m.Add(1, Polar(1.018 * lower, 120.0 * k + twist, -1.1607 * lower));
  return m;
}

Molecule Allene() {
  return Molecule()
      .Add(6, {0, 0, 0}).Add(6, {0, 0, 1.308}).Add(6, {0, 0, -1.308})
      .Add(1, {0.93, 0, 1.87}).Add(1, {-0.93, 0, 1.87}).Add(1, {0, 0.93, -1.87}).Add(1, {0, -0.93, -1.87});
}

// Ethylene with one CH2 turned about the C=C axis by `twist` degrees.
Molecule Ethylene(double twist) {
  return Molecule()
      .Add(6, {0, 0, 0.667}).Add(6, {0, 0, -0.667})
      .Add(1, Polar(0.923, 0.0, 1.232)).Add(1, Polar(0.923, 180.0, 1.232))
      .Add(1, Polar(0.923, twist, -1.232)).Add(1, Polar(0.923, 180.0 + twist, -1.232));
}

Molecule Linear(const std::vector<int>& z, const std::vector<double>& at) {
  Molecule m;
  for (size_t i = 0; i < z.size(); ++i) m.Add(z[i], {0, 0, at[i]});
  return m;
}

struct GroupCase {
  const char* what;
  Molecule m;
  const char* name;
  int code, number;
  int index = 0;  // 0: not checked
  int top = -1;   // -1: not checked
};

}  // namespace

TEST(Symmetry, PointGroupsAndSymmetryNumbers) {
  const std::vector<GroupCase> cases = {
      {"water", Water(), "C2v ", GroupC2v, 2, 40011100, AsymmetricTop},
      {"ammonia", Ammonia(), "C3v ", GroupCnv, 3},
      {"boric acid", BoricAcid(), "C3h ", GroupCnh, 3, 0, OblateTop},
      {"methane", Methane(), "Td  ", GroupTd, 12, 11100100, SphericalTop},
      {"hexanitrocobaltate", Hexanitrocobaltate(), "Th  ", GroupTh, 12, 0, SphericalTop},
      {"cubane", Cubane(), "Oh  ", GroupOh, 24, 11111200},
      {"benzene", Benzene(), "D6h ", GroupDnh, 12, 36101100, OblateTop},
      {"eclipsed ethane", Ethane(0), "D3h ", GroupDnh, 6, 0, ProlateTop},
      {"staggered ethane", Ethane(60), "D3d ", GroupDnd, 6, 23110100},
      {"twisted unlike methyls", Ethane(25, 1.03), "C3  ", GroupCn, 3, 23100000},
      {"allene", Allene(), "D2d ", GroupDnd, 4},
      {"planar ethylene", Ethylene(0), "D2h ", GroupD2h, 4},
      {"carbon dioxide", Linear({8, 6, 8}, {-1.16, 0, 1.16}), "D*h ", GroupDinfh, 2, 51111111},
      {"hydrogen cyanide", Linear({1, 6, 7}, {-1.064, 0, 1.156}), "C*v ", GroupCinfv, 1, 50011100, LinearTop},
      {"trans-ClHC=CHCl", Molecule().Add(6, {0.67, 0, 0}).Add(6, {-0.67, 0, 0}).Add(17, {1.5, 1.4, 0})
                              .Add(17, {-1.5, -1.4, 0}).Add(1, {1.2, -0.95, 0}).Add(1, {-1.2, 0.95, 0}),
       "C2h ", GroupC2h, 2},
      {"skewed HOOH", Molecule().Add(8, {0.7, 0, 0}).Add(8, {-0.7, 0, 0}).Add(1, {0.9, 0.3, 0.8})
                          .Add(1, {-0.9, -0.3, 0.8}),
       "C2  ", GroupC2, 2, 40010000},
      {"HOCl", Molecule().Add(8, {0, 0, 0}).Add(1, {0.96, 0, 0}).Add(17, {-0.3, 1.65, 0}), "Cs  ", GroupCs, 1},
      {"CHFClBr", Molecule().Add(6, {0, 0, 0}).Add(1, {0.63, 0.63, 0.63}).Add(9, {0.78, -0.78, -0.78})
                      .Add(17, {-1.02, 1.02, -1.02}).Add(35, {-1.12, -1.12, 1.12}),
       "C1  ", GroupC1, 1, 40000000},
      {"neon atom", Molecule().Add(10, {0.5, -0.5, 2.0}), "O(3)", GroupAtom, 1, 60000000, SingleAtom},
  };
  for (const GroupCase& c : cases) {
    SCOPED_TRACE(c.what);
    const SymmetryResult r = Recognise(c.m.Placed(0.3, -1.2, 2.0, {1, 2, 3}));
    EXPECT_EQ(r.groupName, c.name);
    EXPECT_EQ(r.groupCode, c.code);
    EXPECT_EQ(r.symmetryNumber, c.number);
    if (c.index) {
      EXPECT_EQ(r.index, c.index);
    }
    if (c.top >= 0) {
      EXPECT_EQ(r.top, c.top);
    }
    EXPECT_TRUE(r.consoleLines.empty()) << r.consoleLines.front();
  }
}

TEST(Symmetry, GroupsWithoutANameOfTheirOwn) {
  // Twisted ethylene is D2, which has no code: symmetry number 0.
  const SymmetryResult d2 = Recognise(Ethylene(40).Placed(0.3, 0.3, 0.3, {0, 0, 0}));
  EXPECT_EQ(d2.index, 41110000);
  EXPECT_EQ(d2.groupCode, NoGroup);
  EXPECT_EQ(d2.groupName, "    ");
  EXPECT_EQ(d2.symmetryNumber, 0);
  // A proper D3 goes on as an asymmetric top, which sees at most a twofold axis.
  const SymmetryResult d3 = Recognise(Ethane(25).Placed(0.2, 0.5, 0.0, {0, 0, 0}));
  EXPECT_EQ(d3.top, AsymmetricTop);
  EXPECT_LE(d3.symmetryNumber, 2);
  EXPECT_TRUE(d3.groupCode == GroupC2 || d3.groupCode == GroupC1) << d3.groupName;
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
  EXPECT_EQ(r.groupName, "C1  ");  // every test failed: only the identity is left
}

// ---- Two passes, report, user rotation number -----------------------------

TEST(SymmetryAnalysis, WaterReport) {
  const SymmetryAnalysis s = Analyse(Water());
  EXPECT_EQ(s.symEpsAfter, 0.5);
  EXPECT_FALSE(s.ShowApproximate());
  EXPECT_EQ(SymmetryReportLines(s, ChooseRotationNumber(s.RotationNumber(), false, 1.0)),
            (std::vector<std::string>{
                " Rotational Symmetry       : Asymmetric Top",
                " Symmetry Index            : 40011100",
                " Symmetry Group            : C2v    (will be used in further analysis)",
                " Rotational Symmetry Number:  2",
            }));
}

TEST(SymmetryAnalysis, DistortedMoleculesAreOnlyApproximatelySymmetric) {
  // One O-H longer by 0.1 A: the plane stays a mirror.
  Molecule w = Water();
  w.xyz[2] = w.xyz[2] + (0.1 / std::hypot(0.7572, 0.5865)) * Vec3{0.0, -0.7572, -0.5865};
  const SymmetryAnalysis s = Analyse(w);
  EXPECT_EQ(s.groupName, "Cs  ");
  EXPECT_EQ(s.approximateName, "C2v ");
  ASSERT_TRUE(s.ShowApproximate());
  const std::vector<std::string> lines = SymmetryReportLines(s, ChooseRotationNumber(s.RotationNumber(), false, 0));
  ASSERT_FALSE(lines.empty());
  EXPECT_NE(std::find(lines.begin(), lines.end(), " Approximate Symmetry      : C2v "), lines.end());
  EXPECT_EQ(lines.back(), " Rotational Symmetry Number:  1");
  // Formaldehyde with one H out of the plane: C1, approximately C2v.
  Molecule f = Molecule().Add(6, {0, 0, 0}).Add(8, {0, 0, 1.205}).Add(1, {0.1, 0.943, -0.587})
                   .Add(1, {0.0, -0.993, -0.537});
  const SymmetryAnalysis c1 = Analyse(f);
  EXPECT_EQ(c1.groupName, "C1  ");
  EXPECT_EQ(c1.approximateName, "C2v ");
  EXPECT_EQ(c1.RotationNumber(), 1);
}

TEST(SymmetryAnalysis, NoSymmetryOption) {
  const SymmetryAnalysis s = Analyse(Benzene(), 0.005, true);
  EXPECT_TRUE(s.off);
  EXPECT_EQ(s.symEpsAfter, 0.005);
  EXPECT_EQ(SymmetryReportLines(s, ChooseRotationNumber(s.RotationNumber(), false, 0)),
            (std::vector<std::string>{
                "",
                "",
                " WARNING! Symmetry recognition is turned off! Molecular symmetry set to C1.",
                " Rotational Symmetry       : Asymmetric Top",
                " Symmetry Index            :        0",
                " Symmetry Group            : N/A    (will be used in further analysis)",
                " Rotational Symmetry Number:  1",
            }));
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
}

}  // namespace quintor

// Gaussian Z-matrix input: parsing, the conversion to Cartesian coordinates
// (checked by recomputing distances, angles and dihedrals from the result)
// and the parser's errors.
#include <gtest/gtest.h>

#include <cmath>
#include <iomanip>
#include <sstream>

#include "readers/readers.h"
#include "test_support.h"

using namespace quintor;
using namespace quintor::test;

namespace {

constexpr double kA = constants::AngstromToBohr;
constexpr double kRadToDeg = 180.0 / constants::Pi;

struct Outcome {
  std::string log;
  int stop = -1;  // status of a stopped run, -1 when the reader returned
};

Outcome ReadZMatrix(Session& s, const std::string& path) {
  TempDir dir;
  s.opt.formatCode = FormatCode::GaussianZMatrix;
  s.log.Open(dir.File("z.mou"));
  LineReader in;
  EXPECT_TRUE(in.Open(path)) << path;
  Outcome o;
  try {
    ReadGaussianZMatrix(s, in);
  } catch (const RunStop& stop) {
    o.stop = stop.status;
  }
  s.log.Close();
  o.log = ReadFile(dir.File("z.mou"));
  return o;
}

// Geometry of the result, in Angstrom and degrees, computed independently.
Vec3 At(const Session& s, int atom) {
  const Vec3& v = s.Set(s.iCyc).xyz.at(atom - 1);
  return {v[0] / kA, v[1] / kA, v[2] / kA};
}
Vec3 Diff(const Vec3& a, const Vec3& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
double Dot(const Vec3& a, const Vec3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
Vec3 Cross(const Vec3& a, const Vec3& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
double Distance(const Session& s, int i, int j) {
  Vec3 d = Diff(At(s, i), At(s, j));
  return std::sqrt(Dot(d, d));
}
// Angle i-j-k at j.
double Angle(const Session& s, int i, int j, int k) {
  Vec3 a = Diff(At(s, i), At(s, j)), b = Diff(At(s, k), At(s, j));
  return std::atan2(std::sqrt(Dot(Cross(a, b), Cross(a, b))), Dot(a, b)) * kRadToDeg;
}
// Dihedral i-j-k-l in the IUPAC sense, in (-180, 180].
double Dihedral(const Session& s, int i, int j, int k, int l) {
  Vec3 b1 = Diff(At(s, j), At(s, i)), b2 = Diff(At(s, k), At(s, j)), b3 = Diff(At(s, l), At(s, k));
  Vec3 n1 = Cross(b1, b2), n2 = Cross(b2, b3);
  double b2len = std::sqrt(Dot(b2, b2));
  return std::atan2(b2len * Dot(b1, n2), Dot(n1, n2)) * kRadToDeg;
}
// Difference of two angles in degrees, brought into (-180, 180].
double AngleDiff(double a, double b) {
  double d = std::fmod(a - b, 360.0);
  if (d > 180.0) d -= 360.0;
  if (d <= -180.0) d += 360.0;
  return d;
}

constexpr double kTol = 1e-8;

}  // namespace

TEST(ZMatrix, NumericCentresVariablesThenConstants) {
  Session s;
  Outcome o = ReadZMatrix(s, TestInput("h2o2_numeric.gzmat"));
  ASSERT_EQ(o.stop, -1) << o.log;
  EXPECT_EQ(o.log, " Gaussian Z-matrix input requested\n");
  EXPECT_EQ(s.iCyc, 0);
  EXPECT_TRUE(s.coordsFound);
  ASSERT_EQ(s.nAtoms, 4);
  EXPECT_EQ(s.atomicNumber, (std::vector<int>{8, 8, 1, 1}));
  EXPECT_NEAR(Distance(s, 1, 2), 1.45, kTol);
  EXPECT_NEAR(Distance(s, 1, 3), 0.97, kTol);
  EXPECT_NEAR(Distance(s, 2, 4), 0.97, kTol);
  EXPECT_NEAR(Angle(s, 3, 1, 2), 100.0, kTol);
  EXPECT_NEAR(Angle(s, 4, 2, 1), 100.0, kTol);
  EXPECT_NEAR(AngleDiff(Dihedral(s, 4, 2, 1, 3), 179.99), 0.0, kTol);
  // The frame: atom 1 at the origin, atom 2 on +Z, atom 3 in the XZ plane at +X.
  EXPECT_NEAR(At(s, 1)[0], 0.0, 1e-12);
  EXPECT_NEAR(At(s, 1)[2], 0.0, 1e-12);
  EXPECT_NEAR(At(s, 2)[0], 0.0, 1e-12);
  EXPECT_NEAR(At(s, 2)[1], 0.0, 1e-12);
  EXPECT_NEAR(At(s, 2)[2], 1.45, kTol);
  EXPECT_NEAR(At(s, 3)[1], 0.0, 1e-12);
  EXPECT_GT(At(s, 3)[0], 0.0);
  // The one geometry is also the starting set.
  ASSERT_EQ(s.Set(-1).xyz.size(), 4u);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(s.Set(-1).xyz[i], s.Set(0).xyz[i]);
}

TEST(ZMatrix, NamedCentresConstantsFirstNegatedSymbolCartesianRowAndDummy) {
  Session s;
  Outcome o = ReadZMatrix(s, TestInput("formaldehyde_named.gzmat"));
  ASSERT_EQ(o.stop, -1) << o.log;
  EXPECT_EQ(o.log.find("WARNING"), std::string::npos) << o.log;
  ASSERT_EQ(s.nAtoms, 6);
  EXPECT_EQ(s.atomicNumber, (std::vector<int>{6, 97, 8, 1, 1, 7}));  // "X" is number 97
  EXPECT_NEAR(Distance(s, 1, 2), 1.0, kTol);
  EXPECT_NEAR(Distance(s, 1, 3), 1.20, kTol);
  EXPECT_NEAR(Distance(s, 1, 4), 1.10, kTol);
  EXPECT_NEAR(Distance(s, 1, 5), 1.10, kTol);
  EXPECT_NEAR(Angle(s, 3, 1, 2), 90.0, kTol);
  EXPECT_NEAR(Angle(s, 4, 1, 3), 121.0, kTol);
  EXPECT_NEAR(Angle(s, 5, 1, 3), 121.0, kTol);
  EXPECT_NEAR(Dihedral(s, 4, 1, 3, 2), 90.0, kTol);
  EXPECT_NEAR(Dihedral(s, 5, 1, 3, 2), -90.0, kTol);  // "-dih"
  // The Cartesian row stands as written.
  EXPECT_NEAR(At(s, 6)[0], 1.5, 1e-12);
  EXPECT_NEAR(At(s, 6)[1], -1.2, 1e-12);
  EXPECT_NEAR(At(s, 6)[2], 0.3, 1e-12);
}

TEST(ZMatrix, DihedralsAllRoundAndNearPlusMinus180) {
  const std::vector<double> dihedrals = {180.0,  -180.0, 179.9999, -179.9999, 179.5, -179.5, 0.0,
                                         0.0001, 90.0,   -90.0,    120.5,     -60.25, 33.3, -150.0};
  const std::vector<double> angles = {110.0, 95.0, 150.0, 60.0, 178.0, 2.5, 120.0};
  std::ostringstream z;
  z << std::setprecision(15);
  z << "C\nC 1 1.54\nC 2 1.54 1 109.47\n";
  for (size_t i = 0; i < dihedrals.size(); ++i) {
    int k = static_cast<int>(i) + 4;
    double r = 1.0 + 0.05 * static_cast<double>(i % 7);
    double a = angles[i % angles.size()];
    if (i % 2 == 0)
      z << "C " << k - 1 << " " << r << " " << k - 2 << " " << a << " " << k - 3 << " " << dihedrals[i] << "\n";
    else
      z << "C " << k - 1 << " R" << k << " " << k - 2 << " A" << k << " " << k - 3 << " D" << k << "\n";
  }
  z << "\n";
  for (size_t i = 1; i < dihedrals.size(); i += 2) {
    int k = static_cast<int>(i) + 4;
    z << "R" << k << " " << 1.0 + 0.05 * static_cast<double>(i % 7) << "\n";
    z << "A" << k << " " << angles[i % angles.size()] << "\n";
    z << "D" << k << " " << dihedrals[i] << "\n";
  }
  TempDir dir;
  std::string path = dir.Write("chain.gzmat", z.str());
  Session s;
  Outcome o = ReadZMatrix(s, path);
  ASSERT_EQ(o.stop, -1) << o.log;
  ASSERT_EQ(s.nAtoms, static_cast<int>(dihedrals.size()) + 3);
  EXPECT_NEAR(Angle(s, 3, 2, 1), 109.47, kTol);
  for (size_t i = 0; i < dihedrals.size(); ++i) {
    int k = static_cast<int>(i) + 4;
    SCOPED_TRACE("atom " + std::to_string(k));
    EXPECT_NEAR(Distance(s, k, k - 1), 1.0 + 0.05 * static_cast<double>(i % 7), kTol);
    EXPECT_NEAR(Angle(s, k, k - 1, k - 2), angles[i % angles.size()], kTol);
    EXPECT_NEAR(AngleDiff(Dihedral(s, k, k - 1, k - 2, k - 3), dihedrals[i]), 0.0, kTol);
  }
}

TEST(ZMatrix, ValuesWithoutSectionTitleAndLaterTextIgnored) {
  TempDir dir;
  std::string path = dir.Write("w.gzmat",
                               "O\n"
                               "H,1,R\n"
                               "H 1 R 2 A\n"
                               "\n"
                               "R=0.96\n"
                               "A=104.5\n"
                               "\n"
                               "O 0\n"
                               "6-31G*\n");
  Session s;
  Outcome o = ReadZMatrix(s, path);
  ASSERT_EQ(o.stop, -1) << o.log;
  ASSERT_EQ(s.nAtoms, 3);
  EXPECT_NEAR(Distance(s, 1, 2), 0.96, kTol);
  EXPECT_NEAR(Distance(s, 1, 3), 0.96, kTol);
  EXPECT_NEAR(Angle(s, 2, 1, 3), 104.5, kTol);
}

TEST(ZMatrix, LabelSkipLinesAndUnit) {
  TempDir dir;
  std::string path = dir.Write("l.txt",
                               "H 1 9.9\n"
                               "Here comes the molecule\n"
                               "a line to skip\n"
                               "H\n"
                               "H 1 1.4\n");
  Session s;
  s.opt.label = "MOLECULE";
  s.opt.skipLines = 1;
  s.opt.lengthUnit = LengthUnit::Bohr;  // bohr
  Outcome o = ReadZMatrix(s, path);
  ASSERT_EQ(o.stop, -1) << o.log;
  ASSERT_EQ(s.nAtoms, 2);
  EXPECT_NEAR(s.Set(0).xyz[1][2], 1.4, 1e-12);
}

TEST(ZMatrix, CartesianRowWithNothingBehindIsAtTheOrigin) {
  TempDir dir;
  std::string path = dir.Write("c.gzmat", "C 0 1.0 2.0 3.0\nO 0\n");
  Session s;
  Outcome o = ReadZMatrix(s, path);
  ASSERT_EQ(o.stop, -1) << o.log;
  ASSERT_EQ(s.nAtoms, 2);
  EXPECT_EQ(s.Set(0).xyz[1], (Vec3{0, 0, 0}));
  EXPECT_NEAR(s.Set(0).xyz[0][1], 2.0 * kA, 1e-12);
}

TEST(ZMatrix, CloseAtomsWarnAndTheRunGoesOn) {
  TempDir dir;
  std::string path = dir.Write("close.gzmat", "C1\nH1 C1 0.3\n");
  Session s;
  Outcome o = ReadZMatrix(s, path);
  EXPECT_EQ(o.stop, -1);
  EXPECT_NE(o.log.find(" WARNING ! Atoms    1(C1) and    2(H1) are separated by distance !\n"), std::string::npos)
      << o.log;
  EXPECT_EQ(s.nAtoms, 2);
}

TEST(ZMatrix, CoincidentAtomsStopTheRun) {
  TempDir dir;
  std::string path = dir.Write("same.gzmat", "C\nH 1 1.0\nH 0 0.0 0.0 0.0\n");
  Session s;
  Outcome o = ReadZMatrix(s, path);
  EXPECT_EQ(o.stop, exit_status::ReadError);
  EXPECT_NE(o.log.find(" ERROR! Atoms    1 and    3 coinside in Z-matrix!\n"), std::string::npos) << o.log;
}

// ---- Parser errors --------------------------------------------------------------------

TEST(ZMatrixErrors, UnknownCentre) {
  Session s;
  Outcome o = ReadZMatrix(s, TestInput("zmat_unknown_centre.gzmat"));
  EXPECT_EQ(o.stop, exit_status::ReadError);
  EXPECT_EQ(o.log,
            " Gaussian Z-matrix input requested\n"
            " ERROR! Can not recognize atom center C9         at atom    3\n"
            " Current line:\n"
            "H2 C9 1.09 H1 109.5\n");
}

TEST(ZMatrixErrors, UndefinedVariable) {
  Session s;
  Outcome o = ReadZMatrix(s, TestInput("zmat_undefined.gzmat"));
  EXPECT_EQ(o.stop, exit_status::ReadError);
  EXPECT_EQ(o.log,
            " Gaussian Z-matrix input requested\n"
            " ERROR! Some variables are not defined:\n"
            " AOH\n"
            " Current line:\n"
            "roh 0.96\n");
}

TEST(ZMatrixErrors, UnreadableValueOfVariable) {
  Session s;
  Outcome o = ReadZMatrix(s, TestInput("zmat_bad_value.gzmat"));
  EXPECT_EQ(o.stop, exit_status::ReadError);
  EXPECT_EQ(o.log, " Gaussian Z-matrix input requested\n"
                   " ERROR! Can not recognize value of variable  ROH" +
                       std::string(47, ' ') +
                       "\n"
                       " Current line:\n"
                       "roh 0.9x6\n");
}

TEST(ZMatrixErrors, SymbolWithoutValue) {
  TempDir dir;
  std::string path = dir.Write("v.gzmat", "H\nH 1 r\n\nVariables:\nr\n");
  Session s;
  Outcome o = ReadZMatrix(s, path);
  EXPECT_EQ(o.stop, exit_status::ReadError);
  EXPECT_NE(o.log.find(" ERROR! Can not get value for symbolR" + std::string(49, ' ') + "\n Current line:\nr\n"),
            std::string::npos)
      << o.log;
}

TEST(ZMatrixErrors, UnreadableWordInAtomRow) {
  TempDir dir;
  std::string path = dir.Write("w.gzmat", "O\nH 1 0.9x6\n");
  Session s;
  Outcome o = ReadZMatrix(s, path);
  EXPECT_EQ(o.stop, exit_status::ReadError);
  EXPECT_NE(o.log.find(" ERROR! Can not recognize word  3 at atom    2\n Current line:\nH 1 0.9x6\n"),
            std::string::npos)
      << o.log;
}

TEST(ZMatrixErrors, NumericCentreNotBefore) {
  TempDir dir;
  std::string path = dir.Write("n.gzmat", "O\nH 2 0.96\n");
  Session s;
  Outcome o = ReadZMatrix(s, path);
  EXPECT_EQ(o.stop, exit_status::ReadError);
  EXPECT_NE(o.log.find(" ERROR! Atom center     2 is not found before atom    2\n"), std::string::npos) << o.log;
}

TEST(ZMatrixErrors, NamedCentreStandsLater) {
  TempDir dir;
  std::string path = dir.Write("n.gzmat", "C1\nH1 O2 1.0\nO2 C1 1.2 H1 100.0\n");
  Session s;
  Outcome o = ReadZMatrix(s, path);
  EXPECT_EQ(o.stop, exit_status::ReadError);
  EXPECT_NE(o.log.find(" ERROR! Atom center O2         is not found before atom    2\n Current line:\nH1 O2 1.0\n"),
            std::string::npos)
      << o.log;
}

TEST(ZMatrixErrors, WholeRunsEndWithNonZeroStatus) {
  for (const char* name : {"zmat_unknown_centre.gzmat", "zmat_undefined.gzmat", "zmat_bad_value.gzmat"}) {
    SCOPED_TRACE(name);
    TempDir dir;
    std::string path = dir.Write(name, ReadFile(TestInput(name)));
    RunResult r = RunInProcess({path, "/GZ", "/0"});
    EXPECT_EQ(r.status, exit_status::ReadError) << r.console;
    EXPECT_NE(r.log.find(" Current line:"), std::string::npos) << r.log;
  }
}

TEST(ZMatrix, WholeRun) {
  TempDir dir;
  std::string path = dir.Write("h2o2.gzmat", ReadFile(TestInput("h2o2_numeric.gzmat")));
  Session s;
  RunResult r = RunInProcess(s, {path, "/GZ", "/0"});
  EXPECT_EQ(r.status, 0) << r.console;
  EXPECT_NE(r.log.find(" Gaussian Z-matrix input requested"), std::string::npos) << r.log;
  EXPECT_EQ(s.nAtoms, 4);
  EXPECT_EQ(s.iCyc, 0);
}

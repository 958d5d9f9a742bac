// Gaussian Z-matrix input: parsing, the conversion to Cartesian coordinates
// (checked by recomputing distances, angles and dihedrals from the result)
// and the parser's errors.
#include <gtest/gtest.h>

#include <cmath>
#include <iomanip>
#include <sstream>

#include "numeric/vec3.h"
#include "readers/readers.h"
#include "test_support.h"

using namespace quintor;
using namespace quintor::geom;
using namespace quintor::test;

namespace {

constexpr double kA = constants::AngstromToBohr;
constexpr double kRadToDeg = 180.0 / constants::Pi;
constexpr double kTol = 1e-8;

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
Vec3 At(const Session& s, int atom) { return (1.0 / kA) * s.Set(s.iCyc).xyz.at(atom - 1); }
double Distance(const Session& s, int i, int j) { return Norm(At(s, i) - At(s, j)); }
double Angle(const Session& s, int i, int j, int k) {  // i-j-k at j
  const Vec3 a = At(s, i) - At(s, j), b = At(s, k) - At(s, j);
  return std::atan2(Norm(Cross(a, b)), Dot(a, b)) * kRadToDeg;
}
// Dihedral i-j-k-l in the IUPAC sense, compared modulo 360 degrees.
double DihedralOff(const Session& s, int i, int j, int k, int l, double want) {
  const Vec3 b1 = At(s, j) - At(s, i), b2 = At(s, k) - At(s, j), b3 = At(s, l) - At(s, k);
  const double d = std::atan2(Norm(b2) * Dot(b1, Cross(b2, b3)), Dot(Cross(b1, b2), Cross(b2, b3))) * kRadToDeg;
  return std::remainder(d - want, 360.0);
}

}  // namespace

TEST(ZMatrix, NumericCentresVariablesThenConstants) {
  Session s;
  Outcome o = ReadZMatrix(s, TestInput("h2o2_numeric.gzmat"));
  ASSERT_EQ(o.stop, -1) << o.log;
  EXPECT_EQ(o.log, " Gaussian Z-matrix input requested\n");
  EXPECT_EQ(s.iCyc, 0);
  ASSERT_EQ(s.nAtoms, 4);
  EXPECT_EQ(s.atomicNumber, (std::vector<int>{8, 8, 1, 1}));
  EXPECT_NEAR(Distance(s, 1, 2), 1.45, kTol);
  EXPECT_NEAR(Distance(s, 2, 4), 0.97, kTol);
  EXPECT_NEAR(Angle(s, 3, 1, 2), 100.0, kTol);
  EXPECT_NEAR(Angle(s, 4, 2, 1), 100.0, kTol);
  EXPECT_NEAR(DihedralOff(s, 4, 2, 1, 3, 179.99), 0.0, kTol);
  // The frame: atom 1 at the origin, atom 2 on +Z, atom 3 in the XZ plane at +X.
  EXPECT_NEAR(Norm(At(s, 1)), 0.0, 1e-12);
  EXPECT_NEAR(At(s, 2)[2], 1.45, kTol);
  EXPECT_NEAR(At(s, 3)[1], 0.0, 1e-12);
  EXPECT_GT(At(s, 3)[0], 0.0);
  // The one geometry is also the starting set.
  EXPECT_EQ(s.Set(-1).xyz, s.Set(0).xyz);
}

TEST(ZMatrix, NamedCentresConstantsFirstNegatedSymbolCartesianRowAndDummy) {
  Session s;
  Outcome o = ReadZMatrix(s, TestInput("formaldehyde_named.gzmat"));
  ASSERT_EQ(o.stop, -1) << o.log;
  EXPECT_EQ(o.log.find("WARNING"), std::string::npos) << o.log;
  ASSERT_EQ(s.nAtoms, 6);
  EXPECT_EQ(s.atomicNumber, (std::vector<int>{6, 97, 8, 1, 1, 7}));  // "X" is number 97
  EXPECT_NEAR(Distance(s, 1, 3), 1.20, kTol);
  EXPECT_NEAR(Distance(s, 1, 5), 1.10, kTol);
  EXPECT_NEAR(Angle(s, 3, 1, 2), 90.0, kTol);
  EXPECT_NEAR(Angle(s, 5, 1, 3), 121.0, kTol);
  EXPECT_NEAR(DihedralOff(s, 4, 1, 3, 2, 90.0), 0.0, kTol);
  EXPECT_NEAR(DihedralOff(s, 5, 1, 3, 2, -90.0), 0.0, kTol);  // "-dih"
  EXPECT_NEAR(Norm(At(s, 6) - Vec3{1.5, -1.2, 0.3}), 0.0, 1e-12);  // the Cartesian row as written
}

TEST(ZMatrix, DihedralsAllRoundAndNearPlusMinus180) {
  const std::vector<double> dihedrals = {180.0,  -180.0, 179.9999, -179.9999, 179.5, -179.5, 0.0,
                                         0.0001, 90.0,   -90.0,    120.5,     -60.25, 33.3, -150.0};
  const std::vector<double> angles = {110.0, 95.0, 150.0, 60.0, 178.0, 2.5, 120.0};
  std::ostringstream z, values;
  z << std::setprecision(15) << "C\nC 1 1.54\nC 2 1.54 1 109.47\n";
  values << std::setprecision(15);
  for (size_t i = 0; i < dihedrals.size(); ++i) {
    const int k = static_cast<int>(i) + 4;
    const double r = 1.0 + 0.05 * static_cast<double>(i % 7), a = angles[i % angles.size()];
    if (i % 2 == 0) {  // every other row by value, the others by variable
      z << "C " << k - 1 << " " << r << " " << k - 2 << " " << a << " " << k - 3 << " " << dihedrals[i] << "\n";
    } else {
      z << "C " << k - 1 << " R" << k << " " << k - 2 << " A" << k << " " << k - 3 << " D" << k << "\n";
      values << "R" << k << " " << r << "\nA" << k << " " << a << "\nD" << k << " " << dihedrals[i] << "\n";
    }
  }
  TempDir dir;
  Session s;
  Outcome o = ReadZMatrix(s, dir.Write("chain.gzmat", z.str() + "\n" + values.str()));
  ASSERT_EQ(o.stop, -1) << o.log;
  ASSERT_EQ(s.nAtoms, static_cast<int>(dihedrals.size()) + 3);
  for (size_t i = 0; i < dihedrals.size(); ++i) {
    const int k = static_cast<int>(i) + 4;
    SCOPED_TRACE("atom " + std::to_string(k));
    EXPECT_NEAR(Distance(s, k, k - 1), 1.0 + 0.05 * static_cast<double>(i % 7), kTol);
    EXPECT_NEAR(Angle(s, k, k - 1, k - 2), angles[i % angles.size()], kTol);
    EXPECT_NEAR(DihedralOff(s, k, k - 1, k - 2, k - 3, dihedrals[i]), 0.0, kTol);
  }
}

TEST(ZMatrix, LayoutsLabelsUnitsAndCloseAtoms) {
  TempDir dir;
  // Commas, values without a section title, the text after them ignored.
  Session w;
  ASSERT_EQ(ReadZMatrix(w, dir.Write("w.gzmat", "O\nH,1,R\nH 1 R 2 A\n\nR=0.96\nA=104.5\n\nO 0\n6-31G*\n")).stop, -1);
  ASSERT_EQ(w.nAtoms, 3);
  EXPECT_NEAR(Angle(w, 2, 1, 3), 104.5, kTol);
  // At a label, lines skipped, in bohr.
  Session l;
  l.opt.label = "MOLECULE";
  l.opt.skipLines = 1;
  l.opt.lengthUnit = LengthUnit::Bohr;
  ASSERT_EQ(ReadZMatrix(l, dir.Write("l.txt", "H 1 9.9\nHere comes the molecule\na line to skip\nH\nH 1 1.4\n")).stop, -1);
  ASSERT_EQ(l.nAtoms, 2);
  EXPECT_NEAR(l.Set(0).xyz.at(1)[2], 1.4, 1e-12);
  // A Cartesian row with nothing behind its 0 is at the origin.
  Session c;
  ASSERT_EQ(ReadZMatrix(c, dir.Write("c.gzmat", "C 0 1.0 2.0 3.0\nO 0\n")).stop, -1);
  ASSERT_EQ(c.nAtoms, 2);
  EXPECT_EQ(c.Set(0).xyz.at(1), (Vec3{0, 0, 0}));
  // Close atoms warn and the run goes on.
  Session close;
  Outcome o = ReadZMatrix(close, dir.Write("close.gzmat", "C1\nH1 C1 0.3\n"));
  EXPECT_EQ(o.stop, -1);
  EXPECT_NE(o.log.find(" WARNING ! Atoms    1(C1) and    2(H1) are separated by distance !\n"), std::string::npos) << o.log;
}

TEST(ZMatrixErrors, MessagesAndTheCurrentLine) {
  struct Case {
    std::string file, text, message;
  };
  const std::vector<Case> cases = {
      {"zmat_unknown_centre.gzmat", "",
       " ERROR! Can not recognize atom center C9         at atom    3\n Current line:\nH2 C9 1.09 H1 109.5\n"},
      {"zmat_undefined.gzmat", "", " ERROR! Some variables are not defined:\n AOH\n Current line:\nroh 0.96\n"},
      {"zmat_bad_value.gzmat", "",
       " ERROR! Can not recognize value of variable  ROH" + std::string(47, ' ') + "\n Current line:\nroh 0.9x6\n"},
      {"", "H\nH 1 r\n\nVariables:\nr\n", " ERROR! Can not get value for symbolR" + std::string(49, ' ') + "\n Current line:\nr\n"},
      {"", "O\nH 1 0.9x6\n", " ERROR! Can not recognize word  3 at atom    2\n Current line:\nH 1 0.9x6\n"},
      {"", "O\nH 2 0.96\n", " ERROR! Atom center     2 is not found before atom    2\n"},
      {"", "C1\nH1 O2 1.0\nO2 C1 1.2 H1 100.0\n",
       " ERROR! Atom center O2         is not found before atom    2\n Current line:\nH1 O2 1.0\n"},
      {"", "C\nH 1 1.0\nH 0 0.0 0.0 0.0\n", " ERROR! Atoms    1 and    3 coinside in Z-matrix!\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.message);
    TempDir dir;
    Session s;
    Outcome o = ReadZMatrix(s, c.file.empty() ? dir.Write("e.gzmat", c.text) : TestInput(c.file));
    EXPECT_EQ(o.stop, exit_status::ReadError);
    EXPECT_NE(o.log.find(c.message), std::string::npos) << o.log;
    if (!c.file.empty()) {
      EXPECT_EQ(o.log, " Gaussian Z-matrix input requested\n" + c.message);
      // A whole run ends with the same status.
      RunResult r = RunInProcess({dir.Write(c.file, ReadFile(TestInput(c.file))), "/GZ", "/0"});
      EXPECT_EQ(r.status, exit_status::ReadError) << r.console;
    }
  }
}

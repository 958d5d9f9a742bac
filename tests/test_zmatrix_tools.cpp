// Z-matrices of the viewer: the placing of an atom from its internal
// coordinates, the whole-structure Z-matrix of real logs read back by our
// own Z-matrix reader and by Open Babel, the dialogs of the atom and the
// fragment, and the structure written as XYZ, Gaussian, MOPAC and GAMESS
// input after a journal, read back by Open Babel.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <sstream>

#include "io/fortran_io.h"
#include "readers/elements.h"
#include "readers/readers.h"
#include "test_support.h"
#include "viewer/commands.h"
#include "viewer/editing.h"
#include "viewer/internal_coords.h"
#include "viewer/structure_files.h"
#include "viewer/zmatrix_tools.h"
#include "viewer_support.h"

using namespace quintor;
using namespace quintor::geom;
using namespace quintor::test;

namespace {

constexpr double kA = constants::AngstromToBohr;
constexpr double kDeg = 180.0 / constants::Pi;

// The tests' own IUPAC dihedral.
double Dihedral(const Vec3& a, const Vec3& b, const Vec3& c, const Vec3& d) {
  const Vec3 b1 = b - a, b2 = c - b, b3 = d - c;
  return std::atan2(Norm(b2) * Dot(b1, Cross(b2, b3)), Dot(Cross(b1, b2), Cross(b2, b3))) * kDeg;
}

// The frame of a Z-matrix: the first atom at the origin, the second on +z,
// the third in the xz plane on the side of +x.
std::vector<Vec3> InZMatrixFrame(const std::vector<Vec3>& xyz, int a, int b, int c) {
  const Vec3 o = xyz[a - 1];
  const Vec3 ez = Normalised(xyz[b - 1] - o);
  const Vec3 w = xyz[c - 1] - o;
  const Vec3 ex = Normalised(w - Dot(w, ez) * ez);
  const Vec3 ey = Cross(ez, ex);
  std::vector<Vec3> out;
  for (const Vec3& x : xyz) out.push_back({Dot(x - o, ex), Dot(x - o, ey), Dot(x - o, ez)});
  return out;
}

// Atoms (symbol, x, y, z in A) of an XYZ file.
std::vector<std::pair<std::string, Vec3>> ReadXyz(const std::string& path) {
  const auto lines = FileLines(path);
  std::vector<std::pair<std::string, Vec3>> atoms;
  for (size_t k = 2; k < lines.size(); ++k) {
    const auto w = Words(lines[k]);
    if (w.size() >= 4) atoms.push_back({w[0], {Num(w[1]), Num(w[2]), Num(w[3])}});
  }
  return atoms;
}

std::vector<std::pair<std::string, Vec3>> ViaOpenBabel(const std::string& format, const std::string& path,
                                                       const TempDir& dir) {
  const std::string out = dir.File("ob.xyz");
  const std::string command = "obabel -i" + format + " " + path + " -oxyz -O " + out + " > /dev/null 2>&1";
  EXPECT_EQ(std::system(command.c_str()), 0) << command;
  return ReadXyz(out);
}

}  // namespace

TEST(ZPosition, PlacesTheAskedLengthAngleAndIupacDihedral) {
  const Vec3 a{0.1, -0.3, 0.2}, b{1.7, 0.4, -0.5}, c{2.0, 2.1, 0.3};
  for (double alpha : {30.0, 109.47, 179.9})
    for (double theta : {-179.99, -120.0, -0.01, 0.0, 45.0, 90.0, 179.99, 180.0}) {
      const Vec3 x = ZPosition(a, b, c, 2.5, alpha, theta);
      EXPECT_NEAR(Norm(x - a), 2.5, 1e-12);
      EXPECT_NEAR(std::atan2(Norm(Cross(x - a, b - a)), Dot(x - a, b - a)) * kDeg, alpha, 1e-9);
      EXPECT_NEAR(std::remainder(Dihedral(x, a, b, c) - theta, 360.0), 0.0, 1e-9) << alpha << " " << theta;
    }
  // 180 exactly: on the line b->a, beyond a.
  const Vec3 x = ZPosition(a, b, c, 1.0, 180.0, 77.0);
  EXPECT_NEAR(Norm(Cross(x - a, b - a)), 0.0, 1e-12);
  EXPECT_LT(Dot(x - a, b - a), 0.0);
}

TEST(ZMatrixFile, RealLogsComeBackThroughOurReaderAndOpenBabel) {
  SKIP_WITHOUT_TESTDATA();
  for (const char* name : {"gaussian09/bsl_opt_freq.log", "gaussian09/irc_point.log",
                           "gaussian03/anthracene_opt_freq.log"}) {
    SCOPED_TRACE(name);
    TempDir dir;
    const std::string zmat = dir.File("made.gzmat");
    LogRun run(TestData(name), {"/0", "/ZMAT@" + zmat});
    ASSERT_EQ(run.r.status, 0) << run.r.console;
    const Session& s = run.s;
    const std::vector<ZRow> rows = StructureZRows(s, 1, 2, 3);
    ASSERT_EQ(static_cast<int>(rows.size()), s.nAtoms);

    // Our reader, past the five lines of route, title and charge.
    Session back;
    back.opt.formatCode = FormatCode::GaussianZMatrix;
    back.opt.skipLines = 5;
    back.log.Open(dir.File("back.mou"));
    LineReader in;
    ASSERT_TRUE(in.Open(zmat));
    ReadGaussianZMatrix(back, in);
    back.log.Close();
    ASSERT_EQ(back.nAtoms, s.nAtoms);
    // Row k of the file is atom rows[k] of the log.
    std::vector<Vec3> ordered;
    for (const ZRow& r : rows) ordered.push_back(s.xyz[r.atom - 1]);
    const auto want = InZMatrixFrame(ordered, 1, 2, 3);
    const auto got = InZMatrixFrame(back.Set(back.iCyc).xyz, 1, 2, 3);
    for (int i = 0; i < s.nAtoms; ++i)
      for (int k = 0; k < 3; ++k) EXPECT_NEAR(got[i][k] / kA, want[i][k] / kA, 1e-6) << "atom " << i + 1;

    // Open Babel builds the same internal coordinates, dihedral signs too.
    const auto ob = ViaOpenBabel("gzmat", zmat, dir);
    ASSERT_EQ(static_cast<int>(ob.size()), s.nAtoms);
    std::vector<int> row(s.nAtoms + 1);
    for (size_t k = 0; k < rows.size(); ++k) row[rows[k].atom] = static_cast<int>(k);
    auto at = [&](int atom) { return ob[row[atom]].second; };
    for (const ZRow& r : rows) {
      if (r.ref1) {
        EXPECT_NEAR(Norm(at(r.atom) - at(r.ref1)), r.length / kA, 2e-5);
      }
      if (r.ref3) {
        const double d = Dihedral(at(r.atom), at(r.ref1), at(r.ref2), at(r.ref3));
        EXPECT_NEAR(std::remainder(d - r.dihedral, 360.0), 0.0, 0.01) << "row of atom " << r.atom;
      }
    }
  }
}

TEST(ZMatrixFile, RowOrderTakesTheNearestToTheOldestOfTheLastThree) {
  Session s;
  // A zig-zag with equal spacing: the tie between atoms 4 and 5 (both 1.5
  // from atom 1) goes to the higher number.
  HandMolecule(s, {{6, "C", {0, 0, 0}}, {6, "C", {1, 0, 0}}, {6, "C", {1, 1, 0}},
                   {6, "C", {0, 1.5, 0}}, {6, "C", {0, -1.5, 0.0}}});
  const auto rows = StructureZRows(s, 1, 2, 3);
  ASSERT_EQ(rows.size(), 5u);
  EXPECT_EQ(rows[3].atom, 5);
  EXPECT_EQ(rows[3].ref1, 1);
  EXPECT_EQ(rows[3].ref2, 2);
  EXPECT_EQ(rows[3].ref3, 3);
  EXPECT_EQ(rows[4].ref1, 2);  // then the nearest to atom 2, on 2, 3, 5
  EXPECT_EQ(rows[2].ref1, 2);
  EXPECT_EQ(rows[2].ref2, 1);
}

TEST(ZMatrixDialogs, AtomAndFragmentTakeTheAskedValues) {
  Session s;
  ViewerState v;
  HandMolecule(s, {{6, "C", {0, 0, 0}}, {6, "C", {2.9, 0, 0}}, {6, "C", {3.9, 2.7, 0}}, {8, "O", {-1.0, 2.6, 0.8}},
                   {1, "H", {-1.9, 3.0, -0.6}}});
  StartViewer(s, v);
  LoadCoordinateSet(s, v);
  TempDir dir;
  s.log.Open(dir.File("z.mou"));
  ScriptedPrompts p;
  // Atom 4 by R, angle and dihedral on 1, 2, 3.
  for (int a : {4, 1, 2, 3}) ClickAtom(s, v, MouseButton::Left, a);
  p.ints = {1};
  p.text = {"1.43", "108.5", "-63.25"};
  DispatchKey(s, v, Plain('Y'), p);
  auto at = [&](int i) { return s.xyz[i - 1]; };
  EXPECT_NEAR(Norm(at(4) - at(1)) / kA, 1.43, 1e-12);
  EXPECT_NEAR(BondAngle(at(4), at(1), at(2)), 108.5, 1e-9);
  EXPECT_NEAR(Dihedral(at(4), at(1), at(2), at(3)), -63.25, 1e-9);
  // The O-H piece as fragment, moved by the 1x3 dialog with X = H.
  ClickAtom(s, v, MouseButton::Right, 1);
  for (int a : {5, 1, 2, 3}) ClickAtom(s, v, MouseButton::Left, a);
  DispatchKey(s, v, Extended(ext_key::F4), p);
  v.marked = {1, 4};
  DispatchKey(s, v, Plain('c'), p);  // cut C1-O4 so that O-H is a piece of its own
  ASSERT_EQ(v.bonds[3], std::vector<int>{5});
  v.marked = {5, 1, 2, 3};
  ClickAtom(s, v, MouseButton::Left, 5);
  const double oh = Norm(at(4) - at(5));
  p.text = {"2.2", "95", "150"};
  DispatchKey(s, v, Plain('z'), p);
  EXPECT_NEAR(Norm(at(5) - at(1)) / kA, 2.2, 1e-12);
  EXPECT_NEAR(BondAngle(at(5), at(1), at(2)), 95.0, 1e-9);
  EXPECT_NEAR(Dihedral(at(5), at(1), at(2), at(3)), 150.0, 1e-9);
  EXPECT_NEAR(Norm(at(4) - at(5)), oh, 1e-12);  // shifted, not turned
  // 2x2: the O-H piece turned about C1->O4 and about the normal at O4.
  v.marked = {4, 5, 1, 2};
  p.text = {"100", "-30", "1.5"};
  DispatchKey(s, v, Plain('z'), p);
  EXPECT_NEAR(BondAngle(at(5), at(4), at(1)), 100.0, 1e-9);
  EXPECT_NEAR(Dihedral(at(5), at(4), at(1), at(2)), -30.0, 1e-9);
  EXPECT_NEAR(Norm(at(4) - at(1)) / kA, 1.5, 1e-12);
  // Out of range: the dialog asks again.
  p.text = {"200", "100", "-30", "1.5"};
  p.asked.clear();
  DispatchKey(s, v, Plain('z'), p);
  ASSERT_GE(p.asked.size(), 2u);
  EXPECT_EQ(p.asked[1], "Alpha value should be in range 0-180 deg. Repeat input:");
  s.log.Close();
  const std::string log = ReadFile(dir.File("z.mou"));
  EXPECT_NE(log.find(" WARNING! Z-matrix coordinates were edited by user. New coordinates are:"), std::string::npos);
  EXPECT_NE(log.find("   O       C       1.43000   C     108.50000   C     -63.25000"), std::string::npos);
}

TEST(SaveStructure, FourFormatsAfterAJournalReadBack) {
  SKIP_WITHOUT_TESTDATA();
  TempDir dir;
  const std::string journal = dir.Write("edit.jnl", "click left 1\nclick left 2\nkey =\nanswer 1.2345\nkey q\n");
  struct Case {
    const char* file;
    const char* obFormat;  // empty: read by the test's own parser
  };
  std::vector<std::pair<std::string, Vec3>> first;  // the XYZ file, as Open Babel read it
  for (const Case& c : {Case{"out.xyz", "xyz"}, Case{"out.mop", "mop"}, Case{"out.inp", "inp"}, Case{"out.gjf", ""}}) {
    SCOPED_TRACE(c.file);
    const std::string path = dir.File(c.file);
    LogRun run(TestData("gaussian09/irc_point.log"), {"/0", "/PLAY@" + journal, "/SAVE@" + path});
    ASSERT_EQ(run.r.status, 0) << run.r.console;
    const Session& s = run.s;
    std::vector<std::pair<std::string, Vec3>> atoms;
    if (*c.obFormat) {
      atoms = ViaOpenBabel(c.obFormat, path, dir);
    } else {  // route, blank, title, blank, charge and multiplicity, then the atoms
      const auto lines = FileLines(path);
      ASSERT_GT(lines.size(), 5u);
      EXPECT_EQ(lines[0], "# SP");
      for (size_t k = 5; k < lines.size() && !Words(lines[k]).empty(); ++k) {
        const auto w = Words(lines[k]);
        atoms.push_back({w[0], {Num(w[1]), Num(w[2]), Num(w[3])}});
      }
    }
    ASSERT_EQ(static_cast<int>(atoms.size()), s.nAtoms);
    EXPECT_NEAR(Norm(atoms[0].second - atoms[1].second), 1.2345, 1e-5);  // the edit of the journal
    if (first.empty()) first = atoms;
    for (int i = 0; i < s.nAtoms; ++i) {
      EXPECT_EQ(atoms[i].first, Trim(ElementSymbol(s.atomicNumber[i])));
      for (int k = 0; k < 3; ++k) EXPECT_NEAR(atoms[i].second[k], first[i].second[k], 1e-5);
    }
  }
}

TEST(ZMatrixFile, ChiralCentreKeepsItsHandednessInOpenBabel) {
  // (S)-butan-2-ol in A from Open Babel's builder; C2 is the centre.
  const double xyz[15][3] = {
      {3.01716, 0.28835, -1.48191}, {2.56338, -0.07197, -0.07414}, {1.13863, -0.07938, -0.04275},
      {3.10677, 0.91702, 0.96212},  {2.69804, 0.54848, 2.38218},   {4.10696, 0.24715, -1.57233},
      {2.68083, 1.29380, -1.75869}, {2.57888, -0.40090, -2.21188}, {2.90202, -1.08595, 0.16542},
      {0.83112, 0.82071, -0.24548}, {2.72664, 1.92363, 0.74909},   {4.20067, 0.95810, 0.90282},
      {1.60960, 0.50932, 2.48870},  {3.07761, 1.29332, 3.08888},   {3.10719, -0.42671, 2.66497}};
  const int z[15] = {6, 6, 8, 6, 6, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
  Session s;
  std::vector<HandAtom> atoms;
  for (int i = 0; i < 15; ++i)
    atoms.push_back({z[i], z[i] == 6 ? "C" : z[i] == 8 ? "O" : "H", {kA * xyz[i][0], kA * xyz[i][1], kA * xyz[i][2]}});
  HandMolecule(s, atoms);
  ViewerState v;
  v.marked = {2, 3, 1};
  TempDir dir;
  ASSERT_TRUE(WriteStructureZMatrix(s, v, dir.File("b.gzmat")));
  const auto ob = ViaOpenBabel("gzmat", dir.File("b.gzmat"), dir);
  ASSERT_EQ(ob.size(), 15u);
  // The file's rows start with C2, O3, C1; find every atom back by its distances to those three.
  auto volume = [](const Vec3& c, const Vec3& a, const Vec3& b, const Vec3& d) { return Dot(a - c, Cross(b - c, d - c)); };
  const std::vector<ZRow> rows = StructureZRows(s, 2, 3, 1);
  std::vector<Vec3> back(15);
  for (size_t k = 0; k < rows.size(); ++k) back[rows[k].atom - 1] = ob[k].second;
  const double before = volume(s.xyz[1], s.xyz[2], s.xyz[0], s.xyz[3]);
  const double after = volume(back[1], back[2], back[0], back[3]);
  EXPECT_GT(before * after, 0.0);  // the same enantiomer, not its mirror image
  for (int i = 0; i < 15; ++i)
    for (int j = 0; j < i; ++j) EXPECT_NEAR(Norm(back[i] - back[j]), Norm(s.xyz[i] - s.xyz[j]) / kA, 2e-5);
}

// Editing the structure in the viewer, driven by keys, clicks, menu items
// and journals without a window: the geometry primitives, the two kinds of
// marks, the bond operation, typed internal coordinates, removal, the
// reorientations, the saved configuration and undo. Geometry is checked by
// recomputing lengths and dihedrals with the IUPAC formula of the tests.
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "test_support.h"
#include "viewer/commands.h"
#include "viewer/editing.h"
#include "viewer/internal_coords.h"
#include "viewer/journal.h"
#include "viewer/scene.h"
#include "viewer_support.h"

using namespace quintor;
using namespace quintor::geom;
using namespace quintor::test;

namespace {

constexpr double kA = constants::AngstromToBohr;

// (S)-butan-2-ol from Open Babel's 3D builder, in A: C1 C2 O3 C4 C5, then
// H6-H8 on C1, H9 on C2, H10 on O3, H11-H12 on C4, H13-H15 on C5.
void Butanol(Session& s, ViewerState& v) {
  const double xyz[15][3] = {
      {3.01716, 0.28835, -1.48191}, {2.56338, -0.07197, -0.07414}, {1.13863, -0.07938, -0.04275},
      {3.10677, 0.91702, 0.96212},  {2.69804, 0.54848, 2.38218},   {4.10696, 0.24715, -1.57233},
      {2.68083, 1.29380, -1.75869}, {2.57888, -0.40090, -2.21188}, {2.90202, -1.08595, 0.16542},
      {0.83112, 0.82071, -0.24548}, {2.72664, 1.92363, 0.74909},   {4.20067, 0.95810, 0.90282},
      {1.60960, 0.50932, 2.48870},  {3.07761, 1.29332, 3.08888},   {3.10719, -0.42671, 2.66497}};
  const int z[15] = {6, 6, 8, 6, 6, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
  std::vector<HandAtom> atoms;
  for (int i = 0; i < 15; ++i)
    atoms.push_back({z[i], z[i] == 6 ? "C" : z[i] == 8 ? "O" : "H", {kA * xyz[i][0], kA * xyz[i][1], kA * xyz[i][2]}});
  HandMolecule(s, atoms);
  StartViewer(s, v);
  LoadCoordinateSet(s, v);
}

// The tests' own IUPAC dihedral and distances.
double Dihedral(const Session& s, int i, int j, int k, int l) {
  const Vec3 b1 = s.xyz[j - 1] - s.xyz[i - 1], b2 = s.xyz[k - 1] - s.xyz[j - 1], b3 = s.xyz[l - 1] - s.xyz[k - 1];
  return std::atan2(Norm(b2) * Dot(b1, Cross(b2, b3)), Dot(Cross(b1, b2), Cross(b2, b3))) * 180.0 / constants::Pi;
}
double R(const std::vector<Vec3>& xyz, int i, int j) { return Norm(xyz[i - 1] - xyz[j - 1]) / kA; }
double R(const Session& s, int i, int j) { return R(s.xyz, i, j); }

void Keys(Session& s, ViewerState& v, Prompts& p, std::initializer_list<Key> keys) {
  for (Key k : keys) DispatchKey(s, v, k, p);
}
void Mark(Session& s, ViewerState& v, std::initializer_list<int> atoms) {
  for (int a : atoms) ClickAtom(s, v, MouseButton::Left, a);
}

std::vector<int> Fragment(const ViewerState& v) {
  std::vector<int> atoms;
  for (size_t i = 0; i < v.fragmentMark.size(); ++i)
    if (v.fragmentMark[i]) atoms.push_back(static_cast<int>(i) + 1);
  return atoms;
}

Ending Replay(Session& s, ViewerState& v, const std::string& journal) {
  std::istringstream in(journal);
  return ReplayJournal(s, v, in, "test.jnl");
}

}  // namespace

TEST(Primitives, EdgesAndTheIupacSign) {
  const Vec3 o{0, 0, 0}, x{1, 0, 0}, z{0, 0, 1};
  struct Case {
    const char* what;
    double got, want;
  };
  const Case cases[] = {
      {"IUPAC sign", TorsionAngle(x, o, z, {0, 1, 1}), 90.0},
      {"mirror image", TorsionAngle(x, o, z, {0, -1, 1}), -90.0},
      {"reversed order keeps the sign", TorsionAngle({0, 1, 1}, z, o, x), 90.0},
      {"cis", TorsionAngle(x, o, z, {1, 0, 1}), 0.0},
      {"trans", TorsionAngle(x, o, z, {-1, 0, 1}), 180.0},
      {"collinear a-b-c", TorsionAngle({0, 0, -1}, o, z, {0, 1, 1}), 0.0},
      {"right angle", BondAngle(x, o, z), 90.0},
      {"straight line, long vectors", BondAngle({0.1, 0.2, 0.3}, o, {-0.3, -0.6, -0.9}), 180.0},
      {"folded onto itself", BondAngle({0.1, 0.2, 0.3}, o, {0.3, 0.6, 0.9}), 0.0},
      {"a on b", BondAngle(o, o, x), 0.0},
      {"tiny angle keeps its size", BondAngle({1, 1e-7, 0}, o, x), 1e-7 * 180.0 / constants::Pi},
      {"length", Distance({3, 4, 12}), 13.0},
  };
  for (const Case& c : cases) EXPECT_NEAR(c.got, c.want, 1e-12) << c.what;
  EXPECT_NEAR(TorsionAngle({1, 1e-9, 0}, o, z, {-1, 0, 1}), 180.0, 1e-6);  // never NaN near +-180
  const auto [n, len] = CrossNorm(x, {0, 2, 0});
  EXPECT_EQ(n, (Vec3{0, 0, 2}));
  EXPECT_EQ(len, 2.0);
}

TEST(Marks, GeometryListAndFragmentAreKeptApart) {
  Session s;
  ViewerState v;
  Butanol(s, v);
  ScriptedPrompts p;
  Mark(s, v, {2, 2});
  EXPECT_EQ(v.marked, std::vector<int>{2});  // no toggle
  Mark(s, v, {3, 4, 5, 6});
  EXPECT_EQ(v.marked, std::vector<int>{6});  // the fifth click starts a new list
  ClickAtom(s, v, MouseButton::Right, 1);
  Mark(s, v, {2, 4});
  Keys(s, v, p, {Plain('c')});  // cuts C2-C4
  EXPECT_EQ(v.bonds[1], (std::vector<int>{1, 3, 9}));
  Keys(s, v, p, {Extended(ext_key::F4)});
  EXPECT_EQ(v.help[0], " *** Fragment edit mode ***           ");
  ClickAtom(s, v, MouseButton::Left, 5);
  EXPECT_EQ(Fragment(v), (std::vector<int>{4, 5, 11, 12, 13, 14, 15}));
  ClickAtom(s, v, MouseButton::Left, 10);
  EXPECT_EQ(Fragment(v).size(), 15u);
  ClickAtom(s, v, MouseButton::Left, 14);  // unmarks only its connected piece
  EXPECT_EQ(Fragment(v), (std::vector<int>{1, 2, 3, 6, 7, 8, 9, 10}));
  EXPECT_EQ(v.fragmentAtomCount, 22);  // unmarking floods count too
  ClickAtom(s, v, MouseButton::Right, 1);
  EXPECT_TRUE(Fragment(v).empty());
  EXPECT_EQ(v.marked, (std::vector<int>{2, 4}));  // the Geometry marks stay
  ProjectAll(s, v);
  EXPECT_GT(NearestAtom(s, v, 0, 0), 0);  // a click anywhere picks an atom
}

TEST(BondOperation, TurnsAboutTheBondAndSetsItsLength) {
  Session s, t;
  ViewerState v, w;
  Butanol(s, v);
  Butanol(t, w);
  const std::vector<Vec3> before = s.xyz;
  ScriptedPrompts p;
  // B marked first: the atom outside the fragment is A all the same.
  Mark(s, v, {4, 2});
  Keys(s, v, p, {Plain('c'), Extended(ext_key::F4)});
  ClickAtom(s, v, MouseButton::Left, 4);
  const double dihedral = Dihedral(s, 3, 2, 4, 5);
  Replay(t, w, "click left 4\nclick left 2\nkey c\nkey F4\nclick left 4\nkey b\nanswer 1.6\nanswer 30\n");
  p.text = {"1.6", "30"};
  Keys(s, v, p, {Plain('b')});
  EXPECT_NEAR(R(s, 2, 4), 1.6, 1e-9);
  EXPECT_NEAR(std::remainder(Dihedral(s, 3, 2, 4, 5) - dihedral - 30.0, 360.0), 0.0, 1e-9);
  for (auto [i, j] : {std::pair{4, 5}, {4, 11}, {4, 12}, {5, 13}, {5, 14}, {5, 15}})
    EXPECT_NEAR(R(s, i, j), R(before, i, j), 1e-9);
  for (int i : {1, 2, 3, 6, 7, 8, 9, 10}) EXPECT_EQ(s.xyz[i - 1], before[i - 1]);  // the fixed side
  EXPECT_EQ(t.xyz, s.xyz);  // the journal does what the keys did
  EXPECT_TRUE(v.structureEdited);
}

TEST(SetInternal, TypedValuesMoveTheSmallerSide) {
  Session s;
  ViewerState v;
  Butanol(s, v);
  const std::vector<Vec3> before = s.xyz;
  // The C4 side (7 atoms) is smaller than the C2 side (8): it moves.
  Replay(s, v, "click left 2\nclick left 4\nkey =\nanswer 1.61\n");
  EXPECT_NEAR(R(s, 2, 4), 1.61, 1e-12);
  for (int i : {1, 2, 3, 6, 7, 8, 9, 10}) EXPECT_EQ(s.xyz[i - 1], before[i - 1]);
  Replay(s, v, "click right 1\nclick left 3\nclick left 2\nclick left 4\nclick left 5\nkey =\nanswer -75\n");
  EXPECT_NEAR(Dihedral(s, 3, 2, 4, 5), -75.0, 1e-9);
  EXPECT_NEAR(R(s, 2, 4), 1.61, 1e-12);
  const double c1 = Dihedral(s, 1, 2, 4, 5);
  Replay(s, v, "click right 1\nclick left 1\nclick left 2\nclick left 3\nkey =\nanswer 104.5\n");
  EXPECT_NEAR(BondAngle(s.xyz[0], s.xyz[1], s.xyz[2]), 104.5, 1e-9);
  EXPECT_NEAR(Dihedral(s, 1, 2, 4, 5), c1, 1e-9);  // the O3 side (2 atoms) turned, not the C1 side (4)
  // Not a number: the dialog comes back with the old value; then 1.7 holds.
  ScriptedPrompts p;
  Replay(s, v, "click right 1\nclick left 2\nclick left 4\nkey =\nanswer 1,7x\nanswer 1.7\n");
  EXPECT_NEAR(R(s, 2, 4), 1.7, 1e-12);
  const auto kept = s.xyz;
  Replay(s, v, "key =\nanswer abc\n");  // the second dialog takes its default, the old value
  EXPECT_EQ(s.xyz, kept);
}

TEST(Messages, TooFewMarksChangeNothing) {
  Session s;
  ViewerState v;
  Butanol(s, v);
  const auto xyz = s.xyz;
  ScriptedPrompts p;
  Mark(s, v, {1});
  Keys(s, v, p, {Plain('c'), Plain('='), Extended(ext_key::F4), Plain('b'), Plain('o'), Plain('Y'), Plain('J'),
                 Plain('F'), Plain('z')});
  DispatchMenu(s, v, MenuCommand::Reorient, p);
  const std::vector<std::string> want = {
      "Mark TWO atoms to be connected.",
      "To set a bond length, an angle or a dihedral, mark 2, 3 or 4 atoms.",
      "To move/rotate the fragment relatively the bond A->B, mark TWO atoms in DIFFERENT fragments. The moving "
      "fragment should be SELECTED.",
      "To center fragment relatively OXYZ axes, mark atoms in marked fragment in order O-Z-X-Y.",
      "To generate the Z-matrix coordinates for the given atom, mark this atom X and 3 reference atoms A,B,C in "
      "order X-A-B-C.",
      "To generate Z-matrix for the fragment, mark FOUR atoms in order X-A-B-C (X in marked fragment, A,B,C - in "
      "non-marked).",
      "To generate Z-matrix for the structure, mark 3 atoms in order A-B-C (first 3 reference atom).",
      "To move/rotate fragment in terms of Z-matrix, mark FOUR atoms in order X-A-B-C or X-Y-A-B (X,Y in marked "
      "fragment, A,B,C - in non-marked).",
      "To re-orient molecule relatively OXYZ axes, mark 3 atoms in order O-X-Y."};
  EXPECT_EQ(p.asked, want);
  EXPECT_EQ(s.xyz, xyz);
  EXPECT_TRUE(v.undo.empty());
}

TEST(RemoveFragment, RenumbersBondsAndMarksAndClosesTheSets) {
  Session s;
  ViewerState v;
  Butanol(s, v);
  const std::vector<Vec3> before = s.xyz;
  Replay(s, v,
         "click left 2\nclick left 4\nkey c\nclick right 1\nclick left 1\nclick left 5\nclick left 3\n"
         "key F4\nclick left 4\nkey h\nkey F2\nkey 0\nkey N\n");
  ASSERT_EQ(s.nAtoms, 8);
  EXPECT_EQ(v.marked, (std::vector<int>{1, 3}));  // 5 went, 1 and 3 keep their numbers
  EXPECT_EQ(v.bonds[1], (std::vector<int>{1, 3, 7}));  // C2: C1, O3 and H9, now 7
  EXPECT_EQ(v.bonds[2], (std::vector<int>{2, 8}));     // O3: C2 and H10, now 8
  EXPECT_EQ(s.atomName[6], "H");
  EXPECT_EQ(s.xyz[7], before[9]);
  EXPECT_DOUBLE_EQ(s.molMass, 2 * 12.0 + 16.0 + 5 * 1.008);
  EXPECT_EQ(v.atomCountChanged, -1);
  EXPECT_EQ(v.currentSet, 0);  // the set keys are inert
  ScriptedPrompts p;
  Keys(s, v, p, {Plain(26)});  // undo gives the atoms back
  EXPECT_EQ(s.nAtoms, 15);
  EXPECT_EQ(s.xyz, before);
  EXPECT_EQ(v.messages.back(), " Undone: removal of the fragment");
}

TEST(Orientation, MoleculeAndFragmentFrames) {
  Session s;
  ViewerState v;
  Butanol(s, v);
  const std::vector<Vec3> before = s.xyz;
  ScriptedPrompts p;
  Mark(s, v, {3, 2, 4});
  DispatchMenu(s, v, MenuCommand::Reorient, p);
  EXPECT_EQ(s.xyz[2], (Vec3{0, 0, 0}));
  EXPECT_NEAR(s.xyz[1][1], 0.0, 1e-12);
  EXPECT_NEAR(s.xyz[1][2], 0.0, 1e-12);
  EXPECT_GT(s.xyz[1][0], 0.0);
  EXPECT_NEAR(s.xyz[3][2], 0.0, 1e-12);
  EXPECT_GT(s.xyz[3][1], 0.0);
  for (int i = 1; i <= 15; ++i) EXPECT_NEAR(R(s, 1, i), R(before, 1, i), 1e-12);
  EXPECT_FALSE(v.structureEdited);
  // O-Z-X-Y of the whole molecule as fragment: C1->C2 along z, C4->C5 in xz.
  Keys(s, v, p, {Extended(ext_key::F4)});
  ClickAtom(s, v, MouseButton::Left, 1);
  v.marked = {1, 2, 4, 5};
  const Vec3 o = s.xyz[0];
  Keys(s, v, p, {Plain('o')});
  EXPECT_EQ(s.xyz[0], o);
  EXPECT_NEAR(s.xyz[1][0] - o[0], 0.0, 1e-12);
  EXPECT_NEAR(s.xyz[1][1] - o[1], 0.0, 1e-12);
  EXPECT_NEAR(s.xyz[4][1] - s.xyz[3][1], 0.0, 1e-12);
  Keys(s, v, p, {Plain('e')});  // the first marked atom to the origin
  EXPECT_EQ(s.xyz[0], (Vec3{0, 0, 0}));
  // An atom alone: its centre of mass, itself, to the origin.
  v.marked = {3, 10};
  Keys(s, v, p, {Plain('c')});  // cuts O3-H10
  ClickAtom(s, v, MouseButton::Right, 1);
  ClickAtom(s, v, MouseButton::Left, 10);
  Keys(s, v, p, {Plain('0')});
  for (double c : s.xyz[9]) EXPECT_NEAR(c, 0.0, 1e-15);
  // Key 5 goes back to the last click.
  p.yesNo = {true};
  Keys(s, v, p, {Plain('5')});
  EXPECT_EQ(s.xyz[9], v.fragmentBackup[9]);
}

TEST(Undo, TwentyMixedEditsComeBackBitForBit) {
  Session s;
  ViewerState v;
  Butanol(s, v);
  const auto original = s.xyz;
  ScriptedPrompts p;
  Mark(s, v, {3, 2, 4, 5});
  p.text = {"-60"};
  Keys(s, v, p, {Plain('='), Extended(ext_key::F4)});
  ClickAtom(s, v, MouseButton::Left, 1);
  Keys(s, v, p, {Plain('6'), Plain('r'), Plain('+'), Plain('8'), Plain('.'), Plain('0'), Extended(ext_key::End),
                 Plain('u'), Plain('1'), Plain('o'), Plain('e'), Extended(ext_key::CtrlLeft), Plain('3'),
                 Plain('-'), Plain('4'), Plain('2'), Plain('d')});
  v.marked = {2, 4};
  p.text = {"1.7"};
  Keys(s, v, p, {Plain('=')});
  DispatchMenu(s, v, MenuCommand::Reorient, p);  // two marks: a message, no edit
  v.marked = {3, 2, 4};
  DispatchMenu(s, v, MenuCommand::Reorient, p);
  ASSERT_EQ(v.undo.size(), 20u);
  const auto edited = s.xyz;
  for (int k = 0; k < 20; ++k) Keys(s, v, p, {Plain(26)});
  EXPECT_EQ(s.xyz, original);
  EXPECT_TRUE(DispatchKey(s, v, Plain(26), p).beep);  // nothing left to undo
  for (int k = 0; k < 20; ++k) Keys(s, v, p, {Plain(25)});
  EXPECT_EQ(s.xyz, edited);
}

TEST(SaveConfiguration, WritesBothFramesInAngstrom) {
  Session s;
  ViewerState v;
  Butanol(s, v);
  TempDir dir;
  s.log.Open(dir.File("k.mou"));
  ScriptedPrompts p;
  Keys(s, v, p, {Plain('K'), Extended(ext_key::F4)});
  ClickAtom(s, v, MouseButton::Left, 10);
  Keys(s, v, p, {Plain('k')});
  s.log.Close();
  const std::string log = ReadFile(dir.File("k.mou"));
  EXPECT_EQ(p.asked[0], " Enter the label for the configuration to be saved:");
  EXPECT_EQ(p.asked[1], " Enter the label for SELECTED FRAGMENT to be saved:");
  EXPECT_NE(log.find("\n C       6     3.017160    0.288350   -1.481910   2   6   7   8   0   0"), std::string::npos);
  EXPECT_NE(log.find("\n H15     1     3.107190   -0.426710    2.664970   5   0"), std::string::npos);
  EXPECT_EQ(CountText(log, std::string(79, '*')), 4);
  EXPECT_NE(log.find("Coordinates in a laboratory  (fixed)  frame, (A):"), std::string::npos);
  // File -> Save as, by the extension; an unknown one is refused with a message.
  p.text = {dir.File("b.xyz"), dir.File("b.pdf")};
  DispatchMenu(s, v, MenuCommand::SaveAs, p);
  DispatchMenu(s, v, MenuCommand::SaveAs, p);
  const auto lines = FileLines(dir.File("b.xyz"));
  ASSERT_EQ(lines.size(), 17u);
  EXPECT_EQ(Words(lines[16]), (std::vector<std::string>{"H", "3.1071900000", "-0.4267100000", "2.6649700000"}));
  EXPECT_EQ(p.asked.back(), "Can not write " + dir.File("b.pdf") + " (extensions: xyz, gjf, com, mop, inp, gzmat)");
}

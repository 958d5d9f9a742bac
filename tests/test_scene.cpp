// The scene of the Molecular view without any window: projected positions
// and radii, depth order, bond sticks, marks, axes and the two text rows.
#include <gtest/gtest.h>

#include "viewer/commands.h"
#include "viewer/scene.h"
#include "viewer_support.h"

using namespace quintor;
using namespace quintor::test;

namespace {

std::vector<const Primitive*> Of(const Scene& scene, Shape shape) {
  std::vector<const Primitive*> found;
  for (const auto& p : scene.items)
    if (p.shape == shape) found.push_back(&p);
  return found;
}

}  // namespace

TEST(Scene, ProjectedPositionsAndRadiiForAKnownView) {
  // Zoom 2, shifted 0.5 bohr along x, perspective at 10 bohr: the atom at z
  // = 6 after the zoom spreads by 1.6 and its ball grows by the same factor,
  // not by the zoom.
  struct Case {
    int perspective;
    int atom;
    double x, y, radius;
    double px, py;  // pixels of an 800 x 400 surface: 20 px per bohr
  };
  const Case cases[] = {
      {1, 1, 3.0, 0.0, 0.18, 460.0, 200.0},
      {1, 2, 1.0, 4.0, 0.18, 420.0, 120.0},
      {1, 3, 1.6, 0.0, 0.09 * 1.6, 432.0, 200.0},
      {-1, 3, 1.0, 0.0, 0.09, 420.0, 200.0},
  };
  for (const Case& c : cases) {
    Session s;
    HandMolecule(s, {{6, "C", {1, 0, 0}}, {8, "O", {0, 2, 0}}, {1, "H", {0, 0, 3}}});
    ViewerState v;
    v.window = {800, 400};
    s.view.zoom = 2.0;
    s.view.shiftX = 0.5;
    s.view.perspectiveOn = c.perspective;
    const Scene scene = BuildScene(s, v);
    const auto discs = Of(scene, Shape::Disc);
    ASSERT_EQ(discs.size(), 3u);
    const Rgb colour = ElementColour(s.atomicNumber[c.atom - 1]);
    const Primitive* disc = nullptr;
    for (const auto* d : discs)
      if (d->colour == colour) disc = d;
    ASSERT_NE(disc, nullptr) << c.atom;
    EXPECT_NEAR(disc->x0, c.x, 1e-12) << c.atom;
    EXPECT_NEAR(disc->y0, c.y, 1e-12) << c.atom;
    EXPECT_NEAR(disc->radius, c.radius, 1e-12) << c.atom;
    const Pixel p = WorldToWindow(v.window, disc->x0, disc->y0);
    EXPECT_NEAR(p.x, c.px, 1e-9);
    EXPECT_NEAR(p.y, c.py, 1e-9);
    const auto back = WindowToWorld(v.window, p.x, p.y);
    EXPECT_NEAR(back[0], c.x, 1e-9);
    EXPECT_NEAR(back[1], c.y, 1e-9);
  }
}

// The elements with colours of their own stand apart from one another and
// from the dark blue ground.
TEST(Scene, OwnColoursAreDistinctOnTheBackground) {
  const int own[] = {1, 5, 6, 7, 8, 9, 13, 14, 15, 16, 17, 22};
  auto apart = [](Rgb a, Rgb b) { return std::abs(a.r - b.r) + std::abs(a.g - b.g) + std::abs(a.b - b.b); };
  for (int a : own) {
    EXPECT_GT(apart(ElementColour(a), BackgroundColour), 250) << a;
    for (int b : own) {
      if (a < b) {
        EXPECT_GT(apart(ElementColour(a), ElementColour(b)), 60) << a << " " << b;
      }
    }
  }
}

TEST(Scene, DepthOrderFarToNearAndNumberOrderWithoutBalls) {
  struct Case {
    int balls;
    std::vector<int> order;
  };
  const Case cases[] = {{1, {2, 4, 1, 3}}, {-1, {1, 2, 3, 4}}};
  for (const Case& c : cases) {
    Session s;
    HandMolecule(s, 
        {{6, "C1", {0, 0, 2}}, {6, "C2", {5, 0, -1}}, {6, "C3", {10, 0, 2}}, {6, "C4", {15, 0, 0}}});
    s.view.showBalls = c.balls;
    ViewerState v;
    ProjectAll(s, v);
    EXPECT_EQ(DrawOrder(s, v), c.order) << c.balls;
  }
}

TEST(Scene, BondSticksHalfInEachColourMarksLabelsAndAxes) {
  Session s;
    HandMolecule(s, {{6, "C", {0, 0, 0}}, {8, "O", {2.3, 0, 0}}, {1, "H", {10, 0, 0}}});
  ViewerState v;
  StartViewer(s, v);
  LoadCoordinateSet(s, v);
  ASSERT_EQ(v.bonds[0], std::vector<int>{2});
  ASSERT_TRUE(v.bonds[2].empty());  // the far H stands alone: a ball, no stick

  const Scene plain = BuildScene(s, v);
  const auto lines = Of(plain, Shape::Line);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0]->colour, ElementColour(6));
  EXPECT_EQ(lines[1]->colour, ElementColour(8));
  EXPECT_DOUBLE_EQ(lines[0]->x1, 1.15);  // the midpoint
  EXPECT_DOUBLE_EQ(lines[1]->x0, 1.15);
  EXPECT_DOUBLE_EQ(lines[1]->x1, 2.3);
  EXPECT_EQ(Of(plain, Shape::Disc).size(), 3u);
  EXPECT_TRUE(Of(plain, Shape::Text).empty());

  // Labels, a mark and the axes; sticks only without balls.
  s.view.showLabels = 1;
  s.view.showAxes = 1;
  s.view.showBalls = -1;
  s.view.zoom = 2.0;
  v.marked = {2};
  const Scene full = BuildScene(s, v);
  EXPECT_TRUE(Of(full, Shape::Disc).empty());
  const auto rings = Of(full, Shape::Ring);
  ASSERT_EQ(rings.size(), 1u);
  EXPECT_EQ(rings[0]->colour, MarkColour);
  EXPECT_DOUBLE_EQ(rings[0]->x0, 4.6);
  EXPECT_DOUBLE_EQ(rings[0]->radius, 0.30);
  const auto texts = Of(full, Shape::Text);
  ASSERT_EQ(texts.size(), 6u);
  EXPECT_EQ(texts[0]->text, "C    ");
  EXPECT_EQ(texts[3]->text, "x");
  EXPECT_EQ(texts[3]->colour, AxisColour);
  EXPECT_NEAR(texts[3]->x0, 2.0 * 1.889726133921252, 1e-12);  // one Angstrom along x, zoomed
  EXPECT_EQ(Of(full, Shape::Line).size(), 2u + 3u);
}

TEST(Scene, CoordinateSetLine) {
  struct Case {
    int step;
    CoordSet set;
    std::string line;
  };
  const Case cases[] = {
      {4, {-76.3406657, 0.000317, 0.000259, {}},
       " Step No.  4     Energy    -76.3406657     MaxG 0.0003170     RmsG 0.0002590"},
      {0, {0.0, NotGiven, NotGiven, {}},
       " Step No.  0     Energy      0.0000000     MaxG**********     RmsG**********"},
      {-1, {-1234567.0, 0.5, 0.25, {}},
       " Step No. -1     Energy***************     MaxG 0.5000000     RmsG 0.2500000"},
  };
  for (const Case& c : cases) EXPECT_EQ(CoordinateSetLine(c.step, c.set), c.line);
}

TEST(Scene, StatusLineByTheCountOfMarkedAtoms) {
  struct Case {
    std::vector<int> marked;
    std::string text;
  };
  const Case cases[] = {
      {{}, ""},
      {{2}, " Atom   2: O  XYZ(A):  1.217  0.000  0.000 /  1.217  0.000  0.000"},
      {{1, 2}, " Bond length between atoms  C     and  O     =   1.2171 A."},
      {{2, 1, 3}, " Bond angle between  O     ,  C    ,  H     =   90.00 deg."},
      {{3, 1, 2, 4}, " Torsion between  H    ,  C    ,  O    , H2    =   90.00 deg."},
  };
  Session s;
    HandMolecule(s, {{6, "C", {0, 0, 0}}, {8, "O", {2.3, 0, 0}}, {1, "H", {0, 2, 0}}, {1, "H2", {2.3, 0, 2}}});
  for (const Case& c : cases) {
    ViewerState v;
    v.symbols = {"C", "O", "H", "H"};
    v.marked = c.marked;
    std::string expected = c.text;
    expected.resize(std::max<size_t>(expected.size(), 66), ' ');
    EXPECT_EQ(StatusLine(s, v), expected);
  }
}

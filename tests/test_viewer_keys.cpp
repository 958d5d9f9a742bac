// The dispatcher of the interactive stage driven by scripted keys, menu
// items and clicks, without a window; the last view round trip through
// /V@; the run without a display and the /SNAP@ picture.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>

#include "app/run.h"
#include "test_support.h"
#include "viewer/commands.h"
#include "viewer/scene.h"
#include "viewer/view_model.h"
#include "viewer_support.h"

using namespace quintor;
using namespace quintor::test;
namespace fs = std::filesystem;

namespace {

void FourSets(Session& s) {
  HandMolecule(s, {{6, "C", {0, 0, 0}}, {8, "O", {2.3, 0, 0}}, {1, "H", {-1, 1.7, 0}}}, 4);
}

// The molecule of four sets in the viewer, which opens on the last set.
void OpenOnFourSets(Session& s, ViewerState& v) {
  FourSets(s);
  StartViewer(s, v);
  LoadCoordinateSet(s, v);
}

}  // namespace

TEST(ViewerKeys, ScriptedSequenceLeavesTheDocumentedState) {
  Session s;
  ViewerState v;
  OpenOnFourSets(s, v);
  ASSERT_EQ(v.currentSet, 3);  // the run opens on the last set
  ScriptedPrompts prompts;

  struct Step {
    Key key;
    int set;      // the set on show afterwards
    bool beep;
  };
  const Step steps[] = {
      {Extended(ext_key::Right), 3, false},  // about the screen's y
      {Extended(ext_key::Up), 3, false},     // about the screen's x
      {Extended(ext_key::PgUp), 3, true},    // next, held at the last
      {Extended(ext_key::Home), 2, false},   // previous
      {Plain('b'), 1, false},
      {Extended(ext_key::Ins), 0, false},    // first
      {Extended(ext_key::Home), -1, false},  // only "previous" reaches -1
      {Plain('7'), -1, true},
      {Extended(ext_key::Del), 3, false},    // last
      {Plain('0'), 0, false},
      {Plain('N'), 1, false},
      {Plain('+'), 1, false},
      {Plain('+'), 1, false},
      {Plain('-'), 1, false},
      {Plain('i'), 1, false},
      {Plain('x'), 1, false},
      {Plain('r'), 1, false},
      {Extended(ext_key::CtrlUp), 1, false},
      {Plain('T'), 1, false},
      {Plain('t'), 1, false},
  };
  for (const Step& st : steps) {
    const Outcome out = DispatchKey(s, v, st.key, prompts);
    EXPECT_TRUE(out.redraw);
    EXPECT_EQ(v.currentSet, st.set) << st.key.code << "/" << st.key.ext;
    EXPECT_EQ(out.beep, st.beep) << st.key.code << "/" << st.key.ext;
    EXPECT_EQ(out.ending, Ending::None);
  }
  // Set 1 is the input shifted by 0.1 bohr; its line names step 1.
  EXPECT_DOUBLE_EQ(s.xyz[1][0], 2.4);
  EXPECT_EQ(v.setLine.substr(0, 12), " Step No.  1");

  const double c = std::cos(5.0 * constants::DegToRad), sn = std::sin(5.0 * constants::DegToRad);
  // T(about x) times T(about y): the rows of the two elementary turns.
  const Mat3 expected{{{c, 0, sn}, {-sn * sn, c, sn * c}, {-c * sn, -sn, c * c}}};
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) EXPECT_NEAR(s.view.matrix[i][j], expected[i][j], 1e-15) << i << j;
  EXPECT_DOUBLE_EQ(s.view.zoom, 1.1 * 1.1 / 1.1);
  EXPECT_DOUBLE_EQ(s.view.shiftX, 0.1);
  EXPECT_DOUBLE_EQ(s.view.shiftY, 0.1);
  EXPECT_EQ(s.view.showLabels, 1);
  EXPECT_EQ(s.view.showAxes, 1);
  EXPECT_EQ(s.view.showBalls, 1);
  EXPECT_TRUE(prompts.asked.empty());

  EXPECT_EQ(DispatchKey(s, v, Extended(ext_key::F10), prompts).ending, Ending::Exit);
  EXPECT_EQ(DispatchKey(s, v, Plain('q'), prompts).ending, Ending::Exit);
}

// Keys 0 then 7 go to set -1 and show its geometry, the starting one; a set
// -1 the log never filled shows its atoms at the origin, not set 0's.
TEST(ViewerKeys, FirstThenPreviousShowsTheStartingGeometry) {
  for (bool filled : {true, false}) {
    Session s;
    ViewerState v;
    FourSets(s);
    if (filled)
      for (const Vec3& r : s.Set(0).xyz) s.Set(-1).xyz.push_back({r[0], r[1] + 1.0, r[2]});
    StartViewer(s, v);
    LoadCoordinateSet(s, v);
    ScriptedPrompts p;
    DispatchKey(s, v, Plain('0'), p);
    DispatchKey(s, v, Plain('7'), p);
    ASSERT_EQ(v.currentSet, -1);
    EXPECT_EQ(v.setLine.substr(0, 12), " Step No. -1");
    for (int i = 0; i < s.nAtoms; ++i) {
      const Vec3 want = filled ? s.Set(-1).xyz[i] : Vec3{};
      for (int k = 0; k < 3; ++k) EXPECT_DOUBLE_EQ(s.xyz[i][k], want[k]) << filled << " atom " << i;
    }
  }
}

// A seventeenth neighbour is not stored, and the Message window says so.
TEST(ViewerKeys, SeventeenthNeighbourIsReported) {
  Session s;
  std::vector<HandAtom> atoms{{6, "C", {0, 0, 0}}};
  for (int k = 0; k < 17; ++k) {
    const double a = 2 * constants::Pi * k / 17;
    atoms.push_back({1, "H", {1.9 * std::cos(a), 1.9 * std::sin(a), 0}});
  }
  HandMolecule(s, atoms);
  ViewerState v;
  StartViewer(s, v);
  LoadCoordinateSet(s, v);
  EXPECT_EQ(v.bonds[0].size(), 16u);
  EXPECT_EQ(v.bonds[0].back(), 17);
  ASSERT_FALSE(v.messages.empty());
  EXPECT_EQ(v.messages.front(), " Number of bonds exceeded! Atoms in .MOl:   1  18");
}

TEST(ViewerKeys, PromptsStepsAndReset) {
  Session s;
  ViewerState v;
  OpenOnFourSets(s, v);
  ScriptedPrompts p;
  p.reals = {10.0, 0.5, 20.0};
  p.yesNo = {false, true};
  DispatchKey(s, v, Plain('a'), p);
  DispatchKey(s, v, Plain('S'), p);
  DispatchKey(s, v, Plain('w'), p);
  DispatchKey(s, v, Plain('6'), p);
  DispatchKey(s, v, Plain('l'), p);
  DispatchKey(s, v, Plain('5'), p);  // No: the view stays
  EXPECT_DOUBLE_EQ(s.view.shiftX, -0.5);
  DispatchKey(s, v, Plain('5'), p);  // Yes
  const std::vector<std::string> asked = {
      " Rotation step is    5.00 deg. Enter new step in degrees",
      " Translation step is    0.10 bohr. Enter new step in bohr",
      " Current perspective distance is   10.00 bohr. Enter new value in bohr:",
      "Come back to initial orientation?",
      "Come back to initial orientation?",
  };
  EXPECT_EQ(p.asked, asked);
  EXPECT_NEAR(s.view.rotationStep, 10.0 * constants::DegToRad, 1e-15);
  EXPECT_DOUBLE_EQ(s.view.translationStep, 0.5);
  EXPECT_DOUBLE_EQ(s.view.perspectiveDistance, 20.0);
  EXPECT_EQ(s.view.matrix, geom::UnitMatrix());
  EXPECT_EQ(s.view.shiftX, 0.0);
  EXPECT_EQ(s.view.rotationStep, 10.0 * constants::DegToRad);  // steps stay after the reset
}

TEST(ViewerKeys, LaterWorkSaysNotAvailableAndEditedSetsAsk) {
  Session s;
  ViewerState v;
  OpenOnFourSets(s, v);
  ScriptedPrompts p;
  // A menu item not built yet says which one it is.
  DispatchMenu(s, v, MenuCommand::ViewParameters, p);
  EXPECT_EQ(v.messages, std::vector<std::string>{" Not available yet: E  Set view parameters"});
  // No modes: F3 and V only redraw, and the help does not offer them.
  DispatchKey(s, v, Plain('v'), p);
  EXPECT_EQ(v.messages.size(), 1u);
  EXPECT_EQ(v.help.size(), 28u);
  EXPECT_EQ(v.help[0], " *** Geometry view mode ***      ");
  EXPECT_EQ(GeometryHelp(true).size(), 30u);

  // An edited structure asks before a change of set; No keeps the set.
  v.structureEdited = true;
  p.yesNo = {false, true};
  DispatchKey(s, v, Plain('0'), p);
  EXPECT_EQ(v.currentSet, 3);
  DispatchMenu(s, v, MenuCommand::PreviousSet, p);
  EXPECT_EQ(v.currentSet, 2);
  EXPECT_EQ(p.asked.back(), "Do you want to switch to other coordinate set? (Changes will be lost)");
  EXPECT_EQ(p.asked.front(), "Do you want to switch to initial coordinate set? (Changes will be lost)");
  // Atoms added or removed: the set commands are inert, silently.
  v.atomCountChanged = 1;
  DispatchKey(s, v, Plain('0'), p);
  EXPECT_EQ(v.currentSet, 2);
  EXPECT_EQ(p.asked.size(), 2u);
  EXPECT_EQ(DispatchMenu(s, v, MenuCommand::CalcTDAndQuit, p).ending, Ending::CalcTDAndQuit);
}

TEST(ViewerKeys, ClicksMarkTheNearestAtomUpToFour) {
  Session s;
  ViewerState v;
  v.window = {800, 400};
  OpenOnFourSets(s, v);
  BuildScene(s, v);
  auto pixelOf = [&](int atom) { return WorldToWindow(v.window, s.xyz[atom - 1][0], s.xyz[atom - 1][1]); };
  struct Case {
    MouseButton button;
    int atom;  // clicked near
    std::vector<int> marked;
  };
  const Case cases[] = {
      {MouseButton::Left, 2, {2}},          {MouseButton::Left, 2, {2}},  // already marked
      {MouseButton::Left, 1, {2, 1}},       {MouseButton::Left, 3, {2, 1, 3}},
      {MouseButton::Right, 1, {}},          {MouseButton::Left, 3, {3}},
  };
  for (const Case& c : cases) {
    const Pixel p = pixelOf(c.atom);
    Click(s, v, c.button, p.x + 3, p.y - 2);
    EXPECT_EQ(v.marked, c.marked);
  }
  // A click far from everything still picks the nearest atom.
  EXPECT_EQ(NearestAtom(s, v, 799, 0), 2);
  v.marked = {1, 3, 1, 3};
  Click(s, v, MouseButton::Left, pixelOf(2).x, pixelOf(2).y);
  EXPECT_EQ(v.marked, std::vector<int>{2});  // a fifth mark starts a new list
}

TEST(ViewerKeys, LastViewOfF10RoundTripsThroughViewFile) {
  SKIP_WITHOUT_TESTDATA();
  TempDir dir;
  const std::string log = dir.File("water.log");
  fs::copy_file(TestData("gaussian16/water_opt_freq.log"), log);
  // The interactive stage answered by a script: turn, shift, zoom, F10.
  ViewState shown;
  Frontend script;
  script.hasDisplay = [] { return true; };
  script.interact = [&shown](Session& s) {
    ViewerState v;
    StartViewer(s, v);
    LoadCoordinateSet(s, v);
    ScriptedPrompts p;
    for (Key k : {Extended(ext_key::Right), Extended(ext_key::Right), Plain('8'), Extended(ext_key::PgDn),
                  Plain('R'), Plain('d'), Plain('+'), Plain('+'), Plain('+'), Extended(ext_key::F10)}) {
      if (DispatchKey(s, v, k, p).ending != Ending::None) break;
    }
    shown = s.view;
    return false;
  };
  script.snapshot = [](Session&, const std::string&) { return false; };
  Session first;
  std::ostringstream console;
  first.console = &console;
  ASSERT_EQ(RunQuintor(first, {log}, &script), 0) << console.str();
  const std::string mou = dir.File("water.mou");
  ASSERT_TRUE(fs::exists(mou));
  EXPECT_NE(ReadFile(mou).find(" ShiftX,Y, Zoom :   0.10000  -0.10000   1.33100"), std::string::npos);

  Session second;
  second.opt.viewFile = mou;
  const ViewState back = StartingView(second.opt);
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) EXPECT_NEAR(back.matrix[i][j], shown.matrix[i][j], 0.5e-5);
  EXPECT_NEAR(back.shiftX, shown.shiftX, 0.5e-5);
  EXPECT_NEAR(back.shiftY, shown.shiftY, 0.5e-5);
  EXPECT_NEAR(back.zoom, shown.zoom, 0.5e-5);
}

TEST(ViewerRun, WithoutDisplayStopsWithItsOwnStatus) {
  SKIP_WITHOUT_TESTDATA();
  TempDir dir;
  const std::string log = dir.File("water.log");
  fs::copy_file(TestData("gaussian16/water_opt_freq.log"), log);
  // The child inherits the environment: take every display away from it.
  struct Saved {
    std::string name, value;
    bool set;
  };
  std::vector<Saved> saved;
  for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
    const char* value = std::getenv(name);
    saved.push_back({name, value ? value : "", value != nullptr});
    ::unsetenv(name);
  }
  const ExeResult r = RunExe({log}, "", dir.path.string());
  for (const auto& s : saved)
    if (s.set) ::setenv(s.name.c_str(), s.value.c_str(), 1);
  EXPECT_FALSE(r.signaled);
  EXPECT_EQ(r.status, exit_status::NoDisplay);
  EXPECT_NE(r.output.find(" ERROR! No display: use /0 for a batch run"), std::string::npos) << r.output;
  const std::string mou = ReadFile(dir.File("water.mou"));
  EXPECT_NE(mou.find(" ERROR! No display: use /0 for a batch run"), std::string::npos);
  // The same run in batch mode goes through.
  EXPECT_EQ(RunExe({log, "/0"}, "", dir.path.string()).status, 0);
}

TEST(ViewerRun, SnapWritesThePictureAndEndsAsBatch) {
  SKIP_WITHOUT_TESTDATA();
  TempDir dir;
  const std::string log = dir.File("water.log");
  fs::copy_file(TestData("gaussian16/water_opt_freq.log"), log);
  const ExeResult r = RunExe({log, "/SNAP@" + dir.File("view.png"), "/V30:20:10"}, "", dir.path.string());
  EXPECT_EQ(r.status, 0) << r.output;
  ASSERT_TRUE(fs::exists(dir.File("view.png")));
  const std::string png = ReadFile(dir.File("view.png"));
  ASSERT_GT(png.size(), 24u);
  EXPECT_EQ(png.substr(1, 3), "PNG");
  // 896 x 947, big-endian in the IHDR chunk
  auto be32 = [&](size_t at) {
    return (static_cast<unsigned char>(png[at]) << 24) | (static_cast<unsigned char>(png[at + 1]) << 16) |
           (static_cast<unsigned char>(png[at + 2]) << 8) | static_cast<unsigned char>(png[at + 3]);
  };
  EXPECT_EQ(be32(16), 896u);
  EXPECT_EQ(be32(20), 947u);
  const std::string mou = ReadFile(dir.File("water.mou"));
  EXPECT_NE(mou.find("************ INTERACTIVE WORK IS FINISHED ************"), std::string::npos);
  EXPECT_NE(mou.find(" Rotation matrix:   0.92542  -0.16318   0.34202"), std::string::npos) << mou;
}

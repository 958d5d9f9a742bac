// The Vibration view without windows: the film's pace and stop rules on a
// clock of our own, the geometry after a film, the waiting keys, the save
// block against a hand-computed case, the spectrum, /MODE read back by Open
// Babel, and a journal replayed against the same keys typed.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <sstream>

#include "app/run.h"
#include "io/fortran_io.h"
#include "viewer/scene.h"
#include "viewer/journal.h"
#include "viewer/vibration.h"
#include "viewer/view_model.h"
#include "test_support.h"
#include "viewer_support.h"

using namespace quintor;
using namespace quintor::test;

namespace {

// H at the origin, O 1 bohr along x; mode 1 moves H along x and O along y
// (a 3N-vector of length 0.5), modes 2 and 3 are copies at other frequencies.
void HydroxylWithModes(Session& s, ViewerState& v) {
  HandMolecule(s, {{1, "H", {0, 0, 0}}, {8, "O", {1.0, 0, 0}}});
  for (double f : {1234.5, 2000.0, 3000.0}) {
    VibMode m;
    m.freq = f;
    m.intensity = f == 1234.5 ? 56.78 : 10.0;
    m.disp = {{0.3, 0, 0}, {0, 0.4, 0}};
    s.modes.push_back(m);
  }
  StartViewer(s, v);
  LoadCoordinateSet(s, v);
}

// The window's timer by hand: a frame every 50 ms, the keys typed at their
// times delivered before the frame then due.
struct FakeClock {
  Session& s;
  ViewerState& v;
  std::vector<std::pair<int, Key>> keys;  // ms after the start of the film
  bool clickAt300 = false;
  int Run() {  // the time the film ended
    int now = 0;
    size_t next = 0;
    while (v.film.running) {
      now += FilmPaceMs;
      for (; next < keys.size() && keys[next].first <= now; ++next) {
        ScriptedPrompts none;
        DispatchKey(s, v, keys[next].second, none);
      }
      if (clickAt300 && now == 300) ClickAtom(s, v, MouseButton::Left, 1);
      FilmTick(s, v);
    }
    return now;
  }
};

struct Played {
  Session s;
  ViewerState v;
  ScriptedPrompts p;
  Played() {
    HydroxylWithModes(s, v);
    p.ints = {1};
    DispatchKey(s, v, Extended(ext_key::F3), p);
  }
};

}  // namespace

TEST(VibrationFilm, StopsOnlyAtTheEndOfAPeriodOneKeyAPeriod) {
  struct Case {
    const char* what;
    std::vector<std::pair<int, Key>> keys;
    bool click;
    int endMs;
  };
  const int period = FilmFrames * FilmPaceMs;  // 1.5 s
  const Case cases[] = {
      {"no key: three periods", {}, false, 3 * period},
      {"a blank early in the period acts at its end", {{100, Plain(' ')}}, false, period},
      {"Esc likewise", {{1450, Plain(27)}}, false, period},
      {"a key after the period's last frame waits for the next", {{1550, Plain(' ')}}, false, 2 * period},
      {"two quick keys: the second at the end of the next period", {{100, Plain('x')}, {150, Plain(' ')}}, false,
       2 * period},
      {"an extended key is two bytes", {{100, Extended(ext_key::Up)}, {150, Plain(' ')}}, false, 3 * period},
      {"capital Q deafens the ring, the film runs on", {{100, Plain('Q')}, {150, Plain(' ')}}, false, 3 * period},
      {"a click still stops after Q", {{100, Plain('Q')}}, true, period},
  };
  for (const Case& c : cases) {
    Played f;
    FakeClock clock{f.s, f.v, c.keys, c.click};
    EXPECT_EQ(clock.Run(), c.endMs) << c.what;
    EXPECT_EQ(f.v.mode, ViewerMode::Vibration) << c.what;  // Q in a film does not quit
  }
}

TEST(VibrationFilm, FramesSwingAboutTheBaseAndEndOnIt) {
  Played f;
  const auto base = f.s.xyz;
  for (int k = 1; k <= 7; ++k) FilmTick(f.s, f.v);
  const double w = 2.0 * std::sin(7 * 2 * std::numbers::pi / 30);
  EXPECT_NEAR(f.s.xyz[0][0], base[0][0] + w * 0.3, 1e-12);
  EXPECT_NEAR(f.s.xyz[1][1], base[1][1] + w * 0.4, 1e-12);
  RunFilm(f.s, f.v);
  EXPECT_EQ(f.v.film.period, 3);
  for (size_t i = 0; i < base.size(); ++i)
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(f.s.xyz[i][k], base[i][k], 1e-12);
  EXPECT_EQ(f.v.film.base, f.s.xyz);  // the geometry after the film is kept
  EXPECT_EQ(f.v.setLine, " Vibration No.   1          Frequency:  1234.500          Intensity:    56.780");
}

TEST(VibrationView, ModePromptAndWaitingKeys) {
  Session s;
  ViewerState v;
  HydroxylWithModes(s, v);
  ScriptedPrompts p;
  p.ints = {0, 4, 2};  // out of range twice, then mode 2
  Outcome out = DispatchKey(s, v, Plain('V'), p);
  EXPECT_TRUE(out.filmStarted);
  ASSERT_EQ(p.asked.size(), 3u);
  EXPECT_EQ(p.asked[0], "  Enter number of normal vibration (1 -   3):");
  EXPECT_EQ(v.film.currentMode, 2);
  EXPECT_EQ(v.help[0], " *** Vibration view mode ***     ");
  RunFilm(s, v);

  // 4 and 6 turn the other way than in the Geometry view.
  const double step = s.view.rotationStep;
  DispatchKey(s, v, Plain('4'), p);
  EXPECT_NEAR(s.view.matrix[0][0], std::cos(step), 1e-12);
  EXPECT_NEAR(s.view.matrix[0][2], std::sin(step), 1e-12);
  // The shifts are a fixed 0.1, not the translation step.
  s.view.translationStep = 0.7;
  DispatchKey(s, v, Plain('r'), p);
  DispatchKey(s, v, Extended(ext_key::CtrlUp), p);
  EXPECT_DOUBLE_EQ(s.view.shiftX, 0.1);
  EXPECT_DOUBLE_EQ(s.view.shiftY, 0.1);

  struct Step {
    Key key;
    int mode;
    bool beep;
  };
  for (const Step& st : {Step{Plain('n'), 3, false}, Step{Extended(ext_key::PgUp), 3, true},
                         Step{Plain('0'), 1, false}, Step{Plain('b'), 1, true}, Step{Plain('.'), 3, false}}) {
    out = DispatchKey(s, v, st.key, p);
    EXPECT_TRUE(out.filmStarted);
    EXPECT_EQ(out.beep, st.beep);
    EXPECT_EQ(v.film.currentMode, st.mode);
    RunFilm(s, v);
  }
  // x, p, a have no effect here; g goes back to the Geometry view.
  const ViewState before = s.view;
  for (char c : {'x', 'p', 'a'}) DispatchKey(s, v, Plain(c), p);
  EXPECT_EQ(s.view.showAxes, before.showAxes);
  EXPECT_EQ(s.view.perspectiveOn, before.perspectiveOn);
  DispatchKey(s, v, Plain('g'), p);
  EXPECT_EQ(v.mode, ViewerMode::Geometry);
  EXPECT_EQ(v.setLine.substr(0, 9), " Step No.");
}

TEST(VibrationView, SaveBlockByteForByte) {
  TempDir dir;
  Played f;
  RunFilm(f.s, f.v);
  ASSERT_TRUE(f.s.log.Open(dir.File("save.mou")));
  DispatchKey(f.s, f.v, Plain('s'), f.p);  // the default amplitude 0.1
  f.s.log.Close();
  EXPECT_EQ(f.p.asked.back(), "Enter the amplitude for the geo distortion:");
  const std::string dash(60, '-');
  // By hand: the vector (0.3 0 0 | 0 0.4 0) over its length 0.5, times 0.1 A; O at 1 bohr = 0.529177 A.
  const std::string expected =
      "\n\nSaving coordinates distorted by the vibration   1  (Angstroems)\n"
      "Distortion amplitude :     0.100\n\n\nNon-distorted coordinates \n" +
      dash +
      "\n"
      " H             1           0.000000    0.000000    0.000000\n"
      " O             8           0.529177    0.000000    0.000000\n" +
      dash +
      "\n\n\n(Coordinates) + 0.10*(mode   1).  Freq = 1234.50. Intens =   56.78\n" + dash +
      "\n"
      " H             1           0.060000    0.000000    0.000000\n"
      " O             8           0.529177    0.080000    0.000000\n" +
      dash +
      "\n\n\n(Coordinates) - 0.10*(mode   1).  Freq = 1234.50. Intens =   56.78\n" + dash +
      "\n"
      " H             1          -0.060000    0.000000    0.000000\n"
      " O             8           0.529177   -0.080000    0.000000\n" +
      dash + "\n\n";
  EXPECT_EQ(ReadFile(dir.File("save.mou")), expected);
}

TEST(VibrationSpectrum, MaximaAtTheFrequenciesAsHighAsTheIntensities) {
  std::vector<VibMode> modes(3);
  modes[0].freq = 500.0, modes[0].intensity = 40.0;
  modes[1].freq = 1600.0, modes[1].intensity = 100.0;
  modes[2].freq = -300.0, modes[2].intensity = 1000.0;  // imaginary: left out
  const auto points = BroadenedSpectrum(modes, 10.0);
  ASSERT_FALSE(points.empty());
  EXPECT_EQ(points.front().wavenumber, 400.0);
  EXPECT_EQ(points.back().wavenumber, 1700.0);
  for (const VibMode& m : {modes[0], modes[1]}) {
    const auto top = std::max_element(points.begin(), points.end(), [&](const auto& a, const auto& b) {
      return (std::abs(a.wavenumber - m.freq) < 300 ? a.value : 0) < (std::abs(b.wavenumber - m.freq) < 300 ? b.value : 0);
    });
    EXPECT_EQ(top->wavenumber, m.freq);
    EXPECT_NEAR(top->value, m.intensity, 0.01);
    // Half the height half a width away: a Lorentzian of FWHM 10.
    const auto half = std::find_if(points.begin(), points.end(), [&](const auto& p) { return p.wavenumber == m.freq + 5; });
    EXPECT_NEAR(half->value, m.intensity / 2, 0.05);
  }
}

TEST(VibrationBatch, FilmReadByOpenBabel) {
  SKIP_WITHOUT_TESTDATA();
  if (std::system("obabel -V > /dev/null 2>&1") != 0) GTEST_SKIP() << "no obabel";
  TempDir files;
  const std::string film = files.File("film.xyz"), out = files.File("ob.txt");
  LogRun run(TestData("gaussian03/dvb_ir.log"), {"/MODE20@" + film});
  ASSERT_EQ(std::system(("obabel -ixyz " + film + " -oxyz > /dev/null 2> " + out).c_str()), 0);
  EXPECT_NE(ReadFile(out).find("30 molecules converted"), std::string::npos);
  // Frame k is base + 2 sin(2 pi k / 30) d, in A.
  const auto lines = FileLines(film);
  const VibMode& m = run.s.modes[19];
  const auto& base = run.s.Set(run.s.iCyc).xyz;
  const int n = run.s.nAtoms;
  for (int k : {1, 7, 15, 23, 30}) {
    const double w = 2.0 * std::sin(k * 2 * std::numbers::pi / 30);
    for (int i = 0; i < n; ++i) {
      const auto words = Words(lines[(k - 1) * (n + 2) + 2 + i]);
      for (int c = 0; c < 3; ++c)
        EXPECT_NEAR(Num(words[1 + c]), (base[i][c] + w * m.disp[i][c]) * constants::BohrToAngstrom, 1e-7);
    }
  }
}

TEST(Journal, ReplayEqualsTheSameKeysTyped) {
  SKIP_WITHOUT_TESTDATA();
  TempDir dir;
  const std::string log = dir.Write("anthracene.log", ReadFile(TestData("gaussian03/anthracene_opt_freq.log")));
  // Turns, steps back through the sets, plays mode 7 and stops it after one
  // period, turns by keys and the mouse, saves with A = 0.25 and quits.
  const std::string journal = dir.Write("turns.jnl",
                                        "# a session\nkey 6\nkey Up\nkey b\nkey b\nclick left 3\nkey v\nanswer 7\n"
                                        "film 1\nkey Left\nkey +\nturn 40 -12\nshift 8 0\nzoom -2\nkey s\nanswer 0.25\nkey q\n");
  Session played;
  const RunResult replay = RunInProcess(played, {log, "/PLAY@" + journal});
  ASSERT_EQ(replay.status, 0) << replay.console;

  Frontend typed;
  typed.hasDisplay = [] { return true; };
  typed.interact = [](Session& s) {
    ViewerState v;
    StartViewer(s, v);
    LoadCoordinateSet(s, v);
    FitStartingView(s, v.window.Aspect(), s.view);
    ScriptedPrompts p;
    for (Key k : {Plain('6'), Extended(ext_key::Up), Plain('b'), Plain('b')}) DispatchKey(s, v, k, p);
    ProjectAll(s, v);
    ClickAtom(s, v, MouseButton::Left, 3);
    p.ints = {7};
    DispatchKey(s, v, Plain('v'), p);
    DispatchKey(s, v, Plain(' '), p);  // typed during the film
    RunFilm(s, v);
    p.reals = {0.25};
    for (Key k : {Extended(ext_key::Left), Plain('+')}) DispatchKey(s, v, k, p);
    DragTurn(s, v, 40, -12);
    DragShift(s, v, 8, 0);
    WheelZoom(s, v, -2);
    for (Key k : {Plain('s'), Plain('q')}) DispatchKey(s, v, k, p);
    return false;
  };
  Session s;
  std::ostringstream console;
  s.console = &console;
  ASSERT_EQ(RunQuintor(s, {log}, &typed), 0) << console.str();
  const std::string direct = ReadFile(s.files.logName);
  EXPECT_NE(direct.find("(Coordinates) + 0.25*(mode   7)"), std::string::npos);
  EXPECT_EQ(CountText(direct, "Saving coordinates distorted"), 1);
  EXPECT_EQ(replay.log, direct);
}

TEST(Journal, MissingJournalStopsTheRunWithItsName) {
  SKIP_WITHOUT_TESTDATA();
  TempDir dir;
  const std::string log = dir.Write("water.log", ReadFile(TestData("gaussian03/water_mp2.log")));
  const RunResult r = RunInProcess({log, "/PLAY@" + dir.File("none.jnl")});
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.console.find("none.jnl"), std::string::npos) << r.console;
}

TEST(Journal, WordsReadBackAndBadLinesStop) {
  for (Key k : {Plain('a'), Plain(' '), Plain(27), Plain('+'), Extended(ext_key::F3), Extended(ext_key::CtrlDown)})
    EXPECT_EQ(KeyFromWord(KeyWord(k)), k);
  EXPECT_EQ(MenuCommandFromName(MenuCommandName(MenuCommand::Labels)), MenuCommand::Labels);
  Session s;
  ViewerState v;
  HydroxylWithModes(s, v);
  std::istringstream bad("key 6\n\nkey nonsense\n");
  try {
    ReplayJournal(s, v, bad, "bad.jnl");
    FAIL() << "no error";
  } catch (const FatalReadError& e) {
    EXPECT_EQ(e.Where().line, 3);
    EXPECT_EQ(e.Where().file, "bad.jnl");
  }
}

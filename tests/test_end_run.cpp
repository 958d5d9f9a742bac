// The end of the run: the last-view block, its coordinate tables with bonds,
// the precise table, and the /V@ round trip.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <sstream>
#include <vector>

#include "app/command_line.h"
#include "app/run.h"
#include "test_support.h"
#include "viewer/view_model.h"

using namespace quintor;
using namespace quintor::test;

namespace {

const std::string kWater =
    "3\nwater\n"
    "O   0.000000   0.000000   0.117300\n"
    "H   0.000000   0.757200  -0.469200\n"
    "H   0.000000  -0.757200  -0.469200\n";

// The water above moved to its mass centre (masses of the readers' table),
// in angstrom: the working coordinates after the report.
std::array<Vec3, 3> CentredWater() {
  const double mo = 15.99491, mh = 1.00782;
  const double zc = (mo * 0.1173 + 2 * mh * -0.4692) / (mo + 2 * mh);
  return {Vec3{0, 0, 0.1173 - zc}, Vec3{0, 0.7572, -0.4692 - zc}, Vec3{0, -0.7572, -0.4692 - zc}};
}

std::string Row(const char* name, int z, const Vec3& r, int width, int decimals, double factor = 1.0) {
  char buf[160];
  std::snprintf(buf, sizeof buf, " %-5s  %2d %*.*f%*.*f%*.*f", name, z, width, decimals, r[0] * factor, width,
                decimals, r[1] * factor, width, decimals, r[2] * factor);
  return buf;
}

std::string Block(const std::string& log, const std::string& from, int lines) {
  size_t at = log.find(from);
  if (at == std::string::npos) return {};
  size_t end = at;
  for (int k = 0; k < lines && end != std::string::npos; ++k) end = log.find('\n', end + 1);
  return log.substr(at, end - at);
}

}  // namespace

TEST(FinishLog, UntouchedViewUnderBatchMode) {
  TempDir dir;
  auto r = RunInProcess({dir.Write("w.xyz", kWater), "/X2", "/0"});
  ASSERT_EQ(r.status, 0) << r.console;
  EXPECT_NE(r.log.find("\n          ************ INTERACTIVE WORK IS FINISHED ************\n"
                       " Last view parameters:\n"
                       " Rotation matrix:   1.00000   0.00000   0.00000\n"
                       "                :   0.00000   1.00000   0.00000\n"
                       "                :   0.00000   0.00000   1.00000\n"
                       " View Angles    :       0.0       0.0       0.0\n"
                       " ShiftX,Y, Zoom :   0.00000   0.00000   1.00000\n"
                       " View command   :/v0.0:0.0:0.0:0.00:0.00:1.00\n"
                       "Last view coordinates and bonds in a molecular (moving) frame, (A):\n"),
            std::string::npos)
      << r.log;
  // Rows: name, nuclear number, coordinates, bond partners by the 1.15 rule.
  const auto w = CentredWater();
  EXPECT_NE(r.log.find(Row("O1", 8, w[0], 12, 6) + "   2   3\n" + Row("H2", 1, w[1], 12, 6) + "   1\n"),
            std::string::npos)
      << r.log;
  EXPECT_NE(r.log.find("Last view coordinates and bonds in a laboratory (fixed) frame, (A):"), std::string::npos);
  EXPECT_EQ(r.log.find("User-defined precision"), std::string::npos);
}

TEST(FinishLog, ViewFromTheCommandLineAndBackThroughAFile) {
  TempDir dir;
  std::string input = dir.Write("w.xyz", kWater);
  auto first = RunInProcess({input, "/X2", "/0", "/V30:-45:60:0.5:-0.25:1.2"});
  ASSERT_EQ(first.status, 0);
  const std::string block = Block(first.log, " Last view parameters:", 6);
  ASSERT_FALSE(block.empty());
  // The laboratory table is the view matrix applied to the molecular one.
  Mat3 r = BuildViewMatrix(30 * constants::DegToRad, -45 * constants::DegToRad, 60 * constants::DegToRad);
  Vec3 h = CentredWater()[1];
  Vec3 lab{};
  for (int i = 0; i < 3; ++i) lab[i] = r[i][0] * h[0] + r[i][1] * h[1] + r[i][2] * h[2];
  char row[80];
  std::snprintf(row, sizeof row, " H2      1 %12.6f%12.6f%12.6f", lab[0], lab[1], lab[2]);
  size_t labTable = first.log.find("laboratory (fixed) frame");
  EXPECT_NE(first.log.find(row, labTable), std::string::npos) << row << "\n" << first.log.substr(labTable);

  // /V@ gives the block back to the printed digits.
  std::string saved = dir.Write("view.mou", first.log);
  auto second = RunInProcess({input, "/X2", "/0", "/V@" + saved});
  EXPECT_EQ(Block(second.log, " Last view parameters:", 6), block);
  // A file without the block leaves the default view, silently.
  auto third = RunInProcess({input, "/X2", "/0", "/V@" + input});
  EXPECT_NE(third.log.find(" Rotation matrix:   1.00000   0.00000   0.00000"), std::string::npos);
}

TEST(FinishLog, PreciseTableInEachUnit) {
  TempDir dir;
  std::string input = dir.Write("w.xyz", kWater);
  const auto w = CentredWater();
  auto a = RunInProcess({input, "/X2", "/0", "/PREC14.8"});
  EXPECT_NE(a.log.find("User-defined precision/units output for coordinates in a molecular (moving) frame:\n"
                       "Coordinates will be printed by format F14. 8 Coordinate units: ANGSTROEMS\n" +
                       Row("O1", 8, w[0], 14, 8) + "\n" + Row("H2", 1, w[1], 14, 8) + "\n"),
            std::string::npos)
      << a.log;
  auto b = RunInProcess({input, "/X2", "/0", "/PRECAU"});
  EXPECT_NE(b.log.find("Coordinates will be printed by format F20.12 Coordinate units: BOHR\n" +
                       Row("O1", 8, w[0], 20, 12, constants::AngstromToBohr) + "\n"),
            std::string::npos)
      << b.log;
}

// The printed view command, given back as /V, builds the view it was printed
// for, to the precision of its angles (0.1 degree: 2e-3 in the matrix): views
// started by /V, turned by the keys' rotations, and near the poles of the
// middle angle.
TEST(FinishLog, ViewCommandGivesTheViewBack) {
  TempDir dir;
  const std::string input = dir.Write("w.xyz", kWater);
  struct Case {
    const char* start;          // /V of the first run, or "" for the identity
    std::vector<Vec3> turns;    // RotateView's (aboutZ, aboutY, aboutX), degrees
  };
  const Case cases[] = {
      {"/V30:-45:10:0.1:0.2:1.5", {}},
      {"/V-170:80:170", {}},
      {"/V20:90:35", {}},
      {"/V20:-90:35", {}},
      {"", {{0, 5, 0}, {0, 0, 5}, {0, 0, 5}, {15, 0, 0}, {0, -40, 0}}},
      {"/V10:20:30", {{0, 0, 90}, {0, 90, 0}, {33, 0, 0}}},
      {"", {{0, 89.96, 0}}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.start) + " and " + std::to_string(c.turns.size()) + " turns");
    ViewState seen;
    Frontend turn;
    turn.hasDisplay = [] { return true; };
    turn.interact = [&](Session& s) {
      for (const Vec3& t : c.turns)
        RotateView(s.view, t[0] * constants::DegToRad, t[1] * constants::DegToRad, t[2] * constants::DegToRad);
      seen = s.view;
      return false;
    };
    Session s;
    std::ostringstream console;
    s.console = &console;
    std::vector<std::string> args{input, "/X2"};
    if (*c.start) args.emplace_back(c.start);
    ASSERT_EQ(RunQuintor(s, args, &turn), 0) << console.str();
    const std::string log = ReadFile(s.files.logName);
    const size_t at = log.find(" View command   :");
    ASSERT_NE(at, std::string::npos);
    const std::string command = log.substr(at + 17, log.find('\n', at) - at - 17);

    Session back;
    back.opt.noGraphics = true;
    ParseCommandLine(back, {input, command});
    const Mat3 r = StartingView(back.opt).matrix;
    for (int i = 0; i < 3; ++i)
      for (int j = 0; j < 3; ++j) EXPECT_NEAR(r[i][j], seen.matrix[i][j], 2e-3) << command << " " << i << j;
  }
}

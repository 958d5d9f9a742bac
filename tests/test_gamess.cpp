// The GAMESS(US) and PC GAMESS log reader: every real log of the test data,
// read as a whole run, against values parsed here independently from the
// same log (by words, not by columns); then the options that change what is
// read (/NOE, /MULT, frequencies off), real logs with one thing changed (a
// second mode block, a cut block, a bad field), and logs written out here
// (the nine-column blocks of PC GAMESS v.4, a single point, early energies).
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "io/fortran_io.h"
#include "readers/elements.h"
#include "test_support.h"

using namespace quintor;
using namespace quintor::test;

namespace {

// ---- What the log says, parsed by words ------------------------------------

struct Printed {
  int sets = 0;                              // search points and located geometries
  std::map<int, double> energyByStep;        // "NSERCH= S  ENERGY= E"
  std::vector<double> gmax, grms;            // per set, as the set current at the line
  std::vector<std::vector<std::array<double, 3>>> xyz;  // per set, Angstrom
  std::vector<std::array<double, 3>> start;  // the starting point, bohr
  std::vector<int> startZ;
  std::vector<double> masses;
  int multiplicity = -1;
  GamessModes modes;
};

bool Has(const std::string& line, const char* what) { return line.find(what) != std::string::npos; }

// Rows "NAME Z X Y Z" from line `k` to the next blank line.
std::vector<std::array<double, 3>> AtomRows(const std::vector<std::string>& lines, size_t k, std::vector<int>* z = nullptr) {
  std::vector<std::array<double, 3>> rows;
  for (; k < lines.size() && Words(lines[k]).size() >= 5; ++k) {
    const auto w = Words(lines[k]);
    rows.push_back({std::stod(w[2]), std::stod(w[3]), std::stod(w[4])});
    if (z) z->push_back(static_cast<int>(std::lround(std::stod(w[1]))));
  }
  return rows;
}

Printed ParseLog(const std::string& path) {
  const auto lines = FileLines(path);
  Printed p;
  p.modes = ReadGamessModes(lines);
  for (size_t i = 0; i < lines.size(); ++i) {
    const std::string& l = lines[i];
    if (Has(l, "1NSERCH") || Has(l, "GEOMETRY SEARCH POINT NSERCH=") || Has(l, "LOCATED *****")) {
      ++p.sets;
      p.gmax.push_back(999999.0);
      p.grms.push_back(999999.0);
      while (!Has(lines.at(i), "COORDINATES OF ALL ATOMS")) ++i;
      p.xyz.push_back(AtomRows(lines, i + 3));
    } else if (Has(l, "NSERCH=") && Has(l, "ENERGY=")) {
      p.energyByStep[std::stoi(Words(l)[1])] = std::stod(Words(l)[3]);
    } else if (Has(l, "MAXIMUM GRADIENT =") && p.sets > 0) {
      p.gmax.back() = std::stod(Words(l)[3]);
      p.grms.back() = std::stod(Words(l)[7]);
    } else if (p.multiplicity == -1 && (Has(l, "STATE MULTIPLICITY") || Has(l, "MULT  ="))) {
      p.multiplicity = std::stoi(Words(l.substr(l.find('=') + 1)).at(0));
    } else if (Has(l, "COORDINATES (BOHR)")) {
      p.start = AtomRows(lines, i + 2, &p.startZ);
    } else if (Has(l, "ATOMIC WEIGHTS (AMU)")) {
      p.masses.clear();
      for (size_t k = i + 2; !Words(lines[k]).empty(); ++k) p.masses.push_back(std::stod(Words(lines[k]).back()));
    }
  }
  return p;
}

void ExpectNear(double got, double want, const std::string& what) {
  EXPECT_NEAR(got, want, 1e-10 * std::max(1.0, std::fabs(want))) << what;
}

constexpr double kKmPerMol = 42.2547;

// Every value the run stored against what the log prints.
void CheckAgainstLog(const std::string& rel, int wantSets) {
  SCOPED_TRACE(rel);
  const std::string path = TestData(rel);
  Printed p = ParseLog(path);
  LogRun run(path);
  const Session& s = run.s;
  ASSERT_EQ(run.r.status, 0) << run.r.console;
  ASSERT_EQ(p.sets, wantSets);

  // One set per search point and located geometry, each with its heading in the log.
  EXPECT_EQ(s.iCyc + 1, p.sets);
  EXPECT_EQ(CountText(run.r.log, "\n NSEARCH ="), p.sets);
  const size_t n = static_cast<size_t>(s.nAtoms);
  for (int i = 0; i < p.sets; ++i) {
    const std::string at = " set " + std::to_string(i);
    auto e = p.energyByStep.find(i);
    ExpectNear(s.Set(i).energy, e == p.energyByStep.end() ? 0.0 : e->second, "energy" + at);
    ExpectNear(s.Set(i).gmax, p.gmax[static_cast<size_t>(i)], "GMax" + at);
    ExpectNear(s.Set(i).grms, p.grms[static_cast<size_t>(i)], "GRms" + at);
    const auto& want = p.xyz[static_cast<size_t>(i)];
    ASSERT_EQ(s.Set(i).xyz.size(), want.size()) << at;
    for (size_t a = 0; a < want.size(); ++a)
      for (int k = 0; k < 3; ++k)
        ExpectNear(s.Set(i).xyz[a][k], want[a][k] * constants::AngstromToBohr, "coordinate" + at);
  }
  // The starting point, in bohr as printed, is set -1.
  ASSERT_FALSE(p.start.empty());
  ASSERT_EQ(s.Set(-1).xyz.size(), p.start.size());
  for (size_t a = 0; a < p.start.size(); ++a)
    for (int k = 0; k < 3; ++k) ExpectNear(s.Set(-1).xyz[a][k], p.start[a][k], "starting point");
  EXPECT_EQ(s.atomicNumber, p.startZ);

  EXPECT_EQ(s.opt.multiplicity, p.multiplicity);
  ASSERT_EQ(s.atomMass.size(), n);
  if (!p.masses.empty()) {
    ASSERT_EQ(p.masses.size(), n);
    for (size_t i = 0; i < n; ++i) ExpectNear(s.atomMass[i], p.masses[i], "mass of atom " + std::to_string(i + 1));
  }

  // All 3N modes, in the order of the log.
  const GamessModes& pm = p.modes;
  if (pm.freq.empty()) {
    EXPECT_TRUE(s.modes.empty());
    return;
  }
  ASSERT_EQ(pm.freq.size(), 3 * n);
  ASSERT_EQ(pm.redMass.size(), 3 * n);
  ASSERT_EQ(pm.ir.size(), 3 * n);
  ASSERT_EQ(s.modes.size(), 3 * n);
  for (size_t v = 0; v < 3 * n; ++v) {
    const VibMode& m = s.modes[v];
    const std::string at = " of mode " + std::to_string(v + 1);
    ExpectNear(m.freq, pm.freq[v], "frequency" + at);
    ExpectNear(m.redMass, pm.redMass[v], "reduced mass" + at);
    ExpectNear(m.intensity, pm.ir[v] * kKmPerMol, "intensity" + at);
    EXPECT_EQ(m.forceConst, 0.0);
    ASSERT_EQ(m.disp.size(), n);
    ASSERT_EQ(pm.disp[v].size(), n);
    for (size_t a = 0; a < n; ++a)
      for (int k = 0; k < 3; ++k) ExpectNear(m.disp[a][k], pm.disp[v][a][k], "displacement" + at);
  }
}

}  // namespace

// ---- Real logs ---------------------------------------------------------------------

TEST(GamessRealLogs, EveryLogAgainstWhatItPrints) {
  SKIP_WITHOUT_TESTDATA();
  // The optimisations: 24 and 10 search points, each with the located geometry.
  for (auto [log, sets] : std::vector<std::pair<const char*, int>>{
           {"pcgamess/dvb_ir_v6.log", 0}, {"pcgamess/cn_ir_v7.log", 0}, {"pcgamess/dvb_gopt_v6.log", 25},
           {"gamess-us/dvb_ir.log", 0}, {"gamess-us/nh3_ts_ir.log", 0}, {"gamess-us/dvb_gopt.log", 11},
           {"gamess-us2018/nh3_ts_ir.log", 0}})
    EXPECT_NO_FATAL_FAILURE(CheckAgainstLog(log, sets));
}

// ---- Options -------------------------------------------------------------------------

TEST(GamessOptions, NoEnergiesStoresNoEnergiesNorGradients) {
  SKIP_WITHOUT_TESTDATA();
  auto check = [](const Session& s) {
    EXPECT_EQ(s.iCyc, 24);
    for (int i = -1; i <= s.iCyc; ++i) {
      EXPECT_EQ(s.Set(i).energy, 0.0) << i;
      EXPECT_EQ(s.Set(i).gmax, 999999.0) << i;
      EXPECT_EQ(s.Set(i).grms, 999999.0) << i;
    }
  };
  LogRun noe(TestData("pcgamess/dvb_gopt_v6.log"), {"/NOE"});
  check(noe.s);
  // The job dialog's "Do not read energies" does the same.
  LogRun dialog(TestData("pcgamess/dvb_gopt_v6.log"), {}, [](Session& s) { s.opt.readEnergies = false; });
  check(dialog.s);
}

TEST(GamessOptions, FrequenciesOffReadsNoModes) {
  SKIP_WITHOUT_TESTDATA();
  LogRun run(TestData("gamess-us/nh3_ts_ir.log"), {}, [](Session& s) { s.opt.readFrequencies = false; });
  EXPECT_EQ(run.r.status, 0);
  EXPECT_TRUE(run.s.modes.empty());
  EXPECT_TRUE(run.s.massBlockRead);
  EXPECT_EQ(run.s.nAtoms, 4);
}

TEST(GamessOptions, MultiplicityOptionStands) {
  SKIP_WITHOUT_TESTDATA();
  const std::string text = ReadFile(TestData("pcgamess/cn_ir_v7.log"));
  // The first of the two lines wins.
  TextRun state(Replace(text, "STATE MULTIPLICITY                  =    1", "STATE MULTIPLICITY                  =    3"));
  EXPECT_EQ(state.s.opt.multiplicity, 3);
  TextRun mult(Replace(text, "    MULT  =       1", "    MULT  =       3"));
  EXPECT_EQ(mult.s.opt.multiplicity, 1);
  // Without the state line PC GAMESS's "MULT  =" line gives it.
  TextRun onlyMult(Replace(Replace(text, "STATE MULTIPLICITY                  =    1", ""), "    MULT  =       1",
                           "    MULT  =       2"));
  EXPECT_EQ(onlyMult.s.opt.multiplicity, 2);
  LogRun us(TestData("gamess-us/dvb_ir.log"), {"/MULT3"});
  EXPECT_EQ(us.s.opt.multiplicity, 3);
}

TEST(GamessOptions, ForcedFormats) {
  SKIP_WITHOUT_TESTDATA();
  // The banner is not needed when the format is given.
  LogRun v6(TestData("pcgamess/dvb_ir_v6.log"), {"/GAM5"});
  EXPECT_NE(v6.r.log.find(" GAMESS v.5, 6 input requested"), std::string::npos);
  EXPECT_EQ(v6.s.modes.size(), 60u);
  LogRun us(TestData("gamess-us/nh3_ts_ir.log"), {"/GAMUS"});
  EXPECT_EQ(us.s.modes.size(), 12u);
  EXPECT_DOUBLE_EQ(us.s.modes.at(0).redMass, 1.20753);
}

// ---- Changed real logs ------------------------------------------------------------

namespace {

std::string Nh3Text() { return ReadFile(TestData("gamess-us/nh3_ts_ir.log")); }

// The mode block of the NH3 log, from the mode numbers above the first
// frequency line to the Sayvetz rows of the last block.
std::string Nh3ModeBlock(const std::string& text) {
  size_t freq = text.find("       FREQUENCY:");
  size_t from = text.rfind('\n', text.rfind('\n', freq) - 1) + 1;
  size_t to = text.find(" REFERENCE ON SAYVETZ CONDITIONS", from);
  return text.substr(from, to - from);
}

}  // namespace

TEST(GamessChangedLogs, TheLastModeBlockWins) {
  SKIP_WITHOUT_TESTDATA();
  const std::string text = Nh3Text();
  const std::string block = Nh3ModeBlock(text);
  ASSERT_EQ(CountText(block, "FREQUENCY:"), 3);
  const std::string other = Replace(Replace(block, "825.18 I", "700.00  "), "1.20753", "2.00000");
  const size_t at = text.find(block);
  {
    std::string after = text;
    after.insert(at + block.size(), other);
    TextRun run(after);
    ASSERT_EQ(run.s.modes.size(), 12u);
    EXPECT_DOUBLE_EQ(run.s.modes.at(0).freq, 700.0);
    EXPECT_DOUBLE_EQ(run.s.modes.at(0).redMass, 2.0);
    EXPECT_DOUBLE_EQ(run.s.modes.at(11).freq, 3661.48);
  }
  {
    std::string before = text;
    before.insert(at, other);
    TextRun run(before);
    ASSERT_EQ(run.s.modes.size(), 12u);
    EXPECT_DOUBLE_EQ(run.s.modes.at(0).freq, -825.18);
    EXPECT_DOUBLE_EQ(run.s.modes.at(0).redMass, 1.20753);
  }
}

TEST(GamessChangedLogs, AnUnreadableFieldStopsTheRun) {
  SKIP_WITHOUT_TESTDATA();
  const std::string gopt = ReadFile(TestData("pcgamess/dvb_gopt_v6.log"));
  const std::string nh3 = Nh3Text();
  for (const auto& [text, from, to] : std::vector<std::tuple<std::string, std::string, std::string>>{
           {gopt, " C           6.0  -1.3939882447", " C           6.0  -1.39398x2447"},
           {gopt, "NSERCH=  3     ENERGY=    -379.7593758", "NSERCH=  3     ENERGY=    -379.75x3758"},
           {gopt, "MAXIMUM GRADIENT =  0.0798938", "MAXIMUM GRADIENT =  0.07989x8"},
           {nh3, "    2     HYDROGEN          1.00782", "    2     HYDROGEN          1.0x782"},
           {nh3, "825.18 I      3.88", "825.18 I      3.x8"},
           {nh3, "IR INTENSITY:     21.64357", "IR INTENSITY:     21.6x357"}}) {
    SCOPED_TRACE(to);
    TextRun run(Replace(text, from, to));
    EXPECT_EQ(run.r.status, exit_status::ReadError);
    EXPECT_NE(run.r.console.find(" FATAL READ ERROR"), std::string::npos) << run.r.console;
  }
}

// A search-point heading with no coordinates below it (the log cut there,
// or cut inside the block) has no geometry to go on with: a fatal read error.
TEST(GamessChangedLogs, AHeadingWithoutCoordinatesStopsTheRun) {
  SKIP_WITHOUT_TESTDATA();
  const std::string gopt = ReadFile(TestData("pcgamess/dvb_gopt_v6.log"));
  const size_t heading = gopt.find("1NSERCH=", gopt.find("1NSERCH=") + 1);
  ASSERT_NE(heading, std::string::npos);
  const size_t block = gopt.find("COORDINATES OF ALL ATOMS", heading);
  for (size_t cut : {gopt.find('\n', heading) + 1, gopt.find('\n', block) + 1}) {
    TextRun run(gopt.substr(0, cut));
    EXPECT_EQ(run.r.status, exit_status::ReadError);
    EXPECT_NE(run.r.console.find(" FATAL READ ERROR"), std::string::npos) << run.r.console;
    EXPECT_NE(run.r.console.find("COORDINATES OF ALL ATOMS"), std::string::npos) << run.r.console;
  }
}

// ---- Made logs --------------------------------------------------------------------------

namespace {

struct MadeAtom {
  const char* name;
  double charge, x, y, z;
};

std::string StartingPoint(const std::vector<MadeAtom>& atoms) {
  std::string t = " ATOM      ATOMIC                      COORDINATES (BOHR)\n"
                  "           CHARGE         X                   Y                   Z\n";
  char buf[160];
  for (const auto& a : atoms) {
    std::snprintf(buf, sizeof buf, " %-11s%4.1f  %15.10f     %15.10f     %15.10f\n", a.name, a.charge, a.x, a.y, a.z);
    t += buf;
  }
  return t + "\n";
}

std::string Weights(const std::vector<MadeAtom>& atoms, const std::vector<double>& masses) {
  std::string t = "          ATOMIC WEIGHTS (AMU)\n\n";
  char buf[96];
  for (size_t i = 0; i < atoms.size(); ++i) {
    std::snprintf(buf, sizeof buf, "%5zu     %-11s%14.5f\n", i + 1, atoms[i].name, masses[i]);
    t += buf;
  }
  return t + "\n";
}

// Values of the made modes: frequency 100*(m+1), intensity 0.01*(m+1),
// displacement (m+1)/1000 + atom/100000 + axis/10000000 (0-based numbers).
double MadeFreq(int m) { return 100.0 * (m + 1); }
double MadeIntensity(int m) { return 0.01 * (m + 1); }
double MadeDisp(int m, int a, int k) { return (m + 1) / 1000.0 + a / 100000.0 + k / 10000000.0; }

// A mode block of width w in the PC GAMESS layout; `gap` lines between the
// displacements of one column block and the frequency line of the next.
// With `raman` the rows of a Raman run follow the intensities, the activity
// being 0.5*(m+1).
double MadeRaman(int m) { return 0.5 * (m + 1); }

std::string ModeBlock(int nAtoms, int w, int gap, bool firstImaginary = false, bool raman = false) {
  const int total = 3 * nAtoms;
  std::string t = "     FREQUENCIES IN CM**-1, IR INTENSITIES IN DEBYE**2/AMU-ANGSTROM**2\n\n";
  char buf[64];
  for (int first = 0; first < total; first += w) {
    const int cols = std::min(w, total - first);
    std::string head = "                    ", freq = "       FREQUENCY:   ", ir = "    IR INTENSITY:   ";
    std::string act = "  RAMAN ACTIVITY:   ", depol = "  DEPOLARIZATION:   ";
    for (int k = 0; k < cols; ++k) {
      const int m = first + k;
      std::snprintf(buf, sizeof buf, "%12d", m + 1);
      head += buf;
      std::snprintf(buf, sizeof buf, "%10.2f%s", MadeFreq(m), firstImaginary && m == 0 ? " I" : "  ");
      freq += buf;
      std::snprintf(buf, sizeof buf, "%12.5f", MadeIntensity(m));
      ir += buf;
      std::snprintf(buf, sizeof buf, "%12.3f", MadeRaman(m));
      act += buf;
      depol += "       0.750";
    }
    t += head + "\n";
    t += freq + "\n" + ir + "\n";
    if (raman) t += act + "\n" + depol + "\n";
    t += "\n";
    for (int a = 0; a < nAtoms; ++a) {
      for (int k = 0; k < 3; ++k) {
        std::snprintf(buf, sizeof buf, "%3d   %-13s%c", a + 1, k == 0 ? "C" : "", "XYZ"[k]);
        std::string row = k == 0 ? buf : std::string(19, ' ') + "XYZ"[k];
        for (int c = 0; c < cols; ++c) {
          std::snprintf(buf, sizeof buf, "%12.8f", MadeDisp(first + c, a, k));
          row += buf;
        }
        t += row + "\n";
      }
    }
    for (int g = 0; g < gap - 1; ++g) t += g % 6 == 0 ? "\n" : " TRANS. SAYVETZ    X  0.00000000\n";
  }
  return t + "\n";
}

std::vector<MadeAtom> Chain(int n) {
  std::vector<MadeAtom> a;
  for (int i = 0; i < n; ++i) a.push_back({"C", 6.0, 1.5 * i, 0.1 * i, -0.2 * i});
  return a;
}

// A value as the log prints it with `fmt`.
double AsPrinted(const char* fmt, double v) {
  char buf[64];
  std::snprintf(buf, sizeof buf, fmt, v);
  return std::stod(buf);
}

void CheckMadeModes(const Session& s, int nAtoms, bool firstImaginary = false) {
  ASSERT_EQ(s.modes.size(), static_cast<size_t>(3 * nAtoms));
  for (int m = 0; m < 3 * nAtoms; ++m) {
    const VibMode& v = s.modes[static_cast<size_t>(m)];
    EXPECT_DOUBLE_EQ(v.freq, (firstImaginary && m == 0 ? -1 : 1) * MadeFreq(m)) << m;
    EXPECT_DOUBLE_EQ(v.intensity, AsPrinted("%12.5f", MadeIntensity(m)) * kKmPerMol) << m;
    EXPECT_EQ(v.redMass, 0.0);
    for (int a = 0; a < nAtoms; ++a)
      for (int k = 0; k < 3; ++k)
        EXPECT_DOUBLE_EQ(v.disp[static_cast<size_t>(a)][k], AsPrinted("%12.8f", MadeDisp(m, a, k))) << m;
  }
}

const char* kPc4 = "          *           PC GAMESS version 4.2                 *\n";
const char* kPc5 = "          *           PC GAMESS version 5.0                 *\n";

}  // namespace

TEST(GamessMadeLogs, NineColumnBlocksOfVersion4) {
  // Four atoms: 12 modes in a block of 9 and one of 3, 14 lines apart.
  const auto atoms = Chain(4);
  std::string text = std::string(kPc4) + StartingPoint(atoms) + Weights(atoms, {12, 12, 12, 12}) +
                     ModeBlock(4, 9, 14, true);
  TextRun run(text);
  ASSERT_EQ(run.r.status, 0) << run.r.console;
  EXPECT_NE(run.r.log.find(" PC GAMESS v.4 detected"), std::string::npos);
  CheckMadeModes(run.s, 4, true);
  // Forced by option, without a banner.
  TextRun forced(text.substr(text.find('\n') + 1), {"/GAM4"});
  CheckMadeModes(forced.s, 4, true);
}

TEST(GamessMadeLogs, RamanActivitiesUnderTheRamanOption) {
  const auto atoms = Chain(3);
  const std::string text = std::string(kPc5) + StartingPoint(atoms) + ModeBlock(3, 5, 12, false, true);
  TextRun raman(text, {"/RAMAN"});
  ASSERT_EQ(raman.r.status, 0) << raman.r.console;
  ASSERT_EQ(raman.s.modes.size(), 9u);
  for (int m = 0; m < 9; ++m) {
    EXPECT_DOUBLE_EQ(raman.s.modes[static_cast<size_t>(m)].intensity, MadeRaman(m)) << m;
    EXPECT_DOUBLE_EQ(raman.s.modes[static_cast<size_t>(m)].disp.at(2)[1], AsPrinted("%12.8f", MadeDisp(m, 2, 1)));
  }
  // Without the option the same block gives the IR intensities.
  TextRun ir(text);
  CheckMadeModes(ir.s, 3);
}


// The Gaussian log reader: every real log of the test data, read as a whole
// run, against values parsed here independently from the same log; then the
// options that change what is read (/I, /Z, /NOE, /RAMAN), and logs made
// from the real ones with one thing changed (a second mode block, a cut
// block, asterisks in masses and forces, a bad field) or written out here
// (dummy atoms, a linear triatomic, the G3/G4/CBS summaries).
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
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
  int sets = 0;
  std::vector<double> energy, gmax, grms;  // per orientation block
  std::vector<double> freq, redMass, forceConst, ir, raman;  // the last ordinary mode block
  std::vector<std::vector<std::array<double, 3>>> disp;    // [mode][atom]
  std::vector<double> masses;               // every mass line, in order
  int multiplicity = -1;
};

Printed ParseLog(const std::string& path, const std::string& heading, bool noEnergies = false) {
  const auto lines = FileLines(path);
  Printed p;
  // A job of finite differences (numerical Raman activities) runs SCFs at
  // displaced points after the first one of the step: only that one counts.
  bool finite = false, taken = false;
  size_t cols = 0;  // modes in the current column block
  for (size_t i = 0; i < lines.size(); ++i) {
    const std::string& l = lines[i];
    const auto has = [&l](const char* what) { return l.find(what) != std::string::npos; };
    const bool set = p.sets > 0, energies = set && !noEnergies;
    finite = finite || has("field step=");
    if (has(heading.c_str())) {
      taken = false;
      ++p.sets;
      p.energy.push_back(0.0);
      p.gmax.push_back(999999.0);
      p.grms.push_back(999999.0);
    }
    if (p.multiplicity == -1 && has("Multiplicity =")) p.multiplicity = static_cast<int>(NumbersAfter(l, "Multiplicity =")[0]);
    if (set && has("SCF Done:") && has("A.U.") && !(finite && taken))
      p.energy.back() = Num(Words(l.substr(l.find('=') + 1))[0]), taken = true;
    if (energies && has("EUMP2 =")) p.energy.back() = NumbersAfter(l, "EUMP2 =")[0];
    if (energies && has("Maximum Force")) p.gmax.back() = Num(Words(l)[2]);
    if (energies && has("RMS     Force")) p.grms.back() = Num(Words(l)[2]);
    if (has(" has atomic number")) p.masses.push_back(Num(Words(l).back()));
    if (has("armonic frequencies")) p.freq.clear(), p.redMass.clear(), p.forceConst.clear(), p.ir.clear(), p.raman.clear(), p.disp.clear();
    if (has("Frequencies --") && !has("---")) cols = NumbersAfter(l, "--").size();
    for (auto [key, to] : {std::pair{"Frequencies --", &p.freq}, std::pair{"Red. masses --", &p.redMass},
                           std::pair{"Frc consts  --", &p.forceConst}, std::pair{"IR Inten    --", &p.ir},
                           std::pair{"Raman Activ --", &p.raman}}) {
      const auto v = has(key) && !has("---") ? NumbersAfter(l, "--") : std::vector<double>{};
      to->insert(to->end(), v.begin(), v.end());
    }
    // The displacement rows follow "Atom AN", one per atom: number, Z, then x y z per mode.
    if (cols > 0 && has("Atom") && has(" AN ")) {
      const size_t first = p.freq.size() - cols;
      p.disp.resize(p.freq.size());
      for (size_t k = i + 1; k < lines.size() && Words(lines[k]).size() == 2 + 3 * cols; ++k) {
        const auto w = Words(lines[k]);
        for (size_t c = 0; c < cols; ++c) p.disp[first + c].push_back({Num(w[2 + 3 * c]), Num(w[3 + 3 * c]), Num(w[4 + 3 * c])});
      }
    }
  }
  return p;
}

void ExpectNear(double got, double want, const std::string& what) {
  EXPECT_NEAR(got, want, 1e-10 * std::max(1.0, std::fabs(want))) << what;
}

// Every value the run stored against what the log prints.
void CheckAgainstLog(const std::string& rel, const std::vector<std::string>& options, const std::string& heading,
                     int modeBase, bool raman = false, bool noEnergies = false) {
  SCOPED_TRACE(rel);
  const std::string path = TestData(rel);
  Printed p = ParseLog(path, heading, noEnergies);
  LogRun run(path, options);
  const Session& s = run.s;
  ASSERT_EQ(run.r.status, 0) << run.r.console;
  ASSERT_GT(p.sets, 0);

  // One coordinate set per orientation block, and its Step line in the log.
  EXPECT_EQ(s.iCyc + 1, p.sets);
  EXPECT_EQ(CountText(run.r.log, "\n Step ="), p.sets);
  for (int i = 0; i < p.sets; ++i) {
    const std::string at = " set " + std::to_string(i);
    ExpectNear(s.Set(i).energy, p.energy[static_cast<size_t>(i)], "energy" + at);
    ExpectNear(s.Set(i).gmax, p.gmax[static_cast<size_t>(i)], "GMax" + at);
    ExpectNear(s.Set(i).grms, p.grms[static_cast<size_t>(i)], "GRms" + at);
    EXPECT_EQ(s.Set(i).xyz.size(), static_cast<size_t>(s.nAtoms)) << at;
  }
  // The starting geometry is the first one.
  EXPECT_EQ(s.Set(-1).xyz, s.Set(0).xyz);

  EXPECT_EQ(s.opt.multiplicity, p.multiplicity);

  // Masses: the first block of the log, or the table when it prints none.
  const size_t n = static_cast<size_t>(s.nAtoms);
  ASSERT_EQ(s.atomMass.size(), n);
  for (size_t i = 0; i < n; ++i) {
    double want = p.masses.size() >= n ? p.masses[i] : DefaultMass(s.atomicNumber[i]);
    ExpectNear(s.atomMass[i], want, "mass of atom " + std::to_string(i + 1));
  }

  // Modes: the translations and rotations come first, empty, then the
  // vibrations as printed.
  if (p.freq.empty()) {
    EXPECT_TRUE(s.modes.empty());
    return;
  }
  ASSERT_EQ(s.modes.size(), 3 * n);
  // A frequency at a point of a reaction path prints one vibration less; the
  // column left over in the last block stays zero.
  ASSERT_LE(p.freq.size(), 3 * n - static_cast<size_t>(modeBase));
  ASSERT_GE(p.freq.size() + 1, 3 * n - static_cast<size_t>(modeBase));
  for (size_t v = p.freq.size() + static_cast<size_t>(modeBase); v < 3 * n; ++v) EXPECT_EQ(s.modes[v].freq, 0.0);
  for (int m = 0; m < modeBase; ++m) {
    EXPECT_EQ(s.modes[static_cast<size_t>(m)].freq, 0.0);
    EXPECT_EQ(s.modes[static_cast<size_t>(m)].disp.size(), n);
  }
  const auto& intensity = raman ? p.raman : p.ir;
  ASSERT_EQ(p.redMass.size(), p.freq.size());
  ASSERT_EQ(p.forceConst.size(), p.freq.size());
  ASSERT_EQ(intensity.size(), p.freq.size());
  for (size_t v = 0; v < p.freq.size(); ++v) {
    const VibMode& m = s.modes[static_cast<size_t>(modeBase) + v];
    const std::string at = " of vibration " + std::to_string(v + 1);
    ExpectNear(m.freq, p.freq[v], "frequency" + at);
    ExpectNear(m.redMass, p.redMass[v], "reduced mass" + at);
    ExpectNear(m.forceConst, p.forceConst[v], "force constant" + at);
    ExpectNear(m.intensity, intensity[v], "intensity" + at);
    ASSERT_EQ(m.disp.size(), n);
    ASSERT_LT(v, p.disp.size());
    ASSERT_EQ(p.disp[v].size(), n);
    for (size_t a = 0; a < n; ++a)
      for (int k = 0; k < 3; ++k) ExpectNear(m.disp[a][k], p.disp[v][a][k], "displacement" + at);
  }
}

// ---- Made logs -------------------------------------------------------------------

const char* kG09Banner = " This is part of the Gaussian(R) 09 program.  It is based on\n";

struct Atom {
  int z;
  double x, y, z_;
};

// An orientation block in the layout of Gaussian 09.
std::string G09Orientation(const std::string& heading, const std::vector<Atom>& atoms) {
  std::string t = "                         " + heading + "\n";
  t += " ---------------------------------------------------------------------\n";
  t += " Center     Atomic      Atomic             Coordinates (Angstroms)\n";
  t += " Number     Number       Type             X           Y           Z\n";
  t += " ---------------------------------------------------------------------\n";
  char buf[128];
  int i = 0;
  for (const auto& a : atoms) {
    std::snprintf(buf, sizeof buf, "%7d%11d%12d%16.6f%12.6f%12.6f\n", ++i, a.z, 0, a.x, a.y, a.z_);
    t += buf;
  }
  t += " ---------------------------------------------------------------------\n";
  return t;
}

std::string Scf(double e) {
  char buf[128];
  std::snprintf(buf, sizeof buf, " SCF Done:  E(RB3LYP) =  %.9f     A.U. after   10 cycles\n", e);
  return buf;
}

}  // namespace

// ---- Real logs ---------------------------------------------------------------------

TEST(GaussianRealLogs, EveryLogAgainstWhatItPrints) {
  SKIP_WITHOUT_TESTDATA();
  // H2 and Cu2 carry a high-precision block before the ordinary one; the rows
  // of later revisions stand one column further right.
  EXPECT_NO_FATAL_FAILURE(CheckAgainstLog("gaussian98/h2_freq.log", {}, "Standard orientation:", 5));
  EXPECT_NO_FATAL_FAILURE(CheckAgainstLog("gaussian98/cu2_freq.log", {}, "Standard orientation:", 5));
  EXPECT_NO_FATAL_FAILURE(CheckAgainstLog("gaussian98/water_zmatrix_nosym.log", {"/Z"}, "Z-Matrix orientation:", 6));
  for (const char* log : {"gaussian03/dvb_ir.log", "gaussian03/dvb_raman.log", "gaussian03/anthracene_opt_freq.log",
                          "gaussian03/dvb_gopt.log", "gaussian03/water_mp2.log", "gaussian09/benzene_freq.log",
                          "gaussian09/bsl_opt_freq.log", "gaussian16/water_opt_freq.log"})
    EXPECT_NO_FATAL_FAILURE(CheckAgainstLog(log, {}, "Standard orientation:", 6));
  EXPECT_NO_FATAL_FAILURE(CheckAgainstLog("gaussian09/irc_point.log", {"/I"}, "Input orientation:", 6));
  EXPECT_NO_FATAL_FAILURE(CheckAgainstLog("gaussian16/co_opt_freq.log", {}, "Standard orientation:", 5));
}

// ---- Options -------------------------------------------------------------------------

TEST(GaussianOptions, OrientationFlags) {
  SKIP_WITHOUT_TESTDATA();
  // /I on a log without input orientations finds no coordinates.
  LogRun h2(TestData("gaussian98/h2_freq.log"), {"/I"});
  EXPECT_EQ(h2.r.status, exit_status::NoCoordinates);
  EXPECT_NE(h2.r.console.find(" Can not find molecular coordinates in the input file!"), std::string::npos);
  // Without /Z a log of Z-matrix orientations alone is read by them, with a
  // warning; so is a log of input orientations alone.
  for (const char* rel : {"gaussian98/water_zmatrix_nosym.log", "gaussian09/irc_point.log"}) {
    LogRun run(TestData(rel));
    EXPECT_EQ(run.r.status, exit_status::Ok) << rel;
    EXPECT_GE(run.s.iCyc, 0) << rel;
  }
  LogRun zmat(TestData("gaussian98/water_zmatrix_nosym.log"));
  EXPECT_NE(zmat.r.log.find("\n WARNING! No Standard orientation in the file: Z-Matrix orientation is used\n"),
            std::string::npos);
  // A log with both kinds reads the input ones under /I: the same count here.
  LogRun input(TestData("gaussian09/bsl_opt_freq.log"), {"/I"});
  EXPECT_EQ(input.s.iCyc + 1, 18);
  EXPECT_NE(input.r.log.find(" Input orientation will be used"), std::string::npos);
  EXPECT_NE(input.r.log.find("                         Input orientation:"), std::string::npos);
  EXPECT_EQ(input.r.log.find("                         Standard orientation:"), std::string::npos);
}

TEST(GaussianOptions, NoEnergiesKeepsTheScfSummaryLineOnly) {
  SKIP_WITHOUT_TESTDATA();
  EXPECT_NO_FATAL_FAILURE(CheckAgainstLog("gaussian16/water_opt_freq.log", {"/NOE"}, "Standard orientation:", 6, false, true));
  // No gradient norms at all, and the MP2 energy gives way to the SCF one.
  LogRun opt(TestData("gaussian03/dvb_gopt.log"), {"/NOE"});
  for (int i = 0; i <= opt.s.iCyc; ++i) {
    EXPECT_EQ(opt.s.Set(i).gmax, 999999.0);
    EXPECT_EQ(opt.s.Set(i).grms, 999999.0);
  }
  EXPECT_DOUBLE_EQ(opt.s.Set(0).energy, -382.294280336);
  LogRun mp2(TestData("gaussian03/water_mp2.log"), {"/NOE"});
  EXPECT_DOUBLE_EQ(mp2.s.Set(0).energy, -74.9643287913);
}

TEST(GaussianOptions, RamanActivitiesInsteadOfIrIntensities) {
  SKIP_WITHOUT_TESTDATA();
  EXPECT_NO_FATAL_FAILURE(CheckAgainstLog("gaussian03/dvb_raman.log", {"/RAMAN"}, "Standard orientation:", 6, true));
  LogRun run(TestData("gaussian03/dvb_raman.log"), {"/RAMAN"});
  EXPECT_DOUBLE_EQ(run.s.modes.at(7).intensity, 2.6872);
  // A log without Raman rows leaves the intensities at 0.
  LogRun ir(TestData("gaussian03/dvb_ir.log"), {"/RAMAN"});
  ASSERT_FALSE(ir.s.modes.empty());
  for (const auto& m : ir.s.modes) EXPECT_EQ(m.intensity, 0.0);
}

// ---- Changed real logs ------------------------------------------------------------

namespace {

std::string WaterText() { return ReadFile(TestData("gaussian16/water_opt_freq.log")); }

// The mode block of the water log, from its heading to the last row.
std::string WaterModeBlock(const std::string& text) {
  size_t from = text.find(" Harmonic frequencies");
  size_t to = text.find("\n\n -------------------\n - Thermochemistry", from);
  return text.substr(from, to + 1 - from);
}

}  // namespace

TEST(GaussianChangedLogs, TheLastModeBlockWins) {
  SKIP_WITHOUT_TESTDATA();
  const std::string text = WaterText();
  const std::string block = WaterModeBlock(text);
  const std::string other = Replace(Replace(block, "1668.2293", "1600.0000"), "1.0820", "2.0000");
  size_t at = text.find(block);
  {
    // The changed block after the real one: its values stand.
    std::string after = text;
    after.insert(at + block.size(), other);
    TextRun run(after);
    ASSERT_EQ(run.s.modes.size(), 9u);
    EXPECT_DOUBLE_EQ(run.s.modes.at(6).freq, 1600.0);
    EXPECT_DOUBLE_EQ(run.s.modes.at(6).redMass, 2.0);
    EXPECT_DOUBLE_EQ(run.s.modes.at(8).freq, 3976.5311);
  }
  {
    std::string before = text;
    before.insert(at, other);
    TextRun run(before);
    ASSERT_EQ(run.s.modes.size(), 9u);
    EXPECT_DOUBLE_EQ(run.s.modes.at(6).freq, 1668.2293);
    EXPECT_DOUBLE_EQ(run.s.modes.at(6).redMass, 1.0820);
  }
}

TEST(GaussianChangedLogs, AsterisksOrNaNInAForceStoreZero) {
  SKIP_WITHOUT_TESTDATA();
  std::string text = Replace(WaterText(), " Maximum Force            0.051245", " Maximum Force            ********");
  text = Replace(text, " RMS     Force            0.005261", " RMS     Force                 NaN");
  TextRun run(text);
  EXPECT_EQ(run.s.Set(0).gmax, 0.0);
  EXPECT_DOUBLE_EQ(run.s.Set(0).grms, 0.042490);
  EXPECT_DOUBLE_EQ(run.s.Set(1).gmax, 0.007226);
  EXPECT_EQ(run.s.Set(1).grms, 0.0);
}

TEST(GaussianChangedLogs, TheFirstMultiplicityWins) {
  SKIP_WITHOUT_TESTDATA();
  const std::string text = WaterText();
  TextRun first(Replace(text, "Multiplicity = 1", "Multiplicity = 3"));
  EXPECT_EQ(first.s.opt.multiplicity, 3);
  TextRun second(Replace(text, "Multiplicity = 1", "Multiplicity = 3", 2));
  EXPECT_EQ(second.s.opt.multiplicity, 1);
  TextRun byOption(Replace(text, "Multiplicity = 1", "Multiplicity = 3"), {"/MULT2"});
  EXPECT_EQ(byOption.s.opt.multiplicity, 2);
}

TEST(GaussianChangedLogs, AnUnreadableFieldStopsTheRun) {
  SKIP_WITHOUT_TESTDATA();
  const std::string text = WaterText();
  for (const auto& [from, to] : std::vector<std::pair<std::string, std::string>>{
           {"0.000000   -0.000000    0.136622", "0.000000   -0.000000    0.13x622"},
           {" Frequencies --   1668.2293", " Frequencies --   1668.22x3"},
           {"SCF Done:  E(RPBE1PBE) =  -76.3329398833", "SCF Done:  E(RPBE1PBE) =  -76.33293x8833"}}) {
    SCOPED_TRACE(to);
    TextRun run(Replace(text, from, to));
    EXPECT_EQ(run.r.status, exit_status::ReadError);
    EXPECT_NE(run.r.console.find(" FATAL READ ERROR"), std::string::npos);
  }
}

// ---- Made logs --------------------------------------------------------------------------

TEST(GaussianMadeLogs, SetsEnergiesAndDummyAtoms) {
  const std::vector<Atom> a{{6, 0.0, 0.0, 0.0}, {-1, 0.0, 0.0, 1.0}, {8, 0.0, 0.0, 1.2}};
  std::string text = std::string(kG09Banner) + " Charge =  0 Multiplicity = 2\n" +
                     G09Orientation("Standard orientation:", a) + Scf(-113.25) +
                     G09Orientation("Input orientation:", a) + G09Orientation("Standard orientation:", a);
  TextRun run(text);
  const Session& s = run.s;
  EXPECT_EQ(s.iCyc, 1);
  EXPECT_EQ(s.opt.multiplicity, 2);
  EXPECT_EQ(s.atomicNumber, (std::vector<int>{6, 99, 8}));
  EXPECT_DOUBLE_EQ(s.Set(0).energy, -113.25);
  EXPECT_EQ(s.Set(1).energy, 0.0);
  EXPECT_EQ(s.Set(1).gmax, 999999.0);
  EXPECT_DOUBLE_EQ(s.Set(1).xyz.at(2)[2], 1.2 * constants::AngstromToBohr);
  EXPECT_EQ(s.Set(-1).xyz, s.Set(0).xyz);
  // A dummy atom weighs what the table gives number 99.
  EXPECT_DOUBLE_EQ(s.atomMass.at(1), 252.0829);

  // An energy before the first geometry goes to the starting set.
  TextRun early(std::string(kG09Banner) + Scf(-1.5) + G09Orientation("Standard orientation:", a));
  EXPECT_EQ(early.s.iCyc, 0);
  EXPECT_EQ(early.s.Set(0).energy, 0.0);
}

TEST(GaussianMadeLogs, EnergyLinesOfTheOlderLayouts) {
  const std::vector<Atom> a{{1, 0.0, 0.0, 0.0}, {1, 0.0, 0.0, 0.74}};
  std::string head = std::string(kG09Banner) + G09Orientation("Standard orientation:", a);
  // Fixed columns without "A.U." are taken unless /NOE; with "A.U." the
  // number before it wins, under /NOE as well; a ")" serves when the line
  // has no "="; EUMP2 follows the SCF line.
  const std::string au = "     A.U. after    9 cycles\n";
  const std::tuple<std::string, std::vector<std::string>, double> cases[] = {
      {" SCF Done:  E(RHF) =  -1.12345678901\n", {}, -1.12345678901},
      {" SCF Done:  E(UHF) = -0.4998232575\n", {}, -0.4998232575},
      {" SCF Done:  E(RB+HF-LYP) =  -1.17854936\n", {}, -1.17854936},
      {" SCF Done:  E(RHF) =  -1.12345678901\n", {"/NOE"}, 0.0},
      {" SCF Done:  E(RHF) =  -1.12345678901" + au, {"/NOE"}, -1.12345678901},
      {" SCF Done:  E(ROHF)  -2.25  A.U.\n", {}, -2.25},
      {" SCF Done:  E(RHF) =  -1.10000000000" + au + " E2 =    -0.3795333653E-01 EUMP2 =    -0.11300000000000D+01\n",
       {}, -1.13},
  };
  for (const auto& [line, options, energy] : cases) {
    SCOPED_TRACE(line);
    TextRun run(head + line, options);
    EXPECT_DOUBLE_EQ(run.s.Set(0).energy, energy);
  }
}

namespace {

// A row of a high-accuracy summary: values in columns first1.. and first2..
// The G3 and G4 rows hold two values in columns 18-37 and 58-77, the CBS
// rows in columns 22-39 and 61-80.
std::string SummaryRow(const std::string& l1, double v1, const std::string& l2, double v2, bool cbs) {
  const int first1 = cbs ? 22 : 18, width1 = cbs ? 18 : 20, first2 = cbs ? 61 : 58;
  char buf[64];
  std::string r = " " + l1;
  EXPECT_LT(r.size(), static_cast<size_t>(first1));
  r.resize(static_cast<size_t>(first1 - 1), ' ');
  std::snprintf(buf, sizeof buf, "%*.6f", width1, v1);
  r += buf;
  r += " " + l2;
  EXPECT_LT(r.size(), static_cast<size_t>(first2));
  r.resize(static_cast<size_t>(first2 - 1), ' ');
  std::snprintf(buf, sizeof buf, "%20.6f", v2);
  return r + buf + "\n";
}

std::string G3Summary(const std::string& m, bool cbs) {
  std::string t;
  t += SummaryRow("Temperature=", 298.15, "Pressure=", 1.0, cbs);
  t += SummaryRow("E(ZPE)=", 0.020511, "E(Thermal)=", 0.023346, cbs);
  t += SummaryRow("E(QCISD(T))=", -76.276086, "E(Empiric)=", -0.047942, cbs);
  t += SummaryRow("DE(Plus)=", -0.009212, "DE(2DF)=", -0.091852, cbs);
  t += SummaryRow(m + (cbs ? " (0 K)=" : "(0 K)="), -76.382351, m + " Energy=", -76.379516, cbs);
  t += SummaryRow(m + " Enthalpy=", -76.378572, m + " Free Energy=", -76.399959, cbs);
  return t;
}

std::string WaterHead() {
  const std::vector<Atom> w{{8, 0.0, 0.0, 0.117}, {1, 0.0, 0.757, -0.468}, {1, 0.0, -0.757, -0.468}};
  return std::string(kG09Banner) + G09Orientation("Standard orientation:", w) + Scf(-76.4);
}

}  // namespace

TEST(GaussianMadeLogs, HighAccuracySummaries) {
  for (const std::string m : {"G3", "G4", "CBS"}) {
    SCOPED_TRACE(m);
    bool cbs = m == "CBS";
    std::string method = cbs ? "CBS-QB3" : m;
    std::string text = WaterHead() + G3Summary(method, cbs) + " Normal end\n";
    TextRun run(text);
    ASSERT_EQ(run.r.status, 0) << run.r.console;
    EXPECT_TRUE(run.s.electronicEnergyFromSummary);
    EXPECT_NEAR(run.s.electronicEnergy, -76.382351 - 0.020511, 1e-12);
    const std::string& log = run.r.log;
    const std::string rule(cbs ? 76 : 78, '*');
    EXPECT_NE(log.find("\n\n\n" + rule + "\n \n         High-accuracy thermochemistry calculation results found \n" +
                       std::string(36, ' ') + m + "\n" + rule + "\n\n"),
              std::string::npos)
        << log;
    // The rows between the temperature and the enthalpy are echoed.
    EXPECT_NE(log.find("\n E(QCISD(T))="), std::string::npos);
    EXPECT_EQ(log.find("\n " + method + " Enthalpy="), std::string::npos);
    if (cbs) {
      EXPECT_NE(log.find(" T, K                    =          298.150000\n"), std::string::npos);
      EXPECT_NE(log.find(" E     (CBS(0K)-E(ZPE) ) =          -76.402862\n"), std::string::npos);
      EXPECT_NE(log.find(" E+U(T)(CBS energy)    ) =          -76.379516\n"), std::string::npos);
      EXPECT_NE(log.find(" E+G(T)(CBS free energy) =          -76.399959\n\n" + rule + "\n\n"), std::string::npos);
    } else {
      EXPECT_NE(log.find(" P, atm                  =            1.000000\n"), std::string::npos);
      EXPECT_NE(log.find(" E     (" + m + "(0K)-E(ZPE) )  =          -76.402862\n"), std::string::npos);
      EXPECT_NE(log.find(" E+ZPE (" + m + "(0K)        )  =          -76.382351\n"), std::string::npos);
      EXPECT_NE(log.find(" E+H(T)(" + m + " enthalpy   )  =          -76.378572\n"), std::string::npos);
      EXPECT_NE(log.find(" E+G(T)(" + m + " free energy)  =          -76.399959\n"), std::string::npos);
    }
    // Reading goes on after the summary.
    EXPECT_EQ(run.s.iCyc, 0);
  }
}

TEST(GaussianMadeLogs, Gaussian94HasNoAtomicTypeColumn) {
  std::string t = " This is part of the Gaussian 94(TM) system.\n"
                  "                    Standard orientation:\n"
                  " ----------------------------------------------------------\n"
                  " Center     Atomic              Coordinates (Angstroms)\n"
                  " Number     Number             X           Y           Z\n"
                  " ----------------------------------------------------------\n";
  char buf[128];
  const double xyz[3][3] = {{0.0, 0.0, 0.119}, {0.0, 0.763, -0.477}, {0.0, -0.763, -0.477}};
  const int z[3] = {8, 1, 1};
  for (int i = 0; i < 3; ++i) {
    std::snprintf(buf, sizeof buf, "%5d%11d       %12.6f%12.6f%12.6f\n", i + 1, z[i], xyz[i][0], xyz[i][1], xyz[i][2]);
    t += buf;
  }
  t += " ----------------------------------------------------------\n";
  t += " SCF Done:  E(RHF) =  -76.0107465156     A.U. after    9 cycles\n";
  TextRun run(t);
  ASSERT_EQ(run.r.status, 0) << run.r.console;
  EXPECT_EQ(run.s.iCyc, 0);
  EXPECT_EQ(run.s.atomicNumber, (std::vector<int>{8, 1, 1}));
  EXPECT_DOUBLE_EQ(run.s.Set(0).xyz.at(1)[1], 0.763 * constants::AngstromToBohr);
  EXPECT_DOUBLE_EQ(run.s.Set(0).xyz.at(2)[2], -0.477 * constants::AngstromToBohr);
  EXPECT_DOUBLE_EQ(run.s.Set(0).energy, -76.0107465156);
}

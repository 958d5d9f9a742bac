// Thermochemistry: the rigid-rotor harmonic-oscillator evaluation checked
// against the thermochemistry that Gaussian prints in its own frequency logs,
// the marks of the modes, the printed layouts, and the temperature tables.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "io/fortran_io.h"
#include "test_support.h"
#include "thermo/thermo.h"

using namespace quintor;
using namespace quintor::test;

namespace {

constexpr double kJToKcal = 1.0 / 4.184;
constexpr double kCalPerJ = 1.0 / 4.184;

// ---- Gaussian's own thermochemistry, read from its log ------------------------

struct GaussianThermo {
  bool found = false;
  int symmetryNumber = 0;
  double temperature = 0.0, pressureAtm = 0.0;
  double zpeKcal = 0.0;
  // rows: 0 total, 1 electronic, 2 translational, 3 rotational, 4 vibrational
  double e[5]{}, cv[5]{}, s[5]{};
  double hCorr = 0.0, gCorr = 0.0;  // Hartree
};

GaussianThermo ReadGaussianThermo(const std::string& path) {
  std::ifstream in(path);
  std::vector<std::string> lines;
  for (std::string l; std::getline(in, l);) {
    for (char& c : l) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    lines.push_back(l);
  }
  GaussianThermo g;
  static const char* kRows[] = {"TOTAL", "ELECTRONIC", "TRANSLATIONAL", "ROTATIONAL", "VIBRATIONAL"};
  for (size_t i = 0; i < lines.size(); ++i) {
    const std::string& l = lines[i];
    if (l.find("ROTATIONAL SYMMETRY NUMBER") != std::string::npos)
      g.symmetryNumber = static_cast<int>(After(l, "NUMBER"));
    if (l.find(" TEMPERATURE ") != std::string::npos && l.find("KELVIN.") != std::string::npos) {
      g.temperature = After(l, "TEMPERATURE");
      g.pressureAtm = After(l, "PRESSURE");
    }
    if (l.find("ZERO-POINT VIBRATIONAL ENERGY") != std::string::npos && i + 1 < lines.size())
      g.zpeKcal = std::stod(Words(lines[i + 1]).at(0));
    if (l.find("THERMAL CORRECTION TO ENTHALPY=") != std::string::npos) g.hCorr = After(l, "=");
    if (l.find("THERMAL CORRECTION TO GIBBS FREE ENERGY=") != std::string::npos) g.gCorr = After(l, "=");
    if (l.find("E (THERMAL)") != std::string::npos) {
      for (int r = 0; r < 5; ++r) {
        auto w = Words(lines.at(i + 2 + static_cast<size_t>(r)));
        if (w.size() != 4 || w[0] != kRows[r]) return g;
        g.e[r] = std::stod(w[1]);
        g.cv[r] = std::stod(w[2]);
        g.s[r] = std::stod(w[3]);
      }
      g.found = true;
    }
  }
  return g;
}

struct LogCase {
  const char* file;
  std::vector<std::string> extra;  // further options of the run
  std::string tdi;                 // a .tdi file beside the copy, when not empty
};

void CompareWithGaussian(const LogCase& c) {
  SCOPED_TRACE(c.file);
  const std::string original = TestData(c.file);
  const GaussianThermo g = ReadGaussianThermo(original);
  ASSERT_TRUE(g.found) << "no thermochemistry table in " << c.file;
  ASSERT_GT(g.symmetryNumber, 0);
  ASSERT_DOUBLE_EQ(g.temperature, 298.15);
  ASSERT_DOUBLE_EQ(g.pressureAtm, 1.0);

  TempDir dir;
  const std::string name = std::filesystem::path(original).filename().string();
  const std::string copy = dir.File(name);
  std::filesystem::copy_file(original, copy);
  if (!c.tdi.empty()) dir.Write(std::filesystem::path(name).replace_extension(".tdi").string(), c.tdi);
  std::vector<std::string> args{copy, "/0", "/ROT" + std::to_string(g.symmetryNumber)};
  args.insert(args.end(), c.extra.begin(), c.extra.end());

  Session s;
  RunResult run = RunInProcess(s, args);
  ASSERT_EQ(run.status, 0) << run.console;
  ASSERT_NE(run.log.find(" ******************** THERMOCHEMICAL PROPERTIES EVALUATION"), std::string::npos);

  // The tables leave the temperature at their last row: evaluate once more
  // at the temperature of Gaussian's table.
  s.opt.temperature = 298.15;
  ThermoAtTP(s, true);
  const ThermoState& t = s.thermo;
  const TDResult* ours[5] = {&t.tot, &t.elec, &t.tran, &t.rot, &t.vib};
  static const char* kNames[5] = {"total", "electronic", "translational", "rotational", "vibrational"};

  for (int r = 0; r < 5; ++r) {
    SCOPED_TRACE(kNames[r]);
    const double e = ours[r]->u * kJToKcal, cv = ours[r]->cv * kCalPerJ, sv = ours[r]->s * kCalPerJ;
    EXPECT_NEAR(e, g.e[r], 0.01);
    EXPECT_NEAR(cv, g.cv[r], 0.01);
    EXPECT_NEAR(sv, g.s[r], 0.01);
  }
  EXPECT_NEAR(t.zpeTot * kJToKcal, g.zpeKcal, 0.01);
  // Gaussian's corrections are in Hartree, converted by its 627.5095 kcal/mol.
  const double h = t.tot.h * kJToKcal, gibbs = t.tot.g * kJToKcal;
  EXPECT_NEAR(h, g.hCorr * 627.5095, 0.01);
  EXPECT_NEAR(gibbs, g.gCorr * 627.5095, 0.01);
}

}  // namespace

// Gaussian evaluates the same model. The largest differences over these logs
// are below 6e-4 in kcal/mol and cal/mol K: mostly Gaussian's rounding of its
// table to three decimals (5e-4), plus its physical constants, which are those
// of a later CODATA set in Gaussian 03 and later (h, k, NA, amu), against the
// 1998 values here; its kcal/mol per Hartree (627.5095) is used for its
// corrections in Hartree.
TEST(ThermoAgainstGaussian, EveryGaussianFrequencyLog) {
  SKIP_WITHOUT_TESTDATA();
  const std::vector<LogCase> cases = {
      {"gaussian98/h2_freq.log", {}, {}},  // its one frequency is imaginary: no vibration counts
      {"gaussian98/cu2_freq.log", {}, {}},
      {"gaussian03/dvb_ir.log", {}, {}},
      {"gaussian03/dvb_raman.log", {"/RAMAN"}, {}},
      {"gaussian03/anthracene_opt_freq.log", {}, {}},
      {"gaussian09/benzene_freq.log", {}, {}},
      {"gaussian09/bsl_opt_freq.log", {}, {}},
      // A point of a reaction path: Gaussian projects the path out and prints
      // 3N-7 modes, so the last of the 3N-6 places stays empty and is named a
      // zero mode here. The log has only the input orientation.
      {"gaussian09/irc_point.log", {"/I"}, "ZERO=(1,2,3,4,5,6,18)\n"},
      {"gaussian16/water_opt_freq.log", {}, {}},
      {"gaussian16/co_opt_freq.log", {}, {}},
  };
  for (const LogCase& c : cases) EXPECT_NO_FATAL_FAILURE(CompareWithGaussian(c));
}

// ---- Evaluations of molecules built in the test -------------------------------

namespace {

struct Atom {
  double mass;  // amu
  Vec3 r;       // bohr
};

// A session of one coordinate set and its modes, with a MainLog in a
// temporary directory.
struct Molecule {
  TempDir dir;
  Session s;

  explicit Molecule(const std::vector<Atom>& atoms) {
    s.nAtoms = static_cast<int>(atoms.size());
    s.iCyc = 0;
    s.coordsFound = true;
    for (const Atom& a : atoms) {
      s.atomMass.push_back(a.mass);
      s.molMass += a.mass;
      s.xyz.push_back(a.r);
      s.atomicNumber.push_back(1);
    }
    s.Set(0).xyz = s.xyz;
    s.opt.multiplicity = 1;
    s.files.tdoName = dir.File("m.tdo");
    s.files.specName = dir.File("m.tdi");  // absent unless written
    s.log.Open(dir.File("m.mou"));
  }
  // The 3N modes of a Gaussian log: the head of empty translations and
  // rotations, then the given frequencies.
  void Modes(int head, const std::vector<double>& freqs, double redMass = 1.0) {
    s.modes.assign(static_cast<size_t>(head), VibMode{});
    for (double f : freqs) {
      VibMode m;
      m.freq = f;
      m.redMass = redMass;
      m.intensity = 10.0;
      s.modes.push_back(m);
    }
    s.nImag = 0;
    for (VibMode& m : s.modes) {
      m.scaledFreq = m.freq * s.opt.freqScale;
      if (m.freq < 0.0) ++s.nImag;
    }
  }
  std::string Log() {
    s.log.Close();
    return ReadFile(dir.File("m.mou"));
  }
};

std::vector<Atom> Water() {
  return {{15.99491, {0.0, 0.0, 0.2217}}, {1.00783, {0.0, 1.4309, -0.8867}}, {1.00783, {0.0, -1.4309, -0.8867}}};
}

bool HasLine(const std::string& log, const std::string& line) {
  return log.find("\n" + line + "\n") != std::string::npos || log.rfind(line + "\n", 0) == 0;
}

// The rows of the table whose title is `title`.
std::vector<std::string> TableRows(const std::string& log, const std::string& title) {
  std::vector<std::string> rows;
  size_t at = log.find(title);
  if (at == std::string::npos) return rows;
  std::istringstream in(log.substr(at));
  std::string l;
  for (int k = 0; k < 4; ++k) std::getline(in, l);  // title, two head lines, ruler
  while (std::getline(in, l) && l[1] != '-' && l[0] != '-') rows.push_back(l);
  return rows;
}

}  // namespace

TEST(ThermoAtTP, SingleAtomDoesNotRotate) {
  Molecule m(std::vector<Atom>{{39.948, {0.3, 0.2, 0.1}}});
  ThermoAtTP(m.s, false);
  const ThermoState& t = m.s.thermo;
  EXPECT_TRUE(t.linear);
  EXPECT_EQ(t.rot.q, 1.0);
  EXPECT_EQ(t.rot.s, 0.0);
  const std::string log = m.Log();
  EXPECT_TRUE(HasLine(log, " Spherical top"));
  EXPECT_TRUE(HasLine(log, " Linear molecule"));
  EXPECT_FALSE(HasLine(log, " Linear top"));
  // No modes: the sums stay 0 and Qvib is 1.
  EXPECT_TRUE(HasLine(log,
                      " Total for    0 vibrations                              0.000    0.000    0.000    0.000"
                      "    0.000    0.000 1.00000E+00"));
}

TEST(MarkUsedModes, PositiveFrequencyLimit) {
  Molecule m(Water());
  m.s.opt.positiveFreqLimit = -100.0;
  m.Modes(6, {-200.0, -50.0, 1000.0});
  // The imaginary modes lead the vibrations; the head of zero modes is 6 + NImag.
  MarkUsedModes(m.s, false);
  EXPECT_EQ(m.s.modes[5].use, ModeUse::Zero);
  EXPECT_EQ(m.s.modes[6].use, ModeUse::Zero);  // -200 keeps the zero mark
  EXPECT_EQ(m.s.modes[7].use, ModeUse::ImaginaryAsReal);  // -50 above the limit is taken as real
  EXPECT_EQ(m.s.modes[8].use, ModeUse::Used);

  ThermoAtTP(m.s, false);
  const ThermoState& t = m.s.thermo;
  EXPECT_EQ(m.s.modes[7].scaledFreq, 50.0);
  EXPECT_EQ(m.s.modes[6].scaledFreq, -200.0);
  EXPECT_DOUBLE_EQ(t.zpe[7], 50.0 * (50.0 * constants::Planck * constants::Avogadro) * constants::SpeedOfLight / 1000.0);
  EXPECT_EQ(t.nVibUsed, 2);
  const std::string log = m.Log();
  EXPECT_TRUE(HasLine(log, "WARNING! /FP option set to     -100.0000 : Some imaginary frequencies will be treated as "
                           "real ones"));
}

TEST(MarkUsedModes, ZeroListBottomLimitAndAllPositive) {
  Molecule m(Water());
  m.Modes(6, {-30.0, 20.0, 500.0, 900.0});
  m.s.zeroModes = {1, 2, 3, 4, 5, 6, 9};
  m.s.nZero = 7;
  m.s.opt.freqBottom = 100.0;
  MarkUsedModes(m.s, false);
  EXPECT_EQ(m.s.modes[6].use, ModeUse::BelowFreqBottom);  // -30, below the limit, not in the list
  EXPECT_EQ(m.s.modes[7].use, ModeUse::BelowFreqBottom);  // 20
  EXPECT_EQ(m.s.modes[8].use, ModeUse::Zero);   // in the list
  EXPECT_EQ(m.s.modes[9].use, ModeUse::Used);
  m.s.opt.allPositive = true;
  MarkUsedModes(m.s, false);
  EXPECT_EQ(m.s.modes[6].use, ModeUse::ImaginaryAsReal);
  // A linear molecule has one zero mode less at the head.
  m.s.zeroModes.clear();
  m.s.nZero = 0;
  m.s.opt.allPositive = false;
  m.s.opt.freqBottom = 0.0;
  MarkUsedModes(m.s, true);
  EXPECT_EQ(m.s.modes[4].use, ModeUse::Zero);
  EXPECT_EQ(m.s.modes[5].use, ModeUse::Zero);  // NImag 1 + 6 - 1
  EXPECT_EQ(m.s.modes[6].use, ModeUse::BelowFreqBottom);
  EXPECT_EQ(m.s.modes[7].use, ModeUse::Used);
}

TEST(ThermoAtTP, PrintedLayouts) {
  Molecule m(Water());
  m.s.opt.rotationNumber = 2.0;
  m.s.opt.multiplicity = 3;
  m.s.electronicEnergy = m.s.lowestEnergy = -76.5;
  m.s.lowestEnergyStep = 4;
  m.Modes(6, {1600.0, 3700.0, 3800.0});
  ThermoAtTP(m.s, false);
  const std::string log = m.Log();
  // R ln 3 for the triplet.
  EXPECT_TRUE(HasLine(log, " Selec =      9.134 J/K/mol     2.183 cal/K/mol      0.00000348 Hartree/K"));
  EXPECT_TRUE(HasLine(log, " Gelec =     -2.723  kJ/mol    -0.651  kcal/mol     -0.00103732 Hartree  "));
  // Theta of 3800 cm-1 is 5467.346 K, its ZPE 22.729 kJ/mol.
  EXPECT_NE(log.find("\n   9 3800.000   10.000 3800.000     1.00  1 5467.346    0.000   22.729    0.000   22.729   22.729"
                     "    0.000 1.00000E+00\n"),
            std::string::npos)
      << log;
  const ThermoState& t = m.s.thermo;
  const double k = constants::KJPerMolToHartree;
  EXPECT_TRUE(HasLine(log, " Etot+Gtot   = " + FmtF(-76.5 + t.tot.g * k, 16, 8) + "           (Gtot   = " +
                               FmtF(t.tot.g * k, 16, 8) + ")"));
}

TEST(ThermoAtTP, MultiplicityNotSetIsWarnedAndFixed) {
  Molecule m(Water());
  m.s.opt.multiplicity = 0;
  ThermoAtTP(m.s, false);
  EXPECT_EQ(m.s.opt.multiplicity, 1);
  const std::string log = m.Log();
  EXPECT_NE(log.find(" *** Electronic contribution ***\n"
                     " WARNING! Multiplicity of molecule was not set properly! Using default value (1).\n"
                     " Spin multiplicity of molecule = 1\n"),
            std::string::npos);
}

TEST(ThermoAtTP, TransitionStateDropsOneTranslation) {
  Molecule m(Water());
  ThermoAtTP(m.s, true);
  const TDResult plain = m.s.thermo.tran;
  m.s.opt.transitionState = true;
  ThermoAtTP(m.s, false);
  const TDResult& ts = m.s.thermo.tran;
  const double R = constants::GasConstant, T = 298.15;
  EXPECT_DOUBLE_EQ(ts.q, std::pow(plain.q, 2.0 / 3.0));
  EXPECT_DOUBLE_EQ(ts.u, R * T / 1000.0);
  EXPECT_DOUBLE_EQ(ts.cv, R);
  const std::string log = m.Log();
  EXPECT_NE(log.find(" Molecular mass:        18.01 amu\n Transition state thermodynamics requested\n"),
            std::string::npos);
  EXPECT_NE(log.find(" *** Translational contribution ***\n"
                     " *** Molecule is treated as a TRANSITION STATE.\n"
                     " *** One of translational degrees of freedom is ignored.\n Qtran = "),
            std::string::npos);
}

// ---- The driver ------------------------------------------------------------------

TEST(CalcTD, FixedTableScalingAndTheTemperatureLeftBehind) {
  Molecule m(Water());
  m.s.opt.freqScale = 0.9;
  m.Modes(6, {1600.0, 3700.0, 3800.0});
  m.s.xyz[0] = {5.0, 5.0, 5.0};  // the last set is used
  CalcTD(m.s);
  EXPECT_EQ(m.s.xyz[0], m.s.Set(0).xyz[0]);
  EXPECT_DOUBLE_EQ(m.s.modes[6].scaledFreq, 1440.0);
  EXPECT_EQ(m.s.opt.temperature, 500.0);  // not restored
  const std::string log = m.Log();
  EXPECT_EQ(log.find(" ******************** THERMOCHEMICAL PROPERTIES EVALUATION ********************\n"
                     " Molecular geometry corresponds to the last coordinate set - Step No.    0\n"
                     " Temperature   :       298.15 K \n"),
            0u)
      << log;
  const std::string title = " Thermodynamics at various temperatures (w/o internal rotations):";
  auto rows = TableRows(log, title);
  ASSERT_EQ(rows.size(), 50u);
  EXPECT_EQ(rows.front().substr(0, 10), "    10.000");
  EXPECT_EQ(rows.back().substr(0, 10), "   500.000");
  EXPECT_EQ(log.find("requested temperatures"), std::string::npos);
  EXPECT_EQ(log.substr(log.size() - 98), std::string(97, '-') + "\n");
}

TEST(CalcTD, RequestedRangeWithOnlyTheStep) {
  Molecule m(Water());
  m.Modes(6, {1600.0, 3700.0, 3800.0});
  m.s.opt.tempTableRequested = true;
  m.s.opt.tempRange = {0.0, -1.0, 50.0};
  CalcTD(m.s);
  EXPECT_EQ(m.s.opt.tempRange, (std::array<double, 3>{50.0, 1000.0, 50.0}));
  EXPECT_EQ(m.s.opt.temperature, 1000.0);
  auto rows = TableRows(m.Log(), " Thermodynamics at requested temperatures (w/o internal rotations):");
  ASSERT_EQ(rows.size(), 20u);
  EXPECT_EQ(rows.front().substr(0, 10), "    50.000");
  EXPECT_EQ(rows.back().substr(0, 10), "  1000.000");
}

TEST(CalcTD, EditedStructureWarnsBeforeAndAfter) {
  Molecule m(Water());
  m.Modes(6, {1600.0, 3700.0, 3800.0});
  m.s.xyz[0][2] += 0.1;
  const Vec3 edited = m.s.xyz[0];
  CalcTD(m.s, true);
  EXPECT_EQ(m.s.xyz[0], edited);
  const std::string log = m.Log();
  EXPECT_EQ(log.find(" ******************** THERMOCHEMICAL PROPERTIES EVALUATION ********************\n"
                     " **** WARNING! Molecular geometry was changed during the interactive session.\n"
                     " **** The final (edited) coordinates will be used for TD calculations.\n"
                     " **** The TD analysis can be invalid!\n"
                     " Temperature   :"),
            0u)
      << log;
  const std::string after = std::string(97, '-') +
                            "\n **** WARNING! Molecular geometry was changed during the interactive session.\n"
                            " **** The final (edited) coordinates were used for TD calculations.\n"
                            " **** The TD analysis can be invalid!\n";
  EXPECT_EQ(log.substr(log.size() - after.size()), after);
}

TEST(CalcTD, RunWithoutFrequenciesWarnsAndPrintsNoTable) {
  TempDir dir;
  const std::string xyz =
      "3\nwater\n"
      "O   0.000000   0.000000   0.117300\n"
      "H   0.000000   0.757200  -0.469200\n"
      "H   0.000000  -0.757200  -0.469200\n";
  auto r = RunInProcess({dir.Write("w.xyz", xyz), "/X2", "/0"});
  ASSERT_EQ(r.status, 0) << r.console;
  const std::string tail = r.log.substr(r.log.find(" ******************** THERMOCHEMICAL"));
  EXPECT_NE(tail.find(" Total for    0 vibrations"), std::string::npos);
  EXPECT_NE(tail.find(" Etot+Gtot   = "), std::string::npos);
  const std::string warning =
      " ***** W A R N I N G !\n"
      " ***** Vibrational frequencies have not been found in the input file.\n"
      " ***** TD functions have no vibrational contributions!\n"
      " ***** TD analysis may be invalid!\n";
  EXPECT_EQ(tail.substr(tail.size() - warning.size()), warning);
  EXPECT_EQ(tail.find("Thermodynamics at"), std::string::npos);
}


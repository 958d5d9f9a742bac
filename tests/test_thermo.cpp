// Thermochemistry: the rigid-rotor harmonic-oscillator evaluation checked
// against the thermochemistry that Gaussian prints in its own frequency logs,
// the marks of the modes, the printed layouts, and the temperature tables.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "numeric/fortran_io.h"
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

std::vector<std::string> Words(const std::string& line) {
  std::istringstream in(line);
  std::vector<std::string> w;
  for (std::string x; in >> x;) w.push_back(x);
  return w;
}

double After(const std::string& line, const std::string& key) {
  return std::stod(line.substr(line.find(key) + key.size()));
}

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
  std::string spec;                // a specification file beside the copy, when not empty
};

// The largest differences of one log, for the summary.
struct Differences {
  double e = 0, cv = 0, s = 0, zpe = 0, hg = 0;
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
  if (!c.spec.empty()) dir.Write(std::filesystem::path(name).replace_extension(".tdi").string(), c.spec);
  std::vector<std::string> args{copy, "/0", "/ROT" + std::to_string(g.symmetryNumber)};
  args.insert(args.end(), c.extra.begin(), c.extra.end());

  Session s;
  RunResult run = RunInProcess(s, args);
  ASSERT_EQ(run.status, 0) << run.console;
  ASSERT_NE(run.log.find(" ******************** THERMOCHEMICAL PROPERTIES EVALUATION"), std::string::npos);

  // The tables leave the temperature at their last row: evaluate once more
  // at the temperature of Gaussian's table.
  s.opt.temperature = 298.15;
  ThermoAtTP(s, true, false);
  const ThermoState& t = Thermo();
  const TDResult* ours[5] = {&t.tot, &t.elec, &t.tran, &t.rot, &t.vib};
  static const char* kNames[5] = {"total", "electronic", "translational", "rotational", "vibrational"};

  Differences d;
  for (int r = 0; r < 5; ++r) {
    SCOPED_TRACE(kNames[r]);
    const double e = ours[r]->u * kJToKcal, cv = ours[r]->cv * kCalPerJ, sv = ours[r]->s * kCalPerJ;
    EXPECT_NEAR(e, g.e[r], 0.01);
    EXPECT_NEAR(cv, g.cv[r], 0.01);
    EXPECT_NEAR(sv, g.s[r], 0.01);
    d.e = std::max(d.e, std::fabs(e - g.e[r]));
    d.cv = std::max(d.cv, std::fabs(cv - g.cv[r]));
    d.s = std::max(d.s, std::fabs(sv - g.s[r]));
  }
  const double zpe = t.zpeTot * kJToKcal;
  EXPECT_NEAR(zpe, g.zpeKcal, 0.01);
  d.zpe = std::fabs(zpe - g.zpeKcal);
  // Gaussian's corrections are in Hartree, converted by its 627.5095 kcal/mol.
  const double h = t.tot.h * kJToKcal, gibbs = t.tot.g * kJToKcal;
  EXPECT_NEAR(h, g.hCorr * 627.5095, 0.01);
  EXPECT_NEAR(gibbs, g.gCorr * 627.5095, 0.01);
  d.hg = std::max(std::fabs(h - g.hCorr * 627.5095), std::fabs(gibbs - g.gCorr * 627.5095));
  std::cout << "  " << c.file << ": max |dE| " << d.e << " kcal/mol, |dCV| " << d.cv << ", |dS| " << d.s
            << " cal/mol K, |dZPE| " << d.zpe << ", |dH|,|dG| " << d.hg << " kcal/mol\n";
}

}  // namespace

// Gaussian evaluates the same model with the CODATA constants of its
// version; the constants here are those of 1998. The differences this makes
// are a few 1e-4 in the printed units, far below the tolerances. What remains
// is Gaussian's rounding of its own table to three decimals.
TEST(ThermoAgainstGaussian, Gaussian98Hydrogen) {
  // The one frequency of this H2 is imaginary: no vibration counts.
  CompareWithGaussian({"gaussian98/h2_freq.log", {}, {}});
}
TEST(ThermoAgainstGaussian, Gaussian98Copper) { CompareWithGaussian({"gaussian98/cu2_freq.log", {}, {}}); }
TEST(ThermoAgainstGaussian, Gaussian03DivinylbenzeneIr) { CompareWithGaussian({"gaussian03/dvb_ir.log", {}, {}}); }
TEST(ThermoAgainstGaussian, Gaussian03DivinylbenzeneRaman) {
  CompareWithGaussian({"gaussian03/dvb_raman.log", {"/RAMAN"}, {}});
}
TEST(ThermoAgainstGaussian, Gaussian03Anthracene) {
  CompareWithGaussian({"gaussian03/anthracene_opt_freq.log", {}, {}});
}
TEST(ThermoAgainstGaussian, Gaussian09Benzene) { CompareWithGaussian({"gaussian09/benzene_freq.log", {}, {}}); }
TEST(ThermoAgainstGaussian, Gaussian09Bsl) { CompareWithGaussian({"gaussian09/bsl_opt_freq.log", {}, {}}); }
TEST(ThermoAgainstGaussian, Gaussian09IrcPoint) {
  // A point of a reaction path: Gaussian projects the path out and prints
  // 3N-7 modes, so the last of the 3N-6 places stays empty and is named a
  // zero mode here. The log has only the input orientation.
  CompareWithGaussian({"gaussian09/irc_point.log", {"/I"}, "ZERO=(1,2,3,4,5,6,18)\n"});
}
TEST(ThermoAgainstGaussian, Gaussian16Water) { CompareWithGaussian({"gaussian16/water_opt_freq.log", {}, {}}); }
TEST(ThermoAgainstGaussian, Gaussian16CarbonMonoxide) {
  CompareWithGaussian({"gaussian16/co_opt_freq.log", {}, {}});
}

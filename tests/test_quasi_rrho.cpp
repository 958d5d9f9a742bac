// Quasi-RRHO corrections and the standard state of a concentration, checked
// against GoodVibes 4.0: its formulas (goodvibes/thermo.py: calc_rrho_entropy,
// calc_freerot_entropy, calc_qRRHO_energy, calc_damp) and its physical
// constants are written out here, independently of the program's own, and fed
// with the frequencies as the Gaussian log prints them.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "test_support.h"

using namespace quintor;
using namespace quintor::test;

namespace {

// GoodVibes' constants.
constexpr double kR = 8.3144621, kH = 6.62606957e-34, kK = 1.3806488e-23, kC = 2.99792458e10, kNA = 6.0221415e23;
constexpr double kJPerHartree = 4.184 * 627.509541 * 1000.0;
constexpr double kPi = 3.141592653589793;

double Damp(double nu, double cutoff) { return 1.0 / (1.0 + std::pow(cutoff / nu, 4)); }
double Srrho(double nu, double T) {
  const double x = kH * nu * kC / (kK * T);
  return x * kR / (std::exp(x) - 1.0) - kR * std::log(1.0 - std::exp(-x));
}
double Sfree(double nu, double T) {
  const double mu = kH / (8.0 * kPi * kPi * nu * kC), bav = 1.0e-44;
  const double m = mu * bav / (mu + bav);
  return (0.5 + std::log(std::sqrt(8.0 * std::pow(kPi, 3) * m * kK * T / (kH * kH)))) * kR;
}
double Uvib(double nu, double T) {  // J/mol, zero-point energy included
  const double e = kH * nu * kC;
  return 0.5 * kNA * e + kR * T * e / kK / T * std::exp(-e / kK / T) / (1.0 - std::exp(-e / kK / T));
}

// GoodVibes' quasi-RRHO values minus its harmonic ones: S in J/K/mol, H in J/mol.
struct Delta {
  double sGrimme = 0.0, sTruhlar = 0.0, hHeadGordon = 0.0;
};
Delta GoodVibesDelta(const std::vector<double>& freqs, double T, double cutoff) {
  Delta d;
  for (double nu : freqs) {
    const double w = Damp(nu, cutoff), s = Srrho(nu, T), u = Uvib(nu, T);
    d.sGrimme += w * s + (1.0 - w) * Sfree(nu, T) - s;
    d.sTruhlar += (nu > cutoff ? s : Srrho(cutoff, T)) - s;
    d.hHeadGordon += w * u + (1.0 - w) * 0.5 * kR * T - u;
  }
  return d;
}

// The real frequencies of the last frequency section of a Gaussian log.
std::vector<double> GaussianFrequencies(const std::string& path) {
  std::ifstream in(path);
  std::vector<double> f;
  for (std::string l; std::getline(in, l);) {
    if (l.find("Harmonic frequencies") != std::string::npos) f.clear();
    if (l.rfind(" Frequencies --", 0) != 0) continue;
    auto w = Words(l.substr(15));
    for (const auto& x : w)
      if (double v = std::stod(x); v > 0.0) f.push_back(v);
  }
  return f;
}

struct Outcome {
  int status = -1;
  ThermoReport report;
  int used = 0;
};
Outcome RunCopy(const std::string& rel, std::vector<std::string> options) {
  TempDir dir;
  const std::string name = std::filesystem::path(rel).filename().string();
  std::filesystem::copy_file(TestData(rel), dir.File(name));
  options.insert(options.begin(), {dir.File(name), "/0"});
  Session s;
  Outcome r;
  r.status = RunInProcess(s, options).status;
  r.report = s.thermo.report;
  for (const VibMode& m : s.modes) r.used += m.use == ModeUse::Used ? 1 : 0;
  return r;
}

const char* const kGaussianFrequencyLogs[] = {
    "gaussian98/h2_freq.log",          "gaussian98/cu2_freq.log",       "gaussian03/dvb_ir.log",
    "gaussian03/dvb_raman.log",        "gaussian03/anthracene_opt_freq.log", "gaussian09/benzene_freq.log",
    "gaussian09/bsl_opt_freq.log",     "gaussian09/irc_point.log",      "gaussian16/water_opt_freq.log",
    "gaussian16/co_opt_freq.log",
};
// more/g03_ethyl_cbsqb3.out and more/g16_near_linear.out are left out: their
// runs stop with a read error before the thermochemistry (the CBS summary in
// Gaussian 03 columns; an archive line that holds "Freq"), a reader matter.

}  // namespace

// Grimme's S, Head-Gordon's H and the G of both, and Truhlar's S, against
// GoodVibes' to 1e-6 Hartree on every Gaussian log with frequencies. The
// symmetry number, the same in both runs, drops out of the differences.
TEST(QuasiRrho, AgreesWithGoodVibesOnEveryGaussianFrequencyLog) {
  SKIP_WITHOUT_TESTDATA();
  const double T = 298.15, tol = 1e-6 * kJPerHartree;  // J/mol
  double largest = 0.0;
  for (const char* rel : kGaussianFrequencyLogs) {
    SCOPED_TRACE(rel);
    const std::vector<double> freqs = GaussianFrequencies(TestData(rel));
    // h2_freq has only an imaginary mode: nothing to correct, on both sides.
    const Delta d = GoodVibesDelta(freqs, T, 100.0);

    const Outcome g = RunCopy(rel, {"/QS100", "/QH100"});
    ASSERT_EQ(g.status, 0);
    ASSERT_TRUE(g.report.quasi.evaluated);
    EXPECT_EQ(g.used, static_cast<int>(freqs.size()));
    const ThermoReport& r = g.report;
    const double dS = T * (r.quasi.s - r.tot.s), dH = 1000.0 * (r.quasi.h - r.tot.h);
    const double dG = 1000.0 * (r.quasi.g - r.tot.g);
    EXPECT_NEAR(dS, T * d.sGrimme, tol);
    EXPECT_NEAR(dH, d.hHeadGordon, tol);
    EXPECT_NEAR(dG, d.hHeadGordon - T * d.sGrimme, tol);
    largest = std::max({largest, std::fabs(dS - T * d.sGrimme), std::fabs(dH - d.hHeadGordon)});

    const Outcome t = RunCopy(rel, {"/QT"});
    ASSERT_TRUE(t.report.quasi.evaluated);
    EXPECT_EQ(t.report.quasi.entropy, QuasiEntropy::Truhlar);
    EXPECT_NEAR(T * (t.report.quasi.s - t.report.tot.s), T * d.sTruhlar, tol);
    EXPECT_DOUBLE_EQ(t.report.quasi.h, t.report.tot.h);  // no enthalpy correction asked for
  }
  std::printf("largest difference from GoodVibes: %.3g Hartree\n", largest / kJPerHartree);
}

// The soft modes of anthracene and bsl change G by more than 0.1 kJ/mol: the
// correction is not lost in the noise of the comparison above.
TEST(QuasiRrho, SoftModesMoveG) {
  SKIP_WITHOUT_TESTDATA();
  const Outcome r = RunCopy("gaussian09/bsl_opt_freq.log", {"/QS", "/QH"});
  ASSERT_TRUE(r.report.quasi.evaluated);
  EXPECT_GT(std::fabs(r.report.quasi.g - r.report.tot.g), 0.1);
  EXPECT_DOUBLE_EQ(r.report.quasi.entropyCutoff, 100.0);
}

// /CONC1: the standard state of 1 mol/L shifts G by RT ln(RT c / p) against
// 1 atm, 1.89 kcal/mol at 298.15 K, as GoodVibes' translational entropy at a
// concentration gives it.
TEST(Concentration, OneMolarShiftsGAsGoodVibes) {
  SKIP_WITHOUT_TESTDATA();
  const double T = 298.15;
  const Outcome atm = RunCopy("gaussian16/water_opt_freq.log", {});
  const Outcome molar = RunCopy("gaussian16/water_opt_freq.log", {"/CONC1"});
  ASSERT_EQ(molar.status, 0);
  // GoodVibes: 1 atm is ATMOS / (R T) mol/L.
  const double shift = kR * T * std::log(1.0 / (101.325 / (kR * T)));  // J/mol
  EXPECT_NEAR(1000.0 * (molar.report.tot.g - atm.report.tot.g), shift, 1e-6 * kJPerHartree);
  EXPECT_NEAR(shift / 4184.0, 1.89, 0.005);
  EXPECT_DOUBLE_EQ(molar.report.tot.h, atm.report.tot.h);
  EXPECT_NEAR(molar.report.pressure, 1000.0 * 8.314472145136097 * T, 1e-6);
}

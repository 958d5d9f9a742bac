// The classical Monte Carlo integration of rotations against what is known
// exactly: one hindered rotor (Q = Qf exp(-x/2) I0(x/2)), the free rotor, two
// independent rotors (Z the product of one-rotor integrals), the weight
// against the kinematic matrix of many coupled rotors, the honesty of sigma
// over seeds, and whole runs under /IRMC.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "numeric/constants.h"
#include "rotations/mode_assignment.h"
#include "rotations/monte_carlo.h"
#include "rotations/recognition.h"
#include "test_support.h"

namespace quintor {
namespace {

using namespace test;
using namespace geom;
namespace rc = constants;

constexpr double kH = 1.008, kC = 12.0;

// Three hydrogens 1.09 A from `c`, 111 degrees from the bond to `frame`,
// turned by `phase` degrees about it.
std::vector<Vec3> Methyl(const Vec3& c, const Vec3& frame, double phase) {
  const Vec3 e = Normalised(c - frame);
  const Vec3 any = std::fabs(e[0]) < 0.9 ? Vec3{1, 0, 0} : Vec3{0, 1, 0};
  const Vec3 a = Normalised(Cross(e, any)), b = Cross(e, a);
  const double theta = (180.0 - 111.0) * rc::DegToRad;
  std::vector<Vec3> h;
  for (int k = 0; k < 3; ++k) {
    const double phi = (phase + 120.0 * k) * rc::DegToRad;
    h.push_back(c + 1.09 * (std::cos(theta) * e + std::sin(theta) * (std::cos(phi) * a + std::sin(phi) * b)));
  }
  return h;
}

struct Molecule {
  std::vector<double> mass;
  std::vector<Vec3> xyz;  // bohr
};

Molecule InBohr(std::vector<double> mass, std::vector<Vec3> angstrom) {
  for (Vec3& p : angstrom) p = rc::AngstromToBohr * p;
  return {std::move(mass), std::move(angstrom)};
}

// Staggered ethane: C 1, C 2, H 3-5 on C 1, H 6-8 on C 2.
Molecule Ethane() {
  const Vec3 c1{0, 0, -0.765}, c2{0, 0, 0.765};
  std::vector<Vec3> xyz{c1, c2};
  for (const Vec3& h : Methyl(c1, c2, 0.0)) xyz.push_back(h);
  for (const Vec3& h : Methyl(c2, c1, 60.0)) xyz.push_back(h);
  return InBohr({kC, kC, kH, kH, kH, kH, kH, kH}, xyz);
}

// Propane: C 1 in the middle, C 2 and C 3 with methyl hydrogens 4-6 and 7-9,
// H 10, 11 on C 1. The two methyls share no atom.
Molecule Propane() {
  const double half = 56.0 * rc::DegToRad;
  const Vec3 c1{0, 0, 0}, c2{1.53 * std::sin(half), 0, 1.53 * std::cos(half)},
      c3{-1.53 * std::sin(half), 0, 1.53 * std::cos(half)};
  std::vector<Vec3> xyz{c1, c2, c3};
  for (const Vec3& h : Methyl(c2, c1, 0.0)) xyz.push_back(h);
  for (const Vec3& h : Methyl(c3, c1, 0.0)) xyz.push_back(h);
  xyz.push_back({0, 0.88, -0.63});
  xyz.push_back({0, -0.88, -0.63});
  return InBohr({kC, kC, kC, kH, kH, kH, kH, kH, kH, kH, kH}, xyz);
}

TorsionRotor Rotor(std::vector<int> group, int a1, int a2, double V0, int n) {
  TorsionRotor r;
  r.group = std::move(group);
  r.axisAtom1 = a1;
  r.axisAtom2 = a2;
  r.n = n;
  r.potential = SingleBarrierSeries(V0, n);
  return r;
}

// The moment of one rotor from the kinematic matrix of the mode assignment
// (finite differences, mass-weighted projection), in amu*bohr^2.
KinematicMoments Kinematics(const Molecule& m, const std::vector<TorsionRotor>& rotors) {
  std::vector<std::vector<int>> groups;
  std::vector<AxisPoints> axes;
  for (const TorsionRotor& r : rotors) {
    groups.push_back(r.group);
    axes.push_back({m.xyz[r.axisAtom1 - 1], m.xyz[r.axisAtom2 - 1], r.axisAtom1, r.axisAtom2});
  }
  return KinematicMatrix(m.mass, m.xyz, groups, axes);
}

// ln of the exact classical partition function of one rotor with
// V = V0/2 (1 - cos n x) and moment I (amu*bohr^2).
double ExactLnQ(double I, double V0, int n, double T) {
  const double iSI = I * rc::AtomicMassUnit * rc::BohrRadius * rc::BohrRadius;
  const double qf = std::sqrt(8.0 * rc::Pi * rc::Pi * rc::Pi * iSI * rc::Boltzmann * T) / (n * rc::Planck);
  // The Monte Carlo's own 1/(RT) in Hartree differs from 1000/(RT) by this factor.
  const double x = V0 * 1000.0 / (rc::GasConstant * T) * (0.0003809083380231225 * rc::HartreeToKJPerMol);
  return std::log(qf) - x / 2.0 + std::log(std::cyl_bessel_i(0.0, x / 2.0));
}

struct Exact {
  double S, CV;
};
Exact ExactFunctions(double I, double V0, int n, double T) {
  const double h = 1e-2 * T;
  const auto f = [&](double t) { return ExactLnQ(I, V0, n, t); };
  const double d1 = (f(T - 2 * h) - 8 * f(T - h) + 8 * f(T + h) - f(T + 2 * h)) / (12 * h);
  const double d2 = (-f(T - 2 * h) + 16 * f(T - h) - 30 * f(T) + 16 * f(T + h) - f(T + 2 * h)) / (12 * h * h);
  const double R = rc::GasConstant;
  return {R * (f(T) + T * d1), R * (2 * T * d1 + T * T * d2)};
}

// ---- One rotor against the exact classical rotor ---------------------------

// The five-point slope over 10 dT, dT = 0.001 T, is exact to 0.57 (dT/T)^2
// relative: about 5e-6 J/K/mol in S and 1e-5 to 3e-5 in CV (with the
// reference's own differences).
constexpr double kFormula = 2e-5;

struct OneRotorCase {
  double V0;  // kJ/mol
  int n;
  double T;
};

class OneRotor : public ::testing::TestWithParam<OneRotorCase> {};

TEST_P(OneRotor, MatchesTheExactClassicalRotor) {
  const OneRotorCase c = GetParam();
  const Molecule m = Ethane();
  const std::vector<TorsionRotor> rotors{Rotor({1, 3, 4, 5}, 1, 2, c.V0, c.n)};
  const double I = Kinematics(m, rotors).I0[0];
  const Exact exact = ExactFunctions(I, c.V0, c.n, c.T);
  constexpr long long kTrials = 20000;
  // S with the run's own sigma; CV with the spread of independent runs.
  constexpr int kRuns = 6;
  double sumCV = 0.0, sumCV2 = 0.0;
  for (int k = 0; k < kRuns; ++k) {
    const MonteCarloResult r =
        MonteCarloAtT(rotors, m.mass, m.xyz, c.T, kTrials, {static_cast<std::uint32_t>(11 + k), 7u});
    EXPECT_NEAR(r.S, exact.S, 3.0 * r.sigmaS + kFormula) << "run " << k;
    sumCV += r.CV;
    sumCV2 += r.CV * r.CV;
  }
  const double meanCV = sumCV / kRuns;
  const double errorCV = std::sqrt(std::max(sumCV2 / kRuns - meanCV * meanCV, 0.0) / (kRuns - 1));
  EXPECT_NEAR(meanCV, exact.CV, 3.0 * errorCV + 3.0 * kFormula);
}

INSTANTIATE_TEST_SUITE_P(MonteCarlo, OneRotor,
                         ::testing::Values(OneRotorCase{0.0, 3, 298.15},  // free rotor
                                           OneRotorCase{0.0, 1, 50.0}, OneRotorCase{4.0, 3, 298.15},
                                           OneRotorCase{12.0, 3, 298.15}, OneRotorCase{12.0, 3, 150.0},
                                           OneRotorCase{12.0, 3, 1000.0}, OneRotorCase{8.0, 2, 400.0},
                                           // a fold beyond the ten terms of a Fourier series keeps its barrier
                                           OneRotorCase{12.0, 12, 298.15}),
                         [](const auto& info) { return "Case" + std::to_string(info.index); });

TEST(MonteCarlo, FreeRotorIsExact) {
  const Molecule m = Ethane();
  const std::vector<TorsionRotor> rotors{Rotor({1, 3, 4, 5}, 1, 2, 0.0, 3)};
  const double I = Kinematics(m, rotors).I0[0];
  const MonteCarloResult r = MonteCarloAtT(rotors, m.mass, m.xyz, 298.15, 1000, {});
  EXPECT_NEAR(r.lnZ, ExactLnQ(I, 0.0, 3, 298.15), 1e-7);  // I of the kinematic matrix by differences
  EXPECT_NEAR(r.S, rc::GasConstant * (r.lnZ + 0.5), kFormula);
  EXPECT_NEAR(r.CV, rc::GasConstant / 2.0, 1e-4);
  EXPECT_NEAR(r.U, rc::GasConstant * 298.15 / 2000.0, 1e-5);
}

// ---- The weight against the kinematic matrix ------------------------------

TEST(MonteCarlo, WeightIsTheRootOfTheKinematicDeterminant) {
  const Molecule e = Ethane(), p = Propane();
  const std::vector<TorsionRotor> one{Rotor({1, 3, 4, 5}, 1, 2, 0.0, 3)};
  EXPECT_NEAR(KinematicWeight(one, e.mass, e.xyz), std::sqrt(Kinematics(e, one).matrix[0][0]), 1e-6);
  // Two rotations that share atoms: the determinant is not the product of the diagonal.
  const std::vector<TorsionRotor> two{Rotor({2, 4, 5, 6}, 2, 1, 0.0, 3), Rotor({3, 7, 8, 9}, 3, 1, 0.0, 3)};
  const auto k = Kinematics(p, two).matrix;
  EXPECT_NEAR(KinematicWeight(two, p.mass, p.xyz), std::sqrt(k[0][0] * k[1][1] - k[0][1] * k[1][0]), 1e-6);
  const std::vector<TorsionRotor> nested{Rotor({2, 4, 5, 6}, 2, 1, 0.0, 3),
                                         Rotor({2, 4, 5, 6, 1, 10, 11}, 1, 3, 0.0, 1)};
  const auto kn = Kinematics(p, nested).matrix;
  EXPECT_GT(std::fabs(kn[0][1]), 0.1);
  EXPECT_NEAR(KinematicWeight(nested, p.mass, p.xyz), std::sqrt(kn[0][0] * kn[1][1] - kn[0][1] * kn[1][0]), 1e-5);
}

// ---- Many coupled rotors: n-hexadecane -------------------------------------

struct Hexadecane {
  Molecule m;
  std::vector<TorsionRotor> rotors;  // the 15 that /ARIR finds, V0 12 kJ/mol each
  std::vector<double> I;             // their I(**) as the run prints them
};

Hexadecane HexadecaneRotors() {
  Hexadecane h;
  LogRun run(TestInput("../../examples/hexadecane_xtb.out"), {"/ARIR"});
  if (run.r.status != exit_status::Ok) return h;
  h.m.mass.assign(run.s.atomMass.begin(), run.s.atomMass.begin() + run.s.nAtoms);
  h.m.xyz.assign(run.s.xyz.begin(), run.s.xyz.begin() + run.s.nAtoms);
  for (const IntRot& r : run.s.rotors) {
    const AxisPoints a = RotationAxisPoints(h.m.mass, h.m.xyz, r.group, r.axis);
    h.rotors.push_back(Rotor(r.group, a.atom1, a.atom2, 12.0, std::max(r.symmetryNumber, 1)));
  }
  for (const RotorRecord& r : run.s.thermo.report.rotors) h.I.push_back(r.iStarStar);
  return h;
}

// I(**) of rotor i is 1/(K^-1)_ii = det K / det K', K' without row and
// column i. The determinants come from the Monte Carlo's own weight, built
// from the axes directly; the moments from the kinematic matrix of the mode
// assignment. With 15 rotors in a chain every sign of the coupling counts.
TEST(MonteCarlo, CoupledMomentsOfAChainAreTheKinematicOnes) {
  const Hexadecane h = HexadecaneRotors();
  ASSERT_EQ(h.rotors.size(), 15u);
  ASSERT_EQ(h.I.size(), 15u);
  const double all = KinematicWeight(h.rotors, h.m.mass, h.m.xyz);
  for (size_t i = 0; i < h.rotors.size(); ++i) {
    std::vector<TorsionRotor> others = h.rotors;
    others.erase(others.begin() + static_cast<long>(i));
    const double without = KinematicWeight(others, h.m.mass, h.m.xyz);
    EXPECT_NEAR(h.I[i], all * all / (without * without), 1e-4 * h.I[i]) << "rotor " << i + 1;
  }
}

// Eight seed pairs on all 15 rotors agree within 3 sigma: the batch-mean
// sigma is honest even where the coupling varies most.
TEST(MonteCarlo, SigmaOfFifteenRotorsIsHonest) {
  const Hexadecane h = HexadecaneRotors();
  ASSERT_EQ(h.rotors.size(), 15u);
  std::vector<MonteCarloResult> runs;
  for (std::uint32_t k = 0; k < 8; ++k)
    runs.push_back(MonteCarloAtT(h.rotors, h.m.mass, h.m.xyz, 298.15, 16384, {1802 + 17 * k, 9373 + 31 * k}));
  double mean = 0.0;
  for (const MonteCarloResult& r : runs) mean += r.S / static_cast<double>(runs.size());
  for (const MonteCarloResult& r : runs) {
    EXPECT_GT(r.sigmaS, 0.0);
    // The five temperatures share their uniform numbers: reweighting one
    // sample instead left sigma(S) near 0.18 at this count.
    EXPECT_LT(r.sigmaS, 0.06);
    EXPECT_NEAR(r.S, mean, 3.0 * r.sigmaS);
  }
}

// Without a count the sampling goes on until sigma(S) <= 0.05 J/K/mol.
TEST(MonteCarlo, DefaultCountReachesTheTargetSigma) {
  const Hexadecane h = HexadecaneRotors();
  ASSERT_GE(h.rotors.size(), 4u);
  const std::vector<TorsionRotor> four(h.rotors.begin() + 1, h.rotors.begin() + 5);
  const MonteCarloResult r = MonteCarloAtT(four, h.m.mass, h.m.xyz, 298.15, 0, {});
  EXPECT_LE(r.sigmaS, 0.05);
  EXPECT_GE(r.trials, MonteCarloFewestTrials);
}

// ---- Two independent rotors ----------------------------------------------

TEST(MonteCarlo, IndependentRotorsGiveTheProductOfTheirIntegrals) {
  const Molecule m = Propane();
  const std::vector<TorsionRotor> rotors{Rotor({2, 4, 5, 6}, 2, 1, 8.0, 3), Rotor({3, 7, 8, 9}, 3, 1, 4.0, 3)};
  const auto k = Kinematics(m, rotors).matrix;
  const double root = std::sqrt(k[0][0] * k[1][1] - k[0][1] * k[1][0]);
  for (double T : {200.0, 298.15, 700.0}) {
    const double kinetic = std::sqrt(2.0 * rc::Pi * rc::Boltzmann * T * rc::AtomicMassUnit * rc::BohrRadius *
                                     rc::BohrRadius / (rc::Planck * rc::Planck));
    double exact = root;
    for (const TorsionRotor& r : rotors) {
      const ConfigurationIntegral c = RotorConfigurationIntegral(r.potential, T);
      // The companion routine against the Bessel function.
      const double x = r.potential[0] * 2.0 * 1000.0 / (rc::GasConstant * T);
      EXPECT_NEAR(c.value, 2.0 * rc::Pi * std::exp(-x / 2.0) * std::cyl_bessel_i(0.0, x / 2.0), 1e-9);
      EXPECT_DOUBLE_EQ(c.xb - c.xa, 2.0 * rc::Pi);
      exact *= kinetic * c.value / r.n;
    }
    const MonteCarloResult r = MonteCarloAtT(rotors, m.mass, m.xyz, T, 50000, {5, 6});
    // The Monte Carlo's 1/(RT) is 5e-5 larger than that of the integrals.
    EXPECT_NEAR(r.Z[2], exact, 3.0 * r.sigmaZ[2] + 2e-4 * exact) << "T = " << T;
  }
}

// A potential of several terms, summed here term by term: every cosine of
// the series counts with its own index.
TEST(MonteCarlo, SeveralTermsAreSummedTermByTerm) {
  const std::vector<double> V{6.0, 2.0, -1.5, -4.0, 0.0, 0.5};
  const double T = 298.15, rt = rc::GasConstant * T / 1000.0;
  constexpr int kPoints = 20000;
  double direct = 0.0;
  for (int k = 0; k < kPoints; ++k) {
    const double x = 2.0 * rc::Pi * k / kPoints;
    double v = 0.0;
    for (size_t m = 0; m < V.size(); ++m) v += V[m] * std::cos(static_cast<double>(m) * x);
    direct += std::exp(-v / rt) * 2.0 * rc::Pi / kPoints;
  }
  EXPECT_NEAR(RotorConfigurationIntegral(V, T).value, direct, 1e-9 * direct);
  // The same curve in the integration: one free-standing rotor, whose
  // weight does not vary, gives Z = kinetic factor x integral / n exactly.
  const Molecule m = Ethane();
  TorsionRotor r = Rotor({1, 3, 4, 5}, 1, 2, 0.0, 1);
  r.potential = V;
  const double I = Kinematics(m, {r}).I0[0];
  const double kinetic = std::sqrt(2.0 * rc::Pi * rc::Boltzmann * T * rc::AtomicMassUnit * rc::BohrRadius *
                                   rc::BohrRadius / (rc::Planck * rc::Planck));
  // The Monte Carlo's 1/(RT) is 5e-5 larger than that of the direct sum.
  const MonteCarloResult mc = MonteCarloAtT({r}, m.mass, m.xyz, T, 2000, {});
  EXPECT_NEAR(mc.Z[2], kinetic * std::sqrt(I) * direct, 2e-3 * mc.Z[2]);
}

// ---- Threads, seeds, ladder ------------------------------------------------

TEST(MonteCarlo, ResultDoesNotDependOnTheThreadCount) {
  const Molecule m = Propane();
  // Symmetric tops would give a weight that does not vary: two of the
  // methyl's hydrogens turn alone.
  const std::vector<TorsionRotor> rotors{Rotor({2, 4, 5}, 2, 1, 8.0, 3),
                                         Rotor({2, 4, 5, 6, 1, 10, 11}, 1, 3, 3.0, 1)};
  const MonteCarloSeeds seeds{3, 4};
  const MonteCarloResult one = MonteCarloAtT(rotors, m.mass, m.xyz, 298.15, 20000, seeds, 1);
  const MonteCarloResult two = MonteCarloAtT(rotors, m.mass, m.xyz, 298.15, 20000, seeds, 2);
  const MonteCarloResult three = MonteCarloAtT(rotors, m.mass, m.xyz, 298.15, 20000, seeds, 3);
  EXPECT_NEAR(one.Z[2], two.Z[2], 1e-12 * one.Z[2]);
  EXPECT_NEAR(one.Z[2], three.Z[2], 1e-12 * one.Z[2]);
  EXPECT_NEAR(one.CV, two.CV, 1e-6);
  const MonteCarloResult other = MonteCarloAtT(rotors, m.mass, m.xyz, 298.15, 20000, {9, 10});
  EXPECT_NE(one.Z[2], other.Z[2]);
  EXPECT_NEAR(one.Z[2], other.Z[2], 5.0 * one.sigmaZ[2]);
}

TEST(MonteCarlo, TrialLadder) {
  const std::vector<std::pair<int, long long>> ladder{{1, 100},      {2, 1000},     {3, 1000},      {4, 10000},
                                                      {5, 10000},    {6, 100000},   {7, 100000},    {8, 1000000},
                                                      {9, 1000000},  {10, 10000000}, {15, 10000000}, {20, 10000000}};
  for (const auto& [rotors, trials] : ladder) EXPECT_EQ(MonteCarloTrials(rotors, 0), trials) << rotors;
  EXPECT_EQ(MonteCarloTrials(12, 500), 500);
}

// ---- Whole runs ---------------------------------------------------------------

TEST(MonteCarloRun, FillsTheSixthColumnAndTheReport) {
  LogRun run(TestInput("rotations/ethane_xtb.out"), {"/ARIR", "/IRMC20000"});
  ASSERT_EQ(run.r.status, exit_status::Ok) << run.r.console;
  const std::string& log = run.r.log;
  EXPECT_EQ(Words(LineWith(log, " Cv, J/K/mol=")).size(), 10u);
  EXPECT_EQ(Words(LineWith(log, "E+G  ")).size(), 9u);
  EXPECT_EQ(CountText(log, " *** Calculation of the internal rotation contributions by the classical Monte Carlo"),
            1);
  EXPECT_EQ(CountText(log, " Thermodynamics of internal rotations calculated by Monte Carlo method:\n"), 1);
  EXPECT_EQ(CountText(log, "calculated by Monte Carlo method:\n"), 2);
  const std::string mco = ReadFile(std::filesystem::path(run.copy).replace_extension(".mco"));
  // The full evaluation and the 50 rows of the fixed table.
  EXPECT_EQ(CountText(mco, " MC trials   =      20000\n"), 51);
  EXPECT_EQ(CountText(mco, " Random seeds=       1802      9373\n"), 51);
  EXPECT_EQ(CountText(mco, " Configuration integrals for the independent internal rotations\n"), 1);
  // The IRMC column is the harmonic totals with the mode replaced by the
  // classical hindered rotor: near the Pitzer-Gwinn column of the same run.
  const std::vector<std::string> s = Words(LineWith(log, " S,  J/K/mol="));
  ASSERT_EQ(s.size(), 10u);
  EXPECT_NEAR(Num(s[9]), Num(s[6]), 1.0);
}

// Fifteen rotors give Z far beyond a fixed field: each number still reads back.
TEST(MonteCarloRun, ReportHoldsAnyZ) {
  MonteCarloResult r;
  r.Z = {3.5, 1.0e12, 2.5e40, 7.0e90, 0.25};
  r.sigmaZ = {0.1, 2.0e10, 1.0e38, 3.0e88, 0.01};
  std::ostringstream out;
  WriteMonteCarloReport(out, r, 1000, 15, {1, 2});
  const std::string text = out.str();
  EXPECT_EQ(text.find('*'), std::string::npos);
  const std::vector<std::string> z = Words(LineWith(text, " Z         ="));
  ASSERT_EQ(z.size(), 10u);  // Z, =, Z(T), (, five values, )
  for (int j = 0; j < 5; ++j) EXPECT_NEAR(std::stod(z[4 + j]) / r.Z[j], 1.0, 1e-6) << z[4 + j];
  EXPECT_NEAR(std::stod(z[2]) / r.Z[2], 1.0, 1e-6);
}

TEST(MonteCarloRun, WithoutIrmcTheSixthValueIsAbsent) {
  LogRun run(TestInput("rotations/ethane_xtb.out"), {"/ARIR"});
  ASSERT_EQ(run.r.status, exit_status::Ok) << run.r.console;
  EXPECT_EQ(Words(LineWith(run.r.log, " Cv, J/K/mol=")).size(), 9u);
  EXPECT_NE(run.r.log.find("Ocsillator  I(*)    I(**)     I(*)    I(**)     I(*)    I(**)     IRMC"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(std::filesystem::path(run.copy).replace_extension(".mco")));
}

TEST(MonteCarloRun, SeedsFromTheSpecFileMakeTheRunRepeatable) {
  TempDir spec;
  const std::string name = spec.Write("seeds.tdi", "MCSEEDS=(11,22)\n");
  std::string first, second;
  for (std::string* mco : {&first, &second}) {
    LogRun run(TestInput("rotations/ethane_xtb.out"), {"/ARIR", "/IRMC5000", "/@" + name});
    ASSERT_EQ(run.r.status, exit_status::Ok) << run.r.console;
    *mco = ReadFile(std::filesystem::path(run.copy).replace_extension(".mco"));
  }
  EXPECT_NE(first.find(" Random seeds=         11        22\n"), std::string::npos);
  EXPECT_EQ(first, second);
}

}  // namespace
}  // namespace quintor

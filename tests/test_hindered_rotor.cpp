#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "io/fortran_io.h"
#include "numeric/vec3.h"
#include "quantum_rotor.h"
#include "rotations/fourier_potential.h"
#include "rotations/hindered_rotor.h"
#include "rotations/pitzer_gwinn_tables.h"
#include "rotations/quantum_rotor.h"
#include "rotations/reduced_moment.h"

namespace quintor {
namespace {

using namespace geom;
using testing::ExactHinderedRotor;
using testing::QuantumRotor;

// The test's own constants, CODATA 1998 as the program.
constexpr double kPi = 3.14159265358979323846;
constexpr double kPlanck = 6.62606876e-34;
constexpr double kBoltzmann = 1.3806503e-23;
constexpr double kR = 8.314472145136097;
constexpr double kAmuBohr2 = 1.66053873e-27 * 5.291772083e-11 * 5.291772083e-11;

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// Moment (kg m^2) and barrier (kJ/mol) that put a rotor of fold n at
// temperature T at the table point x = V0/RT, y = 1/Qf.
struct RotorInput {
  double V0, moment;
};
RotorInput AtTablePoint(double x, double y, int n, double T) {
  const double moment = std::pow(n * kPlanck / y, 2) / (8.0 * kPi * kPi * kPi * kBoltzmann * T);
  return {x * kR * T / 1000.0, moment};
}

// ---- The tables ----------------------------------------------------------

// The master copy: "# table k ..." heads a block of a "y\x" line and rows "y v1 v2 ...".
TEST(PitzerGwinnTables, BuiltInDataMatchTheSharedMasterCopy) {
  const std::string path = QUINTOR_TESTDATA "/../data/pitzer_gwinn_tables.txt";
  if (!std::filesystem::exists(path)) GTEST_SKIP() << "master copy of the tables not found: " << path;
  std::vector<std::vector<std::vector<double>>> file;  // [table][line][values], line 0 the x row
  std::ifstream in(path);
  for (std::string line; std::getline(in, line);) {
    if (line.rfind("# table", 0) == 0) file.emplace_back();
    if (file.empty() || line.empty() || line[0] == '#') continue;
    std::istringstream words(line.rfind("y\\x", 0) == 0 ? line.substr(3) : line);
    file.back().emplace_back();
    for (double v; words >> v;) file.back().back().push_back(v);
  }
  ASSERT_EQ(file.size(), 4u);
  for (int t = 1; t <= 4; ++t) {
    SCOPED_TRACE(t);
    const PitzerGwinnTable& built = PitzerGwinnTableNo(t);
    const auto& parsed = file[t - 1];
    ASSERT_EQ(parsed.size(), built.rows.size() + 1);
    EXPECT_EQ(parsed[0], std::vector<double>(PitzerGwinnX.begin(), PitzerGwinnX.end()));
    for (size_t i = 0; i < built.rows.size(); ++i) {
      std::vector<double> row{built.y[i]};
      row.insert(row.end(), built.rows[i].begin(), built.rows[i].end());
      EXPECT_EQ(parsed[i + 1], row) << "row " << i;
    }
  }
}

// ---- Free rotor and barrier ------------------------------------------------

struct FreeCase {
  double momentAmuBohr2;
  int n;
  double T;
};
const FreeCase kFreeCases[] = {{3.2, 3, 298.15}, {3.2, 3, 1000.0}, {11.0, 1, 150.0}, {60.0, 2, 500.0}};

// Qf = sqrt(pi / theta) / n, theta = hbar^2 / (2 I k T); and without a
// barrier the exact levels m^2 hbar^2/2I sum to the same Qf.
TEST(FreeRotor, ClassicalFunctionsAndTheExactLevels) {
  for (const FreeCase& c : kFreeCases) {
    SCOPED_TRACE(c.T);
    const double I = c.momentAmuBohr2 * kAmuBohr2;
    const double qf = std::sqrt(kPi / testing::RotationalTemperatureRatio(I, c.T)) / c.n;
    const RotorFunctions f = FreeRotor(I, c.n, c.T);
    EXPECT_NEAR(1.0 / InverseFreeRotorQ(I, c.n, c.T), qf, 1e-9 * qf);
    EXPECT_DOUBLE_EQ(f.C, kR / 2.0);
    EXPECT_NEAR(f.S, kR * (std::log(qf) + 0.5), 1e-9);
    EXPECT_NEAR(f.U, kR * c.T / 2000.0, 1e-12);
    EXPECT_EQ(f.H, f.U);
    EXPECT_NEAR(f.G, f.U - c.T * f.S / 1000.0, 1e-12);
    const QuantumRotor q = ExactHinderedRotor(0.0, I, c.n, c.T);
    EXPECT_NEAR(q.Q, qf, 1e-6 * qf);
    EXPECT_NEAR(q.S, f.S, 1e-4);
    EXPECT_NEAR(q.C, f.C, 1e-4);
  }
}

// The frequency formula is the harmonic limit of V0/2 (1 - cos n phi):
// omega^2 = n^2 V0 / (2 I) per molecule. Going there and back returns V0.
TEST(Barrier, FromFrequencyInvertsTheHarmonicLimit) {
  for (const auto& [V0, moment, n] : {std::tuple{12.0, 11.0, 3}, std::tuple{4.0, 3.2, 1}, std::tuple{0.5, 2.0, 6}}) {
    const double I = moment * kAmuBohr2;
    const double omega = std::sqrt(n * n * V0 * 1000.0 / 6.02214199e23 / (2.0 * I));  // rad/s
    EXPECT_NEAR(BarrierFromFrequency(I, omega / (2.0 * kPi * 299792458.0 * 100.0), n), V0, 1e-9 * V0);
  }
  EXPECT_EQ(BarrierFromFrequency(kAmuBohr2, 0.0, 3), 0.0);
  EXPECT_EQ(BarrierFromFrequency(kAmuBohr2, -120.0, 3), 0.0);
}

// ---- Pitzer-Gwinn against the exact quantum rotor ---------------------------

TEST(PitzerGwinn, WithinQuarterJouleOfExactQuantumRotorInsideTheTables) {
  PitzerTables tables = BuildPitzerTables();
  const double kTs[] = {150.0, 298.15, 1000.0};
  int k = 0;
  for (double y : {0.01, 0.12, 0.25, 0.26, 0.4, 0.55, 0.6})
    for (int n = 1; n <= 3; ++n)
      for (double x : {0.0, 0.9, 2.5, 4.2, 7.5, 11.0, 15.0, 19.5, 20.0}) {
        const double T = kTs[k++ % 3];
        SCOPED_TRACE(::testing::Message() << "x=" << x << " y=" << y << " n=" << n << " T=" << T);
        const RotorInput in = AtTablePoint(x, y, n, T);
        const RotorFunctions pg = PitzerGwinnRotor(tables, in.V0, in.moment, n, T);
        const QuantumRotor q = ExactHinderedRotor(in.V0, in.moment, n, T);
        EXPECT_NEAR(pg.S, q.S, 0.25);
        EXPECT_NEAR(pg.C, q.C, 0.25);
        EXPECT_NEAR(pg.H * 1000.0 / T, q.HoverT, 0.25);
      }
  EXPECT_EQ(tables.counters.missC + tables.counters.missHoverT + tables.counters.missS, 0);
}

// ---- The program's quantum rotor -------------------------------------------------

// The band of all plane waves gives the levels of the reference's symmetry
// blocks.
TEST(QuantumRotor, BandOfAllWavesMatchesTheSymmetryBlocks) {
  for (double V0 : {0.0, 1.5, 12.0, 45.0})
    for (double moment : {2.0, 10.8, 80.0})
      for (int n : {1, 2, 3, 6})
        for (double T : {20.0, 298.15, 1000.0}) {
          SCOPED_TRACE(::testing::Message() << "V0=" << V0 << " I=" << moment << " n=" << n << " T=" << T);
          const double I = moment * kAmuBohr2;
          const RotorFunctions f = QuantumRotorAt(QuantumRotorLevels(SingleBarrierPotential(V0, n), I, n, T), T);
          const QuantumRotor q = ExactHinderedRotor(V0, I, n, T);
          EXPECT_NEAR(f.S, q.S, 1e-6);
          EXPECT_NEAR(f.C, q.C, 1e-6);
          EXPECT_NEAR(f.H * 1000.0 / T, q.HoverT, 1e-6);
          EXPECT_NEAR(f.G, f.U - T * f.S / 1000.0, 1e-12);
        }
}

// Without a barrier the levels m^2 hbar^2/2I reach the classical free rotor
// (the theta series differs by exp(-pi^2/theta)).
TEST(QuantumRotor, NoBarrierIsTheFreeRotor) {
  for (const FreeCase& c : kFreeCases) {
    const double I = c.momentAmuBohr2 * kAmuBohr2;
    if (testing::RotationalTemperatureRatio(I, c.T) > 0.3) continue;
    const RotorFunctions f = QuantumRotorAt(QuantumRotorLevels(SingleBarrierPotential(0.0, c.n), I, c.n, c.T), c.T);
    const RotorFunctions free = FreeRotor(I, c.n, c.T);
    EXPECT_NEAR(f.S, free.S, 1e-6);
    EXPECT_NEAR(f.C, free.C, 1e-6);
  }
}

// A barrier far above kT leaves n alike harmonic wells of
// omega = n sqrt(V0 / 2I): the partition function over n is that of one
// oscillator, less the wells' anharmonicity (of order kT/V0).
TEST(QuantumRotor, HighBarrierIsTheHarmonicOscillator) {
  const double hbar = kPlanck / (2.0 * kPi);
  for (const auto& [V0, moment, n, T] :
       {std::tuple{800.0, 5.6, 3, 298.15}, std::tuple{1500.0, 40.0, 1, 500.0}, std::tuple{600.0, 11.0, 2, 150.0}}) {
    SCOPED_TRACE(V0);
    const double I = moment * kAmuBohr2;
    const double omega = n * std::sqrt(V0 * 1000.0 / 6.02214199e23 / (2.0 * I));
    const double x = hbar * omega / (kBoltzmann * T);
    const double sHO = kR * (x / std::expm1(x) - std::log(-std::expm1(-x)));
    const double cHO = kR * x * x * std::exp(x) / (std::expm1(x) * std::expm1(x));
    const QuantumLevels levels = QuantumRotorLevels(SingleBarrierPotential(V0, n), I, n, T);
    const RotorFunctions f = QuantumRotorAt(levels, T);
    EXPECT_NEAR(f.S, sHO, 0.03 * kR);
    EXPECT_NEAR(f.C, cHO, 0.03 * kR);
    // The lowest level is the zero-point energy of the well.
    EXPECT_NEAR(levels.E.front(), 0.5 * hbar * omega * 6.02214199e23 / 1000.0, 0.01 * levels.E.front());
  }
}

// Where the tables are good the program's Pitzer-Gwinn rotor is within the
// tables' own accuracy of the exact levels.
TEST(QuantumRotor, PitzerGwinnTablesAgreeWhereTheyAreGood) {
  PitzerTables tables = BuildPitzerTables();
  for (double y : {0.05, 0.2, 0.3, 0.45, 0.6})
    for (int n : {1, 3})
      for (double x : {0.2, 1.0, 3.0, 6.0, 10.0, 16.0}) {
        SCOPED_TRACE(::testing::Message() << "x=" << x << " y=" << y << " n=" << n);
        const double T = 298.15;
        const RotorInput in = AtTablePoint(x, y, n, T);
        const RotorFunctions pg = PitzerGwinnRotor(tables, in.V0, in.moment, n, T);
        const RotorFunctions q =
            QuantumRotorAt(QuantumRotorLevels(SingleBarrierPotential(in.V0, n), in.moment, n, T), T);
        EXPECT_NEAR(pg.S, q.S, 0.06);
      }
}

// ---- Look-up rules -----------------------------------------------------------

TEST(PitzerLookUp, BeyondTwentyRTEveryTableMisses) {
  PitzerTables tables = BuildPitzerTables();
  const PitzerValues v = PitzerLookUp(tables, 0.25, 20.5, 10.0);
  EXPECT_EQ(v.C + v.HoverT + v.S, 0.0);
  EXPECT_EQ(tables.counters.fromTable4, 1);
  PitzerLookUp(tables, 0.6, 1000.0, 0.0);
  EXPECT_EQ(tables.counters.calls, 2);
  EXPECT_EQ(tables.counters.missC + tables.counters.missHoverT + tables.counters.missS, 6);
  EXPECT_DOUBLE_EQ(PitzerErrorPercent(tables.counters), 100.0);
  // A real rotor: a stiff OH-like top at 100 K.
  const RotorFunctions f = PitzerGwinnRotor(tables, 30.0, 0.9 * kAmuBohr2, 1, 100.0);
  EXPECT_EQ(f.C + f.S + f.U, 0.0);
}

TEST(PitzerLookUp, RowsPastTheTablesMissOnlyWhereTheyEnd) {
  PitzerTables tables = BuildPitzerTables();
  // y = 0.97 lies beyond all rows: C, H/T and S (table 3) miss.
  PitzerLookUp(tables, 0.97, 3.0, 0.0);
  EXPECT_EQ(tables.counters.missC + tables.counters.missHoverT + tables.counters.missS, 3);
  // x exactly 20 and y exactly 0.95 are the last grid line: no miss.
  const PitzerValues edge = PitzerLookUp(tables, 0.95, 20.0, 0.0);
  EXPECT_NEAR(edge.C, 0.109 * 4.184, 1e-12);
  EXPECT_NEAR(edge.S, 0.018 * 4.184, 1e-12);
  EXPECT_EQ(tables.counters.missC, 1);
  EXPECT_DOUBLE_EQ(PitzerErrorPercent(tables.counters), 50.0);
  EXPECT_EQ(PitzerErrorPercent(PitzerCounters{}), 0.0);
}

TEST(PitzerLookUp, YOfOneQuarterTakesTheEntropyFromTableFour) {
  PitzerTables tables = BuildPitzerTables();
  const double sFree = kR * (std::log(4.0) + 0.5);
  const PitzerValues at = PitzerLookUp(tables, 0.25, 3.0, sFree);
  EXPECT_NEAR(at.S, sFree - 0.740 * 4.184, 1e-12);
  const PitzerValues above = PitzerLookUp(tables, 0.25 + 1e-12, 3.0, sFree);
  EXPECT_EQ(tables.counters.fromTable4, 1);
  // Both tables describe the same rotor: they meet to the last printed digit.
  EXPECT_NEAR(above.S, 3.008 * 4.184, 1e-6);
  EXPECT_NEAR(above.S, at.S, 0.01);
}

// V0 = 0 from a non-positive frequency sits on the first grid column.
TEST(PitzerLookUp, ZeroBarrierIsTheFreeRotor) {
  PitzerTables tables = BuildPitzerTables();
  for (double y : {0.05, 0.4}) {
    const double I = AtTablePoint(0.0, y, 3, 298.15).moment;
    const RotorFunctions pg = PitzerGwinnRotor(tables, BarrierFromFrequency(I, -50.0, 3), I, 3, 298.15);
    const RotorFunctions free = FreeRotor(I, 3, 298.15);
    EXPECT_NEAR(pg.C, free.C, 0.005);
    EXPECT_NEAR(pg.S, free.S, 0.005);
    EXPECT_NEAR(pg.G, pg.U - 298.15 * pg.S / 1000.0, 1e-12);
  }
}

// ---- Print -----------------------------------------------------------------

TEST(RotorPrint, BarrierLinesAndTableOfFiveModels) {
  std::ostringstream out, low, table;
  const double I = 11.0 * kAmuBohr2;
  WriteBarrierHeight(out, 3, 4.184, 300.0, I, I);
  const std::vector<std::string> lines = Lines(out.str());
  ASSERT_EQ(lines.size(), 5u);
  EXPECT_EQ(lines[0], " Rotation barrier height for n-fold potential V=V0/2*[1-Cos(n*x)] (n=3):");
  EXPECT_EQ(lines[1], " V0 =     4.1840   kJ/mol          1.0000 kcal/mol          1.6774 RT   (T=  300.00K)");
  EXPECT_EQ(lines[2], " => Hindered rotation (V0>1.4RT)");
  const std::string y = FmtE(InverseFreeRotorQ(I, 3, 300.0), 15, 6);
  EXPECT_EQ(lines[3], " Free-rotation function: 1/Qf =  " + y + "   Qf =  " + FmtE(1.0 / InverseFreeRotorQ(I, 3, 300.0), 15, 6));
  EXPECT_EQ(lines[4].substr(0, 48), " Free-rotation (Pitzer): 1/Qf =  " + y);
  WriteBarrierHeight(low, 1, 0.0, 300.0, I, I);
  EXPECT_EQ(Lines(low.str()).at(2), " => Free rotation (V0<1.4RT)");

  RotorResult r;
  for (int c = 0; c < RotorColumnCount; ++c) r.column[c] = {1.0 + c, 0.5 * c, 0.5 * c, 10.0 * c, 0.0 - 0.25 * c};
  r.zpe = 1.5;
  WriteRotorTable(table, 2, 17, r);
  const std::vector<std::string> rows = Lines(table.str());
  ASSERT_EQ(rows.size(), 15u);
  EXPECT_EQ(rows[0], " Thermodynamic functions for internal rotation  2 (vibration mode 17)");
  EXPECT_EQ(rows[2], "                 Ocsillator  I(*)    I(**)     I(*)    I(**)     I(*)    I(**)");
  EXPECT_EQ(rows[3], " C,    J/K/mol=    1.000    2.000    3.000    4.000    5.000    6.000    7.000");
  EXPECT_EQ(rows[10], " G+ZPE,kJ/mol =    1.500    1.250    1.000    0.750    0.500    0.250    0.000");
  EXPECT_EQ(rows[14], " Note: I(*)=I(**) for symmetric rotors.");
}

// ---- Fourier barrier ---------------------------------------------------------

// V(phi) = sum over terms {fold, V} of V/2 (1 - cos fold phi), every `step`
// degrees from 0 to 360, in kJ/mol.
std::vector<PotentialPoint> Scan(const std::vector<std::pair<int, double>>& terms, double step, double offset = 0.0) {
  std::vector<PotentialPoint> p;
  for (double a = 0.0; a <= 360.0 + 1e-9; a += step) {
    double e = offset;
    for (const auto& [fold, V] : terms) e += V / 2.0 * (1.0 - std::cos(fold * a * kPi / 180.0));
    p.push_back({a, e});
  }
  return p;
}

TEST(FourierPotential, PureThreefoldCosineGivesItsBarrier) {
  for (const auto& [V0, step] : {std::pair{12.0, 10.0}, std::pair{2.9 * 4.184, 5.0}, std::pair{0.8, 10.0},
                                 std::pair{25.0, 2.5}, std::pair{12.0, 15.0}, std::pair{12.0, 12.0}}) {
    SCOPED_TRACE(::testing::Message() << V0 << " step " << step);
    std::ostringstream out;
    const FourierBarrier f = FourierPotential(Scan({{3, V0}}, step, -154.2), 3, false, out);
    EXPECT_NEAR(f.V0, V0, 0.01);
    EXPECT_NEAR(f.range, V0, 1e-9);
    EXPECT_EQ(f.n, 3);
  }
}

TEST(FourierPotential, PointsInAnyOrderGiveTheSameBarrier) {
  std::vector<PotentialPoint> points = Scan({{3, 11.0}, {1, 3.0}}, 10.0);
  std::ostringstream out;
  const FourierBarrier ordered = FourierPotential(points, 3, false, out);
  std::mt19937 shuffle(7);
  for (int trial = 0; trial < 4; ++trial) {
    trial == 3 ? std::reverse(points.begin(), points.end()) : std::shuffle(points.begin(), points.end(), shuffle);
    const FourierBarrier f = FourierPotential(points, 3, false, out);
    EXPECT_DOUBLE_EQ(f.V0, ordered.V0);
    for (int m = 0; m < FourierTerms; ++m) EXPECT_DOUBLE_EQ(f.c[m], ordered.c[m]);
  }
}

// For V = V3/2 (1 - cos 3x) + V1/2 (1 - cos x) the series has c0/2 = 9 (V1 + V3)/2
// and c3 = -9 V3/2, so V0 = D V3 / (V1 + V3), D the highest point of the scan.
TEST(FourierPotential, MixedPotentialSharesTheRangeByTerm) {
  for (const auto& [V3, V1, nRot] : {std::tuple{11.0, 3.0, 3}, std::tuple{11.0, 3.0, 1}, std::tuple{2.0, 6.0, 3}}) {
    const std::vector<PotentialPoint> points = Scan({{3, V3}, {1, V1}}, 10.0);
    double D = 0.0;
    for (const PotentialPoint& p : points) D = std::max(D, p.energy);
    std::ostringstream out;
    const FourierBarrier f = FourierPotential(points, nRot, false, out);
    EXPECT_NEAR(f.range, D, 1e-12);
    EXPECT_NEAR(f.V0, D * (nRot == 3 ? V3 : V1) / (V3 + V1), 1e-9);
    EXPECT_NEAR(f.c[0], 9.0 * (V3 + V1), 1e-9);
    EXPECT_NEAR(f.c[1], -4.5 * V1, 1e-9);
    EXPECT_NEAR(f.c[2], 0.0, 1e-9);
    EXPECT_NEAR(f.c[3], -4.5 * V3, 1e-9);
  }
}

// Recognition takes the largest term, whatever the fold asked for.
TEST(FourierPotential, RecognitionMarksTheFold) {
  for (const auto& [fold, nRot] : {std::pair{2, 3}, std::pair{3, 1}, std::pair{1, 3}}) {
    std::ostringstream rec;
    const FourierBarrier f = FourierPotential(Scan({{fold, 8.0}, {fold == 3 ? 6 : 3, 1.0}}, 10.0), nRot, true, rec);
    EXPECT_EQ(f.n, fold);
    const std::vector<std::string> r = Lines(rec.str());
    ASSERT_GT(r.size(), static_cast<size_t>(4 + fold));
    EXPECT_NE(r[4 + fold].find("  <-- This is " + std::to_string(fold) + "-fold potential"), std::string::npos);
    EXPECT_EQ(rec.str().find("used for V0"), std::string::npos);
  }
}

TEST(FourierPotential, SeriesPeaksAtTheRangeWithItsDerivatives) {
  std::ostringstream out;
  const FourierBarrier f = FourierPotential(Scan({{3, 11.0}, {1, 3.0}}, 10.0), 3, false, out);
  double top = -1e9;
  for (int deg = 0; deg < 360; ++deg) top = std::max(top, CosineSum(f.potential, deg * kPi / 180.0));
  EXPECT_NEAR(top, f.range, 1e-9);
  EXPECT_NEAR(CosineSum(f.potential, 0.0), 0.0, 1e-9);
  const double h = 1e-4;
  for (double x : {0.3, 2.0, 4.4}) {
    const double lo = CosineSum(f.potential, x - h), mid = CosineSum(f.potential, x), hi = CosineSum(f.potential, x + h);
    EXPECT_NEAR(SineSum(f.slope, x), (hi - lo) / (2 * h), 1e-6);
    EXPECT_NEAR(CosineSum(f.curvature, x), (hi - 2 * mid + lo) / (h * h), 1e-3);
  }
  const std::vector<PotentialPoint> shortScan = {{0.0, 0.0}, {60.0, 6.1}, {120.0, 0.2}};
  EXPECT_THROW(FourierPotential(shortScan, 3, false, out), SplineFailure);
}

// ---- Reduced moments ---------------------------------------------------------

constexpr double kH = 1.00783, kC = 12.0, kO = 15.99491, kF = 18.99840;

// X3C-CY3, staggered, axis along z: the three substituents of each end on a
// circle of radius r at height h beyond its carbon; I(**) = I(*) there.
TEST(ReducedMoment, SymmetricTopOnSymmetricFrameGivesIStarTwice) {
  struct Case {
    const char* name;
    double m1, r1, h1, m2, r2, h2;
  };
  for (const Case& c : {Case{"ethane", kH, 1.0274, 0.3633, kH, 1.0274, 0.3633},
                        Case{"CH3-CF3", kH, 1.0274, 0.3633, kF, 1.25, 0.45}}) {
    SCOPED_TRACE(c.name);
    std::vector<Vec3> xyz = {{0, 0, -0.765}, {0, 0, 0.765}};
    std::vector<double> m = {kC, kC};
    for (int end = 0; end < 2; ++end)
      for (int k = 0; k < 3; ++k) {
        const double a = (2 * k + end) * kPi / 3.0, r = end ? c.r2 : c.r1;
        xyz.push_back({r * std::cos(a), r * std::sin(a), end ? 0.765 + c.h2 : -0.765 - c.h1});
        m.push_back(end ? c.m2 : c.m1);
      }
    const std::vector<int> top = {1, 3, 4, 5}, frame = OtherGroup(8, top);
    EXPECT_EQ(frame, (std::vector<int>{2, 6, 7, 8}));
    const TwoGroupMoment star = ReducedMomentOfGroups(m, xyz, top, frame, xyz[0], xyz[1]);
    const double I1 = 3.0 * c.m1 * c.r1 * c.r1, I2 = 3.0 * c.m2 * c.r2 * c.r2;
    EXPECT_NEAR(star.group1.moment, I1, 1e-12);
    EXPECT_NEAR(star.group2.moment, I2, 1e-12);
    EXPECT_NEAR(star.group1.mass, kC + 3 * c.m1, 1e-12);
    EXPECT_NEAR(star.reduced, I1 * I2 / (I1 + I2), 1e-12);
    EXPECT_NEAR(PitzerReducedMoment(m, xyz, top, xyz[0], xyz[1]), star.reduced, 1e-10);
    EXPECT_NEAR(PitzerReducedMoment(m, xyz, frame, xyz[1], xyz[0]), star.reduced, 1e-10);
  }
}

// Ethanol from examples/ethanol_xtb.out (GFN2-xTB, angstrom).
const std::vector<Vec3> kEthanol = {
    {-0.002393, -0.011577, 0.003118}, {1.518156, -0.009946, -0.001111}, {1.963533, 1.331460, -0.004463},
    {-0.374934, -1.031998, 0.006094}, {-0.367115, 0.507576, 0.884858},  {-0.372039, 0.504715, -0.878110},
    {1.890270, -0.536576, -0.892491}, {1.895186, -0.533957, 0.889805},  {2.925743, 1.346057, -0.008835}};
const std::vector<double> kEthanolMasses = {kC, kC, kO, kH, kH, kH, kH, kH, kH};

// The effective moment straight from its definition: the kinetic energy per
// unit angular speed of the top turning about the axis, less what the whole
// molecule's translation (P^2/M) and rotation (L I^-1 L about the centre of
// mass) take of it.
double KinematicMoment(const std::vector<int>& top, const Vec3& p1, const Vec3& p2) {
  const Vec3 u = Normalised(p2 - p1);
  double M = 0.0, T = 0.0;
  Vec3 com{}, P{}, L{};
  Mat3 I{};
  for (size_t a = 0; a < kEthanol.size(); ++a) M += kEthanolMasses[a], com = com + kEthanolMasses[a] * kEthanol[a];
  com = (1.0 / M) * com;
  for (size_t a = 0; a < kEthanol.size(); ++a) {
    const double m = kEthanolMasses[a];
    const Vec3 s = kEthanol[a] - com;
    const bool turns = std::find(top.begin(), top.end(), static_cast<int>(a) + 1) != top.end();
    const Vec3 v = turns ? Cross(u, kEthanol[a] - p1) : Vec3{};
    T += m * Dot(v, v), P = P + m * v, L = L + m * Cross(s, v);
    for (int j = 0; j < 3; ++j)
      for (int k = 0; k < 3; ++k) I[j][k] += m * ((j == k) * Dot(s, s) - s[j] * s[k]);
  }
  // omega = I^-1 L by Cramer's rule (I is symmetric: rows serve as columns).
  const auto det = [](const Mat3& a) { return Dot(a[0], Cross(a[1], a[2])); };
  double lOmega = 0.0;
  for (int k = 0; k < 3; ++k) {
    Mat3 Ik = I;
    Ik[k] = L;
    lOmega += L[k] * det(Ik) / det(I);
  }
  return T - Dot(P, P) / M - lOmega;
}

TEST(ReducedMoment, PitzerMomentOfAsymmetricRotorsIsTheKinematicOne) {
  struct RotorCase {
    const char* name;
    std::vector<int> top;
    int axis1, axis2;  // atom numbers: axis1 on the frame side, axis2 in the top
  };
  for (const RotorCase& c : {RotorCase{"OH", {3, 9}, 2, 3}, RotorCase{"CH3", {1, 4, 5, 6}, 2, 1},
                             RotorCase{"CH2OH", {2, 3, 7, 8, 9}, 1, 2}}) {
    SCOPED_TRACE(c.name);
    const Vec3& p1 = kEthanol[c.axis1 - 1];
    const Vec3& p2 = kEthanol[c.axis2 - 1];
    const double pitzer = PitzerReducedMoment(kEthanolMasses, kEthanol, c.top, p1, p2);
    EXPECT_NEAR(pitzer, KinematicMoment(c.top, p1, p2), 1e-7 * pitzer);
    // The other side turned the other way is the same internal motion.
    const std::vector<int> frame = OtherGroup(9, c.top);
    EXPECT_NEAR(PitzerReducedMoment(kEthanolMasses, kEthanol, frame, p1, p2), pitzer, 1e-9 * pitzer);
    // Projecting out overall rotation can only lower the moment below I(*).
    EXPECT_LT(pitzer, ReducedMomentOfGroups(kEthanolMasses, kEthanol, c.top, frame, p1, p2).reduced);
  }
}

// The OH rotor: the hydrogen lies off the C-O axis, so the top's centre of
// mass does too, and the axis is no principal axis: I(**) falls visibly below
// I(*) = I_H I_frame / (I_H + I_frame).
TEST(ReducedMoment, HydroxylRotorOfEthanolDiffersFromIStar) {
  const Vec3 &c2 = kEthanol[1], &o = kEthanol[2];
  const TwoGroupMoment star = ReducedMomentOfGroups(kEthanolMasses, kEthanol, {3, 9}, OtherGroup(9, {3, 9}), c2, o);
  // Hydroxyl hydrogen: its distance from the C-O line.
  const double d = Norm(Cross(Normalised(c2 - o), kEthanol[8] - o));
  EXPECT_NEAR(star.group1.moment, kH * d * d, 1e-10);
  const double pitzer = PitzerReducedMoment(kEthanolMasses, kEthanol, {3, 9}, c2, o);
  EXPECT_GT(star.reduced - pitzer, 0.01 * star.reduced);
  EXPECT_GT(pitzer, 0.5 * star.reduced);
  const Vec3 com = GroupCentreOfMass(kEthanolMasses, kEthanol, {3, 9});
  for (int k = 0; k < 3; ++k) EXPECT_NEAR(com[k], (kO * o[k] + kH * kEthanol[8][k]) / (kO + kH), 1e-12);
}

TEST(ReducedMoment, ZeroLengthAxisStops) {
  try {
    PitzerReducedMoment(kEthanolMasses, kEthanol, {3, 9}, kEthanol[2], kEthanol[2]);
    FAIL() << "no failure";
  } catch (const RotationAxisError& e) {
    EXPECT_EQ(std::string(e.what()), "-- Stop in IntRotMat: Rotation axis has a zero length.");
  }
  EXPECT_THROW(GroupAboutAxis(kEthanolMasses, kEthanol, {3, 9}, kEthanol[0], kEthanol[0]), RotationAxisError);
}

}  // namespace
}  // namespace quintor

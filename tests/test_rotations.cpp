// Internal rotations through whole runs on xtb frequency logs of real
// molecules (tests/inputs/rotations, made by make_inputs.sh there), and the
// pieces of the treatment on their own.
#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "io/fortran_io.h"
#include "numeric/constants.h"
#include "rotations/mode_assignment.h"
#include "rotations/recognition.h"
#include "rotations/reduced_moment.h"
#include "rotations/rotor_treatment.h"
#include "test_support.h"

namespace quintor {
namespace {

using namespace test;
using namespace geom;
namespace rc = constants;

std::string Rotations(const std::string& name) { return TestInput("rotations/" + name); }
std::string Example(const std::string& name) { return TestInput("../../examples/" + name); }

// ---- Recognition on real molecules ------------------------------------------

struct MoleculeCase {
  const char* file;
  bool example;
  int found;                 // " Possible Internal Rotations :" count, 0 for none
  std::vector<int> nRot;     // NRot of the rotations found, in order
};

class Recognition : public ::testing::TestWithParam<MoleculeCase> {};

TEST_P(Recognition, FindsTheRotorsOfTheMolecule) {
  const MoleculeCase& c = GetParam();
  LogRun run(c.example ? Example(c.file) : Rotations(c.file), {"/ARIR"});
  ASSERT_EQ(run.r.status, exit_status::Ok) << run.r.console;
  if (c.found == 0) {
    EXPECT_EQ(CountText(run.r.log, " ARIR: No internal rotations Found\n"), 1);
    EXPECT_EQ(CountText(run.r.log, "temperatures (w/o internal rotations):"), 1);
    return;
  }
  EXPECT_EQ(LineWith(run.r.log, " Possible Internal Rotations :"), " Possible Internal Rotations :" + FmtI(c.found, 3));
  ASSERT_EQ(run.s.rotors.size(), c.nRot.size());
  for (size_t r = 0; r < c.nRot.size(); ++r) {
    EXPECT_EQ(run.s.rotors[r].symmetryNumber, c.nRot[r]) << "rotation " << r + 1;
    EXPECT_GE(run.s.rotors[r].mode, 7) << "rotation " << r + 1;
  }
  EXPECT_EQ(CountText(run.r.log, " Thermodynamics at various temperatures (" + FmtI(c.found, 2) +
                                     " internal rotations in Pitzer-Gwinn approximation):"),
            1);
}

INSTANTIATE_TEST_SUITE_P(
    Molecules, Recognition,
    ::testing::Values(MoleculeCase{"ethane_xtb.out", false, 1, {9}}, MoleculeCase{"propane_xtb.out", false, 2, {3, 3}},
                      MoleculeCase{"toluene_xtb.out", false, 1, {6}}, MoleculeCase{"cyclohexane_xtb.out", false, 0, {}},
                      MoleculeCase{"water_xtb.out", false, 0, {}},
                      // every C-C bond of the chain: two methyl tops and 13 skeletal torsions
                      MoleculeCase{"hexadecane_xtb.out", true, 15, {3, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 3}}),
    [](const auto& info) {
      std::string n = info.param.file;
      return n.substr(0, n.find('_'));
    });

// ---- Ethane in detail -----------------------------------------------------------

TEST(Ethane, PrintsTheRotorAndTiesItToTheTorsion) {
  LogRun run(Rotations("ethane_xtb.out"), {"/ARIR"});
  ASSERT_EQ(run.r.status, exit_status::Ok);
  const std::string& log = run.r.log;
  EXPECT_EQ(CountText(log, " *** Automatic Recognition of Internal Rotations ***\n"), 1);
  EXPECT_EQ(CountText(log, " Int.Rot.  1   Axis:  1  2   NRot:  9   Atoms:  4  Group:  1  3  4  5\n"), 1);
  EXPECT_EQ(CountText(log, "     1    7    300.77       1.0000  -> Int.Rot.  1\n"), 1);
  EXPECT_EQ(CountText(log, " *** Internal rotation No.  1 (replacing the vibration mode   7)\n"), 1);
  EXPECT_EQ(CountText(log, " Int.Rot.  1:   Top: CH3      Axis:  1  2    Group:  1  3  4  5\n"), 1);
  EXPECT_EQ(CountText(log, " WARNING! Rotation barrier is estimated by vibration frequency of          : Freq( 7)=  300.77 cm-1\n"), 1);
  EXPECT_EQ(CountText(log, "             Ocsillator  I(*)    I(**)     I(*)    I(**)     IRMC\n"), 1);
  EXPECT_EQ(CountText(log, " taking into account  1 internal rotations  (in different approximations)\n"), 1);
  EXPECT_EQ(CountText(log, "Ocsillator        I(*)           I(**)          I(*)           I(**)          IRMC\n"), 1);
  EXPECT_EQ(log.find("not evaluated in this version"), std::string::npos);
}

TEST(Ethane, ReducedMomentIsHalfTheMethylMoment) {
  LogRun run(Rotations("ethane_xtb.out"), {"/ARIR"});
  ASSERT_EQ(run.r.status, exit_status::Ok);
  // The methyl group 1, 3, 4, 5 about the C1-C2 line, from the geometry.
  const std::vector<Vec3>& x = run.s.xyz;
  const Vec3 u = Normalised(x[1] - x[0]);
  double methyl = 0.0;
  for (int a : {0, 2, 3, 4}) {
    const Vec3 d = Cross(u, x[a] - x[0]);
    methyl += run.s.atomMass[a] * Dot(d, d);
  }
  EXPECT_NEAR(After(run.r.log, " Reduced I=I1*I2/(I1+I2)     ="), methyl / 2.0, 2e-3);
  // A symmetric top on the axis of a symmetric molecule: the kinematic
  // estimators are the same moment.
  EXPECT_NEAR(After(run.r.log, " Pitzer's estimator I0       ="), methyl / 2.0, 2e-3);
  EXPECT_NEAR(After(run.r.log, " Pitzer's estimator I        ="), methyl / 2.0, 2e-3);
}

TEST(Ethane, BarrierComesFromTheTorsionFrequency) {
  LogRun run(Rotations("ethane_xtb.out"), {"/ARIR"});
  ASSERT_EQ(run.r.status, exit_status::Ok);
  const double I = After(run.r.log, " Reduced I=I1*I2/(I1+I2)     =") * rc::AtomicMassUnit * rc::BohrRadius *
                   rc::BohrRadius;
  const double nu = 300.767, n = 9.0;
  const double expected = 8.0 * rc::Pi * rc::Pi * I * std::pow(100.0 * rc::SpeedOfLight * nu, 2) * rc::Avogadro /
                          (n * n * 1000.0);
  EXPECT_NEAR(After(run.r.log, " V0 ="), expected, 2e-4);
}

TEST(Ethane, TableRowsWarnWhereTheTablesEnd) {
  LogRun run(Rotations("ethane_xtb.out"), {"/ARIR"});
  ASSERT_EQ(run.r.status, exit_status::Ok);
  // 1/Qf of a 9-fold rotor at 10 K lies far beyond the tables.
  const std::string row = LineWith(run.r.log, "    10.000  ");
  EXPECT_NE(row.find("  <--WARNING! There were 100% errors during Pitzer interpolation. Data for the given T can "
                     "be erroneous!"),
            std::string::npos)
      << row;
}

TEST(Propane, CoupledRotorsHaveDifferentEstimators) {
  LogRun run(Rotations("propane_xtb.out"), {"/ARIR"});
  ASSERT_EQ(run.r.status, exit_status::Ok);
  const double I0 = After(run.r.log, " Pitzer's estimator I0       =");
  const double I = After(run.r.log, " Pitzer's estimator I        =");
  EXPECT_GT(I0 - I, 0.05);
  EXPECT_GT(I, 0.0);
}

// ---- The SpecFile's rotors ---------------------------------------------------------

std::string CosineTable(double V0, int n) {
  std::string t;
  for (int deg = 0; deg <= 360; deg += 10)
    t += std::to_string(deg) + " " + std::to_string(V0 / 2.0 * (1.0 - std::cos(n * deg * rc::DegToRad))) + "\n";
  return t;
}

TEST(SpecFile, ThreeFoldCosineTableGivesItsBarrierBack) {
  TempDir spec;
  const std::string name = spec.Write("ethane.tdi", "VIBR=7 ROT=3 GROUP=(1,3,4,5) AXIS=(1,2) READP KJ\n" +
                                                        CosineTable(12.0, 3) + "\n");
  LogRun run(Rotations("ethane_xtb.out"), {"/@" + name});
  ASSERT_EQ(run.r.status, exit_status::Ok) << run.r.console;
  EXPECT_EQ(CountText(run.r.log, " Rotation barrier is estimated from the Fourier-transformed rotational potential\n"), 1);
  EXPECT_EQ(CountText(run.r.log, "  <-- This value is used for V0 evaluation\n"), 1);
  EXPECT_NEAR(After(run.r.log, " V0 ="), 12.0, 0.01);
  EXPECT_EQ(CountText(run.r.log, "(n=3):"), 1);
}

TEST(SpecFile, BarrierReadInIsUsedAsItStands) {
  TempDir spec;
  const std::string name = spec.Write("ethane.tdi", "VIBR=7 ROT=3 GROUP=(1,3,4,5) AXIS=(1,2) V0=2.9 KCAL\n");
  LogRun run(Rotations("ethane_xtb.out"), {"/@" + name});
  ASSERT_EQ(run.r.status, exit_status::Ok) << run.r.console;
  EXPECT_EQ(CountText(run.r.log, " Rotation barrier is read-in from the specification file\n"), 1);
  EXPECT_NEAR(After(run.r.log, " V0 ="), 2.9 * 4.184, 1e-4);
  EXPECT_EQ(CountText(run.r.log, " => Hindered rotation (V0>1.4RT)\n"), 1);
}

TEST(SpecFile, ZeroLengthAxisStopsTheRun) {
  TempDir spec;
  const std::string name = spec.Write("ethane.tdi", "VIBR=7 ROT=3 GROUP=(1,3,4,5) AXIS=(1,1)\n");
  LogRun run(Rotations("ethane_xtb.out"), {"/@" + name});
  EXPECT_EQ(run.r.status, exit_status::Numeric);
  EXPECT_EQ(CountText(run.r.log, "-- Stop in IntRotMat: Rotation axis has a zero length.\n"), 1);
}

// ---- Pieces ---------------------------------------------------------------------------

TEST(IntRotMat, TurnsAboutTheAxisCounterClockwise) {
  const Mat3 r = IntRotMat({1, 1, 1}, {1, 1, 3}, 90.0);
  const Vec3 x = r * Vec3{1, 0, 0};
  EXPECT_NEAR(x[0], 0.0, 1e-12);
  EXPECT_NEAR(x[1], 1.0, 1e-12);
  EXPECT_THROW(IntRotMat({1, 2, 3}, {1, 2, 3}, 10.0), RotationAxisError);
}

TEST(KinematicMatrix, OneRotorIsPitzersReducedMoment) {
  // A bent, asymmetric frame with an off-axis top: I(**) below I(*).
  const std::vector<double> m{12.0, 12.0, 1.0, 1.0, 16.0, 1.0};
  const std::vector<Vec3> x{{0, 0, 0}, {2.9, 0, 0}, {-0.7, 1.8, 0.3}, {-0.6, -1.0, 1.6}, {4.0, 2.2, 0}, {5.5, 1.9, 0.4}};
  const std::vector<int> top{1, 3, 4};
  const AxisPoints axis = RotationAxisPoints(m, x, top, {1, 2});
  const KinematicMoments k = KinematicMatrix(m, x, {top}, {axis});
  EXPECT_NEAR(k.I0[0], PitzerReducedMoment(m, x, top, axis.p1, axis.p2), 1e-6);
  EXPECT_NEAR(k.I[0], k.I0[0], 1e-9);
}

TEST(RotorColumns, HarmonicIsTheModeAndFreeRotorIsClassical) {
  ThermoState t;
  t.SizeFor(7);
  t.cvib[6] = 6.997, t.hvib[6] = 2.9, t.svib[6] = 5.91, t.gvib[6] = 1.137, t.zpe[6] = 1.799;
  Rotor r;
  r.mode = 7;
  r.n = 3;
  r.groups.reduced = r.I = 5.6;
  r.V0Star = r.V0StarStar = 12.0;
  PitzerTables tables = BuildPitzerTables();
  const double T = 298.15;
  const RotorResult c = RotorColumns(tables, r, t, T);
  EXPECT_EQ(c.column[HarmonicColumn].C, 6.997);
  EXPECT_EQ(c.column[HarmonicColumn].H, 2.9);
  EXPECT_EQ(c.column[HarmonicColumn].S, 5.91);
  EXPECT_EQ(c.column[HarmonicColumn].G, 1.137);
  const double Qf = 1.0 / InverseFreeRotorQ(MomentSI(5.6), 3, T);
  EXPECT_NEAR(c.column[FreeStarColumn].S, rc::GasConstant * (std::log(Qf) + 0.5), 1e-12);
  EXPECT_NEAR(c.column[FreeStarColumn].C, rc::GasConstant / 2.0, 1e-12);
  EXPECT_EQ(tables.counters.calls, 1);  // the I(**) look-up is not counted

  // In the totals the harmonic column comes back to the RRHO totals but for
  // the mode's zero-point energy, which the free-rotor columns lose.
  TDResult rrho;
  rrho.cv = 40.0, rrho.s = 200.0, rrho.h = 100.0, rrho.g = 50.0;
  const auto totals = TotalsWithRotors(rrho, {r}, {c}, t);
  EXPECT_NEAR(totals[HarmonicColumn].s, 200.0, 1e-12);
  EXPECT_NEAR(totals[HarmonicColumn].h, 100.0 + 1.799, 1e-12);
  EXPECT_NEAR(totals[FreeStarColumn].h, 100.0 - 2.9 + c.column[FreeStarColumn].H, 1e-12);
  EXPECT_NEAR(totals[FreeStarColumn].cv, 40.0 - 6.997 + rc::GasConstant / 2.0, 1e-12);
}

}  // namespace
}  // namespace quintor

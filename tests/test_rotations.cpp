// Internal rotations through whole runs on xtb frequency logs of real
// molecules (tests/inputs/rotations, made by make_inputs.sh there), and the
// pieces of the treatment on their own.
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "io/fortran_io.h"
#include "numeric/constants.h"
#include "quantum_rotor.h"
#include "rotations/hindered_rotor.h"
#include "rotations/mode_assignment.h"
#include "rotations/recognition.h"
#include "rotations/reduced_moment.h"
#include "rotations/rotor_treatment.h"
#include "rotations/torsion_curvature.h"
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
    ::testing::Values(MoleculeCase{"ethane_xtb.out", false, 1, {3}}, MoleculeCase{"propane_xtb.out", false, 2, {3, 3}},
                      MoleculeCase{"toluene_xtb.out", false, 1, {6}}, MoleculeCase{"cyclohexane_xtb.out", false, 0, {}},
                      MoleculeCase{"water_xtb.out", false, 0, {}},
                      // the methyl leans 3.4 degrees off the C-N line: 3-fold about its own axis
                      MoleculeCase{"methylamine_xtb.out", false, 1, {3}},
                      MoleculeCase{"neopentane_xtb.out", false, 4, {3, 3, 3, 3}},
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
  EXPECT_EQ(CountText(log, " Int.Rot.  1   Axis:  1  2   NRot:  3   Atoms:  4  Group:  1  3  4  5\n"), 1);
  EXPECT_EQ(CountText(log, "     1    7    300.77       1.0000  -> Int.Rot.  1\n"), 1);
  EXPECT_EQ(CountText(log, " *** Internal rotation No.  1 (replacing the vibration mode   7)\n"), 1);
  EXPECT_EQ(CountText(log, " Int.Rot.  1:   Top: CH3      Axis:  1  2    Group:  1  3  4  5\n"), 1);
  EXPECT_EQ(CountText(log, " WARNING! Rotation barrier is estimated by vibration frequency of          : Freq( 7)=  300.77 cm-1\n"), 1);
  EXPECT_EQ(CountText(log, "             Ocsillator  I(*)    I(**)     I(*)    I(**)     I(*)    I(**)     IRMC\n"), 1);
  EXPECT_EQ(CountText(log, " taking into account  1 internal rotations  (in different approximations)\n"), 1);
  EXPECT_EQ(CountText(log, "Ocsillator        I(*)           I(**)          I(*)           I(**)           I(*)           I(**)          IRMC\n"), 1);
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

// By default the barrier of the cosine whose bottom has the mode's frequency.
TEST(Ethane, BarrierComesFromTheTorsionFrequency) {
  LogRun run(Rotations("ethane_xtb.out"), {"/ARIR"});
  ASSERT_EQ(run.r.status, exit_status::Ok);
  EXPECT_EQ(CountText(run.r.log, "Frequency of this torsion alone"), 0);
  const double I = After(run.r.log, " Reduced I=I1*I2/(I1+I2)     =") * rc::AtomicMassUnit * rc::BohrRadius *
                   rc::BohrRadius;
  const double nu = 300.767, n = 3.0;
  const double expected = 8.0 * rc::Pi * rc::Pi * I * std::pow(100.0 * rc::SpeedOfLight * nu, 2) * rc::Avogadro /
                          (n * n * 1000.0);
  EXPECT_NEAR(After(run.r.log, " V0 ="), expected, 2e-4);
}

// The barrier of each top comes from the curvature along its own torsion.
// Ethane's one torsion is a normal mode of its own: that is the mode's
// frequency (to the log's two printed digits of the vectors). Neopentane's
// four methyl torsions are pure A2 + T1 combinations (163 and 3 x 241 cm-1):
// each torsion alone has sqrt((163^2 + 3 241^2) / 4) = 224.0 cm-1, whichever
// combination its rotor replaces (/V0TORSION; without it the in-phase one
// gets 7 kJ/mol).
TEST(Barrier, EachTorsionHasItsOwnCurvature) {
  LogRun ethane(Rotations("ethane_xtb.out"), {"/ARIR", "/V0TORSION"});
  ASSERT_EQ(ethane.r.status, exit_status::Ok);
  EXPECT_NEAR(After(ethane.r.log, "Frequency of this torsion alone (the other torsions held):"), 300.767, 0.1);
  LogRun neo(Rotations("neopentane_xtb.out"), {"/ARIR", "/V0TORSION"});
  ASSERT_EQ(neo.r.status, exit_status::Ok);
  const auto& rotors = neo.s.thermo.report.rotors;
  ASSERT_EQ(rotors.size(), 4u);
  const double a2 = 163.3425, t1 = 240.9100;
  const double alone = std::sqrt((a2 * a2 + 3.0 * t1 * t1) / 4.0);
  const double I0 = After(neo.r.log, " Pitzer's estimator I0       =") * rc::AtomicMassUnit * rc::BohrRadius *
                    rc::BohrRadius;
  const double V0 = 8.0 * rc::Pi * rc::Pi * I0 * std::pow(100.0 * rc::SpeedOfLight * alone, 2) * rc::Avogadro /
                    (9.0 * 1000.0);
  for (const RotorRecord& r : rotors) {
    EXPECT_NEAR(r.v0Star, V0, 0.1);
    EXPECT_EQ(r.v0Star, r.v0StarStar);
  }
  LogRun old(Rotations("neopentane_xtb.out"), {"/ARIR"});
  double lowest = 1e9;
  for (const RotorRecord& r : old.s.thermo.report.rotors) lowest = std::min(lowest, r.v0StarStar);
  EXPECT_LT(lowest, 7.5);
}

// Gaussian prints Cartesian displacements, xtb's g98.out mass-weighted
// vectors (its modes are orthogonal as printed, to 0.015 at two decimals).
TEST(Barrier, ModesAreReadAsTheProgramPrintedThem) {
  LogRun xtb(Rotations("propane_xtb.out"));
  ASSERT_EQ(xtb.r.status, exit_status::Ok);
  const std::vector<double> m(xtb.s.atomMass.begin(), xtb.s.atomMass.begin() + xtb.s.nAtoms);
  EXPECT_TRUE(ModesAreMassWeighted(xtb.s.modes, m, 7));
  SKIP_WITHOUT_TESTDATA();
  LogRun g16(TestData("gaussian16/water_opt_freq.log"));
  ASSERT_EQ(g16.r.status, exit_status::Ok);
  const std::vector<double> mw(g16.s.atomMass.begin(), g16.s.atomMass.begin() + g16.s.nAtoms);
  EXPECT_FALSE(ModesAreMassWeighted(g16.s.modes, mw, 7));
}

// At 10 K the barrier is far beyond the tables' 20 RT: the exact quantum
// rotor stands in, said once, and the rows neither warn nor jump.
TEST(Ethane, QuantumRotorStandsInWhereTheTablesEnd) {
  LogRun run(Rotations("ethane_xtb.out"), {"/ARIR"});
  ASSERT_EQ(run.r.status, exit_status::Ok);
  EXPECT_EQ(CountText(run.r.log, "the exact quantum rotor's values stand in for them"), 1);
  EXPECT_EQ(CountText(run.r.log, "errors during Pitzer interpolation"), 0);
  const std::vector<TableRow>& rows = run.s.thermo.report.fixedTable;
  ASSERT_EQ(rows.size(), 50u);
  // S grows smoothly with T: no step between neighbouring rows beyond the
  // curve's own slope.
  for (size_t k = 2; k < rows.size(); ++k) {
    const double d1 = rows[k].tot.s - rows[k - 1].tot.s, d0 = rows[k - 1].tot.s - rows[k - 2].tot.s;
    EXPECT_GT(d1, 0.0) << rows[k].temperature;
    EXPECT_LT(d1, d0 + 0.05) << rows[k].temperature;
  }
}

TEST(Propane, CoupledRotorsHaveDifferentEstimators) {
  LogRun run(Rotations("propane_xtb.out"), {"/ARIR"});
  ASSERT_EQ(run.r.status, exit_status::Ok);
  const double I0 = After(run.r.log, " Pitzer's estimator I0       =");
  const double I = After(run.r.log, " Pitzer's estimator I        =");
  EXPECT_GT(I0 - I, 0.05);
  EXPECT_GT(I, 0.0);
}

TEST(Fold, IsTheLeastCommonMultipleUnlessTheProductIsAsked) {
  EXPECT_EQ(RotationFold(3, 3, false), 3);
  EXPECT_EQ(RotationFold(3, 2, false), 6);
  EXPECT_EQ(RotationFold(6, 3, false), 6);
  EXPECT_EQ(RotationFold(1, 3, false), 3);
  EXPECT_EQ(RotationFold(3, 3, true), 9);
  LogRun run(Rotations("ethane_xtb.out"), {"/ARIR", "/NROTPRODUCT"});
  ASSERT_EQ(run.r.status, exit_status::Ok);
  EXPECT_EQ(CountText(run.r.log, "   NRot:  9   Atoms:"), 1);
  EXPECT_EQ(CountText(run.r.log, "(n=9):"), 1);
}

TEST(Methylamine, TiltedMethylGetsItsFoldWithAWarning) {
  LogRun run(Rotations("methylamine_xtb.out"), {"/ARIR"});
  ASSERT_EQ(run.r.status, exit_status::Ok);
  EXPECT_EQ(CountText(run.r.log, " WARNING! Internal rotation  1 (axis"), 1);
  EXPECT_EQ(CountText(run.r.log, "-fold about its own axis, tilted from the bond"), 1);
  EXPECT_EQ(CountText(run.r.log, "   NRot:  3   Atoms:"), 1);
}

// The harmonic column of the totals is the run without rotations, to the
// last printed digit, on a molecule of 15 rotors.
TEST(Hexadecane, HarmonicColumnIsThePlainRun) {
  LogRun plain(Example("hexadecane_xtb.out"));
  LogRun arir(Example("hexadecane_xtb.out"), {"/ARIR"});
  ASSERT_EQ(plain.r.status, exit_status::Ok);
  ASSERT_EQ(arir.r.status, exit_status::Ok);
  const ThermoReport& a = arir.s.thermo.report;
  ASSERT_FALSE(a.totalsByModel.empty());
  EXPECT_STREQ(a.totalsByModel[0].model, "harmonic");
  const TDResult& h = a.totalsByModel[0].tot;
  const TDResult& p = plain.s.thermo.report.tot;
  for (const auto& [x, y] : {std::pair{h.cv, p.cv}, {h.s, p.s}, {h.h, p.h}, {h.g, p.g}}) EXPECT_NEAR(x, y, 5e-4);
  const std::vector<double> eg = NumbersAfter(LineWith(arir.r.log, "E+G  "), "E+G  ");
  ASSERT_FALSE(eg.empty());
  EXPECT_NEAR(eg[0], plain.s.electronicEnergy + p.g * rc::KJPerMolToHartree, 5e-9);
}

// Barriers of several hundred kJ/mol from skeletal modes leave those modes
// harmonic, each with one warning; no hindered-rotor value of a rotor that
// does turn is left at 0.
TEST(Hexadecane, ImplausibleBarriersStayHarmonic) {
  LogRun run(Example("hexadecane_xtb.out"), {"/ARIR"});
  ASSERT_EQ(run.r.status, exit_status::Ok);
  const ThermoReport& r = run.s.thermo.report;
  ASSERT_EQ(r.rotors.size(), 15u);
  int kept = 0;
  for (const RotorRecord& rot : r.rotors) {
    if (rot.harmonic) {
      ++kept;
      EXPECT_GT(std::max(rot.v0Star, rot.v0StarStar), MostBarrierFromFrequency);
      for (const auto& m : rot.models) EXPECT_EQ(m, rot.models[0]);
    } else {
      EXPECT_LE(std::max(rot.v0Star, rot.v0StarStar), MostBarrierFromFrequency);
      for (int j = PitzerStarColumn; j < RotorColumnCount; ++j) EXPECT_GT(rot.models[j][1], 0.01) << j;
    }
  }
  EXPECT_GT(kept, 0);
  EXPECT_EQ(CountText(run.r.log, "from the frequency is above "), kept);
}

// A torsion whose frequency is imaginary turns freely.
TEST(ImaginaryTorsion, IsAFreeRotorWithAWarning) {
  const std::string text = ReadFile(Rotations("ethane_xtb.out"));
  std::string flipped = text;
  const size_t at = flipped.find("300.7");
  ASSERT_NE(at, std::string::npos);
  flipped.replace(at, 5, "-300.");
  TextRun run(flipped, {"/ARIR"});
  ASSERT_EQ(run.r.status, exit_status::Ok) << run.r.console;
  EXPECT_EQ(CountText(run.r.log, ": the torsion's frequency is imaginary, V0 = 0: it is taken as a free rotor"), 1);
}

// The JSON report holds each rotor and the totals of every model, and names
// the model of its temperature tables.
TEST(Propane, JsonNamesTheRotorsAndTheModels) {
  LogRun run(Rotations("propane_xtb.out"), {"/ARIR", "/JSON"});
  ASSERT_EQ(run.r.status, exit_status::Ok);
  const std::string json = ReadFile(std::filesystem::path(run.copy).replace_extension(".json"));
  EXPECT_NE(json.find("\"model\": \"pitzer_gwinn\""), std::string::npos);
  EXPECT_EQ(CountText(json, "\"symmetry_number\": 3"), 2);
  EXPECT_EQ(CountText(json, "\"V0_source\": \"frequency\""), 2);
  for (const char* key : {"\"internal_rotations\"", "\"totals_by_model\"", "\"harmonic\"", "\"free_rotor\"",
                          "\"quantum\"", "\"monte_carlo\": null", "\"E+G\""})
    EXPECT_NE(json.find(key), std::string::npos) << key;
  // The harmonic totals are the plain RRHO totals.
  const ThermoReport& r = run.s.thermo.report;
  ASSERT_EQ(r.totalsByModel.size(), 4u);
  EXPECT_NEAR(r.totalsByModel[0].tot.s, r.tot.s, 1e-9);
}

const ModelTotals& Model(const ThermoReport& r, const std::string& name);

// The quantum temperature table: at 10 K ethane's torsion sits in its well,
// where the exact rotor is the oscillator of the same curvature (the mode's
// own frequency), so its rows meet the plain run's; at 500 K it is the full
// evaluation's quantum total at 500 K.
TEST(Ethane, QuantumTemperatureTable) {
  LogRun plain(Rotations("ethane_xtb.out"));
  LogRun run(Rotations("ethane_xtb.out"), {"/ARIR", "/JSON"});
  LogRun at500(Rotations("ethane_xtb.out"), {"/ARIR", "/TT500"});
  ASSERT_EQ(run.r.status, exit_status::Ok);
  const auto& rows = run.s.thermo.report.fixedTable;
  ASSERT_EQ(rows.size(), 50u);
  EXPECT_NEAR(rows[0].quantum.s, plain.s.thermo.report.fixedTable[0].tot.s, 1e-3);
  EXPECT_NEAR(rows[0].quantum.cv, plain.s.thermo.report.fixedTable[0].tot.cv, 1e-3);
  EXPECT_NEAR(rows[49].quantum.s, Model(at500.s.thermo.report, "quantum").tot.s, 1e-9);
  EXPECT_EQ(CountText(run.r.log, " internal rotations as exact quantum rotors, I(**)):\n"), 1);
  const std::string json = ReadFile(std::filesystem::path(run.copy).replace_extension(".json"));
  EXPECT_NE(json.find("\"model\": \"quantum\""), std::string::npos);
}

// The Monte Carlo table's ln Q counts from the zero-point energy of the
// modes that stay vibrations. At 10 K the classical torsion sits in its well
// with Q = kT/(h c nu) against the quantum one's 1: the two tables differ by
// that (-3.8), not by 22 more (the torsion's ZPE/RT).
TEST(Ethane, MonteCarloTableLnQHasNoTorsionZeroPointEnergy) {
  LogRun run(Rotations("ethane_xtb.out"), {"/ARIR", "/IRMC2000"});
  ASSERT_EQ(run.r.status, exit_status::Ok);
  const auto& mc = run.s.thermo.monteCarlo.totals;
  const auto& pg = run.s.thermo.report.fixedTable;
  ASSERT_GE(mc.size(), 2u);
  ASSERT_FALSE(pg.empty());
  EXPECT_DOUBLE_EQ(mc[1].temperature, pg[0].temperature);
  const double classical = std::log(rc::Boltzmann * 10.0 / (rc::Planck * rc::SpeedOfLight * 100.0 * 300.767));
  EXPECT_NEAR(mc[1].f.lnQ - pg[0].tot.lnQ, classical, 0.3);
}

// ---- Against experiment ------------------------------------------------------

// S(298.15 K, 1 bar) of the ideal gas, J/K/mol, from the NASA Glenn
// polynomials (Cantera's nasa_gas.yaml), against the totals of xtb minima.
// Neopentane is not in that file; its 304.92 comes from another compilation
// (others give 306.4).
struct EntropyCase {
  const char* name;  // <name>_xtb.out, and <name>_mp2.tdi for its potentials
  double experiment;
};
const EntropyCase kEntropies[] = {
    {"ethane", 229.22},    {"propane", 270.32},   {"propylene", 266.67},
    {"isobutane", 295.49}, {"neopentane", 304.92}, {"aceticacid", 283.47},
    {"isobutene", 293.20}, {"ethylbenzene", 360.63}};

const ModelTotals& Model(const ThermoReport& r, const std::string& name) {
  for (const ModelTotals& m : r.totalsByModel)
    if (name == m.model) return m;
  throw std::runtime_error("no model " + name);
}

struct EntropyErrors {
  std::vector<double> harmonic, pitzer, quantum;  // model minus experiment, J/K/mol
};

// `barrier`: "" for the barrier from the tied mode, "/V0TORSION" for the
// curvature of the torsion alone, "mp2" for the SpecFile of MP2 potentials
// (make_potentials.py) instead of /ARIR.
EntropyErrors EntropiesAgainstExperiment(const std::string& barrier) {
  EntropyErrors e;
  for (const EntropyCase& c : kEntropies) {
    std::vector<std::string> options{"/PP0.98692327"};  // 1 bar
    if (barrier == "mp2")
      options.push_back("/@" + Rotations(std::string(c.name) + "_mp2.tdi"));
    else
      options.push_back("/ARIR");
    if (barrier == "/V0TORSION") options.push_back(barrier);
    LogRun run(Rotations(std::string(c.name) + "_xtb.out"), options);
    if (run.r.status != exit_status::Ok) throw std::runtime_error(c.name);
    EXPECT_EQ(run.s.nImag, 0) << c.name << " is no minimum";
    const ThermoReport& r = run.s.thermo.report;
    e.harmonic.push_back(Model(r, "harmonic").tot.s - c.experiment);
    e.pitzer.push_back(Model(r, "pitzer_gwinn").tot.s - c.experiment);
    e.quantum.push_back(Model(r, "quantum").tot.s - c.experiment);
    std::printf("%-14s exp %7.2f  RRHO %+6.2f  PG %+6.2f  quantum %+6.2f\n", c.name, c.experiment,
                e.harmonic.back(), e.pitzer.back(), e.quantum.back());
  }
  return e;
}

double MeanAbsolute(const std::vector<double>& v) {
  double sum = 0.0;
  for (double x : v) sum += std::fabs(x);
  return sum / static_cast<double>(v.size());
}

// The goal: within 2.0 J/K/mol on average and never further than RRHO by more
// than 1, on the xtb minima and frequencies with barriers from MP2 potential
// curves (GENCOORD points relaxed by xtb with the torsions held, DF-MP2 by
// Psi4, read back by READP): mean 1.03 against 3.63 for RRHO.
TEST(Experiment, QuantumRotorEntropiesWithinTwoJoules) {
  const EntropyErrors e = EntropiesAgainstExperiment("mp2");
  for (size_t k = 0; k < e.quantum.size(); ++k)
    EXPECT_LE(std::fabs(e.quantum[k]), std::fabs(e.harmonic[k]) + 1.0) << kEntropies[k].name;
  std::printf("mp2 mean |error|: RRHO %.2f  PG %.2f  quantum %.2f J/K/mol\n", MeanAbsolute(e.harmonic),
              MeanAbsolute(e.pitzer), MeanAbsolute(e.quantum));
  EXPECT_LE(MeanAbsolute(e.quantum), 2.0);
}

// Barriers from xtb's own frequencies: the quantum column follows the
// Pitzer-Gwinn one where the tables are good, and on average it is closer to
// experiment than RRHO (3.3 and, with /V0TORSION, 3.1 against 3.6 J/K/mol),
// but not within 2: GFN2-xTB's methyl torsions are soft (each torsion alone
// 224 cm-1 in neopentane, 221 in isobutane, 135 in isobutene), so their
// barriers (12, 11 and 4 kJ/mol against 18, 16 and 9 measured) give too much
// rotor entropy.
TEST(Experiment, QuantumRotorEntropiesFromXtbFrequencies) {
  for (const std::string barrier : {"", "/V0TORSION"}) {
    SCOPED_TRACE(barrier);
    const EntropyErrors e = EntropiesAgainstExperiment(barrier);
    for (size_t k = 0; k < e.quantum.size(); ++k) EXPECT_NEAR(e.quantum[k], e.pitzer[k], 0.3) << kEntropies[k].name;
    std::printf("%s mean |error|: RRHO %.2f  PG %.2f  quantum %.2f J/K/mol\n", barrier.c_str(),
                MeanAbsolute(e.harmonic), MeanAbsolute(e.pitzer), MeanAbsolute(e.quantum));
    EXPECT_LT(MeanAbsolute(e.quantum), MeanAbsolute(e.harmonic));
  }
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

// A READP curve that is no single cosine: the quantum rotor takes the whole
// Fourier series, checked against the same rotor solved on a grid of angles
// by the tests' own code (a single cosine first, as a check of that code).
TEST(SpecFile, QuantumRotorFollowsTheWholeCurve) {
  struct Curve {
    const char* what;
    double v3, v6;  // V = v3/2 (1 - cos 3x) + v6/2 (1 - cos 6x), kJ/mol
  };
  for (const Curve c : {Curve{"cosine", 12.0, 0.0}, Curve{"flat bottom", 12.0, -1.5}, Curve{"narrow", 8.0, 2.0}}) {
    SCOPED_TRACE(c.what);
    auto V = [&c](double x) { return c.v3 / 2.0 * (1.0 - std::cos(3.0 * x)) + c.v6 / 2.0 * (1.0 - std::cos(6.0 * x)); };
    std::string table;
    for (int deg = 0; deg < 360; deg += 10)
      table += std::to_string(deg) + " " + FmtF(V(deg * rc::DegToRad), 12, 8) + "\n";
    TempDir spec;
    const std::string name =
        spec.Write("ethane.tdi", "VIBR=7 ROT=3 GROUP=(1,3,4,5) AXIS=(1,2) READP KJ\n" + table + "\n");
    LogRun run(Rotations("ethane_xtb.out"), {"/@" + name});
    ASSERT_EQ(run.r.status, exit_status::Ok) << run.r.console;
    ASSERT_EQ(run.s.thermo.report.rotors.size(), 1u);
    const RotorRecord& r = run.s.thermo.report.rotors[0];
    const double I = r.iStar * rc::AtomicMassUnit * rc::BohrRadius * rc::BohrRadius;  // kg m^2
    const testing::QuantumRotor grid = testing::GridHinderedRotor(V, I, 3, 298.15);
    EXPECT_NEAR(r.models[QuantumStarColumn][0], grid.C, 0.001);
    EXPECT_NEAR(r.models[QuantumStarColumn][1], grid.S, 0.001);
  }
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

  // In the totals the harmonic column is the RRHO totals; the free-rotor
  // columns lose the mode's zero-point energy.
  TDResult rrho;
  rrho.cv = 40.0, rrho.s = 200.0, rrho.h = 100.0, rrho.g = 50.0;
  const auto totals = TotalsWithRotors(rrho, {r}, {c}, t);
  EXPECT_NEAR(totals[HarmonicColumn].s, 200.0, 1e-12);
  EXPECT_NEAR(totals[HarmonicColumn].h, 100.0, 1e-12);
  EXPECT_NEAR(totals[HarmonicColumn].g, 50.0, 1e-12);
  EXPECT_NEAR(totals[FreeStarColumn].h, 100.0 - 2.9 + c.column[FreeStarColumn].H, 1e-12);
  EXPECT_NEAR(totals[FreeStarColumn].cv, 40.0 - 6.997 + rc::GasConstant / 2.0, 1e-12);
}

}  // namespace
}  // namespace quintor

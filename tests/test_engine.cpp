// The semi-empirical engine against MOPAC 22: heats of formation at fixed
// geometries and after optimisation, and the rules of its parameter file.
// The reference numbers come from tests/inputs/engine/make_reference.sh.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <thread>

#include "engine/engine.h"
#include "engine/geoopt.h"
#include "engine/gradient.h"
#include "engine/parameters.h"
#include "io/fortran_io.h"
#include "test_support.h"

namespace fs = std::filesystem;
using namespace quintor::engine;
using quintor::test::MopacReference;
using quintor::test::MopacReferences;

namespace {

const std::string kInputs = std::string(QUINTOR_TEST_INPUTS) + "/engine";

using Geometry = quintor::test::EngineGeometry;
Geometry ReadXyz(const std::string& name) { return quintor::test::EngineGeometryXyz(name); }


EngineMethod MethodFromName(const std::string& m) {
  if (m == "MNDO") return EngineMethod::MNDO;
  if (m == "AM1") return EngineMethod::AM1;
  if (m == "PM3") return EngineMethod::PM3;
  return EngineMethod::MNDOD;
}

EngineOptions BuiltinOnly() {
  EngineOptions o;
  o.parameterFile = "";
  o.printLevel = 0;
  return o;
}

double Heat(EngineMethod m, const Geometry& g, const EngineOptions& o = BuiltinOnly()) {
  const EngineResult r = EngineRun(m, g.z, g.x, 0, 1, false, nullptr, o);
  EXPECT_EQ(r.status, EngineStatus::Converged);
  return r.heatKcal;
}

}  // namespace

// ---- Heats of formation against MOPAC ----------------------------------------

// MNDO/d against MOPAC's MNDOD too: d orbitals on Al-Cl, Br and I, and
// MOPAC's older constants for the method (27.21 eV per hartree, 0.529167 A
// per bohr, 23.061 kcal/mol per eV), without which the heats drift by about
// 0.013 kcal/mol per heavy atom (C30H62: 0.41).
TEST(engineMopac, SinglePointHeatsWithinFiveHundredthsOfAKcal) {
  const auto refs = MopacReferences("mopac_1scf.txt");
  ASSERT_GT(refs.size(), 50u);
  std::map<std::string, double> worst;
  for (const MopacReference& r : refs) {
    const double heat = Heat(MethodFromName(r.method), ReadXyz(r.name));
    EXPECT_NEAR(heat, r.heat, 0.05) << r.name << ' ' << r.method;
    worst[r.method] = std::max(worst[r.method], std::abs(heat - r.heat));
  }
  for (const auto& [m, d] : worst) std::printf("  largest deviation from MOPAC, %s: %.5f kcal/mol\n", m.c_str(), d);
}

TEST(engineMopac, OptimisedHeatsWithinTwoTenthsOfAKcal) {
  const auto refs = MopacReferences("mopac_opt.txt");
  ASSERT_FALSE(refs.empty());
  for (const MopacReference& r : refs) {
    if (r.name == "ethanol") continue;  // the larger ones belong to the benchmark
    const Geometry g = ReadXyz(r.name);
    GeoOptSettings s;
    s.engine = BuiltinOnly();
    s.tolerances = {0.05, 1e-5, 1e-5};
    const GeoOptResult res = GeoOpt(MethodFromName(r.method), g.z, g.x, 0, 1, s, nullptr, nullptr);
    EXPECT_TRUE(res.optimised);
    EXPECT_NEAR(res.heatKcal, r.heat, 0.2) << r.name << ' ' << r.method;
  }
}

TEST(engineMopac, MndoDUsesNineOrbitalsOnChlorine) {
  const Geometry g = ReadXyz("chloromethane");
  const EngineResult d = EngineRun(EngineMethod::MNDOD, g.z, g.x, 0, 1, false, nullptr, BuiltinOnly());
  const EngineResult sp = EngineRun(EngineMethod::MNDO, g.z, g.x, 0, 1, false, nullptr, BuiltinOnly());
  EXPECT_EQ(d.orbitals, sp.orbitals + 5);
  EXPECT_EQ(d.electrons, sp.electrons);
}

// ---- Single atoms and special cases ------------------------------------------

TEST(engineAtoms, HydrogenAtomHeatIsItsEheat) {
  for (EngineMethod m : {EngineMethod::MNDO, EngineMethod::AM1, EngineMethod::PM3, EngineMethod::MNDOD}) {
    const EngineResult r = EngineRun(m, {1}, {{0, 0, 0}}, 0, 2, false, nullptr, BuiltinOnly());
    EXPECT_EQ(r.status, EngineStatus::Converged);
    EXPECT_NEAR(r.heatKcal, 52.102, 1e-9) << MethodName(m);
  }
}

// Multiplicity above 3 aborts; a doublet of even electrons is refused; a
// triplet names its two orbitals.
TEST(engineRunRules, MultiplicityMessages) {
  const Geometry w = ReadXyz("water");
  const Geometry o2{{8, 8}, {{0, 0, 0}, {0, 0, 1.2}}};
  struct Case {
    EngineMethod method;
    const Geometry& g;
    int multiplicity;
    EngineStatus status;
    std::vector<const char*> texts;
  };
  const Case cases[] = {
      {EngineMethod::PM3, w, 4, EngineStatus::Aborted, {" MULTIPLICITY GREATER THAN 3", "   *** MNDO ABORTED ***"}},
      {EngineMethod::MNDO, w, 2, EngineStatus::NotRun, {"DOUBLET SPECIFIED WITH EVEN NUMBER OF ELECTRONS"}},
      {EngineMethod::AM1, o2, 3, EngineStatus::Converged, {"ONE ELECTRON IN ORBITALS    6 AND    7"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.multiplicity);
    std::ostringstream report;
    EngineOptions o = BuiltinOnly();
    o.printLevel = 1;
    const EngineResult r = EngineRun(c.method, c.g.z, c.g.x, 0, c.multiplicity, true, &report, o);
    EXPECT_EQ(r.status, c.status);
    for (const char* t : c.texts) EXPECT_NE(report.str().find(t), std::string::npos) << t << "\n" << report.str();
  }
}

TEST(engineRunRules, MoreThan1000AtomsAreRefused) {
  std::vector<int> z(1001, 1);
  std::vector<std::array<double, 3>> x(1001);
  for (int i = 0; i < 1001; ++i) x[i] = {i * 1.0, 0, 0};
  const EngineResult r = EngineRun(EngineMethod::PM3, z, x, 0, 1, false, nullptr, BuiltinOnly());
  EXPECT_EQ(r.status, EngineStatus::NotRun);
  EXPECT_EQ(r.message, " The engine takes at most 1000 atoms; this structure has 1001.");
  EXPECT_EQ(r.exitStatus, 2);
}

TEST(engineRunRules, NoSelfConsistencyIsReportedAndTheNumberStands) {
  std::ostringstream report;
  EngineOptions o = BuiltinOnly();
  o.maxIterations = 3;
  const Geometry g = ReadXyz("benzene");
  const EngineResult r = EngineRun(EngineMethod::PM3, g.z, g.x, 0, 1, false, &report, o);
  EXPECT_EQ(r.status, EngineStatus::NotConverged);
  EXPECT_TRUE(std::isfinite(r.heatKcal));
  EXPECT_NE(report.str().find("*** UNABLE TO ACHIEVE SELFCONSISTENCE ***"), std::string::npos);
  EXPECT_NE(report.str().find(" DELTAE= "), std::string::npos);
}

// The gradient-mode criterion looks at |DELTAE| alone: an SCF that is still
// falling fast must not pass it. From the atoms' start it ends where the
// normal calculation ends.
TEST(engineRunRules, GradientModeConvergesToTheSameHeat) {
  for (const char* name : {"benzene", "ethanol", "dmso"}) {
    const Geometry g = ReadXyz(name);
    EngineOptions o = BuiltinOnly();
    const EngineResult normal = EngineRun(EngineMethod::PM3, g.z, g.x, 0, 1, false, nullptr, o);
    o.gradientCalculation = true;
    const EngineResult gradient = EngineRun(EngineMethod::PM3, g.z, g.x, 0, 1, false, nullptr, o);
    EXPECT_EQ(gradient.status, EngineStatus::Converged) << name;
    EXPECT_GT(gradient.iterations, 3) << name;
    EXPECT_NEAR(gradient.heatKcal, normal.heatKcal, 1e-5) << name;
  }
}

// DIIS takes only Fock matrices whose density came from orbitals: the atoms'
// diagonal start commutes with F in benzene, and its error of zero drew the
// extrapolation back to the first Fock matrix (16 cycles; MOPAC takes 12).
TEST(engineRunRules, DiisNeedsNoMoreCyclesThanMopac) {
  const Geometry g = ReadXyz("benzene");
  const EngineResult r = EngineRun(EngineMethod::PM3, g.z, g.x, 0, 1, false, nullptr, BuiltinOnly());
  EXPECT_EQ(r.status, EngineStatus::Converged);
  EXPECT_LE(r.iterations, 11);
}

// The optimiser's first steps are scaled to the molecule (57 energies on
// ethanol with a unit inverse Hessian) and its optimum is MOPAC's.
TEST(engineGeoOpt, EthanolInFewEnergiesAtMopacsOptimum) {
  double mopac = 0;
  for (const MopacReference& r : MopacReferences("mopac_opt.txt"))
    if (r.name == "ethanol" && r.method == "PM3") mopac = r.heat;
  ASSERT_NE(mopac, 0);
  const Geometry g = ReadXyz("ethanol");
  GeoOptSettings s;
  s.engine = BuiltinOnly();
  const GeoOptResult res = GeoOpt(EngineMethod::PM3, g.z, g.x, 0, 1, s, nullptr, nullptr);
  EXPECT_TRUE(res.optimised);
  EXPECT_LE(res.functionCalls, 30);
  EXPECT_NEAR(res.heatKcal, mopac, 0.05);
}

TEST(engineRunRules, ReportOpensWithTheIntegralSchemeAndCharge) {
  std::ostringstream report;
  EngineOptions o = BuiltinOnly();
  o.printLevel = 2;
  const Geometry g = ReadXyz("water");
  EngineRun(EngineMethod::AM1, g.z, g.x, 0, 1, true, &report, o);
  const std::string t = report.str();
  EXPECT_EQ(t.rfind(" CALCULATION OF THE REPULSION INTEGRALS BY DEWAR-THIEL", 0), 0u);
  for (const char* s : {"TRIAL SET OF ATOMIC COORDINATES (ANGSTROMS)", "INITIAL INTERATOMIC DISTANCES (ANGSTROMS)",
                        " MOLECULAR CHARGE =", " ELECTRONS, AND", " DOUBLY OCCUPIED MOS", "*** INFORMATION FOR",
                        "  SCF CALCULATION  OF", "  GEOMETRY ***", "    1 TO    4"})
    EXPECT_NE(t.find(s), std::string::npos) << s;
}

TEST(engineRunRules, WorkingFilesGoAndParallelRunsDoNotCollide) {
  const quintor::test::TempDir dir;
  EngineOptions o = BuiltinOnly();
  o.workDir = dir.path.string();
  const Geometry g = ReadXyz("ethanol");
  const double alone = Heat(EngineMethod::PM3, g, o);
  double a = 0, b = 0;
  std::thread t1([&] { a = EngineRun(EngineMethod::PM3, g.z, g.x, 0, 1, false, nullptr, o).heatKcal; });
  std::thread t2([&] { b = EngineRun(EngineMethod::PM3, g.z, g.x, 0, 1, false, nullptr, o).heatKcal; });
  t1.join();
  t2.join();
  EXPECT_DOUBLE_EQ(a, alone);
  EXPECT_DOUBLE_EQ(b, alone);
  EXPECT_TRUE(fs::is_empty(dir.path));
}

TEST(engineRunRules, HeatOfFormationLines) {
  std::ostringstream out;
  PrintHeatOfFormation(out, EngineMethod::PM3, -52.90651);
  EXPECT_EQ(out.str(), " PM3 method\n Heat of Formation       :    -221.3608 kJ/mol  =    -52.9065 kcal/mol\n");
}

TEST(engineGeoOpt, ChoiceTwoPrintsTheErrorAndLeavesTheStructure) {
  std::ostringstream console;
  GeoOptSettings s;
  s.minimiser = 2;
  s.engine = BuiltinOnly();
  const Geometry g = ReadXyz("water");
  const GeoOptResult r = GeoOpt(EngineMethod::MNDO, g.z, g.x, 0, 1, s, nullptr, &console);
  EXPECT_FALSE(r.optimised);
  EXPECT_EQ(r.coordinates, g.x);
  EXPECT_NE(console.str().find(" ERROOR! DUMINF call in GeoOpt"), std::string::npos);
  EXPECT_EQ(r.energyCalls, 0);
}

// The pair-wise gradient at fixed density against central differences of
// whole SCF energies, the oracle, on distorted molecules.
TEST(engineGradient, PairwiseAtFixedDensityIsTheNumericalGradient) {
  const std::pair<const char*, EngineMethod> cases[] = {{"water", EngineMethod::MNDO},
                                                        {"ethanol", EngineMethod::AM1},
                                                        {"chloromethane", EngineMethod::PM3},
                                                        {"dmso", EngineMethod::MNDOD},
                                                        {"bf3", EngineMethod::AM1}};
  for (const auto& [name, method] : cases) {
    SCOPED_TRACE(name);
    Geometry g = ReadXyz(name);
    g.x[0][0] += 0.03;
    g.x[1][2] -= 0.04;
    EngineOptions o = BuiltinOnly();
    o.scfCriterion = 1e-11;
    const ParameterSet set = BuiltinParameters(method);
    const EngineResult r = EngineRunWith(set, g.z, g.x, 0, 1, false, nullptr, o);
    const auto analytic = FixedDensityGradient(set, g.z, g.x, r.density);
    o.startDensity = &r.density;
    double worst = 0;
    for (size_t a = 0; a < g.z.size(); ++a)
      for (int k = 0; k < 3; ++k) {
        Geometry y = g;
        y.x[a][k] += 1e-4;
        const double ep = EngineRunWith(set, y.z, y.x, 0, 1, false, nullptr, o).heatKcal;
        y.x[a][k] -= 2e-4;
        const double em = EngineRunWith(set, y.z, y.x, 0, 1, false, nullptr, o).heatKcal;
        const double numeric = (ep - em) / 2e-4;
        EXPECT_NEAR(analytic[a][k], numeric, 1e-4) << "atom " << a + 1 << " axis " << k;
        worst = std::max(worst, std::abs(analytic[a][k] - numeric));
      }
    std::printf("  %s: largest difference %.2e kcal/mol/A\n", name, worst);
  }
}

// The same under UHF, with the alpha and beta densities apart, on a doublet
// and a triplet; a restricted open shell is no such case (its half-electron
// correction is not stationary), so the optimiser differentiates it numerically.
TEST(engineGradient, UnrestrictedPairwiseIsTheNumericalGradient) {
  const Geometry methyl{{6, 1, 1, 1}, {{0, 0, 0.05}, {1.08, 0, 0}, {-0.50, 0.95, 0}, {-0.56, -0.92, 0.02}}};
  const Geometry ch2{{6, 1, 1}, {{0, 0, 0}, {1.12, 0, 0}, {-0.45, 0.99, 0.03}}};
  const struct {
    const char* name;
    const Geometry& g;
    int multiplicity;
    EngineMethod method;
  } cases[] = {{"methyl", methyl, 2, EngineMethod::PM3}, {"ch2", ch2, 3, EngineMethod::MNDO}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EngineOptions o = BuiltinOnly();
    o.scfCriterion = 1e-11;
    o.unrestricted = true;
    const ParameterSet set = BuiltinParameters(c.method);
    const EngineResult r = EngineRunWith(set, c.g.z, c.g.x, 0, c.multiplicity, false, nullptr, o);
    ASSERT_EQ(r.alphaDensity.size(), r.density.size());
    const auto analytic = FixedDensityGradient(set, c.g.z, c.g.x, r.density, &r.alphaDensity);
    double worst = 0;
    for (size_t a = 0; a < c.g.z.size(); ++a)
      for (int k = 0; k < 3; ++k) {
        Geometry y = c.g;
        y.x[a][k] += 1e-4;
        const double ep = EngineRunWith(set, y.z, y.x, 0, c.multiplicity, false, nullptr, o).heatKcal;
        y.x[a][k] -= 2e-4;
        const double em = EngineRunWith(set, y.z, y.x, 0, c.multiplicity, false, nullptr, o).heatKcal;
        const double numeric = (ep - em) / 2e-4;
        EXPECT_NEAR(analytic[a][k], numeric, 1e-4) << "atom " << a + 1 << " axis " << k;
        worst = std::max(worst, std::abs(analytic[a][k] - numeric));
      }
    std::printf("  %s (UHF): largest difference %.2e kcal/mol/A\n", c.name, worst);
  }
}

TEST(engineGeoOpt, LogAndProgressLines) {
  std::ostringstream console, log;
  GeoOptSettings s;
  s.engine = BuiltinOnly();
  const Geometry g = ReadXyz("hf");
  const GeoOptResult r = GeoOpt(EngineMethod::PM3, g.z, g.x, 0, 1, s, &log, &console);
  EXPECT_TRUE(r.optimised);
  // one SCF per energy; a gradient at a point not just computed adds one
  EXPECT_LE(r.energyCalls, r.functionCalls + r.gradientCalls);
  s.numericalGradient = true;
  const GeoOptResult n = GeoOpt(EngineMethod::PM3, g.z, g.x, 0, 1, s, nullptr, nullptr);
  EXPECT_EQ(n.energyCalls, n.functionCalls + 2 * 6 * n.gradientCalls);
  EXPECT_NEAR(n.heatKcal, r.heatKcal, 1e-3);
  for (const char* t : {" Geometry optimization using PM3 method", " Cycle:", "   Energy =", " OPTIMIZATION FINISHED.  E =",
                        " kJ/mol.  G =", "  FCN="})
    EXPECT_NE(console.str().find(t), std::string::npos) << t;
  for (const char* t : {" Final Heat of Formation: ", " Final Gradient Norm    : ", " F calls:", "     G calls:",
                        " Optimized coordinates:"})
    EXPECT_NE(log.str().find(t), std::string::npos) << t;
}

// ---- Parameter file ------------------------------------------------------------

TEST(engineParameters, SharedFileEqualsTheBuiltInTables) {
  const std::string path = std::string(QUINTOR_TESTDATA) + "/../data/nddo_parameters.dat";
  if (!fs::exists(path)) GTEST_SKIP() << "../shared/data/nddo_parameters.dat is not beside the checkout";
  for (EngineMethod m : {EngineMethod::MNDO, EngineMethod::AM1, EngineMethod::PM3, EngineMethod::MNDOD,
                         EngineMethod::PM3D}) {
    ParameterSet fromFile = BuiltinParameters(m);
    for (auto& e : fromFile.el) e = ElementParameters{};
    for (int z = 1; z <= kMaxElement; ++z) fromFile.el[z].core = BuiltinParameters(m).el[z].core;
    const ParameterFileResult r = ReadParameterFile(path, fromFile);
    ASSERT_TRUE(r.ok) << r.message;
    const ParameterSet builtin = BuiltinParameters(m);
    for (int z = 1; z <= kMaxElement; ++z) {
      const ElementParameters &a = fromFile.el[z], &b = builtin.el[z];
      EXPECT_TRUE(a.uss == b.uss && a.upp == b.upp && a.betas == b.betas && a.betap == b.betap && a.zs == b.zs &&
                  a.zp == b.zp && a.alp == b.alp && a.gss == b.gss && a.hsp == b.hsp && a.eheat == b.eheat &&
                  a.eisol == b.eisol && a.gues1 == b.gues1 && a.udd == b.udd && a.znd == b.znd)
          << MethodName(m) << " element " << z;
    }
  }
}

TEST(engineParameters, Pm3dIsPm3WhereNoElementCarriesD) {
  const ParameterSet pm3 = BuiltinParameters(EngineMethod::PM3);
  const ParameterSet pm3d = BuiltinParameters(EngineMethod::PM3D);
  for (int z = 1; z <= kMaxElement; ++z) EXPECT_EQ(pm3.el[z].uss, pm3d.el[z].uss);
  const Geometry g = ReadXyz("chloromethane");
  EXPECT_DOUBLE_EQ(Heat(EngineMethod::PM3, g), Heat(EngineMethod::PM3D, g));
}

struct FileCase {
  const char* name;
  const char* text;
  EngineMethod method;
  double expectedUssC;  // carbon USS after reading
};

TEST(engineParameters, FileRules) {
  const double pm3 = BuiltinParameters(EngineMethod::PM3).el[6].uss;
  const double am1 = BuiltinParameters(EngineMethod::AM1).el[6].uss;
  const FileCase cases[] = {
      {"upper-case key applies", "//PM3 \nUSS      6          -40.0\n", EngineMethod::PM3, -40.0},
      {"lower-case key is passed over", "//PM3 \nuss      6          -40.0\n", EngineMethod::PM3, pm3},
      {"//PM3 serves PM3d too", "//PM3 \nUSS      6          -40.0\n", EngineMethod::PM3D, -40.0},
      {"another method's section is passed over", "//PM3 \nUSS      6          -40.0\n", EngineMethod::AM1, am1},
      {"COMMON serves all", "//COMMON\nUSS      6          -41.0\n", EngineMethod::AM1, -41.0},
      {"//END ends the reading", "//PM3 \n//END\nUSS      6          -40.0\n", EngineMethod::PM3, pm3},
      {"comments and blank lines", "C USS   6  -1\n* x\nc y\n\n//PM3 \nUSS      6          -42.0\n",
       EngineMethod::PM3, -42.0},
      {"MNDO section is not MNDOD", "//MNDO \nUSS      6          -43.0\n", EngineMethod::MNDOD,
       BuiltinParameters(EngineMethod::MNDOD).el[6].uss},
      {"MNDOD section", "//MNDOD\nUSS      6          -43.0\n", EngineMethod::MNDOD, -43.0},
      {"BS is BETAS", "//PM3 \nBS       6          -7.0\nUSS      6          -44.0\n", EngineMethod::PM3, -44.0},
  };
  for (const FileCase& c : cases) {
    ParameterSet set = BuiltinParameters(c.method);
    std::istringstream in(c.text);
    const ParameterFileResult r = ReadParameterFile(in, set);
    EXPECT_TRUE(r.ok) << c.name;
    EXPECT_DOUBLE_EQ(set.el[6].uss, c.expectedUssC) << c.name;
  }
}

TEST(engineParameters, GivenHppStaysAndMissingHppIsDerived) {
  ParameterSet set = BuiltinParameters(EngineMethod::AM1);
  std::istringstream in("//AM1 \nGPP      6           12.0\nHPP      7            0.7\n");
  ReadParameterFile(in, set);
  EXPECT_DOUBLE_EQ(set.el[6].hpp, 0.5 * (12.0 - set.el[6].gp2));
  EXPECT_DOUBLE_EQ(set.el[7].hpp, 0.7);
}

TEST(engineParameters, SecondIndexAndBadLine) {
  ParameterSet set = BuiltinParameters(EngineMethod::AM1);
  std::istringstream good("//AM1 \nGUES1    6 2         0.5\n");
  EXPECT_TRUE(ReadParameterFile(good, set).ok);
  EXPECT_DOUBLE_EQ(set.el[6].gues1[1], 0.5);
  std::istringstream bad("//AM1 \nUSS      x          -1.0\n");
  const ParameterFileResult r = ReadParameterFile(bad, set);
  EXPECT_FALSE(r.ok);
  EXPECT_EQ(r.message, " ERROR! Reading atom parameters from MNDOD.DAT. Line 2");
}

TEST(engineParameters, NoFileLeavesTheBuiltInValues) {
  const quintor::test::TempDir dir;
  const ParameterSet set = LoadParameters(EngineMethod::PM3, dir.File("MNDOD.DAT"));
  EXPECT_DOUBLE_EQ(set.el[6].uss, BuiltinParameters(EngineMethod::PM3).el[6].uss);
  // A file in place changes the energy of the next call.
  EngineOptions o = BuiltinOnly();
  o.parameterFile = dir.Write("MNDOD.DAT", "//PM3 \nEHEAT    1          60.0\n");
  const EngineResult r = EngineRun(EngineMethod::PM3, {1}, {{0, 0, 0}}, 0, 2, false, nullptr, o);
  EXPECT_NEAR(r.heatKcal, 60.0, 1e-9);
}


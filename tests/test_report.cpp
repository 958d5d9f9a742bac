// The post-read report: inertia, point group and symmetry number checked
// against Gaussian's own numbers on real logs, the last frame of a
// trajectory as the final geometry, and the report's layout.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "app/report.h"
#include "readers/elements.h"
#include "test_support.h"

using namespace quintor;
using namespace quintor::test;
namespace fs = std::filesystem;

namespace {

// What Gaussian itself says about the molecule, read from its log.
struct GaussianSays {
  std::string group;          // last "Full point group", upper case; empty when absent
  int symmetryNumber = 0;     // last "Rotational symmetry number"; 0 when absent
  std::vector<double> ghz;    // last rotational constants
};

GaussianSays ReadGaussian(const std::string& path) {
  GaussianSays g;
  std::ifstream f(path);
  const std::regex group(R"(Full point group\s+(\S+))"),
      number(R"(Rotational symmetry number\s+(\d+))", std::regex::icase),
      constants(R"(Rotational constants? \(GHZ\):?\s+(.*))", std::regex::icase);
  for (std::string line; std::getline(f, line);) {
    std::smatch m;
    if (std::regex_search(line, m, group)) g.group = m[1];
    if (std::regex_search(line, m, number)) g.symmetryNumber = std::stoi(m[1]);
    if (std::regex_search(line, m, constants)) {
      std::istringstream values(m[1].str());
      g.ghz.clear();
      for (double v; values >> v;) g.ghz.push_back(v);
    }
  }
  return g;
}

// The values after the last `label` of the log.
std::vector<double> Numbers(const std::string& log, const std::string& label) {
  const size_t at = log.rfind(label);
  if (at == std::string::npos) return {};
  std::istringstream in(log.substr(at + label.size(), log.find('\n', at) - at - label.size()));
  std::vector<double> v;
  for (double x; in >> x;) v.push_back(x);
  return v;
}

}  // namespace

TEST(ReportAgainstGaussian, PointGroupSymmetryNumberAndRotationalConstants) {
  SKIP_WITHOUT_TESTDATA();
  // benzene_freq and irc_point were run by Gaussian without symmetry ("Framework
  // group C1", symmetry number 1): their geometries are D6h and C3v, which is
  // what the recogniser finds, so only their rotational constants are compared.
  struct Case {
    std::string file;
    std::vector<std::string> options;
    bool groupComparable;
  };
  const std::vector<Case> cases = {
      {"gaussian98/h2_freq.log", {}, true},          {"gaussian98/cu2_freq.log", {}, true},
      {"gaussian98/water_zmatrix_nosym.log", {"/Z"}, true}, {"gaussian03/dvb_ir.log", {}, true},
      {"gaussian03/dvb_raman.log", {}, true},        {"gaussian03/dvb_gopt.log", {}, true},
      {"gaussian03/anthracene_opt_freq.log", {}, true}, {"gaussian03/water_mp2.log", {}, true},
      {"gaussian09/bsl_opt_freq.log", {}, true},     {"gaussian09/benzene_freq.log", {}, false},
      {"gaussian09/irc_point.log", {"/I"}, false},   {"gaussian16/water_opt_freq.log", {}, true},
      {"gaussian16/co_opt_freq.log", {}, true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.file);
    const GaussianSays g = ReadGaussian(TestData(c.file));
    LogRun run(TestData(c.file), c.options);
    ASSERT_EQ(run.r.status, 0) << run.r.console;
    const std::string& log = run.r.log;
    const size_t at = log.rfind(" Symmetry Group            : ");
    ASSERT_NE(at, std::string::npos);
    std::string group = log.substr(at + 29, 4);
    group.erase(group.find_last_not_of(' ') + 1);
    for (char& ch : group) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    if (c.groupComparable && !g.group.empty()) {
      EXPECT_EQ(group, g.group);
    }
    if (c.groupComparable && g.symmetryNumber > 0) {
      EXPECT_EQ(std::lround(run.s.opt.rotationNumber), g.symmetryNumber);
    }
    const std::vector<double> ghz = Numbers(log, " A, B, C,  GHz    :");
    ASSERT_EQ(ghz.size(), 3u);
    // A linear molecule prints one constant; its first moment is zero.
    const std::vector<double> ours = g.ghz.size() == 1 ? std::vector<double>{ghz[1]} : ghz;
    ASSERT_EQ(ours.size(), g.ghz.size());
    for (size_t k = 0; k < ours.size(); ++k) EXPECT_NEAR(ours[k] / g.ghz[k], 1.0, 1e-4) << k;
  }
}

TEST(Report, TheLastFrameOfATrajectoryIsTheFinalGeometry) {
  // Carbon monoxide at 1.20, 1.15 and 1.13 A: the report and the
  // thermochemistry must both see the last bond length, not the one before.
  TempDir dir;
  Session s;
  RunResult r = RunInProcess(s, {dir.Write("co.txt", ReadFile(TestInput("co_trajectory.txt"))), "/NXYZ3@TEST", "/0"});
  ASSERT_EQ(r.status, 0) << r.console;
  ASSERT_EQ(s.iCyc, 3);
  const double mc = DefaultMass(6), mo = DefaultMass(8), bond = 1.13;
  char rows[200];
  std::snprintf(rows, sizeof rows, " %-5s%4d%12.6f%12.6f%12.6f%12.6f\n %-5s%4d%12.6f%12.6f%12.6f%12.6f\n", "C1", 6,
                0.0, 0.0, 0.0, mc, "O2", 8, 0.0, 0.0, bond, mo);
  EXPECT_NE(r.log.find(" Final coordinates (A) and atomic masses (AMU), for cycle:    3\n" + std::string(rows)),
            std::string::npos)
      << r.log;
  // I = mu r^2; B = h / (8 pi^2 I).
  const double momentAu = mc * mo / (mc + mo) * std::pow(bond * constants::AngstromToBohr, 2);
  const double momentSI = momentAu * constants::AtomicMassUnit * std::pow(constants::BohrRadius, 2);
  const double bGHz = constants::Planck / (8 * constants::Pi * constants::Pi * momentSI) * 1e-9;
  const std::vector<double> ghz = Numbers(r.log, " A, B, C,  GHz    :");
  ASSERT_EQ(ghz.size(), 3u);
  EXPECT_NEAR(ghz[1] / bGHz, 1.0, 1e-5);
  EXPECT_NEAR(ghz[2] / bGHz, 1.0, 1e-5);
  const size_t thermo = r.log.find(" THERMOCHEMICAL PROPERTIES EVALUATION");
  ASSERT_NE(thermo, std::string::npos);
  EXPECT_NE(r.log.find(" Molecular geometry corresponds to the last coordinate set - Step No.    3", thermo),
            std::string::npos);
  const std::vector<double> moments = Numbers(r.log, " Principal moments of inertia, a.u.");
  ASSERT_EQ(moments.size(), 3u);
  EXPECT_NEAR(moments[0], momentAu, 1e-6);
  EXPECT_NEAR(moments[1], momentAu, 1e-6);
  EXPECT_NEAR(s.thermo.moments[0], momentSI, 1e-6 * momentSI);
}

TEST(Report, SingleAtom) {
  TempDir dir;
  auto r = RunInProcess({dir.Write("ne.xyz", "Ne 0.5 0.5 0.5\n"), "/X0", "/0"});  // no lines to skip
  ASSERT_EQ(r.status, 0);
  EXPECT_NE(r.log.find(" Rotational Symmetry       : Single-atom molecule\n"
                       " Symmetry Index            : 60000000\n"
                       " Symmetry Group            : O(3)   (will be used in further analysis)\n"),
            std::string::npos)
      << r.log;
  EXPECT_NE(r.log.find(" Stoichiometry           : Ne                  \n"), std::string::npos);
  EXPECT_NE(r.log.find(" Mass center, mol.mass:    0.500000    0.500000    0.500000"), std::string::npos) << r.log;
}

TEST(Report, ParametersInEffectAndTheCentredCoordinates) {
  SKIP_WITHOUT_TESTDATA();
  LogRun run(TestData("gaussian16/water_opt_freq.log"), {"/TT350", "/PP2", "/SCALE0.96", "/FX50", "/HB3"});
  const RunResult& r = run.r;
  ASSERT_EQ(r.status, 0);
  EXPECT_NE(r.log.find(" ****** PARAMETERS IN EFFECT *******\n"
                       " Temperature, K, set to  :    350.00\n"
                       " Pressure, Pa,   set to  : 202650.00\n"
                       " Rotation number set to  :         2\n"
                       " H-bond length, A, set to:      3.00\n"
                       " Internal rotations found:         0\n"
                       " Coordinate sets found   :         5\n"
                       " Frequencies found       :         9\n"
                       " Num. of imaginary freqs :         0\n"
                       " Frequencies scaled by   :    0.9600\n"
                       " Frequencies used in TD  >     50.00 cm-1\n"
                       " Number of atoms         :         3\n"),
            std::string::npos)
      << r.log;
  // The last view, written before the evaluation, shows the working
  // coordinates at the mass centre.
  const size_t table = r.log.find("in a molecular (moving) frame, (A):");
  ASSERT_NE(table, std::string::npos);
  std::istringstream view(r.log.substr(table));
  std::string line;
  std::getline(view, line);
  std::getline(view, line);  // rule
  Vec3 centre{};
  for (int i = 0; i < run.s.nAtoms && std::getline(view, line); ++i) {
    ASSERT_GT(line.size(), 11u);
    std::istringstream row(line.substr(11));
    Vec3 p{};
    row >> p[0] >> p[1] >> p[2];
    for (int k = 0; k < 3; ++k) centre[k] += run.s.atomMass[i] * p[k] / run.s.molMass;
  }
  for (double c : centre) EXPECT_NEAR(c, 0.0, 1e-6);
}

TEST(Report, UserRotationNumberNoSymmetryAndSymEps) {
  SKIP_WITHOUT_TESTDATA();
  LogRun run(TestData("gaussian16/water_opt_freq.log"), {"/ROT3"});
  EXPECT_NE(run.r.log.find(" WARNING! Rotational symmetry number determined from the\n"
                           " actual symmetry of molecule ( 2) is different from \n"
                           " the user-defined one (   3)!\n"
                           " The user-defined value will be used in calculations. \n"
                           " Be sure that your setting is correct!\n"
                           " Rotational Symmetry Number:  3\n"),
            std::string::npos)
      << run.r.log;
  EXPECT_EQ(run.s.opt.rotationNumber, 3.0);
  auto n = RunInProcess({run.copy, "/0", "/NOSYM"});
  EXPECT_NE(n.log.find(" WARNING! Symmetry recognition is turned off! Molecular symmetry set to C1."), std::string::npos);
  EXPECT_NE(n.log.find(" Rotational Symmetry Number:  1\n"), std::string::npos);
  auto e = RunInProcess({run.copy, "/0", "/SYMEPS0.02"});
  EXPECT_NE(e.log.find(" WARNING! Non-standard value of SymEps is used \n"
                       " to recognize the molecular symmetry:        0.0200000000\n"),
            std::string::npos)
      << e.log;
}

TEST(Report, OrientMovesEverySetAndTheModes) {
  SKIP_WITHOUT_TESTDATA();
  LogRun plain(TestData("gaussian16/water_opt_freq.log"));
  LogRun run(TestData("gaussian16/water_opt_freq.log"), {"/ORIENT2-1-3"});
  const Session& s = run.s;
  ASSERT_EQ(run.r.status, 0);
  EXPECT_NE(run.r.log.find(" The read-in structures  will be re-oriented.  Reference atoms: "), std::string::npos);
  // Atom 2 at the origin, atom 1 on +X, atom 3 in the XY plane, in every set.
  for (int i = -1; i <= s.iCyc; ++i) {
    const auto& xyz = s.Set(i).xyz;
    ASSERT_EQ(xyz.size(), 3u);
    EXPECT_NEAR(std::hypot(xyz[1][0], xyz[1][1], xyz[1][2]), 0.0, 1e-9);
    EXPECT_GT(xyz[0][0], 0.0);
    EXPECT_NEAR(xyz[0][1], 0.0, 1e-9);
    EXPECT_NEAR(xyz[2][2], 0.0, 1e-9);
  }
  // A rotation keeps the length of every displacement vector.
  ASSERT_EQ(s.modes.size(), plain.s.modes.size());
  for (size_t m = 0; m < s.modes.size(); ++m) {
    ASSERT_EQ(s.modes[m].disp.size(), plain.s.modes[m].disp.size());
    for (size_t a = 0; a < s.modes[m].disp.size(); ++a) {
      const Vec3 &u = s.modes[m].disp[a], &v = plain.s.modes[m].disp[a];
      EXPECT_NEAR(std::hypot(u[0], u[1], u[2]), std::hypot(v[0], v[1], v[2]), 1e-12);
    }
  }
}

TEST(Report, StoichiometryInHillOrder) {
  Session s;
  s.elementCount[8] = 1, s.elementCount[6] = 2, s.elementCount[1] = 6, s.elementCount[17] = 1;
  EXPECT_EQ(Stoichiometry(s), "C2H6ClO");
  Session w;
  w.elementCount[8] = 1, w.elementCount[1] = 2;
  EXPECT_EQ(Stoichiometry(w), "H2O");  // without carbon: alphabetical
  // Lanthanides and actinides by their IUPAC symbols: ThO2 with a neodymium.
  Session f;
  f.elementCount[60] = 1, f.elementCount[90] = 1, f.elementCount[8] = 2;
  EXPECT_EQ(Stoichiometry(f), "NdO2Th");
}

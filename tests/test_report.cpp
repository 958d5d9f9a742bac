// The post-read report: inertia, point group and symmetry number checked
// against Gaussian's own numbers on real logs, and the report's layout.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "app/report.h"
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
  std::string line;
  while (std::getline(f, line)) {
    std::smatch m;
    if (std::regex_search(line, m, std::regex(R"(Full point group\s+(\S+))"))) g.group = m[1];
    if (std::regex_search(line, m, std::regex(R"(Rotational symmetry number\s+(\d+))", std::regex::icase)))
      g.symmetryNumber = std::stoi(m[1]);
    if (std::regex_search(line, m, std::regex(R"(Rotational constants? \(GHZ\):?\s+(.*))", std::regex::icase))) {
      std::istringstream values(m[1].str());
      g.ghz.clear();
      for (double v; values >> v;) g.ghz.push_back(v);
    }
  }
  return g;
}

std::string Upper(std::string s) {
  for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return s;
}

std::string Field(const std::string& log, const std::string& label) {
  size_t at = log.rfind(label);
  if (at == std::string::npos) return {};
  size_t end = log.find('\n', at);
  return log.substr(at + label.size(), end - at - label.size());
}

struct Case {
  std::string file;
  std::vector<std::string> options;
  bool groupComparable;  // Gaussian ran with symmetry, and the recogniser knows the group
};

}  // namespace

TEST(ReportAgainstGaussian, PointGroupSymmetryNumberAndRotationalConstants) {
  // benzene_freq and irc_point were run by Gaussian without symmetry ("Framework
  // group C1", symmetry number 1): their geometries are D6h and C3v, which is
  // what the recogniser finds, so only their rotational constants are compared.
  const std::vector<Case> cases = {
      {"gaussian98/h2_freq.log", {}, true},
      {"gaussian98/cu2_freq.log", {}, true},
      {"gaussian98/water_zmatrix_nosym.log", {"/Z"}, true},
      {"gaussian03/dvb_ir.log", {}, true},
      {"gaussian03/dvb_raman.log", {}, true},
      {"gaussian03/dvb_gopt.log", {}, true},
      {"gaussian03/anthracene_opt_freq.log", {}, true},
      {"gaussian03/water_mp2.log", {}, true},
      {"gaussian09/bsl_opt_freq.log", {}, true},
      {"gaussian09/benzene_freq.log", {}, false},
      {"gaussian09/irc_point.log", {"/I"}, false},
      {"gaussian16/water_opt_freq.log", {}, true},
      {"gaussian16/co_opt_freq.log", {}, true},
  };
  TempDir dir;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.file);
    const GaussianSays g = ReadGaussian(TestData(c.file));
    std::string copy = dir.File(fs::path(c.file).filename().string());
    fs::copy_file(TestData(c.file), copy, fs::copy_options::overwrite_existing);
    std::vector<std::string> args{copy, "/0"};
    args.insert(args.end(), c.options.begin(), c.options.end());
    Session s;
    RunResult r = RunInProcess(s, args);
    ASSERT_EQ(r.status, 0) << r.console;

    std::string group = Field(r.log, " Symmetry Group            : ").substr(0, 4);
    group.erase(group.find_last_not_of(' ') + 1);
    if (c.groupComparable && !g.group.empty()) EXPECT_EQ(Upper(group), g.group);
    if (c.groupComparable && g.symmetryNumber > 0) EXPECT_EQ(std::lround(s.opt.rotationNumber), g.symmetryNumber);

    std::istringstream ours(Field(r.log, " A, B, C,  GHz    :"));
    std::vector<double> ghz;
    for (double v; ours >> v;) ghz.push_back(v);
    ASSERT_EQ(ghz.size(), 3u);
    // A linear molecule prints one constant; its first moment is zero.
    std::vector<double> compare = g.ghz.size() == 1 ? std::vector<double>{ghz[1]} : ghz;
    ASSERT_EQ(compare.size(), g.ghz.size());
    for (size_t k = 0; k < compare.size(); ++k) EXPECT_NEAR(compare[k] / g.ghz[k], 1.0, 1e-4) << k;
  }
}

TEST(Report, SingleAtom) {
  TempDir dir;
  auto r = RunInProcess({dir.Write("ne.xyz", "Ne 0.5 0.5 0.5\n"), "/X", "/0"});
  ASSERT_EQ(r.status, 0);
  EXPECT_NE(r.log.find(" Rotational Symmetry       : Single-atom molecule\n"
                       " Symmetry Index            : 60000000\n"
                       " Symmetry Group            : O(3)   (will be used in further analysis)\n"),
            std::string::npos)
      << r.log;
  EXPECT_NE(r.log.find(" Number of atoms         :         1\n"), std::string::npos);
  EXPECT_NE(r.log.find(" Stoichiometry           : Ne                  \n"), std::string::npos);
  EXPECT_NE(r.log.find(" Mass center, mol.mass:    0.500000    0.500000    0.500000"), std::string::npos) << r.log;
}

TEST(Report, OneSetLogIsLowestForAllThreeExtremes) {
  LogRun run(TestData("gaussian98/h2_freq.log"));
  const RunResult& r = run.r;
  EXPECT_NE(r.log.find(" Lowest Energy:  Step    0"), std::string::npos);
  EXPECT_NE(r.log.find(" Lowest GMax  :  Step    0"), std::string::npos);
  EXPECT_NE(r.log.find(" Lowest GRms  :  Step    0"), std::string::npos);
}

TEST(Report, ParametersInEffect) {
  LogRun run(TestData("gaussian16/water_opt_freq.log"), {"/TT350", "/PP2", "/SCALE0.96", "/FX50", "/HB3"});
  const Session& s = run.s;
  const RunResult& r = run.r;
  ASSERT_EQ(r.status, 0);
  EXPECT_NE(r.log.find(" ****** PARAMETERS IN EFFECT *******\n"
                       " Temperature, K, set to  :    350.00\n"
                       " Pressure, Pa,   set to  : 202650.00\n"
                       " Rotation number set to  :         2\n"
                       " H-bond length, A, set to:      3.00\n"
                       " Internal rotations found:         0\n"
                       " Coordinate sets found   :         4\n"
                       " Frequencies found       :         9\n"
                       " Num. of imaginary freqs :         0\n"
                       " Frequencies scaled by   :    0.9600\n"
                       " Frequencies used in TD  >     50.00 cm-1\n"
                       " Number of atoms         :         3\n"),
            std::string::npos)
      << r.log;
  EXPECT_NE(r.log.find(" Symmetry group          : C2v \n"
                       " Approximate symmetry    : C2v      \n"
                       " Stoichiometry           : H2O                 \n"
                       " ***********************************\n"),
            std::string::npos);
  // The working coordinates stand at the mass centre after the report: the
  // last view, written before the evaluation, shows them.
  std::istringstream view(r.log.substr(r.log.find("in a molecular (moving) frame, (A):")));
  std::string line;
  std::getline(view, line);
  std::getline(view, line);  // rule
  Vec3 centre{};
  for (int i = 0; i < s.nAtoms && std::getline(view, line); ++i) {
    std::istringstream row(line.substr(11));
    Vec3 r{};
    row >> r[0] >> r[1] >> r[2];
    for (int k = 0; k < 3; ++k) centre[k] += s.atomMass[i] * r[k] / s.molMass;
  }
  for (double c : centre) EXPECT_NEAR(c, 0.0, 1e-6);
}

TEST(Report, UserRotationNumberAndNoSymmetry) {
  LogRun run(TestData("gaussian16/water_opt_freq.log"), {"/ROT3"});
  const std::string& copy = run.copy;
  const RunResult& r = run.r;
  EXPECT_NE(r.log.find(" WARNING! Rotational symmetry number determined from the\n"
                       " actual symmetry of molecule ( 2) is different from \n"
                       " the user-defined one (   3)!\n"
                       " The user-defined value will be used in calculations. \n"
                       " Be sure that your setting is correct!\n"
                       " Rotational Symmetry Number:  3\n"),
            std::string::npos)
      << r.log;
  EXPECT_EQ(run.s.opt.rotationNumber, 3.0);
  auto n = RunInProcess({copy, "/0", "/NOSYM"});
  EXPECT_NE(n.log.find(" WARNING! Symmetry recognition is turned off! Molecular symmetry set to C1."), std::string::npos);
  EXPECT_NE(n.log.find(" Rotational Symmetry Number:  1\n"), std::string::npos);
  auto e = RunInProcess({copy, "/0", "/SYMEPS0.02"});
  EXPECT_NE(e.log.find(" WARNING! Non-standard value of SymEps is used \n"
                       " to recognize the molecular symmetry:        0.0200000000\n"),
            std::string::npos)
      << e.log;
}

TEST(Report, OrientMovesEverySetAndTheModes) {
  LogRun unturned(TestData("gaussian16/water_opt_freq.log"));
  const Session& plain = unturned.s;
  LogRun run(TestData("gaussian16/water_opt_freq.log"), {"/ORIENT2-1-3"});
  const Session& s = run.s;
  const RunResult& r = run.r;
  ASSERT_EQ(r.status, 0);
  EXPECT_NE(r.log.find(" The read-in structures  will be re-oriented.  Reference atoms: "), std::string::npos);
  // Atom 2 at the origin, atom 1 on +X, atom 3 in the XY plane, in every set.
  for (int i = -1; i <= s.iCyc; ++i) {
    const auto& xyz = s.Set(i).xyz;
    EXPECT_NEAR(std::hypot(xyz[1][0], xyz[1][1], xyz[1][2]), 0.0, 1e-9);
    EXPECT_GT(xyz[0][0], 0.0);
    EXPECT_NEAR(xyz[0][1], 0.0, 1e-9);
    EXPECT_NEAR(xyz[2][2], 0.0, 1e-9);
  }
  // A rotation keeps the length of every displacement vector.
  ASSERT_EQ(s.modes.size(), plain.modes.size());
  for (size_t m = 0; m < s.modes.size(); ++m)
    for (size_t a = 0; a < s.modes[m].disp.size(); ++a) {
      const Vec3& u = s.modes[m].disp[a];
      const Vec3& v = plain.modes[m].disp[a];
      EXPECT_NEAR(std::hypot(u[0], u[1], u[2]), std::hypot(v[0], v[1], v[2]), 1e-12);
    }
}

TEST(Report, StoichiometryInHillOrder) {
  Session s;
  s.elementCount[8] = 1, s.elementCount[6] = 2, s.elementCount[1] = 6, s.elementCount[17] = 1;
  EXPECT_EQ(Stoichiometry(s), "C2H6ClO");
  Session w;
  w.elementCount[8] = 1, w.elementCount[1] = 2;
  EXPECT_EQ(Stoichiometry(w), "H2O");  // without carbon: alphabetical
}

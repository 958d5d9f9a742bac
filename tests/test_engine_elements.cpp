// Every element with built-in parameters, one molecule per method, against
// MOPAC 22 (tests/inputs/engine/make_element_reference.py): within 0.05
// kcal/mol, or refused under that method. PM3d takes PM3's parameters and is
// held to MOPAC's PM3. Also the charge and multiplicity the engine refuses.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>
#include <sstream>

#include "engine/engine.h"
#include "engine/geoopt.h"
#include "engine/integrals.h"
#include "io/fortran_io.h"
#include "model/elements.h"
#include "test_support.h"

using namespace quintor::engine;

namespace {

// The element symbol without the table's padding.
std::string Symbol(int z) { return std::string(quintor::Trim(quintor::ElementSymbol(z))); }

using Molecule = quintor::test::EngineGeometry;
Molecule ReadXyz(const std::string& name) { return quintor::test::EngineGeometryXyz(name); }

struct Reference {
  std::string name, method;
  bool mopacRuns = false;  // MOPAC 22 has the element under the method
  double heat = 0;
};

std::vector<Reference> References() {
  std::ifstream in(quintor::test::TestInput("engine/mopac_elements.txt"));
  std::vector<Reference> refs;
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream ss(line);
    Reference r;
    std::string heat;
    ss >> r.name >> r.method >> heat;
    r.mopacRuns = heat != "none";
    if (r.mopacRuns) r.heat = std::stod(heat);
    refs.push_back(r);
  }
  return refs;
}

EngineOptions BuiltinOnly() {
  EngineOptions o;
  o.parameterFile = "";
  o.printLevel = 0;
  o.writeWorkingFiles = false;
  return o;
}

// The open-shell molecules of uhf_molecules.txt by name.
std::map<std::string, Molecule> UhfMolecules() {
  std::ifstream mols(quintor::test::TestInput("engine/uhf_molecules.txt"));
  std::map<std::string, Molecule> geometry;
  for (std::string line; std::getline(mols, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream ss(line);
    std::string name, sym;
    int mult = 0;
    ss >> name >> mult;
    std::array<double, 3> x{};
    while (ss >> sym >> x[0] >> x[1] >> x[2]) {
      for (int z = 1; z <= kMaxElement; ++z)
        if (sym == Symbol(z)) geometry[name].z.push_back(z);
      geometry[name].x.push_back(x);
    }
  }
  return geometry;
}

}  // namespace

TEST(engineElements, EachElementMatchesMopacOrIsRefused) {
  const std::vector<Reference> refs = References();
  ASSERT_GT(refs.size(), 140u);
  int matched = 0, refused = 0;
  for (const Reference& r : refs) {
    std::vector<EngineMethod> methods;
    if (r.method == "MNDO") methods = {EngineMethod::MNDO};
    if (r.method == "AM1") methods = {EngineMethod::AM1};
    if (r.method == "PM3") methods = {EngineMethod::PM3, EngineMethod::PM3D};
    if (r.method == "MNDOD") methods = {EngineMethod::MNDOD};
    const Molecule m = ReadXyz(r.name);
    ASSERT_FALSE(m.z.empty()) << r.name;
    const int element = m.z.front();
    for (EngineMethod method : methods) {
      SCOPED_TRACE(r.name + " " + MethodName(method));
      const EngineResult e = EngineRun(method, m.z, m.x, 0, 1, false, nullptr, BuiltinOnly());
      if (ReliableParameters(method, element)) {
        ASSERT_TRUE(r.mopacRuns) << "MOPAC has no parameters for it";
        EXPECT_EQ(e.status, EngineStatus::Converged);
        EXPECT_NEAR(e.heatKcal, r.heat, 0.05);
        ++matched;
      } else {
        EXPECT_EQ(e.status, EngineStatus::NotRun);
        EXPECT_EQ(e.message, std::string(" ERROR! No reliable ") + MethodName(method) + " parameters for " +
                                 Symbol(element));
        EXPECT_NE(e.exitStatus, 0);
        ++refused;
      }
    }
  }
  std::printf("  %d element-method pairs within 0.05 kcal/mol of MOPAC, %d refused\n", matched, refused);
  EXPECT_GT(matched, 100);
}

// The project's copy of MOPAC's pair terms is the shared one.
TEST(engineElements, PairTermsAreTheSharedData) {
  const std::string shared = std::string(QUINTOR_TESTDATA) + "/../data/nddo_pair_terms.dat";
  std::ifstream a(shared), b(std::string(QUINTOR_TEST_INPUTS) + "/../../Source/engine/nddo_pair_terms.dat");
  if (!a) GTEST_SKIP() << "../shared/data/nddo_pair_terms.dat is not beside the checkout";
  ASSERT_TRUE(b);
  std::stringstream sa, sb;
  sa << a.rdbuf();
  sb << b.rdbuf();
  EXPECT_EQ(sa.str(), sb.str());
  // And the generated table carries every row of it.
  int rows = 0;
  for (std::string line; std::getline(sa, line);)
    if (!line.empty() && line[0] != '#') ++rows;
  EXPECT_EQ(static_cast<int>(PairTerms().size()), rows);
  const PairTerm* lif = FindPairTerm(EngineMethod::MNDO, 9, 3);
  ASSERT_NE(lif, nullptr);
  EXPECT_DOUBLE_EQ(lif->xfac, 0.439938);
}

// Charge and multiplicity that no state fits are refused before the SCF,
// as MOPAC refuses them; a cation with few electrons left still runs.
TEST(engineElements, ImpossibleStatesAreRefused) {
  const Molecule water{{8, 1, 1}, {{0, 0, 0}, {0.757, 0.586, 0}, {-0.757, 0.586, 0}}};
  const Molecule methyl{{6, 1, 1, 1}, {{0, 0, 0}, {1.08, 0, 0}, {-0.54, 0.935, 0}, {-0.54, -0.935, 0}}};
  struct Case {
    const Molecule& m;
    int charge, multiplicity;
    const char* message;  // "" when it runs
  };
  const Case cases[] = {
      {water, 0, 2, " ERROR! DOUBLET SPECIFIED WITH EVEN NUMBER OF ELECTRONS, CORRECT FAULT"},
      {methyl, 0, 1, " ERROR! SINGLET SPECIFIED WITH ODD NUMBER OF ELECTRONS, CORRECT FAULT"},
      {water, 7, 3, " ERROR! TRIPLET SPECIFIED WITH ODD NUMBER OF ELECTRONS, CORRECT FAULT"},
      {water, 8, 3, " ERROR! 0 electrons are too few for a TRIPLET"},
      {water, 9, 2, " ERROR! The charge leaves -1 electrons"},
      {water, 5, 2, ""},
      {methyl, 0, 2, ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::to_string(c.charge) + " " + std::to_string(c.multiplicity));
    const EngineResult r = EngineRun(EngineMethod::PM3, c.m.z, c.m.x, c.charge, c.multiplicity, false, nullptr,
                                     BuiltinOnly());
    EXPECT_EQ(r.message, c.message);
    EXPECT_EQ(HeatStands(r), c.message[0] == '\0');
    EXPECT_EQ(r.exitStatus, c.message[0] == '\0' ? 0 : 1);
  }
  EXPECT_EQ(ImpossibleState(8, 1), "");
  EXPECT_EQ(ImpossibleState(2, 3), "");
}

// Unrestricted Hartree-Fock against MOPAC's UHF: radicals and triplets
// (tests/inputs/engine/make_uhf_reference.sh), heat and <S**2>.
TEST(engineElements, UnrestrictedIsMopacsUhf) {
  const std::map<std::string, Molecule> geometry = UhfMolecules();
  std::ifstream ref(quintor::test::TestInput("engine/mopac_uhf.txt"));
  int checked = 0;
  for (std::string line; std::getline(ref, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream ss(line);
    std::string name, method;
    int mult = 0;
    double heat = 0, s2 = 0;
    ss >> name >> mult >> method >> heat >> s2;
    SCOPED_TRACE(name + " " + method);
    const EngineMethod m = method == "MNDO" ? EngineMethod::MNDO : method == "AM1" ? EngineMethod::AM1 : EngineMethod::PM3;
    EngineOptions o = BuiltinOnly();
    o.unrestricted = true;
    const Molecule& g = geometry.at(name);
    const EngineResult r = EngineRun(m, g.z, g.x, 0, mult, false, nullptr, o);
    EXPECT_EQ(r.status, EngineStatus::Converged);
    EXPECT_NEAR(r.heatKcal, heat, 0.05);
    EXPECT_NEAR(r.spinSquared, s2, 1e-3);
    // the restricted half-electron heat lies above
    o.unrestricted = false;
    EXPECT_GT(EngineRun(m, g.z, g.x, 0, mult, false, nullptr, o).heatKcal, r.heatKcal - 1e-6);
    ++checked;
  }
  EXPECT_EQ(checked, 15);
  EXPECT_EQ(OpenShellTreatment(2, false, 0), " Open shell: restricted half-electron (MOPAC's RHF for a doublet)");
  EXPECT_EQ(OpenShellTreatment(1, false, 0), "");
}

// UHF optima by the pair-wise gradient (alpha and beta densities) against
// MOPAC's PM3 UHF PRECISE optima from the same start.
TEST(engineElements, UnrestrictedOptimaAreMopacs) {
  const std::map<std::string, Molecule> geometry = UhfMolecules();
  std::ifstream ref(quintor::test::TestInput("engine/mopac_uhf_opt.txt"));
  int checked = 0;
  double worst = 0;
  for (std::string line; std::getline(ref, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream ss(line);
    std::string name, method;
    int mult = 0;
    double heat = 0;
    ss >> name >> mult >> method >> heat;
    SCOPED_TRACE(name);
    GeoOptSettings s;
    s.engine = BuiltinOnly();
    s.engine.unrestricted = true;
    s.tolerances = {0.01, 1e-6, 1e-6};
    const Molecule& g = geometry.at(name);
    const GeoOptResult r = GeoOpt(EngineMethod::PM3, g.z, g.x, 0, mult, s, nullptr, nullptr);
    EXPECT_TRUE(r.optimised);
    EXPECT_NEAR(r.heatKcal, heat, 0.05);
    // one SCF per energy and per gradient at most: no differences of whole energies
    EXPECT_LE(r.energyCalls, r.functionCalls + r.gradientCalls);
    worst = std::max(worst, std::abs(r.heatKcal - heat));
    ++checked;
  }
  EXPECT_GE(checked, 5);
  std::printf("  UHF optima: largest deviation from MOPAC %.5f kcal/mol\n", worst);
}

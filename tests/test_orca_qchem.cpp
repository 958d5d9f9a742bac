// The ORCA and Q-Chem readers on real logs: atoms, final coordinates, final
// energy and frequencies against cclib 1.6.1 (python3-cclib; its numbers are
// written here), and the rigid-rotor harmonic-oscillator values against
// ORCA's own "THERMOCHEMISTRY AT 298.15K".
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include "test_support.h"

using namespace quintor;
using namespace quintor::test;

namespace {

struct Reference {
  const char* file;
  const char* format;
  std::vector<int> z;
  int sets;                    // coordinate sets read (cclib's atomcoords)
  int multiplicity;
  double energy;               // Hartree, the last one
  std::vector<double> xyz;     // final coordinates, Angstrom
  std::vector<double> freqs;   // cm-1, vibrations only
  std::vector<double> ir;      // km/mol, the first vibrations
};

const std::vector<int> kDvbZ{6, 6, 6, 6, 6, 6, 1, 1, 1, 1, 6, 6, 1, 1, 6, 6, 1, 1, 1, 1};

// cclib 1.6.1 (scfenergies converted back by its own eV factor). It stops
// on the ORCA 5 log; those numbers are the log's own.
const Reference kLogs[] = {
    {"orca/orca4.0_co2_freqs.out", "ORCA", {8, 6, 8}, 8, 2, -184.7577661600,
     {0, 0, -1.252682, 0, 0, 0, 0, 0, 1.252682},
     {289.5, 458.1, 1114.5, 1142.05},
     {14.331335, 32.25457, 0.0, 0.03139}},
    {"orca/orca4.2_dvb_ir.out", "ORCA", kDvbZ, 1, 1, -382.0507580400,
     {1.433856, 0, 0, -1.433856, 0, 0, 0.699761, -1.217908, 0, -0.699761, 1.217908, 0, -0.702706, -1.2196, 0,
      0.702706, 1.2196, 0, 1.244453, -2.172105, 0, -1.244453, 2.172105, 0, -1.24514, -2.173122, 0,
      1.24514, 2.173122, 0, -2.930826, 0.051176, 0, 2.930826, -0.051176, 0, -3.3552, 1.06709, 0,
      3.3552, -1.06709, 0, -3.768328, -1.000279, 0, 3.768328, 1.000279, 0, -3.41193, -2.036687, 0,
      3.41193, 2.036687, 0, -4.856245, -0.862014, 0, 4.856245, 0.862014, 0},
     {45.75, 78.4, 150.6, 180.11, 264.98, 300.47, 407.63, 423.66, 468.46, 487.28, 577.95, 656.63, 673.11, 706.11,
      734.54, 809.77, 862.07, 892.0, 895.08, 979.17, 979.27, 1016.16, 1034.7, 1072.97, 1101.62, 1106.31, 1106.46,
      1110.14, 1203.93, 1260.84, 1284.1, 1295.99, 1350.0, 1398.09, 1421.69, 1427.17, 1514.14, 1564.63, 1574.46,
      1639.2, 1690.44, 1738.13, 1813.54, 1814.48, 3393.75, 3394.38, 3432.49, 3432.53, 3447.32, 3450.9, 3470.82,
      3473.99, 3546.07, 3546.08},
     {0.030792, 0.0, 0.358709, 0.260668, 0.0, 0.0, 0.0, 0.111165}},
    {"orca/orca5.0.4_freq.out", "ORCA", {7, 8, 8, 1}, 1, 1, -205.381295518158,
     {1.677524, -0.098495, 0.088495, 0.719948, 0.480478, -0.071578, -0.881696, -0.548326, 0.077442,
      -1.515776, 0.166342, -0.094362},
     {228.25, 294.49, 422.93, 823.31, 1872.83, 3739.40},
     {79.59, 3.42, 0.69, 27.42, 206.88, 32.51}},
    {"qchem/qchem4.2_dvb_ir.out", "Q-Chem", kDvbZ, 1, 1, -382.3082745715,
     {1.413087, 0.243162, 0, -1.413087, -0.243162, 0, 0.483084, 1.318937, 0, -0.483084, -1.318937, 0,
      -0.899355, 1.082765, 0, 0.899355, -1.082765, 0, 0.858068, 2.351685, 0, -0.858068, -2.351685, 0,
      -1.595636, 1.930486, 0, 1.595636, -1.930486, 0, -2.879695, -0.547463, 0, 2.879695, 0.547463, 0,
      -3.125637, -1.62063, 0, 3.125637, 1.62063, 0, -3.883378, 0.346733, 0, 3.883378, -0.346733, 0,
      -3.707904, 1.428569, 0, 3.707904, -1.428569, 0, -4.93209, 0.025975, 0, 4.93209, -0.025975, 0},
     {47.24, 80.8, 152.36, 178.92, 262.67, 301.86, 408.38, 425.37, 470.34, 485.6, 578.67, 659.05, 672.02, 709.27,
      735.87, 811.22, 861.59, 897.07, 898.6, 981.66, 981.78, 1020.65, 1039.06, 1072.6, 1102.69, 1108.72, 1108.88,
      1110.63, 1203.8, 1263.09, 1285.19, 1295.91, 1350.01, 1399.73, 1420.63, 1426.69, 1514.75, 1565.29, 1574.86,
      1639.28, 1689.7, 1737.77, 1815.59, 1816.58, 3399.68, 3400.4, 3438.13, 3438.17, 3458.77, 3462.27, 3477.87,
      3480.8, 3552.24, 3552.26},
     {0.031, 0.0, 0.343, 0.257, 0.0, 0.0, 0.0, 0.086}},
    {"qchem/qchem4.2_water_ir.out", "Q-Chem", {8, 1, 1}, 1, 1, -75.3178467000,
     {0, 0, 0.119159, -0.790649, 0, -0.476637, 0.790649, 0, -0.476637},
     {1860.1, 3939.13, 4272.66},
     {5.911, 61.12, 36.761}},
};

struct Outcome {
  int status = -1;
  Session s;
};

void RunCopy(Outcome& o, const std::string& rel, std::vector<std::string> options) {
  TempDir dir;
  const std::string name = std::filesystem::path(rel).filename().string();
  std::filesystem::copy_file(TestData(rel), dir.File(name));
  options.insert(options.begin(), {dir.File(name), "/0"});
  o.status = RunInProcess(o.s, options).status;
}

}  // namespace

TEST(OrcaQChem, AgreeWithCclib) {
  SKIP_WITHOUT_TESTDATA();
  for (const Reference& r : kLogs) {
    SCOPED_TRACE(r.file);
    Outcome o;
    RunCopy(o, r.file, {});
    ASSERT_EQ(o.status, 0);
    const Session& s = o.s;
    EXPECT_STREQ(FormatName(s.opt.formatCode), r.format);
    ASSERT_EQ(s.atomicNumber, r.z);
    EXPECT_EQ(s.iCyc + 1, r.sets);
    EXPECT_EQ(s.opt.multiplicity, r.multiplicity);
    EXPECT_NEAR(s.Set(s.iCyc).energy, r.energy, 1e-6);
    const auto& xyz = s.Set(s.iCyc).xyz;
    for (size_t i = 0; i < r.xyz.size(); ++i)
      EXPECT_NEAR(xyz[i / 3][static_cast<int>(i % 3)] * constants::BohrToAngstrom, r.xyz[i], 1e-4) << "coordinate " << i;
    // The vibrations follow the translations and rotations (5 for CO2).
    const size_t base = s.modes.size() - r.freqs.size();
    ASSERT_EQ(base, r.z.size() == 3 && r.z[1] == 6 ? 5u : 6u);
    for (size_t k = 0; k < r.freqs.size(); ++k) {
      EXPECT_NEAR(s.modes[base + k].freq, r.freqs[k], 0.01) << "mode " << base + k + 1;
      EXPECT_EQ(s.modes[base + k].use, ModeUse::Used);
    }
    for (size_t k = 0; k < r.ir.size(); ++k) EXPECT_NEAR(s.modes[base + k].intensity, r.ir[k], 1e-6);
    for (size_t k = 0; k < base; ++k) EXPECT_NE(s.modes[k].use, ModeUse::Used);
    // Normal modes are read: the highest mode moves some atom.
    double largest = 0.0;
    for (const Vec3& d : s.modes.back().disp) largest = std::max({largest, std::fabs(d[0]), std::fabs(d[1]), std::fabs(d[2])});
    EXPECT_GT(largest, 0.1);
  }
}

// ORCA's own thermochemistry at 298.15 K, term by term in Hartree. ORCA
// prints 8 decimals; the differences come from its constants and its Hartree
// (627.5095 kcal/mol), about 2.4e-5 of each value. ORCA's vibrational entropy
// is Grimme's quasi-RRHO, which /QS100 gives.
TEST(OrcaQChem, RrhoAgreesWithOrcaThermochemistry) {
  SKIP_WITHOUT_TESTDATA();
  const std::pair<const char*, int> logs[] = {
      {"orca/orca4.0_co2_freqs.out", 2}, {"orca/orca4.2_dvb_ir.out", 2}, {"orca/orca5.0.4_freq.out", 1}};
  const double T = 298.15, toEh = constants::KJPerMolToHartree;
  for (auto [rel, sigma] : logs) {
    SCOPED_TRACE(rel);
    const std::string text = ReadFile(TestData(rel));
    auto orca = [&](const std::string& label) {
      std::smatch m;
      const std::regex re(label + R"(\s+\.\.\.\s+(-?[0-9.]+) Eh)");
      EXPECT_TRUE(std::regex_search(text, m, re)) << label;
      return m.empty() ? 0.0 : std::stod(m[1]);
    };
    Outcome o;
    RunCopy(o, rel, {"/QS100", "/ROT" + std::to_string(sigma)});
    ASSERT_EQ(o.status, 0);
    const ThermoReport& r = o.s.thermo.report;
    const std::pair<std::string, double> terms[] = {
        {"Zero point energy", r.zpeTot * toEh},
        {"Thermal vibrational correction", (r.vib.h - r.zpeTot) * toEh},
        {"Thermal rotational correction", r.rot.u * toEh},
        {"Thermal translational correction", r.tran.u * toEh},
        {"Thermal Enthalpy correction", (r.tran.h - r.tran.u) * toEh},
        {"Electronic entropy", T * r.elec.s / 1000.0 * toEh},
        {"Vibrational entropy", T * (r.quasi.s - r.tot.s + r.vib.s) / 1000.0 * toEh},
        {"Rotational entropy", T * r.rot.s / 1000.0 * toEh},
        {"Translational entropy", T * r.tran.s / 1000.0 * toEh},
    };
    for (const auto& [label, ours] : terms) {
      const double theirs = orca(label);
      // ORCA's quasi-RRHO sum differs by up to 6e-5 of itself on dvb (0.0004
      // kcal/mol, below its printed 0.01): its free-rotor constants.
      const double relative = label == "Vibrational entropy" ? 1e-4 : 3.5e-5;
      EXPECT_NEAR(ours, theirs, relative * std::fabs(theirs) + 1e-8) << label;
    }
  }
}

// Batch runs a sweep relies on: the command line refuses mistakes, further
// real logs read as cclib reads them, and the CSV row says what the JSON says.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <sstream>

#include <nlohmann/json.hpp>

#include "app/command_line.h"
#include "app/results.h"
#include "app/run.h"
#include "test_support.h"

namespace quintor::test {
namespace {

namespace fs = std::filesystem;
using json = nlohmann::json;

// ---- The command line ------------------------------------------------------------

TEST(BatchCommandLine, MistakesStopWithStatusOneAndNameTheOption) {
  SKIP_WITHOUT_TESTDATA();
  struct Case {
    std::string flag, message;
  };
  const Case cases[] = {
      {"/FOO", "Unknown option /FOO (argument 3)"},
      {"/T400", "Unknown option /T400 (argument 3); the nearest known option is /TT"},
      {"--foo", "Unknown option --foo (argument 3)"},
      {"/TS400", "Unknown option /TS400"},  // /TS takes no value
      {"/TT-5", "Option /TT (argument 3) needs a temperature in K above 0"},
      {"/TT0", "Option /TT (argument 3) needs a temperature"},
      {"/TT1e400", "/TT (argument 3)"},
      {"/PP0", "Option /PP (argument 3) needs a pressure in atm above 0"},
      {"/THERMO300-200-0", "Option /THERMO (argument 3)"},
  };
  TempDir dir;
  const std::string input = dir.File("w.log");
  fs::copy_file(TestData("gaussian16/water_opt_freq.log"), input);
  for (const Case& c : cases) {
    const RunResult r = RunInProcess({input, "/0", c.flag});
    EXPECT_EQ(r.status, exit_status::ReadError) << c.flag;
    EXPECT_NE(r.console.find(c.message), std::string::npos) << c.flag << ": " << r.console;
  }
}

TEST(BatchCommandLine, OutputOverTheInputIsRefusedAndTheInputKept) {
  SKIP_WITHOUT_TESTDATA();
  TempDir dir;
  const std::string input = dir.File("w.log");
  fs::copy_file(TestData("gaussian16/water_opt_freq.log"), input);
  const std::string before = ReadFile(input);
  for (const std::string& flag : {"/CSV@" + input, "/SNAP@" + input}) {
    const RunResult r = RunInProcess({input, "/0", flag});
    EXPECT_EQ(r.status, exit_status::ReadError) << flag;
    EXPECT_NE(r.console.find("names the input file"), std::string::npos) << r.console;
    EXPECT_EQ(ReadFile(input), before) << flag;
  }
}

TEST(BatchCommandLine, ABadOptionBeforeCsvStillLeavesItsRow) {
  SKIP_WITHOUT_TESTDATA();
  TempDir dir;
  const std::string input = dir.File("w.log");
  fs::copy_file(TestData("gaussian16/water_opt_freq.log"), input);
  const std::string csv = dir.File("sweep.csv");
  EXPECT_EQ(RunInProcess({input, "/0", "/T400", "/CSV@" + csv}).status, exit_status::ReadError);
  const std::string rows = ReadFile(csv);
  EXPECT_EQ(CountText(rows, "\n"), 2);  // header and row
  EXPECT_NE(rows.find("w.log,"), std::string::npos) << rows;
}

TEST(BatchCommandLine, PicturesAreJpegByNameAndAFailedOneFails) {
  SKIP_WITHOUT_TESTDATA();
  if (!fs::exists(fs::path(QUINTOR_EXE).parent_path() / "quintor-gui")) GTEST_SKIP() << "built without the windows";
  TempDir dir;
  const std::string input = dir.File("w.log");
  fs::copy_file(TestData("gaussian16/water_opt_freq.log"), input);
  EXPECT_EQ(RunExe({input, "/0", "/SNAP@" + dir.File("no/such/folder/p.png")}).status, exit_status::CanNotWrite);
  ASSERT_EQ(RunExe({input, "/0", "/SNAP@" + dir.File("p.jpg")}).status, exit_status::Ok);
  const std::string jpeg = ReadFile(dir.File("p.jpg"));
  ASSERT_GE(jpeg.size(), 2u);
  EXPECT_EQ(static_cast<unsigned char>(jpeg[0]), 0xFF);  // the JPEG start-of-image marker
  EXPECT_EQ(static_cast<unsigned char>(jpeg[1]), 0xD8);
}

TEST(BatchCommandLine, BatchRunNeverReadsTheKeyboard) {
  TempDir dir;
  const std::string input = dir.Write("plain.txt", " no coordinates here\n");
  Session s;
  // "n" would go on interactively; a batch run ends as the answer Y does.
  const RunResult r = RunInProcess(s, {input, "/0"}, "n");
  EXPECT_EQ(r.status, exit_status::NoCoordinates);
  EXPECT_EQ(r.console.find("Exit?"), std::string::npos) << r.console;
}

TEST(BatchCommandLine, NamesXyzInputsAndSetCounts) {
  SKIP_WITHOUT_TESTDATA();
  TempDir dir;
  // A long extension: the whole stem stays for every written file.
  const std::string input = dir.File("w.gamout");
  fs::copy_file(TestData("gaussian16/water_opt_freq.log"), input);
  Session s;
  const RunResult r = RunInProcess(s, {input, "/0", "/JSON"});
  ASSERT_EQ(r.status, exit_status::Ok);
  EXPECT_TRUE(fs::exists(dir.File("w.mou")));
  EXPECT_TRUE(fs::exists(dir.File("w.json")));
  EXPECT_EQ(s.files.specName, dir.File("w.tdi"));
  // The cycle table lists steps 0 to iCyc: that many sets.
  EXPECT_NE(r.log.find(" Coordinate sets found:" + std::string(4, ' ') + std::to_string(s.iCyc + 1)),
            std::string::npos);

  // A plain .xyz file needs no flag; /X skips its two lines by default.
  const std::string xyz = "3\nwater\nO 0 0 0.117\nH 0 0.757 -0.469\nH 0 -0.757 -0.469\n";
  for (const std::vector<std::string>& args : {std::vector<std::string>{dir.Write("m.xyz", xyz), "/0"},
                                               std::vector<std::string>{dir.Write("m.txt", xyz), "/0", "/X"}}) {
    Session x;
    const RunResult rx = RunInProcess(x, args);
    EXPECT_EQ(rx.status, exit_status::Ok) << args[0] << rx.console;
    EXPECT_EQ(x.nAtoms, 3) << args[0];
  }
}

// ---- Further real logs against cclib ---------------------------------------------------

// Numbers cclib 1.6.1 reads from the same logs: atoms, the last geometry
// (A), the energy of that geometry (cclib's, which passes through eV and so
// differs from the printed one by about 4e-8 of itself) and the frequencies.
struct CclibReference {
  std::string log;
  std::vector<int> z;
  std::array<double, 3> first, last;  // the final coordinates of the first and last atom
  double energy;
  std::string method;
  std::vector<double> freqs;
};

const CclibReference kReferences[] = {
    {"more/firefly8_h2o.out", {8, 1, 1}, {0.0, 0.0, -0.101219}, {0.758071, 0.0, 0.53458}, -74.96589792, "", {}},
    {"more/g03_ethyl_cbsqb3.out",
     {6, 6, 1, 1, 1, 1, 1},
     {-0.003909, 0.000358, -0.023998},
     {0.529726, 0.874568, 1.871114},
     -79.18354457,  // the B3LYP energy the frequencies belong to, not the CBS steps' after it
     "SCF",
     {-114.6276, 466.8124, 815.3936, 974.6715, 1061.971, 1190.7087, 1402.0174, 1466.9885, 1472.4538, 1490.9692,
      2972.3271, 2994.8653, 3089.9414, 3140.9885, 3241.947}},
    // cclib gives the SCF part alone (-40.18562458); E is the double hybrid's
    // total, "E(B2PLYP) = -0.40217794572194D+02" of the log.
    {"more/g09_b2plyp.out", {6, 1, 1, 1, 1}, {0.0, 0.0, 0.0}, {0.617765, -0.617765, -0.617765},
     -40.217794572194, "B2PLYP", {}},
    {"more/g09_quadratic_scf.out", {40, 40, 8, 8, 8, 8, 1}, {1.947317, -0.043619, -0.038639},
     {0.531042, 0.576583, 2.267249}, -395.92357399, "SCF", {}},
    {"more/g16_near_linear.out", {6, 6, 1}, {5.2e-05, 0.470113, 0.0}, {-0.000626, 1.528605, 0.0},
     -76.60660744, "SCF", {500.5685, 2148.386, 3528.2576}},
    {"more/gamess-us2005_exam02.out", {6, 1, 1}, {0.0, 0.0, 0.0}, {0.0, 0.82884, 0.7079}, -37.28108509, "", {}},
};

class FurtherLogs : public ::testing::TestWithParam<CclibReference> {};

TEST_P(FurtherLogs, ReadAsCclibReadsThem) {
  SKIP_WITHOUT_TESTDATA();
  const CclibReference& ref = GetParam();
  LogRun run(TestData(ref.log), {"/JSON"});
  ASSERT_EQ(run.r.status, exit_status::Ok) << run.r.console;
  const json j = json::parse(ReadFile(fs::path(run.copy).replace_extension(".json")));
  ASSERT_EQ(j["atoms"].size(), ref.z.size());
  for (size_t i = 0; i < ref.z.size(); ++i) EXPECT_EQ(j["atoms"][i]["Z"], ref.z[i]) << i;
  for (int k = 0; k < 3; ++k) {
    EXPECT_NEAR(j["atoms"][0]["xyz"][k].get<double>(), ref.first[static_cast<size_t>(k)], 2e-6);
    EXPECT_NEAR(j["atoms"][ref.z.size() - 1]["xyz"][k].get<double>(), ref.last[static_cast<size_t>(k)], 2e-6);
  }
  EXPECT_NEAR(j["energy"]["E"].get<double>(), ref.energy, 1e-7 * std::fabs(ref.energy));
  if (!ref.method.empty()) {
    EXPECT_EQ(j["energy"]["energy_method"], ref.method);
  }
  std::vector<double> freqs;
  for (const auto& m : j["modes"])
    if (m["frequency"].get<double>() != 0.0) freqs.push_back(m["frequency"].get<double>());
  ASSERT_EQ(freqs.size(), ref.freqs.size());
  for (size_t k = 0; k < freqs.size(); ++k) EXPECT_NEAR(freqs[k], ref.freqs[k], 1e-4) << k;
  // Without frequencies no plausible-looking G: null, and a warning says why.
  if (ref.freqs.empty()) {
    EXPECT_TRUE(j["thermochemistry"].is_null() || j["thermochemistry"]["E+G"].is_null());
    EXPECT_TRUE(j["thermochemistry"].is_null() || j["thermochemistry"]["total"].is_null());
    EXPECT_EQ(j["warnings"].back(), " WARNING! No frequencies in the input: ZPE, H and G are not given");
  }
}

std::string LogName(const ::testing::TestParamInfo<CclibReference>& info) {
  std::string name = fs::path(info.param.log).stem().string();
  for (char& c : name)
    if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
  return name;
}

INSTANTIATE_TEST_SUITE_P(Cclib, FurtherLogs, ::testing::ValuesIn(kReferences), LogName);

// ---- Shapes of logs, on changed copies of a real one -----------------------------------

TEST(LogShapes, TouchingFrequencyColumnsTranslationVectorsAndBadBlocks) {
  SKIP_WITHOUT_TESTDATA();
  const std::string log = ReadFile(TestData("more/g16_near_linear.out"));
  const std::string freqs = " Frequencies --    500.5685              2148.3860              3528.2576";
  {
    // A negative frequency of four digits runs into the next column; one
    // above 10000 fills its field.
    TextRun run(Replace(log, freqs, " Frequencies --  -1500.5685-12148.3860            13528.2576"));
    ASSERT_EQ(run.r.status, exit_status::Ok) << run.r.console;
    ASSERT_EQ(run.s.modes.size(), 9u);  // 3N slots: six before the three the log prints
    EXPECT_DOUBLE_EQ(run.s.modes[6].freq, -1500.5685);
    EXPECT_DOUBLE_EQ(run.s.modes[7].freq, -12148.386);
    EXPECT_DOUBLE_EQ(run.s.modes[8].freq, 13528.2576);
    EXPECT_EQ(run.s.modes[8].symmetry, "A'");
  }
  {
    // A periodic job's translation vector (atomic number -2) is no atom.
    const std::string last = "      3          1           0       -0.000626    1.528605   -0.000000\n";
    TextRun run(Replace(log, last, last + "      4         -2           0        5.000000    0.000000    0.000000\n", 3));
    ASSERT_EQ(run.r.status, exit_status::Ok) << run.r.console;
    EXPECT_EQ(run.s.nAtoms, 3);
  }
  {
    // A mode block that can not be read, and a good one after it: one warning
    // naming its line, and the good block's modes. Alone, it stops the run.
    const std::string bad = Replace(log, freqs, " Frequencies --    500.5685              2148.3860              35x8.2576");
    const size_t from = log.find(" Harmonic frequencies"), to = log.find(" - Thermochemistry -");
    std::string twice = bad;
    twice.insert(bad.find(" - Thermochemistry -"), log.substr(from, to - from));
    TextRun run(twice);
    ASSERT_EQ(run.r.status, exit_status::Ok) << run.r.console;
    EXPECT_EQ(CountText(run.r.log, " WARNING! The normal modes at line     2698 can not be read"), 1) << run.r.log;
    ASSERT_EQ(run.s.modes.size(), 9u);
    EXPECT_DOUBLE_EQ(run.s.modes[8].freq, 3528.2576);
    TextRun alone(bad);
    EXPECT_EQ(alone.r.status, exit_status::ReadError);
  }
}

TEST(LogShapes, FreeColumnGradientAndFireflySearchPoints) {
  SKIP_WITHOUT_TESTDATA();
  LogRun gamess(TestData("more/gamess-us2005_exam02.out"));
  ASSERT_EQ(gamess.r.status, exit_status::Ok);
  EXPECT_DOUBLE_EQ(gamess.s.Set(gamess.s.iCyc).gmax, 0.057578167);  // "MAXIMUM GRADIENT =    0.057578167"
  LogRun firefly(TestData("more/firefly8_h2o.out"));
  ASSERT_EQ(firefly.r.status, exit_status::Ok);
  EXPECT_NE(firefly.r.log.find(" Input file format       : Firefly detected"), std::string::npos);
  EXPECT_EQ(firefly.s.iCyc, 8);  // " NSERCH=   0" to 7, and the located geometry
}

// ---- E, H and G in the results ---------------------------------------------------------

// E+H and E+G meet Gaussian's own sums ("Sum of electronic and thermal
// Enthalpies/Free Energies") where the symmetry numbers agree.
TEST(BatchResults, SumsMeetGaussians) {
  SKIP_WITHOUT_TESTDATA();
  // The near-linear triatomic of more/ passes the moment test of a linear
  // molecule, but Gaussian prints 3N-6 vibrations: it is a bent top to both.
  for (const char* log : {"gaussian16/water_opt_freq.log", "gaussian16/co_opt_freq.log",
                          "gaussian03/anthracene_opt_freq.log", "gaussian98/cu2_freq.log",
                          "more/g16_near_linear.out"}) {
    LogRun run(TestData(log), {"/JSON"});
    ASSERT_EQ(run.r.status, exit_status::Ok) << log;
    const json j = json::parse(ReadFile(fs::path(run.copy).replace_extension(".json")));
    const json& sums = j["energy"]["log_sums"];
    ASSERT_FALSE(sums.is_null()) << log;
    EXPECT_NEAR(j["thermochemistry"]["E+H"].get<double>(), sums["E+H"].get<double>(), 2e-6) << log;
    EXPECT_NEAR(j["thermochemistry"]["E+G"].get<double>(), sums["E+G"].get<double>(), 2e-6) << log;
  }
}

// What a script needs stands in the JSON: conditions, the molecule's
// charge and multiplicity, each step's geometry, each mode's symmetry,
// intensity and displacements, the imaginary frequencies, the composite
// energies, the engine's result and every warning.
TEST(BatchResults, JsonIsCompleteEnoughForAScript) {
  SKIP_WITHOUT_TESTDATA();
  LogRun run(TestData("more/g03_ethyl_cbsqb3.out"), {"/JSON", "/HOF"});
  ASSERT_EQ(run.r.status, exit_status::Ok);
  const json j = json::parse(ReadFile(fs::path(run.copy).replace_extension(".json")));
  EXPECT_EQ(j["conditions"]["temperature_K"], 298.15);
  EXPECT_EQ(j["conditions"]["pressure_atm"], 1.0);
  EXPECT_EQ(j["conditions"]["charge"], 0);
  EXPECT_EQ(j["conditions"]["multiplicity"], 2);  // the ethyl radical
  ASSERT_EQ(j["coordinate_sets"].size(), static_cast<size_t>(run.s.iCyc + 1));
  EXPECT_EQ(j["coordinate_sets"].back()["xyz"][0], j["atoms"][0]["xyz"]);
  EXPECT_EQ(j["imaginary_frequencies"], json::array({-114.6276}));
  const json& first = j["modes"][6];  // the first vibration, after six slots
  EXPECT_EQ(first["symmetry"], "A");
  EXPECT_EQ(first["ir_intensity"], 4.577);
  EXPECT_TRUE(first["raman_activity"].is_null());
  ASSERT_EQ(first["displacements"].size(), 7u);
  EXPECT_EQ(first["displacements"][0], json::array({0.0, 0.03, 0.0}));
  // The summary "CBS-QB3 Enthalpy= -78.967428 CBS-QB3 Free Energy= -78.995019".
  EXPECT_EQ(j["energy"]["composite"]["method"], "CBS-QB3");
  EXPECT_EQ(j["energy"]["composite"]["E0"], -78.97165);
  EXPECT_EQ(j["energy"]["composite"]["G"], -78.995019);
  EXPECT_EQ(j["engine"]["method"], "PM3");
  EXPECT_TRUE(j["engine"]["heat_of_formation_kcal"].is_number());
  ASSERT_EQ(j["warnings"].size(), 1u);
  EXPECT_EQ(j["warnings"][0], " WARNING! No Standard orientation in the file: Input orientation is used");
}

// The CSV row carries the JSON's numbers, each in its own column.
TEST(BatchResults, CsvNumbersAreTheJsons) {
  SKIP_WITHOUT_TESTDATA();
  LogRun run(TestData("gaussian16/water_opt_freq.log"), {"/JSON", "/TT350", "/PP2"});
  ASSERT_EQ(run.r.status, exit_status::Ok);
  const json j = json::parse(ReadFile(fs::path(run.copy).replace_extension(".json")));
  auto split = [](const std::string& line) {
    std::vector<std::string> out;
    std::stringstream fields(line + ",");
    for (std::string f; std::getline(fields, f, ',');) out.push_back(f);
    return out;
  };
  const std::vector<std::string> head = split(CsvHeader()), row = split(CsvRow(run.s, 0));
  ASSERT_EQ(row.size(), head.size());
  auto column = [&](const std::string& name) {
    for (size_t k = 0; k < head.size(); ++k)
      if (head[k] == name) return row[k];
    ADD_FAILURE() << name;
    return std::string();
  };
  EXPECT_EQ(column("format"), "Gaussian 16");
  EXPECT_EQ(j["input"]["format"], "Gaussian 16");
  const json& t = j["thermochemistry"];
  EXPECT_NEAR(std::stod(column("E_hartree")), j["energy"]["E"].get<double>(), 1e-10);
  EXPECT_NEAR(std::stod(column("ZPE_hartree")), t["ZPE_hartree"].get<double>(), 1e-10);
  EXPECT_NEAR(std::stod(column("H_hartree")), t["E+H"].get<double>(), 1e-10);
  EXPECT_NEAR(std::stod(column("G_hartree")), t["E+G"].get<double>(), 1e-10);
  EXPECT_NEAR(std::stod(column("S_J_per_K_mol")), t["total"]["S"].get<double>(), 1e-4);
  EXPECT_NEAR(std::stod(column("T_K")), 350.0, 1e-9);
  EXPECT_NEAR(std::stod(column("P_atm")), 2.0, 1e-9);
  EXPECT_EQ(std::stoul(column("warnings")), j["warnings"].size());
  EXPECT_EQ(column("energy_method"), j["energy"]["energy_method"]);
}

}  // namespace
}  // namespace quintor::test

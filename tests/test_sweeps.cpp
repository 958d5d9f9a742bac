// Sweeps of many real logs: every log runs to its end, with no NaN in the
// MainLog and the numbers the log itself prints; results a script can read.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <sstream>
#include <thread>

#include <nlohmann/json.hpp>

#include "app/results.h"
#include "io/fortran_io.h"
#include "test_support.h"

namespace quintor::test {
namespace {

// The value of a MainLog line "<label> ... <value> <unit> <cal value> ...":
// the number right after the label.
double Value(const std::string& log, const std::string& label, int word = 0) {
  const size_t at = log.find(label);
  if (at == std::string::npos) return NAN;
  std::istringstream in(log.substr(at + label.size()));
  std::string w;
  for (int k = 0; k <= word; ++k) in >> w;
  return std::stod(w);
}

TEST(Sweeps, EveryRealLogEndsWellWithNoNaN) {
  SKIP_WITHOUT_TESTDATA();
  int runs = 0;
  for (const auto& e : std::filesystem::recursive_directory_iterator(TestData(""))) {
    if (e.path().extension() != ".log") continue;
    SCOPED_TRACE(e.path().string());
    LogRun run(e.path().string());
    EXPECT_EQ(run.r.status, exit_status::Ok) << run.r.console;
    EXPECT_EQ(run.r.log.find("NaN"), std::string::npos);
    EXPECT_EQ(run.r.log.find("Infinity"), std::string::npos);
    EXPECT_NE(run.r.log.find("Etot+Gtot"), std::string::npos);
    ++runs;
  }
  EXPECT_GE(runs, 20);
}

// Gaussian's own thermochemistry table: E (Thermal) in kcal/mol, CV and S in
// cal/(mol K), each against the totals of the MainLog.
TEST(Sweeps, ThermochemistryAsGaussianPrintsIt) {
  SKIP_WITHOUT_TESTDATA();
  struct Case {
    const char* log;
    std::vector<std::string> options;
    double e, cv, s;
  };
  // irc_point.log is a projected job (3N-7 vibrations) with input
  // orientations alone; Gaussian took sigma = 1 for it.
  for (const Case& c : {Case{"gaussian09/irc_point.log", {"/ROT1"}, 28.112, 12.497, 70.397}}) {
    SCOPED_TRACE(c.log);
    LogRun run(TestData(c.log), c.options);
    ASSERT_EQ(run.r.status, exit_status::Ok);
    EXPECT_NEAR(Value(run.r.log, " Utot =", 2), c.e, 0.0015);
    EXPECT_NEAR(Value(run.r.log, " CVtot=", 2), c.cv, 0.0015);
    EXPECT_NEAR(Value(run.r.log, " Stot =", 2), c.s, 0.0015);
    EXPECT_NE(run.r.log.find(" WARNING! No Standard orientation in the file: Input orientation is used"),
              std::string::npos);
  }
}

TEST(Sweeps, AnAtomHasNoRotation) {
  // Gaussian for O(3P) at 298.15 K: E 0.889 kcal/mol, CV 2.981, S 36.438 cal/(mol K).
  TextRun run("1\n\nO 0.0 0.0 0.0\n", {"/X2", "/MULT3"});
  ASSERT_EQ(run.r.status, exit_status::Ok);
  EXPECT_NEAR(Value(run.r.log, " Utot =", 2), 0.889, 0.0005);
  EXPECT_NEAR(Value(run.r.log, " CVtot=", 2), 2.981, 0.0005);
  EXPECT_NEAR(Value(run.r.log, " Stot =", 2), 36.438, 0.0005);
  EXPECT_EQ(Value(run.r.log, " Srot = "), 0.0);
}

TEST(Sweeps, EnergiesThatStandInTheLog) {
  SKIP_WITHOUT_TESTDATA();
  struct Case {
    const char* log;
    double energy;  // the base energy of the thermochemistry
  };
  // A GAMESS frequency run has no NSERCH line: its FINAL energy counts. The
  // finite-difference SCFs of a Raman job do not replace the field-free one.
  for (const Case& c : {Case{"gamess-us/dvb_ir.log", -382.0506353313}, Case{"gaussian03/dvb_raman.log", -382.308266580},
                        Case{"pcgamess/cn_ir_v7.log", -90.9289925160}}) {
    SCOPED_TRACE(c.log);
    LogRun run(TestData(c.log));
    ASSERT_EQ(run.r.status, exit_status::Ok);
    EXPECT_NEAR(run.s.electronicEnergy, c.energy, 1e-9);
  }
  // A semi-empirical SCF ("Energy= ... NIter=") and "EUMP2=" without a blank.
  const std::string mp2 = ReadFile(TestData("gaussian03/water_mp2.log"));
  TextRun am1(Replace(Replace(mp2, " SCF Done:  E(RHF) =  -74.9643287913     A.U. after    7 cycles",
                              " Energy=  -0.123456789012 NIter=   7."),
                      "EUMP2 =    -0.75002282127824E+02", "EUMP2=-0.123456789012E+00"));
  ASSERT_EQ(am1.r.status, exit_status::Ok);
  EXPECT_NEAR(am1.s.Set(0).energy, -0.123456789012, 1e-12);
  TextRun semiOnly(Replace(Replace(mp2, " SCF Done:  E(RHF) =  -74.9643287913     A.U. after    7 cycles",
                                   " Energy=  -0.123456789012 NIter=   7."),
                           "EUMP2 =", "EUMP1 ="));
  EXPECT_NEAR(semiOnly.s.Set(0).energy, -0.123456789012, 1e-12);
}

TEST(Sweeps, OverflowedModeFieldsGiveZeroAndAWarning) {
  SKIP_WITHOUT_TESTDATA();
  const std::string raman = ReadFile(TestData("gaussian03/dvb_raman.log"));
  TextRun g(Replace(raman, " Raman Activ --     0.0000                 2.6872",
                    " Raman Activ --     0.0000             **********"),
            {"/RAMAN"});
  ASSERT_EQ(g.r.status, exit_status::Ok) << g.r.console;
  ASSERT_GT(g.s.modes.size(), 7u);
  EXPECT_EQ(g.s.modes[7].intensity, 0.0);  // mode 2 of the log, after the six zero slots
  EXPECT_NE(g.r.log.find("\n WARNING! Mode    2: intensity overflowed its field (**********) at line"),
            std::string::npos);

  const std::string gamess = ReadFile(TestData("pcgamess/cn_ir_v7.log"));
  TextRun p(Replace(gamess, "    IR INTENSITY:      0.02858     0.02858", "    IR INTENSITY:      0.02858         NaN"));
  ASSERT_EQ(p.r.status, exit_status::Ok) << p.r.console;
  ASSERT_GT(p.s.modes.size(), 1u);
  EXPECT_EQ(p.s.modes[1].intensity, 0.0);
  EXPECT_NE(p.r.log.find(" WARNING! Mode    2: intensity overflowed its field (NaN)"), std::string::npos);

  // A frequency is the one field nothing sound can replace: the run stops.
  TextRun f(Replace(raman, "Frequencies --    52.7881", "Frequencies --    ******7"));
  EXPECT_EQ(f.r.status, exit_status::ReadError);
  EXPECT_NE(f.r.console.find("frequency"), std::string::npos);
}

TEST(Sweeps, NonFiniteValuesPrintAsAsterisks) {
  EXPECT_EQ(FmtF(NAN, 10, 3), "**********");
  EXPECT_EQ(FmtE(-INFINITY, 12, 5), "************");
  EXPECT_EQ(FmtG(INFINITY, 20, 8), std::string(20, '*'));
}

TEST(Sweeps, WaterHasNoRotorsAndKeepsItsHarmonicTables) {
  SKIP_WITHOUT_TESTDATA();
  LogRun run(TestData("gaussian16/water_opt_freq.log"), {"/ARIR"});
  ASSERT_EQ(run.r.status, exit_status::Ok);
  EXPECT_EQ(CountText(run.r.log, " ARIR: No internal rotations Found\n"), 1);
  EXPECT_EQ(run.r.log.find("Pitzer-Gwinn"), std::string::npos);
  EXPECT_EQ(CountText(run.r.log, "temperatures (w/o internal rotations):"), 1);
}

TEST(Results, JsonHoldsTheRunAsTheMainLogDoes) {
  SKIP_WITHOUT_TESTDATA();
  LogRun run(TestData("gaussian16/water_opt_freq.log"), {"/JSON", "/THERMO300-400-50"});
  ASSERT_EQ(run.r.status, exit_status::Ok);
  const auto j = nlohmann::json::parse(ReadFile(run.dir.path / "water_opt_freq.json"));
  EXPECT_EQ(j["input"]["format"], "Gaussian 16");
  EXPECT_EQ(j["exit_status"], 0);
  ASSERT_EQ(j["atoms"].size(), 3u);
  EXPECT_EQ(j["atoms"][0]["symbol"], "O");
  EXPECT_EQ(j["symmetry"]["point_group"], "C2v");
  EXPECT_EQ(j["symmetry"]["sigma"], 2.0);
  EXPECT_EQ(j["coordinate_sets"].size(), static_cast<size_t>(run.s.iCyc + 1));
  const auto& t = j["thermochemistry"];
  EXPECT_NEAR(t["total"]["S"].get<double>(), Value(run.r.log, " Stot ="), 0.0005);
  // G in kJ/mol as the MainLog prints it, in Hartree by CODATA 2018.
  EXPECT_NEAR(t["G_hartree"].get<double>() * 2625.4996, Value(run.r.log, " Gtot ="), 0.0005);
  EXPECT_NEAR(t["E+G"].get<double>(), t["E"].get<double>() + t["G_hartree"].get<double>(), 1e-12);
  EXPECT_EQ(j["temperature_tables"]["fixed"].size(), 50u);
  ASSERT_EQ(j["temperature_tables"]["requested"].size(), 3u);
  EXPECT_EQ(j["temperature_tables"]["requested"][2]["T"], 400.0);
}

TEST(Results, EightRunsAppendEightWholeRowsToOneCsv) {
  SKIP_WITHOUT_TESTDATA();
  TempDir dir;
  const std::string csv = dir.File("sweep.csv");
  std::vector<std::string> logs;
  for (int k = 0; k < 8; ++k) {
    logs.push_back(dir.File(std::string("w") + std::to_string(k) + ".log"));
    std::filesystem::copy_file(TestData("gaussian16/water_opt_freq.log"), logs.back());
  }
  std::vector<std::thread> runs;
  for (const std::string& log : logs) runs.emplace_back([&, log] { RunExe({log, "/0", std::string("/CSV@") + csv}); });
  for (auto& t : runs) t.join();
  std::istringstream in(ReadFile(csv));
  std::vector<std::string> lines;
  for (std::string l; std::getline(in, l);) lines.push_back(l);
  ASSERT_EQ(lines.size(), 9u);
  EXPECT_EQ(lines[0], CsvHeader());
  for (size_t k = 1; k < lines.size(); ++k) {
    EXPECT_EQ(std::count(lines[k].begin(), lines[k].end(), ','), std::count(lines[0].begin(), lines[0].end(), ','))
        << lines[k];
    EXPECT_NE(lines[k].find(",Gaussian 16,H2O,3,"), std::string::npos) << lines[k];
    EXPECT_NE(lines[k].find(",C2v,2,0,0,"), std::string::npos) << lines[k];
  }
  // A run that stops still gets its row, with its status.
  RunExe({dir.File("missing.log"), "/0", std::string("/CSV@") + csv});
  EXPECT_NE(ReadFile(csv).find("missing.log,unknown,,0,,,,,,,,1,0,3,"), std::string::npos);
}

}  // namespace
}  // namespace quintor::test

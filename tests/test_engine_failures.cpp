// An engine that can not run stops a batch run: its message in the MainLog
// and a non-zero status, for /HOF, /GEOOPT and /SCAN alike; a multiplicity
// left open is the one the engine and the thermochemistry share.
#include <gtest/gtest.h>

#include <filesystem>

#include "test_support.h"

using namespace quintor::test;

namespace {

const char kMethyl[] = "4\nmethyl\nC 0 0 0\nH 1.08 0 0\nH -0.54 0.935 0\nH -0.54 -0.935 0\n";

// Entries of the directory whose names begin with `prefix`.
int CountEntries(const std::filesystem::path& dir, const std::string& prefix) {
  int n = 0;
  for (const auto& e : std::filesystem::recursive_directory_iterator(dir))
    if (e.path().filename().string().rfind(prefix, 0) == 0) ++n;
  return n;
}

}  // namespace

TEST(engineFailures, OpenMultiplicityIsSharedWithTheThermochemistry) {
  TempDir dir;
  const RunResult run = RunInProcess({dir.Write("ch3.xyz", kMethyl), "/0", "/X", "/HOF"});
  ASSERT_EQ(run.status, 0) << run.console;
  EXPECT_NE(run.log.find(" ATTENTION! Multiplicity not given: the engine and the thermochemistry take 2\n"),
            std::string::npos);
  EXPECT_NE(run.log.find(" Spin multiplicity of molecule = 2\n"), std::string::npos) << run.log;
}

TEST(engineFailures, ImpossibleStatesStopTheRun) {
  struct Case {
    std::vector<std::string> flags;
    const char* message;
    int status;
  };
  const Case cases[] = {
      {{"/HOF", "/MULT1"}, " ERROR! SINGLET SPECIFIED WITH ODD NUMBER OF ELECTRONS, CORRECT FAULT\n", 1},
      {{"/GEOOPT", "/MULT1"}, " ERROR! SINGLET SPECIFIED WITH ODD NUMBER OF ELECTRONS, CORRECT FAULT\n", 1},
      {{"/HOF", "/CHARGE2", "/MULT3"}, " ERROR! TRIPLET SPECIFIED WITH ODD NUMBER OF ELECTRONS, CORRECT FAULT\n", 1},
      {{"/GEOOPT", "/ENGINEAM1", "/MULT4"}, " MULTIPLICITY GREATER THAN 3", 1},
  };
  for (const Case& c : cases) {
    TempDir dir;
    std::vector<std::string> args{dir.Write("ch3.xyz", kMethyl), "/0", "/X"};
    args.insert(args.end(), c.flags.begin(), c.flags.end());
    const RunResult run = RunInProcess(args);
    SCOPED_TRACE(c.flags.front() + " " + c.flags.back());
    EXPECT_EQ(run.status, c.status);
    EXPECT_NE(run.log.find(c.message), std::string::npos) << run.log;
    EXPECT_NE(run.log.find(" ERROR! The semi-empirical engine could not run\n"), std::string::npos);
    EXPECT_EQ(run.log.find("Final Heat of Formation"), std::string::npos);
  }
}

TEST(engineFailures, ElementWithoutReliableParametersStopsTheRun) {
  TempDir dir;
  const RunResult run =
      RunInProcess({dir.Write("xe.xyz", "3\nXeHF\nXe 0 0 0\nH 0 0 3.0\nF 0 0 3.92\n"), "/0", "/X", "/HOF"});
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.log.find(" ERROR! No reliable PM3 parameters for Xe\n"), std::string::npos) << run.log;
}

// The working files of an optimisation are written once, at the optimum, and
// go with their directory.
TEST(engineFailures, GeoOptLeavesNoWorkingFiles) {
  TempDir dir;
  const RunResult run = RunInProcess({dir.Write("ch3.xyz", kMethyl), "/0", "/X", "/GEOOPT", "/ENGINEMNDO"});
  ASSERT_EQ(run.status, 0) << run.console;
  EXPECT_NE(run.log.find(" Geometry optimization using MNDO method\n"), std::string::npos);
  EXPECT_EQ(CountEntries(dir.path, "engine."), 0);
}

// A parameter file with a bad line stops a scan before any point; the
// executable runs in the folder that holds the file.
TEST(engineFailures, ScanWithABadParameterFileStops) {
  TempDir dir;
  dir.Write("ethane.out", ReadFile(TestInput("rotations/ethane_xtb.out")));
  dir.Write("MNDOD.DAT", "//PM3 \nUSS      6   x  -47.2\n");
  const ExeResult run = RunExe({"ethane.out", "/0", "/ARIR", "/SCAN"}, "", dir.path.string());
  EXPECT_EQ(run.status, 1) << run.output;
  const std::string log = ReadFile(dir.path / "ethane.mou");
  EXPECT_NE(log.find(" ERROR! Reading atom parameters from MNDOD.DAT. Line 2"), std::string::npos) << log;
  EXPECT_EQ(log.find("Relative potential energies"), std::string::npos);
}

// The open-shell treatment is named under the heat; /UHF gives MOPAC's UHF
// heat of the methyl radical (tests/inputs/engine/mopac_uhf.txt, PM3).
TEST(engineFailures, OpenShellTreatmentIsNamed) {
  TempDir dir;
  const std::string input = dir.Write("ch3.xyz", kMethyl);
  const RunResult rhf = RunInProcess({input, "/0", "/X", "/HOF"});
  EXPECT_NE(rhf.log.find(" kcal/mol\n Open shell: restricted half-electron (MOPAC's RHF for a doublet)\n"),
            std::string::npos)
      << rhf.log;
  const RunResult uhf = RunInProcess({input, "/0", "/X", "/HOF", "/UHF"});
  ASSERT_EQ(uhf.status, 0);
  EXPECT_NE(uhf.log.find(" =     28.0388 kcal/mol\n Open shell: unrestricted Hartree-Fock (MOPAC's UHF), <S**2> = 0.770"),
            std::string::npos)
      << uhf.log;
}

// Bad input of every kind: each gets a clear message and an exit status, no
// run dies on a signal, and the input file is never written.
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <random>

#include "test_support.h"

using namespace quintor;
using namespace quintor::test;
namespace fs = std::filesystem;

namespace {

// Runs the program as a separate process and checks what every run must hold.
ExeResult RunChecked(const std::vector<std::string>& args, const std::string& keys = "") {
  const std::string input = args.empty() ? "" : args[0];
  const bool isFile = fs::is_regular_file(input);
  const std::string before = isFile ? ReadFile(input) : "";
  ExeResult r = RunExe(args, keys, fs::path(input).parent_path().string());
  EXPECT_FALSE(r.signaled) << args[0];
  if (isFile) {
    EXPECT_EQ(ReadFile(input), before) << "input written: " << input;
  }
  return r;
}

bool Has(const ExeResult& r, const std::string& text) { return r.output.find(text) != std::string::npos; }

}  // namespace

TEST(BadInput, EmptyGarbageAndOneHugeLine) {
  TempDir dir;
  ExeResult empty = RunChecked({dir.Write("empty.log", ""), "/0"});
  EXPECT_EQ(empty.status, 4);
  EXPECT_TRUE(Has(empty, "Can not find molecular coordinates in the input file!"));

  std::mt19937 rng(42);
  std::string garbage(200000, '\0');
  for (char& c : garbage) c = static_cast<char>(rng());
  for (const char* option : {"", "/G09", "/GAM5", "/X", "/GZ", "/PRIR", "/A"}) {
    std::vector<std::string> args{dir.Write("garbage.bin", garbage), "/0"};
    if (*option) args.push_back(option);
    ExeResult r = RunChecked(args);
    EXPECT_TRUE(r.status == 0 || r.status == 1 || r.status == 4) << option << " " << r.status << r.output;
  }

  std::string huge(1 << 20, 'x');  // a 1 MB line without a line end
  ExeResult line = RunChecked({dir.Write("huge.log", huge), "/0"});
  EXPECT_EQ(line.status, 4);
  ExeResult forced = RunChecked({dir.Write("huge.xyz", "C " + huge), "/X0", "/0"});
  EXPECT_EQ(forced.status, 1);
  EXPECT_TRUE(Has(forced, "FATAL READ ERROR in file")) << forced.output;
}

TEST(BadInput, DirectoriesAndDevicesAreNoInput) {
  TempDir dir;
  ExeResult d = RunChecked({dir.path.string(), "/0"});
  EXPECT_EQ(d.status, 3);
  EXPECT_TRUE(Has(d, " can not be read."));
  ExeResult dev = RunChecked({"/dev/zero", "/0"});
  EXPECT_EQ(dev.status, 3);
  // As root every file is readable, so an unreadable file can only be made
  // for an ordinary user.
  if (::geteuid() != 0) {
    std::string locked = dir.Write("locked.log", "x\n");
    fs::permissions(locked, fs::perms::none);
    EXPECT_EQ(RunChecked({locked, "/0"}).status, 3);
  }
}

TEST(BadInput, RealLogsCutInsideTheirBlocks) {
  SKIP_WITHOUT_TESTDATA();
  // Cut a few lines into the first coordinate, mass and mode block and into
  // Gaussian's thermochemistry: what was read stands, or a cut field stops
  // the run with a read error.
  const std::vector<std::string> logs = {
      "gaussian98/h2_freq.log",        "gaussian98/cu2_freq.log",       "gaussian03/dvb_ir.log",
      "gaussian03/dvb_raman.log",      "gaussian03/anthracene_opt_freq.log", "gaussian09/benzene_freq.log",
      "gaussian09/bsl_opt_freq.log",   "gaussian16/water_opt_freq.log", "gaussian16/co_opt_freq.log",
      "pcgamess/dvb_ir_v6.log",        "pcgamess/cn_ir_v7.log",         "pcgamess/dvb_gopt_v6.log",
      "gamess-us/dvb_ir.log",          "gamess-us/nh3_ts_ir.log",       "gamess-us2018/nh3_ts_ir.log"};
  const std::vector<std::string> anchors = {"Standard orientation:", "NSERCH", "AtmWgt", "ATOMIC WEIGHTS",
                                            "Frequencies --", "FREQUENCY:", "Temperature   298.150",
                                            "Input orientation:", "COORDINATES OF ALL ATOMS"};
  TempDir dir;
  int runs = 0;
  for (const auto& log : logs) {
    std::ifstream f(TestData(log));
    std::vector<std::string> lines;
    for (std::string l; std::getline(f, l);) lines.push_back(l);
    for (const auto& anchor : anchors) {
      size_t at = 0;
      while (at < lines.size() && lines[at].find(anchor) == std::string::npos) ++at;
      if (at == lines.size()) continue;
      for (size_t inside : {size_t{2}, size_t{6}}) {
        std::string text;
        for (size_t k = 0; k < std::min(lines.size(), at + inside); ++k) text += lines[k] + "\n";
        text += lines[std::min(lines.size() - 1, at + inside)].substr(0, 23);  // a line cut in a field
        std::string cut = dir.Write("cut_" + std::to_string(runs++) + ".log", text);
        ExeResult r = RunChecked({cut, "/0"});
        SCOPED_TRACE(log + " at " + anchor);
        EXPECT_TRUE(r.status == 0 || r.status == 1 || r.status == 4) << r.status << r.output;
        if (r.status == 1) {
          EXPECT_TRUE(Has(r, "FATAL READ ERROR in file " + cut));
        }
        if (r.status == 4) {
          EXPECT_TRUE(Has(r, "Can not find molecular coordinates"));
        } else {
          EXPECT_TRUE(fs::exists(dir.File("cut_" + std::to_string(runs - 1) + ".mou")));
        }
      }
    }
  }
  EXPECT_GT(runs, 40);
}

TEST(BadInput, UnreadableNumbersInSpecAndConfigFilesAndOptions) {
  TempDir dir;
  std::string input = dir.Write("mol.xyz", "O 0 0 0.12\nH 0 0.76 -0.47\nH 0 -0.76 -0.47\n");
  dir.Write("mol.tdi", "TT=300\nSCALE=0.9x\n");
  ExeResult spec = RunChecked({input, "/X0", "/0"});
  EXPECT_EQ(spec.status, 1);
  EXPECT_TRUE(Has(spec, "FATAL READ ERROR in file " + dir.File("mol.tdi") + ", line 2")) << spec.output;
  EXPECT_TRUE(ReadFile(dir.File("mol.mou")).find(" Specification file      :") != std::string::npos);
  fs::remove(dir.File("mol.tdi"));

  dir.Write("Quintor.cfg", "[DEFAULT]\nSkipLinesAfterLabel = two\n[END]\n");
  ::setenv("QUINTOR", dir.path.c_str(), 1);
  ExeResult config = RunChecked({input, "/X0", "/0"});
  ::unsetenv("QUINTOR");
  EXPECT_EQ(config.status, 1);
  EXPECT_TRUE(Has(config, "Quintor.cfg")) << config.output;

  for (const char* option : {"/TT3OO", "/PP1.0.0", "/C1e", "/ROTthree", "/MULTx", "/THERMO1-a-3", "/V1:b:3",
                             "/SCALE,", "/NXYZa@L", "/PRECx.y", "/HBlong", "/FXlow", "/IRMCmany"}) {
    ExeResult r = RunChecked({input, "/X0", "/0", option});
    EXPECT_EQ(r.status, 1) << option << r.output;
    EXPECT_TRUE(Has(r, "FATAL READ ERROR")) << option << r.output;
  }
}

TEST(BadInput, CycleLimitsOnLongOptimisations) {
  SKIP_WITHOUT_TESTDATA();
  TempDir dir;
  for (const char* log : {"gaussian09/bsl_opt_freq.log", "pcgamess/dvb_gopt_v6.log", "gamess-us/dvb_gopt.log"}) {
    std::string copy = dir.File(fs::path(log).filename().string());
    fs::copy_file(TestData(log), copy, fs::copy_options::overwrite_existing);
    for (const char* limit : {"/C0", "/C1"}) {
      ExeResult r = RunChecked({copy, "/0", limit});
      EXPECT_EQ(r.status, 2) << log << limit;
      EXPECT_TRUE(Has(r, " Use /C<number> flag in the command string")) << r.output;
    }
  }
}

TEST(BadInput, MoreAtomsThanTheLimit) {
  TempDir dir;
  std::string xyz;
  for (int i = 0; i < 1911; ++i) xyz += "C " + std::to_string(i * 1.6) + " 0 0\n";
  ExeResult r = RunChecked({dir.Write("big.xyz", xyz), "/X0", "/0"});
  EXPECT_EQ(r.status, 2);
  EXPECT_TRUE(Has(r, " Maximum number of atoms exceeded!\n"
                     " At the current build, the maximum number of atoms set to 1910.  Sorry..."));
  // 1910 atoms are read.
  xyz.resize(xyz.rfind("C "));
  EXPECT_EQ(RunChecked({dir.Write("limit.xyz", xyz), "/X0", "/0"}).status, 0);
}

TEST(BadInput, NoWrittenFileCanBeTheInput) {
  // An input whose name is that of a file the run writes: the written file
  // gets a "1" behind its name.
  TempDir dir;
  std::string log = ReadFile(TestInput("water_xtb.out"));
  for (const char* name : {"mol.tdo", "mol.mou", "mol.mco", "mol.pun"}) {
    std::string input = dir.Write(name, log);
    dir.Write(fs::path(name).replace_extension(".tdi").string(), "TT=300\n");
    ExeResult r = RunChecked({input, "/0"});
    EXPECT_EQ(r.status, 0) << name << r.output;
  }
  EXPECT_TRUE(fs::exists(dir.File("mol.tdo1")));
  EXPECT_TRUE(fs::exists(dir.File("mol.mou1")));
}

TEST(BadInput, AnEigenproblemThatDoesNotConvergeEndsTheRun) {
  // Found by fuzzing: a log of the earlier program whose geometry makes the
  // inertia tensor diverge. The run ends with the message, not a crash.
  TempDir dir;
  std::string bytes = ReadFile(fs::path(QUINTOR_TEST_INPUTS).parent_path() / "fuzz_regressions/read_pass/jacobi_does_not_converge");
  ExeResult r = RunChecked({dir.Write("k.log", bytes.substr(1)), "/0", "/A"});
  EXPECT_EQ(r.status, 6);
  EXPECT_TRUE(Has(r, " too many iterations in jacobi")) << r.output;
  EXPECT_NE(ReadFile(dir.File("k.mou")).find(" too many iterations in jacobi"), std::string::npos);
}

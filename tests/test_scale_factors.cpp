// /SCALEAUTO: the level of theory read from the input echo of real logs and
// looked up in the table of published factors; /SCALE stands over it.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "readers/readers.h"
#include "test_support.h"
#include "thermo/scale_factors.h"

using namespace quintor;
using namespace quintor::test;

TEST(ScaleFactors, LevelFromKeywords) {
  struct Case {
    std::vector<std::string> words;
    const char* level;  // nullptr: none
  };
  const Case cases[] = {
      {{"p", "ub3lyp", "6-31g*", "opt"}, "B3LYP/6-31G(d)"},
      {{"RB3LYP", "6-31G(d)"}, "B3LYP/6-31G(d)"},
      {{"M06-2X", "def2-TZVP", "Opt", "Freq"}, "M06-2X/def2-TZVP"},
      {{"m062x", "6-311+g**"}, "M06-2X/6-311+G(d,p)"},
      {{"hf", "6-31g**"}, "HF/6-31G(d,p)"},
      {{"pbe1pbe", "MG3S"}, "PBE0/MG3S"},
      {{"b3lyp", "sto-3g"}, nullptr},
      {{"6-31G(d)"}, nullptr},
  };
  for (const Case& c : cases) {
    const ScaleFactor* f = FindScaleFactor(c.words);
    if (!c.level) {
      EXPECT_EQ(f, nullptr) << c.words[0];
      continue;
    }
    ASSERT_NE(f, nullptr) << c.level;
    EXPECT_EQ(f->level, c.level);
  }
}

// The route of Gaussian logs, ORCA's "!" lines and Q-Chem's $rem block.
TEST(ScaleFactors, RealLogs) {
  SKIP_WITHOUT_TESTDATA();
  struct Case {
    const char* file;
    const char* level;
    double zpe;
  };
  const Case cases[] = {
      {"gaussian09/benzene_freq.log", "AM1", 0.948},
      {"gaussian09/irc_point.log", "HF/6-31G(d)", 0.909},
      {"orca/orca5.0.4_freq.out", "CCSD(T)/aug-cc-pVTZ", 0.987},
      {"qchem/qchem4.2_water_ir.out", nullptr, 1.0},   // B3LYP/STO-3G: not in the table
      {"gaussian16/water_opt_freq.log", nullptr, 1.0},  // PBE1PBE/6-31G(d,p)
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.file);
    const ScaleFactor* f = FindScaleFactor(InputKeywords(TestData(c.file)));
    if (!c.level) {
      EXPECT_EQ(f, nullptr);
    } else {
      ASSERT_NE(f, nullptr);
      EXPECT_EQ(f->level, c.level);
    }

    TempDir dir;
    const std::string name = std::filesystem::path(c.file).filename().string();
    std::filesystem::copy_file(TestData(c.file), dir.File(name));
    Session plain, scaled, forced;
    ASSERT_EQ(RunInProcess(plain, {dir.File(name), "/0"}).status, 0);
    const RunResult run = RunInProcess(scaled, {dir.File(name), "/0", "/SCALEAUTO"});
    ASSERT_EQ(run.status, 0);
    EXPECT_DOUBLE_EQ(scaled.opt.freqScale, c.zpe);
    // The zero-point energy is linear in the frequencies.
    EXPECT_NEAR(scaled.thermo.report.zpeTot, c.zpe * plain.thermo.report.zpeTot, 1e-9);
    EXPECT_NE(run.log.find(c.level ? " Source: Truhlar group database v4" : " WARNING! /SCALEAUTO: no scale factor"),
              std::string::npos);
    ASSERT_EQ(RunInProcess(forced, {dir.File(name), "/0", "/SCALEAUTO", "/SCALE0.9"}).status, 0);
    EXPECT_DOUBLE_EQ(forced.opt.freqScale, 0.9);
  }
}

// The specification file: keywords anywhere in a line, VIBR-line keywords,
// the three blocks, units, and the edge cases of the grammar.
#include <gtest/gtest.h>

#include <sstream>

#include "io/fortran_io.h"
#include "readers/tdi_file.h"
#include "test_support.h"

using namespace quintor;
using namespace quintor::test;

namespace {

struct Spec {
  TempDir dir;
  Session s;
  std::ostringstream console;
  explicit Spec(const std::string& text) {
    s.console = &console;
    LineReader in;
    in.Open(dir.Write("x.tdi", text));
    ReadSpecFile(s, in);
  }
};

}  // namespace

TEST(SpecFile, TheExampleFile) {
  Spec spec(
      "! ethane-like rotors\n"
      "TT=298.15 PP=101325.0\n"
      "SCALE=0.96\n"
      "ZERO=(1,2,3,4,5,6)\n"
      "VIBR=7 ROT=3 GROUP=(5,6,7,8) AXIS=(1,2) V0=2.9 KCAL\n"
      "VIBR=9 ROT=1 GROUP=(9,10,11) AXIS=(3,4) READP KJ\n"
      "0.0 0.0\n"
      "60.0 6.1\n"
      "120.0 0.2\n"
      "\n"
      "ALLPOSITIVE\n"
      "EXCLUDEATOMS\n"
      "12\n"
      "\n"
      "NEWAMASS\n"
      "12.0\n"
      "2.0141\n");
  const Session& s = spec.s;
  EXPECT_DOUBLE_EQ(s.opt.temperature, 298.15);
  EXPECT_DOUBLE_EQ(s.opt.pressure, 101325.0);
  EXPECT_DOUBLE_EQ(s.opt.freqScale, 0.96);
  EXPECT_EQ(s.zeroModes, (std::vector<int>{1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(s.nZero, 6);
  ASSERT_EQ(s.rotors.size(), 2u);
  const IntRot& a = s.rotors[0];
  EXPECT_EQ(a.mode, 7);
  EXPECT_EQ(a.symmetryNumber, 3);
  EXPECT_EQ(a.group, (std::vector<int>{5, 6, 7, 8}));
  EXPECT_EQ(a.potentialKind, -1);
  EXPECT_DOUBLE_EQ(a.v0, 2.9 * 4.184);
  const IntRot& b = s.rotors[1];
  EXPECT_EQ(b.potentialKind, 3);
  EXPECT_EQ(b.angles, (std::vector<double>{0.0, 60.0, 120.0}));
  EXPECT_DOUBLE_EQ(b.energies[1], 6.1);  // kJ/mol as given
  EXPECT_TRUE(s.opt.allPositive);
  EXPECT_EQ(s.excludeAtoms, std::vector<int>{12});
  EXPECT_TRUE(s.specMassGiven);
  EXPECT_EQ(s.specMass, (std::vector<double>{12.0, 2.0141}));
  EXPECT_FALSE(s.opt.rotationNumberByUser);
}

TEST(SpecFile, UnitsOfBarriersAndTables) {
  Spec spec(
      "VIBR=4 V0=0.001 AU\n"
      "VIBR=5 V0=10\n"
      "VIBR=6 READP\n"
      "0 0.001\n"
      "\n"
      "VIBR=7 READP KCAL\n"
      "0 1.0\n"
      "\n");
  const auto& r = spec.s.rotors;
  ASSERT_EQ(r.size(), 4u);
  EXPECT_DOUBLE_EQ(r[0].v0, 0.001 * 2625.3035184);
  EXPECT_DOUBLE_EQ(r[1].v0, 10.0);                         // kJ/mol
  EXPECT_DOUBLE_EQ(r[2].energies[0], 0.001 * 2625.3035184);  // a table defaults to Hartree
  EXPECT_DOUBLE_EQ(r[3].energies[0], 4.184);
}

TEST(SpecFile, EdgeCasesOfTheGrammar) {
  // PP=1 is one pascal (unlike /PP1); ROTN=0 gives 1 and is not the user's.
  Spec a("PP=1 ROTN=0\n");
  EXPECT_DOUBLE_EQ(a.s.opt.pressure, 1.0);
  EXPECT_DOUBLE_EQ(a.s.opt.rotationNumber, 1.0);
  EXPECT_FALSE(a.s.opt.rotationNumberByUser);
  // GROUP is read only on the line of VIBR.
  Spec b("VIBR=7 ROT=3\nGROUP=(1,2)\n");
  ASSERT_EQ(b.s.rotors.size(), 1u);
  EXPECT_TRUE(b.s.rotors[0].group.empty());
  // GENCOORD alone, GENCOORDANGLE=0, GENCOORDANGLE=-30.
  EXPECT_DOUBLE_EQ(Spec("GENCOORD\n").s.opt.genCoordAngle, 20.0);
  EXPECT_DOUBLE_EQ(Spec("GENCOORDANGLE=-30\n").s.opt.genCoordAngle, -30.0);
  // A comment must begin in column 1.
  EXPECT_DOUBLE_EQ(Spec("! TT=300\n").s.opt.temperature, 298.15);
  EXPECT_DOUBLE_EQ(Spec(" ! TT=300\n").s.opt.temperature, 300.0);
  EXPECT_DOUBLE_EQ(Spec("SCALE=0\n").s.opt.freqScale, 1.0);
  // Any line with the letters TS sets the transition state, a PATTERN too.
  Spec c("PATTERN=ts_scan.hdr\n");
  EXPECT_TRUE(c.s.opt.transitionState);
  EXPECT_EQ(c.s.rotationPattern, "TS_SCAN.HDR");
  EXPECT_FALSE(Spec("PATTERN=hdr.txt\n").s.opt.transitionState);
  // Keywords anywhere, several on a line, lower case.
  Spec d("temperature: tt=350.5, pressure pp=2e5 allpositive recalcfreq\n");
  EXPECT_DOUBLE_EQ(d.s.opt.temperature, 350.5);
  EXPECT_DOUBLE_EQ(d.s.opt.pressure, 2e5);
  EXPECT_TRUE(d.s.opt.allPositive);
  EXPECT_TRUE(d.s.opt.recalcFreq);
}

TEST(SpecFile, ZeroListWarnsWhenNotSix) {
  Spec quiet("ZERO=(1,2,3,4,5,6)\nZERO=(1,2,0,4,5)\n");
  EXPECT_EQ(quiet.s.zeroModes, (std::vector<int>{1, 2, 0, 4, 5}));  // the last list replaces
  EXPECT_EQ(quiet.s.nZero, 4);
  Spec five("ZERO=(1,2,3,4,5)\n");
  EXPECT_NE(five.console.str().find(" Warning! Zero modes found:  5\n"), std::string::npos);
  EXPECT_NE(five.console.str().find(" Specifications read in OK\n"), std::string::npos);
}

TEST(SpecFile, PotentialTableLimitAndBlocksAtTheEnd) {
  std::string table = "VIBR=3 READP KJ\n";
  for (int k = 0; k < 160; ++k) table += std::to_string(k) + ".0 1.0\n";
  table += "\n";
  Spec spec(table);
  ASSERT_FALSE(spec.s.rotors.empty());
  // 150 lines or more: read up to the 150th, and not counted.
  EXPECT_EQ(spec.s.rotors[0].potentialKind, 0);
  EXPECT_EQ(spec.s.rotors[0].angles.size(), 150u);
  // A table of 149 lines is counted.
  std::string shorter = "VIBR=3 READP KJ\n";
  for (int k = 0; k < 149; ++k) shorter += std::to_string(2.5 * k) + " 2\n";
  EXPECT_EQ(Spec(shorter + "\n").s.rotors[0].potentialKind, 149);
  // NEWAMASS and EXCLUDEATOMS may end at the end of the file.
  Spec m("NEWAMASS\n1.0\n2.0");
  EXPECT_EQ(m.s.specMass.size(), 2u);
  Spec e("EXCLUDEATOMS\n   3\n4");
  EXPECT_EQ(e.s.excludeAtoms, (std::vector<int>{3, 4}));
}

TEST(SpecFile, UnreadableNumbersStopWithTheLine) {
  const std::vector<std::pair<std::string, std::string>> bad = {
      {"TT=warm\n", "line 1"},
      {"SCALE=1\nVIBR=x\n", "line 2"},
      {"VIBR=2 READP KJ\n0 1\n", "READP"},        // the file ends inside the table
      {"VIBR=2 READP KJ\n0 abc\n\n", "line 2"},
      // a curve that stops short of 180 degrees can not be transformed
      {"TT=300\nVIBR=2 READP KJ\n0 0\n30 1\n60 2\n90 1\n\n", "line 7"},
      {"NEWAMASS\n12.0\nC\n", "line 3"},
  };
  for (const auto& [text, where] : bad) {
    try {
      Spec spec(text);
      ADD_FAILURE() << text;
    } catch (const FatalReadError& e) {
      EXPECT_NE(std::string(e.what()).find(where), std::string::npos) << e.what();
      EXPECT_NE(std::string(e.what()).find("x.tdi"), std::string::npos) << e.what();
    }
  }
}

TEST(SpecFile, ReadAtStartUpBeforeTheLog) {
  TempDir dir;
  dir.Write("mol.tdi", "TT=400\nNEWAMASS\n2.0\n");
  std::string input = dir.Write("mol.log", " nothing\n");
  Session s;
  auto r = RunInProcess(s, {input, "/TT300"}, "n");
  EXPECT_EQ(r.status, 0);
  EXPECT_DOUBLE_EQ(s.opt.temperature, 400.0);  // the SpecFile is read after the command line
  EXPECT_TRUE(s.specMassGiven);
  // A bad number in the SpecFile: non-zero exit, the log keeps its head and the message.
  dir.Write("bad.tdi", "SCALE=fast\n");
  std::string bad = dir.Write("bad.log", " nothing\n");
  auto rb = RunInProcess({bad, "/0"});
  EXPECT_EQ(rb.status, exit_status::ReadError);
  EXPECT_NE(rb.log.find(" Specification file      :"), std::string::npos);
  EXPECT_NE(rb.log.find("FATAL READ ERROR in file " + dir.File("bad.tdi") + ", line 1"), std::string::npos) << rb.log;
}

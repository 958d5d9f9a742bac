// The command line: prefixes in their order, value rules and edge cases.
#include <gtest/gtest.h>

#include "app/command_line.h"
#include "io/file_names.h"
#include "io/fortran_io.h"
#include "io/keyword_values.h"

using namespace quintor;

namespace {
// What the command line leaves in the Session.
struct Parsed {
  Options opt;
  RunFiles files;
};

Parsed Parse(const std::vector<std::string>& args) {
  Session s;
  ParseCommandLine(s, args);
  return {s.opt, s.files};
}
}  // namespace

TEST(CommandLine, FirstArgumentIsTheInputUnlessOrientation) {
  Parsed s = Parse({"Water.LOG", "/X"});
  EXPECT_EQ(s.files.inputName, "Water.LOG");  // taken whole, in its own case
  EXPECT_EQ(s.opt.formatCode, FormatCode::Nxyz);
  EXPECT_EQ(s.opt.skipLines, 0);  // /X without N skips nothing

  // prog /I file.log: /I sets the orientation, file.log is an unknown option.
  s = Parse({"/I", "file.log"});
  EXPECT_EQ(s.opt.orientation, Orientation::Input);
  EXPECT_EQ(s.files.inputName, "");
  s = Parse({"x.log", "/z "});
  EXPECT_EQ(s.opt.orientation, Orientation::ZMatrix);
  // An option in the first place is a file name.
  s = Parse({"/G98"});
  EXPECT_EQ(s.files.inputName, "/G98");
  EXPECT_EQ(s.opt.formatCode, FormatCode::Automatic);
  // Unknown words are ignored without a message.
  s = Parse({"x.log", "/WHATEVER", "plain"});
  EXPECT_EQ(s.opt.formatCode, FormatCode::Automatic);
}

TEST(CommandLine, XyzFamilyAndLabels) {
  Parsed s = Parse({"x", "/x3"});
  EXPECT_EQ(s.opt.formatCode, FormatCode::Nxyz);
  EXPECT_EQ(s.opt.skipLines, 3);
  s = Parse({"x", "/NDXYZ"});
  EXPECT_EQ(s.opt.formatCode, FormatCode::Ndxyz);
  s = Parse({"x", "/dnxyz1"});
  EXPECT_EQ(s.opt.formatCode, FormatCode::Dnxyz);
  EXPECT_EQ(s.opt.skipLines, 1);
  s = Parse({"x", "/NXYZ2@Coordinates"});
  EXPECT_EQ(s.opt.formatCode, FormatCode::LabelledXyz);
  EXPECT_EQ(s.opt.labelFieldOrder, 1);
  EXPECT_EQ(s.opt.skipLines, 2);
  EXPECT_EQ(s.opt.label, "COORDINATES");
  s = Parse({"x", "/DNXYZ@GEOM here"});
  EXPECT_EQ(s.opt.formatCode, FormatCode::LabelledXyz);
  EXPECT_EQ(s.opt.labelFieldOrder, 3);
  EXPECT_EQ(s.opt.label, "GEOM");  // the label stops at the first blank
  // /X comes first, so /X@... never reaches the labelled reading.
  EXPECT_THROW(Parse({"x", "/X@LABEL"}), FatalReadError);
  s = Parse({"x", "/GZ1@ZMAT"});
  EXPECT_EQ(s.opt.formatCode, FormatCode::GaussianZMatrix);
  EXPECT_EQ(s.opt.labelFieldOrder, 3);
  EXPECT_EQ(s.opt.skipLines, 1);
  s = Parse({"x", "/GZ4"});
  EXPECT_EQ(s.opt.formatCode, FormatCode::GaussianZMatrix);
  EXPECT_EQ(s.opt.labelFieldOrder, 0);
  EXPECT_EQ(s.opt.skipLines, 4);
}

TEST(CommandLine, PrefixOrderDecides) {
  Parsed s = Parse({"x", "/ROTNUM3"});
  EXPECT_EQ(s.opt.rotationNumber, 3.0);
  EXPECT_TRUE(s.opt.rotationNumberByUser);
  s = Parse({"x", "/rot12"});
  EXPECT_EQ(s.opt.rotationNumber, 12.0);
  s = Parse({"x", "/ARIR"});
  EXPECT_TRUE(s.opt.arir);
  EXPECT_EQ(s.opt.formatCode, FormatCode::Automatic);
  s = Parse({"x", "/A"});
  EXPECT_EQ(s.opt.formatCode, FormatCode::Korvandel);
  s = Parse({"x", "/AU"});
  EXPECT_EQ(s.opt.lengthUnit, LengthUnit::Bohr);
  EXPECT_EQ(s.opt.formatCode, FormatCode::Automatic);
  s = Parse({"x", "/CFOUR"});
  EXPECT_EQ(s.opt.formatCode, FormatCode::Cfour);
  EXPECT_EQ(s.opt.maxCycles, 300);
  s = Parse({"x", "/c500"});
  EXPECT_EQ(s.opt.maxCycles, 500);
  s = Parse({"x", "/V@View.mou"});
  EXPECT_EQ(s.opt.viewFile, "View.mou");  // file names keep their case
  EXPECT_FALSE(s.opt.viewGiven);
  s = Parse({"x", "/@My.tdi"});
  EXPECT_EQ(s.files.specName, "My.tdi");
  EXPECT_TRUE(s.opt.specNameExplicit);
}

TEST(CommandLine, FormatOptions) {
  const std::vector<std::pair<std::string, int>> codes = {
      {"/GAM4", 2}, {"/GAM5", 0}, {"/GAM7", 15}, {"/GAMUS", 19}, {"/G94", 1}, {"/G98", 3},
      {"/G03", 10}, {"/G09", 16}, {"/PRIR", 17}, {"/CFOUR", 18}, {"/A", 4},    {"/PATmine", 8}};
  for (const auto& [option, code] : codes) EXPECT_EQ(static_cast<int>(Parse({"x", option}).opt.formatCode), code) << option;
  EXPECT_EQ(Parse({"x", "/patMine"}).opt.patternName, "MINE");
  EXPECT_EQ(Parse({"x", "/NM"}).opt.lengthUnit, LengthUnit::Nanometre);
  EXPECT_EQ(Parse({"x", "/bohr"}).opt.lengthUnit, LengthUnit::Bohr);
}

TEST(CommandLine, NumericValuesAndFallBacks) {
  Parsed s = Parse({"x", "/TT400", "/PP1", "/FX50", "/RX8.5", "/FP-30", "/HB3.1", "/MULT3"});
  EXPECT_DOUBLE_EQ(s.opt.temperature, 400.0);
  EXPECT_DOUBLE_EQ(s.opt.pressure, 101325.0);  // /PP is in atmospheres
  EXPECT_DOUBLE_EQ(s.opt.freqBottom, 50.0);
  EXPECT_DOUBLE_EQ(s.opt.redMassTop, 8.5);
  EXPECT_DOUBLE_EQ(s.opt.positiveFreqLimit, -30.0);
  EXPECT_TRUE(s.opt.showHBonds);
  EXPECT_DOUBLE_EQ(s.opt.hBondLength, 3.1);
  EXPECT_EQ(s.opt.multiplicity, 3);
  EXPECT_DOUBLE_EQ(Parse({"x", "/PP2.5"}).opt.pressure, 2.5 * 101325.0);
  EXPECT_DOUBLE_EQ(Parse({"x", "/HB"}).opt.hBondLength, 2.5);
  EXPECT_DOUBLE_EQ(Parse({"x", "/SCALE-1.1"}).opt.freqScale, 1.0);
  EXPECT_DOUBLE_EQ(Parse({"x", "/SCALE0.96"}).opt.freqScale, 0.96);
  EXPECT_DOUBLE_EQ(Parse({"x", "/SYMEPS0"}).opt.symEps, 0.005);
  EXPECT_DOUBLE_EQ(Parse({"x", "/SYMEPS0.01"}).opt.symEps, 0.01);
  EXPECT_EQ(Parse({"x", "/MULT0"}).opt.multiplicity, 1);
  EXPECT_EQ(Parse({"x", "/MULT-2"}).opt.multiplicity, 1);
  EXPECT_EQ(Parse({"x", "/TT"}).opt.temperature, 298.15);  // empty value: default stays
  s = Parse({"x", "/IRMC"});
  EXPECT_TRUE(s.opt.monteCarlo);
  EXPECT_EQ(s.opt.monteCarloSamples, 0);
  EXPECT_EQ(Parse({"x", "/IRMC-5"}).opt.monteCarloSamples, 0);
  EXPECT_EQ(Parse({"x", "/IRMC10000"}).opt.monteCarloSamples, 10000);
}

TEST(CommandLine, FlagsWithoutValues) {
  Parsed s = Parse({"x", "/TS", "/NOSYM", "/NOLOG", "/NOE", "/RAMAN", "/0", "/ARIR"});
  EXPECT_TRUE(s.opt.transitionState);
  EXPECT_TRUE(s.opt.noSymmetry);
  EXPECT_TRUE(s.opt.noLog);
  EXPECT_TRUE(s.opt.noEnergies);
  EXPECT_TRUE(s.opt.raman);
  EXPECT_TRUE(s.opt.noGraphics);
}

TEST(CommandLine, OrientList) {
  Parsed s = Parse({"x", "/ORIENT"});
  EXPECT_TRUE(s.opt.orient);
  EXPECT_EQ(s.opt.orientAtoms, (std::array<int, 3>{1, 2, 3}));
  s = Parse({"x", "/ORIENT4-7:9"});
  EXPECT_EQ(s.opt.orientAtoms, (std::array<int, 3>{4, 7, 9}));
}

TEST(CommandLine, PrecisionWidthAndDecimals) {
  Parsed s = Parse({"x", "/PREC"});
  EXPECT_EQ(s.opt.outputPrecision, 1);
  EXPECT_EQ(s.opt.outputWidth, 20);
  EXPECT_EQ(s.opt.outputDecimals, 12);
  s = Parse({"x", "/PREC15.8"});
  EXPECT_EQ(s.opt.outputWidth, 15);
  EXPECT_EQ(s.opt.outputDecimals, 8);
  s = Parse({"x", "/PRECAU18-10"});
  EXPECT_EQ(s.opt.outputPrecision, 2);
  EXPECT_EQ(s.opt.outputWidth, 18);
  EXPECT_EQ(s.opt.outputDecimals, 10);
  s = Parse({"x", "/precnm"});
  EXPECT_EQ(s.opt.outputPrecision, 3);
  EXPECT_EQ(s.opt.outputWidth, 20);
  // Both separators: "-" wins.
  s = Parse({"x", "/PREC16-9"});
  EXPECT_EQ(s.opt.outputWidth, 16);
  EXPECT_EQ(s.opt.outputDecimals, 9);
}

TEST(CommandLine, ThermoRangeAndView) {
  Parsed s = Parse({"x", "/THERMO100-200-10"});
  EXPECT_TRUE(s.opt.tempTableRequested);
  EXPECT_EQ(s.opt.tempRange, (std::array<double, 3>{100.0, 200.0, 10.0}));
  s = Parse({"x", "/THERMO300:600,25"});
  EXPECT_EQ(s.opt.tempRange, (std::array<double, 3>{300.0, 600.0, 25.0}));
  // /V keeps "-" as a sign: only ":" and "," separate.
  s = Parse({"x", "/v-30.5:45:0:0.1:-0.2:1.5"});
  EXPECT_TRUE(s.opt.viewGiven);
  EXPECT_EQ(s.opt.viewValues, 6);
  EXPECT_DOUBLE_EQ(s.opt.view[0], -30.5);
  EXPECT_DOUBLE_EQ(s.opt.view[4], -0.2);
  EXPECT_DOUBLE_EQ(s.opt.view[5], 1.5);
  s = Parse({"x", "/V10,20,30"});
  EXPECT_EQ(s.opt.viewValues, 3);
  EXPECT_DOUBLE_EQ(s.opt.view[5], 1.0);  // zoom stays at its default
}

TEST(CommandLine, UnreadableNumberIsAFatalReadError) {
  for (const char* bad : {"/TTabc", "/C3x", "/PP1..2", "/ORIENT1-b-3", "/THERMO100-x-10", "/SCALEfast"}) {
    try {
      Parse({"x", bad});
      ADD_FAILURE() << bad << " accepted";
    } catch (const FatalReadError& e) {
      EXPECT_NE(std::string(e.what()).find("argument 2"), std::string::npos) << e.what();
    }
  }
}

TEST(CommandLine, HelpAndVersion) {
  Session s;
  EXPECT_EQ(ParseCommandLine(s, {"--help"}), CommandLineAction::Help);
  EXPECT_EQ(ParseCommandLine(s, {"x.log", "/?"}), CommandLineAction::Help);
  EXPECT_EQ(ParseCommandLine(s, {"-h"}), CommandLineAction::Help);
  EXPECT_EQ(ParseCommandLine(s, {"--version"}), CommandLineAction::Version);
  std::string usage = UsageText();
  EXPECT_NE(usage.find("/c<N> - set maximum number of cycles (geometries) to N (defailt N=300)"), std::string::npos);
  EXPECT_NE(usage.find("/x<N> - read the XYZ coordinates skipping N lines in the input file (default N=2)"),
            std::string::npos);
  for (const char* option : {"/nxyz", "/ndxyz", "/dnxyz", "/tt", "/pp", "/rotnum", "/orient", "/ts", "/au",
                             "/bohr", "/nm", "/prec", "/precau", "/precnm", "/arir", "/a ", "/gam4", "/gam5",
                             "/gam7", "/gamus", "/g94", "/g98", "/g03", "/g09", "/prir", "/cfour", "/gz",
                             "/pat", "/hb", "/fx", "/rx", "/fp", "/@", "/thermo", "/v@", "/v<", "/scale",
                             "/symeps", "/nosym", "/nolog", "/noe", "/raman", "/0", "/mult", "/irmc", "/i ",
                             "/z "})
    EXPECT_NE(usage.find(option), std::string::npos) << option;
}

TEST(KeywordValues, SplitsListsAndWords) {
  auto v = KeywordValues("VIBR=7 ROT=3 GROUP=(1, 2 ,3) AXIS=(4,5)", "GROUP");
  EXPECT_EQ(v, (std::vector<std::string>{"1", "2", "3"}));
  EXPECT_EQ(KeywordValues("SCALE= 0.96 TT=300", "SCALE"), std::vector<std::string>{"0.96"});
  EXPECT_EQ(KeywordValues("X=(A B)", "X"), std::vector<std::string>{"AB"});
  EXPECT_TRUE(KeywordValues("SCALE 0.96", "SCALE").empty());  // no "="
  EXPECT_TRUE(KeywordValues("TT=300", "PP").empty());
  EXPECT_TRUE(KeywordValues("T=()", "T=").empty());
  // A "(" without ")" is a plain word.
  EXPECT_EQ(KeywordValues("T=(1,2", "T="), (std::vector<std::string>{"(1", "2"}));
  std::string many = "G=(";
  for (int i = 1; i <= 101; ++i) many += std::to_string(i) + (i < 101 ? "," : ")");
  EXPECT_TRUE(KeywordValues(many, "G").empty());  // longer lists are not accepted
}

TEST(OutputNames, ReplaceExtensionKeepsItsQuirk) {
  EXPECT_EQ(ReplaceExtension(true, "a.output", ".mou"), "a.mouput");
  EXPECT_EQ(ReplaceExtension(true, "water.log", ".mou"), "water.mou");
  EXPECT_EQ(ReplaceExtension(true, "water", ".tdi"), "water.tdi");
  EXPECT_EQ(ReplaceExtension(false, "water", ".tdi"), "water");
  EXPECT_EQ(ReplaceExtension(true, "a.b.c", ".mou"), "a.b.mou");
  // The dot is looked for in the last path component only.
  EXPECT_EQ(ReplaceExtension(true, "/home/u/run.d/water", ".mou"), "/home/u/run.d/water.mou");
  EXPECT_EQ(ReplaceExtension(true, "./water", ".mou"), "./water.mou");
}

TEST(OutputNames, LogNeverEqualsInput) {
  EXPECT_EQ(DerivedName("x.mou", ".mou"), "x.mou1");
  EXPECT_EQ(DerivedName("x.tdo", ".tdo"), "x.tdo1");
  EXPECT_EQ(DerivedName("x.log", ".mou"), "x.mou");
  EXPECT_EQ(DerivedName("x.mouse", ".mou"), "x.mouse1");  // the a.output rule would give the input back
}

TEST(OutputNames, BaseNameUpToFirstDot) {
  EXPECT_EQ(BaseName("a.b.c"), "a");
  EXPECT_EQ(BaseName("water.log"), "water");
  EXPECT_EQ(BaseName("water"), "");
  EXPECT_EQ(BaseName(".hidden"), "");  // the dot must stand at position 2 or later
  EXPECT_EQ(BaseName("/data/run.1/water.log"), "/data/run.1/water");
  EXPECT_EQ(BaseName(std::string(140, 'x') + ".log"), "");
}

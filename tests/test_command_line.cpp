// The command line: prefixes in their order, value rules and edge cases;
// keyword lists of the specification file; names of the written files.
#include <gtest/gtest.h>

#include "app/command_line.h"
#include "io/file_names.h"
#include "io/fortran_io.h"
#include "io/keyword_values.h"

using namespace quintor;

namespace {
Options Parse(const std::vector<std::string>& args, RunFiles* files = nullptr) {
  Session s;
  ParseCommandLine(s, args);
  if (files) *files = s.files;
  return s.opt;
}
}  // namespace

TEST(CommandLine, FirstArgumentIsTheInputUnlessOrientation) {
  RunFiles f;
  EXPECT_EQ(Parse({"Water.LOG", "/X"}, &f).skipLines, 2);  // /X without N skips count and title
  EXPECT_EQ(f.inputName, "Water.LOG");                     // taken whole, in its own case
  // prog /I file.log: /I sets the orientation, file.log is an unknown option.
  EXPECT_EQ(Parse({"/I", "file.log"}, &f).orientation, Orientation::Input);
  EXPECT_EQ(f.inputName, "");
  EXPECT_EQ(Parse({"x.log", "/z "}).orientation, Orientation::ZMatrix);
  // Any other option in the first place is a file name; plain words behind it are ignored.
  EXPECT_EQ(Parse({"/G98"}, &f).formatCode, FormatCode::Automatic);
  EXPECT_EQ(f.inputName, "/G98");
  EXPECT_EQ(Parse({"x.log", "plain"}).formatCode, FormatCode::Automatic);
  EXPECT_THROW(Parse({"x.log", "/WHATEVER"}), BadOption);
  EXPECT_EQ(Parse({"x", "/@My.tdi"}, &f).specNameExplicit, true);
  EXPECT_EQ(f.specName, "My.tdi");
}

TEST(CommandLine, FormatsInTheOrderOfThePrefixes) {
  // /ARIR is not /A, /AU not /A, /ROTNUM not /ROT..., /CFOUR not /C.
  const std::vector<std::pair<std::string, int>> codes = {
      {"/GAM4", 2}, {"/GAM5", 0},  {"/GAM7", 15}, {"/GAMUS", 19}, {"/G94", 1},   {"/G98", 3},   {"/G03", 10},
      {"/G09", 16}, {"/PRIR", 17}, {"/CFOUR", 18}, {"/A", 4},     {"/ARIR", -1}, {"/AU", -1},   {"/PATmine", 8},
      {"/x3", 5},   {"/NDXYZ", 6}, {"/dnxyz1", 7}, {"/GZ4", 14},  {"/NXYZ2@C", 11}};
  for (const auto& [option, code] : codes) EXPECT_EQ(static_cast<int>(Parse({"x", option}).formatCode), code) << option;
  Options o = Parse({"x", "/NXYZ2@Coordinates"});
  EXPECT_EQ(o.labelFieldOrder, 1);
  EXPECT_EQ(o.skipLines, 2);
  EXPECT_EQ(o.label, "COORDINATES");
  o = Parse({"x", "/DNXYZ@GEOM here"});
  EXPECT_EQ(o.labelFieldOrder, 3);
  EXPECT_EQ(o.label, "GEOM");  // the label stops at the first blank
  o = Parse({"x", "/GZ1@ZMAT"});
  EXPECT_EQ(o.labelFieldOrder, 3);
  EXPECT_EQ(o.skipLines, 1);
  // /X comes first, so /X@... never reaches the labelled reading.
  EXPECT_THROW(Parse({"x", "/X@LABEL"}), FatalReadError);
  EXPECT_EQ(Parse({"x", "/patMine"}).patternName, "MINE");
  EXPECT_EQ(Parse({"x", "/AU"}).lengthUnit, LengthUnit::Bohr);
  EXPECT_EQ(Parse({"x", "/NM"}).lengthUnit, LengthUnit::Nanometre);
  EXPECT_EQ(Parse({"x", "/CFOUR"}).maxCycles, 300);
  EXPECT_TRUE(Parse({"x", "/ARIR"}).arir);
}

TEST(CommandLine, NumericValuesAndFallBacks) {
  Options o = Parse({"x", "/TT400", "/PP1", "/FX50", "/RX8.5", "/FP-30", "/HB3.1", "/MULT3", "/c500", "/ROTNUM3"});
  EXPECT_DOUBLE_EQ(o.temperature, 400.0);
  EXPECT_DOUBLE_EQ(o.pressure, 101325.0);  // /PP is in atmospheres
  EXPECT_DOUBLE_EQ(o.freqBottom, 50.0);
  EXPECT_DOUBLE_EQ(o.redMassTop, 8.5);
  EXPECT_DOUBLE_EQ(o.positiveFreqLimit, -30.0);
  EXPECT_TRUE(o.showHBonds);
  EXPECT_DOUBLE_EQ(o.hBondLength, 3.1);
  EXPECT_EQ(o.multiplicity, 3);
  EXPECT_EQ(o.maxCycles, 500);
  EXPECT_EQ(o.rotationNumber, 3.0);
  EXPECT_TRUE(o.rotationNumberByUser);
  EXPECT_DOUBLE_EQ(Parse({"x", "/HB"}).hBondLength, 2.5);
  EXPECT_DOUBLE_EQ(Parse({"x", "/SCALE-1.1"}).freqScale, 1.0);
  EXPECT_DOUBLE_EQ(Parse({"x", "/SYMEPS0"}).symEps, 0.005);
  EXPECT_EQ(Parse({"x", "/MULT-2"}).multiplicity, 1);
  EXPECT_EQ(Parse({"x", "/TT"}).temperature, 298.15);  // empty value: the default stays
  EXPECT_EQ(Parse({"x", "/IRMC-5"}).monteCarloSamples, 0);
  EXPECT_EQ(Parse({"x", "/IRMC10000"}).monteCarloSamples, 10000);
  EXPECT_EQ(Parse({"x", "/ORIENT"}).orientAtoms, (std::array<int, 3>{1, 2, 3}));
  EXPECT_EQ(Parse({"x", "/ORIENT4-7:9"}).orientAtoms, (std::array<int, 3>{4, 7, 9}));
  o = Parse({"x", "/PRECAU18-10"});
  EXPECT_EQ(o.outputPrecision, 2);
  EXPECT_EQ(o.outputWidth, 18);
  EXPECT_EQ(o.outputDecimals, 10);
  o = Parse({"x", "/PREC"});
  EXPECT_EQ(o.outputWidth, 20);
  EXPECT_EQ(o.outputDecimals, 12);
  EXPECT_EQ(Parse({"x", "/PREC15.8"}).outputDecimals, 8);
  EXPECT_EQ(Parse({"x", "/THERMO300:600,25"}).tempRange, (std::array<double, 3>{300.0, 600.0, 25.0}));
  // /V keeps "-" as a sign: only ":" and "," separate; a missing zoom stays 1.
  o = Parse({"x", "/v-30.5:45:0:0.1:-0.2:1.5"});
  EXPECT_EQ(o.viewValues, 6);
  EXPECT_DOUBLE_EQ(o.view[0], -30.5);
  EXPECT_DOUBLE_EQ(o.view[4], -0.2);
  o = Parse({"x", "/V10,20,30"});
  EXPECT_EQ(o.viewValues, 3);
  EXPECT_DOUBLE_EQ(o.view[5], 1.0);
  o = Parse({"x", "/V@View.mou"});
  EXPECT_EQ(o.viewFile, "View.mou");  // file names keep their case
  EXPECT_FALSE(o.viewGiven);
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
  EXPECT_EQ(ParseCommandLine(s, {"x.log", "/?"}), CommandLineAction::Help);
  EXPECT_EQ(ParseCommandLine(s, {"-h"}), CommandLineAction::Help);
  EXPECT_EQ(ParseCommandLine(s, {"--version"}), CommandLineAction::Version);
}

TEST(KeywordValues, SplitsListsAndWords) {
  EXPECT_EQ(KeywordValues("VIBR=7 ROT=3 GROUP=(1, 2 ,3) AXIS=(4,5)", "GROUP"), (std::vector<std::string>{"1", "2", "3"}));
  EXPECT_EQ(KeywordValues("SCALE= 0.96 TT=300", "SCALE"), std::vector<std::string>{"0.96"});
  EXPECT_EQ(KeywordValues("X=(A B)", "X"), std::vector<std::string>{"AB"});
  EXPECT_TRUE(KeywordValues("SCALE 0.96", "SCALE").empty());  // no "="
  EXPECT_TRUE(KeywordValues("T=()", "T=").empty());
  EXPECT_EQ(KeywordValues("T=(1,2", "T="), (std::vector<std::string>{"(1", "2"}));  // "(" without ")"
  std::string many = "G=(";
  for (int i = 1; i <= 101; ++i) many += std::to_string(i) + (i < 101 ? "," : ")");
  EXPECT_TRUE(KeywordValues(many, "G").empty());  // longer lists are not accepted
}

TEST(OutputNames, ExtensionsAndBaseNames) {
  EXPECT_EQ(ReplaceExtension(true, "a.output", ".mou"), "a.mouput");  // the quirk stays
  EXPECT_EQ(ReplaceExtension(true, "a.b.c", ".mou"), "a.b.mou");
  EXPECT_EQ(ReplaceExtension(false, "water", ".tdi"), "water");
  EXPECT_EQ(ReplaceExtension(true, "/home/u/run.d/water", ".mou"), "/home/u/run.d/water.mou");
  EXPECT_EQ(DerivedName("x.mou", ".mou"), "x.mou1");  // never the input itself
  EXPECT_EQ(DerivedName("x.mouse", ".mou"), "x.mou");  // the whole extension goes
  EXPECT_EQ(DerivedName("w.gamout", ".json"), "w.json");
  EXPECT_EQ(WithExtension("/home/u/run.d/water", ".tdi"), "/home/u/run.d/water.tdi");
  EXPECT_EQ(DerivedName("x.log", ".mou"), "x.mou");
  EXPECT_EQ(BaseName("a.b.c"), "a");
  EXPECT_EQ(BaseName(".hidden"), "");  // the dot must stand at position 2 or later
  EXPECT_EQ(BaseName("/data/run.1/water.log"), "/data/run.1/water");
  EXPECT_EQ(BaseName(std::string(140, 'x') + ".log"), "");
}

TEST(CommandLine, EngineOptions) {
  struct Case {
    std::vector<std::string> args;
    int method, charge;
    bool heat, geoOpt;
    int maxCycles;
  };
  const Case cases[] = {
      {{"x"}, 3, 0, false, false, 300},                         // PM3, neutral, nothing run
      {{"x", "/HOF"}, 3, 0, true, false, 300},
      {{"x", "/enginemndo", "/hof"}, 1, 0, true, false, 300},  // upper-cased like every option
      {{"x", "/ENGINEAM1", "/GEOOPT"}, 2, 0, false, true, 300},
      {{"x", "/ENGINEMNDOD"}, 4, 0, false, false, 300},         // not MNDO: whole-word match
      {{"x", "/ENGINEPM3D", "/ENGINEPM3"}, 3, 0, false, false, 300},  // the last one counts
      {{"x", "/ENGINE"}, 3, 0, false, false, 300},              // no name leaves the default
      {{"x", "/CHARGE-1", "/C50"}, 3, -1, false, false, 50},    // /CHARGE is not /C
      {{"x", "/CHARGE"}, 3, 0, false, false, 300},
  };
  for (const Case& c : cases) {
    const Options o = Parse(c.args);
    const std::string what = c.args.back();
    EXPECT_EQ(o.engineMethod, c.method) << what;
    EXPECT_EQ(o.charge, c.charge) << what;
    EXPECT_EQ(o.engineHeat, c.heat) << what;
    EXPECT_EQ(o.engineGeoOpt, c.geoOpt) << what;
    EXPECT_EQ(o.maxCycles, c.maxCycles) << what;
  }
  EXPECT_THROW(Parse({"x", "/ENGINEMNDO3"}), FatalReadError);
  EXPECT_THROW(Parse({"x", "/CHARGEX"}), FatalReadError);
  for (const char* flag : {"/engine<M>", "/hof", "/geoopt", "/charge<N>"})
    EXPECT_NE(UsageText().find(flag), std::string::npos) << flag;
}

TEST(CommandLine, NormalModeEntries) {
  struct Case {
    std::vector<std::string> args;
    int mode;
    std::string film;
    int distort;
    double amplitude;
    bool opensWindows;
  };
  const Case cases[] = {
      {{"x", "/0", "/mode7@Film.XYZ"}, 7, "Film.XYZ", 0, 0.1, false},  // the file keeps its case
      {{"x", "/SNAP@v.png", "/MODE3"}, 3, "", 0, 0.1, true},           // arrows on the picture only
      {{"x", "/0", "/DISTORT12"}, 0, "", 12, 0.1, false},
      {{"x", "/0", "/distort2=0.25"}, 0, "", 2, 0.25, false},
      {{"x", "/PLAY@s.jnl"}, 0, "", 0, 0.1, false},                    // a replay needs no windows
      {{"x", "/0", "/SPECTRUM@s.png"}, 0, "", 0, 0.1, true},           // a picture needs the painter
  };
  for (const Case& c : cases) {
    const Options o = Parse(c.args);
    const std::string what = c.args.back();
    EXPECT_EQ(o.showMode, c.mode) << what;
    EXPECT_EQ(o.filmFile, c.film) << what;
    EXPECT_EQ(o.distortMode, c.distort) << what;
    EXPECT_EQ(o.distortAmplitude, c.amplitude) << what;
    EXPECT_EQ(OpensWindows(c.args), c.opensWindows) << what;
  }
  EXPECT_EQ(Parse({"x", "/SPECTRUM@Spec.csv"}).spectrumFile, "Spec.csv");
  EXPECT_EQ(Parse({"x", "/PLAY@My.jnl"}).playFile, "My.jnl");
  EXPECT_THROW(Parse({"x", "/DISTORT2=abc"}), FatalReadError);
}

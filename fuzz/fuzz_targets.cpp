#include "fuzz_targets.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "app/run.h"
#include "engine/engine.h"
#include "engine/parameters.h"
#include "model/run_stop.h"
#include "model/session.h"
#include "viewer/fragment_db.h"

namespace quintor::fuzz {

const std::string& ScratchDir() {
  static const std::string dir = [] {
    auto d = std::filesystem::temp_directory_path() / ("quintor_fuzz_" + std::to_string(::getpid()));
    std::filesystem::create_directories(d);
    return d.string();
  }();
  return dir;
}

std::string WriteScratch(const std::string& name, const uint8_t* data, size_t size) {
  std::string path = ScratchDir() + "/" + name;
  std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  return path;
}

BatchResult RunBatch(const std::vector<std::string>& args, int formatCode) {
  Session s;
  std::ostringstream console;
  std::istringstream keys("n");
  s.console = &console;
  s.keyboard = &keys;
  s.opt.formatCode = static_cast<FormatCode>(formatCode);
  BatchResult r;
  r.status = RunQuintor(s, args);
  r.text = console.str();
  if (!s.files.logName.empty()) {
    std::ifstream log(s.files.logName, std::ios::binary);
    r.text += std::string(std::istreambuf_iterator<char>(log), {});
  }
  return r;
}

namespace {

struct Forced {
  int code;        // set on the Session before the command line
  const char* option;
};

constexpr uint8_t kWater[] = "O 0 0 0.12\nH 0 0.76 -0.47\nH 0 -0.76 -0.47\n";

constexpr std::array<Forced, 21> kFormats = {{
    {-1, ""},      {-1, "/GAM5"}, {-1, "/G94"},   {-1, "/GAM4"}, {-1, "/G98"},        {-1, "/A"},
    {-1, "/X"},    {-1, "/NDXYZ"}, {-1, "/DNXYZ"}, {-1, "/PAT"}, {9, ""},            {-1, "/G03"},
    {-1, "/NXYZ1@GEOM"}, {12, ""}, {-1, "/GZ"},   {-1, "/GAM7"}, {-1, "/G09"},       {-1, "/PRIR"},
    {-1, "/CFOUR"}, {-1, "/GAMUS"}, {-1, "/I"},
}};

}  // namespace

// The whole read pass, report and end of run on arbitrary bytes. The first
// byte chooses the format: detection by banner, or one of the forced codes,
// so that every reader is reached.
BatchResult FuzzReadPass(const uint8_t* data, size_t size) {
  if (size == 0) return {};
  const Forced& f = kFormats[data[0] % kFormats.size()];
  std::string path = WriteScratch("input.log", data + 1, size - 1);
  std::vector<std::string> args{path, "/0"};
  if (*f.option) args.push_back(f.option);
  return RunBatch(args, f.code);
}

// The specification file reader, through a whole run on a small molecule.
BatchResult FuzzSpecFile(const uint8_t* data, size_t size) {
  std::string input = WriteScratch("mol.xyz", kWater, sizeof kWater - 1);
  WriteScratch("mol.tdi", data, size);
  return RunBatch({input, "/X", "/0"});
}

// The configuration file reader: the fuzzed file is Quintor.cfg in the home
// directory, and the run reads a pattern input.
BatchResult FuzzConfigFile(const uint8_t* data, size_t size) {
  static const bool home = [] { return ::setenv("QUINTOR", ScratchDir().c_str(), 1) == 0; }();
  (void)home;
  static const uint8_t kLog[] = " NSERCH=   1\n\n\n C 6.0 0 0 0\n O 8.0 0 0 1.2\n\n";
  WriteScratch("Quintor.cfg", data, size);
  std::string input = WriteScratch("pat.log", kLog, sizeof kLog - 1);
  BatchResult first = RunBatch({input, "/PAT", "/0"});
  BatchResult second = RunBatch({input, "/PATMINE", "/0"});
  second.text = first.text + second.text;
  if (first.status == exit_status::Internal) second.status = first.status;
  return second;
}

// The Gaussian Z-matrix parser and its conversion to Cartesian coordinates.
BatchResult FuzzZMatrix(const uint8_t* data, size_t size) {
  std::string input = WriteScratch("z.gzmat", data, size);
  return RunBatch({input, "/GZ", "/0"});
}

// The command line: the bytes are split at newlines into arguments that
// follow a fixed small input.
BatchResult FuzzCommandLine(const uint8_t* data, size_t size) {
  static const std::string input = WriteScratch("cl.xyz", kWater, sizeof kWater - 1);
  std::vector<std::string> args{input, "/0"};
  std::string word;
  for (size_t i = 0; i < size && args.size() < 64; ++i) {
    if (data[i] == '\n') {
      args.push_back(word);
      word.clear();
    } else {
      word.push_back(static_cast<char>(data[i]));
    }
  }
  args.push_back(word);
  // The input stays argument 1 and /0 keeps the run unattended.
  return RunBatch(args);
}

// The parameter file read over each method's built-in tables, and the
// parameters so changed used for a heat of formation of water.
BatchResult FuzzParameterFile(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  BatchResult r;
  std::ostringstream report;
  engine::EngineOptions options;
  options.parameterFile = "";
  options.printLevel = 0;
  options.maxIterations = 50;
  for (int menu = 1; menu <= 5; ++menu) {
    const engine::EngineMethod method = engine::MethodOfMenu(menu);
    engine::ParameterSet set = engine::BuiltinParameters(method);
    std::istringstream in(text);
    const engine::ParameterFileResult read = engine::ReadParameterFile(in, set);
    if (!read.ok) {
      r.status = exit_status::ReadError;
      report << read.message << "\n";
    }
    const engine::EngineResult e = engine::EngineRunWith(set, {8, 1, 1}, {{0, 0, 0.1173}, {0, 0.7572, -0.4692},
                                                                          {0, -0.7572, -0.4692}},
                                                         0, 1, false, nullptr, options);
    if (e.status != engine::EngineStatus::NotRun) engine::PrintHeatOfFormation(report, method, e.heatKcal);
  }
  r.text = report.str();
  return r;
}

// The ORCA and Q-Chem readers alone: the format is forced, so that every
// input reaches the reader (with /RAMAN on odd first bytes, so that both
// spectrum paths are taken), and the whole run follows.
BatchResult FuzzOrca(const uint8_t* data, size_t size) {
  if (size == 0) return {};
  std::string input = WriteScratch("orca.out", data + 1, size - 1);
  std::vector<std::string> args{input, "/0"};
  if (data[0] & 1) args.push_back("/RAMAN");
  return RunBatch(args, static_cast<int>(FormatCode::Orca));
}

BatchResult FuzzQChem(const uint8_t* data, size_t size) {
  if (size == 0) return {};
  std::string input = WriteScratch("qchem.out", data + 1, size - 1);
  std::vector<std::string> args{input, "/0"};
  if (data[0] & 1) args.push_back("/RAMAN");
  return RunBatch(args, static_cast<int>(FormatCode::QChem));
}

// A journal of any lines, replayed by a batch run on water; the structure
// it leaves is saved, so that every edit reaches a writer.
// The home directory is the scratch directory with a small fragment
// database, so that key N and G work and nothing outside it is written.
BatchResult FuzzJournal(const uint8_t* data, size_t size) {
  static const uint8_t kDatabase[] =
      "! two records\n# Me methyl CH3\nC1 0 0 0 2 3 4\nH2 1.09 0 0 1\nH3 -0.36 1.03 0 1\nH4 -0.36 -0.51 0.89 1\n\n"
      "# OH hydroxy\nO1 0 0 0 2\nH2 0.96 0 0 1\n";
  static const bool home = [] {
    WriteScratch("Quintor.fdb", kDatabase, sizeof kDatabase - 1);
    return ::setenv("QUINTOR", ScratchDir().c_str(), 1) == 0;
  }();
  (void)home;
  static const std::string input = WriteScratch("j.xyz", kWater, sizeof kWater - 1);
  const std::string journal = WriteScratch("j.jnl", data, size);
  return RunBatch({input, "/X", "/0", "/PLAY@" + journal, "/SAVE@" + ScratchDir() + "/j_saved.xyz"});
}

// The fragment database: read, then each record (the first 16) added at a
// point of an empty structure and in place of a hydrogen of methane, and
// the last structure written as a record of its own. The text returned
// holds the problems and every coordinate, so that a NaN shows.
BatchResult FuzzFragmentDb(const uint8_t* data, size_t size) {
  const ElementTable& elements = ProgramElements();
  const FragmentDatabase db = ReadFragmentDatabase(WriteScratch("fuzzed.fdb", data, size), elements);
  std::ostringstream text;
  for (const std::string& p : db.problems) text << p << "\n";
  BuiltStructure methane;
  methane.z = {6, 1, 1, 1, 1};
  methane.xyz = {{0, 0, 0}, {1.19, 1.19, 1.19}, {-1.19, -1.19, 1.19}, {-1.19, 1.19, -1.19}, {1.19, -1.19, -1.19}};
  methane.bonds = {{2, 3, 4, 5}, {1}, {1}, {1}, {1}};
  BuiltStructure built;
  const size_t records = std::min<size_t>(db.records.size(), 16);
  for (size_t r = 0; r < records; ++r) {
    if (db.records[r].names.empty()) continue;
    const std::string& name = db.records[r].names.front();
    AddFragmentAt(built, db, name, {1.0 * static_cast<double>(r), 0, 0}, elements);
    BuiltStructure m = methane;
    ReplaceHydrogen(m, 2, db, name, elements);
    for (const Vec3& x : m.xyz) text << x[0] << ' ' << x[1] << ' ' << x[2] << "\n";
  }
  for (const Vec3& x : built.xyz) text << x[0] << ' ' << x[1] << ' ' << x[2] << "\n";
  if (built.Atoms() > 0) {
    std::vector<int> all(static_cast<size_t>(built.Atoms()));
    for (int i = 0; i < built.Atoms(); ++i) all[static_cast<size_t>(i)] = i + 1;
    text << FragmentBlock(built, all, {1}, "fuzzed", "comment", 0, elements);
  }
  return {0, text.str()};
}

}  // namespace quintor::fuzz

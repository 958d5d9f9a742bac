// Helpers shared by the tests: paths of test data, temporary directories,
// and running the program in-process or as a separate process.
#pragma once

#include <array>
#include <cmath>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "model/session.h"

namespace quintor::test {

// A file of ../shared/testdata (real program outputs, never copied here);
// $QUINTOR_TESTDATA, when set, names another folder.
std::string TestData(std::string_view relative);
// False, with the current test marked skipped and one message, when the
// folder of real logs is missing. Tests on real logs start with
// SKIP_WITHOUT_TESTDATA().
bool HaveTestData();
#define SKIP_WITHOUT_TESTDATA() \
  do {                                           \
    if (!::quintor::test::HaveTestData()) return; \
  } while (0)
// A hand-written input of tests/inputs.
std::string TestInput(std::string_view relative);

// A fresh directory, removed with everything in it at the end of the test.
struct TempDir {
  std::filesystem::path path;
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  // Writes `content` to `name` in the directory and returns its full path.
  std::string Write(const std::string& name, const std::string& content) const;
  std::string File(const std::string& name) const { return (path / name).string(); }
};

std::string ReadFile(const std::filesystem::path& path);

struct RunResult {
  int status = 0;
  std::string console;  // what the run wrote to the screen
  std::string log;      // the MainLog, when one was written
};

// Runs a session in this process. `keyboard` answers the one-key questions.
RunResult RunInProcess(Session& s, const std::vector<std::string>& args,
                       const std::string& keyboard = "");
RunResult RunInProcess(const std::vector<std::string>& args, const std::string& keyboard = "");

// Runs the quintor executable in `cwd` (the current directory when empty).
struct ExeResult {
  int status = -1;       // exit status; -1 when killed by a signal
  bool signaled = false;
  std::string output;    // stdout and stderr together
};
ExeResult RunExe(const std::vector<std::string>& args, const std::string& stdinText = "",
                 const std::string& cwd = "");

// One row "<name> <method> <kcal/mol or kJ/mol>" of a table of MOPAC's
// numbers under tests/inputs/engine/; lines beginning with '#' are comments.
struct MopacReference {
  std::string name, method;
  double heat = 0.0;
};
std::vector<MopacReference> MopacReferences(const std::string& file);

// A geometry of tests/inputs/engine/geometries/<name>.xyz: nuclear charges
// and coordinates in Angstrom.
struct EngineGeometry {
  std::vector<int> z;
  std::vector<std::array<double, 3>> x;
};
EngineGeometry EngineGeometryXyz(const std::string& name);

// How often `what` stands in `text`.
int CountText(const std::string& text, const std::string& what);

// `text` with the nth occurrence of `from` replaced by `to` (a failure when
// there is none): changed copies of real logs.
std::string Replace(std::string text, const std::string& from, const std::string& to, int nth = 1);

// Reading what a log prints, by words, for the tests' own parsers.
std::vector<std::string> Words(const std::string& s);
std::vector<std::string> FileLines(const std::string& path);  // without a trailing '\r'
double Num(std::string word);                                // a Fortran 'D' exponent too
// The first line of `log` that holds `key`, or "".
std::string LineWith(const std::string& log, const std::string& key);
// The number after `key` on that line; NaN when there is none.
double After(const std::string& log, const std::string& key);
// The numbers after the first `key` of `line`.
std::vector<double> NumbersAfter(const std::string& line, const std::string& key);

// The mode blocks of a GAMESS log, all 3N modes in log order; an "I" after a
// frequency makes it negative.
struct GamessModes {
  std::vector<double> freq, redMass, ir;
  std::vector<std::vector<std::array<double, 3>>> disp;  // [mode][atom]
};
GamessModes ReadGamessModes(const std::vector<std::string>& lines);

// A whole batch session (/0) on a copy of a log in a fresh directory (the
// program writes its .mou beside the input). `prepare` may set options on the
// Session before the run, `keys` answers the one-key questions.
struct LogRun {
  TempDir dir;
  Session s;
  RunResult r;
  std::string copy;
  LogRun(const std::string& log, std::vector<std::string> options = {}, const std::string& keys = "");
  LogRun(const std::string& log, std::vector<std::string> options, void (*prepare)(Session&));
};

// The same on a log given as text.
struct TextRun {
  TempDir dir;
  Session s;
  RunResult r;
  TextRun(const std::string& text, std::vector<std::string> options = {}, const std::string& keys = "");
  TextRun(const std::string& text, std::vector<std::string> options, void (*prepare)(Session&),
          const std::string& keys = "");
};

}  // namespace quintor::test

#include "test_support.h"

#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <sstream>

#include "app/run.h"
#include "model/elements.h"

namespace quintor::test {

namespace {
std::string TestDataDir() {
  const char* env = std::getenv("QUINTOR_TESTDATA");
  return env && *env ? env : QUINTOR_TESTDATA;
}
}  // namespace

bool HaveTestData() {
  if (std::filesystem::is_directory(TestDataDir())) return true;
  [] { GTEST_SKIP() << "real logs not found in " << TestDataDir() << " (../shared/testdata or $QUINTOR_TESTDATA)"; }();
  return false;
}

std::string TestData(std::string_view relative) {
  HaveTestData();
  return TestDataDir() + "/" + std::string(relative);
}

std::string TestInput(std::string_view relative) {
  return std::string(QUINTOR_TEST_INPUTS) + "/" + std::string(relative);
}

TempDir::TempDir() {
  static std::atomic<int> counter{0};
  std::random_device rd;
  path = std::filesystem::temp_directory_path() /
         ("quintor_test_" + std::to_string(::getpid()) + "_" + std::to_string(counter++) + "_" +
          std::to_string(rd() % 100000));
  std::filesystem::create_directories(path);
}

TempDir::~TempDir() {
  std::error_code ec;
  std::filesystem::remove_all(path, ec);
}

std::string TempDir::Write(const std::string& name, const std::string& content) const {
  auto full = path / name;
  std::ofstream(full, std::ios::binary) << content;
  return full.string();
}

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream f(path, std::ios::binary);
  std::ostringstream ss;
  ss << f.rdbuf();
  return ss.str();
}

RunResult RunInProcess(Session& s, const std::vector<std::string>& args, const std::string& keyboard) {
  std::ostringstream console;
  std::istringstream keys(keyboard);
  s.console = &console;
  s.keyboard = &keys;
  RunResult r;
  r.status = RunQuintor(s, args);
  r.console = console.str();
  if (!s.files.logName.empty() && !s.opt.noLog) r.log = ReadFile(s.files.logName);
  s.console = nullptr;
  s.keyboard = nullptr;
  return r;
}

RunResult RunInProcess(const std::vector<std::string>& args, const std::string& keyboard) {
  Session s;
  return RunInProcess(s, args, keyboard);
}

ExeResult RunExe(const std::vector<std::string>& args, const std::string& stdinText, const std::string& cwd) {
  TempDir io;
  std::string in = io.Write("stdin.txt", stdinText);
  std::string out = io.File("stdout.txt");
  pid_t pid = ::fork();
  if (pid == 0) {
    if (!cwd.empty() && ::chdir(cwd.c_str()) != 0) ::_exit(127);
    std::FILE* fin = std::freopen(in.c_str(), "r", stdin);
    std::FILE* fout = std::freopen(out.c_str(), "w", stdout);
    if (!fin || !fout) ::_exit(127);
    ::dup2(::fileno(stdout), ::fileno(stderr));
    std::vector<char*> argv;
    std::string exe = QUINTOR_EXE;
    argv.push_back(exe.data());
    std::vector<std::string> copy = args;
    for (auto& a : copy) argv.push_back(a.data());
    argv.push_back(nullptr);
    ::execv(exe.c_str(), argv.data());
    ::_exit(127);
  }
  int wstatus = 0;
  ::waitpid(pid, &wstatus, 0);
  ExeResult r;
  r.signaled = WIFSIGNALED(wstatus);
  r.status = WIFEXITED(wstatus) ? WEXITSTATUS(wstatus) : -1;
  r.output = ReadFile(out);
  return r;
}

EngineGeometry EngineGeometryXyz(const std::string& name) {
  std::ifstream in(TestInput("engine/geometries/" + name + ".xyz"));
  EngineGeometry g;
  int n = 0;
  std::string line;
  in >> n;
  std::getline(in, line);  // the rest of the count line, then the title
  std::getline(in, line);
  for (int i = 0; i < n; ++i) {
    std::string symbol;
    std::array<double, 3> x{};
    in >> symbol >> x[0] >> x[1] >> x[2];
    g.z.push_back(ElementNumber(symbol));
    g.x.push_back(x);
  }
  return g;
}

std::vector<MopacReference> MopacReferences(const std::string& file) {
  std::ifstream in(TestInput("engine/" + file));
  std::vector<MopacReference> refs;
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream ss(line);
    MopacReference r;
    if (ss >> r.name >> r.method >> r.heat) refs.push_back(r);
  }
  return refs;
}

int CountText(const std::string& text, const std::string& what) {
  int n = 0;
  for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
  return n;
}

std::string Replace(std::string text, const std::string& from, const std::string& to, int nth) {
  size_t at = std::string::npos;
  for (int k = 0; k < nth; ++k) at = text.find(from, at == std::string::npos ? 0 : at + 1);
  EXPECT_NE(at, std::string::npos) << from;
  if (at != std::string::npos) text.replace(at, from.size(), to);
  return text;
}

std::vector<std::string> Words(const std::string& s) {
  std::istringstream is(s);
  std::vector<std::string> w;
  for (std::string x; is >> x;) w.push_back(x);
  return w;
}

std::vector<std::string> FileLines(const std::string& path) {
  std::ifstream f(path);
  std::vector<std::string> lines;
  for (std::string l; std::getline(f, l);) {
    if (!l.empty() && l.back() == '\r') l.pop_back();
    lines.push_back(l);
  }
  return lines;
}

double Num(std::string word) {
  for (char& c : word)
    if (c == 'D' || c == 'd') c = 'E';
  return std::stod(word);
}

std::vector<double> NumbersAfter(const std::string& line, const std::string& key) {
  std::vector<double> v;
  const size_t at = line.find(key);
  if (at == std::string::npos) return v;
  for (const auto& w : Words(line.substr(at + key.size()))) v.push_back(Num(w));
  return v;
}

GamessModes ReadGamessModes(const std::vector<std::string>& lines) {
  GamessModes p;
  for (size_t i = 0; i < lines.size(); ++i) {
    if (lines[i].find("      FREQUENCY:") == std::string::npos) continue;
    size_t cols = 0;
    for (const auto& x : Words(lines[i].substr(lines[i].find(':') + 1))) {
      if (x == "I")
        p.freq.back() = -p.freq.back();
      else
        p.freq.push_back(std::stod(x)), ++cols;
    }
    size_t k = i + 1;
    for (; k < lines.size() && !Words(lines[k]).empty(); ++k)
      for (auto [key, to] : {std::pair{"REDUCED MASS:", &p.redMass}, std::pair{"IR INTENSITY:", &p.ir}}) {
        const auto v = NumbersAfter(lines[k], key);
        to->insert(to->end(), v.begin(), v.end());
      }
    p.redMass.resize(p.freq.size(), 0.0);
    // Three rows per atom; the values are the last `cols` words of a row.
    const size_t first = p.freq.size() - cols;
    p.disp.resize(p.freq.size());
    for (++k; k + 2 < lines.size() && !Words(lines[k]).empty(); k += 3)
      for (size_t c = 0; c < cols; ++c) {
        std::array<double, 3> d{};
        for (size_t j = 0; j < 3; ++j) {
          const auto w = Words(lines[k + j]);
          d[j] = std::stod(w.at(w.size() - cols + c));
        }
        p.disp[first + c].push_back(d);
      }
    i = k;
  }
  return p;
}

namespace {
RunResult RunOn(Session& s, const std::string& path, const std::vector<std::string>& options,
                void (*prepare)(Session&), const std::string& keys) {
  std::vector<std::string> args{path, "/0"};
  args.insert(args.end(), options.begin(), options.end());
  if (prepare) prepare(s);
  return RunInProcess(s, args, keys);
}

std::string CopyWritable(const TempDir& dir, const std::string& log) {
  std::string copy = dir.File(std::filesystem::path(log).filename().string());
  std::filesystem::copy_file(log, copy);
  std::filesystem::permissions(copy, std::filesystem::perms::owner_write, std::filesystem::perm_options::add);
  return copy;
}
}  // namespace

LogRun::LogRun(const std::string& log, std::vector<std::string> options, const std::string& keys)
    : copy(CopyWritable(dir, log)) {
  r = RunOn(s, copy, options, nullptr, keys);
}

LogRun::LogRun(const std::string& log, std::vector<std::string> options, void (*prepare)(Session&))
    : copy(CopyWritable(dir, log)) {
  r = RunOn(s, copy, options, prepare, "");
}

TextRun::TextRun(const std::string& text, std::vector<std::string> options, const std::string& keys) {
  r = RunOn(s, dir.Write("made.log", text), options, nullptr, keys);
}

TextRun::TextRun(const std::string& text, std::vector<std::string> options, void (*prepare)(Session&),
                 const std::string& keys) {
  r = RunOn(s, dir.Write("made.log", text), options, prepare, keys);
}

std::string LineWith(const std::string& log, const std::string& key) {
  const size_t at = log.find(key);
  if (at == std::string::npos) return "";
  const size_t start = log.rfind('\n', at) + 1;
  return log.substr(start, log.find('\n', at) - start);
}

double After(const std::string& log, const std::string& key) {
  const std::string line = LineWith(log, key);
  const std::vector<std::string> w = line.empty() ? std::vector<std::string>{} : Words(line.substr(line.find(key) + key.size()));
  return w.empty() ? std::nan("") : Num(w[0]);
}

}  // namespace quintor::test

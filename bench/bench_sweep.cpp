// Sweep benchmark: whole batch runs (quintor <log> /0) one after another over
// copies of every real log, as a chemist's loop over a directory would; and
// the start-up time of the program against /bin/true.
//
//   bench_sweep [testdata dir] [quintor executable] [rounds]
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

extern char** environ;

namespace {

// Runs argv in `dir` with its output thrown away; the exit status.
int Run(const std::vector<std::string>& argv, const fs::path& dir) {
  std::vector<char*> args;
  for (const auto& a : argv) args.push_back(const_cast<char*>(a.c_str()));
  args.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  const fs::path here = fs::current_path();
  fs::current_path(dir);
  pid_t pid = 0;
  const int rc = posix_spawn(&pid, args[0], &actions, nullptr, args.data(), environ);
  fs::current_path(here);
  posix_spawn_file_actions_destroy(&actions);
  if (rc != 0) return -1;
  int status = 0;
  waitpid(pid, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// Mean wall time of one run of argv over `count` runs, in milliseconds.
double PerRun(const std::vector<std::string>& argv, const fs::path& dir, int count) {
  const auto t0 = Clock::now();
  for (int k = 0; k < count; ++k) Run(argv, dir);
  return std::chrono::duration<double, std::milli>(Clock::now() - t0).count() / count;
}

}  // namespace

int main(int argc, char** argv) {
  const fs::path testdata = argc > 1 ? argv[1] : "../shared/testdata";
  const std::string exe = fs::absolute(argc > 2 ? argv[2] : "build/bin/quintor").string();
  const int rounds = argc > 3 ? std::atoi(argv[3]) : 10;
  if (!fs::exists(testdata) || !fs::exists(exe)) {
    std::fprintf(stderr, "bench_sweep: need %s and %s\n", testdata.c_str(), exe.c_str());
    return 1;
  }
  const fs::path dir = fs::temp_directory_path() / ("quintor_sweep_" + std::to_string(getpid()));
  fs::create_directories(dir);
  std::vector<std::string> logs;
  for (const auto& e : fs::recursive_directory_iterator(testdata)) {
    if (e.path().extension() != ".log") continue;
    const std::string name = e.path().parent_path().filename().string() + "_" + e.path().filename().string();
    fs::copy_file(e.path(), dir / name);
    logs.push_back(name);
  }

  const double tTrue = PerRun({"/bin/true"}, dir, 200);
  const double tStart = PerRun({exe, "--version"}, dir, 200);
  std::printf("Start-up: quintor --version %.2f ms per run, /bin/true %.2f ms; quintor's own start-up %.2f ms "
              "(target <= 2 ms)\n", tStart, tTrue, tStart - tTrue);

  int failed = 0;
  const auto t0 = Clock::now();
  for (int r = 0; r < rounds; ++r)
    for (const std::string& log : logs) failed += Run({exe, log, "/0"}, dir) != 0;
  const double seconds = std::chrono::duration<double>(Clock::now() - t0).count();
  const double runs = static_cast<double>(rounds) * static_cast<double>(logs.size());
  std::printf("Sweep: %zu real logs x %d rounds, one run at a time: %.1f logs/s (%.2f ms per log; "
              "target >= 500 logs/s), %d runs with a non-zero status\n",
              logs.size(), rounds, runs / seconds, 1000.0 * seconds / runs, failed);
  fs::remove_all(dir);
  return 0;
}

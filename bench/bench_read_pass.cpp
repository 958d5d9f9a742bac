// Read-pass benchmark: builds a Gaussian optimisation log of 800 MiB by
// repeating the geometry and energy blocks of a real log, reads it with the
// program's read pass in this process and prints the speed (MiB/s) and the
// peak memory, beside `cat` and `wc -l` on the same file. Then whole
// processes, paired: quintor /0 on the file against cclib (python3-cclib)
// and Open Babel (openbabel) when they are installed. Last, the peak
// resident memory of a whole batch run on a water frequency log.
//
//   bench_read_pass [testdata dir] [MiB] [quintor executable]
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "io/line_reader.h"
#include "model/session.h"
#include "readers/read_pass.h"

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

std::string Slurp(const fs::path& p) {
  std::ifstream f(p, std::ios::binary);
  std::ostringstream ss;
  ss << f.rdbuf();
  return ss.str();
}

long PeakRssKb() {
  rusage u{};
  getrusage(RUSAGE_SELF, &u);
  return u.ru_maxrss;
}

// Builds the big log: the head up to the first orientation block, then the
// optimisation cycles (one orientation block to the next) over and over.
long long BuildLog(const fs::path& source, const fs::path& target, long long minBytes, long& cycles) {
  std::string text = Slurp(source);
  const std::string anchor = "Standard orientation:";
  size_t first = text.rfind('\n', text.find(anchor)) + 1;
  size_t last = text.rfind('\n', text.rfind(anchor)) + 1;
  std::string head = text.substr(0, first);
  std::string body = text.substr(first, last - first);
  long perBody = 0;
  for (size_t at = body.find(anchor); at != std::string::npos; at = body.find(anchor, at + 1)) ++perBody;
  std::ofstream out(target, std::ios::binary);
  out << head;
  long long bytes = static_cast<long long>(head.size());
  cycles = 0;
  while (bytes < minBytes) {
    out << body;
    bytes += static_cast<long long>(body.size());
    cycles += perBody;
  }
  return bytes;
}

// Runs a command through the shell; returns the wall time in seconds, or a
// negative value when it failed.
double TimeCommand(const std::string& command) {
  auto t0 = Clock::now();
  int rc = std::system(command.c_str());
  double s = std::chrono::duration<double>(Clock::now() - t0).count();
  return rc == 0 ? s : -1.0;
}

bool Have(const std::string& probe) { return std::system((probe + " >/dev/null 2>&1").c_str()) == 0; }

}  // namespace

int main(int argc, char** argv) {
  fs::path testdata = argc > 1 ? argv[1] : "../shared/testdata";
  long long megabytes = argc > 2 ? std::atoll(argv[2]) : 800;
  std::string exe = argc > 3 ? argv[3] : "build/bin/quintor";
  fs::path source = testdata / "gaussian03/dvb_gopt.log";
  if (!fs::exists(source)) {
    std::cerr << "no test log at " << source << "\n";
    return 1;
  }
  fs::path dir = fs::temp_directory_path() / ("quintor_bench_" + std::to_string(getpid()));
  fs::create_directories(dir);
  fs::path big = dir / "big_opt.log";

  long cycles = 0;
  long long bytes = BuildLog(source, big, megabytes << 20, cycles);
  const double mib = bytes / 1048576.0;
  std::printf("Generated %s: %.1f MiB, %ld geometries (from %s)\n", big.c_str(), mib, cycles, source.c_str());
  // The file is in the page cache from here on; cat and wc -l read it as we do.
  const double tCat = TimeCommand("cat " + big.string() + " >/dev/null");
  const double tWc = TimeCommand("wc -l " + big.string() + " >/dev/null");
  std::printf("cat to /dev/null: %.3f s (%.0f MiB/s); wc -l: %.3f s (%.0f MiB/s)\n", tCat, mib / tCat, tWc,
              mib / tWc);

  long rssBefore = PeakRssKb();
  double ours = 0.0;
  int sets = 0, atoms = 0;
  {
    quintor::Session s;
    std::ostringstream console;
    s.console = &console;
    s.opt.maxCycles = static_cast<int>(cycles + 10);
    s.log.Open((dir / "big_opt.mou").string());
    quintor::LineReader in;
    in.Open(big.string());
    std::istringstream keys("n");  // go on should nothing be read
    s.keyboard = &keys;
    auto t0 = Clock::now();
    quintor::ReadPass(s, in);
    ours = std::chrono::duration<double>(Clock::now() - t0).count();
    sets = s.iCyc + 1;
    atoms = s.nAtoms;
  }
  const double rate = mib / ours;
  std::printf("Quintor read pass: %.3f s, %.0f MiB/s (target >= 1536 MiB/s: %s), %d coordinate sets of %d atoms; "
              "%.0f%% of cat, %.0f%% of wc -l\n",
              ours, rate, rate >= 1536 ? "met" : "NOT met", sets, atoms, 100.0 * tCat / ours, 100.0 * tWc / ours);
  std::printf("Peak resident memory: %.1f MiB (%.1f MiB before the pass)\n", PeakRssKb() / 1024.0,
              rssBefore / 1024.0);

  // Whole processes from here on, ours first.
  double whole = -1.0;
  if (fs::exists(exe)) {
    whole = TimeCommand("cd " + dir.string() + " && " + fs::absolute(exe).string() + " " + big.string() + " /0 /C" +
                        std::to_string(cycles + 10) + " </dev/null >/dev/null 2>&1");
    if (whole > 0) std::printf("quintor %s /0 (whole run): %.3f s, %.0f MiB/s\n", big.filename().c_str(), whole,
                               mib / whole);
  }

  const std::string python = fs::exists("/usr/bin/python3") ? "/usr/bin/python3" : "python3";
  if (Have(python + " -c 'import cclib'")) {
    double t = TimeCommand("timeout 1800 " + python + " -c 'import sys, cclib; cclib.io.ccread(sys.argv[1])' " +
                           big.string() + " >/dev/null 2>&1");
    if (t > 0 && whole > 0) std::printf("cclib ccread (whole process): %.2f s; quintor is %.1fx faster\n", t, t / whole);
    else std::printf("cclib ccread failed or timed out\n");
  } else {
    std::printf("cclib not installed (Debian package python3-cclib): no comparison\n");
  }
  if (Have("command -v obabel")) {
    double t = TimeCommand("timeout 1800 obabel -ig09 " + big.string() + " -oxyz -O " + (dir / "big.xyz").string() +
                           " >/dev/null 2>&1");
    if (t > 0 && whole > 0)
      std::printf("Open Babel -ig09 -oxyz (whole process): %.2f s; quintor is %.1fx faster\n", t, t / whole);
    else std::printf("Open Babel failed or timed out\n");
  } else {
    std::printf("Open Babel not installed (Debian package openbabel): no comparison\n");
  }

  // Peak memory of a whole batch run on a water frequency log.
  fs::path water = dir / "water_opt_freq.log";
  fs::copy_file(testdata / "gaussian16/water_opt_freq.log", water);
  if (fs::exists(exe)) {
    std::string cmd = fs::absolute(exe).string() + " " + water.string() + " /0 </dev/null >/dev/null 2>&1";
    if (Have("test -x /usr/bin/time")) {
      std::printf("/usr/bin/time -v of a batch run on water_opt_freq.log:\n");
      std::fflush(stdout);
      std::system(("/usr/bin/time -v sh -c '" + cmd + "' 2>&1 | grep -E 'Maximum resident|Elapsed'").c_str());
    }
    pid_t pid = fork();
    if (pid == 0) {
      execl("/bin/sh", "sh", "-c", cmd.c_str(), static_cast<char*>(nullptr));
      _exit(127);
    }
    int status = 0;
    rusage u{};
    wait4(pid, &status, 0, &u);
    std::printf("Batch run on water_opt_freq.log: peak resident memory %.1f MiB (target <= 30 MiB), exit status %d\n",
                u.ru_maxrss / 1024.0, WIFEXITED(status) ? WEXITSTATUS(status) : -1);
  } else {
    std::printf("no executable at %s: batch-run memory not measured\n", exe.c_str());
  }
  fs::remove_all(dir);
  return 0;
}

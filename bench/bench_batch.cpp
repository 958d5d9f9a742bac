// Whole batch runs in this process (read, report, full evaluation, the
// 50-row table) on a frequency log, with and without /ARIR, alternating: the
// time of a run and what the internal rotations add to it (recognition with
// its clash test and symmetry numbers, the mode expansion, the kinematic
// matrix and the rotor functions of every table row).
//
//   bench_batch [frequency log] [runs]
//
// The default log is examples/hexadecane_xtb.out (n-hexadecane, 15 rotors).
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "app/run.h"
#include "model/session.h"

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

struct Timed {
  double seconds = 0.0;
  int status = 0;
  int rotors = 0;
};

Timed Run(const fs::path& log, bool arir) {
  quintor::Session s;
  std::ostringstream console;
  std::istringstream keys;
  s.console = &console;
  s.keyboard = &keys;
  std::vector<std::string> args{log.string(), "/0"};
  if (arir) args.push_back("/ARIR");
  const auto t0 = Clock::now();
  Timed t;
  t.status = quintor::RunQuintor(s, args);
  t.seconds = std::chrono::duration<double>(Clock::now() - t0).count();
  t.rotors = static_cast<int>(s.rotors.size());
  return t;
}

double Median(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  return v[v.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
  const fs::path source = argc > 1 ? fs::path(argv[1])
                                   : fs::path(__FILE__).parent_path().parent_path() / "examples/hexadecane_xtb.out";
  const int runs = argc > 2 ? std::max(1, std::atoi(argv[2])) : 20;
  if (!fs::exists(source)) {
    std::fprintf(stderr, "no frequency log at %s\n", source.c_str());
    return 1;
  }
  const fs::path dir = fs::temp_directory_path() / ("quintor_bench_batch_" + std::to_string(getpid()));
  fs::create_directories(dir);
  const fs::path log = dir / source.filename();
  fs::copy_file(source, log, fs::copy_options::overwrite_existing);

  std::vector<double> plain, withRotors;
  int rotors = 0, status = 0;
  for (int k = 0; k <= runs; ++k) {  // the first pair warms the caches and is not counted
    const Timed a = Run(log, false);
    const Timed b = Run(log, true);
    status = std::max(a.status, b.status);
    rotors = b.rotors;
    if (k == 0) continue;
    plain.push_back(a.seconds);
    withRotors.push_back(b.seconds);
  }
  const double added = Median(withRotors) - Median(plain);
  std::printf("Batch run on %s, %d rotors found by /ARIR, exit status %d\n", source.filename().c_str(), rotors,
              status);
  std::printf("Median wall time per run: %.2f ms without /ARIR, %.2f ms with /ARIR over %d runs each\n",
              Median(plain) * 1e3, Median(withRotors) * 1e3, runs);
  std::printf("Batch run without /ARIR: target <= 50 ms per run: %s\n", Median(plain) <= 0.050 ? "met" : "NOT met");
  std::printf("Added by /ARIR: %.2f ms; target <= 20 ms: %s\n", added * 1e3, added <= 0.020 ? "met" : "NOT met");
  fs::remove_all(dir);
  return status;
}

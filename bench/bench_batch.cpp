// Whole batch runs (/0) on a 50-atom frequency log: read pass, post-read
// report, full thermochemical evaluation and the 50-row temperature table,
// in this process. Prints the wall time of one run, averaged over several.
//
//   bench_batch [frequency log] [runs]
//
// The default log is examples/hexadecane_xtb.out (n-hexadecane, 144 modes).
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

  std::vector<double> times;
  int atoms = 0, modes = 0, status = 0;
  for (int k = 0; k <= runs; ++k) {  // the first run warms the caches and is not counted
    quintor::Session s;
    std::ostringstream console;
    std::istringstream keys;
    s.console = &console;
    s.keyboard = &keys;
    const auto t0 = Clock::now();
    status = quintor::RunQuintor(s, {log.string(), "/0"});
    const double t = std::chrono::duration<double>(Clock::now() - t0).count();
    if (k > 0) times.push_back(t);
    atoms = s.nAtoms;
    modes = static_cast<int>(s.modes.size());
  }
  double sum = 0.0;
  for (double t : times) sum += t;
  const double mean = sum / static_cast<double>(times.size());
  std::sort(times.begin(), times.end());
  std::printf("Batch run on %s: %d atoms, %d modes, exit status %d\n", source.filename().c_str(), atoms, modes,
              status);
  std::printf("Wall time per run: %.2f ms mean, %.2f ms median, %.2f ms best over %d runs\n", mean * 1e3,
              times[times.size() / 2] * 1e3, times.front() * 1e3, runs);
  std::printf("Target: <= 50 ms per run: %s\n", mean <= 0.050 ? "met" : "NOT met");
  fs::remove_all(dir);
  return status;
}

// Speed and convergence of the Monte Carlo integration of rotations: trials
// per second on one core and on all cores for 1, 4, 10 and 15 rotors of
// n-hexadecane (the rotors that /ARIR finds, each given V0 = 12 kJ/mol), and
// for the first 1 to 15 the automatic count and sigma(S) at 298.15 and 500 K,
// for all 15 with the automatic trial count: S, sigma(S) and the wall time for
// eight seed pairs, and the wall and CPU time of the 51 temperatures of a
// whole /IRMC run (298.15 K and the fixed table 10 to 500 K).
//   bench_montecarlo [log] [trials per measurement]
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "app/run.h"
#include "model/session.h"
#include "rotations/monte_carlo.h"
#include "rotations/recognition.h"

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

double CpuSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

double Seconds(const std::vector<quintor::TorsionRotor>& rotors, const quintor::Session& s, long long trials,
               unsigned threads, quintor::MonteCarloSeeds seeds, quintor::MonteCarloResult& r, double T = 298.15) {
  const std::vector<double> masses(s.atomMass.begin(), s.atomMass.begin() + s.nAtoms);
  const std::vector<quintor::Vec3> xyz(s.xyz.begin(), s.xyz.begin() + s.nAtoms);
  const auto t0 = Clock::now();
  r = quintor::MonteCarloAtT(rotors, masses, xyz, T, trials, seeds, threads);
  return std::chrono::duration<double>(Clock::now() - t0).count();
}

}  // namespace

int main(int argc, char** argv) {
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  const fs::path source = argc > 1 ? fs::path(argv[1]) : fs::path(QUINTOR_SOURCE_DIR) / "examples/hexadecane_xtb.out";
  const long long trials = argc > 2 ? std::max(1000LL, std::atoll(argv[2])) : 100000;
  const fs::path dir = fs::temp_directory_path() / ("bench_montecarlo_" + std::to_string(::getpid()));
  fs::create_directories(dir);
  fs::copy_file(source, dir / source.filename(), fs::copy_options::overwrite_existing);

  quintor::Session s;
  std::ostringstream console;
  std::istringstream keys;
  s.console = &console;
  s.keyboard = &keys;
  const int status = quintor::RunQuintor(s, {(dir / source.filename()).string(), "/0", "/ARIR"});
  std::vector<quintor::TorsionRotor> all;
  const std::vector<double> masses(s.atomMass.begin(), s.atomMass.begin() + s.nAtoms);
  const std::vector<quintor::Vec3> xyz(s.xyz.begin(), s.xyz.begin() + s.nAtoms);
  for (const quintor::IntRot& r : s.rotors) {
    const quintor::AxisPoints a = quintor::RotationAxisPoints(masses, xyz, r.group, r.axis);
    quintor::TorsionRotor t;
    t.group = r.group;
    t.axisAtom1 = a.atom1;
    t.axisAtom2 = a.atom2;
    t.n = std::max(r.symmetryNumber, 1);
    t.potential = quintor::SingleBarrierSeries(12.0, t.n);
    all.push_back(t);
  }
  fs::remove_all(dir);
  const unsigned cores = std::max(1u, std::thread::hardware_concurrency());
  std::printf("Monte Carlo of rotations on %s: %d atoms, %zu rotors by /ARIR (exit status %d), %u cores\n",
              source.filename().c_str(), s.nAtoms, all.size(), status, cores);
  std::printf("%8s %12s %16s %16s %8s\n", "rotors", "trials", "trials/s 1 core", "trials/s all", "speed-up");
  for (size_t n : {size_t{1}, size_t{4}, size_t{10}, size_t{15}}) {
    if (n > all.size()) break;
    const std::vector<quintor::TorsionRotor> rotors(all.begin(), all.begin() + static_cast<long>(n));
    quintor::MonteCarloResult r1, rn;
    const double one = Seconds(rotors, s, trials, 1, {}, r1);
    const double many = Seconds(rotors, s, trials, cores, {}, rn);
    std::printf("%8zu %12lld %16.0f %16.0f %8.2f\n", n, trials, trials / one, trials / many, one / many);
  }
  std::printf("The first n rotors, automatic trial count:\n%8s %12s %10s %12s %10s\n", "rotors", "trials 298 K",
              "sigma(S)", "trials 500 K", "sigma(S)");
  for (size_t n = 1; n <= all.size(); ++n) {
    const std::vector<quintor::TorsionRotor> rotors(all.begin(), all.begin() + static_cast<long>(n));
    quintor::MonteCarloResult a, b;
    Seconds(rotors, s, 0, cores, {}, a, 298.15);
    Seconds(rotors, s, 0, cores, {}, b, 500.0);
    std::printf("%8zu %12lld %10.4f %12lld %10.4f\n", n, a.trials, a.sigmaS, b.trials, b.sigmaS);
  }
  std::printf("All %zu rotors, automatic trial count, T = 298.15 K:\n", all.size());
  std::printf("%12s %12s %12s %10s %8s %8s\n", "seeds", "trials", "S", "sigma(S)", "wall s", "CPU s");
  double lo = 1e300, hi = -1e300, mean = 0.0, worst = 0.0;
  std::vector<quintor::MonteCarloResult> pairs;
  for (std::uint32_t k = 0; k < 8; ++k) {
    quintor::MonteCarloResult r;
    const double c0 = CpuSeconds();
    const double t = Seconds(all, s, 0, cores, {1802 + 17 * k, 9373 + 31 * k}, r);
    std::printf("%6u,%5u %12lld %12.4f %10.4f %8.2f %8.2f\n", 1802 + 17 * k, 9373 + 31 * k, r.trials, r.S, r.sigmaS, t,
                CpuSeconds() - c0);
    lo = std::min(lo, r.S), hi = std::max(hi, r.S), mean += r.S / 8.0;
    pairs.push_back(r);
  }
  for (const quintor::MonteCarloResult& r : pairs) worst = std::max(worst, std::fabs(r.S - mean) / r.sigmaS);
  std::printf("S of the eight pairs %.4f to %.4f, the furthest %.2f sigma from their mean\n", lo, hi, worst);
  // A whole run: the run's temperature and the 50 rows of the fixed table.
  std::vector<double> temperatures{298.15};
  for (int k = 1; k <= 50; ++k) temperatures.push_back(10.0 * k);
  long long total = 0;
  double largestSigma = 0.0;
  const double c0 = CpuSeconds();
  const auto t0 = Clock::now();
  for (double T : temperatures) {
    quintor::MonteCarloResult r;
    Seconds(all, s, 0, cores, {}, r, T);
    total += r.trials;
    largestSigma = std::max(largestSigma, r.sigmaS);
  }
  std::printf("Whole run, %zu temperatures: %lld trials, largest sigma(S) %.4f, wall %.2f s, CPU %.2f s\n",
              temperatures.size(), total, largestSigma, std::chrono::duration<double>(Clock::now() - t0).count(),
              CpuSeconds() - c0);
  return 0;
}

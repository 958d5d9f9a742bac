// Engine benchmark against MOPAC 22, process against process as a user sees
// them: the PM3 heat of formation of water, C30H62 (92 atoms) and C166H334
// (500 atoms) by `quintor <xyz> /0 /X /HOF` and by `mopac` (PM3 1SCF), then
// the PM3 optimisation of n-hexadecane by GeoOpt against `mopac` (PM3, and
// PM3 PRECISE for the optimum). Wall time and the process's CPU time are
// printed: on a shared machine the CPU time is the fairer figure. Each
// figure is the median of `repetitions` runs (3 by default), the two
// programs taking turns.
//
//   bench_engine [hexadecane xyz [repetitions]]
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "engine/engine.h"
#include "engine/geoopt.h"
#include "engine/parameters.h"
#include "io/fortran_io.h"
#include "model/elements.h"

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using namespace quintor::engine;

namespace {

struct Geometry {
  std::vector<int> z;
  std::vector<std::array<double, 3>> x;
};

bool ReadXyz(const std::string& path, Geometry& g) {
  std::ifstream in(path);
  int n = 0;
  std::string line;
  if (!(in >> n)) return false;
  std::getline(in, line);
  std::getline(in, line);
  for (int i = 0; i < n; ++i) {
    std::string sym;
    std::array<double, 3> x{};
    if (!(in >> sym >> x[0] >> x[1] >> x[2])) return false;
    for (int z = 1; z <= kMaxElement; ++z)
      if (sym == quintor::Trim(quintor::ElementSymbol(z))) g.z.push_back(z);
    g.x.push_back(x);
  }
  return static_cast<int>(g.z.size()) == n;
}

// All-trans n-alkane CnH2n+2 in the xy plane (C-C 1.54, C-H 1.09 A).
Geometry Alkane(int n) {
  Geometry g;
  for (int i = 0; i < n; ++i) {
    const double x = 1.258 * i, s = i % 2 == 0 ? -1 : 1, y = 0.4445 * s;
    g.z.push_back(6);
    g.x.push_back({x, y, 0});
    g.z.push_back(1);
    g.x.push_back({x, y + 0.629 * s, 0.890});
    g.z.push_back(1);
    g.x.push_back({x, y + 0.629 * s, -0.890});
  }
  const double s0 = -1, sl = (n - 1) % 2 == 0 ? -1 : 1;
  g.z.push_back(1);
  g.x.push_back({-1.027, 0.4445 * s0 + 0.363 * s0, 0});
  g.z.push_back(1);
  g.x.push_back({1.258 * (n - 1) + 1.027, 0.4445 * sl + 0.363 * sl, 0});
  return g;
}

// An XYZ file: the count, a title, then the coordinates (/X skips two lines).
void WriteXyz(const fs::path& path, const Geometry& g) {
  std::ofstream out(path);
  out << g.z.size() << "\nbench\n";
  for (size_t i = 0; i < g.z.size(); ++i)
    out << quintor::Trim(quintor::ElementSymbol(g.z[i])) << ' ' << g.x[i][0] << ' ' << g.x[i][1] << ' ' << g.x[i][2] << '\n';
}

void WriteMop(const fs::path& path, const std::string& keywords, const Geometry& g) {
  std::ofstream out(path);
  out << keywords << "\nbench\n\n";
  for (size_t i = 0; i < g.z.size(); ++i)
    out << quintor::Trim(quintor::ElementSymbol(g.z[i])) << ' ' << g.x[i][0] << ' ' << g.x[i][1] << ' ' << g.x[i][2] << '\n';
}

double ChildCpu() {
  rusage u{};
  getrusage(RUSAGE_CHILDREN, &u);
  return u.ru_utime.tv_sec + u.ru_stime.tv_sec + 1e-6 * (u.ru_utime.tv_usec + u.ru_stime.tv_usec);
}

struct Timed {
  bool ok = false;
  double wall = 0, cpu = 0;
};

Timed RunProcess(const std::string& command) {
  const double c0 = ChildCpu();
  const auto t0 = Clock::now();
  const int rc = std::system(command.c_str());
  Timed t;
  t.wall = std::chrono::duration<double>(Clock::now() - t0).count();
  t.cpu = ChildCpu() - c0;
  t.ok = rc == 0;
  return t;
}

// The last number after `key` in a text file, NaN when none.
double LastNumberAfter(const fs::path& path, const std::string& key, size_t skip = 0) {
  std::ifstream in(path);
  double v = std::nan("");
  for (std::string line; std::getline(in, line);) {
    const size_t at = line.find(key);
    if (at == std::string::npos) continue;
    std::istringstream ss(line.substr(at + key.size() + skip));
    ss >> v;
  }
  return v;
}

// The run of median CPU time (its wall time with it).
Timed Median(std::vector<Timed> runs) {
  std::sort(runs.begin(), runs.end(), [](const Timed& a, const Timed& b) { return a.cpu < b.cpu; });
  return runs[runs.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
  const fs::path self = fs::absolute(argv[0]).parent_path();
  const fs::path quintor = self / "quintor";
  const bool haveMopac = fs::exists("/usr/bin/mopac");
  const fs::path dir = fs::temp_directory_path() / ("bench_engine." + std::to_string(::getpid()));
  fs::create_directories(dir);
  const int repetitions = argc > 2 ? std::max(1, std::atoi(argv[2])) : 3;

  std::printf("Engine benchmark: PM3 heat of formation, one process each (%s)\n\n",
              haveMopac ? "against /usr/bin/mopac" : "no mopac installed");
  std::printf("%-10s %5s %12s %8s %8s %12s %8s %8s %7s\n", "molecule", "atoms", "heat", "wall(s)", "cpu(s)",
              "heat(MOPAC)", "wall(s)", "cpu(s)", "cpu x");
  const struct {
    const char* name;
    Geometry g;
  } molecules[] = {{"water", {{8, 1, 1}, {{0, 0, 0.1173}, {0, 0.7572, -0.4692}, {0, -0.7572, -0.4692}}}},
                   {"C30H62", Alkane(30)},
                   {"C166H334", Alkane(166)}};
  for (const auto& m : molecules) {
    const fs::path xyz = dir / (std::string(m.name) + ".xyz");
    WriteXyz(xyz, m.g);
    if (haveMopac) WriteMop(dir / "job.mop", "PM3 1SCF", m.g);
    std::vector<Timed> qs, mos;
    for (int k = 0; k < repetitions; ++k) {
      qs.push_back(RunProcess("cd " + dir.string() + " && " + quintor.string() + " " + xyz.filename().string() +
                              " /0 /X /HOF > /dev/null 2>&1"));
      if (haveMopac) mos.push_back(RunProcess("cd " + dir.string() + " && /usr/bin/mopac job.mop > /dev/null 2>&1"));
    }
    const Timed q = Median(qs);
    const double heat = LastNumberAfter(dir / (std::string(m.name) + ".mou"), " kJ/mol  =");
    Timed mo;
    double mheat = std::nan("");
    if (haveMopac) {
      mo = Median(mos);
      mheat = LastNumberAfter(dir / "job.out", "FINAL HEAT OF FORMATION =");
    }
    std::printf("%-10s %5zu %12.4f %8.3f %8.3f %12.4f %8.3f %8.3f %7.2f%s\n", m.name, m.g.z.size(), heat, q.wall, q.cpu,
                mheat, mo.wall, mo.cpu, mo.cpu > 0 ? q.cpu / mo.cpu : 0.0, q.ok ? "" : "  (quintor failed)");
  }

  // The optimisation: GeoOpt in this process, MOPAC as a process.
  Geometry g;
  std::string path = argc > 1 ? argv[1] : std::string(QUINTOR_SOURCE_DIR) + "/examples/hexadecane.xyz";
  if (!ReadXyz(path, g)) {
    std::cerr << "bench_engine: cannot read " << path << "\n";
    fs::remove_all(dir);
    return 1;
  }
  GeoOptSettings s;
  s.engine.parameterFile = "";
  s.engine.printLevel = 0;
  s.engine.workDir = dir.string();
  GeoOptResult r;
  std::vector<Timed> opts, mopts;
  if (haveMopac) WriteMop(dir / "opt.mop", "PM3", g);
  for (int k = 0; k < repetitions; ++k) {
    rusage u0{}, u1{};
    getrusage(RUSAGE_SELF, &u0);
    const auto t0 = Clock::now();
    r = GeoOpt(EngineMethod::PM3, g.z, g.x, 0, 1, s, nullptr, nullptr);
    Timed t;
    t.wall = std::chrono::duration<double>(Clock::now() - t0).count();
    getrusage(RUSAGE_SELF, &u1);
    t.cpu = (u1.ru_utime.tv_sec - u0.ru_utime.tv_sec) + 1e-6 * (u1.ru_utime.tv_usec - u0.ru_utime.tv_usec);
    opts.push_back(t);
    if (haveMopac) mopts.push_back(RunProcess("cd " + dir.string() + " && /usr/bin/mopac opt.mop > /dev/null 2>&1"));
  }
  const double wall = Median(opts).wall, cpu = Median(opts).cpu;
  std::printf("\nGeoOpt PM3, %s (%zu atoms): heat %.5f kcal/mol, %.3f s wall, %.3f s cpu, %d energy calls "
              "(%d function, %d gradient evaluations)\n",
              fs::path(path).filename().c_str(), g.z.size(), r.heatKcal, wall, cpu, r.energyCalls, r.functionCalls,
              r.gradientCalls);
  if (haveMopac) {
    const Timed mo = Median(mopts);
    const double mheat = LastNumberAfter(dir / "opt.out", "FINAL HEAT OF FORMATION =");
    WriteMop(dir / "precise.mop", "PM3 PRECISE", g);
    RunProcess("cd " + dir.string() + " && /usr/bin/mopac precise.mop > /dev/null 2>&1");
    const double pheat = LastNumberAfter(dir / "precise.out", "FINAL HEAT OF FORMATION =");
    std::printf("MOPAC PM3:  heat %.5f kcal/mol, %.3f s wall, %.3f s cpu (PM3 PRECISE optimum %.5f)\n", mheat, mo.wall,
                mo.cpu, pheat);
    std::printf("GeoOpt / MOPAC time: %.2f (wall), %.2f (cpu); heat - PRECISE optimum: %+.4f kcal/mol\n",
                wall / mo.wall, cpu / mo.cpu, r.heatKcal - pheat);
  }
  fs::remove_all(dir);
  return 0;
}

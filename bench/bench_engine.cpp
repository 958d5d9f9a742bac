// Engine benchmark: heat of formation of n-hexadecane (50 atoms) by MNDO,
// AM1 and PM3, timed beside `mopac <METHOD> 1SCF` on the same geometry when
// MOPAC is installed (the MOPAC time is that of the whole process, as a user
// sees it), then a geometry optimisation with its time and energy calls.
//
//   bench_engine [xyz file] [method for the optimisation: MNDO, AM1, PM3]
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

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using namespace quintor::engine;

namespace {

struct Geometry {
  std::vector<int> z;
  std::vector<std::string> symbols;
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
    g.symbols.push_back(sym);
    g.x.push_back(x);
  }
  return static_cast<int>(g.z.size()) == n;
}

double Seconds(Clock::time_point a, Clock::time_point b) { return std::chrono::duration<double>(b - a).count(); }

// Runs MOPAC on the geometry; returns its wall time and its heat (NaN when not run).
std::pair<double, double> RunMopac(const Geometry& g, const std::string& method) {
  if (!fs::exists("/usr/bin/mopac")) return {-1, std::nan("")};
  char pattern[] = "/tmp/bench_engine_mopac.XXXXXX";
  if (!mkdtemp(pattern)) return {-1, std::nan("")};
  const fs::path dir = pattern;
  {
    std::ofstream inp(dir / "job.mop");
    inp << method << " 1SCF\nhexadecane\n\n";
    for (size_t i = 0; i < g.z.size(); ++i)
      inp << g.symbols[i] << ' ' << g.x[i][0] << ' ' << g.x[i][1] << ' ' << g.x[i][2] << '\n';
  }
  const std::string cmd = "cd " + dir.string() + " && /usr/bin/mopac job.mop > /dev/null 2>&1";
  const auto t0 = Clock::now();
  const int rc = std::system(cmd.c_str());
  const double t = Seconds(t0, Clock::now());
  double heat = std::nan("");
  std::ifstream out(dir / "job.out");
  std::string line;
  while (std::getline(out, line))
    if (line.find("FINAL HEAT OF FORMATION") != std::string::npos) {
      std::istringstream ss(line.substr(line.find('=') + 1));
      ss >> heat;
    }
  fs::remove_all(dir);
  return {rc == 0 ? t : -1, heat};
}

}  // namespace

int main(int argc, char** argv) {
  const std::string path = argc > 1 ? argv[1] : std::string(QUINTOR_SOURCE_DIR) + "/examples/hexadecane.xyz";
  std::string xyz = path;
  if (!fs::exists(xyz)) xyz = "examples/hexadecane.xyz";
  Geometry g;
  if (!ReadXyz(xyz, g)) {
    std::cerr << "bench_engine: cannot read " << xyz << " (give an xyz file as the first argument)\n";
    return 1;
  }
  std::printf("Engine benchmark: %s, %zu atoms\n\n", xyz.c_str(), g.z.size());
  std::printf("%-6s %14s %10s %6s %14s %10s\n", "method", "heat(engine)", "time(s)", "iter", "heat(MOPAC)", "time(s)");
  EngineOptions opt;
  opt.parameterFile = "";
  opt.printLevel = 0;
  const struct {
    EngineMethod m;
    const char* key;
  } methods[] = {{EngineMethod::MNDO, "MNDO"}, {EngineMethod::AM1, "AM1"}, {EngineMethod::PM3, "PM3"}};
  for (const auto& m : methods) {
    const int reps = 5;
    EngineResult r;
    const auto t0 = Clock::now();
    for (int i = 0; i < reps; ++i) r = EngineRun(m.m, g.z, g.x, 0, 1, false, nullptr, opt);
    const double t = Seconds(t0, Clock::now()) / reps;
    const auto [tm, hm] = RunMopac(g, m.key);
    if (tm >= 0)
      std::printf("%-6s %14.5f %10.4f %6d %14.5f %10.4f\n", m.key, r.heatKcal, t, r.iterations, hm, tm);
    else
      std::printf("%-6s %14.5f %10.4f %6d %14s %10s\n", m.key, r.heatKcal, t, r.iterations, "(no mopac)", "-");
  }

  const std::string optMethod = argc > 2 ? argv[2] : "PM3";
  EngineMethod om = EngineMethod::PM3;
  for (const auto& m : methods)
    if (optMethod == m.key) om = m.m;
  GeoOptSettings s;
  s.engine = opt;
  const auto t0 = Clock::now();
  const GeoOptResult r = GeoOpt(om, g.z, g.x, 0, 1, s, nullptr, nullptr);
  const double t = Seconds(t0, Clock::now());
  std::printf("\nGeoOpt %s: heat %.5f kcal/mol, gradient norm %.4f, %.2f s, %d energy calls "
              "(%d function, %d gradient evaluations), %.2f ms per energy call\n",
              optMethod.c_str(), r.heatKcal, r.gradientNorm, t, r.energyCalls, r.functionCalls, r.gradientCalls,
              1000 * t / std::max(1, r.energyCalls));
  return 0;
}

#include "thermo/force_constants.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <numeric>

#include "io/fields.h"
#include "io/file_names.h"
#include "io/fortran_io.h"
#include "io/line_reader.h"
#include "numeric/lapack.h"


namespace quintor {

namespace {

// cm-1 per square root of hartree / (bohr^2 amu), times 2 pi.
constexpr double kFrequencyFactor = 32298.5;
constexpr double kForceConstantFactor = 5.96804e-08;
// The $HESS block of GAMESS(US) opens with one heading line, the energy line
// ("ENERGY IS ... E(NUC) IS ..."), before the rows.
constexpr int kHessHeadingLines = 1;
// Both companion files are read in lines of 80 columns.
constexpr size_t kCompanionColumns = 80;

std::string_view Cut80(std::string_view line) { return line.substr(0, std::min(line.size(), kCompanionColumns)); }

bool FindLine(LineReader& in, std::string_view what) {
  std::string_view line;
  while (in.Next(line))
    if (Contains(Cut80(line), what)) return true;
  return false;
}

std::string_view NextRequired(LineReader& in, const char* what) {
  std::string_view line;
  if (!in.Next(line)) throw FatalReadError(PlaceIn(in, what), "end of file");
  return Cut80(line);
}

}  // namespace

double ForceConstantOf(double freq, double redMass) { return kForceConstantFactor * freq * freq * redMass; }

double ReducedMassOf(const std::vector<Vec3>& disp) {
  double sum = 0.0;
  for (const Vec3& d : disp) sum += d[0] * d[0] + d[1] * d[1] + d[2] * d[2];
  return sum > 0.0 ? 1.0 / sum : 0.0;
}

// ---- Reading the companion files ------------------------------------------------

bool ReadPunchHessian(const std::string& path, int dim, Hessian& out) {
  LineReader in;
  if (!in.Open(path) || !FindLine(in, "$HESS")) return false;
  for (int i = 0; i < kHessHeadingLines; ++i) NextRequired(in, "$HESS heading");
  out.dim = dim;
  out.h.assign(static_cast<size_t>(dim) * static_cast<size_t>(dim), 0.0);
  for (int i = 0; i < dim; ++i) {
    // A row runs over as many lines as its values need, five to a line
    // behind the row and line numbers.
    for (int j = 0; j < dim; j += 5) {
      std::string_view line = NextRequired(in, "Hessian element");
      for (int k = 0; k < 5 && j + k < dim; ++k)
        out.At(i, j + k) = FieldReal(in, line, 6 + 15 * k, 15, 8, "Hessian element");
    }
  }
  return true;
}

bool ReadFchHessian(const std::string& path, int dim, Hessian& out) {
  LineReader in;
  if (!in.Open(path) || !FindLine(in, "Cartesian Force C")) return false;
  out.dim = dim;
  out.h.assign(static_cast<size_t>(dim) * static_cast<size_t>(dim), 0.0);
  std::string_view line;
  int onLine = 5;  // values taken from the current line
  for (int i = 0; i < dim; ++i) {
    for (int j = 0; j <= i; ++j) {
      if (onLine == 5) {
        line = NextRequired(in, "Cartesian force constant");
        onLine = 0;
      }
      double v = FieldReal(in, line, 1 + 16 * onLine, 16, 8, "Cartesian force constant");
      ++onLine;
      out.At(i, j) = v;
      out.At(j, i) = v;
    }
  }
  return true;
}

// ---- The mass-weighted problem --------------------------------------------------

std::vector<int> HeapSortAscending(std::vector<double>& values) {
  const int n = static_cast<int>(values.size());
  std::vector<int> index(static_cast<size_t>(n));
  std::iota(index.begin(), index.end(), 0);
  auto key = [&](int k) { return values[static_cast<size_t>(k)]; };
  auto swap = [&](int a, int b) {
    std::swap(values[static_cast<size_t>(a)], values[static_cast<size_t>(b)]);
    std::swap(index[static_cast<size_t>(a)], index[static_cast<size_t>(b)]);
  };
  // Sift element `root` down a max-heap of `size` elements.
  auto siftDown = [&](int root, int size) {
    for (;;) {
      int child = 2 * root + 1;
      if (child >= size) return;
      if (child + 1 < size && key(child + 1) > key(child)) ++child;
      if (!(key(child) > key(root))) return;
      swap(root, child);
      root = child;
    }
  };
  for (int k = n / 2 - 1; k >= 0; --k) siftDown(k, n);
  for (int end = n - 1; end > 0; --end) {
    swap(0, end);
    siftDown(0, end);
  }
  return index;
}

bool SolveMassWeighted(const Hessian& hessian, const std::vector<double>& mass, ModeSolution& out) {
  const int n = hessian.dim;
  out = ModeSolution{};
  if (n <= 0) return true;
  const size_t un = static_cast<size_t>(n);
  // Column-major copies; the matrix is symmetric, the solver reads its lower triangle.
  std::vector<double> a(un * un), b(un * un, 0.0), w(un);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) a[static_cast<size_t>(j) * un + static_cast<size_t>(i)] = hessian.At(i, j);
  for (int i = 0; i < n; ++i) {
    size_t atom = static_cast<size_t>(i / 3);
    b[static_cast<size_t>(i) * un + static_cast<size_t>(i)] = atom < mass.size() ? mass[atom] : 0.0;
  }
  // The generalised symmetric-definite problem A x = lambda B x, lower triangles.
  double query = 0.0;
  if (lapack::dsygv(1, 'V', 'L', n, a.data(), n, b.data(), n, w.data(), &query, -1) != 0) return false;
  const int lwork = std::max(1, static_cast<int>(query));
  std::vector<double> work(static_cast<size_t>(lwork));
  if (lapack::dsygv(1, 'V', 'L', n, a.data(), n, b.data(), n, w.data(), work.data(), lwork) != 0) return false;

  std::vector<int> order = HeapSortAscending(w);
  out.lambda = w;
  for (int k = 0; k < n; ++k) {
    const double lambda = w[static_cast<size_t>(k)];
    const size_t col = static_cast<size_t>(order[static_cast<size_t>(k)]);
    std::vector<double> x(a.begin() + static_cast<std::ptrdiff_t>(col * un),
                          a.begin() + static_cast<std::ptrdiff_t>((col + 1) * un));
    const double sign = lambda < 0.0 ? -1.0 : 1.0;
    const double freq = sign * kFrequencyFactor * std::sqrt(std::fabs(lambda)) / (2.0 * constants::Pi);
    double sum = 0.0;
    for (double v : x) sum += v * v;
    const double mu = sum > 0.0 ? 1.0 / sum : 0.0;
    out.freq.push_back(freq);
    out.redMass.push_back(mu);
    out.forceConst.push_back(ForceConstantOf(freq, mu));
    out.vector.push_back(std::move(x));
  }
  return true;
}

// ---- The report and the modes -----------------------------------------------------

namespace {

enum class Companion { None, Punch, Fch, LogModes };

Companion CompanionOf(FormatCode formatCode) {
  switch (formatCode) {
    case FormatCode::Gamess: case FormatCode::PcGamess4: case FormatCode::GamessUS: return Companion::Punch;  // GAMESS(US) and PC GAMESS up to v.6
    case FormatCode::Gaussian98: return Companion::Fch;                       // Gaussian 98
    case FormatCode::Gaussian94: return Companion::LogModes;                  // Gaussian 94
    default: return Companion::None;
  }
}

bool IsPlaceholder(const VibMode& m) {
  if (m.freq != 0.0) return false;
  for (const Vec3& d : m.disp)
    if (d[0] != 0.0 || d[1] != 0.0 || d[2] != 0.0) return false;
  return true;
}

struct Row {
  double original = 0.0, recalculated = 0.0, redMass = 0.0, forceConst = 0.0;
};

void PrintMasses(const Session& s, MainLog& out) {
  out.Line(" Atomic masses used in TD calculations:");
  for (int i = 0; i < s.nAtoms; ++i)
    out.Line(FmtI(i + 1, 6) + FmtF(i < static_cast<int>(s.atomMass.size()) ? s.atomMass[i] : 0.0, 15, 5));
}

void PrintTable(const Session& s, const std::vector<Row>& rows, MainLog& out) {
  const double scale = s.opt.freqScale > 0.0 ? s.opt.freqScale : 1.0;
  PrintMasses(s, out);
  out.Line();
  out.Line(" Frequencies (cm-1), reduced masses (amu) and force constants (mdyn/A):");
  out.Line("   No   Original frequency      Recalculated    Reduced     Force");
  out.Line("          Freq     Scaled      Freq    Scaled     Mass     Constant");
  const std::string rule(66, '-');
  out.Line(rule);
  for (size_t k = 0; k < rows.size(); ++k) {
    const Row& r = rows[k];
    out.Line(FmtI(static_cast<long long>(k + 1), 5) + FmtF(r.original, 10, 2) + FmtF(r.original * scale, 10, 2) +
             FmtF(r.recalculated, 10, 2) + FmtF(r.recalculated * scale, 10, 2) + FmtF(r.redMass, 10, 2) +
             FmtF(r.forceConst, 12, 6));
  }
  out.Line(rule);
}

// A missing companion file: reduced masses from the stored displacements.
void ReducedMassesFromVectors(Session& s, MainLog& out) {
  out.Line(" Can not calculate the reduced masses.");
  out.Line("  Reduced masses calculated on the basis of current normal vectors:");
  // The list is printed for every mode; a reduced mass that the log gave
  // stands, the others (older GAMESS logs print none) are taken from it.
  for (VibMode& m : s.modes) {
    const double fromVector = ReducedMassOf(m.disp);
    out.Line(FmtF(fromVector, 25, 5));
    if (m.redMass == 0.0) {
      m.redMass = fromVector;
      m.forceConst = ForceConstantOf(m.freq, m.redMass);
    }
  }
}

// Which solution goes to which stored mode. Translations and rotations that a
// log leaves out (empty modes at the head of the list) keep their place and
// are not given a solution; the remaining modes take the solutions of largest
// size in ascending order. Without stored modes every solution gets a row.
std::vector<int> AssignSolutions(const Session& s, const ModeSolution& sol, int& placeholders) {
  const int nSol = static_cast<int>(sol.freq.size());
  const int nModes = static_cast<int>(s.modes.size());
  placeholders = 0;
  if (nModes == 0) {
    std::vector<int> all(static_cast<size_t>(nSol));
    std::iota(all.begin(), all.end(), 0);
    return all;
  }
  while (placeholders < nModes && IsPlaceholder(s.modes[static_cast<size_t>(placeholders)])) ++placeholders;
  const int wanted = std::min(nModes - placeholders, nSol);
  // Drop the solutions nearest to zero that have no mode to go to.
  std::vector<int> bySize(static_cast<size_t>(nSol));
  std::iota(bySize.begin(), bySize.end(), 0);
  std::stable_sort(bySize.begin(), bySize.end(), [&](int a, int b) {
    return std::fabs(sol.lambda[static_cast<size_t>(a)]) < std::fabs(sol.lambda[static_cast<size_t>(b)]);
  });
  std::vector<int> kept(bySize.end() - wanted, bySize.end());
  std::sort(kept.begin(), kept.end());  // solutions are in ascending order already
  return kept;
}

void FromHessian(Session& s, const Hessian& hessian, MainLog& out) {
  ModeSolution sol;
  if (!SolveMassWeighted(hessian, s.atomMass, sol)) {
    out.Line(" WARNING! Mass-weighted force constant problem can not be solved: can not calculate reduced masses!");
    return;
  }
  int placeholders = 0;
  std::vector<int> chosen = AssignSolutions(s, sol, placeholders);
  std::vector<Row> rows;
  if (s.modes.empty()) {
    for (int k : chosen) {
      size_t u = static_cast<size_t>(k);
      rows.push_back({0.0, sol.freq[u], sol.redMass[u], sol.forceConst[u]});
    }
    PrintTable(s, rows, out);
    return;
  }
  for (size_t i = 0; i < s.modes.size(); ++i) {
    VibMode& m = s.modes[i];
    const int k = static_cast<int>(i) - placeholders;
    if (k < 0 || k >= static_cast<int>(chosen.size())) {
      rows.push_back({m.freq, m.freq, m.redMass, m.forceConst});
      continue;
    }
    const size_t u = static_cast<size_t>(chosen[static_cast<size_t>(k)]);
    rows.push_back({m.freq, sol.freq[u], sol.redMass[u], sol.forceConst[u]});
    m.redMass = sol.redMass[u];
    m.forceConst = sol.forceConst[u];
    if (s.opt.recalcFreq) m.freq = sol.freq[u];
  }
  PrintTable(s, rows, out);
}

}  // namespace

void RecalculateFrequencies(Session& s, MainLog& out) {
  const Companion kind = CompanionOf(s.opt.formatCode);
  if (kind == Companion::None) return;  // the log's values stand
  for (VibMode& m : s.modes) m.forceConst = ForceConstantOf(m.freq, m.redMass);
  out.Line();
  if (kind == Companion::LogModes) {
    std::vector<Row> rows;
    for (const VibMode& m : s.modes) rows.push_back({m.freq, m.freq, m.redMass, m.forceConst});
    PrintTable(s, rows, out);
    return;
  }

  const int dim = 3 * s.nAtoms;
  Hessian hessian;
  if (kind == Companion::Punch) {
    const std::string name = ReplaceExtension(true, s.files.inputName, ".pun");
    if (!std::filesystem::is_regular_file(name)) {
      out.Line(" WARNING! Can not find PUN-file (" + FmtA(name, 16) + "):");
      ReducedMassesFromVectors(s, out);
      return;
    }
    if (!ReadPunchHessian(name, dim, hessian)) {
      out.Line(" WARNING! Hessian is not found in PUN-file: can not calculate reduced masses!");
      return;
    }
  } else {
    const std::string name = ReplaceExtension(true, s.files.inputName, ".fch");
    if (!std::filesystem::is_regular_file(name)) {
      out.Line(" WARNING! Can not find formatted g98 checkfile (" + FmtA(name, 16) + "):");
      ReducedMassesFromVectors(s, out);
      return;
    }
    if (!ReadFchHessian(name, dim, hessian)) {
      out.Line(" WARNING! Cartesian force constants are not found in FCH-file!");
      out.Line(" Can not calculate reduced masses!");
      return;
    }
  }
  FromHessian(s, hessian, out);
}

void RecalculateFrequencies(Session& s) { RecalculateFrequencies(s, s.log); }

}  // namespace quintor

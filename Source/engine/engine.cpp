#include "engine/engine.h"

#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <sstream>

#include <fmt/format.h>

#include "engine/constants.h"
#include "engine/integrals.h"
#include "io/fortran_io.h"
#include "model/run_stop.h"
#include "numeric/lapack.h"


namespace quintor::engine {

namespace fs = std::filesystem;

namespace {

// ---- Working files -----------------------------------------------------
// Each call has a directory of its own (made like mkdtemp) in the run's
// directory, so that two runs side by side never touch each other's files;
// it goes, with everything in it, when the call ends.
class WorkingFiles {
 public:
  WorkingFiles(const std::string& dir, bool write) {
    if (!write) return;
    fs::path base = dir.empty() ? fs::current_path() : fs::path(dir);
    std::string pattern = (base / "engine.XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
      pattern = (fs::temp_directory_path() / "quintor-engine.XXXXXX").string();
      if (mkdtemp(pattern.data()) == nullptr) return;
    }
    dir_ = pattern;
    report_.open(Path("tmp.omn"));
  }
  ~WorkingFiles() {
    report_.close();
    if (!dir_.empty()) {
      std::error_code ec;
      fs::remove_all(dir_, ec);
    }
  }
  WorkingFiles(const WorkingFiles&) = delete;
  WorkingFiles& operator=(const WorkingFiles&) = delete;

  std::string Path(const std::string& name) const { return (fs::path(dir_) / name).string(); }
  std::ostream& Report() { return dir_.empty() ? static_cast<std::ostream&>(memory_) : report_; }
  // One record: the count, then the values.
  void WriteRecord(const std::string& extension, const std::vector<double>& values) {
    if (dir_.empty()) return;
    std::ofstream out(Path("engine" + extension), std::ios::binary | std::ios::app);
    const long long n = static_cast<long long>(values.size());
    out.write(reinterpret_cast<const char*>(&n), sizeof n);
    out.write(reinterpret_cast<const char*>(values.data()), static_cast<std::streamsize>(n * sizeof(double)));
  }
  std::string ReportText() {
    if (dir_.empty()) return memory_.str();
    report_.flush();
    std::ifstream in(Path("tmp.omn"));
    std::stringstream ss;
    ss << in.rdbuf();
    return ss.str();
  }

 private:
  std::string dir_;
  std::ofstream report_;
  std::ostringstream memory_;  // the report of a call that writes no files
};

struct Molecule {
  std::vector<int> z;
  std::vector<std::array<double, 3>> x;  // angstrom
  std::vector<int> first, count;         // orbitals of each atom
  int n = 0;
};

constexpr int kSmallMatrix = 8;

// The `count` lowest eigenvectors of the symmetric n x n matrix a (which is
// overwritten), one after another in c (n values each). The density needs
// no more than the occupied orbitals: the tridiagonal problem is solved
// whole by MRRR (cheap, and faster than MRRR's bisection for a part), and
// only the occupied vectors are transformed back, half the work of a full
// diagonalisation.
void LowestEigenvectors(int n, std::vector<double>& a, int count, std::vector<double>& c) {
  count = std::clamp(count, 1, n);
  const std::vector<double> original = a;
  std::vector<double> d(n), e(n), tau(n), w(n), z(static_cast<size_t>(n) * n);
  std::vector<int> support(2 * static_cast<size_t>(n));
  double query = 0;
  int iquery = 0, found = 0, tryrac = 1;
  lapack::dsytrd('L', n, a.data(), n, d.data(), e.data(), tau.data(), &query, -1);
  int lwork = static_cast<int>(query);
  lapack::dormtr('L', 'L', 'N', n, count, a.data(), n, tau.data(), z.data(), n, &query, -1);
  lwork = std::max(lwork, static_cast<int>(query));
  lapack::dstemr('V', 'A', n, d.data(), e.data(), 0, 0, 0, 0, &found, w.data(), z.data(), n, n, support.data(),
                 &tryrac, &query, -1, &iquery, -1);
  lwork = std::max({lwork, static_cast<int>(query), 1});
  std::vector<double> work(static_cast<size_t>(lwork));
  std::vector<int> iwork(static_cast<size_t>(std::max(iquery, 1)));
  // Two orbitals take LAPACK's special case of MRRR, whose eigenvector is
  // wrong in some LAPACK versions; a few orbitals cost nothing anyway.
  int info = n <= kSmallMatrix ? 1 : lapack::dsytrd('L', n, a.data(), n, d.data(), e.data(), tau.data(), work.data(), lwork);
  if (info == 0)
    info = lapack::dstemr('V', 'A', n, d.data(), e.data(), 0, 0, 0, 0, &found, w.data(), z.data(), n, n,
                          support.data(), &tryrac, work.data(), lwork, iwork.data(), static_cast<int>(iwork.size()));
  if (info == 0 && found == n)
    info = lapack::dormtr('L', 'L', 'N', n, count, a.data(), n, tau.data(), z.data(), n, work.data(), lwork);
  else
    info = 1;
  if (info != 0) {
    // A small matrix, or MRRR gave up (it may on tight clusters): all
    // eigenvectors by divide and conquer.
    z = original;
    int iworkQuery = 0;
    lapack::dsyevd('V', 'L', n, z.data(), n, w.data(), &query, -1, &iworkQuery, -1);
    work.assign(static_cast<size_t>(std::max(1, static_cast<int>(query))), 0.0);
    iwork.assign(static_cast<size_t>(std::max(1, iworkQuery)), 0);
    lapack::dsyevd('V', 'L', n, z.data(), n, w.data(), work.data(), static_cast<int>(work.size()), iwork.data(),
                   static_cast<int>(iwork.size()));
  }
  c.assign(z.begin(), z.begin() + static_cast<std::ptrdiff_t>(n) * count);
}

// p = occ * sum of the `count` vectors v v^T starting at v (n values each),
// added to p times beta; both triangles are filled.
void AddOuterProducts(int n, const double* v, int count, double occ, double beta, std::vector<double>& p) {
  if (count <= 0) return;
  lapack::dsyrk('L', 'N', n, count, occ, v, n, beta, p.data(), n);
  for (int i = 0; i < n; ++i)
    for (int j = i + 1; j < n; ++j) p[static_cast<size_t>(j) * n + i] = p[static_cast<size_t>(i) * n + j];
}

// Solves the small DIIS system in place by Gaussian elimination; false when singular.
bool SolveSmall(std::vector<double>& a, std::vector<double>& b, int n) {
  for (int c = 0; c < n; ++c) {
    int piv = c;
    for (int r = c + 1; r < n; ++r)
      if (std::abs(a[r * n + c]) > std::abs(a[piv * n + c])) piv = r;
    if (std::abs(a[piv * n + c]) < 1e-14) return false;
    for (int k = 0; k < n; ++k) std::swap(a[c * n + k], a[piv * n + k]);
    std::swap(b[c], b[piv]);
    for (int r = c + 1; r < n; ++r) {
      const double f = a[r * n + c] / a[c * n + c];
      for (int k = c; k < n; ++k) a[r * n + k] -= f * a[c * n + k];
      b[r] -= f * b[c];
    }
  }
  for (int c = n - 1; c >= 0; --c) {
    double v = b[c];
    for (int k = c + 1; k < n; ++k) v -= a[c * n + k] * b[k];
    b[c] = v / a[c * n + c];
  }
  return true;
}

struct Setup {
  Molecule mol;
  std::vector<PairIntegrals> pairs;          // i > j, index i*(i-1)/2 + j
  std::vector<std::vector<double>> oneCentre;  // per atom
  std::vector<double> h;                     // core Hamiltonian, n x n
  double coreCore = 0;
};

// The resonance parameter of an atom's orbital: s, p (1-3) or d (4-8).
double ResonanceOf(const ElementParameters& p, int orbital) {
  return orbital == 0 ? p.betas : orbital < 4 ? p.betap : p.betad;
}

Setup BuildSetup(const ParameterSet& set, const Molecule& mol) {
  Setup s;
  s.mol = mol;
  const int n = mol.n, na = static_cast<int>(mol.z.size());
  s.h.assign(static_cast<size_t>(n) * n, 0.0);
  s.oneCentre.resize(na);
  for (int a = 0; a < na; ++a) {
    const ElementParameters& p = set.el[mol.z[a]];
    s.oneCentre[a] = OneCentreIntegrals(p, mol.count[a]);
    const int f = mol.first[a];
    s.h[f * n + f] = p.uss;
    for (int k = 1; k < mol.count[a]; ++k) s.h[(f + k) * n + f + k] = k < 4 ? p.upp : p.udd;
  }
  s.pairs.reserve(static_cast<size_t>(na) * (na - 1) / 2);
  for (int a = 1; a < na; ++a)
    for (int b = 0; b < a; ++b) {
      PairIntegrals pi = ComputePair(set, mol.z[a], mol.z[b], mol.x[a], mol.x[b]);
      const ElementParameters& pa = set.el[mol.z[a]];
      const ElementParameters& pb = set.el[mol.z[b]];
      const int fa = mol.first[a], fb = mol.first[b], ia = pi.na, ib = pi.nb;
      for (int i = 0; i < ia; ++i)
        for (int j = 0; j < ia; ++j) s.h[(fa + i) * n + fa + j] += pi.e1b[i * ia + j];
      for (int i = 0; i < ib; ++i)
        for (int j = 0; j < ib; ++j) s.h[(fb + i) * n + fb + j] += pi.e2a[i * ib + j];
      for (int i = 0; i < ia; ++i)
        for (int j = 0; j < ib; ++j) {
          const double beta = 0.5 * (ResonanceOf(pa, i) + ResonanceOf(pb, j));
          const double v = beta * pi.overlap[i * ib + j];
          s.h[(fa + i) * n + fb + j] = v;
          s.h[(fb + j) * n + fa + i] = v;
        }
      s.coreCore += pi.coreCore;
      s.pairs.push_back(std::move(pi));
    }
  return s;
}

// Two-electron part of a Fock matrix (all n x n): the Coulomb term of the
// density pj minus kx times the exchange term of the density pk.
void AddCoulombExchange(const Setup& s, const std::vector<double>& pj, const std::vector<double>& pk, double kx,
                        std::vector<double>& f) {
  const Molecule& m = s.mol;
  const int n = m.n, na = static_cast<int>(m.z.size());
  for (int a = 0; a < na; ++a) {
    const int f0 = m.first[a], k = m.count[a];
    const std::vector<double>& g = s.oneCentre[a];
    for (int i = 0; i < k; ++i)
      for (int j = 0; j < k; ++j) {
        double v = 0;
        for (int c = 0; c < k; ++c)
          for (int d = 0; d < k; ++d) {
            v += pj[(f0 + c) * n + f0 + d] * g[((i * k + j) * k + c) * k + d] -
                 kx * pk[(f0 + c) * n + f0 + d] * g[((i * k + c) * k + j) * k + d];
          }
        f[(f0 + i) * n + f0 + j] += v;
      }
  }
  size_t idx = 0;
  for (int a = 1; a < na; ++a)
    for (int b = 0; b < a; ++b, ++idx) {
      const PairIntegrals& pi = s.pairs[idx];
      const int fa = m.first[a], fb = m.first[b], ia = pi.na, ib = pi.nb;
      const double* w = pi.w.data();
      for (int i = 0; i < ia; ++i)
        for (int j = 0; j < ia; ++j) {
          const double pij = pj[(fa + i) * n + fa + j];
          double coul = 0;
          for (int c = 0; c < ib; ++c)
            for (int d = 0; d < ib; ++d) {
              const double wv = w[((i * ia + j) * ib + c) * ib + d];
              coul += pj[(fb + c) * n + fb + d] * wv;
              f[(fb + c) * n + fb + d] += pij * wv;
              // exchange: F(i on A, c on B) -= kx P(j, d) (ij|cd)
              f[(fa + i) * n + fb + c] -= kx * pk[(fa + j) * n + fb + d] * wv;
            }
          f[(fa + i) * n + fa + j] += coul;
        }
      // mirror the exchange block
      for (int i = 0; i < ia; ++i)
        for (int c = 0; c < ib; ++c) f[(fb + c) * n + fa + i] = f[(fa + i) * n + fb + c];
    }
}

// G = sum over (ab|cd) of P (Coulomb) minus half the exchange.
void AddTwoElectron(const Setup& s, const std::vector<double>& p, std::vector<double>& f) {
  AddCoulombExchange(s, p, p, 0.5, f);
}

// The occupied orbitals' density sum occ * C_occ C_occ^T of the Fock matrix f.
void OccupiedDensity(int n, std::vector<double> f, int occupied, double occ, std::vector<double>& p) {
  std::fill(p.begin(), p.end(), 0.0);
  if (occupied <= 0) return;
  std::vector<double> c;
  LowestEigenvectors(n, f, occupied, c);
  AddOuterProducts(n, c.data(), occupied, occ, 0.0, p);
}

struct UhfOutcome {
  double electronic = 0, deltaE = 0, deltaP = 0, spinSquared = 0;
  int iterations = 0;
  bool converged = false;
  std::vector<double> density;  // alpha + beta
  std::vector<double> alpha;
};

// Unrestricted SCF: alpha and beta orbitals of their own, F(alpha) = H +
// J(P) - K(P alpha), DIIS on both commutators with one set of coefficients.
UhfOutcome RunUhf(const Setup& setup, int n, int nAlpha, int nBeta, const std::vector<double>& start,
                  const EngineOptions& options) {
  UhfOutcome u;
  const size_t nn = static_cast<size_t>(n) * n;
  std::vector<double> pa(nn), pb(nn), pt(nn), ptOld, fa, fb;
  for (size_t i = 0; i < nn; ++i) pa[i] = pb[i] = 0.5 * start[i];
  std::vector<std::vector<double>> diisFa, diisFb, diisE, dots;
  const int kDiis = 8;
  const double crit = options.gradientCalculation ? options.gradientScfCriterion : options.scfCriterion;
  double eOld = 0;
  for (int niter = 1;; ++niter) {
    for (size_t i = 0; i < nn; ++i) pt[i] = pa[i] + pb[i];
    fa = setup.h;
    fb = setup.h;
    AddCoulombExchange(setup, pt, pa, 1.0, fa);
    AddCoulombExchange(setup, pt, pb, 1.0, fb);
    double e = 0;
    for (size_t i = 0; i < nn; ++i) e += 0.5 * (pt[i] * setup.h[i] + pa[i] * fa[i] + pb[i] * fb[i]);
    u.deltaE = e - eOld;
    eOld = e;
    u.electronic = e;
    u.deltaP = 1;
    if (!ptOld.empty()) {
      double d = 0;
      for (size_t i = 0; i < nn; ++i) d += (pt[i] - ptOld[i]) * (pt[i] - ptOld[i]);
      u.deltaP = std::sqrt(d / nn);
    }
    u.iterations = niter;
    if (niter > 1 && std::abs(u.deltaE) < crit && (options.gradientCalculation || u.deltaP <= 4 * crit)) {
      u.converged = true;
      break;
    }
    if (niter >= options.maxIterations) break;
    // DIIS on [F, P] of both spins.
    std::vector<double> err(2 * nn), fp(nn);
    double errMax = 0;
    for (int spin = 0; spin < 2; ++spin) {
      const std::vector<double>& f = spin == 0 ? fa : fb;
      const std::vector<double>& p = spin == 0 ? pa : pb;
      lapack::dgemm('N', 'N', n, n, n, 1.0, f.data(), n, p.data(), n, 0.0, fp.data(), n);
      for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) {
          const double v = fp[i * n + j] - fp[j * n + i];
          err[spin * nn + i * n + j] = v;
          errMax = std::max(errMax, std::abs(v));
        }
    }
    diisFa.push_back(fa);
    diisFb.push_back(fb);
    diisE.push_back(std::move(err));
    if (static_cast<int>(diisE.size()) > kDiis) {
      diisFa.erase(diisFa.begin());
      diisFb.erase(diisFb.begin());
      diisE.erase(diisE.begin());
      dots.erase(dots.begin());
      for (auto& row : dots) row.erase(row.begin());
    }
    dots.emplace_back();
    for (const auto& e2 : diisE) {
      double v = 0;
      for (size_t k = 0; k < e2.size(); ++k) v += diisE.back()[k] * e2[k];
      dots.back().push_back(v);
    }
    const int m = static_cast<int>(diisE.size());
    std::vector<double> xa = fa, xb = fb;
    bool usedDiis = false;
    if (m >= 2 && errMax < 0.2) {
      const int dim = m + 1;
      std::vector<double> b(dim * dim, 0.0), rhs(dim, 0.0);
      for (int i = 0; i < m; ++i)
        for (int j = 0; j <= i; ++j) b[i * dim + j] = b[j * dim + i] = dots[i][j];
      for (int i = 0; i < m; ++i) b[i * dim + m] = b[m * dim + i] = -1;
      rhs[m] = -1;
      if (SolveSmall(b, rhs, dim)) {
        usedDiis = true;
        std::fill(xa.begin(), xa.end(), 0.0);
        std::fill(xb.begin(), xb.end(), 0.0);
        for (int i = 0; i < m; ++i)
          for (size_t k = 0; k < nn; ++k) {
            xa[k] += rhs[i] * diisFa[i][k];
            xb[k] += rhs[i] * diisFb[i][k];
          }
      } else {
        diisFa.clear();
        diisFb.clear();
        diisE.clear();
        dots.clear();
      }
    }
    ptOld = pt;
    const std::vector<double> paOld = pa, pbOld = pb;
    OccupiedDensity(n, xa, nAlpha, 1.0, pa);
    OccupiedDensity(n, xb, nBeta, 1.0, pb);
    if (niter <= 2 || (!usedDiis && u.deltaE > 0)) {
      for (size_t i = 0; i < nn; ++i) {
        pa[i] = 0.5 * (pa[i] + paOld[i]);
        pb[i] = 0.5 * (pb[i] + pbOld[i]);
      }
    }
  }
  // <S^2> = Sz (Sz + 1) + N(beta) - Tr(P alpha P beta) in the orthogonal basis.
  double overlap = 0;
  for (size_t i = 0; i < nn; ++i) overlap += pa[i] * pb[i];
  const double sz = 0.5 * (nAlpha - nBeta);
  u.spinSquared = sz * (sz + 1) + nBeta - overlap;
  for (size_t i = 0; i < nn; ++i) pt[i] = pa[i] + pb[i];
  u.density = pt;
  u.alpha = std::move(pa);
  return u;
}

// (ij|kl)-type contraction: sum over atom blocks of Da (ab|cd) Db.
double Contract(const Setup& s, const std::vector<double>& da, const std::vector<double>& db) {
  const Molecule& m = s.mol;
  const int n = m.n, na = static_cast<int>(m.z.size());
  double sum = 0;
  for (int a = 0; a < na; ++a) {
    const int f0 = m.first[a], k = m.count[a];
    const std::vector<double>& g = s.oneCentre[a];
    for (int i = 0; i < k; ++i)
      for (int j = 0; j < k; ++j)
        for (int c = 0; c < k; ++c)
          for (int d = 0; d < k; ++d)
            sum += da[(f0 + i) * n + f0 + j] * db[(f0 + c) * n + f0 + d] * g[((i * k + j) * k + c) * k + d];
  }
  size_t idx = 0;
  for (int a = 1; a < na; ++a)
    for (int b = 0; b < a; ++b, ++idx) {
      const PairIntegrals& pi = s.pairs[idx];
      const int fa = m.first[a], fb = m.first[b], ia = pi.na, ib = pi.nb;
      for (int i = 0; i < ia; ++i)
        for (int j = 0; j < ia; ++j)
          for (int c = 0; c < ib; ++c)
            for (int d = 0; d < ib; ++d) {
              const double wv = pi.w[((i * ia + j) * ib + c) * ib + d];
              sum += wv * (da[(fa + i) * n + fa + j] * db[(fb + c) * n + fb + d] +
                           db[(fa + i) * n + fa + j] * da[(fb + c) * n + fb + d]);
            }
    }
  return sum;
}

void WriteOpening(std::ostream& out, const ParameterSet& set, const Molecule& mol, const EngineOptions& opt) {
  if (MethodHasDOrbitals(set.method)) {
    out << " CALCULATION OF THE REPULSION INTEGRALS\n BY MODIFIED BIPOLAR EXPANSION\n";
  } else {
    out << " CALCULATION OF THE REPULSION INTEGRALS BY DEWAR-THIEL\n";
  }
  out << "\n OPTIONS FOR DFP OPTIMIZATION ...\n"
      << "     PRINTING SWITCH ...                              " << FmtI(0, 5) << '\n'
      << "     MAXIMUM NUMBER OF FUNCTION EVALUATIONS OVERALL  ..." << FmtI(1000, 5) << '\n'
      << "     DFP CONVERGENCE CRITERIA ...\n"
      << "        ON X =" << FmtE(1e-4, 12, 4) << '\n'
      << "        ON F =" << FmtE(1e-3, 12, 4) << '\n'
      << "        ON GRADIENTS =" << FmtE(1e-1, 12, 4) << '\n'
      << "        ON ALPHA.P.G =" << FmtE(1e-6, 12, 4) << '\n'
      << "        ON IGG1 =" << FmtI(3, 5) << '\n'
      << "     RESTART PARAMETERS ...\n"
      << "        RESTART EACH" << FmtI(30, 5) << '\n'
      << "        CYCLES, OR WHENEVER\n"
      << "        COSINE OF ANGLE BETWEEN P AND -G .LE." << FmtF(0.05, 8, 3) << '\n'
      << "        MAXIMUM VALUE FOR H MATRIX ELEMENTS" << FmtE(1e5, 12, 4) << '\n'
      << "        INCREMENT FOR CHANGE OF VARIABLES" << FmtE(1e-4, 12, 4) << '\n'
      << " OPTIONS FOR CUBIC LINE SEARCH ...\n"
      << " OPTIONS FOR QUADRATIC LINE SEARCH ...\n"
      << "     SCF CONVERGENCE CRITERION =" << FmtE(opt.scfCriterion, 12, 4) << '\n'
      << "     SCF CONVERGENCE CRITERION IN GRADIENT CALCULATION (QUADRATIC SEARCH) ="
      << FmtE(opt.gradientScfCriterion, 12, 4) << '\n'
      << "     CCCOS =" << FmtF(0.05, 8, 3) << "\n\n";
  out << "          TRIAL SET OF ATOMIC COORDINATES (ANGSTROMS)\n\n"
      << "   ATOM NO.  ATOMIC NO.   X-COORDINATE   Y-COORDINATE   Z-COORDINATE   ATOMIC ORBITALS\n";
  for (size_t a = 0; a < mol.z.size(); ++a) {
    out << FmtI(static_cast<long long>(a) + 1, 8) << FmtI(mol.z[a], 11) << "   " << FmtF(mol.x[a][0], 14, 6)
        << ' ' << FmtF(mol.x[a][1], 14, 6) << ' ' << FmtF(mol.x[a][2], 14, 6) << "   "
        << FmtI(mol.first[a] + 1, 5) << " TO " << FmtI(mol.first[a] + mol.count[a], 4) << '\n';
  }
  out << "\n          INITIAL INTERATOMIC DISTANCES (ANGSTROMS)\n\n";
  const size_t na = mol.z.size();
  for (size_t i = 0; i < na; ++i) {
    std::string line = FmtI(static_cast<long long>(i) + 1, 5);
    for (size_t j = 0; j <= i; ++j) {
      double d2 = 0;
      for (int k = 0; k < 3; ++k) d2 += (mol.x[i][k] - mol.x[j][k]) * (mol.x[i][k] - mol.x[j][k]);
      line += FmtF(std::sqrt(d2), 10, 5);
      if ((j + 1) % 10 == 0 && j != i) line += "\n     ";
    }
    out << line << '\n';
  }
  out << '\n';
}

}  // namespace

void PrintHeatOfFormation(std::ostream& out, EngineMethod method, double heatKcal) {
  out << ' ' << MethodName(method) << " method\n"
      << " Heat of Formation       : " << FmtF(heatKcal * kKcalToKj, 12, 4) << " kJ/mol  =" << FmtF(heatKcal, 12, 4)
      << " kcal/mol\n";
}

std::string OpenShellTreatment(int multiplicity, bool unrestricted, double spinSquared) {
  if (unrestricted)
    return fmt::format(" Open shell: unrestricted Hartree-Fock (MOPAC's UHF), <S**2> = {:.4f}", spinSquared);
  if (multiplicity == 2) return " Open shell: restricted half-electron (MOPAC's RHF for a doublet)";
  if (multiplicity == 3) return " Open shell: restricted half-electron (MOPAC's OPEN(2,2) for a triplet)";
  return "";
}

int DefaultMultiplicity(const std::vector<int>& atomicNumbers, int charge) {
  int electrons = -charge;
  for (int z : atomicNumbers) electrons += z;
  return electrons % 2 == 0 ? 1 : 2;
}

std::string ImpossibleState(int electrons, int multiplicity) {
  static const char* const kNames[] = {"", "SINGLET", "DOUBLET", "TRIPLET"};
  if (electrons < 0) return fmt::format(" ERROR! The charge leaves {} electrons", electrons);
  if (multiplicity >= 1 && multiplicity <= 3) {
    if ((electrons + multiplicity) % 2 == 0)
      return fmt::format(" ERROR! {} SPECIFIED WITH {} NUMBER OF ELECTRONS, CORRECT FAULT", kNames[multiplicity],
                         electrons % 2 == 0 ? "EVEN" : "ODD");
    if (electrons < multiplicity - 1)
      return fmt::format(" ERROR! {} electrons are too few for a {}", electrons, kNames[multiplicity]);
  }
  return "";
}

EngineResult EngineRun(EngineMethod method, const std::vector<int>& atomicNumbers,
                       const std::vector<std::array<double, 3>>& coordsAngstrom, int charge, int multiplicity,
                       bool print, std::ostream* report, const EngineOptions& options) {
  ParameterSet set = BuiltinParameters(method);
  if (!options.parameterFile.empty()) {
    const ParameterFileResult r = ReadParameterFile(options.parameterFile, set);
    if (!r.ok) {
      EngineResult bad;
      bad.message = r.message;
      bad.exitStatus = exit_status::ReadError;
      if (report) *report << r.message << '\n';
      return bad;
    }
  }
  return EngineRunWith(set, atomicNumbers, coordsAngstrom, charge, multiplicity, print, report, options);
}

EngineResult EngineRunWith(const ParameterSet& set, const std::vector<int>& atomicNumbers,
                           const std::vector<std::array<double, 3>>& coordsAngstrom, int charge, int multiplicity,
                           bool print, std::ostream* report, const EngineOptions& options) {
  EngineResult res;
  const int na = static_cast<int>(atomicNumbers.size());
  if (na > kMaxAtoms) {
    res.message = fmt::format(" The engine takes at most {} atoms; this structure has {}.", kMaxAtoms, na);
    res.exitStatus = exit_status::Limit;
    if (report) *report << res.message << '\n';
    return res;
  }
  if (coordsAngstrom.size() != atomicNumbers.size() || na == 0) {
    res.message = " The engine needs one coordinate triple for each atom.";
    res.exitStatus = exit_status::Internal;
    return res;
  }
  Molecule mol;
  mol.z = atomicNumbers;
  mol.x = coordsAngstrom;
  int electrons = -charge;
  for (int a = 0; a < na; ++a) {
    const int z = mol.z[a];
    if (z < 1 || z > kMaxElement || !HasParameters(set.el[z])) {
      res.message = fmt::format(" No {} parameters for element {} ({}).", MethodName(set.method), z,
                                z >= 1 && z <= kMaxElement ? Trim(ElementSymbol(z)) : std::string_view("?"));
      res.exitStatus = exit_status::ReadError;
      if (report) *report << res.message << '\n';
      return res;
    }
    if (!ReliableParameters(set.method, z)) {
      res.message = fmt::format(" ERROR! No reliable {} parameters for {}", MethodName(set.method), Trim(ElementSymbol(z)));
      res.exitStatus = exit_status::ReadError;
      if (report) *report << res.message << '\n';
      return res;
    }
    mol.first.push_back(mol.n);
    mol.count.push_back(OrbitalCount(set.el[z], MethodHasDOrbitals(set.method)));
    mol.n += mol.count.back();
    electrons += static_cast<int>(std::lround(set.el[z].core));
  }
  if (mol.n > kMaxOrbitals) {
    res.message = fmt::format(" The engine takes at most {} orbitals; this structure has {}.", kMaxOrbitals, mol.n);
    res.exitStatus = exit_status::Limit;
    if (report) *report << res.message << '\n';
    return res;
  }
  res.orbitals = mol.n;
  res.electrons = electrons;
  const int n = mol.n;

  WorkingFiles files(options.workDir, options.writeWorkingFiles);
  std::ostream& out = files.Report();
  const bool printing = print && options.printLevel >= 1;
  if (printing) WriteOpening(out, set, mol, options);

  // Occupation by multiplicity.
  int doubly = electrons / 2;
  std::vector<int> singles;
  if (multiplicity > 3) {
    if (printing || report) {
      out << " MULTIPLICITY GREATER THAN 3\n"
          << " CURRENT INPUT SYSTEM :\n Parameters : " << MethodName(set.method) << "\n Title      :\n"
          << "   *** MNDO ABORTED ***\n";
    }
    res.status = EngineStatus::Aborted;
    res.message = " MULTIPLICITY GREATER THAN 3";
    res.exitStatus = exit_status::ReadError;
    if (report) *report << files.ReportText();
    return res;
  }
  if (const std::string why = ImpossibleState(electrons, multiplicity); !why.empty()) {
    res.message = why;
    res.exitStatus = exit_status::ReadError;
    if (report) *report << res.message << '\n';
    return res;
  }
  if (printing) {
    out << " MOLECULAR CHARGE =" << FmtI(charge, 4) << "\n\n"
        << FmtI(electrons, 10) << " ELECTRONS, AND";
  }
  if (multiplicity == 2) {
    doubly = (electrons - 1) / 2;
    singles = {doubly};
  } else if (multiplicity == 3) {
    doubly = electrons / 2 - 1;
    singles = {doubly, doubly + 1};
  }
  if (printing) {
    out << FmtI(doubly, 5) << " DOUBLY OCCUPIED MOS\n";
    if (multiplicity == 2)
      out << " MULTIPLICITY     =" << FmtI(2, 3) << "\n ONE ELECTRON IN ORBITAL" << FmtI(singles[0] + 1, 5) << '\n';
    if (multiplicity == 3)
      out << " MULTIPLICITY     =" << FmtI(3, 3) << "\n ONE ELECTRON IN ORBITALS" << FmtI(singles[0] + 1, 5)
          << " AND" << FmtI(singles[1] + 1, 5) << '\n';
    out << '\n';
  }
  if (doubly + static_cast<int>(singles.size()) > n || doubly < 0) {
    res.message = " More electrons than the orbitals can hold.";
    res.exitStatus = exit_status::ReadError;
    if (report) *report << files.ReportText() << res.message << '\n';
    return res;
  }

  const Setup setup = BuildSetup(set, mol);
  files.WriteRecord(".MN1", setup.h);

  // Starting density: the atoms' cores spread evenly over their orbitals.
  std::vector<double> p(static_cast<size_t>(n) * n, 0.0);
  const double shift = -static_cast<double>(charge) / n;
  for (int a = 0; a < na; ++a)
    for (int k = 0; k < mol.count[a]; ++k) {
      const int i = mol.first[a] + k;
      p[i * n + i] = set.el[mol.z[a]].core / mol.count[a] + shift;
    }
  if (options.startDensity && options.startDensity->size() == p.size()) p = *options.startDensity;

  std::vector<double> f(p.size()), pOld, c;
  std::vector<std::vector<double>> diisF, diisE, diisDots;
  // Whether p is the density of a set of orbitals (not the atoms' start, nor
  // a damped mixture): only then is FP - PF the error DIIS wants. The start's
  // diagonal density commutes with F in a hydrocarbon, and an error of zero
  // would make DIIS return to the first Fock matrix.
  bool pFromOrbitals = options.startDensity && options.startDensity->size() == p.size();
  const int kDiis = 8;
  // DIIS only once the commutator is small: from a rough start it can settle
  // on a self-consistent but excited occupation (benzene in AM1 does).
  const double diisStart = 0.2;
  double eOld = 0, eElec = 0;
  const double crit = options.gradientCalculation ? options.gradientScfCriterion : options.scfCriterion;
  bool converged = false;
  int niter = 0;
  double deltaE = 0, deltaP = 0;
  if (printing && options.printLevel >= 2) {
    out << "\n *** INFORMATION FOR" << FmtI(options.calculationNumber, 4) << "  SCF CALCULATION  OF"
        << FmtI(options.geometryNumber, 4) << "  GEOMETRY ***\n\n"
        << " NITER    ELECTRONIC        DELTA E         DELTA P\n"
        << "          ENERGY(EV)\n";
  }
  if (options.unrestricted) {
    const int nAlpha = (electrons + multiplicity - 1) / 2, nBeta = electrons - nAlpha;
    const UhfOutcome u = RunUhf(setup, n, nAlpha, nBeta, p, options);
    eElec = u.electronic;
    converged = u.converged;
    niter = u.iterations;
    deltaE = u.deltaE;
    deltaP = u.deltaP;
    p = u.density;
    res.alphaDensity = u.alpha;
    res.spinSquared = u.spinSquared;
  } else
  for (niter = 1;; ++niter) {
    f = setup.h;
    AddTwoElectron(setup, p, f);
    eElec = 0;
    for (size_t i = 0; i < p.size(); ++i) eElec += 0.5 * p[i] * (setup.h[i] + f[i]);
    deltaE = eElec - eOld;
    deltaP = 0;
    if (!pOld.empty()) {
      for (size_t i = 0; i < p.size(); ++i) deltaP += (p[i] - pOld[i]) * (p[i] - pOld[i]);
      deltaP = std::sqrt(deltaP / p.size());
    } else {
      deltaP = 1;
    }
    eOld = eElec;
    if (printing && options.printLevel >= 2)
      out << FmtI(niter, 3) << FmtF(eElec, 17, 8) << FmtE(deltaE, 16, 6) << FmtE(deltaP, 16, 6) << '\n';
    if (niter > 1) {
      if (options.gradientCalculation ? std::abs(deltaE) < crit
                                      : (std::abs(deltaE) < crit && deltaP <= 4 * crit)) {
        converged = true;
        break;
      }
    }
    if (niter >= options.maxIterations) break;

    // DIIS on the commutator FP - PF; PF is the transpose of FP for symmetric F and P.
    // (The product of two symmetric matrices: the layout's transpose is the
    // commutator's sign, to which DIIS is blind.)
    std::vector<double> fp(p.size()), err(p.size());
    lapack::dgemm('N', 'N', n, n, n, 1.0, f.data(), n, p.data(), n, 0.0, fp.data(), n);
    double errMax = 0;
    for (int i = 0; i < n; ++i)
      for (int j = 0; j < n; ++j) {
        const double v = fp[i * n + j] - fp[j * n + i];
        err[i * n + j] = v;
        errMax = std::max(errMax, std::abs(v));
      }
    if (pFromOrbitals) {
      diisF.push_back(f);
      diisE.push_back(std::move(err));
      if (static_cast<int>(diisF.size()) > kDiis) {
        diisF.erase(diisF.begin());
        diisE.erase(diisE.begin());
        diisDots.erase(diisDots.begin());
        for (auto& row : diisDots) row.erase(row.begin());
      }
      // The new error vector's products with those kept (and itself).
      diisDots.emplace_back();
      for (const auto& e : diisE) {
        double v = 0;
        for (size_t k = 0; k < p.size(); ++k) v += diisE.back()[k] * e[k];
        diisDots.back().push_back(v);
      }
    }
    std::vector<double> fx = f;
    bool usedDiis = false;
    const int m = static_cast<int>(diisF.size());
    if (m >= 2 && errMax < diisStart) {
      const int dim = m + 1;
      std::vector<double> b(dim * dim, 0.0), rhs(dim, 0.0);
      for (int i = 0; i < m; ++i)
        for (int j = 0; j <= i; ++j) {
          b[i * dim + j] = b[j * dim + i] = diisDots[i][j];
        }
      for (int i = 0; i < m; ++i) b[i * dim + m] = b[m * dim + i] = -1;
      rhs[m] = -1;
      if (SolveSmall(b, rhs, dim)) {
        usedDiis = true;
        std::fill(fx.begin(), fx.end(), 0.0);
        for (int i = 0; i < m; ++i)
          for (size_t k = 0; k < fx.size(); ++k) fx[k] += rhs[i] * diisF[i][k];
      } else {
        diisF.clear();
        diisE.clear();
        diisDots.clear();
      }
    }
    // The occupied orbitals alone: the doubly occupied, then the open ones.
    const int occupied = doubly + static_cast<int>(singles.size());
    LowestEigenvectors(n, fx, occupied, c);
    pOld = p;
    // P = 2 C_occ C_occ^T + C_open C_open^T.
    std::fill(p.begin(), p.end(), 0.0);
    AddOuterProducts(n, c.data(), doubly, 2.0, 0.0, p);
    if (!singles.empty())
      AddOuterProducts(n, &c[static_cast<size_t>(singles.front()) * n], static_cast<int>(singles.size()), 1.0, 1.0, p);
    pFromOrbitals = true;
    if (niter <= 2 || (!usedDiis && deltaE > 0)) {
      // damping while DIIS has not taken over
      for (size_t i = 0; i < p.size(); ++i) p[i] = 0.5 * (p[i] + pOld[i]);
      pFromOrbitals = false;
    }
  }
  res.iterations = niter;
  if (!converged) {
    out << "\n\n *** UNABLE TO ACHIEVE SELFCONSISTENCE ***\n\n"
        << " DELTAE= " << FmtF(deltaE, 15, 7) << "     DELTAP= " << FmtF(deltaP, 15, 7) << '\n';
    if (options.gradientCalculation) out << " CONVERGENCE PROBLEMS IN GRADIENT CALCULATION\n";
  }

  // Half-electron correction for open shells: the restricted energy counts
  // a quarter of each open orbital's self-repulsion and misses half of the
  // exchange between open orbitals.
  if (!singles.empty() && !c.empty()) {
    std::vector<std::vector<double>> d(singles.size(), std::vector<double>(p.size(), 0.0));
    for (size_t s = 0; s < singles.size(); ++s) {
      const double* v = &c[static_cast<size_t>(singles[s]) * n];
      for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) d[s][i * n + j] = v[i] * v[j];
    }
    double corr = 0;
    for (size_t s = 0; s < singles.size(); ++s) corr -= 0.25 * Contract(setup, d[s], d[s]);
    if (singles.size() == 2) {
      std::vector<double> x(p.size());
      const double* v1 = &c[static_cast<size_t>(singles[0]) * n];
      const double* v2 = &c[static_cast<size_t>(singles[1]) * n];
      for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) x[i * n + j] = 0.5 * (v1[i] * v2[j] + v2[i] * v1[j]);
      corr -= 0.5 * Contract(setup, x, x);
    }
    eElec += corr;
  }

  double eisol = 0, eheat = 0;
  for (int z : mol.z) {
    eisol += set.el[z].eisol;
    eheat += set.el[z].eheat;
  }
  res.electronicEv = eElec;
  res.coreCoreEv = setup.coreCore;
  res.totalEv = eElec + setup.coreCore;
  res.heatKcal = (res.totalEv - eisol) * set.Units().evToKcal + eheat;
  res.heatKj = res.heatKcal * kKcalToKj;
  res.status = converged ? EngineStatus::Converged : EngineStatus::NotConverged;
  res.density = p;
  files.WriteRecord(".MN2", p);
  files.WriteRecord(".MN4", c);
  if (printing) {
    out << "\n ELECTRONIC ENERGY       =" << FmtF(res.electronicEv, 17, 8) << " EV\n"
        << " CORE-CORE REPULSION     =" << FmtF(res.coreCoreEv, 17, 8) << " EV\n"
        << " TOTAL ENERGY            =" << FmtF(res.totalEv, 17, 8) << " EV\n"
        << " HEAT OF FORMATION       =" << FmtF(res.heatKcal, 17, 8) << " KCAL/MOL\n"
        << " SCF ITERATIONS          =" << FmtI(res.iterations, 6) << '\n';
  }
  if (report && (printing || !converged)) *report << files.ReportText();
  return res;
}

}  // namespace quintor::engine

#include "viewer/zmatrix_tools.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>

#include "io/fortran_io.h"
#include "viewer/editing.h"
#include "viewer/internal_coords.h"

namespace quintor {

using namespace geom;

namespace {

constexpr double kA = constants::AngstromToBohr;
constexpr double kDeg = constants::DegToRad;

const char* const kFragmentMarks =
    "To move/rotate fragment in terms of Z-matrix, mark FOUR atoms in order X-A-B-C or X-Y-A-B (X,Y in marked "
    "fragment, A,B,C - in non-marked).";

std::string Label(const Session& s, int atom) { return FmtA(Trim(s.atomName[atom - 1]), 5); }

std::string NewLabel(const Session& s, const ViewerState& v, int atom, int number) {
  return SymbolOf(s, v, atom) + std::to_string(number);
}

// A value typed in a dialog that differs from the present one by less than
// 0.0001 gives the present one back exactly.
double Kept(double typed, double old) { return std::abs(typed - old) < 1e-4 ? old : typed; }

// Groups of a listing row: three blanks, the reference, the value.
std::string Groups(const ZRow& r, int width, auto&& label) {
  std::string text;
  if (r.ref1) text += "   " + FmtA(label(r.ref1), 5) + FmtF(r.length / kA, width, 5);
  if (r.ref2) text += "   " + FmtA(label(r.ref2), 5) + FmtF(r.valenceAngle, width, 5);
  if (r.ref3) text += "   " + FmtA(label(r.ref3), 5) + FmtF(r.dihedral, width, 5);
  return text;
}

}  // namespace

ZRow MakeZRow(const std::vector<Vec3>& xyz, int x, int a, int b, int c) {
  ZRow r{x, a, b, c, 0.0, 0.0, 0.0};
  auto at = [&](int i) { return xyz[i - 1]; };
  if (a) r.length = Distance(at(x) - at(a));
  if (a && b) r.valenceAngle = BondAngle(at(x), at(a), at(b));
  if (a && b && c) r.dihedral = TorsionAngle(at(x), at(a), at(b), at(c));
  return r;
}

Vec3 ZPosition(const Vec3& a, const Vec3& b, const Vec3& c, double r, double alpha, double theta) {
  const Vec3 e3 = Normalised(b - a);
  if (std::abs(alpha - 180.0) < 1e-6) return a - r * e3;
  Vec3 n = Cross(e3, c - a);
  if (Norm(n) < 1e-10) {  // a, b, c in a line: any plane through the axis will do
    n = Cross(e3, std::abs(e3[0]) < 0.9 ? Vec3{1, 0, 0} : Vec3{0, 1, 0});
  }
  n = Normalised(n);
  const Vec3 m = Normalised(Cross(n, e3));
  const double al = alpha * kDeg, th = theta * kDeg;
  return a + r * (std::cos(al) * e3 + (std::sin(al) * std::cos(th)) * m - (std::sin(al) * std::sin(th)) * n);
}

std::vector<ZRow> StructureZRows(const Session& s, int a, int b, int c) {
  std::vector<ZRow> rows;
  const int n = s.nAtoms;
  std::vector<char> placed(n + 1, 0);
  std::vector<int> order;
  for (int x : {a, b, c}) {
    if (x < 1 || x > n || placed[x]) continue;
    placed[x] = 1;
    order.push_back(x);
  }
  if (order.size() >= 1) rows.push_back(MakeZRow(s.xyz, order[0], 0, 0, 0));
  if (order.size() >= 2) rows.push_back(MakeZRow(s.xyz, order[1], order[0], 0, 0));
  if (order.size() >= 3) rows.push_back(MakeZRow(s.xyz, order[2], order[1], order[0], 0));
  while (order.size() >= 3 && static_cast<int>(order.size()) < n) {
    const size_t k = order.size();
    const int p1 = order[k - 3], p2 = order[k - 2], p3 = order[k - 1];
    int best = 0;
    double bestD = 999999.0;
    for (int x = 1; x <= n; ++x) {
      if (placed[x]) continue;
      const double d = Distance(s.xyz[x - 1] - s.xyz[p1 - 1]);
      if (d <= bestD) bestD = d, best = x;  // the higher number wins a tie
    }
    if (best == 0) break;
    placed[best] = 1;
    order.push_back(best);
    rows.push_back(MakeZRow(s.xyz, best, p1, p2, p3));
  }
  return rows;
}

bool WriteGaussianZMatrix(const Session& s, const ViewerState& v, const std::vector<ZRow>& rows,
                          const std::string& path) {
  std::ofstream out(path);
  if (!out) return false;
  std::vector<int> number(s.nAtoms + 1, 0);
  for (size_t k = 0; k < rows.size(); ++k) number[rows[k].atom] = static_cast<int>(k) + 1;
  out << "# SP\n\n Z-matrix written by Quintor\n\n" << s.opt.charge << " " << std::max(1, s.opt.multiplicity) << "\n";
  for (size_t k = 0; k < rows.size(); ++k) {
    const ZRow& r = rows[k];
    const std::string id = std::to_string(k + 1);
    std::string line = SymbolOf(s, v, r.atom);
    if (r.ref1) line += "  " + std::to_string(number[r.ref1]) + "  r" + id;
    if (r.ref2) line += "  " + std::to_string(number[r.ref2]) + "  a" + id;
    if (r.ref3) line += "  " + std::to_string(number[r.ref3]) + "  d" + id;
    out << line << "\n";
  }
  out << "Variables:\n";
  char buffer[64];
  for (size_t k = 0; k < rows.size(); ++k) {
    const ZRow& r = rows[k];
    if (r.ref1) std::snprintf(buffer, sizeof buffer, "r%zu= %.12f\n", k + 1, r.length / kA), out << buffer;
    if (r.ref2) std::snprintf(buffer, sizeof buffer, "a%zu= %.12f\n", k + 1, r.valenceAngle), out << buffer;
    if (r.ref3) std::snprintf(buffer, sizeof buffer, "d%zu= %.12f\n", k + 1, r.dihedral), out << buffer;
  }
  out << "\n";
  return static_cast<bool>(out);
}

void PlaceAtom(Session& s, const ViewerState& v, int type, int x, int a, int b, int c, double r, double second, double dihedral,
               const Vec3& cartesian) {
  Vec3& target = s.xyz[x - 1];
  if (type == 3) {
    target = kA * cartesian;
  } else {
    const Vec3 pa = s.xyz[a - 1], pb = s.xyz[b - 1], pc = s.xyz[c - 1];
    const double rb = r * kA;
    double alpha = second;
    if (type == 2) {  // the angle at A from the triangle R, |A-B|, R2
      const double ab = Distance(pa - pb), r2 = second * kA;
      const double cosine = (rb * rb + ab * ab - r2 * r2) / (2.0 * rb * ab);
      alpha = std::acos(std::clamp(cosine, -1.0, 1.0)) / kDeg;
    }
    for (const auto& [i, j] : {std::pair{c, b}, std::pair{a, b}}) {
      const double d = Distance(s.xyz[i - 1] - s.xyz[j - 1]) / kA;
      if (d >= 1e-4) continue;
      s.log.Line(), s.log.Line();
      s.log.Line(" WARNING ! Atoms " + FmtI(i, 2) + "(" + FmtA(SymbolOf(s, v, i), 2) + ") and " + FmtI(j, 2) + "(" +
                 FmtA(SymbolOf(s, v, j), 2) + ") are separated by distance " +
                 FmtF(d, 10, 6) + " A.");
      s.log.Line(" " + FmtI(x, 3) + FmtI(s.atomicNumber[x - 1], 3) + FmtF(r, 15, 6) + FmtF(second, 15, 6) +
                 FmtF(dihedral, 15, 6) + FmtI(a, 3) + FmtI(b, 3) + FmtI(c, 3));
      s.log.Line(" " + FmtI(x, 3) + FmtI(s.atomicNumber[x - 1], 3) + FmtF(target[0] / kA, 15, 6) +
                 FmtF(target[1] / kA, 15, 6) + FmtF(target[2] / kA, 15, 6));
    }
    target = ZPosition(pa, pb, pc, rb, alpha, dihedral);
  }
  s.log.Line("   " + Label(s, x) + FmtF(target[0] / kA, 15, 10) + FmtF(target[1] / kA, 15, 10) +
             FmtF(target[2] / kA, 15, 10));
}

int ZMatrixForAtom(Session& s, ViewerState& v, Prompts& p) {
  if (v.marked.size() != 4) {
    p.ShowMessage(
        "To generate the Z-matrix coordinates for the given atom, mark this atom X and 3 reference atoms A,B,C in "
        "order X-A-B-C.");
    return 0;
  }
  const int x = v.marked[0], a = v.marked[1], b = v.marked[2], c = v.marked[3];
  auto at = [&](int i) { return s.xyz[i - 1]; };
  const double rxa = Distance(at(x) - at(a)) / kA, rxb = Distance(at(x) - at(b)) / kA;
  const double angle = BondAngle(at(x), at(a), at(b)), dihedral = TorsionAngle(at(x), at(a), at(b), at(c));
  const Vec3 cart = (1.0 / kA) * at(x);
  const std::string caption = "Z-matrix coordinates for selected atom: Z-matrix parameters:";
  const int type = p.AskInteger(caption + " 1 R, angle, dihedral; 2 R(X-A), R(X-B), dihedral; 3 Cartesian; 0 Cancel", 0);
  if (type < 1 || type > 3) return 0;
  std::array<double, 3> old{};
  if (type == 1) old = {rxa, angle, dihedral};
  if (type == 2) old = {rxa, rxb, dihedral};
  if (type == 3) old = {cart[0], cart[1], cart[2]};
  const char* names[3][3] = {{"R", "Alpha", "Theta"}, {"R", "R", "Theta"}, {"X", "Y", "Z"}};
  std::array<double, 3> value{};
  for (int k = 0; k < 3; ++k) value[k] = Kept(AskNumber(p, caption, names[type - 1][k], old[k]), old[k]);
  if (value == old) return 1;
  s.log.Line(), s.log.Line();
  s.log.Line(" WARNING! Z-matrix coordinates were edited by user. New coordinates are:");
  std::string row = "   " + Label(s, x);
  if (type == 3) {
    for (double d : value) row += "   " + FmtF(d, 15, 10);
  } else {
    const int refs[3] = {a, type == 1 ? a : b, b};
    (void)refs;
    row += "   " + Label(s, a) + FmtF(value[0], 10, 5);
    row += "   " + Label(s, type == 1 ? b : b) + FmtF(value[1], 10, 5);
    row += "   " + Label(s, c) + FmtF(value[2], 10, 5);
    if (type == 2) row += FmtI(1, 5);
  }
  s.log.Line(row);
  PlaceAtom(s, v, type, x, a, b, c, value[0], value[1], value[2], value);
  v.structureEdited = true;
  return 1;
}

int ZMatrixForFragment(Session& s, ViewerState& v, Prompts& p) {
  EnsureFragmentMarks(s, v);
  if (v.marked.size() != 4) {
    p.ShowMessage(
        "To generate Z-matrix for the fragment, mark FOUR atoms in order X-A-B-C (X in marked fragment, A,B,C - in "
        "non-marked).");
    return 0;
  }
  const auto& m = v.marked;
  if (!InFragment(v, m[0]) || InFragment(v, m[1]) || InFragment(v, m[2]) || InFragment(v, m[3])) {
    p.ShowMessage(kFragmentMarks);
    return 0;
  }
  std::vector<ZRow> rows{MakeZRow(s.xyz, m[0], m[1], m[2], m[3])};
  for (int i = 1; i <= s.nAtoms; ++i) {
    if (i == m[0] || !InFragment(v, i)) continue;
    const ZRow& prev = rows.back();
    rows.push_back(MakeZRow(s.xyz, i, prev.atom, prev.ref1, prev.ref2));
  }
  MainLog& log = s.log;
  log.Line(), log.Line();
  log.Line(" Z-matrix for the marked fragment (unsorted, old numeration of atoms):");
  auto oldLabel = [&](int i) { return Trim(s.atomName[i - 1]); };
  for (size_t k = 0; k < rows.size(); ++k)
    log.Line(FmtI(static_cast<long long>(k) + 1, 5) + "   " + Label(s, rows[k].atom) + Groups(rows[k], 10, oldLabel));
  std::vector<int> number(s.nAtoms + 1, 0);
  int next = 0;
  for (const ZRow& r : rows) number[r.atom] = ++next;
  for (int i = 1; i <= s.nAtoms; ++i)
    if (number[i] == 0) number[i] = ++next;
  auto newLabel = [&](int i) { return NewLabel(s, v, i, number[i]); };
  log.Line(), log.Line();
  log.Line(" Z-matrix for the marked fragment (sorted, new numeration of atoms):");
  for (const ZRow& r : rows)
    log.Line(FmtI(number[r.atom], 5) + FmtI(r.atom, 5) + "   " + FmtA(newLabel(r.atom), 5) + Groups(r, 12, newLabel));
  std::vector<int> rest;
  for (int i = 1; i <= s.nAtoms; ++i)
    if (!InFragment(v, i)) rest.push_back(i);
  std::sort(rest.begin(), rest.end(), [&](int x, int y) { return number[x] < number[y]; });
  for (int i : rest) {
    std::string line = FmtI(number[i], 5) + FmtI(i, 5) + "   " + FmtA(newLabel(i), 5);
    for (int k = 0; k < 3; ++k) line += "   " + FmtF(s.xyz[i - 1][k] / kA, 12, 5);
    log.Line(line);
  }
  v.structureEdited = true;
  p.ShowMessage("Z-matrix for the selected fragment is generated and saved to the output file.");
  return 1;
}

int ZMatrixForStructure(Session& s, ViewerState& v, Prompts& p) {
  if (v.marked.size() < 3) {
    p.ShowMessage("To generate Z-matrix for the structure, mark 3 atoms in order A-B-C (first 3 reference atom).");
    return 0;
  }
  const std::vector<ZRow> rows = StructureZRows(s, v.marked[0], v.marked[1], v.marked[2]);
  MainLog& log = s.log;
  log.Line(), log.Line();
  log.Line(" Generated Z-matrix for the whole structure :");
  auto oldLabel = [&](int i) { return Trim(s.atomName[i - 1]); };
  for (size_t k = 0; k < rows.size(); ++k)
    log.Line(FmtI(static_cast<long long>(k) + 1, 5) + "   " + Label(s, rows[k].atom) + Groups(rows[k], 12, oldLabel));
  std::vector<int> number(s.nAtoms + 1, 0);
  for (size_t k = 0; k < rows.size(); ++k) number[rows[k].atom] = static_cast<int>(k) + 1;
  auto newLabel = [&](int i) { return NewLabel(s, v, i, number[i]); };
  log.Line(), log.Line();
  log.Line(" Generated Z-matrix for the whole structure (ATTENTION! New atom numeration!):");
  for (const ZRow& r : rows) log.Line(FmtA(newLabel(r.atom), 5) + Groups(r, 12, newLabel));
  v.structureEdited = true;
  p.ShowMessage("Z-matrix for the whole structure is generated and saved to the output file.");
  return 1;
}

int ReorientByZMatrix(Session& s, ViewerState& v, Prompts& p) {
  EnsureFragmentMarks(s, v);
  if (v.marked.size() != 4) {
    p.ShowMessage(kFragmentMarks);
    return 0;
  }
  const auto& m = v.marked;
  std::string pattern;
  for (int a : m) pattern += InFragment(v, a) ? 'F' : 'N';
  auto at = [&](int i) { return s.xyz[i - 1]; };
  auto ask = [&](const std::string& title, const char* name, double value) {
    return Kept(AskNumber(p, title + " Input Z-matrix parameters:", name, value), value);
  };
  v.structureEdited = true;
  if (pattern == "FNNN" || pattern == "NNNF") {
    const bool first = pattern == "FNNN";
    const int x = first ? m[0] : m[3], a = first ? m[1] : m[0], b = first ? m[2] : m[1], c = first ? m[3] : m[2];
    const std::string title = "Reorientation of fragment in terms of Z-matrix (1x3 mode)";
    const double r0 = Distance(at(x) - at(a)) / kA, alpha0 = BondAngle(at(x), at(a), at(b));
    const double theta0 = TorsionAngle(at(x), at(a), at(b), at(c));
    double r = ask(title, "R", r0);
    while (r < 0.0) r = Kept(AskNumber(p, "R value should be positive. Repeat input:", "R", r0), r0);
    double alpha = ask(title, "Alpha", alpha0);
    while (alpha < 0.0 || alpha > 180.0)
      alpha = Kept(AskNumber(p, "Alpha value should be in range 0-180 deg. Repeat input:", "Alpha", alpha0), alpha0);
    const double theta = ask(title, "Theta", theta0);
    const Vec3 d = at(b) - at(a);
    if (Norm(d) < 1e-10) return p.ShowMessage("Atoms A and B should not coincide!"), 1;
    if (Norm(at(c) - at(a)) < 1e-10) return p.ShowMessage("Atoms A and C should not coincide!"), 1;
    if (Norm(Cross(d, at(c) - at(a))) / (Norm(d) * Norm(d)) < 1e-10)
      return p.ShowMessage("Atoms A,B,C should not be collinear!"), 1;
    if (r == r0 && alpha == alpha0 && theta == theta0) return 1;
    const Vec3 shift = ZPosition(at(a), at(b), at(c), r * kA, alpha, theta) - at(x);
    for (int i = 0; i < s.nAtoms; ++i)
      if (v.fragmentMark[i] != 0) s.xyz[i] = s.xyz[i] + shift;
    return 1;
  }
  if (pattern == "FFNN" || pattern == "NNFF") {
    const bool first = pattern == "FFNN";
    const int x = first ? m[0] : m[2], y = first ? m[1] : m[3], a = first ? m[2] : m[0], b = first ? m[3] : m[1];
    const std::string title = "Reorientation of fragment in terms of Z-matrix (2x2 mode)";
    const double alpha0 = BondAngle(at(y), at(x), at(a)), theta0 = TorsionAngle(at(y), at(x), at(a), at(b));
    const double r0 = Distance(at(x) - at(a)) / kA;
    double alpha = ask(title, "Alpha", alpha0);
    while (alpha < 0.0 || alpha > 180.0)
      alpha = Kept(AskNumber(p, "Alpha value should be in range 0-180 deg. Repeat input:", "Alpha", alpha0), alpha0);
    const double theta = ask(title, "Theta", theta0);
    double r = ask(title, "R", r0);
    while (r < 0.0) r = Kept(AskNumber(p, "R value should be positive. Repeat input:", "R", r0), r0);
    if (theta != theta0 || r != r0)
      RotateAboutAxis(s, v, at(a), at(x), true, r == r0 ? 0.0 : r, std::remainder(theta - theta0, 360.0));
    if (alpha != alpha0) {
      const Vec3 n = Cross(at(y) - at(x), at(a) - at(x));
      if (Norm(n) < 1e-10) return p.ShowMessage("Atoms A,X,Y should not be collinear!"), 1;
      RotateAboutAxis(s, v, at(x), at(x) + Normalised(n), true, 0.0, -(alpha - alpha0));
    }
    return 1;
  }
  if (pattern == "FFFN" || pattern == "NFFF") {
    const bool first = pattern == "FFFN";
    const int x = first ? m[0] : m[1], y = first ? m[1] : m[2], z = first ? m[2] : m[3], a = first ? m[3] : m[0];
    const std::string title = "Reorientation of fragment in terms of Z-matrix (3x1 mode)";
    const double theta0 = TorsionAngle(at(a), at(x), at(y), at(z));
    const double theta = ask(title, "Theta", theta0);
    if (theta != theta0) RotateAboutAxis(s, v, at(x), at(y), true, 0.0, std::remainder(theta - theta0, 360.0));
    return 1;
  }
  v.structureEdited = false;
  p.ShowMessage(kFragmentMarks);
  return 0;
}

}  // namespace quintor

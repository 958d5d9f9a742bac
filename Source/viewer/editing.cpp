#include "viewer/editing.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cctype>
#include <cmath>

#include "io/fortran_io.h"
#include "numeric/jacobi.h"
#include "viewer/fragment_db.h"
#include "viewer/internal_coords.h"
#include "viewer/scene.h"
#include "viewer/structure_files.h"
#include "viewer/view_model.h"
#include "viewer/zmatrix_tools.h"

namespace quintor {

using namespace geom;

namespace {

constexpr double kA = constants::AngstromToBohr;
constexpr double kDeg = constants::DegToRad;

Vec3& At(Session& s, int atom) { return s.xyz[atom - 1]; }

int MarkedCount(const ViewerState& v) { return static_cast<int>(v.marked.size()); }

// Turn by `angle` radians about the unit axis `e` (right-hand screw).
Mat3 AxisRotation(const Vec3& e, double angle) {
  const double c = std::cos(angle), s = std::sin(angle), t = 1.0 - c;
  const double x = e[0], y = e[1], z = e[2];
  return Mat3{Vec3{t * x * x + c, t * x * y - s * z, t * x * z + s * y},
              Vec3{t * x * y + s * z, t * y * y + c, t * y * z - s * x},
              Vec3{t * x * z - s * y, t * y * z + s * x, t * z * z + c}};
}

// Rz(phi) Ry(theta): takes z onto the direction of u.
Mat3 AxisFrame(const Vec3& u) {
  const double l = Norm(u);
  const double theta = std::acos(std::clamp(u[2] / l, -1.0, 1.0)), phi = std::atan2(u[1], u[0]);
  return RotationZ(phi) * RotationY(theta);
}

// Centre of mass of the fragment; false when it holds no atom.
bool FragmentCentre(const Session& s, const ViewerState& v, Vec3& c) {
  double mass = 0.0;
  c = {0, 0, 0};
  for (int i = 0; i < s.nAtoms; ++i) {
    if (v.fragmentMark[i] == 0) continue;
    const double m = s.atomMass[i];
    c = c + m * s.xyz[i];
    mass += m;
  }
  if (mass <= 0.0) {
    // Atoms without mass still have a place: take their plain mean.
    int n = 0;
    c = {0, 0, 0};
    for (int i = 0; i < s.nAtoms; ++i)
      if (v.fragmentMark[i] != 0) c = c + s.xyz[i], ++n;
    if (n == 0) return false;
    c = (1.0 / n) * c;
    return true;
  }
  c = (1.0 / mass) * c;
  return true;
}

void Flood(ViewerState& v, int atom, int value) {
  std::vector<int> stack{atom};
  while (!stack.empty()) {
    const int a = stack.back();
    stack.pop_back();
    if (v.fragmentMark[a - 1] == value) continue;
    ++v.fragmentAtomCount;
    v.fragmentMark[a - 1] = value;
    for (auto it = v.bonds[a - 1].rbegin(); it != v.bonds[a - 1].rend(); ++it)
      if (v.fragmentMark[*it - 1] != value) stack.push_back(*it);
  }
}

// The atoms reached from `start` along the bonds without crossing the bond
// from `start` to `cut`.
std::vector<int> Side(const ViewerState& v, int start, int cut) {
  std::vector<int> mark(v.bonds.size(), 0);
  std::vector<int> stack{start};
  mark[start - 1] = 1;
  while (!stack.empty()) {
    const int a = stack.back();
    stack.pop_back();
    for (int b : v.bonds[a - 1]) {
      if ((a == start && b == cut) || mark[b - 1]) continue;
      mark[b - 1] = 1;
      stack.push_back(b);
    }
  }
  return mark;
}

std::string Shortest(double value) {
  std::array<char, 32> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
  return std::string(buffer.data(), end);
}

std::string Stars(char c) { return std::string(79, c); }

std::string BondSlots(const ViewerState& v, int atom) {
  std::string text;
  for (int k = 0; k < MaxBonds; ++k) {
    const auto& list = v.bonds[atom - 1];
    text += FmtI(k < static_cast<int>(list.size()) ? list[k] : 0, 4);
  }
  return text;
}

std::string CoordText(const Vec3& x) {
  std::string text;
  for (int k = 0; k < 3; ++k) text += FmtF(x[k] / kA, 12, 6);
  return text;
}

}  // namespace

std::string SymbolOf(const Session& s, const ViewerState& v, int atom) {
  if (static_cast<size_t>(atom - 1) < v.symbols.size()) return std::string(Trim(v.symbols[atom - 1]));
  std::string name(Trim(s.atomName[atom - 1]));
  while (!name.empty() && !std::isalpha(static_cast<unsigned char>(name.back()))) name.pop_back();
  return name;
}

void EnsureFragmentMarks(const Session& s, ViewerState& v) {
  if (static_cast<int>(v.fragmentMark.size()) != s.nAtoms) v.fragmentMark.assign(s.nAtoms, 0);
  if (static_cast<int>(v.fragmentBackup.size()) != s.nAtoms) v.fragmentBackup.assign(s.nAtoms, Vec3{});
  if (v.bonds.size() < static_cast<size_t>(s.nAtoms)) v.bonds.resize(s.nAtoms);
}

bool InFragment(const ViewerState& v, int atom) {
  return atom >= 1 && atom <= static_cast<int>(v.fragmentMark.size()) && v.fragmentMark[atom - 1] != 0;
}

std::vector<std::string> EditHelp(bool hasVibrations) {
  std::vector<std::string> lines = {" *** Fragment edit mode ***", " ARROWS, END, PGDN - rotation",
                                    " CTRL-ARROWS       - moving", " +,- - zooming the view",
                                    " F2  - Geometry view mode"};
  if (hasVibrations) lines.emplace_back(" F3  - view vibrations");
  for (const char* l :
       {" F10 - exit program", " 0   - put CM of fragment to origin", " .   - reduct to principal axes",
        " 5   - restore old coordinates", " H   - remove the fragment", " X   - coordinate axes on/off",
        " I   - identifiers on/off", " T   - balls on/off", " P   - perspective view on/off",
        " V   - set perspective factor", " F   - fragment/molecule mode", " C   - connect two marked atoms",
        " S   - set the translation step", " A   - set the rotation step", " B   - rotate fragment around bond",
        " E   - put atom of fragm to origin", " O   - orient OZX axes of fragment", " Z   - orient fragment by Z-matrix",
        " N   - add NEW atom or fragment", " G   - insert fragment to database", " K   - save configuration to disk",
        " Click Left  -   mark fragment", " Click Right - unmark fragments", " 4,6 - fragment rotation: X-axis",
        " 2,8 - fragment rotation: Y-axis", " 1,3 - fragment rotation: Z-axis", " R,L - horizontal fragment shift",
        " U,D - vertical fragment shift", " Q   - quit"})
    lines.emplace_back(l);
  for (size_t k = 0; k < lines.size(); ++k) {
    const size_t width = k == 0 ? 38 : 34;
    if (lines[k].size() < width) lines[k].resize(width, ' ');
  }
  return lines;
}

void EnterEditMode(ViewerState& v) {
  v.mode = ViewerMode::FragmentEdit;
  v.modeMenusGreyed = false;
  v.help = EditHelp(v.hasVibrations);
  if (v.fragmentAtomCount < 1) {
    std::fill(v.fragmentMark.begin(), v.fragmentMark.end(), 0);
    v.fragmentAtomCount = 0;
  }
}

void ClickFragment(const Session& s, ViewerState& v, MouseButton button, int atom) {
  EnsureFragmentMarks(s, v);
  if (button == MouseButton::Right) {
    std::fill(v.fragmentMark.begin(), v.fragmentMark.end(), 0);
    v.fragmentAtomCount = 0;
    return;
  }
  if (atom < 1 || atom > s.nAtoms) return;
  if (v.fragmentMark[atom - 1] == 1) {
    Flood(v, atom, -1);
    for (int& m : v.fragmentMark)
      if (m == -1) m = 0;
  } else {
    Flood(v, atom, 1);
  }
  for (int i = 0; i < s.nAtoms; ++i)
    if (v.fragmentMark[i] != 0) v.fragmentBackup[i] = s.xyz[i];
}

void MoveFragment(Session& s, ViewerState& v, int op, double step) {
  EnsureFragmentMarks(s, v);
  v.structureEdited = true;
  auto each = [&](auto&& f) {
    for (int i = 0; i < s.nAtoms; ++i)
      if (v.fragmentMark[i] != 0) f(i);
  };
  const Mat3& r = s.view.matrix;
  if (op >= 1 && op <= 3) {
    Vec3 e{0, 0, 0};
    e[op - 1] = step;
    const Vec3 d = Transposed(r) * e;
    each([&](int i) { s.xyz[i] = s.xyz[i] + d; });
    return;
  }
  if (op == -3) {
    each([&](int i) { s.xyz[i] = v.fragmentBackup[i]; });
    return;
  }
  Vec3 c;
  if (op < -3 || op > 0 || !FragmentCentre(s, v, c)) return;
  if (op == 0) {
    const Mat3 t = Transposed(r) * s.view.lastRotation * r;
    each([&](int i) { s.xyz[i] = t * (s.xyz[i] - c) + c; });
  } else if (op == -1) {
    each([&](int i) { s.xyz[i] = s.xyz[i] - c; });
  } else {
    std::vector<std::vector<double>> a(3, std::vector<double>(3, 0.0));
    each([&](int i) {
      const Vec3 y = s.xyz[i] - c;
      const double m = s.atomMass[i];
      a[0][0] += m * (y[1] * y[1] + y[2] * y[2]);
      a[1][1] += m * (y[0] * y[0] + y[2] * y[2]);
      a[2][2] += m * (y[0] * y[0] + y[1] * y[1]);
      a[0][1] -= m * y[0] * y[1];
      a[0][2] -= m * y[0] * y[2];
      a[1][2] -= m * y[1] * y[2];
    });
    a[1][0] = a[0][1], a[2][0] = a[0][2], a[2][1] = a[1][2];
    const Eigensystem e = Jacobi(a, 0);
    each([&](int i) {
      const Vec3 y = s.xyz[i] - c;
      Vec3 x{};
      for (int k = 0; k < 3; ++k)
        for (int row = 0; row < 3; ++row) x[k] += e.vectors[row][k] * y[row];
      s.xyz[i] = x + c;
    });
  }
}

void RotateAboutAxis(Session& s, ViewerState& v, const Vec3& a, const Vec3& b, bool bMoves, double distance,
                     double angle) {
  EnsureFragmentMarks(s, v);
  const Vec3 u = b - a;
  const double l = Norm(u);
  if (l == 0.0) return;
  // A distance of 0 keeps the length: no push at all, not one of rounding.
  const bool keep = std::abs(distance) < 1e-10;
  const Mat3 turn = AxisRotation((1.0 / l) * u, angle * kDeg);
  const Vec3 push = keep ? Vec3{0, 0, 0} : (bMoves ? 1.0 : -1.0) * ((distance * kA / l) * u - u);
  for (int i = 0; i < s.nAtoms; ++i) {
    if (v.fragmentMark[i] == 0) continue;
    s.xyz[i] = turn * (s.xyz[i] - a) + a + push;
  }
}

void RotateAboutAxis(Session& s, ViewerState& v, int a, int b, double distance, double angle) {
  EnsureFragmentMarks(s, v);
  const Vec3 pa = s.xyz[a - 1], pb = s.xyz[b - 1];
  RotateAboutAxis(s, v, pa, pb, InFragment(v, b), distance, angle);
}

double AskNumber(Prompts& p, const std::string& caption, const std::string& name, double value) {
  std::string text = caption;
  for (;;) {
    const std::string answer = p.AskText(text, Shortest(value));
    const auto r = ParseFortranReal(Trim(answer));
    if (r && std::isfinite(*r)) return *r;
    text = name + " value is invalid. Repeat input:";
  }
}

void BondOperation(Session& s, ViewerState& v, Prompts& p) {
  EnsureFragmentMarks(s, v);
  const bool ok = MarkedCount(v) == 2 && InFragment(v, v.marked[0]) != InFragment(v, v.marked[1]);
  if (!ok) {
    p.ShowMessage(
        "To move/rotate the fragment relatively the bond A->B, mark TWO atoms in DIFFERENT fragments. The moving "
        "fragment should be SELECTED.");
    return;
  }
  int a = v.marked[0], b = v.marked[1];
  if (InFragment(v, a)) std::swap(a, b);  // A is always the fixed one
  const double old = Norm(At(s, b) - At(s, a)) / kA;
  const std::string caption = "Input atom numbers of axis A->B, distance, and rotation angle:";
  double distance = AskNumber(p, caption + " A=" + std::to_string(a) + " B=" + std::to_string(b) + ", R(A)", "R", old);
  const double angle = AskNumber(p, caption + " rotation angle (deg)", "Phi", 0.0);
  if (distance < 1e-8 || std::abs(distance - old) < 1e-4) distance = old;
  v.structureEdited = true;
  RotateAboutAxis(s, v, a, b, distance, angle);
}

void ConnectAtoms(Session& s, ViewerState& v, Prompts& p) {
  if (MarkedCount(v) != 2) {
    p.ShowMessage("Mark TWO atoms to be connected.");
    return;
  }
  EnsureFragmentMarks(s, v);
  const int a = v.marked[0], b = v.marked[1];
  auto& la = v.bonds[a - 1];
  auto& lb = v.bonds[b - 1];
  if (static_cast<int>(la.size()) >= MaxBonds) return;
  const auto ia = std::find(la.begin(), la.end(), b);
  const auto ib = std::find(lb.begin(), lb.end(), a);
  if (ia != la.end() && ib != lb.end()) {
    la.erase(ia);
    lb.erase(ib);
  } else if (static_cast<int>(lb.size()) < MaxBonds) {
    if (ia == la.end()) la.push_back(b);
    if (ib == lb.end()) lb.push_back(a);
  }
}

void RemoveFragment(Session& s, ViewerState& v) {
  EnsureFragmentMarks(s, v);
  const int n = s.nAtoms;
  std::vector<int> newNumber(n + 1, 0);
  int kept = 0;
  for (int i = 1; i <= n; ++i)
    if (v.fragmentMark[i - 1] == 0) newNumber[i] = ++kept;
  auto compact = [&](auto& list) {
    size_t k = 0;
    for (int i = 1; i <= n; ++i)
      if (newNumber[i] != 0 && static_cast<size_t>(i - 1) < list.size()) {
        if (k != static_cast<size_t>(i - 1)) list[k] = std::move(list[i - 1]);  // never onto itself
        ++k;
      }
    if (list.size() > k) list.resize(k);
  };
  compact(s.atomicNumber);
  compact(s.atomName);
  compact(s.atomMass);
  compact(s.xyz);
  compact(v.screen);
  compact(v.symbols);
  compact(v.fragmentBackup);
  compact(v.bonds);
  for (auto& list : v.bonds) {
    std::vector<int> renumbered;
    for (int b : list)
      if (newNumber[b] != 0) renumbered.push_back(newNumber[b]);
    list = std::move(renumbered);
  }
  std::vector<int> marked;
  for (int m : v.marked)
    if (newNumber[m] != 0) marked.push_back(newNumber[m]);
  v.marked = std::move(marked);
  s.nAtoms = kept;
  v.fragmentMark.assign(kept, 0);
  s.molMass = 0.0;
  for (double m : s.atomMass) s.molMass += m;
  v.structureEdited = true;
  v.atomCountChanged = -1;
}

int OrientFragment(Session& s, ViewerState& v, int flag, Prompts& p) {
  EnsureFragmentMarks(s, v);
  const int count = MarkedCount(v);
  if (flag == 1) {
    if (count < 1) return 0;
    v.structureEdited = true;
    const Vec3 o = At(s, v.marked[0]);
    for (int i = 0; i < s.nAtoms; ++i)
      if (v.fragmentMark[i] != 0) s.xyz[i] = s.xyz[i] - o;
    return 1;
  }
  bool ok = count >= 2;
  for (int m : v.marked) ok = ok && InFragment(v, m);
  if (ok) ok = Norm(At(s, v.marked[1]) - At(s, v.marked[0])) > 0.0;
  if (!ok) {
    p.ShowMessage("To center fragment relatively OXYZ axes, mark atoms in marked fragment in order O-Z-X-Y.");
    return 0;
  }
  v.structureEdited = true;
  const Vec3 o = At(s, v.marked[0]);
  const Mat3 mt = Transposed(AxisFrame(At(s, v.marked[1]) - o));
  for (int i = 0; i < s.nAtoms; ++i)
    if (v.fragmentMark[i] != 0) s.xyz[i] = mt * (s.xyz[i] - o);
  if (count == 4) {
    const Vec3 d = At(s, v.marked[3]) - At(s, v.marked[2]);
    const Mat3 turn = RotationZ(-std::atan2(d[1], d[0]));
    for (int i = 0; i < s.nAtoms; ++i)
      if (v.fragmentMark[i] != 0) s.xyz[i] = turn * s.xyz[i];
  }
  for (int i = 0; i < s.nAtoms; ++i)
    if (v.fragmentMark[i] != 0) s.xyz[i] = s.xyz[i] + o;
  return 1;
}

void ReorientMolecule(Session& s, ViewerState& v, Prompts& p) {
  if (MarkedCount(v) != 3) {
    p.ShowMessage("To re-orient molecule relatively OXYZ axes, mark 3 atoms in order O-X-Y.");
    return;
  }
  const Vec3 o = At(s, v.marked[0]);
  const Vec3 b = At(s, v.marked[1]) - o, c = At(s, v.marked[2]) - o;
  const Vec3 e3 = Normalised(Cross(b, c));
  if (Norm(b) == 0.0 || Norm(e3) == 0.0) return;  // O, X, Y in a line: no frame
  const Mat3 m{Normalised(b), Normalised(Cross(e3, b)), e3};
  for (int i = 0; i < s.nAtoms; ++i) s.xyz[i] = m * (s.xyz[i] - o);
}

void SaveConfiguration(Session& s, const ViewerState& v, Prompts& p) {
  const std::string label = p.AskText(" Enter the label for the configuration to be saved:", "Orientation1");
  MainLog& log = s.log;
  log.Line(), log.Line(), log.Line();
  log.Line(Stars('*'));
  log.Line(FmtA(label, 80));
  log.Line();
  log.Line("Molecular Coordinates (A) -- Coordinates in the molecular (moving) frame:");
  log.Line("(They changes when you distort the interatomic distances in the molecule)");
  log.Line(Stars('-'));
  auto row = [&](int i, const Vec3& x) {
    std::string line = " ";
    line += FmtA(s.atomName[i], 5);
    line += "  ";
    line += FmtI(s.atomicNumber[i], 2);
    line += " ";
    line += CoordText(x);
    line += BondSlots(v, i + 1);
    return line;
  };
  for (int i = 0; i < s.nAtoms; ++i) log.Line(row(i, s.xyz[i]));
  log.Line(Stars('-'));
  log.Line();
  log.Line("View Coordinates, (A)  -- Coordinates in the laboratory (fixed) frame:");
  log.Line("(They changes when you move or rotate the molecule on screen)");
  log.Line(Stars('-'));
  for (int i = 0; i < s.nAtoms; ++i) log.Line(row(i, LabCoords(s.view, s.xyz[i])));
  log.Line(Stars('-'));
  log.Line();
  log.Line(Stars('*'));
}

void SaveFragmentConfiguration(Session& s, const ViewerState& v, Prompts& p) {
  const bool fragment = v.fragmentAtomCount != 0;
  const std::string label =
      fragment ? p.AskText(" Enter the label for SELECTED FRAGMENT to be saved:", "Fragment1")
               : p.AskText(" Enter the label for the configuration to be saved:", " Orientation1");
  auto written = [&](int i) { return !fragment || InFragment(v, i + 1); };
  MainLog& log = s.log;
  log.Line(), log.Line(), log.Line();
  log.Line(Stars('*'));
  log.Line(FmtA(label, 80));
  log.Line();
  auto block = [&](const char* heading, const char* remark, bool lab) {
    log.Line(heading);
    log.Line(remark);
    log.Line(Stars('-'));
    int running = 0;
    for (int i = 0; i < s.nAtoms; ++i) {
      if (!written(i)) continue;
      std::string name = SymbolOf(s, v, i + 1) + std::to_string(++running);
      name.resize(5, ' ');
      const Vec3 x = lab ? LabCoords(s.view, s.xyz[i]) : s.xyz[i];
      std::string line = " ";
      line += name;
      line += "  ";
      line += FmtI(s.atomicNumber[i], 2);
      line += " ";
      line += CoordText(x);
      line += BondSlots(v, i + 1);
      log.Line(line);
    }
    log.Line(Stars('-'));
    log.Line();
  };
  block("Coordinates in a molecular (rotating) frame, (A):",
        "(They changes when you distort the interatomic distances in the molecule)", false);
  block("Coordinates in a laboratory  (fixed)  frame, (A):", "(They changes when you move or rotate the molecule)",
        true);
  log.Line(Stars('*'));
}

void SetInternalCoordinate(Session& s, ViewerState& v, Prompts& p) {
  EnsureFragmentMarks(s, v);
  const int count = MarkedCount(v);
  if (count < 2) {
    p.ShowMessage("To set a bond length, an angle or a dihedral, mark 2, 3 or 4 atoms.");
    return;
  }
  const auto& m = v.marked;
  // The moving side is cut off at the atom the value turns or pushes about:
  // B of A-B, B of A-B-C (the side of A or of C), B and C of A-B-C-D.
  const int pivot = count == 2 ? m[0] : m[1];
  const int right = count == 2 ? m[1] : m[2];
  const int leftStart = count == 3 ? m[0] : pivot;
  const int leftCut = count == 3 ? m[1] : right;
  const std::vector<int> sideR = Side(v, right, pivot), sideL = Side(v, leftStart, leftCut);
  if (sideR[pivot - 1] || (count == 3 && sideL[m[2] - 1])) {
    p.ShowMessage("The marked bond lies in a ring: its two sides can not be moved apart.");
    return;
  }
  const int nR = static_cast<int>(std::count(sideR.begin(), sideR.end(), 1));
  const int nL = static_cast<int>(std::count(sideL.begin(), sideL.end(), 1));
  const bool moveRight = nR <= nL;  // the smaller side moves; the side of the last atom on a tie
  const std::vector<int> saved = v.fragmentMark;
  v.fragmentMark = moveRight ? sideR : sideL;
  auto pos = [&](int k) { return At(s, m[k]); };
  if (count == 2) {
    const double old = Norm(pos(1) - pos(0)) / kA;
    const double r = AskNumber(p, " Bond length (A) of the marked atoms:", "R", old);
    if (r > 0.0 && std::abs(r - old) >= 1e-4) RotateAboutAxis(s, v, pos(0), pos(1), moveRight, r, 0.0);
  } else if (count == 3) {
    const double old = BondAngle(pos(0), pos(1), pos(2));
    const double alpha = AskNumber(p, " Valence angle (deg) of the marked atoms:", "Alpha", old);
    const Vec3 n = Cross(pos(0) - pos(1), pos(2) - pos(1));
    if (std::abs(alpha - old) < 1e-4) {
      // unchanged: nothing moves
    } else if (alpha >= 0.0 && alpha <= 180.0 && Norm(n) > 1e-10) {
      // Opening the angle turns C away from A about the normal at B.
      const double turn = moveRight ? alpha - old : old - alpha;
      RotateAboutAxis(s, v, pos(1), pos(1) + Normalised(n), true, 0.0, turn);
    } else if (Norm(n) <= 1e-10) {
      p.ShowMessage("Atoms A,B,C should not be collinear!");
    }
  } else {
    const double old = TorsionAngle(pos(0), pos(1), pos(2), pos(3));
    const double tau = AskNumber(p, " Dihedral (deg) of the marked atoms:", "Theta", old);
    const double delta = std::remainder(tau - old, 360.0);
    if (std::abs(delta) >= 1e-4) RotateAboutAxis(s, v, pos(1), pos(2), moveRight, 0.0, moveRight ? delta : -delta);
  }
  v.fragmentMark = saved;
  v.structureEdited = true;
}

StructureSnapshot TakeSnapshot(const Session& s, const ViewerState& v, const std::string& what) {
  return {what,          s.nAtoms, s.atomicNumber,        s.atomName,         s.atomMass,
          s.molMass,     s.xyz,    v.bonds,               v.marked,           v.fragmentMark,
          v.fragmentAtomCount,     v.fragmentBackup,      v.symbols,          v.structureEdited,
          v.atomCountChanged};
}

namespace {

void Restore(Session& s, ViewerState& v, const StructureSnapshot& x) {
  s.nAtoms = x.nAtoms;
  s.atomicNumber = x.atomicNumber;
  s.atomName = x.atomName;
  s.atomMass = x.atomMass;
  s.molMass = x.molMass;
  s.xyz = x.xyz;
  v.bonds = x.bonds;
  v.marked = x.marked;
  v.fragmentMark = x.fragmentMark;
  v.fragmentAtomCount = x.fragmentAtomCount;
  v.fragmentBackup = x.fragmentBackup;
  v.symbols = x.symbols;
  v.structureEdited = x.structureEdited;
  v.atomCountChanged = x.atomCountChanged;
  v.screen.resize(x.nAtoms);
}

bool Step(Session& s, ViewerState& v, std::vector<StructureSnapshot>& from, std::vector<StructureSnapshot>& to,
          const char* verb) {
  if (from.empty()) return false;
  StructureSnapshot back = std::move(from.back());
  from.pop_back();
  to.push_back(TakeSnapshot(s, v, back.what));
  Restore(s, v, back);
  v.messages.push_back(std::string(" ") + verb + ": " + back.what);
  return true;
}

}  // namespace

void RecordEdit(Session& s, ViewerState& v, StructureSnapshot before) {
  if (before.xyz == s.xyz && before.nAtoms == s.nAtoms && before.bonds == v.bonds) return;
  v.undo.push_back(std::move(before));
  v.redo.clear();
}

bool Undo(Session& s, ViewerState& v) { return Step(s, v, v.undo, v.redo, "Undone"); }
bool Redo(Session& s, ViewerState& v) { return Step(s, v, v.redo, v.undo, "Redone"); }

std::optional<Outcome> DispatchEditKey(Session& s, ViewerState& v, Key key, Prompts& p) {
  EnsureFragmentMarks(s, v);
  Outcome out;
  const bool edit = v.mode == ViewerMode::FragmentEdit;
  const int c = key.code;
  auto undoable = [&](const std::string& what, auto&& f) {
    Undoable(s, v, what, f);
    return out;
  };
  if (c == 26 || c == 25) {  // Ctrl+Z, Ctrl+Y
    if (!(c == 26 ? Undo(s, v) : Redo(s, v))) out.beep = true;
    return out;
  }
  if (c == '=') return undoable("set bond length, angle or dihedral", [&] { SetInternalCoordinate(s, v, p); });
  if (!edit) {
    switch (c) {
      case 'c': case 'C': return undoable("connect atoms", [&] { ConnectAtoms(s, v, p); });
      case 'k': case 'K': SaveConfiguration(s, v, p); return out;
      case 'Y': return undoable("Z-matrix of an atom", [&] { ZMatrixForAtom(s, v, p); });
      case 'J': return undoable("Z-matrix of the fragment", [&] { ZMatrixForFragment(s, v, p); });
      case 'F': ZMatrixForStructure(s, v, p); return out;
      default: return std::nullopt;
    }
  }
  if (key.code == 0 || key.code == 224) {
    const double step = s.view.rotationStep, t = s.view.translationStep;
    auto turn = [&](double z, double y, double x) {
      return undoable("turn of the fragment", [&] {
        const Mat3 saved = s.view.matrix;
        RotateView(s.view, z, y, x);
        s.view.matrix = saved;  // the fragment turns, not the view
        MoveFragment(s, v, 0, 0.0);
      });
    };
    auto shift = [&](int op, double d) { return undoable("shift of the fragment", [&] { MoveFragment(s, v, op, d); }); };
    switch (key.ext) {
      case ext_key::F4: return out;
      case ext_key::Right: return turn(0, +step, 0);
      case ext_key::Left: return turn(0, -step, 0);
      case ext_key::Up: return turn(0, 0, +step);
      case ext_key::Down: return turn(0, 0, -step);
      case ext_key::End: return turn(-step, 0, 0);
      case ext_key::PgDn: return turn(+step, 0, 0);
      case ext_key::CtrlRight: return shift(1, +t);
      case ext_key::CtrlLeft: return shift(1, -t);
      case ext_key::CtrlUp: return shift(2, +t);
      case ext_key::CtrlDown: return shift(2, -t);
      case ext_key::Ins: return undoable("fragment to the origin", [&] { MoveFragment(s, v, -1, 0.0); });
      case ext_key::Del: return undoable("fragment to its principal axes", [&] { MoveFragment(s, v, -2, 0.0); });
      case ext_key::PgUp: case ext_key::Home: return out;
      default: return std::nullopt;
    }
  }
  const double step = s.view.rotationStep, t = s.view.translationStep;
  auto turn = [&](double z, double y, double x) {
    return undoable("turn of the fragment", [&] {
      const Mat3 saved = s.view.matrix;
      RotateView(s.view, z, y, x);
      s.view.matrix = saved;
      MoveFragment(s, v, 0, 0.0);
    });
  };
  auto shift = [&](int op, double d) { return undoable("shift of the fragment", [&] { MoveFragment(s, v, op, d); }); };
  switch (c) {
    case '6': return turn(0, +step, 0);
    case '4': return turn(0, -step, 0);
    case '8': return turn(0, 0, +step);
    case '2': return turn(0, 0, -step);
    case '1': return turn(-step, 0, 0);
    case '3': return turn(+step, 0, 0);
    case 'r': case 'R': return shift(1, +t);
    case 'l': case 'L': return shift(1, -t);
    case 'u': case 'U': return shift(2, +t);
    case 'd': case 'D': return shift(2, -t);
    case '+': return shift(3, +t);
    case '-': return shift(3, -t);
    case '0': return undoable("fragment to the origin", [&] { MoveFragment(s, v, -1, 0.0); });
    case '.': return undoable("fragment to its principal axes", [&] { MoveFragment(s, v, -2, 0.0); });
    case '5':
      if (p.AskYesNo("Come back to initial configuration?"))
        Undoable(s, v, "return to the last click", [&] { MoveFragment(s, v, -3, 0.0); });
      return out;
    case 'h': case 'H': return undoable("removal of the fragment", [&] { RemoveFragment(s, v); });
    case 'b': case 'B': return undoable("bond operation", [&] { BondOperation(s, v, p); });
    case 'z': case 'Z': return undoable("reorientation by Z-matrix", [&] { ReorientByZMatrix(s, v, p); });
    case 'o': case 'O': return undoable("fragment oriented by O-Z-X-Y", [&] { OrientFragment(s, v, 0, p); });
    case 'e': case 'E': return undoable("atom of the fragment to the origin", [&] { OrientFragment(s, v, 1, p); });
    case 'y': case 'Y': return undoable("Z-matrix of an atom", [&] { ZMatrixForAtom(s, v, p); });
    case 'j': case 'J': return undoable("Z-matrix of the fragment", [&] { ZMatrixForFragment(s, v, p); });
    case 'f': case 'F': ZMatrixForStructure(s, v, p); return out;
    case 'k': case 'K': SaveFragmentConfiguration(s, v, p); return out;
    case 'c': case 'C': return undoable("connect atoms", [&] { ConnectAtoms(s, v, p); });
    case 'n': case 'N': return undoable("new atom/fragment", [&] { AddFragmentCommand(s, v, p); });
    case 'g': case 'G': StoreFragmentCommand(s, v, p); return out;
    default: return std::nullopt;
  }
}

std::optional<Outcome> DispatchEditMenu(Session& s, ViewerState& v, MenuCommand c, Prompts& p) {
  EnsureFragmentMarks(s, v);
  Outcome out;
  auto undoable = [&](const std::string& what, auto&& f) {
    Undoable(s, v, what, f);
    return out;
  };
  switch (c) {
    case MenuCommand::EditStructure: EnterEditMode(v); out.helpChanged = true; return out;
    case MenuCommand::Connect: return undoable("connect atoms", [&] { ConnectAtoms(s, v, p); });
    case MenuCommand::SaveConfiguration: SaveConfiguration(s, v, p); return out;
    case MenuCommand::ZMatrixMolecule: ZMatrixForStructure(s, v, p); return out;
    case MenuCommand::Reorient: return undoable("reorientation of the molecule", [&] { ReorientMolecule(s, v, p); });
    case MenuCommand::ZMatrixAtom: return undoable("Z-matrix of an atom", [&] { ZMatrixForAtom(s, v, p); });
    case MenuCommand::BondOperation: return undoable("bond operation", [&] { BondOperation(s, v, p); });
    case MenuCommand::ReorientByZMatrix:
      return undoable("reorientation by Z-matrix", [&] { ReorientByZMatrix(s, v, p); });
    case MenuCommand::ReorientOXZ: return undoable("fragment oriented by O-Z-X-Y", [&] { OrientFragment(s, v, 0, p); });
    case MenuCommand::PlaceAtOrigin:
      return undoable("atom of the fragment to the origin", [&] { OrientFragment(s, v, 1, p); });
    case MenuCommand::RemoveFragment: return undoable("removal of the fragment", [&] { RemoveFragment(s, v); });
    case MenuCommand::SaveFragment: SaveFragmentConfiguration(s, v, p); return out;
    case MenuCommand::ZMatrixFragment: return undoable("Z-matrix of the fragment", [&] { ZMatrixForFragment(s, v, p); });
    case MenuCommand::Undo: if (!Undo(s, v)) out.beep = true; return out;
    case MenuCommand::Redo: if (!Redo(s, v)) out.beep = true; return out;
    case MenuCommand::SaveAs: {
      const std::string path = p.AskText(" Save the structure as (.xyz, .gjf, .mop, .inp, .gzmat):", "structure.xyz");
      const bool zmat = path.size() > 6 && path.ends_with(".gzmat");
      if (!(zmat ? WriteStructureZMatrix(s, v, path) : WriteStructureFile(s, v, path)))
        p.ShowMessage("Can not write " + path + " (extensions: xyz, gjf, com, mop, inp, gzmat)");
      return out;
    }
    case MenuCommand::SetInternal:
      return undoable("set bond length, angle or dihedral", [&] { SetInternalCoordinate(s, v, p); });
    default: return std::nullopt;
  }
}

}  // namespace quintor

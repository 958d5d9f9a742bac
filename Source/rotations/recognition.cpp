#include "rotations/recognition.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <tuple>

#include "analysis/connectivity.h"
#include "numeric/jacobi.h"
#include "io/fortran_io.h"
#include "rotations/reduced_moment.h"

namespace quintor {

using namespace geom;

namespace {

constexpr int kMaxRotors = 20;
constexpr int kClashSteps = 36;
constexpr double kClashStep = 10.0;  // degrees
constexpr int kMaxFold = 10;
// The displacement of a rotation is the central difference over this turn,
// in degrees: small enough for the tangent, large enough for the rounding.
constexpr double kProbeAngle = 0.01;

bool Contains(const std::vector<int>& atoms, int a) { return std::find(atoms.begin(), atoms.end(), a) != atoms.end(); }

bool SameTable(const NeighbourTable& a, const NeighbourTable& b) { return a.count == b.count && a.slots == b.slots; }

// One candidate rotation before the tests that make it one.
struct Candidate {
  std::vector<int> moving, other;
  int atom1 = 0, atom2 = 0;  // 0: centre of mass of that side
};

// Whether the moving group turns a full circle in steps of 10 degrees
// without making or breaking a bond anywhere.
bool PassesClashTest(const std::vector<int>& nuclear, const std::vector<double>& masses,
                     const std::vector<Vec3>& xyz, const NeighbourTable& reference, const Candidate& c,
                     NeighbourTable& scratch) {
  const AxisPoints axis = RotationAxisPoints(masses, xyz, c.moving, {c.atom1, c.atom2});
  std::vector<Vec3> turned = xyz;
  for (int step = 1; step <= kClashSteps; ++step) {
    RotateAtoms(axis.p1, axis.p2, kClashStep, c.moving, turned);
    Connect(0, nuclear, turned, NeighbourSlots, scratch);
    if (!SameTable(reference, scratch)) return false;
  }
  return true;
}

// The largest n in 1..10 for which turning `group` by 360/n leaves the
// molecule the same arrangement of like atoms.
int GroupSymmetry(const std::vector<int>& nuclear, const std::vector<Vec3>& xyz, const std::vector<int>& group,
                  const AxisPoints& axis) {
  int fold = 1;
  for (int n = 2; n <= kMaxFold; ++n) {
    std::vector<Vec3> turned = xyz;
    RotateAtoms(axis.p1, axis.p2, 360.0 / n, group, turned);
    if (EquivC(nuclear, xyz, turned).equivalent) fold = n;
  }
  return fold;
}

// A top of an optimised molecule often leans a few degrees off its bond
// (the methyl of methylamine by 3.4 degrees), and a turn about the bond then
// misses its own symmetry. Its own axis is the principal axis of the group
// nearest the bond, through the group's centre of mass; only axes within
// this angle of the bond count.
constexpr double kMostTilt = 15.0;  // degrees

// The principal axis of `group` (centre of mass, direction) nearest the
// bond direction of `axis`; false when none lies within kMostTilt of it.
bool OwnAxis(const std::vector<double>& masses, const std::vector<Vec3>& xyz, const std::vector<int>& group,
             const AxisPoints& axis, AxisPoints& own) {
  if (group.size() < 3) return false;
  const Vec3 c = GroupCentreOfMass(masses, xyz, group);
  std::vector<std::vector<double>> inertia(3, std::vector<double>(3, 0.0));
  for (int a : group) {
    const Vec3 d = xyz[a - 1] - c;
    const double m = masses[a - 1], r2 = Dot(d, d);
    for (int i = 0; i < 3; ++i)
      for (int j = 0; j < 3; ++j) inertia[i][j] += m * ((i == j ? r2 : 0.0) - d[i] * d[j]);
  }
  const Eigensystem e = Jacobi(inertia, 1);
  const Vec3 bond = Normalised(axis.p2 - axis.p1);
  double best = 0.0;
  Vec3 direction{};
  for (int k = 0; k < 3; ++k) {
    const Vec3 v{e.vectors[0][k], e.vectors[1][k], e.vectors[2][k]};
    const double cosine = std::fabs(Dot(v, bond));
    if (cosine > best) best = cosine, direction = Dot(v, bond) < 0.0 ? -1.0 * v : v;
  }
  if (best < std::cos(kMostTilt * constants::DegToRad)) return false;
  own = axis;
  own.p1 = c;
  own.p2 = c + direction;
  return true;
}

// The fold of `group`: about the bond, or, when that finds less, about the
// group's own axis (`tilted` then says so).
int GroupFold(const std::vector<int>& nuclear, const std::vector<double>& masses, const std::vector<Vec3>& xyz,
              const std::vector<int>& group, const AxisPoints& axis, bool& tilted) {
  tilted = false;
  const int aboutBond = GroupSymmetry(nuclear, xyz, group, axis);
  AxisPoints own;
  if (!OwnAxis(masses, xyz, group, axis, own)) return aboutBond;
  const int aboutOwn = GroupSymmetry(nuclear, xyz, group, own);
  if (aboutOwn <= aboutBond) return aboutBond;
  tilted = true;
  return aboutOwn;
}

}  // namespace

Mat3 IntRotMat(const Vec3& p1, const Vec3& p2, double angle) {
  const Vec3 d = p2 - p1;
  const double length = Norm(d);
  if (length == 0.0) throw RotationAxisError();
  const Vec3 u = (1.0 / length) * d;
  // The axis onto z: about z into the xz plane, then about y onto z.
  const double azimuth = std::atan2(u[1], u[0]);
  const double polar = std::acos(std::clamp(u[2], -1.0, 1.0));
  const Mat3 align = RotationY(-polar) * RotationZ(-azimuth);
  return Transposed(align) * RotationZ(angle * constants::DegToRad) * align;
}

void RotateAtoms(const Vec3& p1, const Vec3& p2, double angle, const std::vector<int>& atoms,
                 std::vector<Vec3>& xyz) {
  const Mat3 r = IntRotMat(p1, p2, angle);
  for (int a : atoms) xyz[a - 1] = p1 + r * (xyz[a - 1] - p1);
}

AxisPoints RotationAxisPoints(const std::vector<double>& masses, const std::vector<Vec3>& xyz,
                              const std::vector<int>& group, const std::vector<int>& axis) {
  AxisPoints p;
  p.atom1 = axis.size() > 0 ? axis[0] : 0;
  p.atom2 = axis.size() > 1 ? axis[1] : 0;
  if (p.atom2 != 0 && Contains(group, p.atom2) && !Contains(group, p.atom1)) std::swap(p.atom1, p.atom2);
  const int n = static_cast<int>(xyz.size());
  p.p1 = p.atom1 > 0 && p.atom1 <= n ? xyz[p.atom1 - 1] : GroupCentreOfMass(masses, xyz, group);
  p.p2 = p.atom2 > 0 && p.atom2 <= n ? xyz[p.atom2 - 1] : GroupCentreOfMass(masses, xyz, OtherGroup(n, group));
  return p;
}

int RotationFold(int n1, int n2, bool foldProduct) {
  return foldProduct ? n1 * n2 : std::lcm(std::max(n1, 1), std::max(n2, 1));
}

Recognition ARIR(const std::vector<int>& nuclear, const std::vector<double>& masses,
                 const std::vector<Vec3>& xyz, const std::vector<std::string>& names, MainLog& log,
                 bool foldProduct) {
  Recognition found;
  const int n = static_cast<int>(xyz.size());
  NeighbourTable table, scratch;
  Connect(0, nuclear, xyz, NeighbourSlots, table);
  const FragmentList fragments = Fragments(table, false);
  const int nFrg = fragments.Count();
  if (nFrg > 2) {
    log.Line(" WARNING! The molecule contains" + FmtI(nFrg, 3) + " separate fragments.");
    log.Line(" The internal rotations recognition can be invalid if NFrg>2.");
    log.Line(" You can consider binding some fragments to indicate");
    log.Line(" the rotation axes explicitly.");
    return found;
  }

  std::vector<Candidate> candidates;
  if (nFrg == 2) {
    // The two molecules turn against each other about the line of their centres.
    const auto& f1 = fragments.fragments[0];
    const auto& f2 = fragments.fragments[1];
    candidates.push_back(f1.size() <= f2.size() ? Candidate{f1, f2, 0, 0} : Candidate{f2, f1, 0, 0});
  }
  std::vector<int> fragmentSize(n, n);
  for (const auto& f : fragments.fragments)
    for (int a : f) fragmentSize[a - 1] = static_cast<int>(f.size());

  std::vector<int> marks(n, 0);
  int mark = 0;
  for (int i = 1; i <= n; ++i) {
    const int stored = std::min(table.count[i - 1], NeighbourSlots);
    for (int k = 0; k < stored; ++k) {
      const int j = table.slots[i - 1][k];
      if (j <= i) continue;  // each covalent bond once
      const FloodResult side = FloodFill(i, 0, table, j, ++mark, marks);
      const int size = fragmentSize[i - 1];
      // A terminal atom on either side turns nothing; a second way into j is a ring.
      if (side.count == 1 || side.count == size - 1 || side.blockedContacts > 1) continue;
      std::vector<int> sideOfI;
      for (int a = 1; a <= n; ++a)
        if (marks[a - 1] == mark) sideOfI.push_back(a);
      Candidate c;
      if (side.count <= size - side.count) {
        c = {sideOfI, OtherGroup(n, sideOfI), i, j};
      } else {
        std::vector<int> sideOfJ;
        for (int a = 1; a <= n; ++a)
          if (marks[a - 1] != mark) sideOfJ.push_back(a);
        // Within a pair of molecules the side of j is cut to its own molecule.
        if (nFrg == 2) {
          std::vector<int> own;
          const auto& f = Contains(fragments.fragments[0], j) ? fragments.fragments[0] : fragments.fragments[1];
          for (int a : sideOfJ)
            if (Contains(f, a)) own.push_back(a);
          sideOfJ = std::move(own);
        }
        c = {sideOfJ, OtherGroup(n, sideOfJ), j, i};
      }
      candidates.push_back(std::move(c));
    }
  }

  std::vector<Candidate> rotations;
  for (const Candidate& c : candidates) {
    if (static_cast<int>(rotations.size()) == kMaxRotors) break;
    if (PassesClashTest(nuclear, masses, xyz, table, c, scratch)) rotations.push_back(c);
  }
  if (rotations.empty()) {
    log.Line(" ARIR: No internal rotations Found");
    return found;
  }

  for (const Candidate& c : rotations) {
    const AxisPoints axis = RotationAxisPoints(masses, xyz, c.moving, {c.atom1, c.atom2});
    bool tilted1 = false, tilted2 = false;
    const int n1 = GroupFold(nuclear, masses, xyz, c.moving, axis, tilted1);
    const int n2 = GroupFold(nuclear, masses, xyz, c.other, axis, tilted2);
    for (const auto& [tilted, fold, atom] : {std::tuple{tilted1, n1, c.atom1}, std::tuple{tilted2, n2, c.atom2}})
      if (tilted)
        log.Line(" WARNING! Internal rotation" + FmtI(static_cast<long long>(found.rotors.size() + 1), 3) +
                 " (axis" + FmtI(c.atom1, 3) + FmtI(c.atom2, 3) + "): the group of atom" + FmtI(atom, 3) +
                 " is " + std::to_string(fold) + "-fold about its own axis, tilted from the bond");
    IntRot r;
    r.group = c.moving;
    r.axis = {c.atom1, c.atom2};
    r.symmetryNumber = RotationFold(n1, n2, foldProduct);
    found.rotors.push_back(std::move(r));
    found.symmetry1.push_back(n1);
    found.symmetry2.push_back(n2);

    std::vector<Vec3> plus = xyz, minus = xyz;
    RotateAtoms(axis.p1, axis.p2, kProbeAngle, c.moving, plus);
    RotateAtoms(axis.p1, axis.p2, -kProbeAngle, c.moving, minus);
    const double scale = 1.0 / (2.0 * kProbeAngle * constants::DegToRad);
    std::vector<Vec3> d(n);
    for (int a = 0; a < n; ++a) d[a] = scale * (plus[a] - minus[a]);
    found.displacement.push_back(std::move(d));
  }

  const int count = static_cast<int>(found.rotors.size());
  log.Line(" Possible Internal Rotations :" + FmtI(count, 3));
  for (int r = 0; r < count; ++r) {
    const IntRot& rot = found.rotors[r];
    std::string line = " Int.Rot." + FmtI(r + 1, 3) + "   Axis:" + FmtI(rot.axis[0], 3) + FmtI(rot.axis[1], 3) +
                       "   NRot:" + FmtI(rot.symmetryNumber, 3) + "   Atoms:" +
                       FmtI(static_cast<long long>(rot.group.size()), 3) + "  Group:";
    for (int a : rot.group) line += FmtI(a, 3);
    log.Line(line);
  }
  log.Line(" Atom  XYZ   Internal Rotations");
  std::string head = FmtX(11);
  for (int r = 1; r <= count; ++r) head += FmtI(r, 10);
  log.Line(head);
  static constexpr const char* kXyz[] = {"X", "Y", "Z"};
  for (int a = 0; a < n; ++a)
    for (int k = 0; k < 3; ++k) {
      std::string row = FmtX(1) + FmtA(a < static_cast<int>(names.size()) ? names[a] : "", 4) + FmtX(2) + kXyz[k] +
                        FmtX(3);
      for (int r = 0; r < count; ++r) row += FmtF(found.displacement[r][a][k], 10, 5);
      log.Line(row);
    }
  return found;
}

}  // namespace quintor

#include "analysis/symmetry.h"

#include <cmath>
#include <utility>

#include "analysis/inertia.h"
#include "io/fortran_io.h"

namespace quintor {

using namespace geom;

namespace {

constexpr double ShellTolerance = 0.005;            // A^2, on squared distances from the centre
constexpr double OnAxis = 1.0e-8;                   // A
constexpr double ThreeFold = 2.0943951023931953;    // 2 pi/3
constexpr double Tetrahedral = 1.9106328761092164;  // angle between two threefold axes of a tetrahedron
constexpr double TetrahedralTolerance = 0.01;       // rad
constexpr double BisectorTurn = 0.6154798887402884; // 90 degrees less half the tetrahedral angle
constexpr double QuarterPi = 0.7853981633974483;
constexpr double MirrorSearchRadius = 0.01;         // A, atoms nearer the axis do not define a plane

const std::string Blank4 = "    ";

using Coords = std::vector<Vec3>;

// Rotation about Z, then about Y, that brings p onto +Z; the identity for a
// point on the Z axis.
Mat3 OntoZ(const Vec3& p) {
  if (std::hypot(p[0], p[1]) < OnAxis) return UnitMatrix();
  const Mat3 toXZ = RotationZ(-std::atan2(p[1], p[0]));
  const Vec3 q = toXZ * p;
  return RotationY(-std::atan2(q[0], q[2])) * toXZ;
}

Coords Turned(const Mat3& m, const Coords& c) {
  Coords out;
  out.reserve(c.size());
  for (const Vec3& p : c) out.push_back(m * p);
  return out;
}

// Cyclic exchange of coordinates: x takes y, y takes z, z takes x.
void CycleXtoZ(Coords& c) {
  for (Vec3& p : c) p = Vec3{p[1], p[2], p[0]};
}
// The other way: y goes to z.
void CycleYtoZ(Coords& c) {
  for (Vec3& p : c) p = Vec3{p[2], p[0], p[1]};
}

int Pack(int top, const std::array<int, 7>& digit) {
  int index = top;
  for (int d : digit) index = index * 10 + d;
  return index;
}

class Recogniser {
 public:
  Recogniser(const std::vector<int>& nuclear, double eps, SymmetryResult& out)
      : nuclear_(nuclear), eps_(eps), out_(out) {}

  // 1 when every atom has exactly one image of its own kind under m.
  int TestOperation(const Mat3& m, const Coords& c) {
    const int n = static_cast<int>(c.size());
    int count = 0;
    for (int i = 0; i < n; ++i) {
      const Vec3 p = m * c[i];
      int images = 0;
      for (int j = 0; j < n; ++j) {
        if (nuclear_[j] != nuclear_[i]) continue;
        if (std::fabs(c[j][0] - p[0]) <= eps_ && std::fabs(c[j][1] - p[1]) <= eps_ &&
            std::fabs(c[j][2] - p[2]) <= eps_)
          ++images;
      }
      if (images > 1) {
        Complain(" ERROR! Some atoms coincide after symmetry transformation!" + FmtI(i + 1, 4) +
                 FmtI(n, 4));
        return 0;
      }
      count += images;
    }
    if (count == n) return 1;
    if (count > n) Complain(" ERROR in Equiv1!" + FmtI(count, 5));
    return 0;
  }

  void Run(const std::vector<double>& mass, const Coords& xyzAngstrom) {
    const PrincipalFrameResult frame = PrincipalFrame(2, -1, 1, xyzAngstrom, mass);
    Coords c = frame.xyz;
    int top = frame.top;
    std::array<int, 7> digit{};  // n, a, b, c, d, e, f
    auto& [n, a, b, cc, d, e, f] = digit;

    for (bool again = true; again;) {
      again = false;
      switch (top) {
        case SingleAtom:
          out_.groupCode = GroupAtom;
          break;

        case SphericalTop: {
          const AxisFlags flags = FindThreefoldAxes(c);
          if (flags.axes == 0) {
            out_.logLines.push_back(" Occasional degeneracy");
            top = ProlateTop;
            again = true;
            break;
          }
          n = flags.axes;
          a = flags.tetrahedral;
          b = flags.b;
          cc = flags.c;
          d = flags.d;
          switch (n * 10000 + a * 1000 + b * 100 + cc * 10 + d) {
            case 11000: out_.groupCode = GroupT; break;
            case 11001: out_.groupCode = GroupTd; break;
            case 11012: out_.groupCode = GroupTh; break;
            case 11102: out_.groupCode = GroupO; break;
            case 11112:
              out_.groupCode = GroupOh;
              out_.logLines.push_back("Oh");
              break;
            case 10222: out_.groupCode = GroupIh; break;
            default:
              top = ProlateTop;
              again = true;
          }
          break;
        }

        case ProlateTop:
        case OblateTop: {
          n = b = d = e = f = 0;
          if (top == OblateTop) CycleXtoZ(c);
          for (int k = 2; k <= 8; ++k) {
            if (TestOperation(MakeOperation(1, k), c)) {
              n = k;
              a = 1;
            }
          }
          if (n == 0) {
            out_.logLines.push_back(" Occasional degeneracy");
            top = AsymmetricTop;
            again = true;
            break;
          }
          b = TestOperation(MakeOperation(2, 2 * n), c);
          cc = TestOperation(MakeOperation(3, 0), c);
          d = FindVerticalMirror(c);
          // A twofold axis across the main one makes a proper Dn, which is
          // none of the groups below: it goes on as an asymmetric top.
          if (a * 1000 + b * 100 + cc * 10 + d == 1000 && HasPerpendicularC2(c)) a = 0;
          switch (a * 1000 + b * 100 + cc * 10 + d) {
            case 1000: out_.groupCode = GroupCn; break;
            case 1001: out_.groupCode = GroupCnv; break;
            case 1010: out_.groupCode = GroupCnh; break;
            case 1011: out_.groupCode = GroupDnh; break;
            case 1101: out_.groupCode = GroupDnd; break;
            default:
              top = AsymmetricTop;
              again = true;
          }
          break;
        }

        case AsymmetricTop:
        case LinearTop: {
          n = TestOperation(DiagonalMatrix(1, -1, -1), c);
          a = TestOperation(DiagonalMatrix(-1, 1, -1), c);
          b = TestOperation(DiagonalMatrix(-1, -1, 1), c);
          // Bring a lone twofold axis onto Z.
          if (n == 1 && a == 0 && b == 0) CycleXtoZ(c);
          else if (n == 0 && a == 1 && b == 0) CycleYtoZ(c);
          n = TestOperation(DiagonalMatrix(1, -1, -1), c);
          a = TestOperation(DiagonalMatrix(-1, 1, -1), c);
          b = TestOperation(DiagonalMatrix(-1, -1, 1), c);
          cc = TestOperation(DiagonalMatrix(-1, 1, 1), c);
          d = TestOperation(DiagonalMatrix(1, -1, 1), c);
          e = TestOperation(DiagonalMatrix(1, 1, -1), c);
          f = TestOperation(DiagonalMatrix(-1, -1, -1), c);
          switch (Pack(top, digit)) {
            case 40000000: out_.groupCode = GroupC1; break;
            case 40000001: out_.groupCode = GroupCi; break;
            case 40001000:
            case 40000100:
            case 40000010: out_.groupCode = GroupCs; break;
            case 40010000: out_.groupCode = GroupC2; break;
            case 40011100: out_.groupCode = GroupC2v; break;
            case 40010010:
            case 40010011: out_.groupCode = GroupC2h; break;
            case 41111111: out_.groupCode = GroupD2h; break;
            case 50011100: out_.groupCode = GroupCinfv; break;
            case 51111111: out_.groupCode = GroupDinfh; break;
            default: break;  // D2 among others: no name
          }
          break;
        }

        default:
          break;
      }
    }

    out_.top = top;
    out_.index = top == SingleAtom ? 60000000 : Pack(top, digit);
    const int order = (out_.groupCode >= GroupCn && out_.groupCode <= GroupDnd) ? n : 0;
    out_.groupName = GroupName(out_.groupCode, order);
    out_.symmetryNumber = GroupSymmetryNumber(out_.groupCode, order);
  }

 private:
  struct AxisFlags {
    int axes = 0;         // 1 when four threefold axes stand on atoms
    int tetrahedral = 0;  // 1 when two of them make the tetrahedral angle
    int b = 0, c = 0, d = 0;
  };

  void Complain(std::string first) {
    out_.consoleLines.push_back(std::move(first));
    out_.consoleLines.push_back(" This is probably due to the incorrect molecular geometry.");
    out_.consoleLines.push_back(" Attention! -- Symmetry can be incorrectly identified!.");
    ++out_.userPauses;
  }

  // Threefold axes of a spherical top, looked for through atoms of one shell
  // of like atoms at the same distance from the centre.
  AxisFlags FindThreefoldAxes(const Coords& c) {
    AxisFlags flags;
    const int natoms = static_cast<int>(c.size());
    std::vector<std::vector<int>> shell(natoms);
    for (int i = 0; i < natoms; ++i) {
      const double ri2 = Dot(c[i], c[i]);
      for (int j = 0; j < natoms; ++j)
        if (nuclear_[j] == nuclear_[i] && std::fabs(ri2 - Dot(c[j], c[j])) <= ShellTolerance)
          shell[i].push_back(j);
    }
    // A later shell wins when its size is below the number of the atom chosen
    // so far (the atom number, not the size of its shell).
    int chosen = -1;
    for (int i = 0; i < natoms; ++i) {
      const int size = static_cast<int>(shell[i].size());
      if (size < 4) continue;
      if (chosen < 0 || size < chosen + 1) chosen = i;
    }
    if (chosen < 0) return flags;

    std::vector<int> axisAtoms;
    const Mat3 c3 = RotationZ(ThreeFold);
    for (int atom : shell[chosen])
      if (TestOperation(c3, Turned(OntoZ(c[atom]), c))) axisAtoms.push_back(atom);
    if (axisAtoms.size() < 4) return flags;

    flags.axes = 1;
    int first = -1, second = -1;
    for (size_t i = 0; i < axisAtoms.size() && first < 0; ++i) {
      for (size_t j = i + 1; j < axisAtoms.size(); ++j) {
        const Vec3& p = c[axisAtoms[i]];
        const Vec3& q = c[axisAtoms[j]];
        const double ra = Norm(p), rb = Norm(q);
        const Vec3 pq = p - q;
        const double angle = std::acos((ra * ra + rb * rb - Dot(pq, pq)) / (2.0 * ra * rb));
        if (std::fabs(angle - Tetrahedral) < TetrahedralTolerance) {
          first = axisAtoms[i];
          second = axisAtoms[j];
          break;
        }
      }
    }
    if (first < 0) {  // icosahedral
      flags.b = flags.c = flags.d = 2;
      return flags;
    }

    flags.tetrahedral = 1;
    Mat3 m = OntoZ(c[first]);
    const Vec3 q = m * c[second];
    m = RotationZ(-std::atan2(q[1], q[0])) * m;  // second axis in the XZ plane, x > 0
    m = RotationY(BisectorTurn) * m;             // their bisector onto X
    m = RotationZ(QuarterPi) * m;
    const Coords t = Turned(m, c);
    // The bisector of the two axes is now X, and Z is the direction of their
    // difference: a face diagonal of the cube in which the tetrahedron stands,
    // along which O has a twofold axis and normal to which Td has a mirror.
    flags.b = TestOperation(DiagonalMatrix(-1, -1, 1), t);
    flags.d = TestOperation(DiagonalMatrix(1, 1, -1), t);
    flags.c = TestOperation(DiagonalMatrix(-1, -1, -1), t);
    if (flags.b == 1 || flags.c == 1) flags.d = 2;
    return flags;
  }

  // A mirror plane holding the Z axis: XZ as it stands, else the plane of
  // the first atom (off the axis) for which the turned copy passes.
  int FindVerticalMirror(Coords& c) {
    const Mat3 mirror = MakeOperation(4, 0);
    if (TestOperation(mirror, c)) return 1;
    for (const Vec3& p : c) {
      if (std::hypot(p[0], p[1]) < MirrorSearchRadius) continue;
      Coords copy = Turned(RotationZ(-std::atan2(p[1], p[0])), c);
      if (TestOperation(mirror, copy)) {
        c = std::move(copy);
        return 1;
      }
    }
    return 0;
  }

  // A twofold axis in the XY plane. It maps an atom to one of its kind at
  // the opposite height, so the candidates are the bisectors of the first
  // atom off the plane (or off the axis) with each such partner.
  bool HasPerpendicularC2(const Coords& c) {
    const Mat3 c2x = DiagonalMatrix(1, -1, -1);
    for (size_t i = 0; i < c.size(); ++i) {
      if (std::hypot(c[i][0], c[i][1]) < MirrorSearchRadius) continue;
      for (size_t j = 0; j < c.size(); ++j) {
        if (nuclear_[j] != nuclear_[i] || std::fabs(c[j][2] + c[i][2]) > eps_) continue;
        const double angle = 0.5 * (std::atan2(c[i][1], c[i][0]) + std::atan2(c[j][1], c[j][0]));
        if (TestOperation(c2x, Turned(RotationZ(-angle), c))) return true;
        if (TestOperation(c2x, Turned(RotationZ(-angle - constants::Pi / 2), c))) return true;
      }
      return false;
    }
    return false;
  }

  const std::vector<int>& nuclear_;
  double eps_;
  SymmetryResult& out_;
};

}  // namespace

std::string GroupName(int code, int n) {
  const std::string digit = std::to_string(n % 10);
  std::string name;
  switch (code) {
    case GroupC1: name = "C1"; break;
    case GroupCi: name = "Ci"; break;
    case GroupCs: name = "Cs"; break;
    case GroupC2: name = "C2"; break;
    case GroupC2v: name = "C2v"; break;
    case GroupC2h: name = "C2h"; break;
    case GroupD2h: name = "D2h"; break;
    case GroupCinfv: name = "C*v"; break;
    case GroupDinfh: name = "D*h"; break;
    case GroupCn: name = "C" + digit; break;
    case GroupCnv: name = "C" + digit + "v"; break;
    case GroupCnh: name = "C" + digit + "h"; break;
    case GroupDnh: name = "D" + digit + "h"; break;
    case GroupDnd: name = "D" + digit + "d"; break;
    case GroupT: name = "T"; break;
    case GroupTd: name = "Td"; break;
    case GroupTh: name = "Th"; break;
    case GroupO: name = "O"; break;
    case GroupOh: name = "Oh"; break;
    case GroupIh: name = "Ih"; break;
    case GroupAtom: name = "O(3)"; break;
    default: break;
  }
  return FmtA(name, 4);
}

int GroupSymmetryNumber(int code, int n) {
  switch (code) {
    case GroupC1: case GroupCi: case GroupCs: case GroupCinfv: case GroupAtom: return 1;
    case GroupC2: case GroupC2v: case GroupC2h: case GroupDinfh: return 2;
    case GroupD2h: return 4;
    case GroupCn: case GroupCnv: case GroupCnh: return n;
    case GroupDnh: case GroupDnd: return 2 * n;
    case GroupT: case GroupTd: case GroupTh: return 12;
    case GroupO: case GroupOh: return 24;
    case GroupIh: return 60;
    default: return 0;
  }
}

Mat3 MakeOperation(int kind, int k) {
  switch (kind) {
    case 1: return RotationZ(2.0 * constants::Pi / k);
    case 2: return DiagonalMatrix(1, 1, -1) * RotationZ(2.0 * constants::Pi / k);
    case 3: return DiagonalMatrix(1, 1, -1);
    case 4: return DiagonalMatrix(1, -1, 1);
    default: return UnitMatrix();
  }
}

SymmetryResult RecogniseSymmetry(const std::vector<int>& nuclear, const std::vector<double>& mass,
                                 const std::vector<Vec3>& xyzBohr, double symEps) {
  SymmetryResult out;
  // The report hands over a centred geometry; centring here as well keeps
  // the operations, which act about the origin, right for any caller.
  const Vec3 centre = MassCentre(xyzBohr, mass);
  Coords c;
  c.reserve(xyzBohr.size());
  for (const Vec3& p : xyzBohr) c.push_back(constants::BohrToAngstrom * (p - centre));
  if (c.empty()) return out;
  Recogniser(nuclear, symEps, out).Run(mass, c);
  return out;
}

SymmetryAnalysis AnalyseSymmetry(const std::vector<int>& nuclear, const std::vector<double>& mass,
                                 const std::vector<Vec3>& xyzBohr, double symEps, bool noSymmetry) {
  SymmetryAnalysis s;
  s.symEpsAfter = symEps;
  if (noSymmetry) {
    s.off = true;
    s.logLines = {"", "", " WARNING! Symmetry recognition is turned off! Molecular symmetry set to C1."};
    return s;
  }
  if (symEps != StandardSymEps) {
    s.logLines = {"", "", " WARNING! Non-standard value of SymEps is used ",
                  " to recognize the molecular symmetry:" + FmtF(symEps, 20, 10)};
  }
  auto take = [&s](SymmetryResult& r) {
    for (std::string& line : r.logLines) s.logLines.push_back(std::move(line));
    for (std::string& line : r.consoleLines) s.consoleLines.push_back(std::move(line));
    s.userPauses += r.userPauses;
  };

  SymmetryResult strict = RecogniseSymmetry(nuclear, mass, xyzBohr, symEps);
  s.symEpsAfter = symEps * 100.0;
  SymmetryResult approximate = RecogniseSymmetry(nuclear, mass, xyzBohr, s.symEpsAfter);

  s.top = approximate.top;
  s.index = strict.index;
  s.approximateIndex = approximate.index;
  s.groupName = strict.groupName;
  s.approximateName = approximate.groupName;
  s.groupCode = strict.groupCode;
  s.symmetryNumber = strict.symmetryNumber;
  take(strict);
  take(approximate);
  return s;
}

RotationNumberChoice ChooseRotationNumber(int recognised, bool userGiven, double userValue) {
  RotationNumberChoice choice;
  if (!userGiven) {
    choice.value = recognised;
    return choice;
  }
  choice.value = userValue;
  if (userValue != recognised) {
    choice.differs = true;
    choice.logLines = {
        " WARNING! Rotational symmetry number determined from the",
        " actual symmetry of molecule (" + FmtI(recognised, 2) + ") is different from ",
        " the user-defined one (" + FmtI(std::lround(userValue), 4) + ")!",
        " The user-defined value will be used in calculations. ",
        " Be sure that your setting is correct!",
    };
  }
  return choice;
}

std::vector<std::string> SymmetryReportLines(const SymmetryAnalysis& symmetry,
                                             const RotationNumberChoice& rotation) {
  std::vector<std::string> lines = symmetry.logLines;
  lines.push_back(" Rotational Symmetry       : " + std::string(TopName(symmetry.top)));
  lines.push_back(" Symmetry Index            : " + FmtI(symmetry.index, 8));
  lines.push_back(" Symmetry Group            : " + FmtA(symmetry.groupName, 4) +
                  "   (will be used in further analysis)");
  if (symmetry.ShowApproximate())
    lines.push_back(" Approximate Symmetry      : " + FmtA(symmetry.approximateName, 4));
  for (const std::string& line : rotation.logLines) lines.push_back(line);
  lines.push_back(" Rotational Symmetry Number: " + FmtI(std::lround(rotation.value), 2));
  return lines;
}

}  // namespace quintor

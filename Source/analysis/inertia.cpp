#include "analysis/inertia.h"

#include <algorithm>
#include <cmath>

#include "io/fortran_io.h"
#include "numeric/jacobi.h"

namespace quintor {

using namespace geom;

namespace {

// Loose tolerance on moments when telling the type of top; independent of SymEps.
constexpr double TopTolerance = 0.001;

const std::string RuleLine(70, '-');

struct Eigen3 {
  Vec3 values{};
  Mat3 vectors{};  // columns
};

Eigen3 Diagonalise(const Mat3& m, int sortMode) {
  std::vector<std::vector<double>> a(3, std::vector<double>(3));
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) a[i][j] = m[i][j];
  const Eigensystem e = Jacobi(std::move(a), sortMode);
  Eigen3 r;
  for (int i = 0; i < 3; ++i) {
    r.values[i] = e.values[i];
    for (int j = 0; j < 3; ++j) r.vectors[i][j] = e.vectors[i][j];
  }
  return r;
}

std::string F15x3(const Vec3& v, int d = 6) { return FmtF(v[0], 15, d) + FmtF(v[1], 15, d) + FmtF(v[2], 15, d); }

}  // namespace

std::string_view TopName(int top) {
  switch (top) {
    case SphericalTop: return "Spherical Top";
    case ProlateTop: return "Prolate Symmetric Top";
    case OblateTop: return "Oblate Symmetric Top";
    case AsymmetricTop: return "Asymmetric Top";
    case LinearTop: return "Linear Top";
    case SingleAtom: return "Single-atom molecule";
    default: return "";
  }
}

double MolecularMass(const std::vector<double>& mass) {
  double sum = 0.0;
  for (double m : mass) sum += m;
  return sum;
}

Vec3 MassCentre(const std::vector<Vec3>& xyz, const std::vector<double>& mass) {
  const double total = MolecularMass(mass);
  Vec3 c{0.0, 0.0, 0.0};
  if (total == 0.0) return c;
  for (size_t i = 0; i < xyz.size() && i < mass.size(); ++i)
    for (int k = 0; k < 3; ++k) c[k] += mass[i] * xyz[i][k] / total;
  return c;
}

Mat3 InertiaTensor(const std::vector<Vec3>& xyz, const std::vector<double>& mass) {
  Mat3 t{};
  for (size_t i = 0; i < xyz.size() && i < mass.size(); ++i) {
    const double m = mass[i];
    const double x = xyz[i][0], y = xyz[i][1], z = xyz[i][2];
    t[0][0] += m * (y * y + z * z);
    t[1][1] += m * (x * x + z * z);
    t[2][2] += m * (x * x + y * y);
    t[0][1] -= m * x * y;
    t[0][2] -= m * x * z;
    t[1][2] -= m * y * z;
  }
  t[1][0] = t[0][1];
  t[2][0] = t[0][2];
  t[2][1] = t[1][2];
  return t;
}

InertiaAnalysis AnalyseInertia(const std::vector<Vec3>& xyzBohr, const std::vector<double>& mass) {
  InertiaAnalysis r;
  r.molMass = MolecularMass(mass);
  r.centre = MassCentre(xyzBohr, mass);
  r.centred.reserve(xyzBohr.size());
  for (const Vec3& p : xyzBohr) r.centred.push_back(p - r.centre);
  r.tensor = InertiaTensor(r.centred, mass);

  const Eigen3 e = Diagonalise(r.tensor, 1);
  r.moments = e.values;
  r.axes = e.vectors;
  for (int k = 0; k < 3; ++k) {
    // A linear molecule or an atom shows its tiny moment instead of infinity.
    r.rotConst[k] = r.moments[k] < SmallMoment ? r.moments[k] : 1.0 / r.moments[k];
    r.rotConstGHz[k] = r.rotConst[k] * constants::RotConstFactor;
    r.momentsAngstrom[k] = r.moments[k] * constants::BohrToAngstrom * constants::BohrToAngstrom;
  }
  r.principalCoords.reserve(r.centred.size());
  for (const Vec3& p : r.centred) {
    Vec3 q;
    for (int k = 0; k < 3; ++k) q[k] = Dot(p, Column(r.axes, k)) / constants::AngstromToBohr;
    r.principalCoords.push_back(q);
  }
  return r;
}

PrincipalFrameResult PrincipalFrame(int axisOrder, int handedness, int rotate,
                                    const std::vector<Vec3>& xyzAngstrom,
                                    const std::vector<double>& mass) {
  PrincipalFrameResult r;
  r.xyz = xyzAngstrom;
  r.axes = UnitMatrix();
  if (xyzAngstrom.size() == 1) {
    r.top = SingleAtom;
    return r;
  }

  r.centre = MassCentre(xyzAngstrom, mass);
  for (Vec3& p : r.xyz) p = p - r.centre;
  const Eigen3 e = Diagonalise(InertiaTensor(r.xyz, mass), -1);
  const double i1 = e.values[0], i2 = e.values[1], i3 = e.values[2];

  // For a linear molecule I3 is near zero and r23 huge; harmless.
  const double r12 = std::fabs(i1 - i2) / std::fabs(std::min(i1, i2));
  const double r23 = std::fabs(i2 - i3) / std::fabs(std::min(i2, i3));
  if (r12 < TopTolerance) {
    if (r23 < TopTolerance) r.top = SphericalTop;
    else if (std::fabs(i3) < TopTolerance) r.top = LinearTop;
    else if (i2 > i3) r.top = ProlateTop;
  } else if (r23 < TopTolerance && i1 > i2) {
    r.top = OblateTop;
  } else if (r12 > TopTolerance && r23 > TopTolerance) {
    r.top = AsymmetricTop;
  }

  r.moments = e.values;
  r.axes = e.vectors;
  if (axisOrder > 0) {
    std::swap(r.moments[0], r.moments[2]);
    const Vec3 first = Column(r.axes, 0);
    SetColumn(r.axes, 0, Column(r.axes, 2));
    SetColumn(r.axes, 2, first);
  } else if (axisOrder == 0) {
    for (int k = 0; k < 3; ++k) SetColumn(r.axes, k, Normalised(Column(r.axes, k)));
  }

  if (handedness != 0) {
    const double triple = Dot(Cross(Column(r.axes, 0), Column(r.axes, 1)), Column(r.axes, 2));
    if ((triple < 0.0) != (handedness < 0)) SetColumn(r.axes, 2, -1.0 * Column(r.axes, 2));
  }

  if (r.top == ProlateTop || r.top == OblateTop || rotate > 0) {
    // Rows of the turn: largest moment first, so that the smallest lies along Z.
    Mat3 turn;
    for (int k = 0; k < 3; ++k) turn[k] = Column(r.axes, axisOrder > 0 ? 2 - k : k);
    for (Vec3& p : r.xyz) p = turn * p;
    r.rotated = true;
  }
  if (r.top == OblateTop || r.top == NoTop)
    for (Vec3& p : r.xyz) p = p + r.centre;
  return r;
}

std::optional<Reorientation> ReorientByAtoms(const std::vector<Vec3>& xyz, int atomO, int atomX,
                                             int atomY) {
  const int n = static_cast<int>(xyz.size());
  for (int a : {atomO, atomX, atomY})
    if (a < 1 || a > n) return std::nullopt;
  Reorientation r;
  const Vec3 origin = xyz[atomO - 1];
  r.xyz.reserve(xyz.size());
  for (const Vec3& p : xyz) r.xyz.push_back(p - origin);
  const Vec3 a = r.xyz[atomX - 1];
  const Vec3 b = r.xyz[atomY - 1];
  const Vec3 e3 = Normalised(Cross(a, b));
  const Vec3 e2 = Normalised(Cross(e3, a));
  const Vec3 e1 = Normalised(a);
  r.matrix = Mat3{e1, e2, e3};
  for (Vec3& p : r.xyz) p = r.matrix * p;
  return r;
}

void TurnVectors(const Mat3& matrix, std::vector<Vec3>& vectors) {
  for (Vec3& v : vectors) v = matrix * v;
}

OrientedSets OrientSetsByAtoms(std::vector<std::vector<Vec3>>& sets, int firstIndex,
                               const std::array<int, 3>& atoms,
                               const std::vector<std::string>& names,
                               const std::vector<int>& nuclear,
                               std::vector<std::vector<Vec3>>& modeDisplacements) {
  OrientedSets out;
  out.lines.push_back(" The read-in structures  will be re-oriented.  Reference atoms: " +
                      FmtI(atoms[0], 5) + FmtI(atoms[1], 5) + FmtI(atoms[2], 5));
  if (!modeDisplacements.empty())
    out.lines.push_back(" The read-in frequencies will also be re-oriented in the same manner.");

  for (size_t k = 0; k < sets.size(); ++k) {
    if (auto turned = ReorientByAtoms(sets[k], atoms[0], atoms[1], atoms[2])) {
      sets[k] = std::move(turned->xyz);
      out.lastMatrix = turned->matrix;
    }
    out.lines.push_back(" iCyc =" + FmtI(firstIndex + static_cast<int>(k), 5) +
                        "  Re-oriented geo with reference atoms (O, OX, OXY):" + FmtI(atoms[0], 5) +
                        FmtI(atoms[1], 5) + FmtI(atoms[2], 5));
    std::vector<Vec3> angstrom;
    angstrom.reserve(sets[k].size());
    for (const Vec3& p : sets[k]) angstrom.push_back(constants::BohrToAngstrom * p);
    for (std::string& line : AtomTableLines(names, nuclear, angstrom)) out.lines.push_back(std::move(line));
    out.lines.emplace_back();
    out.lines.emplace_back();
  }
  for (std::vector<Vec3>& mode : modeDisplacements) TurnVectors(out.lastMatrix, mode);
  return out;
}

std::vector<std::string> AtomTableLines(const std::vector<std::string>& names,
                                        const std::vector<int>& nuclear,
                                        const std::vector<Vec3>& xyzAngstrom) {
  std::vector<std::string> lines;
  lines.push_back(RuleLine);
  lines.push_back(" Name        Nuc              X              Y              Z");
  lines.push_back(RuleLine);
  for (size_t i = 0; i < xyzAngstrom.size(); ++i) {
    const std::string name = i < names.size() ? names[i] : std::string();
    const int z = i < nuclear.size() ? nuclear[i] : 0;
    lines.push_back(FmtX(1) + FmtA(name, 5) + FmtX(8) + FmtI(z, 2) + FmtX(7) + F15x3(xyzAngstrom[i], 8));
  }
  lines.push_back(RuleLine);
  return lines;
}

std::string MassCentreLine(const InertiaAnalysis& inertia) {
  std::string line = " Mass center, mol.mass:";
  for (int k = 0; k < 3; ++k) line += FmtF(inertia.centre[k] * constants::BohrToAngstrom, 12, 6);
  return line + FmtF(inertia.molMass, 20, 6);
}

std::vector<std::string> DistanceMatrixLines(const std::vector<std::string>& names,
                                             const std::vector<Vec3>& xyzBohr) {
  constexpr int Columns = 8;
  std::vector<std::string> lines{" Distance matrix (A):"};
  const int n = static_cast<int>(xyzBohr.size());
  auto name = [&](int i) { return i < static_cast<int>(names.size()) ? names[i] : std::string(); };
  for (int first = 0; first < n; first += Columns) {
    const int last = std::min(n, first + Columns);
    std::string head = FmtX(6);
    for (int j = first; j < last; ++j) {
      const std::string label = Trim(name(j)).empty() ? std::string() : std::string(Trim(name(j)));
      head += FmtX(10 - static_cast<int>(std::min<size_t>(label.size(), 10))) + label.substr(0, 10);
    }
    lines.push_back(head);
    for (int i = first; i < n; ++i) {
      std::string row = FmtX(1);
      row += FmtA(name(i), 5);
      for (int j = first; j < last && j <= i; ++j)
        row += FmtF(Norm(xyzBohr[i] - xyzBohr[j]) * constants::BohrToAngstrom, 10, 5);
      lines.push_back(row);
    }
  }
  return lines;
}

std::vector<std::string> PrincipalMomentsLines(const InertiaAnalysis& inertia,
                                               const std::vector<std::string>& names,
                                               const std::vector<int>& nuclear) {
  std::vector<std::string> lines;
  lines.push_back(" Principal moments of inertia and rotational constants:");
  lines.push_back(" Ia,Ib,Ic, a.u.   :" + F15x3(inertia.moments));
  lines.push_back(" Ia,Ib,Ic, amu*A^2:" + F15x3(inertia.momentsAngstrom));
  lines.push_back(" A, B, C,  a.u.   :" + F15x3(inertia.rotConst));
  lines.push_back(" A, B, C,  GHz    :" + F15x3(inertia.rotConstGHz));
  // One axis a line, the continuation lines indented under the first.
  for (int k = 0; k < 3; ++k)
    lines.push_back((k == 0 ? std::string(" Principal axes   :") : FmtX(19)) + F15x3(Column(inertia.axes, k)));
  lines.push_back(" Molecular coordinates in principal axes (A) ");
  for (std::string& line : AtomTableLines(names, nuclear, inertia.principalCoords))
    lines.push_back(std::move(line));
  return lines;
}

std::vector<std::string> InertiaReportLines(const InertiaAnalysis& inertia,
                                            const std::vector<std::string>& names,
                                            const std::vector<int>& nuclear,
                                            const std::vector<Vec3>& xyzBohr) {
  std::vector<std::string> lines{MassCentreLine(inertia)};
  for (std::string& line : DistanceMatrixLines(names, xyzBohr)) lines.push_back(std::move(line));
  for (std::string& line : PrincipalMomentsLines(inertia, names, nuclear)) lines.push_back(std::move(line));
  return lines;
}

}  // namespace quintor

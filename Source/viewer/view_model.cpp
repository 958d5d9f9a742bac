#include "viewer/view_model.h"

#include <algorithm>
#include <cmath>

#include "analysis/bond_radii.h"
#include "io/fields.h"
#include "io/fortran_io.h"
#include "io/line_reader.h"
#include "numeric/vec3.h"

namespace quintor {

Mat3 BuildViewMatrix(double alp, double bet, double gam) {
  const double ca = std::cos(alp), sa = std::sin(alp);
  const double cb = std::cos(bet), sb = std::sin(bet);
  const double cg = std::cos(gam), sg = std::sin(gam);
  return Mat3{{{cb * cg, -cb * sg, sb},
               {cg * sa * sb + sg * ca, cg * ca - sa * sb * sg, -cb * sa},
               {sg * sa - cg * sb * ca, cg * sa + sg * sb * ca, cb * ca}}};
}

void ExtractViewAngles(const Mat3& r, double& alp, double& bet, double& gam) {
  const double x = r[0][2];
  double cb;
  if (x >= 1.0) {
    bet = constants::Pi / 2, cb = 0.0;
  } else if (x <= -1.0) {
    bet = -constants::Pi / 2, cb = 0.0;
  } else {
    bet = std::asin(x), cb = std::cos(bet);
  }
  if (std::fabs(cb) > 0.001) {
    alp = std::atan2(-r[1][2] / cb, r[2][2] / cb);
    gam = std::atan2(-r[0][1] / cb, r[0][0] / cb);
  } else {
    alp = 0.0;
    gam = std::atan2(r[1][0], r[1][1]);
  }
}

double PerspectiveFactor(const ViewState& v, double z) {
  if (v.perspectiveOn == -1) return 1.0;
  // Not a true central projection, on purpose: continuous at z = 0.
  const double q = std::fabs(z) / v.perspectiveDistance + 1.0;
  return z > 0 ? q : 1.0 / q;
}

void RotateView(ViewState& v, double aboutZ, double aboutY, double aboutX) {
  auto build = [&](double angle, int axis) {
    const double c = std::cos(angle), s = std::sin(angle);
    if (axis == 2) v.lastRotation = Mat3{{{c, s, 0}, {-s, c, 0}, {0, 0, 1}}};
    if (axis == 1) v.lastRotation = Mat3{{{c, 0, s}, {0, 1, 0}, {-s, 0, c}}};
    if (axis == 0) v.lastRotation = Mat3{{{1, 0, 0}, {0, c, s}, {0, -s, c}}};
  };
  if (aboutZ != 0.0) build(aboutZ, 2);
  else if (aboutY != 0.0) build(aboutY, 1);
  else if (aboutX != 0.0) build(aboutX, 0);
  using namespace geom;
  v.matrix = v.lastRotation * v.matrix;  // never orthonormalised again
}

void ResetView(ViewState& v) {
  v.matrix = geom::UnitMatrix();
  v.zoom = 1.0;
  v.shiftX = v.shiftY = 0.0;
}

Vec3 LabCoords(const ViewState& v, const Vec3& r) {
  using namespace geom;
  return v.matrix * r;
}

Vec3 ScreenCoords(const ViewState& v, const Vec3& r) {
  Vec3 l = LabCoords(v, r);
  return {(l[0] + v.shiftX) * v.zoom, (l[1] + v.shiftY) * v.zoom, l[2] * v.zoom};
}

bool ReadViewFile(const std::string& path, ViewState& v) {
  LineReader in;
  if (!in.Open(path)) return false;
  std::string_view line;
  while (in.Next(line)) {
    if (!Contains(line, "Last view parameters:")) continue;
    ViewState read = v;
    auto row = [&](std::array<double, 3>& target) {
      if (!in.Next(line)) return false;
      for (int k = 0; k < 3; ++k)
        target[k] = ReadFixedReal(line, 18 + 10 * k, 10, 5, PlaceIn(in, "view parameter"));
      return true;
    };
    std::array<double, 3> shifts{};
    if (!row(read.matrix[0]) || !row(read.matrix[1]) || !row(read.matrix[2]) || !in.Skip(1) || !row(shifts))
      return false;
    read.shiftX = shifts[0], read.shiftY = shifts[1], read.zoom = shifts[2];
    v = read;
    return true;
  }
  return false;
}

void FitStartingView(const Session& s, double aspect, ViewState& v) {
  if (s.opt.viewGiven || !s.opt.viewFile.empty() || s.nAtoms == 0) return;
  constexpr double kMargin = 0.5;  // a ball and a little air, bohr
  double lo[2] = {1e300, 1e300}, hi[2] = {-1e300, -1e300};
  for (int i = 0; i < s.nAtoms; ++i) {
    const Vec3 l = LabCoords(v, s.xyz[i]);
    for (int k = 0; k < 2; ++k) lo[k] = std::min(lo[k], l[k] - kMargin), hi[k] = std::max(hi[k], l[k] + kMargin);
  }
  const double halfWidth = 10.0 * aspect, halfHeight = 10.0;
  const bool fits = lo[0] + v.shiftX >= -halfWidth && hi[0] + v.shiftX <= halfWidth &&
                    lo[1] + v.shiftY >= -halfHeight && hi[1] + v.shiftY <= halfHeight;
  if (fits) return;
  v.shiftX = -(lo[0] + hi[0]) / 2.0;
  v.shiftY = -(lo[1] + hi[1]) / 2.0;
  v.zoom = std::min({1.0, halfWidth / ((hi[0] - lo[0]) / 2.0), halfHeight / ((hi[1] - lo[1]) / 2.0)});
}

ViewState StartingView(const Options& opt) {
  ViewState v;
  if (opt.viewGiven) {
    v.alp = opt.view[0] * constants::DegToRad;
    v.bet = opt.view[1] * constants::DegToRad;
    v.gam = opt.view[2] * constants::DegToRad;
    v.matrix = BuildViewMatrix(v.alp, v.bet, v.gam);
    if (opt.viewValues > 3) v.shiftX = opt.view[3], v.shiftY = opt.view[4], v.zoom = opt.view[5];
  } else if (!opt.viewFile.empty()) {
    ReadViewFile(opt.viewFile, v);
  }
  return v;
}

Vec3 FinalViewAngles(const Mat3& r) {
  const double c = r[2][2];
  double mid = c >= 1.0 ? 0.0 : c <= -1.0 ? constants::Pi : std::acos(c);
  double first, third;
  if (std::fabs(std::sin(mid)) > 0.001) {
    first = std::atan2(r[1][2], r[0][2]);
    third = std::atan2(r[2][1], -r[2][0]);
  } else {
    first = 0.0;
    third = std::atan2(r[1][0], r[0][0]);
  }
  return {first / constants::DegToRad, mid / constants::DegToRad, third / constants::DegToRad};
}

Vec3 ViewCommandAngles(const Mat3& r) {
  // R = Rx(a) Ry(b) Rz(g): R13 = sin b, R23 = -cos b sin a, R33 = cos b cos a,
  // R12 = -cos b sin g, R11 = cos b cos g.
  const double cb = std::hypot(r[1][2], r[2][2]);
  const double bet = std::atan2(r[0][2], cb);
  double alp, gam;
  if (cb > 1e-9) {
    alp = std::atan2(-r[1][2], r[2][2]);
    gam = std::atan2(-r[0][1], r[0][0]);
  } else {  // b = +-90 degrees: only a + g or a - g is fixed; a = 0
    alp = 0.0;
    gam = std::atan2(r[1][0], r[1][1]);
  }
  // An angle that prints as zero prints without a sign.
  auto degrees = [](double rad) {
    const double d = rad / constants::DegToRad;
    return std::fabs(d) < 0.05 ? 0.0 : d;
  };
  return {degrees(alp), degrees(bet), degrees(gam)};
}

std::vector<std::vector<int>> ViewerBonds(const Session& s, std::vector<std::string>* dropped) {
  constexpr double kA = constants::BohrToAngstrom;
  std::vector<std::vector<int>> bonds(static_cast<size_t>(s.nAtoms));
  auto hPair = [](int a, int b) { return (a == 1 && (b == 7 || b == 8)) || (b == 1 && (a == 7 || a == 8)); };
  for (int i = 0; i < s.nAtoms; ++i) {
    for (int j = 0; j < s.nAtoms; ++j) {
      if (i == j) continue;
      const int zi = s.atomicNumber[i], zj = s.atomicNumber[j];
      double d2 = 0.0;
      for (int k = 0; k < 3; ++k) d2 += std::pow((s.xyz[i][k] - s.xyz[j][k]) * kA, 2);
      double limit = 1.15 * (BondRadius(zi) + BondRadius(zj));
      if (s.opt.showHBonds && hPair(zi, zj)) limit = s.opt.hBondLength;
      if (std::sqrt(d2) > limit) continue;
      if (bonds[i].size() < 16)
        bonds[i].push_back(j + 1);
      else if (dropped)
        dropped->push_back(" Number of bonds exceeded! Atoms in .MOl:" + FmtI(i + 1, 4) + FmtI(j + 1, 4));
    }
  }
  return bonds;
}

}  // namespace quintor

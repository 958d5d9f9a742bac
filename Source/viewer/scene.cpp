#include "viewer/scene.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "io/fortran_io.h"
#include "viewer/view_model.h"

namespace quintor {

namespace {

constexpr double kA = constants::BohrToAngstrom;

// The 110 element colours: a barely tinted grey count-down, then the
// elements that have a colour of their own.
std::array<Rgb, 111> MakeElementColours() {
  std::array<Rgb, 111> c;
  c.fill(Rgb{200, 200, 200});
  for (int z = 1; z <= 55; ++z) c[z] = {220, 220, 224 - 4 * z};
  for (int z = 56; z <= 100; ++z) c[z] = {220, 216, 444 - 4 * z};
  c[1] = {255, 255, 255};
  c[5] = {250, 240, 190};
  c[6] = {0, 255, 255};
  c[7] = {80, 160, 220};
  c[8] = {255, 0, 0};
  c[9] = {0, 255, 255};
  c[13] = {150, 190, 255};
  c[14] = {230, 150, 0};
  c[15] = {0, 0, 255};
  c[16] = {255, 255, 0};
  c[17] = {200, 250, 50};
  c[22] = {180, 200, 220};
  return c;
}

const std::array<Rgb, 111> kElementColours = MakeElementColours();

}  // namespace

Rgb ElementColour(int z) { return z >= 1 && z <= 110 ? kElementColours[z] : Rgb{200, 200, 200}; }

double BallRadius(int z) {
  switch (z) {
    case 1: return 0.09;
    case 98: return 0.06;  // pseudo-atom Xx
    case 99: return 0.12;  // pseudo-atom Du
    default: return 0.18;
  }
}

double MarkRadius(int z) {
  switch (z) {
    case 1: return 0.18;
    case 98: return 0.15;
    case 99: return 0.24;
    default: return 0.30;
  }
}

Pixel WorldToWindow(const WorldWindow& w, double wx, double wy) {
  const double a = w.Aspect();
  return {(wx + 10.0 * a) * w.width / (20.0 * a), (10.0 - wy) * w.height / 20.0};
}

std::array<double, 2> WindowToWorld(const WorldWindow& w, double px, double py) {
  const double a = w.Aspect();
  return {-10.0 * a + px * (20.0 * a / w.width), 10.0 + (-py) * (20.0 / w.height)};
}

void ProjectAll(const Session& s, ViewerState& v) {
  v.screen.resize(static_cast<size_t>(s.nAtoms));
  for (int i = 0; i < s.nAtoms; ++i) v.screen[i] = ScreenCoords(s.view, s.xyz[i]);
  if (s.view.showAxes == -1) return;
  const double len = constants::AngstromToBohr;
  const Mat3& r = s.view.matrix;
  for (int k = 0; k < 3; ++k)
    v.axisTips[k] = {(s.view.shiftX + len * r[0][k]) * s.view.zoom, (s.view.shiftY + len * r[1][k]) * s.view.zoom,
                     s.view.zoom * len * r[2][k]};
}

std::array<double, 2> DrawnPosition(const Session& s, const ViewerState& v, int a) {
  const Vec3& p = v.screen[a];
  const double f = PerspectiveFactor(s.view, p[2]);
  return {p[0] * f, p[1] * f};
}

std::vector<int> DrawOrder(const Session& s, const ViewerState& v) {
  std::vector<int> order(static_cast<size_t>(s.nAtoms));
  std::iota(order.begin(), order.end(), 1);
  // Far to near; a stable sort keeps number order among equal depths, as a
  // repeated search for the smallest z would.
  if (s.view.showBalls != -1)
    std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return v.screen[a - 1][2] < v.screen[b - 1][2]; });
  return order;
}

Scene BuildScene(const Session& s, ViewerState& v) {
  ProjectAll(s, v);
  Scene scene;
  scene.items.reserve(static_cast<size_t>(s.nAtoms) * 4 + 16);
  const std::vector<int> order = DrawOrder(s, v);
  for (int a : order) {
    const int ia = a - 1;
    const auto [x, y] = DrawnPosition(s, v, ia);
    const Rgb ca = ElementColour(s.atomicNumber[ia]);
    if (static_cast<size_t>(ia) < v.bonds.size()) {
      for (int b : v.bonds[ia]) {
        if (b <= a) continue;  // each bond once, from its lower atom
        const auto [xb, yb] = DrawnPosition(s, v, b - 1);
        const double mx = 0.5 * (x + xb), my = 0.5 * (y + yb);
        scene.items.push_back({Shape::Line, ca, x, y, mx, my, 0.0, {}});
        scene.items.push_back({Shape::Line, ElementColour(s.atomicNumber[b - 1]), mx, my, xb, yb, 0.0, {}});
      }
    }
    const double f = PerspectiveFactor(s.view, v.screen[ia][2]);
    if (s.view.showBalls == 1)
      scene.items.push_back({Shape::Disc, ca, x, y, 0.0, 0.0, f * BallRadius(s.atomicNumber[ia]), {}});
    if (s.view.showLabels != -1)
      scene.items.push_back({Shape::Text, LabelColour, x, y, 0.0, 0.0, 0.0, FmtA(s.atomName[ia], 5)});
  }
  for (int a : v.marked) {
    if (a < 1 || a > s.nAtoms) continue;
    const auto [x, y] = DrawnPosition(s, v, a - 1);
    const double f = PerspectiveFactor(s.view, v.screen[a - 1][2]);
    scene.items.push_back({Shape::Ring, MarkColour, x, y, 0.0, 0.0, f * MarkRadius(s.atomicNumber[a - 1]), {}});
  }
  if (s.view.showAxes != -1) {
    // The origin of the molecular frame is taken without a perspective factor.
    const double ox = s.view.shiftX * s.view.zoom, oy = s.view.shiftY * s.view.zoom;
    static constexpr const char* kLetters[] = {"x", "y", "z"};
    for (int k = 0; k < 3; ++k) {
      const Vec3& t = v.axisTips[k];
      const double f = PerspectiveFactor(s.view, t[2]);
      scene.items.push_back({Shape::Line, AxisColour, ox, oy, t[0] * f, t[1] * f, 0.0, {}});
      scene.items.push_back({Shape::Text, AxisColour, t[0] * f, t[1] * f, 0.0, 0.0, 0.0, kLetters[k]});
    }
  }
  scene.setLine = v.setLine;
  scene.statusLine = StatusLine(s, v);
  return scene;
}

std::string CoordinateSetLine(int step, const CoordSet& set) {
  return " Step No." + FmtI(step, 3) + FmtX(5) + "Energy" + FmtF(set.energy, 15, 7) + FmtX(5) + "MaxG" +
         FmtF(set.gmax, 10, 7) + FmtX(5) + "RmsG" + FmtF(set.grms, 10, 7);
}

std::string StatusLine(const Session& s, const ViewerState& v) {
  using namespace geom;
  std::string text;
  auto label = [&](int a) { return FmtA(s.atomName[a - 1], 5); };
  auto at = [&](int a) { return s.xyz[a - 1]; };
  const auto& m = v.marked;
  switch (m.size()) {
    case 1: {
      const int a = m[0];
      const std::string symbol =
          static_cast<size_t>(a - 1) < v.symbols.size() ? v.symbols[a - 1] : s.atomName[a - 1];
      const Vec3 lab = LabCoords(s.view, at(a));
      text = " Atom" + FmtI(a, 4) + ": " + FmtA(symbol, 2) + " XYZ(A):";
      for (int k = 0; k < 3; ++k) text += FmtF(at(a)[k] * kA, 7, 3);
      text += " /";
      for (int k = 0; k < 3; ++k) text += FmtF(lab[k] * kA, 7, 3);
      break;
    }
    case 2:
      text = " Bond length between atoms  " + label(m[0]) + " and  " + label(m[1]) + " =" +
             FmtF(Norm(at(m[0]) - at(m[1])) / constants::AngstromToBohr, 9, 4) + " A.";
      break;
    case 3: {
      const Vec3 u = at(m[0]) - at(m[1]), w = at(m[2]) - at(m[1]);
      const double c = Dot(u, w) / std::sqrt(Dot(u, u) * Dot(w, w));
      const double angle = std::acos(std::clamp(c, -1.0, 1.0)) / constants::DegToRad;
      text = " Bond angle between  " + label(m[0]) + " ,  " + label(m[1]) + ",  " + label(m[2]) + " = " +
             FmtF(angle, 7, 2) + " deg.";
      break;
    }
    case 4:
      text = " Torsion between  " + label(m[0]) + ",  " + label(m[1]) + ",  " + label(m[2]) + ", " +
             label(m[3]) + " = " + FmtF(TorsionAngle(at(m[0]), at(m[1]), at(m[2]), at(m[3])), 7, 2) + " deg.";
      break;
    default: break;
  }
  if (text.size() < 66) text.resize(66, ' ');
  return text;
}

}  // namespace quintor

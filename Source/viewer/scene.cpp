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
// elements that have a colour of their own, each apart from the others and
// from the background (F and P were cyan and blue).
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
  c[9] = {144, 224, 80};  // apart from C's cyan
  c[13] = {150, 190, 255};
  c[14] = {230, 150, 0};
  c[15] = {255, 110, 180};  // pure blue vanished on the dark blue ground
  c[16] = {255, 255, 0};
  c[17] = {200, 250, 50};
  c[22] = {180, 200, 220};
  return c;
}

const std::array<Rgb, 111> kElementColours = MakeElementColours();

// Each atom's arrow points to where the film's swing takes it at its
// widest (2.0 times the displacement), with a head of two short strokes.
void AddDisplacementArrows(const Session& s, const ViewerState& v, Scene& scene) {
  const int mode = v.film.currentMode;
  if (!v.showArrows || mode < 1 || mode > static_cast<int>(s.modes.size())) return;
  const VibMode& m = s.modes[static_cast<size_t>(mode - 1)];
  for (int i = 0; i < s.nAtoms && static_cast<size_t>(i) < m.disp.size(); ++i) {
    const Vec3 tipXyz{s.xyz[i][0] + 2.0 * m.disp[i][0], s.xyz[i][1] + 2.0 * m.disp[i][1],
                      s.xyz[i][2] + 2.0 * m.disp[i][2]};
    const Vec3 tip = ScreenCoords(s.view, tipXyz);
    const double f = PerspectiveFactor(s.view, tip[2]);
    const double fa = PerspectiveFactor(s.view, v.screen[i][2]);
    const double x0 = v.screen[i][0] * fa, y0 = v.screen[i][1] * fa, x1 = tip[0] * f, y1 = tip[1] * f;
    const double dx = x1 - x0, dy = y1 - y0, len = std::hypot(dx, dy);
    if (len < 0.05) continue;  // a motion along the line of sight, or none
    scene.items.push_back({Shape::Line, ArrowColour, x0, y0, x1, y1, 0.0, {}});
    const double head = std::min(0.3, 0.3 * len), c = std::cos(0.45), sn = std::sin(0.45);
    const double ux = -dx / len, uy = -dy / len;
    for (double sign : {1.0, -1.0}) {
      const double hx = ux * c - sign * uy * sn, hy = sign * ux * sn + uy * c;
      scene.items.push_back({Shape::Line, ArrowColour, x1, y1, x1 + head * hx, y1 + head * hy, 0.0, {}});
    }
  }
}

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
  AddDisplacementArrows(s, v, scene);
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

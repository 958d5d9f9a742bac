// Frame time of the Molecular view: scene build plus painting into an
// offscreen image of the default view size, for the 1910-atom limit and
// for a 50-atom molecule; and a film frame of the Vibration view (the
// swing of every atom, the scene and the paint). Goal: 16 ms a frame at
// 1910 atoms, the film's too (its drawing time adds to the 50 ms pace).
//   build/bin/bench_viewer [frames]
#include <chrono>
#include <ctime>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include <QImage>
#include <QPainter>

#include "model/session.h"
#include "viewer/commands.h"
#include "viewer/scene.h"
#include "viewer/vibration.h"
#include "viewer/view_model.h"
#include "viewer_qt/paint.h"
#include "viewer_qt/qt_viewer.h"

using namespace quintor;

namespace {

// A block of a diamond-like lattice (C-C 1.54 A) with an H on every fourth
// site: bonds and depth everywhere, as in a large molecule.
void Lattice(Session& s, int n) {
  const double a = 1.54 * constants::AngstromToBohr;
  const int side = static_cast<int>(std::ceil(std::cbrt(n)));
  for (int i = 0; i < n; ++i) {
    const int x = i % side, y = (i / side) % side, z = i / (side * side);
    const int zNum = i % 4 == 3 ? 1 : 6;
    s.atomicNumber.push_back(zNum);
    s.atomName.emplace_back(zNum == 1 ? "H" : "C");
    s.atomMass.push_back(zNum == 1 ? 1.008 : 12.0);
    s.xyz.push_back({(x - side / 2.0) * a * 0.7, (y - side / 2.0) * a * 0.7, (z - side / 2.0) * a * 0.7});
  }
  s.nAtoms = n;
  s.Set(0).xyz = s.xyz;
  s.iCyc = 0;
}

void Measure(int atoms, int frames) {
  Session s;
  Lattice(s, atoms);
  ViewerState v;
  StartViewer(s, v);
  LoadCoordinateSet(s, v);
  s.view.zoom = atoms > 100 ? 0.35 : 1.5;
  s.view.showLabels = atoms > 100 ? -1 : 1;
  QImage image(v.window.width, v.window.height, QImage::Format_RGB32);
  double build = 0.0, paint = 0.0;
  size_t items = 0;
  for (int f = 0; f < frames; ++f) {
    RotateView(s.view, 0.0, 0.02, 0.0);  // each frame a new view, as a held arrow key gives
    const auto t0 = std::chrono::steady_clock::now();
    const Scene scene = BuildScene(s, v);
    const auto t1 = std::chrono::steady_clock::now();
    QPainter painter(&image);
    PaintScene(painter, scene, v.window);
    painter.end();
    const auto t2 = std::chrono::steady_clock::now();
    build += std::chrono::duration<double, std::milli>(t1 - t0).count();
    paint += std::chrono::duration<double, std::milli>(t2 - t1).count();
    items = scene.items.size();
  }
  std::printf("%5d atoms, %6zu primitives: scene %7.3f ms + paint %7.3f ms = frame %7.3f ms (%dx%d, %d frames)\n",
              atoms, items, build / frames, paint / frames, (build + paint) / frames, v.window.width,
              v.window.height, frames);
}

void MeasureFilm(int atoms, int frames) {
  Session s;
  Lattice(s, atoms);
  VibMode mode;
  mode.freq = 1000.0;
  for (int i = 0; i < atoms; ++i) mode.disp.push_back({0.01 * (i % 7), -0.02 * (i % 5), 0.03 * (i % 3)});
  s.modes.push_back(mode);
  ViewerState v;
  StartViewer(s, v);
  LoadCoordinateSet(s, v);
  s.view.zoom = 0.35;
  s.view.showLabels = -1;
  v.film.currentMode = 1;
  QImage image(v.window.width, v.window.height, QImage::Format_RGB32);
  double swing = 0.0, total = 0.0;
  // The processor time too: on a shared machine the wall clock waits for others.
  const std::clock_t cpu0 = std::clock();
  for (int f = 0; f < frames; ++f) {
    if (!v.film.running) StartFilm(s, v);
    const auto t0 = std::chrono::steady_clock::now();
    FilmTick(s, v);
    const auto t1 = std::chrono::steady_clock::now();
    QPainter painter(&image);
    PaintScene(painter, BuildScene(s, v), v.window);
    painter.end();
    swing += std::chrono::duration<double, std::milli>(t1 - t0).count();
    total += std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0).count();
  }
  const double cpu = 1000.0 * static_cast<double>(std::clock() - cpu0) / CLOCKS_PER_SEC;
  std::printf("%5d atoms, film frame: swing %7.3f ms, with scene and paint %7.3f ms (processor %7.3f ms) (%d frames)\n",
              atoms, swing / frames, total / frames, cpu / frames, frames);
}

}  // namespace

int main(int argc, char** argv) {
  const int frames = argc > 1 ? std::atoi(argv[1]) : 50;
  EnsureQtApplication(true);
  Measure(MaxAtoms, frames);
  Measure(50, frames * 4);
  MeasureFilm(MaxAtoms, frames);
  std::printf("goal: frame <= 16 ms at %d atoms\n", MaxAtoms);
  return 0;
}

// What the Molecular view shows, as plain data: lines, filled circles, mark
// circles and texts in world coordinates (bohr on the surface, y up), in
// the order they are painted, and the two text rows of the view. A window
// layer paints a Scene whole; tests read it without any window.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "model/session.h"
#include "viewer/internal_coords.h"
#include "viewer/viewer_state.h"

namespace quintor {

struct Rgb {
  int r = 0, g = 0, b = 0;
  friend bool operator==(const Rgb&, const Rgb&) = default;
};

inline constexpr Rgb BackgroundColour{0, 0, 128};
inline constexpr Rgb MarkColour{85, 255, 85};     // VGA palette 10, bright green
inline constexpr Rgb AxisColour{255, 255, 85};    // VGA palette 14, yellow
inline constexpr Rgb LabelColour{255, 255, 255};  // VGA palette 15, bright white
inline constexpr Rgb ArrowColour{255, 160, 0};    // displacement arrows, orange

// Colour and radii (world units) of an element's ball; the mark circle is
// a little wider than the ball.
Rgb ElementColour(int z);
double BallRadius(int z);
double MarkRadius(int z);

// World <-> pixels of the drawing surface: the height always spans 20 bohr,
// x runs from -10a to 10a with a = W/H.
struct Pixel {
  double x = 0.0, y = 0.0;  // column, row from the top left
};
Pixel WorldToWindow(const WorldWindow& w, double wx, double wy);
std::array<double, 2> WindowToWorld(const WorldWindow& w, double px, double py);
inline double PixelsPerBohr(const WorldWindow& w) { return w.height / 20.0; }

enum class Shape { Line, Disc, Ring, Text };

struct Primitive {
  Shape shape = Shape::Line;
  Rgb colour;
  double x0 = 0.0, y0 = 0.0;  // line start, circle centre, text's top left
  double x1 = 0.0, y1 = 0.0;  // line end
  double radius = 0.0;        // circles, world units
  std::string text;
};

struct Scene {
  std::vector<Primitive> items;  // painted in this order, far atoms first
  std::string setLine;           // row 1 of the view
  std::string statusLine;        // row 3
};

// Recomputes the screen coordinates of every atom (and the axis tips) from
// the view: the positions the next frame and the next hit test use.
void ProjectAll(const Session& s, ViewerState& v);

// The drawn position of atom `a` (0-based) with its perspective factor.
std::array<double, 2> DrawnPosition(const Session& s, const ViewerState& v, int a);

// ProjectAll, then the frame: per atom from far to near its bond sticks
// (half in each atom's colour), its ball and its label; then the mark
// circles, the displacement arrows of the mode on show (when switched on)
// and the axes.
Scene BuildScene(const Session& s, ViewerState& v);

// Atom numbers (1-based) from far to near; equal depths keep number order.
std::vector<int> DrawOrder(const Session& s, const ViewerState& v);

// Row 1: " Step No.  3     Energy  -76.0108...", stars for a value too wide.
std::string CoordinateSetLine(int step, const CoordSet& set);
// Row 3: the marked atoms' coordinates, distance, angle or torsion.
std::string StatusLine(const Session& s, const ViewerState& v);

}  // namespace quintor

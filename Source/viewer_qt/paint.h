// Painting a Scene with QPainter: one whole frame at a time, since Qt keeps
// the back buffer itself.
#pragma once

#include <QColor>
#include <QImage>
#include <QPainter>

#include "model/session.h"
#include "viewer/scene.h"
#include "viewer/viewer_state.h"

namespace quintor {

inline QColor ToQColor(Rgb c) { return QColor(c.r, c.g, c.b); }

// The font of the Molecular view's labels and text rows.
QFont ViewFont();
// The fixed-pitch font of the two text panes.
QFont PaneFont();

// Background, the primitives in order, then the text rows 1 and 3.
void PaintScene(QPainter& painter, const Scene& scene, const WorldWindow& window);

// A whole frame of the current state into an image of the window's size.
QImage RenderView(const Session& s, ViewerState& v);

}  // namespace quintor

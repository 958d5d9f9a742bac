#include "viewer_qt/paint.h"

#include <QFontDatabase>
#include <QFontMetrics>
#include <QPen>

namespace quintor {

QFont ViewFont() {
  QFont font("Arial");
  font.setStyleHint(QFont::SansSerif);
  font.setPixelSize(12);
  return font;
}

QFont PaneFont() {
  QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  font.setStyleHint(QFont::TypeWriter);
  font.setFixedPitch(true);  // asked for, whatever fonts the machine has
  font.setPixelSize(13);  // the 30 lines of the key help fit half a 1024-pixel frame
  return font;
}

void PaintScene(QPainter& painter, const Scene& scene, const WorldWindow& window) {
  painter.fillRect(QRect(0, 0, window.width, window.height), ToQColor(BackgroundColour));
  // Smooth edges cost most of a frame of a large molecule, where they are
  // too small to see: a film of 1910 atoms keeps its pace without them.
  const bool smooth = scene.items.size() < 4000;
  painter.setRenderHint(QPainter::Antialiasing, smooth);
  painter.setFont(ViewFont());
  const double scale = PixelsPerBohr(window);
  QPen pen;
  pen.setWidthF(smooth ? 1.0 : 0.0);  // 0: Qt's one-pixel line, its fastest
  pen.setCapStyle(Qt::FlatCap);
  // A pen is set only when the colour of the lines changes.
  bool penSet = false;
  Rgb penColour;
  for (const Primitive& p : scene.items) {
    const QColor colour = ToQColor(p.colour);
    const Pixel a = WorldToWindow(window, p.x0, p.y0);
    if (p.shape != Shape::Line) penSet = false;
    switch (p.shape) {
      case Shape::Line: {
        const Pixel b = WorldToWindow(window, p.x1, p.y1);
        if (!penSet || !(penColour == p.colour)) {
          pen.setColor(colour);
          painter.setPen(pen);
          penSet = true, penColour = p.colour;
        }
        if (smooth)
          painter.drawLine(QPointF(a.x, a.y), QPointF(b.x, b.y));
        else  // whole pixels take the raster engine's fast path
          painter.drawLine(QLine(qRound(a.x), qRound(a.y), qRound(b.x), qRound(b.y)));
        break;
      }
      case Shape::Disc: {
        const double r = p.radius * scale;
        painter.setPen(Qt::NoPen);
        painter.setBrush(colour);
        painter.drawEllipse(QPointF(a.x, a.y), r, r);
        break;
      }
      case Shape::Ring: {
        const double r = p.radius * scale;
        pen.setColor(colour);
        painter.setPen(pen);
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(QPointF(a.x, a.y), r, r);
        break;
      }
      case Shape::Text:
        pen.setColor(colour);
        painter.setPen(pen);
        // The text's top left corner stands at the point.
        painter.drawText(QRectF(a.x, a.y, 400.0, 100.0), Qt::AlignLeft | Qt::AlignTop, QString::fromStdString(p.text));
        break;
    }
  }
  // Text rows 1 and 3 of the view, in white over the picture.
  painter.setPen(ToQColor(LabelColour));
  const int row = QFontMetrics(painter.font()).height();
  painter.drawText(QRectF(2, 0, window.width, row), Qt::AlignLeft | Qt::AlignTop, QString::fromStdString(scene.setLine));
  painter.drawText(QRectF(2, 2 * row, window.width, row), Qt::AlignLeft | Qt::AlignTop,
                   QString::fromStdString(scene.statusLine));
}

QImage RenderView(const Session& s, ViewerState& v) {
  QImage image(v.window.width, v.window.height, QImage::Format_RGB32);
  QPainter painter(&image);
  PaintScene(painter, BuildScene(s, v), v.window);
  return image;
}

}  // namespace quintor

#include "viewer_qt/plots.h"

#include <algorithm>
#include <cmath>

#include <QFontMetricsF>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include "viewer/vibration.h"
#include "viewer_qt/paint.h"

namespace quintor {

namespace {

constexpr int kMargin = 30;

// The wavenumber range of the plot and the largest value of curve and sticks.
struct Frame {
  double lo = 0.0, hi = 1.0, top = 1.0;
  QRectF box;
  double X(double wavenumber) const { return box.left() + (wavenumber - lo) / (hi - lo) * box.width(); }
  double Y(double value) const { return box.bottom() - value / top * box.height(); }
};

Frame PlotFrame(const QRect& area, const std::vector<SpectrumPoint>& curve, const Session& s) {
  Frame f;
  f.box = QRectF(area.left() + kMargin, area.top() + 10, area.width() - kMargin - 10, area.height() - kMargin - 10);
  if (!curve.empty()) f.lo = curve.front().wavenumber, f.hi = curve.back().wavenumber;
  double top = 0.0;
  for (const SpectrumPoint& p : curve) top = std::max(top, p.value);
  for (const VibMode& m : s.modes) top = std::max(top, m.intensity * IntensityScale);
  if (top > 0.0) f.top = top * 1.05;
  return f;
}

}  // namespace

void PaintSpectrum(QPainter& painter, const QRect& area, const Session& s, int current, double fwhm) {
  painter.fillRect(area, Qt::white);
  painter.setRenderHint(QPainter::Antialiasing, true);
  painter.setFont(ViewFont());
  const auto curve = BroadenedSpectrum(s.modes, fwhm);
  if (curve.empty()) {
    painter.drawText(area, Qt::AlignCenter, "No vibrational frequencies");
    return;
  }
  const Frame f = PlotFrame(area, curve, s);
  painter.setPen(Qt::black);
  painter.drawRect(f.box);
  // Ticks every 500 cm-1 and the axis name.
  for (double x = std::ceil(f.lo / 500.0) * 500.0; x <= f.hi; x += 500.0) {
    painter.drawLine(QPointF(f.X(x), f.box.bottom()), QPointF(f.X(x), f.box.bottom() + 4));
    painter.drawText(QRectF(f.X(x) - 30, f.box.bottom() + 4, 60, 14), Qt::AlignCenter, QString::number(x));
  }
  painter.drawText(QRectF(area.left(), area.bottom() - 12, area.width(), 12), Qt::AlignCenter,
                   QString(s.opt.raman ? "Raman activity" : "IR intensity") + ", wavenumber (cm-1), FWHM " +
                       QString::number(fwhm) + " cm-1");
  for (size_t k = 0; k < s.modes.size(); ++k) {
    const VibMode& m = s.modes[k];
    if (!m.given || m.freq <= 0.0) continue;
    const bool highlighted = static_cast<int>(k) + 1 == current;
    painter.setPen(QPen(highlighted ? QColor(220, 0, 0) : QColor(120, 120, 120), highlighted ? 2.0 : 1.0));
    painter.drawLine(QPointF(f.X(m.freq), f.box.bottom()), QPointF(f.X(m.freq), f.Y(m.intensity * IntensityScale)));
  }
  QPainterPath path;
  path.moveTo(f.X(curve.front().wavenumber), f.Y(curve.front().value));
  for (const SpectrumPoint& p : curve) path.lineTo(f.X(p.wavenumber), f.Y(p.value));
  painter.setPen(QPen(QColor(0, 0, 160), 1.5));
  painter.setBrush(Qt::NoBrush);
  painter.drawPath(path);
}

SpectrumPane::SpectrumPane(const Session& s, QWidget* parent) : QWidget(parent), s_(s) {
  setMinimumSize(200, 150);
  setFocusPolicy(Qt::NoFocus);  // keys belong to the Molecular view
}

int SpectrumPane::ModeAt(double px) const {
  const auto curve = BroadenedSpectrum(s_.modes);
  if (curve.empty()) return 0;
  const Frame f = PlotFrame(rect(), curve, s_);
  int best = 0;
  double bestD = 1e300;
  for (size_t k = 0; k < s_.modes.size(); ++k) {
    const VibMode& m = s_.modes[k];
    if (!m.given || m.freq <= 0.0) continue;
    const double d = std::abs(f.X(m.freq) - px);
    if (d < bestD) bestD = d, best = static_cast<int>(k) + 1;
  }
  return best;
}

void SpectrumPane::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  PaintSpectrum(painter, rect(), s_, current, fwhm);
}

void SpectrumPane::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::RightButton) {
    if (onAskWidth) onAskWidth();
    return;
  }
  const int mode = ModeAt(event->position().x());
  if (mode > 0 && onMode) onMode(mode);
}

namespace {

// Steps 0 .. iCyc along x; the box inside the margins.
QRectF EnergyBox(const QRect& area) {
  return QRectF(area.left() + kMargin + 60, area.top() + 10, area.width() - kMargin - 80, area.height() - kMargin - 10);
}

double StepX(const QRectF& box, int step, int last) {
  return last > 0 ? box.left() + box.width() * step / last : box.center().x();
}

}  // namespace

EnergyPane::EnergyPane(const Session& s, const int& currentSet, QWidget* parent)
    : QWidget(parent), s_(s), current_(currentSet) {
  setMinimumSize(200, 120);
  setFocusPolicy(Qt::NoFocus);
}

int EnergyPane::SetAt(double px) const {
  const QRectF box = EnergyBox(rect());
  int best = 0;
  for (int k = 1; k <= s_.iCyc; ++k)
    if (std::abs(StepX(box, k, s_.iCyc) - px) < std::abs(StepX(box, best, s_.iCyc) - px)) best = k;
  return best;
}

void EnergyPane::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), Qt::white);
  painter.setRenderHint(QPainter::Antialiasing, true);
  painter.setFont(ViewFont());
  const int last = s_.iCyc;
  if (last < 0) return;
  double lo = 1e300, hi = -1e300, gTop = 0.0;
  for (int k = 0; k <= last; ++k) {
    const CoordSet& set = s_.Set(k);
    lo = std::min(lo, set.energy), hi = std::max(hi, set.energy);
    if (set.gmax != NotGiven) gTop = std::max(gTop, set.gmax);
  }
  if (hi - lo < 1e-9) hi = lo + 1e-6;
  const QRectF box = EnergyBox(rect());
  painter.setPen(Qt::black);
  painter.drawRect(box);
  painter.drawText(QRectF(0, rect().bottom() - 12, width(), 12), Qt::AlignCenter,
                   gTop > 0.0 ? "Energy (blue, Hartree) and max. gradient (grey) by step" : "Energy (Hartree) by step");
  painter.drawText(QRectF(0, box.top() - 2, kMargin + 56, 14), Qt::AlignRight, QString::number(hi, 'f', 5));
  painter.drawText(QRectF(0, box.bottom() - 12, kMargin + 56, 14), Qt::AlignRight, QString::number(lo, 'f', 5));
  auto y = [&](double e) { return box.bottom() - (e - lo) / (hi - lo) * box.height(); };
  auto plot = [&](auto value, const QColor& colour, bool skipMissing) {
    QPainterPath path;
    bool started = false;
    for (int k = 0; k <= last; ++k) {
      const double val = value(s_.Set(k));
      if (skipMissing && val == NotGiven) continue;
      const QPointF p(StepX(box, k, last), val);
      started ? path.lineTo(p) : path.moveTo(p);
      started = true;
    }
    painter.setPen(QPen(colour, 1.5));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(path);
  };
  if (gTop > 0.0)
    plot([&](const CoordSet& c) { return c.gmax == NotGiven ? NotGiven : box.bottom() - c.gmax / gTop * box.height(); },
         QColor(150, 150, 150), true);
  plot([&](const CoordSet& c) { return y(c.energy); }, QColor(0, 0, 160), false);
  for (int k = 0; k <= last; ++k) {
    const bool on = k == current_;
    painter.setPen(Qt::NoPen);
    painter.setBrush(on ? QColor(220, 0, 0) : QColor(0, 0, 160));
    painter.drawEllipse(QPointF(StepX(box, k, last), y(s_.Set(k).energy)), on ? 4.0 : 2.5, on ? 4.0 : 2.5);
  }
}

void EnergyPane::mousePressEvent(QMouseEvent* event) {
  if (s_.iCyc >= 0 && onSet) onSet(SetAt(event->position().x()));
}

}  // namespace quintor

namespace quintor {

void PaintCurves(QPainter& painter, const QRect& area, const QString& title, const QString& xName,
                 const std::vector<PlotSeries>& series) {
  painter.fillRect(area, Qt::white);
  painter.setRenderHint(QPainter::Antialiasing, true);
  painter.setFont(ViewFont());
  double xLo = 1e300, xHi = -1e300, yLo = 1e300, yHi = -1e300;
  for (const PlotSeries& s : series)
    for (size_t k = 0; k < s.x.size() && k < s.y.size(); ++k) {
      xLo = std::min(xLo, s.x[k]), xHi = std::max(xHi, s.x[k]);
      yLo = std::min(yLo, s.y[k]), yHi = std::max(yHi, s.y[k]);
    }
  painter.setPen(Qt::black);
  painter.drawText(QRectF(area.left(), area.top(), area.width(), 14), Qt::AlignCenter, title);
  if (xLo > xHi) {
    painter.drawText(area, Qt::AlignCenter, "No temperature table");
    return;
  }
  if (xHi - xLo < 1e-12) xHi = xLo + 1.0;
  if (yHi - yLo < 1e-12) yHi = yLo + 1.0;
  const QRectF box(area.left() + kMargin + 30, area.top() + 16, area.width() - kMargin - 40, area.height() - kMargin - 20);
  auto X = [&](double x) { return box.left() + (x - xLo) / (xHi - xLo) * box.width(); };
  auto Y = [&](double y) { return box.bottom() - (y - yLo) / (yHi - yLo) * box.height(); };
  painter.drawRect(box);
  painter.drawText(QRectF(area.left(), box.top() - 2, kMargin + 26, 14), Qt::AlignRight, QString::number(yHi, 'g', 5));
  painter.drawText(QRectF(area.left(), box.bottom() - 12, kMargin + 26, 14), Qt::AlignRight,
                   QString::number(yLo, 'g', 5));
  painter.drawText(QRectF(box.left() - 30, box.bottom() + 2, 60, 14), Qt::AlignCenter, QString::number(xLo, 'g', 5));
  painter.drawText(QRectF(box.right() - 60, box.bottom() + 2, 60, 14), Qt::AlignRight, QString::number(xHi, 'g', 5));
  painter.drawText(QRectF(box.left(), box.bottom() + 2, box.width(), 14), Qt::AlignCenter, xName);
  double legendY = box.top() + 4;
  for (const PlotSeries& s : series) {
    QPainterPath path;
    for (size_t k = 0; k < s.x.size() && k < s.y.size(); ++k)
      k == 0 ? path.moveTo(X(s.x[k]), Y(s.y[k])) : path.lineTo(X(s.x[k]), Y(s.y[k]));
    painter.setPen(QPen(s.colour, 1.5));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(path);
    // The legend on white, over whatever line passes beneath.
    const QRectF legend(box.left() + 2, legendY, QFontMetricsF(painter.font()).horizontalAdvance(s.name) + 30, 14);
    painter.fillRect(legend, Qt::white);
    painter.drawLine(QPointF(box.left() + 6, legendY + 6), QPointF(box.left() + 22, legendY + 6));
    painter.drawText(QRectF(box.left() + 26, legendY, box.width() - 30, 14), Qt::AlignLeft | Qt::AlignVCenter, s.name);
    legendY += 14;
  }
}

CurvePlot::CurvePlot(const QString& title_, const QString& xName_, QWidget* parent)
    : QWidget(parent), title(title_), xName(xName_) {
  setMinimumSize(160, 120);
  setFocusPolicy(Qt::NoFocus);
}

void CurvePlot::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  PaintCurves(painter, rect(), title, xName, series);
}

}  // namespace quintor

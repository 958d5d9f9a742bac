// The spectrum of the modes as a small QPainter plot: the broadened curve
// and the sticks, the current mode in another colour. The same picture
// goes to the spectrum pane and to /SPECTRUM@file.png.
#pragma once

#include <functional>
#include <vector>

#include <QColor>
#include <QString>

#include <QWidget>

#include "model/session.h"

namespace quintor {

// The plot into `area`; `current` is the 1-based mode to highlight (0: none),
// `fwhm` the full width of the Lorentzians, cm-1.
void PaintSpectrum(QPainter& painter, const QRect& area, const Session& s, int current, double fwhm);

// The pane: a left click plays the mode whose stick is nearest (onMode), a
// right click asks for the line width (onAskWidth).
class SpectrumPane : public QWidget {
 public:
  explicit SpectrumPane(const Session& s, QWidget* parent = nullptr);
  std::function<void(int)> onMode;
  std::function<void()> onAskWidth;
  int current = 0;
  double fwhm = 10.0;  // cm-1
  // The mode (1-based) whose stick stands nearest to the pixel column; 0 without modes.
  int ModeAt(double px) const;

 protected:
  void paintEvent(QPaintEvent*) override;
  void mousePressEvent(QMouseEvent* event) override;

 private:
  const Session& s_;
};

// The energy of each coordinate set against its step (and the largest
// gradient where the log gave it); a click goes to the nearest set.
class EnergyPane : public QWidget {
 public:
  EnergyPane(const Session& s, const int& currentSet, QWidget* parent = nullptr);
  std::function<void(int)> onSet;
  int SetAt(double px) const;

 protected:
  void paintEvent(QPaintEvent*) override;
  void mousePressEvent(QMouseEvent* event) override;

 private:
  const Session& s_;
  const int& current_;
};

}  // namespace quintor

namespace quintor {

// One line of a curve plot.
struct PlotSeries {
  QString name;
  QColor colour;
  std::vector<double> x, y;
};

// Lines of y against x in `area` with a box, the ends of both axes, the
// axis names and a legend of the series' names.
void PaintCurves(QPainter& painter, const QRect& area, const QString& title, const QString& xName,
                 const std::vector<PlotSeries>& series);

// A pane that paints its series with PaintCurves.
class CurvePlot : public QWidget {
 public:
  CurvePlot(const QString& title, const QString& xName, QWidget* parent = nullptr);
  std::vector<PlotSeries> series;
  QString title, xName;

 protected:
  void paintEvent(QPaintEvent*) override;
};

}  // namespace quintor

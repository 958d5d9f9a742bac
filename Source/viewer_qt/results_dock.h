// The results dock beside the text results: the thermochemistry at the
// run's temperature and pressure as text, and CP, S, H and G against T from
// the temperature tables, one line per model of the rotations.
#pragma once

#include <array>
#include <vector>

#include <QPlainTextEdit>
#include <QWidget>

#include "model/session.h"
#include "viewer/results_summary.h"
#include "viewer_qt/plots.h"

namespace quintor {

class ResultsPane : public QWidget {
 public:
  explicit ResultsPane(const Session& s, QWidget* parent = nullptr);
  // Reads the Session again; repaints only when the results changed (a new
  // evaluation from the Calculations menu).
  void Refresh();
  QPlainTextEdit* text() const { return text_; }
  // CP, S, H, G in that order.
  const std::array<CurvePlot*, 4>& plots() const { return plots_; }

 private:
  const Session& s_;
  QPlainTextEdit* text_ = nullptr;
  std::array<CurvePlot*, 4> plots_{};
  std::vector<std::string> lines_;
  std::vector<ThermoCurve> curves_;
};

}  // namespace quintor

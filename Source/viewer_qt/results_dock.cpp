#include "viewer_qt/results_dock.h"

#include <QGridLayout>
#include <QTextCursor>
#include <QVBoxLayout>

#include "viewer_qt/paint.h"

namespace quintor {

ResultsPane::ResultsPane(const Session& s, QWidget* parent) : QWidget(parent), s_(s) {
  setFocusPolicy(Qt::NoFocus);  // keys belong to the Molecular view
  setMinimumSize(380, 440);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  text_ = new QPlainTextEdit;
  text_->setReadOnly(true);
  text_->setFont(PaneFont());
  text_->setFocusPolicy(Qt::NoFocus);
  text_->setLineWrapMode(QPlainTextEdit::NoWrap);
  text_->setMinimumHeight(120);
  layout->addWidget(text_, 2);
  auto* grid = new QGridLayout;
  const char* titles[4] = {"CP, J/K/mol", "S, J/K/mol", "H, kJ/mol", "G, kJ/mol"};
  for (int k = 0; k < 4; ++k) {
    plots_[k] = new CurvePlot(titles[k], "T, K");
    grid->addWidget(plots_[k], k / 2, k % 2);
  }
  layout->addLayout(grid, 3);
  Refresh();
}

void ResultsPane::Refresh() {
  const ThermoSummary t = SummariseThermochemistry(s_);
  std::vector<std::string> lines = ThermoSummaryLines(t);
  if (lines == lines_ && t.curves == curves_) return;
  lines_ = std::move(lines);
  curves_ = t.curves;
  text_->clear();
  for (const std::string& line : lines_) text_->appendPlainText(QString::fromStdString(line));
  text_->moveCursor(QTextCursor::Start);
  const QColor colours[] = {QColor(0, 0, 160), QColor(200, 0, 0), QColor(0, 130, 0), QColor(120, 0, 160)};
  for (int k = 0; k < 4; ++k) {
    plots_[k]->series.clear();
    for (size_t c = 0; c < curves_.size(); ++c) {
      const ThermoCurve& curve = curves_[c];
      const std::vector<double>* y[4] = {&curve.cp, &curve.s, &curve.h, &curve.g};
      plots_[k]->series.push_back(
          {QString::fromStdString(ModelTitle(curve.model)), colours[c % 4], curve.temperature, *y[k]});
    }
    plots_[k]->update();
  }
}

}  // namespace quintor

// quintor: read a quantum-chemistry log, show it and evaluate its
// thermochemistry. Under /0 the run is unattended (batch mode).
#include <string>
#include <vector>

#include "app/run.h"
#include "model/session.h"
#include "viewer_qt/qt_viewer.h"

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  quintor::Session session;
  const quintor::Frontend windows{quintor::HasDisplay, quintor::RunWindows, quintor::SnapView};
  return quintor::RunQuintor(session, args, &windows);
}

// quintor: read a quantum-chemistry log, report on it and evaluate its
// thermochemistry. Under /0 the run is unattended (batch mode).
#include <string>
#include <vector>

#include "app/run.h"
#include "model/session.h"

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  quintor::Session session;
  return quintor::RunQuintor(session, args);
}

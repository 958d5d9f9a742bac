// quintor: read a quantum-chemistry log, show it and evaluate its
// thermochemistry. Under /0 the run is unattended (batch mode).
//
// Two programs are built from this file: quintor-gui with the windows (Qt),
// and quintor without them. quintor hands a run that opens windows over to
// quintor-gui beside it, so that a batch run over thousands of logs never
// loads the window libraries.
#include <string>
#include <vector>

#include "app/run.h"
#include "model/session.h"

#ifdef QUINTOR_WINDOWS
#include "viewer_qt/qt_viewer.h"
#else
#include <unistd.h>

#include <filesystem>

#include "app/command_line.h"
#endif

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  quintor::Session session;
#ifdef QUINTOR_WINDOWS
  const quintor::Frontend windows{quintor::HasDisplay, quintor::RunWindows, quintor::SnapView,
                                  quintor::AskYesNoDialog, quintor::AskTextDialog,
                                  quintor::PlotSpectrumPng, quintor::RunWindowsWith, quintor::AskJobDialog};
  return quintor::RunQuintor(session, args, &windows);
#else
  if (quintor::OpensWindows(args)) {
    std::error_code ec;
    const auto gui = std::filesystem::read_symlink("/proc/self/exe", ec).parent_path() / "quintor-gui";
    if (!ec) ::execv(gui.c_str(), argv);  // returns only when it could not start
    session.Console() << " WARNING! The windows are not installed (" << gui.string()
                      << "): the run goes on as with /0\n";
  }
  return quintor::RunQuintor(session, args);
#endif
}

#include "app/run.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <new>
#include <ostream>

#include "app/command_line.h"
#include "app/conformers.h"
#include "app/report.h"
#include "app/results.h"
#include "app/scale_auto.h"
#include "io/file_names.h"
#include "io/fortran_io.h"
#include "io/line_reader.h"
#include "numeric/jacobi.h"
#include "readers/config_file.h"
#include "readers/read_pass.h"
#include "readers/tdi_file.h"
#include "viewer/view_model.h"

namespace quintor {

namespace fs = std::filesystem;

namespace {

bool Exists(const std::string& path) {
  std::error_code ec;
  return !path.empty() && fs::exists(path, ec);
}

std::string WithSlash(std::string dir) {
  if (!dir.empty() && dir.back() != '/') dir.push_back('/');
  return dir;
}

// The home directory comes from QUINTOR (or Quintor) and ends in '/'.
void TakeHomeDir(Session& s) {
  const char* env = std::getenv("QUINTOR");
  if (!env || !*env) env = std::getenv("Quintor");
  std::string home = env ? env : "";
  if (home.size() > static_cast<size_t>(MaxLine)) {
    s.Console() << "Env.var QUINTOR too long\n";
    home.clear();
  }
  s.files.homeDir = WithSlash(home);
}

void CheckFragmentDb(Session& s) {
  s.files.fragmentDb = s.files.homeDir + "Quintor.fdb";
  if (Exists(s.files.fragmentDb)) return;
  s.Console() << " Cannot find Fragment Database in the Quintor home directory: " << FmtA(s.files.homeDir, 32)
              << "\n New file will be created: " << FmtA(s.files.fragmentDb, 32) << "\n";
}

// The banner: lines of 55 characters between asterisks, indented by 13 blanks.
void WriteBanner(Session& s) {
  const std::string indent(13, ' ');
  auto framed = [&](std::string_view text) {
    std::string inner(text);
    inner.resize(53, ' ');
    s.log.Line(indent + "*" + inner + "*");
  };
  auto centred = [&](std::string_view text) {
    size_t left = (53 - text.size()) / 2;
    framed(std::string(left, ' ') + std::string(text));
  };
  s.log.Line(indent + std::string(55, '*'));
  s.log.Line(indent + "*                   QUINTOR v.2.5                     *");
  s.log.Line(indent + "*               (build number" + FmtI(BuildNumber, 6) + ")                  *");
  s.log.Line(indent + "*        A program for molecular visualization,       *");
  s.log.Line(indent + "*                normal modes animation,              *");
  s.log.Line(indent + "*      and thermochemical properties evaluation.      *");
  s.log.Line(indent + "*                                                     *");
  centred("Quintor for Linux: C++20 edition");
  centred("Reads Gaussian, GAMESS, Priroda and XYZ inputs;");
  centred("internal rotations, hindered rotors and");
  centred("Monte Carlo thermochemistry.");
  framed("");
  s.log.Line(indent + std::string(55, '*'));
}

std::string CurrentDir() {
  std::error_code ec;
  return WithSlash(fs::current_path(ec).string());
}

// A scratch MainLog for /NOLOG, in the temporary directory.
std::string ScratchLogName() {
  std::error_code ec;
  fs::path dir = fs::temp_directory_path(ec);
  if (ec) dir = "/tmp";
  return (dir / ("quintor_" + std::to_string(::getpid()) + ".mou")).string();
}

// A windowed run on an input that does not exist: the user may build a new
// structure instead. True when he chose to; the input name is then settled
// (asked for when blank).
bool AskForNewStructure(Session& s, const Frontend& frontend) {
  RunFiles& f = s.files;
  if (!frontend.askYesNo ||
      !frontend.askYesNo("File " + std::string(Trim(f.inputName)) +
                         " does not exist. Do you want to create a new structure?"))
    return false;
  if (Trim(f.inputName).empty() && frontend.askText)
    f.inputName = frontend.askText("File name should be given. Please specify it now:", "Molecule.inp");
  if (Trim(f.inputName).empty()) f.inputName = "Molecule.inp";
  return true;
}

// The MainLog of a new structure is the input name itself: the file that the
// viewer's work leaves is a log the program reads back.
bool StartNewStructure(Session& s, int& status) {
  RunFiles& f = s.files;
  f.logName = f.inputName;
  f.tdoName = DerivedName(f.inputName, ".tdo");
  if (!s.log.Open(s.opt.noLog ? (f.scratchLog = ScratchLogName()) : f.logName)) {
    s.Console() << " Can not open output file " << f.logName << "\n";
    status = exit_status::CanNotWrite;
    return false;
  }
  WriteBanner(s);
  f.currentDir = CurrentDir();
  return true;
}

// A ".xyz" input with no format flag is an XYZ file: count and title
// lines, then symbol X Y Z rows.
void TakeXyzByName(Session& s) {
  if (s.opt.formatCode != FormatCode::Automatic) return;
  const std::string name = Upper(Trim(s.files.inputName));
  if (name.size() < 4 || name.compare(name.size() - 4, 4, ".XYZ") != 0) return;
  s.opt.formatCode = FormatCode::Nxyz;
  s.opt.skipLines = 2;
}

// Start-up up to the read pass. Returns false when the run ended here, with
// `status` set. `newStructure` is set when a windowed run on a missing input
// goes to the viewer with no atoms instead.
bool StartUp(Session& s, LineReader& in, int& status, const Frontend* frontend, bool windowed,
             bool& newStructure) {
  TakeHomeDir(s);
  ReadConfig(s);
  CheckFragmentDb(s);

  RunFiles& f = s.files;
  // No input named: the job dialog asks for it, when there are windows.
  if (Trim(f.inputName).empty() && windowed && frontend->jobDialog) {
    if (!frontend->hasDisplay()) {
      status = exit_status::NoDisplay;
      s.Console() << " ERROR! No display: use /0 for a batch run\n";
      return false;
    }
    frontend->jobDialog(s);  // Cancel leaves the name blank
  }
  StatusMessage(s, " *** Reading the data ***");
  if (windowed && frontend->hasDisplay() && !Exists(f.inputName)) {
    if (!AskForNewStructure(s, *frontend)) {  // No: a silent stop
      status = exit_status::NoInput;
      return false;
    }
    newStructure = !Exists(f.inputName);
    if (newStructure) return StartNewStructure(s, status);
  }
  if (Trim(f.inputName).empty()) {
    s.Console() << " No input file given. Usage: quintor <input file> [flags]; quintor --help lists the flags.\n";
    status = exit_status::NoInput;
    return false;
  }
  if (!Exists(f.inputName)) {
    s.Console() << " File " << f.inputName << " does not exist.\n";
    status = exit_status::NoInput;
    return false;
  }
  if (!in.Open(f.inputName)) {
    s.Console() << " File " << f.inputName << " can not be read.\n";
    status = exit_status::NoInput;
    return false;
  }

  StatusMessage(s, " Input file              :" + f.inputName.substr(0, 228));
  f.logName = DerivedName(f.inputName, ".mou");
  f.tdoName = DerivedName(f.inputName, ".tdo");
  std::string logFile = f.logName;
  if (s.opt.noLog) logFile = f.scratchLog = ScratchLogName();
  if (!s.log.Open(logFile)) {
    s.Console() << " Can not open output file " << logFile << "\n";
    status = exit_status::CanNotWrite;
    return false;
  }

  WriteBanner(s);
  StatusMessage(s, " Output file             :" + f.logName.substr(0, 228));
  s.log.Line(" Input file              :" + std::string(Trim(f.inputName)));
  s.log.Line(" Output file             :" + std::string(Trim(f.logName)));
  f.baseName = BaseName(f.inputName);

  if (!s.opt.specNameExplicit) f.specName = WithExtension(f.inputName, ".tdi");
  if (!Exists(f.specName)) {
    if (s.opt.specNameExplicit) {
      s.log.Line(" WARNING!!! Requested specification file not found: " + std::string(Trim(f.specName)));
      StatusMessage(s, " WARNING!!! Requested specification file not found: " + f.specName.substr(0, 201));
    } else {
      s.log.Line(" TD specifications file  :none");
      StatusMessage(s, " TD specifications file  :none");
    }
  } else {
    s.log.Line(" Specification file      :" + std::string(Trim(f.specName)));
    StatusMessage(s, " Specification file      :" + f.specName.substr(0, 228));
  }

  f.currentDir = CurrentDir();
  s.log.Line(" Current directory       :" + f.currentDir);
  s.log.Line(" Quintor home directory  :" + f.homeDir);
  s.log.Line(" Configuration file      :" + f.configFile);
  s.log.Line(" Fragment database       :" + f.fragmentDb);
  s.log.WritePending();

  if (s.opt.orient) {
    s.log.Line(" The molecular geometry will be shown on screen as re-oriented:");
    const std::string pad(26, ' ');
    s.log.Line(pad + "atom" + FmtI(s.opt.orientAtoms[0], 5) + "  will be placed to coordinate origin O,");
    s.log.Line(pad + "atom" + FmtI(s.opt.orientAtoms[1], 5) + "  will be placed on positive OX axis,");
    s.log.Line(pad + "atom" + FmtI(s.opt.orientAtoms[2], 5) + "  will be placed in 1st quadrant of OXY plane.");
  }
  s.log.Text(" Input file format       :");

  if (Exists(f.specName)) {
    LineReader spec;
    if (spec.Open(f.specName)) ReadSpecFile(s, spec);
  }
  return true;
}

// Every stop on an error ends here: the MainLog keeps what was written.
int Stop(Session& s, int status) {
  s.log.Close(s.opt.noLog);
  return status;
}

// A stop with its message on the screen and at the end of the MainLog.
int StopWithMessage(Session& s, const std::string& message, int status) {
  s.Console() << message << "\n";
  s.log.EndLine();
  s.log.Line(message);
  return Stop(s, status);
}

// The results a script reads (/JSON, /CSV@), for every run that was asked
// for, also one that stopped: in a sweep no log goes missing.
void ReportResults(Session& s, int status) {
  if (s.opt.json && !s.files.logName.empty() && !WriteResultsJson(s, status))
    s.Console() << " WARNING! Can not write " << DerivedName(s.files.inputName, ".json") << "\n";
  if (!s.opt.csvFile.empty() && !AppendCsvRow(s.opt.csvFile, s, status))
    s.Console() << " WARNING! Can not append to " << s.opt.csvFile << "\n";
}

// The interactive stage, and its end: the evaluation (when asked for) as the
// run ends, or the close of a run that hands over to another session.
int Interact(Session& s, const std::function<bool()>& stage) {
  if (stage()) s.opt.doThermo = true;
  if (s.next.asked) return CloseForNewSession(s);
  return EndRun(s);
}

int RunSession(Session& s, const std::vector<std::string>& args, bool& asked, const Frontend* frontend,
               bool restart = false) {
  LineReader in;
  try {
    // A new session from the window has no command line: the job dialog asks.
    switch (restart ? CommandLineAction::Run : ParseCommandLine(s, args)) {
      case CommandLineAction::Help:
        s.Console() << UsageText();
        return exit_status::Ok;
      case CommandLineAction::Version:
        s.Console() << " " << VersionText << " (build number " << BuildNumber << ")\n";
        return exit_status::Ok;
      case CommandLineAction::Run:
        asked = true;
        break;
    }
    int status = exit_status::Ok;
    const bool replay = !s.opt.playFile.empty() || !s.opt.saveFile.empty() || !s.opt.zmatFile.empty();
    const bool windowed = frontend && !s.opt.noGraphics && s.opt.snapFile.empty() && !replay;
    bool newStructure = false;
    if (!StartUp(s, in, status, frontend, windowed, newStructure)) return Stop(s, status);
    // Windows are needed before the read pass; without a display the run
    // stops here, not inside the window system.
    if (windowed && !frontend->hasDisplay())
      return StopWithMessage(s, " ERROR! No display: use /0 for a batch run", exit_status::NoDisplay);
    TakeXyzByName(s);
    if (newStructure) {  // no atoms, no report: the structure is built in the viewer
      s.view = StartingView(s.opt);
      return Interact(s, [&] {
        frontend->interact(s);
        s.opt.doThermo = false;  // nothing to evaluate without atoms
        return false;
      });
    }
    ReadPass(s, in, [&s] {
      // A batch run never waits for a key: it ends as the answer Y would.
      if (s.opt.noGraphics) return false;
      s.Console() << " Exit? ([Y]/N) -->" << std::flush;
      const int key = s.Keyboard().get();
      s.Console() << "\n";
      return key == 'N' || key == 'n';
    });
    in.Close();
    ApplyScaleAuto(s);
    PostReadReport(s);
    RunEngineJobs(s);
    RunVibrationEntries(s, frontend);
    s.view = StartingView(s.opt);  // under /0 the view is never touched
    if (frontend && !s.opt.snapFile.empty()) {
      if (!frontend->snapshot(s, s.opt.snapFile)) {
        s.Console() << " ERROR! Can not write " << s.opt.snapFile << "\n";
        EndRun(s);
        return exit_status::CanNotWrite;
      }
    } else if (replay) {
      return Interact(s, [&] { return ReplayPlayFile(s); });
    } else if (windowed) {
      return Interact(s, [&] {
        return frontend->interactWith ? frontend->interactWith(s, RunServices()) : frontend->interact(s);
      });
    }
    return EndRun(s);
  } catch (const BadOption& e) {
    asked = true;
    return StopWithMessage(s, e.what(), exit_status::ReadError);
  } catch (const FatalReadError& e) {
    asked = true;  // also a bad option value
    return StopWithMessage(s, e.what(), exit_status::ReadError);
  } catch (const RunStop& stop) {
    return Stop(s, stop.status);
  } catch (const JacobiFailure& e) {
    return StopWithMessage(s, std::string(" ") + e.what(), exit_status::Numeric);
  } catch (const std::bad_alloc&) {
    return StopWithMessage(s, " FATAL ERROR: not enough memory", exit_status::Limit);
  } catch (const std::exception& e) {
    return StopWithMessage(s, std::string(" FATAL ERROR: ") + e.what(), exit_status::Internal);
  }
}

}  // namespace

int RunQuintor(Session& s, const std::vector<std::string>& args, const Frontend* frontend) {
  if (AsksForEnsemble(args)) return RunEnsemble(s, args);
  bool asked = false;
  int status = RunSession(s, args, asked, frontend);
  if (asked) ReportResults(s, status);
  // File > New Session or File > Open: the run above closed; the next one
  // starts from the defaults in the same Session, each on top of the last.
  while (status == exit_status::Ok && StartNextSession(s, frontend)) {
    status = RunSession(s, {}, asked, frontend, true);
    ReportResults(s, status);
  }
  return status;
}

}  // namespace quintor

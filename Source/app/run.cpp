#include "app/run.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <new>
#include <ostream>

#include "app/command_line.h"
#include "app/report.h"
#include "app/results.h"
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

// Start-up up to the read pass. Returns false when the run ended here, with
// `status` set.
bool StartUp(Session& s, LineReader& in, int& status) {
  TakeHomeDir(s);
  ReadConfig(s);
  CheckFragmentDb(s);

  RunFiles& f = s.files;
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
  s.log.Line(" Input file              :" + std::string(Trim(f.inputName)));
  s.log.Line(" Output file             :" + std::string(Trim(f.logName)));
  f.baseName = BaseName(f.inputName);

  if (!s.opt.specNameExplicit) f.specName = ReplaceExtension(true, f.inputName, ".tdi");
  if (!Exists(f.specName)) {
    if (s.opt.specNameExplicit)
      s.log.Line(" WARNING!!! Requested specification file not found: " + std::string(Trim(f.specName)));
    else
      s.log.Line(" TD specifications file  :none");
  } else {
    s.log.Line(" Specification file      :" + std::string(Trim(f.specName)));
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

int RunSession(Session& s, const std::vector<std::string>& args, bool& asked, const Frontend* frontend) {
  LineReader in;
  try {
    switch (ParseCommandLine(s, args)) {
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
    if (!StartUp(s, in, status)) return Stop(s, status);
    // Windows are needed before the read pass; without a display the run
    // stops here, not inside the window system.
    const bool replay = !s.opt.playFile.empty() || !s.opt.saveFile.empty() || !s.opt.zmatFile.empty();
    const bool windowed = frontend && !s.opt.noGraphics && s.opt.snapFile.empty() && !replay;
    if (windowed && !frontend->hasDisplay())
      return StopWithMessage(s, " ERROR! No display: use /0 for a batch run", exit_status::NoDisplay);
    ReadPass(s, in, [&s] {
      s.Console() << " Exit? ([Y]/N) -->" << std::flush;
      const int key = s.Keyboard().get();
      s.Console() << "\n";
      return key == 'N' || key == 'n';
    });
    in.Close();
    PostReadReport(s);
    RunEngineJobs(s);
    RunVibrationEntries(s, frontend);
    s.view = StartingView(s.opt);  // under /0 the view is never touched
    if (frontend && !s.opt.snapFile.empty()) {
      if (!frontend->snapshot(s, s.opt.snapFile))
        s.Console() << " WARNING! Can not write " << s.opt.snapFile << "\n";
    } else if (replay) {
      if (ReplayPlayFile(s)) s.opt.doThermo = true;
    } else if (windowed && frontend->interact(s)) {
      s.opt.doThermo = true;
    }
    return EndRun(s);
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
  bool asked = false;
  const int status = RunSession(s, args, asked, frontend);
  if (asked) ReportResults(s, status);
  return status;
}

}  // namespace quintor

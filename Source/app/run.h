// The run of one session: start-up, read pass, report and end of the run.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "model/session.h"
#include "viewer/services.h"

namespace quintor {

// The window side of a run, given by the program's entry; a run without
// one (the tests, the benchmarks) goes from the report straight to the end.
struct Frontend {
  // True when windows can be opened; a run without /0 stops otherwise.
  std::function<bool()> hasDisplay;
  // The interactive stage; true when the user asked for the evaluation
  // ("CalcTD and Quit").
  std::function<bool(Session&)> interact;
  // Draws the starting view of the last set into a PNG file; false when
  // the file could not be written.
  std::function<bool(Session&, const std::string&)> snapshot;
  // The "Confirmation" and "Input new value" prompts before the windows are
  // up (a missing input); none means No and the value as offered.
  std::function<bool(const std::string&)> askYesNo;
  std::function<std::string(const std::string&, const std::string&)> askText;
  // Draws the broadened spectrum into a PNG file (/SPECTRUM@file.png).
  std::function<bool(Session&, const std::string&)> plotSpectrum;
  // The same with the services of the Calculations menu; taken before
  // `interact` when set.
  std::function<bool(Session&, const WindowServices&)> interactWith;
  // The job dialog "Set the input file name and job options", shown when no
  // input was named; false for Cancel.
  std::function<bool(Session&)> jobDialog;
};

// The evaluation and the engine's optimisation for the window.
const WindowServices& RunServices();

// Runs a session from the command-line arguments (without the program name)
// and returns the exit status. Console text goes to s.console, one-key
// answers come from s.keyboard.
int RunQuintor(Session& s, const std::vector<std::string>& args, const Frontend* frontend = nullptr);

// The last view written to the MainLog at the end of the interactive work;
// once per run.
void FinishLog(Session& s);

// The semi-empirical engine on the final coordinate set, when /HOF or
// /GEOOPT asks for it: its lines go to the MainLog after the report.
void RunEngineJobs(Session& s);
// A multiplicity not given is the engine's (a doublet for odd electrons),
// and the thermochemistry takes the same.
void SettleEngineMultiplicity(Session& s);

// /MODE<n>@file.xyz, /DISTORT<n> and /SPECTRUM@ on the final geometry.
void RunVibrationEntries(Session& s, const Frontend* frontend);

// The interactive stage replayed from the journal of /PLAY@, without
// windows; true when it ended by "CalcTD and Quit".
bool ReplayPlayFile(Session& s);

// Normal end of the run: last view, evaluation, closing the files. Returns
// the exit status 0.
int EndRun(Session& s);

// The end of a run that File > New Session or File > Open hands over to
// another: the last view, then the files closed, without evaluation.
int CloseForNewSession(Session& s);
// Makes `s` ready for the session its `next` asks for: every field back to
// its default (the screen and keyboard kept), the input and format taken
// over. False when none was asked for, or when a blank name has no job
// dialog to ask it (a run without windows).
bool StartNextSession(Session& s, const Frontend* frontend);

}  // namespace quintor

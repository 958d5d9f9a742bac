// Starting another session from the window: File > New Session (the job
// dialog after the close), File > Open (a log and its format by the file
// chooser), a file of the recent-files list, a log dropped on the window.
// Each ends the run on show without evaluation and leaves in the Session's
// `next` what the next run reads; the run's driver then starts it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "model/session.h"
#include "viewer/commands.h"
#include "viewer/dialogs.h"
#include "viewer/viewer_state.h"

namespace quintor {

// The file chooser of File > Open. It is no dialog of the table: the window
// shows a file chooser whose file types are the formats of the job dialog.
// Its answer has the job dialog's name field (1000) and format radios, so
// that a journal records and replays it as a dialog's answer.
inline constexpr int OpenLogDialog = 3001;

// One file type of the chooser: the format radio of the job dialog, its
// text, the code it sets and the name patterns offered with it.
struct LogFileType {
  int radio = 0;
  std::string text;
  FormatCode format = FormatCode::Automatic;
  std::string patterns;  // "*.log *.out"
  std::string Filter() const { return text + " (" + patterns + ")"; }
};
// The formats of the job dialog in its order (the pattern kind, which needs a
// name, left out), then "All files (*)", read automatically.
const std::vector<LogFileType>& LogFileTypes();

// The chooser's answer for `name` read as `format`.
DialogValues OpenLogAnswer(const std::string& name, FormatCode format);

// File > New Session: the run closes and the job dialog opens.
Outcome NewSessionCommand(Session& s, ViewerState& v);
// File > Open: the chooser, then the log as OpenLog takes it.
Outcome OpenCommand(Session& s, ViewerState& v, Prompts& prompts);
// The log of a chooser's answer (also a recent file or a dropped one): a
// file that is not there is said in the Message window and the run goes on;
// otherwise the run ends and the next one reads it.
Outcome OpenLog(Session& s, ViewerState& v, const DialogValues& answer);

// The recent-files list of File > Open recent: newest first, each file
// once, at most MaxRecentFiles.
struct RecentFile {
  std::string name;  // absolute
  FormatCode format = FormatCode::Automatic;
  friend bool operator==(const RecentFile&, const RecentFile&) = default;
};
inline constexpr size_t MaxRecentFiles = 8;
void RememberRecentFile(std::vector<RecentFile>& list, const RecentFile& file);
// Takes the files that are no longer there off the list; one line for the
// Message window each.
std::vector<std::string> DropMissingRecentFiles(std::vector<RecentFile>& list);

}  // namespace quintor

#include "viewer/session_files.h"

#include <algorithm>
#include <filesystem>

#include "io/fortran_io.h"

namespace quintor {

namespace {

std::string Flag(bool on) { return on ? "1" : "0"; }

// The names offered with each format: the job dialog's Browse... filter for
// the logs, the usual extensions for the rest.
std::string PatternsOf(FormatCode code) {
  switch (code) {
    case FormatCode::Automatic: return "*.out *.log *.o *.gjf *.inp *.mou *.xyz";
    case FormatCode::Gaussian03: case FormatCode::Gaussian09: case FormatCode::Gaussian98:
    case FormatCode::Gaussian94: return "*.log *.out";
    case FormatCode::PcGamess4: case FormatCode::PcGamess7: return "*.out *.log *.o";
    case FormatCode::OwnLog: return "*.mou";
    case FormatCode::Nxyz: case FormatCode::Ndxyz: case FormatCode::Dnxyz: case FormatCode::Gxyz:
      return "*.xyz *.txt *.dat";
    case FormatCode::GaussianZMatrix: return "*.gjf *.com *.log *.out";
    default: return "*";
  }
}

// The code a format radio of the job dialog sets, as the dialog itself reads it.
FormatCode CodeOfRadio(int radio) {
  DialogValues values = Presets(DialogNumber(112));
  values[1000] = std::string("x");
  for (const DialogControl& c : DialogNumber(112).controls)
    if (c.kind == ControlKind::Radio && c.radioGroup == 1) values[c.id] = Flag(c.id == radio);
  Session scratch;
  ApplyJobDialog(values, scratch);
  return scratch.opt.formatCode;
}

std::vector<LogFileType> MakeLogFileTypes() {
  std::vector<LogFileType> types;
  for (const DialogControl& c : DialogNumber(112).controls) {
    if (c.kind != ControlKind::Radio || c.radioGroup != 1) continue;
    const FormatCode code = CodeOfRadio(c.id);
    if (code == FormatCode::Pattern) continue;  // needs the pattern's name: the job dialog's own
    types.push_back({c.id, std::string(c.label), code, PatternsOf(code)});
  }
  types.push_back({types.front().radio, "All files", FormatCode::Automatic, "*"});
  return types;
}

}  // namespace

const std::vector<LogFileType>& LogFileTypes() {
  static const std::vector<LogFileType> types = MakeLogFileTypes();
  return types;
}

DialogValues OpenLogAnswer(const std::string& name, FormatCode format) {
  DialogValues values{{1000, name}};
  for (const LogFileType& t : LogFileTypes())
    if (!values.contains(t.radio) || values[t.radio] == "0") values[t.radio] = Flag(t.format == format);
  return values;
}

Outcome NewSessionCommand(Session& s, ViewerState&) {
  s.next = NextRun{true, "", FormatCode::Automatic};
  Outcome out;
  out.ending = Ending::NewSession;
  return out;
}

Outcome OpenCommand(Session& s, ViewerState& v, Prompts& prompts) {
  DialogValues answer = OpenLogAnswer("", FormatCode::Automatic);
  if (prompts.AskDialog(OpenLogDialog, answer) != DialogOk) return {};
  return OpenLog(s, v, answer);
}

Outcome OpenLog(Session& s, ViewerState& v, const DialogValues& answer) {
  Session chosen;  // the name and format as the job dialog would read them
  Outcome out;
  if (ApplyJobDialog(answer, chosen)) return out;  // no name: nothing to open
  const std::string name(Trim(chosen.files.inputName));
  std::error_code ec;
  if (!std::filesystem::is_regular_file(name, ec)) {
    v.messages.push_back(" File " + name + " does not exist.");
    out.beep = true;
    return out;
  }
  s.next = NextRun{true, name, chosen.opt.formatCode};
  out.ending = Ending::NewSession;
  return out;
}

void RememberRecentFile(std::vector<RecentFile>& list, const RecentFile& file) {
  std::erase_if(list, [&](const RecentFile& r) { return r.name == file.name; });
  list.insert(list.begin(), file);
  if (list.size() > MaxRecentFiles) list.resize(MaxRecentFiles);
}

std::vector<std::string> DropMissingRecentFiles(std::vector<RecentFile>& list) {
  std::vector<std::string> said;
  std::erase_if(list, [&](const RecentFile& r) {
    std::error_code ec;
    if (std::filesystem::is_regular_file(r.name, ec)) return false;
    said.push_back(" Recent file not found, taken off the list: " + r.name);
    return true;
  });
  return said;
}

}  // namespace quintor

// The journal of the interactive stage: one action a line, written by every
// interactive run beside the MainLog (<input>.jnl) and replayed by /PLAY@.
//
//   key <k>            a key: a printable character as itself (key a, key +),
//                      key space, key esc, or an extended key by name (key F3,
//                      key Left, key CtrlUp, key PgDn, ...)
//   menu <command>     a menu item by its command name (menu Labels)
//   click left <atom>  a click on atom <atom> (1-based); click right <atom>
//   play <mode>        a click on the spectrum: the Vibration view plays <mode>
//   turn <dx> <dy>     a left drag by so many pixels; shift <dx> <dy> a middle drag
//   zoom <notches>     the wheel
//   set <n>            a click on the energy plot: coordinate set n
//   answer <text>      the field of the prompt the action above asked
//   yes, no            the answer of a Confirmation
//   answer <code> <id>=<text><TAB><id>=<text>...   the answer of a dialog of
//                      the table: the closing button and every field
//   film <periods>     the film the action above started ended after 1 to 3 periods
//   # ...              a comment; empty lines are skipped
#pragma once

#include <deque>
#include <istream>
#include <optional>
#include <ostream>
#include <string>

#include "model/session.h"
#include "viewer/commands.h"
#include "viewer/viewer_state.h"

namespace quintor {

std::string KeyWord(Key key);
std::optional<Key> KeyFromWord(const std::string& word);
std::string_view MenuCommandName(MenuCommand command);
std::optional<MenuCommand> MenuCommandFromName(std::string_view name);

// Writes the actions as they happen; a null stream writes nothing.
struct JournalWriter {
  std::ostream* out = nullptr;
  void Line(const std::string& text);
  void KeyPressed(Key key) { Line("key " + KeyWord(key)); }
  void MenuItem(MenuCommand c) { Line("menu " + std::string(MenuCommandName(c))); }
  void ClickOn(MouseButton b, int atom);
  void Gesture(const char* word, double a, double b);
  void Played(int mode) { Line("play " + std::to_string(mode)); }
  void FilmEnded(int periods) { Line("film " + std::to_string(periods)); }
};

// Forwards the prompts and writes each answer to the journal.
struct RecordingPrompts : Prompts {
  Prompts& inner;
  JournalWriter& journal;
  RecordingPrompts(Prompts& p, JournalWriter& j) : inner(p), journal(j) {}
  double AskReal(const std::string& text, double value) override;
  int AskInteger(const std::string& text, int value) override;
  std::string AskText(const std::string& text, const std::string& value) override;
  bool AskYesNo(const std::string& text) override;
  void ShowMessage(const std::string& text) override { inner.ShowMessage(text); }
  int AskDialog(int number, DialogValues& values) override;
  bool Progress(const std::string& text, int value, int maximum) override {
    return inner.Progress(text, value, maximum);
  }
  void EndProgress() override { inner.EndProgress(); }
};

// Replays a journal on a viewer that StartViewer and LoadCoordinateSet made
// ready. Films run to their recorded end without a clock. Returns how the
// work ended (Exit when the journal ends first). A line that can not be
// read throws FatalReadError with the file and line.
Ending ReplayJournal(Session& s, ViewerState& v, std::istream& in, const std::string& fileName);

}  // namespace quintor

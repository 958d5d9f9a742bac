#include "viewer/journal.h"

#include <array>
#include <charconv>
#include <utility>

#include "io/fortran_io.h"
#include "viewer/scene.h"
#include "viewer/vibration.h"

namespace quintor {

namespace {

struct ExtName {
  int code;
  std::string_view name;
};
constexpr std::array<ExtName, 19> kExtNames = {{
    {ext_key::F1, "F1"}, {ext_key::F2, "F2"}, {ext_key::F3, "F3"}, {ext_key::F4, "F4"}, {ext_key::F10, "F10"},
    {ext_key::Home, "Home"}, {ext_key::Up, "Up"}, {ext_key::PgUp, "PgUp"}, {ext_key::Left, "Left"},
    {ext_key::Right, "Right"}, {ext_key::End, "End"}, {ext_key::Down, "Down"}, {ext_key::PgDn, "PgDn"},
    {ext_key::Ins, "Ins"}, {ext_key::Del, "Del"}, {ext_key::CtrlLeft, "CtrlLeft"},
    {ext_key::CtrlRight, "CtrlRight"}, {ext_key::CtrlUp, "CtrlUp"}, {ext_key::CtrlDown, "CtrlDown"},
}};

// In the order of MenuCommand.
constexpr std::array<std::string_view, 44> kMenuNames = {
    "NewSession", "CalcTDAndQuit", "Exit", "GeometryView", "VibrationView", "EditStructure", "Axes", "Perspective",
    "Labels", "Balls", "RotationStep", "TranslationStep", "PerspectiveFactor", "ViewParameters", "Thermodynamics",
    "GeometryOptimization", "NextSet", "PreviousSet", "FirstSet", "LastSet", "MarkAtomsHelp", "Connect",
    "SaveConfiguration", "ZMatrixMolecule", "Reorient", "MarkFragmentHelp", "AddFragment", "ZMatrixAtom",
    "BondOperation", "ReorientByZMatrix", "ReorientOXZ", "PlaceAtOrigin", "RemoveFragment", "SaveFragment",
    "ZMatrixFragment", "StoreFragment", "Help", "About", "DisplacementArrows", "Undo", "Redo", "SetInternal",
    "SaveAs", "Open"};
static_assert(static_cast<size_t>(MenuCommand::Open) + 1 == kMenuNames.size());

std::string Shortest(double value) {
  std::array<char, 32> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
  return std::string(buffer.data(), end);
}

// The answers that follow an action, handed to its prompts in order; a
// prompt without an answer takes its default (No for a Confirmation).
struct ReplayPrompts : Prompts {
  std::deque<std::string> answers;
  std::string Take(const std::string& fallback) {
    if (answers.empty()) return fallback;
    std::string a = std::move(answers.front());
    answers.pop_front();
    return a;
  }
  double AskReal(const std::string&, double value) override {
    const auto r = ParseFortranReal(Trim(Take("")));
    return r ? *r : value;
  }
  int AskInteger(const std::string&, int value) override {
    const auto r = ParseFortranInt(Trim(Take("")));
    return r ? static_cast<int>(*r) : value;
  }
  std::string AskText(const std::string&, const std::string& value) override { return Take(value); }
  bool AskYesNo(const std::string&) override { return Take("no") == "yes"; }
  void ShowMessage(const std::string&) override {}
  int AskDialog(int, DialogValues& values) override { return DecodeDialogAnswer(Take(""), values); }
};

}  // namespace

std::string KeyWord(Key key) {
  if (key.code == 0 || key.code == 224) {
    for (const ExtName& e : kExtNames)
      if (e.code == key.ext) return std::string(e.name);
    return "ext" + std::to_string(key.ext);
  }
  if (key.code == ' ') return "space";
  if (key.code == 27) return "esc";
  if (key.code > 32 && key.code < 127) return std::string(1, static_cast<char>(key.code));
  return "code" + std::to_string(key.code);
}

std::optional<Key> KeyFromWord(const std::string& word) {
  if (word == "space") return Plain(' ');
  if (word == "esc") return Plain(27);
  if (word.size() == 1 && word[0] > 32 && word[0] < 127) return Plain(word[0]);
  for (const ExtName& e : kExtNames)
    if (e.name == word) return Extended(e.code);
  for (const auto& [prefix, extended] : {std::pair<std::string_view, bool>{"ext", true}, {"code", false}}) {
    if (!word.starts_with(prefix)) continue;
    const auto n = ParseFortranInt(std::string_view(word).substr(prefix.size()));
    if (n && *n > 0 && *n < 256) return extended ? Extended(static_cast<int>(*n)) : Key{static_cast<int>(*n), 0};
  }
  return std::nullopt;
}

std::string_view MenuCommandName(MenuCommand command) { return kMenuNames.at(static_cast<size_t>(command)); }

std::optional<MenuCommand> MenuCommandFromName(std::string_view name) {
  for (size_t k = 0; k < kMenuNames.size(); ++k)
    if (kMenuNames[k] == name) return static_cast<MenuCommand>(k);
  return std::nullopt;
}

void JournalWriter::Line(const std::string& text) {
  if (!out) return;
  *out << text << "\n";
  out->flush();  // a crash keeps the journal up to it
}

void JournalWriter::Gesture(const char* word, double a, double b) {
  Line(std::string(word) + " " + Shortest(a) + " " + Shortest(b));
}

void JournalWriter::ClickOn(MouseButton b, int atom) {
  Line(std::string(b == MouseButton::Left ? "click left " : "click right ") + std::to_string(atom));
}

double RecordingPrompts::AskReal(const std::string& text, double value) {
  const double r = inner.AskReal(text, value);
  journal.Line("answer " + Shortest(r));
  return r;
}

int RecordingPrompts::AskInteger(const std::string& text, int value) {
  const int r = inner.AskInteger(text, value);
  journal.Line("answer " + std::to_string(r));
  return r;
}

std::string RecordingPrompts::AskText(const std::string& text, const std::string& value) {
  std::string r = inner.AskText(text, value);
  journal.Line("answer " + r);
  return r;
}

bool RecordingPrompts::AskYesNo(const std::string& text) {
  const bool r = inner.AskYesNo(text);
  journal.Line(r ? "yes" : "no");
  return r;
}

int RecordingPrompts::AskDialog(int number, DialogValues& values) {
  const int r = inner.AskDialog(number, values);
  journal.Line("answer " + EncodeDialogAnswer(r, values));
  return r;
}

Ending ReplayJournal(Session& s, ViewerState& v, std::istream& in, const std::string& fileName) {
  struct Action {
    std::string word, rest;
    long line;
  };
  std::vector<Action> actions;
  std::string text;
  for (long n = 1; std::getline(in, text); ++n) {
    const std::string_view t = Trim(text);
    if (t.empty() || t[0] == '#') continue;
    const size_t space = t.find(' ');
    actions.push_back({std::string(t.substr(0, space)),
                       space == std::string_view::npos ? "" : std::string(Trim(t.substr(space + 1))), n});
  }
  auto fail = [&](const Action& a, std::string_view what) {
    throw FatalReadError(FieldPlace{fileName, a.line, 0, 0, "journal action"}, what);
  };
  for (size_t k = 0; k < actions.size(); ++k) {
    const Action& a = actions[k];
    ReplayPrompts prompts;
    size_t next = k + 1;
    for (; next < actions.size(); ++next) {
      const Action& b = actions[next];
      if (b.word == "answer") prompts.answers.push_back(b.rest);
      else if (b.word == "yes" || b.word == "no") prompts.answers.push_back(b.word);
      else break;
    }
    int periods = FilmPeriods;
    if (next < actions.size() && actions[next].word == "film") {
      const auto n = ParseFortranInt(actions[next].rest);
      if (!n || *n < 1 || *n > FilmPeriods) fail(actions[next], actions[next].rest);
      periods = static_cast<int>(*n);
      ++next;
    }
    Outcome out;
    ProjectAll(s, v);  // the positions the last frame showed, for the clicks
    if (a.word == "key") {
      const auto key = KeyFromWord(a.rest);
      if (!key) fail(a, a.rest);
      out = DispatchKey(s, v, *key, prompts);
    } else if (a.word == "menu") {
      const auto command = MenuCommandFromName(a.rest);
      if (!command) fail(a, a.rest);
      out = DispatchMenu(s, v, *command, prompts);
    } else if (a.word == "click") {
      const size_t space = a.rest.find(' ');
      const std::string button = a.rest.substr(0, space);
      const auto atom = space == std::string::npos ? std::optional<long long>(0)
                                                   : ParseFortranInt(Trim(a.rest.substr(space + 1)));
      if ((button != "left" && button != "right") || !atom || *atom < 0 || *atom > s.nAtoms) fail(a, a.rest);
      out = ClickAtom(s, v, button == "left" ? MouseButton::Left : MouseButton::Right, static_cast<int>(*atom));
    } else if (a.word == "turn" || a.word == "shift" || a.word == "zoom") {
      const auto items = FreeFormItems(a.rest);
      std::vector<double> n;
      for (const auto& item : items)
        if (const auto r = ParseFortranReal(item)) n.push_back(*r);
      if (n.size() != items.size() || n.size() != (a.word == "zoom" ? 1u : 2u)) fail(a, a.rest);
      out = a.word == "turn"    ? DragTurn(s, v, n[0], n[1])
            : a.word == "shift" ? DragShift(s, v, n[0], n[1])
                                : WheelZoom(s, v, static_cast<int>(n[0]));
    } else if (a.word == "set") {
      const auto set = ParseFortranInt(a.rest);
      if (!set) fail(a, a.rest);
      out = GoToSet(s, v, static_cast<int>(*set), prompts);
    } else if (a.word == "play") {
      const auto mode = ParseFortranInt(a.rest);
      if (!mode || *mode < 1 || *mode > v.nVib) fail(a, a.rest);
      out = PlayMode(s, v, static_cast<int>(*mode));
    } else {
      fail(a, a.word);
    }
    // The film the action started, stopped where the recorded one stopped.
    while (v.film.running) {
      if (v.film.period == periods - 1) v.film.stopRequested = true;
      FilmTick(s, v);
    }
    if (out.ending != Ending::None) return out.ending;
    k = next - 1;
  }
  return Ending::Exit;
}

}  // namespace quintor

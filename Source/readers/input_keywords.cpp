// The keywords of a calculation as its log echoes the input: Gaussian's route
// (the "#" line and those after it up to the rule), ORCA's "!" lines and
// Q-Chem's $rem block. /SCALEAUTO looks the level of theory up among them.
#include <string>
#include <vector>

#include "io/fortran_io.h"
#include "io/line_reader.h"
#include "readers/readers.h"

namespace quintor {

namespace {

// Words split at blanks, "/" and "=": "b3lyp/6-31g(d,p)" gives two.
void AddWords(std::vector<std::string>& out, std::string_view text) {
  std::string word;
  for (char c : text) {
    if (c == ' ' || c == '\t' || c == '/' || c == '=') {
      if (!word.empty()) out.push_back(word);
      word.clear();
    } else {
      word += c;
    }
  }
  if (!word.empty()) out.push_back(word);
}

// The input echo stands near the head of a log.
constexpr long kLinesLookedAt = 20000;

}  // namespace

std::vector<std::string> InputKeywords(const std::string& path) {
  std::vector<std::string> words;
  LineReader in;
  if (!in.Open(path)) return words;
  enum { None, Route, Rem } block = None;
  bool routeDone = false, remDone = false;
  std::string_view line;
  while (in.Next(line) && in.LineNumber() < kLinesLookedAt) {
    const std::string_view t = Trim(line);
    if (block == Route) {
      if (t.rfind("---", 0) == 0) block = None, routeDone = true;
      else AddWords(words, t);
    } else if (block == Rem) {
      if (t.rfind("$end", 0) == 0 || t.rfind("$END", 0) == 0) block = None, remDone = true;
      else AddWords(words, t);
    } else if (!routeDone && t.rfind("#", 0) == 0 && line.rfind(" #", 0) == 0) {
      block = Route;
      AddWords(words, t.substr(1));
    } else if (!remDone && (t == "$rem" || t == "$REM")) {
      block = Rem;
    } else if (const size_t bang = line.find("> !"); bang != std::string_view::npos && line.rfind("|", 0) == 0) {
      AddWords(words, line.substr(bang + 3));
    }
  }
  return words;
}

}  // namespace quintor

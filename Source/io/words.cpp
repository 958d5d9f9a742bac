#include "io/words.h"

#include <algorithm>

namespace quintor {

namespace {
bool IsWordBreak(char c) { return c == ' ' || c == '\t'; }
}  // namespace

std::vector<std::string> SplitWords(std::string_view text, int maxWords, size_t width) {
  std::vector<std::string> words;
  size_t i = 0, n = text.size();
  while (i < n && static_cast<int>(words.size()) < maxWords) {
    while (i < n && IsWordBreak(text[i])) ++i;
    if (i >= n) break;
    size_t start = i;
    while (i < n && !IsWordBreak(text[i])) ++i;
    words.emplace_back(text.substr(start, std::min(i - start, width)));
  }
  return words;
}

std::string CopyWord(std::string_view src, size_t width) {
  size_t end = src.find(' ');
  if (end == std::string_view::npos) end = src.size();
  return std::string(src.substr(0, std::min(end, width)));
}

}  // namespace quintor

// Word helpers for the line-oriented inputs: option values, Z-matrix rows,
// coordinate rows.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quintor {

// Splits `text` at blanks (tabs count as blanks) into at most `maxWords`
// words, each cut at `width` characters. The count is the size of the result.
std::vector<std::string> SplitWords(std::string_view text, int maxWords, size_t width = 255);

// The text up to its first blank, cut at `width` characters.
std::string CopyWord(std::string_view src, size_t width = 255);

}  // namespace quintor

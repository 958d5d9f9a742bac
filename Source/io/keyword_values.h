// The splitter of keyword values, shared by the SpecFile and the options
// /THERMO and /V: KEY=(a, b ,c) gives three elements, KEY=word one.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quintor {

// Elements of the value of `keyword` in `line`: behind the first "=" after
// the keyword, the text in parentheses (when a ")" follows) or one word.
// Blanks are dropped and commas separate elements. Empty when the keyword or
// the "=" is missing or the value is empty. At most `maxValues` elements.
std::vector<std::string> KeywordValues(std::string_view line, std::string_view keyword,
                                       int maxValues = 100);

}  // namespace quintor

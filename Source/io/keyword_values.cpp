#include "io/keyword_values.h"

namespace quintor {

std::vector<std::string> KeywordValues(std::string_view line, std::string_view keyword, int maxValues) {
  std::vector<std::string> values;
  size_t at = line.find(keyword);
  if (at == std::string_view::npos) return values;
  size_t eq = line.find('=', at);
  if (eq == std::string_view::npos) return values;
  size_t i = eq + 1;
  while (i < line.size() && line[i] == ' ') ++i;
  std::string_view value;
  size_t close = i < line.size() && line[i] == '(' ? line.find(')', i + 1) : std::string_view::npos;
  if (close != std::string_view::npos) {
    value = line.substr(i + 1, close - i - 1);
  } else {
    size_t end = line.find(' ', i);
    value = line.substr(i, end == std::string_view::npos ? std::string_view::npos : end - i);
  }
  if (value.find_first_not_of(' ') == std::string_view::npos) return values;
  values.emplace_back();
  for (char c : value) {
    if (c == ' ') continue;
    if (c == ',') {
      values.emplace_back();
    } else {
      values.back().push_back(c);
    }
  }
  if (static_cast<int>(values.size()) > maxValues) values.clear();  // longer lists are not accepted
  return values;
}

}  // namespace quintor

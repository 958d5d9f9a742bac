#include "io/fortran_io.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include <fmt/format.h>

namespace quintor {

namespace {

std::string Stars(int w) { return std::string(w > 0 ? w : 0, '*'); }

std::string RightJustify(std::string s, int w) {
  if (static_cast<int>(s.size()) > w) return Stars(w);
  return std::string(w - s.size(), ' ') + s;
}

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

}  // namespace

std::string FmtF(double value, int w, int d) {
  if (!std::isfinite(value)) return Stars(w);  // a MainLog never shows NaN or Infinity
  std::string s = fmt::format("{:.{}f}", value, d);
  // Fortran drops the optional leading zero when the field is one short.
  if (static_cast<int>(s.size()) == w + 1) {
    if (s.rfind("0.", 0) == 0) s.erase(0, 1);
    else if (s.rfind("-0.", 0) == 0) s.erase(1, 1);
  }
  return RightJustify(std::move(s), w);
}

std::string FmtE(double value, int w, int d) {
  if (!std::isfinite(value)) return Stars(w);  // a MainLog never shows NaN or Infinity
  std::string s = fmt::format("{:.{}E}", value, d);  // 1.23456E+05 or 1.2E+123
  auto e = s.find('E');
  int exponent = std::atoi(s.c_str() + e + 1);
  std::string mantissa = s.substr(0, e);
  std::string ex;
  if (std::abs(exponent) <= 99) ex = fmt::format("E{}{:02d}", exponent < 0 ? '-' : '+', std::abs(exponent));
  else ex = fmt::format("{}{:03d}", exponent < 0 ? '-' : '+', std::abs(exponent));  // Fortran drops the E
  return RightJustify(mantissa + ex, w);
}

std::string FmtG(double value, int w, int d) {
  double a = std::fabs(value);
  if (std::isfinite(value) && (a == 0.0 || (a >= 0.1 && a < std::pow(10.0, d)))) {
    // F editing with d-k decimals, k the number of digits before the point,
    // followed by the four blanks that stand for the exponent.
    int k = a == 0.0 ? 1 : static_cast<int>(std::floor(std::log10(a))) + 1;
    // rounding may carry into one more digit
    if (a != 0.0 && std::round(a * std::pow(10.0, d - k)) >= std::pow(10.0, d)) ++k;
    if (k <= d) return FmtF(value, w - 4, d - k) + FmtX(4);
  }
  return FmtE(value, w, d - 1);
}

std::string FmtI(long long value, int w) { return RightJustify(std::to_string(value), w); }

std::string FmtA(std::string_view text, int w) {
  if (w <= 0) return {};
  if (static_cast<int>(text.size()) >= w) return std::string(text.substr(0, w));
  return std::string(text) + std::string(w - text.size(), ' ');
}

// ---- Input ----------------------------------------------------------------

std::string ReadErrorMessage(const FieldPlace& where, std::string_view text) {
  std::string msg = " FATAL READ ERROR";
  if (!where.file.empty()) msg += " in file " + where.file;
  if (where.line > 0) msg += fmt::format(", line {}", where.line);
  if (where.firstCol > 0) msg += fmt::format(", columns {}-{}", where.firstCol, where.lastCol);
  if (!where.field.empty()) msg += " (" + where.field + ")";
  msg += fmt::format(": can not read \"{}\"", text);
  return msg;
}

FatalReadError::FatalReadError(const FieldPlace& where, std::string_view text)
    : std::runtime_error(ReadErrorMessage(where, text)), where_(where), text_(text) {}

namespace {

// The plain case of a real field: blanks around one token of the form
// [sign] digits [. digits] [E [sign] at most three digits], with a point or
// with no decimals implied. Most numbers of a log look so; std::from_chars
// reads them correctly rounded, as strtod does in the general case below.
std::optional<double> PlainReal(std::string_view field, int impliedDecimals) {
  size_t b = 0, e = field.size();
  while (b < e && IsBlank(field[b])) ++b;
  while (e > b && IsBlank(field[e - 1])) --e;
  std::string_view t = field.substr(b, e - b);
  if (t.empty()) return std::nullopt;
  size_t i = 0;
  if (t[0] == '+' || t[0] == '-') ++i;
  bool point = false, digit = false;
  for (; i < t.size(); ++i) {
    const char c = t[i];
    if (c >= '0' && c <= '9') digit = true;
    else if (c == '.' && !point) point = true;
    else break;
  }
  if (!digit || (!point && impliedDecimals != 0)) return std::nullopt;
  if (i < t.size()) {
    if (t[i] != 'E' && t[i] != 'e') return std::nullopt;
    size_t j = i + 1;
    if (j < t.size() && (t[j] == '+' || t[j] == '-')) ++j;
    const size_t digits = t.size() - j;
    if (digits == 0 || digits > 3) return std::nullopt;
    for (; j < t.size(); ++j)
      if (t[j] < '0' || t[j] > '9') return std::nullopt;
  }
  const bool plus = t[0] == '+';
  double v = 0.0;
  const auto [end, ec] = std::from_chars(t.data() + (plus ? 1 : 0), t.data() + t.size(), v);
  if (ec != std::errc() || end != t.data() + t.size()) return std::nullopt;
  return v;
}

}  // namespace

std::optional<double> ParseFortranReal(std::string_view field, int impliedDecimals) {
  if (auto v = PlainReal(field, impliedDecimals)) return v;
  std::string s;
  s.reserve(field.size());
  for (char c : field)
    if (!IsBlank(c)) s.push_back(c);
  if (s.empty()) return 0.0;

  size_t i = 0;
  bool negative = false;
  if (s[i] == '+' || s[i] == '-') negative = s[i++] == '-';
  std::string digits;  // mantissa digits without the point
  int decimals = 0;
  bool point = false, anyDigit = false;
  for (; i < s.size(); ++i) {
    char c = s[i];
    if (std::isdigit(static_cast<unsigned char>(c))) {
      digits.push_back(c);
      anyDigit = true;
      if (point) ++decimals;
    } else if (c == '.' && !point) {
      point = true;
    } else {
      break;
    }
  }
  if (!anyDigit) return std::nullopt;
  long exponent = 0;
  if (i < s.size()) {
    char c = s[i];
    if (c == 'E' || c == 'e' || c == 'D' || c == 'd' || c == 'Q' || c == 'q') ++i;
    else if (c != '+' && c != '-') return std::nullopt;
    size_t start = i;
    if (i < s.size() && (s[i] == '+' || s[i] == '-')) ++i;
    size_t firstDigit = i;
    while (i < s.size() && std::isdigit(static_cast<unsigned char>(s[i]))) ++i;
    if (i != s.size() || i == firstDigit) return std::nullopt;
    if (i - firstDigit > 6) return std::nullopt;  // absurd exponent
    exponent = std::strtol(s.c_str() + start, nullptr, 10);
  }
  if (!point) decimals = impliedDecimals;
  std::string text = digits + "e" + std::to_string(exponent - decimals);
  double v = std::strtod(text.c_str(), nullptr);
  return negative ? -v : v;
}

std::optional<long long> ParseFortranInt(std::string_view field) {
  std::string s;
  for (char c : field)
    if (!IsBlank(c)) s.push_back(c);
  if (s.empty()) return 0;
  size_t i = 0;
  if (s[0] == '+' || s[0] == '-') ++i;
  if (i == s.size() || s.size() - i > 18) return std::nullopt;
  for (size_t j = i; j < s.size(); ++j)
    if (!std::isdigit(static_cast<unsigned char>(s[j]))) return std::nullopt;
  return std::strtoll(s.c_str(), nullptr, 10);
}

namespace {

FieldPlace WithColumns(FieldPlace where, int first, int width) {
  where.firstCol = first;
  where.lastCol = first + width - 1;
  return where;
}

}  // namespace

std::string_view Columns(std::string_view line, int first, int width) {
  size_t start = first > 0 ? static_cast<size_t>(first - 1) : 0;
  if (start >= line.size() || width <= 0) return {};
  return line.substr(start, static_cast<size_t>(width));
}

double ReadFixedReal(std::string_view line, int first, int width, int decimals, FieldPlace where) {
  std::string_view f = Columns(line, first, width);
  if (auto v = ParseFortranReal(f, decimals)) return *v;
  throw FatalReadError(WithColumns(std::move(where), first, width), f);
}

long long ReadFixedInt(std::string_view line, int first, int width, FieldPlace where) {
  std::string_view f = Columns(line, first, width);
  if (auto v = ParseFortranInt(f)) return *v;
  throw FatalReadError(WithColumns(std::move(where), first, width), f);
}

std::vector<std::string_view> FreeFormItems(std::string_view text) {
  std::vector<std::string_view> items;
  size_t i = 0, n = text.size();
  while (i < n) {
    while (i < n && IsBlank(text[i])) ++i;
    if (i >= n || text[i] == '/') break;
    size_t start = i;
    while (i < n && !IsBlank(text[i]) && text[i] != ',' && text[i] != '/') ++i;
    if (i > start) items.push_back(text.substr(start, i - start));
    while (i < n && IsBlank(text[i])) ++i;
    if (i < n && text[i] == ',') ++i;
  }
  return items;
}

std::vector<double> ReadFreeReals(std::string_view text, int count, FieldPlace where) {
  auto items = FreeFormItems(text);
  if (static_cast<int>(items.size()) < count) throw FatalReadError(where, text);
  std::vector<double> values;
  values.reserve(count);
  for (int k = 0; k < count; ++k) {
    auto v = ParseFortranReal(items[k]);
    if (!v) throw FatalReadError(where, items[k]);
    values.push_back(*v);
  }
  return values;
}

std::vector<long long> ReadFreeInts(std::string_view text, int count, FieldPlace where) {
  auto items = FreeFormItems(text);
  if (static_cast<int>(items.size()) < count) throw FatalReadError(where, text);
  std::vector<long long> values;
  values.reserve(count);
  for (int k = 0; k < count; ++k) {
    auto v = ParseFortranInt(items[k]);
    if (!v) throw FatalReadError(where, items[k]);
    values.push_back(*v);
  }
  return values;
}

std::optional<double> ReadFreeReal(std::string_view text, FieldPlace where) {
  auto items = FreeFormItems(text);
  if (items.empty()) return std::nullopt;
  auto v = ParseFortranReal(items[0]);
  if (!v) throw FatalReadError(where, items[0]);
  return v;
}

std::optional<long long> ReadFreeInt(std::string_view text, FieldPlace where) {
  auto items = FreeFormItems(text);
  if (items.empty()) return std::nullopt;
  auto v = ParseFortranInt(items[0]);
  if (!v) throw FatalReadError(where, items[0]);
  return v;
}

std::string Upper(std::string_view s) {
  std::string u(s);
  for (char& c : u) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return u;
}

std::string_view Trim(std::string_view s) {
  size_t a = 0, b = s.size();
  while (a < b && IsBlank(s[a])) ++a;
  while (b > a && IsBlank(s[b - 1])) --b;
  return s.substr(a, b - a);
}

std::string_view TrimRight(std::string_view s) {
  size_t b = s.size();
  while (b > 0 && IsBlank(s[b - 1])) --b;
  return s.substr(0, b);
}

bool Contains(std::string_view line, std::string_view what) {
  return line.find(what) != std::string_view::npos;
}

}  // namespace quintor

// Fixed-format output and fixed-column input with Fortran semantics.
// Every report and every reader of the program goes through these few
// functions, so that a layout such as F12.6 or I5 means the same everywhere.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace quintor {

// ---- Output edit descriptors -------------------------------------------
// A value that does not fit its field prints as w asterisks, as Fortran does;
// so does NaN or an infinity, which no report of the program shows.

std::string FmtF(double value, int w, int d);      // Fw.d
std::string FmtE(double value, int w, int d);      // Ew.d with a leading digit: 1.23456E+05
std::string FmtG(double value, int w, int d);      // Gw.d
std::string FmtI(long long value, int w);          // Iw
// Aw. The program's strings are blank-padded fixed-length fields, so a text
// shows left-aligned, padded with blanks or cut to w.
std::string FmtA(std::string_view text, int w);
inline std::string FmtX(int n) { return std::string(n > 0 ? n : 0, ' '); }  // nX

// ---- Input ----------------------------------------------------------------

// Where a field came from, for the message of a fatal read error.
struct FieldPlace {
  std::string file;
  long line = 0;       // 1-based line number in the file, 0 when not known
  int firstCol = 0;    // 1-based columns of the field, 0 when free-form
  int lastCol = 0;
  std::string field;   // what the field is ("X coordinate", "option /TT")
};

// A field that cannot be read. The run stops with its message; see RunStop.
class FatalReadError : public std::runtime_error {
 public:
  FatalReadError(const FieldPlace& where, std::string_view text);
  const FieldPlace& Where() const { return where_; }
  const std::string& Text() const { return text_; }

 private:
  FieldPlace where_;
  std::string text_;
};

// The text of a fatal read error, one line starting with a blank.
std::string ReadErrorMessage(const FieldPlace& where, std::string_view text);

// Parses a Fortran real: optional sign, digits with an optional point, an
// optional exponent introduced by E, D, e, d (or a bare sign, as in 1.0+05).
// Blanks inside the field are ignored (BLANK='NULL'); a blank field is 0.
// Without a decimal point the value gets `impliedDecimals` decimals.
std::optional<double> ParseFortranReal(std::string_view field, int impliedDecimals = 0);
std::optional<long long> ParseFortranInt(std::string_view field);

// Columns first..first+width-1 (1-based) of `line`; what lies beyond the
// line reads as nothing (blank).
std::string_view Columns(std::string_view line, int first, int width);

// Reads columns first..first+width-1 (1-based) of `line`; columns beyond the
// end of the line read as blanks. Throws FatalReadError on bad text.
double ReadFixedReal(std::string_view line, int first, int width, int decimals, FieldPlace where);
long long ReadFixedInt(std::string_view line, int first, int width, FieldPlace where);

// List-directed (free-form) reading: values separated by blanks, tabs or
// commas; a "/" ends the list. Returns the words that make up the values.
std::vector<std::string_view> FreeFormItems(std::string_view text);

// Reads exactly `count` reals (or integers) free-form from `text`. Too few
// values or an unreadable one throws FatalReadError.
std::vector<double> ReadFreeReals(std::string_view text, int count, FieldPlace where);
std::vector<long long> ReadFreeInts(std::string_view text, int count, FieldPlace where);
// One value read free-form; an empty text leaves nothing (std::nullopt).
std::optional<double> ReadFreeReal(std::string_view text, FieldPlace where);
std::optional<long long> ReadFreeInt(std::string_view text, FieldPlace where);

// ---- Text helpers used by every reader ---------------------------------

std::string Upper(std::string_view s);
std::string_view Trim(std::string_view s);
std::string_view TrimRight(std::string_view s);
bool Contains(std::string_view line, std::string_view what);

}  // namespace quintor

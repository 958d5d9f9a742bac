// Free-form fields of the logs whose readers take a whole line apart by
// words (ORCA, Q-Chem): a bad or missing word is a fatal read error naming
// the line and the field, never a silent value.
#pragma once

#include <cmath>
#include <string_view>

#include "io/fields.h"
#include "io/fortran_io.h"
#include "io/line_reader.h"

namespace quintor {

inline double FreeReal(const LineReader& in, std::string_view text, const char* field) {
  return ReadFreeReals(text, 1, PlaceIn(in, field))[0];
}

// The last word of a line; "" when it has none, which then fails to read.
inline std::string_view LastItem(std::string_view line) {
  const auto w = FreeFormItems(line);
  return w.empty() ? std::string_view() : w.back();
}

// A whole number from lo to hi; anything else is a fatal read error.
inline int FreeWhole(const LineReader& in, std::string_view text, const char* field, int lo, int hi) {
  const double v = FreeReal(in, text, field);
  if (!(v >= lo && v <= hi) || v != std::floor(v)) throw FatalReadError(PlaceIn(in, field), text);
  return static_cast<int>(v);
}

}  // namespace quintor

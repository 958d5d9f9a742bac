// Fixed-column fields of the current line of an input (Fortran semantics),
// with the place of the field for the fatal read error.
#pragma once

#include <string>
#include <string_view>

#include "io/fortran_io.h"
#include "io/line_reader.h"

namespace quintor {

// Place of a field in the current line of the input, for fatal read errors.
FieldPlace PlaceIn(const LineReader& in, std::string field);

// A fixed-column field of the current line (Fortran semantics). The place of
// the field is made only when the text can not be read, so that the per-line
// work of a reader allocates nothing; then FatalReadError is thrown.
double FieldReal(const LineReader& in, std::string_view line, int first, int width, int decimals,
                 const char* field);
long long FieldInt(const LineReader& in, std::string_view line, int first, int width, const char* field);

}  // namespace quintor

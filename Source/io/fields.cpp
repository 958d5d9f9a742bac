#include "io/fields.h"

namespace quintor {

FieldPlace PlaceIn(const LineReader& in, std::string field) {
  return FieldPlace{in.Path(), in.LineNumber(), 0, 0, std::move(field)};
}

double FieldReal(const LineReader& in, std::string_view line, int first, int width, int decimals,
                 const char* field) {
  if (auto v = ParseFortranReal(Columns(line, first, width), decimals)) return *v;
  return ReadFixedReal(line, first, width, decimals, PlaceIn(in, field));
}

long long FieldInt(const LineReader& in, std::string_view line, int first, int width, const char* field) {
  if (auto v = ParseFortranInt(Columns(line, first, width))) return *v;
  return ReadFixedInt(line, first, width, PlaceIn(in, field));
}

}  // namespace quintor

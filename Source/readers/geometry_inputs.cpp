// Readers of coordinate lists: plain XYZ, XYZ at a label, pattern input, GXYZ.
#include "readers/readers.h"

namespace quintor {

namespace {
void SkipToEnd(LineReader& in) {
  std::string_view line;
  while (in.Next(line)) {
  }
}
}  // namespace

void ReadPlainXyz(Session& s, LineReader& in) { SkipToEnd(in); }
void ReadPatternInput(Session& s, LineReader& in) { SkipToEnd(in); }
void ReadXyzAtLabel(Session& s, LineReader& in) { SkipToEnd(in); }
void ReadGxyz(Session& s, LineReader& in) { SkipToEnd(in); }

}  // namespace quintor

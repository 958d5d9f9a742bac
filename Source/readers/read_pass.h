// The single read pass: format detection by banner, dispatch of every line to
// the reader of the format, and the finishing stage shared by all readers.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "numeric/fortran_io.h"
#include "readers/line_reader.h"
#include "session/session.h"

namespace quintor {

// One row of the banner table.
struct Banner {
  std::string_view literal;  // searched as a plain substring
  int code;
  std::string_view message;
};

// The first banner that the line holds, in table order; nullptr for none.
const Banner* FindBanner(std::string_view line);

// Reads lines until one holds a banner; prints its message (and, for
// Gaussian, the orientation in force), sets and returns the format code, and
// leaves the reader behind the banner. -1 when the file ends first.
int DetectFormat(Session& s, LineReader& in);

// Readers that run inside the pass loop (Gaussian, GAMESS) get each line;
// they may pull further lines from the reader inside a block.
using LineHandler = std::function<void(std::string_view line)>;

// Common start of a new geometry: iCyc up, NAtoms to 0, coordinates found.
// Beyond MaxCycles the run stops with its console message.
void StartGeometry(Session& s);
// Stores atom NAtoms+1 of the current set (iCyc), in bohr. Beyond MaxAtoms
// the run stops with its console message.
void AddAtom(Session& s, int z, const Vec3& bohr);
// Place of a field in the current line of the input, for fatal read errors.
FieldPlace PlaceIn(const LineReader& in, std::string field);

// A fixed-column field of the current line (Fortran semantics). The place of
// the field is made only when the text can not be read, so that the per-line
// work of a reader allocates nothing; then FatalReadError is thrown.
double FieldReal(const LineReader& in, std::string_view line, int first, int width, int decimals,
                 const char* field);
long long FieldInt(const LineReader& in, std::string_view line, int first, int width, const char* field);

// Runs the read pass and the finishing stage on the open input.
void ReadPass(Session& s, LineReader& in);
// The finishing stage alone (also after "N" at the no-coordinates question).
void FinishReadPass(Session& s);

}  // namespace quintor

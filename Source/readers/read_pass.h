// The single read pass: format detection by banner, dispatch of every line to
// the reader of the format, and the finishing stage shared by all readers.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "io/fields.h"
#include "io/line_reader.h"
#include "model/session.h"

namespace quintor {

// One row of the banner table.
struct Banner {
  std::string_view literal;  // searched as a plain substring
  FormatCode code;
  std::string_view message;
};

// The program a banner's message names: " Gaussian 16 detected" gives
// "Gaussian 16".
std::string ProgramName(std::string_view message);

// The first banner that the line holds, in table order; nullptr for none.
const Banner* FindBanner(std::string_view line);

// Reads lines until one holds a banner; prints its message (and, for
// Gaussian, the orientation in force), sets and returns the format code, and
// leaves the reader behind the banner. Automatic when the file ends first.
FormatCode DetectFormat(Session& s, LineReader& in);

// Readers that run inside the pass loop (Gaussian, GAMESS) get each line;
// they may pull further lines from the reader inside a block.
using LineHandler = std::function<void(std::string_view line)>;

// Common start of a new geometry: iCyc up, NAtoms to 0, coordinates found.
// Beyond MaxCycles the run stops with its console message.
void StartGeometry(Session& s);
// Stores atom NAtoms+1 of the current set (iCyc), in bohr. Beyond MaxAtoms
// the run stops with its console message.
void AddAtom(Session& s, int z, const Vec3& bohr);

// Asked when the input held no coordinates: true goes on with an empty
// molecule, false (or no question at all) ends the run with NoCoordinates.
// The readers never read the keyboard; the top layer asks the user.
using GoOnWithoutCoordinates = std::function<bool()>;

// A value of a mode block (intensity, Raman activity, reduced mass, force
// constant) in columns first..first+width-1. A field the program filled with
// asterisks or NaN, because the value did not fit, gives 0 and a warning
// naming the mode and the field, so that one overflowed column does not end
// the run; any other text that is no number stops it as usual.
double ModeValue(Session& s, const LineReader& in, std::string_view line, int first, int width, int decimals,
                 int mode, const char* field);

// Runs the read pass and the finishing stage on the open input.
void ReadPass(Session& s, LineReader& in, const GoOnWithoutCoordinates& goOn = {});
// The finishing stage alone.
void FinishReadPass(Session& s, const GoOnWithoutCoordinates& goOn = {});

}  // namespace quintor

// The thermodynamic specification file (".tdi"): temperature, pressure,
// scaling, zero modes, internal rotations with their groups, axes and
// barriers, excluded atoms and replacement masses.
#pragma once

#include "io/line_reader.h"
#include "model/session.h"

namespace quintor {

// Reads the open SpecFile into the Session. A number that can not be read,
// or the end of the file inside a READP table, throws FatalReadError.
void ReadSpecFile(Session& s, LineReader& in);

}  // namespace quintor

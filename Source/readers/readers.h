// Entry points of the readers of the individual formats.
#pragma once

#include "readers/line_reader.h"
#include "readers/read_pass.h"
#include "session/session.h"

namespace quintor {

// Line-driven readers: made once the format is known, then fed every line.
LineHandler MakeGaussianReader(Session& s, LineReader& in);   // codes 1, 3, 10, 16
LineHandler MakeGamessReader(Session& s, LineReader& in);     // codes 0, 2, 15, 19

// Readers that take over the file and read it to its end.
void ReadKorvandelLog(Session& s, LineReader& in);    // 4
void ReadPlainXyz(Session& s, LineReader& in);        // 5, 6, 7
void ReadPatternInput(Session& s, LineReader& in);    // 8
void ReadOwnLog(Session& s, LineReader& in);          // 9
void ReadXyzAtLabel(Session& s, LineReader& in);      // 11
void ReadGxyz(Session& s, LineReader& in);            // 12
void ReadGaussianZMatrix(Session& s, LineReader& in); // 14
void ReadPriroda(Session& s, LineReader& in);         // 17

}  // namespace quintor

// Entry points of the readers of the individual formats.
#pragma once

#include <string>
#include <vector>

#include "io/line_reader.h"
#include "model/session.h"
#include "readers/read_pass.h"

namespace quintor {

// Line-driven readers: made once the format is known, then fed every line.
// `finish`, when given, receives what the reader does at the end of the file
// (a mode block the evaluation needs and could not read stops the run there).
LineHandler MakeGamessReader(Session& s, LineReader& in, std::function<void()>* finish = nullptr);

// Readers that take over the file and read it to its end.
void ReadGaussianLog(Session& s, LineReader& in);
void ReadKorvandelLog(Session& s, LineReader& in);
void ReadPlainXyz(Session& s, LineReader& in);
void ReadPatternInput(Session& s, LineReader& in);
void ReadOwnLog(Session& s, LineReader& in);
void ReadXyzAtLabel(Session& s, LineReader& in);
void ReadGxyz(Session& s, LineReader& in);
void ReadGaussianZMatrix(Session& s, LineReader& in);
void ReadPriroda(Session& s, LineReader& in);
void ReadOrcaLog(Session& s, LineReader& in);
void ReadQChemLog(Session& s, LineReader& in);

// The keywords of the calculation as the log echoes its input (Gaussian's
// route, ORCA's "!" lines, Q-Chem's $rem block), split into words.
std::vector<std::string> InputKeywords(const std::string& path);

}  // namespace quintor

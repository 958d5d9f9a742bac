// Results a script can read: the run as JSON beside the MainLog (/JSON), and
// one summary row per run appended to a shared CSV file (/CSV@file).
#pragma once

#include <string>

#include "model/session.h"

namespace quintor {

// The whole run as a JSON document; `status` is the run's exit status.
std::string ResultsJson(const Session& s, int status);

// Writes ResultsJson to <input>.json (never over the input). False when the
// file can not be written.
bool WriteResultsJson(const Session& s, int status);

// The header and the row of the summary CSV (no line ends).
std::string CsvHeader();
std::string CsvRow(const Session& s, int status);

// Appends the run's row to `path` under an exclusive lock on the file, with
// the header first when the file is new or empty, so that runs in parallel
// (GNU parallel, a Slurm array on a shared disk) never mix their rows. False
// when the file can not be opened or written.
bool AppendCsvRow(const std::string& path, const Session& s, int status);

}  // namespace quintor

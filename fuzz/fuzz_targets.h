// The fuzz targets as plain functions, so that the fuzzers and the
// regression tests run the same code on the same bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace quintor::fuzz {

// A directory for the files of one process.
const std::string& ScratchDir();
// Writes `size` bytes to `name` in the scratch directory; returns the path.
std::string WriteScratch(const std::string& name, const uint8_t* data, size_t size);
// What a batch run left: its exit status and all it printed (the console
// and the MainLog), for the regression test's checks.
struct BatchResult {
  int status = 0;
  std::string text;
};

// Runs a whole batch session (/0, answers "n") with these arguments; a
// format code other than -1 is set before the command line is read.
BatchResult RunBatch(const std::vector<std::string>& args, int formatCode = -1);

// Each target returns what its (last) run left.
BatchResult FuzzReadPass(const uint8_t* data, size_t size);    // first byte: the format
BatchResult FuzzSpecFile(const uint8_t* data, size_t size);
BatchResult FuzzConfigFile(const uint8_t* data, size_t size);
BatchResult FuzzZMatrix(const uint8_t* data, size_t size);
BatchResult FuzzCommandLine(const uint8_t* data, size_t size);  // arguments split at newlines
// The engine's parameter file MNDOD.DAT, read over the built-in tables of
// every method and then used for a heat of formation of water.
BatchResult FuzzParameterFile(const uint8_t* data, size_t size);
BatchResult FuzzOrca(const uint8_t* data, size_t size);    // the ORCA reader, forced
BatchResult FuzzQChem(const uint8_t* data, size_t size);   // the Q-Chem reader, forced
// A /PLAY@ journal replayed on water in a batch run.
BatchResult FuzzJournal(const uint8_t* data, size_t size);
// The fragment database Quintor.fdb: read, every record added at a point
// and in place of a hydrogen of methane, and the result stored back.
BatchResult FuzzFragmentDb(const uint8_t* data, size_t size);

}  // namespace quintor::fuzz

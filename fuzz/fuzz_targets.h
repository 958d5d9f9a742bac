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
// Runs a whole batch session (/0, answers "n") with these arguments; a
// format code other than -1 is set before the command line is read.
int RunBatch(const std::vector<std::string>& args, int formatCode = -1);

void FuzzReadPass(const uint8_t* data, size_t size);    // first byte: the format
void FuzzSpecFile(const uint8_t* data, size_t size);
void FuzzConfigFile(const uint8_t* data, size_t size);
void FuzzZMatrix(const uint8_t* data, size_t size);
void FuzzCommandLine(const uint8_t* data, size_t size);  // arguments split at newlines
void FuzzOrca(const uint8_t* data, size_t size);    // the ORCA reader, forced
void FuzzQChem(const uint8_t* data, size_t size);   // the Q-Chem reader, forced

}  // namespace quintor::fuzz

#include "fuzz_targets.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  quintor::fuzz::FuzzJournal(data, size);
  return 0;
}

// Every input that once made a fuzz target fail is run again here, through
// the same code as the fuzzer (fuzz/fuzz_targets.cpp). Under the sanitizer
// build a fault shows as a sanitizer report; in any build as a crash or a
// hang of this test.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <map>

#include "fuzz_targets.h"
#include "test_support.h"

using namespace quintor;
namespace fs = std::filesystem;

TEST(FuzzRegressions, EveryKeptInputRunsCleanly) {
  const std::map<std::string, std::function<void(const uint8_t*, size_t)>> targets = {
      {"read_pass", fuzz::FuzzReadPass},   {"tdi_file", fuzz::FuzzSpecFile},
      {"config_file", fuzz::FuzzConfigFile}, {"zmatrix", fuzz::FuzzZMatrix},
      {"command_line", fuzz::FuzzCommandLine}};
  const fs::path root = fs::path(QUINTOR_TEST_INPUTS).parent_path() / "fuzz_regressions";
  int count = 0;
  for (const auto& [name, run] : targets) {
    if (!fs::is_directory(root / name)) continue;
    for (const auto& entry : fs::directory_iterator(root / name)) {
      SCOPED_TRACE(entry.path().string());
      const std::string bytes = test::ReadFile(entry.path());
      run(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
      ++count;
    }
  }
  RecordProperty("inputs", count);
}

// Every input that once made a fuzz target fail is run again here, through
// the same code as the fuzzer (fuzz/fuzz_targets.cpp). Under the sanitizer
// build a fault shows as a sanitizer report; in any build as a crash or a
// hang of this test, as an exit status of an internal fault, or as a NaN
// printed where a number belongs.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <map>
#include <cctype>
#include <string>

#include "fuzz_targets.h"
#include "model/run_stop.h"
#include "test_support.h"

using namespace quintor;
namespace fs = std::filesystem;

namespace {

// Where a number that is not one ("nan", "-nan", "NaN" standing as a word)
// was printed; npos when none was.
size_t FindNaN(const std::string& text) {
  auto letter = [&](size_t i) { return std::isalnum(static_cast<unsigned char>(text[i])) != 0; };
  for (size_t i = 0; i + 3 <= text.size(); ++i) {
    if (std::tolower(static_cast<unsigned char>(text[i])) != 'n' ||
        std::tolower(static_cast<unsigned char>(text[i + 1])) != 'a' ||
        std::tolower(static_cast<unsigned char>(text[i + 2])) != 'n')
      continue;
    if ((i == 0 || !letter(i - 1)) && (i + 3 == text.size() || !letter(i + 3))) return i;
  }
  return std::string::npos;
}

}  // namespace

TEST(FuzzRegressions, EveryKeptInputRunsCleanly) {
  const std::map<std::string, std::function<fuzz::BatchResult(const uint8_t*, size_t)>> targets = {
      {"read_pass", fuzz::FuzzReadPass},     {"tdi_file", fuzz::FuzzSpecFile},
      {"config_file", fuzz::FuzzConfigFile}, {"zmatrix", fuzz::FuzzZMatrix},
      {"command_line", fuzz::FuzzCommandLine}, {"parameter_file", fuzz::FuzzParameterFile},
      {"orca", fuzz::FuzzOrca},              {"qchem", fuzz::FuzzQChem},
      {"journal", fuzz::FuzzJournal},        {"fragment_db", fuzz::FuzzFragmentDb}};
  const fs::path root = fs::path(QUINTOR_TEST_INPUTS).parent_path() / "fuzz_regressions";
  int count = 0;
  for (const auto& [name, run] : targets) {
    if (!fs::is_directory(root / name)) continue;
    for (const auto& entry : fs::directory_iterator(root / name)) {
      SCOPED_TRACE(entry.path().string());
      const std::string bytes = test::ReadFile(entry.path());
      const fuzz::BatchResult r = run(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
      // Bad input ends with its own status (read error, limits, no
      // coordinates, a failed computation), never with an internal fault.
      EXPECT_TRUE(r.status == exit_status::Ok || r.status == exit_status::ReadError ||
                  r.status == exit_status::Limit || r.status == exit_status::NoCoordinates ||
                  r.status == exit_status::Numeric)
          << "status " << r.status;
      const size_t at = FindNaN(r.text);
      EXPECT_EQ(at, std::string::npos) << "NaN printed: ..." << r.text.substr(at < 80 ? 0 : at - 80, 90);
      ++count;
    }
  }
  EXPECT_GT(count, 0);
  RecordProperty("inputs", count);
}

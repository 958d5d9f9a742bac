// The command line: `quintor <input file> [/options]`.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "model/session.h"

namespace quintor {

inline constexpr int BuildNumber = 2155;
inline constexpr std::string_view VersionText = "QUINTOR v.2.5";

enum class CommandLineAction { Run, Help, Version };

// An option the program does not know, a value out of its range, or an
// output file that would write over the input. The run stops with status 1;
// the text is the whole message.
struct BadOption : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Parses the arguments (without the program name) into the Session. The
// first argument is the input file unless it is /I or /Z; every option is
// matched upper-cased as a prefix, in a fixed order. Every argument is
// looked at, so that options after a bad one (/CSV@) still count; then the
// first mistake is thrown: FatalReadError for a number that can not be read,
// BadOption for an unknown option, a value out of range or an output file
// that names the input.
CommandLineAction ParseCommandLine(Session& s, const std::vector<std::string>& args);

// Whether a run with these arguments opens windows: it has no /0, or it
// draws a picture (/SNAP@). Help, version and arguments that can not be
// read open none (the batch run reports them).
bool OpensWindows(const std::vector<std::string>& args);

// The usage text of -h, --help and /?.
std::string UsageText();

}  // namespace quintor

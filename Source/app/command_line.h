// The command line: `quintor <input file> [/options]`.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "model/session.h"

namespace quintor {

inline constexpr int BuildNumber = 2155;
inline constexpr std::string_view VersionText = "QUINTOR v.2.5";

enum class CommandLineAction { Run, Help, Version };

// Parses the arguments (without the program name) into the Session. The
// first argument is the input file unless it is /I or /Z; every option is
// matched upper-cased as a prefix, in a fixed order. A number that can not be
// read throws FatalReadError.
CommandLineAction ParseCommandLine(Session& s, const std::vector<std::string>& args);

// Whether a run with these arguments opens windows: it has no /0, or it
// draws a picture (/SNAP@). Help, version and arguments that can not be
// read open none (the batch run reports them).
bool OpensWindows(const std::vector<std::string>& args);

// The usage text of -h, --help and /?.
std::string UsageText();

}  // namespace quintor

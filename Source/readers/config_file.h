// The configuration file Quintor.cfg: named patterns that tell where the
// geometries and energies stand in a text log that no built-in reader knows.
#pragma once

#include <string>

namespace quintor {

struct Session;

inline constexpr const char* ConfigFileName = "Quintor.cfg";

// Finds Quintor.cfg and reads the pattern named by s.opt.patternName, or the
// DEFAULT pattern when no name was given, into s.pattern. A missing file or
// pattern is no failure: a message is printed and the defaults stand. An
// integer value that can not be read throws FatalReadError.
// Search order, first hit wins:
//   1. Quintor.cfg in the current directory, only when HomeDir is blank
//      (HomeDir then becomes the current directory);
//   2. HomeDir/Quintor.cfg;
//   3. $XDG_CONFIG_HOME/quintor/ (or ~/.config/quintor/);
//   4. the installed data directory, <prefix>/share/quintor/;
//   5. /etc/quintor/.
// In cases 3 to 5 HomeDir becomes the directory of the hit. A length unit in
// the pattern (GeoUnits) is taken unless the command line gave one.
void ReadConfig(Session& s);

// The configuration file by the search order above, "" when none exists.
// Sets HomeDir as told there.
std::string FindConfigFile(Session& s);

// Reads the wanted pattern from one configuration file into s.pattern; false
// when the file has no such pattern (nothing is changed then).
bool ReadConfigPattern(Session& s, const std::string& path);

}  // namespace quintor

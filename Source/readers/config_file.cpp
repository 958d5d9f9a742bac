#include "readers/config_file.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <ostream>
#include <vector>

#include "io/fortran_io.h"
#include "io/line_reader.h"
#include "model/session.h"

#ifndef QUINTOR_DATA_DIR
#define QUINTOR_DATA_DIR "/usr/local/share/quintor"
#endif

namespace quintor {

namespace {

namespace fs = std::filesystem;

// The keys of a pattern, in the order of their table.
enum Key {
  kGeoLabel,
  kSkipLinesAfterLabel,
  kEnergyPattern,
  kEnergyValueBegPos,
  kEnergyValueEndPos,
  kIsEnergyBeforeGeo,
  kReadEnergy,
  kGeoFormat,
  kGeoUnits,
  kKeyCount
};

// Compared in their exact case; the question mark belongs to its key.
constexpr std::array<const char*, kKeyCount> kKeyNames = {
    "GeoLabel",          "SkipLinesAfterLabel", "EnergyPattern",
    "EnergyValueBegPos", "EnergyValueEndPos",   "IsEnergyBeforeGeo",
    "ReadEnergy?",       "GeoFormat",           "GeoUnits"};

struct KeyValue {
  bool found = false;
  std::string value;
  long line = 0;  // where it was met, for a read error
};

std::string WithSlash(std::string dir) {
  if (!dir.empty() && dir.back() != '/') dir.push_back('/');
  return dir;
}

bool IsFile(const std::string& path) {
  std::error_code ec;
  return fs::exists(path, ec) && !fs::is_directory(path, ec);
}

// Blanks only: a header must start in column 1 and a tab is no blank there.
std::string_view TrimBlanksRight(std::string_view s) {
  while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
  return s;
}

std::string_view LeftAdjust(std::string_view s) {
  while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
  return s;
}

std::string CurrentDir(const Session& s) {
  if (!s.files.currentDir.empty()) return WithSlash(s.files.currentDir);
  std::error_code ec;
  return WithSlash(fs::current_path(ec).string());
}

// To the screen, and to the MainLog, which keeps it until the file is open.
void Say(Session& s, const std::string& text) {
  s.Console() << text << '\n';
  s.log.Line(text);
}

int IntegerValue(const KeyValue& kv, Key key, const std::string& path) {
  FieldPlace where{path, kv.line, 0, 0, std::string("configuration key ") + kKeyNames[key]};
  std::optional<long long> v = ReadFreeInt(kv.value, where);
  if (!v) throw FatalReadError(where, kv.value);  // a blank value is no number either
  return static_cast<int>(*v);
}

}  // namespace

std::string FindConfigFile(Session& s) {
  std::string& home = s.files.homeDir;
  if (TrimBlanksRight(home).empty()) {
    std::string here = CurrentDir(s);
    if (IsFile(here + ConfigFileName)) {
      home = here;
      return here + ConfigFileName;
    }
  } else {
    std::string path = WithSlash(std::string(Trim(home))) + ConfigFileName;
    if (IsFile(path)) return path;
  }

  // The fixed places of a Linux system stand where the fixed Windows
  // folders stood; a hit there also names the home directory.
  std::vector<std::string> places;
  if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg && *xdg)
    places.push_back(WithSlash(xdg) + "quintor/");
  else if (const char* userHome = std::getenv("HOME"); userHome && *userHome)
    places.push_back(WithSlash(userHome) + ".config/quintor/");
  places.push_back(WithSlash(QUINTOR_DATA_DIR));
  places.push_back("/etc/quintor/");
  for (const std::string& dir : places) {
    if (IsFile(dir + ConfigFileName)) {
      home = dir;
      return dir + ConfigFileName;
    }
  }
  return {};
}

bool ReadConfigPattern(Session& s, const std::string& path) {
  LineReader in;
  if (!in.Open(path)) return false;

  // The header and each line are compared as 80-column fields: the header
  // must begin in column 1 and stand alone. Only the file's side is
  // upper-cased; the pattern name comes upper-cased from the command line.
  std::string_view name = TrimBlanksRight(s.opt.patternName);
  std::string header = "[";
  header += name.empty() ? std::string_view("DEFAULT") : name;
  header += ']';
  if (header.size() > MaxLabel) header.resize(MaxLabel);
  std::string_view headerField = TrimBlanksRight(header);

  std::string_view line;
  bool found = false;
  while (in.Next(line)) {
    std::string field = Upper(line.substr(0, std::min<size_t>(line.size(), MaxLabel)));
    if (TrimBlanksRight(field) == headerField) {
      found = true;
      break;
    }
  }
  if (!found) return false;

  std::array<KeyValue, kKeyCount> keys;
  while (in.Next(line)) {
    if (Contains(Upper(line), "[END]")) break;
    std::string_view text = LeftAdjust(line);
    if (Trim(text).empty() || text.front() == '!') continue;
    text = text.substr(0, text.find('!'));  // the rest of the line is a comment
    size_t eq = text.find('=');
    if (eq == std::string_view::npos) continue;
    std::string_view value = LeftAdjust(text.substr(eq + 1));
    value = TrimRight(value.substr(0, std::min<size_t>(value.size(), MaxLabel)));
    // Every key that stands in the line takes the value: a key written
    // twice keeps its last value.
    for (int k = 0; k < kKeyCount; ++k) {
      if (!Contains(text, kKeyNames[k])) continue;
      keys[k].found = true;
      keys[k].value = std::string(value);
      keys[k].line = in.LineNumber();
    }
  }

  InputPattern& p = s.pattern;
  if (keys[kGeoLabel].found) p.geoLabel = keys[kGeoLabel].value;
  if (keys[kEnergyPattern].found) p.energyPattern = keys[kEnergyPattern].value;
  auto integer = [&](Key k, int& target) {
    if (keys[k].found) target = IntegerValue(keys[k], k, path);
  };
  integer(kSkipLinesAfterLabel, p.skipLinesAfterLabel);
  integer(kEnergyValueBegPos, p.energyBegPos);
  integer(kEnergyValueEndPos, p.energyEndPos);
  integer(kIsEnergyBeforeGeo, p.energyShift);
  integer(kReadEnergy, p.readEnergy);
  integer(kGeoFormat, p.geoFormat);
  if (keys[kGeoUnits].found) {
    p.geoUnits = static_cast<LengthUnit>(IntegerValue(keys[kGeoUnits], kGeoUnits, path));
    p.geoUnitsGiven = true;
  }
  return true;
}

void ReadConfig(Session& s) {
  std::string path = FindConfigFile(s);
  if (path.empty()) {
    Say(s, "Can not find configuration file Quintor.cfg - internal defaults will be used...");
    return;
  }
  s.files.configFile = path;
  if (!ReadConfigPattern(s, path)) {
    Say(s, " Pattern not found in Quintor.cfg - internal defaults will be used...");
    return;
  }
  // The command line has been read already: a unit given there stays.
  if (s.pattern.geoUnitsGiven && s.opt.lengthUnit == LengthUnit::Angstrom) s.opt.lengthUnit = s.pattern.geoUnits;
}

}  // namespace quintor

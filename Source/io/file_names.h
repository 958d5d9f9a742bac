// Names of the files of a run, derived from the input name.
#pragma once

#include <string>
#include <string_view>

namespace quintor {

// Writes `ext` over `name` from its last "." on (looked for in the last path
// component only), one character at a time: characters of a longer old
// extension stay, so a.output with ".mou" gives a.mouput. Without a "." the
// extension is appended when `append` is set, else the name is unchanged.
std::string ReplaceExtension(bool append, std::string_view name, std::string_view ext);

// The input name up to its first "." when that dot stands at position 2 to
// 133 of the last path component; blank otherwise. a.b.c gives "a".
std::string BaseName(std::string_view name);

// `ext` in place of the whole extension of the last path component (or
// appended when there is none): w.gamout with ".mou" gives w.mou.
std::string WithExtension(std::string_view name, std::string_view ext);

// A file the run writes (".mou", ".tdo", ".mco", ".json"): `ext` in place of
// the whole extension; when that gives the input name itself a "1" is added (a run
// on x.mou logs to x.mou1), so that the input is never written over.
std::string DerivedName(std::string_view inputName, std::string_view ext);

}  // namespace quintor

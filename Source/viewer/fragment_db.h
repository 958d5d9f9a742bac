// The fragment database Quintor.fdb: named pieces with coordinates and
// bonds that the Fragment edit mode adds to the structure on show, and the
// writer that appends the marked fragment to it.
//
// The file is text and only grows. "!" lines are comments, a "#" line names
// a record (up to five synonyms), the atom lines follow it (label, x y z in
// Angstrom, numbers of the bonded atoms within the record, 0 for none) up to
// an empty line. Readers take the atom lines as free-form tokens.
#pragma once

#include <ctime>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "model/session.h"
#include "numeric/vec3.h"
#include "viewer/commands.h"
#include "viewer/viewer_state.h"

namespace quintor {

inline constexpr int FragmentSynonyms = 5;
inline constexpr int FragmentNameWidth = 20;
inline constexpr int FragmentRecordsKept = 100;  // room made at once; more records are read all the same

// The element table of the readers, handed down by the caller so that the
// viewer keeps one table without including the readers.
struct ElementTable {
  std::function<int(std::string_view)> numberOfLabel;  // nuclear charge of an atom label, 0 if none
  std::function<std::string(int)> symbol;              // the symbol of z, no blanks
  std::function<double(int)> mass;                     // the most abundant isotope, amu
};

// The program's own element table (symbols, IUPAC names up to Z 96, masses).
const ElementTable& ProgramElements();

struct FragmentAtom {
  int z = 0;
  Vec3 xyz{};               // Angstrom, as stored
  std::vector<int> bonds;   // 1-based within the record, no zeros
};

struct FragmentRecord {
  std::vector<std::string> names;  // up to five, each cut to 20 characters
  int headerLine = 0;              // 1-based line of the "#" line
  std::vector<FragmentAtom> atoms;
};

struct FragmentDatabase {
  std::vector<FragmentRecord> records;
  std::vector<std::string> problems;  // one line per malformed record, which is left out
};

// Reads the whole database. A missing file is an empty database; a record
// with a malformed atom line (fewer than four tokens, a coordinate that is
// no number, an unknown element, a bond number that is no number or lies
// past the record or to the atom itself, more than 16 bonds) is reported once with its line number
// and left out.
FragmentDatabase ReadFragmentDatabase(const std::string& path, const ElementTable& elements);

// The records one of whose synonyms is `name`, compared in upper case after
// the name is cut to 20 characters; in file order.
std::vector<const FragmentRecord*> FindFragments(const FragmentDatabase& db, std::string_view name);

// The structure being built, in the viewer's terms.
struct BuiltStructure {
  std::vector<int> z;
  std::vector<Vec3> xyz;                // bohr
  std::vector<std::vector<int>> bonds;  // 1-based partners
  int Atoms() const { return static_cast<int>(z.size()); }
};

// Adds at `pointAngstrom` the atom whose symbol is `name` (tested first,
// Z from 1 to 99, any case) or else every record that has `name` among its
// synonyms, each with its first atom on the point. Returns the atoms added;
// an unknown name adds nothing.
int AddFragmentAt(BuiltStructure& b, const FragmentDatabase& db, std::string_view name, const Vec3& pointAngstrom,
                  const ElementTable& elements);

// With hydrogen `hAtom` (1-based, one bond) chosen: removes it and adds the
// first record named `name` (or the atom of that symbol) so that its first
// atom bonds to the old partner at the sum of the bond radii along the old
// X-H direction, the rest turned away from it and then about the new bond to
// where the nearest old atom is farthest. Returns the atoms added, 0 for an
// unknown name, -1 when hAtom is no hydrogen with one partner.
int ReplaceHydrogen(BuiltStructure& b, int hAtom, const FragmentDatabase& db, std::string_view name,
                    const ElementTable& elements);

// The block StoreFragment appends: an empty line, "! " and the comment,
// "! -- dd.mm.yyyy  hh:mm:ss --", "# " and the names, then one line per atom
// of `fragment` with the marked atoms first (in `marked` order) and the rest
// in number order, renumbered 1, 2, ...; bonds leaving the fragment write 0.
// Empty when the fragment has no atoms.
std::string FragmentBlock(const BuiltStructure& b, const std::vector<int>& fragment, const std::vector<int>& marked,
                          std::string_view names, std::string_view comment, std::time_t when,
                          const ElementTable& elements);

// Appends `block` to the file under an exclusive flock, after its last line
// that is not empty (trailing empty lines give way). On a failed write the
// file is cut back, so that no partial record stays. False with `error` set
// when the file cannot be opened or written.
bool AppendFragmentBlock(const std::string& path, std::string_view block, std::string& error);

// The structure on show, and back into the Session and the viewer state:
// labels are the symbol and the running number, masses the most abundant
// isotopes, the total mass follows, and the edit flags are set.
BuiltStructure StructureOnShow(const Session& s, const ViewerState& v);
void TakeStructure(Session& s, ViewerState& v, const BuiltStructure& b, const ElementTable& elements);

// The atoms of the fragment of atom `first`: everything reached over bonds.
std::vector<int> ConnectedAtoms(const BuiltStructure& b, int first);

// "Add new atom/fragment" (key N of the Fragment edit mode): dialog 110,
// shown again with its repeat caption while a coordinate is no number; then
// the atom or fragment at the point, or, with exactly one hydrogen marked,
// in place of that hydrogen. Problems of the database go to the Message
// window once. Returns the atoms added (0 also for Cancel).
int AddFragmentCommand(Session& s, ViewerState& v, Prompts& prompts);

// "Store fragment to database" (key G): dialog 111, then the fragment of the
// first marked atom appended to the database. False when nothing was stored.
bool StoreFragmentCommand(Session& s, ViewerState& v, Prompts& prompts);

}  // namespace quintor

// Bonds from distances, connected fragments, and equivalence of two
// arrangements of the same atoms. Atom numbers in this module are 1-based,
// as the neighbour table encodes the kind of bond in the sign of the number;
// per-atom vectors are indexed by number - 1.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "numeric/constants.h"
#include "numeric/vec3.h"

namespace quintor {

inline constexpr int NeighbourSlots = 16;

// For each atom the number of bonds found and up to 16 partners: +j a
// covalent bond to atom j, -j a weak one, 0 an empty slot.
struct NeighbourTable {
  std::vector<int> count;
  std::vector<std::array<int, NeighbourSlots>> slots;

  int Atoms() const { return static_cast<int>(count.size()); }
};

// Fills `table` (storage is reused when it already has the size, so the
// rule can run at every trial rotation without allocating). hbMode 0 finds
// covalent bonds only, 1 and above adds weak ones. Partners beyond
// maxNeighbours (at most 16) are counted but not stored.
void Connect(int hbMode, const std::vector<int>& nuclear, const std::vector<Vec3>& xyzAngstrom,
             int maxNeighbours, NeighbourTable& table);

// Walks the bonds from startAtom, giving every atom reached the value
// `mark` in `marks` (one per atom; an atom that already carries `mark` is not
// entered again). Mode 0 follows covalent bonds, any other mode weak ones
// too. blockedAtom (0 for none) is never entered: that is how a bond is cut.
struct FloodResult {
  int count = 0;            // atoms marked by this walk
  int blockedContacts = 0;  // bonds met that lead into the blocked atom
};
FloodResult FloodFill(int startAtom, int mode, const NeighbourTable& table, int blockedAtom, int mark,
                      std::vector<int>& marks);

// Connected fragments over covalent bonds, each a list of atom numbers in
// ascending order, fragments in order of their lowest atom.
struct FragmentList {
  std::vector<std::vector<int>> fragments;
  std::vector<std::string> lines;  // the listing, when asked for and there is more than one
  int Count() const { return static_cast<int>(fragments.size()); }
};
FragmentList Fragments(const NeighbourTable& table, bool print);

// Whether coordinate sets a and b (Angstrom) are the same arrangement of
// like atoms, within 0.1 A in each coordinate. Messages about coinciding
// atoms are returned; they do not stop anything.
struct Equivalence {
  bool equivalent = false;
  std::vector<std::string> lines;
};
Equivalence EquivC(const std::vector<int>& nuclear, const std::vector<Vec3>& a, const std::vector<Vec3>& b);

}  // namespace quintor

// The one element table of the program: symbols and default masses, as the
// readers, reports and the engine print and use them.
#pragma once

#include <string>
#include <string_view>

namespace quintor {

// Two-character symbol of nuclear charge z (1..110), space-padded: the IUPAC
// symbols up to curium (96). 97 and 98 hold "X " and "Xx" and 99..110 "Du",
// the names of dummy atoms in inputs (a Gaussian dummy, -1, is stored as 99).
// Outside 1..110: "  ".
std::string_view ElementSymbol(int z);

// Mass of the most abundant isotope of charge z in amu (39.948 for argon, by
// design); 0.0 for z = 0 and above 104.
double DefaultMass(int z);

// Nuclear number of an element word: its letters before the first digit,
// upper-cased and cut at 5 characters, compared with the upper-cased table
// from 1 to `lastSearched`. 0 when nothing matches.
int ElementNumber(std::string_view word, int lastSearched = 99);

// The 5-character atom name: symbol and 1-based index, blanks removed.
std::string AtomName(int z, int index);

}  // namespace quintor

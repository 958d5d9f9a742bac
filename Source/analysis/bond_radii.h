// Bond radii in angstrom by atomic number, used by every bond rule.
#pragma once

namespace quintor {

// Radius of nuclear charge z (1..100); 0 outside. Z = 98 has 0.1, a quirk
// of the table that stays.
double BondRadius(int z);

}  // namespace quintor

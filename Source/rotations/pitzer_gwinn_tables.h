// Pitzer-Gwinn thermodynamic functions of one-dimensional hindered rotation
// in the potential V = V0/2 (1 - cos n phi), in cal/(mol K), tabulated on
// x = V0/RT (columns) and y = 1/Qf (rows), Qf = sqrt(8 pi^3 I k T) / (n h).
//
//   table 1  heat capacity C                  y = 0, 0.05 .. 0.95
//   table 2  (H - H0)/T, H0 the lowest level  y = 0, 0.05 .. 0.95
//   table 3  entropy S                        y = 0.25, 0.30 .. 0.95
//   table 4  Sfree - S, Sfree = R (ln Qf + 1/2)  y = 0, 0.05 .. 0.55
//
// Tables 2 and 3 are the published ones (K. S. Pitzer and W. D. Gwinn,
// J. Chem. Phys. 10, 428 (1942)). Rows y = 0 are the classical limit; table 1
// and table 4 for y > 0 come from the levels of the full quantum rotor
// (all symmetry species, Q = sum / n).
#pragma once

#include <array>
#include <span>

namespace quintor {

inline constexpr int PitzerGwinnColumns = 24;
using PitzerGwinnRow = std::array<double, PitzerGwinnColumns>;

// The x = V0/RT grid shared by the four tables.
extern const PitzerGwinnRow PitzerGwinnX;

struct PitzerGwinnTable {
  const char* function;                 // "C", "H/T", "S", "Sfree-S"
  std::span<const double> y;            // y = 1/Qf of each row
  std::span<const PitzerGwinnRow> rows; // rows[i][j] at (y[i], x[j]), cal/(mol K)
};

// Table 1 to 4, as numbered above.
const PitzerGwinnTable& PitzerGwinnTableNo(int table);

}  // namespace quintor

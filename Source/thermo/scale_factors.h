// Published frequency scale factors by level of theory, for /SCALEAUTO.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quintor {

struct ScaleFactor {
  std::string_view level;   // "METHOD/BASIS" as published, or a method alone
  double zpe;               // for zero-point energies (and, here, all thermochemistry)
  double fundamental;       // for fundamental frequencies
};

// Where the factors come from, printed with them.
extern const std::string_view ScaleFactorSource;

// The entry whose method and basis set both stand among the keywords of an
// input (its route or keyword lines); the longest such level wins, so that
// "M06-2X/6-311+G(d,p)" is not taken for "M06/...". Case, hyphens and the
// R/U prefix of the method do not matter; "*" reads as "(d)", "**" as "(d,p)".
// nullptr when none fits.
const ScaleFactor* FindScaleFactor(const std::vector<std::string>& keywords);

}  // namespace quintor

#include "thermo/scale_factors.h"

#include <array>
#include <cctype>

namespace quintor {

const std::string_view ScaleFactorSource =
    "Truhlar group database v4: I. M. Alecu, J. Zheng, Y. Zhao, D. G. Truhlar, J. Chem. Theory Comput. 2010, "
    "6, 2872, and comp.chem.umn.edu/freqscale";

namespace {

// ZPE and fundamental factors of the database (version 4, 2019).
constexpr std::array<ScaleFactor, 40> kFactors = {{
    {"AM1", 0.948, 0.923},
    {"PM3", 0.940, 0.916},
    {"PM6", 1.078, 1.050},
    {"HF/3-21G", 0.919, 0.895},
    {"HF/6-31G(d)", 0.909, 0.885},
    {"HF/6-31G(d,p)", 0.913, 0.889},
    {"HF/6-31+G(d)", 0.911, 0.887},
    {"HF/6-31+G(d,p)", 0.915, 0.891},
    {"HF/6-311G(d,p)", 0.920, 0.896},
    {"B3LYP/6-31G(d)", 0.977, 0.952},
    {"B3LYP/6-31G(2df,2p)", 0.981, 0.955},
    {"B3LYP/aug-cc-pVTZ", 0.985, 0.959},
    {"B3LYP/def2-TZVP", 0.985, 0.959},
    {"B3LYP/ma-TZVP", 0.986, 0.960},
    {"B3P86/6-31G(d)", 0.971, 0.946},
    {"B3PW91/6-31G(d)", 0.972, 0.947},
    {"BLYP/6-31G(d)", 1.009, 0.983},
    {"BP86/6-31G(d)", 1.007, 0.981},
    {"BP86/ma-TZVP", 1.014, 0.988},
    {"CAM-B3LYP/ma-TZVP", 0.976, 0.951},
    {"CCSD(T)/aug-cc-pVTZ", 0.987, 0.961},
    {"CCSD(T)/jul-cc-pVTZ", 0.984, 0.958},
    {"M06/6-31+G(d,p)", 0.980, 0.950},
    {"M06/def2-TZVP", 0.982, 0.956},
    {"M06-2X/6-31+G(d,p)", 0.967, 0.940},
    {"M06-2X/6-311+G(d,p)", 0.970, 0.944},
    {"M06-2X/aug-cc-pVTZ", 0.971, 0.946},
    {"M06-2X/def2-TZVP", 0.971, 0.946},
    {"M06-L/6-31+G(d,p)", 0.978, 0.953},
    {"MP2/6-31G(d)", 0.964, 0.939},
    {"MP2/6-311G(d,p)", 0.970, 0.945},
    {"MP2/cc-pVDZ", 0.977, 0.952},
    {"MP2/cc-pVTZ", 0.975, 0.953},
    {"PBE/def2-TZVP", 1.011, 0.985},
    {"PBE0/MG3S", 0.975, 0.950},
    {"QCISD/cc-pVTZ", 0.975, 0.950},
    {"wB97X-D/def2-TZVP", 0.975, 0.950},
    {"wB97X-D/ma-TZVP", 0.975, 0.950},
    {"wB97X/def2-TZVP", 0.970, 0.945},
    {"TPSSh/MG3S", 0.984, 0.963},
}};

// Upper case without hyphens; "**" becomes "(D,P)" and "*" "(D)".
std::string Normal(std::string_view word) {
  std::string out;
  for (size_t i = 0; i < word.size(); ++i) {
    const char c = word[i];
    if (c == '-') continue;
    if (c == '*') {
      const bool twice = i + 1 < word.size() && word[i + 1] == '*';
      out += twice ? "(D,P)" : "(D)";
      if (twice) ++i;
      continue;
    }
    out += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  return out;
}

// Gaussian's and ORCA's name of PBE0.
std::string Synonym(const std::string& method) { return method == "PBE1PBE" ? "PBE0" : method; }

bool HasMethod(const std::vector<std::string>& words, const std::string& method) {
  for (const std::string& w : words) {
    const std::string m = Synonym(w);
    if (m == method) return true;
    // Restricted and unrestricted forms: RB3LYP, UB3LYP, ROB3LYP.
    if ((m.size() == method.size() + 1 && (m[0] == 'R' || m[0] == 'U') && m.compare(1, std::string::npos, method) == 0) ||
        (m.size() == method.size() + 2 && m.compare(0, 2, "RO") == 0 && m.compare(2, std::string::npos, method) == 0))
      return true;
  }
  return false;
}

}  // namespace

const ScaleFactor* FindScaleFactor(const std::vector<std::string>& keywords) {
  std::vector<std::string> words;
  for (const std::string& k : keywords) words.push_back(Normal(k));
  const ScaleFactor* best = nullptr;
  for (const ScaleFactor& f : kFactors) {
    const std::string level = Normal(f.level);
    const size_t slash = level.find('/');
    const std::string method = Synonym(level.substr(0, slash));
    bool fits = HasMethod(words, method);
    if (fits && slash != std::string::npos) {
      const std::string basis = level.substr(slash + 1);
      fits = false;
      for (const std::string& w : words) fits = fits || w == basis;
    }
    if (fits && (!best || f.level.size() > best->level.size())) best = &f;
  }
  return best;
}

}  // namespace quintor

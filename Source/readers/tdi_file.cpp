#include "readers/tdi_file.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <ostream>

#include "io/fortran_io.h"
#include "io/keyword_values.h"
#include "readers/read_pass.h"

namespace quintor {

namespace {

struct SpecReader {
  Session& s;
  LineReader& in;

  FieldPlace Place(std::string_view keyword) const { return PlaceIn(in, "keyword " + std::string(keyword)); }

  double Real(const std::string& text, std::string_view keyword) const {
    auto v = ParseFortranReal(text);
    if (!v || Trim(text).empty()) throw FatalReadError(Place(keyword), text);
    return *v;
  }
  int Int(const std::string& text, std::string_view keyword) const {
    auto v = ParseFortranInt(text);
    if (!v || Trim(text).empty()) throw FatalReadError(Place(keyword), text);
    return static_cast<int>(*v);
  }
  // The first value of `key`, when the line gives one.
  bool FirstReal(std::string_view line, std::string_view key, std::string_view keyword, double& target) const {
    auto values = KeywordValues(line, key);
    if (values.empty()) return false;
    target = Real(values[0], keyword);
    return true;
  }
  std::vector<int> Ints(std::string_view line, std::string_view keyword) const {
    std::vector<int> list;
    for (const auto& v : KeywordValues(line, keyword)) list.push_back(Int(v, keyword));
    return list;
  }

  // Lines of a block up to a blank line; false at the end of the file.
  bool BlockLine(std::string_view& line) {
    if (!in.Next(line)) return false;
    return !Trim(line).empty();
  }

  void ExcludeAtoms() {
    std::string_view line;
    while (BlockLine(line)) {
      std::string field(Trim(line).substr(0, 10));  // left-justified, an integer in a field of 10
      s.excludeAtoms.push_back(static_cast<int>(ReadFixedInt(field, 1, 10, Place("EXCLUDEATOMS"))));
    }
  }

  void NewMasses() {
    s.specMass.clear();
    s.specMassGiven = true;
    std::string_view line;
    while (BlockLine(line)) {
      auto mass = ReadFreeReal(line.substr(0, 80), Place("NEWAMASS"));
      s.specMass.push_back(mass.value_or(0.0));
    }
  }

  // READP: angle and energy per line up to a blank line. The count is kept
  // only when the table ends before its 150th line; the file must not end
  // inside the table.
  void Potential(IntRot& rot, double factor) {
    rot.angles.clear();
    rot.energies.clear();
    std::string_view line;
    for (int k = 1;; ++k) {
      if (!in.Next(line)) throw FatalReadError(Place("READP"), "end of file inside the table");
      if (Trim(line).empty()) {
        rot.potentialKind = k - 1;
        CheckCoverage(rot);
        return;
      }
      auto v = ReadFreeReals(line, 2, Place("READP"));
      rot.angles.push_back(v[0]);
      rot.energies.push_back(v[1] * factor);
      if (k == MaxPotentialPoints) return;
    }
  }

  // The cosine transform samples the curve from 0 to 180 degrees; a curve
  // that ends before (three points are no curve: the barrier then comes
  // from the frequency) can not be transformed.
  void CheckCoverage(const IntRot& rot) {
    if (rot.angles.size() <= 3) return;
    const auto [lo, hi] = std::minmax_element(rot.angles.begin(), rot.angles.end());
    constexpr double kSlack = 1e-6;
    if (*lo > kSlack || *hi < 180.0 - kSlack)
      throw FatalReadError(Place("READP"), "the potential must cover the angles 0 to 180 degrees (it covers " +
                                               std::to_string(*lo) + " to " + std::to_string(*hi) + ")");
  }

  // The unit of a barrier: KCAL, else AU or A.U., anywhere on the line; kJ/mol otherwise.
  static double BarrierUnit(std::string_view line) {
    if (Contains(line, "KCAL")) return constants::KcalToKJ;
    if (Contains(line, "AU") || Contains(line, "A.U.")) return constants::HartreeToKJPerMol;
    return 1.0;
  }

  // Ours: one symmetry number (NROTALL=n, 0 for each its own) and one
  // barrier (V0ALL=x, in the units of V0) for every rotation.
  void SameForAllRotations(std::string_view line) {
    Options& o = s.opt;
    if (Contains(line, "NROTALL")) {
      const auto v = Ints(line, "NROTALL");
      if (!v.empty()) o.userNRot = std::max(v[0], 0);
    }
    if (Contains(line, "V0ALL")) {
      double v0 = 0.0;
      if (FirstReal(line, "V0ALL", "V0ALL", v0)) {
        o.userBarrier = true;
        o.userV0 = v0 * BarrierUnit(line);
      }
    }
  }

  void Rotation(std::string_view line) {
    IntRot rot;
    rot.mode = Ints(line, "VIBR").empty() ? 0 : Ints(line, "VIBR")[0];
    if (Contains(line, "ROT")) {
      auto v = Ints(line, "ROT");
      if (!v.empty()) rot.symmetryNumber = v[0];
    }
    if (Contains(line, "GROUP")) rot.group = Ints(line, "GROUP");
    if (Contains(line, "AXIS")) rot.axis = Ints(line, "AXIS");
    if (Contains(line, "V0")) {
      double v0 = 0.0;
      FirstReal(line, "V0", "V0", v0);
      rot.v0 = v0 * BarrierUnit(line);
      rot.potentialKind = -1;
    }
    if (Contains(line, "READP")) {
      // The default unit of a table is the Hartree, unlike that of V0.
      double factor = constants::HartreeToKJPerMol;
      if (Contains(line, "KCAL")) factor = constants::KcalToKJ;
      else if (Contains(line, "KJ")) factor = 1.0;
      Potential(rot, factor);
    }
    s.rotors.push_back(std::move(rot));
  }

  void Line(std::string_view line) {
    Options& o = s.opt;
    if (Contains(line, "TT=")) FirstReal(line, "T=", "TT", o.temperature);
    if (Contains(line, "PP=")) FirstReal(line, "P=", "PP", o.pressure);
    if (Contains(line, "ROTN")) {
      // Not marked as the user's: the recognised symmetry replaces it.
      auto v = Ints(line, "ROTN");
      if (!v.empty()) o.rotationNumber = v[0] == 0 ? 1 : v[0];
    }
    if (Contains(line, "PATTERN")) {
      auto v = KeywordValues(line, "PATTERN");
      if (!v.empty()) s.rotationPattern = v[0];
    }
    if (Contains(line, "EXCLUDEATOMS")) ExcludeAtoms();
    if (Contains(line, "SCALE")) {
      FirstReal(line, "SCALE", "SCALE", o.freqScale);
      if (o.freqScale <= 0.0) o.freqScale = 1.0;
    }
    if (Contains(line, "TS")) o.transitionState = true;
    if (Contains(line, "GENCOORD")) {
      o.genCoordAngle = 20.0;
      if (Contains(line, "GENCOORDANGLE")) {
        FirstReal(line, "GENCOORDANGLE", "GENCOORDANGLE", o.genCoordAngle);
        if (std::fabs(o.genCoordAngle) <= 0.001) o.genCoordAngle = 0.0;
      }
    }
    if (Contains(line, "MCSEEDS")) {
      // Our own: the two seeds of the Monte Carlo treatment of rotations.
      const auto v = Ints(line, "MCSEEDS");
      for (size_t k = 0; k < v.size() && k < 2; ++k) o.monteCarloSeeds[k] = static_cast<unsigned>(v[k]);
    }
    SameForAllRotations(line);
    if (Contains(line, "ZERO")) {
      s.zeroModes = Ints(line, "ZERO");
      s.nZero = 0;
      for (int m : s.zeroModes) s.nZero += m != 0;
      if (s.nZero != 6) StatusMessage(s, " Warning! Zero modes found:" + FmtI(s.nZero, 3));
    }
    if (Contains(line, "VIBR")) Rotation(line);
    if (Contains(line, "ALLPOSITIVE")) o.allPositive = true;
    if (Contains(line, "RECALCFREQ")) o.recalcFreq = true;
    if (Contains(line, "NEWAMASS")) NewMasses();
  }
};

}  // namespace

void ReadSpecFile(Session& s, LineReader& in) {
  s.rotors.clear();
  SpecReader reader{s, in};
  std::string_view raw;
  while (in.Next(raw)) {
    if (!raw.empty() && raw[0] == '!') continue;
    reader.Line(Upper(raw));
  }
  StatusMessage(s, " Specifications read in OK");
}

}  // namespace quintor

#include "app/rotor_results.h"

namespace quintor {

namespace {

using json = nlohmann::ordered_json;

json CSH(const std::array<double, 3>& v) { return {{"C", v[0]}, {"S", v[1]}, {"H", v[2]}}; }

}  // namespace

json InternalRotationsJson(const ThermoReport& r) {
  json list = json::array();
  for (const RotorRecord& rot : r.rotors) {
    const auto& m = rot.models;
    list.push_back({{"mode", rot.mode},
                    {"axis", rot.axis},
                    {"groups", {rot.group, rot.other}},
                    {"fold", rot.fold},
                    {"symmetry_number", rot.symmetryNumber},
                    {"I*", rot.iStar},
                    {"I**", rot.iStarStar},
                    {"V0", {{"I*", rot.v0Star}, {"I**", rot.v0StarStar}}},
                    {"V0_source", rot.v0Source},
                    {"kept_harmonic", rot.harmonic},
                    {"models",
                     {{"harmonic", CSH(m[0])},
                      {"free_rotor", {{"I*", CSH(m[1])}, {"I**", CSH(m[2])}}},
                      {"pitzer_gwinn", {{"I*", CSH(m[3])}, {"I**", CSH(m[4])}}},
                      {"quantum", {{"I*", CSH(m[5])}, {"I**", CSH(m[6])}}}}}});
  }
  return list;
}

json TotalsByModelJson(const ThermoReport& r) {
  json totals = {{"harmonic", nullptr}, {"free_rotor", nullptr}, {"pitzer_gwinn", nullptr},
                 {"quantum", nullptr},  {"monte_carlo", nullptr}};
  for (const ModelTotals& m : r.totalsByModel)
    totals[m.model] = {{"CV", m.tot.cv}, {"CP", m.tot.cp}, {"S", m.tot.s},
                       {"H", m.tot.h},   {"G", m.tot.g},   {"E+G", m.eg}};
  return totals;
}

}  // namespace quintor

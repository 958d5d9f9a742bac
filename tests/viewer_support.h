// A small molecule made by hand for the viewer tests, and prompts that
// answer from a script.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "model/session.h"
#include "viewer/commands.h"

namespace quintor::test {

struct HandAtom {
  int z;
  const char* name;
  Vec3 xyz;  // bohr
};

// Fills `s` with `atoms` as its working coordinates and as sets 0 to
// `sets` - 1, each set shifted by 0.1 bohr along x from the one before and
// with energy -100 - set.
inline void HandMolecule(Session& s, const std::vector<HandAtom>& atoms, int sets = 1) {
  s.opt.noGraphics = false;
  s.nAtoms = static_cast<int>(atoms.size());
  for (const auto& a : atoms) {
    s.atomicNumber.push_back(a.z);
    s.atomName.emplace_back(a.name);
    s.atomMass.push_back(a.z == 1 ? 1.008 : 2.0 * a.z);
    s.xyz.push_back(a.xyz);
  }
  for (int k = 0; k < sets; ++k) {
    CoordSet& set = s.Set(k);
    set.energy = -100.0 - k;
    for (const auto& a : atoms) set.xyz.push_back({a.xyz[0] + 0.1 * k, a.xyz[1], a.xyz[2]});
  }
  s.iCyc = sets - 1;
}

// Answers the prompts in order; records every question.
struct ScriptedPrompts : Prompts {
  std::deque<double> reals;
  std::deque<int> ints;
  std::deque<bool> yesNo;
  std::deque<std::string> text;  // typed answers of AskText, numbers too
  std::vector<std::string> asked;
  double AskReal(const std::string& text, double value) override {
    asked.push_back(text);
    if (reals.empty()) return value;
    const double r = reals.front();
    reals.pop_front();
    return r;
  }
  int AskInteger(const std::string& text, int value) override {
    asked.push_back(text);
    if (ints.empty()) return value;
    const int r = ints.front();
    ints.pop_front();
    return r;
  }
  std::string AskText(const std::string& question, const std::string& value) override {
    asked.push_back(question);
    if (text.empty()) return value;
    std::string r = text.front();
    text.pop_front();
    return r;
  }
  bool AskYesNo(const std::string& text) override {
    asked.push_back(text);
    if (yesNo.empty()) return false;
    const bool b = yesNo.front();
    yesNo.pop_front();
    return b;
  }
  void ShowMessage(const std::string& text) override { asked.push_back(text); }
};

}  // namespace quintor::test

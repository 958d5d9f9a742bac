#include "model/session.h"

#include <iostream>

namespace quintor {

Session::Session() : console(&std::cout), keyboard(&std::cin) {}

std::ostream& Session::Console() const { return *console; }
std::istream& Session::Keyboard() const { return *keyboard; }

CoordSet& Session::Set(int i) {
  size_t k = static_cast<size_t>(i + 1);
  if (k >= sets_.size()) sets_.resize(k + 1);
  return sets_[k];
}

const CoordSet& Session::Set(int i) const {
  static const CoordSet empty;
  size_t k = static_cast<size_t>(i + 1);
  return k < sets_.size() ? sets_[k] : empty;
}

void StatusMessage(Session& s, std::string_view text) {
  if (s.opt.noGraphics) return;
  s.Console() << text << "\n";
  s.messages.emplace_back(text);
}

}  // namespace quintor

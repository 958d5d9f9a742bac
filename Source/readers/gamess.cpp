// Reader of GAMESS(US) and PC GAMESS 4-7 logs.
#include "readers/readers.h"

namespace quintor {

LineHandler MakeGamessReader(Session& s, LineReader& in) {
  return [](std::string_view) {};
}

}  // namespace quintor

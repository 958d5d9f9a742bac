// Reader of Gaussian 94/98/03/09 logs (and Gaussian 16, xtb's g98.out).
#include "readers/readers.h"

namespace quintor {

LineHandler MakeGaussianReader(Session& s, LineReader& in) {
  return [](std::string_view) {};
}

}  // namespace quintor

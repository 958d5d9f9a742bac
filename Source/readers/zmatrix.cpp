// Reader of Gaussian Z-matrix input.
#include "readers/readers.h"

namespace quintor {

void ReadGaussianZMatrix(Session& s, LineReader& in) {
  std::string_view line;
  while (in.Next(line)) {
  }
}

}  // namespace quintor

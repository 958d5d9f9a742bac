// Readers of Priroda logs, this program's own log and the earlier program's log.
#include "readers/readers.h"

namespace quintor {

namespace {
void SkipToEnd(LineReader& in) {
  std::string_view line;
  while (in.Next(line)) {
  }
}
}  // namespace

void ReadKorvandelLog(Session& s, LineReader& in) { SkipToEnd(in); }
void ReadOwnLog(Session& s, LineReader& in) { SkipToEnd(in); }
void ReadPriroda(Session& s, LineReader& in) { SkipToEnd(in); }

}  // namespace quintor

// File > New Session and File > Open: the run on show closes without its
// evaluation, and another starts in the same process, from the defaults.
#include <utility>

#include "app/run.h"

namespace quintor {

int CloseForNewSession(Session& s) {
  FinishLog(s);
  s.log.Close(s.opt.noLog);
  return exit_status::Ok;
}

bool StartNextSession(Session& s, const Frontend* frontend) {
  if (!s.next.asked) return false;
  NextRun next = std::move(s.next);
  s.next = {};
  if (next.inputName.empty() && !(frontend && frontend->jobDialog)) return false;
  std::ostream* console = s.console;
  std::istream* keyboard = s.keyboard;
  s = Session();  // the sets, the modes, the options: all as at the first start
  s.console = console;
  s.keyboard = keyboard;
  s.files.inputName = next.inputName;
  s.opt.formatCode = next.formatCode;
  return true;
}

}  // namespace quintor

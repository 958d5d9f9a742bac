// A normal-mode block of a log that can not be read stops the run only when
// it is the one the evaluation needs, the last of the log; one that a later
// block replaces gets a warning naming its line, and the rest of the log is
// read on. The Gaussian and GAMESS readers keep one of these.
#pragma once

#include <memory>
#include <string>

#include "io/fortran_io.h"
#include "io/main_log.h"

namespace quintor {

class BrokenModes {
 public:
  // A block that failed at `line`; an earlier broken one is passed over.
  void Keep(const FatalReadError& e, long line, MainLog& log) {
    PassOver(log);
    error_ = std::make_unique<FatalReadError>(e);
    line_ = line;
  }
  // A later block was read: the broken one gets its warning.
  void PassOver(MainLog& log) {
    if (!error_) return;
    log.EndLine();
    log.Line(" WARNING! The normal modes at line" + FmtI(line_, 9) + " can not be read (" +
             std::string(Trim(error_->what())) + "); a later block replaces them");
    error_.reset();
  }
  // At the end of the log: the last block could not be read.
  void Throw() const {
    if (error_) throw *error_;
  }

 private:
  std::unique_ptr<FatalReadError> error_;
  long line_ = 0;
};

}  // namespace quintor

#include "app/scale_auto.h"

#include "io/fortran_io.h"
#include "readers/readers.h"
#include "thermo/scale_factors.h"

namespace quintor {

void ApplyScaleAuto(Session& s) {
  Options& o = s.opt;
  if (!o.scaleAuto) return;
  const ScaleFactor* f = FindScaleFactor(InputKeywords(s.files.inputName));
  s.log.Line();
  if (!f) {
    s.log.Line(" WARNING! /SCALEAUTO: no scale factor is known for the level of theory of this input;" +
               FmtF(o.freqScale, 7, 4) + " is used");
    return;
  }
  const std::string level(f->level);
  s.log.Line(" Scale factors for " + level + ":" + FmtF(f->zpe, 7, 4) + " (ZPE)" + FmtF(f->fundamental, 7, 4) +
             " (fundamentals)");
  s.log.Line(" Source: " + std::string(ScaleFactorSource));
  if (o.freqScaleByUser) {
    s.log.Line(" /SCALE given: its factor" + FmtF(o.freqScale, 7, 4) + " stands over the table's");
    return;
  }
  o.freqScale = f->zpe;
  s.log.Line(" The ZPE factor scales the frequencies of the thermochemistry");
}

}  // namespace quintor

// /SCALEAUTO: the frequency scale factor looked up from the level of theory.
#pragma once

#include "model/session.h"

namespace quintor {

// Looks the level of theory of the input up in the table of published scale
// factors and takes its ZPE factor, unless /SCALE gave one; writes what it
// did to the MainLog. Nothing without /SCALEAUTO.
void ApplyScaleAuto(Session& s);

}  // namespace quintor

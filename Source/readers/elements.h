// The element table lives in model/ (one for the whole program).
#pragma once

#include "model/elements.h"

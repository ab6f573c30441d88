// The 8-bit BT.709 tables, shared with the gamma-corrected 4:2:2 conversion.
#pragma once

#include "kelcc.h"

extern const Kel8u tableFwd8u[256];  // linear to coded
extern const Kel8u tableInv8u[256];  // coded to linear

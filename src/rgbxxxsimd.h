// Vector row kernels of the packed 16-bit family's hot members, chosen once a
// call for the processor at hand (null where no vector kernel is built).
#pragma once

#include "rgbxxxpx.h"

namespace kel::simdpacked {

// 4:2:0 planes to 565 in the coarse arithmetic, truncated and dithered.
packed::CellRowsKernel chooseCells565();
packed::CellRowsKernel chooseCells565Dither();

// 4:2:2 pixel order to 565: folded arithmetic truncated, coarse dithered.
packed::PairsRowKernel choosePairs565();
packed::PairsRowKernel choosePairs565Dither();

} // namespace kel::simdpacked

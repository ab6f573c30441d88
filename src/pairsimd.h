// What the full-resolution whole-vector kernels ask before they take a row:
// whether its destination lets them read a step before writing it.
#pragma once

#include <cstddef>

#include "kelcc.h"

namespace kel {

// The whole-vector kernels read a step of pixels before they write it, which
// gives the scalar kernels' bytes when a destination row is its source row
// (pixel order, converted in place) or shares no byte with it.  Rows that
// overlap otherwise go to the scalar kernel.  Each row is given by its planes
// (one for pixel order) and the bytes a plane's row spans.
bool inPlaceOrApart(const Kel8u* const src[], int srcPlanes, std::size_t srcBytes, Kel8u* const dst[], int dstPlanes,
                    std::size_t dstBytes);

} // namespace kel

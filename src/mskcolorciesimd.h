// Vector rows of the 8-bit XYZ members: the fixed-point sums of the scalar
// kernels in 16-bit multiply-adds, the same bytes.  Chosen once a call.
#pragma once

#include "kelcc.h"
#include "mskcolor.h"

namespace kel::cie {

// A row of `width` pixels, pixel stride 3 or 4 bytes (the fourth byte kept).
using Row8u = void (*)(const Kel8u* src, Kel8u* dst, int width);

// The vector row of a member, or null (no vector row, or no SIMD).
Row8u chooseRow8u(CieVectorRow which, int pixelStride);

// The scalar kernels on a row of C3 or AC4 pixels, which finish the vector
// rows' tails.
void rgbToXYZRow8u3(const Kel8u* src, Kel8u* dst, int width);
void rgbToXYZRow8u4(const Kel8u* src, Kel8u* dst, int width);
void xyzToRGBRow8u3(const Kel8u* src, Kel8u* dst, int width);
void xyzToRGBRow8u4(const Kel8u* src, Kel8u* dst, int width);

} // namespace kel::cie

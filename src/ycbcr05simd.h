// Whole-vector kernels of sub-sampled YCbCr to RGB and BGR, beside the scalar
// kernels of ycbcr05.cpp, which stay the reference and finish every row.
#pragma once

#include "kelcc.h"

// The scalar row-pair kernels of 4:2:0 (ycbcr05.cpp): two luma rows, their
// chroma row, two destination rows; an odd last column is left alone.
void innerYCbCr420ToRGB_8u_P3C3R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* cb, const Kel8u* cr, Kel8u* top,
                                 Kel8u* bottom, int width);
void innerYCbCr420ToBGR_8u_P3C3R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* cb, const Kel8u* cr, Kel8u* top,
                                 Kel8u* bottom, int width);

namespace kel {

using RowPair420 = void (*)(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* cb, const Kel8u* cr, Kel8u* top,
                            Kel8u* bottom, int width);

// The fastest row-pair kernel this processor runs, the same bytes as the
// scalar kernel; the scalar kernel itself in a build without SIMD.
RowPair420 chooseYCbCr420ToRGB();
RowPair420 chooseYCbCr420ToBGR();

} // namespace kel

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

// The scalar row kernels of 4:2:2 pixel order (ycbcr05.cpp): one packed row of
// width pixels to three- or four-byte pixels.  A last single pixel takes its
// missing chroma sample from the pair before, so a row they finish must hold
// a pair before a lone last pixel.
void innerYCbCrToRGB422_C2_C3R(const Kel8u* src, Kel8u* dst, int width);
void innerYCrCbToRGB422_C2_C3R(const Kel8u* src, Kel8u* dst, int width);
void innerYCbCr422ToBGR_8u_C2C3R(const Kel8u* src, Kel8u* dst, int width);
void innerCbYCr422ToRGB_8u_C2C3R(const Kel8u* src, Kel8u* dst, int width);
void innerYCbCr422ToBGR_8u_C2C4R(const Kel8u* src, Kel8u* dst, int width, Kel8u alpha);
void innerCbYCr422ToBGR_8u_C2AC4R(const Kel8u* src, Kel8u* dst, int width, Kel8u alpha);

// The same pixel order to three planes R, G, B (ycbcr05.cpp).
void innerYCbCr422ToRGB_C2_C3P2R(const Kel8u* src, Kel8u* const dst[3], int width);
void innerYCrCb422ToRGB_C2_C3P2R(const Kel8u* src, Kel8u* const dst[3], int width);

// The scalar row kernels of planar sources (ycbcr05.cpp): a luma row and its
// chroma rows, one chroma sample for two pixels (4:2:2; a last single pixel
// has its own), four (4:1:1; the last width & 3 pixels take the sample of the
// group before them) or one (full resolution).
void innerYCbCr422ToRGB_8u_P3C3R(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Kel8u* dst, int width);
void innerYCbCr411ToBGR_8u_P3C3R(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Kel8u* dst, int width);
void innerYCbCr411ToBGR_8u_P3C4R(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Kel8u* dst, int width, Kel8u alpha);
void innerYCbCrToBGR_8u_P3C3R(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Kel8u* dst, int width);
void innerYCbCrToBGR_8u_P3C4R(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Kel8u* dst, int width, Kel8u alpha);

// The scalar row-pair kernel of filtered 4:2:0 (ycbcr05.cpp): the odd pixels
// take the rounded-up mean of their cell's chroma and the next cell's.
void innerYCrCb420ToBGR_8u_P3C4R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* cb, const Kel8u* cr, Kel8u* top,
                                 Kel8u* bottom, int width, Kel8u alpha);

namespace kel {

using RowPair420 = void (*)(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* cb, const Kel8u* cr, Kel8u* top,
                            Kel8u* bottom, int width);

// The fastest row-pair kernel this processor runs, the same bytes as the
// scalar kernel; the scalar kernel itself in a build without SIMD.
RowPair420 chooseYCbCr420ToRGB();
RowPair420 chooseYCbCr420ToBGR();

using PixelRow422 = void (*)(const Kel8u* src, Kel8u* dst, int width);
using PixelRow422Alpha = void (*)(const Kel8u* src, Kel8u* dst, int width, Kel8u alpha);

// The same for 4:2:2 pixel order, one member each.
PixelRow422 chooseYCbCr422ToRGB();
PixelRow422 chooseYCrCb422ToRGB();
PixelRow422 chooseYCbCr422ToBGR();
PixelRow422 chooseCbYCr422ToRGB();
PixelRow422Alpha chooseYCbCr422ToBGRA();
PixelRow422Alpha chooseCbYCr422ToBGRA();

// 4:2:2 pixel order to three planes.
using PixelRowToPlanes = void (*)(const Kel8u* src, Kel8u* const dst[3], int width);
PixelRowToPlanes chooseYCbCr422ToRGBPlanes();
PixelRowToPlanes chooseYCrCb422ToRGBPlanes();

// Planar sources to pixel order: 4:2:2 to RGB, 4:1:1 and full resolution to
// BGR and BGRA.
using PlaneRow = void (*)(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Kel8u* dst, int width);
using PlaneRowAlpha = void (*)(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Kel8u* dst, int width, Kel8u alpha);
PlaneRow chooseYCbCr422PlanesToRGB();
PlaneRow chooseYCbCr411ToBGR();
PlaneRowAlpha chooseYCbCr411ToBGRA();
PlaneRow chooseYCbCrPlanesToBGR();
PlaneRowAlpha chooseYCbCrPlanesToBGRA();

// Filtered 4:2:0 to BGRA, a row pair at a time.
using RowPair420Alpha = void (*)(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* cb, const Kel8u* cr, Kel8u* top,
                                 Kel8u* bottom, int width, Kel8u alpha);
RowPair420Alpha chooseYCrCb420FilterToBGRA();

} // namespace kel

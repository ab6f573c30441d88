// Whole-vector kernels of full-resolution RGB <-> YUV, beside the scalar
// kernels of yuv01.cpp, which stay the reference and finish every row.
#pragma once

#include "kelcc.h"

// The scalar row kernels (yuv01.cpp).
void innerRGBToYUV_8u_C3R(const Kel8u* src, Kel8u* dst, int width);
void innerRGBToYUV_8u_AC4R(const Kel8u* src, Kel8u* dst, int width);
void innerRGBToYUV_8u_P3R(const Kel8u* const* src, Kel8u* const* dst, int width);
void innerRGBToYUV_8u_C3P3R(const Kel8u* src, Kel8u* const* dst, int width);
void innerYUVToRGB_8u_C3R(const Kel8u* src, Kel8u* dst, int width);
void innerYUVToRGB_8u_AC4R(const Kel8u* src, Kel8u* dst, int width);
void innerYUVToRGB_8u_P3R(const Kel8u* const* src, Kel8u* const* dst, int width);
void innerYUVToRGB_8u_P3C3R(const Kel8u* const* src, Kel8u* dst, int width);

namespace kel {

// A row kernel from a pixel-order row or a row of planes to either.
template <class Src, class Dst>
using YUVRow = void (*)(Src src, Dst dst, int width);

// The fastest row kernel this processor runs, the same bytes as the scalar
// kernel; the scalar kernel itself in a build without SIMD.
YUVRow<const Kel8u*, Kel8u*> chooseRGBToYUV_8u_C3R();
YUVRow<const Kel8u*, Kel8u*> chooseRGBToYUV_8u_AC4R();
YUVRow<const Kel8u* const*, Kel8u* const*> chooseRGBToYUV_8u_P3R();
YUVRow<const Kel8u*, Kel8u* const*> chooseRGBToYUV_8u_C3P3R();
YUVRow<const Kel8u*, Kel8u*> chooseYUVToRGB_8u_C3R();
YUVRow<const Kel8u*, Kel8u*> chooseYUVToRGB_8u_AC4R();
YUVRow<const Kel8u* const*, Kel8u* const*> chooseYUVToRGB_8u_P3R();
YUVRow<const Kel8u* const*, Kel8u*> chooseYUVToRGB_8u_P3C3R();

} // namespace kel

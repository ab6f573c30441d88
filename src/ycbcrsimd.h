// Whole-vector kernels of full-resolution RGB <-> YCbCr, beside the scalar
// kernels of ycbcr.cpp, which stay the reference and finish every row.
#pragma once

#include <cstdint>

#include "kelcc.h"

// The scalar row kernels (ycbcr.cpp).
void innerRGBToYCbCr_C3_C3R(const Kel8u* src, Kel8u* dst, int width);
void innerRGBToYCbCr_AC4R(const Kel8u* src, Kel8u* dst, int width);
void innerRGBToYCbCr_C3P2_C3P2R(const Kel8u* const src[3], Kel8u* const dst[3], int width);
void innerYCbCrToRGB_C3_C3R(const Kel8u* src, Kel8u* dst, int width);
void innerYCbCrToRGB_AC4R(const Kel8u* src, Kel8u* dst, int width);
void innerYCbCrToRGB_C3P2_C3P2R(const Kel8u* const src[3], Kel8u* const dst[3], int width);
void innerYCbCrToRGB_8u_P3C3R(const Kel8u* const src[3], Kel8u* dst, int width);

namespace kel {

using PixelRow = void (*)(const Kel8u* src, Kel8u* dst, int width);
using PlaneRow = void (*)(const Kel8u* const src[3], Kel8u* const dst[3], int width);
using PlanesToPixelRow = void (*)(const Kel8u* const src[3], Kel8u* dst, int width);

// The fastest row kernel this processor runs, the same bytes as the scalar
// kernel; the scalar kernel itself in a build without SIMD.
PixelRow chooseRGBToYCbCr_C3();
PixelRow chooseRGBToYCbCr_AC4();
PlaneRow chooseRGBToYCbCr_P3();
PixelRow chooseYCbCrToRGB_C3();
PixelRow chooseYCbCrToRGB_AC4();
PlaneRow chooseYCbCrToRGB_P3();
PlanesToPixelRow chooseYCbCrToRGB_P3C3();

} // namespace kel

// The row kernels of packed 565 and 555 pixels to and from 8-bit three-channel
// pixels: the scalar kernels of rgb565.cpp, the reference, and the vector
// kernels beside them, chosen once a call for the processor at hand.
#pragma once

#include "kelcc.h"

// The scalar row kernels (rgb565.cpp).  The first byte of a pixel is the
// field at bit 0.  The packed rows may lie at any byte address: the words are
// read and written whole, through copies.
void innerRGBToRGB565_8u16u_C3R(const Kel8u* src, Kel16u* dst, int width);
void innerRGB565ToRGB_16u8u_C3R(const Kel16u* src, Kel8u* dst, int width);
void innerRGB555ToRGB_16u8u_C3R(const Kel16u* src, Kel8u* dst, int width);

namespace kel::simd565 {

using PackRow = void (*)(const Kel8u* src, Kel16u* dst, int width);
using WidenRow = void (*)(const Kel16u* src, Kel8u* dst, int width);

// The fastest kernel this processor runs, the same bytes as the scalar
// kernel; the scalar kernel itself in a build without SIMD.
PackRow choosePack565();
WidenRow chooseWiden565();
WidenRow chooseWiden555();

} // namespace kel::simd565

// The vector row of 8-bit gray: the weighted sum in 16-bit multiply-adds,
// the same bytes as the scalar kernel.  Chosen once a call.
#pragma once

#include <cstdint>

#include "kelcc.h"

namespace kel::gray {

// A row of `width` pixels (pixel stride 3 or 4 bytes) to `width` bytes with
// the integer weights w.
using Row8u = void (*)(const Kel8u* src, Kel8u* dst, int width, const std::int32_t* w);

// The vector row for these integer weights, or null: without SIMD, or for a
// weight outside -32767..32767 (the 16-bit multiply-adds), where the scalar
// kernel's wrapping 32-bit sum stays the only one.
Row8u chooseRow8u(const std::int32_t w[3], int pixelStride);

} // namespace kel::gray

// The scalar kernel, which finishes the vector row's tail.
void innerRGBToGray_8u_C3C1R(const Kel8u* src, Kel8u* dst, int width, const std::int32_t* w, int pixelStride);

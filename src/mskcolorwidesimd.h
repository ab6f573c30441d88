// Vector rows of the wider pixel-order hue conversions (HSV at 16u, HLS at
// 16u, 16s and 32f, both directions), byte-identical to the extended kernels:
// each result is worked in doubles with a written bound on its distance from
// the extended kernel's, and a pixel whose rounding that bound cannot settle
// goes through the extended kernel (the derivations are in
// mskcolorwidesimd.cpp).  Chosen once a call for the processor at hand.
#pragma once

#include <cstdint>

#include "kelcc.h"
#include "mskcolorsimd.h"

namespace kel::hue {

// A row kernel of the extended arithmetic: `width` pixels `pixelStride`
// elements apart, each read before it is written.
template <typename T>
using HueKernel = void (*)(const T* src, T* dst, int width, int pixelStride);

// Converts whole vector steps from the start of a pixel-order row and
// returns the pixels it wrote; the caller's kernel finishes the row.  Pixels
// the vector arithmetic cannot vouch for go one by one through `exact`; their
// number is added to *fallbacks.  A four-channel destination keeps its fourth
// element.
template <typename T>
using HueRowWide = int (*)(const T* src, T* dst, int width, HueKernel<T> exact, std::int64_t* fallbacks);

// The row of a member with that conversion and pixel stride (3 or 4); null
// in a build without SIMD or for a conversion the sample type has no member
// of (HSV at 16s and 32f).
HueRowWide<Kel16u> chooseHueRow16u(HueConversion conversion, int pixelStride);
HueRowWide<Kel16s> chooseHueRow16s(HueConversion conversion, int pixelStride);
HueRowWide<Kel32f> chooseHueRow32f(HueConversion conversion, int pixelStride);

} // namespace kel::hue

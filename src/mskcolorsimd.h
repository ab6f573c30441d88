// Vector rows of the 8-bit hue conversions (HSV and HLS, both directions, the
// rounding and the truncating forms), byte-identical to the extended kernels:
// every 8-bit result is a ratio of small integers rounded one fixed way,
// which one correctly rounded float division reproduces (the derivation is
// in mskcolorsimd.cpp).  Chosen once a call for the processor at hand.
#pragma once

#include "kelcc.h"

namespace kel::hue {

enum class HueConversion { RGBToHSV, HSVToRGB, RGBToHLS, HLSToRGB };

// What becomes of a destination's fourth channel: none is there, it keeps
// what it held, or it takes the source's fourth channel.
enum class HueAlpha { None, Keep, Copy };

// Pitch 1: channel c of pixel x lies at src[c][x] (planes); pitch 3 or 4:
// at src[0][x * pitch + c] (pixel order; only src[0] is read).  Converts whole
// vector steps from the start of the row and returns the pixels it wrote;
// the caller's scalar kernel finishes the row.
using HueRow8u = int (*)(const Kel8u* const src[4], Kel8u* const dst[4], int width);

// The row of that shape: `rounding` for results rounded to nearest with ties
// down (the RGB families), else truncated; `blueFirst` for B, G, R channel
// order on the colour side.  Null in a build without SIMD or for a shape no
// member has.
HueRow8u chooseHueRow8u(HueConversion conversion, bool rounding, bool blueFirst, int srcPitch, int dstPitch,
                        HueAlpha alpha);

} // namespace kel::hue

// Vector rows of the XYZ members: at 8u the fixed-point sums of the scalar
// kernels in 16-bit multiply-adds, at 32f the sums in doubles under a derived
// bound; the same bytes as the scalar kernels.  Chosen once a call.
#pragma once

#include <cstdint>

#include "kelcc.h"
#include "mskcolor.h"

namespace kel::cie {

// A row of `width` pixels, pixel stride 3 or 4 bytes (the fourth byte kept);
// returns the pixels a bound refused to the scalar kernel (0 for the exact
// integer rows).
using Row8u = std::int64_t (*)(const Kel8u* src, Kel8u* dst, int width);

// The vector row of a member, or null (no vector row, or no SIMD).
Row8u chooseRow8u(ModelVectorRow which, int pixelStride);

// The float XYZ rows: whole vector steps in double lanes under a derived
// bound, any pixel the bound cannot decide and the tail by the scalar
// kernel; returns the pixels the bound refused.
using Row32f = std::int64_t (*)(const Kel32f* src, Kel32f* dst, int width);
Row32f chooseRow32f(ModelVectorRow which, int pixelStride);

// The scalar kernel on the pixels of one vector step whose bit is set in
// `pixels` (pixel i at src + i * pixelStride), and on a row's last pixels.
void xyzPixels32f(bool forward, const Kel32f* src, Kel32f* dst, std::uint64_t pixels, int pixelStride);
void luvPixels8u(bool forward, const Kel8u* src, Kel8u* dst, std::uint64_t pixels, int pixelStride);
void luvPixels(const Kel8u* src, Kel8u* dst, std::uint64_t pixels, int pixelStride);   // LUV to RGB
void luvPixels(const Kel32f* src, Kel32f* dst, std::uint64_t pixels, int pixelStride);
void rgbToLUVPixels32f(const Kel32f* src, Kel32f* dst, std::uint64_t pixels, int pixelStride);

// The coded L of each coded luminance, as the 8-bit forward LUV kernel looks
// it up.
extern const std::int32_t* const codedL;  // 256 entries

// The scalar kernels on a row of C3 or AC4 pixels, which finish the vector
// rows' tails.
void rgbToXYZRow8u3(const Kel8u* src, Kel8u* dst, int width);
void rgbToXYZRow8u4(const Kel8u* src, Kel8u* dst, int width);
void xyzToRGBRow8u3(const Kel8u* src, Kel8u* dst, int width);
void xyzToRGBRow8u4(const Kel8u* src, Kel8u* dst, int width);
void rgbToYCCRow8u3(const Kel8u* src, Kel8u* dst, int width);
void rgbToYCCRow8u4(const Kel8u* src, Kel8u* dst, int width);
void yccToRGBRow8u3(const Kel8u* src, Kel8u* dst, int width);
void yccToRGBRow8u4(const Kel8u* src, Kel8u* dst, int width);

} // namespace kel::cie

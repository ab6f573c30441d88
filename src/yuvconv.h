// Full-range YUV fixed-point arithmetic, shared by the full-resolution and
// the sub-sampled YUV families.  The luma weights sum to exactly 65536.
#pragma once

#include <cstdint>

#include "callframe.h"
#include "rowstore.h"

namespace kel::yuv {

inline std::int32_t lumaSum(std::int32_t r, std::int32_t g, std::int32_t b)
{
    return 19595 * r + 38470 * g + 7471 * b;
}

// Luma truncates: there is no rounding half.
inline Kel8u luma(std::int32_t r, std::int32_t g, std::int32_t b)
{
    return static_cast<Kel8u>(lumaSum(r, g, b) >> 16);
}

// Chroma of a cell of 1, 2 or 4 pixels (CellShift 0, 1, 2) from the sums of
// its blue or red samples and of its luma sums.  The rounding constant and
// the final shift grow with the cell: 32767 and 16, 65535 and 17, 0x1FFFF and 18.
template <int CellShift>
inline std::int32_t colourDifference(std::int32_t sumOfChannel, std::int32_t sumOfLuma)
{
    return ((sumOfChannel << 16) - sumOfLuma + ((1 << (15 + CellShift)) - 1)) >> 16;
}

// U stays inside 16..239 and needs no clamp; V can leave the byte range and
// saturates.
template <int CellShift>
inline Kel8u chromaU(std::int32_t sumOfBlue, std::int32_t sumOfLuma)
{
    return static_cast<Kel8u>(((colourDifference<CellShift>(sumOfBlue, sumOfLuma) * 32244) >> (16 + CellShift)) + 128);
}

template <int CellShift>
inline Kel8u chromaV(std::int32_t sumOfRed, std::int32_t sumOfLuma)
{
    return saturateByte(((colourDifference<CellShift>(sumOfRed, sumOfLuma) * 57475) >> (16 + CellShift)) + 128);
}

// The inverse coefficient sets: R from V, G from U and V, B from U, each a
// weight in 16.16 fixed point.  The two sets differ by one in each weight.
struct Inverse {
    std::int32_t vToR, uToG, vToG, uToB;
};
inline constexpr Inverse inverse1{74711, 25821, 38076, 133169};
inline constexpr Inverse inverse2{74710, 25820, 38075, 133168};

// The chroma part of a pixel's three sums; Half is 0 (truncate) or 32768
// (round) and rides along in every term.
template <const Inverse& K, std::int32_t Half = 0>
inline ChromaTerms inverseTerms(std::int32_t u, std::int32_t v)
{
    const std::int32_t du = u - 128, dv = v - 128;
    return {K.vToR * dv + Half, -K.uToG * du - K.vToG * dv + Half, K.uToB * du + Half};
}

// One pixel back to R, G, B: luma in 16.16 plus the chroma terms, >> 16,
// saturated.  Every sum stays inside 32 bits, so grouping the terms is free.
template <const Inverse& K, std::int32_t Half = 0>
inline void toRGB(std::int32_t y, std::int32_t u, std::int32_t v, Kel8u& r, Kel8u& g, Kel8u& b)
{
    const ChromaTerms t = inverseTerms<K, Half>(u, v);
    const std::int32_t y16 = y << 16;
    r = saturateByte((y16 + t.r) >> 16);
    g = saturateByte((y16 + t.g) >> 16);
    b = saturateByte((y16 + t.b) >> 16);
}

} // namespace kel::yuv

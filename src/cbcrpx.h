// Fixed-point luma-chroma arithmetic shared by the 8-bit YCbCr and YUV families:
// the saturation table and the pixel formulas of full-resolution YCbCr.
#pragma once

#include <array>
#include <cstdint>

#include "callframe.h"
#include "rowstore.h"

// 1000-byte saturation table: chop[370 + v] is v clamped to 0..255 for
// v in -370..629; chop[498 + v] is v + 128 clamped, for v in -498..501.
extern const std::array<std::uint8_t, 1000> chop;

namespace kel {

// Saturation through the second entry point of chop: v + 128, clamped.
inline std::uint8_t saturateChroma(std::int32_t v)
{
    return saturateByte(v + 128);
}

// ---- RGB -> studio-range YCbCr, 16 fractional bits ------------------------------

// The weighted sums of the forward direction, before offset and shift: every
// forward kernel, at full resolution or over a chroma cell, is built on these.
// For one pixel the luma sum is at most 255 x 56296 and a difference at most
// 255 x 28770 either way, so the sums over a cell of four pixels stay far
// inside 32 bits.
inline std::int32_t lumaSum(std::int32_t r, std::int32_t g, std::int32_t b)
{
    return 16843 * r + 33030 * g + 6423 * b;
}
inline std::int32_t blueDifference(std::int32_t r, std::int32_t g, std::int32_t b)
{
    return -9699 * r - 19071 * g + 28770 * b;
}
inline std::int32_t redDifference(std::int32_t r, std::int32_t g, std::int32_t b)
{
    return 28770 * r - 24117 * g - 4653 * b;
}

// One pixel at full resolution.  The offsets are the format's 16 or 128 plus
// the rounding half 0x8000; every sum is then non-negative and below 2^24, so
// the shifted results are bytes with no clamp.
struct ForwardYCbCr {
    static std::uint8_t y(std::int32_t r, std::int32_t g, std::int32_t b)
    {
        return static_cast<std::uint8_t>((lumaSum(r, g, b) + 0x108000) >> 16);
    }
    static std::uint8_t cb(std::int32_t r, std::int32_t g, std::int32_t b)
    {
        return static_cast<std::uint8_t>((blueDifference(r, g, b) + 0x808000) >> 16);
    }
    static std::uint8_t cr(std::int32_t r, std::int32_t g, std::int32_t b)
    {
        return static_cast<std::uint8_t>((redDifference(r, g, b) + 0x808000) >> 16);
    }
};

// ---- studio-range YCbCr -> RGB, 16 fractional bits ------------------------------

// The inverse sets differ in the last places of their coefficients, in their rounding (an offset with or
// without the half 0x8000) and in whether chroma is centred on 128 before the
// products (chromaZero 128) or the centring is folded into the offsets
// (chromaZero 0).  Each member takes exactly its own set.
struct InverseYCbCr {
    std::int32_t luma, crToR, cbToG, crToG, cbToB;
    std::int32_t offsetR, offsetG, offsetB;
    std::int32_t chromaZero;
};

// T truncates; its offset is -16 x 76284.
inline constexpr InverseYCbCr inverseT{76284, 104595, 25690, 53281, 132186, -1220544, -1220544, -1220544, 128};
// U: T's coefficients with the rounding half in the offset.
inline constexpr InverseYCbCr inverseU{76284, 104595, 25690, 53281, 132186, -1187776, -1187776, -1187776, 128};
// R rounds, with coefficients one or two below T's.
inline constexpr InverseYCbCr inverseR{76282, 104593, 25689, 53279, 132184, -1187744, -1187744, -1187744, 128};
// H takes chroma uncentred; its offsets are not quite T's centring folded in.
inline constexpr InverseYCbCr inverseH{76284, 104595, 25690, 53281, 132186, -14608761, 8887730, -18140365, 0};
// Q: 76294 luma and 25625 for Cb in green.
inline constexpr InverseYCbCr inverseQ{76294, 104595, 25625, 53281, 132186, -1220704, -1220704, -1220704, 128};
// F: offset -16 x 76309.
inline constexpr InverseYCbCr inverseF{76309, 104597, 25675, 53279, 132201, -1220944, -1220944, -1220944, 128};

// The chroma part of the three sums, shared by every pixel of a cell.  The
// sums are far inside 32 bits, so adding the luma term to it later gives the
// same value as the sum written in one piece.
template <const InverseYCbCr& K>
inline ChromaTerms chromaTerms(std::int32_t cb, std::int32_t cr)
{
    const std::int32_t dcb = cb - K.chromaZero, dcr = cr - K.chromaZero;
    return {K.crToR * dcr + K.offsetR, -K.cbToG * dcb - K.crToG * dcr + K.offsetG, K.cbToB * dcb + K.offsetB};
}

template <const InverseYCbCr& K>
struct InverseRGB {
    static std::uint8_t r(std::int32_t y, std::int32_t cb, std::int32_t cr)
    {
        (void)cb;
        return saturateByte((K.luma * y + K.crToR * (cr - K.chromaZero) + K.offsetR) >> 16);
    }
    static std::uint8_t g(std::int32_t y, std::int32_t cb, std::int32_t cr)
    {
        return saturateByte((K.luma * y - K.cbToG * (cb - K.chromaZero) - K.crToG * (cr - K.chromaZero) + K.offsetG) >> 16);
    }
    static std::uint8_t b(std::int32_t y, std::int32_t cb, std::int32_t cr)
    {
        (void)cr;
        return saturateByte((K.luma * y + K.cbToB * (cb - K.chromaZero) + K.offsetB) >> 16);
    }
};

} // namespace kel

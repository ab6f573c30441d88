// Fixed-point luma-chroma arithmetic shared by the 8-bit YCbCr and YUV families:
// the saturation table and the pixel formulas of full-resolution YCbCr.
#pragma once

#include <array>
#include <cstdint>

#include "callframe.h"

// 1000-byte saturation table: chop[370 + v] is v clamped to 0..255 for
// v in -370..629; chop[498 + v] is v + 128 clamped, for v in -498..501.
extern const std::array<std::uint8_t, 1000> chop;

namespace kel {

// Saturation through the second entry point of chop: v + 128, clamped.
inline std::uint8_t saturateChroma(std::int32_t v)
{
    return saturateByte(v + 128);
}

// RGB -> studio-range YCbCr, 16 fractional bits.  Every sum is non-negative
// and below 2^24, so the shifted results are bytes with no clamp.
struct ForwardYCbCr {
    static std::uint8_t y(std::int32_t r, std::int32_t g, std::int32_t b)
    {
        return static_cast<std::uint8_t>((16843 * r + 33030 * g + 6423 * b + 0x108000) >> 16);
    }
    static std::uint8_t cb(std::int32_t r, std::int32_t g, std::int32_t b)
    {
        return static_cast<std::uint8_t>((-9699 * r - 19071 * g + 28770 * b + 0x808000) >> 16);
    }
    static std::uint8_t cr(std::int32_t r, std::int32_t g, std::int32_t b)
    {
        return static_cast<std::uint8_t>((28770 * r - 24117 * g - 4653 * b + 0x808000) >> 16);
    }
};

// Studio-range YCbCr -> RGB.  The offset folds in Y - 16 (and, for the
// rounding sets, the half 0x8000); sets differ in the last place of their
// coefficients and so in the last bit of their results.
struct InverseYCbCr {
    std::int32_t luma, crToR, cbToG, crToG, cbToB, offset;
};

inline constexpr InverseYCbCr inverseT{76284, 104595, 25690, 53281, 132186, -1220544};  // truncates
inline constexpr InverseYCbCr inverseR{76282, 104593, 25689, 53279, 132184, -1187744};  // rounds

template <const InverseYCbCr& K>
struct InverseRGB {
    static std::uint8_t r(std::int32_t y, std::int32_t cb, std::int32_t cr)
    {
        (void)cb;
        return saturateByte((K.luma * y + K.crToR * (cr - 128) + K.offset) >> 16);
    }
    static std::uint8_t g(std::int32_t y, std::int32_t cb, std::int32_t cr)
    {
        return saturateByte((K.luma * y - K.cbToG * (cb - 128) - K.crToG * (cr - 128) + K.offset) >> 16);
    }
    static std::uint8_t b(std::int32_t y, std::int32_t cb, std::int32_t cr)
    {
        (void)cr;
        return saturateByte((K.luma * y + K.cbToB * (cb - 128) + K.offset) >> 16);
    }
};

} // namespace kel

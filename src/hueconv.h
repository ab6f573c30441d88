// The arithmetic of the hue models (HSV and HLS), shared by the pixel-order
// kernels and the blue-first plane kernels.  Double-extended throughout,
// evaluated left to right as written: values near a rounding boundary land by
// that precision.
#pragma once

#include <cstdint>
#include <type_traits>

#include "kelcc.h"

namespace kel::hue {

using Ext = long double;

// Addends before the truncating casts.  c rounds to nearest with ties going
// down (it is the float just under 0.5); e only guards against a value a hair
// under an integer, so results truncate.
inline constexpr Ext addendNearest = 0.4999989867210388f;  // bits 0x3EFFFFDE
inline constexpr Ext addendTruncate = 1e-7;                // a double
inline constexpr Ext floatEpsilon = 1.1920928955078125e-07f;  // 2^-23

// Sample codings: K is what 1.0 maps to; 16s is the 16u coding moved by 32768.
template <typename T> struct Coding;
template <> struct Coding<Kel8u> {
    static constexpr int K = 255, offset = 0;
};
template <> struct Coding<Kel16u> {
    static constexpr int K = 65535, offset = 0;
};
template <> struct Coding<Kel16s> {
    static constexpr int K = 65535, offset = 32768;
};

template <typename T>
inline Ext unitValue(T sample)  // integer sample to 0..1
{
    return static_cast<Ext>(static_cast<int>(sample) + Coding<T>::offset) / Coding<T>::K;
}

template <typename T>
inline int codeOf(T sample)  // integer sample to 0..K
{
    return static_cast<int>(sample) + Coding<T>::offset;
}

template <typename T>
inline T store(Ext scaled, Ext addend)  // trunc(scaled + addend), moved back by the offset
{
    return static_cast<T>(static_cast<int>(scaled + addend) - Coding<T>::offset);
}

// ---- HLS ---------------------------------------------------------------------

struct HLS {
    Ext hueDegrees, lightness, saturation;
};

// r, g, b in 0..1 (floats as they stand).  The float model calls two nearly
// equal channels gray.
template <bool FloatModel>
inline HLS toHLS(Ext r, Ext g, Ext b)
{
    const Ext M = r > g ? (r > b ? r : b) : (g > b ? g : b);
    const Ext mn = r < g ? (r < b ? r : b) : (g < b ? g : b);
    const Ext d = M - mn;
    const Ext t = M + mn;
    const Ext L = 0.5L * t;
    const bool gray = FloatModel ? d <= floatEpsilon : d == 0;
    if (gray) return {0, L, 0};
    const Ext S = L <= 0.5L ? d / t : d / (2 - t);
    Ext x;
    if (r == M)       // a tie goes to red, then to green
        x = (g - b) * 60 / d;
    else if (g == M)
        x = (b - r) * 60 / d + 120;
    else
        x = (r - g) * 60 / d + 240;
    if (x < 0) x = x + 360;
    return {x, L, S};
}

// One channel of the inverse, x in degrees.
inline Ext hlsChannel(Ext x, Ext m1, Ext m2)
{
    if (x < 60) return ((x * (m2 - m1)) / 60) + m1;
    if (x < 180) return m2;
    if (x < 240) return (((240 - x) * (m2 - m1)) / 60) + m1;
    return m1;
}

struct RGB {
    Ext r, g, b;
};

inline RGB fromHLS(Ext h, Ext l, Ext s)
{
    if (s == 0) return {l, l, l};
    const Ext m2 = l <= 0.5L ? (s + 1) * l : (l + s) - s * l;
    const Ext m1 = (l + l) - m2;
    Ext xr = h + 120;
    if (xr > 360) xr = xr - 360;  // exactly 360 stays
    Ext xb = h - 120;
    if (xb < 0) xb = xb + 360;
    return {hlsChannel(xr, m1, m2), hlsChannel(h, m1, m2), hlsChannel(xb, m1, m2)};
}

// Integer HLS coding: hue over one turn of K, lightness and saturation of K.
template <typename T>
inline void storeHLS(const HLS& v, Ext addend, T* h, T* l, T* s)
{
    constexpr Ext K = Coding<T>::K;
    *h = store<T>(v.hueDegrees * K / 360, addend);
    *l = store<T>(v.lightness * K, addend);
    *s = store<T>(v.saturation * K, addend);
}

template <typename T>
inline RGB decodeHLS(T h, T l, T s)
{
    constexpr int K = Coding<T>::K;
    return fromHLS(static_cast<Ext>(codeOf(h) * 360) / K, unitValue(l), unitValue(s));
}

} // namespace kel::hue

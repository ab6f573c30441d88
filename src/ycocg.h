// YCoCg: the plain and the reversible (lifting) transform between pixel-order
// B, G, R and three planes Y, Co, Cg, one forward and one inverse template per
// arithmetic, and the vector rows of the 8-bit members.
#pragma once

#include <cstdint>
#include <type_traits>

#include "kelcc.h"

namespace kel::ycocg {

// The low 16 bits of a sum as a signed 16-bit value (wrap-around through the
// unsigned type).
inline std::int32_t low16(std::int32_t v)
{
    return static_cast<std::int16_t>(static_cast<std::uint16_t>(static_cast<std::uint32_t>(v)));
}

// Sums of 32-bit planes wrap as 32-bit integers do, through the unsigned type.
inline std::int32_t add32(std::int32_t a, std::int32_t b)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}
inline std::int32_t sub32(std::int32_t a, std::int32_t b)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

// A plane value to its store: the low 16 bits for 16-bit planes, the whole
// value for 32-bit ones.
template <typename Plane>
inline Plane toPlane(std::int32_t v)
{
    if constexpr (sizeof(Plane) == 2) return static_cast<Plane>(low16(v));
    else return static_cast<Plane>(v);
}

// ---- forward -----------------------------------------------------------------------------------------

// Y = (R + 2G + B + 2) >> 2, Co = (R - B + 1) >> 1, Cg = (2G - R - B + 2) >> 2.
struct PlainForward {
    template <typename Plane>
    static void apply(std::int32_t b, std::int32_t g, std::int32_t r, Plane& y, Plane& co, Plane& cg)
    {
        y = toPlane<Plane>((r + 2 * g + b + 2) >> 2);
        co = toPlane<Plane>((r - b + 1) >> 1);
        cg = toPlane<Plane>((2 * g - r - b + 2) >> 2);
    }
};

// Co = R - B, t = B + (Co >> 1), Cg = G - t, Y = t + (Cg >> 1); 16-bit planes
// take Co and Cg by their low 16 bits before going on.
struct LiftingForward {
    template <typename Plane>
    static void apply(std::int32_t b, std::int32_t g, std::int32_t r, Plane& y, Plane& co, Plane& cg)
    {
        std::int32_t c = r - b;
        if constexpr (sizeof(Plane) == 2) c = low16(c);
        const std::int32_t t = b + (c >> 1);
        std::int32_t d = g - t;
        if constexpr (sizeof(Plane) == 2) d = low16(d);
        co = static_cast<Plane>(c);
        cg = static_cast<Plane>(d);
        y = toPlane<Plane>(t + (d >> 1));
    }
};

// ---- inverse -----------------------------------------------------------------------------------------

// What a 16-bit or 8-bit destination keeps of a 32-bit result: 8-bit
// destinations clamp the low 16 bits to 0..255.
template <typename Out>
inline Out toPixel(std::int32_t v)
{
    const std::int32_t w = low16(v);
    if constexpr (sizeof(Out) == 1) return static_cast<Out>(w < 0 ? 0 : (w > 255 ? 255 : w));
    else return static_cast<Out>(w);
}

// R = Y + Co - Cg, G = Y + Cg, B = Y - Co - Cg, in 32 bits.
struct PlainInverse {
    template <typename Out>
    static void apply(std::int32_t y, std::int32_t co, std::int32_t cg, Out& b, Out& g, Out& r)
    {
        r = toPixel<Out>(sub32(add32(y, co), cg));
        g = toPixel<Out>(add32(y, cg));
        b = toPixel<Out>(sub32(sub32(y, co), cg));
    }
};

// t = Y - (Cg >> 1), G = Cg + t, B = t - (Co >> 1), R = B + Co; from 16-bit
// planes each result is taken by its low 16 bits as it is computed, from
// 32-bit planes the steps run in 32 bits.
template <bool FromWidePlanes>
struct LiftingInverse {
    template <typename Out>
    static void apply(std::int32_t y, std::int32_t co, std::int32_t cg, Out& b, Out& g, Out& r)
    {
        const auto step = [](std::int32_t v) { return FromWidePlanes ? v : low16(v); };
        const std::int32_t t = step(sub32(y, cg >> 1));
        const std::int32_t gv = step(add32(cg, t));
        const std::int32_t bv = step(sub32(t, co >> 1));
        const std::int32_t rv = step(add32(bv, co));
        g = toPixel<Out>(gv);
        b = toPixel<Out>(bv);
        r = toPixel<Out>(rv);
    }
};

// ---- vector rows of the 8-bit members ------------------------------------------------------------------

// `width` pixels of one row; the scalar kernel in a build without SIMD.
using ForwardRow8u = void (*)(const Kel8u* src, Kel16s* y, Kel16s* co, Kel16s* cg, int width);
using InverseRow8u = void (*)(const Kel16s* y, const Kel16s* co, const Kel16s* cg, Kel8u* dst, int width,
                              Kel8u alpha);

// Pitch 3 or 4 (C3, C4); lifting or plain.
ForwardRow8u chooseForwardRow8u(bool lifting, int pitch);
InverseRow8u chooseInverseRow8u(bool lifting, int pitch);

// The scalar rows the vector rows finish with.
template <class Arith, int Pitch>
void innerForward8u(const Kel8u* src, Kel16s* y, Kel16s* co, Kel16s* cg, int width);
template <class Arith, int Pitch>
void innerInverse8u(const Kel16s* y, const Kel16s* co, const Kel16s* cg, Kel8u* dst, int width, Kel8u alpha);

} // namespace kel::ycocg

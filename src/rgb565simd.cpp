// Vector row kernels of packed 565 and 555 pixels to and from 8-bit
// three-channel pixels, for every SIMD target.  Both directions work on bytes:
// a packed pixel is its low and high byte, de-interleaved on load and
// interleaved on store, so each field is a shift and a mask of one or two bytes.
#include "rgb565simd.h"

#include <cstdint>

#include "simd.h"

#if KELCC_SIMD

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rgb565simd.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include "simdops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kel::simd565 {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
using kel::HWY_NAMESPACE::loadInterleaved3;
using kel::HWY_NAMESPACE::storeInterleaved2;
using kel::HWY_NAMESPACE::storeInterleaved3;
using kel::HWY_NAMESPACE::wholeSteps;

// The packed pixel p = lo | hi << 8 of the bytes b0, b1, b2:
// p = b0 >> 3 | (b1 >> 2) << 5 | (b2 >> 3) << 11, so
// lo = b0 >> 3 | (b1 << 3 & 0xE0) (the low three bits of b1 >> 2, at bit 5),
// hi = b1 >> 5 | (b2 & 0xF8).  The byte shifts drop what leaves the byte.
void packRow565(const Kel8u* src, Kel16u* dst, int width)
{
    const hn::ScalableTag<std::uint8_t> du8;
    const int lanes = static_cast<int>(hn::Lanes(du8));
    Kel8u* out = reinterpret_cast<Kel8u*>(dst);
    const auto highGreen = hn::Set(du8, 0xE0), topFive = hn::Set(du8, 0xF8);
    const int done = wholeSteps(width, lanes, 1, [&](int x) {
        hn::Vec<decltype(du8)> b0, b1, b2;
        loadInterleaved3(du8, src + 3 * x, b0, b1, b2);
        const auto lo = hn::Or(hn::ShiftRight<3>(b0), hn::And(hn::ShiftLeft<3>(b1), highGreen));
        const auto hi = hn::Or(hn::ShiftRight<5>(b1), hn::And(b2, topFive));
        storeInterleaved2(du8, lo, hi, out + 2 * x);
    });
    innerRGBToRGB565_8u16u_C3R(src + 3 * done, dst + done, width - done);
}

// The fields of p = lo | hi << 8 widened by a left shift, as bytes:
// 565: (p & 31) << 3 = lo << 3; ((p >> 5) & 63) << 2 = (p >> 3) & 0xFC,
//      whose byte is (lo >> 3 | hi << 5) & 0xFC; (p >> 11) << 3 = hi & 0xF8.
// 555: (p & 31) << 3 = lo << 3; ((p >> 5) & 31) << 3 = (lo >> 2 | hi << 6) & 0xF8;
//      ((p >> 10) & 31) << 3 = (hi << 1) & 0xF8, bit 15 shifted out.
template <bool Is565>
HWY_INLINE void widenRow(const Kel16u* src, Kel8u* dst, int width)
{
    const hn::ScalableTag<std::uint8_t> du8;
    const int lanes = static_cast<int>(hn::Lanes(du8));
    const Kel8u* in = reinterpret_cast<const Kel8u*>(src);
    const auto topFive = hn::Set(du8, 0xF8), topSix = hn::Set(du8, 0xFC);
    const int done = wholeSteps(width, lanes, 1, [&](int x) {
        hn::Vec<decltype(du8)> lo, hi;
        hn::LoadInterleaved2(du8, in + 2 * x, lo, hi);
        const auto first = hn::ShiftLeft<3>(lo);
        if constexpr (Is565) {
            const auto second = hn::And(hn::Or(hn::ShiftRight<3>(lo), hn::ShiftLeft<5>(hi)), topSix);
            storeInterleaved3(du8, first, second, hn::And(hi, topFive), dst + 3 * x);
        } else {
            const auto second = hn::And(hn::Or(hn::ShiftRight<2>(lo), hn::ShiftLeft<6>(hi)), topFive);
            storeInterleaved3(du8, first, second, hn::And(hn::ShiftLeft<1>(hi), topFive), dst + 3 * x);
        }
    });
    if constexpr (Is565) innerRGB565ToRGB_16u8u_C3R(src + done, dst + 3 * done, width - done);
    else innerRGB555ToRGB_16u8u_C3R(src + done, dst + 3 * done, width - done);
}

void widenRow565(const Kel16u* src, Kel8u* dst, int width)
{
    widenRow<true>(src, dst, width);
}

void widenRow555(const Kel16u* src, Kel8u* dst, int width)
{
    widenRow<false>(src, dst, width);
}

} // namespace HWY_NAMESPACE
} // namespace kel::simd565
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kel::simd565 {

HWY_EXPORT(packRow565);
HWY_EXPORT(widenRow565);
HWY_EXPORT(widenRow555);

PackRow choosePack565()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(packRow565);
}

WidenRow chooseWiden565()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(widenRow565);
}

WidenRow chooseWiden555()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(widenRow555);
}

} // namespace kel::simd565
#endif // HWY_ONCE

#else // a build without SIMD: the scalar kernels do every row

namespace kel::simd565 {

PackRow choosePack565()
{
    return innerRGBToRGB565_8u16u_C3R;
}
WidenRow chooseWiden565()
{
    return innerRGB565ToRGB_16u8u_C3R;
}
WidenRow chooseWiden555()
{
    return innerRGB555ToRGB_16u8u_C3R;
}

} // namespace kel::simd565

#endif // KELCC_SIMD

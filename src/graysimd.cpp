// The vector row of 8-bit gray, for every SIMD target.  With weights of at
// most 32767 in size, each product of a byte is below 2^23 and the sum of
// three below 2^25: the 16-bit multiply-adds (R beside G, B beside 0) give
// the scalar kernel's 32-bit sum exactly, and a logical shift by 12 and the
// low 8 bits give its byte.
#include "graysimd.h"

#include "simd.h"

#if KELCC_SIMD

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "graysimd.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include "simdops-inl.h"
#include "pairsimd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kel::gray {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
using kel::HWY_NAMESPACE::Halves;
using kel::HWY_NAMESPACE::loadInterleaved3;
using kel::HWY_NAMESPACE::multiplyAdd;
using kel::HWY_NAMESPACE::packBytes;
using kel::HWY_NAMESPACE::pairUp;
using kel::HWY_NAMESPACE::weightPair;
using kel::HWY_NAMESPACE::widenBytes;

template <int Pitch>
void grayRow(const Kel8u* src, Kel8u* dst, int width, const std::int32_t* w)
{
    const hn::ScalableTag<std::uint8_t> du8;
    using DI16 = hn::Repartition<std::int16_t, decltype(du8)>;
    const DI16 di16;
    const hn::Repartition<std::int32_t, decltype(du8)> di32;
    const hn::Repartition<std::uint32_t, decltype(du8)> du32;
    const std::int32_t rg = weightPair(w[0], w[1]), bz = weightPair(w[2], 0);
    const auto low8 = hn::Set(di32, 255);
    const int step = static_cast<int>(hn::Lanes(du8));
    int x = 0;
    for (; x + step <= width; x += step) {
        hn::Vec<decltype(du8)> r, g, b, a;
        if constexpr (Pitch == 3) loadInterleaved3(du8, src + 3 * x, r, g, b);
        else hn::LoadInterleaved4(du8, src + 4 * x, r, g, b, a);
        const Halves<DI16> r16 = widenBytes(di16, r), g16 = widenBytes(di16, g), b16 = widenBytes(di16, b);
        const auto zero = hn::Zero(di16);
        const auto half = [&](auto rh, auto gh, auto bh) {
            const Halves<DI16> p01 = pairUp(di16, rh, gh), p2 = pairUp(di16, bh, zero);
            const auto sum = [&](auto a01, auto a2) {
                const auto s = multiplyAdd(di32, a01, rg, multiplyAdd(di32, a2, bz, hn::Zero(di32)));
                return hn::And(hn::BitCast(di32, hn::ShiftRight<12>(hn::BitCast(du32, s))), low8);
            };
            return hn::ReorderDemote2To(di16, sum(p01.lower, p2.lower), sum(p01.upper, p2.upper));
        };
        const auto lower = half(r16.lower, g16.lower, b16.lower), upper = half(r16.upper, g16.upper, b16.upper);
        hn::StoreU(packBytes(du8, lower, upper), du8, dst + x);
    }
    if (x < width) innerRGBToGray_8u_C3C1R(src + Pitch * x, dst + x, width - x, w, Pitch);
}

void gray3(const Kel8u* s, Kel8u* d, int n, const std::int32_t* w) { grayRow<3>(s, d, n, w); }
void gray4(const Kel8u* s, Kel8u* d, int n, const std::int32_t* w) { grayRow<4>(s, d, n, w); }

} // namespace HWY_NAMESPACE
} // namespace kel::gray
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kel::gray {

HWY_EXPORT(gray3);
HWY_EXPORT(gray4);

Row8u chooseRow8u(const std::int32_t w[3], int pixelStride)
{
    for (int i = 0; i < 3; ++i)
        if (w[i] < -32767 || w[i] > 32767) return nullptr;
    detectSimdTargets();
    return pixelStride == 3 ? &HWY_DYNAMIC_DISPATCH(gray3) : &HWY_DYNAMIC_DISPATCH(gray4);
}

} // namespace kel::gray
#endif // HWY_ONCE

#else // KELCC_SIMD

namespace kel::gray {

Row8u chooseRow8u(const std::int32_t*, int)
{
    return nullptr;
}

} // namespace kel::gray

#endif // KELCC_SIMD

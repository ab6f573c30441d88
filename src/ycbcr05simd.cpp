// Sub-sampled YCbCr to RGB and BGR on whole vectors: the 4:2:0 members, compiled
// once for every SIMD target (foreach_target.h includes this file once a target).
#include "ycbcr05simd.h"

#include <cstddef>
#include <cstdint>

#include "cbcrpx.h"
#include "simd.h"

#if KELCC_SIMD

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "ycbcr05simd.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include "simdops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// Rows in pairs, a vector of luma bytes a step in each row: the step's cells
// (one Cb and Cr each, a 32-bit lane a cell) give three chroma terms per cell,
// shared by the cell's four pixels; each row then adds its own luma terms,
// and the three channels are stored interleaved in the member's order.  Luma
// is widened by zipping within 16-byte blocks, chroma likewise, so a pixel's
// 16-bit lane and its cell's 32-bit lane stay side by side; the pack undoes
// the zip.  Every pixel gets the scalar kernel's bytes by the same formula,
//   channel = clamp((luma * Y + weights . (Cb, Cr) + offset) >> 16),
// with the same floor and the same clamp (see chromaTerm and channelSum).
// The cells after the last whole step go to the scalar kernel Tail itself,
// compiled for the baseline.
template <const InverseYCbCr& K, ChannelOrder O, RowPair420 Tail>
HWY_INLINE void rowPairs420(const Kel8u* HWY_RESTRICT yTop, const Kel8u* HWY_RESTRICT yBottom,
                            const Kel8u* HWY_RESTRICT cb, const Kel8u* HWY_RESTRICT cr, Kel8u* top, Kel8u* bottom,
                            int width)
{
    static_assert((O.r == 0 && O.b == 2) || (O.r == 2 && O.b == 0), "RGB or BGR");
    const hn::ScalableTag<std::uint8_t> du8;
    const hn::Repartition<std::uint16_t, decltype(du8)> du16;
    const hn::Repartition<std::int32_t, decltype(du8)> di32;
    const hn::Repartition<std::uint32_t, decltype(du8)> du32;
    const hn::Repartition<std::int16_t, decltype(du8)> di16;
    const hn::Rebind<std::uint8_t, decltype(du16)> du8Half;
    const int step = static_cast<int>(hn::Lanes(du8));  // pixels of a row a step, two a cell
    const auto lowHalves = hn::LoadDup128(du8, kLowHalves);
    const auto highHalves = hn::LoadDup128(du8, kHighHalves);
    const auto zero = hn::Zero(du8);

    const int evenWidth = width & ~1;
    int x = 0;
    for (; x + step <= evenWidth; x += step) {
        // The step's cells in 16-bit lanes, then (Cb, Cr) pairs zipped within
        // blocks: `first` holds the cells of the pixels zipped into `first` below.
        const auto cb16 = hn::PromoteTo(du16, hn::LoadU(du8Half, cb + x / 2));
        const auto cr16 = hn::PromoteTo(du16, hn::LoadU(du8Half, cr + x / 2));
        const auto pairsFirst = hn::BitCast(di16, hn::ZipLower(du32, cb16, cr16));
        const auto pairsSecond = hn::BitCast(di16, hn::ZipUpper(du32, cb16, cr16));
        const auto cell = [&](const auto term) { return cellTerm(di16, term, lowHalves, highHalves); };
        const auto redFirst = cell(chromaTerm<kRedWeights<K>>(di32, pairsFirst));
        const auto redSecond = cell(chromaTerm<kRedWeights<K>>(di32, pairsSecond));
        const auto greenFirst = cell(chromaTerm<kGreenWeights<K>>(di32, pairsFirst));
        const auto greenSecond = cell(chromaTerm<kGreenWeights<K>>(di32, pairsSecond));
        const auto blueFirst = cell(chromaTerm<kBlueWeights<K>>(di32, pairsFirst));
        const auto blueSecond = cell(chromaTerm<kBlueWeights<K>>(di32, pairsSecond));

        for (int row = 0; row < 2; ++row) {
            const Kel8u* luma = (row == 0 ? yTop : yBottom) + x;
            Kel8u* dst = (row == 0 ? top : bottom) + 3 * x;
            const auto lumaBytes = hn::LoadU(du8, luma);
            const auto first = lumaTerm<K.luma>(du16, hn::ZipLower(du16, lumaBytes, zero));
            const auto second = lumaTerm<K.luma>(du16, hn::ZipUpper(du16, lumaBytes, zero));
            const auto channel = [&](const auto& cellFirst, const auto& cellSecond) {
                return packBytes(du8, channelSum(di16, first, cellFirst), channelSum(di16, second, cellSecond));
            };
            const auto red = channel(redFirst, redSecond);
            const auto green = channel(greenFirst, greenSecond);
            const auto blue = channel(blueFirst, blueSecond);
            if constexpr (O.r == 0) storeInterleaved3(du8, red, green, blue, dst);
            else storeInterleaved3(du8, blue, green, red, dst);
        }
    }
    if (x < evenWidth) Tail(yTop + x, yBottom + x, cb + x / 2, cr + x / 2, top + 3 * x, bottom + 3 * x, width - x);
}

void rowPairYCbCr420ToRGB(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* cb, const Kel8u* cr, Kel8u* top,
                          Kel8u* bottom, int width)
{
    rowPairs420<inverseT, kRGB, innerYCbCr420ToRGB_8u_P3C3R>(yTop, yBottom, cb, cr, top, bottom, width);
}

void rowPairYCbCr420ToBGR(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* cb, const Kel8u* cr, Kel8u* top,
                          Kel8u* bottom, int width)
{
    rowPairs420<inverseU, kBGR, innerYCbCr420ToBGR_8u_P3C3R>(yTop, yBottom, cb, cr, top, bottom, width);
}

} // namespace HWY_NAMESPACE
} // namespace kel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kel {

HWY_EXPORT(rowPairYCbCr420ToRGB);
HWY_EXPORT(rowPairYCbCr420ToBGR);

RowPair420 chooseYCbCr420ToRGB()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowPairYCbCr420ToRGB);
}

RowPair420 chooseYCbCr420ToBGR()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowPairYCbCr420ToBGR);
}

} // namespace kel
#endif // HWY_ONCE

#else // a build without SIMD: the scalar kernels alone

namespace kel {

RowPair420 chooseYCbCr420ToRGB()
{
    return innerYCbCr420ToRGB_8u_P3C3R;
}

RowPair420 chooseYCbCr420ToBGR()
{
    return innerYCbCr420ToBGR_8u_P3C3R;
}

} // namespace kel

#endif // KELCC_SIMD

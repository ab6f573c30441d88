// RGB and BGR to sub-sampled YCbCr on whole vectors: 4:2:0 planes and pixel-order
// 4:2:2, compiled once for every SIMD target (foreach_target.h includes this file once a target).
#include "ycbcr02simd.h"

#include <cstdint>

#include "rowstore.h"
#include "simd.h"

#if KELCC_SIMD

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "ycbcr02simd.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include "simdops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// Rows in pairs, a vector of pixels of each row a step, in four groups of
// one 32-bit lane a pixel.  Each group's sample pairs (R, G) and (G, B) give
// the pixels' luma sums; the two rows' pairs added, then each pixel's and its
// neighbour's, give every lane its cell's sums, of which the even lane of a
// cell forms Cb and the odd lane Cr.  This is the scalar kernel's
//   Y = (lumaSum(R, G, B) + 0x108000) >> 16,
//   Cb = (blueDifference(SR, SG, SB) + 0x2008000) >> 18, Cr likewise,
// with the same sums (forwardSums: exact, no saturation) and the same floor
// shift; the luma sums lie within 0..2^24 and the cell sums within 0..2^26,
// so each result is a byte, as in the scalar kernel, which has no clamp.
// The cells after the last whole step go to the scalar kernel Tail itself,
// compiled for the baseline.
template <int Pitch, ChannelOrder O, RowPairForward420 Tail>
HWY_INLINE void rowPairs420(const Kel8u* HWY_RESTRICT top, const Kel8u* HWY_RESTRICT bottom, Kel8u* HWY_RESTRICT yTop,
                            Kel8u* HWY_RESTRICT yBottom, Kel8u* HWY_RESTRICT cb, Kel8u* HWY_RESTRICT cr, int width)
{
    const hn::ScalableTag<std::uint8_t> du8;
    const hn::Half<decltype(du8)> du8Half;
    const hn::Repartition<std::int16_t, decltype(du8)> di16;
    const hn::Repartition<std::int32_t, decltype(du8)> di32;
    const int step = static_cast<int>(hn::Lanes(du8));   // pixels of each row a step, two a cell
    const int group = static_cast<int>(hn::Lanes(di32));  // pixels of one vector of sums
    const int overread = pairsOverread<Pitch>(du8);
    const auto lumaConstant = hn::Set(di32, kRoundedLuma);
    const auto cellConstant = hn::Set(di32, kCellOf4);

    const int evenWidth = width & ~1;
    int x = 0;
    for (; x + step <= evenWidth && Pitch * (x + step) + overread <= Pitch * width; x += step) {
        const Kel8u* upperRow = top + Pitch * x;
        const Kel8u* lowerRow = bottom + Pitch * x;
        const auto upper0 = loadSamplePairs<Pitch, O>(di16, upperRow);
        const auto upper1 = loadSamplePairs<Pitch, O>(di16, upperRow + Pitch * group);
        const auto upper2 = loadSamplePairs<Pitch, O>(di16, upperRow + Pitch * 2 * group);
        const auto upper3 = loadSamplePairs<Pitch, O>(di16, upperRow + Pitch * 3 * group);
        const auto lower0 = loadSamplePairs<Pitch, O>(di16, lowerRow);
        const auto lower1 = loadSamplePairs<Pitch, O>(di16, lowerRow + Pitch * group);
        const auto lower2 = loadSamplePairs<Pitch, O>(di16, lowerRow + Pitch * 2 * group);
        const auto lower3 = loadSamplePairs<Pitch, O>(di16, lowerRow + Pitch * 3 * group);

        const auto luma = [&](const auto& pairs) {
            return forwardSums<kLumaSumWeights, kLumaSumWeights>(di32, pairs, lumaConstant);
        };
        hn::StoreU(orderedBytes<16>(du8, luma(upper0), luma(upper1), luma(upper2), luma(upper3)), du8, yTop + x);
        hn::StoreU(orderedBytes<16>(du8, luma(lower0), luma(lower1), luma(lower2), luma(lower3)), du8, yBottom + x);

        const auto cell = [&](const auto& upper, const auto& lower) {
            return forwardSums<kBlueDifferenceWeights, kRedDifferenceWeights>(
                di32, addPairNeighbour(addPairs(upper, lower)), cellConstant);
        };
        // Cb and Cr alternate, a cell's pair in its two lanes; split, they are
        // the step's Cb bytes and then its Cr bytes.
        const auto chroma = splitEvenOdd(
            du8, orderedBytes<18>(du8, cell(upper0, lower0), cell(upper1, lower1), cell(upper2, lower2),
                                  cell(upper3, lower3)));
        hn::StoreU(hn::LowerHalf(du8Half, chroma), du8Half, cb + x / 2);
        hn::StoreU(hn::UpperHalf(du8Half, chroma), du8Half, cr + x / 2);
    }
    if (x < evenWidth) {
        Tail(top + Pitch * x, bottom + Pitch * x, yTop + x, yBottom + x, cb + x / 2, cr + x / 2, width - x);
    }
}

// One row, a vector of pixels a step in four groups of one 32-bit lane a
// pixel.  The luma sums take the even pixel's constant in even lanes and the
// odd pixel's in odd lanes; each pixel's sample pairs plus its neighbour's
// give both lanes of a pair the pair's sums, from which the lane whose
// chroma byte follows the even Y forms that chroma and the other lane the
// other.  This is the scalar kernel's
//   Y = (lumaSum(R, G, B) + K.yEven or K.yOdd) >> 16,
//   Cb = (blueDifference(SR, SG, SB) + K.cbK) >> 17, Cr likewise,
// with the same sums (forwardSums: exact, no saturation) and the same floor
// shift; the chroma sums lie within 0..2^25, so each result is a byte, as in
// the scalar kernel, which has no clamp.  The pairs after the last whole step,
// and a last single pixel, go to the scalar kernel Tail itself.
template <int Pitch, ChannelOrder O, PairLayout L, PairConstants K, RowForward422 Tail>
HWY_INLINE void row422(const Kel8u* HWY_RESTRICT src, Kel8u* HWY_RESTRICT dst, int width)
{
    static_assert(L.y0 == 0 && L.y1 == 2, "Y first in the pair; the chroma bytes follow each Y");
    static_assert(K.cbK == K.crK, "one chroma constant for both samples");
    constexpr const ForwardWeights& kAfterEven = L.cb == 1 ? kBlueDifferenceWeights : kRedDifferenceWeights;
    constexpr const ForwardWeights& kAfterOdd = L.cb == 1 ? kRedDifferenceWeights : kBlueDifferenceWeights;
    const hn::ScalableTag<std::uint8_t> du8;
    const hn::Repartition<std::int16_t, decltype(du8)> di16;
    const hn::Repartition<std::int32_t, decltype(du8)> di32;
    const int step = static_cast<int>(hn::Lanes(du8));   // pixels a step, two a pair
    const int group = static_cast<int>(hn::Lanes(di32));  // pixels of one vector of sums
    const int overread = pairsOverread<Pitch>(du8);
    const auto lumaConstant = hn::OddEven(hn::Set(di32, K.yOdd), hn::Set(di32, K.yEven));
    const auto chromaConstant = hn::Set(di32, K.cbK);

    int x = 0;
    for (; x + step <= width && Pitch * (x + step) + overread <= Pitch * width; x += step) {
        const Kel8u* row = src + Pitch * x;
        const auto pairs0 = loadSamplePairs<Pitch, O>(di16, row);
        const auto pairs1 = loadSamplePairs<Pitch, O>(di16, row + Pitch * group);
        const auto pairs2 = loadSamplePairs<Pitch, O>(di16, row + Pitch * 2 * group);
        const auto pairs3 = loadSamplePairs<Pitch, O>(di16, row + Pitch * 3 * group);
        const auto luma = [&](const auto& pairs) {
            return forwardSums<kLumaSumWeights, kLumaSumWeights>(di32, pairs, lumaConstant);
        };
        const auto chroma = [&](const auto& pairs) {
            return forwardSums<kAfterEven, kAfterOdd>(di32, addPairNeighbour(pairs), chromaConstant);
        };
        const auto lumaBytes = orderedBytes<16>(du8, luma(pairs0), luma(pairs1), luma(pairs2), luma(pairs3));
        const auto chromaBytes =
            orderedBytes<17>(du8, chroma(pairs0), chroma(pairs1), chroma(pairs2), chroma(pairs3));
        storeInterleaved2(du8, lumaBytes, chromaBytes, dst + 2 * x);
    }
    if (x < width) Tail(src + Pitch * x, dst + 2 * x, width - x);
}

void rowPairRGBToYCbCr420(const Kel8u* top, const Kel8u* bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* cb, Kel8u* cr,
                          int width)
{
    rowPairs420<3, kRGB, innerRGBToYCbCr420_8u_C3P3R>(top, bottom, yTop, yBottom, cb, cr, width);
}

void rowPairBGRToYCbCr420(const Kel8u* top, const Kel8u* bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* cb, Kel8u* cr,
                          int width)
{
    rowPairs420<3, kBGR, innerBGRToYCbCr420_8u_C3P3R>(top, bottom, yTop, yBottom, cb, cr, width);
}

void rowPairBGRToYCbCr420AC4(const Kel8u* top, const Kel8u* bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* cb, Kel8u* cr,
                             int width)
{
    rowPairs420<4, kBGR, innerBGRToYCbCr420_8u_AC4P3R>(top, bottom, yTop, yBottom, cb, cr, width);
}

void rowRGBToYCbCr422(const Kel8u* src, Kel8u* dst, int width)
{
    row422<3, kRGB, kYCbCrPair, kRGBPair, innerRGBToYCbCr422_C3_C2R>(src, dst, width);
}

void rowRGBToYCrCb422(const Kel8u* src, Kel8u* dst, int width)
{
    row422<3, kRGB, kYCrCbPair, kRGBPair, innerRGBToYCrCb422_C3_C2R>(src, dst, width);
}

} // namespace HWY_NAMESPACE
} // namespace kel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kel {

HWY_EXPORT(rowPairRGBToYCbCr420);
HWY_EXPORT(rowPairBGRToYCbCr420);
HWY_EXPORT(rowPairBGRToYCbCr420AC4);
HWY_EXPORT(rowRGBToYCbCr422);
HWY_EXPORT(rowRGBToYCrCb422);

RowPairForward420 chooseRGBToYCbCr420()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowPairRGBToYCbCr420);
}

RowPairForward420 chooseBGRToYCbCr420()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowPairBGRToYCbCr420);
}

RowPairForward420 chooseBGRToYCbCr420AC4()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowPairBGRToYCbCr420AC4);
}

RowForward422 chooseRGBToYCbCr422()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowRGBToYCbCr422);
}

RowForward422 chooseRGBToYCrCb422()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowRGBToYCrCb422);
}

} // namespace kel
#endif // HWY_ONCE

#else // a build without SIMD: the scalar kernels alone

namespace kel {

RowPairForward420 chooseRGBToYCbCr420()
{
    return innerRGBToYCbCr420_8u_C3P3R;
}

RowPairForward420 chooseBGRToYCbCr420()
{
    return innerBGRToYCbCr420_8u_C3P3R;
}

RowPairForward420 chooseBGRToYCbCr420AC4()
{
    return innerBGRToYCbCr420_8u_AC4P3R;
}

RowForward422 chooseRGBToYCbCr422()
{
    return innerRGBToYCbCr422_C3_C2R;
}

RowForward422 chooseRGBToYCrCb422()
{
    return innerRGBToYCrCb422_C3_C2R;
}

} // namespace kel

#endif // KELCC_SIMD

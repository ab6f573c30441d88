// Full-resolution RGB <-> YCbCr on whole vectors, in pixel order (C3, AC4) and
// planes, compiled once for every SIMD target (foreach_target.h includes this file once a target).
#include "ycbcrsimd.h"

#include <cstddef>
#include <cstdint>

#include "cbcrpx.h"
#include "simd.h"

#if KELCC_SIMD

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "ycbcrsimd.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include "simdops-inl.h"
#include "pairsimd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// ---- the arithmetic ------------------------------------------------------------------------------

// RGB to YCbCr: the weights of lumaSum, blueDifference and redDifference
// (cbcrpx.h) with the offsets of ForwardYCbCr, each channel
//   (wR * R + wG * G + wB * B + offset) >> 16.
struct ChannelWeights {
    std::int32_t r, g, b, offset;
};
constexpr ChannelWeights kLuma{16843, 33030, 6423, 0x108000};
constexpr ChannelWeights kBlueDifference{-9699, -19071, 28770, 0x808000};
constexpr ChannelWeights kRedDifference{28770, -24117, -4653, 0x808000};

// One forward channel of the pixels of `rg` (R, G pairs) and `bOne` (B, 1
// pairs): red and blue weights are 16-bit values; green's weight and the
// offset split as highPart * 65536 + lowPart, the low parts riding in the
// multiply-adds (the offset's on the constant 1) and the high parts added
// after the shift, since (s + 65536 * h) >> 16 = (s >> 16) + h exactly.  Each
// product is below 2^24 and no pair holds -32768 twice, so the sums are the
// scalar ones; they lie in 0 .. 2^24 and the results in 0..255.
template <const ChannelWeights& W, class DI16>
HWY_INLINE hn::Vec<DI16> forwardChannel(DI16 di16, const Halves<DI16>& rg, const Halves<DI16>& bOne,
                                        hn::Vec<DI16> g)
{
    static_assert(W.r == static_cast<std::int16_t>(W.r) && W.b == static_cast<std::int16_t>(W.b), "16-bit weights");
    const hn::Repartition<std::int32_t, DI16> di32;
    constexpr std::int32_t rgWeights = weightPair(W.r, lowPart(W.g)), bOneWeights = weightPair(W.b, lowPart(W.offset));
    const auto sum = [&](auto rgPairs, auto bOnePairs) {
        return multiplyAdd(di32, rgPairs, rgWeights, multiplyAdd(di32, bOnePairs, bOneWeights, hn::Zero(di32)));
    };
    const auto shifted = upperHalves(di16, sum(rg.lower, bOne.lower), sum(rg.upper, bOne.upper));
    return hn::Add(addMultiple<highPart(W.g)>(shifted, g), hn::Set(di16, static_cast<std::int16_t>(highPart(W.offset))));
}

struct ToYCbCr {
    template <class DU8, class V = hn::Vec<DU8>>
    static HWY_INLINE void convert(DU8 du8, V r, V g, V b, V& y, V& cb, V& cr)
    {
        using DI16 = hn::Repartition<std::int16_t, DU8>;
        const DI16 di16;
        const auto one = hn::Set(di16, 1);
        const Halves<DI16> r16 = widenBytes(di16, r), g16 = widenBytes(di16, g), b16 = widenBytes(di16, b);
        const auto half = [&](auto rh, auto gh, auto bh, auto& yh, auto& cbh, auto& crh) {
            const auto rg = pairUp(di16, rh, gh), bOne = pairUp(di16, bh, one);
            yh = forwardChannel<kLuma>(di16, rg, bOne, gh);
            cbh = forwardChannel<kBlueDifference>(di16, rg, bOne, gh);
            crh = forwardChannel<kRedDifference>(di16, rg, bOne, gh);
        };
        hn::Vec<DI16> yLower, yUpper, cbLower, cbUpper, crLower, crUpper;
        half(r16.lower, g16.lower, b16.lower, yLower, cbLower, crLower);
        half(r16.upper, g16.upper, b16.upper, yUpper, cbUpper, crUpper);
        y = packBytes(du8, yLower, yUpper);
        cb = packBytes(du8, cbLower, cbUpper);
        cr = packBytes(du8, crLower, crUpper);
    }
};

// YCbCr to RGB for a set whose chroma is centred on 128 and whose offsets are
// all -16 times the luma weight, plus a rounding half or not (sets T and R):
// then luma * Y + offset = luma * (Y - 16) + rounding.  Set T's luma weight is
// four times a 16-bit value, one product (luma / 4) * 4 (Y - 16) of a value in
// -64..956; set R's splits as 65536 + 10746 like the chroma weights.  Each
// weight splits as highPart * 65536 + lowPart; the low parts ride in the
// multiply-adds, luma's beside a chroma weight's (green takes two, the second
// with a zero luma weight), the rounding half in the sum they start from, and
// the high parts are added to the shifted sum, since (s + 65536 * h) >> 16 =
// (s >> 16) + h exactly.  The products stay below 2^25 and no pair holds
// -32768, so every sum is the scalar one, floored the same; the results lie
// within -600..600, and the pack saturates them to 0..255 as saturateByte does.
template <const InverseYCbCr& K>
struct YCbCrToRGB {
    static_assert(K.chromaZero == 128 && K.offsetG == K.offsetR && K.offsetB == K.offsetR, "one offset, centred chroma");
    static constexpr std::int32_t kRounding = K.offsetR + 16 * K.luma;
    static_assert(kRounding == 0 || kRounding == 32768, "offsets of 16, rounding or not");
    static constexpr bool kQuarter = K.luma % 4 == 0 && K.luma / 4 < 32768;
    static constexpr std::int32_t kLumaWeight = kQuarter ? K.luma / 4 : lowPart(K.luma);
    static constexpr std::int32_t kLumaHigh = kQuarter ? 0 : highPart(K.luma);

    template <class DU8, class V = hn::Vec<DU8>>
    static HWY_INLINE void convert(DU8 du8, V y, V cb, V cr, V& r, V& g, V& b)
    {
        using DI16 = hn::Repartition<std::int16_t, DU8>;
        const DI16 di16;
        const hn::Repartition<std::int32_t, DU8> di32;
        const Halves<DI16> y16 = widenBytes(di16, y), cb16 = widenBytes(di16, cb), cr16 = widenBytes(di16, cr);
        const auto sixteen = hn::Set(di16, 16), centre = hn::Set(di16, 128);
        const auto rounding = hn::Set(di32, kRounding);
        const auto half = [&](auto yh, auto cbh, auto crh, auto& rh, auto& gh, auto& bh) {
            const auto above = hn::Sub(yh, sixteen);
            const auto luma = kQuarter ? hn::ShiftLeft<2>(above) : above;
            const auto dcb = hn::Sub(cbh, centre), dcr = hn::Sub(crh, centre);
            const auto lumaCb = pairUp(di16, luma, dcb), lumaCr = pairUp(di16, luma, dcr);
            const auto channel = [&](const Halves<DI16>& pairs, std::int32_t weights) {
                return upperHalves(di16, multiplyAdd(di32, pairs.lower, weights, rounding),
                                   multiplyAdd(di32, pairs.upper, weights, rounding));
            };
            const auto red = channel(lumaCr, weightPair(kLumaWeight, lowPart(K.crToR)));
            rh = addMultiple<kLumaHigh>(addMultiple<highPart(K.crToR)>(red, dcr), above);
            const auto blue = channel(lumaCb, weightPair(kLumaWeight, lowPart(K.cbToB)));
            bh = addMultiple<kLumaHigh>(addMultiple<highPart(K.cbToB)>(blue, dcb), above);
            constexpr std::int32_t cbWeights = weightPair(kLumaWeight, lowPart(-K.cbToG));
            constexpr std::int32_t crWeights = weightPair(0, lowPart(-K.crToG));
            const auto green = upperHalves(
                di16, multiplyAdd(di32, lumaCr.lower, crWeights, multiplyAdd(di32, lumaCb.lower, cbWeights, rounding)),
                multiplyAdd(di32, lumaCr.upper, crWeights, multiplyAdd(di32, lumaCb.upper, cbWeights, rounding)));
            gh = addMultiple<kLumaHigh>(
                addMultiple<highPart(-K.crToG)>(addMultiple<highPart(-K.cbToG)>(green, dcb), dcr), above);
        };
        hn::Vec<DI16> rLower, rUpper, gLower, gUpper, bLower, bUpper;
        half(y16.lower, cb16.lower, cr16.lower, rLower, gLower, bLower);
        half(y16.upper, cb16.upper, cr16.upper, rUpper, gUpper, bUpper);
        r = packBytes(du8, rLower, rUpper);
        g = packBytes(du8, gLower, gUpper);
        b = packBytes(du8, bLower, bUpper);
    }
};

// ---- the rows ----------------------------------------------------------------------------------------

void rowRGBToYCbCr_C3(const Kel8u* src, Kel8u* dst, int width)
{
    convertRow<InPixelOrder<3>, InPixelOrder<3>, ToYCbCr, innerRGBToYCbCr_C3_C3R>(src, dst, width);
}

void rowRGBToYCbCr_AC4(const Kel8u* src, Kel8u* dst, int width)
{
    convertRow<InPixelOrder<4>, InPixelOrder<4>, ToYCbCr, innerRGBToYCbCr_AC4R>(src, dst, width);
}

void rowRGBToYCbCr_P3(const Kel8u* const src[3], Kel8u* const dst[3], int width)
{
    convertRow<InPlanes, InPlanes, ToYCbCr, innerRGBToYCbCr_C3P2_C3P2R>(src, dst, width);
}

void rowYCbCrToRGB_C3(const Kel8u* src, Kel8u* dst, int width)
{
    convertRow<InPixelOrder<3>, InPixelOrder<3>, YCbCrToRGB<inverseT>, innerYCbCrToRGB_C3_C3R>(src, dst, width);
}

void rowYCbCrToRGB_AC4(const Kel8u* src, Kel8u* dst, int width)
{
    convertRow<InPixelOrder<4>, InPixelOrder<4>, YCbCrToRGB<inverseT>, innerYCbCrToRGB_AC4R>(src, dst, width);
}

void rowYCbCrToRGB_P3(const Kel8u* const src[3], Kel8u* const dst[3], int width)
{
    convertRow<InPlanes, InPlanes, YCbCrToRGB<inverseT>, innerYCbCrToRGB_C3P2_C3P2R>(src, dst, width);
}

// Planes to pixel order takes set R, as its scalar kernel does.
void rowYCbCrToRGB_P3C3(const Kel8u* const src[3], Kel8u* dst, int width)
{
    convertRow<InPlanes, InPixelOrder<3>, YCbCrToRGB<inverseR>, innerYCbCrToRGB_8u_P3C3R>(src, dst, width);
}

} // namespace HWY_NAMESPACE
} // namespace kel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kel {

HWY_EXPORT(rowRGBToYCbCr_C3);
HWY_EXPORT(rowRGBToYCbCr_AC4);
HWY_EXPORT(rowRGBToYCbCr_P3);
HWY_EXPORT(rowYCbCrToRGB_C3);
HWY_EXPORT(rowYCbCrToRGB_AC4);
HWY_EXPORT(rowYCbCrToRGB_P3);
HWY_EXPORT(rowYCbCrToRGB_P3C3);

PixelRow chooseRGBToYCbCr_C3()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowRGBToYCbCr_C3);
}

PixelRow chooseRGBToYCbCr_AC4()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowRGBToYCbCr_AC4);
}

PlaneRow chooseRGBToYCbCr_P3()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowRGBToYCbCr_P3);
}

PixelRow chooseYCbCrToRGB_C3()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowYCbCrToRGB_C3);
}

PixelRow chooseYCbCrToRGB_AC4()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowYCbCrToRGB_AC4);
}

PlaneRow chooseYCbCrToRGB_P3()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowYCbCrToRGB_P3);
}

PlanesToPixelRow chooseYCbCrToRGB_P3C3()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowYCbCrToRGB_P3C3);
}

} // namespace kel
#endif // HWY_ONCE

#else // a build without SIMD: the scalar kernels alone

namespace kel {

PixelRow chooseRGBToYCbCr_C3()
{
    return innerRGBToYCbCr_C3_C3R;
}

PixelRow chooseRGBToYCbCr_AC4()
{
    return innerRGBToYCbCr_AC4R;
}

PlaneRow chooseRGBToYCbCr_P3()
{
    return innerRGBToYCbCr_C3P2_C3P2R;
}

PixelRow chooseYCbCrToRGB_C3()
{
    return innerYCbCrToRGB_C3_C3R;
}

PixelRow chooseYCbCrToRGB_AC4()
{
    return innerYCbCrToRGB_AC4R;
}

PlaneRow chooseYCbCrToRGB_P3()
{
    return innerYCbCrToRGB_C3P2_C3P2R;
}

PlanesToPixelRow chooseYCbCrToRGB_P3C3()
{
    return innerYCbCrToRGB_8u_P3C3R;
}

} // namespace kel

#endif // KELCC_SIMD

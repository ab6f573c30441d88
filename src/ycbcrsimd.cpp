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

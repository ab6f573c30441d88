// Full-resolution RGB <-> YUV on whole vectors, in pixel order (C3, AC4) and
// planes, compiled once for every SIMD target (foreach_target.h includes this file once a target).
#include "yuv01simd.h"

#include <cstdint>

#include "simd.h"
#include "yuvconv.h"

#if KELCC_SIMD

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "yuv01simd.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include "simdops-inl.h"
#include "pairsimd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// ---- the arithmetic ------------------------------------------------------------------------------

// The weights of lumaSum, chromaU and chromaV (yuvconv.h).
struct YUVWeights {
    std::int32_t r, g, b, toU, toV;
};
constexpr YUVWeights kYUV{19595, 38470, 7471, 32244, 57475};

// floor(w * d / 65536) of a 16-bit d as highPart(w) * d + mulhi(d, lowPart(w)):
// the high part's product is a whole multiple of 65536, so the floors agree.
template <std::int32_t W, class V>
HWY_INLINE V scaledDown(V d)
{
    const hn::DFromV<V> di16;
    return addMultiple<highPart(W)>(hn::MulHigh(d, hn::Set(di16, static_cast<std::int16_t>(lowPart(W)))), d);
}

// RGB to YUV as lumaSum, chromaU<0> and chromaV<0> give it.  The luma sum is
// P + 65536 G with P = 19595 R - 27066 G + 7471 B (green's weight split as
// highPart and lowPart), one exact multiply-add of (R, G) pairs and one of
// (B, 1) pairs, |P| < 2^23.  Then
//   Y = sum >> 16 = (P >> 16) + G,
//   colourDifference<0>(B, sum) = (65536 B - sum + 32767) >> 16
//                               = B - G - ((P + 32768) >> 16),
// since floor((32767 - s) / 65536) = -floor((s + 32768) / 65536) for every s.
// The differences lie within -255..255, so U and V follow by one 16-bit
// high multiply each (scaledDown); U stays within 2..253 and V's pack
// saturates as saturateByte does.
struct ToYUV {
    template <class DU8, class V = hn::Vec<DU8>>
    static HWY_INLINE void convert(DU8 du8, V r, V g, V b, V& y, V& u, V& v)
    {
        using DI16 = hn::Repartition<std::int16_t, DU8>;
        const DI16 di16;
        const hn::Repartition<std::int32_t, DU8> di32;
        const auto one = hn::Set(di16, 1), centre = hn::Set(di16, 128);
        const auto half = hn::Set(di32, 32768);
        const Halves<DI16> r16 = widenBytes(di16, r), g16 = widenBytes(di16, g), b16 = widenBytes(di16, b);
        constexpr std::int32_t rgWeights = weightPair(kYUV.r, lowPart(kYUV.g)), bOneWeights = weightPair(kYUV.b, 0);
        static_assert(highPart(kYUV.g) == 1 && kYUV.b == lowPart(kYUV.b), "green alone above 16 bits");
        const auto pixels = [&](auto rh, auto gh, auto bh, auto& yh, auto& uh, auto& vh) {
            const auto rg = pairUp(di16, rh, gh), bOne = pairUp(di16, bh, one);
            const auto sum = [&](auto rgPairs, auto bOnePairs) {
                return multiplyAdd(di32, rgPairs, rgWeights, multiplyAdd(di32, bOnePairs, bOneWeights, hn::Zero(di32)));
            };
            const auto lower = sum(rg.lower, bOne.lower), upper = sum(rg.upper, bOne.upper);
            yh = hn::Add(upperHalves(di16, lower, upper), gh);
            const auto rounded = hn::Add(upperHalves(di16, hn::Add(lower, half), hn::Add(upper, half)), gh);
            uh = hn::Add(scaledDown<kYUV.toU>(hn::Sub(bh, rounded)), centre);
            vh = hn::Add(scaledDown<kYUV.toV>(hn::Sub(rh, rounded)), centre);
        };
        hn::Vec<DI16> yLower, yUpper, uLower, uUpper, vLower, vUpper;
        pixels(r16.lower, g16.lower, b16.lower, yLower, uLower, vLower);
        pixels(r16.upper, g16.upper, b16.upper, yUpper, uUpper, vUpper);
        y = packBytes(du8, yLower, yUpper);
        u = packBytes(du8, uLower, uUpper);
        v = packBytes(du8, vLower, vUpper);
    }
};

// YUV to RGB as toRGB<K> (no rounding half) gives it: each channel is
// Y + floor(term / 65536).  Red and blue have one weight each, so their
// floors come from scaledDown; green's two products are summed exactly first,
// by a multiply-add of (U - 128, V - 128) pairs with the weights' low parts,
// their high parts added after the shift.  The results lie within
// -260..513, and the pack saturates them as saturateByte does.
template <const yuv::Inverse& K>
struct YUVToRGB {
    template <class DU8, class V = hn::Vec<DU8>>
    static HWY_INLINE void convert(DU8 du8, V y, V u, V v, V& r, V& g, V& b)
    {
        using DI16 = hn::Repartition<std::int16_t, DU8>;
        const DI16 di16;
        const hn::Repartition<std::int32_t, DU8> di32;
        const auto centre = hn::Set(di16, 128);
        const Halves<DI16> y16 = widenBytes(di16, y), u16 = widenBytes(di16, u), v16 = widenBytes(di16, v);
        constexpr std::int32_t greenWeights = weightPair(lowPart(-K.uToG), lowPart(-K.vToG));
        const auto pixels = [&](auto yh, auto uh, auto vh, auto& rh, auto& gh, auto& bh) {
            const auto du = hn::Sub(uh, centre), dv = hn::Sub(vh, centre);
            rh = hn::Add(yh, scaledDown<K.vToR>(dv));
            bh = hn::Add(yh, scaledDown<K.uToB>(du));
            const auto uv = pairUp(di16, du, dv);
            const auto green = upperHalves(di16, multiplyAdd(di32, uv.lower, greenWeights, hn::Zero(di32)),
                                           multiplyAdd(di32, uv.upper, greenWeights, hn::Zero(di32)));
            gh = hn::Add(yh, addMultiple<highPart(-K.vToG)>(addMultiple<highPart(-K.uToG)>(green, du), dv));
        };
        hn::Vec<DI16> rLower, rUpper, gLower, gUpper, bLower, bUpper;
        pixels(y16.lower, u16.lower, v16.lower, rLower, gLower, bLower);
        pixels(y16.upper, u16.upper, v16.upper, rUpper, gUpper, bUpper);
        r = packBytes(du8, rLower, rUpper);
        g = packBytes(du8, gLower, gUpper);
        b = packBytes(du8, bLower, bUpper);
    }
};

// ---- the rows ------------------------------------------------------------------------------------

void rowRGBToYUV_8u_C3R(const Kel8u* src, Kel8u* dst, int width)
{
    convertRow<InPixelOrder<3>, InPixelOrder<3>, ToYUV, innerRGBToYUV_8u_C3R>(src, dst, width);
}

void rowRGBToYUV_8u_AC4R(const Kel8u* src, Kel8u* dst, int width)
{
    convertRow<InPixelOrder<4>, InPixelOrder<4>, ToYUV, innerRGBToYUV_8u_AC4R>(src, dst, width);
}

void rowRGBToYUV_8u_P3R(const Kel8u* const* src, Kel8u* const* dst, int width)
{
    convertRow<InPlanes, InPlanes, ToYUV, innerRGBToYUV_8u_P3R>(src, dst, width);
}

void rowRGBToYUV_8u_C3P3R(const Kel8u* src, Kel8u* const* dst, int width)
{
    convertRow<InPixelOrder<3>, InPlanes, ToYUV, innerRGBToYUV_8u_C3P3R>(src, dst, width);
}

// Pixel order takes set 1, planes set 2, as the scalar kernels do.
void rowYUVToRGB_8u_C3R(const Kel8u* src, Kel8u* dst, int width)
{
    convertRow<InPixelOrder<3>, InPixelOrder<3>, YUVToRGB<yuv::inverse1>, innerYUVToRGB_8u_C3R>(src, dst, width);
}

void rowYUVToRGB_8u_AC4R(const Kel8u* src, Kel8u* dst, int width)
{
    convertRow<InPixelOrder<4>, InPixelOrder<4>, YUVToRGB<yuv::inverse1>, innerYUVToRGB_8u_AC4R>(src, dst, width);
}

void rowYUVToRGB_8u_P3R(const Kel8u* const* src, Kel8u* const* dst, int width)
{
    convertRow<InPlanes, InPlanes, YUVToRGB<yuv::inverse2>, innerYUVToRGB_8u_P3R>(src, dst, width);
}

void rowYUVToRGB_8u_P3C3R(const Kel8u* const* src, Kel8u* dst, int width)
{
    convertRow<InPlanes, InPixelOrder<3>, YUVToRGB<yuv::inverse2>, innerYUVToRGB_8u_P3C3R>(src, dst, width);
}

} // namespace HWY_NAMESPACE
} // namespace kel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kel {

HWY_EXPORT(rowRGBToYUV_8u_C3R);
HWY_EXPORT(rowRGBToYUV_8u_AC4R);
HWY_EXPORT(rowRGBToYUV_8u_P3R);
HWY_EXPORT(rowRGBToYUV_8u_C3P3R);
HWY_EXPORT(rowYUVToRGB_8u_C3R);
HWY_EXPORT(rowYUVToRGB_8u_AC4R);
HWY_EXPORT(rowYUVToRGB_8u_P3R);
HWY_EXPORT(rowYUVToRGB_8u_P3C3R);

YUVRow<const Kel8u*, Kel8u*> chooseRGBToYUV_8u_C3R()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowRGBToYUV_8u_C3R);
}

YUVRow<const Kel8u*, Kel8u*> chooseRGBToYUV_8u_AC4R()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowRGBToYUV_8u_AC4R);
}

YUVRow<const Kel8u* const*, Kel8u* const*> chooseRGBToYUV_8u_P3R()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowRGBToYUV_8u_P3R);
}

YUVRow<const Kel8u*, Kel8u* const*> chooseRGBToYUV_8u_C3P3R()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowRGBToYUV_8u_C3P3R);
}

YUVRow<const Kel8u*, Kel8u*> chooseYUVToRGB_8u_C3R()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowYUVToRGB_8u_C3R);
}

YUVRow<const Kel8u*, Kel8u*> chooseYUVToRGB_8u_AC4R()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowYUVToRGB_8u_AC4R);
}

YUVRow<const Kel8u* const*, Kel8u* const*> chooseYUVToRGB_8u_P3R()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowYUVToRGB_8u_P3R);
}

YUVRow<const Kel8u* const*, Kel8u*> chooseYUVToRGB_8u_P3C3R()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowYUVToRGB_8u_P3C3R);
}

} // namespace kel
#endif // HWY_ONCE

#else // a build without SIMD: the scalar kernels alone

namespace kel {

YUVRow<const Kel8u*, Kel8u*> chooseRGBToYUV_8u_C3R()
{
    return innerRGBToYUV_8u_C3R;
}

YUVRow<const Kel8u*, Kel8u*> chooseRGBToYUV_8u_AC4R()
{
    return innerRGBToYUV_8u_AC4R;
}

YUVRow<const Kel8u* const*, Kel8u* const*> chooseRGBToYUV_8u_P3R()
{
    return innerRGBToYUV_8u_P3R;
}

YUVRow<const Kel8u*, Kel8u* const*> chooseRGBToYUV_8u_C3P3R()
{
    return innerRGBToYUV_8u_C3P3R;
}

YUVRow<const Kel8u*, Kel8u*> chooseYUVToRGB_8u_C3R()
{
    return innerYUVToRGB_8u_C3R;
}

YUVRow<const Kel8u*, Kel8u*> chooseYUVToRGB_8u_AC4R()
{
    return innerYUVToRGB_8u_AC4R;
}

YUVRow<const Kel8u* const*, Kel8u* const*> chooseYUVToRGB_8u_P3R()
{
    return innerYUVToRGB_8u_P3R;
}

YUVRow<const Kel8u* const*, Kel8u*> chooseYUVToRGB_8u_P3C3R()
{
    return innerYUVToRGB_8u_P3C3R;
}

} // namespace kel

#endif // KELCC_SIMD

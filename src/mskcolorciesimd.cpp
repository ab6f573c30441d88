// Vector rows of the 8-bit XYZ members, for every SIMD target.  Each output
// is (w0 * c0 + w1 * c1 + w2 * c2) >> 16 with the fixed-point weights: each
// weight splits as highPart * 65536 + lowPart, the low parts ride in 16-bit
// multiply-adds (c0 beside c1, c2 beside 0) and the high parts multiply the
// samples after the shift, since (s + 65536 h) >> 16 = (s >> 16) + h exactly.
// Every product is at most 32768 * 255, the sums stay inside 32 bits, and
// no pair holds -32768 twice, so the sums are the scalar ones; the results lie
// within -600..800 and the pack saturates them to 0..255, as the scalar
// kernels' chop and compares do.
#include "mskcolorciesimd.h"

#include <cstddef>
#include <cstdint>

#include "simd.h"

#if KELCC_SIMD

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "mskcolorciesimd.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include "simdops-inl.h"
#include "pairsimd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kel::cie {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
using kel::HWY_NAMESPACE::Halves;
using kel::HWY_NAMESPACE::InPixelOrder;
using kel::HWY_NAMESPACE::convertRow;
using kel::HWY_NAMESPACE::highPart;
using kel::HWY_NAMESPACE::lowPart;
using kel::HWY_NAMESPACE::multiplyAdd;
using kel::HWY_NAMESPACE::packBytes;
using kel::HWY_NAMESPACE::pairUp;
using kel::HWY_NAMESPACE::upperHalves;
using kel::HWY_NAMESPACE::weightPair;
using kel::HWY_NAMESPACE::widenBytes;

struct Weights {
    std::int32_t w0, w1, w2;
};

// One output channel of the pixels of `pairs01` (c0, c1) and `pairs2` (c2, 0).
template <const Weights& W, class DI16>
HWY_INLINE hn::Vec<DI16> channel(DI16 di16, const Halves<DI16>& pairs01, const Halves<DI16>& pairs2,
                                 hn::Vec<DI16> c0, hn::Vec<DI16> c1, hn::Vec<DI16> c2)
{
    const hn::Repartition<std::int32_t, DI16> di32;
    constexpr std::int32_t weights01 = weightPair(lowPart(W.w0), lowPart(W.w1)), weights2 = weightPair(lowPart(W.w2), 0);
    const auto sum = [&](auto p01, auto p2) {
        return multiplyAdd(di32, p01, weights01, multiplyAdd(di32, p2, weights2, hn::Zero(di32)));
    };
    auto v = upperHalves(di16, sum(pairs01.lower, pairs2.lower), sum(pairs01.upper, pairs2.upper));
    const auto high = [&](std::int32_t h, hn::Vec<DI16> c) {
        if (h != 0) v = hn::Add(v, hn::Mul(c, hn::Set(di16, static_cast<std::int16_t>(h))));
    };
    high(highPart(W.w0), c0);
    high(highPart(W.w1), c1);
    high(highPart(W.w2), c2);
    return v;
}

template <const Weights& A, const Weights& B, const Weights& C>
struct Matrix {
    template <class DU8, class V = hn::Vec<DU8>>
    static HWY_INLINE void convert(DU8 du8, V in0, V in1, V in2, V& out0, V& out1, V& out2)
    {
        using DI16 = hn::Repartition<std::int16_t, DU8>;
        const DI16 di16;
        const auto zero = hn::Zero(di16);
        const Halves<DI16> c0 = widenBytes(di16, in0), c1 = widenBytes(di16, in1), c2 = widenBytes(di16, in2);
        const auto half = [&](auto h0, auto h1, auto h2, auto& o0, auto& o1, auto& o2) {
            const auto p01 = pairUp(di16, h0, h1), p2 = pairUp(di16, h2, zero);
            o0 = channel<A>(di16, p01, p2, h0, h1, h2);
            o1 = channel<B>(di16, p01, p2, h0, h1, h2);
            o2 = channel<C>(di16, p01, p2, h0, h1, h2);
        };
        hn::Vec<DI16> l0, u0, l1, u1, l2, u2;
        half(c0.lower, c1.lower, c2.lower, l0, l1, l2);
        half(c0.upper, c1.upper, c2.upper, u0, u1, u2);
        out0 = packBytes(du8, l0, u0);
        out1 = packBytes(du8, l1, u1);
        out2 = packBytes(du8, l2, u2);
    }
};

constexpr Weights kToX{27030, 23434, 11824}, kToY{13937, 46868, 4729}, kToZ{1267, 7811, 62274};
constexpr Weights kToR{212368, -100738, -32671}, kToG{-63521, 122944, 2723}, kToB{3646, -13372, 69291};
using Forward = Matrix<kToX, kToY, kToZ>;
using Inverse = Matrix<kToR, kToG, kToB>;

void rgbToXYZ3(const Kel8u* s, Kel8u* d, int w) { convertRow<InPixelOrder<3>, InPixelOrder<3>, Forward, rgbToXYZRow8u3>(s, d, w); }
void rgbToXYZ4(const Kel8u* s, Kel8u* d, int w) { convertRow<InPixelOrder<4>, InPixelOrder<4>, Forward, rgbToXYZRow8u4>(s, d, w); }
void xyzToRGB3(const Kel8u* s, Kel8u* d, int w) { convertRow<InPixelOrder<3>, InPixelOrder<3>, Inverse, xyzToRGBRow8u3>(s, d, w); }
void xyzToRGB4(const Kel8u* s, Kel8u* d, int w) { convertRow<InPixelOrder<4>, InPixelOrder<4>, Inverse, xyzToRGBRow8u4>(s, d, w); }

} // namespace HWY_NAMESPACE
} // namespace kel::cie
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kel::cie {

HWY_EXPORT(rgbToXYZ3);
HWY_EXPORT(rgbToXYZ4);
HWY_EXPORT(xyzToRGB3);
HWY_EXPORT(xyzToRGB4);

Row8u chooseRow8u(CieVectorRow which, int pixelStride)
{
    detectSimdTargets();
    switch (which) {
    case CieVectorRow::RGBToXYZ8u: return pixelStride == 3 ? &HWY_DYNAMIC_DISPATCH(rgbToXYZ3) : &HWY_DYNAMIC_DISPATCH(rgbToXYZ4);
    case CieVectorRow::XYZToRGB8u: return pixelStride == 3 ? &HWY_DYNAMIC_DISPATCH(xyzToRGB3) : &HWY_DYNAMIC_DISPATCH(xyzToRGB4);
    default: return nullptr;
    }
}

} // namespace kel::cie
#endif // HWY_ONCE

#else // KELCC_SIMD

namespace kel::cie {

Row8u chooseRow8u(CieVectorRow, int)
{
    return nullptr;
}

} // namespace kel::cie

#endif // KELCC_SIMD

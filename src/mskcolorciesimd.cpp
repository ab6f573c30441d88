// Vector rows of the 8-bit XYZ members, for every SIMD target.  Each output
// is (w0 * c0 + w1 * c1 + w2 * c2) >> 16 with the fixed-point weights: each
// weight splits as highPart * 65536 + lowPart, the low parts ride in 16-bit
// multiply-adds (c0 beside c1, c2 beside 0) and the high parts multiply the
// samples after the shift, since (s + 65536 h) >> 16 = (s >> 16) + h exactly.
// Every product is at most 32768 * 255, the sums stay inside 32 bits, and
// no pair holds -32768 twice, so the sums are the scalar ones; the results lie
// within -600..800 and the pack saturates them to 0..255, as the scalar
// kernels' chop and compares do.
//
// Floats: the scalar kernels sum (w0 c0 + w1 c1) + w2 c2 in the extended
// type and round to a float at the store, with clamps to 0..1 where the
// member has them, decided on the extended sum.  In doubles each product of
// two floats is exact, and the two additions err by at most 2^-53 of their
// results, so the double sum lies within E = 2^-51 (|w0 c0| + |w1 c1| +
// |w2 c2|) of the extended one (whose own two roundings are 2^-11 of that).
// Where s - 2E and s + 2E round to the same float (and lie on one side of
// each clamp bound), the extended sum rounds to it too.  Where both additions
// were exact (Knuth's two-sum errors zero) the double sum is the extended sum
// itself, decided even on a float midpoint.  Anything else, NaN and the
// infinities included, goes to the scalar kernel.
#include "mskcolorciesimd.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include "simd.h"

#if KELCC_SIMD

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "mskcolorciesimd.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include <hwy/contrib/math/math-inl.h>

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

template <int Pitch, class M, auto Tail>
std::int64_t matrixRow(const Kel8u* s, Kel8u* d, int w)
{
    convertRow<InPixelOrder<Pitch>, InPixelOrder<Pitch>, M, Tail>(s, d, w);
    return 0;
}

std::int64_t rgbToXYZ3(const Kel8u* s, Kel8u* d, int w) { return matrixRow<3, Forward, rgbToXYZRow8u3>(s, d, w); }
std::int64_t rgbToXYZ4(const Kel8u* s, Kel8u* d, int w) { return matrixRow<4, Forward, rgbToXYZRow8u4>(s, d, w); }
std::int64_t xyzToRGB3(const Kel8u* s, Kel8u* d, int w) { return matrixRow<3, Inverse, xyzToRGBRow8u3>(s, d, w); }
std::int64_t xyzToRGB4(const Kel8u* s, Kel8u* d, int w) { return matrixRow<4, Inverse, xyzToRGBRow8u4>(s, d, w); }

// ---- 8-bit YCC --------------------------------------------------------------------------------
//
// Forward: S = 4898 R + 9617 G + 1867 B by multiply-adds (R beside G, B beside
// 0), exact in 32 bits; S >> 10 (at most 4079) and (16384 B - S) >> 10,
// (16384 R - S) >> 10 (within -4096..4095) fit 16-bit lanes, where the
// 16-bit high multiply is the scalar kernel's (x * k) >> 16 with its floor.
// Y, C1 and C2 lie in 0..254 (so the low-8-bit keep is the value).
// Inverse: the offsets are the chroma centres times their weights, so
// R = (5564 Y + 7460 (C2 - 137)) >> 12 and B likewise from C1 by
// multiply-adds; G = (16 a - 794 (b >> 8) - 2084 (d >> 8)) >> 16 with b >> 8
// and d >> 8 (within -5536..3513) paired in 16-bit lanes and 16 a =
// 89024 Y = 65536 Y + 23488 Y, the 65536 Y added after the shift.  The pack
// saturates to 0..255 as chop does over its indices.
struct YCCForward {
    template <class DU8, class V = hn::Vec<DU8>>
    static HWY_INLINE void convert(DU8 du8, V r, V g, V b, V& y, V& c1, V& c2)
    {
        using DI16 = hn::Repartition<std::int16_t, DU8>;
        const DI16 di16;
        const hn::Repartition<std::int32_t, DU8> di32;
        const auto zero = hn::Zero(di16);
        const Halves<DI16> r16 = widenBytes(di16, r), g16 = widenBytes(di16, g), b16 = widenBytes(di16, b);
        const auto half = [&](auto rh, auto gh, auto bh, auto& yh, auto& c1h, auto& c2h) {
            const Halves<DI16> rg = pairUp(di16, rh, gh), b0 = pairUp(di16, bh, zero), r0 = pairUp(di16, rh, zero);
            const auto sum = [&](auto p01, auto p2) {
                return multiplyAdd(di32, p01, weightPair(4898, 9617), multiplyAdd(di32, p2, weightPair(1867, 0), hn::Zero(di32)));
            };
            const auto sLower = sum(rg.lower, b0.lower), sUpper = sum(rg.upper, b0.upper);
            const auto reduced = [&](auto lower, auto upper) {
                return hn::ReorderDemote2To(di16, hn::ShiftRight<10>(lower), hn::ShiftRight<10>(upper));
            };
            const auto difference = [&](const Halves<DI16>& c0) {
                return reduced(hn::Sub(hn::ShiftLeft<14>(hn::BitCast(di32, c0.lower)), sLower),
                               hn::Sub(hn::ShiftLeft<14>(hn::BitCast(di32, c0.upper)), sUpper));
            };
            yh = hn::MulHigh(reduced(sLower, sUpper), hn::Set(di16, 2921));
            c1h = hn::Add(hn::MulHigh(difference(b0), hn::Set(di16, 1789)), hn::Set(di16, 156));
            c2h = hn::Add(hn::MulHigh(difference(r0), hn::Set(di16, 2178)), hn::Set(di16, 137));
        };
        hn::Vec<DI16> yl, yu, c1l, c1u, c2l, c2u;
        half(r16.lower, g16.lower, b16.lower, yl, c1l, c2l);
        half(r16.upper, g16.upper, b16.upper, yu, c1u, c2u);
        y = packBytes(du8, yl, yu);
        c1 = packBytes(du8, c1l, c1u);
        c2 = packBytes(du8, c2l, c2u);
    }
};

struct YCCInverse {
    template <class DU8, class V = hn::Vec<DU8>>
    static HWY_INLINE void convert(DU8 du8, V y, V c1, V c2, V& r, V& g, V& b)
    {
        using DI16 = hn::Repartition<std::int16_t, DU8>;
        const DI16 di16;
        const hn::Repartition<std::int32_t, DU8> di32;
        const auto zero = hn::Zero(di16);
        const Halves<DI16> y16 = widenBytes(di16, y), c116 = widenBytes(di16, c1), c216 = widenBytes(di16, c2);
        const auto half = [&](auto yh, auto c1h, auto c2h, auto& rh, auto& gh, auto& bh) {
            // b = 9084 (C1 - 156) and d = 7460 (C2 - 137) exactly; b >> 8 and
            // d >> 8 as high multiplies of 128 (C1 - 156) by 18168 and of
            // 128 (C2 - 137) by 14920, all within 16 bits.
            const auto u = hn::Sub(c1h, hn::Set(di16, 156)), v = hn::Sub(c2h, hn::Set(di16, 137));
            const auto bb = hn::MulHigh(hn::ShiftLeft<7>(u), hn::Set(di16, 18168));
            const auto dd = hn::MulHigh(hn::ShiftLeft<7>(v), hn::Set(di16, 14920));
            const Halves<DI16> yv = pairUp(di16, yh, v), yu = pairUp(di16, yh, u), bd = pairUp(di16, bb, dd),
                               y0 = pairUp(di16, yh, zero);
            const auto shifted12 = [&](const Halves<DI16>& pairs, std::int32_t weights) {
                return hn::ReorderDemote2To(di16, hn::ShiftRight<12>(multiplyAdd(di32, pairs.lower, weights, hn::Zero(di32))),
                                            hn::ShiftRight<12>(multiplyAdd(di32, pairs.upper, weights, hn::Zero(di32))));
            };
            rh = shifted12(yv, weightPair(5564, 7460));
            bh = shifted12(yu, weightPair(5564, 9084));
            const auto green = [&](auto bdp, auto y0p) {
                return hn::ShiftRight<16>(multiplyAdd(di32, bdp, weightPair(-794, -2084),
                                                      multiplyAdd(di32, y0p, weightPair(23488, 0), hn::Zero(di32))));
            };
            gh = hn::Add(hn::ReorderDemote2To(di16, green(bd.lower, y0.lower), green(bd.upper, y0.upper)), yh);
        };
        hn::Vec<DI16> rl, ru, gl, gu, bl, bu;
        half(y16.lower, c116.lower, c216.lower, rl, gl, bl);
        half(y16.upper, c116.upper, c216.upper, ru, gu, bu);
        r = packBytes(du8, rl, ru);
        g = packBytes(du8, gl, gu);
        b = packBytes(du8, bl, bu);
    }
};

std::int64_t rgbToYCC3(const Kel8u* s, Kel8u* d, int w) { return matrixRow<3, YCCForward, rgbToYCCRow8u3>(s, d, w); }
std::int64_t rgbToYCC4(const Kel8u* s, Kel8u* d, int w) { return matrixRow<4, YCCForward, rgbToYCCRow8u4>(s, d, w); }
std::int64_t yccToRGB3(const Kel8u* s, Kel8u* d, int w) { return matrixRow<3, YCCInverse, yccToRGBRow8u3>(s, d, w); }
std::int64_t yccToRGB4(const Kel8u* s, Kel8u* d, int w) { return matrixRow<4, YCCInverse, yccToRGBRow8u4>(s, d, w); }

// ---- floats ---------------------------------------------------------------------------------

using DD = hn::ScalableTag<double>;
using VD = hn::Vec<DD>;
using MD = hn::Mask<DD>;

struct FloatRow {
    Kel32f w0, w1, w2;
    bool clamped;
};

HWY_INLINE VD sumError(VD a, VD b, VD sum)
{
    const VD bPart = hn::Sub(sum, a);
    return hn::Add(hn::Sub(a, hn::Sub(sum, bPart)), hn::Sub(b, bPart));
}

// One output of a vector of pixels: the float result, and the lanes the
// bound leaves undecided added to `refuse`.  The two-sum test runs only for
// a vector with an undecided lane.
template <class DF>
HWY_INLINE hn::Vec<DF> floatChannel(DF df, const FloatRow& w, VD c0, VD c1, VD c2, MD& refuse)
{
    const DD dd;
    const VD p0 = hn::Mul(hn::Set(dd, w.w0), c0), p1 = hn::Mul(hn::Set(dd, w.w1), c1), p2 = hn::Mul(hn::Set(dd, w.w2), c2);
    const VD s1 = hn::Add(p0, p1), s = hn::Add(s1, p2);
    const VD e2 = hn::Mul(hn::Add(hn::Add(hn::Abs(p0), hn::Abs(p1)), hn::Abs(p2)), hn::Set(dd, 0x1p-50));
    const VD zero = hn::Zero(dd), one = hn::Set(dd, 1.0);
    const VD below = hn::Sub(s, e2), above = hn::Add(s, e2);
    VD result = s;
    MD decided = hn::Eq(hn::PromoteTo(dd, hn::DemoteTo(df, below)), hn::PromoteTo(dd, hn::DemoteTo(df, above)));
    if (w.clamped) {
        result = hn::IfThenElse(hn::Lt(s, zero), zero, hn::IfThenElse(hn::Ge(s, one), one, s));
        // Both ends inside 0..1, or both clamped to one end: the extended
        // sum clamps alike.
        const MD inside = hn::And(hn::Ge(below, zero), hn::Lt(above, one));
        const MD clampedAway = hn::Or(hn::Lt(above, zero), hn::Ge(below, one));
        decided = hn::Or(hn::And(inside, decided), clampedAway);
    }
    MD undecided = hn::Not(decided);
    if (!hn::AllFalse(dd, undecided)) {
        const MD exact = hn::And(hn::Eq(sumError(p0, p1, s1), zero), hn::Eq(sumError(s1, p2, s), zero));
        undecided = hn::AndNot(exact, undecided);
    }
    // A non-finite bound is never decided (a NaN sum fails every test above).
    const MD finite = hn::Lt(e2, hn::Set(dd, std::numeric_limits<double>::infinity()));
    refuse = hn::Or(refuse, hn::Or(undecided, hn::Not(finite)));
    return hn::DemoteTo(df, result);
}

HWY_INLINE std::uint64_t maskBits(MD m)
{
    std::uint8_t bytes[8] = {};
    hn::StoreMaskBits(DD(), m, bytes);
    std::uint64_t bits;
    std::memcpy(&bits, bytes, sizeof bits);
    return bits;
}

// A vector step's three results stored, the fourth channel of a four-channel
// destination kept; where the bound refused a lane, the step's source is set
// aside first (the store may overwrite it in place) and `fix` hands those
// lanes to the scalar kernel.  Returns the refused lanes.
template <int Pitch, class D, class V, class Fix>
HWY_INLINE std::int64_t storeStep(D d, MD refuse, V a, V b, V c, V alpha, V o0, V o1, V o2, hn::TFromD<D>* dst,
                                  const Fix& fix)
{
    const bool anyRefused = !hn::AllFalse(DD(), refuse);
    HWY_ALIGN hn::TFromD<D> kept[4 * 16];
    if (anyRefused) {
        if constexpr (Pitch == 3) hn::StoreInterleaved3(a, b, c, d, kept);
        else hn::StoreInterleaved4(a, b, c, alpha, d, kept);
    }
    if constexpr (Pitch == 3) {
        hn::StoreInterleaved3(o0, o1, o2, d, dst);
    } else {
        V k0, k1, k2, keptAlpha;
        hn::LoadInterleaved4(d, dst, k0, k1, k2, keptAlpha);
        hn::StoreInterleaved4(o0, o1, o2, keptAlpha, d, dst);
    }
    if (!anyRefused) return 0;
    fix(kept, maskBits(refuse));
    return static_cast<std::int64_t>(hn::CountTrue(DD(), refuse));
}


template <bool Forward, int Pitch>
std::int64_t floatRow(const Kel32f* src, Kel32f* dst, int width)
{
    static constexpr FloatRow kForward[3] = {{0.412453f, 0.35758f, 0.180423f, false},
                                             {0.212671f, 0.71516f, 0.072169f, false},
                                             {0.019334f, 0.119193f, 0.950227f, true}};
    static constexpr FloatRow kInverse[3] = {{3.240479f, -1.53715f, -0.498535f, true},
                                             {-0.969256f, 1.875991f, 0.041556f, true},
                                             {0.055648f, -0.204043f, 1.057311f, true}};
    const FloatRow* rows = Forward ? kForward : kInverse;
    const DD dd;
    const hn::Rebind<float, DD> df;
    const int lanes = static_cast<int>(hn::Lanes(dd));
    std::int64_t refusedCount = 0;
    int x = 0;
    for (; x + lanes <= width; x += lanes) {
        hn::Vec<decltype(df)> a, b, c, d = hn::Zero(df);
        if constexpr (Pitch == 3) hn::LoadInterleaved3(df, src + 3 * x, a, b, c);
        else hn::LoadInterleaved4(df, src + 4 * x, a, b, c, d);
        const VD c0 = hn::PromoteTo(dd, a), c1 = hn::PromoteTo(dd, b), c2 = hn::PromoteTo(dd, c);
        MD refuse = hn::Lt(c0, c0);  // no lane yet
        const auto o0 = floatChannel(df, rows[0], c0, c1, c2, refuse);
        const auto o1 = floatChannel(df, rows[1], c0, c1, c2, refuse);
        const auto o2 = floatChannel(df, rows[2], c0, c1, c2, refuse);
        refusedCount += storeStep<Pitch>(df, refuse, a, b, c, d, o0, o1, o2, dst + Pitch * x,
                                         [&](const Kel32f* kept, std::uint64_t lanes) { xyzPixels32f(Forward, kept, dst + Pitch * x, lanes, Pitch); });
    }
    if (x < width) xyzPixels32f(Forward, src + Pitch * x, dst + Pitch * x, (std::uint64_t{1} << (width - x)) - 1, Pitch);
    return refusedCount;
}

std::int64_t rgbToXYZ32f3(const Kel32f* s, Kel32f* d, int w) { return floatRow<true, 3>(s, d, w); }
std::int64_t rgbToXYZ32f4(const Kel32f* s, Kel32f* d, int w) { return floatRow<true, 4>(s, d, w); }
std::int64_t xyzToRGB32f3(const Kel32f* s, Kel32f* d, int w) { return floatRow<false, 3>(s, d, w); }
std::int64_t xyzToRGB32f4(const Kel32f* s, Kel32f* d, int w) { return floatRow<false, 4>(s, d, w); }

// ---- 8-bit RGB to LUV ----------------------------------------------------------------------
//
// X, Y and Z are sums of products of floats (lowest bit at least 2^-29) and
// bytes, below 2^9: exact in doubles as in the extended type, and so is
// c + Y and the coded luminance Y8 = trunc(c + Y).  Then Xn, Yn, Zn, d, u and
// v each take one rounding per operation on positive terms (u at most 4), so
// u - un and v - vn are within 2^-48 of the extended values; times the
// coded-L factor (at most 937, exact) and plus the offset, U and V are within
// 2^-36.  A U or V within 2^-30 of an integer goes to the scalar kernel.
template <int Pitch>
std::int64_t luvRow8u(const Kel8u* src, Kel8u* dst, int width)
{
    const DD dd;
    const hn::Rebind<std::int32_t, DD> di;
    const hn::Rebind<std::uint8_t, DD> d8;
    const int lanes = static_cast<int>(hn::Lanes(dd));
    const auto weight = [&](float w) { return hn::Set(dd, static_cast<double>(w)); };
    const VD xr = weight(0.412453f), xg = weight(0.35758f), xb = weight(0.180423f);
    const VD yr = weight(0.212671f), yg = weight(0.71516f), yb = weight(0.072169f);
    const VD zr = weight(0.019334f), zg = weight(0.119193f), zb = weight(0.950227f);
    const VD c = weight(0.4999989867210388f), k255 = hn::Set(dd, 255.0);
    const VD un = weight(0.197839f), vn = weight(0.468342f);
    const VD uScale = weight(3.6723163f), vScale = weight(4.961832f);
    const VD uOffset = weight(97.02543f), vOffset = weight(136.75955f);
    const VD guard = hn::Set(dd, 0x1p-30), zero = hn::Zero(dd);
    std::int64_t refusedCount = 0;
    int x = 0;
    for (; x + lanes <= width; x += lanes) {
        hn::Vec<decltype(d8)> r8, g8, b8, a8 = hn::Zero(d8);
        if constexpr (Pitch == 3) hn::LoadInterleaved3(d8, src + 3 * x, r8, g8, b8);
        else hn::LoadInterleaved4(d8, src + 4 * x, r8, g8, b8, a8);
        const VD R = hn::PromoteTo(dd, hn::PromoteTo(di, r8)), G = hn::PromoteTo(dd, hn::PromoteTo(di, g8)),
                 B = hn::PromoteTo(dd, hn::PromoteTo(di, b8));
        const VD X = hn::Add(hn::Add(hn::Mul(xr, R), hn::Mul(xg, G)), hn::Mul(xb, B));
        const VD Y = hn::Add(hn::Add(hn::Mul(yr, R), hn::Mul(yg, G)), hn::Mul(yb, B));
        const VD Z = hn::Add(hn::Add(hn::Mul(zr, R), hn::Mul(zg, G)), hn::Mul(zb, B));
        const auto y8 = hn::DemoteTo(di, hn::Add(c, Y));  // truncates; below 256
        const VD L8 = hn::PromoteTo(dd, hn::GatherIndex(di, codedL, y8));
        const VD Xn = hn::Div(X, k255), Yn = hn::Div(Y, k255), Zn = hn::Div(Z, k255);
        const VD d = hn::Add(hn::Add(hn::Mul(hn::Set(dd, 3.0), Zn), Xn), hn::Mul(hn::Set(dd, 15.0), Yn));
        const MD dark = hn::Lt(hn::Add(c, Y), hn::Set(dd, 1.0));  // Y8 = 0
        const VD safeD = hn::IfThenElse(dark, hn::Set(dd, 1.0), d);
        const VD u = hn::IfThenZeroElse(dark, hn::Div(hn::Mul(hn::Set(dd, 4.0), Xn), safeD));
        const VD v = hn::IfThenZeroElse(dark, hn::Div(hn::Mul(hn::Set(dd, 9.0), Yn), safeD));
        const VD U = hn::Add(hn::Mul(hn::Mul(uScale, L8), hn::Sub(u, un)), uOffset);
        const VD V = hn::Add(hn::Mul(hn::Mul(L8, vScale), hn::Sub(v, vn)), vOffset);
        const auto near = [&](VD w) { return hn::Lt(hn::Abs(hn::Sub(w, hn::Round(w))), guard); };
        const MD refuse = hn::Or(near(U), near(V));
        const auto byte = [&](VD w) { return hn::DemoteTo(d8, hn::DemoteTo(di, hn::Max(w, zero))); };
        const auto l8 = byte(L8), u8 = byte(U), v8 = byte(V);
        refusedCount += storeStep<Pitch>(d8, refuse, r8, g8, b8, a8, l8, u8, v8, dst + Pitch * x,
                                         [&](const Kel8u* kept, std::uint64_t lanes) { luvPixels8u(true, kept, dst + Pitch * x, lanes, Pitch); });
    }
    if (x < width) luvPixels8u(true, src + Pitch * x, dst + Pitch * x, (std::uint64_t{1} << (width - x)) - 1, Pitch);
    return refusedCount;
}

std::int64_t rgbToLUV3(const Kel8u* s, Kel8u* d, int w) { return luvRow8u<3>(s, d, w); }
std::int64_t rgbToLUV4(const Kel8u* s, Kel8u* d, int w) { return luvRow8u<4>(s, d, w); }

// ---- LUV to RGB, 8u and 32f ------------------------------------------------------------------
//
// The extended chain in doubles, one rounding per operation (every input is
// exact in a double: a byte's coding of L, U and V takes two more roundings,
// covered below).  L is positive past the dark test, so 16 + L, t, y, Y and q
// carry relative errors of at most 10 * 2^-53.  The two sums that may cancel,
// den = V / q + vn and w = U / q + un, have condition numbers
// kd = (|V / q| + vn) / |den| and kw = (|U / q| + un) / |w|: den is within
// (3 kd + 1) 2^-53 of its extended value relatively, A = Y / den within
// (3 kd + 12) 2^-53, w within (3 kw + 1) 2^-53 and X within
// (3 kd + 3 kw + 15) 2^-53; Z, a sum of 3A, -5Y and -X/3, is within
// (3 kd + 3 kw + 20) 2^-53 (3 |A| + 5 |Y| + |X|), and R, G and B within
// (3 kd + 3 kw + 25) 2^-53 M of the extended sums, M = 4 |X| + 5 |Y| + 2 |A| +
// |Z|, plus 1 for the addend c of the integer sums; the extended type's own
// errors are 2^-11 of that.  So the guard is delta = 2^-49 (kd + kw + 9) M,
// twice what is needed; a condition number above 2^20 goes to the scalar
// kernel.  The integer results truncate and clamp at integers: an R, G or B
// within delta of an integer goes to the scalar kernel.  The float results
// clamp at 0 and 1 and round to a float: both ends of R -+ delta must clamp
// alike and round to one float.  NaN and infinities fail every test and go
// to the scalar kernel.
template <typename T, int Pitch>
std::int64_t luvToRGBRow(const T* src, T* dst, int width)
{
    constexpr bool bytes = std::is_same_v<T, Kel8u>;
    const DD dd;
    const hn::Rebind<std::int32_t, DD> di;
    const hn::Rebind<T, DD> dt;
    const int lanes = static_cast<int>(hn::Lanes(dd));
    const auto f = [&](float w) { return hn::Set(dd, static_cast<double>(w)); };
    const auto n = [&](double w) { return hn::Set(dd, w); };
    const VD zero = hn::Zero(dd), one = n(1), k255 = n(255);
    // The integer kernels' own white point, and 1.057311 as a double there.
    const VD un = bytes ? f(0.19783941f) : f(0.197839f), vn = bytes ? f(0.4683422f) : f(0.468342f);
    const VD blueZ = bytes ? n(1.057311) : f(1.057311f), c = bytes ? f(0.4999989867210388f) : zero;
    const VD cubicL = f(7.9996247f), kappa = f(903.3f), darkL = f(0.00009f);
    const VD guard = n(0x1p-49), worstCondition = n(0x1p20);
    std::int64_t refusedCount = 0;
    int x = 0;
    for (; x + lanes <= width; x += lanes) {
        hn::Vec<decltype(dt)> l8, u8, v8, a8 = hn::Zero(dt);
        if constexpr (Pitch == 3) hn::LoadInterleaved3(dt, src + 3 * x, l8, u8, v8);
        else hn::LoadInterleaved4(dt, src + 4 * x, l8, u8, v8, a8);
        VD L, U, V;
        if constexpr (bytes) {
            L = hn::Div(hn::Mul(hn::PromoteTo(dd, hn::PromoteTo(di, l8)), n(100)), k255);
            U = hn::Sub(hn::Div(hn::Mul(hn::PromoteTo(dd, hn::PromoteTo(di, u8)), n(354)), k255), n(134));
            V = hn::Sub(hn::Div(hn::Mul(hn::PromoteTo(dd, hn::PromoteTo(di, v8)), n(262)), k255), n(140));
        } else {
            L = hn::PromoteTo(dd, l8);
            U = hn::PromoteTo(dd, u8);
            V = hn::PromoteTo(dd, v8);
        }
        const MD dark = hn::Lt(L, darkL);  // exact: L and the threshold are doubles of floats or codes far from it
        const VD t = hn::Div(hn::Add(n(16), L), n(116));
        const VD y = hn::IfThenElse(hn::Ge(L, cubicL), hn::Mul(t, hn::Mul(t, t)), hn::Div(L, kappa));
        const VD Y = bytes ? hn::Mul(y, k255) : y;
        const VD q = hn::IfThenElse(dark, one, hn::Mul(L, n(13)));
        const VD vq = hn::Div(V, q), uq = hn::Div(U, q);
        const VD den = hn::Add(vq, vn), w = hn::Add(uq, un);
        const VD A = hn::Div(Y, den);
        const VD X = hn::Mul(hn::Mul(n(2.25), A), w);
        const VD Z = hn::Sub(hn::Sub(hn::Mul(A, n(3)), hn::Mul(n(5), Y)), hn::Div(X, n(3)));
        VD R, G, B;
        if constexpr (bytes) {
            R = hn::Add(hn::Add(hn::Mul(f(3.240479f), X), hn::Add(c, hn::Mul(f(-1.53715f), Y))), hn::Mul(f(-0.498535f), Z));
            G = hn::Add(hn::Add(hn::Mul(f(-0.969256f), X), hn::Add(hn::Mul(f(1.875991f), Y), c)), hn::Mul(f(0.041556f), Z));
            B = hn::Add(hn::Mul(blueZ, Z), hn::Add(hn::Add(hn::Mul(f(0.055648f), X), hn::Mul(f(-0.204043f), Y)), c));
        } else {
            R = hn::Add(hn::Add(hn::Mul(f(3.240479f), X), hn::Mul(f(-1.53715f), Y)), hn::Mul(f(-0.498535f), Z));
            G = hn::Add(hn::Mul(f(0.041556f), Z), hn::Add(hn::Mul(f(-0.969256f), X), hn::Mul(f(1.875991f), Y)));
            B = hn::Add(hn::Add(hn::Mul(f(0.055648f), X), hn::Mul(f(-0.204043f), Y)), hn::Mul(blueZ, Z));
        }
        const VD M = hn::Add(hn::Add(hn::Mul(n(4), hn::Abs(X)), hn::Mul(n(5), hn::Abs(Y))),
                             hn::Add(hn::Add(hn::Mul(n(2), hn::Abs(A)), hn::Abs(Z)), bytes ? one : zero));
        const VD kd = hn::Div(hn::Add(hn::Abs(vq), vn), hn::Abs(den)), kw = hn::Div(hn::Add(hn::Abs(uq), un), hn::Abs(w));
        const VD delta = hn::Mul(hn::Mul(M, guard), hn::Add(hn::Add(kd, kw), n(9)));
        // Not below the worst condition: NaN counts as cancelled too.
        MD undecided = hn::Not(hn::And(hn::Lt(kd, worstCondition), hn::Lt(kw, worstCondition)));
        hn::Vec<decltype(dt)> r, g, b;
        if constexpr (bytes) {
            const auto nearInteger = [&](VD v) { return hn::Not(hn::Ge(hn::Abs(hn::Sub(v, hn::Round(v))), delta)); };
            undecided = hn::Or(undecided, hn::Or(nearInteger(R), hn::Or(nearInteger(G), nearInteger(B))));
            const auto byte = [&](VD v) {
                const VD clamped = hn::IfThenZeroElse(dark, hn::Min(hn::Max(v, zero), k255));
                return hn::DemoteTo(dt, hn::DemoteTo(di, clamped));
            };
            r = byte(R);
            g = byte(G);
            b = byte(B);
        } else {
            const auto unit = [&](VD v) {
                const VD below = hn::Sub(v, delta), above = hn::Add(v, delta);
                const MD inside = hn::And(hn::Ge(below, zero), hn::Lt(above, one));
                const MD rounded = hn::Eq(hn::PromoteTo(dd, hn::DemoteTo(dt, below)), hn::PromoteTo(dd, hn::DemoteTo(dt, above)));
                const MD clampedAway = hn::Or(hn::Lt(above, zero), hn::Ge(below, one));
                undecided = hn::Or(undecided, hn::Not(hn::Or(hn::And(inside, rounded), clampedAway)));
                const VD clamped = hn::IfThenElse(hn::Lt(v, zero), zero, hn::IfThenElse(hn::Ge(v, one), one, v));
                return hn::DemoteTo(dt, hn::IfThenZeroElse(dark, clamped));
            };
            r = unit(R);
            g = unit(G);
            b = unit(B);
        }
        const MD refuse = hn::AndNot(dark, undecided);
        refusedCount += storeStep<Pitch>(dt, refuse, l8, u8, v8, a8, r, g, b, dst + Pitch * x,
                                         [&](const T* kept, std::uint64_t lanes) { luvPixels(kept, dst + Pitch * x, lanes, Pitch); });
    }
    if (x < width) luvPixels(src + Pitch * x, dst + Pitch * x, (std::uint64_t{1} << (width - x)) - 1, Pitch);
    return refusedCount;
}

std::int64_t luvToRGB3(const Kel8u* s, Kel8u* d, int w) { return luvToRGBRow<Kel8u, 3>(s, d, w); }
std::int64_t luvToRGB4(const Kel8u* s, Kel8u* d, int w) { return luvToRGBRow<Kel8u, 4>(s, d, w); }
std::int64_t luvToRGB32f3(const Kel32f* s, Kel32f* d, int w) { return luvToRGBRow<Kel32f, 3>(s, d, w); }
std::int64_t luvToRGB32f4(const Kel32f* s, Kel32f* d, int w) { return luvToRGBRow<Kel32f, 4>(s, d, w); }

// ---- float RGB to LUV ---------------------------------------------------------------------------
//
// The sums X, Y, Z of exact products, in doubles within 2^-51 M of the
// extended ones (M the sum of the products' sizes; two roundings each).  The
// branch Y <= y0 is decided where Y is farther than 2^-50 M from y0; past it
// the extended kernel rounds X, Y, Z to floats, decided where their ends
// -+ 2^-50 M round to one float, and from there both work on the same floats.
// The power Y^p is exp(p log Y) with the vector math library's log and exp
// (4 and 1 ulp; |p log Y| < 1.6), within 2^-47 of the C library's pow
// relatively, so L = 116 Y^p - 16 (at least 8 there) is within
// E_L = 2^-43 |L|; on the linear branch L = k Y within k 2^-50 M_Y + 2^-52 |L|.
// d = 3Z + (15Y + X) has the condition number kappa = (3 |Z| + 15 |Y| + |X| +
// the sums' own error sizes) / |d|, and u = 4X / d and v = 9Y / d are within
// (kappa + 4) 2^-51 relatively, u - un within ((kappa + 4) |u| + un +
// |u - un|) 2^-51; U = 13 L (u - un) is then within
// 13 (E_L + 2^-50 |L|) ((kappa + 4) |u| + un + |u - un|), V likewise.  Each of
// L, U, V is decided where its ends -+ twice its bound round to one float; a
// zero Y on the linear branch is trusted only where the sum was exact (two-
// sum), since it turns the chromaticity off.  NaN and infinities go to the
// scalar kernel.
template <int Pitch>
std::int64_t luvRow32f(const Kel32f* src, Kel32f* dst, int width)
{
    const DD dd;
    const hn::Rebind<float, DD> df;
    const int lanes = static_cast<int>(hn::Lanes(dd));
    const auto f = [&](float w) { return hn::Set(dd, static_cast<double>(w)); };
    const auto n = [&](double w) { return hn::Set(dd, w); };
    const VD zero = hn::Zero(dd), inf = n(std::numeric_limits<double>::infinity());
    const VD un = f(0.197839f), vn = f(0.468342f), yJoin = f(0.008856f), kappaL = f(903.3f);
    std::int64_t refusedCount = 0;
    int x = 0;
    // Both ends of v -+ e round to one float (a NaN or infinite bound never).
    const auto oneFloat = [&](VD v, VD e) {
        return hn::And(hn::Eq(hn::PromoteTo(dd, hn::DemoteTo(df, hn::Sub(v, e))), hn::PromoteTo(dd, hn::DemoteTo(df, hn::Add(v, e)))),
                       hn::Lt(e, inf));
    };
    for (; x + lanes <= width; x += lanes) {
        hn::Vec<decltype(df)> a, b, c, alpha = hn::Zero(df);
        if constexpr (Pitch == 3) hn::LoadInterleaved3(df, src + 3 * x, a, b, c);
        else hn::LoadInterleaved4(df, src + 4 * x, a, b, c, alpha);
        const VD R = hn::PromoteTo(dd, a), G = hn::PromoteTo(dd, b), B = hn::PromoteTo(dd, c);
        const VD xr = hn::Mul(f(0.412453f), R), xg = hn::Mul(f(0.35758f), G), xb = hn::Mul(f(0.180423f), B);
        const VD yr = hn::Mul(f(0.212671f), R), yg = hn::Mul(f(0.71516f), G), yb = hn::Mul(f(0.072169f), B);
        const VD zr = hn::Mul(f(0.019334f), R), zg = hn::Mul(f(0.119193f), G), zb = hn::Mul(f(0.950227f), B);
        const VD X = hn::Add(hn::Add(xr, xg), xb);
        const VD yrg = hn::Add(yr, yg), Y = hn::Add(yb, yrg);
        const VD Z = hn::Add(hn::Add(zg, zr), zb);
        const VD Mx = hn::Add(hn::Add(hn::Abs(xr), hn::Abs(xg)), hn::Abs(xb));
        const VD My = hn::Add(hn::Add(hn::Abs(yr), hn::Abs(yg)), hn::Abs(yb));
        const VD Mz = hn::Add(hn::Add(hn::Abs(zr), hn::Abs(zg)), hn::Abs(zb));
        const VD e50 = n(0x1p-50);
        const MD linear = hn::Le(Y, yJoin);
        MD decided = hn::Gt(hn::Abs(hn::Sub(Y, yJoin)), hn::Mul(My, e50));
        // Past the join: X, Y, Z as floats.
        decided = hn::And(decided, hn::Or(linear, hn::And(hn::And(oneFloat(X, hn::Mul(Mx, e50)), oneFloat(Y, hn::Mul(My, e50))),
                                                          oneFloat(Z, hn::Mul(Mz, e50)))));
        const VD Xf = hn::PromoteTo(dd, hn::DemoteTo(df, X)), Yf = hn::PromoteTo(dd, hn::DemoteTo(df, Y)),
                 Zf = hn::PromoteTo(dd, hn::DemoteTo(df, Z));
        const VD Xu = hn::IfThenElse(linear, X, Xf), Yu = hn::IfThenElse(linear, Y, Yf), Zu = hn::IfThenElse(linear, Z, Zf);
        const VD power = hn::Exp(dd, hn::Mul(n(0.3333333432674408), hn::Log(dd, hn::Max(Yf, yJoin))));
        const VD L = hn::IfThenElse(linear, hn::Mul(kappaL, Y), hn::Sub(hn::Mul(n(116), power), n(16)));
        const VD eL = hn::IfThenElse(linear, hn::Add(hn::Mul(hn::Mul(kappaL, My), n(0x1p-50)), hn::Mul(hn::Abs(L), n(0x1p-52))),
                                     hn::Mul(hn::Abs(L), n(0x1p-43)));
        // Chromaticity, off for a zero Y on the linear branch.
        const MD exactY = hn::And(hn::Eq(sumError(yr, yg, yrg), zero), hn::Eq(sumError(yb, yrg, Y), zero));
        const MD dark = hn::And(linear, hn::Eq(Y, zero));
        decided = hn::And(decided, hn::Or(hn::Not(dark), exactY));
        const VD d = hn::Add(hn::Mul(n(3), Zu), hn::Add(hn::Mul(n(15), Yu), Xu));
        const VD safeD = hn::IfThenElse(dark, n(1), d);
        const VD u = hn::IfThenZeroElse(dark, hn::Div(hn::Mul(n(4), Xu), safeD));
        const VD v = hn::IfThenZeroElse(dark, hn::Div(hn::Mul(n(9), Yu), safeD));
        const VD size = hn::Add(hn::Add(hn::Mul(n(3), hn::Add(hn::Abs(Zu), Mz)), hn::Mul(n(15), hn::Add(hn::Abs(Yu), My))),
                                hn::Add(hn::Abs(Xu), Mx));
        const VD kappa4 = hn::Add(hn::Div(size, hn::Abs(safeD)), n(4));
        const VD L13 = hn::Mul(L, n(13));
        const VD wu = hn::Sub(u, un), wv = hn::Sub(v, vn);
        const VD U = hn::Mul(L13, wu), V = hn::Mul(L13, wv);
        const VD scale = hn::Mul(n(13), hn::Add(eL, hn::Mul(hn::Abs(L), n(0x1p-50))));
        const VD eU = hn::Mul(scale, hn::Add(hn::Add(hn::Mul(kappa4, hn::Abs(u)), un), hn::Abs(wu)));
        const VD eV = hn::Mul(scale, hn::Add(hn::Add(hn::Mul(kappa4, hn::Abs(v)), vn), hn::Abs(wv)));
        decided = hn::And(decided, hn::And(oneFloat(L, hn::Add(eL, eL)), hn::And(oneFloat(U, hn::Add(eU, eU)), oneFloat(V, hn::Add(eV, eV)))));
        const MD refuse = hn::Not(decided);
        const auto l32 = hn::DemoteTo(df, L), u32 = hn::DemoteTo(df, U), v32 = hn::DemoteTo(df, V);
        refusedCount += storeStep<Pitch>(df, refuse, a, b, c, alpha, l32, u32, v32, dst + Pitch * x,
                                         [&](const Kel32f* kept, std::uint64_t lanes) { rgbToLUVPixels32f(kept, dst + Pitch * x, lanes, Pitch); });
    }
    if (x < width) rgbToLUVPixels32f(src + Pitch * x, dst + Pitch * x, (std::uint64_t{1} << (width - x)) - 1, Pitch);
    return refusedCount;
}

std::int64_t rgbToLUV32f3(const Kel32f* s, Kel32f* d, int w) { return luvRow32f<3>(s, d, w); }
std::int64_t rgbToLUV32f4(const Kel32f* s, Kel32f* d, int w) { return luvRow32f<4>(s, d, w); }

} // namespace HWY_NAMESPACE
} // namespace kel::cie
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kel::cie {

HWY_EXPORT(rgbToXYZ3);
HWY_EXPORT(rgbToXYZ4);
HWY_EXPORT(xyzToRGB3);
HWY_EXPORT(xyzToRGB4);
HWY_EXPORT(rgbToLUV3);
HWY_EXPORT(rgbToLUV4);
HWY_EXPORT(rgbToYCC3);
HWY_EXPORT(rgbToYCC4);
HWY_EXPORT(yccToRGB3);
HWY_EXPORT(yccToRGB4);
HWY_EXPORT(luvToRGB3);
HWY_EXPORT(luvToRGB4);
HWY_EXPORT(luvToRGB32f3);
HWY_EXPORT(rgbToLUV32f3);
HWY_EXPORT(rgbToLUV32f4);
HWY_EXPORT(luvToRGB32f4);
HWY_EXPORT(rgbToXYZ32f3);
HWY_EXPORT(rgbToXYZ32f4);
HWY_EXPORT(xyzToRGB32f3);
HWY_EXPORT(xyzToRGB32f4);

Row32f chooseRow32f(ModelVectorRow which, int pixelStride)
{
    detectSimdTargets();
    switch (which) {
    case ModelVectorRow::RGBToXYZ32f:
        return pixelStride == 3 ? &HWY_DYNAMIC_DISPATCH(rgbToXYZ32f3) : &HWY_DYNAMIC_DISPATCH(rgbToXYZ32f4);
    case ModelVectorRow::XYZToRGB32f:
        return pixelStride == 3 ? &HWY_DYNAMIC_DISPATCH(xyzToRGB32f3) : &HWY_DYNAMIC_DISPATCH(xyzToRGB32f4);
    case ModelVectorRow::RGBToLUV32f:
        return pixelStride == 3 ? &HWY_DYNAMIC_DISPATCH(rgbToLUV32f3) : &HWY_DYNAMIC_DISPATCH(rgbToLUV32f4);
    case ModelVectorRow::LUVToRGB32f:
        return pixelStride == 3 ? &HWY_DYNAMIC_DISPATCH(luvToRGB32f3) : &HWY_DYNAMIC_DISPATCH(luvToRGB32f4);
    default: return nullptr;
    }
}

Row8u chooseRow8u(ModelVectorRow which, int pixelStride)
{
    detectSimdTargets();
    switch (which) {
    case ModelVectorRow::RGBToXYZ8u: return pixelStride == 3 ? &HWY_DYNAMIC_DISPATCH(rgbToXYZ3) : &HWY_DYNAMIC_DISPATCH(rgbToXYZ4);
    case ModelVectorRow::XYZToRGB8u: return pixelStride == 3 ? &HWY_DYNAMIC_DISPATCH(xyzToRGB3) : &HWY_DYNAMIC_DISPATCH(xyzToRGB4);
    case ModelVectorRow::RGBToLUV8u: return pixelStride == 3 ? &HWY_DYNAMIC_DISPATCH(rgbToLUV3) : &HWY_DYNAMIC_DISPATCH(rgbToLUV4);
    case ModelVectorRow::RGBToYCC8u: return pixelStride == 3 ? &HWY_DYNAMIC_DISPATCH(rgbToYCC3) : &HWY_DYNAMIC_DISPATCH(rgbToYCC4);
    case ModelVectorRow::YCCToRGB8u: return pixelStride == 3 ? &HWY_DYNAMIC_DISPATCH(yccToRGB3) : &HWY_DYNAMIC_DISPATCH(yccToRGB4);
    case ModelVectorRow::LUVToRGB8u: return pixelStride == 3 ? &HWY_DYNAMIC_DISPATCH(luvToRGB3) : &HWY_DYNAMIC_DISPATCH(luvToRGB4);
    default: return nullptr;
    }
}

} // namespace kel::cie
#endif // HWY_ONCE

#else // KELCC_SIMD

namespace kel::cie {

Row8u chooseRow8u(ModelVectorRow, int)
{
    return nullptr;
}

Row32f chooseRow32f(ModelVectorRow, int)
{
    return nullptr;
}

} // namespace kel::cie

#endif // KELCC_SIMD

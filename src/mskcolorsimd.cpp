// Vector rows of the 8-bit hue conversions, for every SIMD target.
//
// Why float lanes give the extended kernels' bytes.  With 8-bit inputs every
// quantity the extended kernels truncate is, before its rounding errors, a
// ratio A / B of small integers:
//
//   RGB to HSV/HLS   hue         255 n / (6 d), d = max - min, n = G - B
//                                (+ 6d when negative), B - R + 2d or R - G + 4d
//                    HSV S       255 d / V
//                    HLS S       255 d / t' (t' = max + min, or 510 - it past 255)
//                    HLS L       (max + min) / 2
//   HSV to RGB       M, N, P     V (255 - S) / 255 and V (21675 - S j) / 21675,
//                                j = 2H - 85 I the hue's place in its sextant
//   HLS to RGB       channel     (85 m1 + w (m2 - m1)) / 21675, m1, m2 the
//                                extremes times 65025, w in 0..85 the ramp
//
// The extended kernels' rounding errors stay below 1e-15 of these values.
// A rounding result is trunc(x + c), c = 0.5 - 1.0133e-6: with B at most
// 1530, a fraction of A / B is 0.5 exactly (which goes down) or at least
// 1 / 3060 from it; with B = 255 or 21675 (odd) no fraction is 0.5 and every
// one is at least 1 / 43350 from it; the float rounding of HSV's M and N
// (at most 2^-17 at 255) cannot bridge that either.  So the byte is
// round-half-down(A / B) = floor((2A + B - 1) / 2B) for the first group and
// the nearest integer to A / B for the odd B.  A truncating result is
// trunc(x + 1e-7): exact integers land on themselves, any other fraction is
// at least 1 / 21675 below the next integer, so the byte is floor(A / B).
//
// Every numerator and denominator is an integer below 2^24, exact in a
// float; the float quotient is the correctly rounded A / B, whose error (at
// most 2^-17 below 256) is smaller than the distance of a non-integer A / B
// to the next integer (1 / 43350 and more) or of an odd-B ratio to a half,
// so truncation or conversion to the nearest integer of the float quotient
// gives the byte.  The whole 8-bit input space is checked against the
// extended kernels in the tests.
#include "mskcolorsimd.h"

#include <cstdint>
#include <utility>

#include "simd.h"

#if KELCC_SIMD

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "mskcolorsimd.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include "simdops-inl.h"

// X(row, conversion, rounding, blue first, source pitch, destination pitch,
// alpha): the shapes the members have.
#define KEL_HUE_FAST_ROWS(X)                                                       \
    X(rgbToHSV3, RGBToHSV, true, false, 3, 3, None)                                \
    X(rgbToHSV4, RGBToHSV, true, false, 4, 4, Keep)                                \
    X(hsvToRGB3, HSVToRGB, true, false, 3, 3, None)                                \
    X(hsvToRGB4, HSVToRGB, true, false, 4, 4, Keep)                                \
    X(rgbToHLS3, RGBToHLS, true, false, 3, 3, None)                                \
    X(rgbToHLS4, RGBToHLS, true, false, 4, 4, Keep)                                \
    X(hlsToRGB3, HLSToRGB, true, false, 3, 3, None)                                \
    X(hlsToRGB4, HLSToRGB, true, false, 4, 4, Keep)                                \
    X(bgrToHLS4, RGBToHLS, true, true, 4, 4, Keep)                                 \
    X(bgrToHLSAP4, RGBToHLS, false, true, 1, 1, Copy)                              \
    X(bgrToHLSAP4C4, RGBToHLS, false, true, 1, 4, Copy)                            \
    X(bgrToHLSAC4P4, RGBToHLS, false, true, 4, 1, Copy)                            \
    X(bgrToHLSP3, RGBToHLS, false, true, 1, 1, None)                               \
    X(bgrToHLSP3C3, RGBToHLS, false, true, 1, 3, None)                             \
    X(bgrToHLSC3P3, RGBToHLS, false, true, 3, 1, None)                             \
    X(hlsToBGRAP4, HLSToRGB, false, true, 1, 1, Copy)                              \
    X(hlsToBGRAP4C4, HLSToRGB, false, true, 1, 4, Copy)                            \
    X(hlsToBGRAC4P4, HLSToRGB, false, true, 4, 1, Copy)                            \
    X(hlsToBGRP3, HLSToRGB, false, true, 1, 1, None)                               \
    X(hlsToBGRP3C3, HLSToRGB, false, true, 1, 3, None)                             \
    X(hlsToBGRC3P3, HLSToRGB, false, true, 3, 1, None)

HWY_BEFORE_NAMESPACE();
namespace kel::hue {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
using kel::HWY_NAMESPACE::loadInterleaved3;
using kel::HWY_NAMESPACE::storeInterleaved3;

using DU8 = hn::ScalableTag<std::uint8_t>;
using DH8 = hn::Half<DU8>;
using DQ8 = hn::Half<DH8>;  // a quarter of the bytes: one float vector's worth
using DF = hn::Repartition<float, DU8>;
using DI = hn::RebindToSigned<DF>;
using VF = hn::Vec<DF>;
using VI = hn::Vec<DI>;
using VU8 = hn::Vec<DU8>;

// ---- the conversions on exact integers in float lanes ------------------------

// round-half-down(a / b) = floor((2a + b - 1) / 2b), or floor(a / b); a >= 0,
// b >= 1, both below 2^23.
template <bool Rounding>
HWY_INLINE VI quotientDown(VF a, VF b)
{
    const DF df;
    if constexpr (Rounding) {
        const VF twoB = hn::Add(b, b);
        return hn::ConvertTo(DI(), hn::Div(hn::Add(hn::Add(a, a), hn::Sub(b, hn::Set(df, 1))), twoB));
    } else {
        return hn::ConvertTo(DI(), hn::Div(a, b));
    }
}

// The nearest integer to a / b where no ratio lies near a half (odd b), or
// floor(a / b).
template <bool Rounding>
HWY_INLINE VI quotientNear(VF a, VF b)
{
    const VF q = hn::Div(a, b);
    if constexpr (Rounding) return hn::NearestInt(q);
    else return hn::ConvertTo(DI(), q);
}

// The hue's numerator n (0 <= n < 6d) of one colour: HSV lets a later
// maximum win (blue, then green, then red), HLS the first (red, green, blue).
template <bool FirstWins>
HWY_INLINE VF hueNumerator(VF r, VF g, VF b, VF max, VF d)
{
    const DF df;
    const VF gb = hn::Sub(g, b);
    const VF red = hn::IfThenElse(hn::Lt(gb, hn::Zero(df)), hn::Add(gb, hn::Mul(d, hn::Set(df, 6))), gb);
    const VF green = hn::Add(hn::Sub(b, r), hn::Add(d, d));
    const VF blue = hn::Add(hn::Sub(r, g), hn::Mul(d, hn::Set(df, 4)));
    if constexpr (FirstWins)
        return hn::IfThenElse(hn::Eq(r, max), red, hn::IfThenElse(hn::Eq(g, max), green, blue));
    else
        return hn::IfThenElse(hn::Eq(b, max), blue, hn::IfThenElse(hn::Eq(g, max), green, red));
}

// 255 n / 6d to a byte; 0 for a gray pixel (d = 0).
template <bool Rounding>
HWY_INLINE VI hueByte(VF n, VF d)
{
    const DF df;
    const auto gray = hn::RebindMask(DI(), hn::Eq(d, hn::Zero(df)));
    const VF six = hn::Mul(hn::Max(d, hn::Set(df, 1)), hn::Set(df, 6));
    return hn::IfThenZeroElse(gray, quotientDown<Rounding>(hn::Mul(n, hn::Set(df, 255)), six));
}

template <HueConversion C, bool Rounding>
HWY_INLINE void convert(VF in0, VF in1, VF in2, VI& out0, VI& out1, VI& out2)
{
    const DF df;
    const DI di;
    const VF k255 = hn::Set(df, 255), one = hn::Set(df, 1);
    if constexpr (C == HueConversion::RGBToHSV) {
        const VF r = in0, g = in1, b = in2;
        const VF v = hn::Max(hn::Max(r, g), b), d = hn::Sub(v, hn::Min(hn::Min(r, g), b));
        out0 = hueByte<Rounding>(hueNumerator<false>(r, g, b, v, d), d);
        out1 = quotientDown<Rounding>(hn::Mul(d, k255), hn::Max(v, one));  // 0 where d = 0
        out2 = hn::ConvertTo(di, v);
    } else if constexpr (C == HueConversion::RGBToHLS) {
        const VF r = in0, g = in1, b = in2;
        const VF max = hn::Max(hn::Max(r, g), b), min = hn::Min(hn::Min(r, g), b);
        const VF d = hn::Sub(max, min), t = hn::Add(max, min);
        const VF below = hn::IfThenElse(hn::Le(t, k255), t, hn::Sub(hn::Set(df, 510), t));
        out0 = hueByte<Rounding>(hueNumerator<true>(r, g, b, max, d), d);
        out1 = hn::ConvertTo(di, hn::Mul(t, hn::Set(df, 0.5f)));  // floor of a half
        out2 = hn::IfThenZeroElse(hn::RebindMask(di, hn::Eq(d, hn::Zero(df))),
                                  quotientDown<Rounding>(hn::Mul(d, k255), hn::Max(below, one)));
    } else if constexpr (C == HueConversion::HSVToRGB) {
        const VF h = in0, s = in1, v = in2;
        // The hue in 85ths of a sextant; H = 255 is hue 0.
        const VF h2 = hn::IfThenZeroElse(hn::Eq(h, k255), hn::Add(h, h));
        VF sextant = hn::Zero(df);
        for (float edge : {85.0f, 170.0f, 255.0f, 340.0f, 425.0f})
            sextant = hn::Add(sextant, hn::IfThenElseZero(hn::Ge(h2, hn::Set(df, edge)), one));
        const VF j = hn::Sub(h2, hn::Mul(sextant, hn::Set(df, 85)));
        const VF whole = hn::Set(df, 21675);
        // M by the reciprocal: two float roundings put the product within
        // 255 * 2^-23 < 1 / 510 of V (255 - S) / 255, whose fraction is at
        // least 1 / 510 from a half.
        const VI m = hn::NearestInt(hn::Mul(hn::Mul(v, hn::Sub(k255, s)), hn::Set(df, 1.0f / 255)));
        const VI n = quotientNear<true>(hn::Mul(v, hn::Sub(whole, hn::Mul(s, j))), whole);
        const VI p = quotientNear<true>(hn::Mul(v, hn::Sub(whole, hn::Mul(s, hn::Sub(hn::Set(df, 85), j)))), whole);
        const VI vi = hn::ConvertTo(di, v);
        const auto is = [&](float k) { return hn::RebindMask(di, hn::Eq(sextant, hn::Set(df, k))); };
        // Sextants 0 to 5: R = V, N, M, M, P, V; G = P, V, V, N, M, M; B = M, M, P, V, V, N.
        out0 = hn::IfThenElse(hn::Or(is(0), is(5)), vi, hn::IfThenElse(is(1), n, hn::IfThenElse(is(4), p, m)));
        out1 = hn::IfThenElse(hn::Or(is(1), is(2)), vi, hn::IfThenElse(is(0), p, hn::IfThenElse(is(3), n, m)));
        out2 = hn::IfThenElse(hn::Or(is(3), is(4)), vi, hn::IfThenElse(is(2), p, hn::IfThenElse(is(5), n, m)));
    } else {  // HLSToRGB
        const VF h = in0, l = in1, s = in2;
        const VF m2 = hn::IfThenElse(hn::Le(l, hn::Set(df, 127)), hn::Mul(l, hn::Add(k255, s)),
                                     hn::Sub(hn::Add(hn::Mul(l, k255), hn::Mul(s, k255)), hn::Mul(s, l)));
        const VF m1 = hn::Sub(hn::Mul(l, hn::Set(df, 510)), m2);
        const VF base = hn::Mul(m1, hn::Set(df, 85)), rise = hn::Sub(m2, m1);
        const VF whole = hn::Set(df, 21675), turn = hn::Set(df, 510), third = hn::Set(df, 170);
        // The ramp weight at a place p on the turn of 510: up to 85, flat to
        // 255, down to 340, then 0; the channel is continuous at every edge.
        const auto channel = [&](VF p) {
            const VF w = hn::Max(hn::Zero(df), hn::Min(hn::Min(p, hn::Set(df, 85)), hn::Sub(hn::Set(df, 340), p)));
            return quotientNear<Rounding>(hn::Add(base, hn::Mul(w, rise)), whole);
        };
        const VF pg = hn::Add(h, h);
        const VF pr0 = hn::Add(pg, third), pb0 = hn::Sub(pg, third);
        const VF pr = hn::IfThenElse(hn::Gt(pr0, turn), hn::Sub(pr0, turn), pr0);
        const VF pb = hn::IfThenElse(hn::Lt(pb0, hn::Zero(df)), hn::Add(pb0, turn), pb0);
        out0 = channel(pr);
        out1 = channel(pg);
        out2 = channel(pb);
    }
}

// ---- the row --------------------------------------------------------------------

template <int Pitch>
HWY_INLINE void loadChannels(const Kel8u* const src[4], int x, VU8& v0, VU8& v1, VU8& v2, VU8& v3)
{
    const DU8 du8;
    if constexpr (Pitch == 1) {
        v0 = hn::LoadU(du8, src[0] + x);
        v1 = hn::LoadU(du8, src[1] + x);
        v2 = hn::LoadU(du8, src[2] + x);
    } else if constexpr (Pitch == 3) {
        loadInterleaved3(du8, src[0] + 3 * x, v0, v1, v2);
    } else {
        hn::LoadInterleaved4(du8, src[0] + 4 * x, v0, v1, v2, v3);
    }
}

template <int Pitch>
HWY_INLINE void storeChannels(Kel8u* const dst[4], int x, VU8 v0, VU8 v1, VU8 v2, VU8 v3, bool fourth)
{
    const DU8 du8;
    if constexpr (Pitch == 1) {
        hn::StoreU(v0, du8, dst[0] + x);
        hn::StoreU(v1, du8, dst[1] + x);
        hn::StoreU(v2, du8, dst[2] + x);
        if (fourth) hn::StoreU(v3, du8, dst[3] + x);
    } else if constexpr (Pitch == 3) {
        storeInterleaved3(du8, v0, v1, v2, dst[0] + 3 * x);
    } else {
        hn::StoreInterleaved4(v0, v1, v2, v3, du8, dst[0] + 4 * x);
    }
}

// Quarter q of a byte vector as floats, and four vectors of byte values in
// 32-bit lanes back to bytes.
template <int Q>
HWY_INLINE VF quarter(VU8 v)
{
    const DH8 dh;
    const DQ8 dq;
    const auto half = Q < 2 ? hn::LowerHalf(dh, v) : hn::UpperHalf(dh, v);
    const auto part = Q % 2 == 0 ? hn::LowerHalf(dq, half) : hn::UpperHalf(dq, half);
    return hn::ConvertTo(DF(), hn::PromoteTo(DI(), part));
}

HWY_INLINE VU8 bytesOf(VI q0, VI q1, VI q2, VI q3)
{
    const DQ8 dq;
    const auto b0 = hn::DemoteTo(dq, q0), b1 = hn::DemoteTo(dq, q1);
    const auto b2 = hn::DemoteTo(dq, q2), b3 = hn::DemoteTo(dq, q3);
    return hn::Combine(DU8(), hn::Combine(DH8(), b3, b2), hn::Combine(DH8(), b1, b0));
}

template <HueConversion C, bool Rounding, bool BlueFirst, int SrcPitch, int DstPitch, HueAlpha Alpha>
int hueRow(const Kel8u* const src[4], Kel8u* const dst[4], int width)
{
    constexpr bool forward = C == HueConversion::RGBToHSV || C == HueConversion::RGBToHLS;
    // The colour side in B, G, R order swaps the outer channels there.
    constexpr bool swapIn = forward && BlueFirst, swapOut = !forward && BlueFirst;
    const DU8 du8;
    const int lanes = static_cast<int>(hn::Lanes(du8));
    int x = 0;
    for (; x + lanes <= width; x += lanes) {
        VU8 a0, a1, a2, a3 = hn::Zero(du8);
        loadChannels<SrcPitch>(src, x, a0, a1, a2, a3);
        if constexpr (Alpha == HueAlpha::Copy && SrcPitch == 1) a3 = hn::LoadU(du8, src[3] + x);
        if constexpr (swapIn) std::swap(a0, a2);
        VI o0[4], o1[4], o2[4];
        convert<C, Rounding>(quarter<0>(a0), quarter<0>(a1), quarter<0>(a2), o0[0], o1[0], o2[0]);
        convert<C, Rounding>(quarter<1>(a0), quarter<1>(a1), quarter<1>(a2), o0[1], o1[1], o2[1]);
        convert<C, Rounding>(quarter<2>(a0), quarter<2>(a1), quarter<2>(a2), o0[2], o1[2], o2[2]);
        convert<C, Rounding>(quarter<3>(a0), quarter<3>(a1), quarter<3>(a2), o0[3], o1[3], o2[3]);
        VU8 b0 = bytesOf(o0[0], o0[1], o0[2], o0[3]), b1 = bytesOf(o1[0], o1[1], o1[2], o1[3]),
            b2 = bytesOf(o2[0], o2[1], o2[2], o2[3]);
        if constexpr (swapOut) std::swap(b0, b2);
        VU8 b3 = a3;
        if constexpr (Alpha == HueAlpha::Keep) {  // the destination's own fourth channel, read back
            VU8 unused0, unused1, unused2;
            hn::LoadInterleaved4(du8, dst[0] + 4 * x, unused0, unused1, unused2, b3);
        }
        storeChannels<DstPitch>(dst, x, b0, b1, b2, b3, Alpha == HueAlpha::Copy);
    }
    return x;
}

#define KEL_HUE_FAST_ROW_DEFINE(ROW, C, ROUNDING, BLUE_FIRST, SRC_PITCH, DST_PITCH, ALPHA)                   \
    int ROW(const Kel8u* const src[4], Kel8u* const dst[4], int width)                                       \
    {                                                                                                         \
        return hueRow<HueConversion::C, ROUNDING, BLUE_FIRST, SRC_PITCH, DST_PITCH, HueAlpha::ALPHA>(src, dst, \
                                                                                                    width);  \
    }
KEL_HUE_FAST_ROWS(KEL_HUE_FAST_ROW_DEFINE)
#undef KEL_HUE_FAST_ROW_DEFINE

} // namespace HWY_NAMESPACE
} // namespace kel::hue
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kel::hue {

#define KEL_HUE_FAST_ROW_EXPORT(ROW, C, ROUNDING, BLUE_FIRST, SRC_PITCH, DST_PITCH, ALPHA) HWY_EXPORT(ROW);
KEL_HUE_FAST_ROWS(KEL_HUE_FAST_ROW_EXPORT)
#undef KEL_HUE_FAST_ROW_EXPORT

HueRow8u chooseHueRow8u(HueConversion conversion, bool rounding, bool blueFirst, int srcPitch, int dstPitch,
                        HueAlpha alpha)
{
    detectSimdTargets();
#define KEL_HUE_FAST_ROW_PICK(ROW, C, ROUNDING, BLUE_FIRST, SRC_PITCH, DST_PITCH, ALPHA)                     \
    if (conversion == HueConversion::C && rounding == ROUNDING && blueFirst == BLUE_FIRST &&                \
        srcPitch == SRC_PITCH && dstPitch == DST_PITCH && alpha == HueAlpha::ALPHA)                          \
        return &HWY_DYNAMIC_DISPATCH(ROW);
    KEL_HUE_FAST_ROWS(KEL_HUE_FAST_ROW_PICK)
#undef KEL_HUE_FAST_ROW_PICK
    return nullptr;
}

} // namespace kel::hue
#endif // HWY_ONCE

#else // KELCC_SIMD

namespace kel::hue {

HueRow8u chooseHueRow8u(HueConversion, bool, bool, int, int, HueAlpha)
{
    return nullptr;
}

} // namespace kel::hue

#endif // KELCC_SIMD

// Vector rows of the wider pixel-order hue conversions, for every SIMD
// target: HSV at 16u, HLS at 16u, 16s and 32f, both directions.
//
// How doubles give the extended kernels' results.  u = 2^-53 is a double's
// rounding unit, e = 2^-64 the extended type's; K = 65535, c the rounding
// addend 0.4999989867210388 (a float, exact in a double).  Every result is
// worked in doubles to a value y with a bound B on |y - y_ext|, y_ext being
// what the extended kernel rounds or truncates; where the outcome is the same
// at y - B and at y + B (truncation is monotone, and so is rounding to a
// float) it is the extended kernel's, and otherwise the pixel goes to the
// extended kernel.  The bounds below sum the double's error and the extended
// kernel's error against the exact value, to first order; each guard uses at
// least twice its bound, which also covers forming y - B and y + B.
//
// Integer samples (16u, and 16s moved by 32768 to 0..K).  Every exact result
// is a ratio of integers, which the doubles form from exact integers below
// 2^53 with at most two roundings (one reciprocal, one product), so within
// 2u of it; next to K that is 2^-36, and adding c rounds once more.  The
// extended kernel works from unit values rounded once (error at most e each)
// and loses most where it divides by a small difference:
//
//   HLS S = d / t or d / (2 - t), d and t sums of two unit values, so d, t
//     and 2 - t (exact by Sterbenz once t > 1) are within 2e and 4e; the
//     quotient within (2e + 4e) / den + e with den >= 1/K, so S K within
//     6 K^2 e + 2 K e < 2^-29.3.  Where t = 1 exactly either branch is d.
//   HLS H = K n / 6d: n (a difference) within 3e, d within 2e, so n / d within
//     5 K e + 2e, and H within (5/6) K^2 e + 3 K e < 2^-32.
//   HLS L = K t / 2: within 2 K e; the exact value is an integer or a half,
//     at least 1e-6 from where trunc(y + c) steps, so L = floor(t / 2) with no
//     guard.
//   HSV S = K d / V: three roundings, within 3 K e < 2^-46.
//   HSV H = K h / 6 with h formed from q = 1/d and differences of products
//     at most 1: h within 24e, H within 6 K e < 2^-45.
//   HSV to RGB: h = 6H/K within 12e and never within 1/K of an integer
//     unless exact (H = 0, K/3, 2K/3 divide exactly), so the sextant I is
//     exact and f = h - I (exact subtraction) within 12e; then sat f within
//     14e, 1 - sat f within 15e, N = (1 - sat f) V within 16 V e; P likewise
//     within 17 V e < 2^-43.9.  M = (1 - sat) V within 2^-47.9 of it,
//     relatively.  M and N are rounded to floats before c is added:
//       M = V (K - S) / K: a float midpoint is a ratio q / 2^k with q odd, and
//       p / K (K odd) never equals one, so M is at least 1 / (K 2^25) of
//       itself, 2^-41, from every midpoint.  Both kernels' M lie much closer
//       than that to the exact one and round to the same float: no guard.
//       N = V (K^2 - S j) / K^2, j = 6H - I K: its relative distance to a
//       midpoint can be as small as 2^-56, so it has a guard of
//       2^-50 N + 2^-58 V around it (double 2u N, extended 16 V e).
//     A float F below 65536 plus c is exact in both types (at most 41
//     significant bits), so trunc(F + c) needs no guard once F is known.
//   HLS to RGB: each channel is (K m1 + W (m2 - m1)) / K^2 of integers
//     m1 K^2, m2 K^2 and a ramp weight W in 0..K; the extended kernel's h,
//     l, s (within 360e, e, e), m2 (within 8e), m1 (11e), the hue places
//     (within 1200e; no place is within 180/K of a threshold unless exact,
//     and the channel is continuous across each) and the ramp (2700e before
//     dividing by 60) leave the channel within 58e, its K multiple within
//     59 K e < 2^-42.
//
// Every integer bound is below 2^-29, the doubles' errors below 2^-35: the
// guard is 2^-28 around y = result + c.
//
// Floats (32f).  The extended kernel works on the floats as they stand, and
// so do the doubles, in the same order; without cancellation each step is a
// relative rounding of the exact value, u or e.  So the doubles run the same
// formulas and each result has a guard relative to its size; a pixel with a
// channel outside 0..1 (NaN, infinities, negative values) goes to the
// extended kernel.  Zeros keep the extended kernel's signs, since both
// evaluate the same operations on them exactly.
//
//   RGB to HLS.  d = M - mn and t = M + mn, within u (doubles) and e.
//     L = t / 2: exact where the double sum is (M >= mn >= 0, so t - M == mn
//       tells), and then exactly the extended L even on a float midpoint;
//       otherwise within (u + e) L: guard 4u L.
//     Gray (d <= 2^-23): rounding is monotone and 2^-23 a double, so the
//       test goes the same way in both unless the double d lands on 2^-23 by
//       rounding (then M - d != mn): such a pixel goes to the extended kernel.
//     The doubles divide once, q = 1 / (d den), den = t or 2 - t: den is
//       within u of itself (2 - t is exact from t, t in 1..2, and t is
//       inexact only if mn < 2^-29, as M > 1/2 is a multiple of 2^-24 and a
//       larger mn one of 2^-52, when 2 - t is near 1), q within 4u.
//     S = d / den, as d (d q): within 2u + 4u + 2u = 8u (3e for the extended
//       kernel's quotient).  The kernels can take different branches only if
//       t lies within u of 1, where d / t and d / (2 - t) differ by 2u:
//       |S - S_ext| < 11u S, guard 32u S.
//     H = x / 360, x = 60 n / d (+ 120, 240 or 360; the sign of n is exact,
//       so the wrap is the same), as ((60 n) den) q: within 8u, the sum (at
//       least 60, n / d at most 1) within 9u, the product by 1/360 (rounded)
//       within 11u (6e for the extended kernel's divisions): |H - H_ext| <
//       12u H, guard 32u H.
//   HLS to RGB (h = 360 H exact, inputs in 0..1, so every value lies in
//     0..1 and below m2).  m2 within 7u m2, m1 within 8u m2, m2 - m1 within
//     16u m2; the hue places are exact wherever a ramp uses them (h + 120 and
//     h - 120 round only where the channel is flat or the place lies past
//     240 either way), the ramp (a product by 1/60, rounded, where the
//     extended kernel divides) within 19u m2, the channel within 28u m2 (27e
//     m2 for the extended kernel): guard 2^-47 m2 (64u m2).
//
// Every pixel the doubles cannot settle is converted by the extended kernel
// itself, compiled for the baseline, from a copy of the step's source taken
// before the vector results are stored (rows may be converted in place).
#include "mskcolorwidesimd.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "simd.h"

#if KELCC_SIMD

namespace kel::hue::wide {

// The refused pixels of one step (bit i: pixel i) through the extended
// kernel, read from `saved`; compiled once, for the baseline.
std::int64_t exactPixels(HueKernel<Kel16u> exact, const Kel16u* saved, Kel16u* dst, unsigned refused, int pitch);
std::int64_t exactPixels(HueKernel<Kel16s> exact, const Kel16s* saved, Kel16s* dst, unsigned refused, int pitch);
std::int64_t exactPixels(HueKernel<Kel32f> exact, const Kel32f* saved, Kel32f* dst, unsigned refused, int pitch);

} // namespace kel::hue::wide

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "mskcolorwidesimd.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

// X(row, conversion, sample type, pixel stride): the shapes the members have.
#define KEL_HUE_WIDE_ROWS(X)                   \
    X(rgbToHSV16u3, RGBToHSV, Kel16u, 3)       \
    X(rgbToHSV16u4, RGBToHSV, Kel16u, 4)       \
    X(hsvToRGB16u3, HSVToRGB, Kel16u, 3)       \
    X(hsvToRGB16u4, HSVToRGB, Kel16u, 4)       \
    X(rgbToHLS16u3, RGBToHLS, Kel16u, 3)       \
    X(rgbToHLS16u4, RGBToHLS, Kel16u, 4)       \
    X(hlsToRGB16u3, HLSToRGB, Kel16u, 3)       \
    X(hlsToRGB16u4, HLSToRGB, Kel16u, 4)       \
    X(rgbToHLS16s3, RGBToHLS, Kel16s, 3)       \
    X(rgbToHLS16s4, RGBToHLS, Kel16s, 4)       \
    X(hlsToRGB16s3, HLSToRGB, Kel16s, 3)       \
    X(hlsToRGB16s4, HLSToRGB, Kel16s, 4)       \
    X(rgbToHLS32f3, RGBToHLS, Kel32f, 3)       \
    X(rgbToHLS32f4, RGBToHLS, Kel32f, 4)       \
    X(hlsToRGB32f3, HLSToRGB, Kel32f, 3)       \
    X(hlsToRGB32f4, HLSToRGB, Kel32f, 4)

HWY_BEFORE_NAMESPACE();
namespace kel::hue {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using DF = hn::ScalableTag<double>;
using VF = hn::Vec<DF>;
using MF = hn::Mask<DF>;
using DI = hn::Rebind<std::int32_t, DF>;
template <typename T>
using DS = hn::Rebind<T, DF>;  // one sample per double lane

constexpr double kScale = 65535;                  // K
constexpr double kAddend = 0.4999989867210388f;   // c, bits 0x3EFFFFDE
constexpr double kIntegerGuard = 0x1p-28;         // every integer result's guard
constexpr double kInverseK = 1.0 / 65535;         // rounded once
constexpr double kInverseK2 = 1.0 / (65535.0 * 65535.0);

HWY_INLINE VF k(double value)
{
    return hn::Set(DF(), value);
}

// ---- guards ----------------------------------------------------------------------

// trunc(y), y >= 0 within the guard of the extended value: `sure` keeps the
// lanes where y - guard and y + guard truncate alike.
HWY_INLINE VF truncGuarded(VF y, VF guard, MF& sure)
{
    const VF low = hn::Floor(hn::Sub(y, guard)), high = hn::Floor(hn::Add(y, guard));
    sure = hn::And(sure, hn::Eq(low, high));
    return low;
}

// y rounded to a float the same way at y - guard and y + guard.
HWY_INLINE void floatGuarded(VF y, VF guard, MF& sure)
{
    const DF df;
    const DS<float> df32;
    const VF low = hn::PromoteTo(df, hn::DemoteTo(df32, hn::Sub(y, guard)));
    const VF high = hn::PromoteTo(df, hn::DemoteTo(df32, hn::Add(y, guard)));
    sure = hn::And(sure, hn::Eq(low, high));
}

// ---- integer samples: exact ratios (inputs and outputs are codes 0..K) ----------

// The hue's numerator N (0 <= N < 6d) of a colour with maximum `max`: HSV
// lets a later maximum win (blue, then green, then red), HLS the first.
template <bool FirstWins>
HWY_INLINE VF hueNumerator(VF r, VF g, VF b, VF max, VF d)
{
    const VF gb = hn::Sub(g, b);
    const VF red = hn::IfThenElse(hn::Lt(gb, hn::Zero(DF())), hn::Add(gb, hn::Mul(d, k(6))), gb);
    const VF green = hn::Add(hn::Sub(b, r), hn::Add(d, d));
    const VF blue = hn::Add(hn::Sub(r, g), hn::Mul(d, k(4)));
    if constexpr (FirstWins)
        return hn::IfThenElse(hn::Eq(r, max), red, hn::IfThenElse(hn::Eq(g, max), green, blue));
    else
        return hn::IfThenElse(hn::Eq(b, max), blue, hn::IfThenElse(hn::Eq(g, max), green, red));
}

// H = K N / 6d and S = K d / den through one reciprocal of 6d den (all
// products exact integers below 2^52), truncated after adding c.
HWY_INLINE void hueAndSaturation(VF n, VF d, VF den, VF& h, VF& s, MF& sure)
{
    const VF dd = hn::Max(d, k(1)), dden = hn::Max(den, k(1));  // gray: N = d = 0
    const VF sixD = hn::Mul(dd, k(6));
    const VF reciprocal = hn::Div(k(1), hn::Mul(sixD, dden));
    const VF hue = hn::Mul(hn::Mul(hn::Mul(n, k(kScale)), dden), reciprocal);
    const VF saturation = hn::Mul(hn::Mul(hn::Mul(d, k(kScale)), sixD), reciprocal);
    h = truncGuarded(hn::Add(hue, k(kAddend)), k(kIntegerGuard), sure);
    s = truncGuarded(hn::Add(saturation, k(kAddend)), k(kIntegerGuard), sure);
}

template <HueConversion C>
HWY_INLINE void convertCodes(VF a0, VF a1, VF a2, VF& o0, VF& o1, VF& o2, MF& sure)
{
    if constexpr (C == HueConversion::RGBToHSV) {
        const VF r = a0, g = a1, b = a2;
        const VF v = hn::Max(hn::Max(r, g), b), d = hn::Sub(v, hn::Min(hn::Min(r, g), b));
        hueAndSaturation(hueNumerator<false>(r, g, b, v, d), d, v, o0, o1, sure);
        o2 = v;
    } else if constexpr (C == HueConversion::RGBToHLS) {
        const VF r = a0, g = a1, b = a2;
        const VF max = hn::Max(hn::Max(r, g), b), min = hn::Min(hn::Min(r, g), b);
        const VF d = hn::Sub(max, min), t = hn::Add(max, min);
        const VF den = hn::IfThenElse(hn::Le(t, k(kScale)), t, hn::Sub(k(2 * kScale), t));
        hueAndSaturation(hueNumerator<true>(r, g, b, max, d), d, den, o0, o2, sure);
        o1 = hn::Floor(hn::Mul(t, k(0.5)));
    } else if constexpr (C == HueConversion::HSVToRGB) {
        const VF hue = a0, s = a1, v = a2;
        const VF six = hn::IfThenZeroElse(hn::Eq(hue, k(kScale)), hn::Mul(hue, k(6)));  // H = K is hue 0
        VF sextant = hn::Zero(DF());
        for (double edge : {1.0, 2.0, 3.0, 4.0, 5.0})
            sextant = hn::Add(sextant, hn::IfThenElseZero(hn::Ge(six, k(edge * kScale)), k(1)));
        const VF j = hn::Sub(six, hn::Mul(sextant, k(kScale)));
        // M: no guard (see above); N: a float guard; P: the integer guard.
        const DS<float> df32;
        const VF m = hn::PromoteTo(DF(), hn::DemoteTo(df32, hn::Mul(hn::Mul(v, hn::Sub(k(kScale), s)), k(kInverseK))));
        const VF k2 = k(kScale * kScale);
        const VF nExact = hn::Mul(hn::Mul(v, hn::Sub(k2, hn::Mul(s, j))), k(kInverseK2));
        floatGuarded(nExact, hn::Add(hn::Mul(nExact, k(0x1p-50)), hn::Mul(v, k(0x1p-58))), sure);
        const VF n = hn::PromoteTo(DF(), hn::DemoteTo(df32, nExact));
        const VF pExact = hn::Mul(hn::Mul(v, hn::Sub(k2, hn::Mul(s, hn::Sub(k(kScale), j)))), k(kInverseK2));
        const VF mOut = hn::Floor(hn::Add(m, k(kAddend))), nOut = hn::Floor(hn::Add(n, k(kAddend)));
        const VF pOut = truncGuarded(hn::Add(pExact, k(kAddend)), k(kIntegerGuard), sure);
        const auto is = [&](double which) { return hn::Eq(sextant, k(which)); };
        // Sextants 0 to 5: R = V, N, M, M, P, V; G = P, V, V, N, M, M; B = M, M, P, V, V, N.
        o0 = hn::IfThenElse(hn::Or(is(0), is(5)), v, hn::IfThenElse(is(1), nOut, hn::IfThenElse(is(4), pOut, mOut)));
        o1 = hn::IfThenElse(hn::Or(is(1), is(2)), v, hn::IfThenElse(is(0), pOut, hn::IfThenElse(is(3), nOut, mOut)));
        o2 = hn::IfThenElse(hn::Or(is(3), is(4)), v, hn::IfThenElse(is(2), pOut, hn::IfThenElse(is(5), nOut, mOut)));
    } else {  // HLSToRGB
        const VF hue = a0, l = a1, s = a2;
        // m2 K^2 and m1 K^2; l <= 1/2 exactly where 2L <= K.
        const VF m2 = hn::IfThenElse(hn::Le(l, k(32767)), hn::Mul(hn::Add(s, k(kScale)), l),
                                     hn::Sub(hn::Mul(hn::Add(l, s), k(kScale)), hn::Mul(s, l)));
        const VF m1 = hn::Sub(hn::Mul(l, k(2 * kScale)), m2);
        const VF base = hn::Mul(m1, k(kScale)), rise = hn::Sub(m2, m1);
        // The ramp weight W at a place P on the turn of 6K: up to K, flat to
        // 3K, down to 4K, then 0; the channel is continuous at every edge.
        const auto channel = [&](VF place) {
            const VF w = hn::Max(hn::Zero(DF()), hn::Min(hn::Min(place, k(kScale)), hn::Sub(k(4 * kScale), place)));
            const VF y = hn::Add(hn::Mul(hn::Add(base, hn::Mul(w, rise)), k(kInverseK2)), k(kAddend));
            return truncGuarded(y, k(kIntegerGuard), sure);
        };
        const VF pg = hn::Mul(hue, k(6));
        const VF pr0 = hn::Add(pg, k(2 * kScale)), pb0 = hn::Sub(pg, k(2 * kScale));
        const VF pr = hn::IfThenElse(hn::Gt(pr0, k(6 * kScale)), hn::Sub(pr0, k(6 * kScale)), pr0);
        const VF pb = hn::IfThenElse(hn::Lt(pb0, hn::Zero(DF())), hn::Add(pb0, k(6 * kScale)), pb0);
        o0 = channel(pr);
        o1 = channel(pg);
        o2 = channel(pb);
    }
}

// ---- floats: the extended kernels' formulas, guarded relative to each result --

HWY_INLINE MF unitRange(VF v)
{
    return hn::And(hn::Ge(v, hn::Zero(DF())), hn::Le(v, k(1)));  // false for NaN
}

template <HueConversion C>
HWY_INLINE void convertFloats(VF a0, VF a1, VF a2, VF& o0, VF& o1, VF& o2, MF& sure)
{
    const DF df;
    sure = hn::And(hn::And(unitRange(a0), unitRange(a1)), unitRange(a2));
    if constexpr (C == HueConversion::RGBToHLS) {
        const VF r = a0, g = a1, b = a2;
        // The maximum and minimum as the kernel picks them (the sign of a
        // zero follows that pick).
        const VF max = hn::IfThenElse(hn::Gt(r, g), hn::IfThenElse(hn::Gt(r, b), r, b), hn::IfThenElse(hn::Gt(g, b), g, b));
        const VF min = hn::IfThenElse(hn::Lt(r, g), hn::IfThenElse(hn::Lt(r, b), r, b), hn::IfThenElse(hn::Lt(g, b), g, b));
        const VF d = hn::Sub(max, min), t = hn::Add(max, min);
        const VF l = hn::Mul(k(0.5), t);
        const VF epsilon = k(0x1p-23);
        const MF gray = hn::Le(d, epsilon);
        sure = hn::AndNot(hn::And(hn::Eq(d, epsilon), hn::Ne(hn::Sub(max, d), min)), sure);
        const VF den = hn::IfThenElse(hn::Le(l, k(0.5)), t, hn::Sub(k(2), t));
        // One division: q = 1 / (d den) gives 1/den = d q and 1/d = den q.
        const VF q = hn::Div(k(1), hn::Mul(d, den));
        const VF s = hn::IfThenZeroElse(gray, hn::Mul(d, hn::Mul(d, q)));
        const MF isRed = hn::Eq(r, max), isGreen = hn::Eq(g, max);
        const VF n = hn::IfThenElse(isRed, hn::Sub(g, b), hn::IfThenElse(isGreen, hn::Sub(b, r), hn::Sub(r, g)));
        const VF x0 = hn::Mul(hn::Mul(hn::Mul(n, k(60)), den), q);
        const VF x1 = hn::IfThenElse(isRed, x0, hn::Add(x0, hn::IfThenElse(isGreen, k(120), k(240))));
        const VF x = hn::IfThenElse(hn::Lt(x1, hn::Zero(df)), hn::Add(x1, k(360)), x1);
        const VF h = hn::IfThenZeroElse(gray, hn::Mul(x, k(1.0 / 360)));
        const MF sumExact = hn::Eq(hn::Sub(t, max), min);
        floatGuarded(l, hn::IfThenZeroElse(sumExact, hn::Mul(l, k(0x1p-51))), sure);
        floatGuarded(s, hn::Mul(s, k(0x1p-48)), sure);
        floatGuarded(h, hn::Mul(h, k(0x1p-48)), sure);
        o0 = h;
        o1 = l;
        o2 = s;
    } else {  // HLSToRGB
        const VF h = hn::Mul(a0, k(360)), l = a1, s = a2;
        const MF flat = hn::Eq(s, hn::Zero(df));
        const VF m2 = hn::IfThenElse(hn::Le(l, k(0.5)), hn::Mul(hn::Add(s, k(1)), l),
                                     hn::Sub(hn::Add(l, s), hn::Mul(s, l)));
        const VF m1 = hn::Sub(hn::Add(l, l), m2);
        const VF rise = hn::Sub(m2, m1);
        // The ramps up (x below 60) and down (180 to 240) are one formula in
        // the weight x or 240 - x, divided by 60 as a product.
        const auto channel = [&](VF x) {
            const MF rising = hn::Lt(x, k(60));
            const VF w = hn::IfThenElse(rising, x, hn::Sub(k(240), x));
            const VF ramp = hn::Add(hn::Mul(hn::Mul(w, rise), k(1.0 / 60)), m1);
            const VF value = hn::IfThenElse(hn::Or(rising, hn::And(hn::Ge(x, k(180)), hn::Lt(x, k(240)))), ramp,
                                            hn::IfThenElse(hn::Lt(x, k(180)), m2, m1));
            return hn::IfThenElse(flat, l, value);
        };
        const VF xr0 = hn::Add(h, k(120)), xb0 = hn::Sub(h, k(120));
        const VF xr = hn::IfThenElse(hn::Gt(xr0, k(360)), hn::Sub(xr0, k(360)), xr0);
        const VF xb = hn::IfThenElse(hn::Lt(xb0, hn::Zero(df)), hn::Add(xb0, k(360)), xb0);
        o0 = channel(xr);
        o1 = channel(h);
        o2 = channel(xb);
        const VF guard = hn::IfThenZeroElse(flat, hn::Mul(m2, k(0x1p-47)));
        floatGuarded(o0, guard, sure);
        floatGuarded(o1, guard, sure);
        floatGuarded(o2, guard, sure);
    }
}

// ---- samples in and out --------------------------------------------------------

template <typename T>
HWY_INLINE VF toDouble(hn::Vec<DS<T>> v)
{
    const DF df;
    if constexpr (std::is_same_v<T, Kel32f>) return hn::PromoteTo(df, v);
    else if constexpr (std::is_same_v<T, Kel16s>) return hn::Add(hn::PromoteTo(df, hn::PromoteTo(DI(), v)), k(32768));
    else return hn::PromoteTo(df, hn::PromoteTo(DI(), v));
}

template <typename T>
HWY_INLINE hn::Vec<DS<T>> fromDouble(VF v)
{
    const DS<T> ds;
    if constexpr (std::is_same_v<T, Kel32f>) return hn::DemoteTo(ds, v);
    else if constexpr (std::is_same_v<T, Kel16s>) return hn::DemoteTo(ds, hn::DemoteTo(DI(), hn::Sub(v, k(32768))));
    else return hn::DemoteTo(ds, hn::DemoteTo(DI(), v));
}

// Floats two vectors of doubles a step: a whole float vector de-interleaved,
// its halves widened.  Returns the pixels converted.
template <HueConversion C, int Pitch>
int floatPairs(const Kel32f* src, Kel32f* dst, int width, HueKernel<Kel32f> exact, std::int64_t& refusedPixels)
{
    const DF df;
    const hn::Repartition<float, DF> dw;
    const hn::Half<decltype(dw)> dh;
    using VW = hn::Vec<decltype(dw)>;
    const int lanes = static_cast<int>(hn::Lanes(df));
    int x = 0;
    for (; x + 2 * lanes <= width; x += 2 * lanes) {
        const Kel32f* from = src + static_cast<std::ptrdiff_t>(x) * Pitch;
        Kel32f* to = dst + static_cast<std::ptrdiff_t>(x) * Pitch;
        VW s0, s1, s2, s3;
        if constexpr (Pitch == 3) hn::LoadInterleaved3(dw, from, s0, s1, s2);
        else hn::LoadInterleaved4(dw, from, s0, s1, s2, s3);
        VF lo0, lo1, lo2, hi0, hi1, hi2;
        MF sureLow, sureHigh;
        convertFloats<C>(hn::PromoteTo(df, hn::LowerHalf(dh, s0)), hn::PromoteTo(df, hn::LowerHalf(dh, s1)),
                         hn::PromoteTo(df, hn::LowerHalf(dh, s2)), lo0, lo1, lo2, sureLow);
        convertFloats<C>(hn::PromoteTo(df, hn::UpperHalf(dh, s0)), hn::PromoteTo(df, hn::UpperHalf(dh, s1)),
                         hn::PromoteTo(df, hn::UpperHalf(dh, s2)), hi0, hi1, hi2, sureHigh);
        const bool allSure = hn::AllTrue(df, hn::And(sureLow, sureHigh));
        HWY_ALIGN Kel32f saved[8 * HWY_MAX_BYTES / sizeof(double)];
        if (!allSure) std::memcpy(saved, from, sizeof(Kel32f) * Pitch * 2 * lanes);
        const VW o0 = hn::Combine(dw, hn::DemoteTo(dh, hi0), hn::DemoteTo(dh, lo0));
        const VW o1 = hn::Combine(dw, hn::DemoteTo(dh, hi1), hn::DemoteTo(dh, lo1));
        const VW o2 = hn::Combine(dw, hn::DemoteTo(dh, hi2), hn::DemoteTo(dh, lo2));
        if constexpr (Pitch == 3) {
            hn::StoreInterleaved3(o0, o1, o2, dw, to);
        } else {
            VW kept0, kept1, kept2, alpha;  // the destination's own fourth channel, read back
            hn::LoadInterleaved4(dw, to, kept0, kept1, kept2, alpha);
            hn::StoreInterleaved4(o0, o1, o2, alpha, dw, to);
        }
        if (!allSure) {
            std::uint8_t low[8] = {}, high[8] = {};
            hn::StoreMaskBits(df, hn::Not(sureLow), low);
            hn::StoreMaskBits(df, hn::Not(sureHigh), high);
            refusedPixels += wide::exactPixels(exact, saved, to, low[0], Pitch);
            refusedPixels += wide::exactPixels(exact, saved + lanes * Pitch, to + lanes * Pitch, high[0], Pitch);
        }
    }
    return x;
}

// One step: as many pixels as a vector has doubles (floats first take pairs
// of steps).
template <HueConversion C, typename T, int Pitch>
int wideRow(const T* src, T* dst, int width, HueKernel<T> exact, std::int64_t* fallbacks)
{
    const DF df;
    const DS<T> ds;
    using VS = hn::Vec<DS<T>>;
    const int lanes = static_cast<int>(hn::Lanes(df));
    std::int64_t refusedPixels = 0;
    int x = 0;
    if constexpr (std::is_same_v<T, Kel32f>) x = floatPairs<C, Pitch>(src, dst, width, exact, refusedPixels);
    for (; x + lanes <= width; x += lanes) {
        const T* from = src + static_cast<std::ptrdiff_t>(x) * Pitch;
        T* to = dst + static_cast<std::ptrdiff_t>(x) * Pitch;
        VS s0, s1, s2, s3;
        if constexpr (Pitch == 3) hn::LoadInterleaved3(ds, from, s0, s1, s2);
        else hn::LoadInterleaved4(ds, from, s0, s1, s2, s3);
        VF o0, o1, o2;
        MF sure = hn::Eq(k(0), k(0));  // all lanes
        if constexpr (std::is_same_v<T, Kel32f>) convertFloats<C>(toDouble<T>(s0), toDouble<T>(s1), toDouble<T>(s2), o0, o1, o2, sure);
        else convertCodes<C>(toDouble<T>(s0), toDouble<T>(s1), toDouble<T>(s2), o0, o1, o2, sure);
        const bool allSure = hn::AllTrue(df, sure);
        HWY_ALIGN T saved[4 * HWY_MAX_BYTES / sizeof(double)];
        if (!allSure) std::memcpy(saved, from, sizeof(T) * Pitch * lanes);
        if constexpr (Pitch == 3) {
            hn::StoreInterleaved3(fromDouble<T>(o0), fromDouble<T>(o1), fromDouble<T>(o2), ds, to);
        } else {
            VS kept0, kept1, kept2, alpha;  // the destination's own fourth channel, read back
            hn::LoadInterleaved4(ds, to, kept0, kept1, kept2, alpha);
            hn::StoreInterleaved4(fromDouble<T>(o0), fromDouble<T>(o1), fromDouble<T>(o2), alpha, ds, to);
        }
        if (!allSure) {
            std::uint8_t bits[8] = {};
            hn::StoreMaskBits(df, hn::Not(sure), bits);
            refusedPixels += wide::exactPixels(exact, saved, to, bits[0], Pitch);
        }
    }
    *fallbacks += refusedPixels;
    return x;
}

#define KEL_HUE_WIDE_ROW_DEFINE(ROW, C, T, PITCH)                                                  \
    int ROW(const T* src, T* dst, int width, HueKernel<T> exact, std::int64_t* fallbacks)         \
    {                                                                                              \
        return wideRow<HueConversion::C, T, PITCH>(src, dst, width, exact, fallbacks);             \
    }
KEL_HUE_WIDE_ROWS(KEL_HUE_WIDE_ROW_DEFINE)
#undef KEL_HUE_WIDE_ROW_DEFINE

} // namespace HWY_NAMESPACE
} // namespace kel::hue
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kel::hue {

namespace wide {

template <typename T>
std::int64_t exactPixelsOf(HueKernel<T> exact, const T* saved, T* dst, unsigned refused, int pitch)
{
    std::int64_t count = 0;
    for (int i = 0; refused != 0; ++i, refused >>= 1) {
        if ((refused & 1) == 0) continue;
        exact(saved + i * pitch, dst + i * pitch, 1, pitch);
        ++count;
    }
    return count;
}

std::int64_t exactPixels(HueKernel<Kel16u> exact, const Kel16u* saved, Kel16u* dst, unsigned refused, int pitch)
{
    return exactPixelsOf(exact, saved, dst, refused, pitch);
}
std::int64_t exactPixels(HueKernel<Kel16s> exact, const Kel16s* saved, Kel16s* dst, unsigned refused, int pitch)
{
    return exactPixelsOf(exact, saved, dst, refused, pitch);
}
std::int64_t exactPixels(HueKernel<Kel32f> exact, const Kel32f* saved, Kel32f* dst, unsigned refused, int pitch)
{
    return exactPixelsOf(exact, saved, dst, refused, pitch);
}

} // namespace wide

#define KEL_HUE_WIDE_ROW_EXPORT(ROW, C, T, PITCH) HWY_EXPORT(ROW);
KEL_HUE_WIDE_ROWS(KEL_HUE_WIDE_ROW_EXPORT)
#undef KEL_HUE_WIDE_ROW_EXPORT

namespace {

template <typename T>
HueRowWide<T> pick(HueConversion conversion, int pixelStride)
{
    detectSimdTargets();
#define KEL_HUE_WIDE_ROW_PICK(ROW, C, TYPE, PITCH)                                                 \
    if constexpr (std::is_same_v<T, TYPE>)                                                         \
        if (conversion == HueConversion::C && pixelStride == PITCH) return &HWY_DYNAMIC_DISPATCH(ROW);
    KEL_HUE_WIDE_ROWS(KEL_HUE_WIDE_ROW_PICK)
#undef KEL_HUE_WIDE_ROW_PICK
    return nullptr;
}

} // namespace

HueRowWide<Kel16u> chooseHueRow16u(HueConversion conversion, int pixelStride)
{
    return pick<Kel16u>(conversion, pixelStride);
}
HueRowWide<Kel16s> chooseHueRow16s(HueConversion conversion, int pixelStride)
{
    return pick<Kel16s>(conversion, pixelStride);
}
HueRowWide<Kel32f> chooseHueRow32f(HueConversion conversion, int pixelStride)
{
    return pick<Kel32f>(conversion, pixelStride);
}

} // namespace kel::hue
#endif // HWY_ONCE

#else // KELCC_SIMD

namespace kel::hue {

HueRowWide<Kel16u> chooseHueRow16u(HueConversion, int)
{
    return nullptr;
}
HueRowWide<Kel16s> chooseHueRow16s(HueConversion, int)
{
    return nullptr;
}
HueRowWide<Kel32f> chooseHueRow32f(HueConversion, int)
{
    return nullptr;
}

} // namespace kel::hue

#endif // KELCC_SIMD

// Vector rows of the 16-bit and float BT.709 curves, for every SIMD target.
//
// The scalar kernels evaluate the power with the C library's pow on doubles
// and everything around it in the extended type.  The vector rows evaluate
// the same formulas in double lanes, the power as exp(e * log(w)) with the
// vector math library's log and exp (at most 4 and 1 ulp: the argument of
// exp is then off by at most 4 ulp of |log w| <= 4.1 times e <= 2.23 plus its
// own rounding, below 2^-48 absolutely), so that the vector power and the C
// library's (below 1 ulp) differ by at most 2^-47 relatively; the arguments
// of the power differ by a few ulp between the two (the extended value
// rounded to a double against the double arithmetic), which the exponent
// amplifies at most 2.23 times.  Call the relative difference of the powers
// eps <= 2^-46.
//
// 16 bits: y = (P * 1.099 - 0.099) * 65535 or P * 65535 is at most 65536, so
// the two y differ by less than 65536 * 1.1 * 2^-46 + a few ulp of 65536
// < 2^-29.  The result rounds y + 0.5 down, ties to even; a y + 0.5 within
// 2^-26 of an integer goes to the scalar kernel.  Below the joins (v < 1180
// forward, v < 5322 inverse, far from the thresholds in either precision)
// y = 4.5 v is exact in doubles, and v * d45 (a ninth of 2v, never near a
// half) rounds the same in both.  Every one of the 65536 values is checked
// against the scalar kernel on every target in the tests.
//
// Floats: the result r = A + low with A = (P * 1.099 - 0.099) * range32, or
// P * range32, or the linear t * 4.5 (t * d45); t = sample - low is exact in
// the extended type, within 2^-53 relatively in doubles, and u = scale * t
// within 2^-51.  The double r is then within E = (|A'| + |low|) * 2^-44 of
// the extended r, with |A'| the size of the terms of A (1.1 P |range32| or
// 4.5 |t|).  If r - 2E and r + 2E round to the same float, so does the
// extended r.  Where the forward linear result is exact in doubles (the
// two-sum errors of t, 4t + t/2 and the sum with low all zero) it is the
// extended result itself, and its float rounding is decided even on a
// midpoint.  A u within 2^-44 of its threshold or above 1e100 (the power's
// arguments stay in range of the vector log and exp), and any value that is
// not finite, go to the scalar kernel.
#include "gammasimd.h"

#include <cstring>
#include <limits>

#include "simd.h"

#if KELCC_SIMD

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "gammasimd.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include <hwy/contrib/math/math-inl.h>

HWY_BEFORE_NAMESPACE();
namespace kel::gamma {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using DD = hn::ScalableTag<double>;
using VD = hn::Vec<DD>;
using MD = hn::Mask<DD>;
using DI32 = hn::Rebind<std::int32_t, DD>;

constexpr int kMaxLanes = 64;  // more than any target's double lanes

// Lane i's mask bit as bit i (the bytes are little-endian).
HWY_INLINE std::uint64_t maskBits(MD m)
{
    std::uint8_t bytes[8] = {};
    hn::StoreMaskBits(DD(), m, bytes);
    std::uint64_t bits;
    std::memcpy(&bits, bytes, sizeof bits);
    return bits;
}

// The samples of a row's last partial step, by the scalar kernel.
HWY_INLINE std::uint64_t firstLanes(std::int64_t n)
{
    return (std::uint64_t{1} << n) - 1;
}

// The rounding error of a + b (Knuth's two-sum, exact in double arithmetic
// without a fused multiply-add): zero exactly when the sum was exact.
HWY_INLINE VD sumError(VD a, VD b, VD sum)
{
    const VD bPart = hn::Sub(sum, a);
    return hn::Add(hn::Sub(a, hn::Sub(sum, bPart)), hn::Sub(b, bPart));
}

// w^e for w > 0 as exp(e * log w).
HWY_INLINE VD power(VD w, double e)
{
    const DD dd;
    return hn::Exp(dd, hn::Mul(hn::Set(dd, e), hn::Log(dd, w)));
}

// ---- 16 bits --------------------------------------------------------------------

// y of the curve for 16-bit values v (as doubles), and the lanes whose
// rounding the bound cannot decide.
template <bool Forward>
HWY_INLINE VD curve16(VD v, MD& refuse)
{
    const DD dd;
    const VD x = hn::Mul(hn::Set(dd, 1.5259021896696422e-05), v);
    VD y;
    MD powered;
    if constexpr (Forward) {
        powered = hn::Ge(x, hn::Set(dd, 0.018));
        const VD p = power(hn::Max(x, hn::Set(dd, 0.018)), 0.45);
        const VD curved = hn::Mul(hn::Sub(hn::Mul(p, hn::Set(dd, 1.099)), hn::Set(dd, 0.099)), hn::Set(dd, 65535.0));
        y = hn::IfThenElse(powered, curved, hn::Mul(v, hn::Set(dd, 4.5)));
    } else {
        powered = hn::Ge(x, hn::Set(dd, 0.0812));
        const VD w = hn::Mul(hn::Add(hn::Max(x, hn::Set(dd, 0.0812)), hn::Set(dd, 0.099)), hn::Set(dd, 0.9099181073703366));
        const VD curved = hn::Mul(power(w, 2.2222222222222223), hn::Set(dd, 65535.0));
        y = hn::IfThenElse(powered, curved, hn::Mul(v, hn::Set(dd, 0.2222222222222222)));
    }
    const VD f = hn::Add(y, hn::Set(dd, 0.5));
    const VD n = hn::Round(f);
    refuse = hn::And(powered, hn::Lt(hn::Abs(hn::Sub(f, n)), hn::Set(dd, 0x1p-26)));
    return y;
}

// Rounded half to even: y + 0.5 truncated, less one where that is odd and
// exact.  Exact in doubles for the lanes not refused.
HWY_INLINE VD nearestEven(VD y)
{
    const DD dd;
    const VD f = hn::Add(y, hn::Set(dd, 0.5));
    const VD n = hn::Floor(f);
    const VD half = hn::Mul(n, hn::Set(dd, 0.5));
    const auto oddAndExact = hn::And(hn::Eq(n, f), hn::Ne(hn::Floor(half), half));
    return hn::IfThenElse(oddAndExact, hn::Sub(n, hn::Set(dd, 1.0)), n);
}

template <bool Forward>
std::int64_t row16(const Kel16u* src, Kel16u* dst, std::int64_t count)
{
    const DD dd;
    const DI32 di;
    const hn::Rebind<std::uint16_t, DD> d16;
    const std::int64_t lanes = static_cast<std::int64_t>(hn::Lanes(dd));
    std::int64_t x = 0, refusedCount = 0;
    for (; x + lanes <= count; x += lanes) {
        const auto in = hn::LoadU(d16, src + x);
        const VD v = hn::PromoteTo(dd, hn::PromoteTo(di, in));
        MD refuse;
        const VD n = nearestEven(curve16<Forward>(v, refuse));
        HWY_ALIGN Kel16u kept[kMaxLanes];
        const bool anyRefused = !hn::AllFalse(dd, refuse);
        if (anyRefused) hn::Store(in, d16, kept);  // the source, before an in-place store
        hn::StoreU(hn::DemoteTo(d16, hn::DemoteTo(di, n)), d16, dst + x);
        if (anyRefused) {
            const std::uint64_t refused = maskBits(refuse);
            refusedCount += static_cast<std::int64_t>(hn::CountTrue(dd, refuse));
            gammaRefused16u(kept, dst + x, refused, Forward);
        }
    }
    if (x < count) gammaRefused16u(src + x, dst + x, firstLanes(count - x), Forward);
    return refusedCount;
}

std::int64_t rowFwd16u(const Kel16u* src, Kel16u* dst, std::int64_t count) { return row16<true>(src, dst, count); }
std::int64_t rowInv16u(const Kel16u* src, Kel16u* dst, std::int64_t count) { return row16<false>(src, dst, count); }

// ---- floats ------------------------------------------------------------------------

template <bool Forward>
std::int64_t row32(const Kel32f* src, Kel32f* dst, std::int64_t count, const Range32f& range)
{
    const DD dd;
    const hn::Rebind<float, DD> df;
    const std::int64_t lanes = static_cast<std::int64_t>(hn::Lanes(dd));
    const VD low = hn::Set(dd, static_cast<double>(range.low)), scale = hn::Set(dd, static_cast<double>(range.scale));
    const VD range32 = hn::Set(dd, static_cast<double>(range.range32));
    const VD absLow = hn::Abs(low), absRange = hn::Abs(range32);
    const VD join = hn::Set(dd, Forward ? 0.018 : 0.0812);
    const VD bound = hn::Set(dd, 0x1p-44), joinBound = hn::Set(dd, Forward ? 0.018 * 0x1p-44 : 0.0812 * 0x1p-44);
    const VD inf = hn::Set(dd, std::numeric_limits<double>::infinity());
    std::int64_t x = 0, refusedCount = 0;
    for (; x + lanes <= count; x += lanes) {
        const auto in = hn::LoadU(df, src + x);
        const VD in64 = hn::PromoteTo(dd, in);
        const VD t = hn::Sub(in64, low);
        const VD u = hn::Mul(scale, t);
        const MD linear = hn::Lt(u, join);
        VD r, size;
        MD exact = hn::Lt(hn::Zero(dd), hn::Zero(dd));  // no lane
        if constexpr (Forward) {
            const VD p = power(hn::Max(u, join), 0.45);
            const VD curved = hn::Add(hn::Mul(hn::Sub(hn::Mul(p, hn::Set(dd, 1.099)), hn::Set(dd, 0.099)), range32), low);
            // 4.5 t as 4t + t / 2, both exact, so that an exact linear result
            // (a float midpoint included) is recognised and kept.
            const VD four = hn::Mul(t, hn::Set(dd, 4.0)), half = hn::Mul(t, hn::Set(dd, 0.5));
            const VD product = hn::Add(four, half);
            const VD straight = hn::Add(product, low);
            r = hn::IfThenElse(linear, straight, curved);
            size = hn::IfThenElse(linear, hn::Mul(hn::Abs(t), hn::Set(dd, 4.5)), hn::Mul(hn::Mul(p, absRange), hn::Set(dd, 1.1)));
            const VD zero = hn::Zero(dd);
            exact = hn::And(linear, hn::And(hn::Eq(sumError(in64, hn::Neg(low), t), zero),
                                            hn::And(hn::Eq(sumError(four, half, product), zero),
                                                    hn::Eq(sumError(product, low, straight), zero))));
        } else {
            const VD w = hn::Mul(hn::Add(hn::Max(u, join), hn::Set(dd, 0.099)), hn::Set(dd, 0.9099181073703366));
            const VD p = power(w, 2.2222222222222223);
            const VD curved = hn::Add(hn::Mul(p, range32), low);
            const VD straight = hn::Add(hn::Mul(t, hn::Set(dd, 0.2222222222222222)), low);
            r = hn::IfThenElse(linear, straight, curved);
            size = hn::IfThenElse(linear, hn::Mul(hn::Abs(t), hn::Set(dd, 0.25)), hn::Mul(p, absRange));
        }
        const VD e2 = hn::Mul(hn::Add(size, absLow), hn::Add(bound, bound));
        const auto below = hn::DemoteTo(df, hn::Sub(r, e2)), above = hn::DemoteTo(df, hn::Add(r, e2));
        const auto result = hn::DemoteTo(df, r);
        // Undecided: the float rounding, the branch, or anything not finite
        // (a NaN fails every comparison, so it is refused too).
        const MD rounded = hn::Or(exact, hn::Eq(hn::PromoteTo(dd, below), hn::PromoteTo(dd, above)));
        const MD decided = hn::And(hn::And(rounded, hn::And(hn::Lt(hn::Abs(r), inf), hn::Lt(e2, inf))),
                                   hn::And(hn::Lt(hn::Abs(u), hn::Set(dd, 1e100)),
                                           hn::Gt(hn::Abs(hn::Sub(u, join)), joinBound)));
        const MD refuse = hn::Not(decided);
        HWY_ALIGN Kel32f kept[kMaxLanes];
        const bool anyRefused = !hn::AllFalse(dd, refuse);
        if (anyRefused) hn::Store(in, df, kept);
        hn::StoreU(result, df, dst + x);
        if (anyRefused) {
            const std::uint64_t refused = maskBits(refuse);
            refusedCount += static_cast<std::int64_t>(hn::CountTrue(dd, refuse));
            gammaRefused32f(kept, dst + x, refused, range, Forward);
        }
    }
    if (x < count) gammaRefused32f(src + x, dst + x, firstLanes(count - x), range, Forward);
    return refusedCount;
}

std::int64_t rowFwd32f(const Kel32f* s, Kel32f* d, std::int64_t n, const Range32f& r) { return row32<true>(s, d, n, r); }
std::int64_t rowInv32f(const Kel32f* s, Kel32f* d, std::int64_t n, const Range32f& r) { return row32<false>(s, d, n, r); }

} // namespace HWY_NAMESPACE
} // namespace kel::gamma
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kel::gamma {

HWY_EXPORT(rowFwd16u);
HWY_EXPORT(rowInv16u);
HWY_EXPORT(rowFwd32f);
HWY_EXPORT(rowInv32f);

Row16u chooseGammaRow16u(bool forward)
{
    detectSimdTargets();
    return forward ? &HWY_DYNAMIC_DISPATCH(rowFwd16u) : &HWY_DYNAMIC_DISPATCH(rowInv16u);
}

Row32f chooseGammaRow32f(bool forward)
{
    detectSimdTargets();
    return forward ? &HWY_DYNAMIC_DISPATCH(rowFwd32f) : &HWY_DYNAMIC_DISPATCH(rowInv32f);
}

} // namespace kel::gamma
#endif // HWY_ONCE

#else // KELCC_SIMD

namespace kel::gamma {

Row16u chooseGammaRow16u(bool)
{
    return nullptr;
}
Row32f chooseGammaRow32f(bool)
{
    return nullptr;
}

} // namespace kel::gamma

#endif // KELCC_SIMD

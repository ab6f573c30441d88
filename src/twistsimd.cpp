// The vector row of the 8-bit pixel-order colour twist, for every SIMD
// target: the three sums in doubles, in the extended kernel's order, and the
// outcome taken from them only where a bound shows that the extended sum
// rounds to the same byte.
//
// The bound.  With c0..c2 at most 255, each product t c is exact in both
// types (24 + 8 bits); each of the three additions is rounded once, by at
// most 2^-53 (doubles) or 2^-64 (extended) of a value no larger than
// B = 255 (|t0| + |t1| + |t2|) + |t3|.  So the double sum s and the extended
// sum lie less than 3.01 * 2^-53 B < 2^-50 B = d apart.  (Floats would not
// do: a matrix of decimal weights such as 0.15 puts a tenth of all sums
// within 2^-20 of a half, where a float's rounding already decides.)
//
// The byte, as a function of the sum, is constant between the halves
// 0.5, 1.5, ... 254.5 and changes only there (below 0.5 it is 0 by the bound
// or by rounding, above 254.5 it is 255).  So s clamped to 0..255 and rounded
// is the extended kernel's byte wherever the clamped s lies more than d from
// a half: |c - round(c)| < 0.5 - d for c = clamp(s).  A step with any other
// sum goes to the extended kernel whole.  A matrix with NaN or infinite
// entries goes there from the start, so every sum here is finite.  The bound
// holds for any matrix: d grows with it.
#include "twistsimd.h"

#include <cmath>
#include <cstdint>

#include "simd.h"

#if KELCC_SIMD

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "twistsimd.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kel::twist {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using DF = hn::ScalableTag<double>;
using VF = hn::Vec<DF>;

// One output channel's weights and the clear distance 0.5 - d its rounded
// sums must keep from their halves.
struct OutputRow {
    VF w0, w1, w2, constant, clear;
};

HWY_INLINE OutputRow outputRow(DF df, const Kel32f* t, int i)
{
    const Kel32f* row = t + 4 * i;
    const double reach = 255.0 * (std::fabs(static_cast<double>(row[0])) + std::fabs(static_cast<double>(row[1])) +
                                  std::fabs(static_cast<double>(row[2]))) +
                         std::fabs(static_cast<double>(row[3]));
    return {hn::Set(df, row[0]), hn::Set(df, row[1]), hn::Set(df, row[2]), hn::Set(df, row[3]),
            hn::Set(df, 0.5 - reach * 0x1p-50)};
}

// One output channel: the sum clamped and rounded half to even (a whole
// double), and in `margin` how far inside its clear distance it stays
// (positive: decided).
HWY_INLINE VF outputOf(DF df, const OutputRow& m, VF c0, VF c1, VF c2, VF& margin)
{
    const VF s = hn::Add(hn::Add(hn::Add(hn::Mul(m.w0, c0), m.constant), hn::Mul(m.w1, c1)), hn::Mul(m.w2, c2));
    const VF clamped = hn::Min(hn::Max(s, hn::Zero(df)), hn::Set(df, 255.0));
    const VF rounded = hn::Round(clamped);
    margin = hn::Sub(m.clear, hn::Abs(hn::Sub(clamped, rounded)));
    return rounded;
}

// Sixteen pixels a step: de-interleaved and interleaved again as whole
// 16-byte vectors, the sums worked a vector of doubles at a time through
// small arrays.
std::int64_t twistRow8u(const Kel8u* src, Kel8u* dst, std::int64_t count, const Kel32f* t)
{
    constexpr int kStep = 16;
    const DF df;
    const hn::Rebind<std::int32_t, DF> di;
    const hn::Rebind<std::uint8_t, DF> d8;
    const hn::Full128<std::uint8_t> d16;
    const int lanes = static_cast<int>(hn::Lanes(df));
    const OutputRow rows[3] = {outputRow(df, t, 0), outputRow(df, t, 1), outputRow(df, t, 2)};
    std::int64_t x = 0;
    if (!matrixFinite(t)) return x;
    HWY_ALIGN Kel8u in[3][kStep];
    HWY_ALIGN Kel8u out[3][kStep];
    for (; x + kStep <= count; x += kStep) {
        hn::Vec<decltype(d16)> b0, b1, b2;
        hn::LoadInterleaved3(d16, src + 3 * x, b0, b1, b2);
        hn::Store(b0, d16, in[0]);
        hn::Store(b1, d16, in[1]);
        hn::Store(b2, d16, in[2]);
        VF lowest = hn::Set(df, 1.0);
        for (int part = 0; part < kStep; part += lanes) {
            const VF c0 = hn::PromoteTo(df, hn::PromoteTo(di, hn::LoadU(d8, in[0] + part)));
            const VF c1 = hn::PromoteTo(df, hn::PromoteTo(di, hn::LoadU(d8, in[1] + part)));
            const VF c2 = hn::PromoteTo(df, hn::PromoteTo(di, hn::LoadU(d8, in[2] + part)));
            VF margin0, margin1, margin2;
            const VF o0 = outputOf(df, rows[0], c0, c1, c2, margin0);
            const VF o1 = outputOf(df, rows[1], c0, c1, c2, margin1);
            const VF o2 = outputOf(df, rows[2], c0, c1, c2, margin2);
            lowest = hn::Min(lowest, hn::Min(margin0, hn::Min(margin1, margin2)));
            hn::StoreU(hn::DemoteTo(d8, hn::DemoteTo(di, o0)), d8, out[0] + part);
            hn::StoreU(hn::DemoteTo(d8, hn::DemoteTo(di, o1)), d8, out[1] + part);
            hn::StoreU(hn::DemoteTo(d8, hn::DemoteTo(di, o2)), d8, out[2] + part);
        }
        if (!hn::AllTrue(df, hn::Gt(lowest, hn::Zero(df)))) {
            // Nothing of the step is stored yet, so an in-place row still
            // holds the pixels the extended kernel reads.
            twistRowExact8u(src + 3 * x, dst + 3 * x, kStep, t);
            continue;
        }
        hn::StoreInterleaved3(hn::Load(d16, out[0]), hn::Load(d16, out[1]), hn::Load(d16, out[2]), d16, dst + 3 * x);
    }
    return x;
}

} // namespace HWY_NAMESPACE
} // namespace kel::twist
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kel::twist {

HWY_EXPORT(twistRow8u);

FastRow<Kel8u> chooseTwistRow8u()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(twistRow8u);
}

} // namespace kel::twist
#endif // HWY_ONCE

#else // KELCC_SIMD

namespace kel::twist {

FastRow<Kel8u> chooseTwistRow8u()
{
    return nullptr;
}

} // namespace kel::twist

#endif // KELCC_SIMD

// The vector kernel of the ordered dither, for every SIMD target: samples
// widened to doubles, the level arithmetic of ditherSampleFast lane by lane,
// each refusal of that function a lane of a mask.
#include "reducesimd.h"

#include <cstdint>
#include <cstring>

#include "simd.h"

#if KELCC_SIMD

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "reducesimd.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kel::reduce {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using DF = hn::ScalableTag<double>;
using DI = hn::Rebind<std::int32_t, DF>;
using VF = hn::Vec<DF>;
using MF = hn::Mask<DF>;

// The samples as doubles, exact (16s moved up by 32768).
template <class T>
HWY_INLINE VF loadValues(DF df, const typename T::Source* src)
{
    using Src = typename T::Source;
    if constexpr (std::is_same_v<Src, Kel32f>) {
        return hn::PromoteTo(df, hn::LoadU(hn::Rebind<float, DF>(), src));
    } else {
        const DI di;
        auto wide = hn::PromoteTo(di, hn::LoadU(hn::Rebind<Src, DF>(), src));
        if constexpr (std::is_same_v<Src, Kel16s>) wide = hn::Add(wide, hn::Set(di, 32768));
        return hn::PromoteTo(df, wide);
    }
}

// The outputs o, whole numbers in 0 .. top, stored (16s moved down by 32768).
template <class T>
HWY_INLINE void storeOutputs(DF df, VF o, typename T::Destination* dst)
{
    using Dst = typename T::Destination;
    const DI di;
    auto whole = hn::DemoteTo(di, o);
    if constexpr (std::is_same_v<Dst, Kel16s>) whole = hn::Sub(whole, hn::Set(di, 32768));
    hn::StoreU(hn::DemoteTo(hn::Rebind<Dst, DF>(), whole), hn::Rebind<Dst, DF>(), dst);
    (void)df;
}

// truncFast's test, lane by lane: |z| < limit and z at least 2^-30 from an
// integer; NaN fails every comparison.
HWY_INLINE MF truncAllowed(DF df, VF z, VF whole, double limit)
{
    const VF fraction = hn::Abs(hn::Sub(z, whole));
    return hn::And(hn::Lt(hn::Abs(z), hn::Set(df, limit)),
                   hn::And(hn::Ge(fraction, hn::Set(df, 0x1p-30)), hn::Le(fraction, hn::Set(df, 1.0 - 0x1p-30))));
}

// One vector: the outputs before the clamp, and in `allowed` the lanes no
// step refused.  Additions and products are separate operations, never fused.
template <class T>
HWY_INLINE VF ditherVector(DF df, VF v, VF threshold, VF guard, const FastLevels& k, MF& allowed)
{
    const VF y = hn::Add(hn::Mul(v, hn::Set(df, k.I)), hn::Set(df, kNudge));
    const VF q = hn::Trunc(y);
    allowed = truncAllowed(df, y, q, 0x1p17);
    const VF base = hn::Mul(q, hn::Set(df, k.S));
    const VF d = hn::Sub(hn::Sub(v, base), threshold);
    allowed = hn::And(allowed, hn::Gt(hn::Abs(d), guard));
    const MF up = hn::Gt(d, hn::Zero(df));
    if constexpr (T::kScale == Scale::k8u) {
        // (index * F) >> 8: index * F is a whole number below 2^25.
        const VF index = hn::Add(q, hn::IfThenElseZero(up, hn::Set(df, 1.0)));
        return hn::Floor(hn::Mul(hn::Mul(index, hn::Set(df, static_cast<double>(k.F))), hn::Set(df, 0x1p-8)));
    } else {
        const VF w = hn::IfThenElse(up, hn::Add(base, hn::Set(df, k.S)), base);
        VF z;
        if constexpr (T::kScale == Scale::k16) z = hn::Add(w, hn::Set(df, kNudge));
        else z = hn::Add(hn::Mul(w, hn::Set(df, static_cast<double>(T::kTop))), hn::Set(df, kNudge));
        VF o = hn::Trunc(z);
        allowed = hn::And(allowed, truncAllowed(df, z, o, 0x1p18));
        if constexpr (T::kScale == Scale::k16 && sizeof(typename T::Destination) == 1)
            o = hn::Floor(hn::Mul(o, hn::Set(df, 0x1p-8)));
        return o;
    }
}

template <class T>
int ditherRun(const typename T::Source* src, typename T::Destination* dst, int n, const double* thresholds,
              const double* guards, const FastLevels& k, int* refused)
{
    using Src = typename T::Source;
    using Dst = typename T::Destination;
    const DF df;
    const int lanes = static_cast<int>(hn::Lanes(df));
    const VF top = hn::Set(df, static_cast<double>(T::kTop));
    int count = 0;
    const auto one = [&](const Src* in, Dst* out, int i) {
        MF allowed;
        const VF o = ditherVector<T>(df, loadValues<T>(df, in), hn::LoadU(df, thresholds + i), hn::LoadU(df, guards + i),
                                     k, allowed);
        storeOutputs<T>(df, hn::Min(hn::Max(o, hn::Zero(df)), top), out);
        if (!hn::AllTrue(df, allowed)) refused[count++] = i;
    };
    int i = 0;
    for (; i + lanes <= n; i += lanes) one(src + i, dst + i, i);
    if (i < n) {
        // The last samples through a whole vector of copies.
        Src in[kMaxRunLanes] = {};
        Dst out[kMaxRunLanes];
        const std::size_t rest = static_cast<std::size_t>(n - i);
        std::memcpy(in, src + i, rest * sizeof(Src));
        one(in, out, i);
        std::memcpy(dst + i, out, rest * sizeof(Dst));
    }
    return count;
}

// One exported kernel a pair of sample types.
#define KEL_DITHER_RUN(NAME, T)                                                                                   \
    int NAME(const T::Source* src, T::Destination* dst, int n, const double* thresholds, const double* guards,  \
             const FastLevels& k, int* refused)                                                                  \
    {                                                                                                            \
        return ditherRun<T>(src, dst, n, thresholds, guards, k, refused);                                       \
    }
KEL_DITHER_RUN(ditherRun8u, T8u)
KEL_DITHER_RUN(ditherRun16u8u, T16u8u)
KEL_DITHER_RUN(ditherRun16s8u, T16s8u)
KEL_DITHER_RUN(ditherRun16u, T16u)
KEL_DITHER_RUN(ditherRun16s, T16s)
KEL_DITHER_RUN(ditherRun32f8u, T32f8u)
KEL_DITHER_RUN(ditherRun32f16u, T32f16u)
KEL_DITHER_RUN(ditherRun32f16s, T32f16s)
#undef KEL_DITHER_RUN

} // namespace HWY_NAMESPACE
} // namespace kel::reduce
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kel::reduce {

HWY_EXPORT(ditherRun8u);
HWY_EXPORT(ditherRun16u8u);
HWY_EXPORT(ditherRun16s8u);
HWY_EXPORT(ditherRun16u);
HWY_EXPORT(ditherRun16s);
HWY_EXPORT(ditherRun32f8u);
HWY_EXPORT(ditherRun32f16u);
HWY_EXPORT(ditherRun32f16s);

#define KEL_CHOOSE_DITHER_RUN(T, kernel)          \
    template <>                                   \
    DitherRun<T> chooseDitherRun<T>()             \
    {                                             \
        detectSimdTargets();                      \
        return &HWY_DYNAMIC_DISPATCH(kernel);     \
    }
KEL_CHOOSE_DITHER_RUN(T8u, ditherRun8u)
KEL_CHOOSE_DITHER_RUN(T16u8u, ditherRun16u8u)
KEL_CHOOSE_DITHER_RUN(T16s8u, ditherRun16s8u)
KEL_CHOOSE_DITHER_RUN(T16u, ditherRun16u)
KEL_CHOOSE_DITHER_RUN(T16s, ditherRun16s)
KEL_CHOOSE_DITHER_RUN(T32f8u, ditherRun32f8u)
KEL_CHOOSE_DITHER_RUN(T32f16u, ditherRun32f16u)
KEL_CHOOSE_DITHER_RUN(T32f16s, ditherRun32f16s)
#undef KEL_CHOOSE_DITHER_RUN

} // namespace kel::reduce
#endif // HWY_ONCE

#else // KELCC_SIMD

namespace kel::reduce {

template <class T>
DitherRun<T> chooseDitherRun()
{
    return nullptr;
}
template DitherRun<T8u> chooseDitherRun<T8u>();
template DitherRun<T16u8u> chooseDitherRun<T16u8u>();
template DitherRun<T16s8u> chooseDitherRun<T16s8u>();
template DitherRun<T16u> chooseDitherRun<T16u>();
template DitherRun<T16s> chooseDitherRun<T16s>();
template DitherRun<T32f8u> chooseDitherRun<T32f8u>();
template DitherRun<T32f16u> chooseDitherRun<T32f16u>();
template DitherRun<T32f16s> chooseDitherRun<T32f16s>();

} // namespace kel::reduce

#endif // KELCC_SIMD

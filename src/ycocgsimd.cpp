// Vector rows of the 8-bit YCoCg members, for every SIMD target: bytes
// widened to 16-bit lanes, where every sum of the 8-bit forward transforms
// fits, and where the inverse's 16-bit wrap-around is the lanes' own.
#include "ycocg.h"

#include <cstdint>

#include "simd.h"

#if KELCC_SIMD

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "ycocgsimd.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include "simdops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kel::ycocg {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
using kel::HWY_NAMESPACE::loadInterleaved3;
using kel::HWY_NAMESPACE::storeInterleaved3;

using DU8 = hn::ScalableTag<std::uint8_t>;
using DI16 = hn::Repartition<std::int16_t, DU8>;
using DH8 = hn::Half<DU8>;
using V16 = hn::Vec<DI16>;

// Forward, 16-bit lanes: R + 2G + B + 2 stays below 1023, the lifting steps
// within -510..510.
template <bool Lifting>
HWY_INLINE void forward(DI16 d, V16 b, V16 g, V16 r, V16& y, V16& co, V16& cg)
{
    if constexpr (Lifting) {
        co = hn::Sub(r, b);
        const V16 t = hn::Add(b, hn::ShiftRight<1>(co));
        cg = hn::Sub(g, t);
        y = hn::Add(t, hn::ShiftRight<1>(cg));
    } else {
        const V16 g2 = hn::Add(g, g), two = hn::Set(d, 2);
        y = hn::ShiftRight<2>(hn::Add(hn::Add(hn::Add(r, g2), b), two));
        co = hn::ShiftRight<1>(hn::Add(hn::Sub(r, b), hn::Set(d, 1)));
        cg = hn::ShiftRight<2>(hn::Add(hn::Sub(hn::Sub(g2, r), b), two));
    }
}

// Inverse, 16-bit lanes: the low 16 bits of each sum are the lanes' own
// wrap-around; the clamp to 0..255 is the saturating narrowing after.
template <bool Lifting>
HWY_INLINE void inverse(V16 y, V16 co, V16 cg, V16& b, V16& g, V16& r)
{
    if constexpr (Lifting) {
        const V16 t = hn::Sub(y, hn::ShiftRight<1>(cg));
        g = hn::Add(cg, t);
        b = hn::Sub(t, hn::ShiftRight<1>(co));
        r = hn::Add(b, co);
    } else {
        r = hn::Sub(hn::Add(y, co), cg);
        g = hn::Add(y, cg);
        b = hn::Sub(hn::Sub(y, co), cg);
    }
}

template <bool Lifting, int Pitch>
void forwardRow(const Kel8u* src, Kel16s* y, Kel16s* co, Kel16s* cg, int width)
{
    const DU8 du8;
    const DI16 d;
    const DH8 dh;
    const int lanes = static_cast<int>(hn::Lanes(du8)), half = lanes / 2;
    int x = 0;
    for (; x + lanes <= width; x += lanes) {
        hn::Vec<DU8> b8, g8, r8, a8;
        if constexpr (Pitch == 3) loadInterleaved3(du8, src + 3 * x, b8, g8, r8);
        else hn::LoadInterleaved4(du8, src + 4 * x, b8, g8, r8, a8);
        const auto wideLow = [&](hn::Vec<DU8> v) { return hn::BitCast(d, hn::PromoteTo(hn::RebindToUnsigned<DI16>(), hn::LowerHalf(dh, v))); };
        const auto wideHigh = [&](hn::Vec<DU8> v) { return hn::BitCast(d, hn::PromoteTo(hn::RebindToUnsigned<DI16>(), hn::UpperHalf(dh, v))); };
        V16 yv, cov, cgv;
        forward<Lifting>(d, wideLow(b8), wideLow(g8), wideLow(r8), yv, cov, cgv);
        hn::StoreU(yv, d, y + x);
        hn::StoreU(cov, d, co + x);
        hn::StoreU(cgv, d, cg + x);
        forward<Lifting>(d, wideHigh(b8), wideHigh(g8), wideHigh(r8), yv, cov, cgv);
        hn::StoreU(yv, d, y + x + half);
        hn::StoreU(cov, d, co + x + half);
        hn::StoreU(cgv, d, cg + x + half);
    }
    using Arith = std::conditional_t<Lifting, LiftingForward, PlainForward>;
    innerForward8u<Arith, Pitch>(src + Pitch * x, y + x, co + x, cg + x, width - x);
}

template <bool Lifting, int Pitch>
void inverseRow(const Kel16s* y, const Kel16s* co, const Kel16s* cg, Kel8u* dst, int width, Kel8u alpha)
{
    const DU8 du8;
    const DI16 d;
    const int lanes = static_cast<int>(hn::Lanes(du8)), half = lanes / 2;
    const DH8 dh;
    const auto alphas = hn::Set(du8, alpha);
    // Two vectors of 16-bit results to one of bytes in order, clamped to 0..255.
    const auto narrow = [&](V16 first, V16 second) {
        return hn::Combine(du8, hn::DemoteTo(dh, second), hn::DemoteTo(dh, first));
    };
    int x = 0;
    for (; x + lanes <= width; x += lanes) {
        V16 b0, g0, r0, b1, g1, r1;
        inverse<Lifting>(hn::LoadU(d, y + x), hn::LoadU(d, co + x), hn::LoadU(d, cg + x), b0, g0, r0);
        inverse<Lifting>(hn::LoadU(d, y + x + half), hn::LoadU(d, co + x + half), hn::LoadU(d, cg + x + half), b1,
                         g1, r1);
        const auto b8 = narrow(b0, b1), g8 = narrow(g0, g1), r8 = narrow(r0, r1);
        if constexpr (Pitch == 3) storeInterleaved3(du8, b8, g8, r8, dst + 3 * x);
        else hn::StoreInterleaved4(b8, g8, r8, alphas, du8, dst + 4 * x);
    }
    using Arith = std::conditional_t<Lifting, LiftingInverse<false>, PlainInverse>;
    innerInverse8u<Arith, Pitch>(y + x, co + x, cg + x, dst + Pitch * x, width - x, alpha);
}

void forwardPlain3(const Kel8u* s, Kel16s* y, Kel16s* co, Kel16s* cg, int w) { forwardRow<false, 3>(s, y, co, cg, w); }
void forwardPlain4(const Kel8u* s, Kel16s* y, Kel16s* co, Kel16s* cg, int w) { forwardRow<false, 4>(s, y, co, cg, w); }
void forwardLifting3(const Kel8u* s, Kel16s* y, Kel16s* co, Kel16s* cg, int w) { forwardRow<true, 3>(s, y, co, cg, w); }
void forwardLifting4(const Kel8u* s, Kel16s* y, Kel16s* co, Kel16s* cg, int w) { forwardRow<true, 4>(s, y, co, cg, w); }
void inversePlain3(const Kel16s* y, const Kel16s* co, const Kel16s* cg, Kel8u* d, int w, Kel8u a)
{
    inverseRow<false, 3>(y, co, cg, d, w, a);
}
void inversePlain4(const Kel16s* y, const Kel16s* co, const Kel16s* cg, Kel8u* d, int w, Kel8u a)
{
    inverseRow<false, 4>(y, co, cg, d, w, a);
}
void inverseLifting3(const Kel16s* y, const Kel16s* co, const Kel16s* cg, Kel8u* d, int w, Kel8u a)
{
    inverseRow<true, 3>(y, co, cg, d, w, a);
}
void inverseLifting4(const Kel16s* y, const Kel16s* co, const Kel16s* cg, Kel8u* d, int w, Kel8u a)
{
    inverseRow<true, 4>(y, co, cg, d, w, a);
}

} // namespace HWY_NAMESPACE
} // namespace kel::ycocg
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kel::ycocg {

HWY_EXPORT(forwardPlain3);
HWY_EXPORT(forwardPlain4);
HWY_EXPORT(forwardLifting3);
HWY_EXPORT(forwardLifting4);
HWY_EXPORT(inversePlain3);
HWY_EXPORT(inversePlain4);
HWY_EXPORT(inverseLifting3);
HWY_EXPORT(inverseLifting4);

ForwardRow8u chooseForwardRow8u(bool lifting, int pitch)
{
    detectSimdTargets();
    if (lifting) return pitch == 3 ? &HWY_DYNAMIC_DISPATCH(forwardLifting3) : &HWY_DYNAMIC_DISPATCH(forwardLifting4);
    return pitch == 3 ? &HWY_DYNAMIC_DISPATCH(forwardPlain3) : &HWY_DYNAMIC_DISPATCH(forwardPlain4);
}

InverseRow8u chooseInverseRow8u(bool lifting, int pitch)
{
    detectSimdTargets();
    if (lifting) return pitch == 3 ? &HWY_DYNAMIC_DISPATCH(inverseLifting3) : &HWY_DYNAMIC_DISPATCH(inverseLifting4);
    return pitch == 3 ? &HWY_DYNAMIC_DISPATCH(inversePlain3) : &HWY_DYNAMIC_DISPATCH(inversePlain4);
}

} // namespace kel::ycocg
#endif // HWY_ONCE

#else // KELCC_SIMD

namespace kel::ycocg {

ForwardRow8u chooseForwardRow8u(bool lifting, int pitch)
{
    if (lifting) return pitch == 3 ? innerForward8u<LiftingForward, 3> : innerForward8u<LiftingForward, 4>;
    return pitch == 3 ? innerForward8u<PlainForward, 3> : innerForward8u<PlainForward, 4>;
}

InverseRow8u chooseInverseRow8u(bool lifting, int pitch)
{
    if (lifting) return pitch == 3 ? innerInverse8u<LiftingInverse<false>, 3> : innerInverse8u<LiftingInverse<false>, 4>;
    return pitch == 3 ? innerInverse8u<PlainInverse, 3> : innerInverse8u<PlainInverse, 4>;
}

} // namespace kel::ycocg

#endif // KELCC_SIMD

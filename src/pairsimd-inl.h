// Whole-vector operations of the full-resolution luma-chroma kernels: bytes
// widened to 16 bits, 16-bit pairs multiply-added into exact 32-bit sums, and
// the sums' upper halves brought back to 16 bits, all in one lane order.
//
// Included once for every target from a file that includes foreach_target.h,
// after simdops-inl.h; the guard follows Highway's convention for such headers.
#if defined(KELCC_PAIRSIMD_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KELCC_PAIRSIMD_INL_H_
#undef KELCC_PAIRSIMD_INL_H_
#else
#define KELCC_PAIRSIMD_INL_H_
#endif

#include <cstdint>
#include <utility>

#include <hwy/highway.h>

#include "kelcc.h"

HWY_BEFORE_NAMESPACE();
namespace kel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// The lane order all of these keep: a vector of bytes is widened by zipping
// within 16-byte blocks (`lower` the first half of each block, `upper` the
// second), 16-bit vectors are paired the same way, and the two x86 packs, also
// within blocks, undo each zip.  A pixel's 16-bit lane and its 32-bit lane thus
// always come back to its byte's place.

template <class DI16>
struct Halves {
    hn::Vec<DI16> lower, upper;
};

// Bytes as signed 16-bit values 0..255.
template <class DI16>
HWY_INLINE Halves<DI16> widenBytes(DI16 di16, hn::Vec<hn::Repartition<std::uint8_t, DI16>> bytes)
{
    const hn::RebindToUnsigned<DI16> du16;
    const auto zero = hn::Zero(hn::Repartition<std::uint8_t, DI16>());
    return {hn::BitCast(di16, hn::ZipLower(du16, bytes, zero)), hn::BitCast(di16, hn::ZipUpper(du16, bytes, zero))};
}

// (first, second) side by side in each 32-bit lane, first in the lower half,
// for a 16-bit multiply-add with a weightPair(first weight, second weight).
template <class DI16>
HWY_INLINE Halves<DI16> pairUp(DI16 di16, hn::Vec<DI16> first, hn::Vec<DI16> second)
{
    const hn::Repartition<std::int32_t, DI16> di32;
    return {hn::BitCast(di16, hn::ZipLower(di32, first, second)), hn::BitCast(di16, hn::ZipUpper(di32, first, second))};
}

// acc + first * w.first + second * w.second in every 32-bit lane (pmaddwd).
// The caller keeps every product and the sum inside 32 bits and never pairs
// -32768 with -32768, the one case where the instruction saturates.
template <class DI32>
HWY_INLINE hn::Vec<DI32> multiplyAdd(DI32 di32, hn::Vec<hn::Repartition<std::int16_t, DI32>> pairs,
                                     std::int32_t weights, hn::Vec<DI32> acc)
{
    const hn::Repartition<std::int16_t, DI32> di16;
    auto other = hn::Zero(di32);
    const auto sum = hn::ReorderWidenMulAccumulate(di32, pairs, hn::BitCast(di16, hn::Set(di32, weights)), acc, other);
    return hn::RearrangeToOddPlusEven(sum, other);
}

// floor(sum / 65536) of the sums of `lower` and `upper` pairs, back in the
// order of the 16-bit vector they were paired from.  The arithmetic shift is
// the floor; the pack saturates, so callers keep the results within 16 bits.
template <class DI16>
HWY_INLINE hn::Vec<DI16> upperHalves(DI16 di16, hn::Vec<hn::Repartition<std::int32_t, DI16>> lower,
                                     hn::Vec<hn::Repartition<std::int32_t, DI16>> upper)
{
    return hn::ReorderDemote2To(di16, hn::ShiftRight<16>(lower), hn::ShiftRight<16>(upper));
}

// v + Multiple * sample, for the small multiples of 65536 that a coefficient's
// split leaves above its 16-bit part (see highPart).
template <std::int32_t Multiple, class V>
HWY_INLINE V addMultiple(V v, V sample)
{
    static_assert(Multiple >= -2 && Multiple <= 2, "the splits leave at most twice a sample");
    if constexpr (Multiple == 1) return hn::Add(v, sample);
    if constexpr (Multiple == -1) return hn::Sub(v, sample);
    if constexpr (Multiple == 2) return hn::Add(v, hn::Add(sample, sample));
    if constexpr (Multiple == -2) return hn::Sub(v, hn::Add(sample, sample));
    return v;
}

} // namespace HWY_NAMESPACE
} // namespace kel
HWY_AFTER_NAMESPACE();

#endif // KELCC_PAIRSIMD_INL_H_

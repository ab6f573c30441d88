// Filtered 4:2:0 rows on whole vectors: the deinterlacing taps, the YUY2 row pairs and the
// four-tap chroma interpolator, compiled once for every SIMD target (foreach_target.h).
#include "ycbcr44deintsimd.h"

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "simd.h"

#if KELCC_SIMD

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "ycbcr44deintsimd.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include "simdops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kel {
namespace simddeint {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
using kel::HWY_NAMESPACE::wholeSteps;

using DU8 = hn::ScalableTag<std::uint8_t>;
using VU8 = hn::Vec<DU8>;
using DU16 = hn::Repartition<std::uint16_t, DU8>;
using DI16 = hn::Repartition<std::int16_t, DU8>;

// Kernels are flattened: a step lambda left out of line reloads every
// captured pointer after each store.
#define KEL_KERNEL [[gnu::flatten]]

// (a + b) >> 1 in bytes from the complements 255 - a, 255 - b: for s = a + b,
// AverageRound gives (511 - s) >> 1 = 255 - (s >> 1), whose complement is s >> 1.
HWY_INLINE VU8 floorMeanOfComplements(VU8 notA, VU8 notB)
{
    return hn::Not(hn::AverageRound(notA, notB));
}

// The luma tap (a + 2b + c + round) >> 2, round 0 or 4, clamped to 255.  With
// m = (a + c) >> 1 and a + c = 2m + p (p 0 or 1), (a + 2b + c) >> 2 =
// (2(m + b) + p) >> 2 = (m + b) >> 1, since p adds less than the half that an
// odd m + b lacks.  Round 4 adds exactly 1 after the shift, and the clamp to
// 255 is then a saturating add.  (Held to the formula over every a, b, c by
// the tests.)
HWY_INLINE VU8 lumaTaps(VU8 above, VU8 row, VU8 below, VU8 up)
{
    const VU8 m = hn::AverageRound(hn::Not(above), hn::Not(below));  // complement of (a + c) >> 1
    return hn::SaturatedAdd(floorMeanOfComplements(m, hn::Not(row)), up);
}

// The chroma tap (first + second + round) >> 1, round 0 or 2: the floor mean,
// plus 1 for round 2 with the clamp to 255 as a saturating add.
HWY_INLINE VU8 chromaTaps(VU8 first, VU8 second, VU8 up)
{
    return hn::SaturatedAdd(floorMeanOfComplements(hn::Not(first), hn::Not(second)), up);
}

// The 0 or 1 that a rounding term adds after the shift: 4 >> 2, 2 >> 1.
HWY_INLINE VU8 lumaUp(DU8 d, int round) { return hn::Set(d, static_cast<std::uint8_t>(round >> 2)); }
HWY_INLINE VU8 chromaUp(DU8 d, int round) { return hn::Set(d, static_cast<std::uint8_t>(round >> 1)); }

// ---- deinterlacing -------------------------------------------------------------------------

KEL_KERNEL int lumaRow(const Kel8u* above, const Kel8u* row, const Kel8u* below, int round, Kel8u* dst, int width)
{
    const DU8 d;
    const int n = static_cast<int>(hn::Lanes(d));
    const VU8 up = lumaUp(d, round);
    return wholeSteps(width, n, 1, [&](int x) {
        hn::StoreU(lumaTaps(hn::LoadU(d, above + x), hn::LoadU(d, row + x), hn::LoadU(d, below + x), up), d, dst + x);
    });
}

// The tap works on the pairs' bytes as they stand (the same for Cb and Cr);
// the even bytes then go to the Cb plane, the odd to the Cr plane.  n samples
// of each a step.
KEL_KERNEL int chromaRow(const Kel8u* first, const Kel8u* second, int round, Kel8u* dstCb, Kel8u* dstCr, int samples)
{
    const DU8 d;
    const int n = static_cast<int>(hn::Lanes(d));
    const VU8 up = chromaUp(d, round);
    return wholeSteps(samples, n, 1, [&](int k) {
        const VU8 low = chromaTaps(hn::LoadU(d, first + 2 * k), hn::LoadU(d, second + 2 * k), up);
        const VU8 high = chromaTaps(hn::LoadU(d, first + 2 * k + n), hn::LoadU(d, second + 2 * k + n), up);
        hn::StoreU(hn::ConcatEven(d, high, low), d, dstCb + k);
        hn::StoreU(hn::ConcatOdd(d, high, low), d, dstCr + k);
    });
}

#if HWY_TARGET == HWY_AVX3_DL
// Where each byte of two 64-byte vectors of YUY2 (32 pixels each) comes from,
// for VBMI's two-source byte permute: luma byte i is at i, chroma byte i at
// 64 + i; the pixels' bytes alternate luma, chroma.
struct PairPermutes {
    alignas(64) std::uint8_t at[2][64];
};
constexpr PairPermutes makePairPermutes()
{
    PairPermutes t{};
    for (int k = 0; k < 2; ++k) {
        for (int j = 0; j < 64; ++j) t.at[k][j] = static_cast<std::uint8_t>((j & 1 ? 64 : 0) + 32 * k + j / 2);
    }
    return t;
}
alignas(64) constexpr PairPermutes kPairPermutes = makePairPermutes();
#endif

// n luma bytes and n chroma bytes interleaved, 2n bytes from dst: two byte
// permutes on AVX3_DL, Highway's interleaving store elsewhere.
HWY_INLINE void storePixelPairs(DU8 d, VU8 luma, VU8 chroma, Kel8u* dst)
{
#if HWY_TARGET == HWY_AVX3_DL
    (void)d;
    const __m512i first = _mm512_load_si512(kPairPermutes.at[0]), second = _mm512_load_si512(kPairPermutes.at[1]);
    _mm512_storeu_si512(dst, _mm512_permutex2var_epi8(luma.raw, first, chroma.raw));
    _mm512_storeu_si512(dst + 64, _mm512_permutex2var_epi8(luma.raw, second, chroma.raw));
#else
    hn::StoreInterleaved2(luma, chroma, d, dst);
#endif
}

// Two YUY2 rows, 2n pixels a step.  The chroma taps of the step's n pixel
// pairs are Cb, Cr pairs as NV12 holds them, which is the order YUY2 wants
// them between its luma bytes: interleaving n luma bytes with n chroma bytes
// gives n pixels, Y0 Cb Y1 Cr.
KEL_KERNEL int yuy2Rows(const Kel8u* above, const Kel8u* upper, const Kel8u* lower, const Kel8u* below, int upperRound,
                        int lowerRound, const Kel8u* chromaFirst, const Kel8u* chromaSecond, int chromaRound,
                        Kel8u* dstUpper, Kel8u* dstLower, int width)
{
    const DU8 d;
    const int n = static_cast<int>(hn::Lanes(d));
    const VU8 upUpper = lumaUp(d, upperRound), upLower = lumaUp(d, lowerRound), upChroma = chromaUp(d, chromaRound);
    return wholeSteps(width, 2 * n, 2, [&](int x) {
        for (int half = 0; half < 2; ++half) {
            const int at = x + half * n;
            const VU8 a = hn::LoadU(d, above + at), u = hn::LoadU(d, upper + at), l = hn::LoadU(d, lower + at),
                      b = hn::LoadU(d, below + at);
            const VU8 chroma = chromaTaps(hn::LoadU(d, chromaFirst + at), hn::LoadU(d, chromaSecond + at), upChroma);
            storePixelPairs(d, lumaTaps(a, u, l, upUpper), chroma, dstUpper + 2 * at);
            storePixelPairs(d, lumaTaps(u, l, b, upLower), chroma, dstLower + 2 * at);
        }
    });
}

// ---- interpolation ---------------------------------------------------------------------------

// The filter's taps -1, 9, 9, -1.
constexpr int kInnerTapWeight = 9;

#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
#define KEL_PAIR_SUMS 1
HWY_INLINE __m512i pairSums(__m512i bytes, __m512i weights) { return _mm512_maddubs_epi16(bytes, weights); }
HWY_INLINE __m512i packClamped(__m512i low, __m512i high) { return _mm512_packus_epi16(low, high); }
#elif HWY_TARGET == HWY_AVX2
#define KEL_PAIR_SUMS 1
HWY_INLINE __m256i pairSums(__m256i bytes, __m256i weights) { return _mm256_maddubs_epi16(bytes, weights); }
HWY_INLINE __m256i packClamped(__m256i low, __m256i high) { return _mm256_packus_epi16(low, high); }
#elif HWY_TARGET == HWY_SSSE3 || HWY_TARGET == HWY_SSE4
#define KEL_PAIR_SUMS 1
HWY_INLINE __m128i pairSums(__m128i bytes, __m128i weights) { return _mm_maddubs_epi16(bytes, weights); }
HWY_INLINE __m128i packClamped(__m128i low, __m128i high) { return _mm_packus_epi16(low, high); }
#else
#define KEL_PAIR_SUMS 0
#endif

#if KEL_PAIR_SUMS
// n samples a step, in as few operations as the filter allows: the bytes of
// upper and lower interleaved (within each 16-byte block), and those of above
// and below, so that one multiply-add of byte pairs gives 9 (upper + lower)
// in a 16-bit lane (at most 4590: the saturating add never saturates) and
// another -(above + below).  The fixed-point multiply by 2048 is
// (sum * 2048 + 2^14) >> 15 = (sum + 8) >> 4 with an arithmetic shift; the
// pack saturates the signed lanes to 0 .. 255, the clamp, and puts the
// block's lower and upper halves back in order.
KEL_KERNEL int interpolatedRow(const Kel8u* above, const Kel8u* upper, const Kel8u* lower, const Kel8u* below,
                               Kel8u* dst, int samples)
{
    const DU8 d;
    const DI16 di16;
    const int n = static_cast<int>(hn::Lanes(d));
    const VU8 inner = hn::Set(d, static_cast<std::uint8_t>(kInnerTapWeight));
    const VU8 outer = hn::Set(d, static_cast<std::uint8_t>(0xFF));  // -1 as a signed byte
    const auto shift = hn::Set(di16, 2048);
    const auto tap = [&](VU8 innerPairs, VU8 outerPairs) {
        const auto sum = hn::Add(hn::Vec<DI16>{pairSums(innerPairs.raw, inner.raw)},
                                 hn::Vec<DI16>{pairSums(outerPairs.raw, outer.raw)});
        return hn::MulFixedPoint15(sum, shift);
    };
    return wholeSteps(samples, n, 1, [&](int k) {
        const VU8 a = hn::LoadU(d, above + k), u = hn::LoadU(d, upper + k), l = hn::LoadU(d, lower + k),
                  b = hn::LoadU(d, below + k);
        const auto low = tap(hn::InterleaveLower(d, u, l), hn::InterleaveLower(d, a, b));
        const auto high = tap(hn::InterleaveUpper(d, u, l), hn::InterleaveUpper(d, a, b));
        hn::StoreU(VU8{packClamped(low.raw, high.raw)}, d, dst + k);
    });
}
#else
// (9 (upper + lower) - above - below + 8) >> 4 over one set of 16-bit lanes
// holding bytes: the sum lies in -510 .. 4598, inside 16 bits; the shift is
// arithmetic, as the scalar shift of a signed sum is; then the clamp to
// 0 .. 255.
HWY_INLINE hn::Vec<DU16> interpolatedLanes(hn::Vec<DU16> above, hn::Vec<DU16> upper, hn::Vec<DU16> lower,
                                           hn::Vec<DU16> below)
{
    const DI16 di16;
    const DU16 du16;
    const auto inner = hn::BitCast(di16, hn::Add(upper, lower));
    const auto sum = hn::Add(hn::Sub(hn::Sub(hn::Mul(inner, hn::Set(di16, kInnerTapWeight)), hn::BitCast(di16, above)),
                                     hn::BitCast(di16, below)),
                             hn::Set(di16, 8));
    const auto clamped = hn::Min(hn::Max(hn::ShiftRight<4>(sum), hn::Zero(di16)), hn::Set(di16, 255));
    return hn::BitCast(du16, clamped);
}

// n samples a step: the even bytes and the odd bytes of each row each in
// their own 16-bit lanes, the two results put back in their bytes.
KEL_KERNEL int interpolatedRow(const Kel8u* above, const Kel8u* upper, const Kel8u* lower, const Kel8u* below,
                               Kel8u* dst, int samples)
{
    const DU8 d;
    const DU16 du16;
    const int n = static_cast<int>(hn::Lanes(d));
    const auto lowByte = hn::Set(du16, 0xFF);
    return wholeSteps(samples, n, 1, [&](int k) {
        const auto a = hn::BitCast(du16, hn::LoadU(d, above + k)), u = hn::BitCast(du16, hn::LoadU(d, upper + k)),
                   l = hn::BitCast(du16, hn::LoadU(d, lower + k)), b = hn::BitCast(du16, hn::LoadU(d, below + k));
        const auto even = interpolatedLanes(hn::And(a, lowByte), hn::And(u, lowByte), hn::And(l, lowByte),
                                            hn::And(b, lowByte));
        const auto odd = interpolatedLanes(hn::ShiftRight<8>(a), hn::ShiftRight<8>(u), hn::ShiftRight<8>(l),
                                           hn::ShiftRight<8>(b));
        hn::StoreU(hn::BitCast(d, hn::Or(even, hn::ShiftLeft<8>(odd))), d, dst + k);
    });
}
#endif
#undef KEL_PAIR_SUMS

// The even rows of the interpolator are copied in the same whole steps as
// the odd rows' kernel reads them back: each load then finds one store of
// the same bytes to forward from, where a copy in other steps (memcpy's own,
// or a scalar tail) leaves loads that straddle two stores and wait for both
// to reach the cache.

// dst[k] = src[k], n samples a step.
KEL_KERNEL int copiedRow(const Kel8u* src, Kel8u* dst, int samples)
{
    const DU8 d;
    const int n = static_cast<int>(hn::Lanes(d));
    return wholeSteps(samples, n, 1, [&](int k) { hn::StoreU(hn::LoadU(d, src + k), d, dst + k); });
}

// cb[k] = src[2k], cr[k] = src[2k + 1], n samples a step.
KEL_KERNEL int splitPairs(const Kel8u* src, Kel8u* cb, Kel8u* cr, int samples)
{
    const DU8 d;
    const int n = static_cast<int>(hn::Lanes(d));
    return wholeSteps(samples, n, 1, [&](int k) {
        VU8 first, second;
        hn::LoadInterleaved2(d, src + 2 * k, first, second);
        hn::StoreU(first, d, cb + k);
        hn::StoreU(second, d, cr + k);
    });
}

constexpr Kernels kKernels{lumaRow, chromaRow, yuy2Rows, interpolatedRow, copiedRow, splitPairs};

const Kernels* kernelsOfTarget()
{
    return &kKernels;
}

} // namespace HWY_NAMESPACE
} // namespace simddeint
} // namespace kel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kel::simddeint {

namespace {
std::atomic<bool> heldScalar{false};
}

HWY_EXPORT(kernelsOfTarget);

const Kernels* chooseKernels()
{
    if (heldScalar.load(std::memory_order_relaxed)) return nullptr;
    detectSimdTargets();
    return HWY_DYNAMIC_DISPATCH(kernelsOfTarget)();
}

void holdScalarForTest(bool hold)
{
    heldScalar.store(hold, std::memory_order_relaxed);
}

} // namespace kel::simddeint
#endif // HWY_ONCE

#else // a build without SIMD: the scalar kernels alone

namespace kel::simddeint {

const Kernels* chooseKernels()
{
    return nullptr;
}

void holdScalarForTest(bool) {}

} // namespace kel::simddeint

#endif // KELCC_SIMD

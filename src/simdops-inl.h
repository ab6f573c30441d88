// Whole-vector operations the SIMD kernels share: exact splits of the
// fixed-point constants, the ordered pack, interleaved RGB24 stores, and the
// luma and chroma terms of the inverse luma-chroma conversions.
//
// Included once for every target from a file that includes foreach_target.h;
// the guard below follows Highway's convention for such headers.
#if defined(KELCC_SIMDOPS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KELCC_SIMDOPS_INL_H_
#undef KELCC_SIMDOPS_INL_H_
#else
#define KELCC_SIMDOPS_INL_H_
#endif

#include <cstdint>

#include <hwy/highway.h>

#include "cbcrpx.h"
#include "rowstore.h"

HWY_BEFORE_NAMESPACE();
namespace kel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// ---- constants -----------------------------------------------------------------------------------

// A coefficient k as high * 65536 + low, with low a signed 16-bit value, so
// that low rides in a 16-bit multiply-add and high multiplies a sample whose
// product only moves the upper half of the 32-bit sum:
// 104595 = 2 * 65536 - 26477, -53281 = -65536 + 12255, 132186 = 2 * 65536 + 1114.
constexpr std::int32_t highPart(std::int32_t k)
{
    return (k + 32768) >> 16;
}
constexpr std::int32_t lowPart(std::int32_t k)
{
    return k - highPart(k) * 65536;
}

// Two 16-bit weights in one 32-bit lane: the Cb weight in the lower half, as
// the Cb sample is in its pair.
constexpr std::int32_t weightPair(std::int32_t cbWeight, std::int32_t crWeight)
{
    return static_cast<std::int32_t>(static_cast<std::uint16_t>(cbWeight) |
                                     static_cast<std::uint32_t>(static_cast<std::uint16_t>(crWeight)) << 16);
}

// One channel's chroma term over the stored (uncentred) Cb and Cr: the set's
// centring on chromaZero folded into the offset, an exact integer identity.
struct ChromaWeights {
    std::int32_t cb, cr, offset;
};
template <const InverseYCbCr& K>
constexpr ChromaWeights kRedWeights{0, K.crToR, K.offsetR - K.chromaZero * K.crToR};
template <const InverseYCbCr& K>
constexpr ChromaWeights kGreenWeights{-K.cbToG, -K.crToG, K.offsetG + K.chromaZero * (K.cbToG + K.crToG)};
template <const InverseYCbCr& K>
constexpr ChromaWeights kBlueWeights{K.cbToB, 0, K.offsetB - K.chromaZero * K.cbToB};

// Byte indices that copy the lower (or upper) 16-bit half of each 32-bit lane
// into both halves: a cell's term, one lane a cell, becomes two pixels' lanes.
alignas(16) constexpr std::uint8_t kLowHalves[16] = {0, 1, 0, 1, 4, 5, 4, 5, 8, 9, 8, 9, 12, 13, 12, 13};
alignas(16) constexpr std::uint8_t kHighHalves[16] = {2, 3, 2, 3, 6, 7, 6, 7, 10, 11, 10, 11, 14, 15, 14, 15};

#if HWY_TARGET == HWY_AVX3_DL
// RGB24 by VBMI byte permutes, three output vectors of 64 bytes: byte j of
// output k is channel (64k + j) % 3 of pixel (64k + j) / 3.  `pick` takes
// channels 0 and 1 from the first two vectors, `merge` keeps them and adds
// channel 2 from the third.
struct InterleaveTables {
    alignas(64) std::uint8_t pick[3][64];
    alignas(64) std::uint8_t merge[3][64];
};
constexpr InterleaveTables makeInterleaveTables()
{
    InterleaveTables t{};
    for (int k = 0; k < 3; ++k) {
        for (int j = 0; j < 64; ++j) {
            const int at = 64 * k + j, pixel = at / 3, channel = at % 3;
            t.pick[k][j] = static_cast<std::uint8_t>(channel == 1 ? 64 + pixel : pixel);
            t.merge[k][j] = static_cast<std::uint8_t>(channel == 2 ? 64 + pixel : j);
        }
    }
    return t;
}
alignas(64) constexpr InterleaveTables kInterleave = makeInterleaveTables();
#endif

// Three channel vectors stored as RGB24 (or BGR24: the caller's order).
// Highway 1.0.3's StoreInterleaved3 shuffles 16-byte blocks; AVX3_DL permutes
// whole vectors instead.
template <class DU8>
HWY_INLINE void storeInterleaved3(DU8 du8, hn::Vec<DU8> v0, hn::Vec<DU8> v1, hn::Vec<DU8> v2, Kel8u* dst)
{
#if HWY_TARGET == HWY_AVX3_DL
    (void)du8;
    for (int k = 0; k < 3; ++k) {
        const __m512i pick = _mm512_load_si512(kInterleave.pick[k]);
        const __m512i merge = _mm512_load_si512(kInterleave.merge[k]);
        const __m512i firstTwo = _mm512_permutex2var_epi8(v0.raw, pick, v1.raw);
        _mm512_storeu_si512(dst + 64 * k, _mm512_permutex2var_epi8(firstTwo, merge, v2.raw));
    }
#else
    hn::StoreInterleaved3(v0, v1, v2, du8, dst);
#endif
}

// Two vectors of 16-bit results to one of bytes, saturated to 0..255.  The
// pixels were spread over the two by zipping within 16-byte blocks, and the
// x86 pack, also within blocks, puts them back in order; Highway 1.0.3 has
// no such pack.  On one-block targets zip and demote keep the order anyway.
template <class DU8, class VI16>
HWY_INLINE hn::Vec<DU8> packBytes(DU8 du8, VI16 first, VI16 second)
{
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    (void)du8;
    return hn::Vec<DU8>{_mm512_packus_epi16(first.raw, second.raw)};
#elif HWY_TARGET == HWY_AVX2
    (void)du8;
    return hn::Vec<DU8>{_mm256_packus_epi16(first.raw, second.raw)};
#elif HWY_TARGET == HWY_SSE4 || HWY_TARGET == HWY_SSSE3
    (void)du8;
    return hn::Vec<DU8>{_mm_packus_epi16(first.raw, second.raw)};
#else
    static_assert(hn::MaxLanes(du8) <= 16, "one block");
    const hn::Half<DU8> half;
    return hn::Combine(du8, hn::DemoteTo(half, second), hn::DemoteTo(half, first));
#endif
}

// ---- luma-chroma sums --------------------------------------------------------------------------------------

// The chroma term C of one channel for one 32-bit lane a cell, from the pairs
// (Cb, Cr) in the lane's two 16-bit halves: offset + low weights by a 16-bit
// multiply-add, then the high parts' sum moved up 16 bits.  Every product is
// at most 32768 x 255, so the multiply-add neither saturates nor overflows,
// and C equals cb * Cb + cr * Cr + offset exactly.
template <const ChromaWeights& W, class D32, class V16>
HWY_INLINE hn::Vec<D32> chromaTerm(D32 d32, V16 pairs)
{
    const hn::Repartition<std::int16_t, D32> d16;
    const auto lowWeights = hn::BitCast(d16, hn::Set(d32, weightPair(lowPart(W.cb), lowPart(W.cr))));
    const auto highWeights = hn::BitCast(d16, hn::Set(d32, weightPair(highPart(W.cb), highPart(W.cr))));
    auto lowOther = hn::Zero(d32), highOther = hn::Zero(d32);
    const auto lows = hn::ReorderWidenMulAccumulate(d32, pairs, lowWeights, hn::Set(d32, W.offset), lowOther);
    const auto highs = hn::ReorderWidenMulAccumulate(d32, pairs, highWeights, hn::Zero(d32), highOther);
    return hn::Add(hn::RearrangeToOddPlusEven(lows, lowOther),
                   hn::ShiftLeft<16>(hn::RearrangeToOddPlusEven(highs, highOther)));
}

// The luma term L = luma * Y of a vector of pixels as L = 65536 * high + low:
// luma = 65536 + rest with rest below 65536, so high = Y + mulhi(Y, rest)
// and low = mullo(Y, rest), unsigned and exact.  `lowFlipped` is low with its
// top bit flipped, for a signed comparison that orders it as unsigned.
template <class DI16>
struct LumaTerm {
    hn::Vec<DI16> high, lowFlipped;
};

template <std::int32_t Luma, class DU16>
HWY_INLINE LumaTerm<hn::RebindToSigned<DU16>> lumaTerm(DU16 du16, hn::Vec<DU16> y)
{
    static_assert(Luma >= 65536 && Luma < 2 * 65536, "the luma weight is 65536 plus a 16-bit rest");
    const hn::RebindToSigned<DU16> di16;
    const auto rest = hn::Set(du16, static_cast<std::uint16_t>(Luma - 65536));
    return {hn::BitCast(di16, hn::Add(y, hn::MulHigh(y, rest))),
            hn::BitCast(di16, hn::Xor(hn::Mul(y, rest), hn::Set(du16, 0x8000)))};
}

// A chroma term C = 65536 * high + low (the 32-bit lane's signed upper half
// and unsigned lower half), spread from one lane a cell to the cell's two
// pixels' 16-bit lanes.  The low part is kept as the bound 65535 - low with
// its top bit flipped: a pixel's low luma part carries into the upper half
// exactly when it is above 65535 - low.
template <class DI16>
struct CellTerm {
    hn::Vec<DI16> high, carryBound;
};

template <class DI16, class VTerm, class VIndex>
HWY_INLINE CellTerm<DI16> cellTerm(DI16 di16, VTerm term, VIndex lowHalves, VIndex highHalves)
{
    const hn::Repartition<std::uint8_t, DI16> du8;
    const auto bytes = hn::BitCast(du8, term);
    const auto low = hn::BitCast(di16, hn::TableLookupBytes(bytes, lowHalves));
    // (65535 - low) ^ 0x8000 = low ^ 0x7FFF.
    return {hn::BitCast(di16, hn::TableLookupBytes(bytes, highHalves)), hn::Xor(low, hn::Set(di16, 0x7FFF))};
}

// One channel of a vector of pixels: (L + C) >> 16, as 16-bit values.  The
// floor of (L + C) / 65536 is L.high + C.high + the carry of L.low + C.low,
// exactly what the scalar kernel's arithmetic shift gives; a comparison
// yields the carry as -1.  The result lies within -600..600, and the pack
// that follows saturates it to 0..255 as the scalar clamp does.
template <class DI16>
HWY_INLINE hn::Vec<DI16> channelSum(DI16 di16, const LumaTerm<DI16>& luma, const CellTerm<DI16>& cell)
{
    const auto carry = hn::VecFromMask(di16, hn::Gt(luma.lowFlipped, cell.carryBound));
    return hn::Sub(hn::Add(luma.high, cell.high), carry);
}

} // namespace HWY_NAMESPACE
} // namespace kel
HWY_AFTER_NAMESPACE();

#endif // KELCC_SIMDOPS_INL_H_

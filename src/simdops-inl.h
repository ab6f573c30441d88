// Whole-vector operations the SIMD kernels share: exact splits of the
// fixed-point constants, the ordered pack, interleaved RGB24 stores, and the
// luma and chroma terms of the inverse luma-chroma conversions, and the walk
// of a row in whole vector steps.
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

// ---- row steps -----------------------------------------------------------------------------------

// Whole steps from the start of a row; then, where the row holds a step but
// not a whole number of them, one more step ending at the row's end.  That
// step overlaps the one before and writes the same bytes again (the source
// and destination rows are apart), so the scalar kernel is left at most
// align - 1 units.  `align` keeps the last step's start a multiple of what
// the step's own indexing needs (a pixel pair, a doubled sample).
template <class Step>
HWY_INLINE int wholeSteps(int count, int step, int align, const Step& body)
{
    int at = 0;
    for (; at + step <= count; at += step) body(at);
    if (at < count && count >= step) {
        const int last = (count - step) / align * align;
        body(last);
        at = last + step;
    }
    return at;
}

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

#if HWY_TARGET == HWY_AVX3_DL
// RGB24 by VBMI byte permutes, from three input vectors of 64 bytes: byte j
// of channel c is input byte 3j + c.  `pick` takes the bytes below 128 from
// the first two vectors, `merge` keeps them and adds the rest from the third.
struct DeinterleaveTables {
    alignas(64) std::uint8_t pick[3][64];
    alignas(64) std::uint8_t merge[3][64];
};
constexpr DeinterleaveTables makeDeinterleaveTables()
{
    DeinterleaveTables t{};
    for (int c = 0; c < 3; ++c) {
        for (int j = 0; j < 64; ++j) {
            const int at = 3 * j + c;
            t.pick[c][j] = static_cast<std::uint8_t>(at < 128 ? at : 0);
            t.merge[c][j] = static_cast<std::uint8_t>(at < 128 ? j : 64 + at - 128);
        }
    }
    return t;
}
alignas(64) constexpr DeinterleaveTables kDeinterleave = makeDeinterleaveTables();
#endif

// RGB24 (or any three interleaved bytes) into three channel vectors.
// Highway 1.0.3's LoadInterleaved3 shuffles 16-byte blocks; AVX3_DL permutes
// whole vectors instead.
template <class DU8>
HWY_INLINE void loadInterleaved3(DU8 du8, const Kel8u* src, hn::Vec<DU8>& v0, hn::Vec<DU8>& v1, hn::Vec<DU8>& v2)
{
#if HWY_TARGET == HWY_AVX3_DL
    (void)du8;
    const __m512i first = _mm512_loadu_si512(src), second = _mm512_loadu_si512(src + 64);
    const __m512i third = _mm512_loadu_si512(src + 128);
    hn::Vec<DU8>* const out[3] = {&v0, &v1, &v2};
    for (int c = 0; c < 3; ++c) {
        const __m512i pick = _mm512_load_si512(kDeinterleave.pick[c]);
        const __m512i merge = _mm512_load_si512(kDeinterleave.merge[c]);
        const __m512i firstTwo = _mm512_permutex2var_epi8(first, pick, second);
        *out[c] = hn::Vec<DU8>{_mm512_permutex2var_epi8(firstTwo, merge, third)};
    }
#else
    hn::LoadInterleaved3(du8, src, v0, v1, v2);
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

// ---- forward sums: RGB to luma and chroma ------------------------------------------------------

// A forward weighted sum w_R R + w_G G + w_B B with every weight below 2^15,
// as two 16-bit multiply-adds over the pixel's sample pairs (R, G) and
// (G, B): rg.first = w_R, rg.second + gb.first = w_G, gb.second = w_B.  The
// luma's 33030 for G does not fit a signed 16-bit weight; half of it in
// each pair does.
struct ForwardWeights {
    std::int32_t rgFirst, rgSecond, gbFirst, gbSecond;
};
inline constexpr ForwardWeights kLumaSumWeights{16843, 16515, 16515, 6423};
inline constexpr ForwardWeights kBlueDifferenceWeights{-9699, -19071, 0, 28770};
inline constexpr ForwardWeights kRedDifferenceWeights{28770, -24117, 0, -4653};

// A pixel's samples as two pairs of 16-bit lanes, one 32-bit lane a pixel:
// (R, G) in `rg`, (G, B) in `gb`, each sample 0..255 (or a sum of a few).
template <class DI16>
struct SamplePairs {
    hn::Vec<DI16> rg, gb;
};

// Byte indices that gather pixel i's two channels at byte offsets `first`
// and `second` of its Pitch bytes into bytes 4i and 4i + 2, with 0x80 (a
// zero from a byte lookup) in bytes 4i + 1 and 4i + 3.  The first 16 serve a
// 16-byte block of four pixels; all 64 serve a whole AVX-512 vector.
struct PairIndex {
    alignas(64) std::uint8_t index[64];
};
constexpr PairIndex makePairIndex(int pitch, int first, int second)
{
    PairIndex t{};
    for (int i = 0; i < 16; ++i) {
        t.index[4 * i + 0] = static_cast<std::uint8_t>(pitch * i + first);
        t.index[4 * i + 1] = 0x80;
        t.index[4 * i + 2] = static_cast<std::uint8_t>(pitch * i + second);
        t.index[4 * i + 3] = 0x80;
    }
    return t;
}
template <int Pitch, ChannelOrder O>
inline constexpr PairIndex kRedGreenIndex = makePairIndex(Pitch, O.r, O.g);
template <int Pitch, ChannelOrder O>
inline constexpr PairIndex kGreenBlueIndex = makePairIndex(Pitch, O.g, O.b);

// The bytes a load of one vector of bytes reads past the pixels of one
// 32-bit vector of pixels (their sample pairs) at Pitch bytes a pixel.
template <int Pitch, class DU8>
constexpr int pairsOverread(DU8 du8)
{
    return static_cast<int>(hn::Lanes(du8)) - Pitch * static_cast<int>(hn::Lanes(du8) / 4);
}

// The pixels of a vector of bytes loaded from a pixel-order row, spread so
// that each 16-byte block starts with four whole pixels: at four bytes a
// pixel they already are; at three, block k takes the 32-bit words 3k ..
// 3k + 3 (its 12 bytes and one more).
template <int Pitch, class DU8>
HWY_INLINE hn::Vec<DU8> spreadPixels(DU8 du8, hn::Vec<DU8> bytes)
{
    (void)du8;
    if constexpr (Pitch == 4 || hn::MaxLanes(du8) <= 16) {
        return bytes;
    } else {
#if HWY_TARGET == HWY_AVX2
        return hn::Vec<DU8>{_mm256_permutevar8x32_epi32(bytes.raw, _mm256_setr_epi32(0, 1, 2, 3, 3, 4, 5, 6))};
#elif HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
        return hn::Vec<DU8>{_mm512_permutexvar_epi32(
            _mm512_setr_epi32(0, 1, 2, 3, 3, 4, 5, 6, 6, 7, 8, 9, 9, 10, 11, 12), bytes.raw)};
#else
        static_assert(hn::MaxLanes(du8) <= 16, "one block");
        return bytes;
#endif
    }
}

// The sample pairs of Lanes(d32) pixels from a pixel-order row of Pitch bytes
// a pixel in the order O; reads pairsOverread bytes past them.  AVX3_DL picks
// them from the whole loaded vector by one VBMI byte permute each, the other
// targets by a byte lookup within each block after spreadPixels.
template <int Pitch, ChannelOrder O, class DI16>
HWY_INLINE SamplePairs<DI16> loadSamplePairs(DI16 di16, const Kel8u* src)
{
#if HWY_TARGET == HWY_AVX3_DL
    const __m512i bytes = _mm512_loadu_si512(src);
    const __mmask64 sampleBytes = 0x5555555555555555ull;  // bytes 0 and 2 of every 32-bit lane
    const __m512i rg = _mm512_maskz_permutexvar_epi8(sampleBytes, _mm512_load_si512(kRedGreenIndex<Pitch, O>.index), bytes);
    const __m512i gb = _mm512_maskz_permutexvar_epi8(sampleBytes, _mm512_load_si512(kGreenBlueIndex<Pitch, O>.index), bytes);
    return {hn::Vec<DI16>{rg}, hn::Vec<DI16>{gb}};
#else
    const hn::Repartition<std::uint8_t, DI16> du8;
    const auto bytes = spreadPixels<Pitch>(du8, hn::LoadU(du8, src));
    const auto rg = hn::TableLookupBytesOr0(bytes, hn::LoadDup128(du8, kRedGreenIndex<Pitch, O>.index));
    const auto gb = hn::TableLookupBytesOr0(bytes, hn::LoadDup128(du8, kGreenBlueIndex<Pitch, O>.index));
    return {hn::BitCast(di16, rg), hn::BitCast(di16, gb)};
#endif
}

// Two 16-bit weights in one 32-bit lane, the first in the lower half; the
// even and odd 32-bit lanes may take different pairs.
template <class DI16>
HWY_INLINE hn::Vec<DI16> weightPairs(DI16 di16, std::int32_t evenFirst, std::int32_t evenSecond, std::int32_t oddFirst,
                                     std::int32_t oddSecond)
{
    const hn::Repartition<std::int32_t, DI16> di32;
    const auto even = hn::Set(di32, weightPair(evenFirst, evenSecond));
    const auto odd = hn::Set(di32, weightPair(oddFirst, oddSecond));
    return hn::BitCast(di16, hn::OddEven(odd, even));
}

// constant + the weighted sum of each 32-bit lane's samples, the even lanes
// with weights E and the odd lanes with O (E and O may be one set).  Every
// weight lies within -24117..28770, never -32768, so neither 16-bit
// multiply-add can saturate; with samples up to 1020 every partial sum stays
// far inside 32 bits, and the sum is the scalar one, exactly.
template <const ForwardWeights& E, const ForwardWeights& O, class DI32, class DI16>
HWY_INLINE hn::Vec<DI32> forwardSums(DI32 di32, const SamplePairs<DI16>& pairs, hn::Vec<DI32> constant)
{
    const DI16 di16;
    const auto rgWeights = weightPairs(di16, E.rgFirst, E.rgSecond, O.rgFirst, O.rgSecond);
    const auto gbWeights = weightPairs(di16, E.gbFirst, E.gbSecond, O.gbFirst, O.gbSecond);
    auto unused = hn::Zero(di32);  // x86 multiply-adds keep lanes in order: one sum suffices
    const auto sum = hn::ReorderWidenMulAccumulate(di32, pairs.rg, rgWeights, constant, unused);
    return hn::ReorderWidenMulAccumulate(di32, pairs.gb, gbWeights, sum, unused);
}

// The samples of two rows (or of a pixel and its neighbour) added lane by lane.
template <class DI16>
HWY_INLINE SamplePairs<DI16> addPairs(const SamplePairs<DI16>& a, const SamplePairs<DI16>& b)
{
    return {hn::Add(a.rg, b.rg), hn::Add(a.gb, b.gb)};
}

// Each pixel's samples plus those of the other pixel of its horizontal pair
// (32-bit lanes 2k and 2k + 1): both lanes of a pair then hold the pair's sums.
template <class DI16>
HWY_INLINE SamplePairs<DI16> addPairNeighbour(const SamplePairs<DI16>& p)
{
    const hn::Repartition<std::int32_t, DI16> di32;
    const DI16 di16;
    const auto swap = [&](hn::Vec<DI16> v) { return hn::BitCast(di16, hn::Shuffle2301(hn::BitCast(di32, v))); };
    return {hn::Add(p.rg, swap(p.rg)), hn::Add(p.gb, swap(p.gb))};
}

// Four vectors of 32-bit sums to one vector of bytes, lane order kept: byte
// i is (sum i >> Shift), which the caller knows to be 0..255 for sums that
// are non-negative and below 2^(Shift + 8).  The x86 packs work within
// 16-byte blocks, so a 32-bit permute puts the blocks' four-byte runs back in
// order; AVX3_DL picks byte 2 of each lane (after a shift by Shift - 16)
// with two VBMI permutes instead.
template <int Shift, class DU8, class VI32>
HWY_INLINE hn::Vec<DU8> orderedBytes(DU8 du8, VI32 a, VI32 b, VI32 c, VI32 d)
{
    static_assert(Shift >= 16 && Shift < 24, "the result byte lies in the sum's third byte after Shift - 16");
#if HWY_TARGET == HWY_AVX3_DL
    (void)du8;
    if constexpr (Shift > 16) {
        a = hn::ShiftRight<Shift - 16>(a);
        b = hn::ShiftRight<Shift - 16>(b);
        c = hn::ShiftRight<Shift - 16>(c);
        d = hn::ShiftRight<Shift - 16>(d);
    }
    alignas(64) static constexpr std::uint8_t kThirdBytes[64] = {
        2,   6,   10,  14,  18,  22,  26,  30,  34,  38,  42,  46,  50,  54,  58,  62,
        66,  70,  74,  78,  82,  86,  90,  94,  98,  102, 106, 110, 114, 118, 122, 126,
        2,   6,   10,  14,  18,  22,  26,  30,  34,  38,  42,  46,  50,  54,  58,  62,
        66,  70,  74,  78,  82,  86,  90,  94,  98,  102, 106, 110, 114, 118, 122, 126};
    const __m512i index = _mm512_load_si512(kThirdBytes);
    const __m512i first = _mm512_permutex2var_epi8(a.raw, index, b.raw);
    const __m512i second = _mm512_permutex2var_epi8(c.raw, index, d.raw);
    return hn::Vec<DU8>{_mm512_inserti64x4(first, _mm512_castsi512_si256(second), 1)};
#else
    a = hn::ShiftRight<Shift>(a);
    b = hn::ShiftRight<Shift>(b);
    c = hn::ShiftRight<Shift>(c);
    d = hn::ShiftRight<Shift>(d);
#if HWY_TARGET == HWY_AVX3
    (void)du8;
    const __m512i packed = _mm512_packus_epi16(_mm512_packs_epi32(a.raw, b.raw), _mm512_packs_epi32(c.raw, d.raw));
    return hn::Vec<DU8>{_mm512_permutexvar_epi32(
        _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15), packed)};
#elif HWY_TARGET == HWY_AVX2
    (void)du8;
    const __m256i packed = _mm256_packus_epi16(_mm256_packs_epi32(a.raw, b.raw), _mm256_packs_epi32(c.raw, d.raw));
    return hn::Vec<DU8>{_mm256_permutevar8x32_epi32(packed, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7))};
#elif HWY_TARGET == HWY_SSE4 || HWY_TARGET == HWY_SSSE3
    (void)du8;
    return hn::Vec<DU8>{_mm_packus_epi16(_mm_packs_epi32(a.raw, b.raw), _mm_packs_epi32(c.raw, d.raw))};
#else
    static_assert(hn::MaxLanes(du8) <= 16, "one block");
    const hn::Half<DU8> half;
    const hn::Half<decltype(half)> quarter;
    return hn::Combine(du8, hn::Combine(half, hn::DemoteTo(quarter, d), hn::DemoteTo(quarter, c)),
                       hn::Combine(half, hn::DemoteTo(quarter, b), hn::DemoteTo(quarter, a)));
#endif
#endif
}

// A vector of bytes alternating two kinds (even bytes of one, odd of the
// other) split into its even bytes, in order, in the lower half and its odd
// bytes in the upper half.
template <class DU8>
HWY_INLINE hn::Vec<DU8> splitEvenOdd(DU8 du8, hn::Vec<DU8> v)
{
#if HWY_TARGET == HWY_AVX3_DL
    (void)du8;
    alignas(64) static constexpr std::uint8_t kEvenThenOdd[64] = {
        0,  2,  4,  6,  8,  10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30, 32, 34, 36, 38, 40, 42,
        44, 46, 48, 50, 52, 54, 56, 58, 60, 62, 1,  3,  5,  7,  9,  11, 13, 15, 17, 19, 21, 23,
        25, 27, 29, 31, 33, 35, 37, 39, 41, 43, 45, 47, 49, 51, 53, 55, 57, 59, 61, 63};
    return hn::Vec<DU8>{_mm512_permutexvar_epi8(_mm512_load_si512(kEvenThenOdd), v.raw)};
#else
    // Within each block first, then the blocks' 8-byte halves into order.
    alignas(16) static constexpr std::uint8_t kBlockEvenThenOdd[16] = {0, 2, 4, 6, 8, 10, 12, 14,
                                                                      1, 3, 5, 7, 9, 11, 13, 15};
    const auto inBlocks = hn::TableLookupBytes(v, hn::LoadDup128(du8, kBlockEvenThenOdd));
#if HWY_TARGET == HWY_AVX3
    return hn::Vec<DU8>{_mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), inBlocks.raw)};
#elif HWY_TARGET == HWY_AVX2
    return hn::Vec<DU8>{_mm256_permute4x64_epi64(inBlocks.raw, 0xD8)};
#else
    static_assert(hn::MaxLanes(du8) <= 16, "one block");
    return inBlocks;
#endif
#endif
}

// Two vectors of bytes stored alternating, v0's byte i at 2i and v1's at
// 2i + 1: Highway's StoreInterleaved2, and on AVX3_DL two VBMI permutes.
template <class DU8>
HWY_INLINE void storeInterleaved2(DU8 du8, hn::Vec<DU8> v0, hn::Vec<DU8> v1, Kel8u* dst)
{
#if HWY_TARGET == HWY_AVX3_DL
    (void)du8;
    struct Tables {
        alignas(64) std::uint8_t half[2][64];
    };
    static constexpr Tables kAlternate = [] {
        Tables t{};
        for (int k = 0; k < 2; ++k) {
            for (int j = 0; j < 64; ++j) t.half[k][j] = static_cast<std::uint8_t>(32 * k + j / 2 + (j & 1) * 64);
        }
        return t;
    }();
    _mm512_storeu_si512(dst, _mm512_permutex2var_epi8(v0.raw, _mm512_load_si512(kAlternate.half[0]), v1.raw));
    _mm512_storeu_si512(dst + 64, _mm512_permutex2var_epi8(v0.raw, _mm512_load_si512(kAlternate.half[1]), v1.raw));
#else
    hn::StoreInterleaved2(v0, v1, du8, dst);
#endif
}

} // namespace HWY_NAMESPACE
} // namespace kel
HWY_AFTER_NAMESPACE();

#endif // KELCC_SIMDOPS_INL_H_

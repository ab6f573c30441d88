// Repacking rows on whole vectors: luma and chroma bytes moved, dropped, doubled or averaged, compiled
// once for every SIMD target (foreach_target.h includes this file once a target).
#include "yuvmssimd.h"

#include <cstddef>
#include <cstdint>

#include "simd.h"

#if KELCC_SIMD

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "yuvmssimd.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include "simdops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kel {
namespace simdrepack {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
using kel::HWY_NAMESPACE::wholeSteps;

using DU8 = hn::ScalableTag<std::uint8_t>;
using VU8 = hn::Vec<DU8>;

// Kernels are flattened: a step lambda left out of line reloads every
// captured pointer after each store.
#define KEL_KERNEL [[gnu::flatten]]

// Every kernel here only moves bytes (loads, shuffles, stores) except the
// averages of the resampling rows, which are written out where they are.
// A kernel writes exactly the bytes the scalar kernel writes over the range
// it returns, and reads only bytes the scalar kernel reads.

// wholeSteps with the steps' stores lined up with the cache lines of `dst`
// (the destination unit at 0, `unitBytes` bytes a unit): a first step at 0,
// then steps from the first unit whose address is a multiple of 64, so that
// no later store splits across two lines.  The first step overlaps the
// second and writes the same bytes again, as wholeSteps' last step does.
template <class Step>
HWY_INLINE int lineSteps(int count, int step, int align, const Kel8u* dst, int unitBytes, const Step& body)
{
    constexpr int kLine = 64;
    const int past = static_cast<int>(reinterpret_cast<std::uintptr_t>(dst) % kLine);
    const int skip = past == 0 || (kLine - past) % unitBytes != 0 ? 0 : (kLine - past) / unitBytes / align * align;
    if (skip == 0 || skip >= step || count < step + skip) return wholeSteps(count, step, align, body);
    body(0);
    return skip + wholeSteps(count - skip, step, align, [&](int at) { body(at + skip); });
}

// ---- chroma rows between planes and planes of pairs ------------------------------------------------

// n consecutive samples of each component from source sample i.
template <Chroma C>
HWY_INLINE void loadChroma(DU8 d, const Kel8u* cb, const Kel8u* cr, int i, VU8& vcb, VU8& vcr)
{
    if constexpr (C == kChromaPlanes) {
        vcb = hn::LoadU(d, cb + i);
        vcr = hn::LoadU(d, cr + i);
    } else {
        (void)cr;
        hn::LoadInterleaved2(d, cb + 2 * i, vcb, vcr);
    }
}

// n destination samples of each component from destination sample k.
template <Chroma C>
HWY_INLINE void storeChroma(DU8 d, Kel8u* cb, Kel8u* cr, int k, VU8 vcb, VU8 vcr)
{
    if constexpr (C == kChromaPlanes) {
        hn::StoreU(vcb, d, cb + k);
        hn::StoreU(vcr, d, cr + k);
    } else {
        (void)cr;
        hn::StoreInterleaved2(vcb, vcr, d, cb + 2 * k);
    }
}

// 2n destination samples from destination sample k, taken alternately from
// the first and the second pair of vectors: D[k + 2m] = first[m],
// D[k + 2m + 1] = second[m].
template <Chroma C>
HWY_INLINE void storeAlternating(DU8 d, Kel8u* cb, Kel8u* cr, int k, VU8 firstCb, VU8 firstCr, VU8 secondCb,
                                 VU8 secondCr)
{
    if constexpr (C == kChromaPlanes) {
        hn::StoreInterleaved2(firstCb, secondCb, d, cb + k);
        hn::StoreInterleaved2(firstCr, secondCr, d, cr + k);
    } else {
        (void)cr;
        hn::StoreInterleaved4(firstCb, firstCr, secondCb, secondCr, d, cb + 2 * k);
    }
}

// One destination chroma row of both components by the column rule, n or
// 2n destination samples a step.  Sources are read no further than the
// scalar rule reads: S[2k + 1] for the last sample of an even or odd step,
// S[k / 2] for a doubling or unstacking step.
template <Chroma S, Chroma D, Columns R>
KEL_KERNEL int chromaRow(ChromaRowSource src, Kel8u* cb, Kel8u* cr, int samples)
{
    const DU8 d;
    const int n = static_cast<int>(hn::Lanes(d));
    constexpr int kUnit = D == kChromaPairs ? 2 : 1;
    if constexpr (R == kSameColumns) {
        return lineSteps(samples, n, 1, cb, kUnit, [&](int k) {
            VU8 vcb, vcr;
            loadChroma<S>(d, src.cb, src.cr, k, vcb, vcr);
            storeChroma<D>(d, cb, cr, k, vcb, vcr);
        });
    } else if constexpr (R == kEvenColumns || R == kOddColumns) {
        return lineSteps(samples, n, 1, cb, kUnit, [&](int k) {
            VU8 cbLow, crLow, cbHigh, crHigh;
            loadChroma<S>(d, src.cb, src.cr, 2 * k, cbLow, crLow);
            loadChroma<S>(d, src.cb, src.cr, 2 * k + n, cbHigh, crHigh);
            if constexpr (R == kEvenColumns) {
                storeChroma<D>(d, cb, cr, k, hn::ConcatEven(d, cbHigh, cbLow), hn::ConcatEven(d, crHigh, crLow));
            } else {
                storeChroma<D>(d, cb, cr, k, hn::ConcatOdd(d, cbHigh, cbLow), hn::ConcatOdd(d, crHigh, crLow));
            }
        });
    } else if constexpr (R == kDoubledColumns) {
        return lineSteps(samples, 2 * n, 2, cb, kUnit, [&](int k) {
            VU8 vcb, vcr;
            loadChroma<S>(d, src.cb, src.cr, k / 2, vcb, vcr);
            storeAlternating<D>(d, cb, cr, k, vcb, vcr, vcb, vcr);
        });
    } else {
        static_assert(R == kUnstackedRows);
        return lineSteps(samples, 2 * n, 2, cb, kUnit, [&](int k) {
            VU8 firstCb, firstCr, secondCb, secondCr;
            loadChroma<S>(d, src.cb, src.cr, k / 2, firstCb, firstCr);
            loadChroma<S>(d, src.nextCb, src.nextCr, k / 2, secondCb, secondCr);
            storeAlternating<D>(d, cb, cr, k, firstCb, firstCr, secondCb, secondCr);
        });
    }
}

// Both destination rows of a stacking from one pass over the source row:
// the even-column step of chromaRow to the first pair of rows and the
// odd-column step to the second, from the same loads.  A destination of Cb,
// Cr pairs is given in `cb` and `oddCb`.
template <Chroma S, Chroma D>
KEL_KERNEL int stackedColumns(ChromaRowSource src, Kel8u* cb, Kel8u* cr, Kel8u* oddCb, Kel8u* oddCr, int samples)
{
    const DU8 d;
    const int n = static_cast<int>(hn::Lanes(d));
    return wholeSteps(samples, n, 1, [&](int k) {
        VU8 cbLow, crLow, cbHigh, crHigh;
        loadChroma<S>(d, src.cb, src.cr, 2 * k, cbLow, crLow);
        loadChroma<S>(d, src.cb, src.cr, 2 * k + n, cbHigh, crHigh);
        storeChroma<D>(d, cb, cr, k, hn::ConcatEven(d, cbHigh, cbLow), hn::ConcatEven(d, crHigh, crLow));
        storeChroma<D>(d, oddCb, oddCr, k, hn::ConcatOdd(d, cbHigh, cbLow), hn::ConcatOdd(d, crHigh, crLow));
    });
}

// ---- pixel pairs ----------------------------------------------------------------------------------------

// Where Y0, Cb, Y1 and Cr sit in a pair's four bytes.
struct PairBytes {
    int y0, cb, y1, cr;
};
template <PairOrder O>
constexpr PairBytes kPairBytes = O == kYCbCrPairs   ? PairBytes{0, 1, 2, 3}
                                 : O == kCbYCrPairs ? PairBytes{1, 0, 3, 2}
                                                    : PairBytes{0, 3, 2, 1};

// The bytes of a pixel pair at even and at odd positions, n from each of
// two vectors: ConcatEven(high, low) and ConcatOdd(high, low).
template <bool Odd>
HWY_INLINE VU8 everyOtherByte(DU8 d, VU8 high, VU8 low)
{
    return Odd ? hn::ConcatOdd(d, high, low) : hn::ConcatEven(d, high, low);
}

// A row of pixel pairs to a luma row and (as PC says) a chroma row.  Luma is
// every other byte of the pairs, and the chroma bytes the others, first and
// second component alternating; splitting those once more gives the two
// components.  n pixels a step for luma alone or with every pair's chroma
// to pairs, 2n with every pair's chroma to planes, 4n where every other
// pair's chroma is kept (as 16-bit lanes, the even ones).
template <PairOrder O, PairChroma PC>
KEL_KERNEL int pairsToPlanes(const Kel8u* pairs, Kel8u* y, Kel8u* cb, Kel8u* cr, int width)
{
    constexpr PairBytes B = kPairBytes<O>;
    constexpr bool lumaOdd = B.y0 == 1, cbFirst = B.cb < B.cr;
    const DU8 d;
    const hn::Repartition<std::uint16_t, DU8> d16;
    const int n = static_cast<int>(hn::Lanes(d));
    const auto load = [&](int x, int k) { return hn::LoadU(d, pairs + 2 * x + k * n); };
    const auto storeComponents = [&](VU8 low, VU8 high, int at) {
        const VU8 first = hn::ConcatEven(d, high, low), second = hn::ConcatOdd(d, high, low);
        hn::StoreU(cbFirst ? first : second, d, cb + at);
        hn::StoreU(cbFirst ? second : first, d, cr + at);
    };
    if constexpr (PC == kLumaOnly) {
        (void)cb;
        (void)cr;
        return wholeSteps(width, n, 4, [&](int x) { hn::StoreU(everyOtherByte<lumaOdd>(d, load(x, 1), load(x, 0)), d, y + x); });
    } else if constexpr (PC == kPairChromaToPlanes) {
        return wholeSteps(width, 2 * n, 4, [&](int x) {
            const VU8 v0 = load(x, 0), v1 = load(x, 1), v2 = load(x, 2), v3 = load(x, 3);
            hn::StoreU(everyOtherByte<lumaOdd>(d, v1, v0), d, y + x);
            hn::StoreU(everyOtherByte<lumaOdd>(d, v3, v2), d, y + x + n);
            storeComponents(everyOtherByte<!lumaOdd>(d, v1, v0), everyOtherByte<!lumaOdd>(d, v3, v2), x / 2);
        });
    } else if constexpr (PC == kPairChromaToPairs) {
        // The chroma bytes as they stand are Cb, Cr pairs (Cr, Cb in Y0 Cr Y1
        // Cb order, swapped within each 16-bit lane).
        (void)cr;
        return wholeSteps(width, n, 4, [&](int x) {
            const VU8 v0 = load(x, 0), v1 = load(x, 1);
            hn::StoreU(everyOtherByte<lumaOdd>(d, v1, v0), d, y + x);
            const VU8 chroma = everyOtherByte<!lumaOdd>(d, v1, v0);
            if constexpr (cbFirst) {
                hn::StoreU(chroma, d, cb + x);
            } else {
                const auto lanes = hn::BitCast(d16, chroma);
                hn::StoreU(hn::BitCast(d, hn::Or(hn::ShiftLeft<8>(lanes), hn::ShiftRight<8>(lanes))), d, cb + x);
            }
        });
    } else {
        return wholeSteps(width, 4 * n, 4, [&](int x) {
            VU8 kept[2];
            for (int half = 0; half < 2; ++half) {
                const VU8 v0 = load(x, 4 * half), v1 = load(x, 4 * half + 1), v2 = load(x, 4 * half + 2),
                          v3 = load(x, 4 * half + 3);
                hn::StoreU(everyOtherByte<lumaOdd>(d, v1, v0), d, y + x + 2 * n * half);
                hn::StoreU(everyOtherByte<lumaOdd>(d, v3, v2), d, y + x + 2 * n * half + n);
                const auto chromaLow = hn::BitCast(d16, everyOtherByte<!lumaOdd>(d, v1, v0));
                const auto chromaHigh = hn::BitCast(d16, everyOtherByte<!lumaOdd>(d, v3, v2));
                kept[half] = hn::BitCast(d, hn::ConcatEven(d16, chromaHigh, chromaLow));
            }
            if constexpr (PC == kEvenPairChromaToPlanes) {
                storeComponents(kept[0], kept[1], x / 4);
            } else {
                // Cb, Cr pairs: as they stand, or with the two bytes of each swapped.
                static_assert(PC == kEvenPairChromaToPairs);
                (void)cr;
                for (int half = 0; half < 2; ++half) {
                    const auto lanes = hn::BitCast(d16, kept[half]);
                    const VU8 pair = cbFirst ? kept[half] : hn::BitCast(d, hn::Or(hn::ShiftLeft<8>(lanes), hn::ShiftRight<8>(lanes)));
                    hn::StoreU(pair, d, cb + 2 * (x / 4) + n * half);
                }
            }
        });
    }
}

// n chroma samples doubled in order (s0 s0 s1 s1 ...): each byte widened to
// a 16-bit lane and times 0x0101, which puts it in both halves.
template <class DU16>
HWY_INLINE VU8 doubledBytes(DU16 du16, hn::Vec<DU16> samples)
{
    return hn::BitCast(DU8(), hn::Mul(samples, hn::Set(du16, 0x0101)));
}

#if HWY_TARGET == HWY_AVX3_DL
// Where each byte of two 64-byte vectors of pixel pairs (32 pixels each)
// comes from, for VBMI's two-source byte permute: 0..63 the 64 luma bytes,
// 64..127 the chroma vector (32 Cb then 32 Cr from planes, or 32 Cb, Cr
// pairs as they stand).
struct PairPermutes {
    alignas(64) std::uint8_t at[2][64];
};
template <PairOrder O, Chroma C>
constexpr PairPermutes makePairPermutes()
{
    constexpr PairBytes B = kPairBytes<O>;
    PairPermutes t{};
    for (int k = 0; k < 2; ++k) {
        for (int j = 0; j < 64; ++j) {
            const int p = j / 4, b = j % 4, q = 16 * k + p;
            const int from = b == B.y0   ? 32 * k + 2 * p
                             : b == B.y1 ? 32 * k + 2 * p + 1
                             : b == B.cb ? (C == kChromaPlanes ? 64 + q : 64 + 2 * q)
                                         : (C == kChromaPlanes ? 96 + q : 64 + 2 * q + 1);
            t.at[k][j] = static_cast<std::uint8_t>(from);
        }
    }
    return t;
}
#endif

// A luma row and a chroma row to a row of pixel pairs, 2n pixels (n pairs)
// a step; a doubled chroma row gives n / 2 samples a step.  On AVX3_DL, 64
// pixels a step by two byte permutes of one luma and one chroma vector.
template <Chroma C, bool Doubled, PairOrder O>
KEL_KERNEL int planesToPairs(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Kel8u* pairs, int width)
{
#if HWY_TARGET == HWY_AVX3_DL
    if constexpr (!Doubled) {
        alignas(64) static constexpr PairPermutes kPermutes = makePairPermutes<O, C>();
        const __m512i first = _mm512_load_si512(kPermutes.at[0]), second = _mm512_load_si512(kPermutes.at[1]);
        return wholeSteps(width, 64, 4, [&](int x) {
            const __m512i luma = _mm512_loadu_si512(y + x);
            __m512i chroma;
            if constexpr (C == kChromaPlanes) {
                const __m256i cbHalf = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(cb + x / 2));
                const __m256i crHalf = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(cr + x / 2));
                chroma = _mm512_inserti64x4(_mm512_castsi256_si512(cbHalf), crHalf, 1);
            } else {
                (void)cr;
                chroma = _mm512_loadu_si512(cb + x);
            }
            _mm512_storeu_si512(pairs + 2 * x, _mm512_permutex2var_epi8(luma, first, chroma));
            _mm512_storeu_si512(pairs + 2 * x + 64, _mm512_permutex2var_epi8(luma, second, chroma));
        });
    }
#endif
    constexpr PairBytes B = kPairBytes<O>;
    const DU8 d;
    const hn::Repartition<std::uint16_t, DU8> du16;
    const hn::Rebind<std::uint8_t, decltype(du16)> du8Half;
    const int n = static_cast<int>(hn::Lanes(d));
    return wholeSteps(width, 2 * n, 4, [&](int x) {
        VU8 v[4];
        hn::LoadInterleaved2(d, y + x, v[B.y0], v[B.y1]);
        if constexpr (!Doubled) {
            loadChroma<C>(d, cb, cr, x / 2, v[B.cb], v[B.cr]);
        } else if constexpr (C == kChromaPlanes) {
            v[B.cb] = doubledBytes(du16, hn::PromoteTo(du16, hn::LoadU(du8Half, cb + x / 4)));
            v[B.cr] = doubledBytes(du16, hn::PromoteTo(du16, hn::LoadU(du8Half, cr + x / 4)));
        } else {
            (void)cr;
            const auto cells = hn::BitCast(du16, hn::LoadU(d, cb + 2 * (x / 4)));  // Cb low, Cr high
            v[B.cb] = doubledBytes(du16, hn::And(cells, hn::Set(du16, 0xFF)));
            v[B.cr] = doubledBytes(du16, hn::ShiftRight<8>(cells));
        }
        hn::StoreInterleaved4(v[0], v[1], v[2], v[3], d, pairs + 2 * x);
    });
}

// A row of pixel pairs in another byte order: each destination byte taken
// from its component's place in the same source pair, one byte shuffle a
// vector (the pattern repeats every four bytes, so every 16-byte block has
// the same one).  n / 2 pixels a step.
template <PairOrder S, PairOrder D>
KEL_KERNEL int pairsToPairs(const Kel8u* src, Kel8u* dst, int width)
{
    constexpr PairBytes from = kPairBytes<S>, to = kPairBytes<D>;
    const DU8 d;
    const int n = static_cast<int>(hn::Lanes(d));
    alignas(16) Kel8u pattern[16];
    for (int pair = 0; pair < 4; ++pair) {
        pattern[4 * pair + to.y0] = static_cast<Kel8u>(4 * pair + from.y0);
        pattern[4 * pair + to.cb] = static_cast<Kel8u>(4 * pair + from.cb);
        pattern[4 * pair + to.y1] = static_cast<Kel8u>(4 * pair + from.y1);
        pattern[4 * pair + to.cr] = static_cast<Kel8u>(4 * pair + from.cr);
    }
    const VU8 index = hn::LoadDup128(d, pattern);
    return lineSteps(width, n / 2, 2, dst, 2, [&](int x) {
        hn::StoreU(hn::TableLookupBytes(hn::LoadU(d, src + 2 * x), index), d, dst + 2 * x);
    });
}

// ---- resampling rows of one chroma plane -----------------------------------------------------------

// (a + b) >> 1 in bytes: the rounding mean (a + b + 1) >> 1, less one where
// a + b is odd.
HWY_INLINE VU8 floorMean(DU8 d, VU8 a, VU8 b)
{
    return hn::Sub(hn::AverageRound(a, b), hn::And(hn::Xor(a, b), hn::Set(d, 1)));
}

HWY_INLINE VU8 evenSamples(DU8 d, const Kel8u* s, int n)
{
    return hn::ConcatEven(d, hn::LoadU(d, s + n), hn::LoadU(d, s));
}

// even[k] = S[2k], odd[k] = (S[2k] + Below[2k]) >> 1, n samples a step.
KEL_KERNEL int oddRowsAveraged(const Kel8u* s, const Kel8u* below, Kel8u* even, Kel8u* odd, int samples)
{
    const DU8 d;
    const int n = static_cast<int>(hn::Lanes(d));
    return wholeSteps(samples, n, 1, [&](int k) {
        const VU8 top = evenSamples(d, s + 2 * k, n);
        hn::StoreU(top, d, even + k);
        hn::StoreU(floorMean(d, top, evenSamples(d, below + 2 * k, n)), d, odd + k);
    });
}

// D[2k] = S[k], D[2k + 1] = (S[k] + S[k + 1]) >> 1: n source samples a step
// while S[k + n] is still in the row (count samples - 1); the last sample, which is its own
// right neighbour, is left to the scalar kernel.
KEL_KERNEL int oddColumnsAveraged(const Kel8u* s, Kel8u* dst, int samples)
{
    const DU8 d;
    const int n = static_cast<int>(hn::Lanes(d));
    return wholeSteps(samples - 1, n, 1, [&](int k) {
        const VU8 a = hn::LoadU(d, s + k), b = hn::LoadU(d, s + k + 1);
        hn::StoreInterleaved2(a, floorMean(d, a, b), d, dst + 2 * k);
    });
}

// D[k] = S[2k], n samples a step.
KEL_KERNEL int evenColumns(const Kel8u* s, Kel8u* dst, int samples)
{
    const DU8 d;
    const int n = static_cast<int>(hn::Lanes(d));
    return wholeSteps(samples, n, 1, [&](int k) { hn::StoreU(evenSamples(d, s + 2 * k, n), d, dst + k); });
}

// The inner 2 x 2 cells of a row that has a row below: with a = S[k],
// b = S[k + 1], c = Below[k], e = Below[k + 1],
//   top    a, (a + b + h) >> 1
//   bottom (a + c + h) >> 1, (a + b + c + e + 2h) >> 2,
// h = 1 where the means round half up (Cb), 0 where they truncate (Cr).  The
// two-sample means are AverageRound or floorMean.  The four-sample mean stays
// in bytes: with x = (a + b) >> 1, p = (a + b) & 1 and y, q the same of c, e,
// the sum is 2(x + y) + p + q, so
//   (sum + 2) >> 2 = (x + y + 1) >> 1, plus 1 where p = q = 1 and x + y is even,
//   sum >> 2       = (x + y) >> 1,     plus 1 where p = q = 1 and x + y is odd
// (checked over every a, b, c, e).  Cells with k + 1 = samples are left to the
// scalar kernel.
template <bool RoundHalfUp>
KEL_KERNEL int cells(const Kel8u* s, const Kel8u* below, Kel8u* top, Kel8u* bottom, int samples)
{
    const DU8 d;
    const int n = static_cast<int>(hn::Lanes(d));
    const VU8 one = hn::Set(d, 1);
    return wholeSteps(samples - 1, n, 1, [&](int k) {
        const VU8 a = hn::LoadU(d, s + k), b = hn::LoadU(d, s + k + 1);
        const VU8 c = hn::LoadU(d, below + k), e = hn::LoadU(d, below + k + 1);
        const VU8 p = hn::And(hn::Xor(a, b), one), q = hn::And(hn::Xor(c, e), one);
        const VU8 roundedTop = hn::AverageRound(a, b);
        const VU8 x = hn::Sub(roundedTop, p), y = hn::Sub(hn::AverageRound(c, e), q);
        const VU8 bothOdd = hn::And(p, q), xyOdd = hn::Xor(x, y);
        const VU8 diagonal = RoundHalfUp ? hn::Add(hn::AverageRound(x, y), hn::AndNot(xyOdd, bothOdd))
                                         : hn::Add(floorMean(d, x, y), hn::And(xyOdd, bothOdd));
        const VU8 down = RoundHalfUp ? hn::AverageRound(a, c) : floorMean(d, a, c);
        hn::StoreInterleaved2(a, RoundHalfUp ? roundedTop : x, d, top + 2 * k);
        hn::StoreInterleaved2(down, diagonal, d, bottom + 2 * k);
    });
}

// ---- this target's table ---------------------------------------------------------------------------

template <Chroma S, Chroma D>
constexpr void fillChromaRows(Kernels& k)
{
    k.chromaRow[S][D][kSameColumns] = chromaRow<S, D, kSameColumns>;
    k.chromaRow[S][D][kEvenColumns] = chromaRow<S, D, kEvenColumns>;
    k.chromaRow[S][D][kOddColumns] = chromaRow<S, D, kOddColumns>;
    k.chromaRow[S][D][kDoubledColumns] = chromaRow<S, D, kDoubledColumns>;
    k.chromaRow[S][D][kUnstackedRows] = chromaRow<S, D, kUnstackedRows>;
    k.stackedColumns[S][D] = stackedColumns<S, D>;
}

template <PairOrder O>
constexpr void fillPairs(Kernels& k)
{
    k.pairsToPlanes[O][kPairChromaToPlanes] = pairsToPlanes<O, kPairChromaToPlanes>;
    k.pairsToPlanes[O][kPairChromaToPairs] = pairsToPlanes<O, kPairChromaToPairs>;
    k.pairsToPlanes[O][kEvenPairChromaToPlanes] = pairsToPlanes<O, kEvenPairChromaToPlanes>;
    k.pairsToPlanes[O][kEvenPairChromaToPairs] = pairsToPlanes<O, kEvenPairChromaToPairs>;
    k.pairsToPlanes[O][kLumaOnly] = pairsToPlanes<O, kLumaOnly>;
    k.planesToPairs[kChromaPlanes][0][O] = planesToPairs<kChromaPlanes, false, O>;
    k.planesToPairs[kChromaPlanes][1][O] = planesToPairs<kChromaPlanes, true, O>;
    k.planesToPairs[kChromaPairs][0][O] = planesToPairs<kChromaPairs, false, O>;
    k.planesToPairs[kChromaPairs][1][O] = planesToPairs<kChromaPairs, true, O>;
    k.pairsToPairs[O][kYCbCrPairs] = pairsToPairs<O, kYCbCrPairs>;
    k.pairsToPairs[O][kCbYCrPairs] = pairsToPairs<O, kCbYCrPairs>;
    k.pairsToPairs[O][kYCrCbPairs] = pairsToPairs<O, kYCrCbPairs>;
}

constexpr Kernels makeKernels()
{
    Kernels k{};
    fillChromaRows<kChromaPlanes, kChromaPlanes>(k);
    fillChromaRows<kChromaPlanes, kChromaPairs>(k);
    fillChromaRows<kChromaPairs, kChromaPlanes>(k);
    fillChromaRows<kChromaPairs, kChromaPairs>(k);
    fillPairs<kYCbCrPairs>(k);
    fillPairs<kCbYCrPairs>(k);
    fillPairs<kYCrCbPairs>(k);
    k.oddRowsAveraged = oddRowsAveraged;
    k.oddColumnsAveraged = oddColumnsAveraged;
    k.evenColumns = evenColumns;
    k.cellsRounded = cells<true>;
    k.cellsTruncated = cells<false>;
    return k;
}

constexpr Kernels kKernels = makeKernels();

const Kernels* kernelsOfTarget()
{
    return &kKernels;
}

} // namespace HWY_NAMESPACE
} // namespace simdrepack
} // namespace kel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kel::simdrepack {

HWY_EXPORT(kernelsOfTarget);

const Kernels* chooseKernels()
{
    detectSimdTargets();
    return HWY_DYNAMIC_DISPATCH(kernelsOfTarget)();
}

} // namespace kel::simdrepack
#endif // HWY_ONCE

#else // a build without SIMD: the scalar kernels alone

namespace kel::simdrepack {

const Kernels* chooseKernels()
{
    return nullptr;
}

} // namespace kel::simdrepack

#endif // KELCC_SIMD

// RGB and BGR to sub-sampled YCbCr on whole vectors: 4:2:0, 4:2:2 and 4:1:1, compiled
// once for every SIMD target (foreach_target.h includes this file once a target).
#include "ycbcr02simd.h"

#include <cstdint>

#include "gamma.h"
#include "rowstore.h"
#include "simd.h"

#if KELCC_SIMD

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "ycbcr02simd.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include "simdops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// constant + the weighted sum of each 32-bit lane's samples, the even lanes
// with weights E and the odd lanes with O: forwardSums, whose bounds hold here
// (no saturation, sums far inside 32 bits).  AVX3_DL adds each multiply-add
// into the sum in one AVX-512 VNNI instruction, the EVEX form written out:
// Highway's AVX3_DL target enables only the VEX form, which Zen 4 lacks.
template <const ForwardWeights& E, const ForwardWeights& O, class DI32, class DI16>
HWY_INLINE hn::Vec<DI32> weightedSums(DI32 di32, const SamplePairs<DI16>& pairs, hn::Vec<DI32> constant)
{
#if HWY_TARGET == HWY_AVX3_DL
    (void)di32;
    const DI16 di16;
    const auto rgWeights = weightPairs(di16, E.rgFirst, E.rgSecond, O.rgFirst, O.rgSecond);
    const auto gbWeights = weightPairs(di16, E.gbFirst, E.gbSecond, O.gbFirst, O.gbSecond);
    __m512i sum = constant.raw;
    asm("vpdpwssd %2, %1, %0" : "+v"(sum) : "v"(pairs.rg.raw), "v"(rgWeights.raw));
    asm("vpdpwssd %2, %1, %0" : "+v"(sum) : "v"(pairs.gb.raw), "v"(gbWeights.raw));
    return hn::Vec<DI32>{sum};
#else
    return forwardSums<E, O>(di32, pairs, constant);
#endif
}

// Rows in pairs, a vector of pixels of each row a step, in four groups of
// one 32-bit lane a pixel.  Each group's sample pairs (R, G) and (G, B) give
// the pixels' luma sums; the two rows' pairs added, then each pixel's and its
// neighbour's, give every lane its cell's sums, of which the even lane of a
// cell forms Cb and the odd lane Cr.  This is the scalar kernel's
//   Y = (lumaSum(R, G, B) + 0x108000) >> 16,
//   Cb = (blueDifference(SR, SG, SB) + 0x2008000) >> 18, Cr likewise,
// with the same sums (forwardSums: exact, no saturation) and the same floor
// shift; the luma sums lie within 0..2^24 and the cell sums within 0..2^26,
// so each result is a byte, as in the scalar kernel, which has no clamp.
// The cells after the last whole step go to the scalar kernel Tail itself,
// compiled for the baseline.
template <int Pitch, ChannelOrder O, RowPairForward420 Tail>
HWY_INLINE void rowPairs420(const Kel8u* HWY_RESTRICT top, const Kel8u* HWY_RESTRICT bottom, Kel8u* HWY_RESTRICT yTop,
                            Kel8u* HWY_RESTRICT yBottom, Kel8u* HWY_RESTRICT cb, Kel8u* HWY_RESTRICT cr, int width)
{
    const hn::ScalableTag<std::uint8_t> du8;
    const hn::Half<decltype(du8)> du8Half;
    const hn::Repartition<std::int16_t, decltype(du8)> di16;
    const hn::Repartition<std::int32_t, decltype(du8)> di32;
    const int step = static_cast<int>(hn::Lanes(du8));   // pixels of each row a step, two a cell
    const int group = static_cast<int>(hn::Lanes(di32));  // pixels of one vector of sums
    const int overread = pairsOverread<Pitch>(du8);
    const auto lumaConstant = hn::Set(di32, kRoundedLuma);
    const auto cellConstant = hn::Set(di32, kCellOf4);

    const int evenWidth = width & ~1;
    int x = 0;
    for (; x + step <= evenWidth && Pitch * (x + step) + overread <= Pitch * width; x += step) {
        const Kel8u* upperRow = top + Pitch * x;
        const Kel8u* lowerRow = bottom + Pitch * x;
        const auto upper0 = loadSamplePairs<Pitch, O>(di16, upperRow);
        const auto upper1 = loadSamplePairs<Pitch, O>(di16, upperRow + Pitch * group);
        const auto upper2 = loadSamplePairs<Pitch, O>(di16, upperRow + Pitch * 2 * group);
        const auto upper3 = loadSamplePairs<Pitch, O>(di16, upperRow + Pitch * 3 * group);
        const auto lower0 = loadSamplePairs<Pitch, O>(di16, lowerRow);
        const auto lower1 = loadSamplePairs<Pitch, O>(di16, lowerRow + Pitch * group);
        const auto lower2 = loadSamplePairs<Pitch, O>(di16, lowerRow + Pitch * 2 * group);
        const auto lower3 = loadSamplePairs<Pitch, O>(di16, lowerRow + Pitch * 3 * group);

        const auto luma = [&](const auto& pairs) {
            return weightedSums<kLumaSumWeights, kLumaSumWeights>(di32, pairs, lumaConstant);
        };
        hn::StoreU(orderedBytes<16>(du8, luma(upper0), luma(upper1), luma(upper2), luma(upper3)), du8, yTop + x);
        hn::StoreU(orderedBytes<16>(du8, luma(lower0), luma(lower1), luma(lower2), luma(lower3)), du8, yBottom + x);

        const auto cell = [&](const auto& upper, const auto& lower) {
            return weightedSums<kBlueDifferenceWeights, kRedDifferenceWeights>(
                di32, addPairNeighbour(addPairs(upper, lower)), cellConstant);
        };
        // Cb and Cr alternate, a cell's pair in its two lanes; split, they are
        // the step's Cb bytes and then its Cr bytes.
        const auto chroma = splitEvenOdd(
            du8, orderedBytes<18>(du8, cell(upper0, lower0), cell(upper1, lower1), cell(upper2, lower2),
                                  cell(upper3, lower3)));
        hn::StoreU(hn::LowerHalf(du8Half, chroma), du8Half, cb + x / 2);
        hn::StoreU(hn::UpperHalf(du8Half, chroma), du8Half, cr + x / 2);
    }
    if (x < evenWidth) {
        Tail(top + Pitch * x, bottom + Pitch * x, yTop + x, yBottom + x, cb + x / 2, cr + x / 2, width - x);
    }
}

// ---- sources: the sample pairs of one vector of 32-bit lanes, one lane a pixel ----------------------

// A pixel-order row of Pitch bytes a pixel in the order O.  A step of
// `step` pixels at x is taken only if its last load, which reads
// pairsOverread bytes past its pixels, stays inside the row.
template <int Pitch, ChannelOrder O>
struct PixelRowSource {
    const Kel8u* row;

    template <class DU8>
    bool fits(DU8 du8, int x, int step, int width) const
    {
        return x + step <= width && Pitch * (x + step) + pairsOverread<Pitch>(du8) <= Pitch * width;
    }
    template <class DI16>
    SamplePairs<DI16> pairs(DI16 di16, int x) const
    {
        return loadSamplePairs<Pitch, O>(di16, row + Pitch * x);
    }
};

// Three planes R, G, B: each sample widened to a 32-bit lane, the second of
// a pair moved to the lane's upper half.  Reads only the pixels it converts.
struct PlaneRowSource {
    const Kel8u *r, *g, *b;

    template <class DU8>
    bool fits(DU8, int x, int step, int width) const
    {
        return x + step <= width;
    }
    template <class DI16>
    SamplePairs<DI16> pairs(DI16 di16, int x) const
    {
        const hn::Repartition<std::int32_t, DI16> di32;
        const hn::Rebind<std::uint8_t, decltype(di32)> du8;
        const auto red = hn::PromoteTo(di32, hn::LoadU(du8, r + x));
        const auto green = hn::PromoteTo(di32, hn::LoadU(du8, g + x));
        const auto blue = hn::PromoteTo(di32, hn::LoadU(du8, b + x));
        return {hn::BitCast(di16, hn::Or(red, hn::ShiftLeft<16>(green))),
                hn::BitCast(di16, hn::Or(green, hn::ShiftLeft<16>(blue)))};
    }
};

// ---- 4:2:2 and 4:1:1 -------------------------------------------------------------------------------

// One step of 4:2:2 pairs, a vector of pixels in four groups of one 32-bit
// lane a pixel: byte i of `luma` is pixel i's Y, with the even pixel's
// constant in even lanes and the odd pixel's in odd lanes; byte i of
// `chroma` is its pair's chroma of weights EvenChroma (even i) or OddChroma
// (odd i) and constant EvenK or OddK.  Each pixel's sample pairs plus its
// neighbour's give both lanes of a pair the pair's sums.  This is the scalar
// kernel's
//   Y = (lumaSum(R, G, B) + K.yEven or K.yOdd) >> 16,
//   Cb = (blueDifference(SR, SG, SB) + K.cbK) >> 17, Cr likewise with K.crK,
// with the same sums (forwardSums: exact, no saturation) and the same floor
// shift; every constant of the family keeps the chroma sums within 0..2^25,
// so each result is a byte, as in the scalar kernel, which has no clamp.
template <const ForwardWeights& EvenChroma, const ForwardWeights& OddChroma, std::int32_t EvenK, std::int32_t OddK,
          PairConstants K, class DU8, class Source>
HWY_INLINE void pairStep(DU8 du8, const Source& src, int x, hn::Vec<DU8>& luma, hn::Vec<DU8>& chroma)
{
    const hn::Repartition<std::int16_t, DU8> di16;
    const hn::Repartition<std::int32_t, DU8> di32;
    const int group = static_cast<int>(hn::Lanes(di32));
    const auto lumaConstant = hn::OddEven(hn::Set(di32, K.yOdd), hn::Set(di32, K.yEven));
    const auto chromaConstant = hn::OddEven(hn::Set(di32, OddK), hn::Set(di32, EvenK));
    const auto pairs0 = src.pairs(di16, x);
    const auto pairs1 = src.pairs(di16, x + group);
    const auto pairs2 = src.pairs(di16, x + 2 * group);
    const auto pairs3 = src.pairs(di16, x + 3 * group);
    const auto lumaOf = [&](const auto& pairs) {
        return weightedSums<kLumaSumWeights, kLumaSumWeights>(di32, pairs, lumaConstant);
    };
    const auto chromaOf = [&](const auto& pairs) {
        return weightedSums<EvenChroma, OddChroma>(di32, addPairNeighbour(pairs), chromaConstant);
    };
    luma = orderedBytes<16>(du8, lumaOf(pairs0), lumaOf(pairs1), lumaOf(pairs2), lumaOf(pairs3));
    chroma = orderedBytes<17>(du8, chromaOf(pairs0), chromaOf(pairs1), chromaOf(pairs2), chromaOf(pairs3));
}

// A row of 4:2:2 pairs into pixel order, Y0 first (YCbCr, YCrCb) or the
// chroma first (CbYCr): each pixel's Y beside the chroma byte of its slot.
// The pairs after the last whole step, and a last single pixel, go to the
// scalar kernel through `tail(x)`.
template <PairLayout L, PairConstants K, class Source, class Tail>
HWY_INLINE void pairsToPixelOrder(const Source& src, Kel8u* HWY_RESTRICT dst, int width, const Tail& tail)
{
    static_assert((L.y0 == 0 && L.y1 == 2) || (L.y0 == 1 && L.y1 == 3), "each Y beside one chroma byte");
    constexpr bool kCbBesideEven = L.cb < 2;  // the even pixel's slot holds Cb
    constexpr const ForwardWeights& kEvenWeights = kCbBesideEven ? kBlueDifferenceWeights : kRedDifferenceWeights;
    constexpr const ForwardWeights& kOddWeights = kCbBesideEven ? kRedDifferenceWeights : kBlueDifferenceWeights;
    const hn::ScalableTag<std::uint8_t> du8;
    const int step = static_cast<int>(hn::Lanes(du8));  // pixels a step, two a pair
    int x = 0;
    for (; src.fits(du8, x, step, width); x += step) {
        hn::Vec<decltype(du8)> luma, chroma;
        pairStep<kEvenWeights, kOddWeights, kCbBesideEven ? K.cbK : K.crK, kCbBesideEven ? K.crK : K.cbK, K>(
            du8, src, x, luma, chroma);
        if constexpr (L.y0 == 0) {
            storeInterleaved2(du8, luma, chroma, dst + 2 * x);
        } else {
            storeInterleaved2(du8, chroma, luma, dst + 2 * x);
        }
    }
    if (x < width) tail(x);
}

// A row of 4:2:2 pairs into planes: the Cb (even lanes) and Cr (odd lanes)
// split into the step's Cb bytes and its Cr bytes.  The pairs after the last
// whole step, and a last single pixel, go to the scalar kernel Tail.
template <PairConstants K, RowForwardToPlanes Tail, class Source>
HWY_INLINE void pairsToPlanes(const Source& src, const Kel8u* tailSrc, int pitch, Kel8u* HWY_RESTRICT y,
                              Kel8u* HWY_RESTRICT cb, Kel8u* HWY_RESTRICT cr, int width)
{
    const hn::ScalableTag<std::uint8_t> du8;
    const hn::Half<decltype(du8)> du8Half;
    const int step = static_cast<int>(hn::Lanes(du8));
    int x = 0;
    for (; src.fits(du8, x, step, width); x += step) {
        hn::Vec<decltype(du8)> luma, chroma;
        pairStep<kBlueDifferenceWeights, kRedDifferenceWeights, K.cbK, K.crK, K>(du8, src, x, luma, chroma);
        hn::StoreU(luma, du8, y + x);
        const auto split = splitEvenOdd(du8, chroma);
        hn::StoreU(hn::LowerHalf(du8Half, split), du8Half, cb + x / 2);
        hn::StoreU(hn::UpperHalf(du8Half, split), du8Half, cr + x / 2);
    }
    if (x < width) Tail(tailSrc + pitch * x, y + x, cb + x / 2, cr + x / 2, width - x);
}

// The samples of the four pixels of each 4:1:1 cell added: every lane of a
// 16-byte block (one cell, the row's cells start at multiples of four) holds
// the cell's sums.
template <class DI16>
HWY_INLINE SamplePairs<DI16> addCellOf4(const SamplePairs<DI16>& p)
{
    const hn::Repartition<std::int32_t, DI16> di32;
    const DI16 di16;
    const auto pairs = addPairNeighbour(p);
    const auto swap = [&](hn::Vec<DI16> v) { return hn::BitCast(di16, hn::Shuffle1032(hn::BitCast(di32, v))); };
    return {hn::Add(pairs.rg, swap(pairs.rg)), hn::Add(pairs.gb, swap(pairs.gb))};
}

// A vector of bytes whose byte 4c is cell c's Cb and byte 4c + 1 its Cr,
// gathered into the cells' Cb bytes, in order, in the first quarter and
// their Cr bytes in the second.
template <class DU8>
HWY_INLINE hn::Vec<DU8> cellChromaQuarters(DU8 du8, hn::Vec<DU8> v)
{
#if HWY_TARGET == HWY_AVX3_DL
    (void)du8;
    alignas(64) static constexpr std::uint8_t kQuarters[64] = {
        0, 4, 8,  12, 16, 20, 24, 28, 32, 36, 40, 44, 48, 52, 56, 60,
        1, 5, 9,  13, 17, 21, 25, 29, 33, 37, 41, 45, 49, 53, 57, 61};
    return hn::Vec<DU8>{_mm512_permutexvar_epi8(_mm512_load_si512(kQuarters), v.raw)};
#else
    // Within each block first (Cb in its first four bytes, Cr in the next
    // four), then the blocks' four-byte runs into order.
    alignas(16) static constexpr std::uint8_t kBlockQuarters[16] = {0, 4, 8, 12, 1, 5, 9, 13,
                                                                   0, 4, 8, 12, 1, 5, 9, 13};
    const auto inBlocks = hn::TableLookupBytes(v, hn::LoadDup128(du8, kBlockQuarters));
#if HWY_TARGET == HWY_AVX3
    return hn::Vec<DU8>{_mm512_permutexvar_epi32(_mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15),
                                                 inBlocks.raw)};
#elif HWY_TARGET == HWY_AVX2
    return hn::Vec<DU8>{_mm256_permutevar8x32_epi32(inBlocks.raw, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7))};
#else
    static_assert(hn::MaxLanes(du8) <= 16, "one block");
    return inBlocks;
#endif
#endif
}

// A row of 4:1:1 cells into planes, a vector of pixels a step in four
// groups of one 32-bit lane a pixel.  Every lane of a cell holds the cell's
// sums; its even lanes form Cb and its odd lanes Cr, of which the first two
// are kept.  This is the scalar kernel's
//   Y = (lumaSum(R, G, B) + 0x108000) >> 16,
//   Cb = (blueDifference(SR, SG, SB) + 0x2008000) >> 18, Cr likewise,
// with the same sums (forwardSums: exact, no saturation) and the same floor
// shift; the cell sums lie within 0..2^26, so each result is a byte, as in
// the scalar kernel, which has no clamp.  The cells after the last whole
// step, and the last width & 3 pixels it leaves alone, go to the scalar kernel Tail.
template <int Pitch, ChannelOrder O, RowForwardToPlanes Tail>
HWY_INLINE void groups411(const Kel8u* HWY_RESTRICT src, Kel8u* HWY_RESTRICT y, Kel8u* HWY_RESTRICT cb,
                          Kel8u* HWY_RESTRICT cr, int width)
{
    const hn::ScalableTag<std::uint8_t> du8;
    const hn::Half<decltype(du8)> du8Half;
    const hn::Half<decltype(du8Half)> du8Quarter;
    const hn::Repartition<std::int16_t, decltype(du8)> di16;
    const hn::Repartition<std::int32_t, decltype(du8)> di32;
    const int step = static_cast<int>(hn::Lanes(du8));   // pixels a step, four a cell
    const int group = static_cast<int>(hn::Lanes(di32));  // pixels of one vector of sums
    const auto lumaConstant = hn::Set(di32, kRoundedLuma);
    const auto cellConstant = hn::Set(di32, kCellOf4);
    const PixelRowSource<Pitch, O> row{src};
    int x = 0;
    for (; row.fits(du8, x, step, width); x += step) {
        const auto pairs0 = row.pairs(di16, x);
        const auto pairs1 = row.pairs(di16, x + group);
        const auto pairs2 = row.pairs(di16, x + 2 * group);
        const auto pairs3 = row.pairs(di16, x + 3 * group);
        const auto lumaOf = [&](const auto& pairs) {
            return weightedSums<kLumaSumWeights, kLumaSumWeights>(di32, pairs, lumaConstant);
        };
        const auto cellOf = [&](const auto& pairs) {
            return weightedSums<kBlueDifferenceWeights, kRedDifferenceWeights>(di32, addCellOf4(pairs), cellConstant);
        };
        hn::StoreU(orderedBytes<16>(du8, lumaOf(pairs0), lumaOf(pairs1), lumaOf(pairs2), lumaOf(pairs3)), du8, y + x);
        const auto chroma = hn::LowerHalf(
            du8Half, cellChromaQuarters(du8, orderedBytes<18>(du8, cellOf(pairs0), cellOf(pairs1), cellOf(pairs2),
                                                              cellOf(pairs3))));
        hn::StoreU(hn::LowerHalf(du8Quarter, chroma), du8Quarter, cb + x / 4);
        hn::StoreU(hn::UpperHalf(du8Quarter, chroma), du8Quarter, cr + x / 4);
    }
    if (x < width) Tail(src + Pitch * x, y + x, cb + x / 4, cr + x / 4, width - x);
}

// ---- the filtered CbYCr ----------------------------------------------------------------------------

// A vector of 32-bit lanes moved up by one pair (two lanes), the last pair
// of `before` coming in first.
template <class DI32>
HWY_INLINE hn::Vec<DI32> pairBefore(DI32 di32, hn::Vec<DI32> v, hn::Vec<DI32> before)
{
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    (void)di32;
    return hn::Vec<DI32>{_mm512_alignr_epi64(v.raw, before.raw, 7)};
#elif HWY_TARGET == HWY_AVX2
    (void)di32;
    return hn::Vec<DI32>{_mm256_alignr_epi8(v.raw, _mm256_permute2x128_si256(before.raw, v.raw, 0x21), 8)};
#else
    static_assert(hn::MaxLanes(di32) <= 4, "one block");
    return hn::CombineShiftRightBytes<8>(di32, v, before);
#endif
}

// The sample pairs of one step's four groups of pixels: a source that loads a
// whole step at once gives them by its `step`, any other group by group.
template <class DI16>
struct StepPairs {
    SamplePairs<DI16> group0, group1, group2, group3;
};
template <class Source, class DI16>
HWY_INLINE StepPairs<DI16> stepPairs(const Source& row, DI16 di16, int x, int group)
{
    if constexpr (requires { row.step(di16, x); }) {
        return row.step(di16, x);
    } else {
        return {row.pairs(di16, x), row.pairs(di16, x + group), row.pairs(di16, x + 2 * group),
                row.pairs(di16, x + 3 * group)};
    }
}

// A row of CbYCr pairs by the three-tap filter, a vector of pixels a step in
// four groups of one 32-bit lane a pixel.  Two multiply-add sums give each
// pixel's differences, b(e) and r(o) in one vector and r(e) and b(o) in the
// other (the even lanes of a pair are its even pixel); from them each pair's
// lanes take (b(e) >> 1, r(e) >> 1) and (b(o) >> 2, r(o) >> 2), and the
// latter moved up a pair is the carry of the next.  This is the scalar kernel's
//   Cb = ((b(e) >> 1) + Qb + (b(o) >> 2) + 0x807FFF) >> 16, Cr likewise,
//   Y = (lumaSum(R, G, B) + 0x108000) >> 16,
// with the same sums (forwardSums: exact, no saturation), the same
// arithmetic shifts and the same floor shift; the filtered sums lie within
// 0..2^24 (|b|, |r| <= 28770 * 255 < 0x807FFF), so each result is a byte, as
// in the scalar kernel, which has no clamp.  The pairs after the last whole
// step, and a last single pixel, go to the scalar kernel Tail, with the carry.
template <RowFilteredCbYCr Tail, class Source = PixelRowSource<3, kRGB>>
HWY_INLINE void filteredCbYCr(const Kel8u* HWY_RESTRICT src, Kel8u* HWY_RESTRICT dst, int width, FilterCarry& carry)
{
    const hn::ScalableTag<std::uint8_t> du8;
    const hn::Repartition<std::int16_t, decltype(du8)> di16;
    const hn::Repartition<std::int32_t, decltype(du8)> di32;
    const hn::Repartition<std::int64_t, decltype(du8)> di64;
    const int step = static_cast<int>(hn::Lanes(du8));   // pixels a step, two a pair
    const int group = static_cast<int>(hn::Lanes(di32));  // pixels of one vector of sums
    const auto lumaConstant = hn::Set(di32, kRoundedLuma);
    const auto chromaConstant = hn::Set(di32, kFilteredChroma);
    const Source row{src};
    // Every pair of lanes holds the carry given; the last is the one used.
    auto quarterBefore = hn::BitCast(
        di32, hn::Set(di64, static_cast<std::int64_t>(static_cast<std::uint64_t>(static_cast<std::uint32_t>(carry.r)) << 32 |
                                                      static_cast<std::uint32_t>(carry.b))));
    int x = 0;
    for (; row.fits(du8, x, step, width); x += step) {
        const auto lumaOf = [&](const auto& pairs) {
            return weightedSums<kLumaSumWeights, kLumaSumWeights>(di32, pairs, lumaConstant);
        };
        const auto chromaOf = [&](const auto& pairs) {
            const auto blueEvenRedOdd =
                weightedSums<kBlueDifferenceWeights, kRedDifferenceWeights>(di32, pairs, hn::Zero(di32));
            const auto redEvenBlueOdd =
                hn::Shuffle2301(weightedSums<kRedDifferenceWeights, kBlueDifferenceWeights>(di32, pairs, hn::Zero(di32)));
            // Lanes 2k, 2k + 1: (b(e), r(e)) and, after the swap, (b(o), r(o)).
            const auto half = hn::ShiftRight<1>(hn::OddEven(redEvenBlueOdd, blueEvenRedOdd));
            const auto quarter = hn::ShiftRight<2>(hn::OddEven(blueEvenRedOdd, redEvenBlueOdd));
            const auto sum = hn::Add(hn::Add(half, quarter), hn::Add(pairBefore(di32, quarter, quarterBefore), chromaConstant));
            quarterBefore = quarter;
            return sum;
        };
        const auto [pairs0, pairs1, pairs2, pairs3] = stepPairs(row, di16, x, group);
        const auto chroma0 = chromaOf(pairs0);
        const auto chroma1 = chromaOf(pairs1);
        const auto chroma2 = chromaOf(pairs2);
        const auto chroma3 = chromaOf(pairs3);
        const auto luma = orderedBytes<16>(du8, lumaOf(pairs0), lumaOf(pairs1), lumaOf(pairs2), lumaOf(pairs3));
        storeInterleaved2(du8, orderedBytes<16>(du8, chroma0, chroma1, chroma2, chroma3), luma, dst + 2 * x);
    }
    if (x > 0) carry = {hn::ExtractLane(quarterBefore, group - 2), hn::ExtractLane(quarterBefore, group - 1)};
    if (x < width) Tail(src + 3 * x, dst + 2 * x, width - x, carry);
}

// ---- bytes through a 256-entry table ----------------------------------------------------------------

// A vector of bytes through the forward BT.709 table, exactly: on AVX3_DL two
// VBMI permutes over the table's halves of 128 entries, the index's top bit
// choosing between them.  Elsewhere each half of 128 entries is eight runs of
// 16, and a lookup of run k's entries XOR run k - 1's (run 0's as they are)
// at i - 16k, i the index's low 7 bits, gives the change for i >= 16k (the
// difference then 0..127, its low nibble i's place in its run) and a zero
// for i < 16k (the difference wraps to 128 and above): the XOR of the eight
// lookups is the entry i of the half.  The index's top bit picks the half.
template <class DU8>
HWY_INLINE hn::Vec<DU8> forwardGammaOf(DU8 du8, hn::Vec<DU8> index)
{
#if HWY_TARGET == HWY_AVX3_DL
    (void)du8;
    const __m512i low = _mm512_permutex2var_epi8(_mm512_loadu_si512(tableFwd8u), index.raw,
                                                 _mm512_loadu_si512(tableFwd8u + 64));
    const __m512i high = _mm512_permutex2var_epi8(_mm512_loadu_si512(tableFwd8u + 128), index.raw,
                                                  _mm512_loadu_si512(tableFwd8u + 192));
    return hn::Vec<DU8>{_mm512_mask_blend_epi8(_mm512_movepi8_mask(index.raw), low, high)};
#else
    const hn::RebindToSigned<DU8> di8;
    const auto low7 = hn::And(index, hn::Set(du8, 0x7F));
    // Run k's 16 entries XOR run k - 1's (run 0's and run 8's as they are).
    const auto changeAt = [&](int entry) {
        const auto entries = hn::LoadDup128(du8, tableFwd8u + entry);
        return entry % 128 == 0 ? entries : hn::Xor(entries, hn::LoadDup128(du8, tableFwd8u + entry - 16));
    };
    auto lower = hn::Zero(du8);
    auto upper = hn::Zero(du8);
    for (int run = 0; run < 8; ++run) {
        const auto fromRun = hn::Sub(low7, hn::Set(du8, static_cast<std::uint8_t>(16 * run)));
        lower = hn::Xor(lower, hn::TableLookupBytesOr0(changeAt(16 * run), fromRun));
        upper = hn::Xor(upper, hn::TableLookupBytesOr0(changeAt(128 + 16 * run), fromRun));
    }
    return hn::IfThenElse(hn::RebindMask(du8, hn::Lt(hn::BitCast(di8, index), hn::Zero(di8))), upper, lower);
#endif
}

void forwardGammaBytes(const Kel8u* HWY_RESTRICT src, Kel8u* HWY_RESTRICT dst, int count)
{
    const hn::ScalableTag<std::uint8_t> du8;
    const int step = static_cast<int>(hn::Lanes(du8));
    int x = 0;
    for (; x + step <= count; x += step) hn::StoreU(forwardGammaOf(du8, hn::LoadU(du8, src + x)), du8, dst + x);
    if (x < count) innerForwardGammaBytes(src + x, dst + x, count - x);
}

#if HWY_TARGET == HWY_AVX3_DL
// An RGB row whose samples go through the forward BT.709 table as they are
// loaded (forwardGammaOf, exact), then pair up as PixelRowSource's do: the
// same samples the buffer of mapped bytes would give, without the buffer.
// A step of 64 pixels is its 192 bytes in three vectors, each mapped once;
// group g's 48 bytes start at byte 48g, inside the two vectors 48g / 64 and
// the next, so one two-source byte permute per pair picks them, its indices
// the single-vector ones plus 48g mod 64 (at most 47 + 48, inside the two
// sources' 128 bytes).  Reads only the pixels it converts.
struct GammaRowSource {
    const Kel8u* row;

    template <class DU8>
    bool fits(DU8, int x, int step, int width) const
    {
        return x + step <= width;
    }
    template <class DI16>
    StepPairs<DI16> step(DI16, int x) const
    {
        const Kel8u* bytes = row + 3 * x;
        const hn::Repartition<std::uint8_t, DI16> du8;
        const __m512i v0 = forwardGammaOf(du8, hn::LoadU(du8, bytes)).raw;
        const __m512i v1 = forwardGammaOf(du8, hn::LoadU(du8, bytes + 64)).raw;
        const __m512i v2 = forwardGammaOf(du8, hn::LoadU(du8, bytes + 128)).raw;
        const __m512i redGreen = _mm512_load_si512(kRedGreenIndex<3, kRGB>.index);
        const __m512i greenBlue = _mm512_load_si512(kGreenBlueIndex<3, kRGB>.index);
        const auto pick = [&](__m512i low, __m512i high, int offset) {
            const __mmask64 sampleBytes = 0x5555555555555555ull;  // bytes 0 and 2 of every 32-bit lane
            const __m512i shift = _mm512_set1_epi8(static_cast<char>(offset));
            return SamplePairs<DI16>{
                hn::Vec<DI16>{_mm512_maskz_permutex2var_epi8(sampleBytes, low, _mm512_add_epi8(redGreen, shift), high)},
                hn::Vec<DI16>{_mm512_maskz_permutex2var_epi8(sampleBytes, low, _mm512_add_epi8(greenBlue, shift), high)}};
        };
        return {pick(v0, v1, 0), pick(v0, v1, 48), pick(v1, v2, 32), pick(v2, v2, 16)};
    }
};
#endif

// The gamma member's rows: on AVX3_DL the table within the filter's loads,
// the last pixels to the scalar kernel; elsewhere each run of the row through
// the table into a buffer on the stack, then the filter.
void rowRGBToCbYCr422Gamma(const Kel8u* src, Kel8u* dst, int width, FilterCarry& carry)
{
#if HWY_TARGET == HWY_AVX3_DL
    filteredCbYCr<innerRGBToCbYCr422Gamma_8u_C3C2R, GammaRowSource>(src, dst, width, carry);
#else
    Kel8u coded[3 * kGammaRun];
    for (int x0 = 0; x0 < width; x0 += kGammaRun) {
        const int n = width - x0 < kGammaRun ? width - x0 : kGammaRun;
        forwardGammaBytes(src + 3 * x0, coded, 3 * n);
        filteredCbYCr<innerRGBToCbYCr422_8u_C3C2R>(coded, dst + 2 * x0, n, carry);
    }
#endif
}

void rowPairRGBToYCbCr420(const Kel8u* top, const Kel8u* bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* cb, Kel8u* cr,
                          int width)
{
    rowPairs420<3, kRGB, innerRGBToYCbCr420_8u_C3P3R>(top, bottom, yTop, yBottom, cb, cr, width);
}

void rowPairBGRToYCbCr420(const Kel8u* top, const Kel8u* bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* cb, Kel8u* cr,
                          int width)
{
    rowPairs420<3, kBGR, innerBGRToYCbCr420_8u_C3P3R>(top, bottom, yTop, yBottom, cb, cr, width);
}

void rowPairBGRToYCbCr420AC4(const Kel8u* top, const Kel8u* bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* cb, Kel8u* cr,
                             int width)
{
    rowPairs420<4, kBGR, innerBGRToYCbCr420_8u_AC4P3R>(top, bottom, yTop, yBottom, cb, cr, width);
}

// The pixel-order 4:2:2 rows, each finished by its scalar kernel.
template <int Pitch, ChannelOrder O, PairLayout L, PairConstants K, RowForward422 Tail>
HWY_INLINE void pixelRow422(const Kel8u* src, Kel8u* dst, int width)
{
    pairsToPixelOrder<L, K>(PixelRowSource<Pitch, O>{src}, dst, width,
                            [&](int x) { Tail(src + Pitch * x, dst + 2 * x, width - x); });
}

template <PairLayout L, RowPlanesForward422 Tail>
HWY_INLINE void planeRow422(const Kel8u* const src[3], Kel8u* dst, int width)
{
    pairsToPixelOrder<L, kRGBPair>(PlaneRowSource{src[0], src[1], src[2]}, dst, width, [&](int x) {
        const Kel8u* const rest[3] = {src[0] + x, src[1] + x, src[2] + x};
        Tail(rest, dst + 2 * x, width - x);
    });
}

void rowRGBToYCbCr422(const Kel8u* src, Kel8u* dst, int width)
{
    pixelRow422<3, kRGB, kYCbCrPair, kRGBPair, innerRGBToYCbCr422_C3_C2R>(src, dst, width);
}

void rowRGBToYCrCb422(const Kel8u* src, Kel8u* dst, int width)
{
    pixelRow422<3, kRGB, kYCrCbPair, kRGBPair, innerRGBToYCrCb422_C3_C2R>(src, dst, width);
}

void rowBGRToYCbCr422(const Kel8u* src, Kel8u* dst, int width)
{
    pixelRow422<3, kBGR, kYCbCrPair, kBGRPair, innerBGRToYCbCr422_8u_C3C2R>(src, dst, width);
}

void rowBGRToYCbCr422AC4(const Kel8u* src, Kel8u* dst, int width)
{
    pixelRow422<4, kBGR, kYCbCrPair, kBGRPair, innerBGRToYCbCr422_8u_AC4C2R>(src, dst, width);
}

void rowBGRToCbYCr422AC4(const Kel8u* src, Kel8u* dst, int width)
{
    pixelRow422<4, kBGR, kCbYCrPair, kBGRCbYCrPair, innerBGRToCbYCr422_8u_AC4C2R>(src, dst, width);
}

void rowRGBPlanesToYCbCr422(const Kel8u* const src[3], Kel8u* dst, int width)
{
    planeRow422<kYCbCrPair, innerRGBToYCbCr422_C3P2_C3R>(src, dst, width);
}

void rowRGBPlanesToYCrCb422(const Kel8u* const src[3], Kel8u* dst, int width)
{
    planeRow422<kYCrCbPair, innerRGBToYCrCb422_C3P2_C3R>(src, dst, width);
}

void rowBGRToYCbCr422Planes(const Kel8u* src, Kel8u* y, Kel8u* cb, Kel8u* cr, int width)
{
    pairsToPlanes<kBGRPair, innerBGRToYCbCr422_8u_C3P3R>(PixelRowSource<3, kBGR>{src}, src, 3, y, cb, cr, width);
}

void rowBGRToYCbCr422PlanesAC4(const Kel8u* src, Kel8u* y, Kel8u* cb, Kel8u* cr, int width)
{
    pairsToPlanes<kBGRPair, innerBGRToYCbCr422_8u_AC4P3R>(PixelRowSource<4, kBGR>{src}, src, 4, y, cb, cr, width);
}

void rowBGRToYCbCr411(const Kel8u* src, Kel8u* y, Kel8u* cb, Kel8u* cr, int width)
{
    groups411<3, kBGR, innerBGRToYCbCr411_8u_C3P3R>(src, y, cb, cr, width);
}

void rowBGRToYCbCr411AC4(const Kel8u* src, Kel8u* y, Kel8u* cb, Kel8u* cr, int width)
{
    groups411<4, kBGR, innerBGRToYCbCr411_8u_AC4P3R>(src, y, cb, cr, width);
}

void rowRGBToCbYCr422(const Kel8u* src, Kel8u* dst, int width, FilterCarry& carry)
{
    filteredCbYCr<innerRGBToCbYCr422_8u_C3C2R>(src, dst, width, carry);
}

} // namespace HWY_NAMESPACE
} // namespace kel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kel {

HWY_EXPORT(rowPairRGBToYCbCr420);
HWY_EXPORT(rowPairBGRToYCbCr420);
HWY_EXPORT(rowPairBGRToYCbCr420AC4);
HWY_EXPORT(rowRGBToYCbCr422);
HWY_EXPORT(rowRGBToYCrCb422);
HWY_EXPORT(rowBGRToYCbCr422);
HWY_EXPORT(rowBGRToYCbCr422AC4);
HWY_EXPORT(rowBGRToCbYCr422AC4);
HWY_EXPORT(rowRGBPlanesToYCbCr422);
HWY_EXPORT(rowRGBPlanesToYCrCb422);
HWY_EXPORT(rowBGRToYCbCr422Planes);
HWY_EXPORT(rowBGRToYCbCr422PlanesAC4);
HWY_EXPORT(rowBGRToYCbCr411);
HWY_EXPORT(rowBGRToYCbCr411AC4);
HWY_EXPORT(rowRGBToCbYCr422);
HWY_EXPORT(forwardGammaBytes);
HWY_EXPORT(rowRGBToCbYCr422Gamma);

RowPairForward420 chooseRGBToYCbCr420()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowPairRGBToYCbCr420);
}

RowPairForward420 chooseBGRToYCbCr420()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowPairBGRToYCbCr420);
}

RowPairForward420 chooseBGRToYCbCr420AC4()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowPairBGRToYCbCr420AC4);
}

RowForward422 chooseRGBToYCbCr422()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowRGBToYCbCr422);
}

RowForward422 chooseRGBToYCrCb422()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowRGBToYCrCb422);
}

RowForward422 chooseBGRToYCbCr422()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowBGRToYCbCr422);
}

RowForward422 chooseBGRToYCbCr422AC4()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowBGRToYCbCr422AC4);
}

RowForward422 chooseBGRToCbYCr422AC4()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowBGRToCbYCr422AC4);
}

RowPlanesForward422 chooseRGBPlanesToYCbCr422()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowRGBPlanesToYCbCr422);
}

RowPlanesForward422 chooseRGBPlanesToYCrCb422()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowRGBPlanesToYCrCb422);
}

RowForwardToPlanes chooseBGRToYCbCr422Planes()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowBGRToYCbCr422Planes);
}

RowForwardToPlanes chooseBGRToYCbCr422PlanesAC4()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowBGRToYCbCr422PlanesAC4);
}

RowForwardToPlanes chooseBGRToYCbCr411()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowBGRToYCbCr411);
}

RowForwardToPlanes chooseBGRToYCbCr411AC4()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowBGRToYCbCr411AC4);
}

RowFilteredCbYCr chooseRGBToCbYCr422()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowRGBToCbYCr422);
}

BytesThroughTable chooseForwardGammaBytes()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(forwardGammaBytes);
}

RowFilteredCbYCr chooseRGBToCbYCr422Gamma()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowRGBToCbYCr422Gamma);
}

} // namespace kel
#endif // HWY_ONCE

#else // a build without SIMD: the scalar kernels alone

namespace kel {

RowPairForward420 chooseRGBToYCbCr420()
{
    return innerRGBToYCbCr420_8u_C3P3R;
}

RowPairForward420 chooseBGRToYCbCr420()
{
    return innerBGRToYCbCr420_8u_C3P3R;
}

RowPairForward420 chooseBGRToYCbCr420AC4()
{
    return innerBGRToYCbCr420_8u_AC4P3R;
}

RowForward422 chooseRGBToYCbCr422()
{
    return innerRGBToYCbCr422_C3_C2R;
}

RowForward422 chooseRGBToYCrCb422()
{
    return innerRGBToYCrCb422_C3_C2R;
}

RowForward422 chooseBGRToYCbCr422()
{
    return innerBGRToYCbCr422_8u_C3C2R;
}

RowForward422 chooseBGRToYCbCr422AC4()
{
    return innerBGRToYCbCr422_8u_AC4C2R;
}

RowForward422 chooseBGRToCbYCr422AC4()
{
    return innerBGRToCbYCr422_8u_AC4C2R;
}

RowPlanesForward422 chooseRGBPlanesToYCbCr422()
{
    return innerRGBToYCbCr422_C3P2_C3R;
}

RowPlanesForward422 chooseRGBPlanesToYCrCb422()
{
    return innerRGBToYCrCb422_C3P2_C3R;
}

RowForwardToPlanes chooseBGRToYCbCr422Planes()
{
    return innerBGRToYCbCr422_8u_C3P3R;
}

RowForwardToPlanes chooseBGRToYCbCr422PlanesAC4()
{
    return innerBGRToYCbCr422_8u_AC4P3R;
}

RowForwardToPlanes chooseBGRToYCbCr411()
{
    return innerBGRToYCbCr411_8u_C3P3R;
}

RowForwardToPlanes chooseBGRToYCbCr411AC4()
{
    return innerBGRToYCbCr411_8u_AC4P3R;
}

RowFilteredCbYCr chooseRGBToCbYCr422()
{
    return innerRGBToCbYCr422_8u_C3C2R;
}

BytesThroughTable chooseForwardGammaBytes()
{
    return innerForwardGammaBytes;
}

RowFilteredCbYCr chooseRGBToCbYCr422Gamma()
{
    return innerRGBToCbYCr422Gamma_8u_C3C2R;
}

} // namespace kel

#endif // KELCC_SIMD

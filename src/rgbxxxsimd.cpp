// Vector row kernels of the packed 16-bit family's hot members: 4:2:0 planes
// and 4:2:2 pixel order to 565, truncated or dithered, for every SIMD target.
#include "rgbxxxsimd.h"

#include <cstddef>
#include <cstdint>

#include "simd.h"

#if KELCC_SIMD

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rgbxxxsimd.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kel::simdpacked {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// ---- fields and packing ---------------------------------------------------------------------------
// All of it in 16-bit lanes, one pixel a lane.  A channel arrives as a sum
// whose colour value is clamp(sum >> Shift, 0, 255).

// The truncated field of `Bits` bits: clamp(sum >> Shift) >> (8 - Bits) is
// clamp(sum >> (Shift + 8 - Bits), 0, 2^Bits - 1), since two floor shifts
// are one, sums of 256 and more give 256 / 2^(8 - Bits) and more, and
// negative sums stay negative.
template <int Bits, int Shift, class DI16>
HWY_INLINE hn::Vec<DI16> truncatedField(DI16 di16, hn::Vec<DI16> sum)
{
    const auto level = hn::ShiftRight<Shift + 8 - Bits>(sum);
    return hn::Min(hn::Max(level, hn::Zero(di16)), hn::Set(di16, static_cast<std::int16_t>((1 << Bits) - 1)));
}

// q + 1 where the mask is set: on AVX-512 one add under the mask register,
// elsewhere q minus the mask as a vector of -1 and 0.
template <class DI16>
HWY_INLINE hn::Vec<DI16> raisedWhere(DI16 di16, hn::Vec<DI16> q, hn::Mask<DI16> raise)
{
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    constexpr std::size_t kBytes = hn::MaxLanes(di16) * sizeof(std::int16_t);
    if constexpr (kBytes == 64) {
        return hn::Vec<DI16>{_mm512_mask_add_epi16(q.raw, raise.raw, q.raw, _mm512_set1_epi16(1))};
    } else if constexpr (kBytes == 32) {
        return hn::Vec<DI16>{_mm256_mask_add_epi16(q.raw, raise.raw, q.raw, _mm256_set1_epi16(1))};
    } else if constexpr (kBytes == 16) {
        return hn::Vec<DI16>{_mm_mask_add_epi16(q.raw, raise.raw, q.raw, _mm_set1_epi16(1))};
    }
#endif
    return hn::Sub(q, hn::VecFromMask(di16, raise));
}

// The dithered field (ditherField in rgbxxxpx.h) of colour c = 0..255 with
// the threshold t (already halved for the 6-bit field): q = (c * M) >> 8 is
// the upper half of c * 256M, which fits 16 bits signed for M = 31 and 63;
// the remainder c * 256 - q * S lies in 0..2301 (5 bits) or 0..1228 (6 bits),
// so its 16-bit wrap-around value is the value itself, compared as signed
// with t < 2098.  A passed comparison is a mask of -1, subtracted.
template <int Bits, class DI16>
HWY_INLINE hn::Vec<DI16> ditheredField(DI16 di16, hn::Vec<DI16> c, hn::Vec<DI16> t)
{
    static_assert(Bits == 5 || Bits == 6, "the fields of 565");
    constexpr std::int16_t kLevels = Bits == 5 ? 31 : 63, kStep = Bits == 5 ? 2105 : 1036;
    const hn::RebindToUnsigned<DI16> du16;
    const auto q = hn::MulHigh(c, hn::Set(di16, static_cast<std::int16_t>(kLevels * 256)));
    const auto remainder = hn::Sub(hn::ShiftLeft<8>(hn::BitCast(du16, c)),
                                   hn::Mul(hn::BitCast(du16, q), hn::Set(du16, static_cast<std::uint16_t>(kStep))));
    return raisedWhere(di16, q, hn::Gt(hn::BitCast(di16, remainder), t));
}

// The three fields to one word: red at bit 0 and blue at bit 11, or the
// other way round with Swap (swapRB).
template <bool Swap, class DI16>
HWY_INLINE hn::Vec<hn::RebindToUnsigned<DI16>> pack565(DI16, hn::Vec<DI16> red, hn::Vec<DI16> green,
                                                        hn::Vec<DI16> blue)
{
    const hn::RebindToUnsigned<DI16> du16;
    const auto r = hn::BitCast(du16, red), g = hn::BitCast(du16, green), b = hn::BitCast(du16, blue);
    const auto low = Swap ? b : r, high = Swap ? r : b;
    return hn::Or(hn::Or(low, hn::ShiftLeft<5>(g)), hn::ShiftLeft<11>(high));
}

// Thresholds of a row in 16-bit lanes, lane j for column j & 3 (a vector
// starts at a multiple of 4 columns), and the same halved for green.
template <class DI16>
struct RowThresholds {
    hn::Vec<DI16> full, half;
};
template <class DI16>
HWY_INLINE RowThresholds<DI16> rowThresholds(DI16 di16, const std::int32_t* t)
{
    if (t == nullptr) return {hn::Zero(di16), hn::Zero(di16)};
    alignas(16) const std::int16_t block[8] = {
        static_cast<std::int16_t>(t[0]), static_cast<std::int16_t>(t[1]), static_cast<std::int16_t>(t[2]),
        static_cast<std::int16_t>(t[3]), static_cast<std::int16_t>(t[0]), static_cast<std::int16_t>(t[1]),
        static_cast<std::int16_t>(t[2]), static_cast<std::int16_t>(t[3])};
    const auto full = hn::LoadDup128(di16, block);
    return {full, hn::ShiftRight<1>(full)};
}

// One vector of pixels from its three channel sums (colour clamp(sum >>
// Shift)), truncated or dithered, packed and stored.
template <bool Dither, bool Swap, int Shift, class DI16>
HWY_INLINE void storeWords(DI16 di16, hn::Vec<DI16> red, hn::Vec<DI16> green, hn::Vec<DI16> blue,
                           const RowThresholds<DI16>& t, Kel16u* dst)
{
    const hn::RebindToUnsigned<DI16> du16;
    hn::Vec<DI16> r, g, b;
    if constexpr (Dither) {
        const auto colour = [&](hn::Vec<DI16> sum) {
            return hn::Min(hn::Max(hn::ShiftRight<Shift>(sum), hn::Zero(di16)), hn::Set(di16, 255));
        };
        r = ditheredField<5>(di16, colour(red), t.full);
        g = ditheredField<6>(di16, colour(green), t.half);
        b = ditheredField<5>(di16, colour(blue), t.full);
    } else {
        (void)t;
        r = truncatedField<5, Shift>(di16, red);
        g = truncatedField<6, Shift>(di16, green);
        b = truncatedField<5, Shift>(di16, blue);
    }
    hn::StoreU(pack565<Swap>(di16, r, g, b), du16, dst);
}

// ---- coarse arithmetic in 16-bit lanes -----------------------------------------------------------
// Coarse (rgbxxxpx.h): (Y - 16) * 128 and (C - 128) * 128 lie within
// -16384..30592, and each ((a * k) >> 16) is the upper half of the 16-bit
// product, which MulHigh gives with the same floor.  A channel sum, luma
// term plus chroma terms, stays within -3600..7700, so every step is exact in
// 16 bits; the green terms are summed first and subtracted once, the same
// integer.

template <class DI16>
struct CoarseTerms {
    hn::Vec<DI16> red, greenLoss, blue;  // green = luma - greenLoss
};

// Chroma terms of samples cb, cr (0..255 in 16-bit lanes).
template <class DI16>
HWY_INLINE CoarseTerms<DI16> coarseTerms(DI16 di16, hn::Vec<DI16> cb, hn::Vec<DI16> cr)
{
    const auto centre = hn::Set(di16, 16384);
    const auto u = hn::Sub(hn::ShiftLeft<7>(cb), centre), v = hn::Sub(hn::ShiftLeft<7>(cr), centre);
    return {hn::MulHigh(v, hn::Set(di16, 13074)),
            hn::Add(hn::MulHigh(u, hn::Set(di16, 3211)), hn::MulHigh(v, hn::Set(di16, 6660))),
            hn::MulHigh(u, hn::Set(di16, 16523))};
}

template <class DI16>
HWY_INLINE hn::Vec<DI16> coarseLuma(DI16 di16, hn::Vec<DI16> y)
{
    return hn::MulHigh(hn::Sub(hn::ShiftLeft<7>(y), hn::Set(di16, 2048)), hn::Set(di16, 9535));
}

template <bool Dither, bool Swap, class DI16>
HWY_INLINE void storeCoarse(DI16 di16, hn::Vec<DI16> y, const CoarseTerms<DI16>& c, const RowThresholds<DI16>& t,
                            Kel16u* dst)
{
    const auto luma = coarseLuma(di16, y);
    storeWords<Dither, Swap, 4>(di16, hn::Add(luma, c.red), hn::Sub(luma, c.greenLoss), hn::Add(luma, c.blue), t, dst);
}

// ---- 4:2:0 planes --------------------------------------------------------------------------------

// A vector of cells' chroma samples, 16-bit lanes, laid out for the zips
// below: block k holds cells 4k..4k+3, then 4(B + k)..4(B + k) + 3 of B
// blocks, so that zipping the terms with themselves within blocks gives the
// terms of pixels 0..N-1 (lower halves) and N..2N-1 (upper halves) in order.
// The samples are moved as 4-byte groups before widening.
template <class DI16>
HWY_INLINE hn::Vec<DI16> cellSamples(DI16 di16, const Kel8u* plane)
{
    const hn::Rebind<std::uint8_t, DI16> du8;
    auto bytes = hn::LoadU(du8, plane);
    const hn::Repartition<std::uint32_t, decltype(du8)> du32;
    constexpr std::size_t kGroups = hn::MaxLanes(du32);
    if constexpr (kGroups == 4) {
        alignas(16) static constexpr std::int32_t kOrder[4] = {0, 2, 1, 3};
        bytes = hn::BitCast(du8, hn::TableLookupLanes(hn::BitCast(du32, bytes), hn::SetTableIndices(du32, kOrder)));
    } else if constexpr (kGroups == 8) {
        alignas(32) static constexpr std::int32_t kOrder[8] = {0, 4, 1, 5, 2, 6, 3, 7};
        bytes = hn::BitCast(du8, hn::TableLookupLanes(hn::BitCast(du32, bytes), hn::SetTableIndices(du32, kOrder)));
    } else {
        static_assert(kGroups <= 2, "one block: the order is already right");
    }
    return hn::PromoteTo(di16, bytes);
}

// Rows of luma over one chroma row (y1 null for one), 2N pixels a step of
// N-lane vectors, the chroma terms once a cell.  Each pixel's word is the
// scalar kernel's (innerCellRows with Coarse): the same integers at every
// step (see the coarse arithmetic above and storeWords).
template <bool Dither, bool Swap, class DI16>
HWY_INLINE int cellSteps(DI16 di16, const Kel8u* HWY_RESTRICT y0, const Kel8u* HWY_RESTRICT y1,
                         const Kel8u* HWY_RESTRICT cb, const Kel8u* HWY_RESTRICT cr, Kel16u* HWY_RESTRICT d0,
                         Kel16u* HWY_RESTRICT d1, int x, int end, const std::int32_t* t0, const std::int32_t* t1)
{
    const hn::Rebind<std::uint8_t, DI16> du8;
    const int lanes = static_cast<int>(hn::Lanes(di16));
    const RowThresholds<DI16> top = rowThresholds(di16, t0), bottom = rowThresholds(di16, t1);
    const auto row = [&](const Kel8u* y, Kel16u* dst, const CoarseTerms<DI16>& first,
                         const CoarseTerms<DI16>& second, const RowThresholds<DI16>& t) {
        storeCoarse<Dither, Swap>(di16, hn::PromoteTo(di16, hn::LoadU(du8, y)), first, t, dst);
        storeCoarse<Dither, Swap>(di16, hn::PromoteTo(di16, hn::LoadU(du8, y + lanes)), second, t, dst + lanes);
    };
    for (; x + 2 * lanes <= end; x += 2 * lanes) {
        const CoarseTerms<DI16> c = coarseTerms(di16, cellSamples(di16, cb + x / 2), cellSamples(di16, cr + x / 2));
        const CoarseTerms<DI16> first{hn::InterleaveLower(di16, c.red, c.red),
                                      hn::InterleaveLower(di16, c.greenLoss, c.greenLoss),
                                      hn::InterleaveLower(di16, c.blue, c.blue)};
        const CoarseTerms<DI16> second{hn::InterleaveUpper(di16, c.red, c.red),
                                       hn::InterleaveUpper(di16, c.greenLoss, c.greenLoss),
                                       hn::InterleaveUpper(di16, c.blue, c.blue)};
        row(y0 + x, d0 + x, first, second, top);
        if (y1 != nullptr) row(y1 + x, d1 + x, first, second, bottom);
    }
    return x;
}

// Whole vectors, then 16 pixels a step on wider targets; the scalar kernel
// finishes from the even count returned.
template <bool Dither, bool Swap>
HWY_INLINE int cells565(const Kel8u* y0, const Kel8u* y1, const Kel8u* cb, const Kel8u* cr, Kel16u* d0, Kel16u* d1,
                        int width, const std::int32_t* t0, const std::int32_t* t1)
{
    const int end = width & ~1;
    const int x = cellSteps<Dither, Swap>(hn::ScalableTag<std::int16_t>(), y0, y1, cb, cr, d0, d1, 0, end, t0, t1);
    if constexpr (hn::MaxLanes(hn::ScalableTag<std::int16_t>()) > 8) {
        return cellSteps<Dither, Swap>(hn::Full128<std::int16_t>(), y0, y1, cb, cr, d0, d1, x, end, t0, t1);
    }
    return x;
}

int cellRows565(const Kel8u* y0, const Kel8u* y1, const Kel8u* cb, const Kel8u* cr, Kel16u* d0, Kel16u* d1, int width,
                bool swapRB, const std::int32_t* t0, const std::int32_t* t1)
{
    (void)t0;
    (void)t1;
    return swapRB ? cells565<false, true>(y0, y1, cb, cr, d0, d1, width, nullptr, nullptr)
                  : cells565<false, false>(y0, y1, cb, cr, d0, d1, width, nullptr, nullptr);
}

int cellRows565Dither(const Kel8u* y0, const Kel8u* y1, const Kel8u* cb, const Kel8u* cr, Kel16u* d0, Kel16u* d1,
                      int width, bool swapRB, const std::int32_t* t0, const std::int32_t* t1)
{
    return swapRB ? cells565<true, true>(y0, y1, cb, cr, d0, d1, width, t0, t1)
                  : cells565<true, false>(y0, y1, cb, cr, d0, d1, width, t0, t1);
}

// ---- 4:2:2 pixel order ---------------------------------------------------------------------------
// A vector of 2N bytes Y0 Cb Y1 Cr ... is N pixels: each 16-bit lane holds
// its pixel's Y in the low byte, and a byte shuffle within 16-byte blocks
// (a pair never straddles one) copies the pair's Cb or Cr to both its pixels.

template <class DU8>
struct PairBytes {
    hn::Vec<DU8> cbIndex, crIndex;
};
template <class DU8>
HWY_INLINE PairBytes<DU8> pairBytes(DU8 du8)
{
    // 0x80: a zero byte (the upper byte of each 16-bit lane).
    alignas(16) static constexpr std::uint8_t kCb[16] = {1, 0x80, 1, 0x80, 5, 0x80, 5, 0x80,
                                                         9, 0x80, 9, 0x80, 13, 0x80, 13, 0x80};
    alignas(16) static constexpr std::uint8_t kCr[16] = {3, 0x80, 3, 0x80, 7, 0x80, 7, 0x80,
                                                         11, 0x80, 11, 0x80, 15, 0x80, 15, 0x80};
    return {hn::LoadDup128(du8, kCb), hn::LoadDup128(du8, kCr)};
}

// The coarse arithmetic per pixel, each pixel with its pair's chroma terms.
template <bool Swap, class DI16>
HWY_INLINE int pairStepsCoarseDither(DI16 di16, const Kel8u* HWY_RESTRICT src, Kel16u* HWY_RESTRICT dst, int x,
                                     int end, const std::int32_t* thresholds)
{
    const hn::Repartition<std::uint8_t, DI16> du8;
    const hn::RebindToUnsigned<DI16> du16;
    const int lanes = static_cast<int>(hn::Lanes(di16));
    const RowThresholds<DI16> t = rowThresholds(di16, thresholds);
    const auto index = pairBytes(du8);
    for (; x + lanes <= end; x += lanes) {
        const auto bytes = hn::LoadU(du8, src + 2 * x);
        const auto y = hn::BitCast(di16, hn::And(hn::BitCast(du16, bytes), hn::Set(du16, 0x00FF)));
        const auto cb = hn::BitCast(di16, hn::TableLookupBytesOr0(bytes, index.cbIndex));
        const auto cr = hn::BitCast(di16, hn::TableLookupBytesOr0(bytes, index.crIndex));
        storeCoarse<true, Swap>(di16, y, coarseTerms(di16, cb, cr), t, dst + x);
    }
    return x;
}

// pmaddwd: a0 * b0 + a1 * b1 of each 32-bit lane's two 16-bit halves.
template <class DI32, class VI16>
HWY_INLINE hn::Vec<DI32> pairProducts(DI32 di32, VI16 a, VI16 b)
{
    (void)di32;
    constexpr std::size_t kLanes = hn::MaxLanes(di32);
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    if constexpr (kLanes == 16) {
        return hn::Vec<DI32>{_mm512_madd_epi16(a.raw, b.raw)};
    } else if constexpr (kLanes == 8) {
        return hn::Vec<DI32>{_mm256_madd_epi16(a.raw, b.raw)};
    } else {
        return hn::Vec<DI32>{_mm_madd_epi16(a.raw, b.raw)};
    }
#elif HWY_TARGET == HWY_AVX2
    if constexpr (kLanes == 8) {
        return hn::Vec<DI32>{_mm256_madd_epi16(a.raw, b.raw)};
    } else {
        return hn::Vec<DI32>{_mm_madd_epi16(a.raw, b.raw)};
    }
#elif HWY_TARGET == HWY_SSE4 || HWY_TARGET == HWY_SSSE3
    (void)kLanes;
    return hn::Vec<DI32>{_mm_madd_epi16(a.raw, b.raw)};
#else
    (void)kLanes;
    auto odd = hn::Zero(di32);
    const auto even = hn::ReorderWidenMulAccumulate(di32, a, b, hn::Zero(di32), odd);
    return hn::RearrangeToOddPlusEven(even, odd);
#endif
}

// A coefficient as high * 65536 + low with low a signed 16-bit value.
constexpr std::int32_t highPart(std::int32_t k)
{
    return (k + 32768) >> 16;
}
constexpr std::int32_t lowPart(std::int32_t k)
{
    return k - highPart(k) * 65536;
}
constexpr std::int32_t weightPair(std::int32_t first, std::int32_t second)
{
    return static_cast<std::int32_t>(static_cast<std::uint16_t>(first) |
                                      static_cast<std::uint32_t>(static_cast<std::uint16_t>(second)) << 16);
}

// sum + a0 * b0 + a1 * b1 in each 32-bit lane.  AVX3_DL does it in one
// AVX-512 VNNI instruction, written out in its EVEX form: Highway's AVX3_DL
// target enables only the VEX form, which processors with AVX-512 VNNI may
// lack (Zen 4 does).
template <class DI32, class VI16>
HWY_INLINE hn::Vec<DI32> mulAdd(DI32 di32, VI16 a, VI16 b, hn::Vec<DI32> sum)
{
#if HWY_TARGET == HWY_AVX3_DL
    if constexpr (hn::MaxLanes(di32) == 16) {
        __m512i acc = sum.raw;
        asm("vpdpwssd %2, %1, %0" : "+v"(acc) : "v"(a.raw), "v"(b.raw));
        return hn::Vec<DI32>{acc};
    }
#endif
    return hn::Add(sum, pairProducts(di32, a, b));
}

// One folded channel (rgbxxxpx.h Folded), S = 76284 * Y + cb * Cb + cr * Cr
// + offset, whole in 32 bits: |S| < 2^27.  Each pair's chroma part
// offset + low(cb) Cb + low(cr) Cr + 65536 (high(cb) Cb + high(cr) Cr) is two
// multiply-adds of 16-bit pairs, the high parts as (C << 7) * (512 high);
// each pixel's luma 76284 Y is (4 Y) * 19071.  No product reaches 2^26 and no
// pair is (-32768, -32768), so the multiply-adds are exact, S is the scalar
// kernel's sum, and its upper half is S >> 16, the same floor.
struct FoldedWeights {
    std::int32_t cb, cr, offset;
};
inline constexpr FoldedWeights kFoldedRed{0, 104595, -14608761};
inline constexpr FoldedWeights kFoldedGreen{-25690, -53281, 8887730};
inline constexpr FoldedWeights kFoldedBlue{132186, 0, -18140365};
inline constexpr std::int32_t kFoldedLumaQuarter = 76284 / 4;
static_assert(kFoldedLumaQuarter * 4 == 76284, "the luma weight is four times a 16-bit one");

template <class DI16>
struct FoldedPixels {
    hn::Vec<DI16> chroma, chromaShifted;  // (Cb, Cr) in each pair's 32-bit lane, and the same << 7
    hn::Vec<DI16> luma4;                  // 4 Y of each pixel
};

template <const FoldedWeights& W, class DI16>
HWY_INLINE hn::Vec<DI16> foldedChannel(DI16 di16, const FoldedPixels<DI16>& p)
{
    static_assert(highPart(W.cb) * 512 >= -32768 && highPart(W.cb) * 512 < 32768 && highPart(W.cr) * 512 >= -32768 &&
                      highPart(W.cr) * 512 < 32768,
                  "high parts times 512 fit 16 bits");
    const hn::Repartition<std::int32_t, DI16> di32;
    const hn::Repartition<std::uint32_t, DI16> du32;
    const auto weights = [&](std::int32_t cb, std::int32_t cr) { return hn::BitCast(di16, hn::Set(di32, weightPair(cb, cr))); };
    const auto low = mulAdd(di32, p.chroma, weights(lowPart(W.cb), lowPart(W.cr)), hn::Set(di32, W.offset));
    const auto chroma = mulAdd(di32, p.chromaShifted, weights(512 * highPart(W.cb), 512 * highPart(W.cr)), low);
    const auto even = mulAdd(di32, p.luma4, weights(kFoldedLumaQuarter, 0), chroma);
    const auto odd = mulAdd(di32, p.luma4, weights(0, kFoldedLumaQuarter), chroma);
    return hn::OddEven(hn::BitCast(di16, odd), hn::BitCast(di16, hn::ShiftRight<16>(hn::BitCast(du32, even))));
}

template <bool Swap, class DI16>
HWY_INLINE int pairStepsFolded(DI16 di16, const Kel8u* HWY_RESTRICT src, Kel16u* HWY_RESTRICT dst, int x, int end)
{
    const hn::Repartition<std::uint8_t, DI16> du8;
    const hn::RebindToUnsigned<DI16> du16;
    const int lanes = static_cast<int>(hn::Lanes(di16));
    const RowThresholds<DI16> none{hn::Zero(di16), hn::Zero(di16)};
    for (; x + lanes <= end; x += lanes) {
        const auto words = hn::BitCast(du16, hn::LoadU(du8, src + 2 * x));
        const auto chroma = hn::ShiftRight<8>(words);
        const FoldedPixels<DI16> p{hn::BitCast(di16, chroma), hn::BitCast(di16, hn::ShiftLeft<7>(chroma)),
                                   hn::BitCast(di16, hn::ShiftLeft<2>(hn::And(words, hn::Set(du16, 0x00FF))))};
        storeWords<false, Swap, 0>(di16, foldedChannel<kFoldedRed>(di16, p), foldedChannel<kFoldedGreen>(di16, p),
                                   foldedChannel<kFoldedBlue>(di16, p), none, dst + x);
    }
    return x;
}

// Whole vectors, then 8 pixels a step on wider targets, never past the last
// pair: the scalar kernel does the odd last pixel.
template <bool Folded, bool Swap>
HWY_INLINE int pairs565(const Kel8u* src, Kel16u* dst, int width, const std::int32_t* thresholds)
{
    const int end = width & ~1;
    const auto steps = [&](auto di16, int x) {
        if constexpr (Folded) {
            (void)thresholds;
            return pairStepsFolded<Swap>(di16, src, dst, x, end);
        } else {
            return pairStepsCoarseDither<Swap>(di16, src, dst, x, end, thresholds);
        }
    };
    const int x = steps(hn::ScalableTag<std::int16_t>(), 0);
    if constexpr (hn::MaxLanes(hn::ScalableTag<std::int16_t>()) > 8) return steps(hn::Full128<std::int16_t>(), x);
    return x;
}

int pairsRow565(const Kel8u* src, Kel16u* dst, int width, bool swapRB, const std::int32_t* thresholds)
{
    return swapRB ? pairs565<true, true>(src, dst, width, thresholds) : pairs565<true, false>(src, dst, width, thresholds);
}

int pairsRow565Dither(const Kel8u* src, Kel16u* dst, int width, bool swapRB, const std::int32_t* thresholds)
{
    return swapRB ? pairs565<false, true>(src, dst, width, thresholds)
                  : pairs565<false, false>(src, dst, width, thresholds);
}

} // namespace HWY_NAMESPACE
} // namespace kel::simdpacked
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kel::simdpacked {

HWY_EXPORT(cellRows565);
HWY_EXPORT(cellRows565Dither);
HWY_EXPORT(pairsRow565);
HWY_EXPORT(pairsRow565Dither);

packed::CellRowsKernel chooseCells565()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(cellRows565);
}

packed::CellRowsKernel chooseCells565Dither()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(cellRows565Dither);
}

packed::PairsRowKernel choosePairs565()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(pairsRow565);
}

packed::PairsRowKernel choosePairs565Dither()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(pairsRow565Dither);
}

} // namespace kel::simdpacked
#endif // HWY_ONCE

#else // a build without SIMD: no vector kernels, the scalar kernels do every row

namespace kel::simdpacked {

packed::CellRowsKernel chooseCells565()
{
    return nullptr;
}
packed::CellRowsKernel chooseCells565Dither()
{
    return nullptr;
}
packed::PairsRowKernel choosePairs565()
{
    return nullptr;
}
packed::PairsRowKernel choosePairs565Dither()
{
    return nullptr;
}

} // namespace kel::simdpacked

#endif // KELCC_SIMD

// Whole-vector operations of the full-resolution luma-chroma kernels: bytes
// widened to 16 bits, 16-bit pairs multiply-added into exact 32-bit sums, the
// sums' upper halves brought back to 16 bits, all in one lane order; the row
// that loads, converts and stores three channels a step; and YCbCr to RGB
// for the sets with centred chroma.
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

#include <hwy/highway.h>

#include "cbcrpx.h"
#include "kelcc.h"
#include "pairsimd.h"

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

// ---- where a row's three channels lie -----------------------------------------------------------

// A pixel-order row, Pitch bytes a pixel, the channels in bytes 0, 1 and 2.
// A fourth byte is neither used nor changed: the store puts back what the
// destination held.
template <int Pitch>
struct InPixelOrder {
    static_assert(Pitch == 3 || Pitch == 4, "three or four bytes a pixel");
    using Src = const Kel8u*;
    using Dst = Kel8u*;
    static constexpr int kPlanes = 1, kPitch = Pitch;

    template <class DU8, class V>
    static HWY_INLINE void load(DU8 du8, Src row, int x, V& first, V& second, V& third)
    {
        if constexpr (Pitch == 3) {
            loadInterleaved3(du8, row + 3 * x, first, second, third);
        } else {
            V alpha;
            hn::LoadInterleaved4(du8, row + 4 * x, first, second, third, alpha);
        }
    }
    template <class DU8, class V>
    static HWY_INLINE void store(DU8 du8, Dst row, int x, V first, V second, V third)
    {
        if constexpr (Pitch == 3) {
            storeInterleaved3(du8, first, second, third, row + 3 * x);
        } else {
            V kept0, kept1, kept2, alpha;
            hn::LoadInterleaved4(du8, row + 4 * x, kept0, kept1, kept2, alpha);
            hn::StoreInterleaved4(first, second, third, alpha, du8, row + 4 * x);
        }
    }
    template <class Row>
    static Row advance(Row row, int x)
    {
        return row + Pitch * x;
    }
    template <class Row>
    static const Row* planes(const Row& row)
    {
        return &row;
    }
};

// Three planes of one row, plane p at row[p].
template <class T>
struct PlanesFrom {
    T* planes[3];
    operator T* const*() const { return planes; }
};

struct InPlanes {
    using Src = const Kel8u* const*;
    using Dst = Kel8u* const*;
    static constexpr int kPlanes = 3, kPitch = 1;

    template <class DU8, class V>
    static HWY_INLINE void load(DU8 du8, Src row, int x, V& first, V& second, V& third)
    {
        first = hn::LoadU(du8, row[0] + x);
        second = hn::LoadU(du8, row[1] + x);
        third = hn::LoadU(du8, row[2] + x);
    }
    template <class DU8, class V>
    static HWY_INLINE void store(DU8 du8, Dst row, int x, V first, V second, V third)
    {
        hn::StoreU(first, du8, row[0] + x);
        hn::StoreU(second, du8, row[1] + x);
        hn::StoreU(third, du8, row[2] + x);
    }
    template <class T>
    static PlanesFrom<T> advance(T* const* row, int x)
    {
        return {{row[0] + x, row[1] + x, row[2] + x}};
    }
    template <class T>
    static T* const* planes(T* const* row)
    {
        return row;
    }
};

// ---- the row -------------------------------------------------------------------------------------

// A vector of pixels a step: the three channels loaded, converted, stored.
// The pixels after the last whole step go to the scalar kernel Tail itself,
// compiled for the baseline, and so does a row whose destination overlaps
// its source other than in place.
template <class In, class Out, class Convert, auto Tail>
HWY_INLINE void convertRow(typename In::Src src, typename Out::Dst dst, int width)
{
    const std::size_t pixels = static_cast<std::size_t>(width);
    if (!inPlaceOrApart(In::planes(src), In::kPlanes, In::kPitch * pixels, Out::planes(dst), Out::kPlanes,
                        Out::kPitch * pixels)) {
        Tail(src, dst, width);
        return;
    }
    const hn::ScalableTag<std::uint8_t> du8;
    const int step = static_cast<int>(hn::Lanes(du8));
    int x = 0;
    for (; x + step <= width; x += step) {
        hn::Vec<decltype(du8)> a, b, c, first, second, third;
        In::load(du8, src, x, a, b, c);
        Convert::convert(du8, a, b, c, first, second, third);
        Out::store(du8, dst, x, first, second, third);
    }
    if (x < width) Tail(In::advance(src, x), Out::advance(dst, x), width - x);
}

// YCbCr to RGB for a set whose chroma is centred on 128 and whose offsets are
// all -16 times the luma weight, plus a rounding half or not (sets T, R and F):
// then luma * Y + offset = luma * (Y - 16) + rounding.  Set T's luma weight is
// four times a 16-bit value, one product (luma / 4) * 4 (Y - 16) of a value in
// -64..956; sets R and F split as 65536 + 10746 and 65536 + 10773 like the
// chroma weights.  Each weight splits as highPart * 65536 + lowPart; the low
// parts ride in the multiply-adds, luma's beside a chroma weight's (green
// takes two, the second with a zero luma weight), the rounding half in the
// sum they start from, and the high parts are added to the shifted sum, since
// (s + 65536 * h) >> 16 = (s >> 16) + h exactly.  The products stay below 2^25 and no pair holds
// -32768, so every sum is the scalar one, floored the same; the results lie
// within -600..600, and the pack saturates them to 0..255 as saturateByte does.
template <const InverseYCbCr& K>
struct YCbCrToRGB {
    static_assert(K.chromaZero == 128 && K.offsetG == K.offsetR && K.offsetB == K.offsetR, "one offset, centred chroma");
    static constexpr std::int32_t kRounding = K.offsetR + 16 * K.luma;
    static_assert(kRounding == 0 || kRounding == 32768, "offsets of 16, rounding or not");
    static constexpr bool kQuarter = K.luma % 4 == 0 && K.luma / 4 < 32768;
    static constexpr std::int32_t kLumaWeight = kQuarter ? K.luma / 4 : lowPart(K.luma);
    static constexpr std::int32_t kLumaHigh = kQuarter ? 0 : highPart(K.luma);

    template <class DU8, class V = hn::Vec<DU8>>
    static HWY_INLINE void convert(DU8 du8, V y, V cb, V cr, V& r, V& g, V& b)
    {
        using DI16 = hn::Repartition<std::int16_t, DU8>;
        const DI16 di16;
        const hn::Repartition<std::int32_t, DU8> di32;
        const Halves<DI16> y16 = widenBytes(di16, y), cb16 = widenBytes(di16, cb), cr16 = widenBytes(di16, cr);
        const auto sixteen = hn::Set(di16, 16), centre = hn::Set(di16, 128);
        const auto rounding = hn::Set(di32, kRounding);
        const auto half = [&](auto yh, auto cbh, auto crh, auto& rh, auto& gh, auto& bh) {
            const auto above = hn::Sub(yh, sixteen);
            const auto luma = kQuarter ? hn::ShiftLeft<2>(above) : above;
            const auto dcb = hn::Sub(cbh, centre), dcr = hn::Sub(crh, centre);
            const auto lumaCb = pairUp(di16, luma, dcb), lumaCr = pairUp(di16, luma, dcr);
            const auto channel = [&](const Halves<DI16>& pairs, std::int32_t weights) {
                return upperHalves(di16, multiplyAdd(di32, pairs.lower, weights, rounding),
                                   multiplyAdd(di32, pairs.upper, weights, rounding));
            };
            const auto red = channel(lumaCr, weightPair(kLumaWeight, lowPart(K.crToR)));
            rh = addMultiple<kLumaHigh>(addMultiple<highPart(K.crToR)>(red, dcr), above);
            const auto blue = channel(lumaCb, weightPair(kLumaWeight, lowPart(K.cbToB)));
            bh = addMultiple<kLumaHigh>(addMultiple<highPart(K.cbToB)>(blue, dcb), above);
            constexpr std::int32_t cbWeights = weightPair(kLumaWeight, lowPart(-K.cbToG));
            constexpr std::int32_t crWeights = weightPair(0, lowPart(-K.crToG));
            const auto green = upperHalves(
                di16, multiplyAdd(di32, lumaCr.lower, crWeights, multiplyAdd(di32, lumaCb.lower, cbWeights, rounding)),
                multiplyAdd(di32, lumaCr.upper, crWeights, multiplyAdd(di32, lumaCb.upper, cbWeights, rounding)));
            gh = addMultiple<kLumaHigh>(
                addMultiple<highPart(-K.crToG)>(addMultiple<highPart(-K.cbToG)>(green, dcb), dcr), above);
        };
        hn::Vec<DI16> rLower, rUpper, gLower, gUpper, bLower, bUpper;
        half(y16.lower, cb16.lower, cr16.lower, rLower, gLower, bLower);
        half(y16.upper, cb16.upper, cr16.upper, rUpper, gUpper, bUpper);
        r = packBytes(du8, rLower, rUpper);
        g = packBytes(du8, gLower, gUpper);
        b = packBytes(du8, bLower, bUpper);
    }
};

} // namespace HWY_NAMESPACE
} // namespace kel
HWY_AFTER_NAMESPACE();

#endif // KELCC_PAIRSIMD_INL_H_

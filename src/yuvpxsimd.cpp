// RGB <-> full-range YUV 4:2:0 and 4:2:2 on whole vectors, compiled once for every SIMD target
// (foreach_target.h includes this file once a target).
#include "yuvpxsimd.h"

#include <cstddef>
#include <cstdint>

#include "rowstore.h"
#include "simd.h"
#include "yuvconv.h"

#if KELCC_SIMD

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "yuvpxsimd.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include "simdops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// ---- inverse 4:2:0 and planar 4:2:2 -----------------------------------------------------------------

// The chroma terms of a YUV inverse set over the stored (uncentred) U and V,
// U in the Cb place of chromaTerm's pairs: the centring on 128 and the
// member's Half (0, or 32768 where it rounds) folded into the offset.
template <const yuv::Inverse& K, std::int32_t Half>
constexpr ChromaWeights kYUVRedWeights{0, K.vToR, Half - 128 * K.vToR};
template <const yuv::Inverse& K, std::int32_t Half>
constexpr ChromaWeights kYUVGreenWeights{-K.uToG, -K.vToG, Half + 128 * (K.uToG + K.vToG)};
template <const yuv::Inverse& K, std::int32_t Half>
constexpr ChromaWeights kYUVBlueWeights{K.uToB, 0, Half - 128 * K.uToB};

// Where a row's three channel vectors go: RGB24 or BGR24, four bytes a
// pixel with alpha 0, or three planes.
template <ChannelOrder O>
struct Interleaved3 {
    Kel8u* p;
    template <class DU8, class V>
    HWY_INLINE void put(DU8 du8, int x, V r, V g, V b) const
    {
        static_assert((O.r == 0 && O.b == 2) || (O.r == 2 && O.b == 0), "RGB or BGR");
        if constexpr (O.r == 0) storeInterleaved3(du8, r, g, b, p + 3 * x);
        else storeInterleaved3(du8, b, g, r, p + 3 * x);
    }
};
struct ZeroAlpha4 {
    Kel8u* p;
    template <class DU8, class V>
    HWY_INLINE void put(DU8 du8, int x, V r, V g, V b) const
    {
        hn::StoreInterleaved4(r, g, b, hn::Zero(du8), du8, p + 4 * x);
    }
};
struct Planes3 {
    PlaneStore s;
    template <class DU8, class V>
    HWY_INLINE void put(DU8 du8, int x, V r, V g, V b) const
    {
        hn::StoreU(r, du8, s.red + x);
        hn::StoreU(g, du8, s.green + x);
        hn::StoreU(b, du8, s.blue + x);
    }
};

// Rows of luma that share one chroma row (two in 4:2:0, one in planar
// 4:2:2), a vector of luma bytes a step in each row; `pixels` of each row are
// converted (4:2:0 leaves an odd last column alone, 4:2:2 planes hold chroma
// for it).  The scalar kernel computes each channel as
//   clamp((65536 * Y + C) >> 16),  C = weight . (U - 128, V - 128) + Half,
// and since 65536 * Y is a whole multiple of 65536 that is exactly
//   clamp(Y + (C >> 16)):
// no carry can come from the luma term.  C comes exact from chromaTerm, one
// 32-bit lane a cell; its upper 16-bit half is C >> 16 (floor, as the
// scalar shift), within -300..300, copied into both pixels' 16-bit lanes.
// Y + (C >> 16) lies within -300..560, inside 16 bits, and the pack
// saturates it to 0..255 as the scalar clamp does.  Luma and chroma are
// widened by zipping within 16-byte blocks, so a pixel's 16-bit lane and its
// cell's 32-bit lane stay side by side; the pack undoes the zip.  The pixels
// after the last whole step go to `tail`, the scalar kernel compiled for the
// baseline.
template <const yuv::Inverse& K, std::int32_t Half, int Rows, class Store, class Tail>
HWY_INLINE void rowsYUVToRGB(const Kel8u* const (&luma)[Rows], const Kel8u* HWY_RESTRICT u,
                             const Kel8u* HWY_RESTRICT v, const Store (&out)[Rows], int pixels, const Tail& tail)
{
    const hn::ScalableTag<std::uint8_t> du8;
    const hn::Repartition<std::uint16_t, decltype(du8)> du16;
    const hn::Repartition<std::int32_t, decltype(du8)> di32;
    const hn::Repartition<std::uint32_t, decltype(du8)> du32;
    const hn::Repartition<std::int16_t, decltype(du8)> di16;
    const hn::Rebind<std::uint8_t, decltype(du16)> du8Half;
    const int step = static_cast<int>(hn::Lanes(du8));  // pixels of a row a step, two a cell
    const auto highHalves = hn::LoadDup128(du8, kHighHalves);
    const auto zero = hn::Zero(du8);

    int x = 0;
    for (; x + step <= pixels; x += step) {
        // The step's cells in 16-bit lanes, then (U, V) pairs zipped within
        // blocks: `first` holds the cells of the pixels zipped into `first` below.
        const auto u16 = hn::PromoteTo(du16, hn::LoadU(du8Half, u + x / 2));
        const auto v16 = hn::PromoteTo(du16, hn::LoadU(du8Half, v + x / 2));
        const auto pairsFirst = hn::BitCast(di16, hn::ZipLower(du32, u16, v16));
        const auto pairsSecond = hn::BitCast(di16, hn::ZipUpper(du32, u16, v16));
        const auto shifted = [&](const auto term) {
            return hn::BitCast(di16, hn::TableLookupBytes(hn::BitCast(du8, term), highHalves));
        };
        const auto redFirst = shifted(chromaTerm<kYUVRedWeights<K, Half>>(di32, pairsFirst));
        const auto redSecond = shifted(chromaTerm<kYUVRedWeights<K, Half>>(di32, pairsSecond));
        const auto greenFirst = shifted(chromaTerm<kYUVGreenWeights<K, Half>>(di32, pairsFirst));
        const auto greenSecond = shifted(chromaTerm<kYUVGreenWeights<K, Half>>(di32, pairsSecond));
        const auto blueFirst = shifted(chromaTerm<kYUVBlueWeights<K, Half>>(di32, pairsFirst));
        const auto blueSecond = shifted(chromaTerm<kYUVBlueWeights<K, Half>>(di32, pairsSecond));

        for (int row = 0; row < Rows; ++row) {
            const auto lumaBytes = hn::LoadU(du8, luma[row] + x);
            const auto first = hn::BitCast(di16, hn::ZipLower(du16, lumaBytes, zero));
            const auto second = hn::BitCast(di16, hn::ZipUpper(du16, lumaBytes, zero));
            const auto channel = [&](const auto cellFirst, const auto cellSecond) {
                return packBytes(du8, hn::Add(first, cellFirst), hn::Add(second, cellSecond));
            };
            out[row].put(du8, x, channel(redFirst, redSecond), channel(greenFirst, greenSecond),
                         channel(blueFirst, blueSecond));
        }
    }
    if (x < pixels) tail(x);
}

// A 4:2:0 row pair: two luma rows over one chroma row, an odd last column left alone.
template <std::int32_t Half, class Store, class Tail>
HWY_INLINE void rowPairsYUV420(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v,
                               const Store top, const Store bottom, int width, const Tail& tail)
{
    const Kel8u* const luma[2] = {yTop, yBottom};
    const Store out[2] = {top, bottom};
    rowsYUVToRGB<yuv::inverse1, Half>(luma, u, v, out, width & ~1, tail);
}

// A planar 4:2:2 row: one luma row over its chroma, a last single pixel included.
template <class Store, class Tail>
HWY_INLINE void rowYUV422Planes(YUVPlaneRow<const Kel8u> src, const Store dst, int width, const Tail& tail)
{
    const Kel8u* const luma[1] = {src.y};
    const Store out[1] = {dst};
    rowsYUVToRGB<yuv::inverse1, 0>(luma, src.u, src.v, out, width, tail);
}

void rowPairYUV420ToRGB_8u_P3C3R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v, Kel8u* top,
                                 Kel8u* bottom, int width)
{
    rowPairsYUV420<0>(yTop, yBottom, u, v, Interleaved3<kRGB>{top}, Interleaved3<kRGB>{bottom}, width, [&](int x) {
        innerYUV420ToRGB_8u_P3C3R(yTop + x, yBottom + x, u + x / 2, v + x / 2, top + 3 * x, bottom + 3 * x, width - x);
    });
}

void rowPairYUV420ToRGB_8u_P3AC4R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v, Kel8u* top,
                                  Kel8u* bottom, int width)
{
    rowPairsYUV420<32768>(yTop, yBottom, u, v, ZeroAlpha4{top}, ZeroAlpha4{bottom}, width, [&](int x) {
        innerYUV420ToRGB_8u_P3AC4R(yTop + x, yBottom + x, u + x / 2, v + x / 2, top + 4 * x, bottom + 4 * x,
                                   width - x);
    });
}

void rowPairYUV420ToRGB_8u_P3R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v, PlaneStore top,
                               PlaneStore bottom, int width)
{
    rowPairsYUV420<0>(yTop, yBottom, u, v, Planes3{top}, Planes3{bottom}, width, [&](int x) {
        const PlaneStore topRest{top.red + x, top.green + x, top.blue + x};
        const PlaneStore bottomRest{bottom.red + x, bottom.green + x, bottom.blue + x};
        innerYUV420ToRGB_8u_P3R(yTop + x, yBottom + x, u + x / 2, v + x / 2, topRest, bottomRest, width - x);
    });
}

void rowPairYUV420ToBGR_8u_P3C3R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v, Kel8u* top,
                                 Kel8u* bottom, int width)
{
    rowPairsYUV420<0>(yTop, yBottom, u, v, Interleaved3<kBGR>{top}, Interleaved3<kBGR>{bottom}, width, [&](int x) {
        innerYUV420ToBGR_8u_P3C3R(yTop + x, yBottom + x, u + x / 2, v + x / 2, top + 3 * x, bottom + 3 * x, width - x);
    });
}

void rowYUV422ToRGB_8u_P3C3R(YUVPlaneRow<const Kel8u> src, Kel8u* dst, int width)
{
    rowYUV422Planes(src, Interleaved3<kRGB>{dst}, width,
                    [&](int x) { innerYUV422ToRGB_8u_P3C3R(src.from(x), dst + 3 * x, width - x); });
}

// Four-byte pixels with alpha 0; unlike 4:2:0's, this member does not round.
void rowYUV422ToRGB_8u_P3AC4R(YUVPlaneRow<const Kel8u> src, Kel8u* dst, int width)
{
    rowYUV422Planes(src, ZeroAlpha4{dst}, width,
                    [&](int x) { innerYUV422ToRGB_8u_P3AC4R(src.from(x), dst + 4 * x, width - x); });
}

void rowYUV422ToRGB_8u_P3R(YUVPlaneRow<const Kel8u> src, PlaneStore dst, int width)
{
    rowYUV422Planes(src, Planes3{dst}, width, [&](int x) {
        innerYUV422ToRGB_8u_P3R(src.from(x), PlaneStore{dst.red + x, dst.green + x, dst.blue + x}, width - x);
    });
}

// ---- forward 4:2:0 -------------------------------------------------------------------------------------

// Unsigned bytes times signed byte weights, each two adjacent products summed
// into a 16-bit lane: the x86 multiply-add of bytes, which saturates; no sum
// here comes near 16 bits' limits, so it is the exact sum.  Targets without
// it widen both and multiply.
template <class DI16, class VU8, class VI8>
HWY_INLINE hn::Vec<DI16> pairProducts(DI16 di16, VU8 bytes, VI8 weights)
{
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    (void)di16;
    return hn::Vec<DI16>{_mm512_maddubs_epi16(bytes.raw, weights.raw)};
#elif HWY_TARGET == HWY_AVX2
    (void)di16;
    return hn::Vec<DI16>{_mm256_maddubs_epi16(bytes.raw, weights.raw)};
#elif HWY_TARGET == HWY_SSE4 || HWY_TARGET == HWY_SSSE3
    (void)di16;
    return hn::Vec<DI16>{_mm_maddubs_epi16(bytes.raw, weights.raw)};
#else
    const hn::RebindToUnsigned<DI16> du16;
    const auto pairs = hn::BitCast(du16, bytes);
    const auto evenBytes = hn::BitCast(di16, hn::And(pairs, hn::Set(du16, 0xFF)));
    const auto oddBytes = hn::BitCast(di16, hn::ShiftRight<8>(pairs));
    const auto signedWeights = hn::BitCast(di16, weights);
    const auto evenWeights = hn::ShiftRight<8>(hn::ShiftLeft<8>(signedWeights));
    const auto oddWeights = hn::ShiftRight<8>(signedWeights);
    return hn::Add(hn::Mul(evenBytes, evenWeights), hn::Mul(oddBytes, oddWeights));
#endif
}

// Two signed byte weights in one 16-bit lane, the first for the lower byte.
template <class DI16>
HWY_INLINE hn::Vec<hn::Repartition<std::int8_t, DI16>> bytePair(DI16 di16, int first, int second)
{
    const hn::Repartition<std::int8_t, DI16> di8;
    return hn::BitCast(di8, hn::Set(di16, static_cast<std::int16_t>(static_cast<std::uint16_t>(
                                                static_cast<std::uint8_t>(first) |
                                                static_cast<std::uint16_t>(static_cast<std::uint8_t>(second)) << 8))));
}

// Two vectors of 32-bit values within -32768..32767 to one of 16-bit, in
// the order of the zip within 16-byte blocks that spread them (see packBytes).
template <class DI16, class VI32>
HWY_INLINE hn::Vec<DI16> packWords(DI16 di16, VI32 first, VI32 second)
{
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    (void)di16;
    return hn::Vec<DI16>{_mm512_packs_epi32(first.raw, second.raw)};
#elif HWY_TARGET == HWY_AVX2
    (void)di16;
    return hn::Vec<DI16>{_mm256_packs_epi32(first.raw, second.raw)};
#elif HWY_TARGET == HWY_SSE4 || HWY_TARGET == HWY_SSSE3
    (void)di16;
    return hn::Vec<DI16>{_mm_packs_epi32(first.raw, second.raw)};
#else
    static_assert(hn::MaxLanes(di16) <= 8, "one block");
    const hn::Half<DI16> half;
    return hn::Combine(di16, hn::DemoteTo(half, second), hn::DemoteTo(half, first));
#endif
}

// Where a row's three channel vectors come from: RGB24, or three planes.
struct InterleavedRGB {
    const Kel8u* p;
    template <class DU8, class V>
    HWY_INLINE void get(DU8 du8, int x, V& r, V& g, V& b) const
    {
        loadInterleaved3(du8, p + 3 * x, r, g, b);
    }
};
struct InterleavedBGR {
    const Kel8u* p;
    template <class DU8, class V>
    HWY_INLINE void get(DU8 du8, int x, V& r, V& g, V& b) const
    {
        loadInterleaved3(du8, p + 3 * x, b, g, r);
    }
};
struct PlanesRGB {
    PlaneSource s;
    template <class DU8, class V>
    HWY_INLINE void get(DU8 du8, int x, V& r, V& g, V& b) const
    {
        r = hn::LoadU(du8, s.red + x);
        g = hn::LoadU(du8, s.green + x);
        b = hn::LoadU(du8, s.blue + x);
    }
};

// The luma weights split into signed bytes, 256 * high + low (see lumaOfPixels):
// 19595 = 77 * 256 - 117, 38470 - 65536 = -27066 = -106 * 256 + 70, 7471 = 29 * 256 + 47.
constexpr int kRedHigh = 77, kRedLow = -117, kGreenHigh = -106, kGreenLow = 70, kBlueHigh = 29, kBlueLow = 47;
static_assert(kRedHigh * 256 + kRedLow == 19595 && kGreenHigh * 256 + kGreenLow + 65536 == 38470 &&
                  kBlueHigh * 256 + kBlueLow == 7471,
              "the luma weights");

// The forward kernels reproduce the scalar formulas
//   Y = L >> 16,  L = 19595 R + 38470 G + 7471 B,
//   U = ((dU * 32244) >> (16 + k)) + 128,  dU = ((ΣB << 16) - ΣL + 2^(15 + k) - 1) >> 16,
//   V = clamp(((dV * 57475) >> (16 + k)) + 128),  dV = ((ΣR << 16) - ΣL + 2^(15 + k) - 1) >> 16,
// Σ over a cell of 2^k pixels (k = 1 for 4:2:2, 2 for 4:2:0).  With
// S = 19595 R - 27066 G + 7471 B, so that L = 65536 G + S, every step below
// is an integer identity, so the bytes are the scalar kernel's.

// Y of a vector of pixels, as 16-bit lanes in the order of a zip within
// 16-byte blocks: `first` from the blocks' lower halves, `second` from their
// upper halves.  S = 256 * high + low, high = 77 R - 106 G + 29 B and low =
// -117 R + 70 G + 47 B, each by byte multiply-adds (both lie within +-29835,
// no saturation).  Y = G + floor(S / 65536) and floor((256 * high + low) /
// 65536) = (high + (low >> 8)) >> 8, since dropping low's last byte, a
// fraction below 1 of 256, changes no floor.  Rounded, Y = (L + 32768) >> 16
// = G + floor((256 * (high + 128) + low) / 65536): 128 more in high, which
// stays within 16 bits.
template <bool RoundedLuma = false, class DU8, class DI16>
HWY_INLINE void lumaOfPixels(DU8 du8, DI16 di16, hn::Vec<DU8> r, hn::Vec<DU8> g, hn::Vec<DU8> b,
                             hn::Vec<DI16>& first, hn::Vec<DI16>& second)
{
    const auto zero = hn::Zero(du8);
    const auto redGreenHigh = bytePair(di16, kRedHigh, kGreenHigh), redGreenLow = bytePair(di16, kRedLow, kGreenLow);
    const auto blueHigh = bytePair(di16, kBlueHigh, 0), blueLow = bytePair(di16, kBlueLow, 0);
    const hn::RebindToUnsigned<DI16> du16;
    // G is the upper byte of each (R, G) lane: a shift, not another shuffle.
    const auto luma = [&](const auto redGreen, const auto blueZero) {
        auto high = hn::Add(pairProducts(di16, redGreen, redGreenHigh), pairProducts(di16, blueZero, blueHigh));
        if constexpr (RoundedLuma) high = hn::Add(high, hn::Set(di16, 128));
        const auto low = hn::Add(pairProducts(di16, redGreen, redGreenLow), pairProducts(di16, blueZero, blueLow));
        const auto green = hn::BitCast(di16, hn::ShiftRight<8>(hn::BitCast(du16, redGreen)));
        return hn::Add(green, hn::ShiftRight<8>(hn::Add(high, hn::ShiftRight<8>(low))));
    };
    first = luma(hn::InterleaveLower(du8, r, g), hn::InterleaveLower(du8, b, zero));
    second = luma(hn::InterleaveUpper(du8, r, g), hn::InterleaveUpper(du8, b, zero));
}

// The sums of a channel over each two adjacent pixels, one 16-bit lane a pair.
template <class DI16, class VU8>
HWY_INLINE hn::Vec<DI16> pairSums(DI16 di16, VU8 channel)
{
    return pairProducts(di16, channel, bytePair(di16, 1, 1));
}

// U and V of a vector of cells (16-bit lanes) from their channel sums.
// ΣL is linear, so ΣL = 65536 ΣG + S(ΣR, ΣG, ΣB), and with
// q = (2^(15 + k) - 1 - S(ΣR, ΣG, ΣB)) >> 16 (32-bit multiply-adds of the
// sums, each at most 1020, so |S| < 2^25),
// dU = ΣB - ΣG + q and dV = ΣR - ΣG + q, within +-1100.  Then
// dU * 32244 >> (16 + k) = mulhi(dU, 32244) >> k, and as
// dV * 57475 = 65536 dV - 8061 dV, dV * 57475 >> (16 + k) =
// (dV + mulhi(dV, -8061)) >> k: floors of floors.  U stays within 16..239;
// V is left unclamped, within -50..300, for the saturating pack that follows.
template <int CellShift, class DI16>
HWY_INLINE void chromaOfCells(DI16 di16, hn::Vec<DI16> sumRed, hn::Vec<DI16> sumGreen, hn::Vec<DI16> sumBlue,
                              hn::Vec<DI16>& cellU, hn::Vec<DI16>& cellV)
{
    const hn::Repartition<std::int32_t, DI16> di32;
    // 2^(15 + k) - 1 - S as two multiply-adds over (ΣR, ΣG) and (ΣB, 0) onto the constant.
    const auto redGreenWeights = hn::BitCast(di16, hn::Set(di32, static_cast<std::int32_t>(
                                                                     static_cast<std::uint16_t>(-19595) |
                                                                     static_cast<std::uint32_t>(27066) << 16)));
    const auto blueWeights = hn::BitCast(di16, hn::Set(di32, static_cast<std::int32_t>(static_cast<std::uint16_t>(-7471))));
    const auto roundUp = hn::Set(di32, (1 << (15 + CellShift)) - 1);
    const auto cellTerm = [&](const auto redGreen, const auto blueZero) {
        auto other = hn::Zero(di32), blueOther = hn::Zero(di32);
        const auto sum = hn::ReorderWidenMulAccumulate(di32, redGreen, redGreenWeights, roundUp, other);
        const auto blue = hn::ReorderWidenMulAccumulate(di32, blueZero, blueWeights, hn::Zero(di32), blueOther);
        return hn::ShiftRight<16>(hn::Add(hn::RearrangeToOddPlusEven(sum, other),
                                          hn::RearrangeToOddPlusEven(blue, blueOther)));
    };
    const auto zero = hn::Zero(di16);
    const auto q = packWords(di16,
                             cellTerm(hn::BitCast(di16, hn::ZipLower(di32, sumRed, sumGreen)),
                                      hn::BitCast(di16, hn::ZipLower(di32, sumBlue, zero))),
                             cellTerm(hn::BitCast(di16, hn::ZipUpper(di32, sumRed, sumGreen)),
                                      hn::BitCast(di16, hn::ZipUpper(di32, sumBlue, zero))));
    const auto qLessGreen = hn::Sub(q, sumGreen);
    const auto dU = hn::Add(sumBlue, qLessGreen), dV = hn::Add(sumRed, qLessGreen);
    const auto half = hn::Set(di16, 128);
    cellU = hn::Add(hn::ShiftRight<CellShift>(hn::MulHigh(dU, hn::Set(di16, 32244))), half);
    cellV = hn::Add(hn::ShiftRight<CellShift>(hn::Add(dV, hn::MulHigh(dV, hn::Set(di16, -8061)))), half);
}

// Rows in pairs, a vector of pixels a step in each row: each row's luma
// (lumaOfPixels), packed back to pixel order; the cells' channel sums, both
// rows' pair sums added; their U and V (chromaOfCells), saturated to bytes as
// the scalar clamp.  The cells after the last whole step go to `tail`, the
// scalar kernel compiled for the baseline.
template <bool RoundedLuma = false, class Source, class Tail>
HWY_INLINE void rowPairsRGBToYUV420(const Source top, const Source bottom, Kel8u* HWY_RESTRICT yTop,
                                    Kel8u* HWY_RESTRICT yBottom, Kel8u* HWY_RESTRICT u, Kel8u* HWY_RESTRICT v,
                                    int width, const Tail& tail)
{
    const hn::ScalableTag<std::uint8_t> du8;
    const hn::Repartition<std::int16_t, decltype(du8)> di16;
    const hn::Rebind<std::uint8_t, decltype(di16)> du8Half;
    const int step = static_cast<int>(hn::Lanes(du8));  // pixels of a row a step, two a cell

    const int evenWidth = width & ~1;
    int x = 0;
    for (; x + step <= evenWidth; x += step) {
        hn::Vec<decltype(di16)> sumRed, sumGreen, sumBlue;
        for (int row = 0; row < 2; ++row) {
            hn::Vec<decltype(du8)> r, g, b;
            (row == 0 ? top : bottom).get(du8, x, r, g, b);
            hn::Vec<decltype(di16)> first, second;
            lumaOfPixels<RoundedLuma>(du8, di16, r, g, b, first, second);
            hn::StoreU(packBytes(du8, first, second), du8, (row == 0 ? yTop : yBottom) + x);
            const auto red = pairSums(di16, r), green = pairSums(di16, g), blue = pairSums(di16, b);
            sumRed = row == 0 ? red : hn::Add(sumRed, red);
            sumGreen = row == 0 ? green : hn::Add(sumGreen, green);
            sumBlue = row == 0 ? blue : hn::Add(sumBlue, blue);
        }
        hn::Vec<decltype(di16)> cellU, cellV;
        chromaOfCells<2>(di16, sumRed, sumGreen, sumBlue, cellU, cellV);
        hn::StoreU(hn::DemoteTo(du8Half, cellU), du8Half, u + x / 2);
        hn::StoreU(hn::DemoteTo(du8Half, cellV), du8Half, v + x / 2);
    }
    if (x < evenWidth) tail(x);
}

void rowPairRGBToYUV420_8u_C3P3R(const Kel8u* top, const Kel8u* bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* u,
                                 Kel8u* v, int width)
{
    rowPairsRGBToYUV420(InterleavedRGB{top}, InterleavedRGB{bottom}, yTop, yBottom, u, v, width, [&](int x) {
        innerRGBToYUV420_8u_C3P3R(top + 3 * x, bottom + 3 * x, yTop + x, yBottom + x, u + x / 2, v + x / 2, width - x);
    });
}

void rowPairBGRToYUV420RoundedLuma_8u_C3P3R(const Kel8u* top, const Kel8u* bottom, Kel8u* yTop, Kel8u* yBottom,
                                            Kel8u* u, Kel8u* v, int width)
{
    rowPairsRGBToYUV420<true>(InterleavedBGR{top}, InterleavedBGR{bottom}, yTop, yBottom, u, v, width, [&](int x) {
        innerBGRToYUV420RoundedLuma_8u_C3P3R(top + 3 * x, bottom + 3 * x, yTop + x, yBottom + x, u + x / 2, v + x / 2,
                                             width - x);
    });
}

void rowPairRGBToYUV420_8u_P3R(PlaneSource top, PlaneSource bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* u, Kel8u* v,
                               int width)
{
    rowPairsRGBToYUV420(PlanesRGB{top}, PlanesRGB{bottom}, yTop, yBottom, u, v, width, [&](int x) {
        const PlaneSource topRest{top.red + x, top.green + x, top.blue + x};
        const PlaneSource bottomRest{bottom.red + x, bottom.green + x, bottom.blue + x};
        innerRGBToYUV420_8u_P3R(topRest, bottomRest, yTop + x, yBottom + x, u + x / 2, v + x / 2, width - x);
    });
}

// ---- 4:2:2 in pixel order (Y0 U Y1 V), and forward 4:2:2 to planes -------------------------------------

// Pixel-order bytes, two a pixel, regrouped by 16-byte blocks between the
// layout of memory (`first` holds the lower half of the pixels) and the
// layout of a zip within blocks (block j of `first` holds the lower half of
// the pixels of block j of the pack, `second` the upper half), which
// packBytes and lumaOfPixels use.  One-block targets need nothing.
template <class V>
HWY_INLINE void splitBlocks(V& first, V& second)
{
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    const __m512i a = first.raw, b = second.raw;
    first.raw = _mm512_shuffle_i64x2(a, b, 0x88);   // blocks a0 a2 b0 b2
    second.raw = _mm512_shuffle_i64x2(a, b, 0xDD);  // blocks a1 a3 b1 b3
#elif HWY_TARGET == HWY_AVX2
    const __m256i a = first.raw, b = second.raw;
    first.raw = _mm256_permute2x128_si256(a, b, 0x20);   // blocks a0 b0
    second.raw = _mm256_permute2x128_si256(a, b, 0x31);  // blocks a1 b1
#else
    static_assert(sizeof(first) <= 16, "one block");
    (void)first;
    (void)second;
#endif
}

template <class V>
HWY_INLINE void joinBlocks(V& first, V& second)
{
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    const __m512i a = first.raw, b = second.raw;
    first.raw = _mm512_permutex2var_epi64(a, _mm512_setr_epi64(0, 1, 8, 9, 2, 3, 10, 11), b);   // a0 b0 a1 b1
    second.raw = _mm512_permutex2var_epi64(a, _mm512_setr_epi64(4, 5, 12, 13, 6, 7, 14, 15), b);  // a2 b2 a3 b3
#else
    splitBlocks(first, second);  // its own inverse on two blocks or one
#endif
}

// Byte indices that copy a pair's U (or V) byte into both its pixels' 16-bit
// lanes, with a zero byte above.
alignas(16) constexpr std::uint8_t kSpreadU[16] = {1, 0x80, 1, 0x80, 5, 0x80, 5, 0x80, 9, 0x80, 9, 0x80, 13, 0x80, 13, 0x80};
alignas(16) constexpr std::uint8_t kSpreadV[16] = {3, 0x80, 3, 0x80, 7, 0x80, 7, 0x80, 11, 0x80, 11, 0x80, 15, 0x80, 15, 0x80};

// A row of pixel pairs to RGB24, a vector of pixels a step.  The scalar
// kernel gives each pixel clamp((65536 * Y + C) >> 16), C the pair's chroma
// term with no rounding half, and as 65536 * Y is a whole multiple of 65536
// that is clamp(Y + (C >> 16)).  With du = U - 128 and dv = V - 128, and the
// weights above 16 bits split into multiples of 65536 and a rest,
//   red:   C = vToR * dv = 65536 dv + rest * dv, C >> 16 = dv + mulhi(dv, rest);
//   blue:  C = uToB * du = 131072 du + rest * du, C >> 16 = 2 du + mulhi(du, rest);
//   green: C = -uToG * du - vToG * dv = -65536 dv + (-uToG * du + rest * dv),
//          C >> 16 = -dv + ((-uToG * du + rest * dv) >> 16),
// mulhi being the floor of the product / 65536, as the scalar shift is.  Red
// and blue work in the pixels' 16-bit lanes, U and V copied there from their
// pair; green's sum of two products is a 32-bit multiply-add a pair, its
// upper 16-bit half (the >> 16, within +-100) copied to the pair's pixels.  The sums lie within
// -300..560 and the pack saturates them as the scalar clamp.  A pair's four
// bytes are one 32-bit lane, its Y bytes, masked, its pixels' 16-bit lanes.
// A last single pixel and the pairs after the last whole step go to `tail`,
// the scalar kernel compiled for the baseline.
template <const yuv::Inverse& K, class Tail>
HWY_INLINE void rowYUV422ToRGB(const Kel8u* HWY_RESTRICT src, Kel8u* HWY_RESTRICT dst, int width, const Tail& tail)
{
    constexpr std::int32_t redRest = K.vToR - 65536, blueRest = K.uToB - 2 * 65536, greenRest = 65536 - K.vToG;
    static_assert(redRest >= 0 && redRest < 32768 && blueRest >= 0 && blueRest < 32768 && greenRest >= 0 &&
                      greenRest < 32768 && K.uToG < 32768,
                  "each rest is a 16-bit weight");
    const hn::ScalableTag<std::uint8_t> du8;
    const hn::Repartition<std::uint16_t, decltype(du8)> du16;
    const hn::Repartition<std::int16_t, decltype(du8)> di16;
    const hn::Repartition<std::int32_t, decltype(du8)> di32;
    const hn::Repartition<std::uint32_t, decltype(du8)> du32;
    const int step = static_cast<int>(hn::Lanes(du8));  // pixels a step, in two vectors of source bytes
    const auto spreadU = hn::LoadDup128(du8, kSpreadU), spreadV = hn::LoadDup128(du8, kSpreadV);
    const auto highHalves = hn::LoadDup128(du8, kHighHalves);
    const auto centre = hn::Set(di16, 128);
    const auto greenWeights = hn::BitCast(di16, hn::Set(di32, weightPair(-K.uToG, greenRest)));

    const int evenWidth = width & ~1;
    int x = 0;
    for (; x + step <= evenWidth; x += step) {
        auto first = hn::LoadU(du8, src + 2 * x), second = hn::LoadU(du8, src + 2 * x + step);
        splitBlocks(first, second);
        const auto pixels = [&](const auto bytes, auto& red, auto& green, auto& blue) {
            const auto luma = hn::BitCast(di16, hn::And(hn::BitCast(du16, bytes), hn::Set(du16, 0xFF)));
            const auto du = hn::Sub(hn::BitCast(di16, hn::TableLookupBytesOr0(bytes, spreadU)), centre);
            const auto dv = hn::Sub(hn::BitCast(di16, hn::TableLookupBytesOr0(bytes, spreadV)), centre);
            red = hn::Add(hn::Add(luma, dv), hn::MulHigh(dv, hn::Set(di16, redRest)));
            blue = hn::Add(hn::Add(luma, hn::Add(du, du)), hn::MulHigh(du, hn::Set(di16, blueRest)));
            const auto pairs =
                hn::Sub(hn::BitCast(di16, hn::And(hn::ShiftRight<8>(hn::BitCast(du32, bytes)), hn::Set(du32, 0xFF00FF))),
                        centre);
            auto other = hn::Zero(di32);
            const auto sum = hn::ReorderWidenMulAccumulate(di32, pairs, greenWeights, hn::Zero(di32), other);
            const auto greenSum = hn::RearrangeToOddPlusEven(sum, other);
            green = hn::Add(hn::Sub(luma, dv),
                            hn::BitCast(di16, hn::TableLookupBytes(hn::BitCast(du8, greenSum), highHalves)));
        };
        hn::Vec<decltype(di16)> redFirst, greenFirst, blueFirst, redSecond, greenSecond, blueSecond;
        pixels(first, redFirst, greenFirst, blueFirst);
        pixels(second, redSecond, greenSecond, blueSecond);
        storeInterleaved3(du8, packBytes(du8, redFirst, redSecond), packBytes(du8, greenFirst, greenSecond),
                          packBytes(du8, blueFirst, blueSecond), dst + 3 * x);
    }
    if (x < width) tail(x);
}

// Where a 4:2:2 row's Y (two vectors of 16-bit lanes, in the order of a zip
// within 16-byte blocks, as lumaOfPixels gives them) and its pairs' U and V
// (16-bit lanes in pair order, V unclamped) go: pixel pairs or three planes.
// A pixel's chroma byte (U for the first of a pair, V for the second) goes
// above its Y in a 16-bit lane, V saturated first as the scalar clamp;
// zipping U and V of the pairs within blocks gives the pixels the order of Y.
struct PixelPairs {
    Kel8u* p;
    template <class DU8, class VI16>
    HWY_INLINE void put(DU8 du8, int x, VI16 lumaFirst, VI16 lumaSecond, VI16 cellU, VI16 cellV) const
    {
        const hn::Repartition<std::uint16_t, DU8> du16;
        const hn::Repartition<std::int16_t, DU8> di16;
        const hn::Repartition<std::int32_t, DU8> di32;
        const int step = static_cast<int>(hn::Lanes(du8));
        cellV = hn::Min(hn::Max(cellV, hn::Zero(di16)), hn::Set(di16, 255));
        const auto pair = [&](const auto luma, const auto chroma) {
            return hn::BitCast(du8, hn::Or(hn::BitCast(du16, luma), hn::ShiftLeft<8>(hn::BitCast(du16, chroma))));
        };
        auto first = pair(lumaFirst, hn::ZipLower(di32, cellU, cellV));
        auto second = pair(lumaSecond, hn::ZipUpper(di32, cellU, cellV));
        joinBlocks(first, second);
        hn::StoreU(first, du8, p + 2 * x);
        hn::StoreU(second, du8, p + 2 * x + step);
    }
};
// Y packed back to pixel order, U and V saturated to bytes (V as the scalar
// clamp; U lies within 16..239).
struct YUVPlanes {
    YUVPlaneRow<Kel8u> s;
    template <class DU8, class VI16>
    HWY_INLINE void put(DU8 du8, int x, VI16 lumaFirst, VI16 lumaSecond, VI16 cellU, VI16 cellV) const
    {
        const hn::Rebind<std::uint8_t, hn::DFromV<VI16>> du8Half;
        hn::StoreU(packBytes(du8, lumaFirst, lumaSecond), du8, s.y + x);
        hn::StoreU(hn::DemoteTo(du8Half, cellU), du8Half, s.u + x / 2);
        hn::StoreU(hn::DemoteTo(du8Half, cellV), du8Half, s.v + x / 2);
    }
};

// A row of RGB to 4:2:2, a vector of pixels a step: each pixel's Y
// (lumaOfPixels) and each pair's U and V (chromaOfCells over the pair's
// sums), the formulas with k = 1.  A last single pixel and the pairs after
// the last whole step go to `tail`, the scalar kernel compiled for the
// baseline.
template <class Source, class Store, class Tail>
HWY_INLINE void rowRGBToYUV422(const Source source, const Store out, int width, const Tail& tail)
{
    const hn::ScalableTag<std::uint8_t> du8;
    const hn::Repartition<std::int16_t, decltype(du8)> di16;
    const int step = static_cast<int>(hn::Lanes(du8));  // pixels a step

    const int evenWidth = width & ~1;
    int x = 0;
    for (; x + step <= evenWidth; x += step) {
        hn::Vec<decltype(du8)> r, g, b;
        source.get(du8, x, r, g, b);
        hn::Vec<decltype(di16)> lumaFirst, lumaSecond, cellU, cellV;
        lumaOfPixels(du8, di16, r, g, b, lumaFirst, lumaSecond);
        chromaOfCells<1>(di16, pairSums(di16, r), pairSums(di16, g), pairSums(di16, b), cellU, cellV);
        out.put(du8, x, lumaFirst, lumaSecond, cellU, cellV);
    }
    if (x < width) tail(x);
}

void rowYUV422ToRGB_8u_C2C3R(const Kel8u* src, Kel8u* dst, int width)
{
    rowYUV422ToRGB<yuv::inverse1>(src, dst, width,
                                  [&](int x) { innerYUV422ToRGB_8u_C2C3R(src + 2 * x, dst + 3 * x, width - x); });
}

void rowRGBToYUV422_8u_C3C2R(const Kel8u* src, Kel8u* dst, int width)
{
    rowRGBToYUV422(InterleavedRGB{src}, PixelPairs{dst}, width,
                   [&](int x) { innerRGBToYUV422_8u_C3C2R(src + 3 * x, dst + 2 * x, width - x); });
}

void rowRGBToYUV422_8u_C3P3R(const Kel8u* src, YUVPlaneRow<Kel8u> dst, int width)
{
    rowRGBToYUV422(InterleavedRGB{src}, YUVPlanes{dst}, width,
                   [&](int x) { innerRGBToYUV422_8u_C3P3R(src + 3 * x, dst.from(x), width - x); });
}

void rowRGBToYUV422_8u_P3R(PlaneSource src, YUVPlaneRow<Kel8u> dst, int width)
{
    rowRGBToYUV422(PlanesRGB{src}, YUVPlanes{dst}, width, [&](int x) {
        innerRGBToYUV422_8u_P3R(PlaneSource{src.red + x, src.green + x, src.blue + x}, dst.from(x), width - x);
    });
}

} // namespace HWY_NAMESPACE
} // namespace kel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kel {

HWY_EXPORT(rowPairYUV420ToRGB_8u_P3C3R);
HWY_EXPORT(rowPairYUV420ToRGB_8u_P3AC4R);
HWY_EXPORT(rowPairYUV420ToRGB_8u_P3R);
HWY_EXPORT(rowPairYUV420ToBGR_8u_P3C3R);
HWY_EXPORT(rowPairRGBToYUV420_8u_C3P3R);
HWY_EXPORT(rowPairBGRToYUV420RoundedLuma_8u_C3P3R);
HWY_EXPORT(rowPairRGBToYUV420_8u_P3R);
HWY_EXPORT(rowYUV422ToRGB_8u_C2C3R);
HWY_EXPORT(rowRGBToYUV422_8u_C3C2R);
HWY_EXPORT(rowYUV422ToRGB_8u_P3C3R);
HWY_EXPORT(rowYUV422ToRGB_8u_P3AC4R);
HWY_EXPORT(rowYUV422ToRGB_8u_P3R);
HWY_EXPORT(rowRGBToYUV422_8u_C3P3R);
HWY_EXPORT(rowRGBToYUV422_8u_P3R);

RowPairYUV420 chooseYUV420ToRGB_8u_P3C3R()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowPairYUV420ToRGB_8u_P3C3R);
}

RowPairYUV420 chooseYUV420ToRGB_8u_P3AC4R()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowPairYUV420ToRGB_8u_P3AC4R);
}

RowPairYUV420Planes chooseYUV420ToRGB_8u_P3R()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowPairYUV420ToRGB_8u_P3R);
}

RowPairYUV420 chooseYUV420ToBGR_8u_P3C3R()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowPairYUV420ToBGR_8u_P3C3R);
}

RowPairRGBToYUV420 chooseRGBToYUV420_8u_C3P3R()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowPairRGBToYUV420_8u_C3P3R);
}

RowPairRGBToYUV420 chooseBGRToYUV420RoundedLuma_8u_C3P3R()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowPairBGRToYUV420RoundedLuma_8u_C3P3R);
}

RowPairRGBToYUV420Planes chooseRGBToYUV420_8u_P3R()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowPairRGBToYUV420_8u_P3R);
}

Row422 chooseYUV422ToRGB_8u_C2C3R()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowYUV422ToRGB_8u_C2C3R);
}

Row422 chooseRGBToYUV422_8u_C3C2R()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowRGBToYUV422_8u_C3C2R);
}

Row422ToPixels chooseYUV422ToRGB_8u_P3C3R()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowYUV422ToRGB_8u_P3C3R);
}

Row422ToPixels chooseYUV422ToRGB_8u_P3AC4R()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowYUV422ToRGB_8u_P3AC4R);
}

Row422ToPlanes chooseYUV422ToRGB_8u_P3R()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowYUV422ToRGB_8u_P3R);
}

RowPixelsTo422 chooseRGBToYUV422_8u_C3P3R()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowRGBToYUV422_8u_C3P3R);
}

RowPlanesTo422 chooseRGBToYUV422_8u_P3R()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowRGBToYUV422_8u_P3R);
}

} // namespace kel
#endif // HWY_ONCE

#else // a build without SIMD: the scalar kernels alone

namespace kel {

RowPairYUV420 chooseYUV420ToRGB_8u_P3C3R()
{
    return innerYUV420ToRGB_8u_P3C3R;
}

RowPairYUV420 chooseYUV420ToRGB_8u_P3AC4R()
{
    return innerYUV420ToRGB_8u_P3AC4R;
}

RowPairYUV420Planes chooseYUV420ToRGB_8u_P3R()
{
    return innerYUV420ToRGB_8u_P3R;
}

RowPairYUV420 chooseYUV420ToBGR_8u_P3C3R()
{
    return innerYUV420ToBGR_8u_P3C3R;
}

RowPairRGBToYUV420 chooseRGBToYUV420_8u_C3P3R()
{
    return innerRGBToYUV420_8u_C3P3R;
}

RowPairRGBToYUV420 chooseBGRToYUV420RoundedLuma_8u_C3P3R()
{
    return innerBGRToYUV420RoundedLuma_8u_C3P3R;
}

RowPairRGBToYUV420Planes chooseRGBToYUV420_8u_P3R()
{
    return innerRGBToYUV420_8u_P3R;
}

Row422 chooseYUV422ToRGB_8u_C2C3R()
{
    return innerYUV422ToRGB_8u_C2C3R;
}

Row422 chooseRGBToYUV422_8u_C3C2R()
{
    return innerRGBToYUV422_8u_C3C2R;
}

Row422ToPixels chooseYUV422ToRGB_8u_P3C3R()
{
    return innerYUV422ToRGB_8u_P3C3R;
}

Row422ToPixels chooseYUV422ToRGB_8u_P3AC4R()
{
    return innerYUV422ToRGB_8u_P3AC4R;
}

Row422ToPlanes chooseYUV422ToRGB_8u_P3R()
{
    return innerYUV422ToRGB_8u_P3R;
}

RowPixelsTo422 chooseRGBToYUV422_8u_C3P3R()
{
    return innerRGBToYUV422_8u_C3P3R;
}

RowPlanesTo422 chooseRGBToYUV422_8u_P3R()
{
    return innerRGBToYUV422_8u_P3R;
}

} // namespace kel

#endif // KELCC_SIMD

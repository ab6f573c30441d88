// Sub-sampled YCbCr to RGB and BGR on whole vectors: the 4:2:0 and 4:2:2 pixel-order
// members, compiled once for every SIMD target (foreach_target.h includes this file once a target).
#include "ycbcr05simd.h"

#include <cstddef>
#include <cstdint>

#include "cbcrpx.h"
#include "simd.h"

#if KELCC_SIMD

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "ycbcr05simd.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include "simdops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// Rows in pairs, a vector of luma bytes a step in each row: the step's cells
// (one Cb and Cr each, a 32-bit lane a cell) give three chroma terms per cell,
// shared by the cell's four pixels; each row then adds its own luma terms,
// and the three channels are stored interleaved in the member's order.  Luma
// is widened by zipping within 16-byte blocks, chroma likewise, so a pixel's
// 16-bit lane and its cell's 32-bit lane stay side by side; the pack undoes
// the zip.  Every pixel gets the scalar kernel's bytes by the same formula,
//   channel = clamp((luma * Y + weights . (Cb, Cr) + offset) >> 16),
// with the same floor and the same clamp (see chromaTerm and channelSum).
// The cells after the last whole step go to the scalar kernel Tail itself,
// compiled for the baseline.
template <const InverseYCbCr& K, ChannelOrder O, RowPair420 Tail>
HWY_INLINE void rowPairs420(const Kel8u* HWY_RESTRICT yTop, const Kel8u* HWY_RESTRICT yBottom,
                            const Kel8u* HWY_RESTRICT cb, const Kel8u* HWY_RESTRICT cr, Kel8u* top, Kel8u* bottom,
                            int width)
{
    static_assert((O.r == 0 && O.b == 2) || (O.r == 2 && O.b == 0), "RGB or BGR");
    const hn::ScalableTag<std::uint8_t> du8;
    const hn::Repartition<std::uint16_t, decltype(du8)> du16;
    const hn::Repartition<std::int32_t, decltype(du8)> di32;
    const hn::Repartition<std::uint32_t, decltype(du8)> du32;
    const hn::Repartition<std::int16_t, decltype(du8)> di16;
    const hn::Rebind<std::uint8_t, decltype(du16)> du8Half;
    const int step = static_cast<int>(hn::Lanes(du8));  // pixels of a row a step, two a cell
    const auto lowHalves = hn::LoadDup128(du8, kLowHalves);
    const auto highHalves = hn::LoadDup128(du8, kHighHalves);
    const auto zero = hn::Zero(du8);

    const int evenWidth = width & ~1;
    int x = 0;
    for (; x + step <= evenWidth; x += step) {
        // The step's cells in 16-bit lanes, then (Cb, Cr) pairs zipped within
        // blocks: `first` holds the cells of the pixels zipped into `first` below.
        const auto cb16 = hn::PromoteTo(du16, hn::LoadU(du8Half, cb + x / 2));
        const auto cr16 = hn::PromoteTo(du16, hn::LoadU(du8Half, cr + x / 2));
        const auto pairsFirst = hn::BitCast(di16, hn::ZipLower(du32, cb16, cr16));
        const auto pairsSecond = hn::BitCast(di16, hn::ZipUpper(du32, cb16, cr16));
        const auto cell = [&](const auto term) { return cellTerm(di16, term, lowHalves, highHalves); };
        const auto redFirst = cell(chromaTerm<kRedWeights<K>>(di32, pairsFirst));
        const auto redSecond = cell(chromaTerm<kRedWeights<K>>(di32, pairsSecond));
        const auto greenFirst = cell(chromaTerm<kGreenWeights<K>>(di32, pairsFirst));
        const auto greenSecond = cell(chromaTerm<kGreenWeights<K>>(di32, pairsSecond));
        const auto blueFirst = cell(chromaTerm<kBlueWeights<K>>(di32, pairsFirst));
        const auto blueSecond = cell(chromaTerm<kBlueWeights<K>>(di32, pairsSecond));

        for (int row = 0; row < 2; ++row) {
            const Kel8u* luma = (row == 0 ? yTop : yBottom) + x;
            Kel8u* dst = (row == 0 ? top : bottom) + 3 * x;
            const auto lumaBytes = hn::LoadU(du8, luma);
            const auto first = lumaTerm<K.luma>(du16, hn::ZipLower(du16, lumaBytes, zero));
            const auto second = lumaTerm<K.luma>(du16, hn::ZipUpper(du16, lumaBytes, zero));
            const auto channel = [&](const auto& cellFirst, const auto& cellSecond) {
                return packBytes(du8, channelSum(di16, first, cellFirst), channelSum(di16, second, cellSecond));
            };
            const auto red = channel(redFirst, redSecond);
            const auto green = channel(greenFirst, greenSecond);
            const auto blue = channel(blueFirst, blueSecond);
            if constexpr (O.r == 0) storeInterleaved3(du8, red, green, blue, dst);
            else storeInterleaved3(du8, blue, green, red, dst);
        }
    }
    if (x < evenWidth) Tail(yTop + x, yBottom + x, cb + x / 2, cr + x / 2, top + 3 * x, bottom + 3 * x, width - x);
}

void rowPairYCbCr420ToRGB(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* cb, const Kel8u* cr, Kel8u* top,
                          Kel8u* bottom, int width)
{
    rowPairs420<inverseT, kRGB, innerYCbCr420ToRGB_8u_P3C3R>(yTop, yBottom, cb, cr, top, bottom, width);
}

void rowPairYCbCr420ToBGR(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* cb, const Kel8u* cr, Kel8u* top,
                          Kel8u* bottom, int width)
{
    rowPairs420<inverseU, kBGR, innerYCbCr420ToBGR_8u_P3C3R>(yTop, yBottom, cb, cr, top, bottom, width);
}

// ---- 4:2:2 pixel order ---------------------------------------------------------------------------

// A 16-bit multiply-add into 32-bit lanes: sum + a0 * b0 + a1 * b1 in each
// lane, from the lane's two 16-bit halves.  AVX3_DL does it in one AVX-512
// VNNI instruction.  Highway's AVX3_DL target enables only the VEX form of
// VNNI, which processors with AVX-512 VNNI may lack (Zen 4 does), so the
// EVEX form on 512-bit registers is written out here.
template <class D32, class V16>
HWY_INLINE hn::Vec<D32> mulAdd(D32 d32, V16 a, V16 b, hn::Vec<D32> sum)
{
#if HWY_TARGET == HWY_AVX3_DL
    (void)d32;
    __m512i acc = sum.raw;
    asm("vpdpwssd %2, %1, %0" : "+v"(acc) : "v"(a.raw), "v"(b.raw));
    return hn::Vec<D32>{acc};
#else
    auto other = hn::Zero(d32);
    const auto sum0 = hn::ReorderWidenMulAccumulate(d32, a, b, sum, other);
    return hn::RearrangeToOddPlusEven(sum0, other);
#endif
}

// One channel's weights for the chroma pairs of a 4:2:2 pixel-order member:
// the pair's first chroma byte (in lane order) weighted by the low half of a
// 32-bit lane.  The high parts are scaled by 2^9 for samples scaled by 2^7,
// so that their products land 16 bits up: h * 2^9 * (s * 2^7) = h * s * 2^16.
struct PairWeights {
    std::int32_t low, high, offset;
};
template <const ChromaWeights& W, bool CrFirst>
constexpr PairWeights pairWeights()
{
    const std::int32_t first = CrFirst ? W.cr : W.cb, second = CrFirst ? W.cb : W.cr;
    static_assert(highPart(CrFirst ? W.cr : W.cb) * 512 >= -32768 && highPart(CrFirst ? W.cr : W.cb) * 512 < 32768 &&
                      highPart(CrFirst ? W.cb : W.cr) * 512 >= -32768 && highPart(CrFirst ? W.cb : W.cr) * 512 < 32768,
                  "the scaled high parts fit 16 bits");
    return {weightPair(lowPart(first), lowPart(second)), weightPair(highPart(first) * 512, highPart(second) * 512),
            W.offset};
}

// The luma weight as one 16-bit multiplier: luma / 4 on four times the sample
// when luma is a multiple of 4 below 2^17 (76284 = 4 * 19071), else
// luma - 65536 on the sample, the 65536 * Y part added to the upper half later.
template <std::int32_t Luma>
struct LumaSplit {
    static_assert(Luma >= 65536 && Luma < 2 * 65536, "the luma weight is 65536 plus a 16-bit rest");
    static constexpr bool kQuarter = Luma % 4 == 0 && Luma / 4 < 32768;
    static constexpr std::int32_t kWeight = kQuarter ? Luma / 4 : Luma - 65536;
    static_assert(kWeight < 32768, "one 16-bit multiplier");
};

// One channel of a vector of pixels, 16-bit results in pixel order.  Cell c
// (32-bit lane c) holds the pixels 2c and 2c + 1 in its 16-bit halves; its
// chroma term T = offset + cb * Cb + cr * Cr comes from two multiply-adds, the
// low parts on the pairs and the high parts on the pairs scaled by 2^7; then
// each pixel's full sum S = T + luma * Y, and S >> 16 is S's upper half.
// Every product is below 2^25 in size and every sum inside 32 bits, so S is
// the scalar kernel's sum exactly, and the upper half its floor shift; the
// result lies within -600..600 and the pack saturates it as the scalar clamp.
template <const PairWeights& P, std::int32_t Luma, class DI32, class VI16>
HWY_INLINE VI16 channel422(DI32 di32, VI16 pairs, VI16 pairsScaled, VI16 lumaLanes, VI16 lumaWords)
{
    const hn::Repartition<std::int16_t, DI32> di16;
    const hn::Repartition<std::uint32_t, DI32> du32;
    using Split = LumaSplit<Luma>;
    const auto term = mulAdd(di32, pairsScaled, hn::BitCast(di16, hn::Set(di32, P.high)),
                             mulAdd(di32, pairs, hn::BitCast(di16, hn::Set(di32, P.low)), hn::Set(di32, P.offset)));
    const auto even = mulAdd(di32, lumaLanes, hn::BitCast(di16, hn::Set(di32, weightPair(Split::kWeight, 0))), term);
    const auto odd = mulAdd(di32, lumaLanes, hn::BitCast(di16, hn::Set(di32, weightPair(0, Split::kWeight))), term);
    const auto evenHigh = hn::BitCast(di16, hn::ShiftRight<16>(hn::BitCast(du32, even)));
    const auto sums = hn::OddEven(hn::BitCast(di16, odd), evenHigh);
    if constexpr (Split::kQuarter) return sums;
    else return hn::Add(sums, lumaWords);  // 65536 * Y adds Y to the upper half, modulo 2^16
}

// Channels packed from pixel vectors of two source vectors come out in the
// order of the x86 pack, which works within 16-byte blocks: block k holds
// the first source vector's block k, then the second's.  On AVX2 the
// three-byte members load the source's 16-byte pieces crosswise, so that the
// pack gives pixel order; elsewhere the stores put the pixels in place.
#if HWY_TARGET == HWY_AVX2
template <int Pitch>
constexpr bool kCrosswiseLoads = Pitch == 3;
#else
template <int Pitch>
constexpr bool kCrosswiseLoads = false;
#endif

#if HWY_TARGET == HWY_AVX3_DL
// RGB24 from channels in pack order (8-pixel group g of 64 at lane
// 16 * (g % 4) + 8 * (g / 4)), by VBMI byte permutes as storeInterleaved3.
constexpr int packedLane(int pixel)
{
    const int group = pixel / 8;
    return 16 * (group % 4) + 8 * (group / 4) + pixel % 8;
}
constexpr InterleaveTables makePackedInterleaveTables()
{
    InterleaveTables t{};
    for (int k = 0; k < 3; ++k) {
        for (int j = 0; j < 64; ++j) {
            const int at = 64 * k + j, lane = packedLane(at / 3), channel = at % 3;
            t.pick[k][j] = static_cast<std::uint8_t>(channel == 1 ? 64 + lane : lane);
            t.merge[k][j] = static_cast<std::uint8_t>(channel == 2 ? 64 + lane : j);
        }
    }
    return t;
}
alignas(64) constexpr InterleaveTables kPackedInterleave = makePackedInterleaveTables();
#endif

// Three channel vectors in pack order (pixel order where the loads were
// crosswise or the vector is one block) stored as three-byte pixels.
template <class DU8>
HWY_INLINE void storePacked3(DU8 du8, hn::Vec<DU8> v0, hn::Vec<DU8> v1, hn::Vec<DU8> v2, Kel8u* dst)
{
#if HWY_TARGET == HWY_AVX3_DL
    (void)du8;
    for (int k = 0; k < 3; ++k) {
        const __m512i pick = _mm512_load_si512(kPackedInterleave.pick[k]);
        const __m512i merge = _mm512_load_si512(kPackedInterleave.merge[k]);
        const __m512i firstTwo = _mm512_permutex2var_epi8(v0.raw, pick, v1.raw);
        _mm512_storeu_si512(dst + 64 * k, _mm512_permutex2var_epi8(firstTwo, merge, v2.raw));
    }
#elif HWY_TARGET == HWY_AVX3
    // Groups of 8 pixels (64-bit lanes) back in order.
    const __m512i order = _mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7);
    storeInterleaved3(du8, hn::Vec<DU8>{_mm512_permutexvar_epi64(order, v0.raw)},
                      hn::Vec<DU8>{_mm512_permutexvar_epi64(order, v1.raw)},
                      hn::Vec<DU8>{_mm512_permutexvar_epi64(order, v2.raw)}, dst);
#else
    storeInterleaved3(du8, v0, v1, v2, dst);
#endif
}

// B, G, R and alpha vectors in pack order stored as four-byte pixels.  Byte
// and then 16-bit interleaving within blocks gives four vectors whose blocks
// hold four whole pixels each; the last step puts the blocks in place.
template <class DU8>
HWY_INLINE void storePackedBGRA(DU8 du8, hn::Vec<DU8> b, hn::Vec<DU8> g, hn::Vec<DU8> r, hn::Vec<DU8> a, Kel8u* dst)
{
    const hn::Repartition<std::uint16_t, DU8> du16;
    const auto bgLow = hn::BitCast(du16, hn::InterleaveLower(du8, b, g));
    const auto bgHigh = hn::BitCast(du16, hn::InterleaveUpper(du8, b, g));
    const auto raLow = hn::BitCast(du16, hn::InterleaveLower(du8, r, a));
    const auto raHigh = hn::BitCast(du16, hn::InterleaveUpper(du8, r, a));
    const auto x0 = hn::BitCast(du8, hn::InterleaveLower(du16, bgLow, raLow));
    const auto x1 = hn::BitCast(du8, hn::InterleaveUpper(du16, bgLow, raLow));
    const auto x2 = hn::BitCast(du8, hn::InterleaveLower(du16, bgHigh, raHigh));
    const auto x3 = hn::BitCast(du8, hn::InterleaveUpper(du16, bgHigh, raHigh));
    const std::size_t n = hn::Lanes(du8);
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    // Block k of x0 holds pixels 8k..8k+3, of x1 8k+4..8k+7; x2 and x3 the same 32 pixels on.
    const __m512i firstHalf = _mm512_setr_epi64(0, 1, 8, 9, 2, 3, 10, 11);
    const __m512i secondHalf = _mm512_setr_epi64(4, 5, 12, 13, 6, 7, 14, 15);
    hn::StoreU(hn::Vec<DU8>{_mm512_permutex2var_epi64(x0.raw, firstHalf, x1.raw)}, du8, dst);
    hn::StoreU(hn::Vec<DU8>{_mm512_permutex2var_epi64(x0.raw, secondHalf, x1.raw)}, du8, dst + n);
    hn::StoreU(hn::Vec<DU8>{_mm512_permutex2var_epi64(x2.raw, firstHalf, x3.raw)}, du8, dst + 2 * n);
    hn::StoreU(hn::Vec<DU8>{_mm512_permutex2var_epi64(x2.raw, secondHalf, x3.raw)}, du8, dst + 3 * n);
#elif HWY_TARGET == HWY_AVX2
    // Block k of x0 holds pixels 8k..8k+3, of x1 8k+4..8k+7; x2 and x3 the same 16 pixels on.
    hn::StoreU(hn::ConcatLowerLower(du8, x1, x0), du8, dst);
    hn::StoreU(hn::ConcatUpperUpper(du8, x1, x0), du8, dst + n);
    hn::StoreU(hn::ConcatLowerLower(du8, x3, x2), du8, dst + 2 * n);
    hn::StoreU(hn::ConcatUpperUpper(du8, x3, x2), du8, dst + 3 * n);
#else
    static_assert(hn::MaxLanes(du8) <= 16, "one block");
    hn::StoreU(x0, du8, dst);
    hn::StoreU(x1, du8, dst + n);
    hn::StoreU(x2, du8, dst + 2 * n);
    hn::StoreU(x3, du8, dst + 3 * n);
#endif
}

// Pixels of 4:2:2 pixel order, two source vectors a step: the lanes of each
// source vector are read in place (a 32-bit lane is a pair, its 16-bit
// halves its two pixels), the chroma bytes masked into (first, second)
// 16-bit pairs and the luma bytes into the pixels' 16-bit lanes; see
// channel422 for the sums.  Returns the pixels done, an even count that
// leaves a lone last pixel its pair before, for the scalar kernel to finish.
template <const InverseYCbCr& K, PairLayout L, ChannelOrder O, int Pitch>
HWY_INLINE int pairs422(const Kel8u* HWY_RESTRICT src, Kel8u* HWY_RESTRICT dst, int width, Kel8u alpha)
{
    static_assert((O.r == 0 && O.b == 2) || (O.r == 2 && O.b == 0), "RGB or BGR");
    static_assert(Pitch == 3 || (Pitch == 4 && O.b == 0), "three bytes, or B, G, R, alpha");
    static_assert(L.cb % 2 == L.cr % 2 && L.y0 % 2 == L.y1 % 2 && L.cb % 2 != L.y0 % 2, "chroma and luma alternate");
    constexpr bool kCrFirst = L.cr < L.cb;
    static constexpr PairWeights kRed = pairWeights<kRedWeights<K>, kCrFirst>();
    static constexpr PairWeights kGreen = pairWeights<kGreenWeights<K>, kCrFirst>();
    static constexpr PairWeights kBlue = pairWeights<kBlueWeights<K>, kCrFirst>();
    const hn::ScalableTag<std::uint8_t> du8;
    const hn::Repartition<std::uint16_t, decltype(du8)> du16;
    const hn::Repartition<std::uint32_t, decltype(du8)> du32;
    const hn::Repartition<std::int32_t, decltype(du8)> di32;
    const hn::Repartition<std::int16_t, decltype(du8)> di16;
    const int step = static_cast<int>(hn::Lanes(du8));  // pixels a step: two source vectors of two bytes a pixel

    // One source vector to the channels' 16-bit results.
    struct Channels {
        hn::Vec<decltype(di16)> red, green, blue;
    };
    const auto convert = [&](const hn::Vec<decltype(du8)> bytes) {
        const auto lanes = hn::BitCast(du32, bytes);
        const auto words = hn::BitCast(du16, bytes);
        const auto chroma = L.cb % 2 ? hn::ShiftRight<8>(lanes) : lanes;
        const auto pairs = hn::BitCast(di16, hn::And(chroma, hn::Set(du32, 0x00FF00FFu)));
        const auto pairsScaled = hn::BitCast(di16, hn::ShiftLeft<7>(hn::BitCast(du32, pairs)));
        const auto lumaWords =
            hn::BitCast(di16, L.y0 % 2 ? hn::ShiftRight<8>(words) : hn::And(words, hn::Set(du16, 0x00FF)));
        const auto lumaLanes = LumaSplit<K.luma>::kQuarter ? hn::ShiftLeft<2>(lumaWords) : lumaWords;
        return Channels{channel422<kRed, K.luma>(di32, pairs, pairsScaled, lumaLanes, lumaWords),
                        channel422<kGreen, K.luma>(di32, pairs, pairsScaled, lumaLanes, lumaWords),
                        channel422<kBlue, K.luma>(di32, pairs, pairsScaled, lumaLanes, lumaWords)};
    };

    const auto alphas = hn::Set(du8, alpha);
    const int vectorEnd = width & 1 ? width - 3 : width;
    int x = 0;
    for (; x + step <= vectorEnd; x += step) {
        const Kel8u* pixels = src + 2 * x;
        hn::Vec<decltype(du8)> first, second;
        if constexpr (kCrosswiseLoads<Pitch>) {
            const hn::Half<decltype(du8)> half;
            const int quarter = step / 2;  // bytes of a half vector
            first = hn::Combine(du8, hn::LoadU(half, pixels + 2 * quarter), hn::LoadU(half, pixels));
            second = hn::Combine(du8, hn::LoadU(half, pixels + 3 * quarter), hn::LoadU(half, pixels + quarter));
        } else {
            first = hn::LoadU(du8, pixels);
            second = hn::LoadU(du8, pixels + step);
        }
        const Channels a = convert(first), b = convert(second);
        const auto red = packBytes(du8, a.red, b.red);
        const auto green = packBytes(du8, a.green, b.green);
        const auto blue = packBytes(du8, a.blue, b.blue);
        Kel8u* out = dst + Pitch * x;
        if constexpr (Pitch == 4) storePackedBGRA(du8, blue, green, red, alphas, out);
        else if constexpr (O.r == 0) storePacked3(du8, red, green, blue, out);
        else storePacked3(du8, blue, green, red, out);
    }
    return x;
}

// The members' row kernels: whole vectors, then the scalar kernel from the
// first pixel left.
void pixelRowYCbCr422ToRGB(const Kel8u* src, Kel8u* dst, int width)
{
    const int x = pairs422<inverseH, kYCbCrPair, kRGB, 3>(src, dst, width, 0);
    if (x < width) innerYCbCrToRGB422_C2_C3R(src + 2 * x, dst + 3 * x, width - x);
}

void pixelRowYCrCb422ToRGB(const Kel8u* src, Kel8u* dst, int width)
{
    const int x = pairs422<inverseH, kYCrCbPair, kRGB, 3>(src, dst, width, 0);
    if (x < width) innerYCrCbToRGB422_C2_C3R(src + 2 * x, dst + 3 * x, width - x);
}

void pixelRowYCbCr422ToBGR(const Kel8u* src, Kel8u* dst, int width)
{
    const int x = pairs422<inverseH, kYCbCrPair, kBGR, 3>(src, dst, width, 0);
    if (x < width) innerYCbCr422ToBGR_8u_C2C3R(src + 2 * x, dst + 3 * x, width - x);
}

void pixelRowCbYCr422ToRGB(const Kel8u* src, Kel8u* dst, int width)
{
    const int x = pairs422<inverseR, kCbYCrPair, kRGB, 3>(src, dst, width, 0);
    if (x < width) innerCbYCr422ToRGB_8u_C2C3R(src + 2 * x, dst + 3 * x, width - x);
}

void pixelRowYCbCr422ToBGRA(const Kel8u* src, Kel8u* dst, int width, Kel8u alpha)
{
    const int x = pairs422<inverseH, kYCbCrPair, kBGR, 4>(src, dst, width, alpha);
    if (x < width) innerYCbCr422ToBGR_8u_C2C4R(src + 2 * x, dst + 4 * x, width - x, alpha);
}

void pixelRowCbYCr422ToBGRA(const Kel8u* src, Kel8u* dst, int width, Kel8u alpha)
{
    const int x = pairs422<inverseR, kCbYCrPair, kBGR, 4>(src, dst, width, alpha);
    if (x < width) innerCbYCr422ToBGR_8u_C2AC4R(src + 2 * x, dst + 4 * x, width - x, alpha);
}

} // namespace HWY_NAMESPACE
} // namespace kel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kel {

HWY_EXPORT(rowPairYCbCr420ToRGB);
HWY_EXPORT(rowPairYCbCr420ToBGR);
HWY_EXPORT(pixelRowYCbCr422ToRGB);
HWY_EXPORT(pixelRowYCrCb422ToRGB);
HWY_EXPORT(pixelRowYCbCr422ToBGR);
HWY_EXPORT(pixelRowCbYCr422ToRGB);
HWY_EXPORT(pixelRowYCbCr422ToBGRA);
HWY_EXPORT(pixelRowCbYCr422ToBGRA);

RowPair420 chooseYCbCr420ToRGB()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowPairYCbCr420ToRGB);
}

RowPair420 chooseYCbCr420ToBGR()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowPairYCbCr420ToBGR);
}

PixelRow422 chooseYCbCr422ToRGB()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(pixelRowYCbCr422ToRGB);
}

PixelRow422 chooseYCrCb422ToRGB()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(pixelRowYCrCb422ToRGB);
}

PixelRow422 chooseYCbCr422ToBGR()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(pixelRowYCbCr422ToBGR);
}

PixelRow422 chooseCbYCr422ToRGB()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(pixelRowCbYCr422ToRGB);
}

PixelRow422Alpha chooseYCbCr422ToBGRA()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(pixelRowYCbCr422ToBGRA);
}

PixelRow422Alpha chooseCbYCr422ToBGRA()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(pixelRowCbYCr422ToBGRA);
}

} // namespace kel
#endif // HWY_ONCE

#else // a build without SIMD: the scalar kernels alone

namespace kel {

RowPair420 chooseYCbCr420ToRGB()
{
    return innerYCbCr420ToRGB_8u_P3C3R;
}

RowPair420 chooseYCbCr420ToBGR()
{
    return innerYCbCr420ToBGR_8u_P3C3R;
}

PixelRow422 chooseYCbCr422ToRGB()
{
    return innerYCbCrToRGB422_C2_C3R;
}

PixelRow422 chooseYCrCb422ToRGB()
{
    return innerYCrCbToRGB422_C2_C3R;
}

PixelRow422 chooseYCbCr422ToBGR()
{
    return innerYCbCr422ToBGR_8u_C2C3R;
}

PixelRow422 chooseCbYCr422ToRGB()
{
    return innerCbYCr422ToRGB_8u_C2C3R;
}

PixelRow422Alpha chooseYCbCr422ToBGRA()
{
    return innerYCbCr422ToBGR_8u_C2C4R;
}

PixelRow422Alpha chooseCbYCr422ToBGRA()
{
    return innerCbYCr422ToBGR_8u_C2AC4R;
}

} // namespace kel

#endif // KELCC_SIMD

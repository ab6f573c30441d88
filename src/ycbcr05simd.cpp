// Sub-sampled YCbCr to RGB and BGR on whole vectors: every member of the family,
// compiled once for every SIMD target (foreach_target.h includes this file once a target).
#include "ycbcr05simd.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "cbcrpx.h"
#include "simd.h"

#if KELCC_SIMD

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "ycbcr05simd.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include "simdops-inl.h"
#include "pairsimd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kel {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

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

// One channel's weights for the chroma pairs of a 4:2:2 pixel-order member,
// each coefficient split as high * 65536 + low: the low parts as a 16-bit
// weight pair (the pair's first chroma byte, in lane order, in the lower
// half), the high parts as small multiples of the samples moved 16 bits up.
struct PairWeights {
    std::int32_t low, offset, firstHigh, secondHigh;
};
template <const ChromaWeights& W, bool CrFirst>
constexpr PairWeights pairWeights()
{
    const std::int32_t first = CrFirst ? W.cr : W.cb, second = CrFirst ? W.cb : W.cr;
    return {weightPair(lowPart(first), lowPart(second)), W.offset, highPart(first), highPart(second)};
}

// The luma weight as one 16-bit multiplier: luma / 4 on four times the sample
// when luma is a multiple of 4 below 2^17 (76284 = 4 * 19071), else
// luma - 65536 on the sample and the sample itself moved 16 bits up.
template <std::int32_t Luma>
struct LumaSplit {
    static_assert(Luma >= 65536 && Luma < 2 * 65536, "the luma weight is 65536 plus a 16-bit rest");
    static constexpr bool kQuarter = Luma % 4 == 0 && Luma / 4 < 32768;
    static constexpr std::int32_t kWeight = kQuarter ? Luma / 4 : Luma - 65536;
    static_assert(kWeight < 32768, "one 16-bit multiplier");
};

#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
// Word indices of the upper halves of two vectors of 32-bit lanes, taken
// alternately: word j is word j + 1 of the first vector for even j, word j
// of the second (index 32 + j) for odd j.
struct UpperHalfTable {
    alignas(64) std::uint16_t index[32];
};
constexpr UpperHalfTable makeUpperHalves()
{
    UpperHalfTable t{};
    for (int j = 0; j < 32; ++j) t.index[j] = static_cast<std::uint16_t>(j % 2 ? 32 + j : j + 1);
    return t;
}
alignas(64) constexpr UpperHalfTable kUpperHalfTable = makeUpperHalves();
inline constexpr const std::uint16_t* kUpperHalves = kUpperHalfTable.index;
#endif

// What the three channels of a source vector share: cell c (32-bit lane c)
// holds the pixels 2c and 2c + 1 in its 16-bit halves; `pairs` its two chroma
// bytes in 16-bit halves, `firstHigh` and `secondHigh` each of them times
// 65536, `lumaEven` and `lumaOdd` luma * Y of the cell's two pixels (zero
// where channel422 folds the luma in); `lumaLanes` the pixels' luma samples
// for the luma weight of LumaSplit, in 16-bit halves, with `evenWeight` and
// `oddWeight` that weight in the half of one pixel; `lumaWords` Y itself.
template <class DI32>
struct PairLanes {
    hn::Vec<hn::Repartition<std::int16_t, DI32>> pairs;
    hn::Vec<DI32> firstHigh, secondHigh, lumaEven, lumaOdd;
    hn::Vec<hn::Repartition<std::int16_t, DI32>> lumaLanes, evenWeight, oddWeight, lumaWords;
};

// One channel of a vector of pixels, 16-bit results in pixel order.  The
// cell's chroma term T = offset + cb * Cb + cr * Cr is a multiply-add of the
// low parts plus the high parts' multiples, each pixel's sum S = T + luma * Y,
// and S >> 16 is S's upper half.  Every product is below 2^25 in size and
// every sum inside 32 bits, so S is the scalar kernel's sum exactly and the
// upper half its floor shift; the result lies within -600..600, and the pack
// saturates it as the scalar clamp does.  With FoldLuma each pixel's luma
// product is multiply-added into its own sum, and a luma weight of 65536 plus
// a 16-bit rest leaves 65536 * Y out of the sums, to be added to their upper
// halves as Y itself: (S + 65536 * Y) >> 16 = (S >> 16) + Y exactly.
template <const PairWeights& P, bool FoldLuma, bool LumaAfter, class DI32>
HWY_INLINE hn::Vec<hn::Repartition<std::int16_t, DI32>> channel422(DI32 di32, const PairLanes<DI32>& lanes)
{
    const hn::Repartition<std::int16_t, DI32> di16;
    const hn::Repartition<std::uint32_t, DI32> du32;
    const auto lows = mulAdd(di32, lanes.pairs, hn::BitCast(di16, hn::Set(di32, P.low)), hn::Set(di32, P.offset));
    const auto term = addMultiple<P.secondHigh>(addMultiple<P.firstHigh>(lows, lanes.firstHigh), lanes.secondHigh);
    hn::Vec<DI32> even, odd;
    if constexpr (FoldLuma) {
        even = mulAdd(di32, lanes.lumaLanes, lanes.evenWeight, term);
        odd = mulAdd(di32, lanes.lumaLanes, lanes.oddWeight, term);
    } else {
        even = hn::Add(term, lanes.lumaEven);
        odd = hn::Add(term, lanes.lumaOdd);
    }
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    // One two-vector word permute takes the upper halves: pixel 2c from the
    // even sums' lane c, pixel 2c + 1 from the odd sums'.
    (void)du32;
    const __m512i upperHalves = _mm512_load_si512(kUpperHalves);
    const hn::Vec<decltype(di16)> upper{_mm512_permutex2var_epi16(even.raw, upperHalves, odd.raw)};
    if constexpr (LumaAfter) return hn::Add(upper, lanes.lumaWords);
    return upper;
#else
    static_assert(!LumaAfter, "the luma after the sums only on AVX-512");
    const auto evenHigh = hn::BitCast(di16, hn::ShiftRight<16>(hn::BitCast(du32, even)));
    return hn::OddEven(hn::BitCast(di16, odd), evenHigh);
#endif
}

// Channels packed from pixel vectors of two source vectors come out in the
// order of the x86 pack, which works within 16-byte blocks: block k holds
// the first source vector's block k, then the second's.  On AVX2 the
// three-byte members load the source's 16-byte pieces crosswise, so that the
// pack gives pixel order; elsewhere the stores put the pixels in place.
// Pitch 1 stands for three planes.
#if HWY_TARGET == HWY_AVX2
template <int Pitch>
constexpr bool kCrosswiseLoads = Pitch == 3 || Pitch == 1;
#else
template <int Pitch>
constexpr bool kCrosswiseLoads = false;
#endif


// A vector in pack order (pixel order where the loads were crosswise or the
// vector is one block) put in pixel order: on AVX-512 its groups of 8 pixels
// (64-bit lanes) back in order.
template <class DU8>
HWY_INLINE hn::Vec<DU8> pixelOrder(DU8 du8, hn::Vec<DU8> v)
{
    (void)du8;
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    return hn::Vec<DU8>{_mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), v.raw)};
#else
    return v;
#endif
}

// Three channel vectors in pack order stored as three-byte pixels.
template <class DU8>
HWY_INLINE void storePacked3(DU8 du8, hn::Vec<DU8> v0, hn::Vec<DU8> v1, hn::Vec<DU8> v2, Kel8u* dst)
{
    storeInterleaved3(du8, pixelOrder(du8, v0), pixelOrder(du8, v1), pixelOrder(du8, v2), dst);
}

#if HWY_TARGET == HWY_AVX3_DL
// Three-byte pixels straight from the six 16-bit channel vectors of 64
// pixels (c0, c1, c2 in memory order; `a` pixels 0..31, `b` 32..63), packed
// so that each 64-byte output draws on as few of them as it can:
// V1 = (c0a, c1a), V2 = (c2a, c0b), V3 = (c1b, c2b).  The first and the last
// output then take one two-vector byte permute, the middle one two.
struct ThreeChannelTables {
    alignas(64) std::uint8_t first[64];    // output 0 from V1, V2
    alignas(64) std::uint8_t middle[64];   // output 1 from V1, V2 ...
    alignas(64) std::uint8_t middleV3[64]; // ... then from V3, keeping the rest
    alignas(64) std::uint8_t last[64];     // output 2 from V2, V3
};
// Where channel c of pixel p lies: 0, 1 or 2 for V1..V3, and the byte lane.
// The pack puts block k of its first operand (8 pixels) before block k of its second.
struct ByteAt {
    int vector, lane;
};
constexpr ByteAt threeChannelByte(int pixel, int channel)
{
    const bool upper = pixel >= 32;
    const int i = pixel % 32, packedFirst = 16 * (i / 8) + i % 8, packedSecond = packedFirst + 8;
    if (channel == 0) return upper ? ByteAt{1, packedSecond} : ByteAt{0, packedFirst};
    if (channel == 1) return upper ? ByteAt{2, packedFirst} : ByteAt{0, packedSecond};
    return upper ? ByteAt{2, packedSecond} : ByteAt{1, packedFirst};
}
constexpr ThreeChannelTables makeThreeChannelTables()
{
    ThreeChannelTables t{};
    for (int j = 0; j < 64; ++j) {
        const ByteAt a = threeChannelByte(j / 3, j % 3);
        t.first[j] = static_cast<std::uint8_t>(64 * a.vector + a.lane);  // V1 or V2
        const ByteAt b = threeChannelByte((64 + j) / 3, (64 + j) % 3);
        t.middle[j] = static_cast<std::uint8_t>(b.vector == 2 ? j : 64 * b.vector + b.lane);
        t.middleV3[j] = static_cast<std::uint8_t>(b.vector == 2 ? 64 + b.lane : j);
        const ByteAt c = threeChannelByte((128 + j) / 3, (128 + j) % 3);
        t.last[j] = static_cast<std::uint8_t>(64 * (c.vector - 1) + c.lane);  // V2 or V3
    }
    return t;
}
alignas(64) constexpr ThreeChannelTables kThreeChannel = makeThreeChannelTables();
#endif

// Three channels of two source vectors' pixels, as 16-bit results (c0, c1,
// c2 in memory order), saturated to bytes and stored as three-byte pixels.
template <int Pitch, class DU8, class VI16>
HWY_INLINE void storeChannels3(DU8 du8, VI16 c0a, VI16 c0b, VI16 c1a, VI16 c1b, VI16 c2a, VI16 c2b, Kel8u* dst)
{
#if HWY_TARGET == HWY_AVX3_DL
    (void)du8;
    const __m512i v1 = _mm512_packus_epi16(c0a.raw, c1a.raw), v2 = _mm512_packus_epi16(c2a.raw, c0b.raw),
                  v3 = _mm512_packus_epi16(c1b.raw, c2b.raw);
    _mm512_storeu_si512(dst, _mm512_permutex2var_epi8(v1, _mm512_load_si512(kThreeChannel.first), v2));
    const __m512i middle = _mm512_permutex2var_epi8(v1, _mm512_load_si512(kThreeChannel.middle), v2);
    _mm512_storeu_si512(dst + 64, _mm512_permutex2var_epi8(middle, _mm512_load_si512(kThreeChannel.middleV3), v3));
    _mm512_storeu_si512(dst + 128, _mm512_permutex2var_epi8(v2, _mm512_load_si512(kThreeChannel.last), v3));
#else
    storePacked3(du8, packBytes(du8, c0a, c0b), packBytes(du8, c1a, c1b), packBytes(du8, c2a, c2b), dst);
#endif
}

#if HWY_TARGET == HWY_AVX3_DL
// B, G, R, alpha pixels straight from 16-bit vectors: the packs (B, G) and
// (R, alpha) of 32 pixels hold every byte of their 128 output bytes, so each
// 64-byte output takes one two-vector byte permute.
struct FourChannelTables {
    alignas(64) std::uint8_t index[2][64];  // outputs of pixels 0..15 and 16..31
};
constexpr FourChannelTables makeFourChannelTables()
{
    FourChannelTables t{};
    for (int k = 0; k < 2; ++k) {
        for (int j = 0; j < 64; ++j) {
            const int pixel = 16 * k + j / 4, channel = j % 4;
            const int packed = 16 * (pixel / 8) + pixel % 8 + (channel % 2 ? 8 : 0);  // second operand 8 on
            t.index[k][j] = static_cast<std::uint8_t>(channel >= 2 ? 64 + packed : packed);
        }
    }
    return t;
}
alignas(64) constexpr FourChannelTables kFourChannel = makeFourChannelTables();
#endif

// B, G, R and alpha of two source vectors' pixels, B, G, R as 16-bit results
// and alpha as bytes, saturated and stored as four-byte pixels.
template <class DU8, class VI16>
HWY_INLINE void storeChannelsBGRA(DU8 du8, VI16 ba, VI16 bb, VI16 ga, VI16 gb, VI16 ra, VI16 rb, Kel8u alpha, Kel8u* dst);

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

template <class DU8, class VI16>
HWY_INLINE void storeChannelsBGRA(DU8 du8, VI16 ba, VI16 bb, VI16 ga, VI16 gb, VI16 ra, VI16 rb, Kel8u alpha, Kel8u* dst)
{
#if HWY_TARGET == HWY_AVX3_DL
    (void)du8;
    const __m512i alphas = _mm512_set1_epi16(alpha);
    const __m512i first = _mm512_load_si512(kFourChannel.index[0]), second = _mm512_load_si512(kFourChannel.index[1]);
    const __m512i bgA = _mm512_packus_epi16(ba.raw, ga.raw), raA = _mm512_packus_epi16(ra.raw, alphas);
    const __m512i bgB = _mm512_packus_epi16(bb.raw, gb.raw), raB = _mm512_packus_epi16(rb.raw, alphas);
    _mm512_storeu_si512(dst, _mm512_permutex2var_epi8(bgA, first, raA));
    _mm512_storeu_si512(dst + 64, _mm512_permutex2var_epi8(bgA, second, raA));
    _mm512_storeu_si512(dst + 128, _mm512_permutex2var_epi8(bgB, first, raB));
    _mm512_storeu_si512(dst + 192, _mm512_permutex2var_epi8(bgB, second, raB));
#else
    storePackedBGRA(du8, packBytes(du8, ba, bb), packBytes(du8, ga, gb), packBytes(du8, ra, rb), hn::Set(du8, alpha),
                    dst);
#endif
}

// Pixels of 4:2:2 pixel order, two source vectors a step: the lanes of each
// source vector are read in place (a 32-bit lane is a pair, its 16-bit
// halves its two pixels), the chroma bytes masked into (first, second)
// 16-bit pairs and the luma bytes into the pixels' 16-bit lanes; see
// channel422 for the sums.  Returns the pixels done, an even count that
// leaves a lone last pixel its pair before, for the scalar kernel to finish.
// Pitch 1 stands for three planes R, G, B (Dst Kel8u* const*).
template <const InverseYCbCr& K, PairLayout L, ChannelOrder O, int Pitch, class Dst>
HWY_INLINE int pairs422(const Kel8u* HWY_RESTRICT src, Dst dst, int width, Kel8u alpha)
{
    static_assert((O.r == 0 && O.b == 2) || (O.r == 2 && O.b == 0), "RGB or BGR");
    static_assert(Pitch == 1 || Pitch == 3 || (Pitch == 4 && O.b == 0), "planes, three bytes, or B, G, R, alpha");
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
    // Where a multiply-add with accumulation is one instruction (AVX3_DL),
    // each pixel's luma product is added straight into its channel's sum
    // rather than formed once and added; 65536 * Y of a luma weight that is
    // not four times a 16-bit one then comes after the sums (channel422).
    constexpr bool kFoldLuma = HWY_TARGET == HWY_AVX3_DL;
    constexpr bool kLumaAfter = kFoldLuma && !LumaSplit<K.luma>::kQuarter;

    // One source vector to the channels' 16-bit results.
    struct Channels {
        hn::Vec<decltype(di16)> red, green, blue;
    };
    const auto convert = [&](const hn::Vec<decltype(du8)> bytes) {
        const auto lanes = hn::BitCast(du32, bytes);
        const auto words = hn::BitCast(du16, bytes);
        const auto chroma = L.cb % 2 ? hn::ShiftRight<8>(lanes) : lanes;
        const auto pairs = hn::BitCast(di16, hn::And(chroma, hn::Set(du32, 0x00FF00FFu)));
        const auto lumaWords = L.y0 % 2 ? hn::ShiftRight<8>(words) : hn::And(words, hn::Set(du16, 0x00FF));
        using Split = LumaSplit<K.luma>;
        const auto lumaLanes = hn::BitCast(di16, Split::kQuarter ? hn::ShiftLeft<2>(lumaWords) : lumaWords);
        const auto evenWeight = hn::BitCast(di16, hn::Set(di32, weightPair(Split::kWeight, 0)));
        const auto oddWeight = hn::BitCast(di16, hn::Set(di32, weightPair(0, Split::kWeight)));
        auto lumaEven = hn::Zero(di32), lumaOdd = hn::Zero(di32);
        if constexpr (!kFoldLuma) {
            lumaEven = mulAdd(di32, lumaLanes, evenWeight, lumaEven);
            lumaOdd = mulAdd(di32, lumaLanes, oddWeight, lumaOdd);
        }
        if constexpr (!Split::kQuarter && !kFoldLuma) {  // 65536 * Y: the sample moved to the upper half
            const auto words32 = hn::BitCast(du32, lumaWords);
            lumaEven = hn::Add(lumaEven, hn::BitCast(di32, hn::ShiftLeft<16>(words32)));
            lumaOdd = hn::Add(lumaOdd, hn::BitCast(di32, hn::And(words32, hn::Set(du32, 0xFFFF0000u))));
        }
        const auto pairs32 = hn::BitCast(du32, pairs);
        const PairLanes<std::remove_const_t<decltype(di32)>> shared{pairs, hn::BitCast(di32, hn::ShiftLeft<16>(pairs32)),
                                               hn::BitCast(di32, hn::And(pairs32, hn::Set(du32, 0xFFFF0000u))),
                                               lumaEven, lumaOdd, lumaLanes, evenWeight, oddWeight,
                                               hn::BitCast(di16, lumaWords)};
        return Channels{channel422<kRed, kFoldLuma, kLumaAfter>(di32, shared),
                        channel422<kGreen, kFoldLuma, kLumaAfter>(di32, shared),
                        channel422<kBlue, kFoldLuma, kLumaAfter>(di32, shared)};
    };

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
        if constexpr (Pitch == 1) {
            hn::StoreU(pixelOrder(du8, packBytes(du8, a.red, b.red)), du8, dst[0] + x);
            hn::StoreU(pixelOrder(du8, packBytes(du8, a.green, b.green)), du8, dst[1] + x);
            hn::StoreU(pixelOrder(du8, packBytes(du8, a.blue, b.blue)), du8, dst[2] + x);
        } else if constexpr (Pitch == 4) {
            storeChannelsBGRA(du8, a.blue, b.blue, a.green, b.green, a.red, b.red, alpha, dst + Pitch * x);
        } else if constexpr (O.r == 0) {
            storeChannels3<Pitch>(du8, a.red, b.red, a.green, b.green, a.blue, b.blue, dst + Pitch * x);
        } else {
            storeChannels3<Pitch>(du8, a.blue, b.blue, a.green, b.green, a.red, b.red, dst + Pitch * x);
        }
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

void pixelRowYCbCr422ToRGBPlanes(const Kel8u* src, Kel8u* const dst[3], int width)
{
    const int x = pairs422<inverseH, kYCbCrPair, kRGB, 1>(src, dst, width, 0);
    Kel8u* const rest[3] = {dst[0] + x, dst[1] + x, dst[2] + x};
    if (x < width) innerYCbCr422ToRGB_C2_C3P2R(src + 2 * x, rest, width - x);
}

void pixelRowYCrCb422ToRGBPlanes(const Kel8u* src, Kel8u* const dst[3], int width)
{
    const int x = pairs422<inverseH, kYCrCbPair, kRGB, 1>(src, dst, width, 0);
    Kel8u* const rest[3] = {dst[0] + x, dst[1] + x, dst[2] + x};
    if (x < width) innerYCrCb422ToRGB_C2_C3P2R(src + 2 * x, rest, width - x);
}

// ---- planar sources, one pixel at a time ---------------------------------------------------------

#if HWY_TARGET == HWY_AVX3_DL
// Four-byte pixels from byte vectors in pixel order by VBMI byte permutes:
// `pairs[t]` interleaves B and G of pixels 32t..32t+31 into 16-bit pairs,
// `pixels[t][h]` then takes 16 pixels, the half h of those 32, from that
// pair vector and R, the alpha bytes kept from the table (withAlpha).
struct PixelBGRATables {
    alignas(64) std::uint8_t pairs[2][64];
    alignas(64) std::uint8_t pixels[2][2][64];
};
constexpr PixelBGRATables makePixelBGRATables()
{
    PixelBGRATables t{};
    for (int k = 0; k < 2; ++k) {
        for (int j = 0; j < 64; ++j) t.pairs[k][j] = static_cast<std::uint8_t>((j % 2 ? 64 : 0) + 32 * k + j / 2);
        for (int h = 0; h < 2; ++h) {
            for (int j = 0; j < 64; ++j) {
                const int pixel = 16 * h + j / 4, channel = j % 4;  // pixel of the 32
                t.pixels[k][h][j] = static_cast<std::uint8_t>(channel == 2 ? 64 + 32 * k + pixel : 2 * pixel + channel % 2);
            }
        }
    }
    return t;
}
alignas(64) constexpr PixelBGRATables kPixelBGRA = makePixelBGRATables();

// The bytes of four-byte pixels that a permute fills: B, G, R, not alpha.
inline constexpr __mmask64 kColourBytes = 0x7777777777777777ull;

// A permute table with the alpha in the bytes kColourBytes leaves out, which
// the masked permute keeps as they are.
HWY_INLINE __m512i withAlpha(const std::uint8_t* table, Kel8u alpha)
{
    return _mm512_mask_blend_epi8(kColourBytes, _mm512_set1_epi8(static_cast<char>(alpha)), _mm512_load_si512(table));
}
#endif

// B, G, R and alpha vectors in pixel order stored as four-byte pixels.
template <class DU8>
HWY_INLINE void storePixelsBGRA(DU8 du8, hn::Vec<DU8> b, hn::Vec<DU8> g, hn::Vec<DU8> r, Kel8u alpha, Kel8u* dst)
{
#if HWY_TARGET == HWY_AVX3_DL
    (void)du8;
    for (int t = 0; t < 2; ++t) {
        const __m512i bg = _mm512_permutex2var_epi8(b.raw, _mm512_load_si512(kPixelBGRA.pairs[t]), g.raw);
        for (int h = 0; h < 2; ++h) {
            const __m512i pixels = withAlpha(kPixelBGRA.pixels[t][h], alpha);
            _mm512_storeu_si512(dst + 128 * t + 64 * h, _mm512_mask2_permutex2var_epi8(bg, pixels, kColourBytes, r.raw));
        }
    }
#else
    hn::StoreInterleaved4(b, g, r, hn::Set(du8, alpha), du8, dst);
#endif
}

// Three channel vectors in pixel order stored in the member's layout: three
// bytes in the order O, or B, G, R, alpha.
template <ChannelOrder O, int Pitch, class DU8>
HWY_INLINE void storePixels(DU8 du8, hn::Vec<DU8> r, hn::Vec<DU8> g, hn::Vec<DU8> b, Kel8u alpha, Kel8u* dst)
{
    static_assert(Pitch == 3 || (Pitch == 4 && O.b == 0), "three bytes, or B, G, R, alpha");
    if constexpr (Pitch == 4) storePixelsBGRA(du8, b, g, r, alpha, dst);
    else if constexpr (O.r == 0) storeInterleaved3(du8, r, g, b, dst);
    else storeInterleaved3(du8, b, g, r, dst);
}

#if HWY_TARGET == HWY_AVX3_DL
// Word indices of the upper halves of two vectors of 32-bit sums in the
// order of the x86 signed pack (block k: the first vector's lanes 4k..4k+3,
// then the second's), so that one two-vector word permute does what two
// arithmetic shifts and the pack do for sums whose upper halves fit 16 bits.
struct PackedUpperHalfTable {
    alignas(64) std::uint16_t index[32];
};
constexpr PackedUpperHalfTable makePackedUpperHalves()
{
    PackedUpperHalfTable t{};
    for (int j = 0; j < 32; ++j) {
        const int lane = 4 * (j / 8) + j % 4;
        t.index[j] = static_cast<std::uint16_t>((j % 8 < 4 ? 0 : 32) + 2 * lane + 1);
    }
    return t;
}
alignas(64) constexpr PackedUpperHalfTable kPackedUpperHalves = makePackedUpperHalves();

// YCbCrToRGB's sums on AVX3_DL, the same products and the same sums: each
// multiply-add accumulates onto the rounding half (or onto the first
// multiply-add for green) in one VNNI instruction, and the upper halves come
// by one word permute.  They are floor(sum / 65536) as the arithmetic shift
// gives them, and lie within -600..600, where the signed pack changes
// nothing; the pack to bytes then saturates as before.
template <const InverseYCbCr& K>
struct FusedYCbCrToRGB {
    using Plain = YCbCrToRGB<K>;

    template <class DU8, class V = hn::Vec<DU8>>
    static HWY_INLINE void convert(DU8 du8, V y, V cb, V cr, V& r, V& g, V& b)
    {
        using DI16 = hn::Repartition<std::int16_t, DU8>;
        const DI16 di16;
        const hn::Repartition<std::int32_t, DU8> di32;
        const Halves<DI16> y16 = widenBytes(di16, y), cb16 = widenBytes(di16, cb), cr16 = widenBytes(di16, cr);
        const auto sixteen = hn::Set(di16, 16), centre = hn::Set(di16, 128);
        const auto rounding = hn::Set(di32, Plain::kRounding);
        const __m512i packed = _mm512_load_si512(kPackedUpperHalves.index);
        const auto weights = [&](std::int32_t pair) { return hn::BitCast(di16, hn::Set(di32, pair)); };
        const auto upper = [&](hn::Vec<decltype(di32)> lower, hn::Vec<decltype(di32)> higher) {
            return hn::Vec<DI16>{_mm512_permutex2var_epi16(lower.raw, packed, higher.raw)};
        };
        const auto half = [&](auto yh, auto cbh, auto crh, auto& rh, auto& gh, auto& bh) {
            const auto above = hn::Sub(yh, sixteen);
            const auto luma = Plain::kQuarter ? hn::ShiftLeft<2>(above) : above;
            const auto dcb = hn::Sub(cbh, centre), dcr = hn::Sub(crh, centre);
            const auto lumaCb = pairUp(di16, luma, dcb), lumaCr = pairUp(di16, luma, dcr);
            const auto channel = [&](const Halves<DI16>& pairs, std::int32_t pair) {
                const auto w = weights(pair);
                return upper(mulAdd(di32, pairs.lower, w, rounding), mulAdd(di32, pairs.upper, w, rounding));
            };
            const auto red = channel(lumaCr, weightPair(Plain::kLumaWeight, lowPart(K.crToR)));
            rh = addMultiple<Plain::kLumaHigh>(addMultiple<highPart(K.crToR)>(red, dcr), above);
            const auto blue = channel(lumaCb, weightPair(Plain::kLumaWeight, lowPart(K.cbToB)));
            bh = addMultiple<Plain::kLumaHigh>(addMultiple<highPart(K.cbToB)>(blue, dcb), above);
            const auto cbWeights = weights(weightPair(Plain::kLumaWeight, lowPart(-K.cbToG)));
            const auto crWeights = weights(weightPair(0, lowPart(-K.crToG)));
            const auto green = upper(mulAdd(di32, lumaCr.lower, crWeights, mulAdd(di32, lumaCb.lower, cbWeights, rounding)),
                                     mulAdd(di32, lumaCr.upper, crWeights, mulAdd(di32, lumaCb.upper, cbWeights, rounding)));
            gh = addMultiple<Plain::kLumaHigh>(
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
template <const InverseYCbCr& K>
using PlanarToRGB = FusedYCbCrToRGB<K>;
#else
template <const InverseYCbCr& K>
using PlanarToRGB = YCbCrToRGB<K>;
#endif

// Full resolution: a luma row and its chroma rows, a vector of pixels a
// step; see YCbCrToRGB for the sums.  Returns the pixels done, for the
// scalar kernel to finish from there.
template <const InverseYCbCr& K, ChannelOrder O, int Pitch>
HWY_INLINE int planeRow(const Kel8u* HWY_RESTRICT y, const Kel8u* HWY_RESTRICT cb, const Kel8u* HWY_RESTRICT cr,
                        Kel8u* HWY_RESTRICT dst, int width, Kel8u alpha)
{
    const hn::ScalableTag<std::uint8_t> du8;
    const int step = static_cast<int>(hn::Lanes(du8));
    int x = 0;
    for (; x + step <= width; x += step) {
        hn::Vec<decltype(du8)> r, g, b;
        PlanarToRGB<K>::convert(du8, hn::LoadU(du8, y + x), hn::LoadU(du8, cb + x), hn::LoadU(du8, cr + x), r, g, b);
        storePixels<O, Pitch>(du8, r, g, b, alpha, dst + Pitch * x);
    }
    return x;
}

// channelSum, with the carry added under the comparison's mask on AVX-512
// rather than made a vector and subtracted: the same sum.
template <class DI16>
HWY_INLINE hn::Vec<DI16> pixelSum(DI16 di16, const LumaTerm<DI16>& luma, const CellTerm<DI16>& cell)
{
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
    const __m512i sum = _mm512_add_epi16(luma.high.raw, cell.high.raw);
    const __mmask32 carry = _mm512_cmpgt_epi16_mask(luma.lowFlipped.raw, cell.carryBound.raw);
    return hn::Vec<DI16>{_mm512_mask_sub_epi16(sum, carry, sum, _mm512_set1_epi16(-1))};
#else
    return channelSum(di16, luma, cell);
#endif
}

// chromaTerm, on AVX3_DL as two VNNI multiply-adds: the low parts onto the
// offset, then the high parts as (sample << 7) * (high * 512), which is
// high * sample * 65536; both factors fit 16 bits (samples below 256, highs
// within -2..2).  The sum is the same C, exact since C fits 32 bits and the
// instruction's sums wrap rather than saturate.  `shifted` is `pairs` << 7.
template <const ChromaWeights& W, class D32, class V16>
HWY_INLINE hn::Vec<D32> cellChroma(D32 d32, V16 pairs, V16 shifted)
{
#if HWY_TARGET == HWY_AVX3_DL
    static_assert(highPart(W.cb) * 512 < 32768 && highPart(W.cb) * 512 >= -32768 && highPart(W.cr) * 512 < 32768 &&
                      highPart(W.cr) * 512 >= -32768,
                  "high parts times 512 fit 16 bits");
    const hn::Repartition<std::int16_t, D32> d16;
    const auto lowWeights = hn::BitCast(d16, hn::Set(d32, weightPair(lowPart(W.cb), lowPart(W.cr))));
    const auto highWeights = hn::BitCast(d16, hn::Set(d32, weightPair(512 * highPart(W.cb), 512 * highPart(W.cr))));
    return mulAdd(d32, shifted, highWeights, mulAdd(d32, pairs, lowWeights, hn::Set(d32, W.offset)));
#else
    (void)shifted;
    return chromaTerm<W>(d32, pairs);
#endif
}

// Rows of luma sharing one chroma row (two in 4:2:0, one in planar 4:2:2 and
// 4:1:1), a vector of luma bytes a step in each row: the step's cells (one
// Cb and Cr each, a 32-bit lane for two pixels of each row) give three
// chroma terms per cell, shared by the cell's pixels; each row then adds its
// own luma terms, and the three channels are stored in the member's layout.
// In 4:1:1 a chroma sample serves two such cells.  Luma is widened by
// zipping within 16-byte blocks, chroma likewise, so a pixel's 16-bit lane
// and its cell's 32-bit lane stay side by side; the pack undoes the zip.
// Every pixel gets the scalar kernel's bytes by the same formula,
//   channel = clamp((luma * Y + weights . (Cb, Cr) + offset) >> 16),
// with the same floor and the same clamp (see chromaTerm and channelSum).
// Steps run while whole within `end` pixels; returns the pixels done, for
// the scalar kernel to finish from there.
template <const InverseYCbCr& K, ChannelOrder O, int Pitch, int Rows, int Span>
HWY_INLINE int cellRows(const Kel8u* const luma[Rows], Kel8u* const dst[Rows], const Kel8u* HWY_RESTRICT cb,
                        const Kel8u* HWY_RESTRICT cr, int end, Kel8u alpha)
{
    static_assert(Span == 2 || Span == 4, "a chroma sample for two or four pixels");
    const hn::ScalableTag<std::uint8_t> du8;
    const hn::Repartition<std::uint16_t, decltype(du8)> du16;
    const hn::Repartition<std::int32_t, decltype(du8)> di32;
    const hn::Repartition<std::uint32_t, decltype(du8)> du32;
    const hn::Repartition<std::int16_t, decltype(du8)> di16;
    const int step = static_cast<int>(hn::Lanes(du8));  // pixels of a row a step, two a cell
    const auto lowHalves = hn::LoadDup128(du8, kLowHalves);
    const auto highHalves = hn::LoadDup128(du8, kHighHalves);
    const auto zero = hn::Zero(du8);
    // A cell's chroma sample in its 16-bit lane; in 4:1:1 each sample twice.
    const auto cells = [&](const Kel8u* plane) {
        if constexpr (Span == 2) {
            return hn::PromoteTo(du16, hn::LoadU(hn::Rebind<std::uint8_t, decltype(du16)>(), plane));
        } else {
            const auto samples = hn::PromoteTo(du32, hn::LoadU(hn::Rebind<std::uint8_t, decltype(du32)>(), plane));
            return hn::BitCast(du16, hn::Or(samples, hn::ShiftLeft<16>(samples)));
        }
    };

    int x = 0;
    for (; x + step <= end; x += step) {
        // The step's cells in 16-bit lanes, then (Cb, Cr) pairs zipped within
        // blocks: `first` holds the cells of the pixels zipped into `first` below.
        const auto cb16 = cells(cb + x / Span);
        const auto cr16 = cells(cr + x / Span);
        const auto pairsFirst = hn::BitCast(di16, hn::ZipLower(du32, cb16, cr16));
        const auto pairsSecond = hn::BitCast(di16, hn::ZipUpper(du32, cb16, cr16));
        const auto shiftedFirst = hn::ShiftLeft<7>(pairsFirst), shiftedSecond = hn::ShiftLeft<7>(pairsSecond);
        const auto cell = [&](const auto term) { return cellTerm(di16, term, lowHalves, highHalves); };
        const auto redFirst = cell(cellChroma<kRedWeights<K>>(di32, pairsFirst, shiftedFirst));
        const auto redSecond = cell(cellChroma<kRedWeights<K>>(di32, pairsSecond, shiftedSecond));
        const auto greenFirst = cell(cellChroma<kGreenWeights<K>>(di32, pairsFirst, shiftedFirst));
        const auto greenSecond = cell(cellChroma<kGreenWeights<K>>(di32, pairsSecond, shiftedSecond));
        const auto blueFirst = cell(cellChroma<kBlueWeights<K>>(di32, pairsFirst, shiftedFirst));
        const auto blueSecond = cell(cellChroma<kBlueWeights<K>>(di32, pairsSecond, shiftedSecond));

        for (int row = 0; row < Rows; ++row) {
            const auto lumaBytes = hn::LoadU(du8, luma[row] + x);
            const auto first = lumaTerm<K.luma>(du16, hn::ZipLower(du16, lumaBytes, zero));
            const auto second = lumaTerm<K.luma>(du16, hn::ZipUpper(du16, lumaBytes, zero));
            const auto channel = [&](const auto& cellFirst, const auto& cellSecond) {
                return packBytes(du8, pixelSum(di16, first, cellFirst), pixelSum(di16, second, cellSecond));
            };
            storePixels<O, Pitch>(du8, channel(redFirst, redSecond), channel(greenFirst, greenSecond),
                                  channel(blueFirst, blueSecond), alpha, dst[row] + Pitch * x);
        }
    }
    return x;
}

// 4:2:0: an odd last column is left alone, so the steps end at an even width.
void rowPairYCbCr420ToRGB(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* cb, const Kel8u* cr, Kel8u* top,
                          Kel8u* bottom, int width)
{
    const Kel8u* const luma[2] = {yTop, yBottom};
    Kel8u* const dst[2] = {top, bottom};
    const int x = cellRows<inverseT, kRGB, 3, 2, 2>(luma, dst, cb, cr, width & ~1, 0);
    if (x < (width & ~1)) {
        innerYCbCr420ToRGB_8u_P3C3R(yTop + x, yBottom + x, cb + x / 2, cr + x / 2, top + 3 * x, bottom + 3 * x, width - x);
    }
}

void rowPairYCbCr420ToBGR(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* cb, const Kel8u* cr, Kel8u* top,
                          Kel8u* bottom, int width)
{
    const Kel8u* const luma[2] = {yTop, yBottom};
    Kel8u* const dst[2] = {top, bottom};
    const int x = cellRows<inverseU, kBGR, 3, 2, 2>(luma, dst, cb, cr, width & ~1, 0);
    if (x < (width & ~1)) {
        innerYCbCr420ToBGR_8u_P3C3R(yTop + x, yBottom + x, cb + x / 2, cr + x / 2, top + 3 * x, bottom + 3 * x, width - x);
    }
}

// Filtered 4:2:0, rows in pairs: the even pixel of cell k takes chroma k, the
// odd pixel (c[k] + c[k + 1] + 1) >> 1, which is the rounding average of two
// bytes; the pixels of both rows then go through set F as in planeRow.  A
// step's cells read the cell after them, so the steps stop before the last
// cell, which the scalar kernel finishes with the odd column left.
template <ChannelOrder O, int Pitch>
HWY_INLINE int filteredRowPair(const Kel8u* HWY_RESTRICT yTop, const Kel8u* HWY_RESTRICT yBottom,
                               const Kel8u* HWY_RESTRICT cb, const Kel8u* HWY_RESTRICT cr, Kel8u* HWY_RESTRICT top,
                               Kel8u* HWY_RESTRICT bottom, int width, Kel8u alpha)
{
    const hn::ScalableTag<std::uint8_t> du8;
    const hn::Repartition<std::uint16_t, decltype(du8)> du16;
    const hn::Rebind<std::uint8_t, decltype(du16)> du8Half;
    const int step = static_cast<int>(hn::Lanes(du8));
    const int lastCellStart = 2 * (width / 2) - 2;
    // Each cell's own sample in the even byte, the mean with the next in the odd.
    const auto filtered = [&](const Kel8u* plane) {
        const auto own = hn::LoadU(du8Half, plane), next = hn::LoadU(du8Half, plane + 1);
        const auto even = hn::PromoteTo(du16, own), odd = hn::PromoteTo(du16, hn::AverageRound(own, next));
        return hn::BitCast(du8, hn::Or(even, hn::ShiftLeft<8>(odd)));
    };
    int x = 0;
    for (; x + step <= lastCellStart; x += step) {
        const auto cbs = filtered(cb + x / 2), crs = filtered(cr + x / 2);
        hn::Vec<decltype(du8)> r, g, b;
        PlanarToRGB<inverseF>::convert(du8, hn::LoadU(du8, yTop + x), cbs, crs, r, g, b);
        storePixels<O, Pitch>(du8, r, g, b, alpha, top + Pitch * x);
        PlanarToRGB<inverseF>::convert(du8, hn::LoadU(du8, yBottom + x), cbs, crs, r, g, b);
        storePixels<O, Pitch>(du8, r, g, b, alpha, bottom + Pitch * x);
    }
    return x;
}

// The members' row kernels: whole vectors, then the scalar kernel from the
// first pixel left.
void planeRowYCbCr422ToRGB(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Kel8u* dst, int width)
{
    const int x = cellRows<inverseR, kRGB, 3, 1, 2>(&y, &dst, cb, cr, width, 0);
    if (x < width) innerYCbCr422ToRGB_8u_P3C3R(y + x, cb + x / 2, cr + x / 2, dst + 3 * x, width - x);
}

// The scalar kernel finishes 4:1:1 from a group boundary; fewer than four
// pixels left take the group before them, as the row's last width & 3 do.
void planeRowYCbCr411ToBGR(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Kel8u* dst, int width)
{
    const int x = cellRows<inverseQ, kBGR, 3, 1, 4>(&y, &dst, cb, cr, width, 0);
    if (x < width) innerYCbCr411ToBGR_8u_P3C3R(y + x, cb + x / 4, cr + x / 4, dst + 3 * x, width - x);
}

void planeRowYCbCr411ToBGRA(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Kel8u* dst, int width, Kel8u alpha)
{
    const int x = cellRows<inverseQ, kBGR, 4, 1, 4>(&y, &dst, cb, cr, width, alpha);
    if (x < width) innerYCbCr411ToBGR_8u_P3C4R(y + x, cb + x / 4, cr + x / 4, dst + 4 * x, width - x, alpha);
}

void planeRowYCbCrToBGR(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Kel8u* dst, int width)
{
    const int x = planeRow<inverseR, kBGR, 3>(y, cb, cr, dst, width, 0);
    if (x < width) innerYCbCrToBGR_8u_P3C3R(y + x, cb + x, cr + x, dst + 3 * x, width - x);
}

void planeRowYCbCrToBGRA(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Kel8u* dst, int width, Kel8u alpha)
{
    const int x = planeRow<inverseR, kBGR, 4>(y, cb, cr, dst, width, alpha);
    if (x < width) innerYCbCrToBGR_8u_P3C4R(y + x, cb + x, cr + x, dst + 4 * x, width - x, alpha);
}

void rowPairYCrCb420FilterToBGRA(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* cb, const Kel8u* cr, Kel8u* top,
                                 Kel8u* bottom, int width, Kel8u alpha)
{
    const int x = filteredRowPair<kBGR, 4>(yTop, yBottom, cb, cr, top, bottom, width, alpha);
    if (x < width) {
        innerYCrCb420ToBGR_8u_P3C4R(yTop + x, yBottom + x, cb + x / 2, cr + x / 2, top + 4 * x, bottom + 4 * x,
                                    width - x, alpha);
    }
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
HWY_EXPORT(pixelRowYCbCr422ToRGBPlanes);
HWY_EXPORT(pixelRowYCrCb422ToRGBPlanes);
HWY_EXPORT(planeRowYCbCr422ToRGB);
HWY_EXPORT(planeRowYCbCr411ToBGR);
HWY_EXPORT(planeRowYCbCr411ToBGRA);
HWY_EXPORT(planeRowYCbCrToBGR);
HWY_EXPORT(planeRowYCbCrToBGRA);
HWY_EXPORT(rowPairYCrCb420FilterToBGRA);

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

PixelRowToPlanes chooseYCbCr422ToRGBPlanes()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(pixelRowYCbCr422ToRGBPlanes);
}

PixelRowToPlanes chooseYCrCb422ToRGBPlanes()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(pixelRowYCrCb422ToRGBPlanes);
}

PlaneRow chooseYCbCr422PlanesToRGB()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(planeRowYCbCr422ToRGB);
}

PlaneRow chooseYCbCr411ToBGR()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(planeRowYCbCr411ToBGR);
}

PlaneRowAlpha chooseYCbCr411ToBGRA()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(planeRowYCbCr411ToBGRA);
}

PlaneRow chooseYCbCrPlanesToBGR()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(planeRowYCbCrToBGR);
}

PlaneRowAlpha chooseYCbCrPlanesToBGRA()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(planeRowYCbCrToBGRA);
}

RowPair420Alpha chooseYCrCb420FilterToBGRA()
{
    detectSimdTargets();
    return &HWY_DYNAMIC_DISPATCH(rowPairYCrCb420FilterToBGRA);
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

PixelRowToPlanes chooseYCbCr422ToRGBPlanes()
{
    return innerYCbCr422ToRGB_C2_C3P2R;
}

PixelRowToPlanes chooseYCrCb422ToRGBPlanes()
{
    return innerYCrCb422ToRGB_C2_C3P2R;
}

PlaneRow chooseYCbCr422PlanesToRGB()
{
    return innerYCbCr422ToRGB_8u_P3C3R;
}

PlaneRow chooseYCbCr411ToBGR()
{
    return innerYCbCr411ToBGR_8u_P3C3R;
}

PlaneRowAlpha chooseYCbCr411ToBGRA()
{
    return innerYCbCr411ToBGR_8u_P3C4R;
}

PlaneRow chooseYCbCrPlanesToBGR()
{
    return innerYCbCrToBGR_8u_P3C3R;
}

PlaneRowAlpha chooseYCbCrPlanesToBGRA()
{
    return innerYCbCrToBGR_8u_P3C4R;
}

RowPair420Alpha chooseYCrCb420FilterToBGRA()
{
    return innerYCrCb420ToBGR_8u_P3C4R;
}

} // namespace kel

#endif // KELCC_SIMD

// RGB <-> full-range YUV 4:2:0 on whole vectors, compiled once for every SIMD
// target (foreach_target.h includes this file once a target).
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

// ---- inverse 4:2:0 -------------------------------------------------------------------------------------

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

// Rows in pairs, a vector of luma bytes a step in each row.  The scalar
// kernel computes each channel as
//   clamp((65536 * Y + C) >> 16),  C = weight . (U - 128, V - 128) + Half,
// and since 65536 * Y is a whole multiple of 65536 that is exactly
//   clamp(Y + (C >> 16)):
// no carry can come from the luma term.  C comes exact from chromaTerm, one
// 32-bit lane a cell; its upper 16-bit half is C >> 16 (floor, as the
// scalar shift), within -300..300, copied into both pixels' 16-bit lanes.
// Y + (C >> 16) lies within -300..560, inside 16 bits, and the pack
// saturates it to 0..255 as the scalar clamp does.  Luma and chroma are
// widened by zipping within 16-byte blocks, so a pixel's 16-bit lane and its
// cell's 32-bit lane stay side by side; the pack undoes the zip.  The cells
// after the last whole step go to `tail`, the scalar kernel compiled for the
// baseline.
template <const yuv::Inverse& K, std::int32_t Half, class Store, class Tail>
HWY_INLINE void rowPairsYUV420(const Kel8u* HWY_RESTRICT yTop, const Kel8u* HWY_RESTRICT yBottom,
                               const Kel8u* HWY_RESTRICT u, const Kel8u* HWY_RESTRICT v, const Store top,
                               const Store bottom, int width, const Tail& tail)
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

    const int evenWidth = width & ~1;
    int x = 0;
    for (; x + step <= evenWidth; x += step) {
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

        for (int row = 0; row < 2; ++row) {
            const auto lumaBytes = hn::LoadU(du8, (row == 0 ? yTop : yBottom) + x);
            const auto first = hn::BitCast(di16, hn::ZipLower(du16, lumaBytes, zero));
            const auto second = hn::BitCast(di16, hn::ZipUpper(du16, lumaBytes, zero));
            const auto channel = [&](const auto cellFirst, const auto cellSecond) {
                return packBytes(du8, hn::Add(first, cellFirst), hn::Add(second, cellSecond));
            };
            (row == 0 ? top : bottom)
                .put(du8, x, channel(redFirst, redSecond), channel(greenFirst, greenSecond),
                     channel(blueFirst, blueSecond));
        }
    }
    if (x < evenWidth) tail(x);
}

void rowPairYUV420ToRGB_8u_P3C3R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v, Kel8u* top,
                                 Kel8u* bottom, int width)
{
    rowPairsYUV420<yuv::inverse1, 0>(yTop, yBottom, u, v, Interleaved3<kRGB>{top}, Interleaved3<kRGB>{bottom}, width,
                                     [&](int x) {
                                         innerYUV420ToRGB_8u_P3C3R(yTop + x, yBottom + x, u + x / 2, v + x / 2,
                                                                   top + 3 * x, bottom + 3 * x, width - x);
                                     });
}

void rowPairYUV420ToRGB_8u_P3AC4R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v, Kel8u* top,
                                  Kel8u* bottom, int width)
{
    rowPairsYUV420<yuv::inverse1, 32768>(yTop, yBottom, u, v, ZeroAlpha4{top}, ZeroAlpha4{bottom}, width, [&](int x) {
        innerYUV420ToRGB_8u_P3AC4R(yTop + x, yBottom + x, u + x / 2, v + x / 2, top + 4 * x, bottom + 4 * x,
                                   width - x);
    });
}

void rowPairYUV420ToRGB_8u_P3R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v, PlaneStore top,
                               PlaneStore bottom, int width)
{
    rowPairsYUV420<yuv::inverse1, 0>(yTop, yBottom, u, v, Planes3{top}, Planes3{bottom}, width, [&](int x) {
        const PlaneStore topRest{top.red + x, top.green + x, top.blue + x};
        const PlaneStore bottomRest{bottom.red + x, bottom.green + x, bottom.blue + x};
        innerYUV420ToRGB_8u_P3R(yTop + x, yBottom + x, u + x / 2, v + x / 2, topRest, bottomRest, width - x);
    });
}

void rowPairYUV420ToBGR_8u_P3C3R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v, Kel8u* top,
                                 Kel8u* bottom, int width)
{
    rowPairsYUV420<yuv::inverse1, 0>(yTop, yBottom, u, v, Interleaved3<kBGR>{top}, Interleaved3<kBGR>{bottom}, width,
                                     [&](int x) {
                                         innerYUV420ToBGR_8u_P3C3R(yTop + x, yBottom + x, u + x / 2, v + x / 2,
                                                                   top + 3 * x, bottom + 3 * x, width - x);
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

} // namespace kel

#endif // KELCC_SIMD

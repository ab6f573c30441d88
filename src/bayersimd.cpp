// Vector row kernels of the Bayer demosaic's interior, for every SIMD target.
// A step takes 2N pixels as N pairs: each wide lane holds a pair's two
// samples, split into the first site (low half) and the second (high half),
// so both sites of the row's pattern are computed lane-wise with no test of a
// pixel's colour, then joined again into samples.
#include "bayer.h"

#include <cstdint>
#include <type_traits>

#include "simd.h"

#if KELCC_SIMD

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "bayersimd.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h
#include <hwy/highway.h>

#include "simdops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kel::bayer {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;
using kel::HWY_NAMESPACE::storeInterleaved3;
using kel::HWY_NAMESPACE::wholeSteps;

// Pairs of samples at a place: the first of each pair and the second, in
// lanes twice as wide as a sample (8-bit samples in 16-bit lanes, 16-bit in
// 32-bit: four samples and a rounding term never overflow).
template <typename Sample>
struct Lanes {
    using Wide = std::conditional_t<sizeof(Sample) == 1, std::uint16_t, std::uint32_t>;
    using DW = hn::ScalableTag<Wide>;
    using DS = hn::Repartition<Sample, DW>;
    using V = hn::Vec<DW>;
    static constexpr int kBits = 8 * sizeof(Sample);

    static void split(const Sample* at, V& first, V& second)
    {
        const DW dw;
        const V pairs = hn::BitCast(dw, hn::LoadU(DS(), at));
        first = hn::And(pairs, hn::Set(dw, static_cast<Wide>((Wide{1} << kBits) - 1)));
        second = hn::ShiftRight<kBits>(pairs);
    }
    static hn::Vec<DS> join(V first, V second)
    {
        return hn::BitCast(DS(), hn::Or(first, hn::ShiftLeft<kBits>(second)));
    }
    static V mean2(V a, V b) { return hn::ShiftRight<1>(hn::Add(hn::Add(a, b), hn::Set(DW(), 1))); }
    static V mean4(V a, V b, V c, V d)
    {
        return hn::ShiftRight<2>(hn::Add(hn::Add(hn::Add(a, b), hn::Add(c, d)), hn::Set(DW(), 2)));
    }
    static V absDiff(V a, V b) { return hn::Sub(hn::Max(a, b), hn::Min(a, b)); }
    // a < b for values below half the lane's range.
    static hn::Mask<DW> below(V a, V b)
    {
        const hn::RebindToSigned<DW> di;
        return hn::RebindMask(DW(), hn::Lt(hn::BitCast(di, a), hn::BitCast(di, b)));
    }
};

// The neighbours of a site, one lane a site.
template <class V>
struct Around {
    V own, left, right, up, down;               // one away
    V left2, right2, up2, down2;                // two away in the site's own colour
    V upLeft, upRight, downLeft, downRight;     // the diagonals
};

// A red or blue site: its own colour, green along the smaller change (the
// mean of four on a tie), the opposite colour from the diagonals.
template <typename Sample, class V>
HWY_INLINE void colourSite(const Around<V>& n, V& rowColour, V& green, V& otherColour)
{
    using L = Lanes<Sample>;
    rowColour = n.own;
    otherColour = L::mean4(n.upLeft, n.upRight, n.downLeft, n.downRight);
    const V vertical = L::absDiff(n.up2, n.down2), horizontal = L::absDiff(n.left2, n.right2);
    const V tie = L::mean4(n.left, n.right, n.up, n.down);
    green = hn::IfThenElse(L::below(vertical, horizontal), L::mean2(n.up, n.down),
                           hn::IfThenElse(L::below(horizontal, vertical), L::mean2(n.left, n.right), tie));
}

// A green site: the row's colour from left and right, the column's from
// above and below.
template <typename Sample, class V>
HWY_INLINE void greenSite(const Around<V>& n, V& rowColour, V& green, V& otherColour)
{
    using L = Lanes<Sample>;
    rowColour = L::mean2(n.left, n.right);
    green = n.own;
    otherColour = L::mean2(n.up, n.down);
}

template <typename Sample, bool FirstGreen, bool RowIsRed>
void interiorRow(const Sample* c, int step, Sample* dst, int width)
{
    using L = Lanes<Sample>;
    using V = typename L::V;
    const typename L::DS ds;
    const int pixels = 2 * static_cast<int>(hn::Lanes(typename L::DW()));
    const std::ptrdiff_t s = step;
    const int done = wholeSteps(width, pixels, 2, [&](int x) {
        const Sample* p = c + x;
        // Pairs from two samples left (the pair before), here, two right
        // (the pair after), in this row and the rows one and two away.
        V hereA, hereB, leftA, leftB, rightA, rightB, upA, upB, upLeftA, upLeftB, upRightA, upRightB;
        V downA, downB, downLeftA, downLeftB, downRightA, downRightB, up2A, up2B, down2A, down2B;
        L::split(p, hereA, hereB);
        L::split(p - 2, leftA, leftB);
        L::split(p + 2, rightA, rightB);
        L::split(p - s, upA, upB);
        L::split(p - s - 2, upLeftA, upLeftB);
        L::split(p - s + 2, upRightA, upRightB);
        L::split(p + s, downA, downB);
        L::split(p + s - 2, downLeftA, downLeftB);
        L::split(p + s + 2, downRightA, downRightB);
        L::split(p - 2 * s, up2A, up2B);
        L::split(p + 2 * s, down2A, down2B);
        // The first site of a pair at column 2i, the second at 2i + 1.
        const Around<V> first{hereA, leftB,   hereB,   upA,     downA,     leftA,     rightA,
                              up2A,  down2A,  upLeftB, upB,     downLeftB, downB};
        const Around<V> second{hereB, hereA,   rightA,   upB,     downB,    leftB,     rightB,
                               up2B,  down2B,  upA,      upRightA, downA,   downRightA};
        V rowFirst, greenFirst, otherFirst, rowSecond, greenSecond, otherSecond;
        if constexpr (FirstGreen) {
            greenSite<Sample>(first, rowFirst, greenFirst, otherFirst);
            colourSite<Sample>(second, rowSecond, greenSecond, otherSecond);
        } else {
            colourSite<Sample>(first, rowFirst, greenFirst, otherFirst);
            greenSite<Sample>(second, rowSecond, greenSecond, otherSecond);
        }
        const auto rowColour = L::join(rowFirst, rowSecond), green = L::join(greenFirst, greenSecond);
        const auto otherColour = L::join(otherFirst, otherSecond);
        const auto red = RowIsRed ? rowColour : otherColour, blue = RowIsRed ? otherColour : rowColour;
        if constexpr (sizeof(Sample) == 1) storeInterleaved3(ds, red, green, blue, dst + 3 * x);
        else hn::StoreInterleaved3(red, green, blue, ds, dst + 3 * x);
    });
    innerBayerRow<Sample, FirstGreen, RowIsRed>(c + done, step, dst + 3 * done, width - done);
}

#define KEL_BAYER_VECTOR_ROW(NAME, Sample, FIRST_GREEN, ROW_IS_RED)  \
    void NAME(const Sample* c, int step, Sample* dst, int width)     \
    {                                                                \
        interiorRow<Sample, FIRST_GREEN, ROW_IS_RED>(c, step, dst, width); \
    }
KEL_BAYER_VECTOR_ROW(rowColourBlue8u, Kel8u, false, false)
KEL_BAYER_VECTOR_ROW(rowColourRed8u, Kel8u, false, true)
KEL_BAYER_VECTOR_ROW(rowGreenBlue8u, Kel8u, true, false)
KEL_BAYER_VECTOR_ROW(rowGreenRed8u, Kel8u, true, true)
KEL_BAYER_VECTOR_ROW(rowColourBlue16u, Kel16u, false, false)
KEL_BAYER_VECTOR_ROW(rowColourRed16u, Kel16u, false, true)
KEL_BAYER_VECTOR_ROW(rowGreenBlue16u, Kel16u, true, false)
KEL_BAYER_VECTOR_ROW(rowGreenRed16u, Kel16u, true, true)
#undef KEL_BAYER_VECTOR_ROW

} // namespace HWY_NAMESPACE
} // namespace kel::bayer
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kel::bayer {

HWY_EXPORT(rowColourBlue8u);
HWY_EXPORT(rowColourRed8u);
HWY_EXPORT(rowGreenBlue8u);
HWY_EXPORT(rowGreenRed8u);
HWY_EXPORT(rowColourBlue16u);
HWY_EXPORT(rowColourRed16u);
HWY_EXPORT(rowGreenBlue16u);
HWY_EXPORT(rowGreenRed16u);

RowKernel<Kel8u> chooseInteriorRow8u(bool firstGreen, bool rowIsRed)
{
    detectSimdTargets();
    if (firstGreen) return rowIsRed ? &HWY_DYNAMIC_DISPATCH(rowGreenRed8u) : &HWY_DYNAMIC_DISPATCH(rowGreenBlue8u);
    return rowIsRed ? &HWY_DYNAMIC_DISPATCH(rowColourRed8u) : &HWY_DYNAMIC_DISPATCH(rowColourBlue8u);
}

RowKernel<Kel16u> chooseInteriorRow16u(bool firstGreen, bool rowIsRed)
{
    detectSimdTargets();
    if (firstGreen) return rowIsRed ? &HWY_DYNAMIC_DISPATCH(rowGreenRed16u) : &HWY_DYNAMIC_DISPATCH(rowGreenBlue16u);
    return rowIsRed ? &HWY_DYNAMIC_DISPATCH(rowColourRed16u) : &HWY_DYNAMIC_DISPATCH(rowColourBlue16u);
}

} // namespace kel::bayer
#endif // HWY_ONCE

#else // KELCC_SIMD

namespace kel::bayer {

template <typename Sample>
RowKernel<Sample> scalarRow(bool firstGreen, bool rowIsRed)
{
    if (firstGreen) return rowIsRed ? innerBayerRow<Sample, true, true> : innerBayerRow<Sample, true, false>;
    return rowIsRed ? innerBayerRow<Sample, false, true> : innerBayerRow<Sample, false, false>;
}

RowKernel<Kel8u> chooseInteriorRow8u(bool firstGreen, bool rowIsRed)
{
    return scalarRow<Kel8u>(firstGreen, rowIsRed);
}
RowKernel<Kel16u> chooseInteriorRow16u(bool firstGreen, bool rowIsRed)
{
    return scalarRow<Kel16u>(firstGreen, rowIsRed);
}

} // namespace kel::bayer

#endif // KELCC_SIMD

// Colour twist: the sum of a pixel's three channels under a 3 x 4 matrix, its
// rounding to each sample type, and the walks over pixel-order and planar
// images that every member instantiates.
#pragma once

#include <cstdint>
#include <type_traits>

#include "callframe.h"

namespace kel::twist {

// ---- the sum and its rounding -------------------------------------------------------------------

// Output channel i: ((t[4i] c0 + t[4i + 3]) + t[4i + 1] c1) + t[4i + 2] c2,
// the constant added second, in the extended type.
inline long double twistSum(const Kel32f* t, int i, long double c0, long double c1, long double c2)
{
    const Kel32f* row = t + 4 * i;
    return ((static_cast<long double>(row[0]) * c0 + row[3]) + static_cast<long double>(row[1]) * c1) +
           static_cast<long double>(row[2]) * c2;
}

// The limits of an integer sample type, tested on the sum before rounding.
template <typename Sample>
inline constexpr long double kTop = static_cast<long double>(std::numeric_limits<Sample>::max());
template <typename Sample>
inline constexpr long double kBottom = static_cast<long double>(std::numeric_limits<Sample>::min());

// A sum to the sample type: saturated at the limits, rounded half to even
// between them (s + 0.5, or s - 0.5 below 0, truncated; an odd result equal
// to that value moves one toward zero); floats take the sum rounded once.
// A NaN sum, which only a matrix with NaN or infinities gives, becomes 0.
template <typename Sample>
inline Sample roundSum(long double s)
{
    if constexpr (std::is_floating_point_v<Sample>) {
        return static_cast<Sample>(s);
    } else {
        if (s >= kTop<Sample>) return std::numeric_limits<Sample>::max();
        if (s <= kBottom<Sample>) return std::numeric_limits<Sample>::min();
        if (s != s) return 0;
        const bool nonNegative = s >= 0.0L;
        const long double y = nonNegative ? s + 0.5L : s - 0.5L;
        std::int32_t n = static_cast<std::int32_t>(y);
        if ((n & 1) != 0 && static_cast<long double>(n) == y) n += nonNegative ? -1 : 1;
        return static_cast<Sample>(n);
    }
}

// The three outputs of one pixel, all formed from the pixel as read, so that
// an in-place call may store them over it.
template <typename Sample>
inline void twistPixel(const Kel32f* t, Sample c0, Sample c1, Sample c2, Sample& o0, Sample& o1, Sample& o2)
{
    const long double a = c0, b = c1, c = c2;
    const long double s0 = twistSum(t, 0, a, b, c), s1 = twistSum(t, 1, a, b, c), s2 = twistSum(t, 2, a, b, c);
    o0 = roundSum<Sample>(s0);
    o1 = roundSum<Sample>(s1);
    o2 = roundSum<Sample>(s2);
}

// ---- walks --------------------------------------------------------------------------------------------

// `count` pixels of a row, `Pitch` samples a pixel (3, or 4 with the fourth
// left alone).  Rows start at any byte address, so 16-bit and float samples
// go through copies.
template <typename Sample, int Pitch>
void twistRow(const Sample* src, Sample* dst, std::int64_t count, const Kel32f* t)
{
    for (std::int64_t x = 0; x < count; ++x, src += Pitch, dst += Pitch) {
        Sample o0, o1, o2;
        twistPixel(t, loadSample(src), loadSample(src + 1), loadSample(src + 2), o0, o1, o2);
        storeSample(dst, o0);
        storeSample(dst + 1, o1);
        storeSample(dst + 2, o2);
    }
}

// A row layer's optional fast path: the pixels of a row it wrote, from the
// first; the scalar row finishes the rest.
template <typename Sample>
using FastRow = std::int64_t (*)(const Sample* src, Sample* dst, std::int64_t count, const Kel32f* t);

// Pixel-order rows, top to bottom, byte strides.
template <typename Sample, int Pitch>
void myColorTwist(const Sample* pSrc, int srcStep, Sample* pDst, int dstStep, KelImageSize size, const Kel32f* t,
                  FastRow<Sample> fast = nullptr, bool whole = false)
{
    const std::int64_t rowBytes = static_cast<std::int64_t>(size.width) * Pitch * static_cast<std::int64_t>(sizeof(Sample));
    if (whole && srcStep == rowBytes && dstStep == rowBytes) {
        twistRow<Sample, Pitch>(pSrc, pDst, static_cast<std::int64_t>(size.width) * size.height, t);
        return;
    }
    forEachRow(size.height, [&](int y) {
        const Sample* src = rowAt(pSrc, srcStep, y);
        Sample* dst = rowAt(pDst, dstStep, y);
        const std::int64_t done = fast != nullptr ? fast(src, dst, size.width, t) : 0;
        twistRow<Sample, Pitch>(src + Pitch * done, dst + Pitch * done, size.width - done, t);
    });
}

// Three planes, one stride, read together pixel by pixel.
template <typename Sample>
void myColorTwistPlanes(const Sample* const pSrc[3], int srcStep, Sample* const pDst[3], int dstStep,
                        KelImageSize size, const Kel32f* t)
{
    forEachRow(size.height, [&](int y) {
        const Sample* a = rowAt(pSrc[0], srcStep, y);
        const Sample* b = rowAt(pSrc[1], srcStep, y);
        const Sample* c = rowAt(pSrc[2], srcStep, y);
        Sample* d0 = rowAt(pDst[0], dstStep, y);
        Sample* d1 = rowAt(pDst[1], dstStep, y);
        Sample* d2 = rowAt(pDst[2], dstStep, y);
        for (int x = 0; x < size.width; ++x) {
            Sample o0, o1, o2;
            twistPixel(t, loadSample(a + x), loadSample(b + x), loadSample(c + x), o0, o1, o2);
            storeSample(d0 + x, o0);
            storeSample(d1 + x, o1);
            storeSample(d2 + x, o2);
        }
    });
}

// ---- argument tests -------------------------------------------------------------------------------------

// Pointers (the matrix with them, then the planes of a planar image), size,
// steps.
template <typename Src, typename Dst>
inline KelResult testTwist(const Src* pSrc, int srcStep, const Dst* pDst, int dstStep, KelImageSize size,
                           const Kel32f* twist)
{
    if (anyNull(pSrc, pDst, twist))   return kelErrNullPointer;
    if constexpr (std::is_pointer_v<Src>) {
        if (anyNullPlane(pSrc) || anyNullPlane(pDst)) return kelErrNullPointer;
    }
    if (sizeBelow(size, 1, 1))        return kelErrSize;
    if (stepBelowOne(srcStep, dstStep)) return kelErrStep;
    return kelOk;
}

} // namespace kel::twist

// ---- the members ------------------------------------------------------------------------------------------

// The six three-channel members of a sample type, NAME##_C3R and so on.
// `fast` is the vector row of the pixel-order three-channel forms, or null;
// `whole` lets C3R take an image whose rows follow each other with no gap as
// one row.
#define KEL_TWIST_MEMBERS(NAME, Sample, fast, whole)                                                                   \
    KEL_API KelResult NAME##_C3R(const Sample* pSrc, int srcStep, Sample* pDst, int dstStep,                           \
                                                    KelImageSize roiSize, const Kel32f* twist)                         \
    {                                                                                                                  \
        const KelResult status = testTwist(pSrc, srcStep, pDst, dstStep, roiSize, twist);                              \
        if (status != kelOk) return status;                                                                            \
        myColorTwist<Sample, 3>(pSrc, srcStep, pDst, dstStep, roiSize, twist, fast, whole);                            \
        return kelOk;                                                                                                  \
    }                                                                                                                  \
    KEL_API KelResult NAME##_C3IR(Sample* pSrcDst, int srcDstStep, KelImageSize roiSize,                               \
                                                     const Kel32f* twist)                                              \
    {                                                                                                                  \
        const KelResult status = testTwist(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, twist);                  \
        if (status != kelOk) return status;                                                                            \
        myColorTwist<Sample, 3>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, twist, fast);                       \
        return kelOk;                                                                                                  \
    }                                                                                                                  \
    KEL_API KelResult NAME##_AC4R(const Sample* pSrc, int srcStep, Sample* pDst, int dstStep,                          \
                                                     KelImageSize roiSize, const Kel32f* twist)                        \
    {                                                                                                                  \
        const KelResult status = testTwist(pSrc, srcStep, pDst, dstStep, roiSize, twist);                              \
        if (status != kelOk) return status;                                                                            \
        myColorTwist<Sample, 4>(pSrc, srcStep, pDst, dstStep, roiSize, twist);                                         \
        return kelOk;                                                                                                  \
    }                                                                                                                  \
    KEL_API KelResult NAME##_AC4IR(Sample* pSrcDst, int srcDstStep, KelImageSize roiSize,                              \
                                                      const Kel32f* twist)                                             \
    {                                                                                                                  \
        const KelResult status = testTwist(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, twist);                  \
        if (status != kelOk) return status;                                                                            \
        myColorTwist<Sample, 4>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, twist);                             \
        return kelOk;                                                                                                  \
    }                                                                                                                  \
    KEL_API KelResult NAME##_P3R(const Sample* const pSrc[3], int srcStep,                                             \
                                                    Sample* const pDst[3], int dstStep, KelImageSize roiSize,          \
                                                    const Kel32f* twist)                                               \
    {                                                                                                                  \
        const KelResult status = testTwist(pSrc, srcStep, pDst, dstStep, roiSize, twist);                              \
        if (status != kelOk) return status;                                                                            \
        myColorTwistPlanes<Sample>(pSrc, srcStep, pDst, dstStep, roiSize, twist);                                      \
        return kelOk;                                                                                                  \
    }                                                                                                                  \
    KEL_API KelResult NAME##_IP3R(Sample* const pSrcDst[3], int srcDstStep,                                            \
                                                     KelImageSize roiSize, const Kel32f* twist)                        \
    {                                                                                                                  \
        const KelResult status = testTwist(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, twist);                  \
        if (status != kelOk) return status;                                                                            \
        myColorTwistPlanes<Sample>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, twist);                          \
        return kelOk;                                                                                                  \
    }

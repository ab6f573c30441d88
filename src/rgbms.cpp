// 4:1:1 YCbCr planes to packed BGR565 and BGR555: the rounding studio-range
// inverse, then each channel's top bits; four pixels share one chroma sample.
#include <cstdint>
#include <cstring>

#include "callframe.h"
#include "cbcrpx.h"
#include "rgbxxxpx.h"

using namespace kel;
using packed::Packing;

// ---- layers behind the public functions ----------------------------------------------------------

void ownYCbCr411ToBGR565_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep,
                                     int width, int height);
void ownYCbCr411ToBGR555_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep,
                                     int width, int height);

// ---- public functions ------------------------------------------------------------------------------
// Every pointer and plane first, then the size; a width that is not a whole
// number of groups is converted, then warned of.

#define KEL_411_TO_PACKED(NAME, ROWS)                                                                          \
    KEL_API KelResult NAME(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep,        \
                           KelImageSize roiSize)                                                                \
    {                                                                                                           \
        if (const KelResult bad = testPlanesWithPointers(roiSize, 4, 1, pSrc, pDst)) return bad;               \
        ROWS(pSrc, srcSteps, pDst, dstStep, roiSize.width, roiSize.height);                                     \
        return warnUnlessFourWide(roiSize);                                                                     \
    }

extern "C" {
KEL_411_TO_PACKED(keliYCbCr411ToBGR565_8u16u_P3C3R, ownYCbCr411ToBGR565_8u16u_P3C3R)
KEL_411_TO_PACKED(keliYCbCr411ToBGR555_8u16u_P3C3R, ownYCbCr411ToBGR555_8u16u_P3C3R)
}

// ---- row layers ----------------------------------------------------------------------------------------
// The chroma planes have as many rows as the luma plane.  Destination rows
// are dstStep bytes apart, whatever the word alignment that gives them.

namespace {

template <Packing P>
void groupRow(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Kel16u* dst, int width);

template <Packing P>
void rows411(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, int width, int height)
{
    const PlaneRows<const Kel8u> src(pSrc, srcSteps);
    forEachRow(height, [&](int y) {
        groupRow<P>(src.row(0, y), src.row(1, y), src.row(2, y), rowAt(pDst, dstStep, y), width);
    });
}

} // namespace

void ownYCbCr411ToBGR565_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep,
                                     int width, int height)
{
    rows411<Packing::k565>(pSrc, srcSteps, pDst, dstStep, width, height);
}
void ownYCbCr411ToBGR555_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep,
                                     int width, int height)
{
    rows411<Packing::k555>(pSrc, srcSteps, pDst, dstStep, width, height);
}

// ---- kernels -------------------------------------------------------------------------------------------

namespace {

// One pixel: the rounding inverse (its offset holds the half 0x8000), each
// channel saturated, red in the top field.
template <Packing P>
inline void putPixel(Kel16u* dst, std::int32_t luma, const ChromaTerms& c)
{
    const std::int32_t l = inverseU.luma * luma;
    const Kel16u word = packed::packPixel<P, false>(saturateByte((l + c.r) >> 16), saturateByte((l + c.g) >> 16),
                                                    saturateByte((l + c.b) >> 16), 0, true);
    std::memcpy(dst, &word, sizeof word);
}

// width >= 4.  The chroma products once a group of four; the last width & 3
// pixels take the terms of the last whole group.
template <Packing P>
void groupRow(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Kel16u* dst, int width)
{
    const int groups = width / 4;
    ChromaTerms c{};
    for (int k = 0; k < groups; ++k) {
        c = chromaTerms<inverseU>(cb[k], cr[k]);
        for (int x = 4 * k; x < 4 * k + 4; ++x) putPixel<P>(dst + x, y[x], c);
    }
    for (int x = 4 * groups; x < width; ++x) putPixel<P>(dst + x, y[x], c);
}

} // namespace

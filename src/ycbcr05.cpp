// Studio-range YCbCr, YCrCb and CbYCr with 4:2:2, 4:2:0 and 4:1:1 chroma, and
// full-resolution YCbCr planes, back to RGB or BGR.  Each member has its own
// coefficient set; every pixel of a cell takes the cell's chroma pair, except
// in the filtered 4:2:0 member, which interpolates along the row.
#include <cstdint>
#include <type_traits>

#include "callframe.h"
#include "cbcrpx.h"

using namespace kel;

namespace {

// ---- destinations ----------------------------------------------------------------------------

// One pixel from its luma and its cell's chroma terms.
template <const InverseYCbCr& K>
struct Pixel {
    Kel8u r, g, b;
    Pixel(std::int32_t y, const ChromaTerms& c)
    {
        const std::int32_t luma = K.luma * y;
        r = saturateByte((luma + c.r) >> 16);
        g = saturateByte((luma + c.g) >> 16);
        b = saturateByte((luma + c.b) >> 16);
    }
    Pixel(std::int32_t y, std::int32_t cb, std::int32_t cr) : Pixel(y, chromaTerms<K>(cb, cr)) {}
};

struct Rgb8 {
    Kel8u r, g, b;
};

struct RGBRow {
    Kel8u* p;
    template <typename P> void put(int x, const P& v) const { p[3 * x] = v.r; p[3 * x + 1] = v.g; p[3 * x + 2] = v.b; }
};
struct BGRRow {
    Kel8u* p;
    template <typename P> void put(int x, const P& v) const { p[3 * x] = v.b; p[3 * x + 1] = v.g; p[3 * x + 2] = v.r; }
};
struct BGRARow {  // blue, green, red, then the caller's alpha
    Kel8u* p;
    Kel8u alpha;
    template <typename P> void put(int x, const P& v) const
    {
        p[4 * x] = v.b; p[4 * x + 1] = v.g; p[4 * x + 2] = v.r; p[4 * x + 3] = alpha;
    }
};
struct RGBPlanesRow {
    Kel8u *r, *g, *b;
    template <typename P> void put(int x, const P& v) const { r[x] = v.r; g[x] = v.g; b[x] = v.b; }
};

// Fast inverse kernels work in blocks: the chroma terms of every pixel (a
// cell's terms repeated for its pixels), then each pixel from its luma and
// its terms, then the stores.  Each pass is a plain loop over contiguous
// arrays, which the compiler vectorises; the sums are those of the one-pixel
// formula, so the bytes are too.
constexpr int kBlock = 64;  // pixels

struct TermBlock {
    std::int32_t r[kBlock], g[kBlock], b[kBlock];
};

template <const InverseYCbCr& K>
[[gnu::always_inline]] inline void setPairTerms(TermBlock& t, int i, std::int32_t cb, std::int32_t cr)
{
    const ChromaTerms c = chromaTerms<K>(cb, cr);
    t.r[i] = t.r[i + 1] = c.r;
    t.g[i] = t.g[i + 1] = c.g;
    t.b[i] = t.b[i + 1] = c.b;
}

// n pixels of a block, their luma LumaPitch bytes apart, stored from x0 on.
template <const InverseYCbCr& K, int LumaPitch, typename Row>
[[gnu::always_inline]] inline void blockPixels(const Kel8u* luma, const TermBlock& t, int n, const Row& out, int x0)
{
    Kel8u r[kBlock], g[kBlock], b[kBlock];
    for (int i = 0; i < n; ++i) {
        const std::int32_t l = K.luma * luma[i * LumaPitch];
        r[i] = saturateByte((l + t.r[i]) >> 16);
        g[i] = saturateByte((l + t.g[i]) >> 16);
        b[i] = saturateByte((l + t.b[i]) >> 16);
    }
    for (int i = 0; i < n; ++i) out.put(x0 + i, Rgb8{r[i], g[i], b[i]});
}

// ---- 4:2:2 ------------------------------------------------------------------------------------

// Byte positions of Y0, first chroma, Y1, second chroma in a pixel-order pair.
struct PairLayout {
    int y0, cb, y1, cr;
    int lastChromaFromBefore;  // where a last single pixel finds its missing chroma, before its slot
    bool cbMissing;            // which chroma a cut-short pair lacks
};
constexpr PairLayout kYCbCr{0, 1, 2, 3, -1, false};  // Cr is the byte just before the slot
constexpr PairLayout kYCrCb{0, 3, 2, 1, -1, true};   // Cb is the byte just before the slot
constexpr PairLayout kCbYCr{1, 0, 3, 2, -2, false};  // Cr is two bytes before the slot

// Pairs from the left, both pixels with the pair's chroma.  A last single
// pixel in a pair cut short after its second byte takes its missing chroma
// from the pair before; with no pair before (width 1), its one chroma byte
// serves as both.
template <const InverseYCbCr& K, PairLayout L, typename Row>
void pairsFromPixelOrder(const Kel8u* src, Row dst, int width)
{
    // Whole pairs go in blocks.
    const int pairs = width / 2;
    TermBlock terms;
    for (int x0 = 0; x0 < 2 * pairs; x0 += kBlock) {
        const int n = 2 * pairs - x0 < kBlock ? 2 * pairs - x0 : kBlock;
        const Kel8u* block = src + 2 * x0;  // two bytes a pixel
        for (int i = 0; i < n; i += 2) setPairTerms<K>(terms, i, block[2 * i + L.cb], block[2 * i + L.cr]);
        blockPixels<K, 2>(block + L.y0, terms, n, dst, x0);  // Y0 and Y1 are two bytes apart
    }
    if (width & 1) {
        const Kel8u* slot = src + 4 * pairs;
        const std::int32_t own = L.y0 == 0 ? slot[1] : slot[0];
        const std::int32_t other = pairs > 0 ? slot[L.lastChromaFromBefore] : own;
        const std::int32_t y = slot[L.y0];
        dst.put(width - 1, L.cbMissing ? Pixel<K>(y, other, own) : Pixel<K>(y, own, other));
    }
}

// ---- 4:2:0 -------------------------------------------------------------------------------------

template <const InverseYCbCr& K, typename Row>
void cells420(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* cb, const Kel8u* cr, Row top, Row bottom, int width)
{
    const int columns = width & ~1;
    TermBlock terms;
    for (int x0 = 0; x0 < columns; x0 += kBlock) {
        const int n = columns - x0 < kBlock ? columns - x0 : kBlock;
        for (int i = 0; i < n; i += 2) setPairTerms<K>(terms, i, cb[(x0 + i) / 2], cr[(x0 + i) / 2]);
        blockPixels<K, 1>(yTop + x0, terms, n, top, x0);
        blockPixels<K, 1>(yBottom + x0, terms, n, bottom, x0);
    }
}

// The even pixel of a cell takes the cell's chroma; the odd pixel the mean
// (rounded up) of this cell's and the next; the last cell has no next.
template <typename Row>
void filteredCells420(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* cb, const Kel8u* cr, Row top, Row bottom,
                      int width)
{
    const int cells = width / 2;
    for (int k = 0; k < cells; ++k) {
        const bool last = k + 1 == cells;
        const std::int32_t cbOdd = last ? cb[k] : (cb[k] + cb[k + 1] + 1) >> 1;
        const std::int32_t crOdd = last ? cr[k] : (cr[k] + cr[k + 1] + 1) >> 1;
        const int e = 2 * k, o = e + 1;
        const ChromaTerms even = chromaTerms<inverseF>(cb[k], cr[k]), odd = chromaTerms<inverseF>(cbOdd, crOdd);
        top.put(e, Pixel<inverseF>(yTop[e], even));
        bottom.put(e, Pixel<inverseF>(yBottom[e], even));
        top.put(o, Pixel<inverseF>(yTop[o], odd));
        bottom.put(o, Pixel<inverseF>(yBottom[o], odd));
    }
}

// ---- 4:1:1 and full resolution ----------------------------------------------------------------------

// Groups of four share a chroma pair; the last width & 3 pixels take the
// chroma of the last whole group.
template <typename Row>
void groups411(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Row dst, int width)
{
    const int lastGroup = width / 4 - 1;
    for (int x = 0; x < width; ++x) {
        const int k = x / 4 <= lastGroup ? x / 4 : lastGroup;
        dst.put(x, Pixel<inverseQ>(y[x], cb[k], cr[k]));
    }
}

template <typename Row>
void fullResolution(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Row dst, int width)
{
    for (int x = 0; x < width; ++x) dst.put(x, Pixel<inverseR>(y[x], cb[x], cr[x]));
}

template <typename Row>
void planes422(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Row dst, int width)
{
    for (int x = 0; x < width; ++x) dst.put(x, Pixel<inverseR>(y[x], cb[x / 2], cr[x / 2]));
}

RGBPlanesRow planesRow(Kel8u* const planes[3], int step, int y)
{
    return {rowAt(planes[0], step, y), rowAt(planes[1], step, y), rowAt(planes[2], step, y)};
}

} // namespace

// ---- row kernels and row layers under the library's names -----------------------------------------

void innerYCbCrToRGB422_C2_C3R(const Kel8u* src, Kel8u* dst, int width)
{
    pairsFromPixelOrder<inverseH, kYCbCr>(src, RGBRow{dst}, width);
}
void innerYCbCr422ToRGB_C2_C3P2R(const Kel8u* src, Kel8u* const dst[3], int width)
{
    pairsFromPixelOrder<inverseH, kYCbCr>(src, RGBPlanesRow{dst[0], dst[1], dst[2]}, width);
}
void innerYCrCbToRGB422_C2_C3R(const Kel8u* src, Kel8u* dst, int width)
{
    pairsFromPixelOrder<inverseH, kYCrCb>(src, RGBRow{dst}, width);
}
void innerYCrCb422ToRGB_C2_C3P2R(const Kel8u* src, Kel8u* const dst[3], int width)
{
    pairsFromPixelOrder<inverseH, kYCrCb>(src, RGBPlanesRow{dst[0], dst[1], dst[2]}, width);
}

// The width-1 paths: byte 0 is Y, byte 1 both chroma samples, set H.
void unrealYCbCr(const Kel8u* src, Kel8u* dst) { RGBRow{dst}.put(0, Pixel<inverseH>(src[0], src[1], src[1])); }
void unrealYCrCb(const Kel8u* src, Kel8u* dst) { RGBRow{dst}.put(0, Pixel<inverseH>(src[0], src[1], src[1])); }
void unrealYCbCrP(const Kel8u* src, RGBPlanesRow dst) { dst.put(0, Pixel<inverseH>(src[0], src[1], src[1])); }
void unrealYCrCbP(const Kel8u* src, RGBPlanesRow dst) { dst.put(0, Pixel<inverseH>(src[0], src[1], src[1])); }

void myYCbCrToRGB422_C2_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    for (int y = 0; y < height; ++y) {
        if (width == 1) unrealYCbCr(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y));
        else innerYCbCrToRGB422_C2_C3R(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width);
    }
}
void myYCbCr422ToRGB_C2_C3P2R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], int dstStep, int width, int height)
{
    for (int y = 0; y < height; ++y) {
        const RGBPlanesRow row = planesRow(pDst, dstStep, y);
        Kel8u* const rows[3] = {row.r, row.g, row.b};
        if (width == 1) unrealYCbCrP(rowAt(pSrc, srcStep, y), row);
        else innerYCbCr422ToRGB_C2_C3P2R(rowAt(pSrc, srcStep, y), rows, width);
    }
}
void myYCrCbToRGB422_C2_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    for (int y = 0; y < height; ++y) {
        if (width == 1) unrealYCrCb(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y));
        else innerYCrCbToRGB422_C2_C3R(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width);
    }
}
void myYCrCb422ToRGB_C2_C3P2R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], int dstStep, int width, int height)
{
    for (int y = 0; y < height; ++y) {
        const RGBPlanesRow row = planesRow(pDst, dstStep, y);
        Kel8u* const rows[3] = {row.r, row.g, row.b};
        if (width == 1) unrealYCrCbP(rowAt(pSrc, srcStep, y), row);
        else innerYCrCb422ToRGB_C2_C3P2R(rowAt(pSrc, srcStep, y), rows, width);
    }
}

void innerYCbCr422ToRGB_8u_P3C3R(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Kel8u* dst, int width)
{
    planes422(y, cb, cr, RGBRow{dst}, width);
}
void myYCbCr422ToRGB_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                              int height)
{
    for (int y = 0; y < height; ++y)
        innerYCbCr422ToRGB_8u_P3C3R(rowAt(pSrc[0], srcSteps[0], y), rowAt(pSrc[1], srcSteps[1], y),
                                    rowAt(pSrc[2], srcSteps[2], y), rowAt(pDst, dstStep, y), width);
}

void innerYCbCr420ToRGB_8u_P3C3R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* cb, const Kel8u* cr, Kel8u* top,
                                 Kel8u* bottom, int width)
{
    cells420<inverseT>(yTop, yBottom, cb, cr, RGBRow{top}, RGBRow{bottom}, width);
}
void innerYCbCr420ToBGR_8u_P3C3R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* cb, const Kel8u* cr, Kel8u* top,
                                 Kel8u* bottom, int width)
{
    cells420<inverseU>(yTop, yBottom, cb, cr, BGRRow{top}, BGRRow{bottom}, width);
}

namespace {

template <typename Kernel>
void rowPairs(Kernel kernel, const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
              int height)
{
    for (int j = 0; j < height / 2; ++j)
        kernel(rowAt(pSrc[0], srcSteps[0], 2 * j), rowAt(pSrc[0], srcSteps[0], 2 * j + 1), rowAt(pSrc[1], srcSteps[1], j),
               rowAt(pSrc[2], srcSteps[2], j), rowAt(pDst, dstStep, 2 * j), rowAt(pDst, dstStep, 2 * j + 1), width);
}

} // namespace

void myYCbCr420ToRGB_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                              int height)
{
    rowPairs(innerYCbCr420ToRGB_8u_P3C3R, pSrc, srcSteps, pDst, dstStep, width, height);
}
void myYCbCr420ToBGR_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                              int height)
{
    rowPairs(innerYCbCr420ToBGR_8u_P3C3R, pSrc, srcSteps, pDst, dstStep, width, height);
}
// Plane 1 holds Cr and plane 2 Cb.
void myYCrCb420ToBGR_8u_P3C4R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                              int height, Kel8u alpha)
{
    rowPairs([alpha](const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* cr, const Kel8u* cb, Kel8u* top,
                     Kel8u* bottom, int w) { filteredCells420(yTop, yBottom, cb, cr, BGRARow{top, alpha}, BGRARow{bottom, alpha}, w); },
             pSrc, srcSteps, pDst, dstStep, width, height);
}

// Row loop and kernel in one.
void ownYCbCr422ToBGR_8u_C2C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    for (int y = 0; y < height; ++y)
        pairsFromPixelOrder<inverseH, kYCbCr>(rowAt(pSrc, srcStep, y), BGRRow{rowAt(pDst, dstStep, y)}, width);
}
void ownYCbCr422ToBGR_8u_C2C4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height,
                               Kel8u alpha)
{
    for (int y = 0; y < height; ++y)
        pairsFromPixelOrder<inverseH, kYCbCr>(rowAt(pSrc, srcStep, y), BGRARow{rowAt(pDst, dstStep, y), alpha}, width);
}
void ownYCbCrToBGR_8u_P3C3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    for (int y = 0; y < height; ++y)
        fullResolution(rowAt(pSrc[0], srcStep, y), rowAt(pSrc[1], srcStep, y), rowAt(pSrc[2], srcStep, y),
                       BGRRow{rowAt(pDst, dstStep, y)}, width);
}
void ownYCbCrToBGR_8u_P3C4R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep, int width, int height,
                            Kel8u alpha)
{
    for (int y = 0; y < height; ++y)
        fullResolution(rowAt(pSrc[0], srcStep, y), rowAt(pSrc[1], srcStep, y), rowAt(pSrc[2], srcStep, y),
                       BGRARow{rowAt(pDst, dstStep, y), alpha}, width);
}
void myYCbCr411ToBGR_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                              int height)
{
    for (int y = 0; y < height; ++y)
        groups411(rowAt(pSrc[0], srcSteps[0], y), rowAt(pSrc[1], srcSteps[1], y), rowAt(pSrc[2], srcSteps[2], y),
                  BGRRow{rowAt(pDst, dstStep, y)}, width);
}
void myYCbCr411ToBGR_8u_P3C4R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                              int height, Kel8u alpha)
{
    for (int y = 0; y < height; ++y)
        groups411(rowAt(pSrc[0], srcSteps[0], y), rowAt(pSrc[1], srcSteps[1], y), rowAt(pSrc[2], srcSteps[2], y),
                  BGRARow{rowAt(pDst, dstStep, y), alpha}, width);
}
void myCbYCr422ToRGB_8u_C2C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    for (int y = 0; y < height; ++y)
        pairsFromPixelOrder<inverseR, kCbYCr>(rowAt(pSrc, srcStep, y), RGBRow{rowAt(pDst, dstStep, y)}, width);
}
void myCbYCr422ToBGR_8u_C2AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height,
                               Kel8u alpha)
{
    for (int y = 0; y < height; ++y)
        pairsFromPixelOrder<inverseR, kCbYCr>(rowAt(pSrc, srcStep, y), BGRARow{rowAt(pDst, dstStep, y), alpha}, width);
}

// ---- public functions ---------------------------------------------------------------------------------

namespace {

// Null pointers, the size, then the planes of a planar source.
template <typename Src, typename Dst>
KelResult testsSizeBeforePlanes(Src pSrc, Dst pDst, KelImageSize roi, int minWidth)
{
    if (anyNull(pSrc, pDst))           return kelErrNullPointer;
    if (sizeBelow(roi, minWidth, 1))   return kelErrSize;
    if constexpr (std::is_pointer_v<std::remove_pointer_t<Src>>) if (anyNullPlane(pSrc)) return kelErrNullPointer;
    if constexpr (std::is_pointer_v<std::remove_pointer_t<Dst>>) if (anyNullPlane(pDst)) return kelErrNullPointer;
    return kelOk;
}

// Every pointer, planes included, before the size.
KelResult testsPlanesBeforeSize(const Kel8u* const pSrc[3], const Kel8u* pDst, KelImageSize roi, int minWidth)
{
    if (anyNull(pSrc, pDst) || anyNullPlane(pSrc))  return kelErrNullPointer;
    if (sizeBelow(roi, minWidth, 1))                 return kelErrSize;
    return kelOk;
}

} // namespace

#define KEL_TRY(TEST)                                                  \
    if (const KelResult status = (TEST); status != kelOk) return status

extern "C" {

KEL_API KelResult keliYCbCr422ToRGB_8u_C2C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    KEL_TRY(testsSizeBeforePlanes(pSrc, pDst, roiSize, 1));
    myYCbCrToRGB422_C2_C3R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliYCbCr422ToRGB_8u_C2P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], int dstStep,
                                             KelImageSize roiSize)
{
    KEL_TRY(testsSizeBeforePlanes(pSrc, pDst, roiSize, 1));
    myYCbCr422ToRGB_C2_C3P2R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliYCbCr422ToRGB_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep,
                                             KelImageSize roiSize)
{
    KEL_TRY(testsSizeBeforePlanes(pSrc, pDst, roiSize, 1));
    myYCbCr422ToRGB_8u_P3C3R(pSrc, srcSteps, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliYCrCb422ToRGB_8u_C2C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    KEL_TRY(testsSizeBeforePlanes(pSrc, pDst, roiSize, 1));
    myYCrCbToRGB422_C2_C3R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliYCrCb422ToRGB_8u_C2P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], int dstStep,
                                             KelImageSize roiSize)
{
    KEL_TRY(testsSizeBeforePlanes(pSrc, pDst, roiSize, 1));
    myYCrCb422ToRGB_C2_C3P2R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliYCbCr422ToBGR_8u_C2C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    KEL_TRY(testsSizeBeforePlanes(pSrc, pDst, roiSize, 2));
    ownYCbCr422ToBGR_8u_C2C3R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliYCbCr422ToBGR_8u_C2C4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize,
                                             Kel8u alpha)
{
    KEL_TRY(testsSizeBeforePlanes(pSrc, pDst, roiSize, 2));
    ownYCbCr422ToBGR_8u_C2C4R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height, alpha);
    return kelOk;
}

KEL_API KelResult keliYCbCr420ToRGB_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep,
                                             KelImageSize roiSize)
{
    KEL_TRY(testsSizeBeforePlanes(pSrc, pDst, roiSize, 1));
    myYCbCr420ToRGB_8u_P3C3R(pSrc, srcSteps, pDst, dstStep, roiSize.width, roiSize.height);
    return warnUnlessEven(roiSize);
}

KEL_API KelResult keliYCbCr420ToBGR_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep,
                                             KelImageSize roiSize)
{
    KEL_TRY(testsSizeBeforePlanes(pSrc, pDst, roiSize, 1));
    myYCbCr420ToBGR_8u_P3C3R(pSrc, srcSteps, pDst, dstStep, roiSize.width, roiSize.height);
    return warnUnlessEven(roiSize);
}

KEL_API KelResult keliYCrCb420ToBGR_Filter_8u_P3C4R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst,
                                                    int dstStep, KelImageSize roiSize, Kel8u alpha)
{
    KEL_TRY(testsSizeBeforePlanes(pSrc, pDst, roiSize, 1));
    myYCrCb420ToBGR_8u_P3C4R(pSrc, srcSteps, pDst, dstStep, roiSize.width, roiSize.height, alpha);
    return warnUnlessEven(roiSize);
}

KEL_API KelResult keliYCbCr411ToBGR_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep,
                                             KelImageSize roiSize)
{
    KEL_TRY(testsPlanesBeforeSize(pSrc, pDst, roiSize, 4));
    myYCbCr411ToBGR_8u_P3C3R(pSrc, srcSteps, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliYCbCr411ToBGR_8u_P3C4R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep,
                                             KelImageSize roiSize, Kel8u alpha)
{
    KEL_TRY(testsPlanesBeforeSize(pSrc, pDst, roiSize, 4));
    myYCbCr411ToBGR_8u_P3C4R(pSrc, srcSteps, pDst, dstStep, roiSize.width, roiSize.height, alpha);
    return kelOk;
}

KEL_API KelResult keliYCbCrToBGR_8u_P3C3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep,
                                          KelImageSize roiSize)
{
    KEL_TRY(testsPlanesBeforeSize(pSrc, pDst, roiSize, 1));
    ownYCbCrToBGR_8u_P3C3R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliYCbCrToBGR_8u_P3C4R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep,
                                          KelImageSize roiSize, Kel8u alpha)
{
    KEL_TRY(testsPlanesBeforeSize(pSrc, pDst, roiSize, 1));
    ownYCbCrToBGR_8u_P3C4R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height, alpha);
    return kelOk;
}

KEL_API KelResult keliCbYCr422ToRGB_8u_C2C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    KEL_TRY(testsSizeBeforePlanes(pSrc, pDst, roiSize, 1));
    myCbYCr422ToRGB_8u_C2C3R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliCbYCr422ToBGR_8u_C2C4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize,
                                             Kel8u alpha)
{
    KEL_TRY(testsSizeBeforePlanes(pSrc, pDst, roiSize, 1));
    myCbYCr422ToBGR_8u_C2AC4R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height, alpha);
    return kelOk;
}

} // extern "C"

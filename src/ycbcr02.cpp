// RGB and BGR to studio-range YCbCr, YCrCb and CbYCr with 4:2:2, 4:2:0 and
// 4:1:1 chroma.  The members share the weights of full-resolution YCbCr and
// differ in what a chroma sample averages, the constant before the shift and
// what the pixels that do not fill a cell receive.
#include <cstdint>

#include "callframe.h"
#include "gamma.h"

using namespace kel;

namespace {

// ---- arithmetic ------------------------------------------------------------------------

// Every sum stays inside the byte range after its shift: no clamp is needed.
inline Kel8u lumaOf(std::int32_t r, std::int32_t g, std::int32_t b, std::int32_t c)
{
    return static_cast<Kel8u>((16843 * r + 33030 * g + 6423 * b + c) >> 16);
}
inline std::int32_t blueDifference(std::int32_t r, std::int32_t g, std::int32_t b)
{
    return -9699 * r - 19071 * g + 28770 * b;
}
inline std::int32_t redDifference(std::int32_t r, std::int32_t g, std::int32_t b)
{
    return 28770 * r - 24117 * g - 4653 * b;
}
inline Kel8u chromaOf(std::int32_t difference, std::int32_t k, int shift)
{
    return static_cast<Kel8u>((difference + k) >> shift);
}

constexpr std::int32_t kRoundedLuma = 0x108000;
constexpr std::int32_t kTruncatedLuma = 0x100000;  // the second Y of an RGB pair
constexpr std::int32_t kCellOf4 = 0x2008000;       // 128 at shift 18, with a rounding half

// ---- sources -------------------------------------------------------------------------------

struct Order {
    int r, g, b;
};
constexpr Order kRGB{0, 1, 2}, kBGR{2, 1, 0};

// Pixel x of a pixel-order row of `Pitch` bytes a pixel.
template <int Pitch, Order O>
struct PixelRow {
    const Kel8u* p;
    std::int32_t r(int x) const { return p[x * Pitch + O.r]; }
    std::int32_t g(int x) const { return p[x * Pitch + O.g]; }
    std::int32_t b(int x) const { return p[x * Pitch + O.b]; }
};

// Pixel x of a row of R, G, B planes.
struct PlaneRow {
    const Kel8u *red, *green, *blue;
    std::int32_t r(int x) const { return red[x]; }
    std::int32_t g(int x) const { return green[x]; }
    std::int32_t b(int x) const { return blue[x]; }
};

// A source whose samples first go through the forward BT.709 table.
template <typename Row>
struct GammaRow {
    Row row;
    std::int32_t r(int x) const { return tableFwd8u[row.r(x)]; }
    std::int32_t g(int x) const { return tableFwd8u[row.g(x)]; }
    std::int32_t b(int x) const { return tableFwd8u[row.b(x)]; }
};

// ---- 4:2:2 pairs -----------------------------------------------------------------------------

// Byte positions of a pixel pair in pixel order.
struct PairLayout {
    int y0, cb, y1, cr;
};
constexpr PairLayout kYCbCrPair{0, 1, 2, 3}, kYCrCbPair{0, 3, 2, 1}, kCbYCrPair{1, 0, 3, 2};

struct PairConstants {
    std::int32_t cbK, crK;         // the pair's chroma, shift 17
    std::int32_t yEven, yOdd;      // the two lumas
    std::int32_t singleK;          // a last single pixel's chroma, shift 16
};
constexpr PairConstants kRGBPair{0x1010000, 0x1010000, kRoundedLuma, kTruncatedLuma, 0x808000};
constexpr PairConstants kBGRPair{0x1004000, 0x1004000, kRoundedLuma, kRoundedLuma, 0x802000};
constexpr PairConstants kBGRCbYCrPair{0x1010000, 0x100FFFE, kRoundedLuma, kRoundedLuma, 0x808000};  // Cr two below Cb

// Pairs into pixel order.  A last single pixel writes the first two bytes of
// its slot (its Y and the chroma sample stored next to it) from its own colour.
template <PairLayout L, PairConstants K, typename Row>
void pairsToPixelOrder(Row src, Kel8u* dst, int width)
{
    // Whole pairs go in blocks: the samples gathered into plain arrays first,
    // then each pair from them, in loops the compiler vectorises.
    const int pairs = width / 2;
    constexpr int kBlock = 64;  // pixels
    std::int32_t r[kBlock], g[kBlock], b[kBlock];
    for (int x0 = 0; x0 < 2 * pairs; x0 += kBlock) {
        const int n = 2 * pairs - x0 < kBlock ? 2 * pairs - x0 : kBlock;
        for (int i = 0; i < n; ++i) {
            r[i] = src.r(x0 + i);
            g[i] = src.g(x0 + i);
            b[i] = src.b(x0 + i);
        }
        Kel8u* block = dst + 2 * x0;  // two bytes a pixel
        for (int k = 0; k < n / 2; ++k) {
            const int e = 2 * k, o = e + 1;
            const std::int32_t sr = r[e] + r[o], sg = g[e] + g[o], sb = b[e] + b[o];
            Kel8u* pair = block + 4 * k;
            pair[L.y0] = lumaOf(r[e], g[e], b[e], K.yEven);
            pair[L.y1] = lumaOf(r[o], g[o], b[o], K.yOdd);
            pair[L.cb] = chromaOf(blueDifference(sr, sg, sb), K.cbK, 17);
            pair[L.cr] = chromaOf(redDifference(sr, sg, sb), K.crK, 17);
        }
    }
    if (width & 1) {
        const int x = width - 1;
        const std::int32_t r = src.r(x), g = src.g(x), b = src.b(x);
        const Kel8u y = lumaOf(r, g, b, kRoundedLuma);
        const Kel8u cb = chromaOf(blueDifference(r, g, b), K.singleK, 16);
        const Kel8u cr = chromaOf(redDifference(r, g, b), K.singleK, 16);
        Kel8u* slot = dst + 4 * pairs;
        for (int i = 0; i < 2; ++i) slot[i] = i == L.y0 ? y : i == L.cb ? cb : cr;
    }
}

// Pairs into planes; a last single pixel writes its Y only.
template <PairConstants K, typename Row>
void pairsToPlanes(Row src, Kel8u* y, Kel8u* cb, Kel8u* cr, int width)
{
    for (int k = 0; k < width / 2; ++k) {
        const int e = 2 * k, o = e + 1;
        const std::int32_t sr = src.r(e) + src.r(o), sg = src.g(e) + src.g(o), sb = src.b(e) + src.b(o);
        y[e] = lumaOf(src.r(e), src.g(e), src.b(e), K.yEven);
        y[o] = lumaOf(src.r(o), src.g(o), src.b(o), K.yOdd);
        cb[k] = chromaOf(blueDifference(sr, sg, sb), K.cbK, 17);
        cr[k] = chromaOf(redDifference(sr, sg, sb), K.crK, 17);
    }
    if (width & 1) {
        const int x = width - 1;
        y[x] = lumaOf(src.r(x), src.g(x), src.b(x), kRoundedLuma);
    }
}

// The CbYCr filter: weights 1/4, 1/2, 1/4 centred on the even pixel of each
// pair, the quarter of the previous odd pixel carried along the row.  The
// first pair has no left tap: the carry starts at 0.
template <typename Row>
void filteredCbYCr(Row src, Kel8u* dst, int width)
{
    std::int32_t carryB = 0, carryR = 0;
    const int pairs = width / 2;
    for (int k = 0; k < pairs; ++k) {
        const int e = 2 * k, o = e + 1;
        const std::int32_t be = blueDifference(src.r(e), src.g(e), src.b(e));
        const std::int32_t re = redDifference(src.r(e), src.g(e), src.b(e));
        const std::int32_t bo = blueDifference(src.r(o), src.g(o), src.b(o));
        const std::int32_t ro = redDifference(src.r(o), src.g(o), src.b(o));
        Kel8u* pair = dst + 4 * k;
        pair[0] = static_cast<Kel8u>(((be >> 1) + carryB + (bo >> 2) + 0x807FFF) >> 16);
        pair[1] = lumaOf(src.r(e), src.g(e), src.b(e), kRoundedLuma);
        pair[2] = static_cast<Kel8u>(((re >> 1) + carryR + (ro >> 2) + 0x807FFF) >> 16);
        pair[3] = lumaOf(src.r(o), src.g(o), src.b(o), kRoundedLuma);
        carryB = bo >> 2;
        carryR = ro >> 2;
    }
    if (width & 1) {
        const int x = width - 1;
        Kel8u* slot = dst + 4 * pairs;
        slot[0] = chromaOf(blueDifference(src.r(x), src.g(x), src.b(x)), 0x808000, 16);
        slot[1] = lumaOf(src.r(x), src.g(x), src.b(x), kRoundedLuma);
    }
}

// ---- 4:2:0 cells and 4:1:1 groups --------------------------------------------------------------

// A row pair: width / 2 cells of 2 x 2; an odd last column is not read.  The
// cells go in blocks: the samples of both rows are gathered into plain
// arrays, then luma and the cells' chroma come from them in loops the
// compiler vectorises.
template <typename Row>
void cells420(Row top, Row bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* cb, Kel8u* cr, int width)
{
    constexpr int kBlock = 64;  // pixels
    const int columns = width & ~1;
    std::int32_t r[2][kBlock], g[2][kBlock], b[2][kBlock];
    for (int x0 = 0; x0 < columns; x0 += kBlock) {
        const int n = columns - x0 < kBlock ? columns - x0 : kBlock;
        for (int i = 0; i < n; ++i) {
            r[0][i] = top.r(x0 + i); g[0][i] = top.g(x0 + i); b[0][i] = top.b(x0 + i);
            r[1][i] = bottom.r(x0 + i); g[1][i] = bottom.g(x0 + i); b[1][i] = bottom.b(x0 + i);
        }
        for (int i = 0; i < n; ++i) {
            yTop[x0 + i] = lumaOf(r[0][i], g[0][i], b[0][i], kRoundedLuma);
            yBottom[x0 + i] = lumaOf(r[1][i], g[1][i], b[1][i], kRoundedLuma);
        }
        for (int k = 0; k < n / 2; ++k) {
            const int e = 2 * k, o = e + 1;
            const std::int32_t sr = r[0][e] + r[0][o] + r[1][e] + r[1][o];
            const std::int32_t sg = g[0][e] + g[0][o] + g[1][e] + g[1][o];
            const std::int32_t sb = b[0][e] + b[0][o] + b[1][e] + b[1][o];
            cb[x0 / 2 + k] = chromaOf(blueDifference(sr, sg, sb), kCellOf4, 18);
            cr[x0 / 2 + k] = chromaOf(redDifference(sr, sg, sb), kCellOf4, 18);
        }
    }
}

// width / 4 groups of four; the last width & 3 pixels are not converted at all.
template <typename Row>
void groups411(Row src, Kel8u* y, Kel8u* cb, Kel8u* cr, int width)
{
    for (int k = 0; k < width / 4; ++k) {
        std::int32_t sr = 0, sg = 0, sb = 0;
        for (int x = 4 * k; x < 4 * k + 4; ++x) {
            y[x] = lumaOf(src.r(x), src.g(x), src.b(x), kRoundedLuma);
            sr += src.r(x);
            sg += src.g(x);
            sb += src.b(x);
        }
        cb[k] = chromaOf(blueDifference(sr, sg, sb), kCellOf4, 18);
        cr[k] = chromaOf(redDifference(sr, sg, sb), kCellOf4, 18);
    }
}

template <int Pitch, Order O>
PixelRow<Pitch, O> pixelRow(const Kel8u* base, int step, int y)
{
    return {rowAt(base, step, y)};
}

} // namespace

// ---- RGB members: row layer and kernel ---------------------------------------------------------

void innerRGBToYCbCr422_C3_C2R(const Kel8u* src, Kel8u* dst, int width)
{
    pairsToPixelOrder<kYCbCrPair, kRGBPair>(PixelRow<3, kRGB>{src}, dst, width);
}
void innerRGBToYCbCr422_C3P2_C3R(const Kel8u* const src[3], Kel8u* dst, int width)
{
    pairsToPixelOrder<kYCbCrPair, kRGBPair>(PlaneRow{src[0], src[1], src[2]}, dst, width);
}
void innerRGBToYCrCb422_C3_C2R(const Kel8u* src, Kel8u* dst, int width)
{
    pairsToPixelOrder<kYCrCbPair, kRGBPair>(PixelRow<3, kRGB>{src}, dst, width);
}
void innerRGBToYCrCb422_C3P2_C3R(const Kel8u* const src[3], Kel8u* dst, int width)
{
    pairsToPixelOrder<kYCrCbPair, kRGBPair>(PlaneRow{src[0], src[1], src[2]}, dst, width);
}
void innerRGBToYCbCr420_8u_C3P3R(const Kel8u* top, const Kel8u* bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* cb,
                                 Kel8u* cr, int width)
{
    cells420(PixelRow<3, kRGB>{top}, PixelRow<3, kRGB>{bottom}, yTop, yBottom, cb, cr, width);
}

void myRGBToYCbCr422_C3_C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    for (int y = 0; y < height; ++y) innerRGBToYCbCr422_C3_C2R(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width);
}
void myRGBToYCbCr422_C3P2_C2R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    for (int y = 0; y < height; ++y) {
        const Kel8u* rows[3] = {rowAt(pSrc[0], srcStep, y), rowAt(pSrc[1], srcStep, y), rowAt(pSrc[2], srcStep, y)};
        innerRGBToYCbCr422_C3P2_C3R(rows, rowAt(pDst, dstStep, y), width);
    }
}
void myRGBToYCrCb422_C3_C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    for (int y = 0; y < height; ++y) innerRGBToYCrCb422_C3_C2R(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width);
}
void myRGBToYCrCb422_C3P2_C2R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    for (int y = 0; y < height; ++y) {
        const Kel8u* rows[3] = {rowAt(pSrc[0], srcStep, y), rowAt(pSrc[1], srcStep, y), rowAt(pSrc[2], srcStep, y)};
        innerRGBToYCrCb422_C3P2_C3R(rows, rowAt(pDst, dstStep, y), width);
    }
}
void myRGBToYCbCr420_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], int width,
                              int height)
{
    for (int j = 0; j < height / 2; ++j)
        innerRGBToYCbCr420_8u_C3P3R(rowAt(pSrc, srcStep, 2 * j), rowAt(pSrc, srcStep, 2 * j + 1),
                                    rowAt(pDst[0], dstSteps[0], 2 * j), rowAt(pDst[0], dstSteps[0], 2 * j + 1),
                                    rowAt(pDst[1], dstSteps[1], j), rowAt(pDst[2], dstSteps[2], j), width);
}

// ---- BGR members: row loop and kernel in one -----------------------------------------------------

namespace {

template <int Pitch>
void bgr422ToPixelOrder(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    for (int y = 0; y < height; ++y)
        pairsToPixelOrder<kYCbCrPair, kBGRPair>(pixelRow<Pitch, kBGR>(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width);
}

template <int Pitch>
void bgr422ToPlanes(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], int width, int height)
{
    for (int y = 0; y < height; ++y)
        pairsToPlanes<kBGRPair>(pixelRow<Pitch, kBGR>(pSrc, srcStep, y), rowAt(pDst[0], dstSteps[0], y),
                                rowAt(pDst[1], dstSteps[1], y), rowAt(pDst[2], dstSteps[2], y), width);
}

template <int Pitch>
void bgr420(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], int width, int height)
{
    for (int j = 0; j < height / 2; ++j)
        cells420(pixelRow<Pitch, kBGR>(pSrc, srcStep, 2 * j), pixelRow<Pitch, kBGR>(pSrc, srcStep, 2 * j + 1),
                 rowAt(pDst[0], dstSteps[0], 2 * j), rowAt(pDst[0], dstSteps[0], 2 * j + 1),
                 rowAt(pDst[1], dstSteps[1], j), rowAt(pDst[2], dstSteps[2], j), width);
}

template <int Pitch>
void bgr411(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], int width, int height)
{
    for (int y = 0; y < height; ++y)
        groups411(pixelRow<Pitch, kBGR>(pSrc, srcStep, y), rowAt(pDst[0], dstSteps[0], y),
                  rowAt(pDst[1], dstSteps[1], y), rowAt(pDst[2], dstSteps[2], y), width);
}

} // namespace

void ownBGRToYCbCr422_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    bgr422ToPixelOrder<3>(pSrc, srcStep, pDst, dstStep, width, height);
}
void ownBGRToYCbCr422_8u_AC4C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    bgr422ToPixelOrder<4>(pSrc, srcStep, pDst, dstStep, width, height);
}
void ownBGRToYCbCr422_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], int width,
                               int height)
{
    bgr422ToPlanes<3>(pSrc, srcStep, pDst, dstSteps, width, height);
}
void ownBGRToYCbCr422_8u_AC4P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                int width, int height)
{
    bgr422ToPlanes<4>(pSrc, srcStep, pDst, dstSteps, width, height);
}
void ownBGRToYCbCr420_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], int width,
                               int height)
{
    bgr420<3>(pSrc, srcStep, pDst, dstSteps, width, height);
}
void ownBGRToYCbCr420_8u_AC4P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                int width, int height)
{
    bgr420<4>(pSrc, srcStep, pDst, dstSteps, width, height);
}
void ownBGRToYCbCr411_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], int width,
                               int height)
{
    bgr411<3>(pSrc, srcStep, pDst, dstSteps, width, height);
}
void ownBGRToYCbCr411_8u_AC4P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                int width, int height)
{
    bgr411<4>(pSrc, srcStep, pDst, dstSteps, width, height);
}

// ---- CbYCr members: row loop and kernel in one -------------------------------------------------

void myRGBToCbYCr422_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    for (int y = 0; y < height; ++y) filteredCbYCr(pixelRow<3, kRGB>(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width);
}
void myRGBToCbYCr422Gamma_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    for (int y = 0; y < height; ++y)
        filteredCbYCr(GammaRow<PixelRow<3, kRGB>>{pixelRow<3, kRGB>(pSrc, srcStep, y)}, rowAt(pDst, dstStep, y), width);
}
void myBGRToCbYCr422_8u_AC4C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    for (int y = 0; y < height; ++y)
        pairsToPixelOrder<kCbYCrPair, kBGRCbYCrPair>(pixelRow<4, kBGR>(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width);
}

// ---- public functions ------------------------------------------------------------------------------

namespace {

using PixelLayer = void (*)(const Kel8u*, int, Kel8u*, int, int, int);
using PlanesLayer = void (*)(const Kel8u*, int, Kel8u* const[3], const int[3], int, int);

// RGB and CbYCr members into pixel order: null pointers, then the size.
KelResult toPixelOrder(PixelLayer layer, const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roi,
                       int minWidth)
{
    if (anyNull(pSrc, pDst))             return kelErrNullPointer;
    if (sizeBelow(roi, minWidth, 1))     return kelErrSize;
    layer(pSrc, srcStep, pDst, dstStep, roi.width, roi.height);
    return kelOk;
}

// BGR members into planes: every pointer, planes included, before the size.
KelResult bgrToPlanes(PlanesLayer layer, const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                      KelImageSize roi, int minWidth, int minHeight)
{
    if (anyNull(pSrc, pDst) || anyNullPlane(pDst))  return kelErrNullPointer;
    if (sizeBelow(roi, minWidth, minHeight))         return kelErrSize;
    layer(pSrc, srcStep, pDst, dstSteps, roi.width, roi.height);
    return kelOk;
}

// The YCrCb 4:2:0 members are the YCbCr ones with planes 1 and 2 exchanged.
KelResult bgrToCrCbPlanes(PlanesLayer layer, const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3],
                          const int dstSteps[3], KelImageSize roi)
{
    if (anyNull(pSrc, pDst) || anyNullPlane(pDst))  return kelErrNullPointer;
    if (sizeBelow(roi, 2, 2))                        return kelErrSize;
    Kel8u* const swapped[3] = {pDst[0], pDst[2], pDst[1]};
    const int swappedSteps[3] = {dstSteps[0], dstSteps[2], dstSteps[1]};
    layer(pSrc, srcStep, swapped, swappedSteps, roi.width, roi.height);
    return warnUnlessEven(roi);
}

} // namespace

extern "C" {

KEL_API KelResult keliRGBToYCbCr422_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    return toPixelOrder(myRGBToYCbCr422_C3_C2R, pSrc, srcStep, pDst, dstStep, roiSize, 1);
}

KEL_API KelResult keliRGBToYCrCb422_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    return toPixelOrder(myRGBToYCrCb422_C3_C2R, pSrc, srcStep, pDst, dstStep, roiSize, 1);
}

KEL_API KelResult keliRGBToYCbCr422_8u_P3C2R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep,
                                             KelImageSize roiSize)
{
    if (anyNull(pSrc, pDst))        return kelErrNullPointer;
    if (sizeBelow(roiSize, 1, 1))   return kelErrSize;
    if (anyNullPlane(pSrc))         return kelErrNullPointer;
    myRGBToYCbCr422_C3P2_C2R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliRGBToYCrCb422_8u_P3C2R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep,
                                             KelImageSize roiSize)
{
    if (anyNull(pSrc, pDst))        return kelErrNullPointer;
    if (sizeBelow(roiSize, 1, 1))   return kelErrSize;
    if (anyNullPlane(pSrc))         return kelErrNullPointer;
    myRGBToYCrCb422_C3P2_C2R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliRGBToYCbCr420_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                             KelImageSize roiSize)
{
    if (anyNull(pSrc, pDst))        return kelErrNullPointer;
    if (sizeBelow(roiSize, 1, 1))   return kelErrSize;
    if (anyNullPlane(pDst))         return kelErrNullPointer;
    myRGBToYCbCr420_8u_C3P3R(pSrc, srcStep, pDst, dstSteps, roiSize.width, roiSize.height);
    return warnUnlessEven(roiSize);
}

KEL_API KelResult keliBGRToYCbCr422_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    return toPixelOrder(ownBGRToYCbCr422_8u_C3C2R, pSrc, srcStep, pDst, dstStep, roiSize, 2);
}

KEL_API KelResult keliBGRToYCbCr422_8u_AC4C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    return toPixelOrder(ownBGRToYCbCr422_8u_AC4C2R, pSrc, srcStep, pDst, dstStep, roiSize, 2);
}

KEL_API KelResult keliBGRToYCbCr422_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                             KelImageSize roiSize)
{
    return bgrToPlanes(ownBGRToYCbCr422_8u_C3P3R, pSrc, srcStep, pDst, dstSteps, roiSize, 2, 1);
}

KEL_API KelResult keliBGRToYCbCr422_8u_AC4P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                              KelImageSize roiSize)
{
    return bgrToPlanes(ownBGRToYCbCr422_8u_AC4P3R, pSrc, srcStep, pDst, dstSteps, roiSize, 2, 1);
}

KEL_API KelResult keliBGRToYCbCr420_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                             KelImageSize roiSize)
{
    const KelResult status = bgrToPlanes(ownBGRToYCbCr420_8u_C3P3R, pSrc, srcStep, pDst, dstSteps, roiSize, 2, 2);
    return status == kelOk ? warnUnlessEven(roiSize) : status;
}

KEL_API KelResult keliBGRToYCbCr420_8u_AC4P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                              KelImageSize roiSize)
{
    const KelResult status = bgrToPlanes(ownBGRToYCbCr420_8u_AC4P3R, pSrc, srcStep, pDst, dstSteps, roiSize, 2, 2);
    return status == kelOk ? warnUnlessEven(roiSize) : status;
}

KEL_API KelResult keliBGRToYCrCb420_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                             KelImageSize roiSize)
{
    return bgrToCrCbPlanes(ownBGRToYCbCr420_8u_C3P3R, pSrc, srcStep, pDst, dstSteps, roiSize);
}

KEL_API KelResult keliBGRToYCrCb420_8u_AC4P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                              KelImageSize roiSize)
{
    return bgrToCrCbPlanes(ownBGRToYCbCr420_8u_AC4P3R, pSrc, srcStep, pDst, dstSteps, roiSize);
}

KEL_API KelResult keliBGRToYCbCr411_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                             KelImageSize roiSize)
{
    const KelResult status = bgrToPlanes(ownBGRToYCbCr411_8u_C3P3R, pSrc, srcStep, pDst, dstSteps, roiSize, 4, 1);
    return status == kelOk && (roiSize.width & 3) ? kelWarnOddSize : status;
}

KEL_API KelResult keliBGRToYCbCr411_8u_AC4P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                              KelImageSize roiSize)
{
    const KelResult status = bgrToPlanes(ownBGRToYCbCr411_8u_AC4P3R, pSrc, srcStep, pDst, dstSteps, roiSize, 4, 1);
    return status == kelOk && (roiSize.width & 3) ? kelWarnOddSize : status;
}

KEL_API KelResult keliRGBToCbYCr422_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    return toPixelOrder(myRGBToCbYCr422_8u_C3C2R, pSrc, srcStep, pDst, dstStep, roiSize, 1);
}

// The one member of the family that tests its strides.
KEL_API KelResult keliRGBToCbYCr422Gamma_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep,
                                                  KelImageSize roiSize)
{
    if (anyNull(pSrc, pDst))             return kelErrNullPointer;
    if (sizeBelow(roiSize, 1, 1))        return kelErrSize;
    if (stepBelowOne(srcStep, dstStep))  return kelErrStep;
    myRGBToCbYCr422Gamma_8u_C3C2R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliBGRToCbYCr422_8u_AC4C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    return toPixelOrder(myBGRToCbYCr422_8u_AC4C2R, pSrc, srcStep, pDst, dstStep, roiSize, 1);
}

} // extern "C"

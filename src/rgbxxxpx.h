// YCbCr and YUV to one 16-bit word a pixel: the five arithmetics, the 565,
// 555 and 444 packings, truncation or ordered dither, and the scalar row kernels.
#pragma once

#include <cstddef>
#include <cstdint>

#include "callframe.h"

// The 4 x 4 dither thresholds, row-major by image row and column: the first
// serves the 5- and 6-bit fields, the second (289 times the pattern) the
// 4-bit fields.  The first is close to 139.8 times the pattern but holds its
// own rounded values.
extern const std::int32_t bayer_thresh_int[16];
extern const std::int32_t bayer_thresh_int_4[16];

namespace kel::packed {

// ---- colour arithmetic ------------------------------------------------------------------------------
// Each arithmetic gives a luma term and, once per chroma sample pair, the
// three chroma terms; a channel is (luma + term) >> kShift, clamped.  All
// sums stay inside -370 .. 629 after the shift, and far inside 32 bits before.

struct ChromaTerms16 {
    std::int32_t r, g, b;
};

// 13 fractional coefficient bits and 4 in the intermediate; every product is
// shifted on its own, before the sum.
struct Coarse {
    static constexpr int kShift = 4;
    static std::int32_t luma(std::int32_t y) { return ((y - 16) * 128 * 9535) >> 16; }
    static ChromaTerms16 chroma(std::int32_t cb, std::int32_t cr)
    {
        const std::int32_t u = (cb - 128) * 128, v = (cr - 128) * 128;
        return {(v * 13074) >> 16, -((u * 3211) >> 16) - ((v * 6660) >> 16), (u * 16523) >> 16};
    }
};

// 16 fractional bits, the luma offset 16 x 76284 = 1220544 in the luma term.
struct Fine {
    static constexpr int kShift = 16;
    static std::int32_t luma(std::int32_t y) { return y * 76284 - 1220544; }
    static ChromaTerms16 chroma(std::int32_t cb, std::int32_t cr)
    {
        const std::int32_t u = cb - 128, v = cr - 128;
        return {v * 104595, u * -25690 + v * -53281, u * 132186};
    }
};

// 4:2:2 pixel order: the chroma samples taken unsigned, with all offsets
// folded into one constant a channel.  The constants are not the fine
// arithmetic's offsets summed: they differ in their low bits, and so do some
// results.
struct Folded {
    static constexpr int kShift = 16;
    static std::int32_t luma(std::int32_t y) { return y * 76284; }
    static ChromaTerms16 chroma(std::int32_t cb, std::int32_t cr)
    {
        return {cr * 104595 - 14608761, -cr * 53281 - cb * 25690 + 8887730, cb * 132186 - 18140365};
    }
};

// Full-range YUV, 16 fractional bits, no luma offset or scale.
struct YuvFine {
    static constexpr int kShift = 16;
    static std::int32_t luma(std::int32_t y) { return y * 65536; }
    static ChromaTerms16 chroma(std::int32_t u, std::int32_t v)
    {
        u -= 128;
        v -= 128;
        return {v * 74711, -v * 38076 - u * 25821, u * 133169};
    }
};

// Full-range YUV in the coarse scheme: luma times 16, products shifted alone.
struct YuvCoarse {
    static constexpr int kShift = 4;
    static std::int32_t luma(std::int32_t y) { return y * 16; }
    static ChromaTerms16 chroma(std::int32_t u, std::int32_t v)
    {
        u = (u - 128) * 128;
        v = (v - 128) * 128;
        return {(v * 9338) >> 16, -((u * 3227) >> 16) - ((v * 4759) >> 16), (u * 16646) >> 16};
    }
};

template <class A>
inline std::int32_t channel(std::int32_t luma, std::int32_t term)
{
    return saturateByte((luma + term) >> A::kShift);
}

// ---- packing ---------------------------------------------------------------------------------------

enum class Packing { k565, k555, k444 };

// Field widths and places: red at bit 0 and blue at `farShift` (swapRB
// exchanges the two), green at `greenShift`.
struct FieldLayout {
    int redBits, greenBits, blueBits, greenShift, farShift;
};
template <Packing P>
inline constexpr FieldLayout kFields = P == Packing::k565   ? FieldLayout{5, 6, 5, 5, 11}
                                       : P == Packing::k555 ? FieldLayout{5, 5, 5, 5, 10}
                                                            : FieldLayout{4, 4, 4, 4, 8};

// One colour value to a field of `Bits` bits with the 4 x 4 threshold t: the
// level below c, raised by one where what it leaves over (in 1/256 of a
// colour step) passes the threshold strictly.  The 6-bit field compares with
// t / 2, its level step being about half the others'.  c = 255 never
// overflows the field.
template <int Bits>
inline std::int32_t ditherField(std::int32_t c, std::int32_t t)
{
    if constexpr (Bits == 5) {
        const std::int32_t q = (c * 31) >> 8;
        return q + (t < c * 256 - q * 2105 ? 1 : 0);
    } else if constexpr (Bits == 6) {
        const std::int32_t q = (c * 63) >> 8;
        return q + (c * 256 - q * 1036 > (t >> 1) ? 1 : 0);
    } else {
        static_assert(Bits == 4);
        const std::int32_t q = (c * 15) >> 8;
        return q + (t < c * 256 - q * 4352 ? 1 : 0);
    }
}

// One pixel's word: truncated, or dithered against t.
template <Packing P, bool Dither>
inline Kel16u packPixel(std::int32_t r, std::int32_t g, std::int32_t b, std::int32_t t, bool swapRB)
{
    constexpr FieldLayout F = kFields<P>;
    std::int32_t red, green, blue;
    if constexpr (Dither) {
        red = ditherField<F.redBits>(r, t);
        green = ditherField<F.greenBits>(g, t);
        blue = ditherField<F.blueBits>(b, t);
    } else {
        (void)t;
        red = r >> (8 - F.redBits);
        green = g >> (8 - F.greenBits);
        blue = b >> (8 - F.blueBits);
    }
    const int redShift = swapRB ? F.farShift : 0, blueShift = swapRB ? 0 : F.farShift;
    return static_cast<Kel16u>((red << redShift) | (green << F.greenShift) | (blue << blueShift));
}

// The four thresholds of image row y (counted from the region's top), or
// none without dither.
template <Packing P, bool Dither>
inline const std::int32_t* thresholdRow(int y)
{
    if constexpr (!Dither) {
        (void)y;
        return nullptr;
    } else {
        return (P == Packing::k444 ? bayer_thresh_int_4 : bayer_thresh_int) + 4 * (y & 3);
    }
}

template <class A, Packing P, bool Dither>
inline Kel16u convertPixel(std::int32_t y, const ChromaTerms16& c, const std::int32_t* thresholds, int x, bool swapRB)
{
    const std::int32_t luma = A::luma(y);
    const std::int32_t t = Dither ? thresholds[x & 3] : 0;
    return packPixel<P, Dither>(channel<A>(luma, c.r), channel<A>(luma, c.g), channel<A>(luma, c.b), t, swapRB);
}

// ---- scalar row kernels ----------------------------------------------------------------------------
// Each converts pixels x0 .. width - 1 of its row(s); a vector kernel that
// stopped at x0 leaves the rest to them.  x counts from the region's left
// edge, so the thresholds keep their columns.

// 4:4:4 planes.
template <class A, Packing P, bool Dither>
void innerPlanesRow(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Kel16u* dst, int x0, int width, bool swapRB,
                    const std::int32_t* thresholds)
{
    for (int x = x0; x < width; ++x)
        dst[x] = convertPixel<A, P, Dither>(y[x], A::chroma(cb[x], cr[x]), thresholds, x, swapRB);
}

// 4:4:4 pixel order Y, Cb, Cr.
template <class A, Packing P, bool Dither>
void innerPixelsRow(const Kel8u* src, Kel16u* dst, int x0, int width, bool swapRB, const std::int32_t* thresholds)
{
    for (int x = x0; x < width; ++x) {
        const Kel8u* p = src + 3 * x;
        dst[x] = convertPixel<A, P, Dither>(p[0], A::chroma(p[1], p[2]), thresholds, x, swapRB);
    }
}

// Sub-sampled planes: one or two luma rows (y1 null for one) over one chroma
// row, the chroma terms once a column pair; an odd last column takes chroma
// sample (width - 1) >> 1 alone.  x0 is even.
template <class A, Packing P, bool Dither>
void innerCellRows(const Kel8u* y0, const Kel8u* y1, const Kel8u* cb, const Kel8u* cr, Kel16u* d0, Kel16u* d1, int x0,
                   int width, bool swapRB, const std::int32_t* t0, const std::int32_t* t1)
{
    for (int x = x0; x < width; x += 2) {
        const ChromaTerms16 c = A::chroma(cb[x >> 1], cr[x >> 1]);
        const bool pair = x + 1 < width;
        d0[x] = convertPixel<A, P, Dither>(y0[x], c, t0, x, swapRB);
        if (pair) d0[x + 1] = convertPixel<A, P, Dither>(y0[x + 1], c, t0, x + 1, swapRB);
        if (y1 == nullptr) continue;
        d1[x] = convertPixel<A, P, Dither>(y1[x], c, t1, x, swapRB);
        if (pair) d1[x + 1] = convertPixel<A, P, Dither>(y1[x + 1], c, t1, x + 1, swapRB);
    }
}

// 4:2:2 pixel order Y0, Cb, Y1, Cr, x0 even.  The last pixel of an odd width
// has only Y and Cb in its row: without dither it takes Cr from the byte
// before its Y (the Cr of the pair to its left) where there is one, and Cb
// for both at a width of 1; with dither it always uses Cb for both.
template <class A, Packing P, bool Dither>
void innerPairsRow(const Kel8u* src, Kel16u* dst, int x0, int width, bool swapRB, const std::int32_t* thresholds)
{
    const int pairs = width & ~1;
    for (int x = x0; x < pairs; x += 2) {
        const Kel8u* p = src + 2 * x;
        const ChromaTerms16 c = A::chroma(p[1], p[3]);
        dst[x] = convertPixel<A, P, Dither>(p[0], c, thresholds, x, swapRB);
        dst[x + 1] = convertPixel<A, P, Dither>(p[2], c, thresholds, x + 1, swapRB);
    }
    if (pairs < width && x0 <= pairs) {
        const Kel8u* p = src + 2 * pairs;
        const Kel8u cr = !Dither && pairs > 0 ? p[-1] : p[1];
        dst[pairs] = convertPixel<A, P, Dither>(p[0], A::chroma(p[1], cr), thresholds, pairs, swapRB);
    }
}

// ---- row walks ---------------------------------------------------------------------------------------
// dstStep is in 16-bit elements.  A vector kernel (null where there is none)
// converts a row's first pixels and returns how many; the scalar kernel
// finishes the row.

inline Kel16u* elementRow(Kel16u* dst, int dstStep, int y)
{
    return dst + static_cast<std::ptrdiff_t>(dstStep) * y;
}

// Pixel-order rows that lie back to back in both images, without dither,
// are one row of width x height pixels (when that count fits an int).
inline bool asOneRow(int srcStep, int srcPitch, int dstStep, int width, int height)
{
    return srcStep == srcPitch * width && dstStep == width &&
           static_cast<std::int64_t>(width) * height <= INT32_MAX;
}

template <class A, Packing P, bool Dither>
void walkPlanes(const Kel8u* const src[3], int srcStep, Kel16u* dst, int dstStep, int width, int height, bool swapRB)
{
    const PlaneRows<const Kel8u> in(src, srcStep);
    forEachRow(height, [&](int y) {
        innerPlanesRow<A, P, Dither>(in.row(0, y), in.row(1, y), in.row(2, y), elementRow(dst, dstStep, y), 0, width,
                                     swapRB, thresholdRow<P, Dither>(y));
    });
}

template <class A, Packing P, bool Dither>
void walkPixels(const Kel8u* src, int srcStep, Kel16u* dst, int dstStep, int width, int height, bool swapRB)
{
    if (!Dither && asOneRow(srcStep, 3, dstStep, width, height)) {
        innerPixelsRow<A, P, Dither>(src, dst, 0, width * height, swapRB, nullptr);
        return;
    }
    forEachRow(height, [&](int y) {
        innerPixelsRow<A, P, Dither>(rowAt(src, srcStep, y), elementRow(dst, dstStep, y), 0, width, swapRB,
                                     thresholdRow<P, Dither>(y));
    });
}

// A vector kernel of sub-sampled planes: the arguments of innerCellRows
// without x0; returns the (even) count of columns done.
using CellRowsKernel = int (*)(const Kel8u* y0, const Kel8u* y1, const Kel8u* cb, const Kel8u* cr, Kel16u* d0, Kel16u* d1,
                               int width, bool swapRB, const std::int32_t* t0, const std::int32_t* t1);

inline CellRowsKernel noCellKernel()
{
    return nullptr;
}

// 4:2:2 planes (RowPairs false) or 4:2:0 planes (row pairs over one chroma
// row; an odd last row takes chroma row (height - 1) >> 1 alone).  Choose
// gives the vector kernel, once a call.
template <class A, Packing P, bool Dither, bool RowPairs, CellRowsKernel (*Choose)() = noCellKernel>
void walkCells(const Kel8u* const src[3], const int srcSteps[3], Kel16u* dst, int dstStep, int width, int height,
               bool swapRB)
{
    const CellRowsKernel vector = Choose();
    const PlaneRows<const Kel8u> in(src, srcSteps);
    constexpr int kRows = RowPairs ? 2 : 1;
    for (int y = 0; y < height; y += kRows) {
        const int c = RowPairs ? y >> 1 : y;
        const bool two = RowPairs && y + 1 < height;
        const Kel8u* y1 = two ? in.row(0, y + 1) : nullptr;
        Kel16u* d1 = two ? elementRow(dst, dstStep, y + 1) : nullptr;
        const std::int32_t* t1 = two ? thresholdRow<P, Dither>(y + 1) : nullptr;
        const auto args = [&](auto kernel, auto... x0) {
            return kernel(in.row(0, y), y1, in.row(1, c), in.row(2, c), elementRow(dst, dstStep, y), d1, x0..., width,
                          swapRB, thresholdRow<P, Dither>(y), t1);
        };
        const int done = vector != nullptr ? args(vector) : 0;
        args(innerCellRows<A, P, Dither>, done);
    }
}

// A vector kernel of pixel pairs: the arguments of innerPairsRow without x0;
// returns the (even) count of pixels done, never the odd last pixel.
using PairsRowKernel = int (*)(const Kel8u* src, Kel16u* dst, int width, bool swapRB, const std::int32_t* thresholds);

inline PairsRowKernel noPairsKernel()
{
    return nullptr;
}

template <class A, Packing P, bool Dither, PairsRowKernel (*Choose)() = noPairsKernel>
void walkPairs(const Kel8u* src, int srcStep, Kel16u* dst, int dstStep, int width, int height, bool swapRB)
{
    const PairsRowKernel vector = Choose();
    const auto row = [&](const Kel8u* in, Kel16u* out, int count, const std::int32_t* thresholds) {
        const int done = vector != nullptr ? vector(in, out, count, swapRB, thresholds) : 0;
        innerPairsRow<A, P, Dither>(in, out, done, count, swapRB, thresholds);
    };
    if (!Dither && (width & 1) == 0 && asOneRow(srcStep, 2, dstStep, width, height)) {
        row(src, dst, width * height, nullptr);
        return;
    }
    forEachRow(height, [&](int y) {
        row(rowAt(src, srcStep, y), elementRow(dst, dstStep, y), width, thresholdRow<P, Dither>(y));
    });
}

// ---- public functions ----------------------------------------------------------------------------------
// Every member tests the source and destination pointers, the size, then
// the planes inside a plane array; dstStep is halved to elements.  No odd
// size is a warning.

#define KEL_PACKED_PLANES(NAME, ROWS, SWAP)                                                                       \
    KEL_API KelResult NAME(const Kel8u* const pSrc[3], int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize) \
    {                                                                                                             \
        if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;                    \
        ROWS(pSrc, srcStep, pDst, elementStride<Kel16u>(dstStep), roiSize.width, roiSize.height, SWAP);           \
        return kelOk;                                                                                             \
    }
#define KEL_PACKED_CELLS(NAME, ROWS, SWAP)                                                                  \
    KEL_API KelResult NAME(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep,     \
                           KelImageSize roiSize)                                                            \
    {                                                                                                       \
        if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;              \
        ROWS(pSrc, srcSteps, pDst, elementStride<Kel16u>(dstStep), roiSize.width, roiSize.height, SWAP);    \
        return kelOk;                                                                                       \
    }
#define KEL_PACKED_PIXELS(NAME, ROWS, SWAP)                                                                 \
    KEL_API KelResult NAME(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize) \
    {                                                                                                       \
        if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;              \
        ROWS(pSrc, srcStep, pDst, elementStride<Kel16u>(dstStep), roiSize.width, roiSize.height, SWAP);     \
        return kelOk;                                                                                       \
    }
#define KEL_PACKED_PAIRS KEL_PACKED_PIXELS

} // namespace kel::packed

// RGB <-> studio-range YCbCr at full chroma resolution, 8-bit, in pixel-order
// (C3, AC4) and planar (P3) layouts.
#include <cstdint>
#include <cstring>

#include "callframe.h"
#include "cbcrpx.h"
#include "rowstore.h"
#include "ycbcrsimd.h"

using namespace kel;

// ---- layers behind the public functions ------------------------------------

void myRGBToYCbCr_C3_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height);
void myRGBToYCbCr_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height);
void myRGBToYCbCr_C3P2_C3P2R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3], int dstStep, int width, int height);
void myYCbCrToRGB_C3_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height);
void myYCbCrToRGBA_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height);
void myYCbCrToRGB_C3P2_C3P2R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3], int dstStep, int width, int height);
void myYCbCrToRGB_8u_P3C3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep, int width, int height);

void innerRGBToYCbCr_C3_C3R(const Kel8u* src, Kel8u* dst, int width);
void innerRGBToYCbCr_AC4R(const Kel8u* src, Kel8u* dst, int width);
void innerRGBToYCbCr_C3P2_C3P2R(const Kel8u* const src[3], Kel8u* const dst[3], int width);
void innerYCbCrToRGB_C3_C3R(const Kel8u* src, Kel8u* dst, int width);
void innerYCbCrToRGB_AC4R(const Kel8u* src, Kel8u* dst, int width);
void innerYCbCrToRGB_C3P2_C3P2R(const Kel8u* const src[3], Kel8u* const dst[3], int width);
void innerYCbCrToRGB_8u_P3C3R(const Kel8u* const src[3], Kel8u* dst, int width);

// ---- public functions ---------------------------------------------------------

extern "C" {

KEL_API KelResult keliRGBToYCbCr_8u_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myRGBToYCbCr_C3_C3R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliRGBToYCbCr_8u_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myRGBToYCbCr_AC4R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliRGBToYCbCr_8u_P3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3], int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myRGBToYCbCr_C3P2_C3P2R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliYCbCrToRGB_8u_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myYCbCrToRGB_C3_C3R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliYCbCrToRGB_8u_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myYCbCrToRGBA_AC4R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliYCbCrToRGB_8u_P3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3], int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myYCbCrToRGB_C3P2_C3P2R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliYCbCrToRGB_8u_P3C3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myYCbCrToRGB_8u_P3C3R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

} // extern "C"

// ---- row layers: the plain walk over rows, row 0 first ----------------------

// Each takes its row kernel once per call: the whole-vector kernel of the
// processor's best target, which finishes every row with the scalar kernel
// below and gives its bytes (ycbcrsimd.cpp).

void myRGBToYCbCr_C3_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    const PixelRow row = chooseRGBToYCbCr_C3();
    forEachRow(height, [&](int y) { row(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width); });
}

void myRGBToYCbCr_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    const PixelRow row = chooseRGBToYCbCr_AC4();
    forEachRow(height, [&](int y) { row(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width); });
}

// Planar images: every plane steps by the one stride its image has.
void myRGBToYCbCr_C3P2_C3P2R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3], int dstStep, int width, int height)
{
    const PlaneRows<const Kel8u> src(pSrc, srcStep);
    const PlaneRows<Kel8u> dst(pDst, dstStep);
    const PlaneRow row = chooseRGBToYCbCr_P3();
    forEachRow(height, [&](int y) {
        const Kel8u* const srcRow[3] = {src.row(0, y), src.row(1, y), src.row(2, y)};
        Kel8u* const dstRow[3] = {dst.row(0, y), dst.row(1, y), dst.row(2, y)};
        row(srcRow, dstRow, width);
    });
}

void myYCbCrToRGB_C3_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    const PixelRow row = chooseYCbCrToRGB_C3();
    forEachRow(height, [&](int y) { row(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width); });
}

void myYCbCrToRGBA_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    const PixelRow row = chooseYCbCrToRGB_AC4();
    forEachRow(height, [&](int y) { row(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width); });
}

void myYCbCrToRGB_C3P2_C3P2R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3], int dstStep, int width, int height)
{
    const PlaneRows<const Kel8u> src(pSrc, srcStep);
    const PlaneRows<Kel8u> dst(pDst, dstStep);
    const PlaneRow row = chooseYCbCrToRGB_P3();
    forEachRow(height, [&](int y) {
        const Kel8u* const srcRow[3] = {src.row(0, y), src.row(1, y), src.row(2, y)};
        Kel8u* const dstRow[3] = {dst.row(0, y), dst.row(1, y), dst.row(2, y)};
        row(srcRow, dstRow, width);
    });
}

void myYCbCrToRGB_8u_P3C3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    const PlaneRows<const Kel8u> src(pSrc, srcStep);
    const PlanesToPixelRow row = chooseYCbCrToRGB_P3C3();
    forEachRow(height, [&](int y) {
        const Kel8u* const srcRow[3] = {src.row(0, y), src.row(1, y), src.row(2, y)};
        row(srcRow, rowAt(pDst, dstStep, y), width);
    });
}

// ---- row kernels ------------------------------------------------------------

namespace {

// One pass over a row: each pixel's three samples are read before any of its
// results is written, so a destination that overlaps its source pixel for
// pixel converts in place.  Pitches are in bytes between pixels of a channel.
template <typename Pixel, int SrcPitch, int DstPitch>
inline void convertRow(const Kel8u* s0, const Kel8u* s1, const Kel8u* s2,
                       Kel8u* d0, Kel8u* d1, Kel8u* d2, int width)
{
    for (int x = 0; x < width; ++x) {
        const std::int32_t a = s0[x * SrcPitch], b = s1[x * SrcPitch], c = s2[x * SrcPitch];
        d0[x * DstPitch] = Pixel::first(a, b, c);
        d1[x * DstPitch] = Pixel::second(a, b, c);
        d2[x * DstPitch] = Pixel::third(a, b, c);
    }
}

struct ToYCbCr {
    static Kel8u first(int r, int g, int b)  { return ForwardYCbCr::y(r, g, b); }
    static Kel8u second(int r, int g, int b) { return ForwardYCbCr::cb(r, g, b); }
    static Kel8u third(int r, int g, int b)  { return ForwardYCbCr::cr(r, g, b); }
};

template <const InverseYCbCr& K>
struct ToRGB {
    static Kel8u first(int y, int cb, int cr)  { return InverseRGB<K>::r(y, cb, cr); }
    static Kel8u second(int y, int cb, int cr) { return InverseRGB<K>::g(y, cb, cr); }
    static Kel8u third(int y, int cb, int cr)  { return InverseRGB<K>::b(y, cb, cr); }
};

template <typename Pixel, int Pitch>
inline void convertInterleaved(const Kel8u* src, Kel8u* dst, int width)
{
    convertRow<Pixel, Pitch, Pitch>(src, src + 1, src + 2, dst, dst + 1, dst + 2, width);
}

inline bool fourByteAligned(const void* p)
{
    return (reinterpret_cast<std::uintptr_t>(p) & 3u) == 0;
}

} // namespace

void innerRGBToYCbCr_C3_C3R(const Kel8u* src, Kel8u* dst, int width)
{
    convertInterleaved<ToYCbCr, 3>(src, dst, width);
}

void innerRGBToYCbCr_AC4R(const Kel8u* src, Kel8u* dst, int width)
{
    convertInterleaved<ToYCbCr, 4>(src, dst, width);
}

// Rows whose six plane pointers are all 4-byte aligned take the two-pass path
// (vectorised across the row); other rows take the pixel-by-pixel byte loop.
// Both give the same bytes.
void innerRGBToYCbCr_C3P2_C3P2R(const Kel8u* const src[3], Kel8u* const dst[3], int width)
{
    const Kel8u *r = src[0], *g = src[1], *b = src[2];
    Kel8u *y = dst[0], *cb = dst[1], *cr = dst[2];
    const bool aligned = fourByteAligned(r) && fourByteAligned(g) && fourByteAligned(b) &&
                         fourByteAligned(y) && fourByteAligned(cb) && fourByteAligned(cr);
    if (!aligned) {
        convertRow<ToYCbCr, 1, 1>(r, g, b, y, cb, cr, width);
        return;
    }
    // Y and Cb in a first pass, Cr in a second: the order shows only when a
    // destination plane is also a source plane.
    for (int x = 0; x < width; ++x) {
        const std::int32_t R = r[x], G = g[x], B = b[x];
        y[x] = ForwardYCbCr::y(R, G, B);
        cb[x] = ForwardYCbCr::cb(R, G, B);
    }
    for (int x = 0; x < width; ++x)
        cr[x] = ForwardYCbCr::cr(r[x], g[x], b[x]);
}

void innerYCbCrToRGB_C3_C3R(const Kel8u* src, Kel8u* dst, int width)
{
    convertInterleaved<ToRGB<inverseT>, 3>(src, dst, width);
}

void innerYCbCrToRGB_AC4R(const Kel8u* src, Kel8u* dst, int width)
{
    convertInterleaved<ToRGB<inverseT>, 4>(src, dst, width);
}

// Planes to planes in blocks: a block's results are formed in local arrays
// and then stored, so the compiler need not fear that a store reaches a
// source plane.  Each pixel still reads only its own samples, so overlapping
// planes convert as the pixel loop does.
void innerYCbCrToRGB_C3P2_C3P2R(const Kel8u* const src[3], Kel8u* const dst[3], int width)
{
    Kel8u r[kBlock], g[kBlock], b[kBlock];
    forEachBlock(width, [&](int x0, int n) {
        convertRow<ToRGB<inverseT>, 1, 1>(src[0] + x0, src[1] + x0, src[2] + x0, r, g, b, n);
        std::memcpy(dst[0] + x0, r, static_cast<std::size_t>(n));
        std::memcpy(dst[1] + x0, g, static_cast<std::size_t>(n));
        std::memcpy(dst[2] + x0, b, static_cast<std::size_t>(n));
    });
}

void innerYCbCrToRGB_8u_P3C3R(const Kel8u* const src[3], Kel8u* dst, int width)
{
    convertRow<ToRGB<inverseR>, 1, 3>(src[0], src[1], src[2], dst, dst + 1, dst + 2, width);
}

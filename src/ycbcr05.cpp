// Studio-range YCbCr, YCrCb and CbYCr in 4:2:2, 4:2:0 and 4:1:1, and full-resolution
// YCbCr planes, back to RGB or BGR; each member has its own coefficient set.
#include <cstdint>

#include "callframe.h"
#include "cbcrpx.h"
#include "rowstore.h"
#include "ycbcr05simd.h"

using namespace kel;

// Row layers, defined below the public functions.
void myYCbCrToRGB422_C2_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height);
void myYCbCr422ToRGB_C2_C3P2R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], int dstStep, int width, int height);
void myYCbCr422ToRGB_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                              int height);
void myYCrCbToRGB422_C2_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height);
void myYCrCb422ToRGB_C2_C3P2R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], int dstStep, int width, int height);
void ownYCbCr422ToBGR_8u_C2C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height);
void ownYCbCr422ToBGR_8u_C2C4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height,
                               Kel8u alpha);
void myYCbCr420ToRGB_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                              int height);
void myYCbCr420ToBGR_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                              int height);
void myYCrCb420ToBGR_8u_P3C4R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                              int height, Kel8u alpha);
void myYCbCr411ToBGR_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                              int height);
void myYCbCr411ToBGR_8u_P3C4R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                              int height, Kel8u alpha);
void ownYCbCrToBGR_8u_P3C3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep, int width, int height);
void ownYCbCrToBGR_8u_P3C4R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep, int width, int height,
                            Kel8u alpha);
void myCbYCr422ToRGB_8u_C2C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height);
void myCbYCr422ToBGR_8u_C2AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height,
                               Kel8u alpha);

// ---- public functions ----------------------------------------------------------------------------
// Most members test the pointers, the size, then the planes inside the arrays;
// the 4:1:1 and full-resolution members test every pointer before the size.

extern "C" {

KEL_API KelResult keliYCbCr422ToRGB_8u_C2C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myYCbCrToRGB422_C2_C3R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliYCbCr422ToRGB_8u_C2P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], int dstStep,
                                             KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myYCbCr422ToRGB_C2_C3P2R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliYCbCr422ToRGB_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep,
                                             KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myYCbCr422ToRGB_8u_P3C3R(pSrc, srcSteps, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliYCrCb422ToRGB_8u_C2C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myYCrCbToRGB422_C2_C3R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliYCrCb422ToRGB_8u_C2P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], int dstStep,
                                             KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myYCrCb422ToRGB_C2_C3P2R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

// Two pixels at least: these members have no width-1 path.
KEL_API KelResult keliYCbCr422ToBGR_8u_C2C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 2, 1, pSrc, pDst)) return bad;
    ownYCbCr422ToBGR_8u_C2C3R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliYCbCr422ToBGR_8u_C2C4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize,
                                             Kel8u alpha)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 2, 1, pSrc, pDst)) return bad;
    ownYCbCr422ToBGR_8u_C2C4R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height, alpha);
    return kelOk;
}

KEL_API KelResult keliYCbCr420ToRGB_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep,
                                             KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myYCbCr420ToRGB_8u_P3C3R(pSrc, srcSteps, pDst, dstStep, roiSize.width, roiSize.height);
    return warnUnlessEven(roiSize);
}

KEL_API KelResult keliYCbCr420ToBGR_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep,
                                             KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myYCbCr420ToBGR_8u_P3C3R(pSrc, srcSteps, pDst, dstStep, roiSize.width, roiSize.height);
    return warnUnlessEven(roiSize);
}

KEL_API KelResult keliYCrCb420ToBGR_Filter_8u_P3C4R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst,
                                                    int dstStep, KelImageSize roiSize, Kel8u alpha)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myYCrCb420ToBGR_8u_P3C4R(pSrc, srcSteps, pDst, dstStep, roiSize.width, roiSize.height, alpha);
    return warnUnlessEven(roiSize);
}

// Four pixels at least: the last width & 3 pixels borrow the chroma of a whole group.
KEL_API KelResult keliYCbCr411ToBGR_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep,
                                             KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesWithPointers(roiSize, 4, 1, pSrc, pDst)) return bad;
    myYCbCr411ToBGR_8u_P3C3R(pSrc, srcSteps, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliYCbCr411ToBGR_8u_P3C4R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep,
                                             KelImageSize roiSize, Kel8u alpha)
{
    if (const KelResult bad = testPlanesWithPointers(roiSize, 4, 1, pSrc, pDst)) return bad;
    myYCbCr411ToBGR_8u_P3C4R(pSrc, srcSteps, pDst, dstStep, roiSize.width, roiSize.height, alpha);
    return kelOk;
}

KEL_API KelResult keliYCbCrToBGR_8u_P3C3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep,
                                          KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesWithPointers(roiSize, 1, 1, pSrc, pDst)) return bad;
    ownYCbCrToBGR_8u_P3C3R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliYCbCrToBGR_8u_P3C4R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep,
                                          KelImageSize roiSize, Kel8u alpha)
{
    if (const KelResult bad = testPlanesWithPointers(roiSize, 1, 1, pSrc, pDst)) return bad;
    ownYCbCrToBGR_8u_P3C4R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height, alpha);
    return kelOk;
}

KEL_API KelResult keliCbYCr422ToRGB_8u_C2C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myCbYCr422ToRGB_8u_C2C3R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliCbYCr422ToBGR_8u_C2C4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize,
                                             Kel8u alpha)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myCbYCr422ToBGR_8u_C2AC4R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height, alpha);
    return kelOk;
}

} // extern "C"

// ---- row layers ----------------------------------------------------------------------------------

// The width-1 paths, defined below (the row kernels are declared in ycbcr05simd.h).
void unrealYCbCr(const Kel8u* src, Kel8u* dst);
void unrealYCrCb(const Kel8u* src, Kel8u* dst);
void unrealYCbCrP(const Kel8u* src, Kel8u* const dst[3]);
void unrealYCrCbP(const Kel8u* src, Kel8u* const dst[3]);

namespace {

// The kernel templates, defined at the end of the file; the single-function
// members (row loop and kernel in one) call some of them directly.
template <const InverseYCbCr& K, typename Store>
void putPixel(Store dst, int x, std::int32_t y, std::int32_t cb, std::int32_t cr);
template <const InverseYCbCr& K, PairLayout L, typename Store>
void pairsFromPixelOrder(const Kel8u* src, Store dst, int width);
template <typename Store>
void planes422(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Store dst, int width);
template <const InverseYCbCr& K, typename Store>
void cells420(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* cb, const Kel8u* cr, Store top, Store bottom,
              int width);
template <typename Store>
void filteredCells420(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* cb, const Kel8u* cr, Store top,
                      Store bottom, int width);
template <typename Store>
void groups411(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Store dst, int width);
template <typename Store>
void fullResolution(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Store dst, int width);

// Blue, green, red, then the caller's alpha.
using BGRAStore = PixelStore<4, kBGR, Alpha::written>;

} // namespace

// 4:2:2 pixel order.  A row one pixel wide has no pair to take a missing
// chroma sample from and leaves the row kernel for the width-1 path.  The
// pixel-order row kernels are chosen once per call: the fastest this
// processor runs (ycbcr05simd.cpp), which gives the scalar kernel's bytes.
void myYCbCrToRGB422_C2_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    const PixelRow422 pixelRow = chooseYCbCr422ToRGB();
    forEachRow(height, [&](int y) {
        const Kel8u* src = rowAt(pSrc, srcStep, y);
        Kel8u* dst = rowAt(pDst, dstStep, y);
        if (width == 1) unrealYCbCr(src, dst);
        else pixelRow(src, dst, width);
    });
}

void myYCbCr422ToRGB_C2_C3P2R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], int dstStep, int width, int height)
{
    const PlaneRows<Kel8u> dstPlanes(pDst, dstStep);
    const PixelRowToPlanes pixelRow = chooseYCbCr422ToRGBPlanes();
    forEachRow(height, [&](int y) {
        const Kel8u* src = rowAt(pSrc, srcStep, y);
        Kel8u* const dst[3] = {dstPlanes.row(0, y), dstPlanes.row(1, y), dstPlanes.row(2, y)};
        if (width == 1) unrealYCbCrP(src, dst);
        else pixelRow(src, dst, width);
    });
}

void myYCrCbToRGB422_C2_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    const PixelRow422 pixelRow = chooseYCrCb422ToRGB();
    forEachRow(height, [&](int y) {
        const Kel8u* src = rowAt(pSrc, srcStep, y);
        Kel8u* dst = rowAt(pDst, dstStep, y);
        if (width == 1) unrealYCrCb(src, dst);
        else pixelRow(src, dst, width);
    });
}

void myYCrCb422ToRGB_C2_C3P2R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], int dstStep, int width, int height)
{
    const PlaneRows<Kel8u> dstPlanes(pDst, dstStep);
    const PixelRowToPlanes pixelRow = chooseYCrCb422ToRGBPlanes();
    forEachRow(height, [&](int y) {
        const Kel8u* src = rowAt(pSrc, srcStep, y);
        Kel8u* const dst[3] = {dstPlanes.row(0, y), dstPlanes.row(1, y), dstPlanes.row(2, y)};
        if (width == 1) unrealYCrCbP(src, dst);
        else pixelRow(src, dst, width);
    });
}

// The BGR members need two pixels, so every row has a pair before a last single pixel.
void ownYCbCr422ToBGR_8u_C2C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    const PixelRow422 pixelRow = chooseYCbCr422ToBGR();
    forEachRow(height, [&](int y) { pixelRow(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width); });
}

void ownYCbCr422ToBGR_8u_C2C4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height,
                               Kel8u alpha)
{
    const PixelRow422Alpha pixelRow = chooseYCbCr422ToBGRA();
    forEachRow(height, [&](int y) { pixelRow(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width, alpha); });
}

// CbYCr handles width 1 inside its row kernel: the lone Cb serves as Cr too.
void myCbYCr422ToRGB_8u_C2C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    const PixelRow422 pixelRow = chooseCbYCr422ToRGB();
    forEachRow(height, [&](int y) { pixelRow(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width); });
}

void myCbYCr422ToBGR_8u_C2AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height,
                               Kel8u alpha)
{
    const PixelRow422Alpha pixelRow = chooseCbYCr422ToBGRA();
    forEachRow(height, [&](int y) { pixelRow(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width, alpha); });
}

// Planar sources: the row kernel is chosen once per call, the fastest this
// processor runs (ycbcr05simd.cpp), which gives the scalar kernel's bytes.
// 4:2:2 planes, one stride a plane.
void myYCbCr422ToRGB_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                              int height)
{
    const PlaneRows<const Kel8u> src(pSrc, srcSteps);
    const PlaneRow planeRow = chooseYCbCr422PlanesToRGB();
    forEachRow(height, [&](int y) {
        planeRow(src.row(0, y), src.row(1, y), src.row(2, y), rowAt(pDst, dstStep, y), width);
    });
}

// 4:2:0: luma rows 2j and 2j + 1 with chroma row j; an odd last row is left
// alone.  The row-pair kernel is chosen once per call: the fastest this
// processor runs (ycbcr05simd.cpp), which gives the scalar kernel's bytes.
void myYCbCr420ToRGB_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                              int height)
{
    const PlaneRows<const Kel8u> src(pSrc, srcSteps);
    const RowPair420 rowPair = chooseYCbCr420ToRGB();
    forEachRowPair(height, [&](int top, int bottom, int chroma) {
        rowPair(src.row(0, top), src.row(0, bottom), src.row(1, chroma), src.row(2, chroma), rowAt(pDst, dstStep, top),
                rowAt(pDst, dstStep, bottom), width);
    });
}

void myYCbCr420ToBGR_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                              int height)
{
    const PlaneRows<const Kel8u> src(pSrc, srcSteps);
    const RowPair420 rowPair = chooseYCbCr420ToBGR();
    forEachRowPair(height, [&](int top, int bottom, int chroma) {
        rowPair(src.row(0, top), src.row(0, bottom), src.row(1, chroma), src.row(2, chroma), rowAt(pDst, dstStep, top),
                rowAt(pDst, dstStep, bottom), width);
    });
}

// Plane 1 holds Cr and plane 2 Cb.
void myYCrCb420ToBGR_8u_P3C4R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                              int height, Kel8u alpha)
{
    const PlaneRows<const Kel8u> src(pSrc, srcSteps);
    const RowPair420Alpha rowPair = chooseYCrCb420FilterToBGRA();
    forEachRowPair(height, [&](int top, int bottom, int chroma) {
        rowPair(src.row(0, top), src.row(0, bottom), src.row(2, chroma), src.row(1, chroma), rowAt(pDst, dstStep, top),
                rowAt(pDst, dstStep, bottom), width, alpha);
    });
}

// 4:1:1 planes, one stride a plane.
void myYCbCr411ToBGR_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                              int height)
{
    const PlaneRows<const Kel8u> src(pSrc, srcSteps);
    const PlaneRow planeRow = chooseYCbCr411ToBGR();
    forEachRow(height, [&](int y) {
        planeRow(src.row(0, y), src.row(1, y), src.row(2, y), rowAt(pDst, dstStep, y), width);
    });
}

void myYCbCr411ToBGR_8u_P3C4R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                              int height, Kel8u alpha)
{
    const PlaneRows<const Kel8u> src(pSrc, srcSteps);
    const PlaneRowAlpha planeRow = chooseYCbCr411ToBGRA();
    forEachRow(height, [&](int y) {
        planeRow(src.row(0, y), src.row(1, y), src.row(2, y), rowAt(pDst, dstStep, y), width, alpha);
    });
}

// Full resolution: one stride for all three planes.
void ownYCbCrToBGR_8u_P3C3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    const PlaneRows<const Kel8u> src(pSrc, srcStep);
    const PlaneRow planeRow = chooseYCbCrPlanesToBGR();
    forEachRow(height, [&](int y) {
        planeRow(src.row(0, y), src.row(1, y), src.row(2, y), rowAt(pDst, dstStep, y), width);
    });
}

void ownYCbCrToBGR_8u_P3C4R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep, int width, int height,
                            Kel8u alpha)
{
    const PlaneRows<const Kel8u> src(pSrc, srcStep);
    const PlaneRowAlpha planeRow = chooseYCbCrPlanesToBGRA();
    forEachRow(height, [&](int y) {
        planeRow(src.row(0, y), src.row(1, y), src.row(2, y), rowAt(pDst, dstStep, y), width, alpha);
    });
}

// ---- row kernels under the library's names -----------------------------------------------------

void innerYCbCrToRGB422_C2_C3R(const Kel8u* src, Kel8u* dst, int width)
{
    pairsFromPixelOrder<inverseH, kYCbCrPair>(src, PixelStore<3, kRGB>{dst}, width);
}

void innerYCbCr422ToBGR_8u_C2C3R(const Kel8u* src, Kel8u* dst, int width)
{
    pairsFromPixelOrder<inverseH, kYCbCrPair>(src, PixelStore<3, kBGR>{dst}, width);
}

void innerYCbCr422ToBGR_8u_C2C4R(const Kel8u* src, Kel8u* dst, int width, Kel8u alpha)
{
    pairsFromPixelOrder<inverseH, kYCbCrPair>(src, BGRAStore{dst, alpha}, width);
}

void innerCbYCr422ToRGB_8u_C2C3R(const Kel8u* src, Kel8u* dst, int width)
{
    pairsFromPixelOrder<inverseR, kCbYCrPair>(src, PixelStore<3, kRGB>{dst}, width);
}

void innerCbYCr422ToBGR_8u_C2AC4R(const Kel8u* src, Kel8u* dst, int width, Kel8u alpha)
{
    pairsFromPixelOrder<inverseR, kCbYCrPair>(src, BGRAStore{dst, alpha}, width);
}

void innerYCbCr422ToRGB_C2_C3P2R(const Kel8u* src, Kel8u* const dst[3], int width)
{
    pairsFromPixelOrder<inverseH, kYCbCrPair>(src, PlaneStore{dst[0], dst[1], dst[2]}, width);
}

void innerYCrCbToRGB422_C2_C3R(const Kel8u* src, Kel8u* dst, int width)
{
    pairsFromPixelOrder<inverseH, kYCrCbPair>(src, PixelStore<3, kRGB>{dst}, width);
}

void innerYCrCb422ToRGB_C2_C3P2R(const Kel8u* src, Kel8u* const dst[3], int width)
{
    pairsFromPixelOrder<inverseH, kYCrCbPair>(src, PlaneStore{dst[0], dst[1], dst[2]}, width);
}

// The width-1 paths: byte 0 is Y, byte 1 serves as both chroma samples, set H.
void unrealYCbCr(const Kel8u* src, Kel8u* dst)
{
    putPixel<inverseH>(PixelStore<3, kRGB>{dst}, 0, src[0], src[1], src[1]);
}

void unrealYCrCb(const Kel8u* src, Kel8u* dst)
{
    putPixel<inverseH>(PixelStore<3, kRGB>{dst}, 0, src[0], src[1], src[1]);
}

void unrealYCbCrP(const Kel8u* src, Kel8u* const dst[3])
{
    putPixel<inverseH>(PlaneStore{dst[0], dst[1], dst[2]}, 0, src[0], src[1], src[1]);
}

void unrealYCrCbP(const Kel8u* src, Kel8u* const dst[3])
{
    putPixel<inverseH>(PlaneStore{dst[0], dst[1], dst[2]}, 0, src[0], src[1], src[1]);
}

void innerYCbCr422ToRGB_8u_P3C3R(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Kel8u* dst, int width)
{
    planes422(y, cb, cr, PixelStore<3, kRGB>{dst}, width);
}

// 4:1:1: a row that starts at a group boundary.  A row of fewer than four
// pixels takes the chroma of the group before it, which the caller's row
// holds: this is how a row's last width & 3 pixels are finished.
void innerYCbCr411ToBGR_8u_P3C3R(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Kel8u* dst, int width)
{
    groups411(y, cb, cr, PixelStore<3, kBGR>{dst}, width);
}

void innerYCbCr411ToBGR_8u_P3C4R(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Kel8u* dst, int width, Kel8u alpha)
{
    groups411(y, cb, cr, BGRAStore{dst, alpha}, width);
}

void innerYCbCrToBGR_8u_P3C3R(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Kel8u* dst, int width)
{
    fullResolution(y, cb, cr, PixelStore<3, kBGR>{dst}, width);
}

void innerYCbCrToBGR_8u_P3C4R(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Kel8u* dst, int width, Kel8u alpha)
{
    fullResolution(y, cb, cr, BGRAStore{dst, alpha}, width);
}

void innerYCrCb420ToBGR_8u_P3C4R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* cb, const Kel8u* cr, Kel8u* top,
                                 Kel8u* bottom, int width, Kel8u alpha)
{
    filteredCells420(yTop, yBottom, cb, cr, BGRAStore{top, alpha}, BGRAStore{bottom, alpha}, width);
}

void innerYCbCr420ToRGB_8u_P3C3R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* cb, const Kel8u* cr, Kel8u* top,
                                 Kel8u* bottom, int width)
{
    cells420<inverseT>(yTop, yBottom, cb, cr, PixelStore<3, kRGB>{top}, PixelStore<3, kRGB>{bottom}, width);
}

void innerYCbCr420ToBGR_8u_P3C3R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* cb, const Kel8u* cr, Kel8u* top,
                                 Kel8u* bottom, int width)
{
    cells420<inverseU>(yTop, yBottom, cb, cr, PixelStore<3, kBGR>{top}, PixelStore<3, kBGR>{bottom}, width);
}

// ---- kernels -------------------------------------------------------------------------------------
// Every pixel of a cell takes the cell's chroma pair, except in the filtered
// 4:2:0 member, which interpolates along the row.

namespace {

// One pixel from its luma and its cell's chroma terms: the formula storeBlock
// applies to a block, for the kernels that go pixel by pixel.
template <const InverseYCbCr& K, typename Store>
void putPixel(Store dst, int x, std::int32_t y, const ChromaTerms& c)
{
    const std::int32_t luma = K.luma * y;
    dst.put(x, saturateByte((luma + c.r) >> 16), saturateByte((luma + c.g) >> 16), saturateByte((luma + c.b) >> 16));
}

template <const InverseYCbCr& K, typename Store>
void putPixel(Store dst, int x, std::int32_t y, std::int32_t cb, std::int32_t cr)
{
    putPixel<K>(dst, x, y, chromaTerms<K>(cb, cr));
}

// 4:2:2 pixel order: pairs from the left, both pixels with the pair's chroma,
// whole pairs in blocks.  A last single pixel in a pair cut short after its
// second byte has one chroma sample of its own and takes the missing one from
// the pair before; with no pair before (width 1), its own serves as both.
template <const InverseYCbCr& K, PairLayout L, typename Store>
void pairsFromPixelOrder(const Kel8u* src, Store dst, int width)
{
    const int pairs = width / 2;
    TermBlock terms;
    forEachBlock(2 * pairs, [&](int x0, int n) {
        const Kel8u* block = src + 2 * x0;  // two bytes a pixel
        for (int i = 0; i < n; i += 2) terms.setPair(i, chromaTerms<K>(block[2 * i + L.cb], block[2 * i + L.cr]));
        storeBlock<K.luma, 2>(block + L.y0, terms, n, dst, x0);  // Y0 and Y1 are two bytes apart
    });
    if (width & 1) {
        const Kel8u* slot = src + 4 * pairs;
        const std::int32_t own = slot[L.cbMissing() ? L.cr : L.cb];
        const std::int32_t other = pairs > 0 ? slot[L.missingFromBefore()] : own;
        if constexpr (L.cbMissing()) putPixel<K>(dst, width - 1, slot[L.y0], other, own);
        else putPixel<K>(dst, width - 1, slot[L.y0], own, other);
    }
}

// 4:2:2 planes: chroma planes of (width + 1) / 2 columns, so a last single
// pixel has a chroma sample of its own.
template <typename Store>
void planes422(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Store dst, int width)
{
    for (int x = 0; x < width; ++x) putPixel<inverseR>(dst, x, y[x], cb[x / 2], cr[x / 2]);
}

// 4:2:0 cells of 2 x 2 in blocks, the terms of a block shared by its two rows;
// an odd last column is left alone.
template <const InverseYCbCr& K, typename Store>
void cells420(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* cb, const Kel8u* cr, Store top, Store bottom,
              int width)
{
    TermBlock terms;
    forEachBlock(width & ~1, [&](int x0, int n) {
        for (int i = 0; i < n; i += 2) terms.setPair(i, chromaTerms<K>(cb[(x0 + i) / 2], cr[(x0 + i) / 2]));
        storeBlock<K.luma, 1>(yTop + x0, terms, n, top, x0);
        storeBlock<K.luma, 1>(yBottom + x0, terms, n, bottom, x0);
    });
}

// Filtered 4:2:0: the even pixel of a cell takes the cell's chroma, the odd
// pixel the mean (rounded up) of this cell's and the next; the last cell has
// no next and takes its own.
template <typename Store>
void filteredCells420(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* cb, const Kel8u* cr, Store top,
                      Store bottom, int width)
{
    const int cells = width / 2;
    for (int k = 0; k < cells; ++k) {
        const bool last = k + 1 == cells;
        const std::int32_t cbOdd = last ? cb[k] : (cb[k] + cb[k + 1] + 1) >> 1;
        const std::int32_t crOdd = last ? cr[k] : (cr[k] + cr[k + 1] + 1) >> 1;
        const int e = 2 * k, o = e + 1;
        const ChromaTerms even = chromaTerms<inverseF>(cb[k], cr[k]), odd = chromaTerms<inverseF>(cbOdd, crOdd);
        putPixel<inverseF>(top, e, yTop[e], even);
        putPixel<inverseF>(bottom, e, yBottom[e], even);
        putPixel<inverseF>(top, o, yTop[o], odd);
        putPixel<inverseF>(bottom, o, yBottom[o], odd);
    }
}

// 4:1:1: groups of four share a chroma pair; the last width & 3 pixels take
// the chroma of the last whole group.
template <typename Store>
void groups411(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Store dst, int width)
{
    const int lastGroup = width / 4 - 1;
    for (int x = 0; x < width; ++x) {
        const int k = x / 4 <= lastGroup ? x / 4 : lastGroup;
        putPixel<inverseQ>(dst, x, y[x], cb[k], cr[k]);
    }
}

template <typename Store>
void fullResolution(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Store dst, int width)
{
    for (int x = 0; x < width; ++x) putPixel<inverseR>(dst, x, y[x], cb[x], cr[x]);
}

} // namespace

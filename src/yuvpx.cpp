// RGB <-> full-range YUV with 4:2:2 and 4:2:0 chroma, also in the forms without strides:
// forward averages a cell's colour differences (two pixels, or 2 x 2), inverse repeats its chroma.
#include <cstdint>
#include <limits>

#include "callframe.h"
#include "rowstore.h"
#include "yuvconv.h"
#include "yuvpxsimd.h"

using namespace kel;
using namespace kel::yuv;

// The layers behind the public functions, defined below in this order.
void myRGBToYUV422_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height);
void myRGBToYUV422_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], int width,
                            int height);
void myRGBToYUV422_8u_P3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                          int width, int height);
void myYUV422ToRGB_8u_C2C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height);
void myYUV422ToRGB_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                            int height);
void myYUV422ToRGB_8u_P3AC4R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                             int height);
void myYUV422ToRGB_8u_P3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* const pDst[3], int dstStep,
                          int width, int height);
void myRGBToYUV420_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], int width,
                            int height);
void myRGBToYUV420_8u_P3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                          int width, int height);
void myYUV420ToRGB_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                            int height);
void myYUV420ToRGB_8u_P3AC4R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                             int height);
void myYUV420ToRGB_8u_P3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* const pDst[3], int dstStep,
                          int width, int height);
void myRGBToYUV422_8u_C3P3(const Kel8u* pSrc, Kel8u* const pDst[3], KelImageSize size);
void myRGBToYUV422_8u_P3(const Kel8u* const pSrc[3], Kel8u* const pDst[3], KelImageSize size);
void myYUV422ToRGB_8u_P3C3(const Kel8u* const pSrc[3], Kel8u* pDst, KelImageSize size);
void myYUV422ToRGB_8u_P3(const Kel8u* const pSrc[3], Kel8u* const pDst[3], KelImageSize size);

void innerRGBToYUV422_8u_C3C2R(const Kel8u* src, Kel8u* dst, int width);
void innerRGBToYUV422_8u_C3P3R(const Kel8u* src, YUVPlaneRow<Kel8u> dst, int width);
void innerRGBToYUV422_8u_P3R(PlaneSource src, YUVPlaneRow<Kel8u> dst, int width);
void innerYUV422ToRGB_8u_C2C3R(const Kel8u* src, Kel8u* dst, int width);
void innerYUV422ToRGB_8u_P3C3R(YUVPlaneRow<const Kel8u> src, Kel8u* dst, int width);
void innerYUV422ToRGB_8u_P3AC4R(YUVPlaneRow<const Kel8u> src, Kel8u* dst, int width);
void innerYUV422ToRGB_8u_P3R(YUVPlaneRow<const Kel8u> src, PlaneStore dst, int width);
void unrealYUV(const Kel8u* src, Kel8u* dst);
void innerRGBToYUV420_8u_C3P3R(const Kel8u* top, const Kel8u* bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* u, Kel8u* v,
                               int width);
void innerRGBToYUV420_8u_P3R(PlaneSource top, PlaneSource bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* u, Kel8u* v,
                             int width);
void innerYUV420ToRGB_8u_P3C3R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v, Kel8u* top,
                               Kel8u* bottom, int width);
void innerYUV420ToRGB_8u_P3AC4R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v, Kel8u* top,
                                Kel8u* bottom, int width);
void innerYUV420ToRGB_8u_P3R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v,
                             PlaneStore top, PlaneStore bottom, int width);
void innerYUV420ToBGR_8u_P3C3R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v, Kel8u* top,
                               Kel8u* bottom, int width);
void ownYUV420ToBGR_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                             int height);

// ---- public functions ------------------------------------------------------------------------------------

namespace {

// The strides that the forms without strides derive from the width: luma,
// then both chroma planes.  A 4:2:2 plane of odd width has a last chroma
// column for the single last pixel; 4:2:0 has none.
struct DerivedSteps {
    int planes[3];
};
DerivedSteps steps422(int width)
{
    const int chroma = width / 2 + (width & 1);
    return {{width, chroma, chroma}};
}
DerivedSteps steps420(int width)
{
    return {{width, width / 2, width / 2}};
}

// A whole 4:2:2 image of even width and at least 256 pixels is converted as
// one long row: its rows lie back to back and each holds whole pairs (while
// the long row's bytes still count in an int).
bool asOneRow(KelImageSize size)
{
    const std::int64_t pixels = static_cast<std::int64_t>(size.width) * size.height;
    return pixels >= 256 && 3 * pixels <= std::numeric_limits<int>::max() && (size.width & 1) == 0;
}

} // namespace

extern "C" {

// Every member tests the pointers (a plane array's own address), the size,
// then the planes inside the arrays; 4:2:0 warns of an odd size after the work.

KEL_API KelResult keliRGBToYUV422_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myRGBToYUV422_8u_C3C2R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliRGBToYUV422_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                           KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myRGBToYUV422_8u_C3P3R(pSrc, srcStep, pDst, dstSteps, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliRGBToYUV422_8u_P3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3],
                                         const int dstSteps[3], KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myRGBToYUV422_8u_P3R(pSrc, srcStep, pDst, dstSteps, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliRGBToYUV422_8u_C3P3(const Kel8u* pSrc, Kel8u* const pDst[3], KelImageSize imgSize)
{
    if (const KelResult bad = testPlanesAfterSize(imgSize, 1, 1, pSrc, pDst)) return bad;
    if (asOneRow(imgSize))
        myRGBToYUV422_8u_C3P3(pSrc, pDst, imgSize);
    else
        myRGBToYUV422_8u_C3P3R(pSrc, rowStep(imgSize.width, 3), pDst, steps422(imgSize.width).planes, imgSize.width,
                               imgSize.height);
    return kelOk;
}

KEL_API KelResult keliRGBToYUV422_8u_P3(const Kel8u* const pSrc[3], Kel8u* const pDst[3], KelImageSize imgSize)
{
    if (const KelResult bad = testPlanesAfterSize(imgSize, 1, 1, pSrc, pDst)) return bad;
    if (asOneRow(imgSize))
        myRGBToYUV422_8u_P3(pSrc, pDst, imgSize);
    else
        myRGBToYUV422_8u_P3R(pSrc, imgSize.width, pDst, steps422(imgSize.width).planes, imgSize.width, imgSize.height);
    return kelOk;
}

KEL_API KelResult keliYUV422ToRGB_8u_C2C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myYUV422ToRGB_8u_C2C3R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliYUV422ToRGB_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep,
                                           KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myYUV422ToRGB_8u_P3C3R(pSrc, srcSteps, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliYUV422ToRGB_8u_P3AC4R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst,
                                            int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myYUV422ToRGB_8u_P3AC4R(pSrc, srcSteps, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliYUV422ToRGB_8u_P3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* const pDst[3],
                                         int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myYUV422ToRGB_8u_P3R(pSrc, srcSteps, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliYUV422ToRGB_8u_P3C3(const Kel8u* const pSrc[3], Kel8u* pDst, KelImageSize imgSize)
{
    if (const KelResult bad = testPlanesAfterSize(imgSize, 1, 1, pSrc, pDst)) return bad;
    if (asOneRow(imgSize))
        myYUV422ToRGB_8u_P3C3(pSrc, pDst, imgSize);
    else
        myYUV422ToRGB_8u_P3C3R(pSrc, steps422(imgSize.width).planes, pDst, rowStep(imgSize.width, 3), imgSize.width,
                               imgSize.height);
    return kelOk;
}

KEL_API KelResult keliYUV422ToRGB_8u_P3(const Kel8u* const pSrc[3], Kel8u* const pDst[3], KelImageSize imgSize)
{
    if (const KelResult bad = testPlanesAfterSize(imgSize, 1, 1, pSrc, pDst)) return bad;
    if (asOneRow(imgSize))
        myYUV422ToRGB_8u_P3(pSrc, pDst, imgSize);
    else
        myYUV422ToRGB_8u_P3R(pSrc, steps422(imgSize.width).planes, pDst, imgSize.width, imgSize.width, imgSize.height);
    return kelOk;
}

KEL_API KelResult keliRGBToYUV420_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                           KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myRGBToYUV420_8u_C3P3R(pSrc, srcStep, pDst, dstSteps, roiSize.width, roiSize.height);
    return warnUnlessEven(roiSize);
}

KEL_API KelResult keliRGBToYUV420_8u_P3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3],
                                         const int dstSteps[3], KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myRGBToYUV420_8u_P3R(pSrc, srcStep, pDst, dstSteps, roiSize.width, roiSize.height);
    return warnUnlessEven(roiSize);
}

KEL_API KelResult keliRGBToYUV420_8u_C3P3(const Kel8u* pSrc, Kel8u* const pDst[3], KelImageSize imgSize)
{
    return keliRGBToYUV420_8u_C3P3R(pSrc, rowStep(imgSize.width, 3), pDst, steps420(imgSize.width).planes, imgSize);
}

KEL_API KelResult keliRGBToYUV420_8u_P3(const Kel8u* const pSrc[3], Kel8u* const pDst[3], KelImageSize imgSize)
{
    return keliRGBToYUV420_8u_P3R(pSrc, imgSize.width, pDst, steps420(imgSize.width).planes, imgSize);
}

KEL_API KelResult keliYUV420ToRGB_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep,
                                           KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myYUV420ToRGB_8u_P3C3R(pSrc, srcSteps, pDst, dstStep, roiSize.width, roiSize.height);
    return warnUnlessEven(roiSize);
}

KEL_API KelResult keliYUV420ToRGB_8u_P3AC4R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst,
                                            int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myYUV420ToRGB_8u_P3AC4R(pSrc, srcSteps, pDst, dstStep, roiSize.width, roiSize.height);
    return warnUnlessEven(roiSize);
}

KEL_API KelResult keliYUV420ToRGB_8u_P3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* const pDst[3],
                                         int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myYUV420ToRGB_8u_P3R(pSrc, srcSteps, pDst, dstStep, roiSize.width, roiSize.height);
    return warnUnlessEven(roiSize);
}

KEL_API KelResult keliYUV420ToRGB_8u_P3C3(const Kel8u* const pSrc[3], Kel8u* pDst, KelImageSize imgSize)
{
    return keliYUV420ToRGB_8u_P3C3R(pSrc, steps420(imgSize.width).planes, pDst, rowStep(imgSize.width, 3), imgSize);
}

KEL_API KelResult keliYUV420ToRGB_8u_P3(const Kel8u* const pSrc[3], Kel8u* const pDst[3], KelImageSize imgSize)
{
    return keliYUV420ToRGB_8u_P3R(pSrc, steps420(imgSize.width).planes, pDst, imgSize.width, imgSize);
}

// Tests and warns on the halved size, its count of cells: a 6 x 4 image is
// warned of, 5 x 4 is not, and below 2 x 2 is a size error.
KEL_API KelResult keliYUV420ToBGR_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep,
                                           KelImageSize roiSize)
{
    const KelImageSize cells{roiSize.width / 2, roiSize.height / 2};
    if (const KelResult bad = testPlanesAfterSize(cells, 1, 1, pSrc, pDst)) return bad;
    ownYUV420ToBGR_8u_P3C3R(pSrc, srcSteps, pDst, dstStep, roiSize.width, roiSize.height);
    return warnUnlessEven(cells);
}

} // extern "C"

// ---- row layers ------------------------------------------------------------------------------------------

namespace {

// Row y of three planes, as a kernel takes it.
PlaneSource planeSource(const PlaneRows<const Kel8u>& rgb, int y)
{
    return {rgb.row(0, y), rgb.row(1, y), rgb.row(2, y)};
}
PlaneStore planeStore(const PlaneRows<Kel8u>& rgb, int y)
{
    return {rgb.row(0, y), rgb.row(1, y), rgb.row(2, y)};
}
template <typename Byte>
YUVPlaneRow<Byte> yuvRow(const PlaneRows<Byte>& yuv, int y)
{
    return {yuv.row(0, y), yuv.row(1, y), yuv.row(2, y)};
}

} // namespace

// 4:2:2: the row kernels are chosen once per call: the fastest this
// processor runs (yuvpxsimd.cpp), which gives the scalar kernel's bytes.
void myRGBToYUV422_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    const Row422 row = chooseRGBToYUV422_8u_C3C2R();
    forEachRow(height, [&](int y) { row(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width); });
}
void myRGBToYUV422_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], int width,
                            int height)
{
    const PlaneRows<Kel8u> yuv(pDst, dstSteps);
    const RowPixelsTo422 row = chooseRGBToYUV422_8u_C3P3R();
    forEachRow(height, [&](int y) { row(rowAt(pSrc, srcStep, y), yuvRow(yuv, y), width); });
}
void myRGBToYUV422_8u_P3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                          int width, int height)
{
    const PlaneRows<const Kel8u> rgb(pSrc, srcStep);
    const PlaneRows<Kel8u> yuv(pDst, dstSteps);
    const RowPlanesTo422 row = chooseRGBToYUV422_8u_P3R();
    forEachRow(height, [&](int y) { row(planeSource(rgb, y), yuvRow(yuv, y), width); });
}
// A row of one pixel has no pair before it to lend the missing V.
void myYUV422ToRGB_8u_C2C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    const Row422 row = chooseYUV422ToRGB_8u_C2C3R();
    forEachRow(height, [&](int y) {
        if (width == 1) unrealYUV(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y));
        else row(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width);
    });
}
void myYUV422ToRGB_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                            int height)
{
    const PlaneRows<const Kel8u> yuv(pSrc, srcSteps);
    const Row422ToPixels row = chooseYUV422ToRGB_8u_P3C3R();
    forEachRow(height, [&](int y) { row(yuvRow(yuv, y), rowAt(pDst, dstStep, y), width); });
}
void myYUV422ToRGB_8u_P3AC4R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                             int height)
{
    const PlaneRows<const Kel8u> yuv(pSrc, srcSteps);
    const Row422ToPixels row = chooseYUV422ToRGB_8u_P3AC4R();
    forEachRow(height, [&](int y) { row(yuvRow(yuv, y), rowAt(pDst, dstStep, y), width); });
}
void myYUV422ToRGB_8u_P3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* const pDst[3], int dstStep,
                          int width, int height)
{
    const PlaneRows<const Kel8u> yuv(pSrc, srcSteps);
    const PlaneRows<Kel8u> rgb(pDst, dstStep);
    const Row422ToPlanes row = chooseYUV422ToRGB_8u_P3R();
    forEachRow(height, [&](int y) { row(yuvRow(yuv, y), planeStore(rgb, y), width); });
}

// 4:2:0: row pairs, each with one chroma row.  The row-pair kernel is chosen
// once per call: the fastest this processor runs (yuvpxsimd.cpp), which gives
// the scalar kernel's bytes.
void myRGBToYUV420_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], int width,
                            int height)
{
    const PlaneRows<Kel8u> yuv(pDst, dstSteps);
    const RowPairRGBToYUV420 rowPair = chooseRGBToYUV420_8u_C3P3R();
    forEachRowPair(height, [&](int top, int bottom, int chroma) {
        rowPair(rowAt(pSrc, srcStep, top), rowAt(pSrc, srcStep, bottom), yuv.row(0, top), yuv.row(0, bottom),
                yuv.row(1, chroma), yuv.row(2, chroma), width);
    });
}
void myRGBToYUV420_8u_P3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                          int width, int height)
{
    const PlaneRows<const Kel8u> rgb(pSrc, srcStep);
    const PlaneRows<Kel8u> yuv(pDst, dstSteps);
    const RowPairRGBToYUV420Planes rowPair = chooseRGBToYUV420_8u_P3R();
    forEachRowPair(height, [&](int top, int bottom, int chroma) {
        rowPair(planeSource(rgb, top), planeSource(rgb, bottom), yuv.row(0, top), yuv.row(0, bottom),
                yuv.row(1, chroma), yuv.row(2, chroma), width);
    });
}
// The inverse row-pair kernel is chosen once per call: the fastest this
// processor runs (yuvpxsimd.cpp), which gives the scalar kernel's bytes.
void myYUV420ToRGB_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                            int height)
{
    const PlaneRows<const Kel8u> yuv(pSrc, srcSteps);
    const RowPairYUV420 rowPair = chooseYUV420ToRGB_8u_P3C3R();
    forEachRowPair(height, [&](int top, int bottom, int chroma) {
        rowPair(yuv.row(0, top), yuv.row(0, bottom), yuv.row(1, chroma), yuv.row(2, chroma), rowAt(pDst, dstStep, top),
                rowAt(pDst, dstStep, bottom), width);
    });
}
void myYUV420ToRGB_8u_P3AC4R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                             int height)
{
    const PlaneRows<const Kel8u> yuv(pSrc, srcSteps);
    const RowPairYUV420 rowPair = chooseYUV420ToRGB_8u_P3AC4R();
    forEachRowPair(height, [&](int top, int bottom, int chroma) {
        rowPair(yuv.row(0, top), yuv.row(0, bottom), yuv.row(1, chroma), yuv.row(2, chroma), rowAt(pDst, dstStep, top),
                rowAt(pDst, dstStep, bottom), width);
    });
}
void myYUV420ToRGB_8u_P3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* const pDst[3], int dstStep,
                          int width, int height)
{
    const PlaneRows<const Kel8u> yuv(pSrc, srcSteps);
    const PlaneRows<Kel8u> rgb(pDst, dstStep);
    const RowPairYUV420Planes rowPair = chooseYUV420ToRGB_8u_P3R();
    forEachRowPair(height, [&](int top, int bottom, int chroma) {
        rowPair(yuv.row(0, top), yuv.row(0, bottom), yuv.row(1, chroma), yuv.row(2, chroma), planeStore(rgb, top),
                planeStore(rgb, bottom), width);
    });
}

// ---- whole 4:2:2 images as one row -----------------------------------------------------------------------

namespace {

// The kernel over the pixels up to a multiple of 8, then over the rest.
template <typename Kernel>
void inTwoRuns(KelImageSize size, const Kernel& kernel)
{
    const int pixels = static_cast<int>(static_cast<std::int64_t>(size.width) * size.height);
    const int n = pixels & ~7;
    kernel(0, n);
    if (pixels & 7) kernel(n, pixels & 7);
}

// The planes from pixel `first` on.
template <typename Byte>
YUVPlaneRow<Byte> yuvFrom(Byte* const planes[3], int first)
{
    return YUVPlaneRow<Byte>{planes[0], planes[1], planes[2]}.from(first);
}
PlaneSource rgbFrom(const Kel8u* const planes[3], int first)
{
    return {planes[0] + first, planes[1] + first, planes[2] + first};
}
PlaneStore rgbFrom(Kel8u* const planes[3], int first)
{
    return {planes[0] + first, planes[1] + first, planes[2] + first};
}

} // namespace

// The row kernel is chosen once per call, as for the row layers.
void myRGBToYUV422_8u_C3P3(const Kel8u* pSrc, Kel8u* const pDst[3], KelImageSize size)
{
    const RowPixelsTo422 row = chooseRGBToYUV422_8u_C3P3R();
    inTwoRuns(size, [&](int first, int count) { row(pSrc + 3 * first, yuvFrom(pDst, first), count); });
}
void myRGBToYUV422_8u_P3(const Kel8u* const pSrc[3], Kel8u* const pDst[3], KelImageSize size)
{
    const RowPlanesTo422 row = chooseRGBToYUV422_8u_P3R();
    inTwoRuns(size, [&](int first, int count) { row(rgbFrom(pSrc, first), yuvFrom(pDst, first), count); });
}
void myYUV422ToRGB_8u_P3C3(const Kel8u* const pSrc[3], Kel8u* pDst, KelImageSize size)
{
    const Row422ToPixels row = chooseYUV422ToRGB_8u_P3C3R();
    inTwoRuns(size, [&](int first, int count) { row(yuvFrom(pSrc, first), pDst + 3 * first, count); });
}
void myYUV422ToRGB_8u_P3(const Kel8u* const pSrc[3], Kel8u* const pDst[3], KelImageSize size)
{
    const Row422ToPlanes row = chooseYUV422ToRGB_8u_P3R();
    inTwoRuns(size, [&](int first, int count) { row(yuvFrom(pSrc, first), rgbFrom(pDst, first), count); });
}

// ---- kernels ---------------------------------------------------------------------------------------------

namespace {

// Luma enters the inverse sums as Y << 16, that is Y * 65536 for a byte.
constexpr std::int32_t kLumaWeight = 65536;

// The kernels take their row sources and stores by value.  Through a
// reference the compiler cannot tell whether a byte stored to the image lands
// on the row pointers, so it would reload them for every pixel and leave the
// block loops unvectorised.

// A 4:2:2 destination row in pixel order, the bytes of a pair placed by L.
template <PairLayout L>
struct PairStore {
    Kel8u* p;

    void putPair(int pair, Kel8u y0, Kel8u y1, Kel8u cb, Kel8u cr) const
    {
        Kel8u* q = p + 4 * pair;
        q[L.y0] = y0;
        q[L.y1] = y1;
        q[L.cb] = cb;
        q[L.cr] = cr;
    }
    // A last single pixel's pair is cut after two bytes: its Y and the one
    // chroma sample that lies there.
    void putLast(int pair, Kel8u luma, Kel8u cb, Kel8u cr) const
    {
        Kel8u* q = p + 4 * pair;
        q[L.y0] = luma;
        if constexpr (L.cbMissing()) q[L.cr] = cr;
        else q[L.cb] = cb;
    }
};

// Forward 4:2:2.  Whole pairs go in blocks: samples and luma sums gathered
// into plain arrays first, then each pair from them, in loops the compiler
// vectorises.  A last single pixel takes the one-pixel formulas.
template <typename Source, typename Store>
void forward422(const Source in, const Store out, int width)
{
    const int pairs = width / 2;
    std::int32_t red[kBlock], blue[kBlock], sum[kBlock];
    forEachBlock(2 * pairs, [&](int x0, int n) {
        for (int i = 0; i < n; ++i) {
            const std::int32_t r = in.r(x0 + i), g = in.g(x0 + i), b = in.b(x0 + i);
            red[i] = r;
            blue[i] = b;
            sum[i] = lumaSum(r, g, b);
        }
        for (int k = 0; k < n / 2; ++k) {
            const int e = 2 * k, o = e + 1;
            out.putPair(x0 / 2 + k, static_cast<Kel8u>(sum[e] >> 16), static_cast<Kel8u>(sum[o] >> 16),
                        chromaU<1>(blue[e] + blue[o], sum[e] + sum[o]), chromaV<1>(red[e] + red[o], sum[e] + sum[o]));
        }
    });
    if (width & 1) {
        const int x = 2 * pairs;
        const std::int32_t s = lumaSum(in.r(x), in.g(x), in.b(x));
        out.putLast(pairs, static_cast<Kel8u>(s >> 16), chromaU<0>(in.b(x), s), chromaV<0>(in.r(x), s));
    }
}

// One row of a 4:2:0 block: its samples kept for the cells, its luma written,
// truncated (LumaHalf 0) or rounded half up (LumaHalf 32768; the weights sum
// to 65536, so 255.5 is the most it reaches and no clamp is needed).
template <std::int32_t LumaHalf, typename Source>
[[gnu::always_inline]] inline void lumaRow(const Source in, int x0, int n, std::int32_t* red, std::int32_t* blue,
                                           std::int32_t* sum, Kel8u* y)
{
    for (int i = 0; i < n; ++i) {
        const std::int32_t r = in.r(x0 + i), g = in.g(x0 + i), b = in.b(x0 + i);
        red[i] = r;
        blue[i] = b;
        sum[i] = lumaSum(r, g, b);
        y[i] = static_cast<Kel8u>((sum[i] + LumaHalf) >> 16);
    }
}

// Forward 4:2:0, a row pair: width / 2 cells of 2 x 2; an odd last column is
// skipped.  The cells go in blocks: both rows' luma and samples first, then
// the cells' chroma, each a loop the compiler vectorises.  The chroma sums
// take the luma sums unrounded either way.
template <std::int32_t LumaHalf = 0, typename Source>
void forward420(const Source top, const Source bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* u, Kel8u* v, int width)
{
    std::int32_t red[2][kBlock], blue[2][kBlock], sum[2][kBlock];
    forEachBlock(width & ~1, [&](int x0, int n) {
        lumaRow<LumaHalf>(top, x0, n, red[0], blue[0], sum[0], yTop + x0);
        lumaRow<LumaHalf>(bottom, x0, n, red[1], blue[1], sum[1], yBottom + x0);
        for (int k = 0; k < n / 2; ++k) {
            const int e = 2 * k, o = e + 1;
            const std::int32_t cellSum = sum[0][e] + sum[0][o] + sum[1][e] + sum[1][o];
            u[x0 / 2 + k] = chromaU<2>(blue[0][e] + blue[0][o] + blue[1][e] + blue[1][o], cellSum);
            v[x0 / 2 + k] = chromaV<2>(red[0][e] + red[0][o] + red[1][e] + red[1][o], cellSum);
        }
    });
}

// Inverse 4:2:2 from planes, pixel by pixel; a last single pixel takes chroma
// entry width / 2, which the planes hold.
template <typename Store>
void inverse422Planes(YUVPlaneRow<const Kel8u> yuv, const Store out, int width)
{
    for (int x = 0; x < width; ++x) {
        Kel8u r, g, b;
        toRGB<inverse1>(yuv.y[x], yuv.u[x / 2], yuv.v[x / 2], r, g, b);
        out.put(x, r, g, b);
    }
}

// Inverse 4:2:2 in pixel order, in blocks: each pair's chroma terms, then its
// two pixels from their lumas, two bytes apart.  A last single pixel, in a
// pair cut short after two bytes, takes its missing chroma sample from the
// pair before.
template <PairLayout L>
void inverse422Pairs(const Kel8u* src, Kel8u* dst, int width)
{
    static_assert(L.y1 == L.y0 + 2, "a pair's two lumas lie two bytes apart");
    const PixelStore<3, kRGB> out{dst};
    const int pairs = width / 2;
    TermBlock terms;
    forEachBlock(2 * pairs, [&](int x0, int n) {
        const Kel8u* block = src + 2 * x0;  // two bytes a pixel
        for (int i = 0; i < n; i += 2) terms.setPair(i, inverseTerms<inverse1>(block[2 * i + L.cb], block[2 * i + L.cr]));
        storeBlock<kLumaWeight, 2>(block + L.y0, terms, n, out, x0);
    });
    if (width & 1) {
        const Kel8u* last = src + 4 * pairs;
        const Kel8u cb = L.cbMissing() ? last[L.missingFromBefore()] : last[L.cb];
        const Kel8u cr = L.cbMissing() ? last[L.cr] : last[L.missingFromBefore()];
        Kel8u r, g, b;
        toRGB<inverse1>(last[L.y0], cb, cr, r, g, b);
        out.put(2 * pairs, r, g, b);
    }
}

// Inverse 4:2:0, a row pair, in blocks: the cells' chroma terms, then the top
// and the bottom row's pixels from them; an odd last column is left alone.
template <std::int32_t Half, typename Store>
void inverse420(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v, const Store top,
                const Store bottom, int width)
{
    TermBlock terms;
    forEachBlock(width & ~1, [&](int x0, int n) {
        for (int i = 0; i < n; i += 2)
            terms.setPair(i, inverseTerms<inverse1, Half>(u[(x0 + i) / 2], v[(x0 + i) / 2]));
        storeBlock<kLumaWeight, 1>(yTop + x0, terms, n, top, x0);
        storeBlock<kLumaWeight, 1>(yBottom + x0, terms, n, bottom, x0);
    });
}

// Four-byte destinations of the inverses write alpha 0.
using AlphaZeroStore = PixelStore<4, kRGB, Alpha::written>;

} // namespace

void innerRGBToYUV422_8u_C3C2R(const Kel8u* src, Kel8u* dst, int width)
{
    forward422(PixelSource<3, kRGB>{src}, PairStore<kYCbCrPair>{dst}, width);
}
void innerRGBToYUV422_8u_C3P3R(const Kel8u* src, YUVPlaneRow<Kel8u> dst, int width)
{
    forward422(PixelSource<3, kRGB>{src}, dst, width);
}
void innerRGBToYUV422_8u_P3R(PlaneSource src, YUVPlaneRow<Kel8u> dst, int width)
{
    forward422(src, dst, width);
}
void innerYUV422ToRGB_8u_C2C3R(const Kel8u* src, Kel8u* dst, int width)
{
    inverse422Pairs<kYCbCrPair>(src, dst, width);
}
void innerYUV422ToRGB_8u_P3C3R(YUVPlaneRow<const Kel8u> src, Kel8u* dst, int width)
{
    inverse422Planes(src, PixelStore<3, kRGB>{dst}, width);
}
void innerYUV422ToRGB_8u_P3AC4R(YUVPlaneRow<const Kel8u> src, Kel8u* dst, int width)
{
    inverse422Planes(src, AlphaZeroStore{dst, 0}, width);
}
void innerYUV422ToRGB_8u_P3R(YUVPlaneRow<const Kel8u> src, PlaneStore dst, int width)
{
    inverse422Planes(src, dst, width);
}

// The width-1 path of pixel-order 4:2:2: the one pair is cut after Y and U,
// and with no pair before it, byte 1 serves as both U and V.
void unrealYUV(const Kel8u* src, Kel8u* dst)
{
    Kel8u r, g, b;
    toRGB<inverse1>(src[0], src[1], src[1], r, g, b);
    PixelStore<3, kRGB>{dst}.put(0, r, g, b);
}

void innerRGBToYUV420_8u_C3P3R(const Kel8u* top, const Kel8u* bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* u, Kel8u* v,
                               int width)
{
    forward420(PixelSource<3, kRGB>{top}, PixelSource<3, kRGB>{bottom}, yTop, yBottom, u, v, width);
}
void innerRGBToYUV420_8u_P3R(PlaneSource top, PlaneSource bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* u, Kel8u* v,
                             int width)
{
    forward420(top, bottom, yTop, yBottom, u, v, width);
}
void innerBGRToYUV420RoundedLuma_8u_C3P3R(const Kel8u* top, const Kel8u* bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* u,
                                          Kel8u* v, int width)
{
    forward420<32768>(PixelSource<3, kBGR>{top}, PixelSource<3, kBGR>{bottom}, yTop, yBottom, u, v, width);
}
void innerYUV420ToRGB_8u_P3C3R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v, Kel8u* top,
                               Kel8u* bottom, int width)
{
    inverse420<0>(yTop, yBottom, u, v, PixelStore<3, kRGB>{top}, PixelStore<3, kRGB>{bottom}, width);
}
// The one inverse that rounds: 32768 in each sum before the shift.
void innerYUV420ToRGB_8u_P3AC4R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v, Kel8u* top,
                                Kel8u* bottom, int width)
{
    inverse420<32768>(yTop, yBottom, u, v, AlphaZeroStore{top, 0}, AlphaZeroStore{bottom, 0}, width);
}
void innerYUV420ToRGB_8u_P3R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v,
                             PlaneStore top, PlaneStore bottom, int width)
{
    inverse420<0>(yTop, yBottom, u, v, top, bottom, width);
}

void innerYUV420ToBGR_8u_P3C3R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v, Kel8u* top,
                               Kel8u* bottom, int width)
{
    inverse420<0>(yTop, yBottom, u, v, PixelStore<3, kBGR>{top}, PixelStore<3, kBGR>{bottom}, width);
}

// Row loop of 4:2:0 to blue-first pixels, its kernel chosen once per call.
void ownYUV420ToBGR_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                             int height)
{
    const PlaneRows<const Kel8u> yuv(pSrc, srcSteps);
    const RowPairYUV420 rowPair = chooseYUV420ToBGR_8u_P3C3R();
    forEachRowPair(height, [&](int top, int bottom, int chroma) {
        rowPair(yuv.row(0, top), yuv.row(0, bottom), yuv.row(1, chroma), yuv.row(2, chroma), rowAt(pDst, dstStep, top),
                rowAt(pDst, dstStep, bottom), width);
    });
}

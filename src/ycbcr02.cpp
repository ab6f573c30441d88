// RGB and BGR to studio-range YCbCr, YCrCb and CbYCr with 4:2:2, 4:2:0 and 4:1:1 chroma: the
// full-resolution weights, with members that differ in what a chroma sample averages and its constant.
#include <cstdint>

#include "callframe.h"
#include "cbcrpx.h"
#include "gamma.h"
#include "rowstore.h"
#include "ycbcr02simd.h"

using namespace kel;

// ---- constants -----------------------------------------------------------------------------------

namespace {

// The pair, cell and filter constants are in ycbcr02simd.h, which the vector kernels share.

// ---- kernels, defined at the end -------------------------------------------------------------------

template <PairLayout L, PairConstants K, typename Source>
void pairsToPixelOrder(Source src, Kel8u* dst, int width);
template <PairConstants K, typename Source>
void pairsToPlanes(Source src, Kel8u* y, Kel8u* cb, Kel8u* cr, int width);
template <typename Source>
void filteredCbYCr(Source src, Kel8u* dst, int width, FilterCarry& carry);
template <typename Source>
void cells420(Source top, Source bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* cb, Kel8u* cr, int width);
template <typename Source>
void groups411(Source src, Kel8u* y, Kel8u* cb, Kel8u* cr, int width);

} // namespace

// ---- layers behind the public functions ----------------------------------------------------------

void myRGBToYCbCr422_C3_C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height);
void myRGBToYCbCr422_C3P2_C2R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep, int width, int height);
void myRGBToYCrCb422_C3_C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height);
void myRGBToYCrCb422_C3P2_C2R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep, int width, int height);
void myRGBToYCbCr420_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], int width,
                              int height);
void ownBGRToYCbCr422_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height);
void ownBGRToYCbCr422_8u_AC4C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height);
void ownBGRToYCbCr422_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], int width,
                               int height);
void ownBGRToYCbCr422_8u_AC4P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                int width, int height);
void ownBGRToYCbCr420_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], int width,
                               int height);
void ownBGRToYCbCr420_8u_AC4P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                int width, int height);
void ownBGRToYCbCr411_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], int width,
                               int height);
void ownBGRToYCbCr411_8u_AC4P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                int width, int height);
void myRGBToCbYCr422_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height);
void myRGBToCbYCr422Gamma_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height);
void myBGRToCbYCr422_8u_AC4C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height);

// The row kernels are declared in ycbcr02simd.h, whose vector kernels finish
// rows with them.

// ---- public functions ------------------------------------------------------------------------------
// The RGB and CbYCr members test their planes after the size, the BGR members
// with the pointers.

extern "C" {

KEL_API KelResult keliRGBToYCbCr422_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myRGBToYCbCr422_C3_C2R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliRGBToYCrCb422_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myRGBToYCrCb422_C3_C2R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliRGBToYCbCr422_8u_P3C2R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep,
                                             KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myRGBToYCbCr422_C3P2_C2R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliRGBToYCrCb422_8u_P3C2R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep,
                                             KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myRGBToYCrCb422_C3P2_C2R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliRGBToYCbCr420_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                             KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myRGBToYCbCr420_8u_C3P3R(pSrc, srcStep, pDst, dstSteps, roiSize.width, roiSize.height);
    return warnUnlessEven(roiSize);
}

KEL_API KelResult keliBGRToYCbCr422_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesWithPointers(roiSize, 2, 1, pSrc, pDst)) return bad;
    ownBGRToYCbCr422_8u_C3C2R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliBGRToYCbCr422_8u_AC4C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesWithPointers(roiSize, 2, 1, pSrc, pDst)) return bad;
    ownBGRToYCbCr422_8u_AC4C2R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliBGRToYCbCr422_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                             KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesWithPointers(roiSize, 2, 1, pSrc, pDst)) return bad;
    ownBGRToYCbCr422_8u_C3P3R(pSrc, srcStep, pDst, dstSteps, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliBGRToYCbCr422_8u_AC4P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                              KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesWithPointers(roiSize, 2, 1, pSrc, pDst)) return bad;
    ownBGRToYCbCr422_8u_AC4P3R(pSrc, srcStep, pDst, dstSteps, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliBGRToYCbCr420_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                             KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesWithPointers(roiSize, 2, 2, pSrc, pDst)) return bad;
    ownBGRToYCbCr420_8u_C3P3R(pSrc, srcStep, pDst, dstSteps, roiSize.width, roiSize.height);
    return warnUnlessEven(roiSize);
}

KEL_API KelResult keliBGRToYCbCr420_8u_AC4P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                              KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesWithPointers(roiSize, 2, 2, pSrc, pDst)) return bad;
    ownBGRToYCbCr420_8u_AC4P3R(pSrc, srcStep, pDst, dstSteps, roiSize.width, roiSize.height);
    return warnUnlessEven(roiSize);
}

KEL_API KelResult keliBGRToYCrCb420_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                             KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesWithPointers(roiSize, 2, 2, pSrc, pDst)) return bad;
    const CrCbPlanes crCb(pDst, dstSteps);
    ownBGRToYCbCr420_8u_C3P3R(pSrc, srcStep, crCb.planes, crCb.steps, roiSize.width, roiSize.height);
    return warnUnlessEven(roiSize);
}

KEL_API KelResult keliBGRToYCrCb420_8u_AC4P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                              KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesWithPointers(roiSize, 2, 2, pSrc, pDst)) return bad;
    const CrCbPlanes crCb(pDst, dstSteps);
    ownBGRToYCbCr420_8u_AC4P3R(pSrc, srcStep, crCb.planes, crCb.steps, roiSize.width, roiSize.height);
    return warnUnlessEven(roiSize);
}

KEL_API KelResult keliBGRToYCbCr411_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                             KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesWithPointers(roiSize, 4, 1, pSrc, pDst)) return bad;
    ownBGRToYCbCr411_8u_C3P3R(pSrc, srcStep, pDst, dstSteps, roiSize.width, roiSize.height);
    return warnUnlessFourWide(roiSize);
}

KEL_API KelResult keliBGRToYCbCr411_8u_AC4P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                              KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesWithPointers(roiSize, 4, 1, pSrc, pDst)) return bad;
    ownBGRToYCbCr411_8u_AC4P3R(pSrc, srcStep, pDst, dstSteps, roiSize.width, roiSize.height);
    return warnUnlessFourWide(roiSize);
}

KEL_API KelResult keliRGBToCbYCr422_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myRGBToCbYCr422_8u_C3C2R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

// The one member of the family that tests its strides, after the size.
KEL_API KelResult keliRGBToCbYCr422Gamma_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep,
                                                  KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    if (stepBelowOne(srcStep, dstStep)) return kelErrStep;
    myRGBToCbYCr422Gamma_8u_C3C2R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliBGRToCbYCr422_8u_AC4C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    myBGRToCbYCr422_8u_AC4C2R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

} // extern "C"

// ---- row layers: the RGB members -------------------------------------------------------------------

void myRGBToYCbCr422_C3_C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    const RowForward422 kernel = chooseRGBToYCbCr422();
    forEachRow(height, [&](int y) { kernel(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width); });
}

void myRGBToYCbCr422_C3P2_C2R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    const RowPlanesForward422 kernel = chooseRGBPlanesToYCbCr422();
    const PlaneRows<const Kel8u> src(pSrc, srcStep);
    forEachRow(height, [&](int y) {
        const Kel8u* const rows[3] = {src.row(0, y), src.row(1, y), src.row(2, y)};
        kernel(rows, rowAt(pDst, dstStep, y), width);
    });
}

void myRGBToYCrCb422_C3_C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    const RowForward422 kernel = chooseRGBToYCrCb422();
    forEachRow(height, [&](int y) { kernel(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width); });
}

void myRGBToYCrCb422_C3P2_C2R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    const RowPlanesForward422 kernel = chooseRGBPlanesToYCrCb422();
    const PlaneRows<const Kel8u> src(pSrc, srcStep);
    forEachRow(height, [&](int y) {
        const Kel8u* const rows[3] = {src.row(0, y), src.row(1, y), src.row(2, y)};
        kernel(rows, rowAt(pDst, dstStep, y), width);
    });
}

void myRGBToYCbCr420_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], int width,
                              int height)
{
    const RowPairForward420 kernel = chooseRGBToYCbCr420();
    const PlaneRows<Kel8u> dst(pDst, dstSteps);
    forEachRowPair(height, [&](int top, int bottom, int chroma) {
        kernel(rowAt(pSrc, srcStep, top), rowAt(pSrc, srcStep, bottom), dst.row(0, top), dst.row(0, bottom),
               dst.row(1, chroma), dst.row(2, chroma), width);
    });
}

// ---- row layers: the BGR members, row loop and kernel in one ------------------------------------

namespace {

// The row kernels are those of the pixel's pitch, chosen once a call.
template <int Pitch>
void bgr422ToPixelOrder(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    const RowForward422 kernel = Pitch == 3 ? chooseBGRToYCbCr422() : chooseBGRToYCbCr422AC4();
    forEachRow(height, [&](int y) { kernel(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width); });
}

template <int Pitch>
void bgr422ToPlanes(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], int width, int height)
{
    const RowForwardToPlanes kernel = Pitch == 3 ? chooseBGRToYCbCr422Planes() : chooseBGRToYCbCr422PlanesAC4();
    const PlaneRows<Kel8u> dst(pDst, dstSteps);
    forEachRow(height, [&](int y) {
        kernel(rowAt(pSrc, srcStep, y), dst.row(0, y), dst.row(1, y), dst.row(2, y), width);
    });
}

// The row-pair kernel is the 4:2:0 kernel of the pixel's pitch, chosen once a call.
template <int Pitch>
void bgr420(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], int width, int height)
{
    const RowPairForward420 kernel = Pitch == 3 ? chooseBGRToYCbCr420() : chooseBGRToYCbCr420AC4();
    const PlaneRows<Kel8u> dst(pDst, dstSteps);
    forEachRowPair(height, [&](int top, int bottom, int chroma) {
        kernel(rowAt(pSrc, srcStep, top), rowAt(pSrc, srcStep, bottom), dst.row(0, top), dst.row(0, bottom),
               dst.row(1, chroma), dst.row(2, chroma), width);
    });
}

template <int Pitch>
void bgr411(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], int width, int height)
{
    const RowForwardToPlanes kernel = Pitch == 3 ? chooseBGRToYCbCr411() : chooseBGRToYCbCr411AC4();
    const PlaneRows<Kel8u> dst(pDst, dstSteps);
    forEachRow(height, [&](int y) {
        kernel(rowAt(pSrc, srcStep, y), dst.row(0, y), dst.row(1, y), dst.row(2, y), width);
    });
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

// ---- row layers: the CbYCr members, row loop and kernel in one ----------------------------------

void myRGBToCbYCr422_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    const RowFilteredCbYCr kernel = chooseRGBToCbYCr422();
    forEachRow(height, [&](int y) {
        FilterCarry carry{0, 0};
        kernel(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width, carry);
    });
}

// Every sample through the forward BT.709 table, then the filter of the plain
// member; the carry joins the runs of a row as it joins its pairs.
void myRGBToCbYCr422Gamma_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    const RowFilteredCbYCr kernel = chooseRGBToCbYCr422Gamma();
    forEachRow(height, [&](int y) {
        FilterCarry carry{0, 0};
        kernel(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width, carry);
    });
}

void myBGRToCbYCr422_8u_AC4C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    const RowForward422 kernel = chooseBGRToCbYCr422AC4();
    forEachRow(height, [&](int y) { kernel(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width); });
}

// ---- kernels ---------------------------------------------------------------------------------------

void innerRGBToYCbCr422_C3_C2R(const Kel8u* src, Kel8u* dst, int width)
{
    pairsToPixelOrder<kYCbCrPair, kRGBPair>(PixelSource<3, kRGB>{src}, dst, width);
}
void innerRGBToYCbCr422_C3P2_C3R(const Kel8u* const src[3], Kel8u* dst, int width)
{
    pairsToPixelOrder<kYCbCrPair, kRGBPair>(PlaneSource{src[0], src[1], src[2]}, dst, width);
}
void innerRGBToYCrCb422_C3_C2R(const Kel8u* src, Kel8u* dst, int width)
{
    pairsToPixelOrder<kYCrCbPair, kRGBPair>(PixelSource<3, kRGB>{src}, dst, width);
}
void innerRGBToYCrCb422_C3P2_C3R(const Kel8u* const src[3], Kel8u* dst, int width)
{
    pairsToPixelOrder<kYCrCbPair, kRGBPair>(PlaneSource{src[0], src[1], src[2]}, dst, width);
}
void innerBGRToYCbCr422_8u_C3C2R(const Kel8u* src, Kel8u* dst, int width)
{
    pairsToPixelOrder<kYCbCrPair, kBGRPair>(PixelSource<3, kBGR>{src}, dst, width);
}
void innerBGRToYCbCr422_8u_AC4C2R(const Kel8u* src, Kel8u* dst, int width)
{
    pairsToPixelOrder<kYCbCrPair, kBGRPair>(PixelSource<4, kBGR>{src}, dst, width);
}
void innerBGRToCbYCr422_8u_AC4C2R(const Kel8u* src, Kel8u* dst, int width)
{
    pairsToPixelOrder<kCbYCrPair, kBGRCbYCrPair>(PixelSource<4, kBGR>{src}, dst, width);
}
void innerBGRToYCbCr422_8u_C3P3R(const Kel8u* src, Kel8u* y, Kel8u* cb, Kel8u* cr, int width)
{
    pairsToPlanes<kBGRPair>(PixelSource<3, kBGR>{src}, y, cb, cr, width);
}
void innerBGRToYCbCr422_8u_AC4P3R(const Kel8u* src, Kel8u* y, Kel8u* cb, Kel8u* cr, int width)
{
    pairsToPlanes<kBGRPair>(PixelSource<4, kBGR>{src}, y, cb, cr, width);
}
void innerBGRToYCbCr411_8u_C3P3R(const Kel8u* src, Kel8u* y, Kel8u* cb, Kel8u* cr, int width)
{
    groups411(PixelSource<3, kBGR>{src}, y, cb, cr, width);
}
void innerBGRToYCbCr411_8u_AC4P3R(const Kel8u* src, Kel8u* y, Kel8u* cb, Kel8u* cr, int width)
{
    groups411(PixelSource<4, kBGR>{src}, y, cb, cr, width);
}
void innerRGBToCbYCr422_8u_C3C2R(const Kel8u* src, Kel8u* dst, int width, FilterCarry& carry)
{
    filteredCbYCr(PixelSource<3, kRGB>{src}, dst, width, carry);
}
void innerRGBToCbYCr422Gamma_8u_C3C2R(const Kel8u* src, Kel8u* dst, int width, FilterCarry& carry)
{
    Kel8u coded[3 * kGammaRun];
    for (int x0 = 0; x0 < width; x0 += kGammaRun) {
        const int n = width - x0 < kGammaRun ? width - x0 : kGammaRun;
        innerForwardGammaBytes(src + 3 * x0, coded, 3 * n);
        innerRGBToCbYCr422_8u_C3C2R(coded, dst + 2 * x0, n, carry);
    }
}
void innerForwardGammaBytes(const Kel8u* src, Kel8u* dst, int count)
{
    for (int i = 0; i < count; ++i) dst[i] = tableFwd8u[src[i]];
}
void innerRGBToYCbCr420_8u_C3P3R(const Kel8u* top, const Kel8u* bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* cb,
                                 Kel8u* cr, int width)
{
    cells420(PixelSource<3, kRGB>{top}, PixelSource<3, kRGB>{bottom}, yTop, yBottom, cb, cr, width);
}
void innerBGRToYCbCr420_8u_C3P3R(const Kel8u* top, const Kel8u* bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* cb,
                                 Kel8u* cr, int width)
{
    cells420(PixelSource<3, kBGR>{top}, PixelSource<3, kBGR>{bottom}, yTop, yBottom, cb, cr, width);
}
void innerBGRToYCbCr420_8u_AC4P3R(const Kel8u* top, const Kel8u* bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* cb,
                                  Kel8u* cr, int width)
{
    cells420(PixelSource<4, kBGR>{top}, PixelSource<4, kBGR>{bottom}, yTop, yBottom, cb, cr, width);
}

namespace {

// Every sum of this family stays inside the byte range after its shift, so
// the low byte is the result and no clamp is needed.
inline Kel8u lumaOf(std::int32_t r, std::int32_t g, std::int32_t b, std::int32_t k)
{
    return static_cast<Kel8u>((lumaSum(r, g, b) + k) >> 16);
}
inline Kel8u chromaOf(std::int32_t difference, std::int32_t k, int shift)
{
    return static_cast<Kel8u>((difference + k) >> shift);
}

// Pairs into pixel order.  A last single pixel writes the first two bytes of
// its slot, its Y and the chroma sample stored beside it, from its own colour.
template <PairLayout L, PairConstants K, typename Source>
void pairsToPixelOrder(Source src, Kel8u* dst, int width)
{
    // Whole pairs go in blocks: the samples gathered into plain arrays first,
    // then each pair from them, in loops the compiler vectorises.
    const int pairs = width / 2;
    std::int32_t r[kBlock], g[kBlock], b[kBlock];
    forEachBlock(2 * pairs, [&](int x0, int n) {
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
    });
    if (width & 1) {
        const int x = width - 1;
        const std::int32_t r = src.r(x), g = src.g(x), b = src.b(x);
        const Kel8u y = lumaOf(r, g, b, kRoundedLuma);
        const Kel8u chroma = L.cbMissing() ? chromaOf(redDifference(r, g, b), K.singleK, 16)
                                           : chromaOf(blueDifference(r, g, b), K.singleK, 16);
        Kel8u* slot = dst + 4 * pairs;
        slot[L.y0] = y;
        slot[1 - L.y0] = chroma;
    }
}

// Pairs into planes; a last single pixel writes its Y only.
template <PairConstants K, typename Source>
void pairsToPlanes(Source src, Kel8u* y, Kel8u* cb, Kel8u* cr, int width)
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
// first pair of a row has no left tap: its carry is 0.
template <typename Source>
void filteredCbYCr(Source src, Kel8u* dst, int width, FilterCarry& carry)
{
    std::int32_t carryB = carry.b, carryR = carry.r;
    const int pairs = width / 2;
    for (int k = 0; k < pairs; ++k) {
        const int e = 2 * k, o = e + 1;
        const std::int32_t be = blueDifference(src.r(e), src.g(e), src.b(e));
        const std::int32_t re = redDifference(src.r(e), src.g(e), src.b(e));
        const std::int32_t bo = blueDifference(src.r(o), src.g(o), src.b(o));
        const std::int32_t ro = redDifference(src.r(o), src.g(o), src.b(o));
        Kel8u* pair = dst + 4 * k;
        pair[kCbYCrPair.cb] = chromaOf((be >> 1) + carryB + (bo >> 2), kFilteredChroma, 16);
        pair[kCbYCrPair.y0] = lumaOf(src.r(e), src.g(e), src.b(e), kRoundedLuma);
        pair[kCbYCrPair.cr] = chromaOf((re >> 1) + carryR + (ro >> 2), kFilteredChroma, 16);
        pair[kCbYCrPair.y1] = lumaOf(src.r(o), src.g(o), src.b(o), kRoundedLuma);
        carryB = bo >> 2;
        carryR = ro >> 2;
    }
    carry = {carryB, carryR};
    if (width & 1) {
        const int x = width - 1;
        Kel8u* slot = dst + 4 * pairs;
        slot[kCbYCrPair.cb] = chromaOf(blueDifference(src.r(x), src.g(x), src.b(x)), 0x808000, 16);
        slot[kCbYCrPair.y0] = lumaOf(src.r(x), src.g(x), src.b(x), kRoundedLuma);
    }
}

// A row pair: width / 2 cells of 2 x 2; an odd last column is not read.  The
// cells go in blocks: the samples of both rows are gathered into plain
// arrays, then luma and the cells' chroma come from them in loops the
// compiler vectorises.
template <typename Source>
void cells420(Source top, Source bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* cb, Kel8u* cr, int width)
{
    std::int32_t r[2][kBlock], g[2][kBlock], b[2][kBlock];
    forEachBlock(width & ~1, [&](int x0, int n) {
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
    });
}

// width / 4 groups of four; the last width & 3 pixels are not converted at all.
template <typename Source>
void groups411(Source src, Kel8u* y, Kel8u* cb, Kel8u* cr, int width)
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

} // namespace

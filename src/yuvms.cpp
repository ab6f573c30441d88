// Repacking 8-bit luma-chroma images among 4:2:2, 4:2:0 and 4:1:1 and among
// plane (P3, P2) and pixel-order (C2) layouts: chroma is moved, never computed.
#include <cstring>
#include <limits>

#include "callframe.h"
#include "yuvmssimd.h"

using namespace kel;

namespace {

// ---- layouts, rules and sizes ------------------------------------------------------

enum class Form {
    P3,       // planes Y, Cb, Cr
    P3CrCb,   // planes Y, Cr, Cb
    P2,       // plane Y, plane of Cb, Cr pairs
    C2YCbCr,  // Y0 Cb Y1 Cr
    C2CbYCr,  // Cb Y0 Cr Y1
    C2YCrCb,  // Y0 Cr Y1 Cb
};

// The destination's chroma scheme, and the rule that takes its samples from the source's.
enum class Scheme { S422, S420, S411 };
enum class Rule { Same, RowsDoubled, OddRowsDropped, OddColumnsDropped, ColumnsDoubled, ColumnsStacked, RowsUnstacked };

// One side of a call as three component planes Y, Cb, Cr with their strides;
// the components of a P2 or C2 side are interleaved views into one plane.
template <typename Byte>
struct Side {
    Byte* planes[3];
    int steps[3];
};

// The effective size and the size test of a member: the width (and for 4:2:0
// the height) is cut down to whole cells; a height below kHeightUntested
// cannot be given, so members with it do not test the height at all.
inline constexpr int kHeightUntested = std::numeric_limits<int>::min();
struct Sizing {
    int widthMask, heightMask;  // ~1 or ~3; ~1 or ~0 (whole height)
    int minWidth, minHeight;
    int width(KelImageSize roi) const { return roi.width & widthMask; }
    int height(KelImageSize roi) const { return roi.height & heightMask; }
};
constexpr Sizing kEvenBoth{~1, ~1, 2, 2};
constexpr Sizing kQuadEven{~3, ~1, 4, 2};
constexpr Sizing kEvenWidth{~1, ~0, 2, kHeightUntested};
constexpr Sizing kQuadWidth{~3, ~0, 4, kHeightUntested};
constexpr Sizing kEvenWidthTestedHeight{~1, ~0, 2, 1};

// Defined below.
template <Form F, typename Byte>
Side<Byte> planes3(Byte* const planes[3], const int steps[3]);
template <typename Byte>
Side<Byte> planes2(Byte* y, int yStep, Byte* cbcr, int cbcrStep);
template <Form F, typename Byte>
Side<Byte> pixelOrder(Byte* base, int step);

template <Form SF, Form DF, Rule R, Scheme DS>
void repack(const Side<const Kel8u>& src, const Side<Kel8u>& dst, int width, int height);

// The sides are taken, stride arrays read, ahead of the size test; with the
// kernel inlined the compiler could otherwise put off those reads until after
// it, and a null stride array would then fail the size test rather than fault.
inline void sidesTaken(const Side<const Kel8u>& src, const Side<Kel8u>& dst)
{
    asm volatile("" : : "r"(src.steps[0]), "r"(src.steps[1]), "r"(src.steps[2]), "r"(dst.steps[0]), "r"(dst.steps[1]),
                 "r"(dst.steps[2]));
}

} // namespace

// ---- public functions ----------------------------------------------------------------

// Every member once, under the shape of its arguments (source layout, then
// destination layout):
// Shape(public function, kernel, source form, destination form, rule, destination scheme, sizing).
#define KEL_REPACK_MEMBERS(P3P3, P3P2, P2P3, P2P3SizeFirst, C2P3, C2P3TestingSteps, P3C2, P2C2, C2P2, C2C2)                           \
    /* Rows doubled: 4:2:0 to 4:2:2. */                                                                                               \
    P3P3(keliYCbCr420ToYCbCr422_8u_P3R,      ownYCbCr420ToYCbCr422_8u_P3R,      P3,      P3,      RowsDoubled,       S422, kEvenBoth)  \
    P3P3(keliYCrCb420ToYCbCr422_8u_P3R,      ownYCrCb420ToYCbCr422_8u_P3R,      P3CrCb,  P3,      RowsDoubled,       S422, kEvenBoth)  \
    P2P3(keliYCbCr420ToYCbCr422_8u_P2P3R,    ownYCbCr420ToYCbCr422_8u_P2P3R,    P2,      P3,      RowsDoubled,       S422, kEvenBoth)  \
    /* Odd rows dropped: 4:2:2 to 4:2:0. */                                                                                           \
    P3P3(keliYCbCr422ToYCbCr420_8u_P3R,      ownYCbCr422ToYCbCr420_8u_P3R,      P3,      P3,      OddRowsDropped,    S420, kEvenBoth)  \
    C2P3(keliYCbCr422ToYCbCr420_8u_C2P3R,    ownYCbCr422ToYCbCr420_8u_C2P3R,    C2YCbCr, P3,      OddRowsDropped,    S420, kEvenBoth)  \
    C2P3(keliCbYCr422ToYCbCr420_8u_C2P3R,    ownCbYCr422ToYCbCr420_8u_C2P3R,    C2CbYCr, P3,      OddRowsDropped,    S420, kEvenBoth)  \
    C2P3(keliYCrCb422ToYCbCr420_8u_C2P3R,    ownYCrCb422ToYCbCr420_8u_C2P3R,    C2YCrCb, P3,      OddRowsDropped,    S420, kEvenBoth)  \
    P3P2(keliYCbCr422ToYCbCr420_8u_P3P2R,    ownYCbCr422ToYCbCr420_8u_P3P2R,    P3,      P2,      OddRowsDropped,    S420, kEvenBoth)  \
    /* Same samples in another layout; only keliYCbCr422_8u_C2P3R tests its stride array. */                                         \
    C2P3(keliYCrCb422ToYCbCr422_8u_C2P3R,    ownYCrCb422ToYCbCr422_8u_C2P3R,    C2YCrCb, P3,      Same,              S422, kEvenWidth) \
    C2P3(keliCbYCr422ToYCbCr422_8u_C2P3R,    ownCbYCr422ToYCbCr422_8u_C2P3R,    C2CbYCr, P3,      Same,              S422, kEvenWidth) \
    C2P3TestingSteps(keliYCbCr422_8u_C2P3R,  ownYCbCr422_8u_C2P3R,              C2YCbCr, P3,      Same,              S422, kEvenWidthTestedHeight) \
    P3C2(keliYCbCr422_8u_P3C2R,              ownYCbCr422_8u_P3C2R,              P3,      C2YCbCr, Same,              S422, kEvenWidthTestedHeight) \
    P3C2(keliYCbCr422ToYCrCb422_8u_P3C2R,    ownYCbCr422ToYCrCb422_8u_P3C2R,    P3,      C2YCrCb, Same,              S422, kEvenWidth) \
    C2C2(keliYCbCr422ToYCrCb422_8u_C2R,      ownYCbCr422ToYCrCb422_8u_C2R,      C2YCbCr, C2YCrCb, Same,              S422, kEvenWidth) \
    P3P2(keliYCbCr420_8u_P3P2R,              ownYCbCr420_8u_P3P2R,              P3,      P2,      Same,              S420, kEvenBoth)  \
    P2P3(keliYCbCr420_8u_P2P3R,              ownYCbCr420_8u_P2P3R,              P2,      P3,      Same,              S420, kEvenBoth)  \
    P3P2(keliYCbCr411_8u_P3P2R,              ownYCbCr411_8u_P3P2R,              P3,      P2,      Same,              S411, kQuadWidth) \
    P2P3(keliYCbCr411_8u_P2P3R,              ownYCbCr411_8u_P2P3R,              P2,      P3,      Same,              S411, kQuadWidth) \
    /* Odd columns dropped: 4:2:2 to 4:1:1. */                                                                                        \
    P3P3(keliYCbCr422ToYCbCr411_8u_P3R,      ownYCbCr422ToYCbCr411_8u_P3R,      P3,      P3,      OddColumnsDropped, S411, kQuadWidth) \
    P3P2(keliYCbCr422ToYCbCr411_8u_P3P2R,    ownYCbCr422ToYCbCr411_8u_P3P2R,    P3,      P2,      OddColumnsDropped, S411, kQuadWidth) \
    C2P2(keliYCbCr422ToYCbCr411_8u_C2P2R,    ownYCbCr422ToYCbCr411_8u_C2P2R,    C2YCbCr, P2,      OddColumnsDropped, S411, kQuadWidth) \
    C2P3(keliYCbCr422ToYCbCr411_8u_C2P3R,    ownYCbCr422ToYCbCr411_8u_C2P3R,    C2YCbCr, P3,      OddColumnsDropped, S411, kQuadWidth) \
    C2P3(keliCbYCr422ToYCbCr411_8u_C2P3R,    ownCbYCr422ToYCbCr411_8u_C2P3R,    C2CbYCr, P3,      OddColumnsDropped, S411, kQuadWidth) \
    C2P3(keliYCrCb422ToYCbCr411_8u_C2P3R,    ownYCrCb422ToYCbCr411_8u_C2P3R,    C2YCrCb, P3,      OddColumnsDropped, S411, kQuadWidth) \
    /* Columns doubled: 4:1:1 to 4:2:2. */                                                                                            \
    P3P3(keliYCbCr411ToYCbCr422_8u_P3R,      ownYCbCr411ToYCbCr422_8u_P3R,      P3,      P3,      ColumnsDoubled,    S422, kQuadWidth) \
    P3P3(keliYCbCr411ToYCrCb422_8u_P3R,      ownYCbCr411ToYCrCb422_8u_P3R,      P3,      P3CrCb,  ColumnsDoubled,    S422, kQuadWidth) \
    P3C2(keliYCbCr411ToYCbCr422_8u_P3C2R,    ownYCbCr411ToYCbCr422_8u_P3C2R,    P3,      C2YCbCr, ColumnsDoubled,    S422, kQuadWidth) \
    P3C2(keliYCbCr411ToYCrCb422_8u_P3C2R,    ownYCbCr411ToYCrCb422_8u_P3C2R,    P3,      C2YCrCb, ColumnsDoubled,    S422, kQuadWidth) \
    P2C2(keliYCbCr411ToYCbCr422_8u_P2C2R,    ownYCbCr411ToYCbCr422_8u_P2C2R,    P2,      C2YCbCr, ColumnsDoubled,    S422, kQuadWidth) \
    P2P3(keliYCbCr411ToYCbCr422_8u_P2P3R,    ownYCbCr411ToYCbCr422_8u_P2P3R,    P2,      P3,      ColumnsDoubled,    S422, kQuadWidth) \
    /* Columns stacked: 4:2:0 to 4:1:1, every sample kept. */                                                                         \
    P3P2(keliYCbCr420ToYCbCr411_8u_P3P2R,    ownYCbCr420ToYCbCr411_8u_P3P2R,    P3,      P2,      ColumnsStacked,    S411, kQuadEven)  \
    P3P2(keliYCrCb420ToYCbCr411_8u_P3P2R,    ownYCrCb420ToYCbCr411_8u_P3P2R,    P3CrCb,  P2,      ColumnsStacked,    S411, kQuadEven)  \
    P2P3(keliYCbCr420ToYCbCr411_8u_P2P3R,    ownYCbCr420ToYCbCr411_8u_P2P3R,    P2,      P3,      ColumnsStacked,    S411, kQuadEven)  \
    /* Rows unstacked: 4:1:1 to 4:2:0, the inverse of stacking. */                                                                    \
    P3P3(keliYCbCr411ToYCbCr420_8u_P3R,      ownYCbCr411ToYCbCr420_8u_P3R,      P3,      P3,      RowsUnstacked,     S420, kQuadEven)  \
    P3P2(keliYCbCr411ToYCbCr420_8u_P3P2R,    ownYCbCr411ToYCbCr420_8u_P3P2R,    P3,      P2,      RowsUnstacked,     S420, kQuadEven)  \
    P2P3(keliYCbCr411ToYCbCr420_8u_P2P3R,    ownYCbCr411ToYCbCr420_8u_P2P3R,    P2,      P3,      RowsUnstacked,     S420, kQuadEven)  \
    P2P3(keliYCbCr411ToYCrCb420_8u_P2P3R,    ownYCbCr411ToYCrCb420_8u_P2P3R,    P2,      P3CrCb,  RowsUnstacked,     S420, kQuadEven)  \
    /* NV12, YV12 (planes Y, Cr, Cb), YUY2 and UYVY.  The NV12 to planes member */                                                 \
    /* writes Y, Cb, Cr: it does not exchange its chroma. */                                                                         \
    P2C2(keliYCbCr420ToYCbCr422_8u_P2C2R,    myNV12ToYUY2_8u_P2C2R,             P2,      C2YCbCr, RowsDoubled,       S422, kEvenBoth)  \
    P2C2(keliYCbCr420ToCbYCr422_8u_P2C2R,    myNV12ToUYVY_8u_P2C2R,             P2,      C2CbYCr, RowsDoubled,       S422, kEvenBoth)  \
    P2P3SizeFirst(keliYCbCr420ToYCrCb420_8u_P2P3R, myNV12ToYV12_8u_P2P3R,       P2,      P3,      Same,              S420, kEvenBoth)  \
    P3P2(keliYCrCb420ToYCbCr420_8u_P3P2R,    myYV12ToNV12_8u_P3P2R,             P3CrCb,  P2,      Same,              S420, kEvenBoth)  \
    P3C2(keliYCrCb420ToYCbCr422_8u_P3C2R,    myYV12ToYUY2420_8u_P3C2R,          P3CrCb,  C2YCbCr, RowsDoubled,       S422, kEvenBoth)  \
    P3C2(keliYCrCb420ToCbYCr422_8u_P3C2R,    myYV12ToUYVY420_8u_P3C2R,          P3CrCb,  C2CbYCr, RowsDoubled,       S422, kEvenBoth)  \
    C2C2(keliYCbCr422ToCbYCr422_8u_C2R,      myYUY2ToUYVY422_8u_C2R,            C2YCbCr, C2CbYCr, Same,              S422, kEvenWidthTestedHeight) \
    C2C2(keliCbYCr422ToYCbCr422_8u_C2R,      myUYVYToYUY2422_8u_C2R,            C2CbYCr, C2YCbCr, Same,              S422, kEvenWidthTestedHeight) \
    C2P3(keliYCbCr422ToYCrCb420_8u_C2P3R,    myYUY2ToYV12422_8u_C2P3R,          C2YCbCr, P3CrCb,  OddRowsDropped,    S420, kEvenBoth)  \
    C2P3(keliCbYCr422ToYCrCb420_8u_C2P3R,    myUYVYToYV12422_8u_C2P3R,          C2CbYCr, P3CrCb,  OddRowsDropped,    S420, kEvenBoth)  \
    C2P2(keliYCbCr422ToYCbCr420_8u_C2P2R,    myYUY2ToNV12_8u_C2P2R,             C2YCbCr, P2,      OddRowsDropped,    S420, kEvenBoth)  \
    C2P2(keliCbYCr422ToYCbCr420_8u_C2P2R,    myUYVYToNV12_8u_C2P2R,             C2CbYCr, P2,      OddRowsDropped,    S420, kEvenBoth)

// The same table, once for every shape: each member's kernel.
#define KEL_REPACK_EVERY_MEMBER(X) KEL_REPACK_MEMBERS(X, X, X, X, X, X, X, X, X, X)

#define KEL_REPACK_DECLARE_KERNEL(NAME, KERNEL, SF, DF, RULE, DS, SIZING) \
    void KERNEL(const Side<const Kel8u>& src, const Side<Kel8u>& dst, int width, int height);
KEL_REPACK_EVERY_MEMBER(KEL_REPACK_DECLARE_KERNEL)
#undef KEL_REPACK_DECLARE_KERNEL

// Each public function tests every pointer and the planes inside the arrays,
// then the size, and hands the effective size to its kernel.  No stride is
// tested, except keliYCbCr422_8u_C2P3R's array of strides; the stride arrays
// are read as the sides are taken, ahead of the size test.
#define KEL_REPACK_P3P3(NAME, KERNEL, SF, DF, RULE, DS, SIZING)                                        \
    KEL_API KelResult NAME(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3],     \
                           const int dstStep[3], KelImageSize roiSize)                                 \
    {                                                                                                  \
        if (anyNull(pSrc, pDst) || anyNullPlane(pSrc) || anyNullPlane(pDst)) return kelErrNullPointer; \
        const Side<const Kel8u> src = planes3<Form::SF>(pSrc, srcStep);                                \
        const Side<Kel8u> dst = planes3<Form::DF>(pDst, dstStep);                                      \
        sidesTaken(src, dst);                                                                          \
        if (sizeBelow(roiSize, SIZING.minWidth, SIZING.minHeight)) return kelErrSize;                  \
        KERNEL(src, dst, SIZING.width(roiSize), SIZING.height(roiSize));                               \
        return kelOk;                                                                                  \
    }
#define KEL_REPACK_P3P2(NAME, KERNEL, SF, DF, RULE, DS, SIZING)                                          \
    KEL_API KelResult NAME(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* pDstY, int dstYStep, \
                           Kel8u* pDstCbCr, int dstCbCrStep, KelImageSize roiSize)                       \
    {                                                                                                    \
        if (anyNull(pSrc, pDstY, pDstCbCr) || anyNullPlane(pSrc)) return kelErrNullPointer;              \
        const Side<const Kel8u> src = planes3<Form::SF>(pSrc, srcStep);                                  \
        const Side<Kel8u> dst = planes2(pDstY, dstYStep, pDstCbCr, dstCbCrStep);                         \
        sidesTaken(src, dst);                                                                            \
        if (sizeBelow(roiSize, SIZING.minWidth, SIZING.minHeight)) return kelErrSize;                    \
        KERNEL(src, dst, SIZING.width(roiSize), SIZING.height(roiSize));                                 \
        return kelOk;                                                                                    \
    }
#define KEL_REPACK_P2P3(NAME, KERNEL, SF, DF, RULE, DS, SIZING)                                      \
    KEL_API KelResult NAME(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep, \
                           Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize)         \
    {                                                                                                \
        if (anyNull(pSrcY, pSrcCbCr, pDst) || anyNullPlane(pDst)) return kelErrNullPointer;          \
        const Side<const Kel8u> src = planes2(pSrcY, srcYStep, pSrcCbCr, srcCbCrStep);               \
        const Side<Kel8u> dst = planes3<Form::DF>(pDst, dstStep);                                    \
        sidesTaken(src, dst);                                                                        \
        if (sizeBelow(roiSize, SIZING.minWidth, SIZING.minHeight)) return kelErrSize;                \
        KERNEL(src, dst, SIZING.width(roiSize), SIZING.height(roiSize));                             \
        return kelOk;                                                                                \
    }
// NV12 to planes tests the size twice: against 1 before the planes inside
// the array, against the member's minimum after them.
#define KEL_REPACK_P2P3_SIZE_FIRST(NAME, KERNEL, SF, DF, RULE, DS, SIZING)                           \
    KEL_API KelResult NAME(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep, \
                           Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize)         \
    {                                                                                                \
        if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrcY, pSrcCbCr, pDst)) return bad; \
        const Side<const Kel8u> src = planes2(pSrcY, srcYStep, pSrcCbCr, srcCbCrStep);               \
        const Side<Kel8u> dst = planes3<Form::DF>(pDst, dstStep);                                    \
        sidesTaken(src, dst);                                                                        \
        if (sizeBelow(roiSize, SIZING.minWidth, SIZING.minHeight)) return kelErrSize;                \
        KERNEL(src, dst, SIZING.width(roiSize), SIZING.height(roiSize));                             \
        return kelOk;                                                                                \
    }
#define KEL_REPACK_C2P3(NAME, KERNEL, SF, DF, RULE, DS, SIZING)                                        \
    KEL_API KelResult NAME(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstStep[3], \
                           KelImageSize roiSize)                                                       \
    {                                                                                                  \
        if (anyNull(pSrc, pDst) || anyNullPlane(pDst)) return kelErrNullPointer;                       \
        const Side<const Kel8u> src = pixelOrder<Form::SF>(pSrc, srcStep);                             \
        const Side<Kel8u> dst = planes3<Form::DF>(pDst, dstStep);                                      \
        sidesTaken(src, dst);                                                                          \
        if (sizeBelow(roiSize, SIZING.minWidth, SIZING.minHeight)) return kelErrSize;                  \
        KERNEL(src, dst, SIZING.width(roiSize), SIZING.height(roiSize));                               \
        return kelOk;                                                                                  \
    }
#define KEL_REPACK_C2P3_TESTING_STEPS(NAME, KERNEL, SF, DF, RULE, DS, SIZING)                          \
    KEL_API KelResult NAME(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstStep[3], \
                           KelImageSize roiSize)                                                       \
    {                                                                                                  \
        if (anyNull(pSrc, pDst, dstStep) || anyNullPlane(pDst)) return kelErrNullPointer;              \
        const Side<const Kel8u> src = pixelOrder<Form::SF>(pSrc, srcStep);                             \
        const Side<Kel8u> dst = planes3<Form::DF>(pDst, dstStep);                                      \
        sidesTaken(src, dst);                                                                          \
        if (sizeBelow(roiSize, SIZING.minWidth, SIZING.minHeight)) return kelErrSize;                  \
        KERNEL(src, dst, SIZING.width(roiSize), SIZING.height(roiSize));                               \
        return kelOk;                                                                                  \
    }
#define KEL_REPACK_P3C2(NAME, KERNEL, SF, DF, RULE, DS, SIZING)                                        \
    KEL_API KelResult NAME(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* pDst, int dstStep, \
                           KelImageSize roiSize)                                                       \
    {                                                                                                  \
        if (anyNull(pSrc, pDst) || anyNullPlane(pSrc)) return kelErrNullPointer;                       \
        const Side<const Kel8u> src = planes3<Form::SF>(pSrc, srcStep);                                \
        const Side<Kel8u> dst = pixelOrder<Form::DF>(pDst, dstStep);                                   \
        sidesTaken(src, dst);                                                                          \
        if (sizeBelow(roiSize, SIZING.minWidth, SIZING.minHeight)) return kelErrSize;                  \
        KERNEL(src, dst, SIZING.width(roiSize), SIZING.height(roiSize));                               \
        return kelOk;                                                                                  \
    }
#define KEL_REPACK_P2C2(NAME, KERNEL, SF, DF, RULE, DS, SIZING)                                                   \
    KEL_API KelResult NAME(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep, Kel8u* pDst, \
                           int dstStep, KelImageSize roiSize)                                                     \
    {                                                                                                             \
        if (anyNull(pSrcY, pSrcCbCr, pDst)) return kelErrNullPointer;                                             \
        const Side<const Kel8u> src = planes2(pSrcY, srcYStep, pSrcCbCr, srcCbCrStep);                            \
        const Side<Kel8u> dst = pixelOrder<Form::DF>(pDst, dstStep);                                              \
        sidesTaken(src, dst);                                                                                     \
        if (sizeBelow(roiSize, SIZING.minWidth, SIZING.minHeight)) return kelErrSize;                             \
        KERNEL(src, dst, SIZING.width(roiSize), SIZING.height(roiSize));                                          \
        return kelOk;                                                                                             \
    }
#define KEL_REPACK_C2P2(NAME, KERNEL, SF, DF, RULE, DS, SIZING)                                         \
    KEL_API KelResult NAME(const Kel8u* pSrc, int srcStep, Kel8u* pDstY, int dstYStep, Kel8u* pDstCbCr, \
                           int dstCbCrStep, KelImageSize roiSize)                                       \
    {                                                                                                   \
        if (anyNull(pSrc, pDstY, pDstCbCr)) return kelErrNullPointer;                                   \
        const Side<const Kel8u> src = pixelOrder<Form::SF>(pSrc, srcStep);                              \
        const Side<Kel8u> dst = planes2(pDstY, dstYStep, pDstCbCr, dstCbCrStep);                        \
        sidesTaken(src, dst);                                                                           \
        if (sizeBelow(roiSize, SIZING.minWidth, SIZING.minHeight)) return kelErrSize;                   \
        KERNEL(src, dst, SIZING.width(roiSize), SIZING.height(roiSize));                                \
        return kelOk;                                                                                   \
    }
#define KEL_REPACK_C2C2(NAME, KERNEL, SF, DF, RULE, DS, SIZING)                                            \
    KEL_API KelResult NAME(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize) \
    {                                                                                                      \
        if (anyNull(pSrc, pDst)) return kelErrNullPointer;                                                 \
        const Side<const Kel8u> src = pixelOrder<Form::SF>(pSrc, srcStep);                                 \
        const Side<Kel8u> dst = pixelOrder<Form::DF>(pDst, dstStep);                                       \
        sidesTaken(src, dst);                                                                              \
        if (sizeBelow(roiSize, SIZING.minWidth, SIZING.minHeight)) return kelErrSize;                      \
        KERNEL(src, dst, SIZING.width(roiSize), SIZING.height(roiSize));                                   \
        return kelOk;                                                                                      \
    }

extern "C" {
KEL_REPACK_MEMBERS(KEL_REPACK_P3P3, KEL_REPACK_P3P2, KEL_REPACK_P2P3, KEL_REPACK_P2P3_SIZE_FIRST, KEL_REPACK_C2P3,
                   KEL_REPACK_C2P3_TESTING_STEPS, KEL_REPACK_P3C2, KEL_REPACK_P2C2, KEL_REPACK_C2P2, KEL_REPACK_C2C2)
} // extern "C"

#undef KEL_REPACK_P3P3
#undef KEL_REPACK_P3P2
#undef KEL_REPACK_P2P3
#undef KEL_REPACK_P2P3_SIZE_FIRST
#undef KEL_REPACK_C2P3
#undef KEL_REPACK_C2P3_TESTING_STEPS
#undef KEL_REPACK_P3C2
#undef KEL_REPACK_P2C2
#undef KEL_REPACK_C2P2
#undef KEL_REPACK_C2C2

// ---- sides ------------------------------------------------------------------------------

namespace {

template <Form F, typename Byte>
Side<Byte> planes3(Byte* const planes[3], const int steps[3])
{
    constexpr int cb = F == Form::P3CrCb ? 2 : 1, cr = F == Form::P3CrCb ? 1 : 2;
    return {{planes[0], planes[cb], planes[cr]}, {steps[0], steps[cb], steps[cr]}};
}

template <typename Byte>
Side<Byte> planes2(Byte* y, int yStep, Byte* cbcr, int cbcrStep)
{
    return {{y, cbcr, cbcr + 1}, {yStep, cbcrStep, cbcrStep}};
}

template <Form F, typename Byte>
Side<Byte> pixelOrder(Byte* base, int step)
{
    constexpr int lumaAt = F == Form::C2CbYCr ? 1 : 0;
    constexpr int cbAt = F == Form::C2CbYCr ? 0 : F == Form::C2YCrCb ? 3 : 1;
    constexpr int crAt = F == Form::C2CbYCr ? 2 : F == Form::C2YCrCb ? 1 : 3;
    return {{base + lumaAt, base + cbAt, base + crAt}, {step, step, step}};
}

} // namespace

// ---- kernels ----------------------------------------------------------------------------

// Each member's kernel is the one repack routine with its layouts and rule.
#define KEL_REPACK_KERNEL(NAME, KERNEL, SF, DF, RULE, DS, SIZING)                                 \
    void KERNEL(const Side<const Kel8u>& src, const Side<Kel8u>& dst, int width, int height)      \
    { repack<Form::SF, Form::DF, Rule::RULE, Scheme::DS>(src, dst, width, height); }
KEL_REPACK_EVERY_MEMBER(KEL_REPACK_KERNEL)
#undef KEL_REPACK_KERNEL

namespace {

using simdrepack::ChromaRowSource;

constexpr bool isPixelOrder(Form f) { return f == Form::C2YCbCr || f == Form::C2CbYCr || f == Form::C2YCrCb; }
constexpr int lumaPitch(Form f) { return isPixelOrder(f) ? 2 : 1; }
constexpr int chromaPitch(Form f) { return isPixelOrder(f) ? 4 : f == Form::P2 ? 2 : 1; }
// The component whose byte opens a pixel pair: the pair's own address.
constexpr int firstComponent(Form f) { return f == Form::C2CbYCr ? 1 : 0; }

constexpr int chromaWidth(Scheme s, int width) { return s == Scheme::S411 ? width / 4 : width / 2; }

// The names of layouts and rules in the vector kernels' tables.
constexpr simdrepack::Chroma chromaForm(Form f) { return f == Form::P2 ? simdrepack::kChromaPairs : simdrepack::kChromaPlanes; }
constexpr simdrepack::PairOrder pairOrder(Form f)
{
    return f == Form::C2CbYCr ? simdrepack::kCbYCrPairs : f == Form::C2YCrCb ? simdrepack::kYCrCbPairs : simdrepack::kYCbCrPairs;
}
template <Rule R>
constexpr simdrepack::Columns columnsOf(bool oddRow)
{
    if constexpr (R == Rule::OddColumnsDropped) return simdrepack::kEvenColumns;
    else if constexpr (R == Rule::ColumnsStacked) return oddRow ? simdrepack::kOddColumns : simdrepack::kEvenColumns;
    else if constexpr (R == Rule::ColumnsDoubled) return simdrepack::kDoubledColumns;
    else if constexpr (R == Rule::RowsUnstacked) return simdrepack::kUnstackedRows;
    else return simdrepack::kSameColumns;
}

template <Rule R, int SrcPitch, int DstPitch>
void chromaRow(const Kel8u* const* srcRows, int j, Kel8u* d, int samples, int first);

// Whether an image of compact rows (`compact`) can go as one long row of
// width x height units, which must still be counted in an int.
inline bool oneLongRow(int height, int width, bool compact)
{
    return compact && height > 1 && static_cast<long long>(width) * height <= std::numeric_limits<int>::max();
}
template <Rule R>
constexpr int firstSourceRow(int j);

// Luma W x H copied unchanged, then every destination chroma sample of the
// destination scheme taken from the source by the rule.  Where the processor
// has vector kernels (chosen once a call), each row goes to its kernel first
// and the scalar loops below finish it from where the kernel stopped; rows of
// planes whose samples keep their columns are block copies either way.
template <Form SF, Form DF, Rule R, Scheme DS>
void repack(const Side<const Kel8u>& src, const Side<Kel8u>& dst, int width, int height)
{
    // Members that test the width alone can arrive here without rows.
    if (width <= 0 || height <= 0) return;
    const simdrepack::Kernels* simd = simdrepack::chooseKernels();
    const PlaneRows<const Kel8u> from(src.planes, src.steps);
    const PlaneRows<Kel8u> to(dst.planes, dst.steps);
    if constexpr (isPixelOrder(DF)) {
        // Pixel-order destinations are 4:2:2: every row gets its own chroma
        // row, and a pair's four bytes are written together.
        static_assert(R == Rule::Same || R == Rule::ColumnsDoubled || R == Rule::RowsDoubled);
        constexpr int sl = lumaPitch(SF), sc = chromaPitch(SF);
        simdrepack::PlanesToPairsKernel kernel = nullptr;
        simdrepack::PairsToPairsKernel reorder = nullptr;
        if constexpr (!isPixelOrder(SF)) {
            if (simd) kernel = simd->planesToPairs[chromaForm(SF)][R == Rule::ColumnsDoubled][pairOrder(DF)];
        } else {
            if (simd) reorder = simd->pairsToPairs[pairOrder(SF)][pairOrder(DF)];
        }
        // One row of `pixels` pixels (a whole image of compact rows is one long
        // row); with rows doubled, chroma row y / 2 serves rows y and y + 1.
        const auto pairsRow = [&](int y, int pixels) {
            const int c = R == Rule::RowsDoubled ? y / 2 : y;
            const Kel8u* sy = from.row(0, y);
            const Kel8u* scb = from.row(1, c);
            const Kel8u* scr = from.row(2, c);
            Kel8u* dy = to.row(0, y);
            Kel8u* dcb = to.row(1, y);
            Kel8u* dcr = to.row(2, y);
            int firstPair = 0;
            if constexpr (!isPixelOrder(SF)) {
                if (kernel) firstPair = kernel(sy, scb, scr, to.row(firstComponent(DF), y), pixels) / 2;
            } else {
                if (reorder) firstPair = reorder(from.row(firstComponent(SF), y), to.row(firstComponent(DF), y), pixels) / 2;
            }
            for (int k = firstPair; k < pixels / 2; ++k) {
                const int source = R == Rule::ColumnsDoubled ? k / 2 : k;
                dy[4 * k] = sy[2 * k * sl];
                dy[4 * k + 2] = sy[(2 * k + 1) * sl];
                dcb[4 * k] = scb[source * sc];
                dcr[4 * k] = scr[source * sc];
            }
        };
        if constexpr (!isPixelOrder(SF) && R != Rule::RowsDoubled) {
            const int sourceSamples = R == Rule::ColumnsDoubled ? width / 4 : width / 2;
            if (kernel && oneLongRow(height, width, from.steps[0] == width && to.steps[0] == 2LL * width &&
                                                        from.steps[1] == 1LL * sourceSamples * sc && from.steps[2] == 1LL * sourceSamples * sc)) {
                pairsRow(0, width * height);
                return;
            }
        } else if constexpr (isPixelOrder(SF)) {
            if (reorder && oneLongRow(height, width, from.steps[0] == 2LL * width && to.steps[0] == 2LL * width)) {
                pairsRow(0, width * height);
                return;
            }
        }
        forEachRow(height, [&](int y) { pairsRow(y, width); });
        return;
    }
    // Luma row y and the chroma rows of destination row j, from the pixel or
    // sample `first` on, `pixels` wide (the whole image where it is one long row).
    const auto lumaRow = [&](int y, int first, int pixels = 0) {
        if (pixels == 0) pixels = width;
        const Kel8u* s = from.row(0, y);
        Kel8u* d = to.row(0, y);
        if constexpr (lumaPitch(SF) == 1 && lumaPitch(DF) == 1) {
            std::memcpy(d, s, static_cast<std::size_t>(pixels));
        } else {
            for (int x = first; x < pixels; ++x) d[x * lumaPitch(DF)] = s[x * lumaPitch(SF)];
        }
    };
    const int samples = chromaWidth(DS, width);
    const auto chromaRows = [&](int j, int first, int rowSamples = 0) {
        if (rowSamples == 0) rowSamples = samples;
        for (int c = 1; c < 3; ++c) {
            const int top = firstSourceRow<R>(j);
            const Kel8u* srcRows[2] = {from.row(c, top), nullptr};
            if constexpr (R == Rule::RowsUnstacked) srcRows[1] = from.row(c, top + 1);
            chromaRow<R, chromaPitch(SF), chromaPitch(DF)>(srcRows, j, to.row(c, j), rowSamples, first);
        }
    };
    // Rules that take destination row j from source row j alone, sample k
    // from a source column that grows with k the same way in every row.
    constexpr bool rowForRow = R == Rule::Same || R == Rule::OddColumnsDropped || R == Rule::ColumnsDoubled;
    const int sourceSamples = R == Rule::OddColumnsDropped ? 2 * samples : R == Rule::ColumnsDoubled ? samples / 2 : samples;
    const long long compactSource = 1LL * sourceSamples * chromaPitch(SF), compactDest = 1LL * samples * chromaPitch(DF);
    const bool compactChroma = from.steps[1] == compactSource && from.steps[2] == compactSource && to.steps[1] == compactDest && to.steps[2] == compactDest;
    if constexpr (isPixelOrder(SF)) {
        // A row of pixel pairs gives its luma and, where the destination has
        // a chroma row for it, that row; in 4:2:0 only the even rows do.
        constexpr int pixelsPerSample = DS == Scheme::S411 ? 4 : 2;
        constexpr bool toPairs = DF == Form::P2;
        constexpr simdrepack::PairChroma withChroma =
            R == Rule::OddColumnsDropped ? (toPairs ? simdrepack::kEvenPairChromaToPairs : simdrepack::kEvenPairChromaToPlanes)
                                         : (toPairs ? simdrepack::kPairChromaToPairs : simdrepack::kPairChromaToPlanes);
        simdrepack::PairsToPlanesKernel lumaAndChroma = nullptr, lumaOnly = nullptr;
        if (simd) {
            lumaAndChroma = simd->pairsToPlanes[pairOrder(SF)][withChroma];
            lumaOnly = simd->pairsToPlanes[pairOrder(SF)][simdrepack::kLumaOnly];
        }
        if constexpr (DS != Scheme::S420) {
            if (lumaAndChroma && oneLongRow(height, width, from.steps[0] == 2 * width && to.steps[0] == width && compactChroma)) {
                const int pixels = width * height;
                const int done = lumaAndChroma(from.row(firstComponent(SF), 0), to.row(0, 0), to.row(1, 0), to.row(2, 0), pixels);
                lumaRow(0, done, pixels);
                chromaRows(0, done / pixelsPerSample, pixels / pixelsPerSample);
                return;
            }
        }
        forEachRow(height, [&](int y) {
            const bool hasChroma = DS != Scheme::S420 || (y & 1) == 0;
            const int j = DS == Scheme::S420 ? y / 2 : y;
            const auto kernel = hasChroma ? lumaAndChroma : lumaOnly;
            const int done = kernel ? kernel(from.row(firstComponent(SF), y), to.row(0, y), to.row(1, j), to.row(2, j), width) : 0;
            lumaRow(y, done);
            if (hasChroma) chromaRows(j, done / pixelsPerSample);
        });
        return;
    }
    // Plane chroma rows: both components in one vector kernel, except rows
    // that keep their columns from plane to plane, which are block copies.
    constexpr bool blockCopies = columnsOf<R>(false) == simdrepack::kSameColumns && chromaForm(SF) == simdrepack::kChromaPlanes &&
                                 chromaForm(DF) == simdrepack::kChromaPlanes;
    simdrepack::ChromaRowKernel kernels[2] = {nullptr, nullptr};  // even and odd destination rows
    if (simd && !blockCopies) {
        kernels[0] = simd->chromaRow[chromaForm(SF)][chromaForm(DF)][columnsOf<R>(false)];
        kernels[1] = simd->chromaRow[chromaForm(SF)][chromaForm(DF)][columnsOf<R>(true)];
    }
    const auto vectorChromaRows = [&](int j) {
        const auto kernel = kernels[j & 1];
        if (!kernel) return 0;
        const int top = firstSourceRow<R>(j);
        ChromaRowSource rows{from.row(1, top), from.row(2, top), nullptr, nullptr};
        if constexpr (R == Rule::RowsUnstacked) {
            rows.nextCb = from.row(1, top + 1);
            rows.nextCr = from.row(2, top + 1);
        }
        return kernel(rows, to.row(1, j), to.row(2, j), samples);
    };
    // The luma plane first, as one block where both planes are compact, then
    // the chroma rows: two streams at a time keep closer to a plain copy's
    // speed than all six at once.  The effective height always holds whole
    // chroma rows.
    if (height > 0 && from.steps[0] == width && to.steps[0] == width) {
        std::memcpy(to.row(0, 0), from.row(0, 0), static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    } else {
        forEachRow(height, [&](int y) { lumaRow(y, 0); });
    }
    const int chromaHeight = DS == Scheme::S420 ? height / 2 : height;
    if constexpr (rowForRow) {
        if (kernels[0] && oneLongRow(chromaHeight, samples, compactChroma)) {
            const int all = samples * chromaHeight;
            const int done = kernels[0]({from.row(1, 0), from.row(2, 0), nullptr, nullptr}, to.row(1, 0), to.row(2, 0), all);
            chromaRows(0, done, all);
            return;
        }
    }
    if constexpr (R == Rule::RowsDoubled) {
        static_assert(isPixelOrder(DF) || chromaPitch(DF) == 1);  // pixel-order destinations returned above
        if (kernels[0]) {
            // An odd destination row repeats the even one above it, which is
            // still in the cache: a copy of it rather than a second pass over
            // the source.  (Where the rows overlap, the even row is whole
            // until the odd one is written, so memmove gives the same bytes.)
            forEachRow(chromaHeight, [&](int j) {
                if ((j & 1) == 0) {
                    chromaRows(j, vectorChromaRows(j));
                    return;
                }
                for (int c = 1; c < 3; ++c) std::memmove(to.row(c, j), to.row(c, j - 1), static_cast<std::size_t>(samples));
            });
            return;
        }
    }
    if constexpr (R == Rule::ColumnsStacked) {
        const auto split = simd ? simd->stackedColumns[chromaForm(SF)][chromaForm(DF)] : nullptr;
        const int rowBytes = samples * chromaPitch(DF);
        const auto apart = [rowBytes](int step) { return step >= rowBytes || step <= -rowBytes; };
        if (split && apart(to.steps[1]) && apart(to.steps[2])) {
            // Both destination rows of a source row in one pass over it: the
            // even samples to the upper row, the odd ones to the lower.  The
            // rows of a plane are apart, so the order of their writes leaves
            // the same bytes.
            forEachRow(chromaHeight / 2, [&](int i) {
                const int done = split({from.row(1, i), from.row(2, i), nullptr, nullptr}, to.row(1, 2 * i), to.row(2, 2 * i),
                                       to.row(1, 2 * i + 1), to.row(2, 2 * i + 1), samples);
                chromaRows(2 * i, done);
                chromaRows(2 * i + 1, done);
            });
            return;
        }
    }
    if constexpr (R == Rule::OddRowsDropped) {
        // Every other source row is skipped, which the processor's own
        // prefetching does not follow: the next rows are asked for a row ahead.
        const int sourceBytes = samples * chromaPitch(SF);
        constexpr int kRowsAhead = 1;
        forEachRow(chromaHeight, [&](int j) {
            if (j + kRowsAhead < chromaHeight) {
                simdrepack::prefetchRow(from.row(1, 2 * (j + kRowsAhead)), sourceBytes);
                simdrepack::prefetchRow(from.row(2, 2 * (j + kRowsAhead)), sourceBytes);
            }
            chromaRows(j, vectorChromaRows(j));
        });
        return;
    }
    forEachRow(chromaHeight, [&](int j) { chromaRows(j, vectorChromaRows(j)); });
}

// Destination chroma row j of one component from sample `first` on, from the
// one or two source rows the rule names.
template <Rule R, int SrcPitch, int DstPitch>
void chromaRow(const Kel8u* const* srcRows, int j, Kel8u* d, int samples, int first)
{
    const Kel8u* s = srcRows[0];
    if constexpr (columnsOf<R>(false) == simdrepack::kSameColumns && SrcPitch == 1 && DstPitch == 1) {
        std::memcpy(d + first, s + first, static_cast<std::size_t>(samples - first));
        return;
    }
    for (int k = first; k < samples; ++k) {
        int from;
        if constexpr (R == Rule::OddColumnsDropped) from = 2 * k;
        else if constexpr (R == Rule::ColumnsDoubled) from = k / 2;
        else if constexpr (R == Rule::ColumnsStacked) from = 2 * k + (j & 1);
        else if constexpr (R == Rule::RowsUnstacked) { s = srcRows[k & 1]; from = k / 2; }
        else from = k;
        d[k * DstPitch] = s[from * SrcPitch];
    }
}

template <Rule R>
constexpr int firstSourceRow(int j)
{
    if constexpr (R == Rule::RowsDoubled || R == Rule::ColumnsStacked) return j / 2;
    else if constexpr (R == Rule::OddRowsDropped || R == Rule::RowsUnstacked) return 2 * j;
    else return j;
}

} // namespace

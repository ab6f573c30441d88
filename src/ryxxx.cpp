// Packed BGR565 and BGR555 pixels to studio-range YCbCr (4:2:2, 4:2:0, 4:1:1)
// and full-range YUV 4:2:0: the 8-bit BGR arithmetic on the widened fields.
#include <algorithm>
#include <cstdint>

#include "callframe.h"
#include "cbcrpx.h"
#include "rgb565simd.h"
#include "ycbcr02simd.h"
#include "yuvpxsimd.h"

using namespace kel;
using simd565::WidenRow;

// ---- layers behind the public functions ----------------------------------------------------------
// One walk a destination form, for the member's field widths: the 565 and
// 555 siblings differ only in how a run is widened.  Defined below.

namespace {

template <WidenRow (*Widen)()>
void toPixelOrder422(const Kel16u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height);
template <WidenRow (*Widen)(), int GroupShift>
void toPlanes(const Kel16u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], int width, int height);
template <WidenRow (*Widen)()>
void toCells420(const Kel16u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], int width, int height);
template <WidenRow (*Widen)()>
void toYUV420(const Kel16u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], int width, int height);

} // namespace

constexpr auto ownBGR565ToYCbCr422_16u8u_C3C2R = toPixelOrder422<simd565::chooseWiden565>;
constexpr auto ownBGR555ToYCbCr422_16u8u_C3C2R = toPixelOrder422<simd565::chooseWiden555>;
constexpr auto ownBGR565ToYCbCr422_16u8u_C3P3R = toPlanes<simd565::chooseWiden565, 1>;
constexpr auto ownBGR555ToYCbCr422_16u8u_C3P3R = toPlanes<simd565::chooseWiden555, 1>;
constexpr auto ownBGR565ToYCbCr420_16u8u_C3P3R = toCells420<simd565::chooseWiden565>;
constexpr auto ownBGR555ToYCbCr420_16u8u_C3P3R = toCells420<simd565::chooseWiden555>;
constexpr auto ownBGR565ToYCbCr411_16u8u_C3P3R = toPlanes<simd565::chooseWiden565, 2>;
constexpr auto ownBGR555ToYCbCr411_16u8u_C3P3R = toPlanes<simd565::chooseWiden555, 2>;
constexpr auto ownBGR565ToYUV420_16u8u_C3P3R = toYUV420<simd565::chooseWiden565>;
constexpr auto ownBGR555ToYUV420_16u8u_C3P3R = toYUV420<simd565::chooseWiden555>;

// ---- public functions ------------------------------------------------------------------------------
// Every pointer and plane first, then the size; the 4:1:1 and YUV members
// warn of the pixels their groups leave out, after the work.

namespace {

// The YCbCr members hand their planes on as given, the YCrCb members with
// planes 1 and 2 exchanged.
struct SamePlanes {
    Kel8u* const* planes;
    const int* steps;
    SamePlanes(Kel8u* const p[3], const int s[3]) : planes(p), steps(s) {}
};

inline KelResult noWarning(KelImageSize)
{
    return kelOk;
}

} // namespace

#define KEL_PACKED_TO_PIXEL_ORDER(NAME, ROWS)                                                                 \
    KEL_API KelResult NAME(const Kel16u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)   \
    {                                                                                                         \
        if (const KelResult bad = testPlanesWithPointers(roiSize, 2, 1, pSrc, pDst)) return bad;             \
        ROWS(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);                                    \
        return kelOk;                                                                                         \
    }
#define KEL_PACKED_TO_PLANES(NAME, ROWS, MIN_WIDTH, MIN_HEIGHT, PLANES, WARNING)                                \
    KEL_API KelResult NAME(const Kel16u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],        \
                           KelImageSize roiSize)                                                                \
    {                                                                                                           \
        if (const KelResult bad = testPlanesWithPointers(roiSize, MIN_WIDTH, MIN_HEIGHT, pSrc, pDst)) return bad; \
        const PLANES dst(pDst, dstSteps);                                                                       \
        ROWS(pSrc, srcStep, dst.planes, dst.steps, roiSize.width, roiSize.height);                              \
        return WARNING(roiSize);                                                                                \
    }

// clang-format off
#define KEL_PACKED_TO_YCBCR_MEMBERS(PIXELS, PLANES) \
    PIXELS(keliBGR565ToYCbCr422_16u8u_C3C2R, ownBGR565ToYCbCr422_16u8u_C3C2R) \
    PIXELS(keliBGR555ToYCbCr422_16u8u_C3C2R, ownBGR555ToYCbCr422_16u8u_C3C2R) \
    PLANES(keliBGR565ToYCbCr422_16u8u_C3P3R, ownBGR565ToYCbCr422_16u8u_C3P3R, 2, 1, SamePlanes, noWarning) \
    PLANES(keliBGR555ToYCbCr422_16u8u_C3P3R, ownBGR555ToYCbCr422_16u8u_C3P3R, 2, 1, SamePlanes, noWarning) \
    PLANES(keliBGR565ToYCbCr420_16u8u_C3P3R, ownBGR565ToYCbCr420_16u8u_C3P3R, 2, 2, SamePlanes, noWarning) \
    PLANES(keliBGR555ToYCbCr420_16u8u_C3P3R, ownBGR555ToYCbCr420_16u8u_C3P3R, 2, 2, SamePlanes, noWarning) \
    PLANES(keliBGR565ToYCrCb420_16u8u_C3P3R, ownBGR565ToYCbCr420_16u8u_C3P3R, 2, 2, CrCbPlanes, noWarning) \
    PLANES(keliBGR555ToYCrCb420_16u8u_C3P3R, ownBGR555ToYCbCr420_16u8u_C3P3R, 2, 2, CrCbPlanes, noWarning) \
    PLANES(keliBGR565ToYCbCr411_16u8u_C3P3R, ownBGR565ToYCbCr411_16u8u_C3P3R, 4, 1, SamePlanes, warnUnlessFourWide) \
    PLANES(keliBGR555ToYCbCr411_16u8u_C3P3R, ownBGR555ToYCbCr411_16u8u_C3P3R, 4, 1, SamePlanes, warnUnlessFourWide) \
    PLANES(keliBGR565ToYUV420_16u8u_C3P3R,   ownBGR565ToYUV420_16u8u_C3P3R,   2, 2, SamePlanes, warnUnlessEven) \
    PLANES(keliBGR555ToYUV420_16u8u_C3P3R,   ownBGR555ToYUV420_16u8u_C3P3R,   2, 2, SamePlanes, warnUnlessEven)
// clang-format on

extern "C" {
KEL_PACKED_TO_YCBCR_MEMBERS(KEL_PACKED_TO_PIXEL_ORDER, KEL_PACKED_TO_PLANES)
}

// ---- row layers ----------------------------------------------------------------------------------------
// Source row r begins r * srcStep bytes on, at any byte address; in a 4:2:0
// row pair the second row lies srcStep >> 1 words after the first.  The
// packed pixels are widened a run at a time into B, G, R bytes on the stack,
// and the 8-bit BGR kernels, chosen once a call, convert the run.  A run is a
// multiple of 4 pixels, so it cuts no 4:2:2 pair, 4:2:0 cell or 4:1:1 group.

namespace {

constexpr int kRun = 512;

// run(x0, n) for the runs x0 .. x0 + n - 1 that cover 0 .. width - 1.
template <typename RunFn>
inline void forEachRun(int width, const RunFn& run)
{
    for (int x0 = 0; x0 < width; x0 += kRun) run(x0, std::min(kRun, width - x0));
}

inline const Kel16u* secondOfPair(const Kel16u* first, int srcStep)
{
    return first + (srcStep >> 1);
}

void innerLumaOfBGR(const Kel8u* bgr, Kel8u* y, int width);

template <WidenRow (*Widen)()>
void toPixelOrder422(const Kel16u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    const WidenRow widen = Widen();
    const RowForward422 kernel = chooseBGRToYCbCr422();
    Kel8u bgr[3 * kRun];
    forEachRow(height, [&](int y) {
        const Kel16u* src = rowAt(pSrc, srcStep, y);
        Kel8u* dst = rowAt(pDst, dstStep, y);
        forEachRun(width, [&](int x0, int n) {
            widen(src + x0, bgr, n);
            kernel(bgr, dst + 2 * x0, n);
        });
    });
}

// 4:2:2 (GroupShift 1) or 4:1:1 (GroupShift 2) planes, one chroma sample a group.
template <WidenRow (*Widen)(), int GroupShift>
void toPlanes(const Kel16u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], int width, int height)
{
    const WidenRow widen = Widen();
    const RowForwardToPlanes kernel = GroupShift == 1 ? chooseBGRToYCbCr422Planes() : chooseBGRToYCbCr411();
    const PlaneRows<Kel8u> dst(pDst, dstSteps);
    Kel8u bgr[3 * kRun];
    forEachRow(height, [&](int y) {
        const Kel16u* src = rowAt(pSrc, srcStep, y);
        Kel8u *luma = dst.row(0, y), *cb = dst.row(1, y), *cr = dst.row(2, y);
        forEachRun(width, [&](int x0, int n) {
            widen(src + x0, bgr, n);
            kernel(bgr, luma + x0, cb + (x0 >> GroupShift), cr + (x0 >> GroupShift), n);
        });
    });
}

// The row pairs of a 4:2:0 destination: the first `count` pixels of both
// source rows widened a run at a time and handed to the row-pair kernel;
// then afterRun(top, bottom, yTop, yBottom, n) with the run's widened rows
// and its luma from the run's first column.
template <typename AfterRun>
void widenedRowPairs(WidenRow widen, RowPairForward420 kernel, const Kel16u* pSrc, int srcStep,
                     const PlaneRows<Kel8u>& dst, int count, int height, const AfterRun& afterRun)
{
    Kel8u top[3 * kRun], bottom[3 * kRun];
    forEachRowPair(height, [&](int first, int second, int chroma) {
        const Kel16u* srcTop = rowAt(pSrc, srcStep, first);
        const Kel16u* srcBottom = secondOfPair(srcTop, srcStep);
        Kel8u *yTop = dst.row(0, first), *yBottom = dst.row(0, second);
        Kel8u *cb = dst.row(1, chroma), *cr = dst.row(2, chroma);
        forEachRun(count, [&](int x0, int n) {
            widen(srcTop + x0, top, n);
            widen(srcBottom + x0, bottom, n);
            kernel(top, bottom, yTop + x0, yBottom + x0, cb + x0 / 2, cr + x0 / 2, n);
            afterRun(top, bottom, yTop + x0, yBottom + x0, n);
        });
    });
}

// 2 x 2 cells.  The last column of an odd width gets its Y on both rows, the
// last row of an odd height its Y in every column; neither adds chroma.
template <WidenRow (*Widen)()>
void toCells420(const Kel16u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], int width, int height)
{
    const WidenRow widen = Widen();
    const PlaneRows<Kel8u> dst(pDst, dstSteps);
    widenedRowPairs(widen, chooseBGRToYCbCr420(), pSrc, srcStep, dst, width, height,
                    [](const Kel8u* top, const Kel8u* bottom, Kel8u* yTop, Kel8u* yBottom, int n) {
                        if ((n & 1) == 0) return;
                        const int last = n - 1;
                        innerLumaOfBGR(top + 3 * last, yTop + last, 1);
                        innerLumaOfBGR(bottom + 3 * last, yBottom + last, 1);
                    });
    if (height & 1) {
        const Kel16u* src = rowAt(pSrc, srcStep, height - 1);
        Kel8u* luma = dst.row(0, height - 1);
        Kel8u bgr[3 * kRun];
        forEachRun(width, [&](int x0, int n) {
            widen(src + x0, bgr, n);
            innerLumaOfBGR(bgr, luma + x0, n);
        });
    }
}

// 2 x 2 cells, Y rounded half up; nothing of an odd last column or row is
// written.  The widened fields keep Y at 250 and below.
template <WidenRow (*Widen)()>
void toYUV420(const Kel16u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], int width, int height)
{
    widenedRowPairs(Widen(), chooseBGRToYUV420RoundedLuma_8u_C3P3R(), pSrc, srcStep, PlaneRows<Kel8u>(pDst, dstSteps),
                    width & ~1, height, [](const Kel8u*, const Kel8u*, Kel8u*, Kel8u*, int) {});
}

} // namespace

// ---- kernels -------------------------------------------------------------------------------------------

namespace {

// Studio-range Y of B, G, R pixels, rounded; no clamp is needed.
void innerLumaOfBGR(const Kel8u* bgr, Kel8u* y, int width)
{
    for (int x = 0; x < width; ++x) {
        const Kel8u* p = bgr + 3 * x;
        y[x] = ForwardYCbCr::y(p[2], p[1], p[0]);
    }
}

} // namespace

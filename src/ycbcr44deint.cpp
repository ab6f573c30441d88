// Filtered 4:2:0 conversions: 4:2:0 to 4:2:2 planes with a four-tap vertical chroma
// interpolator, and NV12 deinterlaced into YUY2 or three planes, by whole frame or by slice.
#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "callframe.h"
#include "rowstore.h"
#include "ycbcr44deintsimd.h"

using namespace kel;
using FastKernels = simddeint::Kernels;

namespace {

// ---- filters ---------------------------------------------------------------------------

// The interpolator's taps -1, 9, 9, -1 sum to 16: a shift by 4, with 8 to round.
constexpr int kInnerTap = 9;
constexpr int kInterpolatedShift = 4;
constexpr int kInterpolatedRound = 8;

// The interpolators take the height in whole groups of 8 rows: at least four
// chroma rows, so that the filter's two edges never meet.
constexpr int kInterpolatedHeightMask = ~7;

// The deinterlacers' rounding terms.  "Up" is 4 for luma, 2 for chroma rather
// than the half (2, 1): a flat area comes out one level higher than it went in,
// and 255 stays 255 by the clamp.  Some rows of the tables truncate instead.
constexpr int kLumaUp = 4;
constexpr int kChromaUp = 2;
constexpr int kTruncate = 0;

// One deinterlaced luma sample: taps 1, 2, 1 over the rows above, at and
// below.  The frame's top row, 3 * Y[0] + Y[1], and bottom row,
// Y[H-2] + 3 * Y[H-1], are this tap with the missing row replaced by the edge
// row itself.  At most (4 * 255 + 4) >> 2 = 256, so only the top is clamped.
// The sum fits in 16 bits; saying so lets the compiler keep 16-bit lanes.
inline int lumaTap(int above, int row, int below, int round)
{
    const std::uint16_t sum = static_cast<std::uint16_t>(above + 2 * row + below + round);
    return std::min(sum >> 2, 255);
}

// One deinterlaced chroma sample: the mean of two chroma rows.  Over one row
// taken twice with no rounding it is that row unchanged: (c + c) >> 1 = c.
inline int chromaTap(int first, int second, int round)
{
    const std::uint16_t sum = static_cast<std::uint16_t>(first + second + round);
    return std::min(sum >> 1, 255);
}

// ---- deinterlacing layouts ---------------------------------------------------------------

// The `layout` bits: a slice of a frame, or all three for a whole frame.
constexpr int kWholeFrame = kelSliceTop | kelSliceMiddle | kelSliceBottom;

inline bool wholeFrame(int layout) { return (layout & kWholeFrame) == kWholeFrame; }
inline bool oneSlice(int layout) { return layout == kelSliceTop || layout == kelSliceMiddle || layout == kelSliceBottom; }

// A row (or pair of rows) counted from the region's first, or from its end:
// end(-1) is the last luma row H - 1, the last chroma row H/2 - 1 or the last pair.
struct RowAt {
    int offset;
    bool fromEnd;
    int in(int count) const { return fromEnd ? count + offset : offset; }
};
constexpr RowAt top(int offset) { return {offset, false}; }
constexpr RowAt end(int offset) { return {offset, true}; }

// The frame's edges that lie in the region: row 0 is the frame's first row in
// a top slice, row H - 1 its last in a bottom slice; a whole frame has both.
// Beyond an edge the filters take the edge row again.  A middle slice has
// none, and reads its neighbours' rows.
struct Edges {
    bool first, last;
};
constexpr Edges kTopEdge{true, false};
constexpr Edges kNoEdge{false, false};
constexpr Edges kBottomEdge{false, true};
constexpr Edges kBothEdges{true, true};

// YUY2: destination row pairs p = first .. last, rows 2p and 2p + 1 (pair -1
// is the two rows above the region).  Each row's luma has its rounding term;
// the pair shares one chroma value a column, from chroma rows
// p + chromaFirst and p + chromaSecond: M(p) reads p and p + 1.
struct PairRun {
    RowAt first, last;
    int upperRound, lowerRound;
    int chromaFirst, chromaSecond, chromaRound;
};
struct PairTable {
    Edges edges;
    int runs;
    PairRun run[3];
};

// Top slice: row 0 T(4), row 1 L(1, 0), both over M(0, 2); rows 2 .. H-3
// L(r, 4) over M(r>>1, 2).  Rows H-2 and H-1 are the next slice's.
constexpr PairTable kYUY2TopSlice{kTopEdge, 2, {
    {top(0), top(0),  kLumaUp, kTruncate, 0, 1, kChromaUp},
    {top(1), end(-2), kLumaUp, kLumaUp,   0, 1, kChromaUp},
}};
// Middle slice: rows -2 .. H-3, L(r, 4) over M(r>>1, 2).
constexpr PairTable kYUY2MiddleSlice{kNoEdge, 1, {
    {top(-1), end(-2), kLumaUp, kLumaUp, 0, 1, kChromaUp},
}};
// Bottom slice: as a middle one, then row H-2 L(H-2, 0) and row H-1 B(0),
// both over M(H/2-2, 0).
constexpr PairTable kYUY2BottomSlice{kBottomEdge, 2, {
    {top(-1), end(-2), kLumaUp,   kLumaUp,   0,  1, kChromaUp},
    {end(-1), end(-1), kTruncate, kTruncate, -1, 0, kTruncate},
}};
// Whole frame of two rows: T(4) and B(4), over chroma row 0 unfiltered.
constexpr PairTable kYUY2FrameOfTwoRows{kBothEdges, 1, {
    {top(0), top(0), kLumaUp, kLumaUp, 0, 0, kTruncate},
}};
// Whole frame: rows 0 and 1 T(4), L(1, 4) over M(0, 2); rows 2 .. H-3 L(r, 4)
// over M(r>>1, 0); rows H-2 and H-1 L(H-2, 4), B(4) over M(H/2-2, 2).
constexpr PairTable kYUY2Frame{kBothEdges, 3, {
    {top(0), top(0),   kLumaUp, kLumaUp, 0,  1, kChromaUp},
    {top(1), end(-2),  kLumaUp, kLumaUp, 0,  1, kTruncate},
    {end(-1), end(-1), kLumaUp, kLumaUp, -1, 0, kChromaUp},
}};

// Planes: luma rows first .. last, and chroma rows k over chroma rows
// k + chromaFirst and k + chromaSecond.
struct LumaRun {
    RowAt first, last;
    int round;
};
struct ChromaRun {
    RowAt first, last;
    int chromaFirst, chromaSecond, round;
};
struct PlaneTable {
    Edges edges;
    int lumaRuns;
    LumaRun luma[2];
    int chromaRuns;
    ChromaRun chroma[2];
};

// Top slice: row 0 T(0), rows 1 .. H-3 L(r, 0); chroma rows 0 .. H/2-2 M(k, 0).
// Luma rows H-2, H-1 and chroma row H/2-1 are the next slice's; row 0 is
// written at any height.
constexpr PlaneTable kPlanesTopSlice{kTopEdge, 2, {{top(0), top(0), kTruncate}, {top(1), end(-3), kTruncate}}, 1, {
    {top(0), end(-2), 0, 1, kTruncate},
}};
// Middle slice: rows -2 .. H-3 L(r, 0); chroma rows -1 .. H/2-2 M(k, 0).
constexpr PlaneTable kPlanesMiddleSlice{kNoEdge, 1, {{top(-2), end(-3), kTruncate}}, 1, {
    {top(-1), end(-2), 0, 1, kTruncate},
}};
// Bottom slice: rows -2 .. H-2 L(r, 0), row H-1 B(0); chroma rows -1 .. H/2-2
// M(k, 0), and row H/2-1 M(H/2-2, 0) again.
constexpr PlaneTable kPlanesBottomSlice{kBottomEdge, 1, {{top(-2), end(-1), kTruncate}}, 2, {
    {top(-1), end(-2), 0, 1, kTruncate},
    {end(-1), end(-1), -1, 0, kTruncate},
}};
// Whole frame of two rows: T(4), B(4); chroma row 0 unfiltered.
constexpr PlaneTable kPlanesFrameOfTwoRows{kBothEdges, 1, {{top(0), end(-1), kLumaUp}}, 1, {
    {top(0), top(0), 0, 0, kTruncate},
}};
// Whole frame: row 0 T(4), rows 1 .. H-2 L(r, 4), row H-1 B(4); chroma rows
// 0 .. H/2-2 M(k, 2), and row H/2-1 M(H/2-2, 2) again.
constexpr PlaneTable kPlanesFrame{kBothEdges, 1, {{top(0), end(-1), kLumaUp}}, 2, {
    {top(0), end(-2), 0, 1, kChromaUp},
    {end(-1), end(-1), -1, 0, kChromaUp},
}};

// The source of a deinterlacing call: luma rows r and chroma rows k relative to
// the region, negative above it; luma rows beyond the frame's edges are the
// edge rows.
struct Interlaced {
    const Kel8u* luma;
    int lumaStep;
    const Kel8u* chroma;
    int chromaStep;
    int firstRow, lastRow;

    Interlaced(const Kel8u* y, int yStep, const Kel8u* cbcr, int cbcrStep, Edges edges, int height)
        : luma(y), lumaStep(yStep), chroma(cbcr), chromaStep(cbcrStep), firstRow(edges.first ? 0 : INT_MIN),
          lastRow(edges.last ? height - 1 : INT_MAX)
    {
    }
    const Kel8u* lumaRow(int r) const { return rowAt(luma, lumaStep, std::clamp(r, firstRow, lastRow)); }
    const Kel8u* chromaRow(int k) const { return rowAt(chroma, chromaStep, k); }
};

void walkPairs(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep, Kel8u* pDst, int dstStep,
               int width, int height, const PairTable& layout);
void walkPlanes(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep, Kel8u* const pDst[3],
                const int dstStep[3], int width, int height, const PlaneTable& layout);

} // namespace

// ---- row layers and kernels, defined below ------------------------------------------------

void ownYCbCr420ToYCbCr422Filter_8u_P3R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3],
                                        const int dstStep[3], int width, int height, bool exchangePlanes);
void ownYCbCr420ToYCbCr422Filter_8u_P2P3R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep,
                                          Kel8u* const pDst[3], const int dstStep[3], int width, int height);

void myNV12ToYUY2Deinterlace_All_P2C2R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep,
                                       Kel8u* pDst, int dstStep, int width, int height);
void myNV12ToYUY2Deinterlace_edge_P2C2R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep,
                                        Kel8u* pDst, int dstStep, int width, int height, int layout);
void innerNV12ToYUY2Deinterlace_P2C2R(const Kel8u* above, const Kel8u* upper, const Kel8u* lower, const Kel8u* below,
                                      int upperRound, int lowerRound, const Kel8u* chromaFirst, const Kel8u* chromaSecond,
                                      int chromaRound, Kel8u* dstUpper, Kel8u* dstLower, int width);

void innerNV12ToYV12DeinterlaceAll_P2P3R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep,
                                         Kel8u* const pDst[3], const int dstStep[3], int width, int height);
void innerNV12ToYV12Deinterlace_first_P2P3R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep,
                                            Kel8u* const pDst[3], const int dstStep[3], int width, int height);
void innerNV12ToYV12Deinterlace_P2P3R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep,
                                      Kel8u* const pDst[3], const int dstStep[3], int width, int height);
void innerNV12ToYV12Deinterlace_last_P2P3R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep,
                                           Kel8u* const pDst[3], const int dstStep[3], int width, int height);

// ---- public functions ----------------------------------------------------------------------

extern "C" {

// The interpolators test every pointer and plane, then the size, and cut the
// size to even columns and to groups of 8 rows.
KEL_API KelResult keliYCbCr420ToYCbCr422_Filter_8u_P3R(const Kel8u* const pSrc[3], const int srcStep[3],
                                                       Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesWithPointers(roiSize, 2, 8, pSrc, pDst)) return bad;
    ownYCbCr420ToYCbCr422Filter_8u_P3R(pSrc, srcStep, pDst, dstStep, roiSize.width & ~1,
                                       roiSize.height & kInterpolatedHeightMask, false);
    return kelOk;
}

// Source planes Y, Cr, Cb; the destination's are Y, Cb, Cr.
KEL_API KelResult keliYCrCb420ToYCbCr422_Filter_8u_P3R(const Kel8u* const pSrc[3], const int srcStep[3],
                                                       Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesWithPointers(roiSize, 2, 8, pSrc, pDst)) return bad;
    ownYCbCr420ToYCbCr422Filter_8u_P3R(pSrc, srcStep, pDst, dstStep, roiSize.width & ~1,
                                       roiSize.height & kInterpolatedHeightMask, true);
    return kelOk;
}

KEL_API KelResult keliYCbCr420ToYCbCr422_Filter_8u_P2P3R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr,
                                                         int srcCbCrStep, Kel8u* const pDst[3], const int dstStep[3],
                                                         KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesWithPointers(roiSize, 2, 8, pSrcY, pSrcCbCr, pDst)) return bad;
    ownYCbCr420ToYCbCr422Filter_8u_P2P3R(pSrcY, srcYStep, pSrcCbCr, srcCbCrStep, pDst, dstStep, roiSize.width & ~1,
                                         roiSize.height & kInterpolatedHeightMask);
    return kelOk;
}

// The deinterlacers: a layout that is neither one slice nor a whole frame
// passes the tests and writes nothing.
KEL_API KelResult keliYCbCr420ToYCbCr422_Filter_8u_P2C2R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr,
                                                         int srcCbCrStep, Kel8u* pDst, int dstStep,
                                                         KelImageSize roiSize, int layout)
{
    if (anyNull(pSrcY, pSrcCbCr, pDst)) return kelErrNullPointer;
    if (sizeBelow(roiSize, 2, 2))       return kelErrSize;
    const int width = roiSize.width & ~1, height = roiSize.height & ~1;
    if (wholeFrame(layout))
        myNV12ToYUY2Deinterlace_All_P2C2R(pSrcY, srcYStep, pSrcCbCr, srcCbCrStep, pDst, dstStep, width, height);
    else if (oneSlice(layout))
        myNV12ToYUY2Deinterlace_edge_P2C2R(pSrcY, srcYStep, pSrcCbCr, srcCbCrStep, pDst, dstStep, width, height, layout);
    return kelOk;
}

KEL_API KelResult keliYCbCr420ToYCrCb420_Filter_8u_P2P3R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr,
                                                         int srcCbCrStep, Kel8u* const pDst[3], const int dstStep[3],
                                                         KelImageSize roiSize, int layout)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrcY, pSrcCbCr, pDst)) return bad;
    if (sizeBelow(roiSize, 2, 2)) return kelErrSize;
    const int width = roiSize.width & ~1, height = roiSize.height & ~1;
    const auto rows = wholeFrame(layout)           ? innerNV12ToYV12DeinterlaceAll_P2P3R
                      : layout == kelSliceTop    ? innerNV12ToYV12Deinterlace_first_P2P3R
                      : layout == kelSliceMiddle ? innerNV12ToYV12Deinterlace_P2P3R
                      : layout == kelSliceBottom ? innerNV12ToYV12Deinterlace_last_P2P3R
                                                 : nullptr;
    if (rows) rows(pSrcY, srcYStep, pSrcCbCr, srcCbCrStep, pDst, dstStep, width, height);
    return kelOk;
}

} // extern "C"

// ---- row layers ------------------------------------------------------------------------------

namespace {

template <int Pitch>
void interpolateChromaPlanes(const Kel8u* const src[2], int srcStep[2], Kel8u* const dst[2], const int dstStep[2],
                             int samples, int sourceRows, const FastKernels* fast);

// One block where both planes are compact: a copy that long goes by the
// processor's string move, well ahead of a copy row by row.
inline void copyLuma(const Kel8u* src, int srcStep, Kel8u* dst, int dstStep, int width, int height)
{
    if (srcStep == width && dstStep == width) {
        std::memcpy(dst, src, static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
        return;
    }
    forEachRow(height, [&](int y) {
        std::memcpy(rowAt(dst, dstStep, y), rowAt(src, srcStep, y), static_cast<std::size_t>(width));
    });
}

} // namespace

// Luma copied; each destination chroma plane from its source plane (planes 2
// and 1 exchanged for a Y, Cr, Cb source).
void ownYCbCr420ToYCbCr422Filter_8u_P3R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3],
                                        const int dstStep[3], int width, int height, bool exchangePlanes)
{
    const FastKernels* fast = simddeint::chooseKernels();
    copyLuma(pSrc[0], srcStep[0], pDst[0], dstStep[0], width, height);
    const int first = exchangePlanes ? 2 : 1, second = 3 - first;
    const Kel8u* const src[2] = {pSrc[first], pSrc[second]};
    int steps[2] = {srcStep[first], srcStep[second]};
    interpolateChromaPlanes<1>(src, steps, pDst + 1, dstStep + 1, width / 2, height / 2, fast);
}

// Luma copied; Cb, the first byte of each pair, to plane 1, Cr to plane 2.
void ownYCbCr420ToYCbCr422Filter_8u_P2P3R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep,
                                          Kel8u* const pDst[3], const int dstStep[3], int width, int height)
{
    const FastKernels* fast = simddeint::chooseKernels();
    copyLuma(pSrcY, srcYStep, pDst[0], dstStep[0], width, height);
    const Kel8u* const src[2] = {pSrcCbCr, pSrcCbCr + 1};
    int steps[2] = {srcCbCrStep, srcCbCrStep};
    interpolateChromaPlanes<2>(src, steps, pDst + 1, dstStep + 1, width / 2, height / 2, fast);
}

void myNV12ToYUY2Deinterlace_All_P2C2R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep,
                                       Kel8u* pDst, int dstStep, int width, int height)
{
    walkPairs(pSrcY, srcYStep, pSrcCbCr, srcCbCrStep, pDst, dstStep, width, height,
              height == 2 ? kYUY2FrameOfTwoRows : kYUY2Frame);
}

void myNV12ToYUY2Deinterlace_edge_P2C2R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep,
                                        Kel8u* pDst, int dstStep, int width, int height, int layout)
{
    const PairTable& rows = layout == kelSliceTop      ? kYUY2TopSlice
                             : layout == kelSliceMiddle ? kYUY2MiddleSlice
                                                        : kYUY2BottomSlice;
    walkPairs(pSrcY, srcYStep, pSrcCbCr, srcCbCrStep, pDst, dstStep, width, height, rows);
}

void innerNV12ToYV12DeinterlaceAll_P2P3R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep,
                                         Kel8u* const pDst[3], const int dstStep[3], int width, int height)
{
    walkPlanes(pSrcY, srcYStep, pSrcCbCr, srcCbCrStep, pDst, dstStep, width, height,
               height == 2 ? kPlanesFrameOfTwoRows : kPlanesFrame);
}

void innerNV12ToYV12Deinterlace_first_P2P3R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep,
                                            Kel8u* const pDst[3], const int dstStep[3], int width, int height)
{
    walkPlanes(pSrcY, srcYStep, pSrcCbCr, srcCbCrStep, pDst, dstStep, width, height, kPlanesTopSlice);
}

void innerNV12ToYV12Deinterlace_P2P3R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep,
                                      Kel8u* const pDst[3], const int dstStep[3], int width, int height)
{
    walkPlanes(pSrcY, srcYStep, pSrcCbCr, srcCbCrStep, pDst, dstStep, width, height, kPlanesMiddleSlice);
}

void innerNV12ToYV12Deinterlace_last_P2P3R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep,
                                           Kel8u* const pDst[3], const int dstStep[3], int width, int height)
{
    walkPlanes(pSrcY, srcYStep, pSrcCbCr, srcCbCrStep, pDst, dstStep, width, height, kPlanesBottomSlice);
}

namespace {

void interpolatedRow(const Kel8u* above, const Kel8u* upper, const Kel8u* lower, const Kel8u* below, Kel8u* dst,
                     int samples);
template <int Pitch>
void chromaCopyRow(const Kel8u* src, Kel8u* dst, int samples);
void deinterlacedLumaRow(const Kel8u* above, const Kel8u* row, const Kel8u* below, int round, Kel8u* dst, int width);
void yuy2Row(const Kel8u* above, const Kel8u* row, const Kel8u* below, int round, const Kel8u* cb, const Kel8u* cr,
             Kel8u* dst, int pairs);
void deinterlacedChromaRow(const Kel8u* first, const Kel8u* second, int round, Kel8u* dstCb, Kel8u* dstCr,
                           int samples);

// Even destination rows are the source rows; each odd row 2j + 1 is
// interpolated from the even rows 2j - 2 .. 2j + 4, read back from the
// destination, with the rows past either edge replaced by the edge row.  The
// even rows are written just ahead of the odd row that needs them, so every
// destination row is written once.  The two chroma planes go together, a
// row of each in turn, so that a source of Cb, Cr pairs is read once.
//
// Where the vector kernels are given, they do each row's first samples and
// the scalar kernels the rest.  A source of pairs has its Cr plane one byte
// after its Cb plane.
template <int Pitch>
void interpolateChromaPlanes(const Kel8u* const src[2], int srcStep[2], Kel8u* const dst[2], const int dstStep[2],
                             int samples, int sourceRows, const FastKernels* fast)
{
    const int last = sourceRows - 1;
    int copied = 0;
    for (int j = 0; j < sourceRows; ++j) {
        for (; copied <= std::min(j + 2, last); ++copied) {
            const Kel8u* from[2] = {rowAt(src[0], srcStep[0], copied), rowAt(src[1], srcStep[1], copied)};
            Kel8u* to[2] = {rowAt(dst[0], dstStep[0], 2 * copied), rowAt(dst[1], dstStep[1], 2 * copied)};
            int done[2] = {0, 0};
            if (fast && Pitch == 1) {
                done[0] = fast->copiedRow(from[0], to[0], samples);
                done[1] = fast->copiedRow(from[1], to[1], samples);
            } else if (fast) {
                done[0] = done[1] = fast->splitPairs(from[0], to[0], to[1], samples);
            }
            for (int c = 0; c < 2; ++c)
                chromaCopyRow<Pitch>(from[c] + Pitch * done[c], to[c] + done[c], samples - done[c]);
        }
        for (int c = 0; c < 2; ++c) {
            const auto even = [&](int k) { return rowAt(dst[c], dstStep[c], 2 * std::clamp(k, 0, last)); };
            const Kel8u *a = even(j - 1), *b = even(j), *e = even(j + 1), *f = even(j + 2);
            Kel8u* to = rowAt(dst[c], dstStep[c], 2 * j + 1);
            const int done = fast ? fast->interpolatedRow(a, b, e, f, to, samples) : 0;
            interpolatedRow(a + done, b + done, e + done, f + done, to + done, samples - done);
        }
    }
}

// Destination row pairs run by run, the pairs counted upward.
void walkPairs(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep, Kel8u* pDst, int dstStep,
               int width, int height, const PairTable& layout)
{
    const Interlaced src(pSrcY, srcYStep, pSrcCbCr, srcCbCrStep, layout.edges, height);
    const FastKernels* fast = simddeint::chooseKernels();
    const int pairs = height / 2;
    for (int i = 0; i < layout.runs; ++i) {
        const PairRun& run = layout.run[i];
        for (int p = run.first.in(pairs); p <= run.last.in(pairs); ++p) {
            const Kel8u *above = src.lumaRow(2 * p - 1), *upper = src.lumaRow(2 * p), *lower = src.lumaRow(2 * p + 1),
                        *below = src.lumaRow(2 * p + 2);
            const Kel8u *first = src.chromaRow(p + run.chromaFirst), *second = src.chromaRow(p + run.chromaSecond);
            Kel8u *dstUpper = rowAt(pDst, dstStep, 2 * p), *dstLower = rowAt(pDst, dstStep, 2 * p + 1);
            const int done = fast ? fast->yuy2Rows(above, upper, lower, below, run.upperRound, run.lowerRound, first,
                                                   second, run.chromaRound, dstUpper, dstLower, width)
                                  : 0;
            innerNV12ToYUY2Deinterlace_P2C2R(above + done, upper + done, lower + done, below + done, run.upperRound,
                                             run.lowerRound, first + done, second + done, run.chromaRound,
                                             dstUpper + 2 * done, dstLower + 2 * done, width - done);
        }
    }
}

// The luma rows, then the chroma rows run by run, each counted upward.
void walkPlanes(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep, Kel8u* const pDst[3],
                const int dstStep[3], int width, int height, const PlaneTable& layout)
{
    const Interlaced src(pSrcY, srcYStep, pSrcCbCr, srcCbCrStep, layout.edges, height);
    const PlaneRows<Kel8u> dst(pDst, dstStep);
    const FastKernels* fast = simddeint::chooseKernels();
    for (int i = 0; i < layout.lumaRuns; ++i) {
        const LumaRun& run = layout.luma[i];
        for (int r = run.first.in(height); r <= run.last.in(height); ++r) {
            const Kel8u *above = src.lumaRow(r - 1), *row = src.lumaRow(r), *below = src.lumaRow(r + 1);
            Kel8u* to = dst.row(0, r);
            const int done = fast ? fast->lumaRow(above, row, below, run.round, to, width) : 0;
            deinterlacedLumaRow(above + done, row + done, below + done, run.round, to + done, width - done);
        }
    }
    const int chromaRows = height / 2, samples = width / 2;
    for (int i = 0; i < layout.chromaRuns; ++i) {
        const ChromaRun& run = layout.chroma[i];
        for (int k = run.first.in(chromaRows); k <= run.last.in(chromaRows); ++k) {
            const Kel8u *first = src.chromaRow(k + run.chromaFirst), *second = src.chromaRow(k + run.chromaSecond);
            Kel8u *cb = dst.row(1, k), *cr = dst.row(2, k);
            const int done = fast ? fast->chromaRow(first, second, run.round, cb, cr, samples) : 0;
            deinterlacedChromaRow(first + 2 * done, second + 2 * done, run.round, cb + done, cr + done, samples - done);
        }
    }
}

} // namespace

// ---- kernels -------------------------------------------------------------------------------

// One YUY2 row pair: rows `upper` and `lower` of the source filtered with
// their neighbours, over chroma that the two rows share.  A block of pixel
// pairs has its chroma computed once into a small array, then each row is one
// plain loop (one loop for everything would need more run-time overlap tests
// of its eight rows than the compiler makes before it gives up vectorising).
void innerNV12ToYUY2Deinterlace_P2C2R(const Kel8u* above, const Kel8u* upper, const Kel8u* lower, const Kel8u* below,
                                      int upperRound, int lowerRound, const Kel8u* chromaFirst, const Kel8u* chromaSecond,
                                      int chromaRound, Kel8u* dstUpper, Kel8u* dstLower, int width)
{
    forEachBlock(width / 2, [&](int i0, int n) {
        Kel8u cb[kBlock], cr[kBlock];
        const Kel8u* first = chromaFirst + 2 * i0;
        const Kel8u* second = chromaSecond + 2 * i0;
        for (int i = 0; i < n; ++i) {
            cb[i] = static_cast<Kel8u>(chromaTap(first[2 * i], second[2 * i], chromaRound));
            cr[i] = static_cast<Kel8u>(chromaTap(first[2 * i + 1], second[2 * i + 1], chromaRound));
        }
        yuy2Row(above + 2 * i0, upper + 2 * i0, lower + 2 * i0, upperRound, cb, cr, dstUpper + 4 * i0, n);
        yuy2Row(upper + 2 * i0, lower + 2 * i0, below + 2 * i0, lowerRound, cb, cr, dstLower + 4 * i0, n);
    });
}

namespace {

// (9 * (upper + lower) - above - below + 8) >> 4, an arithmetic shift of a sum
// that can be negative, clamped to 0 .. 255.  The sum lies in -510 .. 4598:
// 16-bit lanes hold it.
void interpolatedRow(const Kel8u* above, const Kel8u* upper, const Kel8u* lower, const Kel8u* below, Kel8u* dst,
                     int samples)
{
    for (int k = 0; k < samples; ++k) {
        const std::int16_t sum =
            static_cast<std::int16_t>(kInnerTap * (upper[k] + lower[k]) - above[k] - below[k] + kInterpolatedRound);
        dst[k] = saturateByte(sum >> kInterpolatedShift);
    }
}

template <int Pitch>
void chromaCopyRow(const Kel8u* src, Kel8u* dst, int samples)
{
    if constexpr (Pitch == 1) {
        std::memcpy(dst, src, static_cast<std::size_t>(samples));
    } else {
        for (int k = 0; k < samples; ++k) dst[k] = src[k * Pitch];
    }
}

// `pairs` pixel pairs of one YUY2 row: Y0, Cb, Y1, Cr.
void yuy2Row(const Kel8u* above, const Kel8u* row, const Kel8u* below, int round, const Kel8u* cb, const Kel8u* cr,
             Kel8u* dst, int pairs)
{
    for (int i = 0; i < pairs; ++i) {
        dst[4 * i] = static_cast<Kel8u>(lumaTap(above[2 * i], row[2 * i], below[2 * i], round));
        dst[4 * i + 1] = cb[i];
        dst[4 * i + 2] = static_cast<Kel8u>(lumaTap(above[2 * i + 1], row[2 * i + 1], below[2 * i + 1], round));
        dst[4 * i + 3] = cr[i];
    }
}

void deinterlacedLumaRow(const Kel8u* above, const Kel8u* row, const Kel8u* below, int round, Kel8u* dst, int width)
{
    for (int x = 0; x < width; ++x) dst[x] = static_cast<Kel8u>(lumaTap(above[x], row[x], below[x], round));
}

// Cb, the first byte of each pair, to its plane, Cr to the other.
void deinterlacedChromaRow(const Kel8u* first, const Kel8u* second, int round, Kel8u* dstCb, Kel8u* dstCr, int samples)
{
    for (int k = 0; k < samples; ++k) {
        dstCb[k] = static_cast<Kel8u>(chromaTap(first[2 * k], second[2 * k], round));
        dstCr[k] = static_cast<Kel8u>(chromaTap(first[2 * k + 1], second[2 * k + 1], round));
    }
}

} // namespace

// Resampling between 4:2:0, 4:1:1 and 16:2:0 planes: the four repacking
// members that average.  Each demands exact sizes instead of rounding down.
#include "callframe.h"
#include "yuvmssimd.h"

using namespace kel;

void ownYCbCr420To411_8u_P3R(const Kel8u* const src[3], const int srcStep[3], Kel8u* const dst[3],
                             const int dstStep[3], int width, int height);
void ownYCbCr411To420_8u_P3R(const Kel8u* const src[3], const int srcStep[3], Kel8u* const dst[3],
                             const int dstStep[3], int width, int height);
void ownYCbCr420To1620_8u_P3R(const Kel8u* const src[3], const int srcStep[3], Kel8u* const dst[3],
                              const int dstStep[3], int width, int height);
void ownYCbCr1620To420_8u_P3R(const Kel8u* const src[3], const int srcStep[3], Kel8u* const dst[3],
                              const int dstStep[3], int width, int height);

namespace {

using Kernel = void (*)(const Kel8u* const[3], const int[3], Kel8u* const[3], const int[3], int, int);

KelResult resample(Kernel kernel, const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3],
                   const int dstStep[3], KelImageSize roi);

bool notMultipleOf4(int v) { return (v & 3) != 0; }

} // namespace

// ---- public functions ----------------------------------------------------------------

// Every pointer and the planes inside the arrays, then the size, which must
// hold whole cells of both schemes.
extern "C" {

KEL_API KelResult keliYCbCr420To411_8u_P3R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3],
                                           const int dstStep[3], KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesWithPointers(roiSize, 4, 2, pSrc, pDst))  return bad;
    if (notMultipleOf4(roiSize.width) || (roiSize.height & 1))                    return kelErrSize;
    return resample(ownYCbCr420To411_8u_P3R, pSrc, srcStep, pDst, dstStep, roiSize);
}

KEL_API KelResult keliYCbCr411To420_8u_P3R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3],
                                           const int dstStep[3], KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesWithPointers(roiSize, 4, 4, pSrc, pDst))  return bad;
    if (notMultipleOf4(roiSize.width) || notMultipleOf4(roiSize.height))          return kelErrSize;
    return resample(ownYCbCr411To420_8u_P3R, pSrc, srcStep, pDst, dstStep, roiSize);
}

KEL_API KelResult keliYCbCr420To1620_8u_P3R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3],
                                            const int dstStep[3], KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesWithPointers(roiSize, 4, 4, pSrc, pDst))  return bad;
    if (notMultipleOf4(roiSize.width) || notMultipleOf4(roiSize.height))          return kelErrSize;
    return resample(ownYCbCr420To1620_8u_P3R, pSrc, srcStep, pDst, dstStep, roiSize);
}

KEL_API KelResult keliYCbCr1620To420_8u_P3R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3],
                                            const int dstStep[3], KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesWithPointers(roiSize, 4, 4, pSrc, pDst))  return bad;
    if (notMultipleOf4(roiSize.width) || notMultipleOf4(roiSize.height))          return kelErrSize;
    return resample(ownYCbCr1620To420_8u_P3R, pSrc, srcStep, pDst, dstStep, roiSize);
}

} // extern "C"

// ---- the row layer ------------------------------------------------------------------

namespace {

// Luma is copied as it stands; the kernel resamples the two chroma planes.
KelResult resample(Kernel kernel, const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3],
                   const int dstStep[3], KelImageSize roi)
{
    keliCopy_8u_C1R(pSrc[0], srcStep[0], pDst[0], dstStep[0], roi);
    kernel(pSrc, srcStep, pDst, dstStep, roi.width, roi.height);
    return kelOk;
}

} // namespace

// ---- kernels: chroma planes 1 and 2 ------------------------------------------------

// Each kernel takes the vector kernels of this processor once a call (none in
// a build without SIMD); a row goes to its vector kernel first, and the loops
// below finish it from the sample where that stopped.

// 4:2:0 (n rows of width/2) to 4:1:1 (2n rows of width/4): odd columns
// dropped, odd rows the truncating mean of their neighbours above and below;
// the last source row is repeated.
void ownYCbCr420To411_8u_P3R(const Kel8u* const src[3], const int srcStep[3], Kel8u* const dst[3],
                             const int dstStep[3], int width, int height)
{
    const PlaneRows<const Kel8u> from(src, srcStep);
    const PlaneRows<Kel8u> to(dst, dstStep);
    const int rows = height / 2, samples = width / 4;
    const simdrepack::Kernels* simd = simdrepack::chooseKernels();
    for (int p = 1; p < 3; ++p)
        forEachRowPair(height, [&](int even, int odd, int j) {
            const Kel8u* s = from.row(p, j);
            const Kel8u* below = j + 1 < rows ? from.row(p, j + 1) : s;
            Kel8u* evenRow = to.row(p, even);
            Kel8u* oddRow = to.row(p, odd);
            const int done = simd ? simd->oddRowsAveraged(s, below, evenRow, oddRow, samples) : 0;
            for (int k = done; k < samples; ++k) {
                evenRow[k] = s[2 * k];
                oddRow[k] = static_cast<Kel8u>((s[2 * k] + below[2 * k]) >> 1);
            }
        });
}

// 4:1:1 (width/4 per row) to 4:2:0: the top row of each pair only, odd
// columns the truncating mean of their neighbours left and right; the last is
// repeated.
void ownYCbCr411To420_8u_P3R(const Kel8u* const src[3], const int srcStep[3], Kel8u* const dst[3],
                             const int dstStep[3], int width, int height)
{
    const PlaneRows<const Kel8u> from(src, srcStep);
    const PlaneRows<Kel8u> to(dst, dstStep);
    const int samples = width / 4;
    const simdrepack::Kernels* simd = simdrepack::chooseKernels();
    for (int p = 1; p < 3; ++p)
        forEachRowPair(height, [&](int top, int, int j) {
            const Kel8u* s = from.row(p, top);
            Kel8u* d = to.row(p, j);
            if (top + 2 < height) simdrepack::prefetchRow(from.row(p, top + 2), samples);  // the odd rows are skipped
            const int done = simd ? simd->oddColumnsAveraged(s, d, samples) : 0;
            for (int k = done; k < samples; ++k) {
                const int right = k + 1 < samples ? s[k + 1] : s[k];
                d[2 * k] = s[k];
                d[2 * k + 1] = static_cast<Kel8u>((s[k] + right) >> 1);
            }
        });
}

// 4:2:0 to 16:2:0: every other sample of the top chroma row of each pair.
void ownYCbCr420To1620_8u_P3R(const Kel8u* const src[3], const int srcStep[3], Kel8u* const dst[3],
                              const int dstStep[3], int width, int height)
{
    const PlaneRows<const Kel8u> from(src, srcStep);
    const PlaneRows<Kel8u> to(dst, dstStep);
    const int samples = width / 4;
    const simdrepack::Kernels* simd = simdrepack::chooseKernels();
    for (int p = 1; p < 3; ++p)
        forEachRowPair(height / 2, [&](int top, int, int j) {
            const Kel8u* s = from.row(p, top);
            Kel8u* d = to.row(p, j);
            const int done = simd ? simd->evenColumns(s, d, samples) : 0;
            for (int k = done; k < samples; ++k) d[k] = s[2 * k];
        });
}

// 16:2:0 to 4:2:0, each sample a 2 x 2 cell.  Inside the plane Cb rounds its
// means half up and Cr truncates; on the last column or row the missing
// neighbour is the sample itself, and those means truncate in both.
void ownYCbCr1620To420_8u_P3R(const Kel8u* const src[3], const int srcStep[3], Kel8u* const dst[3],
                              const int dstStep[3], int width, int height)
{
    const PlaneRows<const Kel8u> from(src, srcStep);
    const PlaneRows<Kel8u> to(dst, dstStep);
    const int rows = height / 4, samples = width / 4;
    const simdrepack::Kernels* simd = simdrepack::chooseKernels();
    for (int p = 1; p < 3; ++p) {
        const int half = p == 1 ? 1 : 0;     // +1 before >> 1 in Cb's inner cells
        const int quarter = p == 1 ? 2 : 0;  // +2 before >> 2
        // The inner cells of rows with a row below; the last row is the scalar kernel's.
        const simdrepack::TwoRowsKernel innerCells = !simd ? nullptr : p == 1 ? simd->cellsRounded : simd->cellsTruncated;
        forEachRowPair(height / 2, [&](int topRow, int bottomRow, int j) {
            const bool lastRow = j + 1 == rows;
            const Kel8u* s = from.row(p, j);
            const Kel8u* next = lastRow ? s : from.row(p, j + 1);
            Kel8u* top = to.row(p, topRow);
            Kel8u* bottom = to.row(p, bottomRow);
            const int done = innerCells && !lastRow ? innerCells(s, next, top, bottom, samples) : 0;
            for (int k = done; k < samples; ++k) {
                const bool lastColumn = k + 1 == samples;
                const int a = s[k];
                Kel8u right, down, diagonal;
                if (!lastRow && !lastColumn) {
                    const int b = s[k + 1], c = next[k], d = next[k + 1];
                    right = static_cast<Kel8u>((a + b + half) >> 1);
                    down = static_cast<Kel8u>((a + c + half) >> 1);
                    diagonal = static_cast<Kel8u>((a + b + c + d + quarter) >> 2);
                } else if (!lastRow) {  // last column
                    right = static_cast<Kel8u>(a);
                    down = diagonal = static_cast<Kel8u>((a + next[k]) >> 1);
                } else if (!lastColumn) {  // last row
                    right = static_cast<Kel8u>((a + s[k + 1]) >> 1);
                    down = diagonal = static_cast<Kel8u>(a);
                } else {
                    right = down = diagonal = static_cast<Kel8u>(a);
                }
                top[2 * k] = static_cast<Kel8u>(a);
                top[2 * k + 1] = right;
                bottom[2 * k] = down;
                bottom[2 * k + 1] = diagonal;
            }
        });
    }
}

// Resampling between 4:2:0, 4:1:1 and 16:2:0 planes: the four repacking
// members that average.  Each demands exact sizes instead of rounding down.
#include "callframe.h"

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

bool notMultipleOf4(int v) { return (v & 3) != 0; }

// Luma is copied as it stands; the kernel resamples the two chroma planes.
KelResult resample(Kernel kernel, const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3],
                   const int dstStep[3], KelImageSize roi)
{
    keliCopy_8u_C1R(pSrc[0], srcStep[0], pDst[0], dstStep[0], roi);
    kernel(pSrc, srcStep, pDst, dstStep, roi.width, roi.height);
    return kelOk;
}

bool anyNullImage(const Kel8u* const pSrc[3], Kel8u* const pDst[3])
{
    return anyNull(pSrc, pDst) || anyNullPlane(pSrc) || anyNullPlane(pDst);
}

} // namespace

extern "C" {

KEL_API KelResult keliYCbCr420To411_8u_P3R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3],
                                           const int dstStep[3], KelImageSize roiSize)
{
    if (anyNullImage(pSrc, pDst))                                                  return kelErrNullPointer;
    if (sizeBelow(roiSize, 4, 2) || notMultipleOf4(roiSize.width) || (roiSize.height & 1)) return kelErrSize;
    return resample(ownYCbCr420To411_8u_P3R, pSrc, srcStep, pDst, dstStep, roiSize);
}

KEL_API KelResult keliYCbCr411To420_8u_P3R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3],
                                           const int dstStep[3], KelImageSize roiSize)
{
    if (anyNullImage(pSrc, pDst))                                                          return kelErrNullPointer;
    if (sizeBelow(roiSize, 4, 4) || notMultipleOf4(roiSize.width) || notMultipleOf4(roiSize.height)) return kelErrSize;
    return resample(ownYCbCr411To420_8u_P3R, pSrc, srcStep, pDst, dstStep, roiSize);
}

KEL_API KelResult keliYCbCr420To1620_8u_P3R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3],
                                            const int dstStep[3], KelImageSize roiSize)
{
    if (anyNullImage(pSrc, pDst))                                                          return kelErrNullPointer;
    if (sizeBelow(roiSize, 4, 4) || notMultipleOf4(roiSize.width) || notMultipleOf4(roiSize.height)) return kelErrSize;
    return resample(ownYCbCr420To1620_8u_P3R, pSrc, srcStep, pDst, dstStep, roiSize);
}

KEL_API KelResult keliYCbCr1620To420_8u_P3R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3],
                                            const int dstStep[3], KelImageSize roiSize)
{
    if (anyNullImage(pSrc, pDst))                                                          return kelErrNullPointer;
    if (sizeBelow(roiSize, 4, 4) || notMultipleOf4(roiSize.width) || notMultipleOf4(roiSize.height)) return kelErrSize;
    return resample(ownYCbCr1620To420_8u_P3R, pSrc, srcStep, pDst, dstStep, roiSize);
}

} // extern "C"

// ---- kernels: chroma planes 1 and 2 ------------------------------------------------

// 4:2:0 (n rows of width/2) to 4:1:1 (2n rows of width/4): odd columns
// dropped, odd rows the truncating mean of their neighbours above and below;
// the last source row is repeated.
void ownYCbCr420To411_8u_P3R(const Kel8u* const src[3], const int srcStep[3], Kel8u* const dst[3],
                             const int dstStep[3], int width, int height)
{
    const int rows = height / 2, samples = width / 4;
    for (int p = 1; p < 3; ++p)
        for (int j = 0; j < rows; ++j) {
            const Kel8u* s = rowAt(src[p], srcStep[p], j);
            const Kel8u* below = j + 1 < rows ? rowAt(src[p], srcStep[p], j + 1) : s;
            Kel8u* even = rowAt(dst[p], dstStep[p], 2 * j);
            Kel8u* odd = rowAt(dst[p], dstStep[p], 2 * j + 1);
            for (int k = 0; k < samples; ++k) {
                even[k] = s[2 * k];
                odd[k] = static_cast<Kel8u>((s[2 * k] + below[2 * k]) >> 1);
            }
        }
}

// 4:1:1 (width/4 per row) to 4:2:0: even source rows only, odd columns the
// truncating mean of their neighbours left and right; the last is repeated.
void ownYCbCr411To420_8u_P3R(const Kel8u* const src[3], const int srcStep[3], Kel8u* const dst[3],
                             const int dstStep[3], int width, int height)
{
    const int rows = height / 2, samples = width / 4;
    for (int p = 1; p < 3; ++p)
        for (int j = 0; j < rows; ++j) {
            const Kel8u* s = rowAt(src[p], srcStep[p], 2 * j);
            Kel8u* d = rowAt(dst[p], dstStep[p], j);
            for (int k = 0; k < samples; ++k) {
                const int right = k + 1 < samples ? s[k + 1] : s[k];
                d[2 * k] = s[k];
                d[2 * k + 1] = static_cast<Kel8u>((s[k] + right) >> 1);
            }
        }
}

// 4:2:0 to 16:2:0: every other sample of every other row.
void ownYCbCr420To1620_8u_P3R(const Kel8u* const src[3], const int srcStep[3], Kel8u* const dst[3],
                              const int dstStep[3], int width, int height)
{
    const int rows = height / 4, samples = width / 4;
    for (int p = 1; p < 3; ++p)
        for (int j = 0; j < rows; ++j) {
            const Kel8u* s = rowAt(src[p], srcStep[p], 2 * j);
            Kel8u* d = rowAt(dst[p], dstStep[p], j);
            for (int k = 0; k < samples; ++k) d[k] = s[2 * k];
        }
}

// 16:2:0 to 4:2:0, each sample a 2 x 2 cell.  Inside the plane Cb rounds its
// means half up and Cr truncates; on the last column or row the missing
// neighbour is the sample itself, and those means truncate in both.
void ownYCbCr1620To420_8u_P3R(const Kel8u* const src[3], const int srcStep[3], Kel8u* const dst[3],
                              const int dstStep[3], int width, int height)
{
    const int rows = height / 4, samples = width / 4;
    for (int p = 1; p < 3; ++p) {
        const int half = p == 1 ? 1 : 0;     // +1 before >> 1 in Cb's inner cells
        const int quarter = p == 1 ? 2 : 0;  // +2 before >> 2
        for (int j = 0; j < rows; ++j) {
            const bool lastRow = j + 1 == rows;
            const Kel8u* s = rowAt(src[p], srcStep[p], j);
            const Kel8u* next = lastRow ? s : rowAt(src[p], srcStep[p], j + 1);
            Kel8u* top = rowAt(dst[p], dstStep[p], 2 * j);
            Kel8u* bottom = rowAt(dst[p], dstStep[p], 2 * j + 1);
            for (int k = 0; k < samples; ++k) {
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
        }
    }
}

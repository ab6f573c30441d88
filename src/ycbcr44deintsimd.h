// Whole-vector row kernels of the filtered 4:2:0 family (ycbcr44deint.cpp), beside the scalar
// kernels there, which stay the reference and finish every row the vectors leave.
#pragma once

#include "kelcc.h"

namespace kel::simddeint {

// Every kernel works on whole vectors from the start of the row and returns
// how far it came (pixels, or chroma samples); the scalar kernel finishes the
// row from there.  Rounding terms are the family's own: 0 or 4 for luma, 0 or
// 2 for chroma.
//  lumaRow    dst[x] = min((above[x] + 2 row[x] + below[x] + round) >> 2, 255)
//  chromaRow  Cb, Cr pairs of two rows to two planes:
//             min((first[j] + second[j] + round) >> 1, 255), j = 2k to Cb, 2k + 1 to Cr
//  yuy2Rows   two YUY2 rows (upper over above, lower; lower over upper, below)
//             sharing the chroma of chromaRow left as Cb, Cr pairs; returns
//             pixels, a multiple of 2
//  interpolatedRow  clamp((9 (upper + lower) - above - below + 8) >> 4)
//  copiedRow  dst[k] = src[k]
//  splitPairs  Cb, Cr pairs to two planes: cb[k] = src[2k], cr[k] = src[2k + 1]
using LumaRowKernel = int (*)(const Kel8u* above, const Kel8u* row, const Kel8u* below, int round, Kel8u* dst,
                              int width);
using ChromaRowKernel = int (*)(const Kel8u* first, const Kel8u* second, int round, Kel8u* dstCb, Kel8u* dstCr,
                                int samples);
using YUY2RowsKernel = int (*)(const Kel8u* above, const Kel8u* upper, const Kel8u* lower, const Kel8u* below,
                               int upperRound, int lowerRound, const Kel8u* chromaFirst, const Kel8u* chromaSecond,
                               int chromaRound, Kel8u* dstUpper, Kel8u* dstLower, int width);
using InterpolatedRowKernel = int (*)(const Kel8u* above, const Kel8u* upper, const Kel8u* lower, const Kel8u* below,
                                      Kel8u* dst, int samples);
using RowCopyKernel = int (*)(const Kel8u* src, Kel8u* dst, int samples);
using SplitPairsKernel = int (*)(const Kel8u* src, Kel8u* cb, Kel8u* cr, int samples);

struct Kernels {
    LumaRowKernel lumaRow;
    ChromaRowKernel chromaRow;
    YUY2RowsKernel yuy2Rows;
    InterpolatedRowKernel interpolatedRow;
    RowCopyKernel copiedRow;
    SplitPairsKernel splitPairs;
};

// The kernels of the fastest target this processor runs, chosen once per
// call; null in a build without SIMD (or while held for a test), where the
// scalar kernels do it all.
const Kernels* chooseKernels();

// For the internal tests: while held, chooseKernels() answers null, so that
// the public functions give the scalar kernels' bytes to compare against.
void holdScalarForTest(bool hold);

} // namespace kel::simddeint

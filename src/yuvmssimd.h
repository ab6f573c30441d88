// Whole-vector row kernels of the repacking family (yuvms.cpp, yuv420to411and1620.cpp), beside the
// scalar kernels there, which stay the reference and finish every row the vectors leave.
#pragma once

#include "kelcc.h"

namespace kel::simdrepack {

// How a destination chroma row takes its samples from the source row of the
// same component: D[k] = S[k], S[2k], S[2k + 1], S[k / 2], or alternately
// from two source rows (D[2k] = S[k], D[2k + 1] = Next[k]).
enum Columns : int { kSameColumns, kEvenColumns, kOddColumns, kDoubledColumns, kUnstackedRows, kColumnRules };

// The chroma of a plane side: a plane a component, or Cb, Cr pairs in one plane.
enum Chroma : int { kChromaPlanes, kChromaPairs, kChromaForms };

// Pixel pairs, four bytes each: Y0 Cb Y1 Cr, Cb Y0 Cr Y1, Y0 Cr Y1 Cb.
enum PairOrder : int { kYCbCrPairs, kCbYCrPairs, kYCrCbPairs, kPairOrders };

// What a row of pixel pairs gives besides its luma: its chroma to planes or
// to a plane of Cb, Cr pairs, every other pair's chroma to planes or to a
// plane of pairs, or none.
enum PairChroma : int {
    kPairChromaToPlanes,
    kPairChromaToPairs,
    kEvenPairChromaToPlanes,
    kEvenPairChromaToPairs,
    kLumaOnly,
    kPairChromas
};

// The source row(s) of one destination chroma row, both components.  A side
// of Cb, Cr pairs gives its row in `cb` (`cr` is then one byte on); `next` is
// the second source row of unstacking.
struct ChromaRowSource {
    const Kel8u* cb;
    const Kel8u* cr;
    const Kel8u* nextCb;
    const Kel8u* nextCr;
};

// Every kernel works on whole vectors from the start of the row and returns
// how far it came: destination chroma samples, or pixels of a pixel-pair row
// (a multiple of 4).  The scalar kernel finishes the row from there.
// A destination of Cb, Cr pairs is given in `cb`.
using ChromaRowKernel = int (*)(ChromaRowSource src, Kel8u* cb, Kel8u* cr, int samples);
// A source chroma row split between two destination rows: its even samples
// to `cb`, `cr`, its odd ones to `oddCb`, `oddCr` (D[k] = S[2k] and S[2k + 1]).
using SplitRowKernel = int (*)(ChromaRowSource src, Kel8u* cb, Kel8u* cr, Kel8u* oddCb, Kel8u* oddCr, int samples);
using PairsToPlanesKernel = int (*)(const Kel8u* pairs, Kel8u* y, Kel8u* cb, Kel8u* cr, int width);
using PlanesToPairsKernel = int (*)(const Kel8u* y, const Kel8u* cb, const Kel8u* cr, Kel8u* pairs, int width);
using PairsToPairsKernel = int (*)(const Kel8u* src, Kel8u* dst, int width);

// The resampling rows of one chroma plane:
//  oddRowsAveraged  even = S[2k], odd = (S[2k] + Below[2k]) >> 1;
//  oddColumnsAveraged  D[2k] = S[k], D[2k + 1] = (S[k] + S[k + 1]) >> 1, for k + 1 < samples only;
//  evenColumns  D[k] = S[2k];
//  cellsRounded / cellsTruncated  the 2 x 2 cells of an inner row (k + 1 < samples only), Cb's
//  means rounding half up, Cr's truncating.
using TwoRowsKernel = int (*)(const Kel8u* s, const Kel8u* below, Kel8u* top, Kel8u* bottom, int samples);
using OneRowKernel = int (*)(const Kel8u* s, Kel8u* d, int samples);

struct Kernels {
    ChromaRowKernel chromaRow[kChromaForms][kChromaForms][kColumnRules];  // [source][destination][rule]
    SplitRowKernel stackedColumns[kChromaForms][kChromaForms];  // [source][destination]
    PairsToPlanesKernel pairsToPlanes[kPairOrders][kPairChromas];
    PlanesToPairsKernel planesToPairs[kChromaForms][2][kPairOrders];  // [source chroma][chroma doubled][order]
    PairsToPairsKernel pairsToPairs[kPairOrders][kPairOrders];          // [source order][destination order]
    TwoRowsKernel oddRowsAveraged;
    OneRowKernel oddColumnsAveraged;
    OneRowKernel evenColumns;
    TwoRowsKernel cellsRounded;
    TwoRowsKernel cellsTruncated;
};

// Asks for the cache lines of a row read soon, where rows are skipped and the
// processor's own prefetching does not follow (a hint only, in any build).
inline void prefetchRow(const Kel8u* row, int bytes)
{
    for (int at = 0; at < bytes; at += 64) __builtin_prefetch(row + at);
}

// The kernels of the fastest target this processor runs, chosen once per
// call; null in a build without SIMD, where the scalar kernels do it all.
const Kernels* chooseKernels();

} // namespace kel::simdrepack

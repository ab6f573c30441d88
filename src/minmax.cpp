// The largest sample of a one-channel float image, found in one pass over
// the rows; a NaN sample is never taken as the maximum.
#include "callframe.h"

using namespace kel;

extern "C" KEL_API KelResult keliMax_32f_C1R(const Kel32f* pSrc, int srcStep, KelImageSize roiSize, Kel32f* pMax)
{
    if (anyNull(pSrc, pMax))       return kelErrNullPointer;
    if (sizeBelow(roiSize, 1, 1))  return kelErrSize;
    // Only a strictly greater sample replaces the maximum: a NaN never does,
    // and a NaN in the first sample stays the result.
    // Rows start at any byte address: samples are read through copies.
    Kel32f largest = loadSample(pSrc);
    forEachRow(roiSize.height, [&](int y) {
        const Kel32f* row = rowAt(pSrc, srcStep, y);
        for (int x = 0; x < roiSize.width; ++x) {
            const Kel32f sample = loadSample(row + x);
            if (sample > largest) largest = sample;
        }
    });
    *pMax = largest;
    return kelOk;
}

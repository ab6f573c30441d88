// Sum and mean of a one-channel float image, in two double-extended
// accumulators split by column parity.
#include <cstdint>

#include "callframe.h"

using namespace kel;

extern "C" {

KEL_API KelResult keliSum_32f_C1R(const Kel32f* pSrc, int srcStep, KelImageSize roiSize, Kel64f* pSum,
                                  int accuracyHint)
{
    (void)accuracyHint;  // accepted for the interface, not read
    if (anyNull(pSrc, pSum))       return kelErrNullPointer;
    if (sizeBelow(roiSize, 1, 1))  return kelErrSize;
    // Even columns feed one accumulator and odd columns the other; both carry
    // across rows unrounded, and the total is rounded once.
    long double even = 0, odd = 0;
    const int pairs = roiSize.width & ~1;
    forEachRow(roiSize.height, [&](int y) {
        const Kel32f* row = rowAt(pSrc, srcStep, y);
        for (int x = 0; x < pairs; x += 2) {
            even += loadSample(row + x);
            odd += loadSample(row + x + 1);
        }
        if (roiSize.width & 1) even += loadSample(row + pairs);
    });
    *pSum = static_cast<Kel64f>(even + odd);
    return kelOk;
}

KEL_API KelResult keliMean_32f_C1R(const Kel32f* pSrc, int srcStep, KelImageSize roiSize, Kel64f* pMean,
                                   int accuracyHint)
{
    if (anyNull(pMean)) return kelErrNullPointer;
    Kel64f sum;
    const KelResult status = keliSum_32f_C1R(pSrc, srcStep, roiSize, &sum, accuracyHint);
    if (status != kelOk) return status;
    const std::int32_t count = static_cast<std::int32_t>(static_cast<std::uint32_t>(roiSize.width) *
                                                          static_cast<std::uint32_t>(roiSize.height));
    *pMean = static_cast<Kel64f>(static_cast<long double>(sum) / count);
    return kelOk;
}

} // extern "C"

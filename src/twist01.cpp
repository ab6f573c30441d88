// Colour twist of float images: the three-channel members, whose sums are
// stored as floats with no clamp, and the four-channel member with its 4 x 4
// matrix and row kernel.
#include "twist.h"

using namespace kel;
using namespace kel::twist;

namespace {

void innerColorTwist_32f_C4R(const Kel32f* src, Kel32f* dst, std::int64_t count, const Kel32f* t);

} // namespace

extern "C" {
KEL_TWIST_MEMBERS(keliColorTwist_32f, Kel32f, nullptr, true)
}

// The matrix is copied before the rows start.  An image whose rows follow
// each other with no gap is one row.
KEL_API KelResult keliColorTwist_32f_C4R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep,
                                         KelImageSize roiSize, const Kel32f* twist)
{
    const KelResult status = testTwist(pSrc, srcStep, pDst, dstStep, roiSize, twist);
    if (status != kelOk) return status;
    Kel32f matrix[16];
    for (int i = 0; i < 16; ++i) matrix[i] = twist[i];
    const std::int64_t rowBytes = static_cast<std::int64_t>(roiSize.width) * 16;
    if (srcStep == rowBytes && dstStep == rowBytes) {
        innerColorTwist_32f_C4R(pSrc, pDst, static_cast<std::int64_t>(roiSize.width) * roiSize.height, matrix);
        return kelOk;
    }
    forEachRow(roiSize.height, [&](int y) {
        innerColorTwist_32f_C4R(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), roiSize.width, matrix);
    });
    return kelOk;
}

namespace {

// Output channel i: ((t[4i] c0 + t[4i + 1] c1) + t[4i + 2] c2) + t[4i + 3] c3,
// in the extended type, all four formed before any is stored.
void innerColorTwist_32f_C4R(const Kel32f* src, Kel32f* dst, std::int64_t count, const Kel32f* t)
{
    for (std::int64_t x = 0; x < count; ++x, src += 4, dst += 4) {
        long double c[4];
        for (int k = 0; k < 4; ++k) c[k] = loadSample(src + k);
        Kel32f out[4];
        for (int i = 0; i < 4; ++i) {
            const Kel32f* row = t + 4 * i;
            out[i] = static_cast<Kel32f>(((static_cast<long double>(row[0]) * c[0] + static_cast<long double>(row[1]) * c[1]) +
                                          static_cast<long double>(row[2]) * c[2]) +
                                         static_cast<long double>(row[3]) * c[3]);
        }
        for (int k = 0; k < 4; ++k) storeSample(dst + k, out[k]);
    }
}

} // namespace

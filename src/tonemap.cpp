// Tone mapping: a float channel to 8 bits by one gain found from the image,
// its maximum brought to 255 or its mean to 127.5.
#include <cstdint>

#include "callframe.h"

using namespace kel;

namespace {

// The smallest normal float: a statistic at or below it leaves no gain to
// speak of, and the image maps to 0.
constexpr Kel32f kSmallestNormal = 1.1754943508222875e-38f;

template <class Clamp>
void myToneMap(const Kel32f* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize size, long double gain,
               const Clamp& clamp);

} // namespace

// ---- public functions -------------------------------------------------------------------------------

// Below 0 gives 0; the maximum itself gives 255, or 254 where the product
// falls just short.
KEL_API KelResult keliToneMapLinear_32f8u_C1R(const Kel32f* pSrc, int srcStep, Kel8u* pDst, int dstStep,
                                              KelImageSize roiSize)
{
    Kel32f maximum = 0.0f;
    const KelResult status = keliMax_32f_C1R(pSrc, srcStep, roiSize, &maximum);
    if (status < 0) return status;
    if (maximum < 0.0f || maximum != maximum) return kelWarnNegativeMax;
    if (maximum <= kSmallestNormal) return keliSet_8u_C1R(0, pDst, dstStep, roiSize);
    if (pDst == nullptr) return kelErrNullPointer;
    myToneMap(pSrc, srcStep, pDst, dstStep, roiSize, 255.0L / maximum,
              [](std::int32_t o) { return o < 0 ? 0 : (o > 255 ? 255 : o); });
    return kelOk;
}

// The gain is 255 / (2 * mean); at or above 255 gives 255, below 1 gives 0.
KEL_API KelResult keliToneMapMean_32f8u_C1R(const Kel32f* pSrc, int srcStep, Kel8u* pDst, int dstStep,
                                            KelImageSize roiSize)
{
    Kel64f mean = 0.0;
    const KelResult status = keliMean_32f_C1R(pSrc, srcStep, roiSize, &mean, 1);
    if (status < 0) return status;
    const long double twice = static_cast<long double>(mean) + mean;
    if (twice < 0.0L || twice != twice) return kelWarnNegativeMax;
    if (twice <= static_cast<long double>(1.1754943508222875e-38)) return keliSet_8u_C1R(0, pDst, dstStep, roiSize);
    if (pDst == nullptr) return kelErrNullPointer;
    myToneMap(pSrc, srcStep, pDst, dstStep, roiSize, 255.0L / twice,
              [](std::int32_t o) { return o >= 255 ? 255 : (o < 1 ? 0 : o); });
    return kelOk;
}

// ---- row layer and kernel ------------------------------------------------------------------------------

namespace {

// o = trunc(s * gain) in the extended type (NaN gives 0, products beyond the
// 32-bit range saturate), then the operation's clamp.  Rows may start at any
// byte address: the floats are read through copies.
template <class Clamp>
void myToneMap(const Kel32f* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize size, long double gain,
               const Clamp& clamp)
{
    forEachRow(size.height, [&](int y) {
        const Kel32f* src = rowAt(pSrc, srcStep, y);
        Kel8u* dst = rowAt(pDst, dstStep, y);
        for (int x = 0; x < size.width; ++x) {
            const long double s = loadSample(src + x);
            dst[x] = static_cast<Kel8u>(clamp(truncate32(s * gain)));
        }
    });
}

} // namespace

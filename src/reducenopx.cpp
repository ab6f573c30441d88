// Bit-depth reduction without dither: each sample to the nearest of L + 1
// evenly spaced levels of 0..1, an exact tie to the lower one.
#include <cstdint>
#include <cstring>

#include "reduceengines.h"

namespace kel::reduce {

namespace {

// One sample: u = s / R in 0..1 (a float source as it is), q = trunc(L u),
// t = q / L, one more 1/L where u lies strictly above the midpoint; then
// trunc(t * top), at most top.  A float below 0 gives 0, NaN gives 0.
template <class T>
inline typename T::Destination noDither(typename T::Source s, long double l, long double step, long double half)
{
    long double u;
    if constexpr (T::kScale == Scale::k32f) u = static_cast<long double>(s);
    else u = T::value(s) / T::range();
    long double t = static_cast<long double>(truncate32(l * u)) * step;
    if (u - t > half) t += step;
    return T::store(clampTo(truncate32(t * static_cast<long double>(T::kTop)), T::kTop));
}

} // namespace

// Rows in order on the calling thread; strides in bytes.  An 8-bit source
// has 256 values: their outcomes are worked out once and looked up.
template <class T>
void ownNo_PX(const typename T::Source* pSrc, int srcStep, typename T::Destination* pDst, int dstStep, int width,
              int height, int L, int code)
{
    using Dst = typename T::Destination;
    const long double l = L, step = 1.0L / l, half = 0.5L * step;
    const int pitch = samplesPerPixel(code), channels = channelsProcessed(code);
    Dst table[256];
    if constexpr (T::kScale == Scale::k8u)
        for (int s = 0; s < 256; ++s) table[s] = noDither<T>(static_cast<Kel8u>(s), l, step, half);
    forEachRow(height, [&](int y) {
        const typename T::Source* src = rowAt(pSrc, srcStep, y);
        Dst* dst = rowAt(pDst, dstStep, y);
        for (int x = 0; x < width; ++x) {
            for (int c = 0; c < channels; ++c) {
                const int at = x * pitch + c;
                if constexpr (T::kScale == Scale::k8u) dst[at] = table[src[at]];
                else storeSample(dst + at, noDither<T>(loadSample(src + at), l, step, half));
            }
        }
    });
}

#define KEL_REDUCE_NO_DITHER(T)                                                                                   \
    template void ownNo_PX<T>(const T::Source*, int, T::Destination*, int, int, int, int, int);
KEL_REDUCE_NO_DITHER(T8u)
KEL_REDUCE_NO_DITHER(T16u8u)
KEL_REDUCE_NO_DITHER(T16s8u)
KEL_REDUCE_NO_DITHER(T16u)
KEL_REDUCE_NO_DITHER(T16s)
KEL_REDUCE_NO_DITHER(T32f8u)
KEL_REDUCE_NO_DITHER(T32f16u)
KEL_REDUCE_NO_DITHER(T32f16s)

} // namespace kel::reduce

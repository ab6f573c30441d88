// The row layers of the ordered dither and of the float-to-16-bit scaling:
// the constants of a call, then the rows shared among threads_omp_of_n_kel
// threads by the static schedule, at every image size.
#include <cstdint>

#include "reduceengines.h"
#include "rowshare.h"

namespace kel::reduce {

namespace {

// The pattern scaled by S before S is rounded to a float, stored as floats.
struct ScaledPattern {
    float at[16];
    explicit ScaledPattern(const Levels& k)
    {
        for (int i = 0; i < 16; ++i) at[i] = static_cast<float>(static_cast<long double>(bayer_thresh[i]) * k.scaleExact);
    }
};

// A row by the vector kernel where every sample of a pixel is processed and
// the processor has one, else by the scalar kernel in doubles.
template <class T, class Thresholds>
void ditherRow(const typename T::Source* src, typename T::Destination* dst, int width, int pitch, int channels,
               const Thresholds& thresholds, const Levels& k, DitherRun<T> kernel)
{
    if (kernel != nullptr && channels == pitch) innerReduceBits_bayer_runs<T>(src, dst, width, pitch, thresholds, k, kernel);
    else innerReduceBits_bayer_fast<T>(src, dst, width, pitch, channels, thresholds, k);
}

template <class T>
void plainRows(const typename T::Source* pSrc, int srcStep, typename T::Destination* pDst, int dstStep, int width,
               int height, int L, int pitch, int channels)
{
    const Levels k = levelsOf<T>(L);
    const ScaledPattern pattern(k);
    if constexpr (T::kScale == Scale::k8u) {
        Outcomes8u outcomes;
        outcomesOfBayer8u(pattern.at, k, outcomes);
        shareRowsAlways(height, rowsApart(dstStep, 1LL * width * pitch), [&](int y) {
            innerReduceBits_bayer_8u_table(pSrc + static_cast<std::ptrdiff_t>(srcStep) * y,
                                           pDst + static_cast<std::ptrdiff_t>(dstStep) * y, width, pitch, channels, y,
                                           outcomes);
        });
    } else {
        const DitherRun<T> kernel = chooseDitherRun<T>();
        shareRowsAlways(height, rowsApart(dstStep, 1LL * width * pitch), [&](int y) {
            ditherRow<T>(pSrc + static_cast<std::ptrdiff_t>(srcStep) * y, pDst + static_cast<std::ptrdiff_t>(dstStep) * y,
                         width, pitch, channels, PlainThresholds{pattern.at, y}, k, kernel);
        });
    }
}

// The value table spans -noise/100 .. noise/100, worked out wide and rounded
// to floats.
template <class T>
KelResult noiseRows(const typename T::Source* pSrc, int srcStep, typename T::Destination* pDst, int dstStep, int width,
                    int height, int L, int noisePercent, int pitch, int channels)
{
    const Levels k = levelsOf<T>(L);
    const float high = static_cast<float>(static_cast<long double>(noisePercent) / 100.0L);
    const DitherRun<T> kernel = chooseDitherRun<T>();
    return withNoiseTables(-high, high, [&](const NoiseTables& noise) {
        shareRowsAlways(height, rowsApart(dstStep, 1LL * width * pitch), [&](int y) {
            ditherRow<T>(pSrc + static_cast<std::ptrdiff_t>(srcStep) * y, pDst + static_cast<std::ptrdiff_t>(dstStep) * y,
                         width, pitch, channels, NoiseThresholds{noise, k.S, y}, k, kernel);
        });
        return kelOk;
    });
}

} // namespace

template <class T>
KelResult ownReduceBits_bayer(const typename T::Source* pSrc, int srcStep, typename T::Destination* pDst, int dstStep,
                              int width, int height, int L, int code)
{
    plainRows<T>(pSrc, srcStep, pDst, dstStep, width, height, L, samplesPerPixel(code), channelsProcessed(code));
    return kelOk;
}

template <class T>
KelResult ownReduceBits_bayer_noise(const typename T::Source* pSrc, int srcStep, typename T::Destination* pDst,
                                    int dstStep, int width, int height, int L, int noisePercent, int code)
{
    return noiseRows<T>(pSrc, srcStep, pDst, dstStep, width, height, L, noisePercent, samplesPerPixel(code),
                        channelsProcessed(code));
}

template <class T>
KelResult ownReduceBits_bayer_c4(const typename T::Source* pSrc, int srcStep, typename T::Destination* pDst, int dstStep,
                                 int width, int height, int L)
{
    plainRows<T>(pSrc, srcStep, pDst, dstStep, width, height, L, 4, 4);
    return kelOk;
}

template <class T>
KelResult ownReduceBits_bayer_noise_c4(const typename T::Source* pSrc, int srcStep, typename T::Destination* pDst,
                                       int dstStep, int width, int height, int L, int noisePercent)
{
    return noiseRows<T>(pSrc, srcStep, pDst, dstStep, width, height, L, noisePercent, 4, 4);
}

#define KEL_REDUCE_BAYER(T)                                                                                        \
    template KelResult ownReduceBits_bayer<T>(const T::Source*, int, T::Destination*, int, int, int, int, int);     \
    template KelResult ownReduceBits_bayer_noise<T>(const T::Source*, int, T::Destination*, int, int, int, int, int, \
                                                    int);                                                          \
    template KelResult ownReduceBits_bayer_c4<T>(const T::Source*, int, T::Destination*, int, int, int, int);       \
    template KelResult ownReduceBits_bayer_noise_c4<T>(const T::Source*, int, T::Destination*, int, int, int, int, int);
KEL_REDUCE_BAYER(T8u)
KEL_REDUCE_BAYER(T16u8u)
KEL_REDUCE_BAYER(T16s8u)
KEL_REDUCE_BAYER(T16u)
KEL_REDUCE_BAYER(T16s)
KEL_REDUCE_BAYER(T32f8u)
KEL_REDUCE_BAYER(T32f16u)
KEL_REDUCE_BAYER(T32f16s)

// ---- scaling ---------------------------------------------------------------------------------------------

namespace {

template <typename Dst>
void scaleRows(const Kel32f* pSrc, int srcStep, Dst* pDst, int dstStep, int width, int height, int code,
               std::uint32_t offset)
{
    const int pitch = samplesPerPixel(code), channels = channelsProcessed(code);
    shareRowsAlways(height, rowsApart(dstStep, 1LL * width * pitch), [&](int y) {
        innerScale_32f16(pSrc + static_cast<std::ptrdiff_t>(srcStep) * y,
                         reinterpret_cast<std::uint16_t*>(pDst + static_cast<std::ptrdiff_t>(dstStep) * y), width,
                         pitch, channels, offset);
    });
}

} // namespace

void ownScale_32f16u(const Kel32f* pSrc, int srcStep, Kel16u* pDst, int dstStep, int width, int height, int code)
{
    scaleRows(pSrc, srcStep, pDst, dstStep, width, height, code, 0);
}

void ownScale_32f16s(const Kel32f* pSrc, int srcStep, Kel16s* pDst, int dstStep, int width, int height, int code)
{
    scaleRows(pSrc, srcStep, pDst, dstStep, width, height, code, 32768);
}

} // namespace kel::reduce

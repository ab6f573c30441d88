// The row kernels of the ordered dither and of the float-to-16-bit scaling,
// and the dither's threshold pattern.
#include <cstdint>

#include "reduceengines.h"

// k / 15, each rounded once to a float.
const float bayer_thresh[16] = {
    0.0f / 15.0f,  8.0f / 15.0f, 2.0f / 15.0f,  10.0f / 15.0f, 12.0f / 15.0f, 4.0f / 15.0f, 14.0f / 15.0f, 6.0f / 15.0f,
    3.0f / 15.0f, 11.0f / 15.0f, 1.0f / 15.0f,  9.0f / 15.0f,  15.0f / 15.0f, 7.0f / 15.0f, 13.0f / 15.0f, 5.0f / 15.0f,
};

namespace kel::reduce {

namespace {

// One sample against its pixel's threshold: q = trunc(v I + 9e-6), the
// remainder r = v - q S; strictly above the threshold the sample takes the
// level above.  Everything in the extended type; S and I as stored floats.
template <class T>
inline typename T::Destination ditherSample(typename T::Source s, long double threshold, const Levels& k)
{
    const long double v = T::value(s), S = k.S;
    const std::int32_t q = levelIndex(v, k);
    const long double base = static_cast<long double>(q) * S;
    if (v - base > threshold) return levelOutput<T>(base + S, nextIndex(q), k);
    return levelOutput<T>(base, q, k);
}

} // namespace

template <class T, class Thresholds>
void innerReduceBits_bayer(const typename T::Source* src, typename T::Destination* dst, int width, int pitch,
                           int channels, const Thresholds& thresholds, const Levels& k)
{
    for (int x = 0; x < width; ++x) {
        const long double threshold = thresholds.at(x);
        for (int c = 0; c < channels; ++c) dst[x * pitch + c] = ditherSample<T>(src[x * pitch + c], threshold, k);
    }
}

template <class T, class Thresholds>
void innerReduceBits_bayer_fast(const typename T::Source* src, typename T::Destination* dst, int width, int pitch,
                                int channels, const Thresholds& thresholds, const Levels& k)
{
    const FastLevels fast(k);
    for (int x = 0; x < width; ++x) {
        double threshold, guard;
        thresholds.fast(x, threshold, guard);
        for (int c = 0; c < channels; ++c) {
            const typename T::Source s = src[x * pitch + c];
            if (!ditherSampleFast<T>(T::valueFast(s), threshold, guard, fast, dst[x * pitch + c]))
                dst[x * pitch + c] = ditherSample<T>(s, thresholds.at(x), k);
        }
    }
}

template <class T, class Thresholds>
void innerReduceBits_bayer_runs(const typename T::Source* src, typename T::Destination* dst, int width, int pitch,
                                const Thresholds& thresholds, const Levels& k, DitherRun<T> kernel)
{
    constexpr int kRunPixels = 256, kRunSamples = 4 * kRunPixels + kMaxRunLanes;
    const FastLevels fast(k);
    double threshold[kRunSamples], guard[kRunSamples];
    int refused[kRunSamples];
    for (int x0 = 0; x0 < width; x0 += kRunPixels) {
        const int pixels = width - x0 < kRunPixels ? width - x0 : kRunPixels, n = pixels * pitch;
        // A plain pattern repeats every 4 pixels, so every run of a row has the
        // first run's thresholds: spread once, but for the padding of the last.
        const bool spread = !Thresholds::kRepeatsEvery4 || x0 == 0;
        for (int p = 0; spread && p < pixels; ++p) {
            thresholds.fast(x0 + p, threshold[p * pitch], guard[p * pitch]);
            for (int c = 1; c < pitch; ++c) {
                threshold[p * pitch + c] = threshold[p * pitch];
                guard[p * pitch + c] = guard[p * pitch];
            }
        }
        for (int i = n; i < n + kMaxRunLanes; ++i) {  // lanes past the run: never refused
            threshold[i] = 0.5;
            guard[i] = -1.0;
        }
        const typename T::Source* in = src + static_cast<std::ptrdiff_t>(x0) * pitch;
        typename T::Destination* out = dst + static_cast<std::ptrdiff_t>(x0) * pitch;
        const int count = kernel(in, out, n, threshold, guard, fast, refused);
        for (int j = 0; j < count; ++j) {
            const int end = refused[j] + kMaxRunLanes < n ? refused[j] + kMaxRunLanes : n;
            for (int i = refused[j]; i < end; ++i) out[i] = ditherSample<T>(in[i], thresholds.at(x0 + i / pitch), k);
        }
    }
}

void outcomesOfBayer8u(const float pattern[16], const Levels& k, Outcomes8u& outcomes)
{
    const FastLevels fast(k);
    for (int cell = 0; cell < 16; ++cell) {
        for (int s = 0; s < 256; ++s) {
            Kel8u& out = outcomes.of[cell][s];
            if (!ditherSampleFast<T8u>(s, pattern[cell], -1.0, fast, out))
                out = ditherSample<T8u>(static_cast<Kel8u>(s), pattern[cell], k);
        }
    }
}

namespace {

// The table look-ups of a row, four pixels (one pattern row) a step.
template <int Pitch, int Channels>
void lookUpRow(const Kel8u* src, Kel8u* dst, int width, const Kel8u (*row)[256])
{
    int x = 0;
    for (; x + 4 <= width; x += 4, src += 4 * Pitch, dst += 4 * Pitch) {
        for (int p = 0; p < 4; ++p)
            for (int c = 0; c < Channels; ++c) dst[p * Pitch + c] = row[p][src[p * Pitch + c]];
    }
    for (int p = 0; x < width; ++x, ++p)
        for (int c = 0; c < Channels; ++c) dst[p * Pitch + c] = row[p][src[p * Pitch + c]];
}

} // namespace

void innerReduceBits_bayer_8u_table(const Kel8u* src, Kel8u* dst, int width, int pitch, int channels, int y,
                                    const Outcomes8u& outcomes)
{
    const Kel8u(*row)[256] = outcomes.of + 4 * (y & 3);
    if (pitch == 1) lookUpRow<1, 1>(src, dst, width, row);
    else if (pitch == 3) lookUpRow<3, 3>(src, dst, width, row);
    else if (channels == 3) lookUpRow<4, 3>(src, dst, width, row);
    else lookUpRow<4, 4>(src, dst, width, row);
}

#define KEL_REDUCE_BAYER_ROWS_OF(T, Th)                                                                           \
    template void innerReduceBits_bayer<T, Th>(const T::Source*, T::Destination*, int, int, int, const Th&,        \
                                               const Levels&);                                                   \
    template void innerReduceBits_bayer_fast<T, Th>(const T::Source*, T::Destination*, int, int, int, const Th&,   \
                                                    const Levels&);                                              \
    template void innerReduceBits_bayer_runs<T, Th>(const T::Source*, T::Destination*, int, int, const Th&,        \
                                                    const Levels&, DitherRun<T>);
#define KEL_REDUCE_BAYER_ROWS(T)                \
    KEL_REDUCE_BAYER_ROWS_OF(T, PlainThresholds) \
    KEL_REDUCE_BAYER_ROWS_OF(T, NoiseThresholds)
KEL_REDUCE_BAYER_ROWS(T8u)
KEL_REDUCE_BAYER_ROWS(T16u8u)
KEL_REDUCE_BAYER_ROWS(T16s8u)
KEL_REDUCE_BAYER_ROWS(T16u)
KEL_REDUCE_BAYER_ROWS(T16s)
KEL_REDUCE_BAYER_ROWS(T32f8u)
KEL_REDUCE_BAYER_ROWS(T32f16u)
KEL_REDUCE_BAYER_ROWS(T32f16s)

// trunc(x * 65535 + 9e-6) - offset, its low 16 bits stored.
void innerScale_32f16(const Kel32f* src, std::uint16_t* dst, int width, int pitch, int channels, std::uint32_t offset)
{
    for (int x = 0; x < width; ++x) {
        for (int c = 0; c < channels; ++c) {
            const std::int32_t o = truncate32(static_cast<long double>(src[x * pitch + c]) * 65535.0L + kNudge);
            dst[x * pitch + c] = static_cast<std::uint16_t>(static_cast<std::uint32_t>(o) - offset);
        }
    }
}

} // namespace kel::reduce

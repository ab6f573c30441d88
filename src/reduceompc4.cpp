// The engines of error diffusion: the plan that puts channels onto sections
// by the number of threads, one allocation of error rows for all sections,
// and each section's walk of its channels, rows top to bottom.
#include <omp.h>

#include <cstdint>
#include <cstring>

#include "kelcore.h"
#include "reduceengines.h"
#include "rowshare.h"

namespace kel::reduce {

namespace {

// The number of threads a region of threads_omp_of_n_kel threads gets.
int probeThreads()
{
    int threads = 1;
#pragma omp parallel num_threads(threads_omp_of_n_kel)
    {
#pragma omp single
        threads = omp_get_num_threads();
    }
    return threads;
}

// Channels onto sections: with n sections, section s takes channels
// first[s] .. first[s + 1] - 1.  One section is the serial case.
struct Plan {
    int sections;
    int first[5];
};

Plan planOf(int channels, int threads)
{
    if (channels == 1 || threads == 1) return {1, {0, channels}};
    if (channels == 3) return threads == 2 ? Plan{2, {0, 2, 3}} : Plan{3, {0, 1, 2, 3}};
    if (threads == 2) return {2, {0, 2, 4}};
    if (threads == 3) return {3, {0, 2, 3, 4}};
    return {4, {0, 1, 2, 3, 4}};
}

// The error rows of one section.  Floyd-Steinberg: two rows of `width` floats
// with a guard float each side, the previous row first.  Jarvis-Judice-Ninke
// and Stucki: three rows of W floats (width, in the plain form rounded up to
// a multiple of 4) with two guard floats each side, the oldest first.  The
// rows change roles after every image row, and go on doing so from one
// channel of the section to the next.
struct TwoRows {
    static std::int64_t floatsOf(int width, bool) { return 2 * static_cast<std::int64_t>(width) + 4; }
    float* above;
    float* current;
    TwoRows(float* buffer, int width, bool) : above(buffer + 1), current(buffer + width + 3) {}
    void next() { std::swap(above, current); }
};
struct ThreeRows {
    static std::int64_t paddedWidth(int width, bool noise)
    {
        return noise ? width : (static_cast<std::int64_t>(width) + 3) / 4 * 4;
    }
    static std::int64_t floatsOf(int width, bool noise) { return 3 * paddedWidth(width, noise) + 12; }
    float* twoAbove;
    float* above;
    float* current;
    ThreeRows(float* buffer, int width, bool noise)
    {
        const std::int64_t W = paddedWidth(width, noise);
        twoAbove = buffer + 2;
        above = buffer + W + 6;
        current = buffer + 2 * W + 10;
    }
    void next()
    {
        float* oldest = twoAbove;
        twoAbove = above;
        above = current;
        current = oldest;
    }
};

// A buffer of more than 800 floats is cleared by a block fill, a shorter one
// a float at a time.
void clearFloats(float* buffer, std::int64_t count)
{
    if (count > 800) {
        std::memset(buffer, 0, static_cast<std::size_t>(count) * sizeof(float));
    } else {
        for (std::int64_t i = 0; i < count; ++i) buffer[i] = 0.0f;
    }
}

// The call after its constants and noise tables: the probe (only for more
// than one channel; three channels on four or more threads take one fewer),
// the buffers, the sections, the buffers freed.  row(rows, channel, y) runs
// the kernel on one channel of row y.
template <class Rows, class RowFn>
KelResult runSections(int width, int height, int dstStep, int code, bool noise, const RowFn& row)
{
    const int channels = channelsProcessed(code);
    int threads = 1;
    // Sections write different channels of the same rows; where destination
    // rows overlap, one channel's rows would meet another's: one section.
    if (channels > 1 && rowsApart(dstStep, 1LL * width * samplesPerPixel(code))) threads = probeThreads();
    if (channels == 3 && threads >= 4) threads -= 1;
    const std::int64_t perBuffer = Rows::floatsOf(width, noise), total = threads * perBuffer;
    if (total > INT32_MAX) return kelErrNoMemory;
    float* buffers = kelsMalloc_32f(static_cast<int>(total));
    if (buffers == nullptr) return kelErrNoMemory;

    const Plan plan = planOf(channels, threads);
    const auto section = [&](int s) {
        float* buffer = buffers + s * perBuffer;
        clearFloats(buffer, perBuffer);
        Rows rows(buffer, width, noise);
        for (int c = plan.first[s]; c < plan.first[s + 1]; ++c) {
            for (int y = 0; y < height; ++y) {
                row(rows, c, y);
                rows.next();
            }
        }
    };
    if (plan.sections == 1) {
        section(0);
    } else {
#pragma omp parallel num_threads(plan.sections)
        {
#pragma omp for schedule(static)
            for (int s = 0; s < plan.sections; ++s) section(s);
        }
    }
    kelsFree(buffers);
    return kelOk;
}

// The noise forms' value table spans (50 -+ noise) S / 100, worked out wide
// from the float S and rounded to floats.
template <class Run>
KelResult withDiffusionNoise(const Levels& k, int noisePercent, const Run& run)
{
    const long double S = k.S;
    const float low = static_cast<float>((50.0L - noisePercent) * S / 100.0L);
    const float high = static_cast<float>((50.0L + noisePercent) * S / 100.0L);
    return withNoiseTables(low, high, run);
}

template <typename Sample>
Sample* channelRow(Sample* first, int step, int channel, int y)
{
    return first + static_cast<std::ptrdiff_t>(step) * y + channel;
}

} // namespace

template <class T>
KelResult ownReduceBits_fs(const typename T::Source* pSrc, int srcStep, typename T::Destination* pDst, int dstStep,
                           int width, int height, int L, int code)
{
    const Levels k = levelsOf<T>(L);
    const int pitch = samplesPerPixel(code);
    const PlainMidpoint midpoint{static_cast<float>(0.5L * k.S)};
    return runSections<TwoRows>(width, height, dstStep, code, false, [&](TwoRows& rows, int c, int y) {
        innerReduceBits_fs<T>(channelRow(pSrc, srcStep, c, y), channelRow(pDst, dstStep, c, y), rows.above,
                              rows.current, width, pitch, midpoint, k);
    });
}

template <class T>
KelResult ownReduceBits_fs_noise(const typename T::Source* pSrc, int srcStep, typename T::Destination* pDst,
                                 int dstStep, int width, int height, int L, int noisePercent, int code)
{
    const Levels k = levelsOf<T>(L);
    const int pitch = samplesPerPixel(code);
    return withDiffusionNoise(k, noisePercent, [&](const NoiseTables& noise) {
        return runSections<TwoRows>(width, height, dstStep, code, true, [&](TwoRows& rows, int c, int y) {
            innerReduceBits_fs<T>(channelRow(pSrc, srcStep, c, y), channelRow(pDst, dstStep, c, y), rows.above,
                                  rows.current, width, pitch, NoiseMidpoint{noise, y}, k);
        });
    });
}

template <class T>
KelResult ownReduceBits_st_jj(const typename T::Source* pSrc, int srcStep, typename T::Destination* pDst, int dstStep,
                              int width, int height, int L, int code, int kind)
{
    const Levels k = levelsOf<T>(L);
    const int pitch = samplesPerPixel(code);
    const PlainMidpoint midpoint{static_cast<float>(0.5L * k.S)};
    return runSections<ThreeRows>(width, height, dstStep, code, false, [&](ThreeRows& rows, int c, int y) {
        innerReduceBits_st_jj<T>(channelRow(pSrc, srcStep, c, y), channelRow(pDst, dstStep, c, y), rows.twoAbove,
                                 rows.above, rows.current, width, pitch, midpoint, k, kind);
    });
}

template <class T>
KelResult ownReduceBits_st_jj_noise(const typename T::Source* pSrc, int srcStep, typename T::Destination* pDst,
                                    int dstStep, int width, int height, int L, int noisePercent, int code, int kind)
{
    const Levels k = levelsOf<T>(L);
    const int pitch = samplesPerPixel(code);
    return withDiffusionNoise(k, noisePercent, [&](const NoiseTables& noise) {
        return runSections<ThreeRows>(width, height, dstStep, code, true, [&](ThreeRows& rows, int c, int y) {
            innerReduceBits_st_jj<T>(channelRow(pSrc, srcStep, c, y), channelRow(pDst, dstStep, c, y), rows.twoAbove,
                                     rows.above, rows.current, width, pitch, NoiseMidpoint{noise, y}, k, kind);
        });
    });
}

#define KEL_REDUCE_DIFFUSION(T)                                                                                    \
    template KelResult ownReduceBits_fs<T>(const T::Source*, int, T::Destination*, int, int, int, int, int);       \
    template KelResult ownReduceBits_fs_noise<T>(const T::Source*, int, T::Destination*, int, int, int, int, int,  \
                                                 int);                                                           \
    template KelResult ownReduceBits_st_jj<T>(const T::Source*, int, T::Destination*, int, int, int, int, int,     \
                                              int);                                                              \
    template KelResult ownReduceBits_st_jj_noise<T>(const T::Source*, int, T::Destination*, int, int, int, int,    \
                                                    int, int, int);
KEL_REDUCE_DIFFUSION(T8u)
KEL_REDUCE_DIFFUSION(T16u8u)
KEL_REDUCE_DIFFUSION(T16s8u)
KEL_REDUCE_DIFFUSION(T16u)
KEL_REDUCE_DIFFUSION(T16s)
KEL_REDUCE_DIFFUSION(T32f8u)
KEL_REDUCE_DIFFUSION(T32f16u)
KEL_REDUCE_DIFFUSION(T32f16s)

} // namespace kel::reduce

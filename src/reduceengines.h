// The engines of bit-depth reduction, one template a kind over the member's
// sample types (reduce.h), instantiated for the eight of them, and the row
// kernels of the ordered dither.  The engines take L, the number of levels
// less one, and the channel code.
#pragma once

#include <cstdint>

#include "reduce.h"
#include "reducesimd.h"

// The 4 x 4 threshold pattern of the ordered dither, row-major by image row
// and column: k / 15 for k = 0 8 2 10 / 12 4 14 6 / 3 11 1 9 / 15 7 13 5.
extern const float bayer_thresh[16];

namespace kel::reduce {

// No dither: strides in bytes; the calling thread alone.
template <class T>
void ownNo_PX(const typename T::Source* pSrc, int srcStep, typename T::Destination* pDst, int dstStep, int width,
              int height, int L, int code);

// Ordered dither, plain and noise, C1/C3/AC4 (code 1, 3, 4) and C4: strides
// in samples; rows shared among the threads at every size.  The noise forms
// give kelErrNoMemory when their tables can't be made, before any pixel.
template <class T>
KelResult ownReduceBits_bayer(const typename T::Source* pSrc, int srcStep, typename T::Destination* pDst, int dstStep,
                              int width, int height, int L, int code);
template <class T>
KelResult ownReduceBits_bayer_noise(const typename T::Source* pSrc, int srcStep, typename T::Destination* pDst,
                                    int dstStep, int width, int height, int L, int noisePercent, int code);
template <class T>
KelResult ownReduceBits_bayer_c4(const typename T::Source* pSrc, int srcStep, typename T::Destination* pDst, int dstStep,
                                 int width, int height, int L);
template <class T>
KelResult ownReduceBits_bayer_noise_c4(const typename T::Source* pSrc, int srcStep, typename T::Destination* pDst,
                                       int dstStep, int width, int height, int L, int noisePercent);

// Error diffusion, plain (noisePercent 0) and noise forms, every layout:
// strides in samples.  Channels go to sections by the number of threads a
// probe finds, each section with error rows of its own from one allocation;
// kelErrNoMemory when it or the noise tables can't be made, before any pixel.
// kind: 2 Jarvis-Judice-Ninke, 3 Stucki (any other value: the former).
template <class T>
KelResult ownReduceBits_fs(const typename T::Source* pSrc, int srcStep, typename T::Destination* pDst, int dstStep,
                           int width, int height, int L, int code);
template <class T>
KelResult ownReduceBits_fs_noise(const typename T::Source* pSrc, int srcStep, typename T::Destination* pDst,
                                 int dstStep, int width, int height, int L, int noisePercent, int code);
template <class T>
KelResult ownReduceBits_st_jj(const typename T::Source* pSrc, int srcStep, typename T::Destination* pDst, int dstStep,
                              int width, int height, int L, int code, int kind);
template <class T>
KelResult ownReduceBits_st_jj_noise(const typename T::Source* pSrc, int srcStep, typename T::Destination* pDst,
                                    int dstStep, int width, int height, int L, int noisePercent, int code, int kind);

// Float images to 16 bits with no quantising: trunc(x * 65535 + 9e-6), less
// 32768 for the signed form, no clamp (the low 16 bits are kept); strides in
// samples; rows shared among the threads.
void ownScale_32f16u(const Kel32f* pSrc, int srcStep, Kel16u* pDst, int dstStep, int width, int height, int code);
void ownScale_32f16s(const Kel32f* pSrc, int srcStep, Kel16s* pDst, int dstStep, int width, int height, int code);

// ---- row kernels of the ordered dither (reducepx.cpp) ---------------------------------------------------

// One pixel's threshold a column, from the call's scaled pattern (plain) or
// from the pattern and the noise tables (noise); x and y count from the
// region's first pixel.
// `fast` gives the threshold in doubles with the guard ditherSampleFast takes.
struct PlainThresholds {
    static constexpr bool kRepeatsEvery4 = true;
    const float* pattern;  // 16 floats, scaled by S
    int y;
    long double at(int x) const { return pattern[(y & 3) * 4 + (x & 3)]; }
    void fast(int x, double& threshold, double& guard) const
    {
        threshold = pattern[(y & 3) * 4 + (x & 3)];
        guard = -1.0;
    }
};
struct NoiseThresholds {
    static constexpr bool kRepeatsEvery4 = false;
    NoiseTables noise;
    float S;
    int y;
    long double at(int x) const
    {
        return (static_cast<long double>(bayer_thresh[(y & 3) * 4 + (x & 3)]) + noise.at(x, y)) *
               static_cast<long double>(S);
    }
    void fast(int x, double& threshold, double& guard) const
    {
        threshold = (static_cast<double>(bayer_thresh[(y & 3) * 4 + (x & 3)]) + noise.at(x, y)) * static_cast<double>(S);
        guard = noiseGuard(threshold);
    }
};

// `channels` of every pixel, `pitch` samples a pixel apart: the reference,
// every sample in the extended type.
template <class T, class Thresholds>
void innerReduceBits_bayer(const typename T::Source* src, typename T::Destination* dst, int width, int pitch,
                           int channels, const Thresholds& thresholds, const Levels& k);

// The same row in doubles, a refused sample in the extended type.
template <class T, class Thresholds>
void innerReduceBits_bayer_fast(const typename T::Source* src, typename T::Destination* dst, int width, int pitch,
                                int channels, const Thresholds& thresholds, const Levels& k);

// The same row, every sample of every pixel processed (C1, C3, C4), by a
// vector kernel a run of pixels at a time: the thresholds and guards of a run
// spread over its samples, then each refused vector of samples written again
// in the extended type.
template <class T, class Thresholds>
void innerReduceBits_bayer_runs(const typename T::Source* src, typename T::Destination* dst, int width, int pitch,
                                const Thresholds& thresholds, const Levels& k, DitherRun<T> kernel);

// The 8-bit plain form, whose outcome depends only on the sample and its
// pattern cell: the 16 x 256 outcomes worked out once a call by the
// arithmetic above, then one look-up a sample.
struct Outcomes8u {
    Kel8u of[16][256];
};
void outcomesOfBayer8u(const float pattern[16], const Levels& k, Outcomes8u& outcomes);
void innerReduceBits_bayer_8u_table(const Kel8u* src, Kel8u* dst, int width, int pitch, int channels, int y,
                                    const Outcomes8u& outcomes);

// The scaling row kernel: `channels` of every pixel, `pitch` samples apart.
void innerScale_32f16(const Kel32f* src, std::uint16_t* dst, int width, int pitch, int channels, std::uint32_t offset);

// ---- row kernels of error diffusion (reducepxc4.cpp) -----------------------------------------------------

// The rounding midpoint of a sample: 0.5 S rounded to a float (plain), or the
// noise table's sample of the pixel (noise).
struct PlainMidpoint {
    float half;
    long double at(int) const { return half; }
};
struct NoiseMidpoint {
    NoiseTables noise;
    int y;
    long double at(int x) const { return noise.at(x, y); }
};

// Floyd-Steinberg: one channel of a row, `pitch` samples a pixel; `above` and
// `current` address column 0 of error rows with one guard float each side.
template <class T, class Midpoint>
void innerReduceBits_fs(const typename T::Source* src, typename T::Destination* dst, const float* above,
                        float* current, int width, int pitch, const Midpoint& midpoint, const Levels& k);

// Jarvis-Judice-Ninke and Stucki: the same with the rows two above and one
// above, each with two guard floats each side.
template <class T, class Midpoint>
void innerReduceBits_st_jj(const typename T::Source* src, typename T::Destination* dst, const float* twoAbove,
                           const float* above, float* current, int width, int pitch, const Midpoint& midpoint,
                           const Levels& k, int kind);

} // namespace kel::reduce

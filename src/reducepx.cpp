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
    if (v - base > threshold) return levelOutput<T>(base + S, q + 1, k);
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

void outcomesOfBayer8u(const float pattern[16], const Levels& k, Outcomes8u& outcomes)
{
    for (int cell = 0; cell < 16; ++cell)
        for (int s = 0; s < 256; ++s) outcomes.of[cell][s] = ditherSample<T8u>(static_cast<Kel8u>(s), pattern[cell], k);
}

void innerReduceBits_bayer_8u_table(const Kel8u* src, Kel8u* dst, int width, int pitch, int channels, int y,
                                    const Outcomes8u& outcomes)
{
    const Kel8u(*row)[256] = outcomes.of + 4 * (y & 3);
    for (int x = 0; x < width; ++x) {
        const Kel8u* cell = row[x & 3];
        for (int c = 0; c < channels; ++c) dst[x * pitch + c] = cell[src[x * pitch + c]];
    }
}

#define KEL_REDUCE_BAYER_ROWS(T)                                                                                   \
    template void innerReduceBits_bayer<T, PlainThresholds>(const T::Source*, T::Destination*, int, int, int,      \
                                                            const PlainThresholds&, const Levels&);                \
    template void innerReduceBits_bayer<T, NoiseThresholds>(const T::Source*, T::Destination*, int, int, int,      \
                                                            const NoiseThresholds&, const Levels&);
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

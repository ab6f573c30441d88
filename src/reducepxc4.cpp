// The row kernels of error diffusion: Floyd-Steinberg, and Jarvis-Judice-Ninke
// and Stucki, which differ from it in the sum of the errors fed to a sample
// and agree in what follows: the clamp, the level, the step up, the error.
#include <cstdint>

#include "reduceengines.h"

namespace kel::reduce {

namespace {

// A sample whose value reaches the top limit or falls below the bottom one is
// set to the top or bottom and passes on no error.  The bottom of a float
// source is 2^-23.  A NaN value (a NaN float source) counts as below the
// bottom, so that it neither reaches the level arithmetic nor spreads.
template <class T>
inline long double bottomLimit()
{
    return T::kScale == Scale::k32f ? 1.1920928955078125e-07L : 0.0L;
}

// v to its level, the step up strictly above the midpoint; returns the
// error v less the level value, rounded to a float.  In the extended type.
template <class T>
inline float quantise(long double v, long double midpoint, const Levels& k, typename T::Destination& out)
{
    if (v >= T::range()) {
        out = T::store(T::kTop);
        return 0.0f;
    }
    if (!(v >= bottomLimit<T>())) {
        out = T::store(0);
        return 0.0f;
    }
    const long double S = k.S;
    std::int32_t q = levelIndex(v, k);
    long double w = static_cast<long double>(q) * S, r = v - w;
    if (r > midpoint) {
        w = w + S;
        r = v - w;
        ++q;
    }
    out = levelOutput<T>(w, q, k);
    return static_cast<float>(r);
}

// The weights of Jarvis-Judice-Ninke (kind 2) and Stucki (kind 3), and the
// reciprocal of their sum as a float: 1/48 is 0.02083333395421505 stored,
// 1/42 is 0.02380952425301075.
struct Weights {
    long double a, b, c;
    long double d;
};
inline Weights weightsOf(int kind)
{
    if (kind == 3) return {2.0L, 4.0L, 8.0L, static_cast<long double>(1.0f / 42.0f)};
    return {3.0L, 5.0L, 7.0L, static_cast<long double>(1.0f / 48.0f)};
}

// The walk the kernels share: left to right, each sample's value its source
// value plus what the errors around it feed it (s + e / 16 and e d + s are
// the same sum), its error stored where the kernel reads it at x + 1.
template <class T, class Midpoint, class Fed>
inline void diffuseRow(const typename T::Source* src, typename T::Destination* dst, float* current, int width,
                       int pitch, const Midpoint& midpoint, const Levels& k, const Fed& fed)
{
    for (int x = 0; x < width; ++x)
        current[x] = quantise<T>(T::value(src[x * pitch]) + fed(x), midpoint.at(x), k, dst[x * pitch]);
}

} // namespace

template <class T, class Midpoint>
void innerReduceBits_fs(const typename T::Source* src, typename T::Destination* dst, const float* above,
                        float* current, int width, int pitch, const Midpoint& midpoint, const Levels& k)
{
    diffuseRow<T>(src, dst, current, width, pitch, midpoint, k, [&](int x) {
        const long double e = ((5.0L * above[x] + 3.0L * above[x + 1]) + above[x - 1]) + 7.0L * current[x - 1];
        return e * 0.0625L;
    });
}

// The twelve errors are summed in one fixed order: the row two above from
// x - 1, the row above from x - 2, then the current row.
template <class T, class Midpoint>
void innerReduceBits_st_jj(const typename T::Source* src, typename T::Destination* dst, const float* twoAbove,
                           const float* above, float* current, int width, int pitch, const Midpoint& midpoint,
                           const Levels& k, int kind)
{
    const Weights m = weightsOf(kind);
    const float* A = twoAbove;
    const float* B = above;
    const float* C = current;
    diffuseRow<T>(src, dst, current, width, pitch, midpoint, k, [&](int x) {
        long double e = m.a * A[x - 1] + A[x - 2];
        e = e + m.b * A[x];
        e = e + m.a * A[x + 1];
        e = e + A[x + 2];
        e = e + m.a * B[x - 2];
        e = e + m.b * B[x - 1];
        e = e + m.c * B[x];
        e = e + m.b * B[x + 1];
        e = e + m.a * B[x + 2];
        e = e + m.b * C[x - 2];
        e = e + m.c * C[x - 1];
        return e * m.d;
    });
}

#define KEL_REDUCE_DIFFUSION_ROWS_OF(T, Mid)                                                                       \
    template void innerReduceBits_fs<T, Mid>(const T::Source*, T::Destination*, const float*, float*, int, int,    \
                                             const Mid&, const Levels&);                                          \
    template void innerReduceBits_st_jj<T, Mid>(const T::Source*, T::Destination*, const float*, const float*,     \
                                                float*, int, int, const Mid&, const Levels&, int);
#define KEL_REDUCE_DIFFUSION_ROWS(T)                \
    KEL_REDUCE_DIFFUSION_ROWS_OF(T, PlainMidpoint) \
    KEL_REDUCE_DIFFUSION_ROWS_OF(T, NoiseMidpoint)
KEL_REDUCE_DIFFUSION_ROWS(T8u)
KEL_REDUCE_DIFFUSION_ROWS(T16u8u)
KEL_REDUCE_DIFFUSION_ROWS(T16s8u)
KEL_REDUCE_DIFFUSION_ROWS(T16u)
KEL_REDUCE_DIFFUSION_ROWS(T16s)
KEL_REDUCE_DIFFUSION_ROWS(T32f8u)
KEL_REDUCE_DIFFUSION_ROWS(T32f16u)
KEL_REDUCE_DIFFUSION_ROWS(T32f16s)

} // namespace kel::reduce

// What the engines of bit-depth reduction share: the sample-type traits, the
// level arithmetic (S, I, F), the conversions to integers, the output of a
// level, the channel codes and the noise tables.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

#include "callframe.h"

namespace kel::reduce {

// ---- conversions --------------------------------------------------------------------------------

// The 64-bit constant added before every truncation of a level computation.
inline constexpr double kNudge = 0.000009;

inline std::int32_t clampTo(std::int32_t v, std::int32_t top)
{
    return v < 0 ? 0 : (v > top ? top : v);
}

// ---- sample types ---------------------------------------------------------------------------------

// The source value fed to the arithmetic, the scale R of the source, and the
// destination's store.  16s samples enter moved up by 32768 and leave moved
// down by it; float sources are expected in 0..1.
enum class Scale { k8u, k16, k32f };

template <typename Src, typename Dst>
struct Types {
    using Source = Src;
    using Destination = Dst;
    static constexpr Scale kScale = std::is_same_v<Src, Kel8u>   ? Scale::k8u
                                    : std::is_same_v<Src, Kel32f> ? Scale::k32f
                                                                  : Scale::k16;
    static constexpr std::int32_t kTop = sizeof(Dst) == 1 ? 255 : 65535;
    static constexpr bool kSignedOut = std::is_same_v<Dst, Kel16s>;

    static long double value(Src s)
    {
        if constexpr (std::is_same_v<Src, Kel16s>) return static_cast<long double>(s) + 32768.0L;
        else return static_cast<long double>(s);
    }
    // The same value as a double (exact: at most 24 significant bits).
    static double valueFast(Src s)
    {
        if constexpr (std::is_same_v<Src, Kel16s>) return static_cast<double>(s) + 32768.0;
        else return static_cast<double>(s);
    }
    static long double range()
    {
        return kScale == Scale::k8u ? 255.0L : kScale == Scale::k16 ? 65535.0L : 1.0L;
    }
    // o, already within 0..kTop, stored (16s: moved down by 32768).
    static Dst store(std::int32_t o)
    {
        if constexpr (kSignedOut) return static_cast<Dst>(o - 32768);
        else return static_cast<Dst>(o);
    }
};

using T8u = Types<Kel8u, Kel8u>;
using T16u8u = Types<Kel16u, Kel8u>;
using T16s8u = Types<Kel16s, Kel8u>;
using T16u = Types<Kel16u, Kel16u>;
using T16s = Types<Kel16s, Kel16s>;
using T32f8u = Types<Kel32f, Kel8u>;
using T32f16u = Types<Kel32f, Kel16u>;
using T32f16s = Types<Kel32f, Kel16s>;

// ---- level arithmetic --------------------------------------------------------------------------------

// L intervals of width S (a 32-bit float), I its inverse (a 32-bit float),
// and for 8-bit sources the 8.8 fixed-point step F.  scaleExact is S before
// its rounding to float, which the ordered dither's pattern is scaled by.
struct Levels {
    std::int32_t L;
    long double scaleExact;
    float S, I;
    std::int32_t F;
};

template <class T>
inline Levels levelsOf(std::int32_t L)
{
    const long double l = L;
    Levels k{L, 0.0L, 0.0f, 0.0f, 0};
    if constexpr (T::kScale == Scale::k8u) {
        k.scaleExact = (65280.0L / l) / 256.0L;
        k.I = static_cast<float>(l / 255.0L);
        k.F = truncate32(65280.0L / l + kNudge);
    } else if constexpr (T::kScale == Scale::k16) {
        k.scaleExact = 65535.0L / l;
        k.I = static_cast<float>(l / 65535.0L);
    } else {
        k.scaleExact = 1.0L / l;
        k.I = static_cast<float>(l);
    }
    k.S = static_cast<float>(k.scaleExact);
    return k;
}

// The level index of a source value: trunc(v * I + 9e-6).
inline std::int32_t levelIndex(long double v, const Levels& k)
{
    return truncate32(v * static_cast<long double>(k.I) + kNudge);
}

// The index of the level above: a saturated index wraps, as 32-bit words do.
inline std::int32_t nextIndex(std::int32_t q)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(q) + 1u);
}

// The destination value of level w (q * S, or one S more after a step up),
// whose final index is `index`, saturated to the destination's range.
template <class T>
inline typename T::Destination levelOutput(long double w, std::int32_t index, const Levels& k)
{
    std::int32_t o;
    if constexpr (T::kScale == Scale::k8u) {
        (void)w;
        o = static_cast<std::int32_t>((static_cast<std::uint32_t>(index) * static_cast<std::uint32_t>(k.F)) >> 8);
    } else if constexpr (T::kScale == Scale::k16) {
        o = truncate32(w + kNudge);
        if constexpr (sizeof(typename T::Destination) == 1) o >>= 8;
    } else {
        o = truncate32(w * static_cast<long double>(T::kTop) + kNudge);
    }
    return T::store(clampTo(o, T::kTop));
}

// ---- the same arithmetic in doubles -------------------------------------------------------------------

// The level arithmetic above in 64-bit doubles gives the same outcome for
// every sample it doesn't refuse; a refused sample takes the extended path.
//  - v * I is exact in both types: v has at most 24 significant bits (an
//    integer below 2^16, or a float) and I is a float.  For a float v the
//    product stays a normal double: |v| >= 2^-149 and 1 <= I <= 255.
//  - y = v * I + 9e-6 is rounded once in each type, within 2^-36 of the exact
//    sum while |y| < 2^17.  An integer between the two roundings would lie
//    within 2^-35 of the double, so trunc agrees unless the double's fraction
//    is within 2^-30 of 0 or 1, which is refused, as is |y| >= 2^17 (so
//    |q| < 2^17; NaN and the infinities are refused here too).
//  - q * S and r = v - q * S are exact in both: q * S has at most 17 + 24
//    bits; v and q * S are multiples of 2^-32 (S >= 1/255 for every type, and
//    for q != 0, |v| >= (1 - 9e-6) / I >= 2^-9), both below 2^17 in size, so
//    r has at most 49 bits.  The level value w, q * S or q * S + S, likewise.
//  - a plain threshold is a float, so r > T is decided exactly (the sign of
//    the rounded difference is the sign of the difference).  A noise threshold
//    (p + n) * S, p and n floats, is rounded twice in each type: the double
//    and the extended value lie within 2^-51.8 |T| of each other, and the
//    outcome is refused when the rounded |r - T| is at most 2^-50 |T|.
//  - the output w + 9e-6 (16-bit sources) or w * 255 or w * 65535 plus 9e-6
//    (float sources; the product has up to 57 bits, exact only in the
//    extended type) lies within 2^-34 of its exact value while below 2^18 in
//    size; trunc is refused as for y.
struct FastLevels {
    double S, I;
    std::int32_t F;
    explicit FastLevels(const Levels& k) : S(k.S), I(k.I), F(k.F) {}
};

// trunc(z) when no rounding of z to 53 bits rather than 64 can change it;
// false when |z| >= limit or z lies within 2^-30 of an integer.
inline bool truncFast(double z, double limit, std::int32_t& out)
{
    if (!(std::fabs(z) < limit)) return false;
    const double whole = std::trunc(z), fraction = std::fabs(z - whole);
    if (fraction < 0x1p-30 || fraction > 1.0 - 0x1p-30) return false;
    out = static_cast<std::int32_t>(whole);
    return true;
}

// levelOutput in doubles; false: refused.
template <class T>
inline bool levelOutputFast(double w, std::int32_t index, const FastLevels& k, typename T::Destination& out)
{
    std::int32_t o;
    if constexpr (T::kScale == Scale::k8u) {
        (void)w;
        o = static_cast<std::int32_t>((static_cast<std::uint32_t>(index) * static_cast<std::uint32_t>(k.F)) >> 8);
    } else if constexpr (T::kScale == Scale::k16) {
        if (!truncFast(w + kNudge, 0x1p18, o)) return false;
        if constexpr (sizeof(typename T::Destination) == 1) o >>= 8;
    } else {
        if (!truncFast(w * static_cast<double>(T::kTop) + kNudge, 0x1p18, o)) return false;
    }
    out = T::store(clampTo(o, T::kTop));
    return true;
}

// One sample against the threshold T in doubles: a step up where r - T > 0.
// `guard` is negative for a plain threshold (exact, never refused) and
// 2^-50 |T| for a noise threshold.  False: refused, `out` unwritten.
template <class T>
inline bool ditherSampleFast(double v, double threshold, double guard, const FastLevels& k,
                             typename T::Destination& out)
{
    std::int32_t q;
    if (!truncFast(v * k.I + kNudge, 0x1p17, q)) return false;
    const double base = static_cast<double>(q) * k.S, d = (v - base) - threshold;
    if (std::fabs(d) <= guard) return false;
    if (d > 0.0) return levelOutputFast<T>(base + k.S, nextIndex(q), k, out);
    return levelOutputFast<T>(base, q, k, out);
}

// The guard of a noise threshold T.
inline double noiseGuard(double threshold)
{
    return 0x1p-50 * std::fabs(threshold);
}

// ---- layouts ------------------------------------------------------------------------------------------

// The channel code of a layout: C1 1, C3 3, AC4 4, C4 5.
inline constexpr int kCodeC1 = 1, kCodeC3 = 3, kCodeAC4 = 4, kCodeC4 = 5;

inline constexpr int samplesPerPixel(int code)
{
    return code == kCodeC4 ? 4 : code;
}
inline constexpr int channelsProcessed(int code)
{
    return code == kCodeAC4 || code == kCodeC4 ? code - 1 : code;
}

// ---- noise -------------------------------------------------------------------------------------------

inline constexpr int kNoiseEntries = 1024;

// The two noise tables of a call, filled from the generator with seed 0.
struct NoiseTables {
    const Kel16s* index;
    const Kel32f* value;
    // The noise sample of the pixel at column x, row y of the region.
    float at(int x, int y) const
    {
        const std::uint32_t i = static_cast<std::uint16_t>(index[x & (kNoiseEntries - 1)]);
        return value[(i + 2u * static_cast<std::uint32_t>(y) + static_cast<std::uint32_t>(x)) & (kNoiseEntries - 1)];
    }
};

// Allocates the value table, then the index table; fills the index table
// from a generator over 0..1024 and the value table from one over low..high,
// both with seed 0; runs body(tables), whose status is the call's; frees the
// tables, then the generators.  A failed allocation, the generators' own
// included, gives kelErrNoMemory before body runs, with everything taken
// before it given back.
template <typename Body>
KelResult withNoiseTables(float low, float high, const Body& body)
{
    Kel32f* value = kelsMalloc_32f(kNoiseEntries);
    if (value == nullptr) return kelErrNoMemory;
    Kel16s* index = kelsMalloc_16s(kNoiseEntries);
    KelRandUniformState_16s* indexState = nullptr;
    KelRandUniformState_32f* valueState = nullptr;
    KelResult status = kelErrNoMemory;
    if (index != nullptr && kelsRandUniformInitAlloc_16s(&indexState, 0, 1024, 0) == kelOk) {
        kelsRandUniform_16s(index, kNoiseEntries, indexState);
        if (kelsRandUniformInitAlloc_32f(&valueState, low, high, 0) == kelOk) {
            kelsRandUniform_32f(value, kNoiseEntries, valueState);
            status = body(NoiseTables{index, value});
        }
    }
    kelsFree(value);
    kelsFree(index);
    if (indexState != nullptr) kelsRandUniformFree_16s(indexState);
    if (valueState != nullptr) kelsRandUniformFree_32f(valueState);
    return status;
}

} // namespace kel::reduce

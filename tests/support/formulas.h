// The luma-chroma arithmetic in the tests' own terms: decimal coefficients
// scaled and rounded here, levels as floors of exact quotients, so that an
// expectation never repeats a constant of the library.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <random>

namespace kt {

// A decimal coefficient in 16 fractional bits, rounded to nearest.
inline long long fixed(double c) { return std::llround(c * 65536); }

struct Rgb {
    long long r, g, b;
};
// The studio-range weights of R, G, B for Y, Cb and Cr.
inline const long long kLuma[3] = {fixed(0.257), fixed(0.504), fixed(0.098)};
inline const long long kBlue[3] = {fixed(-0.148), fixed(-0.291), fixed(0.439)};
inline const long long kRed[3] = {fixed(0.439), fixed(-0.368), fixed(-0.071)};
inline long long lumaSum(Rgb p) { return kLuma[0] * p.r + kLuma[1] * p.g + kLuma[2] * p.b; }
inline long long blueSum(Rgb p) { return kBlue[0] * p.r + kBlue[1] * p.g + kBlue[2] * p.b; }
inline long long redSum(Rgb p) { return kRed[0] * p.r + kRed[1] * p.g + kRed[2] * p.b; }

// floor(sum / 2^bits + offset): exact in long double, every term is dyadic.
inline int level(long long sum, int bits, long double offset)
{
    return static_cast<int>(std::floor(std::ldexp(static_cast<long double>(sum), -bits) + offset));
}
inline int clampByte(int v) { return v < 0 ? 0 : v > 255 ? 255 : v; }

// True when a sum one more or one less lands on another level: there an
// offset or a coefficient off by one shows in the result.
inline bool onEdge(long long sum, int bits, long double offset)
{
    const long long unit = 1LL << bits, scaled = sum + std::llround(std::ldexp(offset, bits));  // offsets are whole units
    const long long rest = ((scaled % unit) + unit) % unit, at = (scaled - rest) / unit;
    return at >= 0 && at <= 255 && (rest == 0 || rest == unit - 1);
}

// True when moving the sum by up to `reach` either way lands on another level
// inside 0..255: there a coefficient one unit off, times a factor of at most
// `reach`, shows in the result.
inline bool nearEdge(long long sum, int bits, long double offset, long long reach)
{
    const int at = level(sum, bits, offset);
    return at >= 0 && at <= 255 && (level(sum - reach, bits, offset) != at || level(sum + reach, bits, offset) != at);
}

// Runs `check` on `count` random colours for which `edge` holds.
template <typename Edge, typename Check> void onEdgeColours(int count, Edge edge, Check check)
{
    std::mt19937 gen(77);
    for (long tries = 0; count > 0 && tries < 50000000; ++tries) {
        const std::array<int, 3> c{int(gen() & 255), int(gen() & 255), int(gen() & 255)};
        if (edge(c)) { check(c); --count; }
    }
    EXPECT_EQ(0, count) << "too few colours on an edge";
}

constexpr long double kHalf = 0.5L, kEighth = 0.125L, kNone = 0.0L;

// The BT.709 transfer curve on 0..255, rounded to nearest, ties to even.
inline int rec709(int i)
{
    const double t = i / 255.0;
    return static_cast<int>(std::nearbyint(t >= 0.018 ? 255 * (1.099 * std::pow(t, 0.45) - 0.099) : 255 * 4.5 * t));
}

// out = floor((luma Y + crR Cr' + ...) / 2^16); Cb', Cr' centred on `zero`.
struct Set {
    long long luma, crR, cbG, crG, cbB, offR, offG, offB;
    int zero = 128;
};

// The studio-range inverse from decimal coefficients (Y, Cr to R, Cb to G,
// Cr to G, Cb to B), 16 fractional bits rounded, the 16 of black taken out
// and `half` added before the floor.
inline Set studio(std::array<double, 5> c, long long half)
{
    Set s{fixed(c[0]), fixed(c[1]), fixed(c[2]), fixed(c[3]), fixed(c[4]), 0, 0, 0};
    s.offR = s.offG = s.offB = -16 * s.luma + half;
    return s;
}

inline const std::array<double, 5> kDecimal{1.164, 1.596, 0.392, 0.813, 2.017};
inline const Set kT = studio(kDecimal, 0);        // truncates
inline const Set kU = studio(kDecimal, 1 << 15);  // the same, rounded
// The decimals scaled by 65535 and floored, rounded.
inline const Set kR = [] {
    Set s = studio(kDecimal, 1 << 15);
    long long* terms[5] = {&s.luma, &s.crR, &s.cbG, &s.crG, &s.cbB};
    for (int i = 0; i < 5; ++i) *terms[i] = static_cast<long long>(std::floor(kDecimal[i] * 65535));
    s.offR = s.offG = s.offB = -16 * s.luma + (1 << 15);
    return s;
}();

inline std::array<int, 3> toRgb(const Set& s, int y, int cb, int cr)
{
    const long long b = cb - s.zero, r = cr - s.zero;
    return {clampByte(level(s.luma * y + s.crR * r + s.offR, 16, 0)),
            clampByte(level(s.luma * y - s.cbG * b - s.crG * r + s.offG, 16, 0)),
            clampByte(level(s.luma * y + s.cbB * b + s.offB, 16, 0))};
}

// True when one of the set's three sums for Y, Cb, Cr sits on a level's edge.
inline bool setEdge(const Set& s, std::array<int, 3> c)
{
    const long long b = c[1] - s.zero, r = c[2] - s.zero;
    return onEdge(s.luma * c[0] + s.crR * r + s.offR, 16, 0) ||
           onEdge(s.luma * c[0] - s.cbG * b - s.crG * r + s.offG, 16, 0) ||
           onEdge(s.luma * c[0] + s.cbB * b + s.offB, 16, 0);
}

} // namespace kt

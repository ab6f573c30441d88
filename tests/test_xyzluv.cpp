// CIE XYZ and LUV at 8u, 16u, 16s and 32f: every member against a model of
// its kernel written here in the 80-bit type (constants as the floats nearest
// their decimals, the 8-bit matrices as the decimals times 65536 cut toward
// zero, the coded-L table from its rule with cbrt); random pixels, extremes,
// grays, primaries, every 8-bit pixel, both sides of the luminance joins; the
// worked values; 16s as 16u moved by 32768; the fourth element of AC4 pixels;
// steps cut to whole samples (byte steps honoured where the forward float
// LUV walks bytes); argument order; identical bytes for any team size; and
// NaN, infinities and huge values.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "kelcc.h"
#include "kelcore.h"
#include "support/guarded.h"
#include "support/layouts.h"
#include "support/sampletypes.h"

using namespace kt;

namespace {

using kt::Type;
using kt::bytesOf;
using kt::load;
using kt::lowest;
using kt::storeSample;
using kt::top;

using LD = long double;
using Px = std::array<LD, 3>;

// ---- the arithmetic, in this file's terms -------------------------------------------------

// The near-half rounding addend (not 0.5).
constexpr float kC = 0.4999989867210388f;

// RGB to XYZ and back, for D65, as decimals; the float kernels use the 32-bit
// float nearest each decimal, the 8-bit ones the decimal times 65536 cut toward 0.
constexpr double kFwdDecimal[3][3] = {
    {0.412453, 0.35758, 0.180423}, {0.212671, 0.71516, 0.072169}, {0.019334, 0.119193, 0.950227}};
constexpr double kInvDecimal[3][3] = {
    {3.240479, -1.53715, -0.498535}, {-0.969256, 1.875991, 0.041556}, {0.055648, -0.204043, 1.057311}};
constexpr float kFwd[3][3] = {
    {0.412453f, 0.35758f, 0.180423f}, {0.212671f, 0.71516f, 0.072169f}, {0.019334f, 0.119193f, 0.950227f}};
constexpr float kInv[3][3] = {
    {3.240479f, -1.53715f, -0.498535f}, {-0.969256f, 1.875991f, 0.041556f}, {0.055648f, -0.204043f, 1.057311f}};
// The Z weight of blue in its double form, used by the 16u inverse XYZ and the
// integer inverse LUV.
constexpr double kBlueZ = 1.057311;

// White point chromaticity: the forward pair, and the finer pair of the
// integer inverse.
constexpr float kUn = 0.197839f, kVn = 0.468342f;
constexpr float kUn2 = 0.19783941f, kVn2 = 0.4683422f;
constexpr float kY0 = 0.008856f;      // forward: Y / Yn at most this is linear
constexpr float kSlope = 903.3f;      // the linear slope of L
constexpr float kDark = 0.00009f;     // inverse: L below this is black
constexpr float kCubic = 7.9996247f;  // inverse: L from this up is cubic
const double kThird = static_cast<double>(1.0f / 3.0f);
// 8-bit coded U and V: 13 * 100 over the code's span, and the offsets of the
// coded ranges with the half for rounding in them.
constexpr float kU8Scale = 3.6723163f, kV8Scale = 4.961832f;
constexpr float kU8Offset = 97.02543f, kV8Offset = 136.75955f;

long long fix16(double d) { return static_cast<long long>(std::trunc(static_cast<LD>(d) * 65536)); }
const auto kFwd8 = [] {
    std::array<std::array<long long, 3>, 3> m{};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) m[i][j] = fix16(kFwdDecimal[i][j]);
    return m;
}();
const auto kInv8 = [] {
    std::array<std::array<long long, 3>, 3> m{};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) m[i][j] = fix16(kInvDecimal[i][j]);
    return m;
}();

// Coded L of an 8-bit coded luminance, from the CIE rule, in a given precision.
template <typename T> std::array<int, 256> codedL()
{
    std::array<int, 256> t{};
    for (int i = 0; i < 256; ++i) {
        const T q = static_cast<T>(i) / 255;
        const T l = q > static_cast<T>(0.008856L) ? 116 * std::cbrt(q) - 16 : static_cast<T>(903.3L) * q;
        t[i] = static_cast<int>(std::trunc(static_cast<T>(2.55L) * l + static_cast<T>(0.5L)));
    }
    return t;
}
const std::array<int, 256> kCodedL = codedL<LD>();

// A destination sample the model expects: its value, or "free" where the
// result is the implementer's choice within the type's range.
struct Want {
    Px v{};
    std::array<bool, 3> free{};
};

LD clampTo(LD v, LD top) { return v >= top ? top : v < 1 ? 0 : v; }
// An integer result from a sum: cut toward zero and clamped to 0..top; a sum
// beyond the signed 32-bit range (or NaN) leaves the choice to the implementer.
void settle(Want& w, int c, LD sum, LD top)
{
    if (!(sum > -2147483649.0L && sum < 2147483648.0L)) {
        w.free[c] = true;
        return;
    }
    w.v[c] = clampTo(std::trunc(sum), top);
}
// A float result: below 0 gives 0, at or above 1 gives 1, NaN stays NaN.
LD unitClamp(LD v) { return v < 0 ? 0 : v >= 1 ? 1 : v; }
LD toFloat(LD v) { return static_cast<float>(v); }

// ---- XYZ ----

Want rgbToXyz8u(Px p)
{
    Want w;
    for (int i = 0; i < 3; ++i) {
        const long long s = kFwd8[i][0] * static_cast<long long>(p[0]) + kFwd8[i][1] * static_cast<long long>(p[1]) +
                            kFwd8[i][2] * static_cast<long long>(p[2]);
        const long long v = s >> 16;
        w.v[i] = i < 2 ? v : std::clamp(v, 0LL, 255LL);  // Z saturates
    }
    return w;
}

Want xyzToRgb8u(Px p)
{
    Want w;
    for (int i = 0; i < 3; ++i) {
        const long long s = kInv8[i][0] * static_cast<long long>(p[0]) + kInv8[i][1] * static_cast<long long>(p[1]) +
                            kInv8[i][2] * static_cast<long long>(p[2]);
        const long long v = s >> 16;  // arithmetic
        w.v[i] = v >= 255 ? 255 : v < 1 ? 0 : v;
    }
    return w;
}

// In the 0..65535 scale (16s moved there already).
Want rgbToXyz16(Px p)
{
    Want w;
    for (int i = 0; i < 3; ++i) {
        const LD s = ((LD(kFwd[i][0]) * p[0] + kC) + LD(kFwd[i][1]) * p[1]) + LD(kFwd[i][2]) * p[2];
        w.v[i] = std::trunc(s);
    }
    w.v[2] = clampTo(w.v[2], 65535);
    return w;
}

// The blue sum of 16s takes the float form of the Z weight and the addend
// after its first term.
Want xyzToRgb16(Px p, bool signedForm)
{
    const LD X = p[0], Y = p[1], Z = p[2];
    const LD r = ((LD(3.240479f) * X + kC) - LD(1.53715f) * Y) - LD(0.498535f) * Z;
    const LD g = ((LD(-0.969256f) * X + kC) + LD(1.875991f) * Y) + LD(0.041556f) * Z;
    const LD b = signedForm ? ((LD(0.055648f) * X + kC) - LD(0.204043f) * Y) + LD(1.057311f) * Z
                            : ((LD(0.055648f) * X - LD(0.204043f) * Y) + LD(double(kC))) + LD(kBlueZ) * Z;
    Want w;
    settle(w, 0, r, 65535);
    settle(w, 1, g, 65535);
    settle(w, 2, b, 65535);
    return w;
}

Want rgbToXyz32f(Px p)
{
    Want w;
    for (int i = 0; i < 3; ++i) w.v[i] = (LD(kFwd[i][0]) * p[0] + LD(kFwd[i][1]) * p[1]) + LD(kFwd[i][2]) * p[2];
    const LD z = w.v[2];
    w.v[2] = z < 0 ? 0 : z >= 1 ? 1 : z;
    for (LD& v : w.v) v = toFloat(v);
    return w;
}

Want xyzToRgb32f(Px p)
{
    const LD X = p[0], Y = p[1], Z = p[2];
    Want w;
    w.v[0] = (LD(3.240479f) * X - LD(1.53715f) * Y) - LD(0.498535f) * Z;
    w.v[1] = (LD(1.875991f) * Y - LD(0.969256f) * X) + LD(0.041556f) * Z;
    w.v[2] = (LD(0.055648f) * X - LD(0.204043f) * Y) + LD(1.057311f) * Z;
    for (LD& v : w.v) v = toFloat(unitClamp(v));
    return w;
}

// ---- LUV ----

// Which value goes to pow on the cubic branch of the 16-bit and float forward
// kernels: the luminance as summed, or as rounded to float with X and Z.
enum class PowOf { Sum, Rounded };

Want rgbToLuv8u(Px p)
{
    const LD R = p[0], G = p[1], B = p[2];
    const LD X = (LD(kFwd[0][0]) * R + LD(kFwd[0][1]) * G) + LD(kFwd[0][2]) * B;
    const LD Y = (LD(kFwd[1][0]) * R + LD(kFwd[1][1]) * G) + LD(kFwd[1][2]) * B;
    const LD Z = (LD(kFwd[2][0]) * R + LD(kFwd[2][1]) * G) + LD(kFwd[2][2]) * B;
    const int y8 = static_cast<int>(std::trunc(kC + Y));
    const LD L8 = kCodedL[y8];
    LD u = 0, v = 0;
    if (y8 != 0) {
        const LD xn = X / 255, yn = Y / 255, zn = Z / 255;
        const LD d = (3 * zn + xn) + 15 * yn;
        u = 4 * xn / d;
        v = 9 * yn / d;
    }
    Want w;
    w.v[0] = L8;
    w.v[1] = std::trunc((LD(kU8Scale) * L8) * (u - kUn) + LD(kU8Offset));
    w.v[2] = std::trunc((L8 * LD(kV8Scale)) * (v - kVn) + LD(kV8Offset));
    return w;
}

// In the 0..65535 scale.
Want rgbToLuv16(Px p, PowOf powOf)
{
    constexpr LD K = 65535;
    const LD R = p[0], G = p[1], B = p[2];
    LD X = (LD(kFwd[0][0]) * R + LD(kFwd[0][1]) * G) + LD(kFwd[0][2]) * B;
    LD Y = (LD(kFwd[1][0]) * R + LD(kFwd[1][1]) * G) + LD(kFwd[1][2]) * B;
    LD Z = (LD(kFwd[2][1]) * G + LD(kFwd[2][0]) * R) + LD(kFwd[2][2]) * B;
    const LD y = Y / K;
    LD L;
    if (y <= kY0) {
        L = (kSlope * Y) / K;
    } else {
        X = toFloat(X);
        Y = toFloat(Y);
        Z = toFloat(Z);
        const LD base = powOf == PowOf::Sum ? y : Y / K;
        L = 116 * LD(std::pow(static_cast<double>(base), kThird)) - 16;
    }
    LD u = 0, v = 0;
    if (Y != 0) {
        const LD d = (15 * Y + X) + 3 * Z;
        u = 4 * X / d;
        v = 9 * Y / d;
    }
    const LD t = L * 13, U = t * (u - kUn), V = t * (v - kVn);
    Want w;
    w.v[0] = std::trunc((L * K) / 100 + kC);
    w.v[1] = std::trunc(((U + 134) * K) / 354 + kC);
    w.v[2] = std::trunc(((V + 140) * K) / 262 + kC);
    return w;
}

Want rgbToLuv32f(Px p, PowOf powOf)
{
    const LD R = p[0], G = p[1], B = p[2];
    LD X = (LD(kFwd[0][0]) * R + LD(kFwd[0][1]) * G) + LD(kFwd[0][2]) * B;
    LD Y = LD(kFwd[1][2]) * B + (LD(kFwd[1][0]) * R + LD(kFwd[1][1]) * G);
    LD Z = (LD(kFwd[2][1]) * G + LD(kFwd[2][0]) * R) + LD(kFwd[2][2]) * B;
    LD L, u = 0, v = 0;
    bool zero = false;
    if (Y <= kY0) {
        L = kSlope * Y;
        zero = Y == 0;
    } else {
        const LD sum = Y;
        X = toFloat(X);
        Y = toFloat(Y);
        Z = toFloat(Z);
        L = 116 * LD(std::pow(static_cast<double>(powOf == PowOf::Sum ? sum : Y), kThird)) - 16;
    }
    if (!zero) {
        const LD d = 3 * Z + (15 * Y + X);
        u = 4 * X / d;
        v = 9 * Y / d;
    }
    Want w;
    w.v[0] = toFloat(L);
    w.v[1] = toFloat((L * 13) * (u - kUn));
    w.v[2] = toFloat((L * 13) * (v - kVn));
    return w;
}

// Codes in the 0..K scale; the results too.
Want luvToRgbInt(Px p, LD K)
{
    Want w;
    const LD L = (p[0] * 100) / K;
    if (L < kDark) return w;  // black
    const LD U = (p[1] * 354) / K - 134, V = (p[2] * 262) / K - 140;
    const LD t = (16 + L) / 116;
    const LD y = L >= kCubic ? t * (t * t) : L / kSlope;
    const LD Y = y * K;
    const LD q = L * 13;
    const LD A = Y / (V / q + kVn2);
    const LD X = (LD(2.25) * A) * (U / q + kUn2);
    const LD Z = (A * 3 - 5 * Y) - X / 3;
    settle(w, 0, (LD(3.240479f) * X + (kC - LD(1.53715f) * Y)) - LD(0.498535f) * Z, K);
    settle(w, 1, (LD(-0.969256f) * X + (LD(1.875991f) * Y + kC)) + LD(0.041556f) * Z, K);
    settle(w, 2, LD(kBlueZ) * Z + ((LD(0.055648f) * X - LD(0.204043f) * Y) + LD(double(kC))), K);
    return w;
}

Want luvToRgb32f(Px p)
{
    Want w;
    const LD L = p[0], U = p[1], V = p[2];
    if (L < kDark) return w;
    const LD t = (16 + L) / 116;
    const LD Y = L >= kCubic ? t * (t * t) : L / kSlope;
    const LD q = L * 13;
    const LD A = Y / (V / q + kVn);
    const LD X = (LD(2.25) * A) * (U / q + kUn);
    const LD Z = (A * 3 - 5 * Y) - X / 3;
    w.v[0] = (LD(3.240479f) * X - LD(1.53715f) * Y) - LD(0.498535f) * Z;
    w.v[1] = LD(0.041556f) * Z + (LD(-0.969256f) * X + LD(1.875991f) * Y);
    w.v[2] = (LD(0.055648f) * X - LD(0.204043f) * Y) + LD(1.057311f) * Z;
    for (LD& v : w.v) v = toFloat(unitClamp(v));
    return w;
}

// ---- members --------------------------------------------------------------------------------

enum class Stem { ToXYZ, FromXYZ, ToLUV, FromLUV };

struct Member {
    const char* name;
    Stem stem;
    Type type;
    int pitch;
    ErasedCall call;
};
void PrintTo(const Member& m, std::ostream* os) { *os << m.name; }

#define PAIR(F, T, TYPE, STEM)                                                    \
    {#F "_C3R", Stem::STEM, Type::TYPE, 3, erase<const T*, T*, F##_C3R>},         \
    {#F "_AC4R", Stem::STEM, Type::TYPE, 4, erase<const T*, T*, F##_AC4R>}
#define STEM4(F, STEM)                                                                         \
    PAIR(F##_8u, Kel8u, U8, STEM), PAIR(F##_16u, Kel16u, U16, STEM), PAIR(F##_16s, Kel16s, S16, STEM), \
    PAIR(F##_32f, Kel32f, F32, STEM)

const Member kMembers[] = {
    STEM4(keliRGBToXYZ, ToXYZ), STEM4(keliXYZToRGB, FromXYZ), STEM4(keliRGBToLUV, ToLUV), STEM4(keliLUVToRGB, FromLUV),
};

std::vector<Member> select(bool (*keep)(const Member&))
{
    std::vector<Member> out;
    for (const Member& m : kMembers)
        if (keep(m)) out.push_back(m);
    return out;
}

LD highest(Type t) { return t == Type::U8 ? 255 : t == Type::U16 ? 65535 : t == Type::S16 ? 32767 : 1; }
bool walksBytes(const Member& m) { return m.stem == Stem::ToLUV && m.type == Type::F32; }

// What the member makes of one pixel, with the cubic branch's pow taking
// `powOf` where that matters.
Want model(const Member& m, Px in, PowOf powOf = PowOf::Sum)
{
    const bool s16 = m.type == Type::S16;
    if (s16)
        for (LD& v : in) v += 32768;
    Want w;
    switch (m.stem) {
    case Stem::ToXYZ:
        w = m.type == Type::U8 ? rgbToXyz8u(in) : m.type == Type::F32 ? rgbToXyz32f(in) : rgbToXyz16(in);
        break;
    case Stem::FromXYZ:
        w = m.type == Type::U8 ? xyzToRgb8u(in) : m.type == Type::F32 ? xyzToRgb32f(in) : xyzToRgb16(in, s16);
        break;
    case Stem::ToLUV:
        w = m.type == Type::U8 ? rgbToLuv8u(in) : m.type == Type::F32 ? rgbToLuv32f(in, powOf) : rgbToLuv16(in, powOf);
        break;
    case Stem::FromLUV:
        w = m.type == Type::U8 ? luvToRgbInt(in, 255) : m.type == Type::F32 ? luvToRgb32f(in) : luvToRgbInt(in, 65535);
        break;
    }
    if (s16)
        for (LD& v : w.v) v -= 32768;
    return w;
}

// True when `got` is what `w` allows.
bool agrees(Type t, const Want& w, const Px& got)
{
    for (int c = 0; c < 3; ++c) {
        if (w.free[c]) {
            if (got[c] < lowest(t) || got[c] > highest(t)) return false;
        } else if (t == Type::F32 && std::isnan(w.v[c])) {
            if (!std::isnan(got[c])) return false;
        } else if (got[c] != w.v[c]) {
            return false;
        }
    }
    return true;
}

// The one reading of the text where two are possible: the forward LUV of 16
// bits and floats may hand pow the summed or the rounded luminance.
bool matchesModel(const Member& m, const Px& in, const Px& got)
{
    if (agrees(m.type, model(m, in), got)) return true;
    return m.stem == Stem::ToLUV && m.type != Type::U8 && agrees(m.type, model(m, in, PowOf::Rounded), got);
}

std::string show(const Px& p)
{
    std::string s;
    for (int c = 0; c < 3; ++c) s += (c ? ", " : "") + std::to_string(static_cast<double>(p[c]));
    return "(" + s + ")";
}
std::string show(const Want& w)
{
    std::string s;
    for (int c = 0; c < 3; ++c) s += (c ? ", " : "") + (w.free[c] ? std::string("any") : std::to_string(double(w.v[c])));
    return "(" + s + ")";
}

// ---- samples in images -----------------------------------------------------------------------


Image imageFor(const Member& m, int width, int height, Placement placement = Placement::Guarded)
{
    return pixels(width, height, m.pitch, false, bytesOf(m.type), placement);
}
void* sampleAt(Image& image, const Member& m, int x, int y, int c)
{
    return image.row(0, y) + static_cast<std::ptrdiff_t>(x * m.pitch + c) * bytesOf(m.type);
}
Px pixelAt(Image& image, const Member& m, int x, int y)
{
    Px p;
    for (int c = 0; c < 3; ++c) p[c] = load(m.type, sampleAt(image, m, x, y, c));
    return p;
}
void setPixel(Image& image, const Member& m, int x, int y, const Px& p)
{
    for (int c = 0; c < 3; ++c) storeSample(m.type, sampleAt(image, m, x, y, c), p[c]);
}

// Runs the member from `src` into `dst` and checks: status kelOk, the source
// unchanged, guards and row padding of both intact, the fourth element of
// every destination pixel as it was, every pixel as the model says. Returns
// false after the first bad pixel (reported).
bool runAgainstModel(const Member& m, Image& src, Image& dst, int width, int height, const std::string& what = "")
{
    const auto srcBefore = src.rows();
    std::vector<std::array<std::uint8_t, 4>> fourth;
    for (int y = 0; m.pitch == 4 && y < height; ++y)
        for (int x = 0; x < width; ++x) {
            std::array<std::uint8_t, 4> f{};
            std::memcpy(f.data(), sampleAt(dst, m, x, y, 3), bytesOf(m.type));
            fourth.push_back(f);
        }
    EXPECT_EQ(kelOk, m.call(src.arg(), src.step(), dst.arg(), dst.step(), {width, height})) << what;
    EXPECT_EQ(srcBefore, src.rows()) << what;
    EXPECT_TRUE(src.intact() && dst.intact()) << what;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            if (m.pitch == 4 &&
                std::memcmp(fourth[static_cast<std::size_t>(y) * width + x].data(), sampleAt(dst, m, x, y, 3), bytesOf(m.type)) != 0) {
                ADD_FAILURE() << what << " fourth element changed at " << x << ", " << y;
                return false;
            }
            const Px in = pixelAt(src, m, x, y), got = pixelAt(dst, m, x, y);
            if (!matchesModel(m, in, got)) {
                ADD_FAILURE() << what << " pixel " << x << ", " << y << ": " << show(in) << " gave " << show(got)
                              << ", the model says " << show(model(m, in));
                return false;
            }
        }
    return !::testing::Test::HasFailure();
}

// Runs the member on a list of pixels laid out `width` to a row.
bool runPixels(const Member& m, const std::vector<Px>& list, const std::string& what, int width = 37)
{
    if (list.empty()) return true;
    const int w = std::min<int>(width, static_cast<int>(list.size()));
    const int h = static_cast<int>((list.size() + w - 1) / w);
    Image src = imageFor(m, w, h), dst = imageFor(m, w, h);
    src.fill(5);
    dst.fill(6);
    for (std::size_t i = 0; i < static_cast<std::size_t>(w) * h; ++i)
        setPixel(src, m, static_cast<int>(i % w), static_cast<int>(i / w), list[std::min(i, list.size() - 1)]);
    return runAgainstModel(m, src, dst, w, h, what);
}

// ---- inputs ---------------------------------------------------------------------------------

// The top of a type's coded scale (floats: 1; LUV floats have their own ranges).
// From the 0..top scale to the member's samples: 16s moves down by 32768.
Px placed(const Member& m, Px p)
{
    if (m.type == Type::S16)
        for (LD& v : p) v -= 32768;
    return p;
}

// Natural LUV of floats from codes in 0..1.
Px luvFromUnit(Px p) { return {p[0] * 100, p[1] * 354 - 134, p[2] * 262 - 140}; }

// A random pixel in the member's input range: integers over every value,
// floats over 0..1 (LUV over its natural ranges), now and then a value a
// little outside for floats.
Px randomPixel(const Member& m, std::mt19937& gen)
{
    Px p;
    if (m.type == Type::F32) {
        std::uniform_real_distribution<float> unit(0.0f, 1.0f), wide(-0.1f, 1.1f);
        const bool outside = gen() % 16 == 0;
        for (LD& v : p) v = outside ? wide(gen) : unit(gen);
        if (m.stem == Stem::FromLUV) p = luvFromUnit(p);
        for (LD& v : p) v = static_cast<float>(v);
        return p;
    }
    for (LD& v : p) v = static_cast<LD>(gen() % static_cast<unsigned>(top(m.type) + 1));
    return placed(m, p);
}

// Realistic LUV inputs: the model's forward LUV of a random RGB pixel.
Px realisticLuv(const Member& m, std::mt19937& gen)
{
    Member forward = m;
    forward.stem = Stem::ToLUV;
    const Want w = model(forward, randomPixel(forward, gen));
    return w.v;
}

// Extremes, grays and primaries on the 0..top scale: every mix of 0, 1, a
// middle value, top - 1 and top; every 1/64th gray.
std::vector<Px> extremePixels(const Member& m)
{
    const LD t = top(m.type);
    const bool f = m.type == Type::F32;
    const std::vector<LD> levels = f ? std::vector<LD>{0, 0x1p-24L, 0.5, 1 - 0x1p-24L, 1}
                                     : std::vector<LD>{0, 1, std::floor(t / 2), t - 1, t};
    std::vector<Px> list;
    for (LD a : levels)
        for (LD b : levels)
            for (LD c : levels) list.push_back({a, b, c});
    for (int i = 0; i <= 64; ++i) {
        const LD g = f ? LD(static_cast<float>(i / 64.0)) : std::floor(t * i / 64);
        list.push_back({g, g, g});
    }
    for (Px& p : list) {
        if (f && m.stem == Stem::FromLUV) p = luvFromUnit(p);
        if (f) for (LD& v : p) v = static_cast<float>(v);
        p = placed(m, p);
    }
    return list;
}

// ---- every member -----------------------------------------------------------------------------

class XyzLuvMember : public ::testing::TestWithParam<Member> {};
const auto memberName = [](const auto& info) { return std::string(info.param.name).substr(4); };

TEST_P(XyzLuvMember, RandomPixelsFollowTheModel)
{
    const Member& m = GetParam();
    std::mt19937 gen(11);
    for (KelImageSize size : {KelImageSize{1, 1}, KelImageSize{7, 3}, KelImageSize{67, 5}, KelImageSize{300, 20}}) {
        const Placement placement = size.width % 2 ? Placement::Fenced : Placement::Guarded;
        Image src = imageFor(m, size.width, size.height, placement), dst = imageFor(m, size.width, size.height, placement);
        dst.fill(size.width);
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x) {
                setPixel(src, m, x, y, m.stem == Stem::FromLUV && gen() % 2 ? realisticLuv(m, gen) : randomPixel(m, gen));
                if (m.pitch == 4) storeSample(m.type, sampleAt(src, m, x, y, 3), gen() % 100);
            }
        if (!runAgainstModel(m, src, dst, size.width, size.height, std::to_string(size.width) + "x" + std::to_string(size.height)))
            return;
    }
}

TEST_P(XyzLuvMember, ExtremesGraysAndPrimariesFollowTheModel)
{
    runPixels(GetParam(), extremePixels(GetParam()), "extremes, grays, primaries");
}

// The destination may hold anything: three elements of each pixel are
// overwritten with the model's values, the fourth stays as it was.
TEST_P(XyzLuvMember, OnlyThreeElementsOfEachPixelAreWritten)
{
    const Member& m = GetParam();
    for (std::uint8_t fill : {0x00, 0xFF, 0x7F}) {
        Image src = imageFor(m, 9, 2), dst = imageFor(m, 9, 2);
        std::mt19937 gen(fill);
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < 9; ++x) setPixel(src, m, x, y, randomPixel(m, gen));
        dst.fillWith(fill);
        if (!runAgainstModel(m, src, dst, 9, 2, "destination filled with " + std::to_string(fill))) return;
    }
}

TEST_P(XyzLuvMember, NullPointersBeforeSizeAndNothingWritten)
{
    const Member& m = GetParam();
    Image src = imageFor(m, 3, 2), dst = imageFor(m, 3, 2);
    src.fill(3);
    expectArgumentOrder(byImage(m.call), src, dst, {3, 2}, {1, 1}, false, Strides::Unseen);
}

// Both steps 0: every row reads the first source row and writes the first
// destination row, whose pixels come out as the model says.
TEST_P(XyzLuvMember, ZeroStepsReadAndWriteOneRow)
{
    const Member& m = GetParam();
    const int width = 5, height = 4;
    Image src = imageFor(m, width, height), dst = imageFor(m, width, height);
    std::mt19937 gen(21);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) setPixel(src, m, x, y, randomPixel(m, gen));
    dst.fill(22);
    const auto before = dst.rows();
    ASSERT_EQ(kelOk, m.call(src.arg(), 0, dst.arg(), 0, {width, height}));
    const std::size_t rowBytes = static_cast<std::size_t>(width) * m.pitch * bytesOf(m.type);
    const auto after = dst.rows();
    EXPECT_TRUE(std::equal(before.begin() + rowBytes, before.end(), after.begin() + rowBytes)) << "rows below the first";
    for (int x = 0; x < width; ++x)
        EXPECT_TRUE(matchesModel(m, pixelAt(src, m, x, 0), pixelAt(dst, m, x, 0))) << x;
    EXPECT_TRUE(dst.intact());
}

// A byte step that is not a whole number of samples is cut down to one by
// the arithmetic shift (downward for a negative step), except in the forward
// float LUV, which walks rows at exactly the byte step given.
TEST_P(XyzLuvMember, StepsInBytesAreCutToWholeSamplesOrHonoured)
{
    const Member& m = GetParam();
    const int bytes = bytesOf(m.type);
    const int width = 3, height = 4, rowBytes = width * m.pitch * bytes;
    for (int extra : {0, 1, 2, 3, 5}) {
        for (bool upward : {false, true}) {
            const int step = (rowBytes + 3 * bytes + extra) * (upward ? -1 : 1);
            // Arithmetic shift of the byte step, back in bytes.
            const int walked = walksBytes(m) ? step : (step >> (bytes == 1 ? 0 : bytes == 2 ? 1 : 2)) * bytes;
            const int span = std::abs(walked) * (height - 1) + rowBytes;
            std::vector<std::uint8_t> src(span + 64), dst(span + 64, 0xC3);
            std::mt19937 gen(extra * 2 + upward);
            for (auto& b : src) b = static_cast<std::uint8_t>(gen());
            // Rows from the first pointer at `walked` bytes; the first row at the
            // top for a downward walk, at the bottom for an upward one.
            const std::size_t first = upward ? static_cast<std::size_t>(std::abs(walked) * (height - 1)) : 0;
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x) {
                    Px p = randomPixel(m, gen);
                    for (int c = 0; c < 3; ++c)
                        storeSample(m.type, &src[first + static_cast<std::ptrdiff_t>(walked) * y + (x * m.pitch + c) * bytes], p[c]);
                }
            const auto srcBefore = src;
            auto expected = dst;
            ASSERT_EQ(kelOk, m.call(src.data() + first, step, dst.data() + first, step, {width, height}))
                << "step " << step;
            EXPECT_EQ(srcBefore, src);
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x) {
                    const std::ptrdiff_t at = first + static_cast<std::ptrdiff_t>(walked) * y + x * m.pitch * bytes;
                    Px in, got;
                    for (int c = 0; c < 3; ++c) {
                        in[c] = load(m.type, &src[at + c * bytes]);
                        got[c] = load(m.type, &dst[at + c * bytes]);
                    }
                    ASSERT_TRUE(matchesModel(m, in, got)) << "step " << step << " pixel " << x << ", " << y << ": "
                                                          << show(in) << " gave " << show(got);
                    std::memcpy(&expected[at], &dst[at], 3 * bytes);  // what the call may write
                }
            EXPECT_EQ(expected, dst) << "bytes outside the pixels, step " << step;
        }
    }
}

// Sizes below, at and above the 64 x 64 threshold give the bytes of one
// thread with teams of 2 to 5, and nothing past the last row is touched.
TEST_P(XyzLuvMember, SameBytesForOneToFiveThreads)
{
    const Member& m = GetParam();
    for (KelImageSize size : {KelImageSize{1, 1}, KelImageSize{3, 9}, KelImageSize{64, 64}, KelImageSize{65, 64},
                              KelImageSize{4097, 1}, KelImageSize{50, 101}}) {
        std::vector<std::uint8_t> serial;
        for (int threads = 1; threads <= 5; ++threads) {
            ThreadCount count(threads);
            Image src = imageFor(m, size.width, size.height, Placement::Fenced),
                  dst = imageFor(m, size.width, size.height, Placement::Fenced);
            std::mt19937 gen(size.width + size.height);
            for (int y = 0; y < size.height; ++y)
                for (int x = 0; x < size.width; ++x) setPixel(src, m, x, y, randomPixel(m, gen));
            dst.fill(9);
            ASSERT_EQ(kelOk, m.call(src.arg(), src.step(), dst.arg(), dst.step(), size));
            EXPECT_TRUE(dst.intact());
            if (threads == 1) serial = dst.rows();
            else ASSERT_EQ(serial, dst.rows()) << size.width << "x" << size.height << ", " << threads << " threads";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(XyzLuv, XyzLuvMember, ::testing::ValuesIn(kMembers), memberName);

// ---- the float members: NaN, infinities, huge values -------------------------------------------

class XyzLuvFloat : public ::testing::TestWithParam<Member> {};

// Each bad value in each channel, with ordinary values, and in all three:
// the results are the model's (NaN where it gives NaN); the clamped inverse
// results stay within 0..1 or are NaN.
TEST_P(XyzLuvFloat, NaNInfinitiesAndHugeValuesFollowTheModel)
{
    const Member& m = GetParam();
    const float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
    const float bad[] = {nan, -nan, inf, -inf, 3e38f, -3e38f, 1e20f, -1e20f, std::numeric_limits<float>::denorm_min(),
                         -std::numeric_limits<float>::denorm_min(), -0.0f, -1.0f, 2.0f};
    const Px ordinary = m.stem == Stem::FromLUV ? Px{50, 10, -20} : Px{0.25f, 0.5f, 0.75f};
    std::vector<Px> list;
    for (float b : bad) {
        for (int c = 0; c < 3; ++c) {
            Px p = ordinary;
            p[c] = b;
            list.push_back(p);
        }
        list.push_back({b, b, b});
        for (float b2 : bad) list.push_back({b, b2, ordinary[2]});
    }
    ASSERT_TRUE(runPixels(m, list, "bad floats", 16));
    if (m.stem == Stem::FromXYZ || m.stem == Stem::FromLUV) {
        Image src = imageFor(m, 16, 1), dst = imageFor(m, 16, 1);
        for (int i = 0; i < 16; ++i) setPixel(src, m, i, 0, list[i * 7 % list.size()]);
        ASSERT_EQ(kelOk, m.call(src.arg(), src.step(), dst.arg(), dst.step(), {16, 1}));
        for (int i = 0; i < 16; ++i)
            for (LD v : pixelAt(dst, m, i, 0)) EXPECT_TRUE(std::isnan(v) || (v >= 0 && v <= 1)) << i;
    }
}

INSTANTIATE_TEST_SUITE_P(XyzLuv, XyzLuvFloat,
                         ::testing::ValuesIn(select([](const Member& m) { return m.type == Type::F32; })), memberName);

// ---- both sides of the luminance joins --------------------------------------------------------

class LuvJoins : public ::testing::TestWithParam<Member> {};

// Forward: pixels whose Y / Yn sits a little below, at and above 0.008856
// (grays and mixes), both branches taken; inverse: coded or natural L around
// 7.9996247 and the dark limit 0.00009, with random chroma.
TEST_P(LuvJoins, PixelsOnBothSidesFollowTheModel)
{
    const Member& m = GetParam();
    std::mt19937 gen(31);
    std::vector<Px> list;
    int linear = 0, cubic = 0;
    const LD K = top(m.type);
    if (m.stem == Stem::ToLUV) {
        const LD Yn = m.type == Type::F32 ? 1 : K;
        const LD target = LD(kY0) * Yn;
        for (int i = 0; i < 400; ++i) {
            // A random red and blue, and greens around the one that puts Y on the join.
            const LD step = m.type == Type::F32 ? 0x1p-30L * (1 + gen() % 64) : 1;
            const LD r = m.type == Type::F32 ? LD(static_cast<float>((gen() % 1000) / 1000.0 * 0.008))
                                             : LD(gen() % 700), b = m.type == Type::F32 ? LD(static_cast<float>((gen() % 1000) / 1000.0 * 0.05)) : LD(gen() % 3000);
            LD g = (target - LD(kFwd[1][0]) * r - LD(kFwd[1][2]) * b) / LD(kFwd[1][1]);
            if (i % 4 == 0) g = target;  // a gray
            for (int k = -3; k <= 3; ++k) {
                LD gg = m.type == Type::F32 ? LD(static_cast<float>(g + k * step)) : std::round(g) + k;
                Px p = i % 4 == 0 ? Px{gg, gg, gg} : Px{r, gg, b};
                bool ok = true;
                for (LD v : p) ok = ok && v >= 0 && v <= K;
                if (!ok) continue;
                const LD Y = (LD(kFwd[1][0]) * p[0] + LD(kFwd[1][1]) * p[1]) + LD(kFwd[1][2]) * p[2];
                (Y / Yn <= kY0 ? linear : cubic) += 1;
                list.push_back(placed(m, p));
            }
        }
    } else {
        for (int i = 0; i < 400; ++i) {
            LD L;
            const int k = static_cast<int>(gen() % 9) - 4;
            if (m.type == Type::F32) {
                const float at = i % 2 ? kCubic : kDark;
                float l = at;
                for (int j = 0; j < std::abs(k); ++j) l = std::nextafter(l, k < 0 ? 0.0f : 100.0f);
                L = l;
            } else {
                const LD code = i % 2 ? std::ceil(LD(kCubic) * K / 100) : 1;  // first code at or above
                L = code + k;
                if (L < 0) L = -L;
            }
            const LD Lnat = m.type == Type::F32 ? L : L * 100 / K;
            if (Lnat >= kDark) (Lnat >= kCubic ? cubic : linear) += 1;
            Px p = m.type == Type::F32 ? Px{L, LD(static_cast<float>(-134 + (gen() % 3540) / 10.0)), LD(static_cast<float>(-140 + (gen() % 2620) / 10.0))}
                                       : Px{L, LD(gen() % static_cast<unsigned>(K + 1)), LD(gen() % static_cast<unsigned>(K + 1))};
            list.push_back(placed(m, p));
        }
        if (m.type == Type::F32)
            for (float l : {0.0f, -0.0f, -1e-30f, -5.0f, -1e30f, 8.9999e-5f}) list.push_back({l, 50, -60});
    }
    EXPECT_GT(linear, 20);
    EXPECT_GT(cubic, 20);
    runPixels(m, list, "near the join");
}

INSTANTIATE_TEST_SUITE_P(XyzLuv, LuvJoins,
                         ::testing::ValuesIn(select([](const Member& m) {
                             return (m.stem == Stem::ToLUV || m.stem == Stem::FromLUV) && m.type != Type::U8;
                         })),
                         memberName);

// ---- every 8-bit pixel ---------------------------------------------------------------------------

class EveryBytePixel : public ::testing::TestWithParam<Member> {};

// All 2^24 inputs as one 4096 x 4096 image, checked against the model.
TEST_P(EveryBytePixel, FollowsTheModel)
{
    const Member& m = GetParam();
    const int side = 4096;
    Image src = imageFor(m, side, side), dst = imageFor(m, side, side);
    dst.fill(8);
    for (int y = 0; y < side; ++y) {
        Kel8u* row = src.row(0, y);
        for (int x = 0; x < side; ++x) {
            const int i = y * side + x;
            row[x * m.pitch] = static_cast<Kel8u>(i >> 16);
            row[x * m.pitch + 1] = static_cast<Kel8u>(i >> 8);
            row[x * m.pitch + 2] = static_cast<Kel8u>(i);
            if (m.pitch == 4) row[x * m.pitch + 3] = static_cast<Kel8u>(i * 7);
        }
    }
    runAgainstModel(m, src, dst, side, side, "every pixel");
}

INSTANTIATE_TEST_SUITE_P(XyzLuv, EveryBytePixel,
                         ::testing::ValuesIn(select([](const Member& m) { return m.type == Type::U8; })), memberName);

// ---- the integer inverse LUV where a sum leaves the 32-bit range --------------------------------

class LuvSumsOutOfRange : public ::testing::TestWithParam<Member> {};

// Codes that put V / q + vn2 next to zero make A, and the sums, huge: the
// results stay within the type, and the channels whose sums fit follow the
// model. (The 8-bit codes are too coarse to come that close; every one of
// them is checked above.)
TEST_P(LuvSumsOutOfRange, ResultsStayInRange)
{
    const Member& m = GetParam();
    const LD K = top(m.type);
    std::vector<Px> list;
    int huge = 0;
    for (LD Lc = 1; Lc <= K; Lc += m.type == Type::U8 ? 1 : 97) {
        // The V code nearest -vn2 * q, and its neighbours.
        const LD L = Lc * 100 / K, q = L * 13;
        const LD Vc = std::round((-LD(kVn2) * q + 140) * K / 262);
        for (LD d = -2; d <= 2; ++d) {
            if (Vc + d < 0 || Vc + d > K) continue;
            for (LD Uc : {LD(0), std::floor(K / 3), K}) {
                Px p{Lc, Uc, Vc + d};
                const Want w = luvToRgbInt(p, K);
                huge += w.free[0] || w.free[1] || w.free[2];
                list.push_back(placed(m, p));
            }
        }
    }
    EXPECT_GT(huge, 0) << "no code pushes a sum out of range";
    runPixels(m, list, "sums out of range", 61);
}

INSTANTIATE_TEST_SUITE_P(XyzLuv, LuvSumsOutOfRange,
                         ::testing::ValuesIn(select([](const Member& m) {
                             return m.stem == Stem::FromLUV && (m.type == Type::U16 || m.type == Type::S16);
                         })),
                         memberName);

// ---- 16s is 16u moved by 32768 -------------------------------------------------------------

using W3 = std::array<Kel16u, 3>;
using S3 = std::array<Kel16s, 3>;

// Every pair but the inverse XYZ, whose blue sum differs (below).
TEST(XyzLuvSigned, TheUnsignedComputationMovedBy32768)
{
    struct Pair {
        const char* name;
        KelResult (*u)(const Kel16u*, int, Kel16u*, int, KelImageSize);
        KelResult (*s)(const Kel16s*, int, Kel16s*, int, KelImageSize);
    };
    const Pair pairs[] = {
        {"RGBToXYZ", keliRGBToXYZ_16u_C3R, keliRGBToXYZ_16s_C3R},
        {"RGBToLUV", keliRGBToLUV_16u_C3R, keliRGBToLUV_16s_C3R},
        {"LUVToRGB", keliLUVToRGB_16u_C3R, keliLUVToRGB_16s_C3R},
    };
    std::mt19937 gen(41);
    for (const Pair& pair : pairs)
        for (int i = 0; i < 20000; ++i) {
            W3 u{Kel16u(gen()), Kel16u(gen()), Kel16u(gen())};
            if (i < 27) u = W3{Kel16u(i % 3 * 32767 + i % 3 / 2), Kel16u(i / 3 % 3 * 32767 + i / 3 % 3 / 2),
                               Kel16u(i / 9 * 32767 + i / 9 / 2)};  // 0, 32767, 65535 mixed
            if (std::string(pair.name) == "LUVToRGB") {
                const Want w = luvToRgbInt({LD(u[0]), LD(u[1]), LD(u[2])}, 65535);
                if (w.free[0] || w.free[1] || w.free[2]) continue;  // the implementer's choice
            }
            const S3 s{Kel16s(u[0] - 32768), Kel16s(u[1] - 32768), Kel16s(u[2] - 32768)};
            const W3 ru = convertPixel(pair.u, u);
            const S3 rs = convertPixel(pair.s, s);
            for (int c = 0; c < 3; ++c)
                ASSERT_EQ(ru[c] - 32768, rs[c]) << pair.name << " of " << u[0] << ", " << u[1] << ", " << u[2];
        }
}

// The 16s inverse XYZ takes the float 1.0573110580444336 and adds the half
// after its first term: the model finds inputs where that gives another blue
// than the 16u kernel moved, and the member gives the 16s blue there, and the
// 16u red and green.
TEST(XyzLuvSigned, InverseXyzBlueHasItsOwnSum)
{
    std::vector<W3> differ;
    std::mt19937 gen(43);
    for (int i = 0; i < 2000000 && differ.size() < 200; ++i) {
        const W3 u{Kel16u(gen() % 20000), Kel16u(gen() % 65536), Kel16u(gen())};
        const Px p{LD(u[0]), LD(u[1]), LD(u[2])};
        const Want a = xyzToRgb16(p, false), b = xyzToRgb16(p, true);
        if (a.v[2] != b.v[2]) differ.push_back(u);
    }
    ASSERT_GT(differ.size(), 10u) << "the two blue sums never part";
    for (const W3& u : differ) {
        const S3 s{Kel16s(u[0] - 32768), Kel16s(u[1] - 32768), Kel16s(u[2] - 32768)};
        const Want want = xyzToRgb16({LD(u[0]), LD(u[1]), LD(u[2])}, true);
        const S3 rs = convertPixel(keliXYZToRGB_16s_C3R, s);
        const W3 ru = convertPixel(keliXYZToRGB_16u_C3R, u);
        EXPECT_EQ(LD(rs[2]) + 32768, want.v[2]) << u[0] << ", " << u[1] << ", " << u[2];
        EXPECT_NE(ru[2] - 32768, rs[2]) << u[0] << ", " << u[1] << ", " << u[2];
        EXPECT_EQ(ru[0] - 32768, rs[0]);
        EXPECT_EQ(ru[1] - 32768, rs[1]);
    }
}

// ---- the worked values -----------------------------------------------------------------------

TEST(XyzLuvValues, WorkedValues)
{
    expectWorked({
        {WORKED(keliRGBToXYZ_8u_C3R), {255, 255, 255}, {242, 254, 255}},  // Z of 277 saturates
        {WORKED(keliRGBToXYZ_8u_C3R), {0, 0, 0}, {0, 0, 0}},
        {WORKED(keliRGBToLUV_8u_C3R), {0, 0, 0}, {0, 97, 136}},
        {WORKED(keliRGBToLUV_8u_C3R), {255, 255, 255}, {255, 97, 136}},
        {WORKED(keliRGBToLUV_16u_C3R), {0, 0, 0}, {0, 24807, 35019}},
        {WORKED(keliRGBToLUV_16u_C3R), {65535, 65535, 65535}, {65535, 24807, 35019}},
        {WORKED(keliRGBToLUV_16s_C3R), {-32768, -32768, -32768}, {-32768, 24807 - 32768, 35019 - 32768}},
        {WORKED(keliRGBToLUV_16s_C3R), {32767, 32767, 32767}, {32767, 24807 - 32768, 35019 - 32768}},
        // 8-bit inverse XYZ: saturation at the top by compare; sums of -100738,
        // -13372 (shifted arithmetically to -2 and -1) land at 0, not at 255.
        {WORKED(keliXYZToRGB_8u_C3R), {255, 255, 255}, {255, 241, 231}},  // red's 307 saturates
        {WORKED(keliXYZToRGB_8u_C3R), {0, 1, 0}, {0, 1, 0}},
        {WORKED(keliXYZToRGB_8u_C3R), {0, 255, 0}, {0, 255, 0}},
        {WORKED(keliXYZToRGB_8u_C3R), {255, 0, 0}, {255, 0, 14}},
        {WORKED(keliXYZToRGB_8u_C3R), {0, 0, 0}, {0, 0, 0}},
    });
    const Trio white16 = throughOnePixel<keliRGBToXYZ_16u_C3R>({65535, 65535, 65535});
    EXPECT_EQ(65535, white16[2]);  // Z clamped
    const Trio white16s = throughOnePixel<keliRGBToXYZ_16s_C3R>({32767, 32767, 32767});
    EXPECT_EQ(32767, white16s[2]);
}

// powL's first values and last through gray pixels: a gray g has the coded
// luminance g.
TEST(XyzLuvValues, CodedLOfDarkGraysAndWhite)
{
    const std::pair<int, int> grays[] = {{0, 0}, {1, 9}, {2, 18}, {3, 26}, {4, 33}, {255, 255}};
    for (auto [g, l] : grays) {
        const Trio luv = throughOnePixel<keliRGBToLUV_8u_C3R>({g, g, g});
        EXPECT_EQ(l, luv[0]) << "gray " << g;
    }
}

TEST(XyzLuvValues, FloatBlackIsZeroLUV)
{
    using F3 = std::array<Kel32f, 3>;
    EXPECT_EQ((F3{0, 0, 0}), convertPixel(keliRGBToLUV_32f_C3R, F3{0, 0, 0}));
}

// Coded L 0 is black whatever U and V hold; at 16s that is -32768 in all
// three; float L below 0.00009, negatives included, gives 0.
TEST(XyzLuvValues, DarkLIsBlackWhateverTheChroma)
{
    using B3 = std::array<Kel8u, 3>;
    using F3 = std::array<Kel32f, 3>;
    for (int u : {0, 1, 97, 200, 255})
        for (int v : {0, 3, 136, 255}) {
            EXPECT_EQ((B3{0, 0, 0}), convertPixel(keliLUVToRGB_8u_C3R, B3{0, Kel8u(u), Kel8u(v)}));
            EXPECT_EQ((W3{0, 0, 0}), convertPixel(keliLUVToRGB_16u_C3R, W3{0, Kel16u(u * 257), Kel16u(v * 257)}));
            EXPECT_EQ((S3{-32768, -32768, -32768}),
                      convertPixel(keliLUVToRGB_16s_C3R, S3{-32768, Kel16s(u * 257 - 32768), Kel16s(v * 257 - 32768)}));
        }
    const float inf = std::numeric_limits<float>::infinity();
    for (float l : {0.0f, -0.0f, 8.99e-5f, std::nextafter(0.00009f, 0.0f), -1.0f, -1e30f, -inf})
        for (float u : {-134.0f, 0.0f, 220.0f, 1e30f})
            for (float v : {-140.0f, 0.0f, 122.0f, -1e30f})
                EXPECT_EQ((F3{0, 0, 0}), convertPixel(keliLUVToRGB_32f_C3R, F3{l, u, v})) << l << ", " << u << ", " << v;
}

// ---- the model against the text's own numbers (no call of the library) ------------------------

TEST(XyzLuvModel, ConstantsAsTheFloatsAndDoublesNamed)
{
    EXPECT_EQ(0x3EFFFFDEu, std::bit_cast<std::uint32_t>(kC));
    EXPECT_EQ(0.4124529957771301, static_cast<double>(kFwd[0][0]));
    EXPECT_EQ(1.0573110580444336, static_cast<double>(kInv[2][2]));
    EXPECT_EQ(1.0573109999999999, kBlueZ);
    EXPECT_NE(static_cast<double>(kInv[2][2]), kBlueZ);
    EXPECT_EQ(0.3333333432674408, kThird);
    const long long fwd[3][3] = {{27030, 23434, 11824}, {13937, 46868, 4729}, {1267, 7811, 62274}};
    const long long inv[3][3] = {{212368, -100738, -32671}, {-63521, 122944, 2723}, {3646, -13372, 69291}};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) {
            EXPECT_EQ(fwd[i][j], kFwd8[i][j]) << i << ", " << j;
            EXPECT_EQ(inv[i][j], kInv8[i][j]) << i << ", " << j;
        }
    EXPECT_EQ(62288, kFwd8[0][0] + kFwd8[0][1] + kFwd8[0][2]);
    EXPECT_EQ(65534, kFwd8[1][0] + kFwd8[1][1] + kFwd8[1][2]);
    // The coded ranges' constants: 13 * 100 / 354 and 13 * 100 / 262 as floats.
    EXPECT_EQ(kU8Scale, static_cast<float>(1300.0L / 354));
    EXPECT_EQ(kV8Scale, static_cast<float>(1300.0L / 262));
    EXPECT_NEAR(kU8Offset, 134 * 255.0 / 354 + 0.5, 1e-4);  // to the decimals given
    EXPECT_NEAR(kV8Offset, 140 * 255.0 / 262 + 0.5, 1e-4);
}

TEST(XyzLuvModel, CodedLTable)
{
    EXPECT_EQ(0, kCodedL[0]);
    EXPECT_EQ(9, kCodedL[1]);
    EXPECT_EQ(18, kCodedL[2]);
    EXPECT_EQ(26, kCodedL[3]);
    EXPECT_EQ(33, kCodedL[4]);
    EXPECT_EQ(255, kCodedL[255]);
    // The rule gives one table in double and in the extended type.
    EXPECT_EQ(codedL<double>(), kCodedL);
    for (int i = 1; i < 256; ++i) EXPECT_LE(kCodedL[i - 1], kCodedL[i]) << i;
}

TEST(XyzLuvModel, TheWorkedValues)
{
    const Member& toXyz8 = kMembers[0];
    const auto at = [](const char* name) -> const Member& {
        for (const Member& m : kMembers)
            if (std::string(name) == m.name) return m;
        throw std::logic_error(name);
    };
    EXPECT_EQ((Px{242, 254, 255}), model(toXyz8, {255, 255, 255}).v);
    EXPECT_EQ(277, (kFwd8[2][0] + kFwd8[2][1] + kFwd8[2][2]) * 255 >> 16);
    EXPECT_EQ(65535, model(at("keliRGBToXYZ_16u_C3R"), {65535, 65535, 65535}).v[2]);
    EXPECT_EQ(32767, model(at("keliRGBToXYZ_16s_C3R"), {32767, 32767, 32767}).v[2]);
    EXPECT_EQ((Px{0, 97, 136}), model(at("keliRGBToLUV_8u_C3R"), {0, 0, 0}).v);
    EXPECT_EQ((Px{255, 97, 136}), model(at("keliRGBToLUV_8u_C3R"), {255, 255, 255}).v);
    for (PowOf powOf : {PowOf::Sum, PowOf::Rounded}) {
        EXPECT_EQ((Px{0, 24807, 35019}), model(at("keliRGBToLUV_16u_C3R"), {0, 0, 0}, powOf).v);
        EXPECT_EQ((Px{65535, 24807, 35019}), model(at("keliRGBToLUV_16u_C3R"), {65535, 65535, 65535}, powOf).v);
        EXPECT_EQ((Px{32767, 24807 - 32768, 35019 - 32768}),
                  model(at("keliRGBToLUV_16s_C3R"), {32767, 32767, 32767}, powOf).v);
        EXPECT_EQ((Px{0, 0, 0}), model(at("keliRGBToLUV_32f_C3R"), {0, 0, 0}, powOf).v);
    }
    for (LD u : {0, 97, 255})
        for (LD v : {0, 136, 255}) {
            EXPECT_EQ((Px{0, 0, 0}), model(at("keliLUVToRGB_8u_C3R"), {0, u, v}).v);
            EXPECT_EQ((Px{0, 0, 0}), model(at("keliLUVToRGB_16u_C3R"), {0, u * 257, v * 257}).v);
            EXPECT_EQ((Px{-32768, -32768, -32768}), model(at("keliLUVToRGB_16s_C3R"), {-32768, u, v}).v);
        }
    for (LD l : {0.0L, -0.0L, -1.0L, LD(std::nextafter(0.00009f, 0.0f))})
        EXPECT_EQ((Px{0, 0, 0}), model(at("keliLUVToRGB_32f_C3R"), {l, 5, 5}).v);
    EXPECT_EQ((Px{255, 0, 14}), model(at("keliXYZToRGB_8u_C3R"), {255, 0, 0}).v);
    EXPECT_EQ((Px{0, 1, 0}), model(at("keliXYZToRGB_8u_C3R"), {0, 1, 0}).v);
    EXPECT_EQ((Px{255, 241, 231}), model(at("keliXYZToRGB_8u_C3R"), {255, 255, 255}).v);
    for (int g = 0; g < 256; ++g) {  // a gray's luminance code is the gray
        const LD Y = (LD(kFwd[1][0]) * g + LD(kFwd[1][1]) * g) + LD(kFwd[1][2]) * g;
        ASSERT_EQ(g, static_cast<int>(std::trunc(kC + Y))) << g;
    }
    // Black and white sit at the same U and V codes; every 8-bit pixel's
    // codes stay in the ranges the text gives, and the largest luminance sum
    // stays below 255 + c.
    int lo[3] = {255, 255, 255}, hi[3] = {0, 0, 0};
    LD largest = 0;
    for (int i = 0; i < (1 << 24); i += 1) {
        const Px p{LD(i >> 16), LD((i >> 8) & 255), LD(i & 255)};
        const Want w = rgbToLuv8u(p);
        for (int c = 0; c < 3; ++c) {
            lo[c] = std::min(lo[c], int(w.v[c]));
            hi[c] = std::max(hi[c], int(w.v[c]));
        }
        largest = std::max(largest, (LD(kFwd[1][0]) * p[0] + LD(kFwd[1][1]) * p[1]) + LD(kFwd[1][2]) * p[2]);
    }
    EXPECT_GE(lo[1], 37);
    EXPECT_LE(hi[1], 223);
    EXPECT_GE(lo[2], 4);
    EXPECT_LE(hi[2], 241);
    EXPECT_LT(largest, 255 + LD(kC));
}

// The inverse kernels undo the forward ones up to their coding: RGB through
// XYZ or LUV and back comes within a few codes (the 8-bit LUV within its
// coarser steps) where Z isn't clamped; white comes back from the worked
// LUV codes of white.
TEST(XyzLuvModel, RoundTripsComeBackClose)
{
    const auto at = [](const char* name) -> const Member& {
        for (const Member& m : kMembers)
            if (std::string(name) == m.name) return m;
        throw std::logic_error(name);
    };
    struct Trip {
        const char* there;
        const char* back;
        LD tolerance;
    };
    const Trip trips[] = {
        {"keliRGBToXYZ_16u_C3R", "keliXYZToRGB_16u_C3R", 4},     {"keliRGBToXYZ_16s_C3R", "keliXYZToRGB_16s_C3R", 4},
        {"keliRGBToXYZ_32f_C3R", "keliXYZToRGB_32f_C3R", 1e-5L}, {"keliRGBToLUV_16u_C3R", "keliLUVToRGB_16u_C3R", 8},
        {"keliRGBToLUV_16s_C3R", "keliLUVToRGB_16s_C3R", 8},     {"keliRGBToLUV_32f_C3R", "keliLUVToRGB_32f_C3R", 1e-4L},
        {"keliRGBToLUV_8u_C3R", "keliLUVToRGB_8u_C3R", 24},
    };
    std::mt19937 gen(51);
    for (const Trip& trip : trips) {
        const Member &there = at(trip.there), &back = at(trip.back);
        for (int i = 0; i < 3000; ++i) {
            Px p = randomPixel(there, gen);
            if (there.type == Type::F32)
                for (LD& v : p) v = std::clamp(v, LD(0), LD(1));
            const LD K = top(there.type);
            // Dark pixels lose their chroma to the coding; keep to lighter ones.
            LD Y = 0;
            for (int c = 0; c < 3; ++c) Y += LD(kFwd[1][c]) * (p[c] - lowest(there.type));
            if (Y < 0.1L * K) continue;
            const Px mid = model(there, p).v;
            if (there.stem == Stem::ToXYZ && mid[2] >= highest(there.type)) continue;  // Z clamped
            const Px again = model(back, mid).v;
            for (int c = 0; c < 3; ++c)
                ASSERT_NEAR(double(p[c]), double(again[c]), double(trip.tolerance))
                    << trip.there << " and back, " << show(p) << " via " << show(mid);
        }
    }
    const Px white16 = model(at("keliLUVToRGB_16u_C3R"), {65535, 24807, 35019}).v;
    for (LD v : white16) EXPECT_NEAR(65535.0, double(v), 2.0);
    const Px white8 = model(at("keliLUVToRGB_8u_C3R"), {255, 97, 136}).v;
    for (LD v : white8) EXPECT_NEAR(255.0, double(v), 3.0);
}

} // namespace

// YCC and gray at 8u, 16u, 16s and 32f: every member against a model of its
// kernel written here (the 8-bit YCC arithmetic in integers with arithmetic
// shifts, its scales as the decimals cut toward zero to 12 or 14 fraction
// bits; the others in the 80-bit type with 32-bit float constants; gray's
// 8-bit weights rounded once a call, its 32-bit sum shifted logically and its
// low 8 or 16 bits stored); random pixels, extremes, grays, primaries, every
// 8-bit pixel of both YCC directions; the worked values; default and caller
// weights, negative and past one; the fourth element of AC4 pixels and the
// alpha that gray steps over; steps cut to whole samples; argument order;
// identical bytes for any team size; NaN and infinities in floats.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
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

// A decimal scale in `bits` fraction bits, cut toward zero.
int cut(double decimal, int bits) { return static_cast<int>(std::trunc(static_cast<LD>(decimal) * (1 << bits))); }

// 8-bit forward: luma weights in 14 bits; the luma and chroma scales in 12,
// applied to a sum cut to 4 fraction bits.
const int kLuma14[3] = {cut(0.299, 14), cut(0.587, 14), cut(0.114, 14)};
const int kYScale12 = cut(0.7132668, 12), kC1Scale12 = cut(0.43686, 12), kC2Scale12 = cut(0.53192, 12);
// 8-bit inverse: the scales of Y, C1, C2 and green's shares of C1 and C2, in 12.
const int kInvY12 = cut(1.3584, 12), kInvC1_12 = cut(2.2179, 12), kInvC2_12 = cut(1.8215, 12);
const int kGreenC1_12 = cut(0.194, 12), kGreenC2_12 = cut(0.509, 12);
// Chroma offsets: 8-bit codes, the same in 16 bits (times 257) and as fractions of 255.
constexpr int kOff1 = 156, kOff2 = 137;
constexpr int kCentre1 = kOff1 * 257, kCentre2 = kOff2 * 257;
constexpr float kFloatCentre1 = 0.6117647f, kFloatCentre2 = 0.5372549f;

int clampByte(int v) { return v < 0 ? 0 : v > 255 ? 255 : v; }

// The forward results before the low 8 bits are kept.
std::array<int, 3> rgbToYcc8uWide(int R, int G, int B)
{
    const int S = kLuma14[0] * R + kLuma14[1] * G + kLuma14[2] * B;
    const int Y = ((S >> 10) * kYScale12) >> 16;
    const int C1 = (((((B << 14) - S) >> 10) * kC1Scale12) >> 16) + kOff1;
    const int C2 = (((((R << 14) - S) >> 10) * kC2Scale12) >> 16) + kOff2;
    return {Y, C1, C2};
}
std::array<int, 3> rgbToYcc8u(int R, int G, int B)
{
    const auto v = rgbToYcc8uWide(R, G, B);
    return {v[0], v[1] & 255, v[2] & 255};
}

// The unclamped levels of the inverse, before saturation to a byte.
std::array<int, 3> yccToRgb8uLevels(int Y, int C1, int C2)
{
    const int a = Y * kInvY12, b = (C1 - kOff1) * kInvC1_12, d = (C2 - kOff2) * kInvC2_12;
    return {(a + d) >> 12, (16 * a - kGreenC1_12 * (b >> 8) - kGreenC2_12 * (d >> 8)) >> 16, (a + b) >> 12};
}
std::array<int, 3> yccToRgb8u(int Y, int C1, int C2)
{
    const auto v = yccToRgb8uLevels(Y, C1, C2);
    return {clampByte(v[0]), clampByte(v[1]), clampByte(v[2])};
}

LD F(float f) { return static_cast<LD>(f); }
LD toFloat(LD v) { return static_cast<float>(v); }
LD clamp16(LD v) { return v >= 65535 ? 65535 : v < 1 ? 0 : v; }

// 16u forward, the coefficients folded with the scales.
Px rgbToYcc16u(Px p)
{
    const LD R = p[0], G = p[1], B = p[2];
    return {std::trunc(((F(0.213267f) * R + F(0.418688f) * G) + F(0.0813124f) * B) + kC),
            std::trunc((((F(-0.130621f) * R + kCentre1) - F(0.256437f) * G) + F(0.387058f) * B) + kC),
            std::trunc((((F(0.372876f) * R + kCentre2) - F(0.312237f) * G) - F(0.0606389f) * B) + kC)};
}

LD luma(Px p) { return (F(0.299f) * p[0] + F(0.587f) * p[1]) + F(0.114f) * p[2]; }

// 16s forward, on the samples moved up by 32768, results moved back.
Px rgbToYcc16s(Px p)
{
    for (LD& v : p) v += 32768;
    const LD L = luma(p);
    return {std::trunc(L * F(0.7132668f) + kC) - 32768,
            std::trunc(((p[2] - L) * F(0.43686f) + kCentre1) + kC) - 32768,
            std::trunc(((p[0] - L) * F(0.53192f) + kCentre2) + kC) - 32768};
}

Px rgbToYcc32f(Px p)
{
    const LD L = luma(p);
    return {toFloat(L * F(0.7132668f)), toFloat((p[2] - L) * F(0.43686f) + F(kFloatCentre1)),
            toFloat((p[0] - L) * F(0.53192f) + F(kFloatCentre2))};
}

// 16-bit inverse on integer chroma differences already taken.
Px yccToRgb16(LD Y, LD dC1, LD dC2)
{
    const LD y = Y * F(1.3584f), p = dC1 * F(2.2179f), q = dC2 * F(1.8215f);
    return {clamp16(std::trunc((y + q) + kC)), clamp16(std::trunc(((y - F(0.194f) * p) - F(0.509f) * q) + kC)),
            clamp16(std::trunc((p + y) + kC))};
}
Px yccToRgb16u(Px p) { return yccToRgb16(p[0], p[1] - kCentre1, p[2] - kCentre2); }
// The chroma differences taken directly from the signed samples.
Px yccToRgb16s(Px p)
{
    Px v = yccToRgb16(p[0] + 32768, p[1] - (kCentre1 - 32768), p[2] - (kCentre2 - 32768));
    for (LD& s : v) s -= 32768;
    return v;
}

// Below 0 gives 0, above 1 gives 1; NaN is neither and stays.
LD unitClamp(LD v) { return v < 0 ? 0 : v > 1 ? 1 : v; }
Px yccToRgb32f(Px p)
{
    const LD y = p[0] * F(1.3584f), c1 = (p[1] - F(kFloatCentre1)) * F(2.2179f), c2 = (p[2] - F(kFloatCentre2)) * F(1.8215f);
    return {toFloat(unitClamp(y + c2)), toFloat(unitClamp((y - F(0.194f) * c1) - F(0.509f) * c2)),
            toFloat(unitClamp(c1 + y))};
}

// ---- gray ----

// Caller's weights, or none (the defaults).
struct Weights {
    bool given = false;
    std::array<float, 3> w{};
    const Kel32f* ptr() const { return given ? w.data() : nullptr; }
};
constexpr Weights kDefault{};
Weights given(float a, float b, float c) { return {true, {a, b, c}}; }

constexpr std::array<float, 3> kGrayFloat{0.299f, 0.587f, 0.114f};
constexpr std::array<int, 3> kGray12{1225, 2404, 467};

// A caller's weight in 12 fraction bits: plus a half, cut toward zero, in the 80-bit type.
int weight12(float w) { return static_cast<int>(std::trunc(F(w) * 4096 + 0.5L)); }

int gray8u(const Weights& w, int R, int G, int B)
{
    std::array<int, 3> k = kGray12;
    if (w.given) k = {weight12(w.w[0]), weight12(w.w[1]), weight12(w.w[2])};
    // A 32-bit sum, wrapping, shifted logically.
    const std::uint32_t s = std::uint32_t(k[0]) * std::uint32_t(R) + std::uint32_t(k[1]) * std::uint32_t(G) +
                            std::uint32_t(k[2]) * std::uint32_t(B);
    return static_cast<int>((s >> 12) & 255);
}

// 16u: cut toward zero, low 16 bits; on 0..65535 samples.
LD gray16(const Weights& w, Px p)
{
    const std::array<float, 3> k = w.given ? w.w : kGrayFloat;
    const LD sum = (p[0] * F(k[0]) + p[1] * F(k[1])) + p[2] * F(k[2]);
    return static_cast<LD>(static_cast<std::uint64_t>(static_cast<long long>(std::trunc(sum))) & 0xFFFF);
}
LD gray16s(const Weights& w, Px p)
{
    for (LD& v : p) v += 32768;
    return static_cast<LD>(static_cast<Kel16s>(static_cast<std::uint16_t>(static_cast<int>(gray16(w, p)) - 32768)));
}
LD gray32f(const Weights& w, Px p)
{
    const std::array<float, 3> k = w.given ? w.w : kGrayFloat;
    return toFloat((F(k[0]) * p[0] + F(k[1]) * p[1]) + F(k[2]) * p[2]);
}

// ---- members --------------------------------------------------------------------------------

enum class Stem { ToYCC, FromYCC };

int shiftOf(Type t) { return t == Type::U8 ? 0 : t == Type::F32 ? 2 : 1; }

struct YccMember {
    const char* name;
    Stem stem;
    Type type;
    int pitch;
    ErasedCall call;
};
void PrintTo(const YccMember& m, std::ostream* os) { *os << m.name; }

#define YCC_PAIR(F, T, TYPE, STEM)                                                  \
    {#F "_C3R", Stem::STEM, Type::TYPE, 3, erase<const T*, T*, F##_C3R>},           \
    {#F "_AC4R", Stem::STEM, Type::TYPE, 4, erase<const T*, T*, F##_AC4R>}
#define YCC_STEM(F, STEM)                                                                                  \
    YCC_PAIR(F##_8u, Kel8u, U8, STEM), YCC_PAIR(F##_16u, Kel16u, U16, STEM), YCC_PAIR(F##_16s, Kel16s, S16, STEM), \
    YCC_PAIR(F##_32f, Kel32f, F32, STEM)

const YccMember kYcc[] = {YCC_STEM(keliRGBToYCC, ToYCC), YCC_STEM(keliYCCToRGB, FromYCC)};

// A gray member, with or without weights, as one call shape.
using GrayCall = KelResult (*)(const void* src, int srcStep, void* dst, int dstStep, KelImageSize size,
                               const Kel32f* weights);
template <typename T, KelResult (*Fn)(const T*, int, T*, int, KelImageSize)>
KelResult grayFixed(const void* s, int ss, void* d, int ds, KelImageSize z, const Kel32f*)
{
    return Fn(static_cast<const T*>(s), ss, static_cast<T*>(d), ds, z);
}
template <typename T, KelResult (*Fn)(const T*, int, T*, int, KelImageSize, const Kel32f*)>
KelResult grayGiven(const void* s, int ss, void* d, int ds, KelImageSize z, const Kel32f* w)
{
    return Fn(static_cast<const T*>(s), ss, static_cast<T*>(d), ds, z, w);
}

struct GrayMember {
    const char* name;
    Type type;
    int pitch;
    bool takesWeights;
    GrayCall call;
};
void PrintTo(const GrayMember& m, std::ostream* os) { *os << m.name; }

#define GRAY_PAIR(F, T, TYPE, WRAP, TAKES)                                          \
    {#F "_C3C1R", Type::TYPE, 3, TAKES, WRAP<T, F##_C3C1R>},                       \
    {#F "_AC4C1R", Type::TYPE, 4, TAKES, WRAP<T, F##_AC4C1R>}
#define GRAY_STEM(F, WRAP, TAKES)                                                                   \
    GRAY_PAIR(F##_8u, Kel8u, U8, WRAP, TAKES), GRAY_PAIR(F##_16u, Kel16u, U16, WRAP, TAKES),          \
    GRAY_PAIR(F##_16s, Kel16s, S16, WRAP, TAKES), GRAY_PAIR(F##_32f, Kel32f, F32, WRAP, TAKES)

const GrayMember kGray[] = {GRAY_STEM(keliRGBToGray, grayFixed, false), GRAY_STEM(keliColorToGray, grayGiven, true)};

template <typename M> std::vector<M> select(const M* begin, const M* end, bool (*keep)(const M&))
{
    std::vector<M> out;
    for (const M* m = begin; m != end; ++m)
        if (keep(*m)) out.push_back(*m);
    return out;
}
const auto memberName = [](const auto& info) { return std::string(info.param.name).substr(4); };

Px yccModel(const YccMember& m, Px in)
{
    if (m.type == Type::U8) {
        const auto r = m.stem == Stem::ToYCC ? rgbToYcc8u(int(in[0]), int(in[1]), int(in[2]))
                                             : yccToRgb8u(int(in[0]), int(in[1]), int(in[2]));
        return {LD(r[0]), LD(r[1]), LD(r[2])};
    }
    if (m.stem == Stem::ToYCC)
        return m.type == Type::U16 ? rgbToYcc16u(in) : m.type == Type::S16 ? rgbToYcc16s(in) : rgbToYcc32f(in);
    return m.type == Type::U16 ? yccToRgb16u(in) : m.type == Type::S16 ? yccToRgb16s(in) : yccToRgb32f(in);
}

LD grayModel(Type t, const Weights& w, Px in)
{
    switch (t) {
    case Type::U8: return gray8u(w, int(in[0]), int(in[1]), int(in[2]));
    case Type::U16: return gray16(w, in);
    case Type::S16: return gray16s(w, in);
    case Type::F32: return gray32f(w, in);
    }
    return 0;
}

// Equal as numbers, NaN matching NaN.
bool same(LD want, LD got) { return want == got || (std::isnan(want) && std::isnan(got)); }

std::string show(const Px& p)
{
    std::string s;
    for (int c = 0; c < 3; ++c) s += (c ? ", " : "") + std::to_string(static_cast<double>(p[c]));
    return "(" + s + ")";
}

// ---- samples in images -----------------------------------------------------------------------


Image imageOf(Type t, int pitch, int width, int height, Placement placement = Placement::Guarded)
{
    return pixels(width, height, pitch, false, bytesOf(t), placement);
}
void* sampleAt(Image& image, Type t, int pitch, int x, int y, int c)
{
    return image.row(0, y) + static_cast<std::ptrdiff_t>(x * pitch + c) * bytesOf(t);
}
Px pixelAt(Image& image, Type t, int pitch, int x, int y)
{
    Px p;
    for (int c = 0; c < 3; ++c) p[c] = load(t, sampleAt(image, t, pitch, x, y, c));
    return p;
}
void setPixel(Image& image, Type t, int pitch, int x, int y, const Px& p)
{
    for (int c = 0; c < 3; ++c) storeSample(t, sampleAt(image, t, pitch, x, y, c), p[c]);
}

// ---- inputs ---------------------------------------------------------------------------------

// From the 0..top scale to the member's samples: 16s moves down by 32768.
Px placed(Type t, Px p)
{
    if (t == Type::S16)
        for (LD& v : p) v -= 32768;
    return p;
}

// A random pixel in the type's range: integers over every value, floats over
// 0..1, now and then a little outside.
Px randomPixel(Type t, std::mt19937& gen)
{
    Px p;
    if (t == Type::F32) {
        std::uniform_real_distribution<float> unit(0.0f, 1.0f), wide(-0.1f, 1.1f);
        const bool outside = gen() % 16 == 0;
        for (LD& v : p) v = static_cast<float>(outside ? wide(gen) : unit(gen));
        return p;
    }
    for (LD& v : p) v = static_cast<LD>(gen() % static_cast<unsigned>(top(t) + 1));
    return placed(t, p);
}

// Every mix of 0, 1, a middle value, top - 1 and top (primaries among them);
// every 1/64th gray.
std::vector<Px> extremePixels(Type t)
{
    const LD k = top(t);
    const bool f = t == Type::F32;
    const std::vector<LD> levels = f ? std::vector<LD>{0, 0x1p-24L, 0.5, 1 - 0x1p-24L, 1}
                                     : std::vector<LD>{0, 1, std::floor(k / 2), k - 1, k};
    std::vector<Px> list;
    for (LD a : levels)
        for (LD b : levels)
            for (LD c : levels) list.push_back({a, b, c});
    for (int i = 0; i <= 64; ++i) {
        const LD g = f ? LD(static_cast<float>(i / 64.0)) : std::floor(k * i / 64);
        list.push_back({g, g, g});
    }
    for (Px& p : list) p = placed(t, p);
    return list;
}

// Floats a kernel may meet: NaN, infinities, huge, tiny, negative.
std::vector<Px> badFloatPixels(const Px& ordinary)
{
    const float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
    const float bad[] = {nan, -nan, inf, -inf, 3e38f, -3e38f, 1e20f, -1e20f, std::numeric_limits<float>::denorm_min(),
                         -std::numeric_limits<float>::denorm_min(), -0.0f, -1.0f, 2.0f};
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
    return list;
}

// ---- YCC: running a member on an image ------------------------------------------------------

// Runs the member from `src` into `dst` and checks: status kelOk, the source
// unchanged, guards and row padding of both intact, the fourth element of
// every destination pixel as it was, every pixel as the model says. Returns
// false after the first bad pixel (reported).
bool runYcc(const YccMember& m, Image& src, Image& dst, int width, int height, const std::string& what = "")
{
    const auto srcBefore = src.rows();
    const auto dstBefore = dst.rows();
    EXPECT_EQ(kelOk, m.call(src.arg(), src.step(), dst.arg(), dst.step(), {width, height})) << what;
    EXPECT_EQ(srcBefore, src.rows()) << what;
    EXPECT_TRUE(src.intact() && dst.intact()) << what;
    // The destination's rows as they were, given the three elements of each
    // pixel that the model checks: the fourth element, and anything else, as before.
    const std::size_t rowBytes = static_cast<std::size_t>(width) * m.pitch * bytesOf(m.type);
    const std::size_t bytes = static_cast<std::size_t>(bytesOf(m.type));
    const auto after = dst.rows();
    auto expected = dstBefore;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            if (m.type == Type::U8) {  // bytes compared as integers: the every-pixel image is large
                const Kel8u* i = src.row(0, y) + x * m.pitch;
                const Kel8u* o = dst.row(0, y) + x * m.pitch;
                const auto want = m.stem == Stem::ToYCC ? rgbToYcc8u(i[0], i[1], i[2]) : yccToRgb8u(i[0], i[1], i[2]);
                if (want[0] == o[0] && want[1] == o[1] && want[2] == o[2]) {
                    std::memcpy(&expected[y * rowBytes + x * m.pitch], o, 3);
                    continue;
                }
            }
            const Px in = pixelAt(src, m.type, m.pitch, x, y), got = pixelAt(dst, m.type, m.pitch, x, y);
            const Px want = yccModel(m, in);
            if (!same(want[0], got[0]) || !same(want[1], got[1]) || !same(want[2], got[2])) {
                ADD_FAILURE() << what << " pixel " << x << ", " << y << ": " << show(in) << " gave " << show(got)
                              << ", the model says " << show(want);
                return false;
            }
            const std::size_t at = y * rowBytes + x * m.pitch * bytes;
            std::memcpy(&expected[at], &after[at], 3 * bytes);
        }
    EXPECT_TRUE(expected == after) << what << ": bytes besides the three elements of each pixel changed";
    return !::testing::Test::HasFailure();
}

// Runs the member on a list of pixels laid out `width` to a row.
bool runYccPixels(const YccMember& m, const std::vector<Px>& list, const std::string& what, int width = 37)
{
    if (list.empty()) return true;
    const int w = std::min<int>(width, static_cast<int>(list.size()));
    const int h = static_cast<int>((list.size() + w - 1) / w);
    Image src = imageOf(m.type, m.pitch, w, h), dst = imageOf(m.type, m.pitch, w, h);
    src.fill(5);
    dst.fill(6);
    for (std::size_t i = 0; i < static_cast<std::size_t>(w) * h; ++i)
        setPixel(src, m.type, m.pitch, static_cast<int>(i % w), static_cast<int>(i / w), list[std::min(i, list.size() - 1)]);
    return runYcc(m, src, dst, w, h, what);
}

// ---- gray: running a member on an image ------------------------------------------------------

Image grayDst(const GrayMember& m, int width, int height, Placement placement = Placement::Guarded)
{
    return imageOf(m.type, 1, width, height, placement);
}

// Runs the member with weights `w` (ignored by keliRGBToGray, which then must
// give the defaults) and checks: kelOk, the source unchanged, guards and
// padding intact, every gray sample as the model says.
bool runGray(const GrayMember& m, const Weights& w, Image& src, Image& dst, int width, int height,
             const std::string& what = "")
{
    const Weights& used = m.takesWeights ? w : kDefault;
    const auto srcBefore = src.rows();
    EXPECT_EQ(kelOk, m.call(src.arg(), src.step(), dst.arg(), dst.step(), {width, height}, w.ptr())) << what;
    EXPECT_EQ(srcBefore, src.rows()) << what;
    EXPECT_TRUE(src.intact() && dst.intact()) << what;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const Px in = pixelAt(src, m.type, m.pitch, x, y);
            const LD got = load(m.type, sampleAt(dst, m.type, 1, x, y, 0)), want = grayModel(m.type, used, in);
            if (!same(want, got)) {
                ADD_FAILURE() << what << " pixel " << x << ", " << y << ": " << show(in) << " gave "
                              << static_cast<double>(got) << ", the model says " << static_cast<double>(want);
                return false;
            }
        }
    return !::testing::Test::HasFailure();
}

bool runGrayPixels(const GrayMember& m, const Weights& w, const std::vector<Px>& list, const std::string& what,
                   int width = 37)
{
    if (list.empty()) return true;
    const int wd = std::min<int>(width, static_cast<int>(list.size()));
    const int h = static_cast<int>((list.size() + wd - 1) / wd);
    Image src = imageOf(m.type, m.pitch, wd, h), dst = grayDst(m, wd, h);
    src.fill(5);
    dst.fill(6);
    for (std::size_t i = 0; i < static_cast<std::size_t>(wd) * h; ++i)
        setPixel(src, m.type, m.pitch, static_cast<int>(i % wd), static_cast<int>(i / wd), list[std::min(i, list.size() - 1)]);
    return runGray(m, w, src, dst, wd, h, what);
}

// Caller weights: the defaults given, halves, past one, negative (sums below
// zero), large (8u and 16-bit sums past their widths), ties at half a unit
// of 12 bits, tiny.
struct WeightCase {
    const char* name;
    Weights w;
};
const WeightCase kWeightCases[] = {
    {"null", kDefault},
    {"the defaults given", given(0.299f, 0.587f, 0.114f)},
    {"halves", given(0.5f, 0.5f, 0.0f)},
    {"swapped", given(0.114f, 0.587f, 0.299f)},
    {"past one", given(0.9f, 0.8f, 0.7f)},
    {"some negative", given(-0.25f, 1.0f, 0.25f)},
    {"all negative", given(-1.0f, -0.5f, -0.125f)},
    {"large", given(7.5f, -3.25f, 100.0f)},
    {"ties", given(2451.0f / 8192, -4807.0f / 8192, 935.0f / 8192)},
    {"tiny", given(1e-4f, 2e-4f, 3e-5f)},
};

// ================================================================================================
// YCC, every member
// ================================================================================================

class YccMemberTest : public ::testing::TestWithParam<YccMember> {};

TEST_P(YccMemberTest, RandomPixelsFollowTheModel)
{
    const YccMember& m = GetParam();
    std::mt19937 gen(11);
    for (KelImageSize size : {KelImageSize{1, 1}, KelImageSize{2, 1}, KelImageSize{7, 3}, KelImageSize{67, 5},
                              KelImageSize{300, 20}}) {
        const Placement placement = size.width % 2 ? Placement::Fenced : Placement::Guarded;
        Image src = imageOf(m.type, m.pitch, size.width, size.height, placement),
              dst = imageOf(m.type, m.pitch, size.width, size.height, placement);
        src.fill(size.height);  // the fourth elements random too
        dst.fill(size.width);
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x) setPixel(src, m.type, m.pitch, x, y, randomPixel(m.type, gen));
        if (!runYcc(m, src, dst, size.width, size.height, std::to_string(size.width) + "x" + std::to_string(size.height)))
            return;
    }
}

TEST_P(YccMemberTest, ExtremesGraysAndPrimariesFollowTheModel)
{
    runYccPixels(GetParam(), extremePixels(GetParam().type), "extremes, grays, primaries");
}

// Whatever the destination holds, three elements of each pixel are the
// model's and the fourth stays as it was.
TEST_P(YccMemberTest, OnlyThreeElementsOfEachPixelAreWritten)
{
    const YccMember& m = GetParam();
    for (std::uint8_t fill : {0x00, 0xFF, 0x7F}) {
        Image src = imageOf(m.type, m.pitch, 9, 2), dst = imageOf(m.type, m.pitch, 9, 2);
        std::mt19937 gen(fill);
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < 9; ++x) setPixel(src, m.type, m.pitch, x, y, randomPixel(m.type, gen));
        dst.fillWith(fill);
        if (!runYcc(m, src, dst, 9, 2, "destination filled with " + std::to_string(fill))) return;
    }
}

TEST_P(YccMemberTest, NullPointersBeforeSizeAndNothingWritten)
{
    const YccMember& m = GetParam();
    Image src = imageOf(m.type, m.pitch, 3, 2), dst = imageOf(m.type, m.pitch, 3, 2);
    src.fill(3);
    expectArgumentOrder(byImage(m.call), src, dst, {3, 2}, {1, 1}, false, Strides::Unseen);
}

// Both steps 0: every row reads the first source row and writes the first
// destination row, whose pixels come out as the model says.
TEST_P(YccMemberTest, ZeroStepsReadAndWriteOneRow)
{
    const YccMember& m = GetParam();
    const int width = 5, height = 4;
    Image src = imageOf(m.type, m.pitch, width, height), dst = imageOf(m.type, m.pitch, width, height);
    std::mt19937 gen(21);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) setPixel(src, m.type, m.pitch, x, y, randomPixel(m.type, gen));
    dst.fill(22);
    const auto before = dst.rows();
    ASSERT_EQ(kelOk, m.call(src.arg(), 0, dst.arg(), 0, {width, height}));
    const std::size_t rowBytes = static_cast<std::size_t>(width) * m.pitch * bytesOf(m.type);
    const auto after = dst.rows();
    EXPECT_TRUE(std::equal(before.begin() + rowBytes, before.end(), after.begin() + rowBytes)) << "rows below the first";
    for (int x = 0; x < width; ++x) {
        const Px want = yccModel(m, pixelAt(src, m.type, m.pitch, x, 0)), got = pixelAt(dst, m.type, m.pitch, x, 0);
        for (int c = 0; c < 3; ++c) EXPECT_TRUE(same(want[c], got[c])) << x << ", channel " << c;
    }
    EXPECT_TRUE(dst.intact());
}

// A byte step that is not a whole number of samples is cut down to one by an
// arithmetic shift (downward for a negative step). `pitchIn` and `pitchOut`
// samples a pixel; `check` compares a destination pixel with its source.
template <typename Check>
void expectStepsCut(Type type, int pitchIn, int pitchOut, int outSamples, const std::function<KelResult(const void*, int, void*, int, KelImageSize)>& call,
                    Check check)
{
    const int bytes = bytesOf(type);
    const int width = 3, height = 4;
    const int inRow = width * pitchIn * bytes, outRow = width * pitchOut * bytes;
    for (int extra : {0, 1, 2, 3, 5}) {
        for (bool upward : {false, true}) {
            const int sign = upward ? -1 : 1;
            const int srcStep = (inRow + 3 * bytes + extra) * sign, dstStep = (outRow + 2 * bytes + extra) * sign;
            const int srcWalk = (srcStep >> shiftOf(type)) * bytes, dstWalk = (dstStep >> shiftOf(type)) * bytes;
            const int srcSpan = std::abs(srcWalk) * (height - 1) + inRow, dstSpan = std::abs(dstWalk) * (height - 1) + outRow;
            std::vector<std::uint8_t> src(srcSpan + 64), dst(dstSpan + 64, 0xC3);
            std::mt19937 gen(extra * 2 + upward);
            for (auto& b : src) b = static_cast<std::uint8_t>(gen());
            // Row 0 at the top for a downward walk, at the bottom for an upward one.
            const std::size_t srcFirst = upward ? std::abs(srcWalk) * (height - 1) : 0;
            const std::size_t dstFirst = upward ? std::abs(dstWalk) * (height - 1) : 0;
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x) {
                    const Px p = randomPixel(type, gen);
                    for (int c = 0; c < 3; ++c)
                        storeSample(type, &src[srcFirst + static_cast<std::ptrdiff_t>(srcWalk) * y + (x * pitchIn + c) * bytes], p[c]);
                }
            const auto srcBefore = src;
            auto expected = dst;
            ASSERT_EQ(kelOk, call(src.data() + srcFirst, srcStep, dst.data() + dstFirst, dstStep, {width, height}))
                << "steps " << srcStep << ", " << dstStep;
            EXPECT_EQ(srcBefore, src);
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x) {
                    const std::ptrdiff_t in = srcFirst + static_cast<std::ptrdiff_t>(srcWalk) * y + x * pitchIn * bytes;
                    const std::ptrdiff_t out = dstFirst + static_cast<std::ptrdiff_t>(dstWalk) * y + x * pitchOut * bytes;
                    Px p, got;
                    for (int c = 0; c < 3; ++c) {
                        p[c] = load(type, &src[in + c * bytes]);
                        got[c] = c < outSamples ? load(type, &dst[out + c * bytes]) : 0;
                    }
                    ASSERT_TRUE(check(p, got)) << "steps " << srcStep << ", " << dstStep << " pixel " << x << ", " << y
                                               << ": " << show(p) << " gave " << show(got);
                    std::memcpy(&expected[out], &dst[out], outSamples * bytes);  // what the call may write
                }
            EXPECT_EQ(expected, dst) << "bytes outside the pixels, steps " << srcStep << ", " << dstStep;
        }
    }
}

TEST_P(YccMemberTest, StepsInBytesAreCutToWholeSamples)
{
    const YccMember& m = GetParam();
    expectStepsCut(m.type, m.pitch, m.pitch, 3, m.call, [&m](const Px& in, const Px& got) {
        const Px want = yccModel(m, in);
        return same(want[0], got[0]) && same(want[1], got[1]) && same(want[2], got[2]);
    });
}

// Sizes below, at and above the 64 x 64 threshold give the bytes of one
// thread with teams of 2 to 5, and nothing past the last row is touched.
TEST_P(YccMemberTest, SameBytesForOneToFiveThreads)
{
    const YccMember& m = GetParam();
    for (KelImageSize size : {KelImageSize{1, 1}, KelImageSize{3, 9}, KelImageSize{64, 64}, KelImageSize{65, 64},
                              KelImageSize{4097, 1}, KelImageSize{50, 101}}) {
        std::vector<std::uint8_t> serial;
        for (int threads = 1; threads <= 5; ++threads) {
            ThreadCount count(threads);
            Image src = imageOf(m.type, m.pitch, size.width, size.height, Placement::Fenced),
                  dst = imageOf(m.type, m.pitch, size.width, size.height, Placement::Fenced);
            std::mt19937 gen(size.width + size.height);
            for (int y = 0; y < size.height; ++y)
                for (int x = 0; x < size.width; ++x) setPixel(src, m.type, m.pitch, x, y, randomPixel(m.type, gen));
            dst.fill(9);
            ASSERT_EQ(kelOk, m.call(src.arg(), src.step(), dst.arg(), dst.step(), size));
            EXPECT_TRUE(dst.intact());
            if (threads == 1) serial = dst.rows();
            else ASSERT_EQ(serial, dst.rows()) << size.width << "x" << size.height << ", " << threads << " threads";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(YccGray, YccMemberTest, ::testing::ValuesIn(kYcc), memberName);

// ---- YCC floats: NaN, infinities, huge values ----

class YccFloat : public ::testing::TestWithParam<YccMember> {};

// Each bad value in each channel, with ordinary values, and in all three:
// the results are the model's (NaN where it gives NaN); the inverse's
// results are within 0..1 or NaN.
TEST_P(YccFloat, NaNInfinitiesAndHugeValuesFollowTheModel)
{
    const YccMember& m = GetParam();
    const std::vector<Px> list = badFloatPixels({0.25f, 0.5f, 0.75f});
    ASSERT_TRUE(runYccPixels(m, list, "bad floats", 16));
    if (m.stem == Stem::FromYCC) {  // so the member's results, equal to the model's, are clamped
        for (const Px& p : list)
            for (LD v : yccModel(m, p)) EXPECT_TRUE(std::isnan(v) || (v >= 0 && v <= 1)) << show(p);
    }
}

INSTANTIATE_TEST_SUITE_P(YccGray, YccFloat,
                         ::testing::ValuesIn(select(std::begin(kYcc), std::end(kYcc),
                                                    +[](const YccMember& m) { return m.type == Type::F32; })),
                         memberName);

// ---- YCC: every 8-bit pixel ----

class YccEveryBytePixel : public ::testing::TestWithParam<YccMember> {};

// All 2^24 inputs as one 4096 x 4096 image, checked against the model.
TEST_P(YccEveryBytePixel, FollowsTheModel)
{
    const YccMember& m = GetParam();
    const int side = 4096;
    Image src = imageOf(m.type, m.pitch, side, side), dst = imageOf(m.type, m.pitch, side, side);
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
    runYcc(m, src, dst, side, side, "every pixel");
}

INSTANTIATE_TEST_SUITE_P(YccGray, YccEveryBytePixel,
                         ::testing::ValuesIn(select(std::begin(kYcc), std::end(kYcc),
                                                    +[](const YccMember& m) { return m.type == Type::U8; })),
                         memberName);

// ================================================================================================
// Gray, every member
// ================================================================================================

class GrayMemberTest : public ::testing::TestWithParam<GrayMember> {};

// Sizes with odd and even widths (the 16-bit rows take pixels in pairs); for
// keliColorToGray every weight case, for keliRGBToGray the defaults whatever
// is at hand.
TEST_P(GrayMemberTest, RandomPixelsFollowTheModel)
{
    const GrayMember& m = GetParam();
    for (const WeightCase& wc : kWeightCases) {
        if (!m.takesWeights && wc.w.given) continue;  // nothing to hand over
        std::mt19937 gen(13);
        for (KelImageSize size : {KelImageSize{1, 1}, KelImageSize{2, 1}, KelImageSize{3, 2}, KelImageSize{7, 3},
                                  KelImageSize{67, 5}, KelImageSize{300, 20}}) {
            const Placement placement = size.width % 2 ? Placement::Fenced : Placement::Guarded;
            Image src = imageOf(m.type, m.pitch, size.width, size.height, placement),
                  dst = grayDst(m, size.width, size.height, placement);
            src.fill(size.height);  // alpha random too
            dst.fill(size.width);
            for (int y = 0; y < size.height; ++y)
                for (int x = 0; x < size.width; ++x) setPixel(src, m.type, m.pitch, x, y, randomPixel(m.type, gen));
            if (!runGray(m, wc.w, src, dst, size.width, size.height,
                         std::string(wc.name) + ", " + std::to_string(size.width) + "x" + std::to_string(size.height)))
                return;
        }
    }
}

TEST_P(GrayMemberTest, ExtremesGraysAndPrimariesFollowTheModel)
{
    const GrayMember& m = GetParam();
    for (const WeightCase& wc : kWeightCases)
        if ((m.takesWeights || !wc.w.given) && !runGrayPixels(m, wc.w, extremePixels(m.type), std::string("extremes, grays, primaries; ") + wc.name)) return;
}

// The alpha (fourth) sample of an AC4C1R source enters no sum: sources that
// differ only there give the same bytes.
class GrayAlpha : public ::testing::TestWithParam<GrayMember> {};

TEST_P(GrayAlpha, ChangesNothing)
{
    const GrayMember& m = GetParam();
    const int width = 19, height = 3;
    std::vector<std::uint8_t> first;
    for (int fill = 0; fill < 4; ++fill) {
        Image src = imageOf(m.type, m.pitch, width, height), dst = grayDst(m, width, height);
        src.fill(fill == 0 ? 1u : 100u + fill);  // the alpha of every pixel differs between the passes
        std::mt19937 gen(17);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) setPixel(src, m.type, m.pitch, x, y, randomPixel(m.type, gen));
        if (fill == 3) {
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x)
                    storeSample(m.type, sampleAt(src, m.type, m.pitch, x, y, 3),
                                m.type == Type::F32 ? std::numeric_limits<LD>::quiet_NaN() : lowest(m.type));
        }
        dst.fillWith(0x5A);
        ASSERT_TRUE(runGray(m, given(0.3f, -0.6f, 1.7f), src, dst, width, height, "alpha pass " + std::to_string(fill)));
        if (fill == 0) first = dst.rows();
        else EXPECT_EQ(first, dst.rows()) << "alpha pass " << fill;
    }
}

INSTANTIATE_TEST_SUITE_P(YccGray, GrayAlpha,
                         ::testing::ValuesIn(select(std::begin(kGray), std::end(kGray),
                                                    +[](const GrayMember& m) { return m.pitch == 4; })),
                         memberName);

TEST_P(GrayMemberTest, NullPointersBeforeSizeAndNothingWritten)
{
    const GrayMember& m = GetParam();
    for (const Weights& w : {kDefault, given(0.2f, 0.3f, 0.5f)}) {
        Image src = imageOf(m.type, m.pitch, 3, 2), dst = grayDst(m, 3, 2);
        src.fill(3);
        const Kel32f* weights = w.ptr();
        expectArgumentOrder(
            [&m, weights](Image& s, Image& d, KelImageSize z) { return m.call(s.arg(), s.step(), d.arg(), d.step(), z, weights); },
            src, dst, {3, 2}, {1, 1}, false, Strides::Unseen);
    }
}

TEST_P(GrayMemberTest, StepsInBytesAreCutToWholeSamples)
{
    const GrayMember& m = GetParam();
    for (const Weights& w : {kDefault, given(0.7f, -0.2f, 0.9f)}) {
        const Weights& used = m.takesWeights ? w : kDefault;
        expectStepsCut(
            m.type, m.pitch, 1, 1,
            [&m, &w](const void* s, int ss, void* d, int ds, KelImageSize z) { return m.call(s, ss, d, ds, z, w.ptr()); },
            [&m, &used](const Px& in, const Px& got) { return same(grayModel(m.type, used, in), got[0]); });
    }
}

// Gray runs on the calling thread: the team size changes nothing, above the
// YCC threshold as below.
TEST_P(GrayMemberTest, SameBytesForOneToFiveThreads)
{
    const GrayMember& m = GetParam();
    for (KelImageSize size : {KelImageSize{3, 9}, KelImageSize{64, 64}, KelImageSize{65, 64}, KelImageSize{4097, 1},
                              KelImageSize{50, 101}}) {
        std::vector<std::uint8_t> serial;
        for (int threads = 1; threads <= 5; ++threads) {
            ThreadCount count(threads);
            Image src = imageOf(m.type, m.pitch, size.width, size.height, Placement::Fenced),
                  dst = grayDst(m, size.width, size.height, Placement::Fenced);
            std::mt19937 gen(size.width + size.height);
            for (int y = 0; y < size.height; ++y)
                for (int x = 0; x < size.width; ++x) setPixel(src, m.type, m.pitch, x, y, randomPixel(m.type, gen));
            dst.fill(9);
            ASSERT_EQ(kelOk, m.call(src.arg(), src.step(), dst.arg(), dst.step(), size, given(0.4f, 0.4f, 0.3f).ptr()));
            EXPECT_TRUE(dst.intact());
            if (threads == 1) serial = dst.rows();
            else ASSERT_EQ(serial, dst.rows()) << size.width << "x" << size.height << ", " << threads << " threads";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(YccGray, GrayMemberTest, ::testing::ValuesIn(kGray), memberName);

// ---- gray floats ----

class GrayFloat : public ::testing::TestWithParam<GrayMember> {};

// NaN, infinities and huge values in the samples, with the defaults and
// caller weights, and in the weights: the results are the model's.
TEST_P(GrayFloat, NaNInfinitiesAndHugeValuesFollowTheModel)
{
    const GrayMember& m = GetParam();
    const float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
    const std::vector<Px> bad = badFloatPixels({0.25f, 0.5f, 0.75f});
    for (const Weights& w : {kDefault, given(0.5f, -2.0f, 3e38f)})
        ASSERT_TRUE(runGrayPixels(m, w, bad, "bad samples", 16));
    const std::vector<Px> ordinary = extremePixels(Type::F32);
    for (const Weights& w : {given(nan, 0.5f, 0.5f), given(0.1f, inf, 0.2f), given(-inf, inf, 0.0f), given(0.1f, 0.2f, -inf),
                             given(3e38f, 3e38f, 3e38f), given(-0.0f, -0.0f, -0.0f)}) {
        ASSERT_TRUE(runGrayPixels(m, w, ordinary, "bad weights", 16));
        ASSERT_TRUE(runGrayPixels(m, w, bad, "bad weights and samples", 16));
    }
}

INSTANTIATE_TEST_SUITE_P(YccGray, GrayFloat,
                         ::testing::ValuesIn(select(std::begin(kGray), std::end(kGray),
                                                    +[](const GrayMember& m) { return m.type == Type::F32; })),
                         memberName);

// ---- gray at 16 bits and floats: the weights are the 32-bit floats ----

class GrayFloatWeights : public ::testing::TestWithParam<GrayMember> {};

// Pixels on which the float weights 0.299, 0.587, 0.114 give another result
// than the decimals would (a sum next to a whole number, or a float's
// rounding edge): the member gives the float weights' result.
TEST_P(GrayFloatWeights, DefaultsAreTheFloatsNotTheDecimals)
{
    const GrayMember& m = GetParam();
    const auto decimal = [&m](Px p) {
        if (m.type == Type::S16)
            for (LD& v : p) v += 32768;
        const LD sum = (p[0] * 0.299L + p[1] * 0.587L) + p[2] * 0.114L;
        return m.type == Type::F32 ? toFloat(sum) : std::trunc(sum) - lowest(m.type);
    };
    std::mt19937 gen(61);
    std::vector<Px> differ;
    for (int i = 0; i < 4000000 && differ.size() < 200; ++i) {
        Px p = randomPixel(m.type, gen);
        if (i % 2) p = {p[0], p[0], p[0]};  // grays too
        if (grayModel(m.type, kDefault, p) != decimal(p)) differ.push_back(p);
    }
    ASSERT_GT(differ.size(), 20u) << "the float and decimal weights never part";
    runGrayPixels(m, m.takesWeights ? given(0.299f, 0.587f, 0.114f) : kDefault, differ, "float weights");
}

INSTANTIATE_TEST_SUITE_P(YccGray, GrayFloatWeights,
                         ::testing::ValuesIn(select(std::begin(kGray), std::end(kGray),
                                                    +[](const GrayMember& m) { return m.type != Type::U8; })),
                         memberName);

// ================================================================================================
// The worked values
// ================================================================================================

// One pixel through an AC4 member: the three results, the fourth element left as it was.
template <typename S, typename D>
Trio ac4Pixel(KelResult (*convert)(const S*, int, D*, int, KelImageSize), Trio in)
{
    const std::array<S, 4> src{S(in[0]), S(in[1]), S(in[2]), S(77)};
    std::array<D, 4> dst{D(1), D(2), D(3), D(99)};
    EXPECT_EQ(kelOk, convert(src.data(), 4 * sizeof(S), dst.data(), 4 * sizeof(D), {1, 1}));
    EXPECT_EQ(D(99), dst[3]) << "fourth element";
    return {int(dst[0]), int(dst[1]), int(dst[2])};
}
template <auto Fn> Trio viaAc4(Trio in) { return ac4Pixel(Fn, in); }
#define WORKED4(F) #F, viaAc4<F>

TEST(YccValues, WorkedValues)
{
    expectWorked({
        {WORKED(keliRGBToYCC_8u_C3R), {0, 0, 0}, {0, 156, 137}},
        {WORKED(keliRGBToYCC_8u_C3R), {255, 255, 255}, {181, 156, 137}},  // chroma at its offsets
        {WORKED(keliRGBToYCC_8u_C3R), {255, 0, 0}, {54, 122, 232}},
        {WORKED(keliRGBToYCC_8u_C3R), {0, 255, 0}, {106, 90, 57}},
        {WORKED(keliRGBToYCC_8u_C3R), {0, 0, 255}, {20, 254, 121}},
        {WORKED4(keliRGBToYCC_8u_AC4R), {255, 255, 255}, {181, 156, 137}},
        {WORKED4(keliRGBToYCC_8u_AC4R), {0, 0, 255}, {20, 254, 121}},
        {WORKED(keliYCCToRGB_8u_C3R), {181, 156, 137}, {245, 245, 245}},  // white comes back darker
        {WORKED(keliYCCToRGB_8u_C3R), {54, 122, 232}, {246, 0, 0}},
        {WORKED4(keliYCCToRGB_8u_AC4R), {54, 122, 232}, {246, 0, 0}},
        {WORKED(keliRGBToYCC_16u_C3R), {65535, 65535, 65535}, {46744, 40092, 35209}},
        {WORKED(keliRGBToYCC_16u_C3R), {0, 0, 0}, {0, 40092, 35209}},
        {WORKED4(keliRGBToYCC_16u_AC4R), {65535, 65535, 65535}, {46744, 40092, 35209}},
        {WORKED(keliYCCToRGB_16u_C3R), {46744, 40092, 35209}, {63497, 63497, 63497}},
        {WORKED4(keliYCCToRGB_16u_AC4R), {46744, 40092, 35209}, {63497, 63497, 63497}},
        {WORKED(keliRGBToYCC_16s_C3R), {-32768, -32768, -32768}, {-32768, 7324, 2441}},
        {WORKED4(keliRGBToYCC_16s_AC4R), {-32768, -32768, -32768}, {-32768, 7324, 2441}},
        {WORKED(keliYCCToRGB_16s_C3R), {-32768, 7324, 2441}, {-32768, -32768, -32768}},
        {WORKED4(keliYCCToRGB_16s_AC4R), {-32768, 7324, 2441}, {-32768, -32768, -32768}},
    });
}

// The round trips the worked values tell, each through two calls.
TEST(YccValues, RoundTripsThroughBothMembers)
{
    using B3 = std::array<Kel8u, 3>;
    using W3 = std::array<Kel16u, 3>;
    using S3 = std::array<Kel16s, 3>;
    EXPECT_EQ((B3{245, 245, 245}), convertPixel(keliYCCToRGB_8u_C3R, convertPixel(keliRGBToYCC_8u_C3R, B3{255, 255, 255})));
    EXPECT_EQ((B3{246, 0, 0}), convertPixel(keliYCCToRGB_8u_C3R, convertPixel(keliRGBToYCC_8u_C3R, B3{255, 0, 0})));
    EXPECT_EQ((B3{0, 0, 0}), convertPixel(keliYCCToRGB_8u_C3R, convertPixel(keliRGBToYCC_8u_C3R, B3{0, 0, 0})));
    EXPECT_EQ((W3{63497, 63497, 63497}),
              convertPixel(keliYCCToRGB_16u_C3R, convertPixel(keliRGBToYCC_16u_C3R, W3{65535, 65535, 65535})));
    EXPECT_EQ((W3{0, 0, 0}), convertPixel(keliYCCToRGB_16u_C3R, convertPixel(keliRGBToYCC_16u_C3R, W3{0, 0, 0})));
    EXPECT_EQ((S3{-32768, -32768, -32768}),
              convertPixel(keliYCCToRGB_16s_C3R, convertPixel(keliRGBToYCC_16s_C3R, S3{-32768, -32768, -32768})));
    // 16s white is 16u white moved: 63497 - 32768.
    EXPECT_EQ((S3{30729, 30729, 30729}),
              convertPixel(keliYCCToRGB_16s_C3R, convertPixel(keliRGBToYCC_16s_C3R, S3{32767, 32767, 32767})));
}

// Any pixel comes back as itself times 0.7132668 * 1.3584, a little below
// 0.969, within a few codes (the green share's decimals and the cuts).
TEST(YccValues, RoundTripsScaleByTheProductOfTheScales)
{
    const LD k = LD(0.7132668f) * LD(1.3584f);
    std::mt19937 gen(29);
    using W3 = std::array<Kel16u, 3>;
    using S3 = std::array<Kel16s, 3>;
    using F3 = std::array<Kel32f, 3>;
    for (int i = 0; i < 3000; ++i) {
        const W3 u{Kel16u(gen()), Kel16u(gen()), Kel16u(gen())};
        const W3 bu = convertPixel(keliYCCToRGB_16u_C3R, convertPixel(keliRGBToYCC_16u_C3R, u));
        const S3 s{Kel16s(u[0] - 32768), Kel16s(u[1] - 32768), Kel16s(u[2] - 32768)};
        const S3 bs = convertPixel(keliYCCToRGB_16s_C3R, convertPixel(keliRGBToYCC_16s_C3R, s));
        const F3 f{u[0] / 65535.0f, u[1] / 65535.0f, u[2] / 65535.0f};
        const F3 bf = convertPixel(keliYCCToRGB_32f_C3R, convertPixel(keliRGBToYCC_32f_C3R, f));
        for (int c = 0; c < 3; ++c) {
            ASSERT_NEAR(double(k * u[c]), double(bu[c]), 24.0) << u[0] << ", " << u[1] << ", " << u[2];
            ASSERT_NEAR(double(k * u[c]), double(bs[c] + 32768), 24.0) << u[0] << ", " << u[1] << ", " << u[2];
            ASSERT_NEAR(double(k * f[c]), double(bf[c]), 24.0 / 65535) << f[0] << ", " << f[1] << ", " << f[2];
        }
    }
}

// The 16s inverse is the 16u inverse moved by 32768: its chroma taken as
// C1 - 7324 and C2 - 2441 is the same difference. (The forward members are
// not: 16u alone sums the folded coefficients.)
TEST(YccValues, SixteenBitSignedInverseIsTheUnsignedMoved)
{
    using W3 = std::array<Kel16u, 3>;
    using S3 = std::array<Kel16s, 3>;
    std::mt19937 gen(41);
    for (int i = 0; i < 20000; ++i) {
        const W3 u{Kel16u(gen()), Kel16u(gen()), Kel16u(gen())};
        const S3 s{Kel16s(u[0] - 32768), Kel16s(u[1] - 32768), Kel16s(u[2] - 32768)};
        const W3 iu = convertPixel(keliYCCToRGB_16u_C3R, u);
        const S3 is = convertPixel(keliYCCToRGB_16s_C3R, s);
        for (int c = 0; c < 3; ++c) ASSERT_EQ(iu[c] - 32768, is[c]) << u[0] << ", " << u[1] << ", " << u[2];
    }
}

// ---- gray ----

const GrayMember& grayMember(bool takesWeights, Type type, int pitch)
{
    for (const GrayMember& m : kGray)
        if (m.takesWeights == takesWeights && m.type == type && m.pitch == pitch) return m;
    throw std::logic_error("no such gray member");
}

// One pixel (on the member's own scale) through a gray member; the alpha of
// an AC4C1R pixel is set to a value no formula should see.
LD grayOfOne(const GrayMember& m, Px in, const Weights& w)
{
    std::array<std::uint8_t, 16> src{}, dst{};
    dst.fill(0x5A);
    for (int c = 0; c < 3; ++c) storeSample(m.type, &src[c * bytesOf(m.type)], in[c]);
    if (m.pitch == 4) storeSample(m.type, &src[3 * bytesOf(m.type)], m.type == Type::S16 ? -12345 : 201);
    EXPECT_EQ(kelOk, m.call(src.data(), m.pitch * bytesOf(m.type), dst.data(), bytesOf(m.type), {1, 1}, w.ptr()));
    for (int i = bytesOf(m.type); i < 16; ++i) EXPECT_EQ(0x5A, dst[i]) << "byte " << i << " past the sample";
    return load(m.type, dst.data());
}

// Gray values derived by hand, each for the members named (with or without
// weights, type, layouts): the library gives them, and so does the model.
struct GrayCase {
    const char* what;
    bool takesWeights;
    Type type;
    Px in;
    Weights w;
    LD want;
};
const float kJustBelow = std::nextafter(0.5f, 0.0f) / 4096;
const GrayCase kGrayCases[] = {
    // White with the default weights: the 8-bit weights sum to 4096; the float
    // weights to a hair above 1, cut back to the top.
    {"white", false, Type::U8, {255, 255, 255}, kDefault, 255},
    {"white", false, Type::U16, {65535, 65535, 65535}, kDefault, 65535},
    {"white", false, Type::S16, {32767, 32767, 32767}, kDefault, 32767},
    {"white", false, Type::F32, {1, 1, 1}, kDefault, 1},
    {"white, null", true, Type::U8, {255, 255, 255}, kDefault, 255},
    {"white, null", true, Type::U16, {65535, 65535, 65535}, kDefault, 65535},
    {"white, null", true, Type::S16, {32767, 32767, 32767}, kDefault, 32767},
    {"white, the decimals", true, Type::U8, {255, 255, 255}, given(0.299f, 0.587f, 0.114f), 255},
    {"white, the decimals", true, Type::U16, {65535, 65535, 65535}, given(0.299f, 0.587f, 0.114f), 65535},
    {"black", false, Type::U8, {0, 0, 0}, kDefault, 0},
    {"black", false, Type::S16, {-32768, -32768, -32768}, kDefault, -32768},
    // (2048 * 255 + 2048) >> 12.
    {"halves", true, Type::U8, {255, 1, 9}, given(0.5f, 0.5f, 0.0f), 128},
    // Weights past one: 3 * 4096 * 255 >> 12 is 765, whose low 8 bits are 253; no clamp.
    {"ones", true, Type::U8, {255, 255, 255}, given(1.0f, 1.0f, 1.0f), 253},
    // A negative sum: -4095 * 255 = -1044225, shifted, keeps 1 in its low byte
    // (not 0 by a clamp, nor 2 by a division toward zero).
    {"minus one", true, Type::U8, {255, 0, 0}, given(-1.0f, 0.0f, 0.0f), 1},
    // -0.5 gives -2048 + 0.5 cut toward zero, -2047, which 2047 / 4096 cancels: 0 (not 255).
    {"minus a half", true, Type::U8, {1, 1, 0}, given(-0.5f, 2047.0f / 4096, 0.0f), 0},
    // The float just below 1/8192 gives 4096 w + 0.5 just below 1 in the
    // extended type, so 0 (a float sum would round it to 1): 4095 * 255 >> 12.
    {"just below a half unit", true, Type::U8, {255, 255, 0}, given(kJustBelow, 4095.0f / 4096, 0.0f), 254},
    {"a half unit", true, Type::U8, {255, 255, 0}, given(1.0f / 8192, 4095.0f / 4096, 0.0f), 255},
    // 16 bits: cut toward zero, the low 16 bits stored.
    {"two", true, Type::U16, {65535, 0, 0}, given(2.0f, 0.0f, 0.0f), 65534},
    {"minus a half", true, Type::U16, {65535, 0, 0}, given(-0.5f, 0.0f, 0.0f), 32769},  // -32767
    {"ones", true, Type::U16, {65535, 65535, 0}, given(1.0f, 1.0f, 0.0f), 65534},
    {"two", true, Type::S16, {32767, -32768, -32768}, given(2.0f, 0.0f, 0.0f), 32766},
    {"minus a half", true, Type::S16, {32767, -32768, -32768}, given(-0.5f, 0.0f, 0.0f), 1},
    {"two", true, Type::F32, {0.75f, 0.5f, 0.25f}, given(2.0f, 0.0f, 1.0f), 1.75f},
};

TEST(GrayValues, WorkedValuesInBothLayouts)
{
    for (const GrayCase& g : kGrayCases)
        for (int pitch : {3, 4}) {
            const GrayMember& m = grayMember(g.takesWeights, g.type, pitch);
            EXPECT_EQ(g.want, grayOfOne(m, g.in, g.w)) << m.name << ", " << g.what << ", " << show(g.in);
        }
}

// Whole images: keliColorToGray with null weights is keliRGBToGray at every
// type and layout, and at 8u so are the weights 0.299, 0.587, 0.114.
TEST(GrayValues, NullWeightsAndTheDefaultDecimalsAreTheFixedMember)
{
    struct Pair {
        const char* name;
        Type type;
        int pitch;
        GrayCall fixed, withWeights;
        bool decimalsToo;
    };
    const Pair pairs[] = {
        {"8u_C3C1R", Type::U8, 3, grayMember(false, Type::U8, 3).call, grayMember(true, Type::U8, 3).call, true},
        {"8u_AC4C1R", Type::U8, 4, grayMember(false, Type::U8, 4).call, grayMember(true, Type::U8, 4).call, true},
        {"16u_C3C1R", Type::U16, 3, grayMember(false, Type::U16, 3).call, grayMember(true, Type::U16, 3).call, false},
        {"16u_AC4C1R", Type::U16, 4, grayMember(false, Type::U16, 4).call, grayMember(true, Type::U16, 4).call, false},
        {"16s_C3C1R", Type::S16, 3, grayMember(false, Type::S16, 3).call, grayMember(true, Type::S16, 3).call, false},
        {"16s_AC4C1R", Type::S16, 4, grayMember(false, Type::S16, 4).call, grayMember(true, Type::S16, 4).call, false},
        {"32f_C3C1R", Type::F32, 3, grayMember(false, Type::F32, 3).call, grayMember(true, Type::F32, 3).call, false},
        {"32f_AC4C1R", Type::F32, 4, grayMember(false, Type::F32, 4).call, grayMember(true, Type::F32, 4).call, false},
    };
    const int width = 61, height = 7;
    for (const Pair& p : pairs) {
        Image src = imageOf(p.type, p.pitch, width, height);
        src.fill(width);
        std::mt19937 gen(3);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) setPixel(src, p.type, p.pitch, x, y, randomPixel(p.type, gen));
        Image a = imageOf(p.type, 1, width, height), b = imageOf(p.type, 1, width, height);
        a.fill(1);
        b.fill(2);
        ASSERT_EQ(kelOk, p.fixed(src.arg(), src.step(), a.arg(), a.step(), {width, height}, nullptr)) << p.name;
        ASSERT_EQ(kelOk, p.withWeights(src.arg(), src.step(), b.arg(), b.step(), {width, height}, nullptr)) << p.name;
        EXPECT_EQ(a.rows(), b.rows()) << p.name << ", null weights";
        if (p.decimalsToo) {
            b.fill(3);
            ASSERT_EQ(kelOk, p.withWeights(src.arg(), src.step(), b.arg(), b.step(), {width, height},
                                           given(0.299f, 0.587f, 0.114f).ptr()));
            EXPECT_EQ(a.rows(), b.rows()) << p.name << ", 0.299, 0.587, 0.114";
        }
        EXPECT_TRUE(a.intact() && b.intact());
    }
}

// ================================================================================================
// The model against the documented numbers (no call of the library)
// ================================================================================================

TEST(YccGrayModel, ConstantsAsDerived)
{
    EXPECT_EQ(0x3EFFFFDEu, std::bit_cast<std::uint32_t>(kC));
    EXPECT_EQ(4898, kLuma14[0]);
    EXPECT_EQ(9617, kLuma14[1]);
    EXPECT_EQ(1867, kLuma14[2]);
    EXPECT_EQ(16382, kLuma14[0] + kLuma14[1] + kLuma14[2]);
    EXPECT_EQ(2921, kYScale12);
    EXPECT_EQ(1789, kC1Scale12);
    EXPECT_EQ(2178, kC2Scale12);
    EXPECT_EQ(5564, kInvY12);
    EXPECT_EQ(9084, kInvC1_12);
    EXPECT_EQ(7460, kInvC2_12);
    EXPECT_EQ(794, kGreenC1_12);
    EXPECT_EQ(2084, kGreenC2_12);
    EXPECT_EQ(1417104, kOff1 * kInvC1_12);
    EXPECT_EQ(1022020, kOff2 * kInvC2_12);
    EXPECT_EQ(40092, kCentre1);
    EXPECT_EQ(35209, kCentre2);
    EXPECT_EQ(7324, kCentre1 - 32768);
    EXPECT_EQ(2441, kCentre2 - 32768);
    EXPECT_EQ(kFloatCentre1, static_cast<float>(156.0L / 255));
    EXPECT_EQ(kFloatCentre2, static_cast<float>(137.0L / 255));
    // The folded 16u coefficients are the luma weights times the scales.
    const LD w[3] = {0.299L, 0.587L, 0.114L};
    const LD yFolded[3] = {F(0.213267f), F(0.418688f), F(0.0813124f)};
    const LD c1Folded[3] = {F(-0.130621f), F(-0.256437f), F(0.387058f)};
    const LD c2Folded[3] = {F(0.372876f), F(-0.312237f), F(-0.0606389f)};
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(double(w[i] * 0.7132668L), double(yFolded[i]), 1e-6) << i;
        EXPECT_NEAR(double(((i == 2) - w[i]) * 0.43686L), double(c1Folded[i]), 1e-6) << i;
        EXPECT_NEAR(double(((i == 0) - w[i]) * 0.53192L), double(c2Folded[i]), 1e-6) << i;
    }
    // The default 8-bit gray weights are the float decimals rounded as a caller's are.
    EXPECT_EQ(kGray12[0], weight12(0.299f));
    EXPECT_EQ(kGray12[1], weight12(0.587f));
    EXPECT_EQ(kGray12[2], weight12(0.114f));
    EXPECT_EQ(4096, kGray12[0] + kGray12[1] + kGray12[2]);
}

TEST(YccGrayModel, TheWorkedValues)
{
    using I3 = std::array<int, 3>;
    EXPECT_EQ((I3{0, 156, 137}), rgbToYcc8u(0, 0, 0));
    EXPECT_EQ((I3{181, 156, 137}), rgbToYcc8u(255, 255, 255));
    EXPECT_EQ((I3{54, 122, 232}), rgbToYcc8u(255, 0, 0));
    EXPECT_EQ((I3{106, 90, 57}), rgbToYcc8u(0, 255, 0));
    EXPECT_EQ((I3{20, 254, 121}), rgbToYcc8u(0, 0, 255));
    EXPECT_EQ((I3{245, 245, 245}), yccToRgb8u(181, 156, 137));
    EXPECT_EQ((I3{246, 0, 0}), yccToRgb8u(54, 122, 232));
    EXPECT_EQ((Px{46744, 40092, 35209}), rgbToYcc16u({65535, 65535, 65535}));
    EXPECT_EQ((Px{0, 40092, 35209}), rgbToYcc16u({0, 0, 0}));
    EXPECT_EQ((Px{63497, 63497, 63497}), yccToRgb16u({46744, 40092, 35209}));
    EXPECT_EQ((Px{-32768, 7324, 2441}), rgbToYcc16s({-32768, -32768, -32768}));
    EXPECT_EQ((Px{-32768, -32768, -32768}), yccToRgb16s({-32768, 7324, 2441}));
    EXPECT_EQ(255, gray8u(kDefault, 255, 255, 255));
    EXPECT_EQ(65535, gray16(kDefault, {65535, 65535, 65535}));
    EXPECT_EQ(32767, gray16s(kDefault, {32767, 32767, 32767}));
    EXPECT_EQ(128, gray8u(given(0.5f, 0.5f, 0.0f), 255, 1, 9));
    EXPECT_EQ(1225, weight12(0.299f));
    for (const GrayCase& g : kGrayCases)
        EXPECT_EQ(g.want, grayModel(g.type, g.w, g.in)) << g.what << ", " << show(g.in);
}

// Over every 8-bit input the forward results stay in the documented ranges
// (Y 0..181, C1 57..254, C2 41..232), so keeping the low 8 bits never
// changes a chroma, and the inverse's levels stay within -346 .. 565.
TEST(YccGrayModel, EightBitRanges)
{
    std::array<int, 3> lo{999, 999, 999}, hi{-999, -999, -999}, levelLo = lo, levelHi = hi;
    for (int i = 0; i < (1 << 24); ++i) {
        const int a = i >> 16, b = (i >> 8) & 255, c = i & 255;
        const auto f = rgbToYcc8uWide(a, b, c);
        const auto v = yccToRgb8uLevels(a, b, c);
        for (int k = 0; k < 3; ++k) {
            lo[k] = std::min(lo[k], f[k]);
            hi[k] = std::max(hi[k], f[k]);
            levelLo[k] = std::min(levelLo[k], v[k]);
            levelHi[k] = std::max(levelHi[k], v[k]);
        }
    }
    EXPECT_EQ((std::array<int, 3>{0, 57, 41}), lo);
    EXPECT_EQ((std::array<int, 3>{181, 254, 232}), hi);
    EXPECT_EQ(-346, *std::min_element(levelLo.begin(), levelLo.end()));
    EXPECT_EQ(565, *std::max_element(levelHi.begin(), levelHi.end()));
}

} // namespace

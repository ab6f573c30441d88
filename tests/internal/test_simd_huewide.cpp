// The vector rows of the wider hue conversions (HSV at 16u, HLS at 16u, 16s
// and 32f) against the extended scalar kernels, byte for byte, on every SIMD
// target this processor runs: random and structured rows at every width up
// to 70 and a few wide ones, in place, and sweeps of millions of pixels per
// conversion (a long sweep of 10^8 too, outside CI).  What lies past the row
// and in a four-channel pixel's fourth element stays as it was.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "fallbacks.h"
#include "kelcc.h"
#include "mskcolor.h"
#include "mskcolorwidesimd.h"
#include "support/targets.h"

namespace {

using namespace kel::hue;

// ---- the members -------------------------------------------------------------

template <typename T>
using Public = KelResult (*)(const T*, int, T*, int, KelImageSize);

template <typename T>
struct Member {
    using Sample = T;
    const char* name;
    HueConversion conversion;
    int pitch;
    HueKernel<T> kernel;
    Public<T> function;
};

template <typename T>
HueRowWide<T> rowOf(const Member<T>& m)
{
    if constexpr (std::is_same_v<T, Kel16u>) return chooseHueRow16u(m.conversion, m.pitch);
    else if constexpr (std::is_same_v<T, Kel16s>) return chooseHueRow16s(m.conversion, m.pitch);
    else return chooseHueRow32f(m.conversion, m.pitch);
}

using C = HueConversion;

const std::vector<Member<Kel16u>>& members16u()
{
    static const std::vector<Member<Kel16u>> all = {
        {"RGBToHSV_16u_C3R", C::RGBToHSV, 3, innerRGBToHSV_16u_C3R, keliRGBToHSV_16u_C3R},
        {"RGBToHSV_16u_AC4R", C::RGBToHSV, 4, innerRGBToHSV_16u_C3R, keliRGBToHSV_16u_AC4R},
        {"HSVToRGB_16u_C3R", C::HSVToRGB, 3, innerHSVToRGB_16u_C3R, keliHSVToRGB_16u_C3R},
        {"HSVToRGB_16u_AC4R", C::HSVToRGB, 4, innerHSVToRGB_16u_C3R, keliHSVToRGB_16u_AC4R},
        {"RGBToHLS_16u_C3R", C::RGBToHLS, 3, innerRGBToHLS_16u_C3R, keliRGBToHLS_16u_C3R},
        {"RGBToHLS_16u_AC4R", C::RGBToHLS, 4, innerRGBToHLS_16u_C3R, keliRGBToHLS_16u_AC4R},
        {"HLSToRGB_16u_C3R", C::HLSToRGB, 3, innerHLSToRGB_16u_C3R, keliHLSToRGB_16u_C3R},
        {"HLSToRGB_16u_AC4R", C::HLSToRGB, 4, innerHLSToRGB_16u_C3R, keliHLSToRGB_16u_AC4R},
    };
    return all;
}

const std::vector<Member<Kel16s>>& members16s()
{
    static const std::vector<Member<Kel16s>> all = {
        {"RGBToHLS_16s_C3R", C::RGBToHLS, 3, innerRGBToHLS_16s_C3R, keliRGBToHLS_16s_C3R},
        {"RGBToHLS_16s_AC4R", C::RGBToHLS, 4, innerRGBToHLS_16s_C3R, keliRGBToHLS_16s_AC4R},
        {"HLSToRGB_16s_C3R", C::HLSToRGB, 3, innerHLSToRGB_16s_C3R, keliHLSToRGB_16s_C3R},
        {"HLSToRGB_16s_AC4R", C::HLSToRGB, 4, innerHLSToRGB_16s_C3R, keliHLSToRGB_16s_AC4R},
    };
    return all;
}

const std::vector<Member<Kel32f>>& members32f()
{
    static const std::vector<Member<Kel32f>> all = {
        {"RGBToHLS_32f_C3R", C::RGBToHLS, 3, innerRGBToHLS_32f_C3R, keliRGBToHLS_32f_C3R},
        {"RGBToHLS_32f_AC4R", C::RGBToHLS, 4, innerRGBToHLS_32f_C3R, keliRGBToHLS_32f_AC4R},
        {"HLSToRGB_32f_C3R", C::HLSToRGB, 3, innerHLSToRGB_32f_C3R, keliHLSToRGB_32f_C3R},
        {"HLSToRGB_32f_AC4R", C::HLSToRGB, 4, innerHLSToRGB_32f_C3R, keliHLSToRGB_32f_AC4R},
    };
    return all;
}

// Runs body(member) for every member of the three sample types.
template <typename Body>
void forEachMember(const Body& body)
{
    for (const auto& m : members16u()) body(m);
    for (const auto& m : members16s()) body(m);
    for (const auto& m : members32f()) body(m);
}

// ---- inputs ------------------------------------------------------------------------

// A colour of three samples; pixels are written into rows by fill().
template <typename T>
using Colour = std::array<T, 3>;

// Sample codes 0..65535 to the member's type: 16s moves them down by 32768.
template <typename T>
T fromCode(int code)
{
    return static_cast<T>(code - (std::is_same_v<T, Kel16s> ? 32768 : 0));
}

// Random bits as a float: every class of float (NaN, infinities, huge,
// negative, denormal) turns up.
float anyFloat(std::mt19937& gen)
{
    return std::bit_cast<float>(static_cast<std::uint32_t>(gen()));
}

// Mostly floats in 0..1, the common case, with a few of anything.
float mostlyUnit(std::mt19937& gen)
{
    const std::uint32_t pick = gen() % 64;
    if (pick == 0) return anyFloat(gen);
    if (pick == 1) return static_cast<float>(gen() % 4096) / 4095.0f;  // a coarse grid: ties and equal channels
    return std::uniform_real_distribution<float>(0.0f, 1.0f)(gen);
}

template <typename T>
Colour<T> randomColour(std::mt19937& gen)
{
    if constexpr (std::is_same_v<T, Kel32f>) return {mostlyUnit(gen), mostlyUnit(gen), mostlyUnit(gen)};
    else return {static_cast<T>(gen()), static_cast<T>(gen()), static_cast<T>(gen())};
}

// Structured colours of integer samples (as codes): grays, primaries and
// secondaries, extremes, equal and nearly equal channels, every hue at a few
// saturations and values, lightness and value around the middle.
std::vector<Colour<int>> structuredCodes(std::mt19937& gen)
{
    std::vector<Colour<int>> out;
    const int K = 65535;
    const int levels[] = {0, 1, 2, 3, 127, 128, 255, 256, 21845, 32766, 32767, 32768, 32769, 43690, 65279, 65533, 65534, K};
    for (int a : levels)
        for (int b : levels)
            for (int c : levels) out.push_back({a, b, c});
    // Small cubes: equal channels and differences of 1 and 2 everywhere.
    for (int base : {0, 1000, 21843, 32764, 43688, 65531, static_cast<int>(gen() % 65520)})
        for (int a = 0; a < 5; ++a)
            for (int b = 0; b < 5; ++b)
                for (int c = 0; c < 5; ++c) out.push_back({base + a, base + b, base + c});
    // Every first channel (a hue, or a red) against a few pairs.
    for (int s : {1, 2, 32767, 32768, 65534, K})
        for (int v : {1, 255, 32767, 32768, K}) {
            const int stride = (s == 32768 && v == K) || (s == K && v == 32768) ? 1 : 97;
            for (int h = 0; h <= K; h += stride) out.push_back({h, s, v});
        }
    for (int i = 0; i < 20000; ++i) {
        const int v = static_cast<int>(gen() % 65536), d = static_cast<int>(gen() % 8);
        out.push_back({v, std::min(K, v + d), std::max(0, v - d)});
    }
    return out;
}

// Structured floats: zeros of both signs, 1, values a hair apart (2^-23 and
// its neighbours), grays, the coarse grid's ties, denormals, and the values
// outside 0..1 (negative, above 1, huge, infinite, NaN).
std::vector<Colour<Kel32f>> structuredFloats(std::mt19937& gen)
{
    std::vector<Colour<Kel32f>> out;
    const float eps = 0x1p-23f;
    const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
    const float levels[] = {0.0f, -0.0f, 1.0f, 0.5f, 0.25f, 0.75f, 1.0f / 3, 2.0f / 3, 1.0f / 6, 0x1p-149f, 0x1p-126f,
                            0x1p-24f, eps, 2 * eps, 1 - eps, 1 - 2 * eps, 0.5f + eps, 0.5f - eps / 2, 1e-30f,
                            std::nextafter(1.0f, 2.0f), -eps, -1.0f, 2.0f, 1e30f, inf, -inf, nan};
    for (float a : levels)
        for (float b : levels)
            for (float c : levels) out.push_back({a, b, c});
    for (int i = 0; i < 30000; ++i) {
        const float v = std::uniform_real_distribution<float>(0.0f, 1.0f)(gen);
        const int steps = static_cast<int>(gen() % 5);
        float w = v;
        for (int s = 0; s < steps; ++s) w = std::nextafter(w, 2.0f);
        const float offsets[] = {0.0f, eps, 2 * eps, eps / 2};
        const float u = v + offsets[gen() % 4];
        out.push_back({v, w, u});
        out.push_back({u, v, w});
        out.push_back({v, v, w});
    }
    // The coarse grid: sums of two channels that are float midpoints, equal
    // channels, ratios of small integers.
    for (int i = 0; i < 30000; ++i)
        out.push_back({static_cast<float>(gen() % 256) / 255.0f, static_cast<float>(gen() % 256) / 255.0f,
                       static_cast<float>(gen() % 256) / 255.0f});
    for (int i = 0; i < 3000; ++i) out.push_back({anyFloat(gen), anyFloat(gen), anyFloat(gen)});
    return out;
}

template <typename T>
std::vector<Colour<T>> structuredColours(std::mt19937& gen)
{
    if constexpr (std::is_same_v<T, Kel32f>) {
        return structuredFloats(gen);
    } else {
        std::vector<Colour<T>> out;
        for (const auto& c : structuredCodes(gen)) out.push_back({fromCode<T>(c[0]), fromCode<T>(c[1]), fromCode<T>(c[2])});
        return out;
    }
}

// ---- rows ---------------------------------------------------------------------------

// One pixel-order row of `width` pixels and 37 random elements after it;
// every element random at first (the fourth channel too).
template <typename T>
struct Row {
    Row(int pitch, int width, std::mt19937& gen) : pitch(pitch), elements(static_cast<std::size_t>(pitch) * width + 37)
    {
        for (auto& e : elements) e = randomSample(gen);
    }
    static T randomSample(std::mt19937& gen)
    {
        if constexpr (std::is_same_v<T, Kel32f>) return anyFloat(gen);
        else return static_cast<T>(gen());
    }
    void put(std::size_t pixel, const Colour<T>& c)
    {
        for (int i = 0; i < 3; ++i) elements[pixel * pitch + i] = c[i];
    }
    bool sameBytes(const Row& other) const
    {
        return elements.size() == other.elements.size() &&
               std::memcmp(elements.data(), other.elements.data(), elements.size() * sizeof(T)) == 0;
    }
    // The first element whose bytes differ.
    std::size_t firstDifference(const Row& other) const
    {
        for (std::size_t i = 0; i < elements.size(); ++i)
            if (std::memcmp(&elements[i], &other.elements[i], sizeof(T)) != 0) return i;
        return elements.size();
    }
    int pitch;
    std::vector<T> elements;
};

// The vector row then the kernel for the rest, as the row layer runs them.
template <typename T>
std::int64_t fastThenKernel(const Member<T>& m, HueRowWide<T> fast, const T* src, T* dst, int width)
{
    std::int64_t refused = 0;
    const int done = fast != nullptr ? fast(src, dst, width, m.kernel, &refused) : 0;
    EXPECT_GE(done, 0);
    EXPECT_LE(done, width);
    m.kernel(src + static_cast<std::ptrdiff_t>(done) * m.pitch, dst + static_cast<std::ptrdiff_t>(done) * m.pitch,
             width - done, m.pitch);
    return refused;
}

template <typename T>
std::string describe(const Member<T>& m, const Row<T>& src, const Row<T>& want, const Row<T>& got)
{
    const std::size_t i = got.firstDifference(want);
    const std::size_t pixel = i / m.pitch;
    char text[256];
    if (pixel * m.pitch + 2 >= src.elements.size()) return "past the row at element " + std::to_string(i);
    const T* s = &src.elements[pixel * m.pitch];
    if constexpr (std::is_same_v<T, Kel32f>)
        std::snprintf(text, sizeof text, "pixel %zu (%a, %a, %a), element %zu: want %a, got %a", pixel, s[0], s[1], s[2],
                      i % m.pitch, want.elements[i], got.elements[i]);
    else
        std::snprintf(text, sizeof text, "pixel %zu (%d, %d, %d), element %zu: want %d, got %d", pixel, s[0], s[1], s[2],
                      i % m.pitch, want.elements[i], got.elements[i]);
    return text;
}

// The fast row against the kernel on one source row.
template <typename T>
void expectSameAsKernel(const Member<T>& m, const Row<T>& src, int width, std::mt19937& gen, const std::string& where)
{
    Row<T> fast(m.pitch, width, gen);
    Row<T> exact = fast;
    fastThenKernel(m, rowOf(m), src.elements.data(), fast.elements.data(), width);
    m.kernel(src.elements.data(), exact.elements.data(), width, m.pitch);
    ASSERT_TRUE(fast.sameBytes(exact)) << where << ", " << m.name << ", width " << width << ": "
                                       << describe(m, src, exact, fast);
}

// ---- tests --------------------------------------------------------------------------

TEST(SimdHueWide, EveryTargetHasARowForEveryMember)
{
    forEachMember([](const auto& m) {
        const auto chosen = kt::chosenOnEveryTarget([&] { return rowOf(m); });
#if KELCC_SIMD
        EXPECT_EQ(chosen.targets, chosen.distinct()) << m.name;
        EXPECT_EQ(0u, chosen.kernels.count(nullptr)) << m.name;
#else
        EXPECT_EQ(1u, chosen.kernels.count(nullptr)) << m.name;
#endif
    });
    EXPECT_EQ(nullptr, chooseHueRow16s(HueConversion::RGBToHSV, 3));
    EXPECT_EQ(nullptr, chooseHueRow32f(HueConversion::HSVToRGB, 4));
}

TEST(SimdHueWide, RandomRowsMatchTheKernelsAtEveryWidth)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        forEachMember([&](const auto& m) {
            using T = typename std::remove_cvref_t<decltype(m)>::Sample;
            for (int width : kt::simdTestWidths({1000})) {
                std::mt19937 gen(static_cast<std::uint32_t>(width * 7 + m.pitch));
                Row<T> src(m.pitch, width, gen);
                for (int x = 0; x < width; ++x) src.put(x, randomColour<T>(gen));
                expectSameAsKernel(m, src, width, gen, target);
            }
        });
    });
}

TEST(SimdHueWide, StructuredRowsMatchTheKernels)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        forEachMember([&](const auto& m) {
            using T = typename std::remove_cvref_t<decltype(m)>::Sample;
            std::mt19937 gen(11);
            const auto colours = structuredColours<T>(gen);
            const int width = static_cast<int>(colours.size());
            Row<T> src(m.pitch, width, gen);
            for (int x = 0; x < width; ++x) src.put(x, colours[x]);
            expectSameAsKernel(m, src, width, gen, target);
        });
    });
}

TEST(SimdHueWide, RowsInPlace)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        forEachMember([&](const auto& m) {
            using T = typename std::remove_cvref_t<decltype(m)>::Sample;
            std::mt19937 gen(3);
            const auto colours = structuredColours<T>(gen);
            for (int width : {1, 7, 8, 9, 16, 17, 63, 200, 5000}) {
                Row<T> image(m.pitch, width, gen);
                for (int x = 0; x < width; ++x)
                    image.put(x, x % 2 == 0 ? randomColour<T>(gen) : colours[gen() % colours.size()]);
                Row<T> exact = image;
                {
                    const Row<T> source = exact;
                    m.kernel(source.elements.data(), exact.elements.data(), width, m.pitch);
                }
                const Row<T> before = image;
                fastThenKernel(m, rowOf(m), image.elements.data(), image.elements.data(), width);
                ASSERT_TRUE(image.sameBytes(exact)) << target << ", " << m.name << ", width " << width << ": "
                                                    << describe(m, before, exact, image);
            }
        });
    });
}

// `total` pixels per three-channel member, random and structured, in rows of
// a million pixels: the kernel once, then the fast row on every target.
template <typename T>
void sweep(const Member<T>& m, std::int64_t total, std::uint32_t seed)
{
    constexpr int kWidth = 1 << 20;
    std::mt19937 gen(seed);
    const auto colours = structuredColours<T>(gen);
    std::int64_t refused = 0, converted = 0;
    for (std::int64_t done = 0; done < total; done += kWidth) {
        const int width = static_cast<int>(std::min<std::int64_t>(kWidth, total - done));
        Row<T> src(m.pitch, width, gen);
        for (int x = 0; x < width; ++x) src.put(x, x % 16 == 0 ? colours[gen() % colours.size()] : randomColour<T>(gen));
        Row<T> exact(m.pitch, width, gen);
        const Row<T> start = exact;
        m.kernel(src.elements.data(), exact.elements.data(), width, m.pitch);
        kt::forEachSimdTarget([&](const std::string& target) {
            Row<T> fast = start;
            refused += fastThenKernel(m, rowOf(m), src.elements.data(), fast.elements.data(), width);
            converted += width;
            ASSERT_TRUE(fast.sameBytes(exact)) << target << ", " << m.name << ": " << describe(m, src, exact, fast);
        });
        if (::testing::Test::HasFatalFailure()) return;
    }
    std::printf("%s: %lld pixels a target, %lld of %lld conversions by the extended kernel (%.2e)\n", m.name,
                static_cast<long long>(total), static_cast<long long>(refused), static_cast<long long>(converted),
                converted > 0 ? static_cast<double>(refused) / static_cast<double>(converted) : 0.0);
}

TEST(SimdHueWide, MillionsOfPixelsPerConversion)
{
    forEachMember([&](const auto& m) {
        if (m.pitch == 3) sweep(m, 3 << 20, 21);
    });
}

// 10^8 pixels per conversion: minutes, so not in CI (labelled `long`).
TEST(LongSweepHueWide, HundredMillionPixelsPerConversion)
{
    forEachMember([&](const auto& m) {
        if (m.pitch == 3) sweep(m, 100000000, 97);
    });
}

// A test build counts the pixels the fast rows hand to the extended kernels:
// on random inputs (floats in 0..1 for 32f) they stay rare.
TEST(SimdHueWide, FallbackRateOnRandomInputs)
{
#if KELCC_COUNT_FALLBACKS
    constexpr int kWidth = 1024, kHeight = 1024;
    forEachMember([&](const auto& m) {
        using T = typename std::remove_cvref_t<decltype(m)>::Sample;
        std::mt19937 gen(5);
        std::vector<T> src(static_cast<std::size_t>(kWidth) * kHeight * m.pitch), dst(src.size());
        for (auto& e : src) {
            if constexpr (std::is_same_v<T, Kel32f>) e = std::uniform_real_distribution<float>(0.0f, 1.0f)(gen);
            else e = static_cast<T>(gen());
        }
        const int step = static_cast<int>(kWidth * m.pitch * sizeof(T));
        ASSERT_EQ(kelOk, m.function(src.data(), step, dst.data(), step, {kWidth, kHeight}));
        const double rate = static_cast<double>(kel::lastCallFallbacks()) / (static_cast<double>(kWidth) * kHeight);
        std::printf("%s: fallback rate %.2e\n", m.name, rate);
        EXPECT_LE(rate, 1e-4) << m.name;
    });
#else
    GTEST_SKIP() << "fallbacks are counted only in a KELCC_COUNT_FALLBACKS build";
#endif
}

} // namespace

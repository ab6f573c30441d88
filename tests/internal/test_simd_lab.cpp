// The vector rows of the four Lab conversions against the extended kernels,
// byte for byte, on every SIMD target this processor runs: every width up to
// 70 and wide rows, unaligned and in place; every input of the three members
// with 8-bit input; structured and random 16-bit codes for the fourth (and a
// 10^8 sweep run by hand); the power's error bound; the refused share.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "ciepxsimd.h"
#include "fallbacks.h"
#include "kelcc.h"
#include "support/targets.h"

// The extended kernels (ciepx.cpp).
void innerBGRToLab_8u_C3R(const Kel8u* src, Kel8u* dst, int width);
void innerBGRToLab_8u16u_C3R(const Kel8u* src, Kel16u* dst, int width);
void innerLabToBGR_8u_C3R(const Kel8u* src, Kel8u* dst, int width);
void innerLabToBGR_16u8u_C3R(const Kel16u* src, Kel8u* dst, int width);

namespace {

using namespace kel::lab;

template <typename Src, typename Dst>
struct Member {
    const char* name;
    void (*kernel)(const Src*, Dst*, int);
    LabRow<Src, Dst> (*choose)();
};

const Member<Kel8u, Kel8u> kToLab8{"BGRToLab_8u", innerBGRToLab_8u_C3R, chooseBGRToLabRow8u};
const Member<Kel8u, Kel16u> kToLab16{"BGRToLab_8u16u", innerBGRToLab_8u16u_C3R, chooseBGRToLabRow8u16u};
const Member<Kel8u, Kel8u> kFromLab8{"LabToBGR_8u", innerLabToBGR_8u_C3R, chooseLabToBGRRow8u};
const Member<Kel16u, Kel8u> kFromLab16{"LabToBGR_16u8u", innerLabToBGR_16u8u_C3R, chooseLabToBGRRow16u8u};

// A row as the row layer converts it: the vector row's whole steps, then the
// kernel for the rest.  Returns the pixels the vector row refused.
template <typename Src, typename Dst>
std::int64_t convertRow(const Member<Src, Dst>& m, const Src* src, Dst* dst, int width)
{
    const LabRow<Src, Dst> row = m.choose();
    std::int64_t refused = 0;
    const int done = row != nullptr ? row(src, dst, width, &refused) : 0;
    EXPECT_GE(done, 0);
    EXPECT_LE(done, width);
    m.kernel(src + 3 * done, dst + 3 * done, width - done);
    return refused;
}

// Every 8-bit input of a member, a row of 4096 pixels for each 4096, through
// the vector rows of every target against the kernel; prints the refused
// pixels of each target.
template <typename Dst>
void everyByteInput(const Member<Kel8u, Dst>& m)
{
    constexpr int kWidth = 4096, kRows = 4096;
    std::vector<Kel8u> src(static_cast<std::size_t>(3) * kWidth * kRows);
    for (std::size_t i = 0; i < src.size() / 3; ++i) {
        src[3 * i] = static_cast<Kel8u>(i);
        src[3 * i + 1] = static_cast<Kel8u>(i >> 8);
        src[3 * i + 2] = static_cast<Kel8u>(i >> 16);
    }
    std::vector<Dst> want(src.size()), got(src.size());
    for (int y = 0; y < kRows; ++y) m.kernel(src.data() + 3 * kWidth * y, want.data() + 3 * kWidth * y, kWidth);
    kt::forEachSimdTarget([&](const std::string& target) {
        std::fill(got.begin(), got.end(), Dst{0x5A});
        std::int64_t refused = 0;
        for (int y = 0; y < kRows; ++y)
            refused += convertRow(m, src.data() + 3 * kWidth * y, got.data() + 3 * kWidth * y, kWidth);
        for (std::size_t i = 0; i < got.size(); ++i)
            ASSERT_EQ(want[i], got[i]) << m.name << ", " << target << ", pixel " << i / 3 << " (B, G, R or L, a, b = "
                                       << int(src[i - i % 3]) << ", " << int(src[i - i % 3 + 1]) << ", "
                                       << int(src[i - i % 3 + 2]) << "), channel " << i % 3;
        std::printf("%s, %s: %lld of 2^24 inputs refused\n", m.name, target.c_str(), static_cast<long long>(refused));
    });
}

TEST(SimdLab, EveryTargetHasRowsOfItsOwn)
{
    const auto count = [](auto choose) { return kt::chosenOnEveryTarget(choose); };
    for (const kt::ChosenKernels& chosen : {count(chooseBGRToLabRow8u), count(chooseBGRToLabRow8u16u),
                                            count(chooseLabToBGRRow8u), count(chooseLabToBGRRow16u8u)}) {
#if KELCC_SIMD
        EXPECT_EQ(chosen.targets, chosen.distinct());
#else
        EXPECT_EQ(1, chosen.targets);
#endif
    }
}

// y^p against the extended type's powl over [2^-8, 2): within the 10u
// (relative, u = 2^-53) the guards assume; exactly 1 at 1.
TEST(SimdLab, ThirdPowerStaysWithinItsBound)
{
#if !KELCC_SIMD
    GTEST_SKIP() << "no vector rows in this build";
#endif
    const double p = 0.3333333432674408;
    std::vector<double> y;
    std::mt19937_64 gen(5);
    for (int i = 0; i < 1 << 20; ++i) y.push_back(std::exp2(-8.0 + 9.0 * static_cast<double>(gen() >> 11) * 0x1p-53));
    for (double v : {0x1p-8, 0.008856f * 1.0, 0.5, 1.0, 2.0 - 0x1p-52, std::nextafter(1.0, 0.0),
                     std::nextafter(1.0, 2.0), 1.4142135623730951, std::nextafter(1.4142135623730951, 2.0),
                     0.7071067811865476, 0.125, 0.25})
        y.push_back(v);
    while (y.size() % 8 != 0) y.push_back(1.0);
    std::vector<long double> exact(y.size());
    for (std::size_t i = 0; i < y.size(); ++i)
        exact[i] = std::pow(static_cast<long double>(y[i]), static_cast<long double>(p));
    std::vector<double> got(y.size());
    kt::forEachSimdTarget([&](const std::string& target) {
        double worst = 0;
        for (std::size_t at = 0; at < y.size(); at += 4096) {
            const int count = static_cast<int>(std::min<std::size_t>(4096, y.size() - at));
            thirdPowerForTest(y.data() + at, got.data() + at, count);
        }
        for (std::size_t i = 0; i < y.size(); ++i) {
            const double error = static_cast<double>(std::fabs((got[i] - exact[i]) / exact[i])) * 0x1p53;
            worst = std::max(worst, error);
            ASSERT_LE(error, 10.0) << target << ", y = " << y[i];
        }
        thirdPowerForTest(std::vector<double>(8, 1.0).data(), got.data(), 8);
        EXPECT_EQ(1.0, got[0]) << target;
        std::printf("%s: largest error of the power %.2f u\n", target.c_str(), worst);
    });
}

// Rows of every width from 0 to 70 and wide ones, at odd byte offsets, on
// random pixels and on rows of one repeated value; the destination's bytes
// after the row must stay as they were.
template <typename Src, typename Dst>
void rowsMatch(const Member<Src, Dst>& m, const std::vector<Src>& specials)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        for (int width : kt::simdTestWidths({4099})) {
            std::mt19937 gen(static_cast<std::uint32_t>(width) * 31 + 7);
            for (int kind = 0; kind < 4; ++kind) {
                const std::size_t n = static_cast<std::size_t>(3) * width;
                // One sample of lead, so that no row starts on a vector boundary.
                std::vector<Src> src(n + 1);
                // Random samples, samples drawn from the specials, and rows of
                // one special value (black, and white or the largest code).
                for (std::size_t i = 0; i < src.size(); ++i)
                    src[i] = kind == 0 ? static_cast<Src>(gen())
                                       : specials[kind == 1 ? gen() % specials.size() : kind - 2];
                std::vector<Dst> want(n + 41), got(n + 41);
                for (auto& d : want) d = static_cast<Dst>(gen());
                got = want;
                m.kernel(src.data() + 1, want.data() + 1, width);
                convertRow(m, src.data() + 1, got.data() + 1, width);
                ASSERT_TRUE(want == got) << m.name << ", " << target << ", width " << width << ", rows of kind "
                                         << kind;
            }
        }
    });
}

TEST(SimdLab, RowsMatchTheKernelAtEveryWidth)
{
    const std::vector<Kel8u> bytes = {0, 255, 128, 1, 254, 2, 3, 127};
    const std::vector<Kel16u> words = {0, 65535, 32640, 32639, 32641, 1, 65534, 255};
    rowsMatch(kToLab8, bytes);
    rowsMatch(kToLab16, bytes);
    rowsMatch(kFromLab8, bytes);
    rowsMatch(kFromLab16, words);
}

// The two 8-bit to 8-bit members converted in place give the bytes they give
// between two buffers.
TEST(SimdLab, InPlaceRowsMatchTheKernel)
{
    for (const Member<Kel8u, Kel8u>* m : {&kToLab8, &kFromLab8}) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : kt::simdTestWidths()) {
                std::mt19937 gen(static_cast<std::uint32_t>(width));
                std::vector<Kel8u> src(static_cast<std::size_t>(3) * width + 40);
                for (auto& b : src) b = static_cast<Kel8u>(gen());
                std::vector<Kel8u> want = src, inPlace = src;
                m->kernel(src.data(), want.data(), width);
                convertRow(*m, inPlace.data(), inPlace.data(), width);
                ASSERT_TRUE(want == inPlace) << m->name << ", " << target << ", width " << width;
            }
        });
    }
}

// The per-pixel conversions the rows hand undecided pixels to write exactly
// the chosen pixels, as the kernel converts them.
template <typename Src, typename Dst>
void pixelsMatch(const Member<Src, Dst>& m, void (*pixels)(const Src*, Dst*, std::uint32_t))
{
    std::mt19937 gen(3);
    for (int k = 0; k < 200; ++k) {
        std::vector<Src> src(3 * 32);
        for (auto& v : src) v = static_cast<Src>(gen());
        const std::uint32_t which = k == 0 ? 0xFFFFFFFFu : static_cast<std::uint32_t>(gen());
        std::vector<Dst> want(src.size()), got(src.size());
        for (auto& d : got) d = static_cast<Dst>(gen());
        m.kernel(src.data(), want.data(), 32);
        const std::vector<Dst> before = got;
        pixels(src.data(), got.data(), which);
        for (int i = 0; i < 32; ++i)
            for (int c = 0; c < 3; ++c)
                ASSERT_EQ((which >> i & 1) != 0 ? want[3 * i + c] : before[3 * i + c], got[3 * i + c])
                    << m.name << ", pixel " << i << ", channel " << c;
    }
}

TEST(SimdLab, HandedBackPixelsAreConvertedExactly)
{
    pixelsMatch(kToLab8, bgrToLabPixels8u);
    pixelsMatch(kToLab16, bgrToLabPixels8u16u);
    pixelsMatch(kFromLab8, labToBGRPixels8u);
    pixelsMatch(kFromLab16, labToBGRPixels16u8u);
}

TEST(SimdLab, EveryColourToLab8u)
{
    everyByteInput(kToLab8);
}

TEST(SimdLab, EveryColourToLab8u16u)
{
    everyByteInput(kToLab16);
}

TEST(SimdLab, EveryLabCodeToBGR8u)
{
    everyByteInput(kFromLab8);
}

// 16-bit codes through the vector rows of every target against the kernel,
// rows of 4096 (the last one shorter).
std::int64_t codesMatch(const std::vector<Kel16u>& codes, const std::string& what)
{
    constexpr int kWidth = 4096;
    const int pixels = static_cast<int>(codes.size() / 3);
    std::vector<Kel8u> want(codes.size()), got(codes.size());
    for (int x = 0; x < pixels; x += kWidth)
        kFromLab16.kernel(codes.data() + 3 * x, want.data() + 3 * x, std::min(kWidth, pixels - x));
    std::int64_t refused = 0;
    kt::forEachSimdTarget([&](const std::string& target) {
        std::fill(got.begin(), got.end(), Kel8u{0x5A});
        for (int x = 0; x < pixels; x += kWidth)
            refused += convertRow(kFromLab16, codes.data() + 3 * x, got.data() + 3 * x, std::min(kWidth, pixels - x));
        for (std::size_t i = 0; i < got.size(); ++i)
            if (want[i] != got[i]) {
                const std::size_t p = i - i % 3;
                ADD_FAILURE() << what << ", " << target << ": L, a, b = " << codes[p] << ", " << codes[p + 1] << ", "
                              << codes[p + 2] << ", channel " << i % 3 << ": want " << int(want[i]) << ", got "
                              << int(got[i]);
                return;
            }
    });
    return refused;
}

// Lines through the code space along which every code of one channel is
// taken: each line crosses every truncation boundary of the colour sums it
// meets between two neighbouring codes.  The lines go through the ends and
// the neutral point 128 * 255 of a and b, L at 0 and 65535, and random places.
TEST(SimdLab, Inverse16uAlongLinesThroughEveryCode)
{
    std::vector<Kel16u> codes;
    std::mt19937 gen(16);
    const std::vector<int> lights = {0, 1, 6554, 32768, 65534, 65535};
    const std::vector<int> chromas = {0, 1, 32639, 32640, 32641, 65534, 65535};
    for (int along = 0; along < 3; ++along) {
        // The two channels that stay fixed on a line, in channel order.
        const int first = along == 0 ? 1 : 0, second = along == 2 ? 1 : 2;
        std::vector<std::pair<int, int>> places;
        for (int u : along == 0 ? chromas : lights)
            for (int v : chromas) places.push_back({u, v});
        for (int k = 0; k < 40; ++k)
            places.push_back({static_cast<int>(gen() % 65536), static_cast<int>(gen() % 65536)});
        for (const auto& [u, v] : places)
            for (int c = 0; c < 65536; ++c) {
                Kel16u pixel[3];
                pixel[along] = static_cast<Kel16u>(c);
                pixel[first] = static_cast<Kel16u>(u);
                pixel[second] = static_cast<Kel16u>(v);
                codes.insert(codes.end(), pixel, pixel + 3);
            }
    }
    const std::int64_t refused = codesMatch(codes, "line");
    std::printf("%zu codes on lines, %lld refused over all targets\n", codes.size() / 3,
                static_cast<long long>(refused));
}

// Eight million random codes, and every corner of the code cube with its
// neighbours.
TEST(SimdLab, Inverse16uRandomCodes)
{
    std::vector<Kel16u> codes;
    std::mt19937_64 gen(2048);
    for (int i = 0; i < 8 << 20; ++i) {
        const std::uint64_t g = gen();
        codes.push_back(static_cast<Kel16u>(g));
        codes.push_back(static_cast<Kel16u>(g >> 16));
        codes.push_back(static_cast<Kel16u>(g >> 32));
    }
    for (int l : {0, 1, 2, 65533, 65534, 65535})
        for (int a : {0, 1, 2, 32639, 32640, 32641, 65533, 65534, 65535})
            for (int b : {0, 1, 2, 32639, 32640, 32641, 65533, 65534, 65535}) {
                codes.push_back(static_cast<Kel16u>(l));
                codes.push_back(static_cast<Kel16u>(a));
                codes.push_back(static_cast<Kel16u>(b));
            }
    codesMatch(codes, "random");
}

} // namespace

#if KELCC_COUNT_FALLBACKS
namespace {

// A picture of the kind photographs hold: gradients, hard-edged flat areas of
// one colour, black and white borders, and faint noise.
std::vector<Kel8u> picture(int width, int height)
{
    std::vector<Kel8u> bgr(static_cast<std::size_t>(3) * width * height);
    std::mt19937 gen(9);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            Kel8u* p = bgr.data() + 3 * (static_cast<std::size_t>(y) * width + x);
            const int noise = static_cast<int>(gen() % 5) - 2;
            int b = 60 + 150 * y / height + noise, g = 90 + 100 * x / width + noise, r = 200 - 120 * y / height + noise;
            if (y < height / 10 || y >= height * 9 / 10) b = g = r = 0;                // black bars
            else if ((x / 160 + y / 120) % 7 == 0) b = g = r = 255;                    // white patches
            else if ((x / 200 + 2 * (y / 150)) % 5 == 0) { b = 30; g = 140; r = 90; }  // flat colour
            p[0] = static_cast<Kel8u>(std::clamp(b, 0, 255));
            p[1] = static_cast<Kel8u>(std::clamp(g, 0, 255));
            p[2] = static_cast<Kel8u>(std::clamp(r, 0, 255));
        }
    return bgr;
}

// The public functions on a random 1920 x 1080 image and on a picture: the
// pixels their vector rows refused, printed and bounded.
TEST(SimdLabFallbacks, FewPixelsAreRefused)
{
    constexpr int kW = 1920, kH = 1080;
    const KelImageSize size{kW, kH};
    std::mt19937 gen(1);
    std::vector<Kel8u> random8(3 * kW * kH);
    for (auto& b : random8) b = static_cast<Kel8u>(gen());
    std::vector<Kel16u> random16(3 * kW * kH);
    for (auto& w : random16) w = static_cast<Kel16u>(gen());
    const std::vector<Kel8u> natural = picture(kW, kH);
    std::vector<Kel16u> natural16(3 * kW * kH), out16(3 * kW * kH);
    std::vector<Kel8u> natural8(3 * kW * kH), out8(3 * kW * kH);
    ASSERT_EQ(kelOk, keliBGRToLab_8u_C3R(natural.data(), 3 * kW, natural8.data(), 3 * kW, size));
    ASSERT_EQ(kelOk, keliBGRToLab_8u16u_C3R(natural.data(), 3 * kW, natural16.data(), 6 * kW, size));
    const auto report = [&](const char* what, KelResult status) {
        ASSERT_EQ(kelOk, status) << what;
        const double share = static_cast<double>(kel::lastCallFallbacks()) / (kW * kH);
        std::printf("%-32s %8lld refused of %d (%.2e)\n", what, static_cast<long long>(kel::lastCallFallbacks()),
                    kW * kH, share);
        EXPECT_LT(share, 2e-5) << what;
    };
    kt::forEachSimdTarget([&](const std::string& target) {
        std::printf("%s\n", target.c_str());
        report("BGRToLab_8u random", keliBGRToLab_8u_C3R(random8.data(), 3 * kW, out8.data(), 3 * kW, size));
        report("BGRToLab_8u picture", keliBGRToLab_8u_C3R(natural.data(), 3 * kW, out8.data(), 3 * kW, size));
        report("BGRToLab_8u16u random", keliBGRToLab_8u16u_C3R(random8.data(), 3 * kW, out16.data(), 6 * kW, size));
        report("BGRToLab_8u16u picture", keliBGRToLab_8u16u_C3R(natural.data(), 3 * kW, out16.data(), 6 * kW, size));
        report("LabToBGR_8u random", keliLabToBGR_8u_C3R(random8.data(), 3 * kW, out8.data(), 3 * kW, size));
        report("LabToBGR_8u picture", keliLabToBGR_8u_C3R(natural8.data(), 3 * kW, out8.data(), 3 * kW, size));
        report("LabToBGR_16u8u random", keliLabToBGR_16u8u_C3R(random16.data(), 6 * kW, out8.data(), 3 * kW, size));
        report("LabToBGR_16u8u picture", keliLabToBGR_16u8u_C3R(natural16.data(), 6 * kW, out8.data(), 3 * kW, size));
    });
}

} // namespace
#endif

namespace {

// 10^8 random 16-bit codes on every target against the kernel, and the
// refused share.
TEST(LongSweepLab, HundredMillionInverse16uCodes)
{
    std::mt19937_64 gen(2027);
    constexpr std::int64_t kTotal = 100'000'000, kBatch = 1 << 22;
    std::int64_t refused = 0, done = 0;
    std::vector<Kel16u> codes(3 * kBatch);
    while (done < kTotal) {
        const std::int64_t n = std::min(kBatch, kTotal - done);
        done += n;
        codes.resize(static_cast<std::size_t>(3 * n));
        for (std::int64_t i = 0; i < n; ++i) {
            const std::uint64_t g = gen();
            codes[3 * i] = static_cast<Kel16u>(g);
            codes[3 * i + 1] = static_cast<Kel16u>(g >> 16);
            codes[3 * i + 2] = static_cast<Kel16u>(g >> 32);
        }
        refused += codesMatch(codes, "sweep");
        if (HasFailure()) break;
    }
    std::printf("%lld codes on every target, %lld refused over all targets\n", static_cast<long long>(done),
                static_cast<long long>(refused));
}

} // namespace

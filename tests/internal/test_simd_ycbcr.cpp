// The whole-vector full-resolution RGB <-> YCbCr kernels against the scalar
// kernels, byte for byte, on every SIMD target this processor runs.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "cbcrpx.h"
#include "support/targets.h"
#include "ycbcrsimd.h"

namespace {

using kel::PixelRow;
using kel::PlaneRow;
using kel::PlanesToPixelRow;
using PixelCall = KelResult (*)(const Kel8u*, int, Kel8u*, int, KelImageSize);
using PlaneCall = KelResult (*)(const Kel8u* const*, int, Kel8u* const*, int, KelImageSize);

// A pixel-order member: its public function, row chooser, scalar kernel and bytes a pixel.
struct PixelMember {
    const char* name;
    PixelCall call;
    PixelRow (*choose)();
    PixelRow scalar;
    int pitch;
};

const PixelMember kPixelMembers[] = {
    {"RGBToYCbCr_C3R", keliRGBToYCbCr_8u_C3R, kel::chooseRGBToYCbCr_C3, innerRGBToYCbCr_C3_C3R, 3},
    {"RGBToYCbCr_AC4R", keliRGBToYCbCr_8u_AC4R, kel::chooseRGBToYCbCr_AC4, innerRGBToYCbCr_AC4R, 4},
    {"YCbCrToRGB_C3R", keliYCbCrToRGB_8u_C3R, kel::chooseYCbCrToRGB_C3, innerYCbCrToRGB_C3_C3R, 3},
    {"YCbCrToRGB_AC4R", keliYCbCrToRGB_8u_AC4R, kel::chooseYCbCrToRGB_AC4, innerYCbCrToRGB_AC4R, 4},
};

struct PlaneMember {
    const char* name;
    PlaneCall call;
    PlaneRow (*choose)();
    PlaneRow scalar;
};

const PlaneMember kPlaneMembers[] = {
    {"RGBToYCbCr_P3R", keliRGBToYCbCr_8u_P3R, kel::chooseRGBToYCbCr_P3, innerRGBToYCbCr_C3P2_C3P2R},
    {"YCbCrToRGB_P3R", keliYCbCrToRGB_8u_P3R, kel::chooseYCbCrToRGB_P3, innerYCbCrToRGB_C3P2_C3P2R},
};

TEST(SimdYCbCr, EveryTargetHasItsOwnKernel)
{
    const auto count = [](auto choose, const char* name) {
        const kt::ChosenKernels chosen = kt::chosenOnEveryTarget(choose);
        EXPECT_EQ(chosen.targets, chosen.distinct()) << name;
    };
    for (const PixelMember& m : kPixelMembers) count(m.choose, m.name);
    for (const PlaneMember& m : kPlaneMembers) count(m.choose, m.name);
    count(kel::chooseYCbCrToRGB_P3C3, "YCbCrToRGB_P3C3R");
}

// The row kernel alone: the same bytes as the scalar kernel, and nothing
// written past the row, at every width and start offset.
TEST(SimdYCbCr, PixelRowMatchesScalarKernelAtEveryWidth)
{
    for (const PixelMember& m : kPixelMembers) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : kt::simdTestWidths()) {
                for (int lead = 0; lead < 4; ++lead) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 4 + lead));
                    kt::RandomRows src(1, m.pitch * width + 1, lead, gen), fast(1, m.pitch * width + 1, 3 - lead, gen);
                    kt::RandomRows scalar = fast;
                    m.choose()(src.row(0), fast.row(0), width);
                    m.scalar(src.row(0), scalar.row(0), width);
                    ASSERT_TRUE(fast.bytes == scalar.bytes)
                        << m.name << " on " << target << ", width " << width << ", lead " << lead;
                }
            }
        });
    }
}

TEST(SimdYCbCr, PlaneRowMatchesScalarKernelAtEveryWidth)
{
    for (const PlaneMember& m : kPlaneMembers) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : kt::simdTestWidths()) {
                for (int lead = 0; lead < 4; ++lead) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 4 + lead));
                    kt::RandomRows src(3, width + 5, lead, gen), fast(3, width + 3, 3 - lead, gen);
                    kt::RandomRows scalar = fast;
                    const Kel8u* const srcRows[3] = {src.row(0), src.row(1), src.row(2)};
                    Kel8u* const fastRows[3] = {fast.row(0), fast.row(2), fast.row(1)};
                    Kel8u* const scalarRows[3] = {scalar.row(0), scalar.row(2), scalar.row(1)};
                    m.choose()(srcRows, fastRows, width);
                    m.scalar(srcRows, scalarRows, width);
                    ASSERT_TRUE(fast.bytes == scalar.bytes)
                        << m.name << " on " << target << ", width " << width << ", lead " << lead;
                }
            }
        });
    }
}

// The public functions at heights 1 to 9 with odd strides: every byte of the
// destination buffer (rows, padding, guards) as the scalar kernel leaves it.
TEST(SimdYCbCr, PixelPublicFunctionsMatchScalarKernelAtEverySize)
{
    for (const PixelMember& m : kPixelMembers) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : kt::simdTestWidths()) {
                if (width == 0) continue;
                for (int height = 1; height <= 9; ++height) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 16 + height));
                    const int rowBytes = m.pitch * width;
                    kt::RandomRows src(height, rowBytes + 5 + (rowBytes & 1), 1, gen);
                    kt::RandomRows dst(height, rowBytes + 9 + (rowBytes & 1), 3, gen);
                    kt::RandomRows expected = dst;
                    for (int y = 0; y < height; ++y) m.scalar(src.row(y), expected.row(y), width);
                    ASSERT_EQ(kelOk, m.call(src.row(0), src.step, dst.row(0), dst.step, {width, height}));
                    ASSERT_TRUE(dst.bytes == expected.bytes)
                        << m.name << " on " << target << ", " << width << " x " << height;
                }
            }
        });
    }
}

TEST(SimdYCbCr, PlanePublicFunctionsMatchScalarKernelAtEverySize)
{
    for (const PlaneMember& m : kPlaneMembers) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : kt::simdTestWidths()) {
                if (width == 0) continue;
                for (int height = 1; height <= 9; ++height) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 16 + height));
                    const int srcStep = width + 7 + (width & 1), dstStep = width + 3 + (width & 1);
                    kt::RandomRows src(3 * height, srcStep, 2, gen), dst(3 * height, dstStep, 1, gen);
                    kt::RandomRows expected = dst;
                    for (int y = 0; y < height; ++y) {
                        const Kel8u* const srcRows[3] = {src.row(y), src.row(height + y), src.row(2 * height + y)};
                        Kel8u* const rows[3] = {expected.row(y), expected.row(height + y), expected.row(2 * height + y)};
                        m.scalar(srcRows, rows, width);
                    }
                    const Kel8u* const srcPlanes[3] = {src.row(0), src.row(height), src.row(2 * height)};
                    Kel8u* const dstPlanes[3] = {dst.row(0), dst.row(height), dst.row(2 * height)};
                    ASSERT_EQ(kelOk, m.call(srcPlanes, srcStep, dstPlanes, dstStep, {width, height}));
                    ASSERT_TRUE(dst.bytes == expected.bytes)
                        << m.name << " on " << target << ", " << width << " x " << height;
                }
            }
        });
    }
}

// Planes to pixel order (set R): the row kernel and the public function.
TEST(SimdYCbCr, PlanesToPixelsMatchScalarKernelAtEveryWidthAndSize)
{
    const PlanesToPixelRow scalar = innerYCbCrToRGB_8u_P3C3R;
    kt::forEachSimdTarget([&](const std::string& target) {
        for (int width : kt::simdTestWidths()) {
            for (int lead = 0; lead < 4; ++lead) {
                std::mt19937 gen(static_cast<std::uint32_t>(width * 4 + lead));
                kt::RandomRows src(3, width + 5, lead, gen), fast(1, 3 * width + 1, 3 - lead, gen);
                kt::RandomRows expected = fast;
                const Kel8u* const srcRows[3] = {src.row(2), src.row(0), src.row(1)};
                kel::chooseYCbCrToRGB_P3C3()(srcRows, fast.row(0), width);
                scalar(srcRows, expected.row(0), width);
                ASSERT_TRUE(fast.bytes == expected.bytes) << target << ", width " << width << ", lead " << lead;
            }
            if (width == 0) continue;
            for (int height = 1; height <= 9; ++height) {
                std::mt19937 gen(static_cast<std::uint32_t>(width * 16 + height));
                const int srcStep = width + 7 + (width & 1), dstStep = 3 * width + 3 + (width & 1);
                kt::RandomRows src(3 * height, srcStep, 2, gen), dst(height, dstStep, 1, gen);
                kt::RandomRows expected = dst;
                for (int y = 0; y < height; ++y) {
                    const Kel8u* const srcRows[3] = {src.row(y), src.row(height + y), src.row(2 * height + y)};
                    scalar(srcRows, expected.row(y), width);
                }
                const Kel8u* const srcPlanes[3] = {src.row(0), src.row(height), src.row(2 * height)};
                ASSERT_EQ(kelOk, keliYCbCrToRGB_8u_P3C3R(srcPlanes, srcStep, dst.row(0), dstStep, {width, height}));
                ASSERT_TRUE(dst.bytes == expected.bytes) << target << ", " << width << " x " << height;
            }
        }
    });
}

// A destination that is its source converts in place; one that overlaps it a
// few bytes off takes the scalar kernel's order, whatever that gives.
TEST(SimdYCbCr, OverlappingRowsGiveTheScalarKernelsBytes)
{
    for (const PixelMember& m : kPixelMembers) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : {1, 16, 63, 64, 65, 200}) {
                for (int shift : {0, -5, -1, 1, 3, 64, 191}) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 256 + shift + 32));
                    kt::RandomRows fast(1, m.pitch * width + 400, 200, gen);
                    kt::RandomRows scalar = fast;
                    m.choose()(fast.row(0), fast.row(0) + shift, width);
                    m.scalar(scalar.row(0), scalar.row(0) + shift, width);
                    ASSERT_TRUE(fast.bytes == scalar.bytes)
                        << m.name << " on " << target << ", width " << width << ", shift " << shift;
                }
            }
        });
    }
    for (const PlaneMember& m : kPlaneMembers) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : {16, 65, 200}) {
                for (int shift : {0, 1, -7}) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 256 + shift + 32));
                    kt::RandomRows fast(4, width + 16, 16, gen);
                    kt::RandomRows scalar = fast;
                    const auto run = [&](kt::RandomRows& b, PlaneRow row) {
                        const Kel8u* const src[3] = {b.row(0), b.row(1), b.row(2)};
                        Kel8u* const dst[3] = {b.row(3), b.row(1) + shift, b.row(0)};
                        row(src, dst, width);
                    };
                    run(fast, m.choose());
                    run(scalar, m.scalar);
                    ASSERT_TRUE(fast.bytes == scalar.bytes)
                        << m.name << " on " << target << ", width " << width << ", shift " << shift;
                }
            }
        });
    }
}

// Every (R, G, B) and every (Y, Cb, Cr) as one 4096 x 4096 image each, held
// to the one-pixel formulas.
std::vector<Kel8u> everyTriple()
{
    std::vector<Kel8u> pixels(3u << 24);
    for (std::uint32_t i = 0; i < (1u << 24); ++i) {
        pixels[3 * i + 0] = static_cast<Kel8u>(i >> 16);
        pixels[3 * i + 1] = static_cast<Kel8u>(i >> 8);
        pixels[3 * i + 2] = static_cast<Kel8u>(i);
    }
    return pixels;
}

template <typename Formula>
void expectEveryTriple(PixelCall call, const char* name)
{
    constexpr int kSide = 4096;
    const std::vector<Kel8u> src = everyTriple();
    std::vector<Kel8u> expected(src.size());
    for (std::size_t i = 0; i < src.size(); i += 3) {
        expected[i + 0] = Formula::first(src[i], src[i + 1], src[i + 2]);
        expected[i + 1] = Formula::second(src[i], src[i + 1], src[i + 2]);
        expected[i + 2] = Formula::third(src[i], src[i + 1], src[i + 2]);
    }
    kt::forEachSimdTarget([&](const std::string& target) {
        std::vector<Kel8u> dst(src.size());
        ASSERT_EQ(kelOk, call(src.data(), 3 * kSide, dst.data(), 3 * kSide, {kSide, kSide}));
        if (dst == expected) return;
        for (std::size_t i = 0; i < dst.size(); ++i) {
            ASSERT_EQ(expected[i], dst[i]) << name << " on " << target << ": " << int(src[i - i % 3]) << ", "
                                           << int(src[i - i % 3 + 1]) << ", " << int(src[i - i % 3 + 2])
                                           << ", channel " << i % 3;
        }
    });
}

struct ForwardFormula {
    static Kel8u first(int r, int g, int b) { return kel::ForwardYCbCr::y(r, g, b); }
    static Kel8u second(int r, int g, int b) { return kel::ForwardYCbCr::cb(r, g, b); }
    static Kel8u third(int r, int g, int b) { return kel::ForwardYCbCr::cr(r, g, b); }
};

struct InverseFormula {
    using T = kel::InverseRGB<kel::inverseT>;
    static Kel8u first(int y, int cb, int cr) { return T::r(y, cb, cr); }
    static Kel8u second(int y, int cb, int cr) { return T::g(y, cb, cr); }
    static Kel8u third(int y, int cb, int cr) { return T::b(y, cb, cr); }
};

TEST(SimdYCbCr, EveryRGBMatchesTheFormula)
{
    expectEveryTriple<ForwardFormula>(keliRGBToYCbCr_8u_C3R, "RGBToYCbCr");
}

TEST(SimdYCbCr, EveryYCbCrOfSetTMatchesTheFormula)
{
    expectEveryTriple<InverseFormula>(keliYCbCrToRGB_8u_C3R, "YCbCrToRGB");
}

// Every (Y, Cb, Cr) of set R, as three 4096 x 4096 planes.
TEST(SimdYCbCr, EveryYCbCrOfSetRMatchesTheFormula)
{
    constexpr int kSide = 4096;
    constexpr std::size_t kPixels = std::size_t{1} << 24;
    std::vector<Kel8u> planes(3 * kPixels), expected(3 * kPixels);
    using Formula = kel::InverseRGB<kel::inverseR>;
    for (std::uint32_t i = 0; i < kPixels; ++i) {
        const Kel8u y = static_cast<Kel8u>(i >> 16), cb = static_cast<Kel8u>(i >> 8), cr = static_cast<Kel8u>(i);
        planes[i] = y;
        planes[kPixels + i] = cb;
        planes[2 * kPixels + i] = cr;
        expected[3 * i + 0] = Formula::r(y, cb, cr);
        expected[3 * i + 1] = Formula::g(y, cb, cr);
        expected[3 * i + 2] = Formula::b(y, cb, cr);
    }
    const Kel8u* const src[3] = {planes.data(), planes.data() + kPixels, planes.data() + 2 * kPixels};
    kt::forEachSimdTarget([&](const std::string& target) {
        std::vector<Kel8u> rgb(expected.size());
        ASSERT_EQ(kelOk, keliYCbCrToRGB_8u_P3C3R(src, kSide, rgb.data(), 3 * kSide, {kSide, kSide}));
        if (rgb == expected) return;
        for (std::size_t i = 0; i < rgb.size(); ++i) {
            const std::size_t at = i / 3;
            ASSERT_EQ(expected[i], rgb[i]) << target << ": Y " << int(planes[at]) << ", Cb " << int(planes[kPixels + at])
                                           << ", Cr " << int(planes[2 * kPixels + at]) << ", channel " << i % 3;
        }
    });
}

} // namespace

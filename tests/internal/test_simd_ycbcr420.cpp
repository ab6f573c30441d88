// The whole-vector 4:2:0 to RGB and BGR kernels against the scalar kernels,
// byte for byte, on every SIMD target this processor runs.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "cbcrpx.h"
#include "support/targets.h"
#include "ycbcr05simd.h"

namespace {

using kel::RowPair420;

// A 4:2:0 member with its row-pair chooser and its scalar row-pair kernel.
struct Member420 {
    const char* name;
    KelResult (*call)(const Kel8u* const*, const int*, Kel8u*, int, KelImageSize);
    RowPair420 (*choose)();
    RowPair420 scalar;
};

const Member420 kMembers[] = {
    {"YCbCr420ToRGB", keliYCbCr420ToRGB_8u_P3C3R, kel::chooseYCbCr420ToRGB, innerYCbCr420ToRGB_8u_P3C3R},
    {"YCbCr420ToBGR", keliYCbCr420ToBGR_8u_P3C3R, kel::chooseYCbCr420ToBGR, innerYCbCr420ToBGR_8u_P3C3R},
};

// One plane in a buffer of its own: `lead` guard bytes, rows `step` apart
// (step may exceed the row), `trail` guard bytes; every byte random at first.
struct Plane {
    Plane(int rowBytes, int rows, int step, int lead, std::mt19937& gen)
        : step(step), lead(lead), bytes(static_cast<std::size_t>(lead) + static_cast<std::size_t>(step) * rows + 67)
    {
        (void)rowBytes;
        for (auto& b : bytes) b = static_cast<std::uint8_t>(gen());
    }
    Kel8u* row(int y) { return bytes.data() + lead + static_cast<std::ptrdiff_t>(step) * y; }
    int step, lead;
    std::vector<std::uint8_t> bytes;
};

// Source planes and a destination of one 4:2:0 image: odd strides and rows
// that start off any alignment.
struct Image420 {
    Image420(int width, int height, std::uint32_t seed)
        : gen(seed),
          luma(width, height, width + 5 + (width & 1), 1, gen),
          cb(width / 2, height / 2 + 1, width / 2 + 3 + (width / 2 & 1), 3, gen),
          cr(width / 2, height / 2 + 1, width / 2 + 7 + (width / 2 & 1), 2, gen),
          dst(3 * width, height, 3 * width + 9 + (3 * width & 1), 5, gen)
    {
    }
    std::mt19937 gen;
    Plane luma, cb, cr, dst;
};

TEST(SimdYCbCr420, EveryTargetHasItsOwnKernel)
{
    for (const Member420& m : kMembers) {
        const kt::ChosenKernels chosen = kt::chosenOnEveryTarget(m.choose);
        EXPECT_EQ(chosen.targets, chosen.distinct()) << m.name;
        EXPECT_GE(chosen.targets, 1) << m.name;
    }
}

// The row-pair kernel alone, widths 0 up: the same bytes as the scalar kernel
// in both rows, and nothing written past the last whole cell.
TEST(SimdYCbCr420, RowPairMatchesScalarKernelAtEveryWidth)
{
    for (const Member420& m : kMembers) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : kt::simdTestWidths()) {
                for (int lead = 0; lead < 4; ++lead) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 4 + lead));
                    Plane luma(width, 2, width + 3, lead, gen), cb(width / 2, 1, width / 2 + 1, lead + 1, gen),
                        cr(width / 2, 1, width / 2 + 1, 3 - lead, gen), fast(3 * width, 2, 3 * width + 1, lead, gen);
                    Plane scalar = fast;
                    m.choose()(luma.row(0), luma.row(1), cb.row(0), cr.row(0), fast.row(0), fast.row(1), width);
                    m.scalar(luma.row(0), luma.row(1), cb.row(0), cr.row(0), scalar.row(0), scalar.row(1), width);
                    ASSERT_TRUE(fast.bytes == scalar.bytes)
                        << m.name << " on " << target << ", width " << width << ", lead " << lead;
                }
            }
        });
    }
}

// The public functions at heights 1 to 9: every byte of the destination
// buffer (rows, padding, guards) as the scalar kernel leaves it.
TEST(SimdYCbCr420, PublicFunctionsMatchScalarKernelAtEverySize)
{
    for (const Member420& m : kMembers) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : kt::simdTestWidths()) {
                if (width == 0) continue;
                for (int height = 1; height <= 9; ++height) {
                    Image420 image(width, height, static_cast<std::uint32_t>(width * 16 + height));
                    Plane expected = image.dst;
                    for (int pair = 0; pair < height / 2; ++pair) {
                        m.scalar(image.luma.row(2 * pair), image.luma.row(2 * pair + 1), image.cb.row(pair),
                                 image.cr.row(pair), expected.row(2 * pair), expected.row(2 * pair + 1), width);
                    }
                    const Kel8u* planes[3] = {image.luma.row(0), image.cb.row(0), image.cr.row(0)};
                    const int steps[3] = {image.luma.step, image.cb.step, image.cr.step};
                    const KelResult status = m.call(planes, steps, image.dst.row(0), image.dst.step, {width, height});
                    ASSERT_EQ((width | height) & 1 ? kelWarnOddSize : kelOk, status);
                    ASSERT_TRUE(image.dst.bytes == expected.bytes)
                        << m.name << " on " << target << ", " << width << " x " << height;
                }
            }
        });
    }
}

// Every (Y, Cb, Cr) of set T: a 4096 x 4096 image whose 2 x 2 cells hold each
// (Cb, Cr) 64 times, each time with four other luma values, so that all 256
// luma values meet every chroma pair.  Each pixel is held to the formula.
TEST(SimdYCbCr420, EveryYCbCrOfSetTMatchesTheFormula)
{
    constexpr int kSide = 4096, kCells = kSide / 2;
    std::vector<Kel8u> luma(static_cast<std::size_t>(kSide) * kSide), cb(kCells * kCells), cr(kCells * kCells);
    for (int cy = 0; cy < kCells; ++cy) {
        for (int cx = 0; cx < kCells; ++cx) {
            const int cell = cy * kCells + cx;
            cb[cell] = static_cast<Kel8u>(cell & 0xFF);
            cr[cell] = static_cast<Kel8u>(cell >> 8 & 0xFF);
            const int firstLuma = 4 * (cell >> 16);  // 64 groups of four luma values
            for (int p = 0; p < 4; ++p) {
                luma[static_cast<std::size_t>(2 * cy + p / 2) * kSide + 2 * cx + p % 2] =
                    static_cast<Kel8u>(firstLuma + p);
            }
        }
    }
    using Formula = kel::InverseRGB<kel::inverseT>;
    std::vector<Kel8u> expected(static_cast<std::size_t>(kSide) * kSide * 3);
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            const std::size_t at = static_cast<std::size_t>(y) * kSide + x;
            const int cell = (y / 2) * kCells + x / 2;
            expected[3 * at + 0] = Formula::r(luma[at], cb[cell], cr[cell]);
            expected[3 * at + 1] = Formula::g(luma[at], cb[cell], cr[cell]);
            expected[3 * at + 2] = Formula::b(luma[at], cb[cell], cr[cell]);
        }
    }
    const Kel8u* planes[3] = {luma.data(), cb.data(), cr.data()};
    const int steps[3] = {kSide, kCells, kCells};
    kt::forEachSimdTarget([&](const std::string& target) {
        std::vector<Kel8u> rgb(expected.size());
        ASSERT_EQ(kelOk, keliYCbCr420ToRGB_8u_P3C3R(planes, steps, rgb.data(), 3 * kSide, {kSide, kSide}));
        if (rgb == expected) return;
        for (std::size_t i = 0; i < rgb.size(); ++i) {
            const std::size_t at = i / 3;
            const int y = static_cast<int>(at / kSide), x = static_cast<int>(at % kSide);
            const int cell = (y / 2) * kCells + x / 2;
            ASSERT_EQ(expected[i], rgb[i]) << target << ": Y " << int(luma[at]) << ", Cb " << int(cb[cell]) << ", Cr "
                                           << int(cr[cell]) << ", channel " << i % 3;
        }
    });
}

} // namespace

// The whole-vector full-range YUV 4:2:2 pixel-order kernels (Y0 U Y1 V pairs)
// against the scalar kernels, byte for byte, on every SIMD target this
// processor runs.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "support/targets.h"
#include "yuvconv.h"
#include "yuvpxsimd.h"

namespace {

using kel::Row422;

// A 4:2:2 pixel-order member with its row chooser, its scalar row kernel and
// its bytes a pixel in source and destination.
struct Member422 {
    const char* name;
    KelResult (*call)(const Kel8u*, int, Kel8u*, int, KelImageSize);
    Row422 (*choose)();
    Row422 scalar;
    int srcPitch, dstPitch;
    int minWidth;  // of the row kernel: the inverse's last single pixel borrows V from the pair before
};

const Member422 kMembers[] = {
    {"YUV422ToRGB_8u_C2C3R", keliYUV422ToRGB_8u_C2C3R, kel::chooseYUV422ToRGB_8u_C2C3R, innerYUV422ToRGB_8u_C2C3R, 2, 3,
     2},
    {"RGBToYUV422_8u_C3C2R", keliRGBToYUV422_8u_C3C2R, kel::chooseRGBToYUV422_8u_C3C2R, innerRGBToYUV422_8u_C3C2R, 3, 2,
     0},
};

// Widths: every one up to 70 (all step remainders of 16, 32 and 64 pixels),
// and wide rows with long tails.
std::vector<int> testWidths()
{
    std::vector<int> widths;
    for (int w = 0; w <= 70; ++w) widths.push_back(w);
    for (int w : {127, 128, 129, 1919, 1920, 4097}) widths.push_back(w);
    return widths;
}

// One image in a buffer of its own: `lead` guard bytes, rows `step` apart,
// trailing guard bytes; every byte random at first.
struct Plane {
    Plane(int rows, int step, int lead, std::mt19937& gen)
        : step(step), lead(lead), bytes(static_cast<std::size_t>(lead) + static_cast<std::size_t>(step) * rows + 67)
    {
        for (auto& b : bytes) b = static_cast<std::uint8_t>(gen());
    }
    Kel8u* row(int y) { return bytes.data() + lead + static_cast<std::ptrdiff_t>(step) * y; }
    int step, lead;
    std::vector<std::uint8_t> bytes;
};

// Odd strides that exceed the rows.
int oddStep(int rowBytes, int extra)
{
    return rowBytes + extra + (rowBytes & 1);
}

TEST(SimdYUV422, EveryTargetHasItsOwnKernel)
{
    for (const Member422& m : kMembers) {
        std::set<Row422> kernels;
        int targets = 0;
        kt::forEachSimdTarget([&](const std::string&) {
            kernels.insert(m.choose());
            ++targets;
        });
        EXPECT_GE(targets, 1) << m.name;
        EXPECT_EQ(targets, static_cast<int>(kernels.size())) << m.name;
    }
}

// The row kernels alone: the same bytes as the scalar kernel, nothing
// written past the row.  The source starts one pair into its buffer, so the
// inverse's borrowed V is always a byte of the buffer.
TEST(SimdYUV422, RowMatchesScalarKernelAtEveryWidth)
{
    for (const Member422& m : kMembers) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : testWidths()) {
                if (width < m.minWidth) continue;
                for (int lead = 0; lead < 4; ++lead) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 4 + lead));
                    Plane src(1, m.srcPitch * width + 1, lead + 4, gen), fast(1, m.dstPitch * width + 1, lead, gen);
                    Plane scalar = fast;
                    m.choose()(src.row(0), fast.row(0), width);
                    m.scalar(src.row(0), scalar.row(0), width);
                    ASSERT_TRUE(fast.bytes == scalar.bytes)
                        << m.name << " on " << target << ", width " << width << ", lead " << lead;
                }
            }
        });
    }
}

// The public functions at heights 1 to 9: every byte of the destination
// buffer (rows, padding, guards) as the scalar kernel leaves it.
TEST(SimdYUV422, PublicFunctionsMatchScalarKernelAtEverySize)
{
    for (const Member422& m : kMembers) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : testWidths()) {
                if (width == 0) continue;
                for (int height = 1; height <= 9; ++height) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 16 + height));
                    Plane src(height, oddStep(m.srcPitch * width, 5), 3, gen);
                    Plane dst(height, oddStep(m.dstPitch * width, 9), 1, gen);
                    Plane expected = dst;
                    for (int y = 0; y < height; ++y) {
                        // A row of one pixel is the member's own case, the same on every target.
                        if (width >= m.minWidth) m.scalar(src.row(y), expected.row(y), width);
                    }
                    const KelResult status = m.call(src.row(0), src.step, dst.row(0), dst.step, {width, height});
                    ASSERT_EQ(kelOk, status);
                    if (width < m.minWidth) continue;
                    ASSERT_TRUE(dst.bytes == expected.bytes)
                        << m.name << " on " << target << ", " << width << " x " << height;
                }
            }
        });
    }
}

// Every (Y, U, V): 2^23 pairs, pair p holding U = p & 255, V = p >> 8 & 255
// and the lumas 2 (p >> 16) and 2 (p >> 16) + 1, so that all 256 luma values
// meet every chroma pair.  Each pixel is held to the one-pixel formula.
TEST(SimdYUV422, EveryYUVMatchesTheFormula)
{
    constexpr int kSide = 4096;
    std::vector<Kel8u> src(static_cast<std::size_t>(kSide) * kSide * 2);
    std::vector<Kel8u> expected(static_cast<std::size_t>(kSide) * kSide * 3);
    for (std::size_t p = 0; p < src.size() / 4; ++p) {
        Kel8u* pair = &src[4 * p];
        pair[0] = static_cast<Kel8u>(2 * (p >> 16));
        pair[1] = static_cast<Kel8u>(p);
        pair[2] = static_cast<Kel8u>(2 * (p >> 16) + 1);
        pair[3] = static_cast<Kel8u>(p >> 8);
        for (int i = 0; i < 2; ++i) {
            Kel8u* pixel = &expected[6 * p + 3 * i];
            kel::yuv::toRGB<kel::yuv::inverse1>(pair[2 * i], pair[1], pair[3], pixel[0], pixel[1], pixel[2]);
        }
    }
    kt::forEachSimdTarget([&](const std::string& target) {
        std::vector<Kel8u> rgb(expected.size());
        ASSERT_EQ(kelOk, keliYUV422ToRGB_8u_C2C3R(src.data(), 2 * kSide, rgb.data(), 3 * kSide, {kSide, kSide}));
        if (rgb == expected) return;
        for (std::size_t i = 0; i < rgb.size(); ++i) {
            const std::size_t p = i / 6;
            ASSERT_EQ(expected[i], rgb[i]) << target << ": pair " << p << ", channel " << i % 3;
        }
    });
}

// Every RGB colour once, pixel (x, y) the colour y * 4096 + x: each Y held to
// the one-pixel formula, each pair's U and V to the pair formulas.
TEST(SimdYUV422, EveryRGBMatchesTheFormulas)
{
    constexpr int kSide = 4096;
    const std::size_t pixels = static_cast<std::size_t>(kSide) * kSide;
    std::vector<Kel8u> rgb(pixels * 3), expected(pixels * 2);
    for (std::size_t at = 0; at < pixels; ++at) {
        rgb[3 * at + 0] = static_cast<Kel8u>(at >> 16);
        rgb[3 * at + 1] = static_cast<Kel8u>(at >> 8);
        rgb[3 * at + 2] = static_cast<Kel8u>(at);
    }
    using namespace kel::yuv;
    for (std::size_t p = 0; p < pixels / 2; ++p) {
        const Kel8u* a = &rgb[6 * p];
        const Kel8u* b = a + 3;
        const std::int32_t sumA = lumaSum(a[0], a[1], a[2]), sumB = lumaSum(b[0], b[1], b[2]);
        Kel8u* pair = &expected[4 * p];
        pair[0] = static_cast<Kel8u>(sumA >> 16);
        pair[1] = chromaU<1>(a[2] + b[2], sumA + sumB);
        pair[2] = static_cast<Kel8u>(sumB >> 16);
        pair[3] = chromaV<1>(a[0] + b[0], sumA + sumB);
    }
    kt::forEachSimdTarget([&](const std::string& target) {
        std::vector<Kel8u> yuv(expected.size());
        ASSERT_EQ(kelOk, keliRGBToYUV422_8u_C3C2R(rgb.data(), 3 * kSide, yuv.data(), 2 * kSide, {kSide, kSide}));
        if (yuv == expected) return;
        for (std::size_t i = 0; i < yuv.size(); ++i)
            ASSERT_EQ(expected[i], yuv[i]) << target << ": pair " << i / 4 << ", byte " << i % 4;
    });
}

} // namespace

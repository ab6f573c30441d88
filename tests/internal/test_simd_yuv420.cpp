// The whole-vector full-range YUV 4:2:0 kernels against the scalar kernels,
// byte for byte, on every SIMD target this processor runs.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <iterator>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "support/targets.h"
#include "yuvconv.h"
#include "yuvpxsimd.h"

namespace {

using kel::PlaneStore;
using kel::RowPairYUV420;
using kel::RowPairYUV420Planes;
using kel::PlaneSource;
using kel::RowPairRGBToYUV420;
using kel::RowPairRGBToYUV420Planes;

// A pixel-order 4:2:0 inverse member with its row-pair chooser, its scalar
// row-pair kernel and its bytes a pixel.
struct Inverse420 {
    const char* name;
    KelResult (*call)(const Kel8u* const*, const int*, Kel8u*, int, KelImageSize);
    RowPairYUV420 (*choose)();
    RowPairYUV420 scalar;
    int pitch;
    bool sizedInCells;  // tests and warns on the count of cells, not of pixels
};

// The status the member returns for a width x height image.
KelResult expectedStatus(const Inverse420& m, int width, int height)
{
    if (!m.sizedInCells) return (width | height) & 1 ? kelWarnOddSize : kelOk;
    const int cellsWide = width / 2, cellsHigh = height / 2;
    if (cellsWide < 1 || cellsHigh < 1) return kelErrSize;
    return (cellsWide | cellsHigh) & 1 ? kelWarnOddSize : kelOk;
}

const Inverse420 kInverse[] = {
    {"YUV420ToRGB_8u_P3C3R", keliYUV420ToRGB_8u_P3C3R, kel::chooseYUV420ToRGB_8u_P3C3R, innerYUV420ToRGB_8u_P3C3R, 3, false},
    {"YUV420ToRGB_8u_P3AC4R", keliYUV420ToRGB_8u_P3AC4R, kel::chooseYUV420ToRGB_8u_P3AC4R,
     innerYUV420ToRGB_8u_P3AC4R, 4, false},
    {"YUV420ToBGR_8u_P3C3R", keliYUV420ToBGR_8u_P3C3R, kel::chooseYUV420ToBGR_8u_P3C3R, innerYUV420ToBGR_8u_P3C3R, 3, true},
};

// Odd strides that exceed the rows, and rows that start off any alignment.
int oddStep(int rowBytes, int extra)
{
    return rowBytes + extra + (rowBytes & 1);
}

// Source planes of one 4:2:0 image.
struct Source420 {
    Source420(int width, int height, std::mt19937& gen)
        : luma(height, oddStep(width, 5), 1, gen),
          u(height / 2 + 1, oddStep(width / 2, 3), 3, gen),
          v(height / 2 + 1, oddStep(width / 2, 7), 2, gen)
    {
    }
    kt::RandomRows luma, u, v;
    const Kel8u* planes[3] = {luma.row(0), u.row(0), v.row(0)};
    const int steps[3] = {luma.step, u.step, v.step};
};

TEST(SimdYUV420, EveryTargetHasItsOwnKernel)
{
    std::vector<std::set<const void*>> kernels(std::size(kInverse) + 1);
    int targets = 0;
    kt::forEachSimdTarget([&](const std::string&) {
        for (std::size_t m = 0; m < std::size(kInverse); ++m)
            kernels[m].insert(reinterpret_cast<const void*>(kInverse[m].choose()));
        kernels.back().insert(reinterpret_cast<const void*>(kel::chooseYUV420ToRGB_8u_P3R()));
        ++targets;
    });
    EXPECT_GE(targets, 1);
    for (const auto& set : kernels) EXPECT_EQ(targets, static_cast<int>(set.size()));
}

// The row-pair kernels alone, widths 0 up: the same bytes as the scalar
// kernel in both rows, and nothing written past the last whole cell.
TEST(SimdYUV420, InverseRowPairMatchesScalarKernelAtEveryWidth)
{
    for (const Inverse420& m : kInverse) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : kt::simdTestWidths()) {
                for (int lead = 0; lead < 4; ++lead) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 4 + lead));
                    kt::RandomRows luma(2, width + 3, lead, gen), u(1, width / 2 + 1, lead + 1, gen),
                        v(1, width / 2 + 1, 3 - lead, gen), fast(2, m.pitch * width + 1, lead, gen);
                    kt::RandomRows scalar = fast;
                    m.choose()(luma.row(0), luma.row(1), u.row(0), v.row(0), fast.row(0), fast.row(1), width);
                    m.scalar(luma.row(0), luma.row(1), u.row(0), v.row(0), scalar.row(0), scalar.row(1), width);
                    ASSERT_TRUE(fast.bytes == scalar.bytes)
                        << m.name << " on " << target << ", width " << width << ", lead " << lead;
                }
            }
        });
    }
}

// The R, G, B planes of a row pair, each in its own guarded buffer.
struct PlaneTriple {
    PlaneTriple(int width, int lead, std::mt19937& gen)
        : red(2, width + 1, lead, gen), green(2, width + 3, 3 - lead, gen), blue(2, width + 5, lead + 2, gen)
    {
    }
    PlaneStore row(int y) { return {red.row(y), green.row(y), blue.row(y)}; }
    bool operator==(const PlaneTriple& o) const
    {
        return red.bytes == o.red.bytes && green.bytes == o.green.bytes && blue.bytes == o.blue.bytes;
    }
    kt::RandomRows red, green, blue;
};

TEST(SimdYUV420, InversePlanesRowPairMatchesScalarKernelAtEveryWidth)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        const RowPairYUV420Planes fastKernel = kel::chooseYUV420ToRGB_8u_P3R();
        for (int width : kt::simdTestWidths()) {
            for (int lead = 0; lead < 4; ++lead) {
                std::mt19937 gen(static_cast<std::uint32_t>(width * 4 + lead + 1));
                kt::RandomRows luma(2, width + 3, lead, gen), u(1, width / 2 + 1, lead + 1, gen), v(1, width / 2 + 1, 3 - lead, gen);
                PlaneTriple fast(width, lead, gen);
                PlaneTriple scalar = fast;
                fastKernel(luma.row(0), luma.row(1), u.row(0), v.row(0), fast.row(0), fast.row(1), width);
                innerYUV420ToRGB_8u_P3R(luma.row(0), luma.row(1), u.row(0), v.row(0), scalar.row(0), scalar.row(1),
                                        width);
                ASSERT_TRUE(fast == scalar) << "YUV420ToRGB_8u_P3R on " << target << ", width " << width << ", lead "
                                            << lead;
            }
        }
    });
}

// The public functions at heights 1 to 9: every byte of the destination
// buffer (rows, padding, guards) as the scalar kernel leaves it.
TEST(SimdYUV420, InversePublicFunctionsMatchScalarKernelAtEverySize)
{
    for (const Inverse420& m : kInverse) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : kt::simdTestWidths()) {
                if (width == 0) continue;
                for (int height = 1; height <= 9; ++height) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 16 + height));
                    Source420 src(width, height, gen);
                    kt::RandomRows dst(height, oddStep(m.pitch * width, 9), 5, gen);
                    kt::RandomRows expected = dst;
                    for (int pair = 0; pair < height / 2; ++pair) {
                        m.scalar(src.luma.row(2 * pair), src.luma.row(2 * pair + 1), src.u.row(pair),
                                 src.v.row(pair), expected.row(2 * pair), expected.row(2 * pair + 1), width);
                    }
                    const KelResult status = m.call(src.planes, src.steps, dst.row(0), dst.step, {width, height});
                    ASSERT_EQ(expectedStatus(m, width, height), status);
                    ASSERT_TRUE(dst.bytes == expected.bytes)
                        << m.name << " on " << target << ", " << width << " x " << height;
                }
            }
        });
    }
}

TEST(SimdYUV420, InversePlanesPublicFunctionMatchesScalarKernelAtEverySize)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        for (int width : kt::simdTestWidths()) {
            if (width == 0) continue;
            for (int height = 1; height <= 9; ++height) {
                std::mt19937 gen(static_cast<std::uint32_t>(width * 16 + height + 7));
                Source420 src(width, height, gen);
                // One stride for the three destination planes, as the member takes.
                const int dstStep = oddStep(width, 3);
                kt::RandomRows red(height, dstStep, 1, gen), green(height, dstStep, 2, gen), blue(height, dstStep, 0, gen);
                kt::RandomRows redExpected = red, greenExpected = green, blueExpected = blue;
                for (int pair = 0; pair < height / 2; ++pair) {
                    const int t = 2 * pair, b = t + 1;
                    innerYUV420ToRGB_8u_P3R(src.luma.row(t), src.luma.row(b), src.u.row(pair), src.v.row(pair),
                                            {redExpected.row(t), greenExpected.row(t), blueExpected.row(t)},
                                            {redExpected.row(b), greenExpected.row(b), blueExpected.row(b)}, width);
                }
                Kel8u* const planes[3] = {red.row(0), green.row(0), blue.row(0)};
                const KelResult status = keliYUV420ToRGB_8u_P3R(src.planes, src.steps, planes, dstStep, {width, height});
                ASSERT_EQ((width | height) & 1 ? kelWarnOddSize : kelOk, status);
                ASSERT_TRUE(red.bytes == redExpected.bytes && green.bytes == greenExpected.bytes &&
                            blue.bytes == blueExpected.bytes)
                    << "YUV420ToRGB_8u_P3R on " << target << ", " << width << " x " << height;
            }
        }
    });
}

// Every (Y, U, V): a 4096 x 4096 image whose 2 x 2 cells hold each (U, V)
// 64 times, each time with four other luma values, so that all 256 luma
// values meet every chroma pair.  Each pixel is held to the one-pixel formula,
// truncating (P3C3R) and rounding (P3AC4R).
template <std::int32_t Half>
void everyYUVMatchesTheFormula(const Inverse420& m)
{
    constexpr int kSide = 4096, kCells = kSide / 2;
    std::vector<Kel8u> luma(static_cast<std::size_t>(kSide) * kSide), u(kCells * kCells), v(kCells * kCells);
    for (int cy = 0; cy < kCells; ++cy) {
        for (int cx = 0; cx < kCells; ++cx) {
            const int cell = cy * kCells + cx;
            u[cell] = static_cast<Kel8u>(cell & 0xFF);
            v[cell] = static_cast<Kel8u>(cell >> 8 & 0xFF);
            const int firstLuma = 4 * (cell >> 16);  // 64 groups of four luma values
            for (int p = 0; p < 4; ++p)
                luma[static_cast<std::size_t>(2 * cy + p / 2) * kSide + 2 * cx + p % 2] = static_cast<Kel8u>(firstLuma + p);
        }
    }
    const int pitch = m.pitch;
    std::vector<Kel8u> expected(static_cast<std::size_t>(kSide) * kSide * pitch, 0);
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            const std::size_t at = static_cast<std::size_t>(y) * kSide + x;
            const int cell = (y / 2) * kCells + x / 2;
            Kel8u* pixel = &expected[pitch * at];
            kel::yuv::toRGB<kel::yuv::inverse1, Half>(luma[at], u[cell], v[cell], pixel[0], pixel[1], pixel[2]);
        }
    }
    const Kel8u* planes[3] = {luma.data(), u.data(), v.data()};
    const int steps[3] = {kSide, kCells, kCells};
    kt::forEachSimdTarget([&](const std::string& target) {
        std::vector<Kel8u> rgb(expected.size(), 0xEE);
        ASSERT_EQ(kelOk, m.call(planes, steps, rgb.data(), pitch * kSide, {kSide, kSide}));
        if (rgb == expected) return;
        for (std::size_t i = 0; i < rgb.size(); ++i) {
            const std::size_t at = i / pitch;
            const int y = static_cast<int>(at / kSide), x = static_cast<int>(at % kSide);
            const int cell = (y / 2) * kCells + x / 2;
            ASSERT_EQ(expected[i], rgb[i]) << m.name << " on " << target << ": Y " << int(luma[at]) << ", U "
                                           << int(u[cell]) << ", V " << int(v[cell]) << ", channel " << i % pitch;
        }
    });
}

TEST(SimdYUV420, EveryYUVMatchesTheTruncatingFormula)
{
    everyYUVMatchesTheFormula<0>(kInverse[0]);
}

TEST(SimdYUV420, EveryYUVMatchesTheRoundingFormula)
{
    everyYUVMatchesTheFormula<32768>(kInverse[1]);
}

// ---- forward ---------------------------------------------------------------------------------------------

// The Y, U and V rows of a row pair, each in its own guarded buffer.
struct YUVPair {
    YUVPair(int width, int lead, std::mt19937& gen)
        : luma(2, width + 3, lead, gen), u(1, width / 2 + 1, 3 - lead, gen), v(1, width / 2 + 5, lead + 1, gen)
    {
    }
    bool operator==(const YUVPair& o) const
    {
        return luma.bytes == o.luma.bytes && u.bytes == o.u.bytes && v.bytes == o.v.bytes;
    }
    kt::RandomRows luma, u, v;
};

TEST(SimdYUV420, ForwardRowPairMatchesScalarKernelAtEveryWidth)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        const RowPairRGBToYUV420 fastKernel = kel::chooseRGBToYUV420_8u_C3P3R();
        for (int width : kt::simdTestWidths()) {
            for (int lead = 0; lead < 4; ++lead) {
                std::mt19937 gen(static_cast<std::uint32_t>(width * 4 + lead + 2));
                kt::RandomRows rgb(2, 3 * width + 1, lead, gen);
                YUVPair fast(width, lead, gen);
                YUVPair scalar = fast;
                fastKernel(rgb.row(0), rgb.row(1), fast.luma.row(0), fast.luma.row(1), fast.u.row(0), fast.v.row(0),
                           width);
                innerRGBToYUV420_8u_C3P3R(rgb.row(0), rgb.row(1), scalar.luma.row(0), scalar.luma.row(1),
                                          scalar.u.row(0), scalar.v.row(0), width);
                ASSERT_TRUE(fast == scalar) << "RGBToYUV420_8u_C3P3R on " << target << ", width " << width << ", lead "
                                            << lead;
            }
        }
    });
}

// The rounding variant over B, G, R rows, which the packed-source members use.
TEST(SimdYUV420, ForwardRoundedBGRRowPairMatchesScalarKernelAtEveryWidth)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        const RowPairRGBToYUV420 fastKernel = kel::chooseBGRToYUV420RoundedLuma_8u_C3P3R();
        for (int width : kt::simdTestWidths()) {
            for (int lead = 0; lead < 4; ++lead) {
                std::mt19937 gen(static_cast<std::uint32_t>(width * 4 + lead + 5));
                kt::RandomRows bgr(2, 3 * width + 1, lead, gen);
                YUVPair fast(width, lead, gen);
                YUVPair scalar = fast;
                fastKernel(bgr.row(0), bgr.row(1), fast.luma.row(0), fast.luma.row(1), fast.u.row(0), fast.v.row(0),
                           width);
                innerBGRToYUV420RoundedLuma_8u_C3P3R(bgr.row(0), bgr.row(1), scalar.luma.row(0), scalar.luma.row(1),
                                                     scalar.u.row(0), scalar.v.row(0), width);
                ASSERT_TRUE(fast == scalar) << "BGRToYUV420RoundedLuma on " << target << ", width " << width
                                            << ", lead " << lead;
            }
        }
    });
}

TEST(SimdYUV420, ForwardPlanesRowPairMatchesScalarKernelAtEveryWidth)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        const RowPairRGBToYUV420Planes fastKernel = kel::chooseRGBToYUV420_8u_P3R();
        for (int width : kt::simdTestWidths()) {
            for (int lead = 0; lead < 4; ++lead) {
                std::mt19937 gen(static_cast<std::uint32_t>(width * 4 + lead + 3));
                PlaneTriple rgb(width, lead, gen);
                const PlaneSource top{rgb.red.row(0), rgb.green.row(0), rgb.blue.row(0)};
                const PlaneSource bottom{rgb.red.row(1), rgb.green.row(1), rgb.blue.row(1)};
                YUVPair fast(width, lead, gen);
                YUVPair scalar = fast;
                fastKernel(top, bottom, fast.luma.row(0), fast.luma.row(1), fast.u.row(0), fast.v.row(0), width);
                innerRGBToYUV420_8u_P3R(top, bottom, scalar.luma.row(0), scalar.luma.row(1), scalar.u.row(0),
                                        scalar.v.row(0), width);
                ASSERT_TRUE(fast == scalar) << "RGBToYUV420_8u_P3R on " << target << ", width " << width << ", lead "
                                            << lead;
            }
        }
    });
}

// Destination planes of one 4:2:0 image.
struct Destination420 {
    Destination420(int width, int height, std::mt19937& gen)
        : luma(height, oddStep(width, 3), 2, gen),
          u(height / 2 + 1, oddStep(width / 2, 5), 1, gen),
          v(height / 2 + 1, oddStep(width / 2, 1), 3, gen)
    {
    }
    bool operator==(const Destination420& o) const
    {
        return luma.bytes == o.luma.bytes && u.bytes == o.u.bytes && v.bytes == o.v.bytes;
    }
    kt::RandomRows luma, u, v;
};

TEST(SimdYUV420, ForwardPublicFunctionsMatchScalarKernelAtEverySize)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        for (int width : kt::simdTestWidths()) {
            if (width == 0) continue;
            for (int height = 1; height <= 9; ++height) {
                std::mt19937 gen(static_cast<std::uint32_t>(width * 16 + height + 11));
                kt::RandomRows rgb(height, oddStep(3 * width, 7), 3, gen);
                Destination420 dst(width, height, gen);
                Destination420 expected = dst;
                kt::RandomRows red(height, oddStep(width, 1), 1, gen), green = red, blue = red;
                for (auto& b : green.bytes) b = static_cast<std::uint8_t>(gen());
                for (auto& b : blue.bytes) b = static_cast<std::uint8_t>(gen());
                const int steps[3] = {dst.luma.step, dst.u.step, dst.v.step};
                Kel8u* const planes[3] = {dst.luma.row(0), dst.u.row(0), dst.v.row(0)};
                const KelResult expectedStatus = (width | height) & 1 ? kelWarnOddSize : kelOk;

                for (int pair = 0; pair < height / 2; ++pair) {
                    innerRGBToYUV420_8u_C3P3R(rgb.row(2 * pair), rgb.row(2 * pair + 1), expected.luma.row(2 * pair),
                                              expected.luma.row(2 * pair + 1), expected.u.row(pair),
                                              expected.v.row(pair), width);
                }
                ASSERT_EQ(expectedStatus, keliRGBToYUV420_8u_C3P3R(rgb.row(0), rgb.step, planes, steps, {width, height}));
                ASSERT_TRUE(dst == expected) << "RGBToYUV420_8u_C3P3R on " << target << ", " << width << " x " << height;

                for (int pair = 0; pair < height / 2; ++pair) {
                    const int t = 2 * pair, b = t + 1;
                    innerRGBToYUV420_8u_P3R({red.row(t), green.row(t), blue.row(t)},
                                            {red.row(b), green.row(b), blue.row(b)}, expected.luma.row(t),
                                            expected.luma.row(b), expected.u.row(pair), expected.v.row(pair), width);
                }
                const Kel8u* const rgbPlanes[3] = {red.row(0), green.row(0), blue.row(0)};
                ASSERT_EQ(expectedStatus, keliRGBToYUV420_8u_P3R(rgbPlanes, red.step, planes, steps, {width, height}));
                ASSERT_TRUE(dst == expected) << "RGBToYUV420_8u_P3R on " << target << ", " << width << " x " << height;
            }
        }
    });
}

// Every RGB colour once: a 4096 x 4096 image whose pixel (x, y) is the colour
// y * 4096 + x.  Each Y is held to the one-pixel formula, each cell's U and V
// to the cell formulas.
TEST(SimdYUV420, EveryRGBMatchesTheFormulas)
{
    constexpr int kSide = 4096, kCells = kSide / 2;
    std::vector<Kel8u> rgb(static_cast<std::size_t>(kSide) * kSide * 3);
    for (std::size_t at = 0; at < static_cast<std::size_t>(kSide) * kSide; ++at) {
        rgb[3 * at + 0] = static_cast<Kel8u>(at >> 16);
        rgb[3 * at + 1] = static_cast<Kel8u>(at >> 8);
        rgb[3 * at + 2] = static_cast<Kel8u>(at);
    }
    using namespace kel::yuv;
    std::vector<Kel8u> lumaExpected(static_cast<std::size_t>(kSide) * kSide), uExpected(kCells * kCells),
        vExpected(kCells * kCells);
    for (std::size_t at = 0; at < lumaExpected.size(); ++at)
        lumaExpected[at] = luma(rgb[3 * at], rgb[3 * at + 1], rgb[3 * at + 2]);
    for (int cy = 0; cy < kCells; ++cy) {
        for (int cx = 0; cx < kCells; ++cx) {
            std::int32_t red = 0, blue = 0, sum = 0;
            for (int p = 0; p < 4; ++p) {
                const std::size_t at = static_cast<std::size_t>(2 * cy + p / 2) * kSide + 2 * cx + p % 2;
                red += rgb[3 * at];
                blue += rgb[3 * at + 2];
                sum += lumaSum(rgb[3 * at], rgb[3 * at + 1], rgb[3 * at + 2]);
            }
            uExpected[cy * kCells + cx] = chromaU<2>(blue, sum);
            vExpected[cy * kCells + cx] = chromaV<2>(red, sum);
        }
    }
    const int steps[3] = {kSide, kCells, kCells};
    kt::forEachSimdTarget([&](const std::string& target) {
        std::vector<Kel8u> lumaOut(lumaExpected.size()), uOut(uExpected.size()), vOut(vExpected.size());
        Kel8u* const planes[3] = {lumaOut.data(), uOut.data(), vOut.data()};
        ASSERT_EQ(kelOk, keliRGBToYUV420_8u_C3P3R(rgb.data(), 3 * kSide, planes, steps, {kSide, kSide}));
        EXPECT_TRUE(lumaOut == lumaExpected) << target;
        EXPECT_TRUE(uOut == uExpected) << target;
        EXPECT_TRUE(vOut == vExpected) << target;
    });
}

// Every colour through the rounding variant, a 4096-pixel row pair at a
// time: each Y against (L + 32768) >> 16, each cell against the cell formulas.
TEST(SimdYUV420, EveryBGRMatchesTheRoundedFormulas)
{
    constexpr int kSide = 4096;
    using namespace kel::yuv;
    kt::forEachSimdTarget([&](const std::string& target) {
        const RowPairRGBToYUV420 kernel = kel::chooseBGRToYUV420RoundedLuma_8u_C3P3R();
        std::vector<Kel8u> bgr(2 * 3 * kSide), luma(2 * kSide), u(kSide / 2), v(kSide / 2);
        int wrong = 0;
        for (int y = 0; y < kSide; y += 2) {
            for (int row = 0; row < 2; ++row) {
                for (int x = 0; x < kSide; ++x) {
                    const std::uint32_t colour = static_cast<std::uint32_t>(y + row) * kSide + x;
                    Kel8u* p = &bgr[3 * (row * kSide + x)];
                    p[0] = static_cast<Kel8u>(colour >> 16);
                    p[1] = static_cast<Kel8u>(colour >> 8);
                    p[2] = static_cast<Kel8u>(colour);
                }
            }
            kernel(bgr.data(), bgr.data() + 3 * kSide, luma.data(), luma.data() + kSide, u.data(), v.data(), kSide);
            for (int c = 0; c < kSide / 2; ++c) {
                std::int32_t red = 0, blue = 0, sum = 0;
                for (int p = 0; p < 4; ++p) {
                    const int at = (p / 2) * kSide + 2 * c + p % 2;
                    const Kel8u* px = &bgr[3 * at];
                    const std::int32_t l = lumaSum(px[2], px[1], px[0]);
                    wrong += luma[at] != static_cast<Kel8u>((l + 32768) >> 16);
                    red += px[2];
                    blue += px[0];
                    sum += l;
                }
                wrong += u[c] != chromaU<2>(blue, sum);
                wrong += v[c] != chromaV<2>(red, sum);
            }
        }
        EXPECT_EQ(0, wrong) << target;
    });
}

} // namespace

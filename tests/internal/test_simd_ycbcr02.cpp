// The whole-vector RGB and BGR to 4:2:0 and pixel-order 4:2:2 kernels against
// the scalar kernels, byte for byte, on every SIMD target this processor runs.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "support/targets.h"
#include "ycbcr02simd.h"

namespace {

using kel::RowForward422;
using kel::RowPairForward420;

// ---- 4:2:0 ----------------------------------------------------------------------------------------

using Call420 = KelResult (*)(const Kel8u*, int, Kel8u* const*, const int*, KelImageSize);

// A 4:2:0 member with its row-pair chooser, its scalar row-pair kernel, its
// pixel pitch, its smallest size and whether planes 1 and 2 hold Cr and Cb.
struct Member420 {
    const char* name;
    Call420 call;
    RowPairForward420 (*choose)();
    RowPairForward420 scalar;
    int pitch, minSide;
    bool crFirst;
};

const Member420 kMembers420[] = {
    {"RGBToYCbCr420_C3", keliRGBToYCbCr420_8u_C3P3R, kel::chooseRGBToYCbCr420, innerRGBToYCbCr420_8u_C3P3R, 3, 1, false},
    {"BGRToYCbCr420_C3", keliBGRToYCbCr420_8u_C3P3R, kel::chooseBGRToYCbCr420, innerBGRToYCbCr420_8u_C3P3R, 3, 2, false},
    {"BGRToYCbCr420_AC4", keliBGRToYCbCr420_8u_AC4P3R, kel::chooseBGRToYCbCr420AC4, innerBGRToYCbCr420_8u_AC4P3R, 4, 2,
     false},
    {"BGRToYCrCb420_C3", keliBGRToYCrCb420_8u_C3P3R, kel::chooseBGRToYCbCr420, innerBGRToYCbCr420_8u_C3P3R, 3, 2, true},
    {"BGRToYCrCb420_AC4", keliBGRToYCrCb420_8u_AC4P3R, kel::chooseBGRToYCbCr420AC4, innerBGRToYCbCr420_8u_AC4P3R, 4, 2,
     true},
};

// ---- 4:2:2 ----------------------------------------------------------------------------------------

using Call422 = KelResult (*)(const Kel8u*, int, Kel8u*, int, KelImageSize);

struct Member422 {
    const char* name;
    Call422 call;
    RowForward422 (*choose)();
    RowForward422 scalar;
};

const Member422 kMembers422[] = {
    {"RGBToYCbCr422_C3C2", keliRGBToYCbCr422_8u_C3C2R, kel::chooseRGBToYCbCr422, innerRGBToYCbCr422_C3_C2R},
    {"RGBToYCrCb422_C3C2", keliRGBToYCrCb422_8u_C3C2R, kel::chooseRGBToYCrCb422, innerRGBToYCrCb422_C3_C2R},
};

TEST(SimdRGBToYCbCr, EveryTargetHasItsOwnKernel)
{
    const auto count = [](auto choose, const char* name) {
        const kt::ChosenKernels chosen = kt::chosenOnEveryTarget(choose);
        EXPECT_EQ(chosen.targets, chosen.distinct()) << name;
        EXPECT_GE(chosen.targets, 1) << name;
    };
    for (const Member420& m : kMembers420) count(m.choose, m.name);
    for (const Member422& m : kMembers422) count(m.choose, m.name);
}

// The row-pair kernel alone, widths 0 up, rows starting at every alignment:
// the same bytes as the scalar kernel in both luma rows and both chroma
// rows, and nothing written past the last whole cell.
TEST(SimdRGBToYCbCr, RowPair420MatchesScalarKernelAtEveryWidth)
{
    for (const Member420& m : kMembers420) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : kt::simdTestWidths()) {
                for (int lead = 0; lead < 4; ++lead) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 4 + lead));
                    const kt::RandomRows src(2, m.pitch * width + 1, lead, gen);
                    kt::RandomRows fastLuma(2, width + 3, 3 - lead, gen), fastCb(1, width / 2, lead + 1, gen),
                        fastCr(1, width / 2, 2, gen);
                    kt::RandomRows scalarLuma = fastLuma, scalarCb = fastCb, scalarCr = fastCr;
                    kt::RandomRows source = src;
                    m.choose()(source.row(0), source.row(1), fastLuma.row(0), fastLuma.row(1), fastCb.row(0),
                               fastCr.row(0), width);
                    m.scalar(source.row(0), source.row(1), scalarLuma.row(0), scalarLuma.row(1), scalarCb.row(0),
                             scalarCr.row(0), width);
                    ASSERT_TRUE(source.bytes == src.bytes) << m.name << ": the source is read only";
                    ASSERT_TRUE(fastLuma.bytes == scalarLuma.bytes && fastCb.bytes == scalarCb.bytes &&
                                fastCr.bytes == scalarCr.bytes)
                        << m.name << " on " << target << ", width " << width << ", lead " << lead;
                }
            }
        });
    }
}

// The public functions at heights 1 to 9 with odd strides: every byte of the
// three destination buffers (rows, padding, guards) as the scalar kernels
// leave them, the status the member's size rules give.
TEST(SimdRGBToYCbCr, Public420MatchesScalarKernelAtEverySize)
{
    for (const Member420& m : kMembers420) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : kt::simdTestWidths()) {
                if (width == 0) continue;
                for (int height = 1; height <= 9; ++height) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 16 + height));
                    kt::RandomRows src(height, m.pitch * width + 5 + (width & 1), 1, gen);
                    kt::RandomRows luma(height, width + 3 + (width & 1), 2, gen), first(height / 2 + 1, width / 2 + 7, 3, gen),
                        second(height / 2 + 1, width / 2 + 5, 5, gen);
                    kt::RandomRows expectLuma = luma, expectFirst = first, expectSecond = second;
                    const bool tooSmall = width < m.minSide || height < m.minSide;
                    if (!tooSmall) {
                        kt::RandomRows& cb = m.crFirst ? expectSecond : expectFirst;
                        kt::RandomRows& cr = m.crFirst ? expectFirst : expectSecond;
                        for (int pair = 0; pair < height / 2; ++pair) {
                            m.scalar(src.row(2 * pair), src.row(2 * pair + 1), expectLuma.row(2 * pair),
                                     expectLuma.row(2 * pair + 1), cb.row(pair), cr.row(pair), width);
                        }
                    }
                    Kel8u* const planes[3] = {luma.row(0), first.row(0), second.row(0)};
                    const int steps[3] = {luma.step, first.step, second.step};
                    const KelResult status = m.call(src.row(0), src.step, planes, steps, {width, height});
                    ASSERT_EQ(tooSmall ? kelErrSize : (width | height) & 1 ? kelWarnOddSize : kelOk, status)
                        << m.name << ", " << width << " x " << height;
                    ASSERT_TRUE(luma.bytes == expectLuma.bytes && first.bytes == expectFirst.bytes &&
                                second.bytes == expectSecond.bytes)
                        << m.name << " on " << target << ", " << width << " x " << height;
                }
            }
        });
    }
}

TEST(SimdRGBToYCbCr, Row422MatchesScalarKernelAtEveryWidth)
{
    for (const Member422& m : kMembers422) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : kt::simdTestWidths()) {
                for (int lead = 0; lead < 4; ++lead) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 4 + lead));
                    const kt::RandomRows src(1, 3 * width + 1, lead, gen);
                    kt::RandomRows fast(1, 2 * width + 2, 3 - lead, gen);
                    kt::RandomRows scalar = fast, source = src;
                    m.choose()(source.row(0), fast.row(0), width);
                    m.scalar(source.row(0), scalar.row(0), width);
                    ASSERT_TRUE(source.bytes == src.bytes) << m.name << ": the source is read only";
                    ASSERT_TRUE(fast.bytes == scalar.bytes)
                        << m.name << " on " << target << ", width " << width << ", lead " << lead;
                }
            }
        });
    }
}

TEST(SimdRGBToYCbCr, Public422MatchesScalarKernelAtEverySize)
{
    for (const Member422& m : kMembers422) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : kt::simdTestWidths()) {
                if (width == 0) continue;
                for (int height = 1; height <= 9; ++height) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 16 + height));
                    kt::RandomRows src(height, 3 * width + 5 + (width & 1), 3, gen);
                    kt::RandomRows dst(height, 2 * width + 3, 1, gen);
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

// ---- every colour ---------------------------------------------------------------------------------

// The forward sums as the format defines them, written out here.
int lumaOf(int r, int g, int b, int constant)
{
    return (16843 * r + 33030 * g + 6423 * b + constant) >> 16;
}
int cbOf(int sr, int sg, int sb, int constant, int shift)
{
    return (-9699 * sr - 19071 * sg + 28770 * sb + constant) >> shift;
}
int crOf(int sr, int sg, int sb, int constant, int shift)
{
    return (28770 * sr - 24117 * sg - 4653 * sb + constant) >> shift;
}

// All 2^24 colours in a 4096 x 4096 image, pixel i holding R = i & 255,
// G = i >> 8 & 255, B = i >> 16.
constexpr int kSide = 4096;
std::vector<Kel8u> everyColour()
{
    std::vector<Kel8u> rgb(static_cast<std::size_t>(kSide) * kSide * 3);
    for (std::size_t i = 0; i < rgb.size() / 3; ++i) {
        rgb[3 * i + 0] = static_cast<Kel8u>(i & 0xFF);
        rgb[3 * i + 1] = static_cast<Kel8u>(i >> 8 & 0xFF);
        rgb[3 * i + 2] = static_cast<Kel8u>(i >> 16);
    }
    return rgb;
}

// Every colour through the public 4:2:0 member: each pixel's Y is the
// rounded luma of its colour, and each cell's Cb and Cr those of its four
// colours' sums.
TEST(SimdRGBToYCbCr, EveryColourThrough420MatchesTheFormula)
{
    const std::vector<Kel8u> rgb = everyColour();
    constexpr int kCells = kSide / 2;
    std::vector<Kel8u> expectLuma(static_cast<std::size_t>(kSide) * kSide), expectCb(kCells * kCells),
        expectCr(kCells * kCells);
    for (std::size_t i = 0; i < expectLuma.size(); ++i) {
        expectLuma[i] = static_cast<Kel8u>(lumaOf(rgb[3 * i], rgb[3 * i + 1], rgb[3 * i + 2], 0x108000));
    }
    for (int cy = 0; cy < kCells; ++cy) {
        for (int cx = 0; cx < kCells; ++cx) {
            int sum[3] = {0, 0, 0};
            for (int p = 0; p < 4; ++p) {
                const std::size_t at = static_cast<std::size_t>(2 * cy + p / 2) * kSide + 2 * cx + p % 2;
                for (int c = 0; c < 3; ++c) sum[c] += rgb[3 * at + c];
            }
            expectCb[cy * kCells + cx] = static_cast<Kel8u>(cbOf(sum[0], sum[1], sum[2], 0x2008000, 18));
            expectCr[cy * kCells + cx] = static_cast<Kel8u>(crOf(sum[0], sum[1], sum[2], 0x2008000, 18));
        }
    }
    kt::forEachSimdTarget([&](const std::string& target) {
        std::vector<Kel8u> luma(expectLuma.size()), cb(expectCb.size()), cr(expectCr.size());
        Kel8u* const planes[3] = {luma.data(), cb.data(), cr.data()};
        const int steps[3] = {kSide, kCells, kCells};
        ASSERT_EQ(kelOk, keliRGBToYCbCr420_8u_C3P3R(rgb.data(), 3 * kSide, planes, steps, {kSide, kSide}));
        EXPECT_TRUE(cb == expectCb && cr == expectCr) << target << ": chroma";
        if (luma == expectLuma) return;
        for (std::size_t i = 0; i < luma.size(); ++i) {
            ASSERT_EQ(expectLuma[i], luma[i]) << target << ": R " << int(rgb[3 * i]) << ", G " << int(rgb[3 * i + 1])
                                              << ", B " << int(rgb[3 * i + 2]);
        }
    });
}

// Every colour through the pixel-order 4:2:2 member, which rounds the luma
// of a pair's first pixel and truncates that of its second: every colour
// meets both, in two passes, the second with each row shifted by a pixel.
TEST(SimdRGBToYCbCr, EveryColourThrough422MatchesTheFormula)
{
    const std::vector<Kel8u> rgb = everyColour();
    for (int shift = 0; shift < 2; ++shift) {
        // Rows of kSide + 1 pixels: pixel i of the image at 1 + i in pass 1.
        const int width = kSide + shift;
        std::vector<Kel8u> src(static_cast<std::size_t>(width) * kSide * 3, 0);
        for (int y = 0; y < kSide; ++y) {
            std::copy_n(rgb.begin() + static_cast<std::ptrdiff_t>(3) * kSide * y, 3 * kSide,
                        src.begin() + static_cast<std::ptrdiff_t>(3) * width * y + 3 * shift);
        }
        std::vector<Kel8u> expected(static_cast<std::size_t>(2) * width * kSide);
        for (int y = 0; y < kSide; ++y) {
            const Kel8u* row = src.data() + static_cast<std::size_t>(3) * width * y;
            Kel8u* out = expected.data() + static_cast<std::size_t>(2) * width * y;
            for (int x = 0; x + 1 < width; x += 2) {
                const Kel8u* e = row + 3 * x;
                const Kel8u* o = e + 3;
                const int sr = e[0] + o[0], sg = e[1] + o[1], sb = e[2] + o[2];
                out[2 * x + 0] = static_cast<Kel8u>(lumaOf(e[0], e[1], e[2], 0x108000));
                out[2 * x + 1] = static_cast<Kel8u>(cbOf(sr, sg, sb, 0x1010000, 17));
                out[2 * x + 2] = static_cast<Kel8u>(lumaOf(o[0], o[1], o[2], 0x100000));
                out[2 * x + 3] = static_cast<Kel8u>(crOf(sr, sg, sb, 0x1010000, 17));
            }
            if (width & 1) {
                const Kel8u* last = row + 3 * (width - 1);
                out[2 * width - 2] = static_cast<Kel8u>(lumaOf(last[0], last[1], last[2], 0x108000));
                out[2 * width - 1] = static_cast<Kel8u>(cbOf(last[0], last[1], last[2], 0x808000, 16));
            }
        }
        kt::forEachSimdTarget([&](const std::string& target) {
            std::vector<Kel8u> dst(expected.size());
            ASSERT_EQ(kelOk, keliRGBToYCbCr422_8u_C3C2R(src.data(), 3 * width, dst.data(), 2 * width, {width, kSide}));
            if (dst == expected) return;
            for (std::size_t i = 0; i < dst.size(); ++i) {
                ASSERT_EQ(expected[i], dst[i]) << target << ", pass " << shift << ": byte " << i % (2 * width)
                                               << " of row " << i / (2 * width);
            }
        });
    }
}

} // namespace

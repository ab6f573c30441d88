// The whole-vector kernels of packed 565 and 555 pixels to and from 8-bit
// pixels against the scalar kernels, byte for byte, on every SIMD target this
// processor runs; and the packed-source conversions, which widen a run at a
// time, against the scalar kernels applied to whole rows.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "rgb565simd.h"
#include "support/targets.h"
#include "ycbcr02simd.h"

namespace {

using namespace kel::simd565;

TEST(SimdRgb565, EveryTargetHasItsOwnKernel)
{
    const auto distinct = [](auto choose, const void* scalar, const char* name) {
        const kt::ChosenKernels chosen = kt::chosenOnEveryTarget(choose);
        EXPECT_GE(chosen.targets, 1) << name;
#if KELCC_SIMD
        EXPECT_EQ(chosen.targets, chosen.distinct()) << name;
        EXPECT_EQ(0u, chosen.kernels.count(scalar)) << name;
#else
        EXPECT_EQ(1u, chosen.kernels.count(scalar)) << name;
#endif
    };
    distinct(choosePack565, reinterpret_cast<const void*>(innerRGBToRGB565_8u16u_C3R), "pack 565");
    distinct(chooseWiden565, reinterpret_cast<const void*>(innerRGB565ToRGB_16u8u_C3R), "widen 565");
    distinct(chooseWiden555, reinterpret_cast<const void*>(innerRGB555ToRGB_16u8u_C3R), "widen 555");
}

// Packing: every width, source and destination at every byte offset modulo 4
// (an odd destination address included: the words are written through
// copies); the whole buffer, guards included, as the scalar kernel leaves it.
TEST(SimdRgb565, PackMatchesScalarKernelAtEveryWidthAndOffset)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        const PackRow kernel = choosePack565();
        for (int width : kt::simdTestWidths()) {
            for (int lead = 0; lead < 4; ++lead) {
                std::mt19937 gen(static_cast<std::uint32_t>(width * 4 + lead));
                kt::RandomRows src(1, 3 * width, lead, gen), fast(1, 2 * width, 3 - lead, gen);
                kt::RandomRows scalar = fast;
                kernel(src.row(0), reinterpret_cast<Kel16u*>(fast.row(0)), width);
                innerRGBToRGB565_8u16u_C3R(src.row(0), reinterpret_cast<Kel16u*>(scalar.row(0)), width);
                ASSERT_TRUE(fast.bytes == scalar.bytes) << target << ", width " << width << ", lead " << lead;
            }
        }
    });
}

// Widening, 565 and 555: random words (bit 15 of 555 set at random too),
// sources at odd byte addresses included.
TEST(SimdRgb565, WidenMatchesScalarKernelAtEveryWidthAndOffset)
{
    struct Widen {
        const char* name;
        WidenRow (*choose)();
        WidenRow scalar;
    };
    const Widen kinds[] = {{"565", chooseWiden565, innerRGB565ToRGB_16u8u_C3R},
                           {"555", chooseWiden555, innerRGB555ToRGB_16u8u_C3R}};
    for (const Widen& kind : kinds) {
        kt::forEachSimdTarget([&](const std::string& target) {
            const WidenRow kernel = kind.choose();
            for (int width : kt::simdTestWidths()) {
                for (int lead = 0; lead < 4; ++lead) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 4 + lead));
                    kt::RandomRows src(1, 2 * width, lead, gen), fast(1, 3 * width, 3 - lead, gen);
                    kt::RandomRows scalar = fast;
                    const auto* words = reinterpret_cast<const Kel16u*>(src.row(0));
                    kernel(words, fast.row(0), width);
                    kind.scalar(words, scalar.row(0), width);
                    ASSERT_TRUE(fast.bytes == scalar.bytes)
                        << kind.name << " on " << target << ", width " << width << ", lead " << lead;
                }
            }
        });
    }
}

// ---- packed-source conversions ---------------------------------------------------------------------
// The row layers widen 512 pixels at a time; the reference widens the whole
// row with the scalar kernel and converts it with the scalar BGR kernel, so a
// run boundary that cut a group, or a vector kernel that differed, would show.

std::vector<Kel8u> widened(WidenRow widen, const Kel8u* row, int width)
{
    std::vector<Kel8u> bgr(3 * static_cast<std::size_t>(width) + 1);
    widen(reinterpret_cast<const Kel16u*>(row), bgr.data(), width);
    return bgr;
}

struct PlanesMember {
    const char* name;
    KelResult (*call)(const Kel16u*, int, Kel8u* const*, const int*, KelImageSize);
    WidenRow widen;
    void (*kernel)(const Kel8u*, Kel8u*, Kel8u*, Kel8u*, int);
    int groupShift;
};

TEST(SimdRgb565, PackedToPlanesMatchesScalarKernelsOnWholeRows)
{
    const PlanesMember members[] = {
        {"BGR565ToYCbCr422", keliBGR565ToYCbCr422_16u8u_C3P3R, innerRGB565ToRGB_16u8u_C3R, innerBGRToYCbCr422_8u_C3P3R, 1},
        {"BGR555ToYCbCr422", keliBGR555ToYCbCr422_16u8u_C3P3R, innerRGB555ToRGB_16u8u_C3R, innerBGRToYCbCr422_8u_C3P3R, 1},
        {"BGR565ToYCbCr411", keliBGR565ToYCbCr411_16u8u_C3P3R, innerRGB565ToRGB_16u8u_C3R, innerBGRToYCbCr411_8u_C3P3R, 2},
        {"BGR555ToYCbCr411", keliBGR555ToYCbCr411_16u8u_C3P3R, innerRGB555ToRGB_16u8u_C3R, innerBGRToYCbCr411_8u_C3P3R, 2},
    };
    for (const PlanesMember& m : members) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : kt::simdTestWidths({511, 512, 513, 1023, 1024, 1027})) {
                if (width < 4) continue;
                const int height = 3;
                std::mt19937 gen(static_cast<std::uint32_t>(width));
                // An odd source stride: rows at odd byte addresses.
                kt::RandomRows src(height, 2 * width + 3, 1, gen);
                kt::RandomRows y(height, width + 2, 0, gen), cb(height, width / 2 + 2, 1, gen),
                    cr(height, width / 2 + 1, 2, gen);
                kt::RandomRows ey = y, ecb = cb, ecr = cr;
                for (int r = 0; r < height; ++r) {
                    const std::vector<Kel8u> bgr = widened(m.widen, src.row(r), width);
                    m.kernel(bgr.data(), ey.row(r), ecb.row(r), ecr.row(r), width);
                }
                Kel8u* const planes[3] = {y.row(0), cb.row(0), cr.row(0)};
                const int steps[3] = {y.step, cb.step, cr.step};
                m.call(reinterpret_cast<const Kel16u*>(src.row(0)), src.step, planes, steps, {width, height});
                ASSERT_TRUE(y.bytes == ey.bytes && cb.bytes == ecb.bytes && cr.bytes == ecr.bytes)
                    << m.name << " on " << target << ", width " << width;
            }
        });
    }
}

TEST(SimdRgb565, PackedToPixelOrderMatchesScalarKernelOnWholeRows)
{
    struct Member {
        const char* name;
        KelResult (*call)(const Kel16u*, int, Kel8u*, int, KelImageSize);
        WidenRow widen;
    };
    const Member members[] = {{"BGR565ToYCbCr422", keliBGR565ToYCbCr422_16u8u_C3C2R, innerRGB565ToRGB_16u8u_C3R},
                              {"BGR555ToYCbCr422", keliBGR555ToYCbCr422_16u8u_C3C2R, innerRGB555ToRGB_16u8u_C3R}};
    for (const Member& m : members) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : kt::simdTestWidths({511, 512, 513, 1025})) {
                if (width < 2) continue;
                const int height = 2;
                std::mt19937 gen(static_cast<std::uint32_t>(width));
                kt::RandomRows src(height, 2 * width + 1, 0, gen), dst(height, 2 * width + 5, 3, gen);
                kt::RandomRows expected = dst;
                for (int r = 0; r < height; ++r) {
                    const std::vector<Kel8u> bgr = widened(m.widen, src.row(r), width);
                    innerBGRToYCbCr422_8u_C3C2R(bgr.data(), expected.row(r), width);
                }
                m.call(reinterpret_cast<const Kel16u*>(src.row(0)), src.step, dst.row(0), dst.step, {width, height});
                ASSERT_TRUE(dst.bytes == expected.bytes) << m.name << " on " << target << ", width " << width;
            }
        });
    }
}

// 4:2:0: the second row of a pair is srcStep >> 1 words after the first, and
// an odd last column and row get their luma from the widened pixel.
TEST(SimdRgb565, PackedTo420MatchesScalarKernelOnWholeRows)
{
    struct Member {
        const char* name;
        KelResult (*call)(const Kel16u*, int, Kel8u* const*, const int*, KelImageSize);
        WidenRow widen;
    };
    const Member members[] = {{"BGR565ToYCbCr420", keliBGR565ToYCbCr420_16u8u_C3P3R, innerRGB565ToRGB_16u8u_C3R},
                              {"BGR555ToYCbCr420", keliBGR555ToYCbCr420_16u8u_C3P3R, innerRGB555ToRGB_16u8u_C3R}};
    const auto luma = [](const Kel8u* p) {
        return static_cast<Kel8u>((16843 * p[2] + 33030 * p[1] + 6423 * p[0] + 0x108000) >> 16);
    };
    for (const Member& m : members) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : kt::simdTestWidths({511, 512, 513, 1025})) {
                if (width < 2) continue;
                for (int height : {2, 5}) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 8 + height));
                    const int srcStep = 2 * width + 5;  // odd: the pair's second row is srcStep - 1 bytes on
                    kt::RandomRows src(height + 1, srcStep, 0, gen);
                    kt::RandomRows y(height, width + 2, 0, gen), cb(height / 2, width / 2 + 2, 1, gen),
                        cr(height / 2, width / 2 + 1, 2, gen);
                    kt::RandomRows ey = y, ecb = cb, ecr = cr;
                    for (int r = 0; r < height; ++r) {
                        const Kel8u* row = r % 2 == 1 ? src.row(r - 1) + (srcStep - 1) : src.row(r);
                        const std::vector<Kel8u> bgr = widened(m.widen, row, width);
                        if (r % 2 == 1) {
                            const std::vector<Kel8u> top = widened(m.widen, src.row(r - 1), width);
                            innerBGRToYCbCr420_8u_C3P3R(top.data(), bgr.data(), ey.row(r - 1), ey.row(r),
                                                        ecb.row(r / 2), ecr.row(r / 2), width);
                        }
                        const bool lastOddRow = r == height - 1 && height % 2 == 1;
                        for (int x = lastOddRow ? 0 : width & ~1; x < width; ++x) ey.row(r)[x] = luma(&bgr[3 * x]);
                    }
                    Kel8u* const planes[3] = {y.row(0), cb.row(0), cr.row(0)};
                    const int steps[3] = {y.step, cb.step, cr.step};
                    m.call(reinterpret_cast<const Kel16u*>(src.row(0)), srcStep, planes, steps, {width, height});
                    ASSERT_TRUE(y.bytes == ey.bytes && cb.bytes == ecb.bytes && cr.bytes == ecr.bytes)
                        << m.name << " on " << target << ", " << width << " x " << height;
                }
            }
        });
    }
}

} // namespace

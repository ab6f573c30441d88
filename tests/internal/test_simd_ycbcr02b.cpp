// The whole-vector BGR and CbYCr 4:2:2, planar-source 4:2:2, 4:1:1 and
// filtered CbYCr kernels against the scalar kernels, byte for byte, on every
// SIMD target this processor runs.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "gamma.h"
#include "support/targets.h"
#include "ycbcr02simd.h"

namespace {

// The test widths and 1029 .. 1031 and 2061, which cross the gamma member's runs.
std::vector<int> gammaRunWidths()
{
    return kt::simdTestWidths({1029, 1030, 1031, 2061});
}

using kel::FilterCarry;
using kel::RowFilteredCbYCr;
using kel::RowForward422;
using kel::RowForwardToPlanes;
using kel::RowPlanesForward422;

template <typename Choose>
void expectOneKernelPerTarget(Choose choose, const char* name)
{
    const kt::ChosenKernels chosen = kt::chosenOnEveryTarget(choose);
    EXPECT_EQ(chosen.targets, chosen.distinct()) << name;
    EXPECT_GE(chosen.targets, 1) << name;
}

// ---- pixel-order source to pixel-order 4:2:2 -------------------------------------------------------

using CallC2 = KelResult (*)(const Kel8u*, int, Kel8u*, int, KelImageSize);

struct MemberC2 {
    const char* name;
    CallC2 call;
    RowForward422 (*choose)();
    RowForward422 scalar;
    int pitch, minWidth;
};

const MemberC2 kMembersC2[] = {
    {"BGRToYCbCr422_C3C2", keliBGRToYCbCr422_8u_C3C2R, kel::chooseBGRToYCbCr422, innerBGRToYCbCr422_8u_C3C2R, 3, 2},
    {"BGRToYCbCr422_AC4C2", keliBGRToYCbCr422_8u_AC4C2R, kel::chooseBGRToYCbCr422AC4, innerBGRToYCbCr422_8u_AC4C2R, 4,
     2},
    {"BGRToCbYCr422_AC4C2", keliBGRToCbYCr422_8u_AC4C2R, kel::chooseBGRToCbYCr422AC4, innerBGRToCbYCr422_8u_AC4C2R, 4,
     1},
};

// ---- planar source to pixel-order 4:2:2 ------------------------------------------------------------

using CallP3C2 = KelResult (*)(const Kel8u* const*, int, Kel8u*, int, KelImageSize);

struct MemberP3C2 {
    const char* name;
    CallP3C2 call;
    RowPlanesForward422 (*choose)();
    RowPlanesForward422 scalar;
};

const MemberP3C2 kMembersP3C2[] = {
    {"RGBToYCbCr422_P3C2", keliRGBToYCbCr422_8u_P3C2R, kel::chooseRGBPlanesToYCbCr422, innerRGBToYCbCr422_C3P2_C3R},
    {"RGBToYCrCb422_P3C2", keliRGBToYCrCb422_8u_P3C2R, kel::chooseRGBPlanesToYCrCb422, innerRGBToYCrCb422_C3P2_C3R},
};

// ---- pixel-order source to planes, 4:2:2 and 4:1:1 -----------------------------------------------------

using CallP3 = KelResult (*)(const Kel8u*, int, Kel8u* const*, const int*, KelImageSize);

struct MemberP3 {
    const char* name;
    CallP3 call;
    RowForwardToPlanes (*choose)();
    RowForwardToPlanes scalar;
    int pitch, cell;  // cell: pixels a chroma sample, also the smallest width
};

const MemberP3 kMembersP3[] = {
    {"BGRToYCbCr422_C3P3", keliBGRToYCbCr422_8u_C3P3R, kel::chooseBGRToYCbCr422Planes, innerBGRToYCbCr422_8u_C3P3R, 3,
     2},
    {"BGRToYCbCr422_AC4P3", keliBGRToYCbCr422_8u_AC4P3R, kel::chooseBGRToYCbCr422PlanesAC4,
     innerBGRToYCbCr422_8u_AC4P3R, 4, 2},
    {"BGRToYCbCr411_C3P3", keliBGRToYCbCr411_8u_C3P3R, kel::chooseBGRToYCbCr411, innerBGRToYCbCr411_8u_C3P3R, 3, 4},
    {"BGRToYCbCr411_AC4P3", keliBGRToYCbCr411_8u_AC4P3R, kel::chooseBGRToYCbCr411AC4, innerBGRToYCbCr411_8u_AC4P3R, 4,
     4},
};

TEST(SimdRGBToYCbCrRest, EveryTargetHasItsOwnKernel)
{
    for (const MemberC2& m : kMembersC2) expectOneKernelPerTarget(m.choose, m.name);
    for (const MemberP3C2& m : kMembersP3C2) expectOneKernelPerTarget(m.choose, m.name);
    for (const MemberP3& m : kMembersP3) expectOneKernelPerTarget(m.choose, m.name);
    expectOneKernelPerTarget(kel::chooseRGBToCbYCr422, "RGBToCbYCr422_C3C2");
    expectOneKernelPerTarget(kel::chooseForwardGammaBytes, "ForwardGammaBytes");
}

// ---- row kernels alone: widths 0 up, rows at every alignment, guards kept --------------------------

TEST(SimdRGBToYCbCrRest, PixelOrderRowsMatchScalarKernelAtEveryWidth)
{
    for (const MemberC2& m : kMembersC2) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : gammaRunWidths()) {
                for (int lead = 0; lead < 4; ++lead) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 4 + lead));
                    const kt::RandomRows src(1, m.pitch * width + 1, lead, gen);
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

TEST(SimdRGBToYCbCrRest, PlanarSourceRowsMatchScalarKernelAtEveryWidth)
{
    for (const MemberP3C2& m : kMembersP3C2) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : gammaRunWidths()) {
                for (int lead = 0; lead < 4; ++lead) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 4 + lead));
                    const kt::RandomRows r(1, width, lead, gen), g(1, width, 3 - lead, gen), b(1, width, lead + 5, gen);
                    kt::RandomRows fast(1, 2 * width + 2, 3 - lead, gen);
                    kt::RandomRows scalar = fast, red = r, green = g, blue = b;
                    const Kel8u* const planes[3] = {red.row(0), green.row(0), blue.row(0)};
                    m.choose()(planes, fast.row(0), width);
                    m.scalar(planes, scalar.row(0), width);
                    ASSERT_TRUE(red.bytes == r.bytes && green.bytes == g.bytes && blue.bytes == b.bytes)
                        << m.name << ": the source is read only";
                    ASSERT_TRUE(fast.bytes == scalar.bytes)
                        << m.name << " on " << target << ", width " << width << ", lead " << lead;
                }
            }
        });
    }
}

TEST(SimdRGBToYCbCrRest, PlaneRowsMatchScalarKernelAtEveryWidth)
{
    for (const MemberP3& m : kMembersP3) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : gammaRunWidths()) {
                for (int lead = 0; lead < 4; ++lead) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 4 + lead));
                    const kt::RandomRows src(1, m.pitch * width + 1, lead, gen);
                    kt::RandomRows fastLuma(1, width + 3, 3 - lead, gen), fastCb(1, width / m.cell, lead + 1, gen),
                        fastCr(1, width / m.cell, 2, gen);
                    kt::RandomRows scalarLuma = fastLuma, scalarCb = fastCb, scalarCr = fastCr, source = src;
                    m.choose()(source.row(0), fastLuma.row(0), fastCb.row(0), fastCr.row(0), width);
                    m.scalar(source.row(0), scalarLuma.row(0), scalarCb.row(0), scalarCr.row(0), width);
                    ASSERT_TRUE(source.bytes == src.bytes) << m.name << ": the source is read only";
                    ASSERT_TRUE(fastLuma.bytes == scalarLuma.bytes && fastCb.bytes == scalarCb.bytes &&
                                fastCr.bytes == scalarCr.bytes)
                        << m.name << " on " << target << ", width " << width << ", lead " << lead;
                }
            }
        });
    }
}

// The filter's carry in and out: any carry given (also one no row leaves)
// yields the scalar kernel's bytes and carry.
TEST(SimdRGBToYCbCrRest, FilteredRowMatchesScalarKernelAtEveryWidthAndCarry)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        for (int width : gammaRunWidths()) {
            for (int lead = 0; lead < 4; ++lead) {
                std::mt19937 gen(static_cast<std::uint32_t>(width * 4 + lead));
                const kt::RandomRows src(1, 3 * width + 1, lead, gen);
                kt::RandomRows fast(1, 2 * width + 2, 3 - lead, gen);
                kt::RandomRows scalar = fast, source = src;
                const FilterCarry given = lead == 0 ? FilterCarry{0, 0}
                                                    : FilterCarry{static_cast<std::int32_t>(gen() % 3668000) - 1834000,
                                                                  static_cast<std::int32_t>(gen() % 3668000) - 1834000};
                FilterCarry fastCarry = given, scalarCarry = given;
                kel::chooseRGBToCbYCr422()(source.row(0), fast.row(0), width, fastCarry);
                innerRGBToCbYCr422_8u_C3C2R(source.row(0), scalar.row(0), width, scalarCarry);
                ASSERT_TRUE(source.bytes == src.bytes) << "the source is read only";
                ASSERT_TRUE(fast.bytes == scalar.bytes) << target << ", width " << width << ", lead " << lead;
                ASSERT_EQ(scalarCarry.b, fastCarry.b) << target << ", width " << width;
                ASSERT_EQ(scalarCarry.r, fastCarry.r) << target << ", width " << width;
            }
        }
    });
}

// ---- the public functions at heights 1 to 9 with odd strides -------------------------------------
// Every byte of the destination buffers (rows, padding, guards) as the scalar
// kernels leave them, and the status the member's size rules give.

TEST(SimdRGBToYCbCrRest, PublicPixelOrderMatchesScalarKernelAtEverySize)
{
    for (const MemberC2& m : kMembersC2) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : gammaRunWidths()) {
                if (width == 0) continue;
                for (int height = 1; height <= 9; ++height) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 16 + height));
                    kt::RandomRows src(height, m.pitch * width + 5 + (width & 1), 3, gen);
                    kt::RandomRows dst(height, 2 * width + 3, 1, gen);
                    kt::RandomRows expected = dst;
                    const bool tooSmall = width < m.minWidth;
                    if (!tooSmall) {
                        for (int y = 0; y < height; ++y) m.scalar(src.row(y), expected.row(y), width);
                    }
                    ASSERT_EQ(tooSmall ? kelErrSize : kelOk,
                              m.call(src.row(0), src.step, dst.row(0), dst.step, {width, height}))
                        << m.name << ", " << width << " x " << height;
                    ASSERT_TRUE(dst.bytes == expected.bytes)
                        << m.name << " on " << target << ", " << width << " x " << height;
                }
            }
        });
    }
}

TEST(SimdRGBToYCbCrRest, PublicPlanarSourceMatchesScalarKernelAtEverySize)
{
    for (const MemberP3C2& m : kMembersP3C2) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : gammaRunWidths()) {
                if (width == 0) continue;
                for (int height = 1; height <= 9; ++height) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 16 + height));
                    const int srcStep = width + 3 + (width & 1);
                    kt::RandomRows r(height, srcStep, 1, gen), g(height, srcStep, 2, gen), b(height, srcStep, 3, gen);
                    kt::RandomRows dst(height, 2 * width + 3, 1, gen);
                    kt::RandomRows expected = dst;
                    for (int y = 0; y < height; ++y) {
                        const Kel8u* const rows[3] = {r.row(y), g.row(y), b.row(y)};
                        m.scalar(rows, expected.row(y), width);
                    }
                    const Kel8u* const planes[3] = {r.row(0), g.row(0), b.row(0)};
                    ASSERT_EQ(kelOk, m.call(planes, srcStep, dst.row(0), dst.step, {width, height}));
                    ASSERT_TRUE(dst.bytes == expected.bytes)
                        << m.name << " on " << target << ", " << width << " x " << height;
                }
            }
        });
    }
}

TEST(SimdRGBToYCbCrRest, PublicPlanesMatchScalarKernelAtEverySize)
{
    for (const MemberP3& m : kMembersP3) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : gammaRunWidths()) {
                if (width == 0) continue;
                for (int height = 1; height <= 9; ++height) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 16 + height));
                    kt::RandomRows src(height, m.pitch * width + 5 + (width & 1), 1, gen);
                    kt::RandomRows luma(height, width + 3 + (width & 1), 2, gen), cb(height, width / m.cell + 7, 3, gen),
                        cr(height, width / m.cell + 5, 5, gen);
                    kt::RandomRows expectLuma = luma, expectCb = cb, expectCr = cr;
                    const bool tooSmall = width < m.cell;
                    if (!tooSmall) {
                        for (int y = 0; y < height; ++y) {
                            m.scalar(src.row(y), expectLuma.row(y), expectCb.row(y), expectCr.row(y), width);
                        }
                    }
                    Kel8u* const planes[3] = {luma.row(0), cb.row(0), cr.row(0)};
                    const int steps[3] = {luma.step, cb.step, cr.step};
                    const KelResult expectStatus = tooSmall                     ? kelErrSize
                                                   : m.cell == 4 && width % 4 != 0 ? kelWarnOddSize
                                                                                   : kelOk;
                    ASSERT_EQ(expectStatus, m.call(src.row(0), src.step, planes, steps, {width, height}))
                        << m.name << ", " << width << " x " << height;
                    ASSERT_TRUE(luma.bytes == expectLuma.bytes && cb.bytes == expectCb.bytes &&
                                cr.bytes == expectCr.bytes)
                        << m.name << " on " << target << ", " << width << " x " << height;
                }
            }
        });
    }
}

// The plain filtered member and the gamma member, whose rows are those of the
// plain one over the samples mapped through the forward table.
TEST(SimdRGBToYCbCrRest, PublicFilteredMatchesScalarKernelAtEverySize)
{
    for (const bool gamma : {false, true}) {
        kt::forEachSimdTarget([&](const std::string& target) {
            for (int width : gammaRunWidths()) {
                if (width == 0) continue;
                for (int height = 1; height <= 9; ++height) {
                    std::mt19937 gen(static_cast<std::uint32_t>(width * 16 + height));
                    kt::RandomRows src(height, 3 * width + 5 + (width & 1), 3, gen);
                    kt::RandomRows dst(height, 2 * width + 3, 1, gen);
                    kt::RandomRows expected = dst;
                    std::vector<Kel8u> coded(static_cast<std::size_t>(3) * width);
                    for (int y = 0; y < height; ++y) {
                        const Kel8u* row = src.row(y);
                        if (gamma) {
                            for (int i = 0; i < 3 * width; ++i) coded[i] = tableFwd8u[row[i]];
                            row = coded.data();
                        }
                        FilterCarry carry{0, 0};
                        innerRGBToCbYCr422_8u_C3C2R(row, expected.row(y), width, carry);
                    }
                    const auto call = gamma ? keliRGBToCbYCr422Gamma_8u_C3C2R : keliRGBToCbYCr422_8u_C3C2R;
                    ASSERT_EQ(kelOk, call(src.row(0), src.step, dst.row(0), dst.step, {width, height}));
                    ASSERT_TRUE(dst.bytes == expected.bytes)
                        << (gamma ? "gamma" : "plain") << " on " << target << ", " << width << " x " << height;
                }
            }
        });
    }
}

// Every byte value through the vector table map, at every count up to 300 and
// every alignment, as the table gives it; nothing written past the count.
TEST(SimdRGBToYCbCrRest, GammaBytesMatchTheTable)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        for (int count = 0; count <= 300; ++count) {
            for (int lead = 0; lead < 4; ++lead) {
                std::mt19937 gen(static_cast<std::uint32_t>(count * 4 + lead));
                kt::RandomRows src(1, count, lead, gen), dst(1, count, 3 - lead, gen);
                for (int i = 0; i < count; ++i) src.row(0)[i] = static_cast<Kel8u>(i * 7 + lead);
                kt::RandomRows expected = dst;
                for (int i = 0; i < count; ++i) expected.row(0)[i] = tableFwd8u[src.row(0)[i]];
                kel::chooseForwardGammaBytes()(src.row(0), dst.row(0), count);
                ASSERT_TRUE(dst.bytes == expected.bytes) << target << ", count " << count << ", lead " << lead;
            }
        }
    });
}

// A negative stride: the plain filtered member walks the rows upward.
TEST(SimdRGBToYCbCrRest, FilteredWalksANegativeStride)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        constexpr int kWidth = 301, kHeight = 5;
        std::mt19937 gen(7);
        kt::RandomRows src(kHeight, 3 * kWidth + 2, 0, gen);
        kt::RandomRows dst(kHeight, 2 * kWidth + 1, 0, gen);
        kt::RandomRows expected = dst;
        for (int y = 0; y < kHeight; ++y) {
            FilterCarry carry{0, 0};
            innerRGBToCbYCr422_8u_C3C2R(src.row(kHeight - 1 - y), expected.row(kHeight - 1 - y), kWidth, carry);
        }
        ASSERT_EQ(kelOk, keliRGBToCbYCr422_8u_C3C2R(src.row(kHeight - 1), -src.step, dst.row(kHeight - 1), -dst.step,
                                                    {kWidth, kHeight}));
        ASSERT_TRUE(dst.bytes == expected.bytes) << target;
    });
}

} // namespace

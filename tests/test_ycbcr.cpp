// RGB <-> YCbCr at full resolution: argument tests, values, layouts, bounds.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>

#include "kelcc.h"
#include "support/layouts.h"
#include "support/pixel.h"

using namespace kt;

namespace {

using Pixel = std::array<Kel8u, 3>;

int clampByte(int v) { return v < 0 ? 0 : v > 255 ? 255 : v; }

Pixel forward(Pixel rgb)
{
    const int r = rgb[0], g = rgb[1], b = rgb[2];
    return {Kel8u((16843 * r + 33030 * g + 6423 * b + 0x108000) >> 16),
            Kel8u((-9699 * r - 19071 * g + 28770 * b + 0x808000) >> 16),
            Kel8u((28770 * r - 24117 * g - 4653 * b + 0x808000) >> 16)};
}

// The two inverse sets, with floor division written out rather than shifted.
int floorDiv65536(int v) { return v >= 0 ? v / 65536 : -((-v + 65535) / 65536); }

Pixel inverseT(Pixel ycc)
{
    const int y = ycc[0], cb = ycc[1] - 128, cr = ycc[2] - 128;
    return {Kel8u(clampByte(floorDiv65536(76284 * y + 104595 * cr - 1220544))),
            Kel8u(clampByte(floorDiv65536(76284 * y - 25690 * cb - 53281 * cr - 1220544))),
            Kel8u(clampByte(floorDiv65536(76284 * y + 132186 * cb - 1220544)))};
}

Pixel inverseR(Pixel ycc)
{
    const int y = ycc[0], cb = ycc[1] - 128, cr = ycc[2] - 128;
    return {Kel8u(clampByte(floorDiv65536(76282 * y + 104593 * cr - 1187744))),
            Kel8u(clampByte(floorDiv65536(76282 * y - 25689 * cb - 53279 * cr - 1187744))),
            Kel8u(clampByte(floorDiv65536(76282 * y + 132184 * cb - 1187744)))};
}

struct Member {
    const char* name;
    Layout src, dst;
    ErasedCall call;
    Pixel (*reference)(Pixel);
};

const Member kMembers[] = {
    {"RGBToYCbCr_8u_C3R", Layout::C3, Layout::C3,
     erase<const Kel8u*, Kel8u*, keliRGBToYCbCr_8u_C3R>, forward},
    {"RGBToYCbCr_8u_AC4R", Layout::AC4, Layout::AC4,
     erase<const Kel8u*, Kel8u*, keliRGBToYCbCr_8u_AC4R>, forward},
    {"RGBToYCbCr_8u_P3R", Layout::P3, Layout::P3,
     erase<const Kel8u* const*, Kel8u* const*, keliRGBToYCbCr_8u_P3R>, forward},
    {"YCbCrToRGB_8u_C3R", Layout::C3, Layout::C3,
     erase<const Kel8u*, Kel8u*, keliYCbCrToRGB_8u_C3R>, inverseT},
    {"YCbCrToRGB_8u_AC4R", Layout::AC4, Layout::AC4,
     erase<const Kel8u*, Kel8u*, keliYCbCrToRGB_8u_AC4R>, inverseT},
    {"YCbCrToRGB_8u_P3R", Layout::P3, Layout::P3,
     erase<const Kel8u* const*, Kel8u* const*, keliYCbCrToRGB_8u_P3R>, inverseT},
    {"YCbCrToRGB_8u_P3C3R", Layout::P3, Layout::C3,
     erase<const Kel8u* const*, Kel8u*, keliYCbCrToRGB_8u_P3C3R>, inverseR},
};

class FullResolution : public ::testing::TestWithParam<Member> {
protected:
    // Runs the member on fresh random images and checks every pixel against
    // the reference, the untouched alpha bytes, the fences and the source.
    void expectConverts(int width, int height, Placement placement, std::size_t misalign = 0)
    {
        const Member& m = GetParam();
        auto src = makeImage(m.src, width, height, placement, misalign);
        auto dst = makeImage(m.dst, width, height, placement, misalign);
        src->fillRandom(width * 131u + height);
        dst->fillRandom(7u);
        const auto srcBefore = src->rows();
        const auto dstBefore = dst->rows();

        ASSERT_EQ(kelOk, m.call(src->constArgument(), src->step(), dst->argument(), dst->step(), {width, height}));

        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                ASSERT_EQ(m.reference(src->pixel(x, y)), dst->pixel(x, y)) << "at " << x << "," << y;
            }
        if (m.dst == Layout::AC4) {
            // Only the alpha bytes may still equal what they were: compare them.
            auto after = dst->rows();
            for (std::size_t i = 3; i < after.size(); i += 4) ASSERT_EQ(dstBefore[i], after[i]) << "alpha byte " << i;
        }
        EXPECT_EQ(srcBefore, src->rows());
        EXPECT_TRUE(src->fenceIntact());
        EXPECT_TRUE(dst->fenceIntact());
    }

    // Runs a call that must fail and checks that nothing was written.
    void expectStatus(KelResult expected, bool nullSrc, bool nullDst, KelImageSize size, int nullSrcPlane = -1,
                      int nullDstPlane = -1)
    {
        const Member& m = GetParam();
        auto src = makeImage(m.src, 4, 4);
        auto dst = makeImage(m.dst, 4, 4);
        src->fillRandom(1);
        dst->fillRandom(2);
        if (nullSrcPlane >= 0) src->planeArray()[nullSrcPlane] = nullptr;
        if (nullDstPlane >= 0) dst->planeArray()[nullDstPlane] = nullptr;
        const auto dstBefore = dst->rows();
        const KelResult got = m.call(nullSrc ? nullptr : src->constArgument(), src->step(),
                                     nullDst ? nullptr : dst->argument(), dst->step(), size);
        EXPECT_EQ(expected, got);
        EXPECT_EQ(dstBefore, dst->rows());
        EXPECT_TRUE(dst->fenceIntact());
    }
};

TEST_P(FullResolution, NullPointersAreTestedBeforeTheSize)
{
    expectStatus(kelErrNullPointer, true, false, {0, 0});
    expectStatus(kelErrNullPointer, false, true, {-1, 4});
    expectStatus(kelErrNullPointer, true, true, {4, 4});
}

TEST_P(FullResolution, WidthOrHeightBelowOneIsASizeError)
{
    expectStatus(kelErrSize, false, false, {0, 4});
    expectStatus(kelErrSize, false, false, {4, 0});
    expectStatus(kelErrSize, false, false, {-3, 4});
    expectStatus(kelErrSize, false, false, {4, INT32_MIN});
}

TEST_P(FullResolution, NullPlanesAreTestedAfterTheSize)
{
    const Member& m = GetParam();
    for (int p = 0; p < 3; ++p) {
        if (planar(m.src)) {
            expectStatus(kelErrSize, false, false, {0, 4}, p, -1);
            expectStatus(kelErrNullPointer, false, false, {4, 4}, p, -1);
        }
        if (planar(m.dst)) {
            expectStatus(kelErrSize, false, false, {4, 0}, -1, p);
            expectStatus(kelErrNullPointer, false, false, {4, 4}, -1, p);
        }
    }
}

TEST_P(FullResolution, MatchesTheFormulasAtEveryWidth)
{
    for (int width = 1; width <= 9; ++width) expectConverts(width, 3, Placement::Guarded);
    expectConverts(37, 5, Placement::Guarded);
}

TEST_P(FullResolution, ReadsAndWritesNothingPastTheLastRow)
{
    expectConverts(1, 1, Placement::Fenced);
    expectConverts(7, 3, Placement::Fenced);
    expectConverts(64, 2, Placement::Fenced);
}

TEST_P(FullResolution, UnalignedRowsGiveTheSameBytes)
{
    for (std::size_t misalign = 1; misalign < 4; ++misalign)
        for (int width : {1, 2, 3, 4, 5, 8, 11, 33}) expectConverts(width, 2, Placement::Guarded, misalign);
}

TEST_P(FullResolution, ANegativeStrideWalksUpward)
{
    const Member& m = GetParam();
    const int width = 5, height = 4;
    auto src = makeImage(m.src, width, height);
    auto dst = makeImage(m.dst, width, height);
    src->fillRandom(3);
    // Start both images at their last row and step backwards.
    std::array<const Kel8u*, 3> srcPlanes{};
    std::array<Kel8u*, 3> dstPlanes{};
    const void* srcArg;
    void* dstArg;
    if (planar(m.src)) {
        for (int p = 0; p < 3; ++p) srcPlanes[p] = &src->sample(0, height - 1, p);
        srcArg = srcPlanes.data();
    } else {
        srcArg = &src->sample(0, height - 1, 0);
    }
    if (planar(m.dst)) {
        for (int p = 0; p < 3; ++p) dstPlanes[p] = &dst->sample(0, height - 1, p);
        dstArg = dstPlanes.data();
    } else {
        dstArg = &dst->sample(0, height - 1, 0);
    }
    ASSERT_EQ(kelOk, m.call(srcArg, -src->step(), dstArg, -dst->step(), {width, height}));
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) EXPECT_EQ(m.reference(src->pixel(x, y)), dst->pixel(x, y));
    EXPECT_TRUE(dst->fenceIntact());
}

INSTANTIATE_TEST_SUITE_P(YCbCr, FullResolution, ::testing::ValuesIn(kMembers),
                         [](const auto& info) { return std::string(info.param.name); });

// ---- concrete values ---------------------------------------------------------

Pixel convertOne(KelResult (*f)(const Kel8u*, int, Kel8u*, int, KelImageSize), Pixel in)
{
    return convertPixel(f, in);
}

Pixel convertOneP3C3(Pixel in)
{
    const Kel8u* planes[3] = {&in[0], &in[1], &in[2]};
    Pixel out{};
    EXPECT_EQ(kelOk, keliYCbCrToRGB_8u_P3C3R(planes, 1, out.data(), 3, {1, 1}));
    return out;
}

TEST(YCbCrValues, BlackAndWhiteLandOnTheStudioRange)
{
    EXPECT_EQ((Pixel{16, 128, 128}), convertOne(keliRGBToYCbCr_8u_C3R, {0, 0, 0}));
    EXPECT_EQ((Pixel{235, 128, 128}), convertOne(keliRGBToYCbCr_8u_C3R, {255, 255, 255}));
}

TEST(YCbCrValues, TruncatingAndRoundingInverseSetsDifferOnWhite)
{
    EXPECT_EQ((Pixel{0, 0, 0}), convertOne(keliYCbCrToRGB_8u_C3R, {16, 128, 128}));
    EXPECT_EQ((Pixel{254, 254, 254}), convertOne(keliYCbCrToRGB_8u_C3R, {235, 128, 128}));
    EXPECT_EQ((Pixel{255, 255, 255}), convertOneP3C3({235, 128, 128}));
}

TEST(YCbCrValues, InverseSaturatesAtBothEnds)
{
    EXPECT_EQ(255, convertOne(keliYCbCrToRGB_8u_C3R, {255, 128, 255})[0]);
    EXPECT_EQ(255, convertOneP3C3({255, 128, 255})[0]);
    EXPECT_EQ(0, convertOne(keliYCbCrToRGB_8u_C3R, {0, 128, 0})[0]);
    EXPECT_EQ(0, convertOneP3C3({0, 128, 0})[0]);
}

TEST(YCbCrValues, EveryRGBInputStaysInsideTheStudioRangeAndGraysHaveNoChroma)
{
    const int width = 256 * 256;
    std::vector<Kel8u> src(static_cast<std::size_t>(width) * 3), dst(src.size());
    for (int b = 0; b < 256; ++b) {
        for (int i = 0; i < width; ++i) {
            src[3 * i] = Kel8u(i & 255);
            src[3 * i + 1] = Kel8u(i >> 8);
            src[3 * i + 2] = Kel8u(b);
        }
        ASSERT_EQ(kelOk, keliRGBToYCbCr_8u_C3R(src.data(), width * 3, dst.data(), width * 3, {width, 1}));
        for (int i = 0; i < width; ++i) {
            const int y = dst[3 * i], cb = dst[3 * i + 1], cr = dst[3 * i + 2];
            ASSERT_TRUE(y >= 16 && y <= 235 && cb >= 16 && cb <= 240 && cr >= 16 && cr <= 240) << i << "," << b;
            if ((i & 255) == b && (i >> 8) == b) ASSERT_TRUE(cb == 128 && cr == 128) << "gray " << b;
        }
    }
}

TEST(YCbCrValues, RoundTripStaysWithinThreeLevels)
{
    const int width = 256 * 256;
    std::vector<Kel8u> src(static_cast<std::size_t>(width) * 3), ycc(src.size()), back(src.size());
    int worst = 0;
    for (int b = 0; b < 256; b += 5) {
        for (int i = 0; i < width; ++i) {
            src[3 * i] = Kel8u(i & 255);
            src[3 * i + 1] = Kel8u(i >> 8);
            src[3 * i + 2] = Kel8u(b);
        }
        ASSERT_EQ(kelOk, keliRGBToYCbCr_8u_C3R(src.data(), width * 3, ycc.data(), width * 3, {width, 1}));
        ASSERT_EQ(kelOk, keliYCbCrToRGB_8u_C3R(ycc.data(), width * 3, back.data(), width * 3, {width, 1}));
        for (std::size_t k = 0; k < src.size(); ++k) worst = std::max(worst, std::abs(src[k] - back[k]));
    }
    EXPECT_LE(worst, 3);
    EXPECT_GE(worst, 1);  // the inverse truncates, so a round trip is not lossless
}

TEST(YCbCrValues, InPlaceConversionMatchesOutOfPlace)
{
    const int width = 17, height = 3;
    GuardedImage image(width * 3, height), expected(width * 3, height);
    image.fillRandom(11);
    ASSERT_EQ(kelOk, keliRGBToYCbCr_8u_C3R(image.data(), image.step(), expected.data(), expected.step(), {width, height}));
    ASSERT_EQ(kelOk, keliRGBToYCbCr_8u_C3R(image.data(), image.step(), image.data(), image.step(), {width, height}));
    EXPECT_EQ(expected.rows(), image.rows());
    EXPECT_TRUE(image.fenceIntact());
}

TEST(YCbCrValues, PlanarInverseInPlaceMatchesOutOfPlace)
{
    const int width = 150, height = 2;  // more than one block of a row
    GuardedPlanes image(width, height), expected(width, height);
    image.fillRandom(12);
    ASSERT_EQ(kelOk, keliYCbCrToRGB_8u_P3R(image.constPointers(), image.step(), expected.pointers(), expected.step(),
                                           {width, height}));
    ASSERT_EQ(kelOk, keliYCbCrToRGB_8u_P3R(image.constPointers(), image.step(), image.pointers(), image.step(),
                                           {width, height}));
    EXPECT_EQ(expected.rows(), image.rows());
    EXPECT_TRUE(image.fenceIntact());
}

} // namespace

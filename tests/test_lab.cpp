// BGR <-> CIE Lab: concrete codes, the three threshold branches, argument
// tests, fences, and identical bytes for any team size.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

#include "kelcc.h"
#include "kelcore.h"
#include "support/layouts.h"

using namespace kt;

namespace {

using Bytes3 = std::array<Kel8u, 3>;
using Words3 = std::array<Kel16u, 3>;

Bytes3 toLab8(Bytes3 bgr) { return convertPixel(keliBGRToLab_8u_C3R, bgr); }
Words3 toLab16(Bytes3 bgr) { return convertPixel(keliBGRToLab_8u16u_C3R, bgr); }

// 8-bit codes of black, white and the primaries; 16-bit codes truncate. The
// inverse has only the cubic piece; a colour sum below 1 (the extreme a and b
// make X or Z negative through the cube) gives 0. Each ratio test of the
// forward direction takes the linear piece at or below its threshold.
TEST(LabValues, WorkedValues)
{
    expectWorked({
        {WORKED(keliBGRToLab_8u_C3R), {0, 0, 0}, {0, 128, 128}},
        {WORKED(keliBGRToLab_8u_C3R), {255, 255, 255}, {255, 128, 128}},
        {WORKED(keliBGRToLab_8u_C3R), {255, 0, 0}, {82, 207, 20}},    // blue
        {WORKED(keliBGRToLab_8u_C3R), {0, 255, 0}, {224, 42, 211}},   // green
        {WORKED(keliBGRToLab_8u_C3R), {0, 0, 255}, {136, 208, 195}},  // red
        {WORKED(keliBGRToLab_8u16u_C3R), {0, 0, 0}, {0, 32640, 32640}},
        {WORKED(keliBGRToLab_8u16u_C3R), {255, 255, 255}, {65535, 32640, 32639}},  // b one below 128 x 255
        {WORKED(keliLabToBGR_8u_C3R), {0, 128, 128}, {1, 1, 1}},           // Y of about 0.67 rounds up
        {WORKED(keliLabToBGR_16u8u_C3R), {0, 32640, 32640}, {0, 0, 0}},    // and truncates to 0
        {WORKED(keliLabToBGR_16u8u_C3R), {65535, 32640, 32639}, {255, 255, 254}},
        {WORKED(keliLabToBGR_8u_C3R), {255, 128, 128}, {255, 255, 255}},
        {WORKED(keliLabToBGR_8u_C3R), {0, 0, 255}, {0, 0, 15}},       // sums -36.2, 0.23
        {WORKED(keliLabToBGR_8u_C3R), {0, 255, 0}, {139, 0, 0}},      // -7.5, -18.9
        {WORKED(keliLabToBGR_8u_C3R), {40, 0, 0}, {222, 19, 0}},      // -113.4
        {WORKED(keliLabToBGR_8u_C3R), {255, 0, 255}, {0, 255, 0}},    // -32.2, -75.3; green saturates at 382
        {WORKED(keliBGRToLab_8u_C3R), {2, 2, 2}, {18, 128, 128}},     // y = 2/255 below: L = 903.3 y, all linear
        {WORKED(keliBGRToLab_8u_C3R), {3, 3, 3}, {26, 128, 128}},     // all three ratios above
        {WORKED(keliBGRToLab_8u_C3R), {0, 5, 0}, {31, 105, 145}},     // green 5: y above, x and z below
        {WORKED(keliBGRToLab_8u_C3R), {0, 0, 120}, {97, 190, 180}},   // red 120: y and x above, z below
        {WORKED(keliBGRToLab_8u_C3R), {20, 0, 0}, {13, 160, 83}},     // blue 20: y below, x and z above
    });
}

TEST(LabValues, GraysHaveNeutralChromaAndRisingLightness)
{
    int previous = -1;
    for (int v = 0; v < 256; ++v) {
        const Kel8u g = static_cast<Kel8u>(v);
        const Bytes3 lab = toLab8({g, g, g});
        EXPECT_EQ(128, lab[1]) << v;
        EXPECT_EQ(128, lab[2]) << v;
        EXPECT_GE(lab[0], previous) << v;
        previous = lab[0];
        const Words3 lab16 = toLab16({g, g, g});
        EXPECT_NEAR(32640, lab16[1], 1) << v;
        EXPECT_NEAR(32640, lab16[2], 1) << v;
    }
}

// Every blue-green plane of every fifth red value, there and back through the
// 8-bit coding.
TEST(LabValues, BGRInputsRoundTripWithinTheCodingStep)
{
    const int width = 256 * 256;
    std::vector<Kel8u> bgr(static_cast<std::size_t>(width) * 3), lab(bgr.size()), back(bgr.size());
    int worst = 0;
    for (int r = 0; r < 256; r += 5) {
        for (int i = 0; i < width; ++i) {
            bgr[3 * i] = Kel8u(i & 255);
            bgr[3 * i + 1] = Kel8u(i >> 8);
            bgr[3 * i + 2] = Kel8u(r);
        }
        ASSERT_EQ(kelOk, keliBGRToLab_8u_C3R(bgr.data(), width * 3, lab.data(), width * 3, {width, 1}));
        ASSERT_EQ(kelOk, keliLabToBGR_8u_C3R(lab.data(), width * 3, back.data(), width * 3, {width, 1}));
        for (std::size_t k = 0; k < bgr.size(); ++k) worst = std::max(worst, std::abs(bgr[k] - back[k]));
    }
    EXPECT_LE(worst, 12);
}

// Runs of equal pixels (flat areas) and conversions in place give the codes
// each pixel gets on its own.
TEST(LabValues, RunsOfEqualPixelsAndInPlaceConversion)
{
    const Kel8u colours[][3] = {{10, 200, 30}, {10, 200, 30}, {10, 200, 30}, {0, 0, 0}, {0, 0, 0}, {128, 128, 129}, {10, 200, 30}};
    const int width = 7;
    std::vector<Kel8u> image(3 * width), lab(3 * width);
    for (int x = 0; x < width; ++x)
        for (int c = 0; c < 3; ++c) image[3 * x + c] = colours[x][c];
    ASSERT_EQ(kelOk, keliBGRToLab_8u_C3R(image.data(), 3 * width, lab.data(), 3 * width, {width, 1}));
    for (int x = 0; x < width; ++x) {
        const Bytes3 alone = toLab8({colours[x][0], colours[x][1], colours[x][2]});
        EXPECT_EQ(alone, (Bytes3{lab[3 * x], lab[3 * x + 1], lab[3 * x + 2]})) << x;
    }
    // In place: a pixel's codes land where the next pixel's colour is compared.
    std::vector<Kel8u> inPlace = image;
    ASSERT_EQ(kelOk, keliBGRToLab_8u_C3R(inPlace.data(), 3 * width, inPlace.data(), 3 * width, {width, 1}));
    EXPECT_EQ(lab, inPlace);
    std::vector<Kel16u> lab16(3 * width);
    ASSERT_EQ(kelOk, keliBGRToLab_8u16u_C3R(image.data(), 3 * width, lab16.data(), 6 * width, {width, 1}));
    for (int x = 0; x < width; ++x)
        EXPECT_EQ(toLab16({colours[x][0], colours[x][1], colours[x][2]}),
                  (Words3{lab16[3 * x], lab16[3 * x + 1], lab16[3 * x + 2]})) << x;
}

// ---- the four members through one table ------------------------------------

struct Member {
    const char* name;
    int srcSample, dstSample;  // bytes per sample
    ErasedCall call;
};

const Member kMembers[] = {
    {"BGRToLab_8u_C3R", 1, 1, erase<const Kel8u*, Kel8u*, keliBGRToLab_8u_C3R>},
    {"BGRToLab_8u16u_C3R", 1, 2, erase<const Kel8u*, Kel16u*, keliBGRToLab_8u16u_C3R>},
    {"LabToBGR_8u_C3R", 1, 1, erase<const Kel8u*, Kel8u*, keliLabToBGR_8u_C3R>},
    {"LabToBGR_16u8u_C3R", 2, 1, erase<const Kel16u*, Kel8u*, keliLabToBGR_16u8u_C3R>},
};

class LabMember : public ::testing::TestWithParam<Member> {
protected:
    std::vector<std::uint8_t> run(int threads, int width, int height, Placement placement = Placement::Guarded)
    {
        const Member& m = GetParam();
        ThreadCount count(threads);
        Image src = pixels(width, height, 3, true, m.srcSample, placement),
              dst = pixels(width, height, 3, true, m.dstSample, placement);
        src.fill(static_cast<std::uint32_t>(width * 7 + height));
        dst.fillWith(0x5A);
        const auto srcBefore = src.rows();
        EXPECT_EQ(kelOk, m.call(src.ptr(), src.step(), dst.ptr(), dst.step(), {width, height}));
        EXPECT_EQ(srcBefore, src.rows());
        EXPECT_TRUE(src.intact());
        EXPECT_TRUE(dst.intact());
        return dst.rows();
    }
};

TEST_P(LabMember, ArgumentTestsInOrder)
{
    const Member& m = GetParam();
    Image src = pixels(4, 2, 3, true, m.srcSample), dst = pixels(4, 2, 3, true, m.dstSample);
    expectArgumentOrder(byImage(m.call), src, dst, {4, 2}, {1, 1}, false);
}

// One thread on a fenced image, so that nothing past the last row is touched.
TEST_P(LabMember, SameBytesForAnyTeamSize)
{
    for (KelImageSize size : {KelImageSize{1, 1}, KelImageSize{50, 3}, KelImageSize{13, 5}, KelImageSize{64, 64}, KelImageSize{101, 37}}) {
        const auto serial = run(1, size.width, size.height, Placement::Fenced);
        for (int threads : {2, 3, 8}) EXPECT_EQ(serial, run(threads, size.width, size.height)) << threads;
    }
}

INSTANTIATE_TEST_SUITE_P(Lab, LabMember, ::testing::ValuesIn(kMembers),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace

// RGB <-> YCbCr at full resolution: every member against the studio-range
// formulas at every small width, unaligned and upward rows, sums on a level's
// edge, argument tests, concrete values and a round trip.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>

#include "kelcc.h"
#include "support/formulas.h"
#include "support/layouts.h"

using namespace kt;

namespace {

using Pixel = std::array<int, 3>;

Pixel forward(Pixel c)
{
    const Rgb p{c[0], c[1], c[2]};
    return {level(lumaSum(p), 16, 16 + kHalf), level(blueSum(p), 16, 128 + kHalf), level(redSum(p), 16, 128 + kHalf)};
}
Pixel inverseT(Pixel c) { return toRgb(kT, c[0], c[1], c[2]); }
Pixel inverseR(Pixel c) { return toRgb(kR, c[0], c[1], c[2]); }

struct Member {
    const char* name;
    ErasedCall call;
    int pitch;  // 3, 4, or 0 for planes
    bool planarDst;
    Pixel (*reference)(Pixel);
};

using In = const Kel8u*;
using Out = Kel8u*;
using InPlanes = const Kel8u* const*;
using OutPlanes = Kel8u* const*;
const Member kMembers[] = {
    {"RGBToYCbCr_8u_C3R", erase<In, Out, keliRGBToYCbCr_8u_C3R>, 3, false, forward},
    {"RGBToYCbCr_8u_AC4R", erase<In, Out, keliRGBToYCbCr_8u_AC4R>, 4, false, forward},
    {"RGBToYCbCr_8u_P3R", erase<InPlanes, OutPlanes, keliRGBToYCbCr_8u_P3R>, 0, true, forward},
    {"YCbCrToRGB_8u_C3R", erase<In, Out, keliYCbCrToRGB_8u_C3R>, 3, false, inverseT},
    {"YCbCrToRGB_8u_AC4R", erase<In, Out, keliYCbCrToRGB_8u_AC4R>, 4, false, inverseT},
    {"YCbCrToRGB_8u_P3R", erase<InPlanes, OutPlanes, keliYCbCrToRGB_8u_P3R>, 0, true, inverseT},
    {"YCbCrToRGB_8u_P3C3R", erase<InPlanes, Out, keliYCbCrToRGB_8u_P3C3R>, 0, false, inverseR},
};

Image side(int pitch, int w, int h, Placement placement = Placement::Guarded, std::size_t misalign = 0)
{
    return pitch ? pixels(w, h, pitch, false, 1, placement, misalign) : planes(w, h, 3, 1, placement, misalign);
}

class FullResolution : public ::testing::TestWithParam<Member> {
protected:
    Image src(int w, int h, Placement placement = Placement::Guarded, std::size_t misalign = 0)
    {
        return side(GetParam().pitch, w, h, placement, misalign);
    }
    Image dst(int w, int h, Placement placement = Placement::Guarded, std::size_t misalign = 0)
    {
        const Member& m = GetParam();
        return side(m.planarDst ? 0 : m.pitch ? m.pitch : 3, w, h, placement, misalign);
    }

    // Every pixel against the reference; the fourth byte of AC4 kept.
    void expectConverts(int w, int h, Placement placement, std::size_t misalign = 0, const int* colour = nullptr,
                        int step = 1)
    {
        const Member& m = GetParam();
        Image s = src(w, h, placement, misalign), d = dst(w, h, placement, misalign), e = dst(w, h);
        s.fill(w * 131u + h);
        d.fill(7);
        e.fill(7);
        if (colour) paint(s, w, h, colour);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                const Pixel out = m.reference({s.at(x, y, 0), s.at(x, y, 1), s.at(x, y, 2)});
                for (int c = 0; c < 3; ++c) e.at(x, y, c) = Kel8u(out[c]);
            }
        if (step < 0) {  // start at the last row and walk upward
            for (Image* image : {&s, &d})
                for (std::size_t p = 0; p < image->count(); ++p) {
                    image->pointers[p] = image->row(p, h - 1);
                    image->steps[p] = -image->steps[p];
                }
        }
        expectWrites(kelOk, byImage(m.call), s, d, e, {w, h});
    }
};

TEST_P(FullResolution, MatchesTheFormulasAtEveryWidthAlignmentAndDirection)
{
    for (int w = 1; w <= 9; ++w) expectConverts(w, 3, Placement::Guarded);
    expectConverts(37, 5, Placement::Guarded);
    expectConverts(64, 2, Placement::Fenced);
    expectConverts(7, 3, Placement::Fenced);
    for (std::size_t misalign = 1; misalign < 4; ++misalign)
        for (int w : {1, 2, 3, 5, 11, 33}) expectConverts(w, 2, Placement::Guarded, misalign);
    expectConverts(5, 4, Placement::Guarded, 0, nullptr, -1);
}

TEST_P(FullResolution, SumsOnALevelEdgeLandAsTheFormulasSay)
{
    const Member& m = GetParam();
    auto edge = [&m](std::array<int, 3> c) {
        if (m.reference != forward) return setEdge(m.reference == inverseT ? kT : kR, c);
        const Rgb p{c[0], c[1], c[2]};
        return onEdge(lumaSum(p), 16, 16 + kHalf) || onEdge(blueSum(p), 16, 128 + kHalf) ||
               onEdge(redSum(p), 16, 128 + kHalf);
    };
    onEdgeColours(64, edge, [&](std::array<int, 3> c) { expectConverts(2, 1, Placement::Guarded, 0, c.data()); });
}

TEST_P(FullResolution, NullPointersThenSizeThenPlanes)
{
    Image s = src(4, 4), d = dst(4, 4);
    expectArgumentOrder(byImage(GetParam().call), s, d, {4, 4}, {1, 1}, false);
}

INSTANTIATE_TEST_SUITE_P(YCbCr, FullResolution, ::testing::ValuesIn(kMembers),
                         [](const auto& info) { return std::string(info.param.name); });

// ---- concrete values ---------------------------------------------------------

using B3 = std::array<Kel8u, 3>;

B3 inverseP3C3(B3 in)
{
    const Kel8u* planes[3] = {&in[0], &in[1], &in[2]};
    B3 out{};
    EXPECT_EQ(kelOk, keliYCbCrToRGB_8u_P3C3R(planes, 1, out.data(), 3, {1, 1}));
    return out;
}

TEST(YCbCrValues, StudioRangeEndsAndTheTwoInverseSets)
{
    EXPECT_EQ((B3{16, 128, 128}), convertPixel(keliRGBToYCbCr_8u_C3R, B3{0, 0, 0}));
    EXPECT_EQ((B3{235, 128, 128}), convertPixel(keliRGBToYCbCr_8u_C3R, B3{255, 255, 255}));
    EXPECT_EQ((B3{0, 0, 0}), convertPixel(keliYCbCrToRGB_8u_C3R, B3{16, 128, 128}));
    EXPECT_EQ((B3{254, 254, 254}), convertPixel(keliYCbCrToRGB_8u_C3R, B3{235, 128, 128}));
    EXPECT_EQ((B3{255, 255, 255}), inverseP3C3({235, 128, 128}));
    // Saturation at both ends, in both sets.
    EXPECT_EQ(255, convertPixel(keliYCbCrToRGB_8u_C3R, B3{255, 128, 255})[0]);
    EXPECT_EQ(255, inverseP3C3({255, 128, 255})[0]);
    EXPECT_EQ(0, convertPixel(keliYCbCrToRGB_8u_C3R, B3{0, 128, 0})[0]);
    EXPECT_EQ(0, inverseP3C3({0, 128, 0})[0]);
}

TEST(YCbCrValues, RoundTripStaysWithinThreeLevels)
{
    const int width = 256 * 256;
    Image rgb = pixels(width, 1, 3), ycc = pixels(width, 1, 3), back = pixels(width, 1, 3);
    int worst = 0;
    for (int b = 0; b < 256; b += 15) {
        for (int i = 0; i < width; ++i) {
            rgb.at(i, 0, 0) = Kel8u(i & 255);
            rgb.at(i, 0, 1) = Kel8u(i >> 8);
            rgb.at(i, 0, 2) = Kel8u(b);
        }
        ASSERT_EQ(kelOk, keliRGBToYCbCr_8u_C3R(rgb.ptr(), rgb.step(), ycc.ptr(), ycc.step(), {width, 1}));
        ASSERT_EQ(kelOk, keliYCbCrToRGB_8u_C3R(ycc.ptr(), ycc.step(), back.ptr(), back.step(), {width, 1}));
        const auto a = rgb.rows(), z = back.rows();
        for (std::size_t k = 0; k < a.size(); ++k) worst = std::max(worst, std::abs(a[k] - z[k]));
    }
    EXPECT_LE(worst, 3);
    EXPECT_GE(worst, 1);  // the inverse truncates, so a round trip is not lossless
}

TEST(YCbCrValues, InPlaceConversionMatchesOutOfPlace)
{
    const int width = 150, height = 2;  // more than one block of a row
    for (auto [forwardC3, inverseP3] : {std::pair{true, false}, std::pair{false, true}}) {
        Image image = side(forwardC3 ? 3 : 0, width, height), expected = side(forwardC3 ? 3 : 0, width, height);
        image.fill(12);
        const ErasedCall call = forwardC3 ? kMembers[0].call : kMembers[5].call;
        ASSERT_EQ(kelOk, call(image.arg(), image.step(), expected.arg(), expected.step(), {width, height}));
        ASSERT_EQ(kelOk, call(image.arg(), image.step(), image.arg(), image.step(), {width, height}));
        EXPECT_EQ(expected.rows(), image.rows()) << (inverseP3 ? "planar inverse" : "pixel-order forward");
        EXPECT_TRUE(image.intact());
    }
}

} // namespace

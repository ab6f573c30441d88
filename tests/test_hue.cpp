// HSV and HLS: concrete values, ties and wraps, the 16s offset, float grays,
// alpha per layout, the three argument-test orders, and identical bytes for
// any team size above and below the threshold.
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstring>
#include <type_traits>
#include <algorithm>
#include <random>
#include <vector>

#include "kelcc.h"
#include "support/layouts.h"

using namespace kt;

namespace {

using B3 = std::array<Kel8u, 3>;

TEST(HueValues, WorkedValues)
{
    expectWorked({
        {WORKED(keliRGBToHSV_8u_C3R), {0, 0, 0}, {0, 0, 0}},
        {WORKED(keliRGBToHSV_8u_C3R), {77, 77, 77}, {0, 0, 77}},
        {WORKED(keliRGBToHSV_8u_C3R), {255, 0, 0}, {0, 255, 255}},
        {WORKED(keliRGBToHSV_8u_C3R), {255, 255, 0}, {42, 255, 255}},   // green beats red
        {WORKED(keliRGBToHSV_8u_C3R), {0, 255, 0}, {85, 255, 255}},
        {WORKED(keliRGBToHSV_8u_C3R), {0, 255, 255}, {127, 255, 255}},  // blue beats green
        {WORKED(keliRGBToHSV_8u_C3R), {0, 0, 255}, {170, 255, 255}},
        {WORKED(keliRGBToHSV_8u_C3R), {255, 0, 255}, {212, 255, 255}},
        {WORKED(keliRGBToHSV_8u_C3R), {255, 0, 1}, {255, 255, 255}},    // wraps with 255, not 256
        {WORKED(keliHSVToRGB_8u_C3R), {255, 255, 255}, {255, 0, 0}},    // full hue is hue 0
        {WORKED(keliHSVToRGB_8u_C3R), {0, 255, 255}, {255, 0, 0}},
        {WORKED(keliHSVToRGB_8u_C3R), {42, 255, 255}, {255, 252, 0}},   // not exact
        {WORKED(keliHSVToRGB_8u_C3R), {200, 0, 90}, {90, 90, 90}},      // no saturation: V everywhere
        {WORKED(keliRGBToHSV_16u_C3R), {65535, 0, 0}, {0, 65535, 65535}},
        {WORKED(keliRGBToHSV_16u_C3R), {65535, 0, 1}, {65535, 65535, 65535}},  // wraps on the sextant
        {WORKED(keliRGBToHSV_16u_C3R), {1234, 1234, 1234}, {0, 0, 1234}},
        {WORKED(keliHSVToRGB_16u_C3R), {0, 65535, 65535}, {65535, 0, 0}},
        {WORKED(keliRGBToHLS_8u_C3R), {255, 0, 0}, {0, 127, 255}},      // 127.5 goes down
        {WORKED(keliRGBToHLS_8u_C3R), {128, 128, 128}, {0, 128, 0}},
        {WORKED(keliRGBToHLS_8u_C3R), {255, 255, 255}, {0, 255, 0}},
        {WORKED(keliRGBToHLS_8u_C3R), {255, 255, 0}, {42, 127, 255}},   // red beats green: 42.5 down
        {WORKED(keliHLSToRGB_8u_C3R), {0, 127, 255}, {254, 0, 0}},
        {WORKED(keliHLSToRGB_8u_C3R), {77, 100, 0}, {100, 100, 100}},   // gray whatever the hue
        {WORKED(keliRGBToHLS_16s_C3R), {-32768, -32768, -32768}, {-32768, -32768, -32768}},
        {WORKED(keliRGBToHLS_16s_C3R), {32767, 32767, 32767}, {-32768, 32767, -32768}},
    });
}

TEST(HueValues, SixteenBitSignedIsTheUnsignedCodingMoved)
{
    using S3 = std::array<Kel16s, 3>;
    std::mt19937 gen(3);
    for (int i = 0; i < 2000; ++i) {
        const std::array<Kel16u, 3> u{Kel16u(gen()), Kel16u(gen()), Kel16u(gen())};
        const S3 s{Kel16s(u[0] - 32768), Kel16s(u[1] - 32768), Kel16s(u[2] - 32768)};
        const auto hu = convertPixel(keliRGBToHLS_16u_C3R, u);
        const auto hs = convertPixel(keliRGBToHLS_16s_C3R, s);
        for (int c = 0; c < 3; ++c) ASSERT_EQ(hu[c] - 32768, hs[c]);
        const auto ru = convertPixel(keliHLSToRGB_16u_C3R, u);
        const auto rs = convertPixel(keliHLSToRGB_16s_C3R, s);
        for (int c = 0; c < 3; ++c) ASSERT_EQ(ru[c] - 32768, rs[c]);
    }
}

TEST(HueValues, FloatChannelsWithinTwoToTheMinus23AreGray)
{
    using F3 = std::array<Kel32f, 3>;
    const float near = 0.5f + 1.1920928955078125e-07f;
    const F3 gray = convertPixel(keliRGBToHLS_32f_C3R, F3{0.5f, near, 0.5f});
    EXPECT_EQ(0.0f, gray[0]);
    EXPECT_EQ(0.0f, gray[2]);
    EXPECT_FLOAT_EQ(0.5f, gray[1]);
    const F3 red = convertPixel(keliRGBToHLS_32f_C3R, F3{1.0f, 0.0f, 0.0f});
    EXPECT_EQ((F3{0.0f, 0.5f, 1.0f}), red);
    const F3 back = convertPixel(keliHLSToRGB_32f_C3R, red);
    EXPECT_EQ((F3{1.0f, 0.0f, 0.0f}), back);
}

// The blue-first plane family truncates where the RGB family rounds: each of
// its results equals the RGB family's or is one less.
TEST(HueValues, PlaneFamilyTruncatesWhereThePixelFamilyRounds)
{
    std::mt19937 gen(9);
    int differing = 0;
    for (int i = 0; i < 5000; ++i) {
        const B3 rgb{Kel8u(gen()), Kel8u(gen()), Kel8u(gen())};
        const B3 bgr{rgb[2], rgb[1], rgb[0]};
        const B3 rounded = convertPixel(keliRGBToHLS_8u_C3R, rgb);
        B3 truncated{};
        ASSERT_EQ(kelOk, keliBGRToHLS_8u_C3P3R(bgr.data(), 3,
                                               std::array<Kel8u*, 3>{&truncated[0], &truncated[1], &truncated[2]}.data(),
                                               1, {1, 1}));
        for (int c = 0; c < 3; ++c) {
            ASSERT_TRUE(truncated[c] == rounded[c] || truncated[c] + 1 == rounded[c]) << i;
            differing += truncated[c] != rounded[c];
        }
        // The pixel-order blue-first member rounds, like the RGB family.
        std::array<Kel8u, 4> bgra{bgr[0], bgr[1], bgr[2], 9}, hlsa{0, 0, 0, 77};
        ASSERT_EQ(kelOk, keliBGRToHLS_8u_AC4R(bgra.data(), 4, hlsa.data(), 4, {1, 1}));
        ASSERT_EQ((std::array<Kel8u, 4>{rounded[0], rounded[1], rounded[2], 77}), hlsa);
    }
    EXPECT_GT(differing, 1000);
}

TEST(HueValues, RoundTripsStayClose)
{
    std::mt19937 gen(5);
    for (int i = 0; i < 5000; ++i) {
        const std::array<Kel16u, 3> rgb{Kel16u(gen()), Kel16u(gen()), Kel16u(gen())};
        const auto viaHLS = convertPixel(keliHLSToRGB_16u_C3R, convertPixel(keliRGBToHLS_16u_C3R, rgb));
        const auto viaHSV = convertPixel(keliHSVToRGB_16u_C3R, convertPixel(keliRGBToHSV_16u_C3R, rgb));
        for (int c = 0; c < 3; ++c) {
            ASSERT_NEAR(rgb[c], viaHLS[c], 4) << i;
            ASSERT_NEAR(rgb[c], viaHSV[c], 4) << i;
        }
    }
}

// Runs of equal pixels and conversions in place give what each pixel gets
// on its own.
TEST(HueValues, RunsOfEqualPixelsAndInPlaceConversion)
{
    const std::vector<Kel8u> row{200, 10, 30, 200, 10, 30, 200, 10, 30, 5, 5, 5, 5, 5, 5, 200, 10, 30};
    for (auto convert : {keliRGBToHSV_8u_C3R, keliHSVToRGB_8u_C3R, keliRGBToHLS_8u_C3R, keliHLSToRGB_8u_C3R}) {
        std::vector<Kel8u> out(row.size()), inPlace = row;
        ASSERT_EQ(kelOk, convert(row.data(), 18, out.data(), 18, {6, 1}));
        ASSERT_EQ(kelOk, convert(inPlace.data(), 18, inPlace.data(), 18, {6, 1}));
        EXPECT_EQ(out, inPlace);
        for (int x = 0; x < 6; ++x) {
            const B3 alone = convertPixel(convert, B3{row[3 * x], row[3 * x + 1], row[3 * x + 2]});
            EXPECT_EQ(alone, (B3{out[3 * x], out[3 * x + 1], out[3 * x + 2]})) << x;
        }
    }
    // The blue-first plane family, in place on its planes.
    std::array<std::vector<Kel8u>, 3> planes;
    for (int c = 0; c < 3; ++c)
        for (int x = 0; x < 6; ++x) planes[c].push_back(row[3 * x + c]);
    Kel8u* inPlace[3] = {planes[0].data(), planes[1].data(), planes[2].data()};
    ASSERT_EQ(kelOk, keliBGRToHLS_8u_P3R(inPlace, 6, inPlace, 6, {6, 1}));
    for (int x = 0; x < 6; ++x) {
        B3 alone{};
        Kel8u* outPlanes[3] = {&alone[0], &alone[1], &alone[2]};
        ASSERT_EQ(kelOk, keliBGRToHLS_8u_C3P3R(&row[3 * x], 3, outPlanes, 1, {1, 1}));
        EXPECT_EQ(alone, (B3{planes[0][x], planes[1][x], planes[2][x]})) << x;
    }
    // Floats repeat by their bits: a zero of the other sign is a new colour.
    using F3 = std::array<Kel32f, 3>;
    std::vector<Kel32f> floats{0.0f, 0.5f, 1.0f, -0.0f, 0.5f, 1.0f, 0.0f, 0.5f, 1.0f};
    std::vector<Kel32f> hls(9);
    ASSERT_EQ(kelOk, keliRGBToHLS_32f_C3R(floats.data(), 36, hls.data(), 36, {3, 1}));
    for (int x = 0; x < 3; ++x) {
        const F3 alone = convertPixel(keliRGBToHLS_32f_C3R, F3{floats[3 * x], floats[3 * x + 1], floats[3 * x + 2]});
        for (int c = 0; c < 3; ++c) EXPECT_EQ(std::bit_cast<std::uint32_t>(alone[c]), std::bit_cast<std::uint32_t>(hls[3 * x + c]));
    }
}

// ---- families 1 and 2 through one table -----------------------------------------------

struct PixelMember {
    const char* name;
    ErasedCall call;
    int sampleBytes, pitch;
    bool floats;
};

#define PIXEL(F, T, BYTES, PITCH) {#F, erase<const T*, T*, F>, BYTES, PITCH, std::is_same_v<T, Kel32f>}
const PixelMember kPixelMembers[] = {
    PIXEL(keliRGBToHSV_8u_C3R, Kel8u, 1, 3),    PIXEL(keliRGBToHSV_8u_AC4R, Kel8u, 1, 4),
    PIXEL(keliHSVToRGB_8u_C3R, Kel8u, 1, 3),    PIXEL(keliHSVToRGB_8u_AC4R, Kel8u, 1, 4),
    PIXEL(keliRGBToHSV_16u_C3R, Kel16u, 2, 3),  PIXEL(keliRGBToHSV_16u_AC4R, Kel16u, 2, 4),
    PIXEL(keliHSVToRGB_16u_C3R, Kel16u, 2, 3),  PIXEL(keliHSVToRGB_16u_AC4R, Kel16u, 2, 4),
    PIXEL(keliRGBToHLS_8u_C3R, Kel8u, 1, 3),    PIXEL(keliRGBToHLS_8u_AC4R, Kel8u, 1, 4),
    PIXEL(keliHLSToRGB_8u_C3R, Kel8u, 1, 3),    PIXEL(keliHLSToRGB_8u_AC4R, Kel8u, 1, 4),
    PIXEL(keliRGBToHLS_16u_C3R, Kel16u, 2, 3),  PIXEL(keliRGBToHLS_16u_AC4R, Kel16u, 2, 4),
    PIXEL(keliHLSToRGB_16u_C3R, Kel16u, 2, 3),  PIXEL(keliHLSToRGB_16u_AC4R, Kel16u, 2, 4),
    PIXEL(keliRGBToHLS_16s_C3R, Kel16s, 2, 3),  PIXEL(keliRGBToHLS_16s_AC4R, Kel16s, 2, 4),
    PIXEL(keliHLSToRGB_16s_C3R, Kel16s, 2, 3),  PIXEL(keliHLSToRGB_16s_AC4R, Kel16s, 2, 4),
    PIXEL(keliRGBToHLS_32f_C3R, Kel32f, 4, 3),  PIXEL(keliRGBToHLS_32f_AC4R, Kel32f, 4, 4),
    PIXEL(keliHLSToRGB_32f_C3R, Kel32f, 4, 3),  PIXEL(keliHLSToRGB_32f_AC4R, Kel32f, 4, 4),
};

class PixelFamily : public ::testing::TestWithParam<PixelMember> {
protected:
    // The destination's rows after a call with `threads`; the fourth element
    // of an AC4 pixel must come out as it went in.
    std::vector<std::uint8_t> run(int threads, int width, int height, Placement placement = Placement::Guarded)
    {
        const PixelMember& m = GetParam();
        ThreadCount count(threads);
        Image src = pixels(width, height, m.pitch, false, m.sampleBytes, placement),
              dst = pixels(width, height, m.pitch, false, m.sampleBytes, placement);
        src.fill(static_cast<std::uint32_t>(width * 31 + height));
        std::mt19937 gen(width);
        for (int y = 0; m.floats && y < height; ++y)  // floats in 0..1
            for (int x = 0; x < width; ++x)
                for (int c = 0; c < 3; ++c) src.at<float>(x, y, c) = (gen() % 1001) / 1000.0f;
        dst.fill(4);
        const auto srcBefore = src.rows(), dstBefore = dst.rows();
        EXPECT_EQ(kelOk, m.call(src.arg(), src.step(), dst.arg(), dst.step(), {width, height}));
        EXPECT_EQ(srcBefore, src.rows());
        EXPECT_TRUE(src.intact());
        EXPECT_TRUE(dst.intact());
        const auto after = dst.rows();
        const std::size_t pixelBytes = 4 * m.sampleBytes;
        for (std::size_t i = 3 * m.sampleBytes; m.pitch == 4 && i < after.size(); i += pixelBytes)
            EXPECT_EQ(0, std::memcmp(&dstBefore[i], &after[i], m.sampleBytes)) << "fourth element at byte " << i;
        return after;
    }
};

TEST_P(PixelFamily, ArgumentTestsNullThenSizeAndStridesUnseen)
{
    const PixelMember& m = GetParam();
    Image src = pixels(2, 2, m.pitch, false, m.sampleBytes), dst = pixels(2, 2, m.pitch, false, m.sampleBytes);
    expectArgumentOrder(byImage(m.call), src, dst, {2, 2}, {1, 1}, false);
}

// Sizes at, below and above the 64 x 64 threshold, with teams of any size,
// give the bytes of one thread, and touch nothing past the last row.
TEST_P(PixelFamily, SameBytesForAnyTeamSizeAroundTheThreshold)
{
    for (KelImageSize size : {KelImageSize{1, 1}, KelImageSize{64, 64}, KelImageSize{65, 64}, KelImageSize{4097, 1},
                              KelImageSize{3, 9}}) {
        const auto serial = run(1, size.width, size.height, Placement::Fenced);
        for (int threads : {2, 3, 8}) ASSERT_EQ(serial, run(threads, size.width, size.height)) << threads;
    }
}

TEST_P(PixelFamily, StridesAreCutToWholeElements)
{
    const PixelMember& m = GetParam();
    const int width = 4, height = 3, step = (width * m.pitch + 2) * m.sampleBytes;
    std::vector<std::uint8_t> src(static_cast<std::size_t>(step) * height), a(src.size()), b(src.size());
    std::mt19937 gen(1);
    for (auto& v : src) v = static_cast<std::uint8_t>(gen() % 64);  // small values, valid floats too
    ASSERT_EQ(kelOk, m.call(src.data(), step, a.data(), step, {width, height}));
    ASSERT_EQ(kelOk, m.call(src.data(), step + m.sampleBytes - 1, b.data(), step + m.sampleBytes - 1, {width, height}));
    EXPECT_EQ(a, b);
}

const auto memberName = [](const auto& info) { return std::string(info.param.name).substr(4); };
INSTANTIATE_TEST_SUITE_P(Hue, PixelFamily, ::testing::ValuesIn(kPixelMembers), memberName);

// ---- the blue-first plane family through one table ---------------------------------------

struct PlaneMember {
    const char* name;
    ErasedCall call;
    int srcChannels, dstChannels;  // 3 or 4
    bool srcPlanar, dstPlanar, forward;
};

using In = const Kel8u*;
using Out = Kel8u*;
using InPlanes = const Kel8u* const*;
using OutPlanes = Kel8u* const*;
#define PLANES(F, S, D, SC, DC, SP, DP, FWD) {#F, erase<S, D, F>, SC, DC, SP, DP, FWD}
const PlaneMember kPlaneMembers[] = {
    PLANES(keliBGRToHLS_8u_AP4R, InPlanes, OutPlanes, 4, 4, true, true, true),
    PLANES(keliBGRToHLS_8u_AP4C4R, InPlanes, Out, 4, 4, true, false, true),
    PLANES(keliBGRToHLS_8u_AC4P4R, In, OutPlanes, 4, 4, false, true, true),
    PLANES(keliBGRToHLS_8u_P3R, InPlanes, OutPlanes, 3, 3, true, true, true),
    PLANES(keliBGRToHLS_8u_P3C3R, InPlanes, Out, 3, 3, true, false, true),
    PLANES(keliBGRToHLS_8u_C3P3R, In, OutPlanes, 3, 3, false, true, true),
    PLANES(keliHLSToBGR_8u_AP4R, InPlanes, OutPlanes, 4, 4, true, true, false),
    PLANES(keliHLSToBGR_8u_AP4C4R, InPlanes, Out, 4, 4, true, false, false),
    PLANES(keliHLSToBGR_8u_AC4P4R, In, OutPlanes, 4, 4, false, true, false),
    PLANES(keliHLSToBGR_8u_P3R, InPlanes, OutPlanes, 3, 3, true, true, false),
    PLANES(keliHLSToBGR_8u_P3C3R, InPlanes, Out, 3, 3, true, false, false),
    PLANES(keliHLSToBGR_8u_C3P3R, In, OutPlanes, 3, 3, false, true, false),
};

Image sideImage(bool planar, int channels, int width, int height, Placement placement = Placement::Guarded)
{
    return planar ? planes(width, height, channels, 1, placement) : pixels(width, height, channels, false, 1, placement);
}

class PlaneFamily : public ::testing::TestWithParam<PlaneMember> {
protected:
    Image src(int w, int h, Placement p = Placement::Guarded) { return sideImage(GetParam().srcPlanar, GetParam().srcChannels, w, h, p); }
    Image dst(int w, int h, Placement p = Placement::Guarded) { return sideImage(GetParam().dstPlanar, GetParam().dstChannels, w, h, p); }
};

TEST_P(PlaneFamily, NullsThenPlanesThenStridesThenSize)
{
    Image s = src(3, 2), d = dst(3, 2);
    expectArgumentOrder(byImage(GetParam().call), s, d, {3, 2}, {1, 1}, true, Strides::BeforeSize);
}

// Every layout converts as the three-plane member does, with any team size,
// carries alpha across where both sides have it, and stays inside its images.
TEST_P(PlaneFamily, AllLayoutsAgreeForAnyTeamSizeAndAlphaIsCarried)
{
    const PlaneMember& m = GetParam();
    const PlaneMember& planar = *std::find_if(std::begin(kPlaneMembers), std::end(kPlaneMembers), [&m](const auto& r) {
        return r.forward == m.forward && r.srcPlanar && r.dstPlanar && r.srcChannels == 3;
    });
    for (KelImageSize size : {KelImageSize{1, 1}, KelImageSize{11, 5}, KelImageSize{70, 70}})
        for (int threads : {1, 2, 3, 8}) {
            ThreadCount count(threads);
            const int w = size.width, h = size.height;
            Image s = src(w, h, Placement::Fenced), d = dst(w, h, Placement::Fenced), refSrc = planes(w, h), refDst = planes(w, h);
            s.fill(21);
            d.fill(22);
            for (int y = 0; y < h; ++y)
                for (int x = 0; x < w; ++x)
                    for (int c = 0; c < 3; ++c) refSrc.at(x, y, c) = s.at(x, y, c);
            ASSERT_EQ(kelOk, m.call(s.arg(), s.step(), d.arg(), d.step(), size));
            ThreadCount one(1);
            ASSERT_EQ(kelOk, planar.call(refSrc.arg(), refSrc.step(), refDst.arg(), refDst.step(), size));
            for (int y = 0; y < h; ++y)
                for (int x = 0; x < w; ++x) {
                    for (int c = 0; c < 3; ++c) ASSERT_EQ(refDst.at(x, y, c), d.at(x, y, c)) << threads;
                    if (m.srcChannels == 4) ASSERT_EQ(s.at(x, y, 3), d.at(x, y, 3));
                }
            EXPECT_TRUE(s.intact());
            EXPECT_TRUE(d.intact());
        }
}

INSTANTIATE_TEST_SUITE_P(Hue, PlaneFamily, ::testing::ValuesIn(kPlaneMembers), memberName);

TEST(BGRToHLSAC4, SizeComesBeforeStridesAndTheFourthByteStays)
{
    Image src = pixels(2, 1, 4), dst = pixels(2, 1, 4);
    expectArgumentOrder(byImage(erase<const Kel8u*, Kel8u*, keliBGRToHLS_8u_AC4R>), src, dst, {2, 1},
                        {1, 1}, false, Strides::AfterSize);
    EXPECT_EQ(0x3C, dst.at(0, 0, 3));
    EXPECT_EQ(0x3C, dst.at(1, 0, 3));
}

} // namespace

// HSV and HLS: concrete values, ties and wraps, the 16s offset, float grays,
// alpha per layout, the three argument-test orders, and identical bytes for
// any team size above and below the threshold.
#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstring>
#include <functional>
#include <random>
#include <vector>

#include "kelcc.h"
#include "support/guarded.h"
#include "support/pixel.h"

using namespace kt;

namespace {

using B3 = std::array<Kel8u, 3>;

template <typename T>
std::array<T, 3> one(KelResult (*f)(const T*, int, T*, int, KelImageSize), std::array<T, 3> in)
{
    return convertPixel(f, in);
}

TEST(HueValues, HSVOfPrimariesTiesAndTheWrapTo255)
{
    EXPECT_EQ((B3{0, 0, 0}), one(keliRGBToHSV_8u_C3R, {0, 0, 0}));
    EXPECT_EQ((B3{0, 0, 77}), one(keliRGBToHSV_8u_C3R, {77, 77, 77}));
    EXPECT_EQ((B3{0, 255, 255}), one(keliRGBToHSV_8u_C3R, {255, 0, 0}));
    EXPECT_EQ((B3{42, 255, 255}), one(keliRGBToHSV_8u_C3R, {255, 255, 0}));   // green beats red
    EXPECT_EQ((B3{85, 255, 255}), one(keliRGBToHSV_8u_C3R, {0, 255, 0}));
    EXPECT_EQ((B3{127, 255, 255}), one(keliRGBToHSV_8u_C3R, {0, 255, 255}));  // blue beats green
    EXPECT_EQ((B3{170, 255, 255}), one(keliRGBToHSV_8u_C3R, {0, 0, 255}));
    EXPECT_EQ((B3{212, 255, 255}), one(keliRGBToHSV_8u_C3R, {255, 0, 255}));
    EXPECT_EQ((B3{255, 255, 255}), one(keliRGBToHSV_8u_C3R, {255, 0, 1}));    // wraps with 255, not 256
}

TEST(HueValues, HSVInverseTreatsFullHueAsZeroAndIsNotExact)
{
    EXPECT_EQ((B3{255, 0, 0}), one(keliHSVToRGB_8u_C3R, {255, 255, 255}));
    EXPECT_EQ((B3{255, 0, 0}), one(keliHSVToRGB_8u_C3R, {0, 255, 255}));
    EXPECT_EQ((B3{255, 252, 0}), one(keliHSVToRGB_8u_C3R, {42, 255, 255}));
    EXPECT_EQ((B3{90, 90, 90}), one(keliHSVToRGB_8u_C3R, {200, 0, 90}));  // no saturation: V everywhere
}

TEST(HueValues, SixteenBitHSVWrapsOnTheSextant)
{
    using W3 = std::array<Kel16u, 3>;
    EXPECT_EQ((W3{0, 65535, 65535}), one(keliRGBToHSV_16u_C3R, {65535, 0, 0}));
    EXPECT_EQ((W3{65535, 65535, 65535}), one(keliRGBToHSV_16u_C3R, {65535, 0, 1}));
    EXPECT_EQ((W3{0, 0, 1234}), one(keliRGBToHSV_16u_C3R, {1234, 1234, 1234}));
    EXPECT_EQ((W3{65535, 0, 0}), one(keliHSVToRGB_16u_C3R, {0, 65535, 65535}));
}

TEST(HueValues, HLSRoundsTiesDown)
{
    EXPECT_EQ((B3{0, 127, 255}), one(keliRGBToHLS_8u_C3R, {255, 0, 0}));  // 127.5 goes down
    EXPECT_EQ((B3{0, 128, 0}), one(keliRGBToHLS_8u_C3R, {128, 128, 128}));
    EXPECT_EQ((B3{0, 255, 0}), one(keliRGBToHLS_8u_C3R, {255, 255, 255}));
    EXPECT_EQ((B3{42, 127, 255}), one(keliRGBToHLS_8u_C3R, {255, 255, 0}));  // red beats green: 42.5 down
    EXPECT_EQ((B3{254, 0, 0}), one(keliHLSToRGB_8u_C3R, {0, 127, 255}));
    EXPECT_EQ((B3{100, 100, 100}), one(keliHLSToRGB_8u_C3R, {77, 100, 0}));  // gray whatever the hue
}

TEST(HueValues, SixteenBitSignedIsTheUnsignedCodingMoved)
{
    using S3 = std::array<Kel16s, 3>;
    EXPECT_EQ((S3{-32768, -32768, -32768}), one(keliRGBToHLS_16s_C3R, {-32768, -32768, -32768}));
    EXPECT_EQ((S3{-32768, 32767, -32768}), one(keliRGBToHLS_16s_C3R, {32767, 32767, 32767}));
    std::mt19937 gen(3);
    for (int i = 0; i < 2000; ++i) {
        const std::array<Kel16u, 3> u{Kel16u(gen()), Kel16u(gen()), Kel16u(gen())};
        const S3 s{Kel16s(u[0] - 32768), Kel16s(u[1] - 32768), Kel16s(u[2] - 32768)};
        const auto hu = one(keliRGBToHLS_16u_C3R, u);
        const auto hs = one(keliRGBToHLS_16s_C3R, s);
        for (int c = 0; c < 3; ++c) ASSERT_EQ(hu[c] - 32768, hs[c]);
        const auto ru = one(keliHLSToRGB_16u_C3R, u);
        const auto rs = one(keliHLSToRGB_16s_C3R, s);
        for (int c = 0; c < 3; ++c) ASSERT_EQ(ru[c] - 32768, rs[c]);
    }
}

TEST(HueValues, FloatChannelsWithinTwoToTheMinus23AreGray)
{
    using F3 = std::array<Kel32f, 3>;
    const float near = 0.5f + 1.1920928955078125e-07f;
    const F3 gray = one(keliRGBToHLS_32f_C3R, {0.5f, near, 0.5f});
    EXPECT_EQ(0.0f, gray[0]);
    EXPECT_EQ(0.0f, gray[2]);
    EXPECT_FLOAT_EQ(0.5f, gray[1]);
    const F3 red = one(keliRGBToHLS_32f_C3R, {1.0f, 0.0f, 0.0f});
    EXPECT_EQ((F3{0.0f, 0.5f, 1.0f}), red);
    const F3 back = one(keliHLSToRGB_32f_C3R, red);
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
        const B3 rounded = one(keliRGBToHLS_8u_C3R, rgb);
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
        const auto viaHLS = one(keliHLSToRGB_16u_C3R, one(keliRGBToHLS_16u_C3R, rgb));
        const auto viaHSV = one(keliHSVToRGB_16u_C3R, one(keliRGBToHSV_16u_C3R, rgb));
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
            const B3 alone = one(convert, {row[3 * x], row[3 * x + 1], row[3 * x + 2]});
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
        const F3 alone = one(keliRGBToHLS_32f_C3R, {floats[3 * x], floats[3 * x + 1], floats[3 * x + 2]});
        for (int c = 0; c < 3; ++c) EXPECT_EQ(std::bit_cast<std::uint32_t>(alone[c]), std::bit_cast<std::uint32_t>(hls[3 * x + c]));
    }
}

// ---- families 1 and 2 through one table -----------------------------------------------

struct PixelMember {
    const char* name;
    int sampleBytes;
    int pixelStride;
    bool floats;
    std::function<KelResult(const void*, int, void*, int, KelImageSize)> call;
};

#define KT_PIXEL(STEM, TAG, T, FLOATS)                                                                            \
    PixelMember{#STEM "_" #TAG "_C3R", sizeof(T), 3, FLOATS,                                                     \
                [](const void* s, int ss, void* d, int ds, KelImageSize z) {                                     \
                    return keli##STEM##_##TAG##_C3R(static_cast<const T*>(s), ss, static_cast<T*>(d), ds, z);    \
                }},                                                                                               \
    PixelMember{#STEM "_" #TAG "_AC4R", sizeof(T), 4, FLOATS,                                                    \
                [](const void* s, int ss, void* d, int ds, KelImageSize z) {                                     \
                    return keli##STEM##_##TAG##_AC4R(static_cast<const T*>(s), ss, static_cast<T*>(d), ds, z);   \
                }}

const PixelMember kPixelMembers[] = {
    KT_PIXEL(RGBToHSV, 8u, Kel8u, false),   KT_PIXEL(HSVToRGB, 8u, Kel8u, false),
    KT_PIXEL(RGBToHSV, 16u, Kel16u, false), KT_PIXEL(HSVToRGB, 16u, Kel16u, false),
    KT_PIXEL(RGBToHLS, 8u, Kel8u, false),   KT_PIXEL(HLSToRGB, 8u, Kel8u, false),
    KT_PIXEL(RGBToHLS, 16u, Kel16u, false), KT_PIXEL(HLSToRGB, 16u, Kel16u, false),
    KT_PIXEL(RGBToHLS, 16s, Kel16s, false), KT_PIXEL(HLSToRGB, 16s, Kel16s, false),
    KT_PIXEL(RGBToHLS, 32f, Kel32f, true),  KT_PIXEL(HLSToRGB, 32f, Kel32f, true),
};

void fillSamples(GuardedImage& image, bool floats, std::uint32_t seed)
{
    image.fillRandom(seed);
    if (!floats) return;
    std::mt19937 gen(seed);
    for (int y = 0; y < image.height(); ++y)
        for (std::size_t x = 0; x < image.rowBytes() / 4; ++x)
            image.at<float>(static_cast<int>(x), y) = (gen() % 1001) / 1000.0f;
}

class PixelFamily : public ::testing::TestWithParam<PixelMember> {
protected:
    struct Run {
        std::vector<std::uint8_t> dst, dstBefore;
    };
    Run run(int threads, int width, int height, Placement placement = Placement::Guarded)
    {
        const PixelMember& m = GetParam();
        ThreadCount count(threads);
        const std::size_t rowBytes = static_cast<std::size_t>(width) * m.pixelStride * m.sampleBytes;
        GuardedImage src(rowBytes, height, placement, 8), dst(rowBytes, height, placement, 8);
        fillSamples(src, m.floats, static_cast<std::uint32_t>(width * 31 + height));
        dst.fillRandom(4);
        const auto srcBefore = src.rows();
        Run r{{}, dst.rows()};
        EXPECT_EQ(kelOk, m.call(src.data(), src.step(), dst.data(), dst.step(), {width, height}));
        EXPECT_EQ(srcBefore, src.rows());
        EXPECT_TRUE(src.fenceIntact());
        EXPECT_TRUE(dst.fenceIntact()) << dst.fenceDamage();
        r.dst = dst.rows();
        return r;
    }
};

TEST_P(PixelFamily, ArgumentTestsNullThenSizeAndStridesUnseen)
{
    const PixelMember& m = GetParam();
    GuardedImage src(64, 2), dst(64, 2);
    dst.fill(0x33);
    EXPECT_EQ(kelErrNullPointer, m.call(nullptr, 64, dst.data(), 64, {0, 0}));
    EXPECT_EQ(kelErrNullPointer, m.call(src.data(), 64, nullptr, 64, {1, 1}));
    EXPECT_EQ(kelErrSize, m.call(src.data(), 64, dst.data(), 64, {0, 1}));
    EXPECT_EQ(kelErrSize, m.call(src.data(), 64, dst.data(), 64, {1, -1}));
    EXPECT_EQ(std::vector<std::uint8_t>(dst.rows().size(), 0x33), dst.rows());
    // Zero strides are not refused: the same row is read and written again.
    EXPECT_EQ(kelOk, m.call(src.data(), 0, dst.data(), 0, {2, 2}));
    EXPECT_TRUE(dst.fenceIntact());
}

TEST_P(PixelFamily, SameBytesForAnyTeamSizeAroundTheThreshold)
{
    const KelImageSize sizes[] = {{1, 1}, {64, 64}, {65, 64}, {4097, 1}, {3, 9}};
    for (KelImageSize size : sizes) {
        const auto serial = run(1, size.width, size.height).dst;
        for (int threads : {2, 3, 8}) ASSERT_EQ(serial, run(threads, size.width, size.height).dst) << threads;
    }
}

std::vector<PixelMember> pixelMembersWhere(bool (*keep)(const PixelMember&))
{
    std::vector<PixelMember> kept;
    for (const auto& m : kPixelMembers)
        if (keep(m)) kept.push_back(m);
    return kept;
}

using PixelFamilyAC4 = PixelFamily;
using PixelFamilyWide = PixelFamily;

TEST_P(PixelFamilyAC4, FourthElementKeepsItsValue)
{
    const PixelMember& m = GetParam();
    const Run r = run(2, 70, 70);
    for (std::size_t i = 3 * m.sampleBytes; i < r.dst.size(); i += 4 * m.sampleBytes)
        for (int b = 0; b < m.sampleBytes; ++b) ASSERT_EQ(r.dstBefore[i + b], r.dst[i + b]) << i;
}

TEST_P(PixelFamily, ReadsAndWritesNothingPastTheLastRow)
{
    EXPECT_EQ(run(1, 5, 3).dst, run(1, 5, 3, Placement::Fenced).dst);
}

TEST_P(PixelFamilyWide, StridesAreCutToWholeElements)
{
    const PixelMember& m = GetParam();
    const int width = 4, height = 3;
    const int rowBytes = width * m.pixelStride * m.sampleBytes;
    const int step = rowBytes + 2 * m.sampleBytes;
    std::vector<std::uint8_t> src(static_cast<std::size_t>(step) * height), a(src.size()), b(src.size());
    std::mt19937 gen(1);
    for (auto& v : src) v = static_cast<std::uint8_t>(gen() % 64);  // small values, valid floats too
    ASSERT_EQ(kelOk, m.call(src.data(), step, a.data(), step, {width, height}));
    ASSERT_EQ(kelOk, m.call(src.data(), step + m.sampleBytes - 1, b.data(), step + m.sampleBytes - 1, {width, height}));
    EXPECT_EQ(a, b);
}

const auto memberName = [](const auto& info) { return std::string(info.param.name); };
INSTANTIATE_TEST_SUITE_P(Hue, PixelFamily, ::testing::ValuesIn(kPixelMembers), memberName);
INSTANTIATE_TEST_SUITE_P(Hue, PixelFamilyAC4,
                         ::testing::ValuesIn(pixelMembersWhere([](const PixelMember& m) { return m.pixelStride == 4; })),
                         memberName);
INSTANTIATE_TEST_SUITE_P(Hue, PixelFamilyWide,
                         ::testing::ValuesIn(pixelMembersWhere([](const PixelMember& m) { return m.sampleBytes > 1; })),
                         memberName);

// ---- the blue-first plane family through one table ---------------------------------------

enum class Side { P3, P4, C3, C4 };

struct PlaneMember {
    const char* name;
    Side src, dst;
    bool forward;
    std::function<KelResult(const void*, int, void*, int, KelImageSize)> call;
};

template <typename S, typename D, KelResult (*F)(S, int, D, int, KelImageSize)>
KelResult erasedPlane(const void* s, int ss, void* d, int ds, KelImageSize z)
{
    return F(static_cast<S>(s), ss, static_cast<D>(d), ds, z);
}

using Planes = const Kel8u* const*;
using OutPlanes = Kel8u* const*;

#define KT_PLANE_FAMILY(DIR, FWD)                                                                                  \
    PlaneMember{#DIR "_8u_AP4R", Side::P4, Side::P4, FWD, erasedPlane<Planes, OutPlanes, keli##DIR##_8u_AP4R>},   \
    PlaneMember{#DIR "_8u_AP4C4R", Side::P4, Side::C4, FWD, erasedPlane<Planes, Kel8u*, keli##DIR##_8u_AP4C4R>},  \
    PlaneMember{#DIR "_8u_AC4P4R", Side::C4, Side::P4, FWD,                                                       \
                erasedPlane<const Kel8u*, OutPlanes, keli##DIR##_8u_AC4P4R>},                                     \
    PlaneMember{#DIR "_8u_P3R", Side::P3, Side::P3, FWD, erasedPlane<Planes, OutPlanes, keli##DIR##_8u_P3R>},     \
    PlaneMember{#DIR "_8u_P3C3R", Side::P3, Side::C3, FWD, erasedPlane<Planes, Kel8u*, keli##DIR##_8u_P3C3R>},    \
    PlaneMember{#DIR "_8u_C3P3R", Side::C3, Side::P3, FWD, erasedPlane<const Kel8u*, OutPlanes, keli##DIR##_8u_C3P3R>}

const PlaneMember kPlaneMembers[] = {KT_PLANE_FAMILY(BGRToHLS, true), KT_PLANE_FAMILY(HLSToBGR, false)};

int channels(Side s) { return s == Side::P3 || s == Side::C3 ? 3 : 4; }
bool isPlanar(Side s) { return s == Side::P3 || s == Side::P4; }

// An image of one side's layout, with sample access by channel.
struct SideImage {
    SideImage(Side side, int width, int height, Placement placement = Placement::Guarded) : side(side)
    {
        if (isPlanar(side))
            for (int p = 0; p < channels(side); ++p) set.add(width, height, placement);
        else
            set.add(static_cast<std::size_t>(width) * channels(side), height, placement);
    }
    void* argument() { return isPlanar(side) ? static_cast<void*>(set.pointers.data()) : set.pointers[0]; }
    int step() const { return set.steps[0]; }
    Kel8u& at(int x, int y, int c) { return isPlanar(side) ? set.row(c, y)[x] : set.row(0, y)[x * channels(side) + c]; }
    void fill(std::uint32_t seed) { set.fill(seed); }
    bool intact() const { return set.intact(); }
    std::vector<std::uint8_t> rows() const { return set.rows(); }
    Side side;
    GuardedSet set;
};

class PlaneFamily : public ::testing::TestWithParam<PlaneMember> {
protected:
    void expectRejected(KelResult expected, KelImageSize size, int srcStep, int dstStep, bool nullSrc = false,
                        bool nullDst = false, int nullSrcPlane = -1, int nullDstPlane = -1)
    {
        const PlaneMember& m = GetParam();
        SideImage src(m.src, 3, 2), dst(m.dst, 3, 2);
        dst.fill(1);
        if (nullSrcPlane >= 0) src.set.pointers[nullSrcPlane] = nullptr;
        if (nullDstPlane >= 0) dst.set.pointers[nullDstPlane] = nullptr;
        const auto before = dst.rows();
        EXPECT_EQ(expected, m.call(nullSrc ? nullptr : src.argument(), srcStep, nullDst ? nullptr : dst.argument(),
                                   dstStep, size));
        EXPECT_EQ(before, dst.rows());
    }
};

TEST_P(PlaneFamily, NullsThenPlanesThenStridesThenSize)
{
    const PlaneMember& m = GetParam();
    expectRejected(kelErrNullPointer, {0, 0}, 0, 0, true, false);
    expectRejected(kelErrNullPointer, {0, 0}, 0, 0, false, true);
    for (int p = 0; p < channels(m.src) && isPlanar(m.src); ++p) expectRejected(kelErrNullPointer, {0, 0}, 0, 0, false, false, p);
    for (int p = 0; p < channels(m.dst) && isPlanar(m.dst); ++p) expectRejected(kelErrNullPointer, {0, 0}, 0, 0, false, false, -1, p);
    expectRejected(kelErrStep, {0, 0}, 0, 8);
    expectRejected(kelErrStep, {0, 0}, 8, -1);
    expectRejected(kelErrSize, {0, 2}, 16, 16);
    expectRejected(kelErrSize, {3, 0}, 16, 16);
}

// Every layout converts as the three-plane member does, carries alpha across
// where both sides have it, and never touches a missing alpha.
TEST_P(PlaneFamily, AllLayoutsAgreeAndAlphaIsCarried)
{
    const PlaneMember& m = GetParam();
    const PlaneMember& planar = *std::find_if(std::begin(kPlaneMembers), std::end(kPlaneMembers), [&m](const auto& r) {
        return r.forward == m.forward && r.src == Side::P3 && r.dst == Side::P3;
    });
    const int width = 11, height = 5;
    for (Placement placement : {Placement::Guarded, Placement::Fenced}) {
        SideImage src(m.src, width, height, placement), dst(m.dst, width, height, placement);
        SideImage refSrc(Side::P3, width, height), refDst(Side::P3, width, height);
        src.fill(21);
        dst.fill(22);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                for (int c = 0; c < 3; ++c) refSrc.at(x, y, c) = src.at(x, y, c);
        ASSERT_EQ(kelOk, m.call(src.argument(), src.step(), dst.argument(), dst.step(), {width, height}));
        ASSERT_EQ(kelOk, planar.call(refSrc.argument(), refSrc.step(), refDst.argument(), refDst.step(), {width, height}));
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                for (int c = 0; c < 3; ++c) ASSERT_EQ(refDst.at(x, y, c), dst.at(x, y, c));
                if (channels(m.src) == 4 && channels(m.dst) == 4) ASSERT_EQ(src.at(x, y, 3), dst.at(x, y, 3));
            }
        EXPECT_TRUE(src.intact());
        EXPECT_TRUE(dst.intact());
    }
}

TEST_P(PlaneFamily, SameBytesForAnyTeamSizeAtEverySize)
{
    const PlaneMember& m = GetParam();
    for (KelImageSize size : {KelImageSize{1, 1}, KelImageSize{7, 3}, KelImageSize{70, 70}}) {
        std::vector<std::uint8_t> serial;
        for (int threads : {1, 2, 3, 8}) {
            ThreadCount count(threads);
            SideImage src(m.src, size.width, size.height), dst(m.dst, size.width, size.height);
            src.fill(5);
            dst.fill(6);
            ASSERT_EQ(kelOk, m.call(src.argument(), src.step(), dst.argument(), dst.step(), size));
            if (threads == 1) serial = dst.rows(); else ASSERT_EQ(serial, dst.rows()) << threads;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Hue, PlaneFamily, ::testing::ValuesIn(kPlaneMembers), memberName);

TEST(BGRToHLSAC4, SizeComesBeforeStridesAndAlphaStays)
{
    std::array<Kel8u, 8> src{10, 20, 30, 40, 50, 60, 70, 80}, dst{};
    dst.fill(9);
    EXPECT_EQ(kelErrNullPointer, keliBGRToHLS_8u_AC4R(nullptr, 0, dst.data(), 0, {0, 0}));
    EXPECT_EQ(kelErrSize, keliBGRToHLS_8u_AC4R(src.data(), 0, dst.data(), 0, {0, 1}));
    EXPECT_EQ(kelErrStep, keliBGRToHLS_8u_AC4R(src.data(), 0, dst.data(), 8, {2, 1}));
    EXPECT_EQ(kelErrStep, keliBGRToHLS_8u_AC4R(src.data(), 8, dst.data(), -8, {2, 1}));
    EXPECT_EQ((std::array<Kel8u, 8>{9, 9, 9, 9, 9, 9, 9, 9}), dst);
    ASSERT_EQ(kelOk, keliBGRToHLS_8u_AC4R(src.data(), 8, dst.data(), 8, {2, 1}));
    EXPECT_EQ(9, dst[3]);
    EXPECT_EQ(9, dst[7]);
}

} // namespace

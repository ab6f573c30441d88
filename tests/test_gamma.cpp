// BT.709 gamma: curve values, both 16-bit paths, argument tests of all 36
// members, untouched alpha, float ranges and a failing allocator.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstring>
#include <type_traits>
#include <vector>

#include "kelcc.h"
#include "support/formulas.h"
#include "support/layouts.h"

using namespace kt;

namespace {

// ---- curve values --------------------------------------------------------------

// Every 16-bit value through a C3R member in rows of `width` pixels, one row
// a call: 21846 pixels (65538 samples) take the table path, 21845 the direct
// evaluation.
std::vector<Kel16u> curve16(bool forward, int width = 21846)
{
    const auto call = forward ? keliGammaFwd_16u_C3R : keliGammaInv_16u_C3R;
    std::vector<Kel16u> out(65536 + 3 * width), src(3 * width);
    for (int start = 0; start < 65536; start += 3 * width) {
        for (int i = 0; i < 3 * width; ++i) src[i] = static_cast<Kel16u>(start + i);
        EXPECT_EQ(kelOk, call(src.data(), 6 * width, &out[start], 6 * width, {width, 1}));
    }
    out.resize(65536);
    return out;
}

std::vector<Kel8u> curve8(bool forward)
{
    std::vector<Kel8u> src(258), dst(258);
    for (int i = 0; i < 258; ++i) src[i] = static_cast<Kel8u>(i);
    const auto call = forward ? keliGammaFwd_8u_C3R : keliGammaInv_8u_C3R;
    EXPECT_EQ(kelOk, call(src.data(), 258, dst.data(), 258, {86, 1}));
    dst.resize(256);
    return dst;
}

TEST(GammaCurve, Forward16StartsWithTiesToEvenAndJoinsAt1180)
{
    const auto f = curve16(true);
    const std::vector<Kel16u> first(f.begin(), f.begin() + 12);
    EXPECT_EQ((std::vector<Kel16u>{0, 4, 9, 14, 18, 22, 27, 32, 36, 40, 45, 50}), first);
    EXPECT_EQ(65534, f[65533]);
    EXPECT_EQ(65535, f[65534]);
    EXPECT_EQ(65535, f[65535]);
    EXPECT_EQ(5306, f[1179]);
    EXPECT_EQ(5326, f[1180]);
}

TEST(GammaCurve, Inverse16IsNotMonotonicAtItsJoin)
{
    const auto g = curve16(false);
    const std::vector<Kel16u> first(g.begin(), g.begin() + 8);
    EXPECT_EQ((std::vector<Kel16u>{0, 0, 0, 1, 1, 1, 1, 2}), first);
    EXPECT_EQ(65531, g[65533]);
    EXPECT_EQ(65533, g[65534]);
    EXPECT_EQ(65535, g[65535]);
    EXPECT_EQ(1182, g[5321]);
    EXPECT_EQ(1179, g[5322]);
}

TEST(GammaCurve, DirectAndTablePathsAgreeOnEveryValue)
{
    EXPECT_EQ(curve16(true), curve16(true, 21845));
    EXPECT_EQ(curve16(false), curve16(false, 21845));
}

TEST(GammaCurve, EightBitTables)
{
    const auto f = curve8(true), g = curve8(false);
    EXPECT_EQ((std::vector<Kel8u>{0, 4, 9, 14, 18, 23, 27, 30}), std::vector<Kel8u>(f.begin(), f.begin() + 8));
    EXPECT_EQ((std::vector<Kel8u>{254, 254, 255, 255}), std::vector<Kel8u>(f.end() - 4, f.end()));
    EXPECT_EQ((std::vector<Kel8u>{0, 0, 0, 1, 1, 1, 1, 2}), std::vector<Kel8u>(g.begin(), g.begin() + 8));
    EXPECT_EQ((std::vector<Kel8u>{247, 249, 251, 253, 255}), std::vector<Kel8u>(g.end() - 5, g.end()));
    // Every entry is the curve at i / 255, scaled to 255 and rounded to
    // nearest with ties to even.
    for (int i = 0; i < 256; ++i) {
        const double t = i / 255.0;
        EXPECT_EQ(rec709(i), f[i]) << i;
        EXPECT_EQ(std::nearbyint(t >= 0.0812 ? 255 * std::pow((t + 0.099) / 1.099, 1 / 0.45) : 255 * t / 4.5), g[i]) << i;
    }
}

// ---- every member through one table --------------------------------------------

enum class Walk { C3, AC4, P3 };

// src is ignored by the in-place forms, which work on dst.
using GammaCall = KelResult (*)(const void* src, int srcStep, void* dst, int dstStep, KelImageSize, float, float);

struct Member {
    const char* name;
    int sampleBytes;  // 1, 2 or 4 (float)
    Walk walk;
    bool inPlace, forward;
    GammaCall call;
};

// The 32f members take the range after the size.
template <typename S, typename D, auto F>
KelResult outOfPlace(const void* s, int ss, void* d, int ds, KelImageSize z, float lo, float hi)
{
    if constexpr (std::is_invocable_v<decltype(F), S, int, D, int, KelImageSize>)
        return F(static_cast<S>(s), ss, static_cast<D>(d), ds, z);
    else
        return F(static_cast<S>(s), ss, static_cast<D>(d), ds, z, lo, hi);
}
template <typename D, auto F> KelResult inPlace(const void*, int, void* d, int ds, KelImageSize z, float lo, float hi)
{
    if constexpr (std::is_invocable_v<decltype(F), D, int, KelImageSize>)
        return F(static_cast<D>(d), ds, z);
    else
        return F(static_cast<D>(d), ds, z, lo, hi);
}

#define GAMMA(STEM, T, FWD)                                                                                          \
    {#STEM "_C3R", sizeof(T), Walk::C3, false, FWD, outOfPlace<const T*, T*, STEM##_C3R>},                          \
    {#STEM "_C3IR", sizeof(T), Walk::C3, true, FWD, inPlace<T*, STEM##_C3IR>},                                      \
    {#STEM "_AC4R", sizeof(T), Walk::AC4, false, FWD, outOfPlace<const T*, T*, STEM##_AC4R>},                       \
    {#STEM "_AC4IR", sizeof(T), Walk::AC4, true, FWD, inPlace<T*, STEM##_AC4IR>},                                   \
    {#STEM "_P3R", sizeof(T), Walk::P3, false, FWD, outOfPlace<const T* const*, T* const*, STEM##_P3R>},            \
    {#STEM "_IP3R", sizeof(T), Walk::P3, true, FWD, inPlace<T* const*, STEM##_IP3R>}

const Member kMembers[] = {
    GAMMA(keliGammaFwd_8u, Kel8u, true),   GAMMA(keliGammaInv_8u, Kel8u, false),
    GAMMA(keliGammaFwd_16u, Kel16u, true), GAMMA(keliGammaInv_16u, Kel16u, false),
    GAMMA(keliGammaFwd_32f, Kel32f, true), GAMMA(keliGammaInv_32f, Kel32f, false),
};

constexpr float kLow = -2.0f, kHigh = 6.0f;

// One image of a member's layout; floats spread over the range and a little
// beyond it.
Image image(const Member& m, int width, int height, Placement placement = Placement::Guarded)
{
    return m.walk == Walk::P3 ? planes(width, height, 3, m.sampleBytes, placement)
                              : pixels(width, height, m.walk == Walk::C3 ? 3 : 4, false, m.sampleBytes, placement);
}

void fill(const Member& m, Image& image, std::uint32_t seed, int width, int height)
{
    image.fill(seed);
    const int channels = m.walk == Walk::AC4 ? 4 : 3;
    for (int y = 0; m.sampleBytes == 4 && y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < channels; ++c) {
                float& f = image.at<float>(x, y, c);
                f = kLow - 1.0f + (kHigh - kLow + 2.0f) * ((seed * 7 + x * 3 + y * 5 + c) % 256 / 255.0f);
            }
}

class GammaMember : public ::testing::TestWithParam<Member> {};

// Through images; an in-place call takes its image as the destination.
auto through(const Member& m, float low = kLow, float high = kHigh)
{
    return [&m, low, high](Image& s, Image& d, KelImageSize z) { return m.call(s.arg(), s.step(), d.arg(), d.step(), z, low, high); };
}

TEST_P(GammaMember, RangeThenNullsAndPlanesThenSizeThenStrides)
{
    const Member& m = GetParam();
    Image src = image(m, 3, 2), dst = image(m, 3, 2);
    if (m.sampleBytes == 4) {
        // The range comes before everything else, null pointers included.
        src.absent = dst.absent = true;
        EXPECT_EQ(kelErrGammaRange, through(m, 1.0f, 1.0f)(src, dst, {0, 0}));
        src.absent = dst.absent = false;
        EXPECT_EQ(kelErrGammaRange, through(m, 2.0f, 1.0f)(src, dst, {3, 2}));
    }
    expectArgumentOrder(through(m), m.inPlace ? dst : src, dst, {3, 2}, {1, 1}, true, Strides::AfterSize);
}

// Every member maps each treated sample as the C3R member of its kind maps it
// and leaves the fourth sample of an AC4 pixel alone.
TEST_P(GammaMember, MapsEverySampleAndLeavesAlphaAlone)
{
    const Member& m = GetParam();
    const int width = 9, height = 4;
    for (Placement placement : {Placement::Guarded, Placement::Fenced}) {
        Image src = image(m, width, height, placement), dst = image(m, width, height, placement);
        fill(m, src, 11, width, height);
        fill(m, dst, m.inPlace ? 11 : 12, width, height);
        Image& input = m.inPlace ? dst : src;
        const auto inputBefore = input.rows();
        const auto dstBefore = dst.rows();
        ASSERT_EQ(kelOk, through(m)(src, dst, {width, height}));
        EXPECT_TRUE(src.intact());
        EXPECT_TRUE(dst.intact());
        if (!m.inPlace) EXPECT_EQ(inputBefore, src.rows());

        // Expected: each treated sample through a one-sample C3R-shaped call.
        const Member& reference = *std::find_if(std::begin(kMembers), std::end(kMembers), [&m](const Member& r) {
            return r.sampleBytes == m.sampleBytes && r.forward == m.forward && r.walk == Walk::C3 && !r.inPlace;
        });
        const auto after = dst.rows();
        const int bytes = m.sampleBytes;
        const std::size_t samples = inputBefore.size() / bytes;
        for (std::size_t i = 0; i < samples; ++i) {
            const bool alpha = m.walk == Walk::AC4 && i % 4 == 3;
            std::array<std::uint8_t, 12> one{}, out{};
            std::memcpy(one.data(), &inputBefore[i * bytes], bytes);
            if (alpha) {
                ASSERT_EQ(0, std::memcmp(&dstBefore[i * bytes], &after[i * bytes], bytes)) << "alpha sample " << i;
                continue;
            }
            ASSERT_EQ(kelOk, reference.call(one.data(), 12, out.data(), 12, {1, 1}, kLow, kHigh));
            ASSERT_EQ(0, std::memcmp(out.data(), &after[i * bytes], bytes)) << "sample " << i;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Gamma, GammaMember, ::testing::ValuesIn(kMembers),
                         [](const auto& info) { return std::string(info.param.name).substr(4); });

// ---- 16-bit paths and the allocator --------------------------------------------

void* failingMalloc(std::size_t) { return nullptr; }

class FailingAllocator {
public:
    FailingAllocator() : saved_(i_malloc) { i_malloc = failingMalloc; }
    ~FailingAllocator() { i_malloc = saved_; }
private:
    void* (*saved_)(std::size_t);
};

TEST(Gamma16, TablePathReportsNoMemoryAndLeavesTheImage)
{
    for (auto call : {keliGammaFwd_16u_C3R, keliGammaInv_16u_C3R, keliGammaFwd_16u_AC4R}) {
        const int width = 21846;  // 65538 treated samples
        Image src = pixels(width, 1, 4, false, 2), dst = pixels(width, 1, 4, false, 2);
        src.fill(5);
        dst.fill(6);
        const auto before = dst.rows();
        FailingAllocator failing;
        auto* in = reinterpret_cast<Kel16u*>(src.ptr());
        auto* out = reinterpret_cast<Kel16u*>(dst.ptr());
        EXPECT_EQ(kelErrNoMemory, call(in, src.step(), out, dst.step(), {width, 1}));
        EXPECT_EQ(before, dst.rows());
        // One pixel fewer stays on the direct path, which allocates nothing.
        EXPECT_EQ(kelOk, call(in, src.step(), out, dst.step(), {width - 1, 1}));
    }
}

TEST(Gamma16, AC4CountsThreeSamplesAPixelForThePathChoice)
{
    // 21845 x 1 AC4 pixels are 65535 treated samples: direct, no allocation.
    FailingAllocator failing;
    std::vector<Kel16u> image(21845 * 4, 1000);
    EXPECT_EQ(kelOk, keliGammaFwd_16u_AC4IR(image.data(), 21845 * 8, {21845, 1}));
    EXPECT_EQ(0, keliGammaFwd_16u_IP3R(std::array<Kel16u*, 3>{image.data(), image.data(), image.data()}.data(),
                                       2 * 21845, {21845, 1}));
}

// ---- 32-bit float ranges ---------------------------------------------------------

TEST(Gamma32f, RangeEndsMapToThemselves)
{
    for (auto [low, high] : {std::pair{0.0f, 1.0f}, std::pair{-2.0f, 6.0f}, std::pair{100.0f, 355.0f}}) {
        std::array<Kel32f, 3> src{low, high, low + (high - low) * 0.5f}, fwd{}, inv{};
        ASSERT_EQ(kelOk, keliGammaFwd_32f_C3R(src.data(), 12, fwd.data(), 12, {1, 1}, low, high));
        ASSERT_EQ(kelOk, keliGammaInv_32f_C3R(src.data(), 12, inv.data(), 12, {1, 1}, low, high));
        EXPECT_EQ(low, fwd[0]);
        EXPECT_EQ(low, inv[0]);
        EXPECT_NEAR(high, fwd[1], std::abs(high) * 1e-6f + 1e-6f);
        EXPECT_NEAR(high, inv[1], std::abs(high) * 1e-6f + 1e-6f);
        EXPECT_GT(fwd[2], src[2]);  // the forward curve lifts mid-tones
        EXPECT_LT(inv[2], src[2]);
    }
}

TEST(Gamma32f, SamplesBelowTheRangeTakeTheLinearPiece)
{
    std::array<Kel32f, 3> src{-1.0f, -0.5f, 0.01f}, dst{};
    ASSERT_EQ(kelOk, keliGammaFwd_32f_C3R(src.data(), 12, dst.data(), 12, {1, 1}, 0.0f, 1.0f));
    EXPECT_FLOAT_EQ(-4.5f, dst[0]);
    EXPECT_FLOAT_EQ(-2.25f, dst[1]);
    EXPECT_FLOAT_EQ(0.045f, dst[2]);
    ASSERT_EQ(kelOk, keliGammaInv_32f_C3R(src.data(), 12, dst.data(), 12, {1, 1}, 0.0f, 1.0f));
    EXPECT_FLOAT_EQ(-1.0f / 4.5f, dst[0]);
}

TEST(Gamma32f, AgreesWithTheSixteenBitCurveInsideTheRange)
{
    const auto f16 = curve16(true);
    std::vector<Kel32f> src(3 * 1000), dst(src.size());
    for (int i = 0; i < 3000; ++i) src[i] = static_cast<float>(i * 21);
    ASSERT_EQ(kelOk, keliGammaFwd_32f_C3R(src.data(), 12000, dst.data(), 12000, {1000, 1}, 0.0f, 65535.0f));
    for (int i = 0; i < 3000; ++i) EXPECT_NEAR(f16[i * 21], dst[i], 0.51) << i;
}

} // namespace

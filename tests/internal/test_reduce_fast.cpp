// The ordered dither in doubles against the ordered dither in the extended
// type, which is the reference: the scalar row kernel in doubles and the
// vector kernels of every SIMD target, byte for byte, over every source value
// of the integer types (with many level counts) and the level, rounding and
// threshold boundaries of the float sources; and how often the doubles refuse
// a sample, counted here (the library counts nothing).
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "reduceengines.h"
#include "support/targets.h"

namespace {

using namespace kel::reduce;

// Thresholds of a call: the plain pattern scaled by S, or noise tables.
struct Pattern {
    float at[16];
    explicit Pattern(const Levels& k)
    {
        for (int i = 0; i < 16; ++i) at[i] = static_cast<float>(static_cast<long double>(bayer_thresh[i]) * k.scaleExact);
    }
};

// Noise tables of random entries, with entries that cancel a pattern value
// exactly (a threshold of 0) and zeros among them.
struct RandomNoise {
    std::vector<Kel16s> index = std::vector<Kel16s>(kNoiseEntries);
    std::vector<Kel32f> value = std::vector<Kel32f>(kNoiseEntries);
    RandomNoise(float amplitude, unsigned seed)
    {
        std::mt19937 gen(seed);
        std::uniform_real_distribution<float> spread(-amplitude, amplitude);
        for (auto& i : index) i = static_cast<Kel16s>(gen() % 1025);
        for (auto& v : value) v = spread(gen);
        for (int i = 0; i < kNoiseEntries; i += 37) value[static_cast<std::size_t>(i)] = -bayer_thresh[i % 16];
        for (int i = 5; i < kNoiseEntries; i += 101) value[static_cast<std::size_t>(i)] = 0.0f;
    }
    NoiseTables tables() const { return NoiseTables{index.data(), value.data()}; }
};

// The source values a row is made of, per type.
template <class T>
std::vector<typename T::Source> everyValue()
{
    using Src = typename T::Source;
    std::vector<Src> values;
    for (long v = std::numeric_limits<Src>::min(); v <= std::numeric_limits<Src>::max(); ++v)
        values.push_back(static_cast<Src>(v));
    return values;
}

// Float sources around every place where the arithmetic turns for L: a level
// value q S, a level boundary of v I + 9e-6, each threshold above a level,
// a few ulps either side; random values in 0..1; and values outside 0..1.
std::vector<Kel32f> boundaryFloats(int L, const Pattern& pattern, std::mt19937& gen)
{
    std::vector<Kel32f> values;
    const float S = static_cast<float>(1.0L / L), I = static_cast<float>(L);
    const auto around = [&](long double centre) {
        float f = static_cast<float>(centre);
        for (int i = 0; i < 3; ++i) f = std::nextafter(f, -1.0f);
        for (int i = 0; i < 7; ++i, f = std::nextafter(f, 2.0f)) values.push_back(f);
    };
    for (int q = 0; q <= L; ++q) {
        const long double base = static_cast<long double>(q) * S;
        around(base);
        around((static_cast<long double>(q) - 0.000009L) / I);
        for (float t : pattern.at) around(base + t);
    }
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    for (int i = 0; i < 2000; ++i) values.push_back(unit(gen));
    for (float v : {-0.0f, -1e-30f, -0.3f, -1.0f, 1.0f, 1.5f, 1e-45f, 2e9f, -3e9f, 1e30f,
                    std::numeric_limits<float>::infinity(), -std::numeric_limits<float>::infinity(),
                    std::numeric_limits<float>::quiet_NaN()})
        values.push_back(v);
    return values;
}

// Rows of `values`, each value on four pixels in a row (all four pattern
// columns), rows 0..3 (all pattern rows), `pitch` samples a pixel: the
// reference row kernel against the scalar kernel in doubles and the vector
// kernel of every target.
template <class T, class MakeThresholds>
void expectSameRows(const std::vector<typename T::Source>& values, const std::vector<int>& pitches, const Levels& k,
                    const MakeThresholds& thresholdsOfRow, const std::string& what)
{
    using Src = typename T::Source;
    using Dst = typename T::Destination;
    for (int pitch : pitches) {
        const int width = static_cast<int>((4 * values.size() + pitch - 1) / pitch);
        std::vector<Src> src(static_cast<std::size_t>(width) * pitch);
        for (std::size_t i = 0; i < src.size(); ++i) src[i] = values[(i / 4) % values.size()];
        for (int y = 0; y < 4; ++y) {
            const auto thresholds = thresholdsOfRow(y);
            std::vector<Dst> reference(src.size(), Dst(0x5A)), fast(src.size(), Dst(0x5A));
            innerReduceBits_bayer<T>(src.data(), reference.data(), width, pitch, pitch, thresholds, k);
            innerReduceBits_bayer_fast<T>(src.data(), fast.data(), width, pitch, pitch, thresholds, k);
            ASSERT_TRUE(fast == reference) << what << ", pitch " << pitch << ", row " << y << ": scalar doubles";
            kt::forEachSimdTarget([&](const std::string& target) {
                const DitherRun<T> kernel = chooseDitherRun<T>();
                if (kernel == nullptr) return;
                std::vector<Dst> vector(src.size(), Dst(0x5A));
                innerReduceBits_bayer_runs<T>(src.data(), vector.data(), width, pitch, thresholds, k, kernel);
                ASSERT_TRUE(vector == reference) << what << ", pitch " << pitch << ", row " << y << ": " << target;
            });
        }
    }
}

template <class T>
void expectSameForLevels(const std::vector<typename T::Source>& values, const std::vector<int>& pitches, int L,
                         const RandomNoise& noise)
{
    const Levels k = levelsOf<T>(L);
    const Pattern pattern(k);
    const std::string what = "L " + std::to_string(L);
    expectSameRows<T>(values, pitches, k, [&](int y) { return PlainThresholds{pattern.at, y}; }, what + ", plain");
    expectSameRows<T>(values, pitches, k, [&](int y) { return NoiseThresholds{noise.tables(), k.S, y}; },
                      what + ", noise");
}

TEST(ReduceFast, EightBitEveryLevelCountEveryValue)
{
    const RandomNoise noise(0.5f, 1);
    const auto values = everyValue<T8u>();
    for (int L = 1; L <= 255; ++L) expectSameForLevels<T8u>(values, {1, 3, 4}, L, noise);
}

// Every 16-bit value (one channel: the spreading over channels is the 8-bit
// test's), level counts at the ends of each range and between.
TEST(ReduceFast, SixteenBitSourcesEveryValue)
{
    const RandomNoise noise(1.0f, 2);
    for (int L : {1, 3, 255}) {
        expectSameForLevels<T16u8u>(everyValue<T16u8u>(), {1}, L, noise);
        expectSameForLevels<T16s8u>(everyValue<T16s8u>(), {1}, L, noise);
    }
    for (int L : {1, 521, 1023, 21845, 65535}) {
        expectSameForLevels<T16u>(everyValue<T16u>(), {1}, L, noise);
        expectSameForLevels<T16s>(everyValue<T16s>(), {1}, L, noise);
    }
}

TEST(ReduceFast, FloatSourcesAtEveryBoundary)
{
    const RandomNoise noise(0.8f, 3);
    std::mt19937 gen(4);
    for (int L : {1, 2, 3, 5, 15, 16, 25, 41, 100, 127, 128, 200, 254, 255}) {
        const Pattern pattern(levelsOf<T32f8u>(L));
        const auto values = boundaryFloats(L, pattern, gen);
        expectSameForLevels<T32f8u>(values, {1, 3}, L, noise);
        expectSameForLevels<T32f16u>(values, {1, 3}, L, noise);
        expectSameForLevels<T32f16s>(values, {1, 3}, L, noise);
    }
}

// The doubles refuse few samples of ordinary data, and the refusals exist:
// level values and thresholds met exactly send samples to the extended type.
TEST(ReduceFast, RefusalsAreRareButReal)
{
    std::mt19937 gen(5);
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    long tried = 0, refusedRandom = 0, refusedBoundary = 0;
    for (int L = 1; L <= 255; ++L) {
        const Levels k = levelsOf<T32f16u>(L);
        const FastLevels fast(k);
        const Pattern pattern(k);
        Kel16u out;
        for (int i = 0; i < 4000; ++i, ++tried)
            refusedRandom += !ditherSampleFast<T32f16u>(unit(gen), pattern.at[i & 15], -1.0, fast, out);
        for (float v : boundaryFloats(L, pattern, gen))
            refusedBoundary += !ditherSampleFast<T32f16u>(v, pattern.at[0], -1.0, fast, out);
    }
    EXPECT_LT(refusedRandom * 1000, tried) << refusedRandom << " of " << tried;
    EXPECT_GT(refusedBoundary, 0);

    // 16-bit sources: every value at one level count, the plain pattern.
    const Levels k = levelsOf<T16u>(1023);
    const FastLevels fast(k);
    const Pattern pattern(k);
    long refused16 = 0;
    Kel16u out;
    for (int v = 0; v < 65536; ++v)
        for (int cell = 0; cell < 16; ++cell) refused16 += !ditherSampleFast<T16u>(v, pattern.at[cell], -1.0, fast, out);
    EXPECT_LT(refused16 * 1000, 16L * 65536) << refused16;

    // A noise threshold met exactly is refused, never decided in doubles.
    Kel8u out8;
    const FastLevels fast8(levelsOf<T8u>(255));
    EXPECT_FALSE(ditherSampleFast<T8u>(0.0, 0.0, noiseGuard(0.0), fast8, out8));
    EXPECT_TRUE(ditherSampleFast<T8u>(0.0, 0.0, -1.0, fast8, out8));  // plain: decided exactly
    EXPECT_EQ(0, out8);
}

// NaN, the infinities and values far outside the range never take the
// doubles' path.
TEST(ReduceFast, NonFiniteAndHugeSourcesAreRefused)
{
    const FastLevels fast(levelsOf<T32f16s>(255));
    Kel16s out = 77;
    for (double v : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                     -std::numeric_limits<double>::infinity(), 1e9, -1e9, 600.0})
        EXPECT_FALSE(ditherSampleFast<T32f16s>(v, 0.0f, -1.0, fast, out)) << v;
    EXPECT_EQ(77, out);
}

} // namespace

// Internal pieces of bit-depth reduction: the 8-bit ordered dither's per-call
// outcome tables against the per-sample arithmetic they memoise, and the
// float-to-16-bit scaling routines, which no public function calls.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "kelcore.h"
#include "reduceengines.h"

namespace {

using namespace kel::reduce;

// Every L, every pattern row, C1, C3 and AC4 rows of random bytes: the
// table-driven kernel writes what the per-sample kernel writes.
TEST(ReduceInternal, OutcomeTablesMatchThePerSampleArithmetic)
{
    std::mt19937 gen(7);
    std::vector<Kel8u> src(4 * 300);
    for (auto& b : src) b = static_cast<Kel8u>(gen());
    for (int L = 1; L <= 255; ++L) {
        const Levels k = levelsOf<T8u>(L);
        float pattern[16];
        for (int i = 0; i < 16; ++i)
            pattern[i] = static_cast<float>(static_cast<long double>(bayer_thresh[i]) * k.scaleExact);
        Outcomes8u outcomes;
        outcomesOfBayer8u(pattern, k, outcomes);
        for (int code : {kCodeC1, kCodeC3, kCodeAC4, kCodeC4}) {
            const int pitch = samplesPerPixel(code), channels = channelsProcessed(code);
            for (int y = 0; y < 4; ++y) {
                std::vector<Kel8u> table(src.size(), 0xA5), direct(src.size(), 0xA5);
                innerReduceBits_bayer_8u_table(src.data(), table.data(), 300, pitch, channels, y, outcomes);
                innerReduceBits_bayer<T8u>(src.data(), direct.data(), 300, pitch, channels, PlainThresholds{pattern, y}, k);
                ASSERT_EQ(table, direct) << "L " << L << ", code " << code << ", row " << y;
            }
        }
    }
}

// o = trunc(x * 65535 + 9e-6), the signed form 32768 less, low 16 bits kept;
// C1, C3 (three of three), AC4 (fourth sample untouched) and C4.
TEST(ReduceInternal, ScaleRoutinesTruncateTheScaledValue)
{
    const float values[] = {0.0f, 1.0f, 0.5f, 1.0f / 65535.0f, 0.25f, 0.999999f, 1e-9f, 0.7f};
    const auto expected = [](float x, int offset) {
        const long double wide = static_cast<long double>(x) * 65535.0L + 0.000009;
        return static_cast<std::uint16_t>(static_cast<std::uint32_t>(static_cast<std::int32_t>(wide)) - offset);
    };
    for (int code : {kCodeC1, kCodeC3, kCodeAC4, kCodeC4}) {
        const int pitch = samplesPerPixel(code), channels = channelsProcessed(code);
        const int width = 8 / pitch + 1, height = 3;
        std::vector<Kel32f> src(static_cast<std::size_t>(pitch) * width * height);
        for (std::size_t i = 0; i < src.size(); ++i) src[i] = values[i % 8];
        std::vector<Kel16u> u(src.size(), 0x5A5A);
        std::vector<Kel16s> s(src.size(), 0x5A5A);
        ownScale_32f16u(src.data(), pitch * width, u.data(), pitch * width, width, height, code);
        ownScale_32f16s(src.data(), pitch * width, s.data(), pitch * width, width, height, code);
        for (std::size_t i = 0; i < src.size(); ++i) {
            const bool processed = static_cast<int>(i % pitch) < channels;
            EXPECT_EQ(processed ? expected(src[i], 0) : 0x5A5A, u[i]) << "code " << code << ", sample " << i;
            EXPECT_EQ(processed ? static_cast<Kel16s>(expected(src[i], 32768)) : 0x5A5A, s[i])
                << "code " << code << ", sample " << i;
        }
    }
}

// The rows are shared among threads: the same words for 1 to 5 threads.
TEST(ReduceInternal, ScaleRoutinesGiveTheSameWordsForAnyThreadCount)
{
    const int width = 37, height = 23;
    std::vector<Kel32f> src(3 * width * height);
    std::mt19937 gen(3);
    for (auto& x : src) x = std::uniform_real_distribution<float>(0.0f, 1.0f)(gen);
    const int saved = threads_omp_of_n_kel;
    std::vector<Kel16u> first;
    for (int threads = 1; threads <= 5; ++threads) {
        threads_omp_of_n_kel = threads;
        std::vector<Kel16u> out(src.size());
        ownScale_32f16u(src.data(), 3 * width, out.data(), 3 * width, width, height, kCodeC3);
        if (threads == 1) first = out;
        EXPECT_EQ(first, out) << threads << " threads";
    }
    threads_omp_of_n_kel = saved;
}

// NaN, infinities and values far outside 0..1 convert without undefined
// behaviour: saturated, NaN to 0, before the low 16 bits are kept.
TEST(ReduceInternal, ScaleRoutinesSaturateOutOfRangeValues)
{
    const float inf = std::numeric_limits<float>::infinity();
    const Kel32f src[4] = {std::nanf(""), inf, -inf, 1e30f};
    Kel16u out[4];
    ownScale_32f16u(src, 4, out, 4, 4, 1, kCodeC1);
    EXPECT_EQ(0, out[0]);
    EXPECT_EQ(0xFFFF, out[1]);  // INT32_MAX's low 16 bits
    EXPECT_EQ(0x0000, out[2]);  // INT32_MIN's low 16 bits
    EXPECT_EQ(0xFFFF, out[3]);
}

} // namespace

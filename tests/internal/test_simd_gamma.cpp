// The vector rows of the 16-bit and float BT.709 curves against the scalar
// kernels, on every SIMD target this processor runs: all 65536 16-bit values
// both ways, and float samples of many ranges (ordinary, near the joins and
// the float rounding boundaries, huge, tiny, NaN and infinite), with the
// share of refused samples bounded on ordinary inputs.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "gammasimd.h"
#include "kelcc.h"
#include "support/targets.h"

namespace {

using namespace kel::gamma;

constexpr float kInf = std::numeric_limits<float>::infinity();

bool sameBits(float a, float b)
{
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}

TEST(SimdGamma, EveryTargetHasRows)
{
    for (bool forward : {true, false}) {
        const auto rows16 = kt::chosenOnEveryTarget([&] { return chooseGammaRow16u(forward); });
        const auto rows32 = kt::chosenOnEveryTarget([&] { return chooseGammaRow32f(forward); });
#if KELCC_SIMD
        EXPECT_EQ(rows16.targets, rows16.distinct());
        EXPECT_EQ(rows32.targets, rows32.distinct());
#else
        EXPECT_EQ(1u, rows16.kernels.count(nullptr));
        EXPECT_EQ(1u, rows32.kernels.count(nullptr));
#endif
    }
}

// Every 16-bit value, in place as the table fill runs it and out of place
// from an odd start, against the scalar kernel.
TEST(SimdGamma, Every16BitValueBothWays)
{
    for (bool forward : {true, false}) {
        std::vector<Kel16u> want(65536);
        for (int v = 0; v < 65536; ++v) want[v] = forward ? gammaFwd16(v) : gammaInv16(v);
        kt::forEachSimdTarget([&](const std::string& target) {
            const Row16u row = chooseGammaRow16u(forward);
            if (row == nullptr) return;
            std::vector<Kel16u> table(65536);
            for (int v = 0; v < 65536; ++v) table[v] = static_cast<Kel16u>(v);
            const std::int64_t refused = row(table.data(), table.data(), 65536);
            int bad = 0;
            for (int v = 0; v < 65536; ++v)
                if (table[v] != want[v] && bad++ < 5)
                    ADD_FAILURE() << target << (forward ? " forward" : " inverse") << " at " << v << ": want " << want[v]
                                  << ", got " << table[v];
            EXPECT_EQ(0, bad);
            EXPECT_LT(refused, 65536 / 1000) << target;

            // Out of place, from an odd start, with a tail and a guard after it.
            std::vector<Kel16u> src(65536 + 8), dst(65536 + 8, 0xBEEF);
            for (int v = 0; v < 65536; ++v) src[v + 1] = static_cast<Kel16u>(65535 - v);
            row(src.data() + 1, dst.data() + 1, 65535);
            for (int v = 0; v < 65535; ++v) ASSERT_EQ(want[65535 - v], dst[v + 1]) << target << " at " << v;
            EXPECT_EQ(0xBEEF, dst[0]);
            EXPECT_EQ(0xBEEF, dst[65536]);
        });
    }
}

// The text's worked values through the rows.
TEST(SimdGamma, WorkedValuesThroughTheRows)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        const Row16u fwd = chooseGammaRow16u(true), inv = chooseGammaRow16u(false);
        if (fwd == nullptr) return;
        std::vector<Kel16u> v(65536);
        for (int i = 0; i < 65536; ++i) v[i] = static_cast<Kel16u>(i);
        std::vector<Kel16u> f = v, g = v;
        fwd(f.data(), f.data(), 65536);
        inv(g.data(), g.data(), 65536);
        const int firstFwd[] = {0, 4, 9, 14, 18, 22, 27, 32, 36, 40, 45, 50};
        for (int i = 0; i < 12; ++i) EXPECT_EQ(firstFwd[i], f[i]) << target << " at " << i;
        EXPECT_EQ(65534, f[65533]);
        EXPECT_EQ(65535, f[65534]);
        EXPECT_EQ(65535, f[65535]);
        EXPECT_EQ(5306, f[1179]);
        EXPECT_EQ(5326, f[1180]);
        const int firstInv[] = {0, 0, 0, 1, 1, 1, 1, 2};
        for (int i = 0; i < 8; ++i) EXPECT_EQ(firstInv[i], g[i]) << target << " at " << i;
        EXPECT_EQ(65531, g[65533]);
        EXPECT_EQ(65533, g[65534]);
        EXPECT_EQ(65535, g[65535]);
        EXPECT_EQ(1182, g[5321]);
        EXPECT_EQ(1179, g[5322]);
    });
}

// Float samples of one range: evenly spread over it and past both ends,
// random, at and around both joins and every 2^k, the ends, +-3 ulps of each,
// and the special values.
std::vector<float> floatSamples(float low, float high, std::mt19937& gen)
{
    std::vector<float> s;
    const double range = static_cast<double>(high) - low;
    std::uniform_real_distribution<double> unit(-0.2, 1.2);
    for (int i = 0; i < 4000; ++i) s.push_back(static_cast<float>(low + range * unit(gen)));
    for (int i = 0; i <= 1000; ++i) s.push_back(static_cast<float>(low + range * i / 1000.0));
    for (double join : {0.018, 0.0812, 0.018 * 4.5, 0.0, 1.0})
        s.push_back(static_cast<float>(low + range * join));
    for (int k = -30; k <= 30; ++k) s.push_back(static_cast<float>(low + range * std::ldexp(1.0, k)));
    s.push_back(low);
    s.push_back(high);
    const std::size_t base = s.size();
    for (std::size_t i = 0; i < base; ++i) {
        float up = s[i], down = s[i];
        for (int k = 0; k < 3; ++k) {
            up = std::nextafter(up, kInf);
            down = std::nextafter(down, -kInf);
            s.push_back(up);
            s.push_back(down);
        }
    }
    for (float special : {0.0f, -0.0f, kInf, -kInf, std::numeric_limits<float>::quiet_NaN(), 3e38f, -3e38f, 1e-45f,
                          -1e-45f, 1e-38f, std::numeric_limits<float>::max(), std::numeric_limits<float>::lowest()})
        s.push_back(special);
    std::shuffle(s.begin(), s.end(), gen);
    return s;
}

const std::vector<std::pair<float, float>>& ranges()
{
    static const std::vector<std::pair<float, float>> all = {
        {0, 1},       {-1, 1},         {0, 255},       {16, 235},     {0, 65535},      {1e-30f, 3e-30f},
        {-5e-39f, 1e-38f}, {-1000, -999}, {100000, 100001}, {0.25f, 0.2500001f}, {-3e38f, 3e38f}, {-1e38f, 2e38f},
        {-kInf, 0},   {0, kInf},       {7, 7.0000005f}, {-0.5f, 1.5f},
    };
    return all;
}

TEST(SimdGamma, FloatRowsMatchTheScalarKernel)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        for (bool forward : {true, false}) {
            const Row32f row = chooseGammaRow32f(forward);
            if (row == nullptr) return;
            std::mt19937 gen(11);
            for (const auto& [low, high] : ranges()) {
                const Range32f r = rangeOf(low, high);
                const std::vector<float> src = floatSamples(low, high, gen);
                std::vector<float> got(src.size() + 4, 1.5f), inPlace = src;
                row(src.data(), got.data(), static_cast<std::int64_t>(src.size()), r);
                row(inPlace.data(), inPlace.data(), static_cast<std::int64_t>(inPlace.size()), r);
                for (std::size_t i = 0; i < src.size(); ++i) {
                    const float want = forward ? gammaFwd32(src[i], r) : gammaInv32(src[i], r);
                    ASSERT_TRUE(sameBits(want, got[i]))
                        << target << (forward ? " forward" : " inverse") << ", range " << low << ".." << high
                        << ", sample " << src[i] << ": want " << want << ", got " << got[i];
                    ASSERT_TRUE(sameBits(want, inPlace[i])) << target << " in place, sample " << src[i];
                }
                for (std::size_t i = src.size(); i < got.size(); ++i) ASSERT_EQ(1.5f, got[i]);
            }
        }
    });
}

// On ordinary images the bound refuses almost nothing.
TEST(SimdGamma, FewFloatSamplesAreRefused)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        for (bool forward : {true, false}) {
            const Row32f row = chooseGammaRow32f(forward);
            if (row == nullptr) return;
            for (const auto& [low, high] : std::vector<std::pair<float, float>>{{0, 1}, {0, 255}, {-1, 1}}) {
                const Range32f r = rangeOf(low, high);
                std::mt19937 gen(3);
                std::uniform_real_distribution<float> in(low, high);
                std::vector<float> src(1 << 18), dst(src.size());
                for (float& v : src) v = in(gen);
                const std::int64_t refused = row(src.data(), dst.data(), static_cast<std::int64_t>(src.size()), r);
                EXPECT_LT(refused, static_cast<std::int64_t>(src.size()) / 10000)
                    << target << (forward ? " forward" : " inverse") << ", range " << low << ".." << high;
            }
        }
    });
}

} // namespace

namespace {

// 10^8 float samples per direction on the processor's own target: random bit
// patterns, random values in and around ranges of every scale, and random
// ranges; every result against the scalar kernel, and the refused share.
TEST(LongSweepGamma, HundredMillionFloatSamplesEachWay)
{
    std::mt19937_64 gen(2026);
    const std::int64_t total = 100'000'000, batch = 1 << 20;
    for (bool forward : {true, false}) {
        const Row32f row = chooseGammaRow32f(forward);
        if (row == nullptr) GTEST_SKIP() << "no vector rows in this build";
        std::int64_t refused = 0, mismatches = 0;
        std::vector<float> src(batch), got(batch);
        for (std::int64_t done = 0; done < total; done += batch) {
            // A range of random scale and place, or an ordinary one.
            const int kind = static_cast<int>(done / batch % 4);
            float low = 0, high = 1;
            if (kind == 1) {
                low = 0;
                high = 255;
            } else if (kind >= 2) {
                const float a = std::ldexp(static_cast<float>(gen() % 20000) / 10000 - 1, static_cast<int>(gen() % 80) - 40);
                const float b = a + std::ldexp(static_cast<float>(gen() % 10000 + 1) / 10000, static_cast<int>(gen() % 80) - 40);
                low = a;
                high = b > a ? b : std::nextafter(a, kInf);
            }
            const Range32f r = rangeOf(low, high);
            const double span = static_cast<double>(high) - low;
            for (std::int64_t i = 0; i < batch; ++i) {
                const std::uint64_t g = gen();
                if (g % 16 == 0) {
                    const auto bits = static_cast<std::uint32_t>(g >> 32);
                    std::memcpy(&src[i], &bits, sizeof bits);
                } else {
                    src[i] = static_cast<float>(low + span * (static_cast<double>(g >> 11) * 0x1p-53 * 1.4 - 0.2));
                }
            }
            refused += row(src.data(), got.data(), batch, r);
            for (std::int64_t i = 0; i < batch; ++i) {
                const float want = forward ? gammaFwd32(src[i], r) : gammaInv32(src[i], r);
                if (!sameBits(want, got[i]) && mismatches++ < 5)
                    ADD_FAILURE() << (forward ? "forward" : "inverse") << ", range " << low << ".." << high << ", sample "
                                  << src[i] << ": want " << want << ", got " << got[i];
            }
        }
        EXPECT_EQ(0, mismatches);
        std::printf("%s: %lld samples, %lld refused (%.2e)\n", forward ? "forward" : "inverse",
                    static_cast<long long>(total), static_cast<long long>(refused), static_cast<double>(refused) / total);
    }
}

} // namespace

// The vector row of 8-bit gray against the scalar kernel, byte for byte, on
// every SIMD target this processor runs: every colour for weight sets of
// every kind within the vector row's range, C3 and AC4, every width up to 70
// and a few wide ones; weights outside the range get no vector row.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "graysimd.h"
#include "kelcc.h"
#include "support/targets.h"

namespace {

using Weights = std::array<std::int32_t, 3>;

const Weights kWeightSets[] = {
    {1225, 2404, 467}, {2048, 2048, 0}, {-4096, 8191, 1}, {32767, 32767, 32767}, {-32767, -32767, -32767},
    {0, 0, 0},         {4096, 0, 0},    {-1, 0, 4097},
};

TEST(SimdGray, NoVectorRowOutsideTheSixteenBitWeights)
{
    const Weights wide[] = {{32768, 0, 0}, {0, -32768, 0}, {0, 0, 1 << 20}};
    for (const Weights& w : wide) EXPECT_EQ(nullptr, kel::gray::chooseRow8u(w.data(), 3));
}

TEST(SimdGray, EveryColourForEveryWeightSet)
{
    const int width = 1 << 24;
    for (int pitch : {3, 4}) {
        std::vector<Kel8u> src(static_cast<std::size_t>(pitch) * width);
        for (int p = 0; p < width; ++p)
            for (int c = 0; c < pitch; ++c) src[static_cast<std::size_t>(pitch) * p + c] = static_cast<Kel8u>(c < 3 ? p >> (16 - 8 * c) : p * 5);
        for (const Weights& w : kWeightSets) {
            std::vector<Kel8u> exact(width);
            innerRGBToGray_8u_C3C1R(src.data(), exact.data(), width, w.data(), pitch);
            kt::forEachSimdTarget([&](const std::string& target) {
                const kel::gray::Row8u row = kel::gray::chooseRow8u(w.data(), pitch);
                if (row == nullptr) return;
                std::vector<Kel8u> fast(width, 0x5A);
                row(src.data(), fast.data(), width, w.data());
                EXPECT_TRUE(fast == exact) << target << ", pitch " << pitch << ", weights " << w[0] << " " << w[1] << " " << w[2];
            });
        }
    }
}

TEST(SimdGray, EveryWidthLeavesTheRest)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        for (int pitch : {3, 4})
            for (int width : kt::simdTestWidths()) {
                std::mt19937 gen(static_cast<std::uint32_t>(width));
                std::vector<Kel8u> src(static_cast<std::size_t>(pitch) * width + 5), fast(width + 40);
                for (auto& b : src) b = static_cast<Kel8u>(gen());
                for (auto& b : fast) b = static_cast<Kel8u>(gen());
                std::vector<Kel8u> exact = fast;
                const Weights w{1225, 2404, 467};
                const kel::gray::Row8u row = kel::gray::chooseRow8u(w.data(), pitch);
                if (row == nullptr) return;
                row(src.data(), fast.data(), width, w.data());
                innerRGBToGray_8u_C3C1R(src.data(), exact.data(), width, w.data(), pitch);
                ASSERT_TRUE(fast == exact) << target << ", pitch " << pitch << ", width " << width;
            }
    });
}

} // namespace

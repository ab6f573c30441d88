// The vector row kernels of the Bayer demosaic's interior against the scalar
// kernels, sample for sample, on every SIMD target this processor runs: all
// four row kinds, both sample types, every width up to 70 and wide ones, rows
// at every offset, samples at the extremes of their range.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "bayer.h"
#include "support/targets.h"

namespace {

using namespace kel::bayer;

template <typename Sample>
RowKernel<Sample> scalarRow(bool firstGreen, bool rowIsRed)
{
    if (firstGreen) return rowIsRed ? innerBayerRow<Sample, true, true> : innerBayerRow<Sample, true, false>;
    return rowIsRed ? innerBayerRow<Sample, false, true> : innerBayerRow<Sample, false, false>;
}

// Five rows of width + 4 + lead samples around the row converted; samples
// random, or drawn from the two ends of the range (large sums, equal
// gradients), or constant stretches (ties).
template <typename Sample>
void expectSameRows(int width, int lead, int mode, std::mt19937& gen, const std::string& target)
{
    const int step = width + 4 + lead + 3;
    std::vector<Sample> frame(static_cast<std::size_t>(5 * step));
    const std::uint32_t top = sizeof(Sample) == 1 ? 255u : 65535u;
    for (auto& v : frame) {
        const std::uint32_t r = gen();
        v = static_cast<Sample>(mode == 0 ? r & top : mode == 1 ? ((r & 1) ? top : 0) : ((r % 4) ? 9 : 10));
    }
    const Sample* c = frame.data() + 2 * step + 2 + lead;
    for (bool firstGreen : {false, true}) {
        for (bool rowIsRed : {false, true}) {
            std::vector<Sample> fast(static_cast<std::size_t>(3 * width + 9), 0x5A), scalar = fast;
            chooseInteriorRow<Sample>(firstGreen, rowIsRed)(c, step, fast.data() + 3, width);
            scalarRow<Sample>(firstGreen, rowIsRed)(c, step, scalar.data() + 3, width);
            ASSERT_TRUE(fast == scalar) << target << ", width " << width << ", lead " << lead << ", mode " << mode
                                        << ", first green " << firstGreen << ", red row " << rowIsRed;
        }
    }
}

TEST(SimdBayer, EveryTargetHasItsOwnKernel)
{
    const kt::ChosenKernels chosen = kt::chosenOnEveryTarget([] { return chooseInteriorRow<Kel8u>(true, false); });
    EXPECT_GE(chosen.targets, 1);
#if KELCC_SIMD
    EXPECT_EQ(chosen.targets, chosen.distinct());
    EXPECT_EQ(0u, chosen.kernels.count(reinterpret_cast<const void*>(innerBayerRow<Kel8u, true, false>)));
#endif
}

TEST(SimdBayer, InteriorRowsMatchTheScalarKernels)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        std::mt19937 gen(11);
        for (int width : kt::simdTestWidths({255, 257, 511, 513})) {
            for (int lead = 0; lead < 3; ++lead) {
                for (int mode = 0; mode < 3; ++mode) {
                    expectSameRows<Kel8u>(width, lead, mode, gen, target);
                    expectSameRows<Kel16u>(width, lead, mode, gen, target);
                }
            }
        }
    });
}

} // namespace

// The vector rows of the 8-bit YCoCg members against the scalar rows, on
// every SIMD target this processor runs: forward and inverse, plain and
// lifting, three and four samples a pixel, every width up to 70 and wide
// ones, samples over the whole range of their type (so that the inverse's
// 16-bit sums wrap and clamp).
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "support/targets.h"
#include "ycocg.h"

namespace {

using namespace kel::ycocg;

template <class Arith, int Pitch>
void expectSameForward(const std::string& target, int width, std::mt19937& gen)
{
    std::vector<Kel8u> src(static_cast<std::size_t>(Pitch * width + 5));
    for (auto& v : src) v = static_cast<Kel8u>(gen());
    const auto planes = [&] { return std::vector<Kel16s>(static_cast<std::size_t>(3 * width + 9), 0x5A5A); };
    std::vector<Kel16s> fast = planes(), scalar = planes();
    const auto run = [&](ForwardRow8u row, std::vector<Kel16s>& out) {
        row(src.data(), out.data(), out.data() + width + 3, out.data() + 2 * width + 6, width);
    };
    run(chooseForwardRow8u(std::is_same_v<Arith, LiftingForward>, Pitch), fast);
    run(innerForward8u<Arith, Pitch>, scalar);
    ASSERT_TRUE(fast == scalar) << target << ", width " << width << ", pitch " << Pitch;
}

template <class Arith, int Pitch>
void expectSameInverse(const std::string& target, int width, std::mt19937& gen)
{
    std::vector<Kel16s> planes(static_cast<std::size_t>(3 * width));
    for (auto& v : planes) v = static_cast<Kel16s>(gen() % 3 == 0 ? gen() % 600 - 200 : gen());
    std::vector<Kel8u> fast(static_cast<std::size_t>(Pitch * width + 7), 0xA5), scalar = fast;
    const auto run = [&](InverseRow8u row, std::vector<Kel8u>& out) {
        row(planes.data(), planes.data() + width, planes.data() + 2 * width, out.data(), width, 0x3C);
    };
    run(chooseInverseRow8u(!std::is_same_v<Arith, PlainInverse>, Pitch), fast);
    run(innerInverse8u<Arith, Pitch>, scalar);
    ASSERT_TRUE(fast == scalar) << target << ", width " << width << ", pitch " << Pitch;
}

TEST(SimdYCoCg, VectorRowsMatchTheScalarRows)
{
    kt::forEachSimdTarget([&](const std::string& target) {
        std::mt19937 gen(21);
        for (int width : kt::simdTestWidths()) {
            expectSameForward<PlainForward, 3>(target, width, gen);
            expectSameForward<PlainForward, 4>(target, width, gen);
            expectSameForward<LiftingForward, 3>(target, width, gen);
            expectSameForward<LiftingForward, 4>(target, width, gen);
            expectSameInverse<PlainInverse, 3>(target, width, gen);
            expectSameInverse<PlainInverse, 4>(target, width, gen);
            expectSameInverse<LiftingInverse<false>, 3>(target, width, gen);
            expectSameInverse<LiftingInverse<false>, 4>(target, width, gen);
        }
    });
}

TEST(SimdYCoCg, EveryTargetHasItsOwnKernel)
{
    const kt::ChosenKernels chosen = kt::chosenOnEveryTarget([] { return chooseInverseRow8u(true, 3); });
    EXPECT_GE(chosen.targets, 1);
#if KELCC_SIMD
    EXPECT_EQ(chosen.targets, chosen.distinct());
#endif
}

} // namespace

// Aligned blocks and the allocator hooks.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <vector>

#include "kelcc.h"
#include "support/hooks.h"

namespace {

class Hooks : public ::testing::Test {
protected:
    kt::HookLog log;
    kt::HookScope scope{log};
};

TEST(Allocator, HooksStartAsTheCLibrary)
{
    EXPECT_EQ(&std::malloc, i_malloc);
    EXPECT_EQ(&std::calloc, i_calloc);
    EXPECT_EQ(&std::realloc, i_realloc);
    EXPECT_EQ(&std::free, i_free);
    EXPECT_EQ(1, i_version);
    EXPECT_EQ(0, i_min_version);
}

TEST_F(Hooks, NonPositiveLengthsGiveNullWithoutCallingTheHook)
{
    EXPECT_EQ(nullptr, kelsMalloc_16s(0));
    EXPECT_EQ(nullptr, kelsMalloc_32f(-1));
    EXPECT_EQ(nullptr, kelsMalloc_16u(INT32_MIN));
    EXPECT_TRUE(log.sizes.empty());
}

TEST_F(Hooks, RequestAddsTheMarginToTheElementBytes)
{
    const std::size_t margin = sizeof(void*) + 32;
    kelsFree(kelsMalloc_32f(1));
    kelsFree(kelsMalloc_16s(3));
    kelsFree(kelsMalloc_16u(1000));
    EXPECT_EQ((std::vector<std::size_t>{4 + margin, 6 + margin, 2000 + margin}), log.sizes);
}

TEST_F(Hooks, BlocksAre32ByteAlignedAboveTheRawAddress)
{
    for (std::size_t offset : {0, 4, 8, 16, 24, 28}) {
        log.offset = offset;
        auto* block = kelsMalloc_32f(5);
        ASSERT_NE(nullptr, block);
        const auto raw = reinterpret_cast<std::uintptr_t>(static_cast<char*>(log.bases.back()) + offset);
        const auto p = reinterpret_cast<std::uintptr_t>(block);
        EXPECT_EQ(0u, p % 32);
        EXPECT_GE(p - raw, sizeof(void*));           // room for the raw address below the block
        EXPECT_LT(p - raw, sizeof(void*) + 32);
        EXPECT_GE(raw + log.sizes.back(), p + 5 * sizeof(float) + 1);  // at least one tail byte
        for (int i = 0; i < 5; ++i) block[i] = 1.0f;  // the whole block is usable
        kelsFree(block);
        ASSERT_EQ(raw, reinterpret_cast<std::uintptr_t>(log.freed.back()));
    }
    // A raw address on a multiple of 32 puts the block 32 bytes above it.
    log.offset = 0;
    auto* block = kelsMalloc_16u(1);
    EXPECT_EQ(static_cast<char*>(log.bases.back()) + 32, reinterpret_cast<char*>(block));
    kelsFree(block);
}

TEST_F(Hooks, FailingHookGivesNull)
{
    log.fail = true;
    EXPECT_EQ(nullptr, kelsMalloc_16u(10));
    EXPECT_EQ(1u, log.sizes.size());
}

TEST_F(Hooks, FreeOfNullDoesNothing)
{
    kelsFree(nullptr);
    EXPECT_TRUE(log.freed.empty());
}

TEST_F(Hooks, HooksAreReadAtEachCall)
{
    auto* first = kelsMalloc_16s(4);
    kelsFree(first);
    i_malloc = std::malloc;
    i_free = std::free;
    auto* second = kelsMalloc_16s(4);
    kelsFree(second);
    EXPECT_EQ(1u, log.sizes.size());
    EXPECT_EQ(1u, log.freed.size());
}

} // namespace

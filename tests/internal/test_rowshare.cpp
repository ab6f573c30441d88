// The row-sharing region: which sizes stay on the calling thread and which
// fork, and that every row runs once, in contiguous ascending blocks.
#include <gtest/gtest.h>

#include <omp.h>

#include <limits>
#include <set>
#include <thread>
#include <vector>

#include "kelcore.h"
#include "rowshare.h"
#include "support/guarded.h"

namespace {

using kt::ThreadCount;

struct Visit {
    int thread = -1;
    int teamSize = 0;
    int count = 0;
    std::thread::id id;
};

template <typename Share>
std::vector<Visit> visit(int height, Share share)
{
    std::vector<Visit> rows(static_cast<std::size_t>(height));
    share([&rows](int y) {
        rows[y].thread = omp_get_thread_num();
        rows[y].teamSize = omp_get_num_threads();
        rows[y].id = std::this_thread::get_id();
        ++rows[y].count;
    });
    return rows;
}

std::vector<Visit> visitAboveThreshold(int width, int height)
{
    return visit(height, [width, height](auto row) { kel::shareRowsAboveThreshold(width, height, true, row); });
}

// Sizes whose 32-bit pixel count is at most 64 x 64, the wrapped products
// included (65536 x 65536 wraps to 0, 65537 x 65535 to -1), run every row on
// the calling thread as a team of one.
TEST(RowSharing, AtOrBelowTheThresholdRowsRunOnTheCallingThread)
{
    ThreadCount threads(4);
    const std::thread::id caller = std::this_thread::get_id();
    for (auto [width, height] : {std::pair{64, 64}, std::pair{4096, 1}, std::pair{1, 4096}, std::pair{65536, 65536},
                                 std::pair{65537, 65535}}) {
        for (const Visit& v : visitAboveThreshold(width, height)) {
            ASSERT_EQ(1, v.count) << width << "x" << height;
            ASSERT_EQ(1, v.teamSize) << width << "x" << height;
            ASSERT_EQ(0, v.thread);
            ASSERT_EQ(caller, v.id) << width << "x" << height;
        }
    }
}

// One pixel more forks a team of threads_omp_of_n_kel, and with enough rows
// the rows land on more than one thread.
TEST(RowSharing, AboveTheThresholdTheRegionForks)
{
    ThreadCount threads(4);
    for (auto [width, height] : {std::pair{4097, 1}, std::pair{65, 64}, std::pair{1, 4097}}) {
        std::set<std::thread::id> ids;
        for (const Visit& v : visitAboveThreshold(width, height)) {
            ASSERT_EQ(1, v.count);
            ASSERT_EQ(4, v.teamSize) << width << "x" << height;
            ids.insert(v.id);
        }
        if (height >= 4) EXPECT_EQ(4u, ids.size()) << width << "x" << height;
    }
    // A team of one never leaves the calling thread, above the threshold too.
    ThreadCount one(1);
    for (const Visit& v : visitAboveThreshold(65, 64)) ASSERT_EQ(std::this_thread::get_id(), v.id);
}

TEST(RowSharing, EveryRowOnceInAscendingBlocksAtEverySize)
{
    for (int team : {1, 2, 3, 8}) {
        ThreadCount threads(team);
        for (int height : {1, 2, 7, 100}) {
            const auto rows = visit(height, [height](auto row) { kel::shareRowsAlways(height, true, row); });
            int previousThread = -1;
            for (const Visit& v : rows) {
                ASSERT_EQ(1, v.count);
                ASSERT_EQ(team, v.teamSize);  // read at each region, no threshold
                ASSERT_GE(v.thread, previousThread) << "blocks are contiguous and in thread order";
                previousThread = v.thread;
            }
        }
    }
}

// Destination rows that overlap stay on the calling thread, whatever the
// size and the team: rows 0, 1 or fewer bytes apart than a row holds.
TEST(RowSharing, OverlappingDestinationRowsRunOnTheCallingThread)
{
    EXPECT_TRUE(kel::rowsApart(12, 12));
    EXPECT_TRUE(kel::rowsApart(-12, 12));
    EXPECT_TRUE(kel::rowsApart(std::numeric_limits<int>::min(), 12));
    EXPECT_FALSE(kel::rowsApart(0, 1));
    EXPECT_FALSE(kel::rowsApart(11, 12));
    EXPECT_FALSE(kel::rowsApart(-11, 12));
    ThreadCount threads(4);
    const std::thread::id caller = std::this_thread::get_id();
    const auto always = visit(100, [](auto row) { kel::shareRowsAlways(100, false, row); });
    const auto above = visit(100, [](auto row) { kel::shareRowsAboveThreshold(1000, 100, false, row); });
    for (const auto* rows : {&always, &above}) {
        for (const Visit& v : *rows) {
            ASSERT_EQ(1, v.count);
            ASSERT_EQ(1, v.teamSize);
            ASSERT_EQ(caller, v.id);
        }
    }
}

} // namespace

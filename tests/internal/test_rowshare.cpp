// The row-sharing region: which sizes fork, and that every row runs once, in
// contiguous ascending blocks.
#include <gtest/gtest.h>

#include <omp.h>

#include <vector>

#include "kelcore.h"
#include "rowshare.h"

namespace {

struct Visit {
    int thread = -1;
    int teamSize = 0;
    int count = 0;
};

class ThreadCount {
public:
    explicit ThreadCount(int n) : saved_(threads_omp_of_n_kel) { threads_omp_of_n_kel = n; }
    ~ThreadCount() { threads_omp_of_n_kel = saved_; }
private:
    int saved_;
};

template <typename Share>
std::vector<Visit> visit(int height, Share share)
{
    std::vector<Visit> rows(static_cast<std::size_t>(height));
    share([&rows](int y) {
        rows[y].thread = omp_get_thread_num();
        rows[y].teamSize = omp_get_num_threads();
        ++rows[y].count;
    });
    return rows;
}

TEST(RowSharing, SmallImagesStayOnTheCallingThread)
{
    ThreadCount threads(4);
    const auto rows = visit(64, [](auto row) { kel::shareRowsAboveThreshold(64, 64, row); });
    for (const Visit& v : rows) {
        EXPECT_EQ(1, v.count);
        EXPECT_EQ(1, v.teamSize);
    }
}

TEST(RowSharing, OnePixelAboveTheThresholdForks)
{
    ThreadCount threads(4);
    const auto rows = visit(1, [](auto row) { kel::shareRowsAboveThreshold(4097, 1, row); });
    EXPECT_EQ(1, rows[0].count);
    EXPECT_EQ(4, rows[0].teamSize);
}

TEST(RowSharing, AWrappingProductRunsSerially)
{
    EXPECT_EQ(0, kel::pixelCount32(65536, 65536));
    EXPECT_EQ(-1, kel::pixelCount32(65537, 65535));
    EXPECT_EQ(4097, kel::pixelCount32(4097, 1));
}

TEST(RowSharing, RegionsWithoutThresholdForkAtEverySize)
{
    ThreadCount threads(3);
    const auto rows = visit(1, [](auto row) { kel::shareRowsAlways(1, row); });
    EXPECT_EQ(3, rows[0].teamSize);
}

TEST(RowSharing, EveryRowOnceInAscendingBlocks)
{
    for (int team : {1, 2, 3, 8}) {
        ThreadCount threads(team);
        for (int height : {1, 2, 7, 100}) {
            const auto rows = visit(height, [height](auto row) { kel::shareRowsAlways(height, row); });
            int previousThread = -1;
            for (const Visit& v : rows) {
                ASSERT_EQ(1, v.count);
                ASSERT_EQ(team, v.teamSize);
                ASSERT_GE(v.thread, previousThread) << "blocks are contiguous and in thread order";
                previousThread = v.thread;
            }
        }
    }
}

TEST(RowSharing, TheTeamSizeIsReadAtEachRegion)
{
    for (int team : {2, 5, 1}) {
        ThreadCount threads(team);
        const auto rows = visit(1, [](auto row) { kel::shareRowsAlways(1, row); });
        EXPECT_EQ(team, rows[0].teamSize);
    }
}

} // namespace

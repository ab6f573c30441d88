// Copy, fill, maximum, sum and mean of one-channel images.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "kelcc.h"
#include "support/layouts.h"

using namespace kt;

namespace {

TEST(SmallOps, CopyAndSetTouchOnlyTheRegion)
{
    Image src = planes(9, 4, 1), dst = planes(9, 4, 1, 1, Placement::Fenced);
    src.fill(1);
    dst.fill(2);
    ASSERT_EQ(kelOk, keliCopy_8u_C1R(src.ptr(), src.step(), dst.ptr(), dst.step(), {9, 4}));
    EXPECT_EQ(src.rows(), dst.rows());
    ASSERT_EQ(kelOk, keliSet_8u_C1R(200, dst.ptr(), dst.step(), {9, 4}));
    EXPECT_EQ(std::vector<std::uint8_t>(36, 200), dst.rows());
    EXPECT_TRUE(dst.intact());
}

// An overlapping copy gives the bytes of a forward byte loop over each row,
// whether the rows are compact (one block) or apart.
TEST(SmallOps, OverlappingCopyGoesForwardRowByRow)
{
    for (int step : {5, 7}) {
        for (int shift : {-3, -1, 1, 3}) {
            std::vector<std::uint8_t> bytes(64), expected;
            for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i * 37 + 11);
            expected = bytes;
            const int from = 20, to = from + shift;
            for (int y = 0; y < 4; ++y)
                for (int x = 0; x < 5; ++x) expected[to + y * step + x] = expected[from + y * step + x];
            ASSERT_EQ(kelOk, keliCopy_8u_C1R(bytes.data() + from, step, bytes.data() + to, step, {5, 4}));
            EXPECT_EQ(expected, bytes) << "step " << step << ", shift " << shift;
        }
    }
}

TEST(SmallOps, ArgumentTestsPointersThenSize)
{
    Image image = planes(4, 2, 1);
    Kel32f max = 0;
    Kel64f value = 0;
    const auto* f = reinterpret_cast<const Kel32f*>(image.ptr());
    EXPECT_EQ(kelErrNullPointer, keliCopy_8u_C1R(nullptr, 4, image.ptr(), 4, {0, 0}));
    EXPECT_EQ(kelErrNullPointer, keliCopy_8u_C1R(image.ptr(), 4, nullptr, 4, {1, 1}));
    EXPECT_EQ(kelErrSize, keliCopy_8u_C1R(image.ptr(), 4, image.ptr(), 4, {0, 1}));
    EXPECT_EQ(kelErrNullPointer, keliSet_8u_C1R(1, nullptr, 4, {0, 0}));
    EXPECT_EQ(kelErrSize, keliSet_8u_C1R(1, image.ptr(), 4, {1, 0}));
    EXPECT_EQ(kelErrNullPointer, keliMax_32f_C1R(f, 4, {1, 1}, nullptr));
    EXPECT_EQ(kelErrNullPointer, keliMax_32f_C1R(nullptr, 4, {0, 1}, &max));
    EXPECT_EQ(kelErrSize, keliMax_32f_C1R(f, 4, {1, -1}, &max));
    EXPECT_EQ(kelErrNullPointer, keliSum_32f_C1R(f, 4, {1, 1}, nullptr, 0));
    EXPECT_EQ(kelErrSize, keliSum_32f_C1R(f, 4, {0, 1}, &value, 0));
    // The mean tests its own pointer first, then the rest through the sum.
    EXPECT_EQ(kelErrNullPointer, keliMean_32f_C1R(f, 4, {0, 0}, nullptr, 0));
    value = 42;
    EXPECT_EQ(kelErrSize, keliMean_32f_C1R(f, 4, {0, 0}, &value, 0));
    EXPECT_EQ(42, value);
    EXPECT_EQ(kelErrNullPointer, keliMean_32f_C1R(nullptr, 4, {1, 1}, &value, 0));
}

TEST(SmallOps, MaxIsOneOfTheSamplesAndNaNsOnlyCountFirst)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    std::vector<Kel32f> v{1.5f, nan, 7.25f, -3.0f, 7.0f, nan};
    Kel32f max = 0;
    ASSERT_EQ(kelOk, keliMax_32f_C1R(v.data(), 12, {3, 2}, &max));
    EXPECT_EQ(7.25f, max);
    v[0] = nan;
    ASSERT_EQ(kelOk, keliMax_32f_C1R(v.data(), 12, {3, 2}, &max));
    EXPECT_TRUE(std::isnan(max));
    ASSERT_EQ(kelOk, keliMax_32f_C1R(v.data() + 3, 12, {1, 1}, &max));
    EXPECT_EQ(-3.0f, max);
}

TEST(SmallOps, SumSplitsColumnsByParityInExtendedPrecision)
{
    // 1e8 and 1 alternate down a column pair; the odd accumulator sees only
    // the small values, so nothing is lost to rounding.
    const int width = 3, height = 4;
    std::vector<Kel32f> v(width * height);
    for (int y = 0; y < height; ++y) {
        v[y * width] = 1e8f;
        v[y * width + 1] = 1.0f;
        v[y * width + 2] = -1e8f;  // odd width: goes with column 0
    }
    Kel64f sum = 0;
    ASSERT_EQ(kelOk, keliSum_32f_C1R(v.data(), width * 4, {width, height}, &sum, 0));
    EXPECT_EQ(4.0, sum);
    ASSERT_EQ(kelOk, keliSum_32f_C1R(v.data() + 1, width * 4, {1, 1}, &sum, 0));
    EXPECT_EQ(1.0, sum);
}

TEST(SmallOps, SumCarriesMoreThanADoubleAcrossRows)
{
    // 2^53 then 999 ones down one column: a running double would lose every
    // one; the extended accumulator holds 2^53 + 999, rounded once to even.
    const int height = 1000;
    std::vector<Kel32f> v(height, 1.0f);
    v[0] = 9007199254740992.0f;
    Kel64f sum = 0;
    ASSERT_EQ(kelOk, keliSum_32f_C1R(v.data(), 4, {1, height}, &sum, 0));
    EXPECT_EQ(9007199254740992.0 + 1000.0, sum);
}

TEST(SmallOps, MeanDividesTheSumByThePixelCount)
{
    std::vector<Kel32f> v{1, 2, 3, 4, 5, 6};
    Kel64f mean = 0;
    ASSERT_EQ(kelOk, keliMean_32f_C1R(v.data(), 12, {3, 2}, &mean, 0));
    EXPECT_EQ(3.5, mean);
    // A negative stride walks upward.
    ASSERT_EQ(kelOk, keliMean_32f_C1R(v.data() + 3, -12, {3, 2}, &mean, 0));
    EXPECT_EQ(3.5, mean);
}

} // namespace

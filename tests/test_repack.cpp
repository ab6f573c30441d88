// Repacking among 4:2:2, 4:2:0, 4:1:1 and 16:2:0: every member against the
// sample rules, effective sizes (what stays unwritten), argument tests, and
// the concrete cases: 13x9 regions, stacking round trips, 16:2:0 cells.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <functional>
#include <memory>
#include <vector>

#include "kelcc.h"
#include "support/layouts.h"

using namespace kt;

namespace {

enum class Scheme { S422, S420, S411, S1620 };
enum class Rule { Same, RowsDoubled, OddRowsDropped, OddColumnsDropped, ColumnsDoubled, ColumnsStacked, RowsUnstacked };

int cellWidth(Scheme s) { return s == Scheme::S422 || s == Scheme::S420 ? 2 : 4; }
int cellHeight(Scheme s) { return s == Scheme::S420 ? 2 : s == Scheme::S1620 ? 4 : 1; }

// One luma-chroma image: chroma planes hold the cells rounded up, so that a
// call that rounds the size down leaves samples it must not touch.
struct YccImage : Image {
    YccImage(Ycc form, Scheme scheme, int width, int height, Placement placement = Placement::Guarded)
        : Image(ycc(form, width, height, cellWidth(scheme), cellHeight(scheme), true, placement)), scheme(scheme) {}
    Kel8u& luma(int x, int y) { return at(x, y, 0); }
    // Component c (0 Cb, 1 Cr), sample k of chroma row j.
    Kel8u& chroma(int c, int j, int k) { return at(k * cellWidth(scheme), j * cellHeight(scheme), 1 + c); }
    Scheme scheme;
};

using Call = std::function<KelResult(YccImage& src, YccImage& dst, KelImageSize)>;

struct Member {
    const char* name;
    Ycc src, dst;
    Scheme srcScheme, dstScheme;
    Rule rule;
    bool testsHeight;  // of the members that keep the whole height, only two test it
    Call call;
};

#define KT_P3P3(N) [](YccImage& s, YccImage& d, KelImageSize z) { return keli##N(s.in(), s.steps.data(), d.out(), d.steps.data(), z); }
#define KT_P3P2(N) [](YccImage& s, YccImage& d, KelImageSize z) { return keli##N(s.in(), s.steps.data(), d.ptr(), d.step(), d.pointers[1], d.steps[1], z); }
#define KT_P2P3(N) [](YccImage& s, YccImage& d, KelImageSize z) { return keli##N(s.ptr(), s.step(), s.pointers[1], s.steps[1], d.out(), d.steps.data(), z); }
#define KT_C2P3(N) [](YccImage& s, YccImage& d, KelImageSize z) { return keli##N(s.ptr(), s.step(), d.out(), d.steps.data(), z); }
#define KT_P3C2(N) [](YccImage& s, YccImage& d, KelImageSize z) { return keli##N(s.in(), s.steps.data(), d.ptr(), d.step(), z); }
#define KT_P2C2(N) [](YccImage& s, YccImage& d, KelImageSize z) { return keli##N(s.ptr(), s.step(), s.pointers[1], s.steps[1], d.ptr(), d.step(), z); }
#define KT_C2P2(N) [](YccImage& s, YccImage& d, KelImageSize z) { return keli##N(s.ptr(), s.step(), d.ptr(), d.step(), d.pointers[1], d.steps[1], z); }
#define KT_C2C2(N) [](YccImage& s, YccImage& d, KelImageSize z) { return keli##N(s.ptr(), s.step(), d.ptr(), d.step(), z); }

namespace F {
constexpr Ycc P3 = Ycc::Planes, P3CrCb = Ycc::PlanesCrFirst, P2 = Ycc::SemiPlanar, C2YCbCr = Ycc::PairsYCbCr,
              C2CbYCr = Ycc::PairsCbYCr, C2YCrCb = Ycc::PairsYCrCb;
}
using S = Scheme;
using R = Rule;
constexpr bool kHeightTested = true, kWholeCells = false;

const Member kMembers[] = {
    {"YCbCr420ToYCbCr422_8u_P3R", F::P3, F::P3, S::S420, S::S422, R::RowsDoubled, kWholeCells, KT_P3P3(YCbCr420ToYCbCr422_8u_P3R)},
    {"YCrCb420ToYCbCr422_8u_P3R", F::P3CrCb, F::P3, S::S420, S::S422, R::RowsDoubled, kWholeCells, KT_P3P3(YCrCb420ToYCbCr422_8u_P3R)},
    {"YCbCr420ToYCbCr422_8u_P2P3R", F::P2, F::P3, S::S420, S::S422, R::RowsDoubled, kWholeCells, KT_P2P3(YCbCr420ToYCbCr422_8u_P2P3R)},
    {"YCbCr422ToYCbCr420_8u_P3R", F::P3, F::P3, S::S422, S::S420, R::OddRowsDropped, kWholeCells, KT_P3P3(YCbCr422ToYCbCr420_8u_P3R)},
    {"YCbCr422ToYCbCr420_8u_C2P3R", F::C2YCbCr, F::P3, S::S422, S::S420, R::OddRowsDropped, kWholeCells, KT_C2P3(YCbCr422ToYCbCr420_8u_C2P3R)},
    {"CbYCr422ToYCbCr420_8u_C2P3R", F::C2CbYCr, F::P3, S::S422, S::S420, R::OddRowsDropped, kWholeCells, KT_C2P3(CbYCr422ToYCbCr420_8u_C2P3R)},
    {"YCrCb422ToYCbCr420_8u_C2P3R", F::C2YCrCb, F::P3, S::S422, S::S420, R::OddRowsDropped, kWholeCells, KT_C2P3(YCrCb422ToYCbCr420_8u_C2P3R)},
    {"YCbCr422ToYCbCr420_8u_P3P2R", F::P3, F::P2, S::S422, S::S420, R::OddRowsDropped, kWholeCells, KT_P3P2(YCbCr422ToYCbCr420_8u_P3P2R)},
    {"YCbCr422_8u_C2P3R", F::C2YCbCr, F::P3, S::S422, S::S422, R::Same, kHeightTested, KT_C2P3(YCbCr422_8u_C2P3R)},
    {"YCrCb422ToYCbCr422_8u_C2P3R", F::C2YCrCb, F::P3, S::S422, S::S422, R::Same, kWholeCells, KT_C2P3(YCrCb422ToYCbCr422_8u_C2P3R)},
    {"CbYCr422ToYCbCr422_8u_C2P3R", F::C2CbYCr, F::P3, S::S422, S::S422, R::Same, kWholeCells, KT_C2P3(CbYCr422ToYCbCr422_8u_C2P3R)},
    {"YCbCr422_8u_P3C2R", F::P3, F::C2YCbCr, S::S422, S::S422, R::Same, kHeightTested, KT_P3C2(YCbCr422_8u_P3C2R)},
    {"YCbCr422ToYCrCb422_8u_P3C2R", F::P3, F::C2YCrCb, S::S422, S::S422, R::Same, kWholeCells, KT_P3C2(YCbCr422ToYCrCb422_8u_P3C2R)},
    {"YCbCr422ToYCrCb422_8u_C2R", F::C2YCbCr, F::C2YCrCb, S::S422, S::S422, R::Same, kWholeCells, KT_C2C2(YCbCr422ToYCrCb422_8u_C2R)},
    {"YCbCr420_8u_P3P2R", F::P3, F::P2, S::S420, S::S420, R::Same, kWholeCells, KT_P3P2(YCbCr420_8u_P3P2R)},
    {"YCbCr420_8u_P2P3R", F::P2, F::P3, S::S420, S::S420, R::Same, kWholeCells, KT_P2P3(YCbCr420_8u_P2P3R)},
    {"YCbCr411_8u_P3P2R", F::P3, F::P2, S::S411, S::S411, R::Same, kWholeCells, KT_P3P2(YCbCr411_8u_P3P2R)},
    {"YCbCr411_8u_P2P3R", F::P2, F::P3, S::S411, S::S411, R::Same, kWholeCells, KT_P2P3(YCbCr411_8u_P2P3R)},
    {"YCbCr422ToYCbCr411_8u_P3R", F::P3, F::P3, S::S422, S::S411, R::OddColumnsDropped, kWholeCells, KT_P3P3(YCbCr422ToYCbCr411_8u_P3R)},
    {"YCbCr422ToYCbCr411_8u_P3P2R", F::P3, F::P2, S::S422, S::S411, R::OddColumnsDropped, kWholeCells, KT_P3P2(YCbCr422ToYCbCr411_8u_P3P2R)},
    {"YCbCr422ToYCbCr411_8u_C2P2R", F::C2YCbCr, F::P2, S::S422, S::S411, R::OddColumnsDropped, kWholeCells, KT_C2P2(YCbCr422ToYCbCr411_8u_C2P2R)},
    {"YCbCr422ToYCbCr411_8u_C2P3R", F::C2YCbCr, F::P3, S::S422, S::S411, R::OddColumnsDropped, kWholeCells, KT_C2P3(YCbCr422ToYCbCr411_8u_C2P3R)},
    {"CbYCr422ToYCbCr411_8u_C2P3R", F::C2CbYCr, F::P3, S::S422, S::S411, R::OddColumnsDropped, kWholeCells, KT_C2P3(CbYCr422ToYCbCr411_8u_C2P3R)},
    {"YCrCb422ToYCbCr411_8u_C2P3R", F::C2YCrCb, F::P3, S::S422, S::S411, R::OddColumnsDropped, kWholeCells, KT_C2P3(YCrCb422ToYCbCr411_8u_C2P3R)},
    {"YCbCr411ToYCbCr422_8u_P3R", F::P3, F::P3, S::S411, S::S422, R::ColumnsDoubled, kWholeCells, KT_P3P3(YCbCr411ToYCbCr422_8u_P3R)},
    {"YCbCr411ToYCrCb422_8u_P3R", F::P3, F::P3CrCb, S::S411, S::S422, R::ColumnsDoubled, kWholeCells, KT_P3P3(YCbCr411ToYCrCb422_8u_P3R)},
    {"YCbCr411ToYCbCr422_8u_P3C2R", F::P3, F::C2YCbCr, S::S411, S::S422, R::ColumnsDoubled, kWholeCells, KT_P3C2(YCbCr411ToYCbCr422_8u_P3C2R)},
    {"YCbCr411ToYCrCb422_8u_P3C2R", F::P3, F::C2YCrCb, S::S411, S::S422, R::ColumnsDoubled, kWholeCells, KT_P3C2(YCbCr411ToYCrCb422_8u_P3C2R)},
    {"YCbCr411ToYCbCr422_8u_P2C2R", F::P2, F::C2YCbCr, S::S411, S::S422, R::ColumnsDoubled, kWholeCells, KT_P2C2(YCbCr411ToYCbCr422_8u_P2C2R)},
    {"YCbCr411ToYCbCr422_8u_P2P3R", F::P2, F::P3, S::S411, S::S422, R::ColumnsDoubled, kWholeCells, KT_P2P3(YCbCr411ToYCbCr422_8u_P2P3R)},
    {"YCbCr420ToYCbCr411_8u_P3P2R", F::P3, F::P2, S::S420, S::S411, R::ColumnsStacked, kWholeCells, KT_P3P2(YCbCr420ToYCbCr411_8u_P3P2R)},
    {"YCrCb420ToYCbCr411_8u_P3P2R", F::P3CrCb, F::P2, S::S420, S::S411, R::ColumnsStacked, kWholeCells, KT_P3P2(YCrCb420ToYCbCr411_8u_P3P2R)},
    {"YCbCr420ToYCbCr411_8u_P2P3R", F::P2, F::P3, S::S420, S::S411, R::ColumnsStacked, kWholeCells, KT_P2P3(YCbCr420ToYCbCr411_8u_P2P3R)},
    {"YCbCr411ToYCbCr420_8u_P3R", F::P3, F::P3, S::S411, S::S420, R::RowsUnstacked, kWholeCells, KT_P3P3(YCbCr411ToYCbCr420_8u_P3R)},
    {"YCbCr411ToYCbCr420_8u_P3P2R", F::P3, F::P2, S::S411, S::S420, R::RowsUnstacked, kWholeCells, KT_P3P2(YCbCr411ToYCbCr420_8u_P3P2R)},
    {"YCbCr411ToYCbCr420_8u_P2P3R", F::P2, F::P3, S::S411, S::S420, R::RowsUnstacked, kWholeCells, KT_P2P3(YCbCr411ToYCbCr420_8u_P2P3R)},
    {"YCbCr411ToYCrCb420_8u_P2P3R", F::P2, F::P3CrCb, S::S411, S::S420, R::RowsUnstacked, kWholeCells, KT_P2P3(YCbCr411ToYCrCb420_8u_P2P3R)},
};

// The effective size: the larger cell of the two schemes, in each direction.
int cellsWide(const Member& m) { return std::max(cellWidth(m.srcScheme), cellWidth(m.dstScheme)); }
int cellsHigh(const Member& m) { return std::max(cellHeight(m.srcScheme), cellHeight(m.dstScheme)); }

// Writes into `expected` what the member writes, straight from the rules.
void applyRules(const Member& m, YccImage& src, YccImage& expected, int width, int height)
{
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) expected.luma(x, y) = src.luma(x, y);
    for (int j = 0; j < height / cellHeight(m.dstScheme); ++j)
        for (int k = 0; k < width / cellWidth(m.dstScheme); ++k)
            for (int c = 0; c < 2; ++c) {
                int row = j, col = k;
                switch (m.rule) {
                case Rule::RowsDoubled: row = j / 2; break;
                case Rule::OddRowsDropped: row = 2 * j; break;
                case Rule::OddColumnsDropped: col = 2 * k; break;
                case Rule::ColumnsDoubled: col = k / 2; break;
                case Rule::ColumnsStacked: row = j / 2; col = 2 * k + j % 2; break;
                case Rule::RowsUnstacked: row = 2 * j + k % 2; col = k / 2; break;
                case Rule::Same: break;
                }
                expected.chroma(c, j, k) = src.chroma(c, row, col);
            }
}

class Repack : public ::testing::TestWithParam<Member> {
protected:
    void expectRules(int width, int height, Placement placement = Placement::Guarded)
    {
        const Member& m = GetParam();
        YccImage src(m.src, m.srcScheme, width, height, placement), dst(m.dst, m.dstScheme, width, height, placement),
            expected(m.dst, m.dstScheme, width, height);
        src.fill(static_cast<std::uint32_t>(width * 17 + height));
        dst.fillWith(99);
        expected.fillWith(99);
        applyRules(m, src, expected, width / cellsWide(m) * cellsWide(m), height / cellsHigh(m) * cellsHigh(m));
        expectWrites(kelOk, m.call, src, dst, expected, {width, height});
    }
};

TEST_P(Repack, FollowsItsRuleAndRoundsTheSizeDownSilently)
{
    for (int width : {4, 5, 6, 7, 8, 13})
        for (int height : {2, 3, 4, 9}) expectRules(width, height);
    expectRules(8, 4, Placement::Fenced);
    expectRules(13, 9, Placement::Fenced);
}

TEST_P(Repack, NullPointersFirstThenTheSizeOfItsGroup)
{
    const Member& m = GetParam();
    YccImage src(m.src, m.srcScheme, 8, 4), dst(m.dst, m.dstScheme, 8, 4);
    const int height = cellsHigh(m) > 1 || m.testsHeight ? cellsHigh(m) : 0;  // 0: the height is never tested
    expectArgumentOrder(m.call, src, dst, {8, 4}, {cellsWide(m), height}, true);
}

INSTANTIATE_TEST_SUITE_P(Repacking, Repack, ::testing::ValuesIn(kMembers),
                         [](const auto& info) { return std::string(info.param.name); });

// ---- concrete cases ------------------------------------------------------------------------

TEST(RepackCases, RowsDoubledAt13x9LeavesTheLastColumnAndRow)
{
    YccImage src(F::P3, Scheme::S420, 13, 9), dst(F::P3, Scheme::S422, 13, 9);
    src.fill(1);
    dst.fill(2);
    const Kel8u lastColumn = dst.luma(12, 0), lastRow = dst.luma(0, 8), lastChroma = dst.chroma(0, 8, 0);
    ASSERT_EQ(kelOk, keliYCbCr420ToYCbCr422_8u_P3R(src.in(), src.steps.data(), dst.out(), dst.steps.data(), {13, 9}));
    EXPECT_EQ(lastColumn, dst.luma(12, 0));
    EXPECT_EQ(lastRow, dst.luma(0, 8));
    EXPECT_EQ(lastChroma, dst.chroma(0, 8, 0));
    EXPECT_EQ(src.luma(11, 7), dst.luma(11, 7));
    EXPECT_EQ(src.chroma(1, 3, 5), dst.chroma(1, 7, 5));  // row 7 repeats source row 3
}

TEST(RepackCases, SwappingChromaInPixelOrderIsItsOwnInverse)
{
    Image image = ycc(Ycc::PairsYCbCr, 10, 3, 2, 1), swapped = ycc(Ycc::PairsYCbCr, 10, 3, 2, 1), back = ycc(Ycc::PairsYCbCr, 10, 3, 2, 1);
    image.fill(8);
    ASSERT_EQ(kelOk, keliYCbCr422ToYCrCb422_8u_C2R(image.ptr(), image.step(), swapped.ptr(), swapped.step(), {10, 3}));
    EXPECT_EQ(image.row(0, 1)[3], swapped.row(0, 1)[1]);
    EXPECT_EQ(image.row(0, 1)[1], swapped.row(0, 1)[3]);
    ASSERT_EQ(kelOk, keliYCbCr422ToYCrCb422_8u_C2R(swapped.ptr(), swapped.step(), back.ptr(), back.step(), {10, 3}));
    EXPECT_EQ(image.rows(), back.rows());
}

TEST(RepackCases, StackingThenUnstackingRestoresChroma)
{
    const int width = 12, height = 6;
    YccImage p2(F::P2, Scheme::S420, width, height), p3(F::P3, Scheme::S411, width, height),
        back(F::P2, Scheme::S420, width, height);
    p2.fill(4);
    back.fill(5);
    ASSERT_EQ(kelOk, keliYCbCr420ToYCbCr411_8u_P2P3R(p2.ptr(), p2.step(), p2.pointers[1], p2.steps[1], p3.out(),
                                                     p3.steps.data(), {width, height}));
    ASSERT_EQ(kelOk, keliYCbCr411ToYCbCr420_8u_P3P2R(p3.in(), p3.steps.data(), back.ptr(), back.step(),
                                                     back.pointers[1], back.steps[1], {width, height}));
    EXPECT_EQ(p2.rows(), back.rows());
}

// ---- resampling ------------------------------------------------------------------------------

using Resample = KelResult (*)(const Kel8u* const[3], const int[3], Kel8u* const[3], const int[3], KelImageSize);

struct ResampleCase {
    Scheme from, to;
    Resample call;
};

TEST(Resampling, ExactSizesAreRequired)
{
    const ResampleCase cases[] = {{Scheme::S420, Scheme::S411, keliYCbCr420To411_8u_P3R},
                                  {Scheme::S411, Scheme::S420, keliYCbCr411To420_8u_P3R},
                                  {Scheme::S420, Scheme::S1620, keliYCbCr420To1620_8u_P3R},
                                  {Scheme::S1620, Scheme::S420, keliYCbCr1620To420_8u_P3R}};
    for (const auto& c : cases) {
        YccImage src(F::P3, c.from, 16, 16), dst(F::P3, c.to, 16, 16);
        dst.fill(1);
        const auto before = dst.rows();
        const bool evenHeightSuffices = c.call == keliYCbCr420To411_8u_P3R;
        EXPECT_EQ(kelErrSize, c.call(src.in(), src.steps.data(), dst.out(), dst.steps.data(), {6, 8}));
        EXPECT_EQ(kelErrSize, c.call(src.in(), src.steps.data(), dst.out(), dst.steps.data(), {8, 7}));
        EXPECT_EQ(kelErrSize, c.call(src.in(), src.steps.data(), dst.out(), dst.steps.data(), {0, 8}));
        EXPECT_EQ(evenHeightSuffices ? kelOk : kelErrSize,
                  c.call(src.in(), src.steps.data(), dst.out(), dst.steps.data(), {8, 2}));
        if (!evenHeightSuffices) EXPECT_EQ(before, dst.rows());
        EXPECT_EQ(kelErrNullPointer, c.call(src.in(), src.steps.data(), nullptr, dst.steps.data(), {0, 0}));
        src.pointers[2] = nullptr;
        EXPECT_EQ(kelErrNullPointer, c.call(src.in(), src.steps.data(), dst.out(), dst.steps.data(), {6, 7}));
    }
    // The rounding member at the same width works on width 4.
    YccImage p2(F::P2, Scheme::S420, 6, 2), p3(F::P3, Scheme::S411, 6, 2);
    EXPECT_EQ(kelOk, keliYCbCr420ToYCbCr411_8u_P2P3R(p2.ptr(), p2.step(), p2.pointers[1], p2.steps[1], p3.out(),
                                                     p3.steps.data(), {6, 2}));
}

// What a resampling member writes: luma copied; chroma averaged where a
// neighbour exists (the inner 16:2:0 Cb cells round, the Cr cells truncate)
// and repeated where none does.
void resampled(Scheme from, Scheme to, YccImage& s, YccImage& e, int width, int height)
{
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) e.luma(x, y) = s.luma(x, y);
    const int rows = height / cellHeight(from), columns = width / cellWidth(from);
    for (int c = 0; c < 2; ++c)
        for (int j = 0; j < rows; ++j)
            for (int k = 0; k < columns; ++k) {
                auto S = [&](int jj, int kk) { return int(s.chroma(c, jj, kk)); };
                const bool lastRow = j + 1 == rows, lastColumn = k + 1 == columns;
                if (from == Scheme::S420 && to == Scheme::S411 && k % 2 == 0 && k / 2 < width / 4) {
                    e.chroma(c, 2 * j, k / 2) = Kel8u(S(j, k));
                    e.chroma(c, 2 * j + 1, k / 2) = Kel8u(lastRow ? S(j, k) : (S(j, k) + S(j + 1, k)) >> 1);
                } else if (from == Scheme::S411 && j % 2 == 0) {
                    e.chroma(c, j / 2, 2 * k) = Kel8u(S(j, k));
                    e.chroma(c, j / 2, 2 * k + 1) = Kel8u(lastColumn ? S(j, k) : (S(j, k) + S(j, k + 1)) >> 1);
                } else if (to == Scheme::S1620 && j % 2 == 0 && k % 2 == 0) {
                    e.chroma(c, j / 2, k / 2) = Kel8u(S(j, k));
                } else if (from == Scheme::S1620) {
                    const int a = S(j, k), b = lastColumn ? a : S(j, k + 1), d = lastRow ? a : S(j + 1, k);
                    const int round = c == 0 && !lastRow && !lastColumn ? 1 : 0;  // Cb rounds, Cr truncates
                    const int all = lastRow || lastColumn ? 0 : a + b + d + S(j + 1, k + 1);
                    e.chroma(c, 2 * j, 2 * k) = Kel8u(a);
                    e.chroma(c, 2 * j, 2 * k + 1) = Kel8u(lastColumn ? a : (a + b + round) >> 1);
                    e.chroma(c, 2 * j + 1, 2 * k) = Kel8u(lastRow ? a : (a + d + round) >> 1);
                    e.chroma(c, 2 * j + 1, 2 * k + 1) = Kel8u(lastRow ? a : lastColumn ? (a + d) >> 1 : (all + 2 * round) >> 2);
                }
            }
}

TEST(Resampling, EveryMemberFollowsItsRules)
{
    const ResampleCase cases[] = {{Scheme::S420, Scheme::S411, keliYCbCr420To411_8u_P3R},
                                  {Scheme::S411, Scheme::S420, keliYCbCr411To420_8u_P3R},
                                  {Scheme::S420, Scheme::S1620, keliYCbCr420To1620_8u_P3R},
                                  {Scheme::S1620, Scheme::S420, keliYCbCr1620To420_8u_P3R}};
    for (const auto& c : cases)
        for (auto [w, h] : {std::pair{4, 4}, std::pair{8, 8}, std::pair{12, 8}, std::pair{8, 12}}) {
            YccImage src(F::P3, c.from, w, h, Placement::Fenced), dst(F::P3, c.to, w, h, Placement::Fenced),
                expected(F::P3, c.to, w, h);
            src.fill(w + h);
            dst.fillWith(5);
            expected.fillWith(5);
            ASSERT_EQ(kelOk, c.call(src.in(), src.steps.data(), dst.out(), dst.steps.data(), {w, h}));
            resampled(c.from, c.to, src, expected, w, h);
            EXPECT_EQ(expected.rows(), dst.rows()) << w << "x" << h;
            EXPECT_TRUE(dst.intact());
        }
}

TEST(Resampling, SixteenTwoZeroInnerCellRoundsCbAndTruncatesCr)
{
    YccImage src(F::P3, Scheme::S1620, 8, 8), dst(F::P3, Scheme::S420, 8, 8);
    for (int c = 0; c < 2; ++c) {  // a = 1, b = 2; c = 4, d = 7 below
        src.chroma(c, 0, 0) = 1;
        src.chroma(c, 0, 1) = 2;
        src.chroma(c, 1, 0) = 4;
        src.chroma(c, 1, 1) = 7;
    }
    ASSERT_EQ(kelOk, keliYCbCr1620To420_8u_P3R(src.in(), src.steps.data(), dst.out(), dst.steps.data(), {8, 8}));
    EXPECT_EQ(2, dst.chroma(0, 0, 1));
    EXPECT_EQ(1, dst.chroma(1, 0, 1));
    EXPECT_EQ(4, dst.chroma(0, 1, 1));  // (1 + 2 + 4 + 7 + 2) >> 2
    EXPECT_EQ(3, dst.chroma(1, 1, 1));  // 14 >> 2
}

TEST(RepackCases, StrideArrayNullOnlyTestedByOneMember)
{
    YccImage src(F::C2YCbCr, Scheme::S422, 4, 2), dst(F::P3, Scheme::S422, 4, 2);
    EXPECT_EQ(kelErrNullPointer, keliYCbCr422_8u_C2P3R(src.ptr(), src.step(), dst.out(), nullptr, {4, 2}));
    EXPECT_EQ(kelErrSize, keliYCbCr422_8u_C2P3R(src.ptr(), src.step(), dst.out(), dst.steps.data(), {4, 0}));
    EXPECT_EQ(kelOk, keliYCbCr422ToYCbCr411_8u_C2P3R(src.ptr(), src.step(), dst.out(), dst.steps.data(), {4, 0}));
}

} // namespace

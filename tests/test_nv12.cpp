// NV12, YV12, YUY2 and UYVY repacking: every member against the sample rules
// at odd and smallest sizes, what stays unwritten, the argument tests in each
// member's order, and the concrete cases (13x9, plane order, byte swaps).
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <utility>
#include <vector>

#include "kelcc.h"
#include "support/layouts.h"

using namespace kt;

namespace {

enum class Scheme { S422, S420 };
enum class Rule { Same, RowsDoubled, OddRowsDropped };

int cellHeight(Scheme s) { return s == Scheme::S420 ? 2 : 1; }

// One luma-chroma image whose chroma is indexed by sample: component c (0 Cb,
// 1 Cr), sample k of chroma row j, whatever the layout keeps it in.
struct YccImage : Image {
    YccImage(Ycc form, Scheme scheme, int width, int height, Placement placement = Placement::Guarded)
        : Image(ycc(form, width, height, 2, cellHeight(scheme), true, placement)), scheme(scheme) {}
    Kel8u& luma(int x, int y) { return at(x, y, 0); }
    Kel8u& chroma(int c, int j, int k) { return at(2 * k, j * cellHeight(scheme), 1 + c); }
    Scheme scheme;
};

using Call = KelResult (*)(YccImage& src, YccImage& dst, KelImageSize size);

// The call shapes of the family, by source and destination layout.
template <auto F> KelResult fromP2ToC2(YccImage& s, YccImage& d, KelImageSize z)
{
    return F(s.ptr(), s.step(), s.pointers[1], s.steps[1], d.ptr(), d.step(), z);
}
template <auto F> KelResult fromP2ToP3(YccImage& s, YccImage& d, KelImageSize z)
{
    return F(s.ptr(), s.step(), s.pointers[1], s.steps[1], d.out(), d.steps.data(), z);
}
template <auto F> KelResult fromP3ToP2(YccImage& s, YccImage& d, KelImageSize z)
{
    return F(s.in(), s.steps.data(), d.ptr(), d.step(), d.pointers[1], d.steps[1], z);
}
template <auto F> KelResult fromP3ToC2(YccImage& s, YccImage& d, KelImageSize z)
{
    return F(s.in(), s.steps.data(), d.ptr(), d.step(), z);
}
template <auto F> KelResult fromC2ToC2(YccImage& s, YccImage& d, KelImageSize z)
{
    return F(s.ptr(), s.step(), d.ptr(), d.step(), z);
}
template <auto F> KelResult fromC2ToP3(YccImage& s, YccImage& d, KelImageSize z)
{
    return F(s.ptr(), s.step(), d.out(), d.steps.data(), z);
}
template <auto F> KelResult fromC2ToP2(YccImage& s, YccImage& d, KelImageSize z)
{
    return F(s.ptr(), s.step(), d.ptr(), d.step(), d.pointers[1], d.steps[1], z);
}

constexpr Ycc kNV12 = Ycc::SemiPlanar, kYV12 = Ycc::PlanesCrFirst, kPlanesYCbCr = Ycc::Planes,
              kYUY2 = Ycc::PairsYCbCr, kUYVY = Ycc::PairsCbYCr;

struct Member {
    const char* name;
    Ycc src, dst;
    Scheme srcScheme, dstScheme;
    Rule rule;
    bool wholeHeight;     // the height is kept, not rounded to a row pair
    bool sizeBeforePlanes;  // a size below one pixel beats a null destination plane
    Call call;
};

constexpr bool kWholeHeight = true, kRowPairs = false, kSizeFirst = true, kPointersFirst = false;
using S = Scheme;
using R = Rule;

const Member kMembers[] = {
    {"keliYCbCr420ToYCbCr422_8u_P2C2R", kNV12, kYUY2, S::S420, S::S422, R::RowsDoubled, kRowPairs, kPointersFirst,
     fromP2ToC2<keliYCbCr420ToYCbCr422_8u_P2C2R>},
    {"keliYCbCr420ToCbYCr422_8u_P2C2R", kNV12, kUYVY, S::S420, S::S422, R::RowsDoubled, kRowPairs, kPointersFirst,
     fromP2ToC2<keliYCbCr420ToCbYCr422_8u_P2C2R>},
    {"keliYCbCr420ToYCrCb420_8u_P2P3R", kNV12, kPlanesYCbCr, S::S420, S::S420, R::Same, kRowPairs, kSizeFirst,
     fromP2ToP3<keliYCbCr420ToYCrCb420_8u_P2P3R>},
    {"keliYCrCb420ToYCbCr420_8u_P3P2R", kYV12, kNV12, S::S420, S::S420, R::Same, kRowPairs, kPointersFirst,
     fromP3ToP2<keliYCrCb420ToYCbCr420_8u_P3P2R>},
    {"keliYCrCb420ToYCbCr422_8u_P3C2R", kYV12, kYUY2, S::S420, S::S422, R::RowsDoubled, kRowPairs, kPointersFirst,
     fromP3ToC2<keliYCrCb420ToYCbCr422_8u_P3C2R>},
    {"keliYCrCb420ToCbYCr422_8u_P3C2R", kYV12, kUYVY, S::S420, S::S422, R::RowsDoubled, kRowPairs, kPointersFirst,
     fromP3ToC2<keliYCrCb420ToCbYCr422_8u_P3C2R>},
    {"keliYCbCr422ToCbYCr422_8u_C2R", kYUY2, kUYVY, S::S422, S::S422, R::Same, kWholeHeight, kPointersFirst,
     fromC2ToC2<keliYCbCr422ToCbYCr422_8u_C2R>},
    {"keliCbYCr422ToYCbCr422_8u_C2R", kUYVY, kYUY2, S::S422, S::S422, R::Same, kWholeHeight, kPointersFirst,
     fromC2ToC2<keliCbYCr422ToYCbCr422_8u_C2R>},
    {"keliYCbCr422ToYCrCb420_8u_C2P3R", kYUY2, kYV12, S::S422, S::S420, R::OddRowsDropped, kRowPairs, kPointersFirst,
     fromC2ToP3<keliYCbCr422ToYCrCb420_8u_C2P3R>},
    {"keliCbYCr422ToYCrCb420_8u_C2P3R", kUYVY, kYV12, S::S422, S::S420, R::OddRowsDropped, kRowPairs, kPointersFirst,
     fromC2ToP3<keliCbYCr422ToYCrCb420_8u_C2P3R>},
    {"keliYCbCr422ToYCbCr420_8u_C2P2R", kYUY2, kNV12, S::S422, S::S420, R::OddRowsDropped, kRowPairs, kPointersFirst,
     fromC2ToP2<keliYCbCr422ToYCbCr420_8u_C2P2R>},
    {"keliCbYCr422ToYCbCr420_8u_C2P2R", kUYVY, kNV12, S::S422, S::S420, R::OddRowsDropped, kRowPairs, kPointersFirst,
     fromC2ToP2<keliCbYCr422ToYCbCr420_8u_C2P2R>},
};

int effectiveHeight(const Member& m, int height) { return m.wholeHeight ? height : height & ~1; }

// Writes into `expected` what the member writes over W x H, from the rules:
// luma unchanged; chroma of the same position, of source row j/2 (rows
// doubled) or of source row 2j (odd rows dropped).
void applyRules(const Member& m, YccImage& src, YccImage& expected, int W, int H)
{
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) expected.luma(x, y) = src.luma(x, y);
    for (int j = 0; j < H / cellHeight(m.dstScheme); ++j)
        for (int k = 0; k < W / 2; ++k)
            for (int c = 0; c < 2; ++c) {
                const int row = m.rule == Rule::RowsDoubled ? j / 2 : m.rule == Rule::OddRowsDropped ? 2 * j : j;
                expected.chroma(c, j, k) = src.chroma(c, row, k);
            }
}

class Nv12Repack : public ::testing::TestWithParam<Member> {
protected:
    // tight: the source holds exactly the W x H region and ends at an
    // inaccessible page, so that reading past the last row or column faults.
    void expectRules(int width, int height, bool tight)
    {
        const Member& m = GetParam();
        const int W = width & ~1, H = effectiveHeight(m, height);
        YccImage src(m.src, m.srcScheme, tight ? W : width, tight ? H : height,
                     tight ? Placement::Fenced : Placement::Guarded);
        YccImage dst(m.dst, m.dstScheme, width, height), expected(m.dst, m.dstScheme, width, height);
        src.fill(static_cast<std::uint32_t>(width * 31 + height));
        dst.fillWith(0x5A);
        expected.fillWith(0x5A);
        applyRules(m, src, expected, W, H);
        expectWrites(kelOk, m.call, src, dst, expected, {width, height});
    }
};

TEST_P(Nv12Repack, FollowsItsRuleAtOddAndSmallestSizesWithoutWarning)
{
    const int firstHeight = GetParam().wholeHeight ? 1 : 2;
    for (int width : {2, 3, 4, 5, 13, 70, 131})
        for (int height : {1, 2, 3, 4, 9})
            if (height >= firstHeight)
                for (bool tight : {false, true}) expectRules(width, height, tight);
}

INSTANTIATE_TEST_SUITE_P(Nv12, Nv12Repack, ::testing::ValuesIn(kMembers),
                         [](const auto& info) { return std::string(info.param.name).substr(4); });

// The members whose pointers all come before the size; the planes-out member
// has an order of its own, below.
class Nv12RepackArguments : public ::testing::TestWithParam<Member> {};

TEST_P(Nv12RepackArguments, NullPointersFirstThenTheSize)
{
    const Member& m = GetParam();
    YccImage src(m.src, m.srcScheme, 8, 4), dst(m.dst, m.dstScheme, 8, 4);
    expectArgumentOrder(m.call, src, dst, {8, 4}, {2, m.wholeHeight ? 1 : 2}, true);
}

std::vector<Member> pointersFirst()
{
    std::vector<Member> members;
    for (const Member& m : kMembers)
        if (!m.sizeBeforePlanes) members.push_back(m);
    return members;
}

INSTANTIATE_TEST_SUITE_P(Nv12, Nv12RepackArguments, ::testing::ValuesIn(pointersFirst()),
                         [](const auto& info) { return std::string(info.param.name).substr(4); });

// ---- concrete cases ------------------------------------------------------------------------

TEST(Nv12RepackCases, NV12ToYUY2At13x9Writes24BytesInEachOf8Rows)
{
    YccImage src(kNV12, S::S420, 13, 9), dst(kYUY2, S::S422, 13, 9);
    src.fill(3);
    dst.fillWith(0x77);
    ASSERT_EQ(kelOk, keliYCbCr420ToYCbCr422_8u_P2C2R(src.ptr(), src.step(), src.pointers[1], src.steps[1], dst.ptr(),
                                                     dst.step(), {13, 9}));
    for (int y = 0; y < 9; ++y)
        for (int b = 0; b < 26; ++b) {
            const bool written = y < 8 && b < 24;
            if (!written) EXPECT_EQ(0x77, dst.row(0, y)[b]) << "row " << y << " byte " << b;
        }
    EXPECT_EQ(src.luma(11, 7), dst.row(0, 7)[22]);
    EXPECT_EQ(src.row(1, 3)[10], dst.row(0, 7)[21]);  // Cb of pair 5, chroma row 3 serves rows 6 and 7
    EXPECT_EQ(src.row(1, 3)[11], dst.row(0, 6)[23]);
    EXPECT_TRUE(dst.intact());
}

TEST(Nv12RepackCases, YV12ToPixelOrderReadsPlaneTwoAsCb)
{
    YccImage src(kYV12, S::S420, 4, 2), yuy2(kYUY2, S::S422, 4, 2), uyvy(kUYVY, S::S422, 4, 2);
    for (int x = 0; x < 4; ++x) src.row(0, 0)[x] = src.row(0, 1)[x] = Kel8u(10 + x);
    src.row(1, 0)[0] = 101;  // plane 1: Cr
    src.row(1, 0)[1] = 102;
    src.row(2, 0)[0] = 201;  // plane 2: Cb
    src.row(2, 0)[1] = 202;
    ASSERT_EQ(kelOk, keliYCrCb420ToYCbCr422_8u_P3C2R(src.in(), src.steps.data(), yuy2.ptr(), yuy2.step(), {4, 2}));
    ASSERT_EQ(kelOk, keliYCrCb420ToCbYCr422_8u_P3C2R(src.in(), src.steps.data(), uyvy.ptr(), uyvy.step(), {4, 2}));
    for (int y = 0; y < 2; ++y) {
        const std::vector<Kel8u> yuy2Row(yuy2.row(0, y), yuy2.row(0, y) + 8), uyvyRow(uyvy.row(0, y), uyvy.row(0, y) + 8);
        EXPECT_EQ((std::vector<Kel8u>{10, 201, 11, 101, 12, 202, 13, 102}), yuy2Row) << "row " << y;
        EXPECT_EQ((std::vector<Kel8u>{201, 10, 101, 11, 202, 12, 102, 13}), uyvyRow) << "row " << y;
    }
}

TEST(Nv12RepackCases, SwappingPixelOrderTwiceRestoresTheRegion)
{
    const int width = 11, height = 3;  // W = 10: the odd last pixel stays as it was in both
    YccImage image(kYUY2, S::S422, width, height), swapped(kUYVY, S::S422, width, height),
        back(kYUY2, S::S422, width, height);
    image.fill(21);
    swapped.fillWith(0);
    back.fill(21);  // the same bytes beyond the region, so that the whole rows compare
    for (int y = 0; y < height; ++y) back.row(0, y)[0] = back.row(0, y)[19] = Kel8u(~image.row(0, y)[0]);
    ASSERT_EQ(kelOk, keliYCbCr422ToCbYCr422_8u_C2R(image.ptr(), image.step(), swapped.ptr(), swapped.step(), {width, height}));
    const std::vector<Kel8u> group(swapped.row(0, 1), swapped.row(0, 1) + 4);
    EXPECT_EQ((std::vector<Kel8u>{image.row(0, 1)[1], image.row(0, 1)[0], image.row(0, 1)[3], image.row(0, 1)[2]}), group);
    ASSERT_EQ(kelOk, keliCbYCr422ToYCbCr422_8u_C2R(swapped.ptr(), swapped.step(), back.ptr(), back.step(), {width, height}));
    EXPECT_EQ(image.rows(), back.rows());
    EXPECT_TRUE(swapped.intact() && back.intact());
}

// Rows with no padding between them, some of exactly W pixels under an odd
// width: byte b of a row comes from byte b ^ 1, and nothing past 2W bytes of
// a row is read (the source ends at an inaccessible page) or written.
TEST(Nv12RepackCases, PixelOrderSwapOnRowsWithoutPadding)
{
    using Swap = KelResult (*)(const Kel8u*, int, Kel8u*, int, KelImageSize);
    for (Swap swap : {keliYCbCr422ToCbYCr422_8u_C2R, keliCbYCr422ToYCbCr422_8u_C2R})
        for (int width : {2, 3, 8, 11, 33, 64, 65})
            for (int height : {1, 2, 5})
                for (bool exactRows : {false, true}) {
                    const int W = width & ~1, rowBytes = exactRows ? 2 * W : 2 * width;
                    GuardedImage src(rowBytes, height, Placement::Fenced, 0), dst(rowBytes, height, Placement::Guarded, 0);
                    src.fillRandom(static_cast<std::uint32_t>(width + height));
                    dst.fill(0xD2);
                    std::vector<Kel8u> expected = dst.rows();
                    const std::vector<Kel8u> in = src.rows();
                    for (int y = 0; y < height; ++y)
                        for (int b = 0; b < 2 * W; ++b) expected[y * rowBytes + b] = in[y * rowBytes + (b ^ 1)];
                    EXPECT_EQ(kelOk, swap(src.data(), src.step(), dst.data(), dst.step(), {width, height}));
                    EXPECT_EQ(expected, dst.rows()) << width << "x" << height << (exactRows ? " exact rows" : "");
                    EXPECT_TRUE(dst.fenceIntact());
                }
}

// NV12 to planes and back through YV12, on planes with no padding between
// rows: only W x H luma and the W/2 x H/2 chroma samples move, the odd last
// column and row stay, and the round trip exchanges Cb and Cr.
TEST(Nv12RepackCases, PlaneToPlaneOnRowsWithoutPadding)
{
    for (int width : {2, 3, 8, 13, 64, 65})
        for (int height : {2, 3, 6}) {
            const int W = width & ~1, H = height & ~1, chromaWidth = (width + 1) / 2, chromaRows = (height + 1) / 2;
            GuardedImage luma(width, height, Placement::Fenced, 0), pairs(2 * chromaWidth, chromaRows, Placement::Fenced, 0);
            luma.fillRandom(static_cast<std::uint32_t>(width));
            pairs.fillRandom(static_cast<std::uint32_t>(height));
            GuardedImage y(width, height, Placement::Guarded, 0), cb(chromaWidth, chromaRows, Placement::Guarded, 0),
                cr(chromaWidth, chromaRows, Placement::Guarded, 0);
            GuardedImage backY(width, height, Placement::Guarded, 0), back(2 * chromaWidth, chromaRows, Placement::Guarded, 0);
            for (GuardedImage* g : {&y, &cb, &cr, &backY, &back}) g->fill(0x1F);
            Kel8u* const planes[3] = {y.data(), cb.data(), cr.data()};
            const int steps[3] = {y.step(), cb.step(), cr.step()};
            ASSERT_EQ(kelOk, keliYCbCr420ToYCrCb420_8u_P2P3R(luma.data(), luma.step(), pairs.data(), pairs.step(), planes,
                                                             steps, {width, height}));
            const Kel8u* const planesIn[3] = {y.data(), cb.data(), cr.data()};
            ASSERT_EQ(kelOk, keliYCrCb420ToYCbCr420_8u_P3P2R(planesIn, steps, backY.data(), backY.step(), back.data(),
                                                             back.step(), {width, height}));
            const std::string size = std::to_string(width) + "x" + std::to_string(height);
            for (int r = 0; r < height; ++r)
                for (int x = 0; x < width; ++x) {
                    const int want = r < H && x < W ? luma.row(r)[x] : 0x1F;
                    EXPECT_EQ(want, y.row(r)[x]) << size << " luma " << r << ", " << x;
                    EXPECT_EQ(want, backY.row(r)[x]) << size << " luma back " << r << ", " << x;
                }
            for (int j = 0; j < chromaRows; ++j)
                for (int i = 0; i < chromaWidth; ++i) {
                    const bool moved = j < H / 2 && i < W / 2;
                    EXPECT_EQ(moved ? pairs.row(j)[2 * i] : 0x1F, cb.row(j)[i]) << size << " plane 1 " << j << ", " << i;
                    EXPECT_EQ(moved ? pairs.row(j)[2 * i + 1] : 0x1F, cr.row(j)[i]) << size << " plane 2 " << j << ", " << i;
                    EXPECT_EQ(moved ? pairs.row(j)[2 * i + 1] : 0x1F, back.row(j)[2 * i]) << size << " back " << j << ", " << i;
                    EXPECT_EQ(moved ? pairs.row(j)[2 * i] : 0x1F, back.row(j)[2 * i + 1]) << size << " back " << j << ", " << i;
                }
            for (GuardedImage* g : {&y, &cb, &cr, &backY, &back}) EXPECT_TRUE(g->fenceIntact()) << size;
        }
}

TEST(Nv12RepackCases, YUY2ToNV12AtHeight3WritesTwoLumaRowsAndOneChromaRow)
{
    YccImage src(kYUY2, S::S422, 6, 3), dst(kNV12, S::S420, 6, 3);
    src.fill(9);
    dst.fillWith(0xEE);
    ASSERT_EQ(kelOk, keliYCbCr422ToYCbCr420_8u_C2P2R(src.ptr(), src.step(), dst.ptr(), dst.step(), dst.pointers[1],
                                                     dst.steps[1], {6, 3}));
    for (int x = 0; x < 6; ++x) {
        EXPECT_EQ(src.row(0, 0)[2 * x], dst.row(0, 0)[x]);
        EXPECT_EQ(src.row(0, 1)[2 * x], dst.row(0, 1)[x]);
        EXPECT_EQ(0xEE, dst.row(0, 2)[x]) << "luma row 2";
        EXPECT_EQ(src.row(0, 0)[2 * x + 1], dst.row(1, 0)[x]);  // Cb, Cr of row 0, in pair order
        EXPECT_EQ(0xEE, dst.row(1, 1)[x]) << "chroma row 1";
    }
}

TEST(Nv12RepackCases, NV12ToPlanesAt2x2SendsThePairToPlaneOneThenTwo)
{
    YccImage src(kNV12, S::S420, 2, 2), dst(kPlanesYCbCr, S::S420, 2, 2);
    const Kel8u luma[2][2] = {{1, 2}, {3, 4}};
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 2; ++x) src.row(0, y)[x] = luma[y][x];
    src.row(1, 0)[0] = 50;
    src.row(1, 0)[1] = 60;
    dst.fillWith(0);
    ASSERT_EQ(kelOk, keliYCbCr420ToYCrCb420_8u_P2P3R(src.ptr(), src.step(), src.pointers[1], src.steps[1], dst.out(),
                                                     dst.steps.data(), {2, 2}));
    EXPECT_EQ((std::vector<Kel8u>{1, 2, 3, 4, 50, 60}), dst.rows());
    EXPECT_TRUE(dst.intact());
}

// The planes-out member tests the plane array, then a size below one pixel,
// then the planes inside, then the size its scheme needs.
TEST(Nv12RepackCases, NV12ToPlanesTestsASizeBelowOnePixelBeforeThePlanes)
{
    YccImage src(kNV12, S::S420, 8, 4), dst(kPlanesYCbCr, S::S420, 8, 4);
    dst.fillWith(0x3C);
    const auto before = dst.rows();
    auto call = [&](KelImageSize z) { return fromP2ToP3<keliYCbCr420ToYCrCb420_8u_P2P3R>(src, dst, z); };
    for (int p : {0, 1}) {
        Kel8u* const saved = std::exchange(src.pointers[p], nullptr);
        EXPECT_EQ(kelErrNullPointer, call({0, 0})) << "source buffer " << p;
        EXPECT_EQ(kelErrNullPointer, call({8, 4})) << "source buffer " << p;
        src.pointers[p] = saved;
    }
    dst.absent = true;
    EXPECT_EQ(kelErrNullPointer, call({0, 0})) << "plane array";
    EXPECT_EQ(kelErrNullPointer, call({INT_MIN, 4})) << "plane array";
    dst.absent = false;
    for (int p = 0; p < 3; ++p) {
        Kel8u* const saved = std::exchange(dst.pointers[p], nullptr);
        for (KelImageSize z : {KelImageSize{0, 4}, KelImageSize{8, 0}, KelImageSize{INT_MIN, 4}, KelImageSize{4, -1}})
            EXPECT_EQ(kelErrSize, call(z)) << "plane " << p << " at " << z.width << "x" << z.height;
        for (KelImageSize z : {KelImageSize{1, 4}, KelImageSize{8, 1}, KelImageSize{1, 1}, KelImageSize{8, 4}})
            EXPECT_EQ(kelErrNullPointer, call(z)) << "plane " << p << " at " << z.width << "x" << z.height;
        dst.pointers[p] = saved;
    }
    for (KelImageSize z : {KelImageSize{1, 4}, KelImageSize{8, 1}, KelImageSize{1, 1}})
        EXPECT_EQ(kelErrSize, call(z)) << z.width << "x" << z.height;
    EXPECT_EQ(before, dst.rows());
    EXPECT_TRUE(dst.intact());
    EXPECT_EQ(kelOk, call({2, 2}));
}

// Planes Y, Cb, Cr out, then read back as YV12 (Cr at index 1): Cb and Cr
// change places, and luma goes through unchanged.
TEST(Nv12RepackCases, NV12ToPlanesThenYV12ToNV12ExchangesCbAndCr)
{
    const int width = 10, height = 6;
    YccImage nv12(kNV12, S::S420, width, height), planes(kPlanesYCbCr, S::S420, width, height),
        back(kNV12, S::S420, width, height);
    nv12.fill(44);
    ASSERT_EQ(kelOk, keliYCbCr420ToYCrCb420_8u_P2P3R(nv12.ptr(), nv12.step(), nv12.pointers[1], nv12.steps[1],
                                                     planes.out(), planes.steps.data(), {width, height}));
    ASSERT_EQ(kelOk, keliYCrCb420ToYCbCr420_8u_P3P2R(planes.in(), planes.steps.data(), back.ptr(), back.step(),
                                                     back.pointers[1], back.steps[1], {width, height}));
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) EXPECT_EQ(nv12.luma(x, y), back.luma(x, y));
    for (int j = 0; j < height / 2; ++j)
        for (int k = 0; k < width / 2; ++k) {
            EXPECT_EQ(nv12.chroma(0, j, k), back.chroma(1, j, k)) << j << ", " << k;
            EXPECT_EQ(nv12.chroma(1, j, k), back.chroma(0, j, k)) << j << ", " << k;
        }
}

} // namespace

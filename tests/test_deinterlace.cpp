// Filtered 4:2:0 to 4:2:2 and deinterlacing: the four-tap chroma interpolators
// and the three-tap deinterlacers against a model of every row they write, per
// layout, with the worked values, slices of a frame and the argument tests.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "kelcc.h"
#include "support/layouts.h"

using namespace kt;

namespace {

// ---- vertical chroma interpolation ---------------------------------------------------------

// Planes at 4:2:0 (source) or 4:2:2 (destination); chroma is component c
// (0 Cb, 1 Cr), sample k of chroma row j.
struct YccImage : Image {
    YccImage(Ycc form, int rowsPerChroma, int width, int height, Placement placement = Placement::Guarded)
        : Image(ycc(form, width, height, 2, rowsPerChroma, true, placement)), rowsPerChroma(rowsPerChroma) {}
    Kel8u& luma(int x, int y) { return at(x, y, 0); }
    Kel8u& chroma(int c, int j, int k) { return at(2 * k, j * rowsPerChroma, 1 + c); }
    int rowsPerChroma;
};

using Call = KelResult (*)(YccImage& src, YccImage& dst, KelImageSize size);

template <auto F> KelResult fromP3(YccImage& s, YccImage& d, KelImageSize z)
{
    return F(s.in(), s.steps.data(), d.out(), d.steps.data(), z);
}
template <auto F> KelResult fromP2(YccImage& s, YccImage& d, KelImageSize z)
{
    return F(s.ptr(), s.step(), s.pointers[1], s.steps[1], d.out(), d.steps.data(), z);
}

struct Interpolator {
    const char* name;
    Ycc src;  // the destination is always planes Y, Cb, Cr
    Call call;
};

const Interpolator kInterpolators[] = {
    {"keliYCbCr420ToYCbCr422_Filter_8u_P3R", Ycc::Planes, fromP3<keliYCbCr420ToYCbCr422_Filter_8u_P3R>},
    {"keliYCrCb420ToYCbCr422_Filter_8u_P3R", Ycc::PlanesCrFirst, fromP3<keliYCrCb420ToYCbCr422_Filter_8u_P3R>},
    {"keliYCbCr420ToYCbCr422_Filter_8u_P2P3R", Ycc::SemiPlanar, fromP2<keliYCbCr420ToYCbCr422_Filter_8u_P2P3R>},
};

// Odd row 2j+1 of a column S of n chroma samples: taps -1, 9, 9, -1 over
// rows j-1 .. j+2, 8 to round, an arithmetic shift by 4, clamped to a byte.
// A row missing at either edge takes the nearest row there is.
int fourTap(const std::vector<int>& S, int j)
{
    const int n = static_cast<int>(S.size());
    const int above = j == 0 ? S[0] : S[j - 1];
    const int below = j + 1 == n ? S[n - 1] : S[j + 1];
    const int further = j + 2 >= n ? S[n - 1] : S[j + 2];
    return std::clamp((9 * (S[j] + below) - above - further + 8) >> 4, 0, 255);
}

void interpolated(YccImage& src, YccImage& expected, int W, int H)
{
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) expected.luma(x, y) = src.luma(x, y);
    const int n = H / 2;
    for (int c = 0; c < 2; ++c)
        for (int k = 0; k < W / 2; ++k) {
            std::vector<int> column(n);
            for (int j = 0; j < n; ++j) column[j] = src.chroma(c, j, k);
            for (int j = 0; j < n; ++j) {
                expected.chroma(c, 2 * j, k) = Kel8u(column[j]);
                expected.chroma(c, 2 * j + 1, k) = Kel8u(fourTap(column, j));
            }
        }
}

class DeinterlaceInterpolator : public ::testing::TestWithParam<Interpolator> {
protected:
    // tight: the source holds exactly W x H and ends at an inaccessible page.
    void expectFilter(int width, int height, bool tight)
    {
        const Interpolator& m = GetParam();
        const int W = width & ~1, H = height & ~7;
        YccImage src(m.src, 2, tight ? W : width, tight ? H : height, tight ? Placement::Fenced : Placement::Guarded);
        YccImage dst(Ycc::Planes, 1, width, height), expected(Ycc::Planes, 1, width, height);
        src.fill(static_cast<std::uint32_t>(7 * width + height));
        dst.fillWith(0x6B);
        expected.fillWith(0x6B);
        interpolated(src, expected, W, H);
        expectWrites(kelOk, m.call, src, dst, expected, {width, height});
    }
    KelResult run(YccImage& src, YccImage& dst, KelImageSize z) { return GetParam().call(src, dst, z); }
};

TEST_P(DeinterlaceInterpolator, FollowsTheFourTapFilterOverRowsInEights)
{
    for (int width : {2, 3, 5, 13, 40, 131})
        for (int height : {8, 9, 15, 16, 23, 24})
            for (bool tight : {false, true}) expectFilter(width, height, tight);
}

TEST_P(DeinterlaceInterpolator, Height15BehavesAs8AndLeavesRows8To14)
{
    YccImage src(GetParam().src, 2, 6, 15), at15(Ycc::Planes, 1, 6, 15), at8(Ycc::Planes, 1, 6, 15);
    src.fill(15);
    at15.fillWith(0xC3);
    at8.fillWith(0xC3);
    ASSERT_EQ(kelOk, run(src, at15, {6, 15}));
    ASSERT_EQ(kelOk, run(src, at8, {6, 8}));
    EXPECT_EQ(at8.rows(), at15.rows());
    for (int y = 8; y < 15; ++y)
        for (int p = 0; p < 3; ++p) EXPECT_EQ(0xC3, at15.row(p, y)[0]) << "plane " << p << " row " << y;
}

TEST_P(DeinterlaceInterpolator, ConstantChromaStays)
{
    for (int v : {0, 1, 77, 254, 255}) {
        YccImage src(GetParam().src, 2, 4, 16), dst(Ycc::Planes, 1, 4, 16);
        src.fillWith(Kel8u(v));
        ASSERT_EQ(kelOk, run(src, dst, {4, 16}));
        for (int j = 0; j < 16; ++j)
            for (int k = 0; k < 2; ++k)
                for (int c = 0; c < 2; ++c) EXPECT_EQ(v, dst.chroma(c, j, k)) << v << " at row " << j;
    }
}

// One chroma column per case (n = 4 rows, destination rows 0..7): the odd
// rows worked by hand, at j = 0, 1, n-2 and n-1.
TEST_P(DeinterlaceInterpolator, WorkedColumnsAtTheEdgesAndAStep)
{
    struct Column {
        std::array<int, 4> even;
        std::array<int, 4> odd;
    };
    const Column columns[] = {
        {{10, 50, 200, 30}, {21, 138, 124, 19}},  // 338>>4, 2218>>4, 1998>>4, (540-230+8)>>4
        {{0, 0, 255, 255}, {0, 128, 255, 255}},  // (9*(0+255) - 0 - 255 + 8) >> 4 = 128
        {{0, 255, 255, 255}, {128, 255, 255, 255}},  // row 3: 271 clamped to 255
        {{255, 255, 0, 0}, {255, 128, 0, 0}},  // -247 >> 4 clamped to 0
    };
    for (const Column& col : columns) {
        YccImage src(GetParam().src, 2, 2, 8), dst(Ycc::Planes, 1, 2, 8);
        for (int j = 0; j < 4; ++j) {
            src.chroma(0, j, 0) = Kel8u(col.even[j]);
            src.chroma(1, j, 0) = Kel8u(255 - col.even[j]);
        }
        ASSERT_EQ(kelOk, run(src, dst, {2, 8}));
        for (int j = 0; j < 4; ++j) {
            EXPECT_EQ(col.even[j], dst.chroma(0, 2 * j, 0)) << "Cb row " << 2 * j;
            EXPECT_EQ(col.odd[j], dst.chroma(0, 2 * j + 1, 0)) << "Cb row " << 2 * j + 1 << " of " << col.even[0];
            EXPECT_EQ(255 - col.even[j], dst.chroma(1, 2 * j, 0)) << "Cr row " << 2 * j;
        }
    }
}

TEST_P(DeinterlaceInterpolator, NullPointersFirstThenWidth2AndHeight8)
{
    YccImage src(GetParam().src, 2, 8, 8), dst(Ycc::Planes, 1, 8, 8);
    expectArgumentOrder(GetParam().call, src, dst, {8, 8}, {2, 8}, true);
}

INSTANTIATE_TEST_SUITE_P(Deinterlace, DeinterlaceInterpolator, ::testing::ValuesIn(kInterpolators),
                         [](const auto& info) { return std::string(info.param.name).substr(4); });

// Source planes Y, Cr, Cb: destination plane 1 still gets Cb, from source plane 2.
TEST(DeinterlaceInterpolatorCases, CrFirstSourceExchangesItsPlanes)
{
    YccImage src(Ycc::Planes, 2, 4, 8), straight(Ycc::Planes, 1, 4, 8), exchanged(Ycc::Planes, 1, 4, 8);
    src.fillWith(0);
    for (int j = 0; j < 4; ++j) {
        src.row(1, j)[0] = src.row(1, j)[1] = Kel8u(30 + j);
        src.row(2, j)[0] = src.row(2, j)[1] = Kel8u(200 - 9 * j);
    }
    ASSERT_EQ(kelOk, keliYCbCr420ToYCbCr422_Filter_8u_P3R(src.in(), src.steps.data(), straight.out(),
                                                          straight.steps.data(), {4, 8}));
    ASSERT_EQ(kelOk, keliYCrCb420ToYCbCr422_Filter_8u_P3R(src.in(), src.steps.data(), exchanged.out(),
                                                          exchanged.steps.data(), {4, 8}));
    for (int y = 0; y < 8; ++y)
        for (int k = 0; k < 2; ++k) {
            EXPECT_EQ(straight.row(1, y)[k], exchanged.row(2, y)[k]) << "row " << y;
            EXPECT_EQ(straight.row(2, y)[k], exchanged.row(1, y)[k]) << "row " << y;
        }
    EXPECT_EQ(200, exchanged.row(1, 0)[0]);
    EXPECT_EQ(30, exchanged.row(2, 0)[0]);
}

// ---- deinterlacing: the rows each layout writes ----------------------------------------------

constexpr int kWholeFrame = kelSliceTop | kelSliceMiddle | kelSliceBottom;

// T: top row of a frame, weights 3, 1; L: rows r-1, r, r+1 with 1, 2, 1;
// B: bottom row of a frame, weights 1, 3; M: mean of chroma rows k, k+1;
// C: chroma row k as it is.
enum class Tap { T, L, B, M, C };
struct Filter {
    Tap tap;
    int row;    // the centre row of L, the first chroma row of M and C
    int round;  // added before the shift: 4 or 0 for luma, 2 or 0 for chroma
};
struct RowRule {
    int row;  // destination row, from the call's row 0
    Filter filter;
};
struct Rules {
    std::vector<RowRule> luma, chroma;
};

// Pixel order: one chroma value for every destination row.
Rules pixelOrderRules(int layout, int H)
{
    Rules rules;
    auto row = [&](int r, Filter y, Filter c) {
        rules.luma.push_back({r, y});
        rules.chroma.push_back({r, c});
    };
    const bool whole = (layout & kWholeFrame) == kWholeFrame;
    if (whole && H == 2) {
        row(0, {Tap::T, 0, 4}, {Tap::C, 0, 0});
        row(1, {Tap::B, 0, 4}, {Tap::C, 0, 0});
    } else if (whole) {
        row(0, {Tap::T, 0, 4}, {Tap::M, 0, 2});
        row(1, {Tap::L, 1, 4}, {Tap::M, 0, 2});
        for (int r = 2; r <= H - 3; ++r) row(r, {Tap::L, r, 4}, {Tap::M, r >> 1, 0});
        row(H - 2, {Tap::L, H - 2, 4}, {Tap::M, H / 2 - 2, 2});
        row(H - 1, {Tap::B, 0, 4}, {Tap::M, H / 2 - 2, 2});
    } else if (layout == kelSliceTop) {
        row(0, {Tap::T, 0, 4}, {Tap::M, 0, 2});
        row(1, {Tap::L, 1, 0}, {Tap::M, 0, 2});
        for (int r = 2; r <= H - 3; ++r) row(r, {Tap::L, r, 4}, {Tap::M, r >> 1, 2});
    } else if (layout == kelSliceMiddle || layout == kelSliceBottom) {
        for (int r = -2; r <= H - 3; ++r) row(r, {Tap::L, r, 4}, {Tap::M, r >> 1, 2});  // rows -2, -1: chroma row -1
        if (layout == kelSliceBottom) {
            row(H - 2, {Tap::L, H - 2, 0}, {Tap::M, H / 2 - 2, 0});
            row(H - 1, {Tap::B, 0, 0}, {Tap::M, H / 2 - 2, 0});
        }
    }
    return rules;
}

// Three planes: luma rows, and chroma rows k of the 4:2:0 planes.
Rules planeRules(int layout, int H)
{
    Rules rules;
    auto luma = [&](int r, Filter f) { rules.luma.push_back({r, f}); };
    auto chroma = [&](int k, Filter f) { rules.chroma.push_back({k, f}); };
    const bool whole = (layout & kWholeFrame) == kWholeFrame;
    if (whole && H == 2) {
        luma(0, {Tap::T, 0, 4});
        luma(1, {Tap::B, 0, 4});
        chroma(0, {Tap::C, 0, 0});
    } else if (whole) {
        luma(0, {Tap::T, 0, 4});
        for (int r = 1; r <= H - 2; ++r) luma(r, {Tap::L, r, 4});
        luma(H - 1, {Tap::B, 0, 4});
        for (int k = 0; k <= H / 2 - 2; ++k) chroma(k, {Tap::M, k, 2});
        chroma(H / 2 - 1, {Tap::M, H / 2 - 2, 2});
    } else if (layout == kelSliceTop) {
        luma(0, {Tap::T, 0, 0});
        for (int r = 1; r <= H - 3; ++r) luma(r, {Tap::L, r, 0});
        for (int k = 0; k <= H / 2 - 2; ++k) chroma(k, {Tap::M, k, 0});
    } else if (layout == kelSliceMiddle || layout == kelSliceBottom) {
        const bool bottom = layout == kelSliceBottom;
        for (int r = -2; r <= (bottom ? H - 2 : H - 3); ++r) luma(r, {Tap::L, r, 0});
        for (int k = -1; k <= H / 2 - 2; ++k) chroma(k, {Tap::M, k, 0});
        if (bottom) {
            luma(H - 1, {Tap::B, 0, 0});
            chroma(H / 2 - 1, {Tap::M, H / 2 - 2, 0});
        }
    }
    return rules;
}

// The rows a filter reads: the first and the last.
std::pair<int, int> reach(const Filter& f, int H)
{
    switch (f.tap) {
    case Tap::T: return {0, 1};
    case Tap::L: return {f.row - 1, f.row + 1};
    case Tap::B: return {H - 2, H - 1};
    case Tap::M: return {f.row, f.row + 1};
    case Tap::C: break;
    }
    return {f.row, f.row};
}
std::pair<int, int> reach(const std::vector<RowRule>& rules, int H)
{
    if (rules.empty()) return {0, 0};
    std::pair<int, int> all{INT_MAX, INT_MIN};
    for (const RowRule& r : rules) {
        const auto [first, last] = reach(r.filter, H);
        all = {std::min(all.first, first), std::max(all.second, last)};
    }
    return all;
}

template <typename Sample> Kel8u filtered(const Filter& f, int H, Sample s)
{
    int v = 0;
    switch (f.tap) {
    case Tap::T: v = (3 * s(0) + s(1) + f.round) >> 2; break;
    case Tap::L: v = (s(f.row - 1) + 2 * s(f.row) + s(f.row + 1) + f.round) >> 2; break;
    case Tap::B: v = (s(H - 2) + 3 * s(H - 1) + f.round) >> 2; break;
    case Tap::M: v = (s(f.row) + s(f.row + 1) + f.round) >> 1; break;
    case Tap::C: v = s(f.row); break;
    }
    return Kel8u(std::min(v, 255));
}

// An NV12 source whose rows run from lumaRows.first to lumaRows.second (and
// chroma alike) around row 0 of the frame.
struct Nv12Rows {
    Nv12Rows(int lumaBytes, int chromaBytes, std::pair<int, int> lumaRows, std::pair<int, int> chromaRows,
             Placement placement, std::size_t padding = 13)
        : lumaFirst(lumaRows.first), chromaFirst(chromaRows.first),
          y(lumaBytes, lumaRows.second - lumaRows.first + 1, placement, padding),
          c(chromaBytes, chromaRows.second - chromaRows.first + 1, placement, padding) {}
    const Kel8u* luma(int r) const { return y.row(r - lumaFirst); }
    const Kel8u* chroma(int k) const { return c.row(k - chromaFirst); }
    int lumaFirst, chromaFirst;
    GuardedImage y, c;
};

// A destination, YUY2 or planes Y, Cb, Cr, with three luma rows (two chroma
// rows) above the frame and one below, all guarded.
struct Target {
    Target(bool pixelOrder, int width, int height, std::size_t padding = 13)
    {
        planes.push_back(std::make_unique<GuardedImage>(pixelOrder ? 2 * width : width, height + 4,
                                                        Placement::Guarded, padding));
        if (!pixelOrder)
            for (int p = 1; p < 3; ++p)
                planes.push_back(std::make_unique<GuardedImage>((width + 1) / 2, (height + 1) / 2 + 3,
                                                                Placement::Guarded, padding));
    }
    Kel8u* luma(int r) { return planes[0]->row(r + 3); }
    Kel8u* chroma(int p, int k) { return planes[p]->row(k + 2); }
    void fill(Kel8u v)
    {
        for (auto& p : planes) p->fill(v);
    }
    std::vector<Kel8u> rows() const
    {
        std::vector<Kel8u> all;
        for (const auto& p : planes) {
            const auto r = p->rows();
            all.insert(all.end(), r.begin(), r.end());
        }
        return all;
    }
    bool intact() const
    {
        return std::all_of(planes.begin(), planes.end(), [](const auto& p) { return p->fenceIntact(); });
    }
    std::vector<std::unique_ptr<GuardedImage>> planes;
};

// A call on the slice whose row 0 is frame row `top` (an even row).
using SliceCall = KelResult (*)(const Nv12Rows& s, Target& d, int top, KelImageSize z, int layout);

template <auto F> KelResult toPixelOrder(const Nv12Rows& s, Target& d, int top, KelImageSize z, int layout)
{
    return F(s.luma(top), s.y.step(), s.chroma(top / 2), s.c.step(), d.luma(top), d.planes[0]->step(), z, layout);
}
template <auto F> KelResult toPlanes(const Nv12Rows& s, Target& d, int top, KelImageSize z, int layout)
{
    Kel8u* const planes[3] = {d.luma(top), d.chroma(1, top / 2), d.chroma(2, top / 2)};
    const int steps[3] = {d.planes[0]->step(), d.planes[1]->step(), d.planes[2]->step()};
    return F(s.luma(top), s.y.step(), s.chroma(top / 2), s.c.step(), planes, steps, z, layout);
}

struct Deinterlacer {
    const char* name;
    bool pixelOrder;
    SliceCall call;
};

const Deinterlacer kDeinterlacers[] = {
    {"keliYCbCr420ToYCbCr422_Filter_8u_P2C2R", true, toPixelOrder<keliYCbCr420ToYCbCr422_Filter_8u_P2C2R>},
    {"keliYCbCr420ToYCrCb420_Filter_8u_P2P3R", false, toPlanes<keliYCbCr420ToYCrCb420_Filter_8u_P2P3R>},
};

Rules rulesOf(const Deinterlacer& m, int layout, int H) { return m.pixelOrder ? pixelOrderRules(layout, H) : planeRules(layout, H); }

// Writes into `out` what the slice at frame row `top` writes: pixel order
// takes luma to even bytes and chroma byte b to byte 2b+1; planes take the
// first byte of each chroma pair to plane 1 and the second to plane 2.
void deinterlaced(const Deinterlacer& m, int layout, int W, int H, const Nv12Rows& src, Target& out, int top)
{
    const Rules rules = rulesOf(m, layout, H);
    for (const RowRule& r : rules.luma)
        for (int x = 0; x < W; ++x) {
            const Kel8u v = filtered(r.filter, H, [&](int row) { return int(src.luma(top + row)[x]); });
            out.luma(top + r.row)[m.pixelOrder ? 2 * x : x] = v;
        }
    for (const RowRule& r : rules.chroma)
        for (int b = 0; b < W; ++b) {
            const Kel8u v = filtered(r.filter, H, [&](int k) { return int(src.chroma(top / 2 + k)[b]); });
            if (m.pixelOrder)
                out.luma(top + r.row)[2 * b + 1] = v;
            else
                out.chroma(1 + (b & 1), top / 2 + r.row)[b >> 1] = v;
        }
}

class Deinterlace : public ::testing::TestWithParam<Deinterlacer> {
protected:
    // One call at width x height in `layout`, against the model: the source
    // holds just the rows the tables read (tight: and just W columns, ending
    // at an inaccessible page; otherwise one spare row each side); rows are
    // `padding` bytes apart.
    void expectLayout(int layout, int width, int height, bool tight, std::size_t padding = 13)
    {
        const Deinterlacer& m = GetParam();
        const int W = width & ~1, H = height & ~1;
        const Rules rules = rulesOf(m, layout, H);
        auto lumaRows = reach(rules.luma, H), chromaRows = reach(rules.chroma, H);
        if (!tight) lumaRows = {lumaRows.first - 1, lumaRows.second + 1}, chromaRows = {chromaRows.first - 1, chromaRows.second + 1};
        Nv12Rows src(tight ? W : width, tight ? W : (width + 1) & ~1, lumaRows, chromaRows,
                     tight ? Placement::Fenced : Placement::Guarded, padding);
        src.y.fillRandom(static_cast<std::uint32_t>(layout * 100 + width * 10 + height));
        src.c.fillRandom(static_cast<std::uint32_t>(layout * 100 + width * 10 + height + 1));
        const auto lumaBefore = src.y.rows(), chromaBefore = src.c.rows();
        Target dst(m.pixelOrder, width, height, padding), expected(m.pixelOrder, width, height, padding);
        dst.fill(0x99);
        expected.fill(0x99);
        deinterlaced(m, layout, W, H, src, expected, 0);
        const std::string what = "layout " + std::to_string(layout) + " at " + std::to_string(width) + "x" +
                                 std::to_string(height) + (tight ? " tight" : "") + (padding ? "" : " unpadded");
        EXPECT_EQ(kelOk, m.call(src, dst, 0, {width, height}, layout)) << what;
        EXPECT_EQ(expected.rows(), dst.rows()) << what;
        EXPECT_TRUE(dst.intact()) << what;
        EXPECT_EQ(lumaBefore, src.y.rows()) << what;
        EXPECT_EQ(chromaBefore, src.c.rows()) << what;
    }
    KelResult onFlat(Kel8u luma, Kel8u chroma, int layout, int width, int height, Target& dst)
    {
        Nv12Rows src(width, width, {-3, height}, {-1, height / 2}, Placement::Guarded);
        src.y.fill(luma);
        src.c.fill(chroma);
        dst.fill(0);
        return GetParam().call(src, dst, 0, {width, height}, layout);
    }
};

TEST_P(Deinterlace, EachLayoutWritesTheRowsOfItsTable)
{
    const std::pair<int, int> sizes[] = {{2, 2}, {3, 3}, {2, 4}, {3, 5}, {4, 6}, {5, 8}, {13, 9}, {6, 12}, {16, 10}, {67, 6}, {130, 4}, {131, 11}};
    for (int layout : std::initializer_list<int>{kelSliceTop, kelSliceMiddle, kelSliceBottom, 21, 53, 23, -1})
        for (auto [width, height] : sizes)
            for (bool tight : {false, true}) {
                expectLayout(layout, width, height, tight);
                expectLayout(layout, width, height, tight, 0);
            }
}

TEST_P(Deinterlace, WholeFrameOf3x5WorksOn2x4Only)
{
    expectLayout(kWholeFrame, 3, 5, true);  // the source holds 2x4 and no more
    Target dst(GetParam().pixelOrder, 3, 5);
    Nv12Rows src(2, 2, {0, 3}, {0, 1}, Placement::Fenced);
    src.y.fill(40);
    src.c.fill(80);
    dst.fill(7);
    ASSERT_EQ(kelOk, GetParam().call(src, dst, 0, {3, 5}, kWholeFrame));
    const int lumaPitch = GetParam().pixelOrder ? 2 : 1;
    for (int b = 0; b < 3 * lumaPitch; ++b) EXPECT_EQ(7, dst.luma(4)[b]) << "row 4 byte " << b;
    for (int y = 0; y < 4; ++y) EXPECT_EQ(7, dst.luma(y)[2 * lumaPitch]) << "row " << y << " beyond W";
}

TEST_P(Deinterlace, InvalidLayoutsWriteNothing)
{
    Nv12Rows src(8, 8, {-3, 8}, {-1, 4}, Placement::Guarded);
    src.y.fillRandom(1);
    src.c.fillRandom(2);
    for (int layout : {0, 2, 3, 5, 8, 17, 20, 32, 64, 0x7FFFFFEA, -2}) {
        Target dst(GetParam().pixelOrder, 8, 8);
        dst.fill(0x42);
        const auto before = dst.rows();
        EXPECT_EQ(kelOk, GetParam().call(src, dst, 0, {8, 8}, layout)) << "layout " << layout;
        EXPECT_EQ(before, dst.rows()) << "layout " << layout;
        EXPECT_TRUE(dst.intact());
    }
}

// Whole frame of two rows: no chroma filter (the only chroma row is copied,
// and the row below it is never read), luma weights 3, 1 then 1, 3.
TEST_P(Deinterlace, WholeFrameOfTwoRowsCopiesChroma)
{
    Nv12Rows src(4, 4, {0, 1}, {0, 0}, Placement::Fenced);
    for (int x = 0; x < 4; ++x) {
        src.y.row(0)[x] = 10;
        src.y.row(1)[x] = 50;
        src.c.row(0)[x] = Kel8u(60 + 11 * x);
    }
    Target dst(GetParam().pixelOrder, 4, 2);
    dst.fill(0);
    ASSERT_EQ(kelOk, GetParam().call(src, dst, 0, {4, 2}, kWholeFrame));
    const int lumaPitch = GetParam().pixelOrder ? 2 : 1;
    EXPECT_EQ(21, dst.luma(0)[0]);  // (3*10 + 50 + 4) >> 2
    EXPECT_EQ(41, dst.luma(1)[lumaPitch]);  // (10 + 3*50 + 4) >> 2
    for (int b = 0; b < 4; ++b) {
        if (GetParam().pixelOrder) {
            EXPECT_EQ(60 + 11 * b, dst.luma(0)[2 * b + 1]);
            EXPECT_EQ(60 + 11 * b, dst.luma(1)[2 * b + 1]);
        } else {
            EXPECT_EQ(60 + 11 * b, dst.chroma(1 + b % 2, 0)[b / 2]);
        }
    }
}

TEST_P(Deinterlace, FlatImagesComeOutAsTheRoundingTermsSay)
{
    const bool pixelOrder = GetParam().pixelOrder;
    const int pitch = pixelOrder ? 2 : 1;
    for (int height : {2, 4, 8}) {
        Target dst(pixelOrder, 6, height);
        ASSERT_EQ(kelOk, onFlat(100, 100, kWholeFrame, 6, height, dst));
        for (int y = 0; y < height; ++y) EXPECT_EQ(101, dst.luma(y)[4 * pitch]) << "whole frame, row " << y;
        ASSERT_EQ(kelOk, onFlat(255, 255, kWholeFrame, 6, height, dst));
        for (int y = 0; y < height; ++y) EXPECT_EQ(255, dst.luma(y)[pitch]) << "255, row " << y;
        if (pixelOrder)
            for (int y = 0; y < height; ++y) EXPECT_EQ(255, dst.luma(y)[3]) << "255 chroma, row " << y;
        else
            for (int k = 0; k < height / 2; ++k) EXPECT_EQ(255, dst.chroma(2, k)[2]) << "255 chroma, row " << k;
    }
    Target dst(pixelOrder, 6, 8);
    ASSERT_EQ(kelOk, onFlat(100, 100, kelSliceTop, 6, 8, dst));
    if (pixelOrder) EXPECT_EQ(100, dst.luma(1)[0]) << "top slice, row 1";
    else EXPECT_EQ(100, dst.luma(3)[0]) << "top slice, row 3";
    ASSERT_EQ(kelOk, onFlat(100, 100, kelSliceMiddle, 6, 8, dst));
    if (!pixelOrder) {
        for (int y = -2; y <= 5; ++y) EXPECT_EQ(100, dst.luma(y)[5]) << "middle slice, row " << y;
        for (int k = -1; k <= 2; ++k) EXPECT_EQ(100, dst.chroma(1, k)[1]) << "middle slice, chroma row " << k;
    }
}

// A frame of `width` cut into slices of the heights in `cut`, top first:
// given in every order the calls give the same bytes, the model's; and each
// destination byte of the frame is written by exactly one call (a byte counts
// as written when it differs from the fill after a call on a destination
// filled with 0x00, or on one filled with 0xFF).
void expectSlices(const Deinterlacer& m, int width, const std::vector<int>& cut)
{
    const int W = width & ~1;
    std::vector<std::pair<int, int>> slices;  // frame row, slice height
    int height = 0;
    for (int h : cut) slices.emplace_back(std::exchange(height, height + h), h);
    auto layoutOf = [&](std::size_t i) {
        return i == 0 ? kelSliceTop : i + 1 == slices.size() ? kelSliceBottom : kelSliceMiddle;
    };
    Nv12Rows src(W, W, {0, height - 1}, {0, height / 2 - 1}, Placement::Fenced);
    src.y.fillRandom(static_cast<std::uint32_t>(height));
    src.c.fillRandom(static_cast<std::uint32_t>(height + 1));

    Target expected(m.pixelOrder, width, height), frame(m.pixelOrder, width, height), mask(m.pixelOrder, width, height);
    expected.fill(0x5C);
    mask.fill(0);
    for (int y = 0; y < height; ++y) std::fill_n(mask.luma(y), m.pixelOrder ? 2 * W : W, 1);
    for (int p = 1; p < (m.pixelOrder ? 1 : 3); ++p)
        for (int k = 0; k < height / 2; ++k) std::fill_n(mask.chroma(p, k), W / 2, 1);
    std::vector<int> writes(expected.rows().size(), 0);
    for (std::size_t i = 0; i < slices.size(); ++i) {
        const auto [top, h] = slices[i];
        deinterlaced(m, layoutOf(i), W, h, src, expected, top);
        for (Kel8u fill : {Kel8u(0x00), Kel8u(0xFF)}) {
            frame.fill(fill);
            ASSERT_EQ(kelOk, m.call(src, frame, top, {width, h}, layoutOf(i)));
            const auto after = frame.rows();
            for (std::size_t b = 0; b < after.size(); ++b)
                if (after[b] != fill) writes[b] |= 1 << i;
        }
    }
    const auto inFrame = mask.rows();
    for (std::size_t b = 0; b < writes.size(); ++b) {
        const int calls = __builtin_popcount(static_cast<unsigned>(writes[b]));
        EXPECT_EQ(int(inFrame[b]), calls) << "byte " << b << " of the cut of " << cut.size() << ", written by mask "
                                          << writes[b];
    }

    std::vector<std::size_t> order(slices.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
    do {
        frame.fill(0x5C);
        for (std::size_t i : order) {
            const auto [top, h] = slices[i];
            ASSERT_EQ(kelOk, m.call(src, frame, top, {width, h}, layoutOf(i)));
        }
        EXPECT_EQ(expected.rows(), frame.rows()) << "cut of " << cut.size() << ", first slice " << order[0];
        EXPECT_TRUE(frame.intact());
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST_P(Deinterlace, SlicesInAnyOrderWriteEveryRowOnce)
{
    for (const int width : {7, 131})
        for (const std::vector<int>& cut : {std::vector<int>{4, 6, 2, 4}, std::vector<int>{6, 2}, std::vector<int>{8, 8},
                                            std::vector<int>{4, 2, 2, 2, 6}})
            expectSlices(GetParam(), width, cut);
}

INSTANTIATE_TEST_SUITE_P(Deinterlace, Deinterlace, ::testing::ValuesIn(kDeinterlacers),
                         [](const auto& info) { return std::string(info.param.name).substr(4); });

// ---- argument tests --------------------------------------------------------------------------

KelResult pixelOrderWhole(Image& s, Image& d, KelImageSize z)
{
    return keliYCbCr420ToYCbCr422_Filter_8u_P2C2R(s.ptr(), s.step(), s.pointers[1], s.steps[1], d.ptr(), d.step(), z,
                                                  kWholeFrame);
}

TEST(DeinterlaceArguments, PixelOrderTestsPointersThenTheSize)
{
    Image src = ycc(Ycc::SemiPlanar, 8, 4, 2, 2), dst = ycc(Ycc::PairsYCbCr, 8, 4, 2, 1);
    expectArgumentOrder(pixelOrderWhole, src, dst, {8, 4}, {2, 2}, true);
}

// The planes-out member tests its pointers, a size below one pixel, the
// planes inside the array, then the size of one row pair; whatever the layout.
TEST(DeinterlaceArguments, PlanesTestASizeBelowOnePixelBeforeThePlanes)
{
    Image src = ycc(Ycc::SemiPlanar, 8, 4, 2, 2), dst = ycc(Ycc::Planes, 8, 4, 2, 2);
    dst.fillWith(0x3C);
    const auto before = dst.rows();
    for (int layout : std::initializer_list<int>{kWholeFrame, kelSliceTop, kelSliceBottom}) {
        auto call = [&](KelImageSize z) {
            return keliYCbCr420ToYCrCb420_Filter_8u_P2P3R(src.ptr(), src.step(), src.pointers[1], src.steps[1],
                                                          dst.out(), dst.steps.data(), z, layout);
        };
        for (int p : {0, 1}) {
            Kel8u* const saved = std::exchange(src.pointers[p], nullptr);
            EXPECT_EQ(kelErrNullPointer, call({0, 0})) << "source buffer " << p;
            EXPECT_EQ(kelErrNullPointer, call({8, 4})) << "source buffer " << p;
            src.pointers[p] = saved;
        }
        dst.absent = true;
        EXPECT_EQ(kelErrNullPointer, call({0, 0})) << "plane array";
        dst.absent = false;
        for (int p = 0; p < 3; ++p) {
            Kel8u* const saved = std::exchange(dst.pointers[p], nullptr);
            for (KelImageSize z : {KelImageSize{0, 4}, KelImageSize{8, 0}, KelImageSize{INT_MIN, 4}, KelImageSize{4, -1}})
                EXPECT_EQ(kelErrSize, call(z)) << "layout " << layout << " plane " << p << " at " << z.width << "x" << z.height;
            for (KelImageSize z : {KelImageSize{1, 4}, KelImageSize{8, 1}, KelImageSize{1, 1}, KelImageSize{8, 4}})
                EXPECT_EQ(kelErrNullPointer, call(z)) << "layout " << layout << " plane " << p << " at " << z.width << "x" << z.height;
            dst.pointers[p] = saved;
        }
        for (KelImageSize z : {KelImageSize{1, 4}, KelImageSize{8, 1}, KelImageSize{1, 1}, KelImageSize{INT_MIN, INT_MIN}})
            EXPECT_EQ(kelErrSize, call(z)) << "layout " << layout << " at " << z.width << "x" << z.height;
    }
    EXPECT_EQ(before, dst.rows());
    EXPECT_TRUE(dst.intact());
}

} // namespace

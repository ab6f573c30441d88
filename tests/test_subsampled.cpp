// Sub-sampled studio-range YCbCr: RGB/BGR to 4:2:2, 4:2:0, 4:1:1 and back.
// Every member against its cell formulas at odd and minimum sizes, with what
// stays unwritten, the two argument-test orders, the warnings, and the
// concrete cases: gray pairs, the filter's missing tap, the set T/U white.
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <memory>
#include <random>
#include <vector>

#include "kelcc.h"
#include "support/guarded.h"

using namespace kt;

namespace {

int floorShift(long long v, int s) { return static_cast<int>(v >= 0 ? v >> s : -((-v + (1LL << s) - 1) >> s)); }
int clampByte(int v) { return v < 0 ? 0 : v > 255 ? 255 : v; }

using Buffers = GuardedSet;

// ================= forward: RGB and BGR to sub-sampled YCbCr =================

enum class Source { RGB_C3, RGB_P3, BGR_C3, BGR_AC4 };
enum class Target { C2_YCbCr, C2_YCrCb, C2_CbYCr, P3_422, P3_420, P3_420_CrCb, P3_411 };

struct ForwardMember {
    const char* name;
    Source src;
    Target dst;
    int cbK, crK, yEven, yOdd, singleK;  // pairs; unused by cells, groups and the filter
    bool filtered, gamma;
    int minWidth, minHeight;
    bool planesBeforeSize, stepTest;
    std::function<KelResult(Buffers&, Buffers&, KelImageSize)> call;
};

Buffers makeSource(Source s, int w, int h, Placement placement = Placement::Guarded)
{
    Buffers b;
    if (s == Source::RGB_P3) for (int p = 0; p < 3; ++p) b.add(w, h, placement);
    else b.add(w * (s == Source::BGR_AC4 ? 4 : 3), h, placement);
    return b;
}

Buffers makeTarget(Target t, int w, int h, Placement placement = Placement::Guarded)
{
    Buffers b;
    switch (t) {
    case Target::C2_YCbCr: case Target::C2_YCrCb: case Target::C2_CbYCr: b.add(4 * ((w + 1) / 2), h, placement); break;
    case Target::P3_422: b.add(w, h, placement); b.add(w / 2 + 1, h, placement); b.add(w / 2 + 1, h, placement); break;
    case Target::P3_420: case Target::P3_420_CrCb:
        b.add(w, h, placement); b.add(w / 2 + 1, h / 2 + 1, placement); b.add(w / 2 + 1, h / 2 + 1, placement); break;
    case Target::P3_411: b.add(w, h, placement); b.add(w / 4 + 1, h, placement); b.add(w / 4 + 1, h, placement); break;
    }
    return b;
}

struct Rgb {
    int r, g, b;
};

Rgb pixelOf(Buffers& src, Source s, int x, int y, bool gamma)
{
    Rgb p;
    switch (s) {
    case Source::RGB_C3: p = {src.row(0, y)[3 * x], src.row(0, y)[3 * x + 1], src.row(0, y)[3 * x + 2]}; break;
    case Source::RGB_P3: p = {src.row(0, y)[x], src.row(1, y)[x], src.row(2, y)[x]}; break;
    case Source::BGR_C3: p = {src.row(0, y)[3 * x + 2], src.row(0, y)[3 * x + 1], src.row(0, y)[3 * x]}; break;
    case Source::BGR_AC4: p = {src.row(0, y)[4 * x + 2], src.row(0, y)[4 * x + 1], src.row(0, y)[4 * x]}; break;
    }
    if (gamma) {
        // The forward BT.709 curve through the gamma family's own 8-bit member.
        Kel8u in[3] = {Kel8u(p.r), Kel8u(p.g), Kel8u(p.b)}, out[3];
        keliGammaFwd_8u_C3R(in, 3, out, 3, {1, 1});
        p = {out[0], out[1], out[2]};
    }
    return p;
}

int lumaY(Rgb p, int c) { return (16843 * p.r + 33030 * p.g + 6423 * p.b + c) >> 16; }
long long blueDiff(long long r, long long g, long long b) { return -9699 * r - 19071 * g + 28770 * b; }
long long redDiff(long long r, long long g, long long b) { return 28770 * r - 24117 * g - 4653 * b; }

// Writes into `e` what the member writes, straight from the table of cells.
void forwardExpected(const ForwardMember& m, Buffers& src, Buffers& e, int w, int h)
{
    auto px = [&](int x, int y) { return pixelOf(src, m.src, x, y, m.gamma); };
    const bool pixelOrder = m.dst == Target::C2_YCbCr || m.dst == Target::C2_YCrCb || m.dst == Target::C2_CbYCr;
    if (pixelOrder) {
        // Byte positions of Y0, Cb, Y1, Cr in a pair.
        std::array<int, 4> at = m.dst == Target::C2_YCbCr ? std::array<int, 4>{0, 1, 2, 3}
                              : m.dst == Target::C2_YCrCb ? std::array<int, 4>{0, 3, 2, 1}
                                                          : std::array<int, 4>{1, 0, 3, 2};
        for (int y = 0; y < h; ++y) {
            Kel8u* row = e.row(0, y);
            long long carryB = 0, carryR = 0;
            for (int k = 0; k < w / 2; ++k) {
                const Rgb p0 = px(2 * k, y), p1 = px(2 * k + 1, y);
                row[4 * k + at[0]] = Kel8u(lumaY(p0, m.filtered ? 0x108000 : m.yEven));
                row[4 * k + at[2]] = Kel8u(lumaY(p1, m.filtered ? 0x108000 : m.yOdd));
                if (m.filtered) {
                    const long long be = blueDiff(p0.r, p0.g, p0.b), bo = blueDiff(p1.r, p1.g, p1.b);
                    const long long re = redDiff(p0.r, p0.g, p0.b), ro = redDiff(p1.r, p1.g, p1.b);
                    row[4 * k + at[1]] = Kel8u(floorShift(floorShift(be, 1) + carryB + floorShift(bo, 2) + 0x807FFF, 16));
                    row[4 * k + at[3]] = Kel8u(floorShift(floorShift(re, 1) + carryR + floorShift(ro, 2) + 0x807FFF, 16));
                    carryB = floorShift(bo, 2);
                    carryR = floorShift(ro, 2);
                } else {
                    const long long sr = p0.r + p1.r, sg = p0.g + p1.g, sb = p0.b + p1.b;
                    row[4 * k + at[1]] = Kel8u(floorShift(blueDiff(sr, sg, sb) + m.cbK, 17));
                    row[4 * k + at[3]] = Kel8u(floorShift(redDiff(sr, sg, sb) + m.crK, 17));
                }
            }
            if (w & 1) {
                const Rgb p = px(w - 1, y);
                const int slot = 4 * (w / 2);
                const Kel8u values[4] = {Kel8u(lumaY(p, 0x108000)), Kel8u(floorShift(blueDiff(p.r, p.g, p.b) + m.singleK, 16)),
                                         0, Kel8u(floorShift(redDiff(p.r, p.g, p.b) + m.singleK, 16))};
                for (int q = 0; q < 4; ++q)
                    if (at[q] < 2) row[slot + at[q]] = values[q];  // the first two bytes of the slot
            }
        }
        return;
    }
    if (m.dst == Target::P3_422) {
        for (int y = 0; y < h; ++y) {
            for (int k = 0; k < w / 2; ++k) {
                const Rgb p0 = px(2 * k, y), p1 = px(2 * k + 1, y);
                e.row(0, y)[2 * k] = Kel8u(lumaY(p0, 0x108000));
                e.row(0, y)[2 * k + 1] = Kel8u(lumaY(p1, 0x108000));
                e.row(1, y)[k] = Kel8u(floorShift(blueDiff(p0.r + p1.r, p0.g + p1.g, p0.b + p1.b) + 0x1004000, 17));
                e.row(2, y)[k] = Kel8u(floorShift(redDiff(p0.r + p1.r, p0.g + p1.g, p0.b + p1.b) + 0x1004000, 17));
            }
            if (w & 1) e.row(0, y)[w - 1] = Kel8u(lumaY(px(w - 1, y), 0x108000));
        }
        return;
    }
    const bool is420 = m.dst != Target::P3_411;
    const int cellW = is420 ? 2 : 4, cellH = is420 ? 2 : 1;
    const int cb = m.dst == Target::P3_420_CrCb ? 2 : 1, cr = 3 - cb;
    for (int y0 = 0; y0 + cellH <= h; y0 += cellH)
        for (int x0 = 0; x0 + cellW <= w; x0 += cellW) {
            long long sr = 0, sg = 0, sb = 0;
            for (int y = y0; y < y0 + cellH; ++y)
                for (int x = x0; x < x0 + cellW; ++x) {
                    const Rgb p = px(x, y);
                    e.row(0, y)[x] = Kel8u(lumaY(p, 0x108000));
                    sr += p.r; sg += p.g; sb += p.b;
                }
            e.row(cb, y0 / cellH)[x0 / cellW] = Kel8u(floorShift(blueDiff(sr, sg, sb) + 0x2008000, 18));
            e.row(cr, y0 / cellH)[x0 / cellW] = Kel8u(floorShift(redDiff(sr, sg, sb) + 0x2008000, 18));
        }
}

KelResult expectedWarning(const ForwardMember& m, KelImageSize size)
{
    if (m.dst == Target::P3_420 || m.dst == Target::P3_420_CrCb)
        return ((size.width | size.height) & 1) ? kelWarnOddSize : kelOk;
    if (m.dst == Target::P3_411) return (size.width & 3) ? kelWarnOddSize : kelOk;
    return kelOk;
}

#define KT_FWD_C2(N) [](Buffers& s, Buffers& d, KelImageSize z) { return keli##N(s.pointers[0], s.steps[0], d.pointers[0], d.steps[0], z); }
#define KT_FWD_P3C2(N) [](Buffers& s, Buffers& d, KelImageSize z) { return keli##N(s.in(), s.steps[0], d.pointers[0], d.steps[0], z); }
#define KT_FWD_P3(N) [](Buffers& s, Buffers& d, KelImageSize z) { return keli##N(s.pointers[0], s.steps[0], d.out(), d.steps.data(), z); }

const ForwardMember kForward[] = {
    {"RGBToYCbCr422_8u_C3C2R", Source::RGB_C3, Target::C2_YCbCr, 0x1010000, 0x1010000, 0x108000, 0x100000, 0x808000, false, false, 1, 1, false, false, KT_FWD_C2(RGBToYCbCr422_8u_C3C2R)},
    {"RGBToYCbCr422_8u_P3C2R", Source::RGB_P3, Target::C2_YCbCr, 0x1010000, 0x1010000, 0x108000, 0x100000, 0x808000, false, false, 1, 1, false, false, KT_FWD_P3C2(RGBToYCbCr422_8u_P3C2R)},
    {"RGBToYCrCb422_8u_C3C2R", Source::RGB_C3, Target::C2_YCrCb, 0x1010000, 0x1010000, 0x108000, 0x100000, 0x808000, false, false, 1, 1, false, false, KT_FWD_C2(RGBToYCrCb422_8u_C3C2R)},
    {"RGBToYCrCb422_8u_P3C2R", Source::RGB_P3, Target::C2_YCrCb, 0x1010000, 0x1010000, 0x108000, 0x100000, 0x808000, false, false, 1, 1, false, false, KT_FWD_P3C2(RGBToYCrCb422_8u_P3C2R)},
    {"RGBToYCbCr420_8u_C3P3R", Source::RGB_C3, Target::P3_420, 0, 0, 0, 0, 0, false, false, 1, 1, false, false, KT_FWD_P3(RGBToYCbCr420_8u_C3P3R)},
    {"BGRToYCbCr422_8u_C3C2R", Source::BGR_C3, Target::C2_YCbCr, 0x1004000, 0x1004000, 0x108000, 0x108000, 0x802000, false, false, 2, 1, false, false, KT_FWD_C2(BGRToYCbCr422_8u_C3C2R)},
    {"BGRToYCbCr422_8u_AC4C2R", Source::BGR_AC4, Target::C2_YCbCr, 0x1004000, 0x1004000, 0x108000, 0x108000, 0x802000, false, false, 2, 1, false, false, KT_FWD_C2(BGRToYCbCr422_8u_AC4C2R)},
    {"BGRToYCbCr422_8u_C3P3R", Source::BGR_C3, Target::P3_422, 0, 0, 0, 0, 0, false, false, 2, 1, true, false, KT_FWD_P3(BGRToYCbCr422_8u_C3P3R)},
    {"BGRToYCbCr422_8u_AC4P3R", Source::BGR_AC4, Target::P3_422, 0, 0, 0, 0, 0, false, false, 2, 1, true, false, KT_FWD_P3(BGRToYCbCr422_8u_AC4P3R)},
    {"BGRToYCbCr420_8u_C3P3R", Source::BGR_C3, Target::P3_420, 0, 0, 0, 0, 0, false, false, 2, 2, true, false, KT_FWD_P3(BGRToYCbCr420_8u_C3P3R)},
    {"BGRToYCbCr420_8u_AC4P3R", Source::BGR_AC4, Target::P3_420, 0, 0, 0, 0, 0, false, false, 2, 2, true, false, KT_FWD_P3(BGRToYCbCr420_8u_AC4P3R)},
    {"BGRToYCrCb420_8u_C3P3R", Source::BGR_C3, Target::P3_420_CrCb, 0, 0, 0, 0, 0, false, false, 2, 2, true, false, KT_FWD_P3(BGRToYCrCb420_8u_C3P3R)},
    {"BGRToYCrCb420_8u_AC4P3R", Source::BGR_AC4, Target::P3_420_CrCb, 0, 0, 0, 0, 0, false, false, 2, 2, true, false, KT_FWD_P3(BGRToYCrCb420_8u_AC4P3R)},
    {"BGRToYCbCr411_8u_C3P3R", Source::BGR_C3, Target::P3_411, 0, 0, 0, 0, 0, false, false, 4, 1, true, false, KT_FWD_P3(BGRToYCbCr411_8u_C3P3R)},
    {"BGRToYCbCr411_8u_AC4P3R", Source::BGR_AC4, Target::P3_411, 0, 0, 0, 0, 0, false, false, 4, 1, true, false, KT_FWD_P3(BGRToYCbCr411_8u_AC4P3R)},
    {"BGRToCbYCr422_8u_AC4C2R", Source::BGR_AC4, Target::C2_CbYCr, 0x1010000, 0x100FFFE, 0x108000, 0x108000, 0x808000, false, false, 1, 1, false, false, KT_FWD_C2(BGRToCbYCr422_8u_AC4C2R)},
    {"RGBToCbYCr422_8u_C3C2R", Source::RGB_C3, Target::C2_CbYCr, 0, 0, 0, 0, 0x808000, true, false, 1, 1, false, false, KT_FWD_C2(RGBToCbYCr422_8u_C3C2R)},
    {"RGBToCbYCr422Gamma_8u_C3C2R", Source::RGB_C3, Target::C2_CbYCr, 0, 0, 0, 0, 0x808000, true, true, 1, 1, false, true, KT_FWD_C2(RGBToCbYCr422Gamma_8u_C3C2R)},
};

class Forward : public ::testing::TestWithParam<ForwardMember> {
protected:
    void expectConverts(int w, int h, Placement placement = Placement::Guarded)
    {
        const ForwardMember& m = GetParam();
        Buffers src = makeSource(m.src, w, h, placement), dst = makeTarget(m.dst, w, h, placement),
                expected = makeTarget(m.dst, w, h);
        src.fill(static_cast<std::uint32_t>(w * 13 + h));
        dst.fill(40);
        expected.fill(40);
        const auto srcBefore = src.rows();
        EXPECT_EQ(expectedWarning(m, {w, h}), m.call(src, dst, {w, h})) << w << "x" << h;
        forwardExpected(m, src, expected, w, h);
        EXPECT_EQ(expected.rows(), dst.rows()) << w << "x" << h;
        EXPECT_EQ(srcBefore, src.rows());
        EXPECT_TRUE(src.intact());
        EXPECT_TRUE(dst.intact());
    }
};

TEST_P(Forward, MatchesItsCellsAndLeavesThePartialCellsAsTold)
{
    const ForwardMember& m = GetParam();
    for (int w : {1, 2, 3, 4, 5, 6, 7, 8, 9, 16})
        for (int h : {1, 2, 3, 4})
            if (w >= m.minWidth && h >= m.minHeight) expectConverts(w, h);
}

TEST_P(Forward, ReadsAndWritesNothingPastTheImage)
{
    expectConverts(7, 3, Placement::Fenced);
    expectConverts(8, 4, Placement::Fenced);
}

TEST_P(Forward, ArgumentTestsInTheFamilysOrder)
{
    const ForwardMember& m = GetParam();
    Buffers src = makeSource(m.src, 8, 4), dst = makeTarget(m.dst, 8, 4);
    dst.fill(1);
    const auto before = dst.rows();
    const KelImageSize small{m.minWidth - 1, m.minHeight};
    // A null pixel-order pointer beats everything.
    Buffers& pixelSide = src.count() == 1 ? src : dst;
    Kel8u* saved = pixelSide.pointers[0];
    pixelSide.pointers[0] = nullptr;
    EXPECT_EQ(kelErrNullPointer, m.call(src, dst, {0, 0}));
    pixelSide.pointers[0] = saved;
    EXPECT_EQ(kelErrSize, m.call(src, dst, small));
    EXPECT_EQ(kelErrSize, m.call(src, dst, {8, m.minHeight - 1}));
    // A null plane with a bad size: the plane first in the BGR planar members.
    const bool planarTarget = dst.count() == 3, planarSource = src.count() == 3;
    if (planarTarget || planarSource) {
        Buffers& withPlanes = planarTarget ? dst : src;
        saved = withPlanes.pointers[2];
        withPlanes.pointers[2] = nullptr;
        EXPECT_EQ(m.planesBeforeSize ? kelErrNullPointer : kelErrSize, m.call(src, dst, small));
        EXPECT_EQ(kelErrNullPointer, m.call(src, dst, {8, 4}));
        withPlanes.pointers[2] = saved;
    }
    if (m.stepTest) {
        const int step = src.steps[0];
        src.steps[0] = -step;
        EXPECT_EQ(kelErrStep, m.call(src, dst, {8, 4}));
        EXPECT_EQ(kelErrSize, m.call(src, dst, {0, 4}));  // the size comes before the stride
        src.steps[0] = step;
    }
    EXPECT_EQ(before, dst.rows());
}

INSTANTIATE_TEST_SUITE_P(SubSampled, Forward, ::testing::ValuesIn(kForward),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(ForwardCases, GrayPairsShowTheTruncatedSecondLuma)
{
    const Kel8u gray[6] = {128, 128, 128, 128, 128, 128};
    Kel8u out[4];
    ASSERT_EQ(kelOk, keliRGBToYCbCr422_8u_C3C2R(gray, 6, out, 4, {2, 1}));
    EXPECT_EQ((std::array<Kel8u, 4>{126, 128, 125, 128}), (std::array<Kel8u, 4>{out[0], out[1], out[2], out[3]}));
    ASSERT_EQ(kelOk, keliBGRToYCbCr422_8u_C3C2R(gray, 6, out, 4, {2, 1}));
    EXPECT_EQ((std::array<Kel8u, 4>{126, 128, 126, 128}), (std::array<Kel8u, 4>{out[0], out[1], out[2], out[3]}));
}

TEST(ForwardCases, TheFilterLacksItsFirstLeftTap)
{
    std::vector<Kel8u> blue(3 * 6), gray(3 * 6, 90), out(12);
    for (int x = 0; x < 6; ++x) blue[3 * x + 2] = 255;
    ASSERT_EQ(kelOk, keliRGBToCbYCr422_8u_C3C2R(blue.data(), 18, out.data(), 12, {6, 1}));
    EXPECT_EQ(212, out[0]);
    EXPECT_EQ(240, out[4]);
    EXPECT_EQ(240, out[8]);
    ASSERT_EQ(kelOk, keliRGBToCbYCr422_8u_C3C2R(gray.data(), 18, out.data(), 12, {6, 1}));
    for (int k = 0; k < 3; ++k) {
        EXPECT_EQ(128, out[4 * k]);
        EXPECT_EQ(128, out[4 * k + 2]);
    }
    // The gamma member converts the same after its curve, and refuses a negative stride.
    EXPECT_EQ(kelErrStep, keliRGBToCbYCr422Gamma_8u_C3C2R(gray.data(), -18, out.data(), 12, {6, 1}));
    std::vector<Kel8u> twoRows(2 * 18, 90), outRows(2 * 12);
    EXPECT_EQ(kelOk, keliRGBToCbYCr422_8u_C3C2R(twoRows.data() + 18, -18, outRows.data(), 12, {6, 2}));
    EXPECT_EQ(128, outRows[12]);
}

TEST(ForwardCases, FourTwoZeroOfOnePixel)
{
    const Kel8u rgb[3] = {1, 2, 3};
    Kel8u y = 7, cb = 7, cr = 7;
    Kel8u* planes[3] = {&y, &cb, &cr};
    const int steps[3] = {1, 1, 1};
    EXPECT_EQ(kelWarnOddSize, keliRGBToYCbCr420_8u_C3P3R(rgb, 3, planes, steps, {1, 1}));
    EXPECT_EQ(kelErrSize, keliBGRToYCbCr420_8u_C3P3R(rgb, 3, planes, steps, {1, 1}));
    EXPECT_EQ(7, y + 0 * cb * cr);
    EXPECT_EQ(7, cb);
}

// ================= inverse: sub-sampled YCbCr to RGB and BGR =================

struct Set {
    long long luma, crR, cbG, crG, cbB, offR, offG, offB, zero;
};
constexpr Set kT{76284, 104595, 25690, 53281, 132186, -1220544, -1220544, -1220544, 128};
constexpr Set kU{76284, 104595, 25690, 53281, 132186, -1187776, -1187776, -1187776, 128};
constexpr Set kR{76282, 104593, 25689, 53279, 132184, -1187744, -1187744, -1187744, 128};
constexpr Set kH{76284, 104595, 25690, 53281, 132186, -14608761, 8887730, -18140365, 0};
constexpr Set kQ{76294, 104595, 25625, 53281, 132186, -1220704, -1220704, -1220704, 128};
constexpr Set kF{76309, 104597, 25675, 53279, 132201, -1220944, -1220944, -1220944, 128};

Rgb toRgb(const Set& s, int y, int cb, int cr)
{
    const long long b = cb - s.zero, r = cr - s.zero;
    return {clampByte(floorShift(s.luma * y + s.crR * r + s.offR, 16)),
            clampByte(floorShift(s.luma * y - s.cbG * b - s.crG * r + s.offG, 16)),
            clampByte(floorShift(s.luma * y + s.cbB * b + s.offB, 16))};
}

enum class In { C2_YCbCr, C2_YCrCb, C2_CbYCr, P3_422, P3_420, P3_420_CrCb, P3_411, P3_444 };
enum class Out { RGB_C3, RGB_P3, BGR_C3, BGR_C4 };

struct InverseMember {
    const char* name;
    In src;
    Out dst;
    const Set* set;
    bool filtered;
    int minWidth;
    bool planesBeforeSize, warnsOdd;
    std::function<KelResult(Buffers&, Buffers&, KelImageSize, Kel8u)> call;
};

Buffers makeInput(In in, int w, int h, Placement placement = Placement::Guarded)
{
    Buffers b;
    switch (in) {
    case In::C2_YCbCr: case In::C2_YCrCb: case In::C2_CbYCr:
        b.add(w == 1 ? 2 : 4 * (w / 2) + 2 * (w & 1), h, placement); break;  // a last single pixel has two bytes
    case In::P3_422: b.add(w, h, placement); b.add((w + 1) / 2, h, placement); b.add((w + 1) / 2, h, placement); break;
    case In::P3_420: case In::P3_420_CrCb: b.add(w, h, placement); b.add(w / 2, h / 2, placement); b.add(w / 2, h / 2, placement); break;
    case In::P3_411: b.add(w, h, placement); b.add(w / 4, h, placement); b.add(w / 4, h, placement); break;
    case In::P3_444: for (int p = 0; p < 3; ++p) b.add(w, h, placement); break;
    }
    return b;
}

Buffers makeOutput(Out out, int w, int h, Placement placement = Placement::Guarded)
{
    Buffers b;
    if (out == Out::RGB_P3) for (int p = 0; p < 3; ++p) b.add(w, h, placement);
    else b.add(w * (out == Out::BGR_C4 ? 4 : 3), h, placement);
    return b;
}

void put(Buffers& e, Out out, int x, int y, Rgb p, Kel8u alpha)
{
    switch (out) {
    case Out::RGB_C3: e.row(0, y)[3 * x] = Kel8u(p.r); e.row(0, y)[3 * x + 1] = Kel8u(p.g); e.row(0, y)[3 * x + 2] = Kel8u(p.b); break;
    case Out::RGB_P3: e.row(0, y)[x] = Kel8u(p.r); e.row(1, y)[x] = Kel8u(p.g); e.row(2, y)[x] = Kel8u(p.b); break;
    case Out::BGR_C3: e.row(0, y)[3 * x] = Kel8u(p.b); e.row(0, y)[3 * x + 1] = Kel8u(p.g); e.row(0, y)[3 * x + 2] = Kel8u(p.r); break;
    case Out::BGR_C4:
        e.row(0, y)[4 * x] = Kel8u(p.b); e.row(0, y)[4 * x + 1] = Kel8u(p.g); e.row(0, y)[4 * x + 2] = Kel8u(p.r);
        e.row(0, y)[4 * x + 3] = alpha; break;
    }
}

void inverseExpected(const InverseMember& m, Buffers& src, Buffers& e, int w, int h, Kel8u alpha)
{
    const Set& s = *m.set;
    switch (m.src) {
    case In::C2_YCbCr: case In::C2_YCrCb: case In::C2_CbYCr: {
        // Byte positions of Y0, Cb, Y1, Cr in a pair.
        const std::array<int, 4> at = m.src == In::C2_YCbCr ? std::array<int, 4>{0, 1, 2, 3}
                                    : m.src == In::C2_YCrCb ? std::array<int, 4>{0, 3, 2, 1}
                                                            : std::array<int, 4>{1, 0, 3, 2};
        for (int y = 0; y < h; ++y) {
            const Kel8u* row = src.row(0, y);
            for (int k = 0; k < w / 2; ++k) {
                const int cb = row[4 * k + at[1]], cr = row[4 * k + at[3]];
                put(e, m.dst, 2 * k, y, toRgb(s, row[4 * k + at[0]], cb, cr), alpha);
                put(e, m.dst, 2 * k + 1, y, toRgb(s, row[4 * k + at[2]], cb, cr), alpha);
            }
            if (w & 1) {
                const int slot = 4 * (w / 2);
                int cb, cr;
                if (w == 1) {  // one chroma byte for both
                    cb = cr = row[at[1] < 2 ? at[1] : at[3]];
                } else if (m.src == In::C2_YCbCr) {
                    cb = row[slot + 1]; cr = row[slot - 1];
                } else if (m.src == In::C2_YCrCb) {
                    cr = row[slot + 1]; cb = row[slot - 1];
                } else {
                    cb = row[slot]; cr = row[slot - 2];
                }
                put(e, m.dst, w - 1, y, toRgb(s, row[slot + at[0]], cb, cr), alpha);
            }
        }
        break;
    }
    case In::P3_422:
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) put(e, m.dst, x, y, toRgb(s, src.row(0, y)[x], src.row(1, y)[x / 2], src.row(2, y)[x / 2]), alpha);
        break;
    case In::P3_444:
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) put(e, m.dst, x, y, toRgb(s, src.row(0, y)[x], src.row(1, y)[x], src.row(2, y)[x]), alpha);
        break;
    case In::P3_411:
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                const int k = std::min(x / 4, w / 4 - 1);
                put(e, m.dst, x, y, toRgb(s, src.row(0, y)[x], src.row(1, y)[k], src.row(2, y)[k]), alpha);
            }
        break;
    case In::P3_420: case In::P3_420_CrCb: {
        const int cbPlane = m.src == In::P3_420_CrCb ? 2 : 1, crPlane = 3 - cbPlane;
        const int cells = w / 2;
        for (int y = 0; y < (h & ~1); ++y)
            for (int x = 0; x < 2 * cells; ++x) {
                const Kel8u* cbRow = src.row(cbPlane, y / 2);
                const Kel8u* crRow = src.row(crPlane, y / 2);
                const int k = x / 2;
                int cb = cbRow[k], cr = crRow[k];
                if (m.filtered && (x & 1) && k + 1 < cells) {
                    cb = (cbRow[k] + cbRow[k + 1] + 1) >> 1;
                    cr = (crRow[k] + crRow[k + 1] + 1) >> 1;
                }
                put(e, m.dst, x, y, toRgb(s, src.row(0, y)[x], cb, cr), alpha);
            }
        break;
    }
    }
}

#define KT_INV_C2(N) [](Buffers& s, Buffers& d, KelImageSize z, Kel8u) { return keli##N(s.pointers[0], s.steps[0], d.pointers[0], d.steps[0], z); }
#define KT_INV_C2A(N) [](Buffers& s, Buffers& d, KelImageSize z, Kel8u a) { return keli##N(s.pointers[0], s.steps[0], d.pointers[0], d.steps[0], z, a); }
#define KT_INV_C2P3(N) [](Buffers& s, Buffers& d, KelImageSize z, Kel8u) { return keli##N(s.pointers[0], s.steps[0], d.out(), d.steps[0], z); }
#define KT_INV_P3(N) [](Buffers& s, Buffers& d, KelImageSize z, Kel8u) { return keli##N(s.in(), s.steps.data(), d.pointers[0], d.steps[0], z); }
#define KT_INV_P3A(N) [](Buffers& s, Buffers& d, KelImageSize z, Kel8u a) { return keli##N(s.in(), s.steps.data(), d.pointers[0], d.steps[0], z, a); }
#define KT_INV_444(N) [](Buffers& s, Buffers& d, KelImageSize z, Kel8u) { return keli##N(s.in(), s.steps[0], d.pointers[0], d.steps[0], z); }
#define KT_INV_444A(N) [](Buffers& s, Buffers& d, KelImageSize z, Kel8u a) { return keli##N(s.in(), s.steps[0], d.pointers[0], d.steps[0], z, a); }

const InverseMember kInverse[] = {
    {"YCbCr422ToRGB_8u_C2C3R", In::C2_YCbCr, Out::RGB_C3, &kH, false, 1, false, false, KT_INV_C2(YCbCr422ToRGB_8u_C2C3R)},
    {"YCbCr422ToRGB_8u_C2P3R", In::C2_YCbCr, Out::RGB_P3, &kH, false, 1, false, false, KT_INV_C2P3(YCbCr422ToRGB_8u_C2P3R)},
    {"YCbCr422ToRGB_8u_P3C3R", In::P3_422, Out::RGB_C3, &kR, false, 1, false, false, KT_INV_P3(YCbCr422ToRGB_8u_P3C3R)},
    {"YCrCb422ToRGB_8u_C2C3R", In::C2_YCrCb, Out::RGB_C3, &kH, false, 1, false, false, KT_INV_C2(YCrCb422ToRGB_8u_C2C3R)},
    {"YCrCb422ToRGB_8u_C2P3R", In::C2_YCrCb, Out::RGB_P3, &kH, false, 1, false, false, KT_INV_C2P3(YCrCb422ToRGB_8u_C2P3R)},
    {"YCbCr422ToBGR_8u_C2C3R", In::C2_YCbCr, Out::BGR_C3, &kH, false, 2, false, false, KT_INV_C2(YCbCr422ToBGR_8u_C2C3R)},
    {"YCbCr422ToBGR_8u_C2C4R", In::C2_YCbCr, Out::BGR_C4, &kH, false, 2, false, false, KT_INV_C2A(YCbCr422ToBGR_8u_C2C4R)},
    {"YCbCr420ToRGB_8u_P3C3R", In::P3_420, Out::RGB_C3, &kT, false, 1, false, true, KT_INV_P3(YCbCr420ToRGB_8u_P3C3R)},
    {"YCbCr420ToBGR_8u_P3C3R", In::P3_420, Out::BGR_C3, &kU, false, 1, false, true, KT_INV_P3(YCbCr420ToBGR_8u_P3C3R)},
    {"YCrCb420ToBGR_Filter_8u_P3C4R", In::P3_420_CrCb, Out::BGR_C4, &kF, true, 1, false, true, KT_INV_P3A(YCrCb420ToBGR_Filter_8u_P3C4R)},
    {"YCbCr411ToBGR_8u_P3C3R", In::P3_411, Out::BGR_C3, &kQ, false, 4, true, false, KT_INV_P3(YCbCr411ToBGR_8u_P3C3R)},
    {"YCbCr411ToBGR_8u_P3C4R", In::P3_411, Out::BGR_C4, &kQ, false, 4, true, false, KT_INV_P3A(YCbCr411ToBGR_8u_P3C4R)},
    {"YCbCrToBGR_8u_P3C3R", In::P3_444, Out::BGR_C3, &kR, false, 1, true, false, KT_INV_444(YCbCrToBGR_8u_P3C3R)},
    {"YCbCrToBGR_8u_P3C4R", In::P3_444, Out::BGR_C4, &kR, false, 1, true, false, KT_INV_444A(YCbCrToBGR_8u_P3C4R)},
    {"CbYCr422ToRGB_8u_C2C3R", In::C2_CbYCr, Out::RGB_C3, &kR, false, 1, false, false, KT_INV_C2(CbYCr422ToRGB_8u_C2C3R)},
    {"CbYCr422ToBGR_8u_C2C4R", In::C2_CbYCr, Out::BGR_C4, &kR, false, 1, false, false, KT_INV_C2A(CbYCr422ToBGR_8u_C2C4R)},
};

class Inverse : public ::testing::TestWithParam<InverseMember> {
protected:
    void expectConverts(int w, int h, Placement placement = Placement::Guarded)
    {
        const InverseMember& m = GetParam();
        const Kel8u alpha = 0xA7;
        Buffers src = makeInput(m.src, w, h, placement), dst = makeOutput(m.dst, w, h, placement),
                expected = makeOutput(m.dst, w, h);
        src.fill(static_cast<std::uint32_t>(w * 11 + h));
        dst.fill(60);
        expected.fill(60);
        const auto srcBefore = src.rows();
        const KelResult warning = m.warnsOdd && ((w | h) & 1) ? kelWarnOddSize : kelOk;
        EXPECT_EQ(warning, m.call(src, dst, {w, h}, alpha)) << w << "x" << h;
        inverseExpected(m, src, expected, w, h, alpha);
        EXPECT_EQ(expected.rows(), dst.rows()) << w << "x" << h;
        EXPECT_EQ(srcBefore, src.rows());
        EXPECT_TRUE(src.intact());
        EXPECT_TRUE(dst.intact());
    }
};

TEST_P(Inverse, MatchesItsSetAndCells)
{
    const InverseMember& m = GetParam();
    for (int w : {1, 2, 3, 4, 5, 6, 7, 8, 9, 16})
        for (int h : {1, 2, 3, 4})
            if (w >= m.minWidth) expectConverts(w, h);
}

TEST_P(Inverse, ReadsAndWritesNothingPastTheImage)
{
    expectConverts(7, 3, Placement::Fenced);
    expectConverts(8, 4, Placement::Fenced);
}

TEST_P(Inverse, ArgumentTestsInTheFamilysOrder)
{
    const InverseMember& m = GetParam();
    Buffers src = makeInput(m.src, 8, 4), dst = makeOutput(m.dst, 8, 4);
    dst.fill(2);
    const auto before = dst.rows();
    // A null pixel-order pointer beats everything.
    Buffers& pixelSide = dst.count() == 1 ? dst : src;
    Kel8u* saved = pixelSide.pointers[0];
    pixelSide.pointers[0] = nullptr;
    EXPECT_EQ(kelErrNullPointer, m.call(src, dst, {0, 0}, 0));
    pixelSide.pointers[0] = saved;
    EXPECT_EQ(kelErrSize, m.call(src, dst, {m.minWidth - 1, 4}, 0));
    EXPECT_EQ(kelErrSize, m.call(src, dst, {8, 0}, 0));
    for (Buffers* side : {&src, &dst}) {
        if (side->count() != 3) continue;
        saved = side->pointers[1];
        side->pointers[1] = nullptr;
        EXPECT_EQ(m.planesBeforeSize ? kelErrNullPointer : kelErrSize, m.call(src, dst, {0, 4}, 0));
        EXPECT_EQ(kelErrNullPointer, m.call(src, dst, {8, 4}, 0));
        side->pointers[1] = saved;
    }
    EXPECT_EQ(before, dst.rows());
}

INSTANTIATE_TEST_SUITE_P(SubSampled, Inverse, ::testing::ValuesIn(kInverse),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(InverseCases, StudioWhiteIs254InSetTAnd255InSetU)
{
    Kel8u y[4] = {235, 235, 235, 235}, cb = 128, cr = 128, out[12];
    const Kel8u* planes[3] = {y, &cb, &cr};
    const int steps[3] = {2, 1, 1};
    ASSERT_EQ(kelOk, keliYCbCr420ToRGB_8u_P3C3R(planes, steps, out, 6, {2, 2}));
    EXPECT_EQ(254, out[0]);
    ASSERT_EQ(kelOk, keliYCbCr420ToBGR_8u_P3C3R(planes, steps, out, 6, {2, 2}));
    EXPECT_EQ(255, out[0]);
}

TEST(InverseCases, FilteredChromaStepShowsInOddColumnsOnly)
{
    // Two cells: Cr 100 then 200 in plane 1, Cb 128 in plane 2.
    Kel8u y[8] = {100, 100, 100, 100, 100, 100, 100, 100}, cr[2] = {100, 200}, cb[2] = {128, 128}, out[32];
    const Kel8u* planes[3] = {y, cr, cb};
    const int steps[3] = {4, 2, 2};
    ASSERT_EQ(kelOk, keliYCrCb420ToBGR_Filter_8u_P3C4R(planes, steps, out, 16, {4, 2}, 9));
    Kel8u even[4], odd[4], last[4];
    std::copy(out, out + 4, even);
    std::copy(out + 4, out + 8, odd);
    std::copy(out + 12, out + 16, last);
    EXPECT_LT(even[2], odd[2]);    // red rises in the odd column: mean Cr 150
    EXPECT_LT(odd[2], last[2]);    // and again in the last cell's own Cr 200
    EXPECT_EQ(9, even[3]);
    EXPECT_EQ(out[16], out[0]);    // the second row is the same
}

} // namespace

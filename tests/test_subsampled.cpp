// Sub-sampled studio-range YCbCr: RGB/BGR to 4:2:2, 4:2:0, 4:1:1 and back.
// Every member against the studio-range formulas at odd and minimum sizes,
// with what stays unwritten, the two argument-test orders and the warnings.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

#include "kelcc.h"
#include "support/formulas.h"
#include "support/layouts.h"

using namespace kt;

namespace {

TEST(SubSampledArithmetic, TheCurveOfTheGammaMemberHasItsWorkedEntries)
{
    EXPECT_EQ(4, rec709(1));
    EXPECT_EQ(14, rec709(3));
    EXPECT_EQ(180, rec709(128));
    EXPECT_EQ(255, rec709(255));
}

// ================= forward: RGB and BGR to sub-sampled YCbCr =================

using Call = KelResult (*)(Image& src, Image& dst, KelImageSize);

template <auto F> KelResult pixToPix(Image& s, Image& d, KelImageSize z) { return F(s.ptr(), s.step(), d.ptr(), d.step(), z); }
template <auto F> KelResult planesToPix(Image& s, Image& d, KelImageSize z) { return F(s.in(), s.step(), d.ptr(), d.step(), z); }
template <auto F> KelResult pixToPlanes(Image& s, Image& d, KelImageSize z) { return F(s.ptr(), s.step(), d.out(), d.steps.data(), z); }

enum class Source { RGB, RGBPlanes, BGR, BGRA };
enum class Lone { Nothing, LumaOnly, TwoBytes };  // what a last pixel of an odd width writes

struct ForwardMember {
    const char* name;
    Call call;
    Source src;
    Ycc form;
    int xCell, yCell;
    long double cbRound, crRound, oddLumaRound;  // fractions added before the floor
    long double loneRound;
    Lone lone;
    bool filtered, gamma;
    int minWidth, minHeight;
    bool planesBeforeSize, stepTest;
};

Image source(Source s, int w, int h, Placement placement = Placement::Guarded)
{
    if (s == Source::RGBPlanes) return planes(w, h, 3, 1, placement);
    return pixels(w, h, s == Source::BGRA ? 4 : 3, s != Source::RGB, 1, placement);
}

Rgb pixelOf(Image& src, int x, int y, bool gamma)
{
    auto c = [&](int ch) { return static_cast<long long>(gamma ? rec709(src.at(x, y, ch)) : src.at(x, y, ch)); };
    return {c(0), c(1), c(2)};
}

#define NAMED(ADAPT, F) #F, ADAPT<F>
constexpr long double kCrTwoBelow = kHalf - 2.0L / (1 << 17);  // two below the half in the pair's 2^17 scale
const ForwardMember kForward[] = {
    {NAMED(pixToPix, keliRGBToYCbCr422_8u_C3C2R), Source::RGB, Ycc::PairsYCbCr, 2, 1, kHalf, kHalf, kNone, kHalf, Lone::TwoBytes, false, false, 1, 1, false, false},
    {NAMED(planesToPix, keliRGBToYCbCr422_8u_P3C2R), Source::RGBPlanes, Ycc::PairsYCbCr, 2, 1, kHalf, kHalf, kNone, kHalf, Lone::TwoBytes, false, false, 1, 1, false, false},
    {NAMED(pixToPix, keliRGBToYCrCb422_8u_C3C2R), Source::RGB, Ycc::PairsYCrCb, 2, 1, kHalf, kHalf, kNone, kHalf, Lone::TwoBytes, false, false, 1, 1, false, false},
    {NAMED(planesToPix, keliRGBToYCrCb422_8u_P3C2R), Source::RGBPlanes, Ycc::PairsYCrCb, 2, 1, kHalf, kHalf, kNone, kHalf, Lone::TwoBytes, false, false, 1, 1, false, false},
    {NAMED(pixToPlanes, keliRGBToYCbCr420_8u_C3P3R), Source::RGB, Ycc::Planes, 2, 2, kEighth, kEighth, kHalf, kHalf, Lone::Nothing, false, false, 1, 1, false, false},
    {NAMED(pixToPix, keliBGRToYCbCr422_8u_C3C2R), Source::BGR, Ycc::PairsYCbCr, 2, 1, kEighth, kEighth, kHalf, kEighth, Lone::TwoBytes, false, false, 2, 1, false, false},
    {NAMED(pixToPix, keliBGRToYCbCr422_8u_AC4C2R), Source::BGRA, Ycc::PairsYCbCr, 2, 1, kEighth, kEighth, kHalf, kEighth, Lone::TwoBytes, false, false, 2, 1, false, false},
    {NAMED(pixToPlanes, keliBGRToYCbCr422_8u_C3P3R), Source::BGR, Ycc::Planes, 2, 1, kEighth, kEighth, kHalf, kHalf, Lone::LumaOnly, false, false, 2, 1, true, false},
    {NAMED(pixToPlanes, keliBGRToYCbCr422_8u_AC4P3R), Source::BGRA, Ycc::Planes, 2, 1, kEighth, kEighth, kHalf, kHalf, Lone::LumaOnly, false, false, 2, 1, true, false},
    {NAMED(pixToPlanes, keliBGRToYCbCr420_8u_C3P3R), Source::BGR, Ycc::Planes, 2, 2, kEighth, kEighth, kHalf, kHalf, Lone::Nothing, false, false, 2, 2, true, false},
    {NAMED(pixToPlanes, keliBGRToYCbCr420_8u_AC4P3R), Source::BGRA, Ycc::Planes, 2, 2, kEighth, kEighth, kHalf, kHalf, Lone::Nothing, false, false, 2, 2, true, false},
    {NAMED(pixToPlanes, keliBGRToYCrCb420_8u_C3P3R), Source::BGR, Ycc::PlanesCrFirst, 2, 2, kEighth, kEighth, kHalf, kHalf, Lone::Nothing, false, false, 2, 2, true, false},
    {NAMED(pixToPlanes, keliBGRToYCrCb420_8u_AC4P3R), Source::BGRA, Ycc::PlanesCrFirst, 2, 2, kEighth, kEighth, kHalf, kHalf, Lone::Nothing, false, false, 2, 2, true, false},
    {NAMED(pixToPlanes, keliBGRToYCbCr411_8u_C3P3R), Source::BGR, Ycc::Planes, 4, 1, kEighth, kEighth, kHalf, kHalf, Lone::Nothing, false, false, 4, 1, true, false},
    {NAMED(pixToPlanes, keliBGRToYCbCr411_8u_AC4P3R), Source::BGRA, Ycc::Planes, 4, 1, kEighth, kEighth, kHalf, kHalf, Lone::Nothing, false, false, 4, 1, true, false},
    {NAMED(pixToPix, keliBGRToCbYCr422_8u_AC4C2R), Source::BGRA, Ycc::PairsCbYCr, 2, 1, kHalf, kCrTwoBelow, kHalf, kHalf, Lone::TwoBytes, false, false, 1, 1, false, false},
    {NAMED(pixToPix, keliRGBToCbYCr422_8u_C3C2R), Source::RGB, Ycc::PairsCbYCr, 2, 1, kNone, kNone, kHalf, kHalf, Lone::TwoBytes, true, false, 1, 1, false, false},
    {NAMED(pixToPix, keliRGBToCbYCr422Gamma_8u_C3C2R), Source::RGB, Ycc::PairsCbYCr, 2, 1, kNone, kNone, kHalf, kHalf, Lone::TwoBytes, true, true, 1, 1, false, true},
};

// Writes into `e` what the member writes: whole cells, then a lone last pixel.
void forwardExpected(const ForwardMember& m, Image& src, Image& e, int w, int h)
{
    const int cellPixels = m.xCell * m.yCell, bits = 16 + (cellPixels == 2 ? 1 : 2);
    for (int y0 = 0; y0 + m.yCell <= h; y0 += m.yCell)
        for (int x0 = 0; x0 + m.xCell <= w; x0 += m.xCell) {
            Rgb sum{0, 0, 0};
            for (int y = y0; y < y0 + m.yCell; ++y)
                for (int x = x0; x < x0 + m.xCell; ++x) {
                    const Rgb p = pixelOf(src, x, y, m.gamma);
                    e.at(x, y, 0) = Kel8u(level(lumaSum(p), 16, 16 + (x & 1 ? m.oddLumaRound : kHalf)));
                    sum = {sum.r + p.r, sum.g + p.g, sum.b + p.b};
                }
            if (m.filtered) continue;
            e.at(x0, y0, 1) = Kel8u(level(blueSum(sum), bits, 128 + m.cbRound));
            e.at(x0, y0, 2) = Kel8u(level(redSum(sum), bits, 128 + m.crRound));
        }
    if (m.filtered) {
        // Weights 1/4, 1/2, 1/4 around each pair's even pixel, each part
        // floored; the first pair has no left neighbour.
        for (int y = 0; y < h; ++y) {
            long long carryB = 0, carryR = 0;
            for (int x = 0; x + 1 < w; x += 2) {
                const Rgb e0 = pixelOf(src, x, y, m.gamma), o = pixelOf(src, x + 1, y, m.gamma);
                auto quarter = [](long long v) { return static_cast<long long>(std::floor(v / 4.0L)); };
                auto half = [](long long v) { return static_cast<long long>(std::floor(v / 2.0L)); };
                const long double round = 128 + kHalf - 1.0L / 65536;
                e.at(x, y, 1) = Kel8u(level(half(blueSum(e0)) + carryB + quarter(blueSum(o)), 16, round));
                e.at(x, y, 2) = Kel8u(level(half(redSum(e0)) + carryR + quarter(redSum(o)), 16, round));
                carryB = quarter(blueSum(o));
                carryR = quarter(redSum(o));
            }
        }
    }
    if (w % 2 == 0 || m.lone == Lone::Nothing) return;
    for (int y = 0; y < h; ++y) {
        const Rgb p = pixelOf(src, w - 1, y, m.gamma);
        e.at(w - 1, y, 0) = Kel8u(level(lumaSum(p), 16, 16 + kHalf));
        if (m.lone == Lone::LumaOnly) continue;
        // The two bytes of its slot: Y and the pair's first chroma sample.
        if (m.form == Ycc::PairsYCrCb)
            e.at(w - 1, y, 2) = Kel8u(level(redSum(p), 16, 128 + m.loneRound));
        else
            e.at(w - 1, y, 1) = Kel8u(level(blueSum(p), 16, 128 + m.loneRound));
    }
}

class Forward : public ::testing::TestWithParam<ForwardMember> {
protected:
    // Random pixels, or all of one colour.
    void expectConverts(int w, int h, Placement placement = Placement::Guarded, const int* colour = nullptr)
    {
        const ForwardMember& m = GetParam();
        Image src = source(m.src, w, h, placement), dst = ycc(m.form, w, h, m.xCell, m.yCell, true, placement),
              expected = ycc(m.form, w, h, m.xCell, m.yCell);
        src.fill(static_cast<std::uint32_t>(w * 13 + h));
        if (colour) paint(src, w, h, colour);
        dst.fillWith(40);
        expected.fillWith(40);
        forwardExpected(m, src, expected, w, h);
        const bool whole = w % m.xCell == 0 && h % m.yCell == 0;
        expectWrites(m.lone == Lone::Nothing && !whole ? kelWarnOddSize : kelOk, m.call, src, dst, expected, {w, h});
    }
};

TEST_P(Forward, MatchesTheFormulasAndLeavesPartialCellsAsTold)
{
    const ForwardMember& m = GetParam();
    for (int w : {1, 2, 3, 4, 5, 6, 7, 8, 9, 16})
        for (int h : {1, 2, 3, 4})
            if (w >= m.minWidth && h >= m.minHeight) expectConverts(w, h);
    expectConverts(7, 3, Placement::Fenced);
    expectConverts(8, 4, Placement::Fenced);
}

// Uniform images whose colour puts a sum on a level's edge, so that an
// offset or a weight off by one in the member changes a byte.
TEST_P(Forward, SumsOnALevelEdgeLandAsTheFormulasSay)
{
    const ForwardMember& m = GetParam();
    const int cellPixels = m.xCell * m.yCell, bits = 16 + (cellPixels == 2 ? 1 : 2);
    auto edge = [&](std::array<int, 3> c) {
        Rgb p{c[0], c[1], c[2]};
        if (m.gamma) p = {rec709(c[0]), rec709(c[1]), rec709(c[2])};
        const long long b = blueSum(p), r = redSum(p);
        bool any = onEdge(lumaSum(p), 16, 16 + kHalf) || onEdge(lumaSum(p), 16, 16 + m.oddLumaRound) ||
                   onEdge(b, 16, 128 + m.loneRound);
        if (m.filtered) {
            const long long firstB = static_cast<long long>(std::floor(b / 2.0L)) + static_cast<long long>(std::floor(b / 4.0L));
            const long long firstR = static_cast<long long>(std::floor(r / 2.0L)) + static_cast<long long>(std::floor(r / 4.0L));
            const long double round = 128 + kHalf - 1.0L / 65536;
            return any || onEdge(firstB, 16, round) || onEdge(firstR, 16, round) ||
                   onEdge(firstB + static_cast<long long>(std::floor(b / 4.0L)), 16, round) ||
                   onEdge(firstR + static_cast<long long>(std::floor(r / 4.0L)), 16, round);
        }
        return any || onEdge(cellPixels * b, bits, 128 + m.cbRound) || onEdge(cellPixels * r, bits, 128 + m.crRound) ||
               (m.form == Ycc::PairsYCrCb && onEdge(r, 16, 128 + m.loneRound));
    };
    onEdgeColours(48, edge, [&](std::array<int, 3> c) { expectConverts(2 * m.xCell + 1, m.yCell, Placement::Guarded, c.data()); });
}

TEST_P(Forward, ArgumentTestsInTheFamilysOrder)
{
    const ForwardMember& m = GetParam();
    Image src = source(m.src, 8, 4), dst = ycc(m.form, 8, 4, m.xCell, m.yCell);
    expectArgumentOrder(m.call, src, dst, {8, 4}, {m.minWidth, m.minHeight}, m.planesBeforeSize,
                        m.stepTest ? Strides::AfterSize : Strides::Unseen);
}

const auto memberName = [](const auto& info) { return std::string(info.param.name); };
INSTANTIATE_TEST_SUITE_P(SubSampled, Forward, ::testing::ValuesIn(kForward), memberName);

TEST(ForwardCases, GrayPairsShowTheTruncatedSecondLuma)
{
    const Kel8u gray[6] = {128, 128, 128, 128, 128, 128};
    std::array<Kel8u, 4> out{};
    ASSERT_EQ(kelOk, keliRGBToYCbCr422_8u_C3C2R(gray, 6, out.data(), 4, {2, 1}));
    EXPECT_EQ((std::array<Kel8u, 4>{126, 128, 125, 128}), out);
    ASSERT_EQ(kelOk, keliBGRToYCbCr422_8u_C3C2R(gray, 6, out.data(), 4, {2, 1}));
    EXPECT_EQ((std::array<Kel8u, 4>{126, 128, 126, 128}), out);
}

TEST(ForwardCases, TheFilterLacksItsFirstLeftTapAndWalksUpward)
{
    std::vector<Kel8u> blue(3 * 6), gray(2 * 18, 90), out(2 * 12);
    for (int x = 0; x < 6; ++x) blue[3 * x + 2] = 255;
    ASSERT_EQ(kelOk, keliRGBToCbYCr422_8u_C3C2R(blue.data(), 18, out.data(), 12, {6, 1}));
    EXPECT_EQ((std::array<int, 3>{212, 240, 240}), (std::array<int, 3>{out[0], out[4], out[8]}));
    ASSERT_EQ(kelOk, keliRGBToCbYCr422_8u_C3C2R(gray.data() + 18, -18, out.data(), 12, {6, 2}));
    for (int k = 0; k < 6; ++k) {
        EXPECT_EQ(128, out[4 * k]) << "Cb of pair " << k;  // a gray has no colour difference to filter
        EXPECT_EQ(128, out[4 * k + 2]) << "Cr of pair " << k;
    }
}

// ================= inverse: sub-sampled YCbCr to RGB and BGR =================

// T on chroma as stored: the centring folded into offsets that miss it by 57, 14, 13.
const Set kH = [] {
    Set s = kT;
    s.offR -= 128 * s.crR + 57;
    s.offG += 128 * (s.cbG + s.crG) - 14;
    s.offB -= 128 * s.cbB + 13;
    s.zero = 0;
    return s;
}();
const Set kQ = studio({1.16415, 1.596, 0.391, 0.813, 2.017}, 0);
// The BT.601 weights (red 0.299, blue 0.114) exactly, luma 255/219, chroma 255/224.
const Set kF = [] {
    const double kr = 0.299, kb = 0.114, kg = 1 - kr - kb, chroma = 255.0 / 224;
    return studio({255.0 / 219, chroma * 2 * (1 - kr), chroma * 2 * (1 - kb) * kb / kg,
                   chroma * 2 * (1 - kr) * kr / kg, chroma * 2 * (1 - kb)}, 0);
}();

TEST(SubSampledArithmetic, InverseSetsGiveTheirWorkedWhite)
{
    EXPECT_EQ((std::array<int, 3>{254, 254, 254}), toRgb(kT, 235, 128, 128));
    EXPECT_EQ((std::array<int, 3>{255, 255, 255}), toRgb(kU, 235, 128, 128));
    EXPECT_EQ((std::array<int, 3>{255, 255, 255}), toRgb(kR, 235, 128, 128));
    EXPECT_EQ((std::array<int, 3>{0, 0, 0}), toRgb(kT, 16, 128, 128));
}

enum class Out { RGB, RGBPlanes, BGR, BGRA };
constexpr Kel8u kAlpha = 0xA7;

template <auto F> KelResult pixToPixA(Image& s, Image& d, KelImageSize z) { return F(s.ptr(), s.step(), d.ptr(), d.step(), z, kAlpha); }
template <auto F> KelResult pixToPlanesOneStep(Image& s, Image& d, KelImageSize z) { return F(s.ptr(), s.step(), d.out(), d.step(), z); }
template <auto F> KelResult stepsToPix(Image& s, Image& d, KelImageSize z) { return F(s.in(), s.steps.data(), d.ptr(), d.step(), z); }
template <auto F> KelResult stepsToPixA(Image& s, Image& d, KelImageSize z) { return F(s.in(), s.steps.data(), d.ptr(), d.step(), z, kAlpha); }
template <auto F> KelResult planesToPixA(Image& s, Image& d, KelImageSize z) { return F(s.in(), s.step(), d.ptr(), d.step(), z, kAlpha); }

struct InverseMember {
    const char* name;
    Call call;
    Ycc form;
    int xCell, yCell;
    Out dst;
    const Set* set;
    bool filtered;
    int minWidth;
    bool planesBeforeSize;
};

const InverseMember kInverse[] = {
    {NAMED(pixToPix, keliYCbCr422ToRGB_8u_C2C3R), Ycc::PairsYCbCr, 2, 1, Out::RGB, &kH, false, 1, false},
    {NAMED(pixToPlanesOneStep, keliYCbCr422ToRGB_8u_C2P3R), Ycc::PairsYCbCr, 2, 1, Out::RGBPlanes, &kH, false, 1, false},
    {NAMED(stepsToPix, keliYCbCr422ToRGB_8u_P3C3R), Ycc::Planes, 2, 1, Out::RGB, &kR, false, 1, false},
    {NAMED(pixToPix, keliYCrCb422ToRGB_8u_C2C3R), Ycc::PairsYCrCb, 2, 1, Out::RGB, &kH, false, 1, false},
    {NAMED(pixToPlanesOneStep, keliYCrCb422ToRGB_8u_C2P3R), Ycc::PairsYCrCb, 2, 1, Out::RGBPlanes, &kH, false, 1, false},
    {NAMED(pixToPix, keliYCbCr422ToBGR_8u_C2C3R), Ycc::PairsYCbCr, 2, 1, Out::BGR, &kH, false, 2, false},
    {NAMED(pixToPixA, keliYCbCr422ToBGR_8u_C2C4R), Ycc::PairsYCbCr, 2, 1, Out::BGRA, &kH, false, 2, false},
    {NAMED(stepsToPix, keliYCbCr420ToRGB_8u_P3C3R), Ycc::Planes, 2, 2, Out::RGB, &kT, false, 1, false},
    {NAMED(stepsToPix, keliYCbCr420ToBGR_8u_P3C3R), Ycc::Planes, 2, 2, Out::BGR, &kU, false, 1, false},
    {NAMED(stepsToPixA, keliYCrCb420ToBGR_Filter_8u_P3C4R), Ycc::PlanesCrFirst, 2, 2, Out::BGRA, &kF, true, 1, false},
    {NAMED(stepsToPix, keliYCbCr411ToBGR_8u_P3C3R), Ycc::Planes, 4, 1, Out::BGR, &kQ, false, 4, true},
    {NAMED(stepsToPixA, keliYCbCr411ToBGR_8u_P3C4R), Ycc::Planes, 4, 1, Out::BGRA, &kQ, false, 4, true},
    {NAMED(planesToPix, keliYCbCrToBGR_8u_P3C3R), Ycc::Planes, 1, 1, Out::BGR, &kR, false, 1, true},
    {NAMED(planesToPixA, keliYCbCrToBGR_8u_P3C4R), Ycc::Planes, 1, 1, Out::BGRA, &kR, false, 1, true},
    {NAMED(pixToPix, keliCbYCr422ToRGB_8u_C2C3R), Ycc::PairsCbYCr, 2, 1, Out::RGB, &kR, false, 1, false},
    {NAMED(pixToPixA, keliCbYCr422ToBGR_8u_C2C4R), Ycc::PairsCbYCr, 2, 1, Out::BGRA, &kR, false, 1, false},
};

bool pairs(Ycc form) { return form == Ycc::PairsYCbCr || form == Ycc::PairsYCrCb || form == Ycc::PairsCbYCr; }

// 4:2:2 planes hold a chroma column for an odd last pixel; 4:2:0 and 4:1:1
// planes hold whole cells only.
Image input(const InverseMember& m, int w, int h, Placement placement = Placement::Guarded)
{
    return ycc(m.form, w, h, m.xCell, m.yCell, m.yCell == 1 && m.xCell == 2, placement);
}

Image output(Out out, int w, int h, Placement placement = Placement::Guarded)
{
    if (out == Out::RGBPlanes) return planes(w, h, 3, 1, placement);
    return pixels(w, h, out == Out::BGRA ? 4 : 3, out != Out::RGB, 1, placement);
}

void inverseExpected(const InverseMember& m, Image& src, Image& e, int w, int h)
{
    const int coveredW = m.yCell == 2 ? w & ~1 : w, coveredH = m.yCell == 2 ? h & ~1 : h;
    for (int y = 0; y < coveredH; ++y)
        for (int x = 0; x < coveredW; ++x) {
            int cb, cr;
            if (pairs(m.form) && x == w - 1 && w % 2 == 1) {
                // A pair cut short: the sample missing from its two bytes comes
                // from the pair before, or at width 1 is its one chroma byte.
                const bool crMissing = m.form != Ycc::PairsYCrCb;
                const int own = src.at(x, y, crMissing ? 1 : 2);
                const int before = w == 1 ? own : src.at(x - 2, y, crMissing ? 2 : 1);
                cb = crMissing ? own : before;
                cr = crMissing ? before : own;
            } else {
                const int cx = m.xCell == 4 ? 4 * std::min(x / 4, w / 4 - 1) : x;  // a short group takes the last whole one's
                cb = src.at(cx, y, 1);
                cr = src.at(cx, y, 2);
            }
            if (m.filtered && x % 2 == 1 && x + 1 < coveredW) {
                cb = (cb + src.at(x + 1, y, 1) + 1) / 2;
                cr = (cr + src.at(x + 1, y, 2) + 1) / 2;
            }
            const auto rgb = toRgb(*m.set, src.at(x, y, 0), cb, cr);
            for (int c = 0; c < 3; ++c) e.at(x, y, c) = Kel8u(rgb[c]);
            if (m.dst == Out::BGRA) e.at(x, y, 3) = kAlpha;
        }
}

class Inverse : public ::testing::TestWithParam<InverseMember> {
protected:
    // Random samples, or one Y, Cb, Cr everywhere.
    void expectConverts(int w, int h, Placement placement = Placement::Guarded, const int* ycbcr = nullptr)
    {
        const InverseMember& m = GetParam();
        Image src = input(m, w, h, placement), dst = output(m.dst, w, h, placement), expected = output(m.dst, w, h);
        src.fill(static_cast<std::uint32_t>(w * 11 + h));
        if (ycbcr) paint(src, w, h, ycbcr);
        dst.fillWith(60);
        expected.fillWith(60);
        inverseExpected(m, src, expected, w, h);
        expectWrites(m.yCell == 2 && (w | h) & 1 ? kelWarnOddSize : kelOk, m.call, src, dst, expected, {w, h});
    }
};

TEST_P(Inverse, MatchesItsSetAndCells)
{
    const InverseMember& m = GetParam();
    for (int w : {1, 2, 3, 4, 5, 6, 7, 8, 9, 16})
        for (int h : {1, 2, 3, 4})
            if (w >= m.minWidth) expectConverts(w, h);
    expectConverts(7, 3, Placement::Fenced);
    expectConverts(8, 4, Placement::Fenced);
}

// Samples whose sum for some channel sits on a level's edge: an offset or a
// coefficient off by one in the member's set changes a byte there.
TEST_P(Inverse, SumsOnALevelEdgeLandAsTheSetSays)
{
    const InverseMember& m = GetParam();
    const Set& s = *m.set;
    auto edge = [&s](std::array<int, 3> c) { return setEdge(s, c); };
    onEdgeColours(48, edge, [&](std::array<int, 3> c) { expectConverts(4, 2, Placement::Guarded, c.data()); });
}

TEST_P(Inverse, ArgumentTestsInTheFamilysOrder)
{
    const InverseMember& m = GetParam();
    Image src = input(m, 8, 4), dst = output(m.dst, 8, 4);
    expectArgumentOrder(m.call, src, dst, {8, 4}, {m.minWidth, 1}, m.planesBeforeSize);
}

INSTANTIATE_TEST_SUITE_P(SubSampled, Inverse, ::testing::ValuesIn(kInverse), memberName);

TEST(InverseCases, FilteredChromaStepShowsInOddColumnsOnly)
{
    // Two cells: Cr 100 then 200 in plane 1, Cb 128 in plane 2.
    Kel8u y[8] = {100, 100, 100, 100, 100, 100, 100, 100}, cr[2] = {100, 200}, cb[2] = {128, 128}, out[32];
    const Kel8u* planes[3] = {y, cr, cb};
    const int steps[3] = {4, 2, 2};
    ASSERT_EQ(kelOk, keliYCrCb420ToBGR_Filter_8u_P3C4R(planes, steps, out, 16, {4, 2}, 9));
    // Red by column: the cell's own Cr 100, the mean 150, then the last cell's
    // own 200 in both its columns.
    const int red[4] = {100, 150, 200, 200};
    for (int x = 0; x < 4; ++x) {
        EXPECT_EQ(toRgb(kF, 100, 128, red[x])[0], out[4 * x + 2]) << x;
        EXPECT_EQ(out[4 * x + 2], out[16 + 4 * x + 2]) << "the second row is the same";
    }
    EXPECT_EQ(9, out[3]);
}

} // namespace

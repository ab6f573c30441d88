// Full-range YUV, at full resolution and at 4:2:2 and 4:2:0: every member
// against the cell formulas at odd sizes, with what stays unwritten, the
// width-1 path, the forms without strides, the warnings and concrete values.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <random>
#include <vector>

#include "kelcc.h"
#include "support/formulas.h"
#include "support/layouts.h"

using namespace kt;

namespace {

// ---- the formulas, in this file's terms ---------------------------------------------------

// Y' weighs R, G, B by 0.299, 0.587, 0.114; U and V scale the colour
// differences by 0.492 and 0.877; all in 16 fractional bits.
const long long kY[3] = {fixed(0.299), fixed(0.587), fixed(0.114)};
long long lumaPrime(long long r, long long g, long long b) { return kY[0] * r + kY[1] * g + kY[2] * b; }

// Chroma of a cell of n = 1, 2 or 4 pixels from its sums: the difference
// rounds with half the cell less one unit, the scaled one is floored.
struct Cell {
    long long sumR = 0, sumB = 0, sumLuma = 0;
    int n = 0;
    void add(int r, int g, int b) { sumR += r; sumB += b; sumLuma += lumaPrime(r, g, b); ++n; }
    int bits() const { return 16 + (n == 1 ? 0 : n == 2 ? 1 : 2); }
    long long difference(long long sum) const { return level((sum << 16) - sumLuma + n * 32768LL - 1, 16, 0); }
    int u() const { return level(difference(sumB) * fixed(0.492), bits(), 128); }
    int v() const { return clampByte(level(difference(sumR) * fixed(0.877), bits(), 128)); }
};

// Set 1: V to R 1.140, U to G 0.394, V to G 0.581, U to B 2.032; set 2 is one
// unit less in each.
std::array<long long, 3> inverseSums(int y, int u, int v, bool set2)
{
    const long long less = set2 ? 1 : 0, y16 = static_cast<long long>(y) << 16;
    const long long a = fixed(1.140) - less, b = fixed(0.394) - less, c = fixed(0.581) - less, d = fixed(2.032) - less;
    return {y16 + a * (v - 128), y16 - b * (u - 128) - c * (v - 128), y16 + d * (u - 128)};
}
std::array<int, 3> inverse(int y, int u, int v, bool set2 = false, long double round = 0)
{
    const auto sums = inverseSums(y, u, v, set2);
    return {clampByte(level(sums[0], 16, round)), clampByte(level(sums[1], 16, round)), clampByte(level(sums[2], 16, round))};
}

TEST(YuvFormulas, LumaWeightsSumToOne) { EXPECT_EQ(65536, kY[0] + kY[1] + kY[2]); }

// ---- every member through one table --------------------------------------------------------

enum class Kind { RGB, RGBA, BGR, RGBPlanes, YUV, YUVA, YUVPlanes, Pairs422, Planes422, Planes420 };

bool isRgb(Kind k) { return k == Kind::RGB || k == Kind::RGBA || k == Kind::BGR || k == Kind::RGBPlanes; }
int cellHeight(Kind k) { return k == Kind::Planes420 ? 2 : 1; }
int cellWidth(Kind k) { return k == Kind::Pairs422 || k == Kind::Planes422 || k == Kind::Planes420 ? 2 : 1; }

Image image(Kind k, int w, int h, Placement placement = Placement::Guarded)
{
    switch (k) {
    case Kind::RGB: case Kind::YUV: return pixels(w, h, 3, false, 1, placement);
    case Kind::RGBA: case Kind::YUVA: return pixels(w, h, 4, false, 1, placement);
    case Kind::BGR: return pixels(w, h, 3, true, 1, placement);
    case Kind::RGBPlanes: case Kind::YUVPlanes: return planes(w, h, 3, 1, placement);
    case Kind::Pairs422: return ycc(Ycc::PairsYCbCr, w, h, 2, 1, true, placement);
    case Kind::Planes422: return ycc(Ycc::Planes, w, h, 2, 1, true, placement);
    case Kind::Planes420: return ycc(Ycc::Planes, w, h, 2, 2, false, placement);
    }
    return Image{};
}

using Call = KelResult (*)(Image&, Image&, KelImageSize);
template <auto F> KelResult pix(Image& s, Image& d, KelImageSize z) { return F(s.ptr(), s.step(), d.ptr(), d.step(), z); }
template <auto F> KelResult planesOneStep(Image& s, Image& d, KelImageSize z) { return F(s.in(), s.step(), d.out(), d.step(), z); }
template <auto F> KelResult pixToPlanesOneStep(Image& s, Image& d, KelImageSize z) { return F(s.ptr(), s.step(), d.out(), d.step(), z); }
template <auto F> KelResult planesToPixOneStep(Image& s, Image& d, KelImageSize z) { return F(s.in(), s.step(), d.ptr(), d.step(), z); }
template <auto F> KelResult pixToSteps(Image& s, Image& d, KelImageSize z) { return F(s.ptr(), s.step(), d.out(), d.steps.data(), z); }
template <auto F> KelResult planesToSteps(Image& s, Image& d, KelImageSize z) { return F(s.in(), s.step(), d.out(), d.steps.data(), z); }
template <auto F> KelResult stepsToPix(Image& s, Image& d, KelImageSize z) { return F(s.in(), s.steps.data(), d.ptr(), d.step(), z); }
template <auto F> KelResult stepsToPlanes(Image& s, Image& d, KelImageSize z) { return F(s.in(), s.steps.data(), d.out(), d.step(), z); }

struct Member {
    const char* name;
    Call call;
    Kind src, dst;
    bool set2 = false;     // the planar full-resolution inverse
    bool rounds = false;   // the 4:2:0 AC4 inverse adds a half
};

#define NAMED(ADAPT, F) #F, ADAPT<F>
const Member kMembers[] = {
    {NAMED(pix, keliRGBToYUV_8u_C3R), Kind::RGB, Kind::YUV},
    {NAMED(pix, keliRGBToYUV_8u_AC4R), Kind::RGBA, Kind::YUVA},
    {NAMED(planesOneStep, keliRGBToYUV_8u_P3R), Kind::RGBPlanes, Kind::YUVPlanes},
    {NAMED(pixToPlanesOneStep, keliRGBToYUV_8u_C3P3R), Kind::RGB, Kind::YUVPlanes},
    {NAMED(pix, keliYUVToRGB_8u_C3R), Kind::YUV, Kind::RGB},
    {NAMED(pix, keliYUVToRGB_8u_AC4R), Kind::YUVA, Kind::RGBA},
    {NAMED(planesOneStep, keliYUVToRGB_8u_P3R), Kind::YUVPlanes, Kind::RGBPlanes, true},
    {NAMED(planesToPixOneStep, keliYUVToRGB_8u_P3C3R), Kind::YUVPlanes, Kind::RGB, true},
    {NAMED(pix, keliRGBToYUV422_8u_C3C2R), Kind::RGB, Kind::Pairs422},
    {NAMED(pixToSteps, keliRGBToYUV422_8u_C3P3R), Kind::RGB, Kind::Planes422},
    {NAMED(planesToSteps, keliRGBToYUV422_8u_P3R), Kind::RGBPlanes, Kind::Planes422},
    {NAMED(pix, keliYUV422ToRGB_8u_C2C3R), Kind::Pairs422, Kind::RGB},
    {NAMED(stepsToPix, keliYUV422ToRGB_8u_P3C3R), Kind::Planes422, Kind::RGB},
    {NAMED(stepsToPix, keliYUV422ToRGB_8u_P3AC4R), Kind::Planes422, Kind::RGBA},
    {NAMED(stepsToPlanes, keliYUV422ToRGB_8u_P3R), Kind::Planes422, Kind::RGBPlanes},
    {NAMED(pixToSteps, keliRGBToYUV420_8u_C3P3R), Kind::RGB, Kind::Planes420},
    {NAMED(planesToSteps, keliRGBToYUV420_8u_P3R), Kind::RGBPlanes, Kind::Planes420},
    {NAMED(stepsToPix, keliYUV420ToRGB_8u_P3C3R), Kind::Planes420, Kind::RGB},
    {NAMED(stepsToPix, keliYUV420ToRGB_8u_P3AC4R), Kind::Planes420, Kind::RGBA, false, true},
    {NAMED(stepsToPlanes, keliYUV420ToRGB_8u_P3R), Kind::Planes420, Kind::RGBPlanes},
};

// What the member must write into `e`, from the formulas.
void expectedResult(const Member& m, Image& src, Image& e, int w, int h)
{
    const Kind yuv = isRgb(m.src) ? m.dst : m.src;
    const int cellW = cellWidth(yuv), cellH = cellHeight(yuv);
    const int coveredW = cellH == 2 ? w & ~1 : w, coveredH = cellH == 2 ? h & ~1 : h;
    for (int y0 = 0; y0 < coveredH; y0 += cellH)
        for (int x0 = 0; x0 < coveredW; x0 += cellW) {
            const int cw = std::min(cellW, coveredW - x0);  // 1 for a last single pixel
            Cell cell;
            for (int y = y0; y < y0 + cellH; ++y)
                for (int x = x0; x < x0 + cw; ++x) {
                    if (isRgb(m.src)) {
                        const int r = src.at(x, y, 0), g = src.at(x, y, 1), b = src.at(x, y, 2);
                        cell.add(r, g, b);
                        e.at(x, y, 0) = Kel8u(level(lumaPrime(r, g, b), 16, 0));
                        continue;
                    }
                    const int u = src.at(x, y, 1);
                    // A pair cut short after its U: V from the pair before, or U at width 1.
                    const int v = m.src == Kind::Pairs422 && cw == 1 ? (x > 0 ? src.at(x - 2, y, 2) : u) : src.at(x, y, 2);
                    const auto rgb = inverse(src.at(x, y, 0), u, v, m.set2, m.rounds ? kHalf : 0);
                    for (int c = 0; c < 3; ++c) e.at(x, y, c) = Kel8u(rgb[c]);
                    if (m.dst == Kind::RGBA && cellW == 2) e.at(x, y, 3) = 0;  // the sub-sampled AC4 writes 0
                }
            if (!isRgb(m.src)) continue;
            e.at(x0, y0, 1) = Kel8u(cell.u());
            // Pixel-order 4:2:2 has no room for the V of a last single pixel.
            if (!(m.dst == Kind::Pairs422 && cw == 1)) e.at(x0, y0, 2) = Kel8u(cell.v());
        }
}

class Yuv : public ::testing::TestWithParam<Member> {
protected:
    // Random samples, or one colour everywhere.
    void expectConverts(int w, int h, Placement placement = Placement::Guarded, const int* colour = nullptr)
    {
        const Member& m = GetParam();
        Image src = image(m.src, w, h, placement), dst = image(m.dst, w, h, placement), expected = image(m.dst, w, h);
        src.fill(static_cast<std::uint32_t>(w * 7 + h));
        if (colour) paint(src, w, h, colour);
        dst.fillWith(50);
        expected.fillWith(50);
        expectedResult(m, src, expected, w, h);
        const bool warns = cellHeight(m.src) == 2 || cellHeight(m.dst) == 2;
        expectWrites(warns && (w | h) & 1 ? kelWarnOddSize : kelOk, m.call, src, dst, expected, {w, h});
    }
};

TEST_P(Yuv, MatchesTheCellFormulasAtEverySize)
{
    for (int w : {1, 2, 3, 4, 5, 8, 17})
        for (int h : {1, 2, 3, 4}) expectConverts(w, h);
    expectConverts(5, 3, Placement::Fenced);
    expectConverts(16, 4, Placement::Fenced);
}

// Uniform colours with a sum on a level's edge, where a coefficient or an
// offset one unit off in the member changes a byte.
TEST_P(Yuv, SumsOnALevelEdgeLandAsTheFormulasSay)
{
    const Member& m = GetParam();
    const Kind yuv = isRgb(m.src) ? m.dst : m.src;
    auto edge = [&](std::array<int, 3> c) {
        if (!isRgb(m.src)) {
            const auto sums = inverseSums(c[0], c[1], c[2], m.set2);
            const long double round = m.rounds ? kHalf : 0;
            const long long du = std::abs(c[1] - 128), dv = std::abs(c[2] - 128);
            return nearEdge(sums[0], 16, round, dv) || nearEdge(sums[1], 16, round, std::min(du, dv)) ||
                   nearEdge(sums[2], 16, round, du);
        }
        Cell cell;
        for (int k = 0; k < cellWidth(yuv) * cellHeight(yuv); ++k) cell.add(c[0], c[1], c[2]);
        const long long u = cell.difference(cell.sumB), v = cell.difference(cell.sumR);
        return onEdge(lumaPrime(c[0], c[1], c[2]), 16, 0) || onEdge(u * fixed(0.492), cell.bits(), 128) ||
               onEdge(v * fixed(0.877), cell.bits(), 128);
    };
    onEdgeColours(48, edge, [&](std::array<int, 3> c) { expectConverts(4, 2, Placement::Guarded, c.data()); });
}

TEST_P(Yuv, NullPointersThenSizeThenPlanes)
{
    Image src = image(GetParam().src, 4, 4), dst = image(GetParam().dst, 4, 4);
    expectArgumentOrder(GetParam().call, src, dst, {4, 4}, {1, 1}, false);
}

INSTANTIATE_TEST_SUITE_P(Yuv, Yuv, ::testing::ValuesIn(kMembers), [](const auto& info) { return std::string(info.param.name); });

// ---- concrete values and the members outside the table ------------------------------------

using B3 = std::array<Kel8u, 3>;

TEST(YuvCases, WhiteBlackRedGraysAndBothInverseSets)
{
    EXPECT_EQ((B3{255, 128, 128}), convertPixel(keliRGBToYUV_8u_C3R, B3{255, 255, 255}));
    EXPECT_EQ((B3{0, 128, 128}), convertPixel(keliRGBToYUV_8u_C3R, B3{0, 0, 0}));
    EXPECT_EQ((B3{76, 90, 255}), convertPixel(keliRGBToYUV_8u_C3R, B3{255, 0, 0}));  // unclamped V would be 284
    for (int v = 0; v < 256; v += 51) {
        const Kel8u g = Kel8u(v);
        EXPECT_EQ((B3{g, 128, 128}), convertPixel(keliRGBToYUV_8u_C3R, B3{g, g, g})) << v;
    }
    B3 white{255, 128, 128}, out{};
    const Kel8u* planes[3] = {&white[0], &white[1], &white[2]};
    EXPECT_EQ((B3{255, 255, 255}), convertPixel(keliYUVToRGB_8u_C3R, white));
    ASSERT_EQ(kelOk, keliYUVToRGB_8u_P3C3R(planes, 1, out.data(), 3, {1, 1}));
    EXPECT_EQ((B3{255, 255, 255}), out);
}

TEST(YuvCases, BlueFirstFourTwoZeroTestsAndWarnsOnTheHalvedSize)
{
    for (auto [size, status] : {std::pair{KelImageSize{6, 4}, kelWarnOddSize}, std::pair{KelImageSize{5, 4}, kelOk},
                                std::pair{KelImageSize{4, 6}, kelWarnOddSize}, std::pair{KelImageSize{8, 5}, kelOk},
                                std::pair{KelImageSize{1, 8}, kelErrSize}, std::pair{KelImageSize{1, 1}, kelErrSize}}) {
        Image src = image(Kind::Planes420, size.width, size.height), bgr = image(Kind::BGR, size.width, size.height),
              rgb = image(Kind::RGB, size.width, size.height);
        src.fill(2);
        bgr.fillWith(3);
        rgb.fillWith(3);
        EXPECT_EQ(status, keliYUV420ToBGR_8u_P3C3R(src.in(), src.steps.data(), bgr.ptr(), bgr.step(), size));
        keliYUV420ToRGB_8u_P3C3R(src.in(), src.steps.data(), rgb.ptr(), rgb.step(), size);
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x)
                for (int c = 0; c < 3; ++c) ASSERT_EQ(status == kelErrSize ? 3 : rgb.at(x, y, c), bgr.at(x, y, c));
        EXPECT_TRUE(bgr.intact());
    }
}

// The forms without strides behave as the R forms with strides derived from
// the width; even 4:2:2 images of 256 pixels or more go as one long row.
TEST(YuvCases, FormsWithoutStridesMatchTheStridedForms)
{
    for (KelImageSize size : {KelImageSize{16, 16}, KelImageSize{15, 17}, KelImageSize{6, 5}, KelImageSize{34, 9}}) {
        const int w = size.width, h = size.height;
        const KelResult warning = ((w | h) & 1) ? kelWarnOddSize : kelOk;
        for (int cellH : {1, 2}) {
            const int cw = cellH == 1 ? w / 2 + (w & 1) : w / 2, ch = h / cellH;
            std::mt19937 gen(static_cast<unsigned>(w * h));
            auto buffer = [&gen](int n) { std::vector<Kel8u> v(n); for (auto& b : v) b = Kel8u(gen()); return v; };
            std::vector<Kel8u> rgb = buffer(3 * w * h), r = buffer(w * h), g = buffer(w * h), b = buffer(w * h);
            std::vector<std::vector<Kel8u>> yuv{buffer(w * h), buffer(cw * ch + 1), buffer(cw * ch + 1)}, strided = yuv;
            const Kel8u* rgbPlanes[3] = {r.data(), g.data(), b.data()};
            Kel8u* one[3] = {yuv[0].data(), yuv[1].data(), yuv[2].data()};
            Kel8u* two[3] = {strided[0].data(), strided[1].data(), strided[2].data()};
            const int steps[3] = {w, cw, cw};
            const KelResult ok = cellH == 2 ? warning : kelOk;
            auto same = [&](KelResult a, KelResult b) { EXPECT_EQ(ok, a); EXPECT_EQ(ok, b); EXPECT_EQ(yuv, strided) << w << "x" << h; };
            auto rgbSame = [&](std::vector<Kel8u>& a, std::vector<Kel8u>& b, KelResult x, KelResult y) { EXPECT_EQ(ok, x); EXPECT_EQ(ok, y); EXPECT_EQ(a, b); };
            std::vector<Kel8u> out1 = buffer(3 * w * h), out2 = out1, p1 = buffer(3 * w * h), p2 = p1;
            Kel8u* planes1[3] = {p1.data(), p1.data() + w * h, p1.data() + 2 * w * h};
            Kel8u* planes2[3] = {p2.data(), p2.data() + w * h, p2.data() + 2 * w * h};
            if (cellH == 1) {
                same(keliRGBToYUV422_8u_P3(rgbPlanes, one, size), keliRGBToYUV422_8u_P3R(rgbPlanes, w, two, steps, size));
                same(keliRGBToYUV422_8u_C3P3(rgb.data(), one, size), keliRGBToYUV422_8u_C3P3R(rgb.data(), 3 * w, two, steps, size));
                rgbSame(out1, out2, keliYUV422ToRGB_8u_P3C3(one, out1.data(), size), keliYUV422ToRGB_8u_P3C3R(one, steps, out2.data(), 3 * w, size));
                rgbSame(p1, p2, keliYUV422ToRGB_8u_P3(one, planes1, size), keliYUV422ToRGB_8u_P3R(one, steps, planes2, w, size));
            } else {
                same(keliRGBToYUV420_8u_P3(rgbPlanes, one, size), keliRGBToYUV420_8u_P3R(rgbPlanes, w, two, steps, size));
                same(keliRGBToYUV420_8u_C3P3(rgb.data(), one, size), keliRGBToYUV420_8u_C3P3R(rgb.data(), 3 * w, two, steps, size));
                rgbSame(out1, out2, keliYUV420ToRGB_8u_P3C3(one, out1.data(), size), keliYUV420ToRGB_8u_P3C3R(one, steps, out2.data(), 3 * w, size));
                rgbSame(p1, p2, keliYUV420ToRGB_8u_P3(one, planes1, size), keliYUV420ToRGB_8u_P3R(one, steps, planes2, w, size));
            }
        }
    }
}

TEST(YuvCases, FormsWithoutStridesTestTheirArguments)
{
    Kel8u one[3] = {};
    Kel8u* planes[3] = {one, one + 1, nullptr};
    EXPECT_EQ(kelErrNullPointer, keliRGBToYUV422_8u_C3P3(nullptr, planes, {0, 0}));
    EXPECT_EQ(kelErrSize, keliRGBToYUV422_8u_C3P3(one, planes, {0, 1}));
    EXPECT_EQ(kelErrNullPointer, keliRGBToYUV422_8u_C3P3(one, planes, {1, 1}));
    EXPECT_EQ(kelErrNullPointer, keliYUV420ToRGB_8u_P3(planes, nullptr, {2, 2}));
    EXPECT_EQ(kelErrSize, keliYUV420ToRGB_8u_P3C3(planes, one, {2, 0}));
}

} // namespace

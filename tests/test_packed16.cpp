// Luma-chroma images to one 16-bit word a pixel (565, 555, 444), truncated and
// with a 4 x 4 ordered dither: every member against the five arithmetics and
// the quantisation written here, at odd and single-pixel sizes, with the
// worked values, the pattern's anchoring at the region and the argument tests.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "kelcc.h"
#include "support/formulas.h"
#include "support/layouts.h"

using namespace kt;

namespace {

// ---- the arithmetic, in this file's terms ---------------------------------------------------

// Studio range: luma 1.164, then Cr to R 1.596, Cb to G 0.392, Cr to G 0.813,
// Cb to B 2.017. Full-range YUV: V to R 1.140, U to G 0.394, V to G 0.581,
// U to B 2.032. The same four slots for both.
const std::array<double, 4> kStudio{1.596, 0.392, 0.813, 2.017};
const std::array<double, 4> kFull{1.140, 0.394, 0.581, 2.032};
constexpr double kStudioLuma = 1.164;

enum class Arith { Coarse, Fine, Folded, YuvFine, YuvCoarse };

// Luma and the four chroma slots in fixed point: 13 fractional bits floored
// (coarse), or 16 rounded to nearest (fine).
struct Coefficients {
    long long luma, crR, cbG, crG, cbB;
    int black;
};
Coefficients inCoarse(double luma, int black, const std::array<double, 4>& k)
{
    auto f = [](double c) { return static_cast<long long>(std::floor(c * 8192)); };
    return {f(luma), f(k[0]), f(k[1]), f(k[2]), f(k[3]), black};
}
Coefficients inFine(double luma, int black, const std::array<double, 4>& k)
{
    return {fixed(luma), fixed(k[0]), fixed(k[1]), fixed(k[2]), fixed(k[3]), black};
}
const Coefficients kStudioCoarse = inCoarse(kStudioLuma, 16, kStudio), kFullCoarse = inCoarse(1.0, 0, kFull);
const Coefficients kStudioFine = inFine(kStudioLuma, 16, kStudio), kFullFine = inFine(1.0, 0, kFull);

// Luma scaled into 4 fractional bits, each chroma product shifted down on its
// own. YUV has luma 1.0 and no black level.
Trio coarseColour(int Y, int cb, int cr, const Coefficients& k)
{
    const long long y = ((Y - k.black) * 128LL * k.luma) >> 16, u = (cb - 128) * 128LL, v = (cr - 128) * 128LL;
    return {clampByte(int((y + ((v * k.crR) >> 16)) >> 4)),
            clampByte(int((y - ((u * k.cbG) >> 16) - ((v * k.crG) >> 16)) >> 4)),
            clampByte(int((y + ((u * k.cbB) >> 16)) >> 4))};
}

// One floor at the end; `less` is taken off the three sums (the pixel-order
// 4:2:2 offsets fall short of the centred ones by 57, 14 and 13 units).
Trio fineColour(int Y, int cb, int cr, const Coefficients& k, Trio less = {0, 0, 0})
{
    const long long y = (Y - k.black) * k.luma, u = cb - 128, v = cr - 128;
    return {clampByte(int((y + v * k.crR - less[0]) >> 16)),
            clampByte(int((y - u * k.cbG - v * k.crG - less[1]) >> 16)),
            clampByte(int((y + u * k.cbB - less[2]) >> 16))};
}

Trio colour(Arith a, int Y, int cb, int cr)
{
    switch (a) {
    case Arith::Coarse: return coarseColour(Y, cb, cr, kStudioCoarse);
    case Arith::Fine: return fineColour(Y, cb, cr, kStudioFine);
    case Arith::Folded: return fineColour(Y, cb, cr, kStudioFine, {57, 14, 13});
    case Arith::YuvFine: return fineColour(Y, cb, cr, kFullFine);
    case Arith::YuvCoarse: return coarseColour(Y, cb, cr, kFullCoarse);
    }
    return {};
}

// The dither pattern, and the thresholds of the 5- and 6-bit fields: near
// 139.8 times the pattern, but these values and no product.
const int kPattern[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};
const int kThreshold[4][4] = {{0, 1118, 279, 1398}, {1678, 559, 1957, 839}, {419, 1538, 139, 1258}, {2097, 978, 1817, 699}};

int thresholdAt(int bits, int row, int col)
{
    return bits == 4 ? 289 * kPattern[row & 3][col & 3] : kThreshold[row & 3][col & 3];
}

// A colour to a field of `bits`: the floored level, one up when what it
// leaves over passes the threshold (strictly; the 6-bit field against half of it).
int ditherLevel(int c, int bits, int t)
{
    const int top = (1 << bits) - 1, step = 255 * 256 / top;  // one level in 1/256 of a colour step
    const int q = c * top >> 8, rest = c * 256 - q * step;
    return rest > (bits == 6 ? t >> 1 : t) ? q + 1 : q;
}

struct Widths {
    int rb, g;  // bits of the red and blue fields, of the green field
};
Widths widthsOf(int packing) { return packing == 565 ? Widths{5, 6} : packing == 555 ? Widths{5, 5} : Widths{4, 4}; }

// Fields from bit 0 up: R, G, B, or B, G, R when swapped; bits above stay 0.
Kel16u pack(int packing, bool swapRB, int r, int g, int b)
{
    const Widths w = widthsOf(packing);
    return Kel16u((swapRB ? b : r) | g << w.rb | (swapRB ? r : b) << (w.rb + w.g));
}

Kel16u truncated(int packing, bool swapRB, Trio c)
{
    const Widths w = widthsOf(packing);
    return pack(packing, swapRB, c[0] >> (8 - w.rb), c[1] >> (8 - w.g), c[2] >> (8 - w.rb));
}

Kel16u dithered(int packing, bool swapRB, Trio c, int row, int col)
{
    const Widths w = widthsOf(packing);
    const int t = thresholdAt(w.rb, row, col);
    return pack(packing, swapRB, ditherLevel(c[0], w.rb, t), ditherLevel(c[1], w.g, t), ditherLevel(c[2], w.rb, t));
}

TEST(Packed16Model, ArithmeticsGiveTheWorkedColours)
{
    for (Arith a : {Arith::Coarse, Arith::Fine, Arith::Folded}) {
        EXPECT_EQ((Trio{254, 254, 254}), colour(a, 235, 128, 128));
        EXPECT_EQ((Trio{0, 0, 0}), colour(a, 16, 128, 128));
        EXPECT_EQ((Trio{130, 130, 130}), colour(a, 128, 128, 128));
        EXPECT_EQ((Trio{212, 54, 21}), colour(a, 100, 90, 200));
    }
    EXPECT_EQ((Trio{255, 255, 255}), colour(Arith::YuvFine, 255, 128, 128));
    EXPECT_EQ((Trio{182, 73, 22}), colour(Arith::YuvFine, 100, 90, 200));
    EXPECT_EQ(0xFFFF, truncated(565, false, colour(Arith::Coarse, 235, 128, 128)));
}

TEST(Packed16Model, DitherLevelsAsWorked)
{
    const std::vector<std::pair<int, int>> five16{{0, 0}, {0, 1}, {0, 2}, {1, 1}, {1, 3}, {2, 0}, {2, 2}, {3, 1}, {3, 3}};
    const std::vector<std::pair<int, int>> six31{{0, 3}, {1, 0}, {1, 2}, {2, 1}, {3, 0}, {3, 2}};
    auto listed = [](const auto& list, int r, int c) { return std::find(list.begin(), list.end(), std::pair{r, c}) != list.end(); };
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) {
            const int t = thresholdAt(5, r, c), t4 = thresholdAt(4, r, c);
            EXPECT_EQ(listed(five16, r, c) ? 16 : 15, ditherLevel(128, 5, t)) << r << "," << c;
            EXPECT_EQ(listed(six31, r, c) ? 31 : 32, ditherLevel(128, 6, t)) << r << "," << c;
            EXPECT_EQ(r == 3 && c == 0 ? 62 : 63, ditherLevel(255, 6, t)) << r << "," << c;
            EXPECT_EQ(31, ditherLevel(255, 5, t));
            EXPECT_EQ(15, ditherLevel(255, 4, t4));
            for (int bits : {4, 5, 6}) EXPECT_EQ(0, ditherLevel(0, bits, thresholdAt(bits, r, c)));
        }
}

// ---- every member through one table --------------------------------------------------------

enum class Form { Planes444, Pixels444, Planes422, Pairs422, Planes420, Yuv420 };

using Call = KelResult (*)(Image& src, Image& dst, KelImageSize);
Kel16u* words(Image& d) { return reinterpret_cast<Kel16u*>(d.ptr()); }
template <auto F> KelResult pix(Image& s, Image& d, KelImageSize z) { return F(s.ptr(), s.step(), words(d), d.step(), z); }
template <auto F> KelResult planesOneStep(Image& s, Image& d, KelImageSize z) { return F(s.in(), s.step(), words(d), d.step(), z); }
template <auto F> KelResult planesSteps(Image& s, Image& d, KelImageSize z) { return F(s.in(), s.steps.data(), words(d), d.step(), z); }

struct Member {
    const char* name;
    Call call;
    Form form;
    int packing;  // 565, 555 or 444
    bool swapRB;  // the BGR member
    Arith arith;
    bool dithered;
};

#define P444(F) #F, planesOneStep<F>, Form::Planes444
#define C3(F) #F, pix<F>, Form::Pixels444
#define P422(F) #F, planesSteps<F>, Form::Planes422
#define C2(F) #F, pix<F>, Form::Pairs422
#define P420(F) #F, planesSteps<F>, Form::Planes420
#define YUV(F) #F, planesSteps<F>, Form::Yuv420
constexpr Arith kC = Arith::Coarse;
// Each RGB member is followed by its BGR sibling.
const Member kMembers[] = {
    {P444(keliYCbCrToRGB565_8u16u_P3C3R), 565, false, kC, false},
    {P444(keliYCbCrToBGR565_8u16u_P3C3R), 565, true, kC, false},
    {P444(keliYCbCrToRGB555_8u16u_P3C3R), 555, false, kC, false},
    {P444(keliYCbCrToBGR555_8u16u_P3C3R), 555, true, kC, false},
    {P444(keliYCbCrToRGB444_8u16u_P3C3R), 444, false, kC, false},
    {P444(keliYCbCrToBGR444_8u16u_P3C3R), 444, true, kC, false},
    {P420(keliYCbCr420ToRGB565_8u16u_P3C3R), 565, false, kC, false},
    {P420(keliYCbCr420ToBGR565_8u16u_P3C3R), 565, true, kC, false},
    {P420(keliYCbCr420ToRGB555_8u16u_P3C3R), 555, false, kC, false},
    {P420(keliYCbCr420ToBGR555_8u16u_P3C3R), 555, true, kC, false},
    {P420(keliYCbCr420ToRGB444_8u16u_P3C3R), 444, false, kC, false},
    {P420(keliYCbCr420ToBGR444_8u16u_P3C3R), 444, true, kC, false},
    {P422(keliYCbCr422ToRGB565_8u16u_P3C3R), 565, false, kC, false},
    {P422(keliYCbCr422ToBGR565_8u16u_P3C3R), 565, true, kC, false},
    {P422(keliYCbCr422ToRGB555_8u16u_P3C3R), 555, false, kC, false},
    {P422(keliYCbCr422ToBGR555_8u16u_P3C3R), 555, true, kC, false},
    {P422(keliYCbCr422ToRGB444_8u16u_P3C3R), 444, false, kC, false},
    {P422(keliYCbCr422ToBGR444_8u16u_P3C3R), 444, true, kC, false},
    {C3(keliYCbCrToRGB565_8u16u_C3R), 565, false, Arith::Fine, false},
    {C3(keliYCbCrToBGR565_8u16u_C3R), 565, true, Arith::Fine, false},
    {C3(keliYCbCrToRGB555_8u16u_C3R), 555, false, Arith::Fine, false},
    {C3(keliYCbCrToBGR555_8u16u_C3R), 555, true, Arith::Fine, false},
    {C3(keliYCbCrToRGB444_8u16u_C3R), 444, false, Arith::Fine, false},
    {C3(keliYCbCrToBGR444_8u16u_C3R), 444, true, Arith::Fine, false},
    {C2(keliYCbCr422ToRGB565_8u16u_C2C3R), 565, false, Arith::Folded, false},
    {C2(keliYCbCr422ToBGR565_8u16u_C2C3R), 565, true, Arith::Folded, false},
    {C2(keliYCbCr422ToRGB555_8u16u_C2C3R), 555, false, Arith::Folded, false},
    {C2(keliYCbCr422ToBGR555_8u16u_C2C3R), 555, true, Arith::Folded, false},
    {C2(keliYCbCr422ToRGB444_8u16u_C2C3R), 444, false, Arith::Folded, false},
    {C2(keliYCbCr422ToBGR444_8u16u_C2C3R), 444, true, Arith::Folded, false},
    {YUV(keliYUV420ToRGB565_8u16u_P3C3R), 565, false, Arith::YuvFine, false},
    {YUV(keliYUV420ToBGR565_8u16u_P3C3R), 565, true, Arith::YuvFine, false},
    {YUV(keliYUV420ToRGB555_8u16u_P3C3R), 555, false, Arith::YuvFine, false},
    {YUV(keliYUV420ToBGR555_8u16u_P3C3R), 555, true, Arith::YuvFine, false},
    {YUV(keliYUV420ToRGB444_8u16u_P3C3R), 444, false, Arith::YuvFine, false},
    {YUV(keliYUV420ToBGR444_8u16u_P3C3R), 444, true, Arith::YuvFine, false},
    // Dithered: coarse arithmetic in every YCbCr form.
    {C3(keliYCbCrToRGB565Dither_8u16u_C3R), 565, false, kC, true},
    {C3(keliYCbCrToBGR565Dither_8u16u_C3R), 565, true, kC, true},
    {C3(keliYCbCrToRGB555Dither_8u16u_C3R), 555, false, kC, true},
    {C3(keliYCbCrToBGR555Dither_8u16u_C3R), 555, true, kC, true},
    {C3(keliYCbCrToRGB444Dither_8u16u_C3R), 444, false, kC, true},
    {C3(keliYCbCrToBGR444Dither_8u16u_C3R), 444, true, kC, true},
    {P444(keliYCbCrToRGB565Dither_8u16u_P3C3R), 565, false, kC, true},
    {P444(keliYCbCrToBGR565Dither_8u16u_P3C3R), 565, true, kC, true},
    {P444(keliYCbCrToRGB555Dither_8u16u_P3C3R), 555, false, kC, true},
    {P444(keliYCbCrToBGR555Dither_8u16u_P3C3R), 555, true, kC, true},
    {P444(keliYCbCrToRGB444Dither_8u16u_P3C3R), 444, false, kC, true},
    {P444(keliYCbCrToBGR444Dither_8u16u_P3C3R), 444, true, kC, true},
    {P420(keliYCbCr420ToRGB565Dither_8u16u_P3C3R), 565, false, kC, true},
    {P420(keliYCbCr420ToBGR565Dither_8u16u_P3C3R), 565, true, kC, true},
    {P420(keliYCbCr420ToRGB555Dither_8u16u_P3C3R), 555, false, kC, true},
    {P420(keliYCbCr420ToBGR555Dither_8u16u_P3C3R), 555, true, kC, true},
    {P420(keliYCbCr420ToRGB444Dither_8u16u_P3C3R), 444, false, kC, true},
    {P420(keliYCbCr420ToBGR444Dither_8u16u_P3C3R), 444, true, kC, true},
    {P422(keliYCbCr422ToRGB565Dither_8u16u_P3C3R), 565, false, kC, true},
    {P422(keliYCbCr422ToBGR565Dither_8u16u_P3C3R), 565, true, kC, true},
    {P422(keliYCbCr422ToRGB555Dither_8u16u_P3C3R), 555, false, kC, true},
    {P422(keliYCbCr422ToBGR555Dither_8u16u_P3C3R), 555, true, kC, true},
    {P422(keliYCbCr422ToRGB444Dither_8u16u_P3C3R), 444, false, kC, true},
    {P422(keliYCbCr422ToBGR444Dither_8u16u_P3C3R), 444, true, kC, true},
    {C2(keliYCbCr422ToRGB565Dither_8u16u_C2C3R), 565, false, kC, true},
    {C2(keliYCbCr422ToBGR565Dither_8u16u_C2C3R), 565, true, kC, true},
    {C2(keliYCbCr422ToRGB555Dither_8u16u_C2C3R), 555, false, kC, true},
    {C2(keliYCbCr422ToBGR555Dither_8u16u_C2C3R), 555, true, kC, true},
    {C2(keliYCbCr422ToRGB444Dither_8u16u_C2C3R), 444, false, kC, true},
    {C2(keliYCbCr422ToBGR444Dither_8u16u_C2C3R), 444, true, kC, true},
    {YUV(keliYUV420ToRGB565Dither_8u16u_P3C3R), 565, false, Arith::YuvCoarse, true},
    {YUV(keliYUV420ToBGR565Dither_8u16u_P3C3R), 565, true, Arith::YuvCoarse, true},
    {YUV(keliYUV420ToRGB555Dither_8u16u_P3C3R), 555, false, Arith::YuvCoarse, true},
    {YUV(keliYUV420ToBGR555Dither_8u16u_P3C3R), 555, true, Arith::YuvCoarse, true},
    {YUV(keliYUV420ToRGB444Dither_8u16u_P3C3R), 444, false, Arith::YuvCoarse, true},
    {YUV(keliYUV420ToBGR444Dither_8u16u_P3C3R), 444, true, Arith::YuvCoarse, true},
};

void PrintTo(const Member& m, std::ostream* os) { *os << m.name; }

const Member& member(const std::string& name)
{
    for (const Member& m : kMembers)
        if (name == m.name) return m;
    throw std::invalid_argument(name);
}

std::vector<Member> membersWhere(const std::function<bool(const Member&)>& keep)
{
    std::vector<Member> out;
    for (const Member& m : kMembers)
        if (keep(m)) out.push_back(m);
    return out;
}

int cellHeight(Form f) { return f == Form::Planes420 || f == Form::Yuv420 ? 2 : 1; }
int cellWidth(Form f) { return f == Form::Planes444 || f == Form::Pixels444 ? 1 : 2; }

Image source(Form f, int w, int h, Placement placement = Placement::Guarded)
{
    switch (f) {
    case Form::Planes444: return planes(w, h, 3, 1, placement);
    case Form::Pixels444: return pixels(w, h, 3, false, 1, placement);
    case Form::Pairs422: return ycc(Ycc::PairsYCbCr, w, h, 2, 1, true, placement);
    default: return ycc(Ycc::Planes, w, h, cellWidth(f), cellHeight(f), true, placement);
    }
}
Image destination(int w, int h, Placement placement = Placement::Guarded) { return pixels(w, h, 1, false, 2, placement); }

bool lastOfOddPairs(const Member& m, int x, int w) { return m.form == Form::Pairs422 && w % 2 == 1 && x == w - 1; }

// One colour everywhere; the last pixel of an odd width in pixel-order 4:2:2
// has no Cr byte of its own.
void paintFlat(const Member& m, Image& src, int w, int h, Trio ycc)
{
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < 3; ++c)
                if (c < 2 || !lastOfOddPairs(m, x, w)) src.at(x, y, c) = Kel8u(ycc[c]);
}

// What the member writes at (x, y); `row` counts from the region's top row.
Kel16u modelAt(const Member& m, Image& src, int x, int y, int w, int row)
{
    const int cb = src.at(x, y, 1);
    int cr = cb;  // a lone last pixel of the dithered members, and any at width 1
    if (!lastOfOddPairs(m, x, w))
        cr = src.at(x, y, 2);
    else if (!m.dithered && w > 1)
        cr = src.at(x - 2, y, 2);  // the pair to the left's
    const Trio c = colour(m.arith, src.at(x, y, 0), cb, cr);
    return m.dithered ? dithered(m.packing, m.swapRB, c, row, x) : truncated(m.packing, m.swapRB, c);
}

std::string hex(unsigned v)
{
    char text[8];
    std::snprintf(text, sizeof text, "0x%04X", v);
    return text;
}

// Every element of the w x h destination against `want`, the first difference named.
template <typename Got, typename Want> void expectElements(int w, int h, Got got, Want want, const std::string& what)
{
    int wrong = 0;
    std::string first;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            if (got(x, y) != want(x, y) && !wrong++)
                first = "(x " + std::to_string(x) + ", y " + std::to_string(y) + ") want " + hex(want(x, y)) + " got " + hex(got(x, y));
    EXPECT_EQ(0, wrong) << what << " " << w << "x" << h << ", first at " << first;
}

class Packed16Member : public ::testing::TestWithParam<Member> {
protected:
    // The member on `src` into a fresh guarded destination: kelOk, every
    // element as `want(x, y)` says, the source unchanged, guards and padding intact.
    template <typename Want>
    void expectCall(Image& src, int w, int h, Want want, Placement placement = Placement::Guarded, int dstStepExtra = 0)
    {
        const Member& m = GetParam();
        Image dst = destination(w, h, placement);
        dst.fillWith(0x3C);
        const auto before = src.rows();
        dst.steps[0] += dstStepExtra;
        EXPECT_EQ(kelOk, m.call(src, dst, {w, h})) << w << "x" << h;
        expectElements(w, h, [&](int x, int y) { return dst.at<Kel16u>(x, y, 0); }, want, m.name);
        EXPECT_EQ(before, src.rows());
        EXPECT_TRUE(src.intact() && dst.intact()) << w << "x" << h;
    }
    void expectModel(int w, int h, Placement placement = Placement::Guarded, int dstStepExtra = 0)
    {
        const Member& m = GetParam();
        Image src = source(m.form, w, h, placement);
        src.fill(static_cast<std::uint32_t>(w * 31 + h));
        expectCall(src, w, h, [&](int x, int y) { return modelAt(m, src, x, y, w, y); }, placement, dstStepExtra);
    }
};

class Packed16PixelOrder : public Packed16Member {};
class Packed16Siblings : public Packed16Member {};
class Packed16Plain : public Packed16Member {};
class Packed16Dither : public Packed16Member {};

// Odd sizes, a single row or column (the YUV 4:2:0 plain members too) and
// 1x1 all convert in full with kelOk, no warning.
TEST_P(Packed16Member, MatchesTheModelAtEverySize)
{
    for (int w : {1, 2, 3, 4, 5, 7, 8, 9, 16, 17})
        for (int h : {1, 2, 3, 4, 5, 6}) expectModel(w, h);
    for (auto [w, h] : {std::pair{7, 5}, {1, 3}, {9, 1}, {1, 1}, {8, 4}}) expectModel(w, h, Placement::Fenced);
}

TEST_P(Packed16Member, AnOddDstStepLosesItsLowBit) { expectModel(5, 3, Placement::Guarded, 1); }

// A call whose rows lie back to back in both images (where pixel-order
// members may take the image as one run) gives what the model gives row by row.
TEST_P(Packed16PixelOrder, RowsBackToBackConvertAsRows)
{
    const Member& m = GetParam();
    for (auto [w, h] : {std::pair{1, 1}, {5, 3}, {13, 7}, {8, 2}, {2, 9}, {3, 5}, {16, 1}}) {
        Image src = source(m.form, w, h), view = source(m.form, w, h), out = destination(w, h);
        src.fill(static_cast<std::uint32_t>(w + 100 * h));
        const int rowBytes = (m.form == Form::Pixels444 ? 3 : 2) * w;
        std::vector<Kel8u> packed(rowBytes * h);
        for (int y = 0; y < h; ++y) std::copy(src.row(0, y), src.row(0, y) + rowBytes, packed.begin() + rowBytes * y);
        std::vector<Kel16u> words(w * h + 8, 0xBEEF);
        view.pointers[0] = packed.data();
        view.steps[0] = rowBytes;
        out.pointers[0] = reinterpret_cast<Kel8u*>(words.data());
        out.steps[0] = 2 * w;
        EXPECT_EQ(kelOk, m.call(view, out, {w, h}));
        expectElements(w, h, [&, w = w](int x, int y) { return words[y * w + x]; },
                       [&, w = w](int x, int y) { return modelAt(m, src, x, y, w, y); }, m.name);
        EXPECT_EQ(std::vector<Kel16u>(8, 0xBEEF), std::vector<Kel16u>(words.end() - 8, words.end()));
    }
}

// Null image pointers first, then the size, then a null plane; nothing written.
TEST_P(Packed16Member, NullPointersThenSizeThenPlanes)
{
    const Member& m = GetParam();
    Image src = source(m.form, 8, 4), dst = destination(8, 4);
    expectArgumentOrder(m.call, src, dst, {8, 4}, {1, 1}, false);
}

TEST_P(Packed16Siblings, TheBGRMemberExchangesTheRedAndBlueFields)
{
    const Member& m = GetParam();
    std::string bgr = m.name;
    bgr.replace(bgr.find("ToRGB"), 5, "ToBGR");
    const Member& sibling = member(bgr);
    ASSERT_TRUE(sibling.swapRB && sibling.form == m.form && sibling.dithered == m.dithered);
    const int w = 7, h = 5, low = widthsOf(m.packing).rb, high = low + widthsOf(m.packing).g, mask = (1 << low) - 1;
    Image src = source(m.form, w, h), rgb = destination(w, h), swapped = destination(w, h);
    src.fill(99);
    ASSERT_EQ(kelOk, m.call(src, rgb, {w, h}));
    ASSERT_EQ(kelOk, sibling.call(src, swapped, {w, h}));
    expectElements(w, h, [&](int x, int y) { return swapped.at<Kel16u>(x, y, 0); },
                   [&](int x, int y) {
                       const int v = rgb.at<Kel16u>(x, y, 0);
                       return Kel16u((v >> high) | (v & ~(mask | mask << high)) | (v & mask) << high);
                   },
                   sibling.name);
}

// Exact colours one by one, by the values given for them; 3x3 has a last
// odd column and row in every form.
TEST_P(Packed16Plain, FlatImagesGiveTheWorkedColours)
{
    const Member& m = GetParam();
    struct Worked { Trio in, out; };
    const std::vector<Worked> studio{{{235, 128, 128}, {254, 254, 254}}, {{16, 128, 128}, {0, 0, 0}},
                                     {{128, 128, 128}, {130, 130, 130}}, {{100, 90, 200}, {212, 54, 21}}};
    const std::vector<Worked> full{{{255, 128, 128}, {255, 255, 255}}, {{100, 90, 200}, {182, 73, 22}}};
    for (const Worked& k : m.arith == Arith::YuvFine ? full : studio) {
        Image src = source(m.form, 3, 3);
        paintFlat(m, src, 3, 3, k.in);
        const Kel16u want = truncated(m.packing, m.swapRB, k.out);
        expectCall(src, 3, 3, [&](int, int) { return want; });
    }
}

// White in every field: the top level everywhere, but the 6-bit green of 565
// one short where half the threshold equals what 255 leaves over. Black: 0.
TEST_P(Packed16Dither, WhiteAndBlackAsTold)
{
    const Member& m = GetParam();
    const bool yuv = m.arith == Arith::YuvCoarse;
    const Widths wd = widthsOf(m.packing);
    const int top = (1 << wd.rb) - 1, green = (1 << wd.g) - 1;
    for (Trio in : {Trio{255, 128, 128}, Trio{yuv ? 0 : 16, 128, 128}}) {
        Image src = source(m.form, 8, 8);
        paintFlat(m, src, 8, 8, in);
        const bool white = in[0] == 255;
        expectCall(src, 8, 8, [&](int x, int y) {
            if (!white) return Kel16u(0);
            return pack(m.packing, m.swapRB, top, m.packing == 565 && (y & 3) == 3 && (x & 3) == 0 ? 62 : green, top);
        });
    }
}

// Two regions split at a row that is not a multiple of 4: the lower one
// starts the pattern again at its own top row.
TEST_P(Packed16Dither, ARegionRestartsThePatternAtItsTopRow)
{
    const Member& m = GetParam();
    const int w = 7, h = 11, split = cellHeight(m.form) == 2 ? 6 : 5;
    Image src = source(m.form, w, h), whole = destination(w, h), parts = destination(w, h);
    src.fill(5);
    ASSERT_EQ(kelOk, m.call(src, whole, {w, h}));
    ASSERT_EQ(kelOk, m.call(src, parts, {w, split}));
    for (std::size_t i = 0; i < src.count(); ++i) src.pointers[i] = src.row(i, i == 0 || cellHeight(m.form) == 1 ? split : split / 2);
    parts.pointers[0] = parts.row(0, split);
    ASSERT_EQ(kelOk, m.call(src, parts, {w, h - split}));
    for (std::size_t i = 0; i < src.count(); ++i) src.pointers[i] = src.row(i, 0);
    expectElements(w, h, [&](int x, int y) { return parts.at<Kel16u>(x, y, 0); },
                   [&](int x, int y) { return modelAt(m, src, x, y, w, y < split ? y : y - split); }, m.name);
    int differ = 0;
    for (int y = split; y < h; ++y)
        for (int x = 0; x < w; ++x) differ += whole.at<Kel16u>(x, y, 0) != parts.at<Kel16u>(x, y, 0);
    EXPECT_LT(0, differ) << "the lower region has the whole image's pattern";
    EXPECT_TRUE(parts.intact() && whole.intact());
}

const auto memberName = [](const auto& info) { return std::string(info.param.name); };
INSTANTIATE_TEST_SUITE_P(Packed16, Packed16Member, ::testing::ValuesIn(kMembers), memberName);
INSTANTIATE_TEST_SUITE_P(Packed16, Packed16PixelOrder, ::testing::ValuesIn(membersWhere([](const Member& m) {
                             return m.form == Form::Pixels444 || m.form == Form::Pairs422;
                         })), memberName);
INSTANTIATE_TEST_SUITE_P(Packed16, Packed16Siblings, ::testing::ValuesIn(membersWhere([](const Member& m) { return !m.swapRB; })),
                         memberName);
INSTANTIATE_TEST_SUITE_P(Packed16, Packed16Plain, ::testing::ValuesIn(membersWhere([](const Member& m) { return !m.dithered; })),
                         memberName);
INSTANTIATE_TEST_SUITE_P(Packed16, Packed16Dither, ::testing::ValuesIn(membersWhere([](const Member& m) { return m.dithered; })),
                         memberName);

// ---- every colour through one member of each arithmetic -------------------------------------

class Packed16EveryColour : public Packed16Member {};

// Every (Y, Cb, Cr): Cb by chroma column, Cr by chroma row, Y by call and by
// place in the chroma cell; 2^24 pixels in all.
TEST_P(Packed16EveryColour, MatchesTheModel)
{
    const Member& m = GetParam();
    const int cw = cellWidth(m.form), ch = cellHeight(m.form), w = 256 * cw, h = 256 * ch, calls = 256 / (cw * ch);
    Image src = source(m.form, w, h), dst = destination(w, h);
    int wrong = 0;
    for (int k = 0; k < calls && wrong == 0; ++k) {
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                src.at(x, y, 0) = Kel8u(cw * ch * k + (x % cw) + cw * (y % ch));
                if (k > 0) continue;
                src.at(x, y, 1) = Kel8u(x / cw);
                src.at(x, y, 2) = Kel8u(y / ch);
            }
        ASSERT_EQ(kelOk, m.call(src, dst, {w, h}));
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                const Kel16u want = modelAt(m, src, x, y, w, y), got = dst.at<Kel16u>(x, y, 0);
                if (want != got && wrong++ < 3)
                    ADD_FAILURE() << m.name << " Y " << int(src.at(x, y, 0)) << " Cb " << x / cw << " Cr " << y / ch
                                  << " at (" << x << ", " << y << "): want " << hex(want) << " got " << hex(got);
            }
    }
    EXPECT_EQ(0, wrong);
}

INSTANTIATE_TEST_SUITE_P(Packed16, Packed16EveryColour,
                         ::testing::ValuesIn(membersWhere([](const Member& m) { return m.packing == 565 && !m.swapRB; })),
                         memberName);

// ---- worked cases of single members ---------------------------------------------------------

// A 4x4 flat image, each element against the value a position list gives.
void expectFlatPattern(const char* name, Trio ycc, Kel16u usual, Kel16u other, std::vector<std::pair<int, int>> otherAt)
{
    const Member& m = member(name);
    Image src = source(m.form, 4, 4), dst = destination(4, 4);
    paintFlat(m, src, 4, 4, ycc);
    ASSERT_EQ(kelOk, m.call(src, dst, {4, 4})) << name;
    for (int row = 0; row < 4; ++row)
        for (int col = 0; col < 4; ++col) {
            const bool listed = std::find(otherAt.begin(), otherAt.end(), std::pair{row, col}) != otherAt.end();
            EXPECT_EQ(hex(listed ? other : usual), hex(dst.at<Kel16u>(col, row, 0))) << name << " at (" << row << ", " << col << ")";
        }
}

TEST(Packed16Cases, FlatGrayGivesTheWorkedDitherPatterns)
{
    const Trio gray{128, 128, 128};  // colour 130 in coarse arithmetic
    expectFlatPattern("keliYCbCrToRGB565Dither_8u16u_C3R", gray, 0x8410, 0x7C0F, {{1, 2}, {3, 0}, {3, 2}});
    expectFlatPattern("keliYCbCrToBGR555Dither_8u16u_C3R", gray, 0x4210, 0x3DEF, {{1, 2}, {3, 0}, {3, 2}});
    expectFlatPattern("keliYCbCrToRGB444Dither_8u16u_C3R", gray, 0x888, 0x777, {{0, 3}, {1, 0}, {1, 2}, {2, 1}, {3, 0}, {3, 2}});
    // Full-range gray 128 stays colour 128: a 5-bit 15 at seven places, a 6-bit 31 at six.
    const Member& yuv = member("keliYUV420ToRGB565Dither_8u16u_P3C3R");
    Image src = source(yuv.form, 4, 4), dst = destination(4, 4);
    paintFlat(yuv, src, 4, 4, gray);
    ASSERT_EQ(kelOk, yuv.call(src, dst, {4, 4}));
    const int five[4][4] = {{16, 16, 16, 15}, {15, 16, 15, 16}, {16, 15, 16, 15}, {15, 16, 15, 16}};
    const int six[4][4] = {{32, 32, 32, 31}, {31, 32, 31, 32}, {32, 31, 32, 32}, {31, 32, 31, 32}};
    for (int row = 0; row < 4; ++row)
        for (int col = 0; col < 4; ++col)
            EXPECT_EQ(hex(pack(565, false, five[row][col], six[row][col], five[row][col])), hex(dst.at<Kel16u>(col, row, 0)))
                << row << ", " << col;
}

TEST(Packed16Cases, TheLastPixelOfAnOddPairRowTakesItsCrAsTheMemberSays)
{
    // Y0 Cb Y1 Cr of one pair, then Y and Cb of a lone pixel; the buffer ends there.
    const Member& plain = member("keliYCbCr422ToRGB565_8u16u_C2C3R");
    const Member& dither = member("keliYCbCr422ToRGB565Dither_8u16u_C2C3R");
    for (int w : {1, 3}) {
        Image src = source(Form::Pairs422, w, 1, Placement::Fenced), a = destination(w, 1), b = destination(w, 1);
        const Kel8u row[6] = {100, 90, 110, 200, 120, 60};
        std::copy(row + (w == 1 ? 4 : 0), row + 6, src.row(0, 0));
        ASSERT_EQ(kelOk, plain.call(src, a, {w, 1}));
        ASSERT_EQ(kelOk, dither.call(src, b, {w, 1}));
        const int cr = w == 1 ? 60 : 200;  // the pair to the left's, or at width 1 its own Cb
        EXPECT_EQ(hex(truncated(565, false, colour(Arith::Folded, 120, 60, cr))), hex(a.at<Kel16u>(w - 1, 0, 0))) << w;
        EXPECT_EQ(hex(dithered(565, false, colour(Arith::Coarse, 120, 60, 60), 0, w - 1)), hex(b.at<Kel16u>(w - 1, 0, 0))) << w;
        EXPECT_TRUE(a.intact() && b.intact());
    }
}

} // namespace

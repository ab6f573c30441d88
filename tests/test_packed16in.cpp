// Packed 565 and 555 pixels at the edges of the pipeline: widening to and
// packing from 8-bit pixels, packed BGR to YCbCr, YCrCb and YUV planes and
// pairs, and 4:1:1 planes to packed BGR. Every member against the arithmetic
// written here on widened fields, at odd sizes and strides, with what stays
// unwritten, the argument tests, the warnings and the worked values.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "kelcc.h"
#include "support/formulas.h"
#include "support/layouts.h"

using namespace kt;

namespace {

// ---- the arithmetic, in this file's terms ---------------------------------------------------

// The fields of a packed pixel from bit 0 up: a 5-bit low field, then the
// middle field of 6 bits (565) or 5 bits (555), then a 5-bit high field;
// bit 15 of a 555 pixel belongs to no field.
struct Fields {
    int low, middle, high;
};
Fields fieldsOf(int packing, int word)
{
    const int middleLevels = packing == 565 ? 64 : 32;
    return {word % 32, word / 32 % middleLevels, word / (32 * middleLevels) % 32};
}

// A field to 8 bits: its levels counted in steps of 8 (5 bits) or 4 (6 bits),
// so the top level is 248 or 252, never 255.
Trio widenedFields(int packing, int word)
{
    const Fields f = fieldsOf(packing, word);
    return {f.low * 8, f.middle * (packing == 565 ? 4 : 8), f.high * 8};
}
// Blue is the low field of a packed BGR pixel.
Rgb widenedBgr(int packing, int word)
{
    const Trio t = widenedFields(packing, word);
    return {t[2], t[1], t[0]};
}

// Three bytes to one 565 word: the top 5, 6 and 5 bits, the first byte lowest.
Kel16u packed565(int first, int second, int third) { return Kel16u(first / 8 + second / 4 * 32 + third / 8 * 2048); }

// Studio-range luma of one pixel, 16 above black, rounded half up; chroma of a
// group of n pixels (1, 2 or 4) from its sums, 128 at the centre and an
// eighth added before the floor.
int studioLuma(Rgb p) { return level(lumaSum(p), 16, 16 + kHalf); }
int groupBits(int n) { return n == 1 ? 16 : n == 2 ? 17 : 18; }
int studioCb(Rgb sum, int n) { return level(blueSum(sum), groupBits(n), 128 + kEighth); }
int studioCr(Rgb sum, int n) { return level(redSum(sum), groupBits(n), 128 + kEighth); }

// Full-range luma 0.299, 0.587, 0.114 in 16 fractional bits, rounded half
// up. U and V of a 2x2 block: the block's colour difference (four times the
// mean, 16 fractional bits) rounded up and one more, scaled by 0.492 or 0.877
// over four and floored; V clamped, U never out of range.
long long fullLumaSum(Rgb p) { return fixed(0.299) * p.r + fixed(0.587) * p.g + fixed(0.114) * p.b; }
int fullLuma(Rgb p) { return level(fullLumaSum(p), 16, kHalf); }
long long blockDifference(long long colourSum, long long lumaSums)
{
    return level((colourSum << 16) - lumaSums, 16, 2 - 1.0L / 65536);
}
int fullU(Rgb sum, long long lumaSums) { return level(blockDifference(sum.b, lumaSums) * fixed(0.492), 18, 128); }
int fullV(Rgb sum, long long lumaSums) { return clampByte(level(blockDifference(sum.r, lumaSums) * fixed(0.877), 18, 128)); }

// 4:1:1 to packed BGR: the studio inverse of formulas.h, rounded, then the
// top bits of each colour; blue in the low field.
Kel16u packedBgr(int packing, Trio rgb)
{
    if (packing == 565) return Kel16u(rgb[2] / 8 + rgb[1] / 4 * 32 + rgb[0] / 8 * 2048);
    return Kel16u(rgb[2] / 8 + rgb[1] / 8 * 32 + rgb[0] / 8 * 1024);
}
Kel16u packedFrom411(int packing, int y, int cb, int cr) { return packedBgr(packing, toRgb(kU, y, cb, cr)); }

std::string hex(unsigned v)
{
    char text[8];
    std::snprintf(text, sizeof text, "0x%04X", v);
    return text;
}

TEST(Packed16InModel, WidenedFieldsTopOutAt248And252)
{
    EXPECT_EQ((Trio{248, 252, 248}), widenedFields(565, 0xFFFF));
    EXPECT_EQ((Trio{248, 248, 248}), widenedFields(555, 0x7FFF));
    EXPECT_EQ((Trio{248, 248, 248}), widenedFields(555, 0xFFFF));
    EXPECT_EQ((Trio{8, 4, 8}), widenedFields(565, 0x0821));
    EXPECT_EQ((Trio{8, 8, 8}), widenedFields(555, 0x0421));
}

TEST(Packed16InModel, TheArithmeticGivesTheWorkedValues)
{
    EXPECT_EQ(231, studioLuma({248, 252, 248}));  // the largest widened pixel needs no clamp
    EXPECT_EQ(16, studioLuma({0, 0, 0}));
    EXPECT_EQ(128, studioCb({0, 0, 0}, 4));
    EXPECT_EQ(128, studioCr({0, 0, 0}, 1));
    EXPECT_EQ(255, fullLuma({255, 255, 255}));
    EXPECT_EQ(0xFFFF, packedFrom411(565, 235, 128, 128));
    EXPECT_EQ(0x7FFF, packedFrom411(555, 235, 128, 128));
    EXPECT_EQ(0, packedFrom411(565, 16, 128, 128));
    EXPECT_EQ(0xFFFF, packed565(255, 255, 255));
}

// Every (R, G, B) that widened fields can give: chroma of any group stays in
// 0..255 without a clamp, and so does U of a flat block.
TEST(Packed16InModel, StudioChromaAndFullRangeUStayInRange)
{
    for (int word = 0; word < 65536; ++word) {
        const Rgb p = widenedBgr(565, word), four{4 * p.r, 4 * p.g, 4 * p.b};
        for (int v : {studioCb(p, 1), studioCr(p, 1), studioCb(four, 4), studioCr(four, 4),
                      fullU(four, 4 * fullLumaSum(p))})
            ASSERT_TRUE(v >= 0 && v <= 255) << hex(word);
    }
}

// ---- widening and packing ---------------------------------------------------------------------

using Call = KelResult (*)(Image& src, Image& dst, KelImageSize);

Kel16u* words(Image& image) { return reinterpret_cast<Kel16u*>(image.ptr()); }
template <auto F> KelResult wordsToBytes(Image& s, Image& d, KelImageSize z) { return F(words(s), s.step(), d.ptr(), d.step(), z); }
template <auto F> KelResult bytesToWords(Image& s, Image& d, KelImageSize z) { return F(s.ptr(), s.step(), words(d), d.step(), z); }

struct Repack {
    const char* name;
    Call call;
};
void PrintTo(const Repack& m, std::ostream* os) { *os << m.name; }

#define NAMED(ADAPT, F) #F, ADAPT<F>
// Each pair runs one arithmetic: the first byte of a pixel is the low field.
const Repack kWiden[] = {
    {NAMED(wordsToBytes, keliRGB565ToRGB_16u8u_C3R)},
    {NAMED(wordsToBytes, keliBGR565ToBGR_16u8u_C3R)},
};
const Repack kPack[] = {
    {NAMED(bytesToWords, keliRGBToRGB565_8u16u_C3R)},
    {NAMED(bytesToWords, keliBGRToBGR565_8u16u_C3R)},
};

Image packedImage(int w, int h, Placement placement = Placement::Guarded) { return pixels(w, h, 1, false, 2, placement); }
Image byteImage(int w, int h, Placement placement = Placement::Guarded) { return pixels(w, h, 3, false, 1, placement); }

// A raw, guarded span of bytes that a call reads or writes through a stride
// of the test's choosing, and the view a call takes of it.
struct Span {
    GuardedImage bytes;
    long first;  // offset of row 0 in the span
    Span(long lowest, long highest, Placement placement) : bytes(std::size_t(highest - lowest), 1, placement, 13), first(-lowest) {}
    Kel8u* at(long offset) { return bytes.data() + first + offset; }
    Kel16u word(long offset)
    {
        Kel16u v;
        std::memcpy(&v, at(offset), 2);
        return v;
    }
    void setWord(long offset, Kel16u v) { std::memcpy(at(offset), &v, 2); }
};
// The span that rows at rowOffset(y), each `rowBytes` long, take.
template <typename Offset> Span spanFor(int h, int rowBytes, Offset rowOffset, Placement placement = Placement::Guarded)
{
    long lowest = 0, highest = 0;
    for (int y = 0; y < h; ++y) {
        lowest = std::min(lowest, rowOffset(y));
        highest = std::max(highest, rowOffset(y) + rowBytes);
    }
    return Span(lowest, highest, placement);
}

class Widen565 : public ::testing::TestWithParam<Repack> {
protected:
    // Packed words in, three bytes a pixel out, each the field widened.
    void expectWidens(Image& src, int w, int h, Placement placement = Placement::Guarded)
    {
        Image dst = byteImage(w, h, placement), expected = byteImage(w, h);
        dst.fillWith(0x3C);
        expected.fillWith(0x3C);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                const Trio t = widenedFields(565, src.at<Kel16u>(x, y, 0));
                for (int c = 0; c < 3; ++c) expected.at(x, y, c) = Kel8u(t[c]);
            }
        expectWrites(kelOk, GetParam().call, src, dst, expected, {w, h});
    }
};

TEST_P(Widen565, EveryPackedValueWidensByItsFields)
{
    Image src = packedImage(256, 256);
    for (int y = 0; y < 256; ++y)
        for (int x = 0; x < 256; ++x) src.at<Kel16u>(x, y, 0) = Kel16u(y * 256 + x);
    expectWidens(src, 256, 256);
}

TEST_P(Widen565, RandomImagesAtOddSizes)
{
    for (int w : {1, 2, 3, 5, 7, 8, 9, 16, 33, 67})
        for (int h : {1, 2, 3}) {
            Image src = packedImage(w, h);
            src.fill(std::uint32_t(w * 7 + h));
            expectWidens(src, w, h);
        }
    for (auto [w, h] : {std::pair{67, 3}, {130, 2}, {1, 1}}) {
        Image src = packedImage(w, h, Placement::Fenced);
        src.fill(std::uint32_t(w + h));
        expectWidens(src, w, h, Placement::Fenced);
    }
}

// The 16-bit source's rows lie srcStep & ~1 bytes apart: an odd stride loses
// its low bit, and a stride of 1 reads row 0 for every row.
TEST_P(Widen565, AnOddSrcStepLosesItsLowBit)
{
    const int w = 5, h = 4;
    for (int srcStep : {2 * w + 7, 2 * w + 1, 1}) {
        const int used = srcStep & ~1;
        Span span = spanFor(h, 2 * w, [&](int y) { return long(y) * used; });
        span.bytes.fillRandom(std::uint32_t(srcStep));
        Image view = packedImage(w, h), dst = byteImage(w, h), expected = byteImage(w, h);
        view.pointers[0] = span.at(0);
        view.steps[0] = srcStep;
        dst.fillWith(0x3C);
        expected.fillWith(0x3C);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                const Trio t = widenedFields(565, span.word(long(y) * used + 2 * x));
                for (int c = 0; c < 3; ++c) expected.at(x, y, c) = Kel8u(t[c]);
            }
        const auto before = span.bytes.rows();
        EXPECT_EQ(kelOk, GetParam().call(view, dst, {w, h})) << "srcStep " << srcStep;
        EXPECT_EQ(expected.rows(), dst.rows()) << "srcStep " << srcStep;
        EXPECT_EQ(before, span.bytes.rows());
        EXPECT_TRUE(dst.intact() && span.bytes.fenceIntact());
    }
}

// Null pointers, then the size (below 1), then a stride below 1.
TEST_P(Widen565, NullPointersThenSizeThenStep)
{
    Image src = packedImage(4, 3), dst = byteImage(4, 3);
    expectArgumentOrder(GetParam().call, src, dst, {4, 3}, {1, 1}, false, Strides::AfterSize);
}

class Pack565 : public ::testing::TestWithParam<Repack> {
protected:
    void expectPacks(Image& src, int w, int h, Placement placement = Placement::Guarded)
    {
        Image dst = packedImage(w, h, placement), expected = packedImage(w, h);
        dst.fillWith(0x3C);
        expected.fillWith(0x3C);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) expected.at<Kel16u>(x, y, 0) = packed565(src.at(x, y, 0), src.at(x, y, 1), src.at(x, y, 2));
        expectWrites(kelOk, GetParam().call, src, dst, expected, {w, h});
    }
};

// Row r, column x: byte `sweep` is x, the other two fixed at the row's pair;
// then the other way: byte `fixedAt` holds the row's value while the other
// two sweep 0..255 up and down.
TEST_P(Pack565, EachBytePositionSweepsWithTheOthersFixed)
{
    const int held[] = {0, 1, 7, 8, 127, 128, 251, 252, 255};
    const int rows = int(std::size(held));
    for (int position = 0; position < 3; ++position) {
        Image sweep = byteImage(256, rows * rows), fixed = byteImage(256, rows);
        for (int r = 0; r < rows * rows; ++r)
            for (int x = 0; x < 256; ++x) {
                const int others[2] = {held[r / rows], held[r % rows]};
                for (int c = 0, k = 0; c < 3; ++c) sweep.at(x, r, c) = Kel8u(c == position ? x : others[k++]);
            }
        for (int r = 0; r < rows; ++r)
            for (int x = 0; x < 256; ++x)
                for (int c = 0, k = 0; c < 3; ++c) fixed.at(x, r, c) = Kel8u(c == position ? held[r] : k++ == 0 ? x : 255 - x);
        expectPacks(sweep, 256, rows * rows);
        expectPacks(fixed, 256, rows);
    }
}

TEST_P(Pack565, RandomImagesAtOddSizes)
{
    for (int w : {1, 2, 3, 5, 7, 8, 9, 16, 33, 67})
        for (int h : {1, 2, 3}) {
            Image src = byteImage(w, h);
            src.fill(std::uint32_t(w * 11 + h));
            expectPacks(src, w, h);
        }
    for (auto [w, h] : {std::pair{67, 3}, {130, 2}, {1, 1}}) {
        Image src = byteImage(w, h, Placement::Fenced);
        src.fill(std::uint32_t(w + 3 * h));
        expectPacks(src, w, h, Placement::Fenced);
    }
}

// The packed destination's rows lie dstStep >> 1 elements apart: an odd
// stride loses its low bit, and at a stride of 1 every row lands on row 0,
// the last one staying.
TEST_P(Pack565, AnOddDstStepLosesItsLowBit)
{
    const int w = 5, h = 4;
    for (int dstStep : {2 * w + 7, 2 * w + 1, 1}) {
        const long used = (dstStep >> 1) * 2;
        Span span = spanFor(h, 2 * w, [&](int y) { return y * used; });
        Image src = byteImage(w, h), view = packedImage(w, h);
        src.fill(std::uint32_t(dstStep));
        span.bytes.fill(0x3C);
        std::vector<Kel8u> expected(span.bytes.rows());
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                const Kel16u v = packed565(src.at(x, y, 0), src.at(x, y, 1), src.at(x, y, 2));
                std::memcpy(expected.data() + span.first + y * used + 2 * x, &v, 2);
            }
        view.pointers[0] = span.at(0);
        view.steps[0] = dstStep;
        EXPECT_EQ(kelOk, GetParam().call(src, view, {w, h})) << "dstStep " << dstStep;
        EXPECT_EQ(expected, span.bytes.rows()) << "dstStep " << dstStep;
        EXPECT_TRUE(src.intact() && span.bytes.fenceIntact());
    }
}

TEST_P(Pack565, NullPointersThenSizeThenStep)
{
    Image src = byteImage(4, 3), dst = packedImage(4, 3);
    expectArgumentOrder(GetParam().call, src, dst, {4, 3}, {1, 1}, false, Strides::AfterSize);
}

const auto memberName = [](const auto& info) { return std::string(info.param.name); };
INSTANTIATE_TEST_SUITE_P(Packed16In, Widen565, ::testing::ValuesIn(kWiden), memberName);
INSTANTIATE_TEST_SUITE_P(Packed16In, Pack565, ::testing::ValuesIn(kPack), memberName);

TEST(Repack565Cases, AllOnesWidenTo248_252_248)
{
    const Kel16u ones[1] = {0xFFFF};
    for (auto widen : {keliRGB565ToRGB_16u8u_C3R, keliBGR565ToBGR_16u8u_C3R}) {
        std::array<Kel8u, 3> out{};
        ASSERT_EQ(kelOk, widen(ones, 2, out.data(), 3, {1, 1}));
        EXPECT_EQ((std::array<Kel8u, 3>{248, 252, 248}), out);
    }
}

TEST(Repack565Cases, WhiteRoundTripsTo248_252_248)
{
    const Kel8u white[3] = {255, 255, 255};
    Kel16u word = 0;
    std::array<Kel8u, 3> back{};
    ASSERT_EQ(kelOk, keliRGBToRGB565_8u16u_C3R(white, 3, &word, 2, {1, 1}));
    EXPECT_EQ(0xFFFF, word);
    ASSERT_EQ(kelOk, keliRGB565ToRGB_16u8u_C3R(&word, 2, back.data(), 3, {1, 1}));
    EXPECT_EQ((std::array<Kel8u, 3>{248, 252, 248}), back);
    ASSERT_EQ(kelOk, keliBGRToBGR565_8u16u_C3R(white, 3, &word, 2, {1, 1}));
    ASSERT_EQ(kelOk, keliBGR565ToBGR_16u8u_C3R(&word, 2, back.data(), 3, {1, 1}));
    EXPECT_EQ((std::array<Kel8u, 3>{248, 252, 248}), back);
}

// The first byte lands in the low field: blue of a BGR pixel at bit 0.
TEST(Repack565Cases, TheFirstByteTakesTheLowField)
{
    const Kel8u blue[3] = {255, 0, 0}, red[3] = {0, 0, 255};
    Kel16u word = 0;
    ASSERT_EQ(kelOk, keliBGRToBGR565_8u16u_C3R(blue, 3, &word, 2, {1, 1}));
    EXPECT_EQ(0x001F, word);
    ASSERT_EQ(kelOk, keliRGBToRGB565_8u16u_C3R(red, 3, &word, 2, {1, 1}));
    EXPECT_EQ(0xF800, word);
}

TEST(Repack565Cases, AStepOfZeroIsAStepErrorAfterTheSizeAndTheNullSource)
{
    Kel16u src[2] = {0x1234, 0x5678};
    std::array<Kel8u, 6> dst{};
    dst.fill(0x3C);
    EXPECT_EQ(kelErrStep, keliRGB565ToRGB_16u8u_C3R(src, 0, dst.data(), 6, {2, 1}));
    EXPECT_EQ(kelErrSize, keliRGB565ToRGB_16u8u_C3R(src, 4, dst.data(), 6, {0, 1}));
    EXPECT_EQ(kelErrNullPointer, keliRGB565ToRGB_16u8u_C3R(nullptr, 0, dst.data(), 6, {2, 1}));
    EXPECT_EQ(kelErrStep, keliRGB565ToRGB_16u8u_C3R(src, 4, dst.data(), -6, {2, 1}));
    std::array<Kel8u, 6> untouched{};
    untouched.fill(0x3C);
    EXPECT_EQ(untouched, dst);
}

// ---- packed BGR to luma-chroma -----------------------------------------------------------------

template <auto F> KelResult toPlanes(Image& s, Image& d, KelImageSize z) { return F(words(s), s.step(), d.out(), d.steps.data(), z); }

enum class Layout { Pairs, Planes, PlanesCrFirst };
// What a pixel that fills no whole group gets.
enum class Tail { Nothing, Luma, LumaAndCb };
enum class Warn { None, WidthNotFour, OddSide };

struct ToYcc {
    const char* name;
    Call call;
    int packing;
    Layout layout;
    int xCell, yCell;
    bool yuv;
    Tail tail;
    int minWidth, minHeight;
    Warn warn;
    const char* sibling;  // the same member with the other field widths
};
void PrintTo(const ToYcc& m, std::ostream* os) { *os << m.name; }

const ToYcc kToYcc[] = {
    {NAMED(wordsToBytes, keliBGR565ToYCbCr422_16u8u_C3C2R), 565, Layout::Pairs, 2, 1, false, Tail::LumaAndCb, 2, 1, Warn::None, "keliBGR555ToYCbCr422_16u8u_C3C2R"},
    {NAMED(wordsToBytes, keliBGR555ToYCbCr422_16u8u_C3C2R), 555, Layout::Pairs, 2, 1, false, Tail::LumaAndCb, 2, 1, Warn::None, "keliBGR565ToYCbCr422_16u8u_C3C2R"},
    {NAMED(toPlanes, keliBGR565ToYCbCr422_16u8u_C3P3R), 565, Layout::Planes, 2, 1, false, Tail::Luma, 2, 1, Warn::None, "keliBGR555ToYCbCr422_16u8u_C3P3R"},
    {NAMED(toPlanes, keliBGR555ToYCbCr422_16u8u_C3P3R), 555, Layout::Planes, 2, 1, false, Tail::Luma, 2, 1, Warn::None, "keliBGR565ToYCbCr422_16u8u_C3P3R"},
    {NAMED(toPlanes, keliBGR565ToYCbCr420_16u8u_C3P3R), 565, Layout::Planes, 2, 2, false, Tail::Luma, 2, 2, Warn::None, "keliBGR555ToYCbCr420_16u8u_C3P3R"},
    {NAMED(toPlanes, keliBGR555ToYCbCr420_16u8u_C3P3R), 555, Layout::Planes, 2, 2, false, Tail::Luma, 2, 2, Warn::None, "keliBGR565ToYCbCr420_16u8u_C3P3R"},
    {NAMED(toPlanes, keliBGR565ToYCrCb420_16u8u_C3P3R), 565, Layout::PlanesCrFirst, 2, 2, false, Tail::Luma, 2, 2, Warn::None, "keliBGR555ToYCrCb420_16u8u_C3P3R"},
    {NAMED(toPlanes, keliBGR555ToYCrCb420_16u8u_C3P3R), 555, Layout::PlanesCrFirst, 2, 2, false, Tail::Luma, 2, 2, Warn::None, "keliBGR565ToYCrCb420_16u8u_C3P3R"},
    {NAMED(toPlanes, keliBGR565ToYCbCr411_16u8u_C3P3R), 565, Layout::Planes, 4, 1, false, Tail::Nothing, 4, 1, Warn::WidthNotFour, "keliBGR555ToYCbCr411_16u8u_C3P3R"},
    {NAMED(toPlanes, keliBGR555ToYCbCr411_16u8u_C3P3R), 555, Layout::Planes, 4, 1, false, Tail::Nothing, 4, 1, Warn::WidthNotFour, "keliBGR565ToYCbCr411_16u8u_C3P3R"},
    {NAMED(toPlanes, keliBGR565ToYUV420_16u8u_C3P3R), 565, Layout::Planes, 2, 2, true, Tail::Nothing, 2, 2, Warn::OddSide, "keliBGR555ToYUV420_16u8u_C3P3R"},
    {NAMED(toPlanes, keliBGR555ToYUV420_16u8u_C3P3R), 555, Layout::Planes, 2, 2, true, Tail::Nothing, 2, 2, Warn::OddSide, "keliBGR565ToYUV420_16u8u_C3P3R"},
};

const ToYcc& toYcc(const std::string& name)
{
    for (const ToYcc& m : kToYcc)
        if (name == m.name) return m;
    throw std::invalid_argument(name);
}

KelResult statusOf(const ToYcc& m, int w, int h)
{
    const bool odd = m.warn == Warn::WidthNotFour ? (w & 3) != 0 : m.warn == Warn::OddSide && ((w | h) & 1);
    return odd ? kelWarnOddSize : kelOk;
}

// Chroma planes exactly w / xCell samples wide and h / yCell rows tall, so
// that a sample past them meets the guard; `wider` adds samples to planes 1
// and 2 of the call (the Cr plane first in the YCrCb members), which gives
// each its own stride.
Image destination(const ToYcc& m, int w, int h, Placement placement = Placement::Guarded, std::array<int, 2> wider = {0, 0})
{
    if (m.layout == Layout::Pairs) return ycc(Ycc::PairsYCbCr, w, h, 2, 1, true, placement);
    const int cw = w / m.xCell, ch = h / m.yCell, cb = m.layout == Layout::Planes ? 1 : 2;
    Image image(placement, 1, true);
    image.plane(w, h).plane(cw + wider[0], ch).plane(cw + wider[1], ch).channel({0});
    image.channel({cb, 0, 1, m.xCell, m.yCell}).channel({3 - cb, 0, 1, m.xCell, m.yCell});
    return image;
}

// What the member writes into `e`, reading the packed source through
// word(x, y): luma of every pixel it converts, chroma of every whole group,
// and the tail as the member's table says.
template <typename Word> void expectedYcc(const ToYcc& m, Word word, Image& e, int w, int h)
{
    auto pixel = [&](int x, int y) { return widenedBgr(m.packing, word(x, y)); };
    const int wholeW = w / m.xCell * m.xCell, wholeH = h / m.yCell * m.yCell;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            if ((x < wholeW && y < wholeH) || m.tail != Tail::Nothing)
                e.at(x, y, 0) = Kel8u(m.yuv ? fullLuma(pixel(x, y)) : studioLuma(pixel(x, y)));
    const int n = m.xCell * m.yCell;
    for (int y0 = 0; y0 < wholeH; y0 += m.yCell)
        for (int x0 = 0; x0 < wholeW; x0 += m.xCell) {
            Rgb sum{0, 0, 0};
            long long lumaSums = 0;
            for (int y = y0; y < y0 + m.yCell; ++y)
                for (int x = x0; x < x0 + m.xCell; ++x) {
                    const Rgb p = pixel(x, y);
                    sum = {sum.r + p.r, sum.g + p.g, sum.b + p.b};
                    lumaSums += fullLumaSum(p);
                }
            e.at(x0, y0, 1) = Kel8u(m.yuv ? fullU(sum, lumaSums) : studioCb(sum, n));
            e.at(x0, y0, 2) = Kel8u(m.yuv ? fullV(sum, lumaSums) : studioCr(sum, n));
        }
    if (m.tail == Tail::LumaAndCb && w % 2 == 1)
        for (int y = 0; y < h; ++y) e.at(w - 1, y, 1) = Kel8u(studioCb(pixel(w - 1, y), 1));
}

// Where packed row y begins, in bytes from pSrc: y * srcStep, but in the
// 4:2:0 and YUV members the second row of a pair is srcStep >> 1 elements
// past the first.
long sourceRowOffset(const ToYcc& m, int srcStep, int y)
{
    if (m.yCell == 1) return long(y) * srcStep;
    return long(y / 2) * 2 * srcStep + (y % 2) * long(srcStep >> 1) * 2;
}

class PackedToYcc : public ::testing::TestWithParam<ToYcc> {
protected:
    // The member on `src` (packed words read through `word`) into a fresh
    // destination: its status, every byte as the model says, the rest as it was.
    template <typename Word>
    void expectConverts(Image& src, Word word, int w, int h, Placement placement = Placement::Guarded,
                        std::array<int, 2> wider = {0, 0})
    {
        const ToYcc& m = GetParam();
        Image dst = destination(m, w, h, placement, wider), expected = destination(m, w, h, Placement::Guarded, wider);
        dst.fillWith(40);
        expected.fillWith(40);
        expectedYcc(m, word, expected, w, h);
        expectWrites(statusOf(m, w, h), m.call, src, dst, expected, {w, h});
    }
    void expectRandom(int w, int h, Placement placement = Placement::Guarded, std::array<int, 2> wider = {0, 0})
    {
        Image src = packedImage(w, h, placement);
        src.fill(std::uint32_t(w * 13 + h));
        expectConverts(src, [&](int x, int y) { return src.at<Kel16u>(x, y, 0); }, w, h, placement, wider);
    }
    // A fenced source whose rows lie where the member's stride rule puts them.
    void expectThroughStride(int w, int h, int srcStep)
    {
        const ToYcc& m = GetParam();
        Span span = spanFor(h, 2 * w, [&](int y) { return sourceRowOffset(m, srcStep, y); }, Placement::Fenced);
        span.bytes.fillRandom(std::uint32_t(srcStep + 1000));
        Image view = packedImage(w, h);
        view.pointers[0] = span.at(0);
        view.steps[0] = srcStep;
        const auto before = span.bytes.rows();
        SCOPED_TRACE("srcStep " + std::to_string(srcStep));
        expectConverts(view, [&](int x, int y) { return span.word(sourceRowOffset(m, srcStep, y) + 2 * x); }, w, h);
        EXPECT_EQ(before, span.bytes.rows());
        EXPECT_TRUE(span.bytes.fenceIntact());
    }
};

TEST_P(PackedToYcc, RandomImagesMatchTheModelAtEverySize)
{
    const ToYcc& m = GetParam();
    for (int w : {1, 2, 3, 4, 5, 6, 7, 8, 9, 16, 31, 67})
        for (int h : {1, 2, 3, 4, 5})
            if (w >= m.minWidth && h >= m.minHeight) expectRandom(w, h);
}

TEST_P(PackedToYcc, WideImagesInFencedBuffers)
{
    const ToYcc& m = GetParam();
    for (auto [w, h] : {std::pair{67, 5}, {130, 4}, {257, 3}, {m.minWidth, m.minHeight}})
        expectRandom(w, h, Placement::Fenced);
}

// Each cell flat in its own packed value, all 2^16 of them: every pixel's
// luma and every value's chroma of a whole group.
TEST_P(PackedToYcc, EveryPackedValueFillsOneGroup)
{
    const ToYcc& m = GetParam();
    const int w = 256 * m.xCell, h = 256 * m.yCell;
    Image src = packedImage(w, h);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) src.at<Kel16u>(x, y, 0) = Kel16u(y / m.yCell * 256 + x / m.xCell);
    expectConverts(src, [&](int x, int y) { return src.at<Kel16u>(x, y, 0); }, w, h);
}

// The lone last pixel of an odd width takes every packed value once: its Y
// and a Cb of its own, and no Cr byte.
class PackedToYccPairs : public PackedToYcc {};
class PackedToYccPlanes : public PackedToYcc {};
class PackedToYcc555 : public PackedToYcc {};

TEST_P(PackedToYccPairs, TheLonePixelOfAnOddWidthTakesEveryValue)
{
    const int w = 3, h = 65536;
    Image src = packedImage(w, h, Placement::Fenced);
    src.fill(5);
    for (int y = 0; y < h; ++y) src.at<Kel16u>(2, y, 0) = Kel16u(y);
    expectConverts(src, [&](int x, int y) { return src.at<Kel16u>(x, y, 0); }, w, h, Placement::Fenced);
}

TEST_P(PackedToYcc, SourceRowsFollowAWideOrNegativeEvenStride)
{
    const int w = 9, h = 5;
    for (int srcStep : {2 * w + 22, 2 * w, -(2 * w + 4)}) expectThroughStride(w, h, srcStep);
}

// An odd srcStep: in the 4:2:0 and YUV members the second row of a pair
// sits one byte short of y * srcStep (and one element short of it going
// upward), so every row stays on an even byte; in the others rows lie
// y * srcStep bytes on, odd ones at odd bytes.
TEST_P(PackedToYcc, AnOddSrcStepTakesTheMembersRowAddresses)
{
    const int w = 9, h = 5;
    for (int srcStep : {2 * w + 7, 2 * w + 1, -(2 * w + 3)}) expectThroughStride(w, h, srcStep);
}

// Chroma planes of different widths: each plane's stride is its own, in the
// YCrCb members too, where planes and strides go together.
TEST_P(PackedToYccPlanes, EachChromaPlaneKeepsItsOwnStride)
{
    for (std::array<int, 2> wider : {std::array{3, 0}, std::array{0, 6}}) expectRandom(9, 6, Placement::Guarded, wider);
}

// The member beside its sibling of the other field widths gives the same
// bytes where the sibling's words are the same colour: a 565 word whose
// green has a clear low bit, in 555 order.
TEST_P(PackedToYcc, TheOtherPackingReadsTheSameColours)
{
    const ToYcc& m = GetParam();
    const ToYcc& other = toYcc(m.sibling);
    const int w = 11, h = 4;
    Image src = packedImage(w, h), mine = destination(m, w, h), theirs = destination(other, w, h);
    src.fill(23);
    Image twin = packedImage(w, h);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const Fields f = fieldsOf(m.packing, src.at<Kel16u>(x, y, 0));
            const int green = m.packing == 565 ? f.middle & ~1 : f.middle;  // a level both widths hold
            src.at<Kel16u>(x, y, 0) = Kel16u(f.low + green * 32 + f.high * (m.packing == 565 ? 2048 : 1024));
            twin.at<Kel16u>(x, y, 0) = Kel16u(f.low + (other.packing == 565 ? green * 2 : green / 2) * 32 +
                                              f.high * (other.packing == 565 ? 2048 : 1024));
        }
    mine.fillWith(40);
    theirs.fillWith(40);
    EXPECT_EQ(statusOf(m, w, h), m.call(src, mine, {w, h}));
    EXPECT_EQ(statusOf(other, w, h), other.call(twin, theirs, {w, h}));
    EXPECT_EQ(mine.rows(), theirs.rows());
}

TEST_P(PackedToYcc555, Bit15OfA555PixelIsIgnored)
{
    const ToYcc& m = GetParam();
    const int w = 10, h = 4;
    Image low = packedImage(w, h), high = packedImage(w, h), a = destination(m, w, h), b = destination(m, w, h);
    low.fill(31);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const Kel16u v = low.at<Kel16u>(x, y, 0);
            low.at<Kel16u>(x, y, 0) = Kel16u(v & 0x7FFF);
            high.at<Kel16u>(x, y, 0) = Kel16u(v | 0x8000);
        }
    a.fillWith(40);
    b.fillWith(40);
    EXPECT_EQ(statusOf(m, w, h), m.call(low, a, {w, h}));
    EXPECT_EQ(statusOf(m, w, h), m.call(high, b, {w, h}));
    EXPECT_EQ(a.rows(), b.rows());
}

// Null pointers and null planes first, then the size; no stride test.
TEST_P(PackedToYcc, ArgumentTestsInTheFamilysOrder)
{
    const ToYcc& m = GetParam();
    Image src = packedImage(8, 4), dst = destination(m, 8, 4);
    expectArgumentOrder(m.call, src, dst, {8, 4}, {m.minWidth, m.minHeight}, true);
}

std::vector<ToYcc> toYccWhere(bool (*keep)(const ToYcc&))
{
    std::vector<ToYcc> out;
    std::copy_if(std::begin(kToYcc), std::end(kToYcc), std::back_inserter(out), keep);
    return out;
}

INSTANTIATE_TEST_SUITE_P(Packed16In, PackedToYcc, ::testing::ValuesIn(kToYcc), memberName);
INSTANTIATE_TEST_SUITE_P(Packed16In, PackedToYccPairs,
                         ::testing::ValuesIn(toYccWhere([](const ToYcc& m) { return m.tail == Tail::LumaAndCb; })), memberName);
INSTANTIATE_TEST_SUITE_P(Packed16In, PackedToYccPlanes,
                         ::testing::ValuesIn(toYccWhere([](const ToYcc& m) { return m.layout != Layout::Pairs; })), memberName);
INSTANTIATE_TEST_SUITE_P(Packed16In, PackedToYcc555, ::testing::ValuesIn(toYccWhere([](const ToYcc& m) { return m.packing == 555; })),
                         memberName);

TEST(PackedToYccCases, TheYCrCbMembersWriteTheYCbCrPlanesExchanged)
{
    for (auto [crFirst, cbFirst] : {std::pair{"keliBGR565ToYCrCb420_16u8u_C3P3R", "keliBGR565ToYCbCr420_16u8u_C3P3R"},
                                    {"keliBGR555ToYCrCb420_16u8u_C3P3R", "keliBGR555ToYCbCr420_16u8u_C3P3R"}}) {
        const ToYcc &a = toYcc(crFirst), &b = toYcc(cbFirst);
        const int w = 6, h = 4;
        Image src = packedImage(w, h), exchanged = destination(b, w, h), inOrder = destination(b, w, h);
        src.fill(8);
        exchanged.fillWith(40);
        inOrder.fillWith(40);
        ASSERT_EQ(kelOk, a.call(src, exchanged, {w, h}));
        ASSERT_EQ(kelOk, b.call(src, inOrder, {w, h}));
        for (int y = 0; y < h; ++y) {
            EXPECT_EQ(0, std::memcmp(exchanged.row(0, y), inOrder.row(0, y), w)) << crFirst << " luma row " << y;
            if (y >= h / 2) continue;
            EXPECT_EQ(0, std::memcmp(exchanged.row(1, y), inOrder.row(2, y), w / 2)) << crFirst << ": Cr in plane 1";
            EXPECT_EQ(0, std::memcmp(exchanged.row(2, y), inOrder.row(1, y), w / 2)) << crFirst << ": Cb in plane 2";
        }
        EXPECT_TRUE(exchanged.intact() && inOrder.intact());
    }
}

// White, black, then pure blue alone: Y0, Cb, Y1, Cr, Y2, Cb2, six bytes.
TEST(PackedToYccCases, ThreePixelsOfPairsWriteSixBytes)
{
    const Kel16u row[3] = {0xFFFF, 0x0000, 0x001F};
    GuardedImage out(6, 1, Placement::Fenced);
    out.fill(40);
    ASSERT_EQ(kelOk, keliBGR565ToYCbCr422_16u8u_C3C2R(row, 6, out.data(), 6, {3, 1}));
    EXPECT_EQ((std::vector<Kel8u>{231, 127, 16, 127, 40, 236}), out.rows());
    EXPECT_TRUE(out.fenceIntact());
}

TEST(PackedToYccCases, FourOneOneAtWidth5LeavesTheFifthLumaAndWarns)
{
    const int w = 5, h = 2;
    Image src = packedImage(w, h), dst = destination(toYcc("keliBGR565ToYCbCr411_16u8u_C3P3R"), w, h);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) src.at<Kel16u>(x, y, 0) = 0xFFFF;  // white: Y 231, Cb and Cr 126
    dst.fillWith(40);
    EXPECT_EQ(kelWarnOddSize, keliBGR565ToYCbCr411_16u8u_C3P3R(words(src), src.step(), dst.out(), dst.steps.data(), {w, h}));
    for (int y = 0; y < h; ++y) {
        EXPECT_EQ((std::vector<Kel8u>{231, 231, 231, 231, 40}), std::vector<Kel8u>(dst.row(0, y), dst.row(0, y) + 5));
        EXPECT_EQ(126, dst.row(1, y)[0]);
        EXPECT_EQ(126, dst.row(2, y)[0]);
    }
    EXPECT_TRUE(dst.intact());
}

// 4x4 luma and 2x2 chroma written; the fifth column and row not even in luma.
TEST(PackedToYccCases, Yuv420At5x5WritesFourByFourAndWarns)
{
    const ToYcc& m = toYcc("keliBGR555ToYUV420_16u8u_C3P3R");
    Image src = packedImage(5, 5), dst = destination(m, 5, 5), expected = destination(m, 5, 5);
    src.fill(3);
    dst.fillWith(40);
    expected.fillWith(40);
    expectedYcc(m, [&](int x, int y) { return src.at<Kel16u>(x, y, 0); }, expected, 5, 5);
    ASSERT_EQ(kelWarnOddSize, m.call(src, dst, {5, 5}));
    EXPECT_EQ(expected.rows(), dst.rows());
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 5; ++x) {
            const int want = x < 4 && y < 4 ? fullLuma(widenedBgr(555, src.at<Kel16u>(x, y, 0))) : 40;
            EXPECT_EQ(want, dst.at(x, y, 0)) << x << ", " << y;
        }
    EXPECT_TRUE(dst.intact());  // chroma planes two samples wide, two rows tall
}

TEST(PackedToYccCases, YCbCr420At5x5WritesEveryLumaAndTwoByTwoChroma)
{
    const ToYcc& m = toYcc("keliBGR565ToYCbCr420_16u8u_C3P3R");
    Image src = packedImage(5, 5), dst = destination(m, 5, 5), expected = destination(m, 5, 5);
    src.fill(4);
    dst.fillWith(40);
    expected.fillWith(40);
    expectedYcc(m, [&](int x, int y) { return src.at<Kel16u>(x, y, 0); }, expected, 5, 5);
    ASSERT_EQ(kelOk, m.call(src, dst, {5, 5}));
    EXPECT_EQ(expected.rows(), dst.rows());
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 5; ++x) EXPECT_EQ(studioLuma(widenedBgr(565, src.at<Kel16u>(x, y, 0))), dst.at(x, y, 0)) << x << ", " << y;
    EXPECT_TRUE(dst.intact());
}

// Flat pure red: Y 74, U 91, and V 280 clamped to 255.
TEST(PackedToYccCases, Yuv420ClampsVOfPureRed)
{
    const ToYcc& m = toYcc("keliBGR565ToYUV420_16u8u_C3P3R");
    Image src = packedImage(2, 2), dst = destination(m, 2, 2);
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 2; ++x) src.at<Kel16u>(x, y, 0) = 0xF800;
    ASSERT_EQ(kelOk, m.call(src, dst, {2, 2}));
    EXPECT_EQ((std::array<int, 6>{74, 74, 74, 74, 91, 255}),
              (std::array<int, 6>{dst.at(0, 0, 0), dst.at(1, 0, 0), dst.at(0, 1, 0), dst.at(1, 1, 0), dst.at(0, 0, 1), dst.at(0, 0, 2)}));
    EXPECT_TRUE(dst.intact());
}

TEST(PackedToYccCases, ANullPlaneOfTheYCrCbMemberComesBeforeTheSize)
{
    Kel16u src[4] = {};
    Kel8u y[4], cr[1], cb[1];
    const int steps[3] = {2, 1, 1};
    for (int p = 0; p < 3; ++p) {
        Kel8u* planes[3] = {y, cr, cb};
        planes[p] = nullptr;
        EXPECT_EQ(kelErrNullPointer, keliBGR565ToYCrCb420_16u8u_C3P3R(src, 4, planes, steps, {0, 0})) << "plane " << p;
        EXPECT_EQ(kelErrNullPointer, keliBGR565ToYCrCb420_16u8u_C3P3R(src, 4, planes, steps, {1, 1})) << "plane " << p;
    }
}

// ---- 4:1:1 planes to packed BGR -----------------------------------------------------------------

template <auto F> KelResult fromPlanes(Image& s, Image& d, KelImageSize z) { return F(s.in(), s.steps.data(), words(d), d.step(), z); }

struct From411 {
    const char* name;
    Call call;
    int packing;
};
void PrintTo(const From411& m, std::ostream* os) { *os << m.name; }

const From411 kFrom411[] = {
    {NAMED(fromPlanes, keliYCbCr411ToBGR565_8u16u_P3C3R), 565},
    {NAMED(fromPlanes, keliYCbCr411ToBGR555_8u16u_P3C3R), 555},
};

// Chroma planes w / 4 samples wide and as tall as the luma plane.
Image source411(int w, int h, Placement placement = Placement::Guarded) { return ycc(Ycc::Planes, w, h, 4, 1, false, placement); }

// Pixel x takes the chroma of its group, or past the last whole group that of the last one.
int chromaColumn(int x, int w) { return std::min(x / 4, w / 4 - 1) * 4; }
Kel16u expected411(int packing, Image& src, int x, int y, int w)
{
    return packedFrom411(packing, src.at(x, y, 0), src.at(chromaColumn(x, w), y, 1), src.at(chromaColumn(x, w), y, 2));
}

class YCbCr411ToPacked : public ::testing::TestWithParam<From411> {
protected:
    void expectConverts(Image& src, int w, int h, Placement placement = Placement::Guarded)
    {
        const From411& m = GetParam();
        Image dst = packedImage(w, h, placement), expected = packedImage(w, h);
        dst.fillWith(0x3C);
        expected.fillWith(0x3C);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) expected.at<Kel16u>(x, y, 0) = expected411(m.packing, src, x, y, w);
        expectWrites(w % 4 ? kelWarnOddSize : kelOk, m.call, src, dst, expected, {w, h});
    }
    void expectRandom(int w, int h, Placement placement = Placement::Guarded)
    {
        Image src = source411(w, h, placement);
        src.fill(std::uint32_t(w * 17 + h));
        expectConverts(src, w, h, placement);
    }
};

TEST_P(YCbCr411ToPacked, RandomImagesMatchTheModelWithTheTailOnTheLastGroup)
{
    for (int w = 4; w <= 13; ++w)
        for (int h : {1, 2, 3}) expectRandom(w, h);
}

TEST_P(YCbCr411ToPacked, WideImagesInFencedBuffers)
{
    for (auto [w, h] : {std::pair{67, 3}, {64, 2}, {131, 2}, {4, 1}, {7, 1}}) expectRandom(w, h, Placement::Fenced);
}

// Flat images whose colour puts one of the three sums on a level's edge:
// there an offset or a weight one unit off shows.
TEST_P(YCbCr411ToPacked, SumsOnALevelEdgeLandAsTheFormulasSay)
{
    onEdgeColours(64, [](std::array<int, 3> c) { return setEdge(kU, c); }, [&](std::array<int, 3> c) {
        Image src = source411(6, 1);
        for (int x = 0; x < 6; ++x) src.at(x, 0, 0) = Kel8u(c[0]);
        src.at(0, 0, 1) = Kel8u(c[1]);
        src.at(0, 0, 2) = Kel8u(c[2]);
        expectConverts(src, 6, 1);
    });
}

// Every (Y, Cb, Cr): Cb by group, Cr by row, Y by call and place in the
// group; 2^24 pixels. The rounded set's three sums are taken apart into a
// term of each sample, so that a pixel costs a few additions; every 97th
// pixel is held to the whole model as well.
TEST_P(YCbCr411ToPacked, EveryColourMatchesTheModel)
{
    const From411& m = GetParam();
    const int w = 1024, h = 256;
    Image src = source411(w, h), dst = packedImage(w, h);
    std::array<long long, 256> lumaR{}, lumaG{}, lumaB{}, crR{}, cbG{}, crG{}, cbB{};
    for (int i = 0; i < 256; ++i) {
        lumaR[i] = kU.luma * i + kU.offR;
        lumaG[i] = kU.luma * i + kU.offG;
        lumaB[i] = kU.luma * i + kU.offB;
        crR[i] = kU.crR * (i - kU.zero);
        cbG[i] = kU.cbG * (i - kU.zero);
        crG[i] = kU.crG * (i - kU.zero);
        cbB[i] = kU.cbB * (i - kU.zero);
    }
    auto colour = [](long long sum) { return clampByte(int(sum >> 16)); };  // the floor of sum / 2^16
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; x += 4) {
            src.at(x, y, 1) = Kel8u(x / 4);
            src.at(x, y, 2) = Kel8u(y);
        }
    int wrong = 0;
    for (int k = 0; k < 64 && wrong == 0; ++k) {
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) src.row(0, y)[x] = Kel8u(4 * k + x % 4);
        ASSERT_EQ(kelOk, m.call(src, dst, {w, h}));
        for (int y = 0; y < h; ++y) {
            const Kel8u* luma = src.row(0, y);
            const Kel16u* out = reinterpret_cast<const Kel16u*>(dst.row(0, y));
            for (int x = 0; x < w; ++x) {
                const int Y = luma[x], cb = x / 4, cr = y;
                const Trio c{colour(lumaR[Y] + crR[cr]), colour(lumaG[Y] - cbG[cb] - crG[cr]), colour(lumaB[Y] + cbB[cb])};
                if ((x + w * y) % 97 == 0) ASSERT_EQ(toRgb(kU, Y, cb, cr), c);
                const Kel16u want = packedBgr(m.packing, c);
                if (want != out[x] && wrong++ < 3)
                    ADD_FAILURE() << m.name << " Y " << Y << " Cb " << cb << " Cr " << cr << ": want " << hex(want)
                                  << " got " << hex(out[x]);
            }
        }
    }
    EXPECT_EQ(0, wrong);
    EXPECT_TRUE(src.intact() && dst.intact());
}

// dstStep is taken in bytes as it is: an odd one puts every other row at an
// odd byte address, read here byte by byte.
TEST_P(YCbCr411ToPacked, AnOddDstStepPlacesRowsAtOddBytes)
{
    const From411& m = GetParam();
    const int w = 9, h = 4;
    for (int dstStep : {2 * w + 3, 2 * w + 1}) {
        Span span = spanFor(h, 2 * w, [&](int y) { return long(y) * dstStep; }, Placement::Fenced);
        Image src = source411(w, h), view = packedImage(w, h);
        src.fill(std::uint32_t(dstStep));
        span.bytes.fill(0x3C);
        std::vector<Kel8u> expected(span.bytes.rows());
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                const Kel16u v = expected411(m.packing, src, x, y, w);
                std::memcpy(expected.data() + span.first + long(y) * dstStep + 2 * x, &v, 2);
            }
        view.pointers[0] = span.at(0);
        view.steps[0] = dstStep;
        EXPECT_EQ(kelWarnOddSize, m.call(src, view, {w, h})) << "dstStep " << dstStep;
        EXPECT_EQ(expected, span.bytes.rows()) << "dstStep " << dstStep;
        EXPECT_TRUE(src.intact() && span.bytes.fenceIntact());
        for (int y = 0; y < h; ++y)  // the same words, read back from their odd addresses
            EXPECT_EQ(expected411(m.packing, src, w - 1, y, w), span.word(long(y) * dstStep + 2 * (w - 1))) << y;
    }
}

// Null image pointers and null planes first, then width below 4 or height below 1.
TEST_P(YCbCr411ToPacked, ArgumentTestsInTheFamilysOrder)
{
    Image src = source411(8, 2), dst = packedImage(8, 2);
    expectArgumentOrder(GetParam().call, src, dst, {8, 2}, {4, 1}, true);
}

INSTANTIATE_TEST_SUITE_P(Packed16In, YCbCr411ToPacked, ::testing::ValuesIn(kFrom411), memberName);

// Width 7: one chroma sample a row serves all seven pixels. Row 0 white, row
// 1 black, row 2 the sample's own colour at Y 128.
TEST(YCbCr411ToPackedCases, Width7ReadsOneChromaSampleARowAndWarns)
{
    const int w = 7, h = 3;
    Image src = source411(w, h, Placement::Fenced);
    const int luma[3] = {235, 16, 128}, cb[3] = {128, 128, 90}, cr[3] = {128, 128, 200};
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) src.at(x, y, 0) = Kel8u(luma[y]);
        src.at(0, y, 1) = Kel8u(cb[y]);
        src.at(0, y, 2) = Kel8u(cr[y]);
    }
    for (auto [convert, packing] : {std::pair{&keliYCbCr411ToBGR565_8u16u_P3C3R, 565}, {&keliYCbCr411ToBGR555_8u16u_P3C3R, 555}}) {
        Image dst = packedImage(w, h, Placement::Fenced);
        ASSERT_EQ(kelWarnOddSize, convert(src.in(), src.steps.data(), words(dst), dst.step(), {w, h}));
        const Kel16u want[3] = {Kel16u(packing == 565 ? 0xFFFF : 0x7FFF), 0, packedFrom411(packing, 128, 90, 200)};
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) EXPECT_EQ(hex(want[y]), hex(dst.at<Kel16u>(x, y, 0))) << packing << " at " << x << ", " << y;
        EXPECT_TRUE(src.intact() && dst.intact());
    }
}

} // namespace

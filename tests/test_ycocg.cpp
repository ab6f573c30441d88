// YCoCg: pixel-order BGR (8-bit, or signed 16-bit) to and from three planes
// Y, Co, Cg, by the lossy integer transform with rounding terms and by the
// reversible lifting steps. Every member against the arithmetic written here
// (32-bit sums, arithmetic shifts, 16-bit wrap-around where a result is
// 16-bit, clamps for 8-bit pixels) on random samples over the types' whole
// ranges, with guards and row padding of every plane checked; the fourth
// channel of C4 pixels, the null pointers, empty sizes and the worked values;
// and the exact round trip of every 8-bit pixel through the reversible pair.
#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "kelcc.h"
#include "support/layouts.h"

using namespace kt;

namespace {

// ---- the arithmetic, in this file's terms ---------------------------------------------------

// The low 16 bits of a sum, read as a signed 16-bit value.
int low16(long long v) { return static_cast<Kel16s>(static_cast<Kel16u>(v & 0xFFFF)); }
int toByte(int v) { return v < 0 ? 0 : v > 255 ? 255 : v; }

// Plane and pixel types of a member.
enum class Depth { U8, S16, S32 };
int bytesOf(Depth d) { return d == Depth::U8 ? 1 : d == Depth::S16 ? 2 : 4; }

using Bgr = std::array<int, 3>;    // B, G, R
using Planes = std::array<int, 3>; // Y, Co, Cg

// The lossy forward transform; 16-bit planes keep the low 16 bits.
Planes plainForward(Bgr p, Depth planes)
{
    const int b = p[0], g = p[1], r = p[2];
    Planes out{(r + 2 * g + b + 2) >> 2, (r - b + 1) >> 1, (2 * g - r - b + 2) >> 2};
    if (planes == Depth::S16)
        for (int& v : out) v = low16(v);
    return out;
}

// The lifting steps in order. With 16-bit planes, Co and Cg are cut to 16
// bits before they are used further and Y is stored by its low 16 bits.
Planes reversibleForward(Bgr p, Depth planes)
{
    const bool narrow = planes == Depth::S16;
    const int b = p[0], g = p[1], r = p[2];
    int co = r - b;
    if (narrow) co = low16(co);
    const int t = b + (co >> 1);
    int cg = g - t;
    if (narrow) cg = low16(cg);
    int y = t + (cg >> 1);
    if (narrow) y = low16(y);
    return {y, co, cg};
}

// The lossy inverse: each sum cut to 16 bits, then for 8-bit pixels clamped.
Bgr plainInverse(Planes q, Depth pixels)
{
    const long long y = q[0], co = q[1], cg = q[2];
    Bgr out{low16(y - co - cg), low16(y + cg), low16(y + co - cg)};
    if (pixels == Depth::U8)
        for (int& v : out) v = toByte(v);
    return out;
}

// The lifting steps backwards, t, G, B and R each cut to 16 bits as they are
// computed (32-bit planes: computed in 32 bits, stored by their low 16).
Bgr reversibleInverse(Planes q, Depth planes, Depth pixels)
{
    const long long y = q[0], co = q[1], cg = q[2];
    long long t, g, b, r;
    if (planes == Depth::S32) {
        t = static_cast<Kel32s>(static_cast<std::uint32_t>(y - (cg >> 1)));
        g = static_cast<Kel32s>(static_cast<std::uint32_t>(cg + t));
        b = static_cast<Kel32s>(static_cast<std::uint32_t>(t - (co >> 1)));
        r = static_cast<Kel32s>(static_cast<std::uint32_t>(b + co));
    } else {
        t = low16(y - (cg >> 1));
        g = low16(cg + t);
        b = low16(t - (co >> 1));
        r = low16(b + co);
    }
    Bgr out{low16(b), low16(g), low16(r)};
    if (pixels == Depth::U8)
        for (int& v : out) v = toByte(v);
    return out;
}

TEST(YCoCgModel, TheWorkedValues)
{
    EXPECT_EQ((Planes{255, 0, 0}), plainForward({255, 255, 255}, Depth::S16));
    EXPECT_EQ((Planes{64, 128, -64}), plainForward({0, 0, 255}, Depth::S16));
    EXPECT_EQ((Bgr{0, 0, 255}), plainInverse({64, 128, -64}, Depth::U8));
    EXPECT_EQ((Planes{0, 0, 0}), plainForward({1, 0, 0}, Depth::S16));
    EXPECT_EQ((Planes{63, 255, -127}), reversibleForward({0, 0, 255}, Depth::S16));
    EXPECT_EQ((Bgr{0, 0, 255}), reversibleInverse({63, 255, -127}, Depth::S16, Depth::U8));
    EXPECT_EQ(-1, reversibleForward({-32768, 0, 32767}, Depth::S16)[1]);
    EXPECT_EQ(65535, reversibleForward({-32768, 0, 32767}, Depth::S32)[1]);
    EXPECT_EQ((Bgr{255, 255, 0}), plainInverse({32767, 1, 0}, Depth::U8));
}

// ---- samples in images ------------------------------------------------------------------------

int get(Image& image, int x, int y, int c, Depth d)
{
    switch (d) {
    case Depth::U8: return image.at<Kel8u>(x, y, c);
    case Depth::S16: return image.at<Kel16s>(x, y, c);
    default: return image.at<Kel32s>(x, y, c);
    }
}
void put(Image& image, int x, int y, int c, Depth d, int v)
{
    switch (d) {
    case Depth::U8: image.at<Kel8u>(x, y, c) = static_cast<Kel8u>(v); break;
    case Depth::S16: image.at<Kel16s>(x, y, c) = static_cast<Kel16s>(v); break;
    default: image.at<Kel32s>(x, y, c) = static_cast<Kel32s>(v);
    }
}

// Pixels B, G, R (and a fourth channel) in memory order; planes Y, Co, Cg
// sharing one stride. Both with row padding.
Image pixelImage(int w, int h, int pitch, Depth d) { return pixels(w, h, pitch, false, std::size_t(bytesOf(d))); }
Image planeImage(int w, int h, Depth d) { return planes(w, h, 3, std::size_t(bytesOf(d))); }

const std::vector<int> kWidths{1, 2, 3, 4, 5, 6, 7, 8, 9, 17, 64, 67, 1000};

// Samples every pair of which shows a wrap: the ends of the type and their
// neighbours, 0 and 1 either way.
std::vector<int> extremes(Depth d)
{
    if (d == Depth::U8) return {0, 1, 2, 127, 128, 253, 254, 255};
    if (d == Depth::S16) return {-32768, -32767, -2, -1, 0, 1, 2, 255, 256, 32766, 32767};
    return {INT_MIN, INT_MIN + 1, -65536, -32769, -32768, -1, 0, 1, 32767, 32768, 65535, INT_MAX - 1, INT_MAX};
}

// ---- forward members --------------------------------------------------------------------------

struct Forward {
    const char* name;
    ErasedCall call;
    Depth src, planes;
    int pitch;
    bool rev;
    Planes model(Bgr p) const { return rev ? reversibleForward(p, planes) : plainForward(p, planes); }
};
void PrintTo(const Forward& m, std::ostream* os) { *os << m.name; }

#define FORWARD(F, S, D) #F, erase<const S*, D* const*, F>
// The members of four samples a pixel.
template <typename Member, std::size_t N>
std::vector<Member> fourChannel(const Member (&members)[N])
{
    std::vector<Member> out;
    for (const Member& m : members)
        if (m.pitch == 4) out.push_back(m);
    return out;
}

const Forward kForward[] = {
    {FORWARD(keliBGRToYCoCg_8u16s_C3P3R, Kel8u, Kel16s), Depth::U8, Depth::S16, 3, false},
    {FORWARD(keliBGRToYCoCg_8u16s_C4P3R, Kel8u, Kel16s), Depth::U8, Depth::S16, 4, false},
    {FORWARD(keliSBGRToYCoCg_16s_C3P3R, Kel16s, Kel16s), Depth::S16, Depth::S16, 3, false},
    {FORWARD(keliSBGRToYCoCg_16s_C4P3R, Kel16s, Kel16s), Depth::S16, Depth::S16, 4, false},
    {FORWARD(keliSBGRToYCoCg_16s32s_C3P3R, Kel16s, Kel32s), Depth::S16, Depth::S32, 3, false},
    {FORWARD(keliSBGRToYCoCg_16s32s_C4P3R, Kel16s, Kel32s), Depth::S16, Depth::S32, 4, false},
    {FORWARD(keliBGRToYCoCg_Rev_8u16s_C3P3R, Kel8u, Kel16s), Depth::U8, Depth::S16, 3, true},
    {FORWARD(keliBGRToYCoCg_Rev_8u16s_C4P3R, Kel8u, Kel16s), Depth::U8, Depth::S16, 4, true},
    {FORWARD(keliSBGRToYCoCg_Rev_16s_C3P3R, Kel16s, Kel16s), Depth::S16, Depth::S16, 3, true},
    {FORWARD(keliSBGRToYCoCg_Rev_16s_C4P3R, Kel16s, Kel16s), Depth::S16, Depth::S16, 4, true},
    {FORWARD(keliSBGRToYCoCg_Rev_16s32s_C3P3R, Kel16s, Kel32s), Depth::S16, Depth::S32, 3, true},
    {FORWARD(keliSBGRToYCoCg_Rev_16s32s_C4P3R, Kel16s, Kel32s), Depth::S16, Depth::S32, 4, true},
};

class ToYCoCg : public ::testing::TestWithParam<Forward> {
protected:
    Image source(int w, int h) const { return pixelImage(w, h, GetParam().pitch, GetParam().src); }
    Image destination(int w, int h) const
    {
        Image d = planeImage(w, h, GetParam().planes);
        d.fillWith(0x3C);
        return d;
    }
    // The planes as the model has them, the source unchanged, every guard intact.
    void expectPlanes(Image& src, int w, int h)
    {
        const Forward& m = GetParam();
        Image dst = destination(w, h), expected = destination(w, h);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                const Bgr p{get(src, x, y, 0, m.src), get(src, x, y, 1, m.src), get(src, x, y, 2, m.src)};
                const Planes q = m.model(p);
                for (int c = 0; c < 3; ++c) put(expected, x, y, c, m.planes, q[c]);
            }
        expectWrites(kelOk, byImage(m.call), src, dst, expected, {w, h});
    }
};

TEST_P(ToYCoCg, RandomSamplesOverTheWholeRange)
{
    for (int w : kWidths)
        for (int h : {1, 2, 3}) {
            Image src = source(w, h);
            src.fill(std::uint32_t(w * 13 + h));
            expectPlanes(src, w, h);
        }
}

// Every combination of the extreme samples, one pixel each.
TEST_P(ToYCoCg, EveryCombinationOfExtremeSamples)
{
    const std::vector<int> e = extremes(GetParam().src);
    const int n = int(e.size()), w = n * n;
    Image src = source(w, n);
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < w; ++x) {
            put(src, x, y, 0, GetParam().src, e[x % n]);
            put(src, x, y, 1, GetParam().src, e[x / n]);
            put(src, x, y, 2, GetParam().src, e[y]);
            if (GetParam().pitch == 4) put(src, x, y, 3, GetParam().src, e[(x + y) % n]);
        }
    expectPlanes(src, w, n);
}

// A C4 source's fourth channel is never read: two sources that differ only
// there give the same planes.
class ToYCoCgFour : public ToYCoCg {};

TEST_P(ToYCoCgFour, TheFourthChannelIsNotRead)
{
    const int w = 67, h = 3;
    Image a = source(w, h), b = source(w, h);
    a.fill(7);
    b.fill(7);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            put(a, x, y, 3, GetParam().src, 0);
            put(b, x, y, 3, GetParam().src, x % 2 ? -1 : 77);
        }
    Image da = destination(w, h), db = destination(w, h);
    EXPECT_EQ(kelOk, GetParam().call(a.arg(), a.step(), da.arg(), da.step(), {w, h}));
    EXPECT_EQ(kelOk, GetParam().call(b.arg(), b.step(), db.arg(), db.step(), {w, h}));
    EXPECT_EQ(da.rows(), db.rows());
    EXPECT_TRUE(da.intact() && db.intact());
    expectPlanes(b, w, h);
}

// Each of pSrc, the plane array and every plane pointer: kelErrNullPointer,
// nothing written.
TEST_P(ToYCoCg, NullPointersAreRefused)
{
    Image src = source(4, 3), dst = destination(4, 3);
    src.fill(3);
    const auto before = dst.rows();
    const auto call = [&](KelImageSize z) { return GetParam().call(src.arg(), src.step(), dst.arg(), dst.step(), z); };
    src.absent = true;
    EXPECT_EQ(kelErrNullPointer, call({4, 3})) << "pSrc";
    src.absent = false;
    dst.absent = true;
    EXPECT_EQ(kelErrNullPointer, call({4, 3})) << "pDst";
    dst.absent = false;
    for (int p = 0; p < 3; ++p) {
        Kel8u* const saved = std::exchange(dst.pointers[p], nullptr);
        EXPECT_EQ(kelErrNullPointer, call({4, 3})) << "plane " << p;
        dst.pointers[p] = saved;
    }
    EXPECT_EQ(before, dst.rows());
    EXPECT_TRUE(dst.intact() && src.intact());
}

// Null pointers are the one check, so they are refused at an empty size too.
TEST_P(ToYCoCg, NullPointersAreRefusedAtAnEmptySize)
{
    Image src = source(4, 3), dst = destination(4, 3);
    const auto call = [&](KelImageSize z) { return GetParam().call(src.arg(), src.step(), dst.arg(), dst.step(), z); };
    src.absent = true;
    EXPECT_EQ(kelErrNullPointer, call({0, 3})) << "pSrc";
    src.absent = false;
    dst.pointers[1] = nullptr;
    EXPECT_EQ(kelErrNullPointer, call({4, 0})) << "plane 1";
}

// No size test: a width or height below 1 runs no pixel and is kelOk.
TEST_P(ToYCoCg, AnEmptySizeWritesNothing)
{
    Image src = source(4, 3), dst = destination(4, 3);
    src.fill(5);
    const auto before = dst.rows();
    for (KelImageSize z : {KelImageSize{0, 3}, {4, 0}, {-1, 3}, {4, -1}, {0, 0}, {-7, -7}, {INT_MIN, 3}, {4, INT_MIN}})
        EXPECT_EQ(kelOk, GetParam().call(src.arg(), src.step(), dst.arg(), dst.step(), z)) << z.width << "x" << z.height;
    EXPECT_EQ(before, dst.rows());
    EXPECT_TRUE(dst.intact() && src.intact());
}

const auto memberName = [](const auto& info) { return std::string(info.param.name).substr(4); };
INSTANTIATE_TEST_SUITE_P(YCoCg, ToYCoCg, ::testing::ValuesIn(kForward), memberName);
INSTANTIATE_TEST_SUITE_P(YCoCg, ToYCoCgFour, ::testing::ValuesIn(fourChannel(kForward)), memberName);

// ---- inverse members --------------------------------------------------------------------------

using AlphaCall = KelResult (*)(const void* src, int srcStep, void* dst, int dstStep, KelImageSize size, int alpha);
template <typename S, typename D, KelResult (*F)(const S* const*, int, D*, int, KelImageSize)>
KelResult withoutAlpha(const void* src, int srcStep, void* dst, int dstStep, KelImageSize size, int)
{
    return F(static_cast<const S* const*>(src), srcStep, static_cast<D*>(dst), dstStep, size);
}
template <typename S, typename D, KelResult (*F)(const S* const*, int, D*, int, KelImageSize, D)>
KelResult withAlpha(const void* src, int srcStep, void* dst, int dstStep, KelImageSize size, int alpha)
{
    return F(static_cast<const S* const*>(src), srcStep, static_cast<D*>(dst), dstStep, size, static_cast<D>(alpha));
}

struct Inverse {
    const char* name;
    AlphaCall call;
    Depth planes, dst;
    int pitch;
    bool rev;
    Bgr model(Planes q) const { return rev ? reversibleInverse(q, planes, dst) : plainInverse(q, dst); }
};
void PrintTo(const Inverse& m, std::ostream* os) { *os << m.name; }

#define INVERSE3(F, S, D) #F, withoutAlpha<S, D, F>
#define INVERSE4(F, S, D) #F, withAlpha<S, D, F>
const Inverse kInverse[] = {
    {INVERSE3(keliYCoCgToBGR_16s8u_P3C3R, Kel16s, Kel8u), Depth::S16, Depth::U8, 3, false},
    {INVERSE4(keliYCoCgToBGR_16s8u_P3C4R, Kel16s, Kel8u), Depth::S16, Depth::U8, 4, false},
    {INVERSE3(keliYCoCgToSBGR_16s_P3C3R, Kel16s, Kel16s), Depth::S16, Depth::S16, 3, false},
    {INVERSE4(keliYCoCgToSBGR_16s_P3C4R, Kel16s, Kel16s), Depth::S16, Depth::S16, 4, false},
    {INVERSE3(keliYCoCgToSBGR_32s16s_P3C3R, Kel32s, Kel16s), Depth::S32, Depth::S16, 3, false},
    {INVERSE4(keliYCoCgToSBGR_32s16s_P3C4R, Kel32s, Kel16s), Depth::S32, Depth::S16, 4, false},
    {INVERSE3(keliYCoCgToBGR_Rev_16s8u_P3C3R, Kel16s, Kel8u), Depth::S16, Depth::U8, 3, true},
    {INVERSE4(keliYCoCgToBGR_Rev_16s8u_P3C4R, Kel16s, Kel8u), Depth::S16, Depth::U8, 4, true},
    {INVERSE3(keliYCoCgToSBGR_Rev_16s_P3C3R, Kel16s, Kel16s), Depth::S16, Depth::S16, 3, true},
    {INVERSE4(keliYCoCgToSBGR_Rev_16s_P3C4R, Kel16s, Kel16s), Depth::S16, Depth::S16, 4, true},
    {INVERSE3(keliYCoCgToSBGR_Rev_32s16s_P3C3R, Kel32s, Kel16s), Depth::S32, Depth::S16, 3, true},
    {INVERSE4(keliYCoCgToSBGR_Rev_32s16s_P3C4R, Kel32s, Kel16s), Depth::S32, Depth::S16, 4, true},
};

class FromYCoCg : public ::testing::TestWithParam<Inverse> {
protected:
    Image source(int w, int h) const { return planeImage(w, h, GetParam().planes); }
    Image destination(int w, int h) const
    {
        Image d = pixelImage(w, h, GetParam().pitch, GetParam().dst);
        d.fillWith(0x3C);
        return d;
    }
    KelResult call(Image& s, Image& d, KelImageSize z, int alpha) const
    {
        return GetParam().call(s.arg(), s.step(), d.arg(), d.step(), z, alpha);
    }
    // The pixels as the model has them, alpha in a C4 pixel's fourth channel.
    void expectPixels(Image& src, int w, int h, int alpha)
    {
        const Inverse& m = GetParam();
        Image dst = destination(w, h), expected = destination(w, h);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                const Planes q{get(src, x, y, 0, m.planes), get(src, x, y, 1, m.planes), get(src, x, y, 2, m.planes)};
                const Bgr p = m.model(q);
                for (int c = 0; c < 3; ++c) put(expected, x, y, c, m.dst, p[c]);
                if (m.pitch == 4) put(expected, x, y, 3, m.dst, alpha);
            }
        const auto withAlphaOf = [&](Image& s, Image& d, KelImageSize z) { return call(s, d, z, alpha); };
        expectWrites(kelOk, withAlphaOf, src, dst, expected, {w, h});
    }
    int someAlpha() const { return GetParam().dst == Depth::U8 ? 0xA7 : -12345; }
};

TEST_P(FromYCoCg, RandomSamplesOverTheWholeRange)
{
    for (int w : kWidths)
        for (int h : {1, 2, 3}) {
            Image src = source(w, h);
            src.fill(std::uint32_t(w * 17 + h));
            expectPixels(src, w, h, someAlpha());
        }
}

TEST_P(FromYCoCg, EveryCombinationOfExtremeSamples)
{
    const std::vector<int> e = extremes(GetParam().planes);
    const int n = int(e.size()), w = n * n;
    Image src = source(w, n);
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < w; ++x) {
            put(src, x, y, 0, GetParam().planes, e[x % n]);
            put(src, x, y, 1, GetParam().planes, e[x / n]);
            put(src, x, y, 2, GetParam().planes, e[y]);
        }
    expectPixels(src, w, n, someAlpha());
}

// Small planes, where the 8-bit clamps and the rounding show.
TEST_P(FromYCoCg, PlanesNearTheByteRange)
{
    const int w = 64, h = 3;
    Image src = source(w, h);
    std::uint32_t state = 99;
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < 3; ++c) {
                state = state * 1664525u + 1013904223u;
                put(src, x, y, c, GetParam().planes, c == 0 ? int(state >> 8) % 320 - 32 : int(state >> 8) % 600 - 300);
            }
    expectPixels(src, w, h, someAlpha());
}

// A C4 destination's fourth channel holds alpha in every pixel: 8-bit for
// 16s8u, signed 16-bit otherwise.
class FromYCoCgFour : public FromYCoCg {};

TEST_P(FromYCoCgFour, TheFourthChannelIsAlpha)
{
    const std::vector<int> alphas = GetParam().dst == Depth::U8 ? std::vector<int>{0, 1, 128, 255}
                                                               : std::vector<int>{-32768, -1, 0, 255, 256, 32767};
    for (int alpha : alphas) {
        Image src = source(9, 2);
        src.fill(std::uint32_t(alpha & 0xFF));
        expectPixels(src, 9, 2, alpha);
    }
}

TEST_P(FromYCoCg, NullPointersAreRefused)
{
    Image src = source(4, 3), dst = destination(4, 3);
    src.fill(3);
    const auto before = dst.rows();
    src.absent = true;
    EXPECT_EQ(kelErrNullPointer, call(src, dst, {4, 3}, 1)) << "pSrc";
    src.absent = false;
    for (int p = 0; p < 3; ++p) {
        Kel8u* const saved = std::exchange(src.pointers[p], nullptr);
        EXPECT_EQ(kelErrNullPointer, call(src, dst, {4, 3}, 1)) << "plane " << p;
        src.pointers[p] = saved;
    }
    dst.absent = true;
    EXPECT_EQ(kelErrNullPointer, call(src, dst, {4, 3}, 1)) << "pDst";
    dst.absent = false;
    EXPECT_EQ(before, dst.rows());
    EXPECT_TRUE(dst.intact() && src.intact());
}

TEST_P(FromYCoCg, NullPointersAreRefusedAtAnEmptySize)
{
    Image src = source(4, 3), dst = destination(4, 3);
    Kel8u* const saved = std::exchange(src.pointers[2], nullptr);
    EXPECT_EQ(kelErrNullPointer, call(src, dst, {0, 3}, 1)) << "plane 2";
    src.pointers[2] = saved;
    dst.absent = true;
    EXPECT_EQ(kelErrNullPointer, call(src, dst, {4, -2}, 1)) << "pDst";
}

TEST_P(FromYCoCg, AnEmptySizeWritesNothing)
{
    Image src = source(4, 3), dst = destination(4, 3);
    src.fill(5);
    const auto before = dst.rows();
    for (KelImageSize z : {KelImageSize{0, 3}, {4, 0}, {-1, 3}, {4, -1}, {0, 0}, {-7, -7}, {INT_MIN, 3}, {4, INT_MIN}})
        EXPECT_EQ(kelOk, call(src, dst, z, 9)) << z.width << "x" << z.height;
    EXPECT_EQ(before, dst.rows());
    EXPECT_TRUE(dst.intact() && src.intact());
}

INSTANTIATE_TEST_SUITE_P(YCoCg, FromYCoCg, ::testing::ValuesIn(kInverse), memberName);
INSTANTIATE_TEST_SUITE_P(YCoCg, FromYCoCgFour, ::testing::ValuesIn(fourChannel(kInverse)), memberName);

// ---- worked values ----------------------------------------------------------------------------

// One pixel through a forward member: B, G, R in, Y, Co, Cg out.
template <typename S, typename D>
Planes forwardPixel(KelResult (*f)(const S*, int, D* const[3], int, KelImageSize), Bgr in)
{
    const S src[3] = {S(in[0]), S(in[1]), S(in[2])};
    D y = 0, co = 0, cg = 0;
    D* const planes[3] = {&y, &co, &cg};
    EXPECT_EQ(kelOk, f(src, 3 * sizeof(S), planes, sizeof(D), {1, 1}));
    return {int(y), int(co), int(cg)};
}
template <typename S, typename D>
Bgr inversePixel(KelResult (*f)(const S* const[3], int, D*, int, KelImageSize), Planes in)
{
    const S y = S(in[0]), co = S(in[1]), cg = S(in[2]);
    const S* const planes[3] = {&y, &co, &cg};
    D dst[3] = {};
    EXPECT_EQ(kelOk, f(planes, sizeof(S), dst, 3 * sizeof(D), {1, 1}));
    return {int(dst[0]), int(dst[1]), int(dst[2])};
}

TEST(YCoCgWorked, WhiteHasNoChroma)
{
    EXPECT_EQ((Planes{255, 0, 0}), forwardPixel(keliBGRToYCoCg_8u16s_C3P3R, {255, 255, 255}));
}

// Red goes to 64, 128, -64; back, R sums to 256 and only the clamp gives 255.
TEST(YCoCgWorked, RedComesBackThroughTheClamp)
{
    EXPECT_EQ((Planes{64, 128, -64}), forwardPixel(keliBGRToYCoCg_8u16s_C3P3R, {0, 0, 255}));
    EXPECT_EQ((Bgr{0, 0, 255}), inversePixel(keliYCoCgToBGR_16s8u_P3C3R, {64, 128, -64}));
    EXPECT_EQ((Bgr{0, 0, 256}), inversePixel(keliYCoCgToSBGR_16s_P3C3R, {64, 128, -64}));
}

TEST(YCoCgWorked, ThePlainTransformLosesABlueStep)
{
    EXPECT_EQ((Planes{0, 0, 0}), forwardPixel(keliBGRToYCoCg_8u16s_C3P3R, {1, 0, 0}));
}

TEST(YCoCgWorked, TheReversiblePairRestoresRed)
{
    EXPECT_EQ((Planes{63, 255, -127}), forwardPixel(keliBGRToYCoCg_Rev_8u16s_C3P3R, {0, 0, 255}));
    EXPECT_EQ((Bgr{0, 0, 255}), inversePixel(keliYCoCgToBGR_Rev_16s8u_P3C3R, {63, 255, -127}));
}

// R = 32767, B = -32768: Co wraps to -1 in 16 bits, stays 65535 in 32.
TEST(YCoCgWorked, CoWrapsIn16BitsOnly)
{
    EXPECT_EQ(-1, forwardPixel(keliSBGRToYCoCg_Rev_16s_C3P3R, {-32768, 0, 32767})[1]);
    EXPECT_EQ(65535, forwardPixel(keliSBGRToYCoCg_Rev_16s32s_C3P3R, {-32768, 0, 32767})[1]);
}

// Y = 32767, Co = 1: R = 32768 wraps to -32768 before the clamp, so 0.
TEST(YCoCgWorked, TheInverseWrapsBeforeTheClamp)
{
    EXPECT_EQ((Bgr{255, 255, 0}), inversePixel(keliYCoCgToBGR_16s8u_P3C3R, {32767, 1, 0}));
}

// ---- the reversible round trip ----------------------------------------------------------------

// All 2^24 pixels as one 4096 x 4096 image: the planes as the lifting steps
// give them, and every pixel restored exactly.
TEST(YCoCgRoundTrip, EveryBytePixelComesBackExactly)
{
    const int n = 4096;
    Image src = pixelImage(n, n, 3, Depth::U8), mid = planeImage(n, n, Depth::S16), back = pixelImage(n, n, 3, Depth::U8);
    for (int y = 0; y < n; ++y) {
        Kel8u* row = src.row(0, y);
        for (int x = 0; x < n; ++x) {
            const unsigned i = unsigned(y) * n + unsigned(x);
            row[3 * x] = Kel8u(i);
            row[3 * x + 1] = Kel8u(i >> 8);
            row[3 * x + 2] = Kel8u(i >> 16);
        }
    }
    back.fillWith(0x3C);
    ASSERT_EQ(kelOk, keliBGRToYCoCg_Rev_8u16s_C3P3R(src.ptr(), src.step(), reinterpret_cast<Kel16s* const*>(mid.out()),
                                                    mid.step(), {n, n}));
    long wrong = 0;
    for (int y = 0; y < n; ++y) {
        const Kel8u* row = src.row(0, y);
        const Kel16s* planes[3];
        for (int c = 0; c < 3; ++c) planes[c] = reinterpret_cast<const Kel16s*>(mid.row(c, y));
        for (int x = 0; x < n; ++x) {
            const Planes q = reversibleForward({row[3 * x], row[3 * x + 1], row[3 * x + 2]}, Depth::S16);
            for (int c = 0; c < 3; ++c)
                if (planes[c][x] != q[c] && wrong++ < 10)
                    ADD_FAILURE() << "plane " << c << " of B, G, R = " << int(row[3 * x]) << ", " << int(row[3 * x + 1])
                                  << ", " << int(row[3 * x + 2]) << ": " << planes[c][x] << ", not " << q[c];
        }
    }
    EXPECT_EQ(0, wrong);
    ASSERT_EQ(kelOk, keliYCoCgToBGR_Rev_16s8u_P3C3R(reinterpret_cast<const Kel16s* const*>(mid.in()), mid.step(),
                                                    back.ptr(), back.step(), {n, n}));
    EXPECT_TRUE(src.rows() == back.rows());
    EXPECT_TRUE(src.intact() && mid.intact() && back.intact());
}

} // namespace

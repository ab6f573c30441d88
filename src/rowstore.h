// Where the colour channels of one row lie, for the kernels that read them
// (sources) and write them (stores), and the block scaffold of the kernels
// that work on runs of 64 pixels.
#pragma once

#include <cstdint>

#include "callframe.h"

namespace kel {

// ---- channel order ----------------------------------------------------------

// The sample index of red, green and blue inside a pixel.
struct ChannelOrder {
    int r, g, b;
};
inline constexpr ChannelOrder kRGB{0, 1, 2}, kBGR{2, 1, 0};

// ---- sources ----------------------------------------------------------------

// A pixel-order row of Pitch samples a pixel (3, or 4 with alpha unread).
template <int Pitch, ChannelOrder O>
struct PixelSource {
    const Kel8u* p;
    std::int32_t r(int x) const { return p[x * Pitch + O.r]; }
    std::int32_t g(int x) const { return p[x * Pitch + O.g]; }
    std::int32_t b(int x) const { return p[x * Pitch + O.b]; }
};

// A row of three planes in R, G, B order.
struct PlaneSource {
    const Kel8u *red, *green, *blue;
    std::int32_t r(int x) const { return red[x]; }
    std::int32_t g(int x) const { return green[x]; }
    std::int32_t b(int x) const { return blue[x]; }
};

// ---- stores -----------------------------------------------------------------

// What a four-sample destination pixel holds in its fourth sample.
enum class Alpha {
    none,      // three samples a pixel
    kept,      // left as it was
    written,   // the store's alpha value (0 where a member writes zero)
};

// A pixel-order row of Pitch samples a pixel.
template <int Pitch, ChannelOrder O, Alpha A = Alpha::none>
struct PixelStore {
    static_assert((Pitch == 3) == (A == Alpha::none), "a fourth sample needs its alpha rule");
    Kel8u* p;
    Kel8u alpha = 0;
    void put(int x, Kel8u r, Kel8u g, Kel8u b) const
    {
        Kel8u* pixel = p + x * Pitch;
        pixel[O.r] = r;
        pixel[O.g] = g;
        pixel[O.b] = b;
        if constexpr (A == Alpha::written) pixel[3] = alpha;
    }
};

// A row of three planes in R, G, B order.
struct PlaneStore {
    Kel8u *red, *green, *blue;
    void put(int x, Kel8u r, Kel8u g, Kel8u b) const
    {
        red[x] = r;
        green[x] = g;
        blue[x] = b;
    }
};

// ---- 4:2:2 pixel-order pairs --------------------------------------------------

// Byte positions of Y0, Cb, Y1 and Cr (U and V in YUV) in the four bytes of a
// pixel pair.  A pair cut short after two bytes (a last single pixel) lacks
// the chroma sample stored at position 2 or 3.
struct PairLayout {
    int y0, cb, y1, cr;

    constexpr bool cbMissing() const { return cb >= 2; }
    // Where the missing sample lies in the pair before, counted from the cut pair.
    constexpr int missingFromBefore() const { return (cbMissing() ? cb : cr) - 4; }
};
inline constexpr PairLayout kYCbCrPair{0, 1, 2, 3}, kYCrCbPair{0, 3, 2, 1}, kCbYCrPair{1, 0, 3, 2};

// ---- blocks -----------------------------------------------------------------

// Kernels that the compiler vectorises work in blocks of 64 pixels: each pass
// a plain loop over contiguous arrays, the arithmetic that of the one-pixel
// formula, so the bytes are too.
inline constexpr int kBlock = 64;

// block(x0, n) for the runs x0 .. x0 + n - 1 that cover 0 .. count - 1.
template <typename BlockFn>
inline void forEachBlock(int count, const BlockFn& block)
{
    for (int x0 = 0; x0 < count; x0 += kBlock) block(x0, count - x0 < kBlock ? count - x0 : kBlock);
}

// The chroma part of a pixel's R, G and B sums, before its luma term.
struct ChromaTerms {
    std::int32_t r, g, b;
};

// The chroma terms of every pixel of a block; a cell's terms repeat for its pixels.
struct TermBlock {
    std::int32_t r[kBlock], g[kBlock], b[kBlock];

    [[gnu::always_inline]] void setPair(int i, const ChromaTerms& c)
    {
        r[i] = r[i + 1] = c.r;
        g[i] = g[i + 1] = c.g;
        b[i] = b[i + 1] = c.b;
    }
};

// n pixels of a block from their luma (LumaPitch bytes apart, weighted by
// LumaWeight) and their terms: each sum >> 16, saturated, stored from x0 on.
template <std::int32_t LumaWeight, int LumaPitch, typename Store>
[[gnu::always_inline]] inline void storeBlock(const Kel8u* luma, const TermBlock& t, int n, const Store& out, int x0)
{
    Kel8u r[kBlock], g[kBlock], b[kBlock];
    for (int i = 0; i < n; ++i) {
        const std::int32_t l = LumaWeight * luma[i * LumaPitch];
        r[i] = saturateByte((l + t.r[i]) >> 16);
        g[i] = saturateByte((l + t.g[i]) >> 16);
        b[i] = saturateByte((l + t.b[i]) >> 16);
    }
    for (int i = 0; i < n; ++i) out.put(x0 + i, r[i], g[i], b[i]);
}

} // namespace kel

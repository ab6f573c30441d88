// RGB <-> full-range YUV with 4:2:2 and 4:2:0 chroma.  The forward direction
// averages the colour differences of a cell (two pixels, or 2 x 2); the
// inverse repeats the cell's chroma for each pixel.  Includes the forms that
// take no strides.
#include <array>
#include <cstdint>
#include <type_traits>

#include "callframe.h"
#include "yuvconv.h"

using namespace kel;
using namespace kel::yuv;

namespace {

// Three channels of one row: where each starts and the distance between the
// samples of a pixel (3 or 4 in pixel order, 1 in planes).
template <typename Byte>
struct Channels {
    Byte* c[3];
};

template <typename Byte>
Channels<Byte> pixelChannels(Byte* row)
{
    return {{row, row + 1, row + 2}};
}

template <typename Byte>
Channels<Byte> planeChannels(Byte* const planes[3], const int steps[3], int y)
{
    return {{rowAt(planes[0], steps[0], y), rowAt(planes[1], steps[1], y), rowAt(planes[2], steps[2], y)}};
}

template <typename Byte>
Channels<Byte> planeChannels(Byte* const planes[3], int step, int y)
{
    const int steps[3] = {step, step, step};
    return planeChannels(planes, steps, y);
}

// ---- forward kernels ---------------------------------------------------------------------

// A 4:2:2 row.  YUV in planes (Y, U, V) or in pixel order (Y0 U Y1 V).  A last
// single pixel takes the one-pixel formulas; pixel order has room for its Y
// and U only.
template <int RgbPitch, bool PixelOrderYuv>
void forward422(Channels<const Kel8u> rgb, Channels<Kel8u> yuv, int width)
{
    constexpr int lumaPitch = PixelOrderYuv ? 2 : 1, chromaPitch = PixelOrderYuv ? 4 : 1;
    const Kel8u *r = rgb.c[0], *g = rgb.c[1], *b = rgb.c[2];
    Kel8u *y = yuv.c[0], *u = yuv.c[1], *v = yuv.c[2];
    // Whole pairs go in blocks: samples and luma sums gathered into plain
    // arrays first, then each pair from them, in loops the compiler vectorises.
    const int pairs = width / 2;
    constexpr int kBlock = 64;  // pixels
    std::int32_t red[kBlock], blue[kBlock], sum[kBlock];
    for (int x0 = 0; x0 < 2 * pairs; x0 += kBlock) {
        const int n = 2 * pairs - x0 < kBlock ? 2 * pairs - x0 : kBlock;
        for (int i = 0; i < n; ++i) {
            const int p = (x0 + i) * RgbPitch;
            red[i] = r[p];
            blue[i] = b[p];
            sum[i] = lumaSum(r[p], g[p], b[p]);
        }
        for (int k = 0; k < n / 2; ++k) {
            const int e = 2 * k, o = e + 1, pair = x0 / 2 + k;
            y[2 * pair * lumaPitch] = static_cast<Kel8u>(sum[e] >> 16);
            y[(2 * pair + 1) * lumaPitch] = static_cast<Kel8u>(sum[o] >> 16);
            u[pair * chromaPitch] = chromaU<1>(blue[e] + blue[o], sum[e] + sum[o]);
            v[pair * chromaPitch] = chromaV<1>(red[e] + red[o], sum[e] + sum[o]);
        }
    }
    if (width & 1) {
        const int p = 2 * pairs * RgbPitch;
        const std::int32_t s = lumaSum(r[p], g[p], b[p]);
        y[2 * pairs * lumaPitch] = static_cast<Kel8u>(s >> 16);
        u[pairs * chromaPitch] = chromaU<0>(b[p], s);
        if constexpr (!PixelOrderYuv) v[pairs * chromaPitch] = chromaV<0>(r[p], s);
    }
}

// A 4:2:0 row pair: width / 2 cells of 2 x 2; an odd last column is skipped.
// The cells go in blocks: the samples of both rows are gathered into plain
// arrays, then luma and the cells' chroma come from them in loops the
// compiler vectorises.
template <int RgbPitch>
void forward420(Channels<const Kel8u> top, Channels<const Kel8u> bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* u,
                Kel8u* v, int width)
{
    constexpr int kBlock = 64;  // pixels
    const int columns = width & ~1;
    std::int32_t r[2][kBlock], b[2][kBlock], sum[2][kBlock];
    for (int x0 = 0; x0 < columns; x0 += kBlock) {
        const int n = columns - x0 < kBlock ? columns - x0 : kBlock;
        for (int row = 0; row < 2; ++row) {
            const Channels<const Kel8u>& in = row == 0 ? top : bottom;
            Kel8u* y = (row == 0 ? yTop : yBottom) + x0;
            for (int i = 0; i < n; ++i) {
                const int p = (x0 + i) * RgbPitch;
                r[row][i] = in.c[0][p];
                b[row][i] = in.c[2][p];
                sum[row][i] = lumaSum(in.c[0][p], in.c[1][p], in.c[2][p]);
                y[i] = static_cast<Kel8u>(sum[row][i] >> 16);
            }
        }
        for (int k = 0; k < n / 2; ++k) {
            const int e = 2 * k, o = e + 1;
            const std::int32_t cellSum = sum[0][e] + sum[0][o] + sum[1][e] + sum[1][o];
            u[x0 / 2 + k] = chromaU<2>(b[0][e] + b[0][o] + b[1][e] + b[1][o], cellSum);
            v[x0 / 2 + k] = chromaV<2>(r[0][e] + r[0][o] + r[1][e] + r[1][o], cellSum);
        }
    }
}

// ---- inverse kernels ------------------------------------------------------------------------

// Writes one pixel of RGB (or BGR with Swap) at dst[0..2], and 0 as alpha
// when the destination has four channels.
template <int Pitch, bool Swap, std::int32_t Half>
inline void storeRGB(Kel8u* dst, std::int32_t y, std::int32_t u, std::int32_t v)
{
    Kel8u r, g, b;
    toRGB<inverse1, Half>(y, u, v, r, g, b);
    dst[0] = Swap ? b : r;
    dst[1] = g;
    dst[2] = Swap ? r : b;
    if constexpr (Pitch == 4) dst[3] = 0;
}

// A 4:2:2 row from planes to pixel order (Pitch 3 or 4) or to planes (Pitch
// 1, with the RGB planes in rgb).  A last single pixel takes chroma entry
// width / 2, which the planes hold.
template <int Pitch>
void inverse422Planes(Channels<const Kel8u> yuv, Channels<Kel8u> rgb, int width)
{
    const Kel8u *y = yuv.c[0], *u = yuv.c[1], *v = yuv.c[2];
    for (int x = 0; x < width; ++x) {
        const int k = x / 2;
        if constexpr (Pitch == 1) {
            toRGB<inverse1>(y[x], u[k], v[k], rgb.c[0][x], rgb.c[1][x], rgb.c[2][x]);
        } else {
            storeRGB<Pitch, false, 0>(rgb.c[0] + x * Pitch, y[x], u[k], v[k]);
        }
    }
}

// Inverse kernels work in blocks: the chroma terms of every pixel (a cell's
// terms repeated for its pixels), then each pixel from its luma and its
// terms, then the stores.  Each pass is a plain loop the compiler vectorises;
// the sums are those of the one-pixel formula.
constexpr int kBlock = 64;  // pixels

struct TermBlock {
    std::int32_t r[kBlock], g[kBlock], b[kBlock];
};

// Terms for pixels i and i + 1 of a block, from their cell's U and V.
template <std::int32_t Half>
[[gnu::always_inline]] inline void setPairTerms(TermBlock& t, int i, std::int32_t u, std::int32_t v)
{
    const std::int32_t du = u - 128, dv = v - 128;
    t.r[i] = t.r[i + 1] = inverse1.vToR * dv + Half;
    t.g[i] = t.g[i + 1] = -inverse1.uToG * du - inverse1.vToG * dv + Half;
    t.b[i] = t.b[i + 1] = inverse1.uToB * du + Half;
}

// n pixels of a block, their luma LumaPitch bytes apart, into a destination
// of Pitch bytes a pixel (1: the three planes of `out`), alpha 0 at Pitch 4.
template <int LumaPitch, int Pitch, bool Swap>
[[gnu::always_inline]] inline void blockPixels(const Kel8u* luma, const TermBlock& t, int n, Channels<Kel8u> out, int x0)
{
    Kel8u r[kBlock], g[kBlock], b[kBlock];
    for (int i = 0; i < n; ++i) {
        const std::int32_t y16 = luma[i * LumaPitch] << 16;
        r[i] = saturateByte((y16 + t.r[i]) >> 16);
        g[i] = saturateByte((y16 + t.g[i]) >> 16);
        b[i] = saturateByte((y16 + t.b[i]) >> 16);
    }
    if constexpr (Pitch == 1) {
        for (int i = 0; i < n; ++i) {
            out.c[0][x0 + i] = r[i];
            out.c[1][x0 + i] = g[i];
            out.c[2][x0 + i] = b[i];
        }
    } else {
        Kel8u* d = out.c[0] + x0 * Pitch;
        for (int i = 0; i < n; ++i) {
            d[i * Pitch] = Swap ? b[i] : r[i];
            d[i * Pitch + 1] = g[i];
            d[i * Pitch + 2] = Swap ? r[i] : b[i];
            if constexpr (Pitch == 4) d[i * Pitch + 3] = 0;
        }
    }
}

// A 4:2:2 row in pixel order (Y0 U Y1 V).  A last single pixel, in a pair cut
// short after its U, takes V from the pair before: the byte before its Y.
void inverse422PixelOrder(const Kel8u* src, Kel8u* dst, int width)
{
    const int pairs = width / 2;
    TermBlock terms;
    for (int x0 = 0; x0 < 2 * pairs; x0 += kBlock) {
        const int n = 2 * pairs - x0 < kBlock ? 2 * pairs - x0 : kBlock;
        const Kel8u* block = src + 2 * x0;  // two bytes a pixel
        for (int i = 0; i < n; i += 2) setPairTerms<0>(terms, i, block[2 * i + 1], block[2 * i + 3]);
        blockPixels<2, 3, false>(block, terms, n, pixelChannels(dst), x0);  // Y0 and Y1 two bytes apart
    }
    if (width & 1) {
        const Kel8u* last = src + 4 * pairs;
        storeRGB<3, false, 0>(dst + 6 * pairs, last[0], last[1], last[-1]);
    }
}

// A 4:2:0 row pair; the odd last column is left alone.
template <int Pitch, bool Swap, std::int32_t Half>
void inverse420(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v, Channels<Kel8u> top,
                Channels<Kel8u> bottom, int width)
{
    const int columns = width & ~1;
    TermBlock terms;
    for (int x0 = 0; x0 < columns; x0 += kBlock) {
        const int n = columns - x0 < kBlock ? columns - x0 : kBlock;
        for (int i = 0; i < n; i += 2) setPairTerms<Half>(terms, i, u[(x0 + i) / 2], v[(x0 + i) / 2]);
        blockPixels<1, Pitch, Swap>(yTop + x0, terms, n, top, x0);
        blockPixels<1, Pitch, Swap>(yBottom + x0, terms, n, bottom, x0);
    }
}

} // namespace

// ---- row kernels under the library's names ------------------------------------------------------

void innerRGBToYUV422_8u_C3C2R(const Kel8u* src, Kel8u* dst, int width)
{
    forward422<3, true>(pixelChannels(src), {{dst, dst + 1, dst + 3}}, width);
}
void innerRGBToYUV422_8u_C3P3R(const Kel8u* src, Channels<Kel8u> dst, int width)
{
    forward422<3, false>(pixelChannels(src), dst, width);
}
void innerRGBToYUV422_8u_P3R(Channels<const Kel8u> src, Channels<Kel8u> dst, int width)
{
    forward422<1, false>(src, dst, width);
}
void innerYUV422ToRGB_8u_C2C3R(const Kel8u* src, Kel8u* dst, int width)
{
    inverse422PixelOrder(src, dst, width);
}
void innerYUV422ToRGB_8u_P3C3R(Channels<const Kel8u> src, Kel8u* dst, int width)
{
    inverse422Planes<3>(src, pixelChannels(dst), width);
}
void innerYUV422ToRGB_8u_P3AC4R(Channels<const Kel8u> src, Kel8u* dst, int width)
{
    inverse422Planes<4>(src, pixelChannels(dst), width);
}
void innerYUV422ToRGB_8u_P3R(Channels<const Kel8u> src, Channels<Kel8u> dst, int width)
{
    inverse422Planes<1>(src, dst, width);
}

// The width-1 path of pixel-order 4:2:2: byte 1 serves as both chroma samples.
void unrealYUV(const Kel8u* src, Kel8u* dst)
{
    const std::int32_t y16 = src[0] << 16, c = src[1] - 128;
    dst[0] = saturateByte((y16 + 74711 * c) >> 16);
    dst[1] = saturateByte((y16 - 25821 * c - 38076 * c) >> 16);
    dst[2] = saturateByte((y16 + 133169 * c) >> 16);
}

void innerRGBToYUV420_8u_C3P3R(const Kel8u* top, const Kel8u* bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* u, Kel8u* v,
                               int width)
{
    forward420<3>(pixelChannels(top), pixelChannels(bottom), yTop, yBottom, u, v, width);
}
void innerRGBToYUV420_8u_P3R(Channels<const Kel8u> top, Channels<const Kel8u> bottom, Kel8u* yTop, Kel8u* yBottom,
                             Kel8u* u, Kel8u* v, int width)
{
    forward420<1>(top, bottom, yTop, yBottom, u, v, width);
}
void innerYUV420ToRGB_8u_P3C3R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v, Kel8u* top,
                               Kel8u* bottom, int width)
{
    inverse420<3, false, 0>(yTop, yBottom, u, v, pixelChannels(top), pixelChannels(bottom), width);
}
// The one inverse that rounds: 32768 before each shift.
void innerYUV420ToRGB_8u_P3AC4R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v, Kel8u* top,
                                Kel8u* bottom, int width)
{
    inverse420<4, false, 32768>(yTop, yBottom, u, v, pixelChannels(top), pixelChannels(bottom), width);
}
void innerYUV420ToRGB_8u_P3R(const Kel8u* yTop, const Kel8u* yBottom, const Kel8u* u, const Kel8u* v,
                             Channels<Kel8u> top, Channels<Kel8u> bottom, int width)
{
    inverse420<1, false, 0>(yTop, yBottom, u, v, top, bottom, width);
}

// ---- row layers ------------------------------------------------------------------------------------

void myRGBToYUV422_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    for (int y = 0; y < height; ++y) innerRGBToYUV422_8u_C3C2R(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width);
}
void myRGBToYUV422_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], int width,
                            int height)
{
    for (int y = 0; y < height; ++y)
        innerRGBToYUV422_8u_C3P3R(rowAt(pSrc, srcStep, y), planeChannels(pDst, dstSteps, y), width);
}
void myRGBToYUV422_8u_P3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                          int width, int height)
{
    for (int y = 0; y < height; ++y)
        innerRGBToYUV422_8u_P3R(planeChannels(pSrc, srcStep, y), planeChannels(pDst, dstSteps, y), width);
}
void myYUV422ToRGB_8u_C2C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    for (int y = 0; y < height; ++y) {
        if (width == 1) unrealYUV(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y));
        else innerYUV422ToRGB_8u_C2C3R(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width);
    }
}
void myYUV422ToRGB_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                            int height)
{
    for (int y = 0; y < height; ++y)
        innerYUV422ToRGB_8u_P3C3R(planeChannels(pSrc, srcSteps, y), rowAt(pDst, dstStep, y), width);
}
void myYUV422ToRGB_8u_P3AC4R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                             int height)
{
    for (int y = 0; y < height; ++y)
        innerYUV422ToRGB_8u_P3AC4R(planeChannels(pSrc, srcSteps, y), rowAt(pDst, dstStep, y), width);
}
void myYUV422ToRGB_8u_P3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* const pDst[3], int dstStep,
                          int width, int height)
{
    for (int y = 0; y < height; ++y)
        innerYUV422ToRGB_8u_P3R(planeChannels(pSrc, srcSteps, y), planeChannels(pDst, dstStep, y), width);
}

// 4:2:0 row layers: row pairs, chroma rows one at a time.
void myRGBToYUV420_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], int width,
                            int height)
{
    for (int j = 0; j < height / 2; ++j)
        innerRGBToYUV420_8u_C3P3R(rowAt(pSrc, srcStep, 2 * j), rowAt(pSrc, srcStep, 2 * j + 1),
                                  rowAt(pDst[0], dstSteps[0], 2 * j), rowAt(pDst[0], dstSteps[0], 2 * j + 1),
                                  rowAt(pDst[1], dstSteps[1], j), rowAt(pDst[2], dstSteps[2], j), width);
}
void myRGBToYUV420_8u_P3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                          int width, int height)
{
    for (int j = 0; j < height / 2; ++j)
        innerRGBToYUV420_8u_P3R(planeChannels(pSrc, srcStep, 2 * j), planeChannels(pSrc, srcStep, 2 * j + 1),
                                rowAt(pDst[0], dstSteps[0], 2 * j), rowAt(pDst[0], dstSteps[0], 2 * j + 1),
                                rowAt(pDst[1], dstSteps[1], j), rowAt(pDst[2], dstSteps[2], j), width);
}
void myYUV420ToRGB_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                            int height)
{
    for (int j = 0; j < height / 2; ++j)
        innerYUV420ToRGB_8u_P3C3R(rowAt(pSrc[0], srcSteps[0], 2 * j), rowAt(pSrc[0], srcSteps[0], 2 * j + 1),
                                  rowAt(pSrc[1], srcSteps[1], j), rowAt(pSrc[2], srcSteps[2], j),
                                  rowAt(pDst, dstStep, 2 * j), rowAt(pDst, dstStep, 2 * j + 1), width);
}
void myYUV420ToRGB_8u_P3AC4R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                             int height)
{
    for (int j = 0; j < height / 2; ++j)
        innerYUV420ToRGB_8u_P3AC4R(rowAt(pSrc[0], srcSteps[0], 2 * j), rowAt(pSrc[0], srcSteps[0], 2 * j + 1),
                                   rowAt(pSrc[1], srcSteps[1], j), rowAt(pSrc[2], srcSteps[2], j),
                                   rowAt(pDst, dstStep, 2 * j), rowAt(pDst, dstStep, 2 * j + 1), width);
}
void myYUV420ToRGB_8u_P3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* const pDst[3], int dstStep,
                          int width, int height)
{
    for (int j = 0; j < height / 2; ++j)
        innerYUV420ToRGB_8u_P3R(rowAt(pSrc[0], srcSteps[0], 2 * j), rowAt(pSrc[0], srcSteps[0], 2 * j + 1),
                                rowAt(pSrc[1], srcSteps[1], j), rowAt(pSrc[2], srcSteps[2], j),
                                planeChannels(pDst, dstStep, 2 * j), planeChannels(pDst, dstStep, 2 * j + 1), width);
}

// Row loop and kernel in one: blue first, saturation by compares.
void ownYUV420ToBGR_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, int width,
                             int height)
{
    for (int j = 0; j < height / 2; ++j)
        inverse420<3, true, 0>(rowAt(pSrc[0], srcSteps[0], 2 * j), rowAt(pSrc[0], srcSteps[0], 2 * j + 1),
                               rowAt(pSrc[1], srcSteps[1], j), rowAt(pSrc[2], srcSteps[2], j),
                               pixelChannels(rowAt(pDst, dstStep, 2 * j)),
                               pixelChannels(rowAt(pDst, dstStep, 2 * j + 1)), width);
}

// ---- whole images as one row -------------------------------------------------------------------------

// A whole image of even width and at least 256 pixels lies back to back in
// whole pairs, so the kernel runs over it as one long row: the pixels up to a
// multiple of 8, then the rest.
namespace {

bool asOneRow(KelImageSize size)
{
    const std::int64_t pixels = static_cast<std::int64_t>(size.width) * size.height;
    return pixels >= 256 && (size.width & 1) == 0;
}

template <typename Kernel>
void inTwoRuns(KelImageSize size, Kernel kernel)
{
    const int pixels = static_cast<int>(static_cast<std::int64_t>(size.width) * size.height);
    const int n = pixels & ~7;
    kernel(0, n);
    if (pixels & 7) kernel(n, pixels & 7);
}

template <typename Byte>
Channels<Byte> advanced(Byte* const planes[3], int lumaOffset)
{
    return {{planes[0] + lumaOffset, planes[1] + lumaOffset / 2, planes[2] + lumaOffset / 2}};
}

template <typename Byte>
Channels<Byte> advancedRGB(Byte* const planes[3], int offset)
{
    return {{planes[0] + offset, planes[1] + offset, planes[2] + offset}};
}

} // namespace

void myRGBToYUV422_8u_C3P3(const Kel8u* pSrc, Kel8u* const pDst[3], KelImageSize size)
{
    inTwoRuns(size, [&](int first, int count) {
        innerRGBToYUV422_8u_C3P3R(pSrc + 3 * first, advanced(pDst, first), count);
    });
}
void myRGBToYUV422_8u_P3(const Kel8u* const pSrc[3], Kel8u* const pDst[3], KelImageSize size)
{
    inTwoRuns(size, [&](int first, int count) {
        innerRGBToYUV422_8u_P3R(advancedRGB(pSrc, first), advanced(pDst, first), count);
    });
}
void myYUV422ToRGB_8u_P3C3(const Kel8u* const pSrc[3], Kel8u* pDst, KelImageSize size)
{
    inTwoRuns(size, [&](int first, int count) {
        innerYUV422ToRGB_8u_P3C3R(advanced(pSrc, first), pDst + 3 * first, count);
    });
}
void myYUV422ToRGB_8u_P3(const Kel8u* const pSrc[3], Kel8u* const pDst[3], KelImageSize size)
{
    inTwoRuns(size, [&](int first, int count) {
        innerYUV422ToRGB_8u_P3R(advanced(pSrc, first), advancedRGB(pDst, first), count);
    });
}

// ---- public functions ------------------------------------------------------------------------------------

namespace {

// Null pointers, then the size, then the plane pointers.
template <typename Src, typename Dst>
KelResult testArguments(Src pSrc, Dst pDst, KelImageSize size)
{
    if (anyNull(pSrc, pDst))     return kelErrNullPointer;
    if (sizeBelow(size, 1, 1))   return kelErrSize;
    if constexpr (isPlaneArray<Src>) if (anyNullPlane(pSrc)) return kelErrNullPointer;
    if constexpr (isPlaneArray<Dst>) if (anyNullPlane(pDst)) return kelErrNullPointer;
    return kelOk;
}

KelResult oddSizeWarning(KelImageSize size)
{
    return ((size.width | size.height) & 1) ? kelWarnOddSize : kelOk;
}

// Derived strides of the forms without strides.
struct DerivedSteps {
    int luma, chroma;
};
DerivedSteps steps422(int width) { return {width, width / 2 + (width & 1)}; }
DerivedSteps steps420(int width) { return {width, width / 2}; }

} // namespace

extern "C" {

KEL_API KelResult keliRGBToYUV422_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (const KelResult status = testArguments(pSrc, pDst, roiSize); status != kelOk) return status;
    myRGBToYUV422_8u_C3C2R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliRGBToYUV422_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                           KelImageSize roiSize)
{
    if (const KelResult status = testArguments(pSrc, pDst, roiSize); status != kelOk) return status;
    myRGBToYUV422_8u_C3P3R(pSrc, srcStep, pDst, dstSteps, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliRGBToYUV422_8u_P3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3],
                                         const int dstSteps[3], KelImageSize roiSize)
{
    if (const KelResult status = testArguments(pSrc, pDst, roiSize); status != kelOk) return status;
    myRGBToYUV422_8u_P3R(pSrc, srcStep, pDst, dstSteps, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliRGBToYUV422_8u_C3P3(const Kel8u* pSrc, Kel8u* const pDst[3], KelImageSize imgSize)
{
    if (const KelResult status = testArguments(pSrc, pDst, imgSize); status != kelOk) return status;
    if (asOneRow(imgSize)) {
        myRGBToYUV422_8u_C3P3(pSrc, pDst, imgSize);
        return kelOk;
    }
    const DerivedSteps s = steps422(imgSize.width);
    const int dstSteps[3] = {s.luma, s.chroma, s.chroma};
    myRGBToYUV422_8u_C3P3R(pSrc, 3 * imgSize.width, pDst, dstSteps, imgSize.width, imgSize.height);
    return kelOk;
}

KEL_API KelResult keliRGBToYUV422_8u_P3(const Kel8u* const pSrc[3], Kel8u* const pDst[3], KelImageSize imgSize)
{
    if (const KelResult status = testArguments(pSrc, pDst, imgSize); status != kelOk) return status;
    if (asOneRow(imgSize)) {
        myRGBToYUV422_8u_P3(pSrc, pDst, imgSize);
        return kelOk;
    }
    const DerivedSteps s = steps422(imgSize.width);
    const int dstSteps[3] = {s.luma, s.chroma, s.chroma};
    myRGBToYUV422_8u_P3R(pSrc, imgSize.width, pDst, dstSteps, imgSize.width, imgSize.height);
    return kelOk;
}

KEL_API KelResult keliYUV422ToRGB_8u_C2C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (const KelResult status = testArguments(pSrc, pDst, roiSize); status != kelOk) return status;
    myYUV422ToRGB_8u_C2C3R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliYUV422ToRGB_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep,
                                           KelImageSize roiSize)
{
    if (const KelResult status = testArguments(pSrc, pDst, roiSize); status != kelOk) return status;
    myYUV422ToRGB_8u_P3C3R(pSrc, srcSteps, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliYUV422ToRGB_8u_P3AC4R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst,
                                            int dstStep, KelImageSize roiSize)
{
    if (const KelResult status = testArguments(pSrc, pDst, roiSize); status != kelOk) return status;
    myYUV422ToRGB_8u_P3AC4R(pSrc, srcSteps, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliYUV422ToRGB_8u_P3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* const pDst[3],
                                         int dstStep, KelImageSize roiSize)
{
    if (const KelResult status = testArguments(pSrc, pDst, roiSize); status != kelOk) return status;
    myYUV422ToRGB_8u_P3R(pSrc, srcSteps, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliYUV422ToRGB_8u_P3C3(const Kel8u* const pSrc[3], Kel8u* pDst, KelImageSize imgSize)
{
    if (const KelResult status = testArguments(pSrc, pDst, imgSize); status != kelOk) return status;
    if (asOneRow(imgSize)) {
        myYUV422ToRGB_8u_P3C3(pSrc, pDst, imgSize);
        return kelOk;
    }
    const DerivedSteps s = steps422(imgSize.width);
    const int srcSteps[3] = {s.luma, s.chroma, s.chroma};
    myYUV422ToRGB_8u_P3C3R(pSrc, srcSteps, pDst, 3 * imgSize.width, imgSize.width, imgSize.height);
    return kelOk;
}

KEL_API KelResult keliYUV422ToRGB_8u_P3(const Kel8u* const pSrc[3], Kel8u* const pDst[3], KelImageSize imgSize)
{
    if (const KelResult status = testArguments(pSrc, pDst, imgSize); status != kelOk) return status;
    if (asOneRow(imgSize)) {
        myYUV422ToRGB_8u_P3(pSrc, pDst, imgSize);
        return kelOk;
    }
    const DerivedSteps s = steps422(imgSize.width);
    const int srcSteps[3] = {s.luma, s.chroma, s.chroma};
    myYUV422ToRGB_8u_P3R(pSrc, srcSteps, pDst, imgSize.width, imgSize.width, imgSize.height);
    return kelOk;
}

KEL_API KelResult keliRGBToYUV420_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3],
                                           KelImageSize roiSize)
{
    if (const KelResult status = testArguments(pSrc, pDst, roiSize); status != kelOk) return status;
    myRGBToYUV420_8u_C3P3R(pSrc, srcStep, pDst, dstSteps, roiSize.width, roiSize.height);
    return oddSizeWarning(roiSize);
}

KEL_API KelResult keliRGBToYUV420_8u_P3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3],
                                         const int dstSteps[3], KelImageSize roiSize)
{
    if (const KelResult status = testArguments(pSrc, pDst, roiSize); status != kelOk) return status;
    myRGBToYUV420_8u_P3R(pSrc, srcStep, pDst, dstSteps, roiSize.width, roiSize.height);
    return oddSizeWarning(roiSize);
}

KEL_API KelResult keliRGBToYUV420_8u_C3P3(const Kel8u* pSrc, Kel8u* const pDst[3], KelImageSize imgSize)
{
    const DerivedSteps s = steps420(imgSize.width);
    const int dstSteps[3] = {s.luma, s.chroma, s.chroma};
    return keliRGBToYUV420_8u_C3P3R(pSrc, 3 * imgSize.width, pDst, dstSteps, imgSize);
}

KEL_API KelResult keliRGBToYUV420_8u_P3(const Kel8u* const pSrc[3], Kel8u* const pDst[3], KelImageSize imgSize)
{
    const DerivedSteps s = steps420(imgSize.width);
    const int dstSteps[3] = {s.luma, s.chroma, s.chroma};
    return keliRGBToYUV420_8u_P3R(pSrc, imgSize.width, pDst, dstSteps, imgSize);
}

KEL_API KelResult keliYUV420ToRGB_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep,
                                           KelImageSize roiSize)
{
    if (const KelResult status = testArguments(pSrc, pDst, roiSize); status != kelOk) return status;
    myYUV420ToRGB_8u_P3C3R(pSrc, srcSteps, pDst, dstStep, roiSize.width, roiSize.height);
    return oddSizeWarning(roiSize);
}

KEL_API KelResult keliYUV420ToRGB_8u_P3AC4R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst,
                                            int dstStep, KelImageSize roiSize)
{
    if (const KelResult status = testArguments(pSrc, pDst, roiSize); status != kelOk) return status;
    myYUV420ToRGB_8u_P3AC4R(pSrc, srcSteps, pDst, dstStep, roiSize.width, roiSize.height);
    return oddSizeWarning(roiSize);
}

KEL_API KelResult keliYUV420ToRGB_8u_P3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* const pDst[3],
                                         int dstStep, KelImageSize roiSize)
{
    if (const KelResult status = testArguments(pSrc, pDst, roiSize); status != kelOk) return status;
    myYUV420ToRGB_8u_P3R(pSrc, srcSteps, pDst, dstStep, roiSize.width, roiSize.height);
    return oddSizeWarning(roiSize);
}

KEL_API KelResult keliYUV420ToRGB_8u_P3C3(const Kel8u* const pSrc[3], Kel8u* pDst, KelImageSize imgSize)
{
    const DerivedSteps s = steps420(imgSize.width);
    const int srcSteps[3] = {s.luma, s.chroma, s.chroma};
    return keliYUV420ToRGB_8u_P3C3R(pSrc, srcSteps, pDst, 3 * imgSize.width, imgSize);
}

KEL_API KelResult keliYUV420ToRGB_8u_P3(const Kel8u* const pSrc[3], Kel8u* const pDst[3], KelImageSize imgSize)
{
    const DerivedSteps s = steps420(imgSize.width);
    const int srcSteps[3] = {s.luma, s.chroma, s.chroma};
    return keliYUV420ToRGB_8u_P3R(pSrc, srcSteps, pDst, imgSize.width, imgSize);
}

// Tests and warns on the halved size: a 6 x 4 image is warned of, 5 x 4 is not.
KEL_API KelResult keliYUV420ToBGR_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep,
                                           KelImageSize roiSize)
{
    if (anyNull(pSrc, pDst))                          return kelErrNullPointer;
    const KelImageSize cells{roiSize.width / 2, roiSize.height / 2};
    if (sizeBelow(cells, 1, 1))                       return kelErrSize;
    if (anyNullPlane(pSrc))                           return kelErrNullPointer;
    ownYUV420ToBGR_8u_P3C3R(pSrc, srcSteps, pDst, dstStep, roiSize.width, roiSize.height);
    return oddSizeWarning(cells);
}

} // extern "C"

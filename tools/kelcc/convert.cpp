// convert.cpp - the layout table, frames, and the conversions between layouts.
#include "convert.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <limits>
#include <queue>

namespace kelcctool {

bool verbose = false;

void note(const std::string& line)
{
    if (verbose) std::fprintf(stderr, "kelcc: %s\n", line.c_str());
}

// ---- layouts ---------------------------------------------------------------

namespace {

constexpr PlaneShape full(int bytes) { return {1, 1, bytes}; }

const LayoutInfo layoutTable[layoutCount] = {
    {"rgb24", 1, {full(3)}, 1, 1, true, "8-bit R, G, B"},
    {"bgr24", 1, {full(3)}, 1, 1, true, "8-bit B, G, R"},
    {"rgba", 1, {full(4)}, 1, 1, true, "8-bit R, G, B, alpha"},
    {"bgra", 1, {full(4)}, 1, 1, true, "8-bit B, G, R, alpha"},
    {"rgb48", 1, {full(6)}, 1, 1, true, "16-bit R, G, B, native byte order"},
    {"rgbf", 1, {full(12)}, 1, 1, true, "32-bit float R, G, B"},
    {"gray", 1, {full(1)}, 1, 1, true, "8-bit gray"},
    {"gray16", 1, {full(2)}, 1, 1, true, "16-bit gray, native byte order"},
    {"grayf", 1, {full(4)}, 1, 1, true, "32-bit float gray"},
    {"i420", 3, {full(1), PlaneShape{2, 2, 1}, PlaneShape{2, 2, 1}}, 2, 2, true, "planes Y, U, V at 4:2:0 (yuv420p)"},
    {"yv12", 3, {full(1), PlaneShape{2, 2, 1}, PlaneShape{2, 2, 1}}, 2, 2, true, "planes Y, V, U at 4:2:0"},
    {"nv12", 2, {full(1), PlaneShape{2, 2, 2}}, 2, 2, true, "a Y plane and a plane of U, V pairs at 4:2:0"},
    {"yuy2", 1, {full(2)}, 2, 1, true, "Y0 U Y1 V at 4:2:2 (yuyv422)"},
    {"uyvy", 1, {full(2)}, 2, 1, true, "U Y0 V Y1 at 4:2:2 (uyvy422)"},
    {"yuv422p", 3, {full(1), PlaneShape{2, 1, 1}, PlaneShape{2, 1, 1}}, 2, 1, true, "planes Y, U, V at 4:2:2"},
    {"yuv411p", 3, {full(1), PlaneShape{4, 1, 1}, PlaneShape{4, 1, 1}}, 4, 1, true, "planes Y, U, V at 4:1:1"},
    {"yuv444p", 3, {full(1), full(1), full(1)}, 1, 1, true, "planes Y, U, V at 4:4:4"},
    {"ycbcr24", 1, {full(3)}, 1, 1, false, "8-bit Y, Cb, Cr interleaved"},
    {"rgb565", 1, {full(2)}, 1, 1, true, "16-bit words, R in bits 15-11, B in bits 4-0 (rgb565le)"},
    {"bgr565", 1, {full(2)}, 1, 1, true, "16-bit words, B in bits 15-11, R in bits 4-0 (bgr565le)"},
    {"bgr555", 1, {full(2)}, 2, 1, true, "16-bit words, B in bits 14-10, R in bits 4-0 (bgr555le)"},
    {"rggb8", 1, {full(1)}, 1, 1, true, "8-bit Bayer mosaic, R G / G B"},
    {"bggr8", 1, {full(1)}, 1, 1, true, "8-bit Bayer mosaic, B G / G R"},
    {"grbg8", 1, {full(1)}, 1, 1, true, "8-bit Bayer mosaic, G R / B G"},
    {"gbrg8", 1, {full(1)}, 1, 1, true, "8-bit Bayer mosaic, G B / R G"},
    {"rggb16", 1, {full(2)}, 1, 1, true, "16-bit Bayer mosaic, R G / G B"},
    {"bggr16", 1, {full(2)}, 1, 1, true, "16-bit Bayer mosaic, B G / G R"},
    {"grbg16", 1, {full(2)}, 1, 1, true, "16-bit Bayer mosaic, G R / B G"},
    {"gbrg16", 1, {full(2)}, 1, 1, true, "16-bit Bayer mosaic, G B / R G"},
};

struct Alias {
    const char* name;
    Layout layout;
};
const Alias aliases[] = {
    {"yuv420p", Layout::i420}, {"iyuv", Layout::i420}, {"yuyv422", Layout::yuy2}, {"yuyv", Layout::yuy2},
    {"uyvy422", Layout::uyvy}, {"rgb", Layout::rgb24}, {"bgr", Layout::bgr24}, {"y8", Layout::gray},
    {"rgb565le", Layout::rgb565}, {"bgr565le", Layout::bgr565}, {"bgr555le", Layout::bgr555},
    {"gray16le", Layout::gray16}, {"rgb48le", Layout::rgb48},
    {"bayer_rggb8", Layout::rggb8}, {"bayer_bggr8", Layout::bggr8}, {"bayer_grbg8", Layout::grbg8},
    {"bayer_gbrg8", Layout::gbrg8}, {"bayer_rggb16le", Layout::rggb16}, {"bayer_bggr16le", Layout::bggr16},
    {"bayer_grbg16le", Layout::grbg16}, {"bayer_gbrg16le", Layout::gbrg16},
};

}  // namespace

const LayoutInfo& layoutInfo(Layout l) { return layoutTable[static_cast<int>(l)]; }

std::optional<Layout> layoutByName(std::string_view name)
{
    for (int i = 0; i < layoutCount; ++i)
        if (layoutTable[i].listed && name == layoutTable[i].name) return static_cast<Layout>(i);
    for (const Alias& a : aliases)
        if (name == a.name) return a.layout;
    return std::nullopt;
}

bool isBayer(Layout l) { return l >= Layout::rggb8 && l <= Layout::gbrg16; }

Frame::Frame(Layout l, int w, int h) : layout(l), width(w), height(h), data(bytesFor(l, w, h)) {}

std::size_t Frame::bytesFor(Layout l, int w, int h)
{
    const LayoutInfo& li = layoutInfo(l);
    std::size_t total = 0;
    for (int i = 0; i < li.planes; ++i)
        total += static_cast<std::size_t>(w / li.plane[i].xdiv) * li.plane[i].bytes * static_cast<std::size_t>(h / li.plane[i].ydiv);
    return total;
}

int Frame::step(int i) const
{
    const PlaneShape& p = layoutInfo(layout).plane[i];
    return width / p.xdiv * p.bytes;
}

int Frame::rows(int i) const { return height / layoutInfo(layout).plane[i].ydiv; }

std::size_t Frame::planeOffset(int i) const
{
    std::size_t off = 0;
    for (int k = 0; k < i; ++k) off += static_cast<std::size_t>(step(k)) * rows(k);
    return off;
}

void checkStatus(KelResult status, const char* call)
{
    if (status >= 0) {
        if (status > 0) note(std::string(call) + " returned warning " + std::to_string(status));
        return;
    }
    const char* what = "error";
    switch (status) {
    case kelErrBadArg: what = "an argument outside its list"; break;
    case kelErrSize: what = "a size below the minimum"; break;
    case kelErrNullPointer: what = "a null pointer"; break;
    case kelErrNoMemory: what = "out of memory"; break;
    case kelErrStep: what = "a row stride below 1"; break;
    case kelErrContext: what = "a bad state record"; break;
    case kelErrGammaRange: what = "an invalid gamma range"; break;
    case kelErrDitherLevels: what = "levels outside the limits of this sample type"; break;
    case kelErrNoiseRange: what = "noise outside 0..100"; break;
    default: break;
    }
    throw Failure(std::string(call) + " failed: " + what + " (status " + std::to_string(status) + ")");
}

// ---- steps -----------------------------------------------------------------

struct Step {
    Layout from, to;
    int cost;          // colour arithmetic 10, byte moves 1, widening 2
    bool byTool;       // byte moves done here rather than by a library call
    const char* how;   // the call, or what kelcc does
    std::function<void(const Frame&, Frame&)> run;
};

namespace {

using L = Layout;
constexpr int colour = 10, repack = 1, widen = 2;

#define CALL(fn, ...) checkStatus(fn(__VA_ARGS__), #fn)
// Shapes of the library's signatures, by source and destination.
#define CC(A, B, fn, TS, TD)                                                                                 \
    Step{L::A, L::B, colour, false, #fn, [](const Frame& s, Frame& d) {                                       \
             CALL(fn, reinterpret_cast<const TS*>(s.u8()), s.step(0), reinterpret_cast<TD*>(d.u8()), d.step(0), \
                  s.size());                                                                                  \
         }}
#define C_P3S(A, B, fn, TS)                                                                                  \
    Step{L::A, L::B, colour, false, #fn, [](const Frame& s, Frame& d) {                                       \
             CALL(fn, reinterpret_cast<const TS*>(s.u8()), s.step(0), d.planes().data(), d.steps().data(), s.size()); \
         }}
#define P3S_C(A, B, fn, TD)                                                                                  \
    Step{L::A, L::B, colour, false, #fn, [](const Frame& s, Frame& d) {                                       \
             CALL(fn, s.cplanes().data(), s.steps().data(), reinterpret_cast<TD*>(d.u8()), d.step(0), s.size()); \
         }}
#define P3_C(A, B, fn, TD)                                                                                   \
    Step{L::A, L::B, colour, false, #fn, [](const Frame& s, Frame& d) {                                       \
             CALL(fn, s.cplanes().data(), s.step(0), reinterpret_cast<TD*>(d.u8()), d.step(0), s.size());     \
         }}
#define P3S_P3S(A, B, fn)                                                                                    \
    Step{L::A, L::B, repack, false, #fn, [](const Frame& s, Frame& d) {                                       \
             CALL(fn, s.cplanes().data(), s.steps().data(), d.planes().data(), d.steps().data(), s.size());   \
         }}
#define P3S_P2(A, B, fn)                                                                                     \
    Step{L::A, L::B, repack, false, #fn, [](const Frame& s, Frame& d) {                                       \
             CALL(fn, s.cplanes().data(), s.steps().data(), d.u8(0), d.step(0), d.u8(1), d.step(1), s.size()); \
         }}
#define P2_P3S(A, B, fn)                                                                                     \
    Step{L::A, L::B, repack, false, #fn, [](const Frame& s, Frame& d) {                                       \
             CALL(fn, s.u8(0), s.step(0), s.u8(1), s.step(1), d.planes().data(), d.steps().data(), s.size()); \
         }}
#define P2_C2(A, B, fn)                                                                                      \
    Step{L::A, L::B, repack, false, #fn, [](const Frame& s, Frame& d) {                                       \
             CALL(fn, s.u8(0), s.step(0), s.u8(1), s.step(1), d.u8(0), d.step(0), s.size());                  \
         }}
#define C2_P3S(A, B, fn)                                                                                     \
    Step{L::A, L::B, repack, false, #fn, [](const Frame& s, Frame& d) {                                       \
             CALL(fn, s.u8(0), s.step(0), d.planes().data(), d.steps().data(), s.size());                     \
         }}
#define C2_P2(A, B, fn)                                                                                      \
    Step{L::A, L::B, repack, false, #fn, [](const Frame& s, Frame& d) {                                       \
             CALL(fn, s.u8(0), s.step(0), d.u8(0), d.step(0), d.u8(1), d.step(1), s.size());                  \
         }}
#define P3S_C2(A, B, fn)                                                                                     \
    Step{L::A, L::B, repack, false, #fn, [](const Frame& s, Frame& d) {                                       \
             CALL(fn, s.cplanes().data(), s.steps().data(), d.u8(0), d.step(0), s.size());                    \
         }}
#define C2_C2(A, B, fn)                                                                                      \
    Step{L::A, L::B, repack, false, #fn, [](const Frame& s, Frame& d) {                                       \
             CALL(fn, s.u8(0), s.step(0), d.u8(0), d.step(0), s.size());                                      \
         }}
// Narrowing by requantising to every level of the narrower type, no dither.
#define NARROW(A, B, fn, TS, TD, levels)                                                                     \
    Step{L::A, L::B, colour, false, #fn " (" #levels " levels, no dither)", [](const Frame& s, Frame& d) {    \
             CALL(fn, reinterpret_cast<const TS*>(s.u8()), s.step(0), reinterpret_cast<TD*>(d.u8()), d.step(0), \
                  s.size(), 0, kelDitherOff, levels);                                                         \
         }}
#define CFA(A, B, fn, T, grid)                                                                               \
    Step{L::A, L::B, colour, false, #fn " (" #grid ")", [](const Frame& s, Frame& d) {                        \
             CALL(fn, reinterpret_cast<const T*>(s.u8()), KelImageRect{0, 0, s.width, s.height}, s.size(),     \
                  s.step(0), reinterpret_cast<T*>(d.u8()), d.step(0), grid);                                  \
         }}

// Byte moves kelcc does itself: channel order, alpha, plane order and
// interleaving, gray to three channels, and exact widening of sample types.
template <typename T, int SC, int DC>
void moveChannels(const Frame& s, Frame& d, std::array<int, 4> pick, T fill)
{
    const std::size_t n = static_cast<std::size_t>(s.width) * s.height;
    const T* src = reinterpret_cast<const T*>(s.u8());
    T* dst = reinterpret_cast<T*>(d.u8());
    for (std::size_t i = 0; i < n; ++i)
        for (int c = 0; c < DC; ++c) dst[i * DC + c] = pick[c] < 0 ? fill : src[i * SC + pick[c]];
}

template <typename TS, typename TD>
void scaleSamples(const Frame& s, Frame& d, double factor)
{
    const std::size_t n = s.data.size() / sizeof(TS);
    const TS* src = reinterpret_cast<const TS*>(s.u8());
    TD* dst = reinterpret_cast<TD*>(d.u8());
    for (std::size_t i = 0; i < n; ++i) dst[i] = static_cast<TD>(src[i] * factor);
}

void exchangePlanes(const Frame& s, Frame& d)
{
    std::memcpy(d.u8(0), s.u8(0), static_cast<std::size_t>(s.step(0)) * s.rows(0));
    const std::size_t chroma = static_cast<std::size_t>(s.step(1)) * s.rows(1);
    std::memcpy(d.u8(1), s.u8(2), chroma);
    std::memcpy(d.u8(2), s.u8(1), chroma);
}

void planesToPixels(const Frame& s, Frame& d)
{
    const std::size_t n = static_cast<std::size_t>(s.width) * s.height;
    for (std::size_t i = 0; i < n; ++i)
        for (int c = 0; c < 3; ++c) d.u8()[i * 3 + c] = s.u8(c)[i];
}

void pixelsToPlanes(const Frame& s, Frame& d)
{
    const std::size_t n = static_cast<std::size_t>(s.width) * s.height;
    for (std::size_t i = 0; i < n; ++i)
        for (int c = 0; c < 3; ++c) d.u8(c)[i] = s.u8()[i * 3 + c];
}

#define TOOL(A, B, cost, how, body) Step{L::A, L::B, cost, true, how, [](const Frame& s, Frame& d) { body; }}

const std::vector<Step>& allSteps()
{
    static const std::vector<Step> steps = {
        // RGB and BGR to and from studio-range YCbCr
        C_P3S(rgb24, i420, keliRGBToYCbCr420_8u_C3P3R, Kel8u),
        C_P3S(bgr24, i420, keliBGRToYCbCr420_8u_C3P3R, Kel8u),
        C_P3S(bgr24, yv12, keliBGRToYCrCb420_8u_C3P3R, Kel8u),
        P3S_C(i420, rgb24, keliYCbCr420ToRGB_8u_P3C3R, Kel8u),
        P3S_C(i420, bgr24, keliYCbCr420ToBGR_8u_P3C3R, Kel8u),
        CC(rgb24, yuy2, keliRGBToYCbCr422_8u_C3C2R, Kel8u, Kel8u),
        CC(bgr24, yuy2, keliBGRToYCbCr422_8u_C3C2R, Kel8u, Kel8u),
        CC(rgb24, uyvy, keliRGBToCbYCr422_8u_C3C2R, Kel8u, Kel8u),
        CC(yuy2, rgb24, keliYCbCr422ToRGB_8u_C2C3R, Kel8u, Kel8u),
        CC(yuy2, bgr24, keliYCbCr422ToBGR_8u_C2C3R, Kel8u, Kel8u),
        CC(uyvy, rgb24, keliCbYCr422ToRGB_8u_C2C3R, Kel8u, Kel8u),
        C_P3S(bgr24, yuv422p, keliBGRToYCbCr422_8u_C3P3R, Kel8u),
        P3S_C(yuv422p, rgb24, keliYCbCr422ToRGB_8u_P3C3R, Kel8u),
        C_P3S(bgr24, yuv411p, keliBGRToYCbCr411_8u_C3P3R, Kel8u),
        P3S_C(yuv411p, bgr24, keliYCbCr411ToBGR_8u_P3C3R, Kel8u),
        CC(rgb24, ycbcr24, keliRGBToYCbCr_8u_C3R, Kel8u, Kel8u),
        CC(ycbcr24, rgb24, keliYCbCrToRGB_8u_C3R, Kel8u, Kel8u),
        P3_C(yuv444p, rgb24, keliYCbCrToRGB_8u_P3C3R, Kel8u),
        P3_C(yuv444p, bgr24, keliYCbCrToBGR_8u_P3C3R, Kel8u),
        // gray
        CC(rgb24, gray, keliRGBToGray_8u_C3C1R, Kel8u, Kel8u),
        CC(rgba, gray, keliRGBToGray_8u_AC4C1R, Kel8u, Kel8u),
        CC(rgb48, gray16, keliRGBToGray_16u_C3C1R, Kel16u, Kel16u),
        CC(rgbf, grayf, keliRGBToGray_32f_C3C1R, Kel32f, Kel32f),
        // packed 16-bit RGB; the library names fields from bit 0 up, video
        // tools from the top bit down, so each name is the other's reverse
        CC(bgr24, rgb565, keliBGRToBGR565_8u16u_C3R, Kel8u, Kel16u),
        CC(rgb565, bgr24, keliBGR565ToBGR_16u8u_C3R, Kel16u, Kel8u),
        CC(rgb24, bgr565, keliRGBToRGB565_8u16u_C3R, Kel8u, Kel16u),
        CC(bgr565, rgb24, keliRGB565ToRGB_16u8u_C3R, Kel16u, Kel8u),
        P3S_C(i420, rgb565, keliYCbCr420ToBGR565_8u16u_P3C3R, Kel16u),
        P3S_C(i420, bgr565, keliYCbCr420ToRGB565_8u16u_P3C3R, Kel16u),
        P3S_C(i420, bgr555, keliYCbCr420ToRGB555_8u16u_P3C3R, Kel16u),
        CC(yuy2, rgb565, keliYCbCr422ToBGR565_8u16u_C2C3R, Kel8u, Kel16u),
        CC(yuy2, bgr565, keliYCbCr422ToRGB565_8u16u_C2C3R, Kel8u, Kel16u),
        CC(yuy2, bgr555, keliYCbCr422ToRGB555_8u16u_C2C3R, Kel8u, Kel16u),
        P3S_C(yuv422p, rgb565, keliYCbCr422ToBGR565_8u16u_P3C3R, Kel16u),
        P3S_C(yuv422p, bgr565, keliYCbCr422ToRGB565_8u16u_P3C3R, Kel16u),
        P3S_C(yuv422p, bgr555, keliYCbCr422ToRGB555_8u16u_P3C3R, Kel16u),
        P3_C(yuv444p, rgb565, keliYCbCrToBGR565_8u16u_P3C3R, Kel16u),
        P3_C(yuv444p, bgr565, keliYCbCrToRGB565_8u16u_P3C3R, Kel16u),
        P3_C(yuv444p, bgr555, keliYCbCrToRGB555_8u16u_P3C3R, Kel16u),
        CC(ycbcr24, rgb565, keliYCbCrToBGR565_8u16u_C3R, Kel8u, Kel16u),
        CC(ycbcr24, bgr565, keliYCbCrToRGB565_8u16u_C3R, Kel8u, Kel16u),
        CC(ycbcr24, bgr555, keliYCbCrToRGB555_8u16u_C3R, Kel8u, Kel16u),
        P3S_C(yuv411p, rgb565, keliYCbCr411ToBGR565_8u16u_P3C3R, Kel16u),
        C_P3S(rgb565, i420, keliBGR565ToYCbCr420_16u8u_C3P3R, Kel16u),
        C_P3S(rgb565, yv12, keliBGR565ToYCrCb420_16u8u_C3P3R, Kel16u),
        C_P3S(rgb565, yuv422p, keliBGR565ToYCbCr422_16u8u_C3P3R, Kel16u),
        CC(rgb565, yuy2, keliBGR565ToYCbCr422_16u8u_C3C2R, Kel16u, Kel8u),
        C_P3S(rgb565, yuv411p, keliBGR565ToYCbCr411_16u8u_C3P3R, Kel16u),
        // The library reads 555 words with blue in the low bits only: read
        // with red there, the picture comes out with red and blue exchanged,
        // and its BGR conversion back from 4:2:2 is the picture's RGB.
        Step{L::bgr555, L::rgb24, 2 * colour, false,
             "keliBGR555ToYCbCr422_16u8u_C3C2R on the red/blue-exchanged words, then keliYCbCr422ToBGR_8u_C2C3R",
             [](const Frame& s, Frame& d) {
                 Frame mid(L::yuy2, s.width, s.height);
                 CALL(keliBGR555ToYCbCr422_16u8u_C3C2R, s.u16(), s.step(0), mid.u8(), mid.step(0), s.size());
                 CALL(keliYCbCr422ToBGR_8u_C2C3R, mid.u8(), mid.step(0), d.u8(), d.step(0), s.size());
             }},
        // repacking among the sub-sampled forms
        P3S_P3S(i420, yuv422p, keliYCbCr420ToYCbCr422_8u_P3R),
        P3S_P3S(yv12, yuv422p, keliYCrCb420ToYCbCr422_8u_P3R),
        P2_P3S(nv12, yuv422p, keliYCbCr420ToYCbCr422_8u_P2P3R),
        P3S_P3S(yuv422p, i420, keliYCbCr422ToYCbCr420_8u_P3R),
        C2_P3S(yuy2, i420, keliYCbCr422ToYCbCr420_8u_C2P3R),
        C2_P3S(uyvy, i420, keliCbYCr422ToYCbCr420_8u_C2P3R),
        P3S_P2(yuv422p, nv12, keliYCbCr422ToYCbCr420_8u_P3P2R),
        C2_P3S(yuy2, yuv422p, keliYCbCr422_8u_C2P3R),
        P3S_C2(yuv422p, yuy2, keliYCbCr422_8u_P3C2R),
        C2_P3S(uyvy, yuv422p, keliCbYCr422ToYCbCr422_8u_C2P3R),
        P3S_P2(i420, nv12, keliYCbCr420_8u_P3P2R),
        P2_P3S(nv12, i420, keliYCbCr420_8u_P2P3R),
        P3S_P3S(yuv422p, yuv411p, keliYCbCr422ToYCbCr411_8u_P3R),
        P3S_P3S(yuv411p, yuv422p, keliYCbCr411ToYCbCr422_8u_P3R),
        P3S_P3S(yuv411p, i420, keliYCbCr411ToYCbCr420_8u_P3R),
        P2_C2(nv12, yuy2, keliYCbCr420ToYCbCr422_8u_P2C2R),
        P2_C2(nv12, uyvy, keliYCbCr420ToCbYCr422_8u_P2C2R),
        P3S_P2(yv12, nv12, keliYCrCb420ToYCbCr420_8u_P3P2R),
        P3S_C2(yv12, yuy2, keliYCrCb420ToYCbCr422_8u_P3C2R),
        P3S_C2(yv12, uyvy, keliYCrCb420ToCbYCr422_8u_P3C2R),
        C2_P3S(yuy2, yv12, keliYCbCr422ToYCrCb420_8u_C2P3R),
        C2_P3S(uyvy, yv12, keliCbYCr422ToYCrCb420_8u_C2P3R),
        C2_P2(yuy2, nv12, keliYCbCr422ToYCbCr420_8u_C2P2R),
        C2_P2(uyvy, nv12, keliCbYCr422ToYCbCr420_8u_C2P2R),
        C2_C2(yuy2, uyvy, keliYCbCr422ToCbYCr422_8u_C2R),
        C2_C2(uyvy, yuy2, keliCbYCr422ToYCbCr422_8u_C2R),
        // narrower sample types
        NARROW(rgb48, rgb24, keliReduceBits_16u8u_C3R, Kel16u, Kel8u, 256),
        NARROW(gray16, gray, keliReduceBits_16u8u_C1R, Kel16u, Kel8u, 256),
        NARROW(rgbf, rgb24, keliReduceBits_32f8u_C3R, Kel32f, Kel8u, 256),
        NARROW(rgbf, rgb48, keliReduceBits_32f16u_C3R, Kel32f, Kel16u, 256),
        NARROW(grayf, gray, keliReduceBits_32f8u_C1R, Kel32f, Kel8u, 256),
        NARROW(grayf, gray16, keliReduceBits_32f16u_C1R, Kel32f, Kel16u, 256),
        // Bayer mosaics
        CFA(rggb8, rgb24, keliCFAToRGB_8u_C1C3R, Kel8u, kelBayerGridRGGB),
        CFA(bggr8, rgb24, keliCFAToRGB_8u_C1C3R, Kel8u, kelBayerGridBGGR),
        CFA(grbg8, rgb24, keliCFAToRGB_8u_C1C3R, Kel8u, kelBayerGridGRBG),
        CFA(gbrg8, rgb24, keliCFAToRGB_8u_C1C3R, Kel8u, kelBayerGridGBRG),
        CFA(rggb16, rgb48, keliCFAToRGB_16u_C1C3R, Kel16u, kelBayerGridRGGB),
        CFA(bggr16, rgb48, keliCFAToRGB_16u_C1C3R, Kel16u, kelBayerGridBGGR),
        CFA(grbg16, rgb48, keliCFAToRGB_16u_C1C3R, Kel16u, kelBayerGridGRBG),
        CFA(gbrg16, rgb48, keliCFAToRGB_16u_C1C3R, Kel16u, kelBayerGridGBRG),
        // kelcc's own byte moves
        TOOL(rgb24, bgr24, repack, "kelcc reverses the channel order", (moveChannels<Kel8u, 3, 3>(s, d, {2, 1, 0, -1}, 0))),
        TOOL(bgr24, rgb24, repack, "kelcc reverses the channel order", (moveChannels<Kel8u, 3, 3>(s, d, {2, 1, 0, -1}, 0))),
        TOOL(rgb24, rgba, repack, "kelcc adds an opaque alpha", (moveChannels<Kel8u, 3, 4>(s, d, {0, 1, 2, -1}, 255))),
        TOOL(rgba, rgb24, repack, "kelcc drops the alpha", (moveChannels<Kel8u, 4, 3>(s, d, {0, 1, 2, -1}, 0))),
        TOOL(bgr24, bgra, repack, "kelcc adds an opaque alpha", (moveChannels<Kel8u, 3, 4>(s, d, {0, 1, 2, -1}, 255))),
        TOOL(bgra, bgr24, repack, "kelcc drops the alpha", (moveChannels<Kel8u, 4, 3>(s, d, {0, 1, 2, -1}, 0))),
        TOOL(rgba, bgra, repack, "kelcc exchanges red and blue", (moveChannels<Kel8u, 4, 4>(s, d, {2, 1, 0, 3}, 0))),
        TOOL(bgra, rgba, repack, "kelcc exchanges red and blue", (moveChannels<Kel8u, 4, 4>(s, d, {2, 1, 0, 3}, 0))),
        TOOL(gray, rgb24, repack, "kelcc copies gray to R, G and B", (moveChannels<Kel8u, 1, 3>(s, d, {0, 0, 0, -1}, 0))),
        TOOL(gray16, rgb48, repack, "kelcc copies gray to R, G and B", (moveChannels<Kel16u, 1, 3>(s, d, {0, 0, 0, -1}, 0))),
        TOOL(grayf, rgbf, repack, "kelcc copies gray to R, G and B", (moveChannels<Kel32f, 1, 3>(s, d, {0, 0, 0, -1}, 0.0f))),
        TOOL(i420, yv12, repack, "kelcc exchanges the U and V planes", exchangePlanes(s, d)),
        TOOL(yv12, i420, repack, "kelcc exchanges the U and V planes", exchangePlanes(s, d)),
        TOOL(ycbcr24, yuv444p, repack, "kelcc splits the samples into planes", pixelsToPlanes(s, d)),
        TOOL(yuv444p, ycbcr24, repack, "kelcc interleaves the planes", planesToPixels(s, d)),
        TOOL(rgb24, rgb48, widen, "kelcc widens 8 to 16 bits (x 257)", (scaleSamples<Kel8u, Kel16u>(s, d, 257.0))),
        TOOL(gray, gray16, widen, "kelcc widens 8 to 16 bits (x 257)", (scaleSamples<Kel8u, Kel16u>(s, d, 257.0))),
        TOOL(rgb24, rgbf, widen, "kelcc scales to float (/ 255)", (scaleSamples<Kel8u, Kel32f>(s, d, 1.0 / 255.0))),
        TOOL(gray, grayf, widen, "kelcc scales to float (/ 255)", (scaleSamples<Kel8u, Kel32f>(s, d, 1.0 / 255.0))),
        TOOL(rgb48, rgbf, widen, "kelcc scales to float (/ 65535)", (scaleSamples<Kel16u, Kel32f>(s, d, 1.0 / 65535.0))),
        TOOL(gray16, grayf, widen, "kelcc scales to float (/ 65535)", (scaleSamples<Kel16u, Kel32f>(s, d, 1.0 / 65535.0))),
    };
    return steps;
}

// Layouts a route may end at but never pass through: their conversions lose
// colour or precision that no later step gets back.
bool endOnly(Layout l)
{
    return l == L::rgb565 || l == L::bgr565 || l == L::bgr555 || l == L::gray || l == L::gray16 || l == L::grayf;
}

}  // namespace

std::string Route::describe() const
{
    if (steps.empty()) return "no conversion";
    std::string text;
    for (const Step* s : steps) {
        if (!text.empty()) text += "; ";
        text += std::string(layoutName(s->from)) + " -> " + layoutName(s->to) + " (" + s->how + ")";
    }
    return text;
}

Route findRoute(Layout from, Layout to)
{
    Route route;
    auto align = [&](Layout l) {
        route.alignX = std::max(route.alignX, layoutInfo(l).alignX);
        route.alignY = std::max(route.alignY, layoutInfo(l).alignY);
    };
    align(from);
    if (from == to) return route;
    const auto& steps = allSteps();
    std::vector<int> cost(layoutCount, std::numeric_limits<int>::max());
    std::vector<const Step*> via(layoutCount, nullptr);
    using Item = std::pair<int, int>;
    std::priority_queue<Item, std::vector<Item>, std::greater<Item>> queue;
    cost[static_cast<int>(from)] = 0;
    queue.push({0, static_cast<int>(from)});
    while (!queue.empty()) {
        auto [c, n] = queue.top();
        queue.pop();
        if (c > cost[n]) continue;
        const Layout at = static_cast<Layout>(n);
        if (at == to) break;
        if (at != from && endOnly(at)) continue;
        for (const Step& s : steps) {
            if (s.from != at) continue;
            const int m = static_cast<int>(s.to);
            if (c + s.cost < cost[m]) {
                cost[m] = c + s.cost;
                via[m] = &s;
                queue.push({cost[m], m});
            }
        }
    }
    if (!via[static_cast<int>(to)])
        throw Failure(std::string("the library has no conversion from ") + layoutName(from) + " to " + layoutName(to) +
                      (isBayer(to) ? " (it demosaics, it does not mosaic)" : ""));
    for (Layout l = to; l != from; l = via[static_cast<int>(l)]->from) route.steps.insert(route.steps.begin(), via[static_cast<int>(l)]);
    for (const Step* s : route.steps) align(s->to);
    return route;
}

Frame runRoute(const Route& route, Frame frame)
{
    for (const Step* s : route.steps) {
        Frame next(s->to, frame.width, frame.height);
        s->run(frame, next);
        frame = std::move(next);
    }
    return frame;
}

Frame cropFrame(const Frame& frame, int width, int height)
{
    Frame out(frame.layout, width, height);
    for (int i = 0; i < layoutInfo(frame.layout).planes; ++i)
        CALL(keliCopy_8u_C1R, frame.u8(i), frame.step(i), out.u8(i), out.step(i), KelImageSize{out.step(i), out.rows(i)});
    return out;
}

Frame fitFrame(Frame frame, const Route& route, bool crop)
{
    const int w = frame.width / route.alignX * route.alignX;
    const int h = frame.height / route.alignY * route.alignY;
    if (w == frame.width && h == frame.height) return frame;
    // the layout on the way that needs the coarsest cells, for the message
    Layout strict = frame.layout;
    for (const Step* s : route.steps)
        if (layoutInfo(s->to).alignX * layoutInfo(s->to).alignY > layoutInfo(strict).alignX * layoutInfo(strict).alignY) strict = s->to;
    const std::string sizes = std::to_string(frame.width) + "x" + std::to_string(frame.height);
    const std::string rounded = std::to_string(w) + "x" + std::to_string(h);
    if (!crop || w < 1 || h < 1)
        throw Failure(std::string(layoutName(strict)) + " holds whole " + std::to_string(route.alignX) + "x" +
                      std::to_string(route.alignY) + " cells: " + sizes + " would be rounded to " + rounded +
                      (w < 1 || h < 1 ? "" : " (--crop does that)"));
    note("cropped " + sizes + " to " + rounded + " for " + layoutName(strict));
    return cropFrame(frame, w, h);
}

}  // namespace kelcctool

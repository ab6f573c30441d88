// Row kernels of the pixel-order hue families: HSV at 8u and 16u, HLS at 8u,
// 16u, 16s and 32f.  Each converts one row, reading a pixel before writing it.
#include <cstdint>
#include <type_traits>

#include "hueconv.h"
#include "mskcolor.h"

using namespace kel::hue;

namespace {

// The per-pixel conversions, each reading one pixel and writing one.
template <typename T> void rgbToHSV(const T* s, T* out);
template <typename T> void hsvToRGB(const T* s, T* out);
template <typename T> void rgbToHLS(const T* s, T* out);
template <typename T> void hlsToRGB(const T* s, T* out);

template <typename T, void (*Pixel)(const T*, T*)>
void pixelRow(const T* src, T* dst, int width, int pixelStride);

} // namespace

#define KEL_HUE_KERNEL(C3, AC4, LAYER, KERNEL, T, PIXEL)                                                      \
    void KERNEL(const T* src, T* dst, int width, int pixelStride)                                            \
    { pixelRow<T, PIXEL<T>>(src, dst, width, pixelStride); }

KEL_HUE_MEMBERS(KEL_HUE_KERNEL)

#undef KEL_HUE_KERNEL

namespace {

// ---- the row walk --------------------------------------------------------------

// Every pixel converted on its own; the vector rows leave this kernel the
// tails and the pixels they refuse.  The pixel is read whole before its
// results are stored, so a conversion in place works too.
template <typename T, void (*Pixel)(const T*, T*)>
void pixelRow(const T* src, T* dst, int width, int pixelStride)
{
    T converted[3];
    for (int x = 0; x < width; ++x, src += pixelStride, dst += pixelStride) {
        Pixel(src, converted);
        dst[0] = converted[0];
        dst[1] = converted[1];
        dst[2] = converted[2];
    }
}

// ---- HSV -----------------------------------------------------------------------

// The 8-bit hue wraps on the scaled value with 255; the 16-bit hue wraps on
// the sextant, and its red sextant is written as two differences.
template <typename T>
void rgbToHSV(const T* s, T* out)
{
    constexpr int K = Coding<T>::K;
    const int R = s[0], G = s[1], B = s[2];
    const int V = R > G ? (R > B ? R : B) : (G > B ? G : B);
    const int m = R < G ? (R < B ? R : B) : (G < B ? G : B);
    if (V == 0 || V == m) {
        out[0] = 0;  // trunc(0 + c)
        out[1] = 0;
        out[2] = static_cast<T>(V);
        return;
    }
    const int d = V - m;
    const Ext q = 1 / static_cast<Ext>(d);
    const T S = static_cast<T>(static_cast<int>((static_cast<Ext>(d) / V) * K + addendNearest));
    Ext h = 0;
    if (R == V) h = K == 255 ? (G - B) * q : (V - B) * q - (V - G) * q;
    if (G == V) h = 2 + (V - R) * q - (V - B) * q;  // a later hit replaces: blue beats green beats red
    if (B == V) h = 4 - (V - R) * q + (V - G) * q;
    Ext x;
    if constexpr (K == 255) {
        x = h * 255 / 6;
        if (x < 0) x = x + 255;
    } else {
        if (h + floatEpsilon < 0) h = h + 6;
        x = h * 65535 / 6;
    }
    out[0] = static_cast<T>(static_cast<int>(x + addendNearest));
    out[1] = S;
    out[2] = static_cast<T>(V);
}

template <typename T>
void hsvToRGB(const T* s, T* out)
{
    constexpr int K = Coding<T>::K;
    const int H = s[0], S8 = s[1], V8 = s[2];
    Ext r, g, b;
    if (S8 == 0) {
        r = g = b = V8;
    } else {
        const Ext sat = static_cast<Ext>(S8) / K;
        const Ext h = H == K ? 0 : static_cast<Ext>(H * 360) / K / 60;
        const int I = static_cast<int>(h);  // h >= 0, so truncation is the floor
        const Ext f = h - I;
        const Ext M = static_cast<float>((1 - sat) * V8);
        const Ext N = static_cast<float>((1 - sat * f) * V8);
        const Ext P = (1 - sat * (1 - f)) * V8;
        const Ext V = V8;
        switch (I) {
        case 0: r = V; g = P; b = M; break;
        case 1: r = N; g = V; b = M; break;
        case 2: r = M; g = V; b = P; break;
        case 3: r = M; g = N; b = V; break;
        case 4: r = P; g = M; b = V; break;
        default: r = V; g = M; b = N; break;
        }
    }
    out[0] = static_cast<T>(static_cast<int>(r + addendNearest));
    out[1] = static_cast<T>(static_cast<int>(g + addendNearest));
    out[2] = static_cast<T>(static_cast<int>(b + addendNearest));
}

// ---- HLS -----------------------------------------------------------------------

template <typename T>
void rgbToHLS(const T* s, T* out)
{
    if constexpr (std::is_same_v<T, Kel32f>) {
        const HLS v = toHLS<true>(s[0], s[1], s[2]);
        out[0] = static_cast<Kel32f>(v.hueDegrees / 360);
        out[1] = static_cast<Kel32f>(v.lightness);
        out[2] = static_cast<Kel32f>(v.saturation);
    } else {
        const HLS v = toHLS<false>(unitValue(s[0]), unitValue(s[1]), unitValue(s[2]));
        storeHLS(v, addendNearest, &out[0], &out[1], &out[2]);
    }
}

template <typename T>
void hlsToRGB(const T* s, T* out)
{
    if constexpr (std::is_same_v<T, Kel32f>) {
        const RGB v = fromHLS(static_cast<Ext>(s[0]) * 360, s[1], s[2]);
        out[0] = static_cast<Kel32f>(v.r);
        out[1] = static_cast<Kel32f>(v.g);
        out[2] = static_cast<Kel32f>(v.b);
    } else {
        constexpr Ext K = Coding<T>::K;
        const RGB v = decodeHLS(s[0], s[1], s[2]);
        out[0] = store<T>(v.r * K, addendNearest);
        out[1] = store<T>(v.g * K, addendNearest);
        out[2] = store<T>(v.b * K, addendNearest);
    }
}

} // namespace

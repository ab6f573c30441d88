// Row kernels of the pixel-order colour models: HSV at 8u and 16u, HLS at 8u,
// 16u, 16s and 32f; CIE XYZ and LUV and YCC at 8u, 16u, 16s and 32f.  Each
// converts one row, reading a pixel before writing it, so conversions in
// place work.
#include <array>
#include <cmath>
#include <cstdint>
#include <type_traits>

#include "callframe.h"
#include "cbcrpx.h"
#include "hueconv.h"
#include "mskcolor.h"
#include "mskcolorciesimd.h"

using namespace kel;
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

// ==== XYZ, LUV and YCC ====================================================================
//
// RGB <-> XYZ by the D65 matrix (16-bit fixed point at 8u, the extended type
// elsewhere) and RGB <-> LUV on top of it; no gamma: R, G, B enter the matrix
// as they stand.  YCC: integers at 8u, the extended type elsewhere.

namespace {

constexpr Ext c = hue::addendNearest;

// The D65 matrices, each entry the float nearest its decimal.
struct Row3 {
    Ext r, g, b;
};
constexpr Row3 toX{0.412453f, 0.35758f, 0.180423f};
constexpr Row3 toY{0.212671f, 0.71516f, 0.072169f};
constexpr Row3 toZ{0.019334f, 0.119193f, 0.950227f};
constexpr Row3 toR{3.240479f, -1.53715f, -0.498535f};
constexpr Row3 toG{-0.969256f, 1.875991f, 0.041556f};
constexpr Ext blueX = 0.055648f, blueY = -0.204043f;
constexpr Ext blueZDouble = 1.057311;   // 1.0573109999999999
constexpr Ext blueZFloat = 1.057311f;   // 1.0573110580444336

// LUV constants.
constexpr Ext un = 0.197839f, vn = 0.468342f;     // the white point
constexpr Ext un2 = 0.19783941f, vn2 = 0.4683422f;  // the integer inverse's own pair
constexpr Ext yJoin = 0.008856f;
constexpr Ext kappa = 903.3f;
constexpr Ext darkL = 0.00009f;
constexpr Ext cubicL = 7.9996247f;
constexpr double oneThird = 0.3333333432674408;  // the float nearest 1/3, as a double

// 116 cbrt(q) - 16 (903.3 q at or below 0.008856) times 2.55, rounded: the
// coded L of each coded luminance.
constexpr std::uint8_t powL[256] = {
      0,   9,  18,  26,  33,  39,  44,  48,  52,  56,  60,  63,  66,  69,  72,  74,
     77,  79,  81,  84,  86,  88,  90,  92,  94,  96,  97,  99, 101, 103, 104, 106,
    107, 109, 110, 112, 113, 115, 116, 117, 119, 120, 121, 123, 124, 125, 126, 128,
    129, 130, 131, 132, 133, 134, 136, 137, 138, 139, 140, 141, 142, 143, 144, 145,
    146, 147, 148, 149, 150, 151, 151, 152, 153, 154, 155, 156, 157, 158, 159, 159,
    160, 161, 162, 163, 163, 164, 165, 166, 167, 167, 168, 169, 170, 171, 171, 172,
    173, 174, 174, 175, 176, 176, 177, 178, 179, 179, 180, 181, 181, 182, 183, 183,
    184, 185, 185, 186, 187, 187, 188, 189, 189, 190, 191, 191, 192, 192, 193, 194,
    194, 195, 196, 196, 197, 197, 198, 198, 199, 200, 200, 201, 201, 202, 203, 203,
    204, 204, 205, 205, 206, 206, 207, 208, 208, 209, 209, 210, 210, 211, 211, 212,
    212, 213, 213, 214, 215, 215, 216, 216, 217, 217, 218, 218, 219, 219, 220, 220,
    221, 221, 222, 222, 223, 223, 224, 224, 225, 225, 225, 226, 226, 227, 227, 228,
    228, 229, 229, 230, 230, 231, 231, 232, 232, 232, 233, 233, 234, 234, 235, 235,
    236, 236, 236, 237, 237, 238, 238, 239, 239, 240, 240, 240, 241, 241, 242, 242,
    242, 243, 243, 244, 244, 245, 245, 245, 246, 246, 247, 247, 247, 248, 248, 249,
    249, 249, 250, 250, 251, 251, 251, 252, 252, 253, 253, 253, 254, 254, 255, 255,
};

// trunc(x) clamped to 1..K, below 1 giving 0, decided on x itself so that no
// value (NaN included: 0) meets an out-of-range cast.
inline int clampedCode(Ext x, int K)
{
    if (!(x >= 1)) return 0;
    if (x >= K) return K;
    return static_cast<int>(x);
}

// A float result clamped by compare: below 0 gives 0, at or above 1 gives 1.
inline Ext unitClamp(Ext x)
{
    if (x < 0) return 0;
    if (x >= 1) return 1;
    return x;
}

template <typename T>
inline T codeToSample(int code)
{
    return static_cast<T>(code - Coding<T>::offset);
}

// ---- XYZ ------------------------------------------------------------------------------

template <typename T>
void rgbToXYZ(const T* src, T* dst, int width, int pixelStride)
{
    for (int x = 0; x < width; ++x, src += pixelStride, dst += pixelStride) {
        if constexpr (std::is_same_v<T, Kel8u>) {
            const int R = src[0], G = src[1], B = src[2];
            const int X = (27030 * R + 23434 * G + 11824 * B) >> 16;
            const int Y = (13937 * R + 46868 * G + 4729 * B) >> 16;
            const int Z = (1267 * R + 7811 * G + 62274 * B) >> 16;
            dst[0] = static_cast<Kel8u>(X);  // both rows sum to under 65536
            dst[1] = static_cast<Kel8u>(Y);
            dst[2] = chop[370 + Z];
        } else if constexpr (std::is_same_v<T, Kel32f>) {
            const Ext R = src[0], G = src[1], B = src[2];
            const Ext X = (toX.r * R + toX.g * G) + toX.b * B;
            const Ext Y = (toY.r * R + toY.g * G) + toY.b * B;
            Ext Z = (toZ.r * R + toZ.g * G) + toZ.b * B;
            if (Z < 0) Z = 0;
            else if (Z >= 1) Z = 1;
            dst[0] = static_cast<Kel32f>(X);
            dst[1] = static_cast<Kel32f>(Y);
            dst[2] = static_cast<Kel32f>(Z);
        } else {
            const Ext R = hue::codeOf(src[0]), G = hue::codeOf(src[1]), B = hue::codeOf(src[2]);
            const Ext X = ((toX.r * R + c) + toX.g * G) + toX.b * B;
            const Ext Y = ((toY.r * R + c) + toY.g * G) + toY.b * B;
            const Ext Z = ((toZ.r * R + c) + toZ.g * G) + toZ.b * B;
            dst[0] = codeToSample<T>(static_cast<int>(X));  // 0..65535 for any input
            dst[1] = codeToSample<T>(static_cast<int>(Y));
            dst[2] = codeToSample<T>(clampedCode(Z, 65535));
        }
    }
}

template <typename T>
void xyzToRGB(const T* src, T* dst, int width, int pixelStride)
{
    for (int x = 0; x < width; ++x, src += pixelStride, dst += pixelStride) {
        if constexpr (std::is_same_v<T, Kel8u>) {
            const int X = src[0], Y = src[1], Z = src[2];
            const auto byte = [](int sum) {
                const int v = sum >> 16;  // arithmetic: a negative sum lands below 0
                return static_cast<Kel8u>(v >= 255 ? 255 : (v < 1 ? 0 : v));
            };
            dst[0] = byte(212368 * X - 100738 * Y - 32671 * Z);
            dst[1] = byte(-63521 * X + 122944 * Y + 2723 * Z);
            dst[2] = byte(3646 * X - 13372 * Y + 69291 * Z);
        } else if constexpr (std::is_same_v<T, Kel32f>) {
            const Ext X = src[0], Y = src[1], Z = src[2];
            const Ext R = (toR.r * X + toR.g * Y) + toR.b * Z;
            const Ext G = (toG.g * Y + toG.r * X) + toG.b * Z;
            const Ext B = (blueX * X + blueY * Y) + blueZFloat * Z;
            dst[0] = static_cast<Kel32f>(unitClamp(R));
            dst[1] = static_cast<Kel32f>(unitClamp(G));
            dst[2] = static_cast<Kel32f>(unitClamp(B));
        } else {
            const Ext X = hue::codeOf(src[0]), Y = hue::codeOf(src[1]), Z = hue::codeOf(src[2]);
            const Ext R = ((toR.r * X + c) + toR.g * Y) + toR.b * Z;
            const Ext G = ((toG.r * X + c) + toG.g * Y) + toG.b * Z;
            // The 16-bit unsigned blue sum takes c after the Y term and the
            // double 1.057311; the signed one takes c first and the float.
            const Ext B = std::is_same_v<T, Kel16u> ? ((blueX * X + blueY * Y) + c) + blueZDouble * Z
                                                   : ((blueX * X + c) + blueY * Y) + blueZFloat * Z;
            dst[0] = codeToSample<T>(clampedCode(R, 65535));
            dst[1] = codeToSample<T>(clampedCode(G, 65535));
            dst[2] = codeToSample<T>(clampedCode(B, 65535));
        }
    }
}

// ---- LUV --------------------------------------------------------------------------------

// The 8-bit forward: the coded luminance looks up the coded L, and the
// chromaticity scales by 13 * 100 / 354 and 13 * 100 / 262 around offsets
// that hold the coded range's start and the half for rounding.
void rgbToLUV8u(const Kel8u* src, Kel8u* dst)
{
    const Ext R = src[0], G = src[1], B = src[2];
    const Ext X = (toX.r * R + toX.g * G) + toX.b * B;
    const Ext Y = (toY.r * R + toY.g * G) + toY.b * B;
    const Ext Z = (toZ.r * R + toZ.g * G) + toZ.b * B;
    const int Y8 = static_cast<int>(c + Y);  // below 255 + c: no bound check
    const int L8 = powL[Y8];
    Ext u = 0, v = 0;
    if (Y8 != 0) {
        const Ext Xn = X / 255, Yn = Y / 255, Zn = Z / 255;
        const Ext d = (3 * Zn + Xn) + 15 * Yn;
        u = 4 * Xn / d;
        v = 9 * Yn / d;
    }
    dst[0] = static_cast<Kel8u>(L8);
    dst[1] = static_cast<Kel8u>(static_cast<int>((static_cast<Ext>(3.6723163f) * L8) * (u - un) + static_cast<Ext>(97.02543f)));
    dst[2] = static_cast<Kel8u>(static_cast<int>((L8 * static_cast<Ext>(4.961832f)) * (v - vn) + static_cast<Ext>(136.75955f)));
}

// The 16-bit forward on codes 0..65535.
template <typename T>
void rgbToLUV16(const T* src, T* dst)
{
    constexpr int K = 65535;
    const Ext R = hue::codeOf(src[0]), G = hue::codeOf(src[1]), B = hue::codeOf(src[2]);
    Ext X = (toX.r * R + toX.g * G) + toX.b * B;
    Ext Y = (toY.r * R + toY.g * G) + toY.b * B;
    Ext Z = (toZ.g * G + toZ.r * R) + toZ.b * B;
    const Ext y = Y / K;
    Ext L;
    if (y <= yJoin) {
        L = (kappa * Y) / K;
    } else {
        X = static_cast<float>(X);
        Y = static_cast<float>(Y);
        Z = static_cast<float>(Z);
        L = 116 * static_cast<Ext>(::pow(static_cast<double>(y), oneThird)) - 16;
    }
    Ext u = 0, v = 0;
    if (Y != 0) {
        const Ext d = (15 * Y + X) + 3 * Z;
        u = 4 * X / d;
        v = 9 * Y / d;
    }
    const Ext t = L * 13;
    const Ext U = t * (u - un), V = t * (v - vn);
    dst[0] = codeToSample<T>(truncate32((L * K) / 100 + c));
    dst[1] = codeToSample<T>(truncate32(((U + 134) * K) / 354 + c));
    dst[2] = codeToSample<T>(truncate32(((V + 140) * K) / 262 + c));
}

// The float forward in natural units.  Its rows may start at any byte
// address, so samples go through copies.
void rgbToLUV32f(const Kel32f* src, Kel32f* dst)
{
    const Ext R = loadSample(src), G = loadSample(src + 1), B = loadSample(src + 2);
    Ext X = (toX.r * R + toX.g * G) + toX.b * B;
    Ext Y = toY.b * B + (toY.r * R + toY.g * G);
    Ext Z = (toZ.g * G + toZ.r * R) + toZ.b * B;
    Ext L, u = 0, v = 0;
    bool chromatic = true;
    if (Y <= yJoin) {
        L = kappa * Y;
        chromatic = Y != 0;
    } else {
        X = static_cast<float>(X);
        Y = static_cast<float>(Y);
        Z = static_cast<float>(Z);
        L = 116 * static_cast<Ext>(::pow(static_cast<double>(Y), oneThird)) - 16;
    }
    if (chromatic) {
        const Ext d = 3 * Z + (15 * Y + X);
        u = 4 * X / d;
        v = 9 * Y / d;
    }
    storeSample(dst, static_cast<Kel32f>(L));
    storeSample(dst + 1, static_cast<Kel32f>((L * 13) * (u - un)));
    storeSample(dst + 2, static_cast<Kel32f>((L * 13) * (v - vn)));
}

// The integer inverse on codes over 0..K; X, Y and Z come out on the K scale,
// so the matrix gives coded R, G, B directly.  A V / q + vn2 near zero can
// make the sums huge: the clamp is decided on the extended value.
template <typename T>
void luvToRGBInteger(const T* src, T* dst)
{
    constexpr int K = Coding<T>::K;
    const Ext L = static_cast<Ext>(hue::codeOf(src[0]) * 100) / K;
    if (L < darkL) {
        dst[0] = dst[1] = dst[2] = codeToSample<T>(0);
        return;
    }
    const Ext U = static_cast<Ext>(hue::codeOf(src[1]) * 354) / K - 134;
    const Ext V = static_cast<Ext>(hue::codeOf(src[2]) * 262) / K - 140;
    const Ext t = (16 + L) / 116;
    const Ext y = L >= cubicL ? t * (t * t) : L / kappa;
    const Ext Y = y * K;
    const Ext q = L * 13;
    const Ext A = Y / (V / q + vn2);
    const Ext X = (static_cast<Ext>(2.25) * A) * (U / q + un2);
    const Ext Z = (A * 3 - 5 * Y) - X / 3;
    const Ext R = (toR.r * X + (c + toR.g * Y)) + toR.b * Z;
    const Ext G = (toG.r * X + (toG.g * Y + c)) + toG.b * Z;
    const Ext B = blueZDouble * Z + ((blueX * X + blueY * Y) + c);
    dst[0] = codeToSample<T>(clampedCode(R, K));
    dst[1] = codeToSample<T>(clampedCode(G, K));
    dst[2] = codeToSample<T>(clampedCode(B, K));
}

void luvToRGB32f(const Kel32f* src, Kel32f* dst)
{
    const Ext L = src[0], U = src[1], V = src[2];
    if (L < darkL) {
        dst[0] = dst[1] = dst[2] = 0;
        return;
    }
    const Ext t = (16 + L) / 116;
    const Ext Y = L >= cubicL ? t * (t * t) : L / kappa;
    const Ext q = L * 13;
    const Ext A = Y / (V / q + vn);
    const Ext X = (static_cast<Ext>(2.25) * A) * (U / q + un);
    const Ext Z = (A * 3 - 5 * Y) - X / 3;
    const Ext R = (toR.r * X + toR.g * Y) + toR.b * Z;
    const Ext G = toG.b * Z + (toG.r * X + toG.g * Y);
    const Ext B = (blueX * X + blueY * Y) + blueZFloat * Z;
    dst[0] = static_cast<Kel32f>(unitClamp(R));
    dst[1] = static_cast<Kel32f>(unitClamp(G));
    dst[2] = static_cast<Kel32f>(unitClamp(B));
}

template <typename T>
void rgbToLUV(const T* src, T* dst, int width, int pixelStride)
{
    for (int x = 0; x < width; ++x, src += pixelStride, dst += pixelStride) {
        if constexpr (std::is_same_v<T, Kel8u>) rgbToLUV8u(src, dst);
        else if constexpr (std::is_same_v<T, Kel32f>) rgbToLUV32f(src, dst);
        else rgbToLUV16(src, dst);
    }
}

template <typename T>
void luvToRGB(const T* src, T* dst, int width, int pixelStride)
{
    for (int x = 0; x < width; ++x, src += pixelStride, dst += pixelStride) {
        if constexpr (std::is_same_v<T, Kel32f>) luvToRGB32f(src, dst);
        else luvToRGBInteger(src, dst);
    }
}

// ---- YCC ----------------------------------------------------------------------------------

// The 8-bit forward in integers: the 14-bit luma sum reduced by a shift of 10
// before each second multiplication; over all inputs Y stays in 0..181 and
// the chroma in 41..254, kept to their low 8 bits.  The 8-bit inverse in
// 12-bit integers through chop, whose indices stay within -346..565.
void rgbToYCC8u(const Kel8u* src, Kel8u* dst)
{
    const int R = src[0], G = src[1], B = src[2];
    const int S = 4898 * R + 9617 * G + 1867 * B;
    dst[0] = static_cast<Kel8u>(((S >> 10) * 2921) >> 16);
    dst[1] = static_cast<Kel8u>((((B * 16384 - S) >> 10) * 1789 >> 16) + 156);
    dst[2] = static_cast<Kel8u>((((R * 16384 - S) >> 10) * 2178 >> 16) + 137);
}

void yccToRGB8u(const Kel8u* src, Kel8u* dst)
{
    const int a = src[0] * 5564, b = src[1] * 9084 - 1417104, d = src[2] * 7460 - 1022020;
    const int R = (a + d) >> 12;
    const int G = (16 * a - 794 * (b >> 8) - 2084 * (d >> 8)) >> 16;
    const int B = (a + b) >> 12;
    dst[0] = chop[370 + R];
    dst[1] = chop[370 + G];
    dst[2] = chop[370 + B];
}

// The 16-bit forward: the unsigned form with the scale folded into its
// coefficients, the signed form with the luma sum first; results unclamped.
template <typename T>
void rgbToYCC16(const T* src, T* dst)
{
    const Ext R = hue::codeOf(src[0]), G = hue::codeOf(src[1]), B = hue::codeOf(src[2]);
    Ext Y, C1, C2;
    if constexpr (std::is_same_v<T, Kel16u>) {
        Y = ((static_cast<Ext>(0.213267f) * R + static_cast<Ext>(0.418688f) * G) + static_cast<Ext>(0.0813124f) * B) + c;
        C1 = (((static_cast<Ext>(-0.130621f) * R + 40092) - static_cast<Ext>(0.256437f) * G) +
              static_cast<Ext>(0.387058f) * B) + c;
        C2 = (((static_cast<Ext>(0.372876f) * R + 35209) - static_cast<Ext>(0.312237f) * G) -
              static_cast<Ext>(0.0606389f) * B) + c;
    } else {
        const Ext L = (static_cast<Ext>(0.299f) * R + static_cast<Ext>(0.587f) * G) + static_cast<Ext>(0.114f) * B;
        Y = L * static_cast<Ext>(0.7132668f) + c;
        C1 = ((B - L) * static_cast<Ext>(0.43686f) + 40092) + c;
        C2 = ((R - L) * static_cast<Ext>(0.53192f) + 35209) + c;
    }
    dst[0] = codeToSample<T>(truncate32(Y));
    dst[1] = codeToSample<T>(truncate32(C1));
    dst[2] = codeToSample<T>(truncate32(C2));
}

template <typename T>
void yccToRGB16(const T* src, T* dst)
{
    const Ext y = hue::codeOf(src[0]) * static_cast<Ext>(1.3584f);
    const Ext p = (hue::codeOf(src[1]) - 40092) * static_cast<Ext>(2.2179f);  // 16s: C1 - 7324, the same
    const Ext q = (hue::codeOf(src[2]) - 35209) * static_cast<Ext>(1.8215f);
    dst[0] = codeToSample<T>(clampedCode((y + q) + c, 65535));
    dst[1] = codeToSample<T>(clampedCode(((y - static_cast<Ext>(0.194f) * p) - static_cast<Ext>(0.509f) * q) + c, 65535));
    dst[2] = codeToSample<T>(clampedCode((p + y) + c, 65535));
}

void rgbToYCC32f(const Kel32f* src, Kel32f* dst)
{
    const Ext R = src[0], G = src[1], B = src[2];
    const Ext L = (static_cast<Ext>(0.299f) * R + static_cast<Ext>(0.587f) * G) + static_cast<Ext>(0.114f) * B;
    dst[0] = static_cast<Kel32f>(L * static_cast<Ext>(0.7132668f));
    dst[1] = static_cast<Kel32f>((B - L) * static_cast<Ext>(0.43686f) + static_cast<Ext>(0.6117647f));
    dst[2] = static_cast<Kel32f>((R - L) * static_cast<Ext>(0.53192f) + static_cast<Ext>(0.5372549f));
}

void yccToRGB32f(const Kel32f* src, Kel32f* dst)
{
    const Ext y = src[0] * static_cast<Ext>(1.3584f);
    const Ext p = (src[1] - static_cast<Ext>(0.6117647f)) * static_cast<Ext>(2.2179f);
    const Ext q = (src[2] - static_cast<Ext>(0.5372549f)) * static_cast<Ext>(1.8215f);
    const auto unit = [](Ext v) { return static_cast<Kel32f>(v < 0 ? 0 : (v > 1 ? 1 : v)); };
    dst[0] = unit(y + q);
    dst[1] = unit((y - static_cast<Ext>(0.194f) * p) - static_cast<Ext>(0.509f) * q);
    dst[2] = unit(p + y);
}

template <typename T>
void rgbToYCC(const T* src, T* dst, int width, int pixelStride)
{
    for (int x = 0; x < width; ++x, src += pixelStride, dst += pixelStride) {
        if constexpr (std::is_same_v<T, Kel8u>) rgbToYCC8u(src, dst);
        else if constexpr (std::is_same_v<T, Kel32f>) rgbToYCC32f(src, dst);
        else rgbToYCC16(src, dst);
    }
}

template <typename T>
void yccToRGB(const T* src, T* dst, int width, int pixelStride)
{
    for (int x = 0; x < width; ++x, src += pixelStride, dst += pixelStride) {
        if constexpr (std::is_same_v<T, Kel8u>) yccToRGB8u(src, dst);
        else if constexpr (std::is_same_v<T, Kel32f>) yccToRGB32f(src, dst);
        else yccToRGB16(src, dst);
    }
}

} // namespace

// Each kernel is its conversion over one row.
#define KEL_CIE_KERNEL(KERNEL, T, ROW) \
    void KERNEL(const T* src, T* dst, int width, int pixelStride) { ROW<T>(src, dst, width, pixelStride); }

KEL_CIE_KERNEL(innerRGBToXYZ_8u_C3R, Kel8u, rgbToXYZ)
KEL_CIE_KERNEL(innerRGBToXYZ_16u_C3R, Kel16u, rgbToXYZ)
KEL_CIE_KERNEL(innerRGBToXYZ_16s_C3R, Kel16s, rgbToXYZ)
KEL_CIE_KERNEL(innerRGBToXYZ_32f_C3R, Kel32f, rgbToXYZ)
KEL_CIE_KERNEL(innerXYZToRGB_8u_C3R, Kel8u, xyzToRGB)
KEL_CIE_KERNEL(innerXYZToRGB_16u_C3R, Kel16u, xyzToRGB)
KEL_CIE_KERNEL(innerXYZToRGB_16s_C3R, Kel16s, xyzToRGB)
KEL_CIE_KERNEL(innerXYZToRGB_32f_C3R, Kel32f, xyzToRGB)
KEL_CIE_KERNEL(innerRGBToLUV_8u_C3R, Kel8u, rgbToLUV)
KEL_CIE_KERNEL(innerRGBToLUV_16u_C3R, Kel16u, rgbToLUV)
KEL_CIE_KERNEL(innerRGBToLUV_16s_C3R, Kel16s, rgbToLUV)
KEL_CIE_KERNEL(innerRGBToLUV_32f_C3R, Kel32f, rgbToLUV)
KEL_CIE_KERNEL(innerLUVToRGB_8u_C3R, Kel8u, luvToRGB)
KEL_CIE_KERNEL(innerLUVToRGB_16u_C3R, Kel16u, luvToRGB)
KEL_CIE_KERNEL(innerLUVToRGB_16s_C3R, Kel16s, luvToRGB)
KEL_CIE_KERNEL(innerLUVToRGB_32f_C3R, Kel32f, luvToRGB)
KEL_CIE_KERNEL(innerRGBToYCC_8u_C3R, Kel8u, rgbToYCC)
KEL_CIE_KERNEL(innerRGBToYCC_16u_C3R, Kel16u, rgbToYCC)
KEL_CIE_KERNEL(innerRGBToYCC_16s_C3R, Kel16s, rgbToYCC)
KEL_CIE_KERNEL(innerRGBToYCC_32f_C3R, Kel32f, rgbToYCC)
KEL_CIE_KERNEL(innerYCCToRGB_8u_C3R, Kel8u, yccToRGB)
KEL_CIE_KERNEL(innerYCCToRGB_16u_C3R, Kel16u, yccToRGB)
KEL_CIE_KERNEL(innerYCCToRGB_16s_C3R, Kel16s, yccToRGB)
KEL_CIE_KERNEL(innerYCCToRGB_32f_C3R, Kel32f, yccToRGB)

#undef KEL_CIE_KERNEL

// The 8-bit XYZ kernels on rows of C3 and AC4 pixels, for the vector rows' tails.
namespace kel::cie {
namespace {
constexpr std::array<std::int32_t, 256> widened(const std::uint8_t (&table)[256])
{
    std::array<std::int32_t, 256> wide{};
    for (int i = 0; i < 256; ++i) wide[i] = table[i];
    return wide;
}
constexpr std::array<std::int32_t, 256> kCodedL = widened(powL);
} // namespace
const std::int32_t* const codedL = kCodedL.data();

void rgbToXYZRow8u3(const Kel8u* src, Kel8u* dst, int width) { innerRGBToXYZ_8u_C3R(src, dst, width, 3); }
void rgbToXYZRow8u4(const Kel8u* src, Kel8u* dst, int width) { innerRGBToXYZ_8u_C3R(src, dst, width, 4); }
void xyzToRGBRow8u3(const Kel8u* src, Kel8u* dst, int width) { innerXYZToRGB_8u_C3R(src, dst, width, 3); }
void xyzToRGBRow8u4(const Kel8u* src, Kel8u* dst, int width) { innerXYZToRGB_8u_C3R(src, dst, width, 4); }
void rgbToYCCRow8u3(const Kel8u* src, Kel8u* dst, int width) { innerRGBToYCC_8u_C3R(src, dst, width, 3); }
void rgbToYCCRow8u4(const Kel8u* src, Kel8u* dst, int width) { innerRGBToYCC_8u_C3R(src, dst, width, 4); }
void yccToRGBRow8u3(const Kel8u* src, Kel8u* dst, int width) { innerYCCToRGB_8u_C3R(src, dst, width, 3); }
void yccToRGBRow8u4(const Kel8u* src, Kel8u* dst, int width) { innerYCCToRGB_8u_C3R(src, dst, width, 4); }

void luvPixels8u(bool forward, const Kel8u* src, Kel8u* dst, std::uint64_t pixels, int pixelStride)
{
    for (int i = 0; pixels != 0; ++i, pixels >>= 1)
        if ((pixels & 1) != 0) {
            if (forward) innerRGBToLUV_8u_C3R(src + i * pixelStride, dst + i * pixelStride, 1, pixelStride);
            else innerLUVToRGB_8u_C3R(src + i * pixelStride, dst + i * pixelStride, 1, pixelStride);
        }
}

void luvPixels(const Kel8u* src, Kel8u* dst, std::uint64_t pixels, int pixelStride)
{
    luvPixels8u(false, src, dst, pixels, pixelStride);
}

void rgbToLUVPixels32f(const Kel32f* src, Kel32f* dst, std::uint64_t pixels, int pixelStride)
{
    for (int i = 0; pixels != 0; ++i, pixels >>= 1)
        if ((pixels & 1) != 0) innerRGBToLUV_32f_C3R(src + i * pixelStride, dst + i * pixelStride, 1, pixelStride);
}

void luvPixels(const Kel32f* src, Kel32f* dst, std::uint64_t pixels, int pixelStride)
{
    for (int i = 0; pixels != 0; ++i, pixels >>= 1)
        if ((pixels & 1) != 0) innerLUVToRGB_32f_C3R(src + i * pixelStride, dst + i * pixelStride, 1, pixelStride);
}

void xyzPixels32f(bool forward, const Kel32f* src, Kel32f* dst, std::uint64_t pixels, int pixelStride)
{
    for (int i = 0; pixels != 0; ++i, pixels >>= 1)
        if ((pixels & 1) != 0) {
            if (forward) innerRGBToXYZ_32f_C3R(src + i * pixelStride, dst + i * pixelStride, 1, pixelStride);
            else innerXYZToRGB_32f_C3R(src + i * pixelStride, dst + i * pixelStride, 1, pixelStride);
        }
}
} // namespace kel::cie

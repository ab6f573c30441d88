// Blue-first 8-bit pixels <-> CIE Lab (D65), with Lab coded in 8 or 16 bits.
// Double-extended arithmetic in a fixed order; the public functions share rows.
#include <bit>
#include <cmath>
#include <cstdint>

#include "callframe.h"
#include "ciepxsimd.h"
#include "fallbacks.h"
#include "rowshare.h"

using namespace kel;

void innerBGRToLab_8u_C3R(const Kel8u* src, Kel8u* dst, int width);
void innerBGRToLab_8u16u_C3R(const Kel8u* src, Kel16u* dst, int width);
void innerLabToBGR_8u_C3R(const Kel8u* src, Kel8u* dst, int width);
void innerLabToBGR_16u8u_C3R(const Kel16u* src, Kel8u* dst, int width);

namespace {

template <typename Src, typename Dst>
void labRows(void (*kernel)(const Src*, Dst*, int), lab::LabRow<Src, Dst> fast, const Src* pSrc, int srcStep,
             Dst* pDst, int dstStep, int width, int height);

} // namespace

// ---- public functions: pointers, then size; strides are not tested ----------

extern "C" {

KEL_API KelResult keliBGRToLab_8u_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    labRows(innerBGRToLab_8u_C3R, lab::chooseBGRToLabRow8u(), pSrc, srcStep, pDst, dstStep, roiSize.width,
            roiSize.height);
    return kelOk;
}

KEL_API KelResult keliBGRToLab_8u16u_C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    labRows(innerBGRToLab_8u16u_C3R, lab::chooseBGRToLabRow8u16u(), pSrc, srcStep, pDst, dstStep, roiSize.width,
            roiSize.height);
    return kelOk;
}

KEL_API KelResult keliLabToBGR_8u_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    labRows(innerLabToBGR_8u_C3R, lab::chooseLabToBGRRow8u(), pSrc, srcStep, pDst, dstStep, roiSize.width,
            roiSize.height);
    return kelOk;
}

KEL_API KelResult keliLabToBGR_16u8u_C3R(const Kel16u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;
    labRows(innerLabToBGR_16u8u_C3R, lab::chooseLabToBGRRow16u8u(), pSrc, srcStep, pDst, dstStep, roiSize.width,
            roiSize.height);
    return kelOk;
}

} // extern "C"

// ---- row layer: the parallel region opens at every size -----------------------

namespace {

// The vector row, chosen once a call (or none), converts whole steps from the
// start of each row; the kernel finishes the row.
template <typename Src, typename Dst>
void labRows(void (*kernel)(const Src*, Dst*, int), lab::LabRow<Src, Dst> fast, const Src* pSrc, int srcStep,
             Dst* pDst, int dstStep, int width, int height)
{
    FallbackTally tally;
    shareRowsAlways(height, rowsApart(dstStep, 3LL * width * static_cast<std::int64_t>(sizeof(Dst))), [=, &tally](int y) {
        const Src* src = rowAt(pSrc, srcStep, y);
        Dst* dst = rowAt(pDst, dstStep, y);
        std::int64_t refused = 0;
        const int done = fast != nullptr ? fast(src, dst, width, &refused) : 0;
        tally.add(refused);
        kernel(src + 3 * done, dst + 3 * done, width - done);
    });
}

} // namespace

// ---- row kernels --------------------------------------------------------------

namespace {

using Ext = long double;

struct Lab {
    Ext L, a, b;
};

template <typename LType>
Lab bgrToLab(Ext B, Ext G, Ext R);
template <bool ZTermFirstInBlue>
void labToXYZToBGR(Ext P, Ext Q, Ext W, Ext rounding, Kel8u* out);

void bgrToLabPixel8u(const Kel8u* src, Kel8u* dst);
void bgrToLabPixel8u16u(const Kel8u* src, Kel16u* dst);
void labToBGRPixel8u(const Kel8u* src, Kel8u* dst);
void labToBGRPixel16u8u(const Kel16u* src, Kel8u* dst);

} // namespace

// Each pixel is read whole before its codes are stored, so a conversion in
// place works too.
void innerBGRToLab_8u_C3R(const Kel8u* src, Kel8u* dst, int width)
{
    for (int i = 0; i < width; ++i, src += 3, dst += 3) bgrToLabPixel8u(src, dst);
}

void innerBGRToLab_8u16u_C3R(const Kel8u* src, Kel16u* dst, int width)
{
    for (int i = 0; i < width; ++i, src += 3, dst += 3) bgrToLabPixel8u16u(src, dst);
}

void innerLabToBGR_8u_C3R(const Kel8u* src, Kel8u* dst, int width)
{
    for (int i = 0; i < width; ++i, src += 3, dst += 3) labToBGRPixel8u(src, dst);
}

void innerLabToBGR_16u8u_C3R(const Kel16u* src, Kel8u* dst, int width)
{
    for (int i = 0; i < width; ++i, src += 3, dst += 3) labToBGRPixel16u8u(src, dst);
}

// The pixels a vector row hands back, by the same per-pixel conversions.
namespace kel::lab {

void bgrToLabPixels8u(const Kel8u* src, Kel8u* out, std::uint32_t which)
{
    for (; which != 0; which &= which - 1) {
        const int i = std::countr_zero(which);
        bgrToLabPixel8u(src + 3 * i, out + 3 * i);
    }
}

void bgrToLabPixels8u16u(const Kel8u* src, Kel16u* out, std::uint32_t which)
{
    for (; which != 0; which &= which - 1) {
        const int i = std::countr_zero(which);
        bgrToLabPixel8u16u(src + 3 * i, out + 3 * i);
    }
}

void labToBGRPixels8u(const Kel8u* src, Kel8u* out, std::uint32_t which)
{
    for (; which != 0; which &= which - 1) {
        const int i = std::countr_zero(which);
        labToBGRPixel8u(src + 3 * i, out + 3 * i);
    }
}

void labToBGRPixels16u8u(const Kel16u* src, Kel8u* out, std::uint32_t which)
{
    for (; which != 0; which &= which - 1) {
        const int i = std::countr_zero(which);
        labToBGRPixel16u8u(src + 3 * i, out + 3 * i);
    }
}

} // namespace kel::lab

// ---- the conversions of one pixel ----------------------------------------------

namespace {

// Every constant is a 32-bit float widened exactly, but the exponent, which is
// the double holding the float nearest 1/3.
constexpr Ext whiteX = 242.366f;
constexpr Ext whiteY = 255.0f;
constexpr Ext whiteZ = 277.632f;
constexpr Ext threshold = 0.008856f;
constexpr Ext linearSlope = 7.787f;
constexpr Ext linearOffset = 0.13793103f;
constexpr Ext lowLightSlope = 903.3f;
constexpr double cubeRootExponent = 0.3333333432674408;

constexpr Ext toX[3] = {0.180423f, 0.35758f, 0.412453f};  // blue, green, red
constexpr Ext toY[3] = {0.072169f, 0.71516f, 0.212671f};
constexpr Ext toZ[3] = {0.950227f, 0.119193f, 0.019334f};
constexpr Ext toR[3] = {3.240479f, -1.53715f, -0.498535f};  // X, Y, Z
constexpr Ext toG[3] = {-0.969256f, 1.875991f, 0.041556f};
constexpr Ext toB[3] = {0.055648f, -0.204043f, 1.057311f};

Ext cubeRoot(Ext v)
{
    return static_cast<Ext>(::pow(static_cast<double>(v), cubeRootExponent));
}

Ext roundToFloat(Ext v) { return static_cast<Ext>(static_cast<float>(v)); }
Ext roundToDouble(Ext v) { return static_cast<Ext>(static_cast<double>(v)); }

// The forward steps, with the roundings to float and double exactly where
// they fall: they decide codes that sit on a rounding boundary.  LType is the
// precision L is held in (float for 8-bit codes, double for 16-bit).
template <typename LType>
Lab bgrToLab(Ext B, Ext G, Ext R)
{
    Ext x = ((toX[0] * B + toX[1] * G) + toX[2] * R) / whiteX;
    const Ext Y = (toY[0] * B + toY[1] * G) + toY[2] * R;
    const Ext y = Y / whiteY;
    Ext z = ((toZ[0] * B + toZ[1] * G) + toZ[2] * R) / whiteZ;

    Ext fy, L;
    if (y > threshold) {
        fy = cubeRoot(y);
        L = 116 * fy - 16;
        x = roundToFloat(x);
        z = roundToFloat(z);
    } else {
        L = lowLightSlope * y;
        fy = y * linearSlope + linearOffset;
    }
    L = static_cast<Ext>(static_cast<LType>(L));

    Ext fx;
    if (x > threshold) {
        fx = cubeRoot(x);
        fy = roundToDouble(fy);
    } else {
        fx = x * linearSlope + linearOffset;
    }
    Ext fz;
    if (z > threshold) {
        fz = cubeRoot(z);
        fy = roundToDouble(fy);
        fx = roundToDouble(fx);
    } else {
        fz = z * linearSlope + linearOffset;
    }
    return {L, (fx - fy) * 500, (fy - fz) * 200};
}

// P, Q, W are the cube roots of the white-relative Y, X, Z; the inverse has
// only the cubic piece.  The 8-bit kernel adds blue's Z term first.
template <bool ZTermFirstInBlue>
void labToXYZToBGR(Ext P, Ext Q, Ext W, Ext rounding, Kel8u* out)
{
    const Ext X = ((whiteX * Q) * Q) * Q;
    const Ext Y = ((255 * P) * P) * P;
    const Ext Z = W * ((whiteZ * W) * W);
    const Ext r = (toR[0] * X + toR[1] * Y) + toR[2] * Z;
    const Ext g = (toG[0] * X + toG[1] * Y) + toG[2] * Z;
    const Ext b = ZTermFirstInBlue ? toB[2] * Z + (toB[0] * X + toB[1] * Y)
                                   : (toB[0] * X + toB[1] * Y) + toB[2] * Z;
    const auto toByte = [rounding](Ext v) -> Kel8u {
        const int code = static_cast<int>(v + rounding);
        return static_cast<Kel8u>(code >= 255 ? 255 : (code < 1 ? 0 : code));
    };
    out[0] = toByte(b);
    out[1] = toByte(g);
    out[2] = toByte(r);
}

// Up to three pow calls a pixel for the forward pair; the inverse multiplies
// the cubes out.
void bgrToLabPixel8u(const Kel8u* src, Kel8u* dst)
{
    const Lab lab = bgrToLab<float>(src[0], src[1], src[2]);
    dst[0] = static_cast<Kel8u>(static_cast<int>((lab.L * 255) / 100 + 0.5L));
    dst[1] = static_cast<Kel8u>(static_cast<int>(lab.a + 128.5L));
    dst[2] = static_cast<Kel8u>(static_cast<int>(lab.b + 128.5L));
}

void bgrToLabPixel8u16u(const Kel8u* src, Kel16u* dst)
{
    const Lab lab = bgrToLab<double>(src[0], src[1], src[2]);
    dst[0] = static_cast<Kel16u>(static_cast<int>((lab.L * 65535) / 100));
    dst[1] = static_cast<Kel16u>(static_cast<int>((lab.a + 128) * 255));
    dst[2] = static_cast<Kel16u>(static_cast<int>((lab.b + 128) * 255));
}

void labToBGRPixel8u(const Kel8u* src, Kel8u* dst)
{
    const Ext P = ((static_cast<Ext>(src[0] * 100)) / 255 + 16) / 116;
    const Ext Q = static_cast<Ext>(src[1] - 128) / 500 + P;
    const Ext W = P - static_cast<Ext>(src[2] - 128) / 200;
    labToXYZToBGR<true>(P, Q, W, 0.5L, dst);
}

void labToBGRPixel16u8u(const Kel16u* src, Kel8u* dst)
{
    const Ext P = ((static_cast<Ext>(src[0]) * 100) / 65535 + 16) / 116;
    const Ext Q = ((static_cast<Ext>(src[1]) / 255) - 128) / 500 + P;
    const Ext W = P - ((static_cast<Ext>(src[2]) / 255) - 128) / 200;
    labToXYZToBGR<false>(P, Q, W, 0.0L, dst);
}

} // namespace

// Packed 565 pixels to and from 8-bit three-channel pixels: a field widened by
// a left shift alone, a byte packed by keeping its top bits.
#include <cstdint>
#include <cstring>

#include "callframe.h"
#include "rgb565simd.h"

using namespace kel;

// ---- layers behind the public functions ----------------------------------------------------------

void ownRGBToRGB565_8u16u_C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, int width, int height);
void ownRGB565ToRGB_16u8u_C3R(const Kel16u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height);

// ---- public functions ------------------------------------------------------------------------------
// Pointers, size, then the strides.  The BGR members run the RGB kernels: the
// first byte of a pixel is the field at bit 0 either way.

extern "C" {

KEL_API KelResult keliRGBToRGB565_8u16u_C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize)
{
    if (anyNull(pSrc, pDst))              return kelErrNullPointer;
    if (sizeBelow(roiSize, 1, 1))         return kelErrSize;
    if (stepBelowOne(srcStep, dstStep))   return kelErrStep;
    ownRGBToRGB565_8u16u_C3R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliBGRToBGR565_8u16u_C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize)
{
    return keliRGBToRGB565_8u16u_C3R(pSrc, srcStep, pDst, dstStep, roiSize);
}

KEL_API KelResult keliRGB565ToRGB_16u8u_C3R(const Kel16u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (anyNull(pSrc, pDst))              return kelErrNullPointer;
    if (sizeBelow(roiSize, 1, 1))         return kelErrSize;
    if (stepBelowOne(srcStep, dstStep))   return kelErrStep;
    ownRGB565ToRGB_16u8u_C3R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

KEL_API KelResult keliBGR565ToBGR_16u8u_C3R(const Kel16u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    return keliRGB565ToRGB_16u8u_C3R(pSrc, srcStep, pDst, dstStep, roiSize);
}

} // extern "C"

// ---- row layers --------------------------------------------------------------------------------------
// The packed side's rows are whole words apart: its byte stride loses an odd
// low bit.

void ownRGBToRGB565_8u16u_C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, int width, int height)
{
    const simd565::PackRow kernel = simd565::choosePack565();
    const int dstElements = elementStride<Kel16u>(dstStep);
    forEachRow(height, [&](int y) {
        kernel(rowAt(pSrc, srcStep, y), pDst + static_cast<std::ptrdiff_t>(dstElements) * y, width);
    });
}

void ownRGB565ToRGB_16u8u_C3R(const Kel16u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    const simd565::WidenRow kernel = simd565::chooseWiden565();
    const int srcElements = elementStride<Kel16u>(srcStep);
    forEachRow(height, [&](int y) {
        kernel(pSrc + static_cast<std::ptrdiff_t>(srcElements) * y, rowAt(pDst, dstStep, y), width);
    });
}

// ---- kernels -------------------------------------------------------------------------------------------

namespace {

inline Kel16u loadWord(const Kel16u* p)
{
    Kel16u word;
    std::memcpy(&word, p, sizeof word);
    return word;
}

inline void storeWord(Kel16u* p, std::uint32_t word)
{
    const Kel16u value = static_cast<Kel16u>(word);
    std::memcpy(p, &value, sizeof value);
}

} // namespace

void innerRGBToRGB565_8u16u_C3R(const Kel8u* src, Kel16u* dst, int width)
{
    for (int x = 0; x < width; ++x) {
        const Kel8u* p = src + 3 * x;
        storeWord(dst + x, static_cast<std::uint32_t>(p[0] >> 3) | static_cast<std::uint32_t>(p[1] >> 2) << 5 |
                               static_cast<std::uint32_t>(p[2] >> 3) << 11);
    }
}

void innerRGB565ToRGB_16u8u_C3R(const Kel16u* src, Kel8u* dst, int width)
{
    for (int x = 0; x < width; ++x) {
        const std::uint32_t p = loadWord(src + x);
        Kel8u* out = dst + 3 * x;
        out[0] = static_cast<Kel8u>((p & 31) << 3);
        out[1] = static_cast<Kel8u>(((p >> 5) & 63) << 2);
        out[2] = static_cast<Kel8u>((p >> 11) << 3);
    }
}

// Bit 15 is not a field and is never read.
void innerRGB555ToRGB_16u8u_C3R(const Kel16u* src, Kel8u* dst, int width)
{
    for (int x = 0; x < width; ++x) {
        const std::uint32_t p = loadWord(src + x);
        Kel8u* out = dst + 3 * x;
        out[0] = static_cast<Kel8u>((p & 31) << 3);
        out[1] = static_cast<Kel8u>(((p >> 5) & 31) << 3);
        out[2] = static_cast<Kel8u>(((p >> 10) & 31) << 3);
    }
}

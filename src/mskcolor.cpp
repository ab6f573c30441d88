// RGB <-> HSV (8u, 16u), RGB <-> HLS (8u, 16u, 16s, 32f), RGB <-> XYZ and
// RGB <-> LUV (8u, 16u, 16s, 32f) in pixel order, C3 and AC4; the public
// functions turn byte strides into element strides (but for the float RGB to
// LUV members, which pass the byte strides on).
#include "callframe.h"
#include "mskcolor.h"

using namespace kel;

// Pointers, then size; strides are not tested, and a stride that is not a
// whole number of samples is cut down.
#define KEL_HUE_PUBLIC_ONE(NAME, LAYER, T, PIXEL_STRIDE)                                                      \
    KEL_API KelResult NAME(const T* pSrc, int srcStep, T* pDst, int dstStep, KelImageSize roiSize)            \
    {                                                                                                         \
        if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;                 \
        LAYER(pSrc, elementStride<T>(srcStep), pDst, elementStride<T>(dstStep), roiSize.width, roiSize.height, \
              PIXEL_STRIDE);                                                                                  \
        return kelOk;                                                                                         \
    }
#define KEL_HUE_PUBLIC(C3, AC4, LAYER, KERNEL, T, PIXEL)                                                      \
    KEL_HUE_PUBLIC_ONE(C3, LAYER, T, 3)                                                                       \
    KEL_HUE_PUBLIC_ONE(AC4, LAYER, T, 4)

// The same tests; the strides go on in bytes where the row layer steps bytes.
#define KEL_CIE_PUBLIC_ONE(NAME, LAYER, T, PIXEL_STRIDE, BYTE_STEPS)                                          \
    KEL_API KelResult NAME(const T* pSrc, int srcStep, T* pDst, int dstStep, KelImageSize roiSize)            \
    {                                                                                                         \
        if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;                 \
        LAYER(pSrc, BYTE_STEPS ? srcStep : elementStride<T>(srcStep), pDst,                                   \
              BYTE_STEPS ? dstStep : elementStride<T>(dstStep), roiSize.width, roiSize.height, PIXEL_STRIDE); \
        return kelOk;                                                                                         \
    }
#define KEL_CIE_PUBLIC(C3, AC4, LAYER, KERNEL, T, BYTE_STEPS, VECTOR)                                                 \
    KEL_CIE_PUBLIC_ONE(C3, LAYER, T, 3, BYTE_STEPS)                                                           \
    KEL_CIE_PUBLIC_ONE(AC4, LAYER, T, 4, BYTE_STEPS)

extern "C" {
KEL_HUE_MEMBERS(KEL_HUE_PUBLIC)
KEL_MODEL_MEMBERS(KEL_CIE_PUBLIC)
} // extern "C"

#undef KEL_HUE_PUBLIC
#undef KEL_HUE_PUBLIC_ONE
#undef KEL_CIE_PUBLIC
#undef KEL_CIE_PUBLIC_ONE

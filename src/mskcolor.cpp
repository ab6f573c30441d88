// RGB <-> HSV (8u, 16u) and RGB <-> HLS (8u, 16u, 16s, 32f) in pixel order,
// C3 and AC4; the public functions turn byte strides into element strides.
#include "callframe.h"
#include "mskcolor.h"

using namespace kel;

namespace {

template <typename T>
KelResult hueCall(void (*rowLayer)(const T*, int, T*, int, int, int, int), int pixelStride, const T* pSrc,
                  int srcStep, T* pDst, int dstStep, KelImageSize roiSize)
{
    if (anyNull(pSrc, pDst))       return kelErrNullPointer;
    if (sizeBelow(roiSize, 1, 1))  return kelErrSize;
    rowLayer(pSrc, elementStride<T>(srcStep), pDst, elementStride<T>(dstStep), roiSize.width, roiSize.height,
             pixelStride);
    return kelOk;
}

} // namespace

#define KEL_HUE_PUBLIC(STEM, TAG, T)                                                                          \
    KEL_API KelResult keli##STEM##_##TAG##_C3R(const T* pSrc, int srcStep, T* pDst, int dstStep,              \
                                               KelImageSize roiSize)                                          \
    { return hueCall(my##STEM##_##TAG##_C3R, 3, pSrc, srcStep, pDst, dstStep, roiSize); }                     \
    KEL_API KelResult keli##STEM##_##TAG##_AC4R(const T* pSrc, int srcStep, T* pDst, int dstStep,             \
                                                KelImageSize roiSize)                                         \
    { return hueCall(my##STEM##_##TAG##_C3R, 4, pSrc, srcStep, pDst, dstStep, roiSize); }

extern "C" {
KEL_HUE_PUBLIC(RGBToHSV, 8u, Kel8u)
KEL_HUE_PUBLIC(HSVToRGB, 8u, Kel8u)
KEL_HUE_PUBLIC(RGBToHSV, 16u, Kel16u)
KEL_HUE_PUBLIC(HSVToRGB, 16u, Kel16u)
KEL_HUE_PUBLIC(RGBToHLS, 8u, Kel8u)
KEL_HUE_PUBLIC(HLSToRGB, 8u, Kel8u)
KEL_HUE_PUBLIC(RGBToHLS, 16u, Kel16u)
KEL_HUE_PUBLIC(HLSToRGB, 16u, Kel16u)
KEL_HUE_PUBLIC(RGBToHLS, 16s, Kel16s)
KEL_HUE_PUBLIC(HLSToRGB, 16s, Kel16s)
KEL_HUE_PUBLIC(RGBToHLS, 32f, Kel32f)
KEL_HUE_PUBLIC(HLSToRGB, 32f, Kel32f)
} // extern "C"

// Row layers and row kernels of the pixel-order hue families (HSV, HLS).
// Strides are in elements; the pixel stride is 3 (C3) or 4 (AC4).
#pragma once

#include "kelcc.h"

#define KEL_HUE_LAYERS(NAME, T)                                                                          \
    void my##NAME(const T* pSrc, int srcStep, T* pDst, int dstStep, int width, int height, int pixelStride); \
    void inner##NAME(const T* src, T* dst, int width, int pixelStride);

KEL_HUE_LAYERS(RGBToHSV_8u_C3R, Kel8u)
KEL_HUE_LAYERS(HSVToRGB_8u_C3R, Kel8u)
KEL_HUE_LAYERS(RGBToHSV_16u_C3R, Kel16u)
KEL_HUE_LAYERS(HSVToRGB_16u_C3R, Kel16u)
KEL_HUE_LAYERS(RGBToHLS_8u_C3R, Kel8u)
KEL_HUE_LAYERS(HLSToRGB_8u_C3R, Kel8u)
KEL_HUE_LAYERS(RGBToHLS_16u_C3R, Kel16u)
KEL_HUE_LAYERS(HLSToRGB_16u_C3R, Kel16u)
KEL_HUE_LAYERS(RGBToHLS_16s_C3R, Kel16s)
KEL_HUE_LAYERS(HLSToRGB_16s_C3R, Kel16s)
KEL_HUE_LAYERS(RGBToHLS_32f_C3R, Kel32f)
KEL_HUE_LAYERS(HLSToRGB_32f_C3R, Kel32f)

#undef KEL_HUE_LAYERS

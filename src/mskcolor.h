// The pixel-order hue families (HSV at 8u and 16u, HLS at 8u, 16u, 16s and 32f):
// the one table of their members, and the row layers and kernels it names.
#pragma once

#include "kelcc.h"

// X(C3 public function, AC4 public function, row layer, row kernel, sample type, pixel conversion).
// The C3 and AC4 members of a line share the row layer and the kernel, which
// take the pixel stride (3 or 4) in elements; strides are in elements too.
#define KEL_HUE_MEMBERS(X)                                                                                         \
    X(keliRGBToHSV_8u_C3R,  keliRGBToHSV_8u_AC4R,  myRGBToHSV_8u_C3R,  innerRGBToHSV_8u_C3R,  Kel8u,  rgbToHSV)          \
    X(keliHSVToRGB_8u_C3R,  keliHSVToRGB_8u_AC4R,  myHSVToRGB_8u_C3R,  innerHSVToRGB_8u_C3R,  Kel8u,  hsvToRGB)          \
    X(keliRGBToHSV_16u_C3R, keliRGBToHSV_16u_AC4R, myRGBToHSV_16u_C3R, innerRGBToHSV_16u_C3R, Kel16u, rgbToHSV)          \
    X(keliHSVToRGB_16u_C3R, keliHSVToRGB_16u_AC4R, myHSVToRGB_16u_C3R, innerHSVToRGB_16u_C3R, Kel16u, hsvToRGB)          \
    X(keliRGBToHLS_8u_C3R,  keliRGBToHLS_8u_AC4R,  myRGBToHLS_8u_C3R,  innerRGBToHLS_8u_C3R,  Kel8u,  rgbToHLS)          \
    X(keliHLSToRGB_8u_C3R,  keliHLSToRGB_8u_AC4R,  myHLSToRGB_8u_C3R,  innerHLSToRGB_8u_C3R,  Kel8u,  hlsToRGB)          \
    X(keliRGBToHLS_16u_C3R, keliRGBToHLS_16u_AC4R, myRGBToHLS_16u_C3R, innerRGBToHLS_16u_C3R, Kel16u, rgbToHLS)          \
    X(keliHLSToRGB_16u_C3R, keliHLSToRGB_16u_AC4R, myHLSToRGB_16u_C3R, innerHLSToRGB_16u_C3R, Kel16u, hlsToRGB)          \
    X(keliRGBToHLS_16s_C3R, keliRGBToHLS_16s_AC4R, myRGBToHLS_16s_C3R, innerRGBToHLS_16s_C3R, Kel16s, rgbToHLS)          \
    X(keliHLSToRGB_16s_C3R, keliHLSToRGB_16s_AC4R, myHLSToRGB_16s_C3R, innerHLSToRGB_16s_C3R, Kel16s, hlsToRGB)          \
    X(keliRGBToHLS_32f_C3R, keliRGBToHLS_32f_AC4R, myRGBToHLS_32f_C3R, innerRGBToHLS_32f_C3R, Kel32f, rgbToHLS)          \
    X(keliHLSToRGB_32f_C3R, keliHLSToRGB_32f_AC4R, myHLSToRGB_32f_C3R, innerHLSToRGB_32f_C3R, Kel32f, hlsToRGB)

#define KEL_HUE_DECLARE_LAYERS(C3, AC4, LAYER, KERNEL, T, PIXEL)                                              \
    void LAYER(const T* pSrc, int srcStep, T* pDst, int dstStep, int width, int height, int pixelStride);    \
    void KERNEL(const T* src, T* dst, int width, int pixelStride);
KEL_HUE_MEMBERS(KEL_HUE_DECLARE_LAYERS)
#undef KEL_HUE_DECLARE_LAYERS

// The CIE XYZ and LUV members and the YCC members, at 8u, 16u, 16s and 32f.
// X(C3 public function, AC4 public function, row layer, row kernel, sample type, strides in bytes,
//   vector row).
// Strides reach the row layers in elements, except for the float RGB to LUV
// members, whose row layer steps byte pointers by the caller's byte stride.
// The vector row, where a member has one, is chosen once a call.
enum class ModelVectorRow {
    None,
    RGBToXYZ8u, XYZToRGB8u, RGBToXYZ32f, XYZToRGB32f,
    RGBToLUV8u, LUVToRGB8u, RGBToLUV32f, LUVToRGB32f,
    RGBToYCC8u, YCCToRGB8u,
};

#define KEL_MODEL_MEMBERS(X)                                                                                                       \
    X(keliRGBToXYZ_8u_C3R,    keliRGBToXYZ_8u_AC4R,    myRGBToXYZ_8u_C3R,    innerRGBToXYZ_8u_C3R,    Kel8u,  false, RGBToXYZ8u)   \
    X(keliRGBToXYZ_16u_C3R,   keliRGBToXYZ_16u_AC4R,   myRGBToXYZ_16u_C3R,   innerRGBToXYZ_16u_C3R,   Kel16u, false, None)         \
    X(keliRGBToXYZ_16s_C3R,   keliRGBToXYZ_16s_AC4R,   myRGBToXYZ_16s_C3R,   innerRGBToXYZ_16s_C3R,   Kel16s, false, None)         \
    X(keliRGBToXYZ_32f_C3R,   keliRGBToXYZ_32f_AC4R,   myRGBToXYZ_32f_C3R,   innerRGBToXYZ_32f_C3R,   Kel32f, false, RGBToXYZ32f)  \
    X(keliXYZToRGB_8u_C3R,    keliXYZToRGB_8u_AC4R,    myXYZToRGB_8u_C3R,    innerXYZToRGB_8u_C3R,    Kel8u,  false, XYZToRGB8u)   \
    X(keliXYZToRGB_16u_C3R,   keliXYZToRGB_16u_AC4R,   myXYZToRGB_16u_C3R,   innerXYZToRGB_16u_C3R,   Kel16u, false, None)         \
    X(keliXYZToRGB_16s_C3R,   keliXYZToRGB_16s_AC4R,   myXYZToRGB_16s_C3R,   innerXYZToRGB_16s_C3R,   Kel16s, false, None)         \
    X(keliXYZToRGB_32f_C3R,   keliXYZToRGB_32f_AC4R,   myXYZToRGB_32f_C3R,   innerXYZToRGB_32f_C3R,   Kel32f, false, XYZToRGB32f)  \
    X(keliRGBToLUV_8u_C3R,    keliRGBToLUV_8u_AC4R,    myRGBToLUV_8u_C3R,    innerRGBToLUV_8u_C3R,    Kel8u,  false, RGBToLUV8u)   \
    X(keliRGBToLUV_16u_C3R,   keliRGBToLUV_16u_AC4R,   myRGBToLUV_16u_C3R,   innerRGBToLUV_16u_C3R,   Kel16u, false, None)         \
    X(keliRGBToLUV_16s_C3R,   keliRGBToLUV_16s_AC4R,   myRGBToLUV_16s_C3R,   innerRGBToLUV_16s_C3R,   Kel16s, false, None)         \
    X(keliRGBToLUV_32f_C3R,   keliRGBToLUV_32f_AC4R,   myRGBToLUV_32f_C3R,   innerRGBToLUV_32f_C3R,   Kel32f, true,  RGBToLUV32f)          \
    X(keliLUVToRGB_8u_C3R,    keliLUVToRGB_8u_AC4R,    myLUVToRGB_8u_C3R,    innerLUVToRGB_8u_C3R,    Kel8u,  false, LUVToRGB8u)   \
    X(keliLUVToRGB_16u_C3R,   keliLUVToRGB_16u_AC4R,   myLUVToRGB_16u_C3R,   innerLUVToRGB_16u_C3R,   Kel16u, false, None)         \
    X(keliLUVToRGB_16s_C3R,   keliLUVToRGB_16s_AC4R,   myLUVToRGB_16s_C3R,   innerLUVToRGB_16s_C3R,   Kel16s, false, None)         \
    X(keliLUVToRGB_32f_C3R,   keliLUVToRGB_32f_AC4R,   myLUVToRGB_32f_C3R,   innerLUVToRGB_32f_C3R,   Kel32f, false, LUVToRGB32f)  \
    X(keliRGBToYCC_8u_C3R,    keliRGBToYCC_8u_AC4R,    myRGBToYCC_8u_C3R,    innerRGBToYCC_8u_C3R,    Kel8u,  false, RGBToYCC8u)   \
    X(keliRGBToYCC_16u_C3R,   keliRGBToYCC_16u_AC4R,   myRGBToYCC_16u_C3R,   innerRGBToYCC_16u_C3R,   Kel16u, false, None)         \
    X(keliRGBToYCC_16s_C3R,   keliRGBToYCC_16s_AC4R,   myRGBToYCC_16s_C3R,   innerRGBToYCC_16s_C3R,   Kel16s, false, None)         \
    X(keliRGBToYCC_32f_C3R,   keliRGBToYCC_32f_AC4R,   myRGBToYCC_32f_C3R,   innerRGBToYCC_32f_C3R,   Kel32f, false, None)         \
    X(keliYCCToRGB_8u_C3R,    keliYCCToRGB_8u_AC4R,    myYCCToRGB_8u_C3R,    innerYCCToRGB_8u_C3R,    Kel8u,  false, YCCToRGB8u)   \
    X(keliYCCToRGB_16u_C3R,   keliYCCToRGB_16u_AC4R,   myYCCToRGB_16u_C3R,   innerYCCToRGB_16u_C3R,   Kel16u, false, None)         \
    X(keliYCCToRGB_16s_C3R,   keliYCCToRGB_16s_AC4R,   myYCCToRGB_16s_C3R,   innerYCCToRGB_16s_C3R,   Kel16s, false, None)         \
    X(keliYCCToRGB_32f_C3R,   keliYCCToRGB_32f_AC4R,   myYCCToRGB_32f_C3R,   innerYCCToRGB_32f_C3R,   Kel32f, false, None)

#define KEL_CIE_DECLARE_LAYERS(C3, AC4, LAYER, KERNEL, T, BYTE_STEPS, VECTOR)                            \
    void LAYER(const T* pSrc, int srcStep, T* pDst, int dstStep, int width, int height, int pixelStride);    \
    void KERNEL(const T* src, T* dst, int width, int pixelStride);
KEL_MODEL_MEMBERS(KEL_CIE_DECLARE_LAYERS)
#undef KEL_CIE_DECLARE_LAYERS

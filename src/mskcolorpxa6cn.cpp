// Row layers of the pixel-order hue families: rows shared among threads above
// 4096 pixels, each row handed to its kernel with the pixel stride.
#include <cstddef>

#include "mskcolor.h"
#include "rowshare.h"

using namespace kel;

namespace {

template <typename T>
void hueRows(void (*kernel)(const T*, T*, int, int), const T* pSrc, int srcStep, T* pDst, int dstStep, int width,
             int height, int pixelStride)
{
    shareRowsAboveThreshold(width, height, [=](int y) {
        kernel(pSrc + static_cast<std::ptrdiff_t>(srcStep) * y, pDst + static_cast<std::ptrdiff_t>(dstStep) * y,
               width, pixelStride);
    });
}

} // namespace

#define KEL_HUE_ROWS(NAME, T)                                                                                 \
    void my##NAME(const T* pSrc, int srcStep, T* pDst, int dstStep, int width, int height, int pixelStride)   \
    { hueRows(inner##NAME, pSrc, srcStep, pDst, dstStep, width, height, pixelStride); }

KEL_HUE_ROWS(RGBToHSV_8u_C3R, Kel8u)
KEL_HUE_ROWS(HSVToRGB_8u_C3R, Kel8u)
KEL_HUE_ROWS(RGBToHSV_16u_C3R, Kel16u)
KEL_HUE_ROWS(HSVToRGB_16u_C3R, Kel16u)
KEL_HUE_ROWS(RGBToHLS_8u_C3R, Kel8u)
KEL_HUE_ROWS(HLSToRGB_8u_C3R, Kel8u)
KEL_HUE_ROWS(RGBToHLS_16u_C3R, Kel16u)
KEL_HUE_ROWS(HLSToRGB_16u_C3R, Kel16u)
KEL_HUE_ROWS(RGBToHLS_16s_C3R, Kel16s)
KEL_HUE_ROWS(HLSToRGB_16s_C3R, Kel16s)
KEL_HUE_ROWS(RGBToHLS_32f_C3R, Kel32f)
KEL_HUE_ROWS(HLSToRGB_32f_C3R, Kel32f)

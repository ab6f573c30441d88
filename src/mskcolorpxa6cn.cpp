// Row layers of the pixel-order hue families: rows shared among threads above
// 4096 pixels, each row handed to its kernel with the pixel stride.
#include <cstddef>

#include "mskcolor.h"
#include "rowshare.h"

using namespace kel;

// Strides are in elements here: the public functions have converted them.
#define KEL_HUE_ROW_LAYER(C3, AC4, LAYER, KERNEL, T, PIXEL)                                                   \
    void LAYER(const T* pSrc, int srcStep, T* pDst, int dstStep, int width, int height, int pixelStride)     \
    {                                                                                                         \
        shareRowsAboveThreshold(width, height, [=](int y) {                                                   \
            KERNEL(pSrc + static_cast<std::ptrdiff_t>(srcStep) * y, pDst + static_cast<std::ptrdiff_t>(dstStep) * y, \
                   width, pixelStride);                                                                       \
        });                                                                                                   \
    }

KEL_HUE_MEMBERS(KEL_HUE_ROW_LAYER)

#undef KEL_HUE_ROW_LAYER

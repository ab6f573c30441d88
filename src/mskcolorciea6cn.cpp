// Row layers of the CIE XYZ and LUV members: rows shared among threads above
// 4096 pixels, each row handed to its kernel with the pixel stride.
#include <cstddef>

#include "callframe.h"
#include "mskcolor.h"
#include "rowshare.h"

using namespace kel;

// Strides are in elements, or in bytes where the member steps bytes (the
// float RGB to LUV rows may then start at any byte address).
#define KEL_CIE_ROW_LAYER(C3, AC4, LAYER, KERNEL, T, BYTE_STEPS)                                              \
    void LAYER(const T* pSrc, int srcStep, T* pDst, int dstStep, int width, int height, int pixelStride)     \
    {                                                                                                         \
        shareRowsAboveThreshold(width, height, [=](int y) {                                                   \
            if constexpr (BYTE_STEPS)                                                                         \
                KERNEL(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width, pixelStride);                 \
            else                                                                                              \
                KERNEL(pSrc + static_cast<std::ptrdiff_t>(srcStep) * y,                                       \
                       pDst + static_cast<std::ptrdiff_t>(dstStep) * y, width, pixelStride);                  \
        });                                                                                                   \
    }

KEL_CIE_MEMBERS(KEL_CIE_ROW_LAYER)

#undef KEL_CIE_ROW_LAYER

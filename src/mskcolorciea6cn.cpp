// Row layers of the CIE XYZ and LUV members: rows shared among threads above
// 4096 pixels, each row handed to its kernel with the pixel stride.
#include <cstddef>
#include <type_traits>

#include "callframe.h"
#include "fallbacks.h"
#include "mskcolor.h"
#include "mskcolorciesimd.h"
#include "rowshare.h"

using namespace kel;

namespace {

template <typename T>
cie::Row8u vectorRow(ModelVectorRow which, int pixelStride)
{
    if constexpr (std::is_same_v<T, Kel8u>) return cie::chooseRow8u(which, pixelStride);
    else return nullptr;
}

template <typename T>
auto vectorRowOf(ModelVectorRow which, int pixelStride)
{
    if constexpr (std::is_same_v<T, Kel32f>) return cie::chooseRow32f(which, pixelStride);
    else return vectorRow<T>(which, pixelStride);
}

// Row y: through the vector row where there is one, else the kernel.
template <typename T, bool ByteSteps, void (*Kernel)(const T*, T*, int, int), typename Fast>
void oneRow(Fast fast, FallbackTally& tally, const T* pSrc, int srcStep, T* pDst, int dstStep, int y, int width,
            int pixelStride)
{
    if constexpr (ByteSteps) {
        Kernel(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width, pixelStride);
    } else {
        const T* src = pSrc + static_cast<std::ptrdiff_t>(srcStep) * y;
        T* dst = pDst + static_cast<std::ptrdiff_t>(dstStep) * y;
        if constexpr (std::is_same_v<T, Kel8u> || std::is_same_v<T, Kel32f>)
            if (fast != nullptr) return tally.add(fast(src, dst, width));
        Kernel(src, dst, width, pixelStride);
    }
}

} // namespace

// Strides are in elements, or in bytes where the member steps bytes (the
// float RGB to LUV rows may then start at any byte address).  A member with a
// vector row hands it every row (it finishes its rows itself).
#define KEL_CIE_ROW_LAYER(C3, AC4, LAYER, KERNEL, T, BYTE_STEPS, VECTOR)                                      \
    void LAYER(const T* pSrc, int srcStep, T* pDst, int dstStep, int width, int height, int pixelStride)     \
    {                                                                                                         \
        const auto fast = vectorRowOf<T>(ModelVectorRow::VECTOR, pixelStride);                                  \
        FallbackTally tally;                                                                                  \
        shareRowsAboveThreshold(width, height, [=, &tally](int y) {                                           \
            oneRow<T, BYTE_STEPS, KERNEL>(fast, tally, pSrc, srcStep, pDst, dstStep, y, width, pixelStride);  \
        });                                                                                                   \
    }

KEL_MODEL_MEMBERS(KEL_CIE_ROW_LAYER)

#undef KEL_CIE_ROW_LAYER

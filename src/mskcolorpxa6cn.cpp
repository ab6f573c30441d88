// Row layers of the pixel-order colour models: rows shared among threads
// above 4096 pixels, each row handed to its kernel with the pixel stride,
// through a vector row first where the member has one (chosen once a call).
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "callframe.h"
#include "fallbacks.h"
#include "mskcolor.h"
#include "mskcolorciesimd.h"
#include "mskcolorsimd.h"
#include "mskcolorwidesimd.h"
#include "rowshare.h"

using namespace kel;
using namespace kel::hue;

namespace {

// The conversion each member's pixel conversion names.
namespace conversionOf {
constexpr HueConversion rgbToHSV = HueConversion::RGBToHSV, hsvToRGB = HueConversion::HSVToRGB,
                        rgbToHLS = HueConversion::RGBToHLS, hlsToRGB = HueConversion::HLSToRGB;
}

// The vector row of a member in this layout: the 8-bit rows take channel
// pointers, the wider ones the row and the kernel for the pixels they refuse.
template <typename T>
using FastRow = std::conditional_t<std::is_same_v<T, Kel8u>, HueRow8u, HueRowWide<T>>;

template <typename T>
FastRow<T> fastRow(HueConversion conversion, int pixelStride)
{
    if constexpr (std::is_same_v<T, Kel8u>)
        return chooseHueRow8u(conversion, true, false, pixelStride, pixelStride,
                              pixelStride == 4 ? HueAlpha::Keep : HueAlpha::None);
    else if constexpr (std::is_same_v<T, Kel16u>) return chooseHueRow16u(conversion, pixelStride);
    else if constexpr (std::is_same_v<T, Kel16s>) return chooseHueRow16s(conversion, pixelStride);
    else return chooseHueRow32f(conversion, pixelStride);
}

template <typename T>
int fastPart(FastRow<T> fast, const T* src, T* dst, int width, HueKernel<T> kernel, FallbackTally& tally)
{
    if (fast == nullptr) return 0;
    if constexpr (std::is_same_v<T, Kel8u>) {
        const Kel8u* const from[4] = {src, src, src, src};
        Kel8u* const to[4] = {dst, dst, dst, dst};
        return fast(from, to, width);
    } else {
        std::int64_t refused = 0;
        const int done = fast(src, dst, width, kernel, &refused);
        tally.add(refused);
        return done;
    }
}

} // namespace

// Strides are in elements here: the public functions have converted them.
#define KEL_HUE_ROW_LAYER(C3, AC4, LAYER, KERNEL, T, PIXEL)                                                   \
    void LAYER(const T* pSrc, int srcStep, T* pDst, int dstStep, int width, int height, int pixelStride)     \
    {                                                                                                         \
        const FastRow<T> fast = fastRow<T>(conversionOf::PIXEL, pixelStride);                                 \
        FallbackTally tally;                                                                                  \
        const bool apart = rowsApart(dstStep, 1LL * width * pixelStride);                                      \
        shareRowsAboveThreshold(width, height, apart, [=, &tally](int y) {                                    \
            const T* src = pSrc + static_cast<std::ptrdiff_t>(srcStep) * y;                                   \
            T* dst = pDst + static_cast<std::ptrdiff_t>(dstStep) * y;                                         \
            const int done = fastPart<T>(fast, src, dst, width, KERNEL, tally);                               \
            if (done < width) KERNEL(src + done * pixelStride, dst + done * pixelStride, width - done, pixelStride); \
        });                                                                                                   \
    }

KEL_HUE_MEMBERS(KEL_HUE_ROW_LAYER)

#undef KEL_HUE_ROW_LAYER

// ==== XYZ, LUV and YCC ====================================================================

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
        const T* src = rowAt(pSrc, srcStep, y);
        T* dst = rowAt(pDst, dstStep, y);
        if (fast != nullptr) return tally.add(fast(src, dst, width));
        Kernel(src, dst, width, pixelStride);
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
        const std::int64_t rowLength = 1LL * width * pixelStride * (BYTE_STEPS ? static_cast<int>(sizeof(T)) : 1);   \
        shareRowsAboveThreshold(width, height, rowsApart(dstStep, rowLength), [=, &tally](int y) {             \
            oneRow<T, BYTE_STEPS, KERNEL>(fast, tally, pSrc, srcStep, pDst, dstStep, y, width, pixelStride);  \
        });                                                                                                   \
    }

KEL_MODEL_MEMBERS(KEL_CIE_ROW_LAYER)

#undef KEL_CIE_ROW_LAYER

// Row layers of the pixel-order hue families: rows shared among threads above
// 4096 pixels, each row handed to its kernel with the pixel stride.  The
// 8-bit members take the vector row for whole vector steps first.
#include <cstddef>
#include <type_traits>

#include "mskcolor.h"
#include "mskcolorsimd.h"
#include "rowshare.h"

using namespace kel;
using namespace kel::hue;

namespace {

// The conversion each member's pixel conversion names.
namespace conversionOf {
constexpr HueConversion rgbToHSV = HueConversion::RGBToHSV, hsvToRGB = HueConversion::HSVToRGB,
                        rgbToHLS = HueConversion::RGBToHLS, hlsToRGB = HueConversion::HLSToRGB;
}

// The vector row of an 8-bit member in this layout, chosen once a call; null
// for the wider samples.
template <typename T>
HueRow8u fastRow(HueConversion conversion, int pixelStride)
{
    if constexpr (!std::is_same_v<T, Kel8u>) return nullptr;
    else return chooseHueRow8u(conversion, true, false, pixelStride, pixelStride,
                               pixelStride == 4 ? HueAlpha::Keep : HueAlpha::None);
}

template <typename T>
int fastPart(HueRow8u fast, const T* src, T* dst, int width)
{
    if constexpr (!std::is_same_v<T, Kel8u>) return 0;
    else {
        if (fast == nullptr) return 0;
        const Kel8u* const from[4] = {src, src, src, src};
        Kel8u* const to[4] = {dst, dst, dst, dst};
        return fast(from, to, width);
    }
}

} // namespace

// Strides are in elements here: the public functions have converted them.
#define KEL_HUE_ROW_LAYER(C3, AC4, LAYER, KERNEL, T, PIXEL)                                                   \
    void LAYER(const T* pSrc, int srcStep, T* pDst, int dstStep, int width, int height, int pixelStride)     \
    {                                                                                                         \
        const HueRow8u fast = fastRow<T>(conversionOf::PIXEL, pixelStride);                                   \
        shareRowsAboveThreshold(width, height, [=](int y) {                                                   \
            const T* src = pSrc + static_cast<std::ptrdiff_t>(srcStep) * y;                                   \
            T* dst = pDst + static_cast<std::ptrdiff_t>(dstStep) * y;                                         \
            const int done = fastPart(fast, src, dst, width);                                                 \
            if (done < width) KERNEL(src + done * pixelStride, dst + done * pixelStride, width - done, pixelStride); \
        });                                                                                                   \
    }

KEL_HUE_MEMBERS(KEL_HUE_ROW_LAYER)

#undef KEL_HUE_ROW_LAYER

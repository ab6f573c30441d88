// The call frame every family shares: argument tests that read like the
// contract, the plain row walk, and the numeric ground rules of the build.
#pragma once

#include <cfloat>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "kelcc.h"

// Float kernels evaluate in the x87 extended type; results depend on it.
static_assert(std::numeric_limits<long double>::digits == 64 && LDBL_MANT_DIG == 64,
              "long double must be the 80-bit extended type");
static_assert(sizeof(int) == 4, "strides and sizes are 32-bit");

namespace kel {

// ---- argument tests ---------------------------------------------------------

template <typename... P>
inline bool anyNull(const P*... pointers)
{
    return ((pointers == nullptr) || ...);
}

// Any null entry among the first `count` of a plane-pointer array.
template <typename T>
inline bool anyNullPlane(const T* const* planes, int count = 3)
{
    for (int p = 0; p < count; ++p)
        if (planes[p] == nullptr) return true;
    return false;
}

inline bool sizeBelow(KelImageSize size, int minWidth, int minHeight)
{
    return size.width < minWidth || size.height < minHeight;
}

inline bool stepBelowOne(int srcStep, int dstStep)
{
    return srcStep < 1 || dstStep < 1;
}

// ---- row addressing ---------------------------------------------------------

// Row y of an image whose rows are `step` bytes apart; negative and zero
// strides simply follow the arithmetic.
template <typename T>
inline T* rowAt(T* base, int step, int y)
{
    using Byte = std::conditional_t<std::is_const_v<T>, const std::uint8_t, std::uint8_t>;
    return reinterpret_cast<T*>(reinterpret_cast<Byte*>(base) + static_cast<std::ptrdiff_t>(step) * y);
}

// ---- saturation -------------------------------------------------------------

// The same value as the saturation table gives inside its valid range.
inline std::uint8_t saturateByte(std::int32_t v)
{
    return static_cast<std::uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v));
}

} // namespace kel

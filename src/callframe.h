// The call frame every family shares: argument tests in the library's two
// orders, odd-size warnings, plane arrays, strides and the row walks.
#pragma once

#include <cfloat>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include "kelcc.h"

// Float kernels evaluate in the x87 extended type; results depend on it.
static_assert(std::numeric_limits<long double>::digits == 64 && LDBL_MANT_DIG == 64,
              "long double must be the 80-bit extended type");
static_assert(sizeof(int) == 4, "strides and sizes are 32-bit");

namespace kel {

// ---- plane arrays -----------------------------------------------------------

// An image argument that is the address of an array of plane pointers (P3,
// and AP4 through FourPlanes) rather than of samples.
template <typename P>
inline constexpr bool isPlaneArray = std::is_pointer_v<std::remove_pointer_t<P>>;

// A four-plane array (planes with alpha) in an argument test.
template <typename T>
struct FourPlanes {
    T* const* planes;
};
template <typename T>
FourPlanes(T* const*) -> FourPlanes<T>;

// The YCrCb members are the YCbCr ones with planes 1 and 2, and their
// strides, exchanged.
struct CrCbPlanes {
    Kel8u* planes[3];
    int steps[3];
    CrCbPlanes(Kel8u* const p[3], const int s[3]) : planes{p[0], p[2], p[1]}, steps{s[0], s[2], s[1]} {}
};

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

namespace frame {

template <typename P>
inline const void* address(P image)
{
    return image;
}
template <typename T>
inline const void* address(FourPlanes<T> image)
{
    return image.planes;
}

// The planes inside an argument, if it is a plane array.
template <typename P>
inline bool nullInside(P image)
{
    if constexpr (isPlaneArray<P>) return anyNullPlane(image);
    else return false;
}
template <typename T>
inline bool nullInside(FourPlanes<T> image)
{
    return anyNullPlane(image.planes, 4);
}

} // namespace frame

// The order of most families: the pointer arguments (a plane array's own
// address among them), the size, then the plane pointers inside the arrays.
// A null plane with a bad size is a size error.
template <typename... P>
inline KelResult testPlanesAfterSize(KelImageSize size, int minWidth, int minHeight, P... images)
{
    if (anyNull(frame::address(images)...))          return kelErrNullPointer;
    if (sizeBelow(size, minWidth, minHeight))         return kelErrSize;
    if ((frame::nullInside(images) || ...))           return kelErrNullPointer;
    return kelOk;
}

// The order of the families that test every pointer first: the arguments and
// the planes inside the arrays, then the size.  A null plane with a bad size
// is a null-pointer error.
template <typename... P>
inline KelResult testPlanesWithPointers(KelImageSize size, int minWidth, int minHeight, P... images)
{
    if (anyNull(frame::address(images)...) || (frame::nullInside(images) || ...))  return kelErrNullPointer;
    if (sizeBelow(size, minWidth, minHeight))                                      return kelErrSize;
    return kelOk;
}

// ---- odd-size warnings ------------------------------------------------------
// Returned after the work, when the size does not divide into whole cells.

// 4:2:0 cells of 2 x 2.
inline KelResult warnUnlessEven(KelImageSize size)
{
    return ((size.width | size.height) & 1) ? kelWarnOddSize : kelOk;
}

// 4:1:1 groups of four along the row.
inline KelResult warnUnlessFourWide(KelImageSize size)
{
    return (size.width & 3) ? kelWarnOddSize : kelOk;
}

// A warning that follows a passed test: a failed test's status stands.
inline KelResult warnAfter(KelResult status, KelResult warning)
{
    return status == kelOk ? warning : status;
}

// ---- strides and rows -------------------------------------------------------

// Byte stride to element stride, by arithmetic shift: a stride that is not a
// whole number of elements is cut down.
template <typename T>
constexpr int elementStride(int byteStep)
{
    if constexpr (sizeof(T) == 1) return byteStep;
    else if constexpr (sizeof(T) == 2) return byteStep >> 1;
    else return byteStep >> 2;
}

// Row y of an image whose rows are `step` bytes apart; negative and zero
// strides simply follow the arithmetic.
template <typename T>
inline T* rowAt(T* base, int step, int y)
{
    using Byte = std::conditional_t<std::is_const_v<T>, const std::uint8_t, std::uint8_t>;
    return reinterpret_cast<T*>(reinterpret_cast<Byte*>(base) + static_cast<std::ptrdiff_t>(step) * y);
}

// The rows of a planar image: one stride for every plane, or one a plane.
template <typename T, int Count = 3>
struct PlaneRows {
    T* const* planes;
    int steps[Count];

    PlaneRows(T* const* p, int step) : planes(p)
    {
        for (int i = 0; i < Count; ++i) steps[i] = step;
    }
    PlaneRows(T* const* p, const int* stepArray) : planes(p)
    {
        for (int i = 0; i < Count; ++i) steps[i] = stepArray[i];
    }
    T* row(int plane, int y) const { return rowAt(planes[plane], steps[plane], y); }
};

// The plain row walk: row(y) for y = 0 .. height - 1, upward.
template <typename RowFn>
inline void forEachRow(int height, const RowFn& row)
{
    for (int y = 0; y < height; ++y) row(y);
}

// The walk of formats that pair rows (4:2:0): pair(top, bottom, chroma) with
// rows 2j, 2j + 1 and chroma row j; an odd last row is not visited.
template <typename PairFn>
inline void forEachRowPair(int height, const PairFn& pair)
{
    for (int j = 0; j < height / 2; ++j) pair(2 * j, 2 * j + 1, j);
}

// Byte strides that are not whole samples put rows at any byte address: such
// samples are read and written through copies.
template <typename S>
inline S loadSample(const S* p)
{
    S value;
    std::memcpy(&value, p, sizeof value);
    return value;
}
template <typename S>
inline void storeSample(S* p, S value)
{
    std::memcpy(p, &value, sizeof value);
}

// ---- conversions ------------------------------------------------------------

// The step of a row of `width` pixels of `bytes` bytes each, for the members
// that take no steps: a product past 2^31 wraps as 32-bit words do (no such
// row is addressable through an int step, and the argument tests come first).
inline int rowStep(int width, int bytes)
{
    return static_cast<int>(static_cast<std::uint32_t>(width) * static_cast<std::uint32_t>(bytes));
}

// A conversion to a 32-bit integer by truncation.  Inside the range it is the
// plain truncating cast; outside it saturates, and NaN gives 0, so that any
// float, NaN and the infinities included, has a defined result.
inline std::int32_t truncate32(long double x)
{
    if (x >= 2147483648.0L) return std::numeric_limits<std::int32_t>::max();
    if (x > -2147483649.0L) return static_cast<std::int32_t>(x);
    if (x <= -2147483649.0L) return std::numeric_limits<std::int32_t>::min();
    return 0;  // NaN
}

// ---- saturation -------------------------------------------------------------

// The same value as the saturation table gives inside its valid range.
inline std::uint8_t saturateByte(std::int32_t v)
{
    return static_cast<std::uint8_t>(v < 0 ? 0 : (v > 255 ? 255 : v));
}

} // namespace kel

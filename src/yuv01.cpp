// RGB <-> full-range YUV at full resolution, 8-bit, in C3, AC4 and planar
// layouts.  The pixel-order inverse and the planar inverse use coefficient
// sets that differ in the last place.
#include <array>
#include <type_traits>

#include "callframe.h"
#include "yuvconv.h"

using namespace kel;
using namespace kel::yuv;

#define KEL_YUV_LAYERS(NAME, SRC, DST)                                                                 \
    void my##NAME(SRC pSrc, int srcStep, DST pDst, int dstStep, int width, int height);                \
    void inner##NAME(SRC src, DST dst, int width);
KEL_YUV_LAYERS(RGBToYUV_8u_C3R, const Kel8u*, Kel8u*)
KEL_YUV_LAYERS(RGBToYUV_8u_AC4R, const Kel8u*, Kel8u*)
KEL_YUV_LAYERS(RGBToYUV_8u_P3R, const Kel8u* const*, Kel8u* const*)
KEL_YUV_LAYERS(RGBToYUV_8u_C3P3R, const Kel8u*, Kel8u* const*)
KEL_YUV_LAYERS(YUVToRGB_8u_C3R, const Kel8u*, Kel8u*)
KEL_YUV_LAYERS(YUVToRGB_8u_AC4R, const Kel8u*, Kel8u*)
KEL_YUV_LAYERS(YUVToRGB_8u_P3R, const Kel8u* const*, Kel8u* const*)
KEL_YUV_LAYERS(YUVToRGB_8u_P3C3R, const Kel8u* const*, Kel8u*)
#undef KEL_YUV_LAYERS

namespace {

template <typename Src, typename Dst>
KelResult yuvCall(void (*rowLayer)(Src, int, Dst, int, int, int), Src pSrc, int srcStep, Dst pDst, int dstStep,
                  KelImageSize roiSize)
{
    if (anyNull(pSrc, pDst))       return kelErrNullPointer;
    if (sizeBelow(roiSize, 1, 1))  return kelErrSize;
    if constexpr (isPlaneArray<Src>) if (anyNullPlane(pSrc)) return kelErrNullPointer;
    if constexpr (isPlaneArray<Dst>) if (anyNullPlane(pDst)) return kelErrNullPointer;
    rowLayer(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

} // namespace

// ---- public functions ------------------------------------------------------------------

#define KEL_YUV_PUBLIC(NAME, SRC, DST)                                                                  \
    KEL_API KelResult keli##NAME(SRC pSrc, int srcStep, DST pDst, int dstStep, KelImageSize roiSize)   \
    { return yuvCall(my##NAME, pSrc, srcStep, pDst, dstStep, roiSize); }

extern "C" {
KEL_YUV_PUBLIC(RGBToYUV_8u_C3R, const Kel8u*, Kel8u*)
KEL_YUV_PUBLIC(RGBToYUV_8u_AC4R, const Kel8u*, Kel8u*)
KEL_YUV_PUBLIC(RGBToYUV_8u_P3R, const Kel8u* const*, Kel8u* const*)
KEL_YUV_PUBLIC(RGBToYUV_8u_C3P3R, const Kel8u*, Kel8u* const*)
KEL_YUV_PUBLIC(YUVToRGB_8u_C3R, const Kel8u*, Kel8u*)
KEL_YUV_PUBLIC(YUVToRGB_8u_AC4R, const Kel8u*, Kel8u*)
KEL_YUV_PUBLIC(YUVToRGB_8u_P3R, const Kel8u* const*, Kel8u* const*)
KEL_YUV_PUBLIC(YUVToRGB_8u_P3C3R, const Kel8u* const*, Kel8u*)
} // extern "C"

// ---- row layers: the plain row walk, one stride for every plane --------------------------

namespace {

template <typename T>
auto rowOf(T image, int step, int y)
{
    if constexpr (isPlaneArray<T>) {
        using Plane = std::remove_const_t<std::remove_pointer_t<T>>;
        std::array<Plane, 3> rows{rowAt(image[0], step, y), rowAt(image[1], step, y), rowAt(image[2], step, y)};
        return rows;
    } else {
        return rowAt(image, step, y);
    }
}

template <typename T>
auto kernelArgument(T& row)
{
    if constexpr (requires { row.data(); }) return row.data(); else return row;
}

template <typename Src, typename Dst>
void yuvRows(void (*kernel)(Src, Dst, int), Src pSrc, int srcStep, Dst pDst, int dstStep, int width, int height)
{
    for (int y = 0; y < height; ++y) {
        auto s = rowOf(pSrc, srcStep, y);
        auto d = rowOf(pDst, dstStep, y);
        kernel(kernelArgument(s), kernelArgument(d), width);
    }
}

} // namespace

#define KEL_YUV_ROWS(NAME, SRC, DST)                                                                    \
    void my##NAME(SRC pSrc, int srcStep, DST pDst, int dstStep, int width, int height)                 \
    { yuvRows(inner##NAME, pSrc, srcStep, pDst, dstStep, width, height); }
KEL_YUV_ROWS(RGBToYUV_8u_C3R, const Kel8u*, Kel8u*)
KEL_YUV_ROWS(RGBToYUV_8u_AC4R, const Kel8u*, Kel8u*)
KEL_YUV_ROWS(RGBToYUV_8u_P3R, const Kel8u* const*, Kel8u* const*)
KEL_YUV_ROWS(RGBToYUV_8u_C3P3R, const Kel8u*, Kel8u* const*)
KEL_YUV_ROWS(YUVToRGB_8u_C3R, const Kel8u*, Kel8u*)
KEL_YUV_ROWS(YUVToRGB_8u_AC4R, const Kel8u*, Kel8u*)
KEL_YUV_ROWS(YUVToRGB_8u_P3R, const Kel8u* const*, Kel8u* const*)
KEL_YUV_ROWS(YUVToRGB_8u_P3C3R, const Kel8u* const*, Kel8u*)
#undef KEL_YUV_ROWS

// ---- row kernels ---------------------------------------------------------------------------

namespace {

// Channel c of pixel x is at channel[c][x * Pitch]; each pixel is read whole
// before its results are written.
template <int SrcPitch, int DstPitch>
void forwardRow(const Kel8u* const r, const Kel8u* const g, const Kel8u* const b, Kel8u* y, Kel8u* u, Kel8u* v,
                int width)
{
    for (int x = 0; x < width; ++x) {
        const std::int32_t R = r[x * SrcPitch], G = g[x * SrcPitch], B = b[x * SrcPitch];
        const std::int32_t sum = lumaSum(R, G, B);
        y[x * DstPitch] = static_cast<Kel8u>(sum >> 16);
        u[x * DstPitch] = chromaU<0>(B, sum);
        v[x * DstPitch] = chromaV<0>(R, sum);
    }
}

template <const Inverse& K, int SrcPitch, int DstPitch>
void inverseRow(const Kel8u* const y, const Kel8u* const u, const Kel8u* const v, Kel8u* r, Kel8u* g, Kel8u* b,
                int width)
{
    for (int x = 0; x < width; ++x)
        toRGB<K>(y[x * SrcPitch], u[x * SrcPitch], v[x * SrcPitch], r[x * DstPitch], g[x * DstPitch], b[x * DstPitch]);
}

} // namespace

void innerRGBToYUV_8u_C3R(const Kel8u* src, Kel8u* dst, int width)
{
    forwardRow<3, 3>(src, src + 1, src + 2, dst, dst + 1, dst + 2, width);
}
void innerRGBToYUV_8u_AC4R(const Kel8u* src, Kel8u* dst, int width)
{
    forwardRow<4, 4>(src, src + 1, src + 2, dst, dst + 1, dst + 2, width);
}
void innerRGBToYUV_8u_P3R(const Kel8u* const* src, Kel8u* const* dst, int width)
{
    forwardRow<1, 1>(src[0], src[1], src[2], dst[0], dst[1], dst[2], width);
}
void innerRGBToYUV_8u_C3P3R(const Kel8u* src, Kel8u* const* dst, int width)
{
    forwardRow<3, 1>(src, src + 1, src + 2, dst[0], dst[1], dst[2], width);
}
void innerYUVToRGB_8u_C3R(const Kel8u* src, Kel8u* dst, int width)
{
    inverseRow<inverse1, 3, 3>(src, src + 1, src + 2, dst, dst + 1, dst + 2, width);
}
void innerYUVToRGB_8u_AC4R(const Kel8u* src, Kel8u* dst, int width)
{
    inverseRow<inverse1, 4, 4>(src, src + 1, src + 2, dst, dst + 1, dst + 2, width);
}
void innerYUVToRGB_8u_P3R(const Kel8u* const* src, Kel8u* const* dst, int width)
{
    inverseRow<inverse2, 1, 1>(src[0], src[1], src[2], dst[0], dst[1], dst[2], width);
}
void innerYUVToRGB_8u_P3C3R(const Kel8u* const* src, Kel8u* dst, int width)
{
    inverseRow<inverse2, 1, 3>(src[0], src[1], src[2], dst, dst + 1, dst + 2, width);
}

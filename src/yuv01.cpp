// RGB <-> full-range YUV at full resolution, 8-bit, in C3, AC4 and planar
// layouts; the pixel-order and the planar inverses take different coefficient sets.
#include <cstdint>

#include "callframe.h"
#include "yuv01simd.h"
#include "yuvconv.h"

using namespace kel;
using namespace kel::yuv;

// Every member: public function, row layer, scalar kernel, the chooser of its
// row kernel (yuv01simd.h), then the source and destination argument types
// (plane arrays carry one stride for all planes).
#define KEL_YUV_MEMBERS(X)                                                                                                      \
    X(keliRGBToYUV_8u_C3R, myRGBToYUV_8u_C3R, innerRGBToYUV_8u_C3R, chooseRGBToYUV_8u_C3R, const Kel8u*, Kel8u*)                \
    X(keliRGBToYUV_8u_AC4R, myRGBToYUV_8u_AC4R, innerRGBToYUV_8u_AC4R, chooseRGBToYUV_8u_AC4R, const Kel8u*, Kel8u*)            \
    X(keliRGBToYUV_8u_P3R, myRGBToYUV_8u_P3R, innerRGBToYUV_8u_P3R, chooseRGBToYUV_8u_P3R, const Kel8u* const*, Kel8u* const*)  \
    X(keliRGBToYUV_8u_C3P3R, myRGBToYUV_8u_C3P3R, innerRGBToYUV_8u_C3P3R, chooseRGBToYUV_8u_C3P3R, const Kel8u*, Kel8u* const*) \
    X(keliYUVToRGB_8u_C3R, myYUVToRGB_8u_C3R, innerYUVToRGB_8u_C3R, chooseYUVToRGB_8u_C3R, const Kel8u*, Kel8u*)                \
    X(keliYUVToRGB_8u_AC4R, myYUVToRGB_8u_AC4R, innerYUVToRGB_8u_AC4R, chooseYUVToRGB_8u_AC4R, const Kel8u*, Kel8u*)            \
    X(keliYUVToRGB_8u_P3R, myYUVToRGB_8u_P3R, innerYUVToRGB_8u_P3R, chooseYUVToRGB_8u_P3R, const Kel8u* const*, Kel8u* const*)  \
    X(keliYUVToRGB_8u_P3C3R, myYUVToRGB_8u_P3C3R, innerYUVToRGB_8u_P3C3R, chooseYUVToRGB_8u_P3C3R, const Kel8u* const*, Kel8u*)

#define KEL_YUV_DECLARE(publicName, rowLayer, kernel, chooser, Src, Dst)                                                        \
    void rowLayer(Src pSrc, int srcStep, Dst pDst, int dstStep, int width, int height);                                         \
    void kernel(Src src, Dst dst, int width);
KEL_YUV_MEMBERS(KEL_YUV_DECLARE)
#undef KEL_YUV_DECLARE

// ---- public functions ---------------------------------------------------------------------

// Null pointers (a plane array's own address), the size, then the planes.
#define KEL_YUV_PUBLIC(publicName, rowLayer, kernel, chooser, Src, Dst)                                                         \
    KEL_API KelResult publicName(Src pSrc, int srcStep, Dst pDst, int dstStep, KelImageSize roiSize)                            \
    {                                                                                                                           \
        if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;                                   \
        rowLayer(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);                                                  \
        return kelOk;                                                                                                           \
    }
extern "C" {
KEL_YUV_MEMBERS(KEL_YUV_PUBLIC)
} // extern "C"
#undef KEL_YUV_PUBLIC

// ---- row layers: the plain row walk, one stride for every plane ---------------------------

// Each takes its row kernel once per call: the whole-vector kernel of the
// processor's best target, which finishes every row with the scalar kernel
// below and gives its bytes (yuv01simd.cpp).

namespace {

// Row y of an image argument, as its kernel takes it: a pixel-order row...
template <typename Image>
struct RowOf {
    Image row;
    RowOf(Image image, int step, int y) : row(rowAt(image, step, y)) {}
    operator Image() const { return row; }
};

// ... or the rows of the three planes.
template <typename T>
struct RowOf<T* const*> {
    T* rows[3];
    RowOf(T* const* planes, int step, int y)
    {
        const PlaneRows<T> image(planes, step);
        for (int p = 0; p < 3; ++p) rows[p] = image.row(p, y);
    }
    operator T* const*() const { return rows; }
};

template <typename Src, typename Dst>
void walkRows(void (*kernel)(Src, Dst, int), Src pSrc, int srcStep, Dst pDst, int dstStep, int width, int height)
{
    forEachRow(height, [&](int y) { kernel(RowOf<Src>(pSrc, srcStep, y), RowOf<Dst>(pDst, dstStep, y), width); });
}

} // namespace

#define KEL_YUV_ROWS(publicName, rowLayer, kernel, chooser, Src, Dst)                                                           \
    void rowLayer(Src pSrc, int srcStep, Dst pDst, int dstStep, int width, int height)                                          \
    {                                                                                                                           \
        walkRows(kel::chooser(), pSrc, srcStep, pDst, dstStep, width, height);                                                  \
    }
KEL_YUV_MEMBERS(KEL_YUV_ROWS)
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
// The fourth byte is neither read nor written.
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
// Pixel order takes set 1, planes set 2.
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

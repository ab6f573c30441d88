// Blue-first 8-bit pixels <-> HLS between plane and pixel-order layouts,
// carrying alpha across where both sides have it.  Results truncate (addend
// 1e-7), except keliBGRToHLS_8u_AC4R, which rounds as the RGB family does.
#include <array>
#include <cstddef>
#include <type_traits>

#include "callframe.h"
#include "hueconv.h"
#include "rowshare.h"

using namespace kel;
using namespace kel::hue;

#define KEL_HLS_PLANE_KERNELS(DIR)                                                                              \
    void ownpi_##DIR##_8u_AP4(const Kel8u* const src[4], Kel8u* const dst[4], int width);                     \
    void ownpi_##DIR##_8u_AP4C4(const Kel8u* const src[4], Kel8u* dst, int width);                            \
    void ownpi_##DIR##_8u_AC4P4(const Kel8u* src, Kel8u* const dst[4], int width);                            \
    void ownpi_##DIR##_8u_P3(const Kel8u* const src[3], Kel8u* const dst[3], int width);                      \
    void ownpi_##DIR##_8u_P3C3(const Kel8u* const src[3], Kel8u* dst, int width);                             \
    void ownpi_##DIR##_8u_C3P3(const Kel8u* src, Kel8u* const dst[3], int width);
KEL_HLS_PLANE_KERNELS(BGRToHLS)
KEL_HLS_PLANE_KERNELS(HLSToBGR)
#undef KEL_HLS_PLANE_KERNELS
void myBGRToHLS_8u_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height);
void innerBGRToHLS_8u_AC4R(const Kel8u* src, Kel8u* dst, int width);

namespace {

// ---- argument tests and the parallel region -------------------------------------

// Plane pointers are tested only on the planar sides.
template <typename P>
bool nullPlanes(P planes, int count)
{
    if constexpr (std::is_pointer_v<std::remove_pointer_t<P>>) return anyNullPlane(planes, count);
    (void)count;
    return false;
}

template <typename Src, typename Dst, typename RowKernel>
KelResult planeFamilyCall(Src pSrc, int srcPlanes, int srcStep, Dst pDst, int dstPlanes, int dstStep,
                          KelImageSize roiSize, RowKernel rowKernel)
{
    if (anyNull(pSrc, pDst))                                                return kelErrNullPointer;
    if (nullPlanes(pSrc, srcPlanes) || nullPlanes(pDst, dstPlanes))         return kelErrNullPointer;
    if (stepBelowOne(srcStep, dstStep))                                     return kelErrStep;
    if (roiSize.width < 1)                                                  return kelErrSize;
    if (roiSize.height < 1)                                                 return kelErrSize;
    const int width = roiSize.width;
    shareRowsAlways(roiSize.height, [&](int y) { rowKernel(y, width); });
    return kelOk;
}

// Row y of each plane of an array, or of a pixel-order image.
template <typename T, int Count>
std::array<T*, 4> planeRows(T* const* planes, int step, int y)
{
    std::array<T*, 4> rows{};
    for (int p = 0; p < Count; ++p) rows[p] = rowAt(planes[p], step, y);
    return rows;
}

} // namespace

// ---- public functions ----------------------------------------------------------

#define KEL_HLS_PLANE_PUBLIC(DIR)                                                                                 \
    KEL_API KelResult keli##DIR##_8u_AP4R(const Kel8u* const pSrc[4], int srcStep, Kel8u* const pDst[4],           \
                                          int dstStep, KelImageSize roiSize)                                       \
    {                                                                                                             \
        return planeFamilyCall(pSrc, 4, srcStep, pDst, 4, dstStep, roiSize, [=](int y, int width) {               \
            const auto s = planeRows<const Kel8u, 4>(pSrc, srcStep, y);                                           \
            const auto d = planeRows<Kel8u, 4>(pDst, dstStep, y);                                                 \
            ownpi_##DIR##_8u_AP4(s.data(), d.data(), width);                                                      \
        });                                                                                                       \
    }                                                                                                             \
    KEL_API KelResult keli##DIR##_8u_AP4C4R(const Kel8u* const pSrc[4], int srcStep, Kel8u* pDst, int dstStep,     \
                                            KelImageSize roiSize)                                                  \
    {                                                                                                             \
        return planeFamilyCall(pSrc, 4, srcStep, pDst, 0, dstStep, roiSize, [=](int y, int width) {               \
            const auto s = planeRows<const Kel8u, 4>(pSrc, srcStep, y);                                           \
            ownpi_##DIR##_8u_AP4C4(s.data(), rowAt(pDst, dstStep, y), width);                                     \
        });                                                                                                       \
    }                                                                                                             \
    KEL_API KelResult keli##DIR##_8u_AC4P4R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[4], int dstStep,     \
                                            KelImageSize roiSize)                                                  \
    {                                                                                                             \
        return planeFamilyCall(pSrc, 0, srcStep, pDst, 4, dstStep, roiSize, [=](int y, int width) {               \
            const auto d = planeRows<Kel8u, 4>(pDst, dstStep, y);                                                 \
            ownpi_##DIR##_8u_AC4P4(rowAt(pSrc, srcStep, y), d.data(), width);                                     \
        });                                                                                                       \
    }                                                                                                             \
    KEL_API KelResult keli##DIR##_8u_P3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3],            \
                                         int dstStep, KelImageSize roiSize)                                        \
    {                                                                                                             \
        return planeFamilyCall(pSrc, 3, srcStep, pDst, 3, dstStep, roiSize, [=](int y, int width) {               \
            const auto s = planeRows<const Kel8u, 3>(pSrc, srcStep, y);                                           \
            const auto d = planeRows<Kel8u, 3>(pDst, dstStep, y);                                                 \
            ownpi_##DIR##_8u_P3(s.data(), d.data(), width);                                                       \
        });                                                                                                       \
    }                                                                                                             \
    KEL_API KelResult keli##DIR##_8u_P3C3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep,      \
                                           KelImageSize roiSize)                                                   \
    {                                                                                                             \
        return planeFamilyCall(pSrc, 3, srcStep, pDst, 0, dstStep, roiSize, [=](int y, int width) {               \
            const auto s = planeRows<const Kel8u, 3>(pSrc, srcStep, y);                                           \
            ownpi_##DIR##_8u_P3C3(s.data(), rowAt(pDst, dstStep, y), width);                                      \
        });                                                                                                       \
    }                                                                                                             \
    KEL_API KelResult keli##DIR##_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], int dstStep,      \
                                           KelImageSize roiSize)                                                   \
    {                                                                                                             \
        return planeFamilyCall(pSrc, 0, srcStep, pDst, 3, dstStep, roiSize, [=](int y, int width) {               \
            const auto d = planeRows<Kel8u, 3>(pDst, dstStep, y);                                                 \
            ownpi_##DIR##_8u_C3P3(rowAt(pSrc, srcStep, y), d.data(), width);                                      \
        });                                                                                                       \
    }

extern "C" {

KEL_HLS_PLANE_PUBLIC(BGRToHLS)
KEL_HLS_PLANE_PUBLIC(HLSToBGR)

// The one pixel-order member: size before strides, and results that round.
KEL_API KelResult keliBGRToHLS_8u_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (anyNull(pSrc, pDst))             return kelErrNullPointer;
    if (sizeBelow(roiSize, 1, 1))        return kelErrSize;
    if (stepBelowOne(srcStep, dstStep))  return kelErrStep;
    myBGRToHLS_8u_AC4R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

} // extern "C"

#undef KEL_HLS_PLANE_PUBLIC

void myBGRToHLS_8u_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    shareRowsAlways(height, [=](int y) { innerBGRToHLS_8u_AC4R(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width); });
}

// ---- row kernels -----------------------------------------------------------------

namespace {

// Channel c of pixel x is at channel[c][x * Pitch]: planes have pitch 1,
// pixel-order rows 3 or 4.  Alpha (channel 3) is copied when both sides have it.
template <bool Forward, int SrcPitch, int DstPitch, bool CopyAlpha, bool Rounding = false>
void hlsRow(const Kel8u* const src[4], Kel8u* const dst[4], int width)
{
    const Ext addend = Rounding ? addendNearest : addendTruncate;
    int previous = -1;  // a repeated colour takes the previous results again
    Kel8u out[3] = {};
    for (int x = 0; x < width; ++x) {
        const Kel8u a = src[0][x * SrcPitch], b = src[1][x * SrcPitch], c = src[2][x * SrcPitch];
        const int colour = a | (b << 8) | (c << 16);
        if (colour == previous) {
            // same results as the pixel before
        } else if constexpr (Forward) {  // B, G, R in; H, L, S out
            const HLS v = toHLS<false>(unitValue(c), unitValue(b), unitValue(a));
            storeHLS(v, addend, &out[0], &out[1], &out[2]);
        } else {  // H, L, S in; B, G, R out
            const RGB v = decodeHLS(a, b, c);
            out[0] = store<Kel8u>(v.b * 255, addend);
            out[1] = store<Kel8u>(v.g * 255, addend);
            out[2] = store<Kel8u>(v.r * 255, addend);
        }
        previous = colour;
        if constexpr (CopyAlpha) dst[3][x * DstPitch] = src[3][x * SrcPitch];
        dst[0][x * DstPitch] = out[0];
        dst[1][x * DstPitch] = out[1];
        dst[2][x * DstPitch] = out[2];
    }
}

// The channels of a pixel-order row.
template <typename T>
std::array<T*, 4> channelsOf(T* row)
{
    return {row, row + 1, row + 2, row + 3};
}

} // namespace

#define KEL_HLS_PLANE_KERNEL_BODIES(DIR, FORWARD)                                                                  \
    void ownpi_##DIR##_8u_AP4(const Kel8u* const src[4], Kel8u* const dst[4], int width)                         \
    { hlsRow<FORWARD, 1, 1, true>(src, dst, width); }                                                            \
    void ownpi_##DIR##_8u_AP4C4(const Kel8u* const src[4], Kel8u* dst, int width)                                \
    { hlsRow<FORWARD, 1, 4, true>(src, channelsOf(dst).data(), width); }                                         \
    void ownpi_##DIR##_8u_AC4P4(const Kel8u* src, Kel8u* const dst[4], int width)                                \
    { hlsRow<FORWARD, 4, 1, true>(channelsOf(src).data(), dst, width); }                                         \
    void ownpi_##DIR##_8u_P3(const Kel8u* const src[3], Kel8u* const dst[3], int width)                          \
    {                                                                                                            \
        const Kel8u* const s[4] = {src[0], src[1], src[2], nullptr};                                             \
        Kel8u* const d[4] = {dst[0], dst[1], dst[2], nullptr};                                                   \
        hlsRow<FORWARD, 1, 1, false>(s, d, width);                                                               \
    }                                                                                                            \
    void ownpi_##DIR##_8u_P3C3(const Kel8u* const src[3], Kel8u* dst, int width)                                 \
    {                                                                                                            \
        const Kel8u* const s[4] = {src[0], src[1], src[2], nullptr};                                             \
        hlsRow<FORWARD, 1, 3, false>(s, channelsOf(dst).data(), width);                                          \
    }                                                                                                            \
    void ownpi_##DIR##_8u_C3P3(const Kel8u* src, Kel8u* const dst[3], int width)                                 \
    {                                                                                                            \
        Kel8u* const d[4] = {dst[0], dst[1], dst[2], nullptr};                                                   \
        hlsRow<FORWARD, 3, 1, false>(channelsOf(src).data(), d, width);                                          \
    }

KEL_HLS_PLANE_KERNEL_BODIES(BGRToHLS, true)
KEL_HLS_PLANE_KERNEL_BODIES(HLSToBGR, false)

void innerBGRToHLS_8u_AC4R(const Kel8u* src, Kel8u* dst, int width)
{
    hlsRow<true, 4, 4, false, true>(channelsOf(src).data(), channelsOf(dst).data(), width);
}

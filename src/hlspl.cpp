// Blue-first 8-bit pixels <-> HLS between plane and pixel-order layouts,
// carrying alpha across where both sides have it.
#include <array>

#include "callframe.h"
#include "hueconv.h"
#include "mskcolorsimd.h"
#include "rowshare.h"

using namespace kel;
using namespace kel::hue;

namespace {

// ---- layouts --------------------------------------------------------------------

// One side of a member: an array of Count planes (one stride for all of them),
// or a pixel-order row of Count samples a pixel.  A kernel takes the rows of
// a planar side as an array of row pointers, and a pixel-order row as itself.
template <int Count>
struct Planes {
    using Source = const Kel8u* const*;
    using Destination = Kel8u* const*;
    static constexpr int count = Count, pitch = 1;

    template <typename T>
    static bool nullPlane(T* const* planes) { return anyNullPlane(planes, Count); }

    // Row y of every plane, for as long as the kernel call lasts.
    template <typename T>
    struct Rows {
        T* row[Count];
        operator T* const*() const { return row; }
    };
    template <typename T>
    static Rows<T> rowsAt(T* const* planes, int step, int y)
    {
        const PlaneRows<T, Count> image(planes, step);
        Rows<T> rows;
        for (int p = 0; p < Count; ++p) rows.row[p] = image.row(p, y);
        return rows;
    }

    // The same rows from pixel n on.
    template <typename T>
    static Rows<T> advance(Rows<T> rows, int n)
    {
        for (int p = 0; p < Count; ++p) rows.row[p] += n;
        return rows;
    }

    // Channel c of pixel x lies at channels[c][x * pitch]; a fourth plane that
    // is not there is null.
    template <typename T>
    static std::array<T*, 4> channels(T* const* planes)
    {
        if constexpr (Count == 4) return {planes[0], planes[1], planes[2], planes[3]};
        else return {planes[0], planes[1], planes[2], nullptr};
    }
};

template <int Count>
struct Pixels {
    using Source = const Kel8u*;
    using Destination = Kel8u*;
    static constexpr int count = Count, pitch = Count;

    template <typename T>
    static bool nullPlane(T*) { return false; }

    template <typename T>
    static T* rowsAt(T* base, int step, int y) { return rowAt(base, step, y); }

    template <typename T>
    static T* advance(T* row, int n) { return row + n * Count; }

    template <typename T>
    static std::array<T*, 4> channels(T* row)
    {
        return {row, row + 1, row + 2, row + 3};
    }
};

using Planes3 = Planes<3>;
using Planes4 = Planes<4>;
using Pixels3 = Pixels<3>;
using Pixels4 = Pixels<4>;

constexpr bool kToHLS = true, kFromHLS = false;

template <bool ToHLS, int SrcPitch, int DstPitch, bool CopyAlpha, bool Rounding = false>
void hlsRow(const Kel8u* const src[4], Kel8u* const dst[4], int width);

// The vector row of a member's layout, chosen once a call (null without SIMD).
template <class Src, class Dst, bool ToHLS>
HueRow8u fastRow()
{
    return chooseHueRow8u(ToHLS ? HueConversion::RGBToHLS : HueConversion::HLSToRGB, false, true, Src::pitch,
                          Dst::pitch, Src::count == 4 && Dst::count == 4 ? HueAlpha::Copy : HueAlpha::None);
}

// Whole vector steps by the vector row, the rest by the kernel.
template <class Src, class Dst, class SrcRows, class DstRows, class Kernel>
void fastThenKernel(HueRow8u fast, Kernel kernel, SrcRows src, DstRows dst, int width)
{
    const typename Src::Source from = src;
    const typename Dst::Destination to = dst;
    const int done = fast != nullptr ? fast(Src::channels(from).data(), Dst::channels(to).data(), width) : 0;
    if (done < width) kernel(Src::advance(src, done), Dst::advance(dst, done), width - done);
}

} // namespace

// X(public function, row kernel, source layout, destination layout, direction).
// Alpha goes across in the members whose sides both have four channels.
#define KEL_HLS_PLANE_MEMBERS(X)                                                    \
    X(keliBGRToHLS_8u_AP4R,   ownpi_BGRToHLS_8u_AP4,   Planes4, Planes4, kToHLS)   \
    X(keliBGRToHLS_8u_AP4C4R, ownpi_BGRToHLS_8u_AP4C4, Planes4, Pixels4, kToHLS)   \
    X(keliBGRToHLS_8u_AC4P4R, ownpi_BGRToHLS_8u_AC4P4, Pixels4, Planes4, kToHLS)   \
    X(keliBGRToHLS_8u_P3R,    ownpi_BGRToHLS_8u_P3,    Planes3, Planes3, kToHLS)   \
    X(keliBGRToHLS_8u_P3C3R,  ownpi_BGRToHLS_8u_P3C3,  Planes3, Pixels3, kToHLS)   \
    X(keliBGRToHLS_8u_C3P3R,  ownpi_BGRToHLS_8u_C3P3,  Pixels3, Planes3, kToHLS)   \
    X(keliHLSToBGR_8u_AP4R,   ownpi_HLSToBGR_8u_AP4,   Planes4, Planes4, kFromHLS) \
    X(keliHLSToBGR_8u_AP4C4R, ownpi_HLSToBGR_8u_AP4C4, Planes4, Pixels4, kFromHLS) \
    X(keliHLSToBGR_8u_AC4P4R, ownpi_HLSToBGR_8u_AC4P4, Pixels4, Planes4, kFromHLS) \
    X(keliHLSToBGR_8u_P3R,    ownpi_HLSToBGR_8u_P3,    Planes3, Planes3, kFromHLS) \
    X(keliHLSToBGR_8u_P3C3R,  ownpi_HLSToBGR_8u_P3C3,  Planes3, Pixels3, kFromHLS) \
    X(keliHLSToBGR_8u_C3P3R,  ownpi_HLSToBGR_8u_C3P3,  Pixels3, Planes3, kFromHLS)

#define KEL_HLS_PLANE_DECLARE_KERNEL(NAME, KERNEL, SRC, DST, DIRECTION) \
    void KERNEL(SRC::Source src, DST::Destination dst, int width);
KEL_HLS_PLANE_MEMBERS(KEL_HLS_PLANE_DECLARE_KERNEL)
#undef KEL_HLS_PLANE_DECLARE_KERNEL
void myBGRToHLS_8u_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height);
void innerBGRToHLS_8u_AC4R(const Kel8u* src, Kel8u* dst, int width);

// ---- public functions ----------------------------------------------------------

// The pointer arguments, then the planes inside the arrays (the source's
// first), then the strides, then the size; the rows go to the kernel in the
// parallel region at every size.
#define KEL_HLS_PLANE_PUBLIC(NAME, KERNEL, SRC, DST, DIRECTION)                                               \
    KEL_API KelResult NAME(SRC::Source pSrc, int srcStep, DST::Destination pDst, int dstStep,                 \
                           KelImageSize roiSize)                                                              \
    {                                                                                                         \
        if (anyNull(pSrc, pDst) || SRC::nullPlane(pSrc) || DST::nullPlane(pDst))  return kelErrNullPointer;   \
        if (stepBelowOne(srcStep, dstStep))                                       return kelErrStep;          \
        if (sizeBelow(roiSize, 1, 1))                                             return kelErrSize;          \
        const int width = roiSize.width;                                                                      \
        const HueRow8u fast = fastRow<SRC, DST, DIRECTION>();                                                 \
        shareRowsAlways(roiSize.height, rowsApart(dstStep, 1LL * width * DST::pitch), [=](int y) {            \
            fastThenKernel<SRC, DST>(fast, KERNEL, SRC::rowsAt(pSrc, srcStep, y), DST::rowsAt(pDst, dstStep, y), \
                                     width);                                                                  \
        });                                                                                                   \
        return kelOk;                                                                                         \
    }

extern "C" {

KEL_HLS_PLANE_MEMBERS(KEL_HLS_PLANE_PUBLIC)

// The one pixel-order member: size before strides, and results that round.
KEL_API KelResult keliBGRToHLS_8u_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize)
{
    if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst))  return bad;
    if (stepBelowOne(srcStep, dstStep))                                        return kelErrStep;
    myBGRToHLS_8u_AC4R(pSrc, srcStep, pDst, dstStep, roiSize.width, roiSize.height);
    return kelOk;
}

} // extern "C"

#undef KEL_HLS_PLANE_PUBLIC

// ---- row layer -------------------------------------------------------------------

void myBGRToHLS_8u_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height)
{
    const HueRow8u fast = chooseHueRow8u(HueConversion::RGBToHLS, true, true, 4, 4, HueAlpha::Keep);
    shareRowsAlways(height, rowsApart(dstStep, 4LL * width), [=](int y) {
        fastThenKernel<Pixels4, Pixels4>(fast, innerBGRToHLS_8u_AC4R, rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y),
                                         width);
    });
}

// ---- row kernels -----------------------------------------------------------------

// The kernels differ only in how they step through memory: channel c of
// pixel x is at channels[c][x * pitch] on either side.
#define KEL_HLS_PLANE_KERNEL(NAME, KERNEL, SRC, DST, DIRECTION)                                               \
    void KERNEL(SRC::Source src, DST::Destination dst, int width)                                             \
    {                                                                                                         \
        hlsRow<DIRECTION, SRC::pitch, DST::pitch, SRC::count == 4 && DST::count == 4>(                        \
            SRC::channels(src).data(), DST::channels(dst).data(), width);                                     \
    }

KEL_HLS_PLANE_MEMBERS(KEL_HLS_PLANE_KERNEL)

#undef KEL_HLS_PLANE_KERNEL

// Alpha is left as it was in the destination.
void innerBGRToHLS_8u_AC4R(const Kel8u* src, Kel8u* dst, int width)
{
    hlsRow<kToHLS, 4, 4, false, true>(Pixels4::channels(src).data(), Pixels4::channels(dst).data(), width);
}

namespace {

// Results truncate (addend 1e-7), except where Rounding asks for the rounding
// addend of the RGB family (keliBGRToHLS_8u_AC4R).  Alpha (channel 3) is
// copied when both sides have it.
template <bool ToHLS, int SrcPitch, int DstPitch, bool CopyAlpha, bool Rounding>
void hlsRow(const Kel8u* const src[4], Kel8u* const dst[4], int width)
{
    const Ext addend = Rounding ? addendNearest : addendTruncate;
    Kel8u out[3];
    for (int x = 0; x < width; ++x) {
        const Kel8u a = src[0][x * SrcPitch], b = src[1][x * SrcPitch], c = src[2][x * SrcPitch];
        if constexpr (ToHLS) {  // B, G, R in; H, L, S out
            const HLS v = toHLS<false>(unitValue(c), unitValue(b), unitValue(a));
            storeHLS(v, addend, &out[0], &out[1], &out[2]);
        } else {  // H, L, S in; B, G, R out
            const RGB v = decodeHLS(a, b, c);
            out[0] = store<Kel8u>(v.b * 255, addend);
            out[1] = store<Kel8u>(v.g * 255, addend);
            out[2] = store<Kel8u>(v.r * 255, addend);
        }
        if constexpr (CopyAlpha) dst[3][x * DstPitch] = src[3][x * SrcPitch];
        dst[0][x * DstPitch] = out[0];
        dst[1][x * DstPitch] = out[1];
        dst[2][x * DstPitch] = out[2];
    }
}

} // namespace

// YCoCg: pixel-order B, G, R (8u, or signed 16-bit) to and from three planes
// Y, Co, Cg, plain (lossy, with rounding terms) and reversible (lifting).
#include "ycocg.h"

#include "callframe.h"

using namespace kel;
using namespace kel::ycocg;

namespace {

template <class Arith, typename Src, typename Plane, int Pitch>
void myBGRToYCoCg(const Src* pSrc, int srcStep, Plane* const pDst[3], int dstStep, KelImageSize size);
template <class Arith, typename Plane, typename Out, int Pitch>
void myYCoCgToBGR(const Plane* const pSrc[3], int srcStep, Out* pDst, int dstStep, KelImageSize size, Out alpha);

// Null pointers, the three planes included, are the one test.
template <typename P, typename Q>
bool nullArguments(const P* pixels, const Q* const* planes)
{
    return anyNull(pixels, planes) || anyNullPlane(planes);
}

} // namespace

// ---- public functions -------------------------------------------------------------------------------

#define KEL_YCOCG_FORWARD(NAME, ARITH, Src, Plane, PITCH)                                                         \
    KEL_API KelResult NAME(const Src* pSrc, int srcStep, Plane* const pDst[3], int dstStep, KelImageSize roiSize) \
    {                                                                                                             \
        if (nullArguments(pSrc, pDst)) return kelErrNullPointer;                                                  \
        myBGRToYCoCg<ARITH, Src, Plane, PITCH>(pSrc, srcStep, pDst, dstStep, roiSize);                            \
        return kelOk;                                                                                             \
    }
#define KEL_YCOCG_INVERSE(NAME, ARITH, Plane, Out)                                                                \
    KEL_API KelResult NAME##_P3C3R(const Plane* const pSrc[3], int srcStep, Out* pDst, int dstStep,             \
                                   KelImageSize roiSize)                                                          \
    {                                                                                                             \
        if (nullArguments(pDst, pSrc)) return kelErrNullPointer;                                                  \
        myYCoCgToBGR<ARITH, Plane, Out, 3>(pSrc, srcStep, pDst, dstStep, roiSize, Out{0});                        \
        return kelOk;                                                                                             \
    }                                                                                                             \
    KEL_API KelResult NAME##_P3C4R(const Plane* const pSrc[3], int srcStep, Out* pDst, int dstStep,             \
                                   KelImageSize roiSize, Out alpha)                                               \
    {                                                                                                             \
        if (nullArguments(pDst, pSrc)) return kelErrNullPointer;                                                  \
        myYCoCgToBGR<ARITH, Plane, Out, 4>(pSrc, srcStep, pDst, dstStep, roiSize, alpha);                         \
        return kelOk;                                                                                             \
    }

extern "C" {
KEL_YCOCG_FORWARD(keliBGRToYCoCg_8u16s_C3P3R, PlainForward, Kel8u, Kel16s, 3)
KEL_YCOCG_FORWARD(keliBGRToYCoCg_8u16s_C4P3R, PlainForward, Kel8u, Kel16s, 4)
KEL_YCOCG_FORWARD(keliSBGRToYCoCg_16s_C3P3R, PlainForward, Kel16s, Kel16s, 3)
KEL_YCOCG_FORWARD(keliSBGRToYCoCg_16s_C4P3R, PlainForward, Kel16s, Kel16s, 4)
KEL_YCOCG_FORWARD(keliSBGRToYCoCg_16s32s_C3P3R, PlainForward, Kel16s, Kel32s, 3)
KEL_YCOCG_FORWARD(keliSBGRToYCoCg_16s32s_C4P3R, PlainForward, Kel16s, Kel32s, 4)
KEL_YCOCG_FORWARD(keliBGRToYCoCg_Rev_8u16s_C3P3R, LiftingForward, Kel8u, Kel16s, 3)
KEL_YCOCG_FORWARD(keliBGRToYCoCg_Rev_8u16s_C4P3R, LiftingForward, Kel8u, Kel16s, 4)
KEL_YCOCG_FORWARD(keliSBGRToYCoCg_Rev_16s_C3P3R, LiftingForward, Kel16s, Kel16s, 3)
KEL_YCOCG_FORWARD(keliSBGRToYCoCg_Rev_16s_C4P3R, LiftingForward, Kel16s, Kel16s, 4)
KEL_YCOCG_FORWARD(keliSBGRToYCoCg_Rev_16s32s_C3P3R, LiftingForward, Kel16s, Kel32s, 3)
KEL_YCOCG_FORWARD(keliSBGRToYCoCg_Rev_16s32s_C4P3R, LiftingForward, Kel16s, Kel32s, 4)
KEL_YCOCG_INVERSE(keliYCoCgToBGR_16s8u, PlainInverse, Kel16s, Kel8u)
KEL_YCOCG_INVERSE(keliYCoCgToSBGR_16s, PlainInverse, Kel16s, Kel16s)
KEL_YCOCG_INVERSE(keliYCoCgToSBGR_32s16s, PlainInverse, Kel32s, Kel16s)
KEL_YCOCG_INVERSE(keliYCoCgToBGR_Rev_16s8u, LiftingInverse<false>, Kel16s, Kel8u)
KEL_YCOCG_INVERSE(keliYCoCgToSBGR_Rev_16s, LiftingInverse<false>, Kel16s, Kel16s)
KEL_YCOCG_INVERSE(keliYCoCgToSBGR_Rev_32s16s, LiftingInverse<true>, Kel32s, Kel16s)
}

// ---- row layers -------------------------------------------------------------------------------------

namespace {

// Rows top to bottom on the calling thread; a width or height below 1 runs
// nothing.  8-bit pixels go through the vector rows.  Rows may start at any
// byte address: wider samples are read and written through copies.
template <class Arith, typename Src, typename Plane, int Pitch>
void myBGRToYCoCg(const Src* pSrc, int srcStep, Plane* const pDst[3], int dstStep, KelImageSize size)
{
    if (size.width < 1) return;
    [[maybe_unused]] ForwardRow8u row8u = nullptr;
    if constexpr (std::is_same_v<Src, Kel8u>) row8u = chooseForwardRow8u(std::is_same_v<Arith, LiftingForward>, Pitch);
    forEachRow(size.height, [&](int y) {
        const Src* src = rowAt(pSrc, srcStep, y);
        Plane* yp = rowAt(pDst[0], dstStep, y);
        Plane* cop = rowAt(pDst[1], dstStep, y);
        Plane* cgp = rowAt(pDst[2], dstStep, y);
        if constexpr (std::is_same_v<Src, Kel8u>) {
            row8u(src, yp, cop, cgp, size.width);
        } else {
            for (int x = 0; x < size.width; ++x, src += Pitch) {
                Plane a, b, c;
                Arith::apply(loadSample(src), loadSample(src + 1), loadSample(src + 2), a, b, c);
                storeSample(yp + x, a);
                storeSample(cop + x, b);
                storeSample(cgp + x, c);
            }
        }
    });
}

template <class Arith, typename Plane, typename Out, int Pitch>
void myYCoCgToBGR(const Plane* const pSrc[3], int srcStep, Out* pDst, int dstStep, KelImageSize size, Out alpha)
{
    if (size.width < 1) return;
    [[maybe_unused]] InverseRow8u row8u = nullptr;
    if constexpr (std::is_same_v<Out, Kel8u>) row8u = chooseInverseRow8u(!std::is_same_v<Arith, PlainInverse>, Pitch);
    forEachRow(size.height, [&](int y) {
        const Plane* yp = rowAt(pSrc[0], srcStep, y);
        const Plane* cop = rowAt(pSrc[1], srcStep, y);
        const Plane* cgp = rowAt(pSrc[2], srcStep, y);
        Out* dst = rowAt(pDst, dstStep, y);
        if constexpr (std::is_same_v<Out, Kel8u>) {
            row8u(yp, cop, cgp, dst, size.width, alpha);
        } else {
            for (int x = 0; x < size.width; ++x, dst += Pitch) {
                Out b, g, r;
                Arith::apply(loadSample(yp + x), loadSample(cop + x), loadSample(cgp + x), b, g, r);
                storeSample(dst, b);
                storeSample(dst + 1, g);
                storeSample(dst + 2, r);
                if constexpr (Pitch == 4) storeSample(dst + 3, alpha);
            }
        }
    });
}

} // namespace

// ---- scalar rows of the 8-bit members -------------------------------------------------------------------

namespace kel::ycocg {

template <class Arith, int Pitch>
void innerForward8u(const Kel8u* src, Kel16s* y, Kel16s* co, Kel16s* cg, int width)
{
    for (int x = 0; x < width; ++x, src += Pitch) {
        Kel16s a, b, c;
        Arith::apply(src[0], src[1], src[2], a, b, c);
        storeSample(y + x, a);
        storeSample(co + x, b);
        storeSample(cg + x, c);
    }
}

template <class Arith, int Pitch>
void innerInverse8u(const Kel16s* y, const Kel16s* co, const Kel16s* cg, Kel8u* dst, int width, Kel8u alpha)
{
    for (int x = 0; x < width; ++x, dst += Pitch) {
        Arith::apply(loadSample(y + x), loadSample(co + x), loadSample(cg + x), dst[0], dst[1], dst[2]);
        if constexpr (Pitch == 4) dst[3] = alpha;
    }
}

template void innerForward8u<PlainForward, 3>(const Kel8u*, Kel16s*, Kel16s*, Kel16s*, int);
template void innerForward8u<PlainForward, 4>(const Kel8u*, Kel16s*, Kel16s*, Kel16s*, int);
template void innerForward8u<LiftingForward, 3>(const Kel8u*, Kel16s*, Kel16s*, Kel16s*, int);
template void innerForward8u<LiftingForward, 4>(const Kel8u*, Kel16s*, Kel16s*, Kel16s*, int);
template void innerInverse8u<PlainInverse, 3>(const Kel16s*, const Kel16s*, const Kel16s*, Kel8u*, int, Kel8u);
template void innerInverse8u<PlainInverse, 4>(const Kel16s*, const Kel16s*, const Kel16s*, Kel8u*, int, Kel8u);
template void innerInverse8u<LiftingInverse<false>, 3>(const Kel16s*, const Kel16s*, const Kel16s*, Kel8u*, int,
                                                       Kel8u);
template void innerInverse8u<LiftingInverse<false>, 4>(const Kel16s*, const Kel16s*, const Kel16s*, Kel8u*, int,
                                                       Kel8u);

} // namespace kel::ycocg

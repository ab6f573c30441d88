// Bit-depth reduction: the public functions of the 32 members and the entry
// they share, which tests the arguments and picks one of the engines.
#include "callframe.h"
#include "reduce.h"
#include "reduceengines.h"

using namespace kel;
using namespace kel::reduce;

// ---- the entry ---------------------------------------------------------------------------------------

namespace {

// Pointers, size, noise, levels, then the kind.  The dithers take their
// strides in samples of their own type; the engine without dither takes them
// in bytes.  An unknown kind, negative values included, writes nothing.
template <class T, int Code>
KelResult reduceBits(const typename T::Source* pSrc, int srcStep, typename T::Destination* pDst, int dstStep,
                     KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels, int maxLevels)
{
    if (anyNull(pSrc, pDst))                     return kelErrNullPointer;
    if (sizeBelow(roiSize, 1, 1))                return kelErrSize;
    if (noisePercent < 0 || noisePercent > 100)  return kelErrNoiseRange;
    if (levels < 2 || levels > maxLevels)        return kelErrDitherLevels;
    const int L = levels - 1, width = roiSize.width, height = roiSize.height;
    const int srcSamples = elementStride<typename T::Source>(srcStep);
    const int dstSamples = elementStride<typename T::Destination>(dstStep);
    switch (ditherKind) {
    case kelDitherOff:
        ownNo_PX<T>(pSrc, srcStep, pDst, dstStep, width, height, L, Code);
        return kelOk;
    case kelDitherOrdered:
        if (Code == kCodeC4) {
            return noisePercent != 0
                       ? ownReduceBits_bayer_noise_c4<T>(pSrc, srcSamples, pDst, dstSamples, width, height, L, noisePercent)
                       : ownReduceBits_bayer_c4<T>(pSrc, srcSamples, pDst, dstSamples, width, height, L);
        }
        return noisePercent != 0
                   ? ownReduceBits_bayer_noise<T>(pSrc, srcSamples, pDst, dstSamples, width, height, L, noisePercent, Code)
                   : ownReduceBits_bayer<T>(pSrc, srcSamples, pDst, dstSamples, width, height, L, Code);
    case kelDitherFloydSteinberg:
        return noisePercent != 0
                   ? ownReduceBits_fs_noise<T>(pSrc, srcSamples, pDst, dstSamples, width, height, L, noisePercent, Code)
                   : ownReduceBits_fs<T>(pSrc, srcSamples, pDst, dstSamples, width, height, L, Code);
    case kelDitherJarvisJudiceNinke:
    case kelDitherStucki:
        return noisePercent != 0 ? ownReduceBits_st_jj_noise<T>(pSrc, srcSamples, pDst, dstSamples, width, height, L,
                                                                noisePercent, Code, ditherKind)
                                 : ownReduceBits_st_jj<T>(pSrc, srcSamples, pDst, dstSamples, width, height, L, Code,
                                                          ditherKind);
    default:
        return kelOk;
    }
}

} // namespace

// ---- public functions --------------------------------------------------------------------------------

// clang-format off
#define KEL_REDUCE_MEMBERS(X) \
    X(keliReduceBits_8u_C1R,     T8u,     kCodeC1,  256)   X(keliReduceBits_8u_C3R,     T8u,     kCodeC3,  256) \
    X(keliReduceBits_8u_AC4R,    T8u,     kCodeAC4, 256)   X(keliReduceBits_8u_C4R,     T8u,     kCodeC4,  256) \
    X(keliReduceBits_16u_C1R,    T16u,    kCodeC1,  65536) X(keliReduceBits_16u_C3R,    T16u,    kCodeC3,  65536) \
    X(keliReduceBits_16u_AC4R,   T16u,    kCodeAC4, 65536) X(keliReduceBits_16u_C4R,    T16u,    kCodeC4,  65536) \
    X(keliReduceBits_16u8u_C1R,  T16u8u,  kCodeC1,  256)   X(keliReduceBits_16u8u_C3R,  T16u8u,  kCodeC3,  256) \
    X(keliReduceBits_16u8u_AC4R, T16u8u,  kCodeAC4, 256)   X(keliReduceBits_16u8u_C4R,  T16u8u,  kCodeC4,  256) \
    X(keliReduceBits_16s8u_C1R,  T16s8u,  kCodeC1,  256)   X(keliReduceBits_16s8u_C3R,  T16s8u,  kCodeC3,  256) \
    X(keliReduceBits_16s8u_AC4R, T16s8u,  kCodeAC4, 256)   X(keliReduceBits_16s8u_C4R,  T16s8u,  kCodeC4,  256) \
    X(keliReduceBits_16s_C1R,    T16s,    kCodeC1,  65536) X(keliReduceBits_16s_C3R,    T16s,    kCodeC3,  65536) \
    X(keliReduceBits_16s_AC4R,   T16s,    kCodeAC4, 65536) X(keliReduceBits_16s_C4R,    T16s,    kCodeC4,  65536) \
    X(keliReduceBits_32f8u_C1R,  T32f8u,  kCodeC1,  256)   X(keliReduceBits_32f8u_C3R,  T32f8u,  kCodeC3,  256) \
    X(keliReduceBits_32f8u_AC4R, T32f8u,  kCodeAC4, 256)   X(keliReduceBits_32f8u_C4R,  T32f8u,  kCodeC4,  256) \
    X(keliReduceBits_32f16u_C1R, T32f16u, kCodeC1,  256)   X(keliReduceBits_32f16u_C3R, T32f16u, kCodeC3,  256) \
    X(keliReduceBits_32f16u_AC4R,T32f16u, kCodeAC4, 256)   X(keliReduceBits_32f16u_C4R, T32f16u, kCodeC4,  256) \
    X(keliReduceBits_32f16s_C1R, T32f16s, kCodeC1,  256)   X(keliReduceBits_32f16s_C3R, T32f16s, kCodeC3,  256) \
    X(keliReduceBits_32f16s_AC4R,T32f16s, kCodeAC4, 256)   X(keliReduceBits_32f16s_C4R, T32f16s, kCodeC4,  256)
// clang-format on

#define KEL_REDUCE_MEMBER(NAME, TYPES, CODE, MAX_LEVELS)                                                          \
    KEL_API KelResult NAME(const TYPES::Source* pSrc, int srcStep, TYPES::Destination* pDst, int dstStep,         \
                           KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels)           \
    {                                                                                                              \
        return reduceBits<TYPES, CODE>(pSrc, srcStep, pDst, dstStep, roiSize, noisePercent, ditherKind, levels,    \
                                       MAX_LEVELS);                                                                \
    }

extern "C" {
KEL_REDUCE_MEMBERS(KEL_REDUCE_MEMBER)
}

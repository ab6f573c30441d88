/* kelcc.h - public interface of libkelccpx.so.5: 8-bit, 16-bit and float image
   colour conversions on rectangular regions.  Valid C99 and C++. */
#ifndef KELCC_H
#define KELCC_H

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32)
#  define KEL_API
#else
#  define KEL_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- sample types ------------------------------------------------------ */
typedef uint8_t  Kel8u;
typedef int8_t   Kel8s;
typedef uint16_t Kel16u;
typedef int16_t  Kel16s;
typedef int32_t  Kel32s;
typedef float    Kel32f;
typedef double   Kel64f;

/* ---- status ------------------------------------------------------------ */
/* 0 is success, negative values are errors (nothing was written), positive
   values are warnings (the work was done). */
typedef int32_t KelResult;
enum {
    kelOk              = 0,
    kelWarnNegativeMax = 1,   /* source maximum or mean negative or NaN; nothing done */
    kelWarnOddSize     = 35,  /* size not a whole number of chroma cells; whole cells done */
    kelErrBadArg       = -5,  /* enumerated argument outside its list */
    kelErrSize         = -6,  /* width, height or length below the minimum */
    kelErrNullPointer  = -8,  /* a pointer argument is null */
    kelErrNoMemory     = -9,  /* an allocation failed */
    kelErrStep         = -14, /* a row stride is below 1 */
    kelErrContext      = -17, /* a state record does not carry its tag */
    kelErrGammaRange   = -49, /* invalid range arguments of a gamma call */
    kelErrDitherLevels = -54, /* levels outside the member's limits */
    kelErrNoiseRange   = -55  /* noise outside 0..100 */
};

/* ---- records ----------------------------------------------------------- */
typedef struct KelImageSize {
    int32_t width;
    int32_t height;
} KelImageSize;

typedef struct KelImageRect {
    int32_t x;
    int32_t y;
    int32_t width;
    int32_t height;
} KelImageRect;

typedef struct KelVersionRecord {
    int32_t     major;
    int32_t     minor;
    int32_t     build;
    int32_t     revision;
    char        targetCpu[4];
    const char* name;
    const char* version;
    const char* buildDate;
} KelVersionRecord;

/* ---- enumerations (passed as plain 32-bit values) ---------------------- */
typedef int32_t KelDitherKind;
enum {
    kelDitherOff               = 0,
    kelDitherFloydSteinberg    = 1,
    kelDitherJarvisJudiceNinke = 2,
    kelDitherStucki            = 3,
    kelDitherOrdered           = 4
};

typedef int32_t KelBayerGrid;
enum {
    kelBayerGridBGGR = 0,
    kelBayerGridRGGB = 1,
    kelBayerGridGBRG = 2,
    kelBayerGridGRBG = 3
};

/* Which part of an interlaced frame a deinterlacing call covers (bits). */
enum {
    kelSliceTop    = 1,
    kelSliceMiddle = 4,
    kelSliceBottom = 16
};

/* ---- library version --------------------------------------------------- */
KEL_API const KelVersionRecord* kelccGetLibVersion(void);

/* ---- aligned memory ---------------------------------------------------- */
/* Blocks are 32-byte aligned and not cleared; len < 1 gives NULL.  Free them
   with kelsFree only.  The hooks are read at each call: a host may point
   i_malloc and i_free at its own allocator before it allocates anything. */
KEL_API extern void* (*i_malloc)(size_t size);
KEL_API extern void* (*i_calloc)(size_t count, size_t size);
KEL_API extern void* (*i_realloc)(void* ptr, size_t size);
KEL_API extern void (*i_free)(void* ptr);
KEL_API extern int i_version;
KEL_API extern int i_min_version;
KEL_API Kel16s* kelsMalloc_16s(int len);
KEL_API Kel16u* kelsMalloc_16u(int len);
KEL_API Kel32f* kelsMalloc_32f(int len);
KEL_API void kelsFree(void* ptr);

/* ---- uniform random generator ------------------------------------------ */
/* A record is made by InitAlloc and destroyed by Free of the same suffix, and
   belongs to one thread at a time; a record handed to a function of the other
   suffix gives kelErrContext and is left as it was.  Equal seeds and limits
   give equal streams, and a stream continues across calls. */
typedef struct KelRandUniformState_16s KelRandUniformState_16s;
typedef struct KelRandUniformState_32f KelRandUniformState_32f;
KEL_API KelResult kelsRandUniformInitAlloc_16s(KelRandUniformState_16s** ppState, Kel16s low, Kel16s high, unsigned int seed);
KEL_API KelResult kelsRandUniformInitAlloc_32f(KelRandUniformState_32f** ppState, Kel32f low, Kel32f high, unsigned int seed);
KEL_API KelResult kelsRandUniform_16s(Kel16s* pDst, int len, KelRandUniformState_16s* pState);
KEL_API KelResult kelsRandUniform_32f(Kel32f* pDst, int len, KelRandUniformState_32f* pState);
KEL_API KelResult kelsRandUniformFree_16s(KelRandUniformState_16s* pState);
KEL_API KelResult kelsRandUniformFree_32f(KelRandUniformState_32f* pState);

/* ---- small one-channel operations -------------------------------------- */
KEL_API KelResult keliCopy_8u_C1R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliSet_8u_C1R(Kel8u value, Kel8u* pDst, int dstStep, KelImageSize roiSize);
/* The largest sample; a NaN replaces nothing, but stays if it is the first sample. */
KEL_API KelResult keliMax_32f_C1R(const Kel32f* pSrc, int srcStep, KelImageSize roiSize, Kel32f* pMax);
/* accuracyHint is accepted and not read. */
KEL_API KelResult keliSum_32f_C1R(const Kel32f* pSrc, int srcStep, KelImageSize roiSize, Kel64f* pSum, int accuracyHint);
KEL_API KelResult keliMean_32f_C1R(const Kel32f* pSrc, int srcStep, KelImageSize roiSize, Kel64f* pMean, int accuracyHint);

/* ---- RGB <-> YCbCr, full resolution ------------------------------------ */
/* Studio range (Y 16..235, Cb/Cr 16..240).  Planar members take one stride
   for all three planes. */
KEL_API KelResult keliRGBToYCbCr_8u_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToYCbCr_8u_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToYCbCr_8u_P3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToRGB_8u_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToRGB_8u_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToRGB_8u_P3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToRGB_8u_P3C3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);

/* ---- BGR <-> CIE Lab (D65) --------------------------------------------- */
/* Blue-first pixels.  8u Lab: L 0..100 coded 0..255, a and b offset by 128.
   16u Lab: L coded 0..65535, (a + 128) * 255 and (b + 128) * 255.  Rows are
   shared among threads_omp_of_n_kel threads. */
KEL_API KelResult keliBGRToLab_8u_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliLabToBGR_8u_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliBGRToLab_8u16u_C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliLabToBGR_16u8u_C3R(const Kel16u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);

/* ---- BT.709 gamma ------------------------------------------------------ */
/* Forward: linear to coded; inverse: coded to linear.  AC4 leaves the fourth
   sample as it was.  32f members work over [rangeLow, rangeHigh]. */
KEL_API KelResult keliGammaFwd_8u_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliGammaFwd_8u_C3IR(Kel8u* pSrcDst, int srcDstStep, KelImageSize roiSize);
KEL_API KelResult keliGammaFwd_8u_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliGammaFwd_8u_AC4IR(Kel8u* pSrcDst, int srcDstStep, KelImageSize roiSize);
KEL_API KelResult keliGammaFwd_8u_P3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliGammaFwd_8u_IP3R(Kel8u* const pSrcDst[3], int srcDstStep, KelImageSize roiSize);
KEL_API KelResult keliGammaFwd_16u_C3R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliGammaFwd_16u_C3IR(Kel16u* pSrcDst, int srcDstStep, KelImageSize roiSize);
KEL_API KelResult keliGammaFwd_16u_AC4R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliGammaFwd_16u_AC4IR(Kel16u* pSrcDst, int srcDstStep, KelImageSize roiSize);
KEL_API KelResult keliGammaFwd_16u_P3R(const Kel16u* const pSrc[3], int srcStep, Kel16u* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliGammaFwd_16u_IP3R(Kel16u* const pSrcDst[3], int srcDstStep, KelImageSize roiSize);
KEL_API KelResult keliGammaFwd_32f_C3R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, KelImageSize roiSize, Kel32f rangeLow, Kel32f rangeHigh);
KEL_API KelResult keliGammaFwd_32f_C3IR(Kel32f* pSrcDst, int srcDstStep, KelImageSize roiSize, Kel32f rangeLow, Kel32f rangeHigh);
KEL_API KelResult keliGammaFwd_32f_AC4R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, KelImageSize roiSize, Kel32f rangeLow, Kel32f rangeHigh);
KEL_API KelResult keliGammaFwd_32f_AC4IR(Kel32f* pSrcDst, int srcDstStep, KelImageSize roiSize, Kel32f rangeLow, Kel32f rangeHigh);
KEL_API KelResult keliGammaFwd_32f_P3R(const Kel32f* const pSrc[3], int srcStep, Kel32f* const pDst[3], int dstStep, KelImageSize roiSize, Kel32f rangeLow, Kel32f rangeHigh);
KEL_API KelResult keliGammaFwd_32f_IP3R(Kel32f* const pSrcDst[3], int srcDstStep, KelImageSize roiSize, Kel32f rangeLow, Kel32f rangeHigh);
KEL_API KelResult keliGammaInv_8u_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliGammaInv_8u_C3IR(Kel8u* pSrcDst, int srcDstStep, KelImageSize roiSize);
KEL_API KelResult keliGammaInv_8u_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliGammaInv_8u_AC4IR(Kel8u* pSrcDst, int srcDstStep, KelImageSize roiSize);
KEL_API KelResult keliGammaInv_8u_P3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliGammaInv_8u_IP3R(Kel8u* const pSrcDst[3], int srcDstStep, KelImageSize roiSize);
KEL_API KelResult keliGammaInv_16u_C3R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliGammaInv_16u_C3IR(Kel16u* pSrcDst, int srcDstStep, KelImageSize roiSize);
KEL_API KelResult keliGammaInv_16u_AC4R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliGammaInv_16u_AC4IR(Kel16u* pSrcDst, int srcDstStep, KelImageSize roiSize);
KEL_API KelResult keliGammaInv_16u_P3R(const Kel16u* const pSrc[3], int srcStep, Kel16u* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliGammaInv_16u_IP3R(Kel16u* const pSrcDst[3], int srcDstStep, KelImageSize roiSize);
KEL_API KelResult keliGammaInv_32f_C3R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, KelImageSize roiSize, Kel32f rangeLow, Kel32f rangeHigh);
KEL_API KelResult keliGammaInv_32f_C3IR(Kel32f* pSrcDst, int srcDstStep, KelImageSize roiSize, Kel32f rangeLow, Kel32f rangeHigh);
KEL_API KelResult keliGammaInv_32f_AC4R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, KelImageSize roiSize, Kel32f rangeLow, Kel32f rangeHigh);
KEL_API KelResult keliGammaInv_32f_AC4IR(Kel32f* pSrcDst, int srcDstStep, KelImageSize roiSize, Kel32f rangeLow, Kel32f rangeHigh);
KEL_API KelResult keliGammaInv_32f_P3R(const Kel32f* const pSrc[3], int srcStep, Kel32f* const pDst[3], int dstStep, KelImageSize roiSize, Kel32f rangeLow, Kel32f rangeHigh);
KEL_API KelResult keliGammaInv_32f_IP3R(Kel32f* const pSrcDst[3], int srcDstStep, KelImageSize roiSize, Kel32f rangeLow, Kel32f rangeHigh);

/* ---- colour twist -------------------------------------------------------- */
/* Each pixel's three channels times a 3 x 4 float matrix (`twist`, 12 floats
   row-major, row i the weights of channels 0, 1, 2 and a constant for output
   channel i), summed
   in the 80-bit type; integer destinations saturate at their limits and
   round half to even between them (a NaN sum, from a matrix holding NaN or
   infinities of opposite signs, gives 0), 32f destinations take the sum as
   it is, with no clamp.  8s and 16s samples enter with their sign.  AC4
   leaves the fourth element as it was; in-place forms give the bytes of the
   out-of-place ones.  keliColorTwist_32f_C4R applies a 4 x 4 matrix (16
   floats) with no constant to all four channels.  Tests: pointers (twist and each plane
   included), size, steps (below 1: kelErrStep); steps in bytes. */
KEL_API KelResult keliColorTwist32f_8u_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist32f_8u_C3IR(Kel8u* pSrcDst, int srcDstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist32f_8u_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist32f_8u_AC4IR(Kel8u* pSrcDst, int srcDstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist32f_8u_P3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3], int dstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist32f_8u_IP3R(Kel8u* const pSrcDst[3], int srcDstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist32f_8s_C3R(const Kel8s* pSrc, int srcStep, Kel8s* pDst, int dstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist32f_8s_C3IR(Kel8s* pSrcDst, int srcDstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist32f_8s_AC4R(const Kel8s* pSrc, int srcStep, Kel8s* pDst, int dstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist32f_8s_AC4IR(Kel8s* pSrcDst, int srcDstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist32f_8s_P3R(const Kel8s* const pSrc[3], int srcStep, Kel8s* const pDst[3], int dstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist32f_8s_IP3R(Kel8s* const pSrcDst[3], int srcDstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist32f_16u_C3R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist32f_16u_C3IR(Kel16u* pSrcDst, int srcDstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist32f_16u_AC4R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist32f_16u_AC4IR(Kel16u* pSrcDst, int srcDstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist32f_16u_P3R(const Kel16u* const pSrc[3], int srcStep, Kel16u* const pDst[3], int dstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist32f_16u_IP3R(Kel16u* const pSrcDst[3], int srcDstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist32f_16s_C3R(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist32f_16s_C3IR(Kel16s* pSrcDst, int srcDstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist32f_16s_AC4R(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist32f_16s_AC4IR(Kel16s* pSrcDst, int srcDstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist32f_16s_P3R(const Kel16s* const pSrc[3], int srcStep, Kel16s* const pDst[3], int dstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist32f_16s_IP3R(Kel16s* const pSrcDst[3], int srcDstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist_32f_C3R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist_32f_C3IR(Kel32f* pSrcDst, int srcDstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist_32f_AC4R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist_32f_AC4IR(Kel32f* pSrcDst, int srcDstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist_32f_P3R(const Kel32f* const pSrc[3], int srcStep, Kel32f* const pDst[3], int dstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist_32f_IP3R(Kel32f* const pSrcDst[3], int srcDstStep, KelImageSize roiSize, const Kel32f* twist);
KEL_API KelResult keliColorTwist_32f_C4R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, KelImageSize roiSize, const Kel32f* twist);

/* ---- tone mapping --------------------------------------------------------- */
/* One float channel to 8 bits by one gain: Linear brings the maximum to 255,
   Mean brings the mean to 127.5 (outputs truncated).  A negative or NaN
   maximum (mean) gives kelWarnNegativeMax and writes nothing; a maximum
   (twice the mean) at or below the smallest normal float fills the
   destination with 0.  Statuses of the maximum or mean (pSrc, size) are
   passed on.  Negative and NaN samples give 0 (an infinite maximum or mean
   makes the gain 0).
   A null pDst gives kelErrNullPointer (nothing else about pDst or the
   strides is tested). */
KEL_API KelResult keliToneMapLinear_32f8u_C1R(const Kel32f* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliToneMapMean_32f8u_C1R(const Kel32f* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);

/* ---- YCoCg ---------------------------------------------------------------- */
/* Pixel-order B, G, R (8u, or signed 16-bit in SBGR names) to and from three
   planes Y, Co, Cg sharing one stride in bytes: the plain transform (lossy,
   with rounding terms) and the reversible lifting form (_Rev), which an
   8u16s pair undoes exactly.  16-bit results keep the low 16 bits of their
   sums (no saturation); 16s8u inverses clamp those to 0..255.  A C4 source's
   fourth channel is never read; a C4 destination's fourth channel is set to
   alpha.  Only null pointers are tested (planes included); a width or height
   below 1 writes nothing and returns kelOk. */
KEL_API KelResult keliBGRToYCoCg_8u16s_C3P3R(const Kel8u* pSrc, int srcStep, Kel16s* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliBGRToYCoCg_8u16s_C4P3R(const Kel8u* pSrc, int srcStep, Kel16s* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliSBGRToYCoCg_16s_C3P3R(const Kel16s* pSrc, int srcStep, Kel16s* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliSBGRToYCoCg_16s_C4P3R(const Kel16s* pSrc, int srcStep, Kel16s* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliSBGRToYCoCg_16s32s_C3P3R(const Kel16s* pSrc, int srcStep, Kel32s* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliSBGRToYCoCg_16s32s_C4P3R(const Kel16s* pSrc, int srcStep, Kel32s* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliBGRToYCoCg_Rev_8u16s_C3P3R(const Kel8u* pSrc, int srcStep, Kel16s* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliBGRToYCoCg_Rev_8u16s_C4P3R(const Kel8u* pSrc, int srcStep, Kel16s* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliSBGRToYCoCg_Rev_16s_C3P3R(const Kel16s* pSrc, int srcStep, Kel16s* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliSBGRToYCoCg_Rev_16s_C4P3R(const Kel16s* pSrc, int srcStep, Kel16s* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliSBGRToYCoCg_Rev_16s32s_C3P3R(const Kel16s* pSrc, int srcStep, Kel32s* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliSBGRToYCoCg_Rev_16s32s_C4P3R(const Kel16s* pSrc, int srcStep, Kel32s* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCoCgToBGR_16s8u_P3C3R(const Kel16s* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCoCgToBGR_16s8u_P3C4R(const Kel16s* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize, Kel8u alpha);
KEL_API KelResult keliYCoCgToSBGR_16s_P3C3R(const Kel16s* const pSrc[3], int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCoCgToSBGR_16s_P3C4R(const Kel16s* const pSrc[3], int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize, Kel16s alpha);
KEL_API KelResult keliYCoCgToSBGR_32s16s_P3C3R(const Kel32s* const pSrc[3], int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCoCgToSBGR_32s16s_P3C4R(const Kel32s* const pSrc[3], int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize, Kel16s alpha);
KEL_API KelResult keliYCoCgToBGR_Rev_16s8u_P3C3R(const Kel16s* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCoCgToBGR_Rev_16s8u_P3C4R(const Kel16s* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize, Kel8u alpha);
KEL_API KelResult keliYCoCgToSBGR_Rev_16s_P3C3R(const Kel16s* const pSrc[3], int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCoCgToSBGR_Rev_16s_P3C4R(const Kel16s* const pSrc[3], int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize, Kel16s alpha);
KEL_API KelResult keliYCoCgToSBGR_Rev_32s16s_P3C3R(const Kel32s* const pSrc[3], int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCoCgToSBGR_Rev_32s16s_P3C4R(const Kel32s* const pSrc[3], int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize, Kel16s alpha);

/* ---- HSV and HLS -------------------------------------------------------- */
/* Pixel-order RGB <-> HSV (8u, 16u) and RGB <-> HLS (8u, 16u, 16s, 32f).  Coded
   hue covers one turn over the type's range; 16s is the 16u coding moved by
   32768.  AC4 leaves the fourth element as it was.  Rows are shared among
   threads above 4096 pixels. */
KEL_API KelResult keliRGBToHSV_8u_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToHSV_8u_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToHSV_16u_C3R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToHSV_16u_AC4R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliHSVToRGB_8u_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliHSVToRGB_8u_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliHSVToRGB_16u_C3R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliHSVToRGB_16u_AC4R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToHLS_8u_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToHLS_8u_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToHLS_16u_C3R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToHLS_16u_AC4R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToHLS_16s_C3R(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToHLS_16s_AC4R(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToHLS_32f_C3R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToHLS_32f_AC4R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliHLSToRGB_8u_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliHLSToRGB_8u_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliHLSToRGB_16u_C3R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliHLSToRGB_16u_AC4R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliHLSToRGB_16s_C3R(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliHLSToRGB_16s_AC4R(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliHLSToRGB_32f_C3R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliHLSToRGB_32f_AC4R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, KelImageSize roiSize);
/* Blue-first 8u <-> HLS between planes and pixel order; alpha copied where both
   sides have it.  Strides are checked (before the size) and results truncate.
   keliBGRToHLS_8u_AC4R checks size before strides, rounds, and leaves alpha. */
KEL_API KelResult keliBGRToHLS_8u_AP4R(const Kel8u* const pSrc[4], int srcStep, Kel8u* const pDst[4], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliBGRToHLS_8u_AP4C4R(const Kel8u* const pSrc[4], int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliBGRToHLS_8u_AC4P4R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[4], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliBGRToHLS_8u_P3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliBGRToHLS_8u_P3C3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliBGRToHLS_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliHLSToBGR_8u_AP4R(const Kel8u* const pSrc[4], int srcStep, Kel8u* const pDst[4], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliHLSToBGR_8u_AP4C4R(const Kel8u* const pSrc[4], int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliHLSToBGR_8u_AC4P4R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[4], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliHLSToBGR_8u_P3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliHLSToBGR_8u_P3C3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliHLSToBGR_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliBGRToHLS_8u_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);

/* ---- CIE XYZ and LUV (D65) ------------------------------------------------ */
/* Pixel-order RGB <-> XYZ and RGB <-> LUV at 8u, 16u, 16s and 32f.  No gamma:
   R, G, B enter the matrix as they stand.  Integer LUV is coded over the type's
   range (L 0..100, U -134..220, V -140..122); 32f carries natural units.  16s
   is the 16u coding moved by 32768.  AC4 leaves the fourth element as it was.
   Rows are shared among threads above 4096 pixels.  Steps are not checked and
   are cut to whole samples, except in keliRGBToLUV_32f, which honours any byte
   step. */
KEL_API KelResult keliRGBToXYZ_8u_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToXYZ_8u_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToXYZ_16u_C3R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToXYZ_16u_AC4R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToXYZ_16s_C3R(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToXYZ_16s_AC4R(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToXYZ_32f_C3R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToXYZ_32f_AC4R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliXYZToRGB_8u_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliXYZToRGB_8u_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliXYZToRGB_16u_C3R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliXYZToRGB_16u_AC4R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliXYZToRGB_16s_C3R(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliXYZToRGB_16s_AC4R(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliXYZToRGB_32f_C3R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliXYZToRGB_32f_AC4R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToLUV_8u_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToLUV_8u_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToLUV_16u_C3R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToLUV_16u_AC4R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToLUV_16s_C3R(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToLUV_16s_AC4R(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToLUV_32f_C3R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToLUV_32f_AC4R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliLUVToRGB_8u_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliLUVToRGB_8u_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliLUVToRGB_16u_C3R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliLUVToRGB_16u_AC4R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliLUVToRGB_16s_C3R(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliLUVToRGB_16s_AC4R(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliLUVToRGB_32f_C3R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliLUVToRGB_32f_AC4R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, KelImageSize roiSize);

/* ---- YCC and gray ------------------------------------------------------------ */
/* Pixel-order RGB <-> YCC (luma scaled by 0.7132668, chroma on fixed offsets:
   156 and 137 at 8u, 40092 and 35209 at 16u) at 8u, 16u, 16s and 32f; AC4
   leaves the fourth element as it was; rows are shared among threads above
   4096 pixels.  Gray from three channels with the default weights (0.299,
   0.587, 0.114) or the caller's (three floats; null selects the defaults; at
   8u each is rounded once to 12 fraction bits); AC4C1 steps over alpha.  Gray
   runs on the calling thread.  Steps are not checked. */
KEL_API KelResult keliRGBToYCC_8u_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToYCC_8u_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToYCC_16u_C3R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToYCC_16u_AC4R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToYCC_16s_C3R(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToYCC_16s_AC4R(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToYCC_32f_C3R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToYCC_32f_AC4R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCCToRGB_8u_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCCToRGB_8u_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCCToRGB_16u_C3R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCCToRGB_16u_AC4R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCCToRGB_16s_C3R(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCCToRGB_16s_AC4R(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCCToRGB_32f_C3R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCCToRGB_32f_AC4R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToGray_8u_C3C1R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToGray_8u_AC4C1R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToGray_16u_C3C1R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToGray_16u_AC4C1R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToGray_16s_C3C1R(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToGray_16s_AC4C1R(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToGray_32f_C3C1R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToGray_32f_AC4C1R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliColorToGray_8u_C3C1R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize, const Kel32f weights[3]);
KEL_API KelResult keliColorToGray_8u_AC4C1R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize, const Kel32f weights[3]);
KEL_API KelResult keliColorToGray_16u_C3C1R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize, const Kel32f weights[3]);
KEL_API KelResult keliColorToGray_16u_AC4C1R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize, const Kel32f weights[3]);
KEL_API KelResult keliColorToGray_16s_C3C1R(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize, const Kel32f weights[3]);
KEL_API KelResult keliColorToGray_16s_AC4C1R(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize, const Kel32f weights[3]);
KEL_API KelResult keliColorToGray_32f_C3C1R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, KelImageSize roiSize, const Kel32f weights[3]);
KEL_API KelResult keliColorToGray_32f_AC4C1R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, KelImageSize roiSize, const Kel32f weights[3]);

/* ---- repacking among 4:2:2, 4:2:0, 4:1:1 and 16:2:0 ----------------------- */
/* Luma is copied; chroma copied, repeated, dropped or restacked.  Sizes the
   schemes cannot hold are rounded down silently.  P3 sides take an array of
   three strides; P2 sides a Y plane and a plane of Cb, Cr pairs. */
KEL_API KelResult keliYCbCr420ToYCbCr422_8u_P3R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliYCrCb420ToYCbCr422_8u_P3R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliYCbCr420ToYCbCr422_8u_P2P3R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep, Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToYCbCr420_8u_P3R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToYCbCr420_8u_C2P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliCbYCr422ToYCbCr420_8u_C2P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliYCrCb422ToYCbCr420_8u_C2P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToYCbCr420_8u_P3P2R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* pDstY, int dstYStep, Kel8u* pDstCbCr, int dstCbCrStep, KelImageSize roiSize);
KEL_API KelResult keliYCrCb422ToYCbCr422_8u_C2P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliCbYCr422ToYCbCr422_8u_C2P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliYCbCr422_8u_P3C2R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToYCrCb422_8u_P3C2R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr420_8u_P3P2R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* pDstY, int dstYStep, Kel8u* pDstCbCr, int dstCbCrStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr420_8u_P2P3R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep, Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliYCbCr411_8u_P3P2R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* pDstY, int dstYStep, Kel8u* pDstCbCr, int dstCbCrStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr411_8u_P2P3R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep, Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToYCbCr411_8u_P3R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToYCbCr411_8u_P3P2R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* pDstY, int dstYStep, Kel8u* pDstCbCr, int dstCbCrStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToYCbCr411_8u_C2P2R(const Kel8u* pSrc, int srcStep, Kel8u* pDstY, int dstYStep, Kel8u* pDstCbCr, int dstCbCrStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToYCbCr411_8u_C2P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliCbYCr422ToYCbCr411_8u_C2P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliYCrCb422ToYCbCr411_8u_C2P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliYCbCr411ToYCbCr422_8u_P3R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliYCbCr411ToYCrCb422_8u_P3R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliYCbCr411ToYCbCr422_8u_P3C2R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr411ToYCrCb422_8u_P3C2R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr411ToYCbCr422_8u_P2C2R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr411ToYCbCr422_8u_P2P3R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep, Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliYCbCr420ToYCbCr411_8u_P3P2R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* pDstY, int dstYStep, Kel8u* pDstCbCr, int dstCbCrStep, KelImageSize roiSize);
KEL_API KelResult keliYCrCb420ToYCbCr411_8u_P3P2R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* pDstY, int dstYStep, Kel8u* pDstCbCr, int dstCbCrStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr420ToYCbCr411_8u_P2P3R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep, Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliYCbCr411ToYCbCr420_8u_P3R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliYCbCr411ToYCbCr420_8u_P3P2R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* pDstY, int dstYStep, Kel8u* pDstCbCr, int dstCbCrStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr411ToYCbCr420_8u_P2P3R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep, Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliYCbCr411ToYCrCb420_8u_P2P3R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep, Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliYCbCr422_8u_C2P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToYCrCb422_8u_C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr420To411_8u_P3R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliYCbCr411To420_8u_P3R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliYCbCr420To1620_8u_P3R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliYCbCr1620To420_8u_P3R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);

/* NV12 (P2: a Y plane and a plane of Cb, Cr pairs), YV12 (P3: planes Y, Cr,
   Cb), YUY2 (C2: Y0 Cb Y1 Cr) and UYVY (C2: Cb Y0 Cr Y1).  4:2:0 to pixel order
   repeats each chroma row for two rows; pixel order to 4:2:0 takes the chroma
   of the even rows.  keliYCbCr420ToYCrCb420_8u_P2P3R writes planes Y, Cb, Cr
   (the pair's first byte to plane 1).  Odd sizes are rounded down silently. */
KEL_API KelResult keliYCbCr420ToYCbCr422_8u_P2C2R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr420ToCbYCr422_8u_P2C2R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr420ToYCrCb420_8u_P2P3R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep, Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliYCrCb420ToYCbCr420_8u_P3P2R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* pDstY, int dstYStep, Kel8u* pDstCbCr, int dstCbCrStep, KelImageSize roiSize);
KEL_API KelResult keliYCrCb420ToYCbCr422_8u_P3C2R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCrCb420ToCbYCr422_8u_P3C2R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToCbYCr422_8u_C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliCbYCr422ToYCbCr422_8u_C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToYCrCb420_8u_C2P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliCbYCr422ToYCrCb420_8u_C2P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToYCbCr420_8u_C2P2R(const Kel8u* pSrc, int srcStep, Kel8u* pDstY, int dstYStep, Kel8u* pDstCbCr, int dstCbCrStep, KelImageSize roiSize);
KEL_API KelResult keliCbYCr422ToYCbCr420_8u_C2P2R(const Kel8u* pSrc, int srcStep, Kel8u* pDstY, int dstYStep, Kel8u* pDstCbCr, int dstCbCrStep, KelImageSize roiSize);
/* 4:2:0 to 4:2:2 planes with a four-tap vertical chroma filter (-1 9 9 -1)/16;
   the height is rounded down to a multiple of 8 and must be 8 at least. */
KEL_API KelResult keliYCbCr420ToYCbCr422_Filter_8u_P3R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliYCrCb420ToYCbCr422_Filter_8u_P3R(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
KEL_API KelResult keliYCbCr420ToYCbCr422_Filter_8u_P2P3R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep, Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize);
/* Deinterlacing NV12 to YUY2 or to planes Y, Cb, Cr, with a vertical three-tap
   luma and two-tap chroma filter.  layout is kelSliceTop, kelSliceMiddle,
   kelSliceBottom, or all three bits for a whole frame; any other value writes
   nothing and returns kelOk.  A middle or bottom slice reads three luma rows
   and one chroma row above its region and writes the two rows above it that
   the slice before left; slices may be given in any order. */
KEL_API KelResult keliYCbCr420ToYCbCr422_Filter_8u_P2C2R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep, Kel8u* pDst, int dstStep, KelImageSize roiSize, int layout);
KEL_API KelResult keliYCbCr420ToYCrCb420_Filter_8u_P2P3R(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep, Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize, int layout);

/* ---- RGB <-> full-range YUV ---------------------------------------------- */
/* Full resolution: Y 0..255 truncated, U and V around 128.  The C3/AC4 inverse
   and the planar inverse use coefficient sets one apart in the last place. */
KEL_API KelResult keliRGBToYUV_8u_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToYUV_8u_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYUVToRGB_8u_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYUVToRGB_8u_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToYUV_8u_P3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToYUV_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYUVToRGB_8u_P3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYUVToRGB_8u_P3C3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
/* 4:2:2 and 4:2:0.  Sub-sampled planes take an array of three strides; the
   forms without R take none and derive them from the width.  4:2:0 members
   return kelWarnOddSize for odd sizes after converting the whole cells. */
KEL_API KelResult keliRGBToYUV422_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToYUV422_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], KelImageSize roiSize);
KEL_API KelResult keliRGBToYUV422_8u_P3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3], const int dstSteps[3], KelImageSize roiSize);
KEL_API KelResult keliRGBToYUV422_8u_C3P3(const Kel8u* pSrc, Kel8u* const pDst[3], KelImageSize imgSize);
KEL_API KelResult keliRGBToYUV422_8u_P3(const Kel8u* const pSrc[3], Kel8u* const pDst[3], KelImageSize imgSize);
KEL_API KelResult keliYUV422ToRGB_8u_C2C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYUV422ToRGB_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYUV422ToRGB_8u_P3AC4R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYUV422ToRGB_8u_P3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYUV422ToRGB_8u_P3C3(const Kel8u* const pSrc[3], Kel8u* pDst, KelImageSize imgSize);
KEL_API KelResult keliYUV422ToRGB_8u_P3(const Kel8u* const pSrc[3], Kel8u* const pDst[3], KelImageSize imgSize);
KEL_API KelResult keliRGBToYUV420_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], KelImageSize roiSize);
KEL_API KelResult keliRGBToYUV420_8u_P3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* const pDst[3], const int dstSteps[3], KelImageSize roiSize);
KEL_API KelResult keliRGBToYUV420_8u_C3P3(const Kel8u* pSrc, Kel8u* const pDst[3], KelImageSize imgSize);
KEL_API KelResult keliRGBToYUV420_8u_P3(const Kel8u* const pSrc[3], Kel8u* const pDst[3], KelImageSize imgSize);
KEL_API KelResult keliYUV420ToRGB_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYUV420ToRGB_8u_P3AC4R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYUV420ToRGB_8u_P3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYUV420ToRGB_8u_P3C3(const Kel8u* const pSrc[3], Kel8u* pDst, KelImageSize imgSize);
KEL_API KelResult keliYUV420ToRGB_8u_P3(const Kel8u* const pSrc[3], Kel8u* const pDst[3], KelImageSize imgSize);
KEL_API KelResult keliYUV420ToBGR_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, KelImageSize roiSize);

/* ---- RGB and BGR to sub-sampled YCbCr, YCrCb and CbYCr --------------------- */
/* 4:2:2 pixel order (C2) or planes, 4:2:0 and 4:1:1 planes with an array of
   three strides.  4:2:0 and 4:1:1 members warn of sizes that leave pixels out. */
KEL_API KelResult keliRGBToYCbCr422_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToYCrCb422_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliBGRToYCbCr422_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliBGRToYCbCr422_8u_AC4C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToCbYCr422_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToCbYCr422Gamma_8u_C3C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliBGRToCbYCr422_8u_AC4C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToYCbCr422_8u_P3C2R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToYCrCb422_8u_P3C2R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGBToYCbCr420_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], KelImageSize roiSize);
KEL_API KelResult keliBGRToYCbCr422_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], KelImageSize roiSize);
KEL_API KelResult keliBGRToYCbCr422_8u_AC4P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], KelImageSize roiSize);
KEL_API KelResult keliBGRToYCbCr420_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], KelImageSize roiSize);
KEL_API KelResult keliBGRToYCbCr420_8u_AC4P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], KelImageSize roiSize);
KEL_API KelResult keliBGRToYCrCb420_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], KelImageSize roiSize);
KEL_API KelResult keliBGRToYCrCb420_8u_AC4P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], KelImageSize roiSize);
KEL_API KelResult keliBGRToYCbCr411_8u_C3P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], KelImageSize roiSize);
KEL_API KelResult keliBGRToYCbCr411_8u_AC4P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], KelImageSize roiSize);

/* ---- sub-sampled YCbCr, YCrCb and CbYCr back to RGB and BGR --------------- */
/* Each member has its own coefficient set.  C4 destinations are B, G, R and
   the given alpha. */
KEL_API KelResult keliYCbCr422ToRGB_8u_C2C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCrCb422ToRGB_8u_C2C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToBGR_8u_C2C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliCbYCr422ToRGB_8u_C2C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToBGR_8u_C2C4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize, Kel8u alpha);
KEL_API KelResult keliCbYCr422ToBGR_8u_C2C4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize, Kel8u alpha);
KEL_API KelResult keliYCbCr422ToRGB_8u_C2P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCrCb422ToRGB_8u_C2P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToRGB_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr420ToRGB_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr420ToBGR_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr411ToBGR_8u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCrCb420ToBGR_Filter_8u_P3C4R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, KelImageSize roiSize, Kel8u alpha);
KEL_API KelResult keliYCbCr411ToBGR_8u_P3C4R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel8u* pDst, int dstStep, KelImageSize roiSize, Kel8u alpha);
KEL_API KelResult keliYCbCrToBGR_8u_P3C3R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToBGR_8u_P3C4R(const Kel8u* const pSrc[3], int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize, Kel8u alpha);

/* ---- YCbCr and YUV to packed 16-bit RGB ---------------------------------- */
/* One 16-bit word a pixel in native byte order, fields named from bit 0 up:
   RGB565 is R in bits 0-4, G in 5-10, B in 11-15; BGR565 the other way round;
   555 and 444 leave the bits above the fields 0.  Sources: 4:4:4 planes with
   one stride, 4:2:2 and 4:2:0 planes with an array of three strides, 4:4:4
   pixel order Y, Cb, Cr (C3R) and 4:2:2 pixel order Y0, Cb, Y1, Cr (C2C3R).
   dstStep is in bytes (an odd one loses its low bit).  Odd sizes are
   converted in full, with no warning: an odd last column or row takes the
   chroma sample of the pair it starts; in 4:2:2 pixel order the last pixel of
   an odd width takes Cr from the pair to its left, and a width of 1 uses its
   Cb byte for both.  The YUV 4:2:0 members convert a single row or column too. */
KEL_API KelResult keliYCbCr420ToBGR444_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr420ToBGR555_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr420ToBGR565_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr420ToRGB444_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr420ToRGB555_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr420ToRGB565_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToBGR444_8u16u_C2C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToBGR444_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToBGR555_8u16u_C2C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToBGR555_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToBGR565_8u16u_C2C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToBGR565_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToRGB444_8u16u_C2C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToRGB444_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToRGB555_8u16u_C2C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToRGB555_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToRGB565_8u16u_C2C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToRGB565_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToBGR444_8u16u_C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToBGR444_8u16u_P3C3R(const Kel8u* const pSrc[3], int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToBGR555_8u16u_C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToBGR555_8u16u_P3C3R(const Kel8u* const pSrc[3], int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToBGR565_8u16u_C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToBGR565_8u16u_P3C3R(const Kel8u* const pSrc[3], int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToRGB444_8u16u_C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToRGB444_8u16u_P3C3R(const Kel8u* const pSrc[3], int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToRGB555_8u16u_C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToRGB555_8u16u_P3C3R(const Kel8u* const pSrc[3], int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToRGB565_8u16u_C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToRGB565_8u16u_P3C3R(const Kel8u* const pSrc[3], int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYUV420ToBGR444_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYUV420ToBGR555_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYUV420ToBGR565_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYUV420ToRGB444_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYUV420ToRGB555_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYUV420ToRGB565_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
/* With a 4 x 4 ordered dither, anchored at the region's top-left pixel (a
   region split at a row that is not a multiple of 4 gets another pattern).
   Every member uses the coarse 13-bit arithmetic, so the C3R and C2C3R
   members can start from other colour values than their undithered twins;
   in 4:2:2 pixel order the last pixel of an odd width uses its Cb byte for
   both chroma values. */
KEL_API KelResult keliYCbCr420ToBGR444Dither_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr420ToBGR555Dither_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr420ToBGR565Dither_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr420ToRGB444Dither_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr420ToRGB555Dither_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr420ToRGB565Dither_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToBGR444Dither_8u16u_C2C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToBGR444Dither_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToBGR555Dither_8u16u_C2C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToBGR555Dither_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToBGR565Dither_8u16u_C2C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToBGR565Dither_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToRGB444Dither_8u16u_C2C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToRGB444Dither_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToRGB555Dither_8u16u_C2C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToRGB555Dither_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToRGB565Dither_8u16u_C2C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr422ToRGB565Dither_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToBGR444Dither_8u16u_C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToBGR444Dither_8u16u_P3C3R(const Kel8u* const pSrc[3], int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToBGR555Dither_8u16u_C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToBGR555Dither_8u16u_P3C3R(const Kel8u* const pSrc[3], int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToBGR565Dither_8u16u_C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToBGR565Dither_8u16u_P3C3R(const Kel8u* const pSrc[3], int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToRGB444Dither_8u16u_C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToRGB444Dither_8u16u_P3C3R(const Kel8u* const pSrc[3], int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToRGB555Dither_8u16u_C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToRGB555Dither_8u16u_P3C3R(const Kel8u* const pSrc[3], int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToRGB565Dither_8u16u_C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCrToRGB565Dither_8u16u_P3C3R(const Kel8u* const pSrc[3], int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYUV420ToBGR444Dither_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYUV420ToBGR555Dither_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYUV420ToBGR565Dither_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYUV420ToRGB444Dither_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYUV420ToRGB555Dither_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYUV420ToRGB565Dither_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);

/* ---- packed 16-bit RGB to and from 8-bit RGB, YCbCr and YUV --------------- */
/* A 565 or 555 field is widened to 8 bits by a left shift alone: 31 becomes
   248 and 63 becomes 252.  Packing keeps the top bits of each byte, the first
   byte of a pixel in bits 0-4.  The widening and packing members test their
   strides (kelErrStep below 1); the 16-bit side's stride loses an odd low bit. */
KEL_API KelResult keliRGBToRGB565_8u16u_C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliBGRToBGR565_8u16u_C3R(const Kel8u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliRGB565ToRGB_16u8u_C3R(const Kel16u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliBGR565ToBGR_16u8u_C3R(const Kel16u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
/* Packed BGR (blue in bits 0-4) to studio-range YCbCr and full-range YUV, the
   arithmetic of the 8-bit BGR members on the widened fields.  Source rows are
   srcStep bytes apart; in the 4:2:0 and YUV members the second row of a pair
   lies srcStep rounded down to even bytes below the first.  Odd sizes: 4:1:1
   leaves the last width % 4 pixels unwritten (kelWarnOddSize); 4:2:2 planes
   give the last pixel of an odd width its Y alone, 4:2:2 pixel order its Y
   and a Cb of its own; YCbCr and YCrCb 4:2:0 give an odd last column and row
   their Y and no chroma; YUV 4:2:0 writes nothing of them (kelWarnOddSize). */
KEL_API KelResult keliBGR565ToYCbCr422_16u8u_C3C2R(const Kel16u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliBGR555ToYCbCr422_16u8u_C3C2R(const Kel16u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliBGR565ToYCbCr422_16u8u_C3P3R(const Kel16u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], KelImageSize roiSize);
KEL_API KelResult keliBGR555ToYCbCr422_16u8u_C3P3R(const Kel16u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], KelImageSize roiSize);
KEL_API KelResult keliBGR565ToYCbCr420_16u8u_C3P3R(const Kel16u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], KelImageSize roiSize);
KEL_API KelResult keliBGR555ToYCbCr420_16u8u_C3P3R(const Kel16u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], KelImageSize roiSize);
KEL_API KelResult keliBGR565ToYCrCb420_16u8u_C3P3R(const Kel16u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], KelImageSize roiSize);
KEL_API KelResult keliBGR555ToYCrCb420_16u8u_C3P3R(const Kel16u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], KelImageSize roiSize);
KEL_API KelResult keliBGR565ToYCbCr411_16u8u_C3P3R(const Kel16u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], KelImageSize roiSize);
KEL_API KelResult keliBGR555ToYCbCr411_16u8u_C3P3R(const Kel16u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], KelImageSize roiSize);
KEL_API KelResult keliBGR565ToYUV420_16u8u_C3P3R(const Kel16u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], KelImageSize roiSize);
KEL_API KelResult keliBGR555ToYUV420_16u8u_C3P3R(const Kel16u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstSteps[3], KelImageSize roiSize);
/* 4:1:1 planes (chroma planes as tall as luma) to packed BGR, rounded.  The
   last width % 4 pixels of a row take the chroma of the last whole group of
   four (kelWarnOddSize).  dstStep is in bytes, used as it is. */
KEL_API KelResult keliYCbCr411ToBGR565_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);
KEL_API KelResult keliYCbCr411ToBGR555_8u16u_P3C3R(const Kel8u* const pSrc[3], const int srcSteps[3], Kel16u* pDst, int dstStep, KelImageSize roiSize);

/* ---- bit-depth reduction ------------------------------------------------- */
/* Requantises to `levels` evenly spaced levels (2..256; 2..65536 for 16u and
   16s), with no dither, an ordered 4 x 4 dither anchored at the region's
   first pixel, or error diffusion (Floyd-Steinberg, Jarvis-Judice-Ninke,
   Stucki), plain (noisePercent 0) or with a deterministic noise of
   noisePercent (0..100).  Tests: pointers, size, noise, levels; a ditherKind
   outside 0..4 returns kelOk and writes nothing.  16s samples are taken as
   the sample + 32768.  AC4 leaves the fourth sample alone; C4 treats it as a
   colour.  Float sources are meant to lie in 0..1: outside it the result is
   saturated to the destination's range (above 1 the top, below 0 the bottom,
   NaN the bottom; but for the ordered noise form, whose threshold may lift a
   value up to one level width below 0 by a level).  Error diffusion spreads
   no error from a NaN sample.  Error diffusion processes the channels in
   sections of their own when threads_omp_of_n_kel allows: one channel runs
   on the calling thread; with three or four channels the output of the later
   channels depends on the number of threads, as each section carries its
   error from one of its channels to the next.  The noise and error-diffusion
   forms return kelErrNoMemory, with nothing written, when an allocation
   fails. */
KEL_API KelResult keliReduceBits_8u_C1R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_8u_C3R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_8u_AC4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_8u_C4R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_16u_C1R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_16u_C3R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_16u_AC4R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_16u_C4R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_16u8u_C1R(const Kel16u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_16u8u_C3R(const Kel16u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_16u8u_AC4R(const Kel16u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_16u8u_C4R(const Kel16u* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_16s8u_C1R(const Kel16s* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_16s8u_C3R(const Kel16s* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_16s8u_AC4R(const Kel16s* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_16s8u_C4R(const Kel16s* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_16s_C1R(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_16s_C3R(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_16s_AC4R(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_16s_C4R(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_32f8u_C1R(const Kel32f* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_32f8u_C3R(const Kel32f* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_32f8u_AC4R(const Kel32f* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_32f8u_C4R(const Kel32f* pSrc, int srcStep, Kel8u* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_32f16u_C1R(const Kel32f* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_32f16u_C3R(const Kel32f* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_32f16u_AC4R(const Kel32f* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_32f16u_C4R(const Kel32f* pSrc, int srcStep, Kel16u* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_32f16s_C1R(const Kel32f* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_32f16s_C3R(const Kel32f* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_32f16s_AC4R(const Kel32f* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);
KEL_API KelResult keliReduceBits_32f16s_C4R(const Kel32f* pSrc, int srcStep, Kel16s* pDst, int dstStep, KelImageSize roiSize, int noisePercent, KelDitherKind ditherKind, int levels);

/* ---- Bayer demosaic ------------------------------------------------------ */
/* One sample a pixel behind a 2 x 2 colour filter tile anchored at the
   frame's pixel (0,0) (`grid` names the tile) to R, G, B pixels.  pSrc is the
   frame's pixel (0,0), srcSize the whole frame, srcRoi the rectangle of it to
   convert; the destination's first pixel is frame position (srcRoi.x,
   srcRoi.y).  Bilinear with reflection in the two outermost rows and columns
   of the frame; inside them green at red and blue sites follows the smaller
   of the vertical and horizontal changes.  Tests: pointers, frame size (at
   least 2 x 2), grid.  The region is cut to the frame: only destination
   pixels whose frame position lies inside the frame are written, so a region
   reaching past any side of it (negative coordinates included) writes its
   part inside the frame, at the same places in the destination, and a
   region with no pixel inside the frame (or a width or height below 1)
   writes nothing; all return kelOk.  Nothing is read outside the frame.
   Strides in bytes (16u: rounded down to whole samples). */
KEL_API KelResult keliCFAToRGB_8u_C1C3R(const Kel8u* pSrc, KelImageRect srcRoi, KelImageSize srcSize, int srcStep, Kel8u* pDst, int dstStep, KelBayerGrid grid);
KEL_API KelResult keliCFAToRGB_16u_C1C3R(const Kel16u* pSrc, KelImageRect srcRoi, KelImageSize srcSize, int srcStep, Kel16u* pDst, int dstStep, KelBayerGrid grid);

#ifdef __cplusplus
}
#endif

#endif /* KELCC_H */

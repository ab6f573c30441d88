// Gray from three channels, with the default weights or the caller's, at 8u,
// 16u, 16s and 32f, from C3 and AC4 pixels (alpha stepped over).  Serial: no
// threads of its own.
#include <cstddef>
#include <cstdint>

#include "callframe.h"
#include "graysimd.h"
#include "hueconv.h"
#include "kelcc.h"

using namespace kel;

// Row loops and kernels, one per sample type; the weights pointer is the
// caller's, or null for the defaults.
void myRGBToGray_8u_C3C1R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height,
                          const Kel32f* weights, int pixelStride);
void myRGBToGray_16u_C3C1R(const Kel16u* pSrc, int srcStep, Kel16u* pDst, int dstStep, int width, int height,
                           const Kel32f* weights, int pixelStride);
void myRGBToGray_16s_C3C1R(const Kel16s* pSrc, int srcStep, Kel16s* pDst, int dstStep, int width, int height,
                           const Kel32f* weights, int pixelStride);
void myRGBToGray_32f_C3C1R(const Kel32f* pSrc, int srcStep, Kel32f* pDst, int dstStep, int width, int height,
                           const Kel32f* weights, int pixelStride);
void innerRGBToGray_8u_C3C1R(const Kel8u* src, Kel8u* dst, int width, const std::int32_t* w, int pixelStride);
void innerRGBToGray_16u_C3C1R(const Kel16u* src, Kel16u* dst, int width, const Kel32f* w, int pixelStride);
void innerRGBToGray_16s_C3C1R(const Kel16s* src, Kel16s* dst, int width, const Kel32f* w, int pixelStride);
void innerRGBToGray_32f_C3C1R(const Kel32f* src, Kel32f* dst, int width, const Kel32f* w, int pixelStride);

// ---- public functions -----------------------------------------------------------

// Pointers, then size; strides are not tested and are cut to whole samples;
// the weights are never tested (null selects the defaults).
#define KEL_GRAY_ONE(NAME, LAYER, T, PIXEL_STRIDE, WEIGHTS_PARAM, WEIGHTS)                                    \
    KEL_API KelResult NAME(const T* pSrc, int srcStep, T* pDst, int dstStep, KelImageSize roiSize WEIGHTS_PARAM) \
    {                                                                                                         \
        if (const KelResult bad = testPlanesAfterSize(roiSize, 1, 1, pSrc, pDst)) return bad;                 \
        LAYER(pSrc, elementStride<T>(srcStep), pDst, elementStride<T>(dstStep), roiSize.width, roiSize.height, \
              WEIGHTS, PIXEL_STRIDE);                                                                         \
        return kelOk;                                                                                         \
    }
#define KEL_GRAY_TYPE(TAG, T)                                                                                          \
    KEL_GRAY_ONE(keliRGBToGray_##TAG##_C3C1R, myRGBToGray_##TAG##_C3C1R, T, 3, , nullptr)                              \
    KEL_GRAY_ONE(keliRGBToGray_##TAG##_AC4C1R, myRGBToGray_##TAG##_C3C1R, T, 4, , nullptr)                             \
    KEL_GRAY_ONE(keliColorToGray_##TAG##_C3C1R, myRGBToGray_##TAG##_C3C1R, T, 3, KEL_GRAY_COMMA const Kel32f weights[3], weights) \
    KEL_GRAY_ONE(keliColorToGray_##TAG##_AC4C1R, myRGBToGray_##TAG##_C3C1R, T, 4, KEL_GRAY_COMMA const Kel32f weights[3], weights)
#define KEL_GRAY_COMMA ,

extern "C" {
KEL_GRAY_TYPE(8u, Kel8u)
KEL_GRAY_TYPE(16u, Kel16u)
KEL_GRAY_TYPE(16s, Kel16s)
KEL_GRAY_TYPE(32f, Kel32f)
} // extern "C"

#undef KEL_GRAY_TYPE
#undef KEL_GRAY_ONE
#undef KEL_GRAY_COMMA

// ---- row loops ------------------------------------------------------------------

namespace {

constexpr Kel32f kDefaultWeights[3] = {0.299f, 0.587f, 0.114f};

template <typename T, typename W, typename Kernel>
void grayRows(const T* pSrc, int srcStep, T* pDst, int dstStep, int width, int height, const W* w, int pixelStride,
              Kernel kernel)
{
    for (int y = 0; y < height; ++y)
        kernel(pSrc + static_cast<std::ptrdiff_t>(srcStep) * y, pDst + static_cast<std::ptrdiff_t>(dstStep) * y, width,
               w, pixelStride);
}

} // namespace

// The 8-bit weights in 12 fraction bits, rounded once a call with a half
// added; a weight whose product leaves the 32-bit range saturates (NaN: 0).
void myRGBToGray_8u_C3C1R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep, int width, int height,
                          const Kel32f* weights, int pixelStride)
{
    std::int32_t w[3] = {1225, 2404, 467};
    if (weights != nullptr)
        for (int i = 0; i < 3; ++i) w[i] = truncate32(static_cast<long double>(weights[i]) * 4096 + 0.5L);
    const gray::Row8u fast = gray::chooseRow8u(w, pixelStride);
    if (fast != nullptr) {
        for (int y = 0; y < height; ++y) fast(rowAt(pSrc, srcStep, y), rowAt(pDst, dstStep, y), width, w);
        return;
    }
    grayRows(pSrc, srcStep, pDst, dstStep, width, height, w, pixelStride, innerRGBToGray_8u_C3C1R);
}

#define KEL_GRAY_LAYER(TAG, T)                                                                                  \
    void myRGBToGray_##TAG##_C3C1R(const T* pSrc, int srcStep, T* pDst, int dstStep, int width, int height,     \
                                   const Kel32f* weights, int pixelStride)                                      \
    {                                                                                                           \
        grayRows(pSrc, srcStep, pDst, dstStep, width, height, weights != nullptr ? weights : kDefaultWeights,   \
                 pixelStride, innerRGBToGray_##TAG##_C3C1R);                                                    \
    }
KEL_GRAY_LAYER(16u, Kel16u)
KEL_GRAY_LAYER(16s, Kel16s)
KEL_GRAY_LAYER(32f, Kel32f)
#undef KEL_GRAY_LAYER

// ---- kernels ----------------------------------------------------------------------

// The sum in 32 bits, wrapping, shifted logically, the low 8 bits stored.
void innerRGBToGray_8u_C3C1R(const Kel8u* src, Kel8u* dst, int width, const std::int32_t* w, int pixelStride)
{
    const std::uint32_t w0 = static_cast<std::uint32_t>(w[0]), w1 = static_cast<std::uint32_t>(w[1]),
                        w2 = static_cast<std::uint32_t>(w[2]);
    for (int x = 0; x < width; ++x, src += pixelStride)
        dst[x] = static_cast<Kel8u>((w0 * src[0] + w1 * src[1] + w2 * src[2]) >> 12);
}

namespace {

// The truncated sum's low 16 bits; a sum beyond 2^63 or NaN gives 0 (the
// 16-bit sums of finite weights of ordinary size never come near).
std::uint16_t low16(long double x)
{
    if (!(x > -9.2e18L && x < 9.2e18L)) return 0;
    return static_cast<std::uint16_t>(static_cast<std::uint64_t>(static_cast<std::int64_t>(x)));
}

template <typename T>
void gray16(const T* src, T* dst, int width, const Kel32f* w, int pixelStride)
{
    constexpr int offset = hue::Coding<T>::offset;
    const long double w0 = w[0], w1 = w[1], w2 = w[2];
    for (int x = 0; x < width; ++x, src += pixelStride) {
        const long double sum = (static_cast<long double>(src[0] + offset) * w0 + static_cast<long double>(src[1] + offset) * w1) +
                                static_cast<long double>(src[2] + offset) * w2;
        dst[x] = static_cast<T>(static_cast<std::uint16_t>(low16(sum) - offset));
    }
}

} // namespace

void innerRGBToGray_16u_C3C1R(const Kel16u* src, Kel16u* dst, int width, const Kel32f* w, int pixelStride)
{
    gray16(src, dst, width, w, pixelStride);
}

void innerRGBToGray_16s_C3C1R(const Kel16s* src, Kel16s* dst, int width, const Kel32f* w, int pixelStride)
{
    gray16(src, dst, width, w, pixelStride);
}

void innerRGBToGray_32f_C3C1R(const Kel32f* src, Kel32f* dst, int width, const Kel32f* w, int pixelStride)
{
    const long double w0 = w[0], w1 = w[1], w2 = w[2];
    for (int x = 0; x < width; ++x, src += pixelStride)
        dst[x] = static_cast<Kel32f>((w0 * src[0] + w1 * src[1]) + w2 * src[2]);
}

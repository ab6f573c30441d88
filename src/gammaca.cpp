// The BT.709 transfer curve, forward (linear to coded) and inverse, on 8-bit,
// 16-bit and float images in C3, AC4 and planar layouts, in place or not.
#include <cmath>
#include <cstdint>
#include <type_traits>

#include "alloc.h"
#include "callframe.h"
#include "fallbacks.h"
#include "gamma.h"
#include "gammasimd.h"

using namespace kel;
using namespace kel::gamma;

void owniGammaInitFwd16u(Kel16u* table);
void owniGammaInitInv16u(Kel16u* table);

namespace {

using Ext = long double;

enum class Direction { Fwd, Inv };
enum class Walk { C3, AC4, P3 };

template <typename T, Walk W>
using SrcArg = std::conditional_t<W == Walk::P3, const T* const*, const T*>;
template <typename T, Walk W>
using DstArg = std::conditional_t<W == Walk::P3, T* const*, T*>;

// Defined below, in the order a call meets them.
template <typename Src, typename Dst>
KelResult testGammaArguments(Src src, int srcStep, Dst dst, int dstStep, KelImageSize roi);
bool emptyRange(Kel32f rangeLow, Kel32f rangeHigh);

template <typename T, Direction D, Walk W>
KelResult gammaRows(SrcArg<T, W> src, int srcStep, DstArg<T, W> dst, int dstStep, KelImageSize roi);
template <Direction D, Walk W>
void gammaRows32f(SrcArg<Kel32f, W> src, int srcStep, DstArg<Kel32f, W> dst, int dstStep, KelImageSize roi,
                  Kel32f rangeLow, Kel32f rangeHigh);
template <typename T, Walk W, typename Run>
void gammaImage(SrcArg<T, W> src, int srcStep, DstArg<T, W> dst, int dstStep, int width, int height, const Run& run);

// Every sample of a contiguous run through op.
template <typename T, typename Op>
auto eachSample(const Op& op)
{
    return [op](const T* s, T* d, std::int64_t count) {
        for (std::int64_t i = 0; i < count; ++i) d[i] = op(s[i]);
    };
}

template <Direction D>
void fillTable16u(Kel16u* table);

} // namespace

// ---- public functions ----------------------------------------------------------

// Every member once.  Apart(name, ...) takes a source and a destination,
// InPlace(name, ...) one image that is read and written; the 32f members also
// take the range of their samples (ApartRange, InPlaceRange).
#define KEL_GAMMA_MEMBERS(Apart, InPlace, ApartRange, InPlaceRange) \
    Apart(keliGammaFwd_8u_C3R,           Kel8u,  Fwd, C3)  \
    InPlace(keliGammaFwd_8u_C3IR,        Kel8u,  Fwd, C3)  \
    Apart(keliGammaFwd_8u_AC4R,          Kel8u,  Fwd, AC4) \
    InPlace(keliGammaFwd_8u_AC4IR,       Kel8u,  Fwd, AC4) \
    Apart(keliGammaFwd_8u_P3R,           Kel8u,  Fwd, P3)  \
    InPlace(keliGammaFwd_8u_IP3R,        Kel8u,  Fwd, P3)  \
    Apart(keliGammaInv_8u_C3R,           Kel8u,  Inv, C3)  \
    InPlace(keliGammaInv_8u_C3IR,        Kel8u,  Inv, C3)  \
    Apart(keliGammaInv_8u_AC4R,          Kel8u,  Inv, AC4) \
    InPlace(keliGammaInv_8u_AC4IR,       Kel8u,  Inv, AC4) \
    Apart(keliGammaInv_8u_P3R,           Kel8u,  Inv, P3)  \
    InPlace(keliGammaInv_8u_IP3R,        Kel8u,  Inv, P3)  \
    Apart(keliGammaFwd_16u_C3R,          Kel16u, Fwd, C3)  \
    InPlace(keliGammaFwd_16u_C3IR,       Kel16u, Fwd, C3)  \
    Apart(keliGammaFwd_16u_AC4R,         Kel16u, Fwd, AC4) \
    InPlace(keliGammaFwd_16u_AC4IR,      Kel16u, Fwd, AC4) \
    Apart(keliGammaFwd_16u_P3R,          Kel16u, Fwd, P3)  \
    InPlace(keliGammaFwd_16u_IP3R,       Kel16u, Fwd, P3)  \
    Apart(keliGammaInv_16u_C3R,          Kel16u, Inv, C3)  \
    InPlace(keliGammaInv_16u_C3IR,       Kel16u, Inv, C3)  \
    Apart(keliGammaInv_16u_AC4R,         Kel16u, Inv, AC4) \
    InPlace(keliGammaInv_16u_AC4IR,      Kel16u, Inv, AC4) \
    Apart(keliGammaInv_16u_P3R,          Kel16u, Inv, P3)  \
    InPlace(keliGammaInv_16u_IP3R,       Kel16u, Inv, P3)  \
    ApartRange(keliGammaFwd_32f_C3R,     Kel32f, Fwd, C3)  \
    InPlaceRange(keliGammaFwd_32f_C3IR,  Kel32f, Fwd, C3)  \
    ApartRange(keliGammaFwd_32f_AC4R,    Kel32f, Fwd, AC4) \
    InPlaceRange(keliGammaFwd_32f_AC4IR, Kel32f, Fwd, AC4) \
    ApartRange(keliGammaFwd_32f_P3R,     Kel32f, Fwd, P3)  \
    InPlaceRange(keliGammaFwd_32f_IP3R,  Kel32f, Fwd, P3)  \
    ApartRange(keliGammaInv_32f_C3R,     Kel32f, Inv, C3)  \
    InPlaceRange(keliGammaInv_32f_C3IR,  Kel32f, Inv, C3)  \
    ApartRange(keliGammaInv_32f_AC4R,    Kel32f, Inv, AC4) \
    InPlaceRange(keliGammaInv_32f_AC4IR, Kel32f, Inv, AC4) \
    ApartRange(keliGammaInv_32f_P3R,     Kel32f, Inv, P3)  \
    InPlaceRange(keliGammaInv_32f_IP3R,  Kel32f, Inv, P3)

#define KEL_GAMMA_APART(NAME, T, DIRECTION, WALK)                                                                  \
    KEL_API KelResult NAME(SrcArg<T, Walk::WALK> pSrc, int srcStep, DstArg<T, Walk::WALK> pDst, int dstStep,     \
                           KelImageSize roiSize)                                                                  \
    {                                                                                                             \
        if (const KelResult bad = testGammaArguments(pSrc, srcStep, pDst, dstStep, roiSize)) return bad;          \
        return gammaRows<T, Direction::DIRECTION, Walk::WALK>(pSrc, srcStep, pDst, dstStep, roiSize);            \
    }
#define KEL_GAMMA_IN_PLACE(NAME, T, DIRECTION, WALK)                                                               \
    KEL_API KelResult NAME(DstArg<T, Walk::WALK> pSrcDst, int srcDstStep, KelImageSize roiSize)                   \
    {                                                                                                             \
        if (const KelResult bad = testGammaArguments(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize)) return bad; \
        return gammaRows<T, Direction::DIRECTION, Walk::WALK>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize); \
    }
// The range comes before every other test.
#define KEL_GAMMA_APART_RANGE(NAME, T, DIRECTION, WALK)                                                            \
    KEL_API KelResult NAME(SrcArg<T, Walk::WALK> pSrc, int srcStep, DstArg<T, Walk::WALK> pDst, int dstStep,     \
                           KelImageSize roiSize, Kel32f rangeLow, Kel32f rangeHigh)                               \
    {                                                                                                             \
        if (emptyRange(rangeLow, rangeHigh)) return kelErrGammaRange;                                             \
        if (const KelResult bad = testGammaArguments(pSrc, srcStep, pDst, dstStep, roiSize)) return bad;          \
        gammaRows32f<Direction::DIRECTION, Walk::WALK>(pSrc, srcStep, pDst, dstStep, roiSize, rangeLow, rangeHigh); \
        return kelOk;                                                                                             \
    }
#define KEL_GAMMA_IN_PLACE_RANGE(NAME, T, DIRECTION, WALK)                                                         \
    KEL_API KelResult NAME(DstArg<T, Walk::WALK> pSrcDst, int srcDstStep, KelImageSize roiSize, Kel32f rangeLow,  \
                           Kel32f rangeHigh)                                                                      \
    {                                                                                                             \
        if (emptyRange(rangeLow, rangeHigh)) return kelErrGammaRange;                                             \
        if (const KelResult bad = testGammaArguments(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize)) return bad; \
        gammaRows32f<Direction::DIRECTION, Walk::WALK>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, rangeLow, \
                                                       rangeHigh);                                                \
        return kelOk;                                                                                             \
    }

extern "C" {
KEL_GAMMA_MEMBERS(KEL_GAMMA_APART, KEL_GAMMA_IN_PLACE, KEL_GAMMA_APART_RANGE, KEL_GAMMA_IN_PLACE_RANGE)
} // extern "C"

#undef KEL_GAMMA_APART
#undef KEL_GAMMA_IN_PLACE
#undef KEL_GAMMA_APART_RANGE
#undef KEL_GAMMA_IN_PLACE_RANGE

namespace {

// ---- argument tests -------------------------------------------------------------

// The pointers and the planes inside the arrays, the size, then the strides
// (an in-place member's one stride stands for both).
template <typename Src, typename Dst>
KelResult testGammaArguments(Src src, int srcStep, Dst dst, int dstStep, KelImageSize roi)
{
    if (const KelResult bad = testPlanesWithPointers(roi, 1, 1, src, dst))  return bad;
    if (stepBelowOne(srcStep, dstStep))                                     return kelErrStep;
    return kelOk;
}

// A range that is empty or reversed; a NaN bound is not refused.
bool emptyRange(Kel32f rangeLow, Kel32f rangeHigh)
{
    return static_cast<Ext>(rangeHigh) - static_cast<Ext>(rangeLow) <= 0;
}

// ---- row layers -------------------------------------------------------------------

// Images of more than this many treated samples go through a 65536-entry table.
constexpr std::int32_t kDirectSamples = 65536;

// 8u looks every sample up in the constant tables; 16u evaluates small images
// directly and larger ones through a table built for the call.
template <typename T, Direction D, Walk W>
KelResult gammaRows(SrcArg<T, W> src, int srcStep, DstArg<T, W> dst, int dstStep, KelImageSize roi)
{
    if constexpr (std::is_same_v<T, Kel8u>) {
        const Kel8u* table = D == Direction::Fwd ? tableFwd8u : tableInv8u;
        gammaImage<Kel8u, W>(src, srcStep, dst, dstStep, roi.width, roi.height,
                             eachSample<Kel8u>([table](Kel8u s) { return table[s]; }));
        return kelOk;
    } else {
        // Three treated channels also for AC4; a product past 2^31 wraps and may
        // choose the direct path, which gives the same samples.
        const std::int32_t samples = static_cast<std::int32_t>(static_cast<std::uint32_t>(roi.width) * 3u *
                                                                static_cast<std::uint32_t>(roi.height));
        if (samples <= kDirectSamples) {
            const Row16u fast = chooseGammaRow16u(D == Direction::Fwd);
            FallbackTally tally;
            const auto direct = [fast, &tally](const Kel16u* s, Kel16u* d, std::int64_t count) {
                if (fast != nullptr) tally.add(fast(s, d, count));
                else for (std::int64_t i = 0; i < count; ++i) d[i] = D == Direction::Fwd ? gammaFwd16(s[i]) : gammaInv16(s[i]);
            };
            gammaImage<Kel16u, W>(src, srcStep, dst, dstStep, roi.width, roi.height, direct);
            return kelOk;
        }
        const ScratchBlock<Kel16u> table(kelsMalloc_16u(65536));
        if (!table) return kelErrNoMemory;
        if (D == Direction::Fwd) owniGammaInitFwd16u(table.get()); else owniGammaInitInv16u(table.get());
        const Kel16u* lookup = table.get();
        gammaImage<Kel16u, W>(src, srcStep, dst, dstStep, roi.width, roi.height,
                              eachSample<Kel16u>([lookup](Kel16u s) { return lookup[s]; }));
        return kelOk;
    }
}

// 32f evaluates every sample directly over the caller's range.
template <Direction D, Walk W>
void gammaRows32f(SrcArg<Kel32f, W> src, int srcStep, DstArg<Kel32f, W> dst, int dstStep, KelImageSize roi,
                  Kel32f rangeLow, Kel32f rangeHigh)
{
    const Range32f range = rangeOf(rangeLow, rangeHigh);
    const Row32f fast = chooseGammaRow32f(D == Direction::Fwd);
    FallbackTally tally;
    gammaImage<Kel32f, W>(src, srcStep, dst, dstStep, roi.width, roi.height,
                          [&range, fast, &tally](const Kel32f* s, Kel32f* d, std::int64_t count) {
                              if (fast != nullptr) {
                                  tally.add(fast(s, d, count, range));
                                  return;
                              }
                              for (std::int64_t i = 0; i < count; ++i)
                                  d[i] = D == Direction::Fwd ? gammaFwd32(s[i], range) : gammaInv32(s[i], range);
                          });
}

// Hands run every treated sample, in contiguous runs: C3 rows are runs of
// width * 3 samples, P3 runs plane 0's rows, then plane 1's, then plane 2's;
// AC4 gathers the three treated samples of up to 128 pixels at a time and
// puts the results back (the fourth sample is not touched).
template <typename T, Walk W, typename Run>
void gammaImage(SrcArg<T, W> src, int srcStep, DstArg<T, W> dst, int dstStep, int width, int height, const Run& run)
{
    if constexpr (W == Walk::P3) {
        for (int p = 0; p < 3; ++p)
            for (int y = 0; y < height; ++y) run(rowAt(src[p], srcStep, y), rowAt(dst[p], dstStep, y), width);
    } else if constexpr (W == Walk::C3) {
        for (int y = 0; y < height; ++y)
            run(rowAt(src, srcStep, y), rowAt(dst, dstStep, y), static_cast<std::int64_t>(width) * 3);
    } else {
        constexpr int kChunk = 128;
        T treated[3 * kChunk];
        for (int y = 0; y < height; ++y) {
            const T* s = rowAt(src, srcStep, y);
            T* d = rowAt(dst, dstStep, y);
            for (int x0 = 0; x0 < width; x0 += kChunk) {
                const int n = width - x0 < kChunk ? width - x0 : kChunk;
                for (int x = 0; x < n; ++x)
                    for (int c = 0; c < 3; ++c) treated[3 * x + c] = s[4 * (x0 + x) + c];
                run(treated, treated, 3 * n);
                for (int x = 0; x < n; ++x)
                    for (int c = 0; c < 3; ++c) d[4 * (x0 + x) + c] = treated[3 * x + c];
            }
        }
    }
}

// The 65536 values of a 16-bit table: each index through the vector row in
// place, or the scalar kernel.
template <Direction D>
void fillTable16u(Kel16u* table)
{
    const Row16u fast = chooseGammaRow16u(D == Direction::Fwd);
    if (fast != nullptr) {
        for (int v = 0; v < 65536; ++v) table[v] = static_cast<Kel16u>(v);
        fast(table, table, 65536);
        return;
    }
    for (int v = 0; v < 65536; ++v) table[v] = D == Direction::Fwd ? gammaFwd16(v) : gammaInv16(v);
}

} // namespace

// ---- kernels ---------------------------------------------------------------------

namespace {

constexpr double d65535 = 1.5259021896696422e-05;  // 1 / 65535
constexpr double d1099 = 0.9099181073703366;       // 1 / 1.099
constexpr double d045 = 2.2222222222222223;        // 1 / 0.45
constexpr double d45 = 0.2222222222222222;         // 1 / 4.5

// Rounds half-way values to even: y + 0.5 truncated is odd and exact only
// when y stood on a half.
Kel16u nearestEven16(Ext y)
{
    y = y + 0.5;
    std::int32_t n = static_cast<std::int32_t>(y);
    if ((n & 1) != 0 && static_cast<Ext>(n) == y) n = n - 1;
    return static_cast<Kel16u>(static_cast<std::uint32_t>(n));
}

} // namespace

namespace kel::gamma {

Kel16u gammaFwd16(int v)
{
    const Ext x = static_cast<Ext>(d65535) * v;
    Ext y;
    if (x >= static_cast<Ext>(0.018))
        y = (static_cast<Ext>(::pow(static_cast<double>(x), 0.45)) * static_cast<Ext>(1.099) - static_cast<Ext>(0.099)) * 65535;
    else
        y = static_cast<Ext>(v) * static_cast<Ext>(4.5);
    return nearestEven16(y);
}

Kel16u gammaInv16(int v)
{
    const Ext x = static_cast<Ext>(d65535) * v;
    Ext y;
    if (x >= static_cast<Ext>(0.0812))
        y = static_cast<Ext>(::pow(static_cast<double>((x + static_cast<Ext>(0.099)) * static_cast<Ext>(d1099)), d045)) * 65535;
    else
        y = static_cast<Ext>(v) * static_cast<Ext>(d45);
    return nearestEven16(y);
}

Range32f rangeOf(Kel32f low, Kel32f high)
{
    const Ext range = static_cast<Ext>(high) - static_cast<Ext>(low);
    return {low, static_cast<Ext>(static_cast<double>(1 / range)), static_cast<Ext>(static_cast<float>(range))};
}

// No clamp: a sample outside the range takes the same branches.
Kel32f gammaFwd32(Kel32f sample, const Range32f& r)
{
    const Ext t = sample - r.low;
    const Ext u = r.scale * t;
    if (u < static_cast<Ext>(0.018)) return static_cast<Kel32f>(t * static_cast<Ext>(4.5) + r.low);
    return static_cast<Kel32f>((static_cast<Ext>(::pow(static_cast<double>(u), 0.45)) * static_cast<Ext>(1.099) -
                                static_cast<Ext>(0.099)) * r.range32 + r.low);
}

Kel32f gammaInv32(Kel32f sample, const Range32f& r)
{
    const Ext t = sample - r.low;
    const Ext u = r.scale * t;
    if (u < static_cast<Ext>(0.0812)) return static_cast<Kel32f>(t * static_cast<Ext>(d45) + r.low);
    return static_cast<Kel32f>(static_cast<Ext>(::pow(static_cast<double>((u + static_cast<Ext>(0.099)) *
                                                                         static_cast<Ext>(d1099)), d045)) *
                               r.range32 + r.low);
}

void gammaRefused16u(const Kel16u* src, Kel16u* dst, std::uint64_t refused, bool forward)
{
    for (int i = 0; refused != 0; ++i, refused >>= 1)
        if ((refused & 1) != 0) dst[i] = forward ? gammaFwd16(src[i]) : gammaInv16(src[i]);
}

void gammaRefused32f(const Kel32f* src, Kel32f* dst, std::uint64_t refused, const Range32f& r, bool forward)
{
    for (int i = 0; refused != 0; ++i, refused >>= 1)
        if ((refused & 1) != 0) dst[i] = forward ? gammaFwd32(src[i], r) : gammaInv32(src[i], r);
}

} // namespace kel::gamma

// ---- the per-call 16-bit tables ----------------------------------------------

void owniGammaInitFwd16u(Kel16u* table)
{
    fillTable16u<Direction::Fwd>(table);
}

void owniGammaInitInv16u(Kel16u* table)
{
    fillTable16u<Direction::Inv>(table);
}

// ---- the 8-bit tables: f(i / 255) * 255 and g(i / 255) * 255, nearest, ties to even

alignas(64) const Kel8u tableFwd8u[256] = {
      0,   4,   9,  14,  18,  23,  27,  30,  34,  37,  40,  43,  46,  48,  51,  53,
     55,  58,  60,  62,  64,  66,  68,  70,  72,  73,  75,  77,  78,  80,  82,  83,
     85,  86,  88,  89,  91,  92,  94,  95,  97,  98,  99, 101, 102, 103, 104, 106,
    107, 108, 109, 111, 112, 113, 114, 115, 116, 118, 119, 120, 121, 122, 123, 124,
    125, 126, 127, 128, 129, 130, 131, 132, 133, 134, 135, 136, 137, 138, 139, 140,
    141, 142, 143, 144, 145, 146, 147, 147, 148, 149, 150, 151, 152, 153, 154, 154,
    155, 156, 157, 158, 159, 159, 160, 161, 162, 163, 164, 164, 165, 166, 167, 168,
    168, 169, 170, 171, 171, 172, 173, 174, 174, 175, 176, 177, 177, 178, 179, 180,
    180, 181, 182, 182, 183, 184, 185, 185, 186, 187, 187, 188, 189, 189, 190, 191,
    191, 192, 193, 193, 194, 195, 195, 196, 197, 197, 198, 199, 199, 200, 201, 201,
    202, 203, 203, 204, 205, 205, 206, 206, 207, 208, 208, 209, 209, 210, 211, 211,
    212, 213, 213, 214, 214, 215, 216, 216, 217, 217, 218, 218, 219, 220, 220, 221,
    221, 222, 223, 223, 224, 224, 225, 225, 226, 227, 227, 228, 228, 229, 229, 230,
    230, 231, 232, 232, 233, 233, 234, 234, 235, 235, 236, 236, 237, 238, 238, 239,
    239, 240, 240, 241, 241, 242, 242, 243, 243, 244, 244, 245, 245, 246, 246, 247,
    247, 248, 248, 249, 249, 250, 251, 251, 252, 252, 253, 253, 254, 254, 255, 255,
};

alignas(64) const Kel8u tableInv8u[256] = {
      0,   0,   0,   1,   1,   1,   1,   2,   2,   2,   2,   2,   3,   3,   3,   3,
      4,   4,   4,   4,   4,   5,   5,   5,   5,   6,   6,   6,   6,   7,   7,   7,
      7,   8,   8,   8,   9,   9,   9,  10,  10,  10,  11,  11,  11,  12,  12,  13,
     13,  13,  14,  14,  15,  15,  15,  16,  16,  17,  17,  18,  18,  19,  19,  20,
     20,  21,  21,  22,  22,  23,  23,  24,  24,  25,  25,  26,  27,  27,  28,  28,
     29,  30,  30,  31,  31,  32,  33,  33,  34,  35,  35,  36,  37,  37,  38,  39,
     40,  40,  41,  42,  43,  43,  44,  45,  46,  46,  47,  48,  49,  50,  51,  51,
     52,  53,  54,  55,  56,  57,  57,  58,  59,  60,  61,  62,  63,  64,  65,  66,
     67,  68,  69,  70,  71,  72,  73,  74,  75,  76,  77,  78,  79,  80,  81,  82,
     83,  84,  85,  86,  88,  89,  90,  91,  92,  93,  94,  96,  97,  98,  99, 100,
    102, 103, 104, 105, 107, 108, 109, 110, 112, 113, 114, 116, 117, 118, 119, 121,
    122, 124, 125, 126, 128, 129, 130, 132, 133, 135, 136, 138, 139, 140, 142, 143,
    145, 146, 148, 149, 151, 152, 154, 155, 157, 158, 160, 162, 163, 165, 166, 168,
    170, 171, 173, 174, 176, 178, 179, 181, 183, 184, 186, 188, 190, 191, 193, 195,
    197, 198, 200, 202, 204, 205, 207, 209, 211, 213, 214, 216, 218, 220, 222, 224,
    226, 228, 229, 231, 233, 235, 237, 239, 241, 243, 245, 247, 249, 251, 253, 255,
};

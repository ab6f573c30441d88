// Repacking 8-bit luma-chroma images among 4:2:2, 4:2:0 and 4:1:1 and among
// plane (P3, P2) and pixel-order (C2) layouts.  Luma is copied; chroma is
// copied, repeated, dropped or restacked, never computed.
#include <cstring>

#include "callframe.h"

using namespace kel;

namespace {

// ---- layouts -----------------------------------------------------------------------

enum class Form {
    P3,       // planes Y, Cb, Cr
    P3CrCb,   // planes Y, Cr, Cb
    P2,       // plane Y, plane of Cb, Cr pairs
    C2YCbCr,  // Y0 Cb Y1 Cr
    C2CbYCr,  // Cb Y0 Cr Y1
    C2YCrCb,  // Y0 Cr Y1 Cb
};

constexpr bool isPixelOrder(Form f) { return f == Form::C2YCbCr || f == Form::C2CbYCr || f == Form::C2YCrCb; }
constexpr int lumaPitch(Form f) { return isPixelOrder(f) ? 2 : 1; }
constexpr int chromaPitch(Form f) { return isPixelOrder(f) ? 4 : f == Form::P2 ? 2 : 1; }

// Where a side's samples start and how its rows step: luma, then Cb and Cr.
template <typename Byte>
struct Side {
    Byte* luma;
    int lumaStep;
    Byte* chroma[2];
    int chromaStep[2];
};

template <Form F, typename Byte>
Side<Byte> planes3(Byte* const planes[3], const int steps[3])
{
    constexpr int cb = F == Form::P3CrCb ? 2 : 1, cr = F == Form::P3CrCb ? 1 : 2;
    return {planes[0], steps[0], {planes[cb], planes[cr]}, {steps[cb], steps[cr]}};
}

template <typename Byte>
Side<Byte> planes2(Byte* y, int yStep, Byte* cbcr, int cbcrStep)
{
    return {y, yStep, {cbcr, cbcr + 1}, {cbcrStep, cbcrStep}};
}

template <Form F, typename Byte>
Side<Byte> pixelOrder(Byte* base, int step)
{
    constexpr int lumaAt = F == Form::C2CbYCr ? 1 : 0;
    constexpr int cbAt = F == Form::C2CbYCr ? 0 : F == Form::C2YCrCb ? 3 : 1;
    constexpr int crAt = F == Form::C2CbYCr ? 2 : F == Form::C2YCrCb ? 1 : 3;
    return {base + lumaAt, step, {base + cbAt, base + crAt}, {step, step}};
}

// ---- the chroma rules ------------------------------------------------------------------

enum class Scheme { S422, S420, S411 };
enum class Rule { Same, RowsDoubled, OddRowsDropped, OddColumnsDropped, ColumnsDoubled, ColumnsStacked, RowsUnstacked };

constexpr int chromaWidth(Scheme s, int width) { return s == Scheme::S411 ? width / 4 : width / 2; }
constexpr int chromaHeight(Scheme s, int height) { return s == Scheme::S420 ? height / 2 : height; }

// Destination chroma row j of component c, from the one or two source rows
// the rule names.
template <Rule R, int SrcPitch, int DstPitch>
void chromaRow(const Kel8u* const* srcRows, int j, Kel8u* d, int samples)
{
    const Kel8u* s = srcRows[0];
    for (int k = 0; k < samples; ++k) {
        int from;
        if constexpr (R == Rule::OddColumnsDropped) from = 2 * k;
        else if constexpr (R == Rule::ColumnsDoubled) from = k / 2;
        else if constexpr (R == Rule::ColumnsStacked) from = 2 * k + (j & 1);
        else if constexpr (R == Rule::RowsUnstacked) { s = srcRows[k & 1]; from = k / 2; }
        else from = k;
        d[k * DstPitch] = s[from * SrcPitch];
    }
}

template <Rule R>
constexpr int firstSourceRow(int j)
{
    if constexpr (R == Rule::RowsDoubled || R == Rule::ColumnsStacked) return j / 2;
    else if constexpr (R == Rule::OddRowsDropped || R == Rule::RowsUnstacked) return 2 * j;
    else return j;
}

// Luma W x H copied unchanged, then every destination chroma sample of the
// destination scheme taken from the source by the rule.
template <Form SF, Form DF, Rule R, Scheme DS>
void repack(const Side<const Kel8u>& src, const Side<Kel8u>& dst, int width, int height)
{
    if constexpr (isPixelOrder(DF)) {
        // Pixel-order destinations are 4:2:2: every row gets its own chroma
        // row, and a pair's four bytes are written together.
        static_assert(R == Rule::Same || R == Rule::ColumnsDoubled);
        constexpr int sl = lumaPitch(SF), sc = chromaPitch(SF);
        for (int y = 0; y < height; ++y) {
            const Kel8u* sy = rowAt(src.luma, src.lumaStep, y);
            const Kel8u* scb = rowAt(src.chroma[0], src.chromaStep[0], y);
            const Kel8u* scr = rowAt(src.chroma[1], src.chromaStep[1], y);
            Kel8u* dy = rowAt(dst.luma, dst.lumaStep, y);
            Kel8u* dcb = rowAt(dst.chroma[0], dst.chromaStep[0], y);
            Kel8u* dcr = rowAt(dst.chroma[1], dst.chromaStep[1], y);
            for (int k = 0; k < width / 2; ++k) {
                const int from = R == Rule::ColumnsDoubled ? k / 2 : k;
                dy[4 * k] = sy[2 * k * sl];
                dy[4 * k + 2] = sy[(2 * k + 1) * sl];
                dcb[4 * k] = scb[from * sc];
                dcr[4 * k] = scr[from * sc];
            }
        }
        return;
    }
    const auto lumaRow = [&](int y) {
        const Kel8u* s = rowAt(src.luma, src.lumaStep, y);
        Kel8u* d = rowAt(dst.luma, dst.lumaStep, y);
        if constexpr (lumaPitch(SF) == 1 && lumaPitch(DF) == 1) {
            std::memcpy(d, s, static_cast<std::size_t>(width));
        } else {
            for (int x = 0; x < width; ++x) d[x * lumaPitch(DF)] = s[x * lumaPitch(SF)];
        }
    };
    // Each destination chroma row goes right after the luma rows it belongs
    // to, while they are still in cache; the effective height always holds
    // whole chroma rows.
    const int samples = chromaWidth(DS, width), rows = chromaHeight(DS, height);
    const int lumaRowsPerChromaRow = DS == Scheme::S420 ? 2 : 1;
    for (int j = 0; j < rows; ++j) {
        for (int y = j * lumaRowsPerChromaRow; y < (j + 1) * lumaRowsPerChromaRow; ++y) lumaRow(y);
        for (int c = 0; c < 2; ++c) {
            const int first = firstSourceRow<R>(j);
            const Kel8u* srcRows[2] = {rowAt(src.chroma[c], src.chromaStep[c], first), nullptr};
            if constexpr (R == Rule::RowsUnstacked) srcRows[1] = rowAt(src.chroma[c], src.chromaStep[c], first + 1);
            chromaRow<R, chromaPitch(SF), chromaPitch(DF)>(srcRows, j, rowAt(dst.chroma[c], dst.chromaStep[c], j),
                                                           samples);
        }
    }
}

// ---- argument tests ---------------------------------------------------------------------

// Effective size and the size test of each member.
struct Sizing {
    int widthMask, heightMask;  // ~1 or ~3; ~1 or ~0 (whole height)
    int minWidth, minHeight;    // minHeight 0: the height is not tested
};
constexpr Sizing kEvenBoth{~1, ~1, 2, 2};
constexpr Sizing kQuadEven{~3, ~1, 4, 2};
constexpr Sizing kEvenWidth{~1, ~0, 2, 0};
constexpr Sizing kQuadWidth{~3, ~0, 4, 0};
constexpr Sizing kEvenWidthTestedHeight{~1, ~0, 2, 1};

bool sizeRefused(KelImageSize roi, Sizing sizing)
{
    return roi.width < sizing.minWidth || (sizing.minHeight > 0 && roi.height < sizing.minHeight);
}

using RepackKernel = void (*)(const Side<const Kel8u>&, const Side<Kel8u>&, int, int);

KelResult repackCall(RepackKernel kernel, const Side<const Kel8u>& src, const Side<Kel8u>& dst, KelImageSize roi,
                     Sizing sizing)
{
    if (sizeRefused(roi, sizing)) return kelErrSize;
    kernel(src, dst, roi.width & sizing.widthMask, roi.height & sizing.heightMask);
    return kelOk;
}

} // namespace

// ---- public functions, by argument shape ------------------------------------------------

// Each member's kernel is the one repack routine with its layouts and rule.
#define KEL_REPACK_KERNEL(NAME, SF, DF, RULE, DS)                                                                   \
    void own##NAME(const Side<const Kel8u>& src, const Side<Kel8u>& dst, int width, int height)                      \
    { repack<SF, DF, RULE, DS>(src, dst, width, height); }

#define KEL_REPACK_P3P3(NAME, SF, DF, RULE, DS, SIZING)                                                             \
    KEL_REPACK_KERNEL(NAME, SF, DF, RULE, DS)                                                                       \
    KEL_API KelResult keli##NAME(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* const pDst[3],             \
                                 const int dstStep[3], KelImageSize roiSize)                                         \
    {                                                                                                               \
        if (anyNull(pSrc, pDst) || anyNullPlane(pSrc) || anyNullPlane(pDst)) return kelErrNullPointer;               \
        return repackCall(own##NAME, planes3<SF>(pSrc, srcStep), planes3<DF>(pDst, dstStep), roiSize, SIZING); \
    }
#define KEL_REPACK_P3P2(NAME, SF, RULE, DS, SIZING)                                                             \
    KEL_REPACK_KERNEL(NAME, SF, Form::P2, RULE, DS)                                                             \
    KEL_API KelResult keli##NAME(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* pDstY, int dstYStep,       \
                                 Kel8u* pDstCbCr, int dstCbCrStep, KelImageSize roiSize)                             \
    {                                                                                                               \
        if (anyNull(pSrc, pDstY, pDstCbCr) || anyNullPlane(pSrc)) return kelErrNullPointer;                          \
        return repackCall(own##NAME, planes3<SF>(pSrc, srcStep),                                        \
                                                  planes2(pDstY, dstYStep, pDstCbCr, dstCbCrStep), roiSize, SIZING); \
    }
#define KEL_REPACK_P2P3(NAME, DF, RULE, DS, SIZING)                                                             \
    KEL_REPACK_KERNEL(NAME, Form::P2, DF, RULE, DS)                                                             \
    KEL_API KelResult keli##NAME(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep,          \
                                 Kel8u* const pDst[3], const int dstStep[3], KelImageSize roiSize)                   \
    {                                                                                                               \
        if (anyNull(pSrcY, pSrcCbCr, pDst) || anyNullPlane(pDst)) return kelErrNullPointer;                          \
        return repackCall(own##NAME, planes2(pSrcY, srcYStep, pSrcCbCr, srcCbCrStep),                   \
                                                  planes3<DF>(pDst, dstStep), roiSize, SIZING);                      \
    }
#define KEL_REPACK_C2P3(NAME, SF, RULE, DS, SIZING)                                                             \
    KEL_REPACK_KERNEL(NAME, SF, Form::P3, RULE, DS)                                                             \
    KEL_API KelResult keli##NAME(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstStep[3],         \
                                 KelImageSize roiSize)                                                               \
    {                                                                                                               \
        if (anyNull(pSrc, pDst) || anyNullPlane(pDst)) return kelErrNullPointer;                                     \
        return repackCall(own##NAME, pixelOrder<SF>(pSrc, srcStep), planes3<Form::P3>(pDst, dstStep),   \
                                                  roiSize, SIZING);                                                  \
    }
#define KEL_REPACK_P3C2(NAME, DF, RULE, DS, SIZING)                                                             \
    KEL_REPACK_KERNEL(NAME, Form::P3, DF, RULE, DS)                                                             \
    KEL_API KelResult keli##NAME(const Kel8u* const pSrc[3], const int srcStep[3], Kel8u* pDst, int dstStep,         \
                                 KelImageSize roiSize)                                                               \
    {                                                                                                               \
        if (anyNull(pSrc, pDst) || anyNullPlane(pSrc)) return kelErrNullPointer;                                     \
        return repackCall(own##NAME, planes3<Form::P3>(pSrc, srcStep), pixelOrder<DF>(pDst, dstStep),   \
                                                  roiSize, SIZING);                                                  \
    }
#define KEL_REPACK_P2C2(NAME, DF, RULE, DS, SIZING)                                                             \
    KEL_REPACK_KERNEL(NAME, Form::P2, DF, RULE, DS)                                                             \
    KEL_API KelResult keli##NAME(const Kel8u* pSrcY, int srcYStep, const Kel8u* pSrcCbCr, int srcCbCrStep,          \
                                 Kel8u* pDst, int dstStep, KelImageSize roiSize)                                     \
    {                                                                                                               \
        if (anyNull(pSrcY, pSrcCbCr, pDst)) return kelErrNullPointer;                                                \
        return repackCall(own##NAME, planes2(pSrcY, srcYStep, pSrcCbCr, srcCbCrStep),                   \
                                                  pixelOrder<DF>(pDst, dstStep), roiSize, SIZING);                   \
    }
#define KEL_REPACK_C2P2(NAME, SF, RULE, DS, SIZING)                                                             \
    KEL_REPACK_KERNEL(NAME, SF, Form::P2, RULE, DS)                                                             \
    KEL_API KelResult keli##NAME(const Kel8u* pSrc, int srcStep, Kel8u* pDstY, int dstYStep, Kel8u* pDstCbCr,        \
                                 int dstCbCrStep, KelImageSize roiSize)                                              \
    {                                                                                                               \
        if (anyNull(pSrc, pDstY, pDstCbCr)) return kelErrNullPointer;                                                \
        return repackCall(own##NAME, pixelOrder<SF>(pSrc, srcStep),                                     \
                                                  planes2(pDstY, dstYStep, pDstCbCr, dstCbCrStep), roiSize, SIZING); \
    }

extern "C" {

// Rows doubled: 4:2:0 to 4:2:2.
KEL_REPACK_P3P3(YCbCr420ToYCbCr422_8u_P3R, Form::P3, Form::P3, Rule::RowsDoubled, Scheme::S422, kEvenBoth)
KEL_REPACK_P3P3(YCrCb420ToYCbCr422_8u_P3R, Form::P3CrCb, Form::P3, Rule::RowsDoubled, Scheme::S422, kEvenBoth)
KEL_REPACK_P2P3(YCbCr420ToYCbCr422_8u_P2P3R, Form::P3, Rule::RowsDoubled, Scheme::S422, kEvenBoth)

// Odd rows dropped: 4:2:2 to 4:2:0.
KEL_REPACK_P3P3(YCbCr422ToYCbCr420_8u_P3R, Form::P3, Form::P3, Rule::OddRowsDropped, Scheme::S420, kEvenBoth)
KEL_REPACK_C2P3(YCbCr422ToYCbCr420_8u_C2P3R, Form::C2YCbCr, Rule::OddRowsDropped, Scheme::S420, kEvenBoth)
KEL_REPACK_C2P3(CbYCr422ToYCbCr420_8u_C2P3R, Form::C2CbYCr, Rule::OddRowsDropped, Scheme::S420, kEvenBoth)
KEL_REPACK_C2P3(YCrCb422ToYCbCr420_8u_C2P3R, Form::C2YCrCb, Rule::OddRowsDropped, Scheme::S420, kEvenBoth)
KEL_REPACK_P3P2(YCbCr422ToYCbCr420_8u_P3P2R, Form::P3, Rule::OddRowsDropped, Scheme::S420, kEvenBoth)

// Same samples in another layout.
KEL_REPACK_C2P3(YCrCb422ToYCbCr422_8u_C2P3R, Form::C2YCrCb, Rule::Same, Scheme::S422, kEvenWidth)
KEL_REPACK_C2P3(CbYCr422ToYCbCr422_8u_C2P3R, Form::C2CbYCr, Rule::Same, Scheme::S422, kEvenWidth)
KEL_REPACK_P3C2(YCbCr422_8u_P3C2R, Form::C2YCbCr, Rule::Same, Scheme::S422, kEvenWidthTestedHeight)
KEL_REPACK_P3C2(YCbCr422ToYCrCb422_8u_P3C2R, Form::C2YCrCb, Rule::Same, Scheme::S422, kEvenWidth)
KEL_REPACK_P3P2(YCbCr420_8u_P3P2R, Form::P3, Rule::Same, Scheme::S420, kEvenBoth)
KEL_REPACK_P2P3(YCbCr420_8u_P2P3R, Form::P3, Rule::Same, Scheme::S420, kEvenBoth)
KEL_REPACK_P3P2(YCbCr411_8u_P3P2R, Form::P3, Rule::Same, Scheme::S411, kQuadWidth)
KEL_REPACK_P2P3(YCbCr411_8u_P2P3R, Form::P3, Rule::Same, Scheme::S411, kQuadWidth)

// The one member that also tests its stride array.
KEL_REPACK_KERNEL(YCbCr422_8u_C2P3R, Form::C2YCbCr, Form::P3, Rule::Same, Scheme::S422)
KEL_API KelResult keliYCbCr422_8u_C2P3R(const Kel8u* pSrc, int srcStep, Kel8u* const pDst[3], const int dstStep[3],
                                        KelImageSize roiSize)
{
    if (anyNull(pSrc, pDst, dstStep) || anyNullPlane(pDst)) return kelErrNullPointer;
    return repackCall(ownYCbCr422_8u_C2P3R,
        pixelOrder<Form::C2YCbCr>(pSrc, srcStep), planes3<Form::P3>(pDst, dstStep), roiSize, kEvenWidthTestedHeight);
}

// Pixel order to pixel order: Y0 Cb Y1 Cr becomes Y0 Cr Y1 Cb.
KEL_REPACK_KERNEL(YCbCr422ToYCrCb422_8u_C2R, Form::C2YCbCr, Form::C2YCrCb, Rule::Same, Scheme::S422)
KEL_API KelResult keliYCbCr422ToYCrCb422_8u_C2R(const Kel8u* pSrc, int srcStep, Kel8u* pDst, int dstStep,
                                                KelImageSize roiSize)
{
    if (anyNull(pSrc, pDst)) return kelErrNullPointer;
    return repackCall(ownYCbCr422ToYCrCb422_8u_C2R,
        pixelOrder<Form::C2YCbCr>(pSrc, srcStep), pixelOrder<Form::C2YCrCb>(pDst, dstStep), roiSize, kEvenWidth);
}

// Odd columns dropped: 4:2:2 to 4:1:1.
KEL_REPACK_P3P3(YCbCr422ToYCbCr411_8u_P3R, Form::P3, Form::P3, Rule::OddColumnsDropped, Scheme::S411, kQuadWidth)
KEL_REPACK_P3P2(YCbCr422ToYCbCr411_8u_P3P2R, Form::P3, Rule::OddColumnsDropped, Scheme::S411, kQuadWidth)
KEL_REPACK_C2P2(YCbCr422ToYCbCr411_8u_C2P2R, Form::C2YCbCr, Rule::OddColumnsDropped, Scheme::S411, kQuadWidth)
KEL_REPACK_C2P3(YCbCr422ToYCbCr411_8u_C2P3R, Form::C2YCbCr, Rule::OddColumnsDropped, Scheme::S411, kQuadWidth)
KEL_REPACK_C2P3(CbYCr422ToYCbCr411_8u_C2P3R, Form::C2CbYCr, Rule::OddColumnsDropped, Scheme::S411, kQuadWidth)
KEL_REPACK_C2P3(YCrCb422ToYCbCr411_8u_C2P3R, Form::C2YCrCb, Rule::OddColumnsDropped, Scheme::S411, kQuadWidth)

// Columns doubled: 4:1:1 to 4:2:2.
KEL_REPACK_P3P3(YCbCr411ToYCbCr422_8u_P3R, Form::P3, Form::P3, Rule::ColumnsDoubled, Scheme::S422, kQuadWidth)
KEL_REPACK_P3P3(YCbCr411ToYCrCb422_8u_P3R, Form::P3, Form::P3CrCb, Rule::ColumnsDoubled, Scheme::S422, kQuadWidth)
KEL_REPACK_P3C2(YCbCr411ToYCbCr422_8u_P3C2R, Form::C2YCbCr, Rule::ColumnsDoubled, Scheme::S422, kQuadWidth)
KEL_REPACK_P3C2(YCbCr411ToYCrCb422_8u_P3C2R, Form::C2YCrCb, Rule::ColumnsDoubled, Scheme::S422, kQuadWidth)
KEL_REPACK_P2C2(YCbCr411ToYCbCr422_8u_P2C2R, Form::C2YCbCr, Rule::ColumnsDoubled, Scheme::S422, kQuadWidth)
KEL_REPACK_P2P3(YCbCr411ToYCbCr422_8u_P2P3R, Form::P3, Rule::ColumnsDoubled, Scheme::S422, kQuadWidth)

// Columns stacked: 4:2:0 to 4:1:1, every sample kept.
KEL_REPACK_P3P2(YCbCr420ToYCbCr411_8u_P3P2R, Form::P3, Rule::ColumnsStacked, Scheme::S411, kQuadEven)
KEL_REPACK_P3P2(YCrCb420ToYCbCr411_8u_P3P2R, Form::P3CrCb, Rule::ColumnsStacked, Scheme::S411, kQuadEven)
KEL_REPACK_P2P3(YCbCr420ToYCbCr411_8u_P2P3R, Form::P3, Rule::ColumnsStacked, Scheme::S411, kQuadEven)

// Rows unstacked: 4:1:1 to 4:2:0, the inverse of stacking.
KEL_REPACK_P3P3(YCbCr411ToYCbCr420_8u_P3R, Form::P3, Form::P3, Rule::RowsUnstacked, Scheme::S420, kQuadEven)
KEL_REPACK_P3P2(YCbCr411ToYCbCr420_8u_P3P2R, Form::P3, Rule::RowsUnstacked, Scheme::S420, kQuadEven)
KEL_REPACK_P2P3(YCbCr411ToYCbCr420_8u_P2P3R, Form::P3, Rule::RowsUnstacked, Scheme::S420, kQuadEven)
KEL_REPACK_P2P3(YCbCr411ToYCrCb420_8u_P2P3R, Form::P3CrCb, Rule::RowsUnstacked, Scheme::S420, kQuadEven)

} // extern "C"

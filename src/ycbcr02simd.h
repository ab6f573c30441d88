// Whole-vector kernels of RGB and BGR to sub-sampled YCbCr, beside the scalar
// kernels of ycbcr02.cpp, which stay the reference and finish every row.
#pragma once

#include <cstdint>

#include "kelcc.h"

namespace kel {

// ---- the family's constants, shared by the scalar and the vector kernels ---------------------------

inline constexpr std::int32_t kRoundedLuma = 0x108000;    // 16 and the rounding half
inline constexpr std::int32_t kTruncatedLuma = 0x100000;  // the second Y of an RGB pair truncates
inline constexpr std::int32_t kCellOf4 = 0x2008000;       // 128 at shift 18, with a rounding half
inline constexpr std::int32_t kFilteredChroma = 0x807FFF; // 128 at shift 16, one below the rounding half

// The constants a 4:2:2 pair is formed with: its chroma at shift 17 from the
// sums of its two pixels, its two lumas, and the chroma of a last single pixel
// at shift 16.  The 128 of the format is 0x1000000 at shift 17, 0x800000 at 16.
struct PairConstants {
    std::int32_t cbK, crK;
    std::int32_t yEven, yOdd;
    std::int32_t singleK;
};

inline constexpr PairConstants kRGBPair{0x1010000, 0x1010000, kRoundedLuma, kTruncatedLuma, 0x808000};
inline constexpr PairConstants kBGRPair{0x1004000, 0x1004000, kRoundedLuma, kRoundedLuma, 0x802000};
// Cr two below Cb: 0x100FFFE.
inline constexpr PairConstants kBGRCbYCrPair{0x1010000, 0x100FFFE, kRoundedLuma, kRoundedLuma, 0x808000};

// The filtered CbYCr members carry a quarter of the last odd pixel's blue and
// red differences from one pair to the next: 0 at the start of a row.  A
// kernel takes the carry of the pixels before its first and leaves its own.
struct FilterCarry {
    std::int32_t b, r;
};

// The gamma member maps its source through the table a run of pixels at a
// time into a buffer on the stack.  A run is even, so that no pair is cut,
// and 6 pixels longer than a multiple of 64: every vector step of the run then
// reads inside it, and the pixels the last step leaves are few.
inline constexpr int kGammaRun = 1030;


} // namespace kel

// The scalar row-pair kernels of 4:2:0 (ycbcr02.cpp): two source rows, their
// two luma rows and one chroma row of each plane; an odd last column is not read.
void innerRGBToYCbCr420_8u_C3P3R(const Kel8u* top, const Kel8u* bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* cb,
                                 Kel8u* cr, int width);
void innerBGRToYCbCr420_8u_C3P3R(const Kel8u* top, const Kel8u* bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* cb,
                                 Kel8u* cr, int width);
void innerBGRToYCbCr420_8u_AC4P3R(const Kel8u* top, const Kel8u* bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* cb,
                                  Kel8u* cr, int width);

// The scalar row kernels of pixel-order 4:2:2 (ycbcr02.cpp), a last single
// pixel included.
void innerRGBToYCbCr422_C3_C2R(const Kel8u* src, Kel8u* dst, int width);
void innerRGBToYCrCb422_C3_C2R(const Kel8u* src, Kel8u* dst, int width);
void innerBGRToYCbCr422_8u_C3C2R(const Kel8u* src, Kel8u* dst, int width);
void innerBGRToYCbCr422_8u_AC4C2R(const Kel8u* src, Kel8u* dst, int width);
void innerBGRToCbYCr422_8u_AC4C2R(const Kel8u* src, Kel8u* dst, int width);

// The same from three source planes R, G, B.
void innerRGBToYCbCr422_C3P2_C3R(const Kel8u* const src[3], Kel8u* dst, int width);
void innerRGBToYCrCb422_C3P2_C3R(const Kel8u* const src[3], Kel8u* dst, int width);

// The scalar row kernels into planes (ycbcr02.cpp): 4:2:2, whose last single
// pixel writes its Y only, and 4:1:1, which leaves the last width & 3 pixels alone.
void innerBGRToYCbCr422_8u_C3P3R(const Kel8u* src, Kel8u* y, Kel8u* cb, Kel8u* cr, int width);
void innerBGRToYCbCr422_8u_AC4P3R(const Kel8u* src, Kel8u* y, Kel8u* cb, Kel8u* cr, int width);
void innerBGRToYCbCr411_8u_C3P3R(const Kel8u* src, Kel8u* y, Kel8u* cb, Kel8u* cr, int width);
void innerBGRToYCbCr411_8u_AC4P3R(const Kel8u* src, Kel8u* y, Kel8u* cb, Kel8u* cr, int width);

// The scalar filtered CbYCr row kernel (ycbcr02.cpp), from the carry given.
void innerRGBToCbYCr422_8u_C3C2R(const Kel8u* src, Kel8u* dst, int width, kel::FilterCarry& carry);

// The gamma member's scalar row kernel (ycbcr02.cpp): the row through the
// forward BT.709 table a run at a time, then the filter, from the carry given.
void innerRGBToCbYCr422Gamma_8u_C3C2R(const Kel8u* src, Kel8u* dst, int width, kel::FilterCarry& carry);

// `count` bytes through the forward BT.709 table (ycbcr02.cpp).
void innerForwardGammaBytes(const Kel8u* src, Kel8u* dst, int count);

namespace kel {

using RowPairForward420 = void (*)(const Kel8u* top, const Kel8u* bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* cb,
                                   Kel8u* cr, int width);
using RowForward422 = void (*)(const Kel8u* src, Kel8u* dst, int width);
using RowPlanesForward422 = void (*)(const Kel8u* const src[3], Kel8u* dst, int width);
using RowForwardToPlanes = void (*)(const Kel8u* src, Kel8u* y, Kel8u* cb, Kel8u* cr, int width);
using RowFilteredCbYCr = void (*)(const Kel8u* src, Kel8u* dst, int width, FilterCarry& carry);
using BytesThroughTable = void (*)(const Kel8u* src, Kel8u* dst, int count);

// The fastest kernel this processor runs, the same bytes as the scalar
// kernel; the scalar kernel itself in a build without SIMD.
RowPairForward420 chooseRGBToYCbCr420();
RowPairForward420 chooseBGRToYCbCr420();
RowPairForward420 chooseBGRToYCbCr420AC4();
RowForward422 chooseRGBToYCbCr422();
RowForward422 chooseRGBToYCrCb422();
RowForward422 chooseBGRToYCbCr422();
RowForward422 chooseBGRToYCbCr422AC4();
RowForward422 chooseBGRToCbYCr422AC4();
RowPlanesForward422 chooseRGBPlanesToYCbCr422();
RowPlanesForward422 chooseRGBPlanesToYCrCb422();
RowForwardToPlanes chooseBGRToYCbCr422Planes();
RowForwardToPlanes chooseBGRToYCbCr422PlanesAC4();
RowForwardToPlanes chooseBGRToYCbCr411();
RowForwardToPlanes chooseBGRToYCbCr411AC4();
RowFilteredCbYCr chooseRGBToCbYCr422();
BytesThroughTable chooseForwardGammaBytes();
RowFilteredCbYCr chooseRGBToCbYCr422Gamma();

} // namespace kel

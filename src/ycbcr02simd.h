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

namespace kel {

using RowPairForward420 = void (*)(const Kel8u* top, const Kel8u* bottom, Kel8u* yTop, Kel8u* yBottom, Kel8u* cb,
                                   Kel8u* cr, int width);
using RowForward422 = void (*)(const Kel8u* src, Kel8u* dst, int width);

// The fastest kernel this processor runs, the same bytes as the scalar
// kernel; the scalar kernel itself in a build without SIMD.
RowPairForward420 chooseRGBToYCbCr420();
RowPairForward420 chooseBGRToYCbCr420();
RowPairForward420 chooseBGRToYCbCr420AC4();
RowForward422 chooseRGBToYCbCr422();
RowForward422 chooseRGBToYCrCb422();

} // namespace kel

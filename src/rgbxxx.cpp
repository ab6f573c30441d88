// YCbCr and YUV to packed 16-bit RGB (565, 555, 444) by truncation: 4:4:4,
// 4:2:2 and 4:2:0 planes, 4:4:4 and 4:2:2 pixel order.
#include "callframe.h"
#include "rgbxxxpx.h"
#include "rgbxxxsimd.h"

using namespace kel;
using namespace kel::packed;

// ---- row layers --------------------------------------------------------------------------------------
// One walk a source form, for the member's arithmetic and packing; sibling
// RGB and BGR members share one and differ in swapRB alone.  4:4:4 and
// sub-sampled planes use the coarse arithmetic, 4:4:4 pixel order the fine
// one, 4:2:2 pixel order the folded one, YUV the fine YUV one.  A single YUV
// 4:2:0 row or column is converted like any other size.

constexpr auto myYCbCrToRGB565_8u16u_P3C3R = walkPlanes<Coarse, Packing::k565, false>;
constexpr auto myYCbCrToRGB555_8u16u_P3C3R = walkPlanes<Coarse, Packing::k555, false>;
constexpr auto myYCbCrToRGB444_8u16u_P3C3R = walkPlanes<Coarse, Packing::k444, false>;
constexpr auto myYCbCr420ToRGB565_8u16u_P3C3R = walkCells<Coarse, Packing::k565, false, true, simdpacked::chooseCells565>;
constexpr auto myYCbCr420ToRGB555_8u16u_P3C3R = walkCells<Coarse, Packing::k555, false, true>;
constexpr auto myYCbCr420ToRGB444_8u16u_P3C3R = walkCells<Coarse, Packing::k444, false, true>;
constexpr auto myYCbCr422ToRGB565_8u16u_P3C3R = walkCells<Coarse, Packing::k565, false, false>;
constexpr auto myYCbCr422ToRGB555_8u16u_P3C3R = walkCells<Coarse, Packing::k555, false, false>;
constexpr auto myYCbCr422ToRGB444_8u16u_P3C3R = walkCells<Coarse, Packing::k444, false, false>;
constexpr auto myYCbCrToRGB565_8u16u_C3R = walkPixels<Fine, Packing::k565, false>;
constexpr auto myYCbCrToRGB555_8u16u_C3R = walkPixels<Fine, Packing::k555, false>;
constexpr auto myYCbCrToRGB444_8u16u_C3R = walkPixels<Fine, Packing::k444, false>;
constexpr auto myYCbCr422ToRGB565_8u16u_C2C3R = walkPairs<Folded, Packing::k565, false, simdpacked::choosePairs565>;
constexpr auto myYCbCr422ToRGB555_8u16u_C2C3R = walkPairs<Folded, Packing::k555, false>;
constexpr auto myYCbCr422ToRGB444_8u16u_C2C3R = walkPairs<Folded, Packing::k444, false>;
constexpr auto myYUV420ToRGB565_8u16u_P3C3R = walkCells<YuvFine, Packing::k565, false, true>;
constexpr auto myYUV420ToRGB555_8u16u_P3C3R = walkCells<YuvFine, Packing::k555, false, true>;
constexpr auto myYUV420ToRGB444_8u16u_P3C3R = walkCells<YuvFine, Packing::k444, false, true>;

// ---- public functions --------------------------------------------------------------------------------

// clang-format off
#define KEL_PACKED_MEMBERS(PLANES, CELLS, PIXELS, PAIRS) \
    PLANES(keliYCbCrToRGB565_8u16u_P3C3R,    myYCbCrToRGB565_8u16u_P3C3R,    false) \
    PLANES(keliYCbCrToBGR565_8u16u_P3C3R,    myYCbCrToRGB565_8u16u_P3C3R,    true) \
    PLANES(keliYCbCrToRGB555_8u16u_P3C3R,    myYCbCrToRGB555_8u16u_P3C3R,    false) \
    PLANES(keliYCbCrToBGR555_8u16u_P3C3R,    myYCbCrToRGB555_8u16u_P3C3R,    true) \
    PLANES(keliYCbCrToRGB444_8u16u_P3C3R,    myYCbCrToRGB444_8u16u_P3C3R,    false) \
    PLANES(keliYCbCrToBGR444_8u16u_P3C3R,    myYCbCrToRGB444_8u16u_P3C3R,    true) \
    CELLS(keliYCbCr420ToRGB565_8u16u_P3C3R, myYCbCr420ToRGB565_8u16u_P3C3R, false) \
    CELLS(keliYCbCr420ToBGR565_8u16u_P3C3R, myYCbCr420ToRGB565_8u16u_P3C3R, true) \
    CELLS(keliYCbCr420ToRGB555_8u16u_P3C3R, myYCbCr420ToRGB555_8u16u_P3C3R, false) \
    CELLS(keliYCbCr420ToBGR555_8u16u_P3C3R, myYCbCr420ToRGB555_8u16u_P3C3R, true) \
    CELLS(keliYCbCr420ToRGB444_8u16u_P3C3R, myYCbCr420ToRGB444_8u16u_P3C3R, false) \
    CELLS(keliYCbCr420ToBGR444_8u16u_P3C3R, myYCbCr420ToRGB444_8u16u_P3C3R, true) \
    CELLS(keliYCbCr422ToRGB565_8u16u_P3C3R, myYCbCr422ToRGB565_8u16u_P3C3R, false) \
    CELLS(keliYCbCr422ToBGR565_8u16u_P3C3R, myYCbCr422ToRGB565_8u16u_P3C3R, true) \
    CELLS(keliYCbCr422ToRGB555_8u16u_P3C3R, myYCbCr422ToRGB555_8u16u_P3C3R, false) \
    CELLS(keliYCbCr422ToBGR555_8u16u_P3C3R, myYCbCr422ToRGB555_8u16u_P3C3R, true) \
    CELLS(keliYCbCr422ToRGB444_8u16u_P3C3R, myYCbCr422ToRGB444_8u16u_P3C3R, false) \
    CELLS(keliYCbCr422ToBGR444_8u16u_P3C3R, myYCbCr422ToRGB444_8u16u_P3C3R, true) \
    PIXELS(keliYCbCrToRGB565_8u16u_C3R,      myYCbCrToRGB565_8u16u_C3R,      false) \
    PIXELS(keliYCbCrToBGR565_8u16u_C3R,      myYCbCrToRGB565_8u16u_C3R,      true) \
    PIXELS(keliYCbCrToRGB555_8u16u_C3R,      myYCbCrToRGB555_8u16u_C3R,      false) \
    PIXELS(keliYCbCrToBGR555_8u16u_C3R,      myYCbCrToRGB555_8u16u_C3R,      true) \
    PIXELS(keliYCbCrToRGB444_8u16u_C3R,      myYCbCrToRGB444_8u16u_C3R,      false) \
    PIXELS(keliYCbCrToBGR444_8u16u_C3R,      myYCbCrToRGB444_8u16u_C3R,      true) \
    PAIRS(keliYCbCr422ToRGB565_8u16u_C2C3R, myYCbCr422ToRGB565_8u16u_C2C3R, false) \
    PAIRS(keliYCbCr422ToBGR565_8u16u_C2C3R, myYCbCr422ToRGB565_8u16u_C2C3R, true) \
    PAIRS(keliYCbCr422ToRGB555_8u16u_C2C3R, myYCbCr422ToRGB555_8u16u_C2C3R, false) \
    PAIRS(keliYCbCr422ToBGR555_8u16u_C2C3R, myYCbCr422ToRGB555_8u16u_C2C3R, true) \
    PAIRS(keliYCbCr422ToRGB444_8u16u_C2C3R, myYCbCr422ToRGB444_8u16u_C2C3R, false) \
    PAIRS(keliYCbCr422ToBGR444_8u16u_C2C3R, myYCbCr422ToRGB444_8u16u_C2C3R, true) \
    CELLS(keliYUV420ToRGB565_8u16u_P3C3R,   myYUV420ToRGB565_8u16u_P3C3R,   false) \
    CELLS(keliYUV420ToBGR565_8u16u_P3C3R,   myYUV420ToRGB565_8u16u_P3C3R,   true) \
    CELLS(keliYUV420ToRGB555_8u16u_P3C3R,   myYUV420ToRGB555_8u16u_P3C3R,   false) \
    CELLS(keliYUV420ToBGR555_8u16u_P3C3R,   myYUV420ToRGB555_8u16u_P3C3R,   true) \
    CELLS(keliYUV420ToRGB444_8u16u_P3C3R,   myYUV420ToRGB444_8u16u_P3C3R,   false) \
    CELLS(keliYUV420ToBGR444_8u16u_P3C3R,   myYUV420ToRGB444_8u16u_P3C3R,   true)
// clang-format on

extern "C" {
KEL_PACKED_MEMBERS(KEL_PACKED_PLANES, KEL_PACKED_CELLS, KEL_PACKED_PIXELS, KEL_PACKED_PAIRS)
}

// YCbCr and YUV to packed 16-bit RGB (565, 555, 444) with a 4 x 4 ordered
// dither anchored at the region's top-left pixel.
#include "callframe.h"
#include "rgbxxxpx.h"
#include "rgbxxxsimd.h"

using namespace kel;
using namespace kel::packed;

// ---- row layers --------------------------------------------------------------------------------------
// The walks of the undithered members with the dithering quantiser: every
// YCbCr source in the coarse arithmetic (so the pixel-order members start
// from other colour values than their undithered twins), YUV in the coarse
// YUV one.  There is no whole-image path: the row counter is part of the
// result.

constexpr auto myYCbCrToRGB565Dither_8u16u_P3C3R = walkPlanes<Coarse, Packing::k565, true>;
constexpr auto myYCbCrToRGB555Dither_8u16u_P3C3R = walkPlanes<Coarse, Packing::k555, true>;
constexpr auto myYCbCrToRGB444Dither_8u16u_P3C3R = walkPlanes<Coarse, Packing::k444, true>;
constexpr auto myYCbCr420ToRGB565Dither_8u16u_P3C3R = walkCells<Coarse, Packing::k565, true, true, simdpacked::chooseCells565Dither>;
constexpr auto myYCbCr420ToRGB555Dither_8u16u_P3C3R = walkCells<Coarse, Packing::k555, true, true>;
constexpr auto myYCbCr420ToRGB444Dither_8u16u_P3C3R = walkCells<Coarse, Packing::k444, true, true>;
constexpr auto myYCbCr422ToRGB565Dither_8u16u_P3C3R = walkCells<Coarse, Packing::k565, true, false>;
constexpr auto myYCbCr422ToRGB555Dither_8u16u_P3C3R = walkCells<Coarse, Packing::k555, true, false>;
constexpr auto myYCbCr422ToRGB444Dither_8u16u_P3C3R = walkCells<Coarse, Packing::k444, true, false>;
constexpr auto myYCbCrToRGB565Dither_8u16u_C3R = walkPixels<Coarse, Packing::k565, true>;
constexpr auto myYCbCrToRGB555Dither_8u16u_C3R = walkPixels<Coarse, Packing::k555, true>;
constexpr auto myYCbCrToRGB444Dither_8u16u_C3R = walkPixels<Coarse, Packing::k444, true>;
constexpr auto myYCbCr422ToRGB565Dither_8u16u_C2C3R = walkPairs<Coarse, Packing::k565, true, simdpacked::choosePairs565Dither>;
constexpr auto myYCbCr422ToRGB555Dither_8u16u_C2C3R = walkPairs<Coarse, Packing::k555, true>;
constexpr auto myYCbCr422ToRGB444Dither_8u16u_C2C3R = walkPairs<Coarse, Packing::k444, true>;
constexpr auto myYUV420ToRGB565Dither_8u16u_P3C3R = walkCells<YuvCoarse, Packing::k565, true, true>;
constexpr auto myYUV420ToRGB555Dither_8u16u_P3C3R = walkCells<YuvCoarse, Packing::k555, true, true>;
constexpr auto myYUV420ToRGB444Dither_8u16u_P3C3R = walkCells<YuvCoarse, Packing::k444, true, true>;

// ---- public functions --------------------------------------------------------------------------------

// clang-format off
#define KEL_PACKED_DITHER_MEMBERS(PLANES, CELLS, PIXELS, PAIRS) \
    PLANES(keliYCbCrToRGB565Dither_8u16u_P3C3R,    myYCbCrToRGB565Dither_8u16u_P3C3R,    false) \
    PLANES(keliYCbCrToBGR565Dither_8u16u_P3C3R,    myYCbCrToRGB565Dither_8u16u_P3C3R,    true) \
    PLANES(keliYCbCrToRGB555Dither_8u16u_P3C3R,    myYCbCrToRGB555Dither_8u16u_P3C3R,    false) \
    PLANES(keliYCbCrToBGR555Dither_8u16u_P3C3R,    myYCbCrToRGB555Dither_8u16u_P3C3R,    true) \
    PLANES(keliYCbCrToRGB444Dither_8u16u_P3C3R,    myYCbCrToRGB444Dither_8u16u_P3C3R,    false) \
    PLANES(keliYCbCrToBGR444Dither_8u16u_P3C3R,    myYCbCrToRGB444Dither_8u16u_P3C3R,    true) \
    CELLS(keliYCbCr420ToRGB565Dither_8u16u_P3C3R, myYCbCr420ToRGB565Dither_8u16u_P3C3R, false) \
    CELLS(keliYCbCr420ToBGR565Dither_8u16u_P3C3R, myYCbCr420ToRGB565Dither_8u16u_P3C3R, true) \
    CELLS(keliYCbCr420ToRGB555Dither_8u16u_P3C3R, myYCbCr420ToRGB555Dither_8u16u_P3C3R, false) \
    CELLS(keliYCbCr420ToBGR555Dither_8u16u_P3C3R, myYCbCr420ToRGB555Dither_8u16u_P3C3R, true) \
    CELLS(keliYCbCr420ToRGB444Dither_8u16u_P3C3R, myYCbCr420ToRGB444Dither_8u16u_P3C3R, false) \
    CELLS(keliYCbCr420ToBGR444Dither_8u16u_P3C3R, myYCbCr420ToRGB444Dither_8u16u_P3C3R, true) \
    CELLS(keliYCbCr422ToRGB565Dither_8u16u_P3C3R, myYCbCr422ToRGB565Dither_8u16u_P3C3R, false) \
    CELLS(keliYCbCr422ToBGR565Dither_8u16u_P3C3R, myYCbCr422ToRGB565Dither_8u16u_P3C3R, true) \
    CELLS(keliYCbCr422ToRGB555Dither_8u16u_P3C3R, myYCbCr422ToRGB555Dither_8u16u_P3C3R, false) \
    CELLS(keliYCbCr422ToBGR555Dither_8u16u_P3C3R, myYCbCr422ToRGB555Dither_8u16u_P3C3R, true) \
    CELLS(keliYCbCr422ToRGB444Dither_8u16u_P3C3R, myYCbCr422ToRGB444Dither_8u16u_P3C3R, false) \
    CELLS(keliYCbCr422ToBGR444Dither_8u16u_P3C3R, myYCbCr422ToRGB444Dither_8u16u_P3C3R, true) \
    PIXELS(keliYCbCrToRGB565Dither_8u16u_C3R,      myYCbCrToRGB565Dither_8u16u_C3R,      false) \
    PIXELS(keliYCbCrToBGR565Dither_8u16u_C3R,      myYCbCrToRGB565Dither_8u16u_C3R,      true) \
    PIXELS(keliYCbCrToRGB555Dither_8u16u_C3R,      myYCbCrToRGB555Dither_8u16u_C3R,      false) \
    PIXELS(keliYCbCrToBGR555Dither_8u16u_C3R,      myYCbCrToRGB555Dither_8u16u_C3R,      true) \
    PIXELS(keliYCbCrToRGB444Dither_8u16u_C3R,      myYCbCrToRGB444Dither_8u16u_C3R,      false) \
    PIXELS(keliYCbCrToBGR444Dither_8u16u_C3R,      myYCbCrToRGB444Dither_8u16u_C3R,      true) \
    PAIRS(keliYCbCr422ToRGB565Dither_8u16u_C2C3R, myYCbCr422ToRGB565Dither_8u16u_C2C3R, false) \
    PAIRS(keliYCbCr422ToBGR565Dither_8u16u_C2C3R, myYCbCr422ToRGB565Dither_8u16u_C2C3R, true) \
    PAIRS(keliYCbCr422ToRGB555Dither_8u16u_C2C3R, myYCbCr422ToRGB555Dither_8u16u_C2C3R, false) \
    PAIRS(keliYCbCr422ToBGR555Dither_8u16u_C2C3R, myYCbCr422ToRGB555Dither_8u16u_C2C3R, true) \
    PAIRS(keliYCbCr422ToRGB444Dither_8u16u_C2C3R, myYCbCr422ToRGB444Dither_8u16u_C2C3R, false) \
    PAIRS(keliYCbCr422ToBGR444Dither_8u16u_C2C3R, myYCbCr422ToRGB444Dither_8u16u_C2C3R, true) \
    CELLS(keliYUV420ToRGB565Dither_8u16u_P3C3R,   myYUV420ToRGB565Dither_8u16u_P3C3R,   false) \
    CELLS(keliYUV420ToBGR565Dither_8u16u_P3C3R,   myYUV420ToRGB565Dither_8u16u_P3C3R,   true) \
    CELLS(keliYUV420ToRGB555Dither_8u16u_P3C3R,   myYUV420ToRGB555Dither_8u16u_P3C3R,   false) \
    CELLS(keliYUV420ToBGR555Dither_8u16u_P3C3R,   myYUV420ToRGB555Dither_8u16u_P3C3R,   true) \
    CELLS(keliYUV420ToRGB444Dither_8u16u_P3C3R,   myYUV420ToRGB444Dither_8u16u_P3C3R,   false) \
    CELLS(keliYUV420ToBGR444Dither_8u16u_P3C3R,   myYUV420ToRGB444Dither_8u16u_P3C3R,   true)
// clang-format on

extern "C" {
KEL_PACKED_DITHER_MEMBERS(KEL_PACKED_PLANES, KEL_PACKED_CELLS, KEL_PACKED_PIXELS, KEL_PACKED_PAIRS)
}

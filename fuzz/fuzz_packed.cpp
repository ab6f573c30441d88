// Fuzz target of the packed 16-bit RGB family: 565 to and from 8-bit RGB,
// packed BGR to sub-sampled YCbCr and YUV, 4:1:1 planes to packed BGR, and the
// luma-chroma forms (4:4:4 planes and pixels, 4:2:2 planes and pairs, 4:2:0
// planes) to 565, 555 and 444, truncated or with ordered dither.
//
// What a member may write: the destination's rows, with chroma planes of
// width / cell columns and height / cell rows (the members write whole cells
// only); pixel-order 4:2:2 rows are two bytes a pixel, an odd last pixel
// included.  Two groups are held tighter: the 4:1:1 planes from packed BGR
// leave the last width & 3 luma bytes of a row alone, and the YUV 4:2:0
// planes from packed BGR leave an odd last column and row alone.  The packed
// destinations of the luma-chroma forms are whole rows (the YUV members may
// leave a one-pixel row or column unwritten).  Sources are exactly as large
// as the members read: 4:2:2 and 4:2:0 chroma planes of the cells rounded up
// for the luma-chroma forms, of whole cells for the 4:1:1 form (its last
// pixels take the last whole group's chroma).
//
// Steps: the 16-bit side of the luma-chroma forms and of the 8-bit to 565
// repacking is halved to whole elements, and the 565 source of the repacking
// is cut to an even byte count; there the call sometimes gets the drawn step
// plus one, which must change nothing.  The packed sources of the YCbCr and
// YUV forms advance by bytes and are given even steps only.
#include "harness.h"

namespace {

using kfz::Image;
using kfz::Input;
using kfz::Layout;
using kfz::pairs;
using kfz::pixels;
using kfz::planes;
using kfz::ycc;

// A step the member cuts to whole 16-bit elements: sometimes one more than
// drawn (the drawn step is even, so the cut gives it back).
int cut(Input& in, int step) { return in.oneIn(3) ? step + 1 : step; }

#define PK_C_Cd(F, S, D) [&](Image& s, Image& d, KelImageSize z) { \
        const int ds = cut(in, d.step()); return F(s.ptr<const S>(), s.step(), d.ptr<D>(), ds, z); }
#define PK_Cs_C(F, S, D) [&](Image& s, Image& d, KelImageSize z) { \
        const int ss = cut(in, s.step()); return F(s.ptr<const S>(), ss, d.ptr<D>(), d.step(), z); }
#define PK_P_Cd(F, S, D) [&](Image& s, Image& d, KelImageSize z) { \
        const int ds = cut(in, d.step()); return F(s.planes<const S>(), s.step(), d.ptr<D>(), ds, z); }
#define PK_Pa_Cd(F, S, D) [&](Image& s, Image& d, KelImageSize z) { \
        const int ds = cut(in, d.step()); return F(s.planes<const S>(), s.stepArray(), d.ptr<D>(), ds, z); }

// The luma bytes of a row that fill no group of four stay as they were.
void lumaOfWholeGroups(Layout&, Layout& dst, int w, int) { dst[0].writeBytes = w & ~3; }
// Nothing of an odd last column or row is written.
void wholeBlocks(Layout&, Layout& dst, int w, int h)
{
    dst[0].writeBytes = w & ~1;
    dst[0].writeEnd = h & ~1;
}

#define PK_IMAGE_TIGHT(F, SRC, DST, ADJUST) \
    kfz::Member{#F, [](Input& in) { kfz::convert(in, #F, SRC, DST, 0, KFZ_C_Pa(F, Kel16u, Kel8u), ADJUST); }}

constexpr kfz::Side C3 = pixels(3), P3 = planes(3), C2 = pairs(), Packed = pixels(1, 2);
constexpr kfz::Side Y411Whole = ycc(4, 1, true), Y422Whole = ycc(2, 1, true), Y420Whole = ycc(2, 2, true);
constexpr kfz::Side Y422 = ycc(2, 1, false), Y420 = ycc(2, 2, false);

// The luma-chroma forms to one packing: six sources, both channel orders.
#define PK_TO_PACKED(RGB, BGR, SUFFIX)                                                              \
    KFZ_IMAGE(keliYCbCrTo##RGB##SUFFIX##_8u16u_C3R, C3, Packed, 0, PK_C_Cd, Kel8u, Kel16u),         \
    KFZ_IMAGE(keliYCbCrTo##BGR##SUFFIX##_8u16u_C3R, C3, Packed, 0, PK_C_Cd, Kel8u, Kel16u),         \
    KFZ_IMAGE(keliYCbCrTo##RGB##SUFFIX##_8u16u_P3C3R, P3, Packed, 0, PK_P_Cd, Kel8u, Kel16u),       \
    KFZ_IMAGE(keliYCbCrTo##BGR##SUFFIX##_8u16u_P3C3R, P3, Packed, 0, PK_P_Cd, Kel8u, Kel16u),       \
    KFZ_IMAGE(keliYCbCr422To##RGB##SUFFIX##_8u16u_C2C3R, C2, Packed, 0, PK_C_Cd, Kel8u, Kel16u),    \
    KFZ_IMAGE(keliYCbCr422To##BGR##SUFFIX##_8u16u_C2C3R, C2, Packed, 0, PK_C_Cd, Kel8u, Kel16u),    \
    KFZ_IMAGE(keliYCbCr422To##RGB##SUFFIX##_8u16u_P3C3R, Y422, Packed, 0, PK_Pa_Cd, Kel8u, Kel16u), \
    KFZ_IMAGE(keliYCbCr422To##BGR##SUFFIX##_8u16u_P3C3R, Y422, Packed, 0, PK_Pa_Cd, Kel8u, Kel16u), \
    KFZ_IMAGE(keliYCbCr420To##RGB##SUFFIX##_8u16u_P3C3R, Y420, Packed, 0, PK_Pa_Cd, Kel8u, Kel16u), \
    KFZ_IMAGE(keliYCbCr420To##BGR##SUFFIX##_8u16u_P3C3R, Y420, Packed, 0, PK_Pa_Cd, Kel8u, Kel16u), \
    KFZ_IMAGE(keliYUV420To##RGB##SUFFIX##_8u16u_P3C3R, Y420, Packed, 0, PK_Pa_Cd, Kel8u, Kel16u),   \
    KFZ_IMAGE(keliYUV420To##BGR##SUFFIX##_8u16u_P3C3R, Y420, Packed, 0, PK_Pa_Cd, Kel8u, Kel16u)

const kfz::Member kMembers[] = {
    // 565 and 8-bit pixels
    KFZ_IMAGE(keliRGBToRGB565_8u16u_C3R, C3, Packed, 0, PK_C_Cd, Kel8u, Kel16u),
    KFZ_IMAGE(keliBGRToBGR565_8u16u_C3R, C3, Packed, 0, PK_C_Cd, Kel8u, Kel16u),
    KFZ_IMAGE(keliRGB565ToRGB_16u8u_C3R, Packed, C3, 0, PK_Cs_C, Kel16u, Kel8u),
    KFZ_IMAGE(keliBGR565ToBGR_16u8u_C3R, Packed, C3, 0, PK_Cs_C, Kel16u, Kel8u),
    // 4:1:1 planes to packed BGR
    KFZ_IMAGE(keliYCbCr411ToBGR565_8u16u_P3C3R, Y411Whole, Packed, 0, KFZ_Pa_C, Kel8u, Kel16u),
    KFZ_IMAGE(keliYCbCr411ToBGR555_8u16u_P3C3R, Y411Whole, Packed, 0, KFZ_Pa_C, Kel8u, Kel16u),
    // packed BGR to sub-sampled YCbCr and YUV
    PK_IMAGE_TIGHT(keliBGR565ToYCbCr411_16u8u_C3P3R, Packed, Y411Whole, lumaOfWholeGroups),
    PK_IMAGE_TIGHT(keliBGR555ToYCbCr411_16u8u_C3P3R, Packed, Y411Whole, lumaOfWholeGroups),
    KFZ_IMAGE(keliBGR565ToYCbCr422_16u8u_C3P3R, Packed, Y422Whole, 0, KFZ_C_Pa, Kel16u, Kel8u),
    KFZ_IMAGE(keliBGR555ToYCbCr422_16u8u_C3P3R, Packed, Y422Whole, 0, KFZ_C_Pa, Kel16u, Kel8u),
    KFZ_IMAGE(keliBGR565ToYCbCr422_16u8u_C3C2R, Packed, C2, 0, KFZ_C_C, Kel16u, Kel8u),
    KFZ_IMAGE(keliBGR555ToYCbCr422_16u8u_C3C2R, Packed, C2, 0, KFZ_C_C, Kel16u, Kel8u),
    KFZ_IMAGE(keliBGR565ToYCbCr420_16u8u_C3P3R, Packed, Y420Whole, 0, KFZ_C_Pa, Kel16u, Kel8u),
    KFZ_IMAGE(keliBGR555ToYCbCr420_16u8u_C3P3R, Packed, Y420Whole, 0, KFZ_C_Pa, Kel16u, Kel8u),
    KFZ_IMAGE(keliBGR565ToYCrCb420_16u8u_C3P3R, Packed, Y420Whole, 0, KFZ_C_Pa, Kel16u, Kel8u),
    KFZ_IMAGE(keliBGR555ToYCrCb420_16u8u_C3P3R, Packed, Y420Whole, 0, KFZ_C_Pa, Kel16u, Kel8u),
    PK_IMAGE_TIGHT(keliBGR565ToYUV420_16u8u_C3P3R, Packed, Y420Whole, wholeBlocks),
    PK_IMAGE_TIGHT(keliBGR555ToYUV420_16u8u_C3P3R, Packed, Y420Whole, wholeBlocks),
    // luma-chroma to packed, truncated
    PK_TO_PACKED(RGB565, BGR565, ),
    PK_TO_PACKED(RGB555, BGR555, ),
    PK_TO_PACKED(RGB444, BGR444, ),
    // luma-chroma to packed, with ordered dither
    PK_TO_PACKED(RGB565, BGR565, Dither),
    PK_TO_PACKED(RGB555, BGR555, Dither),
    PK_TO_PACKED(RGB444, BGR444, Dither),
};

static_assert(std::size(kMembers) == 90, "every member of the family");

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    return kfz::fuzzOne(kMembers, data, size);
}

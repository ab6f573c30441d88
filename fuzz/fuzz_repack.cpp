// Fuzz target of the chroma repacking family: 4:2:2, 4:2:0, 4:1:1 and 16:2:0
// between planes (P3), NV12-style planes (P2) and pixel order (C2), the
// four-tap vertical interpolators and the deinterlacing conversions by frame
// and by slice.
//
// What a member may write: the destination's rows, with chroma planes of the
// cells rounded up (the members round the size down to whole cells of both
// schemes, which stays inside); pixel-order rows are two bytes a pixel.  A
// middle or bottom deinterlacing slice also reads three luma rows and one
// chroma row above its region and writes the two destination rows above it
// (one chroma row in the three-plane form); a top slice two luma rows high
// reads one luma row and one chroma row below it.
#include "harness.h"

namespace {

using kfz::Image;
using kfz::Input;
using kfz::Layout;
using kfz::pairs;
using kfz::semiPlanar;
using kfz::ycc;

constexpr kfz::Side C2 = pairs();
constexpr kfz::Side P3_422 = ycc(2, 1, false), P3_420 = ycc(2, 2, false), P3_411 = ycc(4, 1, false),
                    P3_1620 = ycc(4, 4, false);
constexpr kfz::Side P2_420 = semiPlanar(2, 2, false), P2_411 = semiPlanar(4, 1, false);

// The deinterlacing `layout`: the three slices, a whole frame, values that do
// nothing, and anything else.
int drawSliceLayout(Input& in)
{
    static constexpr int kLayouts[] = {kelSliceTop, kelSliceMiddle, kelSliceBottom, 21, 53, 0, 5, 17, 20};
    return in.oneIn(8) ? in.anyInt() : kLayouts[in.below(static_cast<int>(std::size(kLayouts)))];
}

// The rows a slice reaches beyond its region; `dstChromaRows` is the chroma
// rows above the region that a three-plane destination gets.
auto sliceRows(int layout, int dstChromaRows)
{
    return [layout, dstChromaRows](Layout& src, Layout& dst, int, int h) {
        if (layout == kelSliceMiddle || layout == kelSliceBottom) {
            src[0].first = -3;
            src[1].first = -1;
            for (std::size_t i = 0; i < dst.size(); ++i) {
                const int above = i == 0 || dstChromaRows == 2 ? 2 : dstChromaRows;
                dst[i].first = -above;
                dst[i].writeFirst = -above;
            }
        } else if (layout == kelSliceTop && h < 4) {
            src[0].end = std::max(src[0].end, 3);
            src[1].end = std::max(src[1].end, 2);
        }
    };
}

void deinterlaceToPairs(Input& in)
{
    const int layout = drawSliceLayout(in);
    kfz::convert(in, "keliYCbCr420ToYCbCr422_Filter_8u_P2C2R", P2_420, C2, 0,
                 KFZ_P2_C(keliYCbCr420ToYCbCr422_Filter_8u_P2C2R, Kel8u, Kel8u, layout), sliceRows(layout, 2));
}

void deinterlaceToPlanes(Input& in)
{
    const int layout = drawSliceLayout(in);
    kfz::convert(in, "keliYCbCr420ToYCrCb420_Filter_8u_P2P3R", P2_420, P3_420, 0,
                 KFZ_P2_Pa(keliYCbCr420ToYCrCb420_Filter_8u_P2P3R, Kel8u, Kel8u, layout), sliceRows(layout, 1));
}

const kfz::Member kMembers[] = {
    KFZ_IMAGE(keliCbYCr422ToYCbCr411_8u_C2P3R, C2, P3_411, 0, KFZ_C_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliCbYCr422ToYCbCr420_8u_C2P3R, C2, P3_420, 0, KFZ_C_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliCbYCr422ToYCbCr422_8u_C2P3R, C2, P3_422, 0, KFZ_C_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr1620To420_8u_P3R, P3_1620, P3_420, 0, KFZ_Pa_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr411To420_8u_P3R, P3_411, P3_420, 0, KFZ_Pa_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr411ToYCbCr420_8u_P2P3R, P2_411, P3_420, 0, KFZ_P2_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr411ToYCbCr420_8u_P3P2R, P3_411, P2_420, 0, KFZ_Pa_P2, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr411ToYCbCr420_8u_P3R, P3_411, P3_420, 0, KFZ_Pa_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr411ToYCbCr422_8u_P2C2R, P2_411, C2, 0, KFZ_P2_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr411ToYCbCr422_8u_P2P3R, P2_411, P3_422, 0, KFZ_P2_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr411ToYCbCr422_8u_P3C2R, P3_411, C2, 0, KFZ_Pa_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr411ToYCbCr422_8u_P3R, P3_411, P3_422, 0, KFZ_Pa_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr411ToYCrCb420_8u_P2P3R, P2_411, P3_420, 0, KFZ_P2_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr411ToYCrCb422_8u_P3C2R, P3_411, C2, 0, KFZ_Pa_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr411ToYCrCb422_8u_P3R, P3_411, P3_422, 0, KFZ_Pa_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr411_8u_P2P3R, P2_411, P3_411, 0, KFZ_P2_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr411_8u_P3P2R, P3_411, P2_411, 0, KFZ_Pa_P2, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr420To1620_8u_P3R, P3_420, P3_1620, 0, KFZ_Pa_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr420To411_8u_P3R, P3_420, P3_411, 0, KFZ_Pa_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr420ToYCbCr411_8u_P2P3R, P2_420, P3_411, 0, KFZ_P2_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr420ToYCbCr411_8u_P3P2R, P3_420, P2_411, 0, KFZ_Pa_P2, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr420ToYCbCr422_8u_P2P3R, P2_420, P3_422, 0, KFZ_P2_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr420ToYCbCr422_8u_P3R, P3_420, P3_422, 0, KFZ_Pa_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr420_8u_P2P3R, P2_420, P3_420, 0, KFZ_P2_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr420_8u_P3P2R, P3_420, P2_420, 0, KFZ_Pa_P2, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr422ToYCbCr411_8u_C2P2R, C2, P2_411, 0, KFZ_C_P2, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr422ToYCbCr411_8u_C2P3R, C2, P3_411, 0, KFZ_C_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr422ToYCbCr411_8u_P3P2R, P3_422, P2_411, 0, KFZ_Pa_P2, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr422ToYCbCr411_8u_P3R, P3_422, P3_411, 0, KFZ_Pa_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr422ToYCbCr420_8u_C2P3R, C2, P3_420, 0, KFZ_C_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr422ToYCbCr420_8u_P3P2R, P3_422, P2_420, 0, KFZ_Pa_P2, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr422ToYCbCr420_8u_P3R, P3_422, P3_420, 0, KFZ_Pa_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr422ToYCrCb422_8u_C2R, C2, C2, 0, KFZ_C_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr422ToYCrCb422_8u_P3C2R, P3_422, C2, 0, KFZ_Pa_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr422_8u_C2P3R, C2, P3_422, 0, KFZ_C_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr422_8u_P3C2R, P3_422, C2, 0, KFZ_Pa_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCrCb420ToYCbCr411_8u_P3P2R, P3_420, P2_411, 0, KFZ_Pa_P2, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCrCb420ToYCbCr422_8u_P3R, P3_420, P3_422, 0, KFZ_Pa_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCrCb422ToYCbCr411_8u_C2P3R, C2, P3_411, 0, KFZ_C_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCrCb422ToYCbCr420_8u_C2P3R, C2, P3_420, 0, KFZ_C_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCrCb422ToYCbCr422_8u_C2P3R, C2, P3_422, 0, KFZ_C_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliCbYCr422ToYCbCr420_8u_C2P2R, C2, P2_420, 0, KFZ_C_P2, Kel8u, Kel8u),
    KFZ_IMAGE(keliCbYCr422ToYCbCr422_8u_C2R, C2, C2, 0, KFZ_C_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliCbYCr422ToYCrCb420_8u_C2P3R, C2, P3_420, 0, KFZ_C_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr420ToCbYCr422_8u_P2C2R, P2_420, C2, 0, KFZ_P2_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr420ToYCbCr422_8u_P2C2R, P2_420, C2, 0, KFZ_P2_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr420ToYCrCb420_8u_P2P3R, P2_420, P3_420, 0, KFZ_P2_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr422ToCbYCr422_8u_C2R, C2, C2, 0, KFZ_C_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr422ToYCbCr420_8u_C2P2R, C2, P2_420, 0, KFZ_C_P2, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr422ToYCrCb420_8u_C2P3R, C2, P3_420, 0, KFZ_C_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCrCb420ToCbYCr422_8u_P3C2R, P3_420, C2, 0, KFZ_Pa_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCrCb420ToYCbCr420_8u_P3P2R, P3_420, P2_420, 0, KFZ_Pa_P2, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCrCb420ToYCbCr422_8u_P3C2R, P3_420, C2, 0, KFZ_Pa_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr420ToYCbCr422_Filter_8u_P2P3R, P2_420, P3_422, 0, KFZ_P2_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr420ToYCbCr422_Filter_8u_P3R, P3_420, P3_422, 0, KFZ_Pa_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCrCb420ToYCbCr422_Filter_8u_P3R, P3_420, P3_422, 0, KFZ_Pa_Pa, Kel8u, Kel8u),
    {"keliYCbCr420ToYCbCr422_Filter_8u_P2C2R", deinterlaceToPairs},
    {"keliYCbCr420ToYCrCb420_Filter_8u_P2P3R", deinterlaceToPlanes},
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    return kfz::fuzzOne(kMembers, data, size);
}

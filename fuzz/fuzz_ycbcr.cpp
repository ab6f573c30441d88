// Fuzz target of the luma-chroma conversions: RGB and BGR to and from YCbCr
// and YUV at full resolution, and to and from 4:2:2, 4:2:0 and 4:1:1 in pixel
// order and planes, the forms without strides included.
//
// What a member may write: the destination's rows.  Chroma planes hold
// width / cell columns and height / cell rows where the member converts whole
// cells only (4:2:0 everywhere, 4:1:1, and the 4:2:2 planes written by the BGR
// members), and the cells rounded up where a last odd pixel has a chroma
// sample of its own (4:2:2 planes read or written by the YUV and YCbCr 4:2:2
// inverse members); pixel-order 4:2:2 rows are two bytes a pixel, an odd last
// pixel included.  Sources are exactly that large: a read past them faults.
#include "harness.h"

namespace {

using kfz::pairs;
using kfz::pixels;
using kfz::planes;
using kfz::ycc;

constexpr kfz::Side C3 = pixels(3), AC4 = pixels(4), C4 = pixels(4), P3 = planes(3), C2 = pairs();
constexpr kfz::Side Y422 = ycc(2, 1, false), Y422Whole = ycc(2, 1, true), Y420 = ycc(2, 2, true), Y411 = ycc(4, 1, true);
constexpr unsigned kR = 0, kNoR = kfz::kTight;

const kfz::Member kMembers[] = {
    // RGB and YCbCr, full resolution
    KFZ_IMAGE(keliRGBToYCbCr_8u_C3R, C3, C3, kR, KFZ_C_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliRGBToYCbCr_8u_AC4R, AC4, AC4, kR, KFZ_C_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliRGBToYCbCr_8u_P3R, P3, P3, kR, KFZ_P_P, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCrToRGB_8u_C3R, C3, C3, kR, KFZ_C_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCrToRGB_8u_AC4R, AC4, AC4, kR, KFZ_C_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCrToRGB_8u_P3R, P3, P3, kR, KFZ_P_P, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCrToRGB_8u_P3C3R, P3, C3, kR, KFZ_P_C, Kel8u, Kel8u),
    // RGB and YUV, full resolution
    KFZ_IMAGE(keliRGBToYUV_8u_C3R, C3, C3, kR, KFZ_C_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliRGBToYUV_8u_AC4R, AC4, AC4, kR, KFZ_C_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliRGBToYUV_8u_P3R, P3, P3, kR, KFZ_P_P, Kel8u, Kel8u),
    KFZ_IMAGE(keliRGBToYUV_8u_C3P3R, C3, P3, kR, KFZ_C_P, Kel8u, Kel8u),
    KFZ_IMAGE(keliYUVToRGB_8u_C3R, C3, C3, kR, KFZ_C_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYUVToRGB_8u_AC4R, AC4, AC4, kR, KFZ_C_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYUVToRGB_8u_P3R, P3, P3, kR, KFZ_P_P, Kel8u, Kel8u),
    KFZ_IMAGE(keliYUVToRGB_8u_P3C3R, P3, C3, kR, KFZ_P_C, Kel8u, Kel8u),
    // RGB and BGR to sub-sampled YCbCr, YCrCb and CbYCr
    KFZ_IMAGE(keliRGBToYCbCr422_8u_C3C2R, C3, C2, kR, KFZ_C_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliRGBToYCrCb422_8u_C3C2R, C3, C2, kR, KFZ_C_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliBGRToYCbCr422_8u_C3C2R, C3, C2, kR, KFZ_C_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliBGRToYCbCr422_8u_AC4C2R, AC4, C2, kR, KFZ_C_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliRGBToCbYCr422_8u_C3C2R, C3, C2, kR, KFZ_C_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliRGBToCbYCr422Gamma_8u_C3C2R, C3, C2, kR, KFZ_C_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliBGRToCbYCr422_8u_AC4C2R, AC4, C2, kR, KFZ_C_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliRGBToYCbCr422_8u_P3C2R, P3, C2, kR, KFZ_P_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliRGBToYCrCb422_8u_P3C2R, P3, C2, kR, KFZ_P_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliRGBToYCbCr420_8u_C3P3R, C3, Y420, kR, KFZ_C_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliBGRToYCbCr422_8u_C3P3R, C3, Y422Whole, kR, KFZ_C_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliBGRToYCbCr422_8u_AC4P3R, AC4, Y422Whole, kR, KFZ_C_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliBGRToYCbCr420_8u_C3P3R, C3, Y420, kR, KFZ_C_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliBGRToYCbCr420_8u_AC4P3R, AC4, Y420, kR, KFZ_C_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliBGRToYCrCb420_8u_C3P3R, C3, Y420, kR, KFZ_C_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliBGRToYCrCb420_8u_AC4P3R, AC4, Y420, kR, KFZ_C_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliBGRToYCbCr411_8u_C3P3R, C3, Y411, kR, KFZ_C_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliBGRToYCbCr411_8u_AC4P3R, AC4, Y411, kR, KFZ_C_Pa, Kel8u, Kel8u),
    // RGB and YUV 4:2:2 and 4:2:0, with and without strides
    KFZ_IMAGE(keliRGBToYUV422_8u_C3C2R, C3, C2, kR, KFZ_C_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliRGBToYUV422_8u_C3P3R, C3, Y422, kR, KFZ_C_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliRGBToYUV422_8u_P3R, P3, Y422, kR, KFZ_P_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliRGBToYUV422_8u_C3P3, C3, Y422, kNoR, KFZ_C_PN, Kel8u, Kel8u),
    KFZ_IMAGE(keliRGBToYUV422_8u_P3, P3, Y422, kNoR, KFZ_P_PN, Kel8u, Kel8u),
    KFZ_IMAGE(keliYUV422ToRGB_8u_C2C3R, C2, C3, kR, KFZ_C_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYUV422ToRGB_8u_P3C3R, Y422, C3, kR, KFZ_Pa_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYUV422ToRGB_8u_P3AC4R, Y422, AC4, kR, KFZ_Pa_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYUV422ToRGB_8u_P3R, Y422, P3, kR, KFZ_Pa_P, Kel8u, Kel8u),
    KFZ_IMAGE(keliYUV422ToRGB_8u_P3C3, Y422, C3, kNoR, KFZ_P_CN, Kel8u, Kel8u),
    KFZ_IMAGE(keliYUV422ToRGB_8u_P3, Y422, P3, kNoR, KFZ_P_PN, Kel8u, Kel8u),
    KFZ_IMAGE(keliRGBToYUV420_8u_C3P3R, C3, Y420, kR, KFZ_C_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliRGBToYUV420_8u_P3R, P3, Y420, kR, KFZ_P_Pa, Kel8u, Kel8u),
    KFZ_IMAGE(keliRGBToYUV420_8u_C3P3, C3, Y420, kNoR, KFZ_C_PN, Kel8u, Kel8u),
    KFZ_IMAGE(keliRGBToYUV420_8u_P3, P3, Y420, kNoR, KFZ_P_PN, Kel8u, Kel8u),
    KFZ_IMAGE(keliYUV420ToRGB_8u_P3C3R, Y420, C3, kR, KFZ_Pa_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYUV420ToRGB_8u_P3AC4R, Y420, AC4, kR, KFZ_Pa_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYUV420ToRGB_8u_P3R, Y420, P3, kR, KFZ_Pa_P, Kel8u, Kel8u),
    KFZ_IMAGE(keliYUV420ToRGB_8u_P3C3, Y420, C3, kNoR, KFZ_P_CN, Kel8u, Kel8u),
    KFZ_IMAGE(keliYUV420ToRGB_8u_P3, Y420, P3, kNoR, KFZ_P_PN, Kel8u, Kel8u),
    KFZ_IMAGE(keliYUV420ToBGR_8u_P3C3R, Y420, C3, kR, KFZ_Pa_C, Kel8u, Kel8u),
    // sub-sampled YCbCr, YCrCb and CbYCr to RGB and BGR
    KFZ_IMAGE(keliYCbCr422ToRGB_8u_C2C3R, C2, C3, kR, KFZ_C_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCrCb422ToRGB_8u_C2C3R, C2, C3, kR, KFZ_C_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr422ToBGR_8u_C2C3R, C2, C3, kR, KFZ_C_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliCbYCr422ToRGB_8u_C2C3R, C2, C3, kR, KFZ_C_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr422ToBGR_8u_C2C4R, C2, C4, kR, KFZ_C_C, Kel8u, Kel8u, in.u8()),
    KFZ_IMAGE(keliCbYCr422ToBGR_8u_C2C4R, C2, C4, kR, KFZ_C_C, Kel8u, Kel8u, in.u8()),
    KFZ_IMAGE(keliYCbCr422ToRGB_8u_C2P3R, C2, P3, kR, KFZ_C_P, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCrCb422ToRGB_8u_C2P3R, C2, P3, kR, KFZ_C_P, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr422ToRGB_8u_P3C3R, Y422, C3, kR, KFZ_Pa_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr420ToRGB_8u_P3C3R, Y420, C3, kR, KFZ_Pa_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr420ToBGR_8u_P3C3R, Y420, C3, kR, KFZ_Pa_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCrCb420ToBGR_Filter_8u_P3C4R, Y420, C4, kR, KFZ_Pa_C, Kel8u, Kel8u, in.u8()),
    KFZ_IMAGE(keliYCbCr411ToBGR_8u_P3C3R, Y411, C3, kR, KFZ_Pa_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCr411ToBGR_8u_P3C4R, Y411, C4, kR, KFZ_Pa_C, Kel8u, Kel8u, in.u8()),
    KFZ_IMAGE(keliYCbCrToBGR_8u_P3C3R, P3, C3, kR, KFZ_P_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCbCrToBGR_8u_P3C4R, P3, C4, kR, KFZ_P_C, Kel8u, Kel8u, in.u8()),
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    return kfz::fuzzOne(kMembers, data, size);
}

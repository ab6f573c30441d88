// Full-range YUV: full resolution, 4:2:2 and 4:2:0 in both directions.
#include "bench_support.h"

namespace {
using namespace kb;

const Registrar full("RGBToYUV_8u_C3R", kC3, kC3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliRGBToYUV_8u_C3R(s.in(), s.step, d.out(), d.step, z);
});
const Registrar fullBack("YUVToRGB_8u_C3R", kC3, kC3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliYUVToRGB_8u_C3R(s.in(), s.step, d.out(), d.step, z);
});
const Registrar to422("RGBToYUV422_8u_C3C2R", kC3, kC3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliRGBToYUV422_8u_C3C2R(s.in(), s.step, d.out(), d.step, z);
});
const Registrar from422("YUV422ToRGB_8u_C2C3R", kC3, kC3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliYUV422ToRGB_8u_C2C3R(s.in(), s.step, d.out(), d.step, z);
});
const Registrar to420("RGBToYUV420_8u_C3P3R", kC3, kP3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliRGBToYUV420_8u_C3P3R(s.in(), s.step, d.outPlanes(), d.steps(), z);
});
const Registrar from420("YUV420ToRGB_8u_P3C3R", kP3, kC3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliYUV420ToRGB_8u_P3C3R(s.inPlanes(), s.steps(), d.out(), d.step, z);
});

} // namespace

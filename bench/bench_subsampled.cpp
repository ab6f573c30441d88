// Sub-sampled studio-range YCbCr: the main 4:2:2 and 4:2:0 members both ways.
#include "bench_support.h"

namespace {
using namespace kb;

const Registrar to422("RGBToYCbCr422_8u_C3C2R", kC3, kC3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliRGBToYCbCr422_8u_C3C2R(s.in(), s.step, d.out(), d.step, z);
});
const Registrar from422("YCbCr422ToRGB_8u_C2C3R", kC3, kC3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliYCbCr422ToRGB_8u_C2C3R(s.in(), s.step, d.out(), d.step, z);
});
const Registrar bgrTo420("BGRToYCbCr420_8u_C3P3R", kC3, kP3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliBGRToYCbCr420_8u_C3P3R(s.in(), s.step, d.outPlanes(), d.steps(), z);
});
const Registrar from420("YCbCr420ToRGB_8u_P3C3R", kP3, kC3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliYCbCr420ToRGB_8u_P3C3R(s.inPlanes(), s.steps(), d.out(), d.step, z);
});
const Registrar to420("RGBToYCbCr420_8u_C3P3R", kC3, kP3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliRGBToYCbCr420_8u_C3P3R(s.in(), s.step, d.outPlanes(), d.steps(), z);
});
const Registrar from420Bgr("YCbCr420ToBGR_8u_P3C3R", kP3, kC3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliYCbCr420ToBGR_8u_P3C3R(s.inPlanes(), s.steps(), d.out(), d.step, z);
});
const Registrar filtered("RGBToCbYCr422_8u_C3C2R", kC3, kC3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliRGBToCbYCr422_8u_C3C2R(s.in(), s.step, d.out(), d.step, z);
});

} // namespace

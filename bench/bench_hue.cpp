// HSV and HLS, representative members.
#include "bench_support.h"

namespace {
using namespace kb;

const Registrar toHSV("RGBToHSV_8u_C3R", kC3, kC3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliRGBToHSV_8u_C3R(s.in(), s.step, d.out(), d.step, z);
});
const Registrar fromHSV("HSVToRGB_8u_C3R", kC3, kC3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliHSVToRGB_8u_C3R(s.in(), s.step, d.out(), d.step, z);
});
const Registrar toHLS("RGBToHLS_8u_C3R", kC3, kC3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliRGBToHLS_8u_C3R(s.in(), s.step, d.out(), d.step, z);
});
const Registrar fromHLS("HLSToRGB_8u_C3R", kC3, kC3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliHLSToRGB_8u_C3R(s.in(), s.step, d.out(), d.step, z);
});
const Registrar toHLS32f("RGBToHLS_32f_C3R", kC3x32f, kC3x32f, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliRGBToHLS_32f_C3R(reinterpret_cast<const Kel32f*>(s.in()), s.step, reinterpret_cast<Kel32f*>(d.out()),
                                d.step, z);
});
const Registrar bgrToHLSPlanes("BGRToHLS_8u_C3P3R", kC3, kP3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliBGRToHLS_8u_C3P3R(s.in(), s.step, d.outPlanes(), d.step, z);
});
const Registrar hlsPlanesToBGR("HLSToBGR_8u_P3C3R", kP3, kC3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliHLSToBGR_8u_P3C3R(s.inPlanes(), s.step, d.out(), d.step, z);
});

} // namespace

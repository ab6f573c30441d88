// RGB <-> YCbCr at full resolution.
#include "bench_support.h"

namespace {
using namespace kb;

const Registrar rgbToYCbCrC3("RGBToYCbCr_8u_C3R", kC3, kC3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliRGBToYCbCr_8u_C3R(s.in(), s.step, d.out(), d.step, z);
});
const Registrar rgbToYCbCrAC4("RGBToYCbCr_8u_AC4R", kAC4, kAC4, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliRGBToYCbCr_8u_AC4R(s.in(), s.step, d.out(), d.step, z);
});
const Registrar rgbToYCbCrP3("RGBToYCbCr_8u_P3R", kP3, kP3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliRGBToYCbCr_8u_P3R(s.inPlanes(), s.step, d.outPlanes(), d.step, z);
});
const Registrar yCbCrToRGBC3("YCbCrToRGB_8u_C3R", kC3, kC3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliYCbCrToRGB_8u_C3R(s.in(), s.step, d.out(), d.step, z);
});
const Registrar yCbCrToRGBAC4("YCbCrToRGB_8u_AC4R", kAC4, kAC4, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliYCbCrToRGB_8u_AC4R(s.in(), s.step, d.out(), d.step, z);
});
const Registrar yCbCrToRGBP3("YCbCrToRGB_8u_P3R", kP3, kP3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliYCbCrToRGB_8u_P3R(s.inPlanes(), s.step, d.outPlanes(), d.step, z);
});
const Registrar yCbCrToRGBP3C3("YCbCrToRGB_8u_P3C3R", kP3, kC3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliYCbCrToRGB_8u_P3C3R(s.inPlanes(), s.step, d.out(), d.step, z);
});

} // namespace

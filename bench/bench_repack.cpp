// Repacking, representative members, and the small operations.
#include "bench_support.h"

namespace {
using namespace kb;

// Chroma planes take the luma frame's geometry; the calls read and write
// only their own part of them.
const Registrar rowsDoubled("YCbCr420ToYCbCr422_8u_P3R", kP3, kP3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliYCbCr420ToYCbCr422_8u_P3R(s.inPlanes(), s.steps(), d.outPlanes(), d.steps(), z);
});
const Registrar pixelToPlanes("YCbCr422_8u_C2P3R", kAC4, kP3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliYCbCr422_8u_C2P3R(s.in(), s.step, d.outPlanes(), d.steps(), z);
});
const Registrar planesToPixel("YCbCr422_8u_P3C2R", kP3, kAC4, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliYCbCr422_8u_P3C2R(s.inPlanes(), s.steps(), d.out(), d.step, z);
});
const Registrar toSemiPlanar("YCbCr420_8u_P3P2R", kP3, kP3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliYCbCr420_8u_P3P2R(s.inPlanes(), s.steps(), d.outPlanes()[0], d.step, d.outPlanes()[1], d.step, z);
});
const Registrar stacked("YCbCr420ToYCbCr411_8u_P2P3R", kP3, kP3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliYCbCr420ToYCbCr411_8u_P2P3R(s.inPlanes()[0], s.step, s.inPlanes()[1], s.step, d.outPlanes(), d.steps(), z);
});
const Registrar cells("YCbCr1620To420_8u_P3R", kP3, kP3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliYCbCr1620To420_8u_P3R(s.inPlanes(), s.steps(), d.outPlanes(), d.steps(), z);
});
const Registrar copy("Copy_8u_C1R", kP3, kP3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliCopy_8u_C1R(s.in(), s.step, d.out(), d.step, z);
});
const Registrar sum("Sum_32f_C1R", kAC4, kAC4, [](const Frame& s, Frame&, KelImageSize z) {
    Kel64f total;
    return keliSum_32f_C1R(reinterpret_cast<const Kel32f*>(s.in()), s.step, z, &total, 0);
});

} // namespace

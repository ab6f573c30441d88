// BT.709 gamma.  At 16u, 64x64 takes the direct path and the larger sizes the
// per-call table.
#include "bench_support.h"

namespace {
using namespace kb;

const Registrar fwd8("GammaFwd_8u_C3R", kC3, kC3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliGammaFwd_8u_C3R(s.in(), s.step, d.out(), d.step, z);
});
const Registrar inv8("GammaInv_8u_C3R", kC3, kC3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliGammaInv_8u_C3R(s.in(), s.step, d.out(), d.step, z);
});
const Registrar fwd16("GammaFwd_16u_C3R", kC3x16, kC3x16, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliGammaFwd_16u_C3R(reinterpret_cast<const Kel16u*>(s.in()), s.step, reinterpret_cast<Kel16u*>(d.out()),
                                d.step, z);
});
const Registrar inv16("GammaInv_16u_C3R", kC3x16, kC3x16, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliGammaInv_16u_C3R(reinterpret_cast<const Kel16u*>(s.in()), s.step, reinterpret_cast<Kel16u*>(d.out()),
                                d.step, z);
});
const Registrar fwd32("GammaFwd_32f_C3R", kC3x32f, kC3x32f, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliGammaFwd_32f_C3R(reinterpret_cast<const Kel32f*>(s.in()), s.step, reinterpret_cast<Kel32f*>(d.out()),
                                d.step, z, 0.0f, 1.0f);
});
const Registrar inv32("GammaInv_32f_C3R", kC3x32f, kC3x32f, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliGammaInv_32f_C3R(reinterpret_cast<const Kel32f*>(s.in()), s.step, reinterpret_cast<Kel32f*>(d.out()),
                                d.step, z, 0.0f, 1.0f);
});

} // namespace

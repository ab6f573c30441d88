// HSV and HLS: the 8-bit members and every wider pixel-order member.
#include "bench_support.h"

namespace {
using namespace kb;

// Four-channel layouts of the wider samples (the fourth channel rides along).
constexpr Layout kAC4x16{8, 1}, kAC4x32f{16, 1, true};

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
const Registrar bgrToHLSPlanes("BGRToHLS_8u_C3P3R", kC3, kP3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliBGRToHLS_8u_C3P3R(s.in(), s.step, d.outPlanes(), d.step, z);
});
const Registrar hlsPlanesToBGR("HLSToBGR_8u_P3C3R", kP3, kC3, [](const Frame& s, Frame& d, KelImageSize z) {
    return keliHLSToBGR_8u_P3C3R(s.inPlanes(), s.step, d.out(), d.step, z);
});

// The wider members: NAME, function, sample type, three- and four-channel layouts.
#define KB_WIDE_HUE(X)                                                                                                 \
    X("RGBToHSV_16u_C3R", keliRGBToHSV_16u_C3R, Kel16u, kC3x16)                                                        \
    X("RGBToHSV_16u_AC4R", keliRGBToHSV_16u_AC4R, Kel16u, kAC4x16)                                                     \
    X("HSVToRGB_16u_C3R", keliHSVToRGB_16u_C3R, Kel16u, kC3x16)                                                        \
    X("HSVToRGB_16u_AC4R", keliHSVToRGB_16u_AC4R, Kel16u, kAC4x16)                                                     \
    X("RGBToHLS_16u_C3R", keliRGBToHLS_16u_C3R, Kel16u, kC3x16)                                                        \
    X("RGBToHLS_16u_AC4R", keliRGBToHLS_16u_AC4R, Kel16u, kAC4x16)                                                     \
    X("HLSToRGB_16u_C3R", keliHLSToRGB_16u_C3R, Kel16u, kC3x16)                                                        \
    X("HLSToRGB_16u_AC4R", keliHLSToRGB_16u_AC4R, Kel16u, kAC4x16)                                                     \
    X("RGBToHLS_16s_C3R", keliRGBToHLS_16s_C3R, Kel16s, kC3x16)                                                        \
    X("RGBToHLS_16s_AC4R", keliRGBToHLS_16s_AC4R, Kel16s, kAC4x16)                                                     \
    X("HLSToRGB_16s_C3R", keliHLSToRGB_16s_C3R, Kel16s, kC3x16)                                                        \
    X("HLSToRGB_16s_AC4R", keliHLSToRGB_16s_AC4R, Kel16s, kAC4x16)                                                     \
    X("RGBToHLS_32f_C3R", keliRGBToHLS_32f_C3R, Kel32f, kC3x32f)                                                       \
    X("RGBToHLS_32f_AC4R", keliRGBToHLS_32f_AC4R, Kel32f, kAC4x32f)                                                    \
    X("HLSToRGB_32f_C3R", keliHLSToRGB_32f_C3R, Kel32f, kC3x32f)                                                       \
    X("HLSToRGB_32f_AC4R", keliHLSToRGB_32f_AC4R, Kel32f, kAC4x32f)

#define KB_WIDE_HUE_ROW(NAME, FUNCTION, T, LAYOUT)                                                                     \
    const Registrar registered##FUNCTION(NAME, LAYOUT, LAYOUT, [](const Frame& s, Frame& d, KelImageSize z) {          \
        return FUNCTION(reinterpret_cast<const T*>(s.in()), s.step, reinterpret_cast<T*>(d.out()), d.step, z);       \
    });
KB_WIDE_HUE(KB_WIDE_HUE_ROW)
#undef KB_WIDE_HUE_ROW
#undef KB_WIDE_HUE

} // namespace

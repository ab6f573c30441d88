// Fuzz target of the colour models: HSV and HLS (pixel order at 8u, 16u, 16s
// and 32f, and the blue-first 8-bit forms between planes, pixel order and
// four-channel layouts), XYZ and LUV, Lab with its 16-bit form, YCC, and gray
// with default or caller weights.
//
// What a member may write: the destination's rows.  That is conservative in
// one way only: an AC4 pixel-order destination keeps its fourth element, which
// is checked separately where the rows don't overlap (elsewhere a later row's
// colour may sit there).  Float sources get any bit pattern (NaN, infinities,
// denormals, huge values), and the caller's gray weights too, or a null
// pointer (the default weights); the weights sit at the end of a page of their
// own and must not change.
//
// Steps: most members turn a byte step into elements by a shift, so the call
// sometimes gets the drawn step (a multiple of the sample size) plus a
// remainder below the sample size, which must change nothing.  The blue-first
// HLS forms, Lab and the float RGB to LUV members take their steps in bytes as
// given, and get whole multiples only.
#include "harness.h"

namespace {

using kfz::Image;
using kfz::Input;
using kfz::pixels;
using kfz::planes;

// A step the member cuts to whole elements of `sampleBytes`: sometimes the
// drawn step plus a remainder the cut takes off again.
int cut(Input& in, int step, int sampleBytes)
{
    return sampleBytes > 1 && in.oneIn(3) ? step + 1 + in.below(sampleBytes - 1) : step;
}

// Calls `call` and, when it went ahead, checks that every pixel of a
// four-channel destination kept its fourth element.
template <typename T, typename Call> KelResult keepingAlpha(const Image& d, KelImageSize z, Call&& call)
{
    const std::int64_t rowBytes = static_cast<std::int64_t>(z.width) * 4 * sizeof(T);
    const bool checked = !d.absent && d.pointers[0] && z.width >= 1 && z.height >= 1 &&
                         (z.height == 1 || std::abs(static_cast<std::int64_t>(d.step())) >= rowBytes);
    const auto alphaAt = [&](int x, int y) {
        return d.pointers[0] + static_cast<std::int64_t>(y) * d.step() + (4 * std::int64_t{x} + 3) * std::int64_t{sizeof(T)};
    };
    std::vector<std::uint8_t> before;
    if (checked)
        for (int y = 0; y < z.height; ++y)
            for (int x = 0; x < z.width; ++x) before.insert(before.end(), alphaAt(x, y), alphaAt(x, y) + sizeof(T));
    const KelResult status = call();
    if (checked && status == kelOk)
        for (int y = 0, i = 0; y < z.height; ++y)
            for (int x = 0; x < z.width; ++x, i += sizeof(T))
                if (std::memcmp(alphaAt(x, y), before.data() + i, sizeof(T)) != 0) {
                    std::snprintf(kfz::record().detail, sizeof kfz::record().detail, "pixel (%d, %d)", x, y);
                    kfz::fail("an AC4 destination's alpha changed");
                }
    return status;
}

// A pixel-order member (pSrc, srcStep, pDst, dstStep, roiSize): its steps cut
// to elements or not, its destination's alpha kept when it has four channels.
template <typename S, typename D, int SrcSamples, int DstSamples, bool Cut,
          KelResult (*F)(const S*, int, D*, int, KelImageSize)>
void pixelOrder(Input& in, const char* name)
{
    kfz::convert(in, name, pixels(SrcSamples, sizeof(S)), pixels(DstSamples, sizeof(D)), 0,
                 [&](Image& s, Image& d, KelImageSize z) {
                     const int ss = Cut ? cut(in, s.step(), sizeof(S)) : s.step();
                     const int ds = Cut ? cut(in, d.step(), sizeof(D)) : d.step();
                     const auto call = [&] { return F(s.ptr<const S>(), ss, d.ptr<D>(), ds, z); };
                     return DstSamples == 4 ? keepingAlpha<D>(d, z, call) : call();
                 });
}

// Gray weights: default (null), plain, or anything a float holds; large
// finite ones overflow the integer sums, which the members don't detect.
float weight(Input& in)
{
    switch (in.u8() % 4) {
    case 0: {
        const float mantissa = static_cast<float>(static_cast<std::int16_t>(in.u16())) / 32768.0f;
        return std::ldexp(mantissa, static_cast<int>(in.u8() % 48) - 8);
    }
    case 1: return static_cast<float>(in.u8()) / 255.0f;
    default: return in.f32();
    }
}

template <typename T, int SrcSamples, KelResult (*F)(const T*, int, T*, int, KelImageSize, const Kel32f*)>
void colorToGray(Input& in, const char* name)
{
    const bool none = in.oneIn(8);
    kfz::Buffer weights(none ? 0 : 3 * sizeof(Kel32f), 0, 1, 0, in.oneIn(2));
    if (!none) {
        const float w[3] = {weight(in), weight(in), weight(in)};
        std::memcpy(weights.origin(), w, sizeof w);
    }
    weights.snapshot();
    const Kel32f* pWeights = none ? nullptr : reinterpret_cast<const Kel32f*>(weights.origin());
    kfz::convert(in, name, pixels(SrcSamples, sizeof(T)), pixels(1, sizeof(T)), 0, [&](Image& s, Image& d, KelImageSize z) {
        const int ss = cut(in, s.step(), sizeof(T)), ds = cut(in, d.step(), sizeof(T));
        return F(s.ptr<const T>(), ss, d.ptr<T>(), ds, z, pWeights);
    });
    if (weights.changed()) kfz::fail("the weights changed");
}

#define CM_PIXELS(F, S, D, SRC_SAMPLES, DST_SAMPLES, CUT) \
    kfz::Member{#F, [](Input& in) { pixelOrder<S, D, SRC_SAMPLES, DST_SAMPLES, CUT, F>(in, #F); }}
// Both directions of a model, C3R and AC4R, at one type.
#define CM_MODEL(TO, FROM, T, CUT)                                  \
    CM_PIXELS(keliRGBTo##TO##_##T##_C3R, Kel##T, Kel##T, 3, 3, CUT),   \
    CM_PIXELS(keliRGBTo##TO##_##T##_AC4R, Kel##T, Kel##T, 4, 4, CUT),  \
    CM_PIXELS(keli##FROM##ToRGB_##T##_C3R, Kel##T, Kel##T, 3, 3, CUT),  \
    CM_PIXELS(keli##FROM##ToRGB_##T##_AC4R, Kel##T, Kel##T, 4, 4, CUT)
#define CM_GRAY(T)                                                                                \
    CM_PIXELS(keliRGBToGray_##T##_C3C1R, Kel##T, Kel##T, 3, 1, true),                                \
    CM_PIXELS(keliRGBToGray_##T##_AC4C1R, Kel##T, Kel##T, 4, 1, true),                               \
    kfz::Member{"keliColorToGray_" #T "_C3C1R",                                                     \
                [](Input& in) { colorToGray<Kel##T, 3, keliColorToGray_##T##_C3C1R>(in, "keliColorToGray_" #T "_C3C1R"); }}, \
    kfz::Member{"keliColorToGray_" #T "_AC4C1R",                                                    \
                [](Input& in) { colorToGray<Kel##T, 4, keliColorToGray_##T##_AC4C1R>(in, "keliColorToGray_" #T "_AC4C1R"); }}

constexpr kfz::Side C3 = pixels(3), C4 = pixels(4), P3 = planes(3), P4 = planes(4);

const kfz::Member kMembers[] = {
    // HSV, pixel order
    CM_PIXELS(keliRGBToHSV_8u_C3R, Kel8u, Kel8u, 3, 3, false),
    CM_PIXELS(keliRGBToHSV_8u_AC4R, Kel8u, Kel8u, 4, 4, false),
    CM_PIXELS(keliHSVToRGB_8u_C3R, Kel8u, Kel8u, 3, 3, false),
    CM_PIXELS(keliHSVToRGB_8u_AC4R, Kel8u, Kel8u, 4, 4, false),
    CM_PIXELS(keliRGBToHSV_16u_C3R, Kel16u, Kel16u, 3, 3, true),
    CM_PIXELS(keliRGBToHSV_16u_AC4R, Kel16u, Kel16u, 4, 4, true),
    CM_PIXELS(keliHSVToRGB_16u_C3R, Kel16u, Kel16u, 3, 3, true),
    CM_PIXELS(keliHSVToRGB_16u_AC4R, Kel16u, Kel16u, 4, 4, true),
    // HLS, pixel order
    CM_MODEL(HLS, HLS, 8u, false),
    CM_MODEL(HLS, HLS, 16u, true),
    CM_MODEL(HLS, HLS, 16s, true),
    CM_MODEL(HLS, HLS, 32f, true),
    // HLS, blue first: one step for all planes, tested
    KFZ_IMAGE(keliBGRToHLS_8u_AP4R, P4, P4, 0, KFZ_P_P, Kel8u, Kel8u),
    KFZ_IMAGE(keliBGRToHLS_8u_AP4C4R, P4, C4, 0, KFZ_P_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliBGRToHLS_8u_AC4P4R, C4, P4, 0, KFZ_C_P, Kel8u, Kel8u),
    KFZ_IMAGE(keliBGRToHLS_8u_P3R, P3, P3, 0, KFZ_P_P, Kel8u, Kel8u),
    KFZ_IMAGE(keliBGRToHLS_8u_P3C3R, P3, C3, 0, KFZ_P_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliBGRToHLS_8u_C3P3R, C3, P3, 0, KFZ_C_P, Kel8u, Kel8u),
    CM_PIXELS(keliBGRToHLS_8u_AC4R, Kel8u, Kel8u, 4, 4, false),
    KFZ_IMAGE(keliHLSToBGR_8u_AP4R, P4, P4, 0, KFZ_P_P, Kel8u, Kel8u),
    KFZ_IMAGE(keliHLSToBGR_8u_AP4C4R, P4, C4, 0, KFZ_P_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliHLSToBGR_8u_AC4P4R, C4, P4, 0, KFZ_C_P, Kel8u, Kel8u),
    KFZ_IMAGE(keliHLSToBGR_8u_P3R, P3, P3, 0, KFZ_P_P, Kel8u, Kel8u),
    KFZ_IMAGE(keliHLSToBGR_8u_P3C3R, P3, C3, 0, KFZ_P_C, Kel8u, Kel8u),
    KFZ_IMAGE(keliHLSToBGR_8u_C3P3R, C3, P3, 0, KFZ_C_P, Kel8u, Kel8u),
    // XYZ and LUV
    CM_MODEL(XYZ, XYZ, 8u, false),
    CM_MODEL(XYZ, XYZ, 16u, true),
    CM_MODEL(XYZ, XYZ, 16s, true),
    CM_MODEL(XYZ, XYZ, 32f, true),
    CM_MODEL(LUV, LUV, 8u, false),
    CM_MODEL(LUV, LUV, 16u, true),
    CM_MODEL(LUV, LUV, 16s, true),
    CM_PIXELS(keliRGBToLUV_32f_C3R, Kel32f, Kel32f, 3, 3, false),
    CM_PIXELS(keliRGBToLUV_32f_AC4R, Kel32f, Kel32f, 4, 4, false),
    CM_PIXELS(keliLUVToRGB_32f_C3R, Kel32f, Kel32f, 3, 3, true),
    CM_PIXELS(keliLUVToRGB_32f_AC4R, Kel32f, Kel32f, 4, 4, true),
    // Lab, steps in bytes on both sides
    CM_PIXELS(keliBGRToLab_8u_C3R, Kel8u, Kel8u, 3, 3, false),
    CM_PIXELS(keliLabToBGR_8u_C3R, Kel8u, Kel8u, 3, 3, false),
    CM_PIXELS(keliBGRToLab_8u16u_C3R, Kel8u, Kel16u, 3, 3, false),
    CM_PIXELS(keliLabToBGR_16u8u_C3R, Kel16u, Kel8u, 3, 3, false),
    // YCC
    CM_MODEL(YCC, YCC, 8u, false),
    CM_MODEL(YCC, YCC, 16u, true),
    CM_MODEL(YCC, YCC, 16s, true),
    CM_MODEL(YCC, YCC, 32f, true),
    // gray
    CM_GRAY(8u),
    CM_GRAY(16u),
    CM_GRAY(16s),
    CM_GRAY(32f),
};

static_assert(std::size(kMembers) == 105, "every member of the family");

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    return kfz::fuzzOne(kMembers, data, size);
}

// Fuzz target of the tone mapping: keliToneMapLinear_32f8u_C1R and
// keliToneMapMean_32f8u_C1R.
//
// The float samples lie in a range drawn from the input (0 .. 1, -1 .. 1,
// 0 .. 1e30, 0 .. 1e-37 so that the gain is huge, -1 .. 0 so that the
// statistic is negative), with or without edge values among them (NaN,
// infinities, -FLT_MAX, denormals), or are raw bit patterns.  What a member
// may write: the destination's rows, and nothing at all when it returns
// kelWarnNegativeMax.  That warning comes before the destination is looked
// at, so a null destination may meet it: the check below then takes the call
// for the refusal it is, nothing written.
#include "harness.h"

namespace {

using kfz::Image;
using kfz::Input;
using kfz::Layout;

using ToneMap = KelResult (*)(const Kel32f*, int, Kel8u*, int, KelImageSize);

void toneMap(Input& in, const char* name, ToneMap f)
{
    static constexpr float kLow[] = {0.0f, -1.0f, 0.0f, 0.0f, -1.0f}, kHigh[] = {1.0f, 1.0f, 1e30f, 1e-37f, 0.0f};
    const int mode = in.u8() % 3, range = in.u8() % 5;
    int w = in.dimension(), h = in.dimension();
    kfz::drawThreads(in);
    if (w >= 1 && h >= 1) kfz::shrink(w, h, 5);
    kfz::convertAt(
        in, name, w, h, kfz::pixels(1, 4), kfz::pixels(1, 1), 0,
        [f](Image& s, Image& d, KelImageSize z) {
            const KelResult status = f(s.ptr<const Kel32f>(), s.step(), d.ptr<Kel8u>(), d.step(), z);
            return status == kelWarnNegativeMax && d.ptr<Kel8u>() == nullptr ? kelErrNullPointer : status;
        },
        [](Layout&, Layout&, int, int) {},
        [mode, range](Image& s, Image&) { kfz::shapeFloats(s, mode, kLow[range], kHigh[range]); });
}

const kfz::Member kMembers[] = {
    {"keliToneMapLinear_32f8u_C1R", [](Input& in) { toneMap(in, "keliToneMapLinear_32f8u_C1R", keliToneMapLinear_32f8u_C1R); }},
    {"keliToneMapMean_32f8u_C1R", [](Input& in) { toneMap(in, "keliToneMapMean_32f8u_C1R", keliToneMapMean_32f8u_C1R); }},
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    return kfz::fuzzOne(kMembers, data, size);
}

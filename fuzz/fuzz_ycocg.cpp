// Fuzz target of the YCoCg family: BGR and signed BGR, three or four channels,
// to and from Y, Co and Cg planes of 16 or 32 bits, plain and reversible.
//
// What a member may write: the destination's rows (all three planes share one
// byte step, as do the channels of a pixel-order side).  A four-channel
// destination also gets `alpha` in the fourth element of every pixel, which is
// checked where the rows don't overlap.  The family tests pointers only: a
// width or height below 1 returns kelOk and must write nothing, which the
// harness checks as for any refused size.
#include "harness.h"

namespace {

using kfz::Image;
using kfz::Input;
using kfz::pixels;
using kfz::planes;

// After a call that went ahead, every pixel of a four-channel destination
// holds `alpha` in its fourth element (rows that overlap are left out: a later
// row's colour may sit there).
template <typename T> void checkAlpha(const Image& d, KelImageSize z, T alpha)
{
    const std::int64_t rowBytes = static_cast<std::int64_t>(z.width) * 4 * sizeof(T);
    if (d.absent || z.width < 1 || z.height < 1) return;
    if (z.height > 1 && std::abs(static_cast<std::int64_t>(d.step())) < rowBytes) return;
    for (int y = 0; y < z.height; ++y)
        for (int x = 0; x < z.width; ++x) {
            T v;
            std::memcpy(&v, d.pointers[0] + static_cast<std::int64_t>(y) * d.step() + (4 * x + 3) * std::int64_t{sizeof(T)},
                        sizeof v);
            if (v != alpha) {
                std::snprintf(kfz::record().detail, sizeof kfz::record().detail, "pixel (%d, %d): alpha %d, not %d", x, y,
                              static_cast<int>(v), static_cast<int>(alpha));
                kfz::fail("a four-channel destination without its alpha");
            }
        }
}

// Planes to four channels with an alpha argument of type A.
template <typename S, typename D, typename A, KelResult (*F)(const S* const[3], int, D*, int, KelImageSize, A)>
void toFour(Input& in, const char* name, kfz::Side src)
{
    const A alpha = static_cast<A>(in.u16());
    kfz::convert(in, name, src, pixels(4, sizeof(D)), 0, [&](Image& s, Image& d, KelImageSize z) {
        const KelResult status = F(s.planes<const S>(), s.step(), d.ptr<D>(), d.step(), z, alpha);
        if (status == kelOk) checkAlpha<D>(d, z, static_cast<D>(alpha));
        return status;
    });
}

#define YCOCG_TO_FOUR(F, S, D, A) \
    kfz::Member{#F, [](Input& in) { toFour<S, D, A, F>(in, #F, planes(3, sizeof(S))); }}

constexpr kfz::Side C3_8u = pixels(3), C4_8u = pixels(4), C3_16s = pixels(3, 2), C4_16s = pixels(4, 2);
constexpr kfz::Side P3_16s = planes(3, 2), P3_32s = planes(3, 4);

const kfz::Member kMembers[] = {
    // plain, forward
    KFZ_IMAGE(keliBGRToYCoCg_8u16s_C3P3R, C3_8u, P3_16s, 0, KFZ_C_P, Kel8u, Kel16s),
    KFZ_IMAGE(keliBGRToYCoCg_8u16s_C4P3R, C4_8u, P3_16s, 0, KFZ_C_P, Kel8u, Kel16s),
    KFZ_IMAGE(keliSBGRToYCoCg_16s_C3P3R, C3_16s, P3_16s, 0, KFZ_C_P, Kel16s, Kel16s),
    KFZ_IMAGE(keliSBGRToYCoCg_16s_C4P3R, C4_16s, P3_16s, 0, KFZ_C_P, Kel16s, Kel16s),
    KFZ_IMAGE(keliSBGRToYCoCg_16s32s_C3P3R, C3_16s, P3_32s, 0, KFZ_C_P, Kel16s, Kel32s),
    KFZ_IMAGE(keliSBGRToYCoCg_16s32s_C4P3R, C4_16s, P3_32s, 0, KFZ_C_P, Kel16s, Kel32s),
    // reversible, forward
    KFZ_IMAGE(keliBGRToYCoCg_Rev_8u16s_C3P3R, C3_8u, P3_16s, 0, KFZ_C_P, Kel8u, Kel16s),
    KFZ_IMAGE(keliBGRToYCoCg_Rev_8u16s_C4P3R, C4_8u, P3_16s, 0, KFZ_C_P, Kel8u, Kel16s),
    KFZ_IMAGE(keliSBGRToYCoCg_Rev_16s_C3P3R, C3_16s, P3_16s, 0, KFZ_C_P, Kel16s, Kel16s),
    KFZ_IMAGE(keliSBGRToYCoCg_Rev_16s_C4P3R, C4_16s, P3_16s, 0, KFZ_C_P, Kel16s, Kel16s),
    KFZ_IMAGE(keliSBGRToYCoCg_Rev_16s32s_C3P3R, C3_16s, P3_32s, 0, KFZ_C_P, Kel16s, Kel32s),
    KFZ_IMAGE(keliSBGRToYCoCg_Rev_16s32s_C4P3R, C4_16s, P3_32s, 0, KFZ_C_P, Kel16s, Kel32s),
    // plain, inverse
    KFZ_IMAGE(keliYCoCgToBGR_16s8u_P3C3R, P3_16s, C3_8u, 0, KFZ_P_C, Kel16s, Kel8u),
    YCOCG_TO_FOUR(keliYCoCgToBGR_16s8u_P3C4R, Kel16s, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCoCgToSBGR_16s_P3C3R, P3_16s, C3_16s, 0, KFZ_P_C, Kel16s, Kel16s),
    YCOCG_TO_FOUR(keliYCoCgToSBGR_16s_P3C4R, Kel16s, Kel16s, Kel16s),
    KFZ_IMAGE(keliYCoCgToSBGR_32s16s_P3C3R, P3_32s, C3_16s, 0, KFZ_P_C, Kel32s, Kel16s),
    YCOCG_TO_FOUR(keliYCoCgToSBGR_32s16s_P3C4R, Kel32s, Kel16s, Kel16s),
    // reversible, inverse
    KFZ_IMAGE(keliYCoCgToBGR_Rev_16s8u_P3C3R, P3_16s, C3_8u, 0, KFZ_P_C, Kel16s, Kel8u),
    YCOCG_TO_FOUR(keliYCoCgToBGR_Rev_16s8u_P3C4R, Kel16s, Kel8u, Kel8u),
    KFZ_IMAGE(keliYCoCgToSBGR_Rev_16s_P3C3R, P3_16s, C3_16s, 0, KFZ_P_C, Kel16s, Kel16s),
    YCOCG_TO_FOUR(keliYCoCgToSBGR_Rev_16s_P3C4R, Kel16s, Kel16s, Kel16s),
    KFZ_IMAGE(keliYCoCgToSBGR_Rev_32s16s_P3C3R, P3_32s, C3_16s, 0, KFZ_P_C, Kel32s, Kel16s),
    YCOCG_TO_FOUR(keliYCoCgToSBGR_Rev_32s16s_P3C4R, Kel32s, Kel16s, Kel16s),
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    return kfz::fuzzOne(kMembers, data, size);
}

// Fuzz target of the bit-depth reduction: the 32 keliReduceBits members, with
// every dither (off, Floyd-Steinberg, Jarvis-Judice-Ninke, Stucki, ordered)
// in its plain and its noise form, and the kinds outside the list.
//
// From the input: the noise (0 mostly, 1 to 100, and -1, 101 and any value),
// the kind (0 to 4 mostly, then 5 and above, negative and any value), the
// levels (2 up to the member's limit mostly, then 0, 1, 257, 65536, 65537,
// negative and any value), and the team size, 1 to 4 threads: the ordered
// dither shares rows among them, the error diffusions give them channels in
// sections.  Float sources lie mostly in 0 .. 1, with edge values among them
// (NaN, infinities, just outside the range), or are raw bit patterns.
//
// What a member may write: the destination's rows, and in the AC4 forms not
// the fourth sample of a pixel, watched wherever rows lie a whole number of
// pixels apart or don't overlap.  The noise and error-diffusion forms
// allocate: kelErrNoMemory is allowed there, with nothing written.
#include "harness.h"

namespace {

using kfz::Image;
using kfz::Input;
using kfz::Layout;

template <typename S, typename D>
using Reduce = KelResult (*)(const S*, int, D*, int, KelImageSize, int, KelDitherKind, int);

int drawNoise(Input& in)
{
    switch (in.u8() % 16) {
    case 8: case 9: case 10: case 11: return 1 + in.u8() % 100;
    case 12: return 100;
    case 13: return 101;
    case 14: return -1;
    case 15: return in.anyInt();
    default: return 0;
    }
}

KelDitherKind drawKind(Input& in)
{
    switch (in.u8() % 16) {
    case 13: return 5 + in.u8();
    case 14: return -1 - in.u8();
    case 15: return in.anyInt();
    default: return in.u8() % 5;
    }
}

int drawLevels(Input& in, int limit)
{
    switch (in.u8() % 16) {
    case 0: return 0;
    case 1: return 1;
    case 2: return 2;
    case 3: return limit;
    case 4: return limit + 1;
    case 5: return 256;
    case 6: return 257;
    case 7: return 65536;
    case 8: return 65537;
    case 9: return -static_cast<int>(in.u16());
    case 10: return in.anyInt();
    default: return 2 + (limit > 256 ? in.u16() % (limit - 1) : in.u8() % (limit - 1));
    }
}

// `samples` a pixel: 1, 3, 4 (AC4, the fourth left alone) or, for C4, 4 with
// `alpha` false.
template <typename S, typename D>
void reduce(Input& in, const char* name, Reduce<S, D> f, int samples, bool alpha, int limit)
{
    const int noise = drawNoise(in);
    const KelDitherKind kind = drawKind(in);
    const int levels = drawLevels(in, limit);
    int mode = 0;
    if constexpr (std::is_same_v<S, Kel32f>) mode = in.u8() % 3;
    const kfz::Side src = kfz::pixels(samples, sizeof(S)), dst = kfz::pixels(samples, sizeof(D));
    int w = in.dimension(), h = in.dimension();
    threads_omp_of_n_kel = 1 + in.u8() % 4;
    if (w >= 1 && h >= 1) kfz::shrink(w, h, kfz::bytesPerPixel(src) + kfz::bytesPerPixel(dst));
    const auto call = [&](Image& s, Image& d, KelImageSize z) {
        char* tail = kfz::record().strides + std::strlen(kfz::record().strides);
        std::snprintf(tail, sizeof kfz::record().strides - (tail - kfz::record().strides),
                      "; noise %d, kind %d, levels %d, threads %d", noise, kind, levels, threads_omp_of_n_kel);
        const kfz::AlphaWatch watch(d, sizeof(D), alpha ? z : KelImageSize{0, 0});
        const KelResult status = f(s.ptr<const S>(), s.step(), d.ptr<D>(), d.step(), z, noise, kind, levels);
        watch.verify(status);
        return status;
    };
    kfz::convertAt(in, name, w, h, src, dst, 0, call, [](Layout&, Layout&, int, int) {},
                   [mode](Image& s, Image&) { kfz::shapeFloats(s, mode, 0.0f, 1.0f); });
}

#define REDUCE(F, S, D, SAMPLES, ALPHA, LIMIT) \
    kfz::Member{#F, [](Input& in) { reduce<S, D>(in, #F, F, SAMPLES, ALPHA, LIMIT); }}
#define REDUCE_ALL(T, S, D, LIMIT)                                \
    REDUCE(keliReduceBits_##T##_C1R, S, D, 1, false, LIMIT),      \
    REDUCE(keliReduceBits_##T##_C3R, S, D, 3, false, LIMIT),      \
    REDUCE(keliReduceBits_##T##_AC4R, S, D, 4, true, LIMIT),      \
    REDUCE(keliReduceBits_##T##_C4R, S, D, 4, false, LIMIT)

const kfz::Member kMembers[] = {
    REDUCE_ALL(8u, Kel8u, Kel8u, 256),
    REDUCE_ALL(16u, Kel16u, Kel16u, 65536),
    REDUCE_ALL(16u8u, Kel16u, Kel8u, 256),
    REDUCE_ALL(16s8u, Kel16s, Kel8u, 256),
    REDUCE_ALL(16s, Kel16s, Kel16s, 65536),
    REDUCE_ALL(32f8u, Kel32f, Kel8u, 256),
    REDUCE_ALL(32f16u, Kel32f, Kel16u, 256),
    REDUCE_ALL(32f16s, Kel32f, Kel16s, 256),
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    return kfz::fuzzOne(kMembers, data, size);
}

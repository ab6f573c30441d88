// Fuzz target of the call frame's services: the small one-channel operations
// (copy, fill, maximum, sum, mean), the aligned allocator and the uniform
// random generator.
#include "harness.h"

namespace {

using kfz::Buffer;
using kfz::Image;
using kfz::Input;
using kfz::Layout;

// keliMax, keliSum and keliMean write one value: the destination "image" is
// that value alone, `bytes` long; a refused size leaves it empty, at the page
// that faults.
auto scalarOut(std::int64_t bytes)
{
    return [bytes](Layout&, Layout& dst, int, int) {
        dst[0] = kfz::PlaneGeometry{};
        dst[0].rowBytes = bytes;
        dst[0].end = 1;
    };
}

void copy(Input& in)
{
    kfz::convert(in, "keliCopy_8u_C1R", kfz::pixels(1), kfz::pixels(1), 0, [](Image& s, Image& d, KelImageSize z) {
        return keliCopy_8u_C1R(s.ptr<const Kel8u>(), s.step(), d.ptr(), d.step(), z);
    });
}

void set(Input& in)
{
    const Kel8u value = in.u8();
    kfz::convert(in, "keliSet_8u_C1R", kfz::kNoImage, kfz::pixels(1), 0,
                 [value](Image&, Image& d, KelImageSize z) { return keliSet_8u_C1R(value, d.ptr(), d.step(), z); });
}

void max(Input& in)
{
    kfz::convert(
        in, "keliMax_32f_C1R", kfz::pixels(1, 4), kfz::pixels(1, 4), 0,
        [](Image& s, Image& d, KelImageSize z) { return keliMax_32f_C1R(s.ptr<const Kel32f>(), s.step(), z, d.ptr<Kel32f>()); },
        scalarOut(sizeof(Kel32f)));
}

void sum(Input& in)
{
    const int hint = in.anyInt();
    kfz::convert(
        in, "keliSum_32f_C1R", kfz::pixels(1, 4), kfz::pixels(1, 8), 0,
        [hint](Image& s, Image& d, KelImageSize z) {
            return keliSum_32f_C1R(s.ptr<const Kel32f>(), s.step(), z, d.ptr<Kel64f>(), hint);
        },
        scalarOut(sizeof(Kel64f)));
}

void mean(Input& in)
{
    const int hint = in.anyInt();
    kfz::convert(
        in, "keliMean_32f_C1R", kfz::pixels(1, 4), kfz::pixels(1, 8), 0,
        [hint](Image& s, Image& d, KelImageSize z) {
            return keliMean_32f_C1R(s.ptr<const Kel32f>(), s.step(), z, d.ptr<Kel64f>(), hint);
        },
        scalarOut(sizeof(Kel64f)));
}

// A block length: non-positive ones (refused: null without a call of the
// hook) or up to 2^18 elements, well inside the 32-bit byte count the
// allocator works in.
int blockLength(Input& in)
{
    const int n = in.dimension();
    return n < 1 ? n : std::min(n, 1 << 18);
}

// A block is len elements, 32-byte aligned, all of it writable (AddressSanitizer
// watches the allocation behind it), and goes back through kelsFree.
template <typename T> void allocate(Input& in, const char* name, T* (*alloc)(int))
{
    kfz::record() = kfz::CallRecord{};
    kfz::record().name = name;
    const int len = blockLength(in);
    kfz::record().size = {len, 1};
    T* block = alloc(len);
    if (len < 1) {
        if (block) kfz::fail("a block for a length below 1");
        return;
    }
    if (!block) return;  // out of memory: allowed
    if (reinterpret_cast<std::uintptr_t>(block) % 32 != 0) kfz::fail("a block not 32-byte aligned");
    in.pixels(reinterpret_cast<std::uint8_t*>(block), static_cast<std::size_t>(len) * sizeof(T));
    kelsFree(block);
}

void malloc16s(Input& in) { allocate(in, "kelsMalloc_16s", kelsMalloc_16s); }
void malloc16u(Input& in) { allocate(in, "kelsMalloc_16u", kelsMalloc_16u); }
void malloc32f(Input& in) { allocate(in, "kelsMalloc_32f", kelsMalloc_32f); }
void freeNull(Input&) { kelsFree(nullptr); }

// The generator's two record types and their functions.
struct Rand16s {
    using State = KelRandUniformState_16s;
    using Other = KelRandUniformState_32f;
    using Sample = Kel16s;
    static constexpr const char* name = "kelsRandUniform_16s";
    static KelResult init(State** p, Input& in)
    {
        const auto low = static_cast<Kel16s>(in.u16()), high = static_cast<Kel16s>(in.u16());
        return kelsRandUniformInitAlloc_16s(p, low, high, in.u32());
    }
    static KelResult draw(Sample* dst, int len, State* s) { return kelsRandUniform_16s(dst, len, s); }
    static KelResult drawOther(Sample* dst, int len, Other* s) { return kelsRandUniform_16s(dst, len, reinterpret_cast<State*>(s)); }
    static KelResult release(State* s) { return kelsRandUniformFree_16s(s); }
};
struct Rand32f {
    using State = KelRandUniformState_32f;
    using Other = KelRandUniformState_16s;
    using Sample = Kel32f;
    static constexpr const char* name = "kelsRandUniform_32f";
    static KelResult init(State** p, Input& in)
    {
        const float low = in.f32(), high = in.f32();
        return kelsRandUniformInitAlloc_32f(p, low, high, in.u32());
    }
    static KelResult draw(Sample* dst, int len, State* s) { return kelsRandUniform_32f(dst, len, s); }
    static KelResult drawOther(Sample* dst, int len, Other* s) { return kelsRandUniform_32f(dst, len, reinterpret_cast<State*>(s)); }
    static KelResult release(State* s) { return kelsRandUniformFree_32f(s); }
};

// A record made, a few runs of samples drawn into guarded buffers of their
// length (each may write those samples only), a record of the other type
// refused with kelErrContext and nothing written, then freed.
template <typename R> void random(Input& in)
{
    using Other = typename R::Other;
    kfz::record() = kfz::CallRecord{};
    kfz::record().name = R::name;
    if (in.oneIn(16)) {
        const KelResult s = R::init(nullptr, in);
        kfz::record().status = s;
        if (s != kelErrNullPointer) kfz::fail("a null record address was accepted");
        return;
    }
    typename R::State* state = nullptr;
    KelResult s = R::init(&state, in);
    kfz::record().status = s;
    if (s == kelErrNoMemory) return;
    if (s != kelOk || !state) kfz::fail("a record could not be made");
    Other* other = nullptr;
    if (in.oneIn(4)) {
        using OtherRand = std::conditional_t<std::is_same_v<R, Rand16s>, Rand32f, Rand16s>;
        if (OtherRand::init(&other, in) != kelOk) other = nullptr;
    }
    for (int run = 1 + in.u8() % 4; run > 0; --run) {
        int len = in.dimension();
        if (len > (1 << 16)) len = 1 << 16;
        const bool wrongType = other && in.oneIn(3);
        const bool nullDst = in.oneIn(24);
        const std::int64_t bytes = len < 1 ? 0 : static_cast<std::int64_t>(len) * sizeof(typename R::Sample);
        Buffer dst(bytes, 0, 1, 0, in.oneIn(4));
        dst.fill(in);
        dst.snapshot();
        auto* p = nullDst ? nullptr : reinterpret_cast<typename R::Sample*>(dst.origin());
        kfz::record().size = {len, 1};
        s = wrongType ? R::drawOther(p, len, other) : R::draw(p, len, state);
        kfz::record().status = s;
        if (!kfz::knownStatus(s)) kfz::fail("status outside the library's codes");
        if (wrongType && !nullDst && len >= 1 && s != kelErrContext) kfz::fail("a record of the other type was used");
        if (nullDst && s != kelErrNullPointer) kfz::fail("a null destination was accepted");
        if (s != kelOk || len < 1) {
            if (dst.changed()) kfz::fail("a refused draw wrote");
        } else if (dst.changedOutside(bytes, 0, 1) != INT64_MIN) {
            kfz::fail("a draw wrote past its samples");
        }
    }
    if (other) {
        if (R::release(reinterpret_cast<typename R::State*>(other)) != kelErrContext) kfz::fail("freed a record of the other type");
        using OtherRand = std::conditional_t<std::is_same_v<R, Rand16s>, Rand32f, Rand16s>;
        if (OtherRand::release(other) != kelOk) kfz::fail("a record could not be freed");
    }
    if (R::release(state) != kelOk) kfz::fail("a record could not be freed");
}

void random16s(Input& in) { random<Rand16s>(in); }
void random32f(Input& in) { random<Rand32f>(in); }
void randomNull(Input&)
{
    Kel16s s16 = 0;
    Kel32f s32 = 0;
    if (kelsRandUniform_16s(&s16, 1, nullptr) != kelErrNullPointer || kelsRandUniform_32f(&s32, 1, nullptr) != kelErrNullPointer ||
        kelsRandUniformFree_16s(nullptr) != kelErrNullPointer || kelsRandUniformFree_32f(nullptr) != kelErrNullPointer)
        kfz::fail("a null record was accepted");
}

const kfz::Member kMembers[] = {
    {"keliCopy_8u_C1R", copy},
    {"keliSet_8u_C1R", set},
    {"keliMax_32f_C1R", max},
    {"keliSum_32f_C1R", sum},
    {"keliMean_32f_C1R", mean},
    {"kelsMalloc_16s", malloc16s},
    {"kelsMalloc_16u", malloc16u},
    {"kelsMalloc_32f", malloc32f},
    {"kelsFree", freeNull},
    {"kelsRandUniform_16s", random16s},
    {"kelsRandUniform_32f", random32f},
    {"kelsRandUniformFree_16s", randomNull},
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    return kfz::fuzzOne(kMembers, data, size);
}

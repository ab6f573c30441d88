// Fuzz target of the tone curve and the colour twist: keliGammaFwd and
// keliGammaInv at 8u, 16u and 32f, keliColorTwist32f at 8u, 8s, 16u and 16s,
// and keliColorTwist at 32f, in every layout, the in-place forms included.
//
// What a member may write: the destination's rows (the image itself in place;
// each plane's rows in the P3 forms), but in the AC4 forms not the fourth
// sample of a pixel, which is watched wherever rows lie a whole number of
// pixels apart or don't overlap.  The 16u gamma members go through a table
// built for the call when an image has more than 65536 treated samples: one
// run of theirs in eight draws such an image on purpose (up to some 42000
// pixels, 21845 and 21846 among them, the last direct and the first table
// size).  The 32f gamma range comes from the input, equal or reversed ends,
// NaN and infinities included, and the samples mostly lie in it.  The twist
// matrix comes from the input too (NaN, infinities, huge and denormal
// entries), in a guarded block of its own that a member may read but neither
// write nor read past; rarely it is null.
#include "harness.h"

namespace {

using kfz::Image;
using kfz::Input;
using kfz::Layout;

enum class Form { C3, AC4, P3, C4 };

constexpr kfz::Side sideOf(Form f, int sampleBytes)
{
    switch (f) {
    case Form::C3: return kfz::pixels(3, sampleBytes);
    case Form::P3: return kfz::planes(3, sampleBytes);
    default: return kfz::pixels(4, sampleBytes);
    }
}

constexpr unsigned kR = 0, kI = kfz::kInPlace;

// The in-place shapes in the form of the others: one sample type.
#define I_C(F, S, D, ...) KFZ_I_C(F, S __VA_OPT__(,) __VA_ARGS__)
#define I_P(F, S, D, ...) KFZ_I_P(F, S __VA_OPT__(,) __VA_ARGS__)

const auto noAdjust = [](Layout&, Layout&, int, int) {};
const auto noPrepare = [](Image&, Image&) {};

// The AC4 forms leave the fourth sample alone: their calls are watched.
template <Form F, typename Call> auto watched(int sampleBytes, Call call)
{
    if constexpr (F == Form::AC4) return kfz::keepsAlpha(sampleBytes, call);
    else return call;
}

// The size of a call: as convert() draws it, or, for a 16u gamma member once
// in eight runs, an image of 21845 pixels (65535 treated samples, the largest
// direct one), 21846 (65538, the smallest through the table) or up to 41845.
// Such an image keeps well inside kMaxSpan: 8 bytes a pixel at most.
void drawSize(Input& in, bool tablePath, const kfz::Side& side, int& w, int& h)
{
    w = in.dimension();
    h = in.dimension();
    kfz::drawThreads(in);
    if (tablePath && in.oneIn(8)) {
        switch (in.u8() % 4) {
        case 0: w = 21845, h = 1; break;
        case 1: w = 21846, h = 1; break;
        default: {
            const int pixels = 21846 + in.below(20000);
            w = 1 + in.below(4096);
            h = (pixels + w - 1) / w;
        }
        }
        return;
    }
    if (w >= 1 && h >= 1) kfz::shrink(w, h, 2 * kfz::bytesPerPixel(side));
}

// ---- gamma --------------------------------------------------------------------

template <typename T, Form F, typename Call> void gamma(Input& in, const char* name, unsigned flags, Call call)
{
    constexpr kfz::Side side = sideOf(F, sizeof(T));
    int w, h;
    drawSize(in, sizeof(T) == 2, side, w, h);
    kfz::convertAt(in, name, w, h, side, side, flags, watched<F>(sizeof(T), call), noAdjust, noPrepare);
}

// The range of a 32f call: mostly 0 .. 1, 0 .. 255 or 0 .. 65535; else equal
// ends, or any two floats (reversed, NaN, infinite, huge, denormal).
void drawRange(Input& in, float& lo, float& hi)
{
    switch (in.u8() % 8) {
    case 0: lo = 0.0f, hi = 1.0f; break;
    case 1: lo = 0.0f, hi = 255.0f; break;
    case 2: lo = 0.0f, hi = 65535.0f; break;
    case 3: lo = hi = in.f32(); break;
    default: lo = in.f32(), hi = in.f32(); break;
    }
}

template <Form F, typename Call> void gamma32(Input& in, const char* name, unsigned flags, float lo, float hi, Call call)
{
    constexpr kfz::Side side = sideOf(F, 4);
    const int mode = in.u8() % 3;
    int w, h;
    drawSize(in, false, side, w, h);
    kfz::convertAt(in, name, w, h, side, side, flags, watched<F>(4, call), noAdjust,
                   [mode, lo, hi](Image& s, Image&) { kfz::shapeFloats(s, mode, lo, hi); });
}

#define GAMMA(F, T, FORM, FLAGS, SHAPE) \
    kfz::Member{#F, [](Input& in) { gamma<T, Form::FORM>(in, #F, FLAGS, SHAPE(F, T, T)); }}
#define GAMMA32(F, FORM, FLAGS, SHAPE)                                                  \
    kfz::Member{#F, [](Input& in) {                                                    \
                    float lo, hi;                                                      \
                    drawRange(in, lo, hi);                                             \
                    gamma32<Form::FORM>(in, #F, FLAGS, lo, hi, SHAPE(F, Kel32f, Kel32f, lo, hi)); \
                }}

// ---- colour twist -------------------------------------------------------------

// A matrix of 12 floats (16 for the four-channel form) in a guarded block of
// its own: an identity with a constant, entries of any value (the edges more
// likely), small fractions, or raw bit patterns.
class Matrix {
public:
    Matrix(Input& in, int count) : block_(4 * count, 0, 1, 0, in.oneIn(2))
    {
        const int mode = in.u8() % 4;
        for (int i = 0; i < count; ++i) {
            float f;
            switch (mode) {
            case 0: f = i % 5 == 0 ? 1.0f : (count == 12 && i % 4 == 3 ? in.f32() : 0.0f); break;
            case 1: f = in.f32(); break;
            case 2: f = static_cast<float>(static_cast<std::int8_t>(in.u8())) / 16.0f; break;
            default: {
                const std::uint32_t bits = in.u32();
                std::memcpy(&f, &bits, sizeof f);
            }
            }
            std::memcpy(block_.origin() + 4 * i, &f, sizeof f);
        }
        entries_ = reinterpret_cast<const Kel32f*>(block_.origin());
        absent_ = in.oneIn(24);
        block_.snapshot();
    }

    const Kel32f* get() const { return absent_ ? nullptr : entries_; }

    // After the call: the matrix is read only, and a null one is refused.
    void verify() const
    {
        if (block_.changed()) kfz::fail("the matrix changed");
        if (absent_ && kfz::record().status != kelErrNullPointer) kfz::fail("a null matrix was accepted");
    }

private:
    kfz::Buffer block_;
    const Kel32f* entries_ = nullptr;
    bool absent_ = false;
};

// Integer samples as they come; float samples mostly in 0 .. 1, 0 .. 255 or
// -1e6 .. 1e6, or raw.
template <typename T, Form F, typename Call> void twist(Input& in, const char* name, unsigned flags, const Matrix& m, Call call)
{
    constexpr kfz::Side side = sideOf(F, sizeof(T));
    static constexpr float kLow[] = {0.0f, 0.0f, -1e6f}, kHigh[] = {1.0f, 255.0f, 1e6f};
    int mode = 0, range = 0;
    if constexpr (std::is_same_v<T, Kel32f>) {
        mode = in.u8() % 3;
        range = in.u8() % 3;
    }
    int w, h;
    drawSize(in, false, side, w, h);
    kfz::convertAt(in, name, w, h, side, side, flags, watched<F>(sizeof(T), call), noAdjust,
                   [mode, range](Image& s, Image&) { kfz::shapeFloats(s, mode, kLow[range], kHigh[range]); });
    m.verify();
}

#define TWIST(F, T, FORM, FLAGS, SHAPE)                                              \
    kfz::Member{#F, [](Input& in) {                                                 \
                    const Matrix m(in, Form::FORM == Form::C4 ? 16 : 12);           \
                    const Kel32f* t = m.get();                                      \
                    twist<T, Form::FORM>(in, #F, FLAGS, m, SHAPE(F, T, T, t));       \
                }}

const kfz::Member kMembers[] = {
    GAMMA(keliGammaFwd_8u_C3R, Kel8u, C3, kR, KFZ_C_C),
    GAMMA(keliGammaFwd_8u_C3IR, Kel8u, C3, kI, I_C),
    GAMMA(keliGammaFwd_8u_AC4R, Kel8u, AC4, kR, KFZ_C_C),
    GAMMA(keliGammaFwd_8u_AC4IR, Kel8u, AC4, kI, I_C),
    GAMMA(keliGammaFwd_8u_P3R, Kel8u, P3, kR, KFZ_P_P),
    GAMMA(keliGammaFwd_8u_IP3R, Kel8u, P3, kI, I_P),
    GAMMA(keliGammaFwd_16u_C3R, Kel16u, C3, kR, KFZ_C_C),
    GAMMA(keliGammaFwd_16u_C3IR, Kel16u, C3, kI, I_C),
    GAMMA(keliGammaFwd_16u_AC4R, Kel16u, AC4, kR, KFZ_C_C),
    GAMMA(keliGammaFwd_16u_AC4IR, Kel16u, AC4, kI, I_C),
    GAMMA(keliGammaFwd_16u_P3R, Kel16u, P3, kR, KFZ_P_P),
    GAMMA(keliGammaFwd_16u_IP3R, Kel16u, P3, kI, I_P),
    GAMMA32(keliGammaFwd_32f_C3R, C3, kR, KFZ_C_C),
    GAMMA32(keliGammaFwd_32f_C3IR, C3, kI, I_C),
    GAMMA32(keliGammaFwd_32f_AC4R, AC4, kR, KFZ_C_C),
    GAMMA32(keliGammaFwd_32f_AC4IR, AC4, kI, I_C),
    GAMMA32(keliGammaFwd_32f_P3R, P3, kR, KFZ_P_P),
    GAMMA32(keliGammaFwd_32f_IP3R, P3, kI, I_P),
    GAMMA(keliGammaInv_8u_C3R, Kel8u, C3, kR, KFZ_C_C),
    GAMMA(keliGammaInv_8u_C3IR, Kel8u, C3, kI, I_C),
    GAMMA(keliGammaInv_8u_AC4R, Kel8u, AC4, kR, KFZ_C_C),
    GAMMA(keliGammaInv_8u_AC4IR, Kel8u, AC4, kI, I_C),
    GAMMA(keliGammaInv_8u_P3R, Kel8u, P3, kR, KFZ_P_P),
    GAMMA(keliGammaInv_8u_IP3R, Kel8u, P3, kI, I_P),
    GAMMA(keliGammaInv_16u_C3R, Kel16u, C3, kR, KFZ_C_C),
    GAMMA(keliGammaInv_16u_C3IR, Kel16u, C3, kI, I_C),
    GAMMA(keliGammaInv_16u_AC4R, Kel16u, AC4, kR, KFZ_C_C),
    GAMMA(keliGammaInv_16u_AC4IR, Kel16u, AC4, kI, I_C),
    GAMMA(keliGammaInv_16u_P3R, Kel16u, P3, kR, KFZ_P_P),
    GAMMA(keliGammaInv_16u_IP3R, Kel16u, P3, kI, I_P),
    GAMMA32(keliGammaInv_32f_C3R, C3, kR, KFZ_C_C),
    GAMMA32(keliGammaInv_32f_C3IR, C3, kI, I_C),
    GAMMA32(keliGammaInv_32f_AC4R, AC4, kR, KFZ_C_C),
    GAMMA32(keliGammaInv_32f_AC4IR, AC4, kI, I_C),
    GAMMA32(keliGammaInv_32f_P3R, P3, kR, KFZ_P_P),
    GAMMA32(keliGammaInv_32f_IP3R, P3, kI, I_P),

    TWIST(keliColorTwist32f_8u_C3R, Kel8u, C3, kR, KFZ_C_C),
    TWIST(keliColorTwist32f_8u_C3IR, Kel8u, C3, kI, I_C),
    TWIST(keliColorTwist32f_8u_AC4R, Kel8u, AC4, kR, KFZ_C_C),
    TWIST(keliColorTwist32f_8u_AC4IR, Kel8u, AC4, kI, I_C),
    TWIST(keliColorTwist32f_8u_P3R, Kel8u, P3, kR, KFZ_P_P),
    TWIST(keliColorTwist32f_8u_IP3R, Kel8u, P3, kI, I_P),
    TWIST(keliColorTwist32f_8s_C3R, Kel8s, C3, kR, KFZ_C_C),
    TWIST(keliColorTwist32f_8s_C3IR, Kel8s, C3, kI, I_C),
    TWIST(keliColorTwist32f_8s_AC4R, Kel8s, AC4, kR, KFZ_C_C),
    TWIST(keliColorTwist32f_8s_AC4IR, Kel8s, AC4, kI, I_C),
    TWIST(keliColorTwist32f_8s_P3R, Kel8s, P3, kR, KFZ_P_P),
    TWIST(keliColorTwist32f_8s_IP3R, Kel8s, P3, kI, I_P),
    TWIST(keliColorTwist32f_16u_C3R, Kel16u, C3, kR, KFZ_C_C),
    TWIST(keliColorTwist32f_16u_C3IR, Kel16u, C3, kI, I_C),
    TWIST(keliColorTwist32f_16u_AC4R, Kel16u, AC4, kR, KFZ_C_C),
    TWIST(keliColorTwist32f_16u_AC4IR, Kel16u, AC4, kI, I_C),
    TWIST(keliColorTwist32f_16u_P3R, Kel16u, P3, kR, KFZ_P_P),
    TWIST(keliColorTwist32f_16u_IP3R, Kel16u, P3, kI, I_P),
    TWIST(keliColorTwist32f_16s_C3R, Kel16s, C3, kR, KFZ_C_C),
    TWIST(keliColorTwist32f_16s_C3IR, Kel16s, C3, kI, I_C),
    TWIST(keliColorTwist32f_16s_AC4R, Kel16s, AC4, kR, KFZ_C_C),
    TWIST(keliColorTwist32f_16s_AC4IR, Kel16s, AC4, kI, I_C),
    TWIST(keliColorTwist32f_16s_P3R, Kel16s, P3, kR, KFZ_P_P),
    TWIST(keliColorTwist32f_16s_IP3R, Kel16s, P3, kI, I_P),
    TWIST(keliColorTwist_32f_C3R, Kel32f, C3, kR, KFZ_C_C),
    TWIST(keliColorTwist_32f_C3IR, Kel32f, C3, kI, I_C),
    TWIST(keliColorTwist_32f_AC4R, Kel32f, AC4, kR, KFZ_C_C),
    TWIST(keliColorTwist_32f_AC4IR, Kel32f, AC4, kI, I_C),
    TWIST(keliColorTwist_32f_P3R, Kel32f, P3, kR, KFZ_P_P),
    TWIST(keliColorTwist_32f_IP3R, Kel32f, P3, kI, I_P),
    TWIST(keliColorTwist_32f_C4R, Kel32f, C4, kR, KFZ_C_C),
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    return kfz::fuzzOne(kMembers, data, size);
}

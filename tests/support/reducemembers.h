// The 32 members of the bit-depth reduction, and their samples as bytes, for
// the tests of its engines: a table of every member with its sample types
// and layout, what the arithmetic takes a source sample to be, and how a
// destination sample reads on the unsigned scale.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <ostream>
#include <vector>

#include "kelcc.h"

namespace kt::reducebits {

using Ld = long double;
static_assert(std::numeric_limits<Ld>::digits == 64, "the models evaluate in the 80-bit extended type");

// The bias added before each truncation of the level arithmetic: the double
// nearest 9e-6, widened exactly.
inline const Ld kBias = static_cast<Ld>(0.000009);

// ---- the 32 members ------------------------------------------------------------------------

enum class Tag { U8, U16U8, S16U8, U16, S16, F8U, F16U, F16S };

using ReduceCall = KelResult (*)(const void* src, int srcStep, void* dst, int dstStep, KelImageSize size,
                                 int noisePercent, int ditherKind, int levels);

template <typename S, typename D, KelResult (*F)(const S*, int, D*, int, KelImageSize, int, KelDitherKind, int)>
KelResult reduce(const void* src, int srcStep, void* dst, int dstStep, KelImageSize size, int noise, int kind,
                 int levels)
{
    return F(static_cast<const S*>(src), srcStep, static_cast<D*>(dst), dstStep, size, noise, kind, levels);
}

struct Member {
    const char* name;
    ReduceCall call;
    Tag tag;
    int srcBytes, dstBytes;
    int pitch, channels;  // samples a pixel, channels processed
    int maxLevels;
};

#define MEMBER(F, S, D, TAG, PITCH, CHANNELS, MAX) \
    {#F, reduce<S, D, F>, Tag::TAG, int(sizeof(S)), int(sizeof(D)), PITCH, CHANNELS, MAX}
inline const Member kMembers[] = {
    MEMBER(keliReduceBits_8u_C1R, Kel8u, Kel8u, U8, 1, 1, 256),
    MEMBER(keliReduceBits_8u_C3R, Kel8u, Kel8u, U8, 3, 3, 256),
    MEMBER(keliReduceBits_8u_AC4R, Kel8u, Kel8u, U8, 4, 3, 256),
    MEMBER(keliReduceBits_8u_C4R, Kel8u, Kel8u, U8, 4, 4, 256),
    MEMBER(keliReduceBits_16u_C1R, Kel16u, Kel16u, U16, 1, 1, 65536),
    MEMBER(keliReduceBits_16u_C3R, Kel16u, Kel16u, U16, 3, 3, 65536),
    MEMBER(keliReduceBits_16u_AC4R, Kel16u, Kel16u, U16, 4, 3, 65536),
    MEMBER(keliReduceBits_16u_C4R, Kel16u, Kel16u, U16, 4, 4, 65536),
    MEMBER(keliReduceBits_16u8u_C1R, Kel16u, Kel8u, U16U8, 1, 1, 256),
    MEMBER(keliReduceBits_16u8u_C3R, Kel16u, Kel8u, U16U8, 3, 3, 256),
    MEMBER(keliReduceBits_16u8u_AC4R, Kel16u, Kel8u, U16U8, 4, 3, 256),
    MEMBER(keliReduceBits_16u8u_C4R, Kel16u, Kel8u, U16U8, 4, 4, 256),
    MEMBER(keliReduceBits_16s8u_C1R, Kel16s, Kel8u, S16U8, 1, 1, 256),
    MEMBER(keliReduceBits_16s8u_C3R, Kel16s, Kel8u, S16U8, 3, 3, 256),
    MEMBER(keliReduceBits_16s8u_AC4R, Kel16s, Kel8u, S16U8, 4, 3, 256),
    MEMBER(keliReduceBits_16s8u_C4R, Kel16s, Kel8u, S16U8, 4, 4, 256),
    MEMBER(keliReduceBits_16s_C1R, Kel16s, Kel16s, S16, 1, 1, 65536),
    MEMBER(keliReduceBits_16s_C3R, Kel16s, Kel16s, S16, 3, 3, 65536),
    MEMBER(keliReduceBits_16s_AC4R, Kel16s, Kel16s, S16, 4, 3, 65536),
    MEMBER(keliReduceBits_16s_C4R, Kel16s, Kel16s, S16, 4, 4, 65536),
    MEMBER(keliReduceBits_32f8u_C1R, Kel32f, Kel8u, F8U, 1, 1, 256),
    MEMBER(keliReduceBits_32f8u_C3R, Kel32f, Kel8u, F8U, 3, 3, 256),
    MEMBER(keliReduceBits_32f8u_AC4R, Kel32f, Kel8u, F8U, 4, 3, 256),
    MEMBER(keliReduceBits_32f8u_C4R, Kel32f, Kel8u, F8U, 4, 4, 256),
    MEMBER(keliReduceBits_32f16u_C1R, Kel32f, Kel16u, F16U, 1, 1, 256),
    MEMBER(keliReduceBits_32f16u_C3R, Kel32f, Kel16u, F16U, 3, 3, 256),
    MEMBER(keliReduceBits_32f16u_AC4R, Kel32f, Kel16u, F16U, 4, 3, 256),
    MEMBER(keliReduceBits_32f16u_C4R, Kel32f, Kel16u, F16U, 4, 4, 256),
    MEMBER(keliReduceBits_32f16s_C1R, Kel32f, Kel16s, F16S, 1, 1, 256),
    MEMBER(keliReduceBits_32f16s_C3R, Kel32f, Kel16s, F16S, 3, 3, 256),
    MEMBER(keliReduceBits_32f16s_AC4R, Kel32f, Kel16s, F16S, 4, 3, 256),
    MEMBER(keliReduceBits_32f16s_C4R, Kel32f, Kel16s, F16S, 4, 4, 256),
};

inline void PrintTo(const Member& m, std::ostream* os) { *os << m.name; }

inline bool floatSource(Tag t) { return t == Tag::F8U || t == Tag::F16U || t == Tag::F16S; }
inline bool signedSource(Tag t) { return t == Tag::S16U8 || t == Tag::S16; }
inline bool signedDestination(Tag t) { return t == Tag::S16 || t == Tag::F16S; }
// The scale of the source values: 255, 65535, or 1 for floats.
inline int sourceRange(Tag t) { return t == Tag::U8 ? 255 : floatSource(t) ? 1 : 65535; }
inline int topOf(const Member& m) { return m.dstBytes == 1 ? 255 : 65535; }

inline std::vector<Member> membersWhere(bool (*keep)(const Member&))
{
    std::vector<Member> out;
    for (const Member& m : kMembers)
        if (keep(m)) out.push_back(m);
    return out;
}

// ---- samples as bytes ------------------------------------------------------------------------

// The value the arithmetic takes for the sample at p: 16s moved up by 32768.
inline Ld sourceValue(Tag t, const std::uint8_t* p)
{
    if (t == Tag::U8) return *p;
    if (floatSource(t)) {
        float f;
        std::memcpy(&f, p, 4);
        return f;
    }
    std::uint16_t bits;
    std::memcpy(&bits, p, 2);
    return signedSource(t) ? Ld(std::int16_t(bits)) + 32768 : Ld(bits);
}

// Stores a source value (0..range for integers, any float for floats).
inline void putSource(Tag t, std::uint8_t* p, Ld value)
{
    if (t == Tag::U8) {
        *p = std::uint8_t(value);
    } else if (floatSource(t)) {
        const float f = float(value);
        std::memcpy(p, &f, 4);
    } else {
        const std::uint16_t bits =
            signedSource(t) ? std::uint16_t(std::int16_t(int(value) - 32768)) : std::uint16_t(value);
        std::memcpy(p, &bits, 2);
    }
}

// A destination sample on the unsigned scale (16s moved up by 32768).
inline int outputAt(const Member& m, const std::uint8_t* p)
{
    if (m.dstBytes == 1) return *p;
    std::uint16_t bits;
    std::memcpy(&bits, p, 2);
    return signedDestination(m.tag) ? int(std::int16_t(bits)) + 32768 : int(bits);
}

inline void putOutput(const Member& m, std::uint8_t* p, int o)
{
    if (m.dstBytes == 1) {
        *p = std::uint8_t(o);
        return;
    }
    const std::uint16_t bits = signedDestination(m.tag) ? std::uint16_t(std::int16_t(o - 32768)) : std::uint16_t(o);
    std::memcpy(p, &bits, 2);
}


// The output of level `index` (value w, 8.8 step F for 8u sources) on the
// unsigned scale, saturated to the destination's range: a step up past the
// top level gives the top.
inline int levelOutput(const Member& m, int F, int index, Ld w)
{
    long long o = 0;
    switch (m.tag) {
    case Tag::U8: o = (std::uint32_t(index) * std::uint32_t(F)) >> 8; break;
    case Tag::U16U8:
    case Tag::S16U8: o = std::int32_t(w + kBias) >> 8; break;
    case Tag::U16:
    case Tag::S16: o = std::int32_t(w + kBias); break;
    case Tag::F8U: o = std::int32_t(w * 255 + kBias); break;
    case Tag::F16U:
    case Tag::F16S: o = std::int32_t(w * 65535 + kBias); break;
    }
    return int(std::clamp<long long>(o, 0, topOf(m)));
}

// Where two byte strings first differ, or -1 (0 when their sizes differ).
inline long firstDifference(const std::vector<std::uint8_t>& a, const std::vector<std::uint8_t>& b)
{
    if (a.size() != b.size()) return 0;
    const auto at = std::mismatch(a.begin(), a.end(), b.begin());
    return at.first == a.end() ? -1 : long(at.first - a.begin());
}

} // namespace kt::reducebits

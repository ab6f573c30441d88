// The four sample types of the colour-model tests, and samples read and
// written at any byte address as long doubles (images with odd byte steps).
#pragma once

#include <cstring>

#include "kelcc.h"

namespace kt {

enum class Type { U8, U16, S16, F32 };

inline int bytesOf(Type t) { return t == Type::U8 ? 1 : t == Type::F32 ? 4 : 2; }
inline long double lowest(Type t) { return t == Type::S16 ? -32768 : 0; }
// What 1.0 maps to: 255, 65535 (16s: the 16u coding moved), 1 for floats.
inline long double top(Type t) { return t == Type::U8 ? 255 : t == Type::F32 ? 1 : 65535; }

inline long double load(Type t, const void* p)
{
    switch (t) {
    case Type::U8: return *static_cast<const Kel8u*>(p);
    case Type::U16: { Kel16u v; std::memcpy(&v, p, 2); return v; }
    case Type::S16: { Kel16s v; std::memcpy(&v, p, 2); return v; }
    case Type::F32: { Kel32f v; std::memcpy(&v, p, 4); return v; }
    }
    return 0;
}

inline void storeSample(Type t, void* p, long double v)
{
    switch (t) {
    case Type::U8: *static_cast<Kel8u*>(p) = static_cast<Kel8u>(v); break;
    case Type::U16: { const Kel16u s = static_cast<Kel16u>(v); std::memcpy(p, &s, 2); break; }
    case Type::S16: { const Kel16s s = static_cast<Kel16s>(v); std::memcpy(p, &s, 2); break; }
    case Type::F32: { const Kel32f s = static_cast<Kel32f>(v); std::memcpy(p, &s, 4); break; }
    }
}

} // namespace kt

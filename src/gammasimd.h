// Vector rows of the 16-bit and float BT.709 curves: the power in double
// lanes, each result the scalar kernel's wherever a derived bound decides the
// rounding, the scalar kernel's own value elsewhere.  Chosen once a call for
// the processor at hand.
#pragma once

#include <cstdint>

#include "kelcc.h"

namespace kel::gamma {

// A float call's range as the kernels use it.
struct Range32f {
    long double low;
    long double scale;    // 1 / (high - low), held as a double
    long double range32;  // high - low, rounded to a float
};
Range32f rangeOf(Kel32f low, Kel32f high);

// The scalar kernels, one sample each: the reference, and what the vector
// rows hand the samples they refuse.
Kel16u gammaFwd16(int v);
Kel16u gammaInv16(int v);
Kel32f gammaFwd32(Kel32f sample, const Range32f& r);
Kel32f gammaInv32(Kel32f sample, const Range32f& r);

// Samples [0, count) of a contiguous run, src to dst (which may be src):
// whole vector steps by the vector code, the last partial step by the scalar
// kernel; returns how many samples of the whole steps the bound refused.
using Row16u = std::int64_t (*)(const Kel16u* src, Kel16u* dst, std::int64_t count);
using Row32f = std::int64_t (*)(const Kel32f* src, Kel32f* dst, std::int64_t count, const Range32f& r);

// Null in a build without SIMD.
Row16u chooseGammaRow16u(bool forward);
Row32f chooseGammaRow32f(bool forward);

// The scalar kernel on the lanes of one vector step whose bit is set in
// `refused` (lane i is sample i of the step).
void gammaRefused16u(const Kel16u* src, Kel16u* dst, std::uint64_t refused, bool forward);
void gammaRefused32f(const Kel32f* src, Kel32f* dst, std::uint64_t refused, const Range32f& r, bool forward);

} // namespace kel::gamma
